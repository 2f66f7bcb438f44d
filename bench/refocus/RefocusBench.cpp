// One frame of a focus sweep reduced to per-cell sharpness sums: the library's
// RFModule_PreProcess beside OpenCV doing the same steps (luma of a two-byte
// frame, area resize to 600 x 600, absolute horizontal difference, 3 x 3 box
// filter, cell sums).
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "refocus/Refocus.h"

namespace {

constexpr int kGridCols = 16, kGridRows = 12;

std::vector<unsigned char> makeFrame(int width, int height) {
  std::vector<unsigned char> frame(size_t(width) * height * 2);
  std::mt19937 rng(42);
  for (auto& b : frame) b = static_cast<unsigned char>(rng());
  return frame;
}

void BM_RFModule_PreProcess(benchmark::State& state) {
  const int w = int(state.range(0)), h = int(state.range(1));
  std::vector<unsigned char> frame = makeFrame(w, h);
  RFModule* m = RFModule_Create(w, h, kGridCols, kGridRows);
  for (auto _ : state) {
    RFModule_PreProcess(m, frame.data(), 1);
    RFModule_Clear(m);  // keep the target list from growing
  }
  RFModule_Release(&m);
  state.SetBytesProcessed(int64_t(state.iterations()) * w * h * 2);
}

void BM_OpenCV_SameSteps(benchmark::State& state) {
  cv::setNumThreads(1);
  const int w = int(state.range(0)), h = int(state.range(1));
  std::vector<unsigned char> data = makeFrame(w, h);
  const cv::Mat frame(h, w, CV_8UC2, data.data());
  cv::Mat luma, small, grad, smooth, integral;
  std::vector<int> cells(kGridCols * kGridRows);
  const int cw = 600 / kGridCols, ch = 600 / kGridRows;
  for (auto _ : state) {
    cv::extractChannel(frame, luma, 0);
    cv::resize(luma, small, cv::Size(600, 600), 0, 0, cv::INTER_AREA);
    cv::absdiff(small.colRange(1, 600), small.colRange(0, 599), grad);
    cv::blur(grad, smooth, cv::Size(3, 3));
    cv::integral(smooth, integral, CV_32S);
    for (int gr = 0; gr < kGridRows; ++gr)
      for (int gc = 0; gc < kGridCols; ++gc) {
        const int r0 = gr * ch, c0 = gc * cw;
        cells[gr * kGridCols + gc] = integral.at<int>(r0 + ch, c0 + cw) - integral.at<int>(r0, c0 + cw) -
                                     integral.at<int>(r0 + ch, c0) + integral.at<int>(r0, c0);
      }
    benchmark::DoNotOptimize(cells.data());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * w * h * 2);
}

BENCHMARK(BM_RFModule_PreProcess)
    ->Args({6000, 4000})
    ->Args({4000, 3000})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenCV_SameSteps)
    ->Args({6000, 4000})
    ->Args({4000, 3000})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);

}  // namespace
