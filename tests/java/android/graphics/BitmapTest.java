package android.graphics;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.IntBuffer;
import org.junit.jupiter.api.Test;

class BitmapTest {
  @Test
  void argbPixelsAreStoredRgbaInMemory() {
    Bitmap b = Bitmap.createBitmap(3, 2, Bitmap.Config.ARGB_8888);
    assertEquals(3, b.getWidth());
    assertEquals(2, b.getHeight());
    assertEquals(12, b.getRowBytes());
    assertEquals(Bitmap.Config.ARGB_8888, b.getConfig());
    b.setPixel(1, 1, 0x80112233);
    assertEquals(0x80112233, b.getPixel(1, 1));
    ByteBuffer out = ByteBuffer.allocate(24);
    b.copyPixelsToBuffer(out);
    assertEquals(24, out.position());
    int at = 12 + 4;
    assertEquals(0x11, out.get(at));
    assertEquals(0x22, out.get(at + 1));
    assertEquals(0x33, out.get(at + 2));
    assertEquals((byte) 0x80, out.get(at + 3));
  }

  @Test
  void buffersRoundTrip() {
    Bitmap b = Bitmap.createBitmap(2, 2, Bitmap.Config.ARGB_8888);
    ByteBuffer in = ByteBuffer.allocate(20);
    for (int i = 0; i < 20; i++) in.put(i, (byte) (i + 1));
    in.position(4);
    b.copyPixelsFromBuffer(in);
    assertEquals(20, in.position());
    // Bytes 5, 6, 7, 8 are pixel (0, 0): R 5, G 6, B 7, A 8.
    assertEquals(0x08050607, b.getPixel(0, 0));

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
  void otherConfigsAndBadArguments() {
    Bitmap b = Bitmap.createBitmap(4, 1, Bitmap.Config.RGB_565);
    assertEquals(8, b.getRowBytes());
    b.setPixel(0, 0, 0xffff0000);
    assertEquals(0xffff0000, b.getPixel(0, 0));
    b.setPixel(1, 0, 0xff0000ff);
    assertEquals(0xff0000ff, b.getPixel(1, 0));
    assertThrows(IllegalArgumentException.class, () -> b.getPixel(4, 0));
    assertThrows(IllegalArgumentException.class, () -> b.setPixel(0, -1, 0));
    assertThrows(IllegalArgumentException.class, () -> Bitmap.createBitmap(0, 1, Bitmap.Config.ARGB_8888));
  }
}
