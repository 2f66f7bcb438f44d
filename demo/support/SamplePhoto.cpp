#include "support/SamplePhoto.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/RefBase.h"
#include "core/Stream.h"
#include "image/Image.h"
#include "image/ImageDecoder.h"
#include "support/DemoArgs.h"

namespace demo {

std::string samplePath(const char* name) {
  const char* dir = getenv("OV_SAMPLES");
  return std::string(dir != nullptr ? dir : "samples") + "/" + name;
}

RgbPhoto loadSamplePhoto(const char* name) {
  RgbPhoto photo;
  const std::string path = samplePath(name);
  auto_ptr<Stream> stream(new FileStream(path.c_str(), FileStream::FILE_MODE_READ));
  auto_ptr<Image> image(Image::createImage(1, 1, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  auto_ptr<ImageDecoder> decoder(new JpegDecoder());
  const int ok = decoder->decode(stream, image);
  if (!ok || image->planes[0] == nullptr) {
    fprintf(stderr, "cannot decode %s\n", path.c_str());
    return photo;
  }
  photo.width = static_cast<int>(image->width);
  photo.height = static_cast<int>(image->height);
  const size_t n = size_t(photo.width) * photo.height;
  photo.rgb.resize(n * 3);
  for (size_t i = 0; i < n; ++i)
    for (int c = 0; c < 3; ++c)
      photo.rgb[3 * i + c] =
          image->format == Image::IMAGE_FORMAT_GRAY ? image->planes[0][i] : image->planes[0][3 * i + c];
  return photo;
}

int startSampleDemo(int argc, char** argv, const char* sample, std::string* folder, RgbPhoto* photo) {
  if (!outputFolder(argc, argv, folder)) return 2;
  *photo = loadSamplePhoto(sample);
  return photo->width == 0 ? 1 : 0;
}

std::vector<unsigned char> toRgba(const RgbPhoto& photo) {
  const size_t n = size_t(photo.width) * photo.height;
  std::vector<unsigned char> rgba(n * 4);
  for (size_t i = 0; i < n; ++i) {
    for (int c = 0; c < 3; ++c) rgba[4 * i + c] = photo.rgb[3 * i + c];
    rgba[4 * i + 3] = 255;
  }
  return rgba;
}

RgbPhoto resizeNearest(const RgbPhoto& src, int width, int height) {
  RgbPhoto out;
  out.width = width;
  out.height = height;
  out.rgb.resize(size_t(width) * height * 3);
  for (int y = 0; y < height; ++y) {
    const int sy = int(int64_t(y) * src.height / height);
    for (int x = 0; x < width; ++x) {
      const int sx = int(int64_t(x) * src.width / width);
      for (int c = 0; c < 3; ++c)
        out.rgb[(size_t(y) * width + x) * 3 + c] = src.rgb[(size_t(sy) * src.width + sx) * 3 + c];
    }
  }
  return out;
}

}  // namespace demo
