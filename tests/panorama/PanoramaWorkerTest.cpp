// The frame queue and its worker: what is queued, in which layout, and that
// the worker drains, stops and lets go of everything.
#include <gtest/gtest.h>

#include <vector>

#include "PanoramaTestSupport.h"
#include "panorama/PanoramaInterface.h"
#include "panorama/PanoramaModule.h"
#include "support/LogCapture.h"

using panotest::eventually;
using panotest::GatedModule;
using panotest::kRefX;
using panotest::kRefY;

namespace {

const char kGetFrame[] = "get frame .....................\n";

}  // namespace

// Frames of each format queued while the worker is held: their indices, the
// YV12 layout (luma, V plane, U plane; NV12 pairs are U, V and NV21 pairs
// V, U; YV12 is copied as it is), then the worker drains them.
TEST(PanoramaQueue, FramesAreQueuedAsYV12WithTheirIndex) {
  const int w = 8, h = 4, n = w * h;
  // A semi-planar frame: luma i * 7, chroma pairs (first, second) = (2i + 1, 200 + i).
  std::vector<unsigned char> src(n * 3 / 2);
  for (int i = 0; i < n; ++i) src[i] = static_cast<unsigned char>(i * 7);
  for (int i = 0; i < n / 4; ++i) {
    src[n + 2 * i] = static_cast<unsigned char>(2 * i + 1);
    src[n + 2 * i + 1] = static_cast<unsigned char>(200 + i);
  }
  for (int format : {1, 2, 3}) {
    SCOPED_TRACE(testing::Message() << "format " << format);
    std::vector<unsigned char> expected(src);
    for (int i = 0; i < n / 4 && format != 3; ++i) {
      expected[n + i] = static_cast<unsigned char>(format == 1 ? 200 + i : 2 * i + 1);
      expected[n + n / 4 + i] = static_cast<unsigned char>(format == 1 ? 2 * i + 1 : 200 + i);
    }
    LogCapture cap;
    GatedModule m;
    ASSERT_EQ(0, m.startup(w, h, format, nullptr));
    int ox = 0, oy = 0;
    ASSERT_EQ(3, m.pushFrame(src.data(), kRefX, kRefY, ox, oy));
    for (int k = 0; k < 3; ++k) ASSERT_EQ(0, m.pushFrame(src.data(), kRefX, kRefY - k, ox, oy));

    std::vector<auto_ptr<PanoramaFrame>> queued = m.getQueuedFrames();
    ASSERT_EQ(3u, queued.size());
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(k, queued[k]->index);
      EXPECT_EQ(3, queued[k]->format);
      EXPECT_NE(src.data(), queued[k]->data);  // the module keeps its own copy
      EXPECT_EQ(expected, std::vector<unsigned char>(queued[k]->data, queued[k]->data + n * 3 / 2));
    }
    m.open();
    ASSERT_TRUE(eventually([&] { return m.getQueuedCount() == 0; }));
    EXPECT_EQ(0, m.close());
    EXPECT_EQ(3, cap.count(kGetFrame));
    // The worker keeps the last frame it took.
    EXPECT_EQ(queued[2].get(), m.getResultFrame().get());
  }
}

TEST(PanoramaQueue, WorkerDrainsFramesPushedWhileItRuns) {
  LogCapture cap;
  const int w = 64, h = 48, size = w * h * 3 / 2;
  PanoramaModule m;
  ASSERT_EQ(0, m.startup(w, h, 3, nullptr));
  std::vector<unsigned char> frame(size);
  int ox = 0, oy = 0;
  ASSERT_EQ(3, m.pushFrame(frame.data(), kRefX, kRefY, ox, oy));
  for (int i = 0; i < 500; ++i) {
    std::fill(frame.begin(), frame.end(), static_cast<unsigned char>(i % 251));
    ASSERT_EQ(0, m.pushFrame(frame.data(), kRefX, kRefY - static_cast<float>(i % 3), ox, oy));
  }
  ASSERT_TRUE(eventually([&] { return m.getQueuedCount() == 0; }));
  EXPECT_EQ(0, m.close());
  EXPECT_EQ(500, cap.count(kGetFrame));
  auto_ptr<PanoramaFrame> last = m.getResultFrame();
  ASSERT_NE(nullptr, last.get());
  EXPECT_EQ(499 % 251, last->data[0]);
  EXPECT_EQ(499 % 251, last->data[size - 1]);
}

TEST(PanoramaQueue, RepeatedCyclesEndCleanly) {
  std::vector<unsigned char> frame(32 * 16 * 3 / 2, 1);
  for (int i = 0; i < 200; ++i) {
    PanoramaInterface pano;
    if (i % 7 == 6) {
      // What nativeCreate does with a refused size.
      ASSERT_EQ(3, pano.startup(0, 16, 3, PanoramaModuleOnErrorCallback));
      EXPECT_EQ(0, pano.close());
      continue;
    }
    ASSERT_EQ(0, pano.startup(32, 16, 1 + i % 3, PanoramaModuleOnErrorCallback));
    int ox = 0, oy = 0;
    for (int k = 0; k < 4; ++k) pano.addFrame(frame.data(), kRefX, kRefY - k, ox, oy);
    // Every few cycles the object goes, frames perhaps still queued, without close.
    if (i % 5 != 4) {
      EXPECT_EQ(0, pano.close());
    }
  }
}
