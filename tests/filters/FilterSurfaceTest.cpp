// The two on-surface paths of the filters: a camera-style external texture
// drawn by render() into a framebuffer the caller bound, and a filter drawn
// onto an X11 window surface and read back from the screen.
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <android/native_window_host.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "filters/FilterTestSupport.h"
#include "filters/ImageFilters.h"
#include "gpu/GLHeaders.h"
#include "gpu/GPUEngine.h"

using filtertest::noise;
using model::Picture;

namespace {

// 1 byte where only texel centres are sampled, 2 where the program computes.
const int kTolerance = 2;

// A real external texture, as a camera stream would provide: an EGLImage of
// a 2D texture (complete without mipmaps) bound to GL_TEXTURE_EXTERNAL_OES.
struct ExternalTexture {
  EGLDisplay display = eglGetCurrentDisplay();
  EGLImageKHR image = EGL_NO_IMAGE_KHR;
  GLuint source = 0, texture = 0;

  bool make(const Picture& p) {
    auto createImage = reinterpret_cast<PFNEGLCREATEIMAGEKHRPROC>(eglGetProcAddress("eglCreateImageKHR"));
    auto target = reinterpret_cast<PFNGLEGLIMAGETARGETTEXTURE2DOESPROC>(
        eglGetProcAddress("glEGLImageTargetTexture2DOES"));
    if (createImage == nullptr || target == nullptr) return false;
    glGenTextures(1, &source);
    glBindTexture(GL_TEXTURE_2D, source);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, p.width, p.height, 0, GL_RGBA, GL_UNSIGNED_BYTE, p.pixels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    const EGLint attributes[] = {EGL_GL_TEXTURE_LEVEL_KHR, 0, EGL_NONE};
    image = createImage(display, eglGetCurrentContext(), EGL_GL_TEXTURE_2D_KHR,
                        reinterpret_cast<EGLClientBuffer>(static_cast<uintptr_t>(source)), attributes);
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_EXTERNAL_OES, texture);
    if (image != EGL_NO_IMAGE_KHR) target(GL_TEXTURE_EXTERNAL_OES, image);
    glBindTexture(GL_TEXTURE_EXTERNAL_OES, 0);
    return image != EGL_NO_IMAGE_KHR && glGetError() == GL_NO_ERROR;
  }
  ~ExternalTexture() {
    GLuint names[2] = {texture, source};
    glDeleteTextures(2, names);
    auto destroyImage = reinterpret_cast<PFNEGLDESTROYIMAGEKHRPROC>(eglGetProcAddress("eglDestroyImageKHR"));
    if (image != EGL_NO_IMAGE_KHR && destroyImage != nullptr) destroyImage(display, image);
  }
};

// An RGBA texture in a framebuffer of the caller's, bound for drawing.
struct Target {
  GLuint texture = 0, framebuffer = 0;
  int width, height;

  Target(int w, int h) : width(w), height(h) {
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, w, h, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
  }
  std::vector<uint8_t> read() {
    std::vector<uint8_t> px(size_t(width) * height * 4, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
    return px;
  }
  ~Target() {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteTextures(1, &texture);
  }
};

bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

}  // namespace

class FilterSurface : public filtertest::PrivateCache {};

TEST_F(FilterSurface, ExternalTextureDrawsIntoTheCallersFramebuffer) {
  // The test's engine plays the GL view's renderer thread.
  auto_ptr<GPUEngine> engine(new GPUEngine(nullptr, 0, 0));
  ASSERT_TRUE(engine->setup());
  engine->startup();
  {
    Picture in = noise(32, 32, 11);
    ExternalTexture camera;
    ASSERT_TRUE(camera.make(in));

    auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter("ImageFilterXray"));
    ASSERT_TRUE(f->setupGraphics(0));
    // The external program has a cache name of its own.
    EXPECT_STREQ(f->program->getScript()->getName(), "ImageFilterXray_oes");

    // A 40 x 24 view of the 32 x 32 camera picture.
    Target target(40, 24);
    f->setTexture(static_cast<int>(camera.texture), 32, 32, 40, 24);
    f->render();
    EXPECT_MATCHES(model::render(40, 24, model::xray(in)), target.read(), kTolerance);

    // A camera texture handed over with no size is wrapped and drawn the same.
    auto_ptr<ImageFilterBaseGL> sizeless(ImageFilterFactory::createFilter("ImageFilterXray"));
    ASSERT_TRUE(sizeless->setupGraphics(0));
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_EXTERNAL_OES, 0);  // only the filter's own binding may show it
    sizeless->setTexture(static_cast<int>(camera.texture), 0, 0, 40, 24);
    sizeless->render();
    EXPECT_MATCHES(model::render(40, 24, model::xray(in)), target.read(), kTolerance);
  }
  // The cache file is written once the program lets go of its script.
  EXPECT_TRUE(exists(cacheDir() + "ImageFilterXray_oes.osb"));
  EXPECT_FALSE(exists(cacheDir() + "ImageFilterXray.osb"));
  engine->close();
  engine->destroy();
}

TEST_F(FilterSurface, FilterOnAWindowReachesTheScreen) {
  const int w = 48, h = 48;  // square: the quarter turn samples texel centres
  ANativeWindow* window = ANativeWindowHost_create(w, h);
  ASSERT_NE(window, nullptr);
  {
    auto_ptr<GPUEngine> engine(new GPUEngine(window, 0, 0));
    ASSERT_TRUE(engine->setup());
    engine->startup();
    Picture in = noise(w, h, 13);
    {
      auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter("ImageFilterTemperature"));
      ASSERT_TRUE(f->setupGraphics(1));
      f->setBitmap(in.pixels.data(), w, h);
      f->render();
      engine->flush();
      // Mesa's X11 swap sends the picture without waiting; a surface query
      // waits for a reply on the same connection, so the screenshot follows it.
      EGLint shown = 0;
      eglQuerySurface(engine->getDisplay(), engine->getSurface(), EGL_WIDTH, &shown);
    }
    std::vector<uint8_t> screen(size_t(w) * h * 4);
    ASSERT_EQ(ANativeWindowHost_readPixels(window, screen.data(), static_cast<int64_t>(screen.size())), 0);
    // The screenshot is top row first; GL's rows start at the bottom.
    std::vector<uint8_t> flipped(screen.size());
    for (int y = 0; y < h; ++y)
      memcpy(&flipped[size_t(y) * w * 4], &screen[size_t(h - 1 - y) * w * 4], w * 4);
    EXPECT_MATCHES(model::render(w, h, model::temperature(in)), flipped, kTolerance);
    engine->close();
    engine->destroy();
  }
  ANativeWindow_release(window);
}
