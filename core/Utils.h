#pragma once

#include "core/Export.h"

// Debug dump of a buffer to a file (created or truncated); reports nothing.
OV_CAPI void WriteFile(const char* path, const unsigned char* data, unsigned int size);

// Formats into one static 2048-byte buffer shared by every caller and returns
// it: not re-entrant, and each call overwrites the last result.
OV_CAPI char* string_format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// Wall-clock time in nanoseconds.
OV_CAPI long long systemTime(void);

// Milliseconds from referenceTime to timeoutTime (ns), rounded up; 0 when the
// timeout has passed, -1 (forever) when it does not fit in an int.
OV_CAPI int toMillisecondTimeoutDelay(long long referenceTime, long long timeoutTime);

// Exported for the camera stack; does nothing.
OV_CAPI void make_timeout(void);
