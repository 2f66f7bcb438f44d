#pragma once

#include <EGL/egl.h>

#include "core/Export.h"

// Static helpers of the GPU layer: error draining, config choice, shader and
// program creation, program binaries.
class OV_EXPORT GPUUtils {
 public:
  // Logs "%s() returned %d" when returned != 1, then logs and drains every
  // pending EGL error; returns the last eglGetError value read (EGL_SUCCESS
  // when none was pending).
  static int checkEGLError(const char* op, int returned);
  // EGL_OPENGL_ES3_BIT_KHR when the display offers EGL_KHR_create_context,
  // else EGL_OPENGL_ES2_BIT.
  static int getContextRenderableType(EGLDisplay display);

  // Logs and drains pending GL errors; returns the first code (0 for none).
  static int checkGLError(const char* tag);
  // Logs why the bound framebuffer is incomplete, if it is.
  static void checkFramebufferStatusDetail(const char* tag);

  // A compiled shader name, or 0.
  static unsigned loadShader(int type, const char* source);
  // A linked program, or 0.
  static unsigned createProgram(const char* vertexSource, const char* fragmentSource);
  static unsigned createComputeProgram(const char* computeSource);
  // A program from a binary got by getProgramBinary, or 0 if GL rejects it.
  static unsigned createProgram(unsigned binaryFormat, void* binary, int length);
  // Fetches a linked program's binary into a new galloc_malloc block that the
  // caller owns. Returns 1 with the outputs set, 0 (outputs untouched except
  // on a GL failure after allocation) otherwise.
  static int getProgramBinary(unsigned program, int* length, unsigned* binaryFormat, void** binary);

  // Binds the attribute names a program's vertex shader uses to the
  // locations the draw feeds (0 position, 1 texture coordinate) before it is
  // linked. Used by createProgram for "a_position" and "a_texcoord".
  static void bindDrawAttributes(unsigned program);
};
