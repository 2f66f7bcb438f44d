// The FAST-16 C reference row kernel and the scan shared by every kernel.
#include "imgproc/Fast16Rows.h"

#include <cstdlib>
#include <cstring>

namespace orvan::fast16_row {

int arcMargin(const uint8_t* p, const int* pixel) {
  const int c = p[0];
  int above[25], below[25];
  for (int j = 0; j < 25; ++j) {
    const int v = p[pixel[j]];
    above[j] = v > c ? v - c : 0;
    below[j] = v < c ? c - v : 0;
  }
  int best = 0;
  for (int k = 0; k < 16; ++k) {
    int a = 255, b = 255;
    for (int j = k; j < k + 9; ++j) {
      if (above[j] < a) a = above[j];
      if (below[j] < b) b = below[j];
    }
    if (a > best) best = a;
    if (b > best) best = b;
  }
  return best;
}

int ScoreRow_C(const uint8_t* row, const int* pixel, int x0, int count, int threshold, uint8_t* map,
               int* xs) {
  int n = 0;
  for (int x = x0; x < x0 + count; ++x) {
    const uint8_t* p = row + x;
    const int c = p[0];
    // Any 9 contiguous circle pixels include two neighbouring ones of the
    // four at 0, 4, 8 and 12: a pixel without such a pair is no corner.
    int above = 0, below = 0;
    for (int i = 0; i < 4; ++i) {
      const int v = p[pixel[4 * i]];
      above |= (v > c + threshold) << i;
      below |= (v < c - threshold) << i;
    }
    map[x] = 0;
    if (!(above & (above >> 1 | above << 3) & 0xF) && !(below & (below >> 1 | below << 3) & 0xF)) continue;
    const int m = arcMargin(p, pixel);
    if (m > threshold) {
      map[x] = static_cast<uint8_t>(m - 1);
      xs[n++] = x;
    }
  }
  return n;
}

namespace {

// Non-maximum suppression of row b between rows a and c.
bool isMaximum(const uint8_t* a, const uint8_t* b, const uint8_t* c, int x) {
  const int s = b[x];
  return s > a[x - 1] && s > a[x] && s > a[x + 1] && s > b[x - 1] && s > b[x + 1] && s > c[x - 1] &&
         s > c[x] && s > c[x + 1];
}

}  // namespace

int detect(RowKernel kernel, const uint8_t* image, int width, int height, ptrdiff_t stride, int threshold,
           bool nonmax, Fast16Corner* corners, int capacity) {
  int pixel[25];
  if (makeOffsets(pixel, static_cast<int>(stride)) != 0) return FAST16_REFUSED;
  // Three rows of scores (rows y - 2, y - 1, y) and two rows of corner columns.
  const uint64_t bytes = static_cast<uint64_t>(width) * (3 + 2 * sizeof(int));
  if (bytes > SIZE_MAX) return FAST16_NO_MEMORY;
  void* block = calloc(1, static_cast<size_t>(bytes));
  if (!block) return FAST16_NO_MEMORY;
  // The column lists first, where calloc's alignment holds for ints.
  int* cols[2];
  for (int i = 0; i < 2; ++i) cols[i] = static_cast<int*>(block) + static_cast<size_t>(i) * width;
  uint8_t* maps[3];
  for (int i = 0; i < 3; ++i)
    maps[i] = reinterpret_cast<uint8_t*>(cols[1] + width) + static_cast<size_t>(i) * width;
  int found[2] = {0, 0};

  int written = 0;
  bool full = false;
  auto emit = [&](int x, int y, int score) {
    if (written == capacity) {
      full = true;
      return false;
    }
    corners[written++] = Fast16Corner{x, y, score};
    return true;
  };
  // Keeps the maxima of row y (scores in mid, neighbours in above and below).
  auto suppress = [&](int y, const uint8_t* above, const uint8_t* mid, const uint8_t* below) {
    const int* xs = cols[y & 1];
    for (int i = 0; i < found[y & 1]; ++i)
      if (isMaximum(above, mid, below, xs[i]) && !emit(xs[i], y, mid[xs[i]])) return false;
    return true;
  };

  for (int y = 3; y < height - 3 && !full; ++y) {
    uint8_t* cur = maps[y % 3];
    const int n = kernel(image + y * stride, pixel, 3, width - 6, threshold, cur, cols[y & 1]);
    found[y & 1] = n;
    if (!nonmax) {
      for (int i = 0; i < n && emit(cols[y & 1][i], y, cur[cols[y & 1][i]]); ++i) {
      }
      continue;
    }
    // Row y - 1 is complete once row y is scored; row 2 holds no corners.
    if (y > 3) suppress(y - 1, maps[(y - 2) % 3], maps[(y - 1) % 3], cur);
  }
  if (nonmax && !full) {
    uint8_t* none = maps[(height - 3) % 3];  // the row after the last scored one
    memset(none, 0, static_cast<size_t>(width));
    suppress(height - 4, maps[(height - 5) % 3], maps[(height - 4) % 3], none);
  }
  free(block);
  return full ? FAST16_FULL : written;
}

}  // namespace orvan::fast16_row
