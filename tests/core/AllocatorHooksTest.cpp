// This executable replaces malloc and free (the library's calls bind to these
// definitions) to watch what the library hands to the allocator. It must be
// built optimised like the library: a wipe before free is exactly the store
// an optimiser removes.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "core/Memory.h"
#include "refocus/Refocus.h"

extern "C" void* __libc_malloc(size_t);
extern "C" void __libc_free(void*);

namespace {
void* gWatched = nullptr;  // block whose free is recorded and held back
unsigned char gWord[4];
int gWatchedFrees = 0;
bool gCounting = false;
int gMallocs = 0;
}  // namespace

extern "C" void* malloc(size_t n) {
  if (gCounting) ++gMallocs;
  return __libc_malloc(n);
}

extern "C" void free(void* p) {
  if (p != nullptr && p == gWatched) {
    memcpy(gWord, p, sizeof gWord);
    ++gWatchedFrees;
    return;  // kept alive so a second ov_free_has_tag can be tried on it
  }
  __libc_free(p);
}

namespace {

TEST(TaggedFree, WipesTheTagSoASecondFreeOfThePointerIsRefused) {
  auto* p = static_cast<unsigned char*>(ov_malloc_has_tag(0xA1B2C3D4u, 16));
  ASSERT_NE(p, nullptr);
  gWatched = p - 4;
  ov_free_has_tag(0xA1B2C3D4u, p);
  EXPECT_EQ(gWatchedFrees, 1);
  EXPECT_EQ(std::vector<unsigned char>(gWord, gWord + 4), std::vector<unsigned char>(4, 0));
  ov_free_has_tag(0xA1B2C3D4u, p);  // the wiped tag no longer matches
  EXPECT_EQ(gWatchedFrees, 1);
  gWatched = nullptr;
  __libc_free(p - 4);
}

// Every intermediate image lives in the work buffer: a frame allocates its
// target (record and cell sums) and nothing else, also when it is wide enough
// for the column sums to outgrow a small stack array.
TEST(RefocusFrame, AllocatesOnlyItsTarget) {
  for (int width : {600, 5400, 6000}) {
    RFModule* m = RFModule_Create(width, 600, 4, 3);
    ASSERT_NE(m, nullptr);
    std::vector<unsigned char> frame(size_t(width) * 600 * 2);
    for (size_t i = 0; i < frame.size(); i += 2) frame[i] = static_cast<unsigned char>((i / 2) % width);
    gMallocs = 0;
    gCounting = true;
    RFModule_PreProcess(m, frame.data(), 1);
    gCounting = false;
    EXPECT_EQ(gMallocs, 2) << width;
    ASSERT_EQ(m->targetCount, 1);
    // Luma ramps 0..width-1 mod 256 in blocks of width / 600: never flat.
    EXPECT_GT(m->targets->data[0], 0) << width;
    RFModule_Release(&m);
  }
}

}  // namespace
