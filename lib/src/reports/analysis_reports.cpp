// Reports on the analysis of a solved task: the tables of the sensitivity
// analysis of an optimal basic solution (QRN_primalsensitivity,
// QRN_dualsensitivity) and the constraints and bounds behind a primal
// infeasibility certificate (QRN_getinfeasiblesubproblem). Both read the task
// through the C interface only.
#include "exchange.hpp"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace qrn {
namespace {

void need_stream(qrn_int32 s) {
  if (s < 0 || s > 3) fail(QRN_RES_ERR_STREAM, "Stream " + std::to_string(s) + " is not one of 0..3.");
}

void call(qrn_task_t task, qrn_rescode r) {
  if (r == QRN_RES_OK) return;
  char msg[1024] = "";
  QRN_getlasterror(task, nullptr, sizeof msg, nullptr, msg);
  fail(r, msg);
}

std::string num(double v) {
  if (std::isinf(v)) return v > 0 ? "+inf" : "-inf";
  char b[32];
  std::snprintf(b, sizeof b, "%.6g", v);
  return b;
}

std::string row(const char *f, ...) __attribute__((format(printf, 1, 2)));
std::string row(const char *f, ...) {
  char b[512];
  va_list ap;
  va_start(ap, f);
  std::vsnprintf(b, sizeof b, f, ap);
  va_end(ap);
  return b;
}

std::string label(const std::vector<std::string> &names, qrn_int32 k, const char *prefix) {
  if (static_cast<size_t>(k) < names.size() && !names[k].empty()) return names[k].substr(0, 20);
  return prefix + std::to_string(k);
}

// The bounds a table lists: each finite side (a fixed item once, as "fixed").
struct Side {
  qrn_int32 item, mark;
  const char *what;
};
std::vector<Side> sides(const std::vector<qrn_int32> &bk) {
  std::vector<Side> out;
  for (qrn_int32 k = 0; k < static_cast<qrn_int32>(bk.size()); ++k) {
    switch (bk[k]) {
      case QRN_BK_LOWER: out.push_back({k, QRN_MARK_LO, "lower"}); break;
      case QRN_BK_UPPER: out.push_back({k, QRN_MARK_UP, "upper"}); break;
      case QRN_BK_FIXED: out.push_back({k, QRN_MARK_LO, "fixed"}); break;
      case QRN_BK_RANGED:
        out.push_back({k, QRN_MARK_LO, "lower"});
        out.push_back({k, QRN_MARK_UP, "upper"});
        break;
      default: break;
    }
  }
  return out;
}

void sensitivity_report(qrn_task_t task, Task &t, qrn_int32 stream) {
  FileProblem p = extract(task);
  std::vector<Side> cs = sides(p.bkc), vs = sides(p.bkx);
  std::vector<qrn_int32> ci, cm, vi, vm;
  for (const Side &s : cs) ci.push_back(s.item), cm.push_back(s.mark);
  for (const Side &s : vs) vi.push_back(s.item), vm.push_back(s.mark);
  const size_t nc = cs.size(), nv = vs.size();
  std::vector<double> clp(nc), crp(nc), clr(nc), crr(nc), vlp(nv), vrp(nv), vlr(nv), vrr(nv);
  call(task, QRN_primalsensitivity(task, static_cast<qrn_int32>(nc), ci.data(), cm.data(), static_cast<qrn_int32>(nv),
                                   vi.data(), vm.data(), clp.data(), crp.data(), clr.data(), crr.data(), vlp.data(),
                                   vrp.data(), vlr.data(), vrr.data()));
  std::vector<qrn_int32> all(p.numvar);
  for (qrn_int32 j = 0; j < p.numvar; ++j) all[j] = j;
  std::vector<double> olp(p.numvar), orp(p.numvar), olr(p.numvar), orr(p.numvar);
  call(task, QRN_dualsensitivity(task, p.numvar, all.data(), olp.data(), orp.data(), olr.data(), orr.data()));

  std::string s = "Sensitivity report (optimal basic solution)\n";
  s += "  Shadow prices are the rates of change of the optimal objective when the bound (or c_j)\n"
       "  moves down (left) or up (right); ranges how far it can move with the basis staying optimal.\n";
  auto bounds_table = [&](const char *title, const std::vector<Side> &v, const std::vector<std::string> &names,
                          const char *prefix, const std::vector<double> &lb, const std::vector<double> &ub,
                          const std::vector<double> &lp, const std::vector<double> &rp, const std::vector<double> &lr,
                          const std::vector<double> &rr) {
    s += row("%s\n  %-20s %-6s %13s %13s %13s %13s %13s\n", title, "name", "bound", "value", "left price", "right price",
             "left range", "right range");
    for (size_t k = 0; k < v.size(); ++k) {
      double value = v[k].mark == QRN_MARK_LO ? lb[v[k].item] : ub[v[k].item];
      s += row("  %-20s %-6s %13s %13s %13s %13s %13s\n", label(names, v[k].item, prefix).c_str(), v[k].what,
               num(value).c_str(), num(lp[k]).c_str(), num(rp[k]).c_str(), num(lr[k]).c_str(), num(rr[k]).c_str());
    }
    if (v.empty()) s += "  (no finite bounds)\n";
  };
  bounds_table("Constraint bounds", cs, p.connames, "c", p.blc, p.buc, clp, crp, clr, crr);
  bounds_table("Variable bounds", vs, p.varnames, "x", p.blx, p.bux, vlp, vrp, vlr, vrr);
  s += row("Objective coefficients\n  %-20s %13s %13s %13s %13s %13s\n", "name", "c_j", "left price", "right price",
           "left range", "right range");
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    s += row("  %-20s %13s %13s %13s %13s %13s\n", label(p.varnames, j, "x").c_str(), num(p.c[j]).c_str(),
             num(olp[j]).c_str(), num(orp[j]).c_str(), num(olr[j]).c_str(), num(orr[j]).c_str());
  t.write(stream, s);
}

struct TaskOwner {
  qrn_task_t t = nullptr;
  ~TaskOwner() {
    if (t != nullptr) QRN_deletetask(&t);
  }
};

void infeasibility_report(qrn_task_t task, Task &t, qrn_int32 stream, qrn_int32 whichsol) {
  TaskOwner inf;
  call(task, QRN_getinfeasiblesubproblem(task, whichsol, &inf.t));
  FileProblem p = extract(task), q = extract(inf.t);
  // The certificate's multipliers of the kept bounds.
  std::vector<double> slc(p.numcon), suc(p.numcon), slx(p.numvar), sux(p.numvar);
  call(task, QRN_getslc(task, whichsol, slc.data()));
  call(task, QRN_getsuc(task, whichsol, suc.data()));
  call(task, QRN_getslx(task, whichsol, slx.data()));
  call(task, QRN_getsux(task, whichsol, sux.data()));
  std::string s = "Infeasibility report\n";
  s += "  The problem is primal infeasible: the bounds below cannot hold together (an irreducible\n"
       "  set; dropping any one of them leaves a feasible problem). The multiplier is the bound's\n"
       "  weight in the certificate.\n";
  size_t ncon = 0, nvar = 0;
  auto table = [&](const char *title, qrn_int32 n, const std::vector<std::string> &names, const char *prefix,
                   const FileProblem &kept, bool cons, size_t &count) {
    std::string body;
    for (qrn_int32 k = 0; k < n; ++k) {
      const double lo = cons ? kept.blc[k] : kept.blx[k], up = cons ? kept.buc[k] : kept.bux[k];
      const double ml = cons ? slc[k] : slx[k], mu = cons ? suc[k] : sux[k];
      if (!std::isinf(lo)) {
        body += row("  %-20s %-6s %13s %13s\n", label(names, k, prefix).c_str(), "lower", num(lo).c_str(), num(ml).c_str());
        ++count;
      }
      if (!std::isinf(up)) {
        body += row("  %-20s %-6s %13s %13s\n", label(names, k, prefix).c_str(), "upper", num(up).c_str(), num(mu).c_str());
        ++count;
      }
    }
    s += row("%s\n  %-20s %-6s %13s %13s\n", title, "name", "bound", "value", "multiplier");
    s += body.empty() ? "  (none)\n" : body;
  };
  table("Constraints", p.numcon, p.connames, "c", q, true, ncon);
  table("Variables", p.numvar, p.varnames, "x", q, false, nvar);
  s += row("  %zu constraint bounds and %zu variable bounds of %d constraints and %d variables.\n", ncon, nvar, p.numcon,
           p.numvar);
  t.write(stream, s);
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_sensitivityreport(qrn_task_t task, qrn_int32 whichstream) {
  return api(task, "QRN_sensitivityreport", [&](Task &t) {
    need_stream(whichstream);
    sensitivity_report(task, t, whichstream);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_infeasibilityreport(qrn_task_t task, qrn_int32 whichstream, qrn_int32 whichsol) {
  return api(task, "QRN_infeasibilityreport", [&](Task &t) {
    need_stream(whichstream);
    infeasibility_report(task, t, whichstream, whichsol);
  });
}

}  // extern "C"
