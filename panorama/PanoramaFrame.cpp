#include "panorama/PanoramaFrame.h"

#include "core/Memory.h"

PanoramaFrame::PanoramaFrame(int idx, int w, int h, int fmt, unsigned char* pixels)
    : index(idx), width(w), height(h), format(fmt), data(pixels) {}

PanoramaFrame::~PanoramaFrame() {
  if (data != nullptr) galloc_free(data);
  data = nullptr;
  index = -1;
  width = 0;
  height = 0;
  format = 0;
}
