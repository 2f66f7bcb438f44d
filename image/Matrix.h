#pragma once

#include "core/Export.h"
#include "core/RefBase.h"

// Small dense float matrix, reference counted. Storage: one zero-filled
// galloc_malloc block holding rows row pointers, then rows * cols floats in
// row-major order. Never resized. The flat record of the same name is
// flat::Matrix (image/FlatMatrix.h).
class OV_EXPORT Matrix : public RefBase {
 public:
  Matrix(int rows, int cols);
  Matrix(int rows, int cols, float* data);
  explicit Matrix(int n);
  Matrix(int n, float* data);
  ~Matrix() override;

  static Matrix* create(int rows, int cols);
  static Matrix* create(int rows, int cols, float* data);
  static Matrix* create(int n);
  static Matrix* create(int n, float* data);

  // In place a += b / a -= b; null if either is null or the sizes differ.
  static Matrix* add(Matrix* a, Matrix* b);
  static Matrix* sub(Matrix* a, Matrix* b);
  // In place scale; returns a.
  static Matrix* multiply(Matrix* a, float k);
  // New product (count 0); null when the inner sizes differ.
  static Matrix* multiply(Matrix* a, Matrix* b);

  Matrix* transponse();  // spelling is part of the interface
  // Determinant of the matrix without that row and column (the spelling is
  // part of the interface).
  float cofator(int row, int col);
  float det();
  Matrix* adj();
  // Null when det() is exactly 0.
  Matrix* inverse();

  int rows;
  int cols;
  float** data;  // null when the sizes were invalid or allocation failed

 private:
  Matrix(const Matrix&) = delete;
  Matrix& operator=(const Matrix&) = delete;
  void allocate(int r, int c);
};
