// Whole solutions, single entries, statuses, objective values, violations,
// norms, the solution summary and its analysis.
#include "errors.hpp"
#include "info.hpp"
#include "solutions.hpp"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace qrn {
namespace {

template <class T>
void copy_out(const std::vector<T> &v, qrn_int64 n, T *out, T fill) {
  if (out == nullptr) return;
  qrn_int64 stored = std::min<qrn_int64>(n, static_cast<qrn_int64>(v.size()));
  std::copy(v.begin(), v.begin() + stored, out);
  std::fill(out + stored, out + n, fill);
}

template <class T>
void copy_in(std::vector<T> &v, qrn_int64 n, const T *in) {
  if (in != nullptr) std::copy(in, in + n, v.begin());
}

double norm(const std::vector<double> &v) {
  double m = 0.0;
  for (double x : v) m = std::max(m, std::fabs(x));
  return m;
}

// Index lists of the violation functions.
using Check = void (*)(const Task &, qrn_int64, const char *);

void check_list(const Task &t, qrn_int32 num, const qrn_int32 *sub, Check check, const char *what) {
  need_count(num, "The number of indexes");
  need_array(sub, num, "sub");
  for (qrn_int32 k = 0; k < num; ++k) check(t, sub[k], what);
}

// The largest value of f over [0, n) and where it occurs (-1 when n is 0).
template <class F>
std::pair<double, qrn_int32> largest(qrn_int32 n, F &&f) {
  std::pair<double, qrn_int32> best{0.0, -1};
  for (qrn_int32 k = 0; k < n; ++k) {
    double v = f(k);
    if (best.second < 0 || v > best.first) best = {v, k};
  }
  return best;
}

// Every entry of the summary, with the item at which each violation is largest.
struct Summary {
  double pobj = 0, dobj = 0;
  std::pair<double, qrn_int32> pcon, pvar, pcone, pitg, dcon, dvar, dcone, pbar, dbar;
  double nrmxc = 0, nrmxx = 0, nrmy = 0, nrmslc = 0, nrmsuc = 0, nrmslx = 0, nrmsux = 0, nrmsnx = 0;
};

Summary summarize(Task &t, qrn_int32 whichsol) {
  const Solution &stored = readable(t, whichsol);
  Problem p = snapshot(t, P_ALL);
  Measure m(p, stored);
  Summary r;
  r.pobj = m.primal_obj();
  r.dobj = m.dual_obj();
  r.pcon = largest(p.n.numcon, [&](qrn_int32 i) { return m.pviolcon(i); });
  r.pvar = largest(p.n.numvar, [&](qrn_int32 j) { return m.pviolvar(j); });
  r.pcone = largest(p.n.numcone, [&](qrn_int32 k) { return m.pviolcone(k); });
  r.pitg = largest(p.n.numvar, [&](qrn_int32 j) { return m.pviolitg(j); });
  r.dcon = largest(p.n.numcon, [&](qrn_int32 i) { return m.dviolcon(i); });
  r.dvar = largest(p.n.numvar, [&](qrn_int32 j) { return m.dviolvar(j); });
  r.dcone = largest(p.n.numcone, [&](qrn_int32 k) { return m.dviolcone(k); });
  const auto nbar = static_cast<qrn_int32>(p.bardim.size());
  r.pbar = largest(nbar, [&](qrn_int32 j) { return m.pviolbar(j); });
  r.dbar = largest(nbar, [&](qrn_int32 j) { return m.dviolbar(j); });
  const Solution &s = m.s;
  r.nrmxc = norm(s.xc);
  r.nrmxx = norm(s.xx);
  r.nrmy = norm(s.y);
  r.nrmslc = norm(s.slc);
  r.nrmsuc = norm(s.suc);
  r.nrmslx = norm(s.slx);
  r.nrmsux = norm(s.sux);
  r.nrmsnx = norm(s.snx);
  return r;
}

// The violations of the listed items, computed on one snapshot.
template <class F>
qrn_rescode violations(qrn_task_t task, const char *fn, qrn_int32 whichsol, qrn_int32 num, const qrn_int32 *sub,
                       qrn_real *viol, Check check, const char *what, unsigned parts, F &&f) {
  return api(task, fn, [&](Task &t) {
    const Solution &stored = readable(t, whichsol);
    check_list(t, num, sub, check, what);
    if (viol == nullptr || num == 0) return;
    Problem p = snapshot(t, parts);
    Measure m(p, stored);
    for (qrn_int32 k = 0; k < num; ++k) viol[k] = f(m, sub[k]);
  });
}

void con_index(const Task &t, qrn_int64 i, const char *what) { check_con(t, i, what); }
void var_index(const Task &t, qrn_int64 j, const char *what) { check_var(t, j, what); }
void cone_index(const Task &t, qrn_int64 k, const char *what) { check_cone(t, k, what); }

const char *prosta_name(qrn_int32 v) {
  static const char *names[] = {"UNKNOWN",    "PRIM_AND_DUAL_FEAS",        "PRIM_FEAS",
                                "DUAL_FEAS",  "PRIM_INFEAS",               "DUAL_INFEAS",
                                "PRIM_AND_DUAL_INFEAS", "ILL_POSED", "PRIM_INFEAS_OR_UNBOUNDED"};
  return v >= 0 && v < 9 ? names[v] : "?";
}

const char *solsta_name(qrn_int32 v) {
  static const char *names[] = {"UNKNOWN",         "OPTIMAL",         "PRIM_FEAS",
                                "DUAL_FEAS",       "PRIM_AND_DUAL_FEAS", "PRIM_INFEAS_CER",
                                "DUAL_INFEAS_CER", "PRIM_ILLPOSED_CER", "DUAL_ILLPOSED_CER",
                                "INTEGER_OPTIMAL"};
  return v >= 0 && v < 10 ? names[v] : "?";
}

std::string fmt(const char *format, ...) {
  char buf[256];
  va_list ap;
  va_start(ap, format);
  std::vsnprintf(buf, sizeof buf, format, ap);
  va_end(ap);
  return buf;
}

std::string where(const char *kind, const std::pair<double, qrn_int32> &v) {
  if (v.second < 0) return fmt("  %-28s %12s\n", kind, "-");
  return fmt("  %-28s %12.4e  at %d\n", kind, v.first, v.second);
}

}  // namespace

SolutionMeasures solution_measures(Task &t, qrn_int32 whichsol) {
  Summary r = summarize(t, whichsol);
  return {r.pobj,        r.pcon.first, r.pvar.first, r.pbar.first, r.pcone.first, r.pitg.first,
          r.dobj,        r.dcon.first, r.dvar.first, r.dbar.first, r.dcone.first};
}

}  // namespace qrn

using namespace qrn;

extern "C" {

// ---- whole solutions and single entries ---------------------------------------------

QRN_API qrn_rescode QRN_CALL QRN_getsolution(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *prosta,
                                             qrn_int32 *solsta, qrn_int32 *skc, qrn_int32 *skx, qrn_int32 *skn,
                                             qrn_real *xc, qrn_real *xx, qrn_real *y, qrn_real *slc, qrn_real *suc,
                                             qrn_real *slx, qrn_real *sux, qrn_real *snx) {
  return api(task, "QRN_getsolution", [&](Task &t) {
    const Solution &s = readable(t, whichsol);
    Counts n = counts(t);
    put(prosta, s.prosta);
    put(solsta, s.solsta);
    const qrn_int32 unknown = QRN_SK_UNKNOWN;
    copy_out(s.skc, n.numcon, skc, unknown);
    copy_out(s.skx, n.numvar, skx, unknown);
    copy_out(s.skn, n.numcone, skn, unknown);
    for (auto [v, out] : {std::pair{&s.xc, xc}, {&s.y, y}, {&s.slc, slc}, {&s.suc, suc}})
      copy_out(*v, n.numcon, out, 0.0);
    for (auto [v, out] : {std::pair{&s.xx, xx}, {&s.slx, slx}, {&s.sux, sux}, {&s.snx, snx}})
      copy_out(*v, n.numvar, out, 0.0);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putsolution(qrn_task_t task, qrn_int32 whichsol, const qrn_int32 *skc,
                                             const qrn_int32 *skx, const qrn_int32 *skn, const qrn_real *xc,
                                             const qrn_real *xx, const qrn_real *y, const qrn_real *slc,
                                             const qrn_real *suc, const qrn_real *slx, const qrn_real *sux,
                                             const qrn_real *snx) {
  return api(task, "QRN_putsolution", [&](Task &t) {
    check_which(whichsol);
    Counts n = counts(t);
    check_keys(skc, n.numcon, "skc");
    check_keys(skx, n.numvar, "skx");
    check_keys(skn, n.numcone, "skn");
    for (auto [v, what] : {std::pair{xc, "xc"}, {y, "y"}, {slc, "slc"}, {suc, "suc"}}) check_values(v, n.numcon, what);
    for (auto [v, what] : {std::pair{xx, "xx"}, {slx, "slx"}, {sux, "sux"}, {snx, "snx"}})
      check_values(v, n.numvar, what);
    Solution &s = writable(t, whichsol, n);
    copy_in(s.skc, n.numcon, skc);
    copy_in(s.skx, n.numvar, skx);
    copy_in(s.skn, n.numcone, skn);
    for (auto [v, in] : {std::pair{&s.xc, xc}, {&s.y, y}, {&s.slc, slc}, {&s.suc, suc}}) copy_in(*v, n.numcon, in);
    for (auto [v, in] : {std::pair{&s.xx, xx}, {&s.slx, slx}, {&s.sux, sux}, {&s.snx, snx}})
      copy_in(*v, n.numvar, in);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putconsolutioni(qrn_task_t task, qrn_int32 i, qrn_int32 whichsol, qrn_int32 sk,
                                                 qrn_real x, qrn_real sl, qrn_real su) {
  return api(task, "QRN_putconsolutioni", [&](Task &t) {
    check_which(whichsol);
    Counts n = counts(t);
    check_con(t, i);
    check_keys(&sk, 1, "sk");
    const double v[] = {x, sl, su};
    check_values(v, 3, "(x, sl, su)");
    Solution &s = writable(t, whichsol, n);
    s.skc[i] = sk;
    s.xc[i] = x;
    s.slc[i] = sl;
    s.suc[i] = su;
    s.y[i] = sl - su;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putvarsolutionj(qrn_task_t task, qrn_int32 j, qrn_int32 whichsol, qrn_int32 sk,
                                                 qrn_real x, qrn_real sl, qrn_real su, qrn_real sn) {
  return api(task, "QRN_putvarsolutionj", [&](Task &t) {
    check_which(whichsol);
    Counts n = counts(t);
    check_var(t, j);
    check_keys(&sk, 1, "sk");
    const double v[] = {x, sl, su, sn};
    check_values(v, 4, "(x, sl, su, sn)");
    Solution &s = writable(t, whichsol, n);
    s.skx[j] = sk;
    s.xx[j] = x;
    s.slx[j] = sl;
    s.sux[j] = su;
    s.snx[j] = sn;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putsolutionyi(qrn_task_t task, qrn_int32 i, qrn_int32 whichsol, qrn_real y) {
  return api(task, "QRN_putsolutionyi", [&](Task &t) {
    check_which(whichsol);
    Counts n = counts(t);
    check_con(t, i);
    check_values(&y, 1, "y");
    writable(t, whichsol, n).y[i] = y;
  });
}

// ---- status and objective values --------------------------------------------------------

QRN_API qrn_rescode QRN_CALL QRN_getprosta(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *prosta) {
  return api(task, "QRN_getprosta", [&](Task &t) { put(prosta, readable(t, whichsol).prosta); });
}

QRN_API qrn_rescode QRN_CALL QRN_getsolsta(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *solsta) {
  return api(task, "QRN_getsolsta", [&](Task &t) { put(solsta, readable(t, whichsol).solsta); });
}

QRN_API qrn_rescode QRN_CALL QRN_getprimalobj(qrn_task_t task, qrn_int32 whichsol, qrn_real *primalobj) {
  return api(task, "QRN_getprimalobj", [&](Task &t) {
    const Solution &s = readable(t, whichsol);
    Problem p = snapshot(t, P_OBJ);
    put(primalobj, Measure(p, s).primal_obj());
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdualobj(qrn_task_t task, qrn_int32 whichsol, qrn_real *dualobj) {
  return api(task, "QRN_getdualobj", [&](Task &t) {
    const Solution &s = readable(t, whichsol);
    Problem p = snapshot(t, P_OBJ | P_BOUNDS | P_MATRIX);
    put(dualobj, Measure(p, s).dual_obj());
  });
}

QRN_API qrn_rescode QRN_CALL QRN_solutiondef(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *isdef) {
  return api(task, "QRN_solutiondef", [&](Task &t) {
    check_which(whichsol);
    put(isdef, t.sol[whichsol].defined ? 1 : 0);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_deletesolution(qrn_task_t task, qrn_int32 whichsol) {
  return api(task, "QRN_deletesolution", [&](Task &t) {
    check_which(whichsol);
    t.sol[whichsol] = Solution{};
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getreducedcosts(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                                 qrn_int32 last, qrn_real *redcosts) {
  return api(task, "QRN_getreducedcosts", [&](Task &t) {
    const Solution &s = readable(t, whichsol);
    Problem p = snapshot(t, P_OBJ | P_MATRIX);
    check_slice(first, last, p.n.numvar, "variable");
    if (redcosts == nullptr) return;
    Measure m(p, s);
    for (qrn_int32 j = first; j < last; ++j) redcosts[j - first] = m.reduced_cost(j);
  });
}

// ---- violations ----------------------------------------------------------------------------

QRN_API qrn_rescode QRN_CALL QRN_getpviolcon(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol) {
  return violations(task, "QRN_getpviolcon", whichsol, num, sub, viol, con_index, "Constraint index",
                    P_MATRIX | P_BOUNDS, [](Measure &m, qrn_int32 i) { return m.pviolcon(i); });
}

QRN_API qrn_rescode QRN_CALL QRN_getpviolvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol) {
  return violations(task, "QRN_getpviolvar", whichsol, num, sub, viol, var_index, "Variable index", P_BOUNDS,
                    [](Measure &m, qrn_int32 j) { return m.pviolvar(j); });
}

QRN_API qrn_rescode QRN_CALL QRN_getpviolcones(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                               const qrn_int32 *sub, qrn_real *viol) {
  return violations(task, "QRN_getpviolcones", whichsol, num, sub, viol, cone_index, "Cone index", P_CONES,
                    [](Measure &m, qrn_int32 k) { return m.pviolcone(k); });
}

QRN_API qrn_rescode QRN_CALL QRN_getdviolcon(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol) {
  return violations(task, "QRN_getdviolcon", whichsol, num, sub, viol, con_index, "Constraint index", P_BOUNDS,
                    [](Measure &m, qrn_int32 i) { return m.dviolcon(i); });
}

QRN_API qrn_rescode QRN_CALL QRN_getdviolvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol) {
  return violations(task, "QRN_getdviolvar", whichsol, num, sub, viol, var_index, "Variable index",
                    P_MATRIX | P_BOUNDS | P_OBJ | P_CONES, [](Measure &m, qrn_int32 j) { return m.dviolvar(j); });
}

QRN_API qrn_rescode QRN_CALL QRN_getdviolcones(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                               const qrn_int32 *sub, qrn_real *viol) {
  return violations(task, "QRN_getdviolcones", whichsol, num, sub, viol, cone_index, "Cone index", P_CONES,
                    [](Measure &m, qrn_int32 k) { return m.dviolcone(k); });
}

// ---- norms and summaries -------------------------------------------------------------------

QRN_API qrn_rescode QRN_CALL QRN_getprimalsolutionnorms(qrn_task_t task, qrn_int32 whichsol, qrn_real *nrmxc,
                                                        qrn_real *nrmxx, qrn_real *nrmbarx) {
  return api(task, "QRN_getprimalsolutionnorms", [&](Task &t) {
    const Solution &s = readable(t, whichsol);
    put(nrmxc, norm(s.xc));
    put(nrmxx, norm(s.xx));
    double b = 0.0;
    for (const auto &v : s.barx) b = std::max(b, norm(v));
    put(nrmbarx, b);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdualsolutionnorms(qrn_task_t task, qrn_int32 whichsol, qrn_real *nrmy,
                                                      qrn_real *nrmslc, qrn_real *nrmsuc, qrn_real *nrmslx,
                                                      qrn_real *nrmsux, qrn_real *nrmsnx, qrn_real *nrmbars) {
  return api(task, "QRN_getdualsolutionnorms", [&](Task &t) {
    const Solution &s = readable(t, whichsol);
    put(nrmy, norm(s.y));
    put(nrmslc, norm(s.slc));
    put(nrmsuc, norm(s.suc));
    put(nrmslx, norm(s.slx));
    put(nrmsux, norm(s.sux));
    put(nrmsnx, norm(s.snx));
    double b = 0.0;
    for (const auto &v : s.bars) b = std::max(b, norm(v));
    put(nrmbars, b);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getsolutioninfo(qrn_task_t task, qrn_int32 whichsol, qrn_real *pobj,
                                                 qrn_real *pviolcon, qrn_real *pviolvar, qrn_real *pviolbarvar,
                                                 qrn_real *pviolcone, qrn_real *pviolitg, qrn_real *dobj,
                                                 qrn_real *dviolcon, qrn_real *dviolvar, qrn_real *dviolbarvar,
                                                 qrn_real *dviolcone) {
  return api(task, "QRN_getsolutioninfo", [&](Task &t) {
    Summary r = summarize(t, whichsol);
    put(pobj, r.pobj);
    put(pviolcon, r.pcon.first);
    put(pviolvar, r.pvar.first);
    put(pviolbarvar, r.pbar.first);
    put(pviolcone, r.pcone.first);
    put(pviolitg, r.pitg.first);
    put(dobj, r.dobj);
    put(dviolcon, r.dcon.first);
    put(dviolvar, r.dvar.first);
    put(dviolbarvar, r.dbar.first);
    put(dviolcone, r.dcone.first);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_updatesolutioninfo(qrn_task_t task, qrn_int32 whichsol) {
  return api(task, "QRN_updatesolutioninfo", [&](Task &t) {
    Summary r = summarize(t, whichsol);
    qrn_int32 solsta = t.sol[whichsol].solsta;
    if (whichsol == QRN_SOL_ITR) {
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_OBJ) = r.pobj;
      dinf(t, QRN_DINF_INTERIOR_DUAL_OBJ) = r.dobj;
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_CON_VIOL) = r.pcon.first;
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_BOUND_VIOL) = r.pvar.first;
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_CONE_VIOL) = r.pcone.first;
      dinf(t, QRN_DINF_INTERIOR_DUAL_CON_VIOL) = r.dvar.first;
      dinf(t, QRN_DINF_INTERIOR_DUAL_BOUND_VIOL) = r.dcon.first;
      dinf(t, QRN_DINF_INTERIOR_DUAL_CONE_VIOL) = r.dcone.first;
      dinf(t, QRN_DINF_INTERIOR_X_NORM) = r.nrmxx;
      dinf(t, QRN_DINF_INTERIOR_Y_NORM) = r.nrmy;
      iinf(t, QRN_IINF_INTERIOR_SOL_STATUS) = solsta;
    } else if (whichsol == QRN_SOL_BAS) {
      dinf(t, QRN_DINF_BASIC_PRIMAL_OBJ) = r.pobj;
      dinf(t, QRN_DINF_BASIC_DUAL_OBJ) = r.dobj;
      dinf(t, QRN_DINF_BASIC_PRIMAL_CON_VIOL) = r.pcon.first;
      dinf(t, QRN_DINF_BASIC_PRIMAL_BOUND_VIOL) = r.pvar.first;
      dinf(t, QRN_DINF_BASIC_DUAL_CON_VIOL) = r.dvar.first;
      dinf(t, QRN_DINF_BASIC_DUAL_BOUND_VIOL) = r.dcon.first;
      dinf(t, QRN_DINF_BASIC_X_NORM) = r.nrmxx;
      dinf(t, QRN_DINF_BASIC_Y_NORM) = r.nrmy;
      iinf(t, QRN_IINF_BASIC_SOL_STATUS) = solsta;
    } else {
      dinf(t, QRN_DINF_INTEGER_PRIMAL_OBJ) = r.pobj;
      dinf(t, QRN_DINF_INTEGER_PRIMAL_CON_VIOL) = r.pcon.first;
      dinf(t, QRN_DINF_INTEGER_PRIMAL_BOUND_VIOL) = r.pvar.first;
      dinf(t, QRN_DINF_INTEGER_PRIMAL_CONE_VIOL) = r.pcone.first;
      dinf(t, QRN_DINF_INTEGER_INT_VIOL) = r.pitg.first;
      dinf(t, QRN_DINF_INTEGER_X_NORM) = r.nrmxx;
      iinf(t, QRN_IINF_INTEGER_SOL_STATUS) = solsta;
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_analyzesolution(qrn_task_t task, qrn_int32 whichstream, qrn_int32 whichsol) {
  return api(task, "QRN_analyzesolution", [&](Task &t) {
    if (whichstream < 0 || whichstream > 3)
      fail(QRN_RES_ERR_STREAM, "Stream " + std::to_string(whichstream) + " is not one of 0..3.");
    Summary r = summarize(t, whichsol);
    const Solution &s = t.sol[whichsol];
    static const char *names[] = {"interior", "basic", "integer"};
    std::string out = fmt("Solution analysis: %s solution\n", names[whichsol]);
    out += fmt("  problem status   %s\n  solution status  %s\n", prosta_name(s.prosta), solsta_name(s.solsta));
    out += fmt("  primal objective %.12e\n", r.pobj);
    if (whichsol != QRN_SOL_ITG) {
      out += fmt("  dual objective   %.12e\n", r.dobj);
      double gap = std::fabs(r.pobj - r.dobj);
      out += fmt("  gap              %.4e (relative %.4e)\n", gap, gap / std::max(1.0, std::fabs(r.pobj)));
    }
    out += "Largest primal violations\n";
    out += where("constraint", r.pcon) + where("variable bound", r.pvar) + where("cone", r.pcone);
    out += where("integrality", r.pitg);
    if (whichsol != QRN_SOL_ITG) {
      out += "Largest dual violations\n";
      out += where("constraint", r.dcon) + where("variable", r.dvar) + where("cone", r.dcone);
    }
    out += fmt("Norms (largest magnitude)\n  xx %.4e  xc %.4e", r.nrmxx, r.nrmxc);
    if (whichsol != QRN_SOL_ITG)
      out += fmt("  y %.4e  slc %.4e  suc %.4e  slx %.4e  sux %.4e  snx %.4e", r.nrmy, r.nrmslc, r.nrmsuc, r.nrmslx,
                 r.nrmsux, r.nrmsnx);
    out += "\n";
    t.write(whichstream, out);
  });
}

}  // extern "C"
