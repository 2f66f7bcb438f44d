#include "watermark/TimestampWatermark.h"

#include <cstdint>
#include <cstring>

#include "core/Memory.h"
#include "core/SizeRule.h"
#include "image/ColorConvert.h"
#include "watermark/TimestampGlyphs.h"

namespace {

using orvan::watermark::kSymbolsPerSet;
using orvan::watermark::kTimestampSymbols;

// The glyphs are drawn for one sensor resolution per aspect ratio; a photo is
// scaled by its size relative to that reference.
struct SetGeometry {
  int refLong;
  int refShort;
  int margin;
};
constexpr SetGeometry kGeometry[2] = {{5248, 3936, 200}, {4608, 2592, 150}};

// Only the chosen set's 13 records are searched, so a character it lacks is
// never matched against the other set.
Symbol* findSymbol(int set, char c) {
  const Symbol* first = kTimestampSymbols + set * kSymbolsPerSet;
  for (int i = 0; i < kSymbolsPerSet; ++i) {
    if (static_cast<unsigned char>(first[i].character) == static_cast<unsigned char>(c)) {
      return const_cast<Symbol*>(&first[i]);
    }
  }
  return nullptr;
}

using LookupFn = Symbol* (*)(char);
constexpr LookupFn kLookup[2] = {GetTimestampSymbol_4_to_3, GetTimestampSymbol_16_to_9};

}  // namespace

Symbol* GetTimestampSymbol_4_to_3(char c) { return findSymbol(TIMESTAMP_SET_4_TO_3, c); }

Symbol* GetTimestampSymbol_16_to_9(char c) { return findSymbol(TIMESTAMP_SET_16_TO_9, c); }

void CreateTimestampWatermark(const char* text, unsigned char** out, int* outWidth, int* outHeight,
                              int setIndex) {
  if (text == nullptr || out == nullptr || outWidth == nullptr || outHeight == nullptr) return;
  *out = nullptr;
  *outWidth = 0;
  *outHeight = 0;
  if (setIndex < 0 || setIndex > 1) return;
  const LookupFn lookup = kLookup[setIndex];

  const size_t length = strlen(text);
  int64_t width = 0;
  int height = 0;
  for (size_t i = 0; i < length; ++i) {
    const Symbol* sym = lookup(text[i]);
    if (sym == nullptr) return;
    width += sym->width;
    if (sym->height > height) height = sym->height;
    if (width > orvan::sizerule::kIntLimit) return;  // stops long before the sum could overflow
  }
  if (width & 1) ++width;  // YUYV stores pixels in pairs
  // The width is reported in an int and so is every count of the image.
  const int64_t bytes = orvan::sizerule::intCount(width, height);
  if (bytes <= 0) return;

  auto* coverage = static_cast<unsigned char*>(galloc_malloc(static_cast<unsigned int>(bytes)));
  if (coverage == nullptr) return;
  memset(coverage, 0, static_cast<size_t>(bytes));

  int64_t x = 0;
  for (size_t i = 0; i < length; ++i) {
    const Symbol* sym = lookup(text[i]);
    if (sym->bitmap != nullptr) {
      const int rows = sym->height < height ? sym->height : height;
      const int64_t end = x + sym->width < width ? x + sym->width : width;
      const int64_t drawn = end - x;
      for (int r = 0; r < rows; ++r) {
        unsigned char* dst = coverage + r * width;
        const unsigned char* src = sym->bitmap + r * drawn;
        for (int64_t c = x; c < end; ++c) dst[c] = static_cast<unsigned char>(255 - src[c - x]);
      }
    }
    x += sym->width;
  }
  *out = coverage;
  *outWidth = static_cast<int>(width);
  *outHeight = height;
}

int DrawSymbol(unsigned char* dst, int dstWidth, int dstHeight, Symbol* sym, int x, int y, int w, int h) {
  if (dst == nullptr || sym == nullptr || sym->bitmap == nullptr || dstWidth < 1 || dstHeight < 1) return 0;
  if (orvan::sizerule::intCount(dstWidth, dstHeight) < 0) return 0;
  const int64_t x0 = x > 0 ? x : 0;
  const int64_t y0 = y > 0 ? y : 0;
  const int64_t x1 = static_cast<int64_t>(x) + w < dstWidth ? static_cast<int64_t>(x) + w : dstWidth;
  const int64_t y1 = static_cast<int64_t>(y) + h < dstHeight ? static_cast<int64_t>(y) + h : dstHeight;
  if (x1 <= x0 || y1 <= y0) return 0;
  // The glyph is read from its first byte with the clipped width as row length;
  // refuse an area that would read past the bitmap.
  const int64_t clippedWidth = x1 - x0;
  if (sym->width < 1 || sym->height < 1 ||
      clippedWidth * (y1 - y0) > static_cast<int64_t>(sym->width) * sym->height) {
    return 0;
  }
  const unsigned char* src = sym->bitmap;
  for (int64_t row = y0; row < y1; ++row) {
    unsigned char* line = dst + row * dstWidth;
    for (int64_t col = x0; col < x1; ++col) line[col] = static_cast<unsigned char>(255 - *src++);
  }
  return 1;
}

int make_photo_timestamp_watermark_to_yuyv(unsigned char* yuyv, int width, int height, const char* text) {
  if (yuyv == nullptr || text == nullptr || width < 1 || height < 1) return 0;
  if (orvan::sizerule::intCount(width, height, 2) < 0) return 0;

  const int64_t longSide = width > height ? width : height;
  const int64_t shortSide = width > height ? height : width;
  const int64_t q = (100 * longSide) / shortSide;
  const int set = (q - 177 > -5 && q - 177 < 5) ? TIMESTAMP_SET_16_TO_9 : TIMESTAMP_SET_4_TO_3;
  const SetGeometry& g = kGeometry[set];

  unsigned char* wm = nullptr;
  int wmW = 0;
  int wmH = 0;
  CreateTimestampWatermark(text, &wm, &wmW, &wmH, set);
  if (wm == nullptr) return 0;

  // Geometry in 64 bits: equal to the 32-bit results wherever those do not overflow.
  int64_t sw = (static_cast<int64_t>(wmW) * longSide) / g.refLong;
  if (sw & 1) ++sw;
  const int64_t sh = (static_cast<int64_t>(wmH) * shortSide) / g.refShort;
  const int64_t x0 = width - 1 - (g.margin * longSide) / g.refLong - sw;
  const int64_t y0 = height - 1 - (g.margin * shortSide) / g.refShort - sh;

  // The RGB stamp, the largest buffer, goes through the int-sized converter.
  const int64_t pixels = sw * sh;
  if (orvan::sizerule::intCount(sw, sh, 3) < 0) {
    galloc_free(wm);
    return 0;
  }
  auto* alpha = static_cast<unsigned char*>(galloc_malloc(static_cast<unsigned int>(pixels)));
  auto* rgb = static_cast<unsigned char*>(galloc_malloc(static_cast<unsigned int>(pixels * 3)));
  auto* stamp = static_cast<unsigned char*>(galloc_malloc(static_cast<unsigned int>(pixels * 2)));
  if (alpha == nullptr || rgb == nullptr || stamp == nullptr) {
    galloc_free(alpha);
    galloc_free(rgb);
    galloc_free(stamp);
    galloc_free(wm);
    return 0;
  }

  // Nearest-neighbour scaling with single-precision factors. The clamps only
  // matter if float rounding ever reached the last row or column plus one.
  const float fy = static_cast<float>(wmH) / static_cast<float>(sh);
  const float fx = static_cast<float>(wmW) / static_cast<float>(sw);
  for (int64_t j = 0; j < sh; ++j) {
    int64_t sy = static_cast<int64_t>(fy * static_cast<float>(j));
    if (sy >= wmH) sy = wmH - 1;
    const unsigned char* srcRow = wm + sy * wmW;
    unsigned char* dstRow = alpha + j * sw;
    for (int64_t i = 0; i < sw; ++i) {
      int64_t sx = static_cast<int64_t>(fx * static_cast<float>(i));
      if (sx >= wmW) sx = wmW - 1;
      dstRow[i] = srcRow[sx];
    }
  }

  // The colour adds to what the RGB buffer holds; it starts zeroed, so the ink
  // is the grey level (254 * a + 255) >> 8.
  for (int64_t k = 0; k < pixels; ++k) {
    const unsigned a = alpha[k];
    const auto v = static_cast<unsigned char>((254 * a + 255) >> 8);
    rgb[3 * k] = v;
    rgb[3 * k + 1] = v;
    rgb[3 * k + 2] = v;
  }
  // Cleared first so a stamp is deterministic even if the converter refuses.
  memset(stamp, 0, static_cast<size_t>(pixels * 2));
  color_convert_rgb2yuyv(rgb, stamp, static_cast<int>(sw), static_cast<int>(sh));

  const int64_t xs = (x0 / 2) * 2;  // C division truncates toward zero
  if (xs + sw < width && y0 + sh < height) {
    // A stamp starting left of or above the photo is clipped to it.
    const int64_t jStart = y0 < 0 ? -y0 : 0;
    const int64_t iStart = xs < 0 ? -xs : 0;
    for (int64_t j = jStart; j < sh; ++j) {
      const unsigned char* a = alpha + j * sw;
      const unsigned char* s = stamp + 2 * j * sw;
      unsigned char* p = yuyv + 2 * ((y0 + j) * width + xs + iStart);
      for (int64_t i = iStart; i < sw; ++i, p += 2) {
        const unsigned cov = a[i];
        if (cov == 0) continue;
        p[0] = static_cast<unsigned char>((s[2 * i] * cov + p[0] * (255 - cov)) >> 8);
        p[1] = static_cast<unsigned char>((s[2 * i + 1] * cov + p[1] * (255 - cov)) >> 8);
      }
    }
  }

  galloc_free(alpha);
  galloc_free(wm);
  galloc_free(rgb);
  galloc_free(stamp);
  return 1;
}
