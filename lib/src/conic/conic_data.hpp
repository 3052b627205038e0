// What a task holds for conic problems: affine expressions (F, g and the
// semidefinite barF part), domains, affine conic constraints (ACCs) and
// disjunctive constraints (DJCs). Plain data; the rules live in conic.hpp.
#pragma once

#include "quarn.h"

#include <map>
#include <vector>

namespace qrn {

// One non-zero of a row of F: variable and coefficient.
struct FEntry {
  qrn_int32 var;
  double val;
};

// One term of a weighted sum of store matrices.
struct Term {
  qrn_int64 mat;
  double weight;
};

// The barF part of one affine expression for one semidefinite variable.
struct BarFEntry {
  qrn_int32 barvar;
  std::vector<Term> terms;
};

// The affine expressions. F is kept by row (each sorted by variable), so one
// row is read in time proportional to its length. A column index lists, per
// variable, the rows that may hold it: it can hold stale rows (dropped when a
// column is cleared or when the list grows to twice its true count), so that
// writing a row never has to search a long column.
struct AfeStore {
  std::vector<std::vector<FEntry>> rows;
  std::vector<std::vector<qrn_int64>> colrows;  // per variable: rows that may hold it
  std::vector<qrn_int64> colcount;              // per variable: rows that do hold it
  std::vector<double> g;
  std::map<qrn_int64, std::vector<BarFEntry>> barf;  // per affine expression, sorted by barvar
  qrn_int64 nnz = 0;
  qrn_int64 maxnum = 0;
};

// Domain types are the QRN_DOMAIN_* constants of quarn.h.
struct Domain {
  qrn_int32 type;
  qrn_int64 n;
  std::vector<double> alpha;  // power cones: weights normalised to sum 1
};

struct Acc {
  qrn_int64 dom;
  std::vector<qrn_int64> afe;
  std::vector<double> b;
};

// A disjunction of terms; term t is the conjunction of the next termsize[t]
// domains, and each domain takes the next dim affine expressions.
struct Djc {
  std::vector<qrn_int64> dom;
  std::vector<qrn_int64> afe;
  std::vector<double> b;
  std::vector<qrn_int64> termsize;
};

struct ConicData {
  AfeStore afe;
  std::vector<Domain> domains;
  std::vector<Acc> accs;
  std::vector<qrn_int64> accstart;  // first stacked row of each ACC, plus the total at the end
  std::vector<Djc> djcs;
  qrn_int64 maxnumdomain = 0, maxnumacc = 0, maxnumdjc = 0;
  ConicData() : accstart(1, 0) {}
};

}  // namespace qrn
