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
  constexpr int kThreads = 3, kRounds = 6;
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &failures] {
      for (int round = 0; round < kRounds; ++round) {
        auto_ptr<GPUEngine> engine(new GPUEngine(nullptr, 8, 8));
        if (!engine->setup()) {
          ++failures;
          continue;
        }
        engine->startup();
        // Each thread clears to its own colour and must read exactly that back.
        const unsigned char want[4] = {static_cast<unsigned char>(60 * t),
                                       static_cast<unsigned char>(40 * round), 200, 255};
        {
          auto_ptr<GPUImage2D> target(new GPUImage2D(engine->getContext(), 8, 8, 4));
          GPUFramebuffer::setFramebufferTarget(&target->getFramebuffer(), target.get());
          glClearColor(want[0] / 255.0f, want[1] / 255.0f, want[2] / 255.0f, 1.0f);
          glClear(GL_COLOR_BUFFER_BIT);
          GPUFramebuffer::setFramebufferTarget(nullptr, nullptr);
          std::vector<unsigned char> px(8 * 8 * 4);
          if (!target->download(px.data(), static_cast<int>(px.size()))) ++failures;
          for (size_t i = 0; i < px.size(); i += 4) {
            if (px[i] != want[0] || px[i + 1] != want[1] || px[i + 2] != want[2] || px[i + 3] != 255) {
              ++failures;
              break;
            }
          }
        }
        engine->close();
        engine->destroy();
      }
    });
  }
  for (std::thread& th : threads) th.join();
  EXPECT_EQ(failures.load(), 0);
}
