package com.orvan.media.effects.pano;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;

class PanoramaModuleTest {
  private static final int W = 64;
  private static final int H = 48;
  private static final float REF_X = 10.0f;
  private static final float REF_Y = 20.0f;

  private final PanoramaModule pano = new PanoramaModule();
  private final byte[] frame = new byte[W * H * 3 / 2];

  @AfterEach
  void tearDown() {
    pano.destroy();
  }

  @Test
  void createRefusesBadSizesAndFormats() {
    assertFalse(pano.create(0, 480, 3));
    assertFalse(pano.create(640, 0, 3));
    assertFalse(pano.create(640, 480, 0));
    assertFalse(pano.create(640, 480, 4));
    // 40000 x 40000 x 3 / 2 bytes do not fit in a signed 32-bit size.
    assertFalse(pano.create(40000, 40000, 3));
    assertTrue(pano.create(640, 480, 1));
  }

  @Test
  void handleZeroIsNotAnError() {
    assertEquals(0, pano.nativeProcess(0, frame, REF_X - 3, REF_Y - 1));
    assertEquals(0, pano.getOffsetX());
    assertEquals(0, pano.getOffsetY());
    pano.nativeDestroy(0);
  }

  @Test
  void offsetsReachJavaOnlyForAcceptedFrames() {
    assertTrue(pano.create(W, H, PanoramaModule.FORMAT_NV21));
    // The first frame only sets the reference.
    assertEquals(3, pano.process(frame, REF_X, REF_Y));
    assertEquals(0, pano.getOffsetX());
    assertEquals(0, pano.getOffsetY());

    // dX = 1.9 counts as one whole unit: 15 px down, no sideways move.
    assertEquals(0, pano.process(frame, REF_X - 1.9f, REF_Y));
    assertEquals(0, pano.getOffsetX());
    assertEquals(15, pano.getOffsetY());

    // dX = 3, dY = 1: 1 + 2 >= 3 keeps the sweep direction 1.
    assertEquals(0, pano.process(frame, REF_X - 3, REF_Y - 1));
    assertEquals(35, pano.getOffsetX());
    assertEquals(45, pano.getOffsetY());

    // dX = -5 is another direction: refused, fields keep the last accepted frame.
    assertEquals(2, pano.process(frame, REF_X + 5, REF_Y));
    assertEquals(35, pano.getOffsetX());
    assertEquals(45, pano.getOffsetY());

    // Sweeping on in direction 1 is still accepted.
    assertEquals(0, pano.process(frame, REF_X, REF_Y - 4));
    assertEquals(140, pano.getOffsetX());
    assertEquals(0, pano.getOffsetY());
  }

  @Test
  void missingOrShortFramesAreRefusedWithoutSettingTheReference() {
    assertTrue(pano.create(W, H, PanoramaModule.FORMAT_YV12));
    assertEquals(3, pano.process(null, 1.0f, 1.0f));
    assertEquals(3, pano.process(new byte[frame.length - 1], 1.0f, 1.0f));
    // Neither call above took a reference, so this frame does.
    assertEquals(3, pano.process(frame, REF_X, REF_Y));
    assertEquals(0, pano.process(frame, REF_X, REF_Y - 2));
    assertEquals(70, pano.getOffsetX());
  }

  @Test
  void framesAfterDestroyAreIgnored() {
    assertTrue(pano.create(W, H, PanoramaModule.FORMAT_NV12));
    pano.destroy();
    assertFalse(pano.isCreated());
    assertEquals(0, pano.process(frame, REF_X, REF_Y));
  }

  @Test
  void manyCreateProcessDestroyCycles() {
    for (int i = 0; i < 200; i++) {
      assertTrue(pano.create(W, H, 1 + i % 3));
      assertEquals(3, pano.process(frame, REF_X, REF_Y));
      assertEquals(0, pano.process(frame, REF_X, REF_Y - 1 - (i % 4)));
      assertEquals(35 * (1 + i % 4), pano.getOffsetX());
      pano.destroy();
    }
  }
}
