#pragma once

#include <csetjmp>
// clang-format off
#include <cstddef>
#include <cstdio>  // jpeglib.h needs size_t and FILE declared first
#include <jpeglib.h>
// clang-format on

#include "core/Export.h"
#include "core/Stream.h"

// Adapters between libjpeg and Stream, used by the codecs and exported for
// callers that drive libjpeg over a Stream themselves.

// Source manager reading the stream through a 4096-byte buffer. The consumed
// offset and the seek callback live here: stock libjpeg has neither.
struct OV_EXPORT jpeg_utils_source_mgr {
  jpeg_source_mgr pub;  // first, so libjpeg's pointer is ours
  unsigned long consumed;
  boolean (*seek)(j_decompress_ptr cinfo, unsigned long offset);
  Stream* stream;
  JOCTET buffer[4096];

  explicit jpeg_utils_source_mgr(Stream* s);
};

// Destination manager writing to the stream through a 1024-byte buffer.
struct OV_EXPORT jpeg_utils_destination_mgr {
  jpeg_destination_mgr pub;
  Stream* stream;
  JOCTET buffer[1024];

  explicit jpeg_utils_destination_mgr(Stream* s);
};

// libjpeg's standard error manager followed by the jump target.
struct jpeg_utils_error_mgr {
  jpeg_error_mgr pub;
  jmp_buf jump;
};

// Logs "jpeg_utils_error_exit,msgcode[%d]  msg: %s\n", destroys the libjpeg
// object and longjmps to the saved buffer with -1.
OV_EXPORT void jpeg_utils_error_exit(j_common_ptr cinfo);
