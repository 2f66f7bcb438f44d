#pragma once

#include "core/Export.h"

// CPU blurs and the solid-colour tint used after them.
//
// Four-byte pixels (stack_blur, alpha_blend*) are packed rows without padding;
// bytes 0..2 are the colour channels and byte 3 is never read or written.
// The box and Gaussian blurs work on single-channel 8-bit images (stride =
// width). Every routine is re-entrant and refuses (touching nothing) null
// buffers, non-positive sizes and sizes whose pixel or byte count does not fit
// in an int.

// Box widths of an n-pass box approximation of a Gaussian.
typedef struct gauss_blur_coef {
  int n;
  int w[2048];
} gauss_blur_coef;
static_assert(sizeof(gauss_blur_coef) == 4 * 2049, "gauss_blur_coef layout");

// Stack Blur of channels 0..2, in place, horizontal then vertical pass with
// edge replication. A radius outside 0..254 leaves the image unchanged.
OV_CAPI void stack_blur(unsigned char* pixels, int width, int height, int radius);

// Largest pixel count whose 4-byte pixels fit an int byte count; the blends
// refuse more.
#define OV_BLEND_MAX_PIXELS 0x1FFFFFFF

// channel = (alpha * colour + channel * (256 - alpha)) >> 8 for `count` pixels;
// the products alpha * colour are taken modulo 65536.
OV_CAPI void alpha_blend(unsigned char* pixels, int count, int r, int g, int b, int alpha);

// The same blend eight pixels at a time with NEON (SIMDe's translation on
// other CPUs). Only count / 8 whole groups are blended: the last count % 8
// pixels are left as they are. The factor 256 - alpha lives in an 8-bit lane,
// so alpha = 0 turns channels 0..2 black; alpha 1..255 matches alpha_blend.
OV_CAPI void alpha_blend_neon(unsigned char* pixels, int count, int r, int g, int b, int alpha);

// Widths of n box passes approximating a Gaussian of deviation sigma
// (n must be 1..2048; out null, n out of range or a NaN sigma: nothing happens).
OV_CAPI void calculate_gauss_blur_coef(float sigma, int n, gauss_blur_coef* out);

// Box blur of 32-bit pixels (channels in bits 0-7, 8-15, 16-23), src to dst,
// truncating division after each pass; the output alpha byte is 0xFF.
// radius < 1 does nothing; the radius is limited to the image's sides.
OV_CAPI void fast_blur(unsigned int* src, unsigned int* dst, int width, int height, int radius);

// Running-sum box blurs of radius r along rows (H) or columns (V), src to dst,
// with edge replication and round-half-away division. A line not longer than
// 2r is blurred with the radius (length - 1) / 2 so nothing outside it is read.
OV_CAPI void box_blurH(unsigned char* src, unsigned char* dst, int width, int height, int r);
OV_CAPI void box_blurV(unsigned char* src, unsigned char* dst, int width, int height, int r);
// dst = src, box_blurH(dst -> src), box_blurV(src -> dst): result in dst,
// src used as scratch.
OV_CAPI void box_blur(unsigned char* src, unsigned char* dst, int width, int height, int r);

// Three box blurs approximating a Gaussian of deviation sigma; result in dst,
// src overwritten.
OV_CAPI void gauss_blur(unsigned char* src, unsigned char* dst, int width, int height, int sigma);

// Deriche's fourth-order recursive Gaussian over an 8-bit image of `channels`
// interleaved bytes per pixel (1..4, all blurred) with rows `stride` bytes
// apart, in place. radiusX blurs along rows, radiusY along columns; each
// radius r gives sigma = sqrt((r + 1)^2 / (2 ln 255)), and a direction whose
// radius is not positive is skipped. Edges are replicated. Images whose
// smaller side is 4 pixels or less are left unchanged.
OV_CAPI void gaussiir(unsigned char* pixels, int width, int height, int channels, int stride, float radiusX,
                      float radiusY);
