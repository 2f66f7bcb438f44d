#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "refocus/Refocus.h"

namespace {

// Modules share no state: four sweeps on four threads at once give the same
// maps as one sweep alone.
std::vector<int> sweepMap(int seed) {
  const intptr_t h = RefocusModule_Initialize(600, 600, 3, 3);
  std::vector<unsigned char> frame(600 * 600 * 2);
  for (int k = 0; k < 4; ++k) {
    for (size_t i = 0; i < frame.size(); i += 2) frame[i] = static_cast<unsigned char>((i * (k + seed)) >> 3);
    RefocusModule_Process(h, frame.data(), k);
  }
  int size = 0;
  const unsigned char* record = RefocusModule_GetResultBuf(h, &size);
  std::vector<int> map;
  for (int i = 0; record != nullptr && i < 9; ++i) map.push_back(record[4 * (6 + i) + 3]);
  RefocusModule_Release(h);
  return map;
}

TEST(RefocusThreads, IndependentModulesOnFourThreads) {
  std::vector<std::vector<int>> alone, together(4);
  for (int t = 0; t < 4; ++t) alone.push_back(sweepMap(t));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) threads.emplace_back([t, &together] { together[t] = sweepMap(t); });
  for (auto& th : threads) th.join();
  for (int t = 0; t < 4; ++t) {
    EXPECT_EQ(together[t].size(), 9u);
    EXPECT_EQ(together[t], alone[t]);
  }
}

}  // namespace
