// The JNI entry points called directly with objects made in the JVM: their
// log lines and what they do with callers of the wrong class.
#include <gtest/gtest.h>

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

TEST(PanoramaModuleJni, ForeignCallersAndHandleZero) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  LogCapture cap;
  jobject caller = plainObject(env);
  EXPECT_EQ(0, PANO(nativeCreate)(env, caller, 0, 48, 2));
  jlong h = PANO(nativeCreate)(env, caller, 64, 48, 2);
  ASSERT_NE(0, h);
  jbyteArray data = filledArray(env, 64 * 48 * 3 / 2, 1);
  EXPECT_EQ(3, PANO(nativeProcess)(env, caller, h, data, 1.0f, 2.0f));
  // Accepted, but the caller has no offset fields to write: nothing breaks.
  EXPECT_EQ(0, PANO(nativeProcess)(env, caller, h, data, 1.0f, 0.5f));
  EXPECT_FALSE(env->ExceptionCheck());
  EXPECT_EQ(0, PANO(nativeProcess)(env, caller, 0, nullptr, 1.0f, 2.0f));
  EXPECT_EQ(
      1, cap.count(kPano + "nativeProcess pano_handle:(nil), data:(nil), gyroX:1.000000, gyroY:2.000000\n"));
  PANO(nativeDestroy)(env, caller, h);
  PANO(nativeDestroy)(env, caller, 0);
  EXPECT_EQ(1, cap.count(kPano + "nativeDestroy  pano_handle:(nil)\n"));
}
