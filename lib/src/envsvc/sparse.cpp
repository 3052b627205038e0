// Sparse Cholesky factorization on CHOLMOD (a packed simplicial LL' factor),
// the triangular solve on the factor's layout, and the memory the library
// hands out for the factor.
#include "linalg.hpp"

#include <cholmod.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>
#include <utility>
#include <vector>

using namespace qrn;

namespace {

// One CHOLMOD workspace per call, so that calls may run at once.
struct Common {
  cholmod_common c;
  Common() {
    cholmod_start(&c);
    c.print = 0;
    c.error_handler = nullptr;
    c.supernodal = CHOLMOD_SIMPLICIAL;  // a supernodal factor converted back keeps explicit zeros
    c.final_ll = 1;
    c.final_pack = 1;
    c.final_monotonic = 1;
    c.final_super = 0;
    c.nmethods = 1;
    c.quick_return_if_not_posdef = 1;
  }
  ~Common() { cholmod_finish(&c); }
  void check() const {
    if (c.status == CHOLMOD_OUT_OF_MEMORY) throw std::bad_alloc();
    if (c.status < 0 && c.status != CHOLMOD_NOT_POSDEF)
      fail(QRN_RES_ERR_INTERNAL, "CHOLMOD failed with status " + std::to_string(c.status) + ".");
  }
};

struct SparseHolder {
  cholmod_sparse *a = nullptr;
  cholmod_common *c;
  explicit SparseHolder(cholmod_common *c) : c(c) {}
  ~SparseHolder() { cholmod_free_sparse(&a, c); }
};
struct FactorHolder {
  cholmod_factor *l = nullptr;
  cholmod_common *c;
  explicit FactorHolder(cholmod_common *c) : c(c) {}
  ~FactorHolder() { cholmod_free_factor(&l, c); }
};

// An array handed to the caller; freed here unless released.
template <class T>
struct Owned {
  T *p = nullptr;
  explicit Owned(size_t n) {
    p = static_cast<T *>(std::malloc(std::max<size_t>(n, 1) * sizeof(T)));
    if (p == nullptr) throw std::bad_alloc();
  }
  ~Owned() { std::free(p); }
  T *release() { return std::exchange(p, nullptr); }
};

// The lower triangle of A as a CHOLMOD matrix (stype -1), columns sorted by
// row; every entry checked.
cholmod_sparse *lower_matrix(qrn_int32 n, const qrn_int32 *anzc, const qrn_int64 *aptrc, const qrn_int32 *asubc,
                             const qrn_real *avalc, cholmod_common *c, double &maxdiag) {
  need_array(anzc, n, "anzc");
  need_array(aptrc, n, "aptrc");
  qrn_int64 total = 0;
  for (qrn_int32 j = 0; j < n; ++j) {
    if (anzc[j] < 0)
      fail(QRN_RES_ERR_NEGATIVE_COUNT, "anzc[" + std::to_string(j) + "] is negative (" + std::to_string(anzc[j]) + ").");
    if (aptrc[j] < 0)
      fail(QRN_RES_ERR_PTR_RANGE, "aptrc[" + std::to_string(j) + "] is negative (" + std::to_string(aptrc[j]) + ").");
    if (aptrc[j] > std::numeric_limits<qrn_int64>::max() - anzc[j])
      fail(QRN_RES_ERR_PTR_RANGE, "Column " + std::to_string(j) + " reaches beyond 2^63-1.");
    total += anzc[j];
  }
  if (total > std::numeric_limits<int>::max())
    fail(QRN_RES_ERR_LA_DIMENSION, "The matrix has " + std::to_string(total) + " entries, more than 2^31-1.");
  need_array(asubc, total, "asubc");
  need_array(avalc, total, "avalc");

  cholmod_sparse *a = cholmod_allocate_sparse(n, n, size_t(total), 1, 1, -1, CHOLMOD_REAL, c);
  if (a == nullptr) throw std::bad_alloc();
  SparseHolder hold(c);
  hold.a = a;
  auto *ap = static_cast<int *>(a->p);
  auto *ai = static_cast<int *>(a->i);
  auto *ax = static_cast<double *>(a->x);
  maxdiag = 0.0;
  int pos = 0;
  std::vector<std::pair<qrn_int32, double>> col;
  for (qrn_int32 j = 0; j < n; ++j) {
    ap[j] = pos;
    const int start = pos;
    bool sorted = true;
    for (qrn_int64 p = aptrc[j]; p < aptrc[j] + anzc[j]; ++p) {
      const qrn_int32 r = asubc[p];
      const double v = avalc[p];
      if (r < 0 || r >= n)
        fail(QRN_RES_ERR_LA_ROW_INDEX, "Row " + std::to_string(r) + " of column " + std::to_string(j) +
                                           " is outside 0.." + std::to_string(n - 1) + ".");
      if (r < j)
        fail(QRN_RES_ERR_LA_NOT_LOWER, "The entry (" + std::to_string(r) + ", " + std::to_string(j) +
                                           ") lies above the diagonal; give the lower triangle of the matrix.");
      if (!std::isfinite(v))
        fail(QRN_RES_ERR_VALUE_NAN, "The entry (" + std::to_string(r) + ", " + std::to_string(j) + ") is not finite.");
      if (r == j) maxdiag = std::max(maxdiag, std::fabs(v));
      if (pos > start && r <= ai[pos - 1]) sorted = false;
      ai[pos] = r;
      ax[pos] = v;
      ++pos;
    }
    if (!sorted) {  // rows in any order: sort the column
      col.clear();
      for (int q = start; q < pos; ++q) col.emplace_back(ai[q], ax[q]);
      std::sort(col.begin(), col.end(), [](auto &x, auto &y) { return x.first < y.first; });
      for (int q = start; q < pos; ++q) {
        ai[q] = col[q - start].first;
        ax[q] = col[q - start].second;
      }
    }
    for (int q = start + 1; q < pos; ++q)
      if (ai[q] == ai[q - 1])
        fail(QRN_RES_ERR_DUP_INDEX, "Row " + std::to_string(ai[q]) + " occurs twice in column " + std::to_string(j) + ".");
  }
  ap[n] = pos;
  hold.a = nullptr;
  return a;
}

// Factorizes A + shift I into l; true when every pivot is positive.
bool factorize(cholmod_sparse *a, double shift, cholmod_factor *l, Common &cm) {
  double beta[2] = {shift, 0.0};
  cholmod_factorize_p(a, beta, nullptr, 0, l, &cm.c);
  cm.check();
  return cm.c.status != CHOLMOD_NOT_POSDEF && l->minor == l->n;
}

double smallest_pivot(const cholmod_factor *l) {
  const auto *lp = static_cast<const int *>(l->p);
  const auto *lx = static_cast<const double *>(l->x);
  double least = std::numeric_limits<double>::infinity();
  for (size_t j = 0; j < l->n; ++j) least = std::min(least, lx[lp[j]] * lx[lp[j]]);
  return least;
}

}  // namespace

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_computesparsecholesky(
    qrn_env_t env, qrn_int32 ordering, qrn_int32 regularization, qrn_real tolsingular, qrn_int32 n,
    const qrn_int32 *anzc, const qrn_int64 *aptrc, const qrn_int32 *asubc, const qrn_real *avalc,
    qrn_int32 **perm, qrn_real **diag, qrn_int32 **lnzc, qrn_int64 **lptrc, qrn_int64 *lensubnval,
    qrn_int32 **lsubc, qrn_real **lvalc) {
  for (void **out : {reinterpret_cast<void **>(perm), reinterpret_cast<void **>(diag),
                     reinterpret_cast<void **>(lnzc), reinterpret_cast<void **>(lptrc),
                     reinterpret_cast<void **>(lsubc), reinterpret_cast<void **>(lvalc)})
    if (out != nullptr) *out = nullptr;
  put(lensubnval, qrn_int64(0));
  return env_api(env, "QRN_computesparsecholesky", [&](Env &e) {
    need_dim(n, "The dimension n");
    if (ordering != QRN_CHOLESKY_ORDER_AMD && ordering != QRN_CHOLESKY_ORDER_NATURAL)
      fail(QRN_RES_ERR_LA_ORDERING, "The ordering " + std::to_string(ordering) +
                                        " is neither QRN_CHOLESKY_ORDER_AMD (0) nor QRN_CHOLESKY_ORDER_NATURAL (1).");
    if (regularization != QRN_CHOLESKY_REGULARIZE_NONE && regularization != QRN_CHOLESKY_REGULARIZE_SHIFT)
      fail(QRN_RES_ERR_LA_REGULARIZATION,
           "The regularization " + std::to_string(regularization) +
               " is neither QRN_CHOLESKY_REGULARIZE_NONE (0) nor QRN_CHOLESKY_REGULARIZE_SHIFT (1).");
    const bool shift = regularization == QRN_CHOLESKY_REGULARIZE_SHIFT;
    if (shift && !(std::isfinite(tolsingular) && tolsingular > 0.0))
      fail(QRN_RES_ERR_LA_REGULARIZATION, "The tolerance tolsingular must be finite and above 0 for a shift.");

    Common cm;
    cm.c.method[0].ordering = ordering == QRN_CHOLESKY_ORDER_AMD ? CHOLMOD_AMD : CHOLMOD_NATURAL;
    cm.c.postorder = ordering == QRN_CHOLESKY_ORDER_AMD;  // a postorder would permute the natural order
    double maxdiag = 0.0;
    SparseHolder a(&cm.c);
    a.a = lower_matrix(n, anzc, aptrc, asubc, avalc, &cm.c, maxdiag);

    FactorHolder l(&cm.c);
    l.l = cholmod_analyze(a.a, &cm.c);
    cm.check();
    if (l.l == nullptr) fail(QRN_RES_ERR_INTERNAL, "CHOLMOD could not analyze the matrix.");

    double delta = 0.0;
    const double scale = std::max(1.0, maxdiag);
    bool ok = factorize(a.a, 0.0, l.l, cm);
    if (!ok && !shift) {
      fail(QRN_RES_ERR_LA_NOT_POSDEF, "The matrix is not positive definite (the pivot of column " +
                                          std::to_string(l.l->minor) + " of the permuted matrix is not positive).");
    }
    if (shift && (!ok || (n > 0 && smallest_pivot(l.l) <= tolsingular * scale))) {
      delta = tolsingular * scale;
      ok = false;
      for (int tries = 0; tries <= 30 && !ok; ++tries, delta *= 10.0) {
        // A failed factorization leaves l in an intermediate state: back to symbolic.
        cholmod_change_factor(CHOLMOD_PATTERN, 0, 0, 1, 1, l.l, &cm.c);
        ok = factorize(a.a, delta, l.l, cm);
        if (ok) break;
      }
      if (!ok) fail(QRN_RES_ERR_LA_NOT_POSDEF, "The matrix is not positive definite even after a diagonal shift.");
      std::ostringstream msg;
      msg.precision(17);
      msg << "QRN_computesparsecholesky: the matrix is not numerically positive definite; factored A + " << delta
          << " I.\n";
      e.write(QRN_STREAM_LOG, msg.str());
    }
    // A pattern factor from a failed try is turned back into a packed LL' by factorize.
    if (!l.l->is_ll || l.l->is_super || l.l->xtype != CHOLMOD_REAL)
      fail(QRN_RES_ERR_INTERNAL, "CHOLMOD returned a factor of an unexpected kind.");

    const auto *lp = static_cast<const int *>(l.l->p);
    const auto *li = static_cast<const int *>(l.l->i);
    const auto *lx = static_cast<const double *>(l.l->x);
    const auto *lnz = static_cast<const int *>(l.l->nz);
    const auto *lperm = static_cast<const int *>(l.l->Perm);
    qrn_int64 nnz = 0;
    for (qrn_int32 j = 0; j < n; ++j) nnz += lnz[j];

    Owned<qrn_int32> o_perm(n), o_lnzc(n), o_lsubc(nnz);
    Owned<qrn_real> o_diag(n), o_lvalc(nnz);
    Owned<qrn_int64> o_lptrc(n);
    qrn_int64 pos = 0;
    std::vector<std::pair<qrn_int32, double>> below;
    for (qrn_int32 j = 0; j < n; ++j) {
      o_perm.p[j] = lperm[j];
      o_diag.p[j] = delta;
      o_lnzc.p[j] = lnz[j];
      o_lptrc.p[j] = pos;
      // The diagonal first (as CHOLMOD keeps it), then the rest in increasing
      // row order.
      const int first = lp[j], end = lp[j] + lnz[j];
      if (lnz[j] < 1 || li[first] != j) fail(QRN_RES_ERR_INTERNAL, "CHOLMOD returned a column without its diagonal.");
      bool sorted = true;
      for (int p = first + 1; p < end && sorted; ++p) sorted = li[p] > li[p - 1];
      if (sorted) {
        std::memcpy(o_lsubc.p + pos, li + first, sizeof(int) * size_t(lnz[j]));
        std::memcpy(o_lvalc.p + pos, lx + first, sizeof(double) * size_t(lnz[j]));
        pos += lnz[j];
        continue;
      }
      below.clear();
      for (int p = first; p < end; ++p) below.emplace_back(li[p], lx[p]);
      std::sort(below.begin() + 1, below.end(), [](auto &x, auto &y) { return x.first < y.first; });
      for (auto &[r, v] : below) {
        o_lsubc.p[pos] = r;
        o_lvalc.p[pos] = v;
        ++pos;
      }
    }
    put(lensubnval, nnz);
    if (perm != nullptr) *perm = o_perm.release();
    if (diag != nullptr) *diag = o_diag.release();
    if (lnzc != nullptr) *lnzc = o_lnzc.release();
    if (lptrc != nullptr) *lptrc = o_lptrc.release();
    if (lsubc != nullptr) *lsubc = o_lsubc.release();
    if (lvalc != nullptr) *lvalc = o_lvalc.release();
  });
}

QRN_API qrn_rescode QRN_CALL QRN_sparsetriangularsolvedense(qrn_env_t env, qrn_int32 transposed, qrn_int32 n,
                                                            const qrn_int32 *lnzc, const qrn_int64 *lptrc,
                                                            qrn_int64 lensubnval, const qrn_int32 *lsubc,
                                                            const qrn_real *lvalc, qrn_real *b) {
  return env_api(env, "QRN_sparsetriangularsolvedense", [&](Env &) {
    const bool t = need_trans(transposed, "The transpose flag transposed");
    need_dim(n, "The dimension n");
    need_count(lensubnval, "The number of entries lensubnval");
    need_array(lnzc, n, "lnzc");
    need_array(lptrc, n, "lptrc");
    need_array(lsubc, lensubnval, "lsubc");
    need_array(lvalc, lensubnval, "lvalc");
    need_array(b, n, "b");
    // The whole factor is checked before b changes.
    for (qrn_int32 j = 0; j < n; ++j) {
      const std::string col = "column " + std::to_string(j);
      const qrn_int64 first = lptrc[j], nz = lnzc[j];
      if (nz < 1) fail(QRN_RES_ERR_LA_SINGULAR, "The " + col + " has no entries, hence no diagonal.");
      if (first < 0 || first > lensubnval - nz)
        fail(QRN_RES_ERR_PTR_RANGE, "The " + col + " (" + std::to_string(nz) + " entries from " +
                                        std::to_string(first) + ") reaches outside 0.." + std::to_string(lensubnval) +
                                        ".");
      if (lsubc[first] != j)
        fail(QRN_RES_ERR_LA_NOT_LOWER, "The first entry of the " + col + " is in row " +
                                           std::to_string(lsubc[first]) + ", not on the diagonal.");
      if (lvalc[first] == 0.0) fail(QRN_RES_ERR_LA_SINGULAR, "The diagonal entry of the " + col + " is 0.");
      for (qrn_int64 p = first + 1; p < first + nz; ++p) {
        const qrn_int32 r = lsubc[p];
        if (r < 0 || r >= n)
          fail(QRN_RES_ERR_LA_ROW_INDEX,
               "Row " + std::to_string(r) + " of the " + col + " is outside 0.." + std::to_string(n - 1) + ".");
        if (r <= j)
          fail(QRN_RES_ERR_LA_NOT_LOWER,
               "Row " + std::to_string(r) + " of the " + col + " is not below the diagonal.");
      }
    }
    if (!t) {  // L x = b, column by column
      for (qrn_int32 j = 0; j < n; ++j) {
        const qrn_int64 first = lptrc[j], end = first + lnzc[j];
        const double xj = b[j] / lvalc[first];
        b[j] = xj;
        if (xj != 0.0)
          for (qrn_int64 p = first + 1; p < end; ++p) b[lsubc[p]] -= lvalc[p] * xj;
      }
    } else {  // L' x = b, from the last column back
      for (qrn_int32 j = n - 1; j >= 0; --j) {
        const qrn_int64 first = lptrc[j], end = first + lnzc[j];
        double s = b[j];
        for (qrn_int64 p = first + 1; p < end; ++p) s -= lvalc[p] * b[lsubc[p]];
        b[j] = s / lvalc[first];
      }
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_freeenv(qrn_env_t env, void *buffer) {
  if (env == nullptr) return QRN_RES_ERR_NULL_ENV;
  std::free(buffer);
  return QRN_RES_OK;
}

}  // extern "C"
