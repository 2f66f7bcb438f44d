#include "core/Memory.h"

#include <cstdlib>
#include <cstring>

#include "core/MemoryTag.h"
#include "core/SizeRule.h"

namespace {
constexpr unsigned int kTagBytes = 4;

void storeBigEndian(unsigned char* at, unsigned int v) {
  at[0] = static_cast<unsigned char>(v >> 24);
  at[1] = static_cast<unsigned char>(v >> 16);
  at[2] = static_cast<unsigned char>(v >> 8);
  at[3] = static_cast<unsigned char>(v);
}
}  // namespace

void* ov_malloc(unsigned int size) { return size == 0 ? nullptr : malloc(size); }

void* ov_malloc_has_tag(unsigned int tag, unsigned int size) {
  // size + 4 must not wrap where size_t is 32 bits.
  if (size == 0 || orvan::sizerule::within(orvan::sizerule::kUintLimit, int64_t{size} + kTagBytes) < 0)
    return nullptr;
  auto* block = static_cast<unsigned char*>(malloc(size_t{size} + kTagBytes));
  if (block == nullptr) return nullptr;
  storeBigEndian(block, tag);
  return block + kTagBytes;
}

void ov_free(void* p) {
  if (p != nullptr) free(p);
}

unsigned int ov_read_tag(const void* p) {
  const auto* at = static_cast<const unsigned char*>(p) - kTagBytes;
  return (static_cast<unsigned int>(at[0]) << 24) | (static_cast<unsigned int>(at[1]) << 16) |
         (static_cast<unsigned int>(at[2]) << 8) | at[3];
}

void ov_free_has_tag(unsigned int tag, void* p) {
  if (p == nullptr) return;
  if (ov_read_tag(p) != tag) return;  // foreign or already freed: leave it alone
  auto* block = static_cast<unsigned char*>(p) - kTagBytes;
  // A second free of the same pointer must fail the check. A plain store
  // right before free is dead to the optimiser; a volatile one is kept.
  volatile unsigned char* wipe = block;
  for (unsigned int i = 0; i < kTagBytes; ++i) wipe[i] = 0;
  free(block);
}

void ov_memcpy(void* dst, void* src, unsigned int n) {
  if (dst != nullptr && src != nullptr && n != 0) memcpy(dst, src, n);
}

void ov_memset(void* dst, unsigned char value, unsigned int n) {
  if (dst != nullptr && n != 0) memset(dst, value, n);
}

void* galloc_malloc(unsigned int size) { return size == 0 ? nullptr : malloc(size); }

void* galloc_alloc(unsigned int size) { return size == 0 ? nullptr : calloc(1, size); }

void* galloc_realloc(void* p, unsigned int size) {
  if (p == nullptr || size == 0) return nullptr;
  return realloc(p, size);
}

void galloc_free(void* p) { free(p); }

void galloc_memcpy(void* dst, void* src, unsigned int n) { ov_memcpy(dst, src, n); }

void galloc_memset(void* dst, unsigned char value, unsigned int n) { ov_memset(dst, value, n); }
