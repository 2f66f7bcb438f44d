/* The library's C interface: every exported function with a plain C name and
   the records they take, usable from C11 and C++. The C++ classes have headers
   of their own (include/orvan/<subsystem>/). Link with -lcam.common.orvan
   (pkg-config orvan-camera, or the CMake target orvan::camera).

   Conventions: sizes are int unless a function says otherwise; a count that
   does not fit the size type, a null pointer or a non-positive size is refused
   with the documented failure value and nothing is written. Handles are
   intptr_t addresses, 0 meaning none. */
#ifndef ORVAN_ORVAN_H
#define ORVAN_ORVAN_H

#include <jni.h>
#include <stddef.h>
#include <stdint.h>

#ifndef OV_EXPORT
#define OV_EXPORT __attribute__((visibility("default")))
#endif
#ifndef OV_EXTERN_C
#ifdef __cplusplus
#define OV_EXTERN_C extern "C"
#else
#define OV_EXTERN_C
#endif
#endif
#ifndef OV_CAPI
#define OV_CAPI OV_EXTERN_C OV_EXPORT
#endif
#ifdef __cplusplus
#define OV_STATIC_ASSERT(condition, message) static_assert(condition, message)
#else
#define OV_STATIC_ASSERT(condition, message) _Static_assert(condition, message)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Memory ---- */
// Two null- and zero-tolerant allocator families: ov_* for flat-interface
// records (optionally tagged so a handle can be validated), galloc_* for the
// pixel buffers owned by classes.
OV_CAPI void* ov_malloc(unsigned int size);
OV_CAPI void* ov_malloc_has_tag(unsigned int tag, unsigned int size);
OV_CAPI void ov_free(void* p);
OV_CAPI void ov_free_has_tag(unsigned int tag, void* p);
OV_CAPI void ov_memcpy(void* dst, void* src, unsigned int n);
OV_CAPI void ov_memset(void* dst, unsigned char value, unsigned int n);

OV_CAPI void* galloc_malloc(unsigned int size);
OV_CAPI void* galloc_alloc(unsigned int size);
OV_CAPI void* galloc_realloc(void* p, unsigned int size);
OV_CAPI void galloc_free(void* p);
OV_CAPI void galloc_memcpy(void* dst, void* src, unsigned int n);
OV_CAPI void galloc_memset(void* dst, unsigned char value, unsigned int n);

/* ---- Atomics ---- */
// Full-barrier read-modify-write on a 32-bit word; each returns the new value.
OV_CAPI int atomic_inc32(void* p);
OV_CAPI int atomic_dec32(void* p);
OV_CAPI int atomic_add32(void* p, unsigned int v);

/* ---- Time and small utilities ---- */
// Debug dump of a buffer to a file (created or truncated); reports nothing.
OV_CAPI void WriteFile(const char* path, const unsigned char* data, unsigned int size);

// Formats into one static 2048-byte buffer shared by every caller and returns
// it: not re-entrant, and each call overwrites the last result.
OV_CAPI char* string_format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// Wall-clock time in nanoseconds.
OV_CAPI long long systemTime(void);

// Milliseconds from referenceTime to timeoutTime (ns), rounded up; 0 when the
// timeout has passed, -1 (forever) when it does not fit in an int.
OV_CAPI int toMillisecondTimeoutDelay(long long referenceTime, long long timeoutTime);

// Exported for the camera stack; does nothing.
OV_CAPI void make_timeout(void);

/* ---- Colour conversion ---- */
// Whole-buffer colour conversion, BT.601 studio swing through constant tables.
// Every converter returns 1 on success (also when there is nothing to do) and
// 0 when a pointer is null, width * height is below its group size (1 per
// pixel, 2 for pairs, 4 for quads) or the byte count of its largest buffer
// does not fit in an int. They never allocate and do not check the
// destination's size: rows are tightly packed, N = width * height.
//
// Chroma grouping: pair formats share one U/V per two consecutive pixels. The
// 4:2:0 readers and the three-plane writer share one U/V per four CONSECUTIVE
// pixels in raster order, while the NV writers average true 2x2 blocks.

OV_CAPI int color_convert_gray2rgb(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_gray2rgba(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgb2gray(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgba2gray(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgb2rgba(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgba2rgb(const unsigned char* src, unsigned char* dst, int width, int height);

// Packed 4:4:4, bytes Y, U, V.
OV_CAPI int color_convert_rgb2yuv(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_yuv2rgb(const unsigned char* src, unsigned char* dst, int width, int height);

// Packed 4:2:2: Y0 U Y1 V (YUYV) and Y0 V Y1 U (YVYU).
OV_CAPI int color_convert_rgb2yuyv(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_yuyv2rgb(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_rgb2yvyu(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI int color_convert_yvyu2rgb(const unsigned char* src, unsigned char* dst, int width, int height);

// Planar 4:2:2: Y (N), U (N/2), V (N/2).
OV_CAPI int color_convert_rgb2yuv422p(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                      unsigned char* v, int width, int height);
OV_CAPI int color_convert_yuv422p2rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                      unsigned char* rgb, int width, int height);

// Three-plane 4:2:0: Y (N), U (N/4), V (N/4), quads of consecutive pixels.
OV_CAPI int color_convert_rgb2yv12oryu12(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                         unsigned char* v, int width, int height);
OV_CAPI int color_convert_yv12oryu122rgb(const unsigned char* y, const unsigned char* u,
                                         const unsigned char* v, unsigned char* rgb, int width, int height);

// Semi-planar 4:2:0: Y, then interleaved U V (NV12) or V U (NV21).
OV_CAPI int color_convert_rgb2nv12(const unsigned char* rgb, unsigned char* y, unsigned char* uv, int width,
                                   int height);
OV_CAPI int color_convert_rgb2nv21(const unsigned char* rgb, unsigned char* y, unsigned char* vu, int width,
                                   int height);
OV_CAPI int color_convert_nv122rgb(const unsigned char* y, const unsigned char* uv, unsigned char* rgb,
                                   int width, int height);
OV_CAPI int color_convert_nv212rgb(const unsigned char* y, const unsigned char* vu, unsigned char* rgb,
                                   int width, int height);

// Copies the first N bytes (the luma plane of a planar layout).
OV_CAPI int color_convert_yuv2gray(const unsigned char* src, unsigned char* dst, int width, int height);

// Repack a semi-planar frame into three-plane YV12 (Y, then V, then U).
// dst must hold N + 2 * (N/4) bytes. Null pointers do nothing.
OV_CAPI void convert_nv12_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height);
OV_CAPI void convert_nv21_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height);

/* ---- Flat images and matrices ----
   Plain records from ov_malloc, freed with the matching ov_release* call. In
   C++ they are flat::Image, flat::YUVImage, flat::IntegralImage and
   flat::Matrix, apart from the reference-counted classes ::Image and ::Matrix;
   ov_image, ov_yuv_image, ov_integral_image and ov_matrix name them in both
   languages. The overloaded creators (ov_createImage, ov_createMatrix,
   ov_matrixMultiply) are C++ functions: image/FlatImage.h, image/FlatMatrix.h. */
#ifdef __cplusplus
}  // extern "C"
namespace flat {
#define OV_FLAT_RECORD(cxx, c) cxx
#else
#define OV_FLAT_RECORD(cxx, c) c
#endif

struct OV_FLAT_RECORD(Image, ov_image) {
  int width;
  int height;
  int channels; /* bytes per pixel, 1..4 */
  int stride;   /* bytes per row */
  int ownsData; /* 1: data was allocated here and is freed by ov_releaseImage */
  unsigned char* data;
};

/* Always wraps the caller's buffer; never freed here. */
struct OV_FLAT_RECORD(YUVImage, ov_yuv_image) {
  int width;
  int height;
  unsigned char* data;
};

/* Summed-area table; same layout as a matrix (rows, columns, data), and
   released the same way. */
struct OV_FLAT_RECORD(IntegralImage, ov_integral_image) {
  int width;
  int height;
  unsigned int* data; /* width * height cells, owned */
};

struct OV_FLAT_RECORD(Matrix, ov_matrix) {
  int rows;
  int cols;
  float** data; /* rows row pointers followed by rows * cols floats in one block */
};

#undef OV_FLAT_RECORD
#ifdef __cplusplus
}  // namespace flat
typedef flat::Image ov_image;
typedef flat::YUVImage ov_yuv_image;
typedef flat::IntegralImage ov_integral_image;
typedef flat::Matrix ov_matrix;
extern "C" {
#else
typedef struct ov_image ov_image;
typedef struct ov_yuv_image ov_yuv_image;
typedef struct ov_integral_image ov_integral_image;
typedef struct ov_matrix ov_matrix;
#endif

/* Ints first, then the pointer at the next pointer-aligned offset (an image's
   data: 20 on 32-bit ARM, 24 on 64-bit hosts). */
OV_STATIC_ASSERT(offsetof(ov_image, stride) == 12 && offsetof(ov_image, ownsData) == 16 &&
                     offsetof(ov_image, data) == (20 + sizeof(void*) - 1) / sizeof(void*) * sizeof(void*) &&
                     sizeof(ov_image) == offsetof(ov_image, data) + sizeof(void*),
                 "flat image layout");
OV_STATIC_ASSERT(offsetof(ov_yuv_image, data) == 8 && sizeof(ov_yuv_image) == 8 + sizeof(void*),
                 "flat YUV image layout");
OV_STATIC_ASSERT(offsetof(ov_integral_image, data) == 8 && sizeof(ov_integral_image) == 8 + sizeof(void*),
                 "flat integral image layout");
OV_STATIC_ASSERT(offsetof(ov_matrix, cols) == 4 && offsetof(ov_matrix, data) == 8 &&
                     sizeof(ov_matrix) == 8 + sizeof(void*),
                 "flat matrix layout");

OV_CAPI void ov_releaseImage(ov_image* image);

OV_CAPI ov_yuv_image* ov_createYUVImage(int width, int height, unsigned char* data);
OV_CAPI void ov_releaseYUVImage(ov_yuv_image* image);

// Mean of the first width * height bytes (channels and stride ignored).
OV_CAPI int ov_getGrayAvg(ov_image* image);
// Mean, largest and smallest of the first width * height bytes.
OV_CAPI void ov_getImageInfo(ov_image* image, int* average, int* maximum, int* minimum);

// Summed-area table of the first plane, rows taken `width` bytes apart.
OV_CAPI ov_integral_image* ov_createIntegralImage(ov_image* image);
OV_CAPI void ov_releaseIntegralImage(ov_integral_image* image);

// 256-entry tone curve through `count` (2..100) control points by a natural
// cubic spline; free it with ov_free. Uses static scratch: not re-entrant.
OV_CAPI double* ov_calcHistogram(double* x, double* y, int count);

OV_CAPI void ov_releaseMatrix(ov_matrix* m);
// In place a += b / a -= b; returns a, or null when the sizes differ.
OV_CAPI ov_matrix* ov_matrixAdd(ov_matrix* a, ov_matrix* b);
OV_CAPI ov_matrix* ov_matrixSub(ov_matrix* a, ov_matrix* b);
OV_CAPI ov_matrix* ov_matrixTransponse(ov_matrix* m);  // the spelling is part of the interface
// Determinant of m without that row and column (the minor, unsigned).
OV_CAPI float ov_matrixCofator(ov_matrix* m, int row, int col);  // the spelling is part of the interface
OV_CAPI float ov_matrixDet(ov_matrix* m);
OV_CAPI ov_matrix* ov_matrixAdj(ov_matrix* m);
// Null when the determinant is exactly 0.
OV_CAPI ov_matrix* ov_matrixInverse(ov_matrix* m);
OV_CAPI ov_matrix* ov_matrixCreateTranslateMatrix(float tx, float ty);
OV_CAPI ov_matrix* ov_matrixCreateRotateMatrix(float angle);

/* ---- Blurs and the tint blend ---- */
// CPU blurs and the solid-colour tint used after them.
//
// Four-byte pixels (stack_blur, alpha_blend*) are packed rows without padding;
// bytes 0..2 are the colour channels and byte 3 is never read or written.
// The box and Gaussian blurs work on single-channel 8-bit images (stride =
// width). Every routine is re-entrant and refuses (touching nothing) null
// buffers, non-positive sizes and sizes whose pixel or byte count does not fit
// in an int.

// Box widths of an n-pass box approximation of a Gaussian.
typedef struct gauss_blur_coef {
  int n;
  int w[2048];
} gauss_blur_coef;
OV_STATIC_ASSERT(sizeof(gauss_blur_coef) == 4 * 2049, "gauss_blur_coef layout");

// Stack Blur of channels 0..2, in place, horizontal then vertical pass with
// edge replication. A radius outside 0..254 leaves the image unchanged.
OV_CAPI void stack_blur(unsigned char* pixels, int width, int height, int radius);

// Largest pixel count whose 4-byte pixels fit an int byte count; the blends
// refuse more.
#define OV_BLEND_MAX_PIXELS 0x1FFFFFFF

// channel = (alpha * colour + channel * (256 - alpha)) >> 8 for `count` pixels;
// the products alpha * colour are taken modulo 65536.
OV_CAPI void alpha_blend(unsigned char* pixels, int count, int r, int g, int b, int alpha);

// The same blend eight pixels at a time with NEON (SIMDe's translation on
// other CPUs). Only count / 8 whole groups are blended: the last count % 8
// pixels are left as they are. The factor 256 - alpha lives in an 8-bit lane,
// so alpha = 0 turns channels 0..2 black; alpha 1..255 matches alpha_blend.
OV_CAPI void alpha_blend_neon(unsigned char* pixels, int count, int r, int g, int b, int alpha);

// Widths of n box passes approximating a Gaussian of deviation sigma
// (n must be 1..2048; out null, n out of range or a NaN sigma: nothing happens).
OV_CAPI void calculate_gauss_blur_coef(float sigma, int n, gauss_blur_coef* out);

// Box blur of 32-bit pixels (channels in bits 0-7, 8-15, 16-23), src to dst,
// truncating division after each pass; the output alpha byte is 0xFF.
// radius < 1 does nothing; the radius is limited to the image's sides.
OV_CAPI void fast_blur(unsigned int* src, unsigned int* dst, int width, int height, int radius);

// Running-sum box blurs of radius r along rows (H) or columns (V), src to dst,
// with edge replication and round-half-away division. A line not longer than
// 2r is blurred with the radius (length - 1) / 2 so nothing outside it is read.
OV_CAPI void box_blurH(unsigned char* src, unsigned char* dst, int width, int height, int r);
OV_CAPI void box_blurV(unsigned char* src, unsigned char* dst, int width, int height, int r);
// dst = src, box_blurH(dst -> src), box_blurV(src -> dst): result in dst,
// src used as scratch.
OV_CAPI void box_blur(unsigned char* src, unsigned char* dst, int width, int height, int r);

// Three box blurs approximating a Gaussian of deviation sigma; result in dst,
// src overwritten.
OV_CAPI void gauss_blur(unsigned char* src, unsigned char* dst, int width, int height, int sigma);

// Deriche's fourth-order recursive Gaussian over an 8-bit image of `channels`
// interleaved bytes per pixel (1..4, all blurred) with rows `stride` bytes
// apart, in place. radiusX blurs along rows, radiusY along columns; each
// radius r gives sigma = sqrt((r + 1)^2 / (2 ln 255)), and a direction whose
// radius is not positive is skipped. Edges are replicated. Images whose
// smaller side is 4 pixels or less are left unchanged.
OV_CAPI void gaussiir(unsigned char* pixels, int width, int height, int channels, int stride, float radiusX,
                      float radiusY);

/* ---- Local binary patterns ---- */
// Local binary patterns over an in-place image pyramid, for a linear
// classifier. The image is rows x cols unsigned 32-bit values stored column by
// column (value at row r, column c is img[c * rows + r]); it is consumed: the
// pyramid levels (plain 2x2 block sums) are built inside it.
//
// Every interior position of every level owns 256 consecutive feature indices;
// its feature is offset + pattern, where bit k of the pattern is set when
// neighbour k is strictly less than the centre. vecDim must be
// lbp_pyr_get_dim(rows, cols, levels) (for the sparse form that value / 256).
// A traversal stops between levels once vecDim is reached or a level had no
// positions; features beyond vecDim are never touched.

// vec[feature] += 1 (8-bit, wrapping); vec is not cleared first.
OV_CAPI void lbp_pyr_features(char* vec, unsigned int vecDim, unsigned int* img, unsigned short rows,
                              unsigned short cols);
// Writes each position's feature into vec[0], vec[1], ...; returns how many.
OV_CAPI unsigned int lbp_pyr_features_sparse(unsigned int* vec, unsigned int vecDim, unsigned int* img,
                                             unsigned short rows, unsigned short cols);
// Sum of w[feature] over all positions, in traversal order.
OV_CAPI double lbp_pyr_dotprod(double* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                               unsigned short cols);
// w[feature] += 1 / -= 1 for every position.
OV_CAPI void lbp_pyr_addvec(long long* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                            unsigned short cols);
OV_CAPI void lbp_pyr_subvec(long long* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                            unsigned short cols);
// Feature dimension of `levels` pyramid levels (0 when it does not fit in 32 bits).
OV_CAPI unsigned int lbp_pyr_get_dim(unsigned short rows, unsigned short cols, unsigned short levels);

// Nine raster-order offsets of a 3x3 neighbourhood in a row-major buffer.
OV_CAPI void make_offsets(int* offsets, int stride);

/* ---- FAST-16 corners ---- */
/* FAST-16 corner detection (the segment test of Rosten and Drummond on the
   16-pixel Bresenham circle of radius 3).

   A pixel with value c is a corner at threshold t when at least 9 contiguous
   circle pixels are all > c + t, or all < c - t. Its score is the largest t
   at which it is still a corner. */

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
   a threshold outside 0..255, an image whose height x stride bytes do not
   fit an int or an output array larger than the address space;
   FAST16_NO_MEMORY when the row buffers cannot be allocated. */
OV_CAPI int fast16(const unsigned char* image, int width, int height, int stride, int threshold,
                   int nonmaxSuppression, Fast16Corner* corners, int capacity);

/* ---- Colour quantizer ---- */
// One-shot form: quantizes a picture to at most maxColors colours, writes the
// palette (3 bytes per entry) and, when indices is not null, the palette index
// of every pixel. Returns the number of palette entries, or -1, writing
// nothing, for a null buffer, a size that is not positive, channels other
// than 3 or 4, a byte count above 2^31 - 1, maxColors outside 1..256, or no
// memory. The class ColorQuantizer (imgproc/ColorQuantizer.h) is the
// incremental C++ form.
OV_CAPI int color_quantize(const unsigned char* pixels, int width, int height, int channels, int maxColors,
                           unsigned char* palette, unsigned char* indices);

/* ---- Timestamp watermark ---- */
// One glyph of a timestamp set. bitmap holds width x height bytes, rows packed,
// 255 = paper and 0 = full ink; it is null for the blank, which only advances.
typedef struct Symbol {
  int character;  // the lookup compares its low byte
  int width;
  int height;
  const unsigned char* bitmap;
} Symbol;

// Glyph sets, by the index CreateTimestampWatermark takes.
typedef enum TimestampSet { TIMESTAMP_SET_4_TO_3 = 0, TIMESTAMP_SET_16_TO_9 = 1 } TimestampSet;

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

/* ---- Refocus ---- */
// Per-region sharpness maps over a focus sweep. Each frame (packed two bytes per
// pixel, luma in the even bytes) is reduced to a 600 x 600 gradient image,
// smoothed and summed over a grid of cells; the result names, per cell, the
// frame that was sharpest. Records come from the tagged allocator and handles
// are checked by their tag.

#define RF_MODULE_TAG 0x110011u /* the allocator tag of a module record */
#define RF_MAX_POSITIONS 20     /* positions kept in a module record */
#define RF_WORK_SIDE 600        /* side of the reduced frame */
#define RF_RECORD_MARK 0x1234u  /* first word of a result record */

// One added frame: its cell sums, row by row.
typedef struct RFTarget {
  int cols;
  int rows;
  int* data;  // cols x rows sums, owned
  struct RFTarget* next;
} RFTarget;
typedef RFTarget _RFTarget;
// 16 bytes where pointers are 4 bytes wide.
OV_STATIC_ASSERT(offsetof(RFTarget, data) == 8 && offsetof(RFTarget, next) == 8 + sizeof(void*) &&
                     sizeof(RFTarget) == 8 + 2 * sizeof(void*),
                 "RFTarget layout");

// The record sits just behind its 4-byte tag, so on 64-bit targets it is only
// 4-byte aligned: the packing makes every member access safe there (a no-op
// where pointers are 4 bytes).
#pragma pack(push, 4)
typedef struct RFModule {
  int id;
  int targetCount;
  int width;
  int height;
  int gridCols;
  int gridRows;
  int positions[RF_MAX_POSITIONS];  // of the first 20 frames, in order of addition
  RFTarget* targets;                // in order of addition
  int* result;                      // gridCols x gridRows winner indices
  // Cell sums (gridCols x gridRows ints, first so they stay aligned), then the
  // scratch for column sums and the integral table (width x height bytes, at
  // least 600 x 600 x 4), the small image and the gradient image (600 x 600
  // each). Zeroed at creation: the gradient's border is never written, so it
  // stays 0. Frames allocate nothing but their target.
  unsigned char* work;
  unsigned char* output;  // the newest result record, or null; older ones hang off it
} RFModule;
#pragma pack(pop)
// 26 ints, then the four pointers back to back: 120 bytes on 32-bit builds.
OV_STATIC_ASSERT(offsetof(RFModule, positions) == 24 && offsetof(RFModule, targets) == 104 &&
                     offsetof(RFModule, output) == 104 + 3 * sizeof(void*) &&
                     sizeof(RFModule) == 104 + 4 * sizeof(void*),
                 "RFModule layout");

// Flat interface over integer handles (the record's address; 0 on failure).
OV_CAPI intptr_t RefocusModule_Initialize(int width, int height, int gridCols, int gridRows);
// Adds one frame of the sweep; returns the module's id, 0 for a foreign handle.
OV_CAPI int RefocusModule_Process(intptr_t handle, unsigned char* frame, int position);
// Builds a new big-endian result record and returns it (owned by the module,
// valid until RefocusModule_Release); *size = (cells + 13) x 4. A foreign handle
// gives null and *size = 0.
OV_CAPI unsigned char* RefocusModule_GetResultBuf(intptr_t handle, int* size);
OV_CAPI void RefocusModule_Release(intptr_t handle);

OV_CAPI RFModule* RFModule_Create(int width, int height, int gridCols, int gridRows);
OV_CAPI void RFModule_Release(RFModule** pm);
OV_CAPI void RFModule_Clear(RFModule* m);
OV_CAPI void RFModule_AddTarget(RFModule* m, RFTarget* t, int position);
OV_CAPI void RFModule_RemoveTarget(RFModule* m, RFTarget* t);
OV_CAPI void RFModule_PreProcess(RFModule* m, unsigned char* frame, int position);
OV_CAPI void RFModule_Process(RFModule* m);

OV_CAPI RFTarget* RFTarget_Create(int* data, int cols, int rows);
OV_CAPI void RFTarget_Release(RFTarget** pt);

/* ---- Burst capture ---- */
// Flat interface for the native camera stack. The handle is the pipeline's
// address (0 = none).
OV_CAPI intptr_t super_capture_module_init(int width, int height, int format);
OV_CAPI int super_capture_module_push_frame(intptr_t handle, unsigned char** planes);
OV_CAPI int super_capture_module_pop_frame(intptr_t handle, unsigned char** planes);
OV_CAPI void super_capture_module_destroy(intptr_t handle);

/* ---- Panorama ---- */
// The error callback handed to startup; the module never calls it.
OV_CAPI void PanoramaModuleOnErrorCallback(int error);

/* ---- Java callback of the brightness monitor ---- */
// Calls obj.onResultCallback(value, level) ("(FI)V"); logs and returns when
// env, obj, the class or the method is missing (a failed look-up leaves no Java
// exception behind).
OV_CAPI void onResultCallback(JNIEnv* env, jobject obj, float value, int level);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // ORVAN_ORVAN_H
