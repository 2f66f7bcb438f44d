#pragma once

#include "core/Export.h"
#include "core/RefBase.h"

// A task for a Thread target or the ThreadPool.
class OV_EXPORT IRunnable : public RefBase {
 public:
  virtual void run() = 0;
};
