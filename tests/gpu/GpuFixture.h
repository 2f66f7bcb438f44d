#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "gpu/GLHeaders.h"
#include "gpu/GPU.h"

// An off-screen engine made current for the length of one test. GL objects a
// test creates must be gone before TearDown (keep them in the test body).
class GpuTest : public ::testing::Test {
 protected:
  void SetUp() override {
    engine = new GPUEngine(nullptr, kSurface, kSurface);
    ASSERT_TRUE(engine->setup()) << "EGL setup failed (run under xvfb-run)";
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

using Pixels = std::vector<unsigned char>;

// A set-up engine made current, or null if setup failed; stopEngine undoes both.
inline auto_ptr<GPUEngine> startEngine(ANativeWindow* window, int w, int h) {
  auto_ptr<GPUEngine> engine(new GPUEngine(window, w, h));
  if (!engine->setup()) return nullptr;
  engine->startup();
  return engine;
}
// After flush() on a window: Mesa's X11 swap sends the picture on its own X
// connection without waiting, so a screenshot taken on another connection can
// be served first. Querying the surface size makes Mesa wait for a reply on
// its connection, after the picture.
inline void waitForScreen(GPUEngine* engine) {
  EGLint width = 0;
  eglQuerySurface(engine->getDisplay(), engine->getSurface(), EGL_WIDTH, &width);
}
inline void stopEngine(auto_ptr<GPUEngine>& engine) {
  engine->close();
  engine->destroy();
}

// The quad vertex shader every test program uses (positions at location 0,
// texture coordinates at 1, matching the draw).
inline const char* quadVertexShader() {
  return "attribute vec4 a_position;\nattribute vec2 a_texcoord;\nvarying vec2 v_texcoord;\n"
         "void main() { gl_Position = a_position; v_texcoord = a_texcoord; }\n";
}
inline const char* const kVertex300 =
    "#version 300 es\nlayout(location = 0) in vec4 a_position;\nlayout(location = 1) in vec2 a_texcoord;\n"
    "out vec2 v_texcoord;\nvoid main() { gl_Position = a_position; v_texcoord = a_texcoord; }\n";
inline const char* const kSample2D =
    "precision mediump float;\nuniform sampler2D tex;\nvarying vec2 v_texcoord;\n"
    "void main() { gl_FragColor = texture2D(tex, v_texcoord); }\n";
// Texture coordinates that follow the output (s with x, t with y), instead of
// the default quarter turn.
inline const float kStraight[8] = {0, 0, 1, 0, 0, 1, 1, 1};

inline auto_ptr<GPUScript> makeScript(GPUContext* ctx, const char* name, const char* fragment,
                                      const char* vertex = quadVertexShader()) {
  auto_ptr<GPUScript> script(new GPUScript(ctx, name));
  script->addSource("VertexShader", vertex);
  script->addSource("FragmentShader", fragment);
  return script;
}

inline auto_ptr<GPUProgram> makeProgram(GPUContext* ctx, const char* fragment,
                                        const char* vertex = quadVertexShader()) {
  auto_ptr<GPUScript> script = makeScript(ctx, nullptr, fragment, vertex);
  return auto_ptr<GPUProgram>(new GPUProgram(ctx, script.get()));
}

// Draws the program once into a new w x h RGBA image and returns its pixels
// (row 0 first); 7s if the program cannot draw.
template <typename Source = GPUImage2D>
Pixels drawOnce(GPUContext* ctx, GPUProgram* program, int w, int h, Source* source = nullptr) {
  auto_ptr<GPUImage2D> out(new GPUImage2D(ctx, w, h, 4));
  Pixels px(static_cast<size_t>(w) * h * 4, 7);
  if (!program->beganCompute()) return px;
  program->setOutputTarget(out);
  program->setOutputSize(0, 0, w, h);
  if (source != nullptr) program->setSourceTarget("tex", 0, source);
  program->endCompute();
  EXPECT_TRUE(out->download(px.data(), static_cast<int>(px.size())));
  return px;
}

// Nearest sampling, so each output pixel shows exactly one texel.
inline void useNearest(unsigned target, unsigned texture) {
  glBindTexture(target, texture);
  glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glBindTexture(target, 0);
}

// Pixel (x, y) of a tightly packed RGBA buffer, row 0 first.
inline const unsigned char* rgbaAt(const Pixels& pixels, int width, int x, int y) {
  return &pixels[(static_cast<size_t>(y) * width + x) * 4];
}

inline Pixels filled(int w, int h, const unsigned char rgba[4]) {
  Pixels out(static_cast<size_t>(w) * h * 4);
  for (size_t i = 0; i < out.size(); ++i) out[i] = rgba[i % 4];
  return out;
}

// Deterministic noise for round trips; `opaque` forces every fourth byte to 255.
inline Pixels noiseBytes(size_t n, unsigned seed, bool opaque = false) {
  Pixels out(n);
  unsigned state = seed * 2654435761u + 1;
  for (size_t i = 0; i < n; ++i) {
    state = state * 1664525u + 1013904223u;
    out[i] = opaque && i % 4 == 3 ? 255 : static_cast<unsigned char>(state >> 24);
  }
  return out;
}
