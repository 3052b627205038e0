// The optimizers' snapshot of a task, read through the C interface.
#include "problem.hpp"

#include <algorithm>
#include <climits>
#include <cmath>

namespace qrn::opt {

namespace {
void need(qrn_rescode r, const char *what) {
  if (r != QRN_RES_OK) fail(r, std::string("Reading the problem failed (") + what + ").");
}
}  // namespace

Problem snapshot(qrn_task_t task) {
  Problem p;
  need(QRN_getnumcon(task, &p.m), "constraints");
  need(QRN_getnumvar(task, &p.n), "variables");
  const qrn_int32 m = p.m, n = p.n;
  qrn_int64 nnz = 0;
  need(QRN_getacolslicenumnz64(task, 0, n, &nnz), "matrix size");
  if (nnz > INT_MAX) fail(QRN_RES_ERR_OPT_SOLVER, "The matrix has more than 2^31-1 non-zeros.");
  std::vector<qrn_int64> ptrb(n), ptre(n);
  p.index.resize(nnz);
  p.value.resize(nnz);
  need(QRN_getacolslice64(task, 0, n, nnz, ptrb.data(), ptre.data(), p.index.data(), p.value.data()), "matrix");
  p.start.assign(n + 1, 0);
  bool packed = true;
  for (qrn_int32 j = 0; j < n; ++j) {
    if (j > 0 && ptrb[j] != ptre[j - 1]) packed = false;
    p.start[j + 1] = static_cast<int>(p.start[j] + (ptre[j] - ptrb[j]));
  }
  if (!packed || (n > 0 && ptrb[0] != 0)) {  // make the columns contiguous
    std::vector<int> idx(nnz);
    std::vector<double> val(nnz);
    for (qrn_int32 j = 0; j < n; ++j)
      for (qrn_int64 k = ptrb[j], w = p.start[j]; k < ptre[j]; ++k, ++w) {
        idx[w] = p.index[k];
        val[w] = p.value[k];
      }
    p.index.swap(idx);
    p.value.swap(val);
  }
  p.bkc.resize(m);
  p.blc.resize(m);
  p.buc.resize(m);
  p.bkx.resize(n);
  p.blx.resize(n);
  p.bux.resize(n);
  need(QRN_getconboundslice(task, 0, m, p.bkc.data(), p.blc.data(), p.buc.data()), "constraint bounds");
  need(QRN_getvarboundslice(task, 0, n, p.bkx.data(), p.blx.data(), p.bux.data()), "variable bounds");
  p.c.resize(n);
  need(QRN_getcslice(task, 0, n, p.c.data()), "objective");
  need(QRN_getcfix(task, &p.cfix), "objective constant");
  qrn_int32 sense = 0;
  need(QRN_getobjsense(task, &sense), "objective sense");
  p.maximize = sense == QRN_OBJECTIVE_SENSE_MAXIMIZE;
  qrn_int64 nq = 0;
  need(QRN_getnumqobjnz64(task, &nq), "quadratic objective size");
  if (nq > 0) {
    p.qi.resize(nq);
    p.qj.resize(nq);
    p.qv.resize(nq);
    qrn_int64 got = 0;
    need(QRN_getqobj64(task, nq, &got, p.qi.data(), p.qj.data(), p.qv.data()), "quadratic objective");
  }
  need(QRN_getnumintvar(task, &p.numint), "integer count");
  p.integer.assign(n, 0);
  if (p.numint > 0) {
    std::vector<qrn_int32> sub(n), type(n);
    for (qrn_int32 j = 0; j < n; ++j) sub[j] = j;
    need(QRN_getvartypelist(task, n, sub.data(), type.data()), "variable types");
    for (qrn_int32 j = 0; j < n; ++j) p.integer[j] = type[j] == QRN_VAR_TYPE_INTEGER;
  }
  need(QRN_getnumcone(task, &p.numcone), "cones");
  qrn_int64 numacc = 0, numdjc = 0;
  qrn_int32 numbarvar = 0;
  need(QRN_getnumacc(task, &numacc), "affine conic constraints");
  need(QRN_getnumdjc(task, &numdjc), "disjunctive constraints");
  need(QRN_getnumbarvar(task, &numbarvar), "semidefinite variables");
  p.numconic = numacc + numdjc + numbarvar;
  for (qrn_int32 i = 0; i < m; ++i) {
    qrn_int64 k = 0;
    need(QRN_getnumqconknz64(task, i, &k), "quadratic constraint terms");
    p.numqcnz += k;
  }
  qrn_int32 len = 0;
  if (QRN_gettasknamelen(task, &len) == QRN_RES_OK && len > 0) {
    std::string name(static_cast<size_t>(len) + 1, '\0');
    if (QRN_gettaskname(task, len + 1, name.data()) == QRN_RES_OK) p.name = name.c_str();
  }
  return p;
}

void mul_a(const Problem &p, const double *x, double *out) {
  std::fill(out, out + p.m, 0.0);
  for (qrn_int32 j = 0; j < p.n; ++j) {
    const double xj = x[j];
    if (xj == 0.0) continue;
    for (int k = p.start[j]; k < p.start[j + 1]; ++k) out[p.index[k]] += p.value[k] * xj;
  }
}

void mul_at(const Problem &p, const double *y, double *out) {
  for (qrn_int32 j = 0; j < p.n; ++j) {
    double s = 0.0;
    for (int k = p.start[j]; k < p.start[j + 1]; ++k) s += p.value[k] * y[p.index[k]];
    out[j] = s;
  }
}

void mul_q(const Problem &p, const double *x, double *out) {
  std::fill(out, out + p.n, 0.0);
  for (size_t k = 0; k < p.qv.size(); ++k) {
    const qrn_int32 i = p.qi[k], j = p.qj[k];
    out[i] += p.qv[k] * x[j];
    if (i != j) out[j] += p.qv[k] * x[i];
  }
}

double quad_value(const Problem &p, const double *x) {
  double s = 0.0;
  for (size_t k = 0; k < p.qv.size(); ++k) {
    const qrn_int32 i = p.qi[k], j = p.qj[k];
    s += (i == j ? 0.5 : 1.0) * p.qv[k] * x[i] * x[j];
  }
  return s;
}

double primal_obj(const Problem &p, const double *x) {
  double s = p.cfix;
  for (qrn_int32 j = 0; j < p.n; ++j) s += p.c[j] * x[j];
  return s + quad_value(p, x);
}

static double side_violation(double v, double lo, double up) {
  double viol = 0.0;
  if (v < lo) viol = (lo - v) / (1.0 + std::fabs(lo));
  if (v > up) viol = std::max(viol, (v - up) / (1.0 + std::fabs(up)));
  if (std::isnan(v)) viol = inf;
  return viol;
}

double con_violation(const Problem &p, const double *xc) {
  double viol = 0.0;
  for (qrn_int32 i = 0; i < p.m; ++i) viol = std::max(viol, side_violation(xc[i], p.blc[i], p.buc[i]));
  return viol;
}

double bound_violation(const Problem &p, const double *x) {
  double viol = 0.0;
  for (qrn_int32 j = 0; j < p.n; ++j) viol = std::max(viol, side_violation(x[j], p.blx[j], p.bux[j]));
  return viol;
}

Duals split_duals(const Problem &p, std::vector<double> y, const std::vector<double> &dj) {
  Duals d;
  const double s = p.maximize ? -1.0 : 1.0;  // the sign a multiplier has
  d.slc.assign(p.m, 0.0);
  d.suc.assign(p.m, 0.0);
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (s * y[i] > 0) d.slc[i] = y[i];
    else d.suc[i] = -y[i];
  }
  d.slx.assign(p.n, 0.0);
  d.sux.assign(p.n, 0.0);
  for (qrn_int32 j = 0; j < p.n; ++j) {
    if (s * dj[j] > 0) d.slx[j] = dj[j];
    else d.sux[j] = -dj[j];
  }
  d.y = std::move(y);
  return d;
}

double dual_obj(const Problem &p, const Duals &d, const double *x, bool with_cfix) {
  double s = with_cfix ? p.cfix : 0.0;
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (std::isfinite(p.blc[i])) s += p.blc[i] * d.slc[i];
    if (std::isfinite(p.buc[i])) s -= p.buc[i] * d.suc[i];
  }
  for (qrn_int32 j = 0; j < p.n; ++j) {
    if (std::isfinite(p.blx[j])) s += p.blx[j] * d.slx[j];
    if (std::isfinite(p.bux[j])) s -= p.bux[j] * d.sux[j];
  }
  if (x != nullptr) s -= quad_value(p, x);
  return s;
}

double dual_violation(const Problem &p, const Duals &d) {
  double viol = 0.0;
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (!std::isfinite(p.blc[i])) viol = std::max(viol, std::fabs(d.slc[i]));
    if (!std::isfinite(p.buc[i])) viol = std::max(viol, std::fabs(d.suc[i]));
  }
  for (qrn_int32 j = 0; j < p.n; ++j) {
    const double scale = 1.0 + std::fabs(p.c[j]);
    if (!std::isfinite(p.blx[j])) viol = std::max(viol, std::fabs(d.slx[j]) / scale);
    if (!std::isfinite(p.bux[j])) viol = std::max(viol, std::fabs(d.sux[j]) / scale);
  }
  return viol;
}

}  // namespace qrn::opt
