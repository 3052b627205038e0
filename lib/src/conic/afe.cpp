// Affine expressions: the rows of F, the vector g and the barF entries.
//
// F is kept by row (sorted by variable); AfeStore::colrows lists per variable
// the rows that may hold it, so that a column is cleared without scanning all
// rows (sized to the variables when F is written). A row written again only
// adds the variables it did not hold; a column list that grows to twice its
// true count is compacted, which keeps its length within a constant factor of
// the column's true length.
#include "conic.hpp"
#include "semidefinite.hpp"

#include <algorithm>
#include <map>

namespace qrn {

std::string outside(const char *what, qrn_int64 v, qrn_int64 n) {
  return std::string(what) + " " + std::to_string(v) + " is outside 0.." + std::to_string(n - 1) + " (there are " +
         std::to_string(n) + ").";
}

void check_afe(const Task &t, qrn_int64 r, const char *what) {
  auto n = static_cast<qrn_int64>(t.conic.afe.rows.size());
  if (r < 0 || r >= n) fail(QRN_RES_ERR_INDEX_AFE, outside(what, r, n));
}

void need_finite(double v, const char *what, qrn_int64 k) {
  if (std::isfinite(v)) return;
  std::string at = k >= 0 ? " at position " + std::to_string(k) : "";
  fail(QRN_RES_ERR_VALUE_NAN, std::string("A value of ") + what + at + " is NaN or infinite.");
}

void need_range(qrn_int64 ptr, qrn_int64 num, qrn_int64 len, const char *what, qrn_int64 k) {
  if (num < 0) fail(QRN_RES_ERR_NEGATIVE_COUNT, std::string("Count ") + std::to_string(k) + " of " + what + " is negative.");
  if (ptr < 0 || ptr > len || num > len - ptr)
    fail(QRN_RES_ERR_PTR_RANGE, std::string("Entry ") + std::to_string(k) + " of " + what + " reaches " +
                                    std::to_string(ptr) + ".." + std::to_string(ptr + num) + ", outside the " +
                                    std::to_string(len) + " entries given.");
}

namespace {

AfeStore &store(Task &t) { return t.conic.afe; }

void need_distinct(const qrn_int64 *afeidx, qrn_int64 n) {
  std::vector<qrn_int64> sorted(afeidx, afeidx + n);
  std::sort(sorted.begin(), sorted.end());
  auto rep = std::adjacent_find(sorted.begin(), sorted.end());
  if (rep != sorted.end()) fail(QRN_RES_ERR_DUP_INDEX, "Affine expression " + std::to_string(*rep) + " is listed twice.");
}

// The column index follows the task's variables.
void fit_columns(Task &t) {
  auto n = static_cast<size_t>(t.numvar);
  if (t.conic.afe.colrows.size() < n) {
    t.conic.afe.colrows.resize(n);
    t.conic.afe.colcount.resize(n, 0);
  }
}

bool row_holds(const std::vector<FEntry> &row, qrn_int32 j) {
  auto it = std::lower_bound(row.begin(), row.end(), j, [](const FEntry &e, qrn_int32 v) { return e.var < v; });
  return it != row.end() && it->var == j;
}

// Drops stale and repeated rows from the list of column j.
void compact_column(AfeStore &f, qrn_int32 j) {
  auto &list = f.colrows[j];
  std::sort(list.begin(), list.end());
  list.erase(std::unique(list.begin(), list.end()), list.end());
  list.erase(std::remove_if(list.begin(), list.end(), [&](qrn_int64 r) { return !row_holds(f.rows[r], j); }),
             list.end());
}

void column_gains(AfeStore &f, qrn_int32 j, qrn_int64 r) {
  ++f.colcount[j];
  f.colrows[j].push_back(r);
  if (f.colrows[j].size() > 2 * static_cast<size_t>(f.colcount[j]) + 8) compact_column(f, j);
}

// Sets F(r, j) = v (0 removes the entry).
void set_fentry(AfeStore &f, qrn_int64 r, qrn_int32 j, double v) {
  auto &row = f.rows[r];
  auto it = std::lower_bound(row.begin(), row.end(), j, [](const FEntry &e, qrn_int32 x) { return e.var < x; });
  bool held = it != row.end() && it->var == j;
  if (held && v != 0.0) {
    it->val = v;
  } else if (held) {
    row.erase(it);
    --f.colcount[j];
    --f.nnz;
  } else if (v != 0.0) {
    row.insert(it, FEntry{j, v});
    ++f.nnz;
    column_gains(f, j, r);
  }
}

void empty_column(AfeStore &f, qrn_int32 j) {
  auto &list = f.colrows[j];
  for (qrn_int64 r : list) {
    auto &row = f.rows[r];
    auto it = std::lower_bound(row.begin(), row.end(), j, [](const FEntry &e, qrn_int32 x) { return e.var < x; });
    if (it != row.end() && it->var == j) {
      row.erase(it);
      --f.nnz;
    }
  }
  list.clear();
  f.colcount[j] = 0;
}

void need_new_afes(const Task &t, qrn_int64 num) {
  need_count(num, "The number of affine expressions to append");
  if (num > INT64_MAX / 2 - static_cast<qrn_int64>(t.conic.afe.rows.size()))
    fail(QRN_RES_ERR_ARGUMENT, "Too many affine expressions.");
}

// ---- barF ----

std::vector<Term> barf_terms(const Task &t, qrn_int32 j, qrn_int64 num, const qrn_int64 *termidx,
                             const double *termweight) {
  check_barvar(t, j, "Semidefinite variable index");
  return make_terms(t, t.sdp.dim[j], num, termidx, termweight);
}

// Sets entry (r, j) of barF; no terms removes it.
void set_barf(Task &t, qrn_int64 r, qrn_int32 j, std::vector<Term> terms) {
  auto &map = t.conic.afe.barf;
  auto found = map.find(r);
  if (found == map.end()) {
    if (terms.empty()) return;
    found = map.emplace(r, std::vector<BarFEntry>{}).first;
  }
  auto &row = found->second;
  auto it = std::lower_bound(row.begin(), row.end(), j, [](const BarFEntry &e, qrn_int32 x) { return e.barvar < x; });
  bool held = it != row.end() && it->barvar == j;
  if (terms.empty()) {
    if (held) row.erase(it);
  } else if (held) {
    it->terms = std::move(terms);
  } else {
    row.insert(it, BarFEntry{j, std::move(terms)});
  }
  if (row.empty()) map.erase(found);
}

// A barF row from entries k of barvaridx/numterm/ptrterm: checked and sorted;
// entries without terms are dropped, a repeated variable is refused.
std::vector<BarFEntry> make_barf_row(const Task &t, qrn_int64 n, const qrn_int32 *barvaridx, const qrn_int64 *numterm,
                                     const qrn_int64 *ptrterm, qrn_int64 lenterm, const qrn_int64 *termidx,
                                     const double *termweight) {
  need_array(barvaridx, n, "barvaridx");
  need_array(numterm, n, "numterm");
  need_array(ptrterm, n, "ptrterm");
  need_count(lenterm, "lenterm");
  std::vector<BarFEntry> row;
  for (qrn_int64 k = 0; k < n; ++k) {
    need_range(ptrterm[k], numterm[k], lenterm, "ptrterm/numterm", k);
    auto terms = barf_terms(t, barvaridx[k], numterm[k], termidx == nullptr ? nullptr : termidx + ptrterm[k],
                            termweight == nullptr ? nullptr : termweight + ptrterm[k]);
    row.push_back(BarFEntry{barvaridx[k], std::move(terms)});
  }
  std::stable_sort(row.begin(), row.end(), [](const BarFEntry &a, const BarFEntry &b) { return a.barvar < b.barvar; });
  for (size_t k = 1; k < row.size(); ++k)
    if (row[k].barvar == row[k - 1].barvar)
      fail(QRN_RES_ERR_DUP_INDEX, "Semidefinite variable " + std::to_string(row[k].barvar) + " is listed twice in the row.");
  row.erase(std::remove_if(row.begin(), row.end(), [](const BarFEntry &e) { return e.terms.empty(); }), row.end());
  return row;
}

const std::vector<BarFEntry> &barf_row(const Task &t, qrn_int64 r) {
  static const std::vector<BarFEntry> none;
  auto it = t.conic.afe.barf.find(r);
  return it == t.conic.afe.barf.end() ? none : it->second;
}

struct BarTrip {
  qrn_int64 afe;
  qrn_int32 barvar;
  BlockEntry e;
};

std::vector<BarTrip> barf_triplets(const Task &t) {
  std::vector<BarTrip> out;
  for (auto &[r, row] : t.conic.afe.barf)
    for (auto &entry : row)
      for (auto &e : expand(t.sdp, entry.terms)) out.push_back(BarTrip{r, entry.barvar, e});
  return out;
}

}  // namespace

std::vector<FEntry> make_frow(const Task &t, qrn_int64 n, const qrn_int32 *varidx, const double *val, bool overwrite) {
  need_count(n, "The number of entries");
  need_array(varidx, n, "varidx");
  need_array(val, n, "val");
  std::vector<FEntry> row;
  row.reserve(n);
  bool sorted = true;
  for (qrn_int64 k = 0; k < n; ++k) {
    check_var(t, varidx[k], "Variable index");
    need_finite(val[k], "val", k);
    if (k > 0 && varidx[k] <= varidx[k - 1]) sorted = false;
    row.push_back(FEntry{varidx[k], val[k]});
  }
  if (!sorted) {
    std::stable_sort(row.begin(), row.end(), [](const FEntry &a, const FEntry &b) { return a.var < b.var; });
    size_t w = 0;
    for (size_t k = 0; k < row.size(); ++k) {
      if (w > 0 && row[w - 1].var == row[k].var) {
        if (!overwrite)
          fail(QRN_RES_ERR_DUP_INDEX, "Variable index " + std::to_string(row[k].var) + " is listed twice.");
        row[w - 1] = row[k];
      } else {
        row[w++] = row[k];
      }
    }
    row.resize(w);
  }
  row.erase(std::remove_if(row.begin(), row.end(), [](const FEntry &e) { return e.val == 0.0; }), row.end());
  return row;
}

void set_frow(Task &t, qrn_int64 r, std::vector<FEntry> entries) {
  AfeStore &f = store(t);
  fit_columns(t);
  auto &old = f.rows[r];
  if (old.empty()) {  // a fresh row: every variable arrives
    f.nnz += static_cast<qrn_int64>(entries.size());
    old = std::move(entries);
    for (const FEntry &e : old) column_gains(f, e.var, r);
    return;
  }
  // Walk both sorted rows: variables leaving lose a count, variables arriving
  // gain one once the row holds them (a compaction then keeps this row).
  std::vector<qrn_int32> arriving;
  size_t a = 0, b = 0;
  while (a < old.size() || b < entries.size()) {
    if (b == entries.size() || (a < old.size() && old[a].var < entries[b].var)) {
      --f.colcount[old[a++].var];
    } else if (a == old.size() || entries[b].var < old[a].var) {
      arriving.push_back(entries[b++].var);
    } else {
      ++a, ++b;
    }
  }
  f.nnz += static_cast<qrn_int64>(entries.size()) - static_cast<qrn_int64>(old.size());
  old = std::move(entries);
  for (qrn_int32 j : arriving) column_gains(f, j, r);
}

// The column index is sized by the writers of F when they use it (fit_columns):
// a task without F does not pay for it on every variable appended.
void conic_append_vars(Task &) {}

void conic_remove_vars(Task &t, const std::vector<bool> &remove) {
  AfeStore &f = t.conic.afe;
  if (f.colrows.empty() && f.nnz == 0) return;  // no column index yet: nothing to renumber
  std::vector<qrn_int32> newindex(remove.size());
  qrn_int32 next = 0;
  for (size_t k = 0; k < remove.size(); ++k) newindex[k] = remove[k] ? -1 : next++;
  f.colrows.assign(next, {});
  f.colcount.assign(next, 0);
  f.nnz = 0;
  for (size_t r = 0; r < f.rows.size(); ++r) {
    auto &row = f.rows[r];
    size_t w = 0;
    for (auto &e : row) {
      qrn_int32 j = e.var < static_cast<qrn_int32>(newindex.size()) ? newindex[e.var] : -1;
      if (j < 0) continue;
      row[w++] = FEntry{j, e.val};
      f.colrows[j].push_back(static_cast<qrn_int64>(r));
      ++f.colcount[j];
    }
    row.resize(w);
    f.nnz += static_cast<qrn_int64>(w);
  }
}

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumafe(qrn_task_t task, qrn_int64 maxnumafe) {
  return api(task, "QRN_putmaxnumafe", [&](Task &t) {
    need_capacity(maxnumafe, static_cast<qrn_int64>(t.conic.afe.rows.size()), "The affine expression capacity");
    t.conic.afe.maxnum = maxnumafe;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumafe(qrn_task_t task, qrn_int64 *numafe) {
  return api(task, "QRN_getnumafe", [&](Task &t) { put(numafe, static_cast<qrn_int64>(t.conic.afe.rows.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_appendafes(qrn_task_t task, qrn_int64 num) {
  return api(task, "QRN_appendafes", [&](Task &t) {
    need_new_afes(t, num);
    AfeStore &f = t.conic.afe;
    f.rows.resize(f.rows.size() + num);
    f.g.resize(f.rows.size(), 0.0);
    f.maxnum = std::max<qrn_int64>(f.maxnum, f.rows.size());
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafefentry(qrn_task_t task, qrn_int64 afeidx, qrn_int32 varidx, qrn_real value) {
  return api(task, "QRN_putafefentry", [&](Task &t) {
    check_afe(t, afeidx);
    check_var(t, varidx, "Variable index");
    need_finite(value, "value");
    fit_columns(t);
    set_fentry(t.conic.afe, afeidx, varidx, value);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafefentrylist(qrn_task_t task, qrn_int64 numentr, const qrn_int64 *afeidx,
                                                  const qrn_int32 *varidx, const qrn_real *val) {
  return api(task, "QRN_putafefentrylist", [&](Task &t) {
    need_count(numentr, "The number of entries");
    need_array(afeidx, numentr, "afeidx");
    need_array(varidx, numentr, "varidx");
    need_array(val, numentr, "val");
    for (qrn_int64 k = 0; k < numentr; ++k) {
      check_afe(t, afeidx[k]);
      check_var(t, varidx[k], "Variable index");
      need_finite(val[k], "val", k);
    }
    fit_columns(t);
    for (qrn_int64 k = 0; k < numentr; ++k) set_fentry(t.conic.afe, afeidx[k], varidx[k], val[k]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_emptyafefrow(qrn_task_t task, qrn_int64 afeidx) {
  return api(task, "QRN_emptyafefrow", [&](Task &t) {
    check_afe(t, afeidx);
    set_frow(t, afeidx, {});
  });
}

QRN_API qrn_rescode QRN_CALL QRN_emptyafefrowlist(qrn_task_t task, qrn_int64 numafeidx, const qrn_int64 *afeidx) {
  return api(task, "QRN_emptyafefrowlist", [&](Task &t) {
    need_count(numafeidx, "The number of affine expressions");
    need_array(afeidx, numafeidx, "afeidx");
    for (qrn_int64 k = 0; k < numafeidx; ++k) check_afe(t, afeidx[k]);
    for (qrn_int64 k = 0; k < numafeidx; ++k) set_frow(t, afeidx[k], {});
  });
}

QRN_API qrn_rescode QRN_CALL QRN_emptyafefcol(qrn_task_t task, qrn_int32 varidx) {
  return api(task, "QRN_emptyafefcol", [&](Task &t) {
    check_var(t, varidx, "Variable index");
    fit_columns(t);
    empty_column(t.conic.afe, varidx);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_emptyafefcollist(qrn_task_t task, qrn_int64 numvaridx, const qrn_int32 *varidx) {
  return api(task, "QRN_emptyafefcollist", [&](Task &t) {
    need_count(numvaridx, "The number of variables");
    need_array(varidx, numvaridx, "varidx");
    for (qrn_int64 k = 0; k < numvaridx; ++k) check_var(t, varidx[k], "Variable index");
    fit_columns(t);
    for (qrn_int64 k = 0; k < numvaridx; ++k) empty_column(t.conic.afe, varidx[k]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafefrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 numnz,
                                            const qrn_int32 *varidx, const qrn_real *val) {
  return api(task, "QRN_putafefrow", [&](Task &t) {
    check_afe(t, afeidx);
    set_frow(t, afeidx, make_frow(t, numnz, varidx, val, false));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafefrowlist(qrn_task_t task, qrn_int64 numafeidx, const qrn_int64 *afeidx,
                                                const qrn_int32 *numnzrow, const qrn_int64 *ptrrow,
                                                qrn_int64 lenidxval, const qrn_int32 *varidx, const qrn_real *val) {
  return api(task, "QRN_putafefrowlist", [&](Task &t) {
    need_count(numafeidx, "The number of rows");
    need_count(lenidxval, "lenidxval");
    need_array(afeidx, numafeidx, "afeidx");
    need_array(numnzrow, numafeidx, "numnzrow");
    need_array(ptrrow, numafeidx, "ptrrow");
    need_array(varidx, lenidxval, "varidx");
    need_array(val, lenidxval, "val");
    // Stage every row before the task changes.
    std::vector<std::vector<FEntry>> rows(numafeidx);
    need_distinct(afeidx, numafeidx);
    for (qrn_int64 k = 0; k < numafeidx; ++k) {
      check_afe(t, afeidx[k]);
      need_range(ptrrow[k], numnzrow[k], lenidxval, "ptrrow/numnzrow", k);
      rows[k] = make_frow(t, numnzrow[k], varidx + ptrrow[k], val + ptrrow[k], false);
    }
    for (qrn_int64 k = 0; k < numafeidx; ++k) set_frow(t, afeidx[k], std::move(rows[k]));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafefcol(qrn_task_t task, qrn_int32 varidx, qrn_int64 numnz,
                                            const qrn_int64 *afeidx, const qrn_real *val) {
  return api(task, "QRN_putafefcol", [&](Task &t) {
    check_var(t, varidx, "Variable index");
    need_count(numnz, "The number of entries");
    need_array(afeidx, numnz, "afeidx");
    need_array(val, numnz, "val");
    for (qrn_int64 k = 0; k < numnz; ++k) {
      check_afe(t, afeidx[k]);
      need_finite(val[k], "val", k);
    }
    need_distinct(afeidx, numnz);
    fit_columns(t);
    empty_column(t.conic.afe, varidx);
    for (qrn_int64 k = 0; k < numnz; ++k) set_fentry(t.conic.afe, afeidx[k], varidx, val[k]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafefrownumnz(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *numnz) {
  return api(task, "QRN_getafefrownumnz", [&](Task &t) {
    check_afe(t, afeidx);
    put(numnz, static_cast<qrn_int32>(t.conic.afe.rows[afeidx].size()));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafefnumnz(qrn_task_t task, qrn_int64 *numnz) {
  return api(task, "QRN_getafefnumnz", [&](Task &t) { put(numnz, t.conic.afe.nnz); });
}

QRN_API qrn_rescode QRN_CALL QRN_getafefrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *numnz, qrn_int32 *varidx,
                                            qrn_real *val) {
  return api(task, "QRN_getafefrow", [&](Task &t) {
    check_afe(t, afeidx);
    const auto &row = t.conic.afe.rows[afeidx];
    put(numnz, static_cast<qrn_int32>(row.size()));
    for (size_t k = 0; k < row.size(); ++k) {
      if (varidx != nullptr) varidx[k] = row[k].var;
      if (val != nullptr) val[k] = row[k].val;
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafeftrip(qrn_task_t task, qrn_int64 *afeidx, qrn_int32 *varidx, qrn_real *val) {
  return api(task, "QRN_getafeftrip", [&](Task &t) {
    qrn_int64 p = 0;
    const auto &rows = t.conic.afe.rows;
    for (size_t r = 0; r < rows.size(); ++r)
      for (const FEntry &e : rows[r]) {
        if (afeidx != nullptr) afeidx[p] = static_cast<qrn_int64>(r);
        if (varidx != nullptr) varidx[p] = e.var;
        if (val != nullptr) val[p] = e.val;
        ++p;
      }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafeg(qrn_task_t task, qrn_int64 afeidx, qrn_real g) {
  return api(task, "QRN_putafeg", [&](Task &t) {
    check_afe(t, afeidx);
    need_finite(g, "g");
    t.conic.afe.g[afeidx] = g;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafeg(qrn_task_t task, qrn_int64 afeidx, qrn_real *g) {
  return api(task, "QRN_getafeg", [&](Task &t) {
    check_afe(t, afeidx);
    put(g, t.conic.afe.g[afeidx]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafeglist(qrn_task_t task, qrn_int64 numafeidx, const qrn_int64 *afeidx,
                                             const qrn_real *g) {
  return api(task, "QRN_putafeglist", [&](Task &t) {
    need_count(numafeidx, "The number of affine expressions");
    need_array(afeidx, numafeidx, "afeidx");
    need_array(g, numafeidx, "g");
    for (qrn_int64 k = 0; k < numafeidx; ++k) {
      check_afe(t, afeidx[k]);
      need_finite(g[k], "g", k);
    }
    for (qrn_int64 k = 0; k < numafeidx; ++k) t.conic.afe.g[afeidx[k]] = g[k];
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafegslice(qrn_task_t task, qrn_int64 first, qrn_int64 last,
                                              const qrn_real *slice) {
  return api(task, "QRN_putafegslice", [&](Task &t) {
    check_slice(first, last, static_cast<qrn_int64>(t.conic.afe.rows.size()), "affine expression");
    need_array(slice, last - first, "slice");
    for (qrn_int64 k = 0; k < last - first; ++k) need_finite(slice[k], "slice", k);
    std::copy(slice, slice + (last - first), t.conic.afe.g.begin() + first);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafegslice(qrn_task_t task, qrn_int64 first, qrn_int64 last, qrn_real *g) {
  return api(task, "QRN_getafegslice", [&](Task &t) {
    check_slice(first, last, static_cast<qrn_int64>(t.conic.afe.rows.size()), "affine expression");
    if (g != nullptr) std::copy(t.conic.afe.g.begin() + first, t.conic.afe.g.begin() + last, g);
  });
}

// ---- barF ----

QRN_API qrn_rescode QRN_CALL QRN_putafebarfentry(qrn_task_t task, qrn_int64 afeidx, qrn_int32 barvaridx,
                                                 qrn_int64 numterm, const qrn_int64 *termidx,
                                                 const qrn_real *termweight) {
  return api(task, "QRN_putafebarfentry", [&](Task &t) {
    check_afe(t, afeidx);
    set_barf(t, afeidx, barvaridx, barf_terms(t, barvaridx, numterm, termidx, termweight));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafebarfentrylist(qrn_task_t task, qrn_int64 numafeidx, const qrn_int64 *afeidx,
                                                     const qrn_int32 *barvaridx, const qrn_int64 *numterm,
                                                     const qrn_int64 *ptrterm, qrn_int64 lenterm,
                                                     const qrn_int64 *termidx, const qrn_real *termweight) {
  return api(task, "QRN_putafebarfentrylist", [&](Task &t) {
    need_count(numafeidx, "The number of entries");
    need_count(lenterm, "lenterm");
    need_array(afeidx, numafeidx, "afeidx");
    need_array(barvaridx, numafeidx, "barvaridx");
    need_array(numterm, numafeidx, "numterm");
    need_array(ptrterm, numafeidx, "ptrterm");
    std::vector<std::vector<Term>> staged(numafeidx);
    for (qrn_int64 k = 0; k < numafeidx; ++k) {
      check_afe(t, afeidx[k]);
      need_range(ptrterm[k], numterm[k], lenterm, "ptrterm/numterm", k);
      staged[k] = barf_terms(t, barvaridx[k], numterm[k], termidx == nullptr ? nullptr : termidx + ptrterm[k],
                             termweight == nullptr ? nullptr : termweight + ptrterm[k]);
    }
    for (qrn_int64 k = 0; k < numafeidx; ++k) set_barf(t, afeidx[k], barvaridx[k], std::move(staged[k]));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafebarfrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 numentr,
                                               const qrn_int32 *barvaridx, const qrn_int64 *numterm,
                                               const qrn_int64 *ptrterm, qrn_int64 lenterm, const qrn_int64 *termidx,
                                               const qrn_real *termweight) {
  return api(task, "QRN_putafebarfrow", [&](Task &t) {
    check_afe(t, afeidx);
    need_count(numentr, "The number of entries");
    auto row = make_barf_row(t, numentr, barvaridx, numterm, ptrterm, lenterm, termidx, termweight);
    if (row.empty())
      t.conic.afe.barf.erase(afeidx);
    else
      t.conic.afe.barf[afeidx] = std::move(row);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_emptyafebarfrow(qrn_task_t task, qrn_int64 afeidx) {
  return api(task, "QRN_emptyafebarfrow", [&](Task &t) {
    check_afe(t, afeidx);
    t.conic.afe.barf.erase(afeidx);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_emptyafebarfrowlist(qrn_task_t task, qrn_int64 numafeidx,
                                                     const qrn_int64 *afeidxlist) {
  return api(task, "QRN_emptyafebarfrowlist", [&](Task &t) {
    need_count(numafeidx, "The number of affine expressions");
    need_array(afeidxlist, numafeidx, "afeidxlist");
    for (qrn_int64 k = 0; k < numafeidx; ++k) check_afe(t, afeidxlist[k]);
    for (qrn_int64 k = 0; k < numafeidx; ++k) t.conic.afe.barf.erase(afeidxlist[k]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafebarfnumrowentries(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *numentr) {
  return api(task, "QRN_getafebarfnumrowentries", [&](Task &t) {
    check_afe(t, afeidx);
    put(numentr, static_cast<qrn_int32>(barf_row(t, afeidx).size()));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafebarfrowinfo(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *numentr,
                                                   qrn_int64 *numterm) {
  return api(task, "QRN_getafebarfrowinfo", [&](Task &t) {
    check_afe(t, afeidx);
    const auto &row = barf_row(t, afeidx);
    qrn_int64 terms = 0;
    for (auto &e : row) terms += static_cast<qrn_int64>(e.terms.size());
    put(numentr, static_cast<qrn_int32>(row.size()));
    put(numterm, terms);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafebarfrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *barvaridx,
                                               qrn_int64 *ptrterm, qrn_int64 *numterm, qrn_int64 *termidx,
                                               qrn_real *termweight) {
  return api(task, "QRN_getafebarfrow", [&](Task &t) {
    check_afe(t, afeidx);
    const auto &row = barf_row(t, afeidx);
    qrn_int64 p = 0;
    for (size_t k = 0; k < row.size(); ++k) {
      if (barvaridx != nullptr) barvaridx[k] = row[k].barvar;
      if (ptrterm != nullptr) ptrterm[k] = p;
      if (numterm != nullptr) numterm[k] = static_cast<qrn_int64>(row[k].terms.size());
      for (const Term &term : row[k].terms) {
        if (termidx != nullptr) termidx[p] = term.mat;
        if (termweight != nullptr) termweight[p] = term.weight;
        ++p;
      }
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putafebarfblocktriplet(qrn_task_t task, qrn_int64 numtrip, const qrn_int64 *afeidx,
                                                        const qrn_int32 *barvaridx, const qrn_int32 *subk,
                                                        const qrn_int32 *subl, const qrn_real *valkl) {
  return api(task, "QRN_putafebarfblocktriplet", [&](Task &t) {
    need_count(numtrip, "The number of triplets");
    need_array(afeidx, numtrip, "afeidx");
    need_array(barvaridx, numtrip, "barvaridx");
    need_array(subk, numtrip, "subk");
    need_array(subl, numtrip, "subl");
    need_array(valkl, numtrip, "valkl");
    std::map<std::pair<qrn_int64, qrn_int32>, std::map<std::pair<qrn_int32, qrn_int32>, double>> blocks;
    for (qrn_int64 k = 0; k < numtrip; ++k) {
      check_afe(t, afeidx[k]);
      check_barvar(t, barvaridx[k]);
      check_block(t.sdp.dim[barvaridx[k]], subk[k], subl[k], k);
      need_finite(valkl[k], "valkl", k);
      blocks[{afeidx[k], barvaridx[k]}][{subl[k], subk[k]}] += valkl[k];
    }
    for (auto &[key, entries] : blocks) {
      qrn_int64 mat = add_symmat(t, t.sdp.dim[key.second], entries);
      set_barf(t, key.first, key.second, std::vector<Term>{Term{mat, 1.0}});
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getafebarfnumblocktriplets(qrn_task_t task, qrn_int64 *numtrip) {
  return api(task, "QRN_getafebarfnumblocktriplets",
             [&](Task &t) { put(numtrip, static_cast<qrn_int64>(barf_triplets(t).size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getafebarfblocktriplet(qrn_task_t task, qrn_int64 maxnumtrip, qrn_int64 *numtrip,
                                                        qrn_int64 *afeidx, qrn_int32 *barvaridx, qrn_int32 *subk,
                                                        qrn_int32 *subl, qrn_real *valkl) {
  return api(task, "QRN_getafebarfblocktriplet", [&](Task &t) {
    auto trips = barf_triplets(t);
    auto n = static_cast<qrn_int64>(trips.size());
    if (n > maxnumtrip)
      fail(QRN_RES_ERR_TOO_SMALL, "barF has " + std::to_string(n) + " block triplets; the capacity is " +
                                      std::to_string(maxnumtrip) + ".");
    put(numtrip, n);
    for (qrn_int64 k = 0; k < n; ++k) {
      if (afeidx != nullptr) afeidx[k] = trips[k].afe;
      if (barvaridx != nullptr) barvaridx[k] = trips[k].barvar;
      if (subk != nullptr) subk[k] = trips[k].e.k;
      if (subl != nullptr) subl[k] = trips[k].e.l;
      if (valkl != nullptr) valkl[k] = trips[k].e.val;
    }
  });
}

}  // extern "C"
