// The quasi-definite system of the interior-point engine (see ipm_kkt.hpp).
#include "ipm_kkt.hpp"

#include <cholmod.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace qrn {
namespace ipm {
namespace {
// The supernodal factorization's dynamic regularisation (the data are
// equilibrated, so absolute values serve).
constexpr double kDynamicEps = 1e-13;
constexpr double kDynamicDelta = 2e-7;
}  // namespace

Kkt::Kkt(const Csc &P, const Csc &A, const std::vector<KktBlock> &blocks, int method)
    : n_(A.ncols), m_(A.nrows), blocks_(blocks) {
  for (const KktBlock &b : blocks) nx_ += b.expanded ? 2 : 0;
  int N = n_ + m_ + nx_;
  // A by rows, column indexes ascending.
  std::vector<int> rp(m_ + 1, 0), rc(A.nnz()), rk(A.nnz());
  for (int k = 0; k < A.nnz(); ++k) ++rp[A.rowind[k] + 1];
  std::partial_sum(rp.begin(), rp.end(), rp.begin());
  {
    std::vector<int> next(rp.begin(), rp.end() - 1);
    for (int j = 0; j < n_; ++j)
      for (int k = A.colptr[j]; k < A.colptr[j + 1]; ++k) {
        int p = next[A.rowind[k]]++;
        rc[p] = j, rk[p] = k;
      }
  }
  std::vector<int> block_of(m_, -1);
  for (size_t b = 0; b < blocks.size(); ++b)
    for (int i = 0; i < blocks[b].dim; ++i) block_of[blocks[b].offset + i] = int(b);

  colptr_.assign(N + 1, 0);
  diag_.assign(N, -1);
  hpos_.assign(blocks.size(), {});
  for (size_t b = 0; b < blocks.size(); ++b) {
    size_t d = size_t(blocks[b].dim);
    hpos_[b].reserve(blocks[b].expanded ? 3 * d + 2 : blocks[b].diagonal ? d : d * (d + 1) / 2);
  }
  std::vector<std::pair<int, double>> col;
  bool has_p = P.ncols == n_ && P.nnz() > 0;
  for (int j = 0; j < n_; ++j) {
    col.clear();
    if (has_p)
      for (int k = P.colptr[j]; k < P.colptr[j + 1]; ++k) col.emplace_back(P.rowind[k], P.val[k]);
    std::sort(col.begin(), col.end());
    if (col.empty() || col.back().first != j) col.emplace_back(j, 0.0);
    for (auto &e : col) {
      if (e.first == j) diag_[j] = int(rowind_.size());
      rowind_.push_back(e.first);
      val_.push_back(e.second);
    }
    colptr_[j + 1] = int(rowind_.size());
  }
  for (int r = 0; r < m_; ++r) {
    for (int p = rp[r]; p < rp[r + 1]; ++p) {
      rowind_.push_back(rc[p]);
      val_.push_back(A.val[rk[p]]);
    }
    int b = block_of[r];
    const KktBlock &blk = blocks[b];
    int first = blk.diagonal || blk.expanded ? r : blk.offset;
    for (int i = first; i <= r; ++i) {
      if (i == r) diag_[n_ + r] = int(rowind_.size());
      hpos_[b].push_back(int(rowind_.size()));
      rowind_.push_back(n_ + i);
      val_.push_back(0.0);
    }
    colptr_[n_ + r + 1] = int(rowind_.size());
  }
  // The columns p, q of the expanded blocks, in block order.
  int pc = n_ + m_;
  for (size_t b = 0; b < blocks.size(); ++b) {
    if (!blocks[b].expanded) continue;
    for (int pq = 0; pq < 2; ++pq, ++pc) {
      for (int i = 0; i < blocks[b].dim; ++i) {
        hpos_[b].push_back(int(rowind_.size()));
        rowind_.push_back(n_ + blocks[b].offset + i);
        val_.push_back(0.0);
      }
      diag_[pc] = int(rowind_.size());
      hpos_[b].push_back(int(rowind_.size()));
      rowind_.push_back(pc);
      val_.push_back(pq == 0 ? 1.0 : -1.0);
      colptr_[pc + 1] = int(rowind_.size());
    }
  }

  common_ = new cholmod_common;
  cholmod_start(common_);
  common_->print = 0;
  common_->error_handler = nullptr;
  common_->nmethods = 1;
  common_->method[0].ordering = CHOLMOD_AMD;
  common_->postorder = 1;
  // CHOLMOD's rule picks the method: supernodal when the factorization has
  // many operations per entry of the factor.
  common_->supernodal = method == 1 ? CHOLMOD_SIMPLICIAL : method == 2 ? CHOLMOD_SUPERNODAL : CHOLMOD_AUTO;
  common_->final_ll = 0;
  common_->final_asis = 1;
  common_->quick_return_if_not_posdef = 0;

  size_t nnz = rowind_.size();
  k_ = cholmod_allocate_sparse(N, N, nnz, 1, 1, 1, CHOLMOD_REAL, common_);
  if (k_ == nullptr) {
    cholmod_finish(common_);
    delete common_;
    throw std::bad_alloc();
  }
  std::copy(colptr_.begin(), colptr_.end(), static_cast<int *>(k_->p));
  std::copy(rowind_.begin(), rowind_.end(), static_cast<int *>(k_->i));
  std::copy(val_.begin(), val_.end(), static_cast<double *>(k_->x));
  if (N > 0) {
    l_ = cholmod_analyze(k_, common_);
    if (l_ == nullptr) {
      cholmod_free_sparse(&k_, common_);
      cholmod_finish(common_);
      delete common_;
      throw std::bad_alloc();
    }
    b_ = cholmod_allocate_dense(N, 1, N, CHOLMOD_REAL, common_);
    lnz_ = common_->lnz;
    if (l_->is_super) {
      try {
        ldl_ = std::make_unique<SupernodalLdl>(l_, colptr_, rowind_);
      } catch (...) {
        cholmod_free_dense(&b_, common_);
        cholmod_free_factor(&l_, common_);
        cholmod_free_sparse(&k_, common_);
        cholmod_finish(common_);
        delete common_;
        throw;
      }
      cholmod_free_factor(&l_, common_);
    }
  }
  r_.assign(N, 0.0);
  d_.assign(N, 0.0);
  rhs_.assign(N, 0.0);
  sol_.assign(N, 0.0);
  // Pivot signs and regularisation: + on x and on each p, - on z and on each q.
  sign_.assign(N, -1.0);
  std::fill(sign_.begin(), sign_.begin() + n_, 1.0);
  for (int c = n_ + m_; c < N; c += 2) sign_[c] = 1.0;
  reg_.assign(N, 0.0);
}

Kkt::~Kkt() {
  if (common_ == nullptr) return;
  if (b_) cholmod_free_dense(&b_, common_);
  if (x_) cholmod_free_dense(&x_, common_);
  if (y_) cholmod_free_dense(&y_, common_);
  if (e_) cholmod_free_dense(&e_, common_);
  if (l_) cholmod_free_factor(&l_, common_);
  if (k_) cholmod_free_sparse(&k_, common_);
  cholmod_finish(common_);
  delete common_;
}

void Kkt::set_expanded(int k, const double *d, const double *u, const double *v) {
  const KktBlock &blk = blocks_[k];
  const std::vector<int> &pos = hpos_[k];
  int dim = blk.dim;
  for (int i = 0; i < dim; ++i) val_[pos[i]] = -d[i];
  for (int i = 0; i < dim; ++i) val_[pos[dim + i]] = u[i];
  for (int i = 0; i < dim; ++i) val_[pos[2 * dim + 1 + i]] = v[i];  // after p's diagonal at pos[2 dim]
}

void Kkt::set_block(int k, const double *h) {
  const KktBlock &blk = blocks_[k];
  const std::vector<int> &pos = hpos_[k];
  if (blk.diagonal) {
    for (int i = 0; i < blk.dim; ++i) val_[pos[i]] = -h[i];
    return;
  }
  size_t p = 0, d = size_t(blk.dim);
  for (size_t j = 0; j < d; ++j)
    for (size_t i = 0; i <= j; ++i) val_[pos[p++]] = -h[i + j * d];
}

bool Kkt::factor(double reg) {
  ok_ = false;
  int N = n_ + m_ + nx_;
  if (N == 0) return ok_ = true;
  auto t0 = std::chrono::steady_clock::now();
  if (ldl_) {
    for (int i = 0; i < N; ++i) reg_[i] = sign_[i] * reg;
    ok_ = ldl_->factor(val_, reg_, sign_, kDynamicEps, kDynamicDelta);
    factor_seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    ++factor_count_;
    return ok_;
  }
  double *x = static_cast<double *>(k_->x);
  std::copy(val_.begin(), val_.end(), x);
  for (int i = 0; i < N; ++i) x[diag_[i]] += sign_[i] * reg;
  int okf = cholmod_factorize(k_, l_, common_);
  factor_seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  ++factor_count_;
  ok_ = okf && common_->status >= CHOLMOD_OK && l_->minor >= size_t(N);
  return ok_;
}

void Kkt::mul(const double *x, double *y) const {
  int N = n_ + m_ + nx_;
  std::fill(y, y + N, 0.0);
  for (int j = 0; j < N; ++j)
    for (int k = colptr_[j]; k < colptr_[j + 1]; ++k) {
      int i = rowind_[k];
      y[i] += val_[k] * x[j];
      if (i != j) y[j] += val_[k] * x[i];
    }
}

void Kkt::solve_once(const double *rhs, double *sol) {
  int N = n_ + m_ + nx_;
  if (ldl_) {
    ldl_->solve(rhs, sol);
    return;
  }
  std::copy(rhs, rhs + N, static_cast<double *>(b_->x));
  if (!cholmod_solve2(CHOLMOD_A, l_, b_, nullptr, &x_, nullptr, &y_, &e_, common_)) {
    std::fill(sol, sol + N, NAN);
    return;
  }
  const double *xs = static_cast<const double *>(x_->x);
  std::copy(xs, xs + N, sol);
}

double Kkt::solve(const double *rhs_in, double *sol_out, int refine_iter) {
  int N = n_ + m_ + nx_, Nout = n_ + m_;
  if (N == 0) return 0.0;
  if (!ok_) {
    std::fill(sol_out, sol_out + Nout, NAN);
    return HUGE_VAL;
  }
  // The rows of the expansions have zero right-hand sides.
  std::copy(rhs_in, rhs_in + Nout, rhs_.begin());
  const double *rhs = rhs_.data();
  double *sol = sol_.data();
  double bnorm = 0;
  for (int i = 0; i < N; ++i) bnorm = std::max(bnorm, std::fabs(rhs[i]));
  solve_once(rhs, sol);
  auto residual = [&]() {
    mul(sol, r_.data());
    double rn = 0;
    for (int i = 0; i < N; ++i) {
      r_[i] = rhs[i] - r_[i];
      rn = std::max(rn, std::fabs(r_[i]));
    }
    return rn;
  };
  double rn = residual();
  double tol = 1e-14 * (1 + bnorm);
  std::vector<double> &prev = prev_;
  for (int it = 0; it < refine_iter && rn > tol; ++it) {
    solve_once(r_.data(), d_.data());
    prev.assign(sol, sol + N);
    for (int i = 0; i < N; ++i) sol[i] += d_[i];
    double rn2 = residual();
    if (!(rn2 < rn / 2)) {  // no progress: keep the better one
      if (!(rn2 < rn)) {
        std::copy(prev.begin(), prev.end(), sol);
        residual();
      } else {
        rn = rn2;
      }
      break;
    }
    rn = rn2;
  }
  std::copy(sol, sol + Nout, sol_out);
  return rn / (1 + bnorm);
}

}  // namespace ipm
}  // namespace qrn
