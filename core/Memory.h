#pragma once

#include "core/Export.h"

// Two null- and zero-tolerant allocator families: ov_* for flat-interface
// records (optionally tagged so a handle can be validated), galloc_* for the
// pixel buffers owned by classes.
OV_CAPI void* ov_malloc(unsigned int size);
OV_CAPI void* ov_malloc_has_tag(unsigned int tag, unsigned int size);
OV_CAPI void ov_free(void* p);
OV_CAPI void ov_free_has_tag(unsigned int tag, void* p);
OV_CAPI void ov_memcpy(void* dst, void* src, unsigned int n);
OV_CAPI void ov_memset(void* dst, unsigned char value, unsigned int n);

OV_CAPI void* galloc_malloc(unsigned int size);
OV_CAPI void* galloc_alloc(unsigned int size);
OV_CAPI void* galloc_realloc(void* p, unsigned int size);
OV_CAPI void galloc_free(void* p);
OV_CAPI void galloc_memcpy(void* dst, void* src, unsigned int n);
OV_CAPI void galloc_memset(void* dst, unsigned char value, unsigned int n);
