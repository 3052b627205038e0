// Cones through the C interface.
#include <cmath>
#include <vector>

#include "fixture.hpp"

namespace {

using Ints = std::vector<qrn_int32>;

// A task with numvar variables.
struct Cones : Fixture {
  explicit Cones(int numvar) : Fixture(0, numvar) {}
  qrn_rescode append(qrn_int32 ct, Ints m) { return QRN_appendcone(task, ct, 0.0, (qrn_int32)m.size(), m.data()); }
  Ints members(qrn_int32 k) {
    qrn_int32 n = 0;
    CHECK_EQ(QRN_getnumconemem(task, k, &n), QRN_RES_OK);
    Ints m(n);
    CHECK_EQ(QRN_getcone(task, k, nullptr, nullptr, nullptr, m.data()), QRN_RES_OK);
    return m;
  }
  qrn_int32 count() {
    qrn_int32 n = -1;
    QRN_getnumcone(task, &n);
    return n;
  }
};

}  // namespace

TEST(cone_members_overlap_and_replacement) {
  Cones f(5);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {}), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(f.append(QRN_CONE_RQUAD, {0}), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {1, 2, 1}), QRN_RES_ERR_CONE_REP_VAR);
  CHECK_EQ(QRN_appendcone(f.task, QRN_CONE_QUAD, NAN, 1, Ints{0}.data()), QRN_RES_ERR_CONE_PARAMETER);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {0, 1, 2}), QRN_RES_OK);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {2, 3}), QRN_RES_ERR_CONE_OVERLAP);
  // putcone may keep its own members and frees the ones it drops
  Ints c{2, 4};
  CHECK_EQ(QRN_putcone(f.task, 0, QRN_CONE_RQUAD, 1.0, 2, c.data()), QRN_RES_OK);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {1, 0}), QRN_RES_OK);
  CHECK_EQ(QRN_putcone(f.task, 1, QRN_CONE_QUAD, 0.0, 2, c.data()), QRN_RES_ERR_CONE_OVERLAP);
  // removing cone 0 frees its variables and renumbers cone 1
  CHECK_EQ(QRN_removecones(f.task, 1, Ints{0}.data()), QRN_RES_OK);
  CHECK(f.members(0) == Ints({1, 0}));
  CHECK_EQ(f.append(QRN_CONE_QUAD, c), QRN_RES_OK);
}

TEST(cones_over_sequences_are_all_or_nothing) {
  Cones f(6);
  qrn_int32 ct[] = {QRN_CONE_QUAD, QRN_CONE_RQUAD}, nummem[] = {2, 3}, tooshort[] = {2, 1}, toolong[] = {3, 4};
  double par[] = {0.0, 0.5};
  CHECK_EQ(QRN_appendconesseq(f.task, 2, ct, par, tooshort, 0), QRN_RES_ERR_CONE_SIZE);
  CHECK_EQ(QRN_appendconesseq(f.task, 2, ct, par, toolong, 0), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(f.count(), 0);
  CHECK_EQ(QRN_appendconesseq(f.task, 2, ct, par, nummem, 1), QRN_RES_OK);
  CHECK(f.members(1) == Ints({3, 4, 5}));
  CHECK_EQ(QRN_appendconeseq(f.task, QRN_CONE_QUAD, 0.0, 1, 0), QRN_RES_OK);
  CHECK_EQ(QRN_appendconeseq(f.task, QRN_CONE_QUAD, 0.0, 1, 2), QRN_RES_ERR_CONE_OVERLAP);
}

TEST(removing_variables_leaves_their_cones) {
  Cones f(4);
  CHECK_EQ(f.append(QRN_CONE_QUAD, {0, 3, 2}), QRN_RES_OK);
  CHECK_EQ(QRN_removevars(f.task, 2, Ints{0, 1}.data()), QRN_RES_OK);
  CHECK(f.members(0) == Ints({1, 0}));
  CHECK_EQ(f.append(QRN_CONE_QUAD, {1}), QRN_RES_ERR_CONE_OVERLAP);  // renumbered members still tracked
}
