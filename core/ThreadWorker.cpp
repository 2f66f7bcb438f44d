#include <sched.h>

#include "core/ThreadPool.h"

ThreadWorker::ThreadWorker(ThreadPool* owner) : mPool(owner) {}

void ThreadWorker::startWork() {
  mWorking.store(true);
  // A worker whose thread never came up must not count as draining the queue.
  if (start() != 0) mWorking.store(false);
}

void ThreadWorker::stopWork() { mWorking.store(false); }

void ThreadWorker::run() {
  if (mPool == nullptr || !mWorking.load()) return;
  do {
    mPool->mQueueLock.lock();
    while (mWorking.load() && mPool->mTasks.empty()) mPool->mTaskAvailable.wait(mPool->mQueueLock);
    if (mPool->mTasks.empty()) {
      // Woken to stop.
      mPool->mQueueLock.unlock();
      break;
    }
    auto_ptr<IRunnable> task = mPool->mTasks.front();
    mPool->mTasks.erase(mPool->mTasks.begin());
    mPool->mQueueLock.unlock();
    if (task != nullptr) task->run();
  } while (mWorking.load());
}
