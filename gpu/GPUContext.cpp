#include "gpu/GPUContext.h"

GPUContext::GPUContext(ANativeWindow* window, unsigned width, unsigned height)
    : window(window),
      width(width),
      height(height),
      display(EGL_NO_DISPLAY),
      context(EGL_NO_CONTEXT),
      surface(EGL_NO_SURFACE),
      surfaceWidth(0),
      surfaceHeight(0) {}

// The EGL objects belong to the engine; the context only forgets them.
GPUContext::~GPUContext() {
  window = nullptr;
  display = EGL_NO_DISPLAY;
  context = EGL_NO_CONTEXT;
  surface = EGL_NO_SURFACE;
  surfaceWidth = 0;
  surfaceHeight = 0;
}
