#include "imgproc/ColorQuantizer.h"

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <new>

#include "core/Memory.h"
#include "core/SizeRule.h"

namespace {

const int kSide = ColorQuantizer::kCells + 1;  // moments carry a zero plane at index 0
const int kHistCells = ColorQuantizer::kCells * ColorQuantizer::kCells * ColorQuantizer::kCells;
const int kMomentCells = kSide * kSide * kSide;
// Candidate lists of the nearest-colour search; cells that do not fit scan the
// whole palette instead.
const uint32_t kPoolSize = 1u << 18;
const uint16_t kUnbuilt = 0, kScanAll = 0xFFFF;

// Count, channel sums and sum of squares. Unsigned so the inclusion-exclusion
// sums may wrap in between; every final value is exact.
struct Moment {
  uint64_t w, r, g, b, m2;
};

// Cells (r0, r1] x (g0, g1] x (b0, b1] in moment coordinates.
struct Box {
  int lo[3], hi[3];
};

inline int momentIndex(int r, int g, int b) { return (r * kSide + g) * kSide + b; }

// Positive sides and a byte count that fits the interface's int sizes.
inline bool bytesFit(int width, int height, int channels) {
  return width > 0 && height > 0 && orvan::sizerule::intCount(width, height, channels) > 0;
}

inline bool pictureOk(const unsigned char* pixels, int width, int height, int channels) {
  return pixels != nullptr && (channels == 3 || channels == 4) && bytesFit(width, height, channels);
}

}  // namespace

struct ColorQuantizer::Tables {
  Moment hist[kHistCells];
  Moment mom[kMomentCells];
  uint32_t candStart[kHistCells];
  uint16_t candCount[kHistCells];
  uint32_t pool[kPoolSize];  // (distance to the cell << 8) | entry
};

namespace {

// Sum of the moments inside a box: inclusion-exclusion over its eight corners.
Moment volume(const Moment* m, const Box& x) {
  const Moment* c[8] = {
      &m[momentIndex(x.hi[0], x.hi[1], x.hi[2])], &m[momentIndex(x.hi[0], x.hi[1], x.lo[2])],
      &m[momentIndex(x.hi[0], x.lo[1], x.hi[2])], &m[momentIndex(x.hi[0], x.lo[1], x.lo[2])],
      &m[momentIndex(x.lo[0], x.hi[1], x.hi[2])], &m[momentIndex(x.lo[0], x.hi[1], x.lo[2])],
      &m[momentIndex(x.lo[0], x.lo[1], x.hi[2])], &m[momentIndex(x.lo[0], x.lo[1], x.lo[2])],
  };
  Moment s;
  s.w = c[0]->w - c[1]->w - c[2]->w + c[3]->w - c[4]->w + c[5]->w + c[6]->w - c[7]->w;
  s.r = c[0]->r - c[1]->r - c[2]->r + c[3]->r - c[4]->r + c[5]->r + c[6]->r - c[7]->r;
  s.g = c[0]->g - c[1]->g - c[2]->g + c[3]->g - c[4]->g + c[5]->g + c[6]->g - c[7]->g;
  s.b = c[0]->b - c[1]->b - c[2]->b + c[3]->b - c[4]->b + c[5]->b + c[6]->b - c[7]->b;
  s.m2 = c[0]->m2 - c[1]->m2 - c[2]->m2 + c[3]->m2 - c[4]->m2 + c[5]->m2 + c[6]->m2 - c[7]->m2;
  return s;
}

inline double squaredSum(const Moment& s) {
  return (double)s.r * (double)s.r + (double)s.g * (double)s.g + (double)s.b * (double)s.b;
}

// Sum of squared distances of the box's pixels from their mean: what the cuts
// reduce.
double variance(const Moment* m, const Box& x) {
  const Moment s = volume(m, x);
  return s.w == 0 ? 0.0 : (double)s.m2 - squaredSum(s) / (double)s.w;
}

// Best plane across axis `dir`: maximises |sum1|^2 / w1 + |sum2|^2 / w2 over
// cuts leaving pixels on both sides (the same as minimising the summed
// variance). Returns the cut (moment coordinate of the lower part's top) or -1.
int bestCut(const Moment* m, const Box& x, int dir, const Moment& whole, double* best) {
  int cut = -1;
  *best = 0.0;
  Box lower = x;
  for (int i = x.lo[dir] + 1; i < x.hi[dir]; ++i) {
    lower.hi[dir] = i;
    const Moment h = volume(m, lower);
    if (h.w == 0 || h.w == whole.w) continue;
    const Moment rest = {whole.w - h.w, whole.r - h.r, whole.g - h.g, whole.b - h.b, 0};
    const double score = squaredSum(h) / (double)h.w + squaredSum(rest) / (double)rest.w;
    if (cut < 0 || score > *best) {
      *best = score;
      cut = i;
    }
  }
  return cut;
}

// Splits a into a (lower part) and b (upper part) along the best axis; red wins
// ties, then green. False when no plane leaves pixels on both sides.
bool cutBox(const Moment* m, Box* a, Box* b) {
  const Moment whole = volume(m, *a);
  int dir = -1, cut = -1;
  double best = 0.0;
  for (int d = 0; d < 3; ++d) {
    double score;
    const int c = bestCut(m, *a, d, whole, &score);
    if (c >= 0 && (dir < 0 || score > best)) {
      dir = d;
      cut = c;
      best = score;
    }
  }
  if (dir < 0) return false;
  *b = *a;
  a->hi[dir] = cut;
  b->lo[dir] = cut;
  return true;
}

inline unsigned char roundedMean(uint64_t sum, uint64_t count) {
  return (unsigned char)((2 * sum + count) / (2 * count));
}

// The palette entries that may be nearest to some colour of the 8x8x8 cell at
// (r0, g0, b0): those whose distance to the cell's nearest point is at most the
// smallest distance any entry has to the cell's farthest point. Every colour of
// the cell has its nearest entries (all of them on a tie) among these. Written
// as (distance to the cell << 8) | index, ascending; returns how many.
int cellCandidates(const int* pr, const int* pg, const int* pb, int count, int r0, int g0, int b0,
                   uint32_t* out) {
  int dmin[ColorQuantizer::kMaxColors];
  int minMax = 0x7FFFFFFF;
  for (int j = 0; j < count; ++j) {
    const int v[3] = {pr[j], pg[j], pb[j]}, lo[3] = {r0, g0, b0};
    int near = 0, far = 0;
    for (int c = 0; c < 3; ++c) {
      const int below = lo[c] - v[c], above = v[c] - (lo[c] + 7);
      const int d = below > 0 ? below : (above > 0 ? above : 0);
      const int f = v[c] - lo[c] > lo[c] + 7 - v[c] ? v[c] - lo[c] : lo[c] + 7 - v[c];
      near += d * d;
      far += f * f;
    }
    dmin[j] = near;
    if (far < minMax) minMax = far;
  }
  int k = 0;
  for (int j = 0; j < count; ++j)
    if (dmin[j] <= minMax) out[k++] = (uint32_t)dmin[j] << 8 | (uint32_t)j;
  std::sort(out, out + k);
  return k;
}

}  // namespace

ColorQuantizer::ColorQuantizer()
    : mTables(static_cast<Tables*>(galloc_alloc(sizeof(Tables)))), mPixels(0), mPrepared(false) {}

ColorQuantizer::~ColorQuantizer() { galloc_free(mTables); }

bool ColorQuantizer::isValid() const { return mTables != nullptr; }

void ColorQuantizer::reset() {
  if (mTables == nullptr) return;
  memset(mTables->hist, 0, sizeof(mTables->hist));
  mPixels = 0;
  mPrepared = false;
}

int ColorQuantizer::addColor(unsigned char r, unsigned char g, unsigned char b) {
  if (mTables == nullptr || mPixels >= kMaxPixels) return -1;
  Moment& c = mTables->hist[((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3)];
  c.w += 1;
  c.r += r;
  c.g += g;
  c.b += b;
  c.m2 += (uint32_t)r * r + (uint32_t)g * g + (uint32_t)b * b;
  ++mPixels;
  mPrepared = false;
  return 0;
}

int ColorQuantizer::addColor(const unsigned char* pixels, int width, int height, int channels) {
  if (mTables == nullptr || !pictureOk(pixels, width, height, channels)) return -1;
  const uint64_t n = (uint64_t)width * (uint64_t)height;
  if (n > kMaxPixels - mPixels) return -1;
  Moment* hist = mTables->hist;
  const unsigned char* p = pixels;
  for (uint64_t i = 0; i < n; ++i, p += channels) {
    const uint32_t r = p[0], g = p[1], b = p[2];
    Moment& c = hist[((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3)];
    c.w += 1;
    c.r += r;
    c.g += g;
    c.b += b;
    c.m2 += r * r + g * g + b * b;
  }
  mPixels += n;
  mPrepared = false;
  return 0;
}

int ColorQuantizer::prepare() {
  if (mTables == nullptr) return -1;
  const Moment* hist = mTables->hist;
  Moment* mom = mTables->mom;
  memset(mom, 0, sizeof(mTables->mom));
  for (int r = 1; r < kSide; ++r) {
    Moment area[kSide];
    memset(area, 0, sizeof(area));
    for (int g = 1; g < kSide; ++g) {
      Moment line = {0, 0, 0, 0, 0};
      for (int b = 1; b < kSide; ++b) {
        const Moment& h = hist[((r - 1) << 10) | ((g - 1) << 5) | (b - 1)];
        line.w += h.w;
        line.r += h.r;
        line.g += h.g;
        line.b += h.b;
        line.m2 += h.m2;
        Moment& a = area[b];
        a.w += line.w;
        a.r += line.r;
        a.g += line.g;
        a.b += line.b;
        a.m2 += line.m2;
        const Moment& below = mom[momentIndex(r - 1, g, b)];
        Moment& out = mom[momentIndex(r, g, b)];
        out.w = below.w + a.w;
        out.r = below.r + a.r;
        out.g = below.g + a.g;
        out.b = below.b + a.b;
        out.m2 = below.m2 + a.m2;
      }
    }
  }
  mPrepared = true;
  return 0;
}

int ColorQuantizer::getPalette(int maxColors, unsigned char* palette) {
  if (mTables == nullptr || !mPrepared || palette == nullptr || maxColors < 1 || maxColors > kMaxColors)
    return -1;
  const Moment* m = mTables->mom;
  Box boxes[kMaxColors];
  double var[kMaxColors];
  bool cuttable[kMaxColors];
  boxes[0] = Box{{0, 0, 0}, {kCells, kCells, kCells}};
  if (volume(m, boxes[0]).w == 0) return 0;
  var[0] = variance(m, boxes[0]);
  cuttable[0] = true;
  int n = 1;
  while (n < maxColors) {
    // The box of largest variance that may still split; the first one on ties.
    int next = -1;
    for (int k = 0; k < n; ++k)
      if (cuttable[k] && (next < 0 || var[k] > var[next])) next = k;
    if (next < 0) break;
    if (cutBox(m, &boxes[next], &boxes[n])) {
      var[next] = variance(m, boxes[next]);
      var[n] = variance(m, boxes[n]);
      cuttable[n] = true;
      ++n;
    } else {
      cuttable[next] = false;  // one occupied cell: nothing to split
    }
  }
  for (int k = 0; k < n; ++k) {
    const Moment s = volume(m, boxes[k]);
    palette[3 * k] = roundedMean(s.r, s.w);
    palette[3 * k + 1] = roundedMean(s.g, s.w);
    palette[3 * k + 2] = roundedMean(s.b, s.w);
  }
  return n;
}

int ColorQuantizer::mapToPalette(const unsigned char* pixels, int width, int height, int channels,
                                 const unsigned char* palette, int count, unsigned char* indices) {
  if (mTables == nullptr || !pictureOk(pixels, width, height, channels) || palette == nullptr ||
      indices == nullptr || count < 1 || count > kMaxColors)
    return -1;
  int pr[kMaxColors], pg[kMaxColors], pb[kMaxColors];
  for (int j = 0; j < count; ++j) {
    pr[j] = palette[3 * j];
    pg[j] = palette[3 * j + 1];
    pb[j] = palette[3 * j + 2];
  }
  // Candidate lists are built per histogram cell on first use; a search ends at
  // the first candidate farther from the cell than the best match so far.
  uint32_t* candStart = mTables->candStart;
  uint16_t* candCount = mTables->candCount;
  uint32_t* pool = mTables->pool;
  memset(candCount, 0, sizeof(mTables->candCount));
  uint32_t used = 0;

  const uint64_t n = (uint64_t)width * (uint64_t)height;
  const unsigned char* p = pixels;
  uint32_t lastKey = 0xFFFFFFFFu;
  unsigned char lastIndex = 0;
  for (uint64_t i = 0; i < n; ++i, p += channels) {
    const int r = p[0], g = p[1], b = p[2];
    const uint32_t key = (uint32_t)r << 16 | (uint32_t)g << 8 | (uint32_t)b;
    if (key != lastKey) {
      lastKey = key;
      const int cell = ((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3);
      if (candCount[cell] == kUnbuilt) {
        uint32_t cand[kMaxColors];
        const int k = cellCandidates(pr, pg, pb, count, r & ~7, g & ~7, b & ~7, cand);
        if (used + (uint32_t)k > kPoolSize) {
          candCount[cell] = kScanAll;
        } else {
          candStart[cell] = used;
          candCount[cell] = (uint16_t)k;
          memcpy(pool + used, cand, (size_t)k * sizeof(cand[0]));
          used += (uint32_t)k;
        }
      }
      int best = -1, bestD = 0x7FFFFFFF;
      if (candCount[cell] == kScanAll) {
        for (int j = 0; j < count; ++j) {
          const int dr = r - pr[j], dg = g - pg[j], db = b - pb[j];
          const int d = dr * dr + dg * dg + db * db;
          if (d < bestD) bestD = d, best = j;
        }
      } else {
        const uint32_t* cand = pool + candStart[cell];
        for (int k = 0, e = candCount[cell]; k < e && (int)(cand[k] >> 8) <= bestD; ++k) {
          const int j = (int)(cand[k] & 255);
          const int dr = r - pr[j], dg = g - pg[j], db = b - pb[j];
          const int d = dr * dr + dg * dg + db * db;
          if (d < bestD || (d == bestD && j < best)) bestD = d, best = j;
        }
      }
      lastIndex = (unsigned char)best;
    }
    indices[i] = lastIndex;
  }
  return 0;
}

int color_quantize(const unsigned char* pixels, int width, int height, int channels, int maxColors,
                   unsigned char* palette, unsigned char* indices) {
  if (!pictureOk(pixels, width, height, channels) || palette == nullptr || maxColors < 1 ||
      maxColors > ColorQuantizer::kMaxColors)
    return -1;
  ColorQuantizer* q = new (std::nothrow) ColorQuantizer();
  if (q == nullptr) return -1;
  int n = -1;
  if (q->isValid() && q->addColor(pixels, width, height, channels) == 0 && q->prepare() == 0) {
    unsigned char entries[3 * ColorQuantizer::kMaxColors];
    n = q->getPalette(maxColors, entries);
    if (n > 0 && indices != nullptr &&
        q->mapToPalette(pixels, width, height, channels, entries, n, indices) != 0)
      n = -1;
    if (n >= 0) memcpy(palette, entries, 3 * (size_t)n);
  }
  delete q;
  return n;
}
