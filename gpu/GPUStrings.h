#pragma once

#include <cstring>

#include "core/Memory.h"

namespace orvan::gpu_internal {

// A zero-filled copy of length + extra bytes, or null.
inline char* copyString(const char* text, size_t extra) {
  size_t length = strlen(text);
  if (length + extra > 0xFFFFFFFFu) return nullptr;
  char* copy = static_cast<char*>(galloc_malloc(static_cast<unsigned>(length + extra)));
  if (copy == nullptr) return nullptr;
  memset(copy, 0, length + extra);
  memcpy(copy, text, length);
  return copy;
}

}  // namespace orvan::gpu_internal
