// Rules shared by the semidefinite data: index checks, weighted sums of store
// matrices, their expansion into lower-triangle entries, inner products with
// packed solution values, and the smallest eigenvalue of a packed matrix.
#pragma once

#include "errors.hpp"

#include <map>
#include <utility>
#include <vector>

namespace qrn {

void check_barvar(const Task &t, qrn_int64 j, const char *what = "Semidefinite variable index");
void check_symmat(const Task &t, qrn_int64 idx, const char *what = "Symmetric matrix index");
// d(d+1)/2: the length of a packed lower triangle.
inline qrn_int64 packed_len(qrn_int64 d) { return d * (d + 1) / 2; }
// Position of (i, j), i >= j, in the lower triangle packed by columns.
inline qrn_int64 packed_pos(qrn_int64 d, qrn_int64 i, qrn_int64 j) { return j * d - j * (j - 1) / 2 + (i - j); }

// A weighted sum of store matrices, checked: indexes, dimension dim, finite weights.
std::vector<Term> make_terms(const Task &t, qrn_int32 dim, qrn_int64 num, const qrn_int64 *sub,
                             const double *weights);

// One lower-triangle entry (k >= l) of a coefficient matrix.
struct BlockEntry {
  qrn_int32 k, l;
  double val;
};
// The non-zero lower-triangle entries of a weighted sum, by column, then row.
std::vector<BlockEntry> expand(const SdpData &s, const std::vector<Term> &terms);
// Checks block position (k, l) against dimension dim; `pos` is its entry in the caller's list.
void check_block(qrn_int32 dim, qrn_int32 k, qrn_int32 l, qrn_int64 pos);
// Appends a store matrix of dimension dim from summed entries keyed by (column, row).
qrn_int64 add_symmat(Task &t, qrn_int32 dim, const std::map<std::pair<qrn_int32, qrn_int32>, double> &entries);

// <sum_k w_k A_k, X> for X packed by columns (full symmetric inner product).
double inner(const SdpData &s, const std::vector<Term> &terms, const std::vector<double> &x);
// Eigenvalues (ascending) of the symmetric d x d matrix packed in x (LAPACK);
// QRN_RES_ERR_EIGEN when the computation does not converge.
std::vector<double> eigenvalues(std::vector<double> x, qrn_int32 d);

// The barC part of the primal objective at a solution: sum_j <barC_j, barx_j>.
double barc_objective(const Task &t, const Solution &s);
// barx and bars sized to the semidefinite variables (0 where missing).
void align_bar_solution(const Task &t, Solution &s);

// ---- hooks called by the task's structural changes ----
void sdp_remove_cons(Task &t, const std::vector<bool> &remove);  // drops and renumbers barA rows

}  // namespace qrn
