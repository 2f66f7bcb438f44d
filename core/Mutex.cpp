#include "core/Mutex.h"

#include <cerrno>

#include "core/Condition.h"

Mutex::Mutex() { pthread_mutex_init(&mMutex, nullptr); }

Mutex::Mutex(int type, const char* /*name*/) {
  if (type == SHARED) {
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_setpshared(&attr, PTHREAD_PROCESS_SHARED);
    pthread_mutex_init(&mMutex, &attr);
    pthread_mutexattr_destroy(&attr);
  } else {
    pthread_mutex_init(&mMutex, nullptr);
  }
}

Mutex::~Mutex() { pthread_mutex_destroy(&mMutex); }

int Mutex::lock() { return -pthread_mutex_lock(&mMutex); }

int Mutex::tryLock() { return -pthread_mutex_trylock(&mMutex); }

int Mutex::unlock() { return pthread_mutex_unlock(&mMutex); }

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
