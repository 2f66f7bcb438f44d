#pragma once

#include "core/Export.h"
#include "core/Mutex.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"
#include "gpu/GPUFramebuffer.h"
#include "gpu/GPUPixelBuffer.h"

class Image;

// Pixel-format codes of the GPU images, shared with Image's first four
// formats; each doubles as bytes per pixel. EXTERNAL is a camera texture
// made elsewhere, never allocated here.
enum GPUFormatCode : int {
  GPU_FORMAT_LUMINANCE = 1,
  GPU_FORMAT_LUMINANCE_ALPHA = 2,
  GPU_FORMAT_RGB = 3,
  GPU_FORMAT_RGBA = 4,
  GPU_FORMAT_EXTERNAL = 5,
};

// One GL texture with the size and pixel-format code of a library image.
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

  // A new texture holding a one-layer Image of format grey (1), two-byte (2),
  // RGB (3) or RGBA (4), whose codes match the GPU format codes; null for any
  // other image, an image without pixels or no context.
  static GPUImage2D* createFromImage(GPUContext* context, Image* image);
  static GPUImage2D* createFromImage(auto_ptr<GPUContext>& context, auto_ptr<Image>& image);

  // Re-specifies size, format and contents of the same texture name.
  void set(int width, int height, int format, void* pixels);
  // Pixel-buffer transfers; false for null pixels or size below
  // width x height x format. upload needs the texture bound by the caller.
  bool upload(void* pixels, int size);
  bool download(void* pixels, int size);
  // Binds the texture, uploads an Image of this size and format, unbinds;
  // false (nothing done) for any other image.
  bool upload(Image* image);
  bool upload(auto_ptr<Image>& image);
  // Reads the texture back into an RGBA Image of this size (format 4 only).
  bool download(Image* image);
  bool download(auto_ptr<Image>& image);
  void recycle();

  static unsigned selectTextureTarget(int format);
  static unsigned selectTextureFormat(int format);

  GPUContext* getContext() const { return mContext.get(); }
  unsigned getTexture() const { return mTexture; }
  int getWidth() const { return mWidth; }
  int getHeight() const { return mHeight; }
  int getFormat() const { return mFormat; }
  unsigned getTarget() const { return mTarget; }
  unsigned getGLFormat() const { return mGLFormat; }
  bool ownsTexture() const { return mOwnsTexture; }
  GPUFramebuffer& getFramebuffer() { return mFramebuffer; }
  GPUPixelBuffer& getPixelBuffer() { return mPixelBuffer; }

 private:
  void init(unsigned existing, bool generate, int width, int height, int format, bool allocate, void* pixels);
  void allocateStorage(void* pixels);

  auto_ptr<GPUContext> mContext;
  GPUFramebuffer mFramebuffer;
  GPUPixelBuffer mPixelBuffer;
  int mWidth;
  int mHeight;
  int mFormat;
  unsigned mTexture;
  unsigned mTarget;
  unsigned mGLFormat;
  bool mOwnsTexture;
  Mutex mLock;
};
