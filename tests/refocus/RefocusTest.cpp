#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
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

uint32_t wordAt(const unsigned char* record, int index) {
  const unsigned char* p = record + 4 * index;
  return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | p[3];
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

TEST(RefocusCreate, RefusalsFieldsTagAndSeededId) {
  EXPECT_EQ(RFModule_Create(0, 600, 4, 4), nullptr);
  EXPECT_EQ(RFModule_Create(600, -1, 4, 4), nullptr);
  EXPECT_EQ(RFModule_Create(600, 600, 0, 4), nullptr);
  EXPECT_EQ(RefocusModule_Initialize(600, 600, 4, -4), 0);
  EXPECT_EQ(RFModule_Create(65536, 32768, 4, 4), nullptr);      // frame of 2^32 bytes
  EXPECT_EQ(RFModule_Create(600, 600, 32768, 32768), nullptr);  // 2^30 cells

  const time_t before = time(nullptr);
  RFModule* m = RFModule_Create(640, 480, 7, 5);
  const time_t after = time(nullptr);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(ov_read_tag(m), 0x110011u);
  EXPECT_EQ(m->targetCount + m->width + m->height + m->gridCols + m->gridRows, 0 + 640 + 480 + 7 + 5);
  EXPECT_TRUE(m->targets == nullptr);
  EXPECT_EQ(std::vector<int>(m->result, m->result + 35), std::vector<int>(35, 0));
  // The id is the C library generator's first draw after seeding with the time.
  bool matched = false;
  for (time_t t = before; t <= after; ++t) {
    srand48(static_cast<long>(t));
    matched = matched || lrand48() == m->id;
  }
  EXPECT_TRUE(matched);
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

TEST(RefocusMap, SyntheticSweepNamesEachCellsSharpestFrame) {
  // 1200 x 1200 averages 2 x 2 blocks; cell i is in focus in frame i % 5.
  RFModule* m = RFModule_Create(1200, 1200, 4, 3);
  for (int k = 0; k < 5; ++k)
    RFModule_PreProcess(
        m, stripes(2, 4, 3, [k](int cell) { return 100 - 20 * std::abs(k - cell % 5); }).data(), k);
  std::vector<int> expected(12);
  for (int i = 0; i < 12; ++i) expected[i] = i % 5;
  EXPECT_EQ(mapOf(m), expected);
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

TEST(RefocusTargets, CountsPositionsAndRepeatedAdds) {
  RFModule* m = RFModule_Create(600, 600, 2, 1);
  int data[2] = {0, 9};
  EXPECT_EQ(RFTarget_Create(nullptr, 2, 1), nullptr);
  EXPECT_EQ(RFTarget_Create(data, 0, 1), nullptr);
  std::vector<RFTarget*> made;
  for (data[0] = 0; data[0] < 22; ++data[0]) {
    made.push_back(RFTarget_Create(data, 2, 1));
    RFModule_AddTarget(m, made.back(), 1000 + data[0]);
  }
  EXPECT_EQ(made[3]->data[0], 3);  // a copy of the caller's sums
  EXPECT_EQ(m->positions[19], 1019);
  RFModule_AddTarget(m, made[5], 7);  // already listed: no loop, no count
  EXPECT_EQ(m->targetCount, 22);
  EXPECT_EQ(mapOf(m), (std::vector<int>{21, 21}));
  RFModule_RemoveTarget(m, made[21]);
  RFModule_RemoveTarget(m, made[0]);
  EXPECT_EQ(m->targetCount, 20);
  EXPECT_EQ(m->positions[0], 1000);  // positions are not shifted
  EXPECT_EQ(mapOf(m), (std::vector<int>{19, 19}));
  RFModule_Release(&m);
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
  EXPECT_EQ(ov_read_tag(foreign), 0x110012u);  // still allocated
  ov_free_has_tag(0x110012, foreign);
}

// A 2 x 2 sweep where cell c is sharpest in frame sharpest[c], positions 100, 200, ...
intptr_t sweep(int frames, const std::vector<int>& sharpest) {
  const intptr_t h = RefocusModule_Initialize(600, 600, 2, 2);
  for (int k = 0; k < frames; ++k) {
    auto frame = stripes(1, 2, 2, [&](int cell) { return 120 - 4 * std::abs(k - sharpest[cell]); });
    EXPECT_EQ(RefocusModule_Process(h, frame.data(), 100 * (k + 1)), reinterpret_cast<RFModule*>(h)->id);
  }
  return h;
}

TEST(RefocusRecord, LayoutWordByWordInBigEndian) {
  const intptr_t h = sweep(3, {0, 1, 2, 0});
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(size, (4 + 13) * 4);
  EXPECT_EQ(std::vector<unsigned char>(record, record + 4), (std::vector<unsigned char>{0, 0, 0x12, 0x34}));
  const uint32_t id = reinterpret_cast<RFModule*>(h)->id;
  const std::vector<uint32_t> words = {0x1234, 100, 3, 2, 2, id, 0, 1, 2, 0, 100, 200, 300, 0, 0, 0, 0};
  for (int i = 0; i < size / 4; ++i) EXPECT_EQ(wordAt(record, i), words[i]) << "word " << i;
  RefocusModule_Release(h);
}

TEST(RefocusRecord, EightFramesListAllPositionsPastTheReportedLength) {
  const intptr_t h = sweep(8, {7, 6, 3, 0});
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  EXPECT_EQ(size, 17 * 4);  // 18 words are written
  EXPECT_EQ(wordAt(record, 2), 8u);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(wordAt(record, 6 + i), (std::vector<uint32_t>{7, 6, 3, 0}[i]));
  for (int k = 0; k < 8; ++k) EXPECT_EQ(wordAt(record, 10 + k), uint32_t(100 * (k + 1)));
  RefocusModule_Release(h);
}

TEST(RefocusRecord, BeyondTwentyFramesAndEarlierRecordsStayValid) {
  const intptr_t h = sweep(25, {24, 0, 12, 20});
  int size = 0;
  const unsigned char* first = RefocusModule_GetResultBuf(h, &size);
  // The header has the full count; then the module keeps 20 and lists 20.
  EXPECT_EQ(wordAt(first, 2), 25u);
  EXPECT_EQ(reinterpret_cast<RFModule*>(h)->targetCount, 20);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(wordAt(first, 6 + i), (std::vector<uint32_t>{24, 0, 12, 20}[i]));
  EXPECT_EQ(wordAt(first, 10 + 19), 2000u);
  const unsigned char* second = RefocusModule_GetResultBuf(h, &size);
  EXPECT_NE(second, first);
  EXPECT_EQ(wordAt(second, 2), 20u);
  EXPECT_EQ(wordAt(first, 2), 25u);  // still readable (and checked under ASan)
  RefocusModule_Release(h);
}

}  // namespace
