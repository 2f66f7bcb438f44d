#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "GpuFixture.h"

// Engines on several threads at once share the one EGL display: one thread's
// teardown must not pull the display from under another's setup or drawing.
TEST(GPUEngineThreadsTest, EnginesOnParallelThreads) {
  if (getenv("DISPLAY") == nullptr) GTEST_SKIP() << "needs an X server (run under xvfb-run)";
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([t, &failures] {
      for (int round = 0; round < 6; ++round) {
        auto_ptr<GPUEngine> engine = startEngine(nullptr, 8, 8);
        if (engine == nullptr) {
          ++failures;
          continue;
        }
        // Each thread clears to its own colour and must read exactly that back.
        const unsigned char want[4] = {static_cast<unsigned char>(60 * t),
                                       static_cast<unsigned char>(40 * round), 200, 255};
        {
          auto_ptr<GPUImage2D> target(new GPUImage2D(engine->getContext(), 8, 8, 4));
          GPUFramebuffer::setFramebufferTarget(&target->getFramebuffer(), target.get());
          glClearColor(want[0] / 255.0f, want[1] / 255.0f, want[2] / 255.0f, 1.0f);
          glClear(GL_COLOR_BUFFER_BIT);
          GPUFramebuffer::setFramebufferTarget(nullptr, nullptr);
          Pixels px(8 * 8 * 4);
          if (!target->download(px.data(), static_cast<int>(px.size())) || px != filled(8, 8, want))
            ++failures;
        }
        stopEngine(engine);
      }
    });
  }
  for (std::thread& th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
}
