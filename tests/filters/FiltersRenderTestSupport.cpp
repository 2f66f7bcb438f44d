// Native side of the Java test of FiltersRender: captures the library's log
// lines, hands out the address of a direct buffer, and points the program
// cache at a temporary directory.
#include <android/log.h>
#include <jni.h>

#include <mutex>
#include <string>
#include <vector>

#include "gpu/GPUScript.h"

namespace {

std::mutex gMutex;
std::vector<std::string> gLines;
bool gCapturing = false;

void capture(const struct __android_logger_data*, const char* message) {
  std::lock_guard<std::mutex> lock(gMutex);
  if (gCapturing) gLines.push_back(message != nullptr ? message : "");
}

void setCapturing(bool on) {
  std::lock_guard<std::mutex> lock(gMutex);
  gLines.clear();
  gCapturing = on;
}

}  // namespace

#define TEST_NAME(method)                \
  __attribute__((visibility("default"))) \
  Java_com_orvan_media_effects_renderer_render_FiltersRenderTest_##method

extern "C" {

void TEST_NAME(logStart)(JNIEnv*, jclass) {
  setCapturing(true);
  __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
  __android_log_set_logger(capture);
}

void TEST_NAME(logStop)(JNIEnv*, jclass) { setCapturing(false); }

jint TEST_NAME(logCount)(JNIEnv* env, jclass, jstring text) {
  const char* chars = env->GetStringUTFChars(text, nullptr);
  std::string wanted = chars != nullptr ? chars : "";
  if (chars != nullptr) env->ReleaseStringUTFChars(text, chars);
  std::lock_guard<std::mutex> lock(gMutex);
  jint n = 0;
  for (const auto& l : gLines) n += l == wanted ? 1 : 0;
  return n;
}

jlong TEST_NAME(addressOf)(JNIEnv* env, jclass, jobject buffer) {
  return static_cast<jlong>(reinterpret_cast<intptr_t>(env->GetDirectBufferAddress(buffer)));
}

// null restores the build's default directory.
void TEST_NAME(useCacheDirectory)(JNIEnv* env, jclass, jstring dir) {
  const char* chars = dir != nullptr ? env->GetStringUTFChars(dir, nullptr) : nullptr;
  GPUScript::setCacheDirectory(chars);
  if (chars != nullptr) env->ReleaseStringUTFChars(dir, chars);
}

}  // extern "C"
