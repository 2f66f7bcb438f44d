// FAST-16 corners of the sample photograph, with and without non-maximum
// suppression, drawn as small rings over a dimmed copy of the photo.
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "imgproc/Fast16.h"
#include "support/PictureWriter.h"

bool fast16Demo(const std::string& dir, const std::vector<unsigned char>& rgb,
                const std::vector<unsigned char>& gray, int w, int h) {
  const int threshold = 25;
  int ring[25];
  makeOffsets(ring, w);
  std::vector<Fast16Corner> corners((size_t)w * h);
  bool ok = true;
  for (int nms = 0; nms < 2; ++nms) {
    const int n = fast16(gray.data(), w, h, w, threshold, nms, corners.data(), (int)corners.size());
    if (n < 0) {
      fprintf(stderr, "fast16 failed: %d\n", n);
      return false;
    }
    std::vector<unsigned char> out(rgb.size());
    for (size_t i = 0; i < out.size(); ++i) out[i] = (unsigned char)(rgb[i] / 2);
    for (int i = 0; i < n; ++i) {
      // Stronger corners in yellow, weaker ones in red.
      const unsigned char g = (unsigned char)(corners[i].score >= 2 * threshold ? 255 : 60);
      for (int j = 0; j < 16; ++j) {
        unsigned char* px = &out[((size_t)corners[i].y * w + corners[i].x) * 3 + (ptrdiff_t)ring[j] * 3];
        px[0] = 255, px[1] = g, px[2] = 0;
      }
    }
    const std::string path = dir + (nms ? "/imgproc-fast16-nms.png" : "/imgproc-fast16.png");
    ok &= demo::writePng(path, out.data(), w, h, 3);
    printf("FAST-16 at threshold %d, %s suppression: %d corners\n  %s\n", threshold, nms ? "with" : "without",
           n, path.c_str());
    demo::caption(path, "CPU image processing", "fast16",
                  "FAST-16 corners of the grey photograph at threshold " + std::to_string(threshold) + ", " +
                      (nms ? "with" : "without") + " non-maximum suppression: " + std::to_string(n) +
                      " corners.");
  }
  return ok;
}
