// Mixed-integer conic problems and disjunctive constraints: a branch and
// bound of our own whose node relaxations are solved by the conic
// interior-point engine (lib/src/ipm through lib/src/conicopt).
// docs/mip-conic.md describes the search.
#pragma once

#include "conicopt.hpp"
#include "problem.hpp"
#include "run.hpp"

#include <vector>

namespace qrn::opt {

// The task's disjunctive constraints: per DJC its terms, per term its
// domain memberships (read_djcs).
using Disjunctions = std::vector<std::vector<std::vector<DomainRows>>>;

struct MipConicResult {
  // The best integer solution (primal parts: xx, xc, barx; duals 0), with
  // its statuses; undefined when the search found none and was stopped.
  Solution sol;
  long long nodes = 0;
};

// Runs the search on the problem p read as src (variable bounds from p) with
// the disjunctions djcs. Fills the QRN_*INF_MIP_* items as it goes, calls
// back QRN_CALLBACK_MIP_NODE and QRN_CALLBACK_NEW_INT_SOLUTION, logs a line
// per batch of nodes and sets run.ending when it stops early.
MipConicResult solve_mip_conic(const Problem &p, const ConicSource &src, const Disjunctions &djcs, Run &run,
                               bool presolve);

}  // namespace qrn::opt
