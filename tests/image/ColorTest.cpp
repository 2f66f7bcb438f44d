#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "ImageTestUtil.h"
#include "image/ColorConvert.h"
#include "image/ColorTables.h"

using namespace imgtest;

// Hand-worked values used below (tables truncate toward zero):
//   red  (255,0,0): Y = 65+16 = 81, per-pixel U term -37, V term 111
//   blue (0,0,255): Y = 24+16 = 40, per-pixel U term 111, V term -18
//   pair red+blue:  U = (-37+111+256)>>1 = 165, V = (111-18+256)>>1 = 174
//   pair red+red:   U = 91,  V = 239;  pair blue+blue: U = 239, V = 110
//   Y=128, U=128, V=255: L = 130 -> (255, 27, 130)
//   Y=235, U=128, V=255: L = 254 -> (255, 151, 254)
//   Y=128, U=0,   V=128: -> (130, 180, 0)
namespace {
const Bytes kRed = {255, 0, 0}, kBlue = {0, 0, 255};
const Bytes kRedish = {255, 27, 130}, kBright = {255, 151, 254}, kGreenish = {130, 180, 0};

// A 4x2 image of the given format with its first planes filled.
auto_ptr<Image> frame(int format, const Bytes& p0, const Bytes& p1 = {}, const Bytes& p2 = {}) {
  auto_ptr<Image> image = makeImage(4, 2, format);
  const Bytes* src[3] = {&p0, &p1, &p2};
  for (int k = 0; k < 3; ++k)
    if (!src[k]->empty()) memcpy(image->planes[k], src[k]->data(), src[k]->size());
  return image;
}
}  // namespace

// Entries 0 and 255 worked out by hand; every entry is c * (i - offset)
// truncated toward zero (within one of the real product, on the zero side).
TEST(ColorTables, AllThirteenFollowTheTruncationRule) {
  using namespace orvan::colortables;
  const struct {
    const Table& table;
    double c;
    int offset, first, last;
  } tables[] = {
      {kYR, 0.257, 0, 0, 65},       {kYG, 0.504, 0, 0, 128},      {kYB, 0.098, 0, 0, 24},
      {kUR, -0.148, 0, 0, -37},     {kUG, -0.291, 0, 0, -74},     {kUB, 0.439, 0, 0, 111},
      {kVG, -0.368, 0, 0, -93},     {kVB, -0.071, 0, 0, -18},     {kY, 1.164, 16, -18, 278},
      {kRV, 1.596, 128, -204, 202}, {kGV, 0.813, 128, -104, 103}, {kGU, 0.391, 128, -50, 49},
      {kBU, 2.018, 128, -258, 256},
  };
  int index = 0;
  for (const auto& e : tables) {
    SCOPED_TRACE(index++);
    EXPECT_EQ(e.table[0], e.first);
    EXPECT_EQ(e.table[255], e.last);
    for (int i = 0; i < 256; ++i) {
      const double exact = e.c * (i - e.offset);
      const int v = e.table[i];
      EXPECT_TRUE(std::fabs(v) < std::fabs(exact) + 1e-9 && std::fabs(v) > std::fabs(exact) - 1.0 &&
                  (v == 0 || (v > 0) == (exact > 0)))
          << i << ": " << v;
    }
  }
  EXPECT_EQ(kYG[125], 63);  // 0.504 * 125 is whole and must not drop below
}

TEST(ColorConvert, QuotedPixelExamples) {
  unsigned char out[8];
  const unsigned char white[] = {255, 255, 255}, black[] = {16, 128, 128}, top[] = {255, 128, 128},
                      gray = 200;
  ASSERT_EQ(color_convert_rgb2yuv(white, out, 1, 1), 1);
  EXPECT_EQ(bytesOf(out, 3), (Bytes{233, 128, 128}));
  ASSERT_EQ(color_convert_yuv2rgb(black, out, 1, 1), 1);
  EXPECT_EQ(bytesOf(out, 3), (Bytes{0, 0, 0}));
  ASSERT_EQ(color_convert_yuv2rgb(top, out, 1, 1), 1);
  EXPECT_EQ(bytesOf(out, 3), (Bytes{255, 255, 255}));
  ASSERT_EQ(color_convert_gray2rgb(&gray, out, 1, 1), 1);
  EXPECT_EQ(bytesOf(out, 3), (Bytes{200, 200, 200}));
  ASSERT_EQ(color_convert_gray2rgba(&gray, out, 1, 1), 1);
  EXPECT_EQ(bytesOf(out, 4), (Bytes{200, 200, 200, 255}));
}

TEST(ColorConvert, PairWritersAndReadersShareChromaBetweenTwoPixels) {
  const Bytes rgb = cat({kRed, kBlue});
  Bytes out(4, 0), y(2), u(1), v(1);
  ASSERT_EQ(color_convert_rgb2yuyv(rgb.data(), out.data(), 2, 1), 1);
  EXPECT_EQ(out, (Bytes{81, 165, 40, 174}));
  ASSERT_EQ(color_convert_rgb2yvyu(rgb.data(), out.data(), 2, 1), 1);
  EXPECT_EQ(out, (Bytes{81, 174, 40, 165}));
  ASSERT_EQ(color_convert_rgb2yuv422p(rgb.data(), y.data(), u.data(), v.data(), 2, 1), 1);
  EXPECT_EQ(cat({y, u, v}), (Bytes{81, 40, 165, 174}));

  Bytes back(12, 0);
  const Bytes yuyv = {128, 128, 235, 255}, yvyu = {128, 255, 235, 128};
  ASSERT_EQ(color_convert_yuyv2rgb(yuyv.data(), back.data(), 2, 1), 1);
  EXPECT_EQ(bytesOf(back.data(), 6), cat({kRedish, kBright}));
  ASSERT_EQ(color_convert_yvyu2rgb(yvyu.data(), back.data(), 2, 1), 1);
  EXPECT_EQ(bytesOf(back.data(), 6), cat({kRedish, kBright}));
  const Bytes y4(4, 128), u2 = {128, 0}, v2 = {255, 128};
  ASSERT_EQ(color_convert_yuv422p2rgb(y4.data(), u2.data(), v2.data(), back.data(), 4, 1), 1);
  EXPECT_EQ(back, cat({kRedish, kRedish, kGreenish, kGreenish}));
}

// On 4x2 frames the quarter-chroma readers give each run of four consecutive
// pixels (one row) one chroma pair, and so does the three-plane writer (rows
// R R B B); the NV writers average true 2x2 blocks (all red, all blue).
TEST(ColorConvert, QuarterChromaReadersAndWritersGroup4x1Versus2x2) {
  const Bytes y(8, 128),
      rows = cat({kRedish, kRedish, kRedish, kRedish, kGreenish, kGreenish, kGreenish, kGreenish});
  Bytes rgb(24, 0);
  const Bytes vu = {255, 128, 128, 0}, uv = {128, 255, 0, 128}, u = {128, 0}, v = {255, 128};
  ASSERT_EQ(color_convert_nv212rgb(y.data(), vu.data(), rgb.data(), 4, 2), 1);
  EXPECT_EQ(rgb, rows);
  ASSERT_EQ(color_convert_nv122rgb(y.data(), uv.data(), rgb.data(), 4, 2), 1);
  EXPECT_EQ(rgb, rows);
  ASSERT_EQ(color_convert_yv12oryu122rgb(y.data(), u.data(), v.data(), rgb.data(), 4, 2), 1);
  EXPECT_EQ(rgb, rows);

  const Bytes src = cat({kRed, kRed, kBlue, kBlue}, 2), luma = {81, 81, 40, 40, 81, 81, 40, 40};
  Bytes yo(8, 0), uo(2, 0), vo(2, 0), c(4, 0);
  ASSERT_EQ(color_convert_rgb2yv12oryu12(src.data(), yo.data(), uo.data(), vo.data(), 4, 2), 1);
  EXPECT_EQ(cat({yo, uo, vo}), cat({luma, {165, 165, 174, 174}}));
  ASSERT_EQ(color_convert_rgb2nv21(src.data(), yo.data(), c.data(), 4, 2), 1);
  EXPECT_EQ(cat({yo, c}), cat({luma, {239, 91, 110, 239}}));
  ASSERT_EQ(color_convert_rgb2nv12(src.data(), yo.data(), c.data(), 4, 2), 1);
  EXPECT_EQ(c, (Bytes{91, 239, 239, 110}));
  // Red over blue in one block: U = (2*-37 + 2*111 + 512) >> 2 = 165, V = 174.
  const Bytes stacked = cat({kRed, kRed, kBlue, kBlue});
  ASSERT_EQ(color_convert_rgb2nv12(stacked.data(), yo.data(), c.data(), 2, 2), 1);
  EXPECT_EQ(bytesOf(c.data(), 2), (Bytes{165, 174}));
}

TEST(ColorConvert, GroupSizeLimits) {
  const Bytes src(64, 128);
  Bytes out(64, 0xEE);
  // Quad readers: three pixels are refused, four fill exactly 12 bytes.
  EXPECT_EQ(color_convert_nv212rgb(src.data(), src.data(), out.data(), 3, 1), 0);
  EXPECT_EQ(out[0], 0xEE);
  EXPECT_EQ(color_convert_nv212rgb(src.data(), src.data(), out.data(), 4, 1), 1);
  EXPECT_EQ(out[11], 130);
  EXPECT_EQ(out[12], 0xEE);
  // The three-plane reader calls three pixels, or none, nothing to do.
  out.assign(64, 0xEE);
  EXPECT_EQ(color_convert_yv12oryu122rgb(src.data(), src.data(), src.data(), out.data(), 3, 1), 1);
  EXPECT_EQ(color_convert_yv12oryu122rgb(src.data(), src.data(), src.data(), out.data(), 0, 5), 1);
  EXPECT_EQ(out, Bytes(64, 0xEE));
  // The NV writers need two rows: 4x1 succeeds without writing, 3x1 fails.
  EXPECT_EQ(color_convert_rgb2nv21(src.data(), out.data(), out.data() + 8, 4, 1), 1);
  EXPECT_EQ(out[0], 0xEE);
  EXPECT_EQ(color_convert_rgb2nv21(src.data(), out.data(), out.data() + 8, 3, 1), 0);
  // Pairs: one pixel is refused, two fill six bytes.
  EXPECT_EQ(color_convert_yuyv2rgb(src.data(), out.data(), 1, 1), 0);
  EXPECT_EQ(color_convert_yuyv2rgb(src.data(), out.data(), 2, 1), 1);
  EXPECT_EQ(out[5], 130);
  EXPECT_EQ(out[6], 0xEE);
  // An odd last row and column are left to the caller by the NV writers.
  out.assign(64, 0xEE);
  EXPECT_EQ(color_convert_rgb2nv12(src.data(), out.data(), out.data() + 9, 3, 3), 1);
  EXPECT_NE(out[0], 0xEE);
  EXPECT_EQ(out[2], 0xEE);
  EXPECT_EQ(out[6], 0xEE);
  // Null planes and pixel counts that do not fit in an int are refused.
  EXPECT_EQ(color_convert_yuv422p2rgb(out.data(), out.data(), nullptr, out.data(), 2, 1), 0);
  EXPECT_EQ(color_convert_rgb2yuyv(out.data(), out.data(), 100000, 100000), 0);
}

// A frame whose largest buffer has more bytes than an int counts is refused,
// nothing touched: 2^29 RGBA pixels, 2^31 / 3 RGB pixels (rounded up to a
// multiple of 4), 2^31 grey pixels, 2^31 / 1.5 NV pixels.
TEST(ColorConvert, ByteCountsBeyondAnIntAreRefused) {
  using Fn = int (*)(const unsigned char*, unsigned char*, int, int);
  const int n3 = INT32_MAX / 3 + 2;
  const Bytes src(64, 128);
  Bytes out(64, 0xEE);
  unsigned char* o = out.data();
  for (Fn f :
       {color_convert_gray2rgba, color_convert_rgba2gray, color_convert_rgb2rgba, color_convert_rgba2rgb})
    EXPECT_EQ(f(src.data(), o, 1 << 29, 1), 0);
  for (Fn f :
       {color_convert_gray2rgb, color_convert_rgb2gray, color_convert_rgb2yuv, color_convert_yuv2rgb,
        color_convert_rgb2yuyv, color_convert_yuyv2rgb, color_convert_rgb2yvyu, color_convert_yvyu2rgb})
    EXPECT_EQ(f(src.data(), o, n3, 1), 0);
  EXPECT_EQ(color_convert_yuv2gray(src.data(), o, 65536, 32768), 0);
  EXPECT_EQ(color_convert_yv12oryu122rgb(src.data(), src.data(), src.data(), o, n3, 1), 0);
  EXPECT_EQ(color_convert_rgb2nv12(src.data(), o, o, n3 / 2, 2), 0);
  convert_nv21_to_yv12(src.data(), o, INT32_MAX / 3 * 2 + 2, 1);
  EXPECT_EQ(out, Bytes(64, 0xEE));
}

// 2x2: one V and one U byte move; 4x2: V plane at N, U plane at N * 5 / 4.
TEST(ColorConvert, SemiPlanarToYV12PutsVFirst) {
  const Bytes nv21 = {1, 2, 3, 4, 10, 20}, nv12 = {1, 2, 3, 4, 20, 10};
  Bytes out(6, 0);
  convert_nv21_to_yv12(nv21.data(), out.data(), 2, 2);
  EXPECT_EQ(out, nv21);
  out.assign(6, 0);
  convert_nv12_to_yv12(nv12.data(), out.data(), 2, 2);
  EXPECT_EQ(out, nv21);
  const Bytes big = {1, 2, 3, 4, 5, 6, 7, 8, 10, 20, 11, 21};
  out.assign(12, 0);
  convert_nv21_to_yv12(big.data(), out.data(), 4, 2);
  EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 20, 21}));
}

// Every listed code on 4x2 frames with the hand-worked values above; `at`
// marks a second expected run inside the target's buffer.
TEST(ColorConvertImage, EveryListedCodeConverts) {
  const Bytes rgb = cat({kRed, kRed, kBlue, kBlue}, 2), gray = {10, 20, 30, 40, 50, 60, 70, 80};
  const Bytes rgba = cat({{255, 0, 0, 7}, {255, 0, 0, 7}, {0, 0, 255, 7}, {0, 0, 255, 7}}, 2);
  const Bytes luma = {81, 81, 40, 40, 81, 81, 40, 40}, y128(8, 128);
  const Bytes readRows =
      cat({kRedish, kRedish, kRedish, kRedish, kGreenish, kGreenish, kGreenish, kGreenish});
  const Bytes readPairs = cat({kRedish, kRedish, kGreenish, kGreenish}, 2);
  struct Case {
    int code;
    auto_ptr<Image> source;
    Bytes plane0;
    long at;
    Bytes run;
  };
  std::vector<Case> cases;
  cases.push_back({0x103, frame(1, gray), cat({{10, 10, 10}, {20, 20, 20}}), -1, {}});
  cases.push_back({0x104, frame(1, gray), cat({{10, 10, 10, 255}, {20, 20, 20, 255}}), -1, {}});
  cases.push_back({0x301, frame(3, rgb), {76, 76, 29, 29, 76, 76, 29, 29}, -1, {}});
  cases.push_back({0x304, frame(3, rgb), {255, 0, 0, 255, 255, 0, 0, 255, 0, 0, 255, 255}, -1, {}});
  cases.push_back({0x305, frame(3, rgb), {81, 91, 239, 81, 91, 239, 40, 239, 110}, -1, {}});
  cases.push_back({0x306, frame(3, rgb), {81, 91, 81, 239, 40, 239, 40, 110}, -1, {}});
  cases.push_back({0x307, frame(3, rgb), {81, 239, 81, 91, 40, 110, 40, 239}, -1, {}});
  cases.push_back(
      {0x308, frame(3, rgb), luma, 8, {91, 239, 91, 239, 239, 110, 239, 110}});  // U at N, V at 3N/2
  cases.push_back({0x30B, frame(3, rgb), luma, 8, {91, 239, 239, 110}});
  cases.push_back({0x30C, frame(3, rgb), luma, 8, {239, 91, 110, 239}});
  cases.push_back({0x401, frame(4, rgba), {76, 76, 29, 29}, -1, {}});
  cases.push_back({0x403, frame(4, rgba), rgb, -1, {}});
  cases.push_back({0x503,
                   frame(5, cat({{128, 128, 255}, {128, 128, 255}, {128, 0, 128}, {128, 0, 128}}, 2)),
                   readPairs,
                   -1,
                   {}});
  cases.push_back({0x603, frame(6, cat({{128, 128, 128, 255}, {128, 0, 128, 128}}, 2)), readPairs, -1, {}});
  cases.push_back({0x703, frame(7, cat({{128, 255, 128, 128}, {128, 128, 128, 0}}, 2)), readPairs, -1, {}});
  cases.push_back({0x803, frame(8, y128, {128, 0, 128, 0}, {255, 128, 255, 128}), readPairs, -1, {}});
  cases.push_back({0xB03, frame(11, y128, {128, 255, 0, 128}), readRows, -1, {}});
  cases.push_back({0xC03, frame(12, y128, {255, 128, 128, 0}), readRows, -1, {}});
  // Codes 9 and 10 are two-plane images, so the three-plane converters meet
  // a null plane and do nothing: the new image comes back blank.
  for (int code : {0x309, 0x30A, 0x903, 0xA03}) cases.push_back({code, frame(code >> 8, {}), {}, -1, {}});
  // To gray, plane 0 is copied as it is, interleaved bytes included.
  const Bytes bytes = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6};
  for (int format = 5; format <= 12; ++format)
    cases.push_back({(format << 8) | 1, frame(format, bytes), bytesOf(bytes.data(), 8), -1, {}});

  for (Case& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << "0x" << c.code);
    auto_ptr<Image> out(ColorConvert::convert(c.source, c.code));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->format, c.code & 255);
    EXPECT_EQ(out->width * out->height, 8u);
    EXPECT_EQ(out->getRefCount(), 1);
    ASSERT_NE(out->planes[0], nullptr);
    EXPECT_EQ(bytesOf(out->planes[0], c.plane0.size()), c.plane0);
    if (c.at >= 0) {
      EXPECT_EQ(bytesOf(out->planes[0] + c.at, c.run.size()), c.run);
    }
  }
}

// Every code word over every format on odd and even sizes: null exactly when
// the source format does not match, nothing outside the buffers (ASan), and
// an unlisted pair gives a blank image of the target format.
TEST(ColorConvertImage, WrongSourceIsNullUnlistedPairIsBlank) {
  for (unsigned w : {5u, 4u})
    for (int from = 0; from <= 13; ++from) {
      auto_ptr<Image> src = makeImage(w, 3, from);
      if (src->planes[0] != nullptr) memset(src->planes[0], 0x55, w * 3 * src->bytesPerPixel);
      for (int code = 0; code < 0x1000; ++code) {
        auto_ptr<Image> out(ColorConvert::convert(src, code));
        ASSERT_EQ(out == nullptr, (code >> 8) != from) << std::hex << code;
      }
    }
  EXPECT_EQ(ColorConvert::convert(static_cast<Image*>(nullptr), 0x301), nullptr);
  auto_ptr<Image> rgba(Image::createImage(4, 2, 3, Image::IMAGE_FORMAT_RGBA, nullptr));
  for (int code : {0x402, 0x40C}) {
    auto_ptr<Image> out(ColorConvert::convert(rgba, code));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->format, code & 255);
    EXPECT_EQ(out->depth, 3u);
    EXPECT_EQ(out->bytesPerPixel, 2);
    EXPECT_NE(out->planes[0], nullptr);
  }
}

// Errors come from truncating tables, studio swing (219 luma levels for 256)
// and, for subsampled layouts, averaging chroma over 2 or 4 pixels. The NV
// writer averages 2x2 blocks but the reader spreads each pair over four
// pixels of one row, so colour comes back from the wrong place (about 20 dB
// by design); luma still survives.
TEST(ColorRoundTrip, PhotographThroughEveryYUVLayout) {
  auto_ptr<Image> photo = sample("coffee.jpg");
  ASSERT_NE(photo, nullptr);
  const int w = static_cast<int>(photo->width), h = static_cast<int>(photo->height);
  const size_t n = static_cast<size_t>(w) * h;
  const unsigned char* rgb = photo->planes[0];
  Bytes yuv(n * 3), back(n * 3);
  unsigned char *y = yuv.data(), *b = back.data();
  // `ok`: both directions returned 1 (&& runs them in order).
  auto check = [&](const char* name, bool ok, double minPsnr, int maxError) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(ok);
    int worst = 0;
    for (size_t i = 0; i < n * 3; ++i) worst = std::max(worst, std::abs(rgb[i] - back[i]));
    EXPECT_LE(worst, maxError);
    EXPECT_GT(psnr(rgb, b, n * 3), minPsnr);
  };
  check("4:4:4", color_convert_rgb2yuv(rgb, y, w, h) == 1 && color_convert_yuv2rgb(y, b, w, h) == 1, 40.0, 6);
  check("YUYV", color_convert_rgb2yuyv(rgb, y, w, h) == 1 && color_convert_yuyv2rgb(y, b, w, h) == 1, 38.0,
        40);
  check("YVYU", color_convert_rgb2yvyu(rgb, y, w, h) == 1 && color_convert_yvyu2rgb(y, b, w, h) == 1, 38.0,
        40);
  check("4:2:2 planar",
        color_convert_rgb2yuv422p(rgb, y, y + n, y + n * 3 / 2, w, h) == 1 &&
            color_convert_yuv422p2rgb(y, y + n, y + n * 3 / 2, b, w, h) == 1,
        38.0, 40);
  check("4:2:0 planar",
        color_convert_rgb2yv12oryu12(rgb, y, y + n, y + n * 5 / 4, w, h) == 1 &&
            color_convert_yv12oryu122rgb(y, y + n, y + n * 5 / 4, b, w, h) == 1,
        36.0, 64);
  check("NV12",
        color_convert_rgb2nv12(rgb, y, y + n, w, h) == 1 && color_convert_nv122rgb(y, y + n, b, w, h) == 1,
        19.0, 255);
  check("NV21",
        color_convert_rgb2nv21(rgb, y, y + n, w, h) == 1 && color_convert_nv212rgb(y, y + n, b, w, h) == 1,
        19.0, 255);
  Bytes gray(n), grayBack(n);
  ASSERT_EQ(color_convert_rgb2gray(rgb, gray.data(), w, h), 1);
  ASSERT_EQ(color_convert_rgb2gray(b, grayBack.data(), w, h), 1);
  EXPECT_GT(psnr(gray.data(), grayBack.data(), n), 30.0);
}

TEST(ColorRoundTrip, GrayAndRGBAPathsAreExact) {
  auto_ptr<Image> photo = sample("chelsea.jpg");
  ASSERT_NE(photo, nullptr);
  const int w = static_cast<int>(photo->width), h = static_cast<int>(photo->height);
  const size_t n = static_cast<size_t>(w) * h;
  Bytes gray(n), rgb(n * 3), rgba(n * 4), gray2(n), gray3(n);
  ASSERT_EQ(color_convert_rgb2gray(photo->planes[0], gray.data(), w, h), 1);
  ASSERT_EQ(color_convert_gray2rgb(gray.data(), rgb.data(), w, h), 1);
  ASSERT_EQ(color_convert_rgb2gray(rgb.data(), gray2.data(), w, h), 1);
  EXPECT_EQ(gray2, gray);  // the weights sum to 65536
  ASSERT_EQ(color_convert_gray2rgba(gray.data(), rgba.data(), w, h), 1);
  ASSERT_EQ(color_convert_rgba2gray(rgba.data(), gray3.data(), w, h), 1);
  EXPECT_EQ(gray3, gray);
  ASSERT_EQ(color_convert_rgb2rgba(photo->planes[0], rgba.data(), w, h), 1);
  ASSERT_EQ(color_convert_rgba2rgb(rgba.data(), rgb.data(), w, h), 1);
  EXPECT_EQ(rgb, bytesOf(photo->planes[0], n * 3));
  for (size_t i = 3; i < n * 4; i += 4) ASSERT_EQ(rgba[i], 255);
}
