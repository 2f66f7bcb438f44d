#include "image/ImageDecoder.h"

int ImageDecoder::decode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) {
  if (stream == nullptr || image == nullptr) return 0;
  return onDecode(stream, image);
}
