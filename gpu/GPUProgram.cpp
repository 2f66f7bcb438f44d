#include "gpu/GPUProgram.h"

#include <cstring>

#include "gpu/GLHeaders.h"
#include "gpu/GPUUtils.h"

namespace {

// Texture coordinates are a quarter turn against the positions:
// s = (y + 1) / 2, t = (1 - x) / 2.
const float kPosVertices[8] = {-1.0f, -1.0f, 1.0f, -1.0f, -1.0f, 1.0f, 1.0f, 1.0f};
const float kTexVertices[8] = {0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f, 0.0f};

// 2D and 3D images bind the same way; only their target differs.
template <typename Image>
void bindSampler(GLuint program, const char* uniformName, int unit, Image* image) {
  if (program == 0 || image == nullptr || uniformName == nullptr || unit < 0) return;
  GLint loc = glGetUniformLocation(program, uniformName);
  glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
  GPUUtils::checkGLError("glActiveTexture");
  glBindTexture(image->getTarget(), image->getTexture());
  GPUUtils::checkGLError("glBindTexture");
  glUniform1i(loc, unit);
  GPUUtils::checkGLError("glUniform1i");
}

// The host-value setters refuse the same inputs and report errors under the
// name of the GL call they make.
template <typename T, typename Upload>
void setUniform(GLuint program, const char* name, const T* value, const char* tag, Upload upload) {
  if (program == 0 || name == nullptr || value == nullptr) return;
  upload(glGetUniformLocation(program, name));
  GPUUtils::checkGLError(tag);
}

}  // namespace

GPUProgram::GPUProgram(GPUContext* context, GPUScript* script) : GPUProgram(context, script, 0u) {}

GPUProgram::GPUProgram(auto_ptr<GPUContext>& context, auto_ptr<GPUScript>& script)
    : GPUProgram(context.get(), script.get(), 0u) {}

GPUProgram::GPUProgram(auto_ptr<GPUContext>& context, auto_ptr<GPUScript>& script, unsigned options)
    : GPUProgram(context.get(), script.get(), options) {}

GPUProgram::GPUProgram(GPUContext* context, GPUScript* script, unsigned options)
    : mContext(context), mScript(script), mFramebuffer(context), mProgram(0), mFromBinary(false) {
  memcpy(mPosVertices, kPosVertices, sizeof(mPosVertices));
  memcpy(mTexVertices, kTexVertices, sizeof(mTexVertices));
  if (script != nullptr) create(options | script->getOptions());
}

GPUProgram::~GPUProgram() { release(); }

void GPUProgram::create(unsigned options) {
  GPUScript* s = mScript.get();
  if (s->getScriptBinary() != nullptr) {
    mProgram =
        GPUUtils::createProgram(s->getScriptBinaryFormat(), s->getScriptBinary(), s->getScriptBinaryLength());
    if (mProgram != 0) {
      mFromBinary = true;
      return;
    }
    // Without the option a rejected binary leaves the program 0 for good.
    if ((options & GPUScript::OPTION_RECOMPILE_REJECTED_BINARY) == 0) return;
    s->dropScriptBinary();
  }
  auto_ptr<GPUScriptSource>& vertex = s->getScriptSourceByIndex(0);
  const char* vertexText = vertex != nullptr ? vertex->getSource() : nullptr;
  auto_ptr<GPUScriptSource>& fragment = s->getScriptSourceByIndex(1);
  const char* fragmentText = fragment != nullptr ? fragment->getSource() : nullptr;
  if (vertexText == nullptr || fragmentText == nullptr) return;
  mProgram = GPUUtils::createProgram(vertexText, fragmentText);
  if (mProgram == 0 || (options & GPUScript::OPTION_STORE_COMPILED_BINARY) == 0) return;
  int length = 0;
  unsigned format = 0;
  void* binary = nullptr;
  if (GPUUtils::getProgramBinary(mProgram, &length, &format, &binary) == 1) {
    s->setScriptBinaryFormat(format);
    s->setScriptBinary(binary, length);
  }
}

int GPUProgram::location(const char* name) const { return glGetUniformLocation(mProgram, name); }

bool GPUProgram::beganCompute() {
  if (mProgram == 0) return false;
  glUseProgram(mProgram);
  GPUUtils::checkGLError("glUseProgram");
  return true;
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, GPUImage2D* image) {
  bindSampler(mProgram, uniformName, unit, image);
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage2D>& image) {
  setSourceTarget(uniformName, unit, image.get());
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, GPUImage3D* image) {
  bindSampler(mProgram, uniformName, unit, image);
}

void GPUProgram::setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage3D>& image) {
  setSourceTarget(uniformName, unit, image.get());
}

void GPUProgram::setParameters(const char* name, GPUProgramParameterType type, void* value) {
  if (mProgram == 0 || name == nullptr || value == nullptr) return;
  GLint loc = location(name);
  const GLint* iv = static_cast<const GLint*>(value);
  const GLfloat* fv = static_cast<const GLfloat*>(value);
  switch (type) {
    case INT1:
      glUniform1iv(loc, 1, iv);
      break;
    case INT2:
      glUniform2iv(loc, 1, iv);
      break;
    case INT3:
      glUniform3iv(loc, 1, iv);
      break;
    case INT4:
      glUniform4iv(loc, 1, iv);
      break;
    case FLOAT1:
      glUniform1fv(loc, 1, fv);
      break;
    case FLOAT2:
      glUniform2fv(loc, 1, fv);
      break;
    case FLOAT3:
      glUniform3fv(loc, 1, fv);
      break;
    case FLOAT4:
      glUniform4fv(loc, 1, fv);
      break;
    case MATRIX2:
      glUniformMatrix2fv(loc, 1, GL_FALSE, fv);
      break;
    case MATRIX3:
      glUniformMatrix3fv(loc, 1, GL_FALSE, fv);
      break;
    case MATRIX4:
      glUniformMatrix4fv(loc, 1, GL_FALSE, fv);
      break;
    default:
      return;
  }
  GPUUtils::checkGLError("glUniform");
}

void GPUProgram::_SetHostValue1iv(const char* name, int count, int* value) {
  setUniform(mProgram, name, value, "glUniform1iv", [&](GLint loc) { glUniform1iv(loc, count, value); });
}

void GPUProgram::_SetHostValue2iv(const char* name, int count, int* value) {
  setUniform(mProgram, name, value, "glUniform2iv", [&](GLint loc) { glUniform2iv(loc, count, value); });
}

void GPUProgram::_SetHostValue3iv(const char* name, int count, int* value) {
  setUniform(mProgram, name, value, "glUniform3iv", [&](GLint loc) { glUniform3iv(loc, count, value); });
}

void GPUProgram::_SetHostValue4iv(const char* name, int count, int* value) {
  setUniform(mProgram, name, value, "glUniform4iv", [&](GLint loc) { glUniform4iv(loc, count, value); });
}

void GPUProgram::_SetHostValue1fv(const char* name, int count, float* value) {
  setUniform(mProgram, name, value, "glUniform1fv", [&](GLint loc) { glUniform1fv(loc, count, value); });
}

void GPUProgram::_SetHostValue2fv(const char* name, int count, float* value) {
  setUniform(mProgram, name, value, "glUniform2fv", [&](GLint loc) { glUniform2fv(loc, count, value); });
}

void GPUProgram::_SetHostValue3fv(const char* name, int count, float* value) {
  setUniform(mProgram, name, value, "glUniform3fv", [&](GLint loc) { glUniform3fv(loc, count, value); });
}

void GPUProgram::_SetHostValue4fv(const char* name, int count, float* value) {
  setUniform(mProgram, name, value, "glUniform4fv", [&](GLint loc) { glUniform4fv(loc, count, value); });
}

void GPUProgram::_SetHostValueMatrix2fv(const char* name, int count, bool transpose, const float* value) {
  setUniform(mProgram, name, value, "glUniformMatrix2fv",
             [&](GLint loc) { glUniformMatrix2fv(loc, count, transpose ? GL_TRUE : GL_FALSE, value); });
}

void GPUProgram::_SetHostValueMatrix3fv(const char* name, int count, bool transpose, const float* value) {
  setUniform(mProgram, name, value, "glUniformMatrix3fv",
             [&](GLint loc) { glUniformMatrix3fv(loc, count, transpose ? GL_TRUE : GL_FALSE, value); });
}

void GPUProgram::_SetHostValueMatrix4fv(const char* name, int count, bool transpose, const float* value) {
  setUniform(mProgram, name, value, "glUniformMatrix4fv",
             [&](GLint loc) { glUniformMatrix4fv(loc, count, transpose ? GL_TRUE : GL_FALSE, value); });
}

void GPUProgram::setOutputSize(int x, int y, int width, int height) {
  if (mProgram == 0) return;
  glViewport(x, y, width, height);
  GPUUtils::checkGLError("glViewport");
}

void GPUProgram::setOutputTarget(GPUImage2D* image) {
  GPUFramebuffer::setFramebufferTarget(&mFramebuffer, image);
}

void GPUProgram::setOutputTarget(auto_ptr<GPUImage2D>& image) { setOutputTarget(image.get()); }

void GPUProgram::setPosVertices(const float* vertices) {
  if (vertices != nullptr) memcpy(mPosVertices, vertices, sizeof(mPosVertices));
}

void GPUProgram::setTexVertices(const float* vertices) {
  if (vertices != nullptr) memcpy(mTexVertices, vertices, sizeof(mTexVertices));
}

bool GPUProgram::endCompute() {
  if (mProgram == 0) return false;
  // Client-side arrays need no buffer bound to GL_ARRAY_BUFFER.
  glBindBuffer(GL_ARRAY_BUFFER, 0);
  glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, mPosVertices);
  glEnableVertexAttribArray(0);
  GPUUtils::checkGLError("vertex attribute setup");
  glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 0, mTexVertices);
  glEnableVertexAttribArray(1);
  GPUUtils::checkGLError("vertex attribute setup");
  glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
  GPUUtils::checkGLError("glDrawArrays");
  return true;
}

void GPUProgram::release() {
  if (mProgram == 0) return;
  glDeleteProgram(mProgram);
  GPUUtils::checkGLError("glDeleteProgram");
  mProgram = 0;
}
