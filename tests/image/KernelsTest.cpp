// Every build of the block kernels (portable, SSSE3, NEON) against the table C
// kernels over every (Y, U, V) and every (R, G, B), plus the exported
// converters with whatever kernel this processor gets. Each run ends in a
// partial block, which the block kernel leaves to the C kernel.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "KernelBuilds.h"
#include "image/ColorConvert.h"
#include "image/ConvertRows.h"

using namespace orvan::convert_row;

#if OV_TEST_SHUFFLE_BUILD
KernelBuild shuffleBuild();
#endif
#if OV_TEST_NEON_SIMDE_BUILD
KernelBuild neonSimdeBuild();
#endif

std::vector<KernelBuild> kernelBuilds() {
  std::vector<KernelBuild> builds = {{"portable build", &NVQuadToRGBRow_Portable, nullptr,
                                      &Packed422ToRGBRow_Portable, nullptr, &RGBToNVBlockRow_Portable,
                                      nullptr}};
#if OV_TEST_SHUFFLE_BUILD
  if (__builtin_cpu_supports("ssse3")) builds.push_back(shuffleBuild());
#endif
#if OV_HAVE_SSSE3_ROWS
  if (HasSSSE3())
    builds.push_back({"SSSE3", &NVQuadToRGBRow_SSSE3, &I420QuadToRGBRow_SSSE3, &Packed422ToRGBRow_SSSE3,
                      &RGBToPacked422Row_SSSE3, &RGBToNVBlockRow_SSSE3, nullptr});
#endif
#if OV_HAVE_NEON_ROWS
  builds.push_back({"NEON", &NVQuadToRGBRow_NEON, &I420QuadToRGBRow_NEON, &Packed422ToRGBRow_NEON,
                    &RGBToPacked422Row_NEON, &RGBToNVBlockRow_NEON, &SplitPairsRow_NEON});
#elif OV_TEST_NEON_SIMDE_BUILD
  builds.push_back(neonSimdeBuild());
#endif
  return builds;
}

namespace {

using Bytes = std::vector<uint8_t>;

// `fast(out)` converts all `groups` groups or stops at a whole block (fewer
// than 64 short) and returns how many it did; `ref(out, first, count)` is the
// C kernel from group `first`. The finished output must equal `ref`'s.
template <class Fast, class Ref>
void expectSame(const std::string& name, int groups, size_t outBytes, Fast fast, Ref ref) {
  SCOPED_TRACE(name);
  Bytes want(outBytes), got(outBytes);
  ref(want.data(), 0, groups);
  const int done = fast(got.data());
  ASSERT_TRUE(done <= groups && groups - done < 64) << done << " of " << groups;
  if (done < groups) ref(got.data(), done, groups - done);
  const size_t at = std::mismatch(got.begin(), got.end(), want.begin()).first - got.begin();
  ASSERT_EQ(at, outBytes) << "byte " << at << ": " << int(got[at]) << " vs " << int(want[at]);
}

std::string nameOf(const KernelBuild& b, const char* what, int uOffset) {
  return std::string(b.name) + " " + what + " (chroma offset " + std::to_string(uOffset) + ")";
}

}  // namespace

TEST(Kernels, BlockKernelsMatchTheTablesOnEveryInput) {
  const std::vector<KernelBuild> builds = kernelBuilds();
  {  // 4:2:0 readers: 64 quads per (U, V) take all 256 luma values.
    const int quads = 65536 * 64 + 5;
    Bytes y(4 * size_t(quads)), pairs(2 * size_t(quads)), u(quads), v(quads);
    for (int q = 0; q < quads; ++q) {
      pairs[2 * q] = v[q] = uint8_t(q >> 14);
      pairs[2 * q + 1] = u[q] = uint8_t(q >> 6);
      for (int k = 0; k < 4; ++k) y[4 * q + k] = uint8_t(4 * q + k);
    }
    for (int uOffset : {0, 1}) {
      auto ref = [&](uint8_t* out, int f, int n) {
        NVQuadToRGBRow_C(&y[4 * f], &pairs[2 * f], out + 12 * f, n, uOffset);
      };
      for (const KernelBuild& b : builds)
        if (b.nvToRGB)
          expectSame(
              nameOf(b, "NV reader", uOffset), quads, 12 * size_t(quads),
              [&](uint8_t* out) { return b.nvToRGB(y.data(), pairs.data(), out, quads, uOffset); }, ref);
    }
    auto ref = [&](uint8_t* out, int f, int n) {
      I420QuadToRGBRow_C(&y[4 * f], &u[f], &v[f], out + 12 * f, n);
    };
    for (const KernelBuild& b : builds)
      if (b.i420ToRGB)
        expectSame(
            nameOf(b, "three-plane reader", 0), quads, 12 * size_t(quads),
            [&](uint8_t* out) { return b.i420ToRGB(y.data(), u.data(), v.data(), out, quads); }, ref);
    expectSame(
        "exported NV21 reader", quads, 12 * size_t(quads),
        [&](uint8_t* out) {
          return color_convert_nv212rgb(y.data(), pairs.data(), out, 4 * quads, 1) * quads;
        },
        [&](uint8_t* out, int f, int n) { NVQuadToRGBRow_C(&y[4 * f], &pairs[2 * f], out + 12 * f, n, 1); });
    expectSame(
        "exported three-plane reader", quads, 12 * size_t(quads),
        [&](uint8_t* out) {
          return color_convert_yv12oryu122rgb(y.data(), u.data(), v.data(), out, 4 * quads, 1) * quads;
        },
        ref);
  }
  {  // YUYV and YVYU readers: 128 pairs per chroma pair take all 256 luma values.
    const int pairs = 65536 * 128 + 5;
    Bytes src(4 * size_t(pairs));
    for (int p = 0; p < pairs; ++p) {
      src[4 * p] = uint8_t(2 * p);
      src[4 * p + 1] = uint8_t(p >> 15);
      src[4 * p + 2] = uint8_t(2 * p + 1);
      src[4 * p + 3] = uint8_t(p >> 7);
    }
    for (int uOffset : {1, 3}) {
      auto ref = [&](uint8_t* out, int f, int n) {
        Packed422ToRGBRow_C(&src[4 * f], out + 6 * f, n, uOffset, 4 - uOffset);
      };
      for (const KernelBuild& b : builds)
        if (b.packedToRGB)
          expectSame(
              nameOf(b, "4:2:2 reader", uOffset), pairs, 6 * size_t(pairs),
              [&](uint8_t* out) { return b.packedToRGB(src.data(), out, pairs, uOffset); }, ref);
    }
    expectSame(
        "exported YUYV reader", pairs, 6 * size_t(pairs),
        [&](uint8_t* out) { return color_convert_yuyv2rgb(src.data(), out, 2 * pairs, 1) * pairs; },
        [&](uint8_t* out, int f, int n) { Packed422ToRGBRow_C(&src[4 * f], out + 6 * f, n, 1, 3); });
  }
  {  // Writers: two rows of w pixels holding every (R, G, B); each pair and
     // 2x2 block takes different colours.
    const int w = (1 << 23) + 10, blocks = w / 2;
    Bytes rgb(6 * size_t(w));
    for (size_t i = 0; i < 2 * size_t(w); ++i) {
      rgb[3 * i] = uint8_t(i >> 16);
      rgb[3 * i + 1] = uint8_t(i >> 8);
      rgb[3 * i + 2] = uint8_t(i);
    }
    const uint8_t* row1 = &rgb[3 * size_t(w)];
    for (int uOffset : {0, 1}) {  // NV: two luma rows, then chroma
      auto ref = [&](uint8_t* out, int f, int n) {
        RGBToNVBlockRow_C(&rgb[6 * f], row1 + 6 * f, out + 2 * f, out + w + 2 * f, out + 2 * w + 2 * f, n,
                          uOffset);
      };
      for (const KernelBuild& b : builds)
        if (b.rgbToNV)
          expectSame(
              nameOf(b, "NV writer", uOffset), blocks, 3 * size_t(w),
              [&](uint8_t* out) {
                return b.rgbToNV(rgb.data(), row1, out, out + w, out + 2 * w, blocks, uOffset);
              },
              ref);
      if (uOffset == 0)
        expectSame(
            "exported NV12 writer", blocks, 3 * size_t(w),
            [&](uint8_t* out) { return color_convert_rgb2nv12(rgb.data(), out, out + 2 * w, w, 2) * blocks; },
            ref);
    }
    for (int uOffset : {1, 3}) {  // both rows as one run of w pairs
      auto ref = [&](uint8_t* out, int f, int n) {
        RGBToPacked422Row_C(&rgb[6 * f], out + 4 * f, n, uOffset, 4 - uOffset);
      };
      for (const KernelBuild& b : builds)
        if (b.rgbToPacked)
          expectSame(
              nameOf(b, "4:2:2 writer", uOffset), w, 4 * size_t(w),
              [&](uint8_t* out) { return b.rgbToPacked(rgb.data(), out, w, uOffset); }, ref);
      if (uOffset == 3)
        expectSame(
            "exported YVYU writer", w, 4 * size_t(w),
            [&](uint8_t* out) { return color_convert_rgb2yvyu(rgb.data(), out, w, 2) * w; }, ref);
    }
  }
  {  // Chroma pairs apart (the YV12 repack): every byte in both places.
    const int n = 65536 + 13;
    Bytes src(2 * size_t(n));
    for (size_t i = 0; i < src.size(); ++i) src[i] = uint8_t(i * 7 + (i >> 9));
    auto ref = [&](uint8_t* out, int f, int c) { SplitPairsRow_C(&src[2 * f], out + f, out + n + f, c); };
    for (const KernelBuild& b : builds)
      if (b.splitPairs)
        expectSame(
            nameOf(b, "pair split", 0), n, 2 * size_t(n),
            [&](uint8_t* out) { return b.splitPairs(src.data(), out, out + n, n); }, ref);
  }
}
