#pragma once

#include "filters/ImageFilterBaseGL.h"
#include "image/FlatImage.h"

// The eight filters. Parameter fields are public so that callers (and tests)
// can read what a setter stored; they reach the GPU at the next draw.

class OV_EXPORT ImageFilterNoneGL : public ImageFilterBaseGL {
 public:
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;
};

// Colour grading through a 64-step lookup table laid out as 64 rows (red) of
// 64 blocks (green) of 64 columns (blue): a 4096 x 64 RGB texture.
class OV_EXPORT ImageFilterTableGL : public ImageFilterBaseGL {
 public:
  enum { kSteps = 64, kTableWidth = 4096, kTableHeight = 64, kTableChannels = 3 };

  ImageFilterTableGL();
  ~ImageFilterTableGL() override;

  bool initParameters() override;
  int getParameterType(const char* name) override;
  // "mFilterBitmap" takes a flat image record (flat::Image, image/FlatImage.h) of
  // exactly 4096 x 64 pixels; its first three bytes per pixel become the table.
  void setParameters(const char* name, void* value) override;
  void updateParameters() override;
  void release() override;
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;

  float mStrength;
  int mLookupSize;
  // Flat image record holding the table's pixels (null before initParameters).
  flat::Image* mTable;
  auto_ptr<GPUImage2D> mLookup;

 private:
  void freeTable();
};

// Swirl: inside mRadius of the centre, coordinates turn by
// mStrength * ((mRadius - d) / mRadius)^2 radians.
class OV_EXPORT ImageFilterDistortedGL : public ImageFilterBaseGL {
 public:
  ImageFilterDistortedGL();
  bool initParameters() override;
  int getParameterType(const char* name) override;
  void setParameters(const char* name, void* value) override;
  void updateParameters() override;
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;

  float mRadius;
  float mStrength;
  float mCenterx;
  float mCentery;
};

class OV_EXPORT ImageFilterExtrusionGL : public ImageFilterBaseGL {
 public:
  ImageFilterExtrusionGL();
  bool initParameters() override;
  int getParameterType(const char* name) override;
  // "mStrength" also sets mZoom: 1 for a strength of 0 or more, else 0.
  void setParameters(const char* name, void* value) override;
  void updateParameters() override;
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;

  float mCenterx;
  float mCentery;
  float mStrength;
  float mZoom;
};

class OV_EXPORT ImageFilterMirrorGL : public ImageFilterBaseGL {
 public:
  ImageFilterMirrorGL();
  bool initParameters() override;
  int getParameterType(const char* name) override;
  void setParameters(const char* name, void* value) override;
  void updateParameters() override;
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;

  float mCenterx;
  float mCentery;
};

class OV_EXPORT ImageFilterTemperatureGL : public ImageFilterBaseGL {
 public:
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;
};

class OV_EXPORT ImageFilterTimetunnelGL : public ImageFilterBaseGL {
 public:
  ImageFilterTimetunnelGL();
  bool initParameters() override;
  int getParameterType(const char* name) override;
  // A radius set by name is stored squared (the shader compares squared
  // distances); the default is stored as it is.
  void setParameters(const char* name, void* value) override;
  void updateParameters() override;
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;

  float mRadius;
};

class OV_EXPORT ImageFilterXrayGL : public ImageFilterBaseGL {
 public:
  const char* getFilterName() const override;
  const char* getFragmentShader() const override;
};

class OV_EXPORT ImageFilterFactory {
 public:
  // A new filter (reference count 0) for one of the eight exact names, else null.
  static ImageFilterBaseGL* createFilter(const char* name);
};
