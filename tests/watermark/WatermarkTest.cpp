#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/Memory.h"
#include "watermark/TimestampWatermark.h"

namespace {

TEST(TimestampWatermarkImage, WidthsAddUpAndGlyphsLandInvertedAtTheirAdvance) {
  unsigned char* out = nullptr;
  int w = 0, h = 0;
  // 16:9: 12 digits x 66 + ":" "-" "-" and the blank x 42 = 960; 4:3: digits 90, others 60.
  for (auto [set, width, height] : {std::tuple{1, 960, 108}, {0, 12 * 90 + 4 * 60, 160}}) {
    CreateTimestampWatermark("2016-01-01 12:00", &out, &w, &h, set);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(w, width);
    EXPECT_EQ(h, height);
    galloc_free(out);
  }
  const char* text = "1- 0";
  CreateTimestampWatermark(text, &out, &w, &h, 1);
  ASSERT_EQ(w, 66 + 42 + 42 + 66);
  const int starts[] = {0, 66, 108, 150};
  for (int k = 0; k < 4; ++k) {
    const Symbol* sym = GetTimestampSymbol_16_to_9(text[k]);
    for (int i = 0; i < sym->width * h; ++i) {
      const int expected = sym->bitmap ? 255 - sym->bitmap[i] : 0;  // the blank leaves no ink
      ASSERT_EQ(out[(i / sym->width) * w + starts[k] + i % sym->width], expected) << "glyph " << k;
    }
  }
  galloc_free(out);

  // Unsupported character, empty text, unknown set: null and zero sizes.
  const std::pair<const char*, int> refused[] = {{"12/30", 0}, {"", 1}, {"12", 2}};
  for (const auto& [bad, set] : refused) {
    w = h = 7;
    CreateTimestampWatermark(bad, &out, &w, &h, set);
    EXPECT_EQ(out, nullptr) << bad;
    EXPECT_EQ(w + h, 0);
  }
  // Lookups stay inside the chosen set, whatever the byte.
  for (char c : std::string("aZ/\x80\xff")) {
    EXPECT_EQ(GetTimestampSymbol_16_to_9(c), nullptr) << int(c);
    EXPECT_EQ(GetTimestampSymbol_4_to_3(c), nullptr) << int(c);
  }
}

// BT.601 terms with exact decimal coefficients, truncated toward zero.
int term(int milli, int v) { return milli * v / 1000; }
int lumaOf(int v) { return term(257, v) + term(504, v) + term(98, v) + 16; }
int uTerms(int v) { return term(-148, v) + term(-291, v) + term(439, v); }
int vTerms(int v) { return term(439, v) + term(-368, v) + term(-71, v); }

struct Placement {
  int set, sw, sh, xs, y0;  // worked out by hand for each photo
};

// The photo after stamping: nearest-neighbour coverage a, grey ink
// (254a + 255) >> 8 as YUYV pairs, blended into both bytes of a pixel with a;
// columns left of the photo dropped.
std::vector<unsigned char> expectedPhoto(std::vector<unsigned char> photo, int width, const char* text,
                                         const Placement& p) {
  unsigned char* wm = nullptr;
  int wmW = 0, wmH = 0;
  CreateTimestampWatermark(text, &wm, &wmW, &wmH, p.set);
  const float fy = float(wmH) / float(p.sh), fx = float(wmW) / float(p.sw);
  for (int j = 0; j < p.sh; ++j) {
    for (int i = 0; i < p.sw; i += 2) {
      int a[2], v[2];
      for (int k = 0; k < 2; ++k) {
        a[k] = wm[int(fy * j) * wmW + int(fx * (i + k))];
        v[k] = (254 * a[k] + 255) >> 8;
      }
      const int stamp[2][2] = {{lumaOf(v[0]), ((uTerms(v[0]) + uTerms(v[1]) + 256) >> 1) & 0xFF},
                               {lumaOf(v[1]), ((vTerms(v[0]) + vTerms(v[1]) + 256) >> 1) & 0xFF}};
      for (int k = 0; k < 2; ++k) {
        if (a[k] == 0 || p.xs + i + k < 0) continue;
        unsigned char* px = &photo[2 * (size_t(p.y0 + j) * width + p.xs + i + k)];
        for (int b = 0; b < 2; ++b)
          px[b] = static_cast<unsigned char>((stamp[k][b] * a[k] + px[b] * (255 - a[k])) >> 8);
      }
    }
  }
  galloc_free(wm);
  return photo;
}

std::vector<unsigned char> testPhoto(int width, int height) {
  std::vector<unsigned char> photo(size_t(width) * height * 2);
  for (size_t i = 0; i < photo.size(); ++i) photo[i] = static_cast<unsigned char>(i * 7 + i / 4099);
  return photo;
}

void checkStamp(int width, int height, const char* text, const Placement& p) {
  SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
  std::vector<unsigned char> photo = testPhoto(width, height);
  const std::vector<unsigned char> before = photo;
  ASSERT_EQ(make_photo_timestamp_watermark_to_yuyv(photo.data(), width, height, text), 1);
  // The reference changes nothing outside the stamp's rectangle.
  EXPECT_FALSE(photo == before);
  EXPECT_TRUE(photo == expectedPhoto(before, width, text, p));
}

TEST(TimestampStamp, SetByAspectPlacedAtTheBottomRight) {
  // 16:9 (q = 177): sw = 960 * 4000 / 4608 = 833, padded to even 834;
  // sh = 108 * 2250 / 2592 = 93; margins 150 * 4000 / 4608 = 130 and
  // 150 * 2250 / 2592 = 130; x0 = 3999 - 130 - 834 = 3035 -> 3034; y0 = 2249 - 130 - 93.
  checkStamp(4000, 2250, "2016-01-01 12:00", {1, 834, 93, 3034, 2026});
  // Portrait: the long side still scales the width. x0 = 2249 - 130 - 834 -> 1284.
  checkStamp(2250, 4000, "2016-01-01 12:00", {1, 834, 93, 1284, 3776});
  // 4:3 (q = 133): sw = 1320 * 4000 / 5248 = 1006, sh = 160 * 3000 / 3936 = 121,
  // margins 152 and 152: x0 = 3999 - 152 - 1006 = 2841 -> 2840, y0 = 2999 - 152 - 121.
  checkStamp(4000, 3000, "2016-01-01 12:00", {0, 1006, 121, 2840, 2726});
  // q = 181 is still 16:9: W = 306, sw = 120, sh = 41, margins 58 and 57.
  checkStamp(1810, 1000, "12:00", {1, 120, 41, 1630, 901});
  // q = 182 is 4:3: W = 420, sw = 145 -> 146, sh = 40, margins 69 and 50.
  checkStamp(1820, 1000, "12:00", {0, 146, 40, 1604, 909});
}

TEST(TimestampStamp, StampStartingLeftOfThePhotoIsClipped) {
  // 60 digits, 4:3: W = 5400, sw = 4115 -> 4116, x0 = 3999 - 152 - 4116 = -269 -> -268.
  checkStamp(4000, 3000, std::string(60, '8').c_str(), {0, 4116, 121, -268, 2726});
}

TEST(TimestampStamp, StampReachingTheRightEdgeIsSkippedWithSuccess) {
  // 26 x 25, 4:3, margins 0 and 1; 59 digits: sw = 5310 * 26 / 5248 = 26,
  // x0 = 25 - 26 = -1 -> 0, and 0 + 26 >= 26.
  std::vector<unsigned char> photo = testPhoto(26, 25);
  const std::vector<unsigned char> before = photo;
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(photo.data(), 26, 25, std::string(59, '0').c_str()), 1);
  EXPECT_TRUE(photo == before);
}

TEST(TimestampStamp, RefusalsReturnZeroWithThePhotoUnchanged) {
  std::vector<unsigned char> photo = testPhoto(4000, 3000);
  const std::vector<unsigned char> before = photo;
  unsigned char* px = photo.data();
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, "2016/01/01 12:00"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, "12:00 PM"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, ""), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, nullptr), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(nullptr, 4000, 3000, "12:00"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 0, 3000, "12:00"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, -1, "12:00"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 65536, 32768, "12:00"), 0);  // 2^32 bytes
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 46341, 23171, "12:00"), 0);  // beyond an int
  Symbol* one = GetTimestampSymbol_4_to_3('1');
  EXPECT_EQ(DrawSymbol(px, 65536, 32768, one, 0, 0, 1, 1), 0);
  EXPECT_TRUE(photo == before);
}

}  // namespace
