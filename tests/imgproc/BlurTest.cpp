#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "imgproc/Blur.h"
#include "imgproc/StackBlurTables.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes randomBytes(std::mt19937& rng, size_t n) {
  Bytes v(n);
  for (auto& b : v) b = (uint8_t)rng();
  return v;
}

int clampi(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

// Windowed average of one line with edge replication, rounded to nearest
// (an odd divisor never produces an exact half).
void directBox(const uint8_t* src, uint8_t* dst, int n, size_t step, int r) {
  const int div = 2 * r + 1;
  for (int x = 0; x < n; ++x) {
    int sum = 0;
    for (int k = -r; k <= r; ++k) sum += src[clampi(x + k, 0, n - 1) * step];
    dst[x * step] = (uint8_t)((2 * sum + div) / (2 * div));
  }
}

Bytes directBoxH(const Bytes& src, int w, int h, int r) {
  Bytes out(src.size());
  for (int y = 0; y < h; ++y) directBox(&src[y * w], &out[y * w], w, 1, std::min(r, (w - 1) / 2));
  return out;
}

Bytes directBoxV(const Bytes& src, int w, int h, int r) {
  Bytes out(src.size());
  for (int x = 0; x < w; ++x) directBox(&src[x], &out[x], h, w, std::min(r, (h - 1) / 2));
  return out;
}

// Triangular-weighted window of one channel with edge replication, divided
// the Stack Blur way.
void directStack(uint8_t* line, int n, size_t step, int r) {
  std::vector<uint8_t> in(n);
  for (int i = 0; i < n; ++i) in[i] = line[i * step];
  for (int x = 0; x < n; ++x) {
    uint64_t sum = 0;
    for (int k = -r; k <= r; ++k) sum += (uint64_t)(r + 1 - std::abs(k)) * in[clampi(x + k, 0, n - 1)];
    line[x * step] = (uint8_t)((sum * kStackBlurMul[r]) >> kStackBlurShr[r]);
  }
}

Bytes directStackBlur(Bytes px, int w, int h, int r) {
  for (int y = 0; y < h; ++y)
    for (int c = 0; c < 3; ++c) directStack(&px[y * w * 4 + c], w, 4, r);
  for (int x = 0; x < w; ++x)
    for (int c = 0; c < 3; ++c) directStack(&px[x * 4 + c], h, (size_t)w * 4, r);
  return px;
}

}  // namespace

TEST(StackBlurTables, EndpointsAndEveryEntryDividesBySquaredWindow) {
  EXPECT_EQ(kStackBlurMul[0], 512);
  EXPECT_EQ(kStackBlurShr[0], 9);
  EXPECT_EQ(kStackBlurMul[1], 512);
  EXPECT_EQ(kStackBlurShr[1], 11);
  EXPECT_EQ(kStackBlurMul[254], 259);
  EXPECT_EQ(kStackBlurShr[254], 24);
  for (int r = 0; r < 255; ++r) {
    const double exact = std::ldexp(1.0, kStackBlurShr[r]) / ((r + 1.0) * (r + 1.0));
    EXPECT_LE(std::fabs(kStackBlurMul[r] - exact), 1.0) << r;
  }
}

TEST(StackBlur, ConstantImageStaysConstantForEveryRadius) {
  // Catches any multiplier rounded the wrong way: 255 must stay 255.
  for (int r = 0; r <= 254; ++r) {
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
  const int radii[] = {0, 1, 2, 3, 7, 20, 254};
  for (auto& s : sizes) {
    for (int r : radii) {
      const int w = s[0], h = s[1];
      Bytes px = randomBytes(rng, (size_t)w * h * 4);
      const Bytes expect = directStackBlur(px, w, h, r);
      const Bytes before = px;
      stack_blur(px.data(), w, h, r);
      ASSERT_EQ(px, expect) << w << "x" << h << " r=" << r;
      for (size_t i = 3; i < px.size(); i += 4) ASSERT_EQ(px[i], before[i]) << "alpha byte touched";
    }
  }
}

TEST(StackBlur, RefusedArgumentsLeaveImageUnchanged) {
  std::mt19937 rng(8);
  const Bytes orig = randomBytes(rng, 6 * 5 * 4);
  for (int r : {-1, 255, 1000, 0}) {
    Bytes px = orig;
    stack_blur(px.data(), 6, 5, r);
    EXPECT_EQ(px, orig) << r;
  }
  Bytes px = orig;
  stack_blur(px.data(), 0, 5, 3);
  stack_blur(px.data(), 6, -1, 3);
  stack_blur(nullptr, 6, 5, 3);
  stack_blur(px.data(), 65536, 65536, 3);  // byte count beyond 32 bits
  EXPECT_EQ(px, orig);
}

TEST(GaussCoef, WorkedExamples) {
  gauss_blur_coef c{};
  calculate_gauss_blur_coef(2.0f, 3, &c);  // wIdeal 4.12, m = round(1.5) = 2
  EXPECT_EQ(c.n, 3);
  EXPECT_EQ(c.w[0], 3);
  EXPECT_EQ(c.w[1], 3);
  EXPECT_EQ(c.w[2], 5);
  calculate_gauss_blur_coef(1.0f, 3, &c);  // wIdeal 2.24, wl 1, m = round(1.5) = 2
  EXPECT_EQ((std::vector<int>(c.w, c.w + 3)), (std::vector<int>{1, 1, 3}));
  calculate_gauss_blur_coef(5.0f, 3, &c);  // wIdeal 10.05, wl 9, m = round(1.5) = 2
  EXPECT_EQ((std::vector<int>(c.w, c.w + 3)), (std::vector<int>{9, 9, 11}));
  calculate_gauss_blur_coef(3.0f, 4, &c);  // wIdeal 5.29, wl 5, m = round(3.5) = 4
  EXPECT_EQ(c.n, 4);
  EXPECT_EQ((std::vector<int>(c.w, c.w + 4)), (std::vector<int>{5, 5, 5, 5}));

  gauss_blur_coef untouched{};
  untouched.n = -5;
  calculate_gauss_blur_coef(2.0f, 0, &untouched);
  calculate_gauss_blur_coef(2.0f, 2049, &untouched);
  calculate_gauss_blur_coef(NAN, 3, &untouched);
  EXPECT_EQ(untouched.n, -5);
  calculate_gauss_blur_coef(2.0f, 3, nullptr);  // must not crash
}

TEST(BoxBlur, HorizontalAndVerticalMatchDirectWindowedAverage) {
  std::mt19937 rng(11);
  const int sizes[][2] = {{1, 1}, {2, 7}, {5, 4}, {17, 9}, {40, 33}};
  for (auto& s : sizes) {
    for (int r : {0, 1, 2, 4, 9, 30}) {
      const int w = s[0], h = s[1];
      // Exact-size buffers: a read beyond a line shows up under ASan.
      Bytes src = randomBytes(rng, (size_t)w * h), dst(src.size(), 0);
      box_blurH(src.data(), dst.data(), w, h, r);
      ASSERT_EQ(dst, directBoxH(src, w, h, r)) << w << "x" << h << " r=" << r;
      box_blurV(src.data(), dst.data(), w, h, r);
      ASSERT_EQ(dst, directBoxV(src, w, h, r)) << w << "x" << h << " r=" << r;
    }
  }
}

TEST(BoxBlur, ShortLineUsesTheLargestRadiusItCanServe) {
  // Width 5 with r = 10 is blurred with radius 2: a plain 5-tap average.
  Bytes src = {0, 50, 100, 150, 200}, dst(5);
  box_blurH(src.data(), dst.data(), 5, 1, 10);
  // (0+0+0+50+100)/5 = 30, (0+0+50+100+150)/5 = 60, 100, (50+100+150+200+200)/5 = 140, 170
  EXPECT_EQ(dst, (Bytes{30, 60, 100, 140, 170}));
}

TEST(BoxBlur, TwoPassBlurLeavesResultInDstAndScratchInSrc) {
  std::mt19937 rng(12);
  const int w = 23, h = 17, r = 3;
  const Bytes orig = randomBytes(rng, (size_t)w * h);
  Bytes src = orig, dst(orig.size());
  box_blur(src.data(), dst.data(), w, h, r);
  const Bytes horizontal = directBoxH(orig, w, h, r);
  EXPECT_EQ(dst, directBoxV(horizontal, w, h, r));
  EXPECT_EQ(src, horizontal);
}

TEST(GaussBlur, UsesItsOwnWidthRule) {
  std::mt19937 rng(13);
  const int w = 31, h = 19;
  const Bytes orig = randomBytes(rng, (size_t)w * h);
  auto boxes = [&](const Bytes& in, std::initializer_list<int> radii) {
    Bytes v = in;
    for (int r : radii) v = directBoxV(directBoxH(v, w, h, r), w, h, r);
    return v;
  };
  // sigma 2: m = 4.25 -> 4, so three boxes of width 3 (radius 1) where the
  // coefficient function would give 3, 3, 5.
  Bytes src = orig, dst(orig.size());
  gauss_blur(src.data(), dst.data(), w, h, 2);
  EXPECT_EQ(dst, boxes(orig, {1, 1, 1}));
  // sigma 5: wl 9, m = 8.375 -> 8: three boxes of radius 4.
  src = orig;
  gauss_blur(src.data(), dst.data(), w, h, 5);
  EXPECT_EQ(dst, boxes(orig, {4, 4, 4}));
  // sigma 1: wl 1, m = 2.9 -> 3: width 1 everywhere, a plain copy.
  src = orig;
  gauss_blur(src.data(), dst.data(), w, h, 1);
  EXPECT_EQ(dst, orig);
}

TEST(FastBlur, MatchesTwoTruncatedBoxAverages) {
  std::mt19937 rng(17);
  const int sizes[][2] = {{1, 1}, {3, 8}, {12, 7}, {25, 25}};
  for (auto& s : sizes) {
    for (int radius : {1, 2, 5, 40}) {
      const int w = s[0], h = s[1];
      const int r = std::min({radius, w, h}), div = 2 * r + 1;
      std::vector<uint32_t> src(w * h), dst(w * h, 0);
      for (auto& p : src) p = rng();
      std::vector<uint32_t> expect(w * h, 0xFF000000u);
      for (int c = 0; c < 3; ++c) {
        const int sh = 8 * c;
        std::vector<int> mid(w * h);
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) {
            int sum = 0;
            for (int k = -r; k <= r; ++k) sum += (src[y * w + clampi(x + k, 0, w - 1)] >> sh) & 0xFF;
            mid[y * w + x] = sum / div;
          }
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) {
            int sum = 0;
            for (int k = -r; k <= r; ++k) sum += mid[clampi(y + k, 0, h - 1) * w + x];
            expect[y * w + x] |= (uint32_t)(sum / div) << sh;
          }
      }
      fast_blur(src.data(), dst.data(), w, h, radius);
      ASSERT_EQ(dst, expect) << w << "x" << h << " radius " << radius;
    }
  }
}

TEST(FastBlur, RadiusBelowOneWritesNothing) {
  std::vector<uint32_t> src(12, 0x00123456u), dst(12, 7u);
  fast_blur(src.data(), dst.data(), 4, 3, 0);
  fast_blur(src.data(), dst.data(), 4, 3, -3);
  EXPECT_EQ(dst, std::vector<uint32_t>(12, 7u));
}
