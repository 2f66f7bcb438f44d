#include <gtest/gtest.h>

#include <vector>

#include "core/Memory.h"
#include "image/FlatImage.h"

TEST(FlatImage, CreatorsCheckTheirArguments) {
  unsigned char buf[64] = {};
  EXPECT_EQ(ov_createImage(0, 10, 1), nullptr);
  EXPECT_EQ(ov_createImage(10, 0, 1), nullptr);
  EXPECT_EQ(ov_createImage(10, 10, 0), nullptr);
  EXPECT_EQ(ov_createImage(10, 10, 5), nullptr);
  EXPECT_EQ(ov_createImage(70000, 70000, 1), nullptr);  // more bytes than 32 bits hold
  EXPECT_EQ(ov_createImage(4, 4, 1, 4, nullptr), nullptr);
  EXPECT_EQ(ov_createImage(4, 4, 1, 0, buf), nullptr);
  EXPECT_EQ(ov_createImage(4, 4, 5, 4, buf), nullptr);
  EXPECT_EQ(ov_createYUVImage(4, 4, nullptr), nullptr);
  EXPECT_EQ(ov_createYUVImage(0, 4, buf), nullptr);
}

TEST(FlatImage, OwnedAndWrappedRecords) {
  flat::Image* owned = ov_createImage(4, 4, 3);
  ASSERT_NE(owned, nullptr);
  EXPECT_EQ(owned->stride, 12);
  EXPECT_EQ(owned->ownsData, 1);
  ASSERT_NE(owned->data, nullptr);
  owned->data[47] = 1;  // the whole 4 * 4 * 3 block is there (ASan checks)
  ov_releaseImage(owned);

  // Releasing a wrapper leaves the caller's buffer alone: freeing this
  // vector's storage would be reported by ASan.
  std::vector<unsigned char> mine(16, 9);
  flat::Image* wrapped = ov_createImage(4, 4, 1, 4, mine.data());
  ASSERT_NE(wrapped, nullptr);
  EXPECT_EQ(wrapped->ownsData, 0);
  EXPECT_EQ(wrapped->data, mine.data());
  ov_releaseImage(wrapped);
  EXPECT_EQ(mine[15], 9);

  flat::YUVImage* yuv = ov_createYUVImage(4, 2, mine.data());
  ASSERT_NE(yuv, nullptr);
  EXPECT_EQ(yuv->data, mine.data());
  ov_releaseYUVImage(yuv);
  ov_releaseImage(nullptr);
  ov_releaseYUVImage(nullptr);
}

// Statistics read the first width * height bytes whatever channels and stride say.
TEST(FlatImage, GrayStatisticsTruncateAndIgnoreLayout) {
  unsigned char px[12] = {1, 2, 3, 4, 200, 200, 200, 200, 200, 200, 200, 200};
  flat::Image* image = ov_createImage(2, 2, 3, 6, px);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(ov_getGrayAvg(image), 2);  // 10 / 4
  int avg = -1, max = -1, min = -1;
  ov_getImageInfo(image, &avg, &max, &min);
  EXPECT_EQ(avg, 2);
  EXPECT_EQ(max, 4);
  EXPECT_EQ(min, 1);
  ov_getImageInfo(image, nullptr, &max, &min);  // does nothing
  EXPECT_EQ(ov_getGrayAvg(nullptr), 0);
  ov_releaseImage(image);
}

TEST(FlatImage, IntegralImageSumsRowsAndColumns) {
  // Row stride 10 is ignored: rows are taken `width` bytes apart.
  unsigned char px[] = {1, 2, 3, 4, 5, 6};
  flat::Image* image = ov_createImage(3, 2, 1, 10, px);
  flat::IntegralImage* sat = ov_createIntegralImage(image);
  ASSERT_NE(sat, nullptr);
  EXPECT_EQ(sat->width, 3);
  EXPECT_EQ(sat->height, 2);
  const unsigned expected[] = {1, 3, 6, 5, 12, 21};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(sat->data[i], expected[i]) << i;
  ov_releaseIntegralImage(sat);
  ov_releaseIntegralImage(nullptr);
  EXPECT_EQ(ov_createIntegralImage(nullptr), nullptr);
  ov_releaseImage(image);
}

TEST(FlatImage, IntegralImageCornerIsTheTotal) {
  flat::Image* image = ov_createImage(64, 48, 1);
  unsigned total = 0;
  for (int i = 0; i < 64 * 48; ++i) total += image->data[i] = static_cast<unsigned char>(i * 37);
  flat::IntegralImage* sat = ov_createIntegralImage(image);
  ASSERT_NE(sat, nullptr);
  EXPECT_EQ(sat->data[64 * 48 - 1], total);
  ov_releaseIntegralImage(sat);
  ov_releaseImage(image);
}

TEST(FlatImage, HistogramCurveThroughTwoPointsIsTheIdentity) {
  double x[] = {0, 255}, y[] = {0, 255};
  double* curve = ov_calcHistogram(x, y, 2);
  ASSERT_NE(curve, nullptr);
  for (int t = 0; t < 256; ++t) EXPECT_NEAR(curve[t], t, 1e-9) << t;
  ov_free(curve);
}

// Three points (0,0) (100,100) (200,0): M1 = 6 * (-2) / 400 = -0.03, so at
// t = 50 the curve is 1.5 * 50 - 0.03 * 50^3 / 600 = 68.75, and 150 mirrors it.
TEST(FlatImage, HistogramCurveMatchesHandWorkedSpline) {
  double x[] = {0, 100, 200}, y[] = {0, 100, 0};
  double* curve = ov_calcHistogram(x, y, 3);
  ASSERT_NE(curve, nullptr);
  EXPECT_NEAR(curve[50], 68.75, 1e-9);
  EXPECT_NEAR(curve[150], 68.75, 1e-9);
  EXPECT_NEAR(curve[100], 100.0, 1e-9);
  EXPECT_NEAR(curve[0], 0.0, 1e-9);
  EXPECT_EQ(curve[255], 0.0);  // the last control point's y
  ov_free(curve);

  // Four symmetric points: both inner second derivatives are -6 / (5 * 85),
  // giving 85 + 0.6 * 42 - (6/425) * 42^2 / 2 at t = 127, equal to t = 128.
  double x4[] = {0, 85, 170, 255}, y4[] = {0, 85, 85, 0};
  curve = ov_calcHistogram(x4, y4, 4);
  ASSERT_NE(curve, nullptr);
  EXPECT_NEAR(curve[127], 85 + 0.6 * 42 - 6.0 / 425 * 42 * 42 / 2, 1e-9);
  EXPECT_NEAR(curve[128], curve[127], 1e-9);
  ov_free(curve);

  // Decreasing x works too: the same points reversed give the same curve.
  double xr[] = {200, 100, 0}, yr[] = {0, 100, 0};
  curve = ov_calcHistogram(xr, yr, 3);
  ASSERT_NE(curve, nullptr);
  EXPECT_NEAR(curve[50], 68.75, 1e-9);
  ov_free(curve);
}

TEST(FlatImage, HistogramRefusesCountsItsScratchCannotHold) {
  std::vector<double> x(101), y(101);
  for (int i = 0; i < 101; ++i) x[i] = y[i] = i * 2.5;
  EXPECT_EQ(ov_calcHistogram(x.data(), y.data(), 1), nullptr);
  EXPECT_EQ(ov_calcHistogram(x.data(), y.data(), 101), nullptr);
  EXPECT_EQ(ov_calcHistogram(nullptr, y.data(), 2), nullptr);
  EXPECT_EQ(ov_calcHistogram(x.data(), nullptr, 2), nullptr);
  double* curve = ov_calcHistogram(x.data(), y.data(), 100);  // points on a line: the line
  ASSERT_NE(curve, nullptr);
  EXPECT_NEAR(curve[200], 200.0, 1e-6);
  ov_free(curve);
}
