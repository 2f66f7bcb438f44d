// The portable kernels compiled for byte shuffles (this file gets -mssse3 on
// x86), in a namespace of their own so they sit beside the library's build.
#define convert_row convert_row_shuffles
#include "image/ConvertRowsPortable.cpp"
#undef convert_row

#include "KernelBuilds.h"

KernelBuild shuffleBuild() {
  return {"byte-shuffle build",
          &orvan::convert_row_shuffles::NVQuadToRGBRow_Portable,
          nullptr,
          &orvan::convert_row_shuffles::Packed422ToRGBRow_Portable,
          nullptr,
          &orvan::convert_row_shuffles::RGBToNVBlockRow_Portable,
          nullptr};
}
