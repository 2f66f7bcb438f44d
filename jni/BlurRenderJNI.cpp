// Native method of com.orvan.media.render.BlurRender.
#include <android/bitmap.h>
#include <jni.h>

#include <cstdint>

#include "core/Export.h"
#include "core/SizeRule.h"
#include "imgproc/Blur.h"

namespace {

// The blur and the blend treat the pixels as packed RGBA rows of the caller's
// width: only a tightly packed RGBA_8888 bitmap holding at least that many
// pixels can be served.
bool canServe(JNIEnv* env, jobject bitmap, jint width, jint height, jint radius) {
  if (width <= 0 || height <= 0 || radius < 0 || radius > 254) return false;
  AndroidBitmapInfo info;
  if (AndroidBitmap_getInfo(env, bitmap, &info) != ANDROID_BITMAP_RESULT_SUCCESS) return false;
  if (info.format != ANDROID_BITMAP_FORMAT_RGBA_8888) return false;
  if (static_cast<uint64_t>(info.stride) != static_cast<uint64_t>(info.width) * 4) return false;
  // The blur's byte count must fit its int sizes, and the bitmap must hold the pixels.
  if (orvan::sizerule::intCount(width, height, 4) < 0) return false;
  return static_cast<uint64_t>(width) * static_cast<uint64_t>(height) <=
         static_cast<uint64_t>(info.width) * info.height;
}

}  // namespace

OV_CAPI jint Java_com_orvan_media_render_BlurRender_nativeProcess(JNIEnv* env, jobject, jobject bitmap,
                                                                  jint width, jint height, jint radius,
                                                                  jint color, jint alpha) {
  void* pixels = nullptr;
  AndroidBitmap_lockPixels(env, bitmap, &pixels);
  if (pixels != nullptr && canServe(env, bitmap, width, height, radius)) {
    auto* rgba = static_cast<unsigned char*>(pixels);
    stack_blur(rgba, width, height, radius);
    alpha_blend_neon(rgba, width * height, (color >> 16) & 255, (color >> 8) & 255, color & 255, alpha);
  }
  return AndroidBitmap_unlockPixels(env, bitmap);
}
