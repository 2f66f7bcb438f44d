// Merges a synthetic dark burst and a synthetic bright burst through the flat
// capture interface and writes the luma of inputs and results as PNGs.
//
//   demo-supercapture <output folder>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "supercapture/SuperCapture.h"
#include "support/DemoArgs.h"
#include "support/PictureWriter.h"

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr int kFrames = 10;

using Frame = std::vector<uint8_t>;  // two bytes per pixel, luma at even offsets

// A clean scene in 0..1: soft gradient, a ring, bars of rising frequency and
// a checker patch, so detail and noise are both easy to judge.
std::vector<double> scene() {
  std::vector<double> s(kWidth * kHeight);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      double v = 0.25 + 0.35 * x / kWidth + 0.15 * std::sin(y / 35.0);
      double r = std::hypot(x - 470.0, y - 170.0);
      if (r > 70 && r < 110) v = 0.95;
      if (y > 300 && y < 420 && x < 360) v = (std::sin(x * x / 2500.0) > 0) ? 0.9 : 0.1;
      if (x > 420 && x < 580 && y > 300 && y < 440) v = (((x / 20) + (y / 20)) % 2) ? 0.8 : 0.2;
      s[y * kWidth + x] = std::clamp(v, 0.0, 1.0);
    }
  }
  return s;
}

// One noisy exposure: luma = gain * scene + offset + noise; chroma bytes
// carry a mild tint with noise of their own.
Frame expose(const std::vector<double>& s, double gain, double offset, double sigma, std::mt19937& rng) {
  std::normal_distribution<double> noise(0.0, sigma);
  Frame f(kWidth * kHeight * 2);
  for (int i = 0; i < kWidth * kHeight; ++i) {
    double luma = gain * s[i] + offset + noise(rng);
    double chroma = 128.0 + ((i & 1) ? 6.0 : -6.0) + noise(rng) * 0.5;
    f[2 * i] = static_cast<uint8_t>(std::clamp(std::lround(luma), 0L, 255L));
    f[2 * i + 1] = static_cast<uint8_t>(std::clamp(std::lround(chroma), 0L, 255L));
  }
  return f;
}

std::vector<uint8_t> luma(const Frame& f, double gain = 1.0) {
  std::vector<uint8_t> l(kWidth * kHeight);
  for (int i = 0; i < kWidth * kHeight; ++i) l[i] = static_cast<uint8_t>(std::min(255.0, f[2 * i] * gain));
  return l;
}

// Root-mean-square difference of the luma from the clean scene.
double noiseRms(const Frame& f, const std::vector<double>& s, double gain, double offset) {
  double sum = 0;
  for (int i = 0; i < kWidth * kHeight; ++i) {
    double d = f[2 * i] - (gain * s[i] + offset);
    sum += d * d;
  }
  return std::sqrt(sum / (kWidth * kHeight));
}

double meanLuma(const Frame& f) {
  double sum = 0;
  for (int i = 0; i < kWidth * kHeight; ++i) sum += f[2 * i];
  return sum / (kWidth * kHeight);
}

bool save(const std::string& path, const std::vector<uint8_t>& pixels, int w, int h,
          const std::string& text) {
  bool ok = demo::writePng(path, pixels.data(), w, h, 1);
  demo::caption(path, "Burst capture", "super_capture_module_init, _push_frame, _pop_frame", text);
  std::printf("  %s %s\n", ok ? "wrote" : "FAILED", path.c_str());
  return ok;
}

// The ten inputs side by side at half size, two rows of five.
std::vector<uint8_t> contactSheet(const std::vector<Frame>& frames, double gain) {
  const int tw = kWidth / 2, th = kHeight / 2;
  std::vector<uint8_t> sheet(5 * tw * 2 * th, 0);
  for (size_t k = 0; k < frames.size(); ++k) {
    std::vector<uint8_t> l = luma(frames[k], gain);
    int ox = static_cast<int>(k % 5) * tw, oy = static_cast<int>(k / 5) * th;
    for (int y = 0; y < th; ++y)
      for (int x = 0; x < tw; ++x) sheet[(oy + y) * 5 * tw + ox + x] = l[(2 * y) * kWidth + 2 * x];
  }
  return sheet;
}

// Pushes the burst, lets the worker take every frame, pops the merge.
bool mergeBurst(std::vector<Frame>& frames, Frame& merged) {
  intptr_t handle = super_capture_module_init(kWidth, kHeight, 1);
  if (handle == 0) return false;
  for (auto& f : frames) {
    unsigned char* planes[4] = {f.data(), nullptr, nullptr, nullptr};
    if (super_capture_module_push_frame(handle, planes) != 0) return false;
  }
  // A camera feeds frames slower than the worker merges them; here they come
  // all at once, so wait for the queue to empty or pop would leave some out.
  auto* capture = reinterpret_cast<SuperCapture*>(handle);
  while (capture->getQueuedCount() != 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  unsigned char* out[4] = {merged.data(), nullptr, nullptr, nullptr};
  int rc = super_capture_module_pop_frame(handle, out);
  super_capture_module_destroy(handle);
  return rc == 0;
}

bool runBurst(const std::string& dir, const std::string& name, const std::vector<double>& s, double gain,
              double offset, double sigma, double viewGain, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<Frame> frames;
  for (int k = 0; k < kFrames; ++k) frames.push_back(expose(s, gain, offset, sigma, rng));
  Frame merged(kWidth * kHeight * 2, 0);
  if (!mergeBurst(frames, merged)) {
    std::printf("%s burst: merge failed\n", name.c_str());
    return false;
  }
  // The maximum merge lifts a dark scene (noise peaks survive); the mean
  // merge keeps the brightness and cuts the noise by about sqrt(10).
  char figures[200];
  std::snprintf(figures, sizeof figures,
                "%s merge; mean luma %.1f -> %.1f; noise rms against the clean scene %.2f -> %.2f",
                meanLuma(frames[0]) < 25 ? "maximum" : "mean", meanLuma(frames[0]), meanLuma(merged),
                noiseRms(frames[0], s, gain, offset), noiseRms(merged, s, gain, offset));
  std::printf("%s burst: %s\n", name.c_str(), figures);
  const std::string burst = "The " + name + " burst of " + std::to_string(kFrames) + " noisy frames";
  bool ok = save(dir + "/supercapture_" + name + "_inputs.png", contactSheet(frames, 1.0), 5 * kWidth / 2,
                 kHeight, burst + " (luma, half size).");
  ok &= save(dir + "/supercapture_" + name + "_input0.png", luma(frames[0]), kWidth, kHeight,
             "The first frame of the " + name + " burst, as the camera gives it.");
  ok &= save(dir + "/supercapture_" + name + "_merged.png", luma(merged), kWidth, kHeight,
             burst + " merged: " + figures + ".");
  if (viewGain != 1.0) {
    // Dark pictures are hard to judge as they are: also write them brightened.
    const std::string times = " brightened " + std::to_string(int(viewGain)) + " times for viewing.";
    ok &= save(dir + "/supercapture_" + name + "_input0_x" + std::to_string(int(viewGain)) + ".png",
               luma(frames[0], viewGain), kWidth, kHeight, "The first " + name + " frame," + times);
    ok &= save(dir + "/supercapture_" + name + "_merged_x" + std::to_string(int(viewGain)) + ".png",
               luma(merged, viewGain), kWidth, kHeight, "The " + name + " merge," + times);
  }
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  std::string dir;
  if (!demo::outputFolder(argc, argv, &dir)) return 2;
  const std::vector<double> s = scene();
  bool ok = runBurst(dir, "dark", s, 28.0, 2.0, 3.0, 6.0, 1);
  ok &= runBurst(dir, "bright", s, 170.0, 40.0, 12.0, 1.0, 2);
  return ok ? 0 : 1;
}
