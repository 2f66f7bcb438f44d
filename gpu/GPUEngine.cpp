#include "gpu/GPUEngine.h"

#include <pthread.h>

#include <new>

#include "core/Log.h"
#include "gpu/GPUUtils.h"

namespace {

// EGL displays are per process: eglGetDisplay(EGL_DEFAULT_DISPLAY) hands every
// engine the same one. Once initialised it stays initialised for the life of
// the process; engines never terminate it. eglTerminate would tear down the
// surfaces and contexts of every other live engine, and each terminate /
// initialise cycle drops and reopens the platform connection: on X11 that
// closes Mesa's connection, an X server left with no client resets, and the
// next eglInitialize, arriving during the reset, fails. A still-picture
// caller creating and destroying one filter at a time would see creation fail
// now and then. The lock keeps the renderable-type query from reading the
// extension string while another thread's eglInitialize writes it.
pthread_mutex_t gDisplayLock = PTHREAD_MUTEX_INITIALIZER;

// The renderable type is asked before eglInitialize, so the first engine of a
// process, which finds the display uninitialised, asks for the ES2 bit.
bool initialiseDisplay(EGLDisplay display, int* renderableType) {
  pthread_mutex_lock(&gDisplayLock);
  *renderableType = GPUUtils::getContextRenderableType(display);
  bool ok = eglInitialize(display, nullptr, nullptr) == EGL_TRUE;
  pthread_mutex_unlock(&gDisplayLock);
  return ok;
}

// GPUUtils::checkEGLError(op, 1), returning the first error it read
// (EGL_SUCCESS when there was none).
EGLint drainEGLErrors(const char* op) {
  EGLint first = eglGetError();
  for (EGLint error = first; error != EGL_SUCCESS; error = eglGetError()) {
    OV_LOGD("after %s() eglError (0x%x)\n", op, error);
  }
  return first;
}

}  // namespace

GPUEngine::GPUEngine(ANativeWindow* window, unsigned width, unsigned height)
    : mGPUContext(new (std::nothrow) GPUContext(window, width, height)),
      mDisplay(EGL_NO_DISPLAY),
      mContext(EGL_NO_CONTEXT),
      mSurface(EGL_NO_SURFACE),
      mOwnsDisplay(false) {}

GPUEngine::~GPUEngine() {}

void GPUEngine::releasePartial(EGLDisplay dpy, EGLSurface surf, EGLContext ctx) {
  if (ctx != EGL_NO_CONTEXT) eglDestroyContext(dpy, ctx);
  if (surf != EGL_NO_SURFACE) eglDestroySurface(dpy, surf);
}

bool GPUEngine::setup() {
  GPUContext* gc = mGPUContext.get();
  if (gc == nullptr) return false;
  // Setting up twice would leak the first set of EGL objects.
  if (mDisplay != EGL_NO_DISPLAY || gc->display != EGL_NO_DISPLAY) return false;

  const EGLint pbufferAttribs[] = {EGL_WIDTH, static_cast<EGLint>(gc->width), EGL_HEIGHT,
                                   static_cast<EGLint>(gc->height), EGL_NONE};
  const EGLint contextAttribs[] = {EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};

  EGLDisplay dpy = eglGetDisplay(EGL_DEFAULT_DISPLAY);
  GPUUtils::checkEGLError("eglGetDisplay", 1);
  if (dpy == EGL_NO_DISPLAY) {
    OV_LOGD("eglGetDisplay fail\n");
    return false;
  }

  int renderableType = 0;
  bool initialised = initialiseDisplay(dpy, &renderableType);
  const EGLint configAttribs[] = {EGL_SURFACE_TYPE,
                                  EGL_WINDOW_BIT | EGL_PBUFFER_BIT,
                                  EGL_RENDERABLE_TYPE,
                                  renderableType,
                                  EGL_RED_SIZE,
                                  8,
                                  EGL_GREEN_SIZE,
                                  8,
                                  EGL_BLUE_SIZE,
                                  8,
                                  EGL_ALPHA_SIZE,
                                  8,
                                  EGL_DEPTH_SIZE,
                                  EGL_DONT_CARE,
                                  EGL_STENCIL_SIZE,
                                  EGL_DONT_CARE,
                                  EGL_SAMPLE_BUFFERS,
                                  EGL_DONT_CARE,
                                  EGL_NONE};

  if (!initialised) {
    OV_LOGD("eglInitialize fail\n");
    return false;
  }

  EGLint count = 0;
  if (eglGetConfigs(dpy, nullptr, 0, &count) != EGL_TRUE) {
    OV_LOGD("eglGetConfig fail\n");
    releasePartial(dpy, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    return false;
  }
  EGLConfig config = nullptr;
  count = 0;
  // A request nothing matches "succeeds" with no config: treat it as failure.
  if (eglChooseConfig(dpy, configAttribs, &config, 1, &count) != EGL_TRUE || count < 1) {
    OV_LOGD("eglChooseConfig fail\n");
    releasePartial(dpy, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    return false;
  }
  EGLint visual = 0;
  if (eglGetConfigAttrib(dpy, config, EGL_NATIVE_VISUAL_ID, &visual) != EGL_TRUE) {
    OV_LOGD("eglGetConfigAttrib fail\n");
    releasePartial(dpy, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    return false;
  }

  EGLSurface surf = EGL_NO_SURFACE;
  if (gc->window != nullptr) {
    // Its result does not decide anything: EGL judges the window itself.
    ANativeWindow_setBuffersGeometry(gc->window, 0, 0, visual);
    surf = eglCreateWindowSurface(dpy, config, (EGLNativeWindowType)(gc->window), nullptr);
  } else {
    surf = eglCreatePbufferSurface(dpy, config, pbufferAttribs);
  }
  if (surf == EGL_NO_SURFACE) {
    OV_LOGD("eglCreatePbufferSurface error %d\n", eglGetError());
    releasePartial(dpy, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    return false;
  }

  EGLContext ctx = eglCreateContext(dpy, config, EGL_NO_CONTEXT, contextAttribs);
  // Read once: the drain logs it, and the failure line reports the same code
  // rather than the EGL_SUCCESS a second eglGetError would give.
  EGLint contextError = drainEGLErrors("eglCreateContext");
  if (ctx == EGL_NO_CONTEXT) {
    OV_LOGD("eglCreateContext error:%d\n", contextError);
    releasePartial(dpy, surf, EGL_NO_CONTEXT);
    return false;
  }

  EGLint w = 0;
  EGLint h = 0;
  eglQuerySurface(dpy, surf, EGL_WIDTH, &w);
  eglQuerySurface(dpy, surf, EGL_HEIGHT, &h);
  gc->surfaceWidth = w;
  gc->surfaceHeight = h;
  gc->display = dpy;
  gc->surface = surf;
  gc->context = ctx;
  mDisplay = dpy;
  mSurface = surf;
  mContext = ctx;
  mOwnsDisplay = true;
  return true;
}

void GPUEngine::startup() {
  if (mDisplay == EGL_NO_DISPLAY || mSurface == EGL_NO_SURFACE || mContext == EGL_NO_CONTEXT) return;
  if (eglMakeCurrent(mDisplay, mSurface, mSurface, mContext) != EGL_TRUE) {
    OV_LOGD("eglMakeCurrent error:%d\n", eglGetError());
  }
}

void GPUEngine::flush() {
  if (mDisplay == EGL_NO_DISPLAY || mSurface == EGL_NO_SURFACE) return;
  eglSwapBuffers(mDisplay, mSurface);
  GPUUtils::checkEGLError("eglSwapBuffers", 1);
}

void GPUEngine::close() {
  if (mDisplay == EGL_NO_DISPLAY || mSurface == EGL_NO_SURFACE || mContext == EGL_NO_CONTEXT) return;
  eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

void GPUEngine::destroy() {
  if (mDisplay == EGL_NO_DISPLAY || mSurface == EGL_NO_SURFACE || mContext == EGL_NO_CONTEXT) return;
  eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  eglDestroySurface(mDisplay, mSurface);
  eglDestroyContext(mDisplay, mContext);
  // Borrowed state is torn down as it is; a display we initialised stays up.
  if (!mOwnsDisplay) eglTerminate(mDisplay);
  GPUContext* gc = mGPUContext.get();
  if (gc != nullptr) {
    gc->display = EGL_NO_DISPLAY;
    gc->context = EGL_NO_CONTEXT;
    gc->surface = EGL_NO_SURFACE;
    gc->surfaceWidth = 0;
    gc->surfaceHeight = 0;
  }
  mDisplay = EGL_NO_DISPLAY;
  mContext = EGL_NO_CONTEXT;
  mSurface = EGL_NO_SURFACE;
  mOwnsDisplay = false;
}

GPUEngine* GPUEngine::getCurrentEngine() {
  EGLDisplay dpy = eglGetCurrentDisplay();
  EGLContext ctx = eglGetCurrentContext();
  EGLSurface surf = eglGetCurrentSurface(EGL_DRAW);
  if (dpy == EGL_NO_DISPLAY || ctx == EGL_NO_CONTEXT || surf == EGL_NO_SURFACE) return nullptr;
  GPUEngine* engine = new (std::nothrow) GPUEngine(nullptr, 0, 0);
  if (engine == nullptr) return nullptr;
  GPUContext* gc = engine->mGPUContext.get();
  if (gc == nullptr) {
    delete engine;
    return nullptr;
  }
  gc->display = dpy;
  gc->context = ctx;
  gc->surface = surf;
  engine->mDisplay = dpy;
  engine->mContext = ctx;
  engine->mSurface = surf;
  return engine;
}
