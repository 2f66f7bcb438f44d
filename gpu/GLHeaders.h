#pragma once

// OpenGL ES 3 plus the extension enums the GPU layer uses (external textures).
// The extension header needs the core one first.
// clang-format off
#include <GLES3/gl3.h>
#include <GLES2/gl2ext.h>
// clang-format on
