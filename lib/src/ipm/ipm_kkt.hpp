// The quasi-definite system of the interior-point engine,
//
//   K = [ P + d I      A'     ]
//       [ A        -(H + d I) ]
//
// with H block diagonal by cone, kept as its upper triangle in a fixed sparsity
// pattern, ordered and analysed once (AMD, CHOLMOD) and factored as L D L'
// every iteration: by CHOLMOD's simplicial method when the factor stays
// sparse, else by the supernodal one of ipm_ldl.hpp. d is a small static
// regularisation; solves refine against K without it.
#pragma once

#include <memory>
#include <vector>

#include "ipm.hpp"
#include "ipm_ldl.hpp"

struct cholmod_common_struct;
struct cholmod_sparse_struct;
struct cholmod_factor_struct;
struct cholmod_dense_struct;

namespace qrn {
namespace ipm {

struct KktBlock {
  int offset = 0, dim = 0;
  bool diagonal = true;
  // H = D + u u' - v v' (D diagonal) held sparsely: two more rows and
  // columns (p, q) at the end of the matrix,
  //   [ -D  u  v ]
  //   [ u'  1  0 ]   whose Schur complement on the cone's rows is -H.
  //   [ v'  0 -1 ]
  bool expanded = false;
};

class Kkt {
 public:
  // P: n x n upper triangle; A: m x n; blocks cover the rows of A.
  // method: as Settings::kkt_method.
  Kkt(const Csc &P, const Csc &A, const std::vector<KktBlock> &blocks, int method = 0);
  ~Kkt();
  Kkt(const Kkt &) = delete;
  Kkt &operator=(const Kkt &) = delete;

  // Sets -H on block k from its values (dim entries, or dim*dim by columns).
  void set_block(int k, const double *h);
  // Sets an expanded block k: H = diag(d) + u u' - v v' (dim entries each).
  void set_expanded(int k, const double *d, const double *u, const double *v);
  // Factors K + diag(d, -d); false when the factorization fails.
  bool factor(double reg);
  // sol = K^-1 rhs (size n + m), refined against the unregularised K.
  // Returns the final relative residual.
  double solve(const double *rhs, double *sol, int refine_iter);
  int size() const { return n_ + m_; }  // of the right-hand sides and solutions
  double factor_seconds() const { return factor_seconds_; }
  int factor_count() const { return factor_count_; }
  bool supernodal() const { return ldl_ != nullptr; }
  // Threads of the supernodal factorization (see SupernodalLdl::set_threads).
  void set_threads(int threads, double parallel_work = 2e6) {
    if (ldl_) ldl_->set_threads(threads, parallel_work);
  }
  // Entries of the factor L (with its diagonal).
  double factor_entries() const { return lnz_; }

 private:
  void mul(const double *x, double *y) const;  // y = K x (no regularisation)
  void solve_once(const double *rhs, double *sol);

  int n_ = 0, m_ = 0, nx_ = 0;  // nx_: rows and columns added by expanded blocks
  std::vector<int> colptr_, rowind_;
  std::vector<double> val_;              // unregularised values
  std::vector<int> diag_;                // position of each diagonal entry
  std::vector<std::vector<int>> hpos_;   // per block: positions of its upper triangle, by columns
                                         // (expanded: diagonal, then u, v and the two diagonals)
  std::vector<KktBlock> blocks_;
  cholmod_common_struct *common_ = nullptr;
  cholmod_sparse_struct *k_ = nullptr;
  cholmod_factor_struct *l_ = nullptr;
  cholmod_dense_struct *b_ = nullptr, *x_ = nullptr, *y_ = nullptr, *e_ = nullptr;
  std::unique_ptr<SupernodalLdl> ldl_;
  std::vector<double> r_, d_, prev_, reg_, sign_, rhs_, sol_;
  double lnz_ = 0;
  double factor_seconds_ = 0;
  int factor_count_ = 0;
  bool ok_ = false;
};

}  // namespace ipm
}  // namespace qrn
