// The interior-point engine on problems with known answers, its certificates,
// its stopping rules, and the derivatives of its barriers.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <lapacke.h>
#include <memory>
#include <tuple>
#include <cmath>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "check.hpp"
#include "ipm.hpp"
#include "ipm_cones.hpp"
#include "ipm_kkt.hpp"

using namespace qrn::ipm;

namespace {

using Vec = std::vector<double>;
const double kE = std::exp(1.0);

// A problem written densely: rows of A, b and the cones.
struct Builder {
  int n;
  Vec c;
  double c0 = 0;
  std::vector<Vec> rows;
  Vec b;
  std::vector<Cone> cones;
  std::vector<std::tuple<int, int, double>> p;  // upper triangle
  explicit Builder(int nvar) : n(nvar), c(nvar, 0.0) {}
  // Rows of one cone: each row is (coefficients of x, b): s = b - A x.
  Builder &cone(ConeKind kind, const std::vector<Vec> &a, const Vec &rhs, Vec alpha = {}) {
    for (const Vec &r : a) rows.push_back(r);
    b.insert(b.end(), rhs.begin(), rhs.end());
    cones.push_back({kind, int(a.size()), alpha});
    return *this;
  }
  // The cone holds the affine map sum_j coef_j x_j + const per row, i.e. s = F x + g.
  Builder &holds(ConeKind kind, const std::vector<Vec> &f, const Vec &g, Vec alpha = {}) {
    std::vector<Vec> a;
    for (const Vec &r : f) {
      Vec neg(r);
      for (double &v : neg) v = -v;
      a.push_back(neg);
    }
    return cone(kind, a, g, alpha);
  }
  Problem build() const {
    Problem pb;
    pb.n = n;
    pb.c = c;
    pb.c0 = c0;
    int m = int(rows.size());
    pb.A = Csc(m, n);
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < m; ++i)
        if (rows[i][j] != 0) pb.A.rowind.push_back(i), pb.A.val.push_back(rows[i][j]);
      pb.A.colptr[j + 1] = int(pb.A.rowind.size());
    }
    pb.b = b;
    pb.cones = cones;
    if (!p.empty()) {
      pb.P = Csc(n, n);
      for (int j = 0; j < n; ++j) {
        for (auto &e : p)
          if (std::get<1>(e) == j) pb.P.rowind.push_back(std::get<0>(e)), pb.P.val.push_back(std::get<2>(e));
        pb.P.colptr[j + 1] = int(pb.P.rowind.size());
      }
    }
    return pb;
  }
};

Vec unit(int n, int j, double v = 1.0) {
  Vec r(n, 0.0);
  r[j] = v;
  return r;
}

bool close(double a, double b, double rel) { return std::fabs(a - b) <= rel * std::max(1.0, std::fabs(b)); }

void check_close(double a, double b, double rel, const char *what) {
  if (!close(a, b, rel)) {
    char buf[200];
    std::snprintf(buf, sizeof buf, "%s: %.12g vs %.12g (rel %.2e)", what, a, b, std::fabs(a - b) / std::max(1.0, std::fabs(b)));
    check::failed(__FILE__, __LINE__, buf);
  }
}

// Distance of v from the closed cone (0 inside), for checking certificates.
double cone_violation(const Cone &k, const double *v) {
  int d = k.dim;
  switch (k.kind) {
    case ConeKind::Zero: {
      double r = 0;
      for (int i = 0; i < d; ++i) r = std::max(r, std::fabs(v[i]));
      return r;
    }
    case ConeKind::Nonnegative: {
      double r = 0;
      for (int i = 0; i < d; ++i) r = std::max(r, -v[i]);
      return r;
    }
    case ConeKind::Quadratic: {
      double t = 0;
      for (int i = 1; i < d; ++i) t += v[i] * v[i];
      return std::max(0.0, std::sqrt(t) - v[0]);
    }
    case ConeKind::RotatedQuadratic: {
      double t = 0;
      for (int i = 2; i < d; ++i) t += v[i] * v[i];
      return std::max({0.0, -v[0], -v[1], t - 2 * v[0] * v[1]});
    }
    case ConeKind::PrimalExp:  // x0 >= x1 exp(x2/x1)
      if (v[1] <= 0) return std::max({0.0, -v[0], -v[1], v[1] == 0 ? v[2] : HUGE_VAL});
      return std::max({0.0, -v[0], v[1] * std::exp(v[2] / v[1]) - v[0]});
    case ConeKind::DualExp:  // x0 >= -x2 exp(x1/x2 - 1)
      if (v[2] >= 0) return std::max({0.0, -v[0], v[2], v[2] == 0 ? -v[1] : HUGE_VAL});
      return std::max({0.0, -v[0], -v[2] * std::exp(v[1] / v[2] - 1) - v[0]});
    case ConeKind::PrimalPower:
    case ConeKind::DualPower: {
      double sum = 0, lg = 0, w = 0, neg = 0;
      int nl = int(k.alpha.size());
      for (double a : k.alpha) sum += a;
      for (int i = 0; i < nl; ++i) {
        double a = k.alpha[i] / sum;
        double x = k.kind == ConeKind::DualPower ? v[i] / a : v[i];
        neg = std::max(neg, -v[i]);
        lg += a * std::log(std::max(x, 0.0));
      }
      for (int i = nl; i < d; ++i) w += v[i] * v[i];
      return std::max({0.0, neg, std::sqrt(w) - std::exp(lg)});
    }
    case ConeKind::PrimalGeoMean:
    case ConeKind::DualGeoMean: {
      Cone p{k.kind == ConeKind::PrimalGeoMean ? ConeKind::PrimalPower : ConeKind::DualPower, d, Vec(d - 1, 1.0)};
      return cone_violation(p, v);
    }
    case ConeKind::Psd: {  // minus the smallest eigenvalue
      int n = int(std::lround((std::sqrt(8.0 * d + 1) - 1) / 2));
      Vec m(n * n), ev(n);
      for (int j = 0, q = 0; j < n; ++j)
        for (int i = j; i < n; ++i, ++q) m[i + j * n] = m[j + i * n] = i == j ? v[q] : v[q] / std::sqrt(2.0);
      LAPACKE_dsyev(LAPACK_COL_MAJOR, 'N', 'L', n, m.data(), n, ev.data());
      return std::max(0.0, -ev[0]);
    }
    default: return HUGE_VAL;
  }
}
// K* for the kinds used in the certificate tests.
Cone dual_of(const Cone &k) {
  Cone d = k;
  if (k.kind == ConeKind::Zero) d.kind = ConeKind::Nonnegative;  // not used: free
  if (k.kind == ConeKind::PrimalExp) d.kind = ConeKind::DualExp;
  if (k.kind == ConeKind::DualExp) d.kind = ConeKind::PrimalExp;
  if (k.kind == ConeKind::PrimalPower) d.kind = ConeKind::DualPower;
  if (k.kind == ConeKind::DualPower) d.kind = ConeKind::PrimalPower;
  if (k.kind == ConeKind::PrimalGeoMean) d.kind = ConeKind::DualGeoMean;
  if (k.kind == ConeKind::DualGeoMean) d.kind = ConeKind::PrimalGeoMean;
  return d;
}

// Checks a primal infeasibility certificate: y in K*, A'y = 0, b'y = -1.
void check_primal_certificate(const Problem &pb, const Result &r) {
  CHECK(r.status == Status::PrimalInfeasible);
  double by = 0;
  for (size_t i = 0; i < pb.b.size(); ++i) by += pb.b[i] * r.y[i];
  check_close(by, -1.0, 1e-9, "b'y");
  for (int j = 0; j < pb.n; ++j) {
    double t = 0;
    for (int k = pb.A.colptr[j]; k < pb.A.colptr[j + 1]; ++k) t += pb.A.val[k] * r.y[pb.A.rowind[k]];
    CHECK(std::fabs(t) <= 1e-7);
  }
  int off = 0;
  for (const Cone &k : pb.cones) {
    if (k.kind != ConeKind::Zero) CHECK(cone_violation(dual_of(k), &r.y[off]) <= 1e-7);
    off += k.dim;
  }
}

// Checks a dual infeasibility certificate: Ax + s = 0, s in K, Px = 0, c'x = -1.
void check_dual_certificate(const Problem &pb, const Result &r) {
  CHECK(r.status == Status::DualInfeasible);
  double cx = 0;
  for (int j = 0; j < pb.n; ++j) cx += pb.c[j] * r.x[j];
  check_close(cx, -1.0, 1e-9, "c'x");
  Vec ax(pb.b.size(), 0.0), px(pb.n, 0.0);
  for (int j = 0; j < pb.n; ++j)
    for (int k = pb.A.colptr[j]; k < pb.A.colptr[j + 1]; ++k) ax[pb.A.rowind[k]] += pb.A.val[k] * r.x[j];
  for (size_t i = 0; i < ax.size(); ++i) CHECK(std::fabs(ax[i] + r.s[i]) <= 1e-7);
  for (int j = 0; j < pb.P.ncols; ++j)
    for (int k = pb.P.colptr[j]; k < pb.P.colptr[j + 1]; ++k) {
      int i = pb.P.rowind[k];
      px[i] += pb.P.val[k] * r.x[j];
      if (i != j) px[j] += pb.P.val[k] * r.x[i];
    }
  for (double v : px) CHECK(std::fabs(v) <= 1e-7);
  int off = 0;
  for (const Cone &k : pb.cones) {
    CHECK(cone_violation(k, &r.s[off]) <= 1e-7);
    off += k.dim;
  }
}

// Checks an optimum: objective, primal and dual feasibility, y in K*.
void check_optimum(const Problem &pb, const Result &r, double expected, double rel) {
  CHECK(r.status == Status::Optimal);
  if (r.status != Status::Optimal) std::printf("  status %s: %s\n", status_name(r.status), r.message.c_str());
  check_close(r.pobj, expected, rel, "primal objective");
  check_close(r.dobj, expected, rel, "dual objective");
  // The objective recomputed from x.
  double obj = pb.c0;
  for (int j = 0; j < pb.n; ++j) obj += pb.c[j] * r.x[j];
  for (int j = 0; j < pb.P.ncols; ++j)
    for (int k = pb.P.colptr[j]; k < pb.P.colptr[j + 1]; ++k) {
      int i = pb.P.rowind[k];
      obj += (i == j ? 0.5 : 1.0) * pb.P.val[k] * r.x[i] * r.x[j];
    }
  check_close(obj, expected, rel, "c'x + x'Px/2");
  int off = 0;
  for (const Cone &k : pb.cones) {
    CHECK(cone_violation(k, &r.s[off]) <= 1e-8);
    if (k.kind != ConeKind::Zero) CHECK(cone_violation(dual_of(k), &r.y[off]) <= 1e-8);
    off += k.dim;
  }
}

// IPM_LOG=1 in the environment prints the engine's log.
Result run(const Problem &pb, Settings st = Settings()) {
  LogSink log;
  if (std::getenv("IPM_LOG")) log = [](const std::string &l) { std::printf("%s\n", l.c_str()); };
  return solve(pb, st, {}, log);
}

}  // namespace

TEST(ipm_lp_and_qp_against_hand_solutions) {
  // min -3x - 2y + z: x + y + z <= 4, x + 3y <= 9, 0 <= x <= 3, y, z >= 0 -> x = 3, y = 1: -11
  Builder lp(3);
  lp.c = {-3, -2, 1};
  lp.cone(ConeKind::Nonnegative, {{1, 1, 1}, {1, 3, 0}, {1, 0, 0}, {-1, 0, 0}, {0, -1, 0}, {0, 0, -1}},
          {4, 9, 3, 0, 0, 0});
  Problem p = lp.build();
  Result r = run(p);
  check_optimum(p, r, -11, 1e-8);
  CHECK(std::fabs(r.x[0] - 3) < 1e-7 && std::fabs(r.x[1] - 1) < 1e-7 && std::fabs(r.x[2]) < 1e-7);
  // Duals: c + A'y = 0 with y >= 0: y = (0.5?...) checked through the objectives; y of x <= 3 is positive.
  CHECK(r.y[2] > 0.1);

  // min (x^2 + y^2)/2 - x - y + 5: x + y = 1 -> x = y = 1/2: 4.25; adding x <= 0.2 -> (0.2, 0.8): 4.34
  Builder qp(2);
  qp.c = {-1, -1};
  qp.c0 = 5;
  qp.p = {{0, 0, 1.0}, {1, 1, 1.0}};
  qp.cone(ConeKind::Zero, {{1, 1}}, {1});
  p = qp.build();
  check_optimum(p, run(p), 4.25, 1e-8);
  qp.cone(ConeKind::Nonnegative, {{1, 0}}, {0.2});
  p = qp.build();
  r = run(p);
  check_optimum(p, r, 4.34, 1e-8);
  CHECK(std::fabs(r.x[0] - 0.2) < 1e-7 && std::fabs(r.y[1] - 0.6) < 1e-6);

  // An off-diagonal P entry: min (x - y)^2/2 + x^2/2 ... = 1/2 [x y] [[2,-1],[-1,1]] [x y]' - y, y <= 1
  // -> stationary: 2x - y = 0, -x + y = 1 + lambda... with y = 1: x = 1/2, value (1 - 1/2)... = 1/2(2/4 - 1 + 1) - 1 = -0.75
  Builder q2(2);
  q2.c = {0, -1};
  q2.p = {{0, 0, 2.0}, {0, 1, -1.0}, {1, 1, 1.0}};
  q2.cone(ConeKind::Nonnegative, {{0, 1}}, {1});
  p = q2.build();
  r = run(p);
  check_optimum(p, r, -0.75, 1e-8);
}

TEST(ipm_quadratic_and_rotated_cones) {
  // min t: (t, x, y) in Q, x + y = 2 -> sqrt 2
  Builder b(3);
  b.c = {1, 0, 0};
  b.cone(ConeKind::Zero, {{0, 1, 1}}, {2});
  b.holds(ConeKind::Quadratic, {unit(3, 0), unit(3, 1), unit(3, 2)}, {0, 0, 0});
  Problem p = b.build();
  Result r = run(p);
  check_optimum(p, r, std::sqrt(2.0), 1e-8);
  CHECK(std::fabs(r.x[1] - 1) < 1e-7);
  // min t: (t, 1/2, x) rotated (t >= x^2), x = 2 -> 4
  Builder rq(2);
  rq.c = {1, 0};
  rq.holds(ConeKind::RotatedQuadratic, {unit(2, 0), {0, 0}, unit(2, 1)}, {0, 0.5, 0});
  rq.cone(ConeKind::Zero, {unit(2, 1)}, {2});
  p = rq.build();
  check_optimum(p, run(p), 4.0, 1e-8);
}

TEST(ipm_large_quadratic_cones_sparse_or_dense) {
  // min c'x: ||x|| <= 1 (x in R^40, next to a small cone tying x0 and x1:
  // ||(x0 - x1)|| <= 3, never active) -> -||c|| at x = -c/||c||; the large cone
  // held by its sparse expansion and as a dense block.
  const int n = 40;
  Builder b(n);
  for (int j = 0; j < n; ++j) b.c[j] = std::sin(1.0 + j);
  std::vector<Vec> rows{Vec(n, 0.0)};
  for (int j = 0; j < n; ++j) rows.push_back(unit(n, j));
  Vec g(n + 1, 0.0);
  g[0] = 1;
  b.holds(ConeKind::Quadratic, rows, g);
  Vec diff(n, 0.0);
  diff[0] = 1, diff[1] = -1;
  b.holds(ConeKind::Quadratic, {Vec(n, 0.0), diff}, {3, 0});
  Problem p = b.build();
  double norm = 0;
  for (double v : b.c) norm += v * v;
  norm = std::sqrt(norm);
  for (int expand : {16, 1000}) {
    Settings st;
    st.soc_expand_dim = expand;
    Result r = run(p, st);
    check_optimum(p, r, -norm, 1e-8);
    CHECK(std::fabs(r.x[5] + b.c[5] / norm) < 1e-6);
  }
}

TEST(ipm_semidefinite_three_by_three) {
  // min <C, X>, tr X = 1, X11 = b2, C = tridiag(1, 2, 1); X in svec form (6 entries).
  const double r2 = std::sqrt(2.0);
  for (auto [b2, expected] : {std::pair<double, double>{0.5, 0.7009618943}, {0.25, 2 - std::sqrt(2.0)}}) {
    Builder b(6);
    // svec order: (0,0) (1,0) (2,0) (1,1) (2,1) (2,2)
    b.c = {2, r2 * 1, 0, 2, r2 * 1, 2};
    b.cone(ConeKind::Zero, {{1, 0, 0, 1, 0, 1}, {1, 0, 0, 0, 0, 0}}, {1, b2});
    std::vector<Vec> id;
    for (int j = 0; j < 6; ++j) id.push_back(unit(6, j));
    b.holds(ConeKind::Psd, id, Vec(6, 0.0));
    Problem p = b.build();
    Result r = run(p);
    check_optimum(p, r, expected, 1e-8);
  }
}

TEST(ipm_exponential_cones) {
  // min x0: (x0, 1, 1) in Kexp -> e
  Builder b(1);
  b.c = {1};
  b.holds(ConeKind::PrimalExp, {{1}, {0}, {0}}, {0, 1, 1});
  Problem p = b.build();
  check_optimum(p, run(p), kE, 1e-7);
  // min x0: (x0, 0, -1) in Kexp* (x0 >= exp(-1)) -> 1/e
  Builder d(1);
  d.c = {1};
  d.holds(ConeKind::DualExp, {{1}, {0}, {0}}, {0, 0, -1});
  p = d.build();
  check_optimum(p, run(p), 1 / kE, 1e-7);
  // max sum log: max x2 with (1, x1, x2) in Kexp i.e. x2 <= x1 log(1/x1), best at x1 = 1/e: 1/e
  Builder e(2);
  e.c = {0, -1};
  e.holds(ConeKind::PrimalExp, {{0, 0}, unit(2, 0), unit(2, 1)}, {1, 0, 0});
  p = e.build();
  check_optimum(p, run(p), -1 / kE, 1e-7);
}

// Many exponential cones whose steps end at their boundaries: max sum_j
// (x_j log(1/x_j) + w_j x_j) over the simplex is log sum_j exp(w_j), reached
// at x_j proportional to exp(w_j). Also guards against the runs that stall
// near the optimum with their steps blocked by one cone after another.
TEST(ipm_many_exponential_cones_log_sum_exp) {
  for (int k : {40, 150}) {
    Builder b(2 * k);  // x_0..x_{k-1}, t_0..t_{k-1}
    double lse = 0;
    for (int j = 0; j < k; ++j) {
      double w = std::sin(1.7 * j) * 3;
      b.c[j] = -w, b.c[k + j] = -1;
      lse += std::exp(w);
    }
    Vec ones(2 * k, 0.0);
    for (int j = 0; j < k; ++j) ones[j] = 1;
    b.cone(ConeKind::Zero, {ones}, {1});
    for (int j = 0; j < k; ++j)  // t_j <= x_j log(1/x_j): (1, x_j, t_j) in Kexp
      b.holds(ConeKind::PrimalExp, {Vec(2 * k, 0.0), unit(2 * k, j), unit(2 * k, k + j)}, {1, 0, 0});
    Problem p = b.build();
    Result r = run(p);
    check_optimum(p, r, -std::log(lse), 1e-7);
    CHECK(r.iterations <= 30);
  }
}

TEST(ipm_power_and_geometric_mean_cones) {
  // min -x2: x0 + x1 = 1, (x0, x1, x2) in P(0.3, 0.7) -> -(0.3^0.3 0.7^0.7)
  auto three = [](ConeKind kind, Vec alpha) {
    Builder b(3);
    b.c = {0, 0, -1};
    b.cone(ConeKind::Zero, {{1, 1, 0}}, {1});
    b.holds(kind, {unit(3, 0), unit(3, 1), unit(3, 2)}, {0, 0, 0}, alpha);
    return b.build();
  };
  Problem p = three(ConeKind::PrimalPower, {0.3, 0.7});
  check_optimum(p, run(p), -0.5428814527, 1e-7);
  p = three(ConeKind::PrimalPower, {3, 7});  // weights are normalised
  check_optimum(p, run(p), -0.5428814527, 1e-7);
  // Dual power: prod (x_i / a_i)^a_i <= sum x_i = 1 (weighted AM-GM) -> -1
  p = three(ConeKind::DualPower, {0.3, 0.7});
  Result r = run(p);
  check_optimum(p, r, -1, 1e-7);
  CHECK(std::fabs(r.x[0] - 0.3) < 1e-5);
  // Geometric means over 3 entries summing to 3: (x0 x1 x2)^(1/3) <= 1, and 3 times that for the dual.
  for (auto [kind, expected] : {std::pair<ConeKind, double>{ConeKind::PrimalGeoMean, -1.0}, {ConeKind::DualGeoMean, -3.0}}) {
    Builder g(4);
    g.c = {0, 0, 0, -1};
    g.cone(ConeKind::Zero, {{1, 1, 1, 0}}, {3});
    g.holds(kind, {unit(4, 0), unit(4, 1), unit(4, 2), unit(4, 3)}, {0, 0, 0, 0});
    p = g.build();
    check_optimum(p, run(p), expected, 1e-7);
  }
  // Two entries on the right: x0^0.5 x1^0.5 >= ||(w0, w1)||, x0 = 1, x1 = 4: max w0 + w1 = 2 sqrt 2
  Builder w(4);
  w.c = {0, 0, -1, -1};
  w.cone(ConeKind::Zero, {unit(4, 0), unit(4, 1)}, {1, 4});
  w.holds(ConeKind::PrimalPower, {unit(4, 0), unit(4, 1), unit(4, 2), unit(4, 3)}, {0, 0, 0, 0}, {1, 1});
  p = w.build();
  check_optimum(p, run(p), -2 * std::sqrt(2.0), 1e-7);
}

TEST(ipm_mixed_cones_in_one_problem) {
  // min t + u + v - w:  (t, x, y) in Q with x + y = 2 (t = sqrt 2); (u, 1, 1) in Kexp (u = e);
  // v >= 1 - 2 w, w <= 0.5 (v = 0 at w = 0.5 gives -0.5);  total sqrt 2 + e - 0.5
  Builder b(6);  // t x y u v w
  b.c = {1, 0, 0, 1, 1, -1};
  b.cone(ConeKind::Zero, {{0, 1, 1, 0, 0, 0}}, {2});
  b.holds(ConeKind::Quadratic, {unit(6, 0), unit(6, 1), unit(6, 2)}, {0, 0, 0});
  b.holds(ConeKind::PrimalExp, {unit(6, 3), Vec(6, 0.0), Vec(6, 0.0)}, {0, 1, 1});
  b.holds(ConeKind::Nonnegative, {{0, 0, 0, 0, 1, 2}, {0, 0, 0, 0, 0, -1}, unit(6, 4)}, {-1, 0.5, 0});
  Problem p = b.build();
  check_optimum(p, run(p), std::sqrt(2.0) + kE - 0.5, 1e-7);
}

TEST(ipm_primal_infeasibility_certificates) {
  // x + y = 1 with ||(x, y)|| <= 0.5
  Builder q(2);
  q.cone(ConeKind::Zero, {{1, 1}}, {1});
  q.holds(ConeKind::Quadratic, {{0, 0}, unit(2, 0), unit(2, 1)}, {0.5, 0, 0});
  Problem p = q.build();
  check_primal_certificate(p, run(p));
  // LP: x + y >= 5, x + y <= 3
  Builder lp(2);
  lp.c = {1, 1};
  lp.cone(ConeKind::Nonnegative, {{-1, -1}, {1, 1}}, {-5, 3});
  p = lp.build();
  check_primal_certificate(p, run(p));
  // SDP: tr X = 1 with X11 = 2
  Builder s(6);
  s.c = {1, 0, 0, 1, 0, 1};
  s.cone(ConeKind::Zero, {{1, 0, 0, 1, 0, 1}, {1, 0, 0, 0, 0, 0}}, {1, 2});
  std::vector<Vec> id;
  for (int j = 0; j < 6; ++j) id.push_back(unit(6, j));
  s.holds(ConeKind::Psd, id, Vec(6, 0.0));
  p = s.build();
  check_primal_certificate(p, run(p));
  // (x0, 1, 1) in Kexp with x0 <= 2 < e
  Builder e(1);
  e.c = {1};
  e.holds(ConeKind::PrimalExp, {{1}, {0}, {0}}, {0, 1, 1});
  e.cone(ConeKind::Nonnegative, {{1}}, {2});
  p = e.build();
  check_primal_certificate(p, run(p));
  // x0 + x1 = 1 and x2 = 1 in P(0.3, 0.7) (at most 0.5429)
  Builder w(3);
  w.cone(ConeKind::Zero, {{1, 1, 0}, {0, 0, 1}}, {1, 1});
  w.holds(ConeKind::PrimalPower, {unit(3, 0), unit(3, 1), unit(3, 2)}, {0, 0, 0}, {0.3, 0.7});
  p = w.build();
  check_primal_certificate(p, run(p));
}

TEST(ipm_dual_infeasibility_certificates) {
  // min -x, x >= 0
  Builder lp(1);
  lp.c = {-1};
  lp.holds(ConeKind::Nonnegative, {{1}}, {0});
  Problem p = lp.build();
  check_dual_certificate(p, run(p));
  // min -t + x: (t, x) in Q... rays along t = x
  Builder q(2);
  q.c = {-2, 1};
  q.holds(ConeKind::Quadratic, {unit(2, 0), unit(2, 1)}, {0, 0});
  p = q.build();
  check_dual_certificate(p, run(p));
  // QP: min y^2/2 - x, x >= 0 (the ray has P x = 0)
  Builder qp(2);
  qp.c = {-1, 0};
  qp.p = {{1, 1, 1.0}};
  qp.holds(ConeKind::Nonnegative, {unit(2, 0)}, {0});
  p = qp.build();
  check_dual_certificate(p, run(p));
  // min x2: (1, 1, x2) in Kexp (x2 <= 0, unbounded below)
  Builder e(1);
  e.c = {1};
  e.holds(ConeKind::PrimalExp, {{0}, {0}, {1}}, {1, 1, 0});
  p = e.build();
  check_dual_certificate(p, run(p));
  // min -x0: (x0, x1, w) in P(0.5, 0.5) with w = 1: x0 x1 >= 1, unbounded
  Builder w(3);
  w.c = {-1, 0, 0};
  w.cone(ConeKind::Zero, {unit(3, 2)}, {1});
  w.holds(ConeKind::PrimalPower, {unit(3, 0), unit(3, 1), unit(3, 2)}, {0, 0, 0}, {1, 1});
  p = w.build();
  check_dual_certificate(p, run(p));
}

TEST(ipm_stops_limits_and_logs) {
  Builder b(3);
  b.c = {1, 0, 0};
  b.cone(ConeKind::Zero, {{0, 1, 1}}, {2});
  b.holds(ConeKind::Quadratic, {unit(3, 0), unit(3, 1), unit(3, 2)}, {0, 0, 0});
  Problem p = b.build();
  std::vector<Iteration> seen;
  std::vector<std::string> lines;
  Result r = solve(p, Settings(), [&](const Iteration &it) {
    seen.push_back(it);
    return it.iter == 2;
  }, [&](const std::string &l) { lines.push_back(l); });
  CHECK(r.status == Status::Stopped);
  CHECK_EQ(r.iterations, 2);
  CHECK_EQ(seen.size(), size_t(3));
  CHECK(seen.size() == 3 && seen[2].mu < seen[0].mu && seen[1].step > 0);
  CHECK(lines.size() >= 5);  // header lines, one per iteration, the closing line
  CHECK(lines.back().find("stopped") != std::string::npos);

  Settings st;
  st.max_iter = 3;
  r = solve(p, st);
  CHECK(r.status == Status::IterationLimit);
  CHECK_EQ(r.iterations, 3);
  st = Settings();
  st.max_time = 0;
  CHECK(solve(p, st).status == Status::TimeLimit);

  // Malformed problems are refused with a message.
  Problem bad = p;
  bad.cones[1].dim = 2;
  CHECK(validate(bad).find("cover") != std::string::npos);
  bad = p;
  bad.cones[1].kind = ConeKind::PrimalPower;
  CHECK(validate(bad).find("weights") != std::string::npos);
  bad.cones[1].alpha = {1, -1};
  CHECK(validate(bad).find("not positive") != std::string::npos);
  bad = p;
  bad.cones[1] = {ConeKind::Psd, 2, {}};
  bad.cones.push_back({ConeKind::Nonnegative, 1, {}});
  CHECK(validate(bad).find("d(d+1)/2") != std::string::npos);
  bad = p;
  bad.A.rowind[0] = 7;
  CHECK(!validate(bad).empty());
  bad = p;
  bad.P = Csc(3, 3);
  bad.P.rowind = {1};
  bad.P.val = {1.0};
  bad.P.colptr = {0, 1, 1, 1};  // (1, 0) is below the diagonal
  CHECK(validate(bad).find("below") != std::string::npos);
  bool threw = false;
  try {
    solve(bad);
  } catch (const std::invalid_argument &) {
    threw = true;
  }
  CHECK(threw);
}

TEST(ipm_solves_on_several_threads_at_once) {
  auto problem = [](double b2) {
    const double r2 = std::sqrt(2.0);
    Builder b(6);
    b.c = {2, r2, 0, 2, r2, 2};
    b.cone(ConeKind::Zero, {{1, 0, 0, 1, 0, 1}, {1, 0, 0, 0, 0, 0}}, {1, b2});
    std::vector<Vec> id;
    for (int j = 0; j < 6; ++j) id.push_back(unit(6, j));
    b.holds(ConeKind::Psd, id, Vec(6, 0.0));
    b.holds(ConeKind::PrimalExp, {Vec(6, 0.0), Vec(6, 0.0), Vec(6, 0.0)}, {2, 1, 0});
    return b.build();
  };
  std::atomic<int> wrong{0};
  std::vector<std::thread> ts;
  for (int t = 0; t < 4; ++t)
    ts.emplace_back([&, t]() {
      for (int k = 0; k < 5; ++k) {
        double b2 = t % 2 ? 0.5 : 0.25;
        Result r = solve(problem(b2));
        double expected = t % 2 ? 0.7009618943 : 2 - std::sqrt(2.0);
        if (r.status != Status::Optimal || !close(r.pobj, expected, 1e-8)) {
          std::printf("  thread %d: %s %.12g vs %.12g\n", t, status_name(r.status), r.pobj, expected);
          ++wrong;
        }
      }
    });
  for (auto &t : ts) t.join();
  CHECK_EQ(wrong.load(), 0);
}

TEST(ipm_barrier_derivatives_match_differences) {
  std::mt19937 gen(7);
  std::uniform_real_distribution<double> uni(-1, 1);
  struct Case {
    ConeKind kind;
    int dim;
    Vec alpha;
  };
  std::vector<Case> cases = {{ConeKind::PrimalExp, 3, {}}, {ConeKind::DualExp, 3, {}},
                             {ConeKind::PrimalPower, 3, {0.3, 0.7}}, {ConeKind::DualPower, 3, {0.3, 0.7}},
                             {ConeKind::PrimalPower, 5, {0.2, 0.5, 0.3}}, {ConeKind::DualPower, 4, {0.6, 0.4}}};
  for (const Case &c : cases)
    for (bool primal : {true, false}) {
      auto f = make_barrier(c.kind, c.dim, c.alpha, primal);
      int n = c.dim;
      Vec x(n), u(n), v(n), g(n), h(n * n), t(n), gp(n), gm(n), hp(n * n), hm(n * n);
      f->interior_point(x.data());
      for (int i = 0; i < n; ++i) x[i] += 0.2 * uni(gen);
      CHECK(f->interior(x.data()));
      for (int i = 0; i < n; ++i) u[i] = uni(gen), v[i] = uni(gen);
      f->grad(x.data(), g.data());
      f->hess(x.data(), h.data());
      f->third(x.data(), u.data(), v.data(), t.data());
      // Logarithmic homogeneity: <grad f(x), x> = -degree.
      double gx = 0;
      for (int i = 0; i < n; ++i) gx += g[i] * x[i];
      CHECK(std::fabs(gx + f->degree()) < 1e-10);
      const double eps = 1e-5;
      Vec xp(x), xm(x);
      for (int i = 0; i < n; ++i) xp[i] += eps * u[i], xm[i] -= eps * u[i];
      double df = (f->value(xp.data()) - f->value(xm.data())) / (2 * eps), gu = 0;
      for (int i = 0; i < n; ++i) gu += g[i] * u[i];
      CHECK(std::fabs(df - gu) < 1e-6 * (1 + std::fabs(gu)));
      f->grad(xp.data(), gp.data()), f->grad(xm.data(), gm.data());
      f->hess(xp.data(), hp.data()), f->hess(xm.data(), hm.data());
      for (int i = 0; i < n; ++i) {
        double hu = 0, dt = 0, ht = 0;
        for (int j = 0; j < n; ++j) {
          hu += h[i + j * n] * u[j];
          dt += (hp[i + j * n] - hm[i + j * n]) / (2 * eps) * v[j];
          ht += std::fabs(h[i + j * n] - h[j + i * n]);
        }
        double dg = (gp[i] - gm[i]) / (2 * eps);
        CHECK(std::fabs(dg - hu) < 1e-6 * (1 + std::fabs(hu)));
        CHECK(std::fabs(dt - t[i]) < 1e-5 * (1 + std::fabs(t[i])));
        CHECK(ht < 1e-9 * (1 + std::fabs(h[i + i * n])));
      }
    }
}

// The KKT system of a random problem (sparse A, a P with off-diagonal
// entries, diagonal and dense cone blocks) solved by the simplicial and the
// supernodal factorization: both must solve it to rounding, and agree. The
// pattern fills in, so the supernodal one meets large panels (blocked, with
// matrix products, shared among threads) as well as small ones.
TEST(ipm_kkt_simplicial_and_supernodal_agree) {
  std::mt19937 gen(7);
  std::uniform_real_distribution<double> u(-1, 1);
  for (int size : {40, 400}) {
    int n = size, m = size + size / 4;
    std::vector<std::tuple<int, int, double>> ta;
    for (int i = 0; i < m; ++i) {
      if (i < n) ta.emplace_back(i, i, 1 + u(gen));
      for (int k = 0; k < 5; ++k) ta.emplace_back(i, int(gen() % n), u(gen));
    }
    std::sort(ta.begin(), ta.end(), [](auto &a, auto &b) { return std::tie(std::get<1>(a), std::get<0>(a)) < std::tie(std::get<1>(b), std::get<0>(b)); });
    Csc A(m, n), P(n, n);
    for (size_t k = 0; k < ta.size(); ++k) {
      auto [i, j, v] = ta[k];
      if (k > 0 && std::get<0>(ta[k - 1]) == i && std::get<1>(ta[k - 1]) == j) {
        A.val.back() += v;
        continue;
      }
      A.rowind.push_back(i), A.val.push_back(v), ++A.colptr[j + 1];
    }
    for (int j = 0; j < n; ++j) A.colptr[j + 1] += A.colptr[j];
    for (int j = 0; j < n; ++j) {  // P: tridiagonal pieces, diagonally dominant
      if (j % 3 != 0) P.rowind.push_back(j - 1), P.val.push_back(0.3);
      P.rowind.push_back(j), P.val.push_back(1.0);
      P.colptr[j + 1] = int(P.rowind.size());
    }
    std::vector<KktBlock> blocks;
    for (int off = 0; off < m;) {
      int d = std::min(m - off, 1 + int(gen() % 5));
      blocks.push_back({off, d, d == 1 || gen() % 2 == 0});
      off += d;
    }
    std::vector<Vec> hs, exp_d, exp_u, exp_v;
    for (const KktBlock &blk : blocks) {
      int d = blk.dim;
      Vec h(blk.diagonal ? d : d * d);
      exp_d.emplace_back(), exp_u.emplace_back(), exp_v.emplace_back();
      if (!blk.diagonal && d >= 3 && hs.size() % 2 == 0) {  // D + u u' - v v', v = 0.5 u
        Vec dd(d), uu(d), vv(d);
        for (int i = 0; i < d; ++i) dd[i] = 0.5 + std::fabs(u(gen)), uu[i] = u(gen), vv[i] = 0.5 * uu[i];
        for (int i = 0; i < d; ++i)
          for (int j = 0; j < d; ++j) h[i + j * d] = (i == j ? dd[i] : 0.0) + uu[i] * uu[j] - vv[i] * vv[j];
        exp_d.back() = dd, exp_u.back() = uu, exp_v.back() = vv;
      } else if (blk.diagonal) {
        for (double &v : h) v = 0.5 + std::fabs(u(gen));
      } else {  // G G' + I
        Vec g(d * d);
        for (double &v : g) v = u(gen);
        for (int i = 0; i < d; ++i)
          for (int j = 0; j < d; ++j) {
            double s = i == j ? 1.0 : 0.0;
            for (int k = 0; k < d; ++k) s += g[i + k * d] * g[j + k * d];
            h[i + j * d] = s;
          }
      }
      hs.push_back(h);
    }
    Vec rhs(n + m);
    for (double &v : rhs) v = u(gen);
    std::vector<Vec> sols;
    // Simplicial; supernodal on one thread; on two and three with every
    // product shared (by strips of columns or by ranges of rows); then the
    // blocks of the form D + u u' - v v' by their sparse expansion,
    // supernodal and simplicial.
    for (int config = 0; config < 6; ++config) {
      int method = config == 0 || config == 5 ? 1 : 2;
      bool expand = config >= 4;
      std::vector<KktBlock> bl(blocks);
      for (size_t b = 0; b < bl.size(); ++b) bl[b].expanded = expand && !exp_d[b].empty();
      Kkt kkt(P, A, bl, method);
      kkt.set_threads(config <= 1 ? 1 : config, 0.0);
      CHECK_EQ(kkt.supernodal(), method == 2);
      for (size_t b = 0; b < blocks.size(); ++b) {
        if (bl[b].expanded) {
          kkt.set_expanded(int(b), exp_d[b].data(), exp_u[b].data(), exp_v[b].data());
        } else {
          kkt.set_block(int(b), hs[b].data());
        }
      }
      CHECK(kkt.factor(0.0));
      Vec x(n + m);
      double res = kkt.solve(rhs.data(), x.data(), 0);  // no refinement: the factorization alone
      CHECK(res < 1e-12);
      sols.push_back(x);
    }
    double diff = 0, scale = 0;
    for (int i = 0; i < n + m; ++i)
      diff = std::max(diff, std::fabs(sols[0][i] - sols[1][i])), scale = std::max(scale, std::fabs(sols[0][i]));
    CHECK(diff <= 1e-10 * scale);
    for (int config : {2, 3, 4, 5}) {
      double d = 0;
      for (int i = 0; i < n + m; ++i) d = std::max(d, std::fabs(sols[config][i] - sols[1][i]));
      CHECK(d <= 1e-10 * scale);
    }
  }
}
