#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "imgproc/Blur.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes pixels(std::initializer_list<int> rgba) {
  Bytes v;
  for (int c : rgba) v.push_back((uint8_t)c);
  return v;
}

}  // namespace

TEST(AlphaBlend, QuotedValues) {
  // alpha 255, white: (255 * 255 + p) >> 8 -> 254 for 0, 255 for 255.
  Bytes px = pixels({0, 255, 0, 9, 255, 0, 255, 77});
  alpha_blend(px.data(), 2, 255, 255, 255, 255);
  EXPECT_EQ(px, pixels({254, 255, 254, 9, 255, 254, 255, 77}));

  // alpha 128: (128 * 200 + 100 * 128) >> 8 = 150, (128 * 10 + 30 * 128) >> 8 = 20.
  px = pixels({100, 30, 255, 1});
  alpha_blend(px.data(), 1, 200, 10, 0, 128);
  EXPECT_EQ(px, pixels({150, 20, 127, 1}));

  // alpha 0 leaves the scalar form unchanged.
  px = pixels({10, 20, 30, 40});
  alpha_blend(px.data(), 1, 255, 255, 255, 0);
  EXPECT_EQ(px, pixels({10, 20, 30, 40}));

  // The colour product wraps at 16 bits: 255 * 300 = 76500 -> 10964 -> 42.
  px = pixels({0, 0, 0, 0});
  alpha_blend(px.data(), 1, 300, 0, 0, 255);
  EXPECT_EQ(px[0], 42);
}

TEST(AlphaBlendNeon, WholeGroupsOnlyAndAlphaZeroBlackens) {
  // 1,000,003 pixels: the last three stay as they were.
  const int count = 1000003;
  Bytes px(count * 4);
  for (size_t i = 0; i < px.size(); ++i) px[i] = (uint8_t)(i * 7);
  Bytes expect = px;
  alpha_blend(expect.data(), count - 3, 40, 80, 120, 200);
  alpha_blend_neon(px.data(), count, 40, 80, 120, 200);
  EXPECT_EQ(px, expect);
  for (int i = count - 3; i < count; ++i)
    for (int c = 0; c < 4; ++c) ASSERT_EQ(px[i * 4 + c], (uint8_t)((i * 4 + c) * 7));

  // alpha 0: factor 256 wraps to 0 in the 8-bit lane, colour channels go black.
  Bytes small(9 * 4, 200);
  alpha_blend_neon(small.data(), 9, 255, 255, 255, 0);
  for (int i = 0; i < 8; ++i)
    EXPECT_EQ(pixels({small[i * 4], small[i * 4 + 1], small[i * 4 + 2], small[i * 4 + 3]}),
              pixels({0, 0, 0, 200}));
  EXPECT_EQ(small[32], 200);  // the tail pixel

  // Counts -7..7 do nothing; so does any negative count.
  Bytes seven(8 * 4, 100);
  for (int n : {7, 1, 0, -7, -8, -100}) alpha_blend_neon(seven.data(), n, 0, 0, 0, 255);
  // A count whose bytes do not fit in 32 bits is refused by both forms.
  alpha_blend_neon(seven.data(), 0x40000000, 0, 0, 0, 255);
  alpha_blend(seven.data(), 0x40000000, 0, 0, 0, 255);
  alpha_blend(nullptr, 8, 0, 0, 0, 255);
  alpha_blend_neon(nullptr, 8, 0, 0, 0, 255);
  EXPECT_EQ(seven, Bytes(8 * 4, 100));
}

TEST(AlphaBlendNeon, EqualsScalarOnEveryLengthUpTo40) {
  std::mt19937 rng(31);
  for (int n = 0; n <= 40; ++n) {
    for (int trial = 0; trial < 20; ++trial) {
      Bytes px(n * 4);
      for (auto& b : px) b = (uint8_t)rng();
      const int alpha = 1 + (int)(rng() % 255), r = rng() % 256, g = rng() % 256, b = rng() % 256;
      Bytes expect = px;
      alpha_blend(expect.data(), n / 8 * 8, r, g, b, alpha);
      alpha_blend_neon(px.data(), n, r, g, b, alpha);
      ASSERT_EQ(px, expect) << "count " << n << " alpha " << alpha;
    }
  }
  // The 16-bit colour product wraps the same way in both.
  Bytes a(8 * 4, 3), b = a;
  alpha_blend(a.data(), 8, 300, 1000, 70000, 255);
  alpha_blend_neon(b.data(), 8, 300, 1000, 70000, 255);
  EXPECT_EQ(a, b);
}
