#include "panorama/PanoramaModule.h"

#include <sched.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/Log.h"
#include "core/Memory.h"
#include "core/SizeRule.h"
#include "image/ColorConvert.h"
#include "panorama/PanoramaBufferPool.h"

namespace {

// Float to int as the ARM target converts: toward zero, saturating, NaN to 0
// (a plain C++ cast of an out-of-range value is undefined).
int truncToInt(float v) {
  if (std::isnan(v)) return 0;
  if (v >= 2147483648.0f) return INT32_MAX;
  if (v <= -2147483648.0f) return INT32_MIN;
  return static_cast<int>(v);
}

// 32-bit wrap-around product, as the target's multiply gives.
int wrapMul(int a, int b) { return static_cast<int>(static_cast<uint32_t>(static_cast<int64_t>(a) * b)); }

}  // namespace

namespace {

// A queued frame whose buffer goes back to the pool instead of the allocator.
class PooledFrame : public PanoramaFrame {
 public:
  PooledFrame(int index, int width, int height, int format, unsigned char* data,
              const auto_ptr<orvan::panorama::PanoramaBufferPool>& pool)
      : PanoramaFrame(index, width, height, format, data), mPool(pool) {}
  ~PooledFrame() override {
    if (data != nullptr) mPool->give(data);
    data = nullptr;
  }

 private:
  auto_ptr<orvan::panorama::PanoramaBufferPool> mPool;
};

}  // namespace

PanoramaModule::PanoramaModule() = default;

PanoramaModule::~PanoramaModule() {
  // A module deleted while running must not leave its worker behind.
  if (mRunning.load()) close();
  mResult = nullptr;
  clearQueue();
}

void PanoramaModule::clearQueue() {
  Mutex::Autolock guard(mQueueLock);
  for (auto& frame : mFrames) frame = nullptr;
  mFrames.clear();
  mQueued.store(0);
}

int PanoramaModule::startup(int width, int height, int format, void (*onError)(int)) {
  OV_LOGD("PanoramaModule::startup width:%d, height:%d, format:%d, onErrorCb:%p\n", width, height, format,
          reinterpret_cast<void*>(onError));
  if (width < 1 || height < 1 || format < 1 || format > 3) return PANORAMA_RESULT_TYPE_INVALID_PARAMETER;
  // A YV12 frame of W x H x 3 / 2 bytes, sized with ints.
  const int64_t pixels = orvan::sizerule::intCount(width, height);
  if (pixels < 0 || orvan::sizerule::within(orvan::sizerule::kIntLimit, pixels * 3 / 2) < 0)
    return PANORAMA_RESULT_TYPE_INVALID_PARAMETER;
  // A startup while running begins a new run; the old worker is stopped
  // first, as a second worker would orphan its thread.
  if (mRunning.load()) {
    mRunning.store(false);
    join();
  }

  mOnError = onError;
  mWidth = width;
  mHeight = height;
  mFormat = format;
  mDirection.store(PANORAMA_DIRECTION_TYPE_NONE);
  clearQueue();
  mPool = new orvan::panorama::PanoramaBufferPool(static_cast<unsigned int>(pixels * 3 / 2));
  mRunning.store(true);
  // No worker (logged by start): the module reads as stopped, so pushes are
  // refused instead of queueing frames nobody takes.
  if (start() != 0) mRunning.store(false);
  return PANORAMA_RESULT_TYPE_NO_ERROR;
}

int PanoramaModule::pushFrame(unsigned char* buffer, float gyroX, float gyroY, int& offsetX, int& offsetY) {
  OV_LOGD("PanoramaModule::pushFrame pBuffer:%p, gyroX:%f, gyroY:%f\n", static_cast<void*>(buffer),
          static_cast<double>(gyroX), static_cast<double>(gyroY));
  if (!mRunning.load()) {
    OV_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_OPERATOR   \n");
    return PANORAMA_RESULT_TYPE_INVALID_OPERATOR;
  }
  if (buffer == nullptr) {
    OV_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_PARAMETER\n");
    return PANORAMA_RESULT_TYPE_INVALID_PARAMETER;
  }
  // The first frame (or one after a reading of exactly 0) only sets the reference.
  if (mRefGyroX == 0.0f || mRefGyroY == 0.0f) {
    mRefGyroX = gyroX;
    mRefGyroY = gyroY;
    OV_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_INVALID_PARAMETER\n");
    return PANORAMA_RESULT_TYPE_INVALID_PARAMETER;
  }

  // Whole units only, so offsets move in steps of 35 and 15; the caller gets
  // them even when the frame is refused below.
  int dY = truncToInt(mRefGyroY - gyroY);
  int dX = truncToInt(mRefGyroX - gyroX);
  offsetX = wrapMul(dY, kPixelsPerUnitX);
  offsetY = wrapMul(dX, kPixelsPerUnitY);

  int64_t absY = std::llabs(static_cast<int64_t>(dY));
  int64_t absX = std::llabs(static_cast<int64_t>(dX));
  int direction;
  if (absY + kDirectionMargin >= absX) {
    direction = dY >= 0 ? PANORAMA_DIRECTION_TYPE_1 : PANORAMA_DIRECTION_TYPE_2;
  } else {
    direction = dX >= 0 ? PANORAMA_DIRECTION_TYPE_3 : PANORAMA_DIRECTION_TYPE_4;
  }
  int fixed = mDirection.load();
  if (fixed != PANORAMA_DIRECTION_TYPE_NONE && fixed != direction) {
    OV_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_WRONG_DIRECTION   \n");
    return PANORAMA_RESULT_TYPE_WRONG_DIRECTION;
  }
  mDirection.store(direction);

  int size = getFrameBytes();
  unsigned char* pixels = mPool->take();
  if (pixels == nullptr) {
    OV_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY   1\n");
    return PANORAMA_RESULT_TYPE_OUT_OF_MEMRORY;
  }
  switch (mFormat) {
    case PANORAMA_FORMAT_TYPE_NV12:
      convert_nv12_to_yv12(buffer, pixels, mWidth, mHeight);
      break;
    case PANORAMA_FORMAT_TYPE_NV21:
      convert_nv21_to_yv12(buffer, pixels, mWidth, mHeight);
      break;
    case PANORAMA_FORMAT_TYPE_YV12:
      std::memcpy(pixels, buffer, static_cast<size_t>(size));
      break;
    default:
      break;
  }

  {
    Mutex::Autolock guard(mQueueLock);
    auto_ptr<PanoramaFrame> frame(new PooledFrame(static_cast<int>(mFrames.size()), mWidth, mHeight,
                                                  PANORAMA_FORMAT_TYPE_YV12, pixels, mPool));
    mFrames.push_back(frame);
    mQueued.store(static_cast<int>(mFrames.size()));
  }
  mFrameReady.signal();
  OV_LOGD("PanoramaModule::pushFrame   PANORAMA_RESULT_TYPE_NO_ERROR\n");
  return PANORAMA_RESULT_TYPE_NO_ERROR;
}

int PanoramaModule::getDirection() { return mDirection.load(); }

int PanoramaModule::popFrame(unsigned char*) { return 0; }

int PanoramaModule::close() {
  mRunning.store(false);
  join();
  clearQueue();
  mPool = nullptr;
  return 0;
}

int PanoramaModule::getQueuedCount() {
  Mutex::Autolock guard(mQueueLock);
  return static_cast<int>(mFrames.size());
}

std::vector<auto_ptr<PanoramaFrame>> PanoramaModule::getQueuedFrames() {
  Mutex::Autolock guard(mQueueLock);
  return mFrames;
}

void PanoramaModule::run() {
  auto_ptr<PanoramaFrame> held;
  while (mRunning.load()) {
    mWaitLock.lock();
    // The wait polls (waitRelative returns at once for short durations). It
    // ends with a frame to take, or when the module has stopped with nothing
    // left to take.
    bool stopped = false;
    while (mQueued.load() == 0) {
      if (!mRunning.load()) {
        stopped = true;
        break;
      }
      mFrameReady.waitRelative(mWaitLock, 1000);
      // Give the core away between polls: the caller's thread has the
      // frames to produce.
      if (mQueued.load() == 0) sched_yield();
    }
    if (stopped) {
      mWaitLock.unlock();
      break;
    }

    auto_ptr<PanoramaFrame> taken;
    {
      Mutex::Autolock guard(mQueueLock);
      if (!mFrames.empty()) {
        taken = mFrames.front();
        mFrames.erase(mFrames.begin());
      }
      mQueued.store(static_cast<int>(mFrames.size()));
    }
    if (taken != nullptr) {
      OV_LOGD("get frame .....................\n");
      held = taken;
    }
    mWaitLock.unlock();
  }
  mResult = held;
  mFinished.signal();
}
