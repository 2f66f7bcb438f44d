#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "core/RefBase.h"
#include "core/Stream.h"
#include "image/Image.h"
#include "image/ImageDecoder.h"
#include "image/ImageEncoder.h"

// Shared setup for the image tests: building images, JPEG through memory,
// the bundled photographs, PSNR.
namespace imgtest {

using Bytes = std::vector<unsigned char>;

inline Bytes cat(std::initializer_list<Bytes> parts, int times = 1) {
  Bytes out;
  for (int t = 0; t < times; ++t)
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

inline Bytes bytesOf(const unsigned char* p, size_t n) { return Bytes(p, p + n); }

inline auto_ptr<Image> makeImage(unsigned w, unsigned h, int format) {
  return auto_ptr<Image>(Image::createImage(w, h, 1, static_cast<Image::ImageFormatType>(format), nullptr));
}

inline auto_ptr<Image> blank() { return makeImage(0, 0, Image::IMAGE_FORMAT_NONE); }

// 32x24 RGB with enough detail to give a JPEG of a few kilobytes.
inline auto_ptr<Image> smallPicture() {
  auto_ptr<Image> image = makeImage(32, 24, Image::IMAGE_FORMAT_RGB);
  for (unsigned i = 0; i < 32 * 24 * 3; ++i)
    image->planes[0][i] = static_cast<unsigned char>((i * 7) ^ (i >> 5));
  return image;
}

// Encodes into a MemoryStream of `capacity` bytes; empty when encoding failed.
inline Bytes encode(auto_ptr<Image>& image, int quality, unsigned capacity = 4u << 20) {
  auto_ptr<MemoryStream> memory(new MemoryStream(capacity));
  auto_ptr<Stream> stream(memory);
  JpegEncoder encoder;
  if (encoder.encode(stream, image, quality) != 1) return Bytes();
  return Bytes(memory->getBuffer(), memory->getBuffer() + memory->getPosition());
}

inline int decode(const Bytes& data, auto_ptr<Image>& image) {
  auto_ptr<Stream> stream(new MemoryStream(const_cast<unsigned char*>(data.data()), data.size()));
  JpegDecoder decoder;
  return decoder.decode(stream, image);
}

// Decodes samples/<name>; null on failure.
inline auto_ptr<Image> sample(const char* name) {
  auto_ptr<Stream> stream(
      new FileStream((std::string(OV_SAMPLES_DIR) + "/" + name).c_str(), FileStream::FILE_MODE_READ));
  auto_ptr<Image> image = blank();
  JpegDecoder decoder;
  if (decoder.decode(stream, image) != 1) return auto_ptr<Image>();
  return image;
}

// Peak signal-to-noise ratio of two equally sized 8-bit buffers, in dB.
inline double psnr(const unsigned char* a, const unsigned char* b, size_t n) {
  double sum = 0;
  for (size_t i = 0; i < n; ++i) sum += (double(a[i]) - b[i]) * (double(a[i]) - b[i]);
  return sum == 0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 * double(n) / sum);
}

}  // namespace imgtest
