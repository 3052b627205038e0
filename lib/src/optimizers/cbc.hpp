// The Cbc adapter: branch and cut through CbcModel::branchAndBound (never the
// command-line driver, which is not safe in threads).
#pragma once

#include "problem.hpp"
#include "run.hpp"

#include <vector>

namespace qrn::opt {

struct MipResult {
  enum Status { optimal, infeasible, unbounded, limit, failed } status = failed;
  bool has_solution = false;
  std::vector<double> x;     // best integer solution
  double objective = 0.0;    // task's sense, with cfix
  double bound = 0.0;        // best bound, task's sense, with cfix
  long long nodes = 0;
  int solutions = 0;
  long long iterations = 0;
};

MipResult solve_mip(const Problem &p, Run &run);

}  // namespace qrn::opt
