#pragma once

#include <cstdint>

#include "core/Export.h"
#include "core/RefBase.h"
#include "core/SizeRule.h"

// One copied burst frame. Format 1 is the only one: two bytes per pixel, all
// in planes[0] (luma at even offsets), W x H x 2 bytes with no row padding.
class OV_EXPORT SuperCaptureFrame : public RefBase {
 public:
  // Takes ownership of planes[0] (a galloc_malloc block); the other plane
  // pointers are copied but not owned.
  SuperCaptureFrame(unsigned int id, unsigned int width, unsigned int height, unsigned int format,
                    unsigned char** planes);
  ~SuperCaptureFrame() override;

  SuperCaptureFrame(const SuperCaptureFrame&) = delete;
  SuperCaptureFrame& operator=(const SuperCaptureFrame&) = delete;

  // Copies W x H x 2 bytes of planes[0] into a frame of its own; null for a
  // zero size, a format other than 1, no planes[0], a size whose byte count
  // does not fit in 32 bits, or a failed allocation.
  static SuperCaptureFrame* createFrame(unsigned int id, unsigned int width, unsigned int height,
                                        unsigned int format, unsigned char** planes);

  unsigned int id;
  unsigned int width;
  unsigned int height;
  unsigned int format;
  unsigned char* planes[4];
};

namespace orvan::supercapture {
// Frame format 1: two bytes per pixel in plane 0.
constexpr unsigned int kFormatPacked = 1;

// True when the frame (W x H x 2 bytes) and the merge accumulator
// (W x H x 8 bytes) can both be sized with 32-bit counts.
constexpr bool sizeFits(unsigned int width, unsigned int height) {
  return orvan::sizerule::uintCount(width, height, 8) >= 0;
}
}  // namespace orvan::supercapture
