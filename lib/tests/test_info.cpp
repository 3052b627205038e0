// Information items and the problem type, through the C interface.
#include "fixture.hpp"

namespace {

struct Info : Fixture {
  qrn_int32 probtype() {
    qrn_int32 p = -1;
    CHECK_EQ(QRN_getprobtype(task, &p), QRN_RES_OK);
    return p;
  }
};

}  // namespace

TEST(info_initial_values_and_identifiers) {
  Info f;
  double d = 7;
  qrn_int32 i = 7;
  qrn_int64 l = 7;
  CHECK_EQ(QRN_getdouinf(f.task, QRN_DINF_TIME_TOTAL, &d), QRN_RES_OK);
  CHECK_EQ(d, 0.0);
  CHECK_EQ(QRN_getdouinf(f.task, QRN_DINF_MIP_REL_GAP, &d), QRN_RES_OK);
  CHECK_EQ(d, -1.0);  // not computed
  CHECK_EQ(QRN_getdouinf(f.task, QRN_DINF_COUNT - 1, &d), QRN_RES_OK);
  CHECK_EQ(QRN_getintinf(f.task, QRN_IINF_TERMINATION_CODE, &i), QRN_RES_OK);
  CHECK_EQ(i, -1);
  CHECK_EQ(QRN_getintinf(f.task, QRN_IINF_IPM_ITER, &i), QRN_RES_OK);
  CHECK_EQ(i, 0);
  CHECK_EQ(QRN_getlintinf(f.task, QRN_LIINF_OPT_START_USEC, &l), QRN_RES_OK);
  CHECK_EQ(l, -1);
  CHECK_EQ(QRN_getlintinf(f.task, QRN_LIINF_MIP_NODES, &l), QRN_RES_OK);
  CHECK_EQ(l, 0);

  CHECK_EQ(QRN_getdouinf(f.task, QRN_DINF_COUNT, &d), QRN_RES_ERR_INF_INDEX);
  CHECK_EQ(QRN_getintinf(f.task, QRN_IINF_COUNT, &i), QRN_RES_ERR_INF_INDEX);
  CHECK_EQ(QRN_getlintinf(f.task, QRN_LIINF_COUNT, &l), QRN_RES_ERR_INF_INDEX);
  CHECK_EQ(QRN_getlintinf(f.task, -1, &l), QRN_RES_ERR_INF_INDEX);
  CHECK_EQ(l, 0);  // untouched by the refused call
}

TEST(info_problem_type_follows_the_data) {
  Info f;
  CHECK_EQ(f.probtype(), QRN_PROBTYPE_LINEAR);
  CHECK_EQ(QRN_appendvars(f.task, 3), QRN_RES_OK);
  CHECK_EQ(QRN_appendcons(f.task, 1), QRN_RES_OK);
  qrn_int32 sub[] = {0};
  double val[] = {1};
  CHECK_EQ(QRN_putqconk(f.task, 0, 1, sub, sub, val), QRN_RES_OK);
  CHECK_EQ(f.probtype(), QRN_PROBTYPE_QUADRATIC);
  CHECK_EQ(QRN_appendconeseq(f.task, QRN_CONE_QUAD, 0, 2, 1), QRN_RES_OK);
  CHECK_EQ(f.probtype(), QRN_PROBTYPE_MIXED);
  CHECK_EQ(QRN_putqconk(f.task, 0, 0, nullptr, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(f.probtype(), QRN_PROBTYPE_CONIC);
  CHECK_EQ(QRN_putqobjij(f.task, 2, 1, 0.5), QRN_RES_OK);
  CHECK_EQ(f.probtype(), QRN_PROBTYPE_MIXED);
}
