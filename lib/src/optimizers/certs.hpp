// Certificates of infeasibility: checked when a solver offers one, computed
// from an auxiliary problem when it does not (or offers a wrong one). Also the
// elastic problem that feasibility repair shares.
#pragma once

#include "problem.hpp"
#include "run.hpp"

#include <vector>

namespace qrn::opt {

// A Farkas certificate in the stored convention from a candidate y of the
// minimization form, whose sign is not trusted: true when y or -y, completed
// by slx - sux = -A'y, proves the problem infeasible.
bool farkas_from(const Problem &p, const std::vector<double> &y, Duals &out);
// An unbounded direction from a candidate d (scaled to max |d_j| = 1): true
// when d is one (see QRN_optimizetrm).
bool ray_from(const Problem &p, const std::vector<double> &d, std::vector<double> &out);

// The weighted elastic problem of the constraints and bounds (see
// QRN_primalrepair): columns 0..n-1 are x (free; bounds become rows
// m..m+nb-1), then one column per relaxable side. Weights: null = 1 for every
// side, negative = hard.
struct Elastic {
  Problem prob;
  struct Side {
    bool con;       // constraint (else variable bound)
    bool lower;     // lower side (else upper)
    qrn_int32 item;
  };
  std::vector<Side> sides;      // side of column n + k
  std::vector<qrn_int32> bound_var;  // variable of bound row m + r
};
Elastic elastic_problem(const Problem &p, const double *wlc, const double *wuc, const double *wlx,
                        const double *wux, double default_weight);

// A Farkas certificate from the elastic problem (always available for an
// infeasible linear system): false when the problem turns out feasible.
bool farkas_by_elastic(const Problem &p, Run &run, Duals &out);
// An unbounded direction from the auxiliary problem min c'd over the
// recession cone (with Q d = 0) within |d| <= 1: false when there is none.
bool ray_by_lp(const Problem &p, Run &run, std::vector<double> &out);

}  // namespace qrn::opt
