#include "core/Condition.h"

#include <ctime>

Condition::Condition() { pthread_cond_init(&mCond, nullptr); }

Condition::Condition(int type) {
  if (type == Mutex::SHARED) {
    pthread_condattr_t attr;
    pthread_condattr_init(&attr);
    pthread_condattr_setpshared(&attr, PTHREAD_PROCESS_SHARED);
    pthread_cond_init(&mCond, &attr);
    pthread_condattr_destroy(&attr);
  } else {
    pthread_cond_init(&mCond, nullptr);
  }
}

Condition::~Condition() { pthread_cond_destroy(&mCond); }

int Condition::wait(Mutex& m) { return -pthread_cond_wait(&mCond, &m.mMutex); }

int Condition::waitRelative(Mutex& m, long long reltime) {
  struct timespec deadline;
  deadline.tv_sec = static_cast<time_t>(reltime / 1000000000LL);
  deadline.tv_nsec = static_cast<long>(reltime % 1000000000LL);
  return -pthread_cond_timedwait(&mCond, &m.mMutex, &deadline);
}

int Condition::signal() { return pthread_cond_signal(&mCond); }

int Condition::signal(WakeUpType type) {
  return type == WAKE_UP_ONE ? pthread_cond_signal(&mCond) : pthread_cond_broadcast(&mCond);
}

int Condition::broadcast() { return pthread_cond_broadcast(&mCond); }
