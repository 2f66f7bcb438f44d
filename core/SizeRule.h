#pragma once

#include <cstdint>
#include <type_traits>

// The one size rule of every entry point: pixel and byte counts are computed
// in 64 bits, never in size_t or int first, and a count that does not fit the
// type the interface sizes things with is refused. Each helper returns the
// count, or -1 when a factor is negative or the product exceeds the limit.
namespace orvan::sizerule {

constexpr int64_t kIntLimit = INT32_MAX;    // interfaces sized with int
constexpr int64_t kUintLimit = UINT32_MAX;  // interfaces sized with unsigned 32-bit

namespace detail {
// Any integer factor as int64_t; unsigned values beyond INT64_MAX become -1,
// which is refused like a negative one (no limit lies that high).
template <typename T>
constexpr int64_t factor(T v) {
  static_assert(std::is_integral<T>::value, "sizes are integers");
  if constexpr (std::is_unsigned<T>::value) {
    return static_cast<uint64_t>(v) > static_cast<uint64_t>(INT64_MAX) ? -1 : static_cast<int64_t>(v);
  } else {
    return static_cast<int64_t>(v);
  }
}
}  // namespace detail

// Product of the factors if each is non-negative and the product is at most
// `limit` (0 <= limit), else -1. Every partial product stays at most `limit`,
// so nothing overflows whatever the factors.
template <typename... T>
constexpr int64_t countWithin(int64_t limit, T... factors) {
  const int64_t f[] = {detail::factor(factors)...};
  bool zero = false;
  for (int64_t v : f) {
    if (v < 0) return -1;
    if (v == 0) zero = true;
  }
  if (zero) return 0;
  int64_t product = 1;
  for (int64_t v : f) {
    if (product > limit / v) return -1;
    product *= v;
  }
  return product;
}

// The count for an interface that sizes with int.
template <typename... T>
constexpr int64_t intCount(T... factors) {
  return countWithin(kIntLimit, factors...);
}

// The count for an interface that sizes with unsigned 32-bit integers.
template <typename... T>
constexpr int64_t uintCount(T... factors) {
  return countWithin(kUintLimit, factors...);
}

// A count already computed in 64 bits (for example a product plus a header)
// checked against the same limits.
constexpr int64_t within(int64_t limit, int64_t count) { return count >= 0 && count <= limit ? count : -1; }

// Whether a count fits an int (for example a byte count returned as int).
constexpr bool fitsInt(int64_t count) { return within(kIntLimit, count) >= 0; }

}  // namespace orvan::sizerule
