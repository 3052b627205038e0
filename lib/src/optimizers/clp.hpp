// The Clp adapter: simplex and interior-point runs on a snapshot. Everything
// here works on the minimization form of the problem (objective negated when
// the task maximizes); the caller turns duals back into the task's sense.
#pragma once

#include "problem.hpp"
#include "run.hpp"

#include <memory>
#include <vector>

class ClpSimplex;

namespace qrn::opt {

struct LpResult {
  enum Status { optimal, infeasible, unbounded, stopped, failed } status = failed;
  bool basis = false;          // basic_col/basic_row are a basis
  std::vector<double> x, xc;   // primal values
  std::vector<double> y, dj;   // minimization-form duals: dj = c + Qx - A'y
  std::vector<char> basic_col, basic_row;
  std::vector<double> ray;     // a Farkas ray (m) or an unbounded direction (n), if the solver gave one
  int iterations = 0;
  double objective = 0.0;      // of the minimization form, without cfix
};

// A Clp model of the problem in minimization form; numerical parameters of the
// task applied.
std::unique_ptr<ClpSimplex> build_clp(const Problem &p, const Run &run);

// Simplex from scratch (primal or dual), with or without presolve.
LpResult simplex(const Problem &p, Run &run, bool primal, bool presolve);
// The same on a model made by build_clp (possibly changed since); warm starts
// from the model's current basis when `warm`.
LpResult simplex_on(ClpSimplex &model, const Problem &p, Run &run, bool primal, bool presolve);

// Interior-point method; when `crossed` is given, crossover follows and
// *crossed receives the basic solution.
LpResult barrier(const Problem &p, Run &run, LpResult *crossed);

// Reads the current solution of a model into a result (duals recomputed from
// y so that dj = c + Qx - A'y holds exactly).
void read_solution(ClpSimplex &model, const Problem &p, LpResult &r);

}  // namespace qrn::opt
