package com.orvan.media.supercapture.mode;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.atomic.AtomicInteger;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class SuperCaptureModeTest {
  private static final int W = 16;
  private static final int H = 8;

  /** Records every suggestion the native side makes. */
  private static final class Recorder extends SuperCaptureMode {
    final List<float[]> calls = new ArrayList<>();

    @Override
    protected void onResultCallback(float value, int level) {
      calls.add(new float[] {value, level});
    }

    void assertCall(int index, float value, int level) {
      assertEquals(value, calls.get(index)[0]);
      assertEquals(level, (int) calls.get(index)[1]);
    }
  }

  private final Recorder mode = new Recorder();

  @AfterEach
  void tearDown() {
    mode.destroy();
  }

  /** A preview frame whose luma is all `luma`; the chroma is noise that must not count. */
  private static byte[] frame(int luma) {
    byte[] f = new byte[W * H * 3 / 2];
    Arrays.fill(f, 0, W * H, (byte) luma);
    for (int i = W * H; i < f.length; i++) f[i] = (byte) (i * 37);
    return f;
  }

  /** A constant scene is reported once, on its first frame; 10 (value 0 here) never is. */
  @ParameterizedTest
  @CsvSource({
    "10, 0, 0", "11, 2.0, 2", "29, 2.0, 2", "30, 2.8, 2", "39, 2.8, 2", "40, 4.0, 1", "59, 4.0, 1",
    "60, 5.6, 0", "79, 5.6, 0", "80, 8.0, -1", "99, 8.0, -1", "100, 11.0, -1", "119, 11.0, -1",
    "120, 16.0, -2", "139, 16.0, -2", "140, 22.0, -2", "255, 22.0, -2"
  })
  void everyRowOfTheTable(int luma, float value, int level) {
    assertTrue(mode.create(W, H, 17));
    mode.process(frame(luma));
    assertEquals(value == 0 ? 0 : 1, mode.calls.size());
    if (value != 0) mode.assertCall(0, value, level);
    for (int i = 0; i < 40; i++) mode.process(frame(luma));
    assertEquals(value == 0 ? 0 : 1, mode.calls.size());
  }

  @Test
  void smoothedChangeBelowElevenIsIgnored() {
    assertTrue(mode.create(W, H, 17));
    mode.process(frame(50));
    // Five frames of 60 bring the mean of the last five to 60: 10 away.
    for (int i = 0; i < 10; i++) mode.process(frame(60));
    // At 61 the mean is 11 away from 50 only once all five are 61.
    for (int i = 0; i < 4; i++) mode.process(frame(61));
    assertEquals(1, mode.calls.size());
    mode.process(frame(61));
    assertEquals(2, mode.calls.size());
    mode.assertCall(1, 5.6f, 0);
  }

  @Test
  void refusedInputsDoNotCount() {
    assertTrue(mode.create(W, H, 17));
    mode.process(null);
    mode.process(new byte[W * H - 1]);
    assertEquals(0, mode.calls.size());
    // Had the short array counted, this frame's mean would differ.
    mode.process(frame(40));
    mode.assertCall(0, 4.0f, 1);
    // A frame size beyond 32 bits makes no monitor.
    assertEquals(0, mode.nativeCreate(65536, 65536, 0));
  }

  /** Handles are ids from a table: distinct while live across threads; dead or invented ones do nothing. */
  @Test
  void handles() throws InterruptedException {
    Set<Integer> live = ConcurrentHashMap.newKeySet();
    AtomicInteger clashes = new AtomicInteger();
    Thread[] threads = new Thread[4];
    for (int t = 0; t < threads.length; t++) {
      threads[t] = new Thread(() -> {
        for (int i = 0; i < 500; i++) {
          int h = mode.nativeCreate(W, H, 0);
          if (h == 0 || !live.add(h)) clashes.incrementAndGet();
          if (i % 50 != 0) {
            live.remove(h);
            mode.nativeDestroy(h);
          }
        }
      });
      threads[t].start();
    }
    for (Thread t : threads) t.join();
    assertEquals(0, clashes.get());
    assertEquals(40, live.size());
    int stale = live.iterator().next();
    for (int h : live) mode.nativeDestroy(h);
    mode.nativeProcess(stale, frame(100));
    mode.nativeProcess(0, frame(100));
    mode.nativeDestroy(stale);
    mode.nativeDestroy(0);
    assertEquals(0, mode.calls.size());
  }
}
