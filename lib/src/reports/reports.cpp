// Reports written to a task stream: what the last read found, an analysis of
// the problem's data, solution and optimizer summaries; and the task's memory.
#include "formats.hpp"
#include "info.hpp"
#include "solfiles.hpp"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <string>

namespace qrn {
namespace {

void need_stream(qrn_int32 s) {
  if (s < 0 || s > 3) fail(QRN_RES_ERR_STREAM, "Stream " + std::to_string(s) + " is not one of 0..3.");
}

std::string fmt(const char *f, ...) __attribute__((format(printf, 1, 2)));
std::string fmt(const char *f, ...) {
  char b[512];
  va_list ap;
  va_start(ap, f);
  std::vsnprintf(b, sizeof b, f, ap);
  va_end(ap);
  return b;
}

// Smallest and largest magnitude of the non-zero finite values seen.
struct Range {
  double lo = inf, hi = 0;
  qrn_int64 n = 0;
  void add(double v) {
    double a = std::fabs(v);
    if (a == 0 || std::isinf(a) || std::isnan(a)) return;
    lo = std::min(lo, a), hi = std::max(hi, a), ++n;
  }
  std::string text() const { return n == 0 ? "none" : fmt("[%.1e, %.1e]  (%lld non-zeros)", lo, hi, static_cast<long long>(n)); }
  double span() const { return n == 0 ? 0 : std::log10(hi / lo); }
};

// "QRN_RES_TRM_MAX_ITERATIONS (2050)", or the number alone.
std::string code_text(qrn_int32 code) {
  if (code < 0) return "none";
  char sym[QRN_MAX_STR_LEN] = "";
  if (QRN_getcodedesc(code, sym, nullptr) != QRN_RES_OK) return std::to_string(code);
  return std::string(sym) + " (" + std::to_string(code) + ")";
}

const char *key_name(qrn_int32 bk) {
  static const char *const names[] = {"free", "lower", "upper", "fixed", "ranged"};
  return bk >= 0 && bk <= 4 ? names[bk] : "?";
}

// ---- memory: an estimate from the capacities of the task's containers ----

template <class T>
size_t vec_bytes(const std::vector<T> &v) {
  return v.capacity() * sizeof(T);
}
template <class T>
size_t vec_bytes(const Pod<T> &v) {
  return v.capacity() * sizeof(T);
}
size_t str_bytes(const std::string &s) { return s.capacity() > 15 ? s.capacity() + 1 : 0; }
size_t names_bytes(const NameTable &t) {
  size_t b = vec_bytes(t.names);
  for (const auto &s : t.names) b += str_bytes(s);
  // Each lookup entry: a node with the key string and the index, plus its bucket.
  b += t.index.size() * (sizeof(std::string) + 2 * sizeof(void *) + sizeof(qrn_int32)) + t.index.bucket_count() * sizeof(void *);
  return b;
}
size_t lines_bytes(const LineStore &l) {
  return vec_bytes(l.start) + vec_bytes(l.len) + vec_bytes(l.cap) + vec_bytes(l.idx) + vec_bytes(l.val);
}
constexpr size_t map_node = 4 * sizeof(void *);  // a tree node's links and colour, roughly
size_t qterms_bytes(const QTerms &q) {
  return vec_bytes(q.subi) + vec_bytes(q.subj) + vec_bytes(q.val) +
         q.fresh.size() * (sizeof(std::pair<const std::pair<qrn_int32, qrn_int32>, double>) + map_node);
}
size_t conic_bytes(const ConicData &c, const SdpData &d) {
  size_t b = vec_bytes(c.afe.rows) + vec_bytes(c.afe.colrows) + vec_bytes(c.afe.colcount) + vec_bytes(c.afe.g);
  for (const auto &r : c.afe.rows) b += vec_bytes(r);
  for (const auto &r : c.afe.colrows) b += vec_bytes(r);
  for (const auto &[k, v] : c.afe.barf) b += vec_bytes(v) + sizeof(k) + map_node;
  b += vec_bytes(c.domains) + vec_bytes(c.accs) + vec_bytes(c.accstart) + vec_bytes(c.djcs);
  for (const auto &x : c.domains) b += vec_bytes(x.alpha);
  for (const auto &x : c.accs) b += vec_bytes(x.afe) + vec_bytes(x.b);
  b += vec_bytes(d.dim) + vec_bytes(d.mats);
  for (const auto &m : d.mats) b += vec_bytes(m.subi) + vec_bytes(m.subj) + vec_bytes(m.val);
  for (const auto &[k, v] : d.barc) b += vec_bytes(v) + sizeof(k) + map_node;
  for (const auto &[k, v] : d.bara) b += vec_bytes(v) + sizeof(k) + map_node;
  return b;
}

}  // namespace

// An estimate from the capacities of what the task holds (the derived row
// index of A counts only while it exists).
qrn_int64 memory_in_use(const Task &t) {
  size_t b = sizeof(Task);
  b += vec_bytes(t.a.rowlen);
  t.a.each_held([&](const LineStore &l) { b += lines_bytes(l); });
  for (const Bounds *bd : {&t.conbound, &t.varbound}) b += vec_bytes(bd->bk) + vec_bytes(bd->bl) + vec_bytes(bd->bu);
  b += vec_bytes(t.c) + vec_bytes(t.vartype) + vec_bytes(t.var_cone);
  b += qterms_bytes(t.qobj) + vec_bytes(t.qcon);
  for (const auto &q : t.qcon) b += qterms_bytes(q);
  b += vec_bytes(t.cones);
  for (const auto &c : t.cones) b += vec_bytes(c.members);
  for (const NameTable *n : {&t.connames, &t.varnames, &t.conenames, &t.domnames, &t.accnames, &t.djcnames,
                             &t.barvarnames})
    b += names_bytes(*n);
  b += conic_bytes(t.conic, t.sdp);
  b += str_bytes(t.objname) + str_bytes(t.taskname) + str_bytes(t.read_source);
  b += vec_bytes(t.par.dou) + vec_bytes(t.par.integer) + vec_bytes(t.par.str);
  for (const auto &s : t.par.str) b += str_bytes(s);
  for (const Solution &s : t.sol) {
    for (const auto *v : {&s.skc, &s.skx, &s.skn}) b += vec_bytes(*v);
    for (const auto *v : {&s.xc, &s.xx, &s.y, &s.slc, &s.suc, &s.slx, &s.sux, &s.snx, &s.doty}) b += vec_bytes(*v);
    for (const auto *v : {&s.barx, &s.bars})
      for (const auto &x : *v) b += vec_bytes(x);
  }
  return static_cast<qrn_int64>(b);
}

void note_memory(Task &t) { t.mem_peak = std::max(t.mem_peak, memory_in_use(t)); }

namespace {

void read_summary(Task &t, qrn_int32 stream) {
  std::string s = "Read summary\n";
  if (t.read_source.empty()) {
    s += "  No problem has been read into this task.\n";
  } else {
    s += fmt("  Source            : %s\n", t.read_source.c_str());
    s += fmt("  Format            : %s\n", format_name(iinf(t, QRN_IINF_READ_FORMAT)));
    s += fmt("  Bytes             : %lld\n", static_cast<long long>(liinf(t, QRN_LIINF_READ_BYTES)));
    s += fmt("  Lines             : %d\n", iinf(t, QRN_IINF_READ_NUM_LINES));
    s += fmt("  Constraints       : %d\n", iinf(t, QRN_IINF_READ_NUM_CON));
    s += fmt("  Variables         : %d\n", iinf(t, QRN_IINF_READ_NUM_VAR));
    s += fmt("  Warnings          : %d\n", iinf(t, QRN_IINF_READ_NUM_WARNINGS));
    s += fmt("  Time (s)          : %.3f\n", dinf(t, QRN_DINF_TIME_READ));
  }
  t.write(stream, s);
}

void analyze_problem(Task &t, qrn_int32 stream) {
  FileProblem p = extract(static_cast<qrn_task_s *>(&t));
  qrn_int32 nint = 0;
  for (qrn_int32 v : p.vartype) nint += v == QRN_VAR_TYPE_INTEGER;
  std::string s = "Problem analysis\n";
  s += fmt("  Name                : %s\n", p.taskname.empty() ? "(none)" : p.taskname.c_str());
  s += fmt("  Objective sense     : %s\n", p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? "maximize" : "minimize");
  const bool conic = !p.cones.empty() || !p.accs.empty() || !p.djcs.empty() || !p.barvardim.empty();
  const char *type = conic ? (p.has_quadratic() ? "mixed quadratic and conic" : p.barvardim.empty() ? "conic" : "semidefinite")
                           : (p.has_quadratic() ? "quadratic" : "linear");
  s += fmt("  Type                : %s%s\n", type, nint > 0 ? ", mixed-integer" : "");
  s += fmt("  Constraints         : %d\n", p.numcon);
  s += fmt("  Variables           : %d (%d integer)\n", p.numvar, nint);
  s += fmt("  Cones               : %zu\n", p.cones.size());
  s += fmt("  Matrix non-zeros    : %lld\n", static_cast<long long>(p.numanz()));
  s += fmt("  Quadratic terms     : %zu objective, %zu constraint\n", p.qoval.size(), p.qcval.size());
  if (p.has_conic()) {
    s += fmt("  Affine expressions  : %lld (%zu non-zeros in F)\n", static_cast<long long>(p.numafe), p.fval.size());
    s += fmt("  ACCs, DJCs, domains : %zu, %zu, %zu\n", p.accs.size(), p.djcs.size(), p.domains.size());
    s += fmt("  Semidefinite vars   : %zu (barC %zu, barA %zu, barF %zu coefficients)\n", p.barvardim.size(), p.barc.size(),
             p.bara.size(), p.barf.size());
  }
  auto count_keys = [](const std::vector<qrn_int32> &bk) {
    qrn_int64 n[5] = {};
    for (qrn_int32 k : bk)
      if (k >= 0 && k <= 4) ++n[k];
    std::string out;
    for (int k = 0; k < 5; ++k) out += fmt("%s %s %lld", k ? "," : "", key_name(k), static_cast<long long>(n[k]));
    return out;
  };
  s += "  Constraint bounds   :" + count_keys(p.bkc) + "\n";
  s += "  Variable bounds     :" + count_keys(p.bkx) + "\n";
  Range ra, rc, rbc, rbx, rqo, rqc;
  for (double v : p.aval) ra.add(v);
  for (double v : p.c) rc.add(v);
  for (qrn_int32 i = 0; i < p.numcon; ++i) rbc.add(p.blc[i]), rbc.add(p.buc[i]);
  for (qrn_int32 j = 0; j < p.numvar; ++j) rbx.add(p.blx[j]), rbx.add(p.bux[j]);
  for (double v : p.qoval) rqo.add(v);
  for (double v : p.qcval) rqc.add(v);
  s += "Coefficient magnitudes (smallest, largest non-zero)\n";
  s += "  A                   : " + ra.text() + "\n";
  s += "  c                   : " + rc.text() + "\n";
  s += "  Constraint bounds   : " + rbc.text() + "\n";
  s += "  Variable bounds     : " + rbx.text() + "\n";
  s += "  Quadratic objective : " + rqo.text() + "\n";
  s += "  Quadratic constraints: " + rqc.text() + "\n";
  // Possible numerical trouble.
  std::vector<std::string> warn;
  const double large = t.par.dou[QRN_DPAR_DATA_LARGE_COEF], small = t.par.dou[QRN_DPAR_DATA_SMALL_COEF];
  qrn_int64 nlarge = 0, nsmall = 0;
  for (const std::vector<double> *v : {&p.aval, &p.c, &p.qoval, &p.qcval})
    for (double x : *v) {
      double a = std::fabs(x);
      nlarge += a > large;
      nsmall += a != 0 && a < small;
    }
  if (nlarge > 0) warn.push_back(fmt("%lld coefficients are larger than %.1e (QRN_DPAR_DATA_LARGE_COEF).", static_cast<long long>(nlarge), large));
  if (nsmall > 0) warn.push_back(fmt("%lld non-zero coefficients are smaller than %.1e (QRN_DPAR_DATA_SMALL_COEF).", static_cast<long long>(nsmall), small));
  if (ra.span() > 10) warn.push_back(fmt("The magnitudes in A span %.0f orders: consider scaling the model.", ra.span()));
  for (const Range *r : {&rbc, &rbx})
    if (r->n > 0 && r->hi > 1e9) warn.push_back(fmt("A finite bound of magnitude %.1e may act as infinity and hurt accuracy.", r->hi));
  qrn_int64 crossed = 0;
  for (qrn_int32 i = 0; i < p.numcon; ++i) crossed += p.bkc[i] == QRN_BK_RANGED && p.blc[i] > p.buc[i];
  for (qrn_int32 j = 0; j < p.numvar; ++j) crossed += p.bkx[j] == QRN_BK_RANGED && p.blx[j] > p.bux[j];
  if (crossed > 0) warn.push_back(fmt("%lld items have a lower bound above their upper bound: the problem is infeasible.", static_cast<long long>(crossed)));
  std::vector<qrn_int64> rowcount(p.numcon, 0);
  for (qrn_int32 i : p.asub) ++rowcount[i];
  qrn_int64 empty_rows = std::count(rowcount.begin(), rowcount.end(), 0), empty_cols = 0;
  for (qrn_int32 j = 0; j < p.numvar; ++j) empty_cols += p.aptr[j] == p.aptr[j + 1];
  s += fmt("  Empty rows, columns : %lld, %lld\n", static_cast<long long>(empty_rows), static_cast<long long>(empty_cols));
  s += warn.empty() ? "No signs of numerical trouble.\n" : "Warnings\n";
  for (const auto &w : warn) s += "  - " + w + "\n";
  t.write(stream, s);
}

// Objective values and largest violations, as the library measures them
// (QRN_getsolutioninfonew: every kind of constraint, cones, ACCs, DJCs and
// semidefinite variables included).
void one_solution(Task &t, qrn_int32 which, std::string &s) {
  const Solution &x = t.sol[which];
  s += fmt("%s solution\n", soltype_name(which));
  if (!x.defined) {
    s += "  not defined\n";
    return;
  }
  s += fmt("  Problem status  : %s\n", prosta_name(x.prosta) ? prosta_name(x.prosta) : "?");
  s += fmt("  Solution status : %s\n", solsta_name(x.solsta) ? solsta_name(x.solsta) : "?");
  double v[15] = {};
  qrn_rescode r = QRN_getsolutioninfonew(static_cast<qrn_task_s *>(&t), which, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5],
                                         &v[6], &v[7], &v[8], &v[9], &v[10], &v[11], &v[12], &v[13]);
  if (r != QRN_RES_OK) fail(r, "Measuring the " + std::string(soltype_name(which)) + " solution failed.");
  s += fmt("  Primal objective: %.15g\n", v[0]);
  s += fmt("  Dual objective  : %.15g\n", v[8]);
  s += fmt("  Largest primal violations: constraints %.1e, variable bounds %.1e", v[1], v[2]);
  if (!t.cones.empty()) s += fmt(", cones %.1e", v[4]);
  if (!t.sdp.dim.empty()) s += fmt(", semidefinite variables %.1e", v[3]);
  if (!t.conic.accs.empty()) s += fmt(", ACCs %.1e", v[5]);
  if (!t.conic.djcs.empty()) s += fmt(", DJCs %.1e", v[6]);
  if (which == QRN_SOL_ITG) s += fmt(", integrality %.1e", v[7]);
  s += "\n";
  if (which != QRN_SOL_ITG) {
    s += fmt("  Largest dual violations  : constraints %.1e, variables %.1e", v[9], v[10]);
    if (!t.cones.empty()) s += fmt(", cones %.1e", v[12]);
    if (!t.sdp.dim.empty()) s += fmt(", semidefinite variables %.1e", v[11]);
    if (!t.conic.accs.empty()) s += fmt(", ACCs %.1e", v[13]);
    s += "\n";
  }
}

void solution_summary(Task &t, qrn_int32 stream, qrn_int32 only) {
  std::string s = "Solution summary\n";
  for (qrn_int32 w = 0; w < QRN_SOL_COUNT; ++w)
    if (only < 0 ? t.sol[w].defined : w == only) one_solution(t, w, s);
  if (only < 0 && s == "Solution summary\n") s += "  No solution is defined.\n";
  t.write(stream, s);
}

void optimizer_summary(Task &t, qrn_int32 stream) {
  std::string s = "Optimizer summary\n";
  if (iinf(t, QRN_IINF_OPT_CALLS) == 0) {
    s += "  The task has not been optimized.\n";
  } else {
    static const char *const algorithms[] = {"automatic", "interior point", "primal simplex", "dual simplex",
                                             "simplex", "mixed integer"};
    const qrn_int32 alg = iinf(t, QRN_IINF_ALGORITHM_USED);
    s += fmt("  Algorithm used      : %s\n", alg >= 0 && alg <= 5 ? algorithms[alg] : "none");
    s += fmt("  Termination         : %s\n", code_text(iinf(t, QRN_IINF_TERMINATION_CODE)).c_str());
    s += fmt("  Response            : %s\n", code_text(iinf(t, QRN_IINF_OPT_RESPONSE)).c_str());
    s += fmt("  Time (s)            : %.3f total, %.3f processor\n", dinf(t, QRN_DINF_TIME_TOTAL), dinf(t, QRN_DINF_TIME_CPU));
    s += fmt("  Interior point      : %d iterations, %.3f s\n", iinf(t, QRN_IINF_IPM_ITER), dinf(t, QRN_DINF_TIME_IPM));
    s += fmt("  Simplex             : %d iterations, %.3f s\n", iinf(t, QRN_IINF_SPX_ITER), dinf(t, QRN_DINF_TIME_SIMPLEX));
    s += fmt("  Mixed integer       : %lld nodes, %.3f s\n", static_cast<long long>(liinf(t, QRN_LIINF_MIP_NODES)), dinf(t, QRN_DINF_TIME_MIP));
  }
  t.write(stream, s);
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_readsummary(qrn_task_t task, qrn_int32 whichstream) {
  return api(task, "QRN_readsummary", [&](Task &t) {
    need_stream(whichstream);
    read_summary(t, whichstream);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_analyzeproblem(qrn_task_t task, qrn_int32 whichstream) {
  return api(task, "QRN_analyzeproblem", [&](Task &t) {
    need_stream(whichstream);
    analyze_problem(t, whichstream);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_solutionsummary(qrn_task_t task, qrn_int32 whichstream) {
  return api(task, "QRN_solutionsummary", [&](Task &t) {
    need_stream(whichstream);
    solution_summary(t, whichstream, -1);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_onesolutionsummary(qrn_task_t task, qrn_int32 whichstream, qrn_int32 whichsol) {
  return api(task, "QRN_onesolutionsummary", [&](Task &t) {
    need_stream(whichstream);
    need_soltype(whichsol);
    solution_summary(t, whichstream, whichsol);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_optimizersummary(qrn_task_t task, qrn_int32 whichstream) {
  return api(task, "QRN_optimizersummary", [&](Task &t) {
    need_stream(whichstream);
    optimizer_summary(t, whichstream);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getmemusagetask(qrn_task_t task, qrn_int64 *meminuse, qrn_int64 *maxmemuse) {
  return api(task, "QRN_getmemusagetask", [&](Task &t) {
    qrn_int64 now = memory_in_use(t);
    t.mem_peak = std::max(t.mem_peak, now);
    put(meminuse, now);
    put(maxmemuse, t.mem_peak);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_checkmemtask(qrn_task_t task, const char *file, qrn_int32 line) {
  return api(task, "QRN_checkmemtask", [&](Task &t) {
    if (file == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument file is null.");
    qrn_int64 now = memory_in_use(t);
    t.mem_peak = std::max(t.mem_peak, now);
    t.write(QRN_STREAM_MSG, fmt("%s:%d: task memory %lld bytes in use, %lld at most\n", file, line,
                                static_cast<long long>(now), static_cast<long long>(t.mem_peak)));
  });
}

}  // extern "C"
