#pragma once

// The thirteen BT.601 studio-swing lookup tables: entry i is c * (i - offset)
// truncated toward zero. They are built at compile time in integer
// thousandths (every c has three decimals), which truncates exactly where a
// floating-point product might land a hair below an integer (for example
// 0.504 * 125 = 63).
namespace orvan::colortables {

struct Table {
  int v[256];
  constexpr int operator[](int i) const { return v[i]; }
};

constexpr Table make(int milli, int offset) {
  Table t{};
  for (int i = 0; i < 256; ++i) t.v[i] = milli * (i - offset) / 1000;  // C++ division truncates
  return t;
}

inline constexpr Table kYR = make(257, 0);
inline constexpr Table kYG = make(504, 0);
inline constexpr Table kYB = make(98, 0);
inline constexpr Table kUR = make(-148, 0);
inline constexpr Table kUG = make(-291, 0);
inline constexpr Table kUB = make(439, 0);  // also V from R
inline constexpr Table kVG = make(-368, 0);
inline constexpr Table kVB = make(-71, 0);
inline constexpr Table kY = make(1164, 16);
inline constexpr Table kRV = make(1596, 128);
inline constexpr Table kGV = make(813, 128);
inline constexpr Table kGU = make(391, 128);
inline constexpr Table kBU = make(2018, 128);

}  // namespace orvan::colortables
