#include <android/native_window_host.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "GpuFixture.h"
#include "support/LogCapture.h"

namespace {

const char* expectation() { return getenv("OV_GPU_EXPECT"); }

// Tests that need an X server; the no-display ctest entries skip them.
class GPUEngineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (expectation() != nullptr) GTEST_SKIP() << "runs with a display only";
  }
};
using NativeWindowHostTest = GPUEngineTest;

unsigned char pixelAt(int x, int y, int channel) {
  unsigned char px[4] = {0, 0, 0, 0};
  glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, px);
  return px[channel];
}

}  // namespace

// Off-screen engines: sizes, current-state wrapping, a second engine sharing
// the display, teardown.
TEST_F(GPUEngineTest, PbufferLifecycle) {
  auto_ptr<GPUEngine> engine(new GPUEngine(nullptr, 24, 10));
  EXPECT_EQ(GPUEngine::getCurrentEngine(), nullptr);  // nothing current, nothing to wrap
  ASSERT_TRUE(engine->setup());
  GPUContext* gc = engine->getGPUContext();
  EXPECT_EQ(gc->surfaceWidth, 24);
  EXPECT_EQ(gc->surfaceHeight, 10);
  EXPECT_NE(gc->display, EGL_NO_DISPLAY);
  auto_ptr<GPUEngine> other(new GPUEngine(nullptr, 4, 4));
  ASSERT_TRUE(other->setup());

  engine->startup();
  EXPECT_EQ(eglGetCurrentContext(), gc->context);
  EXPECT_EQ(eglGetCurrentSurface(EGL_READ), gc->surface);
  const char* version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
  ASSERT_NE(version, nullptr);
  EXPECT_EQ(strncmp(version, "OpenGL ES 3", 11), 0) << version;
  {
    // The current state wrapped (no size of its own) can be closed and started again.
    auto_ptr<GPUEngine> borrowed(GPUEngine::getCurrentEngine());
    ASSERT_NE(borrowed, nullptr);
    EXPECT_EQ(borrowed->getSurface(), gc->surface);
    EXPECT_EQ(borrowed->getGPUContext()->surfaceWidth, 0);
    borrowed->close();
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
    borrowed->startup();
    EXPECT_EQ(eglGetCurrentContext(), gc->context);
  }
  // A clear colour survives a swap of a single-buffered pbuffer and reads back.
  glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  engine->flush();
  EXPECT_EQ(pixelAt(3, 3, 0), 255);
  EXPECT_EQ(pixelAt(3, 3, 1), 0);
  // A context current without a draw surface is not wrapped either.
  ASSERT_EQ(eglMakeCurrent(gc->display, EGL_NO_SURFACE, EGL_NO_SURFACE, gc->context), EGL_TRUE);
  EXPECT_EQ(GPUEngine::getCurrentEngine(), nullptr);

  engine->close();
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
  EXPECT_EQ(GPUEngine::getCurrentEngine(), nullptr);
  engine->destroy();
  EXPECT_TRUE(gc->display == EGL_NO_DISPLAY && gc->surface == EGL_NO_SURFACE &&
              gc->context == EGL_NO_CONTEXT);
  EXPECT_EQ(gc->surfaceWidth, 0);
  // Everything is inert afterwards, including a second destroy.
  engine->destroy();
  engine->startup();
  engine->flush();
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);

  // Destroying one engine left the other working.
  other->startup();
  EXPECT_EQ(eglGetCurrentContext(), other->getEGLContext());
  glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT);
  EXPECT_EQ(pixelAt(0, 0, 1), 255);
  stopEngine(other);
}

TEST_F(GPUEngineTest, ErrorDraining) {
  auto_ptr<GPUEngine> engine = startEngine(nullptr, 4, 4);
  ASSERT_NE(engine, nullptr);
  LogCapture cap;
  // An EGL call on a bad surface leaves EGL_BAD_SURFACE (0x300d) pending.
  EGLint value = 0;
  EXPECT_EQ(eglQuerySurface(engine->getDisplay(), reinterpret_cast<EGLSurface>(0x1234), EGL_WIDTH, &value),
            EGL_FALSE);
  EXPECT_EQ(GPUUtils::checkEGLError("probe", 0), EGL_SUCCESS);
  EXPECT_EQ(cap.count("probe() returned 0\n"), 1);
  EXPECT_EQ(cap.count("after probe() eglError (0x300d)\n"), 1);
  cap.clear();
  EXPECT_EQ(GPUUtils::checkEGLError("quiet", 1), EGL_SUCCESS);  // nothing pending: no line at all
  EXPECT_TRUE(cap.texts().empty());

  // GL: an unknown capability gives GL_INVALID_ENUM once.
  glEnable(0x7fff);
  EXPECT_EQ(GPUUtils::checkGLError("glEnable"), 0x500);
  EXPECT_EQ(GPUUtils::checkGLError("glEnable"), 0);
  EXPECT_EQ(cap.count("after :glEnable() glError (0x500)\n"), 1);

  // Mesa offers EGL_KHR_create_context: the ES3 bit. Without an initialised
  // display there is no extension string: the ES2 bit.
  EXPECT_EQ(GPUUtils::getContextRenderableType(engine->getDisplay()), 0x40);
  EXPECT_EQ(GPUUtils::getContextRenderableType(EGL_NO_DISPLAY), 4);
  stopEngine(engine);
}

// On-screen: an engine on an X11 window through the ANativeWindow stand-in.
TEST_F(GPUEngineTest, WindowSurfaceDrawsToTheScreen) {
  const int w = 64, h = 48;
  ANativeWindow* window = ANativeWindowHost_create(w, h);
  ASSERT_NE(window, nullptr);
  {
    auto_ptr<GPUEngine> engine = startEngine(window, 0, 0);
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(engine->getGPUContext()->surfaceWidth, w);
    EXPECT_EQ(engine->getGPUContext()->surfaceHeight, h);
    // Left half blue, right half yellow; the swap shows it on the X server.
    glEnable(GL_SCISSOR_TEST);
    for (int half = 0; half < 2; ++half) {
      glScissor(half * w / 2, 0, w / 2, h);
      glClearColor(half, half, 1 - half, 1.0f);
      glClear(GL_COLOR_BUFFER_BIT);
    }
    engine->flush();
    Pixels shot(static_cast<size_t>(w) * h * 4);
    ASSERT_EQ(ANativeWindowHost_readPixels(window, shot.data(), static_cast<int64_t>(shot.size())), 0);
    const unsigned char blue[4] = {0, 0, 255, 255}, yellow[4] = {255, 255, 0, 255};
    for (int y : {0, h / 2, h - 1}) {
      EXPECT_EQ(memcmp(rgbaAt(shot, w, 1, y), blue, 4), 0) << "row " << y;
      EXPECT_EQ(memcmp(rgbaAt(shot, w, w - 2, y), yellow, 4), 0) << "row " << y;
    }
    // Too small a buffer is refused.
    EXPECT_EQ(ANativeWindowHost_readPixels(window, shot.data(), static_cast<int64_t>(shot.size()) - 1), -22);
    stopEngine(engine);
  }
  ANativeWindow_release(window);
  EXPECT_EQ(ANativeWindowHost_getXWindow(window), 0u);
}

// A window handle EGL cannot use fails with the pbuffer wording and leaves
// the engine inert.
TEST_F(GPUEngineTest, BadWindowFailsWithPbufferWording) {
  LogCapture cap;
  auto_ptr<GPUEngine> engine(new GPUEngine(reinterpret_cast<ANativeWindow*>(0x7ffffff0), 0, 0));
  EXPECT_FALSE(engine->setup());
  EXPECT_EQ(cap.countPrefix("eglCreatePbufferSurface error "), 1);
  EXPECT_EQ(engine->getDisplay(), EGL_NO_DISPLAY);
  engine->startup();
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
  engine->destroy();
}

// Run by ctest without an X server (OV_GPU_EXPECT=nodisplay) and on the
// surfaceless platform (OV_GPU_EXPECT=noconfig): setup fails cleanly.
TEST(GPUEngineNoDisplayTest, NoUsableDisplay) {
  const char* expect = expectation();
  if (expect == nullptr) GTEST_SKIP() << "runs from the no-display ctest entries";
  LogCapture cap;
  auto_ptr<GPUEngine> engine(new GPUEngine(nullptr, 8, 8));
  EXPECT_FALSE(engine->setup());
  if (strcmp(expect, "nodisplay") == 0) {
    EXPECT_EQ(cap.count("eglInitialize fail\n") + cap.count("eglGetDisplay fail\n"), 1);
  } else {
    EXPECT_EQ(cap.count("eglChooseConfig fail\n"), 1);
  }
  EXPECT_EQ(engine->getGPUContext()->display, EGL_NO_DISPLAY);
  engine->startup();
  engine->flush();
  stopEngine(engine);
  EXPECT_EQ(GPUEngine::getCurrentEngine(), nullptr);
  // Without a context the status query itself fails (answers 0).
  cap.clear();
  GPUUtils::checkFramebufferStatusDetail("nothing");
  EXPECT_EQ(cap.count("Checking completeness of Framebuffer:nothing\n"), 1);
  // GPU objects made without a current context come out empty, not crashing.
  auto_ptr<GPUContext> ctx = engine->getContext();
  auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, 4, 4, 4));
  EXPECT_EQ(image->getTexture(), 0u);
  unsigned char pixels[64] = {0};
  EXPECT_TRUE(image->download(pixels, sizeof(pixels)));
  auto_ptr<GPUProgram> program = makeProgram(ctx.get(), "void main() {}\n");
  EXPECT_EQ(program->getProgram(), 0u);
  EXPECT_FALSE(program->beganCompute());
  EXPECT_FALSE(program->endCompute());
}

// The ANativeWindow stand-in itself: sizes, geometry rules, references.
TEST_F(NativeWindowHostTest, GeometryAndReferences) {
  EXPECT_EQ(ANativeWindowHost_create(0, 10), nullptr);
  ANativeWindow* window = ANativeWindowHost_create(32, 16);
  ASSERT_NE(window, nullptr);
  // 0 x 0 keeps the size and records the format; one zero alone is refused.
  EXPECT_EQ(ANativeWindow_setBuffersGeometry(window, 0, 0, WINDOW_FORMAT_RGBX_8888), 0);
  EXPECT_EQ(ANativeWindow_getFormat(window), WINDOW_FORMAT_RGBX_8888);
  EXPECT_EQ(ANativeWindow_getWidth(window), 32);
  EXPECT_EQ(ANativeWindow_getHeight(window), 16);
  EXPECT_EQ(ANativeWindow_setBuffersGeometry(window, 8, 0, 1), -22);
  EXPECT_EQ(ANativeWindow_setBuffersGeometry(window, -1, -1, 1), -22);
  EXPECT_EQ(ANativeWindow_setBuffersGeometry(nullptr, 0, 0, 1), -22);
  // A real size resizes the X window: the screenshot and a new surface follow.
  EXPECT_EQ(ANativeWindow_setBuffersGeometry(window, 40, 20, 1), 0);
  Pixels shot(40 * 20 * 4);
  EXPECT_EQ(ANativeWindowHost_readPixels(window, shot.data(), static_cast<int64_t>(shot.size())), 0);
  {
    auto_ptr<GPUEngine> engine(new GPUEngine(window, 0, 0));
    ASSERT_TRUE(engine->setup());
    EXPECT_EQ(engine->getGPUContext()->surfaceWidth, 40);
    EXPECT_EQ(engine->getGPUContext()->surfaceHeight, 20);
    engine->destroy();
  }
  // An extra reference keeps the window; the last release destroys it.
  unsigned long xid = ANativeWindowHost_getXWindow(window);
  EXPECT_NE(xid, 0u);
  ANativeWindow_acquire(window);
  ANativeWindow_release(window);
  EXPECT_EQ(ANativeWindowHost_getXWindow(window), xid);
  ANativeWindow_release(window);
  EXPECT_EQ(ANativeWindowHost_getXWindow(window), 0u);
  EXPECT_EQ(ANativeWindow_getWidth(window), -22);
  EXPECT_EQ(ANativeWindowHost_readPixels(window, shot.data(), static_cast<int64_t>(shot.size())), -22);
}

// Windows of parallel tests overlap at the screen origin; each keeps and
// shows back its own pixels.
TEST_F(NativeWindowHostTest, CoveredWindowKeepsItsPixels) {
  const int w = 16, h = 16;
  ANativeWindow* windows[2] = {nullptr, nullptr};
  for (int i = 0; i < 2; ++i) {
    windows[i] = ANativeWindowHost_create(w, h);  // the second on top of the first
    ASSERT_NE(windows[i], nullptr);
    auto_ptr<GPUEngine> engine = startEngine(windows[i], 0, 0);
    ASSERT_NE(engine, nullptr);
    glClearColor(i == 0 ? 1.0f : 0.0f, i == 0 ? 0.0f : 1.0f, 0.0f, 1.0f);  // red, then green
    glClear(GL_COLOR_BUFFER_BIT);
    engine->flush();
    stopEngine(engine);
  }
  Pixels shot(w * h * 4);
  ASSERT_EQ(ANativeWindowHost_readPixels(windows[0], shot.data(), static_cast<int64_t>(shot.size())), 0);
  const unsigned char red[4] = {255, 0, 0, 255};
  EXPECT_EQ(memcmp(rgbaAt(shot, w, w / 2, h / 2), red, 4), 0);
  ANativeWindow_release(windows[0]);
  ANativeWindow_release(windows[1]);
}
