#include <new>

#include "core/Memory.h"
#include "core/SizeRule.h"
#include "image/ImageEncoder.h"
#include "image/JpegUtils.h"

namespace {

using RowPacker = void (*)(const unsigned char* src, unsigned char* rgb, unsigned int width);

void packGray(const unsigned char* src, unsigned char* rgb, unsigned int width) {
  for (unsigned int x = 0; x < width; ++x, rgb += 3) rgb[0] = rgb[1] = rgb[2] = src[x];
}

// RGB, and packed YUV, whose bytes go out as if they were RGB.
void packThree(const unsigned char* src, unsigned char* rgb, unsigned int width) {
  for (unsigned int x = 0; x < width * 3; ++x) rgb[x] = src[x];
}

void packRGBA(const unsigned char* src, unsigned char* rgb, unsigned int width) {
  for (unsigned int x = 0; x < width; ++x, src += 4, rgb += 3) {
    rgb[0] = src[0];
    rgb[1] = src[1];
    rgb[2] = src[2];
  }
}

RowPacker packerFor(Image::ImageFormatType format) {
  switch (format) {
    case Image::IMAGE_FORMAT_GRAY:
      return packGray;
    case Image::IMAGE_FORMAT_RGB:
    case Image::IMAGE_FORMAT_YUV:
      return packThree;
    case Image::IMAGE_FORMAT_RGBA:
      return packRGBA;
    default:
      return nullptr;
  }
}

// Everything between setjmp and a libjpeg error lives in this frame and has
// trivial destructors, so the longjmp skips nothing that needs running.
int compress(Stream* stream, const Image* image, int quality, RowPacker pack) {
  jpeg_utils_destination_mgr dest(stream);
  jpeg_compress_struct cinfo;
  jpeg_utils_error_mgr err;
  unsigned char* volatile row = nullptr;

  cinfo.err = jpeg_std_error(&err.pub);
  err.pub.error_exit = jpeg_utils_error_exit;
  if (setjmp(err.jump)) {  // the error hook has logged and destroyed cinfo
    galloc_free(row);
    return 0;
  }

  jpeg_create_compress(&cinfo);
  cinfo.dest = &dest.pub;
  cinfo.image_width = image->width;
  cinfo.image_height = image->height;
  cinfo.input_components = 3;
  cinfo.in_color_space = JCS_RGB;
  jpeg_set_defaults(&cinfo);
  jpeg_set_quality(&cinfo, quality, TRUE);

  // The row's bytes are counted before they become a 32-bit size. A width
  // beyond that count is far beyond libjpeg's limit: jpeg_start_compress
  // reports it through the error hook before any row is packed.
  const int64_t rowBytes = orvan::sizerule::uintCount(image->width, 3);
  if (rowBytes >= 0) row = static_cast<unsigned char*>(galloc_malloc(static_cast<unsigned int>(rowBytes)));
  if ((rowBytes >= 0 && row == nullptr) || image->planes[0] == nullptr) {
    jpeg_destroy_compress(&cinfo);
    galloc_free(row);
    return 0;
  }

  jpeg_start_compress(&cinfo, TRUE);
  const size_t srcRow = static_cast<size_t>(image->width) * static_cast<size_t>(image->bytesPerPixel);
  while (cinfo.next_scanline < cinfo.image_height) {
    pack(image->planes[0] + srcRow * cinfo.next_scanline, row, image->width);
    JSAMPROW rows[1] = {row};
    jpeg_write_scanlines(&cinfo, rows, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  galloc_free(row);
  return 1;
}

}  // namespace

int JpegEncoder::onEncode(auto_ptr<Stream>& stream, auto_ptr<Image>& image, int quality) {
  if (stream == nullptr || image == nullptr) return 0;
  const RowPacker pack = packerFor(image->format);
  if (pack == nullptr) return 0;
  return compress(stream.get(), image.get(), quality, pack);
}
