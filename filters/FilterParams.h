#pragma once

#include <cstddef>
#include <cstring>

#include "filters/ImageFilterBaseGL.h"
#include "gpu/GPUProgram.h"

// Float parameters set by name: each filter lists its uniforms in upload
// order in a table of these.
namespace orvan::filter_params {

inline bool named(const char* name, const char* expected) {
  return name != nullptr && strcmp(name, expected) == 0;
}

inline float clampUnit(float v) { return v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v); }

inline float floatAt(void* value) {
  float v;
  memcpy(&v, value, sizeof(v));
  return v;
}

// How a float parameter set by name is stored; upload-only ones are derived
// from others and cannot be set or queried by name.
enum Store { kPlain, kUnit, kSquared, kUploadOnly };

template <typename Filter>
struct FloatParam {
  const char* name;
  float Filter::*field;
  Store store;
};

template <typename Filter, size_t N>
bool hasFloat(const FloatParam<Filter> (&params)[N], const char* name) {
  for (const FloatParam<Filter>& p : params) {
    if (p.store != kUploadOnly && named(name, p.name)) return true;
  }
  return false;
}

// Stores a named float; false when the name is not one of the table's.
template <typename Filter, size_t N>
bool storeFloat(Filter* filter, const FloatParam<Filter> (&params)[N], const char* name, void* value) {
  for (const FloatParam<Filter>& p : params) {
    if (p.store == kUploadOnly || !named(name, p.name)) continue;
    float v = floatAt(value);
    filter->*p.field = p.store == kUnit ? clampUnit(v) : (p.store == kSquared ? v * v : v);
    return true;
  }
  return false;
}

template <typename Filter, size_t N>
void uploadFloats(Filter* filter, const FloatParam<Filter> (&params)[N]) {
  for (const FloatParam<Filter>& p : params) {
    filter->program->setParameters(p.name, GPUProgram::FLOAT1, &(filter->*p.field));
  }
}

}  // namespace orvan::filter_params
