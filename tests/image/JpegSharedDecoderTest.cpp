// One decoder (as a factory hands it out) used by two threads at once: the
// spare buffer changes hands between them, and every picture must still come
// out whole and right.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "core/Stream.h"
#include "image/ImageDecoder.h"
#include "image/ImageEncoder.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes encodePattern(int seed) {
  auto_ptr<Image> image(Image::createImage(48, 32, 1, Image::IMAGE_FORMAT_RGB, nullptr));
  for (unsigned i = 0; i < 48 * 32 * 3; ++i) image->planes[0][i] = static_cast<unsigned char>(i * seed >> 3);
  auto_ptr<MemoryStream> memory(new MemoryStream(1u << 20));
  auto_ptr<Stream> stream(memory);
  JpegEncoder encoder;
  if (encoder.encode(stream, image, 90) != 1) return Bytes();
  return Bytes(memory->getBuffer(), memory->getBuffer() + memory->getPosition());
}

int decodeWith(ImageDecoder& decoder, const Bytes& data, auto_ptr<Image>& image) {
  auto_ptr<Stream> stream(new MemoryStream(const_cast<unsigned char*>(data.data()), data.size()));
  return decoder.decode(stream, image);
}

}  // namespace

TEST(JpegSharedDecoder, TwoThreadsGetWholePictures) {
  const Bytes files[2] = {encodePattern(3), encodePattern(7)};
  ASSERT_FALSE(files[0].empty());
  ASSERT_FALSE(files[1].empty());
  JpegDecoder decoder;
  Bytes expected[2];
  for (int k = 0; k < 2; ++k) {
    auto_ptr<Image> image(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
    ASSERT_EQ(decodeWith(decoder, files[k], image), 1);
    expected[k].assign(image->planes[0], image->planes[0] + 48 * 32 * 3);
  }
  ASSERT_NE(expected[0], expected[1]);

  int wrong[2] = {0, 0};
  auto work = [&](int id) {
    auto_ptr<Image> image(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
    for (int i = 0; i < 200; ++i) {
      const int k = (i + id) & 1;
      if (decodeWith(decoder, files[k], image) != 1 ||
          Bytes(image->planes[0], image->planes[0] + expected[k].size()) != expected[k])
        ++wrong[id];
    }
  };
  std::thread a(work, 0), b(work, 1);
  a.join();
  b.join();
  EXPECT_EQ(wrong[0], 0);
  EXPECT_EQ(wrong[1], 0);
}
