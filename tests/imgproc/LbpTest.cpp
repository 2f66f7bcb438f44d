#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "imgproc/Lbp.h"

namespace {

using Img = std::vector<uint32_t>;

// A level kept the straightforward way: row-major, its own buffer.
struct Level {
  int h, w;
  std::vector<uint32_t> v;
  uint32_t at(int y, int x) const { return v[y * w + x]; }
};

// Features by the definition: next level = 2x2 block sums (odd last row or
// column dropped), columns outer, rows inner, bit k set when neighbour k is
// smaller than the centre. *last receives the last level with positions.
std::vector<uint32_t> referenceFeatures(const Img& img, int rows, int cols, int levels, Level* last) {
  const int dy[8] = {-1, 0, 1, -1, 1, -1, 0, 1}, dx[8] = {-1, -1, -1, 0, 0, 1, 1, 1};
  std::vector<uint32_t> out;
  Level l{rows, cols, Img(rows * cols)};
  for (int i = 0; i < rows * cols; ++i) l.v[(i % rows) * cols + i / rows] = img[i];  // from column-major
  for (int lev = 0; lev < levels; ++lev) {
    if (lev > 0) {
      Level n{l.h / 2, l.w / 2, Img((l.h / 2) * (l.w / 2))};
      for (int y = 0; y < n.h; ++y)
        for (int x = 0; x < n.w; ++x)
          n.v[y * n.w + x] = l.at(2 * y, 2 * x) + l.at(2 * y, 2 * x + 1) + l.at(2 * y + 1, 2 * x) +
                             l.at(2 * y + 1, 2 * x + 1);
      l = n;
    }
    if (l.h < 3 || l.w < 3) break;
    for (int x = 1; x < l.w - 1; ++x)
      for (int y = 1; y < l.h - 1; ++y) {
        uint32_t p = 0;
        for (int k = 0; k < 8; ++k) p |= uint32_t(l.at(y + dy[k], x + dx[k]) < l.at(y, x)) << k;
        out.push_back(uint32_t(out.size()) * 256 + p);
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
  // Interior positions per level x 256: 100x40 -> 98*38 + 48*18 + 23*8 (either way
  // round); 64x64 has positions down to 4x4: 62^2 + 30^2 + 14^2 + 6^2 + 2^2.
  const unsigned cases[][4] = {{5, 5, 1, 2304},         {8, 8, 2, 10240},         {2, 100, 3, 0},
                               {64, 64, 0, 0},          {100, 40, 3, 4772 * 256}, {40, 100, 3, 4772 * 256},
                               {64, 64, 20, 4980 * 256}};
  for (auto& c : cases)
    EXPECT_EQ(lbp_pyr_get_dim(c[0], c[1], c[2]), c[3]) << c[0] << "x" << c[1] << "/" << c[2];
  int o[9];
  make_offsets(o, 10);
  EXPECT_EQ(std::vector<int>(o, o + 9), (std::vector<int>{-11, -10, -9, -1, 0, 1, 9, 10, 11}));
}

TEST(Lbp, PatternBitsOnHandBuiltImages) {
  // (row, column) of the neighbour behind each bit; column-major storage. The
  // other neighbours equal the centre and do not count.
  const int nb[8][2] = {{0, 0}, {1, 0}, {2, 0}, {0, 1}, {2, 1}, {0, 2}, {1, 2}, {2, 2}};
  for (int k = 0; k < 8; ++k) {
    Img img(9, 5);
    img[nb[k][1] * 3 + nb[k][0]] = 4;
    unsigned int f = 0;
    EXPECT_EQ(lbp_pyr_features_sparse(&f, 1, img.data(), 3, 3), 1u);
    EXPECT_EQ(f, 1u << k) << "bit " << k;
  }
  // Centre largest: pattern 255. The vector is not cleared first and its
  // 8-bit counters wrap.
  std::vector<char> one(256, 0);
  one[255] = char(255);
  Img peak = {1, 2, 3, 4, 9, 5, 6, 7, 8};
  lbp_pyr_features(one.data(), 256, peak.data(), 3, 3);
  EXPECT_EQ(one, std::vector<char>(256, 0));
}

// Sparse against the 2x2 block-sum reference (full 32-bit values wrap; few
// distinct values give plenty of ties), and dense, dotprod, add and sub
// against sparse.
TEST(Lbp, AllFormsAgreeWithTheBlockSumReference) {
  std::mt19937 rng(41);
  const int shapes[][4] = {{16, 16, 3, 4}, {23, 37, 3, 4}, {40, 9, 2, 4}, {64, 64, 4, 0}, {17, 29, 4, 0}};
  for (auto& s : shapes) {
    const int rows = s[0], cols = s[1], levels = s[2];
    SCOPED_TRACE(testing::Message() << rows << "x" << cols << " levels " << levels);
    const unsigned dim = lbp_pyr_get_dim(rows, cols, levels), positions = dim / 256;
    const Img img = randomImage(rng, rows * cols, s[3]);
    Level last{};
    const std::vector<uint32_t> expect = referenceFeatures(img, rows, cols, levels, &last);
    ASSERT_EQ(expect.size(), positions);

    Img work;
    auto fresh = [&] { return (work = img).data(); };  // each call consumes the image
    std::vector<unsigned int> sparse(positions + 8, 0xDEADBEEF);
    ASSERT_EQ(lbp_pyr_features_sparse(sparse.data(), positions, fresh(), rows, cols), positions);
    EXPECT_EQ(std::vector<uint32_t>(sparse.begin(), sparse.begin() + positions), expect);
    EXPECT_EQ(std::vector<uint32_t>(sparse.begin() + positions, sparse.end()), Img(8, 0xDEADBEEF));
    // The last level is left in the buffer, columns still `rows` apart.
    for (int y = 0; y < last.h; ++y)
      for (int x = 0; x < last.w; ++x) ASSERT_EQ(work[x * rows + y], last.at(y, x)) << y << "," << x;

    std::vector<char> dense(dim, 0), fromSparse(dim, 0);
    lbp_pyr_features(dense.data(), dim, fresh(), rows, cols);
    for (unsigned i = 0; i < positions; ++i) fromSparse[expect[i]] = 1;
    EXPECT_EQ(dense, fromSparse);

    std::vector<double> w(dim);
    for (auto& x : w) x = double(rng() % 2001) / 1000.0 - 1.0;
    double sum = 0.0;
    for (unsigned i = 0; i < positions; ++i) sum += w[expect[i]];  // in traversal order
    EXPECT_EQ(lbp_pyr_dotprod(w.data(), dim, fresh(), rows, cols), sum);

    std::vector<long long> acc(dim, 5);
    lbp_pyr_addvec(acc.data(), dim, fresh(), rows, cols);
    for (unsigned i = 0; i < dim; ++i) ASSERT_EQ(acc[i], 5 + dense[i]) << i;
    lbp_pyr_subvec(acc.data(), dim, fresh(), rows, cols);
    EXPECT_EQ(acc, std::vector<long long>(dim, 5));
  }
}

TEST(Lbp, TooLargeDimensionEndsTheTraversal) {
  std::mt19937 rng(47);
  const int rows = 20, cols = 14;
  const Img img = randomImage(rng, rows * cols, 100);
  Img work = img;
  // Too large: the traversal ends after 20x14, 10x7 and 5x3: 18*12 + 8*5 + 3*1 positions.
  std::vector<unsigned int> sparse(400, 0);
  EXPECT_EQ(lbp_pyr_features_sparse(sparse.data(), 400, work.data(), rows, cols), 259u);
}
