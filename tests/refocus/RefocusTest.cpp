#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "core/Memory.h"
#include "refocus/Refocus.h"

namespace {

// Two bytes per pixel, luma in the even bytes; the odd bytes are noise the
// module must ignore.
std::vector<unsigned char> makeFrame(int w, int h, const std::function<int(int x, int y)>& luma) {
  std::vector<unsigned char> frame(size_t(w) * h * 2);
  for (size_t i = 0; i < frame.size() / 2; ++i) {
    frame[2 * i] = static_cast<unsigned char>(luma(int(i % w), int(i / w)));
    frame[2 * i + 1] = static_cast<unsigned char>(i * 31);
  }
  return frame;
}

// Stripes two small-image pixels wide on a frame `scale` times 600 x 600, with
// a contrast chosen per grid cell.
std::vector<unsigned char> stripes(int scale, int cols, int rows,
                                   const std::function<int(int cell)>& contrast) {
  return makeFrame(600 * scale, 600 * scale, [&](int x, int y) {
    const int sx = x / scale, sy = y / scale;
    const int cell = std::min(sy / (600 / rows), rows - 1) * cols + std::min(sx / (600 / cols), cols - 1);
    return (sx / 2) % 2 ? 128 + contrast(cell) / 2 : 128 - contrast(cell) / 2;
  });
}

std::vector<int> mapOf(RFModule* m) {
  RFModule_Process(m);
  return std::vector<int>(m->result, m->result + m->gridCols * m->gridRows);
}

// n big-endian words of a record from word `first` on.
std::vector<uint32_t> words(const unsigned char* record, int first, int n) {
  std::vector<uint32_t> out;
  for (const unsigned char* p = record + 4 * first; p < record + 4 * (first + n); p += 4)
    out.push_back((uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | p[3]);
  return out;
}

// Per-pixel reference: block means, horizontal differences inside a zero
// border, clipped 3 x 3 window sums over 9, cell sums.
std::vector<int> referenceCells(const std::vector<unsigned char>& frame, int w, int h, int cols, int rows) {
  const int fx = w / 600, fy = h / 600;
  std::vector<int> s(360000, 0), g(360000, 0), cells(size_t(cols) * rows, 0);
  for (int i = 0; i < 360000 && fx > 0 && fy > 0; ++i) {
    for (int y = (i / 600) * fy; y < (i / 600 + 1) * fy; ++y)
      for (int x = (i % 600) * fx; x < (i % 600 + 1) * fx; ++x) s[i] += frame[2 * (size_t(y) * w + x)];
    s[i] /= fx * fy;
  }
  for (int y = 1; y < 599; ++y)
    for (int x = 1; x < 599; ++x) g[y * 600 + x] = std::abs(s[y * 600 + x + 1] - s[y * 600 + x]);
  const int cw = 600 / cols, ch = 600 / rows;
  for (int y = 0; y < ch * rows; ++y)
    for (int x = 0; x < cw * cols; ++x) {
      int sum = 0;
      for (int yy = std::max(y - 1, 0); yy <= std::min(y + 1, 599); ++yy)
        for (int xx = std::max(x - 1, 0); xx <= std::min(x + 1, 599); ++xx) sum += g[yy * 600 + xx];
      cells[(y / ch) * cols + x / cw] += sum / 9;
    }
  return cells;
}

TEST(RefocusCreate, RefusalsFieldsAndTag) {
  // Any size below 1; frame bytes and the reported record length beyond an int.
  const int refused[][4] = {{0, 600, 4, 4},    {600, -1, 4, 4},      {600, 600, 0, 4},
                            {600, 600, 4, -4}, {46341, 23171, 4, 4}, {600, 600, 23171, 23171}};
  EXPECT_EQ(RefocusModule_Initialize(100, 100, INT32_MAX, INT32_MAX), 0);  // cell bytes wrap 64 bits
  for (auto& r : refused) {
    EXPECT_EQ(RFModule_Create(r[0], r[1], r[2], r[3]), nullptr) << r[0] << " " << r[1] << " " << r[2];
    EXPECT_EQ(RefocusModule_Initialize(r[0], r[1], r[2], r[3]), 0);
  }
  int cell = 5;  // 2^31 bytes of cell sums would be copied from it
  EXPECT_EQ(RFTarget_Create(&cell, 32768, 16384), nullptr);
  RFModule* m = RFModule_Create(640, 480, 7, 5);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(words(reinterpret_cast<unsigned char*>(m), -1, 1)[0], 0x110011u);  // the tag word
  EXPECT_EQ((std::vector<int>{m->targetCount, m->width, m->height, m->gridCols, m->gridRows}),
            (std::vector<int>{0, 640, 480, 7, 5}));
  EXPECT_TRUE(m->targets == nullptr);
  EXPECT_EQ(std::vector<int>(m->result, m->result + 35), std::vector<int>(35, 0));
  RFModule_Release(&m);
  EXPECT_EQ(m, nullptr);
}

TEST(RefocusMap, LaterFrameWinsWhenSharperOrEqualAndFlatFramesNameTheLast) {
  RFModule* m = RFModule_Create(600, 600, 4, 3);
  for (int contrast : {40, 80})
    RFModule_PreProcess(m, stripes(1, 4, 3, [=](int) { return contrast; }).data(), 0);
  EXPECT_EQ(mapOf(m), std::vector<int>(12, 1));
  RFModule_Clear(m);
  EXPECT_EQ(m->targetCount, 0);
  for (int k = 0; k < 2; ++k) RFModule_PreProcess(m, stripes(1, 4, 3, [](int) { return 60; }).data(), k);
  EXPECT_EQ(mapOf(m), std::vector<int>(12, 1));
  RFModule_Clear(m);
  for (int k = 0; k < 3; ++k)
    RFModule_PreProcess(m, makeFrame(600, 600, [](int, int) { return 90; }).data(), k);
  EXPECT_EQ(mapOf(m), std::vector<int>(12, 2));
  RFModule_Release(&m);
}

TEST(RefocusMap, CellSumsMatchAPerPixelReference) {
  // 7 x 5 cells are 85 x 120 small pixels (the rightmost 5 columns unused);
  // 1250 x 700 averages 2 x 1 blocks; 500 x 400 is below the working size.
  const int cases[][4] = {{600, 600, 7, 5}, {1250, 700, 3, 2}, {1800, 1207, 16, 9}, {500, 400, 2, 2}};
  for (const auto& c : cases) {
    std::mt19937 rng(c[0]);
    RFModule* m = RFModule_Create(c[0], c[1], c[2], c[3]);
    const auto frame = makeFrame(c[0], c[1], [&](int, int) { return int(rng() % 256); });
    RFModule_PreProcess(m, const_cast<unsigned char*>(frame.data()), 0);
    ASSERT_TRUE(m->targets != nullptr);
    const std::vector<int> want = referenceCells(frame, c[0], c[1], c[2], c[3]);
    EXPECT_EQ(std::vector<int>(m->targets->data, m->targets->data + c[2] * c[3]), want) << c[0];
    EXPECT_EQ(want == std::vector<int>(want.size(), 0), c[0] < 600);
    RFModule_Release(&m);
  }
}

TEST(RefocusHandles, ForeignTagAndZeroAreRefused) {
  auto* foreign = ov_malloc_has_tag(0x110012, sizeof(RFModule));
  auto frame = makeFrame(600, 600, [](int x, int) { return x; });
  for (intptr_t h : {intptr_t{0}, reinterpret_cast<intptr_t>(foreign)}) {
    int size = 77;
    EXPECT_EQ(RefocusModule_Process(h, frame.data(), 3), 0);
    EXPECT_EQ(RefocusModule_GetResultBuf(h, &size), nullptr);
    EXPECT_EQ(size, 0);
    RefocusModule_Release(h);
  }
  EXPECT_EQ(words(static_cast<unsigned char*>(foreign), -1, 1)[0], 0x110012u);  // still allocated
  ov_free_has_tag(0x110012, foreign);
}

// A sweep through the handle interface on a frame `scale` times 600 x 600:
// cell c is sharpest in frame sharpest[c]; positions 100, 200, ...
intptr_t sweep(int frames, int scale, int cols, int rows, const std::vector<uint32_t>& sharpest) {
  const intptr_t h = RefocusModule_Initialize(600 * scale, 600 * scale, cols, rows);
  for (int k = 0; k < frames; ++k) {
    auto frame =
        stripes(scale, cols, rows, [&](int cell) { return 120 - 4 * std::abs(k - int(sharpest[cell])); });
    EXPECT_EQ(RefocusModule_Process(h, frame.data(), 100 * (k + 1)), reinterpret_cast<RFModule*>(h)->id);
  }
  return h;
}

TEST(RefocusRecord, LayoutWordByWordInBigEndian) {
  const intptr_t h = sweep(3, 1, 2, 2, {0, 1, 2, 0});
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  ASSERT_EQ(size, (4 + 13) * 4);
  const uint32_t id = reinterpret_cast<RFModule*>(h)->id;
  // Mark, first position, count, grid, id, the map, positions, zero padding.
  EXPECT_EQ(words(record, 0, 17),
            (std::vector<uint32_t>{0x1234, 100, 3, 2, 2, id, 0, 1, 2, 0, 100, 200, 300, 0, 0, 0, 0}));
  RefocusModule_Release(h);
}

TEST(RefocusRecord, SweepOfEightFramesNamesEachCellsSharpestAndListsAllPositions) {
  // 1200 x 1200 averages 2 x 2 blocks; 4 x 3 cells.
  const std::vector<uint32_t> sharpest = {7, 6, 3, 0, 1, 5, 2, 4, 4, 0, 7, 3};
  const intptr_t h = sweep(8, 2, 4, 3, sharpest);
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  EXPECT_EQ(size, (12 + 13) * 4);  // the eighth position is word 25, past that length
  EXPECT_EQ(words(record, 2, 1)[0], 8u);
  EXPECT_EQ(words(record, 6, 12), sharpest);
  EXPECT_EQ(words(record, 18, 8), (std::vector<uint32_t>{100, 200, 300, 400, 500, 600, 700, 800}));
  RefocusModule_Release(h);
}

TEST(RefocusRecord, BeyondTwentyFramesAndEarlierRecordsStayValid) {
  const intptr_t h = sweep(25, 1, 2, 2, {24, 0, 12, 20});
  int size = 0;
  const unsigned char* first = RefocusModule_GetResultBuf(h, &size);
  // The header has the full count; then the module keeps 20 and lists 20.
  EXPECT_EQ(words(first, 2, 1)[0], 25u);
  EXPECT_EQ(reinterpret_cast<RFModule*>(h)->targetCount, 20);
  EXPECT_EQ(words(first, 6, 4), (std::vector<uint32_t>{24, 0, 12, 20}));
  EXPECT_EQ(words(first, 10 + 19, 1)[0], 2000u);
  const unsigned char* second = RefocusModule_GetResultBuf(h, &size);
  EXPECT_NE(second, first);
  EXPECT_EQ(words(second, 2, 1)[0], 20u);
  EXPECT_EQ(words(first, 2, 1)[0], 25u);  // still readable (and checked under ASan)
  RefocusModule_Release(h);
}

}  // namespace
