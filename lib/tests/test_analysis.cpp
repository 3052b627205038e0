// Analyses of a solved task: basis services and sensitivity on the small LP
// (hand-computed answers), repair and the infeasible subproblem.
#include <string>

#include "opt_fixture.hpp"

namespace {
void solve(qrn_task_t task) {
  qrn_int32 trm = -1;
  CHECK_EQ(QRN_optimizetrm(task, &trm), QRN_RES_OK);
  CHECK_EQ(trm, QRN_RES_OK);
}
}  // namespace

// Optimal basis of the small LP: the slack of row 1 and y, so (slacks first)
// basis = {1, 3} and B = [-e_1, a_y] = [[0, 1], [-1, 3]].
TEST(basis_services_on_the_small_lp) {
  Fixture f;
  load(f.task, small_lp());
  double a, b;
  CHECK_EQ(QRN_basiscond(f.task, &a, &b), QRN_RES_ERR_NO_BASIS);
  qrn_int32 sub[2] = {0, 1}, nz = -1;
  double val[2] = {1, 2};
  CHECK_EQ(QRN_solvewithbasis(f.task, 0, 2, sub, val, &nz), QRN_RES_ERR_BASIS_NOT_INIT);
  solve(f.task);
  qrn_int32 basis[2] = {-1, -1};
  CHECK_EQ(QRN_initbasissolve(f.task, basis), QRN_RES_OK);
  CHECK_EQ(basis[0], 1);
  CHECK_EQ(basis[1], 3);
  // B x = (1, 2): x = (1, 1); B'x = (1, 2): x = (5, -1).
  CHECK_EQ(QRN_solvewithbasis(f.task, 0, 2, sub, val, &nz), QRN_RES_OK);
  CHECK_EQ(nz, 2);
  CHECK(close(val[0], 1) && close(val[1], 1));
  sub[0] = 0, sub[1] = 1, val[0] = 1, val[1] = 2;
  CHECK_EQ(QRN_solvewithbasis(f.task, 1, 2, sub, val, &nz), QRN_RES_OK);
  CHECK(close(val[0], 5) && close(val[1], -1));
  // A sparse right-hand side e_1 (val[0] is not read): B x = e_1 gives x = (-1, 0).
  sub[0] = 1, val[0] = 123, val[1] = 1;
  CHECK_EQ(QRN_solvewithbasis(f.task, 0, 1, sub, val, &nz), QRN_RES_OK);
  CHECK_EQ(nz, 1);
  CHECK_EQ(sub[0], 0);
  CHECK(close(val[0], -1) && val[1] == 0);
  sub[0] = 1, sub[1] = 1;
  CHECK_EQ(QRN_solvewithbasis(f.task, 0, 2, sub, val, &nz), QRN_RES_ERR_DUP_INDEX);
  sub[0] = 2;
  CHECK_EQ(QRN_solvewithbasis(f.task, 0, 1, sub, val, &nz), QRN_RES_ERR_INDEX_CON);
  // ||B||_1 = 4 and B^-1 = [[3, -1], [1, 0]] has 1-norm 4.
  CHECK_EQ(QRN_basiscond(f.task, &a, &b), QRN_RES_OK);
  CHECK(close(a, 4) && close(b, 4));
}

TEST(sensitivity_of_the_small_lp_against_hand_computation) {
  Fixture f;
  load(f.task, small_lp());
  const qrn_int32 subi[] = {0, 1}, marki[] = {QRN_MARK_UP, QRN_MARK_UP};
  const qrn_int32 subj[] = {0, 0, 2}, markj[] = {QRN_MARK_UP, QRN_MARK_LO, QRN_MARK_LO};
  double lpi[2], rpi[2], lri[2], rri[2], lpj[3], rpj[3], lrj[3], rrj[3];
  CHECK_EQ(QRN_primalsensitivity(f.task, 2, subi, marki, 3, subj, markj, lpi, rpi, lri, rri, lpj, rpj, lrj, rrj),
           QRN_RES_ERR_NO_BASIS);
  solve(f.task);
  CHECK_EQ(QRN_primalsensitivity(f.task, 2, subi, marki, 3, subj, markj, lpi, rpi, lri, rri, lpj, rpj, lrj, rrj),
           QRN_RES_OK);
  // Row 0 (x + y + z <= 4) binds with price -2; its bound may move in [3, 5].
  CHECK(close(lpi[0], -2) && close(rpi[0], -2) && close(lri[0], 1) && close(rri[0], 1));
  // Row 1 does not bind (6 < 9): price 0, the bound may drop by 3 before it binds.
  CHECK(lpi[1] == 0 && rpi[1] == 0 && close(lri[1], 3) && rri[1] > 1e29);
  // x <= 3 binds with price -1: up 1 (y reaches 0), down 1.5 (row 1 reaches 9).
  CHECK(close(lpj[0], -1) && close(rpj[0], -1) && close(lrj[0], 1.5) && close(rrj[0], 1));
  // x >= 0 does not bind: x may rise by 3 before the bound meets it.
  CHECK(lpj[1] == 0 && close(rrj[1], 3) && lrj[1] > 1e29);
  // z >= 0 binds (reduced cost 3): moving it up by t raises the objective by 3t.
  CHECK(close(lpj[2], 3) && close(rpj[2], 3));
  // Objective coefficients: c_x in (-inf, -2], c_y in [-3, 0], c_z in [-2, inf).
  const qrn_int32 all[] = {0, 1, 2};
  CHECK_EQ(QRN_dualsensitivity(f.task, 3, all, lpj, rpj, lrj, rrj), QRN_RES_OK);
  CHECK(lrj[0] > 1e29 && close(rrj[0], 1));
  CHECK(close(lrj[1], 1) && close(rrj[1], 2));
  CHECK(close(lrj[2], 3) && rrj[2] > 1e29);
  CHECK(close(lpj[0], 3) && close(rpj[1], 1) && lpj[2] == 0);
  const qrn_int32 bad_mark[] = {7};
  CHECK_EQ(QRN_primalsensitivity(f.task, 1, subi, bad_mark, 0, nullptr, nullptr, lpi, rpi, lri, rri, nullptr, nullptr,
                                 nullptr, nullptr),
           QRN_RES_ERR_MARK);
  const qrn_int32 bad_j[] = {3};
  CHECK_EQ(QRN_dualsensitivity(f.task, 1, bad_j, lpj, rpj, lrj, rrj), QRN_RES_ERR_INDEX_VAR);
}

TEST(primalrepair_relaxes_the_cheapest_bounds_then_optimizes) {
  {  // default weights: relaxing either row by 2 costs 2
    Fixture f;
    load(f.task, infeasible_lp());
    CHECK_EQ(QRN_primalrepair(f.task, nullptr, nullptr, nullptr, nullptr), QRN_RES_OK);
    double penalty = 0;
    QRN_getdouinf(f.task, QRN_DINF_REPAIR_PENALTY, &penalty);
    CHECK(close(penalty, 2));
    CHECK_EQ(sol(f.task, QRN_SOL_BAS).solsta, QRN_SOL_STA_OPTIMAL);
    qrn_int32 bk;
    double bl0, bu0, bl1, bu1;
    QRN_getconbound(f.task, 0, &bk, &bl0, &bu0);
    QRN_getconbound(f.task, 1, &bk, &bl1, &bu1);
    CHECK(close(5 - bl0 + bu1 - 3, 2));
  }
  {  // the upper side of row 1 is dear and the lower side of row 0 hard: row 1 cannot move
    Fixture f;
    load(f.task, infeasible_lp());
    const double wlc[] = {-1, 1, 1}, wuc[] = {1, 100, 1};
    CHECK_EQ(QRN_primalrepair(f.task, wlc, wuc, nullptr, nullptr), QRN_RES_OK);
    qrn_int32 bk;
    double bl, bu;
    QRN_getconbound(f.task, 1, &bk, &bl, &bu);
    CHECK(close(bu, 5));
    double obj = 0;
    QRN_getdouinf(f.task, QRN_DINF_REPAIR_OBJ, &obj);
    CHECK(close(obj, 5));  // min x + y over x + y in [5, 5]
    qrn_int32 cons = 0;
    QRN_getintinf(f.task, QRN_IINF_REPAIR_RELAXED_CONS, &cons);
    CHECK_EQ(cons, 1);
  }
  {  // both conflicting sides hard: nothing helps, nothing changes
    Fixture f;
    load(f.task, infeasible_lp());
    const double wlc[] = {-1, 1, 1}, wuc[] = {1, -1, 1}, wx[] = {-1, -1};
    CHECK_EQ(QRN_primalrepair(f.task, wlc, wuc, wx, wx), QRN_RES_ERR_REPAIR_FAILED);
    qrn_int32 bk;
    double bl, bu;
    QRN_getconbound(f.task, 1, &bk, &bl, &bu);
    CHECK_EQ(bu, 3.0);
    const double nan[] = {NAN, 1, 1};
    CHECK_EQ(QRN_primalrepair(f.task, nan, nullptr, nullptr, nullptr), QRN_RES_ERR_REPAIR_WEIGHT);
  }
}

TEST(infeasible_subproblem_is_irreducible_and_named) {
  {  // two conflicting rows; the third row and the bounds play no part
    Fixture f;
    load(f.task, infeasible_lp());
    CHECK_EQ(QRN_putconname(f.task, 0, "atleast5"), QRN_RES_OK);
    CHECK_EQ(QRN_putvarname(f.task, 1, "y"), QRN_RES_OK);
    qrn_task_t sub = nullptr;
    CHECK_EQ(QRN_getinfeasiblesubproblem(f.task, QRN_SOL_BAS, &sub), QRN_RES_ERR_NO_CERTIFICATE);
    solve(f.task);
    CHECK_EQ(QRN_getinfeasiblesubproblem(f.task, 5, &sub), QRN_RES_ERR_SOL_WHICH);
    CHECK_EQ(QRN_getinfeasiblesubproblem(f.task, QRN_SOL_BAS, &sub), QRN_RES_OK);
    qrn_int32 bk;
    double bl, bu;
    QRN_getconbound(sub, 0, &bk, &bl, &bu);
    CHECK_EQ(bk, QRN_BK_LOWER);
    CHECK_EQ(bl, 5.0);
    QRN_getconbound(sub, 1, &bk, &bl, &bu);
    CHECK_EQ(bk, QRN_BK_UPPER);
    QRN_getconbound(sub, 2, &bk, &bl, &bu);
    CHECK_EQ(bk, QRN_BK_FREE);
    QRN_getvarbound(sub, 0, &bk, &bl, &bu);
    CHECK_EQ(bk, QRN_BK_FREE);
    char name[16];
    CHECK_EQ(QRN_getconname(sub, 0, 16, name), QRN_RES_OK);
    CHECK_EQ(std::string(name), "atleast5");
    CHECK_EQ(QRN_getvarname(sub, 1, 16, name), QRN_RES_OK);
    CHECK_EQ(std::string(name), "y");
    qrn_int32 trm;
    CHECK_EQ(QRN_optimizetrm(sub, &trm), QRN_RES_OK);
    CHECK_EQ(sol(sub, QRN_SOL_BAS).prosta, QRN_PRO_STA_PRIM_INFEAS);
    QRN_deletetask(&sub);
  }
  {  // x + y >= 25 against x, y <= 10: the row and both upper bounds
    Fixture f;
    Lp lp = infeasible_lp();
    lp.blc[0] = 25;
    lp.buc[1] = 1000;
    load(f.task, lp);
    solve(f.task);
    qrn_task_t sub = nullptr;
    CHECK_EQ(QRN_getinfeasiblesubproblem(f.task, QRN_SOL_BAS, &sub), QRN_RES_OK);
    qrn_int32 bk;
    double bl, bu;
    QRN_getconbound(sub, 1, &bk, &bl, &bu);
    CHECK_EQ(bk, QRN_BK_FREE);
    for (int j = 0; j < 2; ++j) {
      QRN_getvarbound(sub, j, &bk, &bl, &bu);
      CHECK_EQ(bk, QRN_BK_UPPER);
      CHECK_EQ(bu, 10.0);
    }
    QRN_deletetask(&sub);
  }
}
