#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>
#include <utility>

#include "imgproc/Blur.h"
#include "tests/imgproc/BlurReference.h"

namespace {

using ref::Bytes;
using ref::clampi;
using ref::randomBytes;

// Mean over a window of 2r + 1 along rows (or columns), edges replicated;
// rounded to nearest (an odd divisor never gives an exact half) or truncated.
Bytes boxPass(const Bytes& src, int w, int h, int r, bool vertical, bool truncate) {
  Bytes out(src.size());
  const int n = vertical ? h : w, lines = vertical ? w : h, div = 2 * r + 1;
  const size_t step = vertical ? w : 1, next = vertical ? 1 : w;
  for (int l = 0; l < lines; ++l)
    for (int x = 0; x < n; ++x) {
      int sum = 0;
      for (int k = -r; k <= r; ++k) sum += src[l * next + clampi(x + k, 0, n - 1) * step];
      out[l * next + x * step] = uint8_t(truncate ? sum / div : (2 * sum + div) / (2 * div));
    }
  return out;
}

// The box blurs: a line not longer than 2r is blurred with radius (length - 1) / 2.
Bytes box(const Bytes& s, int w, int h, int r, bool vertical) {
  return boxPass(s, w, h, std::min(r, ((vertical ? h : w) - 1) / 2), vertical, false);
}

}  // namespace

TEST(StackBlur, PublishedTablesDivideBySquaredWindowAndKeepFlatImagesFlat) {
  for (auto [r, mul, shr] : {std::tuple{0, 512, 9}, {1, 512, 11}, {254, 259, 24}}) {
    EXPECT_EQ(kStackBlurMul[r], mul) << r;
    EXPECT_EQ(kStackBlurShr[r], shr) << r;
  }
  for (int r = 0; r <= 254; ++r) {
    // 255 * (r + 1)^2 * mul >> shr stays 255 only when mul lies in
    // [2^shr / (r + 1)^2, 256/255 of that): a multiplier rounded down turns 255 into 254.
    Bytes px(9 * 4 * 4);
    for (size_t i = 0; i < px.size(); ++i) px[i] = (i % 4 == 1) ? 37 : 255;
    const Bytes before = px;
    stack_blur(px.data(), 9, 4, r);
    ASSERT_EQ(px, before) << "radius " << r;
  }
}

TEST(StackBlur, MatchesTriangularSumWithEdgeReplication) {
  std::mt19937 rng(7);
  const int sizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {5, 3}, {13, 11}, {32, 20}};
  for (auto& s : sizes)
    for (int r : {0, 1, 2, 3, 7, 20, 254}) {
      Bytes px = randomBytes(rng, size_t(s[0]) * s[1] * 4);
      const Bytes expect = ref::stackBlur(px, s[0], s[1], r);  // alpha bytes kept
      stack_blur(px.data(), s[0], s[1], r);
      ASSERT_EQ(px, expect) << s[0] << "x" << s[1] << " r=" << r;
    }
}

// Bad radii, sizes, counts, strides and null buffers: nothing is touched.
TEST(BlurRefusals, LeaveEveryBufferUnchanged) {
  std::mt19937 rng(8);
  const Bytes orig = randomBytes(rng, 9 * 60);
  Bytes px = orig;
  uint8_t* p = px.data();
  for (int r : {-1, 255, 1000}) stack_blur(p, 6, 5, r);  // radius outside 0..254
  stack_blur(p, 6, -1, 3);
  stack_blur(p, 32768, 16384, 3);                              // byte count beyond an int
  for (int n : {7, -8}) alpha_blend_neon(p, n, 0, 0, 0, 255);  // no whole group of eight
  alpha_blend(p, -8, 0, 0, 0, 255);
  alpha_blend_neon(p, 0x20000000, 0, 0, 0, 255);  // byte count beyond an int
  alpha_blend(p, 0x20000000, 0, 0, 0, 255);
  for (auto blur : {box_blurH, box_blurV, box_blur}) blur(p, p + 270, 65535, 65535, 1);  // beyond an int
  gauss_blur(p, p + 270, 65535, 65535, 2);
  gaussiir(p, (1 << 29) + 1, 5, 1, (1 << 29) + 1, 3.0f, 3.0f);
  gaussiir(p, 4, 8, 1, 4, 3.0f, 3.0f);   // smaller side 4
  gaussiir(p, 9, 8, 2, 17, 3.0f, 3.0f);  // stride too small
  gaussiir(p, 9, 8, 5, 60, 3.0f, 3.0f);  // five channels
  gaussiir(p, 9, 8, 1, 9, NAN, -1.0f);   // no direction to blur
  EXPECT_EQ(px, orig);
  std::vector<uint32_t> src(12, 0x00123456u), dst(12, 7u);
  fast_blur(src.data(), dst.data(), 4, 3, 0);  // radius below one
  fast_blur(src.data(), dst.data(), 32768, 16384, 2);
  EXPECT_EQ(dst, std::vector<uint32_t>(12, 7u));
}

TEST(GaussCoef, WorkedExamples) {
  // wIdeal = sqrt(12 s^2 / n + 1), wl the largest odd width not above it,
  // m = round((12 s^2 - n wl^2 - 4 n wl - 3 n) / (-4 wl - 4)) boxes of wl, then wl + 2.
  // s 2: 4.12, wl 3, m round(1.5) = 2; s 1: 2.24, wl 1, m 2; s 5: 10.05, wl 9, m 2;
  // s 3, n 4: 5.29, wl 5, m round(3.5) = 4.
  for (const auto& [sigma, widths] : std::vector<std::pair<float, std::vector<int>>>{
           {2.0f, {3, 3, 5}}, {1.0f, {1, 1, 3}}, {5.0f, {9, 9, 11}}, {3.0f, {5, 5, 5, 5}}}) {
    gauss_blur_coef coef{};
    calculate_gauss_blur_coef(sigma, int(widths.size()), &coef);
    EXPECT_EQ(std::vector<int>(coef.w, coef.w + coef.n), widths) << "sigma " << sigma;
  }
  gauss_blur_coef untouched{};
  untouched.n = -5;
  calculate_gauss_blur_coef(2.0f, 0, &untouched);
  EXPECT_EQ(untouched.n, -5);
}

TEST(BoxBlur, BothDirectionsAndTwoPassMatchDirectWindowedAverage) {
  std::mt19937 rng(11);
  const int sizes[][2] = {{1, 1}, {2, 7}, {5, 4}, {17, 9}, {40, 33}};
  for (auto& s : sizes)
    for (int r : {0, 1, 2, 4, 9, 30}) {
      const int w = s[0], h = s[1];
      SCOPED_TRACE(testing::Message() << w << "x" << h << " r=" << r);
      // Exact-size buffers: a read beyond a line shows up under ASan.
      const Bytes orig = randomBytes(rng, size_t(w) * h);
      Bytes src = orig, dst(orig.size());
      box_blurH(src.data(), dst.data(), w, h, r);
      ASSERT_EQ(dst, box(orig, w, h, r, false));
      box_blurV(src.data(), dst.data(), w, h, r);
      ASSERT_EQ(dst, box(orig, w, h, r, true));
      // box_blur leaves the result in dst and the horizontal pass in src.
      box_blur(src.data(), dst.data(), w, h, r);
      ASSERT_EQ(src, box(orig, w, h, r, false));
      ASSERT_EQ(dst, box(src, w, h, r, true));
    }
  // Width 5 with r = 10 is blurred with radius 2:
  // (0+0+0+50+100)/5 = 30, (0+0+50+100+150)/5 = 60, 100, 140, (100+150+200*3)/5 = 170.
  Bytes src = {0, 50, 100, 150, 200}, dst(5);
  box_blurH(src.data(), dst.data(), 5, 1, 10);
  EXPECT_EQ(dst, (Bytes{30, 60, 100, 140, 170}));
}

TEST(GaussBlur, ThreeBoxesOfItsOwnWidthRule) {
  // wl from sqrt(4 s^2 + 1), m = round((s^2 - 3 wl^2 - 12 wl - 9) / (-4 wl - 4)):
  // sigma 2 -> wl 3, m 4.25: three boxes of radius 1 (the coefficient function
  // gives 3, 3, 5); sigma 5 -> wl 9, m 8.375: radius 4; sigma 1 -> wl 1, m 2.875:
  // radius 0, a plain copy.
  std::mt19937 rng(13);
  const int w = 31, h = 19;
  const Bytes orig = randomBytes(rng, size_t(w) * h);
  for (auto [sigma, radius] : {std::pair{2, 1}, {5, 4}, {1, 0}}) {
    Bytes expect = orig;
    for (int pass = 0; pass < 3; ++pass) expect = box(box(expect, w, h, radius, false), w, h, radius, true);
    Bytes src = orig, dst(orig.size());
    gauss_blur(src.data(), dst.data(), w, h, sigma);
    EXPECT_EQ(dst, expect) << "sigma " << sigma;
  }
}

TEST(FastBlur, MatchesTwoTruncatedBoxAverages) {
  std::mt19937 rng(17);
  const int sizes[][2] = {{1, 1}, {3, 8}, {12, 7}, {25, 25}};
  for (auto& s : sizes)
    for (int radius : {1, 2, 5, 40}) {
      const int w = s[0], h = s[1], r = std::min({radius, w, h});
      std::vector<uint32_t> src(w * h), dst(w * h, 0), expect(w * h, 0xFF000000u);
      for (auto& p : src) p = rng();
      for (int shift = 0; shift < 24; shift += 8) {
        Bytes plane(w * h);
        for (int i = 0; i < w * h; ++i) plane[i] = uint8_t(src[i] >> shift);
        plane = boxPass(boxPass(plane, w, h, r, false, true), w, h, r, true, true);
        for (int i = 0; i < w * h; ++i) expect[i] |= uint32_t(plane[i]) << shift;
      }
      fast_blur(src.data(), dst.data(), w, h, radius);
      ASSERT_EQ(dst, expect) << w << "x" << h << " radius " << radius;
    }
}
