// The exported converters run SIMD kernels where the processor has them and
// finish rows with the C kernels. Whatever the split, the bytes must equal
// the C reference kernels (compiled into this test) on random frames of many
// sizes, tails included.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#include "image/ColorConvert.h"
#include "image/ConvertRows.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Run = std::function<void(const unsigned char* src, unsigned char* dst, int w, int h, int variant)>;

// Runs `fast` (the exported converter) and `ref` (the C kernels) on the same
// random source for every size and both byte orders; outputs must match.
void compare(size_t srcPerPixel, size_t dstPerPixel, const int variants[2], const Run& fast, const Run& ref) {
  const int sizes[][2] = {{4, 2}, {30, 2}, {32, 2}, {33, 3}, {64, 4}, {66, 6}, {127, 5}, {640, 8}, {1001, 3}};
  for (const auto& s : sizes) {
    const int w = s[0], h = s[1], n = w * h;
    std::mt19937 rng(static_cast<unsigned>(n));
    Bytes src(n * srcPerPixel);
    for (auto& b : src) b = static_cast<unsigned char>(rng());
    for (int k = 0; k < 2; ++k) {
      SCOPED_TRACE(testing::Message() << w << "x" << h << " variant " << variants[k]);
      Bytes a(n * dstPerPixel + 16, 0xAB), b(n * dstPerPixel + 16, 0xAB);
      fast(src.data(), a.data(), w, h, variants[k]);
      ref(src.data(), b.data(), w, h, variants[k]);
      ASSERT_EQ(a, b);
    }
  }
}

}  // namespace

TEST(ConvertKernels, NVReadersMatchTheReference) {
  const int uOffsets[2] = {0, 1};
  compare(
      2, 3, uOffsets,
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        ASSERT_EQ(u == 0 ? color_convert_nv122rgb(s, s + w * h, d, w, h)
                         : color_convert_nv212rgb(s, s + w * h, d, w, h),
                  1);
      },
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        convert_row::NVQuadToRGBRow_C(s, s + w * h, d, w * h / 4, u);
      });
}

TEST(ConvertKernels, PackedReadersMatchTheReference) {
  const int uOffsets[2] = {1, 3};
  compare(
      2, 3, uOffsets,
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        ASSERT_EQ(u == 1 ? color_convert_yuyv2rgb(s, d, w, h) : color_convert_yvyu2rgb(s, d, w, h), 1);
      },
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        convert_row::Packed422ToRGBRow_C(s, d, w * h / 2, u, 4 - u);
      });
}

TEST(ConvertKernels, NVWritersMatchTheReference) {
  const int uOffsets[2] = {0, 1};
  compare(
      3, 2, uOffsets,
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        ASSERT_EQ(u == 0 ? color_convert_rgb2nv12(s, d, d + w * h, w, h)
                         : color_convert_rgb2nv21(s, d, d + w * h, w, h),
                  1);
      },
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        unsigned char* chroma = d + w * h;
        for (int row = 0; row + 1 < h; row += 2, chroma += 2 * (w / 2))
          convert_row::RGBToNVBlockRow_C(s + 3 * w * row, s + 3 * w * (row + 1), d + w * row,
                                         d + w * (row + 1), chroma, w / 2, u);
      });
}

TEST(ConvertKernels, ThreePlaneReaderMatchesTheReference) {
  const int unused[2] = {0, 0};
  compare(
      2, 3, unused,
      [](const unsigned char* s, unsigned char* d, int w, int h, int) {
        const int n = w * h;
        ASSERT_EQ(color_convert_yv12oryu122rgb(s, s + n, s + n + n / 4, d, w, h), 1);
      },
      [](const unsigned char* s, unsigned char* d, int w, int h, int) {
        const int n = w * h;
        convert_row::I420QuadToRGBRow_C(s, s + n, s + n + n / 4, d, n / 4);
      });
}

TEST(ConvertKernels, PackedWritersMatchTheReference) {
  const int uOffsets[2] = {1, 3};
  compare(
      3, 2, uOffsets,
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        ASSERT_EQ(u == 1 ? color_convert_rgb2yuyv(s, d, w, h) : color_convert_rgb2yvyu(s, d, w, h), 1);
      },
      [](const unsigned char* s, unsigned char* d, int w, int h, int u) {
        convert_row::RGBToPacked422Row_C(s, d, w * h / 2, u, 4 - u);
      });
}
