#pragma once

#include <cstdint>

#include "core/Export.h"
#include "core/RefBase.h"
#include "supercapture/SuperCaptureFrame.h"

// Merges a burst by keeping, per frame byte, the largest value seen: the
// scheme for dark scenes, where the brightest sample of each byte wins.
class OV_EXPORT SuperCaptureLowLightScheme : public RefBase {
 public:
  SuperCaptureLowLightScheme();
  ~SuperCaptureLowLightScheme() override;

  SuperCaptureLowLightScheme(const SuperCaptureLowLightScheme&) = delete;
  SuperCaptureLowLightScheme& operator=(const SuperCaptureLowLightScheme&) = delete;

  // Sizes and clears the accumulator (one int per frame byte). Ignored for a
  // zero size, a format other than 1, or a size too large for 32-bit counts.
  virtual void init(unsigned int width, unsigned int height, unsigned int format);
  virtual void process(auto_ptr<SuperCaptureFrame>& frame);
  // Writes the merged bytes into frame's plane 0 (same size as init's).
  virtual void getResult(auto_ptr<SuperCaptureFrame>& frame);
  virtual void release();

  unsigned int getCount() const { return m_Count; }
  const int32_t* getAccumulator() const { return m_Accumulator; }

 private:
  int32_t* m_Accumulator;
  unsigned int m_Count;
  unsigned int m_Width;
  unsigned int m_Height;
};

// Merges a burst by the per-byte mean (truncated): the scheme for bright
// scenes, where averaging removes noise.
class OV_EXPORT SuperCaptureHighLightScheme : public RefBase {
 public:
  SuperCaptureHighLightScheme();
  ~SuperCaptureHighLightScheme() override;

  SuperCaptureHighLightScheme(const SuperCaptureHighLightScheme&) = delete;
  SuperCaptureHighLightScheme& operator=(const SuperCaptureHighLightScheme&) = delete;

  virtual void init(unsigned int width, unsigned int height, unsigned int format);
  virtual void process(auto_ptr<SuperCaptureFrame>& frame);
  // With no frame merged yet nothing is written.
  virtual void getResult(auto_ptr<SuperCaptureFrame>& frame);
  virtual void release();

  unsigned int getCount() const { return m_Count; }
  const int32_t* getAccumulator() const { return m_Accumulator; }

 private:
  int32_t* m_Accumulator;
  unsigned int m_Count;
  unsigned int m_Width;
  unsigned int m_Height;
};
