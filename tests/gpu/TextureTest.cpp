#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "GpuFixture.h"
#include "image/Image.h"
#include "support/LogCapture.h"

using GPUImage2DTest = GpuTest;

// Upload through the pixel buffer and read back through the framebuffer.
TEST_F(GPUImage2DTest, RgbaRoundTripAndSizeChecks) {
  const int w = 37, h = 23;  // odd sizes: no row padding hides anything
  Pixels in = noiseBytes(static_cast<size_t>(w) * h * 4, 1), out(in.size(), 0);
  const int n = static_cast<int>(in.size());
  auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, w, h, 4, in.data()));
  ASSERT_NE(image->getTexture(), 0u);
  EXPECT_TRUE(image->ownsTexture());
  EXPECT_FALSE(image->download(out.data(), n - 1));
  EXPECT_FALSE(image->download(nullptr, n));
  ASSERT_TRUE(image->download(out.data(), n));
  EXPECT_EQ(out, in);

  // Re-upload (orphaning the buffer) into the bound texture: the newest data wins.
  Pixels second = noiseBytes(in.size(), 2);
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
  Pixels small = noiseBytes(3 * 2 * 4, 3), back(small.size());
  image->set(3, 2, 4, small.data());
  EXPECT_EQ(image->getTexture(), name);
  ASSERT_TRUE(image->download(back.data(), static_cast<int>(back.size())));
  EXPECT_EQ(back, small);
  // The pixel-buffer path leaves no unpack, pack or frame buffer bound.
  for (GLenum binding :
       {GL_PIXEL_UNPACK_BUFFER_BINDING, GL_PIXEL_PACK_BUFFER_BINDING, GL_FRAMEBUFFER_BINDING}) {
    GLint bound = -1;
    glGetIntegerv(binding, &bound);
    EXPECT_EQ(bound, 0) << std::hex << binding;
  }
}

// Tightly packed one- and three-byte rows whose length is no multiple of 4.
TEST_F(GPUImage2DTest, LuminanceAndRgbSampleCorrectly) {
  const int w = 5, h = 3;
  for (int format : {1, 3}) {
    Pixels in = noiseBytes(static_cast<size_t>(w) * h * format, 4 + format);
    auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, w, h, format, in.data()));
    useNearest(GL_TEXTURE_2D, image->getTexture());
    auto_ptr<GPUProgram> program = makeProgram(ctx.get(), kSample2D);
    program->setTexVertices(kStraight);
    Pixels px = drawOnce(ctx.get(), program.get(), w, h, image.get());
    for (int i = 0; i < w * h; ++i) {
      const unsigned char* q = &in[static_cast<size_t>(i) * format];
      const unsigned char want[4] = {q[0], q[format == 1 ? 0 : 1], q[format == 1 ? 0 : 2], 255};
      EXPECT_EQ(memcmp(&px[i * 4], want, 4), 0) << "format " << format << " texel " << i;
    }
  }
}

TEST_F(GPUImage2DTest, WrappedTexturesAndRecycle) {
  Pixels in = noiseBytes(4 * 4 * 4, 5), out(in.size());
  auto_ptr<GPUImage2D> owner(new GPUImage2D(ctx, 4, 4, 4, in.data()));
  unsigned name = owner->getTexture();
  GLint filter = 0;
  {
    // Borrowed without allocation: same storage, same parameters.
    useNearest(GL_TEXTURE_2D, name);
    auto_ptr<GPUImage2D> borrowed(new GPUImage2D(ctx, name, 4, 4, 4, false, false));
    EXPECT_FALSE(borrowed->ownsTexture());
    glBindTexture(GL_TEXTURE_2D, name);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
    EXPECT_EQ(filter, GL_NEAREST);
    ASSERT_TRUE(borrowed->download(out.data(), static_cast<int>(out.size())));
    EXPECT_EQ(out, in);
    borrowed->recycle();
    EXPECT_EQ(glIsTexture(name), GL_TRUE);
  }
  EXPECT_EQ(glIsTexture(name), GL_TRUE);  // destroying the borrower left it alive
  {
    // Wrapped with allocate: fresh parameters (linear, clamped) on the same name.
    auto_ptr<GPUImage2D> realloc(new GPUImage2D(ctx, name, 2, 2, 4, true, false));
    GLint wrap = 0;
    glBindTexture(GL_TEXTURE_2D, name);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &wrap);
    EXPECT_EQ(filter, GL_LINEAR);
    EXPECT_EQ(wrap, GL_CLAMP_TO_EDGE);
  }
  owner->recycle();
  EXPECT_EQ(owner->getTexture(), 0u);
  EXPECT_EQ(glIsTexture(name), GL_FALSE);
  owner->recycle();  // second time: nothing
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
  Pixels buf(27);
  glBindTexture(GL_TEXTURE_2D, rgb->getTexture());
  EXPECT_TRUE(rgb->upload(buf.data(), 27));
  EXPECT_FALSE(rgb->upload(buf.data(), 26));
}

TEST_F(GpuTest, Image3DLayersUploadAndSample) {
  const int w = 3, h = 2, d = 4;
  Pixels in = noiseBytes(static_cast<size_t>(w) * h * d * 4, 6);
  auto_ptr<GPUImage3D> volume(new GPUImage3D(ctx, w, h, d, 4, in.data()));
  ASSERT_NE(volume->getTexture(), 0u);
  EXPECT_EQ(volume->getTarget(), static_cast<unsigned>(GL_TEXTURE_3D));
  GLint wrap = 0;
  glBindTexture(GL_TEXTURE_3D, volume->getTexture());
  glGetTexParameteriv(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, &wrap);
  EXPECT_EQ(wrap, GL_CLAMP_TO_EDGE);
  useNearest(GL_TEXTURE_3D, volume->getTexture());
  auto_ptr<GPUProgram> program =
      makeProgram(ctx.get(),
                  "#version 300 es\nprecision mediump float;\nprecision mediump sampler3D;\n"
                  "uniform sampler3D tex;\nuniform float layer;\nin vec2 v_texcoord;\nout vec4 color;\n"
                  "void main() { color = texture(tex, vec3(v_texcoord, layer)); }\n",
                  kVertex300);
  ASSERT_NE(program->getProgram(), 0u);
  program->setTexVertices(kStraight);
  const size_t layerBytes = static_cast<size_t>(w) * h * 4;
  for (int z = 0; z < d; ++z) {
    float layer = (z + 0.5f) / d;
    ASSERT_TRUE(program->beganCompute());
    program->setParameters("layer", GPUProgram::FLOAT1, &layer);
    Pixels px = drawOnce(ctx.get(), program.get(), w, h, volume.get());
    EXPECT_EQ(px, Pixels(in.begin() + layerBytes * z, in.begin() + layerBytes * (z + 1))) << "layer " << z;
  }
  volume->set(1, 1, 2, 1, nullptr);
  EXPECT_EQ(volume->getDepth(), 2);
  unsigned name = volume->getTexture();
  volume->recycle();
  EXPECT_EQ(glIsTexture(name), GL_FALSE);
  auto_ptr<GPUImage3D> huge(new GPUImage3D(ctx, 2000, 2000, 2000, 4));
  EXPECT_EQ(huge->getTexture(), 0u);
}

TEST_F(GpuTest, PixelBufferMovesPixelsAndIgnoresNulls) {
  auto_ptr<GPUPixelBuffer> pbo(new GPUPixelBuffer(ctx));
  unsigned name = pbo->getBuffer();
  ASSERT_NE(name, 0u);
  // Null image or pixels: nothing happens (no buffer left bound, nothing logged).
  LogCapture cap;
  Pixels px(16), in = noiseBytes(16, 7);
  pbo->uploadImage(static_cast<GPUImage2D*>(nullptr), px.data());
  pbo->downloadImage(static_cast<GPUImage2D*>(nullptr), px.data());
  auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, 2, 2, 4));
  pbo->downloadImage(image, nullptr);
  EXPECT_TRUE(cap.texts().empty());
  // A separate buffer object moves pixels just like the image's own.
  glBindTexture(GL_TEXTURE_2D, image->getTexture());
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
  Pixels rgba = noiseBytes(w * h * 4, 31), second = noiseBytes(rgba.size(), 32);
  unsigned char* planes[4] = {rgba.data(), nullptr, nullptr, nullptr};
  auto_ptr<Image> picture(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, planes));
  auto_ptr<GPUImage2D> gpu(GPUImage2D::createFromImage(ctx, picture));
  ASSERT_NE(gpu, nullptr);
  EXPECT_EQ(gpu->getFormat(), 4);
  auto_ptr<Image> back(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, nullptr));
  ASSERT_TRUE(gpu->download(back));
  EXPECT_EQ(memcmp(back->planes[0], rgba.data(), rgba.size()), 0);

  // upload replaces the contents; a different size or format is refused.
  planes[0] = second.data();
  auto_ptr<Image> next(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, planes));
  ASSERT_TRUE(gpu->upload(next));
  ASSERT_TRUE(gpu->download(back));
  EXPECT_EQ(memcmp(back->planes[0], second.data(), second.size()), 0);
  auto_ptr<Image> wrongSize(Image::createImage(w + 1, h, 1, Image::IMAGE_FORMAT_RGBA, nullptr));
  auto_ptr<Image> grey(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  for (auto_ptr<Image>* wrong : {&wrongSize, &grey}) {
    EXPECT_FALSE(gpu->upload(*wrong));
    EXPECT_FALSE(gpu->download(*wrong));
  }

  // Formats without a GPU counterpart, several layers in 2D, or no pixels: refused.
  auto_ptr<Image> nv21(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_NV21, nullptr));
  auto_ptr<Image> layered(Image::createImage(w, h, 2, Image::IMAGE_FORMAT_GRAY, nullptr));
  auto_ptr<Image> none(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_NONE, nullptr));
  for (auto_ptr<Image>* refused : {&nv21, &layered, &none})
    EXPECT_EQ(GPUImage2D::createFromImage(ctx, *refused), nullptr);
  EXPECT_EQ(GPUImage2D::createFromImage(ctx.get(), nullptr), nullptr);

  // A grey image becomes a luminance texture; layers of one Image a 3D texture.
  auto_ptr<GPUImage2D> lum(GPUImage2D::createFromImage(ctx, grey));
  ASSERT_NE(lum, nullptr);
  EXPECT_EQ(lum->getGLFormat(), static_cast<unsigned>(GL_LUMINANCE));
  auto_ptr<GPUImage3D> volume(GPUImage3D::createFromImage(ctx, layered));
  ASSERT_NE(volume, nullptr);
  EXPECT_EQ(volume->getDepth(), 2);
  EXPECT_EQ(volume->getTarget(), static_cast<unsigned>(GL_TEXTURE_3D));
  EXPECT_EQ(GPUImage3D::createFromImage(ctx, nv21), nullptr);
}
