// The constraint matrix A: counts and capacities, single entries, rows and
// columns, slices, triplets, the list and slice writers and inputdata64.
//
// A is kept by column in one pool of compressed lines with room to grow
// (Matrix and LineStore in store.hpp); the row-wise index is derived from the
// columns when a row is read, and kept in step by writers that change few
// entries. Every writer first checks its whole input in one pass over the
// caller's arrays, building no message unless a check fails; only then does it
// store anything, so a failing call leaves the task as it was. A value within
// the truncation tolerance is not stored and removes an entry.
//
//   - Writers of whole columns (inputdata64, putacol, the column slice and
//     list writers) copy each column into its place in the pool.
//   - Writers of whole rows that change many entries copy them, as they check
//     them, into one block that replaces those rows of the row-wise index;
//     the columns wait for the first access that needs them (put_rows_aside,
//     Matrix::put_rows).
//   - Other writers of whole rows and of single entries (putarow, the row
//     slice and list writers, putaij, putaijlist64) turn their input into
//     changes of columns, grouped by column in linear time, and merge each
//     touched column once. Replacing a row that holds entries needs the
//     row-wise index to know them.
#include "errors.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace qrn {
namespace {

// Which kind of item an index or a line refers to: a row is a constraint, a
// column a variable.
enum class Dim { row, col };

Dim other(Dim d) { return d == Dim::row ? Dim::col : Dim::row; }
qrn_int32 count_of(const Task &t, Dim d) { return d == Dim::row ? t.numcon : t.numvar; }
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

[[noreturn]] void bad_index_at(Dim d, const char *arg, qrn_int64 pos, qrn_int64 v, qrn_int64 n) {
  bad_index(d, at(arg, pos), v, n);
}

// Checks index v of kind d against n items; `what` names the argument.
inline void check_index(Dim d, qrn_int64 v, qrn_int64 n, const char *what) {
  if (v < 0 || v >= n) bad_index(d, what, v, n);
}
inline void check_index_at(Dim d, qrn_int64 v, qrn_int64 n, const char *arg, qrn_int64 pos) {
  if (v < 0 || v >= n) bad_index_at(d, arg, pos, v, n);
}

[[noreturn]] void not_finite(const std::string &what) {
  fail(QRN_RES_ERR_VALUE_NAN, what + " is not a finite number.");
}
inline void check_finite(double v, const char *what) {
  if (!std::isfinite(v)) not_finite(what);
}
[[noreturn]] void not_finite_at(const char *arg, qrn_int64 pos) { not_finite(at(arg, pos)); }
inline void check_finite_at(double v, const char *arg, qrn_int64 pos) {
  if (!std::isfinite(v)) not_finite_at(arg, pos);
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
// With `total`, also adds up the lengths of the lines there.
qrn_int64 check_pointers(qrn_int64 num, const qrn_int64 *ptrb, const qrn_int64 *ptre, const LineArgs &arg,
                         qrn_int64 *total = nullptr) {
  need_array(ptrb, num, arg.ptrb);
  need_array(ptre, num, arg.ptre);
  qrn_int64 reach = 0, sum = 0;
  for (qrn_int64 k = 0; k < num; ++k) {
    if (ptrb[k] < 0 || ptrb[k] > ptre[k])
      fail(QRN_RES_ERR_PTR_RANGE, at(arg.ptrb, k) + " = " + str(ptrb[k]) + " and " + at(arg.ptre, k) + " = " +
                                      str(ptre[k]) + " do not satisfy 0 <= ptrb <= ptre.");
    reach = std::max(reach, ptre[k]);
    sum += ptre[k] - ptrb[k];
  }
  if (total != nullptr) *total = sum;
  return reach;
}

// Refuses an index that occurs twice in sub[0, num).
void check_distinct(qrn_int64 num, const qrn_int32 *sub, const char *arg) {
  bool increasing = true;
  for (qrn_int64 k = 1; k < num && increasing; ++k) increasing = sub[k - 1] < sub[k];
  if (increasing) return;
  std::vector<qrn_int32> sorted(sub, sub + num);
  std::sort(sorted.begin(), sorted.end());
  auto dup = std::adjacent_find(sorted.begin(), sorted.end());
  if (dup != sorted.end())
    fail(QRN_RES_ERR_DUP_INDEX, "Index " + str(*dup) + " occurs more than once in " + arg + ".");
}

// Refuses an index that occurs twice in the n indexes ix of line `line` of
// kind d (given out of order: a sorted copy is searched).
void check_distinct_in_line(const qrn_int32 *ix, qrn_int64 n, const char *arg, Dim d, qrn_int64 line) {
  std::vector<qrn_int32> copy(ix, ix + n);
  std::sort(copy.begin(), copy.end());
  auto dup = std::adjacent_find(copy.begin(), copy.end());
  if (dup != copy.end())
    fail(QRN_RES_ERR_DUP_INDEX, "Index " + str(*dup) + " occurs more than once in " + arg + " for " + kind_of(d) +
                                    " " + str(line) + ".");
}

// What checking the lines of a writer found, for the store pass that follows.
struct Checked {
  qrn_int64 kept = 0;              // entries above the truncation tolerance
  qrn_int64 total = 0;             // entries given
  std::vector<qrn_int64> unsorted;  // lines (positions in the call, increasing) given out of index order
};

// Checks the entries idx/val[ptrb[k], ptre[k]) of lines k = 0 .. num-1 (of kind
// d; line_of(k) is the line's number, for messages): indexes of the other kind
// below n, finite values, no index twice in a line. One pass over the arrays;
// a line given out of order is sorted (a copy of its indexes) to look for
// repeats.
template <class LineOf>
Checked check_lines(Dim d, qrn_int64 num, LineOf line_of, const qrn_int64 *ptrb, const qrn_int64 *ptre,
                    const qrn_int32 *idx, const double *val, qrn_int32 n, double tol, const LineArgs &arg) {
  Checked ck;
  const Dim od = other(d);
  for (qrn_int64 k = 0; k < num; ++k) {
    const qrn_int64 b = ptrb[k], e = ptre[k];
    qrn_int32 prev = -1;
    bool sorted = true;
    qrn_int64 kept = 0;
    for (qrn_int64 p = b; p < e; ++p) {
      const qrn_int32 i = idx[p];
      const double v = val[p];
      if (i < 0 || i >= n) bad_index_at(od, arg.idx, p, i, n);
      if (!std::isfinite(v)) not_finite_at(arg.val, p);
      sorted &= i > prev;
      prev = i;
      kept += std::fabs(v) > tol;
    }
    ck.kept += kept;
    ck.total += e - b;
    if (sorted) continue;
    ck.unsorted.push_back(k);
    check_distinct_in_line(idx + b, e - b, arg.idx, d, line_of(k));
  }
  return ck;
}

// Sorts n entries of a line by index.
void sort_line(qrn_int32 *ix, double *v, qrn_int64 n) {
  std::vector<std::pair<qrn_int32, double>> e(static_cast<size_t>(n));
  for (qrn_int64 p = 0; p < n; ++p) e[p] = {ix[p], v[p]};
  std::sort(e.begin(), e.end(), [](const auto &x, const auto &y) { return x.first < y.first; });
  for (qrn_int64 p = 0; p < n; ++p) ix[p] = e[p].first, v[p] = e[p].second;
}

// Copies the entries of idx/val[b, e) above tol into a line; returns how many.
qrn_int64 copy_kept(const qrn_int32 *idx, const double *val, qrn_int64 b, qrn_int64 e, double tol, qrn_int32 *ix,
                    double *v) {
  qrn_int64 w = 0;
  for (qrn_int64 p = b; p < e; ++p)
    if (std::fabs(val[p]) > tol) {
      ix[w] = idx[p];
      v[w++] = val[p];
    }
  return w;
}

qrn_int64 count_kept(const double *val, qrn_int64 b, qrn_int64 e, double tol) {
  qrn_int64 n = 0;
  for (qrn_int64 p = b; p < e; ++p) n += std::fabs(val[p]) > tol;
  return n;
}

// ---- changes of entries -------------------------------------------------------------

// Entry idx of line `line` becomes v; |v| <= tol removes it. Of several changes
// of one entry the last one counts.
struct Change {
  qrn_int32 line, idx;
  double v;
};

// Sorts changes by line and then by index, keeping the order of changes of one
// entry: by counting when they are many, else by comparison.
void group(Pod<Change> &ch, qrn_int32 lines) {
  auto by_entry = [](const Change &x, const Change &y) { return x.line != y.line ? x.line < y.line : x.idx < y.idx; };
  if (ch.size() * 4 < static_cast<size_t>(lines)) {
    std::stable_sort(ch.begin(), ch.end(), by_entry);
    return;
  }
  Pod<qrn_int64> next(static_cast<size_t>(lines) + 1, 0);
  for (const Change &c : ch) ++next[c.line + 1];
  for (qrn_int32 l = 0; l < lines; ++l) next[l + 1] += next[l];
  Pod<Change> out;
  out.resize_uninit(ch.size());
  for (const Change &c : ch) out[next[c.line]++] = c;
  ch.swap(out);
  auto by_idx = [](const Change &x, const Change &y) { return x.idx < y.idx; };
  for (size_t p = 0; p < ch.size();) {
    size_t q = p + 1;
    bool sorted = true;
    for (; q < ch.size() && ch[q].line == ch[p].line; ++q) sorted &= ch[q - 1].idx <= ch[q].idx;
    if (!sorted) std::stable_sort(ch.begin() + p, ch.begin() + q, by_idx);
    p = q;
  }
}

// Applies the changes [c, end) of one line (sorted by index) to the line.
// cross[idx] (when not null) counts the entries of each crossing line and is
// kept exact. Few changes in a long line go in place by binary search; others
// by one merge through scratch.
void merge_line(LineStore &s, qrn_int32 line, const Change *c, const Change *end, double tol, qrn_int32 *cross,
                std::vector<Change> &scratch) {
  const qrn_int64 n0 = s.len[line];
  const auto nc = static_cast<qrn_int64>(end - c);
  if (nc * 8 <= n0 || nc == 1) {
    for (; c != end; ++c) {
      if (c + 1 != end && (c + 1)->idx == c->idx) continue;  // a later change of the entry counts
      qrn_int32 *ix = s.idx_of(line);
      const qrn_int64 n = s.len[line];
      const qrn_int64 pos = std::lower_bound(ix, ix + n, c->idx) - ix;
      const bool found = pos < n && ix[pos] == c->idx, keep = std::fabs(c->v) > tol;
      if (found && keep) {
        s.val_of(line)[pos] = c->v;
      } else if (found) {
        std::memmove(ix + pos, ix + pos + 1, (n - pos - 1) * sizeof(qrn_int32));
        double *v = s.val_of(line);
        std::memmove(v + pos, v + pos + 1, (n - pos - 1) * sizeof(double));
        s.resize_line(line, n - 1, n - 1, false);
        if (cross) --cross[c->idx];
      } else if (keep) {
        s.resize_line(line, n + 1, n, true);
        ix = s.idx_of(line);
        double *v = s.val_of(line);
        std::memmove(ix + pos + 1, ix + pos, (n - pos) * sizeof(qrn_int32));
        std::memmove(v + pos + 1, v + pos, (n - pos) * sizeof(double));
        ix[pos] = c->idx;
        v[pos] = c->v;
        if (cross) ++cross[c->idx];
      }
    }
    return;
  }
  // Merge the line and the changes into scratch (as entries), then put it back.
  scratch.clear();
  const qrn_int32 *ix = s.idx_of(line);
  const double *v = s.val_of(line);
  qrn_int64 p = 0;
  for (; c != end; ++c) {
    if (c + 1 != end && (c + 1)->idx == c->idx) continue;
    for (; p < n0 && ix[p] < c->idx; ++p) scratch.push_back(Change{line, ix[p], v[p]});
    const bool found = p < n0 && ix[p] == c->idx, keep = std::fabs(c->v) > tol;
    if (found) ++p;
    if (keep) scratch.push_back(*c);
    if (cross) cross[c->idx] += static_cast<qrn_int32>(keep) - static_cast<qrn_int32>(found);
  }
  for (; p < n0; ++p) scratch.push_back(Change{line, ix[p], v[p]});
  const auto n = static_cast<qrn_int64>(scratch.size());
  s.resize_line(line, n, 0, n0 > 0);
  qrn_int32 *oi = s.idx_of(line);
  double *ov = s.val_of(line);
  for (qrn_int64 k = 0; k < n; ++k) oi[k] = scratch[k].idx, ov[k] = scratch[k].v;
}

// Applies grouped changes to the lines of a store.
void merge(LineStore &s, const Pod<Change> &ch, double tol, qrn_int32 *cross) {
  std::vector<Change> scratch;
  for (size_t p = 0; p < ch.size();) {
    size_t q = p + 1;
    while (q < ch.size() && ch[q].line == ch[p].line) ++q;
    merge_line(s, ch[p].line, ch.data() + p, ch.data() + q, tol, cross, scratch);
    p = q;
  }
  s.tidy();
}

// Applies changes given by column (line = column, idx = row) to A: to the
// columns, and to the row-wise index while it is kept.
void change_entries(Matrix &a, Pod<Change> &by_col, qrn_int32 numcon, qrn_int32 numvar) {
  const bool many = a.many(static_cast<qrn_int64>(by_col.size()));
  const bool rows = a.rows_ready() && !many;
  if (many) a.drop_counts();
  if (!rows) a.drop_rows();
  Pod<Change> by_row;
  if (rows) {
    by_row.resize_uninit(by_col.size());
    for (size_t k = 0; k < by_col.size(); ++k) by_row[k] = Change{by_col[k].idx, by_col[k].line, by_col[k].v};
  }
  group(by_col, numvar);
  LineStore &cols = a.cols_to_change();
  merge(cols, by_col, a.tol, a.counts_to_update());
  a.nnz = cols.live;
  if (rows) {
    group(by_row, numcon);
    merge(a.rows_to_update(), by_row, a.tol, nullptr);
  }
}

// Fills empty columns straight from entries that come in another order (by
// row, or as triplets): each(f) calls f(row, column, value) for every entry to
// store, in order, the same each time, and cols(g) calls g(column) for the
// same entries in the same order. Returns false, having changed nothing,
// unless the entries are many, every column that receives one is empty and the
// row-wise index is not to be kept; then the entries need no merging. Of
// entries repeated in a column the last one counts. With `row_order` the
// entries come by increasing row, none twice: the columns then come out
// sorted, and the caller keeps the count of entries of each row; else the
// row counts are dropped.
//
// A counting transpose: one pass counts the entries of each column, the
// receiving columns get their exact room, side by side at the end of the pool,
// and scatter_lines puts the entries there.
template <class Each, class Cols>
bool fill_empty_columns(Task &t, qrn_int64 count, bool row_order, Each each, Cols cols) {
  Matrix &a = t.a;
  LineStore &s = a.cols_to_change();
  const qrn_int32 n = t.numvar;
  if (count == 0 || count * 4 < n || (a.rows_ready() && !a.many(count))) return false;
  Pod<qrn_int64> next(static_cast<size_t>(n) + 1, 0);
  qrn_int64 *at = next.data();  // plain pointers: the loops below then keep them in registers
  qrn_int32 last = 0;  // entries that come by column need no grouping
  bool by_col = true;
  cols([at, &last, &by_col](qrn_int32 j) {
    ++at[j + 1];
    by_col &= j >= last;
    last = j;
  });
  for (qrn_int32 j = 0; j < n; ++j)
    if (at[j + 1] > 0 && s.len[j] > 0) return false;
  if (row_order) a.drop_rows();
  else a.drop_counts();
  // Room: the receiving columns leave their old room (garbage now) for their
  // exact room in a new stretch of the pool.
  const auto base = static_cast<qrn_int64>(s.idx.size());
  s.reserve_more(count);
  s.idx.resize_uninit(static_cast<size_t>(base + count));
  s.val.resize_uninit(static_cast<size_t>(base + count));
  at[0] = base;
  for (qrn_int32 j = 0; j < n; ++j) {
    const qrn_int64 c = at[j + 1];
    at[j + 1] += at[j];
    if (c == 0) continue;
    s.room += c - s.cap[j];
    s.start[j] = at[j];
    s.len[j] = s.cap[j] = static_cast<qrn_int32>(c);
  }
  s.live += count;
  scatter_lines(n, count, base, at, s.idx.data(), s.val.data(), by_col, each);
  next.release(false);
  if (!row_order) {
    std::vector<Change> scratch;
    for (qrn_int32 j = 0; j < n; ++j) {
      const qrn_int32 len = s.len[j];
      if (len == 0 || s.start[j] < base) continue;
      qrn_int32 *ix = s.idx_of(j);
      double *v = s.val_of(j);
      bool sorted = true;
      for (qrn_int32 p = 1; p < len && sorted; ++p) sorted = ix[p - 1] < ix[p];
      if (!sorted) {  // sort by row, keeping the last of repeated entries
        scratch.resize(static_cast<size_t>(len));
        for (qrn_int32 p = 0; p < len; ++p) scratch[p] = Change{j, ix[p], v[p]};
        std::stable_sort(scratch.begin(), scratch.end(),
                         [](const Change &x, const Change &y) { return x.idx < y.idx; });
        qrn_int32 w = 0;
        for (qrn_int32 p = 0; p < len; ++p) {
          if (p + 1 < len && scratch[p + 1].idx == scratch[p].idx) continue;
          ix[w] = scratch[p].idx;
          v[w++] = scratch[p].v;
        }
        s.resize_line(j, w, w, false);
      }
    }
  }
  a.nnz = s.live;
  s.tidy();
  return true;
}

// Copies num lines of kind d (line k: the entries idx/val[ptrb[k], ptre[k]))
// into fresh arrays, line k after line k-1, each with exactly the room it
// needs, checking them as it copies: indexes below ncross, finite values, no
// index twice in a line. `total` is the sum of the lengths of the lines. One
// pass over the caller's arrays; a line given out of order is sorted
// afterwards; entries within the tolerance are left out.
template <class LineOf>
void take_lines(LineStore &out, Dim d, qrn_int64 num, LineOf line_of, qrn_int32 ncross, const qrn_int64 *ptrb,
                const qrn_int64 *ptre, const qrn_int32 *sub, const double *val, qrn_int64 total, double tol,
                const LineArgs &arg) {
  const Dim od = other(d);
  out.start.resize_uninit(static_cast<size_t>(num));
  out.len.resize_uninit(static_cast<size_t>(num));
  out.cap.resize_uninit(static_cast<size_t>(num));
  out.idx.resize_uninit(static_cast<size_t>(total));
  out.val.resize_uninit(static_cast<size_t>(total));
  // plain pointers, so that the loop keeps them in registers
  qrn_int32 *oi = out.idx.data();
  double *ov = out.val.data();
  qrn_int64 pos = 0;
  for (qrn_int64 k = 0; k < num; ++k) {
    const qrn_int64 b = ptrb[k], e = ptre[k], first = pos;
    qrn_int32 prev = -1;
    bool sorted = true;
    for (qrn_int64 p = b; p < e; ++p) {
      const qrn_int32 i = sub[p];
      const double v = val[p];
      if (static_cast<std::uint32_t>(i) >= static_cast<std::uint32_t>(ncross)) bad_index_at(od, arg.idx, p, i, ncross);
      if (!std::isfinite(v)) not_finite_at(arg.val, p);
      sorted &= i > prev;
      prev = i;
      // every entry is written; one within the tolerance is overwritten by the next
      const bool keep = std::fabs(v) > tol;
      oi[pos] = i;
      ov[pos] = v;
      pos += keep;
    }
    if (!sorted) {
      check_distinct_in_line(sub + b, e - b, arg.idx, d, line_of(k));
      sort_line(oi + first, ov + first, pos - first);
    }
    out.start[k] = first;
    out.len[k] = out.cap[k] = static_cast<qrn_int32>(pos - first);
  }
  out.idx.resize_uninit(static_cast<size_t>(pos));
  out.val.resize_uninit(static_cast<size_t>(pos));
  out.live = out.room = pos;
}

// ---- writers of whole lines -----------------------------------------------------------

// The lines a writer replaces: sub[k], or first + k when sub is null.
struct LineList {
  const qrn_int32 *sub;
  qrn_int32 first;
  qrn_int32 operator()(qrn_int64 k) const { return sub != nullptr ? sub[k] : static_cast<qrn_int32>(first + k); }
};

// Replaces columns line_of(k) by the checked entries idx/val[ptrb[k], ptre[k]).
void store_cols(Task &t, qrn_int64 num, LineList line_of, const qrn_int64 *ptrb, const qrn_int64 *ptre,
                const qrn_int32 *idx, const double *val, const Checked &ck) {
  Matrix &a = t.a;
  LineStore &s = a.cols_to_change();
  qrn_int64 old = 0;
  for (qrn_int64 k = 0; k < num; ++k) old += s.len[line_of(k)];
  const bool many = a.many(old + ck.kept);
  const bool rows = a.rows_ready() && !many;
  if (many) a.drop_counts();
  if (!rows) a.drop_rows();
  qrn_int32 *count = a.counts_to_update();
  Pod<Change> cross;  // changes of the row-wise index, by row
  s.reserve_more(ck.kept);
  const bool all = ck.kept == ck.total;  // every entry kept: columns are copied as they come
  auto unsorted = ck.unsorted.begin();
  for (qrn_int64 k = 0; k < num; ++k) {
    const qrn_int32 j = line_of(k);
    const qrn_int32 *ix = s.idx_of(j);
    for (qrn_int32 p = 0; p < s.len[j] && count != nullptr; ++p) {
      --count[ix[p]];
      if (rows) cross.push_back(Change{ix[p], j, 0.0});
    }
    const qrn_int64 b = ptrb[k], e = ptre[k];
    s.resize_line(j, all ? e - b : count_kept(val, b, e, a.tol), 0, false);
    qrn_int32 *oi = s.idx_of(j);
    double *ov = s.val_of(j);
    qrn_int64 n = e - b;
    if (all && n > 0) {
      std::memcpy(oi, idx + b, n * sizeof(qrn_int32));
      std::memcpy(ov, val + b, n * sizeof(double));
    } else if (!all) {
      n = copy_kept(idx, val, b, e, a.tol, oi, ov);
    }
    if (unsorted != ck.unsorted.end() && *unsorted == k) {
      sort_line(oi, ov, n);
      ++unsorted;
    }
    for (qrn_int64 p = 0; p < n && count != nullptr; ++p) {
      ++count[oi[p]];
      if (rows) cross.push_back(Change{oi[p], j, ov[p]});
    }
  }
  a.nnz = s.live;
  s.tidy();
  if (rows) {
    group(cross, t.numcon);
    merge(a.rows_to_update(), cross, a.tol, nullptr);
  }
}

// Sets the count of entries of rows line_of(k) to what idx/val[ptrb[k], ptre[k]) keeps.
void count_rows(Matrix &a, qrn_int64 num, LineList line_of, const qrn_int64 *ptrb, const qrn_int64 *ptre,
                const double *val, const Checked &ck) {
  qrn_int32 *count = a.counts_to_update();
  if (count == nullptr) return;
  for (qrn_int64 k = 0; k < num; ++k)
    count[line_of(k)] = static_cast<qrn_int32>(ck.kept == ck.total ? ptre[k] - ptrb[k]
                                                                        : count_kept(val, ptrb[k], ptre[k], a.tol));
}

// Replaces rows line_of(k) by the checked entries idx/val[ptrb[k], ptre[k]):
// every old entry of those rows and every new one is a change of its column.
void store_rows(Task &t, qrn_int64 num, LineList line_of, const qrn_int64 *ptrb, const qrn_int64 *ptre,
                const qrn_int32 *idx, const double *val, const Checked &ck) {
  Matrix &a = t.a;
  a.cols_to_change();  // current before the row-wise index changes below
  qrn_int64 old = 0;
  const qrn_int32 *counts = a.row_counts();  // recounted if dropped: the rows' old entries are to be known
  for (qrn_int64 k = 0; k < num; ++k) old += counts[line_of(k)];
  const double tol = a.tol;
  bool increasing = true;  // rows given in order
  for (qrn_int64 k = 1; k < num && increasing && line_of.sub != nullptr; ++k) increasing = line_of(k - 1) < line_of(k);
  const bool all = ck.kept == ck.total;  // no entry within the tolerance: no value to look at for counting
  auto each = [=](auto f) {
    for (qrn_int64 k = 0; k < num; ++k) {
      const qrn_int32 i = line_of(k);
      for (qrn_int64 p = ptrb[k], e = ptre[k]; p < e; ++p)
        if (std::fabs(val[p]) > tol) f(i, idx[p], val[p]);
    }
  };
  auto cols = [=](auto f) {
    if (!all) return each([f](qrn_int32, qrn_int32 j, double) { f(j); });
    for (qrn_int64 k = 0; k < num; ++k)
      for (qrn_int64 p = ptrb[k], e = ptre[k]; p < e; ++p) f(idx[p]);
  };
  if (old == 0 && fill_empty_columns(t, ck.kept, increasing, each, cols)) {
    if (increasing) count_rows(a, num, line_of, ptrb, ptre, val, ck);
    return;
  }
  const LineStore *held = old > 0 ? &a.rows() : nullptr;  // the old entries, when there are any
  Pod<Change> ch;  // by column: deletions of the old entries of each row, then its new entries
  ch.reserve(static_cast<size_t>(old + ck.kept));
  for (qrn_int64 k = 0; k < num; ++k) {
    const qrn_int32 i = line_of(k);
    if (held != nullptr) {
      const qrn_int32 *ix = held->idx_of(i);
      for (qrn_int32 p = 0; p < held->len[i]; ++p) ch.push_back(Change{ix[p], i, 0.0});
    }
    for (qrn_int64 p = ptrb[k]; p < ptre[k]; ++p)
      if (std::fabs(val[p]) > a.tol) ch.push_back(Change{idx[p], i, val[p]});
  }
  const bool rows = a.rows_ready() && !a.many(static_cast<qrn_int64>(ch.size()));
  if (rows) {
    LineStore &r = a.rows_to_update();
    auto unsorted = ck.unsorted.begin();
    for (qrn_int64 k = 0; k < num; ++k) {
      const qrn_int32 i = line_of(k);
      r.resize_line(i, count_kept(val, ptrb[k], ptre[k], a.tol), 0, false);
      const qrn_int64 n = copy_kept(idx, val, ptrb[k], ptre[k], a.tol, r.idx_of(i), r.val_of(i));
      if (unsorted != ck.unsorted.end() && *unsorted == k) {
        sort_line(r.idx_of(i), r.val_of(i), n);
        ++unsorted;
      }
    }
    r.tidy();
  } else {
    a.drop_rows();
  }
  count_rows(a, num, line_of, ptrb, ptre, val, ck);
  group(ch, t.numvar);
  LineStore &by_col = a.cols_to_change();
  merge(by_col, ch, a.tol, nullptr);
  a.nnz = by_col.live;
}

// A bulk write of rows (many() entries) goes to the row-wise index alone, the
// columns following when first needed (Matrix::put_rows): checked as it is
// copied into one block, then the block's lines replace the rows. Taken when
// the rows written hold every entry of A (a build by rows, or a rewrite of
// them), or when the index is at hand or is needed anyway because those rows
// hold entries; not when the rows are empty and only the columns exist, where
// filling the columns directly costs no more. Returns false, having changed
// nothing, when not taken.
bool put_rows_aside(Task &t, qrn_int64 num, LineList line_of, const qrn_int64 *ptrb, const qrn_int64 *ptre,
                    const qrn_int32 *idx, const double *val, qrn_int64 total, const LineArgs &arg) {
  Matrix &a = t.a;
  qrn_int64 old = 0;
  const qrn_int32 *counts = a.row_counts();
  for (qrn_int64 k = 0; k < num; ++k) old += counts[line_of(k)];
  if (!a.many(old + total) || (old == 0 && a.nnz > 0 && !a.rows_ready())) return false;
  LineStore block;
  take_lines(block, Dim::row, num, line_of, t.numvar, ptrb, ptre, idx, val, total, a.tol, arg);
  a.put_rows(num, line_of, std::move(block), old == a.nnz);
  return true;
}

// Replaces num lines of kind d: line sub[k] (first + k when sub is null) gets
// the entries idx/val[ptrb[k], ptre[k]). Everything is checked first.
void replace_lines(Task &t, Dim d, qrn_int64 num, const qrn_int32 *sub, qrn_int32 first, const qrn_int64 *ptrb,
                   const qrn_int64 *ptre, const qrn_int32 *idx, const double *val, const LineArgs &arg) {
  const qrn_int32 nlines = count_of(t, d), ncross = count_of(t, other(d));
  if (sub != nullptr) {
    for (qrn_int64 k = 0; k < num; ++k) check_index_at(d, sub[k], nlines, arg.sub, k);
    check_distinct(num, sub, arg.sub);
  }
  qrn_int64 total = 0;
  qrn_int64 reach = check_pointers(num, ptrb, ptre, arg, &total);
  need_array(idx, reach, arg.idx);
  need_array(val, reach, arg.val);
  const LineList line_of{sub, first};
  if (d == Dim::row && put_rows_aside(t, num, line_of, ptrb, ptre, idx, val, total, arg)) return;
  const Checked ck = check_lines(d, num, line_of, ptrb, ptre, idx, val, ncross, t.a.tol, arg);
  if (d == Dim::col) store_cols(t, num, line_of, ptrb, ptre, idx, val, ck);
  else store_rows(t, num, line_of, ptrb, ptre, idx, val, ck);
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

void put_entries(Task &t, qrn_int64 num, const qrn_int32 *subi, const qrn_int32 *subj, const double *valij) {
  need_count(num, "num");
  need_array(subi, num, "subi");
  need_array(subj, num, "subj");
  need_array(valij, num, "valij");
  for (qrn_int64 k = 0; k < num; ++k) {
    check_index_at(Dim::row, subi[k], t.numcon, "subi", k);
    check_index_at(Dim::col, subj[k], t.numvar, "subj", k);
    check_finite_at(valij[k], "valij", k);
  }
  const double tol = t.a.tol;
  qrn_int64 kept = 0;
  for (qrn_int64 k = 0; k < num; ++k) kept += std::fabs(valij[k]) > tol;
  // Into empty columns when there are no removals (a value within tol removes).
  if (kept == num && fill_empty_columns(
                         t, num, false,
                         [&](auto f) {
                           for (qrn_int64 k = 0; k < num; ++k) f(subi[k], subj[k], valij[k]);
                         },
                         [&](auto f) {
                           for (qrn_int64 k = 0; k < num; ++k) f(subj[k]);
                         }))
    return;
  Pod<Change> ch;
  ch.resize_uninit(static_cast<size_t>(num));
  for (qrn_int64 k = 0; k < num; ++k) ch[k] = Change{subj[k], subi[k], valij[k]};
  change_entries(t.a, ch, t.numcon, t.numvar);
}

// ---- readers ------------------------------------------------------------------

// Line k of kind d (a row may rebuild the row-wise index).
struct LineView {
  const qrn_int32 *idx;
  const double *val;
  qrn_int32 n;
};

LineView line_at(const Task &t, Dim d, qrn_int32 k, const char *what) {
  check_index(d, k, count_of(t, d), what);
  const LineStore &s = d == Dim::col ? t.a.cols() : t.a.rows();
  return LineView{s.idx_of(k), s.val_of(k), s.len[k]};
}

qrn_int32 line_size(const Task &t, Dim d, qrn_int32 k, const char *what) {
  check_index(d, k, count_of(t, d), what);
  return d == Dim::col ? t.a.cols().len[k] : t.a.row_counts()[k];
}

void get_line(const Task &t, Dim d, qrn_int32 k, const char *what, qrn_int32 *nz, qrn_int32 *sub, double *val) {
  const LineView line = line_at(t, d, k, what);
  put(nz, line.n);
  if (sub != nullptr && line.n > 0) std::memcpy(sub, line.idx, line.n * sizeof(qrn_int32));
  if (val != nullptr && line.n > 0) std::memcpy(val, line.val, line.n * sizeof(double));
}

qrn_int64 slice_nnz(const Task &t, Dim d, qrn_int32 first, qrn_int32 last) {
  check_slice(first, last, count_of(t, d), kind_of(d));
  const qrn_int32 *len = d == Dim::col ? t.a.cols().len.data() : t.a.row_counts();
  qrn_int64 n = 0;
  for (qrn_int32 k = first; k < last; ++k) n += len[k];
  return n;
}

const LineStore &lines_of(const Task &t, Dim d) { return d == Dim::col ? t.a.cols() : t.a.rows(); }

void get_slice(const Task &t, Dim d, qrn_int32 first, qrn_int32 last, qrn_int64 maxnumnz, qrn_int64 *ptrb,
               qrn_int64 *ptre, qrn_int32 *sub, double *val) {
  check_capacity(maxnumnz, slice_nnz(t, d, first, last), sub != nullptr || val != nullptr);
  const LineStore &s = lines_of(t, d);
  qrn_int64 pos = 0;
  for (qrn_int32 k = first; k < last; ++k) {
    const qrn_int32 n = s.len[k];
    if (ptrb != nullptr) ptrb[k - first] = pos;
    if (sub != nullptr && n > 0) std::memcpy(sub + pos, s.idx_of(k), n * sizeof(qrn_int32));
    if (val != nullptr && n > 0) std::memcpy(val + pos, s.val_of(k), n * sizeof(double));
    pos += n;
    if (ptre != nullptr) ptre[k - first] = pos;
  }
}

// Triplets of lines [first, last) of kind d, line by line.
void get_trip(const Task &t, Dim d, qrn_int32 first, qrn_int32 last, qrn_int64 maxnumnz, qrn_int32 *subi,
              qrn_int32 *subj, double *val) {
  check_capacity(maxnumnz, slice_nnz(t, d, first, last), subi != nullptr || subj != nullptr || val != nullptr);
  qrn_int32 *line_out = d == Dim::row ? subi : subj;
  qrn_int32 *idx_out = d == Dim::row ? subj : subi;
  const LineStore &s = lines_of(t, d);
  qrn_int64 pos = 0;
  for (qrn_int32 k = first; k < last; ++k) {
    const qrn_int32 n = s.len[k];
    if (line_out != nullptr) std::fill(line_out + pos, line_out + pos + n, k);
    if (n == 0) continue;
    if (idx_out != nullptr) std::memcpy(idx_out + pos, s.idx_of(k), n * sizeof(qrn_int32));
    if (val != nullptr) std::memcpy(val + pos, s.val_of(k), n * sizeof(double));
    pos += n;
  }
}

// Non-zeros of A in rows [firsti, lasti) and columns [firstj, lastj): along
// the rows when the row-wise index is at hand and the rows are fewer, else
// along the columns.
qrn_int64 piece_nnz(const Task &t, qrn_int32 firsti, qrn_int32 lasti, qrn_int32 firstj, qrn_int32 lastj) {
  check_slice(firsti, lasti, t.numcon, "row");
  check_slice(firstj, lastj, t.numvar, "column");
  const bool by_rows = t.a.rows_ready() && lasti - firsti <= lastj - firstj;
  const LineStore &s = by_rows ? t.a.rows() : t.a.cols();
  const qrn_int32 lo = by_rows ? firstj : firsti, hi = by_rows ? lastj : lasti;
  qrn_int64 n = 0;
  for (qrn_int32 k = by_rows ? firsti : firstj, end = by_rows ? lasti : lastj; k < end; ++k) {
    const qrn_int32 *b = s.idx_of(k), *e = b + s.len[k];
    const qrn_int32 *from = std::lower_bound(b, e, lo);
    n += std::lower_bound(from, e, hi) - from;
  }
  return n;
}

// ---- whole-problem input ---------------------------------------------------------

bool bounds_below(qrn_int32 bk) { return bk == QRN_BK_LOWER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED; }
bool bounds_above(qrn_int32 bk) { return bk == QRN_BK_UPPER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED; }

// Checks n bounds (null arrays: free, -inf, +inf) as it copies them into
// fresh arrays; a side that the key leaves open becomes infinite. Only a
// failing item gets its message, from make_bound.
Bounds take_bounds(qrn_int32 n, const qrn_int32 *bk, const double *bl, const double *bu, const char *kind) {
  Bounds out;
  out.bk.resize_uninit(n);
  out.bl.resize_uninit(n);
  out.bu.resize_uninit(n);
  for (qrn_int32 k = 0; k < n; ++k) {
    const qrn_int32 key = bk != nullptr ? bk[k] : QRN_BK_FREE;
    const double lo = bl != nullptr ? bl[k] : -inf, hi = bu != nullptr ? bu[k] : inf;
    const bool below = bounds_below(key), above = bounds_above(key);
    const bool ok = key >= QRN_BK_FREE && key <= QRN_BK_RANGED && !std::isnan(lo) && !std::isnan(hi) &&
                    (!below || std::fabs(lo) < QRN_INFINITY) && (!above || std::fabs(hi) < QRN_INFINITY);
    if (!ok) make_bound(key, lo, hi, (std::string(kind) + " " + str(k)).c_str());  // throws with the reason
    out.bk[k] = key;
    out.bl[k] = below ? lo : -inf;
    out.bu[k] = above ? hi : inf;
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
  // Everything is checked as it is copied into fresh arrays, one pass over
  // each of the caller's arrays; the task changes only once all is well.
  const LineArgs arg{"aptrb", "aptrb", "aptre", "asub", "aval"};
  qrn_int64 total = 0;
  qrn_int64 reach = check_pointers(numvar, aptrb, aptre, arg, &total);
  need_array(asub, reach, "asub");
  need_array(aval, reach, "aval");
  LineStore cols;
  take_lines(cols, Dim::col, numvar, LineList{nullptr, 0}, numcon, aptrb, aptre, asub, aval, total, t.a.tol, arg);
  Pod<double> cnew;
  cnew.resize_uninit(numvar);
  if (c != nullptr) {
    for (qrn_int32 j = 0; j < numvar; ++j) {
      check_finite_at(c[j], "c", j);
      cnew[j] = c[j];
    }
  } else {
    std::fill(cnew.begin(), cnew.end(), 0.0);
  }
  check_finite(cfix, "cfix");
  Bounds con = take_bounds(numcon, bkc, blc, buc, "constraint");
  Bounds var = take_bounds(numvar, bkx, blx, bux, "variable");

  // Apply. A is emptied first, so that removing items has nothing to
  // renumber. The arrays that are replaced whole go in before items are
  // appended, already of their new size, so that appending does not fill them
  // with defaults first; when items are removed they go in after.
  // The row counts are dropped: the first row read counts them.
  Matrix &a = t.a;
  LineStore none;
  none.add_lines(t.numvar);
  a.set_cols(std::move(none));
  const bool more_cons = numcon >= t.numcon, more_vars = numvar >= t.numvar;
  auto put_cons = [&] { t.conbound = std::move(con); };
  auto put_vars = [&] { a.set_cols(std::move(cols)), t.c.swap(cnew), t.varbound = std::move(var); };
  if (more_cons) put_cons();
  resize(t, Dim::row, numcon);
  if (!more_cons) put_cons();
  if (more_vars) put_vars();
  resize(t, Dim::col, numvar);
  if (!more_vars) put_vars();
  t.cfix = cfix;
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
             [&](Task &t) { put(nzj, line_size(t, Dim::col, j, "j")); });
}

QRN_API qrn_rescode QRN_CALL QRN_getarownumnz(qrn_task_t task, qrn_int32 i, qrn_int32 *nzi) {
  return api(task, "QRN_getarownumnz",
             [&](Task &t) { put(nzi, line_size(t, Dim::row, i, "i")); });
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
    check_index(Dim::row, i, t.numcon, "i");
    const LineView col = line_at(t, Dim::col, j, "j");
    const qrn_int32 *pos = std::lower_bound(col.idx, col.idx + col.n, i);
    put(aij, pos != col.idx + col.n && *pos == i ? col.val[pos - col.idx] : 0.0);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putaij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real aij) {
  return api(task, "QRN_putaij", [&](Task &t) {
    check_index(Dim::row, i, t.numcon, "i");
    check_index(Dim::col, j, t.numvar, "j");
    check_finite(aij, "aij");
    std::vector<Change> scratch;  // not used for one change
    const Change by_col{j, i, aij}, by_row{i, j, aij};
    LineStore &cols = t.a.cols_to_change();
    merge_line(cols, j, &by_col, &by_col + 1, t.a.tol, t.a.counts_to_update(), scratch);
    t.a.nnz = cols.live;
    cols.tidy();
    if (t.a.rows_ready()) {
      merge_line(t.a.rows_to_update(), i, &by_row, &by_row + 1, t.a.tol, nullptr, scratch);
      t.a.rows_to_update().tidy();
    }
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
  return api(task, "QRN_putaijlist64", [&](Task &t) { put_entries(t, num, subi, subj, valij); });
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
