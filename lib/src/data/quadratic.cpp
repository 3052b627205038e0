// Quadratic terms of the objective and of the constraints.
//
// Terms are kept as the lower triangle (i >= j) of each symmetric matrix in
// sorted triplet arrays (QTerms in store.hpp); a term whose value is zero is
// not stored. Writers check every triplet before anything is replaced.
#include "errors.hpp"

#include <algorithm>
#include <tuple>

namespace qrn {
namespace {

void check_term(const Task &t, qrn_int32 i, qrn_int32 j, double v) {
  check_var(t, i, "Quadratic term row");
  check_var(t, j, "Quadratic term column");
  if (j > i)
    fail(QRN_RES_ERR_QUAD_UPPER, "The quadratic term (" + std::to_string(i) + ", " + std::to_string(j) +
                                     ") lies above the diagonal; only the lower triangle (j <= i) is given.");
  if (!std::isfinite(v))
    fail(QRN_RES_ERR_VALUE_NAN,
         "The quadratic term (" + std::to_string(i) + ", " + std::to_string(j) + ") is not finite.");
}

// The parameter names of the triplet arrays, for messages.
struct Names {
  const char *subi, *subj, *val;
};
const Names objective{"qosubi", "qosubj", "qoval"};
const Names constraint{"qcsubi", "qcsubj", "qcval"};

void check_terms(const Task &t, const Names &names, qrn_int32 num, const qrn_int32 *subi, const qrn_int32 *subj,
                 const double *val) {
  need_count(num, "The number of quadratic terms");
  need_array(subi, num, names.subi);
  need_array(subj, num, names.subj);
  need_array(val, num, names.val);
  for (qrn_int32 k = 0; k < num; ++k) check_term(t, subi[k], subj[k], val[k]);
}

// One term of a call, with the matrix it belongs to (the constraint, or 0).
struct Term {
  qrn_int32 k, i, j;
  double v;
  bool operator<(const Term &o) const { return std::tie(k, i, j) < std::tie(o.k, o.i, o.j); }
};

// The terms [b, e) (sorted, of one matrix) with repeats added and zeros dropped.
QTerms collect(const Term *b, const Term *e) {
  QTerms q;
  const auto n = static_cast<size_t>(e - b);
  q.subi.reserve(n);
  q.subj.reserve(n);
  q.val.reserve(n);
  for (const Term *p = b; p != e;) {
    double sum = 0.0;
    const Term *r = p;
    for (; r != e && r->i == p->i && r->j == p->j; ++r) sum += r->v;
    if (sum != 0.0) {
      q.subi.push_back(p->i);
      q.subj.push_back(p->j);
      q.val.push_back(sum);
    }
    p = r;
  }
  q.count = static_cast<qrn_int64>(q.val.size());
  return q;
}

std::vector<Term> terms(qrn_int32 num, const qrn_int32 *subk, const qrn_int32 *subi, const qrn_int32 *subj,
                        const double *val) {
  std::vector<Term> out(static_cast<size_t>(num));
  for (qrn_int32 k = 0; k < num; ++k) out[k] = Term{subk != nullptr ? subk[k] : 0, subi[k], subj[k], val[k]};
  if (!std::is_sorted(out.begin(), out.end())) std::sort(out.begin(), out.end());
  return out;
}

const QTerms *qcon_of(const Task &t, qrn_int32 k) {
  return static_cast<size_t>(k) < t.qcon.size() ? &t.qcon[k] : nullptr;
}

qrn_int64 total_terms(const Task &t) {
  qrn_int64 n = t.qobj.size();
  for (const auto &q : t.qcon) n += q.size();
  return n;
}

// Writes the terms of q (none when null) in (i, j) order into arrays of
// capacity cap; they are the terms of constraint con, or of the objective (-1).
void read_terms(const QTerms *q, qrn_int64 cap, qrn_int64 *num, qrn_int32 *subi, qrn_int32 *subj, double *val,
                qrn_int32 con) {
  need_count(cap, "The capacity");
  const qrn_int64 n = q != nullptr ? q->size() : 0;
  if (cap < n)
    fail(QRN_RES_ERR_TOO_SMALL, "The capacity " + std::to_string(cap) + " is below the " + std::to_string(n) +
                                    " quadratic terms of " +
                                    (con < 0 ? std::string("the objective") : "constraint " + std::to_string(con)) +
                                    ".");
  put(num, n);
  if (q == nullptr) return;
  qrn_int64 k = 0;
  q->each([&](qrn_int32 i, qrn_int32 j, double v) {
    if (subi) subi[k] = i;
    if (subj) subj[k] = j;
    if (val) val[k] = v;
    ++k;
  });
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_getnumqobjnz64(qrn_task_t task, qrn_int64 *numqonz) {
  return api(task, "QRN_getnumqobjnz64", [&](Task &t) { put(numqonz, t.qobj.size()); });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumqconknz64(qrn_task_t task, qrn_int32 k, qrn_int64 *numqcnz) {
  return api(task, "QRN_getnumqconknz64", [&](Task &t) {
    check_con(t, k);
    const QTerms *q = qcon_of(t, k);
    put(numqcnz, q != nullptr ? q->size() : 0);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumqnz(qrn_task_t task, qrn_int64 maxnumqnz) {
  return api(task, "QRN_putmaxnumqnz", [&](Task &t) {
    need_capacity(maxnumqnz, total_terms(t), "The quadratic term capacity");
    t.maxnumqnz = maxnumqnz;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getmaxnumqnz64(qrn_task_t task, qrn_int64 *maxnumqnz) {
  return api(task, "QRN_getmaxnumqnz64", [&](Task &t) { put(maxnumqnz, std::max(t.maxnumqnz, total_terms(t))); });
}

QRN_API qrn_rescode QRN_CALL QRN_getqobjij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real *qoij) {
  return api(task, "QRN_getqobjij", [&](Task &t) {
    check_var(t, i, "Quadratic term row");
    check_var(t, j, "Quadratic term column");
    put(qoij, t.qobj.get(std::max(i, j), std::min(i, j)));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putqobjij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real qoij) {
  return api(task, "QRN_putqobjij", [&](Task &t) {
    check_term(t, i, j, qoij);
    t.qobj.set(i, j, qoij);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putqobj(qrn_task_t task, qrn_int32 numqonz, const qrn_int32 *qosubi,
                                         const qrn_int32 *qosubj, const qrn_real *qoval) {
  return api(task, "QRN_putqobj", [&](Task &t) {
    check_terms(t, objective, numqonz, qosubi, qosubj, qoval);
    auto all = terms(numqonz, nullptr, qosubi, qosubj, qoval);
    t.qobj = collect(all.data(), all.data() + all.size());
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putqconk(qrn_task_t task, qrn_int32 k, qrn_int32 numqcnz, const qrn_int32 *qcsubi,
                                          const qrn_int32 *qcsubj, const qrn_real *qcval) {
  return api(task, "QRN_putqconk", [&](Task &t) {
    check_con(t, k);
    check_terms(t, constraint, numqcnz, qcsubi, qcsubj, qcval);
    auto all = terms(numqcnz, nullptr, qcsubi, qcsubj, qcval);
    QTerms q = collect(all.data(), all.data() + all.size());
    if (static_cast<size_t>(k) >= t.qcon.size()) {
      if (q.empty()) return;
      t.qcon.resize(static_cast<size_t>(k) + 1);
    }
    t.qcon[k] = std::move(q);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putqcon(qrn_task_t task, qrn_int32 numqcnz, const qrn_int32 *qcsubk,
                                         const qrn_int32 *qcsubi, const qrn_int32 *qcsubj, const qrn_real *qcval) {
  return api(task, "QRN_putqcon", [&](Task &t) {
    need_array(qcsubk, numqcnz, "qcsubk");
    need_count(numqcnz, "The number of quadratic terms");
    need_array(qcsubi, numqcnz, constraint.subi);
    need_array(qcsubj, numqcnz, constraint.subj);
    need_array(qcval, numqcnz, constraint.val);
    for (qrn_int32 k = 0; k < numqcnz; ++k) {
      check_con(t, qcsubk[k], "Quadratic term constraint");
      check_term(t, qcsubi[k], qcsubj[k], qcval[k]);
    }
    auto all = terms(numqcnz, qcsubk, qcsubi, qcsubj, qcval);
    // Each constraint named gets the terms of its run (all zero: none).
    for (size_t p = 0; p < all.size();) {
      size_t q = p;
      while (q < all.size() && all[q].k == all[p].k) ++q;
      const qrn_int32 k = all[p].k;
      QTerms fresh = collect(all.data() + p, all.data() + q);
      if (static_cast<size_t>(k) >= t.qcon.size() && !fresh.empty()) t.qcon.resize(static_cast<size_t>(k) + 1);
      if (static_cast<size_t>(k) < t.qcon.size()) t.qcon[k] = std::move(fresh);
      p = q;
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getqobj64(qrn_task_t task, qrn_int64 maxnumqonz, qrn_int64 *numqonz,
                                           qrn_int32 *qosubi, qrn_int32 *qosubj, qrn_real *qoval) {
  return api(task, "QRN_getqobj64", [&](Task &t) {
    read_terms(&t.qobj, maxnumqonz, numqonz, qosubi, qosubj, qoval, -1);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getqconk64(qrn_task_t task, qrn_int32 k, qrn_int64 maxnumqcnz, qrn_int64 *numqcnz,
                                            qrn_int32 *qcsubi, qrn_int32 *qcsubj, qrn_real *qcval) {
  return api(task, "QRN_getqconk64", [&](Task &t) {
    check_con(t, k);
    read_terms(qcon_of(t, k), maxnumqcnz, numqcnz, qcsubi, qcsubj, qcval, k);
  });
}

}  // extern "C"
