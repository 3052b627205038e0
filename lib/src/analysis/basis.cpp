// Basis factorization with UMFPACK, and the basis services of the C interface.
#include "basis.hpp"
#include "info.hpp"

#include <umfpack.h>

#include <algorithm>
#include <cmath>

namespace qrn {

BasisFactor::~BasisFactor() {
  if (numeric != nullptr) umfpack_di_free_numeric(&numeric);
}

void BasisFactor::solve(bool transpose, const double *b, double *x) const {
  if (m == 0) return;
  double control[UMFPACK_CONTROL], info[UMFPACK_INFO];
  umfpack_di_defaults(control);
  control[UMFPACK_PRL] = 0;
  umfpack_di_solve(transpose ? UMFPACK_At : UMFPACK_A, ap.data(), ai.data(), ax.data(), x, b, numeric, control, info);
}

double BasisFactor::inverse_norm1() const {
  if (m == 0) return 0.0;
  std::vector<double> x(m, 1.0 / m), y(m), xi(m), z(m);
  double est = 0.0;
  for (int iter = 0; iter < 5; ++iter) {
    solve(false, x.data(), y.data());
    double ny = 0.0;
    for (double v : y) ny += std::fabs(v);
    est = std::max(est, ny);
    for (qrn_int32 i = 0; i < m; ++i) xi[i] = y[i] >= 0 ? 1.0 : -1.0;
    solve(true, xi.data(), z.data());
    qrn_int32 jmax = 0;
    double zx = 0.0;
    for (qrn_int32 i = 0; i < m; ++i) {
      zx += z[i] * x[i];
      if (std::fabs(z[i]) > std::fabs(z[jmax])) jmax = i;
    }
    if (std::fabs(z[jmax]) <= zx) break;
    std::fill(x.begin(), x.end(), 0.0);
    x[jmax] = 1.0;
  }
  return est;
}

std::vector<qrn_int32> basis_of(const Task &t, const opt::Problem &p, bool optimal) {
  const Solution &s = t.sol[QRN_SOL_BAS];
  if (!s.defined) fail(QRN_RES_ERR_NO_BASIS, "The task has no basic solution.");
  if (static_cast<qrn_int32>(s.skc.size()) != p.m || static_cast<qrn_int32>(s.skx.size()) != p.n)
    fail(QRN_RES_ERR_NO_BASIS, "The basic solution does not match the task's size.");
  if (optimal && s.solsta != QRN_SOL_STA_OPTIMAL)
    fail(QRN_RES_ERR_NO_BASIS, "The basic solution is not optimal.");
  std::vector<qrn_int32> basis;
  for (qrn_int32 i = 0; i < p.m; ++i)
    if (s.skc[i] == QRN_SK_BASIS) basis.push_back(i);
  for (qrn_int32 j = 0; j < p.n; ++j)
    if (s.skx[j] == QRN_SK_BASIS) basis.push_back(p.m + j);
  if (static_cast<qrn_int32>(basis.size()) != p.m)
    fail(QRN_RES_ERR_NO_BASIS, "The basic solution has " + std::to_string(basis.size()) + " basic items, not " +
                                   std::to_string(p.m) + ".");
  return basis;
}

std::shared_ptr<const BasisFactor> factor_basis(const opt::Problem &p, std::vector<qrn_int32> basis) {
  auto f = std::make_shared<BasisFactor>();
  f->m = p.m;
  f->basis = std::move(basis);
  f->ap.assign(1, 0);
  for (qrn_int32 k : f->basis) {
    double colsum = 0.0;
    if (k < p.m) {
      f->ai.push_back(k);
      f->ax.push_back(-1.0);
      colsum = 1.0;
    } else {
      const qrn_int32 j = k - p.m;
      for (int e = p.start[j]; e < p.start[j + 1]; ++e) {
        f->ai.push_back(p.index[e]);
        f->ax.push_back(p.value[e]);
        colsum += std::fabs(p.value[e]);
      }
    }
    f->norm1 = std::max(f->norm1, colsum);
    f->ap.push_back(static_cast<int>(f->ai.size()));
  }
  if (p.m == 0) return f;
  double control[UMFPACK_CONTROL], info[UMFPACK_INFO];
  umfpack_di_defaults(control);
  control[UMFPACK_PRL] = 0;
  void *symbolic = nullptr;
  int status = umfpack_di_symbolic(p.m, p.m, f->ap.data(), f->ai.data(), f->ax.data(), &symbolic, control, info);
  if (status != UMFPACK_OK) fail(QRN_RES_ERR_BASIS_SINGULAR, "The basis matrix could not be analysed.");
  status = umfpack_di_numeric(f->ap.data(), f->ai.data(), f->ax.data(), symbolic, &f->numeric, control, info);
  umfpack_di_free_symbolic(&symbolic);
  if (status == UMFPACK_ERROR_out_of_memory) throw std::bad_alloc();
  if (status != UMFPACK_OK) fail(QRN_RES_ERR_BASIS_SINGULAR, "The basis matrix is singular.");
  return f;
}

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_initbasissolve(qrn_task_t task, qrn_int32 *basis) {
  return api(task, "QRN_initbasissolve", [&](Task &t) {
    const opt::Problem p = opt::snapshot(task);
    auto f = factor_basis(p, basis_of(t, p, false));
    if (basis != nullptr) std::copy(f->basis.begin(), f->basis.end(), basis);
    t.basis_factor = std::move(f);
    iinf(t, QRN_IINF_BASIS_SOLVES) = 0;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_solvewithbasis(qrn_task_t task, qrn_int32 transp, qrn_int32 numnz, qrn_int32 *sub,
                                                qrn_real *val, qrn_int32 *numnzout) {
  return api(task, "QRN_solvewithbasis", [&](Task &t) {
    qrn_int32 m = 0;
    QRN_getnumcon(task, &m);
    auto f = t.basis_factor;
    if (f == nullptr || f->m != m)
      fail(QRN_RES_ERR_BASIS_NOT_INIT, "No basis factorization for the current task: call QRN_initbasissolve.");
    need_count(numnz, "numnz");
    if (numnz > m) fail(QRN_RES_ERR_ARGUMENT, "numnz " + std::to_string(numnz) + " exceeds the number of constraints.");
    need_array(sub, m, "sub");
    need_array(val, m, "val");
    std::vector<double> b(m, 0.0), x(m, 0.0);
    std::vector<char> seen(m, 0);
    for (qrn_int32 k = 0; k < numnz; ++k) {
      const qrn_int32 i = sub[k];
      if (i < 0 || i >= m) fail(QRN_RES_ERR_INDEX_CON, "sub[" + std::to_string(k) + "] = " + std::to_string(i) +
                                                           " is not a position of the basis.");
      if (seen[i]) fail(QRN_RES_ERR_DUP_INDEX, "Position " + std::to_string(i) + " is listed twice in sub.");
      seen[i] = 1;
      b[i] = val[i];
    }
    f->solve(transp != 0, b.data(), x.data());
    qrn_int32 nz = 0;
    for (qrn_int32 i = 0; i < m; ++i) {
      val[i] = x[i];
      if (x[i] != 0.0) sub[nz++] = i;
    }
    put(numnzout, nz);
    ++iinf(t, QRN_IINF_BASIS_SOLVES);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_basiscond(qrn_task_t task, qrn_real *nrmbasis, qrn_real *nrminvbasis) {
  return api(task, "QRN_basiscond", [&](Task &t) {
    qrn_int32 m = 0;
    QRN_getnumcon(task, &m);
    auto f = t.basis_factor;
    if (f == nullptr || f->m != m) {
      const opt::Problem p = opt::snapshot(task);
      f = factor_basis(p, basis_of(t, p, false));
    }
    const double inv = f->inverse_norm1();
    put(nrmbasis, f->norm1);
    put(nrminvbasis, inv);
    dinf(t, QRN_DINF_SPX_BASIS_COND) = f->norm1 * inv;
  });
}

}  // extern "C"
