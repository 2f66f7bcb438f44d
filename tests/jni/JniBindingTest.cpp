// The JNI entry points called directly with objects made in the JVM: their
// log lines, what they do with callers of the wrong class, and the host
// bitmap library underneath the bitmap entries.
#include <android/bitmap.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "JvmEnvironment.h"
#include "jni/SuperCaptureMode.h"
#include "support/LogCapture.h"

#define SCM(name) Java_com_orvan_media_supercapture_mode_SuperCaptureMode_##name
#define PANO(name) Java_com_orvan_media_effects_pano_PanoramaModule_##name

extern "C" {
jint SCM(nativeCreate)(JNIEnv*, jobject, jint, jint, jint);
void SCM(nativeProcess)(JNIEnv*, jobject, jint, jbyteArray);
void SCM(nativeDestroy)(JNIEnv*, jobject, jint);
jlong PANO(nativeCreate)(JNIEnv*, jobject, jint, jint, jint);
jint PANO(nativeProcess)(JNIEnv*, jobject, jlong, jbyteArray, jfloat, jfloat);
void PANO(nativeDestroy)(JNIEnv*, jobject, jlong);
}

namespace {

const std::string kPano = "Java_com_orvan_media_effects_pano_PanoramaModule_";

jobject plainObject(JNIEnv* env) {
  jclass c = env->FindClass("java/lang/Object");
  return env->NewObject(c, env->GetMethodID(c, "<init>", "()V"));
}

jbyteArray filledArray(JNIEnv* env, int n, int value) {
  std::vector<jbyte> v(n, static_cast<jbyte>(value));
  jbyteArray a = env->NewByteArray(n);
  env->SetByteArrayRegion(a, 0, n, v.data());
  return a;
}

std::string pointerText(const void* p) {
  char s[32];
  std::snprintf(s, sizeof s, "%p", p);
  return s;
}

jobject newBitmap(JNIEnv* env, int w, int h, const char* config) {
  jclass bitmap = env->FindClass("android/graphics/Bitmap");
  jclass configClass = env->FindClass("android/graphics/Bitmap$Config");
  jobject cfg = env->GetStaticObjectField(
      configClass, env->GetStaticFieldID(configClass, config, "Landroid/graphics/Bitmap$Config;"));
  jmethodID create = env->GetStaticMethodID(bitmap, "createBitmap",
                                            "(IILandroid/graphics/Bitmap$Config;)Landroid/graphics/Bitmap;");
  jobject b = env->CallStaticObjectMethod(bitmap, create, w, h, cfg);
  EXPECT_FALSE(env->ExceptionCheck());
  return b;
}

}  // namespace

TEST(SuperCaptureModeJni, ACallerWithoutTheCallbackIsLoggedAndSurvives) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  LogCapture cap;
  jobject caller = plainObject(env);
  jint h = SCM(nativeCreate)(env, caller, 16, 8, 17);
  ASSERT_NE(0, h);
  EXPECT_EQ(1, cap.count("Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeCreate  width:16, "
                         "height:8, format:17\n"));
  EXPECT_EQ(1, cap.count("m_Width:16, m_Height:8\n"));

  jbyteArray bright = filledArray(env, 16 * 8 * 3 / 2, 90);
  SCM(nativeProcess)(env, caller, h, bright);
  EXPECT_FALSE(env->ExceptionCheck());
  EXPECT_EQ(1, cap.count("method onResultCallback is not found!"));
  // The suggestion still counted: the same scene does not try again.
  SCM(nativeProcess)(env, caller, h, bright);
  EXPECT_EQ(1, cap.count("method onResultCallback is not found!"));
  SCM(nativeDestroy)(env, caller, h);

  onResultCallback(env, nullptr, 2.8f, 2);
  EXPECT_EQ(1, cap.count("env or object is null, env:" + pointerText(env) + ", object:(nil)"));
}

TEST(PanoramaModuleJni, LogLinesAndForeignCallers) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  LogCapture cap;
  jobject caller = plainObject(env);
  EXPECT_EQ(0, PANO(nativeCreate)(env, caller, 0, 48, 2));
  jlong h = PANO(nativeCreate)(env, caller, 64, 48, 2);
  ASSERT_NE(0, h);
  for (const char* size : {"width:64", "width:0"})
    EXPECT_EQ(1, cap.count(kPano + "nativeCreate " + size + ", height:48, format:2\n")) << size;

  jbyteArray data = filledArray(env, 64 * 48 * 3 / 2, 1);
  EXPECT_EQ(3, PANO(nativeProcess)(env, caller, h, data, 1.0f, 2.0f));
  // Accepted, but the caller has no offset fields to write: nothing breaks.
  EXPECT_EQ(0, PANO(nativeProcess)(env, caller, h, data, 1.0f, 0.5f));
  EXPECT_FALSE(env->ExceptionCheck());
  std::string handle = pointerText(reinterpret_cast<void*>(h));
  EXPECT_EQ(2, cap.countPrefix(kPano + "nativeProcess pano_handle:" + handle + ", data:"));
  // Handle 0 is not an error.
  EXPECT_EQ(0, PANO(nativeProcess)(env, caller, 0, nullptr, 1.0f, 2.0f));
  EXPECT_EQ(
      1, cap.count(kPano + "nativeProcess pano_handle:(nil), data:(nil), gyroX:1.000000, gyroY:2.000000\n"));

  PANO(nativeDestroy)(env, caller, h);
  PANO(nativeDestroy)(env, caller, 0);
  for (const std::string& shown : {handle, std::string("(nil)")})
    EXPECT_EQ(1, cap.count(kPano + "nativeDestroy  pano_handle:" + shown + "\n")) << shown;
}

TEST(HostBitmap, InfoAndLockedPixels) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  jobject argb = newBitmap(env, 5, 3, "ARGB_8888");
  ASSERT_NE(nullptr, argb);
  AndroidBitmapInfo info{};
  ASSERT_EQ(ANDROID_BITMAP_RESULT_SUCCESS, AndroidBitmap_getInfo(env, argb, &info));
  EXPECT_EQ(5u, info.width);
  EXPECT_EQ(3u, info.height);
  EXPECT_EQ(20u, info.stride);
  EXPECT_EQ(ANDROID_BITMAP_FORMAT_RGBA_8888, info.format);

  void* pixels = nullptr;
  ASSERT_EQ(ANDROID_BITMAP_RESULT_SUCCESS, AndroidBitmap_lockPixels(env, argb, &pixels));
  ASSERT_NE(nullptr, pixels);
  // Pixel (1, 2) written as R, G, B, A in memory reads back as ARGB.
  const unsigned char rgba[4] = {0x11, 0x22, 0x33, 0x44};
  std::copy(rgba, rgba + 4, static_cast<unsigned char*>(pixels) + 2 * 20 + 4);
  EXPECT_EQ(ANDROID_BITMAP_RESULT_SUCCESS, AndroidBitmap_unlockPixels(env, argb));
  jmethodID getPixel = env->GetMethodID(env->GetObjectClass(argb), "getPixel", "(II)I");
  EXPECT_EQ(static_cast<jint>(0x44112233), env->CallIntMethod(argb, getPixel, 1, 2));
  EXPECT_FALSE(env->ExceptionCheck());

  ASSERT_EQ(ANDROID_BITMAP_RESULT_SUCCESS,
            AndroidBitmap_getInfo(env, newBitmap(env, 4, 4, "RGB_565"), &info));
  EXPECT_EQ(ANDROID_BITMAP_FORMAT_RGB_565, info.format);
  EXPECT_EQ(8u, info.stride);

  // Things that are not bitmaps.
  EXPECT_EQ(ANDROID_BITMAP_RESULT_BAD_PARAMETER, AndroidBitmap_getInfo(env, plainObject(env), &info));
  EXPECT_EQ(ANDROID_BITMAP_RESULT_BAD_PARAMETER, AndroidBitmap_lockPixels(env, plainObject(env), &pixels));
  EXPECT_EQ(ANDROID_BITMAP_RESULT_BAD_PARAMETER, AndroidBitmap_lockPixels(env, nullptr, &pixels));
  EXPECT_EQ(ANDROID_BITMAP_RESULT_BAD_PARAMETER, AndroidBitmap_unlockPixels(nullptr, argb));
  EXPECT_FALSE(env->ExceptionCheck());
}
