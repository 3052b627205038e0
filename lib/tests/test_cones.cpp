// Cones through the C interface.
#include <cmath>
#include <vector>

#include "check.hpp"
#include "quarn.h"

namespace {

using Ints = std::vector<qrn_int32>;

struct Fixture {
  qrn_env_t env = nullptr;
  qrn_task_t t = nullptr;
  explicit Fixture(int numvar) {
    QRN_makeenv(&env, nullptr);
    QRN_makeemptytask(env, &t);
    QRN_appendvars(t, numvar);
  }
  ~Fixture() {
    QRN_deletetask(&t);
    QRN_deleteenv(&env);
  }
  qrn_rescode append(qrn_int32 ct, Ints m) { return QRN_appendcone(t, ct, 0.0, (qrn_int32)m.size(), m.data()); }
  Ints members(qrn_int32 k) {
    qrn_int32 n = 0;
    CHECK_EQ(QRN_getnumconemem(t, k, &n), QRN_RES_OK);
    Ints m(n);
    CHECK_EQ(QRN_getcone(t, k, nullptr, nullptr, nullptr, m.data()), QRN_RES_OK);
    return m;
  }
  qrn_int32 count() {
    qrn_int32 n = -1;
    QRN_getnumcone(t, &n);
    return n;
  }
};

}  // namespace

TEST(cone_members_overlap_and_replacement) {
  Fixture f(5);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {}), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(f.append(QRN_CONE_RQUAD, {0}), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {1, 2, 1}), QRN_RES_ERR_CONE_REP_VAR);
  CHECK_EQ(QRN_appendcone(f.t, QRN_CONE_QUAD, NAN, 1, Ints{0}.data()), QRN_RES_ERR_CONE_PARAMETER);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {0, 1, 2}), QRN_RES_OK);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {2, 3}), QRN_RES_ERR_CONE_OVERLAP);
  // putcone may keep its own members and frees the ones it drops
  Ints c{2, 4};
  CHECK_EQ(QRN_putcone(f.t, 0, QRN_CONE_RQUAD, 1.0, 2, c.data()), QRN_RES_OK);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {1, 0}), QRN_RES_OK);
  CHECK_EQ(QRN_putcone(f.t, 1, QRN_CONE_QUAD, 0.0, 2, c.data()), QRN_RES_ERR_CONE_OVERLAP);
  // removing cone 0 frees its variables and renumbers cone 1
  CHECK_EQ(QRN_removecones(f.t, 1, Ints{0}.data()), QRN_RES_OK);
  CHECK(f.members(0) == Ints({1, 0}));
  CHECK_EQ(f.append(QRN_CONE_QUAD, c), QRN_RES_OK);
}

TEST(cones_over_sequences_are_all_or_nothing) {
  Fixture f(6);
  qrn_int32 ct[] = {QRN_CONE_QUAD, QRN_CONE_RQUAD}, nummem[] = {2, 3}, tooshort[] = {2, 1}, toolong[] = {3, 4};
  double par[] = {0.0, 0.5};
  CHECK_EQ(QRN_appendconesseq(f.t, 2, ct, par, tooshort, 0), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(QRN_appendconesseq(f.t, 2, ct, par, toolong, 0), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(f.count(), 0);
  CHECK_EQ(QRN_appendconesseq(f.t, 2, ct, par, nummem, 1), QRN_RES_OK);
  CHECK(f.members(1) == Ints({3, 4, 5}));
  CHECK_EQ(QRN_appendconeseq(f.t, QRN_CONE_QUAD, 0.0, 1, 0), QRN_RES_OK);
  CHECK_EQ(QRN_appendconeseq(f.t, QRN_CONE_QUAD, 0.0, 1, 2), QRN_RES_ERR_CONE_OVERLAP);
}

TEST(removing_variables_leaves_their_cones) {
  Fixture f(4);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {0, 3, 2}), QRN_RES_OK);
  CHECK_EQ(QRN_removevars(f.t, 2, Ints{0, 1}.data()), QRN_RES_OK);
  CHECK(f.members(0) == Ints({1, 0}));
  CHECK_EQ(f.append(QRN_CONE_QUAD, {1}), QRN_RES_ERR_CONE_OVERLAP);  // renumbered members still tracked
}
