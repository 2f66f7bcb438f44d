#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "refocus/Refocus.h"
#include "tests/refocus/RefocusFrames.h"

namespace {

using refocus_test::stripedFrame;

uint32_t wordAt(const unsigned char* record, int index) {
  const unsigned char* p = record + 4 * index;
  return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | p[3];
}

// A 2 x 2 sweep of `frames` frames in which cell c is sharpest in frame
// sharpest[c], with positions 100, 200, ...
intptr_t sweep(int frames, const std::vector<int>& sharpest) {
  const intptr_t h = RefocusModule_Initialize(600, 600, 2, 2);
  for (int k = 0; k < frames; ++k) {
    auto frame = stripedFrame(1, 2, 2, [&](int cell) { return 120 - 4 * std::abs(k - sharpest[cell]); });
    RefocusModule_Process(h, frame.data(), 100 * (k + 1));
  }
  return h;
}

TEST(RefocusRecord, LayoutWordByWordInBigEndian) {
  const intptr_t h = sweep(3, {0, 1, 2, 0});
  ASSERT_NE(h, 0);
  const int id = reinterpret_cast<RFModule*>(h)->id;
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(size, (4 + 13) * 4);
  EXPECT_EQ(record[0], 0x00);
  EXPECT_EQ(record[1], 0x00);
  EXPECT_EQ(record[2], 0x12);
  EXPECT_EQ(record[3], 0x34);
  const std::vector<uint32_t> expected = {0x1234, 100, 3, 2, 2, uint32_t(id), 0, 1, 2, 0, 100, 200, 300};
  for (int i = 0; i < int(expected.size()); ++i) EXPECT_EQ(wordAt(record, i), expected[i]) << "word " << i;
  // Nothing else in the reported length.
  for (int i = int(expected.size()); i < size / 4; ++i) EXPECT_EQ(wordAt(record, i), 0u) << "word " << i;
  RefocusModule_Release(h);
}

TEST(RefocusRecord, NegativePositionsAndAnEmptySweep) {
  const intptr_t h = RefocusModule_Initialize(600, 600, 1, 1);
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(size, 14 * 4);
  // No frames: first position 0, count 0, the one cell names frame 0.
  EXPECT_EQ(wordAt(record, 1), 0u);
  EXPECT_EQ(wordAt(record, 2), 0u);
  EXPECT_EQ(wordAt(record, 6), 0u);
  auto frame = stripedFrame(1, 1, 1, [](int) { return 50; });
  RefocusModule_Process(h, frame.data(), -5);
  record = RefocusModule_GetResultBuf(h, &size);
  EXPECT_EQ(record[4], 0xFF);
  EXPECT_EQ(record[7], 0xFB);
  EXPECT_EQ(wordAt(record, 1), uint32_t(-5));
  EXPECT_EQ(wordAt(record, 7), uint32_t(-5));
  RefocusModule_Release(h);
}

TEST(RefocusRecord, EightFramesListAllPositionsBeyondTheReportedLength) {
  const intptr_t h = sweep(8, {7, 6, 3, 0});
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(size, 17 * 4);  // 13 words + 4 cells, although 18 words are written
  EXPECT_EQ(wordAt(record, 2), 8u);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(wordAt(record, 6 + i), (std::vector<uint32_t>{7, 6, 3, 0}[i]));
  for (int k = 0; k < 8; ++k) EXPECT_EQ(wordAt(record, 10 + k), uint32_t(100 * (k + 1))) << k;
  RefocusModule_Release(h);
}

TEST(RefocusRecord, MoreThanTwentyFramesAndEarlierRecordsStayValid) {
  const intptr_t h = sweep(25, {24, 0, 12, 20});
  auto* m = reinterpret_cast<RFModule*>(h);
  int size = 0;
  const unsigned char* first = RefocusModule_GetResultBuf(h, &size);
  ASSERT_NE(first, nullptr);
  // The header carries the full count; the module then keeps 20 and lists 20.
  EXPECT_EQ(wordAt(first, 2), 25u);
  EXPECT_EQ(m->targetCount, 20);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(wordAt(first, 6 + i), (std::vector<uint32_t>{24, 0, 12, 20}[i]));
  for (int k = 0; k < 20; ++k) EXPECT_EQ(wordAt(first, 10 + k), uint32_t(100 * (k + 1))) << k;

  const unsigned char* second = RefocusModule_GetResultBuf(h, &size);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(second, first);
  EXPECT_EQ(m->output, second);
  EXPECT_EQ(wordAt(second, 2), 20u);
  // The first record is untouched and still readable (checked by the sanitizer
  // builds too).
  EXPECT_EQ(wordAt(first, 2), 25u);
  EXPECT_EQ(wordAt(first, 10 + 19), 2000u);
  RefocusModule_Release(h);
}

}  // namespace
