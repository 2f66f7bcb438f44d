#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <vector>
// clang-format off
#include <jpeglib.h>
// clang-format on

#include "Samples.h"
#include "core/Stream.h"
#include "image/ImageDecoder.h"
#include "image/ImageEncoder.h"
#include "support/LogCapture.h"

namespace {

using Bytes = std::vector<unsigned char>;

// Encodes through a MemoryStream of `capacity` bytes; returns the bytes written
// (empty when encoding failed).
Bytes encode(auto_ptr<Image>& image, int quality, unsigned capacity = 4u << 20, int* result = nullptr) {
  auto_ptr<MemoryStream> memory(new MemoryStream(capacity));
  auto_ptr<Stream> stream(memory);
  JpegEncoder encoder;
  const int ok = encoder.encode(stream, image, quality);
  if (result != nullptr) *result = ok;
  if (ok != 1) return Bytes();
  return Bytes(memory->getBuffer(), memory->getBuffer() + memory->getPosition());
}

int decode(const Bytes& data, auto_ptr<Image>& image) {
  auto_ptr<Stream> stream(new MemoryStream(const_cast<unsigned char*>(data.data()), data.size()));
  JpegDecoder decoder;
  return decoder.decode(stream, image);
}

auto_ptr<Image> blank() {
  return auto_ptr<Image>(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
}

// A one-component JPEG written with libjpeg itself.
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
  while (cinfo.next_scanline < cinfo.image_height) {
    for (int x = 0; x < w; ++x) row[x] = static_cast<unsigned char>(x * 255 / w);
    JSAMPROW r[1] = {row.data()};
    jpeg_write_scanlines(&cinfo, r, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  Bytes data(out, out + size);
  free(out);
  return data;
}

auto_ptr<Image> smallPicture() {
  auto_ptr<Image> image(Image::createImage(32, 24, 1, Image::IMAGE_FORMAT_RGB, nullptr));
  for (unsigned i = 0; i < 32 * 24 * 3; ++i)
    image->planes[0][i] = static_cast<unsigned char>((i * 7) ^ (i >> 5));
  return image;
}

// What a failed decode must leave behind: the caller's image as it was.
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
  auto_ptr<Image> photo = samples::decode("coffee.jpg");
  ASSERT_NE(photo, nullptr);
  EXPECT_EQ(photo->width, 600u);
  EXPECT_EQ(photo->height, 400u);
  const size_t n = 600 * 400 * 3;
  double last = 0;
  size_t lastSize = 0;
  for (int quality : {50, 95}) {
    SCOPED_TRACE(quality);
    const Bytes data = encode(photo, quality);
    ASSERT_GT(data.size(), 100u);
    EXPECT_EQ(data[0], 0xFF);
    EXPECT_EQ(data[1], 0xD8);
    EXPECT_EQ(data[data.size() - 2], 0xFF);
    EXPECT_EQ(data[data.size() - 1], 0xD9);
    auto_ptr<Image> back = blank();
    ASSERT_EQ(decode(data, back), 1);
    ASSERT_EQ(back->format, Image::IMAGE_FORMAT_RGB);
    ASSERT_EQ(back->width, 600u);
    const double psnr = samples::psnr(photo->planes[0], back->planes[0], n);
    EXPECT_GT(psnr, quality == 50 ? 30.0 : 38.0);
    EXPECT_GT(psnr, last);
    EXPECT_GT(data.size(), lastSize);
    last = psnr;
    lastSize = data.size();
  }
}

TEST(Jpeg, GrayEncodesAsThreeEqualChannels) {
  auto_ptr<Image> gray(Image::createImage(40, 30, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  for (unsigned i = 0; i < 40 * 30; ++i) gray->planes[0][i] = static_cast<unsigned char>(i % 40 * 6);
  const Bytes data = encode(gray, 90);
  ASSERT_FALSE(data.empty());
  auto_ptr<Image> back = blank();
  ASSERT_EQ(decode(data, back), 1);
  EXPECT_EQ(back->format, Image::IMAGE_FORMAT_RGB);
  const unsigned char* p = back->planes[0];
  for (unsigned i = 0; i < 40 * 30; ++i) {
    ASSERT_EQ(p[3 * i], p[3 * i + 1]) << i;
    ASSERT_EQ(p[3 * i], p[3 * i + 2]) << i;
  }
}

TEST(Jpeg, RowPackersByFormat) {
  auto_ptr<Image> rgb = smallPicture();
  const Bytes reference = encode(rgb, 80);
  ASSERT_FALSE(reference.empty());
  // RGBA drops alpha; packed YUV bytes go out as if they were RGB.
  auto_ptr<Image> rgba(Image::createImage(32, 24, 1, Image::IMAGE_FORMAT_RGBA, nullptr));
  for (unsigned i = 0; i < 32 * 24; ++i) {
    memcpy(rgba->planes[0] + 4 * i, rgb->planes[0] + 3 * i, 3);
    rgba->planes[0][4 * i + 3] = static_cast<unsigned char>(i);
  }
  EXPECT_EQ(encode(rgba, 80), reference);
  unsigned char* planes[3] = {rgb->planes[0], nullptr, nullptr};
  auto_ptr<Image> yuv(Image::createImage(32, 24, 1, Image::IMAGE_FORMAT_YUV, planes));
  EXPECT_EQ(encode(yuv, 80), reference);

  // Formats without a packer are refused before anything is written.
  auto_ptr<Image> nv21(Image::createImage(32, 24, 1, Image::IMAGE_FORMAT_NV21, nullptr));
  auto_ptr<MemoryStream> memory(new MemoryStream(1u << 16));
  auto_ptr<Stream> stream(memory);
  JpegEncoder encoder;
  EXPECT_EQ(encoder.encode(stream, nv21, 80), 0);
  EXPECT_EQ(memory->getPosition(), 0u);
  auto_ptr<Image> none, empty(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_RGB, nullptr));
  EXPECT_EQ(encoder.encode(stream, none, 80), 0);
  EXPECT_EQ(encoder.encode(stream, empty, 80), 0);
}

TEST(Jpeg, DecodedFormatIsTheComponentCount) {
  auto_ptr<Image> image = blank();
  ASSERT_EQ(decode(grayJpeg(24, 16), image), 1);
  EXPECT_EQ(image->format, Image::IMAGE_FORMAT_GRAY);
  EXPECT_EQ(image->bytesPerPixel, 1);
  EXPECT_EQ(image->width, 24u);
  EXPECT_EQ(image->depth, 1u);
  EXPECT_LT(image->planes[0][0], 8);     // dark left edge
  EXPECT_GT(image->planes[0][23], 220);  // bright right edge

  auto_ptr<Image> small = smallPicture();
  ASSERT_EQ(decode(encode(small, 90), image), 1);  // the same image reconfigured
  EXPECT_EQ(image->format, Image::IMAGE_FORMAT_RGB);
  EXPECT_EQ(image->bytesPerPixel, 3);
  EXPECT_EQ(image->width, 32u);
}

TEST(Jpeg, FactoriesAndSniffing) {
  ImageEncoderFactory encoders;
  EXPECT_EQ(encoders.createImageEncoder(static_cast<ImageEncoder::Type>(0)), nullptr);
  EXPECT_EQ(encoders.createImageEncoder(static_cast<ImageEncoder::Type>(2)), nullptr);
  auto_ptr<ImageEncoder> encoder(encoders.createImageEncoder(ImageEncoder::TYPE_JPEG));
  ASSERT_NE(encoder, nullptr);
  EXPECT_NE(dynamic_cast<JpegEncoder*>(encoder.get()), nullptr);

  ImageDecoderFactory decoders;
  unsigned char good[] = {0xFF, 0xD8, 0xFF, 0xE0}, bad[] = {0xFF, 0xD8, 0xFE, 0xE0},
                shortish[] = {0xFF, 0xD8};
  auto_ptr<Stream> s1(new MemoryStream(good, sizeof(good)));
  auto_ptr<Stream> s2(new MemoryStream(bad, sizeof(bad)));
  auto_ptr<Stream> s3(new MemoryStream(shortish, sizeof(shortish)));
  auto_ptr<Stream> none;
  ImageDecoder* found = decoders.createImageDecoder(s1);
  ASSERT_NE(found, nullptr);
  EXPECT_NE(dynamic_cast<JpegDecoder*>(found), nullptr);
  EXPECT_EQ(decoders.createImageDecoder(s2), nullptr);
  EXPECT_EQ(decoders.createImageDecoder(s3), nullptr);
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

TEST(Jpeg, WriteFailureIsReportedAsCode37) {
  auto_ptr<Image> photo = samples::decode("astronaut.jpg");
  ASSERT_NE(photo, nullptr);
  LogCapture cap;
  int result = -1;
  encode(photo, 90, 3000, &result);  // the stream fills up and then accepts nothing
  EXPECT_EQ(result, 0);
  EXPECT_EQ(
      cap.count("jpeg_utils_error_exit,msgcode[37]  msg: Output file write error --- out of disk space?\n"),
      1);
}

TEST(Jpeg, GarbageLogsOnceAndLeavesTheImageAlone) {
  auto_ptr<Image> image = smallPicture();
  const Snapshot before(image);
  Bytes junk = {0xFF, 0xD8, 0xFF, 0x01, 0x02, 0x03, 0x04, 0x05};
  junk.resize(300, 0x5A);
  LogCapture cap;
  EXPECT_EQ(decode(junk, image), 0);
  EXPECT_EQ(cap.countPrefix("jpeg_utils_error_exit,msgcode["), 1);
  EXPECT_TRUE(before.same(image));
  auto_ptr<Stream> none;
  JpegDecoder decoder;
  EXPECT_EQ(decoder.decode(none, image), 0);
}

// Every prefix of a small file ends early: each one fails cleanly.
TEST(Jpeg, EveryTruncationFailsWithoutLeaks) {
  auto_ptr<Image> small = smallPicture();
  const Bytes data = encode(small, 75);
  ASSERT_FALSE(data.empty());
  auto_ptr<Image> image = smallPicture();
  const Snapshot before(image);
  LogCapture cap;
  for (size_t len = 0; len < data.size(); ++len) {
    const Bytes prefix(data.begin(), data.begin() + len);
    ASSERT_EQ(decode(prefix, image), 0) << len;
    ASSERT_TRUE(before.same(image)) << len;
  }
  ASSERT_EQ(decode(data, image), 1);
}

TEST(Jpeg, RandomByteFlipsNeverCrash) {
  auto_ptr<Image> small = smallPicture();
  const Bytes data = encode(small, 75);
  std::mt19937 rng(1234);
  LogCapture cap;
  int failures = 0;
  for (int trial = 0; trial < 400; ++trial) {
    Bytes damaged = data;
    const int flips = 1 + trial % 4;
    for (int f = 0; f < flips; ++f)
      damaged[2 + rng() % (damaged.size() - 2)] ^= static_cast<unsigned char>(1 + rng() % 255);
    auto_ptr<Image> image = smallPicture();
    const Snapshot before(image);
    const int result = decode(damaged, image);
    ASSERT_TRUE(result == 0 || result == 1);
    if (result == 0) {
      ++failures;
      ASSERT_TRUE(before.same(image));
    } else {
      ASSERT_NE(image->planes[0], nullptr);
    }
  }
  EXPECT_GT(failures, 0);  // damaged headers must be caught
}

// A header claiming 65500 x 65500 colour pixels decodes to more bytes than 32
// bits can count: refused through the error hook.
TEST(Jpeg, OversizedImageIsRefused) {
  auto_ptr<Image> small = smallPicture();
  Bytes data = encode(small, 75);
  bool patched = false;
  for (size_t i = 2; i + 8 < data.size(); ++i) {
    if (data[i] == 0xFF && data[i + 1] == 0xC0) {  // SOF0: length, precision, height, width
      data[i + 5] = data[i + 7] = 0xFF;
      data[i + 6] = data[i + 8] = 0xDC;
      patched = true;
      break;
    }
  }
  ASSERT_TRUE(patched);
  auto_ptr<Image> image = smallPicture();
  const Snapshot before(image);
  LogCapture cap;
  EXPECT_EQ(decode(data, image), 0);
  EXPECT_EQ(cap.countPrefix("jpeg_utils_error_exit,msgcode[41]"), 1);
  EXPECT_TRUE(before.same(image));
}

// A marker segment longer than the 4096-byte input buffer is skipped through
// the stream's skip: a file stream seeks over it, while a memory stream cannot
// skip (it answers -1), which the source manager reports as a read error.
TEST(Jpeg, LongMarkerSegmentsAreSkippedThroughTheStream) {
  auto_ptr<Image> small = smallPicture();
  const Bytes plain = encode(small, 80);
  Bytes padded(plain.begin(), plain.begin() + 2);  // SOI
  const unsigned length = 10000;                   // APP1, not kept by libjpeg
  padded.insert(padded.end(), {0xFF, 0xE1, static_cast<unsigned char>(length >> 8), length & 0xFF});
  padded.insert(padded.end(), length - 2, 0x42);
  padded.insert(padded.end(), plain.begin() + 2, plain.end());

  char path[] = "/tmp/ov_jpeg_XXXXXX";
  const int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(write(fd, padded.data(), padded.size()), static_cast<ssize_t>(padded.size()));
  close(fd);
  auto_ptr<Stream> file(new FileStream(path, FileStream::FILE_MODE_READ));
  auto_ptr<Image> image = blank();
  JpegDecoder decoder;
  EXPECT_EQ(decoder.decode(file, image), 1);
  EXPECT_EQ(image->width, 32u);
  remove(path);

  LogCapture cap;
  auto_ptr<Image> other = blank();
  EXPECT_EQ(decode(padded, other), 0);
  EXPECT_EQ(cap.countPrefix("jpeg_utils_error_exit,msgcode["), 1);
}
