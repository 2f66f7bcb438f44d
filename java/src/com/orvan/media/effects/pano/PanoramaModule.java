package com.orvan.media.effects.pano;

/**
 * Places panorama preview frames from gyroscope readings. Each accepted frame's pixel offset
 * relative to the first frame is written by native code into mOffsetX and mOffsetY; refused frames
 * leave them as they were.
 */
public class PanoramaModule {
  static {
    System.loadLibrary("cam.common.orvan");
  }

  /** Frame layouts accepted by {@link #create}. */
  public static final int FORMAT_NV12 = 1;

  public static final int FORMAT_NV21 = 2;
  public static final int FORMAT_YV12 = 3;

  /** Result codes of {@link #process}. */
  public static final int RESULT_NO_ERROR = 0;

  public static final int RESULT_OUT_OF_MEMORY = 1;
  public static final int RESULT_WRONG_DIRECTION = 2;
  public static final int RESULT_INVALID_PARAMETER = 3;
  public static final int RESULT_INVALID_OPERATOR = 4;

  private long mHandle;
  private int mOffsetX;
  private int mOffsetY;

  /** Starts a sweep for frames of the given size and layout; false if the native side refused. */
  public boolean create(int width, int height, int format) {
    destroy();
    mHandle = nativeCreate(width, height, format);
    return mHandle != 0;
  }

  /** Feeds one frame with its two gyroscope readings; returns a RESULT_* code. */
  public int process(byte[] frame, float gyroX, float gyroY) {
    return nativeProcess(mHandle, frame, gyroX, gyroY);
  }

  public void destroy() {
    if (mHandle != 0) {
      nativeDestroy(mHandle);
      mHandle = 0;
    }
  }

  public boolean isCreated() {
    return mHandle != 0;
  }

  /** Horizontal offset in pixels of the last accepted frame. */
  public int getOffsetX() {
    return mOffsetX;
  }

  /** Vertical offset in pixels of the last accepted frame. */
  public int getOffsetY() {
    return mOffsetY;
  }

  public native long nativeCreate(int width, int height, int format);

  public native int nativeProcess(long handle, byte[] data, float gyroX, float gyroY);

  public native void nativeDestroy(long handle);
}
