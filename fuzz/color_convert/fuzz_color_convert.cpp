// Every colour converter and flat image function over random sizes, each
// buffer exactly as large as the interface documents.
#include <cstdint>
#include <vector>

#include "../FuzzInput.h"
#include "core/Memory.h"
#include "image/ColorConvert.h"
#include "image/FlatImage.h"

namespace {

using Bytes = std::vector<unsigned char>;

// Sizes may be 0 or negative; an empty plane still gets a valid address.
Bytes plane(const FuzzInput& in, int64_t n) {
  Bytes b(static_cast<size_t>(n > 0 ? n : 0) + (n > 0 ? 0 : 1));
  in.tile(b.data(), b.size());
  return b;
}

void converters(FuzzInput& in, int w, int h) {
  const int64_t n = int64_t{w} * h;
  const int64_t q = n > 0 ? n / 4 : 0;
  const int64_t p = n > 0 ? n / 2 : 0;
  Bytes a, b, c, d;
  switch (in.range(0, 23)) {
    case 0:
      a = plane(in, n), b = plane(in, 3 * n);
      color_convert_gray2rgb(a.data(), b.data(), w, h);
      break;
    case 1:
      a = plane(in, n), b = plane(in, 4 * n);
      color_convert_gray2rgba(a.data(), b.data(), w, h);
      break;
    case 2:
      a = plane(in, 3 * n), b = plane(in, n);
      color_convert_rgb2gray(a.data(), b.data(), w, h);
      break;
    case 3:
      a = plane(in, 4 * n), b = plane(in, n);
      color_convert_rgba2gray(a.data(), b.data(), w, h);
      break;
    case 4:
      a = plane(in, 3 * n), b = plane(in, 4 * n);
      color_convert_rgb2rgba(a.data(), b.data(), w, h);
      break;
    case 5:
      a = plane(in, 4 * n), b = plane(in, 3 * n);
      color_convert_rgba2rgb(a.data(), b.data(), w, h);
      break;
    case 6:
      a = plane(in, 3 * n), b = plane(in, 3 * n);
      color_convert_rgb2yuv(a.data(), b.data(), w, h);
      break;
    case 7:
      a = plane(in, 3 * n), b = plane(in, 3 * n);
      color_convert_yuv2rgb(a.data(), b.data(), w, h);
      break;
    case 8:
      a = plane(in, 3 * n), b = plane(in, 4 * p);
      color_convert_rgb2yuyv(a.data(), b.data(), w, h);
      break;
    case 9:
      a = plane(in, 4 * p), b = plane(in, 3 * n);
      color_convert_yuyv2rgb(a.data(), b.data(), w, h);
      break;
    case 10:
      a = plane(in, 3 * n), b = plane(in, 4 * p);
      color_convert_rgb2yvyu(a.data(), b.data(), w, h);
      break;
    case 11:
      a = plane(in, 4 * p), b = plane(in, 3 * n);
      color_convert_yvyu2rgb(a.data(), b.data(), w, h);
      break;
    case 12:
      a = plane(in, 3 * n), b = plane(in, n), c = plane(in, p), d = plane(in, p);
      color_convert_rgb2yuv422p(a.data(), b.data(), c.data(), d.data(), w, h);
      break;
    case 13:
      a = plane(in, n), b = plane(in, p), c = plane(in, p), d = plane(in, 3 * n);
      color_convert_yuv422p2rgb(a.data(), b.data(), c.data(), d.data(), w, h);
      break;
    case 14:
      a = plane(in, 3 * n), b = plane(in, n), c = plane(in, q), d = plane(in, q);
      color_convert_rgb2yv12oryu12(a.data(), b.data(), c.data(), d.data(), w, h);
      break;
    case 15:
      a = plane(in, n), b = plane(in, q), c = plane(in, q), d = plane(in, 3 * n);
      color_convert_yv12oryu122rgb(a.data(), b.data(), c.data(), d.data(), w, h);
      break;
    case 16:
      a = plane(in, 3 * n), b = plane(in, n), c = plane(in, 2 * q);
      color_convert_rgb2nv12(a.data(), b.data(), c.data(), w, h);
      break;
    case 17:
      a = plane(in, 3 * n), b = plane(in, n), c = plane(in, 2 * q);
      color_convert_rgb2nv21(a.data(), b.data(), c.data(), w, h);
      break;
    case 18:
      a = plane(in, n), b = plane(in, 2 * q), c = plane(in, 3 * n);
      color_convert_nv122rgb(a.data(), b.data(), c.data(), w, h);
      break;
    case 19:
      a = plane(in, n), b = plane(in, 2 * q), c = plane(in, 3 * n);
      color_convert_nv212rgb(a.data(), b.data(), c.data(), w, h);
      break;
    case 20:
      a = plane(in, n), b = plane(in, n);
      color_convert_yuv2gray(a.data(), b.data(), w, h);
      break;
    case 21:
      a = plane(in, n + 2 * q), b = plane(in, n + 2 * q);
      convert_nv12_to_yv12(a.data(), b.data(), w, h);
      break;
    case 22:
      a = plane(in, n + 2 * q), b = plane(in, n + 2 * q);
      convert_nv21_to_yv12(a.data(), b.data(), w, h);
      break;
    default: {
      // Image to Image through the code word, any pair of codes 0..13.
      const auto from = static_cast<Image::ImageFormatType>(in.range(0, 13));
      const int to = static_cast<int>(in.range(0, 13));
      auto_ptr<Image> source(Image::createImage(w > 0 ? w : 0, h > 0 ? h : 0, in.range(0, 2), from, nullptr));
      if (source->planes[0] != nullptr) {
        const size_t bytes = size_t{source->width} * source->height * source->depth * source->bytesPerPixel;
        in.tile(source->planes[0], bytes);
      }
      auto_ptr<Image> out(ColorConvert::convert(source, (from << 8) | to));
      break;
    }
  }
}

void flatFunctions(FuzzInput& in, int w, int h) {
  const int channels = static_cast<int>(in.range(0, 5));
  flat::Image* owned = ov_createImage(w, h, channels);
  FUZZ_CHECK((owned != nullptr) == (w > 0 && h > 0 && channels >= 1 && channels <= 4));
  if (owned != nullptr) {
    in.tile(owned->data, size_t(w) * h * channels);
    int average = -1, maximum = -1, minimum = -1;
    ov_getImageInfo(owned, &average, &maximum, &minimum);
    FUZZ_CHECK(minimum <= average && average <= maximum);
    FUZZ_CHECK(ov_getGrayAvg(owned) == average);
    flat::IntegralImage* integral = ov_createIntegralImage(owned);
    FUZZ_CHECK(integral != nullptr);
    // The last cell sums the first width * height bytes.
    unsigned total = 0;
    for (int64_t i = 0; i < int64_t{w} * h; ++i) total += owned->data[i];
    FUZZ_CHECK(integral->data[int64_t{w} * h - 1] == total);
    ov_releaseIntegralImage(integral);
    ov_releaseImage(owned);
  }
  // A wrapped buffer: the functions read width * height bytes of it.
  Bytes wrapped = plane(in, int64_t{w} * h);
  flat::Image* view = ov_createImage(w, h, channels, static_cast<int>(in.range(0, 4)) * w, wrapped.data());
  if (view != nullptr) {
    ov_getGrayAvg(view);
    ov_releaseIntegralImage(ov_createIntegralImage(view));
    ov_releaseImage(view);
  }
  ov_releaseYUVImage(ov_createYUVImage(w, h, wrapped.data()));

  const int count = static_cast<int>(in.range(0, 101));
  std::vector<double> x(count > 0 ? count : 1), y(x.size());
  for (size_t i = 0; i < x.size(); ++i) {
    x[i] = in.take<int16_t>() % 300;
    y[i] = in.take<int16_t>() % 300;
  }
  double* curve = ov_calcHistogram(x.data(), y.data(), count);
  FUZZ_CHECK(curve == nullptr || (count >= 2 && count <= 100));
  ov_free(curve);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const int w = static_cast<int>(in.range(0, 300)) - 2;
  const int h = static_cast<int>(in.range(0, 300)) - 2;
  if (in.flag()) {
    converters(in, w, h);
  } else {
    flatFunctions(in, w, h);
  }
  return 0;
}
