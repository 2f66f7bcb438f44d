#pragma once

#include <cstddef>
#include <vector>

#include "core/Memory.h"
#include "core/Mutex.h"
#include "core/RefBase.h"

namespace orvan::panorama {

// A few spare frame buffers of one size, shared by the module and the frames
// it made (a frame may outlive its module). Buffers come from galloc_malloc
// and go back to galloc_free.
class PanoramaBufferPool : public RefBase {
 public:
  static const size_t kMaxSpare = 8;

  explicit PanoramaBufferPool(unsigned int bytes) : mBytes(bytes) {}
  ~PanoramaBufferPool() override {
    for (unsigned char* p : mSpare) galloc_free(p);
  }

  unsigned char* take() {
    {
      Mutex::Autolock guard(mLock);
      if (!mSpare.empty()) {
        unsigned char* p = mSpare.back();
        mSpare.pop_back();
        return p;
      }
    }
    return static_cast<unsigned char*>(galloc_malloc(mBytes));
  }

  void give(unsigned char* p) {
    {
      Mutex::Autolock guard(mLock);
      if (mSpare.size() < kMaxSpare) {
        mSpare.push_back(p);
        return;
      }
    }
    galloc_free(p);
  }

 private:
  const unsigned int mBytes;
  Mutex mLock;
  std::vector<unsigned char*> mSpare;
};

}  // namespace orvan::panorama
