#pragma once

#include <jni.h>

#include <vector>

#include "core/Export.h"
#include "core/RefBase.h"

// Preview brightness monitor behind the Java class
// com.orvan.media.supercapture.mode.SuperCaptureMode. It lives beside its JNI
// binding because it talks to Java itself: each preview frame's mean luma is
// smoothed over the last five frames and, once it has moved 11 or more from the
// last report, mapped to an aperture-style value and a step level that are
// handed to the Java object's onResultCallback(float, int).
class OV_EXPORT SuperCaptureMode : public RefBase {
 public:
  // Frames kept in the brightness history.
  static const int kHistorySize = 30;
  // Frames averaged into the smoothed brightness.
  static const int kSmoothFrames = 5;
  // Smallest change of the smoothed brightness that is reported.
  static const int kHysteresis = 11;

  SuperCaptureMode();
  ~SuperCaptureMode() override;

  // Stores the frame size and format and empties the history.
  void init(unsigned int width, unsigned int height, unsigned int format);
  // Measures one frame's luma plane (the first width x height bytes of data)
  // and calls back through env/thiz when the suggestion changes. A null frame
  // or a frame size of 0 (or one beyond 32 bits) does nothing.
  void process(JNIEnv* env, jobject thiz, unsigned char* data);
  // Empties the history.
  void release();

  int getWidth() const { return m_Width; }
  int getHeight() const { return m_Height; }
  unsigned int getFormat() const { return m_Format; }
  int getHistorySize() const { return static_cast<int>(m_History.size()); }
  int getLastBrightness() const { return m_LastBrightness; }
  float getLastValue() const { return m_LastValue; }
  int getLastLevel() const { return m_LastLevel; }

  // Frame size in bytes of the luma plane, or 0 when it is empty or too large.
  long long lumaSize() const;

 private:
  int m_Width = 0;
  int m_Height = 0;
  unsigned int m_Format = 0;
  std::vector<int> m_History;
  int m_LastBrightness = 0;
  float m_LastValue = 0.0f;
  int m_LastLevel = 0;
};

// onResultCallback is declared in orvan/orvan.h.
#include "orvan/orvan.h"
