#include "core/Thread.h"

#include "core/Condition.h"
#include "core/Log.h"
#include "core/Mutex.h"

Thread::~Thread() = default;

int Thread::start() {
  // Cleared before the thread exists so the new thread never reads a stale flag.
  exited.store(false);
  int err = pthread_create(&thread, nullptr, &Thread::thread_proc, this);
  if (err != 0) {
    OV_LOGD("thread start fail.......");
    started = false;
    return err;
  }
  started = true;
  return 0;
}

void Thread::run() {}

int Thread::join() {
  exited.store(true);
  if (!started) return 0;
  started = false;
  return pthread_join(thread, nullptr);
}

void* Thread::thread_proc(void* arg) {
  auto* self = static_cast<Thread*>(arg);
  if (self == nullptr || self->exited.load()) return nullptr;
  if (self->target != nullptr) {
    self->target->run();
  } else {
    self->run();
  }
  self->exited.store(true);
  return nullptr;
}

void Thread::sleep(long long ns) {
  Condition cond;
  Mutex mutex;
  // Held only so the timed wait is well defined; it still returns at once.
  mutex.lock();
  cond.waitRelative(mutex, ns);
  mutex.unlock();
}
