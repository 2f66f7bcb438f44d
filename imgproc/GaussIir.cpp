#include <math.h>
#include <stddef.h>
#include <stdint.h>

#include "core/Memory.h"
#include "core/SizeRule.h"
#include "imgproc/Blur.h"

namespace {

// Fourth-order recursive filter pair: causal numerator n[0..3], anti-causal
// numerator m[1..4], shared denominator d[1..4] (d[0] = 1).
struct IirCoef {
  double n[4];
  double m[5];
  double d[5];
  double causalGain;  // response of the causal half to a constant 1
  double anticausalGain;
};

// Deriche's published constants for the Gaussian.
constexpr double kA0 = 1.6803, kA1 = 3.735, kB0 = 1.783, kB1 = 1.723;
constexpr double kW0 = 0.6318, kW1 = 1.997, kC0 = -0.6803, kC1 = -0.2598;

// Radii beyond this give filters whose poles sit so close to 1 that the
// recursion loses its precision; they are treated as this radius.
constexpr double kMaxRadius = 1000.0;

IirCoef makeCoef(double sigma) {
  IirCoef k{};
  const double e0 = exp(-kB0 / sigma), e1 = exp(-kB1 / sigma);
  // Denominator: product of the two damped-oscillator pole pairs.
  const double p0[3] = {1.0, -2.0 * e0 * cos(kW0 / sigma), e0 * e0};
  const double p1[3] = {1.0, -2.0 * e1 * cos(kW1 / sigma), e1 * e1};
  for (int i = 0; i < 5; ++i) k.d[i] = 0.0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) k.d[i + j] += p0[i] * p1[j];

  // Samples of the continuous impulse response h(x), x >= 0, scaled to unit
  // area by 1 / (sigma sqrt(2 pi)).
  const double scale = 1.0 / (sigma * sqrt(2.0 * M_PI));
  double h[5];
  for (int x = 0; x < 5; ++x) {
    const double t = x / sigma;
    h[x] = scale * ((kA0 * cos(kW0 * t) + kA1 * sin(kW0 * t)) * exp(-kB0 * t) +
                    (kC0 * cos(kW1 * t) + kC1 * sin(kW1 * t)) * exp(-kB1 * t));
  }
  // The numerators follow from h and the denominator: n_k = sum d_j h(k - j)
  // for the causal half (taps 0..3), the same without h(0) for the
  // anti-causal half (taps 1..4), since h obeys the recursion from tap 4 on.
  for (int kk = 0; kk < 4; ++kk) {
    k.n[kk] = 0.0;
    for (int j = 0; j <= kk; ++j) k.n[kk] += k.d[j] * h[kk - j];
  }
  k.m[0] = 0.0;
  for (int kk = 1; kk < 5; ++kk) {
    k.m[kk] = 0.0;
    for (int j = 0; j < kk; ++j) k.m[kk] += k.d[j] * h[kk - j];
  }
  const double dsum = k.d[0] + k.d[1] + k.d[2] + k.d[3] + k.d[4];
  double ng = (k.n[0] + k.n[1] + k.n[2] + k.n[3]) / dsum;
  double mg = (k.m[1] + k.m[2] + k.m[3] + k.m[4]) / dsum;
  // The sampled kernel's area is not exactly 1; renormalise so that a flat
  // image stays exactly flat.
  const double fix = 1.0 / (ng + mg);
  for (double& v : k.n) v *= fix;
  for (double& v : k.m) v *= fix;
  k.causalGain = ng * fix;
  k.anticausalGain = mg * fix;
  return k;
}

// Filters `count` samples `step` bytes apart in place, edges replicated by
// starting each recursion in its steady state for the edge value.
void filterLine(unsigned char* line, int count, size_t step, const IirCoef& k, double* in, double* out) {
  for (int i = 0; i < count; ++i) in[i] = line[(size_t)i * step];
  const double* n = k.n;
  const double* m = k.m;
  const double* d = k.d;

  // Causal: y[i] = n0 x[i] + n1 x[i-1] + n2 x[i-2] + n3 x[i-3] - d1 y[i-1] - ... - d4 y[i-4].
  double x0 = in[0];
  double x1 = x0, x2 = x0, x3 = x0;
  double y1 = x0 * k.causalGain, y2 = y1, y3 = y1, y4 = y1;
  for (int i = 0; i < count; ++i) {
    x0 = in[i];
    const double y =
        n[0] * x0 + n[1] * x1 + n[2] * x2 + n[3] * x3 - d[1] * y1 - d[2] * y2 - d[3] * y3 - d[4] * y4;
    out[i] = y;
    x3 = x2;
    x2 = x1;
    x1 = x0;
    y4 = y3;
    y3 = y2;
    y2 = y1;
    y1 = y;
  }
  // Anti-causal: y[i] = m1 x[i+1] + ... + m4 x[i+4] - d1 y[i+1] - ... - d4 y[i+4].
  const double edge = in[count - 1];
  double a1 = edge, a2 = edge, a3 = edge, a4 = edge;
  y1 = edge * k.anticausalGain;
  y2 = y1;
  y3 = y1;
  y4 = y1;
  for (int i = count - 1; i >= 0; --i) {
    const double y =
        m[1] * a1 + m[2] * a2 + m[3] * a3 + m[4] * a4 - d[1] * y1 - d[2] * y2 - d[3] * y3 - d[4] * y4;
    const double v = out[i] + y;
    line[(size_t)i * step] = v <= 0.0 ? 0 : (v >= 255.0 ? 255 : (unsigned char)(int)(v + 0.5));
    a4 = a3;
    a3 = a2;
    a2 = a1;
    a1 = in[i];
    y4 = y3;
    y3 = y2;
    y2 = y1;
    y1 = y;
  }
}

double sigmaOf(float radius) {
  double r = radius > kMaxRadius ? kMaxRadius : radius;
  return sqrt((r + 1.0) * (r + 1.0) / (2.0 * log(255.0)));
}

}  // namespace

void gaussiir(unsigned char* pixels, int width, int height, int channels, int stride, float radiusX,
              float radiusY) {
  if (!pixels || width <= 0 || height <= 0 || channels < 1 || channels > 4) return;
  // The last row ends at stride x (height - 1) + width x channels bytes.
  const int64_t rowBytes = orvan::sizerule::intCount(width, channels);
  const int64_t above = orvan::sizerule::intCount(stride, height - 1);
  if (rowBytes < 0 || stride < rowBytes || above < 0 ||
      orvan::sizerule::within(orvan::sizerule::kIntLimit, above + rowBytes) < 0)
    return;
  if (width <= 4 || height <= 4) return;
  const bool doX = radiusX > 0.0f, doY = radiusY > 0.0f;  // NaN: skipped
  if (!doX && !doY) return;

  const int longest = width > height ? width : height;
  const int64_t lineBytes = orvan::sizerule::uintCount(longest, sizeof(double));
  if (lineBytes < 0) return;
  double* in = (double*)galloc_malloc((unsigned int)lineBytes);
  double* out = (double*)galloc_malloc((unsigned int)lineBytes);
  if (in && out) {
    if (doX) {
      const IirCoef k = makeCoef(sigmaOf(radiusX));
      for (int y = 0; y < height; ++y)
        for (int c = 0; c < channels; ++c)
          filterLine(pixels + (size_t)y * stride + c, width, (size_t)channels, k, in, out);
    }
    if (doY) {
      const IirCoef k = makeCoef(sigmaOf(radiusY));
      for (int x = 0; x < width; ++x)
        for (int c = 0; c < channels; ++c)
          filterLine(pixels + (size_t)x * channels + c, height, (size_t)stride, k, in, out);
    }
  }
  galloc_free(out);
  galloc_free(in);
}
