#pragma once

#include <cstddef>
#include <cstdint>

#include "imgproc/Fast16.h"

// Row kernels of the FAST-16 detector. A kernel scores `count` pixels of one
// row starting at column x0 (row points at column 0; the circle offsets come
// from makeOffsets for the image's stride) and, for each of them, writes
// map[x] = score when the pixel is a corner at `threshold`, else 0, and
// appends the corners' columns to xs. It returns how many it appended.
// Kernels assume valid arguments: the circle of every pixel is inside the
// image. The SIMD kernels do whole blocks and finish the row with the C one;
// all are bit-identical to it. imgproc/Fast16.cpp is the one dispatch point.
namespace orvan::fast16_row {

using RowKernel = int (*)(const uint8_t* row, const int* pixel, int x0, int count, int threshold,
                          uint8_t* map, int* xs);

// Circle positions (dx, dy), clockwise from the top.
inline constexpr int kCircle[16][2] = {{0, -3}, {1, -3},  {2, -2},  {3, -1}, {3, 0},  {3, 1},
                                       {2, 2},  {1, 3},   {0, 3},   {-1, 3}, {-2, 2}, {-3, 1},
                                       {-3, 0}, {-3, -1}, {-2, -2}, {-1, -3}};

// The largest margin m such that 9 contiguous circle pixels all exceed the
// centre by at least m, or all fall short of it by at least m (0..255): the
// pixel is a corner at threshold t exactly when this is greater than t, and
// its score is this minus 1.
int arcMargin(const uint8_t* p, const int* pixel);

int ScoreRow_C(const uint8_t* row, const int* pixel, int x0, int count, int threshold, uint8_t* map, int* xs);

#if defined(__x86_64__) || defined(__i386__)
#define OV_HAVE_FAST16_X86 1
int ScoreRow_SSSE3(const uint8_t* row, const int* pixel, int x0, int count, int threshold, uint8_t* map,
                   int* xs);
int ScoreRow_AVX2(const uint8_t* row, const int* pixel, int x0, int count, int threshold, uint8_t* map,
                  int* xs);
#else
#define OV_HAVE_FAST16_X86 0
#endif

// NEON on ARM; the host tests build the same source through SIMDe.
#if defined(__ARM_NEON) || defined(__ARM_NEON__) || defined(OV_FAST16_NEON_ON_HOST)
#define OV_HAVE_FAST16_NEON 1
int ScoreRow_NEON(const uint8_t* row, const int* pixel, int x0, int count, int threshold, uint8_t* map,
                  int* xs);
#else
#define OV_HAVE_FAST16_NEON 0
#endif

// The whole scan with a given kernel; arguments already checked (fast16's
// return values).
int detect(RowKernel kernel, const uint8_t* image, int width, int height, ptrdiff_t stride, int threshold,
           bool nonmax, Fast16Corner* corners, int capacity);

}  // namespace orvan::fast16_row
