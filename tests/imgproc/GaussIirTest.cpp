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
// from 0.9 to 12. radiusX blurs along rows, radiusY along columns, and a
// radius that is not positive skips its direction.
TEST(GaussIir, WithinOneLevelOfDirectGaussianConvolutionInEachDirection) {
  std::mt19937 rng(21);
  const int w = 61, h = 47, ch = 3, stride = w * ch + 3;  // 3 padding bytes, never written
  Bytes img(stride * h);
  // Smooth blobs plus noise: both flat areas and sharp detail.
  for (size_t i = 0; i < img.size(); ++i) {
    const int x = int(i % stride) / ch, y = int(i / stride);
    img[i] = uint8_t(((x / 8 + y / 6 + int(i % stride % ch)) % 2) * 180 + rng() % 60);
  }
  auto sigmaOf = [](double r) { return (r + 1.0) / std::sqrt(2.0 * std::log(255.0)); };
  for (auto [rx, ry] :
       {std::pair{2.0, 2.0}, {5.0, 5.0}, {10.0, 10.0}, {40.0, 40.0}, {5.0, 0.0}, {-1.0, 7.0}}) {
    Bytes got = img, expect = img;
    gaussiir(got.data(), w, h, ch, stride, float(rx), float(ry));
    for (int c = 0; c < ch; ++c) {
      for (int y = 0; rx > 0 && y < h; ++y) directGaussLine(&expect[y * stride + c], w, ch, sigmaOf(rx));
      for (int x = 0; ry > 0 && x < w; ++x) directGaussLine(&expect[x * ch + c], h, stride, sigmaOf(ry));
    }
    int worst = 0;
    for (size_t i = 0; i < img.size(); ++i) worst = std::max(worst, std::abs(got[i] - expect[i]));
    EXPECT_LE(worst, 1) << "radii " << rx << ", " << ry;
    for (int y = 0; y < h; ++y)
      ASSERT_TRUE(std::equal(&got[y * stride + w * ch], &got[y * stride] + stride, &img[y * stride + w * ch]))
          << "padding of row " << y;
  }
}
