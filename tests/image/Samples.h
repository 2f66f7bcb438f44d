#pragma once

#include <string>
#include <vector>

#include "core/RefBase.h"
#include "image/Image.h"

// The bundled photographs, decoded with the library's own JPEG decoder.
namespace samples {

std::string path(const char* name);
std::vector<unsigned char> readFile(const std::string& path);
// Decodes samples/<name>; null on failure.
auto_ptr<Image> decode(const char* name);

// Peak signal-to-noise ratio of two equally sized 8-bit buffers, in dB.
double psnr(const unsigned char* a, const unsigned char* b, size_t n);

}  // namespace samples
