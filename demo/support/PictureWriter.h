#pragma once

#include <cstdint>
#include <string>

// Writes 8-bit pictures for people to look at: PNG (self-contained, stored
// deflate blocks, no library needed) and PGM/PPM.
namespace demo {

// channels: 1 gray, 3 RGB, 4 RGBA; rows tightly packed.
bool writePng(const std::string& path, const uint8_t* pixels, int width, int height, int channels);
// channels: 1 (PGM) or 3 (PPM).
bool writePnm(const std::string& path, const uint8_t* pixels, int width, int height, int channels);

}  // namespace demo
