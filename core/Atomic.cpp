#include "core/Atomic.h"

#include <cstdint>

int atomic_inc32(void* p) {
  return static_cast<int>(__atomic_add_fetch(static_cast<int32_t*>(p), 1, __ATOMIC_SEQ_CST));
}

int atomic_dec32(void* p) {
  return static_cast<int>(__atomic_sub_fetch(static_cast<int32_t*>(p), 1, __ATOMIC_SEQ_CST));
}

int atomic_add32(void* p, unsigned int v) {
  return static_cast<int>(
      __atomic_add_fetch(static_cast<uint32_t*>(p), static_cast<uint32_t>(v), __ATOMIC_SEQ_CST));
}
