#pragma once

// OpenGL ES 3 plus the extension enums the GPU layer uses (external textures).
#include <GLES3/gl3.h>
#include <GLES2/gl2ext.h>
