#pragma once

#include <sched.h>

#include <atomic>
#include <chrono>
#include <vector>

#include "panorama/PanoramaModule.h"

namespace panotest {

constexpr float kRefX = 10.0f;
constexpr float kRefY = 20.0f;

// A module whose worker waits at a gate before its real body runs, so frames
// can be queued while nothing drains them.
class GatedModule : public PanoramaModule {
 public:
  ~GatedModule() override { open(); }
  void open() { mOpen.store(true); }
  void run() override {
    while (!mOpen.load()) sched_yield();
    PanoramaModule::run();
  }

 private:
  std::atomic<bool> mOpen{false};
};

// Waits (yielding) until pred() holds or a generous time has passed.
template <typename Pred>
bool eventually(Pred pred) {
  auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!pred()) {
    if (std::chrono::steady_clock::now() > end) return false;
    sched_yield();
  }
  return true;
}

}  // namespace panotest
