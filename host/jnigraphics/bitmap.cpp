// The NDK bitmap calls over the host android.graphics.Bitmap, whose pixels
// live in a direct ByteBuffer: its address is what a lock hands out, so
// native writes are seen by getPixel and copyPixelsToBuffer straight away.
#include <android/bitmap.h>

#define OV_GRAPHICS_API extern "C" __attribute__((visibility("default")))

namespace {

struct BitmapFields {
  jfieldID width, height, rowBytes, format, buffer, lockCount;
};

// Looks the fields up on the object's own class, so a foreign object is a bad
// parameter rather than a crash; a failed look-up leaves no exception behind.
bool lookUp(JNIEnv* env, jobject bitmap, BitmapFields* f) {
  jclass cls = env->GetObjectClass(bitmap);
  if (cls == nullptr) return false;
  f->width = env->GetFieldID(cls, "mWidth", "I");
  if (f->width != nullptr) f->height = env->GetFieldID(cls, "mHeight", "I");
  if (f->width != nullptr && f->height != nullptr) f->rowBytes = env->GetFieldID(cls, "mRowBytes", "I");
  if (f->width != nullptr && f->height != nullptr && f->rowBytes != nullptr)
    f->format = env->GetFieldID(cls, "mFormat", "I");
  bool ok = f->width != nullptr && f->height != nullptr && f->rowBytes != nullptr && f->format != nullptr;
  if (ok) f->buffer = env->GetFieldID(cls, "mBuffer", "Ljava/nio/ByteBuffer;");
  ok = ok && f->buffer != nullptr;
  if (ok) f->lockCount = env->GetFieldID(cls, "mLockCount", "I");
  ok = ok && f->lockCount != nullptr;
  env->DeleteLocalRef(cls);
  if (!ok && env->ExceptionCheck()) env->ExceptionClear();
  return ok;
}

}  // namespace

OV_GRAPHICS_API int AndroidBitmap_getInfo(JNIEnv* env, jobject jbitmap, AndroidBitmapInfo* info) {
  BitmapFields f;
  if (env == nullptr || jbitmap == nullptr || !lookUp(env, jbitmap, &f))
    return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
  if (info != nullptr) {
    info->width = static_cast<uint32_t>(env->GetIntField(jbitmap, f.width));
    info->height = static_cast<uint32_t>(env->GetIntField(jbitmap, f.height));
    info->stride = static_cast<uint32_t>(env->GetIntField(jbitmap, f.rowBytes));
    info->format = env->GetIntField(jbitmap, f.format);
    info->flags = 0;
  }
  return ANDROID_BITMAP_RESULT_SUCCESS;
}

OV_GRAPHICS_API int AndroidBitmap_lockPixels(JNIEnv* env, jobject jbitmap, void** addrPtr) {
  BitmapFields f;
  if (env == nullptr || jbitmap == nullptr || !lookUp(env, jbitmap, &f))
    return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
  jobject buffer = env->GetObjectField(jbitmap, f.buffer);
  void* pixels = buffer != nullptr ? env->GetDirectBufferAddress(buffer) : nullptr;
  if (buffer != nullptr) env->DeleteLocalRef(buffer);
  if (pixels == nullptr) return ANDROID_BITMAP_RESULT_ALLOCATION_FAILED;
  env->SetIntField(jbitmap, f.lockCount, env->GetIntField(jbitmap, f.lockCount) + 1);
  if (addrPtr != nullptr) *addrPtr = pixels;
  return ANDROID_BITMAP_RESULT_SUCCESS;
}

OV_GRAPHICS_API int AndroidBitmap_unlockPixels(JNIEnv* env, jobject jbitmap) {
  BitmapFields f;
  if (env == nullptr || jbitmap == nullptr || !lookUp(env, jbitmap, &f))
    return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
  jint locks = env->GetIntField(jbitmap, f.lockCount);
  if (locks > 0) env->SetIntField(jbitmap, f.lockCount, locks - 1);
  return ANDROID_BITMAP_RESULT_SUCCESS;
}
