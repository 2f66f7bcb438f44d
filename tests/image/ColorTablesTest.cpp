#include <gtest/gtest.h>

#include <cmath>

#include "image/ColorTables.h"

using namespace colortables;

namespace {
struct Expect {
  const char* name;
  const Table& table;
  double c;
  int offset;
  int first, last;  // entries 0 and 255, worked out by hand
};
}  // namespace

// Endpoints: c * (0 - offset) and c * (255 - offset), truncated toward zero.
TEST(ColorTables, EndpointsOfAllThirteen) {
  const Expect tables[] = {
      {"kYR", kYR, 0.257, 0, 0, 65},       {"kYG", kYG, 0.504, 0, 0, 128},
      {"kYB", kYB, 0.098, 0, 0, 24},       {"kUR", kUR, -0.148, 0, 0, -37},
      {"kUG", kUG, -0.291, 0, 0, -74},     {"kUB", kUB, 0.439, 0, 0, 111},
      {"kVG", kVG, -0.368, 0, 0, -93},     {"kVB", kVB, -0.071, 0, 0, -18},
      {"kY", kY, 1.164, 16, -18, 278},     {"kRV", kRV, 1.596, 128, -204, 202},
      {"kGV", kGV, 0.813, 128, -104, 103}, {"kGU", kGU, 0.391, 128, -50, 49},
      {"kBU", kBU, 2.018, 128, -258, 256},
  };
  for (const Expect& e : tables) {
    SCOPED_TRACE(e.name);
    EXPECT_EQ(e.table[0], e.first);
    EXPECT_EQ(e.table[255], e.last);
    // Every entry is within one of the real product, on the zero side of it.
    for (int i = 0; i < 256; ++i) {
      const double exact = e.c * (i - e.offset);
      const int v = e.table[i];
      EXPECT_LT(std::fabs(v), std::fabs(exact) + 1e-9) << i;
      EXPECT_GT(std::fabs(v), std::fabs(exact) - 1.0) << i;
      EXPECT_TRUE(v == 0 || (v > 0) == (exact > 0)) << i;
    }
  }
}

// Entries where c * i is a whole number must not drop to the integer below.
TEST(ColorTables, ExactProductsAreKept) {
  EXPECT_EQ(kYG[125], 63);  // 0.504 * 125
  EXPECT_EQ(kYG[250], 126);
  EXPECT_EQ(kUR[250], -37);  // -0.148 * 250
  EXPECT_EQ(kVG[125], -46);  // -0.368 * 125
  EXPECT_EQ(kVG[250], -92);
}

TEST(ColorTables, CentresAreZero) {
  EXPECT_EQ(kY[16], 0);
  for (const Table* t : {&kRV, &kGV, &kGU, &kBU}) EXPECT_EQ((*t)[128], 0);
  EXPECT_EQ(kY[128], 130);  // 1.164 * 112 = 130.368
}
