#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "core/Condition.h"
#include "core/Mutex.h"
#include "core/RWLock.h"
#include "core/RefBase.h"
#include "core/Thread.h"
#include "core/ThreadPool.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point t0) { return std::chrono::duration<double>(Clock::now() - t0).count(); }

// join() marks the thread exited before waiting, so a body that has not begun
// yet is skipped: tests that need the body wait for it to finish first.
bool waitForExit(const Thread& t) {
  auto t0 = Clock::now();
  while (!t.hasExited() && secondsSince(t0) < 20) std::this_thread::yield();
  return t.hasExited();
}

struct CountingThread : Thread {
  void run() override { runs.fetch_add(1); }
  std::atomic<int> runs{0};
};

struct FlagTask : IRunnable {
  explicit FlagTask(std::atomic<int>* hits) : hits(hits) {}
  void run() override { hits->fetch_add(1); }
  std::atomic<int>* hits;
};

// A thread whose body is a target runnable rather than its own run().
struct TargetThread : CountingThread {
  explicit TargetThread(IRunnable* r) { target = r; }
};

TEST(Thread, StartRunsBodyOnceAndJoinWaits) {
  CountingThread t;
  EXPECT_EQ(t.start(), 0);
  EXPECT_TRUE(waitForExit(t));
  EXPECT_EQ(t.join(), 0);
  EXPECT_EQ(t.runs.load(), 1);
  // Started again after a join: a fresh thread runs the body again.
  EXPECT_EQ(t.start(), 0);
  EXPECT_TRUE(waitForExit(t));
  EXPECT_EQ(t.join(), 0);
  EXPECT_EQ(t.runs.load(), 2);
}

TEST(Thread, JoinOfNeverStartedThreadReturns) {
  CountingThread t;
  EXPECT_EQ(t.join(), 0);
  EXPECT_EQ(t.runs.load(), 0);
  EXPECT_TRUE(t.hasExited());
}

TEST(Thread, TargetRunsInsteadOfOwnBody) {
  std::atomic<int> hits{0};
  TargetThread t(new FlagTask(&hits));
  EXPECT_EQ(t.start(), 0);
  EXPECT_TRUE(waitForExit(t));
  t.join();
  EXPECT_EQ(hits.load(), 1);
  EXPECT_EQ(t.runs.load(), 0);
}

TEST(Thread, SleepAndWaitRelativeReturnAtOnce) {
  // The relative time is passed as an absolute deadline near the epoch, so
  // even a 5 s request is already in the past.
  auto t0 = Clock::now();
  Thread::sleep(5000000000LL);
  Mutex m;
  Condition c;
  m.lock();
  EXPECT_EQ(c.waitRelative(m, 1000), -ETIMEDOUT);
  EXPECT_EQ(c.waitRelative(m, 5000000000LL), -ETIMEDOUT);
  m.unlock();
  EXPECT_LT(secondsSince(t0), 4.0);
}

TEST(Locks, MutexReturnConventions) {
  for (int type : {0, 1}) {
    Mutex m(type, "test");
    EXPECT_EQ(m.lock(), 0);
    EXPECT_EQ(m.tryLock(), -EBUSY);  // a default mutex does not recurse
    EXPECT_EQ(m.unlock(), 0);
    EXPECT_EQ(m.tryLock(), 0);
    EXPECT_EQ(m.unlock(), 0);
  }
  Mutex plain;
  {
    Mutex::Autolock hold(plain);
    EXPECT_EQ(plain.tryLock(), -EBUSY);
  }
  EXPECT_EQ(plain.tryLock(), 0);
  plain.unlock();
}

TEST(Locks, RWLockReturnConventions) {
  RWLock plain;
  RWLock shared(1, "shared");
  for (RWLock* l : {&plain, &shared}) {
    EXPECT_EQ(l->readLock(), 0);
    EXPECT_EQ(l->tryReadLock(), 0);
    EXPECT_EQ(l->tryWriteLock(), -EBUSY);
    EXPECT_EQ(l->unlock(), 0);
    EXPECT_EQ(l->unlock(), 0);
    EXPECT_EQ(l->writeLock(), 0);
    EXPECT_EQ(l->tryReadLock(), -EBUSY);
    EXPECT_EQ(l->tryWriteLock(), -EBUSY);
    EXPECT_EQ(l->unlock(), 0);
    EXPECT_EQ(l->tryWriteLock(), 0);
    EXPECT_EQ(l->unlock(), 0);
  }
}

TEST(Locks, ConditionWaitSignalAndWakeAll) {
  for (int type : {0, 1}) {
    Mutex m(type, "cond");
    Condition c(type);
    EXPECT_EQ(c.signal(), 0);  // nobody waiting
    EXPECT_EQ(c.broadcast(), 0);
    bool go = false;
    int waiting = 0;
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    std::atomic<int> waitResult{0};
    for (int i = 0; i < 2; ++i) {
      waiters.emplace_back([&] {
        m.lock();
        ++waiting;
        while (!go) waitResult.fetch_or(c.wait(m) != 0 ? 1 : 0);
        m.unlock();
        woken.fetch_add(1);
      });
    }
    for (;;) {
      Mutex::Autolock hold(m);
      if (waiting == 2) break;
    }
    m.lock();
    go = true;
    EXPECT_EQ(c.signal(Condition::WAKE_UP_ALL), 0);
    m.unlock();
    auto t0 = Clock::now();
    while (woken.load() < 2 && secondsSince(t0) < 20) std::this_thread::yield();
    EXPECT_EQ(woken.load(), 2) << "one signal(WAKE_UP_ALL) must wake both waiters";
    c.broadcast();  // releases a stuck waiter so the test ends either way
    for (auto& t : waiters) t.join();
    EXPECT_EQ(waitResult.load(), 0);
  }
}

TEST(Locks, RefCountsSurviveConcurrentCopies) {
  struct Obj : RefBase {
    explicit Obj(std::atomic<int>* d) : deaths(d) {}
    ~Obj() override { deaths->fetch_add(1); }
    std::atomic<int>* deaths;
  };
  std::atomic<int> deaths{0};
  auto_ptr<Obj> shared(new Obj(&deaths));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) auto_ptr<Obj> copy(shared);
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(shared->getRefCount(), 1);
  EXPECT_EQ(deaths.load(), 0);
  shared = nullptr;
  EXPECT_EQ(deaths.load(), 1);
}

// Records its index on run and its destruction, for the pool tests.
struct Task : IRunnable {
  Task(int index, std::vector<int>* order, std::mutex* m, std::atomic<int>* runs, std::atomic<int>* deaths)
      : index(index), order(order), m(m), runs(runs), deaths(deaths) {}
  ~Task() override {
    if (deaths != nullptr) deaths->fetch_add(1);
  }
  void run() override {
    if (runs != nullptr) runs[index].fetch_add(1);
    if (order != nullptr) {
      std::lock_guard<std::mutex> g(*m);
      order->push_back(index);
    }
  }
  int index;
  std::vector<int>* order;
  std::mutex* m;
  std::atomic<int>* runs;
  std::atomic<int>* deaths;
};

TEST(ThreadPool, OneWorkerRunsTasksInSubmissionOrderIncludingEarlyOnes) {
  std::vector<int> order;
  std::mutex m;
  ThreadPool pool(1);
  EXPECT_EQ(pool.getThreadCount(), 1);
  for (int i = 0; i < 5; ++i) pool.submit(new Task(i, &order, &m, nullptr, nullptr));
  pool.start();
  for (int i = 5; i < 200; ++i) EXPECT_EQ(pool.submit(new Task(i, &order, &m, nullptr, nullptr)), 0);
  pool.shutdown();
  ASSERT_EQ(order.size(), 200u);
  for (int i = 0; i < 200; ++i) ASSERT_EQ(order[i], i);
}

TEST(ThreadPool, FourWorkersRunEachOfTenThousandTasksOnce) {
  constexpr int kTasks = 10000;
  static std::atomic<int> runs[kTasks];
  for (auto& r : runs) r.store(0);
  std::atomic<int> deaths{0};
  {
    ThreadPool pool(4);
    pool.start();
    pool.start();  // a second start adds no threads
    for (int i = 0; i < kTasks; ++i) pool.submit(new Task(i, nullptr, nullptr, runs, &deaths));
    pool.shutdown();
    // shutdown returns only once every task has been taken and has finished.
    for (int i = 0; i < kTasks; ++i) ASSERT_EQ(runs[i].load(), 1) << i;
    EXPECT_EQ(deaths.load(), kTasks);
  }
}

TEST(ThreadPool, NullTasksAreTakenAndRunNothing) {
  std::atomic<int> hits{0};
  ThreadPool pool(2);
  pool.start();
  EXPECT_EQ(pool.submit(static_cast<IRunnable*>(nullptr)), 0);
  auto_ptr<IRunnable> none;
  EXPECT_EQ(pool.submit(none), 0);
  pool.submit(new FlagTask(&hits));
  pool.shutdown();
  EXPECT_EQ(hits.load(), 1);
}

TEST(ThreadPool, ShutdownWithQueuedTasksWaitsForThem) {
  std::atomic<int> runs[1] = {{0}};
  std::atomic<int> gate{0};
  struct Blocker : IRunnable {
    explicit Blocker(std::atomic<int>* g) : gate(g) {}
    void run() override {
      while (gate->load() == 0) std::this_thread::yield();
    }
    std::atomic<int>* gate;
  };
  std::atomic<int> deaths{0};
  ThreadPool pool(1);
  pool.start();
  pool.submit(new Blocker(&gate));
  for (int i = 0; i < 300; ++i) pool.submit(new Task(0, nullptr, nullptr, runs, &deaths));
  std::atomic<bool> done{false};
  std::thread stopper([&] {
    pool.shutdown();
    done.store(true);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(done.load()) << "shutdown returned while tasks were still queued";
  gate.store(1);
  stopper.join();
  EXPECT_EQ(runs[0].load(), 300);
  EXPECT_EQ(deaths.load(), 300);
}

TEST(ThreadPool, NoWorkersLeavesTasksQueuedAndReleasesThemAtDestruction) {
  for (int count : {0, -3}) {
    std::atomic<int> runs[1] = {{0}};
    std::atomic<int> deaths{0};
    {
      ThreadPool pool(count);
      pool.start();
      auto_ptr<IRunnable> task(new Task(0, nullptr, nullptr, runs, &deaths));
      pool.submit(task);
      EXPECT_EQ(task->getRefCount(), 2);  // the caller's and the queue's
      task = nullptr;
      EXPECT_EQ(deaths.load(), 0);
    }
    EXPECT_EQ(runs[0].load(), 0);
    EXPECT_EQ(deaths.load(), 1);
  }
}

TEST(ThreadPool, DestructorDrainsLikeShutdown) {
  std::atomic<int> hits{0};
  {
    ThreadPool pool(3);
    pool.start();
    for (int i = 0; i < 500; ++i) pool.submit(new FlagTask(&hits));
  }
  EXPECT_EQ(hits.load(), 500);
}

}  // namespace
