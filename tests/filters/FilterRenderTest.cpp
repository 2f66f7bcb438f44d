// Every filter drawn off screen through process() and compared pixel by pixel
// with a CPU evaluation of its formula (FilterModel.h). Tolerances are per
// channel in bytes: 1 where the program only samples texel centres, 2 where it
// interpolates or computes. The programs are mediump, which llvmpipe runs at
// half precision; the model rounds each operation the same way.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "filters/FilterTestSupport.h"
#include "filters/ImageFilters.h"
#include "image/FlatImage.h"

using filtertest::gradient;
using filtertest::noise;
using model::Picture;

namespace {

const int kCentreTolerance = 1;
const int kInterpolatedTolerance = 2;

using Configure = std::function<void(ImageFilterBaseGL&)>;
using Floats = std::vector<std::pair<const char*, float>>;

Configure floats(Floats values) {
  return [values](ImageFilterBaseGL& f) {
    for (auto v : values) f.setParameters(v.first, &v.second);
  };
}

// A filter from the factory with its engine and program ready, or null.
auto_ptr<ImageFilterBaseGL> ready(const char* name) {
  auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter(name));
  if (f == nullptr || !f->initEngine() || !f->setupGraphics(1)) {
    ADD_FAILURE() << "cannot set up " << name;
    return auto_ptr<ImageFilterBaseGL>();
  }
  return f;
}

// Filters a copy of `in` through process() with a fresh filter and engine.
std::vector<uint8_t> run(const char* name, const Picture& in, const Configure& configure = nullptr) {
  std::vector<uint8_t> pixels = in.pixels;
  auto_ptr<ImageFilterBaseGL> f = ready(name);
  if (f == nullptr) return pixels;
  if (configure) configure(*f);
  f->process(pixels.data(), in.width, in.height);
  return pixels;
}

using PixelMap = int (*)(int);

// Largest colour difference between out and map(in) with out read at the
// quarter-turned position of a square picture; 1000 if an alpha is not 255.
int worstAgainst(const Picture& in, const std::vector<uint8_t>& out, PixelMap map) {
  int worst = 0, n = in.width;
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) {
      const uint8_t* o = &out[(y * n + x) * 4];
      const uint8_t* s = in.at(n - 1 - y, n - 1 - x);
      for (int c = 0; c < 3; ++c) worst = std::max(worst, std::abs(o[c] - map(s[c])));
      if (o[3] != 255) worst = 1000;
    }
  return worst;
}

int same(int v) { return v; }
int inverse(int v) { return 255 - v; }

// Every grey level, then colours: luminance spans the four temperature bands.
Picture greysThenNoise() {
  Picture in = noise(32, 32, 4);
  for (int i = 0; i < 256; ++i) memset(in.at(i % 32, i / 32), i, 3);
  return in;
}

}  // namespace

class FilterRender : public filtertest::PrivateCache {};

TEST_F(FilterRender, EveryFormulaMatchesTheModel) {
  const Picture square = gradient(64, 64), flat = gradient(64, 48), wide = gradient(48, 20);
  const Picture rough = noise(40, 40, 3), greys = greysThenNoise();
  const int kLerp = kInterpolatedTolerance;
  struct Case {
    const char* filter;  // after "ImageFilter"
    const Picture& in;
    Floats params;
    model::Shader expected;
    int tolerance;
  } cases[] = {
      // Square pictures sample texel centres: None is exact. A wide one is stretched.
      {"None", rough, {}, model::none(rough), 0},
      {"None", wide, {}, model::none(wide), kLerp},
      {"Xray", rough, {}, model::xray(rough), kCentreTolerance},
      {"Temperature", greys, {}, model::temperature(greys), kLerp},
      // Both axes fold: s about 0.375, t about the default 0.5.
      {"Mirror", flat, {{"mCenterx", 0.375f}}, model::mirror(flat, 0.375, 0.5), kLerp},
      // A radius set by name is squared: 0.3 compares against 0.09.
      {"Timetunnel", square, {{"mRadius", 0.3f}}, model::timetunnel(square, 0.09), kLerp},
      // Strength 0 turns nothing: the None filter's picture.
      {"Distorted", square, {{"mStrength", 0.0f}, {"mRadius", 0.6f}}, model::none(square), kCentreTolerance},
      {"Distorted",
       square,
       {{"mRadius", 0.4f}, {"mStrength", -3.0f}, {"mCenterx", 0.4f}, {"mCentery", 0.55f}},
       model::distorted(square, 0.16, -3.0, 0.4, 0.55),
       kLerp},
      // mCentery is sent, but the program measures y from mCenterx too.
      {"Extrusion",
       square,
       {{"mStrength", 0.5f}, {"mCenterx", 0.3f}, {"mCentery", 0.9f}},
       model::extrusion(square, 0.5, 1.0, 0.3),
       kLerp},
      // A negative strength makes mZoom 0: every pixel reads the centre, one colour.
      {"Extrusion",
       rough,
       {{"mStrength", -1.0f}},
       [&](double, double) { return model::sample(rough, 0.5, 0.5); },
       kLerp},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.filter << " with " << c.params.size() << " parameters");
    std::string name = std::string("ImageFilter") + c.filter;
    EXPECT_MATCHES(model::render(c.in.width, c.in.height, c.expected),
                   run(name.c_str(), c.in, floats(c.params)), c.tolerance);
  }
}

TEST_F(FilterRender, DistortedMovesAMarkedPixelWhereTheFormulaSays) {
  const int n = 64;
  Picture in(n, n);
  for (size_t i = 3; i < in.pixels.size(); i += 4) in.pixels[i] = 255;
  // A white 2 x 2 mark on texels 26..27, 31..32: 0.08 from the centre.
  for (int y = 31; y < 33; ++y)
    for (int x = 26; x < 28; ++x) memset(in.at(x, y), 255, 4);
  std::vector<uint8_t> out =
      run("ImageFilterDistorted", in, floats({{"mRadius", 0.4f}, {"mStrength", 6.0f}}));
  // Brightness-weighted centre of the mark.
  auto centroid = [&](const uint8_t* px) {
    double sx = 0, sy = 0, w = 0;
    for (int i = 0; i < n * n; ++i) sx += px[i * 4] * (i % n), sy += px[i * 4] * (i / n), w += px[i * 4];
    return std::make_pair(sx / w, sy / w);
  };
  // The radius set as 0.4 is stored squared.
  auto got = centroid(out.data());
  auto want = centroid(model::render(n, n, model::distorted(in, 0.16, 6.0, 0.5, 0.5)).pixels.data());
  EXPECT_NEAR(got.first, want.first, 0.5);
  EXPECT_NEAR(got.second, want.second, 0.5);
  // Unswirled, the mark would show at out(n - 1 - y, n - 1 - x) = (31.5, 36.5);
  // the formula turns it by 6 * (0.08 / 0.16)^2 = 1.5 radians about the centre.
  EXPECT_GT(std::hypot(got.first - 31.5, got.second - 36.5), 4.0);
}

namespace {

// Colours with every red, green below 33 and blue up to 252: the range where
// the table's blue shift (green / 5 columns) stays under one step.
Picture tableColours() {
  Picture p(64, 64);
  std::mt19937 rng(6);
  for (int i = 0; i < 64 * 64; ++i) {
    uint8_t* q = p.pixels.data() + i * 4;
    q[0] = static_cast<uint8_t>(i % 256);
    q[1] = static_cast<uint8_t>(rng() % 33);
    q[2] = static_cast<uint8_t>(rng() % 253);
    q[3] = 10;
  }
  return p;
}

}  // namespace

// One step of the table is 255 / 63 = 4.05 bytes.
TEST_F(FilterRender, TableIdentityWithinOneStepAndAnInvertingBitmapInverts) {
  Picture in = tableColours();
  EXPECT_LE(worstAgainst(in, run("ImageFilterTable", in), same), 4);
  // Row r, block g, column b of the inverse holds 255 - (r, g, b) * 255 / 63, as
  // RGBA rows padded by 16 bytes: the copy follows the stride and skips alpha.
  const int stride = 4096 * 4 + 16;
  std::vector<uint8_t> rgba(size_t(stride) * 64, 0x5a);
  for (int i = 0; i < 4096 * 64; ++i) {
    const int steps[3] = {i / 4096, i % 4096 / 64, i % 64};
    for (int c = 0; c < 3; ++c)
      rgba[size_t(i / 4096) * stride + i % 4096 * 4 + c] = static_cast<uint8_t>(255 - steps[c] * 255 / 63);
  }
  flat::Image* padded = ov_createImage(4096, 64, 4, stride, rgba.data());
  flat::Image* tall = ov_createImage(4096, 65, 4);
  flat::Image* grey = ov_createImage(4096, 64, 1);
  ASSERT_TRUE(padded != nullptr && tall != nullptr && grey != nullptr);
  std::vector<uint8_t> out = run("ImageFilterTable", in, [&](ImageFilterBaseGL& f) {
    f.setParameters("mFilterBitmap", padded);
    f.setParameters("mFilterBitmap", tall);  // refused: 4096 x 65
    f.setParameters("mFilterBitmap", grey);  // refused: one byte per pixel
  });
  EXPECT_LE(worstAgainst(in, out, inverse), 4);
  ov_releaseImage(padded);
  ov_releaseImage(tall);
  ov_releaseImage(grey);
}

TEST_F(FilterRender, ProcessRefusesWhatItCannotServe) {
  auto_ptr<ImageFilterBaseGL> f = ready("ImageFilterXray");
  ASSERT_NE(f, nullptr);
  // 1 x 1 writes exactly 4 bytes: 255 - (10 + 20 + 30) / 3 and alpha 255.
  uint8_t one[8] = {10, 20, 30, 40, 0xee, 0xee, 0xee, 0xee};
  f->process(one, 1, 1);
  const uint8_t expected[8] = {235, 235, 235, 255, 0xee, 0xee, 0xee, 0xee};
  EXPECT_EQ(memcmp(one, expected, 8), 0);
  // Empty, negative and oversized pictures and a null buffer leave it untouched.
  uint8_t keep[16];
  memset(keep, 0x42, sizeof(keep));
  f->process(keep, 0, 2);
  f->process(keep, 65536, 65536);
  f->process(nullptr, 2, 2);
  for (uint8_t v : keep) EXPECT_EQ(v, 0x42);
  f->process(keep, 2, 2);  // and the filter still works
  EXPECT_EQ(keep[0], 255 - 0x42);
}

TEST_F(FilterRender, ProgramCacheFillsOnFirstUseAndHealsAForeignFile) {
  std::string file = cacheDir() + "ImageFilterMirror.osb";
  unlink(file.c_str());
  auto fromBinary = [] {
    auto_ptr<ImageFilterBaseGL> f = ready("ImageFilterMirror");
    return f != nullptr && f->program->isFromBinary();
  };
  EXPECT_FALSE(fromBinary());
  ASSERT_EQ(access(file.c_str(), R_OK), 0);
  EXPECT_TRUE(fromBinary());
  // A foreign file is replaced by a fresh compile, and the filter still draws.
  FILE* fp = fopen(file.c_str(), "wb");
  ASSERT_NE(fp, nullptr);
  const char junk[] = "\x5f\x87\0\0not a program binary";
  fwrite(junk, 1, sizeof(junk), fp);
  fclose(fp);
  Picture in = gradient(32, 32);
  EXPECT_MATCHES(model::render(32, 32, model::mirror(in, 1.0, 0.5)), run("ImageFilterMirror", in),
                 kInterpolatedTolerance);
  EXPECT_TRUE(fromBinary());
  // So is a real file cut short.
  ASSERT_EQ(truncate(file.c_str(), 64), 0);
  EXPECT_MATCHES(model::render(32, 32, model::mirror(in, 1.0, 0.5)), run("ImageFilterMirror", in),
                 kInterpolatedTolerance);
  EXPECT_TRUE(fromBinary());
}
