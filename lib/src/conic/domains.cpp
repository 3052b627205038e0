// Domains: appending them with their dimension rules, reading them back, and
// measuring how far a point lies from a domain or from its dual cone.
#include "conic.hpp"
#include "semidefinite.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qrn {

void check_domain(const Task &t, qrn_int64 d, const char *what) {
  auto n = static_cast<qrn_int64>(t.conic.domains.size());
  if (d < 0 || d >= n) fail(QRN_RES_ERR_INDEX_DOMAIN, outside(what, d, n));
}

qrn_int32 dual_type(qrn_int32 type) {
  switch (type) {
    case QRN_DOMAIN_R: return QRN_DOMAIN_RZERO;
    case QRN_DOMAIN_RZERO: return QRN_DOMAIN_R;
    case QRN_DOMAIN_PRIMAL_EXP_CONE: return QRN_DOMAIN_DUAL_EXP_CONE;
    case QRN_DOMAIN_DUAL_EXP_CONE: return QRN_DOMAIN_PRIMAL_EXP_CONE;
    case QRN_DOMAIN_PRIMAL_POWER_CONE: return QRN_DOMAIN_DUAL_POWER_CONE;
    case QRN_DOMAIN_DUAL_POWER_CONE: return QRN_DOMAIN_PRIMAL_POWER_CONE;
    case QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE: return QRN_DOMAIN_DUAL_GEO_MEAN_CONE;
    case QRN_DOMAIN_DUAL_GEO_MEAN_CONE: return QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE;
    default: return type;
  }
}

namespace {

double norm(const double *x, qrn_int64 n) {
  double s = 0.0;
  for (qrn_int64 k = 0; k < n; ++k) s += x[k] * x[k];
  return std::sqrt(s);
}

// Distance of (t, r) to the second-order cone t >= r, r = ||rest|| >= 0.
double soc_distance(double t, double r) {
  if (r <= t) return 0.0;
  if (r <= -t) return std::hypot(t, r);
  return (r - t) / std::sqrt(2.0);
}

// Largest negative part of x[0..n).
double negative_part(const double *x, qrn_int64 n) {
  double v = 0.0;
  for (qrn_int64 k = 0; k < n; ++k) v = std::max(v, -x[k]);
  return v;
}

// prod max(x_i, 0)^w_i for weights w (scaled by 1/scale_i when given).
double weighted_product(const double *x, const std::vector<double> &w, bool dual) {
  double logsum = 0.0;
  for (size_t i = 0; i < w.size(); ++i) {
    double xi = dual ? x[i] / w[i] : x[i];
    if (xi <= 0.0) return 0.0;
    logsum += w[i] * std::log(xi);
  }
  return std::exp(logsum);
}

double geometric_mean(const double *x, qrn_int64 m) {
  double logsum = 0.0;
  for (qrn_int64 i = 0; i < m; ++i) {
    if (x[i] <= 0.0) return 0.0;
    logsum += std::log(x[i]);
  }
  return std::exp(logsum / static_cast<double>(m));
}

double psd_distance(const double *x, qrn_int64 n) {
  auto d = static_cast<qrn_int32>(std::llround((std::sqrt(8.0 * static_cast<double>(n) + 1.0) - 1.0) / 2.0));
  std::vector<double> packed(x, x + n);
  const double scale = 1.0 / std::sqrt(2.0);
  for (qrn_int32 j = 0; j < d; ++j)
    for (qrn_int32 i = j + 1; i < d; ++i) packed[packed_pos(d, i, j)] *= scale;
  double s = 0.0;
  for (double lambda : eigenvalues(packed, d))
    if (lambda < 0.0) s += lambda * lambda;
  return std::sqrt(s);
}

double violation_of(qrn_int32 type, qrn_int64 n, const std::vector<double> &alpha, const double *x) {
  switch (type) {
    case QRN_DOMAIN_R: return 0.0;
    case QRN_DOMAIN_RZERO: return norm(x, n);
    case QRN_DOMAIN_RPLUS: {
      double s = 0.0;
      for (qrn_int64 k = 0; k < n; ++k) s += x[k] < 0.0 ? x[k] * x[k] : 0.0;
      return std::sqrt(s);
    }
    case QRN_DOMAIN_RMINUS: {
      double s = 0.0;
      for (qrn_int64 k = 0; k < n; ++k) s += x[k] > 0.0 ? x[k] * x[k] : 0.0;
      return std::sqrt(s);
    }
    case QRN_DOMAIN_QUADRATIC_CONE: return soc_distance(x[0], norm(x + 1, n - 1));
    case QRN_DOMAIN_RQUADRATIC_CONE: {
      // (x0 + x1)/sqrt2 >= ||((x0 - x1)/sqrt2, x2:)|| is the same cone turned by a rotation.
      double u = (x[0] + x[1]) / std::sqrt(2.0), v = (x[0] - x[1]) / std::sqrt(2.0);
      return soc_distance(u, std::hypot(v, norm(x + 2, n - 2)));
    }
    case QRN_DOMAIN_PRIMAL_EXP_CONE: {
      double v = std::max({0.0, -x[0], -x[1]});
      double res = x[1] > 0.0 ? x[1] * std::exp(x[2] / x[1]) - x[0] : x[2];
      return std::max(v, res);
    }
    case QRN_DOMAIN_DUAL_EXP_CONE: {
      double v = std::max({0.0, -x[0], x[2]});
      double res = x[2] < 0.0 ? -x[2] * std::exp(x[1] / x[2] - 1.0) - x[0] : -x[1];
      return std::max(v, res);
    }
    case QRN_DOMAIN_PRIMAL_POWER_CONE:
    case QRN_DOMAIN_DUAL_POWER_CONE: {
      auto nleft = static_cast<qrn_int64>(alpha.size());
      double res = norm(x + nleft, n - nleft) - weighted_product(x, alpha, type == QRN_DOMAIN_DUAL_POWER_CONE);
      return std::max({0.0, negative_part(x, nleft), res});
    }
    case QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE:
    case QRN_DOMAIN_DUAL_GEO_MEAN_CONE: {
      double mean = geometric_mean(x, n - 1);
      if (type == QRN_DOMAIN_DUAL_GEO_MEAN_CONE) mean *= static_cast<double>(n - 1);
      return std::max({0.0, negative_part(x, n - 1), std::fabs(x[n - 1]) - mean});
    }
    case QRN_DOMAIN_SVEC_PSD_CONE: return psd_distance(x, n);
    default: return 0.0;
  }
}

bool triangular(qrn_int64 n) {
  if (n < 1) return false;
  auto d = static_cast<qrn_int64>(std::llround((std::sqrt(8.0 * static_cast<double>(n) + 1.0) - 1.0) / 2.0));
  return packed_len(d) == n;
}

const char *type_name(qrn_int32 type) {
  static const char *const names[] = {"R",
                                      "RZERO",
                                      "RPLUS",
                                      "RMINUS",
                                      "quadratic cone",
                                      "rotated quadratic cone",
                                      "primal exponential cone",
                                      "dual exponential cone",
                                      "primal power cone",
                                      "dual power cone",
                                      "primal geometric mean cone",
                                      "dual geometric mean cone",
                                      "svec PSD cone"};
  return names[type];
}

qrn_int64 append_domain(Task &t, qrn_int32 type, qrn_int64 n, qrn_int64 nleft = 0, const double *alpha = nullptr) {
  qrn_int64 least = 0;
  switch (type) {
    case QRN_DOMAIN_QUADRATIC_CONE: least = 1; break;
    case QRN_DOMAIN_RQUADRATIC_CONE: least = 2; break;
    case QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE:
    case QRN_DOMAIN_DUAL_GEO_MEAN_CONE: least = 2; break;
    case QRN_DOMAIN_PRIMAL_POWER_CONE:
    case QRN_DOMAIN_DUAL_POWER_CONE: least = 1; break;
    default: break;
  }
  if (n < least)
    fail(QRN_RES_ERR_DOMAIN_DIMENSION, std::string("A ") + type_name(type) + " needs dimension at least " +
                                           std::to_string(least) + "; " + std::to_string(n) + " given.");
  if (type == QRN_DOMAIN_SVEC_PSD_CONE && !triangular(n))
    fail(QRN_RES_ERR_DOMAIN_DIMENSION, "The svec PSD cone's dimension must be d(d+1)/2 for some d >= 1; " +
                                           std::to_string(n) + " is not.");
  Domain d{type, n, {}};
  if (type == QRN_DOMAIN_PRIMAL_POWER_CONE || type == QRN_DOMAIN_DUAL_POWER_CONE) {
    if (nleft < 1 || nleft > n)
      fail(QRN_RES_ERR_DOMAIN_POWER_WEIGHTS, "A power cone of dimension " + std::to_string(n) + " needs 1.." +
                                                 std::to_string(n) + " weights; " + std::to_string(nleft) + " given.");
    need_array(alpha, nleft, "alpha");
    double sum = 0.0;
    for (qrn_int64 k = 0; k < nleft; ++k) {
      if (!(alpha[k] > 0.0) || !std::isfinite(alpha[k]))
        fail(QRN_RES_ERR_DOMAIN_POWER_WEIGHTS,
             "Weight " + std::to_string(k) + " of the power cone is not positive and finite.");
      sum += alpha[k];
    }
    if (!std::isfinite(sum)) fail(QRN_RES_ERR_DOMAIN_POWER_WEIGHTS, "The power cone weights sum to infinity.");
    d.alpha.assign(alpha, alpha + nleft);
    for (double &a : d.alpha) a /= sum;
  }
  auto idx = static_cast<qrn_int64>(t.conic.domains.size());
  t.conic.domains.push_back(std::move(d));
  t.domnames.resize(t.conic.domains.size());
  t.conic.maxnumdomain = std::max(t.conic.maxnumdomain, idx + 1);
  return idx;
}

qrn_rescode append(qrn_task_t task, const char *fn, qrn_int32 type, qrn_int64 n, qrn_int64 *domidx,
                   qrn_int64 nleft = 0, const double *alpha = nullptr) {
  return api(task, fn, [&](Task &t) { put(domidx, append_domain(t, type, n, nleft, alpha)); });
}

const Domain &power_domain(const Task &t, qrn_int64 domidx) {
  check_domain(t, domidx);
  const Domain &d = t.conic.domains[domidx];
  if (d.type != QRN_DOMAIN_PRIMAL_POWER_CONE && d.type != QRN_DOMAIN_DUAL_POWER_CONE)
    fail(QRN_RES_ERR_DOMAIN_NOT_POWER, "Domain " + std::to_string(domidx) + " is a " + type_name(d.type) +
                                           ", not a power cone.");
  return d;
}

}  // namespace

double domain_violation(const Domain &d, const double *x, bool dual) {
  return violation_of(dual ? dual_type(d.type) : d.type, d.n, d.alpha, x);
}

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_appendrplusdomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendrplusdomain", QRN_DOMAIN_RPLUS, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendrminusdomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendrminusdomain", QRN_DOMAIN_RMINUS, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendrdomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendrdomain", QRN_DOMAIN_R, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendrzerodomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendrzerodomain", QRN_DOMAIN_RZERO, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendquadraticconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendquadraticconedomain", QRN_DOMAIN_QUADRATIC_CONE, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendrquadraticconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendrquadraticconedomain", QRN_DOMAIN_RQUADRATIC_CONE, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendprimalexpconedomain(qrn_task_t task, qrn_int64 *domidx) {
  return append(task, "QRN_appendprimalexpconedomain", QRN_DOMAIN_PRIMAL_EXP_CONE, 3, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appenddualexpconedomain(qrn_task_t task, qrn_int64 *domidx) {
  return append(task, "QRN_appenddualexpconedomain", QRN_DOMAIN_DUAL_EXP_CONE, 3, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendprimalpowerconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 nleft,
                                                             const qrn_real *alpha, qrn_int64 *domidx) {
  return append(task, "QRN_appendprimalpowerconedomain", QRN_DOMAIN_PRIMAL_POWER_CONE, n, domidx, nleft, alpha);
}
QRN_API qrn_rescode QRN_CALL QRN_appenddualpowerconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 nleft,
                                                           const qrn_real *alpha, qrn_int64 *domidx) {
  return append(task, "QRN_appenddualpowerconedomain", QRN_DOMAIN_DUAL_POWER_CONE, n, domidx, nleft, alpha);
}
QRN_API qrn_rescode QRN_CALL QRN_appendprimalgeomeanconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendprimalgeomeanconedomain", QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appenddualgeomeanconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appenddualgeomeanconedomain", QRN_DOMAIN_DUAL_GEO_MEAN_CONE, n, domidx);
}
QRN_API qrn_rescode QRN_CALL QRN_appendsvecpsdconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx) {
  return append(task, "QRN_appendsvecpsdconedomain", QRN_DOMAIN_SVEC_PSD_CONE, n, domidx);
}

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumdomain(qrn_task_t task, qrn_int64 maxnumdomain) {
  return api(task, "QRN_putmaxnumdomain", [&](Task &t) {
    need_capacity(maxnumdomain, static_cast<qrn_int64>(t.conic.domains.size()), "The domain capacity");
    t.conic.maxnumdomain = maxnumdomain;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumdomain(qrn_task_t task, qrn_int64 *numdomain) {
  return api(task, "QRN_getnumdomain",
             [&](Task &t) { put(numdomain, static_cast<qrn_int64>(t.conic.domains.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getdomaintype(qrn_task_t task, qrn_int64 domidx, qrn_int32 *domtype) {
  return api(task, "QRN_getdomaintype", [&](Task &t) {
    check_domain(t, domidx);
    put(domtype, t.conic.domains[domidx].type);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdomainn(qrn_task_t task, qrn_int64 domidx, qrn_int64 *n) {
  return api(task, "QRN_getdomainn", [&](Task &t) {
    check_domain(t, domidx);
    put(n, t.conic.domains[domidx].n);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getpowerdomaininfo(qrn_task_t task, qrn_int64 domidx, qrn_int64 *n,
                                                    qrn_int64 *nleft) {
  return api(task, "QRN_getpowerdomaininfo", [&](Task &t) {
    const Domain &d = power_domain(t, domidx);
    put(n, d.n);
    put(nleft, static_cast<qrn_int64>(d.alpha.size()));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getpowerdomainalpha(qrn_task_t task, qrn_int64 domidx, qrn_real *alpha) {
  return api(task, "QRN_getpowerdomainalpha", [&](Task &t) {
    const Domain &d = power_domain(t, domidx);
    if (alpha != nullptr) std::copy(d.alpha.begin(), d.alpha.end(), alpha);
  });
}

}  // extern "C"
