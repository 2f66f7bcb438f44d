#include "image/Image.h"

#include <new>

#include "core/Memory.h"
#include "core/SizeRule.h"

namespace {
// Allocation factor per format code 1..12. The planar formats over-allocate
// two bytes per pixel even for 4:2:0.
constexpr int kBytesPerPixel[13] = {0, 1, 2, 3, 4, 3, 2, 2, 2, 2, 2, 2, 2};
}  // namespace

Image::Image(unsigned int w, unsigned int h, unsigned int d, ImageFormatType f, unsigned char** src)
    : width(w), height(h), depth(d), format(f), bytesPerPixel(0), planes{nullptr, nullptr, nullptr, nullptr} {
  configuare(src);
}

Image::~Image() { release(); }

void Image::release() {
  if (planes[0] != nullptr) {
    galloc_free(planes[0]);
    planes[0] = planes[1] = planes[2] = planes[3] = nullptr;
  }
}

void Image::configuare(unsigned char** src) { layOut(src); }

bool Image::layOut(unsigned char** src) {
  // An unknown format leaves the image as it was.
  if (format < IMAGE_FORMAT_GRAY || format > IMAGE_FORMAT_NV21) return false;
  bytesPerPixel = kBytesPerPixel[format];

  // Refuse sizes whose byte count wraps: every plane offset below is derived
  // from N, so a wrapped N would put planes and copies past the buffer.
  const int64_t total = orvan::sizerule::uintCount(width, height, depth, bytesPerPixel);
  if (total < 0) return false;
  const unsigned int n = width * height * depth;

  auto* buffer = static_cast<unsigned char*>(galloc_malloc(static_cast<unsigned int>(total)));
  if (buffer == nullptr) return false;

  // The source planes may point into the current buffer: it is released only
  // once they have been copied.
  unsigned char* laid[4] = {buffer, nullptr, nullptr, nullptr};
  switch (format) {
    case IMAGE_FORMAT_YUV422P:
      if (src != nullptr && src[0] != nullptr && src[1] != nullptr && src[2] != nullptr) {
        galloc_memcpy(buffer, src[0], n);
        galloc_memcpy(buffer + n, src[1], n >> 1);
        // The V plane lands one byte behind the U plane, not at N*3/2: kept
        // as the format has always been laid out by this copy.
        galloc_memcpy(buffer + n + 1, src[2], n >> 1);
      }
      laid[1] = buffer + n;
      laid[2] = buffer + n + (n >> 1);
      break;
    case IMAGE_FORMAT_YV12:
    case IMAGE_FORMAT_YU12:
      if (src != nullptr && src[0] != nullptr && src[1] != nullptr) {
        galloc_memcpy(buffer, src[0], n);
        galloc_memcpy(buffer + n, src[1], n >> 1);
      }
      laid[1] = buffer + n;
      break;
    case IMAGE_FORMAT_NV12:
    case IMAGE_FORMAT_NV21:
      if (src != nullptr && src[0] != nullptr && src[1] != nullptr && src[2] != nullptr) {
        galloc_memcpy(buffer, src[0], n);
        galloc_memcpy(buffer + n, src[1], n >> 2);
        // N + N/4 equals (N*5)/4 without the wrap of N*5.
        galloc_memcpy(buffer + n + (n >> 2), src[2], n >> 2);
      }
      laid[1] = buffer + n;
      laid[2] = buffer + n + (n >> 2);
      break;
    default:
      if (src != nullptr && src[0] != nullptr)
        galloc_memcpy(buffer, src[0], static_cast<unsigned int>(total));
      break;
  }
  // Configuring a configured image again replaces its buffer rather than leak it.
  release();
  for (int i = 0; i < 4; ++i) planes[i] = laid[i];
  return true;
}

void Image::set(unsigned int w, unsigned int h, unsigned int d, ImageFormatType f, unsigned char** src) {
  width = w;
  height = h;
  depth = d;
  format = f;
  // The old buffer goes in any case; a format or size that cannot be laid out
  // leaves no planes.
  if (!layOut(src)) release();
}

Image* Image::createImage(unsigned int w, unsigned int h, unsigned int d, ImageFormatType f,
                          unsigned char** src) {
  return new (std::nothrow) Image(w, h, d, f, src);
}
