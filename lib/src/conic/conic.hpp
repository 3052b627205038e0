// Rules shared by the conic data (affine expressions, domains, ACCs, DJCs) and
// the solution values that belong to it: index checks, the hooks that keep the
// data aligned with the task's variables, activities and domain violations.
#pragma once

#include "errors.hpp"

#include <string>
#include <vector>

namespace qrn {

void check_afe(const Task &t, qrn_int64 r, const char *what = "Affine expression index");
void check_domain(const Task &t, qrn_int64 d, const char *what = "Domain index");
void check_acc(const Task &t, qrn_int64 k, const char *what = "ACC index");
void check_djc(const Task &t, qrn_int64 k, const char *what = "DJC index");
// Fails with QRN_RES_ERR_VALUE_NAN naming argument `what` (entry k, or none for k < 0).
void need_finite(double v, const char *what, qrn_int64 k = -1);
// A range [ptr, ptr + num) that must lie inside 0..len.
void need_range(qrn_int64 ptr, qrn_int64 num, qrn_int64 len, const char *what, qrn_int64 k);
// "what i is outside 0..n-1 (there are n)."
std::string outside(const char *what, qrn_int64 v, qrn_int64 n);

// ---- hooks called by the task's structural changes ----
void conic_append_vars(Task &t);                                   // after numvar grew
void conic_remove_vars(Task &t, const std::vector<bool> &remove);  // renumbers F
// True when the task has ACCs, DJCs or semidefinite variables.
bool has_conic_data(const Task &t);

// ---- the F rows ----
// Replaces row r by the sorted, checked entries (values already non-zero).
void set_frow(Task &t, qrn_int64 r, std::vector<FEntry> entries);
// Entries from parallel arrays: checked, zeros dropped, sorted; a repeated
// variable is refused unless `overwrite`, where the later one wins.
std::vector<FEntry> make_frow(const Task &t, qrn_int64 n, const qrn_int32 *varidx, const double *val,
                              bool overwrite);

// ---- ACC layout ----
// Sets ACC k (k == the number of ACCs appends), keeping the stacked row
// offsets and every defined solution's doty aligned.
void set_acc(Task &t, qrn_int64 k, Acc acc);
// An ACC checked against its domain: afe indexes, the count, b (null: zeros).
Acc make_acc(const Task &t, qrn_int64 dom, qrn_int64 n, const qrn_int64 *afe, const double *b);

// ---- solutions ----
// The solution, which must be defined (QRN_RES_ERR_SOL_WHICH, QRN_RES_ERR_SOL_UNDEFINED).
const Solution &need_defined(const Task &t, qrn_int32 whichsol);
// need_defined, with doty, barx and bars sized to the data (0 where missing).
Solution &conic_solution(Task &t, qrn_int32 whichsol);
// The solution, defined first when it is not (zeros, unknown keys and statuses).
Solution &define_solution(Task &t, qrn_int32 whichsol);
// Values of the listed expressions at a solution: F xx + barF(barx) + g.
void afe_values(const Task &t, const Solution &s, const qrn_int64 *afe, qrn_int64 n, double *out);
// Activity of ACC k at a solution (its size entries).
void acc_activity(const Task &t, const Solution &s, qrn_int64 k, double *out);

// ---- domains ----
qrn_int32 dual_type(qrn_int32 type);
// Violation of x (d.n values) against the domain, or against its dual cone.
double domain_violation(const Domain &d, const double *x, bool dual);

}  // namespace qrn
