#include "core/ThreadPool.h"

#include <sched.h>

ThreadWorker::ThreadWorker(ThreadPool* owner) : pool(owner) {}

void ThreadWorker::startWork() {
  working.store(true);
  // A worker whose thread never came up must not count as draining the queue.
  if (start() != 0) working.store(false);
}

void ThreadWorker::stopWork() { working.store(false); }

void ThreadWorker::run() {
  if (pool == nullptr || !working.load()) return;
  do {
    pool->queueLock.lock();
    while (working.load() && pool->tasks.empty()) pool->taskAvailable.wait(pool->queueLock);
    if (pool->tasks.empty()) {
      // Woken to stop.
      pool->queueLock.unlock();
      break;
    }
    auto_ptr<IRunnable> task = pool->tasks.front();
    pool->tasks.erase(pool->tasks.begin());
    pool->queueLock.unlock();
    if (task != nullptr) task->run();
  } while (working.load());
}

ThreadPool::ThreadPool(int count) : threadCount(count) {
  for (int i = 0; i < count; ++i) workers.push_back(auto_ptr<ThreadWorker>(new ThreadWorker(this)));
}

ThreadPool::~ThreadPool() { shutdown(); }

void ThreadPool::start() {
  // A second start must not put a second thread on a worker that already runs.
  for (auto& worker : workers) {
    if (!worker->isWorking()) worker->startWork();
  }
}

int ThreadPool::submit(IRunnable* task) {
  // The queue's count is the only one taken here, and under the lock: a
  // count held past the unlock could be the last one, and the submitter
  // would then delete a task that a worker has run.
  {
    Mutex::Autolock hold(queueLock);
    tasks.emplace_back(task);
  }
  return taskAvailable.signal();
}

int ThreadPool::submit(auto_ptr<IRunnable>& task) {
  queueLock.lock();
  tasks.push_back(task);
  queueLock.unlock();
  return taskAvailable.signal();
}

void ThreadPool::shutdown() {
  bool anyWorking = false;
  for (auto& worker : workers) anyWorking = anyWorking || worker->isWorking();
  // Without running workers the queue would never drain.
  while (anyWorking) {
    queueLock.lock();
    bool drained = tasks.empty();
    queueLock.unlock();
    if (drained) break;
    sched_yield();
  }

  queueLock.lock();
  for (auto& worker : workers) worker->stopWork();
  taskAvailable.broadcast();
  queueLock.unlock();
  for (auto& worker : workers) worker->join();
  workers.clear();

  queueLock.lock();
  std::vector<auto_ptr<IRunnable>> left;
  left.swap(tasks);
  queueLock.unlock();
}
