// JPEG bytes through a MemoryStream into the decoder the factory picks, then
// every conversion out of the decoded format.
#include <cstdint>
#include <cstring>

#include "../FuzzInput.h"
#include "core/Stream.h"
#include "image/ColorConvert.h"
#include "image/ImageDecoder.h"

namespace {

// Pictures declaring more pixels than this are skipped: they would only
// measure the allocator. The frame header is found by walking the markers.
constexpr uint64_t kMaxPixels = 1u << 18;

bool declaresHugeFrame(const uint8_t* data, size_t size) {
  for (size_t i = 0; i + 8 < size; ++i) {
    if (data[i] != 0xFF) continue;
    const uint8_t m = data[i + 1];
    const bool sof = m >= 0xC0 && m <= 0xCF && m != 0xC4 && m != 0xC8 && m != 0xCC;
    if (!sof) continue;
    const uint64_t h = (data[i + 5] << 8) | data[i + 6];
    const uint64_t w = (data[i + 7] << 8) | data[i + 8];
    if (w * h > kMaxPixels) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20) || declaresHugeFrame(data, size)) return 0;
  auto_ptr<Stream> stream(new MemoryStream(const_cast<uint8_t*>(data), static_cast<unsigned>(size)));
  auto_ptr<ImageDecoderFactory> factory(new ImageDecoderFactory());
  auto_ptr<ImageDecoder> decoder(factory->createImageDecoder(stream));
  if (decoder == nullptr) return 0;

  // A failed decode leaves the caller's image as it was.
  unsigned char pixel = 7;
  unsigned char* planes[4] = {&pixel, nullptr, nullptr, nullptr};
  auto_ptr<Image> image(Image::createImage(1, 1, 1, Image::IMAGE_FORMAT_GRAY, planes));
  stream->rewind();
  if (decoder->decode(stream, image) != 1) {
    FUZZ_CHECK(image->width == 1 && image->height == 1 && image->format == Image::IMAGE_FORMAT_GRAY);
    FUZZ_CHECK(image->planes[0][0] == 7);
    return 0;
  }
  const int format = image->format;
  FUZZ_CHECK(format == Image::IMAGE_FORMAT_GRAY || format == Image::IMAGE_FORMAT_RGB);
  FUZZ_CHECK(image->width > 0 && image->height > 0 && image->planes[0] != nullptr);

  // Decoding again (now into the decoder's spare buffer) gives the same pixels.
  const size_t bytes = size_t{image->width} * image->height * image->bytesPerPixel;
  auto_ptr<Image> again(Image::createImage(1, 1, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  stream->rewind();
  FUZZ_CHECK(decoder->decode(stream, again) == 1);
  FUZZ_CHECK(again->format == format && again->width == image->width && again->height == image->height);
  FUZZ_CHECK(memcmp(again->planes[0], image->planes[0], bytes) == 0);

  for (int target = Image::IMAGE_FORMAT_GRAY; target <= Image::IMAGE_FORMAT_NV21; ++target) {
    auto_ptr<Image> out(ColorConvert::convert(image, (format << 8) | target));
    FUZZ_CHECK(out != nullptr && static_cast<int>(out->format) == target);
  }
  return 0;
}
