// Moving a problem between a task and plain arrays through the C interface.
#include "exchange.hpp"

#include <algorithm>
#include <numeric>
#include <unordered_set>

namespace qrn {
namespace {

// A failing call on `task` becomes a Failure with that task's message.
void call(qrn_task_t task, qrn_rescode r, const std::string &where = "") {
  if (r == QRN_RES_OK) return;
  qrn_int32 len = 0;
  QRN_getlasterror(task, nullptr, 0, &len, nullptr);
  std::string msg(static_cast<size_t>(len) + 1, '\0');
  QRN_getlasterror(task, nullptr, len + 1, nullptr, msg.data());
  msg.resize(static_cast<size_t>(len));
  fail(r, where.empty() ? msg : where + ": " + msg);
}

template <class LenFn, class GetFn>
std::vector<std::string> read_names(qrn_task_t task, qrn_int32 n, LenFn lenfn, GetFn getfn) {
  std::vector<std::string> out(static_cast<size_t>(n));
  bool any = false;
  for (qrn_int32 k = 0; k < n; ++k) {
    qrn_int32 len = 0;
    call(task, lenfn(task, k, &len));
    if (len == 0) continue;
    std::string s(static_cast<size_t>(len) + 1, '\0');
    call(task, getfn(task, k, len + 1, s.data()));
    s.resize(static_cast<size_t>(len));
    out[k] = std::move(s);
    any = true;
  }
  if (!any) out.clear();
  return out;
}

std::string read_text(qrn_task_t task, qrn_rescode (*lenfn)(qrn_task_t, qrn_int32 *),
                      qrn_rescode (*getfn)(qrn_task_t, qrn_int32, char *)) {
  qrn_int32 len = 0;
  call(task, lenfn(task, &len));
  std::string s(static_cast<size_t>(len) + 1, '\0');
  call(task, getfn(task, len + 1, s.data()));
  s.resize(static_cast<size_t>(len));
  return s;
}

}  // namespace

void FileProblem::resize(qrn_int32 m, qrn_int32 n) {
  numcon = m;
  numvar = n;
  c.assign(n, 0.0);
  bkc.assign(m, QRN_BK_FREE);
  blc.assign(m, -inf);
  buc.assign(m, inf);
  bkx.assign(n, QRN_BK_LOWER);
  blx.assign(n, 0.0);
  bux.assign(n, inf);
  vartype.assign(n, QRN_VAR_TYPE_CONTINUOUS);
}

bool FileProblem::has_names() const {
  auto any = [](const std::vector<std::string> &v) {
    return std::any_of(v.begin(), v.end(), [](const std::string &s) { return !s.empty(); });
  };
  return any(connames) || any(varnames) || any(conenames) || !objname.empty() || !taskname.empty();
}

bool FileProblem::has_integer() const {
  return std::any_of(vartype.begin(), vartype.end(), [](qrn_int32 t) { return t == QRN_VAR_TYPE_INTEGER; });
}

FileProblem extract(qrn_task_t task) {
  FileProblem p;
  call(task, QRN_getnumcon(task, &p.numcon));
  call(task, QRN_getnumvar(task, &p.numvar));
  const qrn_int32 m = p.numcon, n = p.numvar;
  call(task, QRN_getobjsense(task, &p.sense));
  call(task, QRN_getcfix(task, &p.cfix));
  p.c.resize(n);
  call(task, QRN_getcslice(task, 0, n, p.c.data()));
  p.bkc.resize(m), p.blc.resize(m), p.buc.resize(m);
  call(task, QRN_getconboundslice(task, 0, m, p.bkc.data(), p.blc.data(), p.buc.data()));
  p.bkx.resize(n), p.blx.resize(n), p.bux.resize(n);
  call(task, QRN_getvarboundslice(task, 0, n, p.bkx.data(), p.blx.data(), p.bux.data()));
  p.vartype.resize(n);
  {
    std::vector<qrn_int32> all(n);
    std::iota(all.begin(), all.end(), 0);
    call(task, QRN_getvartypelist(task, n, all.data(), p.vartype.data()));
  }
  qrn_int64 nnz = 0;
  call(task, QRN_getnumanz64(task, &nnz));
  std::vector<qrn_int64> ptrb(n), ptre(n);
  p.asub.resize(nnz);
  p.aval.resize(nnz);
  call(task, QRN_getacolslice64(task, 0, n, nnz, ptrb.data(), ptre.data(), p.asub.data(), p.aval.data()));
  p.aptr.assign(static_cast<size_t>(n) + 1, 0);
  for (qrn_int32 j = 0; j < n; ++j) p.aptr[j + 1] = ptre[j];
  if (n > 0 && (ptrb[0] != 0 || ptre[n - 1] != nnz)) fail(QRN_RES_ERR_INTERNAL, "The column slice is not contiguous.");

  qrn_int64 qnz = 0;
  call(task, QRN_getnumqobjnz64(task, &qnz));
  p.qosubi.resize(qnz), p.qosubj.resize(qnz), p.qoval.resize(qnz);
  call(task, QRN_getqobj64(task, qnz, &qnz, p.qosubi.data(), p.qosubj.data(), p.qoval.data()));
  for (qrn_int32 k = 0; k < m; ++k) {
    call(task, QRN_getnumqconknz64(task, k, &qnz));
    if (qnz == 0) continue;
    size_t base = p.qcval.size();
    p.qcsubi.resize(base + qnz), p.qcsubj.resize(base + qnz), p.qcval.resize(base + qnz);
    call(task, QRN_getqconk64(task, k, qnz, &qnz, p.qcsubi.data() + base, p.qcsubj.data() + base,
                              p.qcval.data() + base));
    p.qcsubk.resize(base + qnz, k);
  }

  qrn_int32 numcone = 0;
  call(task, QRN_getnumcone(task, &numcone));
  p.cones.resize(numcone);
  for (qrn_int32 k = 0; k < numcone; ++k) {
    qrn_int32 nummem = 0;
    call(task, QRN_getnumconemem(task, k, &nummem));
    p.cones[k].members.resize(nummem);
    call(task, QRN_getcone(task, k, &p.cones[k].type, &p.cones[k].par, &nummem, p.cones[k].members.data()));
  }

  p.connames = read_names(task, m, QRN_getconnamelen, QRN_getconname);
  p.varnames = read_names(task, n, QRN_getvarnamelen, QRN_getvarname);
  p.conenames = read_names(task, numcone, QRN_getconenamelen, QRN_getconename);
  p.objname = read_text(task, QRN_getobjnamelen, QRN_getobjname);
  p.taskname = read_text(task, QRN_gettasknamelen, QRN_gettaskname);
  return p;
}

void load(qrn_task_t task, const FileProblem &p, const std::string &where) {
  const qrn_int32 m = p.numcon, n = p.numvar;
  std::vector<qrn_int64> ptrb(n), ptre(n);
  for (qrn_int32 j = 0; j < n; ++j) {
    ptrb[j] = p.aptr[j];
    ptre[j] = p.aptr[j + 1];
  }
  call(task,
       QRN_inputdata64(task, m, n, m, n, p.c.data(), p.cfix, ptrb.data(), ptre.data(), p.asub.data(), p.aval.data(),
                       p.bkc.data(), p.blc.data(), p.buc.data(), p.bkx.data(), p.blx.data(), p.bux.data()),
       where);
  call(task, QRN_putobjsense(task, p.sense), where);
  {
    std::vector<qrn_int32> ints;
    for (qrn_int32 j = 0; j < n; ++j)
      if (p.vartype[j] != QRN_VAR_TYPE_CONTINUOUS) ints.push_back(j);
    std::vector<qrn_int32> types(ints.size());
    for (size_t k = 0; k < ints.size(); ++k) types[k] = p.vartype[ints[k]];
    call(task, QRN_putvartypelist(task, static_cast<qrn_int32>(ints.size()), ints.data(), types.data()), where);
  }
  auto count32 = [&](size_t v, const char *what) {
    if (v > static_cast<size_t>(INT32_MAX)) fail(QRN_RES_ERR_READ_INDEX, where + ": too many " + what + ".");
    return static_cast<qrn_int32>(v);
  };
  if (!p.qoval.empty())
    call(task, QRN_putqobj(task, count32(p.qoval.size(), "quadratic terms"), p.qosubi.data(), p.qosubj.data(),
                           p.qoval.data()),
         where);
  if (!p.qcval.empty())
    call(task, QRN_putqcon(task, count32(p.qcval.size(), "quadratic terms"), p.qcsubk.data(), p.qcsubi.data(),
                           p.qcsubj.data(), p.qcval.data()),
         where);
  for (const ProblemCone &k : p.cones)
    call(task, QRN_appendcone(task, k.type, k.par, static_cast<qrn_int32>(k.members.size()), k.members.data()),
         where);
  for (size_t i = 0; i < p.connames.size(); ++i)
    if (!p.connames[i].empty()) call(task, QRN_putconname(task, static_cast<qrn_int32>(i), p.connames[i].c_str()), where);
  for (size_t j = 0; j < p.varnames.size(); ++j)
    if (!p.varnames[j].empty()) call(task, QRN_putvarname(task, static_cast<qrn_int32>(j), p.varnames[j].c_str()), where);
  for (size_t k = 0; k < p.conenames.size(); ++k)
    if (!p.conenames[k].empty())
      call(task, QRN_putconename(task, static_cast<qrn_int32>(k), p.conenames[k].c_str()), where);
  call(task, QRN_putobjname(task, p.objname.c_str()), where);
  call(task, QRN_puttaskname(task, p.taskname.c_str()), where);
}

std::vector<std::string> complete_names(const std::vector<std::string> &names, qrn_int32 n, const std::string &prefix,
                                        bool use_names) {
  std::vector<std::string> out(static_cast<size_t>(n));
  bool all = use_names && names.size() >= static_cast<size_t>(n);
  if (use_names)
    for (qrn_int32 k = 0; k < n && static_cast<size_t>(k) < names.size(); ++k) {
      out[k] = names[k];
      all = all && !names[k].empty();
    }
  if (all) return out;
  // Generated names must not collide with real ones.
  std::unordered_set<std::string> taken;
  for (const std::string &s : out)
    if (!s.empty()) taken.insert(s);
  for (qrn_int32 k = 0; k < n; ++k) {
    if (!out[k].empty()) continue;
    std::string s = prefix + std::to_string(k);
    // A real name may look generated: add a suffix until the name is free.
    if (!taken.empty())
      for (int extra = 1; taken.count(s) != 0; ++extra) s = prefix + std::to_string(k) + "_" + std::to_string(extra);
    out[k] = std::move(s);
  }
  return out;
}

}  // namespace qrn
