// The factory and the parameter rules of the filters: all of it works
// without a GL context.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "filters/ImageFilters.h"
#include "support/LogCapture.h"

namespace {

auto_ptr<ImageFilterBaseGL> make(const char* name) {
  return auto_ptr<ImageFilterBaseGL>(ImageFilterFactory::createFilter(name));
}

void set(ImageFilterBaseGL& f, const char* name, float v) { f.setParameters(name, &v); }

// The stored value of a float parameter, read from the filter's own field.
float stored(ImageFilterBaseGL& f, const std::string& p) {
  if (auto* d = dynamic_cast<ImageFilterDistortedGL*>(&f))
    return p == "mRadius"     ? d->mRadius
           : p == "mStrength" ? d->mStrength
           : p == "mCenterx"  ? d->mCenterx
                              : d->mCentery;
  if (auto* e = dynamic_cast<ImageFilterExtrusionGL*>(&f))
    return p == "mZoom"       ? e->mZoom
           : p == "mStrength" ? e->mStrength
           : p == "mCenterx"  ? e->mCenterx
                              : e->mCentery;
  if (auto* m = dynamic_cast<ImageFilterMirrorGL*>(&f)) return p == "mCenterx" ? m->mCenterx : m->mCentery;
  if (auto* t = dynamic_cast<ImageFilterTimetunnelGL*>(&f)) return t->mRadius;
  if (auto* t = dynamic_cast<ImageFilterTableGL*>(&f)) return t->mStrength;
  return -1000.0f;
}

const char* const kNames[] = {"ImageFilterNone",       "ImageFilterTable",  "ImageFilterDistorted",
                              "ImageFilterExtrusion",  "ImageFilterMirror", "ImageFilterTemperature",
                              "ImageFilterTimetunnel", "ImageFilterXray"};

}  // namespace

TEST(FilterFactory, MakesEachFilterByItsExactNameOnly) {
  for (const char* name : kNames) {
    ImageFilterBaseGL* raw = ImageFilterFactory::createFilter(name);
    ASSERT_NE(raw, nullptr) << name;
    EXPECT_EQ(raw->getRefCount(), 0);
    EXPECT_STREQ(raw->getFilterName(), name);
    delete raw;
  }
  for (const char* bad :
       {"imagefilternone", "IMAGEFILTERXRAY", "ImageFilterBase", "ImageFilterNone ", "", "Xray"})
    EXPECT_EQ(ImageFilterFactory::createFilter(bad), nullptr) << bad;
  EXPECT_EQ(ImageFilterFactory::createFilter(nullptr), nullptr);
}

TEST(FilterParameters, TypesOfEachFilterFallBackToTheVertexArrays) {
  struct {
    const char* filter;
    const char* parameter;
    int type;
  } cases[] = {
      {"ImageFilterTable", "mFilterBitmap", 10}, {"ImageFilterTable", "mStrength", 5},
      {"ImageFilterTable", "mRadius", 0},        {"ImageFilterDistorted", "mRadius", 5},
      {"ImageFilterDistorted", "mStrength", 5},  {"ImageFilterDistorted", "mCenterx", 5},
      {"ImageFilterDistorted", "mCentery", 5},   {"ImageFilterDistorted", "mZoom", 0},
      {"ImageFilterExtrusion", "mCenterx", 5},   {"ImageFilterExtrusion", "mCentery", 5},
      {"ImageFilterExtrusion", "mStrength", 5},  {"ImageFilterExtrusion", "mZoom", 0},
      {"ImageFilterMirror", "mCenterx", 5},      {"ImageFilterMirror", "mCentery", 5},
      {"ImageFilterMirror", "mStrength", 0},     {"ImageFilterTimetunnel", "mRadius", 5},
      {"ImageFilterTimetunnel", "mCenterx", 0},  {"ImageFilterNone", "mStrength", 0},
      {"ImageFilterXray", "mFilterBitmap", 0},   {"ImageFilterTemperature", "mRadius", 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(make(c.filter)->getParameterType(c.parameter), c.type) << c.filter << " " << c.parameter;
  for (const char* name : kNames) {
    auto_ptr<ImageFilterBaseGL> f = make(name);
    for (const char* array : {"mPosVertices", "mTexVertices", "mTextureMatrix"})
      EXPECT_EQ(f->getParameterType(array), 6) << name << " " << array;
    EXPECT_EQ(f->getParameterType("mtexvertices"), 0) << name;
    EXPECT_EQ(f->getParameterType(nullptr), 0) << name;
  }
}

// The render tests see the defaults and typical values reach the programs;
// these are the edges: squared (not clamped) negative radii, unclamped
// strengths, centres clamped to 0..1, the Extrusion zoom rule (0 below zero),
// and values that change nothing.
TEST(FilterParameters, SquaresClampsAndZoom) {
  struct {
    const char* filter;
    const char* name;
    float value;
    const char* read;
    float expected;
  } cases[] = {
      {"ImageFilterDistorted", "mRadius", -0.3f, "mRadius", 0.09f},
      {"ImageFilterTimetunnel", "mRadius", 0.5f, "mRadius", 0.25f},
      {"ImageFilterDistorted", "mStrength", -7.5f, "mStrength", -7.5f},
      {"ImageFilterTable", "mStrength", 3.5f, "mStrength", 3.5f},
      {"ImageFilterDistorted", "mCenterx", -0.5f, "mCenterx", 0.0f},
      {"ImageFilterExtrusion", "mCentery", 1.5f, "mCentery", 1.0f},
      {"ImageFilterMirror", "mCenterx", -0.1f, "mCenterx", 0.0f},
      {"ImageFilterMirror", "mcenterx", 0.3f, "mCenterx", 1.0f},  // names are case-sensitive
      {"ImageFilterExtrusion", "mStrength", -1.0f, "mStrength", -1.0f},
      {"ImageFilterExtrusion", "mStrength", -0.001f, "mZoom", 0.0f},
      {"ImageFilterExtrusion", "mStrength", 0.0f, "mZoom", 1.0f},
      {"ImageFilterExtrusion", "mStrength", 2.5f, "mZoom", 1.0f},
      {"ImageFilterExtrusion", "mZoom", 0.0f, "mZoom", 1.0f},  // not a parameter name
  };
  for (const auto& c : cases) {
    auto_ptr<ImageFilterBaseGL> f = make(c.filter);
    set(*f, c.name, c.value);
    EXPECT_FLOAT_EQ(stored(*f, c.read), c.expected) << c.filter << " " << c.name << " " << c.value;
  }
  // A null value changes nothing; initParameters restores the defaults.
  auto_ptr<ImageFilterBaseGL> d = make("ImageFilterDistorted");
  set(*d, "mRadius", 0.5f);
  set(*d, "mCenterx", 0.1f);
  d->setParameters("mCenterx", nullptr);
  EXPECT_FLOAT_EQ(stored(*d, "mCenterx"), 0.1f);
  EXPECT_TRUE(d->initParameters());
  EXPECT_FLOAT_EQ(stored(*d, "mRadius"), 0.2f);
  EXPECT_FLOAT_EQ(stored(*d, "mCenterx"), 0.5f);
}

TEST(FilterParameters, VertexArraysAndMatrixAreCopied) {
  auto_ptr<ImageFilterBaseGL> f = make("ImageFilterMirror");
  float pos[8] = {0, 0, 1, 0, 0, 1, 1, 1};
  float tex[8] = {0.5f, 0.25f, 1, 0, 0, 1, -1, 2};
  float matrix[16];
  for (int i = 0; i < 16; ++i) matrix[i] = i * 0.5f;
  LogCapture cap;
  f->setParameters("mPosVertices", pos);
  EXPECT_EQ(cap.countPrefix("mTexVertices"), 0);
  f->setParameters("mTexVertices", tex);
  f->setParameters("mTextureMatrix", matrix);
  EXPECT_EQ(memcmp(f->mPosVertices, pos, sizeof(pos)), 0);
  EXPECT_EQ(memcmp(f->mTexVertices, tex, sizeof(tex)), 0);
  EXPECT_EQ(memcmp(f->mTextureMatrix, matrix, sizeof(matrix)), 0);
  EXPECT_EQ(cap.count("mTexVertices: 0.500000, 0.250000, 1.000000, 0.000000, 0.000000, 1.000000, -1.000000, "
                      "2.000000"),
            1);
}
