// Decodes a photograph, takes it through NV21 and back, re-encodes it, and
// writes what it made into the output folder:
//   image-original.png     the decoded photograph
//   image-nv21-luma.png    the NV21 luma plane
//   image-via-nv21.png     RGB -> NV21 -> RGB; the writer averages 2x2 blocks but
//                          the reader spreads each pair over 4 pixels of one row,
//                          so colour comes back displaced (ghost bands): by design
//   image-via-yuyv.png     RGB -> YUYV -> RGB, for comparison
//   image-reencoded.jpg    the NV21 round trip encoded at quality 90
#include <cstdio>
#include <string>

#include "core/Stream.h"
#include "image/ColorConvert.h"
#include "image/ImageDecoder.h"
#include "image/ImageEncoder.h"
#include "support/DemoArgs.h"
#include "support/PictureWriter.h"
#include "support/SamplePhoto.h"

namespace {

int fail(const std::string& what) {
  fprintf(stderr, "demo-image: %s\n", what.c_str());
  return 1;
}

bool png(const std::string& path, const Image* image, int channels, const char* entryPoint,
         const char* text) {
  const bool ok = demo::writePng(path, image->planes[0], static_cast<int>(image->width),
                                 static_cast<int>(image->height), channels);
  if (ok) printf("wrote %s\n", path.c_str());
  demo::caption(path, "Images and codecs", entryPoint, text);
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  std::string out;
  if (!demo::outputFolder(argc, argv, &out)) return 2;
  const std::string input = demo::samplePath("coffee.jpg");

  auto_ptr<Stream> in(new FileStream(input.c_str(), FileStream::FILE_MODE_READ));
  ImageDecoderFactory decoders;
  auto_ptr<ImageDecoder> decoder(decoders.createImageDecoder(in));
  if (decoder == nullptr) return fail("not a JPEG: " + input);
  auto_ptr<Image> photo(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
  if (decoder->decode(in, photo) != 1) return fail("cannot decode " + input);
  printf("decoded %s: %ux%u, format %d\n", input.c_str(), photo->width, photo->height, photo->format);
  if (photo->format != Image::IMAGE_FORMAT_RGB) return fail("expected a colour photograph");

  auto_ptr<Image> nv21(
      ColorConvert::convert(photo, (Image::IMAGE_FORMAT_RGB << 8) | Image::IMAGE_FORMAT_NV21));
  if (nv21 == nullptr) return fail("RGB -> NV21 failed");
  auto_ptr<Image> back(
      ColorConvert::convert(nv21, (Image::IMAGE_FORMAT_NV21 << 8) | Image::IMAGE_FORMAT_RGB));
  auto_ptr<Image> yuyv(
      ColorConvert::convert(photo, (Image::IMAGE_FORMAT_RGB << 8) | Image::IMAGE_FORMAT_YUYV));
  auto_ptr<Image> backYuyv(yuyv == nullptr ? nullptr
                                           : ColorConvert::convert(yuyv, (Image::IMAGE_FORMAT_YUYV << 8) |
                                                                             Image::IMAGE_FORMAT_RGB));
  if (back == nullptr || backYuyv == nullptr) return fail("conversion back to RGB failed");

  const std::string size = std::to_string(photo->width) + " x " + std::to_string(photo->height);
  bool ok = png(out + "/image-original.png", photo.get(), 3, "ImageDecoderFactory, JpegDecoder::decode",
                ("samples/coffee.jpg decoded from a file stream, " + size + " RGB.").c_str());
  ok = png(out + "/image-nv21-luma.png", nv21.get(), 1, "ColorConvert::convert (RGB to NV21)",
           "The luma plane of the photograph converted to NV21 (BT.601 studio swing).") &&
       ok;
  ok = png(out + "/image-via-nv21.png", back.get(), 3, "ColorConvert::convert (NV21 to RGB)",
           "Round trip RGB, NV21, RGB: chroma averaged over 2 x 2 blocks.") &&
       ok;
  ok = png(out + "/image-via-yuyv.png", backYuyv.get(), 3, "ColorConvert::convert (YUYV to RGB)",
           "Round trip RGB, YUYV, RGB: chroma shared by pixel pairs.") &&
       ok;

  const std::string jpeg = out + "/image-reencoded.jpg";
  auto_ptr<Stream> file(new FileStream(jpeg.c_str(), FileStream::FILE_MODE_WRITE));
  ImageEncoderFactory encoders;
  auto_ptr<ImageEncoder> encoder(encoders.createImageEncoder(ImageEncoder::TYPE_JPEG));
  if (encoder == nullptr || encoder->encode(file, back, 90) != 1) return fail("cannot encode " + jpeg);
  file->close();
  printf("wrote %s\n", jpeg.c_str());
  demo::caption(jpeg, "Images and codecs", "ImageEncoderFactory, JpegEncoder::encode",
                "The NV21 round trip encoded again as JPEG at quality 90 through a file stream.");
  return ok ? 0 : 1;
}
