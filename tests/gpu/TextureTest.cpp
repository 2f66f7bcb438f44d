#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "GpuFixture.h"
#include "image/Image.h"

using GPUImage2DTest = GpuTest;

// Upload through the pixel buffer and read back through the framebuffer.
TEST_F(GPUImage2DTest, RgbaRoundTripAndSizeChecks) {
  const int w = 37, h = 23;  // odd sizes: no row padding hides anything
  Pixels in = noiseBytes(static_cast<size_t>(w) * h * 4, 1), out(in.size(), 0);
  const int n = static_cast<int>(in.size());
  auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, w, h, 4, in.data()));
  ASSERT_NE(image->getTexture(), 0u);
  EXPECT_FALSE(image->download(out.data(), n - 1));
  ASSERT_TRUE(image->download(out.data(), n));
  EXPECT_EQ(out, in);

  // Re-upload (orphaning the buffer) into the bound texture: the newest data wins.
  Pixels second = noiseBytes(in.size(), 2);
  EXPECT_FALSE(image->upload(second.data(), n - 1));
  glBindTexture(GL_TEXTURE_2D, image->getTexture());
  ASSERT_TRUE(image->upload(in.data(), n));
  ASSERT_TRUE(image->upload(second.data(), n));
  glBindTexture(GL_TEXTURE_2D, 0);
  ASSERT_TRUE(image->download(out.data(), n));
  EXPECT_EQ(out, second);

  // The pixel-buffer path leaves no unpack or pack buffer bound.
  for (GLenum binding : {GL_PIXEL_UNPACK_BUFFER_BINDING, GL_PIXEL_PACK_BUFFER_BINDING}) {
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
  {
    // Borrowed without allocation: same storage; recycling the borrower keeps the texture.
    auto_ptr<GPUImage2D> borrowed(new GPUImage2D(ctx, name, 4, 4, 4, false, false));
    ASSERT_TRUE(borrowed->download(out.data(), static_cast<int>(out.size())));
    EXPECT_EQ(out, in);
    borrowed->recycle();
  }
  EXPECT_EQ(glIsTexture(name), GL_TRUE);
  owner->recycle();
  EXPECT_EQ(owner->getTexture(), 0u);
  EXPECT_EQ(glIsTexture(name), GL_FALSE);
}

// Negative sizes and byte counts beyond 32 bits get no texture at all.
TEST_F(GPUImage2DTest, RefusedSizes) {
  auto_ptr<GPUImage2D> negative(new GPUImage2D(ctx, -4, 4, 4));
  EXPECT_EQ(negative->getTexture(), 0u);
  auto_ptr<GPUImage2D> huge(new GPUImage2D(ctx, 40000, 40000, 4));
  EXPECT_EQ(huge->getTexture(), 0u);
  unsigned char byte = 0;
  EXPECT_FALSE(huge->upload(&byte, 1));
  EXPECT_FALSE(huge->download(&byte, 1));
  auto_ptr<GPUImage3D> volume(new GPUImage3D(ctx, 2000, 2000, 2000, 4));
  EXPECT_EQ(volume->getTexture(), 0u);
}

TEST_F(GpuTest, Image3DLayersUploadAndSample) {
  const int w = 3, h = 2, d = 4;
  Pixels in = noiseBytes(static_cast<size_t>(w) * h * d * 4, 6);
  auto_ptr<GPUImage3D> volume(new GPUImage3D(ctx, w, h, d, 4, in.data()));
  ASSERT_NE(volume->getTexture(), 0u);
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
}

// Images of the CPU side go up and come back unchanged.
TEST_F(GPUImage2DTest, FromAndToImageObjects) {
  const int w = 6, h = 5;
  Pixels rgba = noiseBytes(w * h * 4, 31);
  unsigned char* planes[4] = {rgba.data(), nullptr, nullptr, nullptr};
  auto_ptr<Image> picture(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, planes));
  auto_ptr<GPUImage2D> gpu(GPUImage2D::createFromImage(ctx, picture));
  ASSERT_NE(gpu, nullptr);
  EXPECT_EQ(gpu->getFormat(), 4);
  auto_ptr<Image> back(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_RGBA, nullptr));
  ASSERT_TRUE(gpu->download(back));
  EXPECT_EQ(memcmp(back->planes[0], rgba.data(), rgba.size()), 0);

  // A different format is refused; several layers have no 2D counterpart.
  auto_ptr<Image> grey(Image::createImage(w, h, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  auto_ptr<Image> layered(Image::createImage(w, h, 2, Image::IMAGE_FORMAT_GRAY, nullptr));
  EXPECT_FALSE(gpu->download(grey));
  EXPECT_EQ(GPUImage2D::createFromImage(ctx, layered), nullptr);

  // A grey image becomes a luminance texture; layers of one Image a 3D texture.
  auto_ptr<GPUImage2D> lum(GPUImage2D::createFromImage(ctx, grey));
  ASSERT_NE(lum, nullptr);
  EXPECT_EQ(lum->getGLFormat(), static_cast<unsigned>(GL_LUMINANCE));
  auto_ptr<GPUImage3D> volume(GPUImage3D::createFromImage(ctx, layered));
  ASSERT_NE(volume, nullptr);
  EXPECT_EQ(volume->getDepth(), 2);
}
