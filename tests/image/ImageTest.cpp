#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "core/Memory.h"
#include "image/FlatImage.h"
#include "image/Image.h"

namespace {
using Bytes = std::vector<unsigned char>;
Bytes ramp(size_t n, int start) {
  Bytes b(n);
  for (size_t i = 0; i < n; ++i) b[i] = static_cast<unsigned char>(start + i);
  return b;
}
}  // namespace

// 8x4 = 32 pixels: the plane offsets are N, N*3/2 and N*5/4 (-1: null plane).
// Single-plane formats copy every byte of their buffer (depth 2 doubles it).
TEST(Image, EveryFormatCodeLaysOutAndCopiesItsPlanes) {
  const struct {
    Image::ImageFormatType format;
    int bytesPerPixel;
    long plane1, plane2;
  } layouts[] = {
      {Image::IMAGE_FORMAT_GRAY, 1, -1, -1}, {Image::IMAGE_FORMAT_PACKED16, 2, -1, -1},
      {Image::IMAGE_FORMAT_RGB, 3, -1, -1},  {Image::IMAGE_FORMAT_RGBA, 4, -1, -1},
      {Image::IMAGE_FORMAT_YUV, 3, -1, -1},  {Image::IMAGE_FORMAT_YUYV, 2, -1, -1},
      {Image::IMAGE_FORMAT_YVYU, 2, -1, -1}, {Image::IMAGE_FORMAT_YUV422P, 2, 32, 48},
      {Image::IMAGE_FORMAT_YV12, 2, 32, -1}, {Image::IMAGE_FORMAT_YU12, 2, 32, -1},
      {Image::IMAGE_FORMAT_NV12, 2, 32, 40}, {Image::IMAGE_FORMAT_NV21, 2, 32, 40},
  };
  int code = 1;
  for (const auto& l : layouts) {
    SCOPED_TRACE(code);
    EXPECT_EQ(l.format, code++);  // the stored codes are 1..12 in this order
    Image image(8, 4, 1, l.format, nullptr);
    EXPECT_EQ(image.bytesPerPixel, l.bytesPerPixel);
    ASSERT_NE(image.planes[0], nullptr);
    EXPECT_EQ(image.planes[1], l.plane1 < 0 ? nullptr : image.planes[0] + l.plane1);
    EXPECT_EQ(image.planes[2], l.plane2 < 0 ? nullptr : image.planes[0] + l.plane2);
    EXPECT_EQ(image.planes[3], nullptr);
    if (l.plane1 < 0) {
      Bytes src = ramp(8 * 4 * 2 * l.bytesPerPixel, 7);
      unsigned char* planes[3] = {src.data(), nullptr, nullptr};
      Image copy(8, 4, 2, l.format, planes);
      ASSERT_NE(copy.planes[0], src.data());  // duplicated, never adopted
      EXPECT_EQ(Bytes(copy.planes[0], copy.planes[0] + src.size()), src);
    }
  }
  for (int format : {0, 13}) {
    Image unknown(4, 4, 1, static_cast<Image::ImageFormatType>(format), nullptr);
    for (unsigned char* p : unknown.planes) EXPECT_EQ(p, nullptr);
  }
}

// The third plane of the 4:2:2 planar format is copied to N + 1, over U.
TEST(Image, Planar422CopiesTheVPlaneOneByteBehindU) {
  Bytes y = ramp(8, 0), u = ramp(4, 100), v = ramp(4, 200);
  unsigned char* planes[3] = {y.data(), u.data(), v.data()};
  Image image(4, 2, 1, Image::IMAGE_FORMAT_YUV422P, planes);
  const unsigned char* buf = image.planes[0];
  ASSERT_NE(buf, nullptr);
  EXPECT_EQ(Bytes(buf, buf + 8), y);
  EXPECT_EQ(buf[8], 100);
  EXPECT_EQ(Bytes(buf + 9, buf + 13), v);
  EXPECT_EQ(image.planes[2], buf + 12);
}

// Byte counts that wrap in 32 bits are refused (65536 * 65536 wraps to 0,
// 40000 * 40000 * 3 to a small size, 2^66 to 0 even in 64 bits), so no plane
// can point past the buffer. The flat records count in ints.
TEST(Image, SizesThatOverflow32BitsAreRefused) {
  const struct {
    unsigned w, h, d;
    Image::ImageFormatType f;
  } cases[] = {{65536, 65536, 1, Image::IMAGE_FORMAT_GRAY},
               {40000, 40000, 1, Image::IMAGE_FORMAT_RGB},
               {1, 1, 0xFFFFFFFFu, Image::IMAGE_FORMAT_NV21},
               {65536, 32768, 1, Image::IMAGE_FORMAT_YUYV},
               {1u << 22, 1u << 22, 1u << 22, Image::IMAGE_FORMAT_GRAY}};
  for (const auto& c : cases) {
    Image image(c.w, c.h, c.d, c.f, nullptr);
    for (unsigned char* p : image.planes) EXPECT_EQ(p, nullptr);
  }
  EXPECT_EQ(ov_createImage(65536, 32768, 1), nullptr);
  unsigned char px[4] = {};
  EXPECT_EQ(ov_createImage(1, 2, 1, INT32_MAX, px), nullptr);  // row 2 ends beyond an int
  EXPECT_EQ(ov_createYUVImage(65536, 32768, px), nullptr);
  flat::Image wide = {16384, 32768, 1, 16384, 0, px};  // table of 2^31 bytes
  EXPECT_EQ(ov_createIntegralImage(&wide), nullptr);
}

// Reconfiguring may copy from the image's own planes (read before the old
// buffer goes: ASan checks). configuare with an unknown format keeps the
// image; set with one drops the buffer but keeps bytesPerPixel.
TEST(Image, ReconfiguringFromItsOwnPlanes) {
  const Bytes rgb = ramp(24, 40);
  unsigned char* src[1] = {const_cast<unsigned char*>(rgb.data())};
  Image image(4, 2, 1, Image::IMAGE_FORMAT_RGB, src);
  image.format = Image::IMAGE_FORMAT_GRAY;  // 24 grey pixels from the same bytes
  image.width = 6;
  image.height = 4;
  image.configuare(image.planes);
  ASSERT_NE(image.planes[0], nullptr);
  EXPECT_EQ(image.bytesPerPixel, 1);
  EXPECT_EQ(Bytes(image.planes[0], image.planes[0] + 24), rgb);

  unsigned char* kept = image.planes[0];
  image.format = static_cast<Image::ImageFormatType>(13);
  image.configuare(nullptr);
  EXPECT_EQ(image.planes[0], kept);
  EXPECT_EQ(image.bytesPerPixel, 1);

  image.set(2, 3, 2, Image::IMAGE_FORMAT_YUYV, image.planes);  // 12 pixels x 2 bytes
  ASSERT_NE(image.planes[0], nullptr);
  EXPECT_EQ(Bytes(image.planes[0], image.planes[0] + 24), rgb);
  image.set(2, 3, 1, Image::IMAGE_FORMAT_NONE, image.planes);
  for (unsigned char* p : image.planes) EXPECT_EQ(p, nullptr);
  EXPECT_EQ(image.bytesPerPixel, 2);
}

// Statistics and the integral image read the first width * height bytes
// whatever channels and stride say.
TEST(FlatImage, StatisticsAndIntegralImage) {
  unsigned char px[12] = {1, 2, 3, 4, 5, 6, 200, 200, 200, 200, 200, 200};
  flat::Image* image = ov_createImage(3, 2, 3, 10, px);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(ov_getGrayAvg(image), 3);  // 21 / 6
  int avg = -1, max = -1, min = -1;
  ov_getImageInfo(image, &avg, &max, &min);
  EXPECT_EQ(avg * 100 + max * 10 + min, 361);
  flat::IntegralImage* sat = ov_createIntegralImage(image);
  ASSERT_NE(sat, nullptr);
  EXPECT_EQ(std::vector<unsigned>(sat->data, sat->data + 6), (std::vector<unsigned>{1, 3, 6, 5, 12, 21}));
  ov_releaseIntegralImage(sat);
  ov_releaseImage(image);
}

// (0,0) (100,100) (200,0): M1 = 6 * (-2) / 400 = -0.03, so at t = 50 the
// curve is 1.5 * 50 - 0.03 * 50^3 / 600 = 68.75; 150 mirrors it, and the
// points in reverse order give the same curve. The scratch holds 100 points.
TEST(FlatImage, HistogramCurveAndTheCountsItRefuses) {
  double x[] = {0, 100, 200}, y[] = {0, 100, 0}, xr[] = {200, 100, 0};
  for (double* xs : {x, xr}) {
    double* curve = ov_calcHistogram(xs, y, 3);
    ASSERT_NE(curve, nullptr);
    EXPECT_NEAR(curve[50], 68.75, 1e-9);
    EXPECT_NEAR(curve[150], 68.75, 1e-9);
    EXPECT_NEAR(curve[100], 100.0, 1e-9);
    EXPECT_EQ(curve[255], 0.0);  // the last control point's y
    ov_free(curve);
  }
  std::vector<double> line(101);
  for (int i = 0; i < 101; ++i) line[i] = i * 2.5;
  EXPECT_EQ(ov_calcHistogram(line.data(), line.data(), 1), nullptr);
  EXPECT_EQ(ov_calcHistogram(line.data(), line.data(), 101), nullptr);
  EXPECT_EQ(ov_calcHistogram(nullptr, line.data(), 2), nullptr);
  double* curve = ov_calcHistogram(line.data(), line.data(), 100);  // points on a line: the line
  ASSERT_NE(curve, nullptr);
  EXPECT_NEAR(curve[200], 200.0, 1e-6);
  ov_free(curve);
}
