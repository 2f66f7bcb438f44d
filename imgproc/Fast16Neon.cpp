// FAST-16 row kernel, 16 pixels per step in 8-bit NEON lanes: the same
// saturating-margin arithmetic as the x86 kernels.
#include "imgproc/Fast16Rows.h"

#if OV_HAVE_FAST16_NEON

// Real NEON on ARM; elsewhere the same intrinsics through SIMDe's translation.
#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/arm/neon.h>
#endif

namespace orvan::fast16_row {
namespace {

inline uint8x16_t bestArc(const uint8x16_t m[16]) {
  // Neighbouring arcs k and k + 1 share the 8 pixels k + 1 .. k + 8, so the
  // better of the two is min(shared, max(m[k], m[k + 9])): only the runs that
  // start at odd positions are needed.
  uint8x16_t m2[16], m4[16];
  for (int j = 1; j < 16; j += 2) m2[j] = vminq_u8(m[j], m[(j + 1) & 15]);
  for (int j = 1; j < 16; j += 2) m4[j] = vminq_u8(m2[j], m2[(j + 2) & 15]);
  uint8x16_t best = vdupq_n_u8(0);
  for (int k = 0; k < 16; k += 2)
    best = vmaxq_u8(best, vminq_u8(vminq_u8(m4[k + 1], m4[(k + 5) & 15]), vmaxq_u8(m[k], m[(k + 9) & 15])));
  return best;
}

// Any lane non-zero (ARMv7 has no across-vector maximum).
inline bool any(uint8x16_t v) {
  const uint64x2_t w = vreinterpretq_u64_u8(v);
  return (vgetq_lane_u64(w, 0) | vgetq_lane_u64(w, 1)) != 0;
}

inline uint8x16_t pairs(const uint8x16_t q[4]) {
  return vorrq_u8(vorrq_u8(vminq_u8(q[0], q[1]), vminq_u8(q[1], q[2])),
                  vorrq_u8(vminq_u8(q[2], q[3]), vminq_u8(q[3], q[0])));
}

// Scores the 16 pixels from column x; appends the corners among the lanes
// whose nibble is set in `fresh`. Returns how many it appended.
inline int scoreBlock(const uint8_t* row, const ptrdiff_t* o, int x, uint8x16_t t, uint64_t fresh,
                      uint8_t* map, int* xs) {
  const uint8x16_t zero = vdupq_n_u8(0);
  const uint8_t* p = row + x;
  const uint8x16_t c = vld1q_u8(p);
  const uint8x16_t hi = vqaddq_u8(c, t), lo = vqsubq_u8(c, t);
  uint8x16_t above[4], below[4];
  for (int i = 0; i < 4; ++i) {
    const uint8x16_t v = vld1q_u8(p + o[4 * i]);
    above[i] = vqsubq_u8(v, hi);
    below[i] = vqsubq_u8(lo, v);
  }
  const uint8x16_t up = pairs(above), down = pairs(below);
  if (!any(vorrq_u8(up, down))) {
    vst1q_u8(map + x, zero);
    return 0;
  }
  // A lane that passes on one side only is no corner on the other: its
  // margins there stay at or below the threshold and cannot raise a corner's
  // score. Flipping all bits reverses the order, so one pass over the circle
  // takes each lane's margins toward its own side.
  const uint8x16_t downward = vceqq_u8(up, zero);
  uint8x16_t best, m[16];
  if (!any(vbicq_u8(down, downward))) {
    const uint8x16_t cs = veorq_u8(c, downward);
    for (int j = 0; j < 16; ++j) m[j] = vqsubq_u8(veorq_u8(vld1q_u8(p + o[j]), downward), cs);
    best = bestArc(m);
  } else {
    for (int j = 0; j < 16; ++j) m[j] = vqsubq_u8(vld1q_u8(p + o[j]), c);
    best = bestArc(m);
    for (int j = 0; j < 16; ++j) m[j] = vqsubq_u8(c, vld1q_u8(p + o[j]));
    best = vmaxq_u8(best, bestArc(m));
  }
  const uint8x16_t corner = vcgtq_u8(best, t);
  vst1q_u8(map + x, vandq_u8(corner, vqsubq_u8(best, vdupq_n_u8(1))));
  // Four bits per lane: the narrowing shift packs the lane mask into 64 bits.
  uint64_t bits = vget_lane_u64(vreinterpret_u64_u8(vshrn_n_u16(vreinterpretq_u16_u8(corner), 4)), 0) & fresh;
  int n = 0;
  while (bits) {
    const int lane = __builtin_ctzll(bits) >> 2;
    xs[n++] = x + lane;
    bits &= ~(0xFull << (4 * lane));
  }
  return n;
}

}  // namespace

int ScoreRow_NEON(const uint8_t* row, const int* pixel, int x0, int count, int threshold, uint8_t* map,
                  int* xs) {
  if (count < 16) return ScoreRow_C(row, pixel, x0, count, threshold, map, xs);
  const uint8x16_t t = vdupq_n_u8(static_cast<uint8_t>(threshold));
  // Local copies: the stores into map could otherwise alias the offsets.
  ptrdiff_t o[16];
  for (int j = 0; j < 16; ++j) o[j] = pixel[j];
  int n = 0;
  const int blocks = count / 16, rest = count % 16;
  for (int b = 0; b < blocks; ++b) n += scoreBlock(row, o, x0 + 16 * b, t, ~0ull, map, xs + n);
  // The last block ends with the row, over lanes already done: they score
  // the same again, only the new ones are listed.
  if (rest) n += scoreBlock(row, o, x0 + count - 16, t, ~0ull << (4 * (16 - rest)), map, xs + n);
  return n;
}

}  // namespace orvan::fast16_row

#endif  // OV_HAVE_FAST16_NEON
