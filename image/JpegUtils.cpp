#include "image/JpegUtils.h"

#include <jerror.h>

#include "core/Log.h"

namespace {

jpeg_utils_source_mgr* sourceOf(j_decompress_ptr cinfo) {
  return reinterpret_cast<jpeg_utils_source_mgr*>(cinfo->src);
}

void sourceInit(j_decompress_ptr cinfo) {
  jpeg_utils_source_mgr* src = sourceOf(cinfo);
  src->pub.next_input_byte = src->buffer;
  src->pub.bytes_in_buffer = 0;
  src->consumed = 0;
  if (src->stream->rewind() == 0) ERREXIT(cinfo, JERR_FILE_READ);
}

boolean sourceFill(j_decompress_ptr cinfo) {
  jpeg_utils_source_mgr* src = sourceOf(cinfo);
  const int got = src->stream->read(src->buffer, sizeof(src->buffer));
  // No bytes: suspend. The decoder turns a suspension into an error, since a
  // stream that has ended cannot resume.
  if (got <= 0) return FALSE;
  src->consumed += static_cast<unsigned long>(got);
  src->pub.next_input_byte = src->buffer;
  src->pub.bytes_in_buffer = static_cast<size_t>(got);
  return TRUE;
}

void sourceSkip(j_decompress_ptr cinfo, long count) {
  if (count <= 0) return;
  jpeg_utils_source_mgr* src = sourceOf(cinfo);
  const size_t n = static_cast<size_t>(count);
  if (src->pub.bytes_in_buffer >= n) {
    src->pub.next_input_byte += n;
    src->pub.bytes_in_buffer -= n;
    return;
  }
  unsigned long left = n - src->pub.bytes_in_buffer;
  while (left > 0) {
    const unsigned int ask = left > 0x7FFFFFFFul ? 0x7FFFFFFFu : static_cast<unsigned int>(left);
    const int skipped = src->stream->skip(ask);
    if (skipped < 1 || static_cast<unsigned long>(skipped) > left) ERREXIT(cinfo, JERR_FILE_READ);
    src->consumed += static_cast<unsigned long>(skipped);
    left -= static_cast<unsigned long>(skipped);
  }
  src->pub.next_input_byte = src->buffer;
  src->pub.bytes_in_buffer = 0;
}

void sourceTerm(j_decompress_ptr) {}

boolean sourceSeek(j_decompress_ptr cinfo, unsigned long offset) {
  jpeg_utils_source_mgr* src = sourceOf(cinfo);
  if (offset <= src->consumed) {
    if (src->stream->rewind() == 0) ERREXIT(cinfo, JERR_FILE_READ);
    if (offset > 0) src->stream->skip(static_cast<unsigned int>(offset));
  } else {
    src->stream->skip(static_cast<unsigned int>(offset - src->consumed));
  }
  src->consumed = offset;
  src->pub.next_input_byte = src->buffer;
  src->pub.bytes_in_buffer = 0;
  return TRUE;
}

jpeg_utils_destination_mgr* destinationOf(j_compress_ptr cinfo) {
  return reinterpret_cast<jpeg_utils_destination_mgr*>(cinfo->dest);
}

void destinationInit(j_compress_ptr cinfo) {
  jpeg_utils_destination_mgr* dst = destinationOf(cinfo);
  dst->pub.next_output_byte = dst->buffer;
  dst->pub.free_in_buffer = sizeof(dst->buffer);
}

boolean destinationEmpty(j_compress_ptr cinfo) {
  jpeg_utils_destination_mgr* dst = destinationOf(cinfo);
  if (dst->stream->write(dst->buffer, sizeof(dst->buffer)) == 0) {
    cinfo->err->msg_code = JERR_FILE_WRITE;
    cinfo->err->error_exit(reinterpret_cast<j_common_ptr>(cinfo));
  }
  dst->pub.next_output_byte = dst->buffer;
  dst->pub.free_in_buffer = sizeof(dst->buffer);
  return TRUE;
}

void destinationTerm(j_compress_ptr cinfo) {
  jpeg_utils_destination_mgr* dst = destinationOf(cinfo);
  const unsigned int pending = static_cast<unsigned int>(sizeof(dst->buffer) - dst->pub.free_in_buffer);
  // Nothing pending is not a failure (a file stream answers 0 to an empty write).
  if (pending > 0 && dst->stream->write(dst->buffer, pending) == 0) {
    cinfo->err->msg_code = JERR_FILE_WRITE;
    cinfo->err->error_exit(reinterpret_cast<j_common_ptr>(cinfo));
  }
  dst->stream->flush();
}

}  // namespace

jpeg_utils_source_mgr::jpeg_utils_source_mgr(Stream* s) : consumed(0), seek(sourceSeek), stream(s) {
  pub.next_input_byte = buffer;
  pub.bytes_in_buffer = 0;
  pub.init_source = sourceInit;
  pub.fill_input_buffer = sourceFill;
  pub.skip_input_data = sourceSkip;
  pub.resync_to_restart = jpeg_resync_to_restart;
  pub.term_source = sourceTerm;
}

jpeg_utils_destination_mgr::jpeg_utils_destination_mgr(Stream* s) : stream(s) {
  pub.next_output_byte = buffer;
  pub.free_in_buffer = sizeof(buffer);
  pub.init_destination = destinationInit;
  pub.empty_output_buffer = destinationEmpty;
  pub.term_destination = destinationTerm;
}

void jpeg_utils_error_exit(j_common_ptr cinfo) {
  auto* err = reinterpret_cast<jpeg_utils_error_mgr*>(cinfo->err);
  char text[JMSG_LENGTH_MAX];
  err->pub.format_message(cinfo, text);
  OV_LOGD("jpeg_utils_error_exit,msgcode[%d]  msg: %s\n", err->pub.msg_code, text);
  jpeg_destroy(cinfo);
  longjmp(err->jump, -1);
}
