package com.orvan.media.effects.renderer.render;

import android.graphics.Bitmap;

/**
 * Real-time GL image filters. A filter is a native handle (0 means none). Two uses:
 *
 * <ul>
 *   <li>Preview, on the GL view's renderer thread with its EGL context current: {@link
 *       #nativeOnSurfaceCreated}, then per frame {@link #nativeSetTexture} and {@link
 *       #nativeOnDrawFrame}, finally {@link #nativeOnSurfaceDestroyed}. Mode 0 samples a camera
 *       (external) texture, any other mode a 2D texture.
 *   <li>Still pictures: {@link #nativeCreate} makes a filter with an off-screen engine of its own,
 *       current on the calling thread; {@link #nativeProcess} filters an RGBA_8888 bitmap in place;
 *       {@link #nativeOnSurfaceDestroyed} deletes it.
 * </ul>
 *
 * <p>Filter names: "ImageFilterNone", "ImageFilterTable", "ImageFilterDistorted",
 * "ImageFilterExtrusion", "ImageFilterMirror", "ImageFilterTemperature", "ImageFilterTimetunnel",
 * "ImageFilterXray". {@link #nativeGetParameterType} answers 5 (one float), 6 (float array), 10
 * (bitmap), 0 (unknown name) or -1 (handle 0). A handle must be used on the thread that created it.
 */
public class FiltersRender {
  static {
    System.loadLibrary("cam.common.orvan");
  }

  public native long nativeCreate(String name);

  public native int nativeProcess(long handle, Bitmap bitmap);

  public native long nativeOnSurfaceCreated(String name, int mode);

  public native void nativeSetTexture(
      long handle, int texture, int textureWidth, int textureHeight, int viewWidth, int viewHeight);

  public native void nativeSetBitmap(long handle, Bitmap bitmap, int width, int height);

  public native void nativeOnDrawFrame(long handle);

  public native void nativeOnSurfaceDestroyed(long handle);

  public native int nativeGetParameterType(long handle, String name);

  public native void nativeSetParametersBoolean(long handle, String name, boolean value);

  public native void nativeSetParametersBooleanArray(long handle, String name, boolean[] values);

  public native void nativeSetParametersInteger(long handle, String name, int value);

  public native void nativeSetParametersIntegerArray(long handle, String name, int[] values);

  public native void nativeSetParametersFloat(long handle, String name, float value);

  public native void nativeSetParametersFloatArray(long handle, String name, float[] values);

  public native void nativeSetParametersDouble(long handle, String name, double value);

  public native void nativeSetParametersDoubleArray(long handle, String name, double[] values);

  /** The value is the address of native data that the filter reads. */
  public native void nativeSetParametersLong(long handle, String name, long value);

  public native void nativeSetParametersBitmap(long handle, String name, Bitmap bitmap);
}
