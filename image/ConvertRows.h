#pragma once

#include <cstdint>

#include "image/ColorTables.h"

// Row kernels of the colour converters: plain C reference versions. Each takes
// a count of pixel groups (pixels, pairs, quads or 2x2 blocks) and assumes its
// pointers and count are valid; the exported converters check arguments and
// choose the kernel (image/ColorConvert.cpp is the one dispatch point).
namespace orvan::convert_row {

// Per-pixel chroma terms before the +128 (or the group's rounding constant).
inline int uTerm(int r, int g, int b) {
  using namespace orvan::colortables;
  return kUR[r] + kUG[g] + kUB[b];
}
inline int vTerm(int r, int g, int b) {
  using namespace orvan::colortables;
  return kUB[r] + kVG[g] + kVB[b];
}
inline uint8_t lumaOf(int r, int g, int b) {
  using namespace orvan::colortables;
  return static_cast<uint8_t>(kYR[r] + kYG[g] + kYB[b] + 16);
}

// Clamping to 0..255 as a lookup over every sum the inverse formula can reach
// (-276..534): one load per channel instead of two compares.
struct ClampTable {
  uint8_t v[1024];
};
constexpr ClampTable makeClampTable() {
  ClampTable t{};
  for (int i = 0; i < 1024; ++i) t.v[i] = static_cast<uint8_t>(i < 384 ? 0 : (i > 384 + 255 ? 255 : i - 384));
  return t;
}
inline constexpr ClampTable kClamp = makeClampTable();

// What a chroma pair contributes to the luma samples that share it: for each
// channel, the clamp table shifted by that channel's chroma term, so a pixel
// costs one lookup per channel: R = clamp(kY[y] + kRV[v]) = rv[kY[y]].
struct Chroma {
  const uint8_t *r, *g, *b;
};
inline Chroma chromaOf(int u, int v) {
  using namespace orvan::colortables;
  const uint8_t* zero = kClamp.v + 384;
  return Chroma{zero + kRV[v], zero - kGV[v] - kGU[u], zero + kBU[u]};
}
inline void storeRGB(uint8_t* rgb, int y, const Chroma& c) {
  const int l = orvan::colortables::kY[y];
  rgb[0] = c.r[l];
  rgb[1] = c.g[l];
  rgb[2] = c.b[l];
}

// The forward terms of one colour channel packed into one int: the Y term
// plus 1024 times the U term plus 2^20 times the V term. Summing the three
// channels' entries sums each term exactly, since the sum is linear; the
// fields come apart again because every partial sum the NV writer needs
// stays inside its 10 bits once the rounding constants are added (Y of four
// pixels <= 876, U and V of four pixels + 512 in 68..956). Three lookups per
// pixel instead of nine.
struct PackedForward {
  int r[256], g[256], b[256];
};
constexpr PackedForward makePackedForward() {
  using namespace orvan::colortables;
  PackedForward p{};
  for (int i = 0; i < 256; ++i) {
    p.r[i] = kYR[i] + kUR[i] * 1024 + kUB[i] * 1048576;
    p.g[i] = kYG[i] + kUG[i] * 1024 + kVG[i] * 1048576;
    p.b[i] = kYB[i] + kUB[i] * 1024 + kVB[i] * 1048576;
  }
  return p;
}
inline constexpr PackedForward kPackedForward = makePackedForward();

void GrayToRGBRow_C(const uint8_t* src, uint8_t* dst, int pixels);
void GrayToRGBARow_C(const uint8_t* src, uint8_t* dst, int pixels);
void RGBToGrayRow_C(const uint8_t* src, uint8_t* dst, int pixels);
void RGBAToGrayRow_C(const uint8_t* src, uint8_t* dst, int pixels);
void RGBToRGBARow_C(const uint8_t* src, uint8_t* dst, int pixels);
void RGBAToRGBRow_C(const uint8_t* src, uint8_t* dst, int pixels);
void RGBToYUVRow_C(const uint8_t* src, uint8_t* dst, int pixels);
void YUVToRGBRow_C(const uint8_t* src, uint8_t* dst, int pixels);

// Packed 4:2:2 with the U and V bytes at the given offsets of each 4-byte pair.
void RGBToPacked422Row_C(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset, int vOffset);
void Packed422ToRGBRow_C(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset, int vOffset);
void RGBToYUV422PRow_C(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, int pairs);
void YUV422PToRGBRow_C(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int pairs);

// Four consecutive pixels share one U and one V.
void RGBToI420QuadRow_C(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, int quads);
void I420QuadToRGBRow_C(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads);
// Interleaved chroma; uOffset 0 for NV12 (U first), 1 for NV21 (V first).
void NVQuadToRGBRow_C(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset);
// 2x2 blocks over two rows: rgb0/rgb1 and y0/y1 are the two rows.
void RGBToNVBlockRow_C(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                       int blocks, int uOffset);
// n byte pairs apart: byte 0 of each to first, byte 1 to second.
void SplitPairsRow_C(const uint8_t* pairs, uint8_t* first, uint8_t* second, int n);

// Portable kernels (image/ConvertRowsPortable.cpp): table-free arithmetic
// that compilers vectorise; bit-identical to the C kernels. Each does whole
// blocks of 64 pixels and returns how many groups it did (0 on a big-endian
// target without byte shuffles).
int NVQuadToRGBRow_Portable(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset);
// uOffset 1 for YUYV, 3 for YVYU.
int Packed422ToRGBRow_Portable(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset);
int RGBToNVBlockRow_Portable(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1,
                             uint8_t* chroma, int blocks, int uOffset);

// SSSE3 kernels (x86): bit-identical to the C kernels above. Each does whole
// blocks of 8 groups and returns how many groups it did.
#if defined(__x86_64__) || defined(__i386__)
#define OV_HAVE_SSSE3_ROWS 1
bool HasSSSE3();
int NVQuadToRGBRow_SSSE3(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset);
int I420QuadToRGBRow_SSSE3(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads);
// uOffset 1 for YUYV, 3 for YVYU.
int Packed422ToRGBRow_SSSE3(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset);
int RGBToPacked422Row_SSSE3(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset);
int RGBToNVBlockRow_SSSE3(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                          int blocks, int uOffset);
#else
#define OV_HAVE_SSSE3_ROWS 0
#endif

// NEON kernels (image/ConvertRowsNEON.cpp; on ARM, and on x86 through SIMDe
// for the tests only): bit-identical to the C kernels. Each does whole blocks
// of 8 groups (16 pairs for SplitPairsRow) and returns how many it did.
#if defined(__ARM_NEON) || defined(__ARM_NEON__) || defined(OV_NEON_VIA_SIMDE)
#define OV_HAVE_NEON_ROWS 1
int NVQuadToRGBRow_NEON(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset);
int I420QuadToRGBRow_NEON(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads);
// uOffset 1 for YUYV, 3 for YVYU.
int Packed422ToRGBRow_NEON(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset);
int RGBToPacked422Row_NEON(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset);
int RGBToNVBlockRow_NEON(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                         int blocks, int uOffset);
int SplitPairsRow_NEON(const uint8_t* pairs, uint8_t* first, uint8_t* second, int n);
#else
#define OV_HAVE_NEON_ROWS 0
#endif

}  // namespace orvan::convert_row
