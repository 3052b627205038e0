// QRN_optimizetrm and the task-wide members (commit, resize).
#include "optimize.hpp"

#include "cbc.hpp"
#include "certs.hpp"
#include "clp.hpp"
#include "conicopt.hpp"
#include "mipconic.hpp"
#include "remote.hpp"
#include "run.hpp"

#include <lapacke.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>

namespace qrn::opt {

namespace {

// Relative accuracy at which a solver's claim is accepted.
double check_tol(const Run &run) { return std::max(1e-6, 100.0 * std::max(run.primal_tol, run.dual_tol)); }

const char *prosta_name(qrn_int32 s) {
  static const char *names[] = {"unknown", "primal and dual feasible", "primal feasible", "dual feasible",
                                "primal infeasible", "dual infeasible", "primal and dual infeasible",
                                "ill-posed", "primal infeasible or unbounded"};
  return s >= 0 && s <= 8 ? names[s] : "?";
}
const char *solsta_name(qrn_int32 s) {
  static const char *names[] = {"unknown", "optimal", "primal feasible", "dual feasible",
                                "primal and dual feasible", "primal infeasibility certificate",
                                "dual infeasibility certificate", "primal ill-posed certificate",
                                "dual ill-posed certificate", "integer optimal"};
  return s >= 0 && s <= 9 ? names[s] : "?";
}
const char *ending_name(Ending e) {
  switch (e) {
    case Ending::normal: return "normal";
    case Ending::iterations: return "iteration limit";
    case Ending::time: return "time limit";
    case Ending::nodes: return "node limit";
    case Ending::solutions: return "solution limit";
    case Ending::gap: return "gap tolerance met";
    case Ending::callback: return "stopped by the callback";
    case Ending::numerical: return "numerical trouble";
    case Ending::race: return "another task of the batch finished first";
  }
  return "?";
}

bool near(double v, double b) { return std::isfinite(b) && std::fabs(v - b) <= 1e-7 * (1.0 + std::fabs(b)); }

double max_abs(const std::vector<double> &v) {
  double s = 0.0;
  for (double x : v) s = std::max(s, std::fabs(x));
  return s;
}

// What one optimizer run produced, before it is stored.
struct Outcome {
  std::array<Solution, QRN_SOL_COUNT> sol;
};

Solution primal_dual(const Problem &p, qrn_int32 prosta, qrn_int32 solsta, std::vector<double> x,
                     std::vector<double> xc, const Duals *d) {
  Solution s;
  s.defined = true;
  s.prosta = prosta;
  s.solsta = solsta;
  s.xx = std::move(x);
  s.xc = std::move(xc);
  if (d != nullptr) {
    s.y = d->y;
    s.slc = d->slc;
    s.suc = d->suc;
    s.slx = d->slx;
    s.sux = d->sux;
  } else {
    s.y.assign(p.m, 0.0);
    s.slc.assign(p.m, 0.0);
    s.suc.assign(p.m, 0.0);
    s.slx.assign(p.n, 0.0);
    s.sux.assign(p.n, 0.0);
  }
  s.snx.assign(p.n, 0.0);
  s.skn.assign(p.numcone, QRN_SK_UNKNOWN);
  s.skc.assign(p.m, QRN_SK_UNKNOWN);
  s.skx.assign(p.n, QRN_SK_UNKNOWN);
  return s;
}

// The duals of a minimization-form result in the stored convention.
Duals task_duals(const Problem &p, const LpResult &r) {
  const double s = p.maximize ? -1.0 : 1.0;
  std::vector<double> y(r.y), dj(r.dj);
  for (double &v : y) v *= s;
  for (double &v : dj) v *= s;
  return split_duals(p, std::move(y), dj);
}

// Keys: basic items from the basis, the others from their values.
void basic_keys(const Problem &p, const LpResult &r, Solution &s) {
  for (qrn_int32 i = 0; i < p.m; ++i)
    s.skc[i] = r.basis && r.basic_row[i] ? QRN_SK_BASIS
                                          : key_by_value(s.xc[i], p.blc[i], p.buc[i], QRN_SK_SUPER_BASIC);
  for (qrn_int32 j = 0; j < p.n; ++j)
    s.skx[j] = r.basis && r.basic_col[j] ? QRN_SK_BASIS
                                          : key_by_value(s.xx[j], p.blx[j], p.bux[j], QRN_SK_SUPER_BASIC);
}
void value_keys(const Problem &p, Solution &s, qrn_int32 inside) {
  for (qrn_int32 i = 0; i < p.m; ++i) s.skc[i] = key_by_value(s.xc[i], p.blc[i], p.buc[i], inside);
  for (qrn_int32 j = 0; j < p.n; ++j) s.skx[j] = key_by_value(s.xx[j], p.blx[j], p.bux[j], inside);
}
// Keys of a certificate: the sides that carry a multiplier.
void certificate_keys(const Problem &p, Solution &s) {
  for (qrn_int32 i = 0; i < p.m; ++i)
    s.skc[i] = s.slc[i] != 0 ? QRN_SK_AT_LOWER : s.suc[i] != 0 ? QRN_SK_AT_UPPER : QRN_SK_UNKNOWN;
  for (qrn_int32 j = 0; j < p.n; ++j)
    s.skx[j] = s.slx[j] != 0 ? QRN_SK_AT_LOWER : s.sux[j] != 0 ? QRN_SK_AT_UPPER : QRN_SK_UNKNOWN;
}

Solution farkas_solution(const Problem &p, const Duals &d) {
  Solution s = primal_dual(p, QRN_PRO_STA_PRIM_INFEAS, QRN_SOL_STA_PRIM_INFEAS_CER, std::vector<double>(p.n, 0.0),
                           std::vector<double>(p.m, 0.0), &d);
  certificate_keys(p, s);
  return s;
}

Solution ray_solution(const Problem &p, std::vector<double> ray) {
  std::vector<double> ad(p.m);
  mul_a(p, ray.data(), ad.data());
  Solution s = primal_dual(p, QRN_PRO_STA_DUAL_INFEAS, QRN_SOL_STA_DUAL_INFEAS_CER, std::move(ray), std::move(ad),
                           nullptr);
  value_keys(p, s, QRN_SK_BASIS);
  return s;
}

// Verified optimality of a primal-dual pair.
bool verified(const Problem &p, const Run &run, const Solution &s, const Duals &d) {
  const double tol = check_tol(run);
  if (con_violation(p, s.xc.data()) > tol || bound_violation(p, s.xx.data()) > tol) return false;
  if (dual_violation(p, d) > tol) return false;
  const double pobj = primal_obj(p, s.xx.data()), dobj = dual_obj(p, d, s.xx.data());
  if (!std::isfinite(pobj) || !std::isfinite(dobj)) return false;
  return std::fabs(pobj - dobj) <= tol * (1.0 + std::fabs(pobj));
}

// Classifies an infeasible or unbounded claim (or a doubtful one) with
// certificates computed here; false when neither certificate exists.
bool certify(const Problem &p, Run &run, const LpResult &r, Solution &out) {
  Duals d;
  std::vector<double> ray;
  if (r.status == LpResult::infeasible && farkas_from(p, r.ray, d)) {
    out = farkas_solution(p, d);
    return true;
  }
  if (r.status == LpResult::unbounded && ray_from(p, r.ray, ray)) {
    out = ray_solution(p, std::move(ray));
    return true;
  }
  if (farkas_by_elastic(p, run, d)) {
    out = farkas_solution(p, d);
    return true;
  }
  if (ray_by_lp(p, run, ray)) {
    out = ray_solution(p, std::move(ray));
    return true;
  }
  return false;
}

// A solution of a simplex result (basic), checked.
Solution from_simplex(const Problem &p, Run &run, const LpResult &r) {
  Duals d = task_duals(p, r);
  Solution s = primal_dual(p, QRN_PRO_STA_UNKNOWN, QRN_SOL_STA_UNKNOWN, r.x, r.xc, &d);
  basic_keys(p, r, s);
  if (r.status == LpResult::optimal) {
    if (verified(p, run, s, d)) {
      s.prosta = QRN_PRO_STA_PRIM_AND_DUAL_FEAS;
      s.solsta = QRN_SOL_STA_OPTIMAL;
    } else if (run.ending == Ending::normal) {
      run.ending = Ending::numerical;
    }
    return s;
  }
  if (r.status == LpResult::infeasible || r.status == LpResult::unbounded) {
    Solution c;
    if (certify(p, run, r, c)) return c;
    if (run.ending == Ending::normal) run.ending = Ending::numerical;
  }
  return s;  // stopped: the last iterate, statuses unknown
}

Solution from_barrier(const Problem &p, Run &run, const LpResult &r) {
  Duals d = task_duals(p, r);
  Solution s = primal_dual(p, QRN_PRO_STA_UNKNOWN, QRN_SOL_STA_UNKNOWN, r.x, r.xc, &d);
  value_keys(p, s, QRN_SK_BASIS);
  if (r.status == LpResult::optimal && verified(p, run, s, d)) {
    s.prosta = QRN_PRO_STA_PRIM_AND_DUAL_FEAS;
    s.solsta = QRN_SOL_STA_OPTIMAL;
  }
  return s;
}

// ---- convexity of Q ----------------------------------------------------------------

// Smallest eigenvalue of s Q over the variables that occur in Q (dense, so
// only for up to kMaxDense of them); NaN when not computed.
constexpr qrn_int32 kMaxDense = 2000;
double min_eigen(const Problem &p) {
  std::map<qrn_int32, int> pos;
  for (size_t k = 0; k < p.qv.size(); ++k) pos.emplace(p.qi[k], 0), pos.emplace(p.qj[k], 0);
  const int n = static_cast<int>(pos.size());
  if (n > kMaxDense) return NAN;
  int next = 0;
  for (auto &kv : pos) kv.second = next++;
  const double s = p.maximize ? -1.0 : 1.0;
  std::vector<double> a(static_cast<size_t>(n) * n, 0.0), w(n);
  for (size_t k = 0; k < p.qv.size(); ++k) {
    const int i = pos[p.qi[k]], j = pos[p.qj[k]];
    a[static_cast<size_t>(i) * n + j] = s * p.qv[k];
    a[static_cast<size_t>(j) * n + i] = s * p.qv[k];
  }
  if (LAPACKE_dsyevd(LAPACK_ROW_MAJOR, 'N', 'L', n, a.data(), n, w.data()) != 0) return NAN;
  return w.empty() ? 0.0 : w[0];
}

// ---- information and log -----------------------------------------------------------

void problem_info(Task &t, const Problem &p) {
  qrn_int32 type = p.quadratic() ? QRN_PROBTYPE_QUADRATIC : QRN_PROBTYPE_LINEAR;
  QRN_getprobtype(static_cast<qrn_task_s *>(&t), &type);
  iinf(t, QRN_IINF_PROB_TYPE) = type;
  iinf(t, QRN_IINF_PROB_NUM_CON) = p.m;
  iinf(t, QRN_IINF_PROB_NUM_VAR) = p.n;
  iinf(t, QRN_IINF_PROB_NUM_INT_VAR) = p.numint;
  liinf(t, QRN_LIINF_PROB_NUM_ANZ) = p.nnz();
  liinf(t, QRN_LIINF_PROB_NUM_QOBJ_NZ) = static_cast<qrn_int64>(p.qv.size());
  qrn_int32 bin = 0, freev = 0, fixed = 0, ranged = 0, eq = 0, rcon = 0, fcon = 0, ecol = 0, maxcol = 0;
  std::vector<qrn_int32> rownnz(p.m, 0);
  double amax = 0, amin = inf, cmax = 0, cbmax = 0, vbmax = 0, qmax = 0;
  for (qrn_int32 j = 0; j < p.n; ++j) {
    const qrn_int32 bk = p.bkx[j];
    freev += bk == QRN_BK_FREE;
    fixed += bk == QRN_BK_FIXED;
    ranged += bk == QRN_BK_RANGED;
    if (p.integer[j] && p.blx[j] == 0.0 && p.bux[j] == 1.0) ++bin;
    const int len = p.start[j + 1] - p.start[j];
    ecol += len == 0;
    maxcol = std::max(maxcol, len);
    for (int k = p.start[j]; k < p.start[j + 1]; ++k) {
      ++rownnz[p.index[k]];
      amax = std::max(amax, std::fabs(p.value[k]));
      amin = std::min(amin, std::fabs(p.value[k]));
    }
    cmax = std::max(cmax, std::fabs(p.c[j]));
    for (double b : {p.blx[j], p.bux[j]})
      if (std::isfinite(b)) vbmax = std::max(vbmax, std::fabs(b));
  }
  for (qrn_int32 i = 0; i < p.m; ++i) {
    eq += p.bkc[i] == QRN_BK_FIXED;
    rcon += p.bkc[i] == QRN_BK_RANGED;
    fcon += p.bkc[i] == QRN_BK_FREE;
    for (double b : {p.blc[i], p.buc[i]})
      if (std::isfinite(b)) cbmax = std::max(cbmax, std::fabs(b));
  }
  qrn_int32 erow = 0, maxrow = 0;
  for (qrn_int32 v : rownnz) erow += v == 0, maxrow = std::max(maxrow, v);
  for (double q : p.qv) qmax = std::max(qmax, std::fabs(q));
  std::vector<char> inq(p.n, 0);
  for (size_t k = 0; k < p.qv.size(); ++k) inq[p.qi[k]] = inq[p.qj[k]] = 1;
  iinf(t, QRN_IINF_PROB_NUM_QOBJ_VAR) = static_cast<qrn_int32>(std::count(inq.begin(), inq.end(), 1));
  iinf(t, QRN_IINF_PROB_NUM_BIN_VAR) = bin;
  iinf(t, QRN_IINF_PROB_NUM_FREE_VAR) = freev;
  iinf(t, QRN_IINF_PROB_NUM_FIXED_VAR) = fixed;
  iinf(t, QRN_IINF_PROB_NUM_RANGED_VAR) = ranged;
  iinf(t, QRN_IINF_PROB_NUM_EQ_CON) = eq;
  iinf(t, QRN_IINF_PROB_NUM_RANGED_CON) = rcon;
  iinf(t, QRN_IINF_PROB_NUM_FREE_CON) = fcon;
  iinf(t, QRN_IINF_PROB_NUM_EMPTY_ROWS) = erow;
  iinf(t, QRN_IINF_PROB_NUM_EMPTY_COLS) = ecol;
  iinf(t, QRN_IINF_PROB_MAX_ROW_NNZ) = maxrow;
  iinf(t, QRN_IINF_PROB_MAX_COL_NNZ) = maxcol;
  dinf(t, QRN_DINF_DATA_A_MAX_ABS) = amax;
  dinf(t, QRN_DINF_DATA_A_MIN_ABS) = std::isfinite(amin) ? amin : 0.0;
  dinf(t, QRN_DINF_DATA_C_MAX_ABS) = cmax;
  dinf(t, QRN_DINF_DATA_CON_BOUND_MAX_ABS) = cbmax;
  dinf(t, QRN_DINF_DATA_VAR_BOUND_MAX_ABS) = vbmax;
  dinf(t, QRN_DINF_DATA_QOBJ_MAX_ABS) = qmax;
}

// Summary values of one stored solution, into the information items.
void solution_info(Task &t, const Problem &p, qrn_int32 which, const Solution &s) {
  const Duals d{s.y, s.slc, s.suc, s.slx, s.sux};
  const bool cert = s.solsta == QRN_SOL_STA_PRIM_INFEAS_CER || s.solsta == QRN_SOL_STA_DUAL_INFEAS_CER;
  const double pobj = s.solsta == QRN_SOL_STA_PRIM_INFEAS_CER ? 0.0 : primal_obj(p, s.xx.data()) - (cert ? p.cfix : 0.0);
  const double dobj = s.solsta == QRN_SOL_STA_DUAL_INFEAS_CER ? 0.0 : dual_obj(p, d, cert ? nullptr : s.xx.data(), !cert);
  const double cv = con_violation(p, s.xc.data()), bv = bound_violation(p, s.xx.data());
  const double dv = dual_violation(p, d);
  switch (which) {
    case QRN_SOL_ITR:
      iinf(t, QRN_IINF_INTERIOR_SOL_STATUS) = s.solsta;
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_OBJ) = pobj;
      dinf(t, QRN_DINF_INTERIOR_DUAL_OBJ) = dobj;
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_CON_VIOL) = cv;
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_BOUND_VIOL) = bv;
      dinf(t, QRN_DINF_INTERIOR_PRIMAL_CONE_VIOL) = 0.0;
      dinf(t, QRN_DINF_INTERIOR_DUAL_BOUND_VIOL) = dv;
      dinf(t, QRN_DINF_INTERIOR_DUAL_CON_VIOL) = dv;
      dinf(t, QRN_DINF_INTERIOR_DUAL_CONE_VIOL) = 0.0;
      dinf(t, QRN_DINF_INTERIOR_X_NORM) = max_abs(s.xx);
      dinf(t, QRN_DINF_INTERIOR_Y_NORM) = max_abs(s.y);
      break;
    case QRN_SOL_BAS:
      iinf(t, QRN_IINF_BASIC_SOL_STATUS) = s.solsta;
      dinf(t, QRN_DINF_BASIC_PRIMAL_OBJ) = pobj;
      dinf(t, QRN_DINF_BASIC_DUAL_OBJ) = dobj;
      dinf(t, QRN_DINF_BASIC_PRIMAL_CON_VIOL) = cv;
      dinf(t, QRN_DINF_BASIC_PRIMAL_BOUND_VIOL) = bv;
      dinf(t, QRN_DINF_BASIC_DUAL_CON_VIOL) = dv;
      dinf(t, QRN_DINF_BASIC_DUAL_BOUND_VIOL) = dv;
      dinf(t, QRN_DINF_BASIC_X_NORM) = max_abs(s.xx);
      dinf(t, QRN_DINF_BASIC_Y_NORM) = max_abs(s.y);
      {
        qrn_int32 slacks = 0, structs = 0;
        for (qrn_int32 k : s.skc) slacks += k == QRN_SK_BASIS;
        for (qrn_int32 k : s.skx) structs += k == QRN_SK_BASIS;
        iinf(t, QRN_IINF_BASIS_NUM_SLACKS) = slacks;
        iinf(t, QRN_IINF_BASIS_NUM_STRUCT) = structs;
      }
      break;
    case QRN_SOL_ITG: {
      iinf(t, QRN_IINF_INTEGER_SOL_STATUS) = s.solsta;
      dinf(t, QRN_DINF_INTEGER_PRIMAL_OBJ) = pobj;
      dinf(t, QRN_DINF_INTEGER_PRIMAL_CON_VIOL) = cv;
      dinf(t, QRN_DINF_INTEGER_PRIMAL_BOUND_VIOL) = bv;
      dinf(t, QRN_DINF_INTEGER_PRIMAL_CONE_VIOL) = 0.0;
      double iv = 0.0;
      for (qrn_int32 j = 0; j < p.n; ++j)
        if (p.integer[j]) iv = std::max(iv, std::fabs(s.xx[j] - std::round(s.xx[j])));
      dinf(t, QRN_DINF_INTEGER_INT_VIOL) = iv;
      dinf(t, QRN_DINF_MIP_MAX_INT_VIOL) = iv;
      dinf(t, QRN_DINF_MIP_MAX_CON_VIOL) = cv;
      dinf(t, QRN_DINF_MIP_MAX_BOUND_VIOL) = bv;
      dinf(t, QRN_DINF_INTEGER_X_NORM) = max_abs(s.xx);
      break;
    }
  }
}

void log_header(Run &run, const Problem &p, const char *optimizer, bool presolve, qrn_int64 numdjc) {
  run.log("Optimizer started.");
  run.log("Problem");
  if (!p.name.empty()) run.log("  Name                : " + p.name);
  run.log(std::string("  Objective sense     : ") + (p.maximize ? "maximize" : "minimize"));
  const bool conic = p.numcone > 0 || p.numconic > 0 || p.numqcnz > 0;
  run.log(std::string("  Type                : ") +
          (p.numint > 0 || numdjc > 0 ? (conic || p.quadratic() ? "mixed-integer conic" : "mixed-integer linear")
           : conic      ? (p.numqcnz > 0 ? "quadratically constrained / conic" : "conic")
           : p.quadratic() ? "quadratic"
                           : "linear"));
  if (p.numcone > 0) run.log(format("  Cones               : %d", p.numcone));
  if (p.numconic > 0) run.log(format("  ACCs and barvars    : %lld", static_cast<long long>(p.numconic)));
  run.log(format("  Constraints         : %d", p.m));
  run.log(format("  Variables           : %d (%d integer)", p.n, p.numint));
  run.log(format("  Matrix non-zeros    : %lld", static_cast<long long>(p.nnz())));
  if (p.quadratic()) run.log(format("  Quadratic terms     : %zu (lower triangle)", p.qv.size()));
  run.log(format("Optimizer             : %s, presolve %s, threads 1", optimizer, presolve ? "on" : "off"));
}

void log_solution(Run &run, const char *what, const Solution &s, Task &t, qrn_int32 which) {
  if (!s.defined) return;
  run.log(std::string(what) + " solution");
  run.log(std::string("  Problem status      : ") + prosta_name(s.prosta));
  run.log(std::string("  Solution status     : ") + solsta_name(s.solsta));
  const qrn_dinfitem_e pitem = which == QRN_SOL_ITR ? QRN_DINF_INTERIOR_PRIMAL_OBJ
                               : which == QRN_SOL_BAS ? QRN_DINF_BASIC_PRIMAL_OBJ
                                                      : QRN_DINF_INTEGER_PRIMAL_OBJ;
  const qrn_dinfitem_e vitem = which == QRN_SOL_ITR ? QRN_DINF_INTERIOR_PRIMAL_CON_VIOL
                               : which == QRN_SOL_BAS ? QRN_DINF_BASIC_PRIMAL_CON_VIOL
                                                      : QRN_DINF_INTEGER_PRIMAL_CON_VIOL;
  run.log(format("  Primal objective    : %.10e   constraint violation %.1e", dinf(t, pitem), dinf(t, vitem)));
  if (which == QRN_SOL_ITR)
    run.log(format("  Dual objective      : %.10e", dinf(t, QRN_DINF_INTERIOR_DUAL_OBJ)));
  else if (which == QRN_SOL_BAS)
    run.log(format("  Dual objective      : %.10e", dinf(t, QRN_DINF_BASIC_DUAL_OBJ)));
  else
    run.log(format("  Best bound          : %.10e", dinf(t, QRN_DINF_MIP_OBJ_BOUND)));
}

long long unix_usec() {
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

// ---- the runs --------------------------------------------------------------------

void run_simplex(const Problem &p, Run &run, bool primal, bool presolve, Outcome &out) {
  if (run.callback(QRN_CALLBACK_BEGIN_SIMPLEX)) return;
  run.log(format("%8s %17s %14s %14s %8s", "ITER", "OBJECTIVE", "PRIMAL INF", "DUAL INF", "TIME"));
  LpResult r = simplex(p, run, primal, presolve);
  dinf(run.task, QRN_DINF_TIME_SIMPLEX) = run.elapsed();
  iinf(run.task, QRN_IINF_SPX_ITER) = r.iterations;
  iinf(run.task, primal ? QRN_IINF_SPX_PRIMAL_ITER : QRN_IINF_SPX_DUAL_ITER) = r.iterations;
  Solution s = from_simplex(p, run, r);
  if (s.solsta == QRN_SOL_STA_UNKNOWN && run.ending == Ending::numerical && presolve) {
    // A claim that did not hold up: once more from scratch, without presolve.
    run.ending = Ending::normal;
    LpResult again = simplex(p, run, !primal, false);
    s = from_simplex(p, run, again);
  }
  out.sol[QRN_SOL_BAS] = std::move(s);
  run.callback(QRN_CALLBACK_END_SIMPLEX);
}

void run_barrier(const Problem &p, Run &run, bool crossover, Outcome &out) {
  if (run.callback(QRN_CALLBACK_BEGIN_BARRIER)) return;
  run.log(format("%8s %17s %17s %12s %8s", "ITER", "PRIMAL OBJ", "DUAL OBJ", "COMPL", "TIME"));
  LpResult crossed;
  LpResult r = barrier(p, run, crossover ? &crossed : nullptr);
  dinf(run.task, QRN_DINF_TIME_IPM) = run.elapsed();
  Solution s = from_barrier(p, run, r);
  const bool doubt = s.solsta == QRN_SOL_STA_UNKNOWN && r.status != LpResult::stopped;
  if (doubt && !run.stop_requested()) {
    // The interior-point method claims things it has not shown (optimal with
    // violated rows, for one): settle the question here.
    if (!p.quadratic()) {
      run.log("Interior-point result not confirmed: settled by the dual simplex method.");
      Run inner(run.task, true);
      inner.time_limit = run.time_limit - run.elapsed();
      LpResult spx = simplex(p, inner, false, false);
      Solution b = from_simplex(p, inner, spx);
      s = b;
      if (crossover) out.sol[QRN_SOL_BAS] = std::move(b);
      crossover = false;
    } else {
      Solution c;
      LpResult none;
      none.status = LpResult::failed;
      if (certify(p, run, none, c)) {
        s = std::move(c);
      } else {
        if (con_violation(p, s.xc.data()) <= check_tol(run) && bound_violation(p, s.xx.data()) <= check_tol(run)) {
          s.prosta = QRN_PRO_STA_PRIM_FEAS;
          s.solsta = QRN_SOL_STA_PRIM_FEAS;
        }
        if (run.ending == Ending::normal) run.ending = Ending::numerical;
      }
    }
  }
  if (crossover && crossed.status != LpResult::failed) {
    Solution b = from_simplex(p, run, crossed);
    // Crossover from a confirmed optimum; from a certificate it has nothing to add.
    if (s.solsta == QRN_SOL_STA_OPTIMAL) out.sol[QRN_SOL_BAS] = std::move(b);
  }
  out.sol[QRN_SOL_ITR] = std::move(s);
  run.callback(QRN_CALLBACK_END_BARRIER);
}

// The conic interior-point optimizer (lib/src/conicopt): conic, semidefinite
// and quadratically constrained problems.
// basic: a linear problem whose basic solution is wanted after an optimum
// (QRN_IPAR_CROSSOVER): it comes from a dual simplex run.
void run_conic(const Problem &p, const ConicForm &f, Run &run, bool basic, bool presolve, Outcome &out) {
  if (run.callback(QRN_CALLBACK_BEGIN_BARRIER)) return;
  if (f.removed_cols > 0 || f.removed_rows > 0)
    run.log(format("Presolve              : %d fixed variables and %d empty rows removed", f.removed_cols,
                   f.removed_rows));
  ConicOutcome r = conic_solve(p, f, run);
  const bool cert = r.sol.solsta == QRN_SOL_STA_PRIM_INFEAS_CER || r.sol.solsta == QRN_SOL_STA_DUAL_INFEAS_CER;
  if (cert && p.numcone == 0 && p.numconic == 0 && p.numqcnz == 0 && !run.stop_requested()) {
    // A linear or quadratic problem: the engine's certificate (exact to its
    // tolerance) is replaced by an exact one from the certificate LPs, whose
    // identities hold to rounding and whose zero entries are zeros.
    LpResult none;
    none.status = LpResult::failed;
    Solution exact;
    if (certify(p, run, none, exact) && exact.solsta == r.sol.solsta) r.sol = std::move(exact);
  }
  const bool optimal = r.sol.solsta == QRN_SOL_STA_OPTIMAL;
  out.sol[QRN_SOL_ITR] = std::move(r.sol);
  if (run.callback(QRN_CALLBACK_END_BARRIER)) return;
  if (basic && optimal) {
    if (run.callback(QRN_CALLBACK_BEGIN_CROSSOVER)) return;
    const double t0 = run.elapsed();
    LpResult spx = simplex(p, run, false, presolve);
    iinf(run.task, QRN_IINF_CROSSOVER_PRIMAL_ITER) = spx.iterations;
    dinf(run.task, QRN_DINF_TIME_CROSSOVER) = run.elapsed() - t0;
    Solution b = from_simplex(p, run, spx);
    if (b.solsta == QRN_SOL_STA_OPTIMAL) out.sol[QRN_SOL_BAS] = std::move(b);
    run.callback(QRN_CALLBACK_END_CROSSOVER);
  }
}

// Branch and bound over the conic optimizer (lib/src/mipconic): integer
// variables with conic data or a quadratic objective, and disjunctive constraints.
void run_mip_conic(const Problem &p, const ConicSource &src, const Disjunctions &djcs, Run &run, bool presolve,
                   Outcome &out) {
  if (run.callback(QRN_CALLBACK_BEGIN_MIP)) return;
  MipConicResult r = solve_mip_conic(p, src, djcs, run, presolve);
  Solution &s = r.sol;
  if (s.defined && s.solsta != QRN_SOL_STA_UNKNOWN) {
    const double tol = check_tol(run);
    if (con_violation(p, s.xc.data()) > tol || bound_violation(p, s.xx.data()) > tol) {
      s.prosta = QRN_PRO_STA_UNKNOWN;
      s.solsta = QRN_SOL_STA_UNKNOWN;
    }
  }
  if (s.defined) out.sol[QRN_SOL_ITG] = std::move(s);
  run.callback(QRN_CALLBACK_END_MIP);
}

void run_mip(const Problem &p, Run &run, Outcome &out) {
  if (run.callback(QRN_CALLBACK_BEGIN_MIP)) return;
  MipResult r = solve_mip(p, run);
  Task &t = run.task;
  liinf(t, QRN_LIINF_MIP_NODES) = r.nodes;
  liinf(t, QRN_LIINF_MIP_SIMPLEX_ITER) = r.iterations;
  iinf(t, QRN_IINF_MIP_SOLUTIONS) = r.solutions;
  dinf(t, QRN_DINF_TIME_MIP) = run.elapsed();
  if (std::isfinite(r.bound)) dinf(t, QRN_DINF_MIP_OBJ_BOUND) = r.bound;
  Solution s;
  if (r.has_solution) {
    std::vector<double> xc(p.m);
    mul_a(p, r.x.data(), xc.data());
    s = primal_dual(p, QRN_PRO_STA_PRIM_FEAS, r.status == MipResult::optimal ? QRN_SOL_STA_INTEGER_OPTIMAL
                                                                             : QRN_SOL_STA_PRIM_FEAS,
                    r.x, std::move(xc), nullptr);
    value_keys(p, s, QRN_SK_SUPER_BASIC);
    const double tol = check_tol(run);
    if (con_violation(p, s.xc.data()) > tol || bound_violation(p, s.xx.data()) > tol) {
      s.prosta = QRN_PRO_STA_UNKNOWN;
      s.solsta = QRN_SOL_STA_UNKNOWN;
    }
    dinf(t, QRN_DINF_MIP_OBJ) = r.objective;
    if (std::isfinite(r.bound)) {
      const double gap = std::fabs(r.objective - r.bound);
      dinf(t, QRN_DINF_MIP_ABS_GAP) = gap;
      dinf(t, QRN_DINF_MIP_REL_GAP) = gap / std::max(1e-10, std::fabs(r.objective));
    }
  } else if (r.status == MipResult::infeasible) {
    s = primal_dual(p, QRN_PRO_STA_PRIM_INFEAS, QRN_SOL_STA_UNKNOWN, std::vector<double>(p.n, 0.0),
                    std::vector<double>(p.m, 0.0), nullptr);
  } else if (r.status == MipResult::unbounded) {
    s = primal_dual(p, QRN_PRO_STA_PRIM_INFEAS_OR_UNBOUNDED, QRN_SOL_STA_UNKNOWN, std::vector<double>(p.n, 0.0),
                    std::vector<double>(p.m, 0.0), nullptr);
  }
  if (s.defined) out.sol[QRN_SOL_ITG] = std::move(s);
  run.callback(QRN_CALLBACK_END_MIP);
}

}  // namespace

qrn_int32 key_by_value(double v, double lo, double up, qrn_int32 inside) {
  const bool atl = near(v, lo), atu = near(v, up);
  if (atl && atu) return QRN_SK_FIXED;
  if (atl) return QRN_SK_AT_LOWER;
  if (atu) return QRN_SK_AT_UPPER;
  return inside;
}

qrn_rescode optimize(Task &t) {
  const Problem p = snapshot(static_cast<qrn_task_s *>(&t));
  // Refusals first: they leave the task as it was.
  const qrn_int32 alg = t.par.integer[QRN_IPAR_ALGORITHM];
  qrn_int64 numdjc = 0;
  QRN_getnumdjc(static_cast<qrn_task_s *>(&t), &numdjc);
  const bool conic = p.numqcnz > 0 || p.numcone > 0 || p.numconic > 0;
  // Disjunctive constraints are solved by the mixed-integer search.
  const bool mip = p.numint > 0 || alg == QRN_ALGORITHM_MIXED_INT || numdjc > 0;
  // Mixed-integer problems with conic data or a quadratic objective (and
  // every problem with disjunctive constraints) go to the branch and bound
  // over the conic optimizer; mixed-integer linear ones to Cbc.
  const bool mipconic = mip && (conic || p.quadratic());
  if (numdjc > 0 && alg == QRN_ALGORITHM_IPM)
    fail(QRN_RES_ERR_OPT_DJC, "Disjunctive constraints need the mixed-integer optimizer (QRN_IPAR_ALGORITHM AUTO "
                              "or MIXED_INT); the interior-point method alone does not take them.");
  if (conic && alg != QRN_ALGORITHM_AUTO && alg != QRN_ALGORITHM_IPM && !(mipconic && alg == QRN_ALGORITHM_MIXED_INT))
    fail(QRN_RES_ERR_OPT_COMBINATION, "A conic or quadratically constrained problem needs the interior-point "
                                      "method (IPM or AUTO; MIXED_INT with integer variables).");
  if (mip && alg == QRN_ALGORITHM_IPM)
    fail(QRN_RES_ERR_OPT_COMBINATION, "The interior-point method cannot solve a problem with integer variables.");
  if (mip && p.quadratic() && alg != QRN_ALGORITHM_AUTO && alg != QRN_ALGORITHM_MIXED_INT)
    fail(QRN_RES_ERR_OPT_COMBINATION, "A mixed-integer quadratic problem needs the mixed-integer optimizer (AUTO or "
                                      "MIXED_INT).");
  if (!mip && p.quadratic() && alg != QRN_ALGORITHM_AUTO && alg != QRN_ALGORITHM_IPM)
    fail(QRN_RES_ERR_OPT_COMBINATION, "A quadratic objective needs the interior-point method (IPM or AUTO).");

  const bool presolve = t.par.integer[QRN_IPAR_PRESOLVE] == QRN_ON;
  // The conic interior-point optimizer takes every continuous problem that
  // goes to an interior-point method: conic and quadratically constrained
  // ones, and linear and quadratic ones when IPM (or, for a quadratic
  // objective, AUTO) is chosen (docs/conic-optimizer.md says why).
  const bool engine = !mip && (conic || p.quadratic() || alg == QRN_ALGORITHM_IPM);
  // The conic form is made before anything changes: its refusals (disjunctive
  // constraints, a quadratic constraint that is not convex) leave the task as it was.
  ConicForm form;
  if (engine) form = conic_form(static_cast<qrn_task_s *>(&t), p, presolve, t.par.dou[QRN_DPAR_CONVEXITY_TOL]);
  ConicSource source;
  Disjunctions djcs;
  if (mipconic) {
    source = conic_source(static_cast<qrn_task_s *>(&t), p, t.par.dou[QRN_DPAR_CONVEXITY_TOL], true);
    djcs = read_djcs(static_cast<qrn_task_s *>(&t), source.base);
  }

  const Info saved = t.info;
  try {
    const qrn_int32 calls = t.info.integer[QRN_IINF_OPT_CALLS];
    const auto keep_d = {QRN_DINF_TIME_READ, QRN_DINF_TIME_WRITE, QRN_DINF_TIME_SENSITIVITY, QRN_DINF_TIME_REPAIR,
                         QRN_DINF_REPAIR_PENALTY, QRN_DINF_REPAIR_OBJ};
    std::vector<double> kept;
    for (auto k : keep_d) kept.push_back(t.info.dou[k]);
    Info fresh;
    fresh.integer[QRN_IINF_OPT_CALLS] = calls + 1;
    for (qrn_int32 k = QRN_IINF_READ_NUM_LINES; k <= QRN_IINF_READ_FORMAT; ++k) fresh.integer[k] = t.info.integer[k];
    for (qrn_int32 k : {QRN_IINF_REPAIR_RELAXED_CONS, QRN_IINF_REPAIR_RELAXED_VARS, QRN_IINF_SENSITIVITY_ITEMS})
      fresh.integer[k] = t.info.integer[k];
    for (qrn_int32 k : {QRN_LIINF_READ_BYTES, QRN_LIINF_WRITE_BYTES}) fresh.lint[k] = t.info.lint[k];
    size_t w = 0;
    for (auto k : keep_d) fresh.dou[k] = kept[w++];
    t.info = fresh;
    liinf(t, QRN_LIINF_OPT_START_USEC) = unix_usec();
    iinf(t, QRN_IINF_THREADS_USED) = 1;

    Run run(t, false);
    run.obj_sign = p.maximize ? -1.0 : 1.0;
    run.obj_const = p.cfix;
    problem_info(t, p);

    if (p.quadratic() && t.par.integer[QRN_IPAR_CHECK_CONVEXITY] == QRN_ON) {
      const double ev = min_eigen(p);
      if (!std::isnan(ev)) {
        iinf(t, QRN_IINF_CONVEXITY_CHECKED) = 1;
        dinf(t, QRN_DINF_CONVEXITY_MIN_EIG) = ev;
        double scale = 0.0;
        for (double q : p.qv) scale = std::max(scale, std::fabs(q));
        if (ev < -t.par.dou[QRN_DPAR_CONVEXITY_TOL] * std::max(1.0, scale)) {
          iinf(t, QRN_IINF_NONCONVEX_CON) = -2;
          fail(QRN_RES_ERR_OPT_NONCONVEX, format("The quadratic objective is not %s (eigenvalue %.3e).",
                                                 p.maximize ? "concave" : "convex", p.maximize ? -ev : ev));
        }
      }
    }

    const bool crossover = t.par.integer[QRN_IPAR_CROSSOVER] == QRN_ON;
    const bool ipm = !mip && (p.quadratic() || alg == QRN_ALGORITHM_IPM);
    const bool primal = alg == QRN_ALGORITHM_PRIMAL_SIMPLEX;
    const char *name = engine     ? "conic interior point"
                       : mipconic ? "mixed-integer conic (branch and bound over the conic interior point)"
                       : mip      ? "mixed-integer (branch and cut)"
                       : ipm  ? (p.quadratic() || !crossover ? "interior point" : "interior point with crossover")
                       : primal ? "primal simplex"
                                : "dual simplex";
    iinf(t, QRN_IINF_ALGORITHM_USED) = mip ? QRN_ALGORITHM_MIXED_INT
                                       : ipm ? QRN_ALGORITHM_IPM
                                       : primal ? QRN_ALGORITHM_PRIMAL_SIMPLEX
                                                : QRN_ALGORITHM_DUAL_SIMPLEX;
    log_header(run, p, name, presolve && (!ipm || engine), numdjc);

    Outcome out;
    if (!run.callback(QRN_CALLBACK_BEGIN)) {
      if (engine) run_conic(p, form, run, !conic && !p.quadratic() && crossover, presolve, out);
      else if (mipconic) run_mip_conic(p, source, djcs, run, presolve, out);
      else if (mip) run_mip(p, run, out);
      else if (ipm) run_barrier(p, run, crossover && !p.quadratic(), out);
      else run_simplex(p, run, primal, presolve, out);
    }
    const qrn_rescode trm = termination_code(run.ending);
    // Store: every solution is replaced (undefined unless this run made it).
    t.sol = out.sol;
    t.basis_factor.reset();
    for (qrn_int32 k = 0; k < QRN_SOL_COUNT; ++k) {
      if (!t.sol[k].defined) continue;
      // The conic optimizer's solutions are measured with every conic term.
      if (engine || mipconic) QRN_updatesolutioninfo(static_cast<qrn_task_s *>(&t), k);
      else solution_info(t, p, k, t.sol[k]);
    }
    if (mipconic && t.sol[QRN_SOL_ITG].defined) {
      dinf(t, QRN_DINF_MIP_MAX_INT_VIOL) = dinf(t, QRN_DINF_INTEGER_INT_VIOL);
      dinf(t, QRN_DINF_MIP_MAX_CON_VIOL) = dinf(t, QRN_DINF_INTEGER_PRIMAL_CON_VIOL);
      dinf(t, QRN_DINF_MIP_MAX_BOUND_VIOL) = dinf(t, QRN_DINF_INTEGER_PRIMAL_BOUND_VIOL);
    }
    dinf(t, QRN_DINF_TIME_TOTAL) = run.elapsed();
    iinf(t, QRN_IINF_TERMINATION_CODE) = trm;
    iinf(t, QRN_IINF_OPT_RESPONSE) = QRN_RES_OK;
    liinf(t, QRN_LIINF_OPT_END_USEC) = unix_usec();
    run.log(format("Optimizer terminated: %s. Time: %.2f s.", ending_name(run.ending), run.elapsed()));
    log_solution(run, "Interior", t.sol[QRN_SOL_ITR], t, QRN_SOL_ITR);
    log_solution(run, "Basic", t.sol[QRN_SOL_BAS], t, QRN_SOL_BAS);
    log_solution(run, "Integer", t.sol[QRN_SOL_ITG], t, QRN_SOL_ITG);
    run.callback(QRN_CALLBACK_END);
    return trm;
  } catch (...) {
    t.info = saved;
    throw;
  }
}

}  // namespace qrn::opt

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_optimizetrm(qrn_task_t task, qrn_int32 *trmcode) {
  return api(task, "QRN_optimizetrm", [&](Task &t) {
    // QRN_putoptserverhost (QRN_SPAR_REMOTE_SERVER) sends the run to a server.
    if (!t.par.str[QRN_SPAR_REMOTE_SERVER].empty()) put(trmcode, remote::optimize_at_server_param(t));
    else put(trmcode, opt::optimize(t));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_commitchanges(qrn_task_t task) {
  return api(task, "QRN_commitchanges", [&](Task &) {});
}

QRN_API qrn_rescode QRN_CALL QRN_resizetask(qrn_task_t task, qrn_int32 maxnumcon, qrn_int32 maxnumvar,
                                            qrn_int32 maxnumcone, qrn_int64 maxnumanz, qrn_int64 maxnumqnz) {
  return api(task, "QRN_resizetask", [&](Task &t) {
    qrn_task_t h = static_cast<qrn_task_s *>(&t);
    qrn_int32 numcon = 0, numvar = 0, numcone = 0;
    qrn_int64 numanz = 0, numqnz = 0;
    QRN_getnumcon(h, &numcon);
    QRN_getnumvar(h, &numvar);
    QRN_getnumcone(h, &numcone);
    QRN_getnumanz64(h, &numanz);
    qrn_int64 q = 0;
    QRN_getnumqobjnz64(h, &numqnz);
    for (qrn_int32 i = 0; i < numcon; ++i)
      if (QRN_getnumqconknz64(h, i, &q) == QRN_RES_OK) numqnz += q;
    // Every capacity is checked before any is set.
    need_capacity(maxnumcon, numcon, "The constraint capacity");
    need_capacity(maxnumvar, numvar, "The variable capacity");
    need_capacity(maxnumcone, numcone, "The cone capacity");
    need_capacity(maxnumanz, numanz, "The matrix non-zero capacity");
    need_capacity(maxnumqnz, numqnz, "The quadratic non-zero capacity");
    qrn_rescode r = QRN_RES_OK;
    if (r == QRN_RES_OK) r = QRN_putmaxnumcon(h, maxnumcon);
    if (r == QRN_RES_OK) r = QRN_putmaxnumvar(h, maxnumvar);
    if (r == QRN_RES_OK) r = QRN_putmaxnumcone(h, maxnumcone);
    if (r == QRN_RES_OK) r = QRN_putmaxnumanz(h, maxnumanz);
    if (r == QRN_RES_OK) r = QRN_putmaxnumqnz(h, maxnumqnz);
    if (r != QRN_RES_OK) fail(r, "A capacity was refused.");
  });
}

}  // extern "C"
