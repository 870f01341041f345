// The maximal correlation coefficient of a co-occurrence matrix.
//
//   double const r = Impl::MaximalCorrelation(sums);  // sums that kept their cells
#pragma once

#include <SeluUtils/Impl/PairSums.h>

namespace ORVA::Impl {

/// The second greatest singular value of p(i, j) / sqrt(px(i) py(j)) over the occupied rows and
/// columns: 1 for one row and one column, 0 for one of either. The first is 1 and its vectors are
/// known, so that the second is the greatest one beside them: found by Lanczos bidiagonalization
/// with full reorthogonalization (G. Golub and W. Kahan, "Calculating the Singular Values and
/// Pseudo-Inverse of a Matrix", SIAM J. Numer. Anal. B 2 (1965) 205-224), to 1e-12 or better as a
/// rule. O(k (cells + k levels)) for k steps, which are fewer than the levels and, from some 2000
/// levels on, fewer than 2^24 / levels.
[[nodiscard]] double MaximalCorrelation(CPairSums const& sums);

} // namespace ORVA::Impl
