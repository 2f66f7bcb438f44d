#include <gtest/gtest.h>

#include <vector>

#include "image/ColorConvert.h"

// Hand-worked values used below (tables truncate toward zero):
//   red  (255,0,0): Y = 65+16 = 81, per-pixel U term -37, V term 111
//   blue (0,0,255): Y = 24+16 = 40, per-pixel U term 111, V term -18
//   pair red+blue:  U = (-37+111+256)>>1 = 165, V = (111-18+256)>>1 = 174
//   pair red+red:   U = 91,  V = 239;  pair blue+blue: U = 239, V = 110
//   Y=128, U=128, V=255: L = 130 -> (255, 27, 130)
//   Y=235, U=128, V=255: L = 254 -> (255, 151, 254)
//   Y=128, U=0,   V=128: -> (130, 180, 0)
namespace {

using Bytes = std::vector<unsigned char>;
const Bytes kRed = {255, 0, 0}, kBlue = {0, 0, 255};
const Bytes kRedish = {255, 27, 130}, kBright = {255, 151, 254}, kGreenish = {130, 180, 0};

Bytes cat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

// 4x2 RGB: red red blue blue on both rows.
Bytes redBlue4x2() { return cat({kRed, kRed, kBlue, kBlue, kRed, kRed, kBlue, kBlue}); }

}  // namespace

TEST(ColorConvert, QuotedPixelExamples) {
  unsigned char out[8];
  const unsigned char white[] = {255, 255, 255};
  ASSERT_EQ(color_convert_rgb2yuv(white, out, 1, 1), 1);
  EXPECT_EQ(Bytes(out, out + 3), (Bytes{233, 128, 128}));

  const unsigned char black[] = {16, 128, 128}, top[] = {255, 128, 128};
  ASSERT_EQ(color_convert_yuv2rgb(black, out, 1, 1), 1);
  EXPECT_EQ(Bytes(out, out + 3), (Bytes{0, 0, 0}));
  ASSERT_EQ(color_convert_yuv2rgb(top, out, 1, 1), 1);
  EXPECT_EQ(Bytes(out, out + 3), (Bytes{255, 255, 255}));

  const unsigned char gray = 200;
  ASSERT_EQ(color_convert_gray2rgb(&gray, out, 1, 1), 1);
  EXPECT_EQ(Bytes(out, out + 3), (Bytes{200, 200, 200}));
  ASSERT_EQ(color_convert_gray2rgba(&gray, out, 1, 1), 1);
  EXPECT_EQ(Bytes(out, out + 4), (Bytes{200, 200, 200, 255}));
}

TEST(ColorConvert, PairWritersShareChromaBetweenTwoPixels) {
  const Bytes rgb = cat({kRed, kBlue});
  Bytes out(4, 0);
  ASSERT_EQ(color_convert_rgb2yuyv(rgb.data(), out.data(), 2, 1), 1);
  EXPECT_EQ(out, (Bytes{81, 165, 40, 174}));
  ASSERT_EQ(color_convert_rgb2yvyu(rgb.data(), out.data(), 2, 1), 1);
  EXPECT_EQ(out, (Bytes{81, 174, 40, 165}));
  unsigned char y[2], u = 0, v = 0;
  ASSERT_EQ(color_convert_rgb2yuv422p(rgb.data(), y, &u, &v, 2, 1), 1);
  EXPECT_EQ(Bytes(y, y + 2), (Bytes{81, 40}));
  EXPECT_EQ(u, 165);
  EXPECT_EQ(v, 174);
}

TEST(ColorConvert, PairReadersUseOneChromaForTwoLumaSamples) {
  Bytes out(6, 0);
  const Bytes yuyv = {128, 128, 235, 255}, yvyu = {128, 255, 235, 128};
  ASSERT_EQ(color_convert_yuyv2rgb(yuyv.data(), out.data(), 2, 1), 1);
  EXPECT_EQ(out, cat({kRedish, kBright}));
  ASSERT_EQ(color_convert_yvyu2rgb(yvyu.data(), out.data(), 2, 1), 1);
  EXPECT_EQ(out, cat({kRedish, kBright}));

  const Bytes y = {128, 128, 128, 128}, u = {128, 0}, v = {255, 128};
  Bytes rgb(12, 0);
  ASSERT_EQ(color_convert_yuv422p2rgb(y.data(), u.data(), v.data(), rgb.data(), 4, 1), 1);
  EXPECT_EQ(rgb, cat({kRedish, kRedish, kGreenish, kGreenish}));
}

// A 4x2 frame: the readers give each run of four consecutive pixels (one row
// here) one chroma pair; a true 2x2 reader would mix the rows.
TEST(ColorConvert, QuarterChromaReadersGroupFourConsecutivePixels) {
  const Bytes y(8, 128);
  const Bytes expected =
      cat({kRedish, kRedish, kRedish, kRedish, kGreenish, kGreenish, kGreenish, kGreenish});
  Bytes rgb(24, 0);
  const Bytes vu = {255, 128, 128, 0}, uv = {128, 255, 0, 128};
  ASSERT_EQ(color_convert_nv212rgb(y.data(), vu.data(), rgb.data(), 4, 2), 1);
  EXPECT_EQ(rgb, expected);
  ASSERT_EQ(color_convert_nv122rgb(y.data(), uv.data(), rgb.data(), 4, 2), 1);
  EXPECT_EQ(rgb, expected);
  const Bytes u = {128, 0}, v = {255, 128};
  ASSERT_EQ(color_convert_yv12oryu122rgb(y.data(), u.data(), v.data(), rgb.data(), 4, 2), 1);
  EXPECT_EQ(rgb, expected);
}

// The same 4x2 red/blue frame: the three-plane writer averages each row's
// four pixels (R R B B), the NV writers true 2x2 blocks (all red, all blue).
TEST(ColorConvert, ThreePlaneWriterUsesRowsNVWritersUseBlocks) {
  const Bytes rgb = redBlue4x2();
  const Bytes luma = {81, 81, 40, 40, 81, 81, 40, 40};
  Bytes y(8, 0), u(2, 0), v(2, 0), c(4, 0);
  ASSERT_EQ(color_convert_rgb2yv12oryu12(rgb.data(), y.data(), u.data(), v.data(), 4, 2), 1);
  EXPECT_EQ(y, luma);
  EXPECT_EQ(u, (Bytes{165, 165}));
  EXPECT_EQ(v, (Bytes{174, 174}));

  y.assign(8, 0);
  ASSERT_EQ(color_convert_rgb2nv21(rgb.data(), y.data(), c.data(), 4, 2), 1);
  EXPECT_EQ(y, luma);
  EXPECT_EQ(c, (Bytes{239, 91, 110, 239}));
  ASSERT_EQ(color_convert_rgb2nv12(rgb.data(), y.data(), c.data(), 4, 2), 1);
  EXPECT_EQ(c, (Bytes{91, 239, 239, 110}));

  // Vertical mixing: red over blue in one 2x2 block gives the pair average of
  // both colours: U = (2*-37 + 2*111 + 512) >> 2 = 165, V = 174.
  const Bytes stacked = cat({kRed, kRed, kBlue, kBlue});
  ASSERT_EQ(color_convert_rgb2nv12(stacked.data(), y.data(), c.data(), 2, 2), 1);
  EXPECT_EQ(Bytes(y.begin(), y.begin() + 4), (Bytes{81, 81, 40, 40}));
  EXPECT_EQ(c[0], 165);
  EXPECT_EQ(c[1], 174);
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
  // The three-plane reader calls fewer than four pixels nothing to do.
  out.assign(64, 0xEE);
  EXPECT_EQ(color_convert_yv12oryu122rgb(src.data(), src.data(), src.data(), out.data(), 3, 1), 1);
  EXPECT_EQ(out[0], 0xEE);
  // The NV writers need two rows: 4x1 succeeds without writing.
  EXPECT_EQ(color_convert_rgb2nv21(src.data(), out.data(), out.data() + 8, 4, 1), 1);
  EXPECT_EQ(out[0], 0xEE);
  EXPECT_EQ(color_convert_rgb2nv21(src.data(), out.data(), out.data() + 8, 3, 1), 0);
  // The three-plane writer takes four pixels in one row.
  EXPECT_EQ(color_convert_rgb2yv12oryu12(src.data(), out.data(), out.data() + 4, out.data() + 5, 4, 1), 1);
  EXPECT_NE(out[0], 0xEE);
  // Pairs: one pixel is refused, two fill six bytes.
  out.assign(64, 0xEE);
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
}

TEST(ColorConvert, NullPointersAndEmptyFramesAreRefused) {
  unsigned char buf[16] = {};
  EXPECT_EQ(color_convert_gray2rgb(nullptr, buf, 1, 1), 0);
  EXPECT_EQ(color_convert_gray2rgb(buf, nullptr, 1, 1), 0);
  EXPECT_EQ(color_convert_gray2rgb(buf, buf, 0, 1), 0);
  EXPECT_EQ(color_convert_rgb2yuv(buf, buf, -1, -1), 0);
  EXPECT_EQ(color_convert_rgb2yuv422p(buf, buf, nullptr, buf, 2, 1), 0);
  EXPECT_EQ(color_convert_yuv422p2rgb(buf, buf, nullptr, buf, 2, 1), 0);
  EXPECT_EQ(color_convert_rgb2yv12oryu12(buf, buf, buf, nullptr, 4, 1), 0);
  EXPECT_EQ(color_convert_yv12oryu122rgb(buf, buf, nullptr, buf, 4, 1), 0);
  EXPECT_EQ(color_convert_nv122rgb(buf, nullptr, buf, 4, 1), 0);
  EXPECT_EQ(color_convert_rgb2nv12(buf, buf, nullptr, 2, 2), 0);
  EXPECT_EQ(color_convert_yuv2gray(buf, buf, 0, 0), 0);
  EXPECT_EQ(color_convert_rgb2yuyv(buf, buf, 100000, 100000), 0);  // N does not fit in an int
  convert_nv21_to_yv12(nullptr, buf, 2, 2);                        // does nothing, no crash
  convert_nv12_to_yv12(buf, nullptr, 2, 2);
}

TEST(ColorConvert, SemiPlanarToYV12PutsVFirst) {
  const Bytes nv21 = {1, 2, 3, 4, 10, 20}, nv12 = {1, 2, 3, 4, 20, 10};
  Bytes out(6, 0);
  convert_nv21_to_yv12(nv21.data(), out.data(), 2, 2);
  EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 10, 20}));
  out.assign(6, 0);
  convert_nv12_to_yv12(nv12.data(), out.data(), 2, 2);
  EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 10, 20}));

  // 4x2: two pairs; V plane at N, U plane at N * 5 / 4.
  const Bytes big = {1, 2, 3, 4, 5, 6, 7, 8, 10, 20, 11, 21};
  out.assign(12, 0);
  convert_nv21_to_yv12(big.data(), out.data(), 4, 2);
  EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 20, 21}));
}
