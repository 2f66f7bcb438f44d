#pragma once
// Direct, slow definitions of the blur and blend the library computes with
// running sums and vector lanes.
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include "imgproc/StackBlurTables.h"

namespace ref {

using Bytes = std::vector<uint8_t>;

inline int clampi(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

inline Bytes randomBytes(std::mt19937& rng, size_t n) {
  Bytes v(n);
  for (auto& b : v) b = uint8_t(rng());
  return v;
}

// Channels 0..2 of 4-byte pixels: triangular window of radius r with edges
// replicated, rows then columns, divided with the published mul/shr pair.
inline Bytes stackBlur(Bytes px, int w, int h, int r) {
  auto line = [&](size_t start, int n, size_t step) {
    std::vector<uint8_t> in(n);
    for (int i = 0; i < n; ++i) in[i] = px[start + i * step];
    for (int x = 0; x < n; ++x) {
      uint64_t sum = 0;
      for (int k = -r; k <= r; ++k) sum += uint64_t(r + 1 - std::abs(k)) * in[clampi(x + k, 0, n - 1)];
      px[start + x * step] = uint8_t((sum * kStackBlurMul[r]) >> kStackBlurShr[r]);
    }
  };
  for (int c = 0; c < 3; ++c) {
    for (int y = 0; y < h; ++y) line(size_t(y) * w * 4 + c, w, 4);
    for (int x = 0; x < w; ++x) line(size_t(x) * 4 + c, h, size_t(w) * 4);
  }
  return px;
}

// channel = ((alpha * colour) mod 2^16 + channel * (256 - alpha)) >> 8 on the
// first n pixels. The vector form keeps 256 - alpha in a byte (alpha 0 gives
// factor 0) and blends whole groups of eight only.
inline Bytes blend(Bytes px, int n, const int colour[3], int alpha, bool vector) {
  const int keep = vector ? (256 - alpha) & 0xFF : 256 - alpha;
  if (vector) n = n / 8 * 8;
  for (int i = 0; i < n; ++i)
    for (int c = 0; c < 3; ++c) {
      uint8_t& v = px[i * 4 + c];
      v = uint8_t((((alpha * colour[c]) & 0xFFFF) + v * keep) >> 8);
    }
  return px;
}

}  // namespace ref
