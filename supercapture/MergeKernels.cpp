#include "supercapture/MergeKernels.h"

#include <cstring>

namespace supercapture {
namespace {

// Portable vector types: GCC and Clang map them onto SSE2 or NEON registers.
typedef uint8_t u8x4 __attribute__((vector_size(4)));
typedef int32_t i32x4 __attribute__((vector_size(16)));
typedef uint32_t u32x4 __attribute__((vector_size(16)));
typedef double f64x4 __attribute__((vector_size(32)));

inline i32x4 widen(const uint8_t* p) {
  u8x4 b;
  memcpy(&b, p, sizeof(b));
  return __builtin_convertvector(b, i32x4);
}

inline i32x4 load(const int32_t* p) {
  i32x4 v;
  memcpy(&v, p, sizeof(v));
  return v;
}

inline void store(int32_t* p, i32x4 v) { memcpy(p, &v, sizeof(v)); }

inline void storeBytes(uint8_t* p, i32x4 v) {
  u8x4 b = __builtin_convertvector(v, u8x4);  // keeps the low 8 bits
  memcpy(p, &b, sizeof(b));
}

}  // namespace

void mergeMax(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    for (size_t k = 0; k < 16; k += 4) {
      i32x4 a = load(acc + i + k);
      i32x4 s = widen(src + i + k);
      store(acc + i + k, a < s ? s : a);
    }
  }
  for (; i < n; ++i) {
    if (acc[i] < static_cast<int32_t>(src[i])) acc[i] = src[i];
  }
}

void mergeCopy(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    for (size_t k = 0; k < 16; k += 4) store(acc + i + k, widen(src + i + k));
  }
  for (; i < n; ++i) acc[i] = src[i];
}

void mergeAdd(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    for (size_t k = 0; k < 16; k += 4) {
      // Unsigned lanes: the sum wraps instead of overflowing.
      u32x4 a = reinterpret_cast<u32x4>(load(acc + i + k));
      u32x4 s = reinterpret_cast<u32x4>(widen(src + i + k));
      store(acc + i + k, reinterpret_cast<i32x4>(a + s));
    }
  }
  for (; i < n; ++i) {
    acc[i] = static_cast<int32_t>(static_cast<uint32_t>(acc[i]) + src[i]);
  }
}

void resultLowBits(uint8_t* dst, const int32_t* acc, size_t n) {
  size_t i = 0;
  for (; i + 4 <= n; i += 4) storeBytes(dst + i, load(acc + i));
  for (; i < n; ++i) dst[i] = static_cast<uint8_t>(acc[i]);
}

void resultMean(uint8_t* dst, const int32_t* acc, size_t n, int32_t count) {
  // For 32-bit a and b, the correctly rounded double quotient truncates to
  // exactly a / b, and the division cannot trap (INT_MIN / -1 included).
  const double divisor = static_cast<double>(count);
  const f64x4 d = {divisor, divisor, divisor, divisor};
  const i32x4 lo = {0, 0, 0, 0};
  const i32x4 hi = {255, 255, 255, 255};
  size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    f64x4 q = __builtin_convertvector(load(acc + i), f64x4) / d;
    // Outside the int range the conversion is undefined, so clamp in double.
    const f64x4 fl = {-1.0, -1.0, -1.0, -1.0};
    const f64x4 fh = {256.0, 256.0, 256.0, 256.0};
    q = q < fl ? fl : q;
    q = q > fh ? fh : q;
    i32x4 v = __builtin_convertvector(q, i32x4);
    v = v > hi ? hi : v;
    v = v < lo ? lo : v;
    storeBytes(dst + i, v);
  }
  for (; i < n; ++i) {
    double q = static_cast<double>(acc[i]) / divisor;
    if (q < -1.0) q = -1.0;
    if (q > 256.0) q = 256.0;
    int32_t v = static_cast<int32_t>(q);
    dst[i] = static_cast<uint8_t>(v > 255 ? 255 : (v < 0 ? 0 : v));
  }
}

}  // namespace supercapture
