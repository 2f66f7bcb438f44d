#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"

const char* ImageFilterXrayGL::getFilterName() const { return "ImageFilterXray"; }
const char* ImageFilterXrayGL::getFragmentShader() const { return orvan::filter_shaders::kXrayFragment; }
