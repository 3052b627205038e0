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
  Djc,        // a row of a disjunctive term added by the mixed-integer search (no dual kept)
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

// ---- the same in two steps, for problems solved many times with other
// variable bounds and added domain memberships (lib/src/mipconic)

// One row before assembly: b - e'x lies in its cone (e over full columns).
struct ConicRow {
  SparseRow e;
  double b;
  RowRef ref;
};
struct ConicBlock {
  ipm::Cone cone;
  std::vector<ConicRow> rows;
};
// Equations, inequalities, then every other cone in the order met.
struct ConicRows {
  std::vector<ConicRow> zero, nonneg;
  std::vector<ConicBlock> blocks;
};

// The task's problem without its variable bounds.
struct ConicSource {
  ConicForm base;   // columns, objective and the data the result needs; no rows yet
  ConicRows con;    // linear rows and quadratic constraints
  ConicRows rest;   // scalar-variable cones, ACCs, semidefinite variables
};
// As conic_form; disjunctive constraints are refused unless djc_allowed
// (they are not part of the source: see read_djcs).
ConicSource conic_source(qrn_task_t task, const Problem &p, double convexity_tol, bool djc_allowed);

// A domain membership F x + barF(barX) + g - b in D, rows over full columns.
struct DomainRows {
  qrn_int32 type = QRN_DOMAIN_R;
  qrn_int64 nleft = 0;          // power cones: the number of leading entries
  std::vector<double> alpha;    // power cones: their weights
  std::vector<SparseRow> f;     // per entry
  std::vector<double> g;        // per entry: g - b
};
// The engine's form with the given variable bounds (as in Problem) and the
// memberships in extra added (as ACC rows; role Djc).
ConicForm conic_assemble(const ConicSource &src, const std::vector<qrn_int32> &bkx, const std::vector<double> &blx,
                         const std::vector<double> &bux, const std::vector<const DomainRows *> &extra,
                         bool presolve);
// The task's disjunctive constraints: per DJC its terms, each term the list
// of its domain memberships (f the form whose columns they refer to).
std::vector<std::vector<std::vector<DomainRows>>> read_djcs(qrn_task_t task, const ConicForm &f);
// Full column of entry (k, l), k >= l, of semidefinite variable j.
int svec_col(const ConicForm &f, qrn_int32 j, qrn_int32 k, qrn_int32 l);

// The engine's result in the task's vectors (sizes of the task; doty,
// barx, bars included) with statuses from the engine's status.
struct ConicOutcome {
  Solution sol;
  ipm::Result res;
};
ConicOutcome conic_solve(const Problem &p, const ConicForm &f, Run &run);
// The vectors and statuses alone (no information items, no run).
Solution conic_result(const Problem &p, const ConicForm &f, const ipm::Result &r);

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
