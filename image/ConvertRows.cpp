#include "image/ConvertRows.h"

namespace orvan::convert_row {

void GrayToRGBRow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, dst += 3) dst[0] = dst[1] = dst[2] = src[i];
}

void GrayToRGBARow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, dst += 4) {
    dst[0] = dst[1] = dst[2] = src[i];
    dst[3] = 255;
  }
}

void RGBToGrayRow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, src += 3)
    dst[i] = static_cast<uint8_t>((src[0] * 19595u + src[1] * 38470u + src[2] * 7471u) >> 16);
}

void RGBAToGrayRow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, src += 4)
    dst[i] = static_cast<uint8_t>((src[0] * 19595u + src[1] * 38470u + src[2] * 7471u) >> 16);
}

void RGBToRGBARow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, src += 3, dst += 4) {
    dst[0] = src[0];
    dst[1] = src[1];
    dst[2] = src[2];
    dst[3] = 255;
  }
}

void RGBAToRGBRow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, src += 4, dst += 3) {
    dst[0] = src[0];
    dst[1] = src[1];
    dst[2] = src[2];
  }
}

void RGBToYUVRow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, src += 3, dst += 3) {
    const int r = src[0], g = src[1], b = src[2];
    dst[0] = lumaOf(r, g, b);
    dst[1] = static_cast<uint8_t>(uTerm(r, g, b) + 128);
    dst[2] = static_cast<uint8_t>(vTerm(r, g, b) + 128);
  }
}

void YUVToRGBRow_C(const uint8_t* src, uint8_t* dst, int pixels) {
  for (int i = 0; i < pixels; ++i, src += 3, dst += 3) storeRGB(dst, src[0], chromaOf(src[1], src[2]));
}

void RGBToPacked422Row_C(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset, int vOffset) {
  for (int i = 0; i < pairs; ++i, rgb += 6, dst += 4) {
    const int r0 = rgb[0], g0 = rgb[1], b0 = rgb[2];
    const int r1 = rgb[3], g1 = rgb[4], b1 = rgb[5];
    dst[0] = lumaOf(r0, g0, b0);
    dst[2] = lumaOf(r1, g1, b1);
    dst[uOffset] = static_cast<uint8_t>((uTerm(r0, g0, b0) + uTerm(r1, g1, b1) + 256) >> 1);
    dst[vOffset] = static_cast<uint8_t>((vTerm(r0, g0, b0) + vTerm(r1, g1, b1) + 256) >> 1);
  }
}

void Packed422ToRGBRow_C(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset, int vOffset) {
  for (int i = 0; i < pairs; ++i, src += 4, rgb += 6) {
    const Chroma c = chromaOf(src[uOffset], src[vOffset]);
    storeRGB(rgb, src[0], c);
    storeRGB(rgb + 3, src[2], c);
  }
}

void RGBToYUV422PRow_C(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, int pairs) {
  for (int i = 0; i < pairs; ++i, rgb += 6, y += 2) {
    const int r0 = rgb[0], g0 = rgb[1], b0 = rgb[2];
    const int r1 = rgb[3], g1 = rgb[4], b1 = rgb[5];
    y[0] = lumaOf(r0, g0, b0);
    y[1] = lumaOf(r1, g1, b1);
    u[i] = static_cast<uint8_t>((uTerm(r0, g0, b0) + uTerm(r1, g1, b1) + 256) >> 1);
    v[i] = static_cast<uint8_t>((vTerm(r0, g0, b0) + vTerm(r1, g1, b1) + 256) >> 1);
  }
}

void YUV422PToRGBRow_C(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int pairs) {
  for (int i = 0; i < pairs; ++i, y += 2, rgb += 6) {
    const Chroma c = chromaOf(u[i], v[i]);
    storeRGB(rgb, y[0], c);
    storeRGB(rgb + 3, y[1], c);
  }
}

void RGBToI420QuadRow_C(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, int quads) {
  for (int i = 0; i < quads; ++i, rgb += 12, y += 4) {
    int us = 0, vs = 0;
    for (int k = 0; k < 4; ++k) {
      const int r = rgb[3 * k], g = rgb[3 * k + 1], b = rgb[3 * k + 2];
      y[k] = lumaOf(r, g, b);
      us += uTerm(r, g, b);
      vs += vTerm(r, g, b);
    }
    u[i] = static_cast<uint8_t>((us + 512) >> 2);
    v[i] = static_cast<uint8_t>((vs + 512) >> 2);
  }
}

void I420QuadToRGBRow_C(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads) {
  for (int i = 0; i < quads; ++i, y += 4, rgb += 12) {
    const Chroma c = chromaOf(u[i], v[i]);
    for (int k = 0; k < 4; ++k) storeRGB(rgb + 3 * k, y[k], c);
  }
}

void NVQuadToRGBRow_C(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset) {
  const int vOffset = 1 - uOffset;
  for (int i = 0; i < quads; ++i, y += 4, chroma += 2, rgb += 12) {
    const Chroma c = chromaOf(chroma[uOffset], chroma[vOffset]);
    for (int k = 0; k < 4; ++k) storeRGB(rgb + 3 * k, y[k], c);
  }
}

void RGBToNVBlockRow_C(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                       int blocks, int uOffset) {
  const PackedForward& p = kPackedForward;
  const int vOffset = 1 - uOffset;
  // Rounding constants of the U and V fields: +512 each before >> 2.
  constexpr int kRound = 512 * 1024 + 512 * 1048576;
  for (int i = 0; i < blocks; ++i, rgb0 += 6, rgb1 += 6, y0 += 2, y1 += 2, chroma += 2) {
    const int s0 = p.r[rgb0[0]] + p.g[rgb0[1]] + p.b[rgb0[2]];
    const int s1 = p.r[rgb0[3]] + p.g[rgb0[4]] + p.b[rgb0[5]];
    const int s2 = p.r[rgb1[0]] + p.g[rgb1[1]] + p.b[rgb1[2]];
    const int s3 = p.r[rgb1[3]] + p.g[rgb1[4]] + p.b[rgb1[5]];
    y0[0] = static_cast<uint8_t>((s0 & 1023) + 16);
    y0[1] = static_cast<uint8_t>((s1 & 1023) + 16);
    y1[0] = static_cast<uint8_t>((s2 & 1023) + 16);
    y1[1] = static_cast<uint8_t>((s3 & 1023) + 16);
    const int t = s0 + s1 + s2 + s3 + kRound;
    chroma[uOffset] = static_cast<uint8_t>(((t >> 10) & 1023) >> 2);
    chroma[vOffset] = static_cast<uint8_t>((t >> 20) >> 2);
  }
}

void SplitPairsRow_C(const uint8_t* pairs, uint8_t* first, uint8_t* second, int n) {
  for (int i = 0; i < n; ++i, pairs += 2) {
    first[i] = pairs[0];
    second[i] = pairs[1];
  }
}

}  // namespace orvan::convert_row
