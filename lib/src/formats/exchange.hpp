// The problem of a task as plain arrays: what every writer reads and every
// reader fills. Writers get it from a task through the C interface only
// (extract); readers hand it to a scratch task through the C interface (load),
// which is then swapped into the real task. So the formats never depend on how
// a task stores its data.
#pragma once

#include "errors.hpp"

#include <string>
#include <vector>

namespace qrn {

struct ProblemCone {
  qrn_int32 type = QRN_CONE_QUAD;
  double par = 0.0;
  std::vector<qrn_int32> members;
};

// Conic and semidefinite data (docs/formats/README.md): domains, affine conic
// constraints (ACCs), disjunctive constraints (DJCs), the store of symmetric
// matrices and the coefficients barC, barA and barF as weighted sums of them.
struct ProblemDomain {
  qrn_int32 type = QRN_DOMAIN_R;  // QRN_DOMAIN_*
  qrn_int64 n = 0;
  std::vector<double> alpha;      // power cones: the nleft weights, as the task holds them
};

struct ProblemAcc {
  qrn_int64 dom = 0;
  std::vector<qrn_int64> afe;
  std::vector<double> b;  // as long as afe
};

struct ProblemDjc {
  std::vector<qrn_int64> dom, afe, termsize;
  std::vector<double> b;  // as long as afe
};

struct ProblemSymMat {
  qrn_int32 dim = 0;
  std::vector<qrn_int32> subi, subj;  // lower triangle, sorted by column then row
  std::vector<double> val;
};

// A coefficient sum_k weight[k] * symmat[mat[k]]: barC_j (i = -1), barA_ij
// (i a constraint) or barF_ij (i an affine expression).
struct ProblemBarCoef {
  qrn_int64 i = -1;
  qrn_int32 j = 0;
  std::vector<qrn_int64> mat;
  std::vector<double> weight;
};

struct FileProblem {
  std::string taskname, objname;
  qrn_int32 sense = QRN_OBJECTIVE_SENSE_MINIMIZE;
  double cfix = 0.0;
  qrn_int32 numcon = 0, numvar = 0;
  std::vector<double> c;                           // numvar
  std::vector<qrn_int32> bkc, bkx;                 // numcon, numvar
  std::vector<double> blc, buc, blx, bux;          // infinite sides are -inf / +inf
  std::vector<qrn_int32> vartype;                  // numvar
  // A by column: entries aptr[j] .. aptr[j+1]-1 of asub/aval, rows increasing.
  std::vector<qrn_int64> aptr;                     // numvar + 1
  std::vector<qrn_int32> asub;
  std::vector<double> aval;
  // Quadratic terms, lower triangle (i >= j), of 1/2 x'Qx.
  std::vector<qrn_int32> qosubi, qosubj;
  std::vector<double> qoval;
  std::vector<qrn_int32> qcsubk, qcsubi, qcsubj;   // constraint of each term
  std::vector<double> qcval;
  std::vector<ProblemCone> cones;
  // Names, "" for none; empty vectors mean no names at all.
  std::vector<std::string> connames, varnames, conenames;

  // Affine expressions: F by rows (fsubi increasing, fsubj increasing within
  // a row), g one per expression.
  qrn_int64 numafe = 0;
  std::vector<qrn_int64> fsubi;
  std::vector<qrn_int32> fsubj;
  std::vector<double> fval;
  std::vector<double> g;  // numafe
  std::vector<ProblemDomain> domains;
  std::vector<ProblemAcc> accs;
  std::vector<ProblemDjc> djcs;
  std::vector<qrn_int32> barvardim;
  std::vector<ProblemSymMat> symmats;
  std::vector<ProblemBarCoef> barc, bara, barf;  // barc by j; bara by i, j; barf by i, j
  std::vector<std::string> domnames, accnames, djcnames, barvarnames;  // "" none; empty: no names

  qrn_int64 numanz() const { return aptr.empty() ? 0 : aptr.back(); }
  // Sizes every per-item array for numcon x numvar: free constraints, variables
  // in [0, +inf) (the default of most text formats), continuous, zero cost.
  void resize(qrn_int32 m, qrn_int32 n);
  bool has_names() const;
  bool has_quadratic() const { return !qoval.empty() || !qcval.empty(); }
  bool has_integer() const;
  // Anything of the conic and semidefinite data.
  bool has_conic() const {
    return numafe > 0 || !domains.empty() || !accs.empty() || !djcs.empty() || !barvardim.empty() || !symmats.empty();
  }
  qrn_int64 accntot() const;  // the stacked rows of the ACCs (the length of doty)
};

// The rows of A (p's column form) for writers that list A by row: row i holds
// the entries start[i]..start[i+1]-1 of sub (column indexes, ascending) and val.
struct ProblemRows {
  std::vector<qrn_int64> start;
  std::vector<qrn_int32> sub;
  std::vector<double> val;
};
ProblemRows rows_of(const FileProblem &p);

// The task's problem read through the C interface.
FileProblem extract(qrn_task_t task);
// Puts p into task (an empty task) through the C interface; a refusal becomes
// a Failure whose message starts with `where`.
void load(qrn_task_t task, const FileProblem &p, const std::string &where);

// Builds the column form of A from triplets: duplicates are refused through
// on_duplicate(k) (the triplet index of the second one) unless sum is true.
template <class OnDup>
void triplets_to_columns(FileProblem &p, const std::vector<qrn_int32> &ti, const std::vector<qrn_int32> &tj,
                         const std::vector<double> &tv, bool sum, OnDup on_duplicate);

// The names that a format needing a name for every item writes: the task's
// own name, or a generated one (prefix + index) for unnamed items and when
// QRN_IPAR_OUTPUT_NAMES is off. Generated names never collide with real ones.
std::vector<std::string> complete_names(const std::vector<std::string> &names, qrn_int32 n, const std::string &prefix,
                                        bool use_names);

// ---- template body ----

template <class OnDup>
void triplets_to_columns(FileProblem &p, const std::vector<qrn_int32> &ti, const std::vector<qrn_int32> &tj,
                         const std::vector<double> &tv, bool sum, OnDup on_duplicate) {
  const size_t nz = tv.size();
  std::vector<qrn_int64> start(static_cast<size_t>(p.numvar) + 1, 0);
  for (size_t k = 0; k < nz; ++k) ++start[static_cast<size_t>(tj[k]) + 1];
  for (qrn_int32 j = 0; j < p.numvar; ++j) start[j + 1] += start[j];
  // Counting sort by row then by column gives rows increasing within columns.
  std::vector<qrn_int64> rstart(static_cast<size_t>(p.numcon) + 1, 0);
  for (size_t k = 0; k < nz; ++k) ++rstart[static_cast<size_t>(ti[k]) + 1];
  for (qrn_int32 i = 0; i < p.numcon; ++i) rstart[i + 1] += rstart[i];
  std::vector<size_t> byrow(nz);
  {
    std::vector<qrn_int64> next(rstart.begin(), rstart.end() - 1);
    for (size_t k = 0; k < nz; ++k) byrow[next[ti[k]]++] = k;
  }
  std::vector<size_t> order(nz);
  {
    std::vector<qrn_int64> next(start.begin(), start.end() - 1);
    for (size_t k : byrow) order[next[tj[k]]++] = k;
  }
  p.aptr.assign(static_cast<size_t>(p.numvar) + 1, 0);
  p.asub.clear();
  p.aval.clear();
  p.asub.reserve(nz);
  p.aval.reserve(nz);
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    for (qrn_int64 q = start[j]; q < start[j + 1]; ++q) {
      size_t k = order[q];
      if (static_cast<qrn_int64>(p.asub.size()) > p.aptr[j] && p.asub.back() == ti[k]) {
        if (!sum) on_duplicate(k);
        p.aval.back() += tv[k];
        continue;
      }
      p.asub.push_back(ti[k]);
      p.aval.push_back(tv[k]);
    }
    p.aptr[j + 1] = static_cast<qrn_int64>(p.asub.size());
  }
}

}  // namespace qrn
