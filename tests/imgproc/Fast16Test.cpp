#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "core/RefBase.h"
#include "core/Stream.h"
#include "image/ColorConvert.h"
#include "image/Image.h"
#include "image/ImageDecoder.h"
#include "imgproc/Fast16.h"
#include "imgproc/Fast16Rows.h"

#if OV_FAST16_OPENCV_ORACLE
#include <opencv2/features2d.hpp>
#endif

namespace {

struct Gray {
  std::string name;
  int w, h, stride;
  std::vector<uint8_t> px;
};

Gray generated(const std::string& name, int w, int h, int (*f)(int x, int y, std::mt19937& rng)) {
  Gray g{name, w, h, w + 3, std::vector<uint8_t>(size_t(w + 3) * h, 0xA5)};
  std::mt19937 rng(w * 1000 + h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) g.px[size_t(y) * g.stride + x] = uint8_t(f(x, y, rng));
  return g;
}

Gray photo(const char* name) {
  auto_ptr<Stream> in(
      new FileStream((std::string(OV_SAMPLES_DIR) + "/" + name).c_str(), FileStream::FILE_MODE_READ));
  auto_ptr<Image> image(Image::createImage(1, 1, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  JpegDecoder decoder;
  EXPECT_EQ(decoder.decode(in, image), 1) << name;
  Gray g{name, int(image->width), int(image->height), int(image->width), {}};
  g.px.resize(size_t(g.w) * g.h);
  color_convert_rgb2gray(image->planes[0], g.px.data(), g.w, g.h);
  return g;
}

std::vector<Gray> images() {
  std::vector<Gray> all = {photo("astronaut.jpg"), photo("chelsea.jpg"), photo("coffee.jpg")};
  all.push_back(generated("noise", 131, 77, [](int, int, std::mt19937& r) { return int(r() & 255); }));
  all.push_back(generated("flat", 40, 30, [](int, int, std::mt19937&) { return 77; }));
  all.push_back(generated("stripes", 45, 38, [](int x, int, std::mt19937&) { return x % 5 < 2 ? 30 : 220; }));
  all.push_back(generated("diagonal", 50, 41,
                          [](int x, int y, std::mt19937&) { return (x + 2 * y) % 9 < 4 ? 90 : 140; }));
  for (int w = 7; w <= 12; ++w)
    for (int h = 7; h <= 9; ++h)
      all.push_back(generated("small", w, h, [](int, int, std::mt19937& r) { return int(r() % 3) * 100; }));
  return all;
}

using Corners = std::vector<std::tuple<int, int, int>>;  // (y, x, score)

Corners ours(const Gray& g, int t, bool nms, fast16_row::RowKernel kernel = nullptr) {
  std::vector<Fast16Corner> out(size_t(g.w) * g.h);
  const int n = kernel ? fast16_row::detect(kernel, g.px.data(), g.w, g.h, g.stride, t, nms, out.data(),
                                            int(out.size()))
                       : fast16(g.px.data(), g.w, g.h, g.stride, t, nms, out.data(), int(out.size()));
  EXPECT_GE(n, 0);
  Corners c;
  for (int i = 0; i < n; ++i) c.emplace_back(out[i].y, out[i].x, out[i].score);
  return c;
}

#if OV_FAST16_OPENCV_ORACLE
std::vector<cv::KeyPoint> opencv(const Gray& g, int t, bool nms) {
  const cv::Mat m(g.h, g.w, CV_8U, const_cast<uint8_t*>(g.px.data()), size_t(g.stride));
  std::vector<cv::KeyPoint> kp;
  cv::FAST(m, kp, t, nms, cv::FastFeatureDetector::TYPE_9_16);
  return kp;
}
#endif

// The circle is the 16 points whose distance rounds to 3, each next to the one before.
TEST(Fast16, OffsetsTraceTheRadius3Circle) {
  const int stride = 100;
  int o[25];
  ASSERT_EQ(makeOffsets(o, stride), 0);
  std::vector<std::pair<int, int>> seen;
  for (int j = 0; j < 16; ++j) {
    const int dy = (o[j] + 50 * stride + stride / 2) / stride - 50, dx = o[j] - dy * stride;
    EXPECT_TRUE(dx * dx + dy * dy >= 7 && dx * dx + dy * dy <= 12) << j;
    seen.emplace_back(dx, dy);
    const int pdy = (o[(j + 15) % 16] + 50 * stride + stride / 2) / stride - 50,
              pdx = o[(j + 15) % 16] - pdy * stride;
    EXPECT_LE(std::max(std::abs(dx - pdx), std::abs(dy - pdy)), 1) << j;
  }
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(std::unique(seen.begin(), seen.end()), seen.end());
  for (int j = 16; j < 25; ++j) EXPECT_EQ(o[j], o[j - 16]);
  EXPECT_EQ(makeOffsets(nullptr, 10), FAST16_REFUSED);
  EXPECT_EQ(makeOffsets(o, INT_MAX / 2), FAST16_REFUSED);
}

TEST(Fast16, ScoresOfHandMadeCircles) {
  int o[25];
  makeOffsets(o, 7);
  auto score = [&](std::vector<std::pair<int, int>> arcs) {  // (first circle index, value) runs
    std::vector<uint8_t> img(49, 100);
    for (auto [j, v] : arcs) img[24 + o[j]] = uint8_t(v);
    return cornerScore16(img.data() + 24, o);
  };
  std::vector<std::pair<int, int>> bright;
  for (int j = 0; j < 9; ++j) bright.emplace_back(j, 130);
  EXPECT_EQ(score(bright), 29);
  bright[4].second = 110;  // the weakest pixel of the only arc decides
  EXPECT_EQ(score(bright), 9);
  bright.pop_back();  // 8 contiguous: no corner at any threshold
  EXPECT_EQ(score(bright), -1);
  std::vector<std::pair<int, int>> dark;
  for (int j = 12; j < 12 + 10; ++j) dark.emplace_back(j % 16, j == 21 ? 5 : 60);  // wraps past index 15
  EXPECT_EQ(score(dark), 39);
  EXPECT_EQ(score({}), -1);
  EXPECT_EQ(cornerScore16(nullptr, o), FAST16_REFUSED);
}

#if OV_FAST16_OPENCV_ORACLE
// OpenCV's FAST 9/16 is the oracle: the same corners and, with suppression, the
// same responses. Without suppression OpenCV reports no score, so the oracle
// score is the largest threshold at which OpenCV still finds the corner.
TEST(Fast16, MatchesOpenCV) {
  cv::setNumThreads(1);
  for (const Gray& g : images()) {
    std::vector<int> best(size_t(g.w) * g.h, -1);
    for (int t = 0; t < 256; ++t)
      for (const cv::KeyPoint& k : opencv(g, t, false)) best[size_t(k.pt.y) * g.w + size_t(k.pt.x)] = t;
    for (int t = 1; t <= 100; ++t)
      for (bool nms : {false, true}) {
        Corners want;
        for (const cv::KeyPoint& k : opencv(g, t, nms)) {
          const int x = int(k.pt.x), y = int(k.pt.y);
          want.emplace_back(y, x, nms ? int(k.response) : best[size_t(y) * g.w + x]);
        }
        std::sort(want.begin(), want.end());
        ASSERT_EQ(ours(g, t, nms), want)
            << g.name << " " << g.w << "x" << g.h << " t=" << t << " nms=" << nms;
      }
  }
}
#endif

TEST(Fast16, SimdKernelsMatchTheCReference) {
  std::vector<std::pair<const char*, fast16_row::RowKernel>> kernels;
#if OV_HAVE_FAST16_X86
  if (__builtin_cpu_supports("ssse3")) kernels.emplace_back("SSSE3", fast16_row::ScoreRow_SSSE3);
  if (__builtin_cpu_supports("avx2")) kernels.emplace_back("AVX2", fast16_row::ScoreRow_AVX2);
#endif
#if OV_HAVE_FAST16_NEON
  kernels.emplace_back("NEON", fast16_row::ScoreRow_NEON);
#endif
  ASSERT_FALSE(kernels.empty());
  std::vector<Gray> all = images();
  for (int w = 7; w <= 70; ++w)  // every block remainder of 16 and 32
    all.push_back(generated("noise", w, 9, [](int, int, std::mt19937& r) { return int(r() & 255); }));
  for (const Gray& g : all)
    for (int t : {0, 1, 7, 30, 90, 254, 255})
      for (bool nms : {false, true}) {
        const Corners want = ours(g, t, nms, fast16_row::ScoreRow_C);
        for (auto [name, k] : kernels)
          EXPECT_EQ(ours(g, t, nms, k), want) << name << " " << g.name << " t=" << t;
      }
}

TEST(Fast16, RefusesBadInputAndStopsWhenFull) {
  const Gray g = images()[3];  // noise: many corners
  const Fast16Corner unset{-7, -7, -7};
  std::vector<Fast16Corner> out(size_t(g.w) * g.h, unset);
  const int cap = int(out.size());
  const uint8_t* px = g.px.data();
  const int s = g.stride;
  for (int r :
       {fast16(nullptr, g.w, g.h, s, 10, 0, out.data(), cap), fast16(px, g.w, g.h, s, 10, 0, nullptr, cap),
        fast16(px, 6, g.h, s, 10, 0, out.data(), cap), fast16(px, g.w, 6, s, 10, 0, out.data(), cap),
        fast16(px, g.w, g.h, g.w - 1, 10, 0, out.data(), cap),
        fast16(px, g.w, g.h, s, -1, 0, out.data(), cap), fast16(px, g.w, g.h, s, 256, 0, out.data(), cap),
        fast16(px, g.w, g.h, s, 10, 0, out.data(), 0), fast16(px, g.w, g.h, s, 10, 0, out.data(), -5),
        fast16(px, 7, 7, INT_MAX / 2, 10, 0, out.data(), cap)})
    EXPECT_EQ(r, FAST16_REFUSED);
  for (const Fast16Corner& c : out) ASSERT_EQ(c.x, unset.x);

  for (int nms : {0, 1}) {
    const int all = fast16(px, g.w, g.h, s, 10, nms, out.data(), cap);
    ASSERT_GT(all, 20);
    const std::vector<Fast16Corner> full(out.begin(), out.begin() + all);
    std::vector<Fast16Corner> part(all, unset);
    EXPECT_EQ(fast16(px, g.w, g.h, s, 10, nms, part.data(), all), all);
    EXPECT_EQ(fast16(px, g.w, g.h, s, 10, nms, part.data(), all - 1), FAST16_FULL);
    std::fill(part.begin(), part.end(), unset);
    EXPECT_EQ(fast16(px, g.w, g.h, s, 10, nms, part.data(), 20), FAST16_FULL);
    for (int i = 0; i < all; ++i) {
      const Fast16Corner& want = i < 20 ? full[i] : unset;
      EXPECT_TRUE(part[i].x == want.x && part[i].y == want.y && part[i].score == want.score) << i;
    }
  }
}

}  // namespace
