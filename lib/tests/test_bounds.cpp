// Bounds and variable types through the C interface.
#include <cmath>

#include "fixture.hpp"

namespace {

// A task with numvar variables.
struct Vars : Fixture {
  explicit Vars(int numvar) : Fixture(0, numvar) {}
  qrn_int32 key(qrn_int32 j) {
    qrn_int32 bk = -1;
    CHECK_EQ(QRN_getvarbound(task, j, &bk, &bl, &bu), QRN_RES_OK);
    return bk;
  }
  double bl = 0, bu = 0;  // sides read by the last key()
};

}  // namespace

TEST(chgbound_adjusts_the_key) {
  Vars f(1);
  CHECK_EQ(QRN_chgvarbound(f.task, 0, 1, 1, 2.0), QRN_RES_OK);
  CHECK_EQ(f.key(0), QRN_BK_LOWER);
  CHECK_EQ(QRN_chgvarbound(f.task, 0, 0, 1, 2.0), QRN_RES_OK);
  CHECK_EQ(f.key(0), QRN_BK_RANGED);  // equal sides do not make FIXED
  CHECK_EQ(QRN_chgvarbound(f.task, 0, 0, 0, 7.0), QRN_RES_OK);
  CHECK_EQ(f.key(0), QRN_BK_LOWER);
  CHECK_EQ(f.bu, HUGE_VAL);
  CHECK_EQ(QRN_chgvarbound(f.task, 0, 1, 1, -1e30), QRN_RES_OK);  // magnitude >= QRN_INFINITY: infinite
  CHECK_EQ(f.key(0), QRN_BK_FREE);
  CHECK_EQ(QRN_putvarbound(f.task, 0, QRN_BK_FIXED, 3.0, 3.0), QRN_RES_OK);
  CHECK_EQ(QRN_chgvarbound(f.task, 0, 1, 1, 3.0), QRN_RES_OK);
  CHECK_EQ(f.key(0), QRN_BK_FIXED);
  CHECK_EQ(QRN_chgvarbound(f.task, 0, 1, 0, 0.0), QRN_RES_OK);
  CHECK_EQ(f.key(0), QRN_BK_UPPER);
  CHECK_EQ(f.bu, 3.0);
  CHECK_EQ(QRN_chgvarbound(f.task, 0, 1, 1, NAN), QRN_RES_ERR_VALUE_NAN);
}

TEST(bound_lists_and_slices_are_all_or_nothing) {
  Vars f(4);
  qrn_int32 sub[] = {3, 1, 3}, keys[] = {QRN_BK_LOWER, QRN_BK_UPPER, QRN_BK_RANGED};
  double lo[] = {1.0, 0.0, -2.0}, up[] = {0.0, 4.0, 2.0};
  CHECK_EQ(QRN_putvarboundlist(f.task, 3, sub, keys, lo, up), QRN_RES_OK);
  CHECK_EQ(f.key(3), QRN_BK_RANGED);  // a repeated index takes its last entry
  CHECK_EQ(f.bl, -2.0);
  // null lower bounds keep the current ones; variable 2 has none, so nothing changes
  qrn_int32 ranged[] = {QRN_BK_RANGED, QRN_BK_RANGED};
  double up2[] = {8.0, 9.0};
  CHECK_EQ(QRN_putvarboundslice(f.task, 2, 4, ranged, nullptr, up2), QRN_RES_ERR_BOUND_INFINITE);
  CHECK_EQ(f.key(3), QRN_BK_RANGED);
  CHECK_EQ(f.bu, 2.0);
  CHECK_EQ(QRN_putvarboundslice(f.task, 3, 4, ranged, nullptr, up2 + 1), QRN_RES_OK);
  CHECK_EQ(f.key(3), QRN_BK_RANGED);
  CHECK_EQ(f.bl, -2.0);
  CHECK_EQ(f.bu, 9.0);
  qrn_int32 bad[] = {0, 4};
  CHECK_EQ(QRN_putvarboundlistconst(f.task, 2, bad, QRN_BK_FIXED, 0.0, 0.0), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(f.key(0), QRN_BK_FREE);
  CHECK_EQ(QRN_putconbound(f.task, 0, QRN_BK_FREE, 0.0, 0.0), QRN_RES_ERR_INDEX_CON);
}

TEST(numintvar_stays_exact) {
  Vars f(4);
  qrn_int32 subj[] = {0, 1, 1, 3};
  qrn_int32 types[] = {QRN_VAR_TYPE_INTEGER, QRN_VAR_TYPE_INTEGER, QRN_VAR_TYPE_CONTINUOUS, QRN_VAR_TYPE_INTEGER};
  CHECK_EQ(QRN_putvartypelist(f.task, 4, subj, types), QRN_RES_OK);
  CHECK_EQ(QRN_putvartype(f.task, 0, QRN_VAR_TYPE_INTEGER), QRN_RES_OK);  // already integer
  CHECK_EQ(QRN_putvartype(f.task, 2, 7), QRN_RES_ERR_VAR_TYPE);
  qrn_int32 n = -1, gone[] = {3};
  CHECK_EQ(QRN_getnumintvar(f.task, &n), QRN_RES_OK);
  CHECK_EQ(n, 2);
  CHECK_EQ(QRN_removevars(f.task, 1, gone), QRN_RES_OK);
  CHECK_EQ(QRN_getnumintvar(f.task, &n), QRN_RES_OK);
  CHECK_EQ(n, 1);
}
