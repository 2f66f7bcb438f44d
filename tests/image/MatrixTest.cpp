#include <gtest/gtest.h>

#include <cmath>

#include "image/FlatMatrix.h"
#include "image/Matrix.h"

namespace {
void expectIdentity(float** m, int n) {
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) EXPECT_NEAR(m[i][j], i == j ? 1.0f : 0.0f, 1e-5f) << i << "," << j;
}
float k4x4[] = {4, 7, 2, 3, 0, 5, 0, 1, 1, 0, 3, 2, 2, 1, 0, 6};
// det = 2*(6-2) - 0 + 1*(1-3) = 6; minor(0,0) = 3*2 - 2*1 = 4; minor(1,0) = 0*2 - 1*1 = -1.
float k3x3[] = {2, 0, 1, 1, 3, 2, 1, 1, 2};
}  // namespace

TEST(FlatMatrix, StorageIsOneBlockOfRowPointersThenFloats) {
  float v[] = {1, 2, 3, 4, 5, 6};
  flat::Matrix* m = ov_createMatrix(2, 3, v);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(reinterpret_cast<float*>(m->data + 2), m->data[0]);
  EXPECT_EQ(m->data[1], m->data[0] + 3);
  EXPECT_EQ(m->data[1][2], 6.0f);
  flat::Matrix* z = ov_createMatrix(3);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(z->data[0][i], 0.0f);
  EXPECT_EQ(ov_createMatrix(0, 3), nullptr);
  EXPECT_EQ(ov_createMatrix(2, 2, nullptr), nullptr);
  ov_releaseMatrix(m);
  ov_releaseMatrix(z);
  ov_releaseMatrix(nullptr);
}

TEST(FlatMatrix, DeterminantsCofactorsAndInverses) {
  float v[] = {1, 2, 3, 4};
  flat::Matrix* m2 = ov_createMatrix(2, v);
  EXPECT_EQ(ov_matrixDet(m2), -2.0f);
  flat::Matrix* inv2 = ov_matrixInverse(m2);
  ASSERT_NE(inv2, nullptr);
  const float expected[] = {-2.0f, 1.0f, 1.5f, -0.5f};
  for (int i = 0; i < 4; ++i) EXPECT_FLOAT_EQ(inv2->data[0][i], expected[i]);

  flat::Matrix* m3 = ov_createMatrix(3, k3x3);
  EXPECT_FLOAT_EQ(ov_matrixDet(m3), 6.0f);
  EXPECT_FLOAT_EQ(ov_matrixCofator(m3, 0, 0), 4.0f);
  EXPECT_FLOAT_EQ(ov_matrixCofator(m3, 1, 0), -1.0f);  // the minor, unsigned
  flat::Matrix* adj = ov_matrixAdj(m3);
  EXPECT_FLOAT_EQ(adj->data[0][1], 1.0f);  // transposed and signed: -minor(1,0)

  // A 4x4 inverse multiplied back, on both sides, gives the identity.
  flat::Matrix* m4 = ov_createMatrix(4, k4x4);
  flat::Matrix* inv4 = ov_matrixInverse(m4);
  ASSERT_NE(inv4, nullptr);
  flat::Matrix* left = ov_matrixMultiply(inv4, m4);
  flat::Matrix* right = ov_matrixMultiply(m4, inv4);
  expectIdentity(left->data, 4);
  expectIdentity(right->data, 4);

  flat::Matrix* zero = ov_createMatrix(3);
  EXPECT_EQ(ov_matrixInverse(zero), nullptr);
  for (flat::Matrix* x : {m2, inv2, m3, adj, m4, inv4, left, right, zero}) ov_releaseMatrix(x);
}

TEST(FlatMatrix, ArithmeticInPlaceAndShapes) {
  float a[] = {1, 2, 3, 4, 5, 6}, b[] = {6, 5, 4, 3, 2, 1};
  flat::Matrix* ma = ov_createMatrix(2, 3, a);
  flat::Matrix* mb = ov_createMatrix(2, 3, b);
  EXPECT_EQ(ov_matrixAdd(ma, mb), ma);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(ma->data[0][i], 7.0f);
  EXPECT_EQ(ov_matrixSub(ma, mb), ma);
  ov_matrixMultiply(ma, 2.0f);
  EXPECT_EQ(ma->data[1][2], 12.0f);
  EXPECT_EQ(ov_matrixMultiply(ma, mb), nullptr);  // 2x3 by 2x3
  EXPECT_EQ(ov_matrixAdd(ma, nullptr), ma);       // a null argument comes back as it is
  flat::Matrix* square = ov_createMatrix(2);
  EXPECT_EQ(ov_matrixAdd(ma, square), nullptr);
  flat::Matrix* t = ov_matrixTransponse(mb);
  EXPECT_EQ(t->rows, 3);
  EXPECT_EQ(t->data[2][0], 4.0f);
  flat::Matrix* p = ov_matrixMultiply(mb, t);  // row 0 by itself, row 0 by row 1
  EXPECT_EQ(p->data[0][0], 36 + 25 + 16.0f);
  EXPECT_EQ(p->data[0][1], 18 + 10 + 4.0f);
  for (flat::Matrix* x : {ma, mb, square, t, p}) ov_releaseMatrix(x);
}

TEST(FlatMatrix, TranslateAndRotate) {
  float pv[] = {1, 0, 1};
  flat::Matrix* point = ov_createMatrix(3, 1, pv);
  flat::Matrix* r = ov_matrixCreateRotateMatrix(static_cast<float>(M_PI / 2));
  flat::Matrix* moved = ov_matrixMultiply(r, point);
  EXPECT_NEAR(moved->data[0][0], 0.0f, 1e-6f);
  EXPECT_NEAR(moved->data[1][0], 1.0f, 1e-6f);
  EXPECT_NEAR(moved->data[2][0], 1.0f, 1e-6f);
  flat::Matrix* t = ov_matrixCreateTranslateMatrix(3.0f, -2.0f);
  flat::Matrix* shifted = ov_matrixMultiply(t, point);
  EXPECT_EQ(shifted->data[0][0], 4.0f);
  EXPECT_EQ(shifted->data[1][0], -2.0f);
  EXPECT_EQ(shifted->data[2][0], 1.0f);
  for (flat::Matrix* x : {r, point, moved, t, shifted}) ov_releaseMatrix(x);
}

TEST(Matrix, ClassFaceGivesTheSameResults) {
  float v[] = {1, 2, 3, 4};
  auto_ptr<Matrix> m(Matrix::create(2, v));
  EXPECT_EQ(m->det(), -2.0f);
  auto_ptr<Matrix> inv(m->inverse());
  EXPECT_FLOAT_EQ(inv->data[1][0], 1.5f);
  auto_ptr<Matrix> three(Matrix::create(3, 3, k3x3));
  EXPECT_FLOAT_EQ(three->det(), 6.0f);
  EXPECT_FLOAT_EQ(three->cofator(1, 0), -1.0f);
  auto_ptr<Matrix> big(Matrix::create(4, k4x4));
  auto_ptr<Matrix> bigInv(big->inverse());
  Matrix* product = Matrix::multiply(big.get(), bigInv.get());
  ASSERT_NE(product, nullptr);
  EXPECT_EQ(product->getRefCount(), 0);
  expectIdentity(product->data, 4);
  delete product;
  auto_ptr<Matrix> zero(Matrix::create(3));
  EXPECT_EQ(zero->inverse(), nullptr);

  auto_ptr<Matrix> a(Matrix::create(2, 3)), b(Matrix::create(2, 3)), c(Matrix::create(3, 2));
  b->data[1][2] = 5.0f;
  EXPECT_EQ(Matrix::add(a.get(), b.get()), a.get());
  EXPECT_EQ(Matrix::multiply(a.get(), 3.0f), a.get());
  EXPECT_EQ(Matrix::sub(a.get(), b.get()), a.get());
  EXPECT_EQ(a->data[1][2], 10.0f);
  EXPECT_EQ(Matrix::add(a.get(), c.get()), nullptr);
  EXPECT_EQ(Matrix::multiply(a.get(), b.get()), nullptr);
  auto_ptr<Matrix> t(a->transponse());
  EXPECT_EQ(t->data[2][1], 10.0f);
  EXPECT_EQ(a->det(), 0.0f);  // not square
  Matrix bad(0, 4);
  EXPECT_EQ(bad.data, nullptr);
}
