#include <dlfcn.h>
#include <gtest/gtest.h>

#include <climits>

#include "core/SizeRule.h"

namespace {
using orvan::sizerule::intCount;
using orvan::sizerule::uintCount;

// Each limit and one beyond; products past 2^64 (2^65 wraps to 0); negatives.
static_assert(intCount(46340, 46340) == 2147395600 && intCount(46341, 46341) == -1);
static_assert(uintCount(65536, 65535) == 4294901760LL && uintCount(65536, 65536) == -1);
static_assert(uintCount(1u << 31, 1u << 31, 8) == -1 && uintCount(~0u, ~0u, ~0u, ~0u) == -1);
static_assert(orvan::sizerule::countWithin(INT64_MAX, 1LL << 31, 1LL << 31, 3) == -1);
static_assert(intCount(INT_MIN, INT_MIN) == -1 && intCount(-1, 0) == -1 &&
              intCount(0, INT_MAX, INT_MAX) == 0);
static_assert(uintCount(~0ull, 1) == -1 && !orvan::sizerule::fitsInt(int64_t{INT_MAX} + 1));

// The codec adapters are interface; the tag reader is not.
TEST(Exports, JpegAdaptersAreExportedAndTheTagReaderIsNot) {
  void* lib = dlopen(OV_LIBRARY_SONAME, RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(lib, nullptr);
  for (const char* name :
       {"_Z21jpeg_utils_error_exitP18jpeg_common_struct", "_ZN21jpeg_utils_source_mgrC1EP6Stream",
        "_ZN26jpeg_utils_destination_mgrC1EP6Stream"})
    EXPECT_NE(dlsym(lib, name), nullptr) << name;
  EXPECT_EQ(dlsym(lib, "ov_read_tag"), nullptr);
  EXPECT_EQ(dlsym(lib, "_Z11ov_read_tagPKv"), nullptr);
  dlclose(lib);
}
}  // namespace
