package com.orvan.media.supercapture.mode;

/**
 * Watches preview brightness and suggests an exposure setting. Native code calls {@link
 * #onResultCallback} on the thread that delivered the frame whenever its smoothed brightness has
 * moved far enough from the last suggestion.
 */
public class SuperCaptureMode {
  static {
    System.loadLibrary("cam.common.orvan");
  }

  /** Receives the suggested aperture-style value and step level. */
  public interface OnResultListener {
    void onResult(float value, int level);
  }

  private int mHandle;
  private OnResultListener mListener;

  public SuperCaptureMode() {}

  public SuperCaptureMode(OnResultListener listener) {
    mListener = listener;
  }

  public void setOnResultListener(OnResultListener listener) {
    mListener = listener;
  }

  /** Prepares for preview frames of the given size; false if the native side refused. */
  public boolean create(int width, int height, int format) {
    destroy();
    mHandle = nativeCreate(width, height, format);
    return mHandle != 0;
  }

  /** Feeds one preview frame; only its first width x height bytes (the luma plane) are read. */
  public void process(byte[] frame) {
    nativeProcess(mHandle, frame);
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

  /** Called from native code with signature (FI)V. */
  protected void onResultCallback(float value, int level) {
    OnResultListener listener = mListener;
    if (listener != null) listener.onResult(value, level);
  }

  public native int nativeCreate(int width, int height, int format);

  public native void nativeProcess(int handle, byte[] data);

  public native void nativeDestroy(int handle);
}
