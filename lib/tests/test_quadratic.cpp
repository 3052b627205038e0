// Quadratic terms through the C interface.
#include <cmath>

#include "fixture.hpp"

namespace {

// A task with numcon constraints and three variables.
struct Quad : Fixture {
  explicit Quad(int numcon) : Fixture(numcon, 3) {}
  qrn_int64 terms(qrn_int32 k) {  // k < 0: the objective
    qrn_int64 n = -1;
    CHECK_EQ(k < 0 ? QRN_getnumqobjnz64(task, &n) : QRN_getnumqconknz64(task, k, &n), QRN_RES_OK);
    return n;
  }
};

}  // namespace

TEST(lower_triangle_sums_and_zero_terms) {
  Quad f(0);
  qrn_int32 i[] = {2, 2, 1, 1}, j[] = {0, 0, 1, 0};
  double v[] = {1.5, 2.5, 4.0, 0.0}, q = 0;
  CHECK_EQ(QRN_putqobj(f.task, 4, i, j, v), QRN_RES_OK);
  CHECK_EQ(f.terms(-1), 2);  // (2, 0) summed, the zero term not stored
  CHECK_EQ(QRN_getqobjij(f.task, 0, 2, &q), QRN_RES_OK);
  CHECK_EQ(q, 4.0);
  CHECK_EQ(QRN_putqobj(f.task, 2, j, i, v), QRN_RES_ERR_QUAD_UPPER);
  CHECK_EQ(f.terms(-1), 2);
  CHECK_EQ(QRN_putqobjij(f.task, 1, 1, 0.0), QRN_RES_OK);  // 0 removes
  CHECK_EQ(f.terms(-1), 1);
}

TEST(putqcon_replaces_the_named_constraints_only) {
  Quad f(3);
  qrn_int32 i[] = {0, 1}, j[] = {0, 1};
  double v[] = {1.0, 2.0};
  CHECK_EQ(QRN_putqconk(f.task, 0, 2, i, j, v), QRN_RES_OK);
  CHECK_EQ(QRN_putqconk(f.task, 1, 2, i, j, v), QRN_RES_OK);
  qrn_int32 k[] = {1, 2, 2}, qi[] = {1, 0, 1}, qj[] = {0, 0, 1};
  double qv[] = {5.0, 6.0, 7.0};
  CHECK_EQ(QRN_putqcon(f.task, 3, k, qi, qj, qv), QRN_RES_OK);
  CHECK_EQ(f.terms(0), 2);
  CHECK_EQ(f.terms(1), 1);
  CHECK_EQ(f.terms(2), 2);
  qrn_int32 badk[] = {0, 3};
  CHECK_EQ(QRN_putqcon(f.task, 2, badk, qi, qj, qv), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(f.terms(0), 2);
}

TEST(reading_terms_respects_the_capacity) {
  Quad f(1);
  qrn_int32 i[] = {2, 1, 2}, j[] = {1, 0, 0};
  double v[] = {1.0, 2.0, 3.0}, sv[3];
  CHECK_EQ(QRN_putqconk(f.task, 0, 3, i, j, v), QRN_RES_OK);
  qrn_int32 si[4] = {-1, -1, -1, -1}, sj[3];
  qrn_int64 n = -1;
  CHECK_EQ(QRN_getqconk64(f.task, 0, 2, &n, si, sj, sv), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(si[0], -1);
  CHECK_EQ(QRN_getqconk64(f.task, 0, 3, &n, si, sj, sv), QRN_RES_OK);
  CHECK_EQ(n, 3);
  CHECK_EQ(si[3], -1);
  CHECK_EQ(si[1], 2);  // ordered by (i, j): (1,0) (2,0) (2,1)
  CHECK_EQ(sj[1], 0);
  CHECK_EQ(sv[2], 1.0);
  CHECK_EQ(QRN_putmaxnumqnz(f.task, 2), QRN_RES_ERR_MAX_CAPACITY);
}

TEST(removing_variables_drops_and_renumbers_terms) {
  Quad f(1);
  qrn_int32 i[] = {1, 2, 2}, j[] = {0, 1, 2}, gone[] = {1};
  double v[] = {1.0, 2.0, 3.0}, q = 0;
  CHECK_EQ(QRN_putqobj(f.task, 3, i, j, v), QRN_RES_OK);
  CHECK_EQ(QRN_putqconk(f.task, 0, 3, i, j, v), QRN_RES_OK);
  CHECK_EQ(QRN_removevars(f.task, 1, gone), QRN_RES_OK);
  CHECK_EQ(f.terms(-1), 1);
  CHECK_EQ(f.terms(0), 1);
  CHECK_EQ(QRN_getqobjij(f.task, 1, 1, &q), QRN_RES_OK);  // was (2, 2)
  CHECK_EQ(q, 3.0);
}
