#pragma once

// Internal to the library, not exported: the interface checks tags only
// through ov_free_has_tag and the handle checks of the flat modules.

// Reads the big-endian tag word stored just before a block from
// ov_malloc_has_tag; the caller guarantees p came from there.
unsigned int ov_read_tag(const void* p);
