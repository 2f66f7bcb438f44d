#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"

const char* ImageFilterNoneGL::getFilterName() const { return "ImageFilterNone"; }
const char* ImageFilterNoneGL::getFragmentShader() const { return orvan::filter_shaders::kBaseFragment; }
