#pragma once

#include <cstdlib>
#include <functional>
#include <vector>

// Test frames for the refocus module: two bytes per pixel, luma in the even
// bytes, chroma bytes filled with noise the module must ignore.
namespace refocus_test {

inline std::vector<unsigned char> makeFrame(int width, int height,
                                            const std::function<int(int x, int y)>& luma, unsigned seed = 1) {
  std::vector<unsigned char> frame(size_t(width) * height * 2);
  srand(seed);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const size_t i = size_t(y) * width + x;
      frame[2 * i] = static_cast<unsigned char>(luma(x, y));
      frame[2 * i + 1] = static_cast<unsigned char>(rand());
    }
  return frame;
}

// Vertical stripes two small-image pixels wide (the frame is `scale` times the
// 600 x 600 working size), with a contrast chosen per grid cell.
inline std::vector<unsigned char> stripedFrame(int scale, int gridCols, int gridRows,
                                               const std::function<int(int cell)>& contrast) {
  const int cw = 600 / gridCols, ch = 600 / gridRows;
  return makeFrame(600 * scale, 600 * scale, [&](int x, int y) {
    const int sx = x / scale, sy = y / scale;
    const int gc = std::min(sx / cw, gridCols - 1), gr = std::min(sy / ch, gridRows - 1);
    const int amp = contrast(gr * gridCols + gc);
    return ((sx / 2) % 2) ? 128 + amp / 2 : 128 - amp / 2;
  });
}

}  // namespace refocus_test
