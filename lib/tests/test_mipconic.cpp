// The branch and bound over the conic optimizer: mixed-integer conic and
// quadratic problems checked against brute-force enumeration, disjunctive
// constraints, infeasible and unbounded problems, limits and the callback.
#include "check.hpp"
#include "opt_fixture.hpp"

#include <cmath>
#include <vector>

namespace {

qrn_int32 run(qrn_task_t task) {
  qrn_int32 trm = -1;
  CHECK_EQ(QRN_optimizetrm(task, &trm), QRN_RES_OK);
  return trm;
}

void make_integer(qrn_task_t task, int n) {
  for (int j = 0; j < n; ++j) CHECK_EQ(QRN_putvartype(task, j, QRN_VAR_TYPE_INTEGER), QRN_RES_OK);
}

// Appends expressions (dense rows over the variables, constants g) and one
// ACC of them in domain dom; returns the first expression's index.
qrn_int64 add_acc(qrn_task_t task, qrn_int64 dom, const std::vector<std::vector<double>> &rows,
                  const std::vector<double> &g) {
  qrn_int64 first = 0;
  QRN_getnumafe(task, &first);
  CHECK_EQ(QRN_appendafes(task, static_cast<qrn_int64>(rows.size())), QRN_RES_OK);
  std::vector<qrn_int64> idx;
  for (size_t r = 0; r < rows.size(); ++r) {
    idx.push_back(first + static_cast<qrn_int64>(r));
    for (size_t j = 0; j < rows[r].size(); ++j)
      if (rows[r][j] != 0) CHECK_EQ(QRN_putafefentry(task, idx.back(), static_cast<qrn_int32>(j), rows[r][j]), QRN_RES_OK);
    CHECK_EQ(QRN_putafeg(task, idx.back(), g[r]), QRN_RES_OK);
  }
  if (dom >= 0) CHECK_EQ(QRN_appendacc(task, dom, static_cast<qrn_int64>(idx.size()), idx.data(), nullptr), QRN_RES_OK);
  return first;
}

qrn_int64 quad_domain(qrn_task_t task, qrn_int64 n) {
  qrn_int64 d = -1;
  CHECK_EQ(QRN_appendquadraticconedomain(task, n, &d), QRN_RES_OK);
  return d;
}

// Watches the callback: the objective of every new integer solution; stops
// at the stop_at-th one (0: never).
struct Incumbents {
  std::vector<double> obj;
  int stop_at = 0;
  static qrn_int32 QRN_CALL take(qrn_task_t, void *h, qrn_int32 code, const qrn_real *d, const qrn_int32 *,
                                 const qrn_int64 *) {
    auto *self = static_cast<Incumbents *>(h);
    if (code != QRN_CALLBACK_NEW_INT_SOLUTION) return 0;
    self->obj.push_back(d[QRN_DINF_MIP_OBJ]);
    return self->stop_at > 0 && static_cast<int>(self->obj.size()) >= self->stop_at;
  }
};

// maximize v'x over x in {0,1,2}^7 with ||W x|| <= 6 (a quadratic cone ACC)
// and w'x <= 17: a small MISOCP whose optimum is found by enumeration.
struct Misocp {
  std::vector<double> v{9, 7, 6, 5, 4, 3, 3}, w{5, 4, 4, 3, 2, 2, 1};
  std::vector<std::vector<double>> W{{0, 0, 0, 0, 0, 0, 0}, {2, 1, 0, 1, 0, 1, 0}, {0, 1, 2, 0, 1, 0, 1},
                                     {1, 0, 1, 1, 1, 1, 1}};
  static constexpr int n = 7;

  void load(qrn_task_t task) const {
    Lp lp{{w}, v, {QRN_BK_UPPER}, std::vector<int>(n, QRN_BK_RANGED), {-INF}, {17}, std::vector<double>(n, 0),
          std::vector<double>(n, 2), true};
    ::load(task, lp);
    make_integer(task, n);
    add_acc(task, quad_domain(task, 4), W, {6, 0, 0, 0});
  }
  double value(const std::vector<double> &x) const {  // -inf when infeasible
    double vx = 0, wx = 0, s = 0;
    for (int j = 0; j < n; ++j) vx += v[j] * x[j], wx += w[j] * x[j];
    for (auto &row : W) {
      double a = 0;
      for (int j = 0; j < n; ++j) a += row[j] * x[j];
      s += a * a;
    }
    return wx <= 17 + 1e-9 && std::sqrt(s) <= 6 + 1e-9 ? vx : -INF;
  }
  double best() const {
    double best = -INF;
    for (int code = 0; code < 2187; ++code) {  // 3^7 points
      std::vector<double> x(n);
      for (int j = 0, c = code; j < n; ++j, c /= 3) x[j] = c % 3;
      best = std::max(best, value(x));
    }
    return best;
  }
};

double info(qrn_task_t task, qrn_dinfitem_e item) {
  double v = 0;
  QRN_getdouinf(task, item, &v);
  return v;
}

}  // namespace

TEST(mipconic_misocp_matches_enumeration_and_reports_incumbents) {
  const Misocp m;
  const double expect = m.best();
  Fixture f;
  m.load(f.task);
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_MIP_REL_GAP, 0.0), QRN_RES_OK);
  Incumbents inc;
  CHECK_EQ(QRN_putcallbackfunc(f.task, Incumbents::take, &inc), QRN_RES_OK);
  Capture log;
  CHECK_EQ(QRN_linkfunctotaskstream(f.task, QRN_STREAM_LOG, &log, Capture::take), QRN_RES_OK);
  CHECK_EQ(run(f.task), QRN_RES_OK);
  const auto &s = sol(f.task, QRN_SOL_ITG);
  CHECK_EQ(s.solsta, QRN_SOL_STA_INTEGER_OPTIMAL);
  CHECK(!sol(f.task, QRN_SOL_ITR).defined);
  std::vector<double> rounded(s.xx);
  for (double &x : rounded) x = std::round(x);
  for (int j = 0; j < m.n; ++j) CHECK(std::fabs(s.xx[j] - rounded[j]) < 1e-6);
  CHECK(close(m.value(rounded), expect, 1e-12));
  CHECK(close(info(f.task, QRN_DINF_MIP_OBJ), expect, 1e-7));
  CHECK(info(f.task, QRN_DINF_MIP_OBJ_BOUND) >= expect - 1e-6);
  CHECK(info(f.task, QRN_DINF_INTEGER_PRIMAL_CONE_VIOL) < 1e-6);
  qrn_int64 nodes = 0;
  QRN_getlintinf(f.task, QRN_LIINF_MIP_NODES, &nodes);
  CHECK(nodes > 1);
  // every incumbent was announced, each better than the one before, the last the optimum
  for (size_t k = 1; k < inc.obj.size(); ++k) CHECK(inc.obj[k] > inc.obj[k - 1]);
  CHECK(!inc.obj.empty() && close(inc.obj.back(), expect, 1e-7));
  CHECK(log.text.find("new integer solution") != std::string::npos);
  CHECK(log.text.find("mixed-integer conic") != std::string::npos);
}

TEST(mipconic_limits_and_callback_stop) {
  const Misocp m;
  {  // a node limit stops the search: no proof of optimality
    Fixture f;
    m.load(f.task);
    CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_MIP_NODE_LIMIT, 2), QRN_RES_OK);
    CHECK_EQ(run(f.task), QRN_RES_TRM_MAX_NODES);
    qrn_int64 nodes = 0;
    QRN_getlintinf(f.task, QRN_LIINF_MIP_NODES, &nodes);
    CHECK_EQ(nodes, 2);
    const auto &s = sol(f.task, QRN_SOL_ITG);
    CHECK(!s.defined || s.solsta == QRN_SOL_STA_PRIM_FEAS);
  }
  {  // the callback stops at the first incumbent, which is kept
    Fixture f;
    m.load(f.task);
    Incumbents inc;
    inc.stop_at = 1;
    CHECK_EQ(QRN_putcallbackfunc(f.task, Incumbents::take, &inc), QRN_RES_OK);
    CHECK_EQ(run(f.task), QRN_RES_TRM_USER_CALLBACK);
    CHECK_EQ(inc.obj.size(), 1u);
    const auto &s = sol(f.task, QRN_SOL_ITG);
    CHECK_EQ(s.solsta, QRN_SOL_STA_PRIM_FEAS);
    double obj = 0;
    QRN_getprimalobj(f.task, QRN_SOL_ITG, &obj);
    CHECK(!inc.obj.empty() && close(obj, inc.obj[0], 1e-9));
  }
}

// min 1/2 x'Qx + c'x over x0..x2 integer in [-2, 2] and x3 continuous, with
// x0 + x1 + x2 + x3 >= 1.5: the optimum against every integer point with
// the continuous part solved by the conic optimizer.
TEST(mipconic_miqp_matches_enumeration) {
  const qrn_int32 qi[] = {0, 1, 1, 2, 3, 3}, qj[] = {0, 0, 1, 2, 3, 0};
  const double qv[] = {2.0, 0.5, 1.5, 1.0, 1.0, -0.3};
  const std::vector<double> c{-1.3, 0.7, -0.4, 0.2};
  auto build = [&](qrn_task_t task) {
    load(task, {{{1, 1, 1, 1}}, c, {QRN_BK_LOWER}, {QRN_BK_RANGED, QRN_BK_RANGED, QRN_BK_RANGED, QRN_BK_FREE},
                {1.5}, {INF}, {-2, -2, -2, -INF}, {2, 2, 2, INF}});
    CHECK_EQ(QRN_putqobj(task, 6, qi, qj, qv), QRN_RES_OK);
  };
  Fixture f;
  build(f.task);
  make_integer(f.task, 3);
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_MIP_REL_GAP, 0.0), QRN_RES_OK);
  CHECK_EQ(run(f.task), QRN_RES_OK);
  const auto &s = sol(f.task, QRN_SOL_ITG);
  CHECK_EQ(s.solsta, QRN_SOL_STA_INTEGER_OPTIMAL);
  double got = 0;
  QRN_getprimalobj(f.task, QRN_SOL_ITG, &got);

  Fixture g;
  build(g.task);
  double best = INF;
  for (int a = -2; a <= 2; ++a)
    for (int b = -2; b <= 2; ++b)
      for (int d = -2; d <= 2; ++d) {
        const double v[] = {double(a), double(b), double(d)};
        for (int j = 0; j < 3; ++j) CHECK_EQ(QRN_putvarbound(g.task, j, QRN_BK_FIXED, v[j], v[j]), QRN_RES_OK);
        run(g.task);
        CHECK_EQ(sol(g.task, QRN_SOL_ITR).solsta, QRN_SOL_STA_OPTIMAL);
        double o = 0;
        QRN_getprimalobj(g.task, QRN_SOL_ITR, &o);
        best = std::min(best, o);
      }
  CHECK(close(got, best, 1e-7));
}

// maximize x + y, 0 <= x, y <= 10, subject to one of
//   [x <= 1, y <= 3]  (4),  [x <= 3, y <= 2.5]  (5.5),  ||(x, y)|| <= 4  (4 sqrt 2):
// the conic term wins. Then with x, y >= 3.5 no term can hold.
TEST(mipconic_disjunction_of_linear_and_conic_terms) {
  Fixture f;
  load(f.task, {{}, {1, 1}, {}, {QRN_BK_RANGED, QRN_BK_RANGED}, {}, {}, {0, 0}, {10, 10}, true});
  // expressions: x - 1, y - 3, x - 3, y - 2.5, (4, x, y)
  const qrn_int64 e = add_acc(f.task, -1, {{1, 0}, {0, 1}, {1, 0}, {0, 1}, {0, 0}, {1, 0}, {0, 1}},
                              {-1, -3, -3, -2.5, 4, 0, 0});
  qrn_int64 minus = -1;
  CHECK_EQ(QRN_appendrminusdomain(f.task, 2, &minus), QRN_RES_OK);
  const qrn_int64 cone = quad_domain(f.task, 3);
  const qrn_int64 doms[] = {minus, minus, cone}, sizes[] = {1, 1, 1};
  std::vector<qrn_int64> afes;
  for (qrn_int64 k = 0; k < 7; ++k) afes.push_back(e + k);
  CHECK_EQ(QRN_appenddjcs(f.task, 1), QRN_RES_OK);
  CHECK_EQ(QRN_putdjc(f.task, 0, 3, doms, 7, afes.data(), nullptr, 3, sizes), QRN_RES_OK);
  CHECK_EQ(run(f.task), QRN_RES_OK);
  const auto &s = sol(f.task, QRN_SOL_ITG);
  CHECK_EQ(s.solsta, QRN_SOL_STA_INTEGER_OPTIMAL);
  CHECK(close(s.xx[0], 2 * std::sqrt(2.0), 1e-6) && close(s.xx[1], 2 * std::sqrt(2.0), 1e-6));
  const qrn_int64 zero = 0;
  double viol = 1;
  CHECK_EQ(QRN_getpvioldjc(f.task, QRN_SOL_ITG, 1, &zero, &viol), QRN_RES_OK);
  CHECK(viol < 1e-6);

  // the interior-point method alone refuses disjunctions
  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_IPM), QRN_RES_OK);
  qrn_int32 trm = 0;
  CHECK_EQ(QRN_optimizetrm(f.task, &trm), QRN_RES_ERR_OPT_DJC);
  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_AUTO), QRN_RES_OK);

  CHECK_EQ(QRN_putvarbound(f.task, 0, QRN_BK_RANGED, 3.5, 10), QRN_RES_OK);
  CHECK_EQ(QRN_putvarbound(f.task, 1, QRN_BK_RANGED, 3.5, 10), QRN_RES_OK);
  CHECK_EQ(run(f.task), QRN_RES_OK);
  CHECK_EQ(sol(f.task, QRN_SOL_ITG).prosta, QRN_PRO_STA_PRIM_INFEAS);
}

// Integer points near the origin: x + y >= 0.8 and ||(x, y)|| <= 0.7 have
// continuous solutions but no integer one. Maximizing x with y >= ||x/10||
// the relaxation is unbounded: "infeasible or unbounded", unless a
// disjunction bounds it, which the search must then branch on.
TEST(mipconic_infeasible_and_unbounded) {
  {
    Fixture f;
    load(f.task, {{{1, 1}}, {1, 1}, {QRN_BK_LOWER}, {QRN_BK_FREE, QRN_BK_FREE}, {0.8}, {INF}, {-INF, -INF},
                  {INF, INF}});
    make_integer(f.task, 2);
    add_acc(f.task, quad_domain(f.task, 3), {{0, 0}, {1, 0}, {0, 1}}, {0.7, 0, 0});
    CHECK_EQ(run(f.task), QRN_RES_OK);
    const auto &s = sol(f.task, QRN_SOL_ITG);
    CHECK(s.defined && s.prosta == QRN_PRO_STA_PRIM_INFEAS && s.solsta == QRN_SOL_STA_UNKNOWN);
  }
  Fixture f;
  load(f.task, {{}, {1, 0}, {}, {QRN_BK_LOWER, QRN_BK_LOWER}, {}, {}, {0, 0}, {INF, INF}, true});
  make_integer(f.task, 1);
  add_acc(f.task, quad_domain(f.task, 2), {{0, 1}, {0.1, 0}}, {0, 0});
  CHECK_EQ(run(f.task), QRN_RES_OK);
  CHECK_EQ(sol(f.task, QRN_SOL_ITG).prosta, QRN_PRO_STA_PRIM_INFEAS_OR_UNBOUNDED);
  // one of x <= 2.5, x <= 3.7: x = 3
  const qrn_int64 e = add_acc(f.task, -1, {{1, 0}, {1, 0}}, {-2.5, -3.7});
  qrn_int64 minus = -1;
  CHECK_EQ(QRN_appendrminusdomain(f.task, 1, &minus), QRN_RES_OK);
  const qrn_int64 doms[] = {minus, minus}, afes[] = {e, e + 1}, sizes[] = {1, 1};
  CHECK_EQ(QRN_appenddjcs(f.task, 1), QRN_RES_OK);
  CHECK_EQ(QRN_putdjc(f.task, 0, 2, doms, 2, afes, nullptr, 2, sizes), QRN_RES_OK);
  CHECK_EQ(run(f.task), QRN_RES_OK);
  CHECK_EQ(sol(f.task, QRN_SOL_ITG).solsta, QRN_SOL_STA_INTEGER_OPTIMAL);
  CHECK(close(sol(f.task, QRN_SOL_ITG).xx[0], 3.0, 1e-7));
}
