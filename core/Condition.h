#pragma once

#include <pthread.h>

#include "core/Export.h"
#include "core/Mutex.h"
#include "core/RefBase.h"

class OV_EXPORT Condition : public RefBase {
 public:
  enum WakeUpType { WAKE_UP_ONE = 0, WAKE_UP_ALL = 1 };

  Condition();
  // type 1 makes the condition process-shared.
  explicit Condition(int type);
  ~Condition() override;

  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  // Both return 0 or -errno. The caller holds m.
  int wait(Mutex& m);
  // reltime (ns) is handed to pthread_cond_timedwait as an absolute deadline
  // near the epoch, so every short wait times out at once: callers poll.
  int waitRelative(Mutex& m, long long reltime);

  // These return the system's result unchanged.
  int signal();
  int signal(WakeUpType type);
  int broadcast();

 private:
  pthread_cond_t mCond;
};
