// SSSE3 versions of the row kernels of the camera layouts. They reproduce the lookup tables
// exactly with 16-bit multiply-high arithmetic (image/ConvertRowsArith.h), so
// the results are bit-identical to the C kernels. Each kernel handles whole
// blocks of pixels and returns how many groups it did; the caller finishes
// the rest with the C kernel.
#include "image/ConvertRows.h"
#include "image/ConvertRowsArith.h"

#if OV_HAVE_SSSE3_ROWS

#include <immintrin.h>

#define OV_SSSE3 __attribute__((target("ssse3")))

namespace orvan::convert_row {
namespace {

using namespace arith;

// Byte shuffles between three planes of 16 and 48 interleaved bytes.
struct Masks {
  alignas(16) unsigned char v[3][3][16];  // [output chunk][channel][byte]
};
constexpr Masks interleaveMasks() {
  Masks m{};
  for (int chunk = 0; chunk < 3; ++chunk)
    for (int ch = 0; ch < 3; ++ch)
      for (int b = 0; b < 16; ++b) {
        const int k = chunk * 16 + b;
        m.v[chunk][ch][b] = k % 3 == ch ? static_cast<unsigned char>(k / 3) : 0x80;
      }
  return m;
}
constexpr Masks deinterleaveMasks() {
  Masks m{};  // [input chunk][channel][byte of the plane]
  for (int chunk = 0; chunk < 3; ++chunk)
    for (int ch = 0; ch < 3; ++ch)
      for (int p = 0; p < 16; ++p) {
        const int k = 3 * p + ch - chunk * 16;
        m.v[chunk][ch][p] = k >= 0 && k < 16 ? static_cast<unsigned char>(k) : 0x80;
      }
  return m;
}
constexpr Masks kInterleave = interleaveMasks();
constexpr Masks kDeinterleave = deinterleaveMasks();

OV_SSSE3 inline __m128i mask(const Masks& m, int a, int b) {
  return _mm_load_si128(reinterpret_cast<const __m128i*>(m.v[a][b]));
}

// sign(x) * ((|x| * a) >> 16) in 16-bit lanes.
OV_SSSE3 inline __m128i truncMulV(__m128i x, __m128i a) {
  return _mm_sign_epi16(_mm_mulhi_epu16(_mm_abs_epi16(x), a), x);
}

struct ChromaV {
  __m128i rv, gvu, bu;
};

OV_SSSE3 inline ChromaV chromaTerms(__m128i u, __m128i v) {
  const __m128i k128 = _mm_set1_epi16(128);
  const __m128i vx = _mm_sub_epi16(v, k128), ux = _mm_sub_epi16(u, k128);
  ChromaV c;
  c.rv = _mm_add_epi16(vx, truncMulV(vx, _mm_set1_epi16(static_cast<short>(kFracRV))));
  c.gvu = _mm_add_epi16(truncMulV(vx, _mm_set1_epi16(static_cast<short>(kFracGV))),
                        truncMulV(ux, _mm_set1_epi16(static_cast<short>(kFracGU))));
  c.bu = _mm_add_epi16(_mm_add_epi16(ux, ux), truncMulV(ux, _mm_set1_epi16(static_cast<short>(kFracBU))));
  return c;
}

OV_SSSE3 inline __m128i lumaTerm(__m128i y) {
  const __m128i x = _mm_sub_epi16(y, _mm_set1_epi16(16));
  return _mm_add_epi16(x, truncMulV(x, _mm_set1_epi16(static_cast<short>(kFracY))));
}

// Writes 16 pixels from two 8-lane halves of luma and chroma terms.
OV_SSSE3 inline void storeRGB16(uint8_t* out, __m128i l0, __m128i l1, const ChromaV& c0, const ChromaV& c1) {
  const __m128i r = _mm_packus_epi16(_mm_add_epi16(l0, c0.rv), _mm_add_epi16(l1, c1.rv));
  const __m128i g = _mm_packus_epi16(_mm_sub_epi16(l0, c0.gvu), _mm_sub_epi16(l1, c1.gvu));
  const __m128i b = _mm_packus_epi16(_mm_add_epi16(l0, c0.bu), _mm_add_epi16(l1, c1.bu));
  for (int chunk = 0; chunk < 3; ++chunk) {
    const __m128i v = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(r, mask(kInterleave, chunk, 0)),
                                                _mm_shuffle_epi8(g, mask(kInterleave, chunk, 1))),
                                   _mm_shuffle_epi8(b, mask(kInterleave, chunk, 2)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16 * chunk), v);
  }
}

OV_SSSE3 inline ChromaV spreadLo(const ChromaV& c) {  // lanes 0..3 each twice
  return {_mm_unpacklo_epi16(c.rv, c.rv), _mm_unpacklo_epi16(c.gvu, c.gvu), _mm_unpacklo_epi16(c.bu, c.bu)};
}
OV_SSSE3 inline ChromaV spreadHi(const ChromaV& c) {  // lanes 4..7 each twice
  return {_mm_unpackhi_epi16(c.rv, c.rv), _mm_unpackhi_epi16(c.gvu, c.gvu), _mm_unpackhi_epi16(c.bu, c.bu)};
}
OV_SSSE3 inline ChromaV spread32Lo(const ChromaV& c) {  // 32-bit lanes 0..1 each twice
  return {_mm_unpacklo_epi32(c.rv, c.rv), _mm_unpacklo_epi32(c.gvu, c.gvu), _mm_unpacklo_epi32(c.bu, c.bu)};
}
OV_SSSE3 inline ChromaV spread32Hi(const ChromaV& c) {
  return {_mm_unpackhi_epi32(c.rv, c.rv), _mm_unpackhi_epi32(c.gvu, c.gvu), _mm_unpackhi_epi32(c.bu, c.bu)};
}

// Per-pixel forward terms of 8 pixels held in 16-bit lanes.
struct Forward {
  __m128i y, u, v;
};
OV_SSSE3 inline __m128i mul(__m128i x, int k) {
  return _mm_mulhi_epu16(x, _mm_set1_epi16(static_cast<short>(k)));
}

OV_SSSE3 inline Forward forwardTerms(__m128i r, __m128i g, __m128i b) {
  Forward f;
  f.y = _mm_add_epi16(_mm_add_epi16(mul(r, kMulYR), mul(g, kMulYG)),
                      _mm_add_epi16(mul(b, kMulYB), _mm_set1_epi16(16)));
  f.u = _mm_sub_epi16(mul(b, kMulUB), _mm_add_epi16(mul(r, kMulUR), mul(g, kMulUG)));
  f.v = _mm_sub_epi16(mul(r, kMulUB), _mm_add_epi16(mul(g, kMulVG), mul(b, kMulVB)));
  return f;
}

// 16 RGB pixels (48 bytes) split into R, G and B planes of 16 bytes.
OV_SSSE3 inline void deinterleave16(const uint8_t* src, __m128i plane[3]) {
  const __m128i in0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
  const __m128i in1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 16));
  const __m128i in2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 32));
  for (int ch = 0; ch < 3; ++ch)
    plane[ch] = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(in0, mask(kDeinterleave, 0, ch)),
                                          _mm_shuffle_epi8(in1, mask(kDeinterleave, 1, ch))),
                             _mm_shuffle_epi8(in2, mask(kDeinterleave, 2, ch)));
}

// Both 8-pixel halves of 16 deinterleaved pixels.
OV_SSSE3 inline void forward16(const __m128i plane[3], Forward& lo, Forward& hi) {
  const __m128i zero = _mm_setzero_si128();
  lo = forwardTerms(_mm_unpacklo_epi8(plane[0], zero), _mm_unpacklo_epi8(plane[1], zero),
                    _mm_unpacklo_epi8(plane[2], zero));
  hi = forwardTerms(_mm_unpackhi_epi8(plane[0], zero), _mm_unpackhi_epi8(plane[1], zero),
                    _mm_unpackhi_epi8(plane[2], zero));
}

// 32 pixels from 32 luma bytes and the terms of 8 chroma pairs, one per quad.
OV_SSSE3 inline void storeQuads32(uint8_t* rgb, const uint8_t* y, const ChromaV& terms) {
  const __m128i zero = _mm_setzero_si128();
  const ChromaV a = spreadLo(terms), b = spreadHi(terms);
  const ChromaV q0 = spread32Lo(a), q1 = spread32Hi(a), q2 = spread32Lo(b), q3 = spread32Hi(b);
  const __m128i y0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y));
  const __m128i y1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 16));
  storeRGB16(rgb, lumaTerm(_mm_unpacklo_epi8(y0, zero)), lumaTerm(_mm_unpackhi_epi8(y0, zero)), q0, q1);
  storeRGB16(rgb + 48, lumaTerm(_mm_unpacklo_epi8(y1, zero)), lumaTerm(_mm_unpackhi_epi8(y1, zero)), q2, q3);
}

}  // namespace

OV_SSSE3 int NVQuadToRGBRow_SSSE3(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads,
                                  int uOffset) {
  const __m128i low = _mm_set1_epi16(0x00FF);
  int done = 0;
  for (; done + 8 <= quads; done += 8, y += 32, chroma += 16, rgb += 96) {
    const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chroma));
    const __m128i first = _mm_and_si128(c, low), second = _mm_srli_epi16(c, 8);
    storeQuads32(rgb, y, uOffset == 0 ? chromaTerms(first, second) : chromaTerms(second, first));
  }
  return done;
}

OV_SSSE3 int I420QuadToRGBRow_SSSE3(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb,
                                    int quads) {
  const __m128i zero = _mm_setzero_si128();
  int done = 0;
  for (; done + 8 <= quads; done += 8, y += 32, u += 8, v += 8, rgb += 96) {
    const __m128i u8 = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(u)), zero);
    const __m128i v8 = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(v)), zero);
    storeQuads32(rgb, y, chromaTerms(u8, v8));
  }
  return done;
}

OV_SSSE3 int Packed422ToRGBRow_SSSE3(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset) {
  const __m128i low = _mm_set1_epi16(0x00FF), low32 = _mm_set1_epi32(0xFFFF);
  int done = 0;
  for (; done + 8 <= pairs; done += 8, src += 32, rgb += 48) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 16));
    // Odd bytes hold the chroma: per pair, the byte at offset 1 then 3.
    const __m128i ca = _mm_srli_epi16(a, 8), cb = _mm_srli_epi16(b, 8);
    const __m128i c1 = _mm_packs_epi32(_mm_and_si128(ca, low32), _mm_and_si128(cb, low32));
    const __m128i c3 = _mm_packs_epi32(_mm_srli_epi32(ca, 16), _mm_srli_epi32(cb, 16));
    const ChromaV terms = uOffset == 1 ? chromaTerms(c1, c3) : chromaTerms(c3, c1);
    storeRGB16(rgb, lumaTerm(_mm_and_si128(a, low)), lumaTerm(_mm_and_si128(b, low)), spreadLo(terms),
               spreadHi(terms));
  }
  return done;
}

OV_SSSE3 int RGBToPacked422Row_SSSE3(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset) {
  const __m128i k256 = _mm_set1_epi16(256);
  int done = 0;
  for (; done + 8 <= pairs; done += 8, rgb += 48, dst += 32) {
    __m128i plane[3];
    deinterleave16(rgb, plane);
    Forward lo, hi;
    forward16(plane, lo, hi);
    const __m128i y = _mm_packus_epi16(lo.y, hi.y);
    const __m128i u = _mm_srai_epi16(_mm_add_epi16(_mm_hadd_epi16(lo.u, hi.u), k256), 1);
    const __m128i v = _mm_srai_epi16(_mm_add_epi16(_mm_hadd_epi16(lo.v, hi.v), k256), 1);
    // Chroma bytes in pair order (U V for YUYV, V U for YVYU), then Y0 c0 Y1 c1.
    const __m128i c =
        uOffset == 1 ? _mm_or_si128(u, _mm_slli_epi16(v, 8)) : _mm_or_si128(v, _mm_slli_epi16(u, 8));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_unpacklo_epi8(y, c));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 16), _mm_unpackhi_epi8(y, c));
  }
  return done;
}

OV_SSSE3 int RGBToNVBlockRow_SSSE3(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1,
                                   uint8_t* chroma, int blocks, int uOffset) {
  const __m128i k512 = _mm_set1_epi16(512);
  int done = 0;
  for (; done + 8 <= blocks; done += 8, rgb0 += 48, rgb1 += 48, y0 += 16, y1 += 16, chroma += 16) {
    __m128i usum = _mm_setzero_si128(), vsum = _mm_setzero_si128();
    for (int row = 0; row < 2; ++row) {
      __m128i plane[3];
      deinterleave16(row == 0 ? rgb0 : rgb1, plane);
      Forward lo, hi;
      forward16(plane, lo, hi);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row == 0 ? y0 : y1), _mm_packus_epi16(lo.y, hi.y));
      // Sums of horizontal neighbours: one lane per block.
      usum = _mm_add_epi16(usum, _mm_hadd_epi16(lo.u, hi.u));
      vsum = _mm_add_epi16(vsum, _mm_hadd_epi16(lo.v, hi.v));
    }
    const __m128i u = _mm_srai_epi16(_mm_add_epi16(usum, k512), 2);
    const __m128i v = _mm_srai_epi16(_mm_add_epi16(vsum, k512), 2);
    const __m128i pairs =
        uOffset == 0 ? _mm_or_si128(u, _mm_slli_epi16(v, 8)) : _mm_or_si128(v, _mm_slli_epi16(u, 8));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(chroma), pairs);
  }
  return done;
}

bool HasSSSE3() { return __builtin_cpu_supports("ssse3"); }

}  // namespace orvan::convert_row

#endif  // OV_HAVE_SSSE3_ROWS
