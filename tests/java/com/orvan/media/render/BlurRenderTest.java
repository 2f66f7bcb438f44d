package com.orvan.media.render;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import android.graphics.Bitmap;
import java.nio.ByteBuffer;
import org.junit.jupiter.api.Test;

class BlurRenderTest {
  private final BlurRender render = new BlurRender();

  private static Bitmap filled(int w, int h, int argb) {
    Bitmap b = Bitmap.createBitmap(w, h, Bitmap.Config.ARGB_8888);
    for (int y = 0; y < h; y++) for (int x = 0; x < w; x++) b.setPixel(x, y, argb);
    return b;
  }

  private static byte[] bytes(Bitmap b) {
    ByteBuffer buf = ByteBuffer.allocate(b.getByteCount());
    b.copyPixelsToBuffer(buf);
    return buf.array();
  }

  /** The tint of one channel value p: (alpha * c + p * (256 - alpha)) >> 8. */
  private static int tint(int p, int c, int alpha) {
    return (alpha * c + p * (256 - alpha)) >> 8;
  }

  private static int grey(int c) {
    return 0xff000000 | c << 16 | c << 8 | c;
  }

  @Test
  void uniformBitmapComesBackTinted() {
    // A uniform picture is its own blur when (radius + 1)^2 divides evenly
    // (radius 3: sum x 512 >> 13 of 16 equal weights), so only the tint shows.
    Bitmap b = filled(16, 4, 0x4d6496c8); // A 0x4d, R 100, G 150, B 200
    assertEquals(0, render.process(b, 3, 0x336699, 128));
    int expected =
        (0x4d << 24) | (tint(100, 0x33, 128) << 16) | (tint(150, 0x66, 128) << 8) | tint(200, 0x99, 128);
    for (int y = 0; y < 4; y++) for (int x = 0; x < 16; x++) assertEquals(expected, b.getPixel(x, y));
    assertEquals(0, b.getLockCount());
  }

  /** Only whole groups of eight pixels of the caller's width x height are tinted. */
  @Test
  void tailBeyondWholeGroupsOfEightAndTheCallersSize() {
    Bitmap b = filled(5, 3, 0xff204060);
    assertEquals(0, render.process(b, 0, 0xffffff, 200));
    int tinted = 0xff000000 | (tint(0x20, 255, 200) << 16) | (tint(0x40, 255, 200) << 8) | tint(0x60, 255, 200);
    for (int i = 0; i < 15; i++) assertEquals(i < 8 ? tinted : 0xff204060, b.getPixel(i % 5, i / 5), "pixel " + i);
    // 4 x 2 of an 8 x 8 bitmap covers its first 8 pixels.
    Bitmap part = filled(8, 8, grey(100));
    assertEquals(0, render.nativeProcess(part, 4, 2, 0, 0, 128));
    for (int i = 0; i < 64; i++)
      assertEquals(grey(i < 8 ? tint(100, 0, 128) : 100), part.getPixel(i % 8, i / 8), "pixel " + i);
  }

  @Test
  void refusedBitmapsAreUntouchedButUnlocked() {
    Bitmap rgb565 = Bitmap.createBitmap(8, 8, Bitmap.Config.RGB_565);
    rgb565.setPixel(3, 3, 0xff808080);
    Bitmap padded = Bitmap.createPaddedBitmap(8, 8, 8 * 4 + 16, Bitmap.Config.ARGB_8888);
    padded.setPixel(3, 3, 0xff808080);
    Bitmap small = filled(8, 8, 0xff406080);
    Bitmap[] bitmaps = {rgb565, padded, small, small, small};
    int[][] args = {{8, 8, 2}, {8, 8, 2}, {8, 9, 2}, {8, 8, 255}, {0, 8, 2}}; // width, height, radius
    for (int i = 0; i < bitmaps.length; i++) {
      byte[] before = bytes(bitmaps[i]);
      assertEquals(0, render.nativeProcess(bitmaps[i], args[i][0], args[i][1], args[i][2], 0x102030, 100));
      assertArrayEquals(before, bytes(bitmaps[i]), "case " + i);
      assertEquals(0, bitmaps[i].getLockCount());
    }
    // No bitmap at all: nothing locked, and the unlock says so.
    assertEquals(-1, render.nativeProcess(null, 8, 8, 2, 0, 0));
  }
}
