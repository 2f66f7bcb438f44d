#pragma once

// The library's interface is the only thing exported; everything else is hidden
// by -fvisibility=hidden.
#define OV_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
#define OV_EXTERN_C extern "C"
#else
#define OV_EXTERN_C
#endif

// Flat functions carry plain C names.
#define OV_CAPI OV_EXTERN_C OV_EXPORT
