// Runs the sample photograph through every filter off screen and writes a
// labelled contact sheet: demo-filters <output folder>. Reads
// $OV_SAMPLES/coffee.jpg.
#include <dlfcn.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "filters/ImageFilters.h"
#include "image/FlatImage.h"
#include "support/PictureWriter.h"
#include "support/SamplePhoto.h"

namespace {

// On a host X server started without -noreset, the server resets whenever its
// last client leaves and refuses connections meanwhile, and Mesa's first
// eglInitialize may close and reopen its connection while probing drivers. A
// connection held for the whole run keeps the server from resetting. (libX11
// is looked up at run time: Android has none.)
void holdWindowSystem() {
  void* x11 = dlopen("libX11.so.6", RTLD_LAZY);
  if (x11 == nullptr) return;
  using OpenDisplay = void* (*)(const char*);
  auto open = reinterpret_cast<OpenDisplay>(dlsym(x11, "XOpenDisplay"));
  if (open != nullptr) open(nullptr);  // kept until the process exits
}

// --- a 5 x 7 bitmap font for the labels ----------------------------------

struct Glyph {
  char c;
  const char* rows[7];
};

const Glyph kFont[] = {
    {'A', {" ### ", "#   #", "#   #", "#####", "#   #", "#   #", "#   #"}},
    {'B', {"#### ", "#   #", "#   #", "#### ", "#   #", "#   #", "#### "}},
    {'C', {" ### ", "#   #", "#    ", "#    ", "#    ", "#   #", " ### "}},
    {'D', {"#### ", "#   #", "#   #", "#   #", "#   #", "#   #", "#### "}},
    {'E', {"#####", "#    ", "#    ", "#### ", "#    ", "#    ", "#####"}},
    {'F', {"#####", "#    ", "#    ", "#### ", "#    ", "#    ", "#    "}},
    {'G', {" ### ", "#   #", "#    ", "# ###", "#   #", "#   #", " ####"}},
    {'H', {"#   #", "#   #", "#   #", "#####", "#   #", "#   #", "#   #"}},
    {'I', {" ### ", "  #  ", "  #  ", "  #  ", "  #  ", "  #  ", " ### "}},
    {'L', {"#    ", "#    ", "#    ", "#    ", "#    ", "#    ", "#####"}},
    {'M', {"#   #", "## ##", "# # #", "# # #", "#   #", "#   #", "#   #"}},
    {'N', {"#   #", "##  #", "# # #", "#  ##", "#   #", "#   #", "#   #"}},
    {'O', {" ### ", "#   #", "#   #", "#   #", "#   #", "#   #", " ### "}},
    {'P', {"#### ", "#   #", "#   #", "#### ", "#    ", "#    ", "#    "}},
    {'R', {"#### ", "#   #", "#   #", "#### ", "# #  ", "#  # ", "#   #"}},
    {'S', {" ####", "#    ", "#    ", " ### ", "    #", "    #", "#### "}},
    {'T', {"#####", "  #  ", "  #  ", "  #  ", "  #  ", "  #  ", "  #  "}},
    {'U', {"#   #", "#   #", "#   #", "#   #", "#   #", "#   #", " ### "}},
    {'V', {"#   #", "#   #", "#   #", "#   #", "#   #", " # # ", "  #  "}},
    {'X', {"#   #", "#   #", " # # ", "  #  ", " # # ", "#   #", "#   #"}},
    {'Y', {"#   #", "#   #", " # # ", "  #  ", "  #  ", "  #  ", "  #  "}},
    {'(', {"   # ", "  #  ", " #   ", " #   ", " #   ", "  #  ", "   # "}},
    {')', {" #   ", "  #  ", "   # ", "   # ", "   # ", "  #  ", " #   "}},
};

const Glyph* glyph(char c) {
  for (const Glyph& g : kFont) {
    if (g.c == c) return &g;
  }
  return nullptr;  // blank (space and anything unknown)
}

// Draws text into an RGB picture, each font pixel a scale x scale square.
void drawText(std::vector<uint8_t>& rgb, int width, int height, int x0, int y0, const std::string& text,
              int scale) {
  for (size_t i = 0; i < text.size(); ++i) {
    const Glyph* g = glyph(text[i]);
    if (g == nullptr) continue;
    int gx = x0 + static_cast<int>(i) * 6 * scale;
    for (int row = 0; row < 7; ++row) {
      for (int col = 0; col < 5; ++col) {
        if (g->rows[row][col] != '#') continue;
        for (int dy = 0; dy < scale; ++dy) {
          for (int dx = 0; dx < scale; ++dx) {
            int x = gx + col * scale + dx, y = y0 + row * scale + dy;
            if (x < 0 || y < 0 || x >= width || y >= height) continue;
            memset(&rgb[(size_t(y) * width + x) * 3], 240, 3);
          }
        }
      }
    }
  }
}

// --- the photograph and the filters ----------------------------------------

// A teal-and-orange grade with a gentle S-curve, written as a 4096 x 64
// lookup bitmap: row r, block g, column b hold the graded (r, g, b).
std::vector<uint8_t> gradedTable() {
  std::vector<uint8_t> lut(4096 * 64 * 4);
  auto curve = [](double v) { return v - 0.06 * std::sin(2 * M_PI * v); };
  for (int r = 0; r < 64; ++r) {
    for (int g = 0; g < 64; ++g) {
      for (int b = 0; b < 64; ++b) {
        double in[3] = {r / 63.0, g / 63.0, b / 63.0};
        double luma = 0.299 * in[0] + 0.587 * in[1] + 0.114 * in[2];
        // Shadows lean teal, highlights orange.
        double shift[3] = {0.10 * (luma - 0.5), 0.02 * (luma - 0.5), -0.12 * (luma - 0.5)};
        uint8_t* p = &lut[((size_t(r) * 4096) + g * 64 + b) * 4];
        for (int c = 0; c < 3; ++c) {
          double v = curve(in[c]) + shift[c];
          v = v < 0 ? 0 : (v > 1 ? 1 : v);
          p[c] = static_cast<uint8_t>(std::lround(v * 255));
        }
        p[3] = 255;
      }
    }
  }
  return lut;
}

struct Tile {
  std::string label;
  std::vector<uint8_t> rgba;
};

// Off screen, as FiltersRender.nativeCreate/nativeProcess do, with the
// texture coordinates set upright so the sheet reads the right way up.
bool runFilter(const char* name, const std::vector<uint8_t>& in, int w, int h, flat::Image* lut,
               std::vector<uint8_t>& out) {
  auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter(name));
  if (f == nullptr || !f->initEngine() || !f->setupGraphics(1)) return false;
  float upright[8] = {0, 0, 1, 0, 0, 1, 1, 1};
  f->setParameters("mTexVertices", upright);
  if (lut != nullptr) f->setParameters("mFilterBitmap", lut);
  out = in;
  f->process(out.data(), w, h);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  holdWindowSystem();
  std::string out;
  demo::RgbPhoto sample;
  if (int failed = demo::startSampleDemo(argc, argv, "coffee.jpg", &out, &sample)) return failed;
  const int w = sample.width, h = sample.height;
  const std::vector<uint8_t> photo = demo::toRgba(sample);

  std::vector<Tile> tiles;
  tiles.push_back({"ORIGINAL", photo});
  const struct {
    const char* name;
    const char* label;
  } filters[] = {{"ImageFilterNone", "NONE"},
                 {"ImageFilterXray", "XRAY"},
                 {"ImageFilterTemperature", "TEMPERATURE"},
                 {"ImageFilterMirror", "MIRROR"},
                 {"ImageFilterTimetunnel", "TIMETUNNEL"},
                 {"ImageFilterDistorted", "DISTORTED"},
                 {"ImageFilterExtrusion", "EXTRUSION"},
                 {"ImageFilterTable", "TABLE (IDENTITY)"}};
  for (const auto& f : filters) {
    Tile t{f.label, {}};
    if (!runFilter(f.name, photo, w, h, nullptr, t.rgba)) {
      fprintf(stderr, "%s failed\n", f.name);
      return 1;
    }
    tiles.push_back(t);
  }
  std::vector<uint8_t> lut = gradedTable();
  flat::Image* record = ov_createImage(4096, 64, 4, 4096 * 4, lut.data());
  Tile graded{"TABLE (GRADE)", {}};
  bool ok = record != nullptr && runFilter("ImageFilterTable", photo, w, h, record, graded.rgba);
  ov_releaseImage(record);
  if (!ok) {
    fprintf(stderr, "graded table failed\n");
    return 1;
  }
  tiles.push_back(graded);

  // Half-size tiles, five to a row, each with its label underneath.
  const int tw = w / 2, th = h / 2, pad = 8, labelH = 7 * 2 + 8, cols = 5;
  const int rows = static_cast<int>((tiles.size() + cols - 1) / cols);
  const int sw = cols * (tw + pad) + pad, sh = rows * (th + labelH + pad) + pad;
  std::vector<uint8_t> sheet(size_t(sw) * sh * 3, 32);
  for (size_t i = 0; i < tiles.size(); ++i) {
    int x0 = pad + static_cast<int>(i % cols) * (tw + pad);
    int y0 = pad + static_cast<int>(i / cols) * (th + labelH + pad);
    // Halved with a 2 x 2 box. With upright texture coordinates the filtered
    // rows come back in the photograph's own order (top row first).
    for (int y = 0; y < th; ++y) {
      for (int x = 0; x < tw; ++x) {
        for (int c = 0; c < 3; ++c) {
          int sum = 0;
          for (int k = 0; k < 4; ++k) {
            int sy = 2 * y + k / 2, sx = 2 * x + k % 2;
            sum += tiles[i].rgba[(size_t(sy) * w + sx) * 4 + c];
          }
          sheet[(size_t(y0 + y) * sw + x0 + x) * 3 + c] = static_cast<uint8_t>((sum + 2) / 4);
        }
      }
    }
    drawText(sheet, sw, sh, x0, y0 + th + 5, tiles[i].label, 2);
  }
  const std::string path = out + "/filters-contact-sheet.png";
  if (!demo::writePng(path, sheet.data(), sw, sh, 3)) {
    fprintf(stderr, "cannot write %s\n", path.c_str());
    return 1;
  }
  printf("wrote %s (%d x %d, %zu filters)\n", path.c_str(), sw, sh, tiles.size() - 1);
  std::string names;
  for (size_t i = 1; i < tiles.size(); ++i) names += (i > 1 ? ", " : "") + std::string(tiles[i].label);
  demo::caption(path, "GPU filters", "ImageFilterFactory::createFilter, ImageFilterBaseGL::process",
                "The sample photograph (top left) through each still-picture filter on EGL/GLES 3: " + names +
                    "; the graded table is a 4096 x 64 lookup image.");
  return 0;
}
