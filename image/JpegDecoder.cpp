#include <jerror.h>
#include <malloc.h>
#include <sys/mman.h>

#include <cstdint>
#include <new>
#include <utility>

#include "image/ImageDecoder.h"
#include "image/JpegUtils.h"

namespace {

// libjpeg may use this much for its own working memory.
constexpr long kMaxDecoderMemory = 31457280;  // 30 MiB

// A fresh multi-megabyte buffer costs one page fault per 4 KiB as libjpeg
// fills it, which on a 12-megapixel picture is as much work as decoding.
// Where the kernel offers transparent huge pages on request, ask for them
// over the buffer's aligned interior. Purely a hint: failure changes nothing.
void preferHugePages(unsigned char* buffer, size_t size) {
#ifdef MADV_HUGEPAGE
  constexpr uintptr_t kHuge = 2u << 20;
  if (size < 2 * kHuge) return;
  const uintptr_t begin = (reinterpret_cast<uintptr_t>(buffer) + kHuge - 1) & ~(kHuge - 1);
  const uintptr_t end = (reinterpret_cast<uintptr_t>(buffer) + size) & ~(kHuge - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
  (void)buffer;
  (void)size;
#endif
}

// Byte size of a spare's buffer, 0 when it has none. Only spares that
// recordSpare has measured are asked.
unsigned long long capacityOf(const Image* image) {
  if (image == nullptr || image->planes[0] == nullptr || image->bytesPerPixel <= 0) return 0;
  return static_cast<unsigned long long>(image->width) * image->height * image->depth *
         static_cast<unsigned int>(image->bytesPerPixel);
}

// Records a buffer the caller's image gave up as a spare. Its public fields
// are the caller's and may no longer describe the buffer, so the capacity is
// taken from the allocator instead and written over them.
void recordSpare(Image* spare) {
  const size_t usable = malloc_usable_size(spare->planes[0]);
  spare->width = static_cast<unsigned int>(usable > 0xFFFFFFFFu ? 0xFFFFFFFFu : usable);
  spare->height = 1;
  spare->depth = 1;
  spare->format = Image::IMAGE_FORMAT_GRAY;
  spare->bytesPerPixel = 1;
}

// Decodes into an Image of its own (never the caller's), so a failure leaves
// the caller's image untouched. `spare` (owned, may be null) is reused when
// the decoded bytes fit its recorded capacity snugly, else freed. As in the
// encoder, nothing with a destructor lives across the setjmp.
Image* decompress(Stream* stream, Image* spare) {
  jpeg_utils_source_mgr src(stream);
  jpeg_decompress_struct cinfo;
  jpeg_utils_error_mgr err;
  Image* volatile out = nullptr;

  cinfo.err = jpeg_std_error(&err.pub);
  err.pub.error_exit = jpeg_utils_error_exit;
  Image* volatile unused = spare;
  if (setjmp(err.jump)) {  // the error hook has logged and destroyed cinfo
    delete out;
    delete unused;
    return nullptr;
  }

  jpeg_create_decompress(&cinfo);
  cinfo.mem->max_memory_to_use = kMaxDecoderMemory;
  cinfo.src = &src.pub;
  // The source suspends only when the stream has run dry. The results are
  // not checked: a suspended header or start leaves libjpeg in a state in
  // which its next call raises the error itself.
  jpeg_read_header(&cinfo, TRUE);
  jpeg_start_decompress(&cinfo);

  const unsigned int width = cinfo.output_width;
  const unsigned int height = cinfo.output_height;
  const unsigned int components = static_cast<unsigned int>(cinfo.output_components);
  const unsigned long long bytes = static_cast<unsigned long long>(width) * components * height;
  if (bytes > 0xFFFFFFFFull) ERREXIT1(&cinfo, JERR_IMAGE_TOO_BIG, JPEG_MAX_DIMENSION);

  const auto format = static_cast<Image::ImageFormatType>(components);
  // A spare is reused when the decode fits it without wasting a quarter of it.
  const unsigned long long capacity = capacityOf(spare);
  if (bytes <= capacity && capacity - bytes <= capacity / 4) {
    // Same end state as Image::set for GRAY/RGB at depth 1, minus the
    // allocation: the buffer is already large enough.
    out = spare;
    unused = nullptr;
    out->width = width;
    out->height = height;
    out->depth = 1;
    out->format = format;
    out->bytesPerPixel = static_cast<int>(components);
    out->planes[1] = out->planes[2] = out->planes[3] = nullptr;
  } else {
    unused = nullptr;
    delete spare;  // wrong size: free it before the new buffer is taken
    out = Image::createImage(width, height, 1, format, nullptr);
    if (out == nullptr || out->planes[0] == nullptr) {
      jpeg_destroy_decompress(&cinfo);
      delete out;
      return nullptr;
    }
    preferHugePages(out->planes[0], static_cast<size_t>(bytes));
  }

  // Successive rows of the new buffer. Offering libjpeg every remaining row
  // at once spares it the copy through its spare row that one-row reads of
  // vertically subsampled files cost. The table comes from libjpeg's pool, so
  // an error exit frees it too.
  const size_t stride = static_cast<size_t>(width) * components;
  auto* rows = static_cast<JSAMPARRAY>(
      cinfo.mem->alloc_large(reinterpret_cast<j_common_ptr>(&cinfo), JPOOL_IMAGE, sizeof(JSAMPROW) * height));
  for (unsigned int y = 0; y < height; ++y) rows[y] = out->planes[0] + stride * y;
  while (cinfo.output_scanline < height) {
    const unsigned int at = cinfo.output_scanline;
    // No rows: the data ended early, and finishing short of the last row
    // makes libjpeg raise its own error.
    if (jpeg_read_scanlines(&cinfo, rows + at, height - at) == 0) break;
  }
  // Every row is in; a stream that ends before the end marker still decodes.
  jpeg_finish_decompress(&cinfo);
  jpeg_destroy_decompress(&cinfo);
  return out;
}

}  // namespace

int JpegDecoder::isSupported(auto_ptr<Stream>& stream) {
  if (stream == nullptr) return 0;
  unsigned char magic[3] = {0, 0, 0};
  if (stream->read(magic, 3) != 3) return 0;
  return magic[0] == 0xFF && magic[1] == 0xD8 && magic[2] == 0xFF ? 1 : 0;
}

JpegDecoder::~JpegDecoder() { delete mSpare.exchange(nullptr); }

int JpegDecoder::onDecode(auto_ptr<Stream>& stream, auto_ptr<Image>& image) {
  if (stream == nullptr || image == nullptr) return 0;
  Image* decoded = decompress(stream.get(), mSpare.exchange(nullptr));
  if (decoded == nullptr) return 0;
  // Same end state as Image::set with the decoded pixels (depth 1, format =
  // component count), without copying them: the buffers change hands and the
  // old one goes with the temporary.
  Image* target = image.get();
  std::swap(target->width, decoded->width);
  std::swap(target->height, decoded->height);
  std::swap(target->depth, decoded->depth);
  std::swap(target->format, decoded->format);
  std::swap(target->bytesPerPixel, decoded->bytesPerPixel);
  for (int i = 0; i < 4; ++i) std::swap(target->planes[i], decoded->planes[i]);
  // The caller's old buffer becomes the spare (another thread may have left
  // one meanwhile: that one goes).
  if (decoded->planes[0] == nullptr) {
    delete decoded;
  } else {
    recordSpare(decoded);
    delete mSpare.exchange(decoded);
  }
  return 1;
}
