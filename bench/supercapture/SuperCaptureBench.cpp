// Merge cost per frame beside a memcpy of the same frame, in one run. Every
// figure is bytes of frame (W x H x 2) per second.
#include <benchmark/benchmark.h>
#include <sched.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "supercapture/SuperCapture.h"
#include "supercapture/SuperCaptureFrame.h"
#include "supercapture/SuperCaptureScheme.h"

namespace {

std::vector<unsigned char> noise(size_t n, unsigned seed) {
  std::vector<unsigned char> v(n);
  std::mt19937 rng(seed);
  for (auto& b : v) b = static_cast<unsigned char>(rng());
  return v;
}

auto_ptr<SuperCaptureFrame> makeFrame(unsigned w, unsigned h, unsigned seed) {
  auto pixels = noise(static_cast<size_t>(w) * h * 2, seed);
  unsigned char* planes[4] = {pixels.data(), nullptr, nullptr, nullptr};
  return auto_ptr<SuperCaptureFrame>(SuperCaptureFrame::createFrame(1, w, h, 1, planes));
}

int64_t frameBytes(const benchmark::State& state) { return state.range(0) * state.range(1) * 2; }

void BM_Memcpy(benchmark::State& state) {
  size_t n = static_cast<size_t>(frameBytes(state));
  auto src = noise(n, 1);
  std::vector<unsigned char> dst(n, 0);
  for (auto _ : state) {
    memcpy(dst.data(), src.data(), n);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * frameBytes(state));
}

// Times step() on a scheme primed with `primed` frames of the given seed.
template <typename Scheme, typename Step>
void timeScheme(benchmark::State& state, unsigned seed, int primed, Step step) {
  unsigned w = static_cast<unsigned>(state.range(0)), h = static_cast<unsigned>(state.range(1));
  auto_ptr<Scheme> scheme(new Scheme());
  scheme->init(w, h, 1);
  auto_ptr<SuperCaptureFrame> frame = makeFrame(w, h, seed);
  for (int i = 0; i < primed; ++i) scheme->process(frame);
  for (auto _ : state) {
    step(scheme, frame);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * frameBytes(state));
}

// One frame first so the mean scheme is timed on its accumulate path.
template <typename Scheme>
void BM_Process(benchmark::State& state) {
  timeScheme<Scheme>(state, 2, 1, [](auto_ptr<Scheme>& s, auto_ptr<SuperCaptureFrame>& f) { s->process(f); });
}

template <typename Scheme>
void BM_GetResult(benchmark::State& state) {
  timeScheme<Scheme>(state, 3, 3,
                     [](auto_ptr<Scheme>& s, auto_ptr<SuperCaptureFrame>& f) { s->getResult(f); });
}

// A whole burst of 10 frames through the flat interface (copy in, merge,
// copy out, thread start and join); bytes are the 10 input frames.
void BM_FlatBurst10(benchmark::State& state) {
  int w = static_cast<int>(state.range(0)), h = static_cast<int>(state.range(1));
  auto pixels = noise(static_cast<size_t>(frameBytes(state)), 4);
  std::vector<unsigned char> out(pixels.size());
  unsigned char* in[4] = {pixels.data(), nullptr, nullptr, nullptr};
  unsigned char* outPlanes[4] = {out.data(), nullptr, nullptr, nullptr};
  for (auto _ : state) {
    intptr_t handle = super_capture_module_init(w, h, 1);
    for (int i = 0; i < 10; ++i) super_capture_module_push_frame(handle, in);
    auto* capture = reinterpret_cast<SuperCapture*>(handle);
    while (capture->getQueuedCount() != 0) {
    }
    super_capture_module_pop_frame(handle, outPlanes);
    super_capture_module_destroy(handle);
  }
  state.SetBytesProcessed(state.iterations() * frameBytes(state) * 10);
}

// Push latency while the worker merges: after an untimed push the worker
// takes that frame and merges it, and the timed push is copied and appended
// meanwhile. If appending had to wait for the merge, the timed push
// would cost its copy plus most of a merge step (BM_Process) instead of about
// one copy into fresh memory (BM_Memcpy is the warm-memory floor).
void BM_PushWhileMerging(benchmark::State& state) {
  int w = static_cast<int>(state.range(0)), h = static_cast<int>(state.range(1));
  auto pixels = noise(static_cast<size_t>(frameBytes(state)), 5);
  unsigned char* in[4] = {pixels.data(), nullptr, nullptr, nullptr};
  intptr_t handle = super_capture_module_init(w, h, 1);
  auto* capture = reinterpret_cast<SuperCapture*>(handle);
  for (auto _ : state) {
    super_capture_module_push_frame(handle, in);
    // The polling worker takes it within microseconds (asking the queue here
    // would take the queue lock, which says nothing about the merge).
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    auto t0 = std::chrono::steady_clock::now();
    super_capture_module_push_frame(handle, in);
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
    while (capture->getQueuedCount() != 0) sched_yield();
  }
  super_capture_module_destroy(handle);
  state.SetBytesProcessed(state.iterations() * frameBytes(state));
}

void sizes(benchmark::internal::Benchmark* b) {
  b->Args({1920, 1080})->Args({4000, 3000})->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_Memcpy)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_Process, SuperCaptureLowLightScheme)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_Process, SuperCaptureHighLightScheme)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_GetResult, SuperCaptureLowLightScheme)->Apply(sizes);
BENCHMARK_TEMPLATE(BM_GetResult, SuperCaptureHighLightScheme)->Apply(sizes);
BENCHMARK(BM_FlatBurst10)->Apply(sizes);
BENCHMARK(BM_PushWhileMerging)->Apply(sizes)->UseManualTime();

}  // namespace
