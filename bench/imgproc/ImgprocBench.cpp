// Blur, blend and LBP costs beside peers doing comparable work, one thread.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "imgproc/Blur.h"
#include "imgproc/Lbp.h"

namespace {

constexpr int kW = 1920, kH = 1080;

std::vector<uint8_t> noisePicture(size_t bytes) {
  std::vector<uint8_t> v(bytes);
  std::mt19937 rng(1);
  for (auto& b : v) b = (uint8_t)rng();
  return v;
}

// Standard deviation of the stack blur's triangular kernel of radius r.
double triangularSigma(int r) { return std::sqrt(r * (r + 2.0) / 6.0); }

// Times fn on a noise picture of `bytes` bytes, changed in place run after run.
template <typename Fn>
void timeOnNoise(benchmark::State& state, size_t bytes, Fn fn) {
  std::vector<uint8_t> px = noisePicture(bytes);
  for (auto _ : state) {
    fn(px.data());
    benchmark::ClobberMemory();
  }
}

// Times an OpenCV filter of the picture the stack blur gets, single-threaded.
template <typename Filter>
void timeCv(benchmark::State& state, Filter filter) {
  cv::setNumThreads(1);
  std::vector<uint8_t> px = noisePicture((size_t)kW * kH * 4);
  cv::Mat img(kH, kW, CV_8UC4, px.data());
  cv::Mat out;
  for (auto _ : state) {
    filter(img, out);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kW * kH);
}

void BM_StackBlur(benchmark::State& state) {
  const int r = (int)state.range(0);
  timeOnNoise(state, (size_t)kW * kH * 4, [r](uint8_t* px) { stack_blur(px, kW, kH, r); });
  state.SetItemsProcessed(state.iterations() * kW * kH);
}

void BM_CvGaussianBlur(benchmark::State& state) {
  const double sigma = triangularSigma((int)state.range(0));
  state.SetLabel("sigma " + std::to_string(sigma).substr(0, 5));
  timeCv(state, [sigma](const cv::Mat& img, cv::Mat& out) {
    cv::GaussianBlur(img, out, cv::Size(0, 0), sigma, sigma, cv::BORDER_REPLICATE);
  });
}

void BM_CvBoxBlur(benchmark::State& state) {
  const int r = (int)state.range(0);
  timeCv(state, [r](const cv::Mat& img, cv::Mat& out) {
    cv::blur(img, out, cv::Size(2 * r + 1, 2 * r + 1), cv::Point(-1, -1), cv::BORDER_REPLICATE);
  });
}

BENCHMARK(BM_StackBlur)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CvGaussianBlur)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CvBoxBlur)->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

// 12 megapixels of RGBA: 48 MB, far beyond the caches.
constexpr size_t kBlendPixels = 4000 * 3000;

void BM_AlphaBlendNeon(benchmark::State& state) {
  timeOnNoise(state, kBlendPixels * 4,
              [](uint8_t* px) { alpha_blend_neon(px, (int)kBlendPixels, 30, 60, 90, 77); });
  state.SetBytesProcessed(state.iterations() * kBlendPixels * 4);
}

void BM_AlphaBlendScalar(benchmark::State& state) {
  timeOnNoise(state, kBlendPixels * 4,
              [](uint8_t* px) { alpha_blend(px, (int)kBlendPixels, 30, 60, 90, 77); });
  state.SetBytesProcessed(state.iterations() * kBlendPixels * 4);
}

void BM_Memcpy12MP(benchmark::State& state) {
  std::vector<uint8_t> src = noisePicture(kBlendPixels * 4), dst(kBlendPixels * 4);
  for (auto _ : state) {
    memcpy(dst.data(), src.data(), src.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kBlendPixels * 4);
}

BENCHMARK(BM_AlphaBlendNeon)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AlphaBlendScalar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Memcpy12MP)->Unit(benchmark::kMillisecond);

// Classifier score of a 64x64 patch over three pyramid levels; the scratch
// copy the caller must make is part of the cost.
void BM_LbpDotprod64(benchmark::State& state) {
  const int n = 64;
  std::mt19937 rng(3);
  std::vector<unsigned int> patch(n * n), scratch(n * n);
  for (auto& v : patch) v = rng() % 256;
  const unsigned dim = lbp_pyr_get_dim(n, n, 3);
  std::vector<double> w(dim);
  for (auto& v : w) v = (double)(rng() % 1000) / 1000.0;
  for (auto _ : state) {
    memcpy(scratch.data(), patch.data(), patch.size() * sizeof(unsigned int));
    benchmark::DoNotOptimize(lbp_pyr_dotprod(w.data(), dim, scratch.data(), n, n));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LbpDotprod64)->Unit(benchmark::kMicrosecond);

}  // namespace
