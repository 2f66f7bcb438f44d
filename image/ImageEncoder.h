#pragma once

#include "core/Export.h"
#include "core/RefBase.h"
#include "core/Stream.h"
#include "image/Image.h"

// Turns an Image into encoded bytes on a Stream.
class OV_EXPORT ImageEncoder : public RefBase {
 public:
  enum Type { TYPE_JPEG = 1 };

  // 0 when either pointer is empty, else onEncode's result (1 on success).
  int encode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality);
  virtual int onEncode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) = 0;
};

// Baseline JPEG through libjpeg. Accepts gray (spread to three equal
// channels), RGB, RGBA (alpha dropped) and packed YUV (its bytes written as if
// they were RGB); any other format gives 0 and writes nothing.
class OV_EXPORT JpegEncoder : public ImageEncoder {
 public:
  int onEncode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) override;
};

class OV_EXPORT ImageEncoderFactory : public RefBase {
 public:
  // A new encoder (count 0) for TYPE_JPEG; null for any other type.
  ImageEncoder* createImageEncoder(ImageEncoder::Type type);
};
