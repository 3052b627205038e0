// The optimizer entry: choice of optimizer, the run, the checks of what the
// solvers report, the stored solutions, the information items and the log.
#pragma once

#include "problem.hpp"

namespace qrn::opt {

// Runs the optimizer on the task as QRN_optimizetrm does and returns the
// termination code. Throws a Failure (leaving solutions and information as
// they were) when the problem or the parameters are refused.
qrn_rescode optimize(Task &t);

// Solutions of a linear problem checked and stored (shared with the analyses).
// Keys of item k, from its value: AT_LOWER / AT_UPPER / FIXED when it is at a
// bound, else `inside`.
qrn_int32 key_by_value(double v, double lo, double up, qrn_int32 inside);

}  // namespace qrn::opt
