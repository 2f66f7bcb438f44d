#include "support/PictureWriter.h"

#include <png.h>

#include <cstdio>

namespace demo {

bool writePng(const std::string& path, const uint8_t* pixels, int width, int height, int channels) {
  static const png_uint_32 kFormat[5] = {0, PNG_FORMAT_GRAY, 0, PNG_FORMAT_RGB, PNG_FORMAT_RGBA};
  if (pixels == nullptr || width <= 0 || height <= 0 || channels < 1 || channels > 4 || channels == 2)
    return false;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = kFormat[channels];
  const bool ok = png_image_write_to_file(&image, path.c_str(), 0, pixels, 0, nullptr) != 0;
  png_image_free(&image);
  return ok;
}

void caption(const std::string& path, const std::string& subsystem, const std::string& entryPoint,
             const std::string& text) {
  const size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash);
  const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  std::string line = subsystem + '\t' + name + '\t' + entryPoint + '\t';
  for (char c : text) line += (c == '\t' || c == '\n') ? ' ' : c;
  FILE* f = fopen((folder + "/gallery.tsv").c_str(), "a");
  if (f == nullptr) return;
  fprintf(f, "%s\n", line.c_str());
  fclose(f);
}

}  // namespace demo
