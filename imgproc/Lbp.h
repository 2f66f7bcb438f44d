#pragma once

#include "core/Export.h"

// Local binary patterns over an in-place image pyramid, for a linear
// classifier. The image is rows x cols unsigned 32-bit values stored column by
// column (value at row r, column c is img[c * rows + r]); it is consumed: the
// pyramid levels (plain 2x2 block sums) are built inside it.
//
// Every interior position of every level owns 256 consecutive feature indices;
// its feature is offset + pattern, where bit k of the pattern is set when
// neighbour k is strictly less than the centre. vecDim must be
// lbp_pyr_get_dim(rows, cols, levels) (for the sparse form that value / 256).
// A traversal stops between levels once vecDim is reached or a level had no
// positions; features beyond vecDim are never touched.

// vec[feature] += 1 (8-bit, wrapping); vec is not cleared first.
OV_CAPI void lbp_pyr_features(char* vec, unsigned int vecDim, unsigned int* img, unsigned short rows,
                              unsigned short cols);
// Writes each position's feature into vec[0], vec[1], ...; returns how many.
OV_CAPI unsigned int lbp_pyr_features_sparse(unsigned int* vec, unsigned int vecDim, unsigned int* img,
                                             unsigned short rows, unsigned short cols);
// Sum of w[feature] over all positions, in traversal order.
OV_CAPI double lbp_pyr_dotprod(double* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                               unsigned short cols);
// w[feature] += 1 / -= 1 for every position.
OV_CAPI void lbp_pyr_addvec(long long* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                            unsigned short cols);
OV_CAPI void lbp_pyr_subvec(long long* w, unsigned int vecDim, unsigned int* img, unsigned short rows,
                            unsigned short cols);
// Feature dimension of `levels` pyramid levels (0 when it does not fit in 32 bits).
OV_CAPI unsigned int lbp_pyr_get_dim(unsigned short rows, unsigned short cols, unsigned short levels);

// Nine raster-order offsets of a 3x3 neighbourhood in a row-major buffer.
OV_CAPI void make_offsets(int* offsets, int stride);
