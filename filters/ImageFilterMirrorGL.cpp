#include "filters/FilterParams.h"
#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"

using orvan::filter_params::hasFloat;
using orvan::filter_params::storeFloat;
using orvan::filter_params::uploadFloats;

namespace {

using orvan::filter_params::FloatParam;
using orvan::filter_params::kUnit;

// Uniforms in upload order.
using Mirror = ImageFilterMirrorGL;
const FloatParam<Mirror> kMirrorParams[] = {{"mCenterx", &Mirror::mCenterx, kUnit},
                                            {"mCentery", &Mirror::mCentery, kUnit}};

}  // namespace

ImageFilterMirrorGL::ImageFilterMirrorGL() { initParameters(); }

bool ImageFilterMirrorGL::initParameters() {
  mCenterx = 1.0f;
  mCentery = 0.5f;
  return true;
}

int ImageFilterMirrorGL::getParameterType(const char* name) {
  return hasFloat(kMirrorParams, name) ? FILTER_PARAMETER_FLOAT : ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterMirrorGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (!storeFloat(this, kMirrorParams, name, value)) ImageFilterBaseGL::setParameters(name, value);
}

void ImageFilterMirrorGL::updateParameters() { uploadFloats(this, kMirrorParams); }

const char* ImageFilterMirrorGL::getFilterName() const { return "ImageFilterMirror"; }
const char* ImageFilterMirrorGL::getFragmentShader() const { return orvan::filter_shaders::kMirrorFragment; }
