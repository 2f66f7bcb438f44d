// Stamps a date and time into the sample photograph held as YUYV, at its own
// size and at two camera sizes (one per glyph set), and writes viewable PNGs.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "image/ColorConvert.h"
#include "support/PictureWriter.h"
#include "support/SamplePhoto.h"
#include "watermark/TimestampWatermark.h"

namespace {

// The library picks the glyph set by aspect: 100 x long / short in 173..181.
bool sixteenByNine(int w, int h) {
  const int q = 100 * std::max(w, h) / std::min(w, h);
  return q >= 173 && q <= 181;
}

bool stampAndWrite(const demo::RgbPhoto& photo, const std::string& path) {
  const int w = photo.width, h = photo.height;
  std::vector<unsigned char> yuyv(size_t(w) * h * 2);
  std::vector<unsigned char> rgb(size_t(w) * h * 3);
  if (!color_convert_rgb2yuyv(photo.rgb.data(), yuyv.data(), w, h)) return false;
  const int result = make_photo_timestamp_watermark_to_yuyv(yuyv.data(), w, h, "2016-01-01 12:00");
  if (!color_convert_yuyv2rgb(yuyv.data(), rgb.data(), w, h)) return false;
  printf("%dx%d: make_photo_timestamp_watermark_to_yuyv -> %d, %s\n", w, h, result, path.c_str());
  demo::caption(path, "Timestamp watermark", "make_photo_timestamp_watermark_to_yuyv",
                "\"2016-01-01 12:00\" stamped into the photograph held as YUYV at " + std::to_string(w) +
                    " x " + std::to_string(h) + " (" + (sixteenByNine(w, h) ? "16:9" : "4:3") +
                    " glyph set), shown as RGB.");
  return result == 1 && demo::writePng(path, rgb.data(), w, h, 3);
}

}  // namespace

int main(int argc, char** argv) {
  std::string out;
  demo::RgbPhoto photo;
  if (int failed = demo::startSampleDemo(argc, argv, "coffee.jpg", &out, &photo)) return failed;
  bool ok = stampAndWrite(photo, out + "/watermark_coffee.png");
  // 4:3 and 16:9 camera sizes, where the glyphs are drawn larger.
  ok = stampAndWrite(demo::resizeNearest(photo, 2000, 1500), out + "/watermark_coffee_4x3.png") && ok;
  ok = stampAndWrite(demo::resizeNearest(photo, 1920, 1080), out + "/watermark_coffee_16x9.png") && ok;
  return ok ? 0 : 1;
}
