#include <gtest/gtest.h>

#include <cmath>

#include "image/FlatMatrix.h"
#include "image/Matrix.h"

namespace {
void expectIdentity(float** m, int n, float tolerance) {
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) EXPECT_NEAR(m[i][j], i == j ? 1.0f : 0.0f, tolerance) << i << "," << j;
}
}  // namespace

TEST(FlatMatrix, StorageIsOneBlockOfRowPointersThenFloats) {
  float v[] = {1, 2, 3, 4, 5, 6};
  flat::Matrix* m = ov_createMatrix(2, 3, v);
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(reinterpret_cast<float*>(m->data + 2), m->data[0]);
  EXPECT_EQ(m->data[1], m->data[0] + 3);
  EXPECT_EQ(m->data[1][2], 6.0f);
  flat::Matrix* z = ov_createMatrix(3);
  ASSERT_NE(z, nullptr);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(z->data[0][i], 0.0f);
  EXPECT_EQ(ov_createMatrix(0, 3), nullptr);
  EXPECT_EQ(ov_createMatrix(2, 2, nullptr), nullptr);
  ov_releaseMatrix(m);
  ov_releaseMatrix(z);
  ov_releaseMatrix(nullptr);
}

TEST(FlatMatrix, TwoByTwoDeterminantAndInverse) {
  float v[] = {1, 2, 3, 4};
  flat::Matrix* m = ov_createMatrix(2, v);
  EXPECT_EQ(ov_matrixDet(m), -2.0f);
  flat::Matrix* inv = ov_matrixInverse(m);
  ASSERT_NE(inv, nullptr);
  EXPECT_FLOAT_EQ(inv->data[0][0], -2.0f);
  EXPECT_FLOAT_EQ(inv->data[0][1], 1.0f);
  EXPECT_FLOAT_EQ(inv->data[1][0], 1.5f);
  EXPECT_FLOAT_EQ(inv->data[1][1], -0.5f);
  ov_releaseMatrix(inv);
  ov_releaseMatrix(m);
}

// det [[2,0,1],[1,3,2],[1,1,2]] = 2*(6-2) - 0 + 1*(1-3) = 6; the minor at
// (0,0) is 3*2 - 2*1 = 4 and the one at (1,0) is 0*2 - 1*1 = -1 (no sign).
TEST(FlatMatrix, ThreeByThreeCofactorsAdjugateAndInverse) {
  float v[] = {2, 0, 1, 1, 3, 2, 1, 1, 2};
  flat::Matrix* m = ov_createMatrix(3, v);
  EXPECT_FLOAT_EQ(ov_matrixDet(m), 6.0f);
  EXPECT_FLOAT_EQ(ov_matrixCofator(m, 0, 0), 4.0f);
  EXPECT_FLOAT_EQ(ov_matrixCofator(m, 1, 0), -1.0f);
  flat::Matrix* adj = ov_matrixAdj(m);
  ASSERT_NE(adj, nullptr);
  // Adjugate = transposed signed cofactors: adj[0][1] = -minor(1,0) = 1.
  EXPECT_FLOAT_EQ(adj->data[0][0], 4.0f);
  EXPECT_FLOAT_EQ(adj->data[0][1], 1.0f);
  flat::Matrix* inv = ov_matrixInverse(m);
  ASSERT_NE(inv, nullptr);
  flat::Matrix* product = ov_matrixMultiply(m, inv);
  ASSERT_NE(product, nullptr);
  expectIdentity(product->data, 3, 1e-6f);
  ov_releaseMatrix(product);
  ov_releaseMatrix(inv);
  ov_releaseMatrix(adj);
  ov_releaseMatrix(m);

  flat::Matrix* zero = ov_createMatrix(3);
  EXPECT_EQ(ov_matrixInverse(zero), nullptr);
  ov_releaseMatrix(zero);
}

TEST(FlatMatrix, FourByFourInverseMultipliesBackToIdentity) {
  float v[] = {4, 7, 2, 3, 0, 5, 0, 1, 1, 0, 3, 2, 2, 1, 0, 6};
  flat::Matrix* m = ov_createMatrix(4, v);
  flat::Matrix* inv = ov_matrixInverse(m);
  ASSERT_NE(inv, nullptr);
  flat::Matrix* left = ov_matrixMultiply(inv, m);
  flat::Matrix* right = ov_matrixMultiply(m, inv);
  expectIdentity(left->data, 4, 1e-5f);
  expectIdentity(right->data, 4, 1e-5f);
  for (flat::Matrix* x : {m, inv, left, right}) ov_releaseMatrix(x);
}

TEST(FlatMatrix, ArithmeticInPlaceAndShapes) {
  float a[] = {1, 2, 3, 4, 5, 6}, b[] = {6, 5, 4, 3, 2, 1};
  flat::Matrix* ma = ov_createMatrix(2, 3, a);
  flat::Matrix* mb = ov_createMatrix(2, 3, b);
  EXPECT_EQ(ov_matrixAdd(ma, mb), ma);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(ma->data[0][i], 7.0f);
  EXPECT_EQ(ov_matrixSub(ma, mb), ma);
  EXPECT_EQ(ma->data[1][2], 6.0f);
  ov_matrixMultiply(ma, 2.0f);
  EXPECT_EQ(ma->data[0][1], 4.0f);
  EXPECT_EQ(ov_matrixMultiply(ma, mb), nullptr);  // 2x3 by 2x3
  EXPECT_EQ(ov_matrixAdd(ma, nullptr), ma);       // a null argument comes back as it is
  flat::Matrix* square = ov_createMatrix(2);
  EXPECT_EQ(ov_matrixAdd(ma, square), nullptr);

  flat::Matrix* t = ov_matrixTransponse(mb);
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->rows, 3);
  EXPECT_EQ(t->cols, 2);
  EXPECT_EQ(t->data[2][0], 4.0f);              // mb[0][2]
  EXPECT_EQ(t->data[0][1], 3.0f);              // mb[1][0]
  flat::Matrix* p = ov_matrixMultiply(mb, t);  // 2x3 * 3x2
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p->data[0][0], 36 + 25 + 16.0f);
  EXPECT_EQ(p->data[0][1], 18 + 10 + 4.0f);
  for (flat::Matrix* x : {ma, mb, square, t, p}) ov_releaseMatrix(x);
}

TEST(FlatMatrix, TranslateAndRotate) {
  flat::Matrix* r = ov_matrixCreateRotateMatrix(static_cast<float>(M_PI / 2));
  float pv[] = {1, 0, 1};
  flat::Matrix* point = ov_createMatrix(3, 1, pv);
  flat::Matrix* moved = ov_matrixMultiply(r, point);
  ASSERT_NE(moved, nullptr);
  EXPECT_NEAR(moved->data[0][0], 0.0f, 1e-6f);
  EXPECT_NEAR(moved->data[1][0], 1.0f, 1e-6f);
  EXPECT_NEAR(moved->data[2][0], 1.0f, 1e-6f);
  EXPECT_EQ(r->data[2][0], 0.0f);

  flat::Matrix* t = ov_matrixCreateTranslateMatrix(3.0f, -2.0f);
  flat::Matrix* shifted = ov_matrixMultiply(t, point);
  EXPECT_EQ(shifted->data[0][0], 4.0f);
  EXPECT_EQ(shifted->data[1][0], -2.0f);
  EXPECT_EQ(shifted->data[2][0], 1.0f);
  for (flat::Matrix* x : {r, point, moved, t, shifted}) ov_releaseMatrix(x);
}

TEST(Matrix, ClassMatchesTheWorkedExamples) {
  float v[] = {1, 2, 3, 4};
  auto_ptr<Matrix> m(Matrix::create(2, v));
  EXPECT_EQ(m->det(), -2.0f);
  auto_ptr<Matrix> inv(m->inverse());
  ASSERT_NE(inv, nullptr);
  EXPECT_FLOAT_EQ(inv->data[1][0], 1.5f);
  EXPECT_FLOAT_EQ(inv->data[1][1], -0.5f);

  float w[] = {4, 7, 2, 3, 0, 5, 0, 1, 1, 0, 3, 2, 2, 1, 0, 6};
  auto_ptr<Matrix> big(Matrix::create(4, w));
  auto_ptr<Matrix> bigInv(big->inverse());
  ASSERT_NE(bigInv, nullptr);
  Matrix* product = Matrix::multiply(big.get(), bigInv.get());
  ASSERT_NE(product, nullptr);
  EXPECT_EQ(product->getRefCount(), 0);
  expectIdentity(product->data, 4, 1e-5f);
  delete product;

  auto_ptr<Matrix> zero(Matrix::create(3));
  EXPECT_EQ(zero->inverse(), nullptr);
  float u[] = {2, 0, 1, 1, 3, 2, 1, 1, 2};
  auto_ptr<Matrix> three(Matrix::create(3, 3, u));
  EXPECT_FLOAT_EQ(three->det(), 6.0f);
  EXPECT_FLOAT_EQ(three->cofator(1, 0), -1.0f);
}

TEST(Matrix, ClassArithmeticAndRefusals) {
  auto_ptr<Matrix> a(Matrix::create(2, 3));
  auto_ptr<Matrix> b(Matrix::create(2, 3));
  auto_ptr<Matrix> c(Matrix::create(3, 2));
  b->data[1][2] = 5.0f;
  EXPECT_EQ(Matrix::add(a.get(), b.get()), a.get());
  EXPECT_EQ(a->data[1][2], 5.0f);
  EXPECT_EQ(Matrix::multiply(a.get(), 3.0f), a.get());
  EXPECT_EQ(a->data[1][2], 15.0f);
  EXPECT_EQ(Matrix::sub(a.get(), b.get()), a.get());
  EXPECT_EQ(a->data[1][2], 10.0f);
  EXPECT_EQ(Matrix::add(a.get(), c.get()), nullptr);
  EXPECT_EQ(Matrix::sub(nullptr, b.get()), nullptr);
  EXPECT_EQ(Matrix::multiply(a.get(), b.get()), nullptr);
  auto_ptr<Matrix> t(a->transponse());
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->rows, 3);
  EXPECT_EQ(t->data[2][1], 10.0f);
  EXPECT_EQ(a->det(), 0.0f);  // not square
  Matrix bad(0, 4);
  EXPECT_EQ(bad.data, nullptr);
  EXPECT_EQ(bad.inverse(), nullptr);
}
