#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "imgproc/Blur.h"

namespace {

using Bytes = std::vector<uint8_t>;

double sigmaOf(double r) { return (r + 1.0) / std::sqrt(2.0 * std::log(255.0)); }

// Sampled, normalised Gaussian over +-8 sigma, edges replicated, rounded
// after each direction.
void directGaussLine(uint8_t* line, int n, size_t step, double sigma) {
  const int half = (int)std::ceil(8 * sigma);
  std::vector<double> k(2 * half + 1);
  double total = 0;
  for (int i = -half; i <= half; ++i) total += k[i + half] = std::exp(-i * i / (2 * sigma * sigma));
  std::vector<uint8_t> in(n);
  for (int i = 0; i < n; ++i) in[i] = line[i * step];
  for (int x = 0; x < n; ++x) {
    double v = 0;
    for (int i = -half; i <= half; ++i) v += k[i + half] * in[std::min(std::max(x + i, 0), n - 1)];
    line[x * step] = (uint8_t)std::lround(v / total);
  }
}

}  // namespace

// Deriche's fourth-order approximation stays within 1 grey level of the true
// Gaussian per pixel (rounding after each direction included) for sigma from
// 0.9 to 12.
TEST(GaussIir, CloseToDirectGaussianConvolution) {
  std::mt19937 rng(21);
  const int w = 61, h = 47, ch = 3;
  Bytes img(w * h * ch);
  // Smooth blobs plus noise: both flat areas and sharp detail.
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      for (int c = 0; c < ch; ++c)
        img[(y * w + x) * ch + c] = (uint8_t)(((x / 8 + y / 6 + c) % 2) * 180 + rng() % 60);
  for (double r : {2.0, 5.0, 10.0, 40.0}) {
    Bytes got = img, expect = img;
    gaussiir(got.data(), w, h, ch, w * ch, (float)r, (float)r);
    for (int y = 0; y < h; ++y)
      for (int c = 0; c < ch; ++c) directGaussLine(&expect[y * w * ch + c], w, ch, sigmaOf(r));
    for (int x = 0; x < w; ++x)
      for (int c = 0; c < ch; ++c) directGaussLine(&expect[x * ch + c], h, (size_t)w * ch, sigmaOf(r));
    int worst = 0;
    for (size_t i = 0; i < img.size(); ++i) worst = std::max(worst, std::abs(got[i] - expect[i]));
    EXPECT_LE(worst, 1) << "radius " << r;
  }
}

TEST(GaussIir, FlatStaysFlatAndEachRadiusActsOnItsOwnDirection) {
  const int w = 20, h = 12;
  Bytes flat(w * h, 255);
  gaussiir(flat.data(), w, h, 1, w, 6.0f, 9.0f);
  EXPECT_EQ(flat, Bytes(w * h, 255));

  // Every row constant: a row-only blur changes nothing, a column blur does.
  Bytes stripes(w * h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) stripes[y * w + x] = (y % 2) ? 200 : 20;
  Bytes img = stripes;
  gaussiir(img.data(), w, h, 1, w, 5.0f, 0.0f);
  EXPECT_EQ(img, stripes);
  gaussiir(img.data(), w, h, 1, w, 0.0f, 5.0f);
  EXPECT_NE(img, stripes);
  EXPECT_NEAR(img[5 * w + 3], 110, 10);
}

TEST(GaussIir, PaddingAndSmallOrBadImagesUntouched) {
  std::mt19937 rng(22);
  // Stride with 3 padding bytes per row: the padding is never written.
  const int w = 9, h = 8, stride = 2 * w + 3;
  Bytes img(stride * h);
  for (auto& b : img) b = (uint8_t)rng();
  Bytes before = img;
  gaussiir(img.data(), w, h, 2, stride, 3.0f, 3.0f);
  for (int y = 0; y < h; ++y)
    for (int x = 2 * w; x < stride; ++x) EXPECT_EQ(img[y * stride + x], before[y * stride + x]);
  EXPECT_NE(img, before);

  before = img;
  gaussiir(img.data(), 4, 8, 1, 4, 3.0f, 3.0f);   // smaller side 4
  gaussiir(img.data(), 9, 8, 2, 17, 3.0f, 3.0f);  // stride too small
  gaussiir(img.data(), 9, 8, 5, 60, 3.0f, 3.0f);  // five channels
  gaussiir(img.data(), 9, 8, 1, 9, NAN, -1.0f);   // no direction to blur
  gaussiir(nullptr, 9, 8, 1, 9, 3.0f, 3.0f);
  EXPECT_EQ(img, before);
}
