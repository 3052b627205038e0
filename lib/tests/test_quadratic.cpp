// Quadratic terms through the C interface.
#include <cmath>

#include "check.hpp"
#include "quarn.h"

namespace {

struct Fixture {
  qrn_env_t env = nullptr;
  qrn_task_t task = nullptr;
  Fixture(int numcon, int numvar) {
    QRN_makeenv(&env, nullptr);
    QRN_makeemptytask(env, &task);
    QRN_appendcons(task, numcon);
    QRN_appendvars(task, numvar);
  }
  ~Fixture() {
    QRN_deletetask(&task);
    QRN_deleteenv(&env);
  }
};

qrn_int64 objterms(qrn_task_t t) {
  qrn_int64 n = -1;
  CHECK_EQ(QRN_getnumqobjnz64(t, &n), QRN_RES_OK);
  return n;
}

double qobj(qrn_task_t t, qrn_int32 i, qrn_int32 j) {
  double v = NAN;
  CHECK_EQ(QRN_getqobjij(t, i, j, &v), QRN_RES_OK);
  return v;
}

}  // namespace

TEST(lower_triangle_sums_and_zero_terms) {
  Fixture f(0, 3);
  qrn_task_t t = f.task;
  qrn_int32 i[] = {2, 2, 1, 1}, j[] = {0, 0, 1, 0};
  double v[] = {1.5, 2.5, 4.0, -1.0};
  CHECK_EQ(QRN_putqobj(t, 4, i, j, v), QRN_RES_OK);
  CHECK_EQ(objterms(t), 3);
  CHECK_EQ(qobj(t, 2, 0), 4.0);  // repeated (2, 0) summed
  CHECK_EQ(qobj(t, 0, 2), 4.0);  // (i, j) with j > i reads (j, i)
  // an upper-triangle term refuses the whole call
  qrn_int32 ui[] = {1, 0}, uj[] = {1, 2};
  double uv[] = {9.0, 1.0};
  CHECK_EQ(QRN_putqobj(t, 2, ui, uj, uv), QRN_RES_ERR_QUAD_UPPER);
  CHECK_EQ(qobj(t, 1, 1), 4.0);
  CHECK_EQ(QRN_putqobjij(t, 0, 1, 1.0), QRN_RES_ERR_QUAD_UPPER);
  // terms that cancel are not stored; putqobjij 0 removes
  qrn_int32 ci[] = {1, 1}, cj[] = {0, 0};
  double cv[] = {2.0, -2.0};
  CHECK_EQ(QRN_putqobj(t, 2, ci, cj, cv), QRN_RES_OK);
  CHECK_EQ(objterms(t), 0);
  CHECK_EQ(QRN_putqobjij(t, 2, 2, 3.0), QRN_RES_OK);
  CHECK_EQ(objterms(t), 1);
  CHECK_EQ(QRN_putqobjij(t, 2, 2, 0.0), QRN_RES_OK);
  CHECK_EQ(objterms(t), 0);
  CHECK_EQ(QRN_putqobjij(t, 3, 0, 1.0), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(QRN_putqobjij(t, 1, 0, NAN), QRN_RES_ERR_VALUE_NAN);
}

TEST(constraint_terms_replace_per_constraint) {
  Fixture f(3, 2);
  qrn_task_t t = f.task;
  qrn_int32 i[] = {0, 1}, j[] = {0, 1};
  double v[] = {1.0, 2.0};
  CHECK_EQ(QRN_putqconk(t, 0, 2, i, j, v), QRN_RES_OK);
  CHECK_EQ(QRN_putqconk(t, 1, 2, i, j, v), QRN_RES_OK);
  // putqcon replaces constraint 1 only and fills constraint 2
  qrn_int32 k[] = {1, 2, 2}, qi[] = {1, 0, 1}, qj[] = {0, 0, 1};
  double qv[] = {5.0, 6.0, 7.0};
  CHECK_EQ(QRN_putqcon(t, 3, k, qi, qj, qv), QRN_RES_OK);
  qrn_int64 n0, n1, n2;
  QRN_getnumqconknz64(t, 0, &n0);
  QRN_getnumqconknz64(t, 1, &n1);
  QRN_getnumqconknz64(t, 2, &n2);
  CHECK_EQ(n0, 2);
  CHECK_EQ(n1, 1);
  CHECK_EQ(n2, 2);
  // a bad constraint index anywhere leaves every constraint as it was
  qrn_int32 badk[] = {0, 3};
  CHECK_EQ(QRN_putqcon(t, 2, badk, qi, qj, qv), QRN_RES_ERR_INDEX_CON);
  QRN_getnumqconknz64(t, 0, &n0);
  CHECK_EQ(n0, 2);
  CHECK_EQ(QRN_putqconk(t, 3, 0, nullptr, nullptr, nullptr), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(QRN_putqconk(t, 0, 1, nullptr, j, v), QRN_RES_ERR_NULL_POINTER);
}

TEST(reading_terms_respects_the_capacity) {
  Fixture f(1, 3);
  qrn_task_t t = f.task;
  qrn_int32 i[] = {2, 1, 2}, j[] = {1, 0, 0};
  double v[] = {1.0, 2.0, 3.0};
  CHECK_EQ(QRN_putqconk(t, 0, 3, i, j, v), QRN_RES_OK);
  qrn_int32 si[4] = {-1, -1, -1, -1}, sj[4];
  double sv[4];
  qrn_int64 n = -1;
  CHECK_EQ(QRN_getqconk64(t, 0, 2, &n, si, sj, sv), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(si[0], -1);  // nothing written
  CHECK_EQ(QRN_getqconk64(t, 0, 3, &n, si, sj, sv), QRN_RES_OK);
  CHECK_EQ(n, 3);
  CHECK_EQ(si[3], -1);
  // ordered by (i, j)
  CHECK_EQ(si[0], 1);
  CHECK_EQ(si[1], 2);
  CHECK_EQ(sj[1], 0);
  CHECK_EQ(sv[2], 1.0);
  CHECK_EQ(QRN_getqobj64(t, -1, &n, si, sj, sv), QRN_RES_ERR_NEGATIVE_COUNT);
}

TEST(quadratic_capacity_never_below_the_terms_held) {
  Fixture f(1, 3);
  qrn_task_t t = f.task;
  qrn_int32 i[] = {0, 1, 2}, j[] = {0, 1, 2};
  double v[] = {1.0, 1.0, 1.0};
  CHECK_EQ(QRN_putqobj(t, 3, i, j, v), QRN_RES_OK);
  CHECK_EQ(QRN_putqconk(t, 0, 2, i, j, v), QRN_RES_OK);
  qrn_int64 cap = 0;
  CHECK_EQ(QRN_getmaxnumqnz64(t, &cap), QRN_RES_OK);
  CHECK_EQ(cap, 5);
  CHECK_EQ(QRN_putmaxnumqnz(t, 4), QRN_RES_ERR_MAX_CAPACITY);
  CHECK_EQ(QRN_putmaxnumqnz(t, 100), QRN_RES_OK);
  CHECK_EQ(QRN_getmaxnumqnz64(t, &cap), QRN_RES_OK);
  CHECK_EQ(cap, 100);
}

TEST(removing_variables_drops_and_renumbers_terms) {
  Fixture f(1, 3);
  qrn_task_t t = f.task;
  qrn_int32 i[] = {1, 2, 2}, j[] = {0, 1, 2};
  double v[] = {1.0, 2.0, 3.0};
  CHECK_EQ(QRN_putqobj(t, 3, i, j, v), QRN_RES_OK);
  CHECK_EQ(QRN_putqconk(t, 0, 3, i, j, v), QRN_RES_OK);
  qrn_int32 gone[] = {1};
  CHECK_EQ(QRN_removevars(t, 1, gone), QRN_RES_OK);
  CHECK_EQ(objterms(t), 1);
  CHECK_EQ(qobj(t, 1, 1), 3.0);  // old (2, 2)
  qrn_int64 n = -1;
  CHECK_EQ(QRN_getnumqconknz64(t, 0, &n), QRN_RES_OK);
  CHECK_EQ(n, 1);
}
