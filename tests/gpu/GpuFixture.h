#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gpu/GLHeaders.h"
#include "gpu/GPU.h"
#include "support/LogCapture.h"

// An off-screen engine made current for the length of one test. GL objects a
// test creates must be gone before TearDown (keep them in the test body).
class GpuTest : public ::testing::Test {
 protected:
  void SetUp() override {
    engine = new GPUEngine(nullptr, kSurface, kSurface);
    LogCapture cap;
    bool ok = engine->setup();
    std::string log;
    for (const std::string& line : cap.texts()) log += line;
    ASSERT_TRUE(ok) << "EGL setup failed (run under xvfb-run):\n" << log;
    engine->startup();
    ctx = engine->getContext();
  }
  void TearDown() override {
    ctx = nullptr;
    if (engine != nullptr) {
      engine->close();
      engine->destroy();
    }
    engine = nullptr;
  }

  static constexpr int kSurface = 16;
  auto_ptr<GPUEngine> engine;
  auto_ptr<GPUContext> ctx;
};

// The quad vertex shader every test program uses (positions at location 0,
// texture coordinates at 1, matching the draw).
inline const char* quadVertexShader() {
  return "attribute vec4 a_position;\n"
         "attribute vec2 a_texcoord;\n"
         "varying vec2 v_texcoord;\n"
         "void main() {\n"
         "  gl_Position = a_position;\n"
         "  v_texcoord = a_texcoord;\n"
         "}\n";
}

// Pixel (x, y) of a tightly packed RGBA buffer, row 0 first.
inline const unsigned char* rgbaAt(const std::vector<unsigned char>& pixels, int width, int x, int y) {
  return &pixels[(static_cast<size_t>(y) * width + x) * 4];
}

// Deterministic noise for round trips.
inline std::vector<unsigned char> noiseBytes(size_t n, unsigned seed) {
  std::vector<unsigned char> out(n);
  unsigned state = seed * 2654435761u + 1;
  for (auto& b : out) {
    state = state * 1664525u + 1013904223u;
    b = static_cast<unsigned char>(state >> 24);
  }
  return out;
}
