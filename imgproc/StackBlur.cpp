#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/SizeRule.h"
#include "imgproc/Blur.h"
#include "imgproc/StackBlurTables.h"

// Real NEON on ARM; elsewhere the same intrinsics through SIMDe's translation.
#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/arm/neon.h>
#endif

// Stack Blur: each output is (S * mul) >> shr, where S is the window weighted
// 1, 2, ..., r + 1, ..., 2, 1 with edge replication. S is kept as running sums
// (S itself, the outgoing half and the incoming half) over a ring of the 2r + 1
// window entries, exactly as the published algorithm does. All sums are exact
// integers and S * mul stays below 2^32, so computing all four bytes of a
// pixel side by side in 32-bit lanes gives the same bytes as one channel at a
// time; byte 3 is computed along but never stored.
//
// Horizontal pass: one row at a time, a pixel per vector. Vertical pass:
// strips of kStrip columns walked down row by row, so each step loads and
// stores contiguous bytes.

namespace {

constexpr int kMaxRadius = 254;
constexpr int kMaxDiv = 2 * kMaxRadius + 1;
constexpr int kStrip = 16;                // pixels per vertical strip
constexpr int kChunks = kStrip * 4 / 16;  // 16-byte vectors per strip row
constexpr int kPrefetchRows = 16;
constexpr int kRowBatch = 2;  // rows per horizontal step

// Lane-wise a * b + c modulo 2^32. SIMDe translates unsigned 32-bit lane
// multiplies through signed ones, whose wrap-around is undefined, so off ARM
// the lanes are multiplied as unsigned vectors directly.
inline uint32x4_t mulAdd(uint32x4_t a, uint32_t b, uint32x4_t c) {
#if defined(__ARM_NEON) || defined(__ARM_NEON__)
  return vmlaq_n_u32(c, a, b);
#else
  typedef uint32_t Lanes __attribute__((vector_size(16)));
  Lanes x, y;
  memcpy(&x, &a, sizeof(x));
  memcpy(&y, &c, sizeof(y));
  x = x * b + y;
  memcpy(&a, &x, sizeof(x));
  return a;
#endif
}

// (s * mul) >> kShr; the shift is a template argument because SIMDe turns a
// variable vector shift into a per-lane loop.
template <int kShr>
inline uint32x4_t scale(uint32x4_t s, uint32_t mul) {
  return vshrq_n_u32(mulAdd(s, mul, vdupq_n_u32(0)), kShr);
}

// The four bytes at p, one per 32-bit lane.
inline uint32x4_t loadPixel(const unsigned char* p) {
  uint32_t word;
  memcpy(&word, p, 4);
  return vmovl_u16(vget_low_u16(vmovl_u8(vcreate_u8(word))));
}

inline void widen(uint8x16_t b, uint32x4_t out[4]) {
  const uint16x8_t lo = vmovl_u8(vget_low_u8(b));
  const uint16x8_t hi = vmovl_u8(vget_high_u8(b));
  out[0] = vmovl_u16(vget_low_u16(lo));
  out[1] = vmovl_u16(vget_high_u16(lo));
  out[2] = vmovl_u16(vget_low_u16(hi));
  out[3] = vmovl_u16(vget_high_u16(hi));
}

// Lanes hold values below 256.
inline uint8x16_t narrow(const uint32x4_t v[4]) {
  const uint16x8_t lo = vcombine_u16(vmovn_u32(v[0]), vmovn_u32(v[1]));
  const uint16x8_t hi = vcombine_u16(vmovn_u32(v[2]), vmovn_u32(v[3]));
  return vcombine_u8(vmovn_u16(lo), vmovn_u16(hi));
}

// Ring positions as the window moves one pixel along a line of count pixels:
// start is the entry leaving the window, next the one passing from the
// incoming to the outgoing half, ahead the (clamped) pixel entering.
struct RingWalk {
  RingWalk(int radius, int count)
      : radius(radius),
        div(2 * radius + 1),
        last(count - 1),
        sp(radius),
        ahead(radius < last ? radius : last) {}
  void step() {
    start = sp + div - radius;
    if (start >= div) start -= div;
    if (ahead < last) ++ahead;
    next = sp + 1;
    if (next >= div) next = 0;
    sp = next;
  }
  const int radius, div, last;
  int sp, ahead;
  int start = 0, next = 0;
};

// Horizontal pass over kRows rows at once (`stride` bytes apart): the rows'
// running sums are independent chains, so interleaving them keeps the core
// busy while each chain waits on its own additions.
template <int kShr, int kRows>
void blurRows(unsigned char* first, size_t stride, int count, int radius, uint32_t mul) {
  const int last = count - 1;
  uint32x4_t ring[kMaxDiv][kRows];
  uint32x4_t sum[kRows], sumIn[kRows], sumOut[kRows];
  unsigned char* row[kRows];
  for (int k = 0; k < kRows; ++k) {
    row[k] = first + (size_t)k * stride;
    sum[k] = sumIn[k] = sumOut[k] = vdupq_n_u32(0);
  }

  // Fill: the first pixel radius + 1 times, then pixels 1..radius clamped.
  for (int k = 0; k < kRows; ++k) {
    const uint32x4_t p0 = loadPixel(row[k]);
    for (int i = 0; i <= radius; ++i) {
      ring[i][k] = p0;
      sum[k] = mulAdd(p0, (uint32_t)(i + 1), sum[k]);
      sumOut[k] = vaddq_u32(sumOut[k], p0);
    }
    for (int i = 1; i <= radius; ++i) {
      const uint32x4_t p = loadPixel(row[k] + 4 * (i <= last ? i : last));
      ring[i + radius][k] = p;
      sum[k] = mulAdd(p, (uint32_t)(radius + 1 - i), sum[k]);
      sumIn[k] = vaddq_u32(sumIn[k], p);
    }
  }

  RingWalk walk(radius, count);
  for (int x = 0; x < count; ++x) {
    walk.step();
    const int start = walk.start, next = walk.next, xp = walk.ahead;
#pragma GCC unroll 4
    for (int k = 0; k < kRows; ++k) {
      const uint32x4_t out = scale<kShr>(sum[k], mul);
      unsigned char* d = row[k] + 4 * x;
      d[0] = (unsigned char)vgetq_lane_u32(out, 0);
      d[1] = (unsigned char)vgetq_lane_u32(out, 1);
      d[2] = (unsigned char)vgetq_lane_u32(out, 2);
      sum[k] = vsubq_u32(sum[k], sumOut[k]);
      sumOut[k] = vsubq_u32(sumOut[k], ring[start][k]);
      // Pixel xp lies ahead of x, or is the last one, whose sums are not used again.
      const uint32x4_t p = loadPixel(row[k] + 4 * xp);
      ring[start][k] = p;
      sumIn[k] = vaddq_u32(sumIn[k], p);
      sum[k] = vaddq_u32(sum[k], sumIn[k]);
      // Read after the write: with radius 0 start and next name the same entry.
      sumOut[k] = vaddq_u32(sumOut[k], ring[next][k]);
      sumIn[k] = vsubq_u32(sumIn[k], ring[next][k]);
    }
  }
}

// Vertical pass over a strip of kStrip pixels starting at col.
template <int kShr>
void blurStrip(unsigned char* col, int height, size_t stride, int radius, uint32_t mul) {
  const int last = height - 1;
  uint8x16_t ring[kMaxDiv][kChunks];
  uint32x4_t sum[kChunks][4], sumIn[kChunks][4], sumOut[kChunks][4];
  // Byte 3 of each pixel keeps its value.
  static const uint8_t kColour[16] = {255, 255, 255, 0, 255, 255, 255, 0, 255, 255, 255, 0, 255, 255, 255, 0};
  const uint8x16_t colour = vld1q_u8(kColour);

  for (int c = 0; c < kChunks; ++c) {
    const uint8x16_t b = vld1q_u8(col + 16 * c);
    uint32x4_t p[4];
    widen(b, p);
    for (int j = 0; j < 4; ++j) {
      sum[c][j] = mulAdd(p[j], (uint32_t)((radius + 1) * (radius + 2) / 2), vdupq_n_u32(0));
      sumOut[c][j] = mulAdd(p[j], (uint32_t)(radius + 1), vdupq_n_u32(0));
      sumIn[c][j] = vdupq_n_u32(0);
    }
    for (int k = 0; k <= radius; ++k) ring[k][c] = b;
  }
  for (int k = 1; k <= radius; ++k) {
    const unsigned char* src = col + (size_t)(k <= last ? k : last) * stride;
    const uint32_t w = (uint32_t)(radius + 1 - k);
    for (int c = 0; c < kChunks; ++c) {
      const uint8x16_t b = vld1q_u8(src + 16 * c);
      uint32x4_t p[4];
      widen(b, p);
      ring[k + radius][c] = b;
      for (int j = 0; j < 4; ++j) {
        sum[c][j] = mulAdd(p[j], w, sum[c][j]);
        sumIn[c][j] = vaddq_u32(sumIn[c][j], p[j]);
      }
    }
  }

  RingWalk walk(radius, height);
  for (int y = 0; y < height; ++y) {
    unsigned char* dst = col + (size_t)y * stride;
    walk.step();
    const int start = walk.start, next = walk.next, yp = walk.ahead;
    const unsigned char* src = col + (size_t)yp * stride;
    // Walking down a column strip defeats the hardware prefetcher on the
    // rows entering the window: ask for them a few rows early.
    const int ahead = yp + kPrefetchRows < last ? yp + kPrefetchRows : last;
    __builtin_prefetch(col + (size_t)ahead * stride);
    __builtin_prefetch(col + (size_t)ahead * stride + kStrip * 4 - 1);
#pragma GCC unroll 4
    for (int c = 0; c < kChunks; ++c) {
      // Row yp is read before row y is written; they coincide only at the
      // last row, whose updated sums are not used again.
      const uint8x16_t in = vld1q_u8(src + 16 * c);
      uint32x4_t out[4];
#pragma GCC unroll 4
      for (int j = 0; j < 4; ++j) out[j] = scale<kShr>(sum[c][j], mul);
      vst1q_u8(dst + 16 * c, vbslq_u8(colour, narrow(out), vld1q_u8(dst + 16 * c)));

      uint32x4_t p[4], leaving[4], entering[4];
      widen(in, p);
      widen(ring[start][c], leaving);
      ring[start][c] = in;
      // Read after the write: with radius 0 start and next are the same entry.
      widen(ring[next][c], entering);
#pragma GCC unroll 4
      for (int j = 0; j < 4; ++j) {
        const uint32x4_t si = vaddq_u32(sumIn[c][j], p[j]);
        sum[c][j] = vaddq_u32(vsubq_u32(sum[c][j], sumOut[c][j]), si);
        sumOut[c][j] = vaddq_u32(vsubq_u32(sumOut[c][j], leaving[j]), entering[j]);
        sumIn[c][j] = vsubq_u32(si, entering[j]);
      }
    }
  }
}

// The narrow strip at the right edge (fewer than kStrip pixels), byte by byte.
void blurNarrowStrip(unsigned char* col, int n, int height, size_t stride, int radius, uint32_t mul,
                     uint32_t shr) {
  const int last = height - 1;
  unsigned char ring[kMaxDiv][kStrip * 4];
  uint32_t sum[kStrip * 4], sumIn[kStrip * 4], sumOut[kStrip * 4];

  for (int i = 0; i < n; ++i) {
    const uint32_t p = col[i];
    sum[i] = p * (uint32_t)((radius + 1) * (radius + 2) / 2);
    sumOut[i] = p * (uint32_t)(radius + 1);
    sumIn[i] = 0;
    for (int k = 0; k <= radius; ++k) ring[k][i] = col[i];
  }
  for (int k = 1; k <= radius; ++k) {
    const unsigned char* src = col + (size_t)(k <= last ? k : last) * stride;
    for (int i = 0; i < n; ++i) {
      ring[k + radius][i] = src[i];
      sum[i] += src[i] * (uint32_t)(radius + 1 - k);
      sumIn[i] += src[i];
    }
  }

  RingWalk walk(radius, height);
  for (int y = 0; y < height; ++y) {
    unsigned char* dst = col + (size_t)y * stride;
    walk.step();
    const int start = walk.start, next = walk.next, yp = walk.ahead;
    const unsigned char* src = col + (size_t)yp * stride;
    for (int i = 0; i < n; ++i) {
      const uint32_t p = src[i];
      if ((i & 3) != 3) dst[i] = (unsigned char)((sum[i] * mul) >> shr);
      const uint32_t leaving = ring[start][i];
      ring[start][i] = (unsigned char)p;
      const uint32_t entering = ring[next][i];
      const uint32_t si = sumIn[i] + p;
      sum[i] = sum[i] - sumOut[i] + si;
      sumOut[i] = sumOut[i] - leaving + entering;
      sumIn[i] = si - entering;
    }
  }
}

// Both passes for one shift value.
template <int kShr>
void blurImage(unsigned char* pixels, int width, int height, int radius, uint32_t mul) {
  const size_t stride = (size_t)width * 4;
  int y = 0;
  for (; y + kRowBatch <= height; y += kRowBatch)
    blurRows<kShr, kRowBatch>(pixels + (size_t)y * stride, stride, width, radius, mul);
  for (; y < height; ++y) blurRows<kShr, 1>(pixels + (size_t)y * stride, stride, width, radius, mul);
  int x = 0;
  for (; x + kStrip <= width; x += kStrip)
    blurStrip<kShr>(pixels + (size_t)x * 4, height, stride, radius, mul);
  if (x < width) blurNarrowStrip(pixels + (size_t)x * 4, (width - x) * 4, height, stride, radius, mul, kShr);
}

}  // namespace

void stack_blur(unsigned char* pixels, int width, int height, int radius) {
  if (!pixels || width <= 0 || height <= 0) return;
  if (orvan::sizerule::intCount(width, height, 4) < 0) return;
  if (radius < 0 || radius > kMaxRadius) return;
  const uint32_t mul = kStackBlurMul[radius];
  switch (kStackBlurShr[radius]) {
#define OV_SHIFT_CASE(n)                              \
  case n:                                             \
    blurImage<n>(pixels, width, height, radius, mul); \
    break;
    OV_SHIFT_CASE(9)
    OV_SHIFT_CASE(10)
    OV_SHIFT_CASE(11)
    OV_SHIFT_CASE(12)
    OV_SHIFT_CASE(13)
    OV_SHIFT_CASE(14)
    OV_SHIFT_CASE(15)
    OV_SHIFT_CASE(16)
    OV_SHIFT_CASE(17)
    OV_SHIFT_CASE(18)
    OV_SHIFT_CASE(19)
    OV_SHIFT_CASE(20)
    OV_SHIFT_CASE(21)
    OV_SHIFT_CASE(22)
    OV_SHIFT_CASE(23)
    OV_SHIFT_CASE(24)
#undef OV_SHIFT_CASE
    default:
      break;  // the table holds 9..24 only
  }
}
