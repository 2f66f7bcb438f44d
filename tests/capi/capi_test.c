/* The C interface from plain C11: one call of each family through
   orvan/orvan.h, checked against values worked out by hand. */
#include <orvan/orvan.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

#define CHECK(condition)                                              \
  do {                                                                \
    if (!(condition)) {                                               \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                     \
    }                                                                 \
  } while (0)

static void memoryAndAtomics(void) {
  unsigned char* p = ov_malloc_has_tag(0x41424344u, 8);
  CHECK(p != NULL && memcmp(p - 4, "ABCD", 4) == 0); /* the tag, big-endian, before the block */
  ov_free_has_tag(0x41424344u, p);
  int word = 5;
  CHECK(atomic_inc32(&word) == 6 && atomic_add32(&word, 4) == 10 && atomic_dec32(&word) == 9);
  CHECK(toMillisecondTimeoutDelay(0, 1500000) == 2); /* 1.5 ms rounds up */
  CHECK(systemTime() > 0);
}

static void conversionAndFlatImages(void) {
  const unsigned char black[3] = {0, 0, 0};
  unsigned char yuv[3] = {9, 9, 9};
  CHECK(color_convert_rgb2yuv(black, yuv, 1, 1) == 1 && yuv[0] == 16 && yuv[1] == 128 && yuv[2] == 128);
  CHECK(color_convert_rgb2yuv(NULL, yuv, 1, 1) == 0);

  unsigned char px[4] = {1, 2, 3, 6};
  ov_image image = {2, 2, 1, 2, 0, px};
  int avg = 0, max = 0, min = 0;
  ov_getImageInfo(&image, &avg, &max, &min);
  CHECK(ov_getGrayAvg(&image) == 3 && avg == 3 && max == 6 && min == 1);
  ov_integral_image* sums = ov_createIntegralImage(&image);
  CHECK(sums != NULL && sums->data[0] == 1 && sums->data[1] == 3 && sums->data[2] == 4 &&
        sums->data[3] == 12);
  ov_releaseIntegralImage(sums);

  ov_matrix* shift = ov_matrixCreateTranslateMatrix(2.0f, 3.0f);
  CHECK(shift != NULL && shift->rows == 3 && shift->cols == 3 && ov_matrixDet(shift) == 1.0f);
  ov_releaseMatrix(shift);
}

static void imageProcessing(void) {
  /* (128 * colour + channel * 128) >> 8 per channel; byte 3 untouched. */
  unsigned char pixel[4] = {100, 0, 200, 77};
  alpha_blend(pixel, 1, 50, 60, 70, 128);
  CHECK(pixel[0] == 75 && pixel[1] == 30 && pixel[2] == 135 && pixel[3] == 77);

  int offsets[9];
  make_offsets(offsets, 10);
  CHECK(offsets[0] == -11 && offsets[4] == 0 && offsets[8] == 11);

  /* One bright pixel on black: every circle pixel is darker, up to t = 254. */
  unsigned char grey[49] = {0};
  grey[24] = 255;
  Fast16Corner corners[4];
  CHECK(fast16(grey, 7, 7, 7, 10, 1, corners, 4) == 1 && corners[0].x == 3 && corners[0].y == 3 &&
        corners[0].score == 254);

  const unsigned char two[6] = {0, 0, 0, 255, 255, 255};
  unsigned char palette[6], indices[2];
  CHECK(color_quantize(two, 2, 1, 3, 2, palette, indices) == 2 && indices[0] != indices[1] &&
        palette[3 * indices[0]] == 0 && palette[3 * indices[1] + 2] == 255);
}

static void stampRefocusAndCapture(void) {
  static unsigned char photo[640 * 480 * 2];
  memset(photo, 128, sizeof photo);
  CHECK(make_photo_timestamp_watermark_to_yuyv(photo, 640, 480, "12:3x") == 0); /* 'x' has no glyph */
  CHECK(make_photo_timestamp_watermark_to_yuyv(photo, 640, 480, "2016-01-01 12:00") == 1);
  int stamped = 0;
  for (size_t i = 0; i < sizeof photo; ++i) stamped += photo[i] != 128;
  CHECK(stamped > 0);

  intptr_t focus = RefocusModule_Initialize(100, 100, 2, 2);
  CHECK(focus != 0 && RefocusModule_Process(focus, photo, 1) != 0);
  int size = 0;
  CHECK(RefocusModule_GetResultBuf(focus, &size) != NULL && size == (4 + 13) * 4);
  RefocusModule_Release(focus);

  CHECK(super_capture_module_init(-2, 1, 1) == 0);
  intptr_t burst = super_capture_module_init(2, 1, 1);
  CHECK(burst != 0);
  super_capture_module_destroy(burst);
  PanoramaModuleOnErrorCallback(0);
  onResultCallback(NULL, NULL, 0.0f, 0); /* no JVM: logs and returns */
}

int main(void) {
  memoryAndAtomics();
  conversionAndFlatImages();
  imageProcessing();
  stampRefocusAndCapture();
  printf("C interface: %s\n", failures == 0 ? "ok" : "FAILED");
  return failures == 0 ? 0 : 1;
}
