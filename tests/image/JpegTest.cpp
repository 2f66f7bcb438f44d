#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
// clang-format off
#include <jpeglib.h>
// clang-format on

#include "ImageTestUtil.h"
#include "support/LogCapture.h"

using namespace imgtest;

namespace {

// A one-component JPEG (a left-to-right ramp) written with libjpeg itself.
Bytes grayJpeg(int w, int h) {
  jpeg_compress_struct cinfo;
  jpeg_error_mgr err;
  cinfo.err = jpeg_std_error(&err);
  jpeg_create_compress(&cinfo);
  unsigned char* out = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&cinfo, &out, &size);
  cinfo.image_width = w;
  cinfo.image_height = h;
  cinfo.input_components = 1;
  cinfo.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&cinfo);
  jpeg_start_compress(&cinfo, TRUE);
  Bytes row(w);
  for (int x = 0; x < w; ++x) row[x] = static_cast<unsigned char>(x * 255 / w);
  JSAMPROW r[1] = {row.data()};
  while (cinfo.next_scanline < cinfo.image_height) jpeg_write_scanlines(&cinfo, r, 1);
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  Bytes data(out, out + size);
  free(out);
  return data;
}

// A failed decode must leave the caller's image as it was.
struct Snapshot {
  unsigned w, h;
  int format;
  unsigned char* plane;
  explicit Snapshot(const auto_ptr<Image>& i)
      : w(i->width), h(i->height), format(i->format), plane(i->planes[0]) {}
  bool same(const auto_ptr<Image>& i) const {
    return i->width == w && i->height == h && i->format == format && i->planes[0] == plane;
  }
};

}  // namespace

TEST(Jpeg, PhotographSurvivesAtQualities50And95) {
  auto_ptr<Image> photo = sample("coffee.jpg");
  ASSERT_NE(photo, nullptr);
  ASSERT_EQ(photo->width * photo->height, 600u * 400u);
  double last = 0;
  for (int quality : {50, 95}) {
    SCOPED_TRACE(quality);
    const Bytes data = encode(photo, quality);
    ASSERT_GT(data.size(), 100u);
    EXPECT_EQ(data[0] << 8 | data[1], 0xFFD8);
    EXPECT_EQ(data[data.size() - 2] << 8 | data.back(), 0xFFD9);
    auto_ptr<Image> back = blank();
    ASSERT_EQ(decode(data, back), 1);
    ASSERT_EQ(back->format, Image::IMAGE_FORMAT_RGB);
    ASSERT_EQ(back->width, 600u);
    const double db = psnr(photo->planes[0], back->planes[0], 600 * 400 * 3);
    EXPECT_GT(db, quality == 50 ? 30.0 : 38.0);
    EXPECT_GT(db, last);
    last = db;
  }
}

// Gray input goes out as three components with equal channels; a
// one-component file decodes to code 1, a colour one to code 3.
TEST(Jpeg, GrayAndColourFormats) {
  auto_ptr<Image> gray = makeImage(40, 30, Image::IMAGE_FORMAT_GRAY);
  for (unsigned i = 0; i < 40 * 30; ++i) gray->planes[0][i] = static_cast<unsigned char>(i % 40 * 6);
  auto_ptr<Image> back = blank();
  ASSERT_EQ(decode(encode(gray, 90), back), 1);
  EXPECT_EQ(back->format, Image::IMAGE_FORMAT_RGB);
  EXPECT_EQ(back->bytesPerPixel, 3);
  const unsigned char* p = back->planes[0];
  for (unsigned i = 0; i < 40 * 30; ++i)
    ASSERT_TRUE(p[3 * i] == p[3 * i + 1] && p[3 * i] == p[3 * i + 2]) << i;

  ASSERT_EQ(decode(grayJpeg(24, 16), back), 1);  // the same image reconfigured
  EXPECT_EQ(back->format, Image::IMAGE_FORMAT_GRAY);
  EXPECT_EQ(back->bytesPerPixel, 1);
  EXPECT_EQ(back->width, 24u);
  EXPECT_LT(back->planes[0][0], 8);     // dark left edge
  EXPECT_GT(back->planes[0][23], 220);  // bright right edge
}

TEST(Jpeg, FactoriesAndSniffing) {
  ImageEncoderFactory encoders;
  EXPECT_EQ(encoders.createImageEncoder(static_cast<ImageEncoder::Type>(0)), nullptr);
  auto_ptr<ImageEncoder> encoder(encoders.createImageEncoder(ImageEncoder::TYPE_JPEG));
  EXPECT_NE(dynamic_cast<JpegEncoder*>(encoder.get()), nullptr);

  ImageDecoderFactory decoders;
  unsigned char good[] = {0xFF, 0xD8, 0xFF, 0xE0}, bad[] = {0xFF, 0xD8, 0xFE, 0xE0};
  auto_ptr<Stream> s1(new MemoryStream(good, sizeof(good))), s2(new MemoryStream(bad, sizeof(bad))), none;
  auto_ptr<ImageDecoder> found(decoders.createImageDecoder(s1));
  EXPECT_NE(dynamic_cast<JpegDecoder*>(found.get()), nullptr);
  EXPECT_EQ(decoders.createImageDecoder(s2), nullptr);
  EXPECT_EQ(decoders.createImageDecoder(none), nullptr);

  // The sniffed stream still decodes: decoding rewinds it.
  auto_ptr<Image> small = smallPicture();
  Bytes data = encode(small, 70);
  auto_ptr<Stream> stream(new MemoryStream(data.data(), data.size()));
  auto_ptr<ImageDecoder> decoder(decoders.createImageDecoder(stream));
  ASSERT_NE(decoder, nullptr);
  auto_ptr<Image> image = blank();
  EXPECT_EQ(decoder->decode(stream, image), 1);
  EXPECT_EQ(image->width, 32u);
}

TEST(Jpeg, WriteFailureLogsThroughTheErrorHook) {
  auto_ptr<Image> photo = sample("astronaut.jpg");
  ASSERT_NE(photo, nullptr);
  LogCapture cap;
  EXPECT_TRUE(encode(photo, 90, 3000).empty());  // the stream fills up, then accepts nothing
  EXPECT_EQ(
      cap.count("jpeg_utils_error_exit,msgcode[37]  msg: Output file write error --- out of disk space?\n"),
      1);
}

// An encode whose output is a whole number of 1024-byte blocks leaves nothing
// for the final flush; a file stream answers 0 to that empty write, which
// must not fail the encode.
TEST(Jpeg, OutputOfWholeBlocksEncodesToAFile) {
  Bytes whole;
  auto_ptr<Image> picture;
  for (int seed = 0; seed < 64 && whole.empty(); ++seed) {
    picture = smallPicture();
    for (unsigned i = 0; i < 32 * 24 * 3; i += 7)
      picture->planes[0][i] ^= static_cast<unsigned char>(seed * 37);
    for (int q = 1; q <= 100 && whole.empty(); ++q) {
      Bytes data = encode(picture, q);
      if (!data.empty() && data.size() % 1024 == 0) whole = data;
    }
  }
  ASSERT_FALSE(whole.empty());
  const std::string path = testing::TempDir() + "whole-blocks.jpg";
  int quality = 1;
  while (encode(picture, quality) != whole) ++quality;
  {
    auto_ptr<Stream> file(new FileStream(path.c_str(), FileStream::FILE_MODE_WRITE));
    JpegEncoder encoder;
    EXPECT_EQ(encoder.encode(file, picture, quality), 1);
  }
  auto_ptr<Stream> back(new FileStream(path.c_str(), FileStream::FILE_MODE_READ));
  Bytes written(back->getLength());
  EXPECT_EQ(back->read(written.data(), static_cast<unsigned>(written.size())),
            static_cast<int>(whole.size()));
  EXPECT_EQ(written, whole);
  std::remove(path.c_str());
}

// Every prefix of a small file and random byte flips: 0 (or a whole picture),
// no crash or leak under ASan, and after a failure the caller's image as it was.
TEST(Jpeg, TruncatedAndCorruptedFilesFailCleanly) {
  auto_ptr<Image> small = smallPicture();
  const Bytes data = encode(small, 75);
  ASSERT_FALSE(data.empty());
  LogCapture cap;
  auto_ptr<Image> image = smallPicture();
  const Snapshot before(image);
  for (size_t len = 0; len < data.size(); ++len) {
    ASSERT_EQ(decode(Bytes(data.begin(), data.begin() + len), image), 0) << len;
    ASSERT_TRUE(before.same(image)) << len;
  }
  std::mt19937 rng(1234);
  int failures = 0;
  for (int trial = 0; trial < 400; ++trial) {
    Bytes damaged = data;
    for (int f = 0; f <= trial % 4; ++f)
      damaged[2 + rng() % (damaged.size() - 2)] ^= static_cast<unsigned char>(1 + rng() % 255);
    auto_ptr<Image> target = smallPicture();
    const Snapshot was(target);
    const int result = decode(damaged, target);
    ASSERT_TRUE(result == 1 || (result == 0 && was.same(target))) << trial;
    failures += result == 0;
  }
  EXPECT_GT(failures, 0);  // damaged headers must be caught

  // libjpeg itself reports a stream that ends: inside the header as a call
  // out of state (20), inside the pixel data as too little data (67).
  cap.clear();
  EXPECT_EQ(decode(Bytes(data.begin(), data.begin() + 20), image), 0);
  EXPECT_EQ(decode(Bytes(data.begin(), data.end() - 60), image), 0);
  EXPECT_EQ(cap.texts(),
            (std::vector<std::string>{
                "jpeg_utils_error_exit,msgcode[20]  msg: Improper call to JPEG library in state 201\n",
                "jpeg_utils_error_exit,msgcode[67]  msg: Application transferred too few scanlines\n"}));
}

// The buffer an image gives up is reused by the decoder only when it really
// fits: the image's fields are the caller's and may no longer describe it
// (ASan checks the second decode).
TEST(Jpeg, SpareBufferIsSizedByTheDecoderNotByTheImageFields) {
  auto_ptr<Image> small = smallPicture();
  const Bytes data = encode(small, 90);
  JpegDecoder decoder;
  auto decodeInto = [&](auto_ptr<Image>& image) {
    auto_ptr<Stream> stream(new MemoryStream(const_cast<unsigned char*>(data.data()), data.size()));
    return decoder.decode(stream, image);
  };
  auto_ptr<Image> image = makeImage(4, 4, Image::IMAGE_FORMAT_RGB);
  image->width = 32;  // now claims the 32 x 24 x 3 bytes of the picture
  image->height = 24;
  ASSERT_EQ(decodeInto(image), 1);
  const Bytes first = bytesOf(image->planes[0], 32 * 24 * 3);
  unsigned char* firstBuffer = image->planes[0];
  ASSERT_EQ(decodeInto(image), 1);
  EXPECT_EQ(bytesOf(image->planes[0], first.size()), first);
  ASSERT_EQ(decodeInto(image), 1);
  EXPECT_EQ(image->planes[0], firstBuffer);  // a buffer that fits is reused
  EXPECT_EQ(bytesOf(image->planes[0], first.size()), first);
}

// A header claiming 65500 x 65500 colour pixels decodes to more bytes than 32
// bits can count: refused through the error hook.
TEST(Jpeg, OversizedImageIsRefused) {
  auto_ptr<Image> small = smallPicture();
  Bytes data = encode(small, 75);
  size_t sof = 2;
  while (sof + 8 < data.size() && !(data[sof] == 0xFF && data[sof + 1] == 0xC0)) ++sof;
  ASSERT_LT(sof + 8, data.size());
  data[sof + 5] = data[sof + 7] = 0xFF;  // SOF0: length, precision, height, width
  data[sof + 6] = data[sof + 8] = 0xDC;
  auto_ptr<Image> image = smallPicture();
  const Snapshot before(image);
  LogCapture cap;
  EXPECT_EQ(decode(data, image), 0);
  EXPECT_EQ(cap.countPrefix("jpeg_utils_error_exit,msgcode[41]"), 1);
  EXPECT_TRUE(before.same(image));
}
