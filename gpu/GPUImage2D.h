#pragma once

#include "core/Export.h"
#include "core/Mutex.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"
#include "gpu/GPUFramebuffer.h"
#include "gpu/GPUPixelBuffer.h"

// One GL texture with the size and pixel-format code of a library image.
// Format codes double as bytes per pixel: 1 luminance, 2 luminance-alpha,
// 3 RGB, 4 RGBA, 5 an external (camera) texture made elsewhere.
class OV_EXPORT GPUImage2D : public RefBase {
 public:
  // A new texture with empty storage.
  GPUImage2D(GPUContext* context, int width, int height, int format);
  GPUImage2D(auto_ptr<GPUContext>& context, int width, int height, int format);
  // Wraps an existing texture name; allocate gives it empty storage and the
  // default parameters, own makes recycle/destruction delete it.
  GPUImage2D(GPUContext* context, unsigned texture, int width, int height, int format, bool allocate,
             bool own);
  GPUImage2D(auto_ptr<GPUContext>& context, unsigned texture, int width, int height, int format,
             bool allocate, bool own);
  // A new texture filled from width x height x format bytes (empty if pixels is null).
  GPUImage2D(GPUContext* context, int width, int height, int format, void* pixels);
  GPUImage2D(auto_ptr<GPUContext>& context, int width, int height, int format, void* pixels);
  ~GPUImage2D() override;

  // Re-specifies size, format and contents of the same texture name.
  void set(int width, int height, int format, void* pixels);
  // Pixel-buffer transfers; false for null pixels or size below
  // width x height x format. upload needs the texture bound by the caller.
  bool upload(void* pixels, int size);
  bool download(void* pixels, int size);
  void recycle();

  static unsigned selectTextureTarget(int format);
  static unsigned selectTextureFormat(int format);

  GPUContext* getContext() const { return context.get(); }
  unsigned getTexture() const { return texture; }
  int getWidth() const { return width; }
  int getHeight() const { return height; }
  int getFormat() const { return format; }
  unsigned getTarget() const { return target; }
  unsigned getGLFormat() const { return glFormat; }
  bool ownsTexture() const { return mOwnsTexture; }
  GPUFramebuffer& getFramebuffer() { return framebuffer; }
  GPUPixelBuffer& getPixelBuffer() { return pixelBuffer; }

 private:
  void init(unsigned existing, bool generate, int width, int height, int format, bool allocate, void* pixels);
  void allocateStorage(void* pixels);

  auto_ptr<GPUContext> context;
  GPUFramebuffer framebuffer;
  GPUPixelBuffer pixelBuffer;
  int width;
  int height;
  int format;
  unsigned texture;
  unsigned target;
  unsigned glFormat;
  bool mOwnsTexture;
  Mutex lock;
};
