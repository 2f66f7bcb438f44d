// The fast kernels against the table C kernels over every (Y, U, V) and every
// (R, G, B): the portable kernels as built here (and on x86 as a compiler with
// byte shuffles builds them, the code NEON targets run), and the exported
// converters with whatever SIMD path the processor picks. Each run ends in a
// partial block, which the fast kernel leaves to the C kernel.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "PortableBuilds.h"
#include "image/ColorConvert.h"
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

}  // namespace

TEST(Kernels, FastPathsMatchTheTablesOnEveryInput) {
  {  // NV21: 64 quads per (U, V) take all 256 luma values.
    const int quads = 65536 * 64 + 5;
    Bytes y(4 * size_t(quads)), vu(2 * size_t(quads));
    for (int q = 0; q < quads; ++q) {
      vu[2 * q] = uint8_t(q >> 14);  // V first
      vu[2 * q + 1] = uint8_t(q >> 6);
      for (int k = 0; k < 4; ++k) y[4 * q + k] = uint8_t(4 * q + k);
    }
    auto ref = [&](uint8_t* out, int f, int n) {
      NVQuadToRGBRow_C(&y[4 * f], &vu[2 * f], out + 12 * f, n, 1);
    };
    for (const PortableBuild& b : portableBuilds())
      expectSame(
          std::string(b.name) + " NV21 reader", quads, 12 * size_t(quads),
          [&](uint8_t* out) { return b.nvToRGB(y.data(), vu.data(), out, quads, 1); }, ref);
    expectSame(
        "exported NV21 reader", quads, 12 * size_t(quads),
        [&](uint8_t* out) { return color_convert_nv212rgb(y.data(), vu.data(), out, 4 * quads, 1) * quads; },
        ref);
  }
  {  // YUYV: 128 pairs per (U, V) take all 256 luma values.
    const int pairs = 65536 * 128 + 5;
    Bytes src(4 * size_t(pairs));
    for (int p = 0; p < pairs; ++p) {
      src[4 * p] = uint8_t(2 * p);
      src[4 * p + 1] = uint8_t(p >> 15);
      src[4 * p + 2] = uint8_t(2 * p + 1);
      src[4 * p + 3] = uint8_t(p >> 7);
    }
    auto ref = [&](uint8_t* out, int f, int n) { Packed422ToRGBRow_C(&src[4 * f], out + 6 * f, n, 1, 3); };
    for (const PortableBuild& b : portableBuilds())
      expectSame(
          std::string(b.name) + " YUYV reader", pairs, 6 * size_t(pairs),
          [&](uint8_t* out) { return b.packedToRGB(src.data(), out, pairs, 1); }, ref);
    expectSame(
        "exported YUYV reader", pairs, 6 * size_t(pairs),
        [&](uint8_t* out) { return color_convert_yuyv2rgb(src.data(), out, 2 * pairs, 1) * pairs; }, ref);
  }
  {  // NV12 writer: two rows of w pixels holding every (R, G, B); each 2x2
     // block averages four different colours. Output: two luma rows, chroma.
    const int w = (1 << 23) + 10, blocks = w / 2;
    Bytes rgb(6 * size_t(w));
    for (size_t i = 0; i < 2 * size_t(w); ++i) {
      rgb[3 * i] = uint8_t(i >> 16);
      rgb[3 * i + 1] = uint8_t(i >> 8);
      rgb[3 * i + 2] = uint8_t(i);
    }
    const uint8_t* row1 = &rgb[3 * size_t(w)];
    auto ref = [&](uint8_t* out, int f, int n) {
      RGBToNVBlockRow_C(&rgb[6 * f], row1 + 6 * f, out + 2 * f, out + w + 2 * f, out + 2 * w + 2 * f, n, 0);
    };
    for (const PortableBuild& b : portableBuilds())
      expectSame(
          std::string(b.name) + " NV12 writer", blocks, 3 * size_t(w),
          [&](uint8_t* out) { return b.rgbToNV(rgb.data(), row1, out, out + w, out + 2 * w, blocks, 0); },
          ref);
    expectSame(
        "exported NV12 writer", blocks, 3 * size_t(w),
        [&](uint8_t* out) { return color_convert_rgb2nv12(rgb.data(), out, out + 2 * w, w, 2) * blocks; },
        ref);
  }
}
