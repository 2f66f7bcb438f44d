// Runs the NEON paths of the stack blur and the blend on a real (emulated)
// ARM core and compares them with the direct definitions; see check-neon.sh.
#include <cstdio>
#include <random>

#include "imgproc/Blur.h"
#include "tests/imgproc/BlurReference.h"

int main() {
  std::mt19937 rng(5);
  int failures = 0;
  auto check = [&](const ref::Bytes& got, const ref::Bytes& want, const char* what, int a, int b) {
    if (got == want) return;
    printf("%s %d %d differs\n", what, a, b);
    ++failures;
  };
  const int sizes[][2] = {{1, 1}, {16, 5}, {33, 17}, {48, 40}, {7, 64}};
  for (auto& s : sizes)
    for (int r : {0, 1, 3, 9, 30, 254}) {
      ref::Bytes px = ref::randomBytes(rng, s[0] * s[1] * 4);
      const ref::Bytes expect = ref::stackBlur(px, s[0], s[1], r);
      stack_blur(px.data(), s[0], s[1], r);
      check(px, expect, "stack_blur width/radius", s[0], r);
    }
  for (int n = 0; n <= 40; ++n)
    for (int alpha : {0, 1, 77, 128, 255}) {
      ref::Bytes px = ref::randomBytes(rng, n * 4);
      const int colour[3] = {int(rng() % 256), int(rng() % 256), int(rng() % 256)};
      const ref::Bytes expect = ref::blend(px, n, colour, alpha, true);
      alpha_blend_neon(px.data(), n, colour[0], colour[1], colour[2], alpha);
      check(px, expect, "alpha_blend_neon count/alpha", n, alpha);
    }
  printf(failures ? "%d NEON checks FAILED\n" : "all NEON checks passed\n", failures);
  return failures ? 1 : 0;
}
