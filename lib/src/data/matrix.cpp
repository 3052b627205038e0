// The constraint matrix A: counts and capacities, single entries, rows and
// columns, slices, triplets, the list and slice writers and inputdata64.
//
// Every entry is stored twice, in its column (Matrix::cols, by constraint
// index) and in its row (Matrix::rows, by variable index), each line sorted by
// index. A writer first checks its whole input. A writer of whole rows or
// columns then swaps in the new lines and merges the differences into the
// crossing lines; a writer of single entries merges its changes into both
// orientations. A value within the truncation tolerance is not stored and
// removes an entry. A line that no change touches costs nothing, so writing or
// reading one row or one column costs in proportion to the lines involved,
// never to all of A.
#include "errors.hpp"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace qrn {
namespace {

using Line = std::vector<Entry>;
using Lines = std::vector<Line>;

// Which kind of item an index or a line refers to: a row is a constraint, a
// column a variable.
enum class Dim { row, col };

Dim other(Dim d) { return d == Dim::row ? Dim::col : Dim::row; }
qrn_int32 count_of(const Task &t, Dim d) { return d == Dim::row ? t.numcon : t.numvar; }
const Lines &lines_of(const Matrix &a, Dim d) { return d == Dim::row ? a.rows : a.cols; }
const char *kind_of(Dim d) { return d == Dim::row ? "row" : "column"; }

std::string str(qrn_int64 v) { return std::to_string(v); }
std::string at(const char *arg, qrn_int64 pos) { return std::string(arg) + "[" + str(pos) + "]"; }

// ---- checks (messages are built only when a check fails) -------------------

[[noreturn]] void bad_index(Dim d, const std::string &what, qrn_int64 v, qrn_int64 n) {
  const char *items = d == Dim::row ? "constraints" : "variables";
  std::string msg = what + " = " + str(v) + " is out of range: ";
  msg += n == 0 ? std::string("there are no ") + items + "."
                : "valid are 0.." + str(n - 1) + " (" + str(n) + " " + items + ").";
  fail(d == Dim::row ? QRN_RES_ERR_INDEX_CON : QRN_RES_ERR_INDEX_VAR, msg);
}

// Checks index v of kind d against n items; `what` names the argument.
inline void check_index(Dim d, qrn_int64 v, qrn_int64 n, const char *what) {
  if (v < 0 || v >= n) bad_index(d, what, v, n);
}
inline void check_index_at(Dim d, qrn_int64 v, qrn_int64 n, const char *arg, qrn_int64 pos) {
  if (v < 0 || v >= n) bad_index(d, at(arg, pos), v, n);
}

inline void check_finite(double v, const std::string &what) {
  if (!std::isfinite(v)) fail(QRN_RES_ERR_VALUE_NAN, what + " is not a finite number.");
}
inline void check_finite_at(double v, const char *arg, qrn_int64 pos) {
  if (!std::isfinite(v)) check_finite(v, at(arg, pos));
}

void check_capacity(qrn_int64 maxnumnz, qrn_int64 needed, bool writes) {
  need_count(maxnumnz, "maxnumnz");
  if (writes && needed > maxnumnz)
    fail(QRN_RES_ERR_TOO_SMALL, "maxnumnz = " + str(maxnumnz) + " is below the " + str(needed) +
                                    " non-zeros to write.");
}

qrn_int32 to_int32(qrn_int64 n, const char *what) {
  if (n > INT32_MAX)
    fail(QRN_RES_ERR_TOO_SMALL, std::string(what) + " " + str(n) + " does not fit in 32 bits; use the 64-bit query.");
  return static_cast<qrn_int32>(n);
}

// Names of the arguments of a writer that takes lines in compressed form.
struct LineArgs {
  const char *sub, *ptrb, *ptre, *idx, *val;
};

// Checks ptrb/ptre of num lines; returns how far they reach into idx/val.
qrn_int64 check_pointers(qrn_int64 num, const qrn_int64 *ptrb, const qrn_int64 *ptre, const LineArgs &arg) {
  need_array(ptrb, num, arg.ptrb);
  need_array(ptre, num, arg.ptre);
  qrn_int64 reach = 0;
  for (qrn_int64 k = 0; k < num; ++k) {
    if (ptrb[k] < 0 || ptrb[k] > ptre[k])
      fail(QRN_RES_ERR_PTR_RANGE, at(arg.ptrb, k) + " = " + str(ptrb[k]) + " and " + at(arg.ptre, k) + " = " +
                                      str(ptre[k]) + " do not satisfy 0 <= ptrb <= ptre.");
    reach = std::max(reach, ptre[k]);
  }
  return reach;
}

// Reads the entries idx/val[b, e) of line `line` (of kind d) into out, sorted by
// index. The entries' indexes are of the other kind, with n items.
void read_line(Dim d, qrn_int64 line, qrn_int32 n, const qrn_int32 *idx, const double *val, qrn_int64 b,
               qrn_int64 e, const LineArgs &arg, Line &out) {
  out.clear();
  out.reserve(static_cast<size_t>(e - b));
  for (qrn_int64 p = b; p < e; ++p) {
    check_index_at(other(d), idx[p], n, arg.idx, p);
    check_finite_at(val[p], arg.val, p);
    out.push_back(Entry{idx[p], val[p]});
  }
  auto less = [](const Entry &x, const Entry &y) { return x.idx < y.idx; };
  if (!std::is_sorted(out.begin(), out.end(), less)) std::sort(out.begin(), out.end(), less);
  auto same = [](const Entry &x, const Entry &y) { return x.idx == y.idx; };
  auto dup = std::adjacent_find(out.begin(), out.end(), same);
  if (dup != out.end())
    fail(QRN_RES_ERR_DUP_INDEX, "Index " + str(dup->idx) + " occurs more than once in " + arg.idx + " for " +
                                    kind_of(d) + " " + str(line) + ".");
}

// Refuses an index that occurs twice in sub[0, num).
void check_distinct(qrn_int64 num, const qrn_int32 *sub, const char *arg) {
  std::vector<qrn_int32> sorted(sub, sub + num);
  std::sort(sorted.begin(), sorted.end());
  auto dup = std::adjacent_find(sorted.begin(), sorted.end());
  if (dup != sorted.end())
    fail(QRN_RES_ERR_DUP_INDEX, "Index " + str(*dup) + " occurs more than once in " + arg + ".");
}

// ---- changes ------------------------------------------------------------------

// Entry idx of line `line` (in one orientation) becomes v; |v| <= tol removes it.
struct Change {
  qrn_int32 line, idx;
  double v;
};

bool line_order(const Change &x, const Change &y) { return x.line != y.line ? x.line < y.line : x.idx < y.idx; }

Change swapped(const Change &c) { return Change{c.idx, c.line, c.v}; }

// Applies the changes [first, last) to one line: few changes in a long line by
// binary search, otherwise by a merge through scratch. Returns the change in
// the line's length.
qrn_int64 change_line(Line &line, const Change *first, const Change *last, double tol, Line &scratch) {
  const auto before = static_cast<qrn_int64>(line.size());
  const auto n = static_cast<size_t>(last - first);
  if (n == 1 || n * 8 < line.size()) {
    for (const Change *c = first; c != last; ++c) {
      auto it = std::lower_bound(line.begin(), line.end(), c->idx,
                                 [](const Entry &e, qrn_int32 k) { return e.idx < k; });
      const bool found = it != line.end() && it->idx == c->idx, keep = std::fabs(c->v) > tol;
      if (found && keep) it->val = c->v;
      else if (found) line.erase(it);
      else if (keep) line.insert(it, Entry{c->idx, c->v});
    }
  } else {
    scratch.clear();
    scratch.reserve(line.size() + n);
    auto it = line.begin();
    for (const Change *c = first; c != last; ++c) {
      while (it != line.end() && it->idx < c->idx) scratch.push_back(*it++);
      if (it != line.end() && it->idx == c->idx) ++it;
      if (std::fabs(c->v) > tol) scratch.push_back(Entry{c->idx, c->v});
    }
    scratch.insert(scratch.end(), it, line.end());
    if (scratch.size() > line.capacity()) line.swap(scratch);
    else line.assign(scratch.begin(), scratch.end());
  }
  return static_cast<qrn_int64>(line.size()) - before;
}

// Merges changes (at most one per entry) into lines; returns the change in
// the number of entries.
qrn_int64 merge(Lines &lines, std::vector<Change> &ch, double tol) {
  if (!std::is_sorted(ch.begin(), ch.end(), line_order)) std::sort(ch.begin(), ch.end(), line_order);
  qrn_int64 delta = 0;
  Line scratch;
  const Change *p = ch.data(), *end = ch.data() + ch.size();
  while (p != end) {
    const Change *q = p;
    while (q != end && q->line == p->line) ++q;
    delta += change_line(lines[p->line], p, q, tol, scratch);
    p = q;
  }
  return delta;
}

// Applies checked changes of single entries, given by row, to both orientations.
void set_entries(Matrix &a, std::vector<Change> &by_row) {
  std::vector<Change> by_col(by_row.size());
  std::transform(by_row.begin(), by_row.end(), by_col.begin(), swapped);
  a.nnz += merge(a.rows, by_row, a.tol);
  merge(a.cols, by_col, a.tol);
}

// Appends the changes to the cross lines that turn stored line `line` into
// `fresh`: each new entry, and a removal for each old entry that `fresh` lacks.
void diff_line(const Line &old, qrn_int32 line, const Line &fresh, std::vector<Change> &cross) {
  size_t o = 0;
  for (const Entry &e : fresh) {
    for (; o < old.size() && old[o].idx < e.idx; ++o) cross.push_back(Change{old[o].idx, line, 0.0});
    if (o < old.size() && old[o].idx == e.idx) ++o;
    cross.push_back(Change{e.idx, line, e.val});
  }
  for (; o < old.size(); ++o) cross.push_back(Change{old[o].idx, line, 0.0});
}

// Replaces num lines of kind d: line sub[k] (first + k when sub is null) gets
// the entries idx/val[ptrb[k], ptre[k]). Everything is checked first; then the
// lines are replaced and the crossing lines merged with the differences.
void replace_lines(Task &t, Dim d, qrn_int64 num, const qrn_int32 *sub, qrn_int32 first, const qrn_int64 *ptrb,
                   const qrn_int64 *ptre, const qrn_int32 *idx, const double *val, const LineArgs &arg) {
  const qrn_int32 nlines = count_of(t, d), ncross = count_of(t, other(d));
  if (sub != nullptr) {
    for (qrn_int64 k = 0; k < num; ++k) check_index_at(d, sub[k], nlines, arg.sub, k);
    check_distinct(num, sub, arg.sub);
  }
  qrn_int64 reach = check_pointers(num, ptrb, ptre, arg);
  need_array(idx, reach, arg.idx);
  need_array(val, reach, arg.val);
  auto line_of = [&](qrn_int64 k) { return sub != nullptr ? sub[k] : static_cast<qrn_int32>(first + k); };
  Lines &lines = d == Dim::row ? t.a.rows : t.a.cols;
  Lines fresh(static_cast<size_t>(num));
  std::vector<Change> cross;
  size_t most = 0;  // changes to the crossing lines at most: old and new entries
  for (qrn_int64 k = 0; k < num; ++k) most += static_cast<size_t>(ptre[k] - ptrb[k]) + lines[line_of(k)].size();
  cross.reserve(most);
  for (qrn_int64 k = 0; k < num; ++k) {
    Line &f = fresh[k];
    read_line(d, line_of(k), ncross, idx, val, ptrb[k], ptre[k], arg, f);
    f.erase(std::remove_if(f.begin(), f.end(), [&](const Entry &e) { return std::fabs(e.val) <= t.a.tol; }),
            f.end());
    diff_line(lines[line_of(k)], line_of(k), f, cross);
  }
  for (qrn_int64 k = 0; k < num; ++k) {
    Line &line = lines[line_of(k)];
    t.a.nnz += static_cast<qrn_int64>(fresh[k].size()) - static_cast<qrn_int64>(line.size());
    line.swap(fresh[k]);
  }
  merge(d == Dim::row ? t.a.cols : t.a.rows, cross, t.a.tol);
}

void put_line(Task &t, Dim d, qrn_int32 line, qrn_int32 nz, const qrn_int32 *idx, const double *val,
              const LineArgs &arg) {
  check_index(d, line, count_of(t, d), arg.sub);
  need_count(nz, d == Dim::row ? "nzi" : "nzj");
  const qrn_int64 b = 0, e = nz;
  replace_lines(t, d, 1, &line, 0, &b, &e, idx, val, arg);
}

void put_list(Task &t, Dim d, qrn_int32 num, const qrn_int32 *sub, const qrn_int64 *ptrb, const qrn_int64 *ptre,
              const qrn_int32 *asub, const double *aval) {
  need_count(num, "num");
  need_array(sub, num, "sub");
  replace_lines(t, d, num, sub, 0, ptrb, ptre, asub, aval, LineArgs{"sub", "ptrb", "ptre", "asub", "aval"});
}

void put_slice(Task &t, Dim d, qrn_int32 first, qrn_int32 last, const qrn_int64 *ptrb, const qrn_int64 *ptre,
               const qrn_int32 *asub, const double *aval) {
  check_slice(first, last, count_of(t, d), kind_of(d));
  replace_lines(t, d, last - first, nullptr, first, ptrb, ptre, asub, aval,
                LineArgs{"first", "ptrb", "ptre", "asub", "aval"});
}

// ---- readers ------------------------------------------------------------------

const Line &line_at(const Task &t, Dim d, qrn_int32 k, const char *what) {
  check_index(d, k, count_of(t, d), what);
  return lines_of(t.a, d)[k];
}

void get_line(const Task &t, Dim d, qrn_int32 k, const char *what, qrn_int32 *nz, qrn_int32 *sub, double *val) {
  const Line &line = line_at(t, d, k, what);
  put(nz, static_cast<qrn_int32>(line.size()));
  for (size_t p = 0; p < line.size(); ++p) {
    if (sub != nullptr) sub[p] = line[p].idx;
    if (val != nullptr) val[p] = line[p].val;
  }
}

qrn_int64 slice_nnz(const Task &t, Dim d, qrn_int32 first, qrn_int32 last) {
  check_slice(first, last, count_of(t, d), kind_of(d));
  const Lines &lines = lines_of(t.a, d);
  qrn_int64 n = 0;
  for (qrn_int32 k = first; k < last; ++k) n += static_cast<qrn_int64>(lines[k].size());
  return n;
}

void get_slice(const Task &t, Dim d, qrn_int32 first, qrn_int32 last, qrn_int64 maxnumnz, qrn_int64 *ptrb,
               qrn_int64 *ptre, qrn_int32 *sub, double *val) {
  check_capacity(maxnumnz, slice_nnz(t, d, first, last), sub != nullptr || val != nullptr);
  const Lines &lines = lines_of(t.a, d);
  qrn_int64 pos = 0;
  for (qrn_int32 k = first; k < last; ++k) {
    put(ptrb == nullptr ? nullptr : ptrb + (k - first), pos);
    for (const Entry &e : lines[k]) {
      if (sub != nullptr) sub[pos] = e.idx;
      if (val != nullptr) val[pos] = e.val;
      ++pos;
    }
    put(ptre == nullptr ? nullptr : ptre + (k - first), pos);
  }
}

// Triplets of lines [first, last) of kind d, line by line.
void get_trip(const Task &t, Dim d, qrn_int32 first, qrn_int32 last, qrn_int64 maxnumnz, qrn_int32 *subi,
              qrn_int32 *subj, double *val) {
  check_capacity(maxnumnz, slice_nnz(t, d, first, last), subi != nullptr || subj != nullptr || val != nullptr);
  qrn_int32 *line_out = d == Dim::row ? subi : subj;
  qrn_int32 *idx_out = d == Dim::row ? subj : subi;
  const Lines &lines = lines_of(t.a, d);
  qrn_int64 pos = 0;
  for (qrn_int32 k = first; k < last; ++k)
    for (const Entry &e : lines[k]) {
      if (line_out != nullptr) line_out[pos] = k;
      if (idx_out != nullptr) idx_out[pos] = e.idx;
      if (val != nullptr) val[pos] = e.val;
      ++pos;
    }
}

// Non-zeros of A in rows [firsti, lasti) and columns [firstj, lastj), counted
// along the shorter side.
qrn_int64 piece_nnz(const Task &t, qrn_int32 firsti, qrn_int32 lasti, qrn_int32 firstj, qrn_int32 lastj) {
  check_slice(firsti, lasti, t.numcon, "row");
  check_slice(firstj, lastj, t.numvar, "column");
  bool by_rows = lasti - firsti <= lastj - firstj;
  const Lines &lines = by_rows ? t.a.rows : t.a.cols;
  qrn_int32 lo = by_rows ? firstj : firsti, hi = by_rows ? lastj : lasti;
  auto below = [](const Entry &e, qrn_int32 k) { return e.idx < k; };
  qrn_int64 n = 0;
  for (qrn_int32 k = by_rows ? firsti : firstj, end = by_rows ? lasti : lastj; k < end; ++k) {
    const Line &line = lines[k];
    auto b = std::lower_bound(line.begin(), line.end(), lo, below);
    n += std::lower_bound(b, line.end(), hi, below) - b;
  }
  return n;
}

// ---- whole-problem input ---------------------------------------------------------

std::vector<Bound> read_bounds(qrn_int32 n, const qrn_int32 *bk, const double *bl, const double *bu,
                               const char *kind) {
  std::vector<Bound> out(n);
  char what[48];
  for (qrn_int32 k = 0; k < n; ++k) {
    std::snprintf(what, sizeof what, "%s %d", kind, static_cast<int>(k));
    out[k] = make_bound(bk != nullptr ? bk[k] : QRN_BK_FREE, bl != nullptr ? bl[k] : -inf,
                        bu != nullptr ? bu[k] : inf, what);
  }
  return out;
}

// Sets the task's number of items of kind d to n: appends, or removes trailing ones.
void resize(Task &t, Dim d, qrn_int32 n) {
  qrn_int32 now = count_of(t, d);
  if (n > now) {
    d == Dim::row ? t.append_cons(n - now) : t.append_vars(n - now);
  } else if (n < now) {
    std::vector<bool> trailing(now, false);
    std::fill(trailing.begin() + n, trailing.end(), true);
    d == Dim::row ? t.remove_cons(trailing) : t.remove_vars(trailing);
  }
}

void input_data(Task &t, qrn_int32 maxnumcon, qrn_int32 maxnumvar, qrn_int32 numcon, qrn_int32 numvar,
                const double *c, double cfix, const qrn_int64 *aptrb, const qrn_int64 *aptre, const qrn_int32 *asub,
                const double *aval, const qrn_int32 *bkc, const double *blc, const double *buc,
                const qrn_int32 *bkx, const double *blx, const double *bux) {
  need_count(maxnumcon, "maxnumcon");
  need_count(maxnumvar, "maxnumvar");
  need_count(numcon, "numcon");
  need_count(numvar, "numvar");
  // Check and stage everything before the task changes.
  const LineArgs arg{"aptrb", "aptrb", "aptre", "asub", "aval"};
  qrn_int64 reach = check_pointers(numvar, aptrb, aptre, arg);
  need_array(asub, reach, "asub");
  need_array(aval, reach, "aval");
  Lines cols(numvar);
  for (qrn_int32 j = 0; j < numvar; ++j) {
    read_line(Dim::col, j, numcon, asub, aval, aptrb[j], aptre[j], arg, cols[j]);
    cols[j].erase(std::remove_if(cols[j].begin(), cols[j].end(),
                                 [&](const Entry &e) { return std::fabs(e.val) <= t.a.tol; }),
                  cols[j].end());
  }
  std::vector<double> cnew(numvar, 0.0);
  if (c != nullptr)
    for (qrn_int32 j = 0; j < numvar; ++j) check_finite_at(cnew[j] = c[j], "c", j);
  check_finite(cfix, "cfix");
  std::vector<Bound> conbound = read_bounds(numcon, bkc, blc, buc, "constraint");
  std::vector<Bound> varbound = read_bounds(numvar, bkx, blx, bux, "variable");

  // Apply: empty A first so that resizing has nothing to renumber.
  for (Line &l : t.a.rows) l.clear();
  for (Line &l : t.a.cols) l.clear();
  t.a.nnz = 0;
  resize(t, Dim::row, numcon);
  resize(t, Dim::col, numvar);
  for (qrn_int32 j = 0; j < numvar; ++j) {
    for (const Entry &e : cols[j]) t.a.rows[e.idx].push_back(Entry{j, e.val});
    t.a.nnz += static_cast<qrn_int64>(cols[j].size());
  }
  t.a.cols = std::move(cols);
  t.c = std::move(cnew);
  t.cfix = cfix;
  t.conbound = std::move(conbound);
  t.varbound = std::move(varbound);
  t.maxnumcon = std::max(t.maxnumcon, maxnumcon);
  t.maxnumvar = std::max(t.maxnumvar, maxnumvar);
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

// ---- counts and capacities ----------------------------------------------------

QRN_API qrn_rescode QRN_CALL QRN_getnumanz(qrn_task_t task, qrn_int32 *numanz) {
  return api(task, "QRN_getnumanz", [&](Task &t) { put(numanz, to_int32(t.a.nnz, "The number of non-zeros")); });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumanz64(qrn_task_t task, qrn_int64 *numanz) {
  return api(task, "QRN_getnumanz64", [&](Task &t) { put(numanz, t.a.nnz); });
}

QRN_API qrn_rescode QRN_CALL QRN_getmaxnumanz64(qrn_task_t task, qrn_int64 *maxnumanz) {
  return api(task, "QRN_getmaxnumanz64", [&](Task &t) { put(maxnumanz, std::max(t.a.maxnnz, t.a.nnz)); });
}

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumanz(qrn_task_t task, qrn_int64 maxnumanz) {
  return api(task, "QRN_putmaxnumanz", [&](Task &t) {
    need_capacity(maxnumanz, t.a.nnz, "The non-zero capacity");
    t.a.maxnnz = maxnumanz;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getacolnumnz(qrn_task_t task, qrn_int32 j, qrn_int32 *nzj) {
  return api(task, "QRN_getacolnumnz",
             [&](Task &t) { put(nzj, static_cast<qrn_int32>(line_at(t, Dim::col, j, "j").size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getarownumnz(qrn_task_t task, qrn_int32 i, qrn_int32 *nzi) {
  return api(task, "QRN_getarownumnz",
             [&](Task &t) { put(nzi, static_cast<qrn_int32>(line_at(t, Dim::row, i, "i").size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getacolslicenumnz64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                     qrn_int64 *numnz) {
  return api(task, "QRN_getacolslicenumnz64", [&](Task &t) { put(numnz, slice_nnz(t, Dim::col, first, last)); });
}

QRN_API qrn_rescode QRN_CALL QRN_getarowslicenumnz64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                     qrn_int64 *numnz) {
  return api(task, "QRN_getarowslicenumnz64", [&](Task &t) { put(numnz, slice_nnz(t, Dim::row, first, last)); });
}

QRN_API qrn_rescode QRN_CALL QRN_getapiecenumnz(qrn_task_t task, qrn_int32 firsti, qrn_int32 lasti, qrn_int32 firstj,
                                                qrn_int32 lastj, qrn_int32 *numnz) {
  return api(task, "QRN_getapiecenumnz", [&](Task &t) {
    put(numnz, to_int32(piece_nnz(t, firsti, lasti, firstj, lastj), "The number of non-zeros"));
  });
}

// ---- truncation tolerance and single entries ----------------------------------

QRN_API qrn_rescode QRN_CALL QRN_getatruncatetol(qrn_task_t task, qrn_real *tolzero) {
  return api(task, "QRN_getatruncatetol", [&](Task &t) { put(tolzero, t.a.tol); });
}

// Applies to later writes; stored entries stay as they are.
QRN_API qrn_rescode QRN_CALL QRN_putatruncatetol(qrn_task_t task, qrn_real tolzero) {
  return api(task, "QRN_putatruncatetol", [&](Task &t) {
    check_finite(tolzero, "tolzero");
    if (tolzero < 0) fail(QRN_RES_ERR_ARGUMENT, "tolzero = " + std::to_string(tolzero) + " is negative.");
    t.a.tol = tolzero;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getaij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real *aij) {
  return api(task, "QRN_getaij", [&](Task &t) {
    const Line &row = line_at(t, Dim::row, i, "i");
    const Line &col = line_at(t, Dim::col, j, "j");
    const Line &line = row.size() <= col.size() ? row : col;
    qrn_int32 idx = &line == &row ? j : i;
    auto it = std::lower_bound(line.begin(), line.end(), idx, [](const Entry &e, qrn_int32 k) { return e.idx < k; });
    put(aij, it != line.end() && it->idx == idx ? it->val : 0.0);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putaij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real aij) {
  return api(task, "QRN_putaij", [&](Task &t) {
    check_index(Dim::row, i, t.numcon, "i");
    check_index(Dim::col, j, t.numvar, "j");
    check_finite(aij, "aij");
    std::vector<Change> ch{Change{i, j, aij}};
    set_entries(t.a, ch);
  });
}

// ---- rows, columns, slices and triplets ---------------------------------------

QRN_API qrn_rescode QRN_CALL QRN_getacol(qrn_task_t task, qrn_int32 j, qrn_int32 *nzj, qrn_int32 *subj,
                                         qrn_real *valj) {
  return api(task, "QRN_getacol", [&](Task &t) { get_line(t, Dim::col, j, "j", nzj, subj, valj); });
}

QRN_API qrn_rescode QRN_CALL QRN_getarow(qrn_task_t task, qrn_int32 i, qrn_int32 *nzi, qrn_int32 *subi,
                                         qrn_real *vali) {
  return api(task, "QRN_getarow", [&](Task &t) { get_line(t, Dim::row, i, "i", nzi, subi, vali); });
}

QRN_API qrn_rescode QRN_CALL QRN_getacolslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last, qrn_int64 maxnumnz,
                                                qrn_int64 *ptrb, qrn_int64 *ptre, qrn_int32 *sub, qrn_real *val) {
  return api(task, "QRN_getacolslice64",
             [&](Task &t) { get_slice(t, Dim::col, first, last, maxnumnz, ptrb, ptre, sub, val); });
}

QRN_API qrn_rescode QRN_CALL QRN_getarowslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last, qrn_int64 maxnumnz,
                                                qrn_int64 *ptrb, qrn_int64 *ptre, qrn_int32 *sub, qrn_real *val) {
  return api(task, "QRN_getarowslice64",
             [&](Task &t) { get_slice(t, Dim::row, first, last, maxnumnz, ptrb, ptre, sub, val); });
}

QRN_API qrn_rescode QRN_CALL QRN_getatrip(qrn_task_t task, qrn_int64 maxnumnz, qrn_int32 *subi, qrn_int32 *subj,
                                          qrn_real *val) {
  return api(task, "QRN_getatrip", [&](Task &t) { get_trip(t, Dim::col, 0, t.numvar, maxnumnz, subi, subj, val); });
}

QRN_API qrn_rescode QRN_CALL QRN_getarowslicetrip(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  qrn_int64 maxnumnz, qrn_int32 *subi, qrn_int32 *subj, qrn_real *val) {
  return api(task, "QRN_getarowslicetrip",
             [&](Task &t) { get_trip(t, Dim::row, first, last, maxnumnz, subi, subj, val); });
}

QRN_API qrn_rescode QRN_CALL QRN_getacolslicetrip(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  qrn_int64 maxnumnz, qrn_int32 *subi, qrn_int32 *subj, qrn_real *val) {
  return api(task, "QRN_getacolslicetrip",
             [&](Task &t) { get_trip(t, Dim::col, first, last, maxnumnz, subi, subj, val); });
}

// ---- writers ------------------------------------------------------------------------

QRN_API qrn_rescode QRN_CALL QRN_putacol(qrn_task_t task, qrn_int32 j, qrn_int32 nzj, const qrn_int32 *subj,
                                         const qrn_real *valj) {
  return api(task, "QRN_putacol", [&](Task &t) {
    put_line(t, Dim::col, j, nzj, subj, valj, LineArgs{"j", "ptrb", "ptre", "subj", "valj"});
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putarow(qrn_task_t task, qrn_int32 i, qrn_int32 nzi, const qrn_int32 *subi,
                                         const qrn_real *vali) {
  return api(task, "QRN_putarow", [&](Task &t) {
    put_line(t, Dim::row, i, nzi, subi, vali, LineArgs{"i", "ptrb", "ptre", "subi", "vali"});
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putaijlist64(qrn_task_t task, qrn_int64 num, const qrn_int32 *subi,
                                              const qrn_int32 *subj, const qrn_real *valij) {
  return api(task, "QRN_putaijlist64", [&](Task &t) {
    need_count(num, "num");
    need_array(subi, num, "subi");
    need_array(subj, num, "subj");
    need_array(valij, num, "valij");
    std::vector<Change> ch(static_cast<size_t>(num));
    for (qrn_int64 k = 0; k < num; ++k) {
      check_index_at(Dim::row, subi[k], t.numcon, "subi", k);
      check_index_at(Dim::col, subj[k], t.numvar, "subj", k);
      check_finite_at(valij[k], "valij", k);
      ch[k] = Change{subi[k], subj[k], valij[k]};
    }
    // Of repeated entries the last one counts: keep the last of each run.
    if (!std::is_sorted(ch.begin(), ch.end(), line_order)) std::stable_sort(ch.begin(), ch.end(), line_order);
    auto same = [](const Change &x, const Change &y) { return x.line == y.line && x.idx == y.idx; };
    size_t w = 0;
    for (size_t k = 0; k < ch.size(); ++k)
      if (k + 1 == ch.size() || !same(ch[k], ch[k + 1])) ch[w++] = ch[k];
    ch.resize(w);
    set_entries(t.a, ch);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putarowlist64(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                               const qrn_int64 *ptrb, const qrn_int64 *ptre, const qrn_int32 *asub,
                                               const qrn_real *aval) {
  return api(task, "QRN_putarowlist64", [&](Task &t) { put_list(t, Dim::row, num, sub, ptrb, ptre, asub, aval); });
}

QRN_API qrn_rescode QRN_CALL QRN_putacollist64(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                               const qrn_int64 *ptrb, const qrn_int64 *ptre, const qrn_int32 *asub,
                                               const qrn_real *aval) {
  return api(task, "QRN_putacollist64", [&](Task &t) { put_list(t, Dim::col, num, sub, ptrb, ptre, asub, aval); });
}

QRN_API qrn_rescode QRN_CALL QRN_putarowslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                const qrn_int64 *ptrb, const qrn_int64 *ptre, const qrn_int32 *asub,
                                                const qrn_real *aval) {
  return api(task, "QRN_putarowslice64",
             [&](Task &t) { put_slice(t, Dim::row, first, last, ptrb, ptre, asub, aval); });
}

QRN_API qrn_rescode QRN_CALL QRN_putacolslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                const qrn_int64 *ptrb, const qrn_int64 *ptre, const qrn_int32 *asub,
                                                const qrn_real *aval) {
  return api(task, "QRN_putacolslice64",
             [&](Task &t) { put_slice(t, Dim::col, first, last, ptrb, ptre, asub, aval); });
}

QRN_API qrn_rescode QRN_CALL QRN_inputdata64(qrn_task_t task, qrn_int32 maxnumcon, qrn_int32 maxnumvar,
                                             qrn_int32 numcon, qrn_int32 numvar, const qrn_real *c, qrn_real cfix,
                                             const qrn_int64 *aptrb, const qrn_int64 *aptre, const qrn_int32 *asub,
                                             const qrn_real *aval, const qrn_int32 *bkc, const qrn_real *blc,
                                             const qrn_real *buc, const qrn_int32 *bkx, const qrn_real *blx,
                                             const qrn_real *bux) {
  return api(task, "QRN_inputdata64", [&](Task &t) {
    input_data(t, maxnumcon, maxnumvar, numcon, numvar, c, cfix, aptrb, aptre, asub, aval, bkc, blc, buc, bkx, blx,
               bux);
  });
}

}  // extern "C"
