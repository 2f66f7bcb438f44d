#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "image/Image.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes ramp(size_t n, int start) {
  Bytes b(n);
  for (size_t i = 0; i < n; ++i) b[i] = static_cast<unsigned char>(start + i);
  return b;
}

struct Layout {
  Image::ImageFormatType format;
  int bytesPerPixel;
  long plane1;  // offset from the buffer, -1 for a null plane
  long plane2;
};

}  // namespace

// N = 8 * 4 = 32 pixels throughout: the offsets are N, N*3/2 and N*5/4.
TEST(Image, EveryFormatCodeLaysOutItsPlanes) {
  const Layout layouts[] = {
      {Image::IMAGE_FORMAT_GRAY, 1, -1, -1}, {Image::IMAGE_FORMAT_PACKED16, 2, -1, -1},
      {Image::IMAGE_FORMAT_RGB, 3, -1, -1},  {Image::IMAGE_FORMAT_RGBA, 4, -1, -1},
      {Image::IMAGE_FORMAT_YUV, 3, -1, -1},  {Image::IMAGE_FORMAT_YUYV, 2, -1, -1},
      {Image::IMAGE_FORMAT_YVYU, 2, -1, -1}, {Image::IMAGE_FORMAT_YUV422P, 2, 32, 48},
      {Image::IMAGE_FORMAT_YV12, 2, 32, -1}, {Image::IMAGE_FORMAT_YU12, 2, 32, -1},
      {Image::IMAGE_FORMAT_NV12, 2, 32, 40}, {Image::IMAGE_FORMAT_NV21, 2, 32, 40},
  };
  int code = 1;
  for (const Layout& l : layouts) {
    SCOPED_TRACE(l.format);
    EXPECT_EQ(l.format, code++);  // the codes are stored: 1..12 in this order
    Image image(8, 4, 1, l.format, nullptr);
    EXPECT_EQ(image.bytesPerPixel, l.bytesPerPixel);
    ASSERT_NE(image.planes[0], nullptr);
    EXPECT_EQ(image.planes[1], l.plane1 < 0 ? nullptr : image.planes[0] + l.plane1);
    EXPECT_EQ(image.planes[2], l.plane2 < 0 ? nullptr : image.planes[0] + l.plane2);
    EXPECT_EQ(image.planes[3], nullptr);
    EXPECT_EQ(image.getRefCount(), 0);
  }
}

TEST(Image, SinglePlaneFormatsCopyEveryByteOfTheirBuffer) {
  for (int format = 1; format <= 7; ++format) {
    SCOPED_TRACE(format);
    const int bpp[] = {0, 1, 2, 3, 4, 3, 2, 2};
    Bytes src = ramp(3 * 2 * 2 * bpp[format], 7);  // depth 2 doubles the buffer
    unsigned char* planes[3] = {src.data(), nullptr, nullptr};
    Image image(3, 2, 2, static_cast<Image::ImageFormatType>(format), planes);
    ASSERT_NE(image.planes[0], nullptr);
    EXPECT_NE(image.planes[0], src.data());  // duplicated, never adopted
    EXPECT_EQ(Bytes(image.planes[0], image.planes[0] + src.size()), src);
  }
}

// The third plane of the 4:2:2 planar format lands at N + 1, over the U data.
TEST(Image, Planar422CopiesTheVPlaneOneByteBehindU) {
  const unsigned n = 8;
  Bytes y = ramp(n, 0), u = ramp(n / 2, 100), v = ramp(n / 2, 200);
  unsigned char* planes[3] = {y.data(), u.data(), v.data()};
  Image image(4, 2, 1, Image::IMAGE_FORMAT_YUV422P, planes);
  const unsigned char* buf = image.planes[0];
  ASSERT_NE(buf, nullptr);
  EXPECT_EQ(Bytes(buf, buf + n), y);
  EXPECT_EQ(buf[n], 100);  // the first U byte survives
  EXPECT_EQ(Bytes(buf + n + 1, buf + n + 5), v);
  EXPECT_EQ(image.planes[2], buf + 12);  // the V plane pointer is where V should have gone
}

TEST(Image, SemiAndThreePlaneCopies) {
  const unsigned n = 16;  // 4x4
  Bytes y = ramp(n, 0), c1 = ramp(n / 2, 100), c2 = ramp(n / 4, 200);
  {
    unsigned char* planes[3] = {y.data(), c1.data(), nullptr};
    Image image(4, 4, 1, Image::IMAGE_FORMAT_YV12, planes);
    EXPECT_EQ(Bytes(image.planes[0], image.planes[0] + n), y);
    EXPECT_EQ(Bytes(image.planes[1], image.planes[1] + n / 2), c1);
  }
  {
    unsigned char* planes[3] = {y.data(), c1.data(), c2.data()};
    Image image(4, 4, 1, Image::IMAGE_FORMAT_NV21, planes);
    EXPECT_EQ(Bytes(image.planes[0], image.planes[0] + n), y);
    EXPECT_EQ(Bytes(image.planes[1], image.planes[1] + n / 4), Bytes(c1.begin(), c1.begin() + n / 4));
    EXPECT_EQ(Bytes(image.planes[2], image.planes[2] + n / 4), c2);
  }
}

// A missing source plane means no copy at all, but the layout is still set.
TEST(Image, MissingSourcePlaneSkipsTheCopyButKeepsTheLayout) {
  Bytes y(16, 42);
  unsigned char* planes[3] = {y.data(), nullptr, nullptr};
  Image image(4, 4, 1, Image::IMAGE_FORMAT_YV12, planes);
  ASSERT_NE(image.planes[0], nullptr);
  EXPECT_EQ(image.planes[1], image.planes[0] + 16);
  Image nv(4, 4, 1, Image::IMAGE_FORMAT_NV12, planes);
  EXPECT_EQ(nv.planes[2], nv.planes[0] + 20);
}

TEST(Image, UnknownFormatsAllocateNothing) {
  for (int format : {0, 13, 255}) {
    Image image(4, 4, 1, static_cast<Image::ImageFormatType>(format), nullptr);
    EXPECT_EQ(image.bytesPerPixel, 0);
    for (unsigned char* p : image.planes) EXPECT_EQ(p, nullptr);
  }
}

TEST(Image, SetReplacesTheBufferAndKeepsBytesPerPixelForUnknownFormats) {
  Bytes rgb = ramp(2 * 2 * 3, 1);
  unsigned char* planes[3] = {rgb.data(), nullptr, nullptr};
  auto_ptr<Image> image(Image::createImage(1, 1, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->getRefCount(), 1);
  image->set(2, 2, 1, Image::IMAGE_FORMAT_RGB, planes);
  EXPECT_EQ(image->width, 2u);
  EXPECT_EQ(image->format, Image::IMAGE_FORMAT_RGB);
  EXPECT_EQ(image->bytesPerPixel, 3);
  EXPECT_EQ(Bytes(image->planes[0], image->planes[0] + rgb.size()), rgb);

  image->configuare(planes);  // again: a fresh copy, the old buffer freed (ASan)
  EXPECT_EQ(Bytes(image->planes[0], image->planes[0] + rgb.size()), rgb);

  image->set(2, 2, 1, static_cast<Image::ImageFormatType>(0), nullptr);
  EXPECT_EQ(image->planes[0], nullptr);
  EXPECT_EQ(image->bytesPerPixel, 3);  // left over from the last known format
}

// Byte counts that wrap in 32 bits are refused, so no plane can point past
// the buffer (65536 * 65536 would wrap to 0, 40000 * 40000 * 3 to a small size).
TEST(Image, SizesThatOverflow32BitsAreRefused) {
  const struct {
    unsigned w, h, d;
    Image::ImageFormatType f;
  } cases[] = {{65536, 65536, 1, Image::IMAGE_FORMAT_GRAY},
               {40000, 40000, 1, Image::IMAGE_FORMAT_RGB},
               {1, 1, 0xFFFFFFFFu, Image::IMAGE_FORMAT_NV21},
               {65536, 32768, 1, Image::IMAGE_FORMAT_YUYV}};
  for (const auto& c : cases) {
    Image image(c.w, c.h, c.d, c.f, nullptr);
    for (unsigned char* p : image.planes) EXPECT_EQ(p, nullptr);
  }
  // Just below the limit the geometry is accepted (the allocation itself may
  // still fail on a small machine, which also leaves the planes null).
  Image ok(65535, 16, 1, Image::IMAGE_FORMAT_RGBA, nullptr);
  EXPECT_EQ(ok.bytesPerPixel, 4);
}

TEST(Image, ZeroSizedImageHasNoBuffer) {
  Image image(0, 10, 1, Image::IMAGE_FORMAT_RGB, nullptr);
  EXPECT_EQ(image.planes[0], nullptr);
}
