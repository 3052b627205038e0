// Affine conic constraints: appending, replacing and reading them, their
// stacked forms, and the stacked row offsets that solutions' doty follow.
#include "conic.hpp"
#include "semidefinite.hpp"

#include <algorithm>

namespace qrn {

void check_acc(const Task &t, qrn_int64 k, const char *what) {
  auto n = static_cast<qrn_int64>(t.conic.accs.size());
  if (k < 0 || k >= n) fail(QRN_RES_ERR_INDEX_ACC, outside(what, k, n));
}

Acc make_acc(const Task &t, qrn_int64 dom, qrn_int64 n, const qrn_int64 *afe, const double *b) {
  check_domain(t, dom);
  need_count(n, "The number of affine expressions");
  need_array(afe, n, "afeidxlist");
  qrn_int64 dim = t.conic.domains[dom].n;
  if (n != dim)
    fail(QRN_RES_ERR_ACC_SIZE, "Domain " + std::to_string(dom) + " has dimension " + std::to_string(dim) + "; " +
                                   std::to_string(n) + " affine expressions given.");
  Acc acc{dom, std::vector<qrn_int64>(afe, afe + n), std::vector<double>(n, 0.0)};
  for (qrn_int64 k = 0; k < n; ++k) check_afe(t, afe[k]);
  if (b != nullptr)
    for (qrn_int64 k = 0; k < n; ++k) need_finite(acc.b[k] = b[k], "b", k);
  return acc;
}

void set_acc(Task &t, qrn_int64 k, Acc acc) {
  ConicData &c = t.conic;
  auto num = static_cast<qrn_int64>(c.accs.size());
  auto n = static_cast<qrn_int64>(acc.afe.size());
  if (k == num) {
    // Appending: the new rows follow all others; doty gets zeros for them.
    c.accs.push_back(std::move(acc));
    c.accstart.push_back(c.accstart.back() + n);
    t.accnames.resize(c.accs.size());
    c.maxnumacc = std::max(c.maxnumacc, num + 1);
    for (Solution &s : t.sol)
      if (s.defined && static_cast<qrn_int64>(s.doty.size()) == c.accstart[num]) s.doty.resize(c.accstart.back(), 0.0);
    return;
  }
  auto old = static_cast<qrn_int64>(c.accs[k].afe.size());
  c.accs[k] = std::move(acc);
  if (old == n) return;
  // The size changed: later rows move; doty keeps every other ACC's values.
  qrn_int64 at = c.accstart[k], shift = n - old;
  for (Solution &s : t.sol) {
    if (!s.defined || static_cast<qrn_int64>(s.doty.size()) != c.accstart.back()) continue;
    s.doty.erase(s.doty.begin() + at, s.doty.begin() + at + old);
    s.doty.insert(s.doty.begin() + at, n, 0.0);
  }
  for (size_t m = k + 1; m < c.accstart.size(); ++m) c.accstart[m] += shift;
}

namespace {

// ACCs for domains doms[0..m), taking expressions and b values in turn.
std::vector<Acc> make_accs(const Task &t, qrn_int64 m, const qrn_int64 *doms, qrn_int64 k, const qrn_int64 *afe,
                           const double *b) {
  need_count(m, "The number of ACCs");
  need_count(k, "The number of affine expressions");
  need_array(doms, m, "domidxs");
  need_array(afe, k, "afeidxlist");
  qrn_int64 total = 0;
  for (qrn_int64 a = 0; a < m; ++a) {
    check_domain(t, doms[a]);
    total += t.conic.domains[doms[a]].n;
  }
  if (total != k)
    fail(QRN_RES_ERR_ACC_SIZE, "The domains have dimensions summing to " + std::to_string(total) + "; " +
                                   std::to_string(k) + " affine expressions given.");
  std::vector<Acc> out;
  out.reserve(m);
  qrn_int64 at = 0;
  for (qrn_int64 a = 0; a < m; ++a) {
    qrn_int64 n = t.conic.domains[doms[a]].n;
    out.push_back(make_acc(t, doms[a], n, afe + at, b == nullptr ? nullptr : b + at));
    at += n;
  }
  return out;
}

// Expression indexes first, first+1, ..., first+k-1.
std::vector<qrn_int64> sequence(const Task &t, qrn_int64 first, qrn_int64 k) {
  need_count(k, "The number of affine expressions");
  auto numafe = static_cast<qrn_int64>(t.conic.afe.rows.size());
  if (first < 0 || first > numafe || k > numafe - first)
    fail(QRN_RES_ERR_INDEX_AFE, "The affine expressions " + std::to_string(first) + ".." +
                                    std::to_string(first + k - 1) + " are not all inside 0.." +
                                    std::to_string(numafe - 1) + ".");
  std::vector<qrn_int64> v(k);
  for (qrn_int64 i = 0; i < k; ++i) v[i] = first + i;
  return v;
}

void need_room(const Task &t, qrn_int64 more) {
  if (more > INT32_MAX - static_cast<qrn_int64>(t.conic.accs.size()))
    fail(QRN_RES_ERR_ARGUMENT, "The number of ACCs would exceed 2^31-1.");
}

void append_all(Task &t, std::vector<Acc> accs) {
  need_room(t, static_cast<qrn_int64>(accs.size()));
  for (Acc &a : accs) set_acc(t, static_cast<qrn_int64>(t.conic.accs.size()), std::move(a));
}


template <class Fn>
void each_acc_row(const Task &t, Fn &&fn) {
  qrn_int64 row = 0;
  for (const Acc &acc : t.conic.accs)
    for (size_t i = 0; i < acc.afe.size(); ++i) fn(row++, acc, i);
}

}  // namespace

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumacc(qrn_task_t task, qrn_int64 maxnumacc) {
  return api(task, "QRN_putmaxnumacc", [&](Task &t) {
    need_capacity(maxnumacc, static_cast<qrn_int64>(t.conic.accs.size()), "The ACC capacity");
    t.conic.maxnumacc = maxnumacc;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumacc(qrn_task_t task, qrn_int64 *num) {
  return api(task, "QRN_getnumacc", [&](Task &t) { put(num, static_cast<qrn_int64>(t.conic.accs.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_appendacc(qrn_task_t task, qrn_int64 domidx, qrn_int64 numafeidx,
                                           const qrn_int64 *afeidxlist, const qrn_real *b) {
  return api(task, "QRN_appendacc", [&](Task &t) {
    need_room(t, 1);
    set_acc(t, static_cast<qrn_int64>(t.conic.accs.size()), make_acc(t, domidx, numafeidx, afeidxlist, b));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_appendaccs(qrn_task_t task, qrn_int64 numaccs, const qrn_int64 *domidxs,
                                            qrn_int64 numafeidx, const qrn_int64 *afeidxlist, const qrn_real *b) {
  return api(task, "QRN_appendaccs",
             [&](Task &t) { append_all(t, make_accs(t, numaccs, domidxs, numafeidx, afeidxlist, b)); });
}

QRN_API qrn_rescode QRN_CALL QRN_appendaccseq(qrn_task_t task, qrn_int64 domidx, qrn_int64 numafeidx,
                                              qrn_int64 afeidxfirst, const qrn_real *b) {
  return api(task, "QRN_appendaccseq", [&](Task &t) {
    auto afe = sequence(t, afeidxfirst, numafeidx);
    need_room(t, 1);
    set_acc(t, static_cast<qrn_int64>(t.conic.accs.size()), make_acc(t, domidx, numafeidx, afe.data(), b));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_appendaccsseq(qrn_task_t task, qrn_int64 numaccs, const qrn_int64 *domidxs,
                                               qrn_int64 numafeidx, qrn_int64 afeidxfirst, const qrn_real *b) {
  return api(task, "QRN_appendaccsseq", [&](Task &t) {
    auto afe = sequence(t, afeidxfirst, numafeidx);
    append_all(t, make_accs(t, numaccs, domidxs, numafeidx, afe.data(), b));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putacc(qrn_task_t task, qrn_int64 accidx, qrn_int64 domidx, qrn_int64 numafeidx,
                                        const qrn_int64 *afeidxlist, const qrn_real *b) {
  return api(task, "QRN_putacc", [&](Task &t) {
    check_acc(t, accidx);
    set_acc(t, accidx, make_acc(t, domidx, numafeidx, afeidxlist, b));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putacclist(qrn_task_t task, qrn_int64 numaccs, const qrn_int64 *accidxs,
                                            const qrn_int64 *domidxs, qrn_int64 numafeidx,
                                            const qrn_int64 *afeidxlist, const qrn_real *b) {
  return api(task, "QRN_putacclist", [&](Task &t) {
    auto accs = make_accs(t, numaccs, domidxs, numafeidx, afeidxlist, b);
    need_array(accidxs, numaccs, "accidxs");
    for (qrn_int64 a = 0; a < numaccs; ++a) check_acc(t, accidxs[a]);
    for (qrn_int64 a = 0; a < numaccs; ++a) set_acc(t, accidxs[a], std::move(accs[a]));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putaccb(qrn_task_t task, qrn_int64 accidx, qrn_int64 lengthb, const qrn_real *b) {
  return api(task, "QRN_putaccb", [&](Task &t) {
    check_acc(t, accidx);
    Acc &acc = t.conic.accs[accidx];
    if (lengthb != static_cast<qrn_int64>(acc.b.size()))
      fail(QRN_RES_ERR_ACC_SIZE, "ACC " + std::to_string(accidx) + " has " + std::to_string(acc.b.size()) +
                                     " rows; b has " + std::to_string(lengthb) + " values.");
    std::vector<double> nb(lengthb, 0.0);
    if (b != nullptr)
      for (qrn_int64 k = 0; k < lengthb; ++k) need_finite(nb[k] = b[k], "b", k);
    acc.b = std::move(nb);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putaccbj(qrn_task_t task, qrn_int64 accidx, qrn_int64 j, qrn_real bj) {
  return api(task, "QRN_putaccbj", [&](Task &t) {
    check_acc(t, accidx);
    Acc &acc = t.conic.accs[accidx];
    auto n = static_cast<qrn_int64>(acc.b.size());
    if (j < 0 || j >= n) fail(QRN_RES_ERR_ARGUMENT, outside("Row", j, n));
    need_finite(bj, "bj");
    acc.b[j] = bj;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccdomain(qrn_task_t task, qrn_int64 accidx, qrn_int64 *domidx) {
  return api(task, "QRN_getaccdomain", [&](Task &t) {
    check_acc(t, accidx);
    put(domidx, t.conic.accs[accidx].dom);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccn(qrn_task_t task, qrn_int64 accidx, qrn_int64 *n) {
  return api(task, "QRN_getaccn", [&](Task &t) {
    check_acc(t, accidx);
    put(n, static_cast<qrn_int64>(t.conic.accs[accidx].afe.size()));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccntot(qrn_task_t task, qrn_int64 *n) {
  return api(task, "QRN_getaccntot", [&](Task &t) { put(n, t.conic.accstart.back()); });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccafeidxlist(qrn_task_t task, qrn_int64 accidx, qrn_int64 *afeidxlist) {
  return api(task, "QRN_getaccafeidxlist", [&](Task &t) {
    check_acc(t, accidx);
    const Acc &acc = t.conic.accs[accidx];
    if (afeidxlist != nullptr) std::copy(acc.afe.begin(), acc.afe.end(), afeidxlist);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccb(qrn_task_t task, qrn_int64 accidx, qrn_real *b) {
  return api(task, "QRN_getaccb", [&](Task &t) {
    check_acc(t, accidx);
    const Acc &acc = t.conic.accs[accidx];
    if (b != nullptr) std::copy(acc.b.begin(), acc.b.end(), b);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccs(qrn_task_t task, qrn_int64 *domidxlist, qrn_int64 *afeidxlist,
                                         qrn_real *b) {
  return api(task, "QRN_getaccs", [&](Task &t) {
    qrn_int64 at = 0;
    for (size_t a = 0; a < t.conic.accs.size(); ++a) {
      const Acc &acc = t.conic.accs[a];
      if (domidxlist != nullptr) domidxlist[a] = acc.dom;
      if (afeidxlist != nullptr) std::copy(acc.afe.begin(), acc.afe.end(), afeidxlist + at);
      if (b != nullptr) std::copy(acc.b.begin(), acc.b.end(), b + at);
      at += static_cast<qrn_int64>(acc.afe.size());
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccfnumnz(qrn_task_t task, qrn_int64 *accfnnz) {
  return api(task, "QRN_getaccfnumnz", [&](Task &t) {
    qrn_int64 n = 0;
    each_acc_row(t, [&](qrn_int64, const Acc &acc, size_t i) {
      n += static_cast<qrn_int64>(t.conic.afe.rows[acc.afe[i]].size());
    });
    put(accfnnz, n);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccftrip(qrn_task_t task, qrn_int64 *frow, qrn_int32 *fcol, qrn_real *fval) {
  return api(task, "QRN_getaccftrip", [&](Task &t) {
    qrn_int64 p = 0;
    each_acc_row(t, [&](qrn_int64 row, const Acc &acc, size_t i) {
      for (const FEntry &e : t.conic.afe.rows[acc.afe[i]]) {
        if (frow != nullptr) frow[p] = row;
        if (fcol != nullptr) fcol[p] = e.var;
        if (fval != nullptr) fval[p] = e.val;
        ++p;
      }
    });
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccgvector(qrn_task_t task, qrn_real *g) {
  return api(task, "QRN_getaccgvector", [&](Task &t) {
    if (g == nullptr) return;
    each_acc_row(t, [&](qrn_int64 row, const Acc &acc, size_t i) { g[row] = t.conic.afe.g[acc.afe[i]] - acc.b[i]; });
  });
}

namespace {
struct AccBarTrip {
  qrn_int64 row;
  qrn_int32 barvar;
  BlockEntry e;
};

std::vector<AccBarTrip> acc_barf_triplets(const Task &t) {
  std::vector<AccBarTrip> out;
  each_acc_row(t, [&](qrn_int64 row, const Acc &acc, size_t i) {
    auto it = t.conic.afe.barf.find(acc.afe[i]);
    if (it == t.conic.afe.barf.end()) return;
    for (const BarFEntry &entry : it->second)
      for (const BlockEntry &e : expand(t.sdp, entry.terms)) out.push_back(AccBarTrip{row, entry.barvar, e});
  });
  return out;
}
}  // namespace

QRN_API qrn_rescode QRN_CALL QRN_getaccbarfnumblocktriplets(qrn_task_t task, qrn_int64 *numtrip) {
  return api(task, "QRN_getaccbarfnumblocktriplets",
             [&](Task &t) { put(numtrip, static_cast<qrn_int64>(acc_barf_triplets(t).size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getaccbarfblocktriplet(qrn_task_t task, qrn_int64 maxnumtrip, qrn_int64 *numtrip,
                                                        qrn_int64 *acc_afe, qrn_int32 *bar_var, qrn_int32 *blk_row,
                                                        qrn_int32 *blk_col, qrn_real *blk_val) {
  return api(task, "QRN_getaccbarfblocktriplet", [&](Task &t) {
    auto trips = acc_barf_triplets(t);
    auto n = static_cast<qrn_int64>(trips.size());
    if (n > maxnumtrip)
      fail(QRN_RES_ERR_TOO_SMALL, "The ACCs have " + std::to_string(n) + " barF block triplets; the capacity is " +
                                      std::to_string(maxnumtrip) + ".");
    put(numtrip, n);
    for (qrn_int64 k = 0; k < n; ++k) {
      if (acc_afe != nullptr) acc_afe[k] = trips[k].row;
      if (bar_var != nullptr) bar_var[k] = trips[k].barvar;
      if (blk_row != nullptr) blk_row[k] = trips[k].e.k;
      if (blk_col != nullptr) blk_col[k] = trips[k].e.l;
      if (blk_val != nullptr) blk_val[k] = trips[k].e.val;
    }
  });
}

}  // extern "C"
