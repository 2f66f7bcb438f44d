// pushFrame of a 1920x1080 preview frame (one buffer, one repack to YV12, one
// queue append; the worker drains beside it) against a plain memcpy of the
// same bytes.
#include <benchmark/benchmark.h>
#include <sched.h>

#include <cstring>
#include <vector>

#include "panorama/PanoramaModule.h"

namespace {

const int kWidth = 1920;
const int kHeight = 1080;
const size_t kFrameBytes = static_cast<size_t>(kWidth) * kHeight * 3 / 2;

std::vector<unsigned char> sampleFrame() {
  std::vector<unsigned char> f(kFrameBytes);
  for (size_t i = 0; i < f.size(); ++i) f[i] = static_cast<unsigned char>(i * 31 + (i >> 11));
  return f;
}

void BM_Memcpy(benchmark::State& state) {
  std::vector<unsigned char> src = sampleFrame();
  std::vector<unsigned char> dst(kFrameBytes);
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), kFrameBytes);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFrameBytes));
}

void BM_PushFrame(benchmark::State& state) {
  std::vector<unsigned char> src = sampleFrame();
  PanoramaModule module;
  module.startup(kWidth, kHeight, static_cast<int>(state.range(0)), nullptr);
  int ox = 0, oy = 0;
  module.pushFrame(src.data(), 10.0f, 20.0f, ox, oy);  // the reference frame
  for (auto _ : state) {
    int r = module.pushFrame(src.data(), 10.0f, 19.0f, ox, oy);
    benchmark::DoNotOptimize(r);
    // A sweep delivers preview frames at camera rate, so the worker has
    // drained the queue before the next one: let it, off the clock.
    state.PauseTiming();
    while (module.getQueuedCount() != 0) sched_yield();
    state.ResumeTiming();
  }
  module.close();
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFrameBytes));
}

}  // namespace

BENCHMARK(BM_Memcpy)->Unit(benchmark::kMicrosecond)->UseRealTime();
// 2 = NV21 (repacked), 3 = YV12 (copied).
BENCHMARK(BM_PushFrame)->Arg(2)->Arg(3)->Unit(benchmark::kMicrosecond)->UseRealTime();
