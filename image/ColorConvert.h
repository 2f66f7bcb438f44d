#pragma once

#include "core/Export.h"
#include "core/RefBase.h"
#include "image/Image.h"

// The flat converters (color_convert_*, convert_nv*_to_yv12) are declared in
// orvan/orvan.h.
#include "orvan/orvan.h"

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
