// The problem as the optimizers see it: one snapshot of the task's data, read
// through the library's own C interface (so that the optimizers do not depend
// on how the task stores its data), plus the arithmetic that the optimizers,
// the certificates and the analyses share.
#pragma once

#include "errors.hpp"

#include <vector>

namespace qrn::opt {

struct Problem {
  qrn_int32 m = 0, n = 0;
  // Columns of A: entries start[j] .. start[j+1]-1 of index/value.
  std::vector<int> start{0};
  std::vector<int> index;
  std::vector<double> value;
  // Bounds; a side that is not bounded is -inf/+inf.
  std::vector<qrn_int32> bkc, bkx;
  std::vector<double> blc, buc, blx, bux;
  std::vector<double> c;
  double cfix = 0.0;
  bool maximize = false;
  // Lower triangle (qi >= qj) of the symmetric Q of the term 1/2 x'Qx.
  std::vector<qrn_int32> qi, qj;
  std::vector<double> qv;
  std::vector<char> integer;
  qrn_int32 numint = 0;
  qrn_int32 numcone = 0;
  qrn_int64 numconic = 0;  // affine conic and disjunctive constraints, semidefinite variables
  qrn_int64 numqcnz = 0;
  std::string name;

  qrn_int64 nnz() const { return start.empty() ? 0 : start.back(); }
  bool quadratic() const { return !qv.empty(); }
};

// Reads the task's problem. Throws a Failure when the task refuses a read.
Problem snapshot(qrn_task_t task);

// out = A x (m entries), out = A'y (n entries), out = Q x (n entries, Q full).
void mul_a(const Problem &p, const double *x, double *out);
void mul_at(const Problem &p, const double *y, double *out);
void mul_q(const Problem &p, const double *x, double *out);
// 1/2 x'Qx
double quad_value(const Problem &p, const double *x);

// Primal objective c'x + 1/2 x'Qx + cfix.
double primal_obj(const Problem &p, const double *x);

// Largest violation of a constraint (xc against its bounds) and of a variable
// bound, each relative to 1 + |bound|.
double con_violation(const Problem &p, const double *xc);
double bound_violation(const Problem &p, const double *x);

// Dual values in the stored convention: y and dj = c + Qx - A'y, each split
// into a lower and an upper part (>= 0 when minimizing, <= 0 when
// maximizing), and the dual objective.
struct Duals {
  std::vector<double> y, slc, suc, slx, sux;
};
// Splits y and the reduced costs dj (both in the stored convention).
Duals split_duals(const Problem &p, std::vector<double> y, const std::vector<double> &dj);
// lc'slc - uc'suc + lx'slx - ux'sux + cfix - 1/2 x'Qx (x may be null for 0);
// infinite bounds contribute nothing.
double dual_obj(const Problem &p, const Duals &d, const double *x, bool with_cfix = true);
// Largest multiplier sitting on an infinite bound, relative to 1 + |c_j|
// (variables) or 1 (constraints): how far the duals are from feasible.
double dual_violation(const Problem &p, const Duals &d);

}  // namespace qrn::opt
