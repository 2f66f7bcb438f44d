#pragma once

#include "core/Export.h"
#include "core/RefBase.h"

// CPU-side picture: one contiguous pixel buffer from galloc_malloc, described as
// up to three planes according to the format. Rows are tightly packed (no
// stride). Held through auto_ptr<Image>.
//
// Not to be confused with flat::Image (image/FlatImage.h), the plain record of
// the ov_ flat interface.
class OV_EXPORT Image : public RefBase {
 public:
  // The codes are stored and form the converter's code word
  // (source << 8) | target, so the numbers are fixed.
  enum ImageFormatType : int {
    IMAGE_FORMAT_NONE = 0,
    IMAGE_FORMAT_GRAY = 1,
    IMAGE_FORMAT_PACKED16 = 2,
    IMAGE_FORMAT_RGB = 3,
    IMAGE_FORMAT_RGBA = 4,
    IMAGE_FORMAT_YUV = 5,
    IMAGE_FORMAT_YUYV = 6,
    IMAGE_FORMAT_YVYU = 7,
    IMAGE_FORMAT_YUV422P = 8,
    IMAGE_FORMAT_YV12 = 9,
    IMAGE_FORMAT_YU12 = 10,
    IMAGE_FORMAT_NV12 = 11,
    IMAGE_FORMAT_NV21 = 12,
  };

  // planes may be null: the buffer is then left uninitialised.
  Image(unsigned int width, unsigned int height, unsigned int depth, ImageFormatType format,
        unsigned char** planes);
  ~Image() override;

  // Allocates and lays out the buffer for the current format, copying the
  // caller's planes in when every plane the format reads is given (they may
  // point into this image's own buffer), then releases the old buffer. An
  // unknown format, a byte count beyond 32 bits or a failed allocation
  // changes no plane. The spelling is part of the interface.
  void configuare(unsigned char** planes);

  // Stores the new geometry and configures again; the old buffer is released
  // in every case, so an unknown format leaves the planes null (bytesPerPixel
  // keeps its old value then).
  void set(unsigned int width, unsigned int height, unsigned int depth, ImageFormatType format,
           unsigned char** planes);

  // New image with a count of 0 (wrap it in auto_ptr<Image>); null only when
  // the object itself cannot be allocated. A failed pixel allocation still
  // returns an object, with null planes.
  static Image* createImage(unsigned int width, unsigned int height, unsigned int depth,
                            ImageFormatType format, unsigned char** planes);

  unsigned int width;
  unsigned int height;
  unsigned int depth;
  ImageFormatType format;
  int bytesPerPixel;
  // planes[0] is the buffer itself and the only pointer ever freed; planes[3]
  // is always null.
  unsigned char* planes[4];

 private:
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  void release();
  // configuare's work; false when nothing was laid out.
  bool layOut(unsigned char** planes);
};
