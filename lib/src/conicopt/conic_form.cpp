// The task's problem in the interior-point engine's form, read through the
// library's C interface.
#include "conicopt.hpp"

#include <lapacke.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace qrn::opt {

namespace {

constexpr double kSqrt2 = 1.41421356237309504880;

void need(qrn_rescode r, const char *what) {
  if (r != QRN_RES_OK) fail(r, std::string("Reading the conic problem failed (") + what + ").");
}

using Row = ConicRow;
using Block = ConicBlock;
using Rows = ConicRows;

SparseRow scaled(const SparseRow &r, double s) {
  SparseRow o(r);
  for (auto &e : o) e.second *= s;
  return o;
}

ipm::ConeKind kind_of(qrn_int32 domtype) {
  switch (domtype) {
    case QRN_DOMAIN_QUADRATIC_CONE: return ipm::ConeKind::Quadratic;
    case QRN_DOMAIN_RQUADRATIC_CONE: return ipm::ConeKind::RotatedQuadratic;
    case QRN_DOMAIN_PRIMAL_EXP_CONE: return ipm::ConeKind::PrimalExp;
    case QRN_DOMAIN_DUAL_EXP_CONE: return ipm::ConeKind::DualExp;
    case QRN_DOMAIN_PRIMAL_POWER_CONE: return ipm::ConeKind::PrimalPower;
    case QRN_DOMAIN_DUAL_POWER_CONE: return ipm::ConeKind::DualPower;
    case QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE: return ipm::ConeKind::PrimalGeoMean;
    case QRN_DOMAIN_DUAL_GEO_MEAN_CONE: return ipm::ConeKind::DualGeoMean;
    case QRN_DOMAIN_SVEC_PSD_CONE: return ipm::ConeKind::Psd;
  }
  return ipm::ConeKind::Nonnegative;
}

// Sorted by column, duplicates summed, zeros dropped.
void tidy(SparseRow &r) {
  std::sort(r.begin(), r.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
  size_t w = 0;
  for (size_t k = 0; k < r.size();) {
    int c = r[k].first;
    double v = 0.0;
    for (; k < r.size() && r[k].first == c; ++k) v += r[k].second;
    if (v != 0.0) r[w++] = {c, v};
  }
  r.resize(w);
}

}  // namespace

bool factor_psd(const std::vector<qrn_int32> &qi, const std::vector<qrn_int32> &qj, const std::vector<double> &qv,
                double scale, double tol, std::vector<SparseRow> &rows) {
  rows.clear();
  std::map<qrn_int32, int> pos;
  for (size_t k = 0; k < qv.size(); ++k) pos.emplace(qi[k], 0), pos.emplace(qj[k], 0);
  const int d = static_cast<int>(pos.size());
  if (d == 0) return true;
  std::vector<qrn_int32> var(d);
  int next = 0;
  for (auto &kv : pos) var[next] = kv.first, kv.second = next++;
  std::vector<double> a(static_cast<size_t>(d) * d, 0.0), w(d);
  double big = 0.0;
  for (size_t k = 0; k < qv.size(); ++k) {
    const int i = pos[qi[k]], j = pos[qj[k]];
    a[static_cast<size_t>(i) * d + j] += scale * qv[k];
    if (i != j) a[static_cast<size_t>(j) * d + i] += scale * qv[k];
    big = std::max(big, std::fabs(qv[k]));
  }
  if (LAPACKE_dsyevd(LAPACK_ROW_MAJOR, 'V', 'U', d, a.data(), d, w.data()) != 0)
    fail(QRN_RES_ERR_EIGEN, "The eigenvalues of a quadratic constraint could not be computed.");
  const double cut = tol * std::max(1.0, big);
  if (w[0] < -cut) return false;
  // Q = V diag(w) V' = F'F with F = diag(sqrt w) V' over the eigenvalues kept.
  const double keep = std::max(cut, 1e-14 * std::max(1.0, w[d - 1]));
  for (int k = 0; k < d; ++k) {
    if (w[k] <= keep) continue;
    const double r = std::sqrt(w[k]);
    SparseRow row;
    for (int i = 0; i < d; ++i) {
      const double v = r * a[static_cast<size_t>(i) * d + k];
      if (v != 0.0) row.emplace_back(var[i], v);
    }
    rows.push_back(std::move(row));
  }
  return true;
}

int svec_col(const ConicForm &f, qrn_int32 j, qrn_int32 k, qrn_int32 l) {  // k >= l
  const int d = f.bardim[j];
  return f.barstart[j] + l * d - l * (l - 1) / 2 + (k - l);
}

namespace {

DomainRows read_domain(qrn_task_t task, qrn_int64 dom) {
  DomainRows d;
  qrn_int64 dn = 0;
  need(QRN_getdomaintype(task, dom, &d.type), "domain type");
  need(QRN_getdomainn(task, dom, &dn), "domain size");
  if (d.type == QRN_DOMAIN_PRIMAL_POWER_CONE || d.type == QRN_DOMAIN_DUAL_POWER_CONE) {
    need(QRN_getpowerdomaininfo(task, dom, &dn, &d.nleft), "power domain");
    d.alpha.resize(d.nleft);
    need(QRN_getpowerdomainalpha(task, dom, d.alpha.data()), "power weights");
  }
  d.f.resize(dn);
  d.g.resize(dn);
  return d;
}

// F x + barF(barX) + g - b in D as rows of the engine's form (-F, g - b);
// role is Acc (first names the first stacked row) or Djc.
void add_domain(Rows &rows, const DomainRows &d, RowRole role, qrn_int64 first) {
  const qrn_int32 type = d.type;
  const qrn_int64 dn = static_cast<qrn_int64>(d.f.size());
  // Cones that are orthants in disguise go with the inequalities.
  const bool orthant = type == QRN_DOMAIN_RPLUS || (type == QRN_DOMAIN_QUADRATIC_CONE && dn == 1) ||
                       (type == QRN_DOMAIN_RQUADRATIC_CONE && dn == 2) ||
                       (type == QRN_DOMAIN_SVEC_PSD_CONE && dn == 1) ||
                       ((type == QRN_DOMAIN_PRIMAL_POWER_CONE || type == QRN_DOMAIN_DUAL_POWER_CONE) && d.nleft == dn);
  const RowRole neg = role == RowRole::Acc ? RowRole::AccNeg : role;
  Block blk;
  blk.cone.kind = kind_of(type);
  blk.cone.dim = static_cast<int>(dn);
  blk.cone.alpha = d.alpha;
  for (qrn_int64 i = 0; i < dn; ++i) {
    const qrn_int64 r = first + i;
    if (type == QRN_DOMAIN_R) continue;
    if (type == QRN_DOMAIN_RMINUS) rows.nonneg.push_back({d.f[i], -d.g[i], {neg, r}});
    else if (type == QRN_DOMAIN_RZERO) rows.zero.push_back({scaled(d.f[i], -1.0), d.g[i], {role, r}});
    else if (orthant) rows.nonneg.push_back({scaled(d.f[i], -1.0), d.g[i], {role, r}});
    else blk.rows.push_back({scaled(d.f[i], -1.0), d.g[i], {role, r}});
  }
  if (!blk.rows.empty()) rows.blocks.push_back(std::move(blk));
}

}  // namespace

ConicSource conic_source(qrn_task_t task, const Problem &p, double convexity_tol, bool djc_allowed) {
  ConicSource src;
  ConicForm &f = src.base;
  f.n = p.n;
  f.m = p.m;
  f.sign = p.maximize ? -1.0 : 1.0;
  const double s = f.sign;

  qrn_int64 numdjc = 0;
  need(QRN_getnumdjc(task, &numdjc), "disjunctive constraints");
  if (numdjc > 0 && !djc_allowed)
    fail(QRN_RES_ERR_OPT_DJC, "The problem has disjunctive constraints; the conic optimizer does not take them.");

  // ---- columns: scalar variables, then the svec entries of the semidefinite variables
  qrn_int32 numbar = 0;
  need(QRN_getnumbarvar(task, &numbar), "semidefinite variables");
  f.nfull = p.n;
  for (qrn_int32 j = 0; j < numbar; ++j) {
    qrn_int32 d = 0;
    need(QRN_getdimbarvarj(task, j, &d), "semidefinite dimension");
    f.bardim.push_back(d);
    f.barstart.push_back(f.nfull);
    f.nfull += d * (d + 1) / 2;
  }
  auto svec_col = [&](qrn_int32 j, qrn_int32 k, qrn_int32 l) { return opt::svec_col(f, j, k, l); };

  // ---- objective (minimization form)
  f.cfull.assign(f.nfull, 0.0);
  for (qrn_int32 j = 0; j < p.n; ++j) f.cfull[j] = s * p.c[j];
  for (size_t k = 0; k < p.qv.size(); ++k) {
    f.pi.push_back(p.qi[k]);
    f.pj.push_back(p.qj[k]);
    f.pv.push_back(s * p.qv[k]);
  }
  if (numbar > 0) {
    qrn_int64 nt = 0;
    need(QRN_getnumbarcblocktriplets(task, &nt), "barC size");
    std::vector<qrn_int32> sj(nt), sk(nt), sl(nt);
    std::vector<double> v(nt);
    need(QRN_getbarcblocktriplet(task, nt, &nt, sj.data(), sk.data(), sl.data(), v.data()), "barC");
    for (qrn_int64 t = 0; t < nt; ++t)
      f.cfull[svec_col(sj[t], sk[t], sl[t])] += s * v[t] * (sk[t] == sl[t] ? 1.0 : kSqrt2);
  }

  // ---- rows of A (by constraint), barA, quadratic constraint terms
  std::vector<SparseRow> arow(p.m);
  for (qrn_int32 j = 0; j < p.n; ++j)
    for (int k = p.start[j]; k < p.start[j + 1]; ++k) arow[p.index[k]].emplace_back(j, p.value[k]);
  if (numbar > 0) {
    qrn_int64 nt = 0;
    need(QRN_getnumbarablocktriplets(task, &nt), "barA size");
    std::vector<qrn_int32> si(nt), sj(nt), sk(nt), sl(nt);
    std::vector<double> v(nt);
    need(QRN_getbarablocktriplet(task, nt, &nt, si.data(), sj.data(), sk.data(), sl.data(), v.data()), "barA");
    if (nt > 0) f.bara.resize(p.m);
    for (qrn_int64 t = 0; t < nt; ++t) {
      const double coef = v[t] * (sk[t] == sl[t] ? 1.0 : kSqrt2);
      arow[si[t]].emplace_back(svec_col(sj[t], sk[t], sl[t]), coef);
      f.bara[si[t]].emplace_back(svec_col(sj[t], sk[t], sl[t]), coef);
    }
  }
  if (p.numqcnz > 0) {
    f.qi.resize(p.m), f.qj.resize(p.m), f.qv.resize(p.m);
    for (qrn_int32 i = 0; i < p.m; ++i) {
      qrn_int64 nz = 0;
      need(QRN_getnumqconknz64(task, i, &nz), "quadratic constraint size");
      if (nz == 0) continue;
      f.qi[i].resize(nz), f.qj[i].resize(nz), f.qv[i].resize(nz);
      need(QRN_getqconk64(task, i, nz, &nz, f.qi[i].data(), f.qj[i].data(), f.qv[i].data()), "quadratic constraint");
    }
  }

  Rows &rows = src.con;
  for (qrn_int32 i = 0; i < p.m; ++i) {
    SparseRow &a = arow[i];
    tidy(a);
    const qrn_int32 bk = p.bkc[i];
    const bool quad = !f.qi.empty() && !f.qv[i].empty();
    if (quad) {
      if (bk == QRN_BK_FREE) continue;
      if (bk != QRN_BK_UPPER && bk != QRN_BK_LOWER)
        fail(QRN_RES_ERR_OPT_QCON_NONCONVEX,
             "Quadratic constraint " + std::to_string(i) + " has two finite bounds, so it is not convex.");
      const bool upper = bk == QRN_BK_UPPER;
      std::vector<SparseRow> F;
      if (!factor_psd(f.qi[i], f.qj[i], f.qv[i], upper ? 1.0 : -1.0, convexity_tol, F))
        fail(QRN_RES_ERR_OPT_QCON_NONCONVEX,
             "Quadratic constraint " + std::to_string(i) + " is not convex (its Q is not " +
                 (upper ? "positive" : "negative") + " semidefinite for its " + (upper ? "upper" : "lower") +
                 " bound).");
      // 1/2 ||F x||^2 <= uc - a'x as (uc - a'x, 1, F x) in the rotated quadratic cone
      // (for a lower bound: a'x - lc with -Q).
      Block blk;
      blk.cone.kind = ipm::ConeKind::RotatedQuadratic;
      blk.cone.dim = 2 + static_cast<int>(F.size());
      if (upper) blk.rows.push_back({a, p.buc[i], {RowRole::QconUpper, i}});
      else blk.rows.push_back({scaled(a, -1.0), -p.blc[i], {RowRole::QconLower, i}});
      blk.rows.push_back({{}, 1.0, {RowRole::QconAux, i}});
      for (auto &r : F) blk.rows.push_back({scaled(r, -1.0), 0.0, {RowRole::QconAux, i}});
      rows.blocks.push_back(std::move(blk));
      ++f.qcones;
      continue;
    }
    switch (bk) {
      case QRN_BK_FIXED: rows.zero.push_back({scaled(a, -1.0), -p.blc[i], {RowRole::ConFixed, i}}); break;
      case QRN_BK_LOWER: rows.nonneg.push_back({scaled(a, -1.0), -p.blc[i], {RowRole::ConLower, i}}); break;
      case QRN_BK_UPPER: rows.nonneg.push_back({a, p.buc[i], {RowRole::ConUpper, i}}); break;
      case QRN_BK_RANGED:
        rows.nonneg.push_back({scaled(a, -1.0), -p.blc[i], {RowRole::ConLower, i}});
        rows.nonneg.push_back({a, p.buc[i], {RowRole::ConUpper, i}});
        break;
      default: break;
    }
  }

  Rows &rest = src.rest;

  // ---- scalar-variable cones
  for (qrn_int32 k = 0; k < p.numcone; ++k) {
    qrn_int32 type = 0, num = 0;
    double par = 0.0;
    need(QRN_getconeinfo(task, k, &type, &par, &num), "cone");
    std::vector<qrn_int32> mem(num);
    need(QRN_getcone(task, k, &type, &par, &num, mem.data()), "cone members");
    Block blk;
    blk.cone.kind = type == QRN_CONE_RQUAD ? ipm::ConeKind::RotatedQuadratic : ipm::ConeKind::Quadratic;
    blk.cone.dim = num;
    for (qrn_int32 j : mem) blk.rows.push_back({{{j, -1.0}}, 0.0, {RowRole::ConeMember, j}});
    rest.blocks.push_back(std::move(blk));
  }

  // ---- affine conic constraints: F x + barF(barX) + g - b in D, as -F, b = g - b
  qrn_int64 numacc = 0;
  need(QRN_getnumacc(task, &numacc), "ACCs");
  if (numacc > 0) {
    qrn_int64 ntot = 0, fnz = 0, bnt = 0;
    need(QRN_getaccntot(task, &ntot), "ACC size");
    f.accrows = ntot;
    std::vector<qrn_int64> dom(numacc), afe(ntot);
    std::vector<double> bvec(ntot), g(ntot);
    need(QRN_getaccs(task, dom.data(), afe.data(), bvec.data()), "ACC list");
    need(QRN_getaccgvector(task, g.data()), "ACC constants");
    need(QRN_getaccfnumnz(task, &fnz), "ACC F size");
    std::vector<qrn_int64> fr(fnz);
    std::vector<qrn_int32> fc(fnz);
    std::vector<double> fv(fnz);
    need(QRN_getaccftrip(task, fr.data(), fc.data(), fv.data()), "ACC F");
    std::vector<SparseRow> frow(ntot);
    for (qrn_int64 k = 0; k < fnz; ++k) frow[fr[k]].emplace_back(fc[k], fv[k]);
    need(QRN_getaccbarfnumblocktriplets(task, &bnt), "ACC barF size");
    if (bnt > 0) {
      std::vector<qrn_int64> br(bnt);
      std::vector<qrn_int32> bj(bnt), bk(bnt), bl(bnt);
      std::vector<double> bv(bnt);
      need(QRN_getaccbarfblocktriplet(task, bnt, &bnt, br.data(), bj.data(), bk.data(), bl.data(), bv.data()),
           "ACC barF");
      for (qrn_int64 k = 0; k < bnt; ++k)
        frow[br[k]].emplace_back(svec_col(bj[k], bk[k], bl[k]), bv[k] * (bk[k] == bl[k] ? 1.0 : kSqrt2));
    }
    qrn_int64 r = 0;
    for (qrn_int64 k = 0; k < numacc; ++k) {
      DomainRows d = read_domain(task, dom[k]);
      const qrn_int64 first = r;
      for (size_t i = 0; i < d.f.size(); ++i, ++r) {
        tidy(frow[r]);
        d.f[i] = std::move(frow[r]);
        d.g[i] = g[r];
      }
      add_domain(rest, d, RowRole::Acc, first);
    }
  }

  // ---- semidefinite variables: svec(barX_j) in the PSD cone
  for (qrn_int32 j = 0; j < numbar; ++j) {
    const int d = f.bardim[j], len = d * (d + 1) / 2;
    Block blk;
    blk.cone.kind = d == 1 ? ipm::ConeKind::Nonnegative : ipm::ConeKind::Psd;
    blk.cone.dim = len;
    for (int k = 0; k < len; ++k)
      blk.rows.push_back({{{f.barstart[j] + k, -1.0}}, 0.0, {RowRole::Bar, f.barstart[j] + k}});
    rest.blocks.push_back(std::move(blk));
  }
  return src;
}

ConicForm conic_assemble(const ConicSource &src, const std::vector<qrn_int32> &bkx, const std::vector<double> &blx,
                         const std::vector<double> &bux, const std::vector<const DomainRows *> &extra,
                         bool presolve) {
  ConicForm f = src.base;
  const qrn_int32 n = f.n;
  // ---- variable bounds; fixed variables are removed by presolve
  Rows bnd;
  f.col.assign(f.nfull, 0);
  f.fixval.assign(f.nfull, 0.0);
  for (qrn_int32 j = 0; j < n; ++j) {
    switch (bkx[j]) {
      case QRN_BK_FIXED:
        if (presolve) {
          f.col[j] = -1;
          f.fixval[j] = blx[j];
        } else {
          bnd.zero.push_back({{{j, -1.0}}, -blx[j], {RowRole::VarFixed, j}});
        }
        break;
      case QRN_BK_LOWER: bnd.nonneg.push_back({{{j, -1.0}}, -blx[j], {RowRole::VarLower, j}}); break;
      case QRN_BK_UPPER: bnd.nonneg.push_back({{{j, 1.0}}, bux[j], {RowRole::VarUpper, j}}); break;
      case QRN_BK_RANGED:
        bnd.nonneg.push_back({{{j, -1.0}}, -blx[j], {RowRole::VarLower, j}});
        bnd.nonneg.push_back({{{j, 1.0}}, bux[j], {RowRole::VarUpper, j}});
        break;
      default: break;
    }
  }

  Rows more;
  for (const DomainRows *d : extra) add_domain(more, *d, RowRole::Djc, 0);

  // ---- presolve: removed columns move into b and the objective
  int ncol = 0;
  for (int c = 0; c < f.nfull; ++c) f.col[c] = f.col[c] < 0 ? -1 : ncol++;
  f.removed_cols = f.nfull - ncol;
  f.fixed_col.assign(f.nfull, {});
  ipm::Problem &e = f.eng;
  e.n = ncol;
  e.c.assign(ncol, 0.0);
  e.c0 = 0.0;
  for (int c = 0; c < f.nfull; ++c) {
    if (f.col[c] >= 0) e.c[f.col[c]] += f.cfull[c];
    else e.c0 += f.cfull[c] * f.fixval[c];
  }
  std::vector<std::pair<int, double>> pup;  // (engine col j, engine row i) entries of P's upper triangle
  std::vector<std::tuple<int, int, double>> ptrip;
  for (size_t k = 0; k < f.pv.size(); ++k) {
    const int a = f.pi[k], b = f.pj[k];  // a >= b
    const double v = f.pv[k];
    const int ca = f.col[a], cb = f.col[b];
    if (ca >= 0 && cb >= 0) ptrip.emplace_back(std::min(ca, cb), std::max(ca, cb), v);
    else if (ca >= 0) e.c[ca] += v * f.fixval[b];
    else if (cb >= 0) e.c[cb] += v * f.fixval[a];
    else e.c0 += (a == b ? 0.5 : 1.0) * v * f.fixval[a] * f.fixval[b];
  }
  (void)pup;

  // Assembly, in the order zero rows, nonnegative rows, other cones.
  std::vector<std::tuple<int, int, double>> atrip;  // (engine row, engine col, value)
  auto emit = [&](const Row &row) {
    const int r = static_cast<int>(f.rows.size());
    double b = row.b;
    for (auto &en : row.e) {
      const int c = f.col[en.first];
      if (c >= 0) atrip.emplace_back(r, c, en.second);
      else {
        b -= en.second * f.fixval[en.first];
        f.fixed_col[en.first].emplace_back(r, en.second);
      }
    }
    e.b.push_back(b);
    f.rows.push_back(row.ref);
  };
  // An orthant row without a kept column that holds (b >= 0, or b = 0 for an
  // equation) constrains nothing: presolve drops it (its dual is 0).
  auto empty_and_holds = [&](const Row &row, bool eq) {
    double b = row.b;
    for (auto &en : row.e) {
      if (f.col[en.first] >= 0) return false;
      b -= en.second * f.fixval[en.first];
    }
    const double tol = 1e-9 * (1.0 + std::fabs(row.b));
    return eq ? std::fabs(b) <= tol : b >= -tol;
  };
  // The rows in the order constraints, variable bounds, cones, ACCs and
  // semidefinite variables, added memberships.
  const Rows *parts[] = {&src.con, &bnd, &src.rest, &more};
  int nz = 0, nn = 0;
  for (const Rows *rows : parts)
    for (const Row &row : rows->zero) {
      if (presolve && empty_and_holds(row, true)) { ++f.removed_rows; continue; }
      emit(row), ++nz;
    }
  if (nz > 0) e.cones.push_back({ipm::ConeKind::Zero, nz, {}});
  for (const Rows *rows : parts)
    for (const Row &row : rows->nonneg) {
      if (presolve && empty_and_holds(row, false)) { ++f.removed_rows; continue; }
      emit(row), ++nn;
    }
  if (nn > 0) e.cones.push_back({ipm::ConeKind::Nonnegative, nn, {}});
  for (const Rows *rows : parts)
    for (const Block &blk : rows->blocks) {
      for (const Row &row : blk.rows) emit(row);
      e.cones.push_back(blk.cone);
    }
  const int m = static_cast<int>(f.rows.size());
  auto csc = [](int nr, int nc, std::vector<std::tuple<int, int, double>> &trip) {
    ipm::Csc a(nr, nc);
    std::sort(trip.begin(), trip.end(), [](const auto &x, const auto &y) {
      return std::get<1>(x) != std::get<1>(y) ? std::get<1>(x) < std::get<1>(y) : std::get<0>(x) < std::get<0>(y);
    });
    for (size_t k = 0; k < trip.size();) {
      const int r = std::get<0>(trip[k]), c = std::get<1>(trip[k]);
      double v = 0.0;
      for (; k < trip.size() && std::get<0>(trip[k]) == r && std::get<1>(trip[k]) == c; ++k) v += std::get<2>(trip[k]);
      if (v == 0.0) continue;
      a.rowind.push_back(r);
      a.val.push_back(v);
      ++a.colptr[c + 1];
    }
    for (int c = 0; c < nc; ++c) a.colptr[c + 1] += a.colptr[c];
    return a;
  };
  e.A = csc(m, ncol, atrip);
  if (!ptrip.empty()) e.P = csc(ncol, ncol, ptrip);
  return f;
}

ConicForm conic_form(qrn_task_t task, const Problem &p, bool presolve, double convexity_tol) {
  return conic_assemble(conic_source(task, p, convexity_tol, false), p.bkx, p.blx, p.bux, {}, presolve);
}

std::vector<std::vector<std::vector<DomainRows>>> read_djcs(qrn_task_t task, const ConicForm &f) {
  qrn_int64 numdjc = 0, ndom = 0, nafe = 0, nterm = 0, numafe = 0, fnz = 0, bnt = 0;
  need(QRN_getnumdjc(task, &numdjc), "disjunctive constraints");
  std::vector<std::vector<std::vector<DomainRows>>> out(numdjc);
  if (numdjc == 0) return out;
  need(QRN_getdjcnumdomaintot(task, &ndom), "DJC domains");
  need(QRN_getdjcnumafetot(task, &nafe), "DJC expressions");
  need(QRN_getdjcnumtermtot(task, &nterm), "DJC terms");
  std::vector<qrn_int64> dom(ndom), afe(nafe), termsize(nterm), numterms(numdjc);
  std::vector<double> b(nafe);
  need(QRN_getdjcs(task, dom.data(), afe.data(), b.data(), termsize.data(), numterms.data()), "DJC list");
  // The expressions: F rows over full columns (barF included) and g.
  need(QRN_getnumafe(task, &numafe), "expressions");
  std::vector<SparseRow> frow(numafe);
  std::vector<double> g(numafe);
  if (numafe > 0) need(QRN_getafegslice(task, 0, numafe, g.data()), "expression constants");
  need(QRN_getafefnumnz(task, &fnz), "expression F size");
  std::vector<qrn_int64> fr(fnz);
  std::vector<qrn_int32> fc(fnz);
  std::vector<double> fv(fnz);
  need(QRN_getafeftrip(task, fr.data(), fc.data(), fv.data()), "expression F");
  for (qrn_int64 k = 0; k < fnz; ++k) frow[fr[k]].emplace_back(fc[k], fv[k]);
  need(QRN_getafebarfnumblocktriplets(task, &bnt), "expression barF size");
  if (bnt > 0) {
    std::vector<qrn_int64> br(bnt);
    std::vector<qrn_int32> bj(bnt), bk(bnt), bl(bnt);
    std::vector<double> bv(bnt);
    need(QRN_getafebarfblocktriplet(task, bnt, &bnt, br.data(), bj.data(), bk.data(), bl.data(), bv.data()),
         "expression barF");
    for (qrn_int64 k = 0; k < bnt; ++k)
      frow[br[k]].emplace_back(svec_col(f, bj[k], bk[k], bl[k]), bv[k] * (bk[k] == bl[k] ? 1.0 : kSqrt2));
  }
  qrn_int64 di = 0, ai = 0, ti = 0;
  for (qrn_int64 k = 0; k < numdjc; ++k) {
    out[k].resize(numterms[k]);
    for (auto &term : out[k]) {
      for (qrn_int64 m = 0; m < termsize[ti]; ++m, ++di) {
        DomainRows d = read_domain(task, dom[di]);
        for (size_t i = 0; i < d.f.size(); ++i, ++ai) {
          d.f[i] = frow[afe[ai]];
          tidy(d.f[i]);
          d.g[i] = g[afe[ai]] - b[ai];
        }
        term.push_back(std::move(d));
      }
      ++ti;
    }
  }
  return out;
}

}  // namespace qrn::opt
