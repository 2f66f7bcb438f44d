package com.orvan.media.effects.renderer.render;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import android.graphics.Bitmap;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Path;
import java.util.Random;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/**
 * FiltersRender driven from Java with off-screen filters. Pictures are 16 x 16, so the filters'
 * quarter turn, out(x, y) = in(15 - y, 15 - x), samples texel centres exactly.
 */
class FiltersRenderTest {
  static {
    System.loadLibrary("ov_filters_java_test");
  }

  static native void logStart();

  static native void logStop();

  static native int logCount(String text);

  static native long addressOf(ByteBuffer direct);

  static native void useCacheDirectory(String dir);

  private static final String P = "Java_com_orvan_media_effects_renderer_render_FiltersRender_";
  private static final int N = 16;

  @TempDir static Path cacheDir;

  private final FiltersRender r = new FiltersRender();
  private long handle;

  @BeforeAll
  static void privateCache() {
    useCacheDirectory(cacheDir.toString() + "/");
  }

  @AfterAll
  static void defaultCache() {
    useCacheDirectory(null);
  }

  @BeforeEach
  void capture() {
    logStart();
  }

  @AfterEach
  void destroy() {
    if (handle != 0) r.nativeOnSurfaceDestroyed(handle);
    handle = 0;
    logStop();
  }

  private static String ptr(long h) {
    return h == 0 ? "(nil)" : "0x" + Long.toHexString(h);
  }

  private static Bitmap noise(long seed) {
    Bitmap b = Bitmap.createBitmap(N, N, Bitmap.Config.ARGB_8888);
    Random rng = new Random(seed);
    for (int y = 0; y < N; y++) for (int x = 0; x < N; x++) b.setPixel(x, y, rng.nextInt());
    return b;
  }

  private static Bitmap copy(Bitmap b) {
    Bitmap c = Bitmap.createBitmap(b.getWidth(), b.getHeight(), b.getConfig());
    for (int y = 0; y < b.getHeight(); y++)
      for (int x = 0; x < b.getWidth(); x++) c.setPixel(x, y, b.getPixel(x, y));
    return c;
  }

  private static int[] pixels(Bitmap b) {
    int[] p = new int[b.getWidth() * b.getHeight()];
    for (int i = 0; i < p.length; i++) p[i] = b.getPixel(i % b.getWidth(), i / b.getWidth());
    return p;
  }

  /** The input seen through the quarter turn, as the None filter draws it. */
  private static int[] turned(Bitmap in) {
    int[] p = new int[N * N];
    for (int y = 0; y < N; y++) for (int x = 0; x < N; x++) p[y * N + x] = in.getPixel(N - 1 - y, N - 1 - x);
    return p;
  }

  private int[] run(Bitmap in) {
    Bitmap b = copy(in);
    assertEquals(0, r.nativeProcess(handle, b));
    assertEquals(0, b.getLockCount());
    return pixels(b);
  }

  private static boolean oneColour(int[] p) {
    for (int v : p) if (v != p[0]) return false;
    return true;
  }

  private static int channel(int argb, int c) {
    return (argb >> (16 - 8 * c)) & 0xff;
  }

  @Test
  void createProcessDestroy() {
    assertEquals(0, r.nativeCreate(null));
    assertEquals(0, r.nativeCreate("imagefilterxray"));
    handle = r.nativeCreate("ImageFilterXray");
    assertNotEquals(0, handle);
    Bitmap in = noise(1);
    int[] out = run(in);
    int[] src = turned(in);
    for (int i = 0; i < N * N; i++) {
      int sum = channel(src[i], 0) + channel(src[i], 1) + channel(src[i], 2);
      long grey = Math.round(255.0 * (1.0 - sum / 765.0));
      for (int c = 0; c < 3; c++) assertEquals(grey, channel(out[i], c), 1.0, "pixel " + i);
      assertEquals(0xff, out[i] >>> 24);
    }
    long h = handle;
    r.nativeOnSurfaceDestroyed(h);
    handle = 0;
    assertEquals(1, logCount(P + "nativeOnSurfaceDestroyed pImageFilterBaseGL:" + ptr(h) + "\n"));
  }

  @Test
  void processUsesOnlyPackedRgbaBitmaps() {
    handle = r.nativeCreate("ImageFilterXray");
    Bitmap rgb565 = Bitmap.createBitmap(N, N, Bitmap.Config.RGB_565);
    rgb565.setPixel(3, 4, 0xff808080);
    assertEquals(0, r.nativeProcess(handle, rgb565));
    assertEquals(0, rgb565.getLockCount());
    assertEquals(0xff848284, rgb565.getPixel(3, 4));
    assertEquals(0xff000000, rgb565.getPixel(0, 0));

    Bitmap padded = Bitmap.createPaddedBitmap(N, N, N * 4 + 8, Bitmap.Config.ARGB_8888);
    padded.setPixel(1, 1, 0x11223344);
    r.nativeProcess(handle, padded);
    assertEquals(0, padded.getLockCount());
    assertEquals(0x11223344, padded.getPixel(1, 1));

    Bitmap in = noise(2);
    Bitmap b = copy(in);
    assertEquals(0, r.nativeProcess(0, b));
    assertArrayEquals(pixels(in), pixels(b));
    assertEquals(0, r.nativeProcess(handle, null));
  }

  @Test
  void parameterTypes() {
    handle = r.nativeCreate("ImageFilterTable");
    assertEquals(10, r.nativeGetParameterType(handle, "mFilterBitmap"));
    assertEquals(5, r.nativeGetParameterType(handle, "mStrength"));
    assertEquals(6, r.nativeGetParameterType(handle, "mTexVertices"));
    assertEquals(6, r.nativeGetParameterType(handle, "mTextureMatrix"));
    assertEquals(0, r.nativeGetParameterType(handle, "mRadius"));
    assertEquals(0, r.nativeGetParameterType(handle, null));
    assertEquals(-1, r.nativeGetParameterType(0, "mStrength"));
    assertEquals(7, logCount(P + "nativeGetParameterType\n"));
  }

  /**
   * Extrusion reads "mStrength" as one float: -1 collapses the picture onto one colour, 0 leaves it
   * as the plain quarter turn. Each setter's value is read as the bytes the filter needs.
   */
  @Test
  void singleValueSetters() {
    handle = r.nativeCreate("ImageFilterExtrusion");
    Bitmap in = noise(3);
    int[] plain = turned(in);

    r.nativeSetParametersFloat(handle, "mStrength", -1f);
    assertTrue(oneColour(run(in)));
    r.nativeSetParametersBoolean(handle, "mStrength", false);
    assertArrayEquals(plain, run(in));

    r.nativeSetParametersInteger(handle, "mStrength", Float.floatToIntBits(-1f));
    assertTrue(oneColour(run(in)));
    r.nativeSetParametersInteger(handle, "mStrength", 0);
    assertArrayEquals(plain, run(in));

    // The double's eight bytes are passed as they are: the filter reads the low four.
    r.nativeSetParametersDouble(handle, "mStrength", Double.longBitsToDouble(Float.floatToIntBits(-1f) & 0xffffffffL));
    assertTrue(oneColour(run(in)));
    r.nativeSetParametersDouble(handle, "mStrength", -1.0); // low half all zero: strength 0
    assertArrayEquals(plain, run(in));

    // A long is the address of native data.
    ByteBuffer value = ByteBuffer.allocateDirect(8).order(ByteOrder.nativeOrder());
    value.putFloat(0, -1f);
    r.nativeSetParametersLong(handle, "mStrength", addressOf(value));
    assertTrue(oneColour(run(in)));
    r.nativeSetParametersLong(handle, "mStrength", 0); // null: ignored
    assertTrue(oneColour(run(in)));

    // No name or no handle: nothing reaches a filter.
    r.nativeSetParametersFloat(handle, null, 0f);
    r.nativeSetParametersFloat(0, "mStrength", 0f);
    r.nativeSetParametersBoolean(0, "mStrength", true);
    r.nativeSetParametersInteger(0, "mStrength", 0);
    r.nativeSetParametersDouble(0, "mStrength", 0);
    r.nativeSetParametersLong(0, "mStrength", addressOf(value));
    assertTrue(oneColour(run(in)));

    assertEquals(3, logCount(P + "nativeSetParametersFloat\n"));
    assertEquals(2, logCount(P + "nativeSetParametersBoolean\n"));
    assertEquals(3, logCount(P + "nativeSetParametersInteger\n"));
    assertEquals(3, logCount(P + "nativeSetParametersDouble\n"));
    assertEquals(3, logCount(P + "nativeSetParametersLong\n"));
  }

  /** "mTexVertices" takes eight floats, whatever array type carries their bytes. */
  @Test
  void arraySetters() {
    handle = r.nativeCreate("ImageFilterNone");
    Bitmap in = noise(4);
    int[] original = pixels(in);
    int[] plain = turned(in);
    float[] straight = {0, 0, 1, 0, 0, 1, 1, 1};
    float[] quarter = {1, 1, 1, 0, 0, 1, 0, 0};

    r.nativeSetParametersFloatArray(handle, "mTexVertices", straight);
    assertArrayEquals(original, run(in));
    r.nativeSetParametersFloatArray(handle, "mTexVertices", null);
    assertArrayEquals(original, run(in));
    r.nativeSetParametersFloatArray(handle, "mTexVertices", quarter);
    assertArrayEquals(plain, run(in));

    int[] bits = new int[8];
    for (int i = 0; i < 8; i++) bits[i] = Float.floatToIntBits(straight[i]);
    r.nativeSetParametersIntegerArray(handle, "mTexVertices", bits);
    assertArrayEquals(original, run(in));
    r.nativeSetParametersIntegerArray(handle, "mTexVertices", null);
    assertArrayEquals(original, run(in));

    double[] packed = new double[4];
    for (int i = 0; i < 4; i++) {
      long lo = Float.floatToIntBits(quarter[2 * i]) & 0xffffffffL;
      long hi = Float.floatToIntBits(quarter[2 * i + 1]) & 0xffffffffL;
      packed[i] = Double.longBitsToDouble(lo | (hi << 32));
    }
    r.nativeSetParametersDoubleArray(handle, "mTexVertices", packed);
    assertArrayEquals(plain, run(in));
    r.nativeSetParametersDoubleArray(handle, "mTexVertices", null);
    assertArrayEquals(plain, run(in));

    // 32 false booleans are eight zero floats: every pixel reads texel (0, 0).
    r.nativeSetParametersBooleanArray(handle, "mTexVertices", new boolean[32]);
    int[] corner = run(in);
    for (int v : corner) assertEquals(in.getPixel(0, 0), v);
    r.nativeSetParametersBooleanArray(handle, "mTexVertices", null);
    assertArrayEquals(corner, run(in));

    // A short array is padded, never read past its end; no handle, no call.
    r.nativeSetParametersFloatArray(handle, "mTexVertices", new float[] {0.5f});
    r.nativeSetParametersFloatArray(0, "mTexVertices", straight);
    r.nativeSetParametersFloatArray(handle, null, straight);

    assertEquals(6, logCount(P + "nativeSetParametersFloatArray\n"));
    assertEquals(2, logCount(P + "nativeSetParametersIntegerArray\n"));
    assertEquals(2, logCount(P + "nativeSetParametersDoubleArray\n"));
    assertEquals(2, logCount(P + "nativeSetParametersBooleanArray\n"));
  }

  /** An inverting lookup bitmap; wrong sizes and formats leave the table alone. */
  @Test
  void bitmapSetter() {
    handle = r.nativeCreate("ImageFilterTable");
    String at = " pImageFilterBaseGL:" + ptr(handle) + "\n";
    Bitmap lut = Bitmap.createBitmap(4096, 64, Bitmap.Config.ARGB_8888);
    for (int row = 0; row < 64; row++)
      for (int g = 0; g < 64; g++)
        for (int b = 0; b < 64; b++) {
          int rr = 255 - row * 255 / 63, gg = 255 - g * 255 / 63, bb = 255 - b * 255 / 63;
          lut.setPixel(g * 64 + b, row, 0x7f000000 | (rr << 16) | (gg << 8) | bb);
        }
    // Colours where the table reproduces its entries within one step (4.05).
    Bitmap in = Bitmap.createBitmap(N, N, Bitmap.Config.ARGB_8888);
    Random rng = new Random(5);
    for (int i = 0; i < N * N; i++)
      in.setPixel(i % N, i / N, 0x40000000 | (rng.nextInt(256) << 16) | (rng.nextInt(33) << 8) | rng.nextInt(253));
    int[] src = turned(in);

    r.nativeSetParametersBitmap(handle, "mFilterBitmap", lut);
    assertEquals(0, lut.getLockCount());
    int[] out = run(in);
    for (int i = 0; i < N * N; i++)
      for (int c = 0; c < 3; c++) assertEquals(255 - channel(src[i], c), channel(out[i], c), 4.0, "pixel " + i);

    // Refused: no bitmap (the " 2   " line), RGB_565, and 4096 x 65 (ignored by the filter).
    r.nativeSetParametersBitmap(handle, "mFilterBitmap", null);
    Bitmap rgb565 = Bitmap.createBitmap(4096, 64, Bitmap.Config.RGB_565);
    r.nativeSetParametersBitmap(handle, "mFilterBitmap", rgb565);
    assertEquals(0, rgb565.getLockCount());
    r.nativeSetParametersBitmap(handle, "mFilterBitmap", Bitmap.createBitmap(4096, 65, Bitmap.Config.ARGB_8888));
    r.nativeSetParametersBitmap(0, "mFilterBitmap", lut);
    assertArrayEquals(out, run(in));

    assertEquals(4, logCount(P + "nativeSetParametersBitmap 1  " + at));
    assertEquals(1, logCount(P + "nativeSetParametersBitmap 2  " + at));
    assertEquals(2, logCount(P + "nativeSetParametersBitmap 3  " + at));
    assertEquals(1, logCount(P + "nativeSetParametersBitmap 1   pImageFilterBaseGL:(nil)\n"));
    assertEquals(1, logCount(P + "nativeSetParametersBitmap 3   pImageFilterBaseGL:(nil)\n"));
  }

  /** The preview calls, in the context nativeCreate made current on this thread. */
  @Test
  void previewCallsAndHandleZero() {
    handle = r.nativeCreate("ImageFilterNone");
    long view = r.nativeOnSurfaceCreated("ImageFilterMirror", 1);
    assertNotEquals(0, view);
    assertEquals(0, r.nativeOnSurfaceCreated("ImageFilterBogus", 1));
    assertEquals(0, r.nativeOnSurfaceCreated(null, 0));
    assertEquals(3, logCount(P + "nativeOnSurfaceCreated  1\n"));
    assertEquals(1, logCount("pImageFilterBaseGL:" + ptr(view) + "\n"));
    assertEquals(2, logCount("pImageFilterBaseGL:(nil)\n"));

    Bitmap in = noise(6);
    r.nativeSetBitmap(view, in, N, N);
    r.nativeSetBitmap(view, in, 0, N);
    r.nativeSetBitmap(0, in, N, N);
    assertEquals(0, in.getLockCount());
    assertEquals(2, logCount(P + "nativeSetBitmap pImageFilterBaseGL:" + ptr(view) + "\n"));
    assertEquals(1, logCount(P + "nativeSetBitmap pImageFilterBaseGL:(nil)\n"));
    r.nativeSetTexture(0, 1, N, N, N, N);
    assertEquals(1, logCount(P + "nativeSetTexture  1 pImageFilterBaseGL:(nil)\n"));
    assertEquals(1, logCount(P + "nativeSetTexture  2 pImageFilterBaseGL:(nil)\n"));
    r.nativeOnDrawFrame(view);
    r.nativeOnDrawFrame(0);
    r.nativeOnSurfaceDestroyed(view);
    r.nativeOnSurfaceDestroyed(0);
    assertEquals(1, logCount(P + "nativeOnSurfaceDestroyed pImageFilterBaseGL:(nil)\n"));

    // The off-screen filter still works after the preview filter is gone.
    assertArrayEquals(turned(in), run(in));
  }
}
