#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"

const char* ImageFilterTemperatureGL::getFilterName() const { return "ImageFilterTemperature"; }
const char* ImageFilterTemperatureGL::getFragmentShader() const {
  return orvan::filter_shaders::kTemperatureFragment;
}
