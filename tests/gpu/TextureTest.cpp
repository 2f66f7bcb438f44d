#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "GpuFixture.h"
#include "image/Image.h"
#include "support/LogCapture.h"

namespace {

// Draws `source` through a fragment shader into a new RGBA image of w x h and
// returns its pixels (row 0 = bottom of the texture = first texture row).
std::vector<unsigned char> renderThrough(auto_ptr<GPUContext>& ctx, const char* fragment, int w, int h,
                                         GPUImage2D* source2D, GPUImage3D* source3D, float layer) {
  auto_ptr<GPUScript> script(new GPUScript(ctx, nullptr));
  script->addSource("VertexShader", quadVertexShader());
  script->addSource("FragmentShader", fragment);
  auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
  EXPECT_NE(program->getProgram(), 0u);
  auto_ptr<GPUImage2D> out(new GPUImage2D(ctx, w, h, 4));
  const float straight[8] = {0, 0, 1, 0, 0, 1, 1, 1};
  program->setTexVertices(straight);
  program->beganCompute();
  program->setOutputTarget(out);
  program->setOutputSize(0, 0, w, h);
  if (source2D != nullptr) program->setSourceTarget("tex", 0, source2D);
  if (source3D != nullptr) program->setSourceTarget("tex", 0, source3D);
  program->setParameters("layer", GPUProgram::FLOAT1, &layer);
  program->endCompute();
  std::vector<unsigned char> pixels(static_cast<size_t>(w) * h * 4);
  EXPECT_TRUE(out->download(pixels.data(), static_cast<int>(pixels.size())));
  return pixels;
}

const char* kSample2D =
    "precision mediump float;\nuniform sampler2D tex;\nvarying vec2 v_texcoord;\n"
    "void main() { gl_FragColor = texture2D(tex, v_texcoord); }\n";

}  // namespace

using GPUImage2DTest = GpuTest;

TEST_F(GPUImage2DTest, FormatTables) {
  // Codes 1-4: 2D luminance / luminance-alpha / RGB / RGBA; 5 external; others 2D, no format.
  EXPECT_EQ(GPUImage2D::selectTextureFormat(1), 0x1909u);
  EXPECT_EQ(GPUImage2D::selectTextureFormat(2), 0x190Au);
  EXPECT_EQ(GPUImage2D::selectTextureFormat(3), 0x1907u);
  EXPECT_EQ(GPUImage2D::selectTextureFormat(4), 0x1908u);
  EXPECT_EQ(GPUImage2D::selectTextureFormat(5), 0u);
  EXPECT_EQ(GPUImage2D::selectTextureFormat(0), 0u);
  EXPECT_EQ(GPUImage2D::selectTextureTarget(4), 0x0DE1u);
  EXPECT_EQ(GPUImage2D::selectTextureTarget(5), 0x8D65u);
  EXPECT_EQ(GPUImage2D::selectTextureTarget(6), 0x0DE1u);
  EXPECT_EQ(GPUImage2D::selectTextureTarget(-1), 0x0DE1u);
  EXPECT_EQ(GPUImage3D::selectTextureTarget(1), 0x806Fu);
  EXPECT_EQ(GPUImage3D::selectTextureTarget(4), 0x806Fu);
  EXPECT_EQ(GPUImage3D::selectTextureTarget(5), 0x0DE1u);
  EXPECT_EQ(GPUImage3D::selectTextureFormat(3), 0x1907u);
  EXPECT_EQ(GPUImage3D::selectTextureFormat(5), 0u);
}

// Upload through the pixel buffer and read back through the framebuffer.
TEST_F(GPUImage2DTest, RgbaRoundTripAndSizeChecks) {
  const int w = 37, h = 23;  // odd sizes: no row padding hides anything
  std::vector<unsigned char> in = noiseBytes(static_cast<size_t>(w) * h * 4, 1);
  auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, w, h, 4, in.data()));
  ASSERT_NE(image->getTexture(), 0u);
  EXPECT_TRUE(image->ownsTexture());
  std::vector<unsigned char> out(in.size(), 0);
  const int n = static_cast<int>(in.size());
  EXPECT_FALSE(image->download(out.data(), n - 1));
  EXPECT_FALSE(image->download(nullptr, n));
  ASSERT_TRUE(image->download(out.data(), n));
  EXPECT_EQ(out, in);

  // Re-upload (orphaning the buffer) into the bound texture: the newest data wins.
  std::vector<unsigned char> second = noiseBytes(in.size(), 2);
  EXPECT_FALSE(image->upload(second.data(), n - 1));
  EXPECT_FALSE(image->upload(nullptr, n));
  glBindTexture(GL_TEXTURE_2D, image->getTexture());
  ASSERT_TRUE(image->upload(in.data(), n));
  ASSERT_TRUE(image->upload(second.data(), n));
  glBindTexture(GL_TEXTURE_2D, 0);
  ASSERT_TRUE(image->download(out.data(), n));
  EXPECT_EQ(out, second);

  // set() re-specifies the same name with a new size.
  unsigned name = image->getTexture();
  std::vector<unsigned char> small = noiseBytes(3 * 2 * 4, 3);
  image->set(3, 2, 4, small.data());
  EXPECT_EQ(image->getTexture(), name);
  std::vector<unsigned char> back(small.size());
  ASSERT_TRUE(image->download(back.data(), static_cast<int>(back.size())));
  EXPECT_EQ(back, small);
  // The pixel-buffer path leaves no unpack or pack buffer bound.
  GLint bound = -1;
  glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &bound);
  EXPECT_EQ(bound, 0);
  glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &bound);
  EXPECT_EQ(bound, 0);
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
  EXPECT_EQ(bound, 0);
}

// Tightly packed one- and three-byte rows whose length is no multiple of 4.
TEST_F(GPUImage2DTest, LuminanceAndRgbSampleCorrectly) {
  const int w = 5, h = 3;
  std::vector<unsigned char> grey(static_cast<size_t>(w) * h);
  for (size_t i = 0; i < grey.size(); ++i) grey[i] = static_cast<unsigned char>(10 + 15 * i);
  auto_ptr<GPUImage2D> lum(new GPUImage2D(ctx, w, h, 1, grey.data()));
  // Nearest sampling so each output pixel is one texel.
  glBindTexture(GL_TEXTURE_2D, lum->getTexture());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  std::vector<unsigned char> px = renderThrough(ctx, kSample2D, w, h, lum.get(), nullptr, 0);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const unsigned char* p = rgbaAt(px, w, x, y);
      unsigned char g = grey[static_cast<size_t>(y) * w + x];
      EXPECT_EQ(p[0], g);
      EXPECT_EQ(p[1], g);
      EXPECT_EQ(p[2], g);
      EXPECT_EQ(p[3], 255);
    }
  }

  std::vector<unsigned char> rgb = noiseBytes(static_cast<size_t>(w) * h * 3, 4);
  auto_ptr<GPUImage2D> colour(new GPUImage2D(ctx, w, h, 3, rgb.data()));
  glBindTexture(GL_TEXTURE_2D, colour->getTexture());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  px = renderThrough(ctx, kSample2D, w, h, colour.get(), nullptr, 0);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const unsigned char* p = rgbaAt(px, w, x, y);
      const unsigned char* q = &rgb[(static_cast<size_t>(y) * w + x) * 3];
      EXPECT_EQ(memcmp(p, q, 3), 0) << x << "," << y;
    }
  }
}

TEST_F(GPUImage2DTest, WrappedTexturesAndRecycle) {
  std::vector<unsigned char> in = noiseBytes(4 * 4 * 4, 5);
  auto_ptr<GPUImage2D> owner(new GPUImage2D(ctx, 4, 4, 4, in.data()));
  unsigned name = owner->getTexture();
  {
    // Borrowed without allocation: same storage, same parameters.
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    auto_ptr<GPUImage2D> borrowed(new GPUImage2D(ctx, name, 4, 4, 4, false, false));
    EXPECT_EQ(borrowed->getTexture(), name);
    EXPECT_FALSE(borrowed->ownsTexture());
    GLint filter = 0;
    glBindTexture(GL_TEXTURE_2D, name);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
    EXPECT_EQ(filter, GL_NEAREST);
    std::vector<unsigned char> out(in.size());
    ASSERT_TRUE(borrowed->download(out.data(), static_cast<int>(out.size())));
    EXPECT_EQ(out, in);
    borrowed->recycle();
    EXPECT_EQ(borrowed->getTexture(), name);
    EXPECT_EQ(glIsTexture(name), GL_TRUE);
  }
  // Destroying the borrower left the texture alive.
  EXPECT_EQ(glIsTexture(name), GL_TRUE);
  {
    // Wrapped with allocate: fresh parameters (linear) on the same name.
    auto_ptr<GPUImage2D> realloc(new GPUImage2D(ctx, name, 2, 2, 4, true, false));
    GLint filter = 0;
    glBindTexture(GL_TEXTURE_2D, name);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
    EXPECT_EQ(filter, GL_LINEAR);
    GLint wrap = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrap);
    EXPECT_EQ(wrap, GL_CLAMP_TO_EDGE);
  }
  owner->recycle();
  EXPECT_EQ(owner->getTexture(), 0u);
  EXPECT_EQ(glIsTexture(name), GL_FALSE);
  owner->recycle();  // second time: nothing
  EXPECT_EQ(owner->getTexture(), 0u);
}

TEST_F(GPUImage2DTest, RefusedAndRejectedSizes) {
  LogCapture cap;
  // Negative sizes and byte counts beyond 32 bits get no texture at all.
  auto_ptr<GPUImage2D> negative(new GPUImage2D(ctx, -4, 4, 4));
  EXPECT_EQ(negative->getTexture(), 0u);
  auto_ptr<GPUImage2D> huge(new GPUImage2D(ctx, 40000, 40000, 4));
  EXPECT_EQ(huge->getTexture(), 0u);
  unsigned char byte = 0;
  EXPECT_FALSE(huge->upload(&byte, 1));
  EXPECT_FALSE(huge->download(&byte, 1));
  EXPECT_EQ(cap.countPrefix("after :"), 0);
  // A format code outside 1-5 reaches GL with format 0, which it rejects: logged only.
  auto_ptr<GPUImage2D> odd(new GPUImage2D(ctx, 2, 2, 9));
  EXPECT_NE(odd->getTexture(), 0u);
  EXPECT_EQ(cap.countPrefix("after :glTexImage2D() glError (0x"), 1);
  // The exact size succeeds, one byte less does not.
  auto_ptr<GPUImage2D> rgb(new GPUImage2D(ctx, 3, 3, 3));
  std::vector<unsigned char> buf(27);
  glBindTexture(GL_TEXTURE_2D, rgb->getTexture());
  EXPECT_TRUE(rgb->upload(buf.data(), 27));
  EXPECT_FALSE(rgb->upload(buf.data(), 26));
}

using GPUImage3DTest = GpuTest;

TEST_F(GPUImage3DTest, LayersUploadAndSample) {
  const int w = 3, h = 2, d = 4;
  std::vector<unsigned char> in = noiseBytes(static_cast<size_t>(w) * h * d * 4, 6);
  auto_ptr<GPUImage3D> volume(new GPUImage3D(ctx, w, h, d, 4, in.data()));
  ASSERT_NE(volume->getTexture(), 0u);
  EXPECT_EQ(volume->getTarget(), static_cast<unsigned>(GL_TEXTURE_3D));
  glBindTexture(GL_TEXTURE_3D, volume->getTexture());
  GLint wrap = 0;
  glGetTexParameteriv(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, &wrap);
  EXPECT_EQ(wrap, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glBindTexture(GL_TEXTURE_3D, 0);
  const char* sample3D =
      "#version 300 es\nprecision mediump float;\nprecision mediump sampler3D;\n"
      "uniform sampler3D tex;\nuniform float layer;\nin vec2 v_texcoord;\nout vec4 color;\n"
      "void main() { color = texture(tex, vec3(v_texcoord, layer)); }\n";
  const char* vertex300 =
      "#version 300 es\nlayout(location = 0) in vec4 a_position;\nlayout(location = 1) in vec2 a_texcoord;\n"
      "out vec2 v_texcoord;\nvoid main() { gl_Position = a_position; v_texcoord = a_texcoord; }\n";
  for (int z = 0; z < d; ++z) {
    auto_ptr<GPUScript> script(new GPUScript(ctx, nullptr));
    script->addSource("VertexShader", vertex300);
    script->addSource("FragmentShader", sample3D);
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
    ASSERT_NE(program->getProgram(), 0u);
    auto_ptr<GPUImage2D> out(new GPUImage2D(ctx, w, h, 4));
    const float straight[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    program->setTexVertices(straight);
    program->beganCompute();
    program->setOutputTarget(out);
    program->setOutputSize(0, 0, w, h);
    program->setSourceTarget("tex", 0, volume);
    float layer = (z + 0.5f) / d;
    program->setParameters("layer", GPUProgram::FLOAT1, &layer);
    program->endCompute();
    std::vector<unsigned char> px(static_cast<size_t>(w) * h * 4);
    ASSERT_TRUE(out->download(px.data(), static_cast<int>(px.size())));
    EXPECT_EQ(memcmp(px.data(), &in[px.size() * z], px.size()), 0) << "layer " << z;
  }
  volume->set(1, 1, 2, 1, nullptr);
  EXPECT_EQ(volume->getDepth(), 2);
  unsigned name = volume->getTexture();
  volume->recycle();
  EXPECT_EQ(glIsTexture(name), GL_FALSE);
  // Refused sizes make no texture.
  auto_ptr<GPUImage3D> huge(new GPUImage3D(ctx, 2000, 2000, 2000, 4));
  EXPECT_EQ(huge->getTexture(), 0u);
}

using GPUPixelBufferTest = GpuTest;

TEST_F(GPUPixelBufferTest, ReleaseAndNullArguments) {
  auto_ptr<GPUPixelBuffer> pbo(new GPUPixelBuffer(ctx));
  unsigned name = pbo->getBuffer();
  ASSERT_NE(name, 0u);
  // Null image or pixels: nothing happens (no buffer left bound, nothing logged).
  LogCapture cap;
  std::vector<unsigned char> px(16);
  pbo->uploadImage(static_cast<GPUImage2D*>(nullptr), px.data());
  pbo->downloadImage(static_cast<GPUImage2D*>(nullptr), px.data());
  auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, 2, 2, 4));
  pbo->downloadImage(image, nullptr);
  EXPECT_TRUE(cap.texts().empty());
  // A separate buffer object moves pixels just like the image's own.
  glBindTexture(GL_TEXTURE_2D, image->getTexture());
  std::vector<unsigned char> in = noiseBytes(16, 7);
  pbo->uploadImage(image, in.data());
  GPUFramebuffer::setFramebufferTarget(&image->getFramebuffer(), image.get());
  pbo->downloadImage(image, px.data());
  GPUFramebuffer::setFramebufferTarget(nullptr, nullptr);
  EXPECT_EQ(px, in);
  pbo->release();
  EXPECT_EQ(pbo->getBuffer(), 0u);
  EXPECT_EQ(glIsBuffer(name), GL_FALSE);
  pbo->release();
}

// Images of the CPU side go up and come back unchanged.
TEST_F(GPUImage2DTest, FromAndToImageObjects) {
  const int w = 6, h = 5;
  std::vector<unsigned char> rgba = noiseBytes(w * h * 4, 31);
  unsigned char* planes[4] = {rgba.data(), nullptr, nullptr, nullptr};
  auto_ptr<Image> picture(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, planes));
  auto_ptr<GPUImage2D> gpu(GPUImage2D::createFromImage(ctx, picture));
  ASSERT_NE(gpu, nullptr);
  EXPECT_EQ(gpu->getFormat(), 4);
  auto_ptr<Image> back(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, nullptr));
  ASSERT_TRUE(gpu->download(back));
  EXPECT_EQ(memcmp(back->planes[0], rgba.data(), rgba.size()), 0);

  // upload replaces the contents; a different size or format is refused.
  std::vector<unsigned char> second = noiseBytes(rgba.size(), 32);
  unsigned char* planes2[4] = {second.data(), nullptr, nullptr, nullptr};
  auto_ptr<Image> next(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, planes2));
  ASSERT_TRUE(gpu->upload(next));
  ASSERT_TRUE(gpu->download(back));
  EXPECT_EQ(memcmp(back->planes[0], second.data(), second.size()), 0);
  auto_ptr<Image> wrongSize(Image::createImage(w + 1, h, 1, Image::IMAGE_FORMAT_RGBA, nullptr));
  EXPECT_FALSE(gpu->upload(wrongSize));
  EXPECT_FALSE(gpu->download(wrongSize));
  auto_ptr<Image> grey(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  EXPECT_FALSE(gpu->upload(grey));
  EXPECT_FALSE(gpu->download(grey));

  // Formats without a GPU counterpart, several layers in 2D, or no pixels: refused.
  auto_ptr<Image> nv21(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_NV21, nullptr));
  EXPECT_EQ(GPUImage2D::createFromImage(ctx, nv21), nullptr);
  auto_ptr<Image> layered(Image::createImage(w, h, 2, Image::IMAGE_FORMAT_GRAY, nullptr));
  EXPECT_EQ(GPUImage2D::createFromImage(ctx, layered), nullptr);
  auto_ptr<Image> none(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_NONE, nullptr));
  EXPECT_EQ(GPUImage2D::createFromImage(ctx, none), nullptr);
  EXPECT_EQ(GPUImage2D::createFromImage(ctx.get(), nullptr), nullptr);

  // A grey image becomes a luminance texture.
  for (unsigned i = 0; i < static_cast<unsigned>(w * h); ++i)
    grey->planes[0][i] = static_cast<unsigned char>(i * 7);
  auto_ptr<GPUImage2D> lum(GPUImage2D::createFromImage(ctx, grey));
  ASSERT_NE(lum, nullptr);
  EXPECT_EQ(lum->getGLFormat(), static_cast<unsigned>(GL_LUMINANCE));
  glBindTexture(GL_TEXTURE_2D, lum->getTexture());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  std::vector<unsigned char> px = renderThrough(ctx, kSample2D, w, h, lum.get(), nullptr, 0);
  for (int i = 0; i < w * h; ++i) EXPECT_EQ(px[i * 4 + 1], grey->planes[0][i]) << i;

  // Layers of one Image become a 3D texture.
  auto_ptr<GPUImage3D> volume(GPUImage3D::createFromImage(ctx, layered));
  ASSERT_NE(volume, nullptr);
  EXPECT_EQ(volume->getDepth(), 2);
  EXPECT_EQ(volume->getTarget(), static_cast<unsigned>(GL_TEXTURE_3D));
  EXPECT_EQ(GPUImage3D::createFromImage(ctx, nv21), nullptr);
}
