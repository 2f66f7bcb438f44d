#include <stddef.h>
#include <stdint.h>

#include "core/SizeRule.h"
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
  if (orvan::sizerule::intCount(count, 4) < 0) return;  // negative, or bytes beyond an int
  // Whole groups of eight only; the count % 8 tail is left unblended.
  const int groups = count / 8;
  // 256 - alpha in an 8-bit lane: alpha = 0 wraps to a factor of 0.
  const uint8x8_t keep = vdup_n_u8((uint8_t)(256u - (uint32_t)alpha));
  // The colour products in 16-bit lanes, laid out like two pixels (R, G, B, -)
  // so the pixels are blended where they lie. Plain loads and stores instead
  // of a de-interleaving vld4: the lane arithmetic is the same, and SIMDe can
  // translate these one-for-one to SSE where its vld4/vst4 are scalar loops.
  const uint16_t pr = (uint16_t)((uint32_t)alpha * (uint32_t)r);
  const uint16_t pg = (uint16_t)((uint32_t)alpha * (uint32_t)g);
  const uint16_t pb = (uint16_t)((uint32_t)alpha * (uint32_t)b);
  const uint16_t lanes[8] = {pr, pg, pb, 0, pr, pg, pb, 0};
  const uint16x8_t colour = vld1q_u16(lanes);
  // Byte 3 of every pixel comes from the original.
  static const uint8_t kColourBytes[16] = {255, 255, 255, 0, 255, 255, 255, 0,
                                           255, 255, 255, 0, 255, 255, 255, 0};
  const uint8x16_t mask = vld1q_u8(kColourBytes);
  uint8_t* p = pixels;
  for (int i = 0; i < groups; ++i, p += 32) {
    const uint8x16_t a = vld1q_u8(p);
    const uint8x16_t b4 = vld1q_u8(p + 16);
    const uint8x16_t ba = vcombine_u8(vshrn_n_u16(vmlal_u8(colour, vget_low_u8(a), keep), 8),
                                      vshrn_n_u16(vmlal_u8(colour, vget_high_u8(a), keep), 8));
    const uint8x16_t bb = vcombine_u8(vshrn_n_u16(vmlal_u8(colour, vget_low_u8(b4), keep), 8),
                                      vshrn_n_u16(vmlal_u8(colour, vget_high_u8(b4), keep), 8));
    vst1q_u8(p, vbslq_u8(mask, ba, a));
    vst1q_u8(p + 16, vbslq_u8(mask, bb, b4));
  }
}
