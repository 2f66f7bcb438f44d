#pragma once

// The lookup tables as integer arithmetic, for kernels that must not gather:
// every table entry is n * x + sign(x) * ((|x| * A) >> 16) for a whole part n
// and a 16-bit multiplier A, so 16-bit lanes with a multiply-high reproduce
// the tables exactly. The static_assert checks that for all 256 entries of
// all thirteen tables.
#include "image/ColorTables.h"

namespace orvan::convert_row {
namespace arith {

// Inverse terms of x = y - 16 or x = c - 128. Multipliers are
// ceil(fraction * 65536), one less for kVB where the ceiling overshoots at 169
// (0.071 * 169 = 11.999).
constexpr int kFracY = 10748;   // kY  = x + 0.164x
constexpr int kFracRV = 39060;  // kRV = x + 0.596x
constexpr int kFracGV = 53281;  // kGV = 0.813x
constexpr int kFracGU = 25625;  // kGU = 0.391x
constexpr int kFracBU = 1180;   // kBU = 2x + 0.018x
// Forward terms of a channel value 0..255 (never negative, so no sign step).
constexpr int kMulYR = 16843, kMulYG = 33031, kMulYB = 6423;
constexpr int kMulUR = 9700, kMulUG = 19071, kMulUB = 28771;
constexpr int kMulVG = 24118, kMulVB = 4653;

constexpr int truncMul(int x, int a) { return x < 0 ? -((-x * a) >> 16) : (x * a) >> 16; }

constexpr bool tablesMatch() {
  using namespace orvan::colortables;
  for (int i = 0; i < 256; ++i) {
    const int y = i - 16, c = i - 128;
    if (kY[i] != y + truncMul(y, kFracY) || kRV[i] != c + truncMul(c, kFracRV) ||
        kGV[i] != truncMul(c, kFracGV) || kGU[i] != truncMul(c, kFracGU) ||
        kBU[i] != 2 * c + truncMul(c, kFracBU))
      return false;
    if (kYR[i] != truncMul(i, kMulYR) || kYG[i] != truncMul(i, kMulYG) || kYB[i] != truncMul(i, kMulYB) ||
        kUR[i] != -truncMul(i, kMulUR) || kUG[i] != -truncMul(i, kMulUG) || kUB[i] != truncMul(i, kMulUB) ||
        kVG[i] != -truncMul(i, kMulVG) || kVB[i] != -truncMul(i, kMulVB))
      return false;
  }
  return true;
}
static_assert(tablesMatch(), "the table-free arithmetic must equal the tables entry for entry");

// The same by a flooring signed multiply-high (one instruction where the
// sign-magnitude form needs six): for negative x no product x * A is a whole
// multiple of 2^16, so truncation is the floor plus 1. Multipliers must fit in
// a signed 16-bit lane: A above 32767 becomes x + x * (A - 65536).
constexpr int kFloorRV = kFracRV - 65536;
constexpr int kFloorGV = kFracGV - 65536;
constexpr int floorHigh(int x, int a) { return (x * a) >> 16; }  // arithmetic shift: floor

constexpr bool flooringTermsMatch() {
  using namespace orvan::colortables;
  for (int i = 0; i < 256; ++i) {
    const int y = i - 16, c = i - 128;
    const int ny = y < 0 ? 1 : 0, nc = c < 0 ? 1 : 0;
    if (kY[i] != y + floorHigh(y, kFracY) + ny || kRV[i] != 2 * c + floorHigh(c, kFloorRV) + nc ||
        kGV[i] != c + floorHigh(c, kFloorGV) + nc || kGU[i] != floorHigh(c, kFracGU) + nc ||
        kBU[i] != 2 * c + floorHigh(c, kFracBU) + nc)
      return false;
  }
  return true;
}
static_assert(flooringTermsMatch(), "the flooring terms must equal the tables");

}  // namespace arith
}  // namespace orvan::convert_row
