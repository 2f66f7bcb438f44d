package com.orvan.media.effects.pano;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.Test;

/** The Java face of the panorama module; placement rules and cycles are tested natively. */
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

  private void assertOffsets(int x, int y) {
    assertEquals(x, pano.getOffsetX());
    assertEquals(y, pano.getOffsetY());
  }

  @Test
  void offsetsReachJavaOnlyForAcceptedFrames() {
    assertFalse(pano.create(0, H, PanoramaModule.FORMAT_NV21));
    assertTrue(pano.create(W, H, PanoramaModule.FORMAT_NV21));
    // Missing or short frames are refused and take no reference.
    assertEquals(3, pano.process(null, 1.0f, 1.0f));
    assertEquals(3, pano.process(new byte[frame.length - 1], 1.0f, 1.0f));
    assertEquals(3, pano.process(frame, REF_X, REF_Y)); // the reference
    assertOffsets(0, 0);
    // dX = 3, dY = 1: sweep direction 1.
    assertEquals(0, pano.process(frame, REF_X - 3, REF_Y - 1));
    assertOffsets(35, 45);
    // dX = -5 is another direction: refused, the fields keep the last accepted frame.
    assertEquals(2, pano.process(frame, REF_X + 5, REF_Y));
    assertOffsets(35, 45);
    pano.destroy();
    assertEquals(0, pano.process(frame, REF_X, REF_Y));
  }
}
