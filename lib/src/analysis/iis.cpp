// The infeasible subproblem: the bounds that carry a Farkas certificate's
// multipliers, reduced by a deletion filter to an irreducible set, returned as
// a new task.
#include "clp.hpp"

#include "ClpSimplex.hpp"

#include <cmath>

using namespace qrn;

namespace {

// One bound side of a constraint (item < m) or variable (item - m).
struct Side {
  qrn_int32 item;
  bool lower;
};

// Feasibility tests on one Clp model whose bounds are switched on and off;
// the objective is zero, so every basis stays dual feasible and the dual
// simplex method restarts warm after each change.
class Tester {
 public:
  Tester(const opt::Problem &p, opt::Run &run) : p_(p), run_(run) {
    opt::Problem zero = p;
    std::fill(zero.c.begin(), zero.c.end(), 0.0);
    zero.qi.clear(), zero.qj.clear(), zero.qv.clear();
    model_ = opt::build_clp(zero, run);
    model_->setMaximumIterations(run.task.par.integer[QRN_IPAR_SIMPLEX_MAX_ITER]);
  }
  // Sets side s to its bound (on) or to infinity (off).
  void set(const Side &s, bool on) {
    const qrn_int32 m = p_.m;
    if (s.item < m) {
      if (s.lower) model_->setRowLower(s.item, on ? p_.blc[s.item] : -COIN_DBL_MAX);
      else model_->setRowUpper(s.item, on ? p_.buc[s.item] : COIN_DBL_MAX);
    } else {
      const qrn_int32 j = s.item - m;
      if (s.lower) model_->setColumnLower(j, on ? p_.blx[j] : -COIN_DBL_MAX);
      else model_->setColumnUpper(j, on ? p_.bux[j] : COIN_DBL_MAX);
    }
  }
  bool infeasible() {
    model_->dual();
    if (model_->status() == 1) return true;
    if (model_->status() == 0) return false;
    model_->primal();  // a doubtful end: decide with the other method
    if (model_->status() == 1) return true;
    if (model_->status() == 0) return false;
    fail(QRN_RES_ERR_OPT_SOLVER, "A feasibility test of the deletion filter did not finish.");
  }

 private:
  const opt::Problem &p_;
  opt::Run &run_;
  std::unique_ptr<ClpSimplex> model_;
};

bool finite_side(const opt::Problem &p, const Side &s) {
  if (s.item < p.m) return std::isfinite(s.lower ? p.blc[s.item] : p.buc[s.item]);
  const qrn_int32 j = s.item - p.m;
  return std::isfinite(s.lower ? p.blx[j] : p.bux[j]);
}

void need_ok(qrn_rescode r, const char *what) {
  if (r != QRN_RES_OK) fail(r, std::string("Making the infeasible subproblem failed (") + what + ").");
}

// Copies the names of one kind of item.
template <class Len, class Get, class Put>
void copy_names(qrn_task_t from, qrn_task_t to, qrn_int32 n, Len len, Get get, Put put) {
  std::string buf;
  for (qrn_int32 k = 0; k < n; ++k) {
    qrn_int32 l = 0;
    if (len(from, k, &l) != QRN_RES_OK || l == 0) continue;
    buf.assign(static_cast<size_t>(l) + 1, '\0');
    if (get(from, k, l + 1, buf.data()) == QRN_RES_OK) need_ok(put(to, k, buf.c_str()), "names");
  }
}

}  // namespace

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_getinfeasiblesubproblem(qrn_task_t task, qrn_int32 whichsol, qrn_task_t *inftask) {
  return api(task, "QRN_getinfeasiblesubproblem", [&](Task &t) {
    if (inftask == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument inftask is null.");
    *inftask = nullptr;
    if (whichsol < 0 || whichsol >= QRN_SOL_COUNT)
      fail(QRN_RES_ERR_SOL_WHICH, "Solution " + std::to_string(whichsol) + " is not one of 0.." +
                                   std::to_string(QRN_SOL_COUNT - 1) + ".");
    const Solution &sol = t.sol[whichsol];
    if (!sol.defined || sol.solsta != QRN_SOL_STA_PRIM_INFEAS_CER)
      fail(QRN_RES_ERR_NO_CERTIFICATE, "Solution " + std::to_string(whichsol) +
                                           " holds no primal infeasibility certificate.");
    const opt::Problem p = opt::snapshot(task);
    opt::Run run(t, true);
    // Candidates: the sides with a multiplier (all finite sides when the
    // certificate does not fit the data any more).
    std::vector<Side> all, cand;
    for (qrn_int32 k = 0; k < p.m + p.n; ++k)
      for (bool lower : {true, false})
        if (finite_side(p, {k, lower})) all.push_back({k, lower});
    const bool fits = static_cast<qrn_int32>(sol.slc.size()) == p.m && static_cast<qrn_int32>(sol.slx.size()) == p.n;
    if (fits)
      for (const Side &s : all) {
        const double mult = s.item < p.m ? (s.lower ? sol.slc : sol.suc)[s.item]
                                         : (s.lower ? sol.slx : sol.sux)[s.item - p.m];
        if (mult != 0.0) cand.push_back(s);
      }
    Tester test(p, run);
    std::vector<char> on(all.size(), 1);
    std::vector<size_t> where(2 * static_cast<size_t>(p.m + p.n), 0);
    for (size_t k = 0; k < all.size(); ++k) where[2 * static_cast<size_t>(all[k].item) + !all[k].lower] = k;
    auto index_of = [&](const Side &s) { return where[2 * static_cast<size_t>(s.item) + !s.lower]; };
    // Keep only the candidates switched on.
    auto restrict_to = [&](const std::vector<Side> &keep) {
      std::fill(on.begin(), on.end(), 0);
      for (const Side &s : keep) on[index_of(s)] = 1;
      for (size_t k = 0; k < all.size(); ++k) test.set(all[k], on[k]);
    };
    restrict_to(cand);
    if (cand.empty() || !test.infeasible()) {
      cand = all;
      restrict_to(cand);
      if (!test.infeasible()) fail(QRN_RES_ERR_NOT_INFEASIBLE, "The problem is feasible.");
    }
    // Deletion filter: a side whose removal keeps the system infeasible goes.
    for (const Side &s : cand) {
      test.set(s, false);
      if (test.infeasible()) on[index_of(s)] = 0;
      else test.set(s, true);
    }
    // The new task: all items, the linear data, only the kept bounds.
    std::vector<qrn_int32> bkc(p.m), bkx(p.n);
    std::vector<double> blc(p.m, -inf), buc(p.m, inf), blx(p.n, -inf), bux(p.n, inf);
    for (size_t k = 0; k < all.size(); ++k) {
      if (!on[k]) continue;
      const Side &s = all[k];
      if (s.item < p.m) (s.lower ? blc : buc)[s.item] = s.lower ? p.blc[s.item] : p.buc[s.item];
      else (s.lower ? blx : bux)[s.item - p.m] = s.lower ? p.blx[s.item - p.m] : p.bux[s.item - p.m];
    }
    auto key = [](double lo, double up, qrn_int32 old) {
      const bool l = std::isfinite(lo), u = std::isfinite(up);
      if (l && u) return old == QRN_BK_FIXED && lo == up ? QRN_BK_FIXED : QRN_BK_RANGED;
      return l ? QRN_BK_LOWER : u ? QRN_BK_UPPER : QRN_BK_FREE;
    };
    for (qrn_int32 i = 0; i < p.m; ++i) bkc[i] = key(blc[i], buc[i], p.bkc[i]);
    for (qrn_int32 j = 0; j < p.n; ++j) bkx[j] = key(blx[j], bux[j], p.bkx[j]);
    std::vector<qrn_int64> ptrb(p.n), ptre(p.n);
    for (qrn_int32 j = 0; j < p.n; ++j) ptrb[j] = p.start[j], ptre[j] = p.start[j + 1];
    std::vector<double> zero(p.n, 0.0);
    qrn_task_t made = nullptr;
    need_ok(QRN_makeemptytask(static_cast<qrn_env_s *>(t.env), &made), "task");
    try {
      need_ok(QRN_inputdata64(made, p.m, p.n, p.m, p.n, zero.data(), 0.0, ptrb.data(), ptre.data(), p.index.data(),
                              p.value.data(), bkc.data(), blc.data(), buc.data(), bkx.data(), blx.data(), bux.data()),
              "data");
      copy_names(task, made, p.m, QRN_getconnamelen, QRN_getconname, QRN_putconname);
      copy_names(task, made, p.n, QRN_getvarnamelen, QRN_getvarname, QRN_putvarname);
      if (!p.name.empty()) need_ok(QRN_puttaskname(made, p.name.c_str()), "name");
    } catch (...) {
      QRN_deletetask(&made);
      throw;
    }
    *inftask = made;
  });
}

}  // extern "C"
