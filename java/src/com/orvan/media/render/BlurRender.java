package com.orvan.media.render;

import android.graphics.Bitmap;

/** Blurs an RGBA_8888 bitmap in place and tints it with a solid colour. */
public class BlurRender {
  static {
    System.loadLibrary("cam.common.orvan");
  }

  /**
   * Blurs the whole bitmap with the given stack-blur radius (0..254), then blends color (0xRRGGBB)
   * over it with weight alpha / 256. Returns the result of unlocking the pixels (0 on success).
   */
  public int process(Bitmap bitmap, int radius, int color, int alpha) {
    return nativeProcess(bitmap, bitmap.getWidth(), bitmap.getHeight(), radius, color, alpha);
  }

  public native int nativeProcess(Bitmap bitmap, int width, int height, int radius, int color, int alpha);
}
