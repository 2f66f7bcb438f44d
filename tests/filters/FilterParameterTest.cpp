// The parameter rules of the filters: all of it works without a GL context.
// The render tests make every filter through the factory.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "filters/ImageFilters.h"
#include "support/LogCapture.h"

namespace {

auto_ptr<ImageFilterBaseGL> make(const char* name) {
  return auto_ptr<ImageFilterBaseGL>(ImageFilterFactory::createFilter(name));
}

}  // namespace

TEST(FilterParameters, TypesPerFilter) {
  const struct {
    const char *filter, *parameter;
    int type;
  } cases[] = {
      {"ImageFilterTable", "mFilterBitmap", 10}, {"ImageFilterTable", "mRadius", 0},
      {"ImageFilterDistorted", "mCentery", 5},   {"ImageFilterExtrusion", "mZoom", 0},
      {"ImageFilterMirror", "mCentery", 5},      {"ImageFilterMirror", "mStrength", 0},
      {"ImageFilterTimetunnel", "mRadius", 5},   {"ImageFilterXray", "mTextureMatrix", 6},
      {"ImageFilterNone", "mtexvertices", 0},    {"ImageFilterNone", nullptr, 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(make(c.filter)->getParameterType(c.parameter), c.type)
        << c.filter << " " << (c.parameter ? c.parameter : "null");
  EXPECT_EQ(ImageFilterFactory::createFilter("ImageFilterNone "), nullptr);
}

// Radii are squared, not clamped; centres are clamped to 0..1; Extrusion's
// zoom is 0 below strength 0; names are case-sensitive; initParameters resets.
TEST(FilterParameters, SquaresClampsAndZoom) {
  ImageFilterDistortedGL d;
  ImageFilterExtrusionGL e;
  auto set = [](ImageFilterBaseGL& f, const char* name, float v) { f.setParameters(name, &v); };
  set(d, "mRadius", -0.3f);
  set(d, "mCenterx", -0.5f);
  EXPECT_FLOAT_EQ(d.mRadius, 0.09f);
  EXPECT_FLOAT_EQ(d.mCenterx, 0.0f);
  d.setParameters("mCenterx", nullptr);
  set(d, "mcenterx", 0.3f);
  EXPECT_FLOAT_EQ(d.mCenterx, 0.0f);
  EXPECT_TRUE(d.initParameters());
  EXPECT_FLOAT_EQ(d.mRadius, 0.2f);
  set(e, "mCentery", 1.5f);
  EXPECT_FLOAT_EQ(e.mCentery, 1.0f);
  ImageFilterMirrorGL m;
  for (float v : {-0.5f, 1.5f, 0.25f}) {
    set(m, "mCenterx", v);
    set(m, "mCentery", v);
    float want = v < 0 ? 0.0f : v > 1 ? 1.0f : v;
    EXPECT_FLOAT_EQ(m.mCenterx, want) << v;
    EXPECT_FLOAT_EQ(m.mCentery, want) << v;
  }
  for (float s : {-0.001f, 0.0f, 2.5f}) {
    set(e, "mStrength", s);
    EXPECT_FLOAT_EQ(e.mZoom, s < 0 ? 0.0f : 1.0f) << s;
    EXPECT_FLOAT_EQ(e.mStrength, s);
  }
}

// No EGL context is current here: setupGraphics still answers what
// initParameters answers and logs its steps, but makes no program, so drawing
// does nothing.
TEST(FilterParameters, SetupWithoutAContextKeepsTheFilterInert) {
  for (unsigned mode : {1u, 0u}) {
    LogCapture cap;
    auto_ptr<ImageFilterBaseGL> f = make("ImageFilterTable");
    EXPECT_TRUE(f->setupGraphics(mode));
    EXPECT_EQ(f->program, nullptr);
    char line[96];
    for (const char* step : {"1", "4"}) {
      snprintf(line, sizeof(line), "ImageFilterBaseGL::setupGraphics  %s this:%p", step,
               static_cast<void*>(f.get()));
      EXPECT_EQ(cap.count(line), 1) << line;
    }
    unsigned char px[16];
    memset(px, 9, sizeof(px));
    f->process(px, 2, 2);
    f->render();
    for (unsigned char v : px) EXPECT_EQ(v, 9);
  }
}
