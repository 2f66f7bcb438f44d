#include "gpu/GPUPixelBuffer.h"

#include <cstring>

#include "gpu/GLHeaders.h"
#include "gpu/GPUImage2D.h"
#include "gpu/GPUImage3D.h"
#include "gpu/GPUSizes.h"
#include "gpu/GPUUtils.h"

using orvan::gpu_internal::imageBytes;

GPUPixelBuffer::GPUPixelBuffer(GPUContext* context) : mContext(context), mBuffer(0) {
  GLuint name = 0;
  glGenBuffers(1, &name);
  GPUUtils::checkGLError("glGenBuffers");
  mBuffer = name;
}

GPUPixelBuffer::GPUPixelBuffer(auto_ptr<GPUContext>& context) : GPUPixelBuffer(context.get()) {}

GPUPixelBuffer::~GPUPixelBuffer() { release(); }

void GPUPixelBuffer::release() {
  if (mBuffer == 0) return;
  GLuint name = mBuffer;
  glDeleteBuffers(1, &name);
  GPUUtils::checkGLError("glDeleteBuffers");
  mBuffer = 0;
}

namespace {

// Orphans the unpack buffer, fills it through a write-only map and leaves it
// bound; false (unbound) when nothing was mapped.
bool fillUnpackBuffer(GLuint buffer, const void* pixels, int64_t n) {
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  GPUUtils::checkGLError("glBindBuffer");
  glBufferData(GL_PIXEL_UNPACK_BUFFER, static_cast<GLsizeiptr>(n), nullptr, GL_STREAM_DRAW);
  GPUUtils::checkGLError("glBufferData");
  void* mapped = glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, static_cast<GLsizeiptr>(n), GL_MAP_WRITE_BIT);
  GPUUtils::checkGLError("glMapBufferRange");
  if (mapped == nullptr) {
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    GPUUtils::checkGLError("glBindBuffer");
    return false;
  }
  memcpy(mapped, pixels, static_cast<size_t>(n));
  glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
  GPUUtils::checkGLError("glUnmapBuffer");
  return true;
}

// Client rows are tightly packed (1- and 3-byte formats often have rows that
// are not a multiple of 4): unpack with alignment 1 for the one call.
class TightUnpack {
 public:
  TightUnpack() {
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &mPrevious);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  }
  ~TightUnpack() { glPixelStorei(GL_UNPACK_ALIGNMENT, mPrevious); }
  TightUnpack(const TightUnpack&) = delete;
  TightUnpack& operator=(const TightUnpack&) = delete;

 private:
  GLint mPrevious = 4;
};

// Stages n bytes in the unpack buffer, has specify() take them from there
// with tight rows, then unbinds the buffer.
template <typename Specify>
void uploadThrough(GLuint buffer, void* pixels, int64_t n, Specify specify) {
  if (n <= 0) return;
  if (!fillUnpackBuffer(buffer, pixels, n)) return;
  TightUnpack tight;
  specify();
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  GPUUtils::checkGLError("glBindBuffer");
}

}  // namespace

void GPUPixelBuffer::uploadImage(GPUImage2D* image, void* pixels) {
  if (image == nullptr || pixels == nullptr || mBuffer == 0) return;
  int64_t n = imageBytes(image->getWidth(), image->getHeight(), 1, image->getFormat());
  uploadThrough(mBuffer, pixels, n, [image] {
    GLenum glFormat = image->getGLFormat();
    glTexImage2D(image->getTarget(), 0, static_cast<GLint>(glFormat), image->getWidth(), image->getHeight(),
                 0, glFormat, GL_UNSIGNED_BYTE, nullptr);
    GPUUtils::checkGLError("glTexImage");
  });
}

void GPUPixelBuffer::uploadImage(auto_ptr<GPUImage2D>& image, void* pixels) {
  uploadImage(image.get(), pixels);
}

void GPUPixelBuffer::uploadImage(GPUImage3D* image, void* pixels) {
  if (image == nullptr || pixels == nullptr || mBuffer == 0) return;
  int64_t n = imageBytes(image->getWidth(), image->getHeight(), image->getDepth(), image->getFormat());
  uploadThrough(mBuffer, pixels, n, [image] {
    GLenum glFormat = image->getGLFormat();
    glTexImage3D(image->getTarget(), 0, static_cast<GLint>(glFormat), image->getWidth(), image->getHeight(),
                 image->getDepth(), 0, glFormat, GL_UNSIGNED_BYTE, nullptr);
    GPUUtils::checkGLError("glTexImage3D");
  });
}

void GPUPixelBuffer::uploadImage(auto_ptr<GPUImage3D>& image, void* pixels) {
  uploadImage(image.get(), pixels);
}

void GPUPixelBuffer::downloadImage(GPUImage2D* image, void* pixels) {
  if (image == nullptr || pixels == nullptr || mBuffer == 0) return;
  int64_t n = imageBytes(image->getWidth(), image->getHeight(), 1, image->getFormat());
  // glReadPixels always writes RGBA, so the buffer must hold that much even
  // when the format code is smaller; only n bytes reach the caller.
  int64_t rgba = imageBytes(image->getWidth(), image->getHeight(), 1, GPU_FORMAT_RGBA);
  if (n <= 0 || rgba <= 0) return;
  int64_t storage = n > rgba ? n : rgba;
  glBindBuffer(GL_PIXEL_PACK_BUFFER, mBuffer);
  GPUUtils::checkGLError("glBindBuffer");
  glBufferData(GL_PIXEL_PACK_BUFFER, static_cast<GLsizeiptr>(storage), nullptr, GL_STREAM_READ);
  GPUUtils::checkGLError("glBufferData");
  glReadPixels(0, 0, image->getWidth(), image->getHeight(), GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  GPUUtils::checkGLError("glReadPixels");
  void* mapped = glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, static_cast<GLsizeiptr>(n), GL_MAP_READ_BIT);
  GPUUtils::checkGLError("glMapBufferRange");
  if (mapped != nullptr) {
    memcpy(pixels, mapped, static_cast<size_t>(n));
    glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
    GPUUtils::checkGLError("glUnmapBuffer");
  }
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  GPUUtils::checkGLError("glBindBuffer");
}

void GPUPixelBuffer::downloadImage(auto_ptr<GPUImage2D>& image, void* pixels) {
  downloadImage(image.get(), pixels);
}
