#pragma once

#include "core/Export.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"

class GPUImage2D;
class GPUImage3D;

// One pixel buffer object that moves pixels between client memory and a
// texture. Every transfer re-specifies the storage (orphaning) and maps it
// write-only or read-only, so the driver never waits on a previous transfer.
class OV_EXPORT GPUPixelBuffer : public RefBase {
 public:
  explicit GPUPixelBuffer(GPUContext* context);
  explicit GPUPixelBuffer(auto_ptr<GPUContext>& context);
  ~GPUPixelBuffer() override;

  void release();

  // Specifies the bound texture of the image's target from width x height
  // (x depth) x format bytes at pixels. The caller binds the texture.
  void uploadImage(GPUImage2D* image, void* pixels);
  void uploadImage(auto_ptr<GPUImage2D>& image, void* pixels);
  void uploadImage(GPUImage3D* image, void* pixels);
  void uploadImage(auto_ptr<GPUImage3D>& image, void* pixels);
  // Reads width x height RGBA pixels of the bound read framebuffer and copies
  // width x height x format bytes of them to pixels.
  void downloadImage(GPUImage2D* image, void* pixels);
  void downloadImage(auto_ptr<GPUImage2D>& image, void* pixels);

  unsigned getBuffer() const { return mBuffer; }

 private:
  auto_ptr<GPUContext> mContext;
  unsigned mBuffer;
};
