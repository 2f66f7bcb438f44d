#include "gpu/GPUTextures.h"

#include "gpu/GLHeaders.h"
#include "gpu/GPUUtils.h"

namespace orvan::gpu_internal {

unsigned generateTexture() {
  GLuint name = 0;
  glGenTextures(1, &name);
  GPUUtils::checkGLError("glGenTextures");
  return name;
}

void deleteTexture(unsigned texture) {
  GLuint name = texture;
  glDeleteTextures(1, &name);
  GPUUtils::checkGLError("glDeleteTextures");
}

void setDefaultParameters(unsigned target, bool volume) {
  glTexParameterf(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  GPUUtils::checkGLError("glTexParameterf");
  glTexParameterf(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  GPUUtils::checkGLError("glTexParameterf");
  glTexParameterf(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  GPUUtils::checkGLError("glTexParameterf");
  glTexParameterf(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  GPUUtils::checkGLError("glTexParameterf");
  if (!volume) return;
  glTexParameteri(target, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE);
  GPUUtils::checkGLError("glTexParameteri");
}

void bindTexture(unsigned target, unsigned texture) {
  glBindTexture(target, texture);
  GPUUtils::checkGLError("glBindTexture");
}

}  // namespace orvan::gpu_internal
