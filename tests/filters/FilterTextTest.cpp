// Shader texts, the factory and the parameter rules of the filters: all of it
// works without a GL context.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "filters/ImageFilters.h"
#include "support/LogCapture.h"

namespace {

// The texts written out line by line; a blank before a line feed is part of
// the text.
const char kExpectedVertexShader[] =
    "attribute vec4 a_position;\n"
    "attribute vec2 a_texcoord;\n"
    "varying vec2 v_texcoord;\n"
    "void main() {\n"
    "  gl_Position = a_position;\n"
    "  v_texcoord = a_texcoord;\n"
    "}\n";

const char kExpectedFragmentHeader2D[] =
    "precision mediump float;\n"
    "uniform sampler2D tex_sampler;\n"
    "varying vec2 v_texcoord;\n";

const char kExpectedFragmentHeaderOES[] =
    "#extension GL_OES_EGL_image_external : require\n"
    "precision mediump float;\n"
    "uniform samplerExternalOES tex_sampler;\n"
    "varying vec2 v_texcoord;\n";

const char kExpectedBaseFragment[] =
    "void main() {\n"
    "    gl_FragColor = texture2D(tex_sampler,v_texcoord);\n"
    "}\n";

const char kExpectedTableFragment[] =
    "uniform sampler2D tex_frame;\n"
    "uniform float mStrength; \n"
    "void main() {\n"
    "    vec4 color = texture2D(tex_sampler, v_texcoord);\n"
    "    float dstep = 64.0; \n"
    "    float d1 = dstep - 1.0; \n"
    "    float total = dstep * dstep - 1.0; \n"
    "    float scale = d1 * 255.0 / 256.0; \n"
    "    float th0 = 1.0; \n"
    "    float g = color.g * scale; \n"
    "    float g0 = floor(g); \n"
    "    float g1 = g0 + 1.0; \n"
    "    float dg = g - g0; \n"
    "    float b = color.b * scale;\n"
    "    b = b + g0 / 5.0 ; \n"
    "    if(b < th0) b = th0;\n"
    "    if(b > d1 - th0) b = d1 - th0; \n"
    "    float off0 =  (b + g0 * dstep) / total; \n"
    "    float off1 =  (b + g1 * dstep) / total; \n"
    "    vec2 p0 = vec2(off0, color.r);\n"
    "    vec2 p1 = vec2(off1, color.r);\n"
    "    vec4 dcolor0 = texture2D(tex_frame, p0);\n"
    "    vec4 dcolor1 = texture2D(tex_frame, p1);\n"
    "    vec4 colordst = dcolor0 * (1.0 - dg) + dcolor1 * dg; \n"
    "    colordst = color * (1.0 - mStrength) + colordst * mStrength; \n"
    "    gl_FragColor = vec4(colordst.rgb, 1.0);\n"
    "}\n";

const char kExpectedDistortedFragment[] =
    "uniform float mRadius; \n"
    "uniform float mStrength; \n"
    "uniform float mCenterx; \n"
    "uniform float mCentery; \n"
    "void main() {\n"
    "    vec2 v_texcoord2 = v_texcoord; \n"
    "     float dx = v_texcoord.x - mCenterx; \n"
    "    float dy = v_texcoord.y - mCentery; \n"
    "    float dist = sqrt(dx * dx + dy * dy); \n"
    "    if(dist < mRadius) { \n"
    "        float angle = (mRadius - dist) / mRadius; \n"
    "        angle = mStrength * angle * angle; \n"
    "        float fsin = sin(angle); \n"
    "        float fcos = cos(angle); \n"
    "        v_texcoord2 = vec2(dx * fcos + dy * fsin + mCenterx, -dx * fsin + dy * fcos + mCentery); } \n"
    "     gl_FragColor = texture2D(tex_sampler,v_texcoord2); \n"
    "}\n";

const char kExpectedExtrusionFragment[] =
    "uniform float mStrength; \n"
    "uniform float mZoom; \n"
    "uniform float mCenterx; \n"
    "uniform float mCentery; \n"
    "void main() {\n"
    "    float dx = v_texcoord.x - mCenterx; \n"
    "    float dy = v_texcoord.y - mCenterx; \n"
    "    float dist = dx * dx + dy * dy; \n"
    "    float factor = pow(dist, mStrength) * mZoom; \n"
    "    vec2 v_texcoord2 = vec2(dx * factor + mCenterx, dy * factor + mCenterx); \n"
    "     gl_FragColor = texture2D(tex_sampler,v_texcoord2); \n"
    "}\n";

const char kExpectedMirrorFragment[] =
    "uniform float mCenterx; \n"
    "uniform float mCentery; \n"
    "void main() {\n"
    "    vec2 v_texcoord2 = v_texcoord; \n"
    "    if(v_texcoord2.x > mCenterx) { \n"
    "        v_texcoord2.x = 2.0 * mCenterx - v_texcoord2.x;} \n"
    "    if(v_texcoord2.y > mCentery) { \n"
    "        v_texcoord2.y = 2.0 * mCentery - v_texcoord2.y; } \n"
    "    gl_FragColor = texture2D(tex_sampler,v_texcoord2);\n"
    "}\n";

const char kExpectedTemperatureFragment[] =
    "void main() {\n"
    "    vec4 color = texture2D(tex_sampler,v_texcoord);\n"
    "    float y = color.r * 0.299 + color.g * 0.587 + color.b * 0.114; \n"
    "     float f = 16.0 * (y - 0.5) * (y - 0.5); \n"
    "    if(y > 0.75 ) { \n"
    "        f = -16.0 * (y - 0.75) * (y - 0.75) + 1.0; \n"
    "        gl_FragColor = vec4(1.0, f, 0.0, 1.0); } \n"
    "    else if(y > 0.5 ) { \n"
    "        gl_FragColor = vec4(f, 1.0, 0.0, 1.0); } \n"
    "    else if(y > 0.25) {         gl_FragColor = vec4(0.0 , 1.0, f, 1.0); } \n"
    "    else {         f = -16.0 * (y - 0.25) * (y - 0.25) + 1.0; \n"
    "        gl_FragColor = vec4(0.0, f, 1.0, 1.0); } \n"
    "}\n";

const char kExpectedTimetunnelFragment[] =
    "uniform float mRadius; \n"
    "void main() {\n"
    "    vec2 v_texcoord2 = v_texcoord; \n"
    "    float dx = v_texcoord.x - 0.5; \n"
    "    float dy = v_texcoord.y - 0.5; \n"
    "    float dist = dx * dx + dy * dy; \n"
    "    if(dist > mRadius) { \n"
    "        float factor = sqrt(mRadius / dist); \n"
    "        v_texcoord2.x = factor * dx + 0.5; \n"
    "        v_texcoord2.y = factor * dy + 0.5; \n"
    "    }; \n"
    "    gl_FragColor = texture2D(tex_sampler,v_texcoord2);\n"
    "}\n";

const char kExpectedXrayFragment[] =
    "void main() {\n"
    "    vec4 color = texture2D(tex_sampler,v_texcoord);\n"
    "    float gray = 1.0 - (color.r + color.g + color.b) / 3.0;\n"
    "     gl_FragColor = vec4 (gray,gray, gray, 1.0);\n"
    "}\n";

auto_ptr<ImageFilterBaseGL> make(const char* name) {
  return auto_ptr<ImageFilterBaseGL>(ImageFilterFactory::createFilter(name));
}

template <typename T>
T* as(auto_ptr<ImageFilterBaseGL>& f) {
  return dynamic_cast<T*>(f.get());
}

void set(auto_ptr<ImageFilterBaseGL>& f, const char* name, float v) { f->setParameters(name, &v); }

const char* const kNames[] = {"ImageFilterNone",       "ImageFilterTable",  "ImageFilterDistorted",
                              "ImageFilterExtrusion",  "ImageFilterMirror", "ImageFilterTemperature",
                              "ImageFilterTimetunnel", "ImageFilterXray"};

}  // namespace

TEST(FilterTexts, FragmentBodiesAndSharedTextsAreExact) {
  struct {
    const char* name;
    const char* body;
  } cases[] = {{"ImageFilterNone", kExpectedBaseFragment},
               {"ImageFilterTable", kExpectedTableFragment},
               {"ImageFilterDistorted", kExpectedDistortedFragment},
               {"ImageFilterExtrusion", kExpectedExtrusionFragment},
               {"ImageFilterMirror", kExpectedMirrorFragment},
               {"ImageFilterTemperature", kExpectedTemperatureFragment},
               {"ImageFilterTimetunnel", kExpectedTimetunnelFragment},
               {"ImageFilterXray", kExpectedXrayFragment}};
  for (const auto& c : cases) {
    auto_ptr<ImageFilterBaseGL> f = make(c.name);
    ASSERT_NE(f, nullptr) << c.name;
    EXPECT_STREQ(f->getFragmentShader(), c.body) << c.name;
    EXPECT_STREQ(f->getVertexShader(), kExpectedVertexShader) << c.name;
  }
  ImageFilterBaseGL base;
  EXPECT_STREQ(base.getFragmentShader(), kExpectedBaseFragment);
  EXPECT_STREQ(base.getVertexShader(), kExpectedVertexShader);
  EXPECT_STREQ(base.getFilterName(), "ImageFilterBase");
  EXPECT_STREQ(ImageFilterBaseGL::getFragmentHeader(1), kExpectedFragmentHeader2D);
  EXPECT_STREQ(ImageFilterBaseGL::getFragmentHeader(0xffffffffu), kExpectedFragmentHeader2D);
  EXPECT_STREQ(ImageFilterBaseGL::getFragmentHeader(0), kExpectedFragmentHeaderOES);
}

TEST(FilterFactory, MakesEachFilterByItsExactNameOnly) {
  for (const char* name : kNames) {
    ImageFilterBaseGL* raw = ImageFilterFactory::createFilter(name);
    ASSERT_NE(raw, nullptr) << name;
    EXPECT_EQ(raw->getRefCount(), 0);
    EXPECT_STREQ(raw->getFilterName(), name);
    delete raw;
  }
  auto_ptr<ImageFilterBaseGL> t = make("ImageFilterTable");
  EXPECT_NE(as<ImageFilterTableGL>(t), nullptr);
  auto_ptr<ImageFilterBaseGL> x = make("ImageFilterXray");
  EXPECT_NE(as<ImageFilterXrayGL>(x), nullptr);
  for (const char* bad :
       {"imagefilternone", "IMAGEFILTERXRAY", "ImageFilterBase", "ImageFilterNone ", "", "Xray"}) {
    EXPECT_EQ(ImageFilterFactory::createFilter(bad), nullptr) << bad;
  }
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
  for (const auto& c : cases) {
    auto_ptr<ImageFilterBaseGL> f = make(c.filter);
    EXPECT_EQ(f->getParameterType(c.parameter), c.type) << c.filter << " " << c.parameter;
  }
  for (const char* name : kNames) {
    auto_ptr<ImageFilterBaseGL> f = make(name);
    EXPECT_EQ(f->getParameterType("mPosVertices"), 6) << name;
    EXPECT_EQ(f->getParameterType("mTexVertices"), 6) << name;
    EXPECT_EQ(f->getParameterType("mTextureMatrix"), 6) << name;
    EXPECT_EQ(f->getParameterType("mtexvertices"), 0) << name;
    EXPECT_EQ(f->getParameterType(nullptr), 0) << name;
  }
}

TEST(FilterParameters, CentresAreClampedAndRadiiSquared) {
  for (const char* name : {"ImageFilterDistorted", "ImageFilterExtrusion", "ImageFilterMirror"}) {
    auto_ptr<ImageFilterBaseGL> f = make(name);
    const float* cx = nullptr;
    const float* cy = nullptr;
    if (auto* d = as<ImageFilterDistortedGL>(f)) cx = &d->mCenterx, cy = &d->mCentery;
    if (auto* e = as<ImageFilterExtrusionGL>(f)) cx = &e->mCenterx, cy = &e->mCentery;
    if (auto* m = as<ImageFilterMirrorGL>(f)) cx = &m->mCenterx, cy = &m->mCentery;
    ASSERT_NE(cx, nullptr) << name;
    set(f, "mCenterx", -0.5f);
    set(f, "mCentery", 1.5f);
    EXPECT_EQ(*cx, 0.0f) << name;
    EXPECT_EQ(*cy, 1.0f) << name;
    set(f, "mCenterx", 0.3f);
    set(f, "mCentery", 0.7f);
    EXPECT_EQ(*cx, 0.3f) << name;
    EXPECT_EQ(*cy, 0.7f) << name;
    // A null value or an unknown name changes nothing.
    f->setParameters("mCenterx", nullptr);
    set(f, "mcenterx", 0.9f);
    EXPECT_EQ(*cx, 0.3f) << name;
  }

  auto_ptr<ImageFilterBaseGL> d = make("ImageFilterDistorted");
  auto* distorted = as<ImageFilterDistortedGL>(d);
  EXPECT_FLOAT_EQ(distorted->mRadius, 0.2f);  // defaults are not squared
  EXPECT_FLOAT_EQ(distorted->mStrength, 4.0f);
  set(d, "mRadius", 0.5f);
  set(d, "mStrength", -7.5f);  // unclamped
  EXPECT_FLOAT_EQ(distorted->mRadius, 0.25f);
  EXPECT_FLOAT_EQ(distorted->mStrength, -7.5f);
  set(d, "mRadius", -0.3f);
  EXPECT_FLOAT_EQ(distorted->mRadius, 0.09f);
  EXPECT_TRUE(d->initParameters());
  EXPECT_FLOAT_EQ(distorted->mRadius, 0.2f);
  EXPECT_FLOAT_EQ(distorted->mCenterx, 0.5f);

  auto_ptr<ImageFilterBaseGL> t = make("ImageFilterTimetunnel");
  auto* tunnel = as<ImageFilterTimetunnelGL>(t);
  EXPECT_FLOAT_EQ(tunnel->mRadius, 0.2f);
  set(t, "mRadius", 0.5f);
  EXPECT_FLOAT_EQ(tunnel->mRadius, 0.25f);

  auto_ptr<ImageFilterBaseGL> m = make("ImageFilterMirror");
  EXPECT_FLOAT_EQ(as<ImageFilterMirrorGL>(m)->mCenterx, 1.0f);
  EXPECT_FLOAT_EQ(as<ImageFilterMirrorGL>(m)->mCentery, 0.5f);

  auto_ptr<ImageFilterBaseGL> table = make("ImageFilterTable");
  set(table, "mStrength", 3.5f);
  EXPECT_FLOAT_EQ(as<ImageFilterTableGL>(table)->mStrength, 3.5f);
}

TEST(FilterParameters, ExtrusionStrengthDecidesZoom) {
  auto_ptr<ImageFilterBaseGL> f = make("ImageFilterExtrusion");
  auto* e = as<ImageFilterExtrusionGL>(f);
  EXPECT_FLOAT_EQ(e->mStrength, 0.2f);
  EXPECT_FLOAT_EQ(e->mZoom, 1.0f);
  set(f, "mStrength", -1.0f);
  EXPECT_FLOAT_EQ(e->mStrength, -1.0f);
  EXPECT_EQ(e->mZoom, 0.0f);
  set(f, "mStrength", 0.0f);
  EXPECT_EQ(e->mZoom, 1.0f);
  set(f, "mStrength", -0.001f);
  EXPECT_EQ(e->mZoom, 0.0f);
  set(f, "mStrength", 2.5f);
  EXPECT_EQ(e->mZoom, 1.0f);
  // mZoom is not a parameter name: setting it is ignored.
  set(f, "mStrength", -1.0f);
  set(f, "mZoom", 1.0f);
  EXPECT_EQ(e->mZoom, 0.0f);
}

TEST(FilterParameters, VertexArraysAndMatrixAreCopied) {
  auto_ptr<ImageFilterBaseGL> f = make("ImageFilterMirror");
  const float pos[8] = {0, 0, 1, 0, 0, 1, 1, 1};
  const float tex[8] = {0.5f, 0.25f, 1, 0, 0, 1, -1, 2};
  float matrix[16];
  for (int i = 0; i < 16; ++i) matrix[i] = i * 0.5f;
  LogCapture cap;
  f->setParameters("mPosVertices", const_cast<float*>(pos));
  EXPECT_EQ(cap.countPrefix("mTexVertices"), 0);
  f->setParameters("mTexVertices", const_cast<float*>(tex));
  f->setParameters("mTextureMatrix", matrix);
  EXPECT_EQ(memcmp(f->mPosVertices, pos, sizeof(pos)), 0);
  EXPECT_EQ(memcmp(f->mTexVertices, tex, sizeof(tex)), 0);
  EXPECT_EQ(memcmp(f->mTextureMatrix, matrix, sizeof(matrix)), 0);
  EXPECT_EQ(cap.count("mTexVertices: 0.500000, 0.250000, 1.000000, 0.000000, 0.000000, 1.000000, -1.000000, "
                      "2.000000"),
            1);
}

TEST(FilterParameters, BaseDefaultsTurnTheQuadAQuarter) {
  ImageFilterBaseGL f;
  // Texture coordinate of each corner: s = (1 - y) / 2, t = (1 - x) / 2.
  for (int v = 0; v < 4; ++v) {
    float x = f.mPosVertices[2 * v], y = f.mPosVertices[2 * v + 1];
    EXPECT_EQ(std::abs(x), 1.0f);
    EXPECT_EQ(std::abs(y), 1.0f);
    EXPECT_EQ(f.mTexVertices[2 * v], (1 - y) / 2) << v;
    EXPECT_EQ(f.mTexVertices[2 * v + 1], (1 - x) / 2) << v;
  }
  EXPECT_EQ(f.mPosVertices[0], -1.0f);
  EXPECT_EQ(f.mPosVertices[3], -1.0f);
  EXPECT_EQ(f.mPosVertices[5], 1.0f);
  EXPECT_EQ(f.mode, 0u);
  EXPECT_EQ(f.width, 0);
  EXPECT_EQ(f.height, 0);
}
