#pragma once

#include "core/Export.h"

// One glyph of a timestamp set. bitmap holds width x height bytes, rows packed,
// 255 = paper and 0 = full ink; it is null for the blank, which only advances.
struct Symbol {
  int character;  // the lookup compares its low byte
  int width;
  int height;
  const unsigned char* bitmap;
};

// Glyph sets, by the index CreateTimestampWatermark takes.
enum TimestampSet { TIMESTAMP_SET_4_TO_3 = 0, TIMESTAMP_SET_16_TO_9 = 1 };

// The set's record for c ("0".."9", ":", "-", " "), or null. The records are
// read-only.
OV_CAPI Symbol* GetTimestampSymbol_4_to_3(char c);
OV_CAPI Symbol* GetTimestampSymbol_16_to_9(char c);

// Renders text into a new single-channel ink-coverage image (0 = paper,
// 255 = full ink) at the glyphs' own size; the width is padded to even. On any
// failure (unsupported character, bad set index, allocation) *out stays null.
// The caller frees *out with galloc_free.
OV_CAPI void CreateTimestampWatermark(const char* text, unsigned char** out, int* outWidth, int* outHeight,
                                      int setIndex);

// Copies sym's inverted bitmap into dst at (x, y), clipped to dst. The glyph is
// read contiguously with the clipped width as row length. Returns 1 when
// something was drawn, 0 otherwise.
OV_CAPI int DrawSymbol(unsigned char* dst, int dstWidth, int dstHeight, Symbol* sym, int x, int y, int w,
                       int h);

// Blends text into the lower right corner of a packed YUYV photo, in place.
// Returns 1 when the photo was processed (also when the stamp did not fit and
// nothing was drawn), 0 on failure with the photo unchanged.
OV_CAPI int make_photo_timestamp_watermark_to_yuyv(unsigned char* yuyv, int width, int height,
                                                   const char* text);
