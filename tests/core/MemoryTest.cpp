#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "core/Memory.h"
#include "core/Utils.h"

namespace {

TEST(Memory, TagIsBigEndianAndWrongTagFreesNothing) {
  auto* p = static_cast<unsigned char*>(ov_malloc_has_tag(0x01020304u, 8));
  ASSERT_NE(p, nullptr);
  const std::string tag = "\x01\x02\x03\x04";
  EXPECT_EQ(std::string(p - 4, p), tag);
  // Byte-swapped tag: refused, block and tag untouched (still writable below).
  ov_free_has_tag(0x04030201u, p);
  EXPECT_EQ(std::string(p - 4, p), tag);
  memset(p, 0xAB, 8);
  // The right tag frees it; a leak here would be reported by LeakSanitizer.
  ov_free_has_tag(0x01020304u, p);
}

TEST(Memory, ZeroSizesAndNullPointersAreRefused) {
  EXPECT_EQ(ov_malloc(0), nullptr);
  EXPECT_EQ(ov_malloc_has_tag(0x11223344u, 0), nullptr);
  EXPECT_EQ(ov_malloc_has_tag(0x11223344u, 0xFFFFFFFDu), nullptr);  // size + 4 beyond 32 bits
  EXPECT_EQ(galloc_malloc(0), nullptr);
  ov_free(nullptr);
  galloc_free(nullptr);
  unsigned char src[4] = {1, 2, 3, 4}, dst[4] = {9, 9, 9, 9};
  ov_memcpy(dst, src, 0);
  ov_memcpy(dst, nullptr, 4);
  galloc_memset(nullptr, 7, 4);
  ov_memset(dst, 7, 0);
  EXPECT_EQ(std::string(dst, dst + 4), "\x09\x09\x09\x09");
  galloc_memcpy(dst, src, 2);
  ov_memset(dst + 1, 7, 2);
  EXPECT_EQ(std::string(dst, dst + 4), "\x01\x07\x07\x09");
}

TEST(Memory, GallocAllocClearsAndReallocNeedsPointerAndSize) {
  auto* z = static_cast<unsigned char*>(galloc_alloc(64));
  ASSERT_NE(z, nullptr);
  for (int i = 0; i < 64; ++i) ASSERT_EQ(z[i], 0) << i;
  EXPECT_EQ(galloc_realloc(nullptr, 16), nullptr);
  EXPECT_EQ(galloc_realloc(z, 0), nullptr);  // z must still be valid
  z[63] = 42;
  auto* bigger = static_cast<unsigned char*>(galloc_realloc(z, 4096));
  ASSERT_NE(bigger, nullptr);
  EXPECT_EQ(bigger[63], 42);
  galloc_free(bigger);
}

TEST(Utils, TimeoutDelayBoundaries) {
  EXPECT_EQ(toMillisecondTimeoutDelay(5, 5), 0);
  EXPECT_EQ(toMillisecondTimeoutDelay(10, 5), 0);
  EXPECT_EQ(toMillisecondTimeoutDelay(0, 1000000), 1);
  EXPECT_EQ(toMillisecondTimeoutDelay(0, 1000001), 2);
  EXPECT_EQ(toMillisecondTimeoutDelay(100, 100 + 2147483646000000LL), 2147483646);
  EXPECT_EQ(toMillisecondTimeoutDelay(100, 100 + 2147483646000001LL), -1);
  EXPECT_EQ(toMillisecondTimeoutDelay(-9000000000000000000LL, 9000000000000000000LL), -1);
}

TEST(Utils, StringFormatSharesOneBoundedBuffer) {
  char* a = string_format("%d-%s", 42, "x");
  EXPECT_STREQ(a, "42-x");
  char* b = string_format("%s", "y");
  EXPECT_EQ(a, b);
  EXPECT_STREQ(a, "y");  // the old text is cleared, not overlaid
  std::string big(5000, 'q');
  char* c = string_format("%s", big.c_str());
  EXPECT_EQ(strlen(c), 2047u);
}

TEST(Utils, WriteFileCreatesTruncatesAndIgnoresBadArguments) {
  std::string path = ::testing::TempDir() + "writefile_" + std::to_string(getpid()) + ".bin";
  std::remove(path.c_str());
  const unsigned char data[5] = {0, 1, 2, 0xFE, 0xFF};
  WriteFile(path.c_str(), nullptr, 5);
  EXPECT_FALSE(std::ifstream(path).good());
  WriteFile(path.c_str(), data, 5);
  WriteFile(path.c_str(), data + 3, 2);  // shorter write truncates
  std::ifstream in(path, std::ios::binary);
  std::string got((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(got, std::string("\xFE\xFF", 2));
  std::remove(path.c_str());
}

}  // namespace
