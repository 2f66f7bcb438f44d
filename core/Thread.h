#pragma once

#include <pthread.h>

#include <atomic>

#include "core/Export.h"
#include "core/RefBase.h"
#include "core/Runnable.h"

// A pthread owned by an object: subclasses override run(), or an owner sets a
// target whose run() is called instead.
class OV_EXPORT Thread : public RefBase {
 public:
  Thread() = default;
  ~Thread() override;

  // 0 on success, else the positive error number (logged).
  virtual int start();
  virtual void run();
  // Marks the thread exited first, so a body that has not begun is skipped,
  // then waits for it. A thread that was never started is not joined.
  virtual int join();

  // Sleeps through Condition::waitRelative, which returns at once for any
  // short duration: loops that call it poll.
  static void sleep(long long ns);

  bool hasExited() const { return exited.load(); }

  // Run instead of run() when set; the owner sets it before start().
  auto_ptr<IRunnable> target;

 protected:
  static void* thread_proc(void* arg);

  pthread_t thread{};
  std::atomic<bool> exited{false};

 private:
  bool started = false;
};
