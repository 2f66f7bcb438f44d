// Glyph bitmaps rendered by watermark/tools/make_glyphs.py; edit the script, not the data.
#include "watermark/TimestampGlyphs.h"

namespace {

const unsigned char k4_3_digit0[] = {
#include "watermark/glyphs/4x3_digit0.inc"
};
const unsigned char k4_3_digit1[] = {
#include "watermark/glyphs/4x3_digit1.inc"
};
const unsigned char k4_3_digit2[] = {
#include "watermark/glyphs/4x3_digit2.inc"
};
const unsigned char k4_3_digit3[] = {
#include "watermark/glyphs/4x3_digit3.inc"
};
const unsigned char k4_3_digit4[] = {
#include "watermark/glyphs/4x3_digit4.inc"
};
const unsigned char k4_3_digit5[] = {
#include "watermark/glyphs/4x3_digit5.inc"
};
const unsigned char k4_3_digit6[] = {
#include "watermark/glyphs/4x3_digit6.inc"
};
const unsigned char k4_3_digit7[] = {
#include "watermark/glyphs/4x3_digit7.inc"
};
const unsigned char k4_3_digit8[] = {
#include "watermark/glyphs/4x3_digit8.inc"
};
const unsigned char k4_3_digit9[] = {
#include "watermark/glyphs/4x3_digit9.inc"
};
const unsigned char k4_3_colon[] = {
#include "watermark/glyphs/4x3_colon.inc"
};
const unsigned char k4_3_hyphen[] = {
#include "watermark/glyphs/4x3_hyphen.inc"
};
const unsigned char k16_9_digit0[] = {
#include "watermark/glyphs/16x9_digit0.inc"
};
const unsigned char k16_9_digit1[] = {
#include "watermark/glyphs/16x9_digit1.inc"
};
const unsigned char k16_9_digit2[] = {
#include "watermark/glyphs/16x9_digit2.inc"
};
const unsigned char k16_9_digit3[] = {
#include "watermark/glyphs/16x9_digit3.inc"
};
const unsigned char k16_9_digit4[] = {
#include "watermark/glyphs/16x9_digit4.inc"
};
const unsigned char k16_9_digit5[] = {
#include "watermark/glyphs/16x9_digit5.inc"
};
const unsigned char k16_9_digit6[] = {
#include "watermark/glyphs/16x9_digit6.inc"
};
const unsigned char k16_9_digit7[] = {
#include "watermark/glyphs/16x9_digit7.inc"
};
const unsigned char k16_9_digit8[] = {
#include "watermark/glyphs/16x9_digit8.inc"
};
const unsigned char k16_9_digit9[] = {
#include "watermark/glyphs/16x9_digit9.inc"
};
const unsigned char k16_9_colon[] = {
#include "watermark/glyphs/16x9_colon.inc"
};
const unsigned char k16_9_hyphen[] = {
#include "watermark/glyphs/16x9_hyphen.inc"
};

}  // namespace

namespace orvan::watermark {

// Sizes must match the bitmaps; the static_asserts below tie them together.
const Symbol kTimestampSymbols[2 * kSymbolsPerSet] = {
    {'0', 90, 160, k4_3_digit0},  {'1', 90, 160, k4_3_digit1},  {'2', 90, 160, k4_3_digit2},
    {'3', 90, 160, k4_3_digit3},  {'4', 90, 160, k4_3_digit4},  {'5', 90, 160, k4_3_digit5},
    {'6', 90, 160, k4_3_digit6},  {'7', 90, 160, k4_3_digit7},  {'8', 90, 160, k4_3_digit8},
    {'9', 90, 160, k4_3_digit9},  {':', 60, 160, k4_3_colon},   {'-', 60, 160, k4_3_hyphen},
    {' ', 60, 160, nullptr},      {'0', 66, 108, k16_9_digit0}, {'1', 66, 108, k16_9_digit1},
    {'2', 66, 108, k16_9_digit2}, {'3', 66, 108, k16_9_digit3}, {'4', 66, 108, k16_9_digit4},
    {'5', 66, 108, k16_9_digit5}, {'6', 66, 108, k16_9_digit6}, {'7', 66, 108, k16_9_digit7},
    {'8', 66, 108, k16_9_digit8}, {'9', 66, 108, k16_9_digit9}, {':', 42, 108, k16_9_colon},
    {'-', 42, 108, k16_9_hyphen}, {' ', 42, 108, nullptr},
};

static_assert(sizeof(k4_3_digit0) == 90 * 160);
static_assert(sizeof(k4_3_digit1) == 90 * 160);
static_assert(sizeof(k4_3_digit2) == 90 * 160);
static_assert(sizeof(k4_3_digit3) == 90 * 160);
static_assert(sizeof(k4_3_digit4) == 90 * 160);
static_assert(sizeof(k4_3_digit5) == 90 * 160);
static_assert(sizeof(k4_3_digit6) == 90 * 160);
static_assert(sizeof(k4_3_digit7) == 90 * 160);
static_assert(sizeof(k4_3_digit8) == 90 * 160);
static_assert(sizeof(k4_3_digit9) == 90 * 160);
static_assert(sizeof(k4_3_colon) == 60 * 160);
static_assert(sizeof(k4_3_hyphen) == 60 * 160);
static_assert(sizeof(k16_9_digit0) == 66 * 108);
static_assert(sizeof(k16_9_digit1) == 66 * 108);
static_assert(sizeof(k16_9_digit2) == 66 * 108);
static_assert(sizeof(k16_9_digit3) == 66 * 108);
static_assert(sizeof(k16_9_digit4) == 66 * 108);
static_assert(sizeof(k16_9_digit5) == 66 * 108);
static_assert(sizeof(k16_9_digit6) == 66 * 108);
static_assert(sizeof(k16_9_digit7) == 66 * 108);
static_assert(sizeof(k16_9_digit8) == 66 * 108);
static_assert(sizeof(k16_9_digit9) == 66 * 108);
static_assert(sizeof(k16_9_colon) == 42 * 108);
static_assert(sizeof(k16_9_hyphen) == 42 * 108);

}  // namespace orvan::watermark
