#include "filters/FilterParams.h"
#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"

using orvan::filter_params::hasFloat;
using orvan::filter_params::named;
using orvan::filter_params::storeFloat;
using orvan::filter_params::uploadFloats;

namespace {

using orvan::filter_params::FloatParam;
using orvan::filter_params::kPlain;
using orvan::filter_params::kUnit;
using orvan::filter_params::kUploadOnly;

// Uniforms in upload order.
using Extrusion = ImageFilterExtrusionGL;
const FloatParam<Extrusion> kExtrusionParams[] = {{"mStrength", &Extrusion::mStrength, kPlain},
                                                  {"mZoom", &Extrusion::mZoom, kUploadOnly},
                                                  {"mCenterx", &Extrusion::mCenterx, kUnit},
                                                  {"mCentery", &Extrusion::mCentery, kUnit}};

}  // namespace

ImageFilterExtrusionGL::ImageFilterExtrusionGL() { initParameters(); }

bool ImageFilterExtrusionGL::initParameters() {
  mCenterx = 0.5f;
  mCentery = 0.5f;
  mStrength = 0.2f;
  mZoom = 1.0f;
  return true;
}

int ImageFilterExtrusionGL::getParameterType(const char* name) {
  return hasFloat(kExtrusionParams, name) ? FILTER_PARAMETER_FLOAT
                                          : ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterExtrusionGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (!storeFloat(this, kExtrusionParams, name, value)) {
    ImageFilterBaseGL::setParameters(name, value);
  } else if (named(name, "mStrength")) {
    // A negative power would blow up at the centre: the picture collapses
    // onto the centre point instead.
    mZoom = mStrength >= 0.0f ? 1.0f : 0.0f;
  }
}

void ImageFilterExtrusionGL::updateParameters() { uploadFloats(this, kExtrusionParams); }

const char* ImageFilterExtrusionGL::getFilterName() const { return "ImageFilterExtrusion"; }
const char* ImageFilterExtrusionGL::getFragmentShader() const {
  return orvan::filter_shaders::kExtrusionFragment;
}
