#include "core/Log.h"
#include "supercapture/MergeKernels.h"
#include "supercapture/SchemeAccumulator.h"
#include "supercapture/SuperCaptureScheme.h"

using orvan::supercapture::frameBytes;
using orvan::supercapture::initAccumulator;
using orvan::supercapture::releaseAccumulator;
using orvan::supercapture::usable;

// Per-byte truncated mean.
SuperCaptureHighLightScheme::SuperCaptureHighLightScheme()
    : m_Accumulator(nullptr), m_Count(0), m_Width(0), m_Height(0) {}

SuperCaptureHighLightScheme::~SuperCaptureHighLightScheme() { releaseAccumulator(m_Accumulator); }

void SuperCaptureHighLightScheme::init(unsigned int w, unsigned int h, unsigned int format) {
  initAccumulator(m_Accumulator, m_Count, m_Width, m_Height, w, h, format);
}

void SuperCaptureHighLightScheme::release() { releaseAccumulator(m_Accumulator); }

void SuperCaptureHighLightScheme::process(auto_ptr<SuperCaptureFrame>& frame) {
  if (!usable(frame, m_Accumulator, m_Width, m_Height)) return;
  OV_LOGD("SuperCaptureHighLightScheme::process ............................ m_Count:%d\n",
          static_cast<int>(m_Count));
  if (frame->planes[0] != nullptr) {
    // The first frame overwrites, so the accumulator needs no clearing pass.
    if (m_Count == 0) {
      orvan::supercapture::mergeCopy(m_Accumulator, frame->planes[0], frameBytes(m_Width, m_Height));
    } else {
      orvan::supercapture::mergeAdd(m_Accumulator, frame->planes[0], frameBytes(m_Width, m_Height));
    }
  }
  ++m_Count;
}

void SuperCaptureHighLightScheme::getResult(auto_ptr<SuperCaptureFrame>& frame) {
  if (!usable(frame, m_Accumulator, m_Width, m_Height)) return;
  OV_LOGD("SuperCaptureHighLightScheme::getResult ............................ m_Count:%d\n",
          static_cast<int>(m_Count));
  if (m_Count == 0 || frame->planes[0] == nullptr) return;
  orvan::supercapture::resultMean(frame->planes[0], m_Accumulator, frameBytes(m_Width, m_Height),
                                  static_cast<int32_t>(m_Count));
}
