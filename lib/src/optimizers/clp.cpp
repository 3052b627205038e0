// Clp underneath: dual and primal simplex through ClpSolve, and the
// interior-point method (ClpInterior) driven directly so that every iteration
// can report progress and be stopped.
#include "clp.hpp"

#include "ClpCholeskyBase.hpp"
#include "ClpEventHandler.hpp"
#include "ClpInterior.hpp"
#include "ClpSimplex.hpp"
#include "ClpSolve.hpp"
#include "CoinError.hpp"

#include <cmath>

namespace qrn::opt {

namespace {

double coin(double v) {
  if (v >= QRN_INFINITY) return COIN_DBL_MAX;
  if (v <= -QRN_INFINITY) return -COIN_DBL_MAX;
  return v;
}

// Simplex iterations: progress, log lines, limits, stop. Clp clones the
// handler (also into a presolved copy of the model), so all state lives in
// the Run.
class SimplexEvents : public ClpEventHandler {
 public:
  explicit SimplexEvents(Run *run) : run_(run) {}
  SimplexEvents(const SimplexEvents &o) : ClpEventHandler(o), run_(o.run_) {}
  ClpEventHandler *clone() const override { return new SimplexEvents(*this); }
  int event(Event e) override {
    if (e != endOfIteration || model_ == nullptr) return -1;
    Task &t = run_->task;
    const int it = model_->numberIterations();
    iinf(t, QRN_IINF_SPX_ITER) = it;
    iinf(t, model_->algorithm() > 0 ? QRN_IINF_SPX_PRIMAL_ITER : QRN_IINF_SPX_DUAL_ITER) = it;
    dinf(t, QRN_DINF_SPX_PRIMAL_OBJ) = run_->task_obj(model_->objectiveValue());
    dinf(t, QRN_DINF_SPX_SUM_PRIMAL_INFEAS) = model_->sumPrimalInfeasibilities();
    dinf(t, QRN_DINF_SPX_SUM_DUAL_INFEAS) = model_->sumDualInfeasibilities();
    dinf(t, QRN_DINF_TIME_SIMPLEX) = run_->elapsed();
    if (run_->loglevel > 0 && run_->log_due())
      run_->log(format("%8d %17.9e %14.6e %14.6e %8.2f", it, dinf(t, QRN_DINF_SPX_PRIMAL_OBJ),
                       dinf(t, QRN_DINF_SPX_SUM_PRIMAL_INFEAS), dinf(t, QRN_DINF_SPX_SUM_DUAL_INFEAS),
                       run_->elapsed()));
    return run_->iteration(QRN_CALLBACK_SIMPLEX_ITERATION) ? 0 : -1;
  }

 private:
  Run *run_;
};

// The interior-point method has no event handler; its factorization is
// called once per iteration, which is where progress is reported and a stop
// is made (by lowering the iteration limit, which ends the run cleanly).
class ProgressCholesky : public ClpCholeskyBase {
 public:
  explicit ProgressCholesky(Run *run) : ClpCholeskyBase(), run_(run) {}
  ProgressCholesky(const ProgressCholesky &o) : ClpCholeskyBase(o), run_(o.run_), last_(o.last_) {}
  ClpCholeskyBase *clone() const override { return new ProgressCholesky(*this); }
  int factorize(const CoinWorkDouble *diagonal, int *rowsDropped) override {
    const int it = model_->numberIterations();
    if (it != last_ && it >= 0) {
      last_ = it;
      Task &t = run_->task;
      iinf(t, QRN_IINF_IPM_ITER) = it;
      dinf(t, QRN_DINF_IPM_PRIMAL_OBJ) = run_->task_obj(static_cast<double>(model_->primalObjective()));
      dinf(t, QRN_DINF_IPM_DUAL_OBJ) = run_->task_obj(static_cast<double>(model_->dualObjective()));
      dinf(t, QRN_DINF_IPM_COMPLEMENTARITY) = static_cast<double>(model_->complementarityGap());
      dinf(t, QRN_DINF_IPM_PRIMAL_INFEAS) = static_cast<double>(model_->sumPrimalInfeasibilities());
      dinf(t, QRN_DINF_IPM_DUAL_INFEAS) = static_cast<double>(model_->sumDualInfeasibilities());
      dinf(t, QRN_DINF_TIME_IPM) = run_->elapsed();
      if (run_->loglevel > 0 && run_->log_due())
        run_->log(format("%8d %17.9e %17.9e %12.4e %8.2f", it, dinf(t, QRN_DINF_IPM_PRIMAL_OBJ),
                         dinf(t, QRN_DINF_IPM_DUAL_OBJ), dinf(t, QRN_DINF_IPM_COMPLEMENTARITY), run_->elapsed()));
      if (run_->iteration(QRN_CALLBACK_BARRIER_ITERATION)) model_->setMaximumBarrierIterations(0);
    }
    return ClpCholeskyBase::factorize(diagonal, rowsDropped);
  }

 private:
  Run *run_;
  int last_ = -2;
};

// A handler that does nothing: ClpInterior reaches the simplex model's event
// handler, and the default one asserts that it belongs to the caller.
class QuietEvents : public ClpEventHandler {
 public:
  ClpEventHandler *clone() const override { return new QuietEvents(*this); }
  int event(Event) override { return -1; }
};

void classify(ClpSimplex &model, Run &run, LpResult &r, bool ray_from_dual) {
  switch (model.status()) {
    case 0: r.status = LpResult::optimal; break;
    case 1: {
      r.status = LpResult::infeasible;
      double *ray = model.infeasibilityRay(false);
      if (ray != nullptr) r.ray.assign(ray, ray + model.numberRows());
      delete[] ray;
      break;
    }
    case 2: {
      r.status = LpResult::unbounded;
      double *ray = model.unboundedRay();
      if (ray != nullptr) r.ray.assign(ray, ray + model.numberColumns());
      delete[] ray;
      break;
    }
    case 3:
      r.status = LpResult::stopped;
      if (run.ending == Ending::normal) run.ending = Ending::iterations;
      break;
    case 5:
      r.status = LpResult::stopped;
      if (run.ending == Ending::normal) run.ending = Ending::numerical;
      break;
    default:
      r.status = LpResult::stopped;
      if (run.ending == Ending::normal) run.ending = Ending::numerical;
  }
  (void)ray_from_dual;
}

}  // namespace

std::unique_ptr<ClpSimplex> build_clp(const Problem &p, const Run &run) {
  auto model = std::make_unique<ClpSimplex>();
  model->setLogLevel(0);
  const double s = p.maximize ? -1.0 : 1.0;
  std::vector<double> obj(p.n), collb(p.n), colub(p.n), rowlb(p.m), rowub(p.m);
  for (qrn_int32 j = 0; j < p.n; ++j) {
    obj[j] = s * p.c[j];
    collb[j] = coin(p.blx[j]);
    colub[j] = coin(p.bux[j]);
  }
  for (qrn_int32 i = 0; i < p.m; ++i) {
    rowlb[i] = coin(p.blc[i]);
    rowub[i] = coin(p.buc[i]);
  }
  model->loadProblem(p.n, p.m, p.start.data(), p.index.data(), p.value.data(), collb.data(), colub.data(),
                     obj.data(), rowlb.data(), rowub.data());
  if (p.quadratic()) {
    // One triangle, by columns: Clp reads it as the symmetric Q of 1/2 x'Qx.
    std::vector<CoinBigIndex> qstart(p.n + 1, 0);
    for (qrn_int32 j : p.qj) ++qstart[j + 1];
    for (qrn_int32 j = 0; j < p.n; ++j) qstart[j + 1] += qstart[j];
    std::vector<int> row(p.qv.size());
    std::vector<double> val(p.qv.size());
    std::vector<CoinBigIndex> next(qstart.begin(), qstart.end() - 1);
    for (size_t k = 0; k < p.qv.size(); ++k) {
      const CoinBigIndex w = next[p.qj[k]]++;
      row[w] = p.qi[k];
      val[w] = s * p.qv[k];
    }
    model->loadQuadraticObjective(p.n, qstart.data(), row.data(), val.data());
  }
  model->setPrimalTolerance(std::max(run.primal_tol, 1e-10));
  model->setDualTolerance(std::max(run.dual_tol, 1e-10));
  const Task &t = run.task;
  switch (t.par.integer[QRN_IPAR_SCALING]) {
    case QRN_SCALING_NONE: model->scaling(0); break;
    case QRN_SCALING_GEOMETRIC: model->scaling(2); break;
    case QRN_SCALING_EQUILIBRATE: model->scaling(1); break;
    default: model->scaling(3);
  }
  return model;
}

void read_solution(ClpSimplex &model, const Problem &p, LpResult &r) {
  const double *x = model.primalColumnSolution();
  const double *y = model.dualRowSolution();
  r.x.assign(x, x + p.n);
  r.xc.assign(p.m, 0.0);
  mul_a(p, r.x.data(), r.xc.data());
  r.y.assign(y, y + p.m);
  // dj = s c + s Q x - A'y (minimization form)
  const double s = p.maximize ? -1.0 : 1.0;
  std::vector<double> aty(p.n), qx(p.n);
  mul_at(p, r.y.data(), aty.data());
  mul_q(p, r.x.data(), qx.data());
  r.dj.resize(p.n);
  for (qrn_int32 j = 0; j < p.n; ++j) r.dj[j] = s * (p.c[j] + qx[j]) - aty[j];
  r.iterations = model.numberIterations();
  r.objective = model.objectiveValue();
}

static void read_basis(ClpSimplex &model, const Problem &p, LpResult &r) {
  r.basis = true;
  r.basic_col.resize(p.n);
  r.basic_row.resize(p.m);
  int count = 0;
  for (qrn_int32 j = 0; j < p.n; ++j) count += r.basic_col[j] = model.getColumnStatus(j) == ClpSimplex::basic;
  for (qrn_int32 i = 0; i < p.m; ++i) count += r.basic_row[i] = model.getRowStatus(i) == ClpSimplex::basic;
  if (count != p.m) r.basis = false;
}

LpResult simplex_on(ClpSimplex &model, const Problem &p, Run &run, bool primal, bool presolve) {
  SimplexEvents events(&run);
  model.passInEventHandler(&events);
  model.setMaximumIterations(run.task.par.integer[QRN_IPAR_SIMPLEX_MAX_ITER]);
  ClpSolve options;
  options.setSolveType(primal ? ClpSolve::usePrimal : ClpSolve::useDual);
  options.setPresolveType(presolve ? ClpSolve::presolveOn : ClpSolve::presolveOff);
  LpResult r;
  try {
    model.initialSolve(options);
  } catch (const CoinError &e) {
    fail(QRN_RES_ERR_OPT_SOLVER, "The simplex solver failed: " + e.message());
  }
  read_solution(model, p, r);
  read_basis(model, p, r);
  classify(model, run, r, !primal);
  return r;
}

LpResult simplex(const Problem &p, Run &run, bool primal, bool presolve) {
  auto model = build_clp(p, run);
  return simplex_on(*model, p, run, primal, presolve);
}

LpResult barrier(const Problem &p, Run &run, LpResult *crossed) {
  auto model = build_clp(p, run);
  QuietEvents quiet;
  model->passInEventHandler(&quiet);
  LpResult r;
  {
    ClpInterior ipm;
    ipm.borrowModel(*model);
    auto *cholesky = new ProgressCholesky(&run);
    if (p.quadratic()) cholesky->setKKT(true);
    ipm.setCholesky(cholesky);  // owned by ipm
    ipm.setMaximumBarrierIterations(run.task.par.integer[QRN_IPAR_IPM_MAX_ITER]);
    try {
      ipm.primalDual();
    } catch (const CoinError &e) {
      ipm.returnModel(*model);
      fail(QRN_RES_ERR_OPT_SOLVER, "The interior-point solver failed: " + e.message());
    }
    ipm.returnModel(*model);
  }
  read_solution(*model, p, r);
  r.iterations = model->numberIterations();
  iinf(run.task, QRN_IINF_IPM_ITER) = r.iterations;
  switch (model->status()) {
    case 0: r.status = LpResult::optimal; break;  // to be verified by the caller
    case 1: r.status = LpResult::infeasible; break;
    case 2: r.status = LpResult::unbounded; break;
    default:
      r.status = LpResult::stopped;
      if (run.ending == Ending::normal)
        run.ending = model->status() == 3 && r.iterations >= run.task.par.integer[QRN_IPAR_IPM_MAX_ITER]
                         ? Ending::iterations
                         : Ending::numerical;
  }
  if (crossed != nullptr && r.status != LpResult::stopped) {
    if (run.callback(QRN_CALLBACK_BEGIN_CROSSOVER)) return r;
    const double t0 = run.elapsed();
    run.log("Crossover");
    run.log(format("%8s %17s %14s %14s %8s", "ITER", "OBJECTIVE", "PRIMAL INF", "DUAL INF", "TIME"));
    SimplexEvents events(&run);
    model->passInEventHandler(&events);
    model->setMaximumIterations(run.task.par.integer[QRN_IPAR_SIMPLEX_MAX_ITER]);
    try {
      model->primal(1);  // a values pass from the interior point, ending at a basis
    } catch (const CoinError &e) {
      fail(QRN_RES_ERR_OPT_SOLVER, "Crossover failed: " + e.message());
    }
    read_solution(*model, p, *crossed);
    read_basis(*model, p, *crossed);
    classify(*model, run, *crossed, false);
    iinf(run.task, QRN_IINF_CROSSOVER_PRIMAL_ITER) = crossed->iterations;
    dinf(run.task, QRN_DINF_TIME_CROSSOVER) = run.elapsed() - t0;
    run.callback(QRN_CALLBACK_END_CROSSOVER);
  }
  return r;
}

}  // namespace qrn::opt
