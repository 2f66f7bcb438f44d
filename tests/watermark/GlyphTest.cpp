#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/Memory.h"
#include "watermark/TimestampWatermark.h"

namespace {

struct SetSizes {
  Symbol* (*lookup)(char);
  int digitWidth;
  int narrowWidth;
  int height;
};
const SetSizes kSets[2] = {{GetTimestampSymbol_4_to_3, 90, 60, 160},
                           {GetTimestampSymbol_16_to_9, 66, 42, 108}};

TEST(TimestampGlyphs, BothSetsHaveTheTabulatedSizesAndLookLikeDarkGlyphsOnPaper) {
  for (const SetSizes& set : kSets) {
    for (char c : std::string("0123456789:- ")) {
      SCOPED_TRACE(std::string("character '") + c + "' height " + std::to_string(set.height));
      const Symbol* sym = set.lookup(c);
      ASSERT_NE(sym, nullptr);
      EXPECT_EQ(sym->character & 0xFF, static_cast<unsigned char>(c));
      EXPECT_EQ(sym->width, (c >= '0' && c <= '9') ? set.digitWidth : set.narrowWidth);
      EXPECT_EQ(sym->height, set.height);
      if (c == ' ') {
        EXPECT_EQ(sym->bitmap, nullptr);
        continue;
      }
      ASSERT_NE(sym->bitmap, nullptr);
      const int w = sym->width, h = sym->height;
      // Paper all round the border, real ink inside.
      int darkest = 255;
      for (int x = 0; x < w; ++x) {
        EXPECT_EQ(sym->bitmap[x], 255);
        EXPECT_EQ(sym->bitmap[(h - 1) * w + x], 255);
      }
      for (int i = 0; i < w * h; ++i) darkest = std::min<int>(darkest, sym->bitmap[i]);
      EXPECT_LT(darkest, 16);
    }
  }
}

TEST(TimestampGlyphs, SetsDifferAndForeignCharactersAreNotFound) {
  EXPECT_NE(GetTimestampSymbol_4_to_3('5'), GetTimestampSymbol_16_to_9('5'));
  for (char c : std::string("aZ/.+_\x7f\x80\xff")) {
    EXPECT_EQ(GetTimestampSymbol_4_to_3(c), nullptr) << int(c);
    EXPECT_EQ(GetTimestampSymbol_16_to_9(c), nullptr) << int(c);
  }
  EXPECT_EQ(GetTimestampSymbol_4_to_3('\0'), nullptr);
}

TEST(TimestampWatermarkImage, DateTimeTextHasTheQuotedSizeInBothSets) {
  unsigned char* out = nullptr;
  int w = -1, h = -1;
  // 12 digits x 66 + three of ":" "-" "-" x 42 + blank 42.
  CreateTimestampWatermark("2016-01-01 12:00", &out, &w, &h, 1);
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(w, 960);
  EXPECT_EQ(h, 108);
  galloc_free(out);
  CreateTimestampWatermark("2016-01-01 12:00", &out, &w, &h, 0);
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(w, 12 * 90 + 4 * 60);
  EXPECT_EQ(h, 160);
  galloc_free(out);
}

TEST(TimestampWatermarkImage, EachGlyphLandsInvertedAtItsAdvanceAndTheBlankStaysEmpty) {
  unsigned char* out = nullptr;
  int w = 0, h = 0;
  const char* text = "1- 0";
  CreateTimestampWatermark(text, &out, &w, &h, 1);
  ASSERT_NE(out, nullptr);
  ASSERT_EQ(w, 66 + 42 + 42 + 66);
  ASSERT_EQ(h, 108);
  const int starts[] = {0, 66, 108, 150};
  for (int k = 0; k < 4; ++k) {
    const Symbol* sym = GetTimestampSymbol_16_to_9(text[k]);
    for (int r = 0; r < h; ++r) {
      for (int c = 0; c < sym->width; ++c) {
        const int expected = sym->bitmap ? 255 - sym->bitmap[r * sym->width + c] : 0;
        ASSERT_EQ(out[r * w + starts[k] + c], expected) << "glyph " << k << " at " << r << "," << c;
      }
    }
  }
  galloc_free(out);
}

TEST(TimestampWatermarkImage, RefusalsLeaveTheOutputsNullAndZero) {
  unsigned char sentinelByte = 0;
  unsigned char* out = &sentinelByte;
  int w = 7, h = 7;
  // Null arguments: nothing is written at all.
  CreateTimestampWatermark(nullptr, &out, &w, &h, 0);
  CreateTimestampWatermark("12", &out, nullptr, &h, 0);
  EXPECT_EQ(out, &sentinelByte);
  EXPECT_EQ(w, 7);
  EXPECT_EQ(h, 7);
  // Unsupported character, empty text and an unknown set: cleared outputs.
  for (const char* text : {"12/30", "", "12"}) {
    out = &sentinelByte;
    w = h = 7;
    CreateTimestampWatermark(text, &out, &w, &h, std::strcmp(text, "12") == 0 ? 2 : 0);
    EXPECT_EQ(out, nullptr) << text;
    EXPECT_EQ(w, 0);
    EXPECT_EQ(h, 0);
  }
}

TEST(DrawSymbolTest, CopiesTheInvertedGlyphAndReadsItContiguouslyWhenClipped) {
  const unsigned char bits[] = {10, 20, 30, 40, 50, 60};
  Symbol sym = {'x', 3, 2, bits};
  std::vector<unsigned char> dst(4 * 3, 7);

  EXPECT_EQ(DrawSymbol(dst.data(), 4, 3, &sym, 1, 1, 3, 2), 1);
  const std::vector<unsigned char> whole = {7, 7, 7, 7, 7, 245, 235, 225, 7, 215, 205, 195};
  EXPECT_EQ(dst, whole);

  // Clipped one column on the left: the clipped width (2) becomes the row
  // length, so the glyph bytes are taken 10, 20 | 30, 40 rather than skipped.
  std::fill(dst.begin(), dst.end(), 7);
  EXPECT_EQ(DrawSymbol(dst.data(), 4, 3, &sym, -1, 0, 3, 2), 1);
  const std::vector<unsigned char> clipped = {245, 235, 7, 7, 225, 215, 7, 7, 7, 7, 7, 7};
  EXPECT_EQ(dst, clipped);

  // Fully outside, the blank, or an area larger than the bitmap: untouched.
  std::fill(dst.begin(), dst.end(), 7);
  Symbol blank = {' ', 3, 2, nullptr};
  EXPECT_EQ(DrawSymbol(dst.data(), 4, 3, &sym, 4, 0, 3, 2), 0);
  EXPECT_EQ(DrawSymbol(dst.data(), 4, 3, &blank, 0, 0, 3, 2), 0);
  EXPECT_EQ(DrawSymbol(dst.data(), 4, 3, &sym, 0, 0, 4, 3), 0);
  EXPECT_EQ(DrawSymbol(nullptr, 4, 3, &sym, 0, 0, 3, 2), 0);
  EXPECT_EQ(dst, std::vector<unsigned char>(12, 7));
}

}  // namespace
