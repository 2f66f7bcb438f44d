#include "image/FlatMatrix.h"

#include <cmath>
#include <cstring>

#include "core/Memory.h"
#include "core/SizeRule.h"

namespace {
// One block: rows row pointers, then rows * cols floats. The pointer table is
// zeroed and then aimed at the rows; the floats are zeroed or copied.
flat::Matrix* allocate(int rows, int cols, const float* src) {
  if (rows < 1 || cols < 1) return nullptr;
  const int64_t cells = orvan::sizerule::intCount(rows, cols);
  const int64_t tableBytes = orvan::sizerule::intCount(rows, sizeof(float*));
  if (cells < 0 || tableBytes < 0) return nullptr;
  const int64_t bytes =
      orvan::sizerule::within(orvan::sizerule::kIntLimit, tableBytes + cells * int64_t{sizeof(float)});
  if (bytes < 0) return nullptr;
  auto* m = static_cast<flat::Matrix*>(ov_malloc(sizeof(flat::Matrix)));
  if (m == nullptr) return nullptr;
  auto* block = static_cast<unsigned char*>(ov_malloc(static_cast<unsigned int>(bytes)));
  if (block == nullptr) {
    ov_free(m);
    return nullptr;
  }
  auto** table = reinterpret_cast<float**>(block);
  float* values = reinterpret_cast<float*>(block + tableBytes);
  if (src != nullptr) {
    memcpy(values, src, static_cast<size_t>(bytes - tableBytes));
  } else {
    memset(values, 0, static_cast<size_t>(bytes - tableBytes));
  }
  for (int i = 0; i < rows; ++i) table[i] = values + static_cast<long long>(i) * cols;
  m->rows = rows;
  m->cols = cols;
  m->data = table;
  return m;
}

bool usable(const flat::Matrix* m) {
  return m != nullptr && m->data != nullptr && m->rows >= 1 && m->cols >= 1;
}

bool sameSize(const flat::Matrix* a, const flat::Matrix* b) {
  return a->rows == b->rows && a->cols == b->cols;
}

// The minor without `row` and `col`, as a new matrix.
flat::Matrix* minorOf(const flat::Matrix* m, int row, int col) {
  flat::Matrix* minor = allocate(m->rows - 1, m->cols - 1, nullptr);
  if (minor == nullptr) return nullptr;
  for (int i = 0, r = 0; i < m->rows; ++i) {
    if (i == row) continue;
    for (int j = 0, c = 0; j < m->cols; ++j) {
      if (j == col) continue;
      minor->data[r][c++] = m->data[i][j];
    }
    ++r;
  }
  return minor;
}
}  // namespace

flat::Matrix* ov_createMatrix(int rows, int cols, float* data) {
  if (data == nullptr) return nullptr;
  return allocate(rows, cols, data);
}

flat::Matrix* ov_createMatrix(int rows, int cols) { return allocate(rows, cols, nullptr); }

flat::Matrix* ov_createMatrix(int n, float* data) { return ov_createMatrix(n, n, data); }

flat::Matrix* ov_createMatrix(int n) { return ov_createMatrix(n, n); }

void ov_releaseMatrix(flat::Matrix* m) {
  if (m == nullptr) return;
  ov_free(m->data);
  ov_free(m);
}

flat::Matrix* ov_matrixAdd(flat::Matrix* a, flat::Matrix* b) {
  if (a == nullptr || b == nullptr) return a;
  if (!sameSize(a, b) || a->data == nullptr || b->data == nullptr) return nullptr;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < a->cols; ++j) a->data[i][j] += b->data[i][j];
  return a;
}

flat::Matrix* ov_matrixSub(flat::Matrix* a, flat::Matrix* b) {
  if (a == nullptr || b == nullptr) return a;
  if (!sameSize(a, b) || a->data == nullptr || b->data == nullptr) return nullptr;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < a->cols; ++j) a->data[i][j] -= b->data[i][j];
  return a;
}

void ov_matrixMultiply(flat::Matrix* a, float k) {
  if (!usable(a)) return;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < a->cols; ++j) a->data[i][j] *= k;
}

flat::Matrix* ov_matrixMultiply(flat::Matrix* a, flat::Matrix* b) {
  if (!usable(a) || !usable(b) || a->cols != b->rows) return nullptr;
  flat::Matrix* p = allocate(a->rows, b->cols, nullptr);
  if (p == nullptr) return nullptr;
  for (int i = 0; i < a->rows; ++i)
    for (int j = 0; j < b->cols; ++j) {
      float sum = 0.0f;
      for (int k = 0; k < a->cols; ++k) sum += a->data[i][k] * b->data[k][j];
      p->data[i][j] = sum;
    }
  return p;
}

flat::Matrix* ov_matrixTransponse(flat::Matrix* m) {
  if (!usable(m)) return nullptr;
  flat::Matrix* t = allocate(m->cols, m->rows, nullptr);
  if (t == nullptr) return nullptr;
  for (int i = 0; i < t->rows; ++i)
    for (int j = 0; j < t->cols; ++j) t->data[i][j] = m->data[j][i];
  return t;
}

float ov_matrixDet(flat::Matrix* m) {
  if (!usable(m)) return 0.0f;
  // Expands over as many rows as there are columns; a square matrix is meant.
  const int n = m->cols;
  if (n > m->rows) return 0.0f;
  if (n == 1) return m->data[0][0];
  if (n == 2) return m->data[0][0] * m->data[1][1] - m->data[0][1] * m->data[1][0];
  float det = 0.0f;
  for (int i = 0; i < n; ++i) {
    const double term = std::pow(-1.0, i) * m->data[i][0] * ov_matrixCofator(m, i, 0);
    det = static_cast<float>(det + term);
  }
  return det;
}

float ov_matrixCofator(flat::Matrix* m, int row, int col) {
  if (!usable(m) || m->rows < 2 || m->cols < 2 || row < 0 || row >= m->rows || col < 0 || col >= m->cols)
    return 0.0f;
  flat::Matrix* minor = minorOf(m, row, col);
  if (minor == nullptr) return 0.0f;
  const float det = ov_matrixDet(minor);
  ov_releaseMatrix(minor);
  return det;
}

flat::Matrix* ov_matrixAdj(flat::Matrix* m) {
  if (!usable(m)) return nullptr;
  flat::Matrix* k = allocate(m->rows, m->cols, nullptr);
  if (k == nullptr) return nullptr;
  for (int i = 0; i < m->rows; ++i)
    for (int j = 0; j < m->cols; ++j)
      k->data[i][j] = static_cast<float>(std::pow(-1.0, i + j) * ov_matrixCofator(m, i, j));
  flat::Matrix* adj = ov_matrixTransponse(k);
  ov_releaseMatrix(k);
  return adj;
}

flat::Matrix* ov_matrixInverse(flat::Matrix* m) {
  if (!usable(m)) return nullptr;
  const float d = ov_matrixDet(m);
  if (d == 0.0f) return nullptr;
  flat::Matrix* adj = ov_matrixAdj(m);
  if (adj == nullptr) return nullptr;
  ov_matrixMultiply(adj, 1.0f / d);
  return adj;
}

flat::Matrix* ov_matrixCreateTranslateMatrix(float tx, float ty) {
  flat::Matrix* m = allocate(3, 3, nullptr);
  if (m == nullptr) return nullptr;
  m->data[0][0] = m->data[1][1] = m->data[2][2] = 1.0f;
  m->data[0][2] = tx;
  m->data[1][2] = ty;
  return m;
}

flat::Matrix* ov_matrixCreateRotateMatrix(float angle) {
  flat::Matrix* m = allocate(3, 3, nullptr);
  if (m == nullptr) return nullptr;
  const double c = std::cos(static_cast<double>(angle));
  const double s = std::sin(static_cast<double>(angle));
  m->data[0][0] = static_cast<float>(c);
  m->data[0][1] = static_cast<float>(-s);
  m->data[1][0] = static_cast<float>(s);
  m->data[1][1] = static_cast<float>(c);
  m->data[2][2] = 1.0f;
  return m;
}
