#pragma once

#include "core/Export.h"

// Colour quantizer after Wu's greedy orthogonal bipartition.
//
// Colours are counted into a 32x32x32 histogram (the top five bits of each
// channel select the cell); every cell keeps its pixel count, the sums of its
// red, green and blue values and the sum of r^2 + g^2 + b^2, all exact 64-bit
// integers. prepare() turns the histogram into cumulative moments, from which
// the count, sums and variance of any box of cells come in constant time.
// getPalette() starts from the whole cube and repeatedly splits the box of
// largest variance at the plane that leaves the smallest summed variance,
// until it has maxColors boxes or no box holds two occupied cells. Each box
// gives one palette entry: the mean of the pixels it holds, each channel
// rounded to nearest with halves up, floor((2 * sum + count) / (2 * count)).
//
// Pixels are 3 (RGB) or 4 (RGBA, alpha ignored) bytes, rows packed.
// Everything is deterministic. The tables (about 4 MB) are allocated by the
// constructor; nothing else allocates. One object serves one thread at a time.
//
// Failures return -1 and change nothing: the object failed to allocate its
// tables, a null buffer, a size that is not positive, channels other than
// 3 or 4, a byte count above 2^31 - 1 (the int sizes of the interface),
// maxColors or a palette count outside 1..256, getPalette() without a
// prepare() after the last change, or adding pixels beyond kMaxPixels in total.
class OV_EXPORT ColorQuantizer {
 public:
  enum {
    kMaxColors = 256,
    kCells = 32,  // cells per channel
  };
  // Total pixels one histogram accepts (keeps every moment exact in 64 bits).
  static constexpr unsigned long long kMaxPixels = 1ull << 40;

  ColorQuantizer();
  virtual ~ColorQuantizer();
  ColorQuantizer(const ColorQuantizer&) = delete;
  ColorQuantizer& operator=(const ColorQuantizer&) = delete;

  // False when the constructor could not allocate the tables.
  bool isValid() const;
  // Empties the histogram.
  void reset();

  // One colour; returns 0, or -1 when the histogram is full.
  int addColor(unsigned char r, unsigned char g, unsigned char b);
  // Every pixel of a picture (channels 3 or 4); returns 0 or -1.
  int addColor(const unsigned char* pixels, int width, int height, int channels);

  // Cumulative moments of the histogram as it is now; returns 0 or -1.
  int prepare();

  // Writes up to maxColors RGB entries (3 bytes each) into palette and returns
  // how many: fewer when the histogram has fewer occupied cells, 0 when it is
  // empty. Needs prepare() after the last addColor() or reset().
  int getPalette(int maxColors, unsigned char* palette);

  // Writes for every pixel the index of its nearest palette entry (squared
  // RGB distance; the lowest index wins a tie), one byte per pixel, into
  // indices. The palette is `count` RGB entries, for example from getPalette().
  // Returns 0 or -1. Does not use or change the histogram.
  int mapToPalette(const unsigned char* pixels, int width, int height, int channels,
                   const unsigned char* palette, int count, unsigned char* indices);

 private:
  struct Tables;
  Tables* mTables;
  unsigned long long mPixels;  // pixels counted since the last reset
  bool mPrepared;              // moments match the histogram
};

// color_quantize, the one-shot C form, is declared in orvan/orvan.h.
#include "orvan/orvan.h"
