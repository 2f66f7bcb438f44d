// NEON versions of the merge loops (ARMv7 NEON; the tests also build them on
// x86 through SIMDe). Sixteen bytes per step, widened with vmovl and folded
// into the accumulator with widening adds, lane maxima or narrowing moves.
#include "supercapture/MergeKernels.h"

#if OV_HAVE_NEON_MERGE

#if defined(__ARM_NEON) || defined(__ARM_NEON__)
#include <arm_neon.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/arm/neon.h>
#endif

namespace orvan::supercapture {
namespace {

// Sixteen bytes in four vectors of four 32-bit lanes, in order.
struct Wide {
  uint32x4_t v[4];
};

inline Wide widen16(const uint8_t* p) {
  const uint8x16_t b = vld1q_u8(p);
  const uint16x8_t lo = vmovl_u8(vget_low_u8(b)), hi = vmovl_u8(vget_high_u8(b));
  return {{vmovl_u16(vget_low_u16(lo)), vmovl_u16(vget_high_u16(lo)), vmovl_u16(vget_low_u16(hi)),
           vmovl_u16(vget_high_u16(hi))}};
}

// The low bytes of sixteen 32-bit lanes, in order.
inline void narrow16(uint8_t* p, const uint32x4_t v[4]) {
  const uint16x8_t lo = vcombine_u16(vmovn_u32(v[0]), vmovn_u32(v[1]));
  const uint16x8_t hi = vcombine_u16(vmovn_u32(v[2]), vmovn_u32(v[3]));
  vst1q_u8(p, vcombine_u8(vmovn_u16(lo), vmovn_u16(hi)));
}

}  // namespace

size_t mergeMax_NEON(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const Wide s = widen16(src + i);
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      int32_t* a = acc + i + 4 * k;
      vst1q_s32(a, vmaxq_s32(vld1q_s32(a), vreinterpretq_s32_u32(s.v[k])));
    }
  }
  return i;
}

size_t mergeCopy_NEON(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const Wide s = widen16(src + i);
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) vst1q_u32(reinterpret_cast<uint32_t*>(acc + i + 4 * k), s.v[k]);
  }
  return i;
}

size_t mergeAdd_NEON(int32_t* acc, const uint8_t* src, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    // Unsigned lanes wrap; vaddw widens the 16-bit source lanes on the way.
    const uint8x16_t b = vld1q_u8(src + i);
    const uint16x4_t q[4] = {vget_low_u16(vmovl_u8(vget_low_u8(b))), vget_high_u16(vmovl_u8(vget_low_u8(b))),
                             vget_low_u16(vmovl_u8(vget_high_u8(b))),
                             vget_high_u16(vmovl_u8(vget_high_u8(b)))};
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      uint32_t* a = reinterpret_cast<uint32_t*>(acc + i + 4 * k);
      vst1q_u32(a, vaddw_u16(vld1q_u32(a), q[k]));
    }
  }
  return i;
}

size_t resultLowBits_NEON(uint8_t* dst, const int32_t* acc, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const uint32_t* a = reinterpret_cast<const uint32_t*>(acc + i);
    const uint32x4_t v[4] = {vld1q_u32(a), vld1q_u32(a + 4), vld1q_u32(a + 8), vld1q_u32(a + 12)};
    narrow16(dst + i, v);
  }
  return i;
}

size_t resultMean_NEON(uint8_t* dst, const int32_t* acc, size_t n, int32_t count) {
  // ARMv7 NEON has neither division nor doubles. A single-precision estimate
  // of a / count (a clamped to 0..2^31) is within 3 * 2^-24 of the quotient
  // relatively, so below 257 it is off by at most one whole step; one
  // remainder test each way makes it exact. Capping the estimate at 256 keeps
  // 256 * count below 2^31 for count < 2^23, so the remainder never wraps.
  // Larger counts go to the C kernel.
  if (count <= 0 || count >= (1 << 23)) return 0;
  const float32x4_t reciprocal = vdupq_n_f32(1.0f / static_cast<float>(count));
  const int32x4_t divisor = vdupq_n_s32(count), zero = vdupq_n_s32(0);
  const uint32x4_t cap = vdupq_n_u32(256), top = vdupq_n_u32(255);
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    uint32x4_t v[4];
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      const int32x4_t a = vmaxq_s32(vld1q_s32(acc + i + 4 * k), zero);
      uint32x4_t q = vminq_u32(vcvtq_u32_f32(vmulq_f32(vcvtq_f32_s32(a), reciprocal)), cap);
      const int32x4_t r = vsubq_s32(a, vmulq_s32(vreinterpretq_s32_u32(q), divisor));
      q = vaddq_u32(q, vcltq_s32(r, zero));     // all ones: minus 1
      q = vsubq_u32(q, vcgeq_s32(r, divisor));  // all ones: plus 1
      v[k] = vminq_u32(q, top);
    }
    narrow16(dst + i, v);
  }
  return i;
}

}  // namespace orvan::supercapture

#endif  // OV_HAVE_NEON_MERGE
