// The solution store (defined flag, fitting to the task's counts, the hooks
// of structural changes) and the readers and writers of single vectors,
// whole and as slices.
#include "errors.hpp"
#include "solutions.hpp"

#include <algorithm>
#include <cmath>

namespace qrn {

// ---- the store ---------------------------------------------------------------------

Counts counts(Task &t) {
  qrn_task_t h = static_cast<qrn_task_s *>(&t);
  Counts n;
  qrn_rescode code = QRN_getnumcon(h, &n.numcon);
  if (code == QRN_RES_OK) code = QRN_getnumvar(h, &n.numvar);
  if (code == QRN_RES_OK) code = QRN_getnumcone(h, &n.numcone);
  if (code != QRN_RES_OK) fail(code, "Reading the problem's size failed.");
  return n;
}

void check_which(qrn_int32 whichsol) {
  if (whichsol < 0 || whichsol >= QRN_SOL_COUNT)
    fail(QRN_RES_ERR_SOL_WHICH, "Solution identifier " + std::to_string(whichsol) + " is not one of 0.." +
                                    std::to_string(QRN_SOL_COUNT - 1) + ".");
}

static const char *sol_name(qrn_int32 whichsol) {
  static const char *names[] = {"interior", "basic", "integer"};
  return names[whichsol];
}

const Solution &readable(const Task &t, qrn_int32 whichsol) {
  check_which(whichsol);
  const Solution &s = t.sol[whichsol];
  if (!s.defined) fail(QRN_RES_ERR_SOL_UNDEFINED, std::string("The ") + sol_name(whichsol) + " solution is not defined.");
  return s;
}

void fit(Solution &s, const Counts &n) {
  s.skc.resize(n.numcon, QRN_SK_UNKNOWN);
  s.skx.resize(n.numvar, QRN_SK_UNKNOWN);
  s.skn.resize(n.numcone, QRN_SK_UNKNOWN);
  for (auto *v : {&s.xc, &s.y, &s.slc, &s.suc}) v->resize(n.numcon, 0.0);
  for (auto *v : {&s.xx, &s.slx, &s.sux, &s.snx}) v->resize(n.numvar, 0.0);
}

Solution &writable(Task &t, qrn_int32 whichsol, const Counts &n) {
  Solution &s = t.sol[whichsol];
  if (!s.defined) {
    s = Solution{};
    s.defined = true;
  }
  fit(s, n);
  s.prosta = QRN_PRO_STA_UNKNOWN;
  s.solsta = QRN_SOL_STA_UNKNOWN;
  return s;
}

void check_keys(const qrn_int32 *sk, qrn_int64 n, const char *what) {
  if (sk == nullptr) return;
  for (qrn_int64 k = 0; k < n; ++k)
    if (sk[k] < 0 || sk[k] >= QRN_SK_COUNT)
      fail(QRN_RES_ERR_SOL_KEY, std::string(what) + "[" + std::to_string(k) + "] = " + std::to_string(sk[k]) +
                                    " is not a status key.");
}

void check_values(const double *v, qrn_int64 n, const char *what) {
  if (v == nullptr) return;
  for (qrn_int64 k = 0; k < n; ++k)
    if (std::isnan(v[k])) fail(QRN_RES_ERR_VALUE_NAN, std::string(what) + "[" + std::to_string(k) + "] is NaN.");
}

// ---- hooks -------------------------------------------------------------------------

static void forget_statuses(Task &t) {
  for (Solution &s : t.sol) {
    if (!s.defined) continue;
    s.prosta = QRN_PRO_STA_UNKNOWN;
    s.solsta = QRN_SOL_STA_UNKNOWN;
  }
}

void sol_appended(Task &t, qrn_int64 num) {
  if (num > 0) forget_statuses(t);
}

// Drops the entries of removed items. A vector shorter than the mask (items
// appended since it was stored) holds defaults beyond its end, which stay so.
template <class T>
static void drop(std::vector<T> &v, const std::vector<bool> &remove) {
  size_t w = 0;
  for (size_t k = 0; k < v.size(); ++k)
    if (k >= remove.size() || !remove[k]) v[w++] = v[k];
  v.resize(w);
}

void sol_remove_cons(Task &t, const std::vector<bool> &remove) {
  if (std::find(remove.begin(), remove.end(), true) == remove.end()) return;
  forget_statuses(t);
  for (Solution &s : t.sol) {
    drop(s.skc, remove);
    for (auto *v : {&s.xc, &s.y, &s.slc, &s.suc}) drop(*v, remove);
  }
}

void sol_remove_vars(Task &t, const std::vector<bool> &remove) {
  if (std::find(remove.begin(), remove.end(), true) == remove.end()) return;
  forget_statuses(t);
  for (Solution &s : t.sol) {
    drop(s.skx, remove);
    for (auto *v : {&s.xx, &s.slx, &s.sux, &s.snx}) drop(*v, remove);
  }
}

void sol_remove_cones(Task &t, const std::vector<bool> &remove) {
  if (std::find(remove.begin(), remove.end(), true) == remove.end()) return;
  forget_statuses(t);
  for (Solution &s : t.sol) drop(s.skn, remove);
}

// ---- single vectors ----------------------------------------------------------------

namespace {

enum class Dim { con, var, cone };

qrn_int32 count_of(const Counts &n, Dim d) {
  return d == Dim::con ? n.numcon : d == Dim::var ? n.numvar : n.numcone;
}
const char *kind_of(Dim d) { return d == Dim::con ? "constraint" : d == Dim::var ? "variable" : "cone"; }

template <class T>
constexpr T fill_value() {
  if constexpr (std::is_same_v<T, qrn_int32>) return QRN_SK_UNKNOWN;
  else return 0.0;
}

// Entries [first, last) of a stored vector; entries past its end are defaults.
template <class T>
void read(const std::vector<T> &v, qrn_int64 first, qrn_int64 last, T *out) {
  if (out == nullptr) return;
  qrn_int64 stored = std::min<qrn_int64>(last, static_cast<qrn_int64>(v.size()));
  if (first < stored) std::copy(v.begin() + first, v.begin() + stored, out);
  std::fill(out + std::max<qrn_int64>(0, stored - first), out + (last - first), fill_value<T>());
}

template <class T>
void check_input(const T *in, qrn_int64 n, const char *what) {
  need_array(in, n, what);
  if constexpr (std::is_same_v<T, qrn_int32>) check_keys(in, n, what);
  else check_values(in, n, what);
}

constexpr bool whole = true, slice = false;

// Reads [first, last) of one vector, or all of it.
template <class T>
qrn_rescode get_vec(qrn_task_t task, const char *fn, qrn_int32 whichsol, std::vector<T> Solution::*field, Dim d,
                    bool all, qrn_int32 first, qrn_int32 last, T *out) {
  return api(task, fn, [&](Task &t) {
    const Solution &s = readable(t, whichsol);
    qrn_int32 n = count_of(counts(t), d);
    if (all) {
      first = 0;
      last = n;
    }
    check_slice(first, last, n, kind_of(d));
    read(s.*field, first, last, out);
  });
}

template <class T>
qrn_rescode put_vec(qrn_task_t task, const char *fn, const char *what, qrn_int32 whichsol,
                    std::vector<T> Solution::*field, Dim d, bool all, qrn_int32 first, qrn_int32 last,
                    const T *in) {
  return api(task, fn, [&](Task &t) {
    check_which(whichsol);
    Counts n = counts(t);
    if (all) {
      first = 0;
      last = count_of(n, d);
    }
    check_slice(first, last, count_of(n, d), kind_of(d));
    check_input(in, last - first, what);
    Solution &s = writable(t, whichsol, n);
    if (in != nullptr) std::copy(in, in + (last - first), (s.*field).begin() + first);
  });
}

}  // namespace

}  // namespace qrn

using namespace qrn;

#define QRN_WHOLE(name, T, dim)                                                                                 \
  QRN_API qrn_rescode QRN_CALL QRN_get##name(qrn_task_t task, qrn_int32 whichsol, T *name) {                   \
    return get_vec(task, "QRN_get" #name, whichsol, &Solution::name, dim, whole, 0, 0, name);                        \
  }
#define QRN_PUT_WHOLE(name, T, dim)                                                                             \
  QRN_API qrn_rescode QRN_CALL QRN_put##name(qrn_task_t task, qrn_int32 whichsol, const T *name) {             \
    return put_vec(task, "QRN_put" #name, #name, whichsol, &Solution::name, dim, whole, 0, 0, name);                 \
  }
#define QRN_SLICES(name, T, dim)                                                                                \
  QRN_API qrn_rescode QRN_CALL QRN_get##name##slice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,      \
                                                    qrn_int32 last, T *name) {                                  \
    return get_vec(task, "QRN_get" #name "slice", whichsol, &Solution::name, dim, slice, first, last, name);           \
  }                                                                                                             \
  QRN_API qrn_rescode QRN_CALL QRN_put##name##slice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,      \
                                                    qrn_int32 last, const T *name) {                            \
    return put_vec(task, "QRN_put" #name "slice", #name, whichsol, &Solution::name, dim, slice, first, last, name);    \
  }
#define QRN_VECTOR(name, T, dim) QRN_WHOLE(name, T, dim) QRN_PUT_WHOLE(name, T, dim) QRN_SLICES(name, T, dim)

extern "C" {

QRN_VECTOR(skc, qrn_int32, Dim::con)
QRN_VECTOR(skx, qrn_int32, Dim::var)
QRN_WHOLE(skn, qrn_int32, Dim::cone)
QRN_VECTOR(xc, qrn_real, Dim::con)
QRN_VECTOR(xx, qrn_real, Dim::var)
QRN_VECTOR(y, qrn_real, Dim::con)
QRN_VECTOR(slc, qrn_real, Dim::con)
QRN_VECTOR(suc, qrn_real, Dim::con)
QRN_VECTOR(slx, qrn_real, Dim::var)
QRN_VECTOR(sux, qrn_real, Dim::var)
QRN_VECTOR(snx, qrn_real, Dim::var)

QRN_API qrn_rescode QRN_CALL QRN_getsolutionslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 solitem,
                                                  qrn_int32 first, qrn_int32 last, qrn_real *values) {
  static std::vector<double> Solution::*const fields[] = {&Solution::xc,  &Solution::xx,  &Solution::y,
                                                          &Solution::slc, &Solution::suc, &Solution::slx,
                                                          &Solution::sux, &Solution::snx};
  static const Dim dims[] = {Dim::con, Dim::var, Dim::con, Dim::con, Dim::con, Dim::var, Dim::var, Dim::var};
  if (solitem < 0 || solitem >= QRN_SOL_ITEM_COUNT) {
    return api(task, "QRN_getsolutionslice", [&](Task &) {
      fail(QRN_RES_ERR_SOL_ITEM, "Solution item " + std::to_string(solitem) + " is not one of 0.." +
                                     std::to_string(QRN_SOL_ITEM_COUNT - 1) + ".");
    });
  }
  return get_vec(task, "QRN_getsolutionslice", whichsol, fields[solitem], dims[solitem], slice, first, last,
                 values);
}

}  // extern "C"
