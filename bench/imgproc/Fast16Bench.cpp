// FAST-16 beside OpenCV's FAST 9/16, one thread, on a grey photograph tiled
// (mirrored, so no seams) to camera sizes.
#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/features2d.hpp>
#include <string>
#include <vector>

#include "core/RefBase.h"
#include "core/Stream.h"
#include "image/ColorConvert.h"
#include "image/Image.h"
#include "image/ImageDecoder.h"
#include "imgproc/Fast16.h"
#include "imgproc/Fast16Rows.h"

namespace {

struct Picture {
  int w, h;
  std::vector<uint8_t> px;
};

Picture tiledPhoto(int w, int h) {
  auto_ptr<Stream> in(new FileStream(OV_SAMPLES_DIR "/coffee.jpg", FileStream::FILE_MODE_READ));
  auto_ptr<Image> image(Image::createImage(1, 1, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  JpegDecoder decoder;
  if (decoder.decode(in, image) != 1) return Picture{0, 0, {}};
  const int pw = int(image->width), ph = int(image->height);
  std::vector<uint8_t> gray(size_t(pw) * ph);
  color_convert_rgb2gray(image->planes[0], gray.data(), pw, ph);
  Picture p{w, h, std::vector<uint8_t>(size_t(w) * h)};
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int tx = x / pw % 2 ? pw - 1 - x % pw : x % pw, ty = y / ph % 2 ? ph - 1 - y % ph : y % ph;
      p.px[size_t(y) * w + x] = gray[size_t(ty) * pw + tx];
    }
  return p;
}

const Picture& picture(int w) {
  static const Picture hd = tiledPhoto(1920, 1080), mp12 = tiledPhoto(4000, 3000);
  return w == 1920 ? hd : mp12;
}

// Arguments: width (1920 or 4000), threshold, suppression.
template <typename Detect>
void run(benchmark::State& state, Detect detect) {
  const Picture& p = picture(int(state.range(0)));
  if (p.px.empty()) return state.SkipWithError("no sample photo");
  int found = 0;
  for (auto _ : state) {
    found = detect(p, int(state.range(1)), state.range(2) != 0);
    benchmark::DoNotOptimize(found);
  }
  state.counters["corners"] = found;
  state.SetItemsProcessed(state.iterations() * p.w * p.h);
}

int ours(const Picture& p, int t, bool nms, orvan::fast16_row::RowKernel kernel) {
  static std::vector<Fast16Corner> out(1 << 22);
  return kernel ? orvan::fast16_row::detect(kernel, p.px.data(), p.w, p.h, p.w, t, nms, out.data(),
                                            int(out.size()))
                : fast16(p.px.data(), p.w, p.h, p.w, t, nms, out.data(), int(out.size()));
}

void BM_Fast16(benchmark::State& state) {
  run(state, [](const Picture& p, int t, bool nms) { return ours(p, t, nms, nullptr); });
}

void BM_CvFast(benchmark::State& state) {
  cv::setNumThreads(1);
  std::vector<cv::KeyPoint> kp;
  run(state, [&](const Picture& p, int t, bool nms) {
    cv::FAST(cv::Mat(p.h, p.w, CV_8U, const_cast<uint8_t*>(p.px.data())), kp, t, nms,
             cv::FastFeatureDetector::TYPE_9_16);
    return int(kp.size());
  });
}

template <int Which>
void BM_Fast16Kernel(benchmark::State& state) {
  orvan::fast16_row::RowKernel k = orvan::fast16_row::ScoreRow_C;
#if OV_HAVE_FAST16_X86
  if (Which == 1) k = __builtin_cpu_supports("ssse3") ? orvan::fast16_row::ScoreRow_SSSE3 : nullptr;
  if (Which == 2) k = __builtin_cpu_supports("avx2") ? orvan::fast16_row::ScoreRow_AVX2 : nullptr;
#else
  if (Which != 0) k = nullptr;
#endif
  if (!k) return state.SkipWithError("not on this processor");
  run(state, [k](const Picture& p, int t, bool nms) { return ours(p, t, nms, k); });
}

void sizes(benchmark::internal::Benchmark* b) {
  for (int w : {1920, 4000})
    for (int t : {10, 30, 80})
      for (int nms : {0, 1}) b->Args({w, t, nms});
}

BENCHMARK(BM_Fast16)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CvFast)->Apply(sizes)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Fast16Kernel, 0)
    ->Name("BM_Fast16_C")
    ->Args({4000, 10, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Fast16Kernel, 1)
    ->Name("BM_Fast16_SSSE3")
    ->Args({4000, 10, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Fast16Kernel, 2)
    ->Name("BM_Fast16_AVX2")
    ->Args({4000, 10, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
