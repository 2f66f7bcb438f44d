// Portable versions of the camera-layout row kernels, for processors without
// a hand-written SIMD kernel. No lookups (a gather per pixel keeps a compiler
// from vectorising anything): the table arithmetic of ConvertRowsArith.h in
// 16-bit lanes, as plain loops over fixed-size blocks that GCC and Clang turn
// into SIMD code on their own at -O2/-O3. Bit-identical to the C kernels.
//
// Three bytes per pixel are the awkward part: a stride-3 byte access needs a
// byte shuffle. Where the compiler targets one (NEON, SSSE3 and later) the
// loops read and write the bytes as they are and the compiler does the rest.
// Baseline x86-64 (SSE2) has none, and the compiler would fall back to one
// byte at a time; there pixels are instead built as 32-bit words and packed
// to 3 bytes with 64-bit shifts and overlapping loads and stores. That
// packing assumes little-endian words; elsewhere without shuffles the kernels
// do nothing and the C kernels do the whole row.
#include <cstring>

#include "image/ConvertRows.h"
#include "image/ConvertRowsArith.h"

namespace orvan::convert_row {
namespace {

using namespace arith;

constexpr bool kLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
#if defined(__ARM_NEON) || defined(__SSSE3__)
constexpr bool kByteShuffles = true;
#else
constexpr bool kByteShuffles = false;
#endif
constexpr bool kUsable = kByteShuffles || kLittleEndian;
constexpr int kPx = 64;  // pixels per block

// Signed multiply-high, which floors; the terms add 1 for negative x, i.e.
// subtract x >> 15 (ConvertRowsArith.h proves the forms against the tables).
inline int16_t floorHigh(int16_t x, int a) {
  return static_cast<int16_t>((static_cast<int32_t>(x) * a) >> 16);
}
// (x * a) >> 16 for x >= 0: a multiply-high.
inline int16_t mulHigh(uint16_t x, uint16_t a) {
  return static_cast<int16_t>((static_cast<uint32_t>(x) * a) >> 16);
}
inline uint16_t clampByte(int16_t v) {
  v = v < 0 ? static_cast<int16_t>(0) : v;
  v = v > 255 ? static_cast<int16_t>(255) : v;
  return static_cast<uint16_t>(v);
}

// The inverse terms of one block, chroma already spread to every pixel.
struct Inverse {
  int16_t l[kPx], rv[kPx], gvu[kPx], bu[kPx];
};

// Luma terms of kPx samples.
inline void lumaTerms(const uint8_t* __restrict y, Inverse& t) {
  for (int j = 0; j < kPx; ++j) {
    const auto x = static_cast<int16_t>(y[j] - 16);
    t.l[j] = static_cast<int16_t>(x + floorHigh(x, kFracY) - (x >> 15));
  }
}

// Chroma terms of kPx / Spread groups, samples Step bytes apart, each copied
// to the Spread pixels of its group.
template <int Step, int Spread>
inline void chromaTerms(const uint8_t* __restrict u, const uint8_t* __restrict v, Inverse& t) {
  for (int q = 0; q < kPx / Spread; ++q) {
    const auto ux = static_cast<int16_t>(u[Step * q] - 128);
    const auto vx = static_cast<int16_t>(v[Step * q] - 128);
    const auto vn = static_cast<int16_t>(vx >> 15), un = static_cast<int16_t>(ux >> 15);
    const auto rv = static_cast<int16_t>(2 * vx + floorHigh(vx, kFloorRV) - vn);
    const auto gvu = static_cast<int16_t>(vx + floorHigh(vx, kFloorGV) - vn + floorHigh(ux, kFracGU) - un);
    const auto bu = static_cast<int16_t>(2 * ux + floorHigh(ux, kFracBU) - un);
    for (int k = 0; k < Spread; ++k) {
      t.rv[Spread * q + k] = rv;
      t.gvu[Spread * q + k] = gvu;
      t.bu[Spread * q + k] = bu;
    }
  }
}

// Writes the block's kPx pixels as 3 * kPx bytes.
inline void storeRGB(const Inverse& t, uint8_t* __restrict rgb) {
  if constexpr (kByteShuffles) {
    for (int j = 0; j < kPx; ++j) {
      const int16_t l = t.l[j];
      rgb[3 * j] = static_cast<uint8_t>(clampByte(static_cast<int16_t>(l + t.rv[j])));
      rgb[3 * j + 1] = static_cast<uint8_t>(clampByte(static_cast<int16_t>(l - t.gvu[j])));
      rgb[3 * j + 2] = static_cast<uint8_t>(clampByte(static_cast<int16_t>(l + t.bu[j])));
    }
    return;
  }
  uint32_t px[kPx];  // R | G << 8 | B << 16
  for (int j = 0; j < kPx; ++j) {
    const int16_t l = t.l[j];
    const auto rg = static_cast<uint16_t>(clampByte(static_cast<int16_t>(l + t.rv[j])) |
                                          clampByte(static_cast<int16_t>(l - t.gvu[j])) << 8);
    px[j] = rg | static_cast<uint32_t>(clampByte(static_cast<int16_t>(l + t.bu[j]))) << 16;
  }
  uint64_t two[kPx / 2];  // two pixels in the low 48 bits
  memcpy(two, px, sizeof(two));
  for (int k = 0; k < kPx / 2; ++k) two[k] = (two[k] & 0xFFFFFFu) | ((two[k] >> 8) & 0xFFFFFF000000u);
  // Each pair as 8 bytes, the next pair overwriting the 2 spare ones; the
  // last pair as 6 so nothing lands past the block.
  for (int k = 0; k < kPx / 2 - 1; ++k) memcpy(rgb + 6 * k, &two[k], 8);
  memcpy(rgb + 6 * (kPx / 2 - 1), &two[kPx / 2 - 1], 6);
}

// Per-pixel forward terms of one block of RGB: Y (with its +16), U and V
// before their rounding.
struct Forward {
  int16_t y[kPx], u[kPx], v[kPx];
};

// Reads 3 * kPx bytes: the packing of storeRGB backwards.
inline void forwardTerms(const uint8_t* __restrict rgb, Forward& f) {
  if constexpr (kByteShuffles) {
    for (int j = 0; j < kPx; ++j) {
      const uint16_t r = rgb[3 * j], g = rgb[3 * j + 1], b = rgb[3 * j + 2];
      f.y[j] = static_cast<int16_t>(mulHigh(r, kMulYR) + mulHigh(g, kMulYG) + mulHigh(b, kMulYB) + 16);
      f.u[j] = static_cast<int16_t>(mulHigh(b, kMulUB) - mulHigh(r, kMulUR) - mulHigh(g, kMulUG));
      f.v[j] = static_cast<int16_t>(mulHigh(r, kMulUB) - mulHigh(g, kMulVG) - mulHigh(b, kMulVB));
    }
    return;
  }
  uint64_t two[kPx / 2];
  for (int k = 0; k < kPx / 2 - 1; ++k) {
    uint64_t t;
    memcpy(&t, rgb + 6 * k, 8);
    two[k] = (t & 0xFFFFFFu) | ((t << 8) & 0xFFFFFF00000000u);
  }
  uint64_t t = 0;
  memcpy(&t, rgb + 6 * (kPx / 2 - 1), 6);
  two[kPx / 2 - 1] = (t & 0xFFFFFFu) | ((t << 8) & 0xFFFFFF00000000u);
  uint16_t half[2 * kPx];  // per pixel R | G << 8, then B
  memcpy(half, two, sizeof(half));
  for (int j = 0; j < kPx; ++j) {
    const auto r = static_cast<uint16_t>(half[2 * j] & 255), g = static_cast<uint16_t>(half[2 * j] >> 8),
               b = half[2 * j + 1];
    f.y[j] = static_cast<int16_t>(mulHigh(r, kMulYR) + mulHigh(g, kMulYG) + mulHigh(b, kMulYB) + 16);
    f.u[j] = static_cast<int16_t>(mulHigh(b, kMulUB) - mulHigh(r, kMulUR) - mulHigh(g, kMulUG));
    f.v[j] = static_cast<int16_t>(mulHigh(r, kMulUB) - mulHigh(g, kMulVG) - mulHigh(b, kMulVB));
  }
}

template <int U>
int nvQuadToRGB(const uint8_t* __restrict y, const uint8_t* __restrict chroma, uint8_t* __restrict rgb,
                int quads) {
  constexpr int kQuads = kPx / 4;
  int done = 0;
  for (; done + kQuads <= quads; done += kQuads, y += kPx, chroma += 2 * kQuads, rgb += 3 * kPx) {
    Inverse t;
    lumaTerms(y, t);
    chromaTerms<2, 4>(chroma + U, chroma + (1 - U), t);
    storeRGB(t, rgb);
  }
  return done;
}

template <int U>
int packed422ToRGB(const uint8_t* __restrict src, uint8_t* __restrict rgb, int pairs) {
  constexpr int kPairs = kPx / 2;
  int done = 0;
  for (; done + kPairs <= pairs; done += kPairs, src += 4 * kPairs, rgb += 3 * kPx) {
    // Luma and chroma bytes apart first: one pass over whole byte pairs.
    uint8_t luma[kPx], chroma[kPx];
    for (int j = 0; j < kPx; ++j) {
      luma[j] = src[2 * j];
      chroma[j] = src[2 * j + 1];
    }
    Inverse t;
    lumaTerms(luma, t);
    chromaTerms<2, 2>(chroma + (U >> 1), chroma + 1 - (U >> 1), t);
    storeRGB(t, rgb);
  }
  return done;
}

template <int U>
int rgbToNVBlocks(const uint8_t* __restrict rgb0, const uint8_t* __restrict rgb1, uint8_t* __restrict y0,
                  uint8_t* __restrict y1, uint8_t* __restrict chroma, int blocks) {
  constexpr int kBlocks = kPx / 2;
  int done = 0;
  for (; done + kBlocks <= blocks;
       done += kBlocks, rgb0 += 3 * kPx, rgb1 += 3 * kPx, y0 += kPx, y1 += kPx, chroma += 2 * kBlocks) {
    Forward a, b;
    forwardTerms(rgb0, a);
    forwardTerms(rgb1, b);
    for (int j = 0; j < kPx; ++j) {
      y0[j] = static_cast<uint8_t>(a.y[j]);
      y1[j] = static_cast<uint8_t>(b.y[j]);
    }
    for (int q = 0; q < kBlocks; ++q) {
      const int us = a.u[2 * q] + a.u[2 * q + 1] + b.u[2 * q] + b.u[2 * q + 1];
      const int vs = a.v[2 * q] + a.v[2 * q + 1] + b.v[2 * q] + b.v[2 * q + 1];
      chroma[2 * q + U] = static_cast<uint8_t>((us + 512) >> 2);
      chroma[2 * q + 1 - U] = static_cast<uint8_t>((vs + 512) >> 2);
    }
  }
  return done;
}

}  // namespace

int NVQuadToRGBRow_Portable(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset) {
  if (!kUsable) return 0;
  return uOffset == 0 ? nvQuadToRGB<0>(y, chroma, rgb, quads) : nvQuadToRGB<1>(y, chroma, rgb, quads);
}

int Packed422ToRGBRow_Portable(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset) {
  if (!kUsable) return 0;
  return uOffset == 1 ? packed422ToRGB<1>(src, rgb, pairs) : packed422ToRGB<3>(src, rgb, pairs);
}

int RGBToNVBlockRow_Portable(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1,
                             uint8_t* chroma, int blocks, int uOffset) {
  if (!kUsable) return 0;
  return uOffset == 0 ? rgbToNVBlocks<0>(rgb0, rgb1, y0, y1, chroma, blocks)
                      : rgbToNVBlocks<1>(rgb0, rgb1, y0, y1, chroma, blocks);
}

}  // namespace orvan::convert_row
