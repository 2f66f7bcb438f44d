#include "jni/SuperCaptureMode.h"

#include <cstdint>
#include <cstdlib>

#include "core/Log.h"
#include "core/SizeRule.h"

namespace {

struct Suggestion {
  int upTo;  // highest smoothed brightness of the row
  float value;
  int level;
};

// First matching row wins; the last row takes everything brighter.
const Suggestion kSuggestions[] = {
    {29, 2.0f, 2},  {39, 2.8f, 2},    {59, 4.0f, 1},    {79, 5.6f, 0},
    {99, 8.0f, -1}, {119, 11.0f, -1}, {139, 16.0f, -2},
};

}  // namespace

SuperCaptureMode::SuperCaptureMode() = default;

SuperCaptureMode::~SuperCaptureMode() = default;

void SuperCaptureMode::init(unsigned int width, unsigned int height, unsigned int fmt) {
  m_Width = static_cast<int>(width);
  m_Height = static_cast<int>(height);
  m_Format = fmt;
  m_History.clear();
  OV_LOGD("m_Width:%d, m_Height:%d\n", m_Width, m_Height);
}

void SuperCaptureMode::release() { m_History.clear(); }

long long SuperCaptureMode::lumaSize() const {
  const int64_t n = orvan::sizerule::intCount(m_Width, m_Height);
  return n < 0 ? 0 : n;
}

void SuperCaptureMode::process(JNIEnv* env, jobject thiz, unsigned char* data) {
  long long pixels = lumaSize();
  if (data == nullptr || pixels == 0) return;

  // 32-bit partial sums vectorise well; a block of 2^24 bytes cannot overflow one.
  long long sum = 0;
  for (long long start = 0; start < pixels; start += (1LL << 24)) {
    long long end = pixels - start < (1LL << 24) ? pixels : start + (1LL << 24);
    uint32_t part = 0;
    for (long long i = start; i < end; ++i) part += data[i];
    sum += part;
  }
  int brightness = static_cast<int>(sum / pixels);

  m_History.push_back(brightness);
  if (m_History.size() > static_cast<size_t>(kHistorySize)) m_History.erase(m_History.begin());

  int n = static_cast<int>(m_History.size());
  int s = n > kSmoothFrames ? n - kSmoothFrames : 0;
  long long recent = 0;
  for (int i = s; i < n; ++i) recent += m_History[i];
  int smoothed = static_cast<int>(recent / (n - s));

  if (std::abs(m_LastBrightness - smoothed) < kHysteresis) return;

  float value = 22.0f;
  int level = -2;
  for (const Suggestion& row : kSuggestions) {
    if (smoothed <= row.upTo) {
      value = row.value;
      level = row.level;
      break;
    }
  }
  m_LastValue = value;
  m_LastLevel = level;
  onResultCallback(env, thiz, value, level);
  m_LastBrightness = smoothed;
}

void onResultCallback(JNIEnv* env, jobject obj, float value, int level) {
  if (env == nullptr || obj == nullptr) {
    OV_LOGD("env or object is null, env:%p, object:%p", static_cast<void*>(env), static_cast<void*>(obj));
    return;
  }
  jclass cls = env->GetObjectClass(obj);
  if (cls == nullptr) {
    OV_LOGD("class com/orvan/media/imageproc/module/SuperCaptureModule is not found!");
    return;
  }
  jmethodID method = env->GetMethodID(cls, "onResultCallback", "(FI)V");
  if (method == nullptr) {
    // The failed look-up throws NoSuchMethodError; the frame is still counted,
    // so the caller must not see it.
    if (env->ExceptionCheck()) env->ExceptionClear();
    env->DeleteLocalRef(cls);
    OV_LOGD("method onResultCallback is not found!");
    return;
  }
  env->DeleteLocalRef(cls);
  env->CallVoidMethod(obj, method, static_cast<double>(value), static_cast<jint>(level));
}
