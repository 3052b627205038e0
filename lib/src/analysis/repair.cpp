// Feasibility repair: the least weighted relaxation of the bounds (an elastic
// problem), the relaxed bounds written to the task, then the task's own
// objective optimized over them.
#include "cbc.hpp"
#include "certs.hpp"
#include "clp.hpp"
#include "optimize.hpp"

#include <cmath>

using namespace qrn;

namespace {

struct BoundRecord {
  qrn_int32 bk;
  double bl, bu;
};

void need_ok(qrn_rescode r) {
  if (r != QRN_RES_OK) fail(r, "Changing a bound during repair failed.");
}

}  // namespace

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_primalrepair(qrn_task_t task, const qrn_real *wlc, const qrn_real *wuc,
                                              const qrn_real *wlx, const qrn_real *wux) {
  return api(task, "QRN_primalrepair", [&](Task &t) {
    using namespace opt;
    const auto t0 = std::chrono::steady_clock::now();
    const Problem p = snapshot(task);
    for (auto [w, n, name] : {std::tuple{wlc, p.m, "wlc"}, {wuc, p.m, "wuc"}, {wlx, p.n, "wlx"}, {wux, p.n, "wux"}})
      if (w != nullptr)
        for (qrn_int32 k = 0; k < n; ++k)
          if (std::isnan(w[k])) fail(QRN_RES_ERR_REPAIR_WEIGHT, std::string(name) + "[" + std::to_string(k) + "] is NaN.");
    if (p.numqcnz > 0) fail(QRN_RES_ERR_OPT_QCON, "Repair does not handle quadratic constraint terms.");
    if (p.numcone > 0) fail(QRN_RES_ERR_OPT_CONES, "Repair does not handle cones.");

    // Phase 1: the elastic problem.
    Run run(t, false);
    if (run.callback(QRN_CALLBACK_BEGIN_REPAIR)) fail(QRN_RES_ERR_STOPPED, "The callback stopped the repair.");
    Elastic e = elastic_problem(p, wlc, wuc, wlx, wux, t.par.dou[QRN_DPAR_REPAIR_WEIGHT]);
    Run quiet(t, true);
    std::vector<double> v;
    double penalty = 0.0;
    bool solved;
    if (p.numint > 0) {
      MipResult r = solve_mip(e.prob, quiet);
      solved = r.has_solution && r.status != MipResult::unbounded;
      v = r.x;
    } else {
      LpResult r = simplex(e.prob, quiet, false, true);
      solved = r.status == LpResult::optimal;
      v = r.x;
    }
    if (!solved) fail(QRN_RES_ERR_REPAIR_FAILED, "No relaxation of the soft bounds makes the problem feasible.");
    qrn_int32 relaxed_cons = 0, relaxed_vars = 0;
    std::vector<BoundRecord> con_before(p.m), var_before(p.n);
    for (qrn_int32 i = 0; i < p.m; ++i) con_before[i] = {p.bkc[i], p.blc[i], p.buc[i]};
    for (qrn_int32 j = 0; j < p.n; ++j) var_before[j] = {p.bkx[j], p.blx[j], p.bux[j]};
    std::vector<BoundRecord> con_after = con_before, var_after = var_before;
    std::vector<char> con_changed(p.m, 0), var_changed(p.n, 0);
    for (size_t k = 0; k < e.sides.size(); ++k) {
      const double amount = v[p.n + k];
      const auto &side = e.sides[k];
      penalty += e.prob.c[p.n + k] * amount;
      BoundRecord &b = side.con ? con_after[side.item] : var_after[side.item];
      const double base = side.lower ? b.bl : b.bu;
      if (!(amount > 1e-9 * (1.0 + std::fabs(base)))) continue;
      if (side.lower) b.bl -= amount;
      else b.bu += amount;
      (side.con ? con_changed : var_changed)[side.item] = 1;
    }
    auto rekey = [](BoundRecord &b) {
      if (b.bk == QRN_BK_FIXED && b.bl != b.bu) b.bk = QRN_BK_RANGED;
    };
    try {
      for (qrn_int32 i = 0; i < p.m; ++i)
        if (con_changed[i]) {
          rekey(con_after[i]);
          need_ok(QRN_putconbound(task, i, con_after[i].bk, con_after[i].bl, con_after[i].bu));
          ++relaxed_cons;
        }
      for (qrn_int32 j = 0; j < p.n; ++j)
        if (var_changed[j]) {
          rekey(var_after[j]);
          need_ok(QRN_putvarbound(task, j, var_after[j].bk, var_after[j].bl, var_after[j].bu));
          ++relaxed_vars;
        }
      run.callback(QRN_CALLBACK_END_REPAIR);
      // Phase 2: the task's own objective over the repaired bounds.
      optimize(t);
    } catch (...) {
      for (qrn_int32 i = 0; i < p.m; ++i)
        if (con_changed[i]) QRN_putconbound(task, i, con_before[i].bk, con_before[i].bl, con_before[i].bu);
      for (qrn_int32 j = 0; j < p.n; ++j)
        if (var_changed[j]) QRN_putvarbound(task, j, var_before[j].bk, var_before[j].bl, var_before[j].bu);
      throw;
    }
    dinf(t, QRN_DINF_REPAIR_PENALTY) = penalty;
    iinf(t, QRN_IINF_REPAIR_RELAXED_CONS) = relaxed_cons;
    iinf(t, QRN_IINF_REPAIR_RELAXED_VARS) = relaxed_vars;
    for (qrn_int32 which : {QRN_SOL_ITG, QRN_SOL_BAS, QRN_SOL_ITR})
      if (t.sol[which].defined && static_cast<qrn_int32>(t.sol[which].xx.size()) == p.n) {
        dinf(t, QRN_DINF_REPAIR_OBJ) = primal_obj(p, t.sol[which].xx.data());
        break;
      }
    dinf(t, QRN_DINF_TIME_REPAIR) =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  });
}

}  // extern "C"
