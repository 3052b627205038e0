// A supernodal L D L' factorization without pivoting, for the quasi-definite
// KKT systems of the interior-point engine. CHOLMOD's supernodal analysis
// gives the ordering and the supernodes (its own supernodal factorization is
// L L' only, which a quasi-definite matrix does not have); the numerical
// factorization here is left-looking over the supernodes, with each
// supernode's dense panel factored in blocks and every update a BLAS
// matrix product, so it runs at the speed of dense linear algebra where the
// factor fills in.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

struct cholmod_factor_struct;

namespace qrn {
namespace ipm {

class SupernodalLdl {
 public:
  // sym: a supernodal symbolic factor of the N x N matrix whose upper
  // triangle has the pattern (colptr, rowind). Copies what it needs.
  SupernodalLdl(const cholmod_factor_struct *sym, const std::vector<int> &colptr, const std::vector<int> &rowind);

  // Factors the matrix with values val (in the pattern's order) plus
  // diag_add[i] on each diagonal entry. sign (empty, or +1 / -1 for each
  // index) is the sign each pivot should have: a pivot p with sign * p <= eps
  // is replaced by sign * delta. False on a non-finite pivot, or a zero one
  // where no sign is given.
  bool factor(const std::vector<double> &val, const std::vector<double> &diag_add,
              const std::vector<double> &sign = {}, double eps = 0, double delta = 0);
  // Pivots replaced in the last factorization.
  int dynamic_count() const { return dyn_count_; }
  // x = M^-1 b, M the matrix last factored (x may be b).
  void solve(const double *b, double *x) const;

  // Threads for the matrix products of at least parallel_work multiply-adds
  // (1: the caller's only).
  void set_threads(int threads, double parallel_work = 2e6) {
    threads_ = std::max(1, threads);
    parallel_work_ = parallel_work;
  }
  int size() const { return n_; }
  size_t factor_entries() const { return lx_.size(); }
  int supernodes() const { return nsuper_; }

 private:
  bool factor_panel(int s);
  void update(int d, int s, int pdi1, int pdi2);

  int n_ = 0, nsuper_ = 0, threads_ = 1;
  double parallel_work_ = 2e6;
  std::vector<int> perm_;           // row k of the factor is row perm_[k] of the matrix
  std::vector<int> super_, pi_;     // first column and first pattern entry of each supernode
  std::vector<size_t> px_;          // first value of each supernode's panel (nsrow x ncols by columns)
  std::vector<int> ls_;             // row patterns, each sorted, led by the supernode's own columns
  std::vector<int> super_of_;       // supernode of each column
  std::vector<size_t> xpos_;        // where each matrix entry lands in lx_
  std::vector<size_t> dpos_;        // where each diagonal entry lands in lx_ (by matrix index)
  std::vector<double> lx_, d_;      // the factor: panels (unit diagonal implied) and D
  std::vector<double> sign_;        // expected pivot signs, permuted
  double dyn_eps_ = 0, dyn_delta_ = 0;
  int dyn_count_ = 0;
  // Workspace.
  std::vector<int> head_, next_, lpos_, map_;
  std::vector<double> w_, c_;
  mutable std::vector<double> y_, t_;
};

}  // namespace ipm
}  // namespace qrn
