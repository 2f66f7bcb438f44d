// Replaces malloc and free (the library binds to these) to watch what reaches
// the allocator, in the optimised build where a wipe before free is a dead store.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/Memory.h"
#include "refocus/Refocus.h"

extern "C" void* __libc_malloc(size_t);
extern "C" void __libc_free(void*);

namespace {
void* gHeld = nullptr;  // its free records the tag word and keeps the block
std::vector<unsigned char> gWord;
int gHeldFrees = 0, gMallocs = 0;
bool gCounting = false;
}  // namespace

extern "C" void* malloc(size_t n) {
  gMallocs += gCounting;
  return __libc_malloc(n);
}

extern "C" void free(void* p) {
  if (p == nullptr || p != gHeld) return __libc_free(p);
  const auto* b = static_cast<unsigned char*>(p);
  gWord.assign(b, b + 4);
  ++gHeldFrees;
}

namespace {

TEST(TaggedFree, WipesTheTagSoASecondFreeOfThePointerIsRefused) {
  auto* p = static_cast<unsigned char*>(ov_malloc_has_tag(0xA1B2C3D4u, 16));
  gHeld = p - 4;
  ov_free_has_tag(0xA1B2C3D4u, p);
  EXPECT_EQ(gWord, std::vector<unsigned char>(4, 0));
  ov_free_has_tag(0xA1B2C3D4u, p);
  EXPECT_EQ(gHeldFrees, 1);
  gHeld = nullptr;
  __libc_free(p - 4);
}

// Intermediate images live in the work buffer: a frame allocates its target
// (record and cell sums) only, also when wide enough to need large column sums.
TEST(RefocusFrame, AllocatesOnlyItsTarget) {
  for (int width : {600, 5400, 6000}) {
    RFModule* m = RFModule_Create(width, 600, 4, 3);
    std::vector<unsigned char> frame(size_t(width) * 1200);
    for (size_t i = 0; i < frame.size(); i += 2) frame[i] = static_cast<unsigned char>(i / 2 % width);
    gMallocs = 0;
    gCounting = true;
    RFModule_PreProcess(m, frame.data(), 1);
    gCounting = false;
    EXPECT_EQ(gMallocs, 2) << width;
    EXPECT_GT(m->targets->data[0], 0) << width;  // a ramp is never flat
    RFModule_Release(&m);
  }
}

}  // namespace
