// How a task keeps its problem data: flat arrays that bulk writers fill at the
// speed of memory and that readers (and the optimizer) read without conversion.
//
//   Matrix   the constraint matrix A: by column in one pool of compressed
//            lines with room to grow; the count of entries of every row and a
//            row-wise index derived from the columns when a row is read; after
//            a bulk write of rows, the other way round until a column is
//            needed (see Matrix below for when each is rebuilt).
//   Bounds   key, lower and upper side of each constraint or variable, one
//            array each.
//   QTerms   the terms of one symmetric quadratic matrix as sorted triplets.
#pragma once

#include "quarn.h"

#include "memory.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace qrn {

constexpr double inf = HUGE_VAL;

// A mutex that copies do not share: a copied object starts unlocked.
struct OwnMutex {
  std::mutex m;
  OwnMutex() = default;
  OwnMutex(const OwnMutex &) {}
  OwnMutex &operator=(const OwnMutex &) { return *this; }
};

// Lines of a sparse matrix (its columns, or its rows) compressed in one pool
// with room to grow. Line k holds len[k] entries at positions start[k] ..
// start[k] + len[k] - 1 of idx/val, sorted by idx with no index twice, and may
// grow in place up to cap[k] entries. A line that outgrows its room moves to the
// end of the pool; the room it leaves is garbage, which tidy() reclaims once it
// outweighs half of what the lines own.
struct LineStore {
  Pod<qrn_int64> start;
  Pod<qrn_int32> len, cap;
  Pod<qrn_int32> idx;  // for columns: row indexes; for rows: column indexes
  Pod<double> val;
  qrn_int64 live = 0;  // entries held: the sum of len
  qrn_int64 room = 0;  // pool positions that lines own: the sum of cap

  qrn_int32 lines() const { return static_cast<qrn_int32>(start.size()); }
  const qrn_int32 *idx_of(qrn_int32 k) const { return idx.data() + start[k]; }
  const double *val_of(qrn_int32 k) const { return val.data() + start[k]; }
  qrn_int32 *idx_of(qrn_int32 k) { return idx.data() + start[k]; }
  double *val_of(qrn_int32 k) { return val.data() + start[k]; }

  void add_lines(qrn_int32 n);  // n empty lines after the last one
  void fit_lines(qrn_int32 n) {  // at least n lines: empty ones added after the last
    if (n > lines()) add_lines(n - lines());
  }
  // Line k will hold n entries, of which the first `keep` (<= its length) stay
  // as they are; the caller writes the others. A line that has to move takes
  // room for n entries, and with `slack` half as many again.
  void resize_line(qrn_int32 k, qrn_int64 n, qrn_int64 keep, bool slack);
  // Pool room for n more entries, so that lines can move without the pool moving.
  void reserve_more(qrn_int64 n);
  // Keeps line k as line newindex[k] (monotone), dropping those mapped to -1.
  void drop_lines(const std::vector<qrn_int32> &newindex, qrn_int32 count);
  // Entry indexes go through newindex (monotone); entries mapped to -1 go.
  void renumber(const std::vector<qrn_int32> &newindex);
  void tidy();     // compact() when garbage outweighs half the room lines own
  void compact();  // lines packed in pool order, garbage dropped
  void clear();    // no lines, memory given back
};

// Puts `count` entries, given by each(f) calling f(i, j, v) for every one in
// the same order each time, into lines j that have their room: entry (i, j, v)
// goes to idx/val[at[j]++] as i and v. Entries given in line order (`in_order`)
// or few go straight to their place; many others go in two steps for the
// cache's sake: first each into the range of its group of lines (at most 64
// groups of at most 2^16 lines, or more groups for more lines, each written in
// order; the entry's line within its group beside it in 16 bits), then, group
// by group, each into its line. The pool positions used start at `base`.
template <class Each>
void scatter_lines(qrn_int32 n, qrn_int64 count, qrn_int64 base, qrn_int64 *at, qrn_int32 *idx, double *val,
                   bool in_order, Each each) {
  int shift = 0;
  while ((static_cast<qrn_int64>(n - 1) >> shift) >= 64 && shift < 16) ++shift;
  if (count < (qrn_int64(1) << 17) || shift == 0 || in_order) {
    each([=](qrn_int32 i, qrn_int32 j, double v) {
      const qrn_int64 pos = at[j]++;
      idx[pos] = i;
      val[pos] = v;
    });
    return;
  }
  const qrn_int32 groups = ((n - 1) >> shift) + 1;
  const qrn_int32 mask = (qrn_int32(1) << shift) - 1;
  std::vector<qrn_int64> gnext(groups);
  for (qrn_int32 g = 0; g < groups; ++g) gnext[g] = at[static_cast<qrn_int64>(g) << shift];
  Pod<std::uint16_t> lineof;  // the line of each entry within its group, while it sits in the group's range
  lineof.resize_uninit(static_cast<size_t>(count));
  qrn_int64 *gn = gnext.data();
  std::uint16_t *line = lineof.data() - base;
  each([=](qrn_int32 i, qrn_int32 j, double v) {
    const qrn_int64 pos = gn[j >> shift]++;
    idx[pos] = i;
    val[pos] = v;
    line[pos] = static_cast<std::uint16_t>(j & mask);
  });
  std::vector<qrn_int32> si;
  std::vector<double> sv;
  for (qrn_int32 g = 0; g < groups; ++g) {
    qrn_int64 *ag = at + (static_cast<qrn_int64>(g) << shift);
    const qrn_int64 lo = ag[0], hi = gnext[g];
    si.assign(idx + lo, idx + hi);
    sv.assign(val + lo, val + hi);
    const std::uint16_t *lg = line + lo;
    for (qrn_int64 k = 0; k < hi - lo; ++k) {
      const qrn_int64 pos = ag[lg[k]]++;
      idx[pos] = si[k];
      val[pos] = sv[k];
    }
  }
  lineof.release(false);  // scratch: not to stay resident
}

// The constraint matrix, kept by column and by row, one of the two current at
// all times and the other derived from it when needed, in one pass, once,
// under a lock, so that concurrent readers are safe:
//   - the columns (cols(): line j holds column j, entries indexed by row) are
//     the primary store, except right after a bulk write of rows;
//   - the count of entries of each row (rowlen: one per row at all times, its
//     values current while counts_ready());
//   - the row-wise index (rows(): line i holds row i, entries indexed by column).
// Writers keep the derived data in step while they change few entries and drop
// it when they change many (more than an eighth of A): the index with the
// counts, or the index alone. The index is never kept without the counts.
//
// A bulk write of rows (put_rows) goes to the row-wise index alone and leaves
// the columns stale: then the rows and their counts are the store, and the
// columns are rebuilt from them by the first access that needs them. Every
// access to the columns goes through cols() or cols_to_change(), which settle
// them first, so no path sees stale columns; dropping the rows settles first
// too. nnz always equals the entries held by the current store.
struct Matrix {
  mutable Pod<qrn_int32> rowlen;  // read through row_counts()
  qrn_int64 nnz = 0;
  qrn_int64 maxnnz = 0;  // capacity hint given by the caller; never allocated
  double tol = 0.0;      // entries with |value| <= tol are not stored

  Matrix() = default;
  Matrix(const Matrix &o);
  Matrix &operator=(const Matrix &o);

  qrn_int32 numrows() const { return static_cast<qrn_int32>(rowlen.size()); }
  bool counts_ready() const { return counted_.load(std::memory_order_acquire); }
  bool rows_ready() const { return ready_.load(std::memory_order_acquire); }
  bool cols_ready() const { return current_.load(std::memory_order_acquire); }
  const LineStore &cols() const { return cols_ready() ? cols_ : settle(); }
  // The columns for a writer, who keeps the row data in step or drops it.
  LineStore &cols_to_change() {
    settle();
    return cols_;
  }
  // The columns replaced whole: the derived data are dropped.
  void set_cols(LineStore &&c);
  void fit_cols(qrn_int32 n);  // at least n columns: empty ones added after the last
  const qrn_int32 *row_counts() const;           // recounted when dropped
  const LineStore &rows() const;                 // the row-wise index, rebuilt when dropped
  LineStore &rows_to_update() { return rows_; }  // for writers, only while rows_ready()
  // The row counts for a writer to keep in step, or null when they are dropped.
  qrn_int32 *counts_to_update() { return counts_ready() ? rowlen.data() : nullptr; }
  void drop_rows();
  void drop_counts();  // and the row-wise index
  // True when a change of `changes` entries should drop the derived data
  // rather than update it.
  bool many(qrn_int64 changes) const { return changes > 64 && changes > nnz / 8; }
  // Rows line_of(k), k < num, replaced by the lines of `block` (one per row
  // written, in order, sorted, nothing within the tolerance): the rows become
  // the store and the columns go stale. The rows written must hold all of A's
  // entries (`all`), or the row-wise index must be at hand or buildable.
  template <class LineOf>
  void put_rows(qrn_int64 num, LineOf line_of, LineStore &&block, bool all);

  // Structure: rows appended (empty) or removed (newindex as for LineStore),
  // columns removed; the derived data follows when it is kept.
  void add_rows(qrn_int32 n);
  void drop_rows_at(const std::vector<qrn_int32> &newindex, qrn_int32 count);
  void drop_cols_at(const std::vector<qrn_int32> &newindex, qrn_int32 count);

  // f(lines) for the columns and for the row-wise index while it is held, as
  // they are (nothing is settled or rebuilt): for memory estimates.
  template <class F>
  void each_held(F f) const {
    std::lock_guard<std::mutex> lock(mutex_.m);
    f(cols_);
    if (rows_ready()) f(rows_);
  }

 private:
  const LineStore &settle() const;  // the columns rebuilt from the rows when stale
  void count_locked() const;
  void stale_cols();  // the rows are the store now
  mutable LineStore cols_;
  mutable LineStore rows_;
  mutable std::atomic<bool> current_{true};  // the columns are current
  mutable std::atomic<bool> ready_{false};
  mutable std::atomic<bool> counted_{true};
  mutable OwnMutex mutex_;
};

template <class LineOf>
void Matrix::put_rows(qrn_int64 num, LineOf line_of, LineStore &&block, bool all) {
  const qrn_int32 m = numrows();
  if (all && !rows_ready()) {
    // Nothing else is held: the block becomes the index, the other rows empty.
    LineStore r;
    r.start.resize(static_cast<size_t>(m), 0);
    r.len.resize(static_cast<size_t>(m), 0);
    r.cap.resize(static_cast<size_t>(m), 0);
    for (qrn_int64 k = 0; k < num; ++k) {
      const qrn_int32 i = line_of(k);
      r.start[i] = block.start[k];
      r.len[i] = block.len[k];
      r.cap[i] = block.cap[k];
    }
    r.idx.swap(block.idx);
    r.val.swap(block.val);
    r.live = block.live;
    r.room = block.room;
    std::fill(rowlen.begin(), rowlen.end(), 0);
    rows_ = std::move(r);
  } else {
    rows();  // built from the columns when dropped (they are current then)
    rows_.reserve_more(block.live);
    for (qrn_int64 k = 0; k < num; ++k) {
      const qrn_int32 i = line_of(k), n = block.len[k];
      rows_.resize_line(i, n, 0, false);
      if (n == 0) continue;
      std::memcpy(rows_.idx_of(i), block.idx_of(k), n * sizeof(qrn_int32));
      std::memcpy(rows_.val_of(i), block.val_of(k), n * sizeof(double));
    }
    rows_.tidy();
  }
  for (qrn_int64 k = 0; k < num; ++k) rowlen[line_of(k)] = rows_.len[line_of(k)];
  counted_.store(true, std::memory_order_release);
  ready_.store(true, std::memory_order_release);
  nnz = rows_.live;
  stale_cols();
}

struct Bound {
  qrn_int32 bk = QRN_BK_FREE;
  double bl = -inf;
  double bu = inf;
};

// Bounds of the constraints or of the variables: item k has key bk[k] and sides
// bl[k], bu[k] (a side that the key leaves open is -inf/+inf).
struct Bounds {
  Pod<qrn_int32> bk;
  Pod<double> bl, bu;
  size_t size() const { return bk.size(); }
  Bound operator[](size_t k) const { return Bound{bk[k], bl[k], bu[k]}; }
  void set(size_t k, const Bound &b) {
    bk[k] = b.bk;
    bl[k] = b.bl;
    bu[k] = b.bu;
  }
  void resize(size_t n) {
    bk.resize(n, QRN_BK_FREE);
    bl.resize(n, -inf);
    bu.resize(n, inf);
  }
};

// Terms of one symmetric matrix Q: its lower triangle (i >= j) as triplets
// subi/subj/val sorted by (i, j), no pair twice, no zero once settled. A
// single-term write that adds a pair goes to `fresh` and one that removes a
// pair leaves a zero in val; both are merged in by settle(), which the writer
// runs once they are many, so that each single-term write costs O(log n).
// Readers use each() (every term in order) or call settle() first and read the
// arrays.
struct QTerms {
  Pod<qrn_int32> subi, subj;
  Pod<double> val;
  std::map<std::pair<qrn_int32, qrn_int32>, double> fresh;  // pairs not in the arrays
  qrn_int64 count = 0;                                     // terms held
  qrn_int64 zeros = 0;                                     // removed terms still in the arrays

  qrn_int64 size() const { return count; }
  bool empty() const { return count == 0; }
  double get(qrn_int32 i, qrn_int32 j) const;  // i >= j
  void set(qrn_int32 i, qrn_int32 j, double v);  // i >= j; 0 removes
  void settle();
  void clear();
  // Variable indexes go through newvar (monotone); terms of removed variables go.
  void renumber(const std::vector<qrn_int32> &newvar);
  template <class F>
  void each(F f) const {  // f(i, j, value) for every term in (i, j) order
    auto it = fresh.begin();
    for (size_t k = 0; k < val.size(); ++k) {
      for (; it != fresh.end() && it->first < std::make_pair(subi[k], subj[k]); ++it)
        f(it->first.first, it->first.second, it->second);
      if (val[k] != 0.0) f(subi[k], subj[k], val[k]);
    }
    for (; it != fresh.end(); ++it) f(it->first.first, it->first.second, it->second);
  }
};

}  // namespace qrn
