#include "core/ThreadPool.h"

#include <sched.h>

ThreadPool::ThreadPool(int count) : mThreadCount(count) {
  for (int i = 0; i < count; ++i) mWorkers.push_back(auto_ptr<ThreadWorker>(new ThreadWorker(this)));
}

ThreadPool::~ThreadPool() { shutdown(); }

void ThreadPool::start() {
  // A second start must not put a second thread on a worker that already runs.
  for (auto& worker : mWorkers) {
    if (!worker->isWorking()) worker->startWork();
  }
}

int ThreadPool::submit(IRunnable* task) {
  // The queue's count is the only one taken here, and under the lock: a
  // count held past the unlock could be the last one, and the submitter
  // would then delete a task that a worker has run.
  {
    Mutex::Autolock hold(mQueueLock);
    mTasks.emplace_back(task);
  }
  return mTaskAvailable.signal();
}

int ThreadPool::submit(auto_ptr<IRunnable>& task) {
  mQueueLock.lock();
  mTasks.push_back(task);
  mQueueLock.unlock();
  return mTaskAvailable.signal();
}

void ThreadPool::shutdown() {
  bool anyWorking = false;
  for (auto& worker : mWorkers) anyWorking = anyWorking || worker->isWorking();
  // Without running workers the queue would never drain.
  while (anyWorking) {
    mQueueLock.lock();
    bool drained = mTasks.empty();
    mQueueLock.unlock();
    if (drained) break;
    sched_yield();
  }

  mQueueLock.lock();
  for (auto& worker : mWorkers) worker->stopWork();
  mTaskAvailable.broadcast();
  mQueueLock.unlock();
  for (auto& worker : mWorkers) worker->join();
  mWorkers.clear();

  mQueueLock.lock();
  std::vector<auto_ptr<IRunnable>> left;
  left.swap(mTasks);
  mQueueLock.unlock();
}
