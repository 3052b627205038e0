// Solution values that belong to the conic data: doty per stacked ACC row,
// activities of ACCs, violations of ACCs and DJCs, the whole solution with
// doty, and the solution summary with the conic measures.
#include "conic.hpp"
#include "semidefinite.hpp"
#include "solutions.hpp"
#include "solutions.hpp"

#include <algorithm>

namespace qrn {

bool has_conic_data(const Task &t) {
  return !t.conic.accs.empty() || !t.conic.djcs.empty() || !t.sdp.dim.empty();
}

// What a defined solution and a valid identifier are is the solution store's
// rule (solutions.hpp); the conic members follow it.
const Solution &need_defined(const Task &t, qrn_int32 whichsol) { return readable(t, whichsol); }

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
  check_which(whichsol);
  Solution &s = t.sol[whichsol];
  if (!s.defined) {
    s = Solution{};
    s.defined = true;
  }
  fit(s, Counts{t.numcon, t.numvar, static_cast<qrn_int32>(t.cones.size())});
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

// A dual infeasibility certificate (a ray) is measured on the homogeneous
// problem: its activity leaves out g and b.
double acc_pviol(const Task &t, const Solution &s, qrn_int64 k) {
  std::vector<double> x(t.conic.accs[k].afe.size());
  acc_activity(t, s, k, x.data());
  if (s.solsta == QRN_SOL_STA_DUAL_INFEAS_CER) {
    const Acc &acc = t.conic.accs[k];
    for (size_t i = 0; i < x.size(); ++i) x[i] -= t.conic.afe.g[acc.afe[i]] - acc.b[i];
  }
  return domain_violation(t.conic.domains[t.conic.accs[k].dom], x.data(), false);
}

// doty lies in the dual cone when minimizing, in its negative when maximizing
// (the signs of slc, snx and the other duals).
double acc_dviol(const Task &t, const Solution &s, qrn_int64 k) {
  std::vector<double> y(s.doty.begin() + t.conic.accstart[k], s.doty.begin() + t.conic.accstart[k + 1]);
  if (t.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE)
    for (double &v : y) v = -v;
  return domain_violation(t.conic.domains[t.conic.accs[k].dom], y.data(), true);
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
    // Everything but the ACCs and DJCs is the summary of the solutions module
    // (objectives with the conic and semidefinite terms, dual violations in
    // the sense's signs).
    const SolutionMeasures r = solution_measures(t, whichsol);
    Solution &s = conic_solution(t, whichsol);
    double vacc = 0.0, dacc = 0.0, vdjc = 0.0;
    for (size_t k = 0; k < t.conic.accs.size(); ++k) {
      vacc = std::max(vacc, acc_pviol(t, s, k));
      dacc = std::max(dacc, acc_dviol(t, s, k));
    }
    for (size_t k = 0; k < t.conic.djcs.size(); ++k) vdjc = std::max(vdjc, djc_pviol(t, s, k));
    put(pobj, r.pobj), put(pviolcon, r.pviolcon), put(pviolvar, r.pviolvar), put(pviolbarvar, r.pviolbarvar);
    put(pviolcone, r.pviolcone), put(pviolacc, vacc), put(pvioldjc, vdjc), put(pviolitg, r.pviolitg);
    put(dobj, r.dobj), put(dviolcon, r.dviolcon), put(dviolvar, r.dviolvar), put(dviolbarvar, r.dviolbarvar);
    put(dviolcone, r.dviolcone), put(dviolacc, dacc);
  });
}

}  // extern "C"
