// The storage behind a task's problem data (store.hpp): compressed lines with
// room to grow, the matrix with its derived row-wise index, and quadratic terms.
#include "store.hpp"

#include <algorithm>
#include <climits>
#include <numeric>

namespace qrn {

// ---- compressed lines -----------------------------------------------------------

void LineStore::add_lines(qrn_int32 n) {
  const size_t k = start.size();
  start.resize(k + n, static_cast<qrn_int64>(idx.size()));
  len.resize(k + n, 0);
  cap.resize(k + n, 0);
}

void LineStore::reserve_more(qrn_int64 n) {
  idx.reserve(idx.size() + static_cast<size_t>(n));
  val.reserve(val.size() + static_cast<size_t>(n));
}

void LineStore::resize_line(qrn_int32 k, qrn_int64 n, qrn_int64 keep, bool slack) {
  live += n - len[k];
  if (n > cap[k]) {
    qrn_int64 c = slack ? std::max<qrn_int64>(n + n / 2, 4) : n;
    c = std::min<qrn_int64>(c, INT32_MAX);
    const size_t at = idx.size();
    idx.resize_uninit(at + c);
    val.resize_uninit(at + c);
    if (keep > 0) {
      std::memcpy(idx.data() + at, idx.data() + start[k], keep * sizeof(qrn_int32));
      std::memcpy(val.data() + at, val.data() + start[k], keep * sizeof(double));
    }
    room += c - cap[k];
    start[k] = static_cast<qrn_int64>(at);
    cap[k] = static_cast<qrn_int32>(c);
  }
  len[k] = static_cast<qrn_int32>(n);
}

void LineStore::drop_lines(const std::vector<qrn_int32> &newindex, qrn_int32 count) {
  size_t w = 0;
  for (size_t k = 0; k < start.size(); ++k) {
    if (newindex[k] < 0) {
      live -= len[k];
      room -= cap[k];
      continue;
    }
    start[w] = start[k];
    len[w] = len[k];
    cap[w] = cap[k];
    ++w;
  }
  start.resize_uninit(count);
  len.resize_uninit(count);
  cap.resize_uninit(count);
  tidy();
}

void LineStore::renumber(const std::vector<qrn_int32> &newindex) {
  for (qrn_int32 k = 0; k < lines(); ++k) {
    qrn_int32 *ix = idx_of(k);
    double *v = val_of(k);
    qrn_int32 w = 0;
    for (qrn_int32 p = 0; p < len[k]; ++p) {
      const qrn_int32 to = newindex[ix[p]];
      if (to < 0) continue;
      ix[w] = to;
      v[w++] = v[p];
    }
    live -= len[k] - w;
    len[k] = w;
  }
}

void LineStore::tidy() {
  const auto garbage = static_cast<qrn_int64>(idx.size()) - room;
  if (garbage > room / 2 + 4096) compact();
}

void LineStore::compact() {
  const qrn_int32 n = lines();
  std::vector<qrn_int32> order(n);
  std::iota(order.begin(), order.end(), 0);
  auto by_start = [&](qrn_int32 a, qrn_int32 b) { return start[a] < start[b]; };
  if (!std::is_sorted(order.begin(), order.end(), by_start)) std::sort(order.begin(), order.end(), by_start);
  // Lines keep their order in the pool, so each moves down (or stays); room
  // far beyond a line's length is given up.
  qrn_int64 w = 0;
  for (qrn_int32 k : order) {
    const qrn_int64 c = cap[k] > 2 * static_cast<qrn_int64>(len[k]) + 8 ? len[k] : cap[k];
    if (start[k] != w && len[k] > 0) {
      std::memmove(idx.data() + w, idx.data() + start[k], len[k] * sizeof(qrn_int32));
      std::memmove(val.data() + w, val.data() + start[k], len[k] * sizeof(double));
    }
    start[k] = w;
    cap[k] = static_cast<qrn_int32>(c);
    w += c;
  }
  room = w;
  idx.resize_uninit(static_cast<size_t>(w));
  val.resize_uninit(static_cast<size_t>(w));
  if (idx.capacity() > 2 * idx.size() + 65536) {  // give back what the pool no longer needs
    Pod<qrn_int32> i2(idx);
    Pod<double> v2(val);
    idx.swap(i2);
    val.swap(v2);
  }
}

void LineStore::clear() {
  start.release();
  len.release();
  cap.release();
  idx.release();
  val.release();
  live = room = 0;
}

// ---- the matrix and its row-wise index ---------------------------------------------

Matrix::Matrix(const Matrix &o) : nnz(o.nnz), maxnnz(o.maxnnz), tol(o.tol) {
  std::lock_guard<std::mutex> lock(o.mutex_.m);
  cols_ = o.cols_;
  rowlen = o.rowlen;
  current_.store(o.cols_ready(), std::memory_order_release);
  counted_.store(o.counts_ready(), std::memory_order_release);
  if (o.rows_ready()) {
    rows_ = o.rows_;
    ready_.store(true, std::memory_order_release);
  }
}

Matrix &Matrix::operator=(const Matrix &o) {
  if (this == &o) return *this;
  Matrix copy(o);
  cols_ = std::move(copy.cols_);
  rowlen = std::move(copy.rowlen);
  nnz = copy.nnz;
  maxnnz = copy.maxnnz;
  tol = copy.tol;
  rows_ = std::move(copy.rows_);
  current_.store(copy.cols_ready(), std::memory_order_release);
  counted_.store(copy.counts_ready(), std::memory_order_release);
  ready_.store(copy.rows_ready(), std::memory_order_release);
  return *this;
}

void Matrix::set_cols(LineStore &&c) {
  ready_.store(false, std::memory_order_release);
  rows_.clear();
  counted_.store(false, std::memory_order_release);
  cols_ = std::move(c);
  current_.store(true, std::memory_order_release);
  nnz = cols_.live;
}

void Matrix::fit_cols(qrn_int32 n) { cols_.fit_lines(n); }

void Matrix::stale_cols() {
  const qrn_int32 n = cols_.lines();
  cols_.clear();
  cols_.add_lines(n);
  current_.store(false, std::memory_order_release);
}

// A counting transpose of the rows, as rows() does of the columns: every
// column gets exactly the room it needs and, the rows being visited in order,
// comes out sorted.
const LineStore &Matrix::settle() const {
  if (cols_ready()) return cols_;
  std::lock_guard<std::mutex> lock(mutex_.m);
  if (cols_ready()) return cols_;
  const qrn_int32 n = cols_.lines(), m = rows_.lines();
  LineStore c;
  c.start.resize_uninit(n);
  c.len.resize(n, 0);
  c.cap.resize_uninit(n);
  qrn_int32 *count = c.cap.data();
  std::fill(count, count + n, 0);
  for (qrn_int32 i = 0; i < m; ++i) {
    const qrn_int32 *ix = rows_.idx_of(i);
    for (qrn_int32 p = 0, l = rows_.len[i]; p < l; ++p) ++count[ix[p]];
  }
  qrn_int64 at = 0;
  for (qrn_int32 j = 0; j < n; ++j) {
    c.start[j] = at;
    at += count[j];
  }
  c.idx.resize_uninit(static_cast<size_t>(at));
  c.val.resize_uninit(static_cast<size_t>(at));
  qrn_int64 *next = c.start.data();  // advanced past each entry placed, then set back
  scatter_lines(n, at, 0, next, c.idx.data(), c.val.data(), false, [this, m](auto f) {
    for (qrn_int32 i = 0; i < m; ++i) {
      const qrn_int32 *ix = rows_.idx_of(i);
      const double *v = rows_.val_of(i);
      for (qrn_int32 p = 0, l = rows_.len[i]; p < l; ++p) f(i, ix[p], v[p]);
    }
  });
  for (qrn_int32 j = 0; j < n; ++j) {
    c.start[j] -= count[j];
    c.len[j] = count[j];
  }
  c.live = c.room = at;
  cols_ = std::move(c);
  current_.store(true, std::memory_order_release);
  return cols_;
}

void Matrix::drop_rows() {
  if (!rows_ready()) return;
  settle();
  ready_.store(false, std::memory_order_release);
  rows_.clear();
}

void Matrix::drop_counts() {
  drop_rows();
  counted_.store(false, std::memory_order_release);
}

// Counts are dropped only while the columns are current.
void Matrix::count_locked() const {
  qrn_int32 *count = rowlen.data();
  std::fill(rowlen.begin(), rowlen.end(), 0);
  for (qrn_int32 j = 0; j < cols_.lines(); ++j) {
    const qrn_int32 *ix = cols_.idx_of(j);
    for (qrn_int32 p = 0, n = cols_.len[j]; p < n; ++p) ++count[ix[p]];
  }
  counted_.store(true, std::memory_order_release);
}

const qrn_int32 *Matrix::row_counts() const {
  if (!counts_ready()) {
    std::lock_guard<std::mutex> lock(mutex_.m);
    if (!counts_ready()) count_locked();
  }
  return rowlen.data();
}

const LineStore &Matrix::rows() const {
  if (rows_ready()) return rows_;
  std::lock_guard<std::mutex> lock(mutex_.m);
  if (rows_ready()) return rows_;
  if (!counts_ready()) count_locked();
  // One pass over the columns: every row gets exactly the room it needs, and
  // as the columns are visited in order each row comes out sorted.
  LineStore r;
  const qrn_int32 m = numrows();
  r.start.resize_uninit(m);
  r.len.resize_uninit(m);
  r.cap.resize_uninit(m);
  qrn_int64 at = 0;
  for (qrn_int32 i = 0; i < m; ++i) {
    r.start[i] = at;
    r.len[i] = 0;
    r.cap[i] = rowlen[i];
    at += rowlen[i];
  }
  r.idx.resize_uninit(static_cast<size_t>(at));
  r.val.resize_uninit(static_cast<size_t>(at));
  for (qrn_int32 j = 0; j < cols_.lines(); ++j) {
    const qrn_int32 *ix = cols_.idx_of(j);
    const double *v = cols_.val_of(j);
    for (qrn_int32 p = 0, n = cols_.len[j]; p < n; ++p) {
      const qrn_int32 i = ix[p];
      const qrn_int64 pos = r.start[i] + r.len[i]++;
      r.idx[pos] = j;
      r.val[pos] = v[p];
    }
  }
  r.live = r.room = at;
  rows_ = std::move(r);
  ready_.store(true, std::memory_order_release);
  return rows_;
}

void Matrix::add_rows(qrn_int32 n) {
  if (counts_ready()) rowlen.resize(rowlen.size() + n, 0);
  else rowlen.resize_uninit(rowlen.size() + n);  // recounted when read
  if (rows_ready()) rows_.add_lines(n);
}

void Matrix::drop_rows_at(const std::vector<qrn_int32> &newindex, qrn_int32 count) {
  LineStore &cols = cols_to_change();
  cols.renumber(newindex);
  cols.tidy();
  nnz = cols.live;
  size_t w = 0;
  for (size_t k = 0; k < rowlen.size() && counts_ready(); ++k)
    if (newindex[k] >= 0) rowlen[w++] = rowlen[k];
  rowlen.resize_uninit(static_cast<size_t>(count));
  if (rows_ready()) rows_.drop_lines(newindex, count);
}

void Matrix::drop_cols_at(const std::vector<qrn_int32> &newindex, qrn_int32 count) {
  LineStore &cols = cols_to_change();
  if (counts_ready()) {
    for (qrn_int32 j = 0; j < cols.lines(); ++j) {
      if (newindex[j] >= 0) continue;
      const qrn_int32 *ix = cols.idx_of(j);
      for (qrn_int32 p = 0; p < cols.len[j]; ++p) --rowlen[ix[p]];
    }
  }
  cols.drop_lines(newindex, count);
  nnz = cols.live;
  if (rows_ready()) {
    rows_.renumber(newindex);
    rows_.tidy();
  }
}

// ---- quadratic terms ----------------------------------------------------------------

namespace {
// Position of (i, j) in the sorted arrays, or -1.
qrn_int64 find_pair(const QTerms &q, qrn_int32 i, qrn_int32 j) {
  qrn_int64 lo = 0, hi = static_cast<qrn_int64>(q.val.size());
  while (lo < hi) {
    qrn_int64 mid = (lo + hi) / 2;
    if (q.subi[mid] < i || (q.subi[mid] == i && q.subj[mid] < j)) lo = mid + 1;
    else hi = mid;
  }
  return lo < static_cast<qrn_int64>(q.val.size()) && q.subi[lo] == i && q.subj[lo] == j ? lo : -1;
}
}  // namespace

double QTerms::get(qrn_int32 i, qrn_int32 j) const {
  auto it = fresh.find({i, j});
  if (it != fresh.end()) return it->second;
  qrn_int64 k = find_pair(*this, i, j);
  return k < 0 ? 0.0 : val[k];
}

void QTerms::set(qrn_int32 i, qrn_int32 j, double v) {
  qrn_int64 k = find_pair(*this, i, j);
  if (k >= 0) {
    const bool was = val[k] != 0.0, is = v != 0.0;
    count += is - was;
    zeros += was - is;
    val[k] = v;
  } else if (v == 0.0) {
    count -= static_cast<qrn_int64>(fresh.erase({i, j}));
  } else {
    count += fresh.insert_or_assign({i, j}, v).second;
  }
  if (static_cast<qrn_int64>(fresh.size()) + zeros > 64 + static_cast<qrn_int64>(val.size()) / 4) settle();
}

void QTerms::settle() {
  if (fresh.empty() && zeros == 0) return;
  Pod<qrn_int32> i2, j2;
  Pod<double> v2;
  i2.reserve(static_cast<size_t>(count));
  j2.reserve(static_cast<size_t>(count));
  v2.reserve(static_cast<size_t>(count));
  each([&](qrn_int32 i, qrn_int32 j, double v) {
    i2.push_back(i);
    j2.push_back(j);
    v2.push_back(v);
  });
  subi.swap(i2);
  subj.swap(j2);
  val.swap(v2);
  fresh.clear();
  zeros = 0;
}

void QTerms::clear() {
  subi.release();
  subj.release();
  val.release();
  fresh.clear();
  count = zeros = 0;
}

void QTerms::renumber(const std::vector<qrn_int32> &newvar) {
  settle();
  size_t w = 0;
  for (size_t k = 0; k < val.size(); ++k) {
    const qrn_int32 i = newvar[subi[k]], j = newvar[subj[k]];
    if (i < 0 || j < 0) continue;
    subi[w] = i;
    subj[w] = j;
    val[w++] = val[k];
  }
  subi.resize_uninit(w);
  subj.resize_uninit(w);
  val.resize_uninit(w);
  count = static_cast<qrn_int64>(w);
}

}  // namespace qrn
