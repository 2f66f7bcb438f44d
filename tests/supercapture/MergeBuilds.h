#pragma once

#include <cstddef>
#include <cstdint>

// One build of the block merge kernels (portable, NEON).
struct MergeBuild {
  const char* name;
  size_t (*max)(int32_t* acc, const uint8_t* src, size_t n);
  size_t (*copy)(int32_t* acc, const uint8_t* src, size_t n);
  size_t (*add)(int32_t* acc, const uint8_t* src, size_t n);
  size_t (*lowBits)(uint8_t* dst, const int32_t* acc, size_t n);
  size_t (*mean)(uint8_t* dst, const int32_t* acc, size_t n, int32_t count);
};
