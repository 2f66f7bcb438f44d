#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
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

// Spins until `done` holds or 20 s pass; returns whether it holds.
bool waitFor(const std::function<bool()>& done) {
  auto t0 = Clock::now();
  while (!done() && secondsSince(t0) < 20) std::this_thread::yield();
  return done();
}

// A runnable that calls `body` and counts its own destruction, and apart
// the destructions on the thread that made it.
struct Call : IRunnable {
  explicit Call(std::function<void()> body, std::atomic<int>* deaths = nullptr,
                std::atomic<int>* deathsAtHome = nullptr)
      : body(body), deaths(deaths), deathsAtHome(deathsAtHome) {}
  ~Call() override {
    if (deaths != nullptr) deaths->fetch_add(1);
    if (deathsAtHome != nullptr && std::this_thread::get_id() == maker) deathsAtHome->fetch_add(1);
  }
  void run() override { body(); }
  std::function<void()> body;
  std::atomic<int>* deaths;
  std::atomic<int>* deathsAtHome;
  const std::thread::id maker = std::this_thread::get_id();
};

struct CountingThread : Thread {
  CountingThread() = default;
  explicit CountingThread(IRunnable* r) { target = r; }
  void run() override { runs.fetch_add(1); }
  std::atomic<int> runs{0};
};

// join() marks the thread exited before waiting, so a body that has not begun
// yet is skipped: the tests wait for the body to finish first.
TEST(Thread, BodyOrTargetRunsOncePerStart) {
  CountingThread never;
  EXPECT_EQ(never.join(), 0);  // never started: returns at once, no pthread_join
  CountingThread t;
  for (int round = 1; round <= 2; ++round) {  // started again after a join: a fresh thread
    EXPECT_EQ(t.start(), 0);
    EXPECT_TRUE(waitFor([&] { return t.hasExited(); }));
    EXPECT_EQ(t.join(), 0);
    EXPECT_EQ(t.runs.load(), round);
  }
  std::atomic<int> hits{0};
  CountingThread withTarget(new Call([&] { hits.fetch_add(1); }));
  EXPECT_EQ(withTarget.start(), 0);
  EXPECT_TRUE(waitFor([&] { return withTarget.hasExited(); }));
  withTarget.join();
  EXPECT_EQ(hits.load(), 1);
  EXPECT_EQ(withTarget.runs.load(), 0);
  // The owner of a plain Thread sets the target.
  Thread plain;
  plain.target = new Call([&] { hits.fetch_add(1); });
  EXPECT_EQ(plain.start(), 0);
  EXPECT_TRUE(waitFor([&] { return plain.hasExited(); }));
  plain.join();
  EXPECT_EQ(hits.load(), 2);
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

TEST(Locks, MutexAndRWLockReturnConventions) {
  for (int type : {0, 1}) {
    Mutex m(type, "test");
    EXPECT_EQ(m.lock(), 0);
    EXPECT_EQ(m.tryLock(), -EBUSY);  // a default mutex does not recurse
    EXPECT_EQ(m.unlock(), 0);
    {
      Mutex::Autolock hold(m);
      EXPECT_EQ(m.tryLock(), -EBUSY);
    }
    EXPECT_EQ(m.tryLock(), 0);
    m.unlock();

    RWLock l(type, "rw");
    EXPECT_EQ(l.readLock(), 0);
    EXPECT_EQ(l.tryReadLock(), 0);
    EXPECT_EQ(l.tryWriteLock(), -EBUSY);
    EXPECT_EQ(l.unlock(), 0);
    EXPECT_EQ(l.unlock(), 0);
    EXPECT_EQ(l.writeLock(), 0);
    EXPECT_EQ(l.tryReadLock(), -EBUSY);
    EXPECT_EQ(l.unlock(), 0);
  }
}

TEST(ThreadPool, OneWorkerRunsTasksInSubmissionOrderIncludingEarlyOnes) {
  std::vector<int> order;
  std::mutex m;
  auto record = [&](int i) {
    return new Call([&order, &m, i] {
      std::lock_guard<std::mutex> g(m);
      order.push_back(i);
    });
  };
  ThreadPool pool(1);
  for (int i = 0; i < 5; ++i) pool.submit(record(i));  // queued before the worker exists
  pool.start();
  for (int i = 5; i < 200; ++i) EXPECT_EQ(pool.submit(record(i)), 0);
  pool.shutdown();
  std::vector<int> expected(200);
  for (int i = 0; i < 200; ++i) expected[i] = i;
  EXPECT_EQ(order, expected);
}

TEST(ThreadPool, FourWorkersRunEachOfTenThousandTasksOnce) {
  constexpr int kTasks = 10000;
  static std::atomic<int> runs[kTasks];
  std::atomic<int> deaths{0}, deathsAtHome{0};
  ThreadPool pool(4);
  pool.start();
  for (int i = 0; i < kTasks; ++i)
    pool.submit(new Call([i] { runs[i].fetch_add(1); }, &deaths, &deathsAtHome));
  pool.shutdown();
  // shutdown returns only once every task has been taken and has finished.
  for (int i = 0; i < kTasks; ++i) ASSERT_EQ(runs[i].load(), 1) << i;
  EXPECT_EQ(deaths.load(), kTasks);
  // A task whose only count the pool holds is deleted by the worker that ran
  // it (or by shutdown, here on this thread, but the queue had drained).
  EXPECT_EQ(deathsAtHome.load(), 0);
}

TEST(ThreadPool, NullTasksAreTakenAndRunNothing) {
  std::atomic<int> hits{0};
  ThreadPool pool(2);
  pool.start();
  EXPECT_EQ(pool.submit(static_cast<IRunnable*>(nullptr)), 0);
  auto_ptr<IRunnable> none;
  EXPECT_EQ(pool.submit(none), 0);
  pool.submit(new Call([&] { hits.fetch_add(1); }));
  pool.shutdown();
  EXPECT_EQ(hits.load(), 1);
}

TEST(ThreadPool, ShutdownAndDestructorWaitForQueuedTasks) {
  std::atomic<int> runs{0}, deaths{0}, gate{0};
  std::atomic<bool> done{false};
  {
    ThreadPool pool(1);
    pool.start();
    pool.submit(new Call([&] { waitFor([&] { return gate.load() != 0; }); }));
    for (int i = 0; i < 300; ++i) pool.submit(new Call([&] { runs.fetch_add(1); }, &deaths));
    std::thread stopper([&] {
      pool.shutdown();
      done.store(true);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(done.load()) << "shutdown returned while tasks were still queued";
    gate.store(1);
    stopper.join();
    EXPECT_EQ(runs.load(), 300);
    EXPECT_EQ(deaths.load(), 300);
  }
  // The destructor drains like shutdown.
  {
    ThreadPool pool(3);
    pool.start();
    for (int i = 0; i < 500; ++i) pool.submit(new Call([&] { runs.fetch_add(1); }));
  }
  EXPECT_EQ(runs.load(), 800);
}

}  // namespace
