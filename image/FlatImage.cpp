#include "image/FlatImage.h"

#include <cmath>

#include "core/Memory.h"
#include "core/SizeRule.h"

namespace {
// Pixel count of a record, 0 when it does not describe a positive size that
// fits in an int.
long long pixelCount(const flat::Image* image) {
  if (image->width < 1 || image->height < 1) return 0;
  const int64_t n = orvan::sizerule::intCount(image->width, image->height);
  return n < 0 ? 0 : n;
}
}  // namespace

flat::Image* ov_createImage(int width, int height, int channels, int stride, unsigned char* data) {
  if (data == nullptr || width < 1 || height < 1 || stride < 1 || channels < 1 || channels > 4)
    return nullptr;
  // The pixel count and the bytes up to the end of the last row must fit an int.
  const int64_t above = orvan::sizerule::intCount(stride, height - 1);
  const int64_t lastRow = orvan::sizerule::intCount(width, channels);
  if (orvan::sizerule::intCount(width, height) < 0 || above < 0 || lastRow < 0 ||
      orvan::sizerule::within(orvan::sizerule::kIntLimit, above + lastRow) < 0)
    return nullptr;
  auto* image = static_cast<flat::Image*>(ov_malloc(sizeof(flat::Image)));
  if (image == nullptr) return nullptr;
  image->width = width;
  image->height = height;
  image->channels = channels;
  image->stride = stride;
  image->ownsData = 0;
  image->data = data;
  return image;
}

flat::Image* ov_createImage(int width, int height, int channels) {
  if (width < 1 || height < 1 || channels < 1 || channels > 4) return nullptr;
  const int64_t bytes = orvan::sizerule::intCount(channels, height, width);
  if (bytes < 0) return nullptr;
  auto* image = static_cast<flat::Image*>(ov_malloc(sizeof(flat::Image)));
  if (image == nullptr) return nullptr;
  image->width = width;
  image->height = height;
  image->channels = channels;
  image->stride = channels * width;
  image->ownsData = 1;
  image->data = static_cast<unsigned char*>(ov_malloc(static_cast<unsigned int>(bytes)));
  if (image->data == nullptr) {
    ov_free(image);
    return nullptr;
  }
  return image;
}

void ov_releaseImage(flat::Image* image) {
  if (image == nullptr) return;
  if (image->ownsData && image->data != nullptr) {
    ov_free(image->data);
    image->data = nullptr;
  }
  ov_free(image);
}

flat::YUVImage* ov_createYUVImage(int width, int height, unsigned char* data) {
  if (data == nullptr || width < 1 || height < 1 || orvan::sizerule::intCount(width, height) < 0)
    return nullptr;
  auto* image = static_cast<flat::YUVImage*>(ov_malloc(sizeof(flat::YUVImage)));
  if (image == nullptr) return nullptr;
  image->width = width;
  image->height = height;
  image->data = data;
  return image;
}

void ov_releaseYUVImage(flat::YUVImage* image) { ov_free(image); }

int ov_getGrayAvg(flat::Image* image) {
  if (image == nullptr || image->data == nullptr) return 0;
  const long long n = pixelCount(image);
  if (n == 0) return 0;
  // The sum is an int as it has always been; 8 million bytes of 255 fit.
  unsigned int sum = 0;
  for (long long i = 0; i < n; ++i) sum += image->data[i];
  return static_cast<int>(sum) / static_cast<int>(n);
}

void ov_getImageInfo(flat::Image* image, int* average, int* maximum, int* minimum) {
  if (image == nullptr || average == nullptr || maximum == nullptr || minimum == nullptr) return;
  if (image->data == nullptr) return;
  const long long n = pixelCount(image);
  unsigned int sum = 0;
  int largest = 0;
  int smallest = 255;
  for (long long i = 0; i < n; ++i) {
    const int v = image->data[i];
    sum += v;
    if (v > largest) largest = v;
    if (v < smallest) smallest = v;
  }
  *maximum = largest;
  *minimum = smallest;
  *average = n == 0 ? 0 : static_cast<int>(sum) / static_cast<int>(n);
}

flat::IntegralImage* ov_createIntegralImage(flat::Image* image) {
  if (image == nullptr || image->data == nullptr) return nullptr;
  const long long n = pixelCount(image);
  if (n == 0 || orvan::sizerule::intCount(n, 4) < 0) return nullptr;
  auto* integral = static_cast<flat::IntegralImage*>(ov_malloc(sizeof(flat::IntegralImage)));
  if (integral == nullptr) return nullptr;
  integral->data = static_cast<unsigned int*>(ov_malloc(static_cast<unsigned int>(n * 4)));
  if (integral->data == nullptr) {
    ov_free(integral);
    return nullptr;
  }
  const int w = image->width;
  const int h = image->height;
  integral->width = w;
  integral->height = h;
  const unsigned char* src = image->data;
  unsigned int* cell = integral->data;
  for (int y = 0; y < h; ++y) {
    unsigned int rowSum = 0;
    const unsigned char* row = src + static_cast<long long>(y) * w;
    unsigned int* out = cell + static_cast<long long>(y) * w;
    const unsigned int* above = y == 0 ? nullptr : out - w;
    for (int x = 0; x < w; ++x) {
      rowSum += row[x];
      out[x] = above == nullptr ? rowSum : rowSum + above[x];
    }
  }
  return integral;
}

void ov_releaseIntegralImage(flat::IntegralImage* image) {
  if (image == nullptr) return;
  ov_free(image->data);
  ov_free(image);
}

namespace {
// Scratch of the spline solver; shared, hence not re-entrant.
constexpr int kMaxPoints = 100;
double gH[kMaxPoints];
double gS[kMaxPoints];
double gD[kMaxPoints];
double gR[kMaxPoints];
double gM[kMaxPoints];
}  // namespace

double* ov_calcHistogram(double* x, double* y, int count) {
  if (x == nullptr || y == nullptr || count < 2 || count > kMaxPoints) return nullptr;
  const int last = count - 1;
  for (int i = 0; i < last; ++i) {
    gH[i] = x[i + 1] - x[i];
    gS[i] = (y[i + 1] - y[i]) / gH[i];
  }
  // Natural spline: M[0] = M[last] = 0; solve for the inner second
  // derivatives by forward elimination and back substitution.
  for (int i = 0; i < count; ++i) gM[i] = 0.0;
  if (count > 2) {
    for (int i = 1; i < last; ++i) {
      const double diag = 2.0 * (gH[i - 1] + gH[i]);
      const double rhs = 6.0 * (gS[i] - gS[i - 1]);
      if (i == 1) {
        gD[i] = diag;
        gR[i] = rhs;
      } else {
        gD[i] = diag - gH[i - 1] * gH[i - 1] / gD[i - 1];
        gR[i] = rhs - gH[i - 1] * gR[i - 1] / gD[i - 1];
      }
    }
    gM[last - 1] = gR[last - 1] / gD[last - 1];
    for (int i = last - 2; i >= 1; --i) gM[i] = (gR[i] - gH[i] * gM[i + 1]) / gD[i];
  }

  auto* curve = static_cast<double*>(ov_malloc(256 * sizeof(double)));
  if (curve == nullptr) return nullptr;
  for (int t = 0; t < 255; ++t) {
    for (int i = 0; i < last; ++i) {
      if ((x[i] <= t && t < x[i + 1]) || (x[i + 1] <= t && t < x[i])) {
        const double d = t - x[i];
        const double h = gH[i];
        curve[t] = y[i] + (gS[i] - gM[i + 1] * h / 6.0 - gM[i] * h / 3.0) * d + gM[i] * d * d / 2.0 +
                   (gM[i + 1] - gM[i]) * std::pow(d, 3.0) / (6.0 * h);
        break;
      }
    }
  }
  curve[255] = y[last];
  return curve;
}
