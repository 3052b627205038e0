// The optimizer: statuses, solutions and certificates as stored, checked
// numerically from the stored vectors; refusals; MIP; QP; callbacks and log.
#include <algorithm>
#include <string>
#include <thread>

#include "opt_fixture.hpp"

namespace {

int optimize(qrn_task_t task, qrn_rescode *response = nullptr) {
  qrn_int32 trm = -1;
  const qrn_rescode r = QRN_optimizetrm(task, &trm);
  if (response != nullptr) *response = r;
  else CHECK_EQ(r, QRN_RES_OK);
  return trm;
}

void set_int(qrn_task_t task, int param, int value) { CHECK_EQ(QRN_putintparam(task, param, value), QRN_RES_OK); }

// The small LP's optimum, in either sense, checked from the stored vectors:
// feasibility, the dual identity c - A'y - slx + sux = 0, signs, equal objectives.
void check_small_optimum(const Lp &lp, const qrn::Solution &s, bool keys) {
  CHECK(s.defined);
  CHECK_EQ(s.prosta, QRN_PRO_STA_PRIM_AND_DUAL_FEAS);
  CHECK_EQ(s.solsta, QRN_SOL_STA_OPTIMAL);
  CHECK(close(s.xx[0], 3) && close(s.xx[1], 1) && std::fabs(s.xx[2]) < 1e-6);
  CHECK(close(s.xc[0], 4) && close(s.xc[1], 6));
  auto r = at_y(lp, s.y);
  for (size_t j = 0; j < lp.c.size(); ++j) CHECK(std::fabs(lp.c[j] - r[j] - s.slx[j] + s.sux[j]) < 1e-6);
  check_signs(lp, s);
  const double obj = dot(lp.c, s.xx);
  CHECK(close(obj, lp.maximize ? 11 : -11));
  CHECK(close(dual_value(lp, s), obj));
  CHECK(close(s.y[0], lp.maximize ? 2 : -2) && std::fabs(s.y[1]) < 1e-6);
  if (keys) {
    CHECK_EQ(s.skx, (std::vector<qrn_int32>{QRN_SK_AT_UPPER, QRN_SK_BASIS, QRN_SK_AT_LOWER}));
    CHECK_EQ(s.skc, (std::vector<qrn_int32>{QRN_SK_AT_UPPER, QRN_SK_BASIS}));
  }
}

}  // namespace

TEST(optimizer_small_lp_every_algorithm_and_sense) {
  for (bool maximize : {false, true})
    for (int alg : {QRN_ALGORITHM_AUTO, QRN_ALGORITHM_PRIMAL_SIMPLEX, QRN_ALGORITHM_DUAL_SIMPLEX, QRN_ALGORITHM_IPM})
      for (int presolve : {QRN_ON, QRN_OFF}) {
        Fixture f;
        const Lp lp = small_lp(maximize);
        load(f.task, lp);
        set_int(f.task, QRN_IPAR_ALGORITHM, alg);
        set_int(f.task, QRN_IPAR_PRESOLVE, presolve);
        CHECK_EQ(optimize(f.task), QRN_RES_OK);
        if (alg == QRN_ALGORITHM_IPM) {
          check_small_optimum(lp, sol(f.task, QRN_SOL_ITR), false);
          check_small_optimum(lp, sol(f.task, QRN_SOL_BAS), true);  // crossover is on by default
        } else {
          CHECK(!sol(f.task, QRN_SOL_ITR).defined);
          check_small_optimum(lp, sol(f.task, QRN_SOL_BAS), true);
        }
        double obj = 0;
        CHECK_EQ(QRN_getdouinf(f.task, QRN_DINF_BASIC_PRIMAL_OBJ, &obj), QRN_RES_OK);
        CHECK(close(obj, maximize ? 11 : -11));
      }
}

TEST(optimizer_ipm_without_crossover_gives_only_the_interior_solution) {
  Fixture f;
  load(f.task, small_lp());
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_IPM);
  set_int(f.task, QRN_IPAR_CROSSOVER, QRN_OFF);
  CHECK_EQ(optimize(f.task), QRN_RES_OK);
  check_small_optimum(small_lp(), sol(f.task, QRN_SOL_ITR), false);
  CHECK(!sol(f.task, QRN_SOL_BAS).defined);
  qrn_int32 it = 0;
  QRN_getintinf(f.task, QRN_IINF_IPM_ITER, &it);
  CHECK(it > 0);
}

TEST(optimizer_infeasible_lp_gives_a_farkas_certificate) {
  for (bool maximize : {false, true})
    for (int alg : {QRN_ALGORITHM_DUAL_SIMPLEX, QRN_ALGORITHM_PRIMAL_SIMPLEX, QRN_ALGORITHM_IPM})
      for (int presolve : {QRN_ON, QRN_OFF}) {
        Fixture f;
        const Lp lp = infeasible_lp(maximize);
        load(f.task, lp);
        set_int(f.task, QRN_IPAR_ALGORITHM, alg);
        set_int(f.task, QRN_IPAR_PRESOLVE, presolve);
        CHECK_EQ(optimize(f.task), QRN_RES_OK);
        const auto &s = sol(f.task, alg == QRN_ALGORITHM_IPM ? QRN_SOL_ITR : QRN_SOL_BAS);
        CHECK(s.defined);
        CHECK_EQ(s.prosta, QRN_PRO_STA_PRIM_INFEAS);
        CHECK_EQ(s.solsta, QRN_SOL_STA_PRIM_INFEAS_CER);
        // A'y + slx - sux = 0, signs of the sense, and a dual value of that sign.
        auto r = at_y(lp, s.y);
        for (size_t j = 0; j < r.size(); ++j) CHECK(std::fabs(r[j] + s.slx[j] - s.sux[j]) < 1e-9);
        check_signs(lp, s);
        const double value = dual_value(lp, s);
        CHECK(maximize ? value < -1e-6 : value > 1e-6);
        CHECK(std::fabs(s.y[2]) < 1e-12);  // the harmless row carries nothing
      }
}

TEST(optimizer_unbounded_lp_gives_a_ray) {
  for (int alg : {QRN_ALGORITHM_DUAL_SIMPLEX, QRN_ALGORITHM_PRIMAL_SIMPLEX, QRN_ALGORITHM_IPM}) {
    Fixture f;
    const Lp lp = unbounded_lp();
    load(f.task, lp);
    set_int(f.task, QRN_IPAR_ALGORITHM, alg);
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    const auto &s = sol(f.task, alg == QRN_ALGORITHM_IPM ? QRN_SOL_ITR : QRN_SOL_BAS);
    CHECK_EQ(s.prosta, QRN_PRO_STA_DUAL_INFEAS);
    CHECK_EQ(s.solsta, QRN_SOL_STA_DUAL_INFEAS_CER);
    const auto &d = s.xx;
    CHECK(d[0] >= -1e-12 && d[1] >= -1e-12);             // x >= 0 recedes
    CHECK(d[0] - d[1] <= 1e-9);                          // x - y <= 1 recedes
    CHECK(close(s.xc[0], d[0] - d[1], 1e-12));
    CHECK(dot(lp.c, d) < -1e-6);                         // and improves
  }
}

TEST(optimizer_convex_qp_against_hand_solution) {
  // min x^2 + y^2 - x - y  s.t. x + y <= 0.5: x = y = 0.25, objective -0.375,
  // y_0 = -0.5 from -1 + 2x - y_0 = 0.
  for (bool maximize : {false, true}) {
    Fixture f;
    const double s = maximize ? -1 : 1;
    Lp lp;
    lp.a = {{1, 1}};
    lp.c = {-s, -s};
    lp.maximize = maximize;
    lp.bkc = {QRN_BK_UPPER};
    lp.blc = {-INF};
    lp.buc = {0.5};
    lp.bkx = {QRN_BK_FREE, QRN_BK_FREE};
    lp.blx = {-INF, -INF};
    lp.bux = {INF, INF};
    load(f.task, lp);
    const qrn_int32 qi[] = {0, 1}, qj[] = {0, 1};
    const double qv[] = {2 * s, 2 * s};
    CHECK_EQ(QRN_putqobj(f.task, 2, qi, qj, qv), QRN_RES_OK);
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    const auto &sl = sol(f.task, QRN_SOL_ITR);
    CHECK_EQ(sl.solsta, QRN_SOL_STA_OPTIMAL);
    CHECK(close(sl.xx[0], 0.25) && close(sl.xx[1], 0.25));
    CHECK(close(sl.y[0], -0.5 * s, 1e-5));
    CHECK(close(sl.suc[0], 0.5 * s, 1e-5));
    double obj = 0, dobj = 0;
    QRN_getdouinf(f.task, QRN_DINF_INTERIOR_PRIMAL_OBJ, &obj);
    QRN_getdouinf(f.task, QRN_DINF_INTERIOR_DUAL_OBJ, &dobj);
    CHECK(close(obj, -0.375 * s, 1e-6) && close(dobj, -0.375 * s, 1e-5));
    CHECK(!sol(f.task, QRN_SOL_BAS).defined);
  }
}

TEST(optimizer_infeasible_and_unbounded_qp_get_certificates) {
  {  // x + y >= 5, x + y <= 3 with min x^2 + y^2
    Fixture f;
    const Lp lp = infeasible_lp();
    load(f.task, lp);
    const qrn_int32 qi[] = {0, 1};
    const double qv[] = {2, 2};
    CHECK_EQ(QRN_putqobj(f.task, 2, qi, qi, qv), QRN_RES_OK);
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    const auto &s = sol(f.task, QRN_SOL_ITR);
    CHECK_EQ(s.solsta, QRN_SOL_STA_PRIM_INFEAS_CER);
    CHECK(dual_value(lp, s) > 1e-6);
  }
  {  // min -x + y^2, y - x <= 1 over x, y >= 0: d = (1, 0) with Q d = 0
    Fixture f;
    Lp lp = unbounded_lp();
    lp.a = {{-1, 1}};
    lp.c = {-1, 0};
    load(f.task, lp);
    const qrn_int32 qi[] = {1};
    const double qv[] = {2};
    CHECK_EQ(QRN_putqobj(f.task, 1, qi, qi, qv), QRN_RES_OK);
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    const auto &s = sol(f.task, QRN_SOL_ITR);
    CHECK_EQ(s.solsta, QRN_SOL_STA_DUAL_INFEAS_CER);
    CHECK(s.xx[0] > 0 && std::fabs(s.xx[1]) < 1e-9);
  }
}

TEST(optimizer_refusals_leave_the_task_as_it_was) {
  Fixture f;
  load(f.task, small_lp());
  CHECK_EQ(optimize(f.task), QRN_RES_OK);
  qrn_rescode r;
  // simplex on a quadratic objective
  const qrn_int32 zero[] = {0};
  const double two[] = {2};
  CHECK_EQ(QRN_putqobj(f.task, 1, zero, zero, two), QRN_RES_OK);
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_PRIMAL_SIMPLEX);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_COMBINATION);
  CHECK_EQ(sol(f.task, QRN_SOL_BAS).solsta, QRN_SOL_STA_OPTIMAL);  // untouched
  // a non-convex objective
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_AUTO);
  const double minus[] = {-2};
  CHECK_EQ(QRN_putqobj(f.task, 1, zero, zero, minus), QRN_RES_OK);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_NONCONVEX);
  // integer variables with a quadratic objective and a simplex method
  CHECK_EQ(QRN_putqobj(f.task, 1, zero, zero, two), QRN_RES_OK);
  CHECK_EQ(QRN_putvartype(f.task, 1, QRN_VAR_TYPE_INTEGER), QRN_RES_OK);
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_DUAL_SIMPLEX);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_COMBINATION);
  // the interior-point method on integer variables
  CHECK_EQ(QRN_putqobj(f.task, 0, nullptr, nullptr, nullptr), QRN_RES_OK);
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_IPM);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_COMBINATION);
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_AUTO);
  CHECK_EQ(QRN_putvartype(f.task, 1, QRN_VAR_TYPE_CONTINUOUS), QRN_RES_OK);
  // a quadratic constraint that is not convex (x0^2 with a negative sign under an upper bound)
  CHECK_EQ(QRN_putqconk(f.task, 0, 1, zero, zero, minus), QRN_RES_OK);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_QCON_NONCONVEX);
  CHECK_EQ(QRN_putqconk(f.task, 0, 0, nullptr, nullptr, nullptr), QRN_RES_OK);
  // cones with a simplex method, with or without integer variables
  const qrn_int32 members[] = {2, 1};
  CHECK_EQ(QRN_appendcone(f.task, QRN_CONE_QUAD, 0.0, 2, members), QRN_RES_OK);
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_DUAL_SIMPLEX);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_COMBINATION);
  CHECK_EQ(QRN_putvartype(f.task, 0, QRN_VAR_TYPE_INTEGER), QRN_RES_OK);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_COMBINATION);
  CHECK_EQ(QRN_putvartype(f.task, 0, QRN_VAR_TYPE_CONTINUOUS), QRN_RES_OK);
  // disjunctive constraints with the interior-point method alone
  set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_IPM);
  CHECK_EQ(QRN_appenddjcs(f.task, 1), QRN_RES_OK);
  optimize(f.task, &r);
  CHECK_EQ(r, QRN_RES_ERR_OPT_DJC);
  CHECK_EQ(sol(f.task, QRN_SOL_BAS).solsta, QRN_SOL_STA_OPTIMAL);
  qrn_int32 calls = 0;
  QRN_getintinf(f.task, QRN_IINF_OPT_CALLS, &calls);
  CHECK_EQ(calls, 1);
}

namespace {
struct Codes {
  std::vector<int> seen;
  int stop_at = -1;  // stop at the first call with this code
  static qrn_int32 QRN_CALL take(qrn_task_t, void *h, qrn_int32 caller, const qrn_real *d, const qrn_int32 *i,
                                 const qrn_int64 *) {
    auto *self = static_cast<Codes *>(h);
    CHECK(d != nullptr && i != nullptr);
    self->seen.push_back(caller);
    return caller == self->stop_at ? 1 : 0;
  }
  int count(int code) const { return static_cast<int>(std::count(seen.begin(), seen.end(), code)); }
};

// max sum v_j x_j over 0/1 x with one knapsack row: a MIP with a few incumbents.
Lp knapsack(int n) {
  Lp lp;
  lp.maximize = true;
  lp.a.assign(1, std::vector<double>(n));
  for (int j = 0; j < n; ++j) {
    lp.c.push_back(10 + (j * 37) % 23);
    lp.a[0][j] = 5 + (j * 53) % 19;
    lp.bkx.push_back(QRN_BK_RANGED), lp.blx.push_back(0), lp.bux.push_back(1);
  }
  lp.bkc = {QRN_BK_UPPER};
  lp.blc = {-INF};
  lp.buc = {n * 4.0};
  return lp;
}
}  // namespace

TEST(optimizer_mip_optimum_incumbents_and_infeasibility) {
  {  // max x + y, 2x + 2y <= 3, integer: the relaxation says 1.5, the optimum is 1
    Fixture f;
    Lp lp;
    lp.a = {{2, 2}};
    lp.c = {1, 1};
    lp.maximize = true;
    lp.bkc = {QRN_BK_UPPER}, lp.blc = {-INF}, lp.buc = {3};
    lp.bkx = {QRN_BK_LOWER, QRN_BK_LOWER}, lp.blx = {0, 0}, lp.bux = {INF, INF};
    load(f.task, lp);
    const qrn_int32 sub[] = {0, 1}, types[] = {QRN_VAR_TYPE_INTEGER, QRN_VAR_TYPE_INTEGER};
    CHECK_EQ(QRN_putvartypelist(f.task, 2, sub, types), QRN_RES_OK);
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    const auto &s = sol(f.task, QRN_SOL_ITG);
    CHECK_EQ(s.prosta, QRN_PRO_STA_PRIM_FEAS);
    CHECK_EQ(s.solsta, QRN_SOL_STA_INTEGER_OPTIMAL);
    CHECK(close(s.xx[0] + s.xx[1], 1));
    CHECK(!sol(f.task, QRN_SOL_BAS).defined && !sol(f.task, QRN_SOL_ITR).defined);
    // 2x = 1 has no integer solution
    const qrn_int32 one[] = {0};
    CHECK_EQ(QRN_putconbound(f.task, 0, QRN_BK_FIXED, 1, 1), QRN_RES_OK);
    CHECK_EQ(QRN_putvarbound(f.task, 1, QRN_BK_FIXED, 0, 0), QRN_RES_OK);
    (void)one;
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    CHECK_EQ(sol(f.task, QRN_SOL_ITG).prosta, QRN_PRO_STA_PRIM_INFEAS);
  }
  {  // a knapsack: every incumbent is announced, the best is optimal
    Fixture f;
    const Lp lp = knapsack(30);
    load(f.task, lp);
    std::vector<qrn_int32> sub(30), types(30, QRN_VAR_TYPE_INTEGER);
    for (int j = 0; j < 30; ++j) sub[j] = j;
    CHECK_EQ(QRN_putvartypelist(f.task, 30, sub.data(), types.data()), QRN_RES_OK);
    CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_MIP_REL_GAP, 0.0), QRN_RES_OK);
    Codes codes;
    CHECK_EQ(QRN_putcallbackfunc(f.task, Codes::take, &codes), QRN_RES_OK);
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    const auto &s = sol(f.task, QRN_SOL_ITG);
    CHECK_EQ(s.solsta, QRN_SOL_STA_INTEGER_OPTIMAL);
    CHECK(codes.count(QRN_CALLBACK_NEW_INT_SOLUTION) >= 1);
    CHECK_EQ(codes.count(QRN_CALLBACK_BEGIN_MIP), 1);
    CHECK_EQ(codes.count(QRN_CALLBACK_END_MIP), 1);
    double obj = 0, bound = 0;
    QRN_getdouinf(f.task, QRN_DINF_MIP_OBJ, &obj);
    QRN_getdouinf(f.task, QRN_DINF_MIP_OBJ_BOUND, &bound);
    CHECK(close(obj, dot(lp.c, s.xx)));
    CHECK(bound >= obj - 1e-6);
    double weight = 0;
    for (int j = 0; j < 30; ++j) {
      CHECK(std::fabs(s.xx[j] - std::round(s.xx[j])) < 1e-6);
      weight += lp.a[0][j] * s.xx[j];
    }
    CHECK(weight <= lp.buc[0] + 1e-6);
  }
}

TEST(optimizer_callback_codes_and_stopping) {
  {  // the order of codes of a normal simplex run
    Fixture f;
    load(f.task, small_lp());
    CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_CALLBACK_INTERVAL, 0.0), QRN_RES_OK);
    Codes codes;
    CHECK_EQ(QRN_putcallbackfunc(f.task, Codes::take, &codes), QRN_RES_OK);
    CHECK_EQ(optimize(f.task), QRN_RES_OK);
    CHECK(codes.seen.size() >= 4);
    CHECK_EQ(codes.seen.front(), QRN_CALLBACK_BEGIN);
    CHECK_EQ(codes.seen[1], QRN_CALLBACK_BEGIN_SIMPLEX);
    CHECK_EQ(codes.seen.back(), QRN_CALLBACK_END);
    CHECK(codes.count(QRN_CALLBACK_SIMPLEX_ITERATION) >= 1);
  }
  for (int stop_at : {QRN_CALLBACK_BEGIN, QRN_CALLBACK_SIMPLEX_ITERATION, QRN_CALLBACK_BARRIER_ITERATION}) {
    Fixture f;
    load(f.task, small_lp());
    set_int(f.task, QRN_IPAR_PRESOLVE, QRN_OFF);
    if (stop_at == QRN_CALLBACK_BARRIER_ITERATION) set_int(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_IPM);
    CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_CALLBACK_INTERVAL, 0.0), QRN_RES_OK);
    Codes codes;
    codes.stop_at = stop_at;
    CHECK_EQ(QRN_putcallbackfunc(f.task, Codes::take, &codes), QRN_RES_OK);
    CHECK_EQ(optimize(f.task), QRN_RES_TRM_USER_CALLBACK);
    qrn_int32 stopped = 0, trm = 0;
    QRN_getintinf(f.task, QRN_IINF_STOPPED_BY_CALLBACK, &stopped);
    QRN_getintinf(f.task, QRN_IINF_TERMINATION_CODE, &trm);
    CHECK_EQ(stopped, 1);
    CHECK_EQ(trm, QRN_RES_TRM_USER_CALLBACK);
    CHECK_EQ(codes.count(stop_at), 1);  // no call after the one that stopped, but END
    CHECK_EQ(codes.seen.back(), QRN_CALLBACK_END);
    for (int k = 0; k < QRN_SOL_COUNT; ++k)
      if (sol(f.task, k).defined) CHECK_EQ(sol(f.task, k).solsta, QRN_SOL_STA_UNKNOWN);
  }
}

TEST(optimizer_limits_end_the_run_with_their_termination_code) {
  Fixture f;
  const Lp lp = knapsack(40);
  load(f.task, lp);
  std::vector<qrn_int32> sub(40), types(40, QRN_VAR_TYPE_INTEGER);
  for (int j = 0; j < 40; ++j) sub[j] = j;
  CHECK_EQ(QRN_putvartypelist(f.task, 40, sub.data(), types.data()), QRN_RES_OK);
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_MIP_REL_GAP, 0.0), QRN_RES_OK);
  set_int(f.task, QRN_IPAR_MIP_CUTS, QRN_OFF);
  set_int(f.task, QRN_IPAR_MIP_NODE_LIMIT, 0);
  const int trm = optimize(f.task);
  CHECK(trm == QRN_RES_TRM_MAX_NODES || trm == QRN_RES_OK);
  Fixture g;
  load(g.task, small_lp());
  set_int(g.task, QRN_IPAR_PRESOLVE, QRN_OFF);
  set_int(g.task, QRN_IPAR_SIMPLEX_MAX_ITER, 0);
  CHECK_EQ(optimize(g.task), QRN_RES_TRM_MAX_ITERATIONS);
  CHECK_EQ(sol(g.task, QRN_SOL_BAS).solsta, QRN_SOL_STA_UNKNOWN);
  // a time limit of 0 s: every optimizer stops at its first chance
  set_int(g.task, QRN_IPAR_SIMPLEX_MAX_ITER, 1000);
  CHECK_EQ(QRN_putdouparam(g.task, QRN_DPAR_TIME_LIMIT, 0.0), QRN_RES_OK);
  for (int alg : {QRN_ALGORITHM_DUAL_SIMPLEX, QRN_ALGORITHM_IPM}) {
    set_int(g.task, QRN_IPAR_ALGORITHM, alg);
    CHECK_EQ(optimize(g.task), QRN_RES_TRM_MAX_TIME);
  }
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_MIP_TIME_LIMIT, 0.0), QRN_RES_OK);
  set_int(f.task, QRN_IPAR_MIP_NODE_LIMIT, 1000000);
  CHECK_EQ(optimize(f.task), QRN_RES_TRM_MAX_TIME);
}

TEST(optimizer_log_has_header_iterations_summary_and_is_silent_at_level_0) {
  Fixture f;
  load(f.task, small_lp());
  Capture log;
  CHECK_EQ(QRN_linkfunctotaskstream(f.task, QRN_STREAM_LOG, &log, Capture::take), QRN_RES_OK);
  set_int(f.task, QRN_IPAR_LOG_LEVEL, 2);
  CHECK_EQ(optimize(f.task), QRN_RES_OK);
  for (const char *part : {"Constraints         : 2", "Variables           : 3", "dual simplex", "ITER",
                           "Optimizer terminated: normal", "Basic solution", "Solution status     : optimal",
                           "-1.1000000000e+01"})
    CHECK(log.text.find(part) != std::string::npos);
  log.clear();
  set_int(f.task, QRN_IPAR_LOG_LEVEL, 0);
  CHECK_EQ(optimize(f.task), QRN_RES_OK);
  CHECK(log.text.empty());
}

TEST(optimizer_runs_tasks_on_several_threads_at_once) {
  const int n = 4;
  std::vector<Fixture *> tasks;
  for (int k = 0; k < n; ++k) {
    tasks.push_back(new Fixture());
    load(tasks[k]->task, k % 2 ? knapsack(25) : small_lp());
    if (k % 2) {
      std::vector<qrn_int32> sub(25), types(25, QRN_VAR_TYPE_INTEGER);
      for (int j = 0; j < 25; ++j) sub[j] = j;
      QRN_putvartypelist(tasks[k]->task, 25, sub.data(), types.data());
    }
  }
  std::vector<int> trm(n, -1);
  std::vector<std::thread> threads;
  for (int k = 0; k < n; ++k)
    threads.emplace_back([&, k] {
      for (int rep = 0; rep < 5; ++rep) QRN_optimizetrm(tasks[k]->task, &trm[k]);
    });
  for (auto &t : threads) t.join();
  for (int k = 0; k < n; ++k) {
    CHECK_EQ(trm[k], QRN_RES_OK);
    CHECK_EQ(sol(tasks[k]->task, k % 2 ? QRN_SOL_ITG : QRN_SOL_BAS).solsta,
             k % 2 ? QRN_SOL_STA_INTEGER_OPTIMAL : QRN_SOL_STA_OPTIMAL);
    delete tasks[k];
  }
}

TEST(resizetask_checks_every_capacity_first) {
  Fixture f(2, 3);
  CHECK_EQ(QRN_resizetask(f.task, 10, 10, 5, 100, 100), QRN_RES_OK);
  qrn_int32 maxcon = 0;
  QRN_getmaxnumcon(f.task, &maxcon);
  CHECK_EQ(maxcon, 10);
  CHECK_EQ(QRN_resizetask(f.task, 20, 1, 5, 100, 100), QRN_RES_ERR_MAX_CAPACITY);
  QRN_getmaxnumcon(f.task, &maxcon);
  CHECK_EQ(maxcon, 10);
  CHECK_EQ(QRN_resizetask(f.task, 20, 10, 5, -1, 100), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(QRN_commitchanges(f.task), QRN_RES_OK);
  CHECK_EQ(QRN_commitchanges(nullptr), QRN_RES_ERR_NULL_TASK);
}
