#pragma once

#include <cstdint>

#include "image/ColorTables.h"

// Row kernels of the colour converters: plain C reference versions. Each takes
// a count of pixel groups (pixels, pairs, quads or 2x2 blocks) and assumes its
// pointers and count are valid; the exported converters check arguments and
// choose the kernel (image/ColorConvert.cpp is the one dispatch point).
namespace convert_row {

inline uint8_t clamp255(int v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Per-pixel chroma terms before the +128 (or the group's rounding constant).
inline int uTerm(int r, int g, int b) {
  using namespace colortables;
  return kUR[r] + kUG[g] + kUB[b];
}
inline int vTerm(int r, int g, int b) {
  using namespace colortables;
  return kUB[r] + kVG[g] + kVB[b];
}
inline uint8_t lumaOf(int r, int g, int b) {
  using namespace colortables;
  return static_cast<uint8_t>(kYR[r] + kYG[g] + kYB[b] + 16);
}

// Chroma contributions shared by a group of luma samples.
struct Chroma {
  int rv, gvu, bu;
};
inline Chroma chromaOf(int u, int v) {
  using namespace colortables;
  return Chroma{kRV[v], kGV[v] + kGU[u], kBU[u]};
}
inline void storeRGB(uint8_t* rgb, int y, const Chroma& c) {
  const int l = colortables::kY[y];
  rgb[0] = clamp255(l + c.rv);
  rgb[1] = clamp255(l - c.gvu);
  rgb[2] = clamp255(l + c.bu);
}

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

}  // namespace convert_row
