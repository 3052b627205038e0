// The cones of the interior-point engine, each behind one interface: its
// scaling H (so that the linearised complementarity reads ds + H dz = -d_s),
// the right-hand sides d_s of the predictor and the corrector, and the step to
// the boundary. Symmetric cones use Nesterov-Todd scaling; the others use the
// Hessian of a barrier of the dual cone at z (path-following with the dual
// barrier) and a third-order correction.
#pragma once

#include <memory>
#include <vector>

#include "ipm.hpp"

namespace qrn {
namespace ipm {

class ConeImpl {
 public:
  virtual ~ConeImpl() = default;
  int offset = 0;  // first row
  int dim = 0;
  // Barrier parameter (0 for the zero cone).
  virtual double degree() const = 0;
  virtual bool symmetric() const { return true; }
  // Whether H is diagonal (else a dense dim x dim block).
  virtual bool diagonal() const { return false; }
  // A central starting pair: s in int K, z in int K*, s = -grad f*(z).
  virtual void start(double *s, double *z) const = 0;
  // Computes the scaling at (s, z); mu is the overall complementarity measure.
  // False when (s, z) is not strictly inside the cones.
  virtual bool update(const double *s, const double *z, double mu) = 0;
  // The block H: dim entries (diagonal) or dim*dim by columns.
  virtual void block(double *out) const = 0;
  // H as diag(d) + u u' - v v' with d > 0 (dim entries each), for cones that
  // have such a form (quadratic cones); false otherwise.
  virtual bool expansion(double *d, double *u, double *v) const {
    (void)d, (void)u, (void)v;
    return false;
  }
  // out = H v.
  virtual void mul_h(const double *v, double *out) const = 0;
  // d_s of the predictor (the affine direction).
  virtual void affine_rhs(const double *s, const double *z, double *ds) const = 0;
  // d_s of the corrector, from the predictor's (ds_a, dz_a) and sigma*mu.
  virtual void combined_rhs(const double *s, const double *z, const double *ds_a, const double *dz_a,
                            double sigma_mu, double *ds) const = 0;
  // Largest step in (0, amax] keeping s + a ds in K and z + a dz in K* (the
  // boundary itself for symmetric cones; strict interiors for the others).
  virtual double max_step(const double *s, const double *ds, const double *z, const double *dz,
                          double amax) const = 0;
  // Strict interior tests (used when backtracking).
  virtual bool interior_primal(const double *s) const = 0;
  virtual bool interior_dual(const double *z) const = 0;
};

// Builds the cone for a validated description (rotated quadratic cones come
// here already mapped to quadratic ones, geometric-mean cones to power ones).
std::unique_ptr<ConeImpl> make_cone(const Cone &cone);

// ---- exposed for the tests: the barriers of the non-symmetric cones ----

// A logarithmically homogeneous barrier of a cone in R^n with its derivatives.
class Barrier {
 public:
  virtual ~Barrier() = default;
  virtual int size() const = 0;
  virtual double degree() const = 0;
  virtual bool interior(const double *x) const = 0;
  virtual void interior_point(double *x) const = 0;  // some point inside
  virtual double value(const double *x) const = 0;
  virtual void grad(const double *x, double *g) const = 0;
  virtual void hess(const double *x, double *h) const = 0;  // n*n by columns
  // out = D^3 f(x)[u, v].
  virtual void third(const double *x, const double *u, const double *v, double *out) const = 0;
};

// The barriers of K (primal = true) and of K* for the non-symmetric kinds
// PrimalExp, DualExp, PrimalPower, DualPower (alpha normalised, nleft = its size).
std::unique_ptr<Barrier> make_barrier(ConeKind kind, int dim, const std::vector<double> &alpha, bool primal);

}  // namespace ipm
}  // namespace qrn
