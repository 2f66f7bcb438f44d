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

namespace convert_row {
namespace {

// Inverse terms of x = y - 16 or x = c - 128: n * x + floor(x * k / 2^15),
// plus 1 for negative x (the tables truncate toward zero).
constexpr int16_t kQY = 5372, kQRV = 19529, kQGV = 26625, kQGU = 12810, kQBU = 586;
// Forward terms of a channel value (never negative): floor(x * k / 2^15),
// negated for the negative tables.
constexpr int16_t kQYR = 8421, kQYG = 16516, kQYB = 3210, kQUR = 4850, kQUG = 9535, kQUB = 14383,
                  kQVG = 12059, kQVB = 2326;

constexpr int q15(int x, int k) { return (x * k) >> 15; }  // arithmetic shift: floor

constexpr bool multipliersMatch() {
  using namespace colortables;
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

inline int16x8_t s16(uint16x8_t v) { return vreinterpretq_s16_u16(v); }

// x plus 1 in every lane where s is negative (its sign bit, shifted down).
inline int16x8_t plusNegative(int16x8_t x, int16x8_t s) {
  return s16(vsraq_n_u16(vreinterpretq_u16_s16(x), vreinterpretq_u16_s16(s), 15));
}

struct ChromaTerms {
  int16x8_t rv, gvu, bu;
};

inline ChromaTerms chromaTerms(uint8x8_t u, uint8x8_t v) {
  const uint8x8_t k128 = vdup_n_u8(128);
  const int16x8_t ux = s16(vsubl_u8(u, k128)), vx = s16(vsubl_u8(v, k128));
  ChromaTerms t;
  t.rv = plusNegative(vaddq_s16(vx, vqdmulhq_n_s16(vx, kQRV)), vx);
  t.gvu = plusNegative(plusNegative(vaddq_s16(vqdmulhq_n_s16(vx, kQGV), vqdmulhq_n_s16(ux, kQGU)), vx), ux);
  t.bu = plusNegative(vaddq_s16(vaddq_s16(ux, ux), vqdmulhq_n_s16(ux, kQBU)), ux);
  return t;
}

inline int16x8_t lumaTerm(uint8x8_t y) {
  const int16x8_t x = s16(vsubl_u8(y, vdup_n_u8(16)));
  return plusNegative(vaddq_s16(x, vqdmulhq_n_s16(x, kQY)), x);
}

// Eight pixels, clamped to 0..255, as R, G and B planes.
inline uint8x8x3_t pixels8(int16x8_t l, int16x8_t rv, int16x8_t gvu, int16x8_t bu) {
  uint8x8x3_t p;
  p.val[0] = vqmovun_s16(vaddq_s16(l, rv));
  p.val[1] = vqmovun_s16(vsubq_s16(l, gvu));
  p.val[2] = vqmovun_s16(vaddq_s16(l, bu));
  return p;
}

// Each lane of t four times: out[k] holds lanes 2k and 2k + 1.
inline void spread4(int16x8_t t, int16x8_t out[4]) {
  const int16x8x2_t two = vzipq_s16(t, t);
  const int16x8x2_t lo = vzipq_s16(two.val[0], two.val[0]), hi = vzipq_s16(two.val[1], two.val[1]);
  out[0] = lo.val[0];
  out[1] = lo.val[1];
  out[2] = hi.val[0];
  out[3] = hi.val[1];
}

// 32 pixels from 32 luma bytes and the terms of 8 chroma pairs, one per quad.
inline void storeQuads32(const uint8_t* y, const ChromaTerms& c, uint8_t* rgb) {
  int16x8_t rv[4], gvu[4], bu[4];
  spread4(c.rv, rv);
  spread4(c.gvu, gvu);
  spread4(c.bu, bu);
  for (int k = 0; k < 4; ++k)
    vst3_u8(rgb + 24 * k, pixels8(lumaTerm(vld1_u8(y + 8 * k)), rv[k], gvu[k], bu[k]));
}

struct ForwardTerms {
  int16x8_t y, u, v;  // y with its +16; u and v before their rounding
};

inline ForwardTerms forwardTerms(uint8x8_t r8, uint8x8_t g8, uint8x8_t b8) {
  const int16x8_t r = s16(vmovl_u8(r8)), g = s16(vmovl_u8(g8)), b = s16(vmovl_u8(b8));
  ForwardTerms f;
  f.y = vaddq_s16(vaddq_s16(vqdmulhq_n_s16(r, kQYR), vqdmulhq_n_s16(g, kQYG)),
                  vaddq_s16(vqdmulhq_n_s16(b, kQYB), vdupq_n_s16(16)));
  f.u = vsubq_s16(vqdmulhq_n_s16(b, kQUB), vaddq_s16(vqdmulhq_n_s16(r, kQUR), vqdmulhq_n_s16(g, kQUG)));
  f.v = vsubq_s16(vqdmulhq_n_s16(r, kQUB), vaddq_s16(vqdmulhq_n_s16(g, kQVG), vqdmulhq_n_s16(b, kQVB)));
  return f;
}

inline uint8x8_t lowBytes(int16x8_t v) { return vmovn_u16(vreinterpretq_u16_s16(v)); }

// Terms of the even and of the odd pixels among 16 RGB pixels (48 bytes).
inline void forwardPairs(const uint8_t* rgb, ForwardTerms& even, ForwardTerms& odd) {
  const uint8x16x3_t p = vld3q_u8(rgb);
  const uint8x8x2_t r = vuzp_u8(vget_low_u8(p.val[0]), vget_high_u8(p.val[0]));
  const uint8x8x2_t g = vuzp_u8(vget_low_u8(p.val[1]), vget_high_u8(p.val[1]));
  const uint8x8x2_t b = vuzp_u8(vget_low_u8(p.val[2]), vget_high_u8(p.val[2]));
  even = forwardTerms(r.val[0], g.val[0], b.val[0]);
  odd = forwardTerms(r.val[1], g.val[1], b.val[1]);
}

template <int U>
int nvQuadToRGB(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads) {
  int done = 0;
  for (; done + 8 <= quads; done += 8, y += 32, chroma += 16, rgb += 96) {
    const uint8x8x2_t c = vld2_u8(chroma);
    storeQuads32(y, chromaTerms(c.val[U], c.val[1 - U]), rgb);
  }
  return done;
}

template <int U>
int packed422ToRGB(const uint8_t* src, uint8_t* rgb, int pairs) {
  int done = 0;
  for (; done + 8 <= pairs; done += 8, src += 32, rgb += 48) {
    const uint8x8x4_t s = vld4_u8(src);  // Y0, byte 1, Y1, byte 3 of 8 pairs
    const ChromaTerms c = chromaTerms(s.val[U], s.val[4 - U]);
    const uint8x8x3_t p0 = pixels8(lumaTerm(s.val[0]), c.rv, c.gvu, c.bu);
    const uint8x8x3_t p1 = pixels8(lumaTerm(s.val[2]), c.rv, c.gvu, c.bu);
    uint8x8x3_t lo, hi;
    for (int ch = 0; ch < 3; ++ch) {
      const uint8x8x2_t z = vzip_u8(p0.val[ch], p1.val[ch]);
      lo.val[ch] = z.val[0];
      hi.val[ch] = z.val[1];
    }
    vst3_u8(rgb, lo);
    vst3_u8(rgb + 24, hi);
  }
  return done;
}

template <int U>
int rgbToPacked422(const uint8_t* rgb, uint8_t* dst, int pairs) {
  const uint8x8_t k128 = vdup_n_u8(128);
  int done = 0;
  for (; done + 8 <= pairs; done += 8, rgb += 48, dst += 32) {
    ForwardTerms e, o;
    forwardPairs(rgb, e, o);
    // (a + b + 256) >> 1 = ((a + b) >> 1) + 128, taken as a byte.
    const uint8x8_t u = vadd_u8(lowBytes(vhaddq_s16(e.u, o.u)), k128);
    const uint8x8_t v = vadd_u8(lowBytes(vhaddq_s16(e.v, o.v)), k128);
    uint8x8x4_t out;
    out.val[0] = lowBytes(e.y);
    out.val[2] = lowBytes(o.y);
    out.val[U] = u;
    out.val[4 - U] = v;
    vst4_u8(dst, out);
  }
  return done;
}

template <int U>
int rgbToNVBlocks(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                  int blocks) {
  const uint8x8_t k128 = vdup_n_u8(128);
  int done = 0;
  for (; done + 8 <= blocks; done += 8, rgb0 += 48, rgb1 += 48, y0 += 16, y1 += 16, chroma += 16) {
    ForwardTerms e0, o0, e1, o1;
    forwardPairs(rgb0, e0, o0);
    forwardPairs(rgb1, e1, o1);
    uint8x8x2_t luma;
    luma.val[0] = lowBytes(e0.y);
    luma.val[1] = lowBytes(o0.y);
    vst2_u8(y0, luma);
    luma.val[0] = lowBytes(e1.y);
    luma.val[1] = lowBytes(o1.y);
    vst2_u8(y1, luma);
    // (s + 512) >> 2 = (s >> 2) + 128, taken as a byte.
    const int16x8_t us = vaddq_s16(vaddq_s16(e0.u, o0.u), vaddq_s16(e1.u, o1.u));
    const int16x8_t vs = vaddq_s16(vaddq_s16(e0.v, o0.v), vaddq_s16(e1.v, o1.v));
    uint8x8x2_t c;
    c.val[U] = vadd_u8(vreinterpret_u8_s8(vshrn_n_s16(us, 2)), k128);
    c.val[1 - U] = vadd_u8(vreinterpret_u8_s8(vshrn_n_s16(vs, 2)), k128);
    vst2_u8(chroma, c);
  }
  return done;
}

}  // namespace

int NVQuadToRGBRow_NEON(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset) {
  return uOffset == 0 ? nvQuadToRGB<0>(y, chroma, rgb, quads) : nvQuadToRGB<1>(y, chroma, rgb, quads);
}

int I420QuadToRGBRow_NEON(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads) {
  int done = 0;
  for (; done + 8 <= quads; done += 8, y += 32, u += 8, v += 8, rgb += 96)
    storeQuads32(y, chromaTerms(vld1_u8(u), vld1_u8(v)), rgb);
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

}  // namespace convert_row

#endif  // OV_HAVE_NEON_ROWS
