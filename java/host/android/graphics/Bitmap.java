package android.graphics;

import java.nio.Buffer;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.IntBuffer;
import java.nio.ShortBuffer;

/**
 * Host stand-in for the part of Android's Bitmap that the camera code uses.
 *
 * <p>Pixels are kept in a direct ByteBuffer in the layout Android uses in memory (ARGB_8888 is the
 * bytes R, G, B, A), so the host libjnigraphics can hand native code their address while the
 * bitmap is locked, and whatever native code writes there is what getPixel and copyPixelsToBuffer
 * see. Colours are stored as given (not premultiplied). The field names are read by the native
 * stand-in: do not rename them.
 */
public final class Bitmap {
  /** Pixel configurations; the codes are the NDK's ANDROID_BITMAP_FORMAT_* values. */
  public enum Config {
    ALPHA_8(8, 1),
    RGB_565(4, 2),
    ARGB_8888(1, 4);

    final int nativeFormat;
    final int bytesPerPixel;

    Config(int nativeFormat, int bytesPerPixel) {
      this.nativeFormat = nativeFormat;
      this.bytesPerPixel = bytesPerPixel;
    }
  }

  private final int mWidth;
  private final int mHeight;
  private final int mRowBytes;
  private final int mFormat;
  private final Config mConfig;
  private final ByteBuffer mBuffer;
  private int mLockCount;

  private Bitmap(int width, int height, int rowBytes, Config config) {
    if (config == null) throw new NullPointerException("config must not be null");
    if (width <= 0 || height <= 0) throw new IllegalArgumentException("width and height must be > 0");
    if (rowBytes < width * (long) config.bytesPerPixel) {
      throw new IllegalArgumentException("rowBytes too small for width");
    }
    long bytes = (long) rowBytes * height;
    if (bytes > Integer.MAX_VALUE) throw new IllegalArgumentException("bitmap too large");
    mWidth = width;
    mHeight = height;
    mRowBytes = rowBytes;
    mConfig = config;
    mFormat = config.nativeFormat;
    mBuffer = ByteBuffer.allocateDirect((int) bytes).order(ByteOrder.nativeOrder());
  }

  public static Bitmap createBitmap(int width, int height, Config config) {
    return new Bitmap(width, height, config == null ? 0 : width * config.bytesPerPixel, config);
  }

  /**
   * Host only: a bitmap whose rows are padded to rowBytes, which Android never produces for these
   * configurations; lets tests check that native code honours the stride it is given.
   */
  public static Bitmap createPaddedBitmap(int width, int height, int rowBytes, Config config) {
    return new Bitmap(width, height, rowBytes, config);
  }

  public int getWidth() {
    return mWidth;
  }

  public int getHeight() {
    return mHeight;
  }

  public int getRowBytes() {
    return mRowBytes;
  }

  public int getByteCount() {
    return mRowBytes * mHeight;
  }

  public Config getConfig() {
    return mConfig;
  }

  /** Host only: how many native locks are held on the pixels right now. */
  public int getLockCount() {
    return mLockCount;
  }

  /** Copies getByteCount() bytes from the buffer's position, which then moves past them. */
  public void copyPixelsFromBuffer(Buffer src) {
    int shift = elementShift(src);
    long needed = getByteCount();
    if (((long) src.remaining() << shift) < needed) {
      throw new RuntimeException("Buffer not large enough for pixels");
    }
    ByteBuffer dst = mBuffer.duplicate().order(ByteOrder.nativeOrder());
    dst.clear();
    if (src instanceof ByteBuffer) {
      ByteBuffer s = (ByteBuffer) src;
      ByteBuffer part = s.duplicate();
      part.limit(part.position() + (int) needed);
      dst.put(part);
      s.position(s.position() + (int) needed);
    } else if (src instanceof ShortBuffer) {
      ShortBuffer s = (ShortBuffer) src;
      ShortBuffer part = s.duplicate();
      part.limit(part.position() + (int) (needed >> 1));
      dst.asShortBuffer().put(part);
      s.position(s.position() + (int) (needed >> 1));
    } else {
      IntBuffer s = (IntBuffer) src;
      IntBuffer part = s.duplicate();
      part.limit(part.position() + (int) (needed >> 2));
      dst.asIntBuffer().put(part);
      s.position(s.position() + (int) (needed >> 2));
    }
  }

  /** Copies getByteCount() bytes to the buffer's position, which then moves past them. */
  public void copyPixelsToBuffer(Buffer dst) {
    int shift = elementShift(dst);
    long needed = getByteCount();
    if (((long) dst.remaining() << shift) < needed) {
      throw new RuntimeException("Buffer not large enough for pixels");
    }
    ByteBuffer src = mBuffer.duplicate().order(ByteOrder.nativeOrder());
    src.clear();
    if (dst instanceof ByteBuffer) {
      ((ByteBuffer) dst).put(src);
    } else if (dst instanceof ShortBuffer) {
      ((ShortBuffer) dst).put(src.asShortBuffer());
    } else {
      ((IntBuffer) dst).put(src.asIntBuffer());
    }
  }

  /** The colour at (x, y) as ARGB. */
  public int getPixel(int x, int y) {
    int at = offset(x, y);
    switch (mConfig) {
      case ARGB_8888:
        {
          int r = mBuffer.get(at) & 0xff;
          int g = mBuffer.get(at + 1) & 0xff;
          int b = mBuffer.get(at + 2) & 0xff;
          int a = mBuffer.get(at + 3) & 0xff;
          return (a << 24) | (r << 16) | (g << 8) | b;
        }
      case RGB_565:
        {
          int v = mBuffer.getShort(at) & 0xffff;
          int r = (v >> 11) & 31;
          int g = (v >> 5) & 63;
          int b = v & 31;
          return 0xff000000 | (((r << 3) | (r >> 2)) << 16) | (((g << 2) | (g >> 4)) << 8) | ((b << 3) | (b >> 2));
        }
      default:
        return (mBuffer.get(at) & 0xff) << 24;
    }
  }

  /** Stores an ARGB colour at (x, y) in the bitmap's own layout. */
  public void setPixel(int x, int y, int color) {
    int at = offset(x, y);
    switch (mConfig) {
      case ARGB_8888:
        mBuffer.put(at, (byte) (color >> 16));
        mBuffer.put(at + 1, (byte) (color >> 8));
        mBuffer.put(at + 2, (byte) color);
        mBuffer.put(at + 3, (byte) (color >>> 24));
        break;
      case RGB_565:
        {
          int r = (color >> 16) & 0xff;
          int g = (color >> 8) & 0xff;
          int b = color & 0xff;
          mBuffer.putShort(at, (short) (((r >> 3) << 11) | ((g >> 2) << 5) | (b >> 3)));
          break;
        }
      default:
        mBuffer.put(at, (byte) (color >>> 24));
        break;
    }
  }

  private int offset(int x, int y) {
    if (x < 0 || x >= mWidth) throw new IllegalArgumentException("x must be >= 0 and < bitmap.width()");
    if (y < 0 || y >= mHeight) throw new IllegalArgumentException("y must be >= 0 and < bitmap.height()");
    return y * mRowBytes + x * mConfig.bytesPerPixel;
  }

  private static int elementShift(Buffer b) {
    if (b instanceof ByteBuffer) return 0;
    if (b instanceof ShortBuffer) return 1;
    if (b instanceof IntBuffer) return 2;
    throw new RuntimeException("unsupported Buffer subclass");
  }
}
