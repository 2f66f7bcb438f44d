package com.orvan.media.demo;

import com.orvan.media.effects.pano.PanoramaModule;
import java.awt.BasicStroke;
import java.awt.Color;
import java.awt.Font;
import java.awt.Graphics2D;
import java.awt.RenderingHints;
import java.awt.image.BufferedImage;
import java.io.File;
import java.io.IOException;
import javax.imageio.ImageIO;

/**
 * Simulates a panorama sweep: a wide scene (the sample photograph and its mirror image, side by
 * side) is cut into overlapping 640x480 NV21 preview frames, each handed to PanoramaModule with
 * gyroscope readings that match where it was cut. The picture shows the scene on top and, below,
 * every accepted frame pasted where the module's offsets put it, outlined and numbered.
 */
public final class PanoramaSweepDemo {
  private static final int FW = 640;
  private static final int FH = 480;
  private static final int SCENE_H = 600;
  private static final int MARGIN_Y = (SCENE_H - FH) / 2; // room for vertical shake
  private static final int STEP_UNITS = 4; // gyro units between frames: 4 x 35 = 140 px
  private static final float REF_X = 0.75f;
  private static final float REF_Y = 3.25f;
  private static final int[] SHAKE = {0, 1, 2, 1, 0, -1, -2, -3, -2, -1};

  private PanoramaSweepDemo() {}

  public static void main(String[] args) throws IOException {
    BufferedImage photo = ImageIO.read(new File(args[0]));
    File outDir = new File(args[1]);
    BufferedImage scene = wideScene(photo);
    int sceneW = scene.getWidth();

    PanoramaModule pano = new PanoramaModule();
    if (!pano.create(FW, FH, PanoramaModule.FORMAT_NV21)) throw new IllegalStateException("create failed");

    BufferedImage canvas = new BufferedImage(sceneW, 2 * SCENE_H + 40, BufferedImage.TYPE_INT_RGB);
    Graphics2D g = canvas.createGraphics();
    g.setRenderingHint(RenderingHints.KEY_ANTIALIASING, RenderingHints.VALUE_ANTIALIAS_ON);
    g.setColor(new Color(24, 24, 24));
    g.fillRect(0, 0, canvas.getWidth(), canvas.getHeight());
    g.drawImage(scene, 0, 0, null);
    int top = SCENE_H + 40;
    g.setFont(new Font(Font.SANS_SERIF, Font.BOLD, 22));
    g.setColor(Color.WHITE);
    g.drawString("scene", 8, 26);
    g.drawString("frames placed by their offsets", 8, top - 10);

    System.out.println("frame   gyroX   gyroY  result  offsetX  offsetY");
    int frames = (sceneW - FW) / (STEP_UNITS * 35) + 1;
    int[][] placed = new int[frames + 1][];
    for (int k = 0; k < frames; k++) {
      int dY = k * STEP_UNITS;
      int dX = SHAKE[k % SHAKE.length];
      // A jolt of the hand: mostly downwards, so not the sweep's direction.
      boolean jolt = k == 9;
      if (jolt) {
        dX = 3 + dY + 1;
      }
      // Readings carry a fraction that the module drops.
      float gyroX = REF_X - (dX + Math.signum(dX) * 0.3f);
      float gyroY = REF_Y - (dY + 0.4f);
      int x = dY * 35;
      int y = MARGIN_Y + Math.max(-MARGIN_Y, Math.min(MARGIN_Y, dX * 15));
      byte[] nv21 = toNV21(scene, x, y);
      if (k == 0) {
        gyroX = REF_X;
        gyroY = REF_Y;
      }
      int result = pano.process(nv21, gyroX, gyroY);
      System.out.printf("%5d %7.2f %7.2f %7d %8d %8d%n", k, gyroX, gyroY, result, pano.getOffsetX(),
          pano.getOffsetY());
      if (k == 0) {
        // The reference frame is the origin of every offset.
        placed[k] = new int[] {0, 0};
        paste(g, nv21, 0, top + MARGIN_Y);
      } else if (result == PanoramaModule.RESULT_NO_ERROR) {
        placed[k] = new int[] {pano.getOffsetX(), pano.getOffsetY()};
        paste(g, nv21, pano.getOffsetX(), top + MARGIN_Y + pano.getOffsetY());
      }
    }
    pano.destroy();

    float[] hues = {0.0f, 0.15f, 0.33f, 0.5f, 0.66f, 0.8f};
    g.setStroke(new BasicStroke(3));
    g.setFont(new Font(Font.SANS_SERIF, Font.BOLD, 20));
    for (int k = 0; k < frames; k++) {
      if (placed[k] == null) continue;
      g.setColor(Color.getHSBColor(hues[k % hues.length], 0.9f, 1.0f));
      int px = placed[k][0];
      int py = top + MARGIN_Y + placed[k][1];
      g.drawRect(px + 2, py + 2, FW - 4, FH - 4);
      g.drawString(Integer.toString(k), px + 8, py + 24 + (k % 2) * 24);
    }
    g.dispose();
    File png = new File(outDir, "panorama-sweep.png");
    ImageIO.write(canvas, "png", png);
    System.out.println("wrote " + png);
  }

  /** The photograph and its mirror image, twice, scaled to SCENE_H rows. */
  private static BufferedImage wideScene(BufferedImage photo) {
    int tileW = photo.getWidth() * SCENE_H / photo.getHeight();
    BufferedImage scene = new BufferedImage(4 * tileW, SCENE_H, BufferedImage.TYPE_INT_RGB);
    Graphics2D g = scene.createGraphics();
    g.setRenderingHint(RenderingHints.KEY_INTERPOLATION, RenderingHints.VALUE_INTERPOLATION_BILINEAR);
    for (int t = 0; t < 4; t++) {
      if (t % 2 == 0) {
        g.drawImage(photo, t * tileW, 0, tileW, SCENE_H, null);
      } else {
        g.drawImage(photo, (t + 1) * tileW, 0, -tileW, SCENE_H, null);
      }
    }
    g.dispose();
    return scene;
  }

  /** One 640x480 NV21 preview frame cut from the scene at (x0, y0), BT.601 studio swing. */
  private static byte[] toNV21(BufferedImage scene, int x0, int y0) {
    byte[] f = new byte[FW * FH * 3 / 2];
    for (int y = 0; y < FH; y++) {
      for (int x = 0; x < FW; x++) {
        int rgb = scene.getRGB(x0 + x, y0 + y);
        int r = (rgb >> 16) & 255;
        int gr = (rgb >> 8) & 255;
        int b = rgb & 255;
        f[y * FW + x] = (byte) (((66 * r + 129 * gr + 25 * b + 128) >> 8) + 16);
        if ((x & 1) == 0 && (y & 1) == 0) {
          int at = FW * FH + (y / 2) * FW + x;
          f[at] = (byte) (((112 * r - 94 * gr - 18 * b + 128) >> 8) + 128);
          f[at + 1] = (byte) (((-38 * r - 74 * gr + 112 * b + 128) >> 8) + 128);
        }
      }
    }
    return f;
  }

  /** Draws an NV21 frame back as RGB with its top-left corner at (px, py). */
  private static void paste(Graphics2D g, byte[] f, int px, int py) {
    BufferedImage img = new BufferedImage(FW, FH, BufferedImage.TYPE_INT_RGB);
    for (int y = 0; y < FH; y++) {
      for (int x = 0; x < FW; x++) {
        int c = (f[y * FW + x] & 255) - 16;
        int at = FW * FH + (y / 2) * FW + (x & ~1);
        int e = (f[at] & 255) - 128;
        int d = (f[at + 1] & 255) - 128;
        int r = clamp((298 * c + 409 * e + 128) >> 8);
        int gr = clamp((298 * c - 100 * d - 208 * e + 128) >> 8);
        int b = clamp((298 * c + 516 * d + 128) >> 8);
        img.setRGB(x, y, (r << 16) | (gr << 8) | b);
      }
    }
    g.drawImage(img, px, py, null);
  }

  private static int clamp(int v) {
    return v < 0 ? 0 : Math.min(255, v);
  }
}
