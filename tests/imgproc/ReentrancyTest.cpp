#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "imgproc/Blur.h"
#include "imgproc/Lbp.h"

// The routines keep their scratch on the caller's stack or in their own
// allocations: four threads working on their own buffers get exactly the
// single-threaded results.
TEST(ImgprocReentrancy, FourThreadsMatchOneThread) {
  const int w = 70, h = 45, kThreads = 4;
  auto work = [&](int t) {
    std::mt19937 rng(51 + t);
    std::vector<uint8_t> px(w * h * 4), gray(w * h), dst(w * h);
    for (auto& b : px) b = uint8_t(rng());
    for (int round = 0; round < 5; ++round) {
      stack_blur(px.data(), w, h, 3 + 7 * t);
      alpha_blend_neon(px.data(), w * h, 10, 20, 30, 40 + t);
      gaussiir(px.data(), w, h, 4, w * 4, 2.0f + t, 3.0f);
    }
    for (int i = 0; i < w * h; ++i) gray[i] = px[i * 4];
    gauss_blur(gray.data(), dst.data(), w, h, 3);
    std::vector<unsigned int> img(dst.begin(), dst.end());
    std::vector<double> weights(lbp_pyr_get_dim(h, w, 3));
    for (size_t i = 0; i < weights.size(); ++i) weights[i] = double(i % 97);
    return std::pair{px, lbp_pyr_dotprod(weights.data(), weights.size(), img.data(), h, w)};
  };
  std::vector<std::pair<std::vector<uint8_t>, double>> together(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back([&, t] { together[t] = work(t); });
  for (auto& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(together[t], work(t)) << "thread " << t;
}
