// Whole-frame colour conversion at two camera sizes, ours beside libyuv and
// OpenCV (one thread each). The byte orders differ a little between peers
// (libyuv's RGB24 is B,G,R), which does not change the work done.
#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "image/ColorConvert.h"
#include "image/ConvertRows.h"

#if OV_BENCH_SHUFFLE_BUILD
namespace orvan::convert_row_shuffles {
int NVQuadToRGBRow_Portable(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset);
int Packed422ToRGBRow_Portable(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset);
int RGBToNVBlockRow_Portable(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1,
                             uint8_t* chroma, int blocks, int uOffset);
}  // namespace orvan::convert_row_shuffles
#endif

namespace {

struct Frame {
  int w, h;
  std::vector<uint8_t> rgb, nv21, yuyv, out;
  Frame(int width, int height) : w(width), h(height) {
    const size_t n = static_cast<size_t>(w) * h;
    std::mt19937 rng(7);
    auto fill = [&](std::vector<uint8_t>& v, size_t size) {
      v.resize(size);
      for (auto& b : v) b = static_cast<uint8_t>(rng());
    };
    fill(rgb, n * 3);
    fill(nv21, n * 3 / 2);
    fill(yuyv, n * 2);
    out.resize(n * 4);
  }
};

Frame& frame(int w, int) {
  static Frame hd(1920, 1080);
  static Frame big(4000, 3000);
  return w == 1920 ? hd : big;
}

void setPixels(benchmark::State& state, const Frame& f) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(f.w) * f.h);
}

// --- NV21 -> RGB ---
void BM_Ours_nv212rgb(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    color_convert_nv212rgb(f.nv21.data(), f.nv21.data() + n, f.out.data(), f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_Libyuv_NV21ToRGB24(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    libyuv::NV21ToRGB24(f.nv21.data(), f.w, f.nv21.data() + n, f.w, f.out.data(), f.w * 3, f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_OpenCV_YUV2RGB_NV21(benchmark::State& state) {
  cv::setNumThreads(1);
  Frame& f = frame(state.range(0), state.range(1));
  cv::Mat src(f.h * 3 / 2, f.w, CV_8UC1, f.nv21.data());
  cv::Mat dst(f.h, f.w, CV_8UC3, f.out.data());
  for (auto _ : state) {
    cv::cvtColor(src, dst, cv::COLOR_YUV2RGB_NV21);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}

// The table C kernels alone (the reference; they also finish every row after
// the block kernels), compiled into this benchmark from the library's source.
void BM_OursC_nv212rgb(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    orvan::convert_row::NVQuadToRGBRow_C(f.nv21.data(), f.nv21.data() + n, f.out.data(),
                                         static_cast<int>(n / 4), 1);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_OursC_rgb2nv21(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    uint8_t* chroma = f.out.data() + n;
    for (int row = 0; row + 1 < f.h; row += 2, chroma += f.w) {
      const uint8_t* src = f.rgb.data() + static_cast<size_t>(3 * f.w) * row;
      uint8_t* luma = f.out.data() + static_cast<size_t>(f.w) * row;
      orvan::convert_row::RGBToNVBlockRow_C(src, src + 3 * f.w, luma, luma + f.w, chroma, f.w / 2, 1);
    }
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_OursC_yuyv2rgb(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const int pairs = f.w * f.h / 2;
  for (auto _ : state) {
    orvan::convert_row::Packed422ToRGBRow_C(f.yuyv.data(), f.out.data(), pairs, 1, 3);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}

// The portable kernels (table-free, compiler-vectorised), forced as the
// dispatch would run them on a processor without a hand-written SIMD kernel:
// whole blocks, then the C kernel for the rest of the row.
template <int (*Kernel)(const uint8_t*, const uint8_t*, uint8_t*, int, int)>
void BM_OursPortable_nv212rgb(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  const int quads = static_cast<int>(n / 4);
  for (auto _ : state) {
    const uint8_t *y = f.nv21.data(), *vu = f.nv21.data() + n;
    const int done = Kernel(y, vu, f.out.data(), quads, 1);
    orvan::convert_row::NVQuadToRGBRow_C(y + 4 * done, vu + 2 * done, f.out.data() + 12 * done, quads - done,
                                         1);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
template <int (*Kernel)(const uint8_t*, const uint8_t*, uint8_t*, uint8_t*, uint8_t*, int, int)>
void BM_OursPortable_rgb2nv21(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  const int blocks = f.w / 2;
  for (auto _ : state) {
    uint8_t* chroma = f.out.data() + n;
    for (int row = 0; row + 1 < f.h; row += 2, chroma += f.w) {
      const uint8_t* src = f.rgb.data() + static_cast<size_t>(3 * f.w) * row;
      uint8_t* luma = f.out.data() + static_cast<size_t>(f.w) * row;
      const int done = Kernel(src, src + 3 * f.w, luma, luma + f.w, chroma, blocks, 1);
      orvan::convert_row::RGBToNVBlockRow_C(src + 6 * done, src + 3 * f.w + 6 * done, luma + 2 * done,
                                            luma + f.w + 2 * done, chroma + 2 * done, blocks - done, 1);
    }
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
template <int (*Kernel)(const uint8_t*, uint8_t*, int, int)>
void BM_OursPortable_yuyv2rgb(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const int pairs = f.w * f.h / 2;
  for (auto _ : state) {
    const int done = Kernel(f.yuyv.data(), f.out.data(), pairs, 1);
    orvan::convert_row::Packed422ToRGBRow_C(f.yuyv.data() + 4 * done, f.out.data() + 6 * done, pairs - done,
                                            1, 3);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}

// --- RGB -> NV21 ---
void BM_Ours_rgb2nv21(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    color_convert_rgb2nv21(f.rgb.data(), f.out.data(), f.out.data() + n, f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
// libyuv has no studio-swing RGB24 -> NV21 in one call: RAWToJNV21 (full
// range) is the nearest single call, RAWToI420 the nearest studio-swing one.
void BM_Libyuv_RAWToJNV21(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    libyuv::RAWToJNV21(f.rgb.data(), f.w * 3, f.out.data(), f.w, f.out.data() + n, f.w, f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_Libyuv_RAWToI420(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    libyuv::RAWToI420(f.rgb.data(), f.w * 3, f.out.data(), f.w, f.out.data() + n, f.w / 2,
                      f.out.data() + n + n / 4, f.w / 2, f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_OpenCV_RGB2YUV_YV12(benchmark::State& state) {
  cv::setNumThreads(1);
  Frame& f = frame(state.range(0), state.range(1));
  cv::Mat src(f.h, f.w, CV_8UC3, f.rgb.data());
  cv::Mat dst(f.h * 3 / 2, f.w, CV_8UC1, f.out.data());
  for (auto _ : state) {
    cv::cvtColor(src, dst, cv::COLOR_RGB2YUV_YV12);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}

// --- YUYV -> RGB ---
void BM_Ours_yuyv2rgb(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  for (auto _ : state) {
    color_convert_yuyv2rgb(f.yuyv.data(), f.out.data(), f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_Libyuv_YUY2ToARGB(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  for (auto _ : state) {
    libyuv::YUY2ToARGB(f.yuyv.data(), f.w * 2, f.out.data(), f.w * 4, f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
void BM_OpenCV_YUV2RGB_YUYV(benchmark::State& state) {
  cv::setNumThreads(1);
  Frame& f = frame(state.range(0), state.range(1));
  cv::Mat src(f.h, f.w, CV_8UC2, f.yuyv.data());
  cv::Mat dst(f.h, f.w, CV_8UC3, f.out.data());
  for (auto _ : state) {
    cv::cvtColor(src, dst, cv::COLOR_YUV2RGB_YUYV);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}

// --- NV21 -> YV12 repack ---
void BM_Ours_nv21_to_yv12(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  for (auto _ : state) {
    convert_nv21_to_yv12(f.nv21.data(), f.out.data(), f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}
// NV21ToI420 with the two chroma planes swapped writes YV12.
void BM_Libyuv_NV21ToI420_as_YV12(benchmark::State& state) {
  Frame& f = frame(state.range(0), state.range(1));
  const size_t n = static_cast<size_t>(f.w) * f.h;
  for (auto _ : state) {
    libyuv::NV21ToI420(f.nv21.data(), f.w, f.nv21.data() + n, f.w, f.out.data(), f.w,
                       f.out.data() + n + n / 4, f.w / 2, f.out.data() + n, f.w / 2, f.w, f.h);
    benchmark::ClobberMemory();
  }
  setPixels(state, f);
}

#define SIZES ->Args({1920, 1080})->Args({4000, 3000})->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK(BM_Ours_nv212rgb) SIZES;
BENCHMARK_TEMPLATE(BM_OursPortable_nv212rgb, orvan::convert_row::NVQuadToRGBRow_Portable) SIZES;
#if OV_BENCH_SHUFFLE_BUILD
BENCHMARK_TEMPLATE(BM_OursPortable_nv212rgb, orvan::convert_row_shuffles::NVQuadToRGBRow_Portable) SIZES;
#endif
BENCHMARK(BM_OursC_nv212rgb) SIZES;
BENCHMARK(BM_Libyuv_NV21ToRGB24) SIZES;
BENCHMARK(BM_OpenCV_YUV2RGB_NV21) SIZES;
BENCHMARK(BM_Ours_rgb2nv21) SIZES;
BENCHMARK_TEMPLATE(BM_OursPortable_rgb2nv21, orvan::convert_row::RGBToNVBlockRow_Portable) SIZES;
#if OV_BENCH_SHUFFLE_BUILD
BENCHMARK_TEMPLATE(BM_OursPortable_rgb2nv21, orvan::convert_row_shuffles::RGBToNVBlockRow_Portable) SIZES;
#endif
BENCHMARK(BM_OursC_rgb2nv21) SIZES;
BENCHMARK(BM_Libyuv_RAWToJNV21) SIZES;
BENCHMARK(BM_Libyuv_RAWToI420) SIZES;
BENCHMARK(BM_OpenCV_RGB2YUV_YV12) SIZES;
BENCHMARK(BM_Ours_yuyv2rgb) SIZES;
BENCHMARK_TEMPLATE(BM_OursPortable_yuyv2rgb, orvan::convert_row::Packed422ToRGBRow_Portable) SIZES;
#if OV_BENCH_SHUFFLE_BUILD
BENCHMARK_TEMPLATE(BM_OursPortable_yuyv2rgb, orvan::convert_row_shuffles::Packed422ToRGBRow_Portable) SIZES;
#endif
BENCHMARK(BM_OursC_yuyv2rgb) SIZES;
BENCHMARK(BM_Libyuv_YUY2ToARGB) SIZES;
BENCHMARK(BM_OpenCV_YUV2RGB_YUYV) SIZES;
BENCHMARK(BM_Ours_nv21_to_yv12) SIZES;
BENCHMARK(BM_Libyuv_NV21ToI420_as_YV12) SIZES;

}  // namespace
