#include "filters/FilterParams.h"
#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"

using orvan::filter_params::hasFloat;
using orvan::filter_params::storeFloat;
using orvan::filter_params::uploadFloats;

namespace {

using orvan::filter_params::FloatParam;
using orvan::filter_params::kSquared;

// Uniforms in upload order.
using Timetunnel = ImageFilterTimetunnelGL;
const FloatParam<Timetunnel> kTimetunnelParams[] = {{"mRadius", &Timetunnel::mRadius, kSquared}};

}  // namespace

ImageFilterTimetunnelGL::ImageFilterTimetunnelGL() { initParameters(); }

bool ImageFilterTimetunnelGL::initParameters() {
  mRadius = 0.2f;
  return true;
}

int ImageFilterTimetunnelGL::getParameterType(const char* name) {
  return hasFloat(kTimetunnelParams, name) ? FILTER_PARAMETER_FLOAT
                                           : ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterTimetunnelGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (!storeFloat(this, kTimetunnelParams, name, value)) ImageFilterBaseGL::setParameters(name, value);
}

void ImageFilterTimetunnelGL::updateParameters() { uploadFloats(this, kTimetunnelParams); }

const char* ImageFilterTimetunnelGL::getFilterName() const { return "ImageFilterTimetunnel"; }
const char* ImageFilterTimetunnelGL::getFragmentShader() const {
  return orvan::filter_shaders::kTimetunnelFragment;
}
