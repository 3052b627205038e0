// The constraint matrix, inputdata64 and the text writer through the C interface.
#include <cmath>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "fixture.hpp"

namespace {

using Entries = std::vector<std::pair<int, double>>;
using Trips = std::vector<std::tuple<int, int, double>>;

Entries read_line(qrn_task_t t, int k, bool col) {
  qrn_int32 nz = -1;
  CHECK_EQ(col ? QRN_getacolnumnz(t, k, &nz) : QRN_getarownumnz(t, k, &nz), QRN_RES_OK);
  std::vector<qrn_int32> sub(nz + 1, -7);
  std::vector<double> val(nz + 1, -7);
  qrn_int32 again = -1;
  CHECK_EQ(col ? QRN_getacol(t, k, &again, sub.data(), val.data()) : QRN_getarow(t, k, &again, sub.data(), val.data()),
           QRN_RES_OK);
  CHECK_EQ(again, nz);
  CHECK_EQ(sub[nz], -7);  // nothing past the count
  Entries out;
  for (int p = 0; p < nz; ++p) out.emplace_back(sub[p], val[p]);
  return out;
}
Entries col(qrn_task_t t, int j) { return read_line(t, j, true); }
Entries row(qrn_task_t t, int i) { return read_line(t, i, false); }

qrn_int64 nnz(qrn_task_t t) {
  qrn_int64 n = -1;
  CHECK_EQ(QRN_getnumanz64(t, &n), QRN_RES_OK);
  return n;
}

// Every entry of A, column by column, read through getatrip.
Trips triplets(qrn_task_t t) {
  qrn_int64 n = nnz(t);
  std::vector<qrn_int32> i(n), j(n);
  std::vector<double> v(n);
  CHECK_EQ(QRN_getatrip(t, n, i.data(), j.data(), v.data()), QRN_RES_OK);
  Trips out;
  for (qrn_int64 k = 0; k < n; ++k) out.emplace_back(i[k], j[k], v[k]);
  return out;
}

std::string last_message(qrn_task_t t) {
  char msg[512] = "";
  QRN_getlasterror(t, nullptr, sizeof msg, nullptr, msg);
  return msg;
}

// A 3 x 4 matrix:  [1 0 2 0; 0 3 0 0; 4 0 5 6]
void fill(qrn_task_t t) {
  const qrn_int64 ptrb[] = {0, 2, 3, 5}, ptre[] = {2, 3, 5, 6};
  const qrn_int32 sub[] = {2, 0, 1, 0, 2, 2};
  const double val[] = {4, 1, 3, 2, 5, 6};
  CHECK_EQ(QRN_putacolslice64(t, 0, 4, ptrb, ptre, sub, val), QRN_RES_OK);
}

}  // namespace

TEST(rows_and_columns_stay_in_step) {
  Fixture f(4, 3);
  qrn_task_t t = f.task;
  const qrn_int32 sub[] = {3, 0, 2};
  const double val[] = {1.5, -2, 7};
  CHECK_EQ(QRN_putacol(t, 1, 3, sub, val), QRN_RES_OK);  // unsorted input
  CHECK_EQ(col(t, 1), (Entries{{0, -2}, {2, 7}, {3, 1.5}}));
  CHECK_EQ(row(t, 3), (Entries{{1, 1.5}}));

  // Replacing row 2 removes its old entry from column 1.
  const qrn_int32 rsub[] = {2, 0};
  const double rval[] = {9, 8};
  CHECK_EQ(QRN_putarow(t, 2, 2, rsub, rval), QRN_RES_OK);
  CHECK_EQ(col(t, 1), (Entries{{0, -2}, {3, 1.5}}));
  CHECK_EQ(col(t, 0), (Entries{{2, 8}}));
  CHECK_EQ(row(t, 2), (Entries{{0, 8}, {2, 9}}));
  CHECK_EQ(nnz(t), 4);

  double v = -1;
  CHECK_EQ(QRN_putaij(t, 0, 2, 0.25), QRN_RES_OK);
  CHECK_EQ(QRN_getaij(t, 0, 2, &v), QRN_RES_OK);
  CHECK_EQ(v, 0.25);
  CHECK_EQ(row(t, 0), (Entries{{1, -2}, {2, 0.25}}));
  qrn_int32 n32 = -1;

  // An empty column clears it; null outputs are skipped.
  CHECK_EQ(QRN_putacol(t, 1, 0, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(row(t, 3), Entries{});
  CHECK_EQ(QRN_getacol(t, 2, &n32, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(n32, 2);
  CHECK_EQ(nnz(t), 3);
}

TEST(slices_and_triplets) {
  Fixture f(3, 4);
  qrn_task_t t = f.task;
  fill(t);
  CHECK_EQ(triplets(t), (Trips{{0, 0, 1}, {2, 0, 4}, {1, 1, 3}, {0, 2, 2}, {2, 2, 5}, {2, 3, 6}}));

  qrn_int64 n = -1;
  CHECK_EQ(QRN_getarowslicenumnz64(t, 1, 3, &n), QRN_RES_OK);
  CHECK_EQ(n, 4);
  std::vector<qrn_int64> pb(2), pe(2);
  std::vector<qrn_int32> sub(5, -7);
  std::vector<double> val(5, -7);
  CHECK_EQ(QRN_getarowslice64(t, 1, 3, 4, pb.data(), pe.data(), sub.data(), val.data()), QRN_RES_OK);
  CHECK(pb == (std::vector<qrn_int64>{0, 1}));
  CHECK(pe == (std::vector<qrn_int64>{1, 4}));
  CHECK(sub == (std::vector<qrn_int32>{1, 0, 2, 3, -7}));
  CHECK(val == (std::vector<double>{3, 4, 5, 6, -7}));

  CHECK_EQ(QRN_getacolslice64(t, 2, 4, 3, pb.data(), pe.data(), sub.data(), val.data()), QRN_RES_OK);
  CHECK(pb == (std::vector<qrn_int64>{0, 2}));
  CHECK(pe == (std::vector<qrn_int64>{2, 3}));
  CHECK(sub == (std::vector<qrn_int32>{0, 2, 2, 3, -7}));

  // A capacity below the count is refused before anything is written.
  sub.assign(5, -7);
  CHECK_EQ(QRN_getacolslice64(t, 2, 4, 2, pb.data(), pe.data(), sub.data(), val.data()), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(sub[0], -7);
  CHECK_EQ(QRN_getatrip(t, 5, sub.data(), nullptr, nullptr), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(QRN_getatrip(t, -1, nullptr, nullptr, nullptr), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(QRN_getatrip(t, 0, nullptr, nullptr, nullptr), QRN_RES_OK);  // nothing to write

  qrn_int32 piece = -1;
  CHECK_EQ(QRN_getapiecenumnz(t, 0, 3, 2, 3, &piece), QRN_RES_OK);  // along the columns
  CHECK_EQ(piece, 2);
  CHECK_EQ(QRN_getapiecenumnz(t, 2, 3, 0, 4, &piece), QRN_RES_OK);  // along the rows
  CHECK_EQ(piece, 3);
  CHECK_EQ(QRN_getarowslice64(t, 2, 2, 0, nullptr, nullptr, nullptr, nullptr), QRN_RES_OK);
}

TEST(bad_arguments_have_distinct_codes) {
  Fixture f(3, 4);
  qrn_task_t t = f.task;
  fill(t);
  const qrn_int32 two[] = {1, 1}, bad_con[] = {0, 3};
  const double vals[] = {1, 2}, nan_val[] = {1, std::nan("")}, inf_val[] = {HUGE_VAL, 1};
  const qrn_int64 b[] = {0, 1}, e[] = {1, 2}, backwards[] = {1, 0}, negative[] = {-1, 0};

  CHECK_EQ(QRN_putaij(t, 3, 0, 1), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(QRN_putaij(t, 0, -1, 1), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(QRN_putaij(t, 0, 0, std::nan("")), QRN_RES_ERR_VALUE_NAN);
  CHECK_EQ(QRN_getarow(t, -1, nullptr, nullptr, nullptr), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(QRN_putacol(t, 4, 0, nullptr, nullptr), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(QRN_putacol(t, 0, 2, bad_con, vals), QRN_RES_ERR_INDEX_CON);
  CHECK(last_message(t).find("subj[1] = 3") != std::string::npos);
  CHECK(last_message(t).find("0..2") != std::string::npos);
  CHECK_EQ(QRN_putacol(t, 0, 2, two, vals), QRN_RES_ERR_DUP_INDEX);
  CHECK_EQ(QRN_putacol(t, 0, -1, two, vals), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(QRN_putacol(t, 0, 2, nullptr, vals), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_putarow(t, 0, 2, bad_con, nan_val), QRN_RES_ERR_VALUE_NAN);
  CHECK_EQ(QRN_putarow(t, 0, 2, bad_con, inf_val), QRN_RES_ERR_VALUE_NAN);
  CHECK_EQ(QRN_putarowlist64(t, 2, two, b, e, bad_con, vals), QRN_RES_ERR_DUP_INDEX);
  CHECK_EQ(QRN_putarowlist64(t, 1, two, backwards, b, bad_con, vals), QRN_RES_ERR_PTR_RANGE);
  CHECK_EQ(QRN_putacolslice64(t, 0, 2, negative, e, bad_con, vals), QRN_RES_ERR_PTR_RANGE);
  CHECK_EQ(QRN_putacolslice64(t, 3, 5, b, e, bad_con, vals), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_putarowslice64(t, 2, 1, b, e, bad_con, vals), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_putarowslice64(t, 0, 2, b, e, nullptr, vals), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_getacolslicenumnz64(t, -1, 2, nullptr), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_getapiecenumnz(t, 0, 4, 0, 1, nullptr), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_putaijlist64(t, -1, nullptr, nullptr, nullptr), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(QRN_putaijlist64(t, 2, two, nullptr, vals), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_putmaxnumanz(t, 5), QRN_RES_ERR_MAX_CAPACITY);
  CHECK_EQ(QRN_putmaxnumanz(t, -1), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(QRN_putatruncatetol(t, -1), QRN_RES_ERR_ARGUMENT);
  CHECK_EQ(QRN_putatruncatetol(t, std::nan("")), QRN_RES_ERR_VALUE_NAN);

  // None of the refused calls changed anything.
  CHECK_EQ(triplets(t), (Trips{{0, 0, 1}, {2, 0, 4}, {1, 1, 3}, {0, 2, 2}, {2, 2, 5}, {2, 3, 6}}));
  qrn_int64 cap = -1;
  CHECK_EQ(QRN_putmaxnumanz(t, 100), QRN_RES_OK);
  CHECK_EQ(QRN_getmaxnumanz64(t, &cap), QRN_RES_OK);
  CHECK_EQ(cap, 100);
}

TEST(failing_writers_change_nothing) {
  Fixture f(3, 4);
  qrn_task_t t = f.task;
  fill(t);
  const Trips before = triplets(t);
  // The second column is bad only in its last entry; the first stays untouched.
  const qrn_int32 sub[] = {0, 1};
  const qrn_int64 b[] = {0, 1}, e[] = {1, 3};
  const qrn_int32 asub[] = {1, 0, 5};
  const double aval[] = {1, 1, 1};
  CHECK_EQ(QRN_putacollist64(t, 2, sub, b, e, asub, aval), QRN_RES_ERR_INDEX_CON);
  const qrn_int32 li[] = {0, 1}, lj[] = {3, 3};
  const double lv[] = {1, std::nan("")};
  CHECK_EQ(QRN_putaijlist64(t, 2, li, lj, lv), QRN_RES_ERR_VALUE_NAN);
  const qrn_int32 bkc[] = {QRN_BK_FREE, 17};
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 2, 0, nullptr, 0, nullptr, nullptr, nullptr, nullptr, bkc, nullptr, nullptr,
                           nullptr, nullptr, nullptr),
           QRN_RES_ERR_BOUND_KEY);
  CHECK_EQ(triplets(t), before);
  qrn_int32 numcon = -1;
  QRN_getnumcon(t, &numcon);
  CHECK_EQ(numcon, 3);
}

TEST(truncation_tolerance) {
  Fixture f(2, 2);
  qrn_task_t t = f.task;
  double tol = -1;
  CHECK_EQ(QRN_getatruncatetol(t, &tol), QRN_RES_OK);
  CHECK_EQ(tol, 0.0);
  QRN_putaij(t, 0, 0, 1);
  CHECK_EQ(QRN_putaij(t, 0, 0, 0.0), QRN_RES_OK);  // an explicit zero removes the entry
  CHECK_EQ(nnz(t), 0);

  CHECK_EQ(QRN_putatruncatetol(t, 1e-3), QRN_RES_OK);
  QRN_putaij(t, 1, 1, 2);
  QRN_putaij(t, 1, 1, -1e-3);  // at the tolerance: removed
  CHECK_EQ(nnz(t), 0);
  const qrn_int32 sub[] = {0, 1};
  const double val[] = {1e-4, 0.5};
  QRN_putacol(t, 1, 2, sub, val);
  CHECK_EQ(col(t, 1), (Entries{{1, 0.5}}));
  CHECK_EQ(row(t, 0), Entries{});
  const qrn_int64 pb[] = {0}, pe[] = {2};
  QRN_inputdata64(t, 0, 0, 2, 1, nullptr, 0, pb, pe, sub, val, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  CHECK_EQ(triplets(t), (Trips{{1, 0, 0.5}}));
}

TEST(removal_renumbers_the_matrix) {
  Fixture f(3, 4);
  qrn_task_t t = f.task;
  fill(t);
  const qrn_int32 con[] = {1};
  CHECK_EQ(QRN_removecons(t, 1, con), QRN_RES_OK);
  CHECK_EQ(triplets(t), (Trips{{0, 0, 1}, {1, 0, 4}, {0, 2, 2}, {1, 2, 5}, {1, 3, 6}}));
  CHECK_EQ(col(t, 1), Entries{});
  const qrn_int32 var[] = {2, 0};
  CHECK_EQ(QRN_removevars(t, 2, var), QRN_RES_OK);
  CHECK_EQ(row(t, 1), (Entries{{1, 6}}));
  CHECK_EQ(row(t, 0), Entries{});
  CHECK_EQ(nnz(t), 1);
  // New items start empty and take entries normally.
  QRN_appendcons(t, 1);
  QRN_appendvars(t, 1);
  CHECK_EQ(row(t, 2), Entries{});
  CHECK_EQ(QRN_putaij(t, 2, 2, 7), QRN_RES_OK);
  CHECK_EQ(triplets(t), (Trips{{1, 1, 6}, {2, 2, 7}}));
}

TEST(inputdata64_states_the_whole_problem) {
  Fixture f(4, 5);
  qrn_task_t t = f.task;
  QRN_putaij(t, 3, 4, 1);
  QRN_putaij(t, 0, 0, 1);
  // Shrink to 2 x 3: c, A (column 1 empty, pointers with a gap) and bounds.
  const double c[] = {1, 0, -1};
  const qrn_int64 pb[] = {0, 2, 2}, pe[] = {2, 2, 3};
  const qrn_int32 asub[] = {1, 0, 1, 77};
  const double aval[] = {2, 3, 4, 77};
  const qrn_int32 bkc[] = {QRN_BK_UPPER, QRN_BK_RANGED};
  const double blc[] = {0, -1}, buc[] = {5, 1};
  const double blx[] = {0, 0, 0};
  const qrn_int32 bkx[] = {QRN_BK_LOWER, QRN_BK_FREE, QRN_BK_LOWER};
  CHECK_EQ(QRN_inputdata64(t, 10, 1, 2, 3, c, 2.5, pb, pe, asub, aval, bkc, blc, buc, bkx, blx, nullptr),
           QRN_RES_OK);
  qrn_int32 n = -1;
  QRN_getnumcon(t, &n);
  CHECK_EQ(n, 2);
  QRN_getnumvar(t, &n);
  CHECK_EQ(n, 3);
  CHECK_EQ(triplets(t), (Trips{{0, 0, 3}, {1, 0, 2}, {1, 2, 4}}));
  QRN_getmaxnumcon(t, &n);
  CHECK(n >= 10);
  double v = 0, bl = 0, bu = 0;
  qrn_int32 bk = -1;
  QRN_getcfix(t, &v);
  CHECK_EQ(v, 2.5);
  QRN_getvarbound(t, 2, &bk, &bl, &bu);
  CHECK_EQ(bk, QRN_BK_LOWER);
  CHECK_EQ(bu, HUGE_VAL);  // null bux: no upper bound

  // Grow again with every array absent: free bounds, zero objective, empty A.
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 3, 4, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr),
           QRN_RES_ERR_NULL_POINTER);  // aptrb is required for 4 variables
  const qrn_int64 zero[] = {0, 0, 0, 0};
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 3, 4, nullptr, 0, zero, zero, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr),
           QRN_RES_OK);
  CHECK_EQ(nnz(t), 0);
  QRN_getconbound(t, 2, &bk, &bl, &bu);
  CHECK_EQ(bk, QRN_BK_FREE);
  // A lower key without a lower bound array needs a finite bound.
  const qrn_int32 lower[] = {QRN_BK_LOWER};
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 1, 0, nullptr, 0, nullptr, nullptr, nullptr, nullptr, lower, nullptr, nullptr,
                           nullptr, nullptr, nullptr),
           QRN_RES_ERR_BOUND_INFINITE);
  const qrn_int32 far[] = {3};
  const qrn_int64 b0[] = {0}, e1[] = {1};
  const double one[] = {1};
  CHECK_EQ(QRN_inputdata64(t, 0, 0, 3, 1, nullptr, 0, b0, e1, far, one, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr),
           QRN_RES_ERR_INDEX_CON);  // row indexes are checked against the new numcon
}

// ---- the text writer ----

namespace {

struct Received {
  std::string text;
  std::vector<size_t> chunks;
  size_t refuse_after = SIZE_MAX;  // bytes taken before the receiver starts refusing
  static size_t QRN_CALL take(void *handle, const void *data, size_t count) {
    auto *r = static_cast<Received *>(handle);
    if (r->text.size() >= r->refuse_after) return count / 2;
    r->text.append(static_cast<const char *>(data), count);
    r->chunks.push_back(count);
    return count;
  }
};

}  // namespace

TEST(text_writer_output) {
  Fixture f(2, 3);
  qrn_task_t t = f.task;
  QRN_putobjsense(t, QRN_OBJECTIVE_SENSE_MAXIMIZE);
  QRN_putcfix(t, 0.1);
  QRN_putcj(t, 2, -3);
  QRN_putconbound(t, 0, QRN_BK_RANGED, -1, 2.5);
  QRN_putconbound(t, 1, QRN_BK_UPPER, 0, 1e-7);
  QRN_putvarbound(t, 0, QRN_BK_LOWER, 0, 0);
  QRN_putvartype(t, 1, QRN_VAR_TYPE_INTEGER);
  QRN_putaij(t, 1, 0, 1.0 / 3);
  QRN_putaij(t, 0, 2, 4);
  const qrn_int32 qi[] = {1}, qj[] = {0};
  const double qv[] = {2};
  QRN_putqobj(t, 1, qi, qj, qv);
  QRN_putqconk(t, 1, 1, qi, qi, qv);
  const qrn_int32 members[] = {2, 0};
  QRN_appendcone(t, QRN_CONE_QUAD, 0, 2, members);

  Received r;
  CHECK_EQ(QRN_writedatahandle(t, Received::take, &r, QRN_DATA_FORMAT_TEXT, QRN_COMPRESS_NONE), QRN_RES_OK);
  CHECK_EQ(r.text,
           "qrntext 1\n"
           "task \"\"\n"
           "objective maximize \"\" 0.1\n"
           "coefficients 1\n"
           "2 -3\n"
           "constraints 2\n"
           "0 \"\" ranged -1 2.5\n"
           "1 \"\" upper -inf 1e-07\n"
           "variables 3\n"
           "0 \"\" continuous lower 0 +inf\n"
           "1 \"\" integer free -inf +inf\n"
           "2 \"\" continuous free -inf +inf\n"
           "matrix 2\n"
           "1 0 0.3333333333333333\n"
           "0 2 4\n"
           "qobjective 1\n"
           "1 0 2\n"
           "qconstraints 1\n"
           "1 1 1 2\n"
           "cones 1\n"
           "0 \"\" quad 0 2 2 0\n"
           "end\n");
}

TEST(text_writer_chunks_and_failures) {
  Fixture f(20000, 1);
  qrn_task_t t = f.task;
  Received r;
  CHECK_EQ(QRN_writedatahandle(t, Received::take, &r, QRN_DATA_FORMAT_TEXT, QRN_COMPRESS_NONE), QRN_RES_OK);
  CHECK(r.chunks.size() > 1);
  for (size_t n : r.chunks) CHECK(n > 0 && n <= 64 * 1024);
  CHECK_EQ(r.text.substr(r.text.size() - 4), "end\n");

  Received refusing;
  refusing.refuse_after = 1;
  CHECK_EQ(QRN_writedatahandle(t, Received::take, &refusing, QRN_DATA_FORMAT_TEXT, QRN_COMPRESS_NONE),
           QRN_RES_ERR_WRITE);
  CHECK_EQ(refusing.chunks.size(), 1u);  // the writer stopped at the first short take
  CHECK_EQ(QRN_writedatahandle(t, nullptr, &r, QRN_DATA_FORMAT_TEXT, QRN_COMPRESS_NONE), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_writedatahandle(t, Received::take, &r, QRN_DATA_FORMAT_EXTENSION, QRN_COMPRESS_NONE),
           QRN_RES_ERR_DATA_FORMAT);
  CHECK_EQ(QRN_writedatahandle(t, Received::take, &r, 99, QRN_COMPRESS_NONE), QRN_RES_ERR_DATA_FORMAT);
  CHECK_EQ(QRN_writedatahandle(t, Received::take, &r, QRN_DATA_FORMAT_TEXT, 7), QRN_RES_ERR_COMPRESSION);
}

TEST(text_writer_quotes_names) {
  Fixture f(1, 1);
  qrn_task_t t = f.task;
  CHECK_EQ(QRN_puttaskname(t, "a \"b\" \\c"), QRN_RES_OK);
  CHECK_EQ(QRN_putobjname(t, "tab\there\nnext\x01"), QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(t, 0, "x\xc3\xa9"), QRN_RES_OK);  // UTF-8 is written as it is
  Received r;
  CHECK_EQ(QRN_writedatahandle(t, Received::take, &r, QRN_DATA_FORMAT_TEXT, QRN_COMPRESS_NONE), QRN_RES_OK);
  CHECK(r.text.find("task \"a \\\"b\\\" \\\\c\"\n") != std::string::npos);
  CHECK(r.text.find("objective minimize \"tab\\there\\nnext\\x01\" 0\n") != std::string::npos);
  CHECK(r.text.find("0 \"x\xc3\xa9\" continuous") != std::string::npos);
}
