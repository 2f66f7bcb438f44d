#pragma once

#include <cstdint>
#include <string>

// Pictures for people to look at, and the captions the gallery page shows
// beside them.
namespace demo {

// PNG through libpng. channels: 1 gray, 3 RGB, 4 RGBA; rows tightly packed.
bool writePng(const std::string& path, const uint8_t* pixels, int width, int height, int channels);

// Adds the picture at `path` to the gallery of its folder (gallery.tsv, read
// by make-gallery): which subsystem made it, through which entry point, and
// what it shows, figures included. Tabs and newlines in the texts become spaces.
void caption(const std::string& path, const std::string& subsystem, const std::string& entryPoint,
             const std::string& text);

}  // namespace demo
