#include "filters/FilterParams.h"
#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"

using orvan::filter_params::hasFloat;
using orvan::filter_params::storeFloat;
using orvan::filter_params::uploadFloats;

namespace {

using orvan::filter_params::FloatParam;
using orvan::filter_params::kPlain;
using orvan::filter_params::kSquared;
using orvan::filter_params::kUnit;

// Uniforms in upload order.
using Distorted = ImageFilterDistortedGL;
const FloatParam<Distorted> kDistortedParams[] = {{"mStrength", &Distorted::mStrength, kPlain},
                                                  {"mRadius", &Distorted::mRadius, kSquared},
                                                  {"mCenterx", &Distorted::mCenterx, kUnit},
                                                  {"mCentery", &Distorted::mCentery, kUnit}};

}  // namespace

ImageFilterDistortedGL::ImageFilterDistortedGL() { initParameters(); }

bool ImageFilterDistortedGL::initParameters() {
  mRadius = 0.2f;
  mStrength = 4.0f;
  mCenterx = 0.5f;
  mCentery = 0.5f;
  return true;
}

int ImageFilterDistortedGL::getParameterType(const char* name) {
  return hasFloat(kDistortedParams, name) ? FILTER_PARAMETER_FLOAT
                                          : ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterDistortedGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (!storeFloat(this, kDistortedParams, name, value)) ImageFilterBaseGL::setParameters(name, value);
}

void ImageFilterDistortedGL::updateParameters() { uploadFloats(this, kDistortedParams); }

const char* ImageFilterDistortedGL::getFilterName() const { return "ImageFilterDistorted"; }
const char* ImageFilterDistortedGL::getFragmentShader() const {
  return orvan::filter_shaders::kDistortedFragment;
}
