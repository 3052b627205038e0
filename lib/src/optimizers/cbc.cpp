// Mixed-integer linear problems with Cbc over Clp.
#include "cbc.hpp"

#include "CbcEventHandler.hpp"
#include "CbcHeuristic.hpp"
#include "CbcHeuristicFPump.hpp"
#include "CbcModel.hpp"
#include "CglClique.hpp"
#include "CglFlowCover.hpp"
#include "CglGomory.hpp"
#include "CglKnapsackCover.hpp"
#include "CglMixedIntegerRounding2.hpp"
#include "CglProbing.hpp"
#include "ClpSimplex.hpp"
#include "CoinError.hpp"
#include "OsiClpSolverInterface.hpp"

#include <cmath>

namespace qrn::opt {

namespace {

struct MipState {
  Run *run;
  const Problem *p;
  const CbcModel *main = nullptr;
  double best = inf;         // best incumbent seen (minimization form)
  long long last_nodes = -1;
  int improvements = 0;
};

// Node and incumbent events of the main search (sub-searches started by
// heuristics carry copies of the handler: their events are ignored).
class MipEvents : public CbcEventHandler {
 public:
  explicit MipEvents(MipState *s) : state_(s) {}
  MipEvents(const MipEvents &o) : CbcEventHandler(o), state_(o.state_) {}
  CbcEventHandler *clone() const override { return new MipEvents(*this); }
  CbcAction event(CbcEvent e) override {
    const CbcModel *m = getModel();
    if (m == nullptr || m != state_->main) return noAction;
    Run &run = *state_->run;
    Task &t = run.task;
    const long long nodes = m->getNodeCount();
    liinf(t, QRN_LIINF_MIP_NODES) = nodes;
    liinf(t, QRN_LIINF_MIP_SIMPLEX_ITER) = m->getIterationCount();
    dinf(t, QRN_DINF_TIME_MIP) = run.elapsed();
    const double bound = m->getBestPossibleObjValue();
    if (std::fabs(bound) < 1e50) dinf(t, QRN_DINF_MIP_OBJ_BOUND) = run.task_obj(bound);
    if ((e == solution || e == heuristicSolution) && m->bestSolution() != nullptr &&
        m->solver()->getNumCols() == state_->p->n) {
      const double obj = m->getMinimizationObjValue();
      if (obj < state_->best - 1e-12 * (1.0 + std::fabs(obj))) {  // each incumbent arrives twice
        state_->best = obj;
        ++state_->improvements;
        iinf(t, QRN_IINF_MIP_SOLUTIONS) = m->getSolutionCount();
        iinf(t, QRN_IINF_MIP_HEUR_SOLUTIONS) = m->getNumberHeuristicSolutions();
        iinf(t, QRN_IINF_MIP_INCUMBENT_UPDATES) = state_->improvements;
        dinf(t, QRN_DINF_MIP_OBJ) = run.task_obj(obj);
        iinf(t, QRN_IINF_MIP_BEST_SOLUTION_NODE) = static_cast<qrn_int32>(nodes);
        dinf(t, QRN_DINF_TIME_MIP_BEST_SOLUTION) = run.elapsed();
        if (state_->improvements == 1) {
          iinf(t, QRN_IINF_MIP_FIRST_SOLUTION_NODE) = static_cast<qrn_int32>(nodes);
          dinf(t, QRN_DINF_TIME_MIP_FIRST_SOLUTION) = run.elapsed();
          dinf(t, QRN_DINF_MIP_FIRST_OBJ) = run.task_obj(obj);
        }
        run.log(format("%10lld %17.9e %17.9e %8.2f  new integer solution", nodes, dinf(t, QRN_DINF_MIP_OBJ),
                       dinf(t, QRN_DINF_MIP_OBJ_BOUND), run.elapsed()));
        if (run.callback(QRN_CALLBACK_NEW_INT_SOLUTION)) return stop;
      }
    }
    if (e == node && nodes != state_->last_nodes) {
      state_->last_nodes = nodes;
      if (run.loglevel > 0 && run.log_due())
        run.log(format("%10lld %17.9e %17.9e %8.2f", nodes,
                       state_->best < inf ? run.task_obj(state_->best) : NAN, dinf(t, QRN_DINF_MIP_OBJ_BOUND),
                       run.elapsed()));
      if (run.iteration(QRN_CALLBACK_MIP_NODE)) return stop;
    }
    return run.stop_requested() ? stop : noAction;
  }

 private:
  MipState *state_;
};

double coin(double v) {
  if (v >= QRN_INFINITY) return COIN_DBL_MAX;
  if (v <= -QRN_INFINITY) return -COIN_DBL_MAX;
  return v;
}

}  // namespace

MipResult solve_mip(const Problem &p, Run &run) {
  const Task &t = run.task;
  const auto &ip = t.par.integer;
  const auto &dp = t.par.dou;
  const double s = p.maximize ? -1.0 : 1.0;
  OsiClpSolverInterface solver;
  solver.messageHandler()->setLogLevel(0);
  solver.getModelPtr()->setLogLevel(0);
  {
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
    solver.loadProblem(p.n, p.m, p.start.data(), p.index.data(), p.value.data(), collb.data(), colub.data(),
                       obj.data(), rowlb.data(), rowub.data());
  }
  for (qrn_int32 j = 0; j < p.n; ++j)
    if (p.integer[j]) solver.setInteger(j);
  solver.setDblParam(OsiPrimalTolerance, std::max(run.primal_tol, 1e-10));
  solver.setDblParam(OsiDualTolerance, std::max(run.dual_tol, 1e-10));
  solver.setHintParam(OsiDoPresolveInInitial, ip[QRN_IPAR_PRESOLVE] == QRN_ON, OsiHintDo);
  solver.setHintParam(OsiDoReducePrint, true, OsiHintDo);
  if (ip[QRN_IPAR_ALGORITHM] == QRN_ALGORITHM_PRIMAL_SIMPLEX) solver.setHintParam(OsiDoDualInInitial, false, OsiHintDo);

  CbcModel model(solver);
  model.setLogLevel(0);
  model.messageHandler()->setLogLevel(0);
  model.solver()->messageHandler()->setLogLevel(0);
  model.setAllowableFractionGap(dp[QRN_DPAR_MIP_REL_GAP]);
  model.setAllowableGap(dp[QRN_DPAR_MIP_ABS_GAP]);
  model.setIntegerTolerance(dp[QRN_DPAR_MIP_INT_TOL]);
  model.setMaximumNodes(ip[QRN_IPAR_MIP_NODE_LIMIT]);
  model.setMaximumSolutions(ip[QRN_IPAR_MIP_SOLUTION_LIMIT]);
  // The run's limit is the task's, or less in a batch with a time limit.
  double seconds = std::min(dp[QRN_DPAR_MIP_TIME_LIMIT], run.time_limit);
  if (seconds < QRN_INFINITY) {
    model.setMaximumSeconds(std::max(0.0, seconds - run.elapsed()));
    model.setUseElapsedTime(true);
  }
  if (std::fabs(dp[QRN_DPAR_MIP_OBJ_CUTOFF]) < QRN_INFINITY) model.setCutoff(s * (dp[QRN_DPAR_MIP_OBJ_CUTOFF] - p.cfix));
  if (ip[QRN_IPAR_MIP_SEED] != 0) model.setRandomSeed(ip[QRN_IPAR_MIP_SEED]);
  model.setNumberThreads(0);
  // Cut generators and heuristics; the models live as long as `model`.
  CglProbing probing;
  probing.setUsingObjective(true);
  probing.setMaxPass(ip[QRN_IPAR_MIP_PROBING_LEVEL]);
  probing.setMaxProbe(10 * ip[QRN_IPAR_MIP_PROBING_LEVEL]);
  CglGomory gomory;
  CglKnapsackCover knapsack;
  CglMixedIntegerRounding2 mir;
  CglClique clique;
  clique.setStarCliqueReport(false);
  clique.setRowCliqueReport(false);
  CglFlowCover flow;
  if (ip[QRN_IPAR_MIP_CUTS] == QRN_ON && p.numint > 0) {
    if (ip[QRN_IPAR_MIP_PROBING_LEVEL] > 0) model.addCutGenerator(&probing, -1, "Probing");
    model.addCutGenerator(&gomory, -1, "Gomory");
    model.addCutGenerator(&knapsack, -1, "Knapsack");
    model.addCutGenerator(&mir, -1, "MIR");
    model.addCutGenerator(&clique, -1, "Clique");
    model.addCutGenerator(&flow, -1, "FlowCover");
    model.setMaximumCutPassesAtRoot(ip[QRN_IPAR_MIP_CUT_ROUNDS]);
  }
  CbcRounding rounding(model);
  CbcHeuristicFPump pump(model);
  if (ip[QRN_IPAR_MIP_HEURISTICS] == QRN_ON && p.numint > 0) {
    model.addHeuristic(&rounding);
    model.addHeuristic(&pump);
  }
  MipState state{&run, &p};
  MipEvents events(&state);
  model.passInEventHandler(&events);
  state.main = &model;

  run.log(format("%10s %17s %17s %8s", "NODES", "BEST OBJ", "BOUND", "TIME"));
  try {
    model.branchAndBound();
  } catch (const CoinError &e) {
    fail(QRN_RES_ERR_OPT_SOLVER, "The mixed-integer solver failed: " + e.message());
  }

  MipResult r;
  r.nodes = model.getNodeCount();
  r.iterations = model.getIterationCount();
  r.solutions = model.getSolutionCount();
  const double bound = model.getBestPossibleObjValue();
  r.bound = std::fabs(bound) < 1e50 ? run.task_obj(bound) : (p.maximize ? inf : -inf);
  if (model.bestSolution() != nullptr) {
    r.has_solution = true;
    r.x.assign(model.bestSolution(), model.bestSolution() + p.n);
    r.objective = primal_obj(p, r.x.data());
  }
  if (model.isContinuousUnbounded()) {
    r.status = MipResult::unbounded;
  } else if (model.isProvenInfeasible() && !r.has_solution) {
    r.status = MipResult::infeasible;
  } else if (model.isProvenOptimal() && r.has_solution) {
    r.status = MipResult::optimal;
    const double gap = std::fabs(r.objective - r.bound);
    if (gap > 1e-6 * (1.0 + std::fabs(r.objective)) && run.ending == Ending::normal) run.ending = Ending::gap;
  } else {
    r.status = MipResult::limit;
    if (run.ending == Ending::normal) {
      switch (model.secondaryStatus()) {
        case 3: run.ending = Ending::nodes; break;
        case 4: run.ending = Ending::time; break;
        case 6: run.ending = Ending::solutions; break;
        case 8: run.ending = Ending::iterations; break;
        case 2: run.ending = Ending::gap; break;
        default: run.ending = Ending::numerical;
      }
    }
  }
  return r;
}

}  // namespace qrn::opt
