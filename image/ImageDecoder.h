#pragma once

#include <atomic>
#include <vector>

#include "core/Export.h"
#include "core/RefBase.h"
#include "core/Stream.h"
#include "image/Image.h"

// Reads encoded bytes from a Stream into an existing Image.
class OV_EXPORT ImageDecoder : public RefBase {
 public:
  // 0 when either pointer is empty, else onDecode's result (1 on success).
  int decode(auto_ptr<Stream>& stream, auto_ptr<Image>& image);
  // 1 when the stream's first bytes belong to this format. Reads from the
  // stream without rewinding it.
  virtual int isSupported(auto_ptr<Stream>& stream) = 0;
  virtual int onDecode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) = 0;
};

// JPEG through libjpeg. A gray file gives IMAGE_FORMAT_GRAY, a colour one
// IMAGE_FORMAT_RGB (the format code is the component count). The caller's
// image is reconfigured only when decoding succeeds; on any failure it is
// left as it was and 0 is returned.
//
// The pixels go into a buffer of the decoder's own and change hands only on
// success. The buffer the caller's image gives up is kept as the decoder's
// spare and reused by the next decode that fits it (its capacity is asked of
// the allocator when it is taken, never read from the image's fields), so
// repeated decodes write into warm memory instead of fresh pages; it is freed
// with the decoder or when a decode of another size comes along.
class OV_EXPORT JpegDecoder : public ImageDecoder {
 public:
  JpegDecoder() = default;
  ~JpegDecoder() override;
  // FF D8 FF.
  int isSupported(auto_ptr<Stream>& stream) override;
  int onDecode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) override;

 private:
  JpegDecoder(const JpegDecoder&) = delete;
  JpegDecoder& operator=(const JpegDecoder&) = delete;
  // Taken whole by one decode at a time, so concurrent decodes need no lock.
  std::atomic<Image*> mSpare{nullptr};
};

// Chooses a decoder by sniffing the stream. Holds one JpegDecoder.
class OV_EXPORT ImageDecoderFactory : public RefBase {
 public:
  ImageDecoderFactory();
  ~ImageDecoderFactory() override;

  // The first registered decoder whose isSupported answers 1, or null. The
  // decoder belongs to the factory: hold it in an auto_ptr to keep it longer.
  ImageDecoder* createImageDecoder(auto_ptr<Stream>& stream);

 private:
  std::vector<auto_ptr<ImageDecoder>> mDecoders;
};
