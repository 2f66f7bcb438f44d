#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "GpuFixture.h"
#include "support/LogCapture.h"

namespace {

// Two outputs with distinct constant colours.
const char* kTwoOutputs =
    "#version 300 es\nprecision mediump float;\nin vec2 v_texcoord;\n"
    "layout(location = 0) out vec4 first;\nlayout(location = 1) out vec4 second;\n"
    "void main() { first = vec4(1.0, 0.0, 0.0, 1.0); second = vec4(0.0, 0.0, 1.0, 1.0); }\n";

const unsigned char kRed[4] = {255, 0, 0, 255};
const unsigned char kBlue[4] = {0, 0, 255, 255};
const unsigned char kGrey[4] = {50, 50, 50, 255};
const unsigned char kBlack[4] = {0, 0, 0, 255};

Pixels pixelsOf(GPUImage2D* image) {
  Pixels px(static_cast<size_t>(image->getWidth()) * image->getHeight() * 4);
  EXPECT_TRUE(image->download(px.data(), static_cast<int>(px.size())));
  return px;
}

}  // namespace

using GPUFramebufferTest = GpuTest;

// endDraw declares the targets in ascending order whatever the call order.
// 1, 0 becomes attachments {0, 1}: output 0 lands in the image given for 0.
// 2, 0 becomes {0, 2}, which ES refuses (entry i must be attachment i or
// none): the error is logged and GL keeps output 0 into attachment 0 only.
TEST_F(GPUFramebufferTest, DrawTargetsAreDeclaredInAscendingOrder) {
  struct Case {
    int first, second;
    bool refused;
    const unsigned char *firstColour, *secondColour;
  };
  const Case cases[] = {{1, 0, false, kBlue, kRed}, {2, 0, true, kGrey, kRed}};
  auto_ptr<GPUProgram> program = makeProgram(ctx.get(), kTwoOutputs, kVertex300);
  ASSERT_NE(program->getProgram(), 0u);
  Pixels grey = filled(4, 4, kGrey);
  for (const Case& c : cases) {
    auto_ptr<GPUImage2D> a(new GPUImage2D(ctx, 4, 4, 4, grey.data()));
    auto_ptr<GPUImage2D> b(new GPUImage2D(ctx, 4, 4, 4, grey.data()));
    auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
    LogCapture cap;
    fb->beginDraw();
    fb->setDrawTarget(c.first, a);
    fb->setDrawTarget(c.second, b);
    fb->setDrawTarget(4, a);  // out of range: ignored
    fb->endDraw();
    EXPECT_EQ(fb->getDrawTargets(), (std::vector<int>{c.second, c.first}));
    EXPECT_EQ(cap.count("after :glDrawBuffers() glError (0x502)\n"), c.refused ? 1 : 0);
    program->beganCompute();
    program->setOutputSize(0, 0, 4, 4);
    program->endCompute();
    EXPECT_EQ(cap.countPrefix("after :"), c.refused ? 1 : 0);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    EXPECT_EQ(pixelsOf(a.get()), filled(4, 4, c.firstColour)) << "target " << c.first;
    EXPECT_EQ(pixelsOf(b.get()), filled(4, 4, c.secondColour)) << "target " << c.second;
  }
}

// Six repeats of attachment 0: the list handed to GL is capped at four (no
// overflow under ASan), and GL refuses the repeats once.
TEST_F(GPUFramebufferTest, ListIsCappedAtFour) {
  auto_ptr<GPUImage2D> a(new GPUImage2D(ctx, 2, 2, 4));
  auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
  LogCapture cap;
  fb->beginDraw();
  for (int i = 0; i < 6; ++i) fb->setDrawTarget(0, a);
  fb->endDraw();
  EXPECT_EQ(cap.count("after :glDrawBuffers() glError (0x502)\n"), 1);
}

// Read protocol: select attachment 1 and blit it onto part of the surface.
TEST_F(GPUFramebufferTest, BlitFromASelectedAttachment) {
  Pixels red = filled(4, 4, kRed), blue = filled(4, 4, kBlue);
  auto_ptr<GPUImage2D> a(new GPUImage2D(ctx, 4, 4, 4, red.data()));
  auto_ptr<GPUImage2D> b(new GPUImage2D(ctx, 4, 4, 4, blue.data()));
  auto_ptr<GPUFramebuffer> fb(new GPUFramebuffer(ctx));
  fb->beginDraw();
  fb->setDrawTarget(0, a);
  fb->setDrawTarget(1, b);
  glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);

  LogCapture cap;
  fb->beginRead();
  fb->setReadTarget(1);
  fb->Blit(0, 0, 4, 4, 2, 3, 6, 7);  // into the surface rectangle (2,3)-(6,7)
  fb->endRead();
  EXPECT_EQ(cap.countPrefix("after :"), 0);
  Pixels surface(kSurface * kSurface * 4);
  glReadPixels(0, 0, kSurface, kSurface, GL_RGBA, GL_UNSIGNED_BYTE, surface.data());
  for (int y = 0; y < kSurface; ++y) {
    for (int x = 0; x < kSurface; ++x) {
      bool inside = x >= 2 && x < 6 && y >= 3 && y < 7;
      EXPECT_EQ(memcmp(rgbaAt(surface, kSurface, x, y), inside ? kBlue : kBlack, 4), 0) << x << "," << y;
    }
  }
}
