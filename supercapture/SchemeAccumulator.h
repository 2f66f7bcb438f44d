#pragma once

#include <cstddef>
#include <cstdint>

#include "core/Memory.h"
#include "core/SizeRule.h"
#include "supercapture/SuperCaptureFrame.h"

// Accumulator steps shared by the two merge schemes.
namespace orvan::supercapture {

// The two schemes share init and release exactly.
inline void initAccumulator(int32_t*& acc, unsigned int& count, unsigned int& w, unsigned int& h,
                            unsigned int width, unsigned int height, unsigned int format) {
  if (width == 0 || height == 0 || format == 0 || format > kFormatPacked) return;
  if (!sizeFits(width, height)) return;
  count = 0;
  w = width;
  h = height;
  const auto bytes = static_cast<unsigned int>(sizerule::uintCount(width, height, 8));
  acc = static_cast<int32_t*>(galloc_malloc(bytes));
  if (acc != nullptr) galloc_memset(acc, 0, bytes);
}

inline void releaseAccumulator(int32_t*& acc) {
  if (acc != nullptr) {
    galloc_free(acc);
    acc = nullptr;
  }
}

// Frames and schemes only exist for sizes that passed sizeFits, so the count
// is known to fit before it becomes a size_t.
inline size_t frameBytes(unsigned int w, unsigned int h) {
  return static_cast<size_t>(sizerule::uintCount(w, h, 2));
}

// A frame is served when it has pixels and at least as many bytes as the
// accumulator covers; anything else would be read or written out of bounds.
inline bool usable(const auto_ptr<SuperCaptureFrame>& frame, const int32_t* acc, unsigned int w,
                   unsigned int h) {
  if (frame == nullptr || acc == nullptr) return false;
  return sizerule::uintCount(frame->width, frame->height, 2) >= sizerule::uintCount(w, h, 2);
}

}  // namespace orvan::supercapture
