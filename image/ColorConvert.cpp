#include "image/ColorConvert.h"

#include <cstring>

#include "core/SizeRule.h"
#include "image/ConvertRows.h"

using namespace orvan::convert_row;

namespace {

// The one dispatch point: NEON on ARM; on x86 SSSE3 where the processor has
// it; else the portable kernel. Each does whole blocks and the C (table)
// kernel finishes the row.
#if !OV_HAVE_NEON_ROWS
bool simd() {
#if OV_HAVE_SSSE3_ROWS
  return HasSSSE3();
#else
  return false;
#endif
}
#endif

void nvToRGB(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset) {
#if OV_HAVE_NEON_ROWS
  const int done = NVQuadToRGBRow_NEON(y, chroma, rgb, quads, uOffset);
#else
  int done = 0;
#if OV_HAVE_SSSE3_ROWS
  if (simd()) done = NVQuadToRGBRow_SSSE3(y, chroma, rgb, quads, uOffset);
#endif
  if (!simd()) done = NVQuadToRGBRow_Portable(y, chroma, rgb, quads, uOffset);
#endif
  NVQuadToRGBRow_C(y + 4 * done, chroma + 2 * done, rgb + 12 * done, quads - done, uOffset);
}

void packed422ToRGB(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset, int vOffset) {
#if OV_HAVE_NEON_ROWS
  const int done = Packed422ToRGBRow_NEON(src, rgb, pairs, uOffset);
#else
  int done = 0;
#if OV_HAVE_SSSE3_ROWS
  if (simd()) done = Packed422ToRGBRow_SSSE3(src, rgb, pairs, uOffset);
#endif
  if (!simd()) done = Packed422ToRGBRow_Portable(src, rgb, pairs, uOffset);
#endif
  Packed422ToRGBRow_C(src + 4 * done, rgb + 6 * done, pairs - done, uOffset, vOffset);
}

void i420ToRGB(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads) {
  int done = 0;
#if OV_HAVE_NEON_ROWS
  done = I420QuadToRGBRow_NEON(y, u, v, rgb, quads);
#elif OV_HAVE_SSSE3_ROWS
  if (simd()) done = I420QuadToRGBRow_SSSE3(y, u, v, rgb, quads);
#endif
  I420QuadToRGBRow_C(y + 4 * done, u + done, v + done, rgb + 12 * done, quads - done);
}

void rgbToPacked422(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset, int vOffset) {
  int done = 0;
#if OV_HAVE_NEON_ROWS
  done = RGBToPacked422Row_NEON(rgb, dst, pairs, uOffset);
#elif OV_HAVE_SSSE3_ROWS
  if (simd()) done = RGBToPacked422Row_SSSE3(rgb, dst, pairs, uOffset);
#endif
  RGBToPacked422Row_C(rgb + 6 * done, dst + 4 * done, pairs - done, uOffset, vOffset);
}

void rgbToNVBlocks(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                   int blocks, int uOffset) {
#if OV_HAVE_NEON_ROWS
  const int done = RGBToNVBlockRow_NEON(rgb0, rgb1, y0, y1, chroma, blocks, uOffset);
#else
  int done = 0;
#if OV_HAVE_SSSE3_ROWS
  if (simd()) done = RGBToNVBlockRow_SSSE3(rgb0, rgb1, y0, y1, chroma, blocks, uOffset);
#endif
  if (!simd()) done = RGBToNVBlockRow_Portable(rgb0, rgb1, y0, y1, chroma, blocks, uOffset);
#endif
  RGBToNVBlockRow_C(rgb0 + 6 * done, rgb1 + 6 * done, y0 + 2 * done, y1 + 2 * done, chroma + 2 * done,
                    blocks - done, uOffset);
}

// Pixel count N of a width x height frame, or 0 when either side is below 1 or
// N or the byte count of its largest buffer, N x halfBytes / 2 (halfBytes:
// twice that buffer's bytes per pixel), does not fit in an int: no converter
// can serve such a frame.
int pixelsOf(int width, int height, int halfBytes) {
  if (width < 1 || height < 1) return 0;
  const int64_t n = orvan::sizerule::intCount(width, height);
  if (n < 0 || orvan::sizerule::within(orvan::sizerule::kIntLimit, n * halfBytes / 2) < 0) return 0;
  return static_cast<int>(n);
}

// The per-pixel, pair and quad converters share one shape: refuse null
// pointers and frames below the group size, then run one kernel over the
// whole frame (rows are packed, so the frame is one long row).
template <typename Kernel>
int run(const void* a, const void* b, int width, int height, int group, int halfBytes, Kernel kernel) {
  const int n = pixelsOf(width, height, halfBytes);
  if (a == nullptr || b == nullptr || n < group) return 0;
  kernel(n / group);
  return 1;
}

}  // namespace

int color_convert_gray2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 6, [&](int n) { GrayToRGBRow_C(src, dst, n); });
}

int color_convert_gray2rgba(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 8, [&](int n) { GrayToRGBARow_C(src, dst, n); });
}

int color_convert_rgb2gray(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 6, [&](int n) { RGBToGrayRow_C(src, dst, n); });
}

int color_convert_rgba2gray(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 8, [&](int n) { RGBAToGrayRow_C(src, dst, n); });
}

int color_convert_rgb2rgba(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 8, [&](int n) { RGBToRGBARow_C(src, dst, n); });
}

int color_convert_rgba2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 8, [&](int n) { RGBAToRGBRow_C(src, dst, n); });
}

int color_convert_rgb2yuv(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 6, [&](int n) { RGBToYUVRow_C(src, dst, n); });
}

int color_convert_yuv2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 6, [&](int n) { YUVToRGBRow_C(src, dst, n); });
}

int color_convert_rgb2yuyv(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 2, 6, [&](int pairs) { rgbToPacked422(src, dst, pairs, 1, 3); });
}

int color_convert_yuyv2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 2, 6, [&](int pairs) { packed422ToRGB(src, dst, pairs, 1, 3); });
}

int color_convert_rgb2yvyu(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 2, 6, [&](int pairs) { rgbToPacked422(src, dst, pairs, 3, 1); });
}

int color_convert_yvyu2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 2, 6, [&](int pairs) { packed422ToRGB(src, dst, pairs, 3, 1); });
}

int color_convert_rgb2yuv422p(const unsigned char* rgb, unsigned char* y, unsigned char* u, unsigned char* v,
                              int width, int height) {
  if (u == nullptr || v == nullptr) return 0;
  return run(rgb, y, width, height, 2, 6, [&](int pairs) { RGBToYUV422PRow_C(rgb, y, u, v, pairs); });
}

int color_convert_yuv422p2rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                              unsigned char* rgb, int width, int height) {
  if (u == nullptr || v == nullptr) return 0;
  return run(y, rgb, width, height, 2, 6, [&](int pairs) { YUV422PToRGBRow_C(y, u, v, rgb, pairs); });
}

int color_convert_rgb2yv12oryu12(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                 unsigned char* v, int width, int height) {
  if (u == nullptr || v == nullptr) return 0;
  return run(rgb, y, width, height, 4, 6, [&](int quads) { RGBToI420QuadRow_C(rgb, y, u, v, quads); });
}

int color_convert_yv12oryu122rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                 unsigned char* rgb, int width, int height) {
  // Unlike the other quad converters, a frame of fewer than four pixels, none
  // included, is "nothing to do" here rather than a refusal.
  if (y == nullptr || u == nullptr || v == nullptr || rgb == nullptr) return 0;
  if (width == 0 || height == 0) return 1;
  const int n = pixelsOf(width, height, 6);
  if (n == 0) return 0;  // negative, or more bytes than an int counts
  i420ToRGB(y, u, v, rgb, n / 4);
  return 1;
}

namespace {
// The NV writers average true 2x2 blocks, two rows at a time; an odd last
// row or column is left unwritten.
int rgbToNV(const unsigned char* rgb, unsigned char* y, unsigned char* chroma, int width, int height,
            int uOffset) {
  const int n = pixelsOf(width, height, 6);
  if (rgb == nullptr || y == nullptr || chroma == nullptr || n < 4) return 0;
  const int blocks = width / 2;
  const long long rgbRow = 3LL * width;
  for (int row = 0; row + 1 < height; row += 2) {
    const unsigned char* src = rgb + rgbRow * row;
    unsigned char* luma = y + static_cast<long long>(width) * row;
    rgbToNVBlocks(src, src + rgbRow, luma, luma + width, chroma, blocks, uOffset);
    chroma += 2 * blocks;
  }
  return 1;
}
}  // namespace

int color_convert_rgb2nv12(const unsigned char* rgb, unsigned char* y, unsigned char* uv, int width,
                           int height) {
  return rgbToNV(rgb, y, uv, width, height, 0);
}

int color_convert_rgb2nv21(const unsigned char* rgb, unsigned char* y, unsigned char* vu, int width,
                           int height) {
  return rgbToNV(rgb, y, vu, width, height, 1);
}

int color_convert_nv122rgb(const unsigned char* y, const unsigned char* uv, unsigned char* rgb, int width,
                           int height) {
  if (uv == nullptr) return 0;
  return run(y, rgb, width, height, 4, 6, [&](int quads) { nvToRGB(y, uv, rgb, quads, 0); });
}

int color_convert_nv212rgb(const unsigned char* y, const unsigned char* vu, unsigned char* rgb, int width,
                           int height) {
  if (vu == nullptr) return 0;
  return run(y, rgb, width, height, 4, 6, [&](int quads) { nvToRGB(y, vu, rgb, quads, 1); });
}

int color_convert_yuv2gray(const unsigned char* src, unsigned char* dst, int width, int height) {
  return run(src, dst, width, height, 1, 2, [&](int n) { memcpy(dst, src, static_cast<size_t>(n)); });
}

namespace {
// Semi-planar to YV12 (Y, V plane, U plane); uOffset is the place of U in
// each source chroma pair.
void repackToYV12(const unsigned char* src, unsigned char* dst, int width, int height, int uOffset) {
  const int n = pixelsOf(width, height, 3);  // N + N / 2 bytes each way
  if (src == nullptr || dst == nullptr || n == 0) return;
  memcpy(dst, src, static_cast<size_t>(n));
  const int quarter = n / 4;
  const unsigned char* pairs = src + n;
  unsigned char* vPlane = dst + n;
  unsigned char* uPlane = dst + n + quarter;  // (N*5)/4 without the wrap
  unsigned char* first = uOffset == 0 ? uPlane : vPlane;
  unsigned char* second = uOffset == 0 ? vPlane : uPlane;
#if OV_HAVE_NEON_ROWS
  const int done = SplitPairsRow_NEON(pairs, first, second, quarter);
#else
  const int done = 0;
#endif
  SplitPairsRow_C(pairs + 2 * done, first + done, second + done, quarter - done);
}
}  // namespace

void convert_nv12_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
  repackToYV12(src, dst, width, height, 0);
}

void convert_nv21_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
  repackToYV12(src, dst, width, height, 1);
}

Image* ColorConvert::convert(Image* source, int code) {
  if (source == nullptr || static_cast<int>(source->format) != ((code >> 8) & 255)) return nullptr;
  const auto target = static_cast<Image::ImageFormatType>(code & 255);
  Image* out = Image::createImage(source->width, source->height, source->depth, target, nullptr);
  if (out == nullptr) return nullptr;

  // Converters see width and height only: for depth > 1 the first layer is
  // converted. Their own results are not reported.
  const int w = orvan::sizerule::fitsInt(source->width) ? static_cast<int>(source->width) : 0;
  const int h = orvan::sizerule::fitsInt(source->height) ? static_cast<int>(source->height) : 0;
  unsigned char* const* s = source->planes;
  unsigned char* const* d = out->planes;
  switch (code) {
    case GRAY_TO_RGB:
      color_convert_gray2rgb(s[0], d[0], w, h);
      break;
    case GRAY_TO_RGBA:
      color_convert_gray2rgba(s[0], d[0], w, h);
      break;
    case RGB_TO_GRAY:
      color_convert_rgb2gray(s[0], d[0], w, h);
      break;
    case RGB_TO_RGBA:
      color_convert_rgb2rgba(s[0], d[0], w, h);
      break;
    case RGB_TO_YUV:
      color_convert_rgb2yuv(s[0], d[0], w, h);
      break;
    case RGB_TO_YUYV:
      color_convert_rgb2yuyv(s[0], d[0], w, h);
      break;
    case RGB_TO_YVYU:
      color_convert_rgb2yvyu(s[0], d[0], w, h);
      break;
    case RGB_TO_YUV422P:
      color_convert_rgb2yuv422p(s[0], d[0], d[1], d[2], w, h);
      break;
    // The image lays codes 9 and 10 out with two planes, so the V plane is
    // null here and these conversions leave the target unwritten.
    case RGB_TO_YV12:
    case RGB_TO_YU12:
      color_convert_rgb2yv12oryu12(s[0], d[0], d[1], d[2], w, h);
      break;
    case RGB_TO_NV12:
      color_convert_rgb2nv12(s[0], d[0], d[1], w, h);
      break;
    case RGB_TO_NV21:
      color_convert_rgb2nv21(s[0], d[0], d[1], w, h);
      break;
    case RGBA_TO_GRAY:
      color_convert_rgba2gray(s[0], d[0], w, h);
      break;
    case RGBA_TO_RGB:
      color_convert_rgba2rgb(s[0], d[0], w, h);
      break;
    // Plane 0 copied as it is: for the packed formats 5..7 these are
    // interleaved bytes, not luma alone.
    case YUV_TO_GRAY:
    case YUYV_TO_GRAY:
    case YVYU_TO_GRAY:
    case YUV422P_TO_GRAY:
    case YV12_TO_GRAY:
    case YU12_TO_GRAY:
    case NV12_TO_GRAY:
    case NV21_TO_GRAY:
      color_convert_yuv2gray(s[0], d[0], w, h);
      break;
    case YUV_TO_RGB:
      color_convert_yuv2rgb(s[0], d[0], w, h);
      break;
    case YUYV_TO_RGB:
      color_convert_yuyv2rgb(s[0], d[0], w, h);
      break;
    case YVYU_TO_RGB:
      color_convert_yvyu2rgb(s[0], d[0], w, h);
      break;
    case YUV422P_TO_RGB:
      color_convert_yuv422p2rgb(s[0], s[1], s[2], d[0], w, h);
      break;
    case YV12_TO_RGB:
    case YU12_TO_RGB:
      color_convert_yv12oryu122rgb(s[0], s[1], s[2], d[0], w, h);
      break;
    case NV12_TO_RGB:
      color_convert_nv122rgb(s[0], s[1], d[0], w, h);
      break;
    case NV21_TO_RGB:
      color_convert_nv212rgb(s[0], s[1], d[0], w, h);
      break;
    default:
      break;  // no converter: the new image is returned as it is
  }
  return out;
}

Image* ColorConvert::convert(auto_ptr<Image>& source, int code) {
  if (source == nullptr) return nullptr;
  return convert(source.get(), code);
}
