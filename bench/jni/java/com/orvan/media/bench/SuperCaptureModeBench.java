package com.orvan.media.bench;

import com.orvan.media.supercapture.mode.SuperCaptureMode;
import java.util.Arrays;

/**
 * Times SuperCaptureMode.nativeProcess on a 1920x1080 luma frame from Java, beside the same
 * call with handle 0 (pinning and releasing the array only) and a plain Java sum of the luma plane
 * (the work the native side does). Prints the median of several runs after a warm-up.
 */
public final class SuperCaptureModeBench {
  private static final int W = 1920;
  private static final int H = 1080;
  private static final int CALLS = 200;
  private static final int RUNS = 9;

  private static volatile long sink;

  private interface Body {
    void run();
  }

  private static double medianMicros(Body body) {
    for (int i = 0; i < CALLS; i++) body.run(); // warm-up
    double[] perCall = new double[RUNS];
    for (int r = 0; r < RUNS; r++) {
      long t0 = System.nanoTime();
      for (int i = 0; i < CALLS; i++) body.run();
      perCall[r] = (System.nanoTime() - t0) / 1000.0 / CALLS;
    }
    Arrays.sort(perCall);
    return perCall[RUNS / 2];
  }

  public static void main(String[] args) {
    // The luma plane is all the monitor reads.
    byte[] frame = new byte[W * H];
    for (int i = 0; i < frame.length; i++) frame[i] = (byte) (i * 31 + (i >> 11));
    // Alternating scenes keep the callback firing now and then.
    byte[] dark = new byte[W * H];
    Arrays.fill(dark, (byte) 12);

    SuperCaptureMode mode = new SuperCaptureMode((value, level) -> sink += level);
    mode.create(W, H, 17);
    int[] n = {0};
    double full = medianMicros(() -> mode.process((n[0]++ & 16) == 0 ? frame : dark));
    double pinOnly = medianMicros(() -> mode.nativeProcess(0, frame));
    double javaSum =
        medianMicros(
            () -> {
              long s = 0;
              for (int i = 0; i < W * H; i++) s += frame[i] & 0xff;
              sink += s / (W * H);
            });
    mode.destroy();

    System.out.printf("SuperCaptureMode.nativeProcess 1920x1080 luma: %.1f us/call (median of %d runs x %d calls)%n",
        full, RUNS, CALLS);
    System.out.printf("  nativeProcess with handle 0 (array pin + release only): %.1f us/call%n", pinOnly);
    System.out.printf("  Java loop summing the same luma plane: %.1f us/call%n", javaSum);
  }
}
