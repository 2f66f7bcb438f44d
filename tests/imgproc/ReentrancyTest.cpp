#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <thread>
#include <vector>

#include "imgproc/Blur.h"
#include "imgproc/Lbp.h"

// The routines keep their scratch on the caller's stack or in their own
// allocations: four threads working on their own buffers get exactly the
// single-threaded results.
TEST(ImgprocReentrancy, FourThreadsMatchOneThread) {
  const int w = 70, h = 45, kThreads = 4;
  std::mt19937 rng(51);
  std::vector<std::vector<uint8_t>> inputs(kThreads);
  for (auto& in : inputs) {
    in.resize(w * h * 4);
    for (auto& b : in) b = (uint8_t)rng();
  }
  auto work = [&](int t, std::vector<uint8_t>* out, double* score) {
    std::vector<uint8_t> px = inputs[t];
    for (int round = 0; round < 5; ++round) {
      stack_blur(px.data(), w, h, 3 + 7 * t);
      alpha_blend_neon(px.data(), w * h, 10, 20, 30, 40 + t);
      gaussiir(px.data(), w, h, 4, w * 4, 2.0f + t, 3.0f);
    }
    std::vector<uint8_t> gray(w * h), dst(w * h);
    for (int i = 0; i < w * h; ++i) gray[i] = px[i * 4];
    gauss_blur(gray.data(), dst.data(), w, h, 3);
    std::vector<unsigned int> img(w * h);
    for (int i = 0; i < w * h; ++i) img[i] = dst[i];
    const unsigned dim = lbp_pyr_get_dim(h, w, 3);
    std::vector<double> weights(dim);
    for (unsigned i = 0; i < dim; ++i) weights[i] = (double)(i % 97);
    *score = lbp_pyr_dotprod(weights.data(), dim, img.data(), h, w);
    *out = px;
  };
  std::vector<std::vector<uint8_t>> alone(kThreads), together(kThreads);
  std::vector<double> aloneScore(kThreads), togetherScore(kThreads);
  for (int t = 0; t < kThreads; ++t) work(t, &alone[t], &aloneScore[t]);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back(work, t, &together[t], &togetherScore[t]);
  for (auto& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) {
    EXPECT_EQ(together[t], alone[t]) << "thread " << t;
    EXPECT_EQ(togetherScore[t], aloneScore[t]) << "thread " << t;
  }
}
