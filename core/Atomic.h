#pragma once

#include "core/Export.h"

// Full-barrier read-modify-write on a 32-bit word; each returns the new value.
OV_CAPI int atomic_inc32(void* p);
OV_CAPI int atomic_dec32(void* p);
OV_CAPI int atomic_add32(void* p, unsigned int v);
