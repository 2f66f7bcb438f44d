// The brightness monitor without a JVM: a null JNIEnv makes every suggestion
// a log line, and the observers show the state behind it. The value table and
// the hysteresis are tested through Java callbacks.
#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>
#include <vector>

#include "jni/SuperCaptureMode.h"
#include "support/LogCapture.h"

namespace {

const char kNoTarget[] = "env or object is null, env:(nil), object:(nil)";

void feed(SuperCaptureMode& m, int luma, int frames = 1) {
  std::vector<unsigned char> f(m.getWidth() * m.getHeight() * 3 / 2, static_cast<unsigned char>(luma));
  // Chroma must not count toward the brightness.
  for (size_t i = m.getWidth() * m.getHeight(); i < f.size(); ++i) f[i] = 255;
  for (int i = 0; i < frames; ++i) m.process(nullptr, nullptr, f.data());
}

}  // namespace

extern "C" {
jint Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeCreate(JNIEnv*, jobject, jint, jint, jint);
void Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeDestroy(JNIEnv*, jobject, jint);
}

// Create and destroy never touch the JNIEnv. Where an address fits a Java int
// (32-bit builds) the handle is the object's address; elsewhere it is an id.
TEST(SuperCaptureMode, IntHandleLeadsBackToTheObject) {
  LogCapture cap;
  const jint a =
      Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeCreate(nullptr, nullptr, 4, 3, 7);
  const jint b =
      Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeCreate(nullptr, nullptr, 8, 2, 9);
  ASSERT_NE(0, a);
  ASSERT_NE(0, b);
  EXPECT_NE(a, b);
#if UINTPTR_MAX == 0xffffffffu
  for (auto [h, w, f] : {std::tuple{a, 4, 7u}, std::tuple{b, 8, 9u}}) {
    const auto* m = reinterpret_cast<const SuperCaptureMode*>(static_cast<intptr_t>(h));
    EXPECT_EQ(w, m->getWidth());
    EXPECT_EQ(f, m->getFormat());
  }
#endif
  Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeDestroy(nullptr, nullptr, a);
  Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeDestroy(nullptr, nullptr, b);
}

TEST(SuperCaptureMode, HistoryKeepsTheLastThirtyFramesOfWhichFiveCount) {
  LogCapture cap;
  SuperCaptureMode m;
  m.init(4, 4, 17);
  EXPECT_EQ(1, cap.count("m_Width:4, m_Height:4\n"));
  feed(m, 100, 100);
  EXPECT_EQ(30, m.getHistorySize());
  // After five dark frames the bright ones no longer matter.
  feed(m, 20, 5);
  EXPECT_EQ(20, m.getLastBrightness());
  EXPECT_EQ(2.0f, m.getLastValue());
  EXPECT_EQ(2, m.getLastLevel());
  m.release();
  EXPECT_EQ(0, m.getHistorySize());
}

TEST(SuperCaptureMode, EmptyOrMissingFramesDoNothing) {
  LogCapture cap;
  SuperCaptureMode m;
  m.init(0, 480, 0);
  std::vector<unsigned char> f(640 * 480, 200);
  m.process(nullptr, nullptr, f.data());
  m.init(640, 480, 0);
  m.process(nullptr, nullptr, nullptr);
  EXPECT_EQ(0, m.getHistorySize());
  EXPECT_EQ(0, cap.count(kNoTarget));
  m.process(nullptr, nullptr, f.data());
  EXPECT_EQ(1, m.getHistorySize());
  EXPECT_EQ(1, cap.count(kNoTarget));  // the suggestion, with no Java target to take it
}
