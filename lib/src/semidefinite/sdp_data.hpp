// What a task holds for semidefinite problems: the semidefinite variables,
// the store of sparse symmetric matrices and the coefficients barC and barA,
// each a weighted sum of store matrices. Plain data; the rules live in
// semidefinite.hpp.
#pragma once

#include "conic_data.hpp"

#include <map>
#include <utility>
#include <vector>

namespace qrn {

// A sparse symmetric matrix by its lower triangle, sorted by column and then
// by row (subi >= subj).
struct SymMat {
  qrn_int32 dim;
  std::vector<qrn_int32> subi, subj;
  std::vector<double> val;
};

struct SdpData {
  std::vector<qrn_int32> dim;  // per semidefinite variable
  qrn_int32 maxnumbarvar = 0;
  std::vector<SymMat> mats;
  std::map<qrn_int32, std::vector<Term>> barc;  // keyed by j
  std::map<qrn_int64, std::vector<Term>> bara;  // keyed by i * 2^31 + j
};

}  // namespace qrn
