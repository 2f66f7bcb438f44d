#pragma once

#include <cstddef>
#include <cstdint>

// The per-byte loops behind the two merge schemes. Each entry point runs the
// block kernel of this target (NEON on ARM, the portable vector kernel
// elsewhere) over whole blocks of sixteen bytes and the plain C kernel over
// the tail, and gives exactly the result of the per-byte definition.
namespace orvan::supercapture {

// acc[i] = max(acc[i], src[i]) as signed 32-bit values.
void mergeMax(int32_t* acc, const uint8_t* src, size_t n);
// acc[i] = src[i].
void mergeCopy(int32_t* acc, const uint8_t* src, size_t n);
// acc[i] += src[i], wrapping modulo 2^32.
void mergeAdd(int32_t* acc, const uint8_t* src, size_t n);
// dst[i] = low 8 bits of acc[i].
void resultLowBits(uint8_t* dst, const int32_t* acc, size_t n);
// dst[i] = clamp(acc[i] / count, 0, 255), signed division truncating toward
// zero; count must not be 0.
void resultMean(uint8_t* dst, const int32_t* acc, size_t n, int32_t count);

// The kernels behind them. The C kernels are the per-byte definitions; the
// block kernels do whole blocks of 16 bytes and return how many bytes they
// did (resultMean's only for counts they can divide exactly, else 0).
void mergeMax_C(int32_t* acc, const uint8_t* src, size_t n);
void mergeCopy_C(int32_t* acc, const uint8_t* src, size_t n);
void mergeAdd_C(int32_t* acc, const uint8_t* src, size_t n);
void resultLowBits_C(uint8_t* dst, const int32_t* acc, size_t n);
void resultMean_C(uint8_t* dst, const int32_t* acc, size_t n, int32_t count);

// GCC/Clang vector extensions (SSE2 on x86).
size_t mergeMax_Portable(int32_t* acc, const uint8_t* src, size_t n);
size_t mergeCopy_Portable(int32_t* acc, const uint8_t* src, size_t n);
size_t mergeAdd_Portable(int32_t* acc, const uint8_t* src, size_t n);
size_t resultLowBits_Portable(uint8_t* dst, const int32_t* acc, size_t n);
size_t resultMean_Portable(uint8_t* dst, const int32_t* acc, size_t n, int32_t count);

// NEON intrinsics (supercapture/MergeKernelsNEON.cpp; on x86 built through
// SIMDe for the tests only).
#if defined(__ARM_NEON) || defined(__ARM_NEON__) || defined(OV_NEON_VIA_SIMDE)
#define OV_HAVE_NEON_MERGE 1
size_t mergeMax_NEON(int32_t* acc, const uint8_t* src, size_t n);
size_t mergeCopy_NEON(int32_t* acc, const uint8_t* src, size_t n);
size_t mergeAdd_NEON(int32_t* acc, const uint8_t* src, size_t n);
size_t resultLowBits_NEON(uint8_t* dst, const int32_t* acc, size_t n);
size_t resultMean_NEON(uint8_t* dst, const int32_t* acc, size_t n, int32_t count);
#else
#define OV_HAVE_NEON_MERGE 0
#endif

}  // namespace orvan::supercapture
