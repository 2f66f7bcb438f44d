#include <gtest/gtest.h>
#include <libimagequant.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "image/ImageTestUtil.h"
#include "imgproc/ColorQuantizer.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Rgb = std::array<int, 3>;

// Mean of the pixels, each channel rounded half up.
Rgb roundedMean(const std::vector<Rgb>& px) {
  Rgb m{};
  for (int c = 0; c < 3; ++c) {
    int64_t s = 0;
    for (const Rgb& p : px) s += p[c];
    m[c] = int((2 * s + int64_t(px.size())) / (2 * int64_t(px.size())));
  }
  return m;
}

Bytes pack(const std::vector<Rgb>& px) {
  Bytes out;
  for (const Rgb& p : px) out.insert(out.end(), p.begin(), p.end());
  return out;
}

std::vector<Rgb> entries(const Bytes& pal, int n) {
  std::vector<Rgb> v;
  for (int k = 0; k < n; ++k) v.push_back({pal[3 * k], pal[3 * k + 1], pal[3 * k + 2]});
  return v;
}

int distance(const Rgb& a, const Rgb& b) {
  int d = 0;
  for (int c = 0; c < 3; ++c) d += (a[c] - b[c]) * (a[c] - b[c]);
  return d;
}

// Wu's greedy bipartition done the slow way: boxes of 5-bit cells hold explicit
// pixel lists, and every sum is taken over the pixels themselves.
std::vector<Rgb> referencePalette(const std::vector<Rgb>& px, int maxColors) {
  struct Box {
    int lo[3], hi[3];  // cells lo..hi-1
    std::vector<Rgb> px;
  };
  auto stats = [](const std::vector<Rgb>& v, double* var) {
    int64_t s[3] = {}, m2 = 0;
    for (const Rgb& p : v)
      for (int c = 0; c < 3; ++c) s[c] += p[c], m2 += p[c] * p[c];
    const double q = double(s[0]) * s[0] + double(s[1]) * s[1] + double(s[2]) * s[2];
    if (var) *var = v.empty() ? 0 : double(m2) - q / double(v.size());
    return v.empty() ? 0.0 : q / double(v.size());
  };
  std::vector<Box> boxes{{{0, 0, 0}, {32, 32, 32}, px}};
  std::vector<double> var(1);
  std::vector<bool> open{true};
  stats(px, &var[0]);
  while (int(boxes.size()) < maxColors && !px.empty()) {
    int next = -1;
    for (int k = 0; k < int(boxes.size()); ++k)
      if (open[k] && (next < 0 || var[k] > var[next])) next = k;
    if (next < 0) break;
    int bestDir = -1, bestCut = 0;
    double best = 0;
    for (int d = 0; d < 3; ++d)
      for (int cut = boxes[next].lo[d] + 1; cut < boxes[next].hi[d]; ++cut) {
        std::vector<Rgb> a, b;
        for (const Rgb& p : boxes[next].px) ((p[d] >> 3) < cut ? a : b).push_back(p);
        if (a.empty() || b.empty()) continue;
        const double score = stats(a, nullptr) + stats(b, nullptr);
        if (bestDir < 0 || score > best) best = score, bestDir = d, bestCut = cut;
      }
    if (bestDir < 0) {
      open[next] = false;
      continue;
    }
    Box upper = boxes[next];
    upper.lo[bestDir] = bestCut;
    boxes[next].hi[bestDir] = bestCut;
    for (Box* x : {&boxes[next], &upper}) {
      std::vector<Rgb> kept;
      for (const Rgb& p : x->px)
        if ((p[bestDir] >> 3) >= x->lo[bestDir] && (p[bestDir] >> 3) < x->hi[bestDir]) kept.push_back(p);
      x->px = kept;
    }
    boxes.push_back(upper);
    var.push_back(0);
    open.push_back(true);
    stats(boxes[next].px, &var[next]);
    stats(boxes.back().px, &var.back());
  }
  std::vector<Rgb> pal;
  for (const Box& x : boxes) pal.push_back(roundedMean(x.px));
  return pal;
}

int quantize(const std::vector<Rgb>& px, int maxColors, Bytes* pal) {
  ColorQuantizer q;
  const Bytes packed = pack(px);
  EXPECT_EQ(0, q.addColor(packed.data(), int(px.size()), 1, 3));
  EXPECT_EQ(0, q.prepare());
  pal->assign(3 * 256, 0);
  return q.getPalette(maxColors, pal->data());
}

double mse(const Bytes& rgb, const Bytes& idx, const unsigned char* pal, int channels) {
  double sum = 0;
  for (size_t i = 0; i < idx.size(); ++i)
    for (int c = 0; c < 3; ++c) {
      const double d = double(rgb[i * channels + c]) - pal[idx[i] * channels + c];
      sum += d * d;
    }
  return sum / double(idx.size() * 3);
}

}  // namespace

TEST(Quantizer, PaletteEntriesAreTheMeansOfWusBoxes) {
  std::mt19937 rng(7);
  // Clustered small pictures (so cuts have real choices), against the slow reference.
  for (int trial = 0; trial < 12; ++trial) {
    std::vector<Rgb> px;
    const int clusters = 1 + trial % 6;
    for (int i = 0; i < 60 + 25 * trial; ++i) {
      const int k = int(rng() % clusters);
      Rgb p;
      for (int c = 0; c < 3; ++c)
        p[c] = std::clamp(int(37 * k * (c + 1) % 256) + int(rng() % 41) - 20, 0, 255);
      px.push_back(p);
    }
    for (int maxColors : {1, 2, 5, 16, 256}) {
      Bytes pal;
      const int n = quantize(px, maxColors, &pal);
      EXPECT_EQ(referencePalette(px, maxColors), entries(pal, n)) << trial << " " << maxColors;
    }
  }
}

TEST(Quantizer, SeparatesDistinctCellsAndRoundsMeansHalfUp) {
  std::mt19937 rng(3);
  for (int k : {1, 2, 9, 40, 256}) {
    std::set<int> cells;
    while (int(cells.size()) < k) cells.insert(int(rng() % 32768));
    std::vector<Rgb> px;
    std::set<Rgb> want;
    for (int cell : cells) {
      std::vector<Rgb> in;
      for (int i = 0, m = 1 + int(rng() % 5); i < m; ++i)
        in.push_back({(cell >> 10) * 8 + int(rng() % 8), (cell >> 5 & 31) * 8 + int(rng() % 8),
                      (cell & 31) * 8 + int(rng() % 8)});
      want.insert(roundedMean(in));
      px.insert(px.end(), in.begin(), in.end());
    }
    std::shuffle(px.begin(), px.end(), rng);
    for (int maxColors : {k, 256}) {
      Bytes pal;
      ASSERT_EQ(k, quantize(px, maxColors, &pal));
      const std::vector<Rgb> got = entries(pal, k);
      EXPECT_EQ(want, std::set<Rgb>(got.begin(), got.end())) << k;
    }
  }
  // One colour: the picture's mean; 0.5 rounds up, 2/3 to 1, 1/3 to 0.
  Bytes pal;
  ASSERT_EQ(1, quantize({{0, 0, 0}, {1, 0, 0}}, 1, &pal));
  EXPECT_EQ((Rgb{1, 0, 0}), entries(pal, 1)[0]);
  ASSERT_EQ(1, quantize({{2, 0, 255}, {0, 1, 255}, {0, 0, 254}}, 1, &pal));
  EXPECT_EQ((Rgb{1, 0, 255}), entries(pal, 1)[0]);
}

TEST(Quantizer, MapsToTheNearestEntryLowestIndexOnTies) {
  std::mt19937 rng(11);
  ColorQuantizer q;
  std::vector<Rgb> px(70000);
  for (Rgb& p : px) p = {int(rng() % 256), int(rng() % 256), int(rng() % 256)};
  const Bytes packed = pack(px);
  for (int count : {1, 7, 64, 256}) {
    Bytes pal(3 * count);
    for (auto& v : pal) v = (unsigned char)(rng() % 256);
    if (count == 64)  // repeated entries and entries a cell apart: ties everywhere
      for (int j = 0; j < 64; ++j) pal[3 * j] = pal[3 * j + 1] = pal[3 * j + 2] = (unsigned char)(j / 2 * 8);
    const std::vector<Rgb> e = entries(pal, count);
    Bytes idx(px.size());
    ASSERT_EQ(0, q.mapToPalette(packed.data(), int(px.size()), 1, 3, pal.data(), count, idx.data()));
    for (size_t i = 0; i < px.size(); ++i) {
      int best = 0;
      for (int j = 1; j < count; ++j)
        if (distance(px[i], e[j]) < distance(px[i], e[best])) best = j;
      ASSERT_EQ(best, idx[i]) << count << " pixel " << i;
    }
  }
  // 256 equal entries: every cell keeps all of them as candidates, more than the
  // candidate store holds, so later cells take the full scan.
  Bytes same(3 * 256, 77), idx(px.size(), 1);
  ASSERT_EQ(0, q.mapToPalette(packed.data(), int(px.size()), 1, 3, same.data(), 256, idx.data()));
  EXPECT_EQ(Bytes(px.size(), 0), idx);
}

TEST(Quantizer, ErrorWithinAQuarterOfLibimagequantOnThePhotos) {
  for (const char* name : {"coffee.jpg", "chelsea.jpg", "astronaut.jpg"}) {
    auto_ptr<Image> image = imgtest::sample(name);
    ASSERT_NE(nullptr, image.get()) << name;
    ASSERT_EQ(Image::IMAGE_FORMAT_RGB, image->format);
    const int w = int(image->width), h = int(image->height);
    const size_t n = size_t(w) * h;
    const Bytes rgb(image->planes[0], image->planes[0] + n * 3);
    Bytes rgba(n * 4, 255);
    for (size_t i = 0; i < n; ++i) std::copy_n(&rgb[i * 3], 3, &rgba[i * 4]);
    for (int colors : {16, 64, 256}) {
      Bytes pal(3 * 256), idx(n), pal4(3 * 256), idx4(n);
      const int got = color_quantize(rgb.data(), w, h, 3, colors, pal.data(), idx.data());
      ASSERT_GT(got, 0);
      ASSERT_LE(got, colors);
      // Alpha is ignored: the RGBA picture gives the same answer.
      EXPECT_EQ(got, color_quantize(rgba.data(), w, h, 4, colors, pal4.data(), idx4.data()));
      EXPECT_TRUE(pal == pal4 && idx == idx4);
      const double ours = mse(rgb, idx, pal.data(), 3);

      liq_attr* attr = liq_attr_create();
      ASSERT_EQ(LIQ_OK, liq_set_max_colors(attr, colors));
      liq_image* li = liq_image_create_rgba(attr, rgba.data(), w, h, 0);
      liq_result* res = nullptr;
      ASSERT_EQ(LIQ_OK, liq_image_quantize(li, attr, &res));
      liq_set_dithering_level(res, 0);
      Bytes lidx(n);
      ASSERT_EQ(LIQ_OK, liq_write_remapped_image(res, li, lidx.data(), n));
      const liq_palette* lp = liq_get_palette(res);
      Bytes lpal(4 * 256);
      for (unsigned k = 0; k < lp->count; ++k)
        lpal[4 * k] = lp->entries[k].r, lpal[4 * k + 1] = lp->entries[k].g,
                 lpal[4 * k + 2] = lp->entries[k].b;
      const double theirs = mse(rgba, lidx, lpal.data(), 4);
      const unsigned theirCount = lp->count;
      liq_result_destroy(res);
      liq_image_destroy(li);
      liq_attr_destroy(attr);

      printf("%-14s %3d colours: MSE ours %7.2f (%3d entries), libimagequant %7.2f (%3u), ratio %.3f\n", name,
             colors, ours, got, theirs, theirCount, ours / theirs);
      EXPECT_LE(ours, 1.25 * theirs) << name << " " << colors;
    }
  }
}

TEST(Quantizer, RefusesBadInputTouchingNothing) {
  ColorQuantizer q;
  ASSERT_TRUE(q.isValid());
  const Bytes px = {10, 20, 30, 200, 100, 0, 5, 5, 5, 9};
  Bytes pal(3 * 257, 0xAB), idx(4, 0xCD);
  const Bytes palBefore = pal, idxBefore = idx;
  EXPECT_EQ(-1, q.getPalette(4, pal.data()));  // nothing prepared yet
  EXPECT_EQ(0, q.addColor(px.data(), 3, 1, 3));
  EXPECT_EQ(-1, q.getPalette(4, pal.data()));  // added since the last prepare
  ASSERT_EQ(0, q.prepare());
  // Pictures: null, sizes not positive, channels other than 3 or 4, more than 2^32 bytes.
  const int bad[][3] = {{0, 1, 3}, {1, 0, 3}, {-3, 1, 3},       {1, -1, 3},
                        {3, 1, 2}, {2, 1, 5}, {65536, 65536, 3}};
  for (const auto& b : bad) {
    EXPECT_EQ(-1, q.addColor(px.data(), b[0], b[1], b[2]));
    EXPECT_EQ(-1, q.mapToPalette(px.data(), b[0], b[1], b[2], px.data(), 1, idx.data()));
    EXPECT_EQ(-1, color_quantize(px.data(), b[0], b[1], b[2], 4, pal.data(), idx.data()));
  }
  EXPECT_EQ(-1, q.addColor(nullptr, 1, 1, 3));
  EXPECT_EQ(-1, color_quantize(nullptr, 1, 1, 3, 4, pal.data(), idx.data()));
  EXPECT_EQ(-1, color_quantize(px.data(), 1, 1, 3, 4, nullptr, idx.data()));
  EXPECT_EQ(-1, q.mapToPalette(nullptr, 1, 1, 3, px.data(), 1, idx.data()));
  EXPECT_EQ(-1, q.mapToPalette(px.data(), 1, 1, 3, nullptr, 1, idx.data()));
  EXPECT_EQ(-1, q.mapToPalette(px.data(), 1, 1, 3, px.data(), 1, nullptr));
  for (int count : {0, -1, 257}) {
    EXPECT_EQ(-1, q.getPalette(count, pal.data()));
    EXPECT_EQ(-1, color_quantize(px.data(), 3, 1, 3, count, pal.data(), idx.data()));
    EXPECT_EQ(-1, q.mapToPalette(px.data(), 1, 1, 3, pal.data(), count, idx.data()));
  }
  EXPECT_EQ(-1, q.getPalette(4, nullptr));
  EXPECT_EQ(palBefore, pal);
  EXPECT_EQ(idxBefore, idx);
  // The refusals left the histogram alone: the three colours come back (one
  // cell each), and after reset an empty histogram gives no entries.
  EXPECT_EQ(3, q.getPalette(256, pal.data()));
  q.reset();
  ASSERT_EQ(0, q.prepare());
  EXPECT_EQ(0, q.getPalette(256, pal.data()));
}
