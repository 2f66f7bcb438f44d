package com.orvan.media.supercapture.mode;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashSet;
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
  }

  private final Recorder mode = new Recorder();

  @AfterEach
  void tearDown() {
    mode.destroy();
  }

  /** A preview frame (luma plus chroma) whose luma is all `luma`; chroma is noise that must not count. */
  private static byte[] frame(int luma) {
    byte[] f = new byte[W * H * 3 / 2];
    Arrays.fill(f, 0, W * H, (byte) luma);
    for (int i = W * H; i < f.length; i++) f[i] = (byte) (i * 37);
    return f;
  }

  @Test
  void darkSceneNeverReports() {
    assertTrue(mode.create(W, H, 17));
    for (int i = 0; i < 40; i++) mode.process(frame(10));
    assertEquals(0, mode.calls.size());
  }

  @Test
  void firstBrightEnoughFrameReportsOnce() {
    assertTrue(mode.create(W, H, 17));
    mode.process(frame(30));
    assertEquals(1, mode.calls.size());
    assertEquals(2.8f, mode.calls.get(0)[0]);
    assertEquals(2.0f, mode.calls.get(0)[1]);
    for (int i = 0; i < 20; i++) mode.process(frame(30));
    assertEquals(1, mode.calls.size());
  }

  @Test
  void smoothedChangeBelowElevenIsIgnored() {
    assertTrue(mode.create(W, H, 17));
    mode.process(frame(50));
    assertEquals(1, mode.calls.size());
    // Five frames of 60 bring the mean of the last five to 60: 10 away.
    for (int i = 0; i < 10; i++) mode.process(frame(60));
    assertEquals(1, mode.calls.size());
    // At 61 the mean is 11 away from 50.
    for (int i = 0; i < 4; i++) mode.process(frame(61));
    assertEquals(1, mode.calls.size());
    mode.process(frame(61));
    assertEquals(2, mode.calls.size());
    assertEquals(5.6f, mode.calls.get(1)[0]);
    assertEquals(0.0f, mode.calls.get(1)[1]);
  }

  @ParameterizedTest
  @CsvSource({
    "11, 2.0, 2", "29, 2.0, 2", "30, 2.8, 2", "39, 2.8, 2", "40, 4.0, 1", "59, 4.0, 1", "60, 5.6, 0",
    "79, 5.6, 0", "80, 8.0, -1", "99, 8.0, -1", "100, 11.0, -1", "119, 11.0, -1", "120, 16.0, -2",
    "139, 16.0, -2", "140, 22.0, -2", "255, 22.0, -2"
  })
  void everyRowOfTheTable(int luma, float value, int level) {
    assertTrue(mode.create(W, H, 17));
    mode.process(frame(luma));
    assertEquals(1, mode.calls.size());
    assertEquals(value, mode.calls.get(0)[0]);
    assertEquals(level, (int) mode.calls.get(0)[1]);
  }

  @Test
  void meanIsTruncated() {
    assertTrue(mode.create(2, 1, 17));
    // (40 + 19) / 2 = 29.5 truncates to 29: the first row, not the second.
    mode.process(new byte[] {40, 19, 0});
    assertEquals(2.0f, mode.calls.get(0)[0]);
  }

  @Test
  void refusedInputsLeaveTheMonitorUntouched() {
    assertTrue(mode.create(W, H, 17));
    mode.process(null);
    mode.process(new byte[W * H - 1]);
    assertEquals(0, mode.calls.size());
    // Had the short array counted, the next frame's mean would differ.
    mode.process(frame(40));
    assertEquals(4.0f, mode.calls.get(0)[0]);

    // A zero-sized monitor exists but ignores frames.
    Recorder empty = new Recorder();
    assertTrue(empty.create(0, 0, 17));
    empty.process(frame(200));
    assertEquals(0, empty.calls.size());
    empty.destroy();

    assertEquals(0, mode.nativeCreate(-1, 10, 0));
    assertEquals(0, mode.nativeCreate(65536, 65536, 0));
  }

  @Test
  void handlesAreDistinctAndUnknownOnesAreIgnored() {
    Set<Integer> seen = new HashSet<>();
    List<Integer> live = new ArrayList<>();
    for (int i = 0; i < 50; i++) {
      int h = mode.nativeCreate(W, H, 0);
      assertNotEquals(0, h);
      assertTrue(seen.add(h), "handle reused while live");
      live.add(h);
    }
    int stale = live.get(0);
    for (int h : live) mode.nativeDestroy(h);
    // A destroyed or invented handle does nothing, like 0.
    mode.nativeProcess(stale, frame(100));
    mode.nativeProcess(0, frame(100));
    mode.nativeDestroy(stale);
    mode.nativeDestroy(0);
    assertEquals(0, mode.calls.size());
  }

  @Test
  void handlesFromManyThreadsStayApart() throws InterruptedException {
    Set<Integer> live = ConcurrentHashMap.newKeySet();
    AtomicInteger clashes = new AtomicInteger();
    Thread[] threads = new Thread[4];
    for (int t = 0; t < threads.length; t++) {
      threads[t] =
          new Thread(
              () -> {
                for (int i = 0; i < 500; i++) {
                  int h = mode.nativeCreate(W, H, 0);
                  if (h == 0 || !live.add(h)) clashes.incrementAndGet();
                  live.remove(h);
                  mode.nativeDestroy(h);
                }
              });
      threads[t].start();
    }
    for (Thread t : threads) t.join();
    assertEquals(0, clashes.get());
  }
}
