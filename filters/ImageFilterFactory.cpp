#include <cstring>

#include "filters/ImageFilters.h"

ImageFilterBaseGL* ImageFilterFactory::createFilter(const char* name) {
  if (name == nullptr) return nullptr;
  if (strcmp(name, "ImageFilterNone") == 0) return new ImageFilterNoneGL();
  if (strcmp(name, "ImageFilterTable") == 0) return new ImageFilterTableGL();
  if (strcmp(name, "ImageFilterDistorted") == 0) return new ImageFilterDistortedGL();
  if (strcmp(name, "ImageFilterExtrusion") == 0) return new ImageFilterExtrusionGL();
  if (strcmp(name, "ImageFilterMirror") == 0) return new ImageFilterMirrorGL();
  if (strcmp(name, "ImageFilterTemperature") == 0) return new ImageFilterTemperatureGL();
  if (strcmp(name, "ImageFilterTimetunnel") == 0) return new ImageFilterTimetunnelGL();
  if (strcmp(name, "ImageFilterXray") == 0) return new ImageFilterXrayGL();
  return nullptr;
}
