#pragma once

// The flat image records and their C functions are declared in orvan/orvan.h
// (namespace flat in C++, so that flat::Image never meets the
// reference-counted class ::Image of image/Image.h). The overloaded creators
// keep C++ linkage.
#include "core/Export.h"
#include "orvan/orvan.h"

// Wraps the caller's buffer (ownsData 0). Null for a null buffer, a size or
// stride below 1, or channels outside 1..4.
OV_EXPORT flat::Image* ov_createImage(int width, int height, int channels, int stride, unsigned char* data);
// Allocates channels * width * height bytes (stride = channels * width).
OV_EXPORT flat::Image* ov_createImage(int width, int height, int channels);
