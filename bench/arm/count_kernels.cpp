// Runs one kernel once over n units (pixels, or bytes for the merges), for
// count-instructions.sh: the difference between two counts of executed ARM
// instructions, divided by the difference in n, is the kernel's cost per unit.
// Buffers are always sized and filled for the largest n, so only the kernel
// call depends on n.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "image/ConvertRows.h"
#include "imgproc/Blur.h"
#include "imgproc/StackBlurTables.h"
#include "supercapture/MergeKernels.h"

using namespace convert_row;
using namespace supercapture;

namespace {

constexpr int kMax = 1 << 18;  // units
constexpr int kBlurWidth = 64;

// The published Stack Blur, three channels at a time in plain C: the scalar
// reference the NEON blur is counted against.
void stackBlurC(uint8_t* px, int w, int h, int radius) {
  const int div = 2 * radius + 1;
  const uint32_t mul = kStackBlurMul[radius], shr = kStackBlurShr[radius];
  std::vector<uint8_t> ring(4 * size_t(div));
  auto line = [&](uint8_t* p, int n, size_t step) {
    uint32_t sum[3] = {}, in[3] = {}, out[3] = {};
    for (int i = 0; i <= radius; ++i)
      for (int c = 0; c < 3; ++c) {
        ring[4 * i + c] = p[c];
        sum[c] += p[c] * (i + 1);
        out[c] += p[c];
      }
    for (int i = 1; i <= radius; ++i) {
      const uint8_t* q = p + step * (i < n ? i : n - 1);
      for (int c = 0; c < 3; ++c) {
        ring[4 * (i + radius) + c] = q[c];
        sum[c] += q[c] * (radius + 1 - i);
        in[c] += q[c];
      }
    }
    int sp = radius, xp = radius < n - 1 ? radius : n - 1;
    for (int x = 0; x < n; ++x) {
      uint8_t* d = p + step * x;
      for (int c = 0; c < 3; ++c) d[c] = uint8_t((sum[c] * mul) >> shr);
      for (int c = 0; c < 3; ++c) sum[c] -= out[c];
      int start = sp + div - radius;
      if (start >= div) start -= div;
      for (int c = 0; c < 3; ++c) out[c] -= ring[4 * start + c];
      if (xp < n - 1) ++xp;
      const uint8_t* q = p + step * xp;
      for (int c = 0; c < 3; ++c) {
        ring[4 * start + c] = q[c];
        in[c] += q[c];
        sum[c] += in[c];
      }
      if (++sp >= div) sp = 0;
      for (int c = 0; c < 3; ++c) {
        out[c] += ring[4 * sp + c];
        in[c] -= ring[4 * sp + c];
      }
    }
  };
  for (int y = 0; y < h; ++y) line(px + size_t(y) * w * 4, w, 4);
  for (int x = 0; x < w; ++x) line(px + size_t(x) * 4, h, size_t(w) * 4);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "usage: %s KERNEL c|neon UNITS\n", argv[0]);
    return 2;
  }
  const char* k = argv[1];
  const bool neon = strcmp(argv[2], "neon") == 0;
  const int n = atoi(argv[3]);
  if (n < 32 || n > kMax || n % 32 != 0) return 2;

  std::vector<uint8_t> a(4 * size_t(kMax)), b(4 * size_t(kMax)), c(4 * size_t(kMax));
  std::vector<int32_t> acc(kMax);
  uint32_t s = 12345;
  for (auto& v : a) v = uint8_t((s = s * 1103515245u + 12345u) >> 24);
  for (size_t i = 0; i < acc.size(); ++i) acc[i] = int32_t(a[i] * 3);

  auto is = [&](const char* name) { return strcmp(k, name) == 0; };
  // Image kernels: n pixels; the block kernels do them all (n % 32 == 0).
  if (is("nv21-rgb")) {
    if (neon) NVQuadToRGBRow_NEON(a.data(), a.data() + n, b.data(), n / 4, 1);
    else NVQuadToRGBRow_C(a.data(), a.data() + n, b.data(), n / 4, 1);
  } else if (is("i420-rgb")) {
    if (neon) I420QuadToRGBRow_NEON(a.data(), a.data() + n, a.data() + 2 * n, b.data(), n / 4);
    else I420QuadToRGBRow_C(a.data(), a.data() + n, a.data() + 2 * n, b.data(), n / 4);
  } else if (is("yuyv-rgb")) {
    if (neon) Packed422ToRGBRow_NEON(a.data(), b.data(), n / 2, 1);
    else Packed422ToRGBRow_C(a.data(), b.data(), n / 2, 1, 3);
  } else if (is("rgb-yuyv")) {
    if (neon) RGBToPacked422Row_NEON(a.data(), b.data(), n / 2, 1);
    else RGBToPacked422Row_C(a.data(), b.data(), n / 2, 1, 3);
  } else if (is("rgb-nv21")) {  // two rows of n / 2 pixels
    const int w = n / 2;
    if (neon) RGBToNVBlockRow_NEON(a.data(), a.data() + 3 * w, b.data(), b.data() + w, b.data() + 2 * w, w / 2, 1);
    else RGBToNVBlockRow_C(a.data(), a.data() + 3 * w, b.data(), b.data() + w, b.data() + 2 * w, w / 2, 1);
  } else if (is("nv21-yv12")) {  // the chroma of n pixels: n / 4 pairs
    if (neon) SplitPairsRow_NEON(a.data(), b.data(), c.data(), n / 4);
    else SplitPairsRow_C(a.data(), b.data(), c.data(), n / 4);
  } else if (is("merge-max")) {  // merges: n bytes
    if (neon) mergeMax_NEON(acc.data(), a.data(), n);
    else mergeMax_C(acc.data(), a.data(), n);
  } else if (is("merge-copy")) {
    if (neon) mergeCopy_NEON(acc.data(), a.data(), n);
    else mergeCopy_C(acc.data(), a.data(), n);
  } else if (is("merge-add")) {
    if (neon) mergeAdd_NEON(acc.data(), a.data(), n);
    else mergeAdd_C(acc.data(), a.data(), n);
  } else if (is("result-lowbits")) {
    if (neon) resultLowBits_NEON(b.data(), acc.data(), n);
    else resultLowBits_C(b.data(), acc.data(), n);
  } else if (is("result-mean")) {
    if (neon) resultMean_NEON(b.data(), acc.data(), n, 5);
    else resultMean_C(b.data(), acc.data(), n, 5);
  } else if (is("stack-blur")) {  // n pixels as rows of 64, radius 10
    if (neon) stack_blur(a.data(), kBlurWidth, n / kBlurWidth, 10);
    else stackBlurC(a.data(), kBlurWidth, n / kBlurWidth, 10);
  } else {
    fprintf(stderr, "unknown kernel %s\n", k);
    return 2;
  }
  return b[0] == 1 && c[0] == 2 ? 1 : 0;  // keep the outputs alive
}
