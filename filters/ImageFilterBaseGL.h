#pragma once

#include "core/Export.h"
#include "core/Mutex.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"
#include "gpu/GPUEngine.h"
#include "gpu/GPUFramebuffer.h"
#include "gpu/GPUImage2D.h"
#include "gpu/GPUProgram.h"

// Parameter type codes answered by getParameterType; the JNI layer picks the
// Java value conversion from them.
enum ImageFilterParameterType {
  FILTER_PARAMETER_UNKNOWN = 0,
  FILTER_PARAMETER_FLOAT = 5,
  FILTER_PARAMETER_FLOAT_ARRAY = 6,
  FILTER_PARAMETER_BITMAP = 10,
};

// Base of the GL image filters: one shared vertex shader plus a filter body
// appended to a 2D or external-texture header. render() draws into whatever
// framebuffer the caller bound; process() filters an RGBA buffer in place
// through an off-screen engine of the filter's own.
class OV_EXPORT ImageFilterBaseGL : public RefBase {
 public:
  ImageFilterBaseGL();
  ~ImageFilterBaseGL() override;
  ImageFilterBaseGL(const ImageFilterBaseGL&) = delete;
  ImageFilterBaseGL& operator=(const ImageFilterBaseGL&) = delete;

  // Creates a pbuffer engine (0 x 0) and makes it current on this thread;
  // false when EGL could not be set up.
  virtual bool initEngine();
  // mode != 0: 2D textures; mode 0: external (camera) textures.
  virtual bool setupGraphics(unsigned mode);
  virtual bool initParameters();
  virtual int getParameterType(const char* name);
  virtual void setParameters(const char* name, void* value);
  virtual void setTexture(int texture, int textureWidth, int textureHeight, int viewWidth, int viewHeight);
  virtual void setBitmap(unsigned char* pixels, int width, int height);
  virtual void setOutput(auto_ptr<GPUImage2D>& image);
  virtual void render();
  virtual void process(unsigned char* pixels, int width, int height);
  virtual void updateParameters();
  virtual void release();
  virtual const char* getFilterName() const;
  virtual const char* getVertexShader() const;
  virtual const char* getFragmentShader() const;

  // The text placed before a fragment body for the given mode.
  static const char* getFragmentHeader(unsigned mode);

  auto_ptr<GPUContext> mGPUContext;
  auto_ptr<GPUProgram> program;
  auto_ptr<GPUImage2D> input;
  auto_ptr<GPUImage2D> output;
  auto_ptr<GPUFramebuffer> framebuffer;
  auto_ptr<GPUEngine> engine;
  float mPosVertices[8];
  float mTexVertices[8];
  float mTextureMatrix[16];
  unsigned mode;
  int width;
  int height;
  Mutex lock;

 protected:
  // One draw of the current program over the filter's quad.
  void drawQuad();
};
