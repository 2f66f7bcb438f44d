// Native methods of com.orvan.media.effects.renderer.render.FiltersRender: a
// filter is handed to Java as its address in a long.
#include <android/bitmap.h>
#include <jni.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "core/Export.h"
#include "core/Log.h"
#include "core/SizeRule.h"
#include "filters/ImageFilters.h"
#include "image/FlatImage.h"

#define FR_NAME(method) Java_com_orvan_media_effects_renderer_render_FiltersRender_##method
#define FR_PREFIX "Java_com_orvan_media_effects_renderer_render_FiltersRender_"

namespace {

ImageFilterBaseGL* toFilter(jlong handle) {
  return reinterpret_cast<ImageFilterBaseGL*>(static_cast<intptr_t>(handle));
}

jlong toHandle(ImageFilterBaseGL* filter) { return static_cast<jlong>(reinterpret_cast<intptr_t>(filter)); }

// UTF-8 view of a Java string for the length of a call.
class Utf {
 public:
  Utf(JNIEnv* env, jstring s) : mEnv(env), mString(s), mChars(nullptr) {
    if (s != nullptr) mChars = env->GetStringUTFChars(s, nullptr);
  }
  ~Utf() { releaseNow(); }
  Utf(const Utf&) = delete;
  Utf& operator=(const Utf&) = delete;
  const char* get() const { return mChars; }
  void releaseNow() {
    if (mChars != nullptr) mEnv->ReleaseStringUTFChars(mString, mChars);
    mChars = nullptr;
  }

 private:
  JNIEnv* mEnv;
  jstring mString;
  const char* mChars;
};

// The largest parameter a filter reads is 16 floats.
const size_t kMaxParameterBytes = 16 * sizeof(float);

// One value is handed over in a zero-padded local copy: a filter reads as many
// bytes as its parameter needs (four for a float, 32 for a vertex array),
// whatever the Java type was.
template <typename T>
void setOne(JNIEnv* env, jlong handle, jstring name, T value, const char* logLine) {
  Utf utf(env, name);
  OV_LOGD("%s", logLine);
  ImageFilterBaseGL* filter = toFilter(handle);
  if (filter != nullptr && utf.get() != nullptr) {
    alignas(8) unsigned char copy[kMaxParameterBytes] = {};
    memcpy(copy, &value, sizeof(value));
    filter->setParameters(utf.get(), copy);
  }
}

// Hands the elements to the filter through a zero-padded copy, so a short
// Java array is never read past its end.
template <typename T>
void passElements(ImageFilterBaseGL* filter, const char* name, JNIEnv* env, jarray array, const T* elements) {
  size_t bytes = static_cast<size_t>(env->GetArrayLength(array)) * sizeof(T);
  std::vector<unsigned char> padded(bytes < kMaxParameterBytes ? kMaxParameterBytes : bytes, 0);
  if (bytes > 0) memcpy(padded.data(), elements, bytes);
  filter->setParameters(name, padded.data());
}

#define FR_SET_ONE(JType, method)                                                                          \
  OV_EXPORT void JNICALL FR_NAME(method)(JNIEnv * env, jobject, jlong handle, jstring name, JType value) { \
    setOne(env, handle, name, value, FR_PREFIX #method "\n");                                              \
  }

#define FR_SET_ARRAY(JType, JArray, Getter, Releaser, method)                                                \
  OV_EXPORT void JNICALL FR_NAME(method)(JNIEnv * env, jobject, jlong handle, jstring name, JArray values) { \
    Utf utf(env, name);                                                                                      \
    OV_LOGD(FR_PREFIX #method "\n");                                                                         \
    JType* elements = values != nullptr ? env->Getter(values, nullptr) : nullptr;                            \
    ImageFilterBaseGL* filter = toFilter(handle);                                                            \
    if (filter != nullptr && utf.get() != nullptr && elements != nullptr) {                                  \
      passElements(filter, utf.get(), env, values, elements);                                                \
    }                                                                                                        \
    utf.releaseNow();                                                                                        \
    if (elements != nullptr) env->Releaser(values, elements, 0);                                             \
  }

// True when width x height RGBA pixels fit the int byte counts the filters take.
bool rgbaBytesFitInt(uint64_t width, uint64_t height) {
  return orvan::sizerule::intCount(width, height, 4) >= 0;
}

// Only tightly packed RGBA 8888 pixels match what the filters assume.
bool isPackedRgba(const AndroidBitmapInfo& info) {
  return info.format == ANDROID_BITMAP_FORMAT_RGBA_8888 &&
         static_cast<uint64_t>(info.stride) == static_cast<uint64_t>(info.width) * 4;
}

}  // namespace

extern "C" {

OV_EXPORT jlong JNICALL FR_NAME(nativeCreate)(JNIEnv* env, jobject, jstring name) {
  if (name == nullptr) return 0;
  Utf utf(env, name);
  if (utf.get() == nullptr) return 0;
  ImageFilterBaseGL* filter = ImageFilterFactory::createFilter(utf.get());
  if (filter == nullptr) return 0;
  filter->initEngine();
  if (!filter->setupGraphics(1)) {
    delete filter;
    return 0;
  }
  return toHandle(filter);
}

OV_EXPORT jint JNICALL FR_NAME(nativeProcess)(JNIEnv* env, jobject, jlong handle, jobject bitmap) {
  if (bitmap == nullptr) return 0;
  AndroidBitmapInfo info;
  memset(&info, 0, sizeof(info));
  AndroidBitmap_getInfo(env, bitmap, &info);
  void* pixels = nullptr;
  if (AndroidBitmap_lockPixels(env, bitmap, &pixels) != ANDROID_BITMAP_RESULT_SUCCESS) return 0;
  ImageFilterBaseGL* filter = toFilter(handle);
  if (filter != nullptr && pixels != nullptr && info.width != 0 && info.height != 0 && isPackedRgba(info) &&
      rgbaBytesFitInt(info.width, info.height)) {
    filter->process(static_cast<unsigned char*>(pixels), static_cast<int>(info.width),
                    static_cast<int>(info.height));
  }
  AndroidBitmap_unlockPixels(env, bitmap);
  return 0;
}

OV_EXPORT jlong JNICALL FR_NAME(nativeOnSurfaceCreated)(JNIEnv* env, jobject, jstring name, jint mode) {
  Utf utf(env, name);
  OV_LOGD(FR_PREFIX "nativeOnSurfaceCreated  1\n");
  ImageFilterBaseGL* filter = ImageFilterFactory::createFilter(utf.get());
  if (filter != nullptr && !filter->setupGraphics(static_cast<unsigned>(mode))) {
    delete filter;
    filter = nullptr;
  }
  utf.releaseNow();
  OV_LOGD("pImageFilterBaseGL:%p\n", filter);
  return toHandle(filter);
}

OV_EXPORT void JNICALL FR_NAME(nativeSetTexture)(JNIEnv*, jobject, jlong handle, jint texture,
                                                 jint textureWidth, jint textureHeight, jint viewWidth,
                                                 jint viewHeight) {
  ImageFilterBaseGL* filter = toFilter(handle);
  OV_LOGD(FR_PREFIX "nativeSetTexture  1 pImageFilterBaseGL:%p\n", filter);
  if (filter != nullptr) filter->setTexture(texture, textureWidth, textureHeight, viewWidth, viewHeight);
  OV_LOGD(FR_PREFIX "nativeSetTexture  2 pImageFilterBaseGL:%p\n", filter);
}

OV_EXPORT void JNICALL FR_NAME(nativeSetBitmap)(JNIEnv* env, jobject, jlong handle, jobject bitmap,
                                                jint width, jint height) {
  ImageFilterBaseGL* filter = toFilter(handle);
  OV_LOGD(FR_PREFIX "nativeSetBitmap pImageFilterBaseGL:%p\n", filter);
  if (bitmap == nullptr) return;
  AndroidBitmapInfo info;
  memset(&info, 0, sizeof(info));
  AndroidBitmap_getInfo(env, bitmap, &info);
  void* pixels = nullptr;
  if (AndroidBitmap_lockPixels(env, bitmap, &pixels) != ANDROID_BITMAP_RESULT_SUCCESS) return;
  // The Java sizes are used, but never beyond the pixels the bitmap holds.
  bool fits = width >= 1 && height >= 1 &&
              static_cast<uint64_t>(width) * static_cast<uint64_t>(height) * 4 <=
                  static_cast<uint64_t>(info.stride) * info.height &&
              rgbaBytesFitInt(static_cast<uint64_t>(width), static_cast<uint64_t>(height));
  if (filter != nullptr && pixels != nullptr && fits) {
    filter->setBitmap(static_cast<unsigned char*>(pixels), width, height);
  }
  AndroidBitmap_unlockPixels(env, bitmap);
}

OV_EXPORT void JNICALL FR_NAME(nativeOnDrawFrame)(JNIEnv*, jobject, jlong handle) {
  ImageFilterBaseGL* filter = toFilter(handle);
  if (filter != nullptr) filter->render();
}

OV_EXPORT void JNICALL FR_NAME(nativeOnSurfaceDestroyed)(JNIEnv*, jobject, jlong handle) {
  ImageFilterBaseGL* filter = toFilter(handle);
  OV_LOGD(FR_PREFIX "nativeOnSurfaceDestroyed pImageFilterBaseGL:%p\n", filter);
  delete filter;
}

OV_EXPORT jint JNICALL FR_NAME(nativeGetParameterType)(JNIEnv* env, jobject, jlong handle, jstring name) {
  Utf utf(env, name);
  OV_LOGD(FR_PREFIX "nativeGetParameterType\n");
  ImageFilterBaseGL* filter = toFilter(handle);
  return filter == nullptr ? -1 : filter->getParameterType(utf.get());
}

FR_SET_ONE(jboolean, nativeSetParametersBoolean)
FR_SET_ONE(jint, nativeSetParametersInteger)
FR_SET_ONE(jfloat, nativeSetParametersFloat)
FR_SET_ONE(jdouble, nativeSetParametersDouble)

// A long carries the address of native data: the value itself is the pointer.
OV_EXPORT void JNICALL FR_NAME(nativeSetParametersLong)(JNIEnv* env, jobject, jlong handle, jstring name,
                                                        jlong value) {
  Utf utf(env, name);
  OV_LOGD(FR_PREFIX "nativeSetParametersLong\n");
  ImageFilterBaseGL* filter = toFilter(handle);
  if (filter != nullptr && utf.get() != nullptr) {
    filter->setParameters(utf.get(), reinterpret_cast<void*>(static_cast<intptr_t>(value)));
  }
}

FR_SET_ARRAY(jboolean, jbooleanArray, GetBooleanArrayElements, ReleaseBooleanArrayElements,
             nativeSetParametersBooleanArray)
FR_SET_ARRAY(jint, jintArray, GetIntArrayElements, ReleaseIntArrayElements, nativeSetParametersIntegerArray)
FR_SET_ARRAY(jfloat, jfloatArray, GetFloatArrayElements, ReleaseFloatArrayElements,
             nativeSetParametersFloatArray)
FR_SET_ARRAY(jdouble, jdoubleArray, GetDoubleArrayElements, ReleaseDoubleArrayElements,
             nativeSetParametersDoubleArray)

OV_EXPORT void JNICALL FR_NAME(nativeSetParametersBitmap)(JNIEnv* env, jobject, jlong handle, jstring name,
                                                          jobject bitmap) {
  Utf utf(env, name);
  ImageFilterBaseGL* filter = toFilter(handle);
  OV_LOGD(FR_PREFIX "nativeSetParametersBitmap 1   pImageFilterBaseGL:%p\n", filter);
  AndroidBitmapInfo info;
  memset(&info, 0, sizeof(info));
  if (bitmap != nullptr) AndroidBitmap_getInfo(env, bitmap, &info);
  if (info.width == 0 || info.height == 0) {
    OV_LOGD(FR_PREFIX "nativeSetParametersBitmap 2   pImageFilterBaseGL:%p\n", filter);
    return;
  }
  void* pixels = nullptr;
  if (AndroidBitmap_lockPixels(env, bitmap, &pixels) != ANDROID_BITMAP_RESULT_SUCCESS) return;
  if (!isPackedRgba(info) || !rgbaBytesFitInt(info.width, info.height)) {
    AndroidBitmap_unlockPixels(env, bitmap);
    return;
  }
  if (filter != nullptr && pixels != nullptr) {
    int w = static_cast<int>(info.width);
    flat::Image* record =
        ov_createImage(w, static_cast<int>(info.height), 4, w * 4, static_cast<unsigned char*>(pixels));
    if (record != nullptr) {
      filter->setParameters(utf.get(), record);
      ov_releaseImage(record);
    }
  }
  utf.releaseNow();
  AndroidBitmap_unlockPixels(env, bitmap);
  OV_LOGD(FR_PREFIX "nativeSetParametersBitmap 3   pImageFilterBaseGL:%p\n", filter);
}

}  // extern "C"
