#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/Memory.h"
#include "watermark/TimestampWatermark.h"

namespace {

// BT.601 studio-swing terms with exact decimal coefficients, truncated toward
// zero: trunc(c * v) = (1000c * v) / 1000 in integers.
int term(int milli, int v) { return milli * v / 1000; }
int lumaOf(int v) { return term(257, v) + term(504, v) + term(98, v) + 16; }
int uTerms(int v) { return term(-148, v) + term(-291, v) + term(439, v); }
int vTerms(int v) { return term(439, v) + term(-368, v) + term(-71, v); }

// Where the stamp goes, worked out by hand for each photo below.
struct Placement {
  int set;     // 0 = 4:3, 1 = 16:9
  int sw, sh;  // scaled stamp size
  int xs, y0;  // top left corner in the photo
};

// Expected photo after stamping `text` at p: nearest-neighbour coverage from
// the glyph image, grey ink (254a + 255) >> 8 as YUYV, blended with the
// coverage into both bytes of each pixel; columns left of the photo dropped.
std::vector<unsigned char> expectedPhoto(std::vector<unsigned char> photo, int width, const char* text,
                                         const Placement& p) {
  unsigned char* wm = nullptr;
  int wmW = 0, wmH = 0;
  CreateTimestampWatermark(text, &wm, &wmW, &wmH, p.set);
  EXPECT_NE(wm, nullptr);
  if (wm == nullptr) return photo;
  const float fy = float(wmH) / float(p.sh), fx = float(wmW) / float(p.sw);
  std::vector<int> a(size_t(p.sw) * p.sh);
  for (int j = 0; j < p.sh; ++j)
    for (int i = 0; i < p.sw; ++i) a[j * p.sw + i] = wm[int(fy * j) * wmW + int(fx * i)];
  galloc_free(wm);
  for (int j = 0; j < p.sh; ++j) {
    for (int i = 0; i < p.sw; i += 2) {
      const int v0 = (254 * a[j * p.sw + i] + 255) >> 8, v1 = (254 * a[j * p.sw + i + 1] + 255) >> 8;
      const int y[2] = {lumaOf(v0), lumaOf(v1)};
      const int chroma[2] = {((uTerms(v0) + uTerms(v1) + 256) >> 1) & 0xFF,
                             ((vTerms(v0) + vTerms(v1) + 256) >> 1) & 0xFF};
      for (int k = 0; k < 2; ++k) {
        const int cov = a[j * p.sw + i + k];
        const int x = p.xs + i + k;
        if (cov == 0 || x < 0) continue;
        unsigned char* px = &photo[2 * (size_t(p.y0 + j) * width + x)];
        px[0] = static_cast<unsigned char>((y[k] * cov + px[0] * (255 - cov)) >> 8);
        px[1] = static_cast<unsigned char>((chroma[k] * cov + px[1] * (255 - cov)) >> 8);
      }
    }
  }
  return photo;
}

// A photo with some structure so the blend's photo term matters.
std::vector<unsigned char> testPhoto(int width, int height) {
  std::vector<unsigned char> photo(size_t(width) * height * 2);
  for (size_t i = 0; i < photo.size(); ++i) photo[i] = static_cast<unsigned char>((i * 7 + i / 4099) & 0xFF);
  return photo;
}

// Bounding box of the bytes that differ.
struct Box {
  int left = 1 << 30, top = 1 << 30, right = -1, bottom = -1;
};
Box changed(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b, int width) {
  Box box;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] == b[i]) continue;
    const int x = int((i / 2) % width), y = int((i / 2) / width);
    box.left = std::min(box.left, x);
    box.right = std::max(box.right, x);
    box.top = std::min(box.top, y);
    box.bottom = std::max(box.bottom, y);
  }
  return box;
}

std::string firstDifference(const std::vector<unsigned char>& got, const std::vector<unsigned char>& want,
                            int width) {
  for (size_t i = 0; i < got.size(); ++i) {
    if (got[i] != want[i]) {
      return "byte " + std::to_string(i % 2) + " of pixel (" + std::to_string((i / 2) % width) + ", " +
             std::to_string((i / 2) / width) + "): " + std::to_string(got[i]) + " instead of " +
             std::to_string(want[i]);
    }
  }
  return "none";
}

void checkStamp(int width, int height, const char* text, const Placement& p) {
  SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
  std::vector<unsigned char> photo = testPhoto(width, height);
  const std::vector<unsigned char> before = photo;
  ASSERT_EQ(make_photo_timestamp_watermark_to_yuyv(photo.data(), width, height, text), 1);
  const Box box = changed(before, photo, width);
  // Only inside the stamp's rectangle, and the ink spans most of it.
  EXPECT_GE(box.left, std::max(p.xs, 0));
  EXPECT_LT(box.right, p.xs + p.sw);
  EXPECT_GE(box.top, p.y0);
  EXPECT_LT(box.bottom, p.y0 + p.sh);
  EXPECT_GT(box.bottom - box.top, p.sh / 2);
  const std::vector<unsigned char> expected = expectedPhoto(before, width, text, p);
  EXPECT_EQ(firstDifference(photo, expected, width), "none");
}

TEST(TimestampStamp, SixteenByNineLandscapeAndPortraitUseTheWideSet) {
  // q = 177. sw = 960 * 4000 / 4608 = 833, padded to the even 834;
  // sh = 108 * 2250 / 2592 = 93; margins 150 * 4000 / 4608 = 130 and
  // 150 * 2250 / 2592 = 130; x0 = 3999 - 130 - 834 = 3035 -> 3034 (even);
  // y0 = 2249 - 130 - 93 = 2026.
  checkStamp(4000, 2250, "2016-01-01 12:00", {1, 834, 93, 3034, 2026});
  // Turned: the long side still scales the width. x0 = 2249 - 130 - 834 = 1285
  // -> 1284; y0 = 3999 - 130 - 93 = 3776.
  checkStamp(2250, 4000, "2016-01-01 12:00", {1, 834, 93, 1284, 3776});
}

TEST(TimestampStamp, FourByThreeUsesTheTallSet) {
  // q = 133. W = 1320: sw = 1320 * 4000 / 5248 = 1006, sh = 160 * 3000 / 3936 = 121;
  // margins 200 * 4000 / 5248 = 152 and 200 * 3000 / 3936 = 152;
  // x0 = 3999 - 152 - 1006 = 2841 -> 2840; y0 = 2999 - 152 - 121 = 2726.
  checkStamp(4000, 3000, "2016-01-01 12:00", {0, 1006, 121, 2840, 2726});
  // The aspect bounds: q = 181 is still 16:9, q = 182 is not.
  // 1810 x 1000, 16:9, W = 4 * 66 + 42 = 306: sw = 306 * 1810 / 4608 = 120,
  // sh = 108 * 1000 / 2592 = 41, margins 58 and 57: x0 = 1809 - 58 - 120 = 1631
  // -> 1630, y0 = 999 - 57 - 41 = 901.
  checkStamp(1810, 1000, "12:00", {1, 120, 41, 1630, 901});
  // 1820 x 1000, 4:3, W = 4 * 90 + 60 = 420: sw = 420 * 1820 / 5248 = 145 -> 146,
  // sh = 160 * 1000 / 3936 = 40, margins 69 and 50: x0 = 1819 - 69 - 146 = 1604,
  // y0 = 999 - 50 - 40 = 909.
  checkStamp(1820, 1000, "12:00", {0, 146, 40, 1604, 909});
}

TEST(TimestampStamp, AStampStartingLeftOfThePhotoIsClippedToIt) {
  // 60 digits, 4:3: W = 5400, sw = 5400 * 4000 / 5248 = 4115 -> 4116,
  // x0 = 3999 - 152 - 4116 = -269 -> -268 (toward zero); y0 = 2726 as above.
  const std::string digits(60, '8');
  checkStamp(4000, 3000, digits.c_str(), {0, 4116, 121, -268, 2726});
}

TEST(TimestampStamp, AStampReachingTheRightEdgeIsSkippedButReportsSuccess) {
  // 26 x 25, 4:3, margins 200 * 26 / 5248 = 0 and 200 * 25 / 3936 = 1; 59 digits:
  // sw = 5310 * 26 / 5248 = 26, x0 = 25 - 0 - 26 = -1 -> 0, and 0 + 26 >= 26.
  std::vector<unsigned char> photo = testPhoto(26, 25);
  const std::vector<unsigned char> before = photo;
  const std::string digits(59, '0');
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(photo.data(), 26, 25, digits.c_str()), 1);
  EXPECT_EQ(photo, before);
}

TEST(TimestampStamp, RefusalsReturnZeroAndLeaveThePhotoAlone) {
  std::vector<unsigned char> photo = testPhoto(4000, 3000);
  const std::vector<unsigned char> before = photo;
  unsigned char* px = photo.data();
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, "2016/01/01 12:00"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, "12:00 PM"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, nullptr), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(nullptr, 4000, 3000, "12:00"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 0, 3000, "12:00"), 0);
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, -1, "12:00"), 0);
  // An empty text makes no stamp at all.
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 4000, 3000, ""), 0);
  // The photo's byte count must fit in 32 bits (checked before anything is read).
  EXPECT_EQ(make_photo_timestamp_watermark_to_yuyv(px, 65536, 32768, "12:00"), 0);
  EXPECT_EQ(photo, before);
}

TEST(TimestampStamp, FullInkGivesTheNearWhiteOfTheQuotedFormula) {
  // At coverage 255 the photo byte is (stamp * 255) >> 8 whatever it was: grey
  // 254 is Y 233, U 129, V 128 (from 1 and 0 in the pair sums), so 232, 128, 127.
  for (int fill : {0, 128}) {
    std::vector<unsigned char> photo(size_t(4000) * 3000 * 2, static_cast<unsigned char>(fill));
    ASSERT_EQ(make_photo_timestamp_watermark_to_yuyv(photo.data(), 4000, 3000, "8888"), 1);
    int fullPairs = 0;
    int maxLuma = 0;
    for (size_t i = 0; i < photo.size(); i += 4) {
      maxLuma = std::max<int>(maxLuma, std::max(photo[i], photo[i + 2]));
      if (photo[i] == 232 && photo[i + 2] == 232) {
        ++fullPairs;
        EXPECT_EQ(photo[i + 1], 128);
        EXPECT_EQ(photo[i + 3], 127);
      }
    }
    EXPECT_GT(fullPairs, 100);
    if (fill == 0) {
      EXPECT_EQ(maxLuma, 232);
    }
  }
}

}  // namespace
