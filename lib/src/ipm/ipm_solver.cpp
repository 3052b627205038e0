// The interior-point engine: checks and prepares the problem, then runs a
// predictor-corrector method on the homogeneous self-dual embedding
//
//   0 = P x + A'z + q tau,   s = b tau - A x,   kappa = -q'x - b'z - x'Px/tau,
//   s in K, z in K*, tau, kappa >= 0,
//
// whose solutions give an optimum (tau > 0) or a certificate of infeasibility
// (kappa > 0). docs/ipm.md describes the method.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ipm.hpp"
#include "ipm_cones.hpp"
#include "ipm_kkt.hpp"

namespace qrn {
namespace ipm {

const char *status_name(Status s) {
  switch (s) {
    case Status::Optimal: return "optimal";
    case Status::PrimalInfeasible: return "primal infeasible";
    case Status::DualInfeasible: return "dual infeasible";
    case Status::Unknown: return "unknown";
    case Status::Stopped: return "stopped";
    case Status::IterationLimit: return "iteration limit";
    case Status::TimeLimit: return "time limit";
  }
  return "?";
}

namespace {

using Vec = std::vector<double>;
const double kSqrt2 = std::sqrt(2.0);
// Neighbourhood of the central path kept by the non-symmetric cones: each
// keeps s'z >= kLocalRatio nu mu (or, when it is already below, does not
// fall further); the step shrinks by kBacktrack until that holds.
constexpr double kLocalRatio = 0.1;
constexpr double kBacktrack = 0.9;
constexpr int kStallWindow = 10;
constexpr double kCentering = 0.1;

double dot(const Vec &a, const Vec &b) {
  double r = 0;
  for (size_t i = 0; i < a.size(); ++i) r += a[i] * b[i];
  return r;
}
double norm_inf(const Vec &a) {
  double r = 0;
  for (double v : a) r = std::max(r, std::fabs(v));
  return r;
}

std::string check_csc(const Csc &M, int m, int n, const char *name, bool upper) {
  std::string who(name);
  if (M.nrows != m || M.ncols != n)
    return who + " is " + std::to_string(M.nrows) + " x " + std::to_string(M.ncols) + ", expected " +
           std::to_string(m) + " x " + std::to_string(n) + ".";
  if (M.colptr.size() != size_t(n) + 1 || M.colptr[0] != 0) return who + " has a bad column pointer array.";
  for (int j = 0; j < n; ++j)
    if (M.colptr[j + 1] < M.colptr[j]) return who + " has decreasing column pointers.";
  size_t nnz = size_t(M.colptr[n]);
  if (M.rowind.size() < nnz || M.val.size() < nnz) return who + " has fewer entries than its column pointers say.";
  std::vector<int> mark(m, -1);
  for (int j = 0; j < n; ++j)
    for (int k = M.colptr[j]; k < M.colptr[j + 1]; ++k) {
      int i = M.rowind[k];
      if (i < 0 || i >= m) return who + " has a row index " + std::to_string(i) + " out of range.";
      if (upper && i > j) return who + " has an entry below the diagonal (" + std::to_string(i) + ", " + std::to_string(j) + ").";
      if (mark[i] == j) return who + " repeats the entry (" + std::to_string(i) + ", " + std::to_string(j) + ").";
      mark[i] = j;
      if (!std::isfinite(M.val[k])) return who + " has a value that is not finite.";
    }
  return "";
}

// Builds a CSC matrix from triplets, summing repeated entries.
Csc from_triplets(int m, int n, const std::vector<int> &ri, const std::vector<int> &ci, const Vec &v) {
  Csc M(m, n);
  std::vector<int> cnt(n + 1, 0);
  for (int c : ci) ++cnt[c + 1];
  std::partial_sum(cnt.begin(), cnt.end(), cnt.begin());
  std::vector<int> rows(ri.size());
  Vec vals(ri.size());
  std::vector<int> next(cnt.begin(), cnt.end() - 1);
  for (size_t k = 0; k < ri.size(); ++k) {
    int p = next[ci[k]]++;
    rows[p] = ri[k], vals[p] = v[k];
  }
  std::vector<int> where(m, -1);
  for (int j = 0; j < n; ++j) {
    int start = int(M.rowind.size());
    for (int p = cnt[j]; p < cnt[j + 1]; ++p) {
      int i = rows[p];
      if (where[i] >= start) {
        M.val[where[i]] += vals[p];
      } else {
        where[i] = int(M.rowind.size());
        M.rowind.push_back(i);
        M.val.push_back(vals[p]);
      }
    }
    M.colptr[j + 1] = int(M.rowind.size());
  }
  return M;
}

// y (+)= A x
void mul_a(const Csc &A, const Vec &x, Vec &y, bool add = false) {
  if (!add) std::fill(y.begin(), y.end(), 0.0);
  for (int j = 0; j < A.ncols; ++j)
    for (int k = A.colptr[j]; k < A.colptr[j + 1]; ++k) y[A.rowind[k]] += A.val[k] * x[j];
}
// y = A' x
void mul_at(const Csc &A, const Vec &x, Vec &y) {
  for (int j = 0; j < A.ncols; ++j) {
    double t = 0;
    for (int k = A.colptr[j]; k < A.colptr[j + 1]; ++k) t += A.val[k] * x[A.rowind[k]];
    y[j] = t;
  }
}
// y = P x, P symmetric given by its upper triangle.
void mul_p(const Csc &P, const Vec &x, Vec &y) {
  std::fill(y.begin(), y.end(), 0.0);
  for (int j = 0; j < P.ncols; ++j)
    for (int k = P.colptr[j]; k < P.colptr[j + 1]; ++k) {
      int i = P.rowind[k];
      y[i] += P.val[k] * x[j];
      if (i != j) y[j] += P.val[k] * x[i];
    }
}

std::string fmt(const char *f, double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, f, v);
  return buf;
}

class Engine {
 public:
  Engine(const Problem &pb, const Settings &st, const Progress &progress, const LogSink &log)
      : pb_(pb), st_(st), progress_(progress), log_(log) {}
  Result run();

 private:
  void prepare();
  void equilibrate();
  void finish(Result &res, Status status, const std::string &why);
  // The best iterate met so far for one kind of answer.
  struct Snapshot {
    double score = HUGE_VAL;
    Vec x, s, z;
    double tau = 1, kappa = 1;
    Iteration info;
  };
  void keep(Snapshot &snap, double score, const Iteration &info) {
    if (!(score < snap.score)) return;
    snap.score = score;
    snap.x = x_, snap.s = s_, snap.z = z_;
    snap.tau = tau_, snap.kappa = kappa_;
    snap.info = info;
  }
  // Ends a run that can go no further: the best iterate met, reported as an
  // answer when it is within near_factor of the tolerances.
  void fallback(Result &res, const std::string &why);
  Snapshot best_opt, best_pinf, best_dinf;
  void log(const std::string &line) const {
    if (log_) log_(line);
  }
  // Solves the Newton system for right-hand sides (d_x, d_z, d_tau, d_s, d_kappa).
  void newton(const Vec &dx_r, const Vec &dz_r, double dtau_r, const Vec &ds_r, double dkappa_r, Vec &dx, Vec &dz,
              Vec &ds, double &dtau, double &dkappa);
  double step_length(const Vec &dx, const Vec &ds, const Vec &dz, double dtau, double dkappa, bool affine);

  const Problem &pb_;
  const Settings &st_;
  const Progress &progress_;
  const LogSink &log_;

  // The working problem: rotated cones mapped, equilibrated.
  int n_ = 0, m_ = 0;
  Csc P_, A_;
  Vec q_, b_;
  Vec D_, E_;  // column and row scaling: x = D xh, s = E^-1 sh, y = E zh / cs
  double cs_ = 1;
  std::vector<Cone> cones_;
  std::vector<std::unique_ptr<ConeImpl>> impl_;
  std::vector<int> rotated_;  // offsets of the rotated quadratic cones
  std::vector<char> expanded_;  // per cone: held in the KKT matrix by its sparse expansion
  double nu_ = 0;
  bool nonsym_ = false;
  std::unique_ptr<Kkt> kkt_;

  // Iterate.
  Vec x_, s_, z_;
  double tau_ = 1, kappa_ = 1;
  // Workspace.
  Vec px_, ax_, atz_, rx_, rz_, x1_, z1_, rhs_, sol_, hbuf_;
  double rtau_ = 0;
};

void Engine::prepare() {
  n_ = pb_.n;
  m_ = int(pb_.b.size());
  // Cones as the engine knows them; rotated quadratic cones become quadratic
  // ones through the symmetric orthogonal map T(u0, u1, w) = ((u0+u1)/r2, (u0-u1)/r2, w).
  std::vector<int> ri, ci;
  Vec v;
  std::vector<char> rot_row(m_, 0);
  int off = 0;
  for (const Cone &c : pb_.cones) {
    Cone k = c;
    if (c.kind == ConeKind::RotatedQuadratic) {
      k.kind = ConeKind::Quadratic;
      rotated_.push_back(off);
      rot_row[off] = 1, rot_row[off + 1] = 2;
    } else if (c.kind == ConeKind::PrimalGeoMean || c.kind == ConeKind::DualGeoMean) {
      k.kind = c.kind == ConeKind::PrimalGeoMean ? ConeKind::PrimalPower : ConeKind::DualPower;
      k.alpha.assign(c.dim - 1, 1.0 / (c.dim - 1));
    } else if (c.kind == ConeKind::PrimalPower || c.kind == ConeKind::DualPower) {
      double sum = std::accumulate(c.alpha.begin(), c.alpha.end(), 0.0);
      for (double &a : k.alpha) a /= sum;
    }
    cones_.push_back(k);
    off += c.dim;
  }
  for (int j = 0; j < n_; ++j)
    for (int k = pb_.A.colptr[j]; k < pb_.A.colptr[j + 1]; ++k) {
      int i = pb_.A.rowind[k];
      double a = pb_.A.val[k];
      if (rot_row[i] == 0) {
        ri.push_back(i), ci.push_back(j), v.push_back(a);
      } else {
        int i0 = rot_row[i] == 1 ? i : i - 1;
        ri.push_back(i0), ci.push_back(j), v.push_back(a / kSqrt2);
        ri.push_back(i0 + 1), ci.push_back(j), v.push_back(rot_row[i] == 1 ? a / kSqrt2 : -a / kSqrt2);
      }
    }
  A_ = from_triplets(m_, n_, ri, ci, v);
  b_ = pb_.b;
  for (int o : rotated_) {
    double u0 = b_[o], u1 = b_[o + 1];
    b_[o] = (u0 + u1) / kSqrt2, b_[o + 1] = (u0 - u1) / kSqrt2;
  }
  if (pb_.P.ncols == n_ && pb_.P.nnz() > 0) {
    P_ = pb_.P;
  } else {
    P_ = Csc(n_, n_);
  }
  q_ = pb_.c;
  D_.assign(n_, 1.0), E_.assign(m_, 1.0);
  if (st_.equilibrate) equilibrate();

  off = 0;
  std::vector<KktBlock> blocks;
  for (const Cone &c : cones_) {
    impl_.push_back(make_cone(c));
    ConeImpl &ci_ = *impl_.back();
    ci_.offset = off;
    nu_ += ci_.degree();
    nonsym_ = nonsym_ || !ci_.symmetric();
    bool expand = c.kind == ConeKind::Quadratic && c.dim > std::max(2, st_.soc_expand_dim);
    blocks.push_back({off, c.dim, ci_.diagonal(), expand});
    expanded_.push_back(expand);
    off += c.dim;
  }
  kkt_ = std::make_unique<Kkt>(P_, A_, blocks, st_.kkt_method);
  int threads = st_.threads > 0 ? st_.threads : int(std::thread::hardware_concurrency());
  kkt_->set_threads(std::max(1, threads));
}

void Engine::equilibrate() {
  Vec cn(n_), rn(m_), dd(n_), de(m_);
  auto clampn = [](double v) { return std::min(std::max(v, 1e-4), 1e4); };
  for (int it = 0; it < st_.equilibrate_iter; ++it) {
    std::fill(cn.begin(), cn.end(), 0.0), std::fill(rn.begin(), rn.end(), 0.0);
    for (int j = 0; j < n_; ++j)
      for (int k = A_.colptr[j]; k < A_.colptr[j + 1]; ++k) {
        double a = std::fabs(A_.val[k]);
        cn[j] = std::max(cn[j], a), rn[A_.rowind[k]] = std::max(rn[A_.rowind[k]], a);
      }
    for (int j = 0; j < n_; ++j)
      for (int k = P_.colptr[j]; k < P_.colptr[j + 1]; ++k) {
        double a = std::fabs(P_.val[k]);
        cn[j] = std::max(cn[j], a), cn[P_.rowind[k]] = std::max(cn[P_.rowind[k]], a);
      }
    for (int j = 0; j < n_; ++j) dd[j] = cn[j] > 0 ? 1 / std::sqrt(clampn(cn[j])) : 1.0;
    for (int i = 0; i < m_; ++i) de[i] = rn[i] > 0 ? 1 / std::sqrt(clampn(rn[i])) : 1.0;
    // One factor per cone where the cone is not a product of half-lines.
    int off = 0;
    for (const Cone &c : cones_) {
      if (c.kind != ConeKind::Zero && c.kind != ConeKind::Nonnegative) {
        double mx = 0;
        for (int i = off; i < off + c.dim; ++i) mx = std::max(mx, rn[i]);
        double f = mx > 0 ? 1 / std::sqrt(clampn(mx)) : 1.0;
        for (int i = off; i < off + c.dim; ++i) de[i] = f;
      }
      off += c.dim;
    }
    for (int j = 0; j < n_; ++j)
      for (int k = A_.colptr[j]; k < A_.colptr[j + 1]; ++k) A_.val[k] *= de[A_.rowind[k]] * dd[j];
    for (int j = 0; j < n_; ++j)
      for (int k = P_.colptr[j]; k < P_.colptr[j + 1]; ++k) P_.val[k] *= dd[P_.rowind[k]] * dd[j];
    for (int j = 0; j < n_; ++j) D_[j] *= dd[j];
    for (int i = 0; i < m_; ++i) E_[i] *= de[i];
  }
  for (int j = 0; j < n_; ++j) q_[j] *= D_[j];
  for (int i = 0; i < m_; ++i) b_[i] *= E_[i];
  // Objective scale.
  double pmean = 0;
  if (n_ > 0) {
    Vec pc(n_, 0.0);
    for (int j = 0; j < n_; ++j)
      for (int k = P_.colptr[j]; k < P_.colptr[j + 1]; ++k) {
        double a = std::fabs(P_.val[k]);
        pc[j] = std::max(pc[j], a), pc[P_.rowind[k]] = std::max(pc[P_.rowind[k]], a);
      }
    pmean = std::accumulate(pc.begin(), pc.end(), 0.0) / n_;
  }
  double scale = std::max(pmean, norm_inf(q_));
  cs_ = scale > 0 ? 1 / std::min(std::max(scale, 1e-4), 1e4) : 1.0;
  for (double &v : P_.val) v *= cs_;
  for (double &v : q_) v *= cs_;
}

void Engine::newton(const Vec &dx_r, const Vec &dz_r, double dtau_r, const Vec &ds_r, double dkappa_r, Vec &dx,
                    Vec &dz, Vec &ds, double &dtau, double &dkappa) {
  for (int j = 0; j < n_; ++j) rhs_[j] = -dx_r[j];
  for (int i = 0; i < m_; ++i) rhs_[n_ + i] = -dz_r[i] + ds_r[i];
  kkt_->solve(rhs_.data(), sol_.data(), st_.refine_iter);
  // dtau from the last row, with xi = x / tau:
  // (q + 2 P xi)'dx + b'dz - (xi'P xi + kappa/tau) dtau = -d_tau + d_kappa/tau.
  Vec xi(n_), pxi(n_);
  for (int j = 0; j < n_; ++j) xi[j] = x_[j] / tau_;
  for (int j = 0; j < n_; ++j) pxi[j] = px_[j] / tau_;
  double num = -dtau_r + dkappa_r / tau_;
  for (int j = 0; j < n_; ++j) num -= (q_[j] + 2 * pxi[j]) * sol_[j];
  for (int i = 0; i < m_; ++i) num -= b_[i] * sol_[n_ + i];
  // Denominator -( ||x1 - xi||_P^2 + z1'H z1 + kappa/tau ) < 0.
  Vec t(n_), pt(n_);
  for (int j = 0; j < n_; ++j) t[j] = x1_[j] - xi[j];
  mul_p(P_, t, pt);
  double den = dot(t, pt) + kappa_ / tau_;
  for (size_t k = 0; k < impl_.size(); ++k) {
    ConeImpl &c = *impl_[k];
    impl_[k]->mul_h(z1_.data() + c.offset, hbuf_.data());
    for (int i = 0; i < c.dim; ++i) den += z1_[c.offset + i] * hbuf_[i];
  }
  dtau = num / -den;
  for (int j = 0; j < n_; ++j) dx[j] = sol_[j] + dtau * x1_[j];
  for (int i = 0; i < m_; ++i) dz[i] = sol_[n_ + i] + dtau * z1_[i];
  for (auto &c : impl_) {
    c->mul_h(dz.data() + c->offset, hbuf_.data());
    for (int i = 0; i < c->dim; ++i) ds[c->offset + i] = -ds_r[c->offset + i] - hbuf_[i];
  }
  dkappa = -(dkappa_r + kappa_ * dtau) / tau_;
}

double Engine::step_length(const Vec &dx, const Vec &ds, const Vec &dz, double dtau, double dkappa, bool affine) {
  (void)dx;
  // The step to the boundary of every cone (a lower bound inside for the
  // non-symmetric ones), then a fraction of it.
  double a = HUGE_VAL;
  if (dtau < 0) a = std::min(a, -tau_ / dtau);
  if (dkappa < 0) a = std::min(a, -kappa_ / dkappa);
  for (auto &c : impl_)
    if (c->symmetric()) a = c->max_step(&s_[c->offset], &ds[c->offset], &z_[c->offset], &dz[c->offset], a);
  a = std::min(a, 1.0 / st_.step_fraction);
  for (auto &c : impl_)
    if (!c->symmetric()) a = c->max_step(&s_[c->offset], &ds[c->offset], &z_[c->offset], &dz[c->offset], a);
  a = affine ? std::min(1.0, a) : std::min(1.0, st_.step_fraction * a);
  if (affine || !nonsym_) return a;
  // Stay near the central path: every non-symmetric cone keeps its share of
  // the complementarity; one that is already below must not fall further.
  auto worst_ratio = [&](double t) {
    double tt = tau_ + t * dtau, tk = kappa_ + t * dkappa;
    double sz = tt * tk;
    for (int i = 0; i < m_; ++i) sz += (s_[i] + t * ds[i]) * (z_[i] + t * dz[i]);
    double mu = sz / (nu_ + 1), ratio = HUGE_VAL;
    for (auto &c : impl_) {
      if (c->symmetric()) continue;
      double local = 0;
      for (int i = c->offset; i < c->offset + c->dim; ++i) local += (s_[i] + t * ds[i]) * (z_[i] + t * dz[i]);
      ratio = std::min(ratio, local / (c->degree() * mu));
    }
    return ratio;
  };
  double rmin = std::min(kLocalRatio, worst_ratio(0.0));
  for (int k = 0; k < 80 && a > 0; ++k, a *= kBacktrack)
    if (worst_ratio(a) >= rmin) return a;
  return a;
}

void Engine::fallback(Result &res, const std::string &why) {
  auto restore = [&](const Snapshot &snap) {
    x_ = snap.x, s_ = snap.s, z_ = snap.z, tau_ = snap.tau, kappa_ = snap.kappa;
    res.pobj = snap.info.pobj, res.dobj = snap.info.dobj;
    res.pres = snap.info.pres, res.dres = snap.info.dres, res.gap = snap.info.gap;
  };
  double f = st_.near_factor;
  if (best_opt.score <= f) {
    restore(best_opt);
    finish(res, Status::Optimal, "near optimal: " + why + "; the best iterate meets the tolerances within " +
                                     fmt("%.3g", best_opt.score) + " times");
  } else if (best_pinf.score <= f) {
    restore(best_pinf);
    finish(res, Status::PrimalInfeasible, "near certificate of primal infeasibility: " + why);
  } else if (best_dinf.score <= f) {
    restore(best_dinf);
    finish(res, Status::DualInfeasible, "near certificate of dual infeasibility: " + why);
  } else {
    if (best_opt.score < HUGE_VAL) restore(best_opt);
    finish(res, Status::Unknown, why);
  }
}

void Engine::finish(Result &res, Status status, const std::string &why) {
  res.status = status;
  res.message = why;
  int n = n_, m = m_;
  res.x.assign(n, 0.0), res.s.assign(m, 0.0), res.y.assign(m, 0.0);
  Vec xs(n), ss(m), zs(m);
  double sx = 1, sz = 1;
  if (status == Status::PrimalInfeasible) {
    double bz = dot(b_, z_) / cs_;  // b'y of the unscaled ray
    sz = 1 / -bz;
    for (int i = 0; i < m; ++i) res.y[i] = E_[i] * z_[i] / cs_ * sz;
  } else if (status == Status::DualInfeasible) {
    double qx = dot(q_, x_) / cs_;
    sx = 1 / -qx;
    for (int j = 0; j < n; ++j) res.x[j] = D_[j] * x_[j] * sx;
    for (int i = 0; i < m; ++i) res.s[i] = s_[i] / E_[i] * sx;
  } else {
    for (int j = 0; j < n; ++j) res.x[j] = D_[j] * x_[j] / tau_;
    for (int i = 0; i < m; ++i) res.s[i] = s_[i] / E_[i] / tau_;
    for (int i = 0; i < m; ++i) res.y[i] = E_[i] * z_[i] / (cs_ * tau_);
  }
  for (int o : rotated_) {
    for (Vec *v : {&res.s, &res.y}) {
      double u0 = (*v)[o], u1 = (*v)[o + 1];
      (*v)[o] = (u0 + u1) / kSqrt2, (*v)[o + 1] = (u0 - u1) / kSqrt2;
    }
  }
  if (status == Status::PrimalInfeasible || status == Status::DualInfeasible) {
    res.pobj = res.dobj = NAN;
  }
  if (kkt_) {
    res.factor_time = kkt_->factor_seconds();
    res.factorizations = kkt_->factor_count();
    res.factor_entries = kkt_->factor_entries();
    res.supernodal = kkt_->supernodal();
  }
}

Result Engine::run() {
  auto t0 = std::chrono::steady_clock::now();
  auto elapsed = [&]() { return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count(); };
  Result res;
  prepare();
  int N = n_ + m_;
  x_.assign(n_, 0.0), s_.assign(m_, 0.0), z_.assign(m_, 0.0);
  for (auto &c : impl_) c->start(&s_[c->offset], &z_[c->offset]);
  tau_ = kappa_ = 1;
  px_.assign(n_, 0), ax_.assign(m_, 0), atz_.assign(n_, 0), rx_.assign(n_, 0), rz_.assign(m_, 0);
  x1_.assign(n_, 0), z1_.assign(m_, 0), rhs_.assign(N, 0), sol_.assign(N, 0);
  int maxdim = 1;
  for (const Cone &c : cones_) maxdim = std::max(maxdim, c.dim);
  hbuf_.assign(std::max(size_t(maxdim) * maxdim, size_t(3) * maxdim), 0.0);
  Vec dx(n_), dz(m_), ds(m_), dxa(n_), dza(m_), dsa(m_), d_s(m_), zero_n(n_, 0.0), zero_m(m_, 0.0);
  double dtau = 0, dkappa = 0, dtaua = 0, dkappaa = 0;

  double norm_c = norm_inf(pb_.c), norm_b = norm_inf(pb_.b);
  {
    std::ostringstream os;
    os << "Interior-point optimizer: " << n_ << " variables, " << m_ << " cone rows in " << cones_.size()
       << " cones, " << pb_.A.nnz() << " non-zeros in A, " << pb_.P.nnz() << " in P, KKT dimension " << N;
    log(os.str());
    log("ITE   PRSTATUS     POBJ              DOBJ              PFEAS     DFEAS     GAP       MU        STEP      TIME");
  }
  double step = 0;
  int small_steps = 0;
  std::vector<double> progress;
  Vec xu(n_), su(m_), zu(m_), rp(m_), rd(n_);
  for (int iter = 0;; ++iter) {
    // Residuals of the embedding.
    mul_p(P_, x_, px_);
    mul_a(A_, x_, ax_);
    mul_at(A_, z_, atz_);
    for (int j = 0; j < n_; ++j) rx_[j] = px_[j] + atz_[j] + q_[j] * tau_;
    for (int i = 0; i < m_; ++i) rz_[i] = ax_[i] + s_[i] - b_[i] * tau_;
    double xpx = dot(x_, px_), qx = dot(q_, x_), bz = dot(b_, z_);
    rtau_ = qx + bz + xpx / tau_ + kappa_;
    double sz = dot(s_, z_);
    double mu = (sz + tau_ * kappa_) / (nu_ + 1);

    // Measures in the units of the problem as stated.
    for (int j = 0; j < n_; ++j) xu[j] = D_[j] * x_[j] / tau_, rd[j] = rx_[j] / (D_[j] * cs_ * tau_);
    for (int i = 0; i < m_; ++i) {
      su[i] = s_[i] / (E_[i] * tau_), zu[i] = E_[i] * z_[i] / (cs_ * tau_);
      rp[i] = rz_[i] / (E_[i] * tau_);
    }
    Iteration info;
    info.iter = iter;
    info.pobj = (xpx / (2 * tau_ * tau_) + qx / tau_) / cs_ + pb_.c0;
    info.dobj = (-xpx / (2 * tau_ * tau_) - bz / tau_) / cs_ + pb_.c0;
    info.pres = norm_inf(rp) / std::max(1.0, norm_b + norm_inf(xu) + norm_inf(su));
    info.dres = norm_inf(rd) / std::max(1.0, norm_c + norm_inf(xu) + norm_inf(zu));
    info.gap = std::fabs(info.pobj - info.dobj);
    info.mu = mu;
    info.tau = tau_, info.kappa = kappa_;
    info.step = step;
    info.time = elapsed();
    res.iterations = iter;
    res.pobj = info.pobj, res.dobj = info.dobj, res.pres = info.pres, res.dres = info.dres, res.gap = info.gap;
    {
      char line[200];
      std::snprintf(line, sizeof line, "%-4d  %-11.4e  %-16.9e  %-16.9e  %-8.2e  %-8.2e  %-8.2e  %-8.2e  %-8.2e  %.2f",
                    iter, tau_ / std::max(kappa_, 1e-300), info.pobj, info.dobj, info.pres, info.dres, info.gap, mu,
                    step, info.time);
      log(line);
    }

    // Termination: each test as a ratio to its tolerance (<= 1 passes).
    double gap_rel = info.gap / std::max(1.0, std::min(std::fabs(info.pobj), std::fabs(info.dobj)));
    double opt_score = std::max({info.pres / st_.tol_feas, info.dres / st_.tol_feas,
                                 std::min(info.gap / st_.tol_gap_abs, gap_rel / st_.tol_gap_rel)});
    double pinf_score = HUGE_VAL, dinf_score = HUGE_VAL;
    if (bz < 0) {  // a dual ray? ||A'y|| <= tol (-b'y), unscaled
      double r = 0;
      for (int j = 0; j < n_; ++j) r = std::max(r, std::fabs(atz_[j] / D_[j]));
      pinf_score = r / -bz / st_.tol_infeas;
    }
    if (qx < 0) {  // a primal ray? ||Ax + s||, ||Px|| <= tol (-c'x), unscaled
      double r = 0, rpx = 0;
      for (int i = 0; i < m_; ++i) r = std::max(r, std::fabs((ax_[i] + s_[i]) / E_[i]));
      for (int j = 0; j < n_; ++j) rpx = std::max(rpx, std::fabs(px_[j] / D_[j]));
      dinf_score = std::max(r * cs_, rpx) / -qx / st_.tol_infeas;
    }
    if (opt_score <= 1) {
      finish(res, Status::Optimal, "optimal to the tolerances");
      break;
    }
    if (pinf_score <= 1) {
      finish(res, Status::PrimalInfeasible, "primal infeasibility certificate found");
      break;
    }
    if (dinf_score <= 1) {
      finish(res, Status::DualInfeasible, "dual infeasibility certificate found");
      break;
    }
    keep(best_opt, opt_score, info);
    keep(best_pinf, pinf_score, info);
    keep(best_dinf, dinf_score, info);
    // Stalled: the best of the three measures has not halved in kStallWindow iterations.
    progress.push_back(std::min({opt_score, pinf_score, dinf_score}));
    if (int(progress.size()) > kStallWindow) {
      double before = *std::min_element(progress.begin(), progress.end() - kStallWindow);
      double recent = *std::min_element(progress.end() - kStallWindow, progress.end());
      if (!(recent < 0.5 * before)) {
        fallback(res, "stalled: no progress in " + std::to_string(kStallWindow) + " iterations");
        break;
      }
    }
    if (progress_ && progress_(info)) {
      finish(res, Status::Stopped, "stopped by the progress callback");
      break;
    }
    if (iter >= st_.max_iter) {
      finish(res, Status::IterationLimit, "iteration limit reached");
      break;
    }
    if (info.time >= st_.max_time) {
      finish(res, Status::TimeLimit, "time limit reached");
      break;
    }

    // Scaling and factorization.
    int bad = -1;
    for (size_t k = 0; k < impl_.size() && bad < 0; ++k) {
      ConeImpl &c = *impl_[k];
      if (c.update(&s_[c.offset], &z_[c.offset], mu)) {
        if (expanded_[k]) {
          double *d = hbuf_.data(), *u = d + c.dim, *v = u + c.dim;
          c.expansion(d, u, v);
          kkt_->set_expanded(int(k), d, u, v);
        } else {
          c.block(hbuf_.data());
          kkt_->set_block(int(k), hbuf_.data());
        }
      } else {
        bad = int(k);
      }
    }
    if (bad >= 0) {
      fallback(res, "numerical trouble: the iterate left the interior of cone " + std::to_string(bad));
      break;
    }
    double reg = st_.static_reg;
    bool factored = false;
    for (int tries = 0; tries < 5 && !factored; ++tries, reg *= 100) factored = kkt_->factor(reg);
    if (!factored) {
      fallback(res, "the KKT system could not be factored");
      break;
    }
    for (int j = 0; j < n_; ++j) rhs_[j] = -q_[j];
    for (int i = 0; i < m_; ++i) rhs_[n_ + i] = b_[i];
    kkt_->solve(rhs_.data(), sol_.data(), st_.refine_iter);
    std::copy(sol_.begin(), sol_.begin() + n_, x1_.begin());
    std::copy(sol_.begin() + n_, sol_.end(), z1_.begin());

    // Predictor.
    for (auto &c : impl_) c->affine_rhs(&s_[c->offset], &z_[c->offset], &d_s[c->offset]);
    newton(rx_, rz_, rtau_, d_s, tau_ * kappa_, dxa, dza, dsa, dtaua, dkappaa);
    double aa = step_length(dxa, dsa, dza, dtaua, dkappaa, true);
    double sigma = std::pow(1 - aa, 3);

    // Corrector.
    for (auto &c : impl_)
      c->combined_rhs(&s_[c->offset], &z_[c->offset], &dsa[c->offset], &dza[c->offset], sigma * mu,
                      &d_s[c->offset]);
    Vec rxs(rx_), rzs(rz_);
    for (double &v : rxs) v *= 1 - sigma;
    for (double &v : rzs) v *= 1 - sigma;
    newton(rxs, rzs, (1 - sigma) * rtau_, d_s, tau_ * kappa_ + dtaua * dkappaa - sigma * mu, dx, dz, ds, dtau,
           dkappa);
    step = step_length(dx, ds, dz, dtau, dkappa, false);
    if (nonsym_ && step < kCentering) {
      // A short step: try a pure centring direction (sigma = 1, no second-order
      // terms), which brings the non-symmetric cones back towards the path.
      Vec cdx(n_), cdz(m_), cds(m_);
      double cdtau, cdkappa;
      for (auto &c : impl_)
        c->combined_rhs(&s_[c->offset], &z_[c->offset], zero_m.data() + c->offset, zero_m.data() + c->offset, mu,
                        &d_s[c->offset]);
      newton(zero_n, zero_m, 0.0, d_s, tau_ * kappa_ - mu, cdx, cdz, cds, cdtau, cdkappa);
      double cstep = step_length(cdx, cds, cdz, cdtau, cdkappa, false);
      if (cstep > step) {
        dx.swap(cdx), dz.swap(cdz), ds.swap(cds);
        dtau = cdtau, dkappa = cdkappa, step = cstep;
      }
    }
    if (!(step > 0) || !std::isfinite(dtau)) {
      fallback(res, "no progress possible (numerical trouble)");
      break;
    }
    for (int j = 0; j < n_; ++j) x_[j] += step * dx[j];
    for (int i = 0; i < m_; ++i) s_[i] += step * ds[i], z_[i] += step * dz[i];
    tau_ += step * dtau;
    kappa_ += step * dkappa;
    small_steps = step < 1e-6 ? small_steps + 1 : 0;
    if (small_steps >= 5) {
      res.iterations = iter + 1;
      fallback(res, "stalled: steps too short");
      break;
    }
  }
  res.solve_time = elapsed();
  log(std::string("Optimizer terminated: ") + status_name(res.status) + " (" + res.message + "), " +
      std::to_string(res.iterations) + " iterations, " + fmt("%.3f", res.solve_time) + " s, " +
      std::to_string(res.factorizations) + " factorizations " + fmt("%.3f", res.factor_time) + " s");
  return res;
}

}  // namespace

std::string validate(const Problem &pb) {
  if (pb.n < 0) return "The number of variables is negative.";
  if (pb.c.size() != size_t(pb.n)) return "c has " + std::to_string(pb.c.size()) + " entries, expected " + std::to_string(pb.n) + ".";
  for (double v : pb.c)
    if (!std::isfinite(v)) return "c has a value that is not finite.";
  if (!std::isfinite(pb.c0)) return "c0 is not finite.";
  int m = int(pb.b.size());
  for (double v : pb.b)
    if (!std::isfinite(v)) return "b has a value that is not finite.";
  std::string e = check_csc(pb.A, m, pb.n, "A", false);
  if (!e.empty()) return e;
  bool empty_p = (pb.P.nrows == 0 && pb.P.ncols == 0) || pb.P.nnz() == 0;
  if (!empty_p || pb.P.ncols == pb.n) {
    if (!(pb.P.nrows == 0 && pb.P.ncols == 0)) {
      e = check_csc(pb.P, pb.n, pb.n, "P", true);
      if (!e.empty()) return e;
    }
  }
  long total = 0;
  for (size_t k = 0; k < pb.cones.size(); ++k) {
    const Cone &c = pb.cones[k];
    std::string who = "Cone " + std::to_string(k);
    int d = c.dim;
    switch (c.kind) {
      case ConeKind::Zero:
      case ConeKind::Nonnegative:
      case ConeKind::Quadratic:
        if (d < 1) return who + " has dimension " + std::to_string(d) + ", at least 1 needed.";
        break;
      case ConeKind::RotatedQuadratic:
        if (d < 2) return who + " (rotated quadratic) has dimension " + std::to_string(d) + ", at least 2 needed.";
        break;
      case ConeKind::Psd: {
        long t = std::lround((std::sqrt(8.0 * d + 1) - 1) / 2);
        if (d < 1 || t * (t + 1) / 2 != d) return who + " (PSD) has dimension " + std::to_string(d) + ", not d(d+1)/2.";
        break;
      }
      case ConeKind::PrimalExp:
      case ConeKind::DualExp:
        if (d != 3) return who + " (exponential) has dimension " + std::to_string(d) + ", expected 3.";
        break;
      case ConeKind::PrimalPower:
      case ConeKind::DualPower: {
        int nl = int(c.alpha.size());
        if (nl < 1 || nl >= d + 1 || d < 2 || nl > d)
          return who + " (power) has " + std::to_string(nl) + " weights for dimension " + std::to_string(d) + ".";
        if (nl == d) return who + " (power) has no entries right of its weights.";
        for (double a : c.alpha)
          if (!(a > 0) || !std::isfinite(a)) return who + " (power) has a weight that is not positive and finite.";
        break;
      }
      case ConeKind::PrimalGeoMean:
      case ConeKind::DualGeoMean:
        if (d < 2) return who + " (geometric mean) has dimension " + std::to_string(d) + ", at least 2 needed.";
        break;
      default: return who + " has an unknown kind.";
    }
    total += d;
  }
  if (total != m) return "The cones cover " + std::to_string(total) + " rows, A and b have " + std::to_string(m) + ".";
  return "";
}

Result solve(const Problem &problem, const Settings &settings, const Progress &progress, const LogSink &log) {
  std::string e = validate(problem);
  if (!e.empty()) throw std::invalid_argument(e);
  Engine engine(problem, settings, progress, log);
  return engine.run();
}

}  // namespace ipm
}  // namespace qrn
