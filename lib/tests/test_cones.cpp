// Cones through the C interface.
#include <cmath>
#include <vector>

#include "check.hpp"
#include "quarn.h"

namespace {

struct Fixture {
  qrn_env_t env = nullptr;
  qrn_task_t task = nullptr;
  explicit Fixture(int numvar) {
    QRN_makeenv(&env, nullptr);
    QRN_makeemptytask(env, &task);
    QRN_appendvars(task, numvar);
  }
  ~Fixture() {
    QRN_deletetask(&task);
    QRN_deleteenv(&env);
  }
};

qrn_int32 numcone(qrn_task_t t) {
  qrn_int32 n = -1;
  CHECK_EQ(QRN_getnumcone(t, &n), QRN_RES_OK);
  return n;
}

std::vector<qrn_int32> members(qrn_task_t t, qrn_int32 k) {
  qrn_int32 n = 0;
  CHECK_EQ(QRN_getnumconemem(t, k, &n), QRN_RES_OK);
  std::vector<qrn_int32> m(n);
  CHECK_EQ(QRN_getcone(t, k, nullptr, nullptr, nullptr, m.data()), QRN_RES_OK);
  return m;
}

}  // namespace

TEST(cone_shape_is_checked) {
  Fixture f(4);
  qrn_task_t t = f.task;
  qrn_int32 one[] = {0};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 0, nullptr), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_RQUAD, 0.0, 1, one), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(QRN_appendcone(t, 9, 0.0, 1, one), QRN_RES_ERR_CONE_TYPE);
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, NAN, 1, one), QRN_RES_ERR_CONE_PARAMETER);
  qrn_int32 rep[] = {1, 2, 1};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 3, rep), QRN_RES_ERR_CONE_REP_VAR);
  qrn_int32 out[] = {0, 4};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 2, out), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(numcone(t), 0);
  // the parameter is stored as given, infinities included
  qrn_int32 two[] = {3, 1};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_RQUAD, HUGE_VAL, 2, two), QRN_RES_OK);
  qrn_int32 ct = -1, n = -1;
  double par = 0;
  CHECK_EQ(QRN_getconeinfo(t, 0, &ct, &par, &n), QRN_RES_OK);
  CHECK_EQ(ct, QRN_CONE_RQUAD);
  CHECK_EQ(par, HUGE_VAL);
  CHECK_EQ(n, 2);
  CHECK(members(t, 0) == std::vector<qrn_int32>({3, 1}));  // order kept
  CHECK_EQ(QRN_getconeinfo(t, 1, &ct, &par, &n), QRN_RES_ERR_INDEX_CONE);
}

TEST(cone_overlap_and_replacement) {
  Fixture f(5);
  qrn_task_t t = f.task;
  qrn_int32 a[] = {0, 1, 2}, b[] = {2, 3};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 3, a), QRN_RES_OK);
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 2, b), QRN_RES_ERR_CONE_OVERLAP);
  CHECK_EQ(QRN_appendconeseq(t, QRN_CONE_QUAD, 0.0, 2, 2), QRN_RES_ERR_CONE_OVERLAP);
  // putcone may keep its own members and frees the ones it drops
  qrn_int32 c[] = {2, 4};
  CHECK_EQ(QRN_putcone(t, 0, QRN_CONE_RQUAD, 1.0, 2, c), QRN_RES_OK);
  qrn_int32 d[] = {0, 1};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 2, d), QRN_RES_OK);
  CHECK_EQ(QRN_putcone(t, 1, QRN_CONE_QUAD, 0.0, 2, c), QRN_RES_ERR_CONE_OVERLAP);
  CHECK_EQ(QRN_putcone(t, 2, QRN_CONE_QUAD, 0.0, 2, c), QRN_RES_ERR_INDEX_CONE);
  // removing cone 0 frees its variables and renumbers cone 1
  qrn_int32 first[] = {0};
  CHECK_EQ(QRN_removecones(t, 1, first), QRN_RES_OK);
  CHECK_EQ(numcone(t), 1);
  CHECK(members(t, 0) == std::vector<qrn_int32>({0, 1}));
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 2, c), QRN_RES_OK);
  CHECK_EQ(QRN_putcone(t, 0, QRN_CONE_QUAD, 0.0, 1, c), QRN_RES_ERR_CONE_OVERLAP);  // 2 is now in cone 1
  qrn_int32 twice[] = {0, 0};
  CHECK_EQ(QRN_removecones(t, 2, twice), QRN_RES_ERR_DUP_INDEX);
}

TEST(cones_over_sequences) {
  Fixture f(6);
  qrn_task_t t = f.task;
  qrn_int32 ct[] = {QRN_CONE_QUAD, QRN_CONE_RQUAD}, nummem[] = {2, 3};
  double par[] = {0.0, 0.5};
  CHECK_EQ(QRN_appendconesseq(t, 2, ct, par, nummem, 1), QRN_RES_OK);
  CHECK(members(t, 0) == std::vector<qrn_int32>({1, 2}));
  CHECK(members(t, 1) == std::vector<qrn_int32>({3, 4, 5}));
  // a failing later cone appends none of them
  CHECK_EQ(QRN_removecones(t, 2, std::vector<qrn_int32>{0, 1}.data()), QRN_RES_OK);
  qrn_int32 tooshort[] = {2, 1};
  CHECK_EQ(QRN_appendconesseq(t, 2, ct, par, tooshort, 0), QRN_RES_ERR_CONE_SIZE);
  qrn_int32 toolong[] = {3, 4};
  CHECK_EQ(QRN_appendconesseq(t, 2, ct, par, toolong, 0), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(QRN_appendconeseq(t, QRN_CONE_QUAD, 0.0, 1, -1), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(numcone(t), 0);
}

TEST(removing_variables_leaves_their_cones) {
  Fixture f(4);
  qrn_task_t t = f.task;
  qrn_int32 a[] = {0, 3, 2};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 3, a), QRN_RES_OK);
  qrn_int32 gone[] = {0, 1};
  CHECK_EQ(QRN_removevars(t, 2, gone), QRN_RES_OK);
  CHECK(members(t, 0) == std::vector<qrn_int32>({1, 0}));
  // the freed and renumbered variables are tracked: 0 and 1 are taken
  qrn_int32 b[] = {1};
  CHECK_EQ(QRN_appendcone(t, QRN_CONE_QUAD, 0.0, 1, b), QRN_RES_ERR_CONE_OVERLAP);
}

TEST(cone_capacity_and_partial_reads) {
  Fixture f(3);
  qrn_task_t t = f.task;
  CHECK_EQ(QRN_appendconeseq(t, QRN_CONE_QUAD, 2.5, 3, 0), QRN_RES_OK);
  qrn_int32 cap = -1;
  CHECK_EQ(QRN_getmaxnumcone(t, &cap), QRN_RES_OK);
  CHECK(cap >= 1);
  CHECK_EQ(QRN_putmaxnumcone(t, 0), QRN_RES_ERR_MAX_CAPACITY);
  CHECK_EQ(QRN_putmaxnumcone(t, 10), QRN_RES_OK);
  CHECK_EQ(QRN_getmaxnumcone(t, &cap), QRN_RES_OK);
  CHECK_EQ(cap, 10);
  qrn_int32 ct = -1, n = -1;
  double par = 0;
  CHECK_EQ(QRN_getcone(t, 0, &ct, &par, &n, nullptr), QRN_RES_OK);  // no members written
  CHECK_EQ(par, 2.5);
  CHECK_EQ(n, 3);
}
