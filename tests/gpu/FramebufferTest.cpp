#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "GpuFixture.h"
#include "support/LogCapture.h"

namespace {

const char* kVertex300 =
    "#version 300 es\nlayout(location = 0) in vec4 a_position;\nlayout(location = 1) in vec2 a_texcoord;\n"
    "out vec2 v_texcoord;\nvoid main() { gl_Position = a_position; v_texcoord = a_texcoord; }\n";

// Two outputs with distinct constant colours.
const char* kTwoOutputs =
    "#version 300 es\nprecision mediump float;\nin vec2 v_texcoord;\n"
    "layout(location = 0) out vec4 first;\nlayout(location = 1) out vec4 second;\n"
    "void main() { first = vec4(1.0, 0.0, 0.0, 1.0); second = vec4(0.0, 0.0, 1.0, 1.0); }\n";

std::vector<unsigned char> pixelsOf(GPUImage2D* image) {
  std::vector<unsigned char> px(static_cast<size_t>(image->getWidth()) * image->getHeight() * 4);
  EXPECT_TRUE(image->download(px.data(), static_cast<int>(px.size())));
  return px;
}

bool allPixels(const std::vector<unsigned char>& px, const unsigned char rgba[4]) {
  for (size_t i = 0; i < px.size(); i += 4) {
    if (memcmp(&px[i], rgba, 4) != 0) return false;
  }
  return true;
}

const unsigned char kRed[4] = {255, 0, 0, 255};
const unsigned char kBlue[4] = {0, 0, 255, 255};
const unsigned char kGrey[4] = {50, 50, 50, 255};

}  // namespace

using GPUFramebufferTest = GpuTest;

// Targets given as 1 then 0 are declared as attachment 0 then 1, so output 0
// lands in the image given for index 0 whatever the call order.
TEST_F(GPUFramebufferTest, DrawTargetsAreDeclaredInAscendingOrder) {
  const int w = 4, h = 4;
  std::vector<unsigned char> grey(w * h * 4);
  for (size_t i = 0; i < grey.size(); i += 4) memcpy(&grey[i], kGrey, 4);
  auto_ptr<GPUImage2D> a(new GPUImage2D(ctx, w, h, 4, grey.data()));
  auto_ptr<GPUImage2D> b(new GPUImage2D(ctx, w, h, 4, grey.data()));
  auto_ptr<GPUScript> script(new GPUScript(ctx, nullptr));
  script->addSource("VertexShader", kVertex300);
  script->addSource("FragmentShader", kTwoOutputs);
  auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
  ASSERT_NE(program->getProgram(), 0u);
  auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
  LogCapture cap;
  fb->beginDraw();
  fb->setDrawTarget(1, b);
  fb->setDrawTarget(0, a);
  fb->setDrawTarget(4, a);   // ignored
  fb->setDrawTarget(-1, a);  // ignored
  fb->setDrawTarget(2, static_cast<GPUImage2D*>(nullptr));
  EXPECT_EQ(fb->getDrawTargets(), (std::vector<int>{1, 0}));
  fb->endDraw();
  EXPECT_EQ(fb->getDrawTargets(), (std::vector<int>{0, 1}));
  GLint buffer = 0;
  glGetIntegerv(GL_DRAW_BUFFER0, &buffer);
  EXPECT_EQ(buffer, GL_COLOR_ATTACHMENT0);
  glGetIntegerv(GL_DRAW_BUFFER1, &buffer);
  EXPECT_EQ(buffer, GL_COLOR_ATTACHMENT1);
  program->beganCompute();
  program->setOutputSize(0, 0, w, h);
  program->endCompute();
  EXPECT_EQ(cap.countPrefix("after :"), 0) << (cap.texts().empty() ? "" : cap.texts()[0]);
  glBindFramebuffer(GL_FRAMEBUFFER, 0);
  EXPECT_TRUE(allPixels(pixelsOf(a.get()), kRed));
  EXPECT_TRUE(allPixels(pixelsOf(b.get()), kBlue));
}

// Targets 2 and 0 become the list {attachment 0, attachment 2}. OpenGL ES
// wants entry i to be attachment i or none, so GL refuses that list (the
// error is logged) and keeps its default: output 0 into attachment 0 only.
TEST_F(GPUFramebufferTest, TargetsTwoAndZero) {
  const int w = 4, h = 4;
  std::vector<unsigned char> grey(w * h * 4);
  for (size_t i = 0; i < grey.size(); i += 4) memcpy(&grey[i], kGrey, 4);
  auto_ptr<GPUImage2D> a(new GPUImage2D(ctx, w, h, 4, grey.data()));
  auto_ptr<GPUImage2D> c(new GPUImage2D(ctx, w, h, 4, grey.data()));
  auto_ptr<GPUScript> script(new GPUScript(ctx, nullptr));
  script->addSource("VertexShader", kVertex300);
  script->addSource("FragmentShader", kTwoOutputs);
  auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
  auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
  LogCapture cap;
  fb->beginDraw();
  fb->setDrawTarget(2, c);
  fb->setDrawTarget(0, a);
  fb->endDraw();
  EXPECT_EQ(fb->getDrawTargets(), (std::vector<int>{0, 2}));
  EXPECT_EQ(cap.count("after :glDrawBuffers() glError (0x502)\n"), 1);
  program->beganCompute();
  program->setOutputSize(0, 0, w, h);
  program->endCompute();
  glBindFramebuffer(GL_FRAMEBUFFER, 0);
  EXPECT_TRUE(allPixels(pixelsOf(a.get()), kRed));
  EXPECT_TRUE(allPixels(pixelsOf(c.get()), kGrey));
}

TEST_F(GPUFramebufferTest, ListIsCappedAtFourAndEmptyEndDrawIsSilent) {
  auto_ptr<GPUImage2D> a(new GPUImage2D(ctx, 2, 2, 4));
  auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
  LogCapture cap;
  fb->beginDraw();
  fb->endDraw();  // no targets: no glDrawBuffers, so nothing can fail
  EXPECT_TRUE(cap.texts().empty());
  for (int i = 0; i < 6; ++i) fb->setDrawTarget(0, a);
  EXPECT_EQ(fb->getDrawTargets().size(), 6u);
  // Four repeats of attachment 0: GL refuses the list, once, and nothing overflows.
  fb->endDraw();
  EXPECT_EQ(cap.count("after :glDrawBuffers() glError (0x502)\n"), 1);
  // A new pass forgets the old targets.
  fb->beginDraw();
  EXPECT_TRUE(fb->getDrawTargets().empty());
  fb->release();
  EXPECT_EQ(fb->getFramebuffer(), 0u);
  fb->release();
}

// Read protocol: select attachment 1 and blit part of it onto the surface.
TEST_F(GPUFramebufferTest, BlitFromASelectedAttachment) {
  const int w = 4, h = 4;
  std::vector<unsigned char> red(w * h * 4), blue(w * h * 4);
  for (size_t i = 0; i < red.size(); i += 4) {
    memcpy(&red[i], kRed, 4);
    memcpy(&blue[i], kBlue, 4);
  }
  auto_ptr<GPUImage2D> a(new GPUImage2D(ctx, w, h, 4, red.data()));
  auto_ptr<GPUImage2D> b(new GPUImage2D(ctx, w, h, 4, blue.data()));
  auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
  fb->beginDraw();
  fb->setDrawTarget(0, a);
  fb->setDrawTarget(1, b);
  glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);

  LogCapture cap;
  fb->beginRead();
  fb->setReadTarget(7);  // ignored: the read buffer stays attachment 0
  fb->setReadTarget(-1);
  GLint readBuffer = 0;
  glGetIntegerv(GL_READ_BUFFER, &readBuffer);
  EXPECT_EQ(readBuffer, GL_COLOR_ATTACHMENT0);
  fb->setReadTarget(1);
  glGetIntegerv(GL_READ_BUFFER, &readBuffer);
  EXPECT_EQ(readBuffer, GL_COLOR_ATTACHMENT1);
  // 4x4 source into the surface rectangle (2,3)-(6,7).
  fb->Blit(0, 0, w, h, 2, 3, 6, 7);
  fb->endRead();
  EXPECT_EQ(cap.countPrefix("after :"), 0);
  GLint bound = -1;
  glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &bound);
  EXPECT_EQ(bound, 0);
  std::vector<unsigned char> surface(kSurface * kSurface * 4);
  glReadPixels(0, 0, kSurface, kSurface, GL_RGBA, GL_UNSIGNED_BYTE, surface.data());
  const unsigned char black[4] = {0, 0, 0, 255};
  for (int y = 0; y < kSurface; ++y) {
    for (int x = 0; x < kSurface; ++x) {
      bool inside = x >= 2 && x < 6 && y >= 3 && y < 7;
      EXPECT_EQ(memcmp(rgbaAt(surface, kSurface, x, y), inside ? kBlue : black, 4), 0) << x << "," << y;
    }
  }
}

TEST_F(GPUFramebufferTest, StatusWordsAndTargetHelper) {
  auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
  LogCapture cap;
  // A framebuffer with nothing attached is incomplete for a missing attachment (0x8cd7).
  glBindFramebuffer(GL_FRAMEBUFFER, fb->getFramebuffer());
  GPUUtils::checkFramebufferStatusDetail("probe");
  EXPECT_EQ(cap.count("Framebuffer: probe is INCOMPLETE: missing attachment, 8cd7\n"), 1);
  // The default framebuffer is complete: silent.
  glBindFramebuffer(GL_FRAMEBUFFER, 0);
  cap.clear();
  GPUUtils::checkFramebufferStatusDetail("probe");
  EXPECT_TRUE(cap.texts().empty());

  auto_ptr<GPUImage2D> image(new GPUImage2D(ctx, 2, 2, 4));
  GPUFramebuffer::setFramebufferTarget(fb, image);
  GLint bound = 0;
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
  EXPECT_EQ(static_cast<unsigned>(bound), fb->getFramebuffer());
  GLint attached = 0;
  glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                        GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &attached);
  EXPECT_EQ(static_cast<unsigned>(attached), image->getTexture());
  EXPECT_TRUE(cap.texts().empty());
  // Luminance is not colour-renderable: an incomplete attachment (0x8cd6).
  auto_ptr<GPUImage2D> grey(new GPUImage2D(ctx, 2, 2, 1));
  GPUFramebuffer::setFramebufferTarget(fb, grey);
  EXPECT_EQ(cap.count("Framebuffer: glFramebufferTexture2D is INCOMPLETE: attachment, 8cd6\n"), 1);
  // A null framebuffer (or image) unbinds.
  GPUFramebuffer::setFramebufferTarget(nullptr, image.get());
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
  EXPECT_EQ(bound, 0);
}
