#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "imgproc/Blur.h"
#include "tests/imgproc/BlurReference.h"

using ref::Bytes;

namespace {

// Sampled, normalised Gaussian over +-8 sigma along one line (n values `step`
// apart), edges replicated, rounded to the nearest grey level.
void directGaussLine(uint8_t* line, int n, size_t step, double sigma) {
  const int half = int(std::ceil(8 * sigma));
  std::vector<double> k(2 * half + 1);
  double total = 0;
  for (int i = -half; i <= half; ++i) total += k[i + half] = std::exp(-i * i / (2 * sigma * sigma));
  Bytes in(n);
  for (int i = 0; i < n; ++i) in[i] = line[i * step];
  for (int x = 0; x < n; ++x) {
    double v = 0;
    for (int i = -half; i <= half; ++i) v += k[i + half] * in[ref::clampi(x + i, 0, n - 1)];
    line[x * step] = uint8_t(std::lround(v / total));
  }
}

}  // namespace

// Deriche's fourth-order approximation stays within 1 grey level of the true
// Gaussian (sigma = (r + 1) / sqrt(2 ln 255), rows then columns) for sigma
// from 0.9 to 12.
TEST(GaussIir, WithinOneLevelOfDirectGaussianConvolution) {
  std::mt19937 rng(21);
  const int w = 61, h = 47, ch = 3;
  Bytes img(w * h * ch);
  // Smooth blobs plus noise: both flat areas and sharp detail.
  for (size_t i = 0; i < img.size(); ++i) {
    const int x = int(i / ch) % w, y = int(i / ch) / w;
    img[i] = uint8_t(((x / 8 + y / 6 + int(i % ch)) % 2) * 180 + rng() % 60);
  }
  for (double r : {2.0, 5.0, 10.0, 40.0}) {
    const double sigma = (r + 1.0) / std::sqrt(2.0 * std::log(255.0));
    Bytes got = img, expect = img;
    gaussiir(got.data(), w, h, ch, w * ch, float(r), float(r));
    for (int c = 0; c < ch; ++c) {
      for (int y = 0; y < h; ++y) directGaussLine(&expect[y * w * ch + c], w, ch, sigma);
      for (int x = 0; x < w; ++x) directGaussLine(&expect[x * ch + c], h, size_t(w) * ch, sigma);
    }
    int worst = 0;
    for (size_t i = 0; i < img.size(); ++i) worst = std::max(worst, std::abs(got[i] - expect[i]));
    EXPECT_LE(worst, 1) << "radius " << r;
  }
}

TEST(GaussIir, EachRadiusActsOnItsOwnDirectionPaddingAndBadImagesAreKept) {
  // Constant rows alternating 20/200: a row blur changes nothing, a column blur
  // pulls every pixel toward the mean 110.
  const int w = 20, h = 12;
  Bytes stripes(w * h);
  for (int i = 0; i < w * h; ++i) stripes[i] = (i / w) % 2 ? 200 : 20;
  Bytes img = stripes;
  gaussiir(img.data(), w, h, 1, w, 5.0f, 0.0f);
  EXPECT_EQ(img, stripes);
  gaussiir(img.data(), w, h, 1, w, 0.0f, 5.0f);
  EXPECT_NEAR(img[5 * w + 3], 110, 10);

  // Two channels, 3 padding bytes per row that are never written.
  std::mt19937 rng(22);
  const int pw = 9, ph = 8, stride = 2 * pw + 3;
  Bytes padded = ref::randomBytes(rng, 60 * ph);
  const Bytes before = padded;
  gaussiir(padded.data(), pw, ph, 2, stride, 3.0f, 3.0f);
  for (int y = 0; y < ph; ++y)
    for (int x = 2 * pw; x < stride; ++x) ASSERT_EQ(padded[y * stride + x], before[y * stride + x]);
  EXPECT_NE(padded, before);

  // Small or malformed images are left alone.
  img = padded;
  gaussiir(img.data(), 4, 8, 1, 4, 3.0f, 3.0f);   // smaller side 4
  gaussiir(img.data(), 9, 8, 2, 17, 3.0f, 3.0f);  // stride too small
  gaussiir(img.data(), 9, 8, 5, 60, 3.0f, 3.0f);  // five channels
  gaussiir(img.data(), 9, 8, 1, 9, NAN, -1.0f);   // no direction to blur
  gaussiir(nullptr, 9, 8, 1, 9, 3.0f, 3.0f);
  EXPECT_EQ(img, padded);
}
