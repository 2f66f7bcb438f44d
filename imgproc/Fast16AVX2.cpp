// FAST-16 row kernel, 32 pixels per step in 8-bit AVX2 lanes: the SSSE3
// kernel's saturating-margin arithmetic at twice the width.
#include "imgproc/Fast16Rows.h"

#if OV_HAVE_FAST16_X86

#include <immintrin.h>

#define OV_AVX2 __attribute__((target("avx2")))

namespace orvan::fast16_row {
namespace {

OV_AVX2 inline __m256i bestArc(const __m256i m[16]) {
  // Neighbouring arcs k and k + 1 share the 8 pixels k + 1 .. k + 8, so the
  // better of the two is min(shared, max(m[k], m[k + 9])): only the runs that
  // start at odd positions are needed.
  __m256i m2[16], m4[16];
  for (int j = 1; j < 16; j += 2) m2[j] = _mm256_min_epu8(m[j], m[(j + 1) & 15]);
  for (int j = 1; j < 16; j += 2) m4[j] = _mm256_min_epu8(m2[j], m2[(j + 2) & 15]);
  __m256i best = _mm256_setzero_si256();
  for (int k = 0; k < 16; k += 2)
    best = _mm256_max_epu8(best, _mm256_min_epu8(_mm256_min_epu8(m4[k + 1], m4[(k + 5) & 15]),
                                                 _mm256_max_epu8(m[k], m[(k + 9) & 15])));
  return best;
}

OV_AVX2 inline __m256i pairs(const __m256i q[4]) {
  return _mm256_or_si256(_mm256_or_si256(_mm256_min_epu8(q[0], q[1]), _mm256_min_epu8(q[1], q[2])),
                         _mm256_or_si256(_mm256_min_epu8(q[2], q[3]), _mm256_min_epu8(q[3], q[0])));
}

OV_AVX2 inline bool any(__m256i v) { return !_mm256_testz_si256(v, v); }

OV_AVX2 inline __m256i load(const uint8_t* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

// Scores the 32 pixels from column x; appends the corners among the lanes
// set in `fresh`. Returns how many it appended.
OV_AVX2 inline int scoreBlock(const uint8_t* row, const ptrdiff_t* o, int x, __m256i t, unsigned fresh,
                              uint8_t* map, int* xs) {
  const __m256i zero = _mm256_setzero_si256();
  const uint8_t* p = row + x;
  const __m256i c = load(p);
  const __m256i hi = _mm256_adds_epu8(c, t), lo = _mm256_subs_epu8(c, t);
  __m256i above[4], below[4];
  for (int i = 0; i < 4; ++i) {
    const __m256i v = load(p + o[4 * i]);
    above[i] = _mm256_subs_epu8(v, hi);
    below[i] = _mm256_subs_epu8(lo, v);
  }
  const __m256i up = pairs(above), down = pairs(below);
  if (!any(_mm256_or_si256(up, down))) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(map + x), zero);
    return 0;
  }
  // A lane that passes on one side only is no corner on the other: its
  // margins there stay at or below the threshold and cannot raise a corner's
  // score. Flipping all bits reverses the order, so one pass over the circle
  // takes each lane's margins toward its own side.
  const __m256i downward = _mm256_cmpeq_epi8(up, zero);
  __m256i best, m[16];
  if (!any(_mm256_andnot_si256(downward, down))) {
    const __m256i cs = _mm256_xor_si256(c, downward);
    for (int j = 0; j < 16; ++j) m[j] = _mm256_subs_epu8(_mm256_xor_si256(load(p + o[j]), downward), cs);
    best = bestArc(m);
  } else {
    for (int j = 0; j < 16; ++j) m[j] = _mm256_subs_epu8(load(p + o[j]), c);
    best = bestArc(m);
    for (int j = 0; j < 16; ++j) m[j] = _mm256_subs_epu8(c, load(p + o[j]));
    best = _mm256_max_epu8(best, bestArc(m));
  }
  const __m256i none = _mm256_cmpeq_epi8(_mm256_subs_epu8(best, t), zero);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(map + x),
                      _mm256_andnot_si256(none, _mm256_subs_epu8(best, _mm256_set1_epi8(1))));
  int n = 0;
  for (unsigned bits = ~static_cast<unsigned>(_mm256_movemask_epi8(none)) & fresh; bits; bits &= bits - 1)
    xs[n++] = x + __builtin_ctz(bits);
  return n;
}

}  // namespace

OV_AVX2 int ScoreRow_AVX2(const uint8_t* row, const int* pixel, int x0, int count, int threshold,
                          uint8_t* map, int* xs) {
  if (count < 32) return ScoreRow_C(row, pixel, x0, count, threshold, map, xs);
  const __m256i t = _mm256_set1_epi8(static_cast<char>(threshold));
  // Local copies: the stores into map could otherwise alias the offsets.
  ptrdiff_t o[16];
  for (int j = 0; j < 16; ++j) o[j] = pixel[j];
  int n = 0;
  const int blocks = count / 32, rest = count % 32;
  for (int b = 0; b < blocks; ++b) n += scoreBlock(row, o, x0 + 32 * b, t, ~0u, map, xs + n);
  // The last block ends with the row, over lanes already done: they score
  // the same again, only the new ones are listed.
  if (rest) n += scoreBlock(row, o, x0 + count - 32, t, ~0u << (32 - rest), map, xs + n);
  return n;
}

}  // namespace orvan::fast16_row

#endif  // OV_HAVE_FAST16_X86
