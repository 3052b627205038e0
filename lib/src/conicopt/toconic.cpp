// QRN_toconic: quadratic objective and quadratic constraints rewritten as
// affine conic constraints over rotated quadratic cones.
#include "conicopt.hpp"

#include <cmath>

namespace qrn::opt {
namespace {

void need(qrn_rescode r, const char *what) {
  if (r != QRN_RES_OK) fail(r, std::string("Rewriting the task failed (") + what + ").");
}

// One quadratic term to rewrite: 1/2 x'Qx = 1/2 ||F x||^2 <= t.
struct Lift {
  qrn_int32 con;  // constraint, or -1 for the objective
  double tsign;   // coefficient of t in the constraint row (objective: in c)
  std::vector<SparseRow> F;
};

// The ACC (t, 1, F x) in the rotated quadratic cone: 2 t >= ||F x||^2.
void add_cone(qrn_task_t task, qrn_int32 tvar, const std::vector<SparseRow> &F) {
  qrn_int64 first = 0, dom = 0;
  const qrn_int64 d = 2 + static_cast<qrn_int64>(F.size());
  need(QRN_getnumafe(task, &first), "expressions");
  need(QRN_appendafes(task, d), "expressions");
  std::vector<qrn_int64> afe;
  std::vector<qrn_int32> var;
  std::vector<double> val;
  afe.push_back(first), var.push_back(tvar), val.push_back(1.0);
  for (size_t r = 0; r < F.size(); ++r)
    for (auto &e : F[r]) afe.push_back(first + 2 + static_cast<qrn_int64>(r)), var.push_back(e.first),
        val.push_back(e.second);
  need(QRN_putafefentrylist(task, static_cast<qrn_int64>(val.size()), afe.data(), var.data(), val.data()), "F");
  need(QRN_putafeg(task, first + 1, 1.0), "g");
  need(QRN_appendrquadraticconedomain(task, d, &dom), "domain");
  std::vector<qrn_int64> list(d);
  for (qrn_int64 k = 0; k < d; ++k) list[k] = first + k;
  need(QRN_appendacc(task, dom, d, list.data(), nullptr), "ACC");
}

}  // namespace

void toconic(Task &t) {
  qrn_task_t task = static_cast<qrn_task_s *>(&t);
  const Problem p = snapshot(task);
  const double tol = t.par.dou[QRN_DPAR_CONVEXITY_TOL];
  // Every factorization first: a refusal leaves the task as it was.
  std::vector<Lift> lifts;
  if (p.quadratic()) {
    Lift l{-1, p.maximize ? -1.0 : 1.0, {}};
    if (!factor_psd(p.qi, p.qj, p.qv, p.maximize ? -1.0 : 1.0, tol, l.F))
      fail(QRN_RES_ERR_OPT_NONCONVEX, std::string("The quadratic objective is not ") +
                                          (p.maximize ? "concave" : "convex") + ".");
    lifts.push_back(std::move(l));
  }
  for (qrn_int32 i = 0; i < p.m && p.numqcnz > 0; ++i) {
    qrn_int64 nz = 0;
    need(QRN_getnumqconknz64(task, i, &nz), "quadratic constraint size");
    if (nz == 0) continue;
    std::vector<qrn_int32> qi(nz), qj(nz);
    std::vector<double> qv(nz);
    need(QRN_getqconk64(task, i, nz, &nz, qi.data(), qj.data(), qv.data()), "quadratic constraint");
    const qrn_int32 bk = p.bkc[i];
    if (bk == QRN_BK_FREE) {
      lifts.push_back({i, 0.0, {}});  // no restriction: the terms are dropped
      continue;
    }
    if (bk != QRN_BK_UPPER && bk != QRN_BK_LOWER)
      fail(QRN_RES_ERR_OPT_QCON_NONCONVEX,
           "Quadratic constraint " + std::to_string(i) + " has two finite bounds, so it is not convex.");
    const bool upper = bk == QRN_BK_UPPER;
    Lift l{i, upper ? 1.0 : -1.0, {}};
    if (!factor_psd(qi, qj, qv, upper ? 1.0 : -1.0, tol, l.F))
      fail(QRN_RES_ERR_OPT_QCON_NONCONVEX, "Quadratic constraint " + std::to_string(i) + " is not convex.");
    lifts.push_back(std::move(l));
  }
  // Then the rewrite: one new free variable t per term, appended after the others.
  for (Lift &l : lifts) {
    if (l.con >= 0 && l.tsign == 0.0) {
      need(QRN_putqconk(task, l.con, 0, nullptr, nullptr, nullptr), "quadratic constraint");
      continue;
    }
    qrn_int32 tv = 0;
    need(QRN_getnumvar(task, &tv), "variables");
    need(QRN_appendvars(task, 1), "variables");
    need(QRN_putvarbound(task, tv, QRN_BK_FREE, -QRN_INFINITY, QRN_INFINITY), "bounds");
    if (l.con < 0) {
      need(QRN_putcj(task, tv, l.tsign), "objective");
      need(QRN_putqobj(task, 0, nullptr, nullptr, nullptr), "quadratic objective");
    } else {
      need(QRN_putaij(task, l.con, tv, l.tsign), "matrix");
      need(QRN_putqconk(task, l.con, 0, nullptr, nullptr, nullptr), "quadratic constraint");
    }
    add_cone(task, tv, l.F);
  }
}

}  // namespace qrn::opt

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_toconic(qrn_task_t task) {
  return api(task, "QRN_toconic", [&](Task &t) { opt::toconic(t); });
}

}  // extern "C"
