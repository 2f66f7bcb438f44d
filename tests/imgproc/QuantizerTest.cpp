#include <gtest/gtest.h>
#include <libimagequant.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>
#include <vector>

#include "image/ImageTestUtil.h"
#include "imgproc/ColorQuantizer.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Rgb = std::array<int, 3>;
using Pixels = std::vector<Rgb>;

Rgb roundedMean(const Pixels& px) {  // halves up
  long long s[3] = {}, n = (long long)px.size();
  for (const Rgb& p : px)
    for (int c = 0; c < 3; ++c) s[c] += p[c];
  return {int((2 * s[0] + n) / (2 * n)), int((2 * s[1] + n) / (2 * n)), int((2 * s[2] + n) / (2 * n))};
}

// |sum|^2 / n of some pixels; *var = their summed squared distance from the mean.
double spread(const Pixels& v, double* var = nullptr) {
  double s[3] = {}, m2 = 0;
  for (const Rgb& p : v)
    for (int c = 0; c < 3; ++c) s[c] += p[c], m2 += p[c] * p[c];
  const double q = v.empty() ? 0 : (s[0] * s[0] + s[1] * s[1] + s[2] * s[2]) / double(v.size());
  if (var) *var = m2 - q;
  return q;
}

// Wu's cuts done the slow way: each box keeps its pixels and every sum is taken over them.
Pixels referencePalette(const Pixels& px, int maxColors) {
  struct Box {
    int lo[3], hi[3];  // cells lo..hi-1
    Pixels px;
    bool open;
  };
  std::vector<Box> boxes{{{0, 0, 0}, {32, 32, 32}, px, true}};
  while (int(boxes.size()) < maxColors) {
    Box* x = nullptr;
    double var, xVar = 0;
    for (Box& b : boxes) {
      spread(b.px, &var);
      if (b.open && (!x || var > xVar)) x = &b, xVar = var;
    }
    if (!x) break;
    int dir = -1, at = 0;
    double best = 0;
    Pixels part[2], bestPart[2];
    for (int d = 0; d < 3; ++d)
      for (int cut = x->lo[d] + 1; cut < x->hi[d]; ++cut) {
        part[0].clear(), part[1].clear();
        for (const Rgb& p : x->px) part[(p[d] >> 3) >= cut].push_back(p);
        if (part[0].empty() || part[1].empty()) continue;
        const double score = spread(part[0]) + spread(part[1]);
        if (dir < 0 || score > best)
          best = score, dir = d, at = cut, bestPart[0] = part[0], bestPart[1] = part[1];
      }
    if (!(x->open = dir >= 0)) continue;  // one occupied cell
    Box upper = *x;
    x->hi[dir] = upper.lo[dir] = at;
    x->px = bestPart[0], upper.px = bestPart[1];
    boxes.push_back(upper);
  }
  Pixels pal;
  for (const Box& x : boxes) pal.push_back(roundedMean(x.px));
  return pal;
}

Pixels quantize(const Pixels& px, int maxColors) {
  Bytes packed, pal(3 * 256);
  for (const Rgb& p : px) packed.insert(packed.end(), p.begin(), p.end());
  ColorQuantizer q;
  EXPECT_TRUE(q.addColor(packed.data(), int(px.size()), 1, 3) == 0 && q.prepare() == 0);
  const int n = q.getPalette(maxColors, pal.data());
  Pixels out;
  for (int k = 0; k < n; ++k) out.push_back({pal[3 * k], pal[3 * k + 1], pal[3 * k + 2]});
  return out;
}

// Per-channel mean squared error of an RGBA picture mapped to a palette of `stride` bytes per entry.
double mse(const Bytes& rgba, const Bytes& idx, const Bytes& pal, int stride) {
  double sum = 0;
  for (size_t i = 0; i < idx.size(); ++i)
    for (int c = 0; c < 3; ++c) sum += std::pow(double(rgba[i * 4 + c]) - pal[idx[i] * stride + c], 2);
  return sum / double(idx.size() * 3);
}

}  // namespace

TEST(Quantizer, PalettesAreTheMeansOfWusBoxes) {
  std::mt19937 rng(7);
  for (int trial = 0; trial < 12; ++trial) {  // clustered pictures, so the cuts have real choices
    Pixels px(60 + 25 * trial);
    for (Rgb& p : px) {
      const int k = int(rng() % (1 + trial % 6));
      for (int c = 0; c < 3; ++c) p[c] = std::clamp(37 * k * (c + 1) % 256 + int(rng() % 41) - 20, 0, 255);
    }
    for (int maxColors : {1, 2, 5, 16, 256})
      EXPECT_EQ(referencePalette(px, maxColors), quantize(px, maxColors)) << trial << " " << maxColors;
  }
  // k occupied cells, maxColors >= k: exactly the k cell means.
  for (int k : {1, 9, 40, 256}) {
    std::set<int> cells;
    while (int(cells.size()) < k) cells.insert(int(rng() % 32768));
    Pixels px;
    std::set<Rgb> want;
    for (int cell : cells) {
      Pixels in(1 + rng() % 5);
      for (Rgb& p : in)
        for (int c = 0; c < 3; ++c) p[c] = (cell >> (10 - 5 * c) & 31) * 8 + int(rng() % 8);
      want.insert(roundedMean(in));
      px.insert(px.end(), in.begin(), in.end());
    }
    std::shuffle(px.begin(), px.end(), rng);
    for (int maxColors : {k, 256}) {
      const Pixels got = quantize(px, maxColors);
      EXPECT_EQ(size_t(k), got.size());
      EXPECT_EQ(want, std::set<Rgb>(got.begin(), got.end())) << k;
    }
  }
  // One colour is the picture's mean, rounded: r 3/6 up to 1, g 4/6 to 1, b 2/6 to 0.
  EXPECT_EQ((Pixels{{1, 1, 0}}),
            quantize({{1, 1, 1}, {1, 1, 1}, {1, 1, 0}, {0, 1, 0}, {0, 0, 0}, {0, 0, 0}}, 1));
}

TEST(Quantizer, MapsToTheNearestEntryLowestIndexOnTies) {
  std::mt19937 rng(11);
  Bytes px(3 * 70000), idx(70000);
  for (auto& v : px) v = (unsigned char)rng();
  ColorQuantizer q;
  // Pixel 0 at a cell's far corner, as far from entry 1 as entry 0 is from the whole cell: entry 0 wins.
  std::fill_n(px.begin(), 3, 7);
  for (int count : {1, 7, 64, 256, 257}) {
    Bytes pal(3 * 256);
    for (auto& v : pal) v = (unsigned char)rng();
    if (count == 7) std::copy_n(Bytes{14, 14, 14, 0, 0, 0}.begin(), 6, pal.begin());
    if (count == 64)  // pairs of equal greys a cell apart: ties everywhere
      for (int j = 0; j < 64; ++j) pal[3 * j] = pal[3 * j + 1] = pal[3 * j + 2] = (unsigned char)(j / 2 * 8);
    if (count == 257)  // 256 equal entries: every cell keeps all, the candidate store overflows
      std::fill(pal.begin(), pal.end(), 77), count = 256;
    ASSERT_EQ(0, q.mapToPalette(px.data(), 70000, 1, 3, pal.data(), count, idx.data()));
    for (size_t i = 0; i < idx.size(); ++i) {
      int best = 0, bestD = 1 << 30;
      for (int j = 0; j < count; ++j) {
        int d = 0;
        for (int c = 0; c < 3; ++c) d += (px[3 * i + c] - pal[3 * j + c]) * (px[3 * i + c] - pal[3 * j + c]);
        if (d < bestD) bestD = d, best = j;
      }
      ASSERT_EQ(best, idx[i]) << count << " pixel " << i;
    }
  }
}

TEST(Quantizer, ErrorWithinAQuarterOfLibimagequantOnThePhotos) {
  for (const char* name : {"coffee.jpg", "chelsea.jpg", "astronaut.jpg"}) {
    auto_ptr<Image> image = imgtest::sample(name);
    ASSERT_TRUE(image.get() != nullptr && image->format == Image::IMAGE_FORMAT_RGB) << name;
    const int w = int(image->width), h = int(image->height);
    const size_t n = size_t(w) * h;
    Bytes rgba(n * 4, 255);
    for (size_t i = 0; i < n; ++i) std::copy_n(&image->planes[0][i * 3], 3, &rgba[i * 4]);
    for (int colors : {16, 64, 256}) {
      Bytes pal(3 * 256), idx(n), lidx(n), lpal(4 * 256);
      const int got = color_quantize(rgba.data(), w, h, 4, colors, pal.data(), idx.data());
      ASSERT_TRUE(got > 0 && got <= colors);
      liq_attr* attr = liq_attr_create();
      liq_set_max_colors(attr, colors);
      liq_image* li = liq_image_create_rgba(attr, rgba.data(), w, h, 0);
      liq_result* res = nullptr;
      ASSERT_EQ(LIQ_OK, liq_image_quantize(li, attr, &res));
      liq_set_dithering_level(res, 0);
      ASSERT_EQ(LIQ_OK, liq_write_remapped_image(res, li, lidx.data(), n));
      const liq_palette* lp = liq_get_palette(res);
      std::copy_n(reinterpret_cast<const unsigned char*>(lp->entries), 4 * lp->count, lpal.data());
      liq_result_destroy(res), liq_image_destroy(li), liq_attr_destroy(attr);

      const double ours = mse(rgba, idx, pal, 3), theirs = mse(rgba, lidx, lpal, 4);
      printf("%-14s %3d colours: MSE ours %7.2f, libimagequant %7.2f, ratio %.3f\n", name, colors, ours,
             theirs, ours / theirs);
      EXPECT_LE(ours, 1.25 * theirs) << name << " " << colors;
    }
  }
}

TEST(Quantizer, RefusesBadInputTouchingNothing) {
  ColorQuantizer q;
  const Bytes px = {10, 20, 30, 200, 100, 0, 5, 5, 5, 9};
  Bytes pal(3 * 257, 0xAB), idx(4, 0xCD);
  EXPECT_EQ(-1, q.getPalette(4, pal.data()));  // never prepared
  EXPECT_EQ(0, q.addColor(px.data(), 3, 1, 3));
  EXPECT_EQ(-1, q.getPalette(4, pal.data()));  // changed since
  ASSERT_EQ(0, q.prepare());
  // null, sizes not positive, channels not 3 or 4, 2^31 bytes
  const int bad[][4] = {{0, 1, 1, 3}, {1, 0, 1, 3}, {1, -3, 1, 3},       {1, 1, -1, 3},
                        {1, 3, 1, 2}, {1, 2, 1, 5}, {1, 32768, 16384, 4}};
  for (const auto& b : bad) {
    const unsigned char* p = b[0] ? px.data() : nullptr;
    EXPECT_EQ(-1, q.addColor(p, b[1], b[2], b[3]));
    EXPECT_EQ(-1, q.mapToPalette(p, b[1], b[2], b[3], px.data(), 1, idx.data()));
    EXPECT_EQ(-1, color_quantize(p, b[1], b[2], b[3], 4, pal.data(), idx.data()));
  }
  EXPECT_EQ(-1, color_quantize(px.data(), 1, 1, 3, 4, nullptr, idx.data()));
  EXPECT_EQ(-1, q.mapToPalette(px.data(), 1, 1, 3, nullptr, 1, idx.data()));
  EXPECT_EQ(-1, q.mapToPalette(px.data(), 1, 1, 3, px.data(), 1, nullptr));
  EXPECT_EQ(-1, q.getPalette(4, nullptr));
  for (int count : {0, -1, 257}) {
    EXPECT_EQ(-1, q.getPalette(count, pal.data()));
    EXPECT_EQ(-1, color_quantize(px.data(), 3, 1, 3, count, pal.data(), idx.data()));
    EXPECT_EQ(-1, q.mapToPalette(px.data(), 1, 1, 3, pal.data(), count, idx.data()));
  }
  EXPECT_TRUE(pal == Bytes(3 * 257, 0xAB) && idx == Bytes(4, 0xCD));
  // The histogram still holds the three colours (a cell each); reset empties it.
  EXPECT_EQ(3, q.getPalette(256, pal.data()));
  q.reset();
  ASSERT_EQ(0, q.prepare());
  EXPECT_EQ(0, q.getPalette(256, pal.data()));
}
