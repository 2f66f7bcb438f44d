#pragma once

#include <pthread.h>

#include "core/Export.h"
#include "core/RefBase.h"

class Condition;

// Thin pthread mutex. lock/tryLock return 0 or -errno; unlock returns the raw
// system result.
class OV_EXPORT Mutex : public RefBase {
 public:
  enum { PRIVATE = 0, SHARED = 1 };

  Mutex();
  // type 1 makes the mutex process-shared; name is informational only.
  Mutex(int type, const char* name);
  ~Mutex() override;

  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  int lock();
  int tryLock();
  int unlock();

  // Scoped lock in the libutils style.
  class Autolock {
   public:
    explicit Autolock(Mutex& m) : mLock(m) { mLock.lock(); }
    ~Autolock() { mLock.unlock(); }
    Autolock(const Autolock&) = delete;
    Autolock& operator=(const Autolock&) = delete;

   private:
    Mutex& mLock;
  };

 private:
  friend class Condition;
  pthread_mutex_t mMutex;
};
