// Placement, direction and result codes of the panorama module, seen from the
// caller's thread.
#include <gtest/gtest.h>

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
  int result, offsetX, offsetY;
};

// Pushes a frame whose gyroscope differences from the reference are dX, dY.
Push pushDiff(PanoramaModule& m, std::vector<unsigned char>& frame, float dX, float dY) {
  Push p{-1, 777, 777};
  p.result = m.pushFrame(frame.data(), kRefX - dX, kRefY - dY, p.offsetX, p.offsetY);
  return p;
}

}  // namespace

TEST(PanoramaModule, RefusalsAndTheirResultCodes) {
  LogCapture cap;
  PanoramaModule m;
  std::vector<unsigned char> frame(W * H * 3 / 2);
  EXPECT_EQ(4, pushDiff(m, frame, 1, 1).result);  // never started
  // 37838 x 37838 x 3 / 2 is just beyond a signed 32-bit byte count.
  const int refused[][3] = {{0, 480, 3}, {640, 480, 0}, {640, 480, 4}, {37838, 37838, 3}};
  for (const auto& r : refused) EXPECT_EQ(3, m.startup(r[0], r[1], r[2], PanoramaModuleOnErrorCallback));
  EXPECT_EQ(0, m.close());  // joins no thread that never started
  // W x H x 3 overflows an int although the frame's bytes fit one.
  ASSERT_EQ(0, m.startup(40000, 25000, 3, nullptr));
  EXPECT_EQ(1500000000, m.getFrameBytes());
  EXPECT_EQ(0, m.close());
  EXPECT_EQ(1, cap.countPrefix("PanoramaModule::startup width:0, height:480, format:3, onErrorCb:0x"));

  ASSERT_EQ(0, m.startup(W, H, 3, nullptr));
  EXPECT_EQ(0, m.startup(W, H, 3, nullptr));  // while running: a new run
  int ox = 777, oy = 777;
  EXPECT_EQ(3, m.pushFrame(nullptr, 1.0f, 1.0f, ox, oy));
  EXPECT_EQ(0.0f, m.getRefGyroX());  // a missing buffer sets no reference
  EXPECT_EQ(0, m.close());
  Push after = pushDiff(m, frame, 1, 1);
  EXPECT_EQ(4, after.result);
  EXPECT_EQ(777, after.offsetY);
  EXPECT_EQ(2, cap.count("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_OPERATOR   \n"));
  EXPECT_EQ(1, cap.count("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_PARAMETER\n"));
}

TEST(PanoramaModule, ReferenceOnceDirectionPerRunAndOffsetsOfRefusedFrames) {
  LogCapture cap;
  PanoramaModule m;
  std::vector<unsigned char> frame(W * H * 3 / 2, 9);
  ASSERT_EQ(0, m.startup(W, H, 2, PanoramaModuleOnErrorCallback));
  Push first = pushDiff(m, frame, 0, 0);
  EXPECT_EQ(3, first.result);
  EXPECT_EQ(777, first.offsetX);
  EXPECT_EQ(0, pushDiff(m, frame, 3, 1).result);
  EXPECT_EQ(1, m.getDirection());
  // dX = -5 is direction 4: refused, but the offsets are already written.
  Push c = pushDiff(m, frame, -5, 0);
  EXPECT_EQ(2, c.result);
  EXPECT_EQ(0, c.offsetX);
  EXPECT_EQ(-75, c.offsetY);
  EXPECT_EQ(0, m.close());
  EXPECT_EQ(1, cap.count("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_WRONG_DIRECTION   \n"));

  // Started again: the reference is kept, and direction 4 is free to be chosen.
  ASSERT_EQ(0, m.startup(W, H, 1, nullptr));
  EXPECT_EQ(0, m.getDirection());
  EXPECT_EQ(-60, pushDiff(m, frame, -4, 0).offsetY);
  EXPECT_EQ(4, m.getDirection());
  // Started again without a close: a new run all the same.
  ASSERT_EQ(0, m.startup(W, H, 1, nullptr));
  EXPECT_EQ(0, m.getDirection());
  EXPECT_EQ(0, pushDiff(m, frame, 3, 0).result);
  EXPECT_EQ(3, m.getDirection());
  EXPECT_EQ(0, m.close());
}

// On the truncated differences: each unit of dX moves 15 px in y, of dY 35 px
// in x; while |dY| + 2 >= |dX| the direction is 2 for dY < 0, else 1; beyond
// that it is 3 for dX > 0 and 4 for dX < 0.
TEST(PanoramaModule, OffsetsAndDirectionClasses) {
  const struct {
    float dX, dY;
    int direction, offsetX, offsetY;
  } cases[] = {{1.9f, 0, 1, 0, 15}, {3, 1, 1, 35, 45},    {3, 0, 3, 0, 45},
               {-3, 0, 4, 0, -45},  {5, -3, 2, -105, 75}, {-1.9f, -0.5f, 1, 0, -15}};
  for (const auto& k : cases) {
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

TEST(PanoramaInterface, ForwardsToItsModuleAndHasNoResultPicture) {
  PanoramaInterface pano;
  std::vector<unsigned char> frame(W * H * 3 / 2, 0x5a);
  ASSERT_EQ(0, pano.startup(W, H, 3, PanoramaModuleOnErrorCallback));
  int ox = 0, oy = 0;
  pano.addFrame(frame.data(), kRefX, kRefY, ox, oy);
  EXPECT_EQ(0, pano.addFrame(frame.data(), kRefX, kRefY + 2, ox, oy));
  EXPECT_EQ(2, pano.getDirectionType());
  std::vector<unsigned char> out(16, 0xa5);
  EXPECT_EQ(0, pano.getResult(out.data()));
  EXPECT_EQ(std::vector<unsigned char>(16, 0xa5), out);
  EXPECT_EQ(0, pano.close());
}
