#include "supercapture/SuperCapture.h"

#include <sched.h>

#include <new>

#include "core/Log.h"
#include "core/Memory.h"
#include "supercapture/SuperCaptureScheme.h"

namespace {

// A missing plane array reads as four null planes.
unsigned char* plane(unsigned char** planes, int i) { return planes != nullptr ? planes[i] : nullptr; }

void logPlanes(const char* entry, intptr_t handle, unsigned char** planes) {
  OV_LOGD("%s   handle:%zd, planes[0]:%p, planes[1]:%p, planes[2]:%p, planes[3]:%p\n", entry, handle,
          static_cast<void*>(plane(planes, 0)), static_cast<void*>(plane(planes, 1)),
          static_cast<void*>(plane(planes, 2)), static_cast<void*>(plane(planes, 3)));
}

bool allNull(unsigned char** planes) {
  return plane(planes, 0) == nullptr && plane(planes, 1) == nullptr && plane(planes, 2) == nullptr &&
         plane(planes, 3) == nullptr;
}

// Mean of the even-offset bytes (the luma of a two-byte-per-pixel frame).
// Summed in 64 bits so that large bright frames cannot overflow.
int brightness(const unsigned char* p, unsigned int pixels) {
  uint64_t sum = 0;
  for (unsigned int i = 0; i < pixels; ++i) sum += p[2 * static_cast<size_t>(i)];
  return static_cast<int>(sum / pixels);
}

}  // namespace

SuperCapture::SuperCapture()
    : mWidth(0), mHeight(0), mFormat(0), mRunning(false), mFinished(true), mWorkerStarted(false) {}

SuperCapture::~SuperCapture() {
  // Deleting a pipeline whose worker still runs must not leave the thread on
  // a freed object.
  if (mWorkerStarted) {
    mRunning.store(false);
    join();
  }
}

int SuperCapture::init(unsigned int w, unsigned int h, unsigned int fmt) {
  OV_LOGD("SuperSensor::init ..............................................\n");
  if (w == 0 || h == 0 || fmt == 0 || fmt > orvan::supercapture::kFormatPacked) return RESULT_INVALID;
  if (!orvan::supercapture::sizeFits(w, h) || mWorkerStarted) return RESULT_INVALID;
  mWidth = w;
  mHeight = h;
  mFormat = fmt;
  {
    Mutex::Autolock hold(mQueueLock);
    mQueue.clear();
  }
  mRunning.store(true);
  {
    Mutex::Autolock hold(mResultLock);
    mFinished = false;
  }
  if (start() == 0) {
    mWorkerStarted = true;
  } else {
    // No worker will ever report: popFrame must not wait for one.
    mRunning.store(false);
    Mutex::Autolock hold(mResultLock);
    mFinished = true;
  }
  return RESULT_OK;
}

int SuperCapture::pushFrame(unsigned char** planes) {
  OV_LOGD(
      "SuperSensor::pushFrame ..............................................planes[0]:%p, "
      "planes[1]:%p, planes[2]:%p, planes[3]:%p \n",
      static_cast<void*>(plane(planes, 0)), static_cast<void*>(plane(planes, 1)),
      static_cast<void*>(plane(planes, 2)), static_cast<void*>(plane(planes, 3)));
  if (allNull(planes)) return RESULT_INVALID;
  if (plane(planes, 0) == nullptr || mWidth == 0 || mHeight == 0 ||
      mFormat != orvan::supercapture::kFormatPacked)
    return RESULT_REFUSED;
  unsigned int bytes = mWidth * mHeight * 2;  // init checked that it fits
  auto* copy = static_cast<unsigned char*>(galloc_malloc(bytes));
  if (copy == nullptr) return RESULT_REFUSED;
  galloc_memcpy(copy, planes[0], bytes);
  unsigned char* owned[4] = {copy, nullptr, nullptr, nullptr};
  auto* raw = new (std::nothrow) SuperCaptureFrame(0, mWidth, mHeight, 1, owned);
  if (raw == nullptr) {
    galloc_free(copy);
    return RESULT_REFUSED;
  }
  auto_ptr<SuperCaptureFrame> frame(raw);
  OV_LOGD("SuperCapture::pushFrame success\n");
  {
    // The worker removes frames under this lock, so appends take it too.
    Mutex::Autolock hold(mQueueLock);
    frame->id = static_cast<unsigned int>(mQueue.size()) + 1;
    try {
      mQueue.push_back(frame);
    } catch (const std::bad_alloc&) {
      return RESULT_REFUSED;  // nothing throws across the flat interface; the frame is freed
    }
  }
  mFrameAvailable.signal();
  return RESULT_OK;
}

void SuperCapture::run() {
  OV_LOGD("SuperCapture::run  startup...............................\n");
  auto_ptr<SuperCaptureFrame> current;
  // Exactly one of the two is set, by the first frame taken.
  auto_ptr<SuperCaptureLowLightScheme> low;
  auto_ptr<SuperCaptureHighLightScheme> high;

  if (mRunning.load()) {
    do {
      // Only the take happens under the queue lock: a push never waits for a
      // merge. A frame once taken is merged before `running` is looked at
      // again, so the frame in hand is always part of the result.
      bool taken = false;
      mQueueLock.lock();
      while (mQueue.empty()) {
        if (!mRunning.load()) break;
        // Returns at once (the deadline lies in the past): the worker polls.
        mFrameAvailable.waitRelative(mQueueLock, 1000);
        if (mQueue.empty()) {
          // Let the producer in rather than spin on the lock.
          mQueueLock.unlock();
          sched_yield();
          mQueueLock.lock();
        }
      }
      if (!mQueue.empty()) {
        current = mQueue.back();
        mQueue.pop_back();
        taken = true;
      }
      mQueueLock.unlock();
      if (taken) {
        OV_LOGD("SuperCapture::run   getFrame\n");
        if (low == nullptr && high == nullptr) {
          int lum = brightness(current->planes[0], mWidth * mHeight);
          OV_LOGD("SuperCapture::run lum:%d select scheme", lum);
          if (lum < kLowLightThreshold) {
            low = new (std::nothrow) SuperCaptureLowLightScheme();
            if (low != nullptr) low->init(mWidth, mHeight, mFormat);
          } else {
            high = new (std::nothrow) SuperCaptureHighLightScheme();
            if (high != nullptr) high->init(mWidth, mHeight, mFormat);
          }
        }
        if (low != nullptr) low->process(current);
        if (high != nullptr) high->process(current);
      }
    } while (mRunning.load());
  }

  if (low != nullptr || high != nullptr) {
    OV_LOGD("Scheme return result\n");
    if (low != nullptr) low->getResult(current);
    if (high != nullptr) high->getResult(current);
  }
  {
    // Set and signalled under the lock popFrame checks under: no lost wake-up.
    Mutex::Autolock hold(mResultLock);
    mResult = current;
    mFinished = true;
    mResultReady.signal();
  }
}

int SuperCapture::popFrame(unsigned char** planes) {
  OV_LOGD("SuperCapture::popFrame .....................0");
  if (allNull(planes)) return RESULT_INVALID;
  OV_LOGD("SuperCapture::popFrame ..................... 1");
  mRunning.store(false);
  OV_LOGD("SuperCapture::popFrame ..................... 2");
  auto_ptr<SuperCaptureFrame> merged;
  {
    Mutex::Autolock hold(mResultLock);
    while (!mFinished) mResultReady.wait(mResultLock);
    merged = mResult;
  }
  OV_LOGD("SuperCapture::popFrame ..................... 3");
  if (merged != nullptr) galloc_memcpy(planes[0], merged->planes[0], mWidth * mHeight * 2);
  OV_LOGD("SuperCapture::popFrame ..................... 4");
  return RESULT_OK;
}

int SuperCapture::final() {
  OV_LOGD("SuperCapture::final .....................  1");
  mRunning.store(false);
  OV_LOGD("SuperCapture::final .....................  2");
  join();
  mWorkerStarted = false;
  {
    // A worker skipped by the join never reports; nobody may wait for it.
    Mutex::Autolock hold(mResultLock);
    mFinished = true;
  }
  OV_LOGD("SuperCapture::final .....................  3");
  {
    Mutex::Autolock hold(mQueueLock);
    mQueue.clear();
  }
  OV_LOGD("SuperCapture::final .....................  4");
  return RESULT_OK;
}

unsigned int SuperCapture::getQueuedCount() {
  Mutex::Autolock hold(mQueueLock);
  return static_cast<unsigned int>(mQueue.size());
}

auto_ptr<SuperCaptureFrame> SuperCapture::getResultFrame() {
  Mutex::Autolock hold(mResultLock);
  return mResult;
}

// ---- flat interface

intptr_t super_capture_module_init(int width, int height, int format) {
  auto* capture = new (std::nothrow) SuperCapture();
  OV_LOGD("super_capture_module_init   width:%d, height:%d, format:%d\n", width, height, format);
  if (capture == nullptr) return 0;
  // Negative sizes become huge unsigned ones, which init refuses.
  if (capture->init(static_cast<unsigned int>(width), static_cast<unsigned int>(height),
                    static_cast<unsigned int>(format)) != SuperCapture::RESULT_OK) {
    delete capture;
    return 0;
  }
  return reinterpret_cast<intptr_t>(capture);
}

int super_capture_module_push_frame(intptr_t handle, unsigned char** planes) {
  logPlanes("super_capture_module_push_frame", handle, planes);
  if (handle == 0) return SuperCapture::RESULT_INVALID;
  return reinterpret_cast<SuperCapture*>(handle)->pushFrame(planes);
}

int super_capture_module_pop_frame(intptr_t handle, unsigned char** planes) {
  logPlanes("super_capture_module_pop_frame", handle, planes);
  if (handle == 0) return SuperCapture::RESULT_INVALID;
  return reinterpret_cast<SuperCapture*>(handle)->popFrame(planes);
}

void super_capture_module_destroy(intptr_t handle) {
  OV_LOGD("super_capture_module_destroy   handle:%zd\n", handle);
  if (handle != 0) {
    auto* capture = reinterpret_cast<SuperCapture*>(handle);
    capture->final();
    delete capture;
  }
  OV_LOGD("super_capture_module_destroy   handle:%zd   2\n", handle);
}
