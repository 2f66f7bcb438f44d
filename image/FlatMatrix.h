#pragma once

#include <cstddef>

#include "core/Export.h"

// The flat matrix interface. flat::Matrix is a plain record from ov_malloc,
// kept in namespace `flat` apart from the reference-counted class ::Matrix
// (image/Matrix.h). Overloaded functions keep C++ linkage (OV_EXPORT), the
// rest have plain C names (OV_CAPI).
namespace flat {

struct Matrix {
  int rows;
  int cols;
  // rows row pointers followed by rows * cols floats in one block.
  float** data;
};

}  // namespace flat

// Shared with C callers, and with flat::IntegralImage, which is released as one.
static_assert(offsetof(flat::Matrix, cols) == 4 && offsetof(flat::Matrix, data) == 8 &&
                  sizeof(flat::Matrix) == 8 + sizeof(void*),
              "flat::Matrix layout");

OV_EXPORT flat::Matrix* ov_createMatrix(int rows, int cols, float* data);
OV_EXPORT flat::Matrix* ov_createMatrix(int rows, int cols);
OV_EXPORT flat::Matrix* ov_createMatrix(int n, float* data);
OV_EXPORT flat::Matrix* ov_createMatrix(int n);
OV_CAPI void ov_releaseMatrix(flat::Matrix* m);

// In place a += b / a -= b; returns a, or null when the sizes differ.
OV_CAPI flat::Matrix* ov_matrixAdd(flat::Matrix* a, flat::Matrix* b);
OV_CAPI flat::Matrix* ov_matrixSub(flat::Matrix* a, flat::Matrix* b);
// In place a *= k.
OV_EXPORT void ov_matrixMultiply(flat::Matrix* a, float k);
// New product; null when a.cols != b.rows.
OV_EXPORT flat::Matrix* ov_matrixMultiply(flat::Matrix* a, flat::Matrix* b);
OV_CAPI flat::Matrix* ov_matrixTransponse(flat::Matrix* m);
// Determinant of m without that row and column (the minor, unsigned).
OV_CAPI float ov_matrixCofator(flat::Matrix* m, int row, int col);
OV_CAPI float ov_matrixDet(flat::Matrix* m);
OV_CAPI flat::Matrix* ov_matrixAdj(flat::Matrix* m);
// Null when the determinant is exactly 0.
OV_CAPI flat::Matrix* ov_matrixInverse(flat::Matrix* m);
OV_CAPI flat::Matrix* ov_matrixCreateTranslateMatrix(float tx, float ty);
OV_CAPI flat::Matrix* ov_matrixCreateRotateMatrix(float angle);
