// The exported converters run SIMD kernels where the processor has them and
// finish rows with the C kernels. Whatever the split, the bytes must equal
// the C reference kernels (compiled into this test) on random frames of many
// sizes, tails included.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "image/ColorConvert.h"
#include "image/ConvertRows.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes randomBytes(size_t n, unsigned seed) {
  std::mt19937 rng(seed);
  Bytes b(n);
  for (auto& x : b) x = static_cast<unsigned char>(rng());
  return b;
}

const int kSizes[][2] = {{4, 1},  {8, 2},  {30, 2},  {32, 2},  {33, 3},
                         {64, 4}, {66, 6}, {127, 5}, {640, 8}, {1001, 3}};

}  // namespace

TEST(ConvertKernels, NVReadersMatchTheReference) {
  for (const auto& s : kSizes) {
    const int w = s[0], h = s[1], n = w * h;
    const Bytes src = randomBytes(static_cast<size_t>(n) * 2, static_cast<unsigned>(n));
    for (int uOffset : {0, 1}) {
      SCOPED_TRACE(testing::Message() << w << "x" << h << " uOffset " << uOffset);
      Bytes fast(n * 3 + 16, 0xAB), ref(n * 3 + 16, 0xAB);
      const int r = uOffset == 0 ? color_convert_nv122rgb(src.data(), src.data() + n, fast.data(), w, h)
                                 : color_convert_nv212rgb(src.data(), src.data() + n, fast.data(), w, h);
      ASSERT_EQ(r, 1);
      convert_row::NVQuadToRGBRow_C(src.data(), src.data() + n, ref.data(), n / 4, uOffset);
      ASSERT_EQ(fast, ref);
    }
  }
}

TEST(ConvertKernels, PackedReadersMatchTheReference) {
  for (const auto& s : kSizes) {
    const int w = s[0], h = s[1], n = w * h;
    const Bytes src = randomBytes(static_cast<size_t>(n) * 2, static_cast<unsigned>(n) + 1);
    for (int uOffset : {1, 3}) {
      SCOPED_TRACE(testing::Message() << w << "x" << h << " uOffset " << uOffset);
      Bytes fast(n * 3 + 16, 0xAB), ref(n * 3 + 16, 0xAB);
      const int r = uOffset == 1 ? color_convert_yuyv2rgb(src.data(), fast.data(), w, h)
                                 : color_convert_yvyu2rgb(src.data(), fast.data(), w, h);
      ASSERT_EQ(r, 1);
      convert_row::Packed422ToRGBRow_C(src.data(), ref.data(), n / 2, uOffset, 4 - uOffset);
      ASSERT_EQ(fast, ref);
    }
  }
}

TEST(ConvertKernels, NVWritersMatchTheReference) {
  for (const auto& s : kSizes) {
    const int w = s[0], h = s[1], n = w * h;
    if (h < 2) continue;
    const Bytes rgb = randomBytes(static_cast<size_t>(n) * 3, static_cast<unsigned>(n) + 2);
    for (int uOffset : {0, 1}) {
      SCOPED_TRACE(testing::Message() << w << "x" << h << " uOffset " << uOffset);
      Bytes fast(n * 2 + 16, 0xAB), ref(n * 2 + 16, 0xAB);
      const int r = uOffset == 0 ? color_convert_rgb2nv12(rgb.data(), fast.data(), fast.data() + n, w, h)
                                 : color_convert_rgb2nv21(rgb.data(), fast.data(), fast.data() + n, w, h);
      ASSERT_EQ(r, 1);
      unsigned char* chroma = ref.data() + n;
      for (int row = 0; row + 1 < h; row += 2) {
        convert_row::RGBToNVBlockRow_C(rgb.data() + 3 * w * row, rgb.data() + 3 * w * (row + 1),
                                       ref.data() + w * row, ref.data() + w * (row + 1), chroma, w / 2,
                                       uOffset);
        chroma += 2 * (w / 2);
      }
      ASSERT_EQ(fast, ref);
    }
  }
}
