// The basis of a basic solution as a factored matrix: the basis services
// (initbasissolve, solvewithbasis, basiscond) and sensitivity analysis use it.
#pragma once

#include "problem.hpp"

#include <memory>
#include <vector>

namespace qrn {

// B: column k is the column of item basis[k] in [-I A] (items numbered
// constraints first: i < m is constraint i, m + j is variable j).
struct BasisFactor {
  qrn_int32 m = 0;
  std::vector<qrn_int32> basis;
  std::vector<int> ap, ai;  // B by columns
  std::vector<double> ax;
  void *numeric = nullptr;  // UMFPACK's factor
  double norm1 = 0.0;       // ||B||_1

  BasisFactor() = default;
  BasisFactor(const BasisFactor &) = delete;
  BasisFactor &operator=(const BasisFactor &) = delete;
  ~BasisFactor();
  // x = B^-1 b (transpose: B^-T b); b and x hold m entries and may not alias.
  void solve(bool transpose, const double *b, double *x) const;
  // Hager's estimate of ||B^-1||_1.
  double inverse_norm1() const;
};

// The basis of the task's basic solution: QRN_RES_ERR_NO_BASIS unless it is
// defined, sized to the task, and has exactly m items with key QRN_SK_BASIS;
// `optimal` also requires the solution status optimal.
std::vector<qrn_int32> basis_of(const Task &t, const opt::Problem &p, bool optimal);
// Factors B (QRN_RES_ERR_BASIS_SINGULAR when singular).
std::shared_ptr<const BasisFactor> factor_basis(const opt::Problem &p, std::vector<qrn_int32> basis);

}  // namespace qrn
