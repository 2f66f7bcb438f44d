// Placement, direction and result codes of the panorama module, seen from the
// caller's thread.
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "PanoramaTestSupport.h"
#include "panorama/PanoramaInterface.h"
#include "panorama/PanoramaModule.h"
#include "support/LogCapture.h"

using panotest::kRefX;
using panotest::kRefY;

namespace {

const int W = 32;
const int H = 16;

struct Push {
  int result;
  int offsetX;
  int offsetY;
};

// Pushes a frame whose gyroscope differences from the reference are dX, dY.
Push pushDiff(PanoramaModule& m, std::vector<unsigned char>& frame, float dX, float dY) {
  Push p{-1, 777, 777};
  p.result = m.pushFrame(frame.data(), kRefX - dX, kRefY - dY, p.offsetX, p.offsetY);
  return p;
}

}  // namespace

TEST(PanoramaModule, StartupChecksSizeAndFormat) {
  LogCapture cap;
  PanoramaModule m;
  EXPECT_EQ(3, m.startup(0, 480, 3, PanoramaModuleOnErrorCallback));
  EXPECT_EQ(3, m.startup(640, -1, 3, PanoramaModuleOnErrorCallback));
  EXPECT_EQ(3, m.startup(640, 480, 0, PanoramaModuleOnErrorCallback));
  EXPECT_EQ(3, m.startup(640, 480, 4, PanoramaModuleOnErrorCallback));
  // 37838 x 37838 x 3 / 2 is just beyond a signed 32-bit byte count.
  EXPECT_EQ(3, m.startup(37838, 37838, 3, PanoramaModuleOnErrorCallback));
  EXPECT_FALSE(m.isRunning());
  // Closing after refusals joins nothing and returns.
  EXPECT_EQ(0, m.close());
  EXPECT_EQ(1, cap.countPrefix("PanoramaModule::startup width:0, height:480, format:3, onErrorCb:0x"));
  EXPECT_EQ(5, cap.countPrefix("PanoramaModule::startup "));

  EXPECT_EQ(0, m.startup(640, 480, 1, PanoramaModuleOnErrorCallback));
  EXPECT_TRUE(m.isRunning());
  EXPECT_EQ(0, m.getDirection());
  EXPECT_EQ(0, m.close());
  EXPECT_FALSE(m.isRunning());
}

TEST(PanoramaModule, FramesOutsideARunAreRefused) {
  LogCapture cap;
  PanoramaModule m;
  std::vector<unsigned char> frame(W * H * 3 / 2);
  Push p = pushDiff(m, frame, 1, 1);
  EXPECT_EQ(4, p.result);
  EXPECT_EQ(777, p.offsetX);
  EXPECT_EQ(777, p.offsetY);

  ASSERT_EQ(0, m.startup(W, H, 3, nullptr));
  int ox = 777, oy = 777;
  EXPECT_EQ(3, m.pushFrame(nullptr, 1.0f, 1.0f, ox, oy));
  EXPECT_EQ(0.0f, m.getRefGyroX());  // a missing buffer sets no reference
  m.close();
  EXPECT_EQ(4, pushDiff(m, frame, 1, 1).result);
  EXPECT_EQ(777, ox);
  EXPECT_EQ(2, cap.count("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_OPERATOR   \n"));
  EXPECT_EQ(1, cap.count("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_PARAMETER\n"));
}

TEST(PanoramaModule, OffsetsAndDirectionFromTheQuotedReadings) {
  LogCapture cap;
  PanoramaModule m;
  std::vector<unsigned char> frame(W * H * 3 / 2, 9);
  ASSERT_EQ(0, m.startup(W, H, 2, PanoramaModuleOnErrorCallback));

  // The first frame only becomes the reference.
  Push first = pushDiff(m, frame, 0, 0);
  EXPECT_EQ(3, first.result);
  EXPECT_EQ(777, first.offsetX);
  EXPECT_EQ(kRefX, m.getRefGyroX());
  EXPECT_EQ(kRefY, m.getRefGyroY());
  EXPECT_EQ(0, m.getDirection());

  // dX = 1.9 truncates to 1: 15 px vertically; |dY| + 2 >= |dX| is direction 1.
  Push a = pushDiff(m, frame, 1.9f, 0);
  EXPECT_EQ(0, a.result);
  EXPECT_EQ(0, a.offsetX);
  EXPECT_EQ(15, a.offsetY);
  EXPECT_EQ(1, m.getDirection());

  Push b = pushDiff(m, frame, 3, 1);
  EXPECT_EQ(0, b.result);
  EXPECT_EQ(35, b.offsetX);
  EXPECT_EQ(45, b.offsetY);

  // Another direction is refused, but the offsets are already written.
  Push c = pushDiff(m, frame, -5, 0);
  EXPECT_EQ(2, c.result);
  EXPECT_EQ(0, c.offsetX);
  EXPECT_EQ(-75, c.offsetY);
  EXPECT_EQ(1, m.getDirection());
  m.close();

  EXPECT_EQ(1, cap.count("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_WRONG_DIRECTION   \n"));
  EXPECT_EQ(2, cap.count("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_NO_ERROR\n"));
  char pointer[32];
  std::snprintf(pointer, sizeof pointer, "%p", static_cast<void*>(frame.data()));
  EXPECT_EQ(1, cap.count(std::string("PanoramaModule::pushFrame pBuffer:") + pointer +
                         ", gyroX:15.000000, gyroY:20.000000\n"));
}

TEST(PanoramaModule, DirectionClasses) {
  struct Case {
    float dX, dY;
    int direction, offsetX, offsetY;
  } cases[] = {
      {0, 0, 1, 0, 0},           {2, 0, 1, 0, 30},         {3, 0, 3, 0, 45},         {-3, 0, 4, 0, -45},
      {0, -1, 2, -35, 0},        {5, -3, 2, -105, 75},     {6, -3, 3, -105, 90},     {-6, 3, 4, 105, -90},
      {-1.9f, -0.5f, 1, 0, -15}, {0.5f, 4.99f, 1, 140, 0}, {-2.5f, 0.9f, 1, 0, -30},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(testing::Message() << "dX " << k.dX << " dY " << k.dY);
    PanoramaModule m;
    std::vector<unsigned char> frame(W * H * 3 / 2);
    ASSERT_EQ(0, m.startup(W, H, 3, nullptr));
    pushDiff(m, frame, 0, 0);
    Push p = pushDiff(m, frame, k.dX, k.dY);
    EXPECT_EQ(0, p.result);
    EXPECT_EQ(k.direction, m.getDirection());
    EXPECT_EQ(k.offsetX, p.offsetX);
    EXPECT_EQ(k.offsetY, p.offsetY);
    m.close();
  }
}

TEST(PanoramaModule, ReferenceSurvivesARestartButDirectionDoesNot) {
  PanoramaModule m;
  std::vector<unsigned char> frame(W * H * 3 / 2);
  ASSERT_EQ(0, m.startup(W, H, 3, nullptr));
  EXPECT_EQ(3, pushDiff(m, frame, 0, 0).result);
  EXPECT_EQ(0, pushDiff(m, frame, 0, 2).result);
  EXPECT_EQ(1, m.getDirection());
  EXPECT_EQ(0, m.close());

  ASSERT_EQ(0, m.startup(W, H, 1, nullptr));
  EXPECT_EQ(0, m.getDirection());
  // No new reference is taken, and direction 4 is free to be chosen.
  Push p = pushDiff(m, frame, -4, 0);
  EXPECT_EQ(0, p.result);
  EXPECT_EQ(-60, p.offsetY);
  EXPECT_EQ(4, m.getDirection());
  EXPECT_EQ(0, m.close());
}

TEST(PanoramaModule, AZeroReadingMakesTheNextFrameAReference) {
  PanoramaModule m;
  std::vector<unsigned char> frame(W * H * 3 / 2);
  ASSERT_EQ(0, m.startup(W, H, 3, nullptr));
  int ox = 0, oy = 0;
  EXPECT_EQ(3, m.pushFrame(frame.data(), 0.0f, 5.0f, ox, oy));
  EXPECT_EQ(3, m.pushFrame(frame.data(), 4.0f, 5.0f, ox, oy));
  EXPECT_EQ(0, m.pushFrame(frame.data(), 4.0f, 3.0f, ox, oy));
  EXPECT_EQ(70, ox);
  m.close();
}

TEST(PanoramaInterface, ForwardsToItsModule) {
  PanoramaInterface pano;
  std::vector<unsigned char> frame(W * H * 3 / 2);
  EXPECT_EQ(3, pano.startup(W, 0, 3, PanoramaModuleOnErrorCallback));
  ASSERT_EQ(0, pano.startup(W, H, 3, PanoramaModuleOnErrorCallback));
  int ox = 0, oy = 0;
  EXPECT_EQ(3, pano.addFrame(frame.data(), kRefX, kRefY, ox, oy));
  EXPECT_EQ(0, pano.addFrame(frame.data(), kRefX, kRefY + 2, ox, oy));
  EXPECT_EQ(-70, ox);
  EXPECT_EQ(2, pano.getDirectionType());
  // No result picture exists: the buffer is left alone.
  std::vector<unsigned char> out(16, 0x5a);
  EXPECT_EQ(0, pano.getResult(out.data()));
  EXPECT_EQ(std::vector<unsigned char>(16, 0x5a), out);
  EXPECT_EQ(0, pano.close());
  EXPECT_EQ(4, pano.addFrame(frame.data(), kRefX, kRefY, ox, oy));
}
