#pragma once

#include <pthread.h>

#include "core/Export.h"
#include "core/RefBase.h"

// Thin pthread read-write lock: the lock calls return 0 or -errno, unlock the
// raw system result.
class OV_EXPORT RWLock : public RefBase {
 public:
  RWLock();
  // type 1 makes the lock process-shared; name is informational only.
  RWLock(int type, const char* name);
  ~RWLock() override;

  RWLock(const RWLock&) = delete;
  RWLock& operator=(const RWLock&) = delete;

  int readLock();
  int tryReadLock();
  int writeLock();
  int tryWriteLock();
  int unlock();

 private:
  pthread_rwlock_t mLock;
};
