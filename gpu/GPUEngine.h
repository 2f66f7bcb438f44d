#pragma once

#include <EGL/egl.h>
#include <android/native_window.h>

#include "core/Export.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"

// Creates and owns an EGL display connection, an OpenGL ES 3 context and a
// window or pbuffer surface. Order of use: setup, startup (on the GL thread),
// GL work and flush, close, destroy.
//
// The engine's GPUContext is a separate reference-counted object rather than
// an embedded member, so that images and programs holding it stay valid if
// they outlive the engine (their GL objects are then gone with the context).
class OV_EXPORT GPUEngine : public RefBase {
 public:
  // window null: off-screen, a pbuffer of width x height (0 x 0 is fine).
  GPUEngine(ANativeWindow* window, unsigned width, unsigned height);
  ~GPUEngine() override;

  virtual bool setup();
  virtual void startup();
  virtual void flush();
  virtual void close();
  virtual void destroy();

  // Wraps the EGL display, context and draw surface current on this thread;
  // null when any of them is missing. The result is borrowed state: use only
  // startup/flush/close on it, never setup or destroy.
  static GPUEngine* getCurrentEngine();

  // The context to hand to images, framebuffers, scripts and programs.
  auto_ptr<GPUContext>& getContext() { return mGPUContext; }
  GPUContext* getGPUContext() const { return mGPUContext.get(); }

  EGLDisplay getDisplay() const { return mDisplay; }
  EGLContext getEGLContext() const { return mContext; }
  EGLSurface getSurface() const { return mSurface; }

 private:
  // Releases whatever a failed setup created.
  void releasePartial(EGLDisplay dpy, EGLSurface surf, EGLContext ctx);

  auto_ptr<GPUContext> mGPUContext;
  EGLDisplay mDisplay;
  EGLContext mContext;
  EGLSurface mSurface;
  bool mOwnsDisplay;  // set up by this engine (false for borrowed state)
};
