#pragma once

#include "core/Export.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"
#include "gpu/GPUPixelBuffer.h"

class Image;

// One 3D texture (codes 1-4 as for GPUImage2D; other codes give a 2D target
// with no format, which GL rejects).
class OV_EXPORT GPUImage3D : public RefBase {
 public:
  GPUImage3D(GPUContext* context, int width, int height, int depth, int format);
  GPUImage3D(auto_ptr<GPUContext>& context, int width, int height, int depth, int format);
  GPUImage3D(GPUContext* context, unsigned texture, int width, int height, int depth, int format,
             bool allocate, bool own);
  GPUImage3D(auto_ptr<GPUContext>& context, unsigned texture, int width, int height, int depth, int format,
             bool allocate, bool own);
  GPUImage3D(GPUContext* context, int width, int height, int depth, int format, void* pixels);
  GPUImage3D(auto_ptr<GPUContext>& context, int width, int height, int depth, int format, void* pixels);
  ~GPUImage3D() override;

  // A new texture holding every layer of an Image (depth = the image's
  // depth) of format 1-4; null for any other image.
  static GPUImage3D* createFromImage(GPUContext* context, Image* image);
  static GPUImage3D* createFromImage(auto_ptr<GPUContext>& context, auto_ptr<Image>& image);

  void set(int width, int height, int depth, int format, void* pixels);
  void recycle();

  static unsigned selectTextureTarget(int format);
  static unsigned selectTextureFormat(int format);

  GPUContext* getContext() const { return mContext.get(); }
  unsigned getTexture() const { return mTexture; }
  int getWidth() const { return mWidth; }
  int getHeight() const { return mHeight; }
  int getDepth() const { return mDepth; }
  int getFormat() const { return mFormat; }
  unsigned getTarget() const { return mTarget; }
  unsigned getGLFormat() const { return mGLFormat; }
  bool ownsTexture() const { return mOwnsTexture; }
  GPUPixelBuffer& getPixelBuffer() { return mPixelBuffer; }

 private:
  void init(unsigned existing, bool generate, int width, int height, int depth, int format, bool allocate,
            void* pixels);
  void allocateStorage(void* pixels);

  auto_ptr<GPUContext> mContext;
  GPUPixelBuffer mPixelBuffer;
  int mWidth;
  int mHeight;
  int mDepth;
  int mFormat;
  unsigned mTexture;
  unsigned mTarget;
  unsigned mGLFormat;
  bool mOwnsTexture;
};
