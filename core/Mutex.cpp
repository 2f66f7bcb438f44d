#include "core/Mutex.h"

#include <cerrno>

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
