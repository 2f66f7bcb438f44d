#include "image/Matrix.h"

#include <cmath>
#include <cstring>
#include <new>

#include "core/Memory.h"
#include "core/SizeRule.h"

Matrix::Matrix(int r, int c) : rows(r), cols(c), data(nullptr) { allocate(r, c); }

Matrix::Matrix(int r, int c, float* src) : rows(r), cols(c), data(nullptr) {
  allocate(r, c);
  if (data != nullptr && src != nullptr)
    memcpy(data[0], src, static_cast<size_t>(r) * static_cast<size_t>(c) * sizeof(float));
}

Matrix::Matrix(int n) : Matrix(n, n) {}

Matrix::Matrix(int n, float* src) : Matrix(n, n, src) {}

Matrix::~Matrix() {
  if (data != nullptr) galloc_free(data);
  data = nullptr;
}

// One zero-filled block: the row-pointer table, then the floats.
void Matrix::allocate(int r, int c) {
  if (r < 1 || c < 1) return;
  const int64_t cells = orvan::sizerule::intCount(r, c);
  const int64_t tableBytes = orvan::sizerule::intCount(r, sizeof(float*));
  if (cells < 0 || tableBytes < 0) return;
  const int64_t bytes =
      orvan::sizerule::within(orvan::sizerule::kIntLimit, tableBytes + cells * int64_t{sizeof(float)});
  if (bytes < 0) return;
  auto* block = static_cast<unsigned char*>(galloc_alloc(static_cast<unsigned int>(bytes)));
  if (block == nullptr) return;
  auto** table = reinterpret_cast<float**>(block);
  float* values = reinterpret_cast<float*>(block + tableBytes);
  for (int i = 0; i < r; ++i) table[i] = values + static_cast<long long>(i) * c;
  data = table;
}

Matrix* Matrix::create(int r, int c) { return new (std::nothrow) Matrix(r, c); }
Matrix* Matrix::create(int r, int c, float* src) { return new (std::nothrow) Matrix(r, c, src); }
Matrix* Matrix::create(int n) { return new (std::nothrow) Matrix(n); }
Matrix* Matrix::create(int n, float* src) { return new (std::nothrow) Matrix(n, src); }

Matrix* Matrix::add(Matrix* a, Matrix* b) {
  if (a == nullptr || b == nullptr || a->rows != b->rows || a->cols != b->cols) return nullptr;
  if (a->data == nullptr || b->data == nullptr) return a;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < a->cols; ++j) a->data[i][j] += b->data[i][j];
  return a;
}

Matrix* Matrix::sub(Matrix* a, Matrix* b) {
  if (a == nullptr || b == nullptr || a->rows != b->rows || a->cols != b->cols) return nullptr;
  if (a->data == nullptr || b->data == nullptr) return a;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < a->cols; ++j) a->data[i][j] -= b->data[i][j];
  return a;
}

Matrix* Matrix::multiply(Matrix* a, float k) {
  if (a == nullptr || a->rows < 1 || a->cols < 1 || a->data == nullptr) return a;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < a->cols; ++j) a->data[i][j] *= k;
  return a;
}

Matrix* Matrix::multiply(Matrix* a, Matrix* b) {
  if (a == nullptr || b == nullptr || a->cols != b->rows || a->data == nullptr || b->data == nullptr)
    return nullptr;
  Matrix* p = new (std::nothrow) Matrix(a->rows, b->cols);
  if (p == nullptr) return nullptr;
  if (p->data == nullptr) {
    delete p;
    return nullptr;
  }
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < b->cols; ++j)
      for (int k = 0; k < a->cols; ++k) p->data[i][j] += a->data[i][k] * b->data[k][j];
  return p;
}

Matrix* Matrix::transponse() {
  if (data == nullptr) return nullptr;
  Matrix* t = new (std::nothrow) Matrix(cols, rows);
  if (t == nullptr) return nullptr;
  if (t->data == nullptr) {
    delete t;
    return nullptr;
  }
  for (int i = 0; i < t->rows; ++i)
    for (int j = 0; j < t->cols; ++j) t->data[i][j] = data[j][i];
  return t;
}

float Matrix::cofator(int row, int col) {
  if (data == nullptr || rows < 2 || cols < 2 || row < 0 || row >= rows || col < 0 || col >= cols)
    return 0.0f;
  Matrix minor(rows - 1, cols - 1);
  if (minor.data == nullptr) return 0.0f;
  for (int i = 0, r = 0; i < rows; ++i) {
    if (i == row) continue;
    for (int j = 0, c = 0; j < cols; ++j) {
      if (j == col) continue;
      minor.data[r][c++] = data[i][j];
    }
    ++r;
  }
  return minor.det();
}

// A non-square matrix has no determinant: 0.
float Matrix::det() {
  if (data == nullptr || rows != cols) return 0.0f;
  if (rows == 1) return data[0][0];
  if (rows == 2) return data[0][0] * data[1][1] - data[0][1] * data[1][0];
  float sum = 0.0f;
  for (int i = 0; i < rows; ++i) {
    const double term = static_cast<double>(powf(-1.0f, static_cast<float>(i))) * data[i][0] * cofator(i, 0);
    sum = static_cast<float>(sum + term);
  }
  return sum;
}

Matrix* Matrix::adj() {
  if (data == nullptr) return nullptr;
  Matrix k(rows, cols);
  if (k.data == nullptr) return nullptr;
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < cols; ++j) k.data[i][j] = powf(-1.0f, static_cast<float>(i + j)) * cofator(i, j);
  return k.transponse();
}

Matrix* Matrix::inverse() {
  const float d = det();
  if (d == 0.0f) return nullptr;
  Matrix* a = adj();
  if (a == nullptr) return nullptr;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < a->cols; ++j) a->data[i][j] /= d;
  return a;
}
