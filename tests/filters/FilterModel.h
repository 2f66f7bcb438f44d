#pragma once

// CPU evaluation of the filter programs, written from the filters' formulas:
// the quad's texture coordinates, GL_LINEAR sampling with clamp-to-edge, each
// filter's colour or coordinate mapping, and the float -> byte conversion of
// an RGBA8 target. Pictures are stored bottom row first, as GL reads them.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace model {

struct Vec4 {
  double r, g, b, a;
};

struct Picture {
  int width = 0, height = 0;
  std::vector<uint8_t> pixels;  // RGBA
  Picture(int w, int h) : width(w), height(h), pixels(size_t(w) * h * 4, 0) {}
  uint8_t* at(int x, int y) { return &pixels[(size_t(y) * width + x) * 4]; }
  const uint8_t* at(int x, int y) const { return &pixels[(size_t(y) * width + x) * 4]; }
};

inline Vec4 texel(const Picture& p, int x, int y) {
  x = std::clamp(x, 0, p.width - 1);
  y = std::clamp(y, 0, p.height - 1);
  const uint8_t* q = p.at(x, y);
  return {q[0] / 255.0, q[1] / 255.0, q[2] / 255.0, q[3] / 255.0};
}

inline Vec4 mix(const Vec4& a, const Vec4& b, double f) {
  return {a.r + (b.r - a.r) * f, a.g + (b.g - a.g) * f, a.b + (b.b - a.b) * f, a.a + (b.a - a.a) * f};
}

// texture2D with GL_LINEAR filtering and GL_CLAMP_TO_EDGE wrapping.
inline Vec4 sample(const Picture& p, double s, double t) {
  double u = s * p.width - 0.5, v = t * p.height - 0.5;
  int ix = static_cast<int>(std::floor(u)), iy = static_cast<int>(std::floor(v));
  double fx = u - ix, fy = v - iy;
  return mix(mix(texel(p, ix, iy), texel(p, ix + 1, iy), fx),
             mix(texel(p, ix, iy + 1), texel(p, ix + 1, iy + 1), fx), fy);
}

inline uint8_t toByte(double v) {
  if (!(v > 0.0)) return 0;
  if (v >= 1.0) return 255;
  return static_cast<uint8_t>(std::lround(v * 255.0));
}

// Rounds to the nearest half-precision value (ties to even). The programs
// declare mediump floats, and llvmpipe (like phone GPUs) then does their
// arithmetic in 16-bit floats: every operation's result is rounded so.
inline double h(double x) {
  if (x == 0.0 || !std::isfinite(x)) return x;
  int e;
  std::frexp(x, &e);  // |x| = m * 2^e, 0.5 <= m < 1
  int bits = 11;
  if (e - 1 < -14) bits -= -14 - (e - 1);  // subnormal range
  double scale = std::ldexp(1.0, bits - e);
  return std::nearbyint(x * scale) / scale;
}

using Shader = std::function<Vec4(double s, double t)>;

// Runs `shader` for every pixel centre of a width x height viewport. The
// default texture coordinates (1,1), (1,0), (0,1), (0,0) at the corners
// (-1,-1), (1,-1), (-1,1), (1,1) give s = 1 - y', t = 1 - x' over the
// viewport fractions x', y': a quarter turn with a flip.
inline Picture render(int width, int height, const Shader& shader) {
  Picture out(width, height);
  for (int j = 0; j < height; ++j) {
    for (int i = 0; i < width; ++i) {
      Vec4 c = shader(1.0 - (j + 0.5) / height, 1.0 - (i + 0.5) / width);
      const double v[4] = {c.r, c.g, c.b, c.a};
      for (int k = 0; k < 4; ++k) out.at(i, j)[k] = toByte(v[k]);
    }
  }
  return out;
}

// --- the filters' formulas ---------------------------------------------------

inline Shader none(const Picture& in) {
  return [&in](double s, double t) { return sample(in, s, t); };
}

inline Shader xray(const Picture& in) {
  return [&in](double s, double t) {
    Vec4 c = sample(in, s, t);
    double gray = h(1.0 - h(h(h(c.r + c.g) + c.b) / 3.0));
    return Vec4{gray, gray, gray, 1.0};
  };
}

// Heat map of luminance in four bands.
inline Vec4 temperatureOf(double y) {
  double f = h(h(16.0 * h(y - 0.5)) * h(y - 0.5));
  if (y > 0.75) return {1.0, h(h(h(-16.0 * h(y - 0.75)) * h(y - 0.75)) + 1.0), 0.0, 1.0};
  if (y > 0.5) return {f, 1.0, 0.0, 1.0};
  if (y > 0.25) return {0.0, 1.0, f, 1.0};
  return {0.0, h(h(h(-16.0 * h(y - 0.25)) * h(y - 0.25)) + 1.0), 1.0, 1.0};
}

inline double luma(const Vec4& c) { return h(h(h(c.r * h(0.299)) + h(c.g * h(0.587))) + h(c.b * h(0.114))); }

inline Shader temperature(const Picture& in) {
  return [&in](double s, double t) { return temperatureOf(luma(sample(in, s, t))); };
}

inline Shader mirror(const Picture& in, double cx, double cy) {
  return [&in, cx, cy](double s, double t) {
    if (s > cx) s = 2.0 * cx - s;
    if (t > cy) t = 2.0 * cy - t;
    return sample(in, s, t);
  };
}

// r2 is the stored (squared) radius.
inline Shader timetunnel(const Picture& in, double r2) {
  return [&in, r2](double s, double t) {
    double dx = s - 0.5, dy = t - 0.5, d = dx * dx + dy * dy, f = d > r2 ? std::sqrt(r2 / d) : 1.0;
    return sample(in, f * dx + 0.5, f * dy + 0.5);
  };
}

// Turns (s, t) inside the stored radius about the centre.
inline Shader distorted(const Picture& in, double radius, double strength, double cx, double cy) {
  return [&in, radius, strength, cx, cy](double s, double t) {
    double dx = s - cx, dy = t - cy, d = std::sqrt(dx * dx + dy * dy);
    if (d >= radius) return sample(in, s, t);
    double a = strength * (radius - d) / radius * (radius - d) / radius;
    return sample(in, dx * std::cos(a) + dy * std::sin(a) + cx, -dx * std::sin(a) + dy * std::cos(a) + cy);
  };
}

// Both axes are measured from cx (the program never reads cy).
inline Shader extrusion(const Picture& in, double strength, double zoom, double cx) {
  return [&in, strength, zoom, cx](double s, double t) {
    double dx = s - cx, dy = t - cx;
    double f = std::pow(dx * dx + dy * dy, strength) * zoom;
    return sample(in, dx * f + cx, dy * f + cx);
  };
}

// --- comparison ------------------------------------------------------------

// Largest per-channel difference between a rendered picture and RGBA bytes, and its byte index.
inline std::pair<int, size_t> compare(const Picture& a, const uint8_t* b) {
  std::pair<int, size_t> d{0, 0};
  for (size_t i = 0; i < a.pixels.size(); ++i) d = std::max(d, {std::abs(int(a.pixels[i]) - int(b[i])), i});
  return d;
}

}  // namespace model
