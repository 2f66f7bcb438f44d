#include "gpu/GPUImage2D.h"

#include <new>

#include "gpu/GLHeaders.h"
#include "gpu/GPUSizes.h"
#include "gpu/GPUTextures.h"
#include "gpu/GPUUtils.h"
#include "image/Image.h"

using orvan::gpu_internal::imageBytes;
using orvan::gpu_internal::imageFormatCode;

namespace {

const GLenum kTargets[5] = {GL_TEXTURE_2D, GL_TEXTURE_2D, GL_TEXTURE_2D, GL_TEXTURE_2D,
                            GL_TEXTURE_EXTERNAL_OES};
const GLenum kFormats[4] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};

}  // namespace

unsigned GPUImage2D::selectTextureTarget(int format) {
  if (format >= GPU_FORMAT_LUMINANCE && format <= GPU_FORMAT_EXTERNAL) return kTargets[format - 1];
  return GL_TEXTURE_2D;
}

unsigned GPUImage2D::selectTextureFormat(int format) {
  if (format >= GPU_FORMAT_LUMINANCE && format <= GPU_FORMAT_RGBA) return kFormats[format - 1];
  return 0;
}

GPUImage2D::GPUImage2D(GPUContext* context, int width, int height, int format)
    : mContext(context), mFramebuffer(context), mPixelBuffer(context), mOwnsTexture(true) {
  init(0, true, width, height, format, true, nullptr);
}

GPUImage2D::GPUImage2D(auto_ptr<GPUContext>& context, int width, int height, int format)
    : GPUImage2D(context.get(), width, height, format) {}

GPUImage2D::GPUImage2D(GPUContext* context, unsigned texture, int width, int height, int format,
                       bool allocate, bool own)
    : mContext(context), mFramebuffer(context), mPixelBuffer(context), mOwnsTexture(own) {
  init(texture, false, width, height, format, allocate, nullptr);
}

GPUImage2D::GPUImage2D(auto_ptr<GPUContext>& context, unsigned texture, int width, int height, int format,
                       bool allocate, bool own)
    : GPUImage2D(context.get(), texture, width, height, format, allocate, own) {}

GPUImage2D::GPUImage2D(GPUContext* context, int width, int height, int format, void* pixels)
    : mContext(context), mFramebuffer(context), mPixelBuffer(context), mOwnsTexture(true) {
  init(0, true, width, height, format, true, pixels);
}

GPUImage2D::GPUImage2D(auto_ptr<GPUContext>& context, int width, int height, int format, void* pixels)
    : GPUImage2D(context.get(), width, height, format, pixels) {}

GPUImage2D::~GPUImage2D() { recycle(); }

void GPUImage2D::init(unsigned existing, bool generate, int w, int h, int f, bool allocate, void* pixels) {
  mTexture = existing;
  mWidth = w;
  mHeight = h;
  mFormat = f;
  mTarget = selectTextureTarget(f);
  mGLFormat = selectTextureFormat(f);
  // Sizes GL cannot take (negative, or more bytes than fit 32 bits) leave the
  // image without a texture rather than half-made.
  if (imageBytes(w, h, 1, f < 1 ? 1 : f) < 0) {
    if (generate) mTexture = 0;
    return;
  }
  if (generate) mTexture = orvan::gpu_internal::generateTexture();
  if (allocate) allocateStorage(pixels);
}

void GPUImage2D::allocateStorage(void* pixels) {
  orvan::gpu_internal::specifyTexture(mTarget, mTexture, false, [&] {
    if (pixels != nullptr) {
      mPixelBuffer.uploadImage(this, pixels);
      return;
    }
    glTexImage2D(mTarget, 0, static_cast<GLint>(mGLFormat), mWidth, mHeight, 0, mGLFormat, GL_UNSIGNED_BYTE,
                 nullptr);
    GPUUtils::checkGLError("glTexImage2D");
  });
}

void GPUImage2D::set(int w, int h, int f, void* pixels) {
  if (imageBytes(w, h, 1, f < 1 ? 1 : f) < 0) return;
  init(mTexture, false, w, h, f, true, pixels);
}

bool GPUImage2D::upload(void* pixels, int size) {
  if (pixels == nullptr) return false;
  int64_t n = imageBytes(mWidth, mHeight, 1, mFormat);
  if (n < 0 || n > size) return false;
  Mutex::Autolock guard(mLock);
  mPixelBuffer.uploadImage(this, pixels);
  return true;
}

bool GPUImage2D::download(void* pixels, int size) {
  if (pixels == nullptr) return false;
  int64_t n = imageBytes(mWidth, mHeight, 1, mFormat);
  if (n < 0 || n > size) return false;
  Mutex::Autolock guard(mLock);
  GPUFramebuffer::setFramebufferTarget(&mFramebuffer, this);
  mPixelBuffer.downloadImage(this, pixels);
  GPUFramebuffer::setFramebufferTarget(nullptr, nullptr);
  return true;
}

void GPUImage2D::recycle() {
  if (!mOwnsTexture || mTexture == 0) return;
  orvan::gpu_internal::deleteTexture(mTexture);
  mTexture = 0;
}

GPUImage2D* GPUImage2D::createFromImage(GPUContext* context, Image* image) {
  int code = imageFormatCode(image);
  if (context == nullptr || code == 0 || image->depth != 1) return nullptr;
  GPUImage2D* result = new (std::nothrow) GPUImage2D(context, static_cast<int>(image->width),
                                                     static_cast<int>(image->height), code, image->planes[0]);
  return orvan::gpu_internal::keepIfTextured(result);
}

GPUImage2D* GPUImage2D::createFromImage(auto_ptr<GPUContext>& context, auto_ptr<Image>& image) {
  return createFromImage(context.get(), image.get());
}

bool GPUImage2D::upload(Image* image) {
  int code = imageFormatCode(image);
  if (code == 0 || code != mFormat || image->depth != 1 || mTexture == 0) return false;
  if (image->width != static_cast<unsigned>(mWidth) || image->height != static_cast<unsigned>(mHeight))
    return false;
  orvan::gpu_internal::bindTexture(mTarget, mTexture);
  bool done = upload(image->planes[0], static_cast<int>(imageBytes(mWidth, mHeight, 1, mFormat)));
  orvan::gpu_internal::bindTexture(mTarget, 0);
  return done;
}

bool GPUImage2D::upload(auto_ptr<Image>& image) { return upload(image.get()); }

bool GPUImage2D::download(Image* image) {
  if (imageFormatCode(image) != GPU_FORMAT_RGBA || mFormat != GPU_FORMAT_RGBA || image->depth != 1 ||
      mTexture == 0)
    return false;
  if (image->width != static_cast<unsigned>(mWidth) || image->height != static_cast<unsigned>(mHeight))
    return false;
  return download(image->planes[0], static_cast<int>(imageBytes(mWidth, mHeight, 1, GPU_FORMAT_RGBA)));
}

bool GPUImage2D::download(auto_ptr<Image>& image) { return download(image.get()); }
