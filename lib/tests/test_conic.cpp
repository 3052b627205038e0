// Affine expressions, domains, ACCs, DJCs and their solution values through
// the C interface.
#include <cmath>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "fixture.hpp"

namespace {

using I32 = std::vector<qrn_int32>;
using I64 = std::vector<qrn_int64>;
using Dbl = std::vector<double>;
using FModel = std::map<std::pair<qrn_int64, qrn_int32>, double>;

// F as read back row by row, and as triplets; both must agree.
FModel read_f(qrn_task_t task) {
  qrn_int64 numafe = 0, nnz = 0;
  CHECK_EQ(QRN_getnumafe(task, &numafe), QRN_RES_OK);
  CHECK_EQ(QRN_getafefnumnz(task, &nnz), QRN_RES_OK);
  FModel rows;
  for (qrn_int64 r = 0; r < numafe; ++r) {
    qrn_int32 n = 0;
    QRN_getafefrownumnz(task, r, &n);
    I32 sub(n);
    Dbl val(n);
    CHECK_EQ(QRN_getafefrow(task, r, &n, sub.data(), val.data()), QRN_RES_OK);
    for (qrn_int32 k = 0; k < n; ++k) {
      CHECK(k == 0 || sub[k - 1] < sub[k]);
      rows[{r, sub[k]}] = val[k];
    }
  }
  I64 ti(nnz);
  I32 tj(nnz);
  Dbl tv(nnz);
  CHECK_EQ(QRN_getafeftrip(task, ti.data(), tj.data(), tv.data()), QRN_RES_OK);
  FModel trips;
  for (qrn_int64 k = 0; k < nnz; ++k) trips[{ti[k], tj[k]}] = tv[k];
  CHECK_EQ(static_cast<qrn_int64>(rows.size()), nnz);
  CHECK(rows == trips);
  return rows;
}

// A task with numvar variables, numafe expressions, and the identity in F
// (expression r = x_r) when identity is set.
struct Conic : Fixture {
  Conic(int numvar, int numafe, bool identity = false) : Fixture(0, numvar) {
    CHECK_EQ(QRN_appendafes(task, numafe), QRN_RES_OK);
    if (identity)
      for (int r = 0; r < numafe; ++r) CHECK_EQ(QRN_putafefentry(task, r, r, 1.0), QRN_RES_OK);
  }
  qrn_int64 domain(qrn_rescode (*append)(qrn_task_t, qrn_int64, qrn_int64 *), qrn_int64 n) {
    qrn_int64 d = -1;
    CHECK_EQ(append(task, n, &d), QRN_RES_OK);
    return d;
  }
  // Solution ITR with xx = x (and doty = y when given).
  void solution(const Dbl &x, const Dbl &y = {}) {
    CHECK_EQ(QRN_putsolutionnew(task, QRN_SOL_ITR, nullptr, nullptr, nullptr, nullptr, x.data(), nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, y.empty() ? nullptr : y.data()),
             QRN_RES_OK);
  }
  double pviol(qrn_int64 acc) {
    double v = -1;
    CHECK_EQ(QRN_getpviolacc(task, QRN_SOL_ITR, 1, &acc, &v), QRN_RES_OK);
    return v;
  }
  double dviol(qrn_int64 acc) {
    double v = -1;
    CHECK_EQ(QRN_getdviolacc(task, QRN_SOL_ITR, 1, &acc, &v), QRN_RES_OK);
    return v;
  }
};

bool near(double a, double b) { return std::fabs(a - b) <= 1e-12 * (1 + std::fabs(b)); }

}  // namespace

TEST(afe_f_against_a_model) {
  Conic f(8, 6);
  FModel model;
  std::mt19937 rng(7);
  auto pick = [&](int n) { return static_cast<int>(rng() % n); };
  for (int step = 0; step < 400; ++step) {
    int op = pick(6);
    qrn_int64 r = pick(6);
    qrn_int32 j = pick(8);
    if (op == 0) {  // one entry; 0 removes it
      double v = pick(3) == 0 ? 0.0 : pick(9) + 1.0;
      CHECK_EQ(QRN_putafefentry(f.task, r, j, v), QRN_RES_OK);
      if (v == 0.0) model.erase({r, j}); else model[{r, j}] = v;
    } else if (op == 1) {  // a whole row, unsorted
      I32 sub{j, static_cast<qrn_int32>((j + 3) % 8), static_cast<qrn_int32>((j + 5) % 8)};
      Dbl val{1.5, -2.0, 0.0};
      CHECK_EQ(QRN_putafefrow(f.task, r, 3, sub.data(), val.data()), QRN_RES_OK);
      for (int k = 0; k < 8; ++k) model.erase({r, k});
      model[{r, sub[0]}] = 1.5, model[{r, sub[1]}] = -2.0;
    } else if (op == 2) {  // a whole column
      I64 rows{r, (r + 2) % 6};
      Dbl val{3.0, 4.0};
      CHECK_EQ(QRN_putafefcol(f.task, j, 2, rows.data(), val.data()), QRN_RES_OK);
      for (int k = 0; k < 6; ++k) model.erase({k, j});
      model[{rows[0], j}] = 3.0, model[{rows[1], j}] = 4.0;
    } else if (op == 3) {
      CHECK_EQ(QRN_emptyafefcol(f.task, j), QRN_RES_OK);
      for (int k = 0; k < 6; ++k) model.erase({k, j});
    } else if (op == 4) {
      CHECK_EQ(QRN_emptyafefrow(f.task, r), QRN_RES_OK);
      for (int k = 0; k < 8; ++k) model.erase({r, k});
    } else {  // a list; the later duplicate wins
      I64 rows{r, r};
      I32 cols{j, j};
      Dbl val{7.0, 8.0};
      CHECK_EQ(QRN_putafefentrylist(f.task, 2, rows.data(), cols.data(), val.data()), QRN_RES_OK);
      model[{r, j}] = 8.0;
    }
    if (step % 20 == 0) CHECK(read_f(f.task) == model);
  }
  CHECK(read_f(f.task) == model);
  // Removing variables renumbers F's columns and drops the removed ones.
  I32 gone{1, 6};
  CHECK_EQ(QRN_removevars(f.task, 2, gone.data()), QRN_RES_OK);
  FModel renumbered;
  for (auto &[rj, v] : model)
    if (rj.second != 1 && rj.second != 6)
      renumbered[{rj.first, rj.second - (rj.second > 1) - (rj.second > 6)}] = v;
  CHECK(read_f(f.task) == renumbered);
  CHECK_EQ(QRN_emptyafefcol(f.task, 4), QRN_RES_OK);
  for (int k = 0; k < 6; ++k) renumbered.erase({k, 4});
  CHECK(read_f(f.task) == renumbered);
  // A row that takes and drops a variable again and again: the column's list
  // of rows is compacted on the way and still finds the row when cleared.
  I32 one{5};
  Dbl two{2.0};
  for (int k = 0; k < 50; ++k) {
    CHECK_EQ(QRN_putafefrow(f.task, 0, 0, nullptr, nullptr), QRN_RES_OK);
    CHECK_EQ(QRN_putafefrow(f.task, 0, 1, one.data(), two.data()), QRN_RES_OK);
  }
  CHECK_EQ(QRN_emptyafefcol(f.task, 5), QRN_RES_OK);
  qrn_int32 nz = -1;
  CHECK_EQ(QRN_getafefrownumnz(f.task, 0, &nz), QRN_RES_OK);
  CHECK_EQ(nz, 0);
}

TEST(afe_refusals_change_nothing) {
  Conic f(3, 2);
  I32 sub{0, 2};
  Dbl val{1.0, 2.0};
  CHECK_EQ(QRN_putafefrow(f.task, 0, 2, sub.data(), val.data()), QRN_RES_OK);
  I32 dup{1, 1};
  CHECK_EQ(QRN_putafefrow(f.task, 0, 2, dup.data(), val.data()), QRN_RES_ERR_DUP_INDEX);
  Dbl nan{1.0, NAN};
  CHECK_EQ(QRN_putafefrow(f.task, 0, 2, sub.data(), nan.data()), QRN_RES_ERR_VALUE_NAN);
  CHECK_EQ(QRN_putafefentry(f.task, 2, 0, 1.0), QRN_RES_ERR_INDEX_AFE);
  CHECK_EQ(QRN_putafefentry(f.task, 0, 3, 1.0), QRN_RES_ERR_INDEX_VAR);
  // A range past the entries given, or an expression listed twice.
  I64 rows{1}, ptr{1};
  I32 num{2};
  CHECK_EQ(QRN_putafefrowlist(f.task, 1, rows.data(), num.data(), ptr.data(), 2, sub.data(), val.data()),
           QRN_RES_ERR_PTR_RANGE);
  I64 rows2{1, 1}, ptr2{0, 0};
  I32 num2{1, 1};
  CHECK_EQ(QRN_putafefrowlist(f.task, 2, rows2.data(), num2.data(), ptr2.data(), 2, sub.data(), val.data()),
           QRN_RES_ERR_DUP_INDEX);
  CHECK((read_f(f.task) == FModel{{{0, 0}, 1.0}, {{0, 2}, 2.0}}));
  qrn_int64 max = 0;
  CHECK_EQ(QRN_putmaxnumafe(f.task, 1), QRN_RES_ERR_MAX_CAPACITY);
  CHECK_EQ(QRN_putafegslice(f.task, 1, 3, val.data()), QRN_RES_ERR_SLICE);
  CHECK_EQ(QRN_getnumafe(f.task, &max), QRN_RES_OK);
  CHECK_EQ(max, 2);
}

TEST(domains_dimensions_and_weights) {
  Fixture f;
  qrn_int64 d = -1, n = 0, nleft = 0;
  qrn_int32 type = -1;
  CHECK_EQ(QRN_appendrplusdomain(f.task, -1, &d), QRN_RES_ERR_DOMAIN_DIMENSION);
  CHECK_EQ(QRN_appendrzerodomain(f.task, 0, &d), QRN_RES_OK);
  CHECK_EQ(QRN_appendquadraticconedomain(f.task, 0, &d), QRN_RES_ERR_DOMAIN_DIMENSION);
  CHECK_EQ(QRN_appendrquadraticconedomain(f.task, 1, &d), QRN_RES_ERR_DOMAIN_DIMENSION);
  CHECK_EQ(QRN_appendprimalgeomeanconedomain(f.task, 1, &d), QRN_RES_ERR_DOMAIN_DIMENSION);
  CHECK_EQ(QRN_appendsvecpsdconedomain(f.task, 4, &d), QRN_RES_ERR_DOMAIN_DIMENSION);
  CHECK_EQ(QRN_appendsvecpsdconedomain(f.task, 6, &d), QRN_RES_OK);
  CHECK_EQ(QRN_appenddualexpconedomain(f.task, &d), QRN_RES_OK);
  CHECK_EQ(QRN_getdomainn(f.task, d, &n), QRN_RES_OK);
  CHECK_EQ(n, 3);
  Dbl bad{1.0, -1.0}, good{1.0, 3.0};
  CHECK_EQ(QRN_appendprimalpowerconedomain(f.task, 3, 2, bad.data(), &d), QRN_RES_ERR_DOMAIN_POWER_WEIGHTS);
  CHECK_EQ(QRN_appendprimalpowerconedomain(f.task, 1, 2, good.data(), &d), QRN_RES_ERR_DOMAIN_POWER_WEIGHTS);
  CHECK_EQ(QRN_appendprimalpowerconedomain(f.task, 3, 0, nullptr, &d), QRN_RES_ERR_DOMAIN_POWER_WEIGHTS);
  CHECK_EQ(QRN_getpowerdomaininfo(f.task, d, &n, &nleft), QRN_RES_ERR_DOMAIN_NOT_POWER);
  CHECK_EQ(QRN_appenddualpowerconedomain(f.task, 3, 2, good.data(), &d), QRN_RES_OK);
  CHECK_EQ(QRN_getpowerdomaininfo(f.task, d, &n, &nleft), QRN_RES_OK);
  CHECK_EQ(std::make_pair(n, nleft), std::make_pair(qrn_int64{3}, qrn_int64{2}));
  Dbl alpha(2);
  CHECK_EQ(QRN_getpowerdomainalpha(f.task, d, alpha.data()), QRN_RES_OK);
  CHECK_EQ(alpha, (Dbl{0.25, 0.75}));
  CHECK_EQ(QRN_getdomaintype(f.task, d, &type), QRN_RES_OK);
  CHECK_EQ(type, QRN_DOMAIN_DUAL_POWER_CONE);
  CHECK_EQ(QRN_getdomaintype(f.task, d + 1, &type), QRN_RES_ERR_INDEX_DOMAIN);
  CHECK_EQ(QRN_getnumdomain(f.task, &n), QRN_RES_OK);
  CHECK_EQ(n, 4);
}

TEST(acc_stacking_and_doty_alignment) {
  Conic f(4, 4, true);
  CHECK_EQ(QRN_putafeg(f.task, 3, 10.0), QRN_RES_OK);
  qrn_int64 r2 = f.domain(QRN_appendrdomain, 2), r1 = f.domain(QRN_appendrdomain, 1);
  I64 afe{0, 1};
  Dbl b{0.5, 0.25};
  CHECK_EQ(QRN_appendacc(f.task, r2, 1, afe.data(), b.data()), QRN_RES_ERR_ACC_SIZE);
  CHECK_EQ(QRN_appendacc(f.task, r2, 2, afe.data(), b.data()), QRN_RES_OK);
  I64 doms{r1, r1};
  CHECK_EQ(QRN_appendaccsseq(f.task, 2, doms.data(), 2, 2, nullptr), QRN_RES_OK);  // ACCs 1, 2 on afe 2, 3
  I64 afe5{0, 1, 2, 3, 4};
  CHECK_EQ(QRN_appendaccseq(f.task, r2, 2, 3, nullptr), QRN_RES_ERR_INDEX_AFE);  // 3, 4: 4 does not exist
  qrn_int64 ntot = 0;
  CHECK_EQ(QRN_getaccntot(f.task, &ntot), QRN_RES_OK);
  CHECK_EQ(ntot, 4);
  Dbl y{1, 2, 3, 4};
  f.solution({1, 2, 3, 4}, y);
  // ACC 0 grows to three rows: the other ACCs keep their doty values.
  I64 afe3{3, 2, 1};
  CHECK_EQ(QRN_appendrdomain(f.task, 3, &doms[0]), QRN_RES_OK);
  CHECK_EQ(QRN_putacc(f.task, 0, doms[0], 3, afe3.data(), nullptr), QRN_RES_OK);
  Dbl all(5);
  CHECK_EQ(QRN_getaccdotys(f.task, QRN_SOL_ITR, all.data()), QRN_RES_OK);
  CHECK_EQ(all, (Dbl{0, 0, 0, 3, 4}));
  Dbl act(5), g(5);
  CHECK_EQ(QRN_evaluateaccs(f.task, QRN_SOL_ITR, act.data()), QRN_RES_OK);
  CHECK_EQ(act, (Dbl{14, 3, 2, 3, 14}));
  CHECK_EQ(QRN_getaccgvector(f.task, g.data()), QRN_RES_OK);
  CHECK_EQ(g, (Dbl{10, 0, 0, 0, 10}));
  qrn_int64 nnz = 0;
  CHECK_EQ(QRN_getaccfnumnz(f.task, &nnz), QRN_RES_OK);
  I64 frow(nnz);
  I32 fcol(nnz);
  Dbl fval(nnz);
  CHECK_EQ(QRN_getaccftrip(f.task, frow.data(), fcol.data(), fval.data()), QRN_RES_OK);
  CHECK_EQ(frow, (I64{0, 1, 2, 3, 4}));
  CHECK_EQ(fcol, (I32{3, 2, 1, 2, 3}));
  I64 dl(3), al(5);
  Dbl bl(5);
  CHECK_EQ(QRN_getaccs(f.task, dl.data(), al.data(), bl.data()), QRN_RES_OK);
  CHECK_EQ(al, (I64{3, 2, 1, 2, 3}));
  CHECK_EQ(QRN_putaccb(f.task, 1, 2, b.data()), QRN_RES_ERR_ACC_SIZE);
  CHECK_EQ(QRN_putaccbj(f.task, 1, 0, 1.5), QRN_RES_OK);
  CHECK_EQ(QRN_evaluateacc(f.task, QRN_SOL_ITR, 1, act.data()), QRN_RES_OK);
  CHECK_EQ(act[0], 1.5);
  CHECK_EQ(QRN_getaccdoty(f.task, QRN_SOL_BAS, 0, all.data()), QRN_RES_ERR_SOL_UNDEFINED);
  CHECK_EQ(QRN_getaccdoty(f.task, 7, 0, all.data()), QRN_RES_ERR_SOL_WHICH);
  CHECK_EQ(QRN_getaccdoty(f.task, QRN_SOL_ITR, 3, all.data()), QRN_RES_ERR_INDEX_ACC);
  qrn_int32 probtype = -1;
  CHECK_EQ(QRN_getprobtype(f.task, &probtype), QRN_RES_OK);
  CHECK_EQ(probtype, QRN_PROBTYPE_CONIC);
}

TEST(djc_terms_and_slices) {
  Conic f(3, 3, true);
  qrn_int64 z1 = f.domain(QRN_appendrzerodomain, 1), p2 = f.domain(QRN_appendrplusdomain, 2);
  CHECK_EQ(QRN_appenddjcs(f.task, 3), QRN_RES_OK);
  I64 dom{z1, p2}, afe{0, 1, 2}, sizes{1, 1}, bad{2, 1}, zero{0, 2};
  Dbl b{1, 0, 0};
  CHECK_EQ(QRN_putdjc(f.task, 0, 2, dom.data(), 3, afe.data(), b.data(), 2, bad.data()), QRN_RES_ERR_DJC_TERMS);
  CHECK_EQ(QRN_putdjc(f.task, 0, 2, dom.data(), 3, afe.data(), b.data(), 2, zero.data()), QRN_RES_ERR_DJC_TERMS);
  CHECK_EQ(QRN_putdjc(f.task, 0, 2, dom.data(), 2, afe.data(), b.data(), 2, sizes.data()), QRN_RES_ERR_ACC_SIZE);
  CHECK_EQ(QRN_putdjc(f.task, 0, 2, dom.data(), 3, afe.data(), b.data(), 2, sizes.data()), QRN_RES_OK);
  // DJCs 1 and 2 in one slice: one term each.
  I64 sdom{z1, z1}, safe{2, 1}, ssize{1, 1}, terms{1, 1};
  Dbl sb{0, 5};
  CHECK_EQ(QRN_putdjcslice(f.task, 1, 3, 2, sdom.data(), 2, safe.data(), sb.data(), 2, ssize.data(), terms.data()),
           QRN_RES_OK);
  qrn_int64 n = 0;
  CHECK_EQ(QRN_getdjcnumafetot(f.task, &n), QRN_RES_OK);
  CHECK_EQ(n, 5);
  I64 d(4), a(5), ts(4), nt(3);
  Dbl bb(5);
  CHECK_EQ(QRN_getdjcs(f.task, d.data(), a.data(), bb.data(), ts.data(), nt.data()), QRN_RES_OK);
  CHECK_EQ(a, (I64{0, 1, 2, 2, 1}));
  CHECK_EQ(bb, (Dbl{1, 0, 0, 0, 5}));
  CHECK_EQ(nt, (I64{2, 1, 1}));
  // Violation: the best term. x = (3, -4, 2): term 0 is x0 - 1 = 0 (2 off),
  // term 1 is (x1, x2) >= 0 (4 off); DJC 2 asks x1 - 5 = 0 (9 off).
  f.solution({3, -4, 2});
  I64 which{0, 1, 2};
  Dbl v(3);
  CHECK_EQ(QRN_getpvioldjc(f.task, QRN_SOL_ITR, 3, which.data(), v.data()), QRN_RES_OK);
  CHECK_EQ(v, (Dbl{2, 2, 9}));
  CHECK_EQ(QRN_appenddjcs(f.task, 1), QRN_RES_OK);
  which = {3};
  CHECK_EQ(QRN_getpvioldjc(f.task, QRN_SOL_ITR, 1, which.data(), v.data()), QRN_RES_OK);
  CHECK(std::isinf(v[0]));
}

TEST(violations_per_domain_kind) {
  const double r2 = std::sqrt(2.0), e = std::exp(1.0);
  struct Case {
    const char *what;
    qrn_int32 type;
    Dbl x;
    double primal;
    Dbl alpha;
  };
  const Case cases[] = {
      {"rplus", QRN_DOMAIN_RPLUS, {1, -3, -4}, 5},
      {"rminus", QRN_DOMAIN_RMINUS, {3, -1}, 3},
      {"r", QRN_DOMAIN_R, {3, -1}, 0},
      {"rzero", QRN_DOMAIN_RZERO, {3, -4}, 5},
      {"quad, beside the cone", QRN_DOMAIN_QUADRATIC_CONE, {1, 3, 4}, 4 / r2},
      {"quad, in the polar cone", QRN_DOMAIN_QUADRATIC_CONE, {-6, 3, 4}, std::sqrt(61.0)},
      {"quad, inside", QRN_DOMAIN_QUADRATIC_CONE, {5, 3, 4}, 0},
      {"rquad", QRN_DOMAIN_RQUADRATIC_CONE, {1, 1, 2}, (2 - r2) / r2},
      {"pexp", QRN_DOMAIN_PRIMAL_EXP_CONE, {1, 1, 1}, e - 1},
      {"pexp, x1 = 0", QRN_DOMAIN_PRIMAL_EXP_CONE, {1, 0, -1}, 0},
      {"pexp, negative x0", QRN_DOMAIN_PRIMAL_EXP_CONE, {-2, 0, -1}, 2},
      {"dexp", QRN_DOMAIN_DUAL_EXP_CONE, {0.1, 1, -1}, std::exp(-2.0) - 0.1},
      {"ppow", QRN_DOMAIN_PRIMAL_POWER_CONE, {1, 4, 3}, 1, {1, 1}},
      {"dpow", QRN_DOMAIN_DUAL_POWER_CONE, {1, 1, 3}, 1, {2, 2}},
      {"pgeo", QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE, {1, 4, -3}, 1},
      {"dgeo", QRN_DOMAIN_DUAL_GEO_MEAN_CONE, {1, 1, 3}, 1},
      {"svecpsd", QRN_DOMAIN_SVEC_PSD_CONE, {1, 2 * r2, 1}, 1},  // [[1 2] [2 1]]: eigenvalues 3, -1
  };
  for (const Case &c : cases) {
    auto n = static_cast<qrn_int64>(c.x.size());
    Conic f(static_cast<int>(n), static_cast<int>(n), true);
    qrn_int64 d = -1;
    qrn_rescode rc = QRN_RES_OK;
    switch (c.type) {
      case QRN_DOMAIN_RPLUS: rc = QRN_appendrplusdomain(f.task, n, &d); break;
      case QRN_DOMAIN_RMINUS: rc = QRN_appendrminusdomain(f.task, n, &d); break;
      case QRN_DOMAIN_R: rc = QRN_appendrdomain(f.task, n, &d); break;
      case QRN_DOMAIN_RZERO: rc = QRN_appendrzerodomain(f.task, n, &d); break;
      case QRN_DOMAIN_QUADRATIC_CONE: rc = QRN_appendquadraticconedomain(f.task, n, &d); break;
      case QRN_DOMAIN_RQUADRATIC_CONE: rc = QRN_appendrquadraticconedomain(f.task, n, &d); break;
      case QRN_DOMAIN_PRIMAL_EXP_CONE: rc = QRN_appendprimalexpconedomain(f.task, &d); break;
      case QRN_DOMAIN_DUAL_EXP_CONE: rc = QRN_appenddualexpconedomain(f.task, &d); break;
      case QRN_DOMAIN_PRIMAL_POWER_CONE:
        rc = QRN_appendprimalpowerconedomain(f.task, n, (qrn_int64)c.alpha.size(), c.alpha.data(), &d);
        break;
      case QRN_DOMAIN_DUAL_POWER_CONE:
        rc = QRN_appenddualpowerconedomain(f.task, n, (qrn_int64)c.alpha.size(), c.alpha.data(), &d);
        break;
      case QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE: rc = QRN_appendprimalgeomeanconedomain(f.task, n, &d); break;
      case QRN_DOMAIN_DUAL_GEO_MEAN_CONE: rc = QRN_appenddualgeomeanconedomain(f.task, n, &d); break;
      case QRN_DOMAIN_SVEC_PSD_CONE: rc = QRN_appendsvecpsdconedomain(f.task, n, &d); break;
    }
    CHECK_EQ(rc, QRN_RES_OK);
    CHECK_EQ(QRN_appendaccseq(f.task, d, n, 0, nullptr), QRN_RES_OK);
    f.solution(c.x, c.x);
    double v = f.pviol(0);
    if (!near(v, c.primal)) CHECK_EQ(std::make_pair(std::string(c.what), v), std::make_pair(std::string(c.what), c.primal));
  }
  // Duals: R's dual is {0}, RZERO's is R; the dual power cone of the weights
  // (1/2, 1/2) holds (1, 4, 3) since sqrt(2 * 8) = 4 >= 3.
  Conic f(3, 3, true);
  qrn_int64 d = f.domain(QRN_appendrdomain, 3);
  CHECK_EQ(QRN_appendaccseq(f.task, d, 3, 0, nullptr), QRN_RES_OK);
  d = f.domain(QRN_appendrzerodomain, 3);
  CHECK_EQ(QRN_appendaccseq(f.task, d, 3, 0, nullptr), QRN_RES_OK);
  Dbl half{1, 1};
  CHECK_EQ(QRN_appendprimalpowerconedomain(f.task, 3, 2, half.data(), &d), QRN_RES_OK);
  CHECK_EQ(QRN_appendaccseq(f.task, d, 3, 0, nullptr), QRN_RES_OK);
  f.solution({0, 0, 0}, {0, 3, -4, 0, 3, -4, 1, 4, 3});
  CHECK_EQ(f.dviol(0), 5.0);
  CHECK_EQ(f.dviol(1), 0.0);
  CHECK_EQ(f.dviol(2), 0.0);
}
