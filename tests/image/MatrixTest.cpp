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
// det = 2*(6-2) - 0 + 1*(1-3) = 6; minor(1,0) = 0*2 - 1*1 = -1.
float k3x3[] = {2, 0, 1, 1, 3, 2, 1, 1, 2};
}  // namespace

TEST(FlatMatrix, DeterminantsInversesAndShapes) {
  float v[] = {1, 2, 3, 4};
  flat::Matrix* m2 = ov_createMatrix(2, v);
  EXPECT_EQ(ov_matrixDet(m2), -2.0f);
  flat::Matrix* inv2 = ov_matrixInverse(m2);
  ASSERT_NE(inv2, nullptr);
  const float expected[] = {-2.0f, 1.0f, 1.5f, -0.5f};
  for (int i = 0; i < 4; ++i) EXPECT_FLOAT_EQ(inv2->data[0][i], expected[i]);

  flat::Matrix* m3 = ov_createMatrix(3, k3x3);
  EXPECT_FLOAT_EQ(ov_matrixDet(m3), 6.0f);
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
  flat::Matrix* wide = ov_createMatrix(2, 3);
  EXPECT_EQ(ov_matrixMultiply(wide, wide), nullptr);  // 2x3 by 2x3
  // Row table and cells beyond an int (2^31 + 2^30 bytes), and cells beyond it alone.
  for (int rows : {1 << 28, INT32_MAX}) {
    EXPECT_EQ(ov_createMatrix(rows, rows == INT32_MAX ? 2 : 1), nullptr) << rows;
    auto_ptr<Matrix> refused(Matrix::create(rows, rows == INT32_MAX ? 2 : 1));
    EXPECT_EQ(refused->data, nullptr) << rows;
  }
  for (flat::Matrix* x : {m2, inv2, m3, adj, m4, inv4, left, right, zero, wide}) ov_releaseMatrix(x);
}

TEST(FlatMatrix, TranslateAndRotate) {
  float pv[] = {1, 0, 1};
  flat::Matrix* point = ov_createMatrix(3, 1, pv);
  flat::Matrix* r = ov_matrixCreateRotateMatrix(static_cast<float>(M_PI / 2));
  flat::Matrix* t = ov_matrixCreateTranslateMatrix(3.0f, -2.0f);
  flat::Matrix* turned = ov_matrixMultiply(r, point);
  flat::Matrix* shifted = ov_matrixMultiply(t, point);
  const float want[2][3] = {{0, 1, 1}, {4, -2, 1}};
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(turned->data[i][0], want[0][i], 1e-6f) << i;
    EXPECT_EQ(shifted->data[i][0], want[1][i]) << i;
  }
  for (flat::Matrix* x : {r, point, turned, t, shifted}) ov_releaseMatrix(x);
}

TEST(Matrix, ClassFaceGivesTheSameResults) {
  float v[] = {1, 2, 3, 4};
  auto_ptr<Matrix> m(Matrix::create(2, v));
  EXPECT_EQ(m->det(), -2.0f);
  auto_ptr<Matrix> inv(m->inverse());
  EXPECT_FLOAT_EQ(inv->data[1][0], 1.5f);
  auto_ptr<Matrix> three(Matrix::create(3, 3, k3x3));
  EXPECT_FLOAT_EQ(three->det(), 6.0f);
  auto_ptr<Matrix> big(Matrix::create(4, k4x4));
  auto_ptr<Matrix> bigInv(big->inverse());
  auto_ptr<Matrix> product(Matrix::multiply(big.get(), bigInv.get()));
  ASSERT_NE(product, nullptr);
  expectIdentity(product->data, 4);
  auto_ptr<Matrix> zero(Matrix::create(3));
  EXPECT_EQ(zero->inverse(), nullptr);
}
