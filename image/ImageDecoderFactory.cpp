#include "image/ImageDecoder.h"

ImageDecoderFactory::ImageDecoderFactory() { mDecoders.push_back(auto_ptr<ImageDecoder>(new JpegDecoder())); }

ImageDecoderFactory::~ImageDecoderFactory() {}

ImageDecoder* ImageDecoderFactory::createImageDecoder(auto_ptr<Stream>& stream) {
  if (stream == nullptr || mDecoders.empty()) return nullptr;
  for (auto& decoder : mDecoders)
    if (decoder->isSupported(stream) == 1) return decoder.get();
  return nullptr;
}
