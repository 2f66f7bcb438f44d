#include "gpu/GPUImage3D.h"

#include <new>

#include "gpu/GLHeaders.h"
#include "gpu/GPUImage2D.h"
#include "gpu/GPUSizes.h"
#include "gpu/GPUTextures.h"
#include "gpu/GPUUtils.h"
#include "image/Image.h"

using orvan::gpu_internal::imageBytes;
using orvan::gpu_internal::imageFormatCode;

unsigned GPUImage3D::selectTextureTarget(int format) {
  return format >= GPU_FORMAT_LUMINANCE && format <= GPU_FORMAT_RGBA ? GL_TEXTURE_3D : GL_TEXTURE_2D;
}

unsigned GPUImage3D::selectTextureFormat(int format) { return GPUImage2D::selectTextureFormat(format); }

GPUImage3D::GPUImage3D(GPUContext* context, int width, int height, int depth, int format)
    : mContext(context), mPixelBuffer(context), mOwnsTexture(true) {
  init(0, true, width, height, depth, format, true, nullptr);
}

GPUImage3D::GPUImage3D(auto_ptr<GPUContext>& context, int width, int height, int depth, int format)
    : GPUImage3D(context.get(), width, height, depth, format) {}

GPUImage3D::GPUImage3D(GPUContext* context, unsigned texture, int width, int height, int depth, int format,
                       bool allocate, bool own)
    : mContext(context), mPixelBuffer(context), mOwnsTexture(own) {
  init(texture, false, width, height, depth, format, allocate, nullptr);
}

GPUImage3D::GPUImage3D(auto_ptr<GPUContext>& context, unsigned texture, int width, int height, int depth,
                       int format, bool allocate, bool own)
    : GPUImage3D(context.get(), texture, width, height, depth, format, allocate, own) {}

GPUImage3D::GPUImage3D(GPUContext* context, int width, int height, int depth, int format, void* pixels)
    : mContext(context), mPixelBuffer(context), mOwnsTexture(true) {
  init(0, true, width, height, depth, format, true, pixels);
}

GPUImage3D::GPUImage3D(auto_ptr<GPUContext>& context, int width, int height, int depth, int format,
                       void* pixels)
    : GPUImage3D(context.get(), width, height, depth, format, pixels) {}

GPUImage3D::~GPUImage3D() { recycle(); }

void GPUImage3D::init(unsigned existing, bool generate, int w, int h, int d, int f, bool allocate,
                      void* pixels) {
  mTexture = existing;
  mWidth = w;
  mHeight = h;
  mDepth = d;
  mFormat = f;
  mTarget = selectTextureTarget(f);
  mGLFormat = selectTextureFormat(f);
  if (imageBytes(w, h, d, f < 1 ? 1 : f) < 0) {
    if (generate) mTexture = 0;
    return;
  }
  if (generate) mTexture = orvan::gpu_internal::generateTexture();
  if (allocate) allocateStorage(pixels);
}

void GPUImage3D::allocateStorage(void* pixels) {
  orvan::gpu_internal::specifyTexture(mTarget, mTexture, true, [&] {
    if (pixels != nullptr) {
      mPixelBuffer.uploadImage(this, pixels);
      return;
    }
    glTexImage3D(mTarget, 0, static_cast<GLint>(mGLFormat), mWidth, mHeight, mDepth, 0, mGLFormat,
                 GL_UNSIGNED_BYTE, nullptr);
    GPUUtils::checkGLError("glTexImage3D");
  });
}

void GPUImage3D::set(int w, int h, int d, int f, void* pixels) {
  if (imageBytes(w, h, d, f < 1 ? 1 : f) < 0) return;
  init(mTexture, false, w, h, d, f, true, pixels);
}

void GPUImage3D::recycle() {
  if (!mOwnsTexture || mTexture == 0) return;
  orvan::gpu_internal::deleteTexture(mTexture);
  mTexture = 0;
}

GPUImage3D* GPUImage3D::createFromImage(GPUContext* context, Image* image) {
  int code = imageFormatCode(image);
  if (context == nullptr || code == 0) return nullptr;
  GPUImage3D* result =
      new (std::nothrow) GPUImage3D(context, static_cast<int>(image->width), static_cast<int>(image->height),
                                    static_cast<int>(image->depth), code, image->planes[0]);
  return orvan::gpu_internal::keepIfTextured(result);
}

GPUImage3D* GPUImage3D::createFromImage(auto_ptr<GPUContext>& context, auto_ptr<Image>& image) {
  return createFromImage(context.get(), image.get());
}
