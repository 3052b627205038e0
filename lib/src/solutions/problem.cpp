// The problem as the C interface reports it, and the measures of a solution
// on it: objective values, violations and reduced costs.
#include "errors.hpp"
#include "semidefinite.hpp"
#include "solutions.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qrn {

namespace {

qrn_task_t handle(Task &t) { return static_cast<qrn_task_s *>(&t); }

// A reading call that should not fail; if it does, its code is passed on.
void ok(qrn_rescode code) {
  if (code != QRN_RES_OK) fail(code, "Reading the problem data failed.");
}

void size_terms(Terms &q, qrn_int64 n) {
  q.i.resize(n);
  q.j.resize(n);
  q.v.resize(n);
}

// (Qx) for the lower-triangle terms of a symmetric Q, added into out.
void add_qx(const Terms &q, const std::vector<double> &x, std::vector<double> &out, double scale = 1.0) {
  for (size_t k = 0; k < q.v.size(); ++k) {
    qrn_int32 i = q.i[k], j = q.j[k];
    out[i] += scale * q.v[k] * x[j];
    if (i != j) out[j] += scale * q.v[k] * x[i];
  }
}

// x'Qx for the lower-triangle terms.
double xqx(const Terms &q, const std::vector<double> &x) {
  double sum = 0.0;
  for (size_t k = 0; k < q.v.size(); ++k) {
    qrn_int32 i = q.i[k], j = q.j[k];
    sum += (i == j ? 1.0 : 2.0) * q.v[k] * x[i] * x[j];
  }
  return sum;
}

bool finite(double v) { return std::isfinite(v); }

}  // namespace

Problem snapshot(Task &t, unsigned parts) {
  qrn_task_t h = handle(t);
  Problem p;
  ok(QRN_getnumcon(h, &p.n.numcon));
  ok(QRN_getnumvar(h, &p.n.numvar));
  ok(QRN_getnumcone(h, &p.n.numcone));
  ok(QRN_getobjsense(h, &p.sense));
  const qrn_int32 m = p.n.numcon, n = p.n.numvar;
  if (parts & P_MATRIX) {
    qrn_int64 nnz = 0;
    ok(QRN_getnumanz64(h, &nnz));
    p.ptrb.resize(n);
    p.ptre.resize(n);
    p.asub.resize(nnz);
    p.aval.resize(nnz);
    ok(QRN_getacolslice64(h, 0, n, nnz, p.ptrb.data(), p.ptre.data(), p.asub.data(), p.aval.data()));
    for (qrn_int32 i = 0; i < m; ++i) {
      qrn_int64 nz = 0;
      ok(QRN_getnumqconknz64(h, i, &nz));
      if (nz == 0) continue;
      if (p.qcon.empty()) p.qcon.resize(m);
      Terms &q = p.qcon[i];
      size_terms(q, nz);
      ok(QRN_getqconk64(h, i, nz, &nz, q.i.data(), q.j.data(), q.v.data()));
    }
  }
  if (parts & P_BOUNDS) {
    std::vector<qrn_int32> bk(std::max(m, n));
    p.blc.resize(m);
    p.buc.resize(m);
    p.blx.resize(n);
    p.bux.resize(n);
    ok(QRN_getconboundslice(h, 0, m, bk.data(), p.blc.data(), p.buc.data()));
    ok(QRN_getvarboundslice(h, 0, n, bk.data(), p.blx.data(), p.bux.data()));
  }
  if (parts & P_OBJ) {
    p.c.resize(n);
    ok(QRN_getcslice(h, 0, n, p.c.data()));
    ok(QRN_getcfix(h, &p.cfix));
    qrn_int64 nz = 0;
    ok(QRN_getnumqobjnz64(h, &nz));
    size_terms(p.qobj, nz);
    ok(QRN_getqobj64(h, nz, &nz, p.qobj.i.data(), p.qobj.j.data(), p.qobj.v.data()));
  }
  if (parts & P_CONES) {
    p.cones.resize(p.n.numcone);
    p.var_cone.assign(n, -1);
    for (qrn_int32 k = 0; k < p.n.numcone; ++k) {
      qrn_int32 nummem = 0;
      double par = 0.0;
      ok(QRN_getconeinfo(h, k, &p.cones[k].type, &par, &nummem));
      p.cones[k].members.resize(nummem);
      ok(QRN_getcone(h, k, &p.cones[k].type, &par, &nummem, p.cones[k].members.data()));
      for (qrn_int32 j : p.cones[k].members) p.var_cone[j] = k;
    }
  }
  qrn_int32 numbar = 0;
  ok(QRN_getnumbarvar(h, &numbar));
  p.bardim.resize(numbar);
  for (qrn_int32 j = 0; j < numbar; ++j) ok(QRN_getdimbarvarj(h, j, &p.bardim[j]));
  auto size_block = [](Problem::Block &b, qrn_int64 nt) {
    b.row.resize(nt), b.j.resize(nt), b.k.resize(nt), b.l.resize(nt), b.v.resize(nt);
  };
  if ((parts & P_OBJ) && numbar > 0) {
    qrn_int64 nt = 0;
    ok(QRN_getnumbarcblocktriplets(h, &nt));
    size_block(p.barc, nt);
    ok(QRN_getbarcblocktriplet(h, nt, &nt, p.barc.j.data(), p.barc.k.data(), p.barc.l.data(), p.barc.v.data()));
  }
  if (parts & P_MATRIX) {
    qrn_int64 nt = 0;
    if (numbar > 0) {
      ok(QRN_getnumbarablocktriplets(h, &nt));
      size_block(p.bara, nt);
      std::vector<qrn_int32> rows(nt);
      ok(QRN_getbarablocktriplet(h, nt, &nt, rows.data(), p.bara.j.data(), p.bara.k.data(), p.bara.l.data(),
                                 p.bara.v.data()));
      std::copy(rows.begin(), rows.end(), p.bara.row.begin());
    }
    ok(QRN_getaccntot(h, &p.accrows));
    if (p.accrows > 0) {
      qrn_int64 nz = 0;
      ok(QRN_getaccfnumnz(h, &nz));
      p.frow.resize(nz), p.fcol.resize(nz), p.fval.resize(nz), p.accg.resize(p.accrows);
      ok(QRN_getaccftrip(h, p.frow.data(), p.fcol.data(), p.fval.data()));
      ok(QRN_getaccgvector(h, p.accg.data()));
      ok(QRN_getaccbarfnumblocktriplets(h, &nt));
      size_block(p.barf, nt);
      if (nt > 0)
        ok(QRN_getaccbarfblocktriplet(h, nt, &nt, p.barf.row.data(), p.barf.j.data(), p.barf.k.data(),
                                      p.barf.l.data(), p.barf.v.data()));
    }
  }
  if (parts & P_TYPES) {
    std::vector<qrn_int32> all(n);
    std::iota(all.begin(), all.end(), 0);
    p.vartype.resize(n);
    ok(QRN_getvartypelist(h, n, all.data(), p.vartype.data()));
  }
  return p;
}

// ---- cones ----------------------------------------------------------------------

// Distance of (t, x) to the second-order cone t >= ||x||, where r = ||x||.
static double soc_distance(double t, double r) {
  if (r <= t) return 0.0;
  if (r <= -t) return std::hypot(t, r);  // the nearest point is the apex
  return (r - t) / std::sqrt(2.0);
}

double cone_distance(qrn_int32 type, const std::vector<double> &x) {
  if (type == QRN_CONE_RQUAD) {
    // 2 x0 x1 >= ||x2:||^2, x0, x1 >= 0 is, after the orthogonal change
    // u = (x0 + x1)/sqrt 2, v = (x0 - x1)/sqrt 2, the cone u >= ||(v, x2:)||.
    if (x.size() < 2) return 0.0;
    double u = (x[0] + x[1]) / std::sqrt(2.0), v = (x[0] - x[1]) / std::sqrt(2.0);
    double r2 = v * v;
    for (size_t k = 2; k < x.size(); ++k) r2 += x[k] * x[k];
    return soc_distance(u, std::sqrt(r2));
  }
  if (x.empty()) return 0.0;
  double r2 = 0.0;
  for (size_t k = 1; k < x.size(); ++k) r2 += x[k] * x[k];
  return soc_distance(x[0], std::sqrt(r2));
}

// ---- measures --------------------------------------------------------------------

// <C, X> over one lower-triangle entry (k, l) of C: off-diagonal entries count twice.
static double block_term(const Problem::Block &b, size_t t, const std::vector<std::vector<double>> &x,
                         const std::vector<qrn_int32> &dim) {
  const qrn_int32 j = b.j[t], k = b.k[t], l = b.l[t];
  return (k == l ? 1.0 : 2.0) * b.v[t] * x[j][packed_pos(dim[j], k, l)];
}

Measure::Measure(const Problem &prob, const Solution &sol) : p(prob), s(sol) {
  fit(s, p.n);
  s.doty.resize(p.accrows, 0.0);
  s.barx.resize(p.bardim.size());
  s.bars.resize(p.bardim.size());
  for (size_t j = 0; j < p.bardim.size(); ++j) {
    s.barx[j].resize(packed_len(p.bardim[j]), 0.0);
    s.bars[j].resize(packed_len(p.bardim[j]), 0.0);
  }
  ray = s.solsta == QRN_SOL_STA_DUAL_INFEAS_CER;
  farkas = s.solsta == QRN_SOL_STA_PRIM_INFEAS_CER;
}

const std::vector<double> &Measure::activity() {
  if (have_act_) return act_;
  act_.assign(p.n.numcon, 0.0);
  for (qrn_int32 j = 0; j < p.n.numvar; ++j)
    for (qrn_int64 k = p.ptrb[j]; k < p.ptre[j]; ++k) act_[p.asub[k]] += p.aval[k] * s.xx[j];
  for (size_t i = 0; i < p.qcon.size(); ++i)
    if (!p.qcon[i].empty()) act_[i] += 0.5 * xqx(p.qcon[i], s.xx);
  for (size_t t = 0; t < p.bara.v.size(); ++t) act_[p.bara.row[t]] += block_term(p.bara, t, s.barx, p.bardim);
  have_act_ = true;
  return act_;
}

const std::vector<double> &Measure::qx() {
  if (have_qx_) return qx_;
  qx_.assign(p.n.numvar, 0.0);
  add_qx(p.qobj, s.xx, qx_);
  have_qx_ = true;
  return qx_;
}

const std::vector<double> &Measure::gradient() {
  if (have_grad_) return grad_;
  grad_.assign(p.n.numvar, 0.0);
  if (!farkas) {
    grad_ = qx();
    for (qrn_int32 j = 0; j < p.n.numvar; ++j) grad_[j] += p.c[j];
  }
  for (qrn_int32 j = 0; j < p.n.numvar; ++j) {
    double aty = 0.0;
    for (qrn_int64 k = p.ptrb[j]; k < p.ptre[j]; ++k) aty += p.aval[k] * s.y[p.asub[k]];
    grad_[j] -= aty;
  }
  for (size_t i = 0; i < p.qcon.size(); ++i)
    if (!p.qcon[i].empty() && s.y[i] != 0.0) add_qx(p.qcon[i], s.xx, grad_, -s.y[i]);
  for (size_t k = 0; k < p.fval.size(); ++k) grad_[p.fcol[k]] -= p.fval[k] * s.doty[p.frow[k]];
  have_grad_ = true;
  return grad_;
}

double Measure::primal_obj() {
  double obj = 0.0;
  for (qrn_int32 j = 0; j < p.n.numvar; ++j) obj += p.c[j] * s.xx[j];
  for (size_t t = 0; t < p.barc.v.size(); ++t) obj += block_term(p.barc, t, s.barx, p.bardim);
  if (ray) return obj;
  return obj + p.cfix + 0.5 * xqx(p.qobj, s.xx);
}

double Measure::dual_obj() {
  double obj = 0.0;
  for (qrn_int32 i = 0; i < p.n.numcon; ++i) {
    if (finite(p.blc[i])) obj += s.slc[i] * p.blc[i];
    if (finite(p.buc[i])) obj -= s.suc[i] * p.buc[i];
  }
  for (qrn_int32 j = 0; j < p.n.numvar; ++j) {
    if (finite(p.blx[j])) obj += s.slx[j] * p.blx[j];
    if (finite(p.bux[j])) obj -= s.sux[j] * p.bux[j];
  }
  for (qrn_int64 r = 0; r < p.accrows; ++r) obj -= s.doty[r] * p.accg[r];
  if (farkas) return obj;
  obj += p.cfix - 0.5 * xqx(p.qobj, s.xx);
  for (size_t i = 0; i < p.qcon.size(); ++i)
    if (!p.qcon[i].empty()) obj += 0.5 * s.y[i] * xqx(p.qcon[i], s.xx);
  return obj;
}

// For a ray every finite bound counts as 0.
static double homog(double b, bool ray) { return ray && std::isfinite(b) ? 0.0 : b; }

double Measure::pviolcon(qrn_int32 i) {
  double xc = s.xc[i];
  double v = std::max({0.0, homog(p.blc[i], ray) - xc, xc - homog(p.buc[i], ray)});
  return std::max(v, std::fabs(xc - activity()[i]));
}

double Measure::pviolvar(qrn_int32 j) const {
  double x = s.xx[j];
  return std::max({0.0, homog(p.blx[j], ray) - x, x - homog(p.bux[j], ray)});
}

double Measure::pviolcone(qrn_int32 k) const {
  std::vector<double> x;
  for (qrn_int32 j : p.cones[k].members) x.push_back(s.xx[j]);
  return cone_distance(p.cones[k].type, x);
}

double Measure::pviolitg(qrn_int32 j) const {
  if (p.vartype[j] != QRN_VAR_TYPE_INTEGER) return 0.0;
  return std::fabs(s.xx[j] - std::nearbyint(s.xx[j]));
}

// Violation of the sign and of the zero an infinite bound asks of a dual value.
static double dual_sign(double v, double bound, double sign) {
  if (!std::isfinite(bound)) return std::fabs(v);
  return std::max(0.0, -sign * v);
}

double Measure::dviolcon(qrn_int32 i) const {
  double v = std::fabs(s.y[i] - (s.slc[i] - s.suc[i]));
  v = std::max(v, dual_sign(s.slc[i], p.blc[i], sign()));
  return std::max(v, dual_sign(s.suc[i], p.buc[i], sign()));
}

double Measure::dviolvar(qrn_int32 j) {
  double v = std::fabs(gradient()[j] - s.slx[j] + s.sux[j] - s.snx[j]);
  v = std::max(v, dual_sign(s.slx[j], p.blx[j], sign()));
  v = std::max(v, dual_sign(s.sux[j], p.bux[j], sign()));
  if (p.var_cone[j] < 0) v = std::max(v, std::fabs(s.snx[j]));
  return v;
}

double Measure::dviolcone(qrn_int32 k) const {
  // Both scalar cone types are self-dual.
  std::vector<double> x;
  for (qrn_int32 j : p.cones[k].members) x.push_back(sign() * s.snx[j]);
  return cone_distance(p.cones[k].type, x);
}

double Measure::reduced_cost(qrn_int32 j) { return gradient()[j]; }

const std::vector<std::vector<double>> &Measure::bar_residual() {
  if (have_barres_) return barres_;
  barres_.resize(p.bardim.size());
  for (size_t j = 0; j < p.bardim.size(); ++j) {
    barres_[j] = s.bars[j];
    for (double &v : barres_[j]) v = -v;
  }
  auto add = [&](const Problem::Block &b, size_t t, double w) {
    barres_[b.j[t]][packed_pos(p.bardim[b.j[t]], b.k[t], b.l[t])] += w * b.v[t];
  };
  if (!farkas)
    for (size_t t = 0; t < p.barc.v.size(); ++t) add(p.barc, t, 1.0);
  for (size_t t = 0; t < p.bara.v.size(); ++t) add(p.bara, t, -s.y[p.bara.row[t]]);
  for (size_t t = 0; t < p.barf.v.size(); ++t) add(p.barf, t, -s.doty[p.barf.row[t]]);
  have_barres_ = true;
  return barres_;
}

double Measure::pviolbar(qrn_int32 j) const {
  return std::max(0.0, -eigenvalues(s.barx[j], p.bardim[j]).front());
}

double Measure::dviolbar(qrn_int32 j) {
  std::vector<double> z = s.bars[j];
  for (double &v : z) v *= sign();
  double viol = std::max(0.0, -eigenvalues(z, p.bardim[j]).front());
  for (double v : bar_residual()[j]) viol = std::max(viol, std::fabs(v));
  return viol;
}

}  // namespace qrn
