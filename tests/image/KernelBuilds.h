#pragma once

#include <cstdint>
#include <vector>

// One build of the block kernels; a null entry is a layout the build has no
// kernel for. The builds are the portable kernels as built for this target
// and (on x86) as a compiler with byte shuffles builds them, the SSSE3
// kernels, and the NEON kernels (native on ARM, through SIMDe on x86).
struct KernelBuild {
  const char* name;
  int (*nvToRGB)(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, int quads, int uOffset);
  int (*i420ToRGB)(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, int quads);
  int (*packedToRGB)(const uint8_t* src, uint8_t* rgb, int pairs, int uOffset);
  int (*rgbToPacked)(const uint8_t* rgb, uint8_t* dst, int pairs, int uOffset);
  int (*rgbToNV)(const uint8_t* rgb0, const uint8_t* rgb1, uint8_t* y0, uint8_t* y1, uint8_t* chroma,
                 int blocks, int uOffset);
  int (*splitPairs)(const uint8_t* pairs, uint8_t* first, uint8_t* second, int n);
};

std::vector<KernelBuild> kernelBuilds();
