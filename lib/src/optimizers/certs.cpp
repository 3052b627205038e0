// Certificates of primal and dual infeasibility.
#include "certs.hpp"

#include "clp.hpp"

#include <algorithm>
#include <cmath>

namespace qrn::opt {

namespace {
constexpr double kZero = 1e-9;  // relative size of a multiplier taken as 0

double max_abs(const std::vector<double> &v) {
  double s = 0.0;
  for (double x : v) s = std::max(s, std::fabs(x));
  return s;
}

// Tries y as it is (sign +1) or negated.
bool farkas_sign(const Problem &p, const std::vector<double> &y0, double sign, Duals &out) {
  const double scale = max_abs(y0);
  if (!(scale > 0) || !std::isfinite(scale)) return false;
  std::vector<double> y(p.m), r(p.n);
  for (qrn_int32 i = 0; i < p.m; ++i) y[i] = sign * y0[i] / scale;
  // A multiplier on a side that has no bound must be 0.
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (std::fabs(y[i]) <= kZero) y[i] = 0.0;
    if (y[i] > 0 && !std::isfinite(p.blc[i])) return false;
    if (y[i] < 0 && !std::isfinite(p.buc[i])) return false;
  }
  mul_at(p, y.data(), r.data());
  Duals d;
  d.slc.assign(p.m, 0.0);
  d.suc.assign(p.m, 0.0);
  d.slx.assign(p.n, 0.0);
  d.sux.assign(p.n, 0.0);
  double value = 0.0, size = 0.0;
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (y[i] > 0) d.slc[i] = y[i], value += p.blc[i] * y[i], size += std::fabs(p.blc[i] * y[i]);
    if (y[i] < 0) d.suc[i] = -y[i], value += p.buc[i] * y[i], size += std::fabs(p.buc[i] * y[i]);
  }
  for (qrn_int32 j = 0; j < p.n; ++j) {
    const double v = -r[j];  // slx - sux
    if (std::fabs(v) <= kZero * (1.0 + std::fabs(r[j]))) continue;  // rounding left by A'y
    if (v > 0) {
      if (!std::isfinite(p.blx[j])) return false;
      d.slx[j] = v, value += p.blx[j] * v, size += std::fabs(p.blx[j] * v);
    } else {
      if (!std::isfinite(p.bux[j])) return false;
      d.sux[j] = -v, value -= p.bux[j] * -v, size += std::fabs(p.bux[j] * v);
    }
  }
  if (!(value > 1e-8 * (1.0 + size))) return false;
  d.y = y;
  if (p.maximize) {  // multipliers are <= 0 when maximizing
    for (auto *v : {&d.y, &d.slc, &d.suc, &d.slx, &d.sux})
      for (double &x : *v) x = -x;
  }
  out = std::move(d);
  return true;
}
}  // namespace

bool farkas_from(const Problem &p, const std::vector<double> &y, Duals &out) {
  if (static_cast<qrn_int32>(y.size()) != p.m) return false;
  return farkas_sign(p, y, 1.0, out) || farkas_sign(p, y, -1.0, out);
}

bool ray_from(const Problem &p, const std::vector<double> &d0, std::vector<double> &out) {
  if (static_cast<qrn_int32>(d0.size()) != p.n) return false;
  const double scale = max_abs(d0);
  if (!(scale > 0) || !std::isfinite(scale)) return false;
  std::vector<double> d(p.n), ad(p.m), qd(p.n);
  for (qrn_int32 j = 0; j < p.n; ++j) {
    d[j] = d0[j] / scale;
    if (std::fabs(d[j]) <= kZero) d[j] = 0.0;
    if (d[j] < 0 && std::isfinite(p.blx[j])) return false;
    if (d[j] > 0 && std::isfinite(p.bux[j])) return false;
  }
  mul_a(p, d.data(), ad.data());
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (ad[i] < -1e-7 && std::isfinite(p.blc[i])) return false;
    if (ad[i] > 1e-7 && std::isfinite(p.buc[i])) return false;
  }
  mul_q(p, d.data(), qd.data());
  if (max_abs(qd) > 1e-7) return false;
  double cd = 0.0, size = 0.0;
  for (qrn_int32 j = 0; j < p.n; ++j) cd += p.c[j] * d[j], size += std::fabs(p.c[j] * d[j]);
  if (p.maximize) cd = -cd;
  if (!(cd < -1e-8 * (1.0 + size))) return false;
  out = std::move(d);
  return true;
}

Elastic elastic_problem(const Problem &p, const double *wlc, const double *wuc, const double *wlx,
                        const double *wux, double default_weight) {
  Elastic e;
  Problem &q = e.prob;
  auto weight = [&](const double *w, qrn_int32 k) { return w != nullptr ? w[k] : default_weight; };
  q.maximize = false;
  q.m = p.m;
  q.n = p.n;
  q.blc = p.blc;
  q.buc = p.buc;
  q.bkc = p.bkc;
  // x is free; its bounds become rows with their own elastic columns.
  q.blx.assign(p.n, -inf);
  q.bux.assign(p.n, inf);
  q.bkx.assign(p.n, QRN_BK_FREE);
  q.c.assign(p.n, 0.0);
  q.integer = p.integer;
  q.numint = p.numint;
  std::vector<std::vector<std::pair<int, double>>> cols(p.n);
  for (qrn_int32 j = 0; j < p.n; ++j)
    for (int k = p.start[j]; k < p.start[j + 1]; ++k) cols[j].push_back({p.index[k], p.value[k]});
  for (qrn_int32 j = 0; j < p.n; ++j) {
    if (!std::isfinite(p.blx[j]) && !std::isfinite(p.bux[j])) continue;
    e.bound_var.push_back(j);
    cols[j].push_back({q.m, 1.0});
    q.blc.push_back(p.blx[j]);
    q.buc.push_back(p.bux[j]);
    q.bkc.push_back(p.bkx[j]);
    ++q.m;
  }
  auto add_side = [&](bool con, bool lower, qrn_int32 item, int row, double w) {
    if (!(w >= 0)) return;  // hard
    e.sides.push_back({con, lower, item});
    cols.push_back({{row, lower ? 1.0 : -1.0}});
    q.c.push_back(w);
    q.blx.push_back(0.0);
    q.bux.push_back(inf);
    q.bkx.push_back(QRN_BK_LOWER);
    q.integer.push_back(0);
    ++q.n;
  };
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (std::isfinite(p.blc[i])) add_side(true, true, i, i, weight(wlc, i));
    if (std::isfinite(p.buc[i])) add_side(true, false, i, i, weight(wuc, i));
  }
  for (size_t r = 0; r < e.bound_var.size(); ++r) {
    const qrn_int32 j = e.bound_var[r];
    if (std::isfinite(p.blx[j])) add_side(false, true, j, p.m + static_cast<int>(r), weight(wlx, j));
    if (std::isfinite(p.bux[j])) add_side(false, false, j, p.m + static_cast<int>(r), weight(wux, j));
  }
  q.start.assign(1, 0);
  for (auto &col : cols) {
    std::sort(col.begin(), col.end());
    for (auto &[i, v] : col) {
      q.index.push_back(i);
      q.value.push_back(v);
    }
    q.start.push_back(static_cast<int>(q.index.size()));
  }
  return e;
}

bool farkas_by_elastic(const Problem &p, Run &run, Duals &out) {
  Elastic e = elastic_problem(p, nullptr, nullptr, nullptr, nullptr, 1.0);
  Run quiet(run.task, true);
  LpResult r = simplex(e.prob, quiet, false, false);
  if (r.status != LpResult::optimal) return false;
  double value = 0.0;
  for (qrn_int32 k = p.n; k < e.prob.n; ++k) value += e.prob.c[k] * r.x[k];
  if (value <= std::max(run.primal_tol, 1e-9)) return false;  // feasible after all
  // Rows of the constraints carry y; the bound rows carry -A'y, which
  // farkas_from recomputes.
  std::vector<double> y(r.y.begin(), r.y.begin() + p.m);
  if (farkas_from(p, y, out)) return true;
  // A system whose only conflict is within variable bounds (lx > ux) has y = 0:
  // the certificate is then slx = sux = 1 on that variable.
  for (qrn_int32 j = 0; j < p.n; ++j)
    if (p.blx[j] > p.bux[j]) {
      const double s = p.maximize ? -1.0 : 1.0;
      out = Duals{};
      out.y.assign(p.m, 0.0);
      out.slc.assign(p.m, 0.0);
      out.suc.assign(p.m, 0.0);
      out.slx.assign(p.n, 0.0);
      out.sux.assign(p.n, 0.0);
      out.slx[j] = out.sux[j] = s;
      return true;
    }
  return false;
}

bool ray_by_lp(const Problem &p, Run &run, std::vector<double> &out) {
  Problem q;
  q.m = p.m;
  q.n = p.n;
  q.start = p.start;
  q.index = p.index;
  q.value = p.value;
  q.maximize = p.maximize;
  q.c = p.c;
  q.integer.assign(p.n, 0);
  auto cone = [](double lo, double up, double cap, double &l, double &u) {
    l = std::isfinite(lo) ? 0.0 : -cap;
    u = std::isfinite(up) ? 0.0 : cap;
  };
  q.blx.resize(p.n);
  q.bux.resize(p.n);
  q.bkx.assign(p.n, QRN_BK_RANGED);
  for (qrn_int32 j = 0; j < p.n; ++j) cone(p.blx[j], p.bux[j], 1.0, q.blx[j], q.bux[j]);
  q.blc.resize(p.m);
  q.buc.resize(p.m);
  q.bkc.assign(p.m, QRN_BK_RANGED);
  for (qrn_int32 i = 0; i < p.m; ++i) cone(p.blc[i], p.buc[i], inf, q.blc[i], q.buc[i]);
  if (p.quadratic()) {  // rows Q d = 0
    std::vector<std::vector<std::pair<int, double>>> cols(p.n);
    for (qrn_int32 j = 0; j < p.n; ++j)
      for (int k = p.start[j]; k < p.start[j + 1]; ++k) cols[j].push_back({p.index[k], p.value[k]});
    for (size_t k = 0; k < p.qv.size(); ++k) {
      cols[p.qj[k]].push_back({q.m + p.qi[k], p.qv[k]});
      if (p.qi[k] != p.qj[k]) cols[p.qi[k]].push_back({q.m + p.qj[k], p.qv[k]});
    }
    q.m += p.n;
    q.blc.resize(q.m, 0.0);
    q.buc.resize(q.m, 0.0);
    q.bkc.resize(q.m, QRN_BK_FIXED);
    q.start.assign(1, 0);
    q.index.clear();
    q.value.clear();
    for (auto &col : cols) {
      std::sort(col.begin(), col.end());
      for (auto &[i, v] : col) q.index.push_back(i), q.value.push_back(v);
      q.start.push_back(static_cast<int>(q.index.size()));
    }
  }
  Run quiet(run.task, true);
  LpResult r = simplex(q, quiet, false, false);
  if (r.status != LpResult::optimal) return false;
  return ray_from(p, r.x, out);
}

}  // namespace qrn::opt
