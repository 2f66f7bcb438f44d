#pragma once

/* FAST-16 corner detection (the segment test of Rosten and Drummond on the
   16-pixel Bresenham circle of radius 3), usable from C.

   A pixel with value c is a corner at threshold t when at least 9 contiguous
   circle pixels are all > c + t, or all < c - t. Its score is the largest t
   at which it is still a corner. */

#include "core/Export.h"

typedef struct Fast16Corner {
  int x;
  int y;
  int score; /* 0..254 */
} Fast16Corner;

/* Failure values (all functions). */
#define FAST16_REFUSED (-2)   /* a bad argument; nothing was written */
#define FAST16_FULL (-3)      /* fast16: all `capacity` entries hold corners and more were found */
#define FAST16_NO_MEMORY (-4) /* fast16: no room for the row buffers; nothing was written */

/* Fills pixel[0..15] with the circle's offsets in a buffer of the given row
   stride, in order around the circle, and pixel[16..24] with pixel[0..8] again
   so that any arc of 9 reads pixel[k .. k + 8] for k in 0..15. Returns 0, or
   FAST16_REFUSED for a null table or a stride whose 3 * stride overflows int. */
OV_CAPI int makeOffsets(int pixel[25], int rowStride);

/* Score of the pixel at `ptr` (0..254), with the circle given by a table from
   makeOffsets; -1 when it is no corner even at threshold 0. The caller makes
   sure the circle lies inside the image. FAST16_REFUSED for a null argument. */
OV_CAPI int cornerScore16(const unsigned char* ptr, const int pixel[25]);

/* Scans a grey image (one byte per pixel, rows `stride` bytes apart) for
   corners at `threshold` (0..255) and writes them in row order, x ascending
   within a row. A 3-pixel border holds no corners. With nonmaxSuppression
   non-zero a corner is kept only when its score is greater than the score of
   each of its 8 neighbours, a pixel that is no corner counting as 0.
   Returns the number of corners written; FAST16_FULL when the array filled up
   (the scan stops there); FAST16_REFUSED, writing nothing, for a null image
   or output, width or height below 7, stride below width, capacity below 1,
   a threshold outside 0..255 or an image whose byte span does not fit the
   address space; FAST16_NO_MEMORY when the row buffers cannot be allocated. */
OV_CAPI int fast16(const unsigned char* image, int width, int height, int stride, int threshold,
                   int nonmaxSuppression, Fast16Corner* corners, int capacity);
