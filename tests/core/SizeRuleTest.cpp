#include <dlfcn.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

#include "core/SizeRule.h"

namespace {

using sizerule::countWithin;
using sizerule::intCount;
using sizerule::uintCount;

// Products up to and just beyond each limit; factors of 2^32 whose full
// product passes 2^64 (and would wrap to 0 in 64 bits); negatives and zeros.
static_assert(intCount(46340, 46340) == 2147395600);
static_assert(intCount(46341, 46341) == -1);
static_assert(intCount(INT_MAX, 1, 1) == INT_MAX && intCount(INT_MAX, 2) == -1);
static_assert(uintCount(65536, 65535) == 4294901760LL && uintCount(65536, 65536) == -1);
static_assert(uintCount(0x80000000u, 0x80000000u, 8) == -1);
static_assert(uintCount(0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu) == -1);
static_assert(countWithin(INT64_MAX, uint64_t{1} << 32, uint64_t{1} << 32) == -1);
static_assert(countWithin(INT64_MAX, 1LL << 31, 1LL << 31, 3) == -1 &&
              countWithin(INT64_MAX, 1LL << 31, 1LL << 31) == 1LL << 62);
static_assert(intCount(INT_MIN, INT_MIN) == -1 && intCount(-1, 0) == -1 && intCount(5, -2) == -1);
static_assert(intCount(0, INT_MAX, INT_MAX) == 0 && uintCount(~0ull, 1) == -1);
static_assert(sizerule::within(sizerule::kIntLimit, int64_t{INT_MAX} + 1) == -1 &&
              sizerule::fitsInt(INT_MAX));

// The codec adapters are interface; the tag reader is not.
TEST(Exports, JpegAdaptersAreExportedAndTheTagReaderIsNot) {
  void* lib = dlopen("libcam.common.orvan.so", RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(lib, nullptr);
  for (const char* name :
       {"_Z21jpeg_utils_error_exitP18jpeg_common_struct", "_ZN21jpeg_utils_source_mgrC1EP6Stream",
        "_ZN26jpeg_utils_destination_mgrC1EP6Stream", "ov_free_has_tag"})
    EXPECT_NE(dlsym(lib, name), nullptr) << name;
  EXPECT_EQ(dlsym(lib, "ov_read_tag"), nullptr);
  EXPECT_EQ(dlsym(lib, "_Z11ov_read_tagPKv"), nullptr);
  dlclose(lib);
}

}  // namespace
