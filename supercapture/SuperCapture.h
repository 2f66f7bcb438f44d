#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "core/Condition.h"
#include "core/Export.h"
#include "core/Mutex.h"
#include "core/RefBase.h"
#include "core/Thread.h"
#include "supercapture/SuperCaptureFrame.h"

// Merges one burst on a worker thread of its own. Frames are pushed by the
// camera side, taken newest first by the worker, and folded into the merge
// scheme chosen from the first frame taken; popFrame closes the burst and
// hands out the merged picture.
class OV_EXPORT SuperCapture : public Thread {
 public:
  SuperCapture();
  ~SuperCapture() override;

  SuperCapture(const SuperCapture&) = delete;
  SuperCapture& operator=(const SuperCapture&) = delete;

  // Results of init, pushFrame and popFrame and of the flat calls.
  enum Result : int {
    RESULT_OK = 0,
    RESULT_INVALID = -1,  // no pipeline, no plane at all, or bad init arguments
    RESULT_REFUSED = -3,  // frame refused
  };

  // 0 once the worker is started; -1 for a zero size, a format other than 1,
  // a frame too large for 32-bit byte counts, or a pipeline already running.
  int init(unsigned int width, unsigned int height, unsigned int format);
  // Copies planes[0] (W x H x 2 bytes) into the queue. -1 when no plane is
  // given, -3 when planes[0] is null, the pipeline has no size, or the copy
  // cannot be allocated.
  int pushFrame(unsigned char** planes);
  void run() override;
  // Closes the burst, waits for the worker and copies the merged frame into
  // planes[0]. -1 when no plane is given, else 0 (also with no result).
  int popFrame(unsigned char** planes);
  // Closes the burst, joins the worker and drops queued frames. Returns 0.
  int final();

  // Frames waiting for the worker. A frame the worker has taken is merged
  // before the burst's result is written, even if popFrame comes meanwhile.
  unsigned int getQueuedCount();
  // The frame the merged picture was written into (null until the worker
  // has finished, or when it never took a frame).
  auto_ptr<SuperCaptureFrame> getResultFrame();

  // Brightness of the first frame taken: the threshold between the schemes.
  static constexpr int kLowLightThreshold = 25;

 private:
  unsigned int mWidth;
  unsigned int mHeight;
  unsigned int mFormat;
  std::vector<auto_ptr<SuperCaptureFrame>> mQueue;  // a stack: newest at the back
  auto_ptr<SuperCaptureFrame> mResult;
  std::atomic<bool> mRunning;
  Mutex mQueueLock;
  Mutex mResultLock;
  Condition mFrameAvailable;
  Condition mResultReady;
  // Under mResultLock: true once no worker will set the result any more.
  bool mFinished;
  bool mWorkerStarted;
};

// The flat interface (super_capture_module_*) is declared in orvan/orvan.h.
#include "orvan/orvan.h"
