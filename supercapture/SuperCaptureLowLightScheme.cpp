#include "core/Log.h"
#include "supercapture/MergeKernels.h"
#include "supercapture/SchemeAccumulator.h"
#include "supercapture/SuperCaptureScheme.h"

using orvan::supercapture::frameBytes;
using orvan::supercapture::initAccumulator;
using orvan::supercapture::releaseAccumulator;
using orvan::supercapture::usable;

// Per-byte maximum.
SuperCaptureLowLightScheme::SuperCaptureLowLightScheme()
    : m_Accumulator(nullptr), m_Count(0), m_Width(0), m_Height(0) {}

SuperCaptureLowLightScheme::~SuperCaptureLowLightScheme() { releaseAccumulator(m_Accumulator); }

void SuperCaptureLowLightScheme::init(unsigned int w, unsigned int h, unsigned int format) {
  initAccumulator(m_Accumulator, m_Count, m_Width, m_Height, w, h, format);
}

void SuperCaptureLowLightScheme::release() { releaseAccumulator(m_Accumulator); }

void SuperCaptureLowLightScheme::process(auto_ptr<SuperCaptureFrame>& frame) {
  if (!usable(frame, m_Accumulator, m_Width, m_Height)) return;
  OV_LOGD("SuperCaptureLowLightScheme::process ............................m_Count:%d\n",
          static_cast<int>(m_Count));
  if (frame->planes[0] != nullptr)
    orvan::supercapture::mergeMax(m_Accumulator, frame->planes[0], frameBytes(m_Width, m_Height));
  ++m_Count;
}

void SuperCaptureLowLightScheme::getResult(auto_ptr<SuperCaptureFrame>& frame) {
  if (!usable(frame, m_Accumulator, m_Width, m_Height)) return;
  OV_LOGD("SuperCaptureLowLightScheme::getResult ............................ m_Count:%d\n",
          static_cast<int>(m_Count));
  if (frame->planes[0] != nullptr)
    orvan::supercapture::resultLowBits(frame->planes[0], m_Accumulator, frameBytes(m_Width, m_Height));
}
