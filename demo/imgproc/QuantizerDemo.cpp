// Reduces the sample photograph to 16 and 64 colours: the photo, our result
// and libimagequant's (no dithering) side by side, each palette as swatches
// underneath, with the mean squared error of both.
#include <libimagequant.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "imgproc/ColorQuantizer.h"
#include "support/PictureWriter.h"
#include "support/SamplePhoto.h"

namespace {

struct Reduced {
  std::vector<unsigned char> palette;  // RGB
  std::vector<unsigned char> indices;
  int count = 0;
};

Reduced ours(const demo::RgbPhoto& photo, int colors) {
  Reduced r;
  r.palette.resize(3 * 256);
  r.indices.resize((size_t)photo.width * photo.height);
  r.count = color_quantize(photo.rgb.data(), photo.width, photo.height, 3, colors, r.palette.data(),
                           r.indices.data());
  return r;
}

Reduced libimagequant(const demo::RgbPhoto& photo, int colors) {
  Reduced r;
  std::vector<unsigned char> rgba = demo::toRgba(photo);
  r.indices.resize((size_t)photo.width * photo.height);
  liq_attr* attr = liq_attr_create();
  liq_set_max_colors(attr, colors);
  liq_image* img = liq_image_create_rgba(attr, rgba.data(), photo.width, photo.height, 0);
  liq_result* res = nullptr;
  if (liq_image_quantize(img, attr, &res) == LIQ_OK) {
    liq_set_dithering_level(res, 0);
    liq_write_remapped_image(res, img, r.indices.data(), r.indices.size());
    const liq_palette* pal = liq_get_palette(res);
    r.count = (int)pal->count;
    for (unsigned k = 0; k < pal->count; ++k)
      r.palette.insert(r.palette.end(), {pal->entries[k].r, pal->entries[k].g, pal->entries[k].b});
    liq_result_destroy(res);
  }
  liq_image_destroy(img);
  liq_attr_destroy(attr);
  return r;
}

double mse(const demo::RgbPhoto& photo, const Reduced& r) {
  double sum = 0;
  for (size_t i = 0; i < r.indices.size(); ++i)
    for (int c = 0; c < 3; ++c) {
      const double d = double(photo.rgb[3 * i + c]) - r.palette[3 * r.indices[i] + c];
      sum += d * d;
    }
  return sum / (3.0 * r.indices.size());
}

// Panel `col` of a canvas three photos wide: the picture, then the palette in
// rows of 16 swatches below it (white when there is none).
void drawPanel(std::vector<unsigned char>& canvas, int canvasW, int col, const demo::RgbPhoto& photo,
               const Reduced* r) {
  const int w = photo.width, h = photo.height, sw = w / 16;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const size_t i = (size_t)y * w + x;
      const unsigned char* px = r ? &r->palette[3 * r->indices[i]] : &photo.rgb[3 * i];
      std::copy_n(px, 3, &canvas[((size_t)y * canvasW + col * w + x) * 3]);
    }
  if (r == nullptr) return;
  for (int k = 0; k < r->count; ++k) {
    const int x0 = col * w + (k % 16) * sw + 2, y0 = h + 4 + (k / 16) * sw;
    for (int y = y0; y < y0 + sw - 4; ++y)
      for (int x = x0; x < x0 + sw - 4; ++x)
        std::copy_n(&r->palette[3 * k], 3, &canvas[((size_t)y * canvasW + x) * 3]);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::string out;
  demo::RgbPhoto photo;
  if (int failed = demo::startSampleDemo(argc, argv, "coffee.jpg", &out, &photo)) return failed;
  bool ok = true;
  for (int colors : {16, 64}) {
    const Reduced a = ours(photo, colors), b = libimagequant(photo, colors);
    if (a.count <= 0 || b.count <= 0) {
      fprintf(stderr, "quantization to %d colours failed\n", colors);
      return 1;
    }
    printf("%d colours: MSE ours %.2f (%d entries), libimagequant %.2f (%d entries)\n", colors, mse(photo, a),
           a.count, mse(photo, b), b.count);
    const int canvasW = 3 * photo.width, rows = (std::max(a.count, b.count) + 15) / 16;
    const int canvasH = photo.height + 8 + rows * (photo.width / 16);
    std::vector<unsigned char> canvas((size_t)canvasW * canvasH * 3, 255);
    drawPanel(canvas, canvasW, 0, photo, nullptr);
    drawPanel(canvas, canvasW, 1, photo, &a);
    drawPanel(canvas, canvasW, 2, photo, &b);
    const std::string path = out + "/quantizer-" + std::to_string(colors) + ".png";
    if (demo::writePng(path, canvas.data(), canvasW, canvasH, 3)) {
      printf("  %s (photo | ours | libimagequant)\n", path.c_str());
      char text[200];
      snprintf(text, sizeof text,
               "The photograph reduced to %d colours with its palette swatches: original, ours (MSE %.2f), "
               "libimagequant without dithering (MSE %.2f).",
               colors, mse(photo, a), mse(photo, b));
      demo::caption(path, "CPU image processing", "ColorQuantizer::getPalette, color_quantize", text);
    } else {
      fprintf(stderr, "cannot write %s\n", path.c_str());
      ok = false;
    }
  }
  return ok ? 0 : 1;
}
