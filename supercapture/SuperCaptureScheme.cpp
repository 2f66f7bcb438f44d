#include "supercapture/SuperCaptureScheme.h"

#include "core/Log.h"
#include "core/Memory.h"
#include "supercapture/MergeKernels.h"

namespace {

// The two schemes share init and release exactly.
void initAccumulator(int32_t*& acc, unsigned int& count, unsigned int& w, unsigned int& h, unsigned int width,
                     unsigned int height, unsigned int format) {
  if (width == 0 || height == 0 || format == 0 || format > orvan::supercapture::kFormatPacked) return;
  if (!orvan::supercapture::sizeFits(width, height)) return;
  count = 0;
  w = width;
  h = height;
  const auto bytes = static_cast<unsigned int>(orvan::sizerule::uintCount(width, height, 8));
  acc = static_cast<int32_t*>(galloc_malloc(bytes));
  if (acc != nullptr) galloc_memset(acc, 0, bytes);
}

void releaseAccumulator(int32_t*& acc) {
  if (acc != nullptr) {
    galloc_free(acc);
    acc = nullptr;
  }
}

// Frames and schemes only exist for sizes that passed sizeFits, so the count
// is known to fit before it becomes a size_t.
size_t frameBytes(unsigned int w, unsigned int h) {
  return static_cast<size_t>(orvan::sizerule::uintCount(w, h, 2));
}

// A frame is served when it has pixels and at least as many bytes as the
// accumulator covers; anything else would be read or written out of bounds.
bool usable(const auto_ptr<SuperCaptureFrame>& frame, const int32_t* acc, unsigned int w, unsigned int h) {
  if (frame == nullptr || acc == nullptr) return false;
  return orvan::sizerule::uintCount(frame->width, frame->height, 2) >= orvan::sizerule::uintCount(w, h, 2);
}

}  // namespace

// ---- low light: per-byte maximum

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

// ---- high light: per-byte truncated mean

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
