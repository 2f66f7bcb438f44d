/* The installed library from plain C through pkg-config: a merged burst and a
   colour conversion, checked against bytes worked out by hand. */
#include <android/log.h>
#include <orvan/orvan.h>
#include <sched.h>
#include <stdatomic.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

static int failures = 0;
static atomic_int framesTaken;

static void expectBytes(const char* what, const unsigned char* got, const unsigned char* want, size_t n) {
  if (memcmp(got, want, n) == 0) return;
  fprintf(stderr, "%s:", what);
  for (size_t i = 0; i < n; ++i) fprintf(stderr, " %d/%d", got[i], want[i]);
  fprintf(stderr, " (got/want)\n");
  ++failures;
}

/* The worker logs one line per frame it takes: the only sign a C caller has. */
static void countTakenFrames(const struct __android_logger_data* data, const char* message) {
  (void)data;
  if (strstr(message, "run   getFrame") != NULL) atomic_fetch_add(&framesTaken, 1);
}

int main(void) {
  /* Black, white, red, green, blue; the tables truncate, so white's Y is 233. */
  const unsigned char rgb[15] = {0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255};
  const unsigned char yuv[15] = {16, 128, 128, 233, 128, 128, 81, 91, 239, 144, 54, 35, 40, 239, 110};
  unsigned char out[15] = {0};
  if (color_convert_rgb2yuv(rgb, out, 5, 1) != 1) ++failures;
  expectBytes("rgb2yuv", out, yuv, sizeof out);

  /* Dark frames (luma means 15, 14, 1): the per-byte maximum of 2 x 1 pixels. */
  __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
  __android_log_set_logger(countTakenFrames);
  unsigned char frames[3][4] = {{10, 7, 20, 9}, {24, 3, 5, 200}, {1, 50, 2, 0}};
  const unsigned char maximum[4] = {24, 50, 20, 200};
  intptr_t handle = super_capture_module_init(2, 1, 1);
  if (handle == 0) return 1;
  for (int i = 0; i < 3; ++i) {
    unsigned char* planes[4] = {frames[i], NULL, NULL, NULL};
    if (super_capture_module_push_frame(handle, planes) != 0) ++failures;
  }
  /* Frames still queued when the burst closes are not merged: wait for the worker. */
  time_t deadline = time(NULL) + 60;
  while (atomic_load(&framesTaken) < 3 && time(NULL) < deadline) sched_yield();
  unsigned char merged[4] = {0};
  unsigned char* planes[4] = {merged, NULL, NULL, NULL};
  if (super_capture_module_pop_frame(handle, planes) != 0) ++failures;
  super_capture_module_destroy(handle);
  expectBytes("burst maximum", merged, maximum, sizeof merged);

  printf("C consumer: %s\n", failures == 0 ? "ok" : "FAILED");
  return failures == 0 ? 0 : 1;
}
