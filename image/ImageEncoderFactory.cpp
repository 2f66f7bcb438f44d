#include <new>

#include "image/ImageEncoder.h"

ImageEncoder* ImageEncoderFactory::createImageEncoder(ImageEncoder::Type type) {
  if (type != ImageEncoder::TYPE_JPEG) return nullptr;
  return new (std::nothrow) JpegEncoder();
}
