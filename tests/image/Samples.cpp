#include "Samples.h"

#include <cmath>
#include <cstdio>

#include "core/Stream.h"
#include "image/ImageDecoder.h"

namespace samples {

std::string path(const char* name) { return std::string(OV_SAMPLES_DIR) + "/" + name; }

std::vector<unsigned char> readFile(const std::string& file) {
  std::vector<unsigned char> bytes;
  FILE* f = fopen(file.c_str(), "rb");
  if (f == nullptr) return bytes;
  unsigned char chunk[4096];
  size_t got;
  while ((got = fread(chunk, 1, sizeof(chunk), f)) > 0) bytes.insert(bytes.end(), chunk, chunk + got);
  fclose(f);
  return bytes;
}

auto_ptr<Image> decode(const char* name) {
  auto_ptr<Stream> stream(new FileStream(path(name).c_str(), FileStream::FILE_MODE_READ));
  auto_ptr<Image> image(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
  JpegDecoder decoder;
  if (decoder.decode(stream, image) != 1) return auto_ptr<Image>();
  return image;
}

double psnr(const unsigned char* a, const unsigned char* b, size_t n) {
  double sum = 0;
  for (size_t i = 0; i < n; ++i) {
    const double d = static_cast<double>(a[i]) - b[i];
    sum += d * d;
  }
  if (sum == 0) return 99.0;
  return 10.0 * std::log10(255.0 * 255.0 / (sum / static_cast<double>(n)));
}

}  // namespace samples
