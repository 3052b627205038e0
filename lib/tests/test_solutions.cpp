// Solutions through the C interface: the store, objective values and
// violations against hand computations, certificates, structural changes.
#include <cmath>

#include "../src/core/task.hpp"  // to set statuses as the optimizer would
#include "fixture.hpp"

namespace {

const double inf = HUGE_VAL;

bool near(double a, double b) { return std::fabs(a - b) <= 1e-12 * (1.0 + std::fabs(b)); }

qrn::Solution &stored(qrn_task_t task, int whichsol) { return static_cast<qrn::Task *>(task)->sol[whichsol]; }

// minimize x0 + 2 x1 + 5
//   c0: x0 + x1 >= 1
//   c1: x0 - x1 <= 2
//   0 <= x0 <= 3, x1 >= 0
// Optimum x = (1, 0), y = (1, 0), slx = (0, 1); both objectives 6.
struct Lp : Fixture {
  Lp() : Fixture(2, 2) {
    qrn_int32 i[] = {0, 0, 1, 1}, j[] = {0, 1, 0, 1};
    double a[] = {1, 1, 1, -1};
    CHECK_EQ(QRN_putaijlist64(task, 4, i, j, a), QRN_RES_OK);
    CHECK_EQ(QRN_putconbound(task, 0, QRN_BK_LOWER, 1, inf), QRN_RES_OK);
    CHECK_EQ(QRN_putconbound(task, 1, QRN_BK_UPPER, -inf, 2), QRN_RES_OK);
    CHECK_EQ(QRN_putvarbound(task, 0, QRN_BK_RANGED, 0, 3), QRN_RES_OK);
    CHECK_EQ(QRN_putvarbound(task, 1, QRN_BK_LOWER, 0, inf), QRN_RES_OK);
    CHECK_EQ(QRN_putcj(task, 0, 1), QRN_RES_OK);
    CHECK_EQ(QRN_putcj(task, 1, 2), QRN_RES_OK);
    CHECK_EQ(QRN_putcfix(task, 5), QRN_RES_OK);
    qrn_int32 skc[] = {QRN_SK_AT_LOWER, QRN_SK_BASIS}, skx[] = {QRN_SK_BASIS, QRN_SK_AT_LOWER};
    double xc[] = {1, 1}, xx[] = {1, 0}, y[] = {1, 0}, slc[] = {1, 0}, zero[] = {0, 0}, slx[] = {0, 1};
    CHECK_EQ(QRN_putsolution(task, QRN_SOL_BAS, skc, skx, nullptr, xc, xx, y, slc, zero, slx, zero, zero),
             QRN_RES_OK);
  }
  double one(qrn_rescode (*f)(qrn_task_t, qrn_int32, qrn_int32, const qrn_int32 *, qrn_real *), qrn_int32 k) {
    double v = -1;
    CHECK_EQ(f(task, QRN_SOL_BAS, 1, &k, &v), QRN_RES_OK);
    return v;
  }
  std::vector<double> info() {
    std::vector<double> v(11, -1);
    CHECK_EQ(QRN_getsolutioninfo(task, QRN_SOL_BAS, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7], &v[8],
                                 &v[9], &v[10]),
             QRN_RES_OK);
    return v;
  }
};

}  // namespace

TEST(solution_optimal_lp_objectives_and_zero_violations) {
  Lp f;
  double p = 0, d = 0, rc[2] = {-1, -1};
  CHECK_EQ(QRN_getprimalobj(f.task, QRN_SOL_BAS, &p), QRN_RES_OK);
  CHECK_EQ(QRN_getdualobj(f.task, QRN_SOL_BAS, &d), QRN_RES_OK);
  CHECK_EQ(p, 6.0);
  CHECK_EQ(d, 6.0);
  CHECK_EQ(f.info(), (std::vector<double>{6, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0}));
  CHECK_EQ(QRN_getreducedcosts(f.task, QRN_SOL_BAS, 0, 2, rc), QRN_RES_OK);
  CHECK_EQ(rc[0], 0.0);
  CHECK_EQ(rc[1], 1.0);
  CHECK_EQ(QRN_getreducedcosts(f.task, QRN_SOL_BAS, 1, 3, rc), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_updatesolutioninfo(f.task, QRN_SOL_BAS), QRN_RES_OK);
  CHECK_EQ(QRN_getdouinf(f.task, QRN_DINF_BASIC_DUAL_OBJ, &d), QRN_RES_OK);
  CHECK_EQ(d, 6.0);
}

TEST(solution_violations_by_hand) {
  Lp f;
  // x = (3.5, -0.25): x0 above its upper bound 3 by 0.5, x1 below 0 by 0.25.
  // Activities (3.25, 3.75); stored xc = (3.25, 3): c1 above 2 by 1, and
  // xc1 differs from the activity by 0.75.
  double xx[] = {3.5, -0.25}, xc[] = {3.25, 3};
  CHECK_EQ(QRN_putxx(f.task, QRN_SOL_BAS, xx), QRN_RES_OK);
  CHECK_EQ(QRN_putxc(f.task, QRN_SOL_BAS, xc), QRN_RES_OK);
  CHECK_EQ(f.one(QRN_getpviolvar, 0), 0.5);
  CHECK_EQ(f.one(QRN_getpviolvar, 1), 0.25);
  CHECK_EQ(f.one(QRN_getpviolcon, 0), 0.0);
  CHECK_EQ(f.one(QRN_getpviolcon, 1), 1.0);
  CHECK_EQ(QRN_putxcslice(f.task, QRN_SOL_BAS, 1, 2, xc), QRN_RES_OK);  // xc1 = 3.25 vs activity 3.75
  CHECK_EQ(f.one(QRN_getpviolcon, 1), 1.25);
  double p = 0;
  CHECK_EQ(QRN_getprimalobj(f.task, QRN_SOL_BAS, &p), QRN_RES_OK);
  CHECK_EQ(p, 3.5 - 0.5 + 5);

  // Duals: y0 = 1 but slc0 - suc0 = 0.5; suc0 belongs to an infinite bound.
  CHECK_EQ(QRN_putconsolutioni(f.task, 0, QRN_SOL_BAS, QRN_SK_BASIS, 3.25, 1, 0.5), QRN_RES_OK);  // y0 = 0.5
  CHECK_EQ(QRN_putsolutionyi(f.task, 0, QRN_SOL_BAS, 1.0), QRN_RES_OK);
  CHECK_EQ(f.one(QRN_getdviolcon, 0), 0.5);
  // Variable 1: c1 - (A'y)_1 = 2 - 1 = 1; slx1 = -2 gives residual 3 and a sign violation 2.
  CHECK_EQ(QRN_putvarsolutionj(f.task, 1, QRN_SOL_BAS, QRN_SK_AT_LOWER, 0, -2, 0, 0), QRN_RES_OK);
  CHECK_EQ(f.one(QRN_getdviolvar, 1), 3.0);
  // snx of a variable in no cone must be 0.
  CHECK_EQ(QRN_putvarsolutionj(f.task, 1, QRN_SOL_BAS, QRN_SK_AT_LOWER, 0, 1, 0, 0.125), QRN_RES_OK);
  CHECK_EQ(f.one(QRN_getdviolvar, 1), 0.125);
  // Maximization reverses the signs asked of the dual values.
  CHECK_EQ(QRN_putobjsense(f.task, QRN_OBJECTIVE_SENSE_MAXIMIZE), QRN_RES_OK);
  CHECK_EQ(f.one(QRN_getdviolvar, 1), 1.0);
  auto v = f.info();
  CHECK_EQ(v[1], 1.25);  // largest pviolcon
  CHECK_EQ(v[2], 0.5);   // largest pviolvar

  qrn_int32 bad[] = {2};
  double out = 0;
  CHECK_EQ(QRN_getpviolcon(f.task, QRN_SOL_BAS, 1, bad, &out), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(QRN_getdviolvar(f.task, QRN_SOL_BAS, 1, bad, &out), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(QRN_getpviolcones(f.task, QRN_SOL_BAS, 1, bad, &out), QRN_RES_ERR_INDEX_CONE);
  CHECK_EQ(QRN_getpviolcon(f.task, QRN_SOL_ITR, 1, bad, &out), QRN_RES_ERR_SOL_UNDEFINED);
}

// minimize x0^2 + x1^2 - 2 x0 - 4 x1 subject to x0 + x1 = 1: x = (0, 1),
// y = -2, objective -3 (Q = 2I, so 1/2 x'Qx = x0^2 + x1^2).
TEST(solution_qp_objectives_by_hand) {
  Fixture f(1, 2);
  qrn_int32 i[] = {0, 1}, sub[] = {0, 1};
  double q[] = {2, 2}, a[] = {1, 1};
  CHECK_EQ(QRN_putqobj(f.task, 2, i, i, q), QRN_RES_OK);
  CHECK_EQ(QRN_putarow(f.task, 0, 2, sub, a), QRN_RES_OK);
  CHECK_EQ(QRN_putconbound(f.task, 0, QRN_BK_FIXED, 1, 1), QRN_RES_OK);
  CHECK_EQ(QRN_putcj(f.task, 0, -2), QRN_RES_OK);
  CHECK_EQ(QRN_putcj(f.task, 1, -4), QRN_RES_OK);
  double xx[] = {0, 1}, xc[] = {1}, y[] = {-2}, suc[] = {2}, zero[] = {0, 0};
  CHECK_EQ(QRN_putsolution(f.task, QRN_SOL_ITR, nullptr, nullptr, nullptr, xc, xx, y, zero, suc, zero, zero, zero),
           QRN_RES_OK);
  double p = 0, d = 0, viol[2] = {-1, -1};
  CHECK_EQ(QRN_getprimalobj(f.task, QRN_SOL_ITR, &p), QRN_RES_OK);
  CHECK_EQ(QRN_getdualobj(f.task, QRN_SOL_ITR, &d), QRN_RES_OK);
  CHECK_EQ(p, -3.0);
  CHECK_EQ(d, -3.0);
  CHECK_EQ(QRN_getdviolvar(f.task, QRN_SOL_ITR, 2, sub, viol), QRN_RES_OK);
  CHECK_EQ(viol[0], 0.0);
  CHECK_EQ(viol[1], 0.0);
  // A quadratic term in the constraint enters its activity: 1/2 * 2 * x1^2 = 1.
  qrn_int32 one[] = {1};
  double two[] = {2};
  CHECK_EQ(QRN_putqconk(f.task, 0, 1, one, one, two), QRN_RES_OK);
  CHECK_EQ(QRN_getpviolcon(f.task, QRN_SOL_ITR, 1, sub, viol), QRN_RES_OK);
  CHECK_EQ(viol[0], 1.0);
}

TEST(solution_cone_distances) {
  Fixture f(0, 6);
  qrn_int32 quad[] = {0, 1, 2}, rquad[] = {3, 4, 5}, both[] = {0, 1};
  CHECK_EQ(QRN_appendcone(f.task, QRN_CONE_QUAD, 0, 3, quad), QRN_RES_OK);
  CHECK_EQ(QRN_appendcone(f.task, QRN_CONE_RQUAD, 0, 3, rquad), QRN_RES_OK);
  // (1, 3, 4): ||(3, 4)|| = 5 > 1, distance (5 - 1)/sqrt 2. (1, 1, 2): 2 < 4,
  // distance sqrt 2 - 1 (u = sqrt 2, ||(v, x2)|| = 2).
  double xx[] = {1, 3, 4, 1, 1, 2}, viol[2];
  CHECK_EQ(QRN_putxx(f.task, QRN_SOL_ITR, xx), QRN_RES_OK);
  CHECK_EQ(QRN_getpviolcones(f.task, QRN_SOL_ITR, 2, both, viol), QRN_RES_OK);
  CHECK(near(viol[0], 4 / std::sqrt(2.0)));
  CHECK(near(viol[1], std::sqrt(2.0) - 1));
  // (-6, 3, 4): nearest point is the apex.
  double far[] = {-6};
  CHECK_EQ(QRN_putxxslice(f.task, QRN_SOL_ITR, 0, 1, far), QRN_RES_OK);
  CHECK_EQ(QRN_getpviolcones(f.task, QRN_SOL_ITR, 1, both, viol), QRN_RES_OK);
  CHECK(near(viol[0], std::sqrt(61.0)));
  // Dual: snx of members in the (self-)dual cone; sign reversed for maximization.
  double snx[] = {5, 3, 4, 1, 1, 0};
  CHECK_EQ(QRN_putsnx(f.task, QRN_SOL_ITR, snx), QRN_RES_OK);
  CHECK_EQ(QRN_getdviolcones(f.task, QRN_SOL_ITR, 2, both, viol), QRN_RES_OK);
  CHECK_EQ(viol[0], 0.0);
  CHECK_EQ(viol[1], 0.0);
  CHECK_EQ(QRN_putobjsense(f.task, QRN_OBJECTIVE_SENSE_MAXIMIZE), QRN_RES_OK);
  CHECK_EQ(QRN_getdviolcones(f.task, QRN_SOL_ITR, 1, both, viol), QRN_RES_OK);
  CHECK(near(viol[0], std::hypot(5.0, 5.0)));
}

// x0 >= 1 and c0: x0 <= 0 are infeasible; suc0 = 1, slx0 = 1 certify it.
TEST(solution_certificates_use_the_homogeneous_problem) {
  Fixture f(1, 1);
  qrn_int32 sub[] = {0};
  double one[] = {1};
  CHECK_EQ(QRN_putarow(f.task, 0, 1, sub, one), QRN_RES_OK);
  CHECK_EQ(QRN_putconbound(f.task, 0, QRN_BK_UPPER, -inf, 0), QRN_RES_OK);
  CHECK_EQ(QRN_putvarbound(f.task, 0, QRN_BK_LOWER, 1, inf), QRN_RES_OK);
  CHECK_EQ(QRN_putcj(f.task, 0, 5), QRN_RES_OK);
  CHECK_EQ(QRN_putcfix(f.task, 7), QRN_RES_OK);
  CHECK_EQ(QRN_putconsolutioni(f.task, 0, QRN_SOL_BAS, QRN_SK_AT_UPPER, 0, 0, 1), QRN_RES_OK);
  CHECK_EQ(QRN_putvarsolutionj(f.task, 0, QRN_SOL_BAS, QRN_SK_AT_LOWER, 1, 1, 0, 0), QRN_RES_OK);
  double d = 0, viol = -1;
  CHECK_EQ(QRN_getdviolvar(f.task, QRN_SOL_BAS, 1, sub, &viol), QRN_RES_OK);
  CHECK_EQ(viol, 5.0);  // as a dual solution, c is not balanced
  stored(f.task, QRN_SOL_BAS).solsta = QRN_SOL_STA_PRIM_INFEAS_CER;
  CHECK_EQ(QRN_getdviolvar(f.task, QRN_SOL_BAS, 1, sub, &viol), QRN_RES_OK);
  CHECK_EQ(viol, 0.0);
  CHECK_EQ(QRN_getdualobj(f.task, QRN_SOL_BAS, &d), QRN_RES_OK);
  CHECK_EQ(d, 1.0);  // slx0 * 1, no cfix
  // A ray: minimize -x0 with x0 >= 1: x = 1 is a ray of the homogeneous problem (bound 0).
  CHECK_EQ(QRN_putcj(f.task, 0, -1), QRN_RES_OK);
  CHECK_EQ(QRN_putconbound(f.task, 0, QRN_BK_FREE, -inf, inf), QRN_RES_OK);
  CHECK_EQ(QRN_putxx(f.task, QRN_SOL_ITR, one), QRN_RES_OK);
  CHECK_EQ(QRN_putxc(f.task, QRN_SOL_ITR, one), QRN_RES_OK);
  stored(f.task, QRN_SOL_ITR).solsta = QRN_SOL_STA_DUAL_INFEAS_CER;
  CHECK_EQ(QRN_getprimalobj(f.task, QRN_SOL_ITR, &d), QRN_RES_OK);
  CHECK_EQ(d, -1.0);
  CHECK_EQ(QRN_getpviolvar(f.task, QRN_SOL_ITR, 1, sub, &viol), QRN_RES_OK);
  CHECK_EQ(viol, 0.0);
  stored(f.task, QRN_SOL_ITR).xx[0] = -0.5;
  CHECK_EQ(QRN_getpviolvar(f.task, QRN_SOL_ITR, 1, sub, &viol), QRN_RES_OK);
  CHECK_EQ(viol, 0.5);  // below the homogeneous bound 0
}

TEST(solution_store_definition_statuses_and_refusals) {
  Fixture f(2, 3);
  qrn_int32 isdef = -1, sk[3] = {-1, -1, -1}, sta = -1;
  double x[3] = {-1, -1, -1};
  CHECK_EQ(QRN_solutiondef(f.task, QRN_SOL_ITG, &isdef), QRN_RES_OK);
  CHECK_EQ(isdef, 0);
  CHECK_EQ(QRN_getxx(f.task, QRN_SOL_ITG, x), QRN_RES_ERR_SOL_UNDEFINED);
  CHECK_EQ(QRN_getsolsta(f.task, QRN_SOL_ITG, &sta), QRN_RES_ERR_SOL_UNDEFINED);
  CHECK_EQ(QRN_getxx(f.task, 3, x), QRN_RES_ERR_SOL_WHICH);
  CHECK_EQ(QRN_solutiondef(f.task, -1, &isdef), QRN_RES_ERR_SOL_WHICH);
  CHECK_EQ(QRN_deletesolution(f.task, 7), QRN_RES_ERR_SOL_WHICH);

  // Refused writes change nothing, not even the defined flag.
  double nan[] = {0, NAN, 0};
  qrn_int32 badkey[] = {0, QRN_SK_COUNT};
  CHECK_EQ(QRN_putxx(f.task, QRN_SOL_ITG, nan), QRN_RES_ERR_VALUE_NAN);
  CHECK_EQ(QRN_putskc(f.task, QRN_SOL_ITG, badkey), QRN_RES_ERR_SOL_KEY);
  CHECK_EQ(QRN_putconsolutioni(f.task, 2, QRN_SOL_ITG, 0, 0, 0, 0), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(QRN_putxxslice(f.task, QRN_SOL_ITG, 2, 4, x), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_solutiondef(f.task, QRN_SOL_ITG, &isdef), QRN_RES_OK);
  CHECK_EQ(isdef, 0);

  // The first writer defines the solution: unknown keys, zeros elsewhere.
  double two[] = {2, 3};
  CHECK_EQ(QRN_putxxslice(f.task, QRN_SOL_ITG, 1, 3, two), QRN_RES_OK);
  CHECK_EQ(QRN_getxx(f.task, QRN_SOL_ITG, x), QRN_RES_OK);
  CHECK_EQ(std::vector<double>(x, x + 3), (std::vector<double>{0, 2, 3}));
  CHECK_EQ(QRN_getskx(f.task, QRN_SOL_ITG, sk), QRN_RES_OK);
  CHECK_EQ(std::vector<qrn_int32>(sk, sk + 3), (std::vector<qrn_int32>(3, QRN_SK_UNKNOWN)));
  CHECK_EQ(QRN_getsolsta(f.task, QRN_SOL_ITG, &sta), QRN_RES_OK);
  CHECK_EQ(sta, QRN_SOL_STA_UNKNOWN);

  // A writer forgets the statuses the optimizer left.
  stored(f.task, QRN_SOL_ITG).solsta = QRN_SOL_STA_INTEGER_OPTIMAL;
  stored(f.task, QRN_SOL_ITG).prosta = QRN_PRO_STA_PRIM_FEAS;
  qrn_int32 pro = -1;
  CHECK_EQ(QRN_getsolution(f.task, QRN_SOL_ITG, &pro, &sta, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr, nullptr),
           QRN_RES_OK);
  CHECK_EQ(std::make_pair(pro, sta), std::make_pair(qrn_int32(QRN_PRO_STA_PRIM_FEAS), qrn_int32(QRN_SOL_STA_INTEGER_OPTIMAL)));
  CHECK_EQ(QRN_putsolutionyi(f.task, 1, QRN_SOL_ITG, 4), QRN_RES_OK);
  CHECK_EQ(QRN_getprosta(f.task, QRN_SOL_ITG, &pro), QRN_RES_OK);
  CHECK_EQ(pro, QRN_PRO_STA_UNKNOWN);

  double vals[2];
  CHECK_EQ(QRN_getsolutionslice(f.task, QRN_SOL_ITG, QRN_SOL_ITEM_Y, 0, 2, vals), QRN_RES_OK);
  CHECK_EQ(vals[1], 4.0);
  CHECK_EQ(QRN_getsolutionslice(f.task, QRN_SOL_ITG, QRN_SOL_ITEM_XX, 2, 3, vals), QRN_RES_OK);
  CHECK_EQ(vals[0], 3.0);
  CHECK_EQ(QRN_getsolutionslice(f.task, QRN_SOL_ITG, QRN_SOL_ITEM_SLC, 1, 3, vals), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_getsolutionslice(f.task, QRN_SOL_ITG, QRN_SOL_ITEM_COUNT, 0, 1, vals), QRN_RES_ERR_SOL_ITEM);
  CHECK_EQ(QRN_getxcslice(f.task, QRN_SOL_ITG, 1, 0, vals), QRN_RES_ERR_SLICE);

  CHECK_EQ(QRN_deletesolution(f.task, QRN_SOL_ITG), QRN_RES_OK);
  CHECK_EQ(QRN_solutiondef(f.task, QRN_SOL_ITG, &isdef), QRN_RES_OK);
  CHECK_EQ(isdef, 0);
  CHECK_EQ(QRN_getprimalobj(f.task, QRN_SOL_ITG, vals), QRN_RES_ERR_SOL_UNDEFINED);
}

TEST(solution_follows_appended_and_removed_items) {
  Fixture f(3, 3);
  double xx[] = {10, 11, 12}, xc[] = {20, 21, 22};
  qrn_int32 skc[] = {QRN_SK_BASIS, QRN_SK_AT_LOWER, QRN_SK_AT_UPPER};
  CHECK_EQ(QRN_putxx(f.task, QRN_SOL_BAS, xx), QRN_RES_OK);
  CHECK_EQ(QRN_putxc(f.task, QRN_SOL_BAS, xc), QRN_RES_OK);
  CHECK_EQ(QRN_putskc(f.task, QRN_SOL_BAS, skc), QRN_RES_OK);
  stored(f.task, QRN_SOL_BAS).solsta = QRN_SOL_STA_OPTIMAL;

  qrn_int32 sta = -1, one[] = {1}, k[4];
  CHECK_EQ(QRN_appendcons(f.task, 0), QRN_RES_OK);  // no change, statuses stay
  CHECK_EQ(QRN_getsolsta(f.task, QRN_SOL_BAS, &sta), QRN_RES_OK);
  CHECK_EQ(sta, QRN_SOL_STA_OPTIMAL);
  CHECK_EQ(QRN_removecons(f.task, 1, one), QRN_RES_OK);
  CHECK_EQ(QRN_appendcons(f.task, 2), QRN_RES_OK);
  CHECK_EQ(QRN_removevars(f.task, 1, one), QRN_RES_OK);
  CHECK_EQ(QRN_getsolsta(f.task, QRN_SOL_BAS, &sta), QRN_RES_OK);
  CHECK_EQ(sta, QRN_SOL_STA_UNKNOWN);
  double x[4];
  CHECK_EQ(QRN_getxx(f.task, QRN_SOL_BAS, x), QRN_RES_OK);
  CHECK_EQ(std::vector<double>(x, x + 2), (std::vector<double>{10, 12}));
  CHECK_EQ(QRN_getxc(f.task, QRN_SOL_BAS, x), QRN_RES_OK);
  CHECK_EQ(std::vector<double>(x, x + 4), (std::vector<double>{20, 22, 0, 0}));
  CHECK_EQ(QRN_getskc(f.task, QRN_SOL_BAS, k), QRN_RES_OK);
  CHECK_EQ(std::vector<qrn_int32>(k, k + 4),
           (std::vector<qrn_int32>{QRN_SK_BASIS, QRN_SK_AT_UPPER, QRN_SK_UNKNOWN, QRN_SK_UNKNOWN}));
  // A cone appended after the solution reads as an unknown key.
  qrn_int32 mem[] = {0};
  CHECK_EQ(QRN_appendcone(f.task, QRN_CONE_QUAD, 0, 1, mem), QRN_RES_OK);
  k[0] = -1;
  CHECK_EQ(QRN_getskn(f.task, QRN_SOL_BAS, k), QRN_RES_OK);
  CHECK_EQ(k[0], QRN_SK_UNKNOWN);
}

TEST(solution_analysis_reaches_its_stream) {
  Lp f;
  Capture log;
  CHECK_EQ(QRN_linkfunctotaskstream(f.task, QRN_STREAM_MSG, &log, Capture::take), QRN_RES_OK);
  CHECK_EQ(QRN_analyzesolution(f.task, QRN_STREAM_MSG, QRN_SOL_BAS), QRN_RES_OK);
  CHECK(log.text.find("basic solution") != std::string::npos);
  CHECK(log.text.find("primal objective 6.000000000000e+00") != std::string::npos);
  CHECK_EQ(QRN_analyzesolution(f.task, 4, QRN_SOL_BAS), QRN_RES_ERR_STREAM);
  CHECK_EQ(QRN_analyzesolution(f.task, QRN_STREAM_MSG, QRN_SOL_ITR), QRN_RES_ERR_SOL_UNDEFINED);
}
