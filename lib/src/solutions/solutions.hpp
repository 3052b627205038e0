// Solutions of a task: access to the stored Solution records, the hooks that
// keep them in step with structural changes, a snapshot of the problem read
// through the C interface, and the measures computed from a solution
// (objective values, violations, norms). Conventions are documented in
// quarn.h ("Solutions").
#pragma once

#include "task.hpp"

#include <vector>

namespace qrn {

// ---- hooks of the structural changes (called by Task) ----

// num constraints or variables were appended: when num > 0 the statuses of
// defined solutions become unknown; the vectors grow lazily (see fit()).
void sol_appended(Task &t, qrn_int64 num);
// remove[k] == true: item k is removed; entries of removed items are dropped.
void sol_remove_cons(Task &t, const std::vector<bool> &remove);
void sol_remove_vars(Task &t, const std::vector<bool> &remove);
void sol_remove_cones(Task &t, const std::vector<bool> &remove);

// ---- the store ----

struct Counts {
  qrn_int32 numcon = 0, numvar = 0, numcone = 0;
};
// The task's counts, read through the C interface.
Counts counts(Task &t);

// QRN_RES_ERR_SOL_WHICH unless whichsol names a solution.
void check_which(qrn_int32 whichsol);
// A defined solution for reading (QRN_RES_ERR_SOL_UNDEFINED otherwise). Its
// vectors may be shorter than the counts (items appended since it was
// stored): missing entries read as key QRN_SK_UNKNOWN and value 0.
const Solution &readable(const Task &t, qrn_int32 whichsol);
// The solution for writing, defined if it was not and fitted to the counts,
// with unknown statuses. Call only after every argument has been checked.
Solution &writable(Task &t, qrn_int32 whichsol, const Counts &n);
// The solution resized to the counts: appended entries are QRN_SK_UNKNOWN or 0.
void fit(Solution &s, const Counts &n);

// Refusals of bad keys (QRN_RES_ERR_SOL_KEY) and NaN values; `what` names the array.
void check_keys(const qrn_int32 *sk, qrn_int64 n, const char *what);
void check_values(const double *v, qrn_int64 n, const char *what);

// ---- the problem, as the C interface reports it ----

struct Terms {  // lower-triangle triplets of a symmetric matrix
  std::vector<qrn_int32> i, j;
  std::vector<double> v;
  bool empty() const { return v.empty(); }
};

struct ConeOf {
  qrn_int32 type = QRN_CONE_QUAD;
  std::vector<qrn_int32> members;
};

enum Part : unsigned {
  P_MATRIX = 1,  // columns of A and the quadratic constraint terms
  P_BOUNDS = 2,
  P_OBJ = 4,     // c, cfix, Q
  P_CONES = 8,
  P_TYPES = 16,  // variable types
  P_ALL = 31,
};

struct Problem {
  Counts n;
  qrn_int32 sense = QRN_OBJECTIVE_SENSE_MINIMIZE;
  std::vector<qrn_int64> ptrb, ptre;  // column j: asub/aval[ptrb[j] .. ptre[j])
  std::vector<qrn_int32> asub;
  std::vector<double> aval;
  std::vector<Terms> qcon;  // per constraint (empty when none has terms)
  std::vector<double> blc, buc, blx, bux;  // infinite where the key leaves a side open
  std::vector<double> c;
  double cfix = 0.0;
  Terms qobj;
  std::vector<ConeOf> cones;
  std::vector<qrn_int32> var_cone;  // cone of each variable or -1 (with P_CONES)
  std::vector<qrn_int32> vartype;
  // Conic and semidefinite data (dimensions always; barA, the ACC rows F, barF
  // and g - b with P_MATRIX; barC with P_OBJ). Block triplets are lower-triangle
  // entries (k >= l) of the coefficient matrices.
  std::vector<qrn_int32> bardim;
  struct Block {
    std::vector<qrn_int64> row;  // constraint or stacked ACC row (unused for barC)
    std::vector<qrn_int32> j, k, l;
    std::vector<double> v;
  };
  Block barc, bara, barf;
  qrn_int64 accrows = 0;
  std::vector<qrn_int64> frow;  // ACC F triplets by stacked row
  std::vector<qrn_int32> fcol;
  std::vector<double> fval;
  std::vector<double> accg;  // g - b per stacked ACC row
};

// Reads the parts asked for (the counts and the sense always).
Problem snapshot(Task &t, unsigned parts);

// ---- measures of a solution on a problem ----

// One solution measured against one problem: the vectors fitted to the
// problem's counts and the products that several measures share.
class Measure {
 public:
  Measure(const Problem &p, const Solution &s);
  const Problem &p;
  Solution s;                   // fitted copy
  bool ray = false;             // dual infeasibility certificate: homogeneous primal
  bool farkas = false;          // primal infeasibility certificate: homogeneous dual
  double sign() const { return p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? -1.0 : 1.0; }

  double primal_obj();
  double dual_obj();
  double pviolcon(qrn_int32 i);
  double pviolvar(qrn_int32 j) const;
  double pviolcone(qrn_int32 k) const;
  double pviolitg(qrn_int32 j) const;
  double dviolcon(qrn_int32 i) const;
  double dviolvar(qrn_int32 j);
  double dviolcone(qrn_int32 k) const;
  // c + Qx - A'y - sum_i y_i Q_i x - F'doty (c and Q left out for a Farkas certificate).
  double reduced_cost(qrn_int32 j);
  // Semidefinite variable j: the smallest eigenvalue's negative part of barx
  // (primal) or of s * bars (dual), and the largest entry of the dual
  // stationarity residual barC_j - sum_i y_i barA_ij - sum_r doty_r barF_rj - barS_j
  // (barC left out for a Farkas certificate).
  double pviolbar(qrn_int32 j) const;
  double dviolbar(qrn_int32 j);

 private:
  const std::vector<double> &activity();  // a_i'x + 1/2 x'Q_i x
  const std::vector<double> &qx();        // Qx
  const std::vector<double> &gradient();  // c + Qx - A'y - sum_i y_i Q_i x
  const std::vector<std::vector<double>> &bar_residual();
  std::vector<double> act_, qx_, grad_;
  std::vector<std::vector<double>> barres_;
  bool have_act_ = false, have_qx_ = false, have_grad_ = false, have_barres_ = false;
};

// The summary of a solution (QRN_getsolutioninfo's values).
struct SolutionMeasures {
  double pobj, pviolcon, pviolvar, pviolbarvar, pviolcone, pviolitg;
  double dobj, dviolcon, dviolvar, dviolbarvar, dviolcone;
};
SolutionMeasures solution_measures(Task &t, qrn_int32 whichsol);

// Euclidean distance of x (the members of one cone, in order) to the cone.
double cone_distance(qrn_int32 type, const std::vector<double> &x);

}  // namespace qrn
