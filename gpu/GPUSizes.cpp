#include "gpu/GPUSizes.h"

#include "gpu/GPUImage2D.h"
#include "image/Image.h"

namespace {

// An Image of the first four formats goes to the GPU under the same code.
constexpr bool sameCode(GPUFormatCode gpu, Image::ImageFormatType image) {
  return static_cast<int>(gpu) == static_cast<int>(image);
}
static_assert(sameCode(GPU_FORMAT_LUMINANCE, Image::IMAGE_FORMAT_GRAY) &&
                  sameCode(GPU_FORMAT_LUMINANCE_ALPHA, Image::IMAGE_FORMAT_PACKED16) &&
                  sameCode(GPU_FORMAT_RGB, Image::IMAGE_FORMAT_RGB) &&
                  sameCode(GPU_FORMAT_RGBA, Image::IMAGE_FORMAT_RGBA),
              "GPU and image format codes");

}  // namespace

namespace orvan::gpu_internal {

int imageFormatCode(const Image* image) {
  if (image == nullptr || image->planes[0] == nullptr) return 0;
  int code = static_cast<int>(image->format);
  if (code < Image::IMAGE_FORMAT_GRAY || code > Image::IMAGE_FORMAT_RGBA || image->bytesPerPixel != code)
    return 0;
  if (image->width > INT32_MAX || image->height > INT32_MAX || image->depth > INT32_MAX) return 0;
  if (image->width == 0 || image->height == 0 || image->depth == 0) return 0;
  int64_t n = imageBytes(static_cast<int>(image->width), static_cast<int>(image->height),
                         static_cast<int>(image->depth), code);
  return n > 0 ? code : 0;
}

}  // namespace orvan::gpu_internal
