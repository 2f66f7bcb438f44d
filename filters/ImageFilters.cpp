#include "filters/ImageFilters.h"

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

void setFloat(auto_ptr<GPUProgram>& program, const char* name, float* value) {
  program->setParameters(name, GPUProgram::FLOAT1, value);
}

}  // namespace

// --- None -------------------------------------------------------------------

const char* ImageFilterNoneGL::getFilterName() const { return "ImageFilterNone"; }
const char* ImageFilterNoneGL::getFragmentShader() const { return filter_shaders::kBaseFragment; }

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
  if (named(name, "mRadius") || named(name, "mStrength") || named(name, "mCenterx") ||
      named(name, "mCentery")) {
    return FILTER_PARAMETER_FLOAT;
  }
  return ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterDistortedGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (named(name, "mRadius")) {
    float r = floatAt(value);
    mRadius = r * r;
  } else if (named(name, "mStrength")) {
    mStrength = floatAt(value);
  } else if (named(name, "mCenterx")) {
    mCenterx = clampUnit(floatAt(value));
  } else if (named(name, "mCentery")) {
    mCentery = clampUnit(floatAt(value));
  } else {
    ImageFilterBaseGL::setParameters(name, value);
  }
}

void ImageFilterDistortedGL::updateParameters() {
  setFloat(program, "mStrength", &mStrength);
  setFloat(program, "mRadius", &mRadius);
  setFloat(program, "mCenterx", &mCenterx);
  setFloat(program, "mCentery", &mCentery);
}

const char* ImageFilterDistortedGL::getFilterName() const { return "ImageFilterDistorted"; }
const char* ImageFilterDistortedGL::getFragmentShader() const { return filter_shaders::kDistortedFragment; }

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
  if (named(name, "mCenterx") || named(name, "mCentery") || named(name, "mStrength")) {
    return FILTER_PARAMETER_FLOAT;
  }
  return ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterExtrusionGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (named(name, "mCenterx")) {
    mCenterx = clampUnit(floatAt(value));
  } else if (named(name, "mCentery")) {
    mCentery = clampUnit(floatAt(value));
  } else if (named(name, "mStrength")) {
    mStrength = floatAt(value);
    // A negative power would blow up at the centre: the picture collapses
    // onto the centre point instead.
    mZoom = mStrength >= 0.0f ? 1.0f : 0.0f;
  } else {
    ImageFilterBaseGL::setParameters(name, value);
  }
}

void ImageFilterExtrusionGL::updateParameters() {
  setFloat(program, "mStrength", &mStrength);
  setFloat(program, "mZoom", &mZoom);
  setFloat(program, "mCenterx", &mCenterx);
  setFloat(program, "mCentery", &mCentery);
}

const char* ImageFilterExtrusionGL::getFilterName() const { return "ImageFilterExtrusion"; }
const char* ImageFilterExtrusionGL::getFragmentShader() const { return filter_shaders::kExtrusionFragment; }

// --- Mirror -------------------------------------------------------------------

ImageFilterMirrorGL::ImageFilterMirrorGL() { initParameters(); }

bool ImageFilterMirrorGL::initParameters() {
  mCenterx = 1.0f;
  mCentery = 0.5f;
  return true;
}

int ImageFilterMirrorGL::getParameterType(const char* name) {
  if (named(name, "mCenterx") || named(name, "mCentery")) return FILTER_PARAMETER_FLOAT;
  return ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterMirrorGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (named(name, "mCenterx")) {
    mCenterx = clampUnit(floatAt(value));
  } else if (named(name, "mCentery")) {
    mCentery = clampUnit(floatAt(value));
  } else {
    ImageFilterBaseGL::setParameters(name, value);
  }
}

void ImageFilterMirrorGL::updateParameters() {
  setFloat(program, "mCenterx", &mCenterx);
  setFloat(program, "mCentery", &mCentery);
}

const char* ImageFilterMirrorGL::getFilterName() const { return "ImageFilterMirror"; }
const char* ImageFilterMirrorGL::getFragmentShader() const { return filter_shaders::kMirrorFragment; }

// --- Temperature ----------------------------------------------------------------

const char* ImageFilterTemperatureGL::getFilterName() const { return "ImageFilterTemperature"; }
const char* ImageFilterTemperatureGL::getFragmentShader() const {
  return filter_shaders::kTemperatureFragment;
}

// --- Timetunnel ----------------------------------------------------------------

ImageFilterTimetunnelGL::ImageFilterTimetunnelGL() { initParameters(); }

bool ImageFilterTimetunnelGL::initParameters() {
  mRadius = 0.2f;
  return true;
}

int ImageFilterTimetunnelGL::getParameterType(const char* name) {
  if (named(name, "mRadius")) return FILTER_PARAMETER_FLOAT;
  return ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterTimetunnelGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (named(name, "mRadius")) {
    float r = floatAt(value);
    mRadius = r * r;
  } else {
    ImageFilterBaseGL::setParameters(name, value);
  }
}

void ImageFilterTimetunnelGL::updateParameters() { setFloat(program, "mRadius", &mRadius); }

const char* ImageFilterTimetunnelGL::getFilterName() const { return "ImageFilterTimetunnel"; }
const char* ImageFilterTimetunnelGL::getFragmentShader() const { return filter_shaders::kTimetunnelFragment; }

// --- Xray -------------------------------------------------------------------

const char* ImageFilterXrayGL::getFilterName() const { return "ImageFilterXray"; }
const char* ImageFilterXrayGL::getFragmentShader() const { return filter_shaders::kXrayFragment; }

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
