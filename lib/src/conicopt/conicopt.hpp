// The conic optimizer of tasks: the task's problem (linear rows, bounds,
// scalar-variable cones, quadratic constraints, ACCs, semidefinite variables)
// turned into the interior-point engine's form (lib/src/ipm), the engine run
// with the task's parameters, callback and log, and its result turned back
// into the task's interior solution. docs/conic-optimizer.md has the details.
#pragma once

#include "ipm.hpp"
#include "problem.hpp"
#include "run.hpp"

#include <utility>
#include <vector>

namespace qrn::opt {

// What one engine row stands for in the task (its dual goes there).
enum class RowRole : unsigned char {
  ConLower,   // a'x - lc >= 0 of constraint item
  ConUpper,   // uc - a'x >= 0
  ConFixed,   // a'x - lc = 0
  VarLower,   // x_j - lx_j >= 0 of variable item
  VarUpper,   // ux_j - x_j >= 0
  VarFixed,   // x_j - lx_j = 0 (fixed variables kept when presolve is off)
  QconUpper,  // first row of the rotated cone of the quadratic constraint item (uc - a'x)
  QconLower,  // the same for a lower bound (a'x - lc)
  QconAux,    // the other rows of that cone
  ConeMember, // x_item, member of a scalar-variable cone
  Acc,        // stacked ACC row item
  AccNeg,     // stacked ACC row item of an RMINUS domain, negated
  Bar,        // svec entry of a semidefinite variable: item is its full column
};

struct RowRef {
  RowRole role;
  qrn_int64 item;
};

using SparseRow = std::vector<std::pair<int, double>>;  // (full column, value)

// The task's problem in the engine's form. Full columns are the task's
// scalar variables, then the svec entries of each semidefinite variable;
// engine columns are the full columns that presolve kept.
struct ConicForm {
  ipm::Problem eng;          // minimization, reduced
  std::vector<RowRef> rows;  // per engine row
  qrn_int32 n = 0, m = 0;    // task variables and constraints
  qrn_int64 accrows = 0;     // stacked ACC rows
  std::vector<int> bardim, barstart;  // per semidefinite variable: dimension, first full column
  int nfull = 0;
  double sign = 1.0;                  // -1 when maximizing (the engine minimizes sign * objective)
  std::vector<int> col;               // full column -> engine column, -1 when removed (fixed)
  std::vector<double> fixval;         // value of a removed column
  std::vector<double> cfull;          // minimization-form c over the full columns
  std::vector<qrn_int32> pi, pj;      // minimization-form P, lower triplets over the full columns
  std::vector<double> pv;
  std::vector<SparseRow> fixed_col;   // per removed column: (engine row, A entry) of its column
  std::vector<SparseRow> bara;        // per constraint with barA: (full column, svec coefficient)
  std::vector<std::vector<qrn_int32>> qi, qj;  // per constraint: lower triplets of Q_i (empty when none)
  std::vector<std::vector<double>> qv;
  int removed_cols = 0, removed_rows = 0;
  int qcones = 0;                     // quadratic constraints stated as rotated cones
};

// Reads the task (through the C interface) into the engine's form. Refuses
// (Failure) disjunctive constraints (QRN_RES_ERR_OPT_DJC) and quadratic
// constraints that are not convex (QRN_RES_ERR_OPT_QCON_NONCONVEX).
// presolve: remove fixed variables and empty orthant rows that hold.
ConicForm conic_form(qrn_task_t task, const Problem &p, bool presolve, double convexity_tol);

// The engine's result in the task's vectors (sizes of the task; doty,
// barx, bars included) with statuses from the engine's status.
struct ConicOutcome {
  Solution sol;
  ipm::Result res;
};
ConicOutcome conic_solve(const Problem &p, const ConicForm &f, Run &run);

// The engine's settings from the task's parameters and the run's limits.
ipm::Settings conic_settings(const Task &t, const Run &run);

// QRN_toconic (documented in quarn.h).
void toconic(Task &t);

// A convex quadratic form 1/2 x'Qx (lower triplets over variables) as
// 1/2 ||F x||^2: rows of F over the variables. Returns false when Q has an
// eigenvalue below -tol * max(1, max |Q_ij|) (not convex).
bool factor_psd(const std::vector<qrn_int32> &qi, const std::vector<qrn_int32> &qj, const std::vector<double> &qv,
                double scale, double tol, std::vector<SparseRow> &rows);

}  // namespace qrn::opt
