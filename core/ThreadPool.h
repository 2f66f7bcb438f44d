#pragma once

#include <atomic>
#include <vector>

#include "core/Condition.h"
#include "core/Export.h"
#include "core/Mutex.h"
#include "core/RefBase.h"
#include "core/Runnable.h"
#include "core/Thread.h"

class ThreadPool;

class OV_EXPORT ThreadWorker : public Thread {
 public:
  explicit ThreadWorker(ThreadPool* pool);

  void startWork();
  // Only clears the flag: the worker leaves its loop after its current task
  // or when it next finds the queue empty.
  void stopWork();
  bool isWorking() const { return mWorking.load(); }

  void run() override;

 private:
  friend class ThreadPool;
  std::atomic<bool> mWorking{false};
  ThreadPool* mPool;  // not counted: the pool owns its workers
};

// Fixed set of workers taking tasks from one FIFO queue in submission order.
class OV_EXPORT ThreadPool : public RefBase {
 public:
  explicit ThreadPool(int threadCount);
  ~ThreadPool() override;

  void start();
  // A null task is queued too: it wakes a worker, which runs nothing.
  int submit(IRunnable* task);
  int submit(auto_ptr<IRunnable>& task);
  // Waits for the queue to drain, then stops and joins every worker.
  void shutdown();

  int getThreadCount() const { return mThreadCount; }

 private:
  friend class ThreadWorker;

  int mThreadCount;
  std::vector<auto_ptr<ThreadWorker>> mWorkers;
  std::vector<auto_ptr<IRunnable>> mTasks;
  Condition mTaskAvailable;
  Mutex mQueueLock;
};
