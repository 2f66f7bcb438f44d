#pragma once

#include <string>
#include <vector>

// The bundled sample photographs, decoded with the library's JPEG decoder.
namespace demo {

// An RGB photograph, rows packed.
struct RgbPhoto {
  int width = 0;
  int height = 0;
  std::vector<unsigned char> rgb;
};

// $OV_SAMPLES/name, or samples/name when the variable is unset.
std::string samplePath(const char* name);

// Decodes samplePath(name); gray files are spread to three equal channels.
// Empty on failure (with a message).
RgbPhoto loadSamplePhoto(const char* name);

// The photo with an opaque alpha channel added.
std::vector<unsigned char> toRgba(const RgbPhoto& photo);

// Nearest-neighbour resize, enough for making demo inputs of camera sizes.
RgbPhoto resizeNearest(const RgbPhoto& src, int width, int height);

}  // namespace demo
