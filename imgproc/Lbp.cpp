#include "imgproc/Lbp.h"

#include <stddef.h>
#include <stdint.h>

#include "core/SizeRule.h"

namespace {

// 8-bit pattern of the interior position (y, x) of a column-major level whose
// columns are `rows` values apart.
inline unsigned pattern(const unsigned int* img, unsigned rows, unsigned y, unsigned x) {
  const unsigned int* l = img + (size_t)(x - 1) * rows + y;  // column x - 1
  const unsigned int* m = l + rows;                          // column x
  const unsigned int* r = m + rows;                          // column x + 1
  const unsigned int c = m[0];
  return (unsigned)(l[-1] < c) | (unsigned)(l[0] < c) << 1 | (unsigned)(l[1] < c) << 2 |
         (unsigned)(m[-1] < c) << 3 | (unsigned)(m[1] < c) << 4 | (unsigned)(r[-1] < c) << 5 |
         (unsigned)(r[0] < c) << 6 | (unsigned)(r[1] < c) << 7;
}

// Halves a level in place: 2x2 block sums (wrapping), odd last column and row
// dropped. ww and hh are updated to the new level's size.
void reduce(unsigned int* img, unsigned rows, unsigned& ww, unsigned& hh) {
  const unsigned evenW = ww & ~1u;
  ww = evenW / 2;
  const unsigned hhE = hh & ~1u;
  hh = hhE / 2;
  if (evenW <= 1) return;
  // Column pass: new column x from columns 2x and 2x + 1. Column 0 is written
  // element by element onto itself, later columns onto already consumed ones.
  for (unsigned x = 0; x < ww; ++x) {
    unsigned int* dst = img + (size_t)x * rows;
    const unsigned int* a = img + (size_t)(2 * x) * rows;
    const unsigned int* b = a + rows;
    unsigned j = 0;
    for (; j + 4 <= hhE; j += 4) {
      const unsigned int s0 = a[j] + b[j], s1 = a[j + 1] + b[j + 1];
      const unsigned int s2 = a[j + 2] + b[j + 2], s3 = a[j + 3] + b[j + 3];
      dst[j] = s0;
      dst[j + 1] = s1;
      dst[j + 2] = s2;
      dst[j + 3] = s3;
    }
    for (; j < hhE; ++j) dst[j] = a[j] + b[j];
  }
  // Row pass inside each column: row y from rows 2y and 2y + 1 (reads run
  // ahead of writes).
  for (unsigned x = 0; x < ww; ++x) {
    unsigned int* col = img + (size_t)x * rows;
    for (unsigned y = 0; y < hh; ++y) col[y] = col[2 * y] + col[2 * y + 1];
  }
}

// The shared traversal: calls act(feature) for every position of every level,
// in order, until `limit` (counted in features or, for the sparse form, in
// positions) is reached or a level has no positions.
template <typename Act>
unsigned traverse(unsigned int vecDim, bool countPositions, unsigned int* img, unsigned short rows,
                  unsigned short cols, Act act) {
  unsigned ww = cols, hh = rows;
  uint64_t offset = 0, n = 0;
  for (;;) {
    bool any = false;
    if (ww >= 3 && hh >= 3) {
      any = true;
      for (unsigned x = 1; x + 1 < ww; ++x) {
        for (unsigned y = 1; y + 1 < hh; ++y) {
          const uint64_t feature = offset + pattern(img, rows, y, x);
          // A caller's vecDim below the real dimension must not let us touch
          // anything beyond it.
          if (countPositions ? n < vecDim : feature < vecDim) act(feature, n);
          offset += 256;
          ++n;
        }
      }
    }
    if ((countPositions ? n : offset) >= vecDim) break;
    if (!any) break;
    reduce(img, rows, ww, hh);
  }
  return (unsigned)(n < vecDim ? n : vecDim);
}

bool argsOk(const void* vec, const unsigned int* img, unsigned short rows, unsigned short cols) {
  if (!vec || !img) return false;
  // The image's byte count must fit the interface's unsigned 32-bit sizes.
  return orvan::sizerule::uintCount(rows, cols, 4) >= 0;
}

}  // namespace

void lbp_pyr_features(char* vec, unsigned int vecDim, unsigned int* img, unsigned short rows,
                      unsigned short cols) {
  if (!argsOk(vec, img, rows, cols)) return;
  traverse(vecDim, false, img, rows, cols,
           [vec](uint64_t f, uint64_t) { vec[f] = (char)(unsigned char)((unsigned char)vec[f] + 1); });
}

unsigned int lbp_pyr_features_sparse(unsigned int* vec, unsigned int vecDim, unsigned int* img,
                                     unsigned short rows, unsigned short cols) {
  if (!argsOk(vec, img, rows, cols)) return 0;
  return traverse(vecDim, true, img, rows, cols, [vec](uint64_t f, uint64_t n) { vec[n] = (unsigned int)f; });
}

double lbp_pyr_dotprod(double* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                       unsigned short cols) {
  if (!argsOk(w, img, rows, cols)) return 0.0;
  double sum = 0.0;
  traverse(vecDim, false, img, rows, cols, [w, &sum](uint64_t f, uint64_t) { sum += w[f]; });
  return sum;
}

void lbp_pyr_addvec(long long* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                    unsigned short cols) {
  if (!argsOk(w, img, rows, cols)) return;
  traverse(vecDim, false, img, rows, cols, [w](uint64_t f, uint64_t) { w[f] += 1; });
}

void lbp_pyr_subvec(long long* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                    unsigned short cols) {
  if (!argsOk(w, img, rows, cols)) return;
  traverse(vecDim, false, img, rows, cols, [w](uint64_t f, uint64_t) { w[f] -= 1; });
}

unsigned int lbp_pyr_get_dim(unsigned short rows, unsigned short cols, unsigned short levels) {
  uint64_t w = rows, h = cols, d = 0;
  for (unsigned l = 0; l < levels; ++l) {
    if (w < 3 || h < 3) break;
    d += (w - 2) * (h - 2);
    w /= 2;
    h /= 2;
  }
  const int64_t dim = orvan::sizerule::uintCount(d, 256);
  return dim >= 0 ? (unsigned int)dim : 0u;
}

void make_offsets(int* offsets, int stride) {
  if (!offsets) return;
  // Computed in 64 bits so an extreme stride wraps instead of overflowing.
  const int64_t s = stride;
  const int64_t v[9] = {-s - 1, -s, -s + 1, -1, 0, 1, s - 1, s, s + 1};
  for (int i = 0; i < 9; ++i) offsets[i] = (int)(uint32_t)(uint64_t)v[i];
}
