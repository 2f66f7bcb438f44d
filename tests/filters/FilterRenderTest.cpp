// Every filter drawn off screen through process() and compared pixel by pixel
// with a CPU evaluation of its formula (FilterModel.h). Tolerances are per
// channel in bytes: 1 where the program only samples texel centres, 2 where it
// interpolates or computes. The programs are mediump, which llvmpipe runs at
// half precision (the model rounds each operation the same way, but cannot
// match every tie); the Table filter's blue column is the one place where
// that shows (see there).
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>

#include "filters/FilterModel.h"
#include "filters/ImageFilters.h"
#include "gpu/GPUScript.h"
#include "image/FlatImage.h"

using model::Picture;

namespace {

const int kCentreTolerance = 1;
const int kInterpolatedTolerance = 2;
// Half precision keeps only whole (below 2048) or even (above) block sums in
// the Table program, so a sum on a rounding tie can land one or two table
// columns (4.05 bytes each) from the model's choice.
const int kTableColumnTolerance = 9;

std::string gCacheDir;

class FilterRender : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    char pattern[] = "/tmp/filters-cacheXXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    gCacheDir = std::string(pattern) + "/";
    GPUScript::setCacheDirectory(gCacheDir.c_str());
  }
  static void TearDownTestSuite() {
    std::string cmd = "rm -rf '" + gCacheDir + "'";
    EXPECT_EQ(system(cmd.c_str()), 0);
    GPUScript::setCacheDirectory(nullptr);
  }
};

using Configure = std::function<void(ImageFilterBaseGL&)>;

// Filters a copy of `in` through process() with a fresh filter and engine.
std::vector<uint8_t> run(const char* name, const Picture& in, const Configure& configure = nullptr) {
  auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter(name));
  std::vector<uint8_t> pixels = in.pixels;
  if (f == nullptr) {
    ADD_FAILURE() << "no filter " << name;
    return pixels;
  }
  EXPECT_TRUE(f->initEngine());
  EXPECT_TRUE(f->setupGraphics(1)) << name;
  if (configure) configure(*f);
  f->process(pixels.data(), in.width, in.height);
  return pixels;
}

void setFloat(ImageFilterBaseGL& f, const char* name, float v) { f.setParameters(name, &v); }

// Bytes drawn from a fixed seed; alpha varies too so that a pass-through
// filter that did nothing is caught.
Picture noise(int w, int h, unsigned seed) {
  Picture p(w, h);
  std::mt19937 rng(seed);
  for (auto& v : p.pixels) v = static_cast<uint8_t>(rng() & 0xff);
  return p;
}

// Smooth in every channel, so that sampling a little off a texel centre
// changes colours by a fraction of a step.
Picture gradient(int w, int h) {
  Picture p(w, h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      uint8_t* q = p.at(x, y);
      q[0] = static_cast<uint8_t>(x * 255 / (w - 1));
      q[1] = static_cast<uint8_t>(y * 255 / (h - 1));
      q[2] = static_cast<uint8_t>((x + y) * 255 / (w + h - 2));
      q[3] = static_cast<uint8_t>(255 - x * 100 / (w - 1));
    }
  }
  return p;
}

#define EXPECT_MATCHES(expected, actual, tolerance)                                                    \
  do {                                                                                                 \
    model::Difference d_ = model::compare((expected), (actual).data());                                \
    EXPECT_LE(d_.worst, (tolerance)) << "at x " << d_.x << " y " << d_.y << " channel " << d_.channel; \
  } while (0)

}  // namespace

TEST_F(FilterRender, NoneTurnsThePictureAQuarter) {
  const int n = 32;
  Picture in = noise(n, n, 1);
  std::vector<uint8_t> out = run("ImageFilterNone", in);
  // Texture coordinates s = (1 - y) / 2, t = (1 - x) / 2 on a square picture
  // hit texel centres: out(x, y) = in(n - 1 - y, n - 1 - x), worked by hand.
  int mismatches = 0;
  for (int y = 0; y < n; ++y) {
    for (int x = 0; x < n; ++x) {
      if (memcmp(&out[(y * n + x) * 4], in.at(n - 1 - y, n - 1 - x), 4) != 0) ++mismatches;
    }
  }
  EXPECT_EQ(mismatches, 0);
  EXPECT_MATCHES(model::render(n, n, model::defaultQuad(), model::none(in)), out, kCentreTolerance);

  // A wide picture is stretched across the turn.
  Picture wide = gradient(48, 20);
  EXPECT_MATCHES(model::render(48, 20, model::defaultQuad(), model::none(wide)), run("ImageFilterNone", wide),
                 kInterpolatedTolerance);
}

TEST_F(FilterRender, NoneFollowsReplacedTextureCoordinates) {
  Picture in = noise(16, 16, 2);
  // Texture coordinates that follow the positions: the picture comes back as it was.
  float straight[8] = {0, 0, 1, 0, 0, 1, 1, 1};
  std::vector<uint8_t> out =
      run("ImageFilterNone", in, [&](ImageFilterBaseGL& f) { f.setParameters("mTexVertices", straight); });
  EXPECT_EQ(out, in.pixels);
}

TEST_F(FilterRender, XrayIsInvertedGrey) {
  Picture in = noise(40, 40, 3);
  std::vector<uint8_t> out = run("ImageFilterXray", in);
  EXPECT_MATCHES(model::render(40, 40, model::defaultQuad(), model::xray(in)), out, kCentreTolerance);
  // Hand-worked: black becomes white, white black, (30, 60, 90) becomes 255 - 60.
  Picture fixed(2, 2);
  const uint8_t colours[4][4] = {{0, 0, 0, 0}, {255, 255, 255, 255}, {30, 60, 90, 7}, {255, 0, 0, 9}};
  for (int i = 0; i < 4; ++i) memcpy(fixed.at(i % 2, i / 2), colours[i], 4);
  std::vector<uint8_t> g = run("ImageFilterXray", fixed);
  // out(x, y) = in(1 - y, 1 - x): pixel 0 shows input 3, 1 input 1, 2 input 2, 3 input 0.
  const uint8_t expected[4][4] = {
      {170, 170, 170, 255}, {0, 0, 0, 255}, {195, 195, 195, 255}, {255, 255, 255, 255}};
  for (int i = 0; i < 4; ++i) {
    for (int c = 0; c < 4; ++c) EXPECT_NEAR(g[i * 4 + c], expected[i][c], 1) << i << " " << c;
  }
}

TEST_F(FilterRender, TemperatureCoversAllFourBands) {
  // Every grey level once, plus colours: luminance spans the four bands.
  Picture in(32, 16);
  std::mt19937 rng(4);
  int bands[4] = {0, 0, 0, 0};
  for (int i = 0; i < 32 * 16; ++i) {
    uint8_t* q = in.at(i % 32, i / 32);
    if (i < 256) {
      q[0] = q[1] = q[2] = static_cast<uint8_t>(i);
    } else {
      q[0] = rng() & 0xff, q[1] = rng() & 0xff, q[2] = rng() & 0xff;
    }
    q[3] = 99;
    double y = model::luma(model::texel(in, i % 32, i / 32));
    ++bands[y > 0.75 ? 3 : y > 0.5 ? 2 : y > 0.25 ? 1 : 0];
  }
  for (int b = 0; b < 4; ++b) EXPECT_GT(bands[b], 20) << b;
  // A square picture keeps the samples on texel centres.
  Picture square(32, 32);
  memcpy(square.pixels.data(), in.pixels.data(), in.pixels.size());
  memcpy(square.pixels.data() + in.pixels.size(), in.pixels.data(), in.pixels.size());
  std::vector<uint8_t> out = run("ImageFilterTemperature", square);
  EXPECT_MATCHES(model::render(32, 32, model::defaultQuad(), model::temperature(square)), out,
                 kInterpolatedTolerance);

  // Hand-worked greys: 0 -> blue (0, 0, 255); 64 -> (0, 255, 253);
  // 128 -> green; 192 -> yellow; 255 -> red.
  auto at = [&](int grey) {
    // Grey g sits at input (g % 32, g / 32) and shows at out(31 - g / 32, 31 - g % 32).
    return &out[((31 - grey % 32) * 32 + (31 - grey / 32)) * 4];
  };
  const struct {
    int grey;
    uint8_t rgb[3];
  } hand[] = {
      {0, {0, 0, 255}}, {64, {0, 255, 253}}, {128, {0, 255, 0}}, {192, {255, 255, 0}}, {255, {255, 0, 0}}};
  for (const auto& h : hand) {
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(at(h.grey)[c], h.rgb[c], 1) << h.grey << " " << c;
    EXPECT_EQ(at(h.grey)[3], 255);
  }
}

TEST_F(FilterRender, MirrorReflectsBeyondTheCentre) {
  Picture in = gradient(64, 48);
  // Defaults: mCenterx 1 never reflects s, mCentery 0.5 folds t.
  EXPECT_MATCHES(model::render(64, 48, model::defaultQuad(), model::mirror(in, 1.0, 0.5)),
                 run("ImageFilterMirror", in), kInterpolatedTolerance);
  std::vector<uint8_t> out = run("ImageFilterMirror", in, [](ImageFilterBaseGL& f) {
    setFloat(f, "mCenterx", 0.375f);
    setFloat(f, "mCentery", 1.5f);  // clamped to 1
  });
  EXPECT_MATCHES(model::render(64, 48, model::defaultQuad(), model::mirror(in, 0.375, 1.0)), out,
                 kInterpolatedTolerance);
}

TEST_F(FilterRender, TimetunnelPullsTheOutsideOntoTheCircle) {
  Picture in = gradient(64, 64);
  EXPECT_MATCHES(model::render(64, 64, model::defaultQuad(), model::timetunnel(in, 0.2)),
                 run("ImageFilterTimetunnel", in), kInterpolatedTolerance);
  // A radius set by name is squared: 0.3 compares against 0.09.
  EXPECT_MATCHES(model::render(64, 64, model::defaultQuad(), model::timetunnel(in, 0.09)),
                 run("ImageFilterTimetunnel", in, [](ImageFilterBaseGL& f) { setFloat(f, "mRadius", 0.3f); }),
                 kInterpolatedTolerance);
}

TEST_F(FilterRender, DistortedSwirlsInsideTheRadius) {
  Picture in = gradient(64, 64);
  // Strength 0 turns nothing: the same picture as the None filter.
  std::vector<uint8_t> still = run("ImageFilterDistorted", in, [](ImageFilterBaseGL& f) {
    setFloat(f, "mStrength", 0.0f);
    setFloat(f, "mRadius", 0.6f);
  });
  EXPECT_MATCHES(model::render(64, 64, model::defaultQuad(), model::none(in)), still, kCentreTolerance);
  // Defaults (radius 0.2 unsquared, strength 4) and a set swirl.
  EXPECT_MATCHES(model::render(64, 64, model::defaultQuad(), model::distorted(in, 0.2, 4.0, 0.5, 0.5)),
                 run("ImageFilterDistorted", in), kInterpolatedTolerance);
  EXPECT_MATCHES(model::render(64, 64, model::defaultQuad(), model::distorted(in, 0.16, -3.0, 0.4, 0.55)),
                 run("ImageFilterDistorted", in,
                     [](ImageFilterBaseGL& f) {
                       setFloat(f, "mRadius", 0.4f);
                       setFloat(f, "mStrength", -3.0f);
                       setFloat(f, "mCenterx", 0.4f);
                       setFloat(f, "mCentery", 0.55f);
                     }),
                 kInterpolatedTolerance);
}

TEST_F(FilterRender, DistortedMovesAMarkedPixelWhereTheFormulaSays) {
  const int n = 64;
  Picture in(n, n);
  for (size_t i = 3; i < in.pixels.size(); i += 4) in.pixels[i] = 255;
  // A white 2 x 2 mark on texels 26..27, 31..32: 0.08 from the centre.
  for (int y = 31; y < 33; ++y)
    for (int x = 26; x < 28; ++x) memset(in.at(x, y), 255, 4);
  const double radius = 0.16, strength = 6.0;  // radius set as 0.4, stored squared
  std::vector<uint8_t> out = run("ImageFilterDistorted", in, [](ImageFilterBaseGL& f) {
    setFloat(f, "mRadius", 0.4f);
    setFloat(f, "mStrength", 6.0f);
  });
  // Brightness-weighted centre of the mark.
  auto centroid = [&](const uint8_t* px, double* cx, double* cy) {
    double sx = 0, sy = 0, w = 0;
    for (int y = 0; y < n; ++y)
      for (int x = 0; x < n; ++x) {
        double v = px[(y * n + x) * 4];
        sx += v * x, sy += v * y, w += v;
      }
    *cx = sx / w;
    *cy = sy / w;
    return w;
  };
  double gx, gy, ex, ey;
  ASSERT_GT(centroid(out.data(), &gx, &gy), 0.0);
  Picture expected =
      model::render(n, n, model::defaultQuad(), model::distorted(in, radius, strength, 0.5, 0.5));
  ASSERT_GT(centroid(expected.pixels.data(), &ex, &ey), 0.0);
  EXPECT_NEAR(gx, ex, 0.5);
  EXPECT_NEAR(gy, ey, 0.5);
  // Unswirled, the mark would show at out(n - 1 - y, n - 1 - x) = (31.5, 36.5);
  // the formula turns it by 6 * (0.08 / 0.16)^2 = 1.5 radians about the centre.
  EXPECT_GT(std::hypot(gx - 31.5, gy - 36.5), 4.0);
  EXPECT_NEAR(std::hypot(gx - 31.5, gy - 31.5), 5.0, 1.0);
}

TEST_F(FilterRender, ExtrusionMeasuresBothAxesFromCenterx) {
  Picture in = gradient(64, 64);
  EXPECT_MATCHES(model::render(64, 64, model::defaultQuad(), model::extrusion(in, 0.2, 1.0, 0.5)),
                 run("ImageFilterExtrusion", in), kInterpolatedTolerance);
  // mCentery is sent but the program measures y from mCenterx too.
  EXPECT_MATCHES(model::render(64, 64, model::defaultQuad(), model::extrusion(in, 0.5, 1.0, 0.3)),
                 run("ImageFilterExtrusion", in,
                     [](ImageFilterBaseGL& f) {
                       setFloat(f, "mStrength", 0.5f);
                       setFloat(f, "mCenterx", 0.3f);
                       setFloat(f, "mCentery", 0.9f);
                     }),
                 kInterpolatedTolerance);
}

TEST_F(FilterRender, ExtrusionWithZoomZeroCollapsesToOneColour) {
  Picture in = noise(32, 32, 5);
  std::vector<uint8_t> out =
      run("ImageFilterExtrusion", in, [](ImageFilterBaseGL& f) { setFloat(f, "mStrength", -1.0f); });
  // Every pixel reads the centre point (0.5, 0.5): the mean of the four
  // middle texels.
  model::Vec4 c = model::sample(in, 0.5, 0.5);
  const uint8_t expected[4] = {model::toByte(c.r), model::toByte(c.g), model::toByte(c.b),
                               model::toByte(c.a)};
  int off = 0;
  for (int i = 0; i < 32 * 32; ++i) {
    for (int k = 0; k < 4; ++k) {
      if (std::abs(out[i * 4 + k] - expected[k]) > kInterpolatedTolerance) ++off;
    }
    if (memcmp(&out[i * 4], &out[0], 4) != 0) ++off;
  }
  EXPECT_EQ(off, 0);
}

namespace {

// The 64-step table: row r, block g, column b holds (r, g, b) * 255 / 63,
// truncated.
Picture identityTable() {
  Picture t(4096, 64, 3);
  for (int r = 0; r < 64; ++r)
    for (int g = 0; g < 64; ++g)
      for (int b = 0; b < 64; ++b) {
        uint8_t* p = t.at(g * 64 + b, r);
        p[0] = static_cast<uint8_t>(r * 255 / 63);
        p[1] = static_cast<uint8_t>(g * 255 / 63);
        p[2] = static_cast<uint8_t>(b * 255 / 63);
      }
  return t;
}

// Colours with every red, green below 33 and blue up to 252: the range where
// the table's blue shift stays under one step.
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

// Compares a Table result with the model: red and green within 2, blue
// within 2 on all but 2% of the pixels and within two table columns on all.
void expectTableMatch(const Picture& expected, const std::vector<uint8_t>& out) {
  int worstRg = 0, worstB = 0, offB = 0;
  for (int i = 0; i < expected.width * expected.height; ++i) {
    const uint8_t* e = expected.pixels.data() + i * 4;
    const uint8_t* o = out.data() + i * 4;
    worstRg = std::max({worstRg, std::abs(e[0] - o[0]), std::abs(e[1] - o[1]), std::abs(e[3] - o[3])});
    int db = std::abs(e[2] - o[2]);
    worstB = std::max(worstB, db);
    if (db > kInterpolatedTolerance) ++offB;
  }
  EXPECT_LE(worstRg, kInterpolatedTolerance);
  EXPECT_LE(worstB, kTableColumnTolerance);
  EXPECT_LE(offB, expected.width * expected.height / 50);
}

// Largest difference between out and f(in) over the colour channels, with
// out read at the quarter-turned position; also checks alpha is 255.
int worstAgainst(const Picture& in, const std::vector<uint8_t>& out, int (*f)(int)) {
  int worst = 0, n = in.width;
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) {
      const uint8_t* o = &out[(y * n + x) * 4];
      const uint8_t* s = in.at(n - 1 - y, n - 1 - x);
      for (int c = 0; c < 3; ++c) worst = std::max(worst, std::abs(o[c] - f(s[c])));
      if (o[3] != 255) worst = 1000;
    }
  return worst;
}

}  // namespace

TEST_F(FilterRender, TableIdentityKeepsColoursWithinOneStep) {
  Picture in = tableColours();
  std::vector<uint8_t> out = run("ImageFilterTable", in);
  Picture lut = identityTable();
  expectTableMatch(model::render(64, 64, model::defaultQuad(), model::table(in, lut, 1.0)), out);
  // One step of the table is 255 / 63 = 4.05 bytes.
  EXPECT_LE(worstAgainst(in, out, [](int v) { return v; }), 4);
  // Over all colours the blue column drifts with green, as the program says.
  Picture any = noise(64, 64, 7);
  expectTableMatch(model::render(64, 64, model::defaultQuad(), model::table(any, lut, 1.0)),
                   run("ImageFilterTable", any));
  // Strength 0 gives the input colour with alpha forced to 1.
  std::vector<uint8_t> plain =
      run("ImageFilterTable", any, [](ImageFilterBaseGL& f) { setFloat(f, "mStrength", 0.0f); });
  EXPECT_LE(worstAgainst(any, plain, [](int v) { return v; }), kCentreTolerance);
}

TEST_F(FilterRender, TableTakesAnInvertingBitmap) {
  Picture lut = identityTable();
  // The lookup bitmap arrives as RGBA: the fourth byte must be skipped.
  std::vector<uint8_t> rgba(4096 * 64 * 4);
  Picture inverted(4096, 64, 3);
  for (int i = 0; i < 4096 * 64; ++i) {
    for (int c = 0; c < 3; ++c) {
      rgba[i * 4 + c] = static_cast<uint8_t>(255 - lut.pixels[i * 3 + c]);
      inverted.pixels[i * 3 + c] = rgba[i * 4 + c];
    }
    rgba[i * 4 + 3] = 0x5a;
  }
  flat::Image* record = ov_createImage(4096, 64, 4, 4096 * 4, rgba.data());
  ASSERT_NE(record, nullptr);
  std::vector<uint8_t> tall(4096 * 65 * 4, 0);
  flat::Image* wrong = ov_createImage(4096, 65, 4, 4096 * 4, tall.data());

  Picture in = tableColours();
  std::vector<uint8_t> out = run("ImageFilterTable", in, [&](ImageFilterBaseGL& f) {
    f.setParameters("mFilterBitmap", wrong);  // 4096 x 65: ignored
    f.setParameters("mFilterBitmap", record);
  });
  expectTableMatch(model::render(64, 64, model::defaultQuad(), model::table(in, inverted, 1.0)), out);
  EXPECT_LE(worstAgainst(in, out, [](int v) { return 255 - v; }), 4);

  // The wrong size alone leaves the identity table in place.
  std::vector<uint8_t> kept =
      run("ImageFilterTable", in, [&](ImageFilterBaseGL& f) { f.setParameters("mFilterBitmap", wrong); });
  EXPECT_LE(worstAgainst(in, kept, [](int v) { return v; }), 4);
  ov_releaseImage(record);
  ov_releaseImage(wrong);
}

TEST_F(FilterRender, TableRecordTakesThreeBytesOfEachSourcePixel) {
  auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter("ImageFilterTable"));
  ASSERT_TRUE(f->initEngine());
  ASSERT_TRUE(f->setupGraphics(1));
  auto* t = dynamic_cast<ImageFilterTableGL*>(f.get());
  ASSERT_NE(t->mTable, nullptr);
  ASSERT_EQ(t->mTable->stride, 4096 * 3);
  // Identity entries: step x 4.0476189 (255 / 63 in single precision, a
  // little below the exact ratio) truncated, so the 63rd step is 254.
  int off = 0;
  for (int r = 0; r < 64; ++r)
    for (int g = 0; g < 64; ++g)
      for (int b = 0; b < 64; ++b) {
        const uint8_t* p = t->mTable->data + r * 4096 * 3 + (g * 64 + b) * 3;
        const int steps[3] = {r, g, b};
        for (int c = 0; c < 3; ++c)
          off += p[c] != static_cast<uint8_t>(static_cast<float>(steps[c]) * 4.0476189f);
      }
  EXPECT_EQ(off, 0);

  // RGBA rows padded by 16 bytes: the copy follows the source's own stride.
  const int stride = 4096 * 4 + 16;
  std::vector<uint8_t> src(size_t(stride) * 64);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 7 + 3);
  flat::Image* padded = ov_createImage(4096, 64, 4, stride, src.data());
  std::vector<uint8_t> grey(4096 * 64, 9);
  flat::Image* narrow = ov_createImage(4096, 64, 1, 4096, grey.data());
  f->setParameters("mFilterBitmap", padded);
  f->setParameters("mFilterBitmap", narrow);  // one byte per pixel: refused
  int wrong = 0;
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 4096; ++x)
      wrong += memcmp(t->mTable->data + y * 4096 * 3 + x * 3, &src[size_t(y) * stride + x * 4], 3) != 0;
  EXPECT_EQ(wrong, 0);
  ov_releaseImage(padded);
  ov_releaseImage(narrow);
}

TEST_F(FilterRender, ProcessRefusesWhatItCannotServe) {
  auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter("ImageFilterXray"));
  ASSERT_TRUE(f->initEngine());
  ASSERT_TRUE(f->setupGraphics(1));
  // 1 x 1 writes exactly 4 bytes.
  uint8_t one[8] = {10, 20, 30, 40, 0xee, 0xee, 0xee, 0xee};
  f->process(one, 1, 1);
  EXPECT_EQ(one[0], 235);
  EXPECT_EQ(one[3], 255);
  EXPECT_EQ(one[4], 0xee);
  EXPECT_EQ(one[7], 0xee);
  // Empty, negative and oversized pictures and a null buffer are refused
  // untouched.
  uint8_t keep[16];
  memset(keep, 0x42, sizeof(keep));
  f->process(keep, 0, 2);
  f->process(keep, 2, -1);
  f->process(keep, 65536, 65536);
  f->process(nullptr, 2, 2);
  for (uint8_t v : keep) EXPECT_EQ(v, 0x42);
  // The filter still works afterwards.
  f->process(keep, 2, 2);
  EXPECT_EQ(keep[0], 255 - 0x42);
}

namespace {

class BrokenFilter : public ImageFilterBaseGL {
 public:
  const char* getFilterName() const override { return "FilterTestBroken"; }
  const char* getFragmentShader() const override { return "void main() { gl_FragColor = nothing; }\n"; }
};

}  // namespace

TEST_F(FilterRender, AProgramThatFailsLeavesTheBufferAlone) {
  auto_ptr<ImageFilterBaseGL> f(new BrokenFilter());
  ASSERT_TRUE(f->initEngine());
  EXPECT_TRUE(f->setupGraphics(1));  // initParameters decides the result
  EXPECT_EQ(f->program->getProgram(), 0u);
  std::vector<uint8_t> px(16, 0x37);
  f->process(px.data(), 2, 2);
  EXPECT_EQ(px, std::vector<uint8_t>(16, 0x37));
}

TEST_F(FilterRender, ProgramCacheFillsOnFirstUseAndIsUsedNext) {
  std::string file = gCacheDir + "ImageFilterMirror.osb";
  unlink(file.c_str());
  {
    auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter("ImageFilterMirror"));
    ASSERT_TRUE(f->initEngine());
    ASSERT_TRUE(f->setupGraphics(1));
    EXPECT_FALSE(f->program->isFromBinary());
  }
  ASSERT_EQ(access(file.c_str(), R_OK), 0);
  {
    auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter("ImageFilterMirror"));
    ASSERT_TRUE(f->initEngine());
    ASSERT_TRUE(f->setupGraphics(1));
    EXPECT_TRUE(f->program->isFromBinary());
  }
  // A foreign file is replaced by a fresh compile, and the filter still draws.
  FILE* fp = fopen(file.c_str(), "wb");
  ASSERT_NE(fp, nullptr);
  const char junk[] = "\x5f\x87\0\0not a program binary";
  fwrite(junk, 1, sizeof(junk), fp);
  fclose(fp);
  Picture in = gradient(32, 32);
  std::vector<uint8_t> out = run("ImageFilterMirror", in);
  EXPECT_MATCHES(model::render(32, 32, model::defaultQuad(), model::mirror(in, 1.0, 0.5)), out,
                 kInterpolatedTolerance);
  auto_ptr<ImageFilterBaseGL> again(ImageFilterFactory::createFilter("ImageFilterMirror"));
  ASSERT_TRUE(again->initEngine());
  ASSERT_TRUE(again->setupGraphics(1));
  EXPECT_TRUE(again->program->isFromBinary());
}
