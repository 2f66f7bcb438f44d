// Stamping a date and time into a camera-sized YUYV photo, beside a memcpy of
// the photo for scale.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "watermark/TimestampWatermark.h"

namespace {

void BM_StampYuyv(benchmark::State& state) {
  const int w = int(state.range(0)), h = int(state.range(1));
  std::vector<unsigned char> photo(size_t(w) * h * 2, 100);
  for (auto _ : state) {
    benchmark::DoNotOptimize(make_photo_timestamp_watermark_to_yuyv(photo.data(), w, h, "2016-01-01 12:00"));
  }
}

void BM_MemcpyPhoto(benchmark::State& state) {
  const size_t bytes = size_t(state.range(0)) * state.range(1) * 2;
  std::vector<unsigned char> a(bytes, 1), b(bytes);
  for (auto _ : state) {
    memcpy(b.data(), a.data(), bytes);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}

// 4000 x 3000 takes the 4:3 glyphs, 4000 x 2250 the 16:9 ones.
BENCHMARK(BM_StampYuyv)->Args({4000, 3000})->Args({4000, 2250})->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemcpyPhoto)->Args({4000, 3000})->Unit(benchmark::kMicrosecond);

}  // namespace
