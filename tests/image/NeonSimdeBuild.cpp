// The NEON kernels on x86 through SIMDe's translation of the intrinsics (the
// same results as on ARM), in a namespace of their own.
#define OV_NEON_VIA_SIMDE 1
#define convert_row convert_row_neon
#include "image/ConvertRowsNEON.cpp"
#undef convert_row

#include "KernelBuilds.h"

KernelBuild neonSimdeBuild() {
  using namespace orvan::convert_row_neon;
  return {"NEON via SIMDe",        &NVQuadToRGBRow_NEON,  &I420QuadToRGBRow_NEON, &Packed422ToRGBRow_NEON,
          &RGBToPacked422Row_NEON, &RGBToNVBlockRow_NEON, &SplitPairsRow_NEON};
}
