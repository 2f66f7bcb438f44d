#pragma once

#include "core/Export.h"
#include "core/RefBase.h"
#include "image/Image.h"

// Whole-buffer colour conversion, BT.601 studio swing through constant tables.
// Every converter returns 1 on success (also when there is nothing to do) and
// 0 when a pointer is null, width * height is below its group size (1 per
// pixel, 2 for pairs, 4 for quads) or the byte count of its largest buffer
// does not fit in an int. They never allocate and do not check the
// destination's size: rows are tightly packed, N = width * height.
//
// Chroma grouping: pair formats share one U/V per two consecutive pixels. The
// 4:2:0 readers and the three-plane writer share one U/V per four CONSECUTIVE
// pixels in raster order, while the NV writers average true 2x2 blocks.

OV_CAPI int color_convert_gray2rgb(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_gray2rgba(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgb2gray(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgba2gray(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgb2rgba(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgba2rgb(const unsigned char* src, unsigned char* dst, int width, int height);

// Packed 4:4:4, bytes Y, U, V.
OV_CAPI int color_convert_rgb2yuv(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_yuv2rgb(const unsigned char* src, unsigned char* dst, int width, int height);

// Packed 4:2:2: Y0 U Y1 V (YUYV) and Y0 V Y1 U (YVYU).
OV_CAPI int color_convert_rgb2yuyv(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_yuyv2rgb(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgb2yvyu(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_yvyu2rgb(const unsigned char* src, unsigned char* dst, int width, int height);

// Planar 4:2:2: Y (N), U (N/2), V (N/2).
OV_CAPI int color_convert_rgb2yuv422p(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                      unsigned char* v, int width, int height);
OV_CAPI int color_convert_yuv422p2rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                      unsigned char* rgb, int width, int height);

// Three-plane 4:2:0: Y (N), U (N/4), V (N/4), quads of consecutive pixels.
OV_CAPI int color_convert_rgb2yv12oryu12(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                         unsigned char* v, int width, int height);
OV_CAPI int color_convert_yv12oryu122rgb(const unsigned char* y, const unsigned char* u,
                                         const unsigned char* v, unsigned char* rgb, int width, int height);

// Semi-planar 4:2:0: Y, then interleaved U V (NV12) or V U (NV21).
OV_CAPI int color_convert_rgb2nv12(const unsigned char* rgb, unsigned char* y, unsigned char* uv, int width,
                                   int height);
OV_CAPI int color_convert_rgb2nv21(const unsigned char* rgb, unsigned char* y, unsigned char* vu, int width,
                                   int height);
OV_CAPI int color_convert_nv122rgb(const unsigned char* y, const unsigned char* uv, unsigned char* rgb,
                                   int width, int height);
OV_CAPI int color_convert_nv212rgb(const unsigned char* y, const unsigned char* vu, unsigned char* rgb,
                                   int width, int height);

// Copies the first N bytes (the luma plane of a planar layout).
OV_CAPI int color_convert_yuv2gray(const unsigned char* src, unsigned char* dst, int width, int height);

// Repack a semi-planar frame into three-plane YV12 (Y, then V, then U).
// dst must hold N + 2 * (N/4) bytes. Null pointers do nothing.
OV_CAPI void convert_nv12_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI void convert_nv21_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height);

// Converts an Image to a new Image (count 0) in another format.
// code = (source format << 8) | target format. Null when the source is
// null/empty or its format is not the code's source; a pair without a
// converter returns the new image unconverted (uninitialised pixels).
class OV_EXPORT ColorConvert {
 public:
  // The code words with a converter, named after Image::ImageFormatType.
  enum Code : int {
    GRAY_TO_RGB = 0x103,
    GRAY_TO_RGBA = 0x104,
    RGB_TO_GRAY = 0x301,
    RGB_TO_RGBA = 0x304,
    RGB_TO_YUV = 0x305,
    RGB_TO_YUYV = 0x306,
    RGB_TO_YVYU = 0x307,
    RGB_TO_YUV422P = 0x308,
    RGB_TO_YV12 = 0x309,
    RGB_TO_YU12 = 0x30A,
    RGB_TO_NV12 = 0x30B,
    RGB_TO_NV21 = 0x30C,
    RGBA_TO_GRAY = 0x401,
    RGBA_TO_RGB = 0x403,
    YUV_TO_GRAY = 0x501,
    YUYV_TO_GRAY = 0x601,
    YVYU_TO_GRAY = 0x701,
    YUV422P_TO_GRAY = 0x801,
    YV12_TO_GRAY = 0x901,
    YU12_TO_GRAY = 0xA01,
    NV12_TO_GRAY = 0xB01,
    NV21_TO_GRAY = 0xC01,
    YUV_TO_RGB = 0x503,
    YUYV_TO_RGB = 0x603,
    YVYU_TO_RGB = 0x703,
    YUV422P_TO_RGB = 0x803,
    YV12_TO_RGB = 0x903,
    YU12_TO_RGB = 0xA03,
    NV12_TO_RGB = 0xB03,
    NV21_TO_RGB = 0xC03,
  };

  static Image* convert(Image* source, int code);
  static Image* convert(auto_ptr<Image>& source, int code);
};
