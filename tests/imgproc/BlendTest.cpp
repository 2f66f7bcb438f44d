#include <gtest/gtest.h>

#include <random>

#include "imgproc/Blur.h"
#include "tests/imgproc/BlurReference.h"

using ref::Bytes;

TEST(AlphaBlend, QuotedValuesInBothFormsAndTheUntouchedTail) {
  const struct {
    Bytes in;
    int colour[3], alpha;
    Bytes scalar, vector;
  } cases[] = {
      // (255 * 255 + p * 1) >> 8: 0 -> 254, 255 -> 255; byte 3 is never touched.
      {{0, 255, 0, 9}, {255, 255, 255}, 255, {254, 255, 254, 9}, {254, 255, 254, 9}},
      // (128 * 200 + 100 * 128) >> 8 = 150, (128 * 10 + 30 * 128) >> 8 = 20.
      {{100, 30, 255, 1}, {200, 10, 0}, 128, {150, 20, 127, 1}, {150, 20, 127, 1}},
      // alpha 0: a no-op for the scalar form; 256 in an 8-bit lane is 0: black.
      {{10, 20, 30, 40}, {255, 255, 255}, 0, {10, 20, 30, 40}, {0, 0, 0, 40}},
      // The colour product wraps at 16 bits: 255 * 300 = 76500 -> 10964 -> 42.
      {{0, 0, 0, 0}, {300, 0, 0}, 255, {42, 0, 0, 0}, {42, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    // Nine equal pixels: the vector form blends the first eight only.
    Bytes scalar(9 * 4);
    for (int i = 0; i < 9 * 4; ++i) scalar[i] = c.in[i % 4];
    Bytes vector = scalar;
    alpha_blend(scalar.data(), 9, c.colour[0], c.colour[1], c.colour[2], c.alpha);
    alpha_blend_neon(vector.data(), 9, c.colour[0], c.colour[1], c.colour[2], c.alpha);
    for (int i = 0; i < 9 * 4; ++i) {
      EXPECT_EQ(scalar[i], c.scalar[i % 4]) << "alpha " << c.alpha << " byte " << i;
      EXPECT_EQ(vector[i], (i < 32 ? c.vector : c.in)[i % 4]) << "alpha " << c.alpha << " byte " << i;
    }
  }
}

TEST(AlphaBlend, BothFormsFollowTheFormulaOnEveryLengthUpTo40) {
  std::mt19937 rng(31);
  for (int n = 0; n <= 40; ++n)
    for (int trial = 0; trial < 20; ++trial) {
      const Bytes px = ref::randomBytes(rng, n * 4);
      const int alpha = trial == 0 ? 0 : int(rng() % 256), limit = trial % 2 ? 256 : 70000;
      const int colour[3] = {int(rng() % limit), int(rng() % limit), int(rng() % limit)};
      Bytes scalar = px, vector = px;
      alpha_blend(scalar.data(), n, colour[0], colour[1], colour[2], alpha);
      alpha_blend_neon(vector.data(), n, colour[0], colour[1], colour[2], alpha);
      ASSERT_EQ(scalar, ref::blend(px, n, colour, alpha, false)) << "count " << n << " alpha " << alpha;
      ASSERT_EQ(vector, ref::blend(px, n, colour, alpha, true)) << "count " << n << " alpha " << alpha;
    }
}
