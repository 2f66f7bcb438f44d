#include <gtest/gtest.h>

#include "core/Memory.h"

TEST(Memory, TagIsStoredBigEndianBeforeTheBlock) {
  auto* p = static_cast<unsigned char*>(ov_malloc_has_tag(0x01020304u, 8));
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p[-4], 0x01);
  EXPECT_EQ(p[-3], 0x02);
  EXPECT_EQ(p[-2], 0x03);
  EXPECT_EQ(p[-1], 0x04);
  ov_free_has_tag(0x01020304u, p);
}
