// How a task keeps its problem data: flat arrays that bulk writers fill at the
// speed of memory and that readers (and the optimizer) read without conversion.
//
//   Matrix   the constraint matrix A: by column (always current) in one pool of
//            compressed lines with room to grow; the count of entries of every
//            row and a row-wise index derived from the columns when a row is
//            read (see Matrix below for when they are rebuilt).
//   Bounds   key, lower and upper side of each constraint or variable, one
//            array each.
//   QTerms   the terms of one symmetric quadratic matrix as sorted triplets.
#pragma once

#include "quarn.h"

#include "memory.hpp"

#include <atomic>
#include <cmath>
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

// The constraint matrix. Columns are the primary store; the rest is derived
// from them and rebuilt when a reader needs it, in one pass, once, under a
// lock, so concurrent readers are safe:
//   - the count of entries of each row (rowlen: one per row at all times, its
//     values current while counts_ready());
//   - the row-wise index (rows(): line i holds row i, entries indexed by column).
// Writers keep both in step while they change few entries and drop them when
// they change many (more than an eighth of A): the index with the counts, or
// the index alone. The index is never kept without the counts. nnz always
// equals cols.live.
struct Matrix {
  LineStore cols;
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

  // Structure: rows appended (empty) or removed (newindex as for LineStore),
  // columns removed; the derived data follows when it is kept.
  void add_rows(qrn_int32 n);
  void drop_rows_at(const std::vector<qrn_int32> &newindex, qrn_int32 count);
  void drop_cols_at(const std::vector<qrn_int32> &newindex, qrn_int32 count);

 private:
  void count_locked() const;
  mutable LineStore rows_;
  mutable std::atomic<bool> ready_{false};
  mutable std::atomic<bool> counted_{true};
  mutable OwnMutex mutex_;
};

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
