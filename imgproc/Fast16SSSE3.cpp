// FAST-16 row kernel, 16 pixels per step in 8-bit lanes. The margins are
// saturating differences, so the arc minima and their maximum are exactly
// the C reference's integers. Only SSE2 instructions are needed; it is
// chosen at the SSSE3 level the library's x86 kernels share.
#include "imgproc/Fast16Rows.h"

#if OV_HAVE_FAST16_X86

#include <immintrin.h>

#define OV_SSSE3 __attribute__((target("ssse3")))

namespace orvan::fast16_row {
namespace {

// Largest minimum of 9 contiguous entries of the 16 margins around the circle.
OV_SSSE3 inline __m128i bestArc(const __m128i m[16]) {
  // Neighbouring arcs k and k + 1 share the 8 pixels k + 1 .. k + 8, so the
  // better of the two is min(shared, max(m[k], m[k + 9])): only the runs that
  // start at odd positions are needed.
  __m128i m2[16], m4[16];
  for (int j = 1; j < 16; j += 2) m2[j] = _mm_min_epu8(m[j], m[(j + 1) & 15]);
  for (int j = 1; j < 16; j += 2) m4[j] = _mm_min_epu8(m2[j], m2[(j + 2) & 15]);
  __m128i best = _mm_setzero_si128();
  for (int k = 0; k < 16; k += 2)
    best = _mm_max_epu8(
        best, _mm_min_epu8(_mm_min_epu8(m4[k + 1], m4[(k + 5) & 15]), _mm_max_epu8(m[k], m[(k + 9) & 15])));
  return best;
}

// Non-zero in lanes where two neighbouring compass pixels both pass: a
// superset of the corners.
OV_SSSE3 inline __m128i pairs(const __m128i q[4]) {
  return _mm_or_si128(_mm_or_si128(_mm_min_epu8(q[0], q[1]), _mm_min_epu8(q[1], q[2])),
                      _mm_or_si128(_mm_min_epu8(q[2], q[3]), _mm_min_epu8(q[3], q[0])));
}

OV_SSSE3 inline bool any(__m128i v) {
  return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_setzero_si128())) != 0xFFFF;
}

OV_SSSE3 inline __m128i load(const uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Scores the 16 pixels from column x; appends the corners among the lanes
// set in `fresh`. Returns how many it appended.
OV_SSSE3 inline int scoreBlock(const uint8_t* row, const ptrdiff_t* o, int x, __m128i t, unsigned fresh,
                               uint8_t* map, int* xs) {
  const __m128i zero = _mm_setzero_si128();
  const uint8_t* p = row + x;
  const __m128i c = load(p);
  const __m128i hi = _mm_adds_epu8(c, t), lo = _mm_subs_epu8(c, t);
  __m128i above[4], below[4];
  for (int i = 0; i < 4; ++i) {
    const __m128i v = load(p + o[4 * i]);
    above[i] = _mm_subs_epu8(v, hi);
    below[i] = _mm_subs_epu8(lo, v);
  }
  const __m128i up = pairs(above), down = pairs(below);
  if (!any(_mm_or_si128(up, down))) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(map + x), zero);
    return 0;
  }
  // A lane that passes on one side only is no corner on the other: its
  // margins there stay at or below the threshold and cannot raise a corner's
  // score. Flipping all bits reverses the order, so one pass over the circle
  // takes each lane's margins toward its own side.
  const __m128i downward = _mm_cmpeq_epi8(up, zero);
  __m128i best, m[16];
  if (!any(_mm_andnot_si128(downward, down))) {
    const __m128i cs = _mm_xor_si128(c, downward);
    for (int j = 0; j < 16; ++j) m[j] = _mm_subs_epu8(_mm_xor_si128(load(p + o[j]), downward), cs);
    best = bestArc(m);
  } else {
    for (int j = 0; j < 16; ++j) m[j] = _mm_subs_epu8(load(p + o[j]), c);
    best = bestArc(m);
    for (int j = 0; j < 16; ++j) m[j] = _mm_subs_epu8(c, load(p + o[j]));
    best = _mm_max_epu8(best, bestArc(m));
  }
  const __m128i none = _mm_cmpeq_epi8(_mm_subs_epu8(best, t), zero);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(map + x),
                   _mm_andnot_si128(none, _mm_subs_epu8(best, _mm_set1_epi8(1))));
  int n = 0;
  for (unsigned bits = ~static_cast<unsigned>(_mm_movemask_epi8(none)) & fresh; bits; bits &= bits - 1)
    xs[n++] = x + __builtin_ctz(bits);
  return n;
}

}  // namespace

OV_SSSE3 int ScoreRow_SSSE3(const uint8_t* row, const int* pixel, int x0, int count, int threshold,
                            uint8_t* map, int* xs) {
  if (count < 16) return ScoreRow_C(row, pixel, x0, count, threshold, map, xs);
  const __m128i t = _mm_set1_epi8(static_cast<char>(threshold));
  // Local copies: the stores into map could otherwise alias the offsets.
  ptrdiff_t o[16];
  for (int j = 0; j < 16; ++j) o[j] = pixel[j];
  int n = 0;
  const int blocks = count / 16, rest = count % 16;
  for (int b = 0; b < blocks; ++b) n += scoreBlock(row, o, x0 + 16 * b, t, 0xFFFFu, map, xs + n);
  // The last block ends with the row, over lanes already done: they score
  // the same again, only the new ones are listed.
  if (rest) n += scoreBlock(row, o, x0 + count - 16, t, (0xFFFFu << (16 - rest)) & 0xFFFFu, map, xs + n);
  return n;
}

}  // namespace orvan::fast16_row

#endif  // OV_HAVE_FAST16_X86
