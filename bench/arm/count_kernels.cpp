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

using namespace orvan::convert_row;
using namespace orvan::supercapture;

namespace {

constexpr int kMax = 1 << 18;  // units
constexpr int kBlurWidth = 64;

// The published Stack Blur in plain C, as it is usually written (the three
// channels side by side in scalars): the reference the NEON blur is counted
// against.
void blurLine(uint8_t* p, int n, size_t step, int radius, uint8_t* ring) {
  const int div = 2 * radius + 1, last = n - 1;
  const uint32_t mul = kStackBlurMul[radius], shr = kStackBlurShr[radius];
  uint32_t sr = 0, sg = 0, sb = 0, ir = 0, ig = 0, ib = 0, outR = 0, outG = 0, outB = 0;
  for (int i = 0; i <= radius; ++i) {
    uint8_t* e = ring + 3 * i;
    e[0] = p[0], e[1] = p[1], e[2] = p[2];
    sr += p[0] * (i + 1), sg += p[1] * (i + 1), sb += p[2] * (i + 1);
    outR += p[0], outG += p[1], outB += p[2];
  }
  for (int i = 1; i <= radius; ++i) {
    const uint8_t* q = p + step * (i < last ? i : last);
    uint8_t* e = ring + 3 * (i + radius);
    e[0] = q[0], e[1] = q[1], e[2] = q[2];
    const uint32_t w = radius + 1 - i;
    sr += q[0] * w, sg += q[1] * w, sb += q[2] * w;
    ir += q[0], ig += q[1], ib += q[2];
  }
  int sp = radius, xp = radius < last ? radius : last;
  const uint8_t* src = p + step * xp;
  uint8_t* dst = p;
  for (int x = 0; x < n; ++x, dst += step) {
    dst[0] = uint8_t((sr * mul) >> shr);
    dst[1] = uint8_t((sg * mul) >> shr);
    dst[2] = uint8_t((sb * mul) >> shr);
    sr -= outR, sg -= outG, sb -= outB;
    int start = sp + div - radius;
    if (start >= div) start -= div;
    uint8_t* e = ring + 3 * start;
    outR -= e[0], outG -= e[1], outB -= e[2];
    if (xp < last) ++xp, src += step;
    e[0] = src[0], e[1] = src[1], e[2] = src[2];
    ir += src[0], ig += src[1], ib += src[2];
    sr += ir, sg += ig, sb += ib;
    if (++sp >= div) sp = 0;
    e = ring + 3 * sp;
    outR += e[0], outG += e[1], outB += e[2];
    ir -= e[0], ig -= e[1], ib -= e[2];
  }
}

void stackBlurC(uint8_t* px, int w, int h, int radius) {
  uint8_t ring[3 * 509];
  for (int y = 0; y < h; ++y) blurLine(px + size_t(y) * w * 4, w, 4, radius, ring);
  for (int x = 0; x < w; ++x) blurLine(px + size_t(x) * 4, h, size_t(w) * 4, radius, ring);
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
    if (neon)
      NVQuadToRGBRow_NEON(a.data(), a.data() + n, b.data(), n / 4, 1);
    else
      NVQuadToRGBRow_C(a.data(), a.data() + n, b.data(), n / 4, 1);
  } else if (is("i420-rgb")) {
    if (neon)
      I420QuadToRGBRow_NEON(a.data(), a.data() + n, a.data() + 2 * n, b.data(), n / 4);
    else
      I420QuadToRGBRow_C(a.data(), a.data() + n, a.data() + 2 * n, b.data(), n / 4);
  } else if (is("yuyv-rgb")) {
    if (neon)
      Packed422ToRGBRow_NEON(a.data(), b.data(), n / 2, 1);
    else
      Packed422ToRGBRow_C(a.data(), b.data(), n / 2, 1, 3);
  } else if (is("rgb-yuyv")) {
    if (neon)
      RGBToPacked422Row_NEON(a.data(), b.data(), n / 2, 1);
    else
      RGBToPacked422Row_C(a.data(), b.data(), n / 2, 1, 3);
  } else if (is("rgb-nv21")) {  // two rows of n / 2 pixels
    const int w = n / 2;
    if (neon)
      RGBToNVBlockRow_NEON(a.data(), a.data() + 3 * w, b.data(), b.data() + w, b.data() + 2 * w, w / 2, 1);
    else
      RGBToNVBlockRow_C(a.data(), a.data() + 3 * w, b.data(), b.data() + w, b.data() + 2 * w, w / 2, 1);
  } else if (is("nv21-yv12")) {  // the chroma of n pixels: n / 4 pairs
    if (neon)
      SplitPairsRow_NEON(a.data(), b.data(), c.data(), n / 4);
    else
      SplitPairsRow_C(a.data(), b.data(), c.data(), n / 4);
  } else if (is("merge-max")) {  // merges: n bytes
    if (neon)
      mergeMax_NEON(acc.data(), a.data(), n);
    else
      mergeMax_C(acc.data(), a.data(), n);
  } else if (is("merge-copy")) {
    if (neon)
      mergeCopy_NEON(acc.data(), a.data(), n);
    else
      mergeCopy_C(acc.data(), a.data(), n);
  } else if (is("merge-add")) {
    if (neon)
      mergeAdd_NEON(acc.data(), a.data(), n);
    else
      mergeAdd_C(acc.data(), a.data(), n);
  } else if (is("result-lowbits")) {
    if (neon)
      resultLowBits_NEON(b.data(), acc.data(), n);
    else
      resultLowBits_C(b.data(), acc.data(), n);
  } else if (is("result-mean")) {
    if (neon)
      resultMean_NEON(b.data(), acc.data(), n, 5);
    else
      resultMean_C(b.data(), acc.data(), n, 5);
  } else if (is("stack-blur")) {  // n pixels as rows of 64, radius 10
    if (neon)
      stack_blur(a.data(), kBlurWidth, n / kBlurWidth, 10);
    else
      stackBlurC(a.data(), kBlurWidth, n / kBlurWidth, 10);
  } else {
    fprintf(stderr, "unknown kernel %s\n", k);
    return 2;
  }
  return b[0] == 1 && c[0] == 2 ? 1 : 0;  // keep the outputs alive
}
