#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <random>
#include <vector>

#include "core/Memory.h"
#include "refocus/Refocus.h"
#include "tests/refocus/RefocusFrames.h"

namespace {

using refocus_test::makeFrame;
using refocus_test::stripedFrame;

std::vector<int> resultOf(RFModule* m) {
  RFModule_Process(m);
  return std::vector<int>(m->result, m->result + m->gridCols * m->gridRows);
}

// Straightforward per-pixel reference: block means, horizontal differences
// inside a zero border, clipped 3 x 3 window sums over 9, cell sums.
std::vector<int> referenceCells(const std::vector<unsigned char>& frame, int w, int h, int cols, int rows) {
  const int fx = w / 600, fy = h / 600;
  std::vector<int> s(600 * 600, 0), g(600 * 600, 0), t(600 * 600, 0);
  if (fx > 0 && fy > 0) {
    for (int r = 0; r < 600; ++r)
      for (int c = 0; c < 600; ++c) {
        int sum = 0;
        for (int y = r * fy; y < (r + 1) * fy; ++y)
          for (int x = c * fx; x < (c + 1) * fx; ++x) sum += frame[2 * (size_t(y) * w + x)];
        s[r * 600 + c] = sum / (fx * fy);
      }
  }
  for (int y = 1; y < 599; ++y)
    for (int x = 1; x < 599; ++x) g[y * 600 + x] = std::abs(s[y * 600 + x + 1] - s[y * 600 + x]);
  for (int y = 0; y < 600; ++y)
    for (int x = 0; x < 600; ++x) {
      int sum = 0;
      for (int yy = std::max(y - 1, 0); yy <= std::min(y + 1, 599); ++yy)
        for (int xx = std::max(x - 1, 0); xx <= std::min(x + 1, 599); ++xx) sum += g[yy * 600 + xx];
      t[y * 600 + x] = sum / 9;
    }
  const int cw = 600 / cols, ch = 600 / rows;
  std::vector<int> cells(size_t(cols) * rows, 0);
  for (int gr = 0; gr < rows; ++gr)
    for (int gc = 0; gc < cols; ++gc)
      for (int y = gr * ch; y < (gr + 1) * ch; ++y)
        for (int x = gc * cw; x < (gc + 1) * cw; ++x) cells[gr * cols + gc] += t[y * 600 + x];
  return cells;
}

TEST(RefocusCreate, RefusesSizesBelowOneAndBuffersBeyond32Bits) {
  EXPECT_EQ(RFModule_Create(0, 600, 4, 4), nullptr);
  EXPECT_EQ(RFModule_Create(600, -1, 4, 4), nullptr);
  EXPECT_EQ(RFModule_Create(600, 600, 0, 4), nullptr);
  EXPECT_EQ(RFModule_Create(600, 600, 4, 0), nullptr);
  EXPECT_EQ(RefocusModule_Initialize(600, 600, -4, 4), 0);
  // Frame of 65536 x 32768 x 2 bytes = 2^32; grid of 2^30 cells needs 2^32 bytes.
  EXPECT_EQ(RFModule_Create(65536, 32768, 4, 4), nullptr);
  EXPECT_EQ(RFModule_Create(600, 600, 32768, 32768), nullptr);
}

TEST(RefocusCreate, StartsEmptyTaggedAndWithTheSeededId) {
  const time_t before = time(nullptr);
  RFModule* m = RFModule_Create(640, 480, 7, 5);
  const time_t after = time(nullptr);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(ov_read_tag(m), 0x110011u);
  EXPECT_EQ(m->targetCount, 0);
  EXPECT_EQ(m->width, 640);
  EXPECT_EQ(m->height, 480);
  EXPECT_EQ(m->gridCols, 7);
  EXPECT_EQ(m->gridRows, 5);
  EXPECT_EQ(m->targets, nullptr);
  EXPECT_EQ(m->output, nullptr);
  for (int i = 0; i < 35; ++i) EXPECT_EQ(m->result[i], 0);
  // The id is the first draw of the C library's generator seeded with the time.
  bool matched = false;
  for (time_t t = before; t <= after; ++t) {
    srand48(static_cast<long>(t));
    matched = matched || lrand48() == m->id;
  }
  EXPECT_TRUE(matched);
  RFModule_Release(&m);
  EXPECT_EQ(m, nullptr);
  RFModule_Release(&m);
  RFModule_Release(nullptr);
}

TEST(RefocusMap, TheLaterFrameWinsWhenSharperOrEqual) {
  RFModule* m = RFModule_Create(600, 600, 4, 3);
  ASSERT_NE(m, nullptr);
  RFModule_PreProcess(m, stripedFrame(1, 4, 3, [](int) { return 40; }).data(), 10);
  RFModule_PreProcess(m, stripedFrame(1, 4, 3, [](int) { return 80; }).data(), 20);
  EXPECT_EQ(resultOf(m), std::vector<int>(12, 1));
  RFModule_Clear(m);
  EXPECT_EQ(m->targetCount, 0);
  EXPECT_EQ(m->targets, nullptr);
  // Equal frames: ties go to the later one.
  for (int k = 0; k < 2; ++k) RFModule_PreProcess(m, stripedFrame(1, 4, 3, [](int) { return 60; }).data(), k);
  EXPECT_EQ(resultOf(m), std::vector<int>(12, 1));
  RFModule_Clear(m);
  // Flat frames have no gradient anywhere: every cell names the last frame.
  for (int k = 0; k < 3; ++k)
    RFModule_PreProcess(m, makeFrame(600, 600, [](int, int) { return 90; }).data(), k);
  EXPECT_EQ(resultOf(m), std::vector<int>(12, 2));
  RFModule_Release(&m);
}

TEST(RefocusMap, SyntheticSweepNamesTheFrameEachCellIsSharpestIn) {
  // 1200 x 1200 frames average 2 x 2 blocks; grid 4 x 3; cell i is in focus in
  // frame i % 5 and loses contrast with every frame away from it.
  RFModule* m = RFModule_Create(1200, 1200, 4, 3);
  ASSERT_NE(m, nullptr);
  for (int k = 0; k < 5; ++k) {
    auto frame = stripedFrame(2, 4, 3, [k](int cell) { return 100 - 20 * std::abs(k - cell % 5); });
    RFModule_PreProcess(m, frame.data(), 100 + k);
  }
  std::vector<int> expected(12);
  for (int i = 0; i < 12; ++i) expected[i] = i % 5;
  EXPECT_EQ(resultOf(m), expected);
  RFModule_Release(&m);
}

TEST(RefocusMap, CellSumsMatchADirectComputationOnRandomFrames) {
  struct Case {
    int w, h, cols, rows;
  };
  // 7 x 5 cells are 85 x 120 small pixels; 1250 x 700 averages 2 x 1 blocks;
  // 500 x 400 is below the working size and averages to nothing.
  for (const Case& c :
       {Case{600, 600, 7, 5}, Case{1250, 700, 3, 2}, Case{1800, 1207, 16, 9}, Case{500, 400, 2, 2}}) {
    SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h));
    std::mt19937 rng(c.w);
    RFModule* m = RFModule_Create(c.w, c.h, c.cols, c.rows);
    ASSERT_NE(m, nullptr);
    std::vector<std::vector<int>> cells;
    for (int k = 0; k < 2; ++k) {
      auto frame = makeFrame(c.w, c.h, [&](int, int) { return int(rng() % 256); });
      RFModule_PreProcess(m, frame.data(), k);
      cells.push_back(referenceCells(frame, c.w, c.h, c.cols, c.rows));
    }
    const RFTarget* t = m->targets;
    for (int k = 0; k < 2; ++k, t = t->next) {
      ASSERT_NE(t, nullptr);
      EXPECT_EQ(t->cols, c.cols);
      EXPECT_EQ(t->rows, c.rows);
      EXPECT_EQ(std::vector<int>(t->data, t->data + c.cols * c.rows), cells[k]);
    }
    EXPECT_EQ(t, nullptr);
    if (c.w < 600) {
      EXPECT_EQ(cells[0], std::vector<int>(4, 0));
    }
    RFModule_Release(&m);
  }
}

TEST(RefocusMap, TheSmallImageColumnsRightOfTheLastCellAreIgnored) {
  // 600 / 7 = 85: cells cover columns 0..594. Texture in columns 597..599 only
  // reaches the smoothed image from column 595 on, so frame 0's detail counts
  // nowhere and the flat frame 1 wins every cell by the tie rule.
  RFModule* m = RFModule_Create(600, 600, 7, 5);
  ASSERT_NE(m, nullptr);
  RFModule_PreProcess(
      m, makeFrame(600, 600, [](int x, int y) { return x >= 597 ? ((x + y) % 2) * 200 : 50; }).data(), 0);
  RFModule_PreProcess(m, makeFrame(600, 600, [](int, int) { return 50; }).data(), 1);
  EXPECT_EQ(resultOf(m), std::vector<int>(35, 1));
  // One column further left is inside the last cell column.
  RFModule_Clear(m);
  RFModule_PreProcess(
      m, makeFrame(600, 600, [](int x, int y) { return x >= 593 ? ((x + y) % 2) * 200 : 50; }).data(), 0);
  RFModule_PreProcess(m, makeFrame(600, 600, [](int, int) { return 50; }).data(), 1);
  const std::vector<int> map = resultOf(m);
  for (int i = 0; i < 35; ++i) EXPECT_EQ(map[i], i % 7 == 6 ? 0 : 1) << i;
  RFModule_Release(&m);
}

TEST(RefocusTargets, ListOperationsKeepCountsPositionsAndOwnership) {
  RFModule* m = RFModule_Create(600, 600, 2, 1);
  ASSERT_NE(m, nullptr);
  int data[2] = {5, 9};
  EXPECT_EQ(RFTarget_Create(nullptr, 2, 1), nullptr);
  EXPECT_EQ(RFTarget_Create(data, 0, 1), nullptr);
  EXPECT_EQ(RFTarget_Create(data, 2, -1), nullptr);
  std::vector<RFTarget*> made;
  for (int k = 0; k < 22; ++k) {
    data[0] = k;
    RFTarget* t = RFTarget_Create(data, 2, 1);
    ASSERT_NE(t, nullptr);
    made.push_back(t);
    RFModule_AddTarget(m, t, 1000 + k);
  }
  data[0] = -1;  // the target holds its own copy
  EXPECT_EQ(made[3]->data[0], 3);
  EXPECT_EQ(m->targetCount, 22);
  for (int k = 0; k < 20; ++k) EXPECT_EQ(m->positions[k], 1000 + k);
  // Adding a listed target again, or nulls, changes nothing.
  RFModule_AddTarget(m, made[5], 7);
  RFModule_AddTarget(m, nullptr, 7);
  RFModule_AddTarget(nullptr, made[5], 7);
  EXPECT_EQ(m->targetCount, 22);
  // Cell 0 grows with k, cell 1 ties: the last target wins both.
  EXPECT_EQ(resultOf(m), (std::vector<int>{21, 21}));
  RFModule_RemoveTarget(m, made[21]);
  RFModule_RemoveTarget(m, made[0]);
  EXPECT_EQ(m->targetCount, 20);
  EXPECT_EQ(m->positions[0], 1000);  // positions are not shifted
  EXPECT_EQ(m->targets, made[1]);
  EXPECT_EQ(resultOf(m), (std::vector<int>{19, 19}));
  RFTarget stranger = {2, 1, data, nullptr};
  RFModule_RemoveTarget(m, &stranger);
  EXPECT_EQ(m->targetCount, 20);
  RFModule_Release(&m);
}

TEST(RefocusHandles, ForeignTagsAndZeroAreRefusedWithoutTouchingAnything) {
  auto* foreign = static_cast<unsigned char*>(ov_malloc_has_tag(0x110012, sizeof(RFModule)));
  ASSERT_NE(foreign, nullptr);
  auto frame = makeFrame(600, 600, [](int x, int) { return x; });
  int size = 77;
  for (intptr_t h : {intptr_t{0}, reinterpret_cast<intptr_t>(foreign)}) {
    EXPECT_EQ(RefocusModule_Process(h, frame.data(), 3), 0);
    size = 77;
    EXPECT_EQ(RefocusModule_GetResultBuf(h, &size), nullptr);
    EXPECT_EQ(size, 0);
    RefocusModule_Release(h);
  }
  EXPECT_EQ(ov_read_tag(foreign), 0x110012u);  // not freed by the refused release
  ov_free_has_tag(0x110012, foreign);

  const intptr_t h = RefocusModule_Initialize(600, 600, 2, 2);
  ASSERT_NE(h, 0);
  const int id = reinterpret_cast<RFModule*>(h)->id;
  EXPECT_EQ(RefocusModule_Process(h, frame.data(), 3), id);
  EXPECT_EQ(RefocusModule_Process(h, nullptr, 4), id);  // no frame, no target
  EXPECT_EQ(reinterpret_cast<RFModule*>(h)->targetCount, 1);
  EXPECT_EQ(RefocusModule_GetResultBuf(h, nullptr), nullptr);
  RefocusModule_Release(h);
}

}  // namespace
