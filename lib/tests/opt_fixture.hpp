// Small problems for the optimizer tests, stated through the C interface, and
// checks of what the optimizer stores (read from the task's solution records).
#pragma once

#include <cmath>
#include <vector>

#include "fixture.hpp"
#include "task.hpp"

constexpr double INF = 1e30;

struct Lp {
  std::vector<std::vector<double>> a;  // dense rows
  std::vector<double> c;
  std::vector<int> bkc, bkx;
  std::vector<double> blc, buc, blx, bux;
  bool maximize = false;
};

// States lp in the task (replacing its linear data).
inline void load(qrn_task_t task, const Lp &lp) {
  const int m = static_cast<int>(lp.bkc.size()), n = static_cast<int>(lp.c.size());
  std::vector<qrn_int64> ptrb(n), ptre(n);
  std::vector<qrn_int32> sub;
  std::vector<double> val;
  for (int j = 0; j < n; ++j) {
    ptrb[j] = static_cast<qrn_int64>(sub.size());
    for (int i = 0; i < m; ++i)
      if (lp.a[i][j] != 0) sub.push_back(i), val.push_back(lp.a[i][j]);
    ptre[j] = static_cast<qrn_int64>(sub.size());
  }
  CHECK_EQ(QRN_inputdata64(task, m, n, m, n, lp.c.data(), 0.0, ptrb.data(), ptre.data(), sub.data(), val.data(),
                           lp.bkc.data(), lp.blc.data(), lp.buc.data(), lp.bkx.data(), lp.blx.data(), lp.bux.data()),
           QRN_RES_OK);
  CHECK_EQ(QRN_putobjsense(task, lp.maximize ? QRN_OBJECTIVE_SENSE_MAXIMIZE : QRN_OBJECTIVE_SENSE_MINIMIZE),
           QRN_RES_OK);
}

inline const qrn::Solution &sol(qrn_task_t task, int which) { return static_cast<qrn::Task *>(task)->sol[which]; }

inline bool close(double a, double b, double tol = 1e-6) { return std::fabs(a - b) <= tol * (1 + std::fabs(b)); }

// min -3x - 2y + z, x + y + z <= 4, x + 3y <= 9, 0 <= x <= 3, y, z >= 0:
// x = 3 (at its upper bound), y = 1 (basic), z = 0; objective -11.
inline Lp small_lp(bool maximize = false) {
  Lp lp;
  lp.a = {{1, 1, 1}, {1, 3, 0}};
  lp.c = {-3, -2, 1};
  if (maximize)
    for (double &v : lp.c) v = -v;
  lp.maximize = maximize;
  lp.bkc = {QRN_BK_UPPER, QRN_BK_UPPER};
  lp.blc = {-INF, -INF};
  lp.buc = {4, 9};
  lp.bkx = {QRN_BK_RANGED, QRN_BK_LOWER, QRN_BK_LOWER};
  lp.blx = {0, 0, 0};
  lp.bux = {3, INF, INF};
  return lp;
}

// x + y >= 5, x + y <= 3, 0 <= x, y <= 10 (plus a harmless row x - y <= 100).
inline Lp infeasible_lp(bool maximize = false) {
  Lp lp;
  lp.a = {{1, 1}, {1, 1}, {1, -1}};
  lp.c = {1, 1};
  lp.maximize = maximize;
  lp.bkc = {QRN_BK_LOWER, QRN_BK_UPPER, QRN_BK_UPPER};
  lp.blc = {5, -INF, -INF};
  lp.buc = {INF, 3, 100};
  lp.bkx = {QRN_BK_RANGED, QRN_BK_RANGED};
  lp.blx = {0, 0};
  lp.bux = {10, 10};
  return lp;
}

// min -x - y, x - y <= 1, x, y >= 0.
inline Lp unbounded_lp() {
  Lp lp;
  lp.a = {{1, -1}};
  lp.c = {-1, -1};
  lp.bkc = {QRN_BK_UPPER};
  lp.blc = {-INF};
  lp.buc = {1};
  lp.bkx = {QRN_BK_LOWER, QRN_BK_LOWER};
  lp.blx = {0, 0};
  lp.bux = {INF, INF};
  return lp;
}

inline double dot(const std::vector<double> &a, const std::vector<double> &b) {
  double s = 0;
  for (size_t k = 0; k < a.size(); ++k) s += a[k] * b[k];
  return s;
}

// r = A'y
inline std::vector<double> at_y(const Lp &lp, const std::vector<double> &y) {
  std::vector<double> r(lp.c.size(), 0.0);
  for (size_t i = 0; i < lp.a.size(); ++i)
    for (size_t j = 0; j < lp.c.size(); ++j) r[j] += lp.a[i][j] * y[i];
  return r;
}

inline double finite_dot(const std::vector<double> &bound, const std::vector<double> &mult) {
  double s = 0;
  for (size_t k = 0; k < bound.size(); ++k)
    if (std::fabs(bound[k]) < INF) s += bound[k] * mult[k];
    else CHECK(mult[k] == 0);  // no multiplier on a missing bound
  return s;
}

// Every multiplier has the sign of the objective sense (>= 0 minimizing).
inline void check_signs(const Lp &lp, const qrn::Solution &s) {
  const double sign = lp.maximize ? -1 : 1;
  for (auto *v : {&s.slc, &s.suc, &s.slx, &s.sux})
    for (double x : *v) CHECK(sign * x >= -1e-9);
  for (size_t i = 0; i < s.y.size(); ++i) CHECK(close(s.y[i], s.slc[i] - s.suc[i], 1e-12));
}

// The dual objective lc'slc - uc'suc + lx'slx - ux'sux.
inline double dual_value(const Lp &lp, const qrn::Solution &s) {
  return finite_dot(lp.blc, s.slc) - finite_dot(lp.buc, s.suc) + finite_dot(lp.blx, s.slx) -
         finite_dot(lp.bux, s.sux);
}
