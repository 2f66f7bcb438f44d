#pragma once

// Test pictures, a private program cache and the comparison macro shared by
// the filter tests that draw.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <random>
#include <string>

#include "filters/FilterModel.h"
#include "gpu/GPUScript.h"

namespace filtertest {

using model::Picture;

// Bytes from a fixed seed; alpha varies too, so a pass-through that did
// nothing is caught.
inline Picture noise(int w, int h, unsigned seed) {
  Picture p(w, h);
  std::mt19937 rng(seed);
  for (auto& v : p.pixels) v = static_cast<uint8_t>(rng() & 0xff);
  return p;
}

// Smooth in every channel, so sampling a little off a texel centre changes
// colours by a fraction of a step.
inline Picture gradient(int w, int h) {
  Picture p(w, h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      uint8_t* q = p.at(x, y);
      q[0] = static_cast<uint8_t>(x * 255 / (w - 1));
      q[1] = static_cast<uint8_t>(y * 255 / (h - 1));
      q[2] = static_cast<uint8_t>((x + y) * 255 / (w + h - 2));
      q[3] = static_cast<uint8_t>(255 - x * 100 / (w - 1));
    }
  }
  return p;
}

// Every suite gets a fresh cache directory, removed afterwards.
class PrivateCache : public ::testing::Test {
 protected:
  static std::string& cacheDir() {
    static std::string dir;
    return dir;
  }
  static void SetUpTestSuite() {
    char pattern[] = "/tmp/filters-cacheXXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    cacheDir() = std::string(pattern) + "/";
    GPUScript::setCacheDirectory(cacheDir().c_str());
  }
  static void TearDownTestSuite() {
    EXPECT_EQ(system(("rm -rf '" + cacheDir() + "'").c_str()), 0);
    GPUScript::setCacheDirectory(nullptr);
  }
};

}  // namespace filtertest

#define EXPECT_MATCHES(expected, actual, tolerance)              \
  do {                                                           \
    auto d_ = model::compare((expected), (actual).data());       \
    EXPECT_LE(d_.first, (tolerance)) << "at byte " << d_.second; \
  } while (0)
