// Branch and bound over the conic interior-point engine: best-bound search
// with depth-first dives, branching on disjunctive constraints (one child per
// term) and on fractional integer variables (most fractional first).
#include "mipconic.hpp"

#include "conic.hpp"
#include "optimize.hpp"

#include <algorithm>
#include <cmath>
#include <memory>

namespace qrn::opt {

namespace {

struct Change {
  qrn_int32 var;
  double lo, up;  // the variable's new bounds (tightened only)
};

struct Node {
  double bound = -inf;               // lower bound of the minimization form (the parent's relaxation)
  int depth = 0;
  long long serial = 0;              // creation order
  std::vector<Change> changes;       // from the root, in order
  std::vector<std::pair<qrn_int64, qrn_int64>> terms;  // (DJC, term) imposed
};

enum class Relax { optimal, infeasible, unbounded, unknown, stopped };

struct Evaluated {
  Relax status = Relax::unknown;
  double obj = inf;            // relaxation objective (minimization form, with the fixed part)
  double bound = -inf;         // what it proves for the subtree
  int iterations = 0;
  ConicForm form;
  ipm::Result res;
  std::vector<double> xfull;   // values of the full columns
};

class Search {
 public:
  Search(const Problem &p, const ConicSource &src, const Disjunctions &djcs, Run &run, bool presolve)
      : p_(p), src_(src), djcs_(djcs), run_(run), t_(run.task), presolve_(presolve) {
    const auto &dp = t_.par.dou;
    const auto &ip = t_.par.integer;
    relgap_ = dp[QRN_DPAR_MIP_REL_GAP];
    absgap_ = dp[QRN_DPAR_MIP_ABS_GAP];
    inttol_ = dp[QRN_DPAR_MIP_INT_TOL];
    node_limit_ = ip[QRN_IPAR_MIP_NODE_LIMIT];
    sol_limit_ = ip[QRN_IPAR_MIP_SOLUTION_LIMIT];
    branch_dir_ = ip[QRN_IPAR_MIP_BRANCH_DIR];
    node_sel_ = ip[QRN_IPAR_MIP_NODE_SELECTION];
    deadline_ = std::min(run.time_limit, dp[QRN_DPAR_MIP_TIME_LIMIT] >= QRN_INFINITY ? inf : dp[QRN_DPAR_MIP_TIME_LIMIT]);
    const double cutoff = dp[QRN_DPAR_MIP_OBJ_CUTOFF];
    if (std::fabs(cutoff) < QRN_INFINITY) cutoff_ = (p.maximize ? -1.0 : 1.0) * (cutoff - p.cfix);
    // Integer variables get integral bounds.
    bkx_ = p.bkx, blx_ = p.blx, bux_ = p.bux;
    for (qrn_int32 j = 0; j < p.n; ++j) {
      if (!p.integer[j]) continue;
      if (std::isfinite(blx_[j])) blx_[j] = std::ceil(blx_[j] - inttol_);
      if (std::isfinite(bux_[j])) bux_[j] = std::floor(bux_[j] + inttol_);
      bkx_[j] = kind(blx_[j], bux_[j]);
    }
    settings_ = conic_settings(t_, run);
  }

  MipConicResult run();

 private:
  static qrn_int32 kind(double lo, double up) {
    const bool l = std::isfinite(lo), u = std::isfinite(up);
    if (l && u) return lo == up ? QRN_BK_FIXED : QRN_BK_RANGED;
    return l ? QRN_BK_LOWER : u ? QRN_BK_UPPER : QRN_BK_FREE;
  }
  double task_obj(double v) const { return run_.task_obj(v); }
  // Nodes whose bound is not below this cannot improve the incumbent by more than the gaps.
  double prune_level() const {
    if (!std::isfinite(best_)) return cutoff_;
    const double slack = std::max({absgap_, relgap_ * std::fabs(task_obj(best_)), 1e-7 * (1.0 + std::fabs(best_))});
    return std::min(cutoff_, best_ - slack);
  }
  Evaluated evaluate(const Node &nd);
  bool term_holds(const std::vector<DomainRows> &term, const std::vector<double> &x, double *viol) const;
  void branch(const Node &nd, const Evaluated &ev, std::vector<Node> &children);
  void incumbent(Evaluated &ev);
  double open_bound() const;
  void publish(double bound);
  void log_line(const char *note);

  const Problem &p_;
  const ConicSource &src_;
  const Disjunctions &djcs_;
  Run &run_;
  Task &t_;
  bool presolve_;
  double relgap_, absgap_, inttol_, deadline_, cutoff_ = inf;
  qrn_int32 node_limit_, sol_limit_, branch_dir_, node_sel_;
  std::vector<qrn_int32> bkx_;
  std::vector<double> blx_, bux_;
  ipm::Settings settings_;

  std::vector<Node> open_;           // a heap (see better())
  std::unique_ptr<Node> dive_;       // the next node of the current dive
  long long serial_ = 0, nodes_ = 0, pruned_ = 0, infeasible_ = 0, solves_ = 0, ipm_iter_ = 0, depth_sum_ = 0;
  int max_depth_ = 0, solutions_ = 0;
  double best_ = inf;                // incumbent (minimization form)
  double closed_bound_ = inf;        // smallest bound among nodes closed by the gap tolerances
  Solution best_sol_;
  long long best_node_ = -1;
  bool incomplete_ = false;          // a node was given up (numerical trouble)
  bool unbounded_ = false;
  double last_log_nodes_ = 0;
};

// Heap order: best bound first (ties: deeper, then newer); depth-first
// selection takes the deepest.
struct Worse {
  bool depth_first;
  bool operator()(const Node &a, const Node &b) const {
    if (depth_first && a.depth != b.depth) return a.depth < b.depth;
    if (a.bound != b.bound) return a.bound > b.bound;
    if (a.depth != b.depth) return a.depth < b.depth;
    return a.serial < b.serial;
  }
};

Evaluated Search::evaluate(const Node &nd) {
  Evaluated ev;
  std::vector<qrn_int32> bkx = bkx_;
  std::vector<double> blx = blx_, bux = bux_;
  for (const Change &c : nd.changes) {
    blx[c.var] = std::max(blx[c.var], c.lo);
    bux[c.var] = std::min(bux[c.var], c.up);
    bkx[c.var] = kind(blx[c.var], bux[c.var]);
  }
  for (qrn_int32 j = 0; j < p_.n; ++j)
    if (blx[j] > bux[j]) {
      ev.status = Relax::infeasible;
      return ev;
    }
  std::vector<const DomainRows *> extra;
  for (auto &[k, term] : nd.terms)
    for (const DomainRows &d : djcs_[k][term]) extra.push_back(&d);
  ev.form = conic_assemble(src_, bkx, blx, bux, extra, presolve_);
  // With every column fixed the engine has nothing to solve: the fixed
  // variables are then kept as equations.
  if (ev.form.eng.n == 0 && presolve_) ev.form = conic_assemble(src_, bkx, blx, bux, extra, false);

  ipm::Settings st = settings_;
  const double now = run_.elapsed();
  if (std::isfinite(deadline_)) st.max_time = std::max(0.0, deadline_ - now);
  auto progress = [&](const ipm::Iteration &) {
    return run_.stop_requested() || run_.elapsed() > deadline_;
  };
  ev.res = ipm::solve(ev.form.eng, st, progress);
  ++solves_;
  ev.iterations = ev.res.iterations;
  ipm_iter_ += ev.res.iterations;
  const ipm::Result &r = ev.res;
  switch (r.status) {
    case ipm::Status::Optimal:
      ev.status = Relax::optimal;
      ev.obj = r.pobj;
      ev.bound = std::isfinite(r.dobj) ? std::min(r.pobj, r.dobj) : r.pobj;
      break;
    case ipm::Status::PrimalInfeasible: ev.status = Relax::infeasible; break;
    case ipm::Status::DualInfeasible: ev.status = Relax::unbounded; break;
    case ipm::Status::Stopped:
    case ipm::Status::TimeLimit: ev.status = Relax::stopped; break;
    default: ev.status = Relax::unknown; break;
  }
  if (ev.status == Relax::optimal || ev.status == Relax::unknown || ev.status == Relax::unbounded) {
    const ConicForm &f = ev.form;
    ev.xfull.assign(f.nfull, 0.0);
    for (int c = 0; c < f.nfull; ++c)
      ev.xfull[c] = f.col[c] >= 0 ? r.x[f.col[c]] : (ev.status == Relax::unbounded ? 0.0 : f.fixval[c]);
  }
  return ev;
}

// True when every domain of the term holds at x (within a tolerance); viol
// gets the largest violation.
bool Search::term_holds(const std::vector<DomainRows> &term, const std::vector<double> &x, double *viol) const {
  double worst = 0.0;
  bool holds = true;
  for (const DomainRows &d : term) {
    std::vector<double> v(d.f.size());
    double scale = 1.0;
    for (size_t i = 0; i < v.size(); ++i) {
      double a = d.g[i];
      for (auto &e : d.f[i]) a += e.second * x[e.first];
      v[i] = a;
      scale = std::max(scale, std::fabs(a));
    }
    Domain dom{d.type, static_cast<qrn_int64>(v.size()), d.alpha};
    const double w = domain_violation(dom, v.data(), false);
    worst = std::max(worst, w);
    if (!(w <= 1e-6 * scale)) holds = false;
  }
  if (viol != nullptr) *viol = worst;
  return holds;
}

// Children of a node whose relaxation is not a solution: one per term of the
// first DJC that no term satisfies, else two for the most fractional
// integer variable. The first child is the one to dive into.
void Search::branch(const Node &nd, const Evaluated &ev, std::vector<Node> &children) {
  const double bound = ev.status == Relax::optimal ? std::max(nd.bound, ev.bound) : nd.bound;
  auto child = [&]() {
    Node c;
    c.bound = bound;
    c.depth = nd.depth + 1;
    c.serial = ++serial_;
    c.changes = nd.changes;
    c.terms = nd.terms;
    return c;
  };
  const bool point = ev.status != Relax::unbounded && !ev.xfull.empty();
  std::vector<char> imposed(djcs_.size(), 0);
  for (auto &kt : nd.terms) imposed[kt.first] = 1;
  for (size_t k = 0; k < djcs_.size(); ++k) {
    if (imposed[k]) continue;
    const auto &terms = djcs_[k];
    std::vector<std::pair<double, size_t>> order;
    bool holds = false;
    for (size_t term = 0; term < terms.size(); ++term) {
      double v = 0.0;
      if (point && term_holds(terms[term], ev.xfull, &v)) holds = true;
      order.emplace_back(point ? v : 0.0, term);
    }
    if (holds) continue;
    // The terms closest to holding first.
    std::stable_sort(order.begin(), order.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    for (auto &o : order) {
      Node c = child();
      c.terms.emplace_back(static_cast<qrn_int64>(k), static_cast<qrn_int64>(o.second));
      children.push_back(std::move(c));
    }
    return;  // no terms at all: no children, the node is infeasible
  }
  if (!point) return;
  qrn_int32 pick = -1;
  double most = inttol_;
  for (qrn_int32 j = 0; j < p_.n; ++j) {
    if (!p_.integer[j]) continue;
    const double v = ev.xfull[j], dist = std::fabs(v - std::round(v));
    if (dist > most) most = dist, pick = j;
  }
  if (pick < 0) return;
  const double v = ev.xfull[pick], down = std::floor(v), up = down + 1.0;
  Node lo = child(), hi = child();
  lo.changes.push_back({pick, -inf, down});
  hi.changes.push_back({pick, up, inf});
  const bool up_first = branch_dir_ == QRN_BRANCH_UP || (branch_dir_ != QRN_BRANCH_DOWN && v - down >= 0.5);
  if (up_first) children.push_back(std::move(hi)), children.push_back(std::move(lo));
  else children.push_back(std::move(lo)), children.push_back(std::move(hi));
}

void Search::incumbent(Evaluated &ev) {
  best_ = ev.obj;
  best_node_ = nodes_;
  ++solutions_;
  Solution s = conic_result(p_, ev.form, ev.res);
  // An integer solution holds the primal values only.
  for (auto *v : {&s.y, &s.slc, &s.suc, &s.slx, &s.sux, &s.snx, &s.doty}) std::fill(v->begin(), v->end(), 0.0);
  for (auto &b : s.bars) std::fill(b.begin(), b.end(), 0.0);
  for (qrn_int32 i = 0; i < p_.m; ++i) s.skc[i] = key_by_value(s.xc[i], p_.blc[i], p_.buc[i], QRN_SK_SUPER_BASIC);
  for (qrn_int32 j = 0; j < p_.n; ++j) s.skx[j] = key_by_value(s.xx[j], p_.blx[j], p_.bux[j], QRN_SK_SUPER_BASIC);
  best_sol_ = std::move(s);
  iinf(t_, QRN_IINF_MIP_SOLUTIONS) = solutions_;
  iinf(t_, QRN_IINF_MIP_INCUMBENT_UPDATES) = solutions_;
  dinf(t_, QRN_DINF_MIP_OBJ) = task_obj(best_);
  iinf(t_, QRN_IINF_MIP_BEST_SOLUTION_NODE) = static_cast<qrn_int32>(nodes_);
  dinf(t_, QRN_DINF_TIME_MIP_BEST_SOLUTION) = run_.elapsed();
  if (solutions_ == 1) {
    iinf(t_, QRN_IINF_MIP_FIRST_SOLUTION_NODE) = static_cast<qrn_int32>(nodes_);
    dinf(t_, QRN_DINF_TIME_MIP_FIRST_SOLUTION) = run_.elapsed();
    dinf(t_, QRN_DINF_MIP_FIRST_OBJ) = task_obj(best_);
  }
}

double Search::open_bound() const {
  double b = dive_ ? dive_->bound : inf;
  for (const Node &n : open_) b = std::min(b, n.bound);
  return b;
}

// The live information items: nodes, bound, gaps, time.
void Search::publish(double bound) {
  liinf(t_, QRN_LIINF_MIP_NODES) = nodes_;
  liinf(t_, QRN_LIINF_MIP_PRUNED_NODES) = pruned_;
  liinf(t_, QRN_LIINF_MIP_INFEASIBLE_NODES) = infeasible_;
  liinf(t_, QRN_LIINF_MIP_LP_SOLVES) = solves_;
  liinf(t_, QRN_LIINF_MIP_IPM_ITER) = ipm_iter_;
  iinf(t_, QRN_IINF_MIP_ACTIVE_NODES) = static_cast<qrn_int32>(open_.size() + (dive_ ? 1 : 0));
  iinf(t_, QRN_IINF_MIP_MAX_DEPTH) = max_depth_;
  const double now = run_.elapsed();
  dinf(t_, QRN_DINF_TIME_MIP) = now;
  if (nodes_ > 0) {
    dinf(t_, QRN_DINF_MIP_AVG_DEPTH) = static_cast<double>(depth_sum_) / nodes_;
    dinf(t_, QRN_DINF_MIP_LP_ITER_PER_NODE) = static_cast<double>(ipm_iter_) / nodes_;
    if (now > 0) dinf(t_, QRN_DINF_MIP_NODES_PER_SECOND) = nodes_ / now;
  }
  if (std::isfinite(bound)) dinf(t_, QRN_DINF_MIP_OBJ_BOUND) = task_obj(bound);
  if (std::isfinite(best_) && std::isfinite(bound)) {
    const double gap = std::max(0.0, best_ - bound);
    dinf(t_, QRN_DINF_MIP_ABS_GAP) = gap;
    dinf(t_, QRN_DINF_MIP_REL_GAP) = gap / std::max(1e-10, std::fabs(task_obj(best_)));
  }
}

void Search::log_line(const char *note) {
  run_.log(format("%10lld %17.9e %17.9e %8d %8.2f%s", nodes_, std::isfinite(best_) ? task_obj(best_) : NAN,
                  dinf(t_, QRN_DINF_MIP_OBJ_BOUND), iinf(t_, QRN_IINF_MIP_ACTIVE_NODES), run_.elapsed(), note));
  last_log_nodes_ = static_cast<double>(nodes_);
}

MipConicResult Search::run() {
  const Worse worse{node_sel_ == QRN_NODE_SELECT_DEPTH_FIRST};
  const bool dives = node_sel_ != QRN_NODE_SELECT_BEST_BOUND;
  run_.log(format("%10s %17s %17s %8s %8s", "NODES", "BEST OBJ", "BOUND", "OPEN", "TIME"));
  // A DJC without terms never holds: there is nothing to search.
  bool finished = std::any_of(djcs_.begin(), djcs_.end(), [](const auto &d) { return d.empty(); });
  if (!finished) dive_ = std::make_unique<Node>();
  while (!finished) {
    Node nd;
    if (dive_) {
      nd = std::move(*dive_);
      dive_.reset();
    } else if (!open_.empty()) {
      std::pop_heap(open_.begin(), open_.end(), worse);
      nd = std::move(open_.back());
      open_.pop_back();
    } else {
      finished = true;
      break;
    }
    if (nd.bound >= prune_level()) {
      closed_bound_ = std::min(closed_bound_, nd.bound);
      ++pruned_;
      continue;
    }
    // Limits and the callback, before the node is solved.
    if (nodes_ >= node_limit_) {
      if (run_.ending == Ending::normal) run_.ending = Ending::nodes;
      open_.push_back(std::move(nd));
      break;
    }
    if (run_.elapsed() > deadline_) {
      if (run_.ending == Ending::normal) run_.ending = Ending::time;
      open_.push_back(std::move(nd));
      break;
    }
    if (nodes_ > 0 && run_.iteration(QRN_CALLBACK_MIP_NODE)) {
      open_.push_back(std::move(nd));
      break;
    }
    Evaluated ev = evaluate(nd);
    if (ev.status == Relax::stopped) {
      if (run_.ending == Ending::normal) run_.ending = Ending::time;
      open_.push_back(std::move(nd));
      break;
    }
    ++nodes_;
    depth_sum_ += nd.depth;
    max_depth_ = std::max(max_depth_, nd.depth);
    if (nodes_ == 1 && ev.status == Relax::optimal) dinf(t_, QRN_DINF_MIP_ROOT_BOUND) = task_obj(ev.bound);

    std::vector<Node> children;
    const char *note = nullptr;
    switch (ev.status) {
      case Relax::infeasible: ++infeasible_; break;
      case Relax::optimal:
        if (ev.bound >= prune_level()) {
          closed_bound_ = std::min(closed_bound_, ev.bound);
          ++pruned_;
          break;
        }
        branch(nd, ev, children);
        if (children.empty()) {  // integral, and every disjunction holds
          incumbent(ev);
          note = "  new integer solution";
        }
        break;
      case Relax::unbounded:
        branch(nd, ev, children);  // only disjunctions can bound it
        if (children.empty()) unbounded_ = true;
        break;
      default:
        branch(nd, ev, children);
        if (children.empty()) incomplete_ = true;
        break;
    }
    if (unbounded_) break;
    if (!children.empty()) {
      size_t first = 0;
      if (dives) {
        dive_ = std::make_unique<Node>(std::move(children[0]));
        first = 1;
      }
      for (size_t k = first; k < children.size(); ++k) {
        open_.push_back(std::move(children[k]));
        std::push_heap(open_.begin(), open_.end(), worse);
      }
    }
    publish(open_bound());
    if (note != nullptr) {
      log_line(note);
      if (run_.callback(QRN_CALLBACK_NEW_INT_SOLUTION)) break;
      if (solutions_ >= sol_limit_) {
        if (run_.ending == Ending::normal) run_.ending = Ending::solutions;
        break;
      }
    } else if (nodes_ == 1 || run_.log_due() || nodes_ - last_log_nodes_ >= 1000) {
      log_line("");
    }
  }

  // The bound at the end: what the open nodes and the closed ones prove.
  double bound = std::min(open_bound(), closed_bound_);
  if (finished) bound = std::min(bound, best_);
  publish(bound);
  if (finished && incomplete_ && run_.ending == Ending::normal) run_.ending = Ending::numerical;
  MipConicResult out;
  out.nodes = nodes_;
  if (unbounded_ && !std::isfinite(best_)) {
    out.sol = Solution{};
    out.sol.defined = true;
    out.sol.prosta = QRN_PRO_STA_PRIM_INFEAS_OR_UNBOUNDED;
    out.sol.solsta = QRN_SOL_STA_UNKNOWN;
  } else if (std::isfinite(best_)) {
    out.sol = std::move(best_sol_);
    const bool proven = finished && !incomplete_;
    out.sol.prosta = QRN_PRO_STA_PRIM_FEAS;
    out.sol.solsta = proven ? QRN_SOL_STA_INTEGER_OPTIMAL : QRN_SOL_STA_PRIM_FEAS;
    if (proven && best_ - bound > 1e-6 * (1.0 + std::fabs(best_)) && run_.ending == Ending::normal)
      run_.ending = Ending::gap;
  } else if (finished && !incomplete_) {
    out.sol.defined = true;
    out.sol.prosta = QRN_PRO_STA_PRIM_INFEAS;
    out.sol.solsta = QRN_SOL_STA_UNKNOWN;
  }
  if (out.sol.defined && out.sol.xx.empty()) {
    // Statuses without a point: zero vectors of the task's sizes.
    Solution &s = out.sol;
    s.xx.assign(p_.n, 0.0), s.xc.assign(p_.m, 0.0);
    s.y.assign(p_.m, 0.0), s.slc.assign(p_.m, 0.0), s.suc.assign(p_.m, 0.0);
    s.slx.assign(p_.n, 0.0), s.sux.assign(p_.n, 0.0), s.snx.assign(p_.n, 0.0);
    s.skc.assign(p_.m, QRN_SK_UNKNOWN), s.skx.assign(p_.n, QRN_SK_UNKNOWN), s.skn.assign(p_.numcone, QRN_SK_UNKNOWN);
  }
  return out;
}

}  // namespace

MipConicResult solve_mip_conic(const Problem &p, const ConicSource &src, const Disjunctions &djcs, Run &run,
                               bool presolve) {
  Search search(p, src, djcs, run, presolve);
  return search.run();
}

}  // namespace qrn::opt
