// A synthetic focus sweep: the sample photograph, enlarged to a camera-like
// 1800 x 1200, is blurred per region by how far each frame is from that
// region's focus frame. The sweep goes through the refocus module and the map
// it reports is drawn over the photograph, beside the known focus frames.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "imgproc/Blur.h"
#include "refocus/Refocus.h"
#include "support/PictureWriter.h"
#include "support/SamplePhoto.h"

namespace {

constexpr int kScale = 3;  // 600 x 400 -> 1800 x 1200, so the module averages 3 x 2 blocks
constexpr int kFrames = 5;
constexpr int kRegionCols = 3, kRegionRows = 2;
constexpr int kFocusFrame[kRegionRows][kRegionCols] = {{0, 2, 4}, {3, 1, 2}};
constexpr int kGridCols = 12, kGridRows = 8;
constexpr int kSigmaStep = 4;

const unsigned char kPalette[kFrames][3] = {
    {230, 25, 75}, {60, 180, 75}, {255, 225, 25}, {0, 130, 200}, {245, 130, 48}};

uint32_t wordAt(const unsigned char* record, int index) {
  const unsigned char* p = record + 4 * index;
  return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | p[3];
}

// Tints each cell of a w x h picture (the grid spans the whole 600 x 600
// working area, mapped onto the picture) with the colour of its frame.
std::vector<unsigned char> drawMap(const demo::RgbPhoto& photo, const std::vector<int>& map) {
  std::vector<unsigned char> out = photo.rgb;
  const int w = photo.width, h = photo.height;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const int gc = x * 600 / w / (600 / kGridCols), gr = y * 600 / h / (600 / kGridRows);
      if (gc >= kGridCols || gr >= kGridRows) continue;
      const int frame = map[gr * kGridCols + gc];
      const bool edge = (x * 600 / w) % (600 / kGridCols) == 0 || (y * 600 / h) % (600 / kGridRows) == 0;
      unsigned char* px = &out[(size_t(y) * w + x) * 3];
      for (int c = 0; c < 3; ++c) {
        const int tint = frame >= 0 && frame < kFrames ? kPalette[frame][c] : 0;
        px[c] = edge ? 255 : static_cast<unsigned char>((px[c] * 55 + tint * 45) / 100);
      }
    }
  }
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  std::string out;
  demo::RgbPhoto photo;
  if (int failed = demo::startSampleDemo(argc, argv, "coffee.jpg", &out, &photo)) return failed;
  const demo::RgbPhoto big = demo::resizeNearest(photo, photo.width * kScale, photo.height * kScale);
  const int w = big.width, h = big.height;
  const size_t n = size_t(w) * h;

  std::vector<unsigned char> luma(n);
  for (size_t i = 0; i < n; ++i) {
    const unsigned char* p = &big.rgb[3 * i];
    luma[i] = static_cast<unsigned char>((p[0] * 19595 + p[1] * 38470 + p[2] * 7471) >> 16);
  }
  // The luma blurred by each distance from focus (distance 0 stays sharp).
  std::vector<std::vector<unsigned char>> blurred(kFrames);
  blurred[0] = luma;
  for (int d = 1; d < kFrames; ++d) {
    std::vector<unsigned char> scratch = luma;
    blurred[d].resize(n);
    gauss_blur(scratch.data(), blurred[d].data(), w, h, kSigmaStep * d);
  }

  const intptr_t handle = RefocusModule_Initialize(w, h, kGridCols, kGridRows);
  if (handle == 0) return 1;
  std::vector<unsigned char> frame(n * 2, 128);
  for (int k = 0; k < kFrames; ++k) {
    for (int y = 0; y < h; ++y) {
      const int region = (y * kRegionRows / h) * kRegionCols;
      for (int x = 0; x < w; ++x) {
        const int focus = kFocusFrame[0][region + x * kRegionCols / w];
        const int distance = focus > k ? focus - k : k - focus;
        frame[2 * (size_t(y) * w + x)] = blurred[distance][size_t(y) * w + x];
      }
    }
    RefocusModule_Process(handle, frame.data(), 100 * (k + 1));
    std::vector<unsigned char> preview(size_t(photo.width) * photo.height);
    for (int y = 0; y < photo.height; ++y)
      for (int x = 0; x < photo.width; ++x)
        preview[size_t(y) * photo.width + x] = frame[2 * (size_t(y * kScale) * w + x * kScale)];
    const std::string path = out + "/refocus_frame" + std::to_string(k) + ".png";
    demo::writePng(path, preview.data(), photo.width, photo.height, 1);
    demo::caption(path, "Refocus", "RefocusModule_Process",
                  "Focus sweep frame " + std::to_string(k) + " (position " + std::to_string(100 * (k + 1)) +
                      "): each region of the photograph is sharp in one frame and blurred by its distance "
                      "from it in the others.");
  }

  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(handle, &size);
  if (record == nullptr) return 1;
  const int cols = int(wordAt(record, 3)), rows = int(wordAt(record, 4));
  printf("refocus record: %d bytes, %u frames, grid %dx%d\n", size, wordAt(record, 2), cols, rows);
  std::vector<int> map(size_t(cols) * rows), truth(size_t(cols) * rows);
  int agree = 0;
  for (int gr = 0; gr < rows; ++gr) {
    for (int gc = 0; gc < cols; ++gc) {
      const int i = gr * cols + gc;
      map[i] = int(wordAt(record, 6 + i));
      truth[i] = kFocusFrame[gr * kRegionRows / rows][gc * kRegionCols / cols];
      agree += map[i] == truth[i];
      printf("%d%s", map[i], gc + 1 < cols ? " " : "\n");
    }
  }
  printf("cells naming their region's focus frame: %d of %d\n", agree, cols * rows);
  const std::vector<unsigned char> found = drawMap(photo, map);
  const std::vector<unsigned char> expected = drawMap(photo, truth);
  demo::writePng(out + "/refocus_map.png", found.data(), photo.width, photo.height, 3);
  demo::caption(out + "/refocus_map.png", "Refocus", "RefocusModule_GetResultBuf",
                "The sharpest frame of each cell of the " + std::to_string(cols) + " x " +
                    std::to_string(rows) + " grid, as the result record names it; " + std::to_string(agree) +
                    " of " + std::to_string(cols * rows) + " cells name their region's focus frame.");
  demo::writePng(out + "/refocus_truth.png", expected.data(), photo.width, photo.height, 3);
  demo::caption(out + "/refocus_truth.png", "Refocus", "(the sweep's construction)",
                "The frame in which each region was made sharp, for comparison with the map.");
  RefocusModule_Release(handle);
  return 0;
}
