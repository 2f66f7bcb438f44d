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
 * FiltersRender driven from Java with off-screen filters; the formulas themselves are tested natively.
 * Pictures are 16 x 16, so the quarter turn, out(x, y) = in(15 - y, 15 - x), samples texel centres.
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
    logStop();
  }

  private static String ptr(long h) {
    return h == 0 ? "(nil)" : "0x" + Long.toHexString(h);
  }

  private static Bitmap noise(long seed) {
    Bitmap b = Bitmap.createBitmap(N, N, Bitmap.Config.ARGB_8888);
    Random rng = new Random(seed);
    for (int i = 0; i < N * N; i++) b.setPixel(i % N, i / N, rng.nextInt());
    return b;
  }

  private static int[] pixels(Bitmap b) {
    int[] p = new int[b.getWidth() * b.getHeight()];
    for (int i = 0; i < p.length; i++) p[i] = b.getPixel(i % b.getWidth(), i / b.getWidth());
    return p;
  }

  /** The input seen through the quarter turn, as the None filter draws it. */
  private static int[] turned(Bitmap in) {
    int[] p = new int[N * N];
    for (int i = 0; i < N * N; i++) p[i] = in.getPixel(N - 1 - i / N, N - 1 - i % N);
    return p;
  }

  /** Filters a copy of `in` with the handle's filter. */
  private int[] run(Bitmap in) {
    Bitmap b = Bitmap.createBitmap(N, N, Bitmap.Config.ARGB_8888);
    for (int i = 0; i < N * N; i++) b.setPixel(i % N, i / N, in.getPixel(i % N, i / N));
    assertEquals(0, r.nativeProcess(handle, b));
    assertEquals(0, b.getLockCount());
    return pixels(b);
  }

  /** The formulas are tested natively: the None filter shows the binding's round trip. */
  @Test
  void createProcessDestroy() {
    assertEquals(0, r.nativeCreate(null));
    assertEquals(0, r.nativeCreate("imagefilternone"));
    handle = r.nativeCreate("ImageFilterNone");
    assertNotEquals(0, handle);
    Bitmap in = noise(1);
    assertArrayEquals(turned(in), run(in));
    r.nativeOnSurfaceDestroyed(handle);
    assertEquals(1, logCount(P + "nativeOnSurfaceDestroyed pImageFilterBaseGL:" + ptr(handle) + "\n"));
    handle = 0;
  }

  private static final String[] NAMES = {
    "ImageFilterNone", "ImageFilterTable", "ImageFilterDistorted", "ImageFilterExtrusion",
    "ImageFilterMirror", "ImageFilterTemperature", "ImageFilterTimetunnel", "ImageFilterXray"
  };

  /**
   * Still pictures one after another on one thread, each filter gone before the next is made: every
   * creation must succeed, also when the previous filter took the last EGL engine with it.
   */
  @Test
  void createProcessDestroyCycles() {
    Bitmap b = Bitmap.createBitmap(64, 48, Bitmap.Config.ARGB_8888);
    int failed = 0;
    for (int round = 0; round < 40; round++) {
      for (String name : NAMES) {
        b.setPixel(1, 2, 0xff102030);
        long h = r.nativeCreate(name);
        if (h == 0) {
          failed++;
          continue;
        }
        r.nativeProcess(h, b);
        r.nativeOnSurfaceDestroyed(h);
      }
    }
    assertEquals(0, failed);
    // The filters ran: the last one (Xray) leaves opaque grey.
    int v = b.getPixel(5, 5);
    assertEquals(0xff, v >>> 24);
    assertEquals(v & 0xff, (v >>> 8) & 0xff);
    assertEquals(v & 0xff, (v >>> 16) & 0xff);
    assertEquals(0, logCount("eglInitialize fail\n"));
  }

  @Test
  void processUsesOnlyPackedRgbaBitmapsAndAHandle() {
    handle = r.nativeCreate("ImageFilterXray");
    Bitmap rgb565 = Bitmap.createBitmap(N, N, Bitmap.Config.RGB_565);
    rgb565.setPixel(3, 4, 0xff808080);
    Bitmap padded = Bitmap.createPaddedBitmap(N, N, N * 4 + 8, Bitmap.Config.ARGB_8888);
    padded.setPixel(3, 4, 0x11223344);
    int[] before565 = pixels(rgb565), beforePadded = pixels(padded);
    assertEquals(0, r.nativeProcess(handle, rgb565));
    r.nativeProcess(handle, padded);
    assertArrayEquals(before565, pixels(rgb565));
    assertArrayEquals(beforePadded, pixels(padded));
    assertEquals(0, rgb565.getLockCount() + padded.getLockCount());

    Bitmap in = noise(2);
    assertEquals(0, r.nativeProcess(0, in));
    assertArrayEquals(pixels(noise(2)), pixels(in));
    assertEquals(0, r.nativeProcess(handle, null));
  }

  /** The filters' own type tables are tested natively; here what the binding adds. */
  @Test
  void parameterTypes() {
    handle = r.nativeCreate("ImageFilterTable");
    assertEquals(10, r.nativeGetParameterType(handle, "mFilterBitmap"));
    assertEquals(0, r.nativeGetParameterType(handle, null));
    assertEquals(-1, r.nativeGetParameterType(0, "mStrength"));
    assertEquals(3, logCount(P + "nativeGetParameterType\n"));
  }

  /** Runs `set`, then Extrusion: strength -1 collapses the picture to one colour, 0 leaves the plain turn. */
  private void expectAfter(Runnable set, boolean collapsed) {
    set.run();
    Bitmap in = noise(3);
    int[] out = run(in);
    boolean one = true;
    for (int v : out) one &= v == out[0];
    if (collapsed) assertTrue(one);
    else assertArrayEquals(turned(in), out);
  }

  /** Each single-value setter's value is read as the bytes the filter needs. */
  @Test
  void singleValueSetters() {
    handle = r.nativeCreate("ImageFilterExtrusion");
    long minusOne = Float.floatToIntBits(-1f) & 0xffffffffL;
    ByteBuffer value = ByteBuffer.allocateDirect(8).order(ByteOrder.nativeOrder());
    value.putFloat(0, -1f);
    expectAfter(() -> r.nativeSetParametersFloat(handle, "mStrength", -1f), true);
    expectAfter(() -> r.nativeSetParametersBoolean(handle, "mStrength", false), false);
    expectAfter(() -> r.nativeSetParametersInteger(handle, "mStrength", (int) minusOne), true);
    expectAfter(() -> r.nativeSetParametersInteger(handle, "mStrength", 0), false);
    // The double's eight bytes are passed as they are: the filter reads the low four.
    expectAfter(() -> r.nativeSetParametersDouble(handle, "mStrength", Double.longBitsToDouble(minusOne)), true);
    expectAfter(() -> r.nativeSetParametersDouble(handle, "mStrength", -1.0), false); // low half zero
    // A long is the address of native data; 0 is ignored.
    expectAfter(() -> r.nativeSetParametersLong(handle, "mStrength", addressOf(value)), true);
    expectAfter(() -> r.nativeSetParametersLong(handle, "mStrength", 0), true);
    // No name or no handle: nothing reaches a filter.
    expectAfter(() -> {
      r.nativeSetParametersFloat(handle, null, 0f);
      r.nativeSetParametersFloat(0, "mStrength", 0f);
      r.nativeSetParametersBoolean(0, "mStrength", true);
      r.nativeSetParametersInteger(0, "mStrength", 0);
      r.nativeSetParametersDouble(0, "mStrength", 0);
      r.nativeSetParametersLong(0, "mStrength", addressOf(value));
    }, true);
    assertEquals(3, logCount(P + "nativeSetParametersLong\n"));
  }

  /** "mTexVertices" takes eight floats, whatever array type carries their bytes; null changes nothing. */
  @Test
  void arraySetters() {
    handle = r.nativeCreate("ImageFilterNone");
    Bitmap in = noise(4);
    float[] straight = {0, 0, 1, 0, 0, 1, 1, 1};
    float[] quarter = {1, 1, 1, 0, 0, 1, 0, 0};
    r.nativeSetParametersFloatArray(handle, "mTexVertices", straight);
    r.nativeSetParametersFloatArray(handle, "mTexVertices", null);
    assertArrayEquals(pixels(in), run(in));
    r.nativeSetParametersFloatArray(handle, "mTexVertices", quarter);
    assertArrayEquals(turned(in), run(in));

    int[] bits = new int[8];
    for (int i = 0; i < 8; i++) bits[i] = Float.floatToIntBits(straight[i]);
    r.nativeSetParametersIntegerArray(handle, "mTexVertices", bits);
    r.nativeSetParametersIntegerArray(handle, "mTexVertices", null);
    assertArrayEquals(pixels(in), run(in));

    double[] packed = new double[4];
    for (int i = 0; i < 4; i++) {
      long lo = Float.floatToIntBits(quarter[2 * i]) & 0xffffffffL;
      packed[i] = Double.longBitsToDouble(lo | (long) Float.floatToIntBits(quarter[2 * i + 1]) << 32);
    }
    r.nativeSetParametersDoubleArray(handle, "mTexVertices", packed);
    r.nativeSetParametersDoubleArray(handle, "mTexVertices", null);
    assertArrayEquals(turned(in), run(in));

    // 32 false booleans are eight zero floats: every pixel reads texel (0, 0).
    r.nativeSetParametersBooleanArray(handle, "mTexVertices", new boolean[32]);
    r.nativeSetParametersBooleanArray(handle, "mTexVertices", null);
    for (int v : run(in)) assertEquals(in.getPixel(0, 0), v);

    // A short array is padded (-Xcheck:jni watches the reads); no handle or no name, no call.
    r.nativeSetParametersFloatArray(handle, "mTexVertices", new float[] {0.5f});
    r.nativeSetParametersFloatArray(0, "mTexVertices", straight);
    r.nativeSetParametersFloatArray(handle, null, straight);
    assertEquals(6, logCount(P + "nativeSetParametersFloatArray\n"));
  }

  /** A one-colour lookup bitmap paints every pixel; wrong sizes and formats leave it in place. */
  @Test
  void bitmapSetter() {
    handle = r.nativeCreate("ImageFilterTable");
    Bitmap lut = Bitmap.createBitmap(4096, 64, Bitmap.Config.ARGB_8888);
    for (int i = 0; i < 4096 * 64; i++) lut.setPixel(i % 4096, i / 4096, 0x7f123456);
    r.nativeSetParametersBitmap(handle, "mFilterBitmap", lut);
    assertEquals(0, lut.getLockCount());
    Bitmap in = noise(5);
    int[] out = run(in);
    for (int v : out)
      for (int shift = 0; shift < 32; shift += 8) assertEquals((0xff123456 >>> shift) & 0xff, (v >>> shift) & 0xff, 1.0);

    // Refused: no bitmap (the " 2   " line), RGB_565, and 4096 x 65 (ignored by the filter).
    r.nativeSetParametersBitmap(handle, "mFilterBitmap", null);
    Bitmap rgb565 = Bitmap.createBitmap(4096, 64, Bitmap.Config.RGB_565);
    r.nativeSetParametersBitmap(handle, "mFilterBitmap", rgb565);
    assertEquals(0, rgb565.getLockCount());
    r.nativeSetParametersBitmap(handle, "mFilterBitmap", Bitmap.createBitmap(4096, 65, Bitmap.Config.ARGB_8888));
    r.nativeSetParametersBitmap(0, "mFilterBitmap", Bitmap.createBitmap(4096, 64, Bitmap.Config.ARGB_8888));
    assertArrayEquals(out, run(in));

    assertEquals(1, logCount(P + "nativeSetParametersBitmap 2   pImageFilterBaseGL:" + ptr(handle) + "\n"));
  }

  /** A GL view's callbacks on a thread with no EGL context: a handle that draws nothing. */
  @Test
  void surfaceCreatedWithoutAContext() throws InterruptedException {
    long[] view = new long[1];
    Thread gl = new Thread(() -> {
      view[0] = r.nativeOnSurfaceCreated("ImageFilterXray", 0);
      r.nativeOnDrawFrame(view[0]);
      r.nativeOnSurfaceDestroyed(view[0]);
    });
    gl.start();
    gl.join();
    assertNotEquals(0, view[0]);
  }

  /** The preview calls, in the context nativeCreate made current on this thread. */
  @Test
  void previewCallsAndHandleZero() {
    handle = r.nativeCreate("ImageFilterNone");
    long view = r.nativeOnSurfaceCreated("ImageFilterMirror", 1);
    assertNotEquals(0, view);
    assertEquals(0, r.nativeOnSurfaceCreated(null, 0));
    Bitmap in = noise(6);
    r.nativeSetBitmap(view, in, N, N);
    r.nativeSetBitmap(0, in, N, N);
    assertEquals(0, in.getLockCount());
    assertEquals(1, logCount(P + "nativeSetBitmap pImageFilterBaseGL:(nil)\n"));
    r.nativeSetTexture(0, 1, N, N, N, N);
    r.nativeOnDrawFrame(view);
    r.nativeOnDrawFrame(0);
    r.nativeOnSurfaceDestroyed(view);
    r.nativeOnSurfaceDestroyed(0);
    assertEquals(1, logCount(P + "nativeOnSurfaceDestroyed pImageFilterBaseGL:(nil)\n"));
    // The off-screen filter still works after the preview filter is gone.
    assertArrayEquals(turned(in), run(in));
  }
}
