#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "core/Condition.h"
#include "core/Export.h"
#include "core/Mutex.h"
#include "core/RefBase.h"
#include "core/Thread.h"
#include "panorama/PanoramaFrame.h"

// Result codes of startup and pushFrame (the misspelling is the interface's).
enum PanoramaResultType {
  PANORAMA_RESULT_TYPE_NO_ERROR = 0,
  PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY = 1,  // spelling is part of the interface
  PANORAMA_RESULT_TYPE_WRONG_DIRECTION = 2,
  PANORAMA_RESULT_TYPE_INVALID_PARAMETER = 3,
  PANORAMA_RESULT_TYPE_INVALID_OPERATOR = 4,
};

// Input layouts accepted by startup; queued frames are always YV12.
enum PanoramaFormatType {
  PANORAMA_FORMAT_TYPE_NV12 = 1,
  PANORAMA_FORMAT_TYPE_NV21 = 2,
  PANORAMA_FORMAT_TYPE_YV12 = 3,
};

// Sweep directions; 0 until the first accepted frame fixes one.
enum PanoramaDirectionType {
  PANORAMA_DIRECTION_TYPE_NONE = 0,
  PANORAMA_DIRECTION_TYPE_1 = 1,  // mostly along Y, dY >= 0: offsetX >= 0
  PANORAMA_DIRECTION_TYPE_2 = 2,  // mostly along Y, dY < 0: offsetX < 0
  PANORAMA_DIRECTION_TYPE_3 = 3,  // mostly along X, dX >= 0: offsetY >= 0
  PANORAMA_DIRECTION_TYPE_4 = 4,  // mostly along X, dX < 0: offsetY < 0
};

namespace orvan::panorama {
class PanoramaBufferPool;
}  // namespace orvan::panorama

// Places panorama preview frames from gyroscope readings alone and queues
// them, repacked to YV12, for a worker thread that keeps the last one. The
// caller's thread gets each frame's offset at once; nothing is stitched.
//
// Offsets cross over: the horizontal one comes from the Y reading (35 px per
// whole unit of difference), the vertical one from the X reading (15 px).
class OV_EXPORT PanoramaModule : public Thread {
 public:
  // Pixels of offset per whole unit of gyroscope difference.
  static const int kPixelsPerUnitX = 35;
  static const int kPixelsPerUnitY = 15;
  // Margin by which a sweep along Y wins over one along X.
  static const int kDirectionMargin = 2;

  PanoramaModule();
  ~PanoramaModule() override;

  PanoramaModule(const PanoramaModule&) = delete;
  PanoramaModule& operator=(const PanoramaModule&) = delete;

  // The worker: takes frames from the queue until the module stops.
  void run() override;

  // 0, or 3 for a bad size or format (including frames whose byte count does
  // not fit in 32 bits). While running it stops the old worker first. If the
  // worker thread cannot be started the module stays stopped (pushes answer
  // 4). The reference readings of an earlier run are kept.
  virtual int startup(int width, int height, int format, void (*onError)(int));
  // Offsets are written for results 0, 1 and 2; buffer stays the caller's.
  virtual int pushFrame(unsigned char* buffer, float gyroX, float gyroY, int& offsetX, int& offsetY);
  virtual int getDirection();
  // No result picture is produced: returns 0 and leaves out untouched.
  virtual int popFrame(unsigned char* out);
  // Stops and joins the worker, empties the queue; returns 0.
  virtual int close();

  // Observers for tools and tests.
  bool isRunning() const { return mRunning.load(); }
  int getQueuedCount();
  // Bytes of one input frame (width x height x 3 / 2) for the current size.
  int getFrameBytes() const { return static_cast<int>(int64_t{mWidth} * mHeight * 3 / 2); }
  // The queued frames, oldest first.
  std::vector<auto_ptr<PanoramaFrame>> getQueuedFrames();
  // The last frame the worker took; read it after close.
  auto_ptr<PanoramaFrame> getResultFrame() const { return mResult; }
  float getRefGyroX() const { return mRefGyroX; }
  float getRefGyroY() const { return mRefGyroY; }

 private:
  void clearQueue();

  int mWidth = 0;
  int mHeight = 0;
  int mFormat = 0;
  std::atomic<int> mDirection{0};
  std::atomic<bool> mRunning{false};
  void (*mOnError)(int) = nullptr;
  float mRefGyroX = 0.0f;
  float mRefGyroY = 0.0f;
  Mutex mQueueLock;
  Mutex mWaitLock;
  Mutex mSpareLock;
  Condition mFrameReady;
  Condition mFinished;
  std::vector<auto_ptr<PanoramaFrame>> mFrames;
  // Size of mFrames, so the worker can poll it without the queue lock.
  std::atomic<int> mQueued{0};
  auto_ptr<PanoramaFrame> mResult;
  // Frame buffers of this run's size, recycled so that a steady sweep does
  // not fault fresh pages in for every frame.
  auto_ptr<orvan::panorama::PanoramaBufferPool> mPool;
};
