// Quadratic terms of the objective and of the constraints.
//
// Terms are kept as the lower triangle (i >= j) of each symmetric matrix,
// ordered by (i, j); a term whose value is zero is not stored. Writers check
// every triplet before anything is replaced.
#include "errors.hpp"

#include <iterator>

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

void drop_zeros(QTerms &q) {
  for (auto it = q.begin(); it != q.end();) it = it->second == 0.0 ? q.erase(it) : std::next(it);
}

// The parameter names of the triplet arrays, for messages.
struct Names {
  const char *subi, *subj, *val;
};
const Names objective{"qosubi", "qosubj", "qoval"};
const Names constraint{"qcsubi", "qcsubj", "qcval"};

// Checks num triplets and adds triplet k to the terms that target(k) names.
template <class Target>
void sum_terms(const Task &t, const Names &names, qrn_int32 num, const qrn_int32 *subi, const qrn_int32 *subj,
               const double *val, Target target) {
  need_count(num, "The number of quadratic terms");
  need_array(subi, num, names.subi);
  need_array(subj, num, names.subj);
  need_array(val, num, names.val);
  for (qrn_int32 k = 0; k < num; ++k) {
    QTerms &q = target(k);
    check_term(t, subi[k], subj[k], val[k]);
    q[{subi[k], subj[k]}] += val[k];
  }
}

// The terms of one matrix made from num triplets.
QTerms collect(const Task &t, const Names &names, qrn_int32 num, const qrn_int32 *subi, const qrn_int32 *subj,
               const double *val) {
  QTerms q;
  sum_terms(t, names, num, subi, subj, val, [&](qrn_int32) -> QTerms & { return q; });
  drop_zeros(q);
  return q;
}

qrn_int64 total_terms(const Task &t) {
  auto n = static_cast<qrn_int64>(t.qobj.size());
  for (const auto &q : t.qcon) n += static_cast<qrn_int64>(q.size());
  return n;
}

// Writes the terms of q in (i, j) order into arrays of capacity cap.
void read_terms(const QTerms &q, qrn_int64 cap, qrn_int64 *num, qrn_int32 *subi, qrn_int32 *subj, double *val,
                const std::string &what) {
  need_count(cap, "The capacity");
  auto n = static_cast<qrn_int64>(q.size());
  if (cap < n)
    fail(QRN_RES_ERR_TOO_SMALL, "The capacity " + std::to_string(cap) + " is below the " + std::to_string(n) +
                                    " quadratic terms of " + what + ".");
  put(num, n);
  qrn_int64 k = 0;
  for (const auto &[ij, v] : q) {
    if (subi) subi[k] = ij.first;
    if (subj) subj[k] = ij.second;
    if (val) val[k] = v;
    ++k;
  }
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_getnumqobjnz64(qrn_task_t task, qrn_int64 *numqonz) {
  return api(task, "QRN_getnumqobjnz64", [&](Task &t) { put(numqonz, static_cast<qrn_int64>(t.qobj.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumqconknz64(qrn_task_t task, qrn_int32 k, qrn_int64 *numqcnz) {
  return api(task, "QRN_getnumqconknz64", [&](Task &t) {
    check_con(t, k);
    put(numqcnz, static_cast<qrn_int64>(t.qcon[k].size()));
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
    auto it = t.qobj.find({std::max(i, j), std::min(i, j)});
    put(qoij, it == t.qobj.end() ? 0.0 : it->second);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putqobjij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real qoij) {
  return api(task, "QRN_putqobjij", [&](Task &t) {
    check_term(t, i, j, qoij);
    if (qoij == 0.0)
      t.qobj.erase({i, j});
    else
      t.qobj[{i, j}] = qoij;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putqobj(qrn_task_t task, qrn_int32 numqonz, const qrn_int32 *qosubi,
                                         const qrn_int32 *qosubj, const qrn_real *qoval) {
  return api(task, "QRN_putqobj", [&](Task &t) { t.qobj = collect(t, objective, numqonz, qosubi, qosubj, qoval); });
}

QRN_API qrn_rescode QRN_CALL QRN_putqconk(qrn_task_t task, qrn_int32 k, qrn_int32 numqcnz, const qrn_int32 *qcsubi,
                                          const qrn_int32 *qcsubj, const qrn_real *qcval) {
  return api(task, "QRN_putqconk", [&](Task &t) {
    check_con(t, k);
    t.qcon[k] = collect(t, constraint, numqcnz, qcsubi, qcsubj, qcval);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putqcon(qrn_task_t task, qrn_int32 numqcnz, const qrn_int32 *qcsubk,
                                         const qrn_int32 *qcsubi, const qrn_int32 *qcsubj, const qrn_real *qcval) {
  return api(task, "QRN_putqcon", [&](Task &t) {
    need_array(qcsubk, numqcnz, "qcsubk");
    std::map<qrn_int32, QTerms> fresh;  // the new terms of each constraint named
    sum_terms(t, constraint, numqcnz, qcsubi, qcsubj, qcval, [&](qrn_int32 k) -> QTerms & {
      check_con(t, qcsubk[k], "Quadratic term constraint");
      return fresh[qcsubk[k]];
    });
    for (auto &[k, q] : fresh) {
      drop_zeros(q);
      t.qcon[k] = std::move(q);
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getqobj64(qrn_task_t task, qrn_int64 maxnumqonz, qrn_int64 *numqonz,
                                           qrn_int32 *qosubi, qrn_int32 *qosubj, qrn_real *qoval) {
  return api(task, "QRN_getqobj64", [&](Task &t) {
    read_terms(t.qobj, maxnumqonz, numqonz, qosubi, qosubj, qoval, "the objective");
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getqconk64(qrn_task_t task, qrn_int32 k, qrn_int64 maxnumqcnz, qrn_int64 *numqcnz,
                                            qrn_int32 *qcsubi, qrn_int32 *qcsubj, qrn_real *qcval) {
  return api(task, "QRN_getqconk64", [&](Task &t) {
    check_con(t, k);
    read_terms(t.qcon[k], maxnumqcnz, numqcnz, qcsubi, qcsubj, qcval, "constraint " + std::to_string(k));
  });
}

}  // extern "C"
