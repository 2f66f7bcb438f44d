#include "supercapture/MergeKernels.h"

#include <cstring>

namespace orvan::supercapture {
namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the lane shuffles assume little endian");

// Portable vector types: GCC and Clang map them onto SSE2 or NEON registers,
// and the shuffles below onto their unpack/zip and pack/unzip instructions.
typedef uint8_t u8x16 __attribute__((vector_size(16)));
typedef uint16_t u16x8 __attribute__((vector_size(16)));
typedef int32_t i32x4 __attribute__((vector_size(16)));
typedef uint32_t u32x4 __attribute__((vector_size(16)));
typedef double f64x4 __attribute__((vector_size(32)));

// 16 bytes widened to four vectors of four 32-bit lanes, in order.
struct Wide {
  i32x4 v[4];
};

inline Wide widen16(const uint8_t* p) {
  u8x16 s;
  memcpy(&s, p, sizeof(s));
  const u8x16 z8 = {};
  const u16x8 z16 = {};
  u16x8 lo = reinterpret_cast<u16x8>(
      __builtin_shufflevector(s, z8, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
  u16x8 hi = reinterpret_cast<u16x8>(
      __builtin_shufflevector(s, z8, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
  Wide w;
  w.v[0] = reinterpret_cast<i32x4>(__builtin_shufflevector(lo, z16, 0, 8, 1, 9, 2, 10, 3, 11));
  w.v[1] = reinterpret_cast<i32x4>(__builtin_shufflevector(lo, z16, 4, 12, 5, 13, 6, 14, 7, 15));
  w.v[2] = reinterpret_cast<i32x4>(__builtin_shufflevector(hi, z16, 0, 8, 1, 9, 2, 10, 3, 11));
  w.v[3] = reinterpret_cast<i32x4>(__builtin_shufflevector(hi, z16, 4, 12, 5, 13, 6, 14, 7, 15));
  return w;
}

// The low 8 bits of sixteen 32-bit lanes, in order.
inline void narrow16(uint8_t* p, i32x4 a, i32x4 b, i32x4 c, i32x4 d) {
  const i32x4 m = {0xFF, 0xFF, 0xFF, 0xFF};
  u16x8 ab = reinterpret_cast<u16x8>(a & m), bb = reinterpret_cast<u16x8>(b & m);
  u16x8 cb = reinterpret_cast<u16x8>(c & m), db = reinterpret_cast<u16x8>(d & m);
  u8x16 lo = reinterpret_cast<u8x16>(__builtin_shufflevector(ab, bb, 0, 2, 4, 6, 8, 10, 12, 14));
  u8x16 hi = reinterpret_cast<u8x16>(__builtin_shufflevector(cb, db, 0, 2, 4, 6, 8, 10, 12, 14));
  u8x16 out = __builtin_shufflevector(lo, hi, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  memcpy(p, &out, sizeof(out));
}

inline i32x4 load(const int32_t* p) {
  i32x4 v;
  memcpy(&v, p, sizeof(v));
  return v;
}

inline void store(int32_t* p, i32x4 v) { memcpy(p, &v, sizeof(v)); }

}  // namespace

size_t mergeMax_Portable(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    Wide s = widen16(src + i);
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      i32x4 a = load(acc + i + 4 * k);
      store(acc + i + 4 * k, a < s.v[k] ? s.v[k] : a);
    }
  }
  return i;
}

size_t mergeCopy_Portable(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    Wide s = widen16(src + i);
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) store(acc + i + 4 * k, s.v[k]);
  }
  return i;
}

size_t mergeAdd_Portable(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    Wide s = widen16(src + i);
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      // Unsigned lanes: the sum wraps instead of overflowing.
      u32x4 a = reinterpret_cast<u32x4>(load(acc + i + 4 * k));
      store(acc + i + 4 * k, reinterpret_cast<i32x4>(a + reinterpret_cast<u32x4>(s.v[k])));
    }
  }
  return i;
}

size_t resultLowBits_Portable(uint8_t* dst, const int32_t* acc, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    narrow16(dst + i, load(acc + i), load(acc + i + 4), load(acc + i + 8), load(acc + i + 12));
  }
  return i;
}

size_t resultMean_Portable(uint8_t* dst, const int32_t* acc, size_t n, int32_t count) {
  // More than 2^31 frames (a negative count) is left to the C kernel.
  if (count <= 0) return 0;
  // Multiplying by the reciprocal is much cheaper than dividing. With
  // a = k * count + r (0 <= r < count), (a + 0.5) / count lies at least
  // 0.5 / count inside (k, k + 1), far more than the relative rounding error
  // (about 2^-52) of the product, so truncation gives exactly k.
  const double r = 1.0 / count;
  const f64x4 rv = {r, r, r, r};
  const f64x4 half = {0.5, 0.5, 0.5, 0.5};
  const i32x4 zero = {0, 0, 0, 0};
  const i32x4 top = {255, 255, 255, 255};
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    i32x4 v[4];
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      // Negative sums give 0 either way; clamping them first keeps q in
      // [0, 2^31), where the conversion back to int is defined.
      i32x4 a = load(acc + i + 4 * k);
      a = a < zero ? zero : a;
      f64x4 q = (__builtin_convertvector(a, f64x4) + half) * rv;
      i32x4 t = __builtin_convertvector(q, i32x4);
      v[k] = t > top ? top : t;
    }
    narrow16(dst + i, v[0], v[1], v[2], v[3]);
  }
  return i;
}

void mergeMax_C(int32_t* acc, const uint8_t* src, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    if (acc[i] < static_cast<int32_t>(src[i])) acc[i] = src[i];
  }
}

void mergeCopy_C(int32_t* acc, const uint8_t* src, size_t n) {
  for (size_t i = 0; i < n; ++i) acc[i] = src[i];
}

void mergeAdd_C(int32_t* acc, const uint8_t* src, size_t n) {
  for (size_t i = 0; i < n; ++i) acc[i] = static_cast<int32_t>(static_cast<uint32_t>(acc[i]) + src[i]);
}

void resultLowBits_C(uint8_t* dst, const int32_t* acc, size_t n) {
  for (size_t i = 0; i < n; ++i) dst[i] = static_cast<uint8_t>(acc[i]);
}

void resultMean_C(uint8_t* dst, const int32_t* acc, size_t n, int32_t count) {
  // For 32-bit operands the correctly rounded double quotient truncates to
  // the integer quotient; clamped in double first, so the conversion to int
  // is always defined.
  for (size_t i = 0; i < n; ++i) {
    double q = static_cast<double>(acc[i]) / static_cast<double>(count);
    q = q < 0.0 ? 0.0 : (q > 255.0 ? 255.0 : q);
    dst[i] = static_cast<uint8_t>(static_cast<int32_t>(q));
  }
}

// The one dispatch point: NEON on ARM, the portable kernels elsewhere; the C
// kernel finishes what the block kernel leaves.
#if OV_HAVE_NEON_MERGE
#define OV_MERGE_BLOCKS(name) name##_NEON
#else
#define OV_MERGE_BLOCKS(name) name##_Portable
#endif

void mergeMax(int32_t* acc, const uint8_t* src, size_t n) {
  const size_t done = OV_MERGE_BLOCKS(mergeMax)(acc, src, n);
  mergeMax_C(acc + done, src + done, n - done);
}

void mergeCopy(int32_t* acc, const uint8_t* src, size_t n) {
  const size_t done = OV_MERGE_BLOCKS(mergeCopy)(acc, src, n);
  mergeCopy_C(acc + done, src + done, n - done);
}

void mergeAdd(int32_t* acc, const uint8_t* src, size_t n) {
  const size_t done = OV_MERGE_BLOCKS(mergeAdd)(acc, src, n);
  mergeAdd_C(acc + done, src + done, n - done);
}

void resultLowBits(uint8_t* dst, const int32_t* acc, size_t n) {
  const size_t done = OV_MERGE_BLOCKS(resultLowBits)(dst, acc, n);
  resultLowBits_C(dst + done, acc + done, n - done);
}

void resultMean(uint8_t* dst, const int32_t* acc, size_t n, int32_t count) {
  const size_t done = OV_MERGE_BLOCKS(resultMean)(dst, acc, n, count);
  resultMean_C(dst + done, acc + done, n - done, count);
}

#undef OV_MERGE_BLOCKS

}  // namespace orvan::supercapture
