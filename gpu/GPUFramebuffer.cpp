#include "gpu/GPUFramebuffer.h"

#include <algorithm>

#include "gpu/GLHeaders.h"
#include "gpu/GPUImage2D.h"
#include "gpu/GPUUtils.h"

namespace {

const GLenum kAttachments[4] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2,
                                GL_COLOR_ATTACHMENT3};

}  // namespace

GPUFramebuffer::GPUFramebuffer(GPUContext* context) : mContext(context), mFramebuffer(0) {
  GLuint name = 0;
  glGenFramebuffers(1, &name);
  GPUUtils::checkGLError("glGenFramebuffers");
  mFramebuffer = name;
}

GPUFramebuffer::GPUFramebuffer(auto_ptr<GPUContext>& context) : GPUFramebuffer(context.get()) {}

GPUFramebuffer::~GPUFramebuffer() { release(); }

void GPUFramebuffer::release() {
  mDrawTargets.clear();
  if (mFramebuffer == 0) return;
  GLuint name = mFramebuffer;
  glDeleteFramebuffers(1, &name);
  GPUUtils::checkGLError("glDeleteFramebuffers");
  mFramebuffer = 0;
}

void GPUFramebuffer::beginDraw() {
  glBindFramebuffer(GL_DRAW_FRAMEBUFFER, mFramebuffer);
  GPUUtils::checkGLError("glBindFramebuffer");
  mDrawTargets.clear();
}

void GPUFramebuffer::setDrawTarget(int index, GPUImage2D* image) {
  if (image == nullptr || index < 0 || index >= 4) return;
  mDrawTargets.push_back(index);
  glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, kAttachments[index], GL_TEXTURE_2D, image->getTexture(), 0);
  GPUUtils::checkGLError("glFramebufferTexture2D");
  GPUUtils::checkFramebufferStatusDetail("glFramebufferTexture2D");
}

void GPUFramebuffer::setDrawTarget(int index, auto_ptr<GPUImage2D>& image) {
  setDrawTarget(index, image.get());
}

void GPUFramebuffer::endDraw() {
  if (mDrawTargets.empty()) return;
  std::sort(mDrawTargets.begin(), mDrawTargets.end());
  // The list has four entries: more targets (repeated indices) are cut off.
  GLenum list[4] = {GL_NONE, GL_NONE, GL_NONE, GL_NONE};
  size_t count = std::min<size_t>(mDrawTargets.size(), 4);
  for (size_t k = 0; k < count; ++k) list[k] = kAttachments[mDrawTargets[k]];
  glDrawBuffers(static_cast<GLsizei>(count), list);
  GPUUtils::checkGLError("glDrawBuffers");
}

void GPUFramebuffer::beginRead() {
  glBindFramebuffer(GL_READ_FRAMEBUFFER, mFramebuffer);
  GPUUtils::checkGLError("glBindFramebuffer");
}

void GPUFramebuffer::setReadTarget(int index) {
  if (static_cast<unsigned>(index) >= 4) return;
  glReadBuffer(kAttachments[index]);
  GPUUtils::checkGLError("glReadBuffer");
}

void GPUFramebuffer::Blit(int srcX0, int srcY0, int srcX1, int srcY1, int dstX0, int dstY0, int dstX1,
                          int dstY1) {
  glBlitFramebuffer(srcX0, srcY0, srcX1, srcY1, dstX0, dstY0, dstX1, dstY1, GL_COLOR_BUFFER_BIT, GL_LINEAR);
  GPUUtils::checkGLError("glBlitFramebuffer");
}

void GPUFramebuffer::endRead() {
  glBindFramebuffer(GL_FRAMEBUFFER, 0);
  GPUUtils::checkGLError("glBindFramebuffer");
}

void GPUFramebuffer::setFramebufferTarget(GPUFramebuffer* framebuffer, GPUImage2D* image) {
  if (framebuffer == nullptr || image == nullptr) {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    GPUUtils::checkGLError("glBindFramebuffer");
    return;
  }
  glBindFramebuffer(GL_FRAMEBUFFER, framebuffer->mFramebuffer);
  GPUUtils::checkGLError("glBindFramebuffer");
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, image->getTexture(), 0);
  GPUUtils::checkGLError("glFramebufferTexture2D");
  GPUUtils::checkFramebufferStatusDetail("glFramebufferTexture2D");
}

void GPUFramebuffer::setFramebufferTarget(auto_ptr<GPUFramebuffer>& framebuffer,
                                          auto_ptr<GPUImage2D>& image) {
  setFramebufferTarget(framebuffer.get(), image.get());
}
