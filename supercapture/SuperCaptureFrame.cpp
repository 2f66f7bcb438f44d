#include "supercapture/SuperCaptureFrame.h"

#include <new>

#include "core/Memory.h"

SuperCaptureFrame::SuperCaptureFrame(unsigned int id, unsigned int width, unsigned int height,
                                     unsigned int format, unsigned char** planes)
    : id(id), width(width), height(height), format(format), planes{} {
  if (planes != nullptr) {
    for (int i = 0; i < 4; ++i) this->planes[i] = planes[i];
  }
}

SuperCaptureFrame::~SuperCaptureFrame() {
  if (planes[0] != nullptr) {
    galloc_free(planes[0]);
    for (auto*& p : planes) p = nullptr;
  }
}

SuperCaptureFrame* SuperCaptureFrame::createFrame(unsigned int id, unsigned int width, unsigned int height,
                                                  unsigned int format, unsigned char** planes) {
  if (width == 0 || height == 0 || format != orvan::supercapture::kFormatPacked) return nullptr;
  if (planes == nullptr || planes[0] == nullptr) return nullptr;
  if (!orvan::supercapture::sizeFits(width, height)) return nullptr;
  const auto bytes = static_cast<unsigned int>(orvan::sizerule::uintCount(width, height, 2));
  auto* copy = static_cast<unsigned char*>(galloc_malloc(bytes));
  if (copy == nullptr) return nullptr;
  galloc_memcpy(copy, planes[0], bytes);
  unsigned char* owned[4] = {copy, nullptr, nullptr, nullptr};
  auto* frame = new (std::nothrow) SuperCaptureFrame(id, width, height, format, owned);
  if (frame == nullptr) galloc_free(copy);
  return frame;
}
