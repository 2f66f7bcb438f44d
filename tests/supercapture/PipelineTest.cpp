#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "supercapture/SuperCapture.h"
#include "support/LogCapture.h"

namespace {

using Bytes = std::vector<unsigned char>;

// A pipeline whose worker starts only when the test says so, so that frames
// can be stacked up first and the worker's order becomes deterministic.
struct DeferredCapture : SuperCapture {
  int start() override { return 0; }
  int launch() { return Thread::start(); }
};

SuperCapture* of(intptr_t handle) { return reinterpret_cast<SuperCapture*>(handle); }

// A frame the worker has taken is merged before the result is written, so an
// empty queue means every pushed frame is in the merge.
bool waitUntilTaken(SuperCapture* c) {
  auto t0 = std::chrono::steady_clock::now();
  while (c->getQueuedCount() != 0) {
    if (std::chrono::steady_clock::now() - t0 > std::chrono::seconds(60)) return false;
    std::this_thread::yield();
  }
  return true;
}

// The four plane pointers of a one-plane frame.
struct Planes {
  explicit Planes(Bytes& b) : p{b.data(), nullptr, nullptr, nullptr} {}
  operator unsigned char**() { return p; }
  unsigned char* p[4];
};

int push(intptr_t handle, Bytes& pixels) { return super_capture_module_push_frame(handle, Planes(pixels)); }

// Pops into a buffer one byte longer than the frame, pre-filled with 0xEE.
Bytes pop(intptr_t handle, size_t frameBytes, int* rc = nullptr) {
  Bytes out(frameBytes + 1, 0xEE);
  int r = super_capture_module_pop_frame(handle, Planes(out));
  if (rc != nullptr) *rc = r;
  return out;
}

// A frame whose even (luma) bytes are all `luma` and whose odd bytes follow
// `odd` cyclically.
Bytes frame(unsigned w, unsigned h, unsigned char luma, std::vector<unsigned char> odd) {
  Bytes f(w * h * 2);
  for (size_t i = 0; i < f.size(); i += 2) {
    f[i] = luma;
    f[i + 1] = odd[(i / 2) % odd.size()];
  }
  return f;
}

// How the log lines print planes 1 to 3 when they are null.
const std::string kNil = ", planes[1]:(nil), planes[2]:(nil), planes[3]:(nil)";

// Runs a whole burst through the flat interface and waits for every frame to
// be merged before popping.
Bytes burst(std::vector<Bytes> frames, unsigned w, unsigned h) {
  intptr_t handle = super_capture_module_init(static_cast<int>(w), static_cast<int>(h), 1);
  EXPECT_NE(handle, 0);
  for (auto& f : frames) EXPECT_EQ(push(handle, f), 0);
  EXPECT_TRUE(waitUntilTaken(of(handle)));
  int rc = -7;
  Bytes out = pop(handle, w * h * 2, &rc);
  EXPECT_EQ(rc, 0);
  super_capture_module_destroy(handle);
  return out;
}

TEST(SuperCapturePipeline, ThresholdOnFirstFrameChoosesMaximumOrMean) {
  // Odd bytes over the burst: 10, 200, 50 -> max 200, mean 260 / 3 = 86;
  // 3, 4, 255 -> max 255, mean 262 / 3 = 87.
  auto make = [](unsigned char luma) {
    return std::vector<Bytes>{frame(4, 2, luma, {10, 3}), frame(4, 2, luma, {200, 4}),
                              frame(4, 2, luma, {50, 255})};
  };
  LogCapture cap;
  Bytes dark = burst(make(24), 4, 2), bright = burst(make(25), 4, 2);
  EXPECT_EQ(cap.count("SuperCapture::run lum:24 select scheme"), 1);
  EXPECT_EQ(cap.count("SuperCapture::run lum:25 select scheme"), 1);
  Bytes expectDark = frame(4, 2, 24, {200, 255}), expectBright = frame(4, 2, 25, {86, 87});
  expectDark.push_back(0xEE);  // nothing written past W x H x 2 bytes
  expectBright.push_back(0xEE);
  EXPECT_EQ(dark, expectDark);
  EXPECT_EQ(bright, expectBright);
  EXPECT_EQ(cap.countPrefix("SuperCaptureLowLightScheme::process"), 3);
  EXPECT_EQ(cap.countPrefix("SuperCaptureHighLightScheme::process"), 3);
  // Brightness is the truncated mean of the even bytes only: 0 and 49
  // alternate, 98 / 4 = 24 (low light) although the odd bytes are bright.
  cap.clear();
  Bytes f = {0, 255, 49, 255, 0, 255, 49, 255};
  Bytes out = burst({f}, 2, 2);
  EXPECT_EQ(cap.count("SuperCapture::run lum:24 select scheme"), 1);
  EXPECT_EQ(cap.countPrefix("SuperCaptureLowLightScheme::getResult"), 1);
  EXPECT_TRUE(std::equal(f.begin(), f.end(), out.begin()));
}

TEST(SuperCapturePipeline, NewestFrameIsTakenFirstAndCarriesTheResult) {
  LogCapture cap;
  DeferredCapture c;
  ASSERT_EQ(c.init(2, 1, 1), 0);
  // Oldest to newest: bright, bright, dark. Taken newest first, the dark
  // frame picks the maximum merge.
  std::vector<Bytes> frames = {{100, 1, 100, 2}, {90, 5, 90, 0}, {20, 3, 20, 9}};
  for (auto& f : frames) ASSERT_EQ(c.pushFrame(Planes(f)), 0);
  EXPECT_EQ(c.getQueuedCount(), 3u);
  ASSERT_EQ(c.launch(), 0);
  ASSERT_TRUE(waitUntilTaken(&c));
  Bytes out(4, 0);
  EXPECT_EQ(c.popFrame(Planes(out)), 0);
  EXPECT_EQ(cap.count("SuperCapture::run lum:20 select scheme"), 1);
  EXPECT_EQ(out, (Bytes{100, 5, 100, 9}));
  // The merged picture is written into the last frame taken: the oldest (id 1).
  auto_ptr<SuperCaptureFrame> carrier = c.getResultFrame();
  ASSERT_NE(carrier.get(), nullptr);
  EXPECT_EQ(carrier->id, 1u);
  EXPECT_EQ(Bytes(carrier->planes[0], carrier->planes[0] + 4), out);
  c.final();
}

TEST(SuperCapturePipeline, InitRefusesBadArgumentsAndLogs) {
  LogCapture cap;
  // The last: the accumulator would need 2^32 bytes.
  const int bad[][3] = {{640, 480, 2}, {0, 480, 1},    {640, 0, 1},
                        {640, 480, 0}, {-640, 480, 1}, {65536, 8192, 1}};
  EXPECT_EQ(super_capture_module_init(INT32_MIN, INT32_MIN, 1), 0);  // 2^65 bytes, 0 mod 2^64
  for (const auto& b : bad) EXPECT_EQ(super_capture_module_init(b[0], b[1], b[2]), 0) << b[0] << "x" << b[1];
  EXPECT_EQ(cap.count("super_capture_module_init   width:640, height:480, format:2\n"), 1);
  EXPECT_EQ(cap.count("super_capture_module_init   width:-640, height:480, format:1\n"), 1);
  EXPECT_EQ(cap.count("SuperSensor::init ..............................................\n"), 7);
  EXPECT_EQ(cap.countPrefix("SuperCapture::run"), 0);  // no worker was started

  intptr_t h = super_capture_module_init(640, 480, 1);
  EXPECT_NE(h, 0);
  EXPECT_EQ(of(h)->init(640, 480, 1), -1);  // one worker per pipeline
  super_capture_module_destroy(h);
}

TEST(SuperCapturePipeline, FlatFunctionsRefuseWithTheirCodesAndLogLines) {
  LogCapture cap;
  Bytes px(8, 1);
  unsigned char* none[4] = {nullptr, nullptr, nullptr, nullptr};
  unsigned char* noFirst[4] = {nullptr, px.data(), nullptr, nullptr};
  EXPECT_EQ(super_capture_module_push_frame(0, none), -1);
  EXPECT_EQ(super_capture_module_pop_frame(0, none), -1);
  EXPECT_EQ(cap.count("super_capture_module_push_frame   handle:0, planes[0]:(nil)" + kNil + "\n"), 1);
  EXPECT_EQ(cap.count("super_capture_module_pop_frame   handle:0, planes[0]:(nil)" + kNil + "\n"), 1);
  cap.clear();
  super_capture_module_destroy(0);
  EXPECT_EQ(cap.texts(), (std::vector<std::string>{"super_capture_module_destroy   handle:0\n",
                                                   "super_capture_module_destroy   handle:0   2\n"}));

  intptr_t h = super_capture_module_init(2, 2, 1);
  ASSERT_NE(h, 0);
  EXPECT_EQ(super_capture_module_push_frame(h, none), -1);
  EXPECT_EQ(super_capture_module_push_frame(h, nullptr), -1);
  EXPECT_EQ(super_capture_module_push_frame(h, noFirst), -3);
  EXPECT_EQ(of(h)->getQueuedCount(), 0u);
  EXPECT_EQ(super_capture_module_pop_frame(h, none), -1);
  EXPECT_EQ(super_capture_module_pop_frame(h, nullptr), -1);
  super_capture_module_destroy(h);
}

// pop closes the burst: later pops return what the first did (nothing, or
// the merge), and frames pushed afterwards stay queued, unmerged, until
// destroy frees them (LeakSanitizer checks).
TEST(SuperCapturePipeline, PopClosesTheBurst) {
  Bytes a = {40, 7, 40, 9}, late = {255, 255, 255, 255};
  for (bool withFrame : {false, true}) {
    intptr_t h = super_capture_module_init(2, 1, 1);
    ASSERT_NE(h, 0);
    EXPECT_EQ(withFrame ? push(h, a) : 0, 0);
    ASSERT_TRUE(waitUntilTaken(of(h)));
    int rc = -7;
    Bytes first = pop(h, 4, &rc);
    EXPECT_EQ(rc, 0);
    EXPECT_TRUE(withFrame ? std::equal(a.begin(), a.end(), first.begin()) : first == Bytes(5, 0xEE));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(push(h, late), 0);
    EXPECT_EQ(of(h)->getQueuedCount(), 3u);  // the worker has finished
    rc = -7;
    EXPECT_EQ(pop(h, 4, &rc), first);
    EXPECT_EQ(rc, 0);
    super_capture_module_destroy(h);
  }
}

TEST(SuperCapturePipeline, DestroyWithoutPopDoesNotHang) {
  for (int i = 0; i < 20; ++i) {
    intptr_t h = super_capture_module_init(16, 16, 1);
    ASSERT_NE(h, 0);
    Bytes px(512, static_cast<unsigned char>(i * 10));
    for (int k = 0; k < i % 4; ++k) push(h, px);
    super_capture_module_destroy(h);
  }
  DeferredCapture never;  // started per init, but no thread was ever made
  EXPECT_EQ(never.init(2, 2, 1), 0);
}

// Burst k of thread t: dark or bright by k, so both schemes run; expected
// results are computed from the definition.
Bytes runBurst(unsigned seed, unsigned w, unsigned h) {
  std::mt19937 rng(seed);
  bool dark = seed % 2 == 0;
  size_t n = w * h * 2;
  std::vector<Bytes> frames(10, Bytes(n));
  std::vector<int> maxRef(n, 0), sumRef(n, 0);
  for (auto& f : frames) {
    for (size_t i = 0; i < n; ++i) {
      // Dark bursts keep their luma below 40 (mean about 19); bright ones above 128.
      unsigned v = rng();
      f[i] = static_cast<unsigned char>(i % 2 != 0 ? v : dark ? v % 40 : (v | 0x80));
      maxRef[i] = std::max<int>(maxRef[i], f[i]);
      sumRef[i] += f[i];
    }
  }
  Bytes got = burst(frames, w, h);
  for (size_t i = 0; i < n; ++i) {
    int want = dark ? maxRef[i] : sumRef[i] / 10;
    if (got[i] != want) {
      ADD_FAILURE() << "seed " << seed << " byte " << i << ": " << int(got[i]) << " != " << want;
      break;
    }
  }
  return got;
}

TEST(SuperCapturePipeline, HundredFullBurstsInALoop) {
  for (unsigned k = 0; k < 100; ++k) runBurst(k, 17, 9);
}

TEST(SuperCapturePipeline, FourPipelinesFromFourThreads) {
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (unsigned k = 0; k < 10; ++k) runBurst(1000 + t * 100 + k, 32, 24);
    });
  }
  for (auto& th : threads) th.join();
}

}  // namespace
