// The installed library through its C++ headers: a merged burst and a colour
// conversion, checked against bytes worked out by hand.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "image/ColorConvert.h"
#include "supercapture/SuperCapture.h"

namespace {

int failures = 0;

void expectBytes(const char* what, const unsigned char* got, const unsigned char* want, size_t n) {
  if (std::memcmp(got, want, n) == 0) return;
  std::fprintf(stderr, "%s:", what);
  for (size_t i = 0; i < n; ++i) std::fprintf(stderr, " %d/%d", got[i], want[i]);
  std::fprintf(stderr, " (got/want)\n");
  ++failures;
}

}  // namespace

int main() {
  // Black, white, red, green, blue; the tables truncate, so white's Y is 233.
  const unsigned char rgb[15] = {0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255};
  const unsigned char yuv[15] = {16, 128, 128, 233, 128, 128, 81, 91, 239, 144, 54, 35, 40, 239, 110};
  unsigned char out[15] = {};
  if (color_convert_rgb2yuv(rgb, out, 5, 1) != 1) ++failures;
  expectBytes("rgb2yuv", out, yuv, sizeof out);

  // Bright frames (luma means 115, 65, 41): the truncated mean of 2 x 1 pixels.
  unsigned char frames[3][4] = {{30, 10, 200, 255}, {31, 11, 100, 0}, {32, 13, 50, 1}};
  const unsigned char mean[4] = {31, 11, 116, 85};
  intptr_t handle = super_capture_module_init(2, 1, 1);
  if (handle == 0) return 1;
  for (auto& f : frames) {
    unsigned char* planes[4] = {f, nullptr, nullptr, nullptr};
    if (super_capture_module_push_frame(handle, planes) != 0) ++failures;
  }
  // Frames still queued when the burst closes are not merged: wait for the worker.
  auto* capture = reinterpret_cast<SuperCapture*>(handle);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (capture->getQueuedCount() != 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  unsigned char merged[4] = {};
  unsigned char* planes[4] = {merged, nullptr, nullptr, nullptr};
  if (super_capture_module_pop_frame(handle, planes) != 0) ++failures;
  super_capture_module_destroy(handle);
  expectBytes("burst mean", merged, mean, sizeof merged);

  std::printf("C++ consumer: %s\n", failures == 0 ? "ok" : "FAILED");
  return failures == 0 ? 0 : 1;
}
