#pragma once

// The flat matrix record and its C functions are declared in orvan/orvan.h
// (flat::Matrix in C++, apart from the reference-counted class ::Matrix of
// image/Matrix.h). The overloaded functions keep C++ linkage.
#include "core/Export.h"
#include "orvan/orvan.h"

OV_EXPORT flat::Matrix* ov_createMatrix(int rows, int cols, float* data);
OV_EXPORT flat::Matrix* ov_createMatrix(int rows, int cols);
OV_EXPORT flat::Matrix* ov_createMatrix(int n, float* data);
OV_EXPORT flat::Matrix* ov_createMatrix(int n);
// In place a *= k.
OV_EXPORT void ov_matrixMultiply(flat::Matrix* a, float k);
// New product; null when a.cols != b.rows.
OV_EXPORT flat::Matrix* ov_matrixMultiply(flat::Matrix* a, flat::Matrix* b);
