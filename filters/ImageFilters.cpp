#include "filters/ImageFilters.h"

#include <cstddef>
#include <cstring>

#include "filters/FilterShaders.h"

namespace {

bool named(const char* name, const char* expected) { return name != nullptr && strcmp(name, expected) == 0; }

float clampUnit(float v) { return v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v); }

float floatAt(void* value) {
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

// Tables list uniforms in upload order.
using Distorted = ImageFilterDistortedGL;
const FloatParam<Distorted> kDistortedParams[] = {{"mStrength", &Distorted::mStrength, kPlain},
                                                  {"mRadius", &Distorted::mRadius, kSquared},
                                                  {"mCenterx", &Distorted::mCenterx, kUnit},
                                                  {"mCentery", &Distorted::mCentery, kUnit}};

using Extrusion = ImageFilterExtrusionGL;
const FloatParam<Extrusion> kExtrusionParams[] = {{"mStrength", &Extrusion::mStrength, kPlain},
                                                  {"mZoom", &Extrusion::mZoom, kUploadOnly},
                                                  {"mCenterx", &Extrusion::mCenterx, kUnit},
                                                  {"mCentery", &Extrusion::mCentery, kUnit}};

using Mirror = ImageFilterMirrorGL;
const FloatParam<Mirror> kMirrorParams[] = {{"mCenterx", &Mirror::mCenterx, kUnit},
                                            {"mCentery", &Mirror::mCentery, kUnit}};

using Timetunnel = ImageFilterTimetunnelGL;
const FloatParam<Timetunnel> kTimetunnelParams[] = {{"mRadius", &Timetunnel::mRadius, kSquared}};

}  // namespace

// --- None -------------------------------------------------------------------

const char* ImageFilterNoneGL::getFilterName() const { return "ImageFilterNone"; }
const char* ImageFilterNoneGL::getFragmentShader() const { return orvan::filter_shaders::kBaseFragment; }

// --- Distorted ----------------------------------------------------------------

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

// --- Extrusion ----------------------------------------------------------------

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

// --- Mirror -------------------------------------------------------------------

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

// --- Temperature ----------------------------------------------------------------

const char* ImageFilterTemperatureGL::getFilterName() const { return "ImageFilterTemperature"; }
const char* ImageFilterTemperatureGL::getFragmentShader() const {
  return orvan::filter_shaders::kTemperatureFragment;
}

// --- Timetunnel ----------------------------------------------------------------

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

// --- Xray -------------------------------------------------------------------

const char* ImageFilterXrayGL::getFilterName() const { return "ImageFilterXray"; }
const char* ImageFilterXrayGL::getFragmentShader() const { return orvan::filter_shaders::kXrayFragment; }

// --- Factory ----------------------------------------------------------------

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
