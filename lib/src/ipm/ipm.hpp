// The conic interior-point optimizer: a self-contained engine that solves
//
//   minimize    c'x + 1/2 x'Px + c0
//   subject to  A x + s = b,   s in K = K_1 x ... x K_m
//
// with P symmetric positive semidefinite (given by its UPPER triangle,
// i <= j, by columns) and each K_i one of the cones of ConeKind, occupying
// consecutive rows of A in the order listed. Its dual is
//
//   maximize    -1/2 x'Px - b'y + c0
//   subject to  c + Px + A'y = 0,   y in K* = K_1* x ... x K_m*
//
// so y is the Lagrange multiplier of the cone constraints (y in K*, y's = 0 at
// an optimum). docs/ipm.md states the cones, the algorithm and the
// certificates. The engine keeps no global mutable state: any number of
// solves may run at once on different threads.
#pragma once

#include <cmath>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace qrn {
namespace ipm {

enum class ConeKind {
  Zero,              // s = 0 (dual: free)
  Nonnegative,       // s >= 0
  Quadratic,         // s0 >= ||s1:||
  RotatedQuadratic,  // 2 s0 s1 >= ||s2:||^2, s0, s1 >= 0
  Psd,               // svec of a symmetric d x d matrix that is PSD: lower triangle by
                     // columns, off-diagonal entries scaled by sqrt(2); dim = d(d+1)/2
  PrimalExp,         // s0 >= s1 exp(s2/s1), s0, s1 >= 0 (dim 3)
  DualExp,           // s0 >= -s2 exp(s1/s2 - 1), s0 >= 0, s2 <= 0 (dim 3)
  PrimalPower,       // prod_{i<nl} s_i^a_i >= ||s_nl:||, s_i >= 0 (a = alpha normalised, nl = alpha.size())
  DualPower,         // prod_{i<nl} (s_i/a_i)^a_i >= ||s_nl:||, s_i >= 0
  PrimalGeoMean,     // (prod_{i<n-1} s_i)^(1/(n-1)) >= |s_{n-1}|, s_i >= 0 (dim n >= 2)
  DualGeoMean,       // (n-1) (prod_{i<n-1} s_i)^(1/(n-1)) >= |s_{n-1}|, s_i >= 0
};

struct Cone {
  ConeKind kind = ConeKind::Nonnegative;
  int dim = 0;                 // number of rows it occupies
  std::vector<double> alpha;   // power cones: positive weights of the leading entries (normalised here)
};

// Compressed sparse columns; row indexes need not be sorted, no duplicates.
struct Csc {
  int nrows = 0, ncols = 0;
  std::vector<int> colptr{0}, rowind;
  std::vector<double> val;
  Csc() = default;
  Csc(int m, int n) : nrows(m), ncols(n), colptr(n + 1, 0) {}
  int nnz() const { return colptr.empty() ? 0 : colptr.back(); }
};

struct Problem {
  int n = 0;             // number of variables
  std::vector<double> c; // length n
  double c0 = 0.0;
  Csc P;                 // n x n upper triangle, or empty (0 x 0 or no entries) for a linear objective
  Csc A;                 // m x n
  std::vector<double> b; // length m
  std::vector<Cone> cones;  // dims add up to m
};

struct Settings {
  double tol_feas = 1e-9;      // primal and dual residuals, relative
  double tol_gap_abs = 1e-9;   // duality gap, absolute ...
  double tol_gap_rel = 1e-9;   // ... or relative
  double tol_infeas = 1e-8;    // certificates: ||A'y|| <= tol (-b'y), and the primal ray alike
  // A run that can go no further (stalled, numerical trouble) returns its best
  // iterate, as optimal or as a certificate when that iterate is within this
  // factor of the tolerances, else as unknown.
  double near_factor = 1000;
  int max_iter = 200;
  double max_time = HUGE_VAL;  // seconds of wall time
  double step_fraction = 0.99; // of the step to the boundary
  bool equilibrate = true;     // Ruiz scaling of the data (undone in the result)
  int equilibrate_iter = 10;
  double static_reg = 1e-10;   // added to the quasi-definite diagonal (raised when a factorization fails)
  int refine_iter = 10;        // iterative refinement steps per solve at most
  // How the KKT system is factored: 0 chooses by the analysis (simplicial
  // when the factor stays sparse, supernodal when it fills in), 1 always
  // simplicial, 2 always supernodal.
  int kkt_method = 0;
  // Quadratic cones of more entries than this enter the KKT matrix in a
  // sparse form (diagonal plus two rows and columns) instead of a dense block.
  int soc_expand_dim = 16;
  // Threads for the supernodal factorization's large matrix products
  // (OpenBLAS itself is expected to run one thread per call); 0: one per core.
  int threads = 1;
};

enum class Status {
  Optimal,
  PrimalInfeasible,  // y is a certificate: y in K*, A'y = 0, b'y = -1
  DualInfeasible,    // x, s are a certificate: Ax + s = 0, s in K, Px = 0, c'x = -1
  Unknown,           // stalled or numerical trouble; x, s, y are the last iterate
  Stopped,           // the progress callback asked to stop
  IterationLimit,
  TimeLimit,
};

const char *status_name(Status s);

// What the progress callback and the log see after each iteration (iteration 0
// is the starting point).
struct Iteration {
  int iter = 0;
  double pobj = 0, dobj = 0;   // objective values of the current (x, y) / tau
  double pres = 0, dres = 0;   // relative primal and dual residuals
  double gap = 0;              // |pobj - dobj|
  double mu = 0;               // complementarity measure
  double tau = 1, kappa = 1;   // homogeneous embedding variables
  double step = 0;             // step length taken to reach this iterate
  double time = 0;             // seconds since the solve started
};

struct Result {
  Status status = Status::Unknown;
  std::vector<double> x, s, y;
  double pobj = NAN, dobj = NAN;  // objective values (for certificates: NAN)
  double pres = NAN, dres = NAN, gap = NAN;
  int iterations = 0;
  double solve_time = 0;          // seconds
  double factor_time = 0;         // seconds spent in numerical factorizations
  int factorizations = 0;
  double factor_entries = 0;      // entries of the KKT factor L
  bool supernodal = false;        // whether it was factored by the supernodal method
  std::string message;            // why it stopped, in words
};

// Returns true to stop the solve.
using Progress = std::function<bool(const Iteration &)>;
using LogSink = std::function<void(const std::string &)>;

// Throws std::invalid_argument when the problem is malformed (inconsistent
// sizes, an index out of range, a cone that cannot exist, a non-finite value).
Result solve(const Problem &problem, const Settings &settings = Settings(), const Progress &progress = {},
             const LogSink &log = {});

// The checks solve() makes before it starts, as a message ("" when sound).
std::string validate(const Problem &problem);

}  // namespace ipm
}  // namespace qrn
