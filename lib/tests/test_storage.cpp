// What the storage of A makes delicate: columns and the derived row index kept
// in step through every writer, removal in the middle of a large model, the
// truncation tolerance on every path, growth of lines in the pool, capacity
// hints, quadratic terms written one at a time, and concurrent readers.
#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "fixture.hpp"

namespace {

using Dense = std::map<std::pair<int, int>, double>;  // (i, j) -> a_ij, no zeros

// Checks every row, every column and the count against ref: the columns
// first, or the rows first (which, right after a bulk row write, reads the
// rows before the columns are brought up to date).
// The model after removing the sorted indexes `gone` of rows (or columns):
// the others renumbered in order.
void remove_from(Dense &ref, bool rows, const std::vector<qrn_int32> &gone) {
  auto to = [&](int k) {
    auto it = std::lower_bound(gone.begin(), gone.end(), k);
    return it != gone.end() && *it == k ? -1 : k - static_cast<int>(it - gone.begin());
  };
  Dense after;
  for (auto &[ij, v] : ref) {
    const int i = rows ? to(ij.first) : ij.first, j = rows ? ij.second : to(ij.second);
    if (i >= 0 && j >= 0) after[{i, j}] = v;
  }
  ref.swap(after);
}

void same(qrn_task_t t, const Dense &ref, int m, int n, bool rows_first = false) {
  qrn_int64 nnz = -1;
  CHECK_EQ(QRN_getnumanz64(t, &nnz), QRN_RES_OK);
  CHECK_EQ(nnz, static_cast<qrn_int64>(ref.size()));
  std::vector<qrn_int32> sub(std::max(m, n) + 1);
  std::vector<double> val(std::max(m, n) + 1);
  std::vector<std::vector<std::pair<int, double>>> bycol(n);
  for (auto it = ref.begin(); it != ref.end(); ++it) bycol[it->first.second].emplace_back(it->first.first, it->second);
  for (int j = 0; j < n && !rows_first; ++j) {
    qrn_int32 nz = -1;
    CHECK_EQ(QRN_getacol(t, j, &nz, sub.data(), val.data()), QRN_RES_OK);
    std::vector<std::pair<int, double>> got;
    for (int p = 0; p < nz; ++p) got.emplace_back(sub[p], val[p]);
    CHECK_EQ(got, bycol[j]);
  }
  for (int i = 0; i < m; ++i) {
    qrn_int32 nz = -1, count = -1;
    CHECK_EQ(QRN_getarownumnz(t, i, &count), QRN_RES_OK);
    CHECK_EQ(QRN_getarow(t, i, &nz, sub.data(), val.data()), QRN_RES_OK);
    CHECK_EQ(nz, count);
    std::vector<std::pair<int, double>> got, want;
    for (int p = 0; p < nz; ++p) got.emplace_back(sub[p], val[p]);
    for (auto it = ref.lower_bound({i, 0}); it != ref.end() && it->first.first == i; ++it)
      want.emplace_back(it->first.second, it->second);
    CHECK_EQ(got, want);
  }
  for (int j = 0; j < n && rows_first; ++j) {
    qrn_int32 nz = -1;
    CHECK_EQ(QRN_getacol(t, j, &nz, sub.data(), val.data()), QRN_RES_OK);
    std::vector<std::pair<int, double>> got;
    for (int p = 0; p < nz; ++p) got.emplace_back(sub[p], val[p]);
    CHECK_EQ(got, bycol[j]);
  }
}

// Lines in compressed form from a dense map: rows (by_row) or columns.
struct Compressed {
  std::vector<qrn_int64> ptrb, ptre;
  std::vector<qrn_int32> sub;
  std::vector<double> val;
};

}  // namespace

TEST(storage_interleaved_writes_and_reads_both_ways) {
  const int m = 23, n = 31;
  Fixture f(m, n);
  qrn_task_t t = f.task;
  Dense ref;
  std::mt19937 rng(7);
  auto pick = [&](int k) { return static_cast<int>(rng() % static_cast<unsigned>(k)); };
  auto value = [&]() { return pick(5) == 0 ? 0.0 : static_cast<double>(pick(9) + 1) * (pick(2) ? 1 : -1); };
  for (int step = 0; step < 300; ++step) {
    const int op = pick(7);
    if (op == 0) {  // one entry
      int i = pick(m), j = pick(n);
      double v = value();
      CHECK_EQ(QRN_putaij(t, i, j, v), QRN_RES_OK);
      if (v == 0) ref.erase({i, j});
      else ref[{i, j}] = v;
    } else if (op == 1 || op == 2) {  // a few whole columns or rows, unsorted, some empty
      const bool cols = op == 1;
      const int lines = cols ? n : m, cross = cols ? m : n;
      std::vector<qrn_int32> list;
      for (int k = 0; k < lines; ++k)
        if (pick(4) == 0) list.push_back(k);
      std::shuffle(list.begin(), list.end(), rng);
      Compressed c;
      for (int line : list) {
        c.ptrb.push_back(static_cast<qrn_int64>(c.sub.size()));
        std::vector<int> idx;
        for (int k = 0; k < cross; ++k)
          if (pick(3) == 0) idx.push_back(k);
        std::shuffle(idx.begin(), idx.end(), rng);
        for (auto it = ref.begin(); it != ref.end();)
          it = (cols ? it->first.second : it->first.first) == line ? ref.erase(it) : std::next(it);
        for (int k : idx) {
          double v = value();
          c.sub.push_back(k);
          c.val.push_back(v);
          if (v != 0) ref[cols ? std::make_pair(k, line) : std::make_pair(line, k)] = v;
        }
        c.ptre.push_back(static_cast<qrn_int64>(c.sub.size()));
      }
      const auto num = static_cast<qrn_int32>(list.size());
      CHECK_EQ(cols ? QRN_putacollist64(t, num, list.data(), c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data())
                    : QRN_putarowlist64(t, num, list.data(), c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data()),
               QRN_RES_OK);
    } else if (op == 3) {  // triplets, with repeats (the last counts)
      std::vector<qrn_int32> si, sj;
      std::vector<double> sv;
      for (int k = pick(90); k > 0; --k) {
        si.push_back(pick(m));
        sj.push_back(pick(n));
        sv.push_back(value());
        if (sv.back() == 0) ref.erase({si.back(), sj.back()});
        else ref[{si.back(), sj.back()}] = sv.back();
      }
      CHECK_EQ(QRN_putaijlist64(t, static_cast<qrn_int64>(si.size()), si.data(), sj.data(), sv.data()), QRN_RES_OK);
    } else if (op == 4) {  // a row slice (sorted input)
      int first = pick(m), last = first + pick(m - first + 1);
      Compressed c;
      for (int i = first; i < last; ++i) {
        c.ptrb.push_back(static_cast<qrn_int64>(c.sub.size()));
        for (int j = 0; j < n; ++j) ref.erase({i, j});
        for (int j = 0; j < n; ++j)
          if (pick(5) == 0) {
            c.sub.push_back(j);
            c.val.push_back(value());
            if (c.val.back() != 0) ref[{i, j}] = c.val.back();
          }
        c.ptre.push_back(static_cast<qrn_int64>(c.sub.size()));
      }
      CHECK_EQ(QRN_putarowslice64(t, first, last, c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data()),
               QRN_RES_OK);
    } else if (op == 5) {  // read one row: keeps the row index around for the next writes
      int i = pick(m);
      qrn_int32 nz = -1;
      CHECK_EQ(QRN_getarow(t, i, &nz, nullptr, nullptr), QRN_RES_OK);
      qrn_int32 want = 0;
      for (auto it = ref.lower_bound({i, 0}); it != ref.end() && it->first.first == i; ++it) ++want;
      CHECK_EQ(nz, want);
    } else {  // one entry read back
      int i = pick(m), j = pick(n);
      double v = -1;
      CHECK_EQ(QRN_getaij(t, i, j, &v), QRN_RES_OK);
      auto it = ref.find({i, j});
      CHECK_EQ(v, it == ref.end() ? 0.0 : it->second);
    }
    if (step % 25 == 0) same(t, ref, m, n);
  }
  same(t, ref, m, n);
}

TEST(storage_removal_in_the_middle_of_a_large_model) {
  const int m = 3000, n = 6000, per = 7;
  Fixture f;
  qrn_task_t t = f.task;
  std::vector<qrn_int64> pb(n), pe(n);
  std::vector<qrn_int32> sub;
  std::vector<double> val;
  Dense ref;
  for (int j = 0; j < n; ++j) {
    pb[j] = static_cast<qrn_int64>(sub.size());
    for (int k = 0; k < per; ++k) {
      int i = (j * 13 + k * (m / per)) % m;
      sub.push_back(i);
      val.push_back(j + k + 1.0);
      ref[{i, j}] = j + k + 1.0;
    }
    pe[j] = static_cast<qrn_int64>(sub.size());
  }
  CHECK_EQ(QRN_inputdata64(t, 0, 0, m, n, nullptr, 0, pb.data(), pe.data(), sub.data(), val.data(), nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr),
           QRN_RES_OK);
  qrn_int32 nz = -1;
  CHECK_EQ(QRN_getarow(t, 5, &nz, nullptr, nullptr), QRN_RES_OK);  // the row index exists before the removal
  CHECK_EQ(QRN_putconname(t, 2000, "kept"), QRN_RES_OK);
  std::vector<qrn_int32> cons, vars;
  for (int i = 1000; i < 1400; ++i) cons.push_back(i);
  for (int j = 2500; j < 4000; j += 3) vars.push_back(j);
  CHECK_EQ(QRN_removecons(t, static_cast<qrn_int32>(cons.size()), cons.data()), QRN_RES_OK);
  CHECK_EQ(QRN_removevars(t, static_cast<qrn_int32>(vars.size()), vars.data()), QRN_RES_OK);
  auto newcon = [&](int i) { return i < 1000 ? i : i < 1400 ? -1 : i - 400; };
  auto newvar = [&](int j) {
    if (j < 2500) return j;
    if (j < 4000) return (j - 2500) % 3 == 0 ? -1 : j - (j - 2500) / 3 - 1;
    return j - 500;
  };
  Dense after;
  for (auto &[ij, v] : ref)
    if (newcon(ij.first) >= 0 && newvar(ij.second) >= 0) after[{newcon(ij.first), newvar(ij.second)}] = v;
  same(t, after, m - 400, n - 500);
  qrn_int32 found = 0, index = -1;
  CHECK_EQ(QRN_getconnameindex(t, "kept", &found, &index), QRN_RES_OK);
  CHECK_EQ(index, 1600);
}

// Bulk writes drop the row counts, to be recounted from the columns when a row
// count is read. Appends, removals and single entries in between must not
// disturb the recount, and once recounted the counts must follow every writer.
TEST(storage_row_counts_recounted_after_bulk_writes_follow_later_changes) {
  int m = 40, n = 60;
  Fixture f;
  qrn_task_t t = f.task;
  Dense ref;
  auto put = [&](int i, int j, double v) {
    CHECK_EQ(QRN_putaij(t, i, j, v), QRN_RES_OK);
    if (v == 0) ref.erase({i, j});
    else ref[{i, j}] = v;
  };
  auto remove = [&](bool rows, std::vector<qrn_int32> gone) {  // gone sorted
    const auto num = static_cast<qrn_int32>(gone.size());
    CHECK_EQ(rows ? QRN_removecons(t, num, gone.data()) : QRN_removevars(t, num, gone.data()), QRN_RES_OK);
    remove_from(ref, rows, gone);
    (rows ? m : n) -= num;
  };
  // Columns of the whole matrix, (7j + 11k) mod m for k < 5, as compressed lines.
  auto columns = [&](double shift) {
    Compressed c;
    ref.clear();
    for (int j = 0; j < n; ++j) {
      c.ptrb.push_back(static_cast<qrn_int64>(c.sub.size()));
      std::vector<qrn_int32> rows;
      for (int k = 0; k < 5; ++k) rows.push_back((7 * j + 11 * k) % m);
      std::sort(rows.begin(), rows.end());
      rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
      for (qrn_int32 i : rows) c.sub.push_back(i), c.val.push_back(j + i + shift), ref[{i, j}] = j + i + shift;
      c.ptre.push_back(static_cast<qrn_int64>(c.sub.size()));
    }
    return c;
  };
  Compressed c = columns(1.0);
  CHECK_EQ(QRN_inputdata64(t, 0, 0, m, n, nullptr, 0, c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data(),
                           nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
           QRN_RES_OK);
  // No row read yet: the counts are not kept through these.
  CHECK_EQ(QRN_appendcons(t, 3), QRN_RES_OK);
  m += 3;
  put(m - 2, 4, 2.5);
  put(ref.begin()->first.first, ref.begin()->first.second, 0.0);
  remove(true, {5, 17});
  remove(false, {0, 33});
  same(t, ref, m, n);
  // Counted now: every writer keeps them in step.
  const qrn_int32 rows2[] = {0, 9, m - 1};
  const double vals2[] = {1.0, 2.0, 3.0};
  CHECK_EQ(QRN_putacol(t, 2, 3, rows2, vals2), QRN_RES_OK);
  for (auto it = ref.begin(); it != ref.end();) it = it->first.second == 2 ? ref.erase(it) : std::next(it);
  for (int k = 0; k < 3; ++k) ref[{rows2[k], 2}] = vals2[k];
  const qrn_int32 cols3[] = {1, 2, n - 1};
  CHECK_EQ(QRN_putarow(t, 3, 3, cols3, vals2), QRN_RES_OK);
  for (auto it = ref.begin(); it != ref.end();) it = it->first.first == 3 ? ref.erase(it) : std::next(it);
  for (int k = 0; k < 3; ++k) ref[{3, cols3[k]}] = vals2[k];
  remove(false, {10});
  remove(true, {0});
  CHECK_EQ(QRN_appendcons(t, 1), QRN_RES_OK);
  m += 1;
  put(m - 1, 0, -4.0);
  same(t, ref, m, n);
  // A bulk column write drops them again; a slice count comes first.
  c = columns(0.5);
  CHECK_EQ(QRN_putacolslice64(t, 0, n, c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data()), QRN_RES_OK);
  qrn_int64 total = -1;
  CHECK_EQ(QRN_getarowslicenumnz64(t, 0, m, &total), QRN_RES_OK);
  CHECK_EQ(total, static_cast<qrn_int64>(ref.size()));
  same(t, ref, m, n);
}

TEST(storage_truncation_on_every_path) {
  Fixture f(3, 3);
  qrn_task_t t = f.task;
  CHECK_EQ(QRN_putatruncatetol(t, 0.5), QRN_RES_OK);
  const qrn_int64 b[] = {0, 2, 3}, e[] = {2, 3, 5};
  const qrn_int32 sub[] = {0, 2, 1, 0, 2};
  const double val[] = {0.5, 2, -0.25, 3, -4};
  // The same input as rows, as columns and as triplets keeps the same entries.
  CHECK_EQ(QRN_putarowslice64(t, 0, 3, b, e, sub, val), QRN_RES_OK);
  Dense rows{{{0, 2}, 2}, {{2, 0}, 3}, {{2, 2}, -4}};
  same(t, rows, 3, 3);
  CHECK_EQ(QRN_putacolslice64(t, 0, 3, b, e, sub, val), QRN_RES_OK);
  Dense cols{{{2, 0}, 2}, {{0, 2}, 3}, {{2, 2}, -4}};
  same(t, cols, 3, 3);
  const qrn_int32 ti[] = {1, 1, 0}, tj[] = {1, 0, 2};
  const double tv[] = {7, 0.125, -0.5};  // the last removes (0, 2)
  CHECK_EQ(QRN_putaijlist64(t, 3, ti, tj, tv), QRN_RES_OK);
  cols.erase({0, 2});
  cols[{1, 1}] = 7;
  same(t, cols, 3, 3);
  // Into an empty matrix: values within the tolerance are dropped on the fast path too.
  Fixture g(3, 3);
  CHECK_EQ(QRN_putatruncatetol(g.task, 0.5), QRN_RES_OK);
  CHECK_EQ(QRN_putarowslice64(g.task, 0, 3, b, e, sub, val), QRN_RES_OK);
  same(g.task, rows, 3, 3);
}

TEST(storage_lines_grow_move_and_shrink) {
  const int m = 400, n = 50;
  Fixture f(m, n);
  qrn_task_t t = f.task;
  Dense ref;
  // Column 3 grows one entry at a time from its end and its start, moving in the pool.
  for (int k = 0; k < 150; ++k) {
    int i = k % 2 ? 200 + k : 199 - k;
    CHECK_EQ(QRN_putaij(t, i, 3, k + 1.0), QRN_RES_OK);
    ref[{i, 3}] = k + 1.0;
  }
  same(t, ref, m, n);
  // Replacing a long column by short ones and back leaves garbage that is reclaimed.
  std::vector<qrn_int32> all(m);
  std::vector<double> ones(m, 1.0);
  for (int i = 0; i < m; ++i) all[i] = i;
  for (int round = 0; round < 40; ++round) {
    const int j = round % n, len = round % 2 ? m : 3;
    CHECK_EQ(QRN_putacol(t, j, len, all.data(), ones.data()), QRN_RES_OK);
    for (int i = 0; i < m; ++i) ref.erase({i, j});
    for (int i = 0; i < len; ++i) ref[{i, j}] = 1.0;
  }
  same(t, ref, m, n);
  // A copy of the task has the same matrix and goes its own way.
  qrn_task_t copy = nullptr;
  CHECK_EQ(QRN_clonetask(t, &copy), QRN_RES_OK);
  CHECK_EQ(QRN_putaij(copy, 0, 0, 9), QRN_RES_OK);
  same(t, ref, m, n);
  Dense changed = ref;
  changed[{0, 0}] = 9;
  same(copy, changed, m, n);
  QRN_deletetask(&copy);
  CHECK_EQ(QRN_appendcons(t, 2), QRN_RES_OK);
  CHECK_EQ(QRN_putaij(t, m + 1, 4, 2), QRN_RES_OK);
  ref[{m + 1, 4}] = 2;
  same(t, ref, m + 2, n);
}

TEST(storage_capacities_are_hints) {
  Fixture f(2, 3);
  qrn_task_t t = f.task;
  QRN_putaij(f.task, 0, 0, 1);
  const qrn_int32 big = 2147483647;
  CHECK_EQ(QRN_putmaxnumcon(t, big), QRN_RES_OK);
  CHECK_EQ(QRN_putmaxnumvar(t, big), QRN_RES_OK);
  CHECK_EQ(QRN_putmaxnumcone(t, big), QRN_RES_OK);
  CHECK_EQ(QRN_putmaxnumanz(t, big), QRN_RES_OK);
  CHECK_EQ(QRN_putmaxnumqnz(t, big), QRN_RES_OK);
  qrn_int32 c = 0, v = 0, k = 0;
  qrn_int64 anz = 0, qnz = 0;
  QRN_getmaxnumcon(t, &c);
  QRN_getmaxnumvar(t, &v);
  QRN_getmaxnumcone(t, &k);
  QRN_getmaxnumanz64(t, &anz);
  QRN_getmaxnumqnz64(t, &qnz);
  CHECK_EQ(std::make_tuple(c, v, k, anz, qnz), std::make_tuple(big, big, big, qrn_int64{big}, qrn_int64{big}));
  // Validation is unchanged: negative, or below what the task holds.
  CHECK_EQ(QRN_putmaxnumcon(t, -1), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(QRN_putmaxnumvar(t, 2), QRN_RES_ERR_MAX_CAPACITY);
  CHECK_EQ(QRN_putmaxnumanz(t, 0), QRN_RES_ERR_MAX_CAPACITY);
  // The task still grows past what it holds.
  CHECK_EQ(QRN_appendvars(t, 1000), QRN_RES_OK);
  CHECK_EQ(QRN_putaij(t, 1, 1002, 5), QRN_RES_OK);
  same(t, Dense{{{0, 0}, 1}, {{1, 1002}, 5}}, 2, 1003);
}

TEST(storage_single_quadratic_terms_in_bulk) {
  const int n = 300;
  Fixture f(1, n);
  qrn_task_t t = f.task;
  std::map<std::pair<int, int>, double> ref;
  std::mt19937 rng(3);
  for (int k = 0; k < 5000; ++k) {
    int i = static_cast<int>(rng() % n), j = static_cast<int>(rng() % n);
    if (j > i) std::swap(i, j);
    double v = rng() % 4 == 0 ? 0.0 : static_cast<double>(rng() % 7) + 1;
    CHECK_EQ(QRN_putqobjij(t, i, j, v), QRN_RES_OK);
    if (v == 0) ref.erase({i, j});
    else ref[{i, j}] = v;
    if (k % 997 == 0) {
      double got = -1;
      CHECK_EQ(QRN_getqobjij(t, j, i, &got), QRN_RES_OK);
      CHECK_EQ(got, v);
    }
  }
  qrn_int64 num = -1;
  CHECK_EQ(QRN_getnumqobjnz64(t, &num), QRN_RES_OK);
  CHECK_EQ(num, static_cast<qrn_int64>(ref.size()));
  std::vector<qrn_int32> qi(num), qj(num);
  std::vector<double> qv(num);
  CHECK_EQ(QRN_getqobj64(t, num, &num, qi.data(), qj.data(), qv.data()), QRN_RES_OK);
  std::vector<std::tuple<int, int, double>> got, want;
  for (qrn_int64 k = 0; k < num; ++k) got.emplace_back(qi[k], qj[k], qv[k]);
  for (auto &[ij, v] : ref) want.emplace_back(ij.first, ij.second, v);
  CHECK_EQ(got, want);
  // Removing a variable drops its terms and renumbers the others.
  const qrn_int32 gone[] = {10};
  CHECK_EQ(QRN_removevars(t, 1, gone), QRN_RES_OK);
  CHECK_EQ(QRN_getnumqobjnz64(t, &num), QRN_RES_OK);
  qrn_int64 left = 0;
  for (auto &[ij, v] : ref) left += ij.first != 10 && ij.second != 10;
  CHECK_EQ(num, left);
}

TEST(storage_concurrent_readers_rebuild_the_row_index_once) {
  const int m = 500, n = 800;
  Fixture f(m, n);
  qrn_task_t t = f.task;
  std::vector<qrn_int64> pb(n), pe(n);
  std::vector<qrn_int32> sub;
  std::vector<double> val;
  for (int j = 0; j < n; ++j) {
    pb[j] = static_cast<qrn_int64>(sub.size());
    for (int i = j % 5; i < m; i += 37) sub.push_back(i), val.push_back(j + 1);
    pe[j] = static_cast<qrn_int64>(sub.size());
  }
  for (int round = 0; round < 5; ++round) {
    CHECK_EQ(QRN_putacolslice64(t, 0, n, pb.data(), pe.data(), sub.data(), val.data()), QRN_RES_OK);
    std::vector<qrn_int32> counts(4, -1);
    std::vector<std::thread> readers;
    for (int r = 0; r < 4; ++r)
      readers.emplace_back([&, r] {
        std::vector<qrn_int32> s(n);
        std::vector<double> v(n);
        QRN_getarow(t, 37 * r + round, &counts[r], s.data(), v.data());
      });
    for (auto &th : readers) th.join();
    for (int r = 0; r < 4; ++r) {
      qrn_int32 want = 0;
      for (int j = 0; j < n; ++j) want += (37 * r + round - j % 5) >= 0 && (37 * r + round - j % 5) % 37 == 0;
      CHECK_EQ(counts[r], want);
    }
  }
}

TEST(storage_bulk_rows_and_triplets_into_a_large_matrix) {
  // Enough entries for the grouped transpose; column 7 holds entries already
  // (in two rows that are not written) and receives none, so the bulk path
  // must leave it, and the counts of its rows, alone.
  const int m = 1500, n = 3000, per = 100;
  Compressed rows;
  Dense ref;
  std::vector<qrn_int32> ti, tj;
  std::vector<double> tv;
  for (int i = 0; i < m; ++i) {
    rows.ptrb.push_back(static_cast<qrn_int64>(rows.sub.size()));
    for (int k = 0; k < per; ++k) {
      const int j = (i * 7 + k * 29) % n;
      if (j == 7) continue;
      rows.sub.push_back(j);
      rows.val.push_back(i - k - 0.5);
    }
    rows.ptre.push_back(static_cast<qrn_int64>(rows.sub.size()));
    std::sort(rows.sub.begin() + rows.ptrb[i], rows.sub.end());
  }
  const qrn_int32 c7[] = {m, m + 1};
  const double v7[] = {1.5, -2.5};
  auto fresh = [&](Fixture &f) { CHECK_EQ(QRN_putacol(f.task, 7, 2, c7, v7), QRN_RES_OK); };
  ref[{m, 7}] = 1.5;
  ref[{m + 1, 7}] = -2.5;
  for (int i = 0; i < m; ++i)
    for (qrn_int64 p = rows.ptrb[i]; p < rows.ptre[i]; ++p) {
      ref[{i, rows.sub[p]}] = rows.val[p];
      ti.push_back(i), tj.push_back(rows.sub[p]), tv.push_back(rows.val[p]);
    }
  {  // rows in order
    Fixture f(m + 2, n);
    fresh(f);
    CHECK_EQ(QRN_putarowslice64(f.task, 0, m, rows.ptrb.data(), rows.ptre.data(), rows.sub.data(), rows.val.data()),
             QRN_RES_OK);
    same(f.task, ref, m + 2, n);
  }
  {  // rows backwards: columns come out of order and are sorted
    Fixture f(m + 2, n);
    fresh(f);
    std::vector<qrn_int32> sub(m);
    std::vector<qrn_int64> b(rows.ptrb.rbegin(), rows.ptrb.rend()), e(rows.ptre.rbegin(), rows.ptre.rend());
    for (int k = 0; k < m; ++k) sub[k] = m - 1 - k;
    CHECK_EQ(QRN_putarowlist64(f.task, m, sub.data(), b.data(), e.data(), rows.sub.data(), rows.val.data()),
             QRN_RES_OK);
    same(f.task, ref, m + 2, n);
  }
  {  // shuffled triplets, one entry given twice (the last counts)
    Fixture f(m + 2, n);
    fresh(f);
    std::mt19937 rng(5);
    std::vector<size_t> order(ti.size());
    for (size_t k = 0; k < order.size(); ++k) order[k] = k;
    std::shuffle(order.begin(), order.end(), rng);
    std::vector<qrn_int32> si, sj;
    std::vector<double> sv;
    for (size_t k : order) si.push_back(ti[k]), sj.push_back(tj[k]), sv.push_back(tv[k]);
    si.push_back(ti[10]), sj.push_back(tj[10]), sv.push_back(42.0);
    ref[{ti[10], tj[10]}] = 42.0;
    CHECK_EQ(QRN_putaijlist64(f.task, static_cast<qrn_int64>(si.size()), si.data(), sj.data(), sv.data()),
             QRN_RES_OK);
    same(f.task, ref, m + 2, n);
  }
}

TEST(storage_inputdata_resizes_both_ways_and_checks_as_it_copies) {
  Fixture f(5, 2);
  qrn_task_t t = f.task;
  CHECK_EQ(QRN_putaij(t, 4, 1, 9), QRN_RES_OK);
  CHECK_EQ(QRN_putatruncatetol(t, 0.5), QRN_RES_OK);
  // Fewer constraints, more variables; column 0 out of order with an entry within the tolerance.
  const qrn_int64 b1[] = {0, 3, 3, 3}, e1[] = {3, 3, 3, 4};
  const qrn_int32 s1[] = {2, 0, 1, 0};
  const double v1[] = {1, 0.25, -2, 3};
  const qrn_int32 bkc[] = {QRN_BK_FREE, QRN_BK_FREE, QRN_BK_UPPER};
  const double buc[] = {0, 0, 7};
  const double c1[] = {1, 2, 3, 4};
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 3, 4, c1, 0, b1, e1, s1, v1, bkc, nullptr, buc, nullptr, nullptr, nullptr),
           QRN_RES_OK);
  const Dense first{{{1, 0}, -2}, {{2, 0}, 1}, {{0, 3}, 3}};
  same(t, first, 3, 4);
  qrn_int32 bk = -1;
  double bl = 0, bu = 0, cj = 0;
  CHECK_EQ(QRN_getconbound(t, 2, &bk, &bl, &bu), QRN_RES_OK);
  CHECK_EQ(bk, QRN_BK_UPPER);
  CHECK_EQ(bu, 7.0);
  CHECK_EQ(QRN_getcj(t, 3, &cj), QRN_RES_OK);
  CHECK_EQ(cj, 4.0);
  // A repeated row is refused even when one of its entries is within the tolerance.
  const qrn_int64 b2[] = {0}, e2[] = {3};
  const qrn_int32 s2[] = {1, 0, 1};
  const double v2[] = {2, 3, 0.1};
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 6, 1, nullptr, 0, b2, e2, s2, v2, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr),
           QRN_RES_ERR_DUP_INDEX);
  same(t, first, 3, 4);
  // More constraints, fewer variables.
  const qrn_int64 e3[] = {2};
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 6, 1, nullptr, 0, b2, e3, s2 + 1, v2 + 1, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr),
           QRN_RES_OK);
  same(t, Dense{{{0, 0}, 3}}, 6, 1);
  CHECK_EQ(QRN_getconbound(t, 5, &bk, &bl, &bu), QRN_RES_OK);
  CHECK_EQ(bk, QRN_BK_FREE);
}

// A bulk row write leaves the columns to be rebuilt from the rows by the first
// access that needs them. Every kind of change in between, and reads in
// either orientation first (or none) after each, against a dense model.
TEST(storage_bulk_rows_deferred_through_every_kind_of_change) {
  int m = 30, n = 40;
  Fixture f(m, n);
  qrn_task_t t = f.task;
  Dense ref;
  std::mt19937 rng(11);
  auto pick = [&](int k) { return static_cast<int>(rng() % static_cast<unsigned>(k)); };
  auto value = [&]() { return pick(6) == 0 ? 0.0 : static_cast<double>(pick(9) + 1) * (pick(2) ? 1 : -1); };
  auto remap = [&](bool rows, std::vector<qrn_int32> gone) {  // gone sorted
    remove_from(ref, rows, gone);
    (rows ? m : n) -= static_cast<int>(gone.size());
  };
  for (int step = 0; step < 400; ++step) {
    const int op = pick(9);
    if (op <= 2) {  // rows given in bulk: all of them, or a list of some, unsorted; op 2 fails at the end
      std::vector<qrn_int32> list;
      const bool one = op == 1 && pick(3) == 0;  // a single row: too few entries to go aside
      for (int i = 0; i < m; ++i)
        if (op == 0 || (one ? i == m / 2 : pick(2) == 0)) list.push_back(i);
      if (op != 0) std::shuffle(list.begin(), list.end(), rng);
      Dense want = ref;
      Compressed c;
      for (int i : list) {
        for (int j = 0; j < n; ++j) want.erase({i, j});
        c.ptrb.push_back(static_cast<qrn_int64>(c.sub.size()));
        std::vector<int> cols;
        for (int j = 0; j < n; ++j)
          if (pick(3) == 0) cols.push_back(j);
        if (op != 0) std::shuffle(cols.begin(), cols.end(), rng);
        for (int j : cols) {
          c.sub.push_back(j), c.val.push_back(value());
          if (c.val.back() != 0) want[{i, j}] = c.val.back();
        }
        c.ptre.push_back(static_cast<qrn_int64>(c.sub.size()));
      }
      if (op == 2 && !c.sub.empty()) {  // out of range, or a repeat in the last row
        const bool repeat = pick(2) && c.ptre.back() - c.ptrb.back() >= 2;
        c.sub.back() = repeat ? c.sub[c.ptrb.back()] : n;
      }
      const auto num = static_cast<qrn_int32>(list.size());
      const qrn_rescode r =
          op == 0 ? QRN_putarowslice64(t, 0, m, c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data())
                  : QRN_putarowlist64(t, num, list.data(), c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data());
      if (op == 2 && !c.sub.empty()) CHECK(r == QRN_RES_ERR_INDEX_VAR || r == QRN_RES_ERR_DUP_INDEX);
      else CHECK_EQ(r, QRN_RES_OK), ref.swap(want);
    } else if (op == 3) {  // a whole column
      const int j = pick(n);
      std::vector<qrn_int32> rows;
      std::vector<double> vals;
      for (auto it = ref.begin(); it != ref.end();) it = it->first.second == j ? ref.erase(it) : std::next(it);
      for (int i = 0; i < m; ++i)
        if (pick(4) == 0) rows.push_back(i), vals.push_back(value());
      for (size_t k = 0; k < rows.size(); ++k)
        if (vals[k] != 0) ref[{rows[k], j}] = vals[k];
      CHECK_EQ(QRN_putacol(t, j, static_cast<qrn_int32>(rows.size()), rows.data(), vals.data()), QRN_RES_OK);
    } else if (op == 4) {  // one entry
      const int i = pick(m), j = pick(n);
      const double v = value();
      CHECK_EQ(QRN_putaij(t, i, j, v), QRN_RES_OK);
      if (v == 0) ref.erase({i, j});
      else ref[{i, j}] = v;
    } else if (op == 5 || op == 6) {  // removal of a few rows or columns
      const bool rows = op == 5;
      std::vector<qrn_int32> gone;
      for (int k = 0; k < (rows ? m : n); ++k)
        if (pick(10) == 0) gone.push_back(k);
      const auto num = static_cast<qrn_int32>(gone.size());
      CHECK_EQ(rows ? QRN_removecons(t, num, gone.data()) : QRN_removevars(t, num, gone.data()), QRN_RES_OK);
      remap(rows, gone);
    } else if (op == 7) {  // appends, back to a working size
      const int dm = std::max(0, 30 - m) + pick(3), dn = std::max(0, 40 - n) + pick(3);
      CHECK_EQ(QRN_appendcons(t, dm), QRN_RES_OK);
      CHECK_EQ(QRN_appendvars(t, dn), QRN_RES_OK);
      m += dm, n += dn;
    } else {  // counts
      qrn_int64 nnz = -1, colnz = -1;
      CHECK_EQ(QRN_getnumanz64(t, &nnz), QRN_RES_OK);
      CHECK_EQ(nnz, static_cast<qrn_int64>(ref.size()));
      CHECK_EQ(QRN_getacolslicenumnz64(t, 0, n, &colnz), QRN_RES_OK);
      CHECK_EQ(colnz, nnz);
    }
    const int look = pick(3);  // no read: the next change meets the matrix as the last one left it
    if (look > 0) same(t, ref, m, n, look == 1);
  }
  same(t, ref, m, n, true);
}

// Right after a bulk row write several threads read columns and rows at once:
// the columns are brought up to date once, and all see the same matrix.
TEST(storage_concurrent_readers_after_a_bulk_row_write) {
  const int m = 400, n = 700;
  Fixture f(m, n);
  qrn_task_t t = f.task;
  for (int round = 0; round < 6; ++round) {
    Compressed c;
    for (int i = 0; i < m; ++i) {
      c.ptrb.push_back(static_cast<qrn_int64>(c.sub.size()));
      for (int j = (i + round) % 7; j < n; j += 7) c.sub.push_back(j), c.val.push_back(i - j + round + 0.5);
      c.ptre.push_back(static_cast<qrn_int64>(c.sub.size()));
    }
    CHECK_EQ(QRN_putarowslice64(t, 0, m, c.ptrb.data(), c.ptre.data(), c.sub.data(), c.val.data()), QRN_RES_OK);
    const qrn_int64 nnz = static_cast<qrn_int64>(c.sub.size());
    std::vector<std::vector<qrn_int32>> subs(4, std::vector<qrn_int32>(nnz));
    std::vector<std::vector<double>> vals(4, std::vector<double>(nnz));
    std::vector<qrn_rescode> res(4, QRN_RES_ERR_ARGUMENT);
    std::vector<std::thread> readers;
    for (int r = 0; r < 4; ++r)
      readers.emplace_back([&, r] {
        std::vector<qrn_int64> pb(n), pe(n);
        if (r == 3) {  // one reader takes a row first
          qrn_int32 nz = -1;
          QRN_getarow(t, r, &nz, subs[r].data(), vals[r].data());
        }
        res[r] = QRN_getacolslice64(t, 0, n, nnz, pb.data(), pe.data(), subs[r].data(), vals[r].data());
      });
    for (auto &th : readers) th.join();
    for (int r = 0; r < 4; ++r) {
      CHECK_EQ(res[r], QRN_RES_OK);
      CHECK(subs[r] == subs[0] && vals[r] == vals[0]);
    }
    // column j holds rows i with (i + round) % 7 == j % 7, in order
    qrn_int64 pos = 0;
    bool right = true;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < m; ++i)
        if ((i + round) % 7 == j % 7) right &= subs[0][pos] == i && vals[0][pos] == i - j + round + 0.5, ++pos;
    CHECK(right && pos == nnz);
  }
}
