#pragma once

#include "core/Export.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"
#include "gpu/GPUFramebuffer.h"
#include "gpu/GPUImage2D.h"
#include "gpu/GPUImage3D.h"
#include "gpu/GPUScript.h"

// A GL program built from a script (from its binary if it has one, else from
// sources 0 and 1) that draws one full-screen quad per computation: inputs
// bound to sampler units, uniforms set from host values, output to a texture
// or to the bound surface. The vertex shader must read the position at
// attribute location 0 and the texture coordinate at 1.
class OV_EXPORT GPUProgram : public RefBase {
 public:
  enum GPUProgramParameterType {
    INT1 = 0,
    INT2 = 1,
    INT3 = 2,
    INT4 = 3,
    FLOAT1 = 4,
    FLOAT2 = 5,
    FLOAT3 = 6,
    FLOAT4 = 7,
    MATRIX2 = 8,
    MATRIX3 = 9,
    MATRIX4 = 10,
  };

  GPUProgram(GPUContext* context, GPUScript* script);
  GPUProgram(auto_ptr<GPUContext>& context, auto_ptr<GPUScript>& script);
  // As above, with GPUScript::ProgramOption bits added to the script's own.
  GPUProgram(GPUContext* context, GPUScript* script, unsigned options);
  GPUProgram(auto_ptr<GPUContext>& context, auto_ptr<GPUScript>& script, unsigned options);
  ~GPUProgram() override;

  virtual bool beganCompute();
  virtual void setSourceTarget(const char* uniformName, int unit, GPUImage2D* image);
  virtual void setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage2D>& image);
  virtual void setSourceTarget(const char* uniformName, int unit, GPUImage3D* image);
  virtual void setSourceTarget(const char* uniformName, int unit, auto_ptr<GPUImage3D>& image);
  virtual void setParameters(const char* name, GPUProgramParameterType type, void* value);
  virtual void setOutputSize(int x, int y, int width, int height);
  virtual void setOutputTarget(GPUImage2D* image);
  virtual void setOutputTarget(auto_ptr<GPUImage2D>& image);
  virtual void setPosVertices(const float* vertices);
  virtual void setTexVertices(const float* vertices);
  virtual bool endCompute();
  virtual void release();

  void _SetHostValue1iv(const char* name, int count, int* value);
  void _SetHostValue2iv(const char* name, int count, int* value);
  void _SetHostValue3iv(const char* name, int count, int* value);
  void _SetHostValue4iv(const char* name, int count, int* value);
  void _SetHostValue1fv(const char* name, int count, float* value);
  void _SetHostValue2fv(const char* name, int count, float* value);
  void _SetHostValue3fv(const char* name, int count, float* value);
  void _SetHostValue4fv(const char* name, int count, float* value);
  void _SetHostValueMatrix2fv(const char* name, int count, bool transpose, const float* value);
  void _SetHostValueMatrix3fv(const char* name, int count, bool transpose, const float* value);
  void _SetHostValueMatrix4fv(const char* name, int count, bool transpose, const float* value);

  unsigned getProgram() const { return mProgram; }
  // True when the program came from the script's binary, not from sources.
  bool isFromBinary() const { return mFromBinary; }
  GPUScript* getScript() const { return mScript.get(); }
  GPUFramebuffer& getFramebuffer() { return mFramebuffer; }
  const float* getPosVertices() const { return mPosVertices; }
  const float* getTexVertices() const { return mTexVertices; }

 private:
  void create(unsigned options);
  int location(const char* name) const;

  auto_ptr<GPUContext> mContext;
  auto_ptr<GPUScript> mScript;
  GPUFramebuffer mFramebuffer;
  unsigned mProgram;
  float mPosVertices[8];
  float mTexVertices[8];
  bool mFromBinary;
};
