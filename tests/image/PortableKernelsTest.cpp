// The portable (table-free) kernels against the table C kernels, over every
// (Y, U, V) and every (R, G, B) there is, then on short and odd counts where
// the portable kernel must stop at a whole block and the C kernel finish.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "PortableBuilds.h"
#include "image/ConvertRows.h"

using namespace convert_row;

#if OV_TEST_SHUFFLE_BUILD
PortableBuild shuffleBuild();
#endif

std::vector<PortableBuild> portableBuilds() {
  std::vector<PortableBuild> builds = {
      {"default build", &NVQuadToRGBRow_Portable, &Packed422ToRGBRow_Portable, &RGBToNVBlockRow_Portable}};
#if OV_TEST_SHUFFLE_BUILD
  if (__builtin_cpu_supports("ssse3")) builds.push_back(shuffleBuild());
#endif
  return builds;
}

namespace {

using Bytes = std::vector<uint8_t>;
constexpr int kBlock = 64;  // pixels the portable kernels do at a time

// Pixels of the same frame must agree; reports the first pixel that does not.
void expectSameRGB(const Bytes& a, const Bytes& b) {
  ASSERT_EQ(a.size(), b.size());
  for (size_t i = 0; i < a.size(); i += 3)
    if (a[i] != b[i] || a[i + 1] != b[i + 1] || a[i + 2] != b[i + 2])
      FAIL() << "pixel " << i / 3 << ": " << int(a[i]) << "," << int(a[i + 1]) << "," << int(a[i + 2])
             << " vs " << int(b[i]) << "," << int(b[i + 1]) << "," << int(b[i + 2]);
}

}  // namespace

// NV21: one quad per (U, V) and four luma values, 64 quads per pair, so all
// 2^24 (Y, U, V) triples appear once.
TEST(PortableKernels, NVReaderMatchesTablesForEveryYUV) {
  const int quads = 65536 * 64;
  Bytes y(4 * static_cast<size_t>(quads)), vu(2 * static_cast<size_t>(quads));
  for (int q = 0; q < quads; ++q) {
    const int pair = q >> 6;
    vu[2 * q] = static_cast<uint8_t>(pair >> 8);  // V first
    vu[2 * q + 1] = static_cast<uint8_t>(pair);
    for (int k = 0; k < 4; ++k) y[4 * q + k] = static_cast<uint8_t>(4 * (q & 63) + k);
  }
  Bytes ref(12 * static_cast<size_t>(quads));
  NVQuadToRGBRow_C(y.data(), vu.data(), ref.data(), quads, 1);
  for (const PortableBuild& build : portableBuilds()) {
    SCOPED_TRACE(build.name);
    Bytes fast(ref.size());
    ASSERT_EQ(build.nvToRGB(y.data(), vu.data(), fast.data(), quads, 1), quads);
    expectSameRGB(fast, ref);
  }
}

// YUYV: 128 pairs per (U, V) cover all 256 luma values.
TEST(PortableKernels, PackedReaderMatchesTablesForEveryYUV) {
  const int pairs = 65536 * 128;
  Bytes src(4 * static_cast<size_t>(pairs));
  for (int p = 0; p < pairs; ++p) {
    const int uv = p >> 7;
    src[4 * p] = static_cast<uint8_t>(2 * (p & 127));
    src[4 * p + 1] = static_cast<uint8_t>(uv >> 8);
    src[4 * p + 2] = static_cast<uint8_t>(2 * (p & 127) + 1);
    src[4 * p + 3] = static_cast<uint8_t>(uv);
  }
  Bytes ref(6 * static_cast<size_t>(pairs));
  Packed422ToRGBRow_C(src.data(), ref.data(), pairs, 1, 3);
  for (const PortableBuild& build : portableBuilds()) {
    SCOPED_TRACE(build.name);
    Bytes fast(ref.size());
    ASSERT_EQ(build.packedToRGB(src.data(), fast.data(), pairs, 1), pairs);
    expectSameRGB(fast, ref);
  }
}

// A 4096 x 4096 frame holding every (R, G, B) once; the 2x2 blocks average
// four different colours each.
TEST(PortableKernels, NVWriterMatchesTablesForEveryRGB) {
  const int w = 4096, h = 4096;
  Bytes rgb(3 * static_cast<size_t>(w) * h);
  for (size_t i = 0; i < static_cast<size_t>(w) * h; ++i) {
    rgb[3 * i] = static_cast<uint8_t>(i >> 16);
    rgb[3 * i + 1] = static_cast<uint8_t>(i >> 8);
    rgb[3 * i + 2] = static_cast<uint8_t>(i);
  }
  Bytes ref(static_cast<size_t>(w) * h * 3 / 2);
  for (int row = 0; row < h; row += 2) {
    const uint8_t* src = rgb.data() + 3 * static_cast<size_t>(w) * row;
    const size_t luma = static_cast<size_t>(w) * row, chroma = static_cast<size_t>(w) * h + luma / 2;
    RGBToNVBlockRow_C(src, src + 3 * w, ref.data() + luma, ref.data() + luma + w, ref.data() + chroma, w / 2,
                      0);
  }
  for (const PortableBuild& build : portableBuilds()) {
    SCOPED_TRACE(build.name);
    Bytes fast(ref.size());
    for (int row = 0; row < h; row += 2) {
      const uint8_t* src = rgb.data() + 3 * static_cast<size_t>(w) * row;
      const size_t luma = static_cast<size_t>(w) * row, chroma = static_cast<size_t>(w) * h + luma / 2;
      ASSERT_EQ(build.rgbToNV(src, src + 3 * w, fast.data() + luma, fast.data() + luma + w,
                              fast.data() + chroma, w / 2, 0),
                w / 2);
    }
    for (size_t i = 0; i < fast.size(); ++i)
      if (fast[i] != ref[i]) FAIL() << "byte " << i << ": " << int(fast[i]) << " vs " << int(ref[i]);
  }
}

// Counts around the block size, both byte orders: the portable kernel does
// whole blocks only, touches nothing past them, and with the C kernel
// finishing the row gives the C kernel's bytes.
TEST(PortableKernels, StopAtWholeBlocksAndLeaveTheRest) {
  const int counts[] = {0, 1, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 129};
  std::mt19937 rng(5);
  for (const PortableBuild& build : portableBuilds())
    for (int n : counts) {
      SCOPED_TRACE(testing::Message() << build.name << ", " << n << " groups");
      Bytes src(12 * static_cast<size_t>(n) + 64);
      for (auto& b : src) b = static_cast<uint8_t>(rng());
      for (int order = 0; order < 2; ++order) {
        // NV reader: quads of 4 pixels.
        Bytes a(12 * static_cast<size_t>(n) + 16, 0xAB), b(a);
        const int q = build.nvToRGB(src.data(), src.data() + 4 * n, a.data(), n, order);
        EXPECT_EQ(q, n / (kBlock / 4) * (kBlock / 4));
        EXPECT_EQ(a[12 * q], 0xAB);
        NVQuadToRGBRow_C(src.data() + 4 * q, src.data() + 4 * n + 2 * q, a.data() + 12 * q, n - q, order);
        NVQuadToRGBRow_C(src.data(), src.data() + 4 * n, b.data(), n, order);
        EXPECT_EQ(a, b);
        // Packed reader: pairs of 2 pixels.
        const int u = order == 0 ? 1 : 3;
        Bytes c(6 * static_cast<size_t>(n) + 16, 0xAB), d(c);
        const int p = build.packedToRGB(src.data(), c.data(), n, u);
        EXPECT_EQ(p, n / (kBlock / 2) * (kBlock / 2));
        EXPECT_EQ(c[6 * p], 0xAB);
        Packed422ToRGBRow_C(src.data() + 4 * p, c.data() + 6 * p, n - p, u, 4 - u);
        Packed422ToRGBRow_C(src.data(), d.data(), n, u, 4 - u);
        EXPECT_EQ(c, d);
        // NV writer: 2x2 blocks over two rows of 2n pixels.
        const uint8_t* row1 = src.data() + 6 * n;
        Bytes e(6 * static_cast<size_t>(n) + 16, 0xAB), f(e);
        uint8_t *ey = e.data(), *fy = f.data();
        const int k = build.rgbToNV(src.data(), row1, ey, ey + 2 * n, ey + 4 * n, n, order);
        EXPECT_EQ(k, n / (kBlock / 2) * (kBlock / 2));
        EXPECT_EQ(ey[4 * n + 2 * k], 0xAB);
        RGBToNVBlockRow_C(src.data() + 6 * k, row1 + 6 * k, ey + 2 * k, ey + 2 * n + 2 * k,
                          ey + 4 * n + 2 * k, n - k, order);
        RGBToNVBlockRow_C(src.data(), row1, fy, fy + 2 * n, fy + 4 * n, n, order);
        EXPECT_EQ(e, f);
      }
    }
}
