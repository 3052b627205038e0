// One run of the interior-point engine on a task's conic form, and its result
// in the task's vectors.
#include "conicopt.hpp"
#include "optimize.hpp"

#include <algorithm>
#include <cmath>

namespace qrn::opt {

namespace {
constexpr double kSqrt2 = 1.41421356237309504880;

// Columns k of a packed d x d lower triangle that lie off the diagonal.
std::vector<char> offdiag(int d) {
  std::vector<char> o;
  for (int l = 0; l < d; ++l)
    for (int k = l; k < d; ++k) o.push_back(k != l);
  return o;
}
}  // namespace

ipm::Settings conic_settings(const Task &t, const Run &run) {
  ipm::Settings st;
  st.tol_feas = std::min(t.par.dou[QRN_DPAR_PRIMAL_FEAS_TOL], t.par.dou[QRN_DPAR_DUAL_FEAS_TOL]);
  st.tol_gap_rel = t.par.dou[QRN_DPAR_OPT_TOL];
  st.tol_gap_abs = t.par.dou[QRN_DPAR_OPT_TOL];
  // The engine measures a certificate relative to its objective (-b'y = 1), the
  // parameter absolutely: the engine gets 100 times the parameter (1e-8 by default).
  st.tol_infeas = 100.0 * t.par.dou[QRN_DPAR_INFEAS_TOL];
  st.max_iter = t.par.integer[QRN_IPAR_IPM_MAX_ITER];
  st.threads = t.par.integer[QRN_IPAR_THREADS];
  st.step_fraction = t.par.dou[QRN_DPAR_IPM_STEP_FRACTION];
  st.equilibrate = t.par.integer[QRN_IPAR_SCALING] != QRN_SCALING_NONE;
  st.max_time = std::isfinite(run.time_limit) ? std::max(0.0, run.time_limit - run.elapsed()) : HUGE_VAL;
  return st;
}

ConicOutcome conic_solve(const Problem &p, const ConicForm &f, Run &run) {
  Task &t = run.task;
  const ipm::Settings st = conic_settings(t, run);
  const double t0 = run.elapsed();
  auto progress = [&](const ipm::Iteration &it) {
    iinf(t, QRN_IINF_IPM_ITER) = it.iter;
    dinf(t, QRN_DINF_IPM_PRIMAL_OBJ) = run.task_obj(it.pobj);
    dinf(t, QRN_DINF_IPM_DUAL_OBJ) = run.task_obj(it.dobj);
    dinf(t, QRN_DINF_IPM_PRIMAL_RESIDUAL_REL) = it.pres;
    dinf(t, QRN_DINF_IPM_DUAL_RESIDUAL_REL) = it.dres;
    dinf(t, QRN_DINF_IPM_PRIMAL_INFEAS) = it.pres;
    dinf(t, QRN_DINF_IPM_DUAL_INFEAS) = it.dres;
    dinf(t, QRN_DINF_IPM_COMPLEMENTARITY) = it.gap;
    dinf(t, QRN_DINF_IPM_REL_GAP) = it.gap / std::max(1.0, std::min(std::fabs(it.pobj), std::fabs(it.dobj)));
    dinf(t, QRN_DINF_IPM_MU) = it.mu;
    dinf(t, QRN_DINF_IPM_TAU) = it.tau;
    dinf(t, QRN_DINF_IPM_KAPPA) = it.kappa;
    dinf(t, QRN_DINF_IPM_PRIMAL_STEP) = it.step;
    dinf(t, QRN_DINF_IPM_DUAL_STEP) = it.step;
    dinf(t, QRN_DINF_TIME_IPM) = t0 + it.time;
    return run.iteration(QRN_CALLBACK_BARRIER_ITERATION);
  };
  // The engine's header and closing lines are summaries; its iteration lines
  // follow the log level's pace (every one at level 2).
  int lines = 0;
  auto log = [&](const std::string &line) {
    ++lines;
    const bool iteration = lines > 2 && !line.empty() && std::isdigit(static_cast<unsigned char>(line[0]));
    static const std::string ended = "Optimizer terminated: ";
    if (line.compare(0, ended.size(), ended) == 0) run.log("Interior-point optimizer ended: " + line.substr(ended.size()));
    else if (!iteration) run.log(line);
    else if (lines == 3 || run.log_due()) run.log(line);
  };

  ConicOutcome out;
  out.res = ipm::solve(f.eng, st, progress, log);
  const ipm::Result &r = out.res;
  dinf(t, QRN_DINF_TIME_IPM) = run.elapsed();
  dinf(t, QRN_DINF_TIME_IPM_FACTOR) = r.factor_time;
  iinf(t, QRN_IINF_IPM_ITER) = r.iterations;
  iinf(t, QRN_IINF_IPM_FACTOR_DIM) = f.eng.n + static_cast<qrn_int32>(f.eng.b.size());
  iinf(t, QRN_IINF_IPM_PRIMAL_CERT) = r.status == ipm::Status::PrimalInfeasible;
  iinf(t, QRN_IINF_IPM_DUAL_CERT) = r.status == ipm::Status::DualInfeasible;
  iinf(t, QRN_IINF_IPM_STALLED) = r.status == ipm::Status::Unknown;
  switch (r.status) {
    case ipm::Status::Stopped:
      if (run.ending == Ending::normal) run.ending = Ending::callback;
      break;
    case ipm::Status::IterationLimit: run.ending = Ending::iterations; break;
    case ipm::Status::TimeLimit: run.ending = Ending::time; break;
    case ipm::Status::Unknown: run.ending = Ending::numerical; break;
    default: break;
  }
  out.sol = conic_result(p, f, r);
  return out;
}

Solution conic_result(const Problem &p, const ConicForm &f, const ipm::Result &r) {
  // ---- back to the task's vectors (engine values are of the minimization form)
  const bool farkas = r.status == ipm::Status::PrimalInfeasible;
  const bool ray = r.status == ipm::Status::DualInfeasible;
  const double s = f.sign;
  std::vector<double> x(f.nfull, 0.0);
  for (int c = 0; c < f.nfull; ++c) x[c] = f.col[c] >= 0 ? r.x[f.col[c]] : (ray || farkas ? 0.0 : f.fixval[c]);
  std::vector<double> ycon(p.m, 0.0), slc(p.m, 0.0), suc(p.m, 0.0), ddj(p.n, 0.0), slx(p.n, 0.0), sux(p.n, 0.0),
      snx(p.n, 0.0), doty(f.accrows, 0.0), barsv(f.nfull, 0.0);
  std::vector<char> fixed_con(p.m, 0), fixed_var(p.n, 0);
  if (!ray) {
    for (size_t i = 0; i < f.rows.size(); ++i) {
      const double y = r.y[i];
      const qrn_int64 k = f.rows[i].item;
      switch (f.rows[i].role) {
        case RowRole::ConLower: slc[k] += y; break;
        case RowRole::ConUpper: suc[k] += y; break;
        case RowRole::ConFixed: ycon[k] += y, fixed_con[k] = 1; break;
        case RowRole::VarLower: slx[k] += y; break;
        case RowRole::VarUpper: sux[k] += y; break;
        case RowRole::VarFixed: ddj[k] += y, fixed_var[k] = 1; break;
        case RowRole::QconUpper: suc[k] += y; break;
        case RowRole::QconLower: slc[k] += y; break;
        case RowRole::QconAux: break;
        case RowRole::ConeMember: snx[k] = y; break;
        case RowRole::Acc: doty[k] = y; break;
        case RowRole::AccNeg: doty[k] = -y; break;
        case RowRole::Bar: barsv[k] = y; break;
        case RowRole::Djc: break;
      }
    }
    // Removed (fixed) columns: the multiplier of x_j = v is what stationarity
    // leaves over, c_j + (Px)_j + A_j'y (without c and P for a certificate).
    for (qrn_int32 j = 0; j < p.n; ++j) {
      if (f.col[j] >= 0) continue;
      double d = farkas ? 0.0 : f.cfull[j];
      for (auto &e : f.fixed_col[j]) d += e.second * r.y[e.first];
      ddj[j] += d;
      fixed_var[j] = 1;
    }
    if (!farkas)
      for (size_t k = 0; k < f.pv.size(); ++k) {
        const int a = f.pi[k], b = f.pj[k];
        if (a < p.n && f.col[a] < 0) ddj[a] += f.pv[k] * x[b];
        if (a != b && b < p.n && f.col[b] < 0) ddj[b] += f.pv[k] * x[a];
      }
  }

  Solution sol;
  sol.defined = true;
  sol.xx.assign(x.begin(), x.begin() + p.n);
  // xc = A x + 1/2 x'Q_i x + barA(barX)
  sol.xc.assign(p.m, 0.0);
  mul_a(p, sol.xx.data(), sol.xc.data());
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (!f.bara.empty())
      for (auto &e : f.bara[i]) sol.xc[i] += e.second * x[e.first];
    if (!f.qi.empty() && !ray)
      for (size_t k = 0; k < f.qv[i].size(); ++k) {
        const qrn_int32 a = f.qi[i][k], b = f.qj[i][k];
        sol.xc[i] += (a == b ? 0.5 : 1.0) * f.qv[i][k] * sol.xx[a] * sol.xx[b];
      }
  }
  // Signs of the task: y = slc - suc, the sides of a fixed item split by sign.
  auto split = [&](double v, double &lo, double &up) {
    if (s * v > 0) lo = v, up = 0.0;
    else lo = 0.0, up = -v;
  };
  sol.y.assign(p.m, 0.0), sol.slc.assign(p.m, 0.0), sol.suc.assign(p.m, 0.0);
  for (qrn_int32 i = 0; i < p.m; ++i) {
    if (fixed_con[i]) split(s * (ycon[i] + slc[i] - suc[i]), sol.slc[i], sol.suc[i]);
    else sol.slc[i] = s * slc[i], sol.suc[i] = s * suc[i];
    sol.y[i] = sol.slc[i] - sol.suc[i];
  }
  sol.slx.assign(p.n, 0.0), sol.sux.assign(p.n, 0.0), sol.snx.assign(p.n, 0.0);
  for (qrn_int32 j = 0; j < p.n; ++j) {
    if (fixed_var[j]) split(s * (ddj[j] + slx[j] - sux[j]), sol.slx[j], sol.sux[j]);
    else sol.slx[j] = s * slx[j], sol.sux[j] = s * sux[j];
    sol.snx[j] = s * snx[j];
  }
  sol.doty.resize(doty.size());
  for (size_t k = 0; k < doty.size(); ++k) sol.doty[k] = s * doty[k];
  for (size_t j = 0; j < f.bardim.size(); ++j) {
    const int d = f.bardim[j], len = d * (d + 1) / 2;
    const std::vector<char> off = offdiag(d);
    std::vector<double> bx(len), bs(len);
    for (int k = 0; k < len; ++k) {
      const double scale = off[k] ? 1.0 / kSqrt2 : 1.0;
      bx[k] = x[f.barstart[j] + k] * scale;
      bs[k] = s * barsv[f.barstart[j] + k] * scale;
    }
    sol.barx.push_back(std::move(bx));
    sol.bars.push_back(std::move(bs));
  }
  switch (r.status) {
    case ipm::Status::Optimal:
      sol.prosta = QRN_PRO_STA_PRIM_AND_DUAL_FEAS;
      sol.solsta = QRN_SOL_STA_OPTIMAL;
      break;
    case ipm::Status::PrimalInfeasible:
      sol.prosta = QRN_PRO_STA_PRIM_INFEAS;
      sol.solsta = QRN_SOL_STA_PRIM_INFEAS_CER;
      break;
    case ipm::Status::DualInfeasible:
      sol.prosta = QRN_PRO_STA_DUAL_INFEAS;
      sol.solsta = QRN_SOL_STA_DUAL_INFEAS_CER;
      break;
    default:
      sol.prosta = QRN_PRO_STA_UNKNOWN;
      sol.solsta = QRN_SOL_STA_UNKNOWN;
      break;
  }
  // Keys: interior points sit inside their bounds; a certificate marks the
  // sides that carry a multiplier.
  sol.skc.assign(p.m, QRN_SK_UNKNOWN);
  sol.skx.assign(p.n, QRN_SK_UNKNOWN);
  sol.skn.assign(p.numcone, QRN_SK_UNKNOWN);
  for (qrn_int32 i = 0; i < p.m; ++i)
    sol.skc[i] = farkas ? (sol.slc[i] != 0 ? QRN_SK_AT_LOWER : sol.suc[i] != 0 ? QRN_SK_AT_UPPER : QRN_SK_UNKNOWN)
                        : key_by_value(sol.xc[i], p.blc[i], p.buc[i], QRN_SK_BASIS);
  for (qrn_int32 j = 0; j < p.n; ++j)
    sol.skx[j] = farkas ? (sol.slx[j] != 0 ? QRN_SK_AT_LOWER : sol.sux[j] != 0 ? QRN_SK_AT_UPPER : QRN_SK_UNKNOWN)
                        : key_by_value(sol.xx[j], p.blx[j], p.bux[j], QRN_SK_BASIS);
  return sol;
}

}  // namespace qrn::opt
