// The NEON merge kernels on x86 through SIMDe's translation of the
// intrinsics, in a namespace of their own.
#define OV_NEON_VIA_SIMDE 1
#define supercapture supercapture_neon
#include "supercapture/MergeKernelsNEON.cpp"
#undef supercapture

#include "MergeBuilds.h"

MergeBuild neonSimdeMergeBuild() {
  using namespace orvan::supercapture_neon;
  return {"NEON via SIMDe", &mergeMax_NEON,      &mergeCopy_NEON,
          &mergeAdd_NEON,   &resultLowBits_NEON, &resultMean_NEON};
}
