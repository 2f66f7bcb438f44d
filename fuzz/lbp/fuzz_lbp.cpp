// LBP pyramid traversals over random image sizes and feature dimensions; the
// vectors are exactly vecDim long so that any access beyond it is caught.
#include <cstdint>
#include <vector>

#include "../FuzzInput.h"
#include "imgproc/Lbp.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  // Small sides keep the dense vectors (256 entries a position) quick to clear.
  const auto rows = static_cast<unsigned short>(in.range(0, 40));
  const auto cols = static_cast<unsigned short>(in.range(0, 40));
  const auto levels = static_cast<unsigned short>(in.range(0, 8));
  const unsigned full = lbp_pyr_get_dim(rows, cols, levels);
  // The proper dimension, or near it, or anything up to 2^18.
  unsigned vecDim;
  switch (in.range(0, 2)) {
    case 0:
      vecDim = full;
      break;
    case 1:
      vecDim = full + in.range(0, 600) - 300;
      if (vecDim > (1u << 20)) vecDim = full;
      break;
    default:
      vecDim = in.range(0, 1u << 18);
      break;
  }
  std::vector<unsigned> image(size_t(rows) * cols);
  std::vector<unsigned> pristine(image.size());
  for (unsigned& v : pristine) v = in.take<uint8_t>() * (in.flag() ? 0x01010101u : 1u);

  const size_t dim = vecDim > 0 ? vecDim : 1;
  image = pristine;
  std::vector<char> counts(dim);
  lbp_pyr_features(counts.data(), vecDim, image.data(), rows, cols);

  image = pristine;
  std::vector<unsigned> sparse(dim);
  const unsigned n = lbp_pyr_features_sparse(sparse.data(), vecDim, image.data(), rows, cols);
  FUZZ_CHECK(n <= vecDim);

  // Adding then subtracting the same positions leaves the weights at zero.
  std::vector<long long> weights(dim);
  image = pristine;
  lbp_pyr_addvec(weights.data(), vecDim, image.data(), rows, cols);
  image = pristine;
  lbp_pyr_subvec(weights.data(), vecDim, image.data(), rows, cols);
  for (long long w : weights) FUZZ_CHECK(w == 0);

  std::vector<double> ones(dim, 1.0);
  image = pristine;
  lbp_pyr_dotprod(ones.data(), vecDim, image.data(), rows, cols);
  return 0;
}
