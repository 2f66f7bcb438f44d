#include "panorama/PanoramaInterface.h"

PanoramaInterface::PanoramaInterface() = default;

PanoramaInterface::~PanoramaInterface() = default;

int PanoramaInterface::startup(int width, int height, int format, void (*onError)(int)) {
  return mModule.startup(width, height, format, onError);
}

int PanoramaInterface::addFrame(unsigned char* data, float gyroX, float gyroY, int& offsetX, int& offsetY) {
  return mModule.pushFrame(data, gyroX, gyroY, offsetX, offsetY);
}

int PanoramaInterface::getDirectionType() { return mModule.getDirection(); }

int PanoramaInterface::getResult(unsigned char* out) { return mModule.popFrame(out); }

int PanoramaInterface::close() { return mModule.close(); }

void PanoramaModuleOnErrorCallback(int) {}
