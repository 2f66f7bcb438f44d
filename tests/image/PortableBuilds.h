#pragma once

#include <cstdint>
#include <vector>

// The portable kernels as built for this target, and (on x86 with SSSE3) as a
// compiler targeting byte shuffles builds them, which is the code NEON
// targets run.
struct PortableBuild {
  const char* name;
  int (*nvToRGB)(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset);
  int (*packedToRGB)(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset);
  int (*rgbToNV)(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                 int blocks, int uOffset);
};

std::vector<PortableBuild> portableBuilds();
