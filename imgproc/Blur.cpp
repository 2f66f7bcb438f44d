#include "imgproc/Blur.h"

#include <math.h>
#include <stdint.h>
#include <string.h>

#include "core/Memory.h"
#include "core/SizeRule.h"

namespace {

// True when both sides are positive and w x h elements of `bytesPer` bytes
// form a buffer whose byte count fits the int sizes of the interface.
bool sizeOk(int w, int h, int bytesPer) {
  return w > 0 && h > 0 && orvan::sizerule::intCount(w, h, bytesPer) >= 0;
}

// Box widths are never wider than this; beyond it every line is shorter anyway.
constexpr float kMaxBoxWidth = 1073741824.0f;

// Round half away from zero; m is only compared with 0..2048, so clamping
// keeps every comparison while avoiding an out-of-range conversion.
int clampedRound(float v) {
  if (!(v > -2.0f)) return -2;
  if (v > 4096.0f) return 4096;
  return (int)roundf(v);
}

inline unsigned char roundToByte(float v) { return (unsigned char)(int)roundf(v); }

// Running-sum box blur of one line (`count` bytes `step` apart) of radius r,
// which the caller has already reduced so that count > 2r.
void boxBlurLine(const unsigned char* src, unsigned char* dst, int count, size_t step, int r) {
  const float inv = 1.0f / (float)(2 * r + 1);
  const int fv = src[0];
  const int lv = src[(size_t)(count - 1) * step];
  int val = (r + 1) * fv;
  for (int j = 0; j < r; ++j) val += src[(size_t)j * step];
  size_t ti = 0, li = 0, ri = (size_t)r * step;
  for (int j = 0; j <= r; ++j) {
    val += src[ri] - fv;
    ri += step;
    dst[ti] = roundToByte((float)val * inv);
    ti += step;
  }
  for (int j = r + 1; j < count - r; ++j) {
    val += src[ri] - src[li];
    ri += step;
    li += step;
    dst[ti] = roundToByte((float)val * inv);
    ti += step;
  }
  for (int j = count - r; j < count; ++j) {
    val += lv - src[li];
    li += step;
    dst[ti] = roundToByte((float)val * inv);
    ti += step;
  }
}

// The radius a line of `count` pixels can serve without reading outside it.
int lineRadius(int count, int r) {
  if ((int64_t)count <= 2 * (int64_t)r) return (count - 1) / 2;
  return r;
}

}  // namespace

void alpha_blend(unsigned char* pixels, int count, int r, int g, int b, int alpha) {
  if (!pixels || count <= 0 || orvan::sizerule::intCount(count, 4) < 0) return;
  // Unsigned arithmetic: the stored byte is bits 8..15 of the sum either way.
  const uint32_t keep = 256u - (uint32_t)alpha;
  const uint32_t pr = ((uint32_t)alpha * (uint32_t)r) & 0xFFFF;
  const uint32_t pg = ((uint32_t)alpha * (uint32_t)g) & 0xFFFF;
  const uint32_t pb = ((uint32_t)alpha * (uint32_t)b) & 0xFFFF;
  for (int i = 0; i < count; ++i, pixels += 4) {
    pixels[0] = (unsigned char)((pr + pixels[0] * keep) >> 8);
    pixels[1] = (unsigned char)((pg + pixels[1] * keep) >> 8);
    pixels[2] = (unsigned char)((pb + pixels[2] * keep) >> 8);
  }
}

void calculate_gauss_blur_coef(float sigma, int n, gauss_blur_coef* out) {
  if (!out || n <= 0 || n > 2048) return;
  const float nf = (float)n;
  float wIdeal = sqrtf(12.0f * sigma * sigma / nf + 1.0f);
  if (wIdeal != wIdeal) return;                      // NaN sigma
  if (wIdeal > kMaxBoxWidth) wIdeal = kMaxBoxWidth;  // wider than any line anyway
  int wl = (int)floorf(wIdeal);
  if (wl % 2 == 0) --wl;
  const int wu = wl + 2;
  const float wlf = (float)wl;
  const float mIdeal =
      (12.0f * sigma * sigma - nf * wlf * wlf - 4.0f * nf * wlf - 3.0f * nf) / (-4.0f * wlf - 4.0f);
  const int m = clampedRound(mIdeal);
  out->n = n;
  for (int i = 0; i < n; ++i) out->w[i] = i < m ? wl : wu;
}

void fast_blur(unsigned int* src, unsigned int* dst, int width, int height, int radius) {
  if (!src || !dst || !sizeOk(width, height, 4)) return;
  if (radius < 1) return;
  int r = radius;
  if (r > width) r = width;
  if (r > height) r = height;
  const int div = 2 * r + 1;
  const int wm = width - 1, hm = height - 1;
  const int wh = width * height;
  const int longest = width > height ? width : height;
  const uint64_t tableLen = 256ull * (uint64_t)div;
  const int64_t tableBytes = orvan::sizerule::uintCount(tableLen, 4);

  unsigned int planeBytes = (unsigned int)wh * 4u;
  int* rp = (int*)galloc_malloc(planeBytes);
  int* gp = (int*)galloc_malloc(planeBytes);
  int* bp = (int*)galloc_malloc(planeBytes);
  int* vmin = (int*)galloc_malloc((unsigned int)longest * 4u);
  int* vmax = (int*)galloc_malloc((unsigned int)longest * 4u);
  int* dv = tableBytes >= 0 ? (int*)galloc_malloc((unsigned int)tableBytes) : nullptr;
  if (rp && gp && bp && vmin && vmax && dv) {
    for (uint64_t i = 0; i < tableLen; ++i) dv[i] = (int)(i / (uint64_t)div);

    for (int x = 0; x < width; ++x) {
      vmin[x] = x + r + 1 < wm ? x + r + 1 : wm;
      vmax[x] = x - r > 0 ? x - r : 0;
    }
    for (int y = 0; y < height; ++y) {
      const unsigned int* row = src + (size_t)y * width;
      int rs = 0, gs = 0, bs = 0;
      for (int i = -r; i <= r; ++i) {
        const unsigned int p = row[i < 0 ? 0 : (i > wm ? wm : i)];
        rs += (p >> 16) & 0xFF;
        gs += (p >> 8) & 0xFF;
        bs += p & 0xFF;
      }
      int* ro = rp + (size_t)y * width;
      int* go = gp + (size_t)y * width;
      int* bo = bp + (size_t)y * width;
      for (int x = 0; x < width; ++x) {
        ro[x] = dv[rs];
        go[x] = dv[gs];
        bo[x] = dv[bs];
        const unsigned int p1 = row[vmin[x]];
        const unsigned int p2 = row[vmax[x]];
        rs += (int)((p1 >> 16) & 0xFF) - (int)((p2 >> 16) & 0xFF);
        gs += (int)((p1 >> 8) & 0xFF) - (int)((p2 >> 8) & 0xFF);
        bs += (int)(p1 & 0xFF) - (int)(p2 & 0xFF);
      }
    }

    for (int y = 0; y < height; ++y) {
      vmin[y] = (y + r + 1 < hm ? y + r + 1 : hm) * width;
      vmax[y] = (y - r > 0 ? y - r : 0) * width;
    }
    for (int x = 0; x < width; ++x) {
      int rs = 0, gs = 0, bs = 0;
      for (int i = -r; i <= r; ++i) {
        const size_t yi = (size_t)(i < 0 ? 0 : (i > hm ? hm : i)) * width + x;
        rs += rp[yi];
        gs += gp[yi];
        bs += bp[yi];
      }
      for (int y = 0; y < height; ++y) {
        dst[(size_t)y * width + x] =
            0xFF000000u | ((unsigned int)dv[rs] << 16) | ((unsigned int)dv[gs] << 8) | (unsigned int)dv[bs];
        const size_t p1 = (size_t)vmin[y] + x;
        const size_t p2 = (size_t)vmax[y] + x;
        rs += rp[p1] - rp[p2];
        gs += gp[p1] - gp[p2];
        bs += bp[p1] - bp[p2];
      }
    }
  }
  galloc_free(dv);
  galloc_free(vmax);
  galloc_free(vmin);
  galloc_free(bp);
  galloc_free(gp);
  galloc_free(rp);
}

void box_blurH(unsigned char* src, unsigned char* dst, int width, int height, int r) {
  if (!src || !dst || !sizeOk(width, height, 1) || r < 0) return;
  const int rr = lineRadius(width, r);
  for (int y = 0; y < height; ++y) {
    const size_t row = (size_t)y * width;
    boxBlurLine(src + row, dst + row, width, 1, rr);
  }
}

void box_blurV(unsigned char* src, unsigned char* dst, int width, int height, int r) {
  if (!src || !dst || !sizeOk(width, height, 1) || r < 0) return;
  const int rr = lineRadius(height, r);
  for (int x = 0; x < width; ++x) boxBlurLine(src + x, dst + x, height, (size_t)width, rr);
}

void box_blur(unsigned char* src, unsigned char* dst, int width, int height, int r) {
  if (!src || !dst || !sizeOk(width, height, 1) || r < 0) return;
  memmove(dst, src, (size_t)width * height);
  box_blurH(dst, src, width, height, r);
  box_blurV(src, dst, width, height, r);
}

void gauss_blur(unsigned char* src, unsigned char* dst, int width, int height, int sigma) {
  if (!src || !dst || !sizeOk(width, height, 1)) return;
  const float s2 = (float)sigma * (float)sigma;
  float wIdeal = sqrtf(4.0f * s2 + 1.0f);
  if (wIdeal > kMaxBoxWidth) wIdeal = kMaxBoxWidth;  // wider than any line anyway
  int wl = (int)floorf(wIdeal);
  if (wl % 2 == 0) --wl;
  const int wu = wl + 2;
  const float wlf = (float)wl;
  // Unlike calculate_gauss_blur_coef, sigma^2 is not multiplied by 12 here.
  const float mIdeal = (s2 - 3.0f * wlf * wlf - 12.0f * wlf - 9.0f) / (-4.0f * wlf - 4.0f);
  const int m = clampedRound(mIdeal);
  int radius[3];
  for (int i = 0; i < 3; ++i) radius[i] = ((m > i ? wl : wu) - 1) / 2;
  box_blur(src, dst, width, height, radius[0]);
  box_blur(dst, src, width, height, radius[1]);
  box_blur(src, dst, width, height, radius[2]);
}
