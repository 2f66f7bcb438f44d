package android.graphics;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.IntBuffer;
import org.junit.jupiter.api.Test;

class BitmapTest {
  @Test
  void argbPixelsAreRgbaInBuffersThatRoundTrip() {
    Bitmap b = Bitmap.createBitmap(2, 2, Bitmap.Config.ARGB_8888);
    assertEquals(2, b.getWidth());
    assertEquals(2, b.getHeight());
    assertEquals(8, b.getRowBytes());
    assertEquals(Bitmap.Config.ARGB_8888, b.getConfig());
    // Bytes 5, 6, 7, 8 after a position of 4 are pixel (0, 0): R 5, G 6, B 7, A 8.
    ByteBuffer in = ByteBuffer.allocate(20);
    for (int i = 0; i < 20; i++) in.put(i, (byte) (i + 1));
    in.position(4);
    b.copyPixelsFromBuffer(in);
    assertEquals(20, in.position());
    assertEquals(0x08050607, b.getPixel(0, 0));
    b.setPixel(1, 1, 0x80112233);
    assertEquals(0x80112233, b.getPixel(1, 1));
    ByteBuffer out = ByteBuffer.allocate(16);
    b.copyPixelsToBuffer(out);
    assertEquals(16, out.position());
    assertEquals(0x11223380, out.getInt(12));

    IntBuffer ints = ByteBuffer.allocate(16).order(ByteOrder.nativeOrder()).asIntBuffer();
    b.copyPixelsToBuffer(ints);
    Bitmap c = Bitmap.createBitmap(2, 2, Bitmap.Config.ARGB_8888);
    ints.rewind();
    c.copyPixelsFromBuffer(ints);
    for (int i = 0; i < 4; i++) assertEquals(b.getPixel(i % 2, i / 2), c.getPixel(i % 2, i / 2));
    assertThrows(RuntimeException.class, () -> b.copyPixelsFromBuffer(ByteBuffer.allocate(15)));
    assertThrows(RuntimeException.class, () -> b.copyPixelsToBuffer(ByteBuffer.allocate(15)));
  }

  @Test
  void rgb565AndBadArguments() {
    Bitmap b = Bitmap.createBitmap(4, 1, Bitmap.Config.RGB_565);
    assertEquals(8, b.getRowBytes());
    for (int argb : new int[] {0xffff0000, 0xff0000ff}) {
      b.setPixel(0, 0, argb);
      assertEquals(argb, b.getPixel(0, 0));
    }
    assertThrows(IllegalArgumentException.class, () -> b.getPixel(4, 0));
    assertThrows(IllegalArgumentException.class, () -> b.setPixel(0, -1, 0));
    assertThrows(IllegalArgumentException.class, () -> Bitmap.createBitmap(0, 1, Bitmap.Config.ARGB_8888));
  }
}
