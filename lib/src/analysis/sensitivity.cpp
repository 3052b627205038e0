// Sensitivity analysis of an optimal basic solution: shadow prices and ranges
// of bounds (primal) and of objective coefficients (dual), from the factored
// optimal basis by ratio tests.
#include "basis.hpp"
#include "info.hpp"

#include <chrono>
#include <cmath>

namespace qrn {

namespace {

struct Basic {
  const opt::Problem &p;
  const Solution &s;
  std::shared_ptr<const BasisFactor> f;
  std::vector<qrn_int32> pos;  // basic position of item k, -1 when nonbasic

  Basic(const opt::Problem &p_, const Solution &s_, std::shared_ptr<const BasisFactor> f_)
      : p(p_), s(s_), f(std::move(f_)), pos(p_.m + p_.n, -1) {
    for (qrn_int32 k = 0; k < p.m; ++k) pos[f->basis[k]] = k;
  }
  double value(qrn_int32 k) const { return k < p.m ? s.xc[k] : s.xx[k - p.m]; }
  double lo(qrn_int32 k) const { return k < p.m ? p.blc[k] : p.blx[k - p.m]; }
  double up(qrn_int32 k) const { return k < p.m ? p.buc[k] : p.bux[k - p.m]; }
  qrn_int32 key(qrn_int32 k) const { return k < p.m ? s.skc[k] : s.skx[k - p.m]; }
  // Multipliers of the lower and upper side of item k (stored convention).
  double sl(qrn_int32 k) const { return k < p.m ? s.slc[k] : s.slx[k - p.m]; }
  double su(qrn_int32 k) const { return k < p.m ? s.suc[k] : s.sux[k - p.m]; }
  // Column of item k in [-I A], dense.
  std::vector<double> column(qrn_int32 k) const {
    std::vector<double> a(p.m, 0.0);
    if (k < p.m) a[k] = -1.0;
    else
      for (int e = p.start[k - p.m]; e < p.start[k - p.m + 1]; ++e) a[p.index[e]] = p.value[e];
    return a;
  }
  // How far item k's value can move by delta * direction before a basic
  // item leaves its bounds: the basic values change by -alpha * delta.
  double ratio(const std::vector<double> &alpha, double direction) const {
    double best = inf;
    for (qrn_int32 r = 0; r < p.m; ++r) {
      const double a = direction * alpha[r];
      if (std::fabs(a) <= 1e-12) continue;
      const qrn_int32 k = f->basis[r];
      const double v = value(k);
      const double room = a > 0 ? v - lo(k) : up(k) - v;  // a > 0: the basic value decreases
      best = std::min(best, std::max(0.0, room) / std::fabs(a));
    }
    return best;
  }
};

double time_since(std::chrono::steady_clock::time_point t0) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Sensitivity of one bound of item k (mark QRN_MARK_LO or QRN_MARK_UP).
void bound_sensitivity(const Basic &b, qrn_int32 k, qrn_int32 mark, double &lp, double &rp, double &lr,
                       double &rr) {
  const double v = b.value(k), lo = b.lo(k), up = b.up(k);
  const qrn_int32 key = b.key(k);
  const bool lower = mark == QRN_MARK_LO;
  const double bound = lower ? lo : up;
  const bool fixed = key == QRN_SK_FIXED;
  const bool active = b.pos[k] < 0 && (fixed || (lower ? key == QRN_SK_AT_LOWER : key == QRN_SK_AT_UPPER));
  if (!std::isfinite(bound)) {
    lp = rp = 0.0;
    lr = rr = inf;
    return;
  }
  if (!active) {  // the bound does not bind: no price until it reaches the value
    lp = rp = 0.0;
    if (lower) lr = inf, rr = std::max(0.0, v - lo);
    else lr = std::max(0.0, up - v), rr = inf;
    return;
  }
  const double price = fixed ? b.sl(k) - b.su(k) : lower ? b.sl(k) : -b.su(k);
  lp = rp = price;
  std::vector<double> alpha(b.p.m);
  b.f->solve(false, b.column(k).data(), alpha.data());
  rr = b.ratio(alpha, 1.0);
  lr = b.ratio(alpha, -1.0);
  if (!fixed) {  // a bound cannot cross the other one
    if (lower) rr = std::min(rr, up - lo);
    else lr = std::min(lr, up - lo);
  }
}

// Sensitivity of objective coefficient c_j.
void cost_sensitivity(const Basic &b, qrn_int32 j, double &lp, double &rp, double &lr, double &rr) {
  const opt::Problem &p = b.p;
  const qrn_int32 k = p.m + j;
  lp = rp = b.s.xx[j];
  const double sense = p.maximize ? -1.0 : 1.0;
  // Sign that a nonbasic item's reduced cost must keep: +1 >= 0, -1 <= 0, 0 any, 2 must stay 0.
  auto sigma = [&](qrn_int32 item) -> double {
    switch (b.key(item)) {
      case QRN_SK_FIXED: return 0.0;
      case QRN_SK_AT_LOWER: return sense;
      case QRN_SK_AT_UPPER: return -sense;
      default: return 2.0;
    }
  };
  auto reduced = [&](qrn_int32 item) { return b.sl(item) - b.su(item); };
  if (b.pos[k] < 0) {
    const double sg = sigma(k), d = reduced(k);
    if (sg == 0.0) lr = rr = inf;
    else if (sg == 2.0) lr = rr = 0.0;
    else if (sg > 0) lr = std::max(0.0, sg * d), rr = inf;  // d must stay >= 0: c_j may fall by d
    else lr = inf, rr = std::max(0.0, sg * d);
    return;
  }
  // Basic: row r of B^-1 [-I A] gives how every nonbasic reduced cost moves.
  std::vector<double> e(p.m, 0.0), pi(p.m);
  e[b.pos[k]] = 1.0;
  b.f->solve(true, e.data(), pi.data());
  lr = rr = inf;
  for (qrn_int32 item = 0; item < p.m + p.n; ++item) {
    if (b.pos[item] >= 0) continue;
    double rho;
    if (item < p.m) {
      rho = -pi[item];
    } else {
      rho = 0.0;
      for (int q = p.start[item - p.m]; q < p.start[item - p.m + 1]; ++q) rho += p.value[q] * pi[p.index[q]];
    }
    if (std::fabs(rho) <= 1e-12) continue;
    const double sg = sigma(item), d = reduced(item);
    if (sg == 0.0) continue;
    if (sg == 2.0) {
      lr = rr = 0.0;
      continue;
    }
    // d(delta) = d - rho delta must keep sg * d(delta) >= 0.
    const double t = std::max(0.0, sg * d) / std::fabs(rho);
    if (sg * rho > 0) rr = std::min(rr, t);
    else lr = std::min(lr, t);
  }
}

void check_index(qrn_int32 v, qrn_int32 n, qrn_rescode code, const char *what, qrn_int32 k) {
  if (v < 0 || v >= n)
    fail(code, std::string(what) + "[" + std::to_string(k) + "] = " + std::to_string(v) + " is outside 0.." +
                   std::to_string(n - 1) + ".");
}

template <class T>
void out(T *a, qrn_int32 k, T v) {
  if (a != nullptr) a[k] = v;
}

}  // namespace

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_primalsensitivity(qrn_task_t task, qrn_int32 numi, const qrn_int32 *subi,
                                                   const qrn_int32 *marki, qrn_int32 numj, const qrn_int32 *subj,
                                                   const qrn_int32 *markj, qrn_real *leftpricei,
                                                   qrn_real *rightpricei, qrn_real *leftrangei,
                                                   qrn_real *rightrangei, qrn_real *leftpricej,
                                                   qrn_real *rightpricej, qrn_real *leftrangej,
                                                   qrn_real *rightrangej) {
  return api(task, "QRN_primalsensitivity", [&](Task &t) {
    const auto t0 = std::chrono::steady_clock::now();
    need_count(numi, "numi");
    need_count(numj, "numj");
    need_array(subi, numi, "subi");
    need_array(marki, numi, "marki");
    need_array(subj, numj, "subj");
    need_array(markj, numj, "markj");
    const opt::Problem p = opt::snapshot(task);
    for (qrn_int32 k = 0; k < numi; ++k) {
      check_index(subi[k], p.m, QRN_RES_ERR_INDEX_CON, "subi", k);
      if (marki[k] != QRN_MARK_LO && marki[k] != QRN_MARK_UP)
        fail(QRN_RES_ERR_MARK, "marki[" + std::to_string(k) + "] = " + std::to_string(marki[k]) + " is not a mark.");
    }
    for (qrn_int32 k = 0; k < numj; ++k) {
      check_index(subj[k], p.n, QRN_RES_ERR_INDEX_VAR, "subj", k);
      if (markj[k] != QRN_MARK_LO && markj[k] != QRN_MARK_UP)
        fail(QRN_RES_ERR_MARK, "markj[" + std::to_string(k) + "] = " + std::to_string(markj[k]) + " is not a mark.");
    }
    if (numi == 0 && numj == 0) return;
    Basic b(p, t.sol[QRN_SOL_BAS], factor_basis(p, basis_of(t, p, true)));
    for (qrn_int32 k = 0; k < numi; ++k) {
      double lp, rp, lr, rr;
      bound_sensitivity(b, subi[k], marki[k], lp, rp, lr, rr);
      out(leftpricei, k, lp), out(rightpricei, k, rp), out(leftrangei, k, lr), out(rightrangei, k, rr);
    }
    for (qrn_int32 k = 0; k < numj; ++k) {
      double lp, rp, lr, rr;
      bound_sensitivity(b, p.m + subj[k], markj[k], lp, rp, lr, rr);
      out(leftpricej, k, lp), out(rightpricej, k, rp), out(leftrangej, k, lr), out(rightrangej, k, rr);
    }
    iinf(t, QRN_IINF_SENSITIVITY_ITEMS) = numi + numj;
    dinf(t, QRN_DINF_TIME_SENSITIVITY) = time_since(t0);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_dualsensitivity(qrn_task_t task, qrn_int32 numj, const qrn_int32 *subj,
                                                 qrn_real *leftpricej, qrn_real *rightpricej, qrn_real *leftrangej,
                                                 qrn_real *rightrangej) {
  return api(task, "QRN_dualsensitivity", [&](Task &t) {
    const auto t0 = std::chrono::steady_clock::now();
    need_count(numj, "numj");
    need_array(subj, numj, "subj");
    const opt::Problem p = opt::snapshot(task);
    for (qrn_int32 k = 0; k < numj; ++k) check_index(subj[k], p.n, QRN_RES_ERR_INDEX_VAR, "subj", k);
    if (numj == 0) return;
    if (p.quadratic()) fail(QRN_RES_ERR_NO_BASIS, "Sensitivity analysis needs a linear objective.");
    Basic b(p, t.sol[QRN_SOL_BAS], factor_basis(p, basis_of(t, p, true)));
    for (qrn_int32 k = 0; k < numj; ++k) {
      double lp, rp, lr, rr;
      cost_sensitivity(b, subj[k], lp, rp, lr, rr);
      out(leftpricej, k, lp), out(rightpricej, k, rp), out(leftrangej, k, lr), out(rightrangej, k, rr);
    }
    iinf(t, QRN_IINF_SENSITIVITY_ITEMS) = numj;
    dinf(t, QRN_DINF_TIME_SENSITIVITY) = time_since(t0);
  });
}

}  // extern "C"
