// Bounds of constraints and variables, the linear objective and variable types.
//
// A bound is stored as its key and the two sides, in three flat arrays
// (Bounds in store.hpp); a side that the key does not bound is kept as
// -inf/+inf. Every writer checks all of its input in one pass before it changes
// anything, so that a failing call leaves the task as it was, and builds a
// message only for an item that fails.
#include "errors.hpp"

#include <algorithm>
#include <cstring>

namespace qrn {

Bound make_bound(qrn_int32 bk, double bl, double bu, const char *what) {
  if (bk < QRN_BK_FREE || bk > QRN_BK_RANGED)
    fail(QRN_RES_ERR_BOUND_KEY, std::string("Bound key ") + std::to_string(bk) + " of " + what + " is not one of 0..4.");
  if (std::isnan(bl) || std::isnan(bu)) fail(QRN_RES_ERR_VALUE_NAN, std::string("A bound of ") + what + " is NaN.");
  Bound b;
  b.bk = bk;
  bool lower = bk == QRN_BK_LOWER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED;
  bool upper = bk == QRN_BK_UPPER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED;
  if (lower) {
    if (std::fabs(bl) >= QRN_INFINITY)
      fail(QRN_RES_ERR_BOUND_INFINITE, std::string("The lower bound of ") + what + " must be finite for its key.");
    b.bl = bl;
  }
  if (upper) {
    if (std::fabs(bu) >= QRN_INFINITY)
      fail(QRN_RES_ERR_BOUND_INFINITE, std::string("The upper bound of ") + what + " must be finite for its key.");
    b.bu = bu;
  }
  return b;
}

namespace {

// ---- bounds ------------------------------------------------------------------

// What tells the bounds of constraints from those of variables.
struct Items {
  Bounds Task::*bounds;
  qrn_int32 Task::*count;
  void (*check_index)(const Task &, qrn_int64, const char *);
  const char *name;
  const char *index_name;
  void check(const Task &t, qrn_int64 i) const { check_index(t, i, index_name); }
};
const Items cons{&Task::conbound, &Task::numcon, check_con, "constraint", "constraint index"};
const Items vars{&Task::varbound, &Task::numvar, check_var, "variable", "variable index"};

std::string item(const Items &it, qrn_int64 i) { return std::string(it.name) + " " + std::to_string(i); }

bool bounds_below(qrn_int32 bk) { return bk == QRN_BK_LOWER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED; }
bool bounds_above(qrn_int32 bk) { return bk == QRN_BK_UPPER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED; }

// Whether make_bound accepts b; no message is built.
inline bool valid(const Bound &b) {
  return b.bk >= QRN_BK_FREE && b.bk <= QRN_BK_RANGED && !std::isnan(b.bl) && !std::isnan(b.bu) &&
         (!bounds_below(b.bk) || std::fabs(b.bl) < QRN_INFINITY) &&
         (!bounds_above(b.bk) || std::fabs(b.bu) < QRN_INFINITY);
}
// A valid bound as stored: a side that the key leaves open is infinite.
inline Bound stored(const Bound &b) {
  return Bound{b.bk, bounds_below(b.bk) ? b.bl : -inf, bounds_above(b.bk) ? b.bu : inf};
}

// The bound of item i checked against its key. The item's name is built only
// for the message of a bound that fails.
Bound checked(const Items &it, qrn_int64 i, const Bound &given) {
  if (valid(given)) return stored(given);
  return make_bound(given.bk, given.bl, given.bu, item(it, i).c_str());  // throws, naming the item
}

// One side changed to value (or to infinity), with the key following the sides
// that are now finite. A FIXED item whose two sides stay equal stays FIXED;
// otherwise two finite sides make RANGED, even when they are equal.
Bound changed(Bound b, bool lower, bool finite, double value, const std::string &what) {
  if (finite && std::isnan(value)) fail(QRN_RES_ERR_VALUE_NAN, "The new bound of " + what + " is NaN.");
  bool side_finite = finite && std::fabs(value) < QRN_INFINITY;
  bool below = bounds_below(b.bk), above = bounds_above(b.bk);
  bool was_fixed = b.bk == QRN_BK_FIXED;
  if (lower) {
    below = side_finite;
    b.bl = side_finite ? value : -inf;
  } else {
    above = side_finite;
    b.bu = side_finite ? value : inf;
  }
  if (below && above)
    b.bk = was_fixed && b.bl == b.bu ? QRN_BK_FIXED : QRN_BK_RANGED;
  else
    b.bk = below ? QRN_BK_LOWER : above ? QRN_BK_UPPER : QRN_BK_FREE;
  return b;
}

void chgbound(Task &t, const Items &it, qrn_int32 i, qrn_int32 lower, qrn_int32 finite, double value) {
  it.check(t, i);
  Bounds &b = t.*it.bounds;
  if (finite != 0 && std::isnan(value)) changed(b[i], lower != 0, true, value, item(it, i));  // throws
  b.set(i, changed(b[i], lower != 0, finite != 0, value, std::string()));
}

void putbound(Task &t, const Items &it, qrn_int32 i, qrn_int32 bk, double bl, double bu) {
  it.check(t, i);
  (t.*it.bounds).set(i, checked(it, i, Bound{bk, bl, bu}));
}

void getbound(Task &t, const Items &it, qrn_int32 i, qrn_int32 *bk, double *bl, double *bu) {
  it.check(t, i);
  const Bound b = (t.*it.bounds)[i];
  put(bk, b.bk);
  put(bl, b.bl);
  put(bu, b.bu);
}

// Writes num bounds: item index(k) receives given(k, its current bound).
// Everything is checked first; a repeated item takes its last bound. A slice
// (no item twice) is written straight from the caller's arrays; a list is
// staged, as its given bounds may read an item that an earlier entry changes.
template <class Index, class Given>
void put_bounds(Task &t, const Items &it, qrn_int64 num, Index index, Given given, bool distinct) {
  Bounds &bounds = t.*it.bounds;
  for (qrn_int64 k = 0; k < num; ++k) {
    qrn_int64 i = index(k);
    it.check(t, i);
    const Bound b = given(k, bounds[i]);
    if (!valid(b)) checked(it, i, b);  // throws, naming the item
  }
  if (distinct) {
    for (qrn_int64 k = 0; k < num; ++k) bounds.set(index(k), stored(given(k, bounds[index(k)])));
    return;
  }
  std::vector<Bound> fresh(static_cast<size_t>(num));
  for (qrn_int64 k = 0; k < num; ++k) fresh[k] = stored(given(k, bounds[index(k)]));
  for (qrn_int64 k = 0; k < num; ++k) bounds.set(index(k), fresh[k]);
}

// Entry k of three bound arrays; a null array keeps that part of the current bound.
auto from_arrays(const qrn_int32 *bk, const double *bl, const double *bu) {
  return [=](qrn_int64 k, const Bound &now) {
    return Bound{bk ? bk[k] : now.bk, bl ? bl[k] : now.bl, bu ? bu[k] : now.bu};
  };
}

auto constant(qrn_int32 bk, double bl, double bu) {
  return [=](qrn_int64, const Bound &) { return Bound{bk, bl, bu}; };
}

void putboundlistconst(Task &t, const Items &it, qrn_int32 num, const qrn_int32 *sub, qrn_int32 bk, double bl,
                       double bu) {
  need_count(num, "num");
  need_array(sub, num, "sub");
  put_bounds(t, it, num, [&](qrn_int64 k) { return sub[k]; }, constant(bk, bl, bu), true);
}

void putboundsliceconst(Task &t, const Items &it, qrn_int32 first, qrn_int32 last, qrn_int32 bk, double bl,
                        double bu) {
  check_slice(first, last, t.*it.count, it.name);
  put_bounds(t, it, last - first, [&](qrn_int64 k) { return first + k; }, constant(bk, bl, bu), true);
}

void putboundlist(Task &t, const Items &it, qrn_int32 num, const qrn_int32 *sub, const qrn_int32 *bk,
                  const double *bl, const double *bu) {
  need_count(num, "num");
  need_array(sub, num, "sub");
  put_bounds(t, it, num, [&](qrn_int64 k) { return sub[k]; }, from_arrays(bk, bl, bu), false);
}

void putboundslice(Task &t, const Items &it, qrn_int32 first, qrn_int32 last, const qrn_int32 *bk, const double *bl,
                   const double *bu) {
  check_slice(first, last, t.*it.count, it.name);
  put_bounds(t, it, last - first, [&](qrn_int64 k) { return first + k; }, from_arrays(bk, bl, bu), true);
}

void getboundslice(Task &t, const Items &it, qrn_int32 first, qrn_int32 last, qrn_int32 *bk, double *bl,
                   double *bu) {
  check_slice(first, last, t.*it.count, it.name);
  const Bounds &b = t.*it.bounds;
  const size_t n = static_cast<size_t>(last - first);
  if (n == 0) return;
  if (bk) std::memcpy(bk, b.bk.data() + first, n * sizeof(qrn_int32));
  if (bl) std::memcpy(bl, b.bl.data() + first, n * sizeof(double));
  if (bu) std::memcpy(bu, b.bu.data() + first, n * sizeof(double));
}

// ---- objective and variable types ------------------------------------------------

void need_finite(double v, const char *what) {
  if (!std::isfinite(v)) fail(QRN_RES_ERR_VALUE_NAN, std::string(what) + " is not finite.");
}

// Checks a list of num variable indexes.
void check_vars(const Task &t, qrn_int32 num, const qrn_int32 *subj) {
  need_count(num, "num");
  need_array(subj, num, "subj");
  for (qrn_int32 k = 0; k < num; ++k) check_var(t, subj[k]);
}

void check_vartype(qrn_int32 vartype) {
  if (vartype != QRN_VAR_TYPE_CONTINUOUS && vartype != QRN_VAR_TYPE_INTEGER)
    fail(QRN_RES_ERR_VAR_TYPE, "Variable type " + std::to_string(vartype) + " is not one of 0..1.");
}

// Sets the type of variable j and keeps the count of integer variables exact.
void set_vartype(Task &t, qrn_int32 j, qrn_int32 vartype) {
  t.numintvar += (vartype == QRN_VAR_TYPE_INTEGER) - (t.vartype[j] == QRN_VAR_TYPE_INTEGER);
  t.vartype[j] = vartype;
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

// ---- bounds ----

QRN_API qrn_rescode QRN_CALL QRN_chgconbound(qrn_task_t task, qrn_int32 i, qrn_int32 lower, qrn_int32 finite,
                                             qrn_real value) {
  return api(task, "QRN_chgconbound", [&](Task &t) { chgbound(t, cons, i, lower, finite, value); });
}

QRN_API qrn_rescode QRN_CALL QRN_chgvarbound(qrn_task_t task, qrn_int32 j, qrn_int32 lower, qrn_int32 finite,
                                             qrn_real value) {
  return api(task, "QRN_chgvarbound", [&](Task &t) { chgbound(t, vars, j, lower, finite, value); });
}

QRN_API qrn_rescode QRN_CALL QRN_putconbound(qrn_task_t task, qrn_int32 i, qrn_int32 bkc, qrn_real blc, qrn_real buc) {
  return api(task, "QRN_putconbound", [&](Task &t) { putbound(t, cons, i, bkc, blc, buc); });
}

QRN_API qrn_rescode QRN_CALL QRN_putvarbound(qrn_task_t task, qrn_int32 j, qrn_int32 bkx, qrn_real blx, qrn_real bux) {
  return api(task, "QRN_putvarbound", [&](Task &t) { putbound(t, vars, j, bkx, blx, bux); });
}

QRN_API qrn_rescode QRN_CALL QRN_getconbound(qrn_task_t task, qrn_int32 i, qrn_int32 *bk, qrn_real *bl, qrn_real *bu) {
  return api(task, "QRN_getconbound", [&](Task &t) { getbound(t, cons, i, bk, bl, bu); });
}

QRN_API qrn_rescode QRN_CALL QRN_getvarbound(qrn_task_t task, qrn_int32 j, qrn_int32 *bk, qrn_real *bl, qrn_real *bu) {
  return api(task, "QRN_getvarbound", [&](Task &t) { getbound(t, vars, j, bk, bl, bu); });
}

QRN_API qrn_rescode QRN_CALL QRN_putconboundlistconst(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                                      qrn_int32 bkc, qrn_real blc, qrn_real buc) {
  return api(task, "QRN_putconboundlistconst", [&](Task &t) { putboundlistconst(t, cons, num, sub, bkc, blc, buc); });
}

QRN_API qrn_rescode QRN_CALL QRN_putvarboundlistconst(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                                      qrn_int32 bkx, qrn_real blx, qrn_real bux) {
  return api(task, "QRN_putvarboundlistconst", [&](Task &t) { putboundlistconst(t, vars, num, sub, bkx, blx, bux); });
}

QRN_API qrn_rescode QRN_CALL QRN_putconboundsliceconst(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                       qrn_int32 bkc, qrn_real blc, qrn_real buc) {
  return api(task, "QRN_putconboundsliceconst",
             [&](Task &t) { putboundsliceconst(t, cons, first, last, bkc, blc, buc); });
}

QRN_API qrn_rescode QRN_CALL QRN_putvarboundsliceconst(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                       qrn_int32 bkx, qrn_real blx, qrn_real bux) {
  return api(task, "QRN_putvarboundsliceconst",
             [&](Task &t) { putboundsliceconst(t, vars, first, last, bkx, blx, bux); });
}

QRN_API qrn_rescode QRN_CALL QRN_putconboundlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                                 const qrn_int32 *bkc, const qrn_real *blc, const qrn_real *buc) {
  return api(task, "QRN_putconboundlist", [&](Task &t) { putboundlist(t, cons, num, sub, bkc, blc, buc); });
}

QRN_API qrn_rescode QRN_CALL QRN_putvarboundlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                                 const qrn_int32 *bkx, const qrn_real *blx, const qrn_real *bux) {
  return api(task, "QRN_putvarboundlist", [&](Task &t) { putboundlist(t, vars, num, sub, bkx, blx, bux); });
}

QRN_API qrn_rescode QRN_CALL QRN_putconboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  const qrn_int32 *bkc, const qrn_real *blc, const qrn_real *buc) {
  return api(task, "QRN_putconboundslice", [&](Task &t) { putboundslice(t, cons, first, last, bkc, blc, buc); });
}

QRN_API qrn_rescode QRN_CALL QRN_putvarboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  const qrn_int32 *bkx, const qrn_real *blx, const qrn_real *bux) {
  return api(task, "QRN_putvarboundslice", [&](Task &t) { putboundslice(t, vars, first, last, bkx, blx, bux); });
}

QRN_API qrn_rescode QRN_CALL QRN_getconboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last, qrn_int32 *bk,
                                                  qrn_real *bl, qrn_real *bu) {
  return api(task, "QRN_getconboundslice", [&](Task &t) { getboundslice(t, cons, first, last, bk, bl, bu); });
}

QRN_API qrn_rescode QRN_CALL QRN_getvarboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last, qrn_int32 *bk,
                                                  qrn_real *bl, qrn_real *bu) {
  return api(task, "QRN_getvarboundslice", [&](Task &t) { getboundslice(t, vars, first, last, bk, bl, bu); });
}

// ---- objective ----

QRN_API qrn_rescode QRN_CALL QRN_getcj(qrn_task_t task, qrn_int32 j, qrn_real *cj) {
  return api(task, "QRN_getcj", [&](Task &t) {
    check_var(t, j);
    put(cj, t.c[j]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putcj(qrn_task_t task, qrn_int32 j, qrn_real cj) {
  return api(task, "QRN_putcj", [&](Task &t) {
    check_var(t, j);
    need_finite(cj, "The objective coefficient");
    t.c[j] = cj;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getcfix(qrn_task_t task, qrn_real *cfix) {
  return api(task, "QRN_getcfix", [&](Task &t) { put(cfix, t.cfix); });
}

QRN_API qrn_rescode QRN_CALL QRN_putcfix(qrn_task_t task, qrn_real cfix) {
  return api(task, "QRN_putcfix", [&](Task &t) {
    need_finite(cfix, "The objective's constant term");
    t.cfix = cfix;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getobjsense(qrn_task_t task, qrn_int32 *sense) {
  return api(task, "QRN_getobjsense", [&](Task &t) { put(sense, t.sense); });
}

QRN_API qrn_rescode QRN_CALL QRN_putobjsense(qrn_task_t task, qrn_int32 sense) {
  return api(task, "QRN_putobjsense", [&](Task &t) {
    if (sense != QRN_OBJECTIVE_SENSE_MINIMIZE && sense != QRN_OBJECTIVE_SENSE_MAXIMIZE)
      fail(QRN_RES_ERR_OBJ_SENSE, "Objective sense " + std::to_string(sense) + " is not one of 0..1.");
    t.sense = sense;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getc(qrn_task_t task, qrn_real *c) {
  return api(task, "QRN_getc", [&](Task &t) {
    if (c != nullptr) std::copy(t.c.begin(), t.c.end(), c);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getclist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj, qrn_real *c) {
  return api(task, "QRN_getclist", [&](Task &t) {
    check_vars(t, num, subj);
    if (c != nullptr)
      for (qrn_int32 k = 0; k < num; ++k) c[k] = t.c[subj[k]];
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getcslice(qrn_task_t task, qrn_int32 first, qrn_int32 last, qrn_real *c) {
  return api(task, "QRN_getcslice", [&](Task &t) {
    check_slice(first, last, t.numvar, "variable");
    if (c != nullptr) std::copy(t.c.begin() + first, t.c.begin() + last, c);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putclist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj, const qrn_real *val) {
  return api(task, "QRN_putclist", [&](Task &t) {
    check_vars(t, num, subj);
    need_array(val, num, "val");
    for (qrn_int32 k = 0; k < num; ++k) need_finite(val[k], "An objective coefficient");
    for (qrn_int32 k = 0; k < num; ++k) t.c[subj[k]] = val[k];
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putcslice(qrn_task_t task, qrn_int32 first, qrn_int32 last, const qrn_real *slice) {
  return api(task, "QRN_putcslice", [&](Task &t) {
    check_slice(first, last, t.numvar, "variable");
    need_array(slice, last - first, "slice");
    for (qrn_int32 k = 0; k < last - first; ++k) need_finite(slice[k], "An objective coefficient");
    std::copy(slice, slice + (last - first), t.c.begin() + first);
  });
}

// ---- variable types ----

QRN_API qrn_rescode QRN_CALL QRN_getnumintvar(qrn_task_t task, qrn_int32 *numintvar) {
  return api(task, "QRN_getnumintvar", [&](Task &t) { put(numintvar, t.numintvar); });
}

QRN_API qrn_rescode QRN_CALL QRN_getvartype(qrn_task_t task, qrn_int32 j, qrn_int32 *vartype) {
  return api(task, "QRN_getvartype", [&](Task &t) {
    check_var(t, j);
    put(vartype, t.vartype[j]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putvartype(qrn_task_t task, qrn_int32 j, qrn_int32 vartype) {
  return api(task, "QRN_putvartype", [&](Task &t) {
    check_var(t, j);
    check_vartype(vartype);
    set_vartype(t, j, vartype);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putvartypelist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                                const qrn_int32 *vartype) {
  return api(task, "QRN_putvartypelist", [&](Task &t) {
    check_vars(t, num, subj);
    need_array(vartype, num, "vartype");
    for (qrn_int32 k = 0; k < num; ++k) check_vartype(vartype[k]);
    for (qrn_int32 k = 0; k < num; ++k) set_vartype(t, subj[k], vartype[k]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getvartypelist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                                qrn_int32 *vartype) {
  return api(task, "QRN_getvartypelist", [&](Task &t) {
    check_vars(t, num, subj);
    if (vartype != nullptr)
      for (qrn_int32 k = 0; k < num; ++k) vartype[k] = t.vartype[subj[k]];
  });
}

}  // extern "C"
