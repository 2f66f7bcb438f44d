#pragma once

#include <cstdint>

namespace orvan::gpu_internal {

// Bytes of a width x height x depth image whose format code is also its bytes
// per pixel, computed in 64 bits; -1 when a factor is negative, the format is
// not positive or the count does not fit a signed 32-bit size.
inline int64_t imageBytes(int width, int height, int depth, int format) {
  if (width < 0 || height < 0 || depth < 0 || format < 1) return -1;
  int64_t n = static_cast<int64_t>(width) * height;
  n *= depth;
  if (n > INT32_MAX) return -1;
  n *= format;
  return n > INT32_MAX ? -1 : n;
}

}  // namespace orvan::gpu_internal

class Image;

namespace orvan::gpu_internal {

// The GPU format code of an Image the GPU classes can take as it is (grey,
// two-byte, RGB, RGBA share their codes with the GPU formats), checking that
// it has pixels and that its sizes fit; 0 when it cannot be used.
int imageFormatCode(const Image* image);

}  // namespace orvan::gpu_internal
