#pragma once

#include <cstddef>
#include <cstdint>

// The per-byte loops behind the two merge schemes. Each works sixteen bytes
// per step (bytes widened to four vectors of four 32-bit lanes) with a scalar
// tail, and gives exactly the result of the plain per-byte definition.
namespace supercapture {

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

}  // namespace supercapture
