#pragma once

#include "core/Export.h"
#include "core/RefBase.h"
#include "panorama/PanoramaModule.h"

// The facade the Java PanoramaModule drives: every call forwards to the one
// module it holds, arguments and results unchanged.
class OV_EXPORT PanoramaInterface : public RefBase {
 public:
  PanoramaInterface();
  ~PanoramaInterface() override;

  virtual int startup(int width, int height, int format, void (*onError)(int));
  virtual int addFrame(unsigned char* data, float gyroX, float gyroY, int& offsetX, int& offsetY);
  virtual int getDirectionType();
  virtual int getResult(unsigned char* out);
  virtual int close();

  PanoramaModule& getModule() { return mModule; }

 private:
  PanoramaModule mModule;
};

// PanoramaModuleOnErrorCallback is declared in orvan/orvan.h.
#include "orvan/orvan.h"
