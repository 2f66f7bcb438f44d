#pragma once

#include <EGL/egl.h>
#include <android/native_window.h>

#include "core/Export.h"
#include "core/RefBase.h"

// The EGL display, context and surface every GPU object works on. It owns
// nothing: GPUEngine creates and destroys the EGL objects, the context only
// records them. Fields are public so that a caller that already has EGL state
// (the filters wrapping the GL view's context) can fill them in.
class OV_EXPORT GPUContext : public RefBase {
 public:
  GPUContext(ANativeWindow* window, unsigned width, unsigned height);
  ~GPUContext() override;

  ANativeWindow* getWindow() const { return window; }
  unsigned getWidth() const { return width; }
  unsigned getHeight() const { return height; }
  EGLDisplay getDisplay() const { return display; }
  EGLContext getContext() const { return context; }
  EGLSurface getSurface() const { return surface; }
  int getSurfaceWidth() const { return surfaceWidth; }
  int getSurfaceHeight() const { return surfaceHeight; }

  ANativeWindow* window;  // null: off-screen pbuffer
  unsigned width;         // requested pbuffer size
  unsigned height;
  EGLDisplay display;
  EGLContext context;
  EGLSurface surface;
  int surfaceWidth;  // as queried from the created surface
  int surfaceHeight;
};
