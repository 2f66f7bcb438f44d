// Runs the NEON paths of the stack blur and the blend on a real (emulated)
// ARM core and compares them with the scalar definitions; see check-neon.sh.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "imgproc/Blur.h"
#include "imgproc/StackBlurTables.h"

namespace {

int clampi(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

void directStack(uint8_t* line, int n, size_t step, int r) {
  std::vector<uint8_t> in(n);
  for (int i = 0; i < n; ++i) in[i] = line[i * step];
  for (int x = 0; x < n; ++x) {
    uint64_t sum = 0;
    for (int k = -r; k <= r; ++k) sum += (uint64_t)(r + 1 - std::abs(k)) * in[clampi(x + k, 0, n - 1)];
    line[x * step] = (uint8_t)((sum * kStackBlurMul[r]) >> kStackBlurShr[r]);
  }
}

}  // namespace

int main() {
  std::mt19937 rng(5);
  int failures = 0;
  const int sizes[][2] = {{1, 1}, {16, 5}, {33, 17}, {48, 40}, {7, 64}};
  for (auto& s : sizes) {
    for (int r : {0, 1, 3, 9, 30, 254}) {
      const int w = s[0], h = s[1];
      std::vector<uint8_t> px(w * h * 4);
      for (auto& b : px) b = (uint8_t)rng();
      std::vector<uint8_t> expect = px;
      for (int y = 0; y < h; ++y)
        for (int c = 0; c < 3; ++c) directStack(&expect[y * w * 4 + c], w, 4, r);
      for (int x = 0; x < w; ++x)
        for (int c = 0; c < 3; ++c) directStack(&expect[x * 4 + c], h, (size_t)w * 4, r);
      stack_blur(px.data(), w, h, r);
      if (px != expect) {
        printf("stack_blur %dx%d r=%d differs\n", w, h, r);
        ++failures;
      }
    }
  }
  for (int n = 0; n <= 40; ++n) {
    for (int alpha : {0, 1, 77, 128, 255}) {
      std::vector<uint8_t> px(n * 4);
      for (auto& b : px) b = (uint8_t)rng();
      std::vector<uint8_t> expect = px;
      const int r = rng() % 256, g = rng() % 256, b = rng() % 256;
      for (int i = 0; i < n / 8 * 8; ++i) {
        const int col[3] = {r, g, b};
        for (int c = 0; c < 3; ++c) {
          uint8_t& v = expect[i * 4 + c];
          v = alpha == 0 ? 0 : (uint8_t)((((alpha * col[c]) & 0xFFFF) + v * (256 - alpha)) >> 8);
        }
      }
      alpha_blend_neon(px.data(), n, r, g, b, alpha);
      if (px != expect) {
        printf("alpha_blend_neon count %d alpha %d differs\n", n, alpha);
        ++failures;
      }
    }
  }
  printf(failures ? "%d NEON checks FAILED\n" : "all NEON checks passed\n", failures);
  return failures ? 1 : 0;
}
