// One decoder (as a factory hands it out) used by two threads at once: the
// spare buffer changes hands between them, and every picture must still come
// out whole and right.
#include <gtest/gtest.h>

#include <thread>

#include "ImageTestUtil.h"

using namespace imgtest;

TEST(JpegSharedDecoder, TwoThreadsGetWholePictures) {
  auto_ptr<Image> pictures[2] = {smallPicture(), smallPicture()};
  for (unsigned i = 0; i < 32 * 24 * 3; ++i)
    pictures[1]->planes[0][i] = static_cast<unsigned char>(i * 7 >> 3);
  const Bytes files[2] = {encode(pictures[0], 90), encode(pictures[1], 90)};
  JpegDecoder decoder;
  auto run = [&decoder](const Bytes& data, auto_ptr<Image>& image) {
    auto_ptr<Stream> stream(new MemoryStream(const_cast<unsigned char*>(data.data()), data.size()));
    return decoder.decode(stream, image);
  };
  Bytes expected[2];
  for (int k = 0; k < 2; ++k) {
    auto_ptr<Image> image = blank();
    ASSERT_EQ(run(files[k], image), 1);
    expected[k] = bytesOf(image->planes[0], 32 * 24 * 3);
  }
  ASSERT_NE(expected[0], expected[1]);
  int wrong[2] = {0, 0};
  auto work = [&](int id) {
    auto_ptr<Image> image = blank();
    for (int i = 0; i < 200; ++i) {
      const int k = (i + id) & 1;
      wrong[id] += run(files[k], image) != 1 || bytesOf(image->planes[0], expected[k].size()) != expected[k];
    }
  };
  std::thread a(work, 0), b(work, 1);
  a.join();
  b.join();
  EXPECT_EQ(wrong[0] + wrong[1], 0);
}
