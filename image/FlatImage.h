#pragma once

#include <cstddef>

#include "core/Export.h"

// The flat image interface: plain records from ov_malloc, freed with the
// matching ov_release* call. The records live in namespace `flat` so that
// flat::Image never meets the reference-counted class ::Image (image/Image.h).
//
// Functions that are overloaded keep C++ linkage (OV_EXPORT); all others have
// plain C names (OV_CAPI). A C name only fixes the symbol, so it may take a
// pointer to a namespaced record.
namespace flat {

struct Image {
  int width;
  int height;
  int channels;  // bytes per pixel, 1..4
  int stride;    // bytes per row
  int ownsData;  // 1: data was allocated here and is freed by ov_releaseImage
  unsigned char* data;
};

// Always wraps the caller's buffer; never freed here.
struct YUVImage {
  int width;
  int height;
  unsigned char* data;
};

// Summed-area table; same layout as flat::Matrix (rows, columns, data), and
// released the same way.
struct IntegralImage {
  int width;
  int height;
  unsigned int* data;  // width * height cells, owned
};

}  // namespace flat

// C callers share these records: ints first, then the pointer at the next
// pointer-aligned offset (flat::Image: 20 on 32-bit ARM, 24 on 64-bit hosts).
static_assert(offsetof(flat::Image, stride) == 12 && offsetof(flat::Image, ownsData) == 16 &&
                  offsetof(flat::Image, data) ==
                      (20 + alignof(void*) - 1) / alignof(void*) * alignof(void*) &&
                  sizeof(flat::Image) == offsetof(flat::Image, data) + sizeof(void*),
              "flat::Image layout");
static_assert(offsetof(flat::YUVImage, data) == 8 && sizeof(flat::YUVImage) == 8 + sizeof(void*),
              "flat::YUVImage layout");
static_assert(offsetof(flat::IntegralImage, data) == 8 && sizeof(flat::IntegralImage) == 8 + sizeof(void*),
              "flat::IntegralImage layout");

// Wraps the caller's buffer (ownsData 0). Null for a null buffer, a size or
// stride below 1, or channels outside 1..4.
OV_EXPORT flat::Image* ov_createImage(int width, int height, int channels, int stride, unsigned char* data);
// Allocates channels * width * height bytes (stride = channels * width).
OV_EXPORT flat::Image* ov_createImage(int width, int height, int channels);
OV_CAPI void ov_releaseImage(flat::Image* image);

OV_CAPI flat::YUVImage* ov_createYUVImage(int width, int height, unsigned char* data);
OV_CAPI void ov_releaseYUVImage(flat::YUVImage* image);

// Mean of the first width * height bytes (channels and stride ignored).
OV_CAPI int ov_getGrayAvg(flat::Image* image);
// Mean, largest and smallest of the first width * height bytes.
OV_CAPI void ov_getImageInfo(flat::Image* image, int* average, int* maximum, int* minimum);

// Summed-area table of the first plane, rows taken `width` bytes apart.
OV_CAPI flat::IntegralImage* ov_createIntegralImage(flat::Image* image);
OV_CAPI void ov_releaseIntegralImage(flat::IntegralImage* image);

// 256-entry tone curve through `count` (2..100) control points by a natural
// cubic spline; free it with ov_free. Uses static scratch: not re-entrant.
OV_CAPI double* ov_calcHistogram(double* x, double* y, int count);
