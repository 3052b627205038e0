// Bounds, objective and variable types through the C interface.
#include <cmath>
#include <string>

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

struct Got {
  qrn_int32 bk = -1;
  double bl = 0, bu = 0;
};

Got varbound(qrn_task_t t, qrn_int32 j) {
  Got g;
  CHECK_EQ(QRN_getvarbound(t, j, &g.bk, &g.bl, &g.bu), QRN_RES_OK);
  return g;
}

const double inf = HUGE_VAL;

}  // namespace

TEST(chgbound_adjusts_the_key) {
  Fixture f(0, 1);
  qrn_task_t t = f.task;
  CHECK_EQ(QRN_chgvarbound(t, 0, 1, 1, 2.0), QRN_RES_OK);  // free -> lower
  CHECK_EQ(varbound(t, 0).bk, QRN_BK_LOWER);
  CHECK_EQ(QRN_chgvarbound(t, 0, 0, 1, 5.0), QRN_RES_OK);  // lower -> ranged
  Got g = varbound(t, 0);
  CHECK_EQ(g.bk, QRN_BK_RANGED);
  CHECK_EQ(g.bl, 2.0);
  CHECK_EQ(g.bu, 5.0);
  CHECK_EQ(QRN_chgvarbound(t, 0, 0, 0, 123.0), QRN_RES_OK);  // infinite upper on ranged -> lower
  g = varbound(t, 0);
  CHECK_EQ(g.bk, QRN_BK_LOWER);
  CHECK_EQ(g.bu, inf);
  CHECK_EQ(QRN_chgvarbound(t, 0, 0, 1, 2.0), QRN_RES_OK);  // equal sides: ranged, not fixed
  CHECK_EQ(varbound(t, 0).bk, QRN_BK_RANGED);
  CHECK_EQ(QRN_chgvarbound(t, 0, 1, 1, -1e30), QRN_RES_OK);  // magnitude >= QRN_INFINITY is infinite
  g = varbound(t, 0);
  CHECK_EQ(g.bk, QRN_BK_UPPER);
  CHECK_EQ(g.bl, -inf);
  CHECK_EQ(QRN_chgvarbound(t, 0, 0, 0, 0.0), QRN_RES_OK);
  CHECK_EQ(varbound(t, 0).bk, QRN_BK_FREE);
}

TEST(chgbound_on_fixed_items) {
  Fixture f(0, 1);
  qrn_task_t t = f.task;
  CHECK_EQ(QRN_putvarbound(t, 0, QRN_BK_FIXED, 3.0, 3.0), QRN_RES_OK);
  CHECK_EQ(QRN_chgvarbound(t, 0, 1, 1, 3.0), QRN_RES_OK);  // sides stay equal: still fixed
  CHECK_EQ(varbound(t, 0).bk, QRN_BK_FIXED);
  CHECK_EQ(QRN_chgvarbound(t, 0, 1, 1, 1.0), QRN_RES_OK);
  CHECK_EQ(varbound(t, 0).bk, QRN_BK_RANGED);
  CHECK_EQ(QRN_putvarbound(t, 0, QRN_BK_FIXED, 3.0, 3.0), QRN_RES_OK);
  CHECK_EQ(QRN_chgvarbound(t, 0, 1, 0, 0.0), QRN_RES_OK);
  Got g = varbound(t, 0);
  CHECK_EQ(g.bk, QRN_BK_UPPER);
  CHECK_EQ(g.bu, 3.0);
  CHECK_EQ(QRN_chgvarbound(t, 0, 1, 1, NAN), QRN_RES_ERR_VALUE_NAN);
  CHECK_EQ(QRN_chgconbound(t, 0, 1, 1, 1.0), QRN_RES_ERR_INDEX_CON);
}

TEST(putbound_checks_and_reads_back_infinite_sides) {
  Fixture f(2, 1);
  qrn_task_t t = f.task;
  CHECK_EQ(QRN_putconbound(t, 1, QRN_BK_LOWER, 1.0, 7.0), QRN_RES_OK);
  qrn_int32 bk;
  double bl, bu;
  CHECK_EQ(QRN_getconbound(t, 1, &bk, &bl, &bu), QRN_RES_OK);
  CHECK_EQ(bk, QRN_BK_LOWER);
  CHECK_EQ(bl, 1.0);
  CHECK_EQ(bu, inf);  // the key does not bound above: 7 is not kept
  CHECK_EQ(QRN_putconbound(t, 1, 5, 0.0, 0.0), QRN_RES_ERR_BOUND_KEY);
  CHECK_EQ(QRN_putconbound(t, 1, QRN_BK_RANGED, 0.0, 1e30), QRN_RES_ERR_BOUND_INFINITE);
  CHECK_EQ(QRN_putconbound(t, 2, QRN_BK_FREE, 0.0, 0.0), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(QRN_putvarbound(t, -1, QRN_BK_FREE, 0.0, 0.0), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(QRN_getconbound(t, 1, &bk, &bl, &bu), QRN_RES_OK);
  CHECK_EQ(bl, 1.0);
}

TEST(list_and_slice_writers) {
  Fixture f(0, 4);
  qrn_task_t t = f.task;
  qrn_int32 sub[] = {3, 1, 3};
  qrn_int32 keys[] = {QRN_BK_LOWER, QRN_BK_UPPER, QRN_BK_RANGED};
  double lo[] = {1.0, 0.0, -2.0}, up[] = {0.0, 4.0, 2.0};
  CHECK_EQ(QRN_putvarboundlist(t, 3, sub, keys, lo, up), QRN_RES_OK);
  Got g = varbound(t, 3);  // a repeated index takes its last entry
  CHECK_EQ(g.bk, QRN_BK_RANGED);
  CHECK_EQ(g.bl, -2.0);
  // a null lower-bound array keeps the lower sides
  qrn_int32 ranged[] = {QRN_BK_RANGED, QRN_BK_RANGED};
  double up2[] = {8.0, 9.0};
  CHECK_EQ(QRN_putvarboundslice(t, 2, 4, ranged, nullptr, up2), QRN_RES_ERR_BOUND_INFINITE);  // var 2 has no lower
  CHECK_EQ(varbound(t, 3).bu, 2.0);                                                           // nothing changed
  CHECK_EQ(QRN_putvarboundslice(t, 3, 4, ranged, nullptr, up2 + 1), QRN_RES_OK);
  g = varbound(t, 3);
  CHECK_EQ(g.bl, -2.0);
  CHECK_EQ(g.bu, 9.0);
  CHECK_EQ(QRN_putvarboundsliceconst(t, 0, 2, QRN_BK_FIXED, 1.0, 1.0), QRN_RES_OK);
  qrn_int32 bk[4];
  double bl[4], bu[4];
  CHECK_EQ(QRN_getvarboundslice(t, 0, 4, bk, nullptr, bu), QRN_RES_OK);
  CHECK_EQ(bk[1], QRN_BK_FIXED);
  CHECK_EQ(bu[2], inf);
  CHECK_EQ(QRN_getvarboundslice(t, 0, 5, bk, bl, bu), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_putvarboundsliceconst(t, 3, 2, QRN_BK_FREE, 0.0, 0.0), QRN_RES_ERR_SLICE);
  // a bad index at the end of a list leaves the earlier entries unwritten
  qrn_int32 bad[] = {0, 4};
  CHECK_EQ(QRN_putvarboundlistconst(t, 2, bad, QRN_BK_FREE, 0.0, 0.0), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(varbound(t, 0).bk, QRN_BK_FIXED);
  CHECK_EQ(QRN_putvarboundlist(t, 1, nullptr, keys, lo, up), QRN_RES_ERR_NULL_POINTER);
}

TEST(objective) {
  Fixture f(0, 3);
  qrn_task_t t = f.task;
  double slice[] = {1.0, 2.0, 3.0};
  CHECK_EQ(QRN_putcslice(t, 0, 3, slice), QRN_RES_OK);
  double c[4] = {0, 0, 0, -7.0};
  CHECK_EQ(QRN_getc(t, c), QRN_RES_OK);
  CHECK_EQ(c[2], 3.0);
  CHECK_EQ(c[3], -7.0);  // exactly numvar values
  qrn_int32 subj[] = {2, 0};
  double val[] = {5.0, NAN};
  CHECK_EQ(QRN_putclist(t, 2, subj, val), QRN_RES_ERR_VALUE_NAN);
  double cj = 0;
  CHECK_EQ(QRN_getcj(t, 2, &cj), QRN_RES_OK);
  CHECK_EQ(cj, 3.0);  // the failing list changed nothing
  CHECK_EQ(QRN_putobjsense(t, 2), QRN_RES_ERR_OBJ_SENSE);
  CHECK_EQ(QRN_putobjsense(t, QRN_OBJECTIVE_SENSE_MAXIMIZE), QRN_RES_OK);
  qrn_int32 sense = -1;
  CHECK_EQ(QRN_getobjsense(t, &sense), QRN_RES_OK);
  CHECK_EQ(sense, QRN_OBJECTIVE_SENSE_MAXIMIZE);
  CHECK_EQ(QRN_putcfix(t, inf), QRN_RES_ERR_VALUE_NAN);
  CHECK_EQ(QRN_getcslice(t, 2, 1, c), QRN_RES_ERR_SLICE);
}

TEST(numintvar_stays_exact) {
  Fixture f(0, 4);
  qrn_task_t t = f.task;
  qrn_int32 subj[] = {0, 1, 1, 3};
  qrn_int32 types[] = {QRN_VAR_TYPE_INTEGER, QRN_VAR_TYPE_INTEGER, QRN_VAR_TYPE_CONTINUOUS, QRN_VAR_TYPE_INTEGER};
  CHECK_EQ(QRN_putvartypelist(t, 4, subj, types), QRN_RES_OK);
  qrn_int32 n = -1;
  CHECK_EQ(QRN_getnumintvar(t, &n), QRN_RES_OK);
  CHECK_EQ(n, 2);
  CHECK_EQ(QRN_putvartype(t, 0, QRN_VAR_TYPE_INTEGER), QRN_RES_OK);  // already integer
  CHECK_EQ(QRN_putvartype(t, 2, 7), QRN_RES_ERR_VAR_TYPE);
  qrn_int32 gone[] = {3};
  CHECK_EQ(QRN_removevars(t, 1, gone), QRN_RES_OK);
  CHECK_EQ(QRN_getnumintvar(t, &n), QRN_RES_OK);
  CHECK_EQ(n, 1);
  qrn_int32 out[2];
  qrn_int32 ask[] = {1, 0};
  CHECK_EQ(QRN_getvartypelist(t, 2, ask, out), QRN_RES_OK);
  CHECK_EQ(out[0], QRN_VAR_TYPE_CONTINUOUS);
  CHECK_EQ(out[1], QRN_VAR_TYPE_INTEGER);
}

static void QRN_CALL keep_text(void *handle, const char *text) { *static_cast<std::string *>(handle) += text; }

TEST(failures_reach_last_error_and_error_stream) {
  Fixture f(1, 0);
  std::string err;
  QRN_linkfunctotaskstream(f.task, QRN_STREAM_ERR, &err, keep_text);
  CHECK_EQ(QRN_putconbound(f.task, 0, QRN_BK_UPPER, 0.0, NAN), QRN_RES_ERR_VALUE_NAN);
  qrn_rescode last = 0;
  CHECK_EQ(QRN_getlasterror(f.task, &last, 0, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(last, QRN_RES_ERR_VALUE_NAN);
  CHECK(err.find("QRN_putconbound") != std::string::npos);
}
