// Supernodal L D L' without pivoting (see ipm_ldl.hpp).
#include "ipm_ldl.hpp"

#include <cblas.h>
#include <cholmod.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <thread>

namespace qrn {
namespace ipm {
namespace {

// Panels are factored in column blocks of this width; below it (and for
// small products) plain loops beat the BLAS calls.
constexpr int kBlock = 48;
constexpr long kSmallProduct = 4096;
constexpr int kSmallSolve = 16;
constexpr int kStrip = 192;

// Runs f(t) for t = 0 .. threads-1, each on its own thread (t = 0 on the caller's).
template <class F> void run_parallel(int threads, const F &f) {
  if (threads <= 1) {
    f(0);
    return;
  }
  std::vector<std::thread> pool;
  pool.reserve(threads - 1);
  for (int t = 1; t < threads; ++t) pool.emplace_back([&f, t] { f(t); });
  f(0);
  for (auto &th : pool) th.join();
}

}  // namespace

SupernodalLdl::SupernodalLdl(const cholmod_factor_struct *sym, const std::vector<int> &colptr,
                             const std::vector<int> &rowind) {
  if (sym == nullptr || !sym->is_super) throw std::invalid_argument("supernodal analysis expected");
  n_ = int(sym->n);
  nsuper_ = int(sym->nsuper);
  const int *perm = static_cast<const int *>(sym->Perm);
  const int *super = static_cast<const int *>(sym->super);
  const int *pi = static_cast<const int *>(sym->pi);
  const int *px = static_cast<const int *>(sym->px);
  const int *ls = static_cast<const int *>(sym->s);
  perm_.assign(perm, perm + n_);
  super_.assign(super, super + nsuper_ + 1);
  pi_.assign(pi, pi + nsuper_ + 1);
  px_.assign(px, px + nsuper_ + 1);
  ls_.assign(ls, ls + pi[nsuper_]);
  super_of_.assign(n_, 0);
  size_t wmax = 0;
  for (int s = 0; s < nsuper_; ++s) {
    for (int k = super_[s]; k < super_[s + 1]; ++k) super_of_[k] = s;
    size_t ncols = size_t(super_[s + 1] - super_[s]), nsrow = size_t(pi_[s + 1] - pi_[s]);
    wmax = std::max(wmax, nsrow * std::min<size_t>(ncols, kBlock));
    wmax = std::max(wmax, (nsrow - ncols) * ncols);
  }
  std::vector<int> pinv(n_);
  for (int k = 0; k < n_; ++k) pinv[perm_[k]] = k;
  // Where entry (i, j) of the matrix lands: column min(pi, pj) of the
  // permuted matrix, at row max(pi, pj) of that column's supernode.
  auto place = [&](int r, int c) {
    int s = super_of_[c];
    const int *first = ls_.data() + pi_[s], *last = ls_.data() + pi_[s + 1];
    const int *at = std::lower_bound(first, last, r);
    if (at == last || *at != r) throw std::logic_error("entry outside the symbolic factor");
    return px_[s] + size_t(c - super_[s]) * size_t(last - first) + size_t(at - first);
  };
  int ncol = int(colptr.size()) - 1;
  xpos_.resize(rowind.size());
  for (int j = 0; j < ncol; ++j)
    for (int k = colptr[j]; k < colptr[j + 1]; ++k) {
      int a = pinv[rowind[k]], b = pinv[j];
      xpos_[k] = place(std::max(a, b), std::min(a, b));
    }
  dpos_.resize(n_);
  for (int i = 0; i < n_; ++i) dpos_[i] = place(pinv[i], pinv[i]);
  lx_.assign(px_[nsuper_], 0.0);
  d_.assign(n_, 0.0);
  sign_.assign(n_, 0.0);
  head_.assign(nsuper_, -1), next_.assign(nsuper_, -1), lpos_.assign(nsuper_, 0), map_.assign(n_, 0);
  w_.assign(std::max<size_t>(wmax, 1), 0.0);
  c_.assign(std::max<size_t>(sym->maxcsize, 1), 0.0);
  y_.assign(n_, 0.0), t_.assign(n_, 0.0);
}

// Subtracts the update of descendant d (its rows pdi1.. of which pdi1..pdi2
// fall in the columns of s) from the panel of s.
void SupernodalLdl::update(int d, int s, int pdi1, int pdi2) {
  int ndcol = super_[d + 1] - super_[d], nsrow_d = pi_[d + 1] - pi_[d];
  int r1 = pdi1 - pi_[d], ndrow1 = pdi2 - pdi1, ndrow2 = pi_[d + 1] - pdi1;
  const double *ld = lx_.data() + px_[d] + r1;  // rows r1.. of d's panel, leading dimension nsrow_d
  const double *dd = d_.data() + super_[d];
  int k1 = super_[s], nsrow = pi_[s + 1] - pi_[s];
  double *ps = lx_.data() + px_[s];
  const int *rows = ls_.data() + pdi1;
  if (long(ndrow1) * ndrow2 * ndcol <= kSmallProduct) {
    for (int j = 0; j < ndrow1; ++j) {
      double *col = ps + size_t(rows[j] - k1) * nsrow;
      for (int c = 0; c < ndcol; ++c) {
        double f = ld[j + size_t(c) * nsrow_d] * dd[c];
        if (f == 0) continue;
        const double *lc = ld + size_t(c) * nsrow_d;
        for (int i = j; i < ndrow2; ++i) col[map_[rows[i]]] -= lc[i] * f;
      }
    }
    return;
  }
  double *w = w_.data();
  for (int c = 0; c < ndcol; ++c)
    for (int i = 0; i < ndrow2; ++i) w[i + size_t(c) * ndrow2] = ld[i + size_t(c) * nsrow_d] * dd[c];
  if (c_.size() < size_t(ndrow1) * ndrow2) c_.resize(size_t(ndrow1) * ndrow2);
  double *cm = c_.data();
  // C = W L1' in strips of columns, each from its diagonal down, scattered
  // into the panel of s strip by strip (the strips touch distinct columns).
  int nstrips = (ndrow1 + kStrip - 1) / kStrip;
  int threads = double(ndrow1) * ndrow2 * ndcol >= parallel_work_ ? threads_ : 1;
  if (threads > nstrips) {
    // Too few strips to share: the threads take row ranges of C instead
    // (entries above the diagonal in the top rows are computed, not used).
    run_parallel(threads, [&](int t) {
      int r0 = int(long(ndrow2) * t / threads), r1 = int(long(ndrow2) * (t + 1) / threads);
      if (r1 <= r0) return;
      cblas_dgemm(CblasColMajor, CblasNoTrans, CblasTrans, r1 - r0, ndrow1, ndcol, 1.0, w + r0, ndrow2, ld,
                  nsrow_d, 0.0, cm + r0, ndrow2);
      for (int j = 0; j < ndrow1; ++j) {
        double *col = ps + size_t(rows[j] - k1) * nsrow;
        const double *cj = cm + size_t(j) * ndrow2;
        for (int i = std::max(j, r0); i < r1; ++i) col[map_[rows[i]]] -= cj[i];
      }
    });
    return;
  }
  run_parallel(threads, [&](int t) {
    for (int st = t; st < nstrips; st += threads) {
      int j0 = st * kStrip, jw = std::min(kStrip, ndrow1 - j0);
      double *cj0 = cm + size_t(j0) * ndrow2 + j0;
      cblas_dgemm(CblasColMajor, CblasNoTrans, CblasTrans, ndrow2 - j0, jw, ndcol, 1.0, w + j0, ndrow2, ld + j0,
                  nsrow_d, 0.0, cj0, ndrow2);
      for (int j = j0; j < j0 + jw; ++j) {
        double *col = ps + size_t(rows[j] - k1) * nsrow;
        const double *cj = cm + size_t(j) * ndrow2;
        for (int i = j; i < ndrow2; ++i) col[map_[rows[i]]] -= cj[i];
      }
    }
  });
}

// Factors the panel of s in place once every update has reached it.
bool SupernodalLdl::factor_panel(int s) {
  int k1 = super_[s], ncols = super_[s + 1] - k1, lda = pi_[s + 1] - pi_[s];
  double *p = lx_.data() + px_[s];
  double *dv = d_.data() + k1;
  for (int jb = 0; jb < ncols; jb += kBlock) {
    int w = std::min(kBlock, ncols - jb);
    for (int j = jb; j < jb + w; ++j) {
      double *pj = p + size_t(j) * lda;
      double dj = pj[j];
      if (!std::isfinite(dj)) return false;
      // A pivot of the wrong sign or too small to trust: the dynamic
      // regularisation replaces it (refinement against the matrix corrects
      // the solves).
      double sg = sign_[k1 + j];
      if (sg != 0 && !(std::fabs(dj) > dyn_eps_)) {
        dj = sg * dyn_delta_;
        ++dyn_count_;
      } else if (dj == 0) {
        return false;
      }
      dv[j] = dj;
      double inv = 1 / dj;
      for (int i = j + 1; i < lda; ++i) pj[i] *= inv;
      for (int c = j + 1; c < jb + w; ++c) {
        double f = pj[c] * dj;
        if (f == 0) continue;
        double *pc = p + size_t(c) * lda;
        for (int i = c; i < lda; ++i) pc[i] -= pj[i] * f;
      }
    }
    int j2 = jb + w;
    if (j2 >= ncols) break;
    int m2 = lda - j2;
    double *w2 = w_.data();
    for (int c = 0; c < w; ++c) {
      const double *src = p + size_t(jb + c) * lda + j2;
      double f = dv[jb + c];
      for (int i = 0; i < m2; ++i) w2[i + size_t(c) * m2] = src[i] * f;
    }
    // The trailing columns in strips, each from its diagonal down, so that
    // little of the upper triangle is computed.
    int nstrips = (ncols - j2 + kStrip - 1) / kStrip;
    int threads = double(m2) * (ncols - j2) * w >= parallel_work_ ? threads_ : 1;
    if (threads > nstrips) {
      // A tall panel: the threads take row ranges of the trailing columns.
      run_parallel(threads, [&](int t) {
        int r0 = j2 + int(long(m2) * t / threads), r1 = j2 + int(long(m2) * (t + 1) / threads);
        int cols = std::min(ncols, r1) - j2;
        if (r1 <= r0 || cols <= 0) return;
        cblas_dgemm(CblasColMajor, CblasNoTrans, CblasTrans, r1 - r0, cols, w, -1.0, w2 + (r0 - j2), m2,
                    p + size_t(jb) * lda + j2, lda, 1.0, p + size_t(j2) * lda + r0, lda);
      });
      continue;
    }
    run_parallel(threads, [&](int t) {
      for (int st = t; st < nstrips; st += threads) {
        int c0 = j2 + st * kStrip, cw = std::min(kStrip, ncols - c0);
        cblas_dgemm(CblasColMajor, CblasNoTrans, CblasTrans, lda - c0, cw, w, -1.0, w2 + (c0 - j2), m2,
                    p + size_t(jb) * lda + c0, lda, 1.0, p + size_t(c0) * lda + c0, lda);
      }
    });
  }
  return true;
}

bool SupernodalLdl::factor(const std::vector<double> &val, const std::vector<double> &diag_add,
                           const std::vector<double> &sign, double eps, double delta) {
  for (int k = 0; k < n_; ++k) sign_[k] = sign.empty() ? 0.0 : sign[perm_[k]];
  dyn_eps_ = eps, dyn_delta_ = delta, dyn_count_ = 0;
  std::fill(lx_.begin(), lx_.end(), 0.0);
  for (size_t k = 0; k < xpos_.size(); ++k) lx_[xpos_[k]] += val[k];
  for (int i = 0; i < n_; ++i) lx_[dpos_[i]] += diag_add[i];
  std::fill(head_.begin(), head_.end(), -1);
  for (int s = 0; s < nsuper_; ++s) {
    int k2 = super_[s + 1], psi = pi_[s], nsrow = pi_[s + 1] - psi, ncols = k2 - super_[s];
    for (int i = 0; i < nsrow; ++i) map_[ls_[psi + i]] = i;
    int d = head_[s];
    head_[s] = -1;
    while (d >= 0) {
      int nd = next_[d];
      int pdi1 = pi_[d] + lpos_[d], pdend = pi_[d + 1], pdi2 = pdi1;
      while (pdi2 < pdend && ls_[pdi2] < k2) ++pdi2;
      update(d, s, pdi1, pdi2);
      lpos_[d] = pdi2 - pi_[d];
      if (pdi2 < pdend) {
        int s2 = super_of_[ls_[pdi2]];
        next_[d] = head_[s2], head_[s2] = d;
      }
      d = nd;
    }
    if (!factor_panel(s)) return false;
    if (nsrow > ncols) {
      lpos_[s] = ncols;
      int s2 = super_of_[ls_[psi + ncols]];
      next_[s] = head_[s2], head_[s2] = s;
    }
  }
  return true;
}

void SupernodalLdl::solve(const double *b, double *x) const {
  double *y = y_.data(), *t = t_.data();
  for (int k = 0; k < n_; ++k) y[k] = b[perm_[k]];
  for (int s = 0; s < nsuper_; ++s) {
    int k1 = super_[s], ncols = super_[s + 1] - k1, lda = pi_[s + 1] - pi_[s], nb = lda - ncols;
    const double *p = lx_.data() + px_[s];
    const int *rows = ls_.data() + pi_[s] + ncols;
    if (ncols < kSmallSolve) {
      for (int j = 0; j < ncols; ++j) {
        const double *pj = p + size_t(j) * lda;
        double yj = y[k1 + j];
        if (yj == 0) continue;
        for (int i = j + 1; i < ncols; ++i) y[k1 + i] -= pj[i] * yj;
        for (int i = 0; i < nb; ++i) y[rows[i]] -= pj[ncols + i] * yj;
      }
    } else {
      cblas_dtrsv(CblasColMajor, CblasLower, CblasNoTrans, CblasUnit, ncols, p, lda, y + k1, 1);
      if (nb > 0) {
        cblas_dgemv(CblasColMajor, CblasNoTrans, nb, ncols, 1.0, p + ncols, lda, y + k1, 1, 0.0, t, 1);
        for (int i = 0; i < nb; ++i) y[rows[i]] -= t[i];
      }
    }
  }
  for (int k = 0; k < n_; ++k) y[k] /= d_[k];
  for (int s = nsuper_ - 1; s >= 0; --s) {
    int k1 = super_[s], ncols = super_[s + 1] - k1, lda = pi_[s + 1] - pi_[s], nb = lda - ncols;
    const double *p = lx_.data() + px_[s];
    const int *rows = ls_.data() + pi_[s] + ncols;
    if (ncols < kSmallSolve) {
      for (int j = ncols - 1; j >= 0; --j) {
        const double *pj = p + size_t(j) * lda;
        double sum = 0;
        for (int i = 0; i < nb; ++i) sum += pj[ncols + i] * y[rows[i]];
        for (int i = j + 1; i < ncols; ++i) sum += pj[i] * y[k1 + i];
        y[k1 + j] -= sum;
      }
    } else {
      if (nb > 0) {
        for (int i = 0; i < nb; ++i) t[i] = y[rows[i]];
        cblas_dgemv(CblasColMajor, CblasTrans, nb, ncols, -1.0, p + ncols, lda, t, 1, 1.0, y + k1, 1);
      }
      cblas_dtrsv(CblasColMajor, CblasLower, CblasTrans, CblasUnit, ncols, p, lda, y + k1, 1);
    }
  }
  for (int k = 0; k < n_; ++k) x[perm_[k]] = y[k];
}

}  // namespace ipm
}  // namespace qrn
