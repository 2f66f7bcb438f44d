// NEON versions of the camera-layout row kernels (ARMv7 NEON; the tests also
// build them on x86 through SIMDe). The tables become one saturating doubling
// multiply-high per term (vqdmulh: floor(x * k / 2^15)) with multipliers
// proved below against every table entry, so the output is bit-identical to
// the C kernels. vld2/3/4 and vst2/3/4 do the byte (de)interleaving. Each
// kernel does whole blocks and returns how many groups it did; the caller
// finishes the rest with the C kernel.
#include "image/ConvertRows.h"

#if OV_HAVE_NEON_ROWS

#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/arm/neon.h>
#endif

namespace orvan::convert_row {
namespace {

// GCC otherwise keeps some of the helpers out of line, which costs a call and
// the spilling of every vector argument per block.
#define OV_INLINE inline __attribute__((always_inline))

// Inverse terms of x = y - 16 or x = c - 128: n * x + floor(x * k / 2^15),
// plus 1 for negative x (the tables truncate toward zero).
constexpr int16_t kQY = 5372, kQRV = 19529, kQGV = 26625, kQGU = 12810, kQBU = 586;
// Forward terms of a channel value (never negative): floor(x * k / 2^15),
// negated for the negative tables.
constexpr int16_t kQYR = 8421, kQYG = 16516, kQYB = 3210, kQUR = 4850, kQUG = 9535, kQUB = 14383,
                  kQVG = 12059, kQVB = 2326;

constexpr int q15(int x, int k) { return (x * k) >> 15; }  // arithmetic shift: floor

constexpr bool multipliersMatch() {
  using namespace orvan::colortables;
  for (int i = 0; i < 256; ++i) {
    const int y = i - 16, c = i - 128, ny = y < 0, nc = c < 0;
    if (kY[i] != y + q15(y, kQY) + ny || kRV[i] != c + q15(c, kQRV) + nc || kGV[i] != q15(c, kQGV) + nc ||
        kGU[i] != q15(c, kQGU) + nc || kBU[i] != 2 * c + q15(c, kQBU) + nc)
      return false;
    if (kYR[i] != q15(i, kQYR) || kYG[i] != q15(i, kQYG) || kYB[i] != q15(i, kQYB) ||
        kUR[i] != -q15(i, kQUR) || kUG[i] != -q15(i, kQUG) || kUB[i] != q15(i, kQUB) ||
        kVG[i] != -q15(i, kQVG) || kVB[i] != -q15(i, kQVB))
      return false;
  }
  return true;
}
static_assert(multipliersMatch(), "the vqdmulh multipliers must reproduce every table entry");

// The multipliers in the lanes of d registers, for vqdmulh by lane: a
// by-scalar multiply takes its scalar from d0..d7, and one register per
// constant would crowd that out.
struct InverseK {
  int16x4_t a, b;  // a: Y, RV, GV, GU; b: BU
};
struct ForwardK {
  int16x4_t a, b;  // a: YR, YG, YB, UR; b: UG, UB, VG, VB
};
alignas(8) constexpr int16_t kInverse[8] = {kQY, kQRV, kQGV, kQGU, kQBU, 0, 0, 0};
alignas(8) constexpr int16_t kForward[8] = {kQYR, kQYG, kQYB, kQUR, kQUG, kQUB, kQVG, kQVB};

OV_INLINE InverseK inverseK() { return {vld1_s16(kInverse), vld1_s16(kInverse + 4)}; }
OV_INLINE ForwardK forwardK() { return {vld1_s16(kForward), vld1_s16(kForward + 4)}; }

OV_INLINE int16x8_t s16(uint16x8_t v) { return vreinterpretq_s16_u16(v); }

// x plus 1 in every lane where s is negative (its sign bit, shifted down).
OV_INLINE int16x8_t plusNegative(int16x8_t x, int16x8_t s) {
  return s16(vsraq_n_u16(vreinterpretq_u16_s16(x), vreinterpretq_u16_s16(s), 15));
}

struct ChromaTerms {
  int16x8_t rv, gvu, bu;
};

OV_INLINE ChromaTerms chromaTerms(uint8x8_t u, uint8x8_t v, const InverseK& k) {
  const uint8x8_t k128 = vdup_n_u8(128);
  const int16x8_t ux = s16(vsubl_u8(u, k128)), vx = s16(vsubl_u8(v, k128));
  ChromaTerms t;
  t.rv = plusNegative(vaddq_s16(vx, vqdmulhq_lane_s16(vx, k.a, 1)), vx);
  t.gvu = plusNegative(
      plusNegative(vaddq_s16(vqdmulhq_lane_s16(vx, k.a, 2), vqdmulhq_lane_s16(ux, k.a, 3)), vx), ux);
  t.bu = plusNegative(vaddq_s16(vaddq_s16(ux, ux), vqdmulhq_lane_s16(ux, k.b, 0)), ux);
  return t;
}

OV_INLINE int16x8_t lumaTerm(uint8x8_t y, const InverseK& k) {
  const int16x8_t x = s16(vsubl_u8(y, vdup_n_u8(16)));
  return plusNegative(vaddq_s16(x, vqdmulhq_lane_s16(x, k.a, 0)), x);
}

// Eight pixels, clamped to 0..255, as R, G and B planes.
OV_INLINE uint8x8x3_t pixels8(int16x8_t l, int16x8_t rv, int16x8_t gvu, int16x8_t bu) {
  uint8x8x3_t p;
  p.val[0] = vqmovun_s16(vaddq_s16(l, rv));
  p.val[1] = vqmovun_s16(vsubq_s16(l, gvu));
  p.val[2] = vqmovun_s16(vaddq_s16(l, bu));
  return p;
}

// 32 pixels from 32 luma bytes and the terms of 8 chroma pairs, one per
// quad. vld4 puts pixel k of every quad in plane k, lane for lane with the
// chroma terms; zips put the planes back in pixel order.
OV_INLINE void storeQuads32(const uint8_t* y, const ChromaTerms& c, const InverseK& k, uint8_t* rgb) {
  const uint8x8x4_t l = vld4_u8(y);
  uint8x8x3_t p[4];
#pragma GCC unroll 4
  for (int j = 0; j < 4; ++j) p[j] = pixels8(lumaTerm(l.val[j], k), c.rv, c.gvu, c.bu);
  uint8x8x3_t out[4];
#pragma GCC unroll 3
  for (int ch = 0; ch < 3; ++ch) {
    const uint8x8x2_t a = vzip_u8(p[0].val[ch], p[1].val[ch]), b = vzip_u8(p[2].val[ch], p[3].val[ch]);
    const uint16x4x2_t lo = vzip_u16(vreinterpret_u16_u8(a.val[0]), vreinterpret_u16_u8(b.val[0]));
    const uint16x4x2_t hi = vzip_u16(vreinterpret_u16_u8(a.val[1]), vreinterpret_u16_u8(b.val[1]));
    out[0].val[ch] = vreinterpret_u8_u16(lo.val[0]);
    out[1].val[ch] = vreinterpret_u8_u16(lo.val[1]);
    out[2].val[ch] = vreinterpret_u8_u16(hi.val[0]);
    out[3].val[ch] = vreinterpret_u8_u16(hi.val[1]);
  }
#pragma GCC unroll 4
  for (int j = 0; j < 4; ++j) vst3_u8(rgb + 24 * j, out[j]);
}

struct ForwardTerms {
  int16x8_t y, u, v;  // y with its +16; u and v before their rounding
};

OV_INLINE ForwardTerms forwardTerms(uint8x8_t r8, uint8x8_t g8, uint8x8_t b8, const ForwardK& k) {
  const int16x8_t r = s16(vmovl_u8(r8)), g = s16(vmovl_u8(g8)), b = s16(vmovl_u8(b8));
  ForwardTerms f;
  f.y = vaddq_s16(vaddq_s16(vqdmulhq_lane_s16(r, k.a, 0), vqdmulhq_lane_s16(g, k.a, 1)),
                  vaddq_s16(vqdmulhq_lane_s16(b, k.a, 2), vdupq_n_s16(16)));
  f.u = vsubq_s16(vqdmulhq_lane_s16(b, k.b, 1),
                  vaddq_s16(vqdmulhq_lane_s16(r, k.a, 3), vqdmulhq_lane_s16(g, k.b, 0)));
  f.v = vsubq_s16(vqdmulhq_lane_s16(r, k.b, 1),
                  vaddq_s16(vqdmulhq_lane_s16(g, k.b, 2), vqdmulhq_lane_s16(b, k.b, 3)));
  return f;
}

OV_INLINE uint8x8_t lowBytes(int16x8_t v) { return vmovn_u16(vreinterpretq_u16_s16(v)); }

// Eight pixel pairs: the luma bytes of the even and the odd pixels, and per
// pair the sums of its two U and two V terms.
struct PairTerms {
  uint8x8_t yEven, yOdd;
  int16x8_t u, v;
};

OV_INLINE PairTerms forwardPairs(const uint8_t* rgb, const ForwardK& k) {
  const uint8x16x3_t p = vld3q_u8(rgb);
  const uint8x8x2_t r = vuzp_u8(vget_low_u8(p.val[0]), vget_high_u8(p.val[0]));
  const uint8x8x2_t g = vuzp_u8(vget_low_u8(p.val[1]), vget_high_u8(p.val[1]));
  const uint8x8x2_t b = vuzp_u8(vget_low_u8(p.val[2]), vget_high_u8(p.val[2]));
  const ForwardTerms e = forwardTerms(r.val[0], g.val[0], b.val[0], k);
  const ForwardTerms o = forwardTerms(r.val[1], g.val[1], b.val[1], k);
  return {lowBytes(e.y), lowBytes(o.y), vaddq_s16(e.u, o.u), vaddq_s16(e.v, o.v)};
}

// The chroma byte of a sum of 2^kShift terms: (s + 128 * 2^kShift) >> kShift
// = (s >> kShift) + 128, as a byte.
template <int kShift>
OV_INLINE uint8x8_t chromaByte(int16x8_t s) {
  return vadd_u8(vreinterpret_u8_s8(vshrn_n_s16(s, kShift)), vdup_n_u8(128));
}

template <int U>
int nvQuadToRGB(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads) {
  const InverseK k = inverseK();
  int done = 0;
  for (; done + 8 <= quads; done += 8, y += 32, chroma += 16, rgb += 96) {
    const uint8x8x2_t c = vld2_u8(chroma);
    storeQuads32(y, chromaTerms(c.val[U], c.val[1 - U], k), k, rgb);
  }
  return done;
}

template <int U>
int packed422ToRGB(const uint8_t* src, uint8_t* rgb, int pairs) {
  const InverseK k = inverseK();
  int done = 0;
  for (; done + 8 <= pairs; done += 8, src += 32, rgb += 48) {
    const uint8x8x4_t s = vld4_u8(src);  // Y0, byte 1, Y1, byte 3 of 8 pairs
    const ChromaTerms c = chromaTerms(s.val[U], s.val[4 - U], k);
    const uint8x8x3_t p0 = pixels8(lumaTerm(s.val[0], k), c.rv, c.gvu, c.bu);
    const uint8x8x3_t p1 = pixels8(lumaTerm(s.val[2], k), c.rv, c.gvu, c.bu);
    const uint8x8x2_t r = vzip_u8(p0.val[0], p1.val[0]), g = vzip_u8(p0.val[1], p1.val[1]),
                      b = vzip_u8(p0.val[2], p1.val[2]);
    const uint8x8x3_t lo = {{r.val[0], g.val[0], b.val[0]}}, hi = {{r.val[1], g.val[1], b.val[1]}};
    vst3_u8(rgb, lo);
    vst3_u8(rgb + 24, hi);
  }
  return done;
}

template <int U>
int rgbToPacked422(const uint8_t* rgb, uint8_t* dst, int pairs) {
  const ForwardK k = forwardK();
  int done = 0;
  for (; done + 8 <= pairs; done += 8, rgb += 48, dst += 32) {
    const PairTerms p = forwardPairs(rgb, k);
    uint8x8x4_t out;
    out.val[0] = p.yEven;
    out.val[2] = p.yOdd;
    out.val[U] = chromaByte<1>(p.u);
    out.val[4 - U] = chromaByte<1>(p.v);
    vst4_u8(dst, out);
  }
  return done;
}

template <int U>
int rgbToNVBlocks(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                  int blocks) {
  const ForwardK k = forwardK();
  int done = 0;
  for (; done + 8 <= blocks; done += 8, rgb0 += 48, rgb1 += 48, y0 += 16, y1 += 16, chroma += 16) {
    const PairTerms a = forwardPairs(rgb0, k);
    vst2_u8(y0, (uint8x8x2_t{{a.yEven, a.yOdd}}));
    const PairTerms b = forwardPairs(rgb1, k);
    vst2_u8(y1, (uint8x8x2_t{{b.yEven, b.yOdd}}));
    uint8x8x2_t c;
    c.val[U] = chromaByte<2>(vaddq_s16(a.u, b.u));
    c.val[1 - U] = chromaByte<2>(vaddq_s16(a.v, b.v));
    vst2_u8(chroma, c);
  }
  return done;
}

}  // namespace

int NVQuadToRGBRow_NEON(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset) {
  return uOffset == 0 ? nvQuadToRGB<0>(y, chroma, rgb, quads) : nvQuadToRGB<1>(y, chroma, rgb, quads);
}

int I420QuadToRGBRow_NEON(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads) {
  const InverseK k = inverseK();
  int done = 0;
  for (; done + 8 <= quads; done += 8, y += 32, u += 8, v += 8, rgb += 96)
    storeQuads32(y, chromaTerms(vld1_u8(u), vld1_u8(v), k), k, rgb);
  return done;
}

int Packed422ToRGBRow_NEON(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset) {
  return uOffset == 1 ? packed422ToRGB<1>(src, rgb, pairs) : packed422ToRGB<3>(src, rgb, pairs);
}

int RGBToPacked422Row_NEON(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset) {
  return uOffset == 1 ? rgbToPacked422<1>(rgb, dst, pairs) : rgbToPacked422<3>(rgb, dst, pairs);
}

int RGBToNVBlockRow_NEON(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                         int blocks, int uOffset) {
  return uOffset == 0 ? rgbToNVBlocks<0>(rgb0, rgb1, y0, y1, chroma, blocks)
                      : rgbToNVBlocks<1>(rgb0, rgb1, y0, y1, chroma, blocks);
}

int SplitPairsRow_NEON(const uint8_t* pairs, uint8_t* first, uint8_t* second, int n) {
  int done = 0;
  for (; done + 16 <= n; done += 16, pairs += 32, first += 16, second += 16) {
    const uint8x16x2_t p = vld2q_u8(pairs);
    vst1q_u8(first, p.val[0]);
    vst1q_u8(second, p.val[1]);
  }
  return done;
}

}  // namespace orvan::convert_row

#endif  // OV_HAVE_NEON_ROWS
