#include "core/RWLock.h"

#include "core/Mutex.h"

RWLock::RWLock() { pthread_rwlock_init(&mLock, nullptr); }

RWLock::RWLock(int type, const char* /*name*/) {
  if (type == Mutex::SHARED) {
    pthread_rwlockattr_t attr;
    pthread_rwlockattr_init(&attr);
    pthread_rwlockattr_setpshared(&attr, PTHREAD_PROCESS_SHARED);
    pthread_rwlock_init(&mLock, &attr);
    pthread_rwlockattr_destroy(&attr);
  } else {
    pthread_rwlock_init(&mLock, nullptr);
  }
}

RWLock::~RWLock() { pthread_rwlock_destroy(&mLock); }

int RWLock::readLock() { return -pthread_rwlock_rdlock(&mLock); }

int RWLock::tryReadLock() { return -pthread_rwlock_tryrdlock(&mLock); }

int RWLock::writeLock() { return -pthread_rwlock_wrlock(&mLock); }

int RWLock::tryWriteLock() { return -pthread_rwlock_trywrlock(&mLock); }

int RWLock::unlock() { return pthread_rwlock_unlock(&mLock); }
