#include "imgproc/Fast16.h"

#include <climits>
#include <cstdint>

#include "core/SizeRule.h"
#include "imgproc/Fast16Rows.h"

using namespace orvan::fast16_row;

namespace {

// The one dispatch point: the widest kernel the processor runs.
RowKernel rowKernel() {
#if OV_HAVE_FAST16_X86
  if (__builtin_cpu_supports("avx2")) return ScoreRow_AVX2;
  if (__builtin_cpu_supports("ssse3")) return ScoreRow_SSSE3;
#elif OV_HAVE_FAST16_NEON
  return ScoreRow_NEON;
#endif
  return ScoreRow_C;
}

}  // namespace

int makeOffsets(int pixel[25], int rowStride) {
  if (!pixel || rowStride > INT_MAX / 3 || rowStride < -(INT_MAX / 3)) return FAST16_REFUSED;
  for (int j = 0; j < 25; ++j) pixel[j] = kCircle[j % 16][0] + kCircle[j % 16][1] * rowStride;
  return 0;
}

int cornerScore16(const unsigned char* ptr, const int pixel[25]) {
  if (!ptr || !pixel) return FAST16_REFUSED;
  return arcMargin(ptr, pixel) - 1;
}

int fast16(const unsigned char* image, int width, int height, int stride, int threshold,
           int nonmaxSuppression, Fast16Corner* corners, int capacity) {
  if (!image || !corners || width < 7 || height < 7 || stride < width || capacity < 1 || threshold < 0 ||
      threshold > 255 || stride > INT_MAX / 3)
    return FAST16_REFUSED;
  // The image's byte count must fit the int sizes; the output must be addressable.
  const uint64_t out = static_cast<uint64_t>(capacity) * sizeof(Fast16Corner);
  if (orvan::sizerule::intCount(height, stride) < 0 || out > PTRDIFF_MAX) return FAST16_REFUSED;
  return detect(rowKernel(), image, width, height, stride, threshold, nonmaxSuppression != 0, corners,
                capacity);
}
