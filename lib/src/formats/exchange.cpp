// Moving a problem between a task and plain arrays through the C interface.
#include "exchange.hpp"

#include <algorithm>
#include <cfloat>
#include <cmath>
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

template <class Index, class LenFn, class GetFn>
std::vector<std::string> read_names(qrn_task_t task, Index n, LenFn lenfn, GetFn getfn) {
  std::vector<std::string> out(static_cast<size_t>(n));
  bool any = false;
  for (Index k = 0; k < n; ++k) {
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

void extract_conic(qrn_task_t task, FileProblem &p) {
  call(task, QRN_getnumafe(task, &p.numafe));
  qrn_int64 fnz = 0;
  call(task, QRN_getafefnumnz(task, &fnz));
  p.fsubi.resize(fnz), p.fsubj.resize(fnz), p.fval.resize(fnz);
  if (fnz > 0) call(task, QRN_getafeftrip(task, p.fsubi.data(), p.fsubj.data(), p.fval.data()));
  p.g.resize(p.numafe);
  if (p.numafe > 0) call(task, QRN_getafegslice(task, 0, p.numafe, p.g.data()));

  qrn_int32 numbarvar = 0;
  call(task, QRN_getnumbarvar(task, &numbarvar));
  p.barvardim.resize(numbarvar);
  for (qrn_int32 j = 0; j < numbarvar; ++j) call(task, QRN_getdimbarvarj(task, j, &p.barvardim[j]));
  qrn_int64 nummat = 0;
  call(task, QRN_getnumsymmat(task, &nummat));
  p.symmats.resize(nummat);
  for (qrn_int64 k = 0; k < nummat; ++k) {
    ProblemSymMat &m = p.symmats[k];
    qrn_int64 nz = 0;
    qrn_int32 type = 0;
    call(task, QRN_getsymmatinfo(task, k, &m.dim, &nz, &type));
    m.subi.resize(nz), m.subj.resize(nz), m.val.resize(nz);
    call(task, QRN_getsparsesymmat(task, k, nz, m.subi.data(), m.subj.data(), m.val.data()));
  }
  // barF, row by row.
  if (numbarvar > 0)
    for (qrn_int64 r = 0; r < p.numafe; ++r) {
      qrn_int32 ne = 0;
      qrn_int64 nt = 0;
      call(task, QRN_getafebarfrowinfo(task, r, &ne, &nt));
      if (ne == 0) continue;
      std::vector<qrn_int32> bv(ne);
      std::vector<qrn_int64> ptr(ne), num(ne), idx(nt);
      std::vector<double> w(nt);
      call(task, QRN_getafebarfrow(task, r, bv.data(), ptr.data(), num.data(), idx.data(), w.data()));
      for (qrn_int32 e = 0; e < ne; ++e) {
        ProblemBarCoef c;
        c.i = r, c.j = bv[e];
        c.mat.assign(idx.begin() + ptr[e], idx.begin() + ptr[e] + num[e]);
        c.weight.assign(w.begin() + ptr[e], w.begin() + ptr[e] + num[e]);
        p.barf.push_back(std::move(c));
      }
    }
  auto coefs = [&](bool is_a, std::vector<ProblemBarCoef> &out) {
    qrn_int64 nz = 0;
    call(task, is_a ? QRN_getnumbaranz(task, &nz) : QRN_getnumbarcnz(task, &nz));
    std::vector<qrn_int64> pos(nz);
    if (nz > 0)
      call(task, is_a ? QRN_getbarasparsity(task, nz, &nz, pos.data()) : QRN_getbarcsparsity(task, nz, &nz, pos.data()));
    for (qrn_int64 q = 0; q < nz; ++q) {
      qrn_int64 num = 0;
      call(task, is_a ? QRN_getbaraidxinfo(task, pos[q], &num) : QRN_getbarcidxinfo(task, pos[q], &num));
      ProblemBarCoef c;
      c.mat.resize(num), c.weight.resize(num);
      if (is_a) {
        qrn_int32 i = 0;
        call(task, QRN_getbaraidx(task, pos[q], num, &i, &c.j, &num, c.mat.data(), c.weight.data()));
        c.i = i;
      } else {
        call(task, QRN_getbarcidx(task, pos[q], num, &c.j, &num, c.mat.data(), c.weight.data()));
      }
      out.push_back(std::move(c));
    }
  };
  if (numbarvar > 0) {
    coefs(false, p.barc);
    coefs(true, p.bara);
  }

  qrn_int64 numdom = 0;
  call(task, QRN_getnumdomain(task, &numdom));
  p.domains.resize(numdom);
  for (qrn_int64 d = 0; d < numdom; ++d) {
    ProblemDomain &dom = p.domains[d];
    call(task, QRN_getdomaintype(task, d, &dom.type));
    call(task, QRN_getdomainn(task, d, &dom.n));
    if (dom.type == QRN_DOMAIN_PRIMAL_POWER_CONE || dom.type == QRN_DOMAIN_DUAL_POWER_CONE) {
      qrn_int64 n = 0, nleft = 0;
      call(task, QRN_getpowerdomaininfo(task, d, &n, &nleft));
      dom.alpha.resize(nleft);
      call(task, QRN_getpowerdomainalpha(task, d, dom.alpha.data()));
    }
  }
  qrn_int64 numacc = 0;
  call(task, QRN_getnumacc(task, &numacc));
  p.accs.resize(numacc);
  for (qrn_int64 k = 0; k < numacc; ++k) {
    ProblemAcc &a = p.accs[k];
    qrn_int64 n = 0;
    call(task, QRN_getaccdomain(task, k, &a.dom));
    call(task, QRN_getaccn(task, k, &n));
    a.afe.resize(n), a.b.resize(n);
    call(task, QRN_getaccafeidxlist(task, k, a.afe.data()));
    call(task, QRN_getaccb(task, k, a.b.data()));
  }
  qrn_int64 numdjc = 0;
  call(task, QRN_getnumdjc(task, &numdjc));
  p.djcs.resize(numdjc);
  for (qrn_int64 k = 0; k < numdjc; ++k) {
    ProblemDjc &d = p.djcs[k];
    qrn_int64 nd = 0, na = 0, nt = 0;
    call(task, QRN_getdjcnumdomain(task, k, &nd));
    call(task, QRN_getdjcnumafe(task, k, &na));
    call(task, QRN_getdjcnumterm(task, k, &nt));
    d.dom.resize(nd), d.afe.resize(na), d.b.resize(na), d.termsize.resize(nt);
    call(task, QRN_getdjcdomainidxlist(task, k, d.dom.data()));
    call(task, QRN_getdjcafeidxlist(task, k, d.afe.data()));
    call(task, QRN_getdjcb(task, k, d.b.data()));
    call(task, QRN_getdjctermsizelist(task, k, d.termsize.data()));
  }
}

void load_conic(qrn_task_t task, const FileProblem &p, const std::string &where) {
  if (p.numafe > 0) {
    call(task, QRN_appendafes(task, p.numafe), where);
    if (!p.fval.empty())
      call(task, QRN_putafefentrylist(task, static_cast<qrn_int64>(p.fval.size()), p.fsubi.data(), p.fsubj.data(),
                                      p.fval.data()),
           where);
    call(task, QRN_putafegslice(task, 0, p.numafe, p.g.data()), where);
  }
  if (!p.barvardim.empty())
    call(task, QRN_appendbarvars(task, static_cast<qrn_int32>(p.barvardim.size()), p.barvardim.data()), where);
  for (const ProblemSymMat &m : p.symmats) {
    qrn_int64 idx = 0;
    call(task, QRN_appendsparsesymmat(task, m.dim, static_cast<qrn_int64>(m.val.size()), m.subi.data(), m.subj.data(),
                                      m.val.data(), &idx),
         where);
  }
  for (const ProblemBarCoef &c : p.barc)
    call(task, QRN_putbarcj(task, c.j, static_cast<qrn_int64>(c.mat.size()), c.mat.data(), c.weight.data()), where);
  for (const ProblemBarCoef &c : p.bara)
    call(task, QRN_putbaraij(task, static_cast<qrn_int32>(c.i), c.j, static_cast<qrn_int64>(c.mat.size()), c.mat.data(),
                             c.weight.data()),
         where);
  for (const ProblemBarCoef &c : p.barf)
    call(task, QRN_putafebarfentry(task, c.i, c.j, static_cast<qrn_int64>(c.mat.size()), c.mat.data(), c.weight.data()),
         where);
  for (const ProblemDomain &d : p.domains) {
    qrn_int64 idx = 0;
    const qrn_int64 nleft = static_cast<qrn_int64>(d.alpha.size());
    switch (d.type) {
      case QRN_DOMAIN_R: call(task, QRN_appendrdomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_RZERO: call(task, QRN_appendrzerodomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_RPLUS: call(task, QRN_appendrplusdomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_RMINUS: call(task, QRN_appendrminusdomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_QUADRATIC_CONE: call(task, QRN_appendquadraticconedomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_RQUADRATIC_CONE: call(task, QRN_appendrquadraticconedomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_PRIMAL_EXP_CONE:
        if (d.n != 3) fail(QRN_RES_ERR_DOMAIN_DIMENSION, where + ": an exponential cone has 3 members.");
        call(task, QRN_appendprimalexpconedomain(task, &idx), where);
        break;
      case QRN_DOMAIN_DUAL_EXP_CONE:
        if (d.n != 3) fail(QRN_RES_ERR_DOMAIN_DIMENSION, where + ": an exponential cone has 3 members.");
        call(task, QRN_appenddualexpconedomain(task, &idx), where);
        break;
      case QRN_DOMAIN_PRIMAL_POWER_CONE:
      case QRN_DOMAIN_DUAL_POWER_CONE: {
        call(task, (d.type == QRN_DOMAIN_PRIMAL_POWER_CONE ? QRN_appendprimalpowerconedomain : QRN_appenddualpowerconedomain)(
                       task, d.n, nleft, d.alpha.data(), &idx),
             where);
        // Weights written by a task are normalised already, but normalising
        // them again may move their last bits: weights that sum to 1 up to
        // rounding are kept as they are, so that a round trip is exact.
        double sum = 0.0;
        for (double a : d.alpha) sum += a;
        if (std::fabs(sum - 1.0) <= 4.0 * DBL_EPSILON * static_cast<double>(nleft))
          static_cast<Task *>(task)->conic.domains[static_cast<size_t>(idx)].alpha = d.alpha;
        break;
      }
      case QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE: call(task, QRN_appendprimalgeomeanconedomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_DUAL_GEO_MEAN_CONE: call(task, QRN_appenddualgeomeanconedomain(task, d.n, &idx), where); break;
      case QRN_DOMAIN_SVEC_PSD_CONE: call(task, QRN_appendsvecpsdconedomain(task, d.n, &idx), where); break;
      default: fail(QRN_RES_ERR_READ_UNSUPPORTED, where + ": domain type " + std::to_string(d.type) + " is not known.");
    }
  }
  for (const ProblemAcc &a : p.accs)
    call(task, QRN_appendacc(task, a.dom, static_cast<qrn_int64>(a.afe.size()), a.afe.data(), a.b.data()), where);
  if (!p.djcs.empty()) {
    call(task, QRN_appenddjcs(task, static_cast<qrn_int64>(p.djcs.size())), where);
    for (size_t k = 0; k < p.djcs.size(); ++k) {
      const ProblemDjc &d = p.djcs[k];
      call(task, QRN_putdjc(task, static_cast<qrn_int64>(k), static_cast<qrn_int64>(d.dom.size()), d.dom.data(),
                            static_cast<qrn_int64>(d.afe.size()), d.afe.data(), d.b.data(),
                            static_cast<qrn_int64>(d.termsize.size()), d.termsize.data()),
           where);
    }
  }
  auto names = [&](const std::vector<std::string> &v, auto put) {
    for (size_t k = 0; k < v.size(); ++k)
      if (!v[k].empty()) call(task, put(task, k, v[k].c_str()), where);
  };
  names(p.domnames, [](qrn_task_t t, size_t k, const char *s) { return QRN_putdomainname(t, static_cast<qrn_int64>(k), s); });
  names(p.accnames, [](qrn_task_t t, size_t k, const char *s) { return QRN_putaccname(t, static_cast<qrn_int64>(k), s); });
  names(p.djcnames, [](qrn_task_t t, size_t k, const char *s) { return QRN_putdjcname(t, static_cast<qrn_int64>(k), s); });
  names(p.barvarnames,
        [](qrn_task_t t, size_t k, const char *s) { return QRN_putbarvarname(t, static_cast<qrn_int32>(k), s); });
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
  return any(connames) || any(varnames) || any(conenames) || any(domnames) || any(accnames) || any(djcnames) ||
         any(barvarnames) || !objname.empty() || !taskname.empty();
}

qrn_int64 FileProblem::accntot() const {
  qrn_int64 n = 0;
  for (const ProblemAcc &a : accs) n += static_cast<qrn_int64>(a.afe.size());
  return n;
}

bool FileProblem::has_integer() const {
  return std::any_of(vartype.begin(), vartype.end(), [](qrn_int32 t) { return t == QRN_VAR_TYPE_INTEGER; });
}

ProblemRows rows_of(const FileProblem &p) {
  ProblemRows r;
  r.start.assign(static_cast<size_t>(p.numcon) + 1, 0);
  for (qrn_int32 i : p.asub) ++r.start[static_cast<size_t>(i) + 1];
  for (qrn_int32 i = 0; i < p.numcon; ++i) r.start[i + 1] += r.start[i];
  r.sub.resize(p.asub.size());
  r.val.resize(p.asub.size());
  std::vector<qrn_int64> next(r.start.begin(), r.start.end() - 1);
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    for (qrn_int64 k = p.aptr[j]; k < p.aptr[j + 1]; ++k) {
      const qrn_int64 q = next[p.asub[k]]++;
      r.sub[q] = j;
      r.val[q] = p.aval[k];
    }
  return r;
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

  extract_conic(task, p);

  p.connames = read_names(task, m, QRN_getconnamelen, QRN_getconname);
  p.varnames = read_names(task, n, QRN_getvarnamelen, QRN_getvarname);
  p.conenames = read_names(task, numcone, QRN_getconenamelen, QRN_getconename);
  p.objname = read_text(task, QRN_getobjnamelen, QRN_getobjname);
  p.taskname = read_text(task, QRN_gettasknamelen, QRN_gettaskname);
  p.domnames = read_names(task, static_cast<qrn_int64>(p.domains.size()), QRN_getdomainnamelen, QRN_getdomainname);
  p.accnames = read_names(task, static_cast<qrn_int64>(p.accs.size()), QRN_getaccnamelen, QRN_getaccname);
  p.djcnames = read_names(task, static_cast<qrn_int64>(p.djcs.size()), QRN_getdjcnamelen, QRN_getdjcname);
  p.barvarnames = read_names(task, static_cast<qrn_int32>(p.barvardim.size()), QRN_getbarvarnamelen, QRN_getbarvarname);
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
  load_conic(task, p, where);
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
