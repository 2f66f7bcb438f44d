#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "imgproc/Lbp.h"

namespace {

using Img = std::vector<uint32_t>;

// A level kept the straightforward way: row-major, its own buffer.
struct Level {
  int h, w;
  std::vector<uint32_t> v;  // v[y * w + x]
  uint32_t at(int y, int x) const { return v[y * w + x]; }
};

Level fromColumnMajor(const Img& img, int rows, int cols) {
  Level l{rows, cols, std::vector<uint32_t>(rows * cols)};
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < cols; ++x) l.v[y * cols + x] = img[x * rows + y];
  return l;
}

// Next level: sums of 2x2 blocks, odd last row/column dropped.
Level halve(const Level& l) {
  Level n{l.h / 2, l.w / 2, {}};
  n.v.resize(n.h * n.w);
  for (int y = 0; y < n.h; ++y)
    for (int x = 0; x < n.w; ++x)
      n.v[y * n.w + x] =
          l.at(2 * y, 2 * x) + l.at(2 * y, 2 * x + 1) + l.at(2 * y + 1, 2 * x) + l.at(2 * y + 1, 2 * x + 1);
  return n;
}

// Features of a pyramid by the definition: columns outer, rows inner.
std::vector<uint32_t> referenceFeatures(const Img& img, int rows, int cols, int levels, Level* last) {
  const int dy[8] = {-1, 0, 1, -1, 1, -1, 0, 1};
  const int dx[8] = {-1, -1, -1, 0, 0, 1, 1, 1};
  std::vector<uint32_t> out;
  Level l = fromColumnMajor(img, rows, cols);
  for (int lev = 0; lev < levels && l.h >= 3 && l.w >= 3; ++lev) {
    if (lev > 0) l = halve(l);
    if (l.h < 3 || l.w < 3) break;
    for (int x = 1; x < l.w - 1; ++x)
      for (int y = 1; y < l.h - 1; ++y) {
        uint32_t p = 0;
        for (int k = 0; k < 8; ++k) p |= (uint32_t)(l.at(y + dy[k], x + dx[k]) < l.at(y, x)) << k;
        out.push_back((uint32_t)out.size() * 256 + p);
      }
    *last = l;
  }
  return out;
}

Img randomImage(std::mt19937& rng, int n, uint32_t range) {
  Img v(n);
  for (auto& x : v) x = range ? rng() % range : rng();
  return v;
}

}  // namespace

TEST(Lbp, QuotedDimensionsAndOffsets) {
  EXPECT_EQ(lbp_pyr_get_dim(5, 5, 1), 2304u);
  EXPECT_EQ(lbp_pyr_get_dim(8, 8, 2), 10240u);
  EXPECT_EQ(lbp_pyr_get_dim(2, 100, 3), 0u);
  EXPECT_EQ(lbp_pyr_get_dim(64, 64, 0), 0u);
  // Sides play symmetric roles: (98*38 + 48*18 + 23*8) * 256.
  EXPECT_EQ(lbp_pyr_get_dim(100, 40, 3), (98u * 38 + 48 * 18 + 23 * 8) * 256);
  EXPECT_EQ(lbp_pyr_get_dim(40, 100, 3), lbp_pyr_get_dim(100, 40, 3));
  EXPECT_EQ(lbp_pyr_get_dim(64, 64, 20), lbp_pyr_get_dim(64, 64, 5));  // 4x4 is the last level with positions

  int o[9];
  make_offsets(o, 10);
  EXPECT_EQ(std::vector<int>(o, o + 9), (std::vector<int>{-11, -10, -9, -1, 0, 1, 9, 10, 11}));
}

TEST(Lbp, PatternBitsFollowTheNeighbourTable) {
  // (row, column) of the neighbour behind each bit.
  const int nb[8][2] = {{0, 0}, {1, 0}, {2, 0}, {0, 1}, {2, 1}, {0, 2}, {1, 2}, {2, 2}};
  for (int k = 0; k < 8; ++k) {
    Img img(9, 5);
    img[nb[k][1] * 3 + nb[k][0]] = 4;  // column-major: column * rows + row
    unsigned int f = 0;
    EXPECT_EQ(lbp_pyr_features_sparse(&f, 1, img.data(), 3, 3), 1u);
    EXPECT_EQ(f, 1u << k) << "bit " << k;
  }
  // Equal neighbours do not count; a constant image gives pattern 0 everywhere.
  std::vector<char> vec(2304, 0);
  Img flat(25, 77);
  lbp_pyr_features(vec.data(), 2304, flat.data(), 5, 5);
  for (int i = 0; i < 2304; ++i) EXPECT_EQ(vec[i], i % 256 == 0 ? 1 : 0) << i;

  // Centre largest: pattern 255, and the traversal ends after that one level.
  Img peak = {1, 2, 3, 4, 9, 5, 6, 7, 8};
  std::vector<char> one(256, 0);
  lbp_pyr_features(one.data(), 256, peak.data(), 3, 3);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(one[i], i == 255 ? 1 : 0);

  // The vector is not cleared first and its 8-bit counters wrap.
  Img again = {1, 2, 3, 4, 9, 5, 6, 7, 8};
  one[255] = (char)255;
  one[0] = 42;
  lbp_pyr_features(one.data(), 256, again.data(), 3, 3);
  EXPECT_EQ(one[255], 0);
  EXPECT_EQ(one[0], 42);
}

TEST(Lbp, FiveFormsAgreeOverSeveralLevels) {
  std::mt19937 rng(41);
  const int shapes[][3] = {{16, 16, 3}, {23, 37, 3}, {40, 9, 2}, {64, 64, 4}, {31, 30, 5}};
  for (auto& s : shapes) {
    const int rows = s[0], cols = s[1], levels = s[2];
    SCOPED_TRACE(testing::Message() << rows << "x" << cols << " levels " << levels);
    const unsigned dim = lbp_pyr_get_dim(rows, cols, levels);
    const unsigned positions = dim / 256;
    // Few distinct values: plenty of ties.
    const Img img = randomImage(rng, rows * cols, 4);

    Img work = img;
    std::vector<unsigned int> sparse(positions + 8, 0xDEADBEEF);
    ASSERT_EQ(lbp_pyr_features_sparse(sparse.data(), positions, work.data(), rows, cols), positions);
    for (unsigned i = positions; i < sparse.size(); ++i) EXPECT_EQ(sparse[i], 0xDEADBEEFu);
    for (unsigned i = 0; i < positions; ++i) ASSERT_EQ(sparse[i] / 256, i);

    work = img;
    std::vector<char> dense(dim, 0);
    lbp_pyr_features(dense.data(), dim, work.data(), rows, cols);
    std::vector<char> fromSparse(dim, 0);
    for (unsigned i = 0; i < positions; ++i) fromSparse[sparse[i]] = 1;
    EXPECT_EQ(dense, fromSparse);

    std::vector<double> w(dim);
    for (auto& x : w) x = (double)(rng() % 2001) / 1000.0 - 1.0;
    double expect = 0.0;
    for (unsigned i = 0; i < positions; ++i) expect += w[sparse[i]];
    work = img;
    EXPECT_EQ(lbp_pyr_dotprod(w.data(), dim, work.data(), rows, cols), expect);
    std::vector<double> ones(dim, 1.0);
    work = img;
    EXPECT_EQ(lbp_pyr_dotprod(ones.data(), dim, work.data(), rows, cols), (double)positions);

    std::vector<long long> acc(dim, 5);
    work = img;
    lbp_pyr_addvec(acc.data(), dim, work.data(), rows, cols);
    for (unsigned i = 0; i < dim; ++i) ASSERT_EQ(acc[i], 5 + dense[i]) << i;
    work = img;
    lbp_pyr_subvec(acc.data(), dim, work.data(), rows, cols);
    EXPECT_EQ(acc, std::vector<long long>(dim, 5));
  }
}

TEST(Lbp, PyramidIsDirectTwoByTwoBlockSums) {
  std::mt19937 rng(43);
  const int shapes[][3] = {{17, 29, 4}, {64, 64, 3}, {12, 50, 3}, {33, 33, 5}};
  for (auto& s : shapes) {
    const int rows = s[0], cols = s[1], levels = s[2];
    SCOPED_TRACE(testing::Message() << rows << "x" << cols);
    // Full 32-bit values: block sums wrap.
    const Img img = randomImage(rng, rows * cols, 0);
    Level last{};
    const std::vector<uint32_t> expect = referenceFeatures(img, rows, cols, levels, &last);
    const unsigned positions = lbp_pyr_get_dim(rows, cols, levels) / 256;
    ASSERT_EQ(expect.size(), positions);
    Img work = img;
    std::vector<unsigned int> got(positions);
    lbp_pyr_features_sparse(got.data(), positions, work.data(), rows, cols);
    EXPECT_EQ(got, expect);
    // The last level is left in the buffer, columns still `rows` apart.
    for (int y = 0; y < last.h; ++y)
      for (int x = 0; x < last.w; ++x) ASSERT_EQ(work[x * rows + y], last.at(y, x)) << y << "," << x;
  }
}

TEST(Lbp, WrongDimensionsNeitherLoopNorWriteOutside) {
  std::mt19937 rng(47);
  const int rows = 20, cols = 14;
  const Img img = randomImage(rng, rows * cols, 100);
  const unsigned all = lbp_pyr_get_dim(rows, cols, 10);

  // Too large: the traversal ends after the last level with positions.
  Img work = img;
  std::vector<unsigned int> sparse(all / 256 + 50, 0);
  EXPECT_EQ(lbp_pyr_features_sparse(sparse.data(), all / 256 + 50, work.data(), rows, cols), all / 256);
  std::vector<double> ones(all + 256 * 50, 1.0);
  work = img;
  EXPECT_EQ(lbp_pyr_dotprod(ones.data(), all + 256 * 50, work.data(), rows, cols), all / 256.0);

  // Too small: features at or past vecDim are not touched.
  const unsigned small = 300;
  std::vector<long long> w(small + 64, 0);
  work = img;
  lbp_pyr_addvec(w.data(), small, work.data(), rows, cols);
  for (unsigned i = small; i < w.size(); ++i) EXPECT_EQ(w[i], 0) << i;

  // Degenerate sizes and null buffers.
  Img tiny(4, 1);
  std::vector<char> vec(256, 0);
  lbp_pyr_features(vec.data(), 256, tiny.data(), 2, 2);
  lbp_pyr_features(vec.data(), 256, tiny.data(), 0, 0);
  lbp_pyr_features(nullptr, 256, tiny.data(), 2, 2);
  EXPECT_EQ(vec, std::vector<char>(256, 0));
  EXPECT_EQ(lbp_pyr_dotprod(nullptr, 256, tiny.data(), 2, 2), 0.0);
}
