#include "gpu/GPUUtils.h"

#include <cstring>

#include "core/Log.h"
#include "core/Memory.h"
#include "gpu/GLHeaders.h"

int GPUUtils::checkEGLError(const char* op, int returned) {
  if (returned != 1) OV_LOGD("%s() returned %d\n", op, returned);
  EGLint error = eglGetError();
  if (error == EGL_SUCCESS) return error;
  // eglGetError resets on every read, so this loop ends on EGL_SUCCESS.
  while (error != EGL_SUCCESS) {
    OV_LOGD("after %s() eglError (0x%x)\n", op, error);
    error = eglGetError();
  }
  return error;
}

int GPUUtils::getContextRenderableType(EGLDisplay display) {
  const char* extensions = eglQueryString(display, EGL_EXTENSIONS);
  if (extensions == nullptr) return EGL_OPENGL_ES2_BIT;
  if (strstr(extensions, "EGL_KHR_create_context") != nullptr) return 0x40;  // EGL_OPENGL_ES3_BIT_KHR
  return EGL_OPENGL_ES2_BIT;
}

int GPUUtils::checkGLError(const char* tag) {
  GLenum error = glGetError();
  if (error == GL_NO_ERROR) return 0;
  int first = static_cast<int>(error);
  // Without a current context glGetError answers 0, so this always ends; the
  // bound guards against a driver that keeps reporting.
  for (int i = 0; error != GL_NO_ERROR && i < 64; ++i) {
    OV_LOGD("after :%s() glError (0x%x)\n", tag, error);
    error = glGetError();
  }
  return first;
}

void GPUUtils::checkFramebufferStatusDetail(const char* tag) {
  GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
  if (status == 0) {
    OV_LOGD("Checking completeness of Framebuffer:%s\n", tag);
    checkGLError("checkFramebufferStatus (is the target \"GL_FRAMEBUFFER\"?)");
    return;
  }
  if (status == GL_FRAMEBUFFER_COMPLETE) return;
  const char* reason = "not listed";
  switch (status) {
    case GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT:
      reason = "attachment";
      break;
    case GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT:
      reason = "missing attachment";
      break;
    case GL_FRAMEBUFFER_INCOMPLETE_DIMENSIONS:
      reason = "dimensions";
      break;
    case GL_FRAMEBUFFER_UNSUPPORTED:
      reason = "unsupported";
      break;
    default:
      break;
  }
  OV_LOGD("Framebuffer: %s is INCOMPLETE: %s, %x\n", tag, reason, status);
}

unsigned GPUUtils::loadShader(int type, const char* source) {
  if (source == nullptr) return 0;
  GLuint shader = glCreateShader(static_cast<GLenum>(type));
  if (shader == 0) return 0;
  glShaderSource(shader, 1, &source, nullptr);
  glCompileShader(shader);
  GLint compiled = 0;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
  if (compiled != 0) return shader;
  GLint length = 0;
  glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
  // A failed compile without a log is passed on as if it succeeded.
  if (length == 0) return shader;
  if (length > 0) {
    char* log = static_cast<char*>(galloc_malloc(static_cast<unsigned>(length) + 1));
    if (log != nullptr) {
      memset(log, 0, static_cast<size_t>(length) + 1);
      glGetShaderInfoLog(shader, length, nullptr, log);
      OV_LOGD("Could not compiled shader:%d\n%s\n", type, log);
      galloc_free(log);
    }
  }
  glDeleteShader(shader);
  return 0;
}

namespace {

void logLinkFailure(GLuint program) {
  GLint length = 0;
  glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
  if (length <= 0) return;
  char* log = static_cast<char*>(galloc_malloc(static_cast<unsigned>(length) + 1));
  if (log == nullptr) return;
  memset(log, 0, static_cast<size_t>(length) + 1);
  glGetProgramInfoLog(program, length, nullptr, log);
  OV_LOGD("Could not link program:\n%s\n", log);
  galloc_free(log);
}

// Link status must be exactly 1 (GL_TRUE).
unsigned finishLink(GLuint program) {
  GLint linked = 0;
  glGetProgramiv(program, GL_LINK_STATUS, &linked);
  if (linked == 1) return program;
  logLinkFailure(program);
  glDeleteProgram(program);
  return 0;
}

}  // namespace

void GPUUtils::bindDrawAttributes(unsigned program) {
  if (program == 0) return;
  glBindAttribLocation(program, 0, "a_position");
  glBindAttribLocation(program, 1, "a_texcoord");
}

unsigned GPUUtils::createProgram(const char* vertexSource, const char* fragmentSource) {
  GLuint vertex = loadShader(GL_VERTEX_SHADER, vertexSource);
  if (vertex == 0) return 0;
  GLuint fragment = loadShader(GL_FRAGMENT_SHADER, fragmentSource);
  if (fragment == 0) {
    glDeleteShader(vertex);
    return 0;
  }
  GLuint program = glCreateProgram();
  if (program == 0) {
    glDeleteShader(vertex);
    glDeleteShader(fragment);
    return 0;
  }
  glAttachShader(program, vertex);
  checkGLError("glAttachShader");
  glAttachShader(program, fragment);
  checkGLError("glAttachShader");
  bindDrawAttributes(program);
  glLinkProgram(program);
  // The program keeps the shaders alive while attached; flagging them for
  // deletion now frees them together with the program.
  glDeleteShader(vertex);
  glDeleteShader(fragment);
  return finishLink(program);
}

unsigned GPUUtils::createComputeProgram(const char* computeSource) {
  GLuint compute = loadShader(0x91B9, computeSource);  // GL_COMPUTE_SHADER
  if (compute == 0) return 0;
  GLuint program = glCreateProgram();
  if (program == 0) {
    glDeleteShader(compute);
    return 0;
  }
  glAttachShader(program, compute);
  checkGLError("glAttachShader");
  glLinkProgram(program);
  glDeleteShader(compute);
  return finishLink(program);
}

unsigned GPUUtils::createProgram(unsigned binaryFormat, void* binary, int length) {
  if (binary == nullptr || length <= 0) return 0;
  GLuint program = glCreateProgram();
  if (program == 0) return 0;
  glProgramBinary(program, binaryFormat, binary, length);
  checkGLError("glProgramBinary");
  return finishLink(program);
}

int GPUUtils::getProgramBinary(unsigned program, int* length, unsigned* binaryFormat, void** binary) {
  if (program == 0 || length == nullptr || binaryFormat == nullptr || binary == nullptr) return 0;
  GLint size = 0;
  glGetProgramiv(program, GL_PROGRAM_BINARY_LENGTH, &size);
  if (size <= 0) {
    checkGLError("glGetProgramBinary");
    return 0;
  }
  void* buffer = galloc_malloc(static_cast<unsigned>(size));
  if (buffer == nullptr) return 0;
  GLsizei written = 0;
  GLenum format = 0;
  glGetProgramBinary(program, size, &written, &format, buffer);
  if (checkGLError("glGetProgramBinary") != 0 || written <= 0) {
    galloc_free(buffer);
    return 0;
  }
  *binary = buffer;
  *length = written;
  *binaryFormat = format;
  return 1;
}
