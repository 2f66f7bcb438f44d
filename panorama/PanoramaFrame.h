#pragma once

#include "core/Export.h"
#include "core/RefBase.h"

// One queued panorama frame: its pixels (width x height x 3 / 2 bytes, owned
// and freed with galloc_free) and the queue depth at the moment it was queued.
class OV_EXPORT PanoramaFrame : public RefBase {
 public:
  // Takes ownership of data; copies nothing.
  PanoramaFrame(int index, int width, int height, int format, unsigned char* data);
  ~PanoramaFrame() override;

  PanoramaFrame(const PanoramaFrame&) = delete;
  PanoramaFrame& operator=(const PanoramaFrame&) = delete;

  // Frames that were waiting in the queue when this one was queued.
  int index;
  int width;
  int height;
  // Panorama format code of data; queued frames are always 3 (YV12).
  int format;
  unsigned char* data;
};
