package android.graphics;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.nio.ByteBuffer;
import org.junit.jupiter.api.Test;

class BitmapTest {
  /** Pixels are R, G, B, A in buffers; copies start at the buffer's position and advance it. */
  @Test
  void argbPixelsAreRgbaInBuffers() {
    Bitmap b = Bitmap.createBitmap(2, 2, Bitmap.Config.ARGB_8888);
    assertEquals(8, b.getRowBytes());
    ByteBuffer in = ByteBuffer.allocate(20);
    for (int i = 0; i < 20; i++) in.put(i, (byte) (i + 1));
    b.copyPixelsFromBuffer(in.position(4));
    assertEquals(20, in.position());
    assertEquals(0x08050607, b.getPixel(0, 0));
    b.setPixel(1, 1, 0x80112233);
    ByteBuffer out = ByteBuffer.allocate(16);
    b.copyPixelsToBuffer(out);
    assertEquals(0x11223380, out.getInt(12));
    assertThrows(RuntimeException.class, () -> b.copyPixelsToBuffer(ByteBuffer.allocate(15)));
  }
}
