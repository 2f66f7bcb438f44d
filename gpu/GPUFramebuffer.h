#pragma once

#include <vector>

#include "core/Export.h"
#include "core/RefBase.h"
#include "gpu/GPUContext.h"

class GPUImage2D;

// One framebuffer object with a draw protocol (attach up to four colour
// targets, then declare them) and a read protocol (select an attachment and
// blit it).
class OV_EXPORT GPUFramebuffer : public RefBase {
 public:
  explicit GPUFramebuffer(GPUContext* context);
  explicit GPUFramebuffer(auto_ptr<GPUContext>& context);
  ~GPUFramebuffer() override;

  void release();

  // Draw: beginDraw, setDrawTarget..., draw, endDraw.
  void beginDraw();
  // index 0..3 is GL_COLOR_ATTACHMENT0 + index; others and null images are ignored.
  void setDrawTarget(int index, GPUImage2D* image);
  void setDrawTarget(int index, auto_ptr<GPUImage2D>& image);
  // Declares the targets to GL in ascending attachment order (at most four).
  void endDraw();

  // Read: beginRead, setReadTarget, Blit, endRead.
  void beginRead();
  void setReadTarget(int index);
  void Blit(int srcX0, int srcY0, int srcX1, int srcY1, int dstX0, int dstY0, int dstX1, int dstY1);
  void endRead();

  // Binds framebuffer with image at colour attachment 0; unbinds when either is null.
  static void setFramebufferTarget(GPUFramebuffer* framebuffer, GPUImage2D* image);
  static void setFramebufferTarget(auto_ptr<GPUFramebuffer>& framebuffer, auto_ptr<GPUImage2D>& image);

  unsigned getFramebuffer() const { return mFramebuffer; }
  const std::vector<int>& getDrawTargets() const { return mDrawTargets; }

 private:
  auto_ptr<GPUContext> mContext;
  std::vector<int> mDrawTargets;
  unsigned mFramebuffer;
};
