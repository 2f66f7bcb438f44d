#include "image/ImageEncoder.h"

int ImageEncoder::encode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) {
  if (stream == nullptr || image == nullptr) return 0;
  return onEncode(stream, image, quality);
}
