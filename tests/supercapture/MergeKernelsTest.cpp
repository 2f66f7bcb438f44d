// Every build of the block merge kernels (the schemes' tests cover the entry
// points) against the per-byte C kernels: every source byte against accumulators at
// the edges of the signed range, and means at every quotient 0..258 and its
// neighbours for small and large frame counts. Each run ends in a partial
// block, which the block kernel leaves to the C kernel.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "MergeBuilds.h"
#include "supercapture/MergeKernels.h"

using namespace orvan::supercapture;

#if OV_TEST_NEON_SIMDE_BUILD
MergeBuild neonSimdeMergeBuild();
#endif

namespace {

std::vector<MergeBuild> mergeBuilds() {
  std::vector<MergeBuild> builds = {{"portable", &mergeMax_Portable, &mergeCopy_Portable, &mergeAdd_Portable,
                                     &resultLowBits_Portable, &resultMean_Portable}};
#if OV_HAVE_NEON_MERGE
  builds.push_back(
      {"NEON", &mergeMax_NEON, &mergeCopy_NEON, &mergeAdd_NEON, &resultLowBits_NEON, &resultMean_NEON});
#elif OV_TEST_NEON_SIMDE_BUILD
  builds.push_back(neonSimdeMergeBuild());
#endif
  return builds;
}

// Runs `block` (which stops at a whole block, fewer than 16 short, or when
// it may decline, does nothing) and finishes with `tail` from where it
// stopped; `out` must then equal `want`.
template <class T, class Block, class Tail>
void expectSame(const std::string& name, std::vector<T> out, const std::vector<T>& want, Block block,
                Tail tail, bool mayDecline = false) {
  SCOPED_TRACE(name);
  const size_t n = out.size(), done = block(out.data());
  ASSERT_TRUE(done <= n && (n - done < 16 || (mayDecline && done == 0))) << done << " of " << n;
  tail(out.data(), done);
  for (size_t i = 0; i < n; ++i) ASSERT_EQ(out[i], want[i]) << "at " << i;
}

}  // namespace

TEST(MergeKernels, BlockKernelsMatchThePerByteDefinitions) {
  std::vector<int32_t> edges = {INT_MIN, INT_MIN + 1, -65536, -256, -1, 65535, 65536, INT_MAX - 100, INT_MAX};
  for (int a = 0; a <= 256; ++a) edges.push_back(a);
  std::vector<int32_t> acc;
  std::vector<uint8_t> src;
  for (int32_t a : edges)
    for (int s = 0; s < 256; ++s) {
      acc.push_back(a);
      src.push_back(uint8_t(s));
    }
  for (int t = 0; t < 7; ++t) acc.push_back(t - 3), src.push_back(uint8_t(250 + t));
  const size_t n = acc.size();

  std::vector<int32_t> max = acc, copy = acc, sum = acc;
  mergeMax_C(max.data(), src.data(), n);
  mergeCopy_C(copy.data(), src.data(), n);
  mergeAdd_C(sum.data(), src.data(), n);
  std::vector<uint8_t> low(n);
  resultLowBits_C(low.data(), acc.data(), n);

  for (const MergeBuild& b : mergeBuilds()) {
    const std::string name = b.name;
    auto tailOf = [&](void (*c)(int32_t*, const uint8_t*, size_t)) {
      return [&, c](int32_t* out, size_t f) { c(out + f, src.data() + f, n - f); };
    };
    expectSame(
        name + " max", acc, max, [&](int32_t* o) { return b.max(o, src.data(), n); }, tailOf(mergeMax_C));
    expectSame(
        name + " copy", acc, copy, [&](int32_t* o) { return b.copy(o, src.data(), n); }, tailOf(mergeCopy_C));
    expectSame(
        name + " add", acc, sum, [&](int32_t* o) { return b.add(o, src.data(), n); }, tailOf(mergeAdd_C));
    expectSame(
        name + " low bits", std::vector<uint8_t>(n), low,
        [&](uint8_t* o) { return b.lowBits(o, acc.data(), n); },
        [&](uint8_t* o, size_t f) { resultLowBits_C(o + f, acc.data() + f, n - f); });
  }
}

TEST(MergeKernels, MeanIsTheTruncatedQuotientAtEveryStep) {
  const std::vector<MergeBuild> builds = mergeBuilds();
  for (int32_t count : {1, 2, 3, 7, 10, 255, 256, 1001, (1 << 23) - 1, 1 << 23, INT_MAX}) {
    // Sums at k * count - 1, k * count and k * count + 1 for every k 0..258.
    std::vector<int32_t> acc = {INT_MIN, -1, INT_MAX, INT_MAX - 1};
    for (int64_t k = 0; k <= 258; ++k)
      for (int64_t d = -1; d <= 1; ++d) {
        const int64_t a = k * count + d;
        if (a >= INT_MIN && a <= INT_MAX) acc.push_back(int32_t(a));
      }
    acc.push_back(5);  // a tail
    const size_t n = acc.size();
    std::vector<uint8_t> want(n);
    for (size_t i = 0; i < n; ++i) {
      const int64_t q = acc[i] / count;  // C++ division truncates toward zero
      want[i] = uint8_t(q < 0 ? 0 : (q > 255 ? 255 : q));
    }
    for (const MergeBuild& b : builds)
      expectSame(
          std::string(b.name) + " mean of " + std::to_string(count), std::vector<uint8_t>(n), want,
          [&](uint8_t* o) { return b.mean(o, acc.data(), n, count); },
          [&](uint8_t* o, size_t f) { resultMean_C(o + f, acc.data() + f, n - f, count); }, count >= 1 << 23);
  }
}
