// Cones of the interior-point engine (see ipm_cones.hpp and docs/ipm.md).
#include "ipm_cones.hpp"

#include <cblas.h>
#include <lapacke.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qrn {
namespace ipm {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kSqrt2 = std::sqrt(2.0);

double dot(int n, const double *a, const double *b) {
  double r = 0;
  for (int i = 0; i < n; ++i) r += a[i] * b[i];
  return r;
}
double norm2(int n, const double *a) { return std::sqrt(dot(n, a, a)); }

// ---------------------------------------------------------------- zero cone

class ZeroCone : public ConeImpl {
 public:
  double degree() const override { return 0; }
  bool diagonal() const override { return true; }
  void start(double *s, double *z) const override { std::fill(s, s + dim, 0.0), std::fill(z, z + dim, 0.0); }
  bool update(const double *, const double *, double) override { return true; }
  void block(double *out) const override { std::fill(out, out + dim, 0.0); }
  void mul_h(const double *, double *out) const override { std::fill(out, out + dim, 0.0); }
  void affine_rhs(const double *, const double *, double *ds) const override { std::fill(ds, ds + dim, 0.0); }
  void combined_rhs(const double *, const double *, const double *, const double *, double,
                    double *ds) const override {
    std::fill(ds, ds + dim, 0.0);
  }
  double max_step(const double *, const double *, const double *, const double *, double amax) const override {
    return amax;
  }
  bool interior_primal(const double *) const override { return true; }
  bool interior_dual(const double *) const override { return true; }
};

// ------------------------------------------------------- nonnegative orthant

double orthant_step(int n, const double *u, const double *d) {
  double a = kInf;
  for (int i = 0; i < n; ++i)
    if (d[i] < 0) a = std::min(a, -u[i] / d[i]);
  return a;
}

class OrthantCone : public ConeImpl {
  std::vector<double> h_;

 public:
  double degree() const override { return dim; }
  bool diagonal() const override { return true; }
  void start(double *s, double *z) const override { std::fill(s, s + dim, 1.0), std::fill(z, z + dim, 1.0); }
  bool update(const double *s, const double *z, double) override {
    h_.resize(dim);
    for (int i = 0; i < dim; ++i) {
      if (!(s[i] > 0 && z[i] > 0)) return false;
      h_[i] = s[i] / z[i];
    }
    return true;
  }
  void block(double *out) const override { std::copy(h_.begin(), h_.end(), out); }
  void mul_h(const double *v, double *out) const override {
    for (int i = 0; i < dim; ++i) out[i] = h_[i] * v[i];
  }
  void affine_rhs(const double *s, const double *, double *ds) const override { std::copy(s, s + dim, ds); }
  void combined_rhs(const double *s, const double *z, const double *ds_a, const double *dz_a, double sigma_mu,
                    double *ds) const override {
    for (int i = 0; i < dim; ++i) ds[i] = (s[i] * z[i] + ds_a[i] * dz_a[i] - sigma_mu) / z[i];
  }
  double max_step(const double *s, const double *ds, const double *z, const double *dz, double amax) const override {
    return std::min({amax, orthant_step(dim, s, ds), orthant_step(dim, z, dz)});
  }
  bool interior_primal(const double *s) const override {
    for (int i = 0; i < dim; ++i)
      if (!(s[i] > 0)) return false;
    return true;
  }
  bool interior_dual(const double *z) const override { return interior_primal(z); }
};

// ---------------------------------------------------------- quadratic cone

// u0^2 - ||u1||^2, computed as a product to keep its accuracy near the boundary.
double soc_residual(int n, const double *u) {
  double t = norm2(n - 1, u + 1);
  return (u[0] - t) * (u[0] + t);
}

// The largest a >= 0 with u + a d in the cone (u inside it).
double soc_step(int n, const double *u, const double *d) {
  double a = d[0] * d[0] - dot(n - 1, d + 1, d + 1);
  double b = u[0] * d[0] - dot(n - 1, u + 1, d + 1);
  double c = std::max(0.0, soc_residual(n, u));
  double disc = b * b - a * c;
  if (a < 0 || (b < 0 && disc >= 0)) {
    double den = -b + std::sqrt(std::max(0.0, disc));
    return den > 0 ? c / den : 0.0;
  }
  return kInf;
}

class SocCone : public ConeImpl {
  std::vector<double> w_, lambda_;  // scaling point (w'Jw = 1) and lambda = W z
  double eta_ = 1;

  // out = W v (W symmetric).
  void mul_w(const double *v, double *out) const {
    const double *w = w_.data();
    double t = dot(dim - 1, w + 1, v + 1);
    double k = v[0] + t / (1 + w[0]);
    out[0] = eta_ * (w[0] * v[0] + t);
    for (int i = 1; i < dim; ++i) out[i] = eta_ * (v[i] + k * w[i]);
  }
  void mul_winv(const double *v, double *out) const {
    const double *w = w_.data();
    double t = dot(dim - 1, w + 1, v + 1);
    double k = -v[0] + t / (1 + w[0]);
    out[0] = (w[0] * v[0] - t) / eta_;
    for (int i = 1; i < dim; ++i) out[i] = (v[i] + k * w[i]) / eta_;
  }

 public:
  double degree() const override { return 1; }
  void start(double *s, double *z) const override {
    std::fill(s, s + dim, 0.0), std::fill(z, z + dim, 0.0);
    s[0] = z[0] = 1;
  }
  bool update(const double *s, const double *z, double) override {
    double ss = soc_residual(dim, s), zz = soc_residual(dim, z);
    if (!(s[0] > 0 && z[0] > 0 && ss > 0 && zz > 0)) return false;
    double rs = std::sqrt(ss), rz = std::sqrt(zz);
    double sz = dot(dim, s, z) / (rs * rz);
    double gamma = std::sqrt((1 + sz) / 2);
    w_.resize(dim);
    w_[0] = (s[0] / rs + z[0] / rz) / (2 * gamma);
    for (int i = 1; i < dim; ++i) w_[i] = (s[i] / rs - z[i] / rz) / (2 * gamma);
    // w0 from the others, so that w'Jw = 1 holds to rounding.
    w_[0] = std::sqrt(1 + dot(dim - 1, w_.data() + 1, w_.data() + 1));
    eta_ = std::sqrt(rs / rz);
    lambda_.resize(dim);
    mul_w(z, lambda_.data());
    return true;
  }
  void block(double *out) const override {
    double e2 = eta_ * eta_;
    for (int j = 0; j < dim; ++j)
      for (int i = 0; i < dim; ++i) out[i + j * dim] = e2 * 2 * w_[i] * w_[j];
    out[0] -= e2;
    for (int i = 1; i < dim; ++i) out[i + i * dim] += e2;
  }
  // H = eta^2 (2 w w' - J) = eta^2 (D + u u' - v v') with D = diag(d0, 1, ..., 1),
  // u = (u0, u1 wb), v = (0, v1 wb), wb = w1:: matching the entries needs
  // d0 + u0^2 = 2 w0^2 - 1, u0 u1 = 2 w0, u1^2 - v1^2 = 2; d0 = 1/2 keeps u0 >= 1/sqrt2.
  bool expansion(double *d, double *u, double *v) const override {
    const double d0 = 0.5, w0 = w_[0];
    double u0 = std::sqrt(std::max(0.5, 2 * w0 * w0 - 1 - d0)), u1 = 2 * w0 / u0, v1 = std::sqrt(2 + 2 * d0) / u0;
    double e2 = eta_ * eta_;
    d[0] = e2 * d0, u[0] = eta_ * u0, v[0] = 0;
    for (int i = 1; i < dim; ++i) d[i] = e2, u[i] = eta_ * u1 * w_[i], v[i] = eta_ * v1 * w_[i];
    return true;
  }
  void mul_h(const double *v, double *out) const override {
    double e2 = eta_ * eta_, t = 2 * dot(dim, w_.data(), v);
    for (int i = 0; i < dim; ++i) out[i] = e2 * (t * w_[i] + (i == 0 ? -v[i] : v[i]));
  }
  void affine_rhs(const double *s, const double *, double *ds) const override { std::copy(s, s + dim, ds); }
  void combined_rhs(const double *, const double *, const double *ds_a, const double *dz_a, double sigma_mu,
                    double *ds) const override {
    std::vector<double> a(dim), b(dim), v(dim), x(dim);
    mul_winv(ds_a, a.data());
    mul_w(dz_a, b.data());
    const double *l = lambda_.data();
    // v = l o l + a o b - sigma mu e
    v[0] = dot(dim, l, l) + dot(dim, a.data(), b.data()) - sigma_mu;
    for (int i = 1; i < dim; ++i) v[i] = 2 * l[0] * l[i] + a[0] * b[i] + b[0] * a[i];
    // x = l \ v
    double rho = soc_residual(dim, l);
    x[0] = (l[0] * v[0] - dot(dim - 1, l + 1, v.data() + 1)) / rho;
    for (int i = 1; i < dim; ++i) x[i] = (v[i] - x[0] * l[i]) / l[0];
    mul_w(x.data(), ds);
  }
  double max_step(const double *s, const double *ds, const double *z, const double *dz, double amax) const override {
    return std::min({amax, soc_step(dim, s, ds), soc_step(dim, z, dz)});
  }
  bool interior_primal(const double *s) const override { return s[0] > 0 && soc_residual(dim, s) > 0; }
  bool interior_dual(const double *z) const override { return interior_primal(z); }
};

// ------------------------------------------------------------ PSD cone

// Dense d x d matrices by columns.
void gemm(bool ta, bool tb, int d, double alpha, const double *a, const double *b, double beta, double *c) {
  cblas_dgemm(CblasColMajor, ta ? CblasTrans : CblasNoTrans, tb ? CblasTrans : CblasNoTrans, d, d, d, alpha, a, d,
              b, d, beta, c, d);
}

class PsdCone : public ConeImpl {
  int d_ = 0;
  std::vector<double> r_, rinv_, g_, lambda_, l1_, l2_;
  mutable std::vector<double> t1_, t2_, t3_;

  void to_mat(const double *v, double *m) const {
    int k = 0;
    for (int j = 0; j < d_; ++j)
      for (int i = j; i < d_; ++i, ++k) {
        double x = i == j ? v[k] : v[k] / kSqrt2;
        m[i + j * d_] = m[j + i * d_] = x;
      }
  }
  void to_svec(const double *m, double *v) const {
    int k = 0;
    for (int j = 0; j < d_; ++j)
      for (int i = j; i < d_; ++i, ++k) v[k] = i == j ? m[i + j * d_] : (m[i + j * d_] + m[j + i * d_]) / kSqrt2;
  }
  // out = svec(X' mat(v) X) (trans) or svec(X mat(v) X').
  void congruence(const double *x, bool trans, const double *v, double *out) const {
    to_mat(v, t1_.data());
    gemm(trans, false, d_, 1.0, x, t1_.data(), 0.0, t2_.data());
    gemm(false, !trans, d_, 1.0, t2_.data(), x, 0.0, t3_.data());
    to_svec(t3_.data(), out);
  }
  bool chol(const double *v, double *l) const {
    to_mat(v, l);
    if (LAPACKE_dpotrf(LAPACK_COL_MAJOR, 'L', d_, l, d_) != 0) return false;
    for (int j = 0; j < d_; ++j)
      for (int i = 0; i < j; ++i) l[i + j * d_] = 0;
    return true;
  }
  // Largest a with L L' + a mat(dv) PSD.
  double step(const double *l, const double *dv) const {
    if (d_ == 0) return kInf;
    std::vector<double> m(d_ * d_), ev(d_);
    to_mat(dv, m.data());
    cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasNonUnit, d_, d_, 1.0, l, d_, m.data(), d_);
    cblas_dtrsm(CblasColMajor, CblasRight, CblasLower, CblasTrans, CblasNonUnit, d_, d_, 1.0, l, d_, m.data(), d_);
    for (int j = 0; j < d_; ++j)
      for (int i = j + 1; i < d_; ++i) m[i + j * d_] = m[j + i * d_] = (m[i + j * d_] + m[j + i * d_]) / 2;
    if (LAPACKE_dsyev(LAPACK_COL_MAJOR, 'N', 'L', d_, m.data(), d_, ev.data()) != 0) return 0.0;
    return ev[0] >= 0 ? kInf : -1.0 / ev[0];
  }

 public:
  explicit PsdCone(int d) : d_(d) {
    size_t n = size_t(d) * d;
    r_.assign(n, 0), rinv_.assign(n, 0), g_.assign(n, 0), l1_.assign(n, 0), l2_.assign(n, 0);
    t1_.assign(n, 0), t2_.assign(n, 0), t3_.assign(n, 0);
    lambda_.assign(d, 0);
  }
  double degree() const override { return d_; }
  void start(double *s, double *z) const override {
    std::fill(s, s + dim, 0.0), std::fill(z, z + dim, 0.0);
    for (int j = 0, k = 0; j < d_; k += d_ - j, ++j) s[k] = z[k] = 1;
  }
  bool update(const double *s, const double *z, double) override {
    if (!chol(s, l1_.data()) || !chol(z, l2_.data())) return false;
    // L2' L1 = U diag(lambda) V'
    std::vector<double> m(d_ * d_), u(d_ * d_), vt(d_ * d_), superb(std::max(1, d_ - 1));
    gemm(true, false, d_, 1.0, l2_.data(), l1_.data(), 0.0, m.data());
    if (LAPACKE_dgesvd(LAPACK_COL_MAJOR, 'A', 'A', d_, d_, m.data(), d_, lambda_.data(), u.data(), d_, vt.data(), d_,
                       superb.data()) != 0)
      return false;
    for (int i = 0; i < d_; ++i)
      if (!(lambda_[i] > 0)) return false;
    // R = L1 V diag(lambda)^-1/2, R^-1 = diag(lambda)^-1/2 U' L2'
    gemm(false, true, d_, 1.0, l1_.data(), vt.data(), 0.0, r_.data());
    for (int j = 0; j < d_; ++j)
      for (int i = 0; i < d_; ++i) r_[i + j * d_] /= std::sqrt(lambda_[j]);
    gemm(true, true, d_, 1.0, u.data(), l2_.data(), 0.0, rinv_.data());
    for (int j = 0; j < d_; ++j)
      for (int i = 0; i < d_; ++i) rinv_[i + j * d_] /= std::sqrt(lambda_[i]);
    gemm(false, true, d_, 1.0, r_.data(), r_.data(), 0.0, g_.data());
    return true;
  }
  void block(double *out) const override {
    // H[(ij),(kl)] = 2 c_ij c_kl (G_ik G_jl + G_il G_jk), c = 1/2 on the diagonal, 1/sqrt(2) off it.
    const double *g = g_.data();
    int col = 0;
    for (int l = 0; l < d_; ++l)
      for (int k = l; k < d_; ++k, ++col) {
        double ckl = k == l ? 0.5 : 1 / kSqrt2;
        int row = 0;
        for (int j = 0; j < d_; ++j)
          for (int i = j; i < d_; ++i, ++row) {
            double cij = i == j ? 0.5 : 1 / kSqrt2;
            out[row + size_t(col) * dim] =
                2 * cij * ckl * (g[i + k * d_] * g[j + l * d_] + g[i + l * d_] * g[j + k * d_]);
          }
      }
  }
  void mul_h(const double *v, double *out) const override { congruence(g_.data(), false, v, out); }
  void affine_rhs(const double *s, const double *, double *ds) const override { std::copy(s, s + dim, ds); }
  void combined_rhs(const double *, const double *, const double *ds_a, const double *dz_a, double sigma_mu,
                    double *ds) const override {
    size_t n = size_t(d_) * d_;
    std::vector<double> a(n), b(n), v(n), tmp(dim);
    congruence(rinv_.data(), false, ds_a, tmp.data());  // W^-T ds_a = R^-1 dS R^-T
    to_mat(tmp.data(), a.data());
    congruence(r_.data(), true, dz_a, tmp.data());  // W dz_a = R' dZ R
    to_mat(tmp.data(), b.data());
    gemm(false, false, d_, 0.5, a.data(), b.data(), 0.0, v.data());
    gemm(false, false, d_, 0.5, b.data(), a.data(), 1.0, v.data());
    for (int i = 0; i < d_; ++i) v[i + i * d_] += lambda_[i] * lambda_[i] - sigma_mu;
    for (int j = 0; j < d_; ++j)
      for (int i = 0; i < d_; ++i) v[i + j * d_] *= 2 / (lambda_[i] + lambda_[j]);
    to_svec(v.data(), tmp.data());
    congruence(r_.data(), false, tmp.data(), ds);  // W' x = R X R'
  }
  double max_step(const double *, const double *ds, const double *, const double *dz, double amax) const override {
    return std::min({amax, step(l1_.data(), ds), step(l2_.data(), dz)});
  }
  bool interior_primal(const double *s) const override {
    std::vector<double> l(size_t(d_) * d_);
    return chol(s, l.data());
  }
  bool interior_dual(const double *z) const override { return interior_primal(z); }
};

// ------------------------------------------------------- barriers

// The exponential cone y0 >= y1 exp(y2/y1) taken at y = M x:
// f(x) = -log(y1 log(y0/y1) - y2) - log y0 - log y1.
class ExpBarrier : public Barrier {
  double m_[9];  // M by rows

  void map(const double *x, double *y) const {
    for (int i = 0; i < 3; ++i) y[i] = m_[3 * i] * x[0] + m_[3 * i + 1] * x[1] + m_[3 * i + 2] * x[2];
  }
  void map_t(const double *y, double *x) const {
    for (int i = 0; i < 3; ++i) x[i] = m_[i] * y[0] + m_[3 + i] * y[1] + m_[6 + i] * y[2];
  }
  // g, its gradient and Hessian at y.
  static double g_parts(const double *y, double *dg, double *hg) {
    double a = y[0], b = y[1];
    double g = b * std::log(a / b) - y[2];
    dg[0] = b / a, dg[1] = std::log(a / b) - 1, dg[2] = -1;
    std::fill(hg, hg + 9, 0.0);
    hg[0] = -b / (a * a), hg[1] = hg[3] = 1 / a, hg[4] = -1 / b;
    return g;
  }

 public:
  explicit ExpBarrier(bool dual_map) {
    // Dual cone x0 >= -x2 exp(x1/x2 - 1): y = (x0, -x2, x2 - x1).
    const double id[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, dm[9] = {1, 0, 0, 0, 0, -1, 0, -1, 1};
    std::copy(dual_map ? dm : id, (dual_map ? dm : id) + 9, m_);
  }
  int size() const override { return 3; }
  double degree() const override { return 3; }
  void interior_point(double *x) const override {
    x[0] = 1, x[2] = -1;
    x[1] = m_[4] == 1 ? 1 : 0;  // y = (1, 1, -1) either way
  }
  bool interior(const double *x) const override {
    double y[3];
    map(x, y);
    return y[0] > 0 && y[1] > 0 && y[1] * std::log(y[0] / y[1]) - y[2] > 0;
  }
  double value(const double *x) const override {
    double y[3];
    map(x, y);
    return -std::log(y[1] * std::log(y[0] / y[1]) - y[2]) - std::log(y[0]) - std::log(y[1]);
  }
  void grad(const double *x, double *out) const override {
    double y[3], dg[3], hg[9], gy[3];
    map(x, y);
    double g = g_parts(y, dg, hg);
    for (int i = 0; i < 3; ++i) gy[i] = -dg[i] / g;
    gy[0] -= 1 / y[0], gy[1] -= 1 / y[1];
    map_t(gy, out);
  }
  void hess(const double *x, double *out) const override {
    double y[3], dg[3], hg[9], hy[9];
    map(x, y);
    double g = g_parts(y, dg, hg);
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 3; ++i) hy[i + 3 * j] = -hg[i + 3 * j] / g + dg[i] * dg[j] / (g * g);
    hy[0] += 1 / (y[0] * y[0]), hy[4] += 1 / (y[1] * y[1]);
    // M' hy M
    double t[9];
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 3; ++i) t[i + 3 * j] = hy[i] * m_[j] + hy[i + 3] * m_[3 + j] + hy[i + 6] * m_[6 + j];
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 3; ++i) out[i + 3 * j] = m_[i] * t[3 * j] + m_[3 + i] * t[1 + 3 * j] + m_[6 + i] * t[2 + 3 * j];
  }
  void third(const double *x, const double *u0, const double *v0, double *out) const override {
    double y[3], u[3], v[3], dg[3], hg[9], o[3];
    map(x, y), map(u0, u), map(v0, v);
    double g = g_parts(y, dg, hg);
    double a = y[0], b = y[1];
    // D^3 g[u] as a matrix
    double tg[9] = {0};
    tg[0] = 2 * b * u[0] / (a * a * a) - u[1] / (a * a);
    tg[1] = tg[3] = -u[0] / (a * a);
    tg[4] = u[1] / (b * b);
    double gu = dot(3, dg, u), gv = dot(3, dg, v);
    double hu[3], hv[3];
    for (int i = 0; i < 3; ++i) {
      hu[i] = hg[i] * u[0] + hg[i + 3] * u[1] + hg[i + 6] * u[2];
      hv[i] = hg[i] * v[0] + hg[i + 3] * v[1] + hg[i + 6] * v[2];
    }
    double uhv = dot(3, u, hv);
    for (int i = 0; i < 3; ++i) {
      double tuv = tg[i] * v[0] + tg[i + 3] * v[1] + tg[i + 6] * v[2];
      o[i] = -tuv / g + (hv[i] * gu + hu[i] * gv + dg[i] * uhv) / (g * g) - 2 * dg[i] * gu * gv / (g * g * g);
    }
    o[0] -= 2 * u[0] * v[0] / (a * a * a);
    o[1] -= 2 * u[1] * v[1] / (b * b * b);
    map_t(o, out);
  }
};

// The power cone prod y_i^a_i >= ||w|| (i < nl, w the rest) taken at
// y_i = d_i x_i: f(x) = -log(prod y_i^(2 a_i) - ||w||^2) - sum (1 - a_i) log y_i.
class PowerBarrier : public Barrier {
  int n_, nl_;
  std::vector<double> a_, d_;

  // psi and the scaled left entries y; phi = prod y^(2a).
  double parts(const double *x, double *y, double &phi) const {
    double lg = 0;
    for (int i = 0; i < nl_; ++i) {
      y[i] = d_[i] * x[i];
      lg += 2 * a_[i] * std::log(y[i]);
    }
    phi = std::exp(lg);
    return phi - dot(n_ - nl_, x + nl_, x + nl_);
  }
  // Gradient and Hessian of psi (in y, w coordinates).
  void psi_derivs(const double *x, const double *y, double phi, double *dp, double *hp) const {
    for (int i = 0; i < nl_; ++i) dp[i] = phi * 2 * a_[i] / y[i];
    for (int i = nl_; i < n_; ++i) dp[i] = -2 * x[i];
    if (hp == nullptr) return;
    std::fill(hp, hp + size_t(n_) * n_, 0.0);
    for (int j = 0; j < nl_; ++j)
      for (int i = 0; i < nl_; ++i)
        hp[i + size_t(j) * n_] = phi * (2 * a_[i] / y[i]) * (2 * a_[j] / y[j]) - (i == j ? phi * 2 * a_[i] / (y[i] * y[i]) : 0);
    for (int i = nl_; i < n_; ++i) hp[i + size_t(i) * n_] = -2;
  }

 public:
  PowerBarrier(int n, const std::vector<double> &alpha, bool dual_scale)
      : n_(n), nl_(int(alpha.size())), a_(alpha), d_(alpha.size(), 1.0) {
    if (dual_scale)
      for (int i = 0; i < nl_; ++i) d_[i] = 1 / alpha[i];
  }
  int size() const override { return n_; }
  double degree() const override { return nl_ + 1; }
  void interior_point(double *x) const override {
    for (int i = 0; i < n_; ++i) x[i] = i < nl_ ? 1.0 : 0.0;
  }
  bool interior(const double *x) const override {
    for (int i = 0; i < nl_; ++i)
      if (!(x[i] > 0)) return false;
    std::vector<double> y(nl_);
    double phi;
    double psi = parts(x, y.data(), phi);
    return psi > 0 && std::isfinite(psi);
  }
  double value(const double *x) const override {
    std::vector<double> y(nl_);
    double phi, psi = parts(x, y.data(), phi);
    double f = -std::log(psi);
    for (int i = 0; i < nl_; ++i) f -= (1 - a_[i]) * std::log(y[i]);
    return f;
  }
  void grad(const double *x, double *g) const override {
    std::vector<double> y(nl_), dp(n_);
    double phi, psi = parts(x, y.data(), phi);
    psi_derivs(x, y.data(), phi, dp.data(), nullptr);
    for (int i = 0; i < n_; ++i) g[i] = -dp[i] / psi;
    for (int i = 0; i < nl_; ++i) g[i] = d_[i] * (g[i] - (1 - a_[i]) / y[i]);
  }
  void hess(const double *x, double *h) const override {
    std::vector<double> y(nl_), dp(n_);
    double phi, psi = parts(x, y.data(), phi);
    psi_derivs(x, y.data(), phi, dp.data(), h);
    for (int j = 0; j < n_; ++j)
      for (int i = 0; i < n_; ++i) {
        double &e = h[i + size_t(j) * n_];
        e = -e / psi + dp[i] * dp[j] / (psi * psi);
        if (i == j && i < nl_) e += (1 - a_[i]) / (y[i] * y[i]);
        if (i < nl_) e *= d_[i];
        if (j < nl_) e *= d_[j];
      }
  }
  void third(const double *x, const double *u0, const double *v0, double *out) const override {
    std::vector<double> y(nl_), dp(n_), u(u0, u0 + n_), v(v0, v0 + n_);
    for (int i = 0; i < nl_; ++i) u[i] *= d_[i], v[i] *= d_[i];
    double phi, psi = parts(x, y.data(), phi);
    psi_derivs(x, y.data(), phi, dp.data(), nullptr);
    // psi's Hessian applied to u and v, without forming it.
    std::vector<double> hu(n_), hv(n_), a(nl_);
    double au = 0, av = 0;
    for (int i = 0; i < nl_; ++i) {
      a[i] = 2 * a_[i] / y[i];
      au += a[i] * u[i], av += a[i] * v[i];
    }
    for (int i = 0; i < nl_; ++i) {
      hu[i] = phi * (a[i] * au - a[i] / y[i] * u[i]);
      hv[i] = phi * (a[i] * av - a[i] / y[i] * v[i]);
    }
    for (int i = nl_; i < n_; ++i) hu[i] = -2 * u[i], hv[i] = -2 * v[i];
    double gu = dot(n_, dp.data(), u.data()), gv = dot(n_, dp.data(), v.data()), uhv = dot(n_, u.data(), hv.data());
    // D^3 phi[u, v] (left part only; psi's w part is quadratic)
    double duv = 0;  // (Du)'v with (Du)_i = -a_i u_i / y_i
    for (int i = 0; i < nl_; ++i) duv += -a[i] * u[i] / y[i] * v[i];
    for (int i = 0; i < n_; ++i) {
      double t3 = 0;
      if (i < nl_) {
        double du = -a[i] * u[i] / y[i];
        t3 = phi * (au * (a[i] * av - a[i] / y[i] * v[i]) + du * av + a[i] * duv + 2 * a[i] * u[i] * v[i] / (y[i] * y[i]));
      }
      double o = -t3 / psi + (hv[i] * gu + hu[i] * gv + dp[i] * uhv) / (psi * psi) -
                 2 * dp[i] * gu * gv / (psi * psi * psi);
      if (i < nl_) o = d_[i] * (o - 2 * (1 - a_[i]) * u[i] * v[i] / (y[i] * y[i] * y[i]));
      out[i] = o;
    }
  }
};

// ------------------------------------------------- non-symmetric cones

// Non-symmetric cones, with a barrier f* of the dual cone in closed form:
// the central path s = -mu grad f*(z), a primal-dual scaling H with H z = s
// built from D^2 f*(z) by a low-rank secant update, and the corrector
// eta = -1/2 D^3 f*(z)[dz_a, (D^2 f*(z))^-1 ds_a].
// Solves H x = b for a symmetric positive definite H (n x n by columns),
// falling back to an eigenvalue decomposition when Cholesky fails on an
// ill-conditioned H. h is overwritten.
// Cholesky solve of a small SPD system in plain loops (LAPACK's call
// overhead dominates at these sizes); false when a pivot is not positive.
bool small_chol_solve(int n, const double *h, double *b) {
  double buf[256];
  std::vector<double> big;
  double *c = buf;
  if (size_t(n) * n > 256) {
    big.resize(size_t(n) * n);
    c = big.data();
  }
  for (int j = 0; j < n; ++j) {
    double d = h[j + size_t(j) * n];
    for (int k = 0; k < j; ++k) d -= c[j + size_t(k) * n] * c[j + size_t(k) * n];
    if (!(d > 0)) return false;
    d = std::sqrt(d);
    c[j + size_t(j) * n] = d;
    for (int i = j + 1; i < n; ++i) {
      double v = h[i + size_t(j) * n];
      for (int k = 0; k < j; ++k) v -= c[i + size_t(k) * n] * c[j + size_t(k) * n];
      c[i + size_t(j) * n] = v / d;
    }
  }
  for (int i = 0; i < n; ++i) {
    double v = b[i];
    for (int k = 0; k < i; ++k) v -= c[i + size_t(k) * n] * b[k];
    b[i] = v / c[i + size_t(i) * n];
  }
  for (int i = n - 1; i >= 0; --i) {
    double v = b[i];
    for (int k = i + 1; k < n; ++k) v -= c[k + size_t(i) * n] * b[k];
    b[i] = v / c[i + size_t(i) * n];
  }
  return true;
}

void spd_solve(int n, double *h, double *b) {
  if (n <= 16) {
    std::vector<double> keep(b, b + n);
    if (small_chol_solve(n, h, b)) return;
    std::copy(keep.begin(), keep.end(), b);
  } else {
    std::vector<double> c(h, h + size_t(n) * n);
    if (LAPACKE_dpotrf(LAPACK_COL_MAJOR, 'L', n, c.data(), n) == 0) {
      LAPACKE_dpotrs(LAPACK_COL_MAJOR, 'L', n, 1, c.data(), n, b, n);
      return;
    }
  }
  std::vector<double> ev(n), t(n, 0.0);
  LAPACKE_dsyev(LAPACK_COL_MAJOR, 'V', 'L', n, h, n, ev.data());
  double top = std::max(ev[n - 1], 0.0);
  for (int k = 0; k < n; ++k) {
    double coef = dot(n, h + size_t(k) * n, b);
    double e = std::max(ev[k], 1e-15 * top);
    if (e > 0) coef /= e; else coef = 0;
    for (int i = 0; i < n; ++i) t[i] += coef * h[i + size_t(k) * n];
  }
  std::copy(t.begin(), t.end(), b);
}

class NonsymCone : public ConeImpl {
  std::unique_ptr<Barrier> primal_, dual_;
  std::vector<double> hd_, gd_, z_, h_;
  double mu_ = 1;

 public:
  NonsymCone(std::unique_ptr<Barrier> primal, std::unique_ptr<Barrier> dual)
      : primal_(std::move(primal)), dual_(std::move(dual)) {}
  double degree() const override { return dual_->degree(); }
  bool symmetric() const override { return false; }
  void start(double *s, double *z) const override {
    // z minimising f*(z) + |z|^2/2: then grad f*(z) = -z and s = z is central.
    int n = dim;
    std::vector<double> x(n, 0.0), g(n), h(size_t(n) * n), step(n), trial(n);
    dual_->interior_point(x.data());
    auto merit = [&](const double *v) { return dual_->value(v) + dot(n, v, v) / 2; };
    for (int it = 0; it < 100; ++it) {
      dual_->grad(x.data(), g.data());
      dual_->hess(x.data(), h.data());
      for (int i = 0; i < n; ++i) g[i] += x[i], h[i + size_t(i) * n] += 1;
      if (norm2(n, g.data()) < 1e-14 * (1 + norm2(n, x.data()))) break;
      for (int i = 0; i < n; ++i) step[i] = -g[i];
      if (!small_chol_solve(n, h.data(), step.data())) break;
      double t = 1, f0 = merit(x.data()), slope = dot(n, g.data(), step.data());
      for (int ls = 0; ls < 60; ++ls, t /= 2) {
        for (int i = 0; i < n; ++i) trial[i] = x[i] + t * step[i];
        if (dual_->interior(trial.data()) && merit(trial.data()) <= f0 + 1e-4 * t * slope) break;
      }
      if (!dual_->interior(trial.data())) break;
      x = trial;
    }
    std::copy(x.begin(), x.end(), z);
    dual_->grad(x.data(), g.data());
    for (int i = 0; i < n; ++i) s[i] = -g[i];
  }
  bool update(const double *s, const double *z, double mu) override {
    if (!primal_->interior(s) || !dual_->interior(z)) return false;
    int n = dim;
    mu_ = mu;
    z_.assign(z, z + n);
    hd_.resize(size_t(n) * n), gd_.resize(n);
    dual_->hess(z, hd_.data());
    dual_->grad(z, gd_.data());
    for (double v : hd_)
      if (!std::isfinite(v)) return false;
    // The primal-dual scaling when it can be had; else the secant (BFGS)
    // update of mu D^2 f*(z), mu = s'z/nu the cone's own, by the pair (z, s):
    // H = mu D^2 f*(z) + s s'/s'z - (mu/nu) st st' with st = -grad f*(z),
    // which also gives H z = s, is positive definite while s'z > 0 and is
    // mu D^2 f*(z) on the central path.
    double sz = dot(n, s, z), nu = degree();
    if (!(sz > 0)) return false;
    mu_ = sz / nu;
    h_.resize(hd_.size());
    for (size_t k = 0; k < hd_.size(); ++k) h_[k] = mu_ * hd_[k];
    if (!primal_dual(s, z, sz)) {
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) h_[i + size_t(j) * n] += s[i] * s[j] / sz - mu_ / nu * gd_[i] * gd_[j];
    }
    return true;
  }
  // The primal-dual scaling: with the shadow points st = -grad f*(z) and
  // zt = -grad f**(s) (the point where -grad f*(zt) = s, found by Newton's
  // method), H = H0 + S (Z'S)^-1 S' - H0 Z (Z'H0 Z)^-1 Z'H0 for S = [s st],
  // Z = [z zt], H0 = mu D^2 f*(z): then H z = s and H zt = st. False when the
  // pair is too close to the central path (Z'S near singular) or Newton fails.
  bool primal_dual(const double *s, const double *z, double sz) {
    int n = dim;
    double nu = degree();
    // zt = argmin_w s'w + f*(w), from w = z / mu.
    std::vector<double> w(n), g(n), h(size_t(n) * n), step(n), trial(n);
    for (int i = 0; i < n; ++i) w[i] = z[i] / mu_;
    bool done = false;
    for (int it = 0; it < 60 && !done; ++it) {
      dual_->grad(w.data(), g.data());
      dual_->hess(w.data(), h.data());
      for (int i = 0; i < n; ++i) step[i] = -(g[i] + s[i]);
      std::vector<double> rhs(step);
      spd_solve(n, h.data(), step.data());
      double lambda = std::sqrt(std::max(0.0, dot(n, rhs.data(), step.data())));  // Newton decrement
      double t = lambda > 0.25 ? 1 / (1 + lambda) : 1.0;
      for (int i = 0; i < n; ++i) trial[i] = w[i] + t * step[i];
      if (!dual_->interior(trial.data())) return false;
      w = trial;
      done = lambda < 1e-10;
    }
    if (!done) return false;
    std::vector<double> st(n), zt(w);
    for (int i = 0; i < n; ++i) st[i] = -gd_[i];
    double zs[4] = {sz, dot(n, z, st.data()), dot(n, zt.data(), s), dot(n, zt.data(), st.data())};
    double mut = zs[3] / nu;
    if (!(mu_ * mut - 1 > 1e-7)) return false;  // on the central path: H0 already fits
    // H0 Z
    std::vector<double> h0z(size_t(n) * 2, 0.0);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        h0z[i] += h_[i + size_t(j) * n] * z[j];
        h0z[i + n] += h_[i + size_t(j) * n] * zt[j];
      }
    double zhz[3] = {dot(n, z, h0z.data()), dot(n, z, h0z.data() + n), dot(n, zt.data(), h0z.data() + n)};
    double det1 = zs[0] * zs[3] - zs[1] * zs[2], det2 = zhz[0] * zhz[2] - zhz[1] * zhz[1];
    if (!(det1 > 1e-14 * zs[0] * zs[3]) || !(det2 > 1e-14 * zhz[0] * zhz[2])) return false;
    // (Z'S)^-1 (symmetric: z'st = zt's = nu) and (Z'H0Z)^-1.
    double a11 = zs[3] / det1, a12 = -zs[1] / det1, a22 = zs[0] / det1;
    double b11 = zhz[2] / det2, b12 = -zhz[1] / det2, b22 = zhz[0] / det2;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        double add = a11 * s[i] * s[j] + a12 * (s[i] * st[j] + st[i] * s[j]) + a22 * st[i] * st[j];
        double sub = b11 * h0z[i] * h0z[j] + b12 * (h0z[i] * h0z[n + j] + h0z[n + i] * h0z[j]) +
                     b22 * h0z[n + i] * h0z[n + j];
        h_[i + size_t(j) * n] += add - sub;
      }
    return true;
  }
  void block(double *out) const override { std::copy(h_.begin(), h_.end(), out); }
  void mul_h(const double *v, double *out) const override {
    std::fill(out, out + dim, 0.0);
    for (int j = 0; j < dim; ++j)
      for (int i = 0; i < dim; ++i) out[i] += h_[i + size_t(j) * dim] * v[j];
  }
  void affine_rhs(const double *s, const double *, double *ds) const override { std::copy(s, s + dim, ds); }
  void combined_rhs(const double *s, const double *, const double *ds_a, const double *dz_a, double sigma_mu,
                    double *ds) const override {
    int n = dim;
    std::vector<double> t(ds_a, ds_a + n), eta(n), h(hd_);
    spd_solve(n, h.data(), t.data());
    dual_->third(z_.data(), dz_a, t.data(), eta.data());
    for (int i = 0; i < n; ++i) ds[i] = s[i] + sigma_mu * gd_[i] - 0.5 * eta[i];
  }
  double max_step(const double *s, const double *ds, const double *z, const double *dz, double amax) const override {
    // Bisection for the boundary: lo stays inside both cones.
    std::vector<double> ts(dim), tz(dim);
    auto inside = [&](double a) {
      for (int i = 0; i < dim; ++i) ts[i] = s[i] + a * ds[i], tz[i] = z[i] + a * dz[i];
      return primal_->interior(ts.data()) && dual_->interior(tz.data());
    };
    if (inside(amax)) return amax;
    double lo = 0, hi = amax;
    for (int k = 0; k < 50 && hi - lo > 1e-4 * hi; ++k) {
      double mid = (lo + hi) / 2;
      (inside(mid) ? lo : hi) = mid;
    }
    return lo;
  }
  bool interior_primal(const double *s) const override { return primal_->interior(s); }
  bool interior_dual(const double *z) const override { return dual_->interior(z); }
};

}  // namespace

std::unique_ptr<Barrier> make_barrier(ConeKind kind, int dim, const std::vector<double> &alpha, bool primal) {
  switch (kind) {
    case ConeKind::PrimalExp: return std::make_unique<ExpBarrier>(!primal);
    case ConeKind::DualExp: return std::make_unique<ExpBarrier>(primal);
    case ConeKind::PrimalPower: return std::make_unique<PowerBarrier>(dim, alpha, !primal);
    case ConeKind::DualPower: return std::make_unique<PowerBarrier>(dim, alpha, primal);
    default: return nullptr;
  }
}

std::unique_ptr<ConeImpl> make_cone(const Cone &cone) {
  std::unique_ptr<ConeImpl> c;
  switch (cone.kind) {
    case ConeKind::Zero: c = std::make_unique<ZeroCone>(); break;
    case ConeKind::Nonnegative: c = std::make_unique<OrthantCone>(); break;
    case ConeKind::Quadratic: c = std::make_unique<SocCone>(); break;
    case ConeKind::Psd: {
      int d = int(std::lround((std::sqrt(8.0 * cone.dim + 1) - 1) / 2));
      c = std::make_unique<PsdCone>(d);
      break;
    }
    case ConeKind::PrimalExp:
    case ConeKind::DualExp:
    case ConeKind::PrimalPower:
    case ConeKind::DualPower:
      c = std::make_unique<NonsymCone>(make_barrier(cone.kind, cone.dim, cone.alpha, true),
                                       make_barrier(cone.kind, cone.dim, cone.alpha, false));
      break;
    default: return nullptr;
  }
  c->dim = cone.dim;
  return c;
}

}  // namespace ipm
}  // namespace qrn
