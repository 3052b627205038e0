// Solution values that belong to the conic data: doty per stacked ACC row,
// activities of ACCs, violations of ACCs and DJCs, the whole solution with
// doty, and the solution summary with the conic measures.
#include "conic.hpp"
#include "semidefinite.hpp"

#include <algorithm>

namespace qrn {

bool has_conic_data(const Task &t) {
  return !t.conic.accs.empty() || !t.conic.djcs.empty() || !t.sdp.dim.empty();
}

const Solution &need_defined(const Task &t, qrn_int32 whichsol) {
  if (whichsol < 0 || whichsol >= QRN_SOL_COUNT)
    fail(QRN_RES_ERR_SOL_WHICH, "Solution " + std::to_string(whichsol) + " is not one of 0.." +
                                   std::to_string(QRN_SOL_COUNT - 1) + " (QRN_SOL_*).");
  const Solution &s = t.sol[whichsol];
  if (!s.defined) fail(QRN_RES_ERR_SOL_UNDEFINED, "Solution " + std::to_string(whichsol) + " is not defined.");
  return s;
}

namespace {
// Defined solutions may come from code that does not know the conic data:
// size what is missing, so that every reader stays inside the vectors.
void align(const Task &t, Solution &s) {
  s.doty.resize(t.conic.accstart.back(), 0.0);
  s.xx.resize(t.numvar, 0.0);
  align_bar_solution(t, s);
}
}  // namespace

Solution &conic_solution(Task &t, qrn_int32 whichsol) {
  need_defined(t, whichsol);
  Solution &s = t.sol[whichsol];
  align(t, s);
  return s;
}

Solution &define_solution(Task &t, qrn_int32 whichsol) {
  if (whichsol < 0 || whichsol >= QRN_SOL_COUNT) need_defined(t, whichsol);
  Solution &s = t.sol[whichsol];
  if (!s.defined) {
    s = Solution{};
    s.defined = true;
    s.skc.assign(t.numcon, QRN_SK_UNKNOWN);
    s.skx.assign(t.numvar, QRN_SK_UNKNOWN);
    s.skn.assign(t.cones.size(), QRN_SK_UNKNOWN);
    for (auto *v : {&s.xc, &s.y, &s.slc, &s.suc}) v->assign(t.numcon, 0.0);
    for (auto *v : {&s.xx, &s.slx, &s.sux, &s.snx}) v->assign(t.numvar, 0.0);
  }
  align(t, s);
  return s;
}

void afe_values(const Task &t, const Solution &s, const qrn_int64 *afe, qrn_int64 n, double *out) {
  const AfeStore &f = t.conic.afe;
  for (qrn_int64 k = 0; k < n; ++k) {
    qrn_int64 r = afe[k];
    double v = f.g[r];
    for (const FEntry &e : f.rows[r]) v += e.val * s.xx[e.var];
    auto it = f.barf.find(r);
    if (it != f.barf.end())
      for (const BarFEntry &e : it->second) v += inner(t.sdp, e.terms, s.barx[e.barvar]);
    out[k] = v;
  }
}

void acc_activity(const Task &t, const Solution &s, qrn_int64 k, double *out) {
  const Acc &acc = t.conic.accs[k];
  auto n = static_cast<qrn_int64>(acc.afe.size());
  afe_values(t, s, acc.afe.data(), n, out);
  for (qrn_int64 i = 0; i < n; ++i) out[i] -= acc.b[i];
}

namespace {

double acc_pviol(const Task &t, const Solution &s, qrn_int64 k) {
  std::vector<double> x(t.conic.accs[k].afe.size());
  acc_activity(t, s, k, x.data());
  return domain_violation(t.conic.domains[t.conic.accs[k].dom], x.data(), false);
}

double acc_dviol(const Task &t, const Solution &s, qrn_int64 k) {
  const double *y = s.doty.data() + t.conic.accstart[k];
  return domain_violation(t.conic.domains[t.conic.accs[k].dom], y, true);
}

double djc_pviol(const Task &t, const Solution &s, qrn_int64 k) {
  const Djc &d = t.conic.djcs[k];
  std::vector<double> x(d.afe.size());
  afe_values(t, s, d.afe.data(), static_cast<qrn_int64>(d.afe.size()), x.data());
  for (size_t i = 0; i < x.size(); ++i) x[i] -= d.b[i];
  double best = HUGE_VAL;
  size_t dom = 0, at = 0;
  for (qrn_int64 size : d.termsize) {
    double worst = 0.0;
    for (qrn_int64 m = 0; m < size; ++m, ++dom) {
      const Domain &domain = t.conic.domains[d.dom[dom]];
      worst = std::max(worst, domain_violation(domain, x.data() + at, false));
      at += domain.n;
    }
    best = std::min(best, worst);
  }
  return best;
}

template <class Check, class Viol>
void violations(Task &t, qrn_int32 whichsol, qrn_int64 num, const qrn_int64 *list, double *viol, Check &&check,
                Viol &&measure) {
  need_count(num, "The number of items");
  need_array(list, num, "the index list");
  for (qrn_int64 k = 0; k < num; ++k) check(list[k]);
  const Solution &s = conic_solution(t, whichsol);
  if (viol == nullptr) return;
  for (qrn_int64 k = 0; k < num; ++k) viol[k] = measure(s, list[k]);
}

// Interval [bl, bu] distance; keys leave unbounded sides at infinity.
double outside_bounds(double x, const Bound &b) { return std::max({0.0, b.bl - x, x - b.bu}); }

}  // namespace

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_getaccdoty(qrn_task_t task, qrn_int32 whichsol, qrn_int64 accidx, qrn_real *doty) {
  return api(task, "QRN_getaccdoty", [&](Task &t) {
    check_acc(t, accidx);
    const Solution &s = conic_solution(t, whichsol);
    if (doty != nullptr)
      std::copy(s.doty.begin() + t.conic.accstart[accidx], s.doty.begin() + t.conic.accstart[accidx + 1], doty);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccdotys(qrn_task_t task, qrn_int32 whichsol, qrn_real *doty) {
  return api(task, "QRN_getaccdotys", [&](Task &t) {
    const Solution &s = conic_solution(t, whichsol);
    if (doty != nullptr) std::copy(s.doty.begin(), s.doty.end(), doty);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putaccdoty(qrn_task_t task, qrn_int32 whichsol, qrn_int64 accidx,
                                            const qrn_real *doty) {
  return api(task, "QRN_putaccdoty", [&](Task &t) {
    check_acc(t, accidx);
    qrn_int64 first = t.conic.accstart[accidx], n = t.conic.accstart[accidx + 1] - first;
    need_array(doty, n, "doty");
    for (qrn_int64 k = 0; k < n; ++k) need_finite(doty[k], "doty", k);
    Solution &s = define_solution(t, whichsol);
    std::copy(doty, doty + n, s.doty.begin() + first);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_evaluateacc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 accidx,
                                             qrn_real *activity) {
  return api(task, "QRN_evaluateacc", [&](Task &t) {
    check_acc(t, accidx);
    const Solution &s = conic_solution(t, whichsol);
    if (activity != nullptr) acc_activity(t, s, accidx, activity);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_evaluateaccs(qrn_task_t task, qrn_int32 whichsol, qrn_real *activity) {
  return api(task, "QRN_evaluateaccs", [&](Task &t) {
    const Solution &s = conic_solution(t, whichsol);
    if (activity == nullptr) return;
    for (size_t k = 0; k < t.conic.accs.size(); ++k) acc_activity(t, s, k, activity + t.conic.accstart[k]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getpviolacc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 numaccidx,
                                             const qrn_int64 *accidxlist, qrn_real *viol) {
  return api(task, "QRN_getpviolacc", [&](Task &t) {
    violations(t, whichsol, numaccidx, accidxlist, viol, [&](qrn_int64 k) { check_acc(t, k); },
               [&](const Solution &s, qrn_int64 k) { return acc_pviol(t, s, k); });
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdviolacc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 numaccidx,
                                             const qrn_int64 *accidxlist, qrn_real *viol) {
  return api(task, "QRN_getdviolacc", [&](Task &t) {
    violations(t, whichsol, numaccidx, accidxlist, viol, [&](qrn_int64 k) { check_acc(t, k); },
               [&](const Solution &s, qrn_int64 k) { return acc_dviol(t, s, k); });
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getpvioldjc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 numdjcidx,
                                             const qrn_int64 *djcidxlist, qrn_real *viol) {
  return api(task, "QRN_getpvioldjc", [&](Task &t) {
    violations(t, whichsol, numdjcidx, djcidxlist, viol, [&](qrn_int64 k) { check_djc(t, k); },
               [&](const Solution &s, qrn_int64 k) { return djc_pviol(t, s, k); });
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getsolutionnew(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *prosta,
                                                qrn_int32 *solsta, qrn_int32 *skc, qrn_int32 *skx, qrn_int32 *skn,
                                                qrn_real *xc, qrn_real *xx, qrn_real *y, qrn_real *slc, qrn_real *suc,
                                                qrn_real *slx, qrn_real *sux, qrn_real *snx, qrn_real *doty) {
  return api(task, "QRN_getsolutionnew", [&](Task &t) {
    Solution &s = conic_solution(t, whichsol);
    put(prosta, s.prosta);
    put(solsta, s.solsta);
    auto out = [](const auto &v, size_t n, auto *dst) {
      if (dst == nullptr) return;
      size_t m = std::min(n, v.size());
      std::copy(v.begin(), v.begin() + m, dst);
      std::fill(dst + m, dst + n, typename std::decay_t<decltype(v)>::value_type{});
    };
    size_t nc = t.numcon, nv = t.numvar;
    out(s.skc, nc, skc), out(s.skx, nv, skx), out(s.skn, t.cones.size(), skn);
    out(s.xc, nc, xc), out(s.xx, nv, xx), out(s.y, nc, y), out(s.slc, nc, slc), out(s.suc, nc, suc);
    out(s.slx, nv, slx), out(s.sux, nv, sux), out(s.snx, nv, snx), out(s.doty, s.doty.size(), doty);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putsolutionnew(qrn_task_t task, qrn_int32 whichsol, const qrn_int32 *skc,
                                                const qrn_int32 *skx, const qrn_int32 *skn, const qrn_real *xc,
                                                const qrn_real *xx, const qrn_real *y, const qrn_real *slc,
                                                const qrn_real *suc, const qrn_real *slx, const qrn_real *sux,
                                                const qrn_real *snx, const qrn_real *doty) {
  return api(task, "QRN_putsolutionnew", [&](Task &t) {
    if (whichsol < 0 || whichsol >= QRN_SOL_COUNT) need_defined(t, whichsol);
    size_t nc = t.numcon, nv = t.numvar, nk = t.cones.size(), ny = t.conic.accstart.back();
    auto keys = [](const qrn_int32 *k, size_t n, const char *what) {
      if (k != nullptr)
        for (size_t i = 0; i < n; ++i)
          if (k[i] < QRN_SK_UNKNOWN || k[i] > QRN_SK_INFEASIBLE)
            fail(QRN_RES_ERR_ARGUMENT, std::string("Entry ") + std::to_string(i) + " of " + what + " (" +
                                           std::to_string(k[i]) + ") is not a QRN_SK_* value.");
    };
    keys(skc, nc, "skc"), keys(skx, nv, "skx"), keys(skn, nk, "skn");
    auto finite = [](const double *v, size_t n, const char *what) {
      if (v != nullptr)
        for (size_t i = 0; i < n; ++i) need_finite(v[i], what, static_cast<qrn_int64>(i));
    };
    finite(xc, nc, "xc"), finite(xx, nv, "xx"), finite(y, nc, "y"), finite(slc, nc, "slc"), finite(suc, nc, "suc");
    finite(slx, nv, "slx"), finite(sux, nv, "sux"), finite(snx, nv, "snx"), finite(doty, ny, "doty");
    Solution &s = define_solution(t, whichsol);
    auto in = [](auto &v, size_t n, const auto *src) {
      if (src == nullptr) return;
      v.resize(n);
      std::copy(src, src + n, v.begin());
    };
    in(s.skc, nc, skc), in(s.skx, nv, skx), in(s.skn, nk, skn), in(s.xc, nc, xc), in(s.xx, nv, xx);
    in(s.y, nc, y), in(s.slc, nc, slc), in(s.suc, nc, suc), in(s.slx, nv, slx), in(s.sux, nv, sux);
    in(s.snx, nv, snx), in(s.doty, ny, doty);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getsolutioninfonew(qrn_task_t task, qrn_int32 whichsol, qrn_real *pobj,
                                                    qrn_real *pviolcon, qrn_real *pviolvar, qrn_real *pviolbarvar,
                                                    qrn_real *pviolcone, qrn_real *pviolacc, qrn_real *pvioldjc,
                                                    qrn_real *pviolitg, qrn_real *dobj, qrn_real *dviolcon,
                                                    qrn_real *dviolvar, qrn_real *dviolbarvar, qrn_real *dviolcone,
                                                    qrn_real *dviolacc) {
  return api(task, "QRN_getsolutioninfonew", [&](Task &t) {
    Solution &s = conic_solution(t, whichsol);
    auto vec = [](std::vector<double> &v, size_t n) { v.resize(n, 0.0); };
    vec(s.xc, t.numcon), vec(s.y, t.numcon), vec(s.slc, t.numcon), vec(s.suc, t.numcon);
    vec(s.slx, t.numvar), vec(s.sux, t.numvar), vec(s.snx, t.numvar);
    qrn_task_t self = static_cast<qrn_task_s *>(&t);
    const qrn_int32 m = t.numcon, n = t.numvar;

    // Linear and quadratic data through the interface, so that this summary
    // does not depend on how that data is stored.
    std::vector<double> c(n), qx(n, 0.0);
    double cfix = 0.0;
    QRN_getc(self, c.data());
    QRN_getcfix(self, &cfix);
    qrn_int64 nq = 0;
    QRN_getnumqobjnz64(self, &nq);
    std::vector<qrn_int32> qi(nq), qj(nq);
    std::vector<double> qv(nq);
    QRN_getqobj64(self, nq, &nq, qi.data(), qj.data(), qv.data());
    for (qrn_int64 k = 0; k < nq; ++k) {
      qx[qi[k]] += qv[k] * s.xx[qj[k]];
      if (qi[k] != qj[k]) qx[qj[k]] += qv[k] * s.xx[qi[k]];
    }
    double primal = cfix + barc_objective(t, s), dual = cfix;
    // Bound multipliers are >= 0 when minimizing and <= 0 when maximizing.
    const double sg = t.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? -1.0 : 1.0;
    for (qrn_int32 j = 0; j < n; ++j) primal += c[j] * s.xx[j] + 0.5 * qx[j] * s.xx[j];

    std::vector<double> aty(n, 0.0);  // A'y
    double vcon = 0.0, dcon = 0.0;
    std::vector<qrn_int32> sub(n);
    std::vector<double> val(n);
    for (qrn_int32 i = 0; i < m; ++i) {
      qrn_int32 nz = 0;
      QRN_getarow(self, i, &nz, sub.data(), val.data());
      double ax = 0.0;
      for (qrn_int32 k = 0; k < nz; ++k) {
        ax += val[k] * s.xx[sub[k]];
        aty[sub[k]] += val[k] * s.y[i];
      }
      auto lo = t.sdp.bara.lower_bound(static_cast<qrn_int64>(i) << 31);
      for (auto it = lo; it != t.sdp.bara.end() && (it->first >> 31) == i; ++it)
        ax += inner(t.sdp, it->second, s.barx[it->first & INT32_MAX]);
      Bound b;
      QRN_getconbound(self, i, &b.bk, &b.bl, &b.bu);
      vcon = std::max({vcon, outside_bounds(s.xc[i], b), std::fabs(s.xc[i] - ax)});
      dcon = std::max({dcon, std::fabs(s.y[i] - s.slc[i] + s.suc[i]), -sg * s.slc[i], -sg * s.suc[i]});
      if (std::isfinite(b.bl)) dual += s.slc[i] * b.bl;
      if (std::isfinite(b.bu)) dual -= s.suc[i] * b.bu;
    }
    // F'doty, and the dual objective's share of the ACCs: -doty'(g - b).
    std::vector<double> fty(n, 0.0);
    for (size_t k = 0; k < t.conic.accs.size(); ++k) {
      const Acc &acc = t.conic.accs[k];
      for (size_t i = 0; i < acc.afe.size(); ++i) {
        double yk = s.doty[t.conic.accstart[k] + i];
        for (const FEntry &e : t.conic.afe.rows[acc.afe[i]]) fty[e.var] += e.val * yk;
        dual -= yk * (t.conic.afe.g[acc.afe[i]] - acc.b[i]);
      }
    }
    double vvar = 0.0, dvar = 0.0, vitg = 0.0;
    for (qrn_int32 j = 0; j < n; ++j) {
      Bound b;
      qrn_int32 type = QRN_VAR_TYPE_CONTINUOUS;
      QRN_getvarbound(self, j, &b.bk, &b.bl, &b.bu);
      QRN_getvartype(self, j, &type);
      vvar = std::max(vvar, outside_bounds(s.xx[j], b));
      if (type == QRN_VAR_TYPE_INTEGER) vitg = std::max(vitg, std::fabs(s.xx[j] - std::round(s.xx[j])));
      double reduced = c[j] + qx[j] - aty[j] - fty[j] - s.slx[j] + s.sux[j] - s.snx[j];
      dvar = std::max({dvar, std::fabs(reduced), -sg * s.slx[j], -sg * s.sux[j]});
      if (std::isfinite(b.bl)) dual += s.slx[j] * b.bl;
      if (std::isfinite(b.bu)) dual -= s.sux[j] * b.bu;
      dual -= 0.5 * qx[j] * s.xx[j];
    }
    double vbar = 0.0, dbar = 0.0;
    for (size_t j = 0; j < t.sdp.dim.size(); ++j) {
      vbar = std::max(vbar, -eigenvalues(s.barx[j], t.sdp.dim[j]).front());
      dbar = std::max(dbar, -eigenvalues(s.bars[j], t.sdp.dim[j]).front());
    }
    double vcone = 0.0, dcone = 0.0;
    for (const Cone &cone : t.cones) {
      Domain d{cone.type == QRN_CONE_RQUAD ? QRN_DOMAIN_RQUADRATIC_CONE : QRN_DOMAIN_QUADRATIC_CONE,
               static_cast<qrn_int64>(cone.members.size()), {}};
      std::vector<double> x, z;
      for (qrn_int32 j : cone.members) x.push_back(s.xx[j]), z.push_back(sg * s.snx[j]);
      vcone = std::max(vcone, domain_violation(d, x.data(), false));
      dcone = std::max(dcone, domain_violation(d, z.data(), true));
    }
    double vacc = 0.0, dacc = 0.0, vdjc = 0.0;
    for (size_t k = 0; k < t.conic.accs.size(); ++k) {
      vacc = std::max(vacc, acc_pviol(t, s, k));
      dacc = std::max(dacc, acc_dviol(t, s, k));
    }
    for (size_t k = 0; k < t.conic.djcs.size(); ++k) vdjc = std::max(vdjc, djc_pviol(t, s, k));
    put(pobj, primal), put(pviolcon, vcon), put(pviolvar, vvar), put(pviolbarvar, vbar), put(pviolcone, vcone);
    put(pviolacc, vacc), put(pvioldjc, vdjc), put(pviolitg, vitg), put(dobj, dual), put(dviolcon, dcon);
    put(dviolvar, dvar), put(dviolbarvar, dbar), put(dviolcone, dcone), put(dviolacc, dacc);
  });
}

}  // extern "C"
