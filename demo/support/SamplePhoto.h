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

// Start of a demo run as `demo-x OUTPUT_DIR` on one sample: fills the output
// folder and the photo and answers 0, or the exit code (2 usage, 1 no photo).
int startSampleDemo(int argc, char** argv, const char* sample, std::string* folder, RgbPhoto* photo);

// The photo with an opaque alpha channel added.
std::vector<unsigned char> toRgba(const RgbPhoto& photo);

// Nearest-neighbour resize, enough for making demo inputs of camera sizes.
RgbPhoto resizeNearest(const RgbPhoto& src, int width, int height);

}  // namespace demo
