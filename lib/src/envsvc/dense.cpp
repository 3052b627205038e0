// Dense vector and matrix routines of an environment, on OpenBLAS and LAPACK.
// Matrices are stored by columns with the row count as leading dimension.
#include "linalg.hpp"

#include <cblas.h>
#include <lapacke.h>

#include <algorithm>
#include <vector>

using namespace qrn;

namespace {

// More than one OpenBLAS thread costs time on the small and medium matrices
// this library meets, next to its own threads: one thread unless the process
// changes it.
const bool one_blas_thread = [] {
  openblas_set_num_threads(1);
  return true;
}();

// Leading dimension of a stored matrix with `rows` rows (BLAS wants >= 1).
inline int ld(qrn_int32 rows) { return std::max<qrn_int32>(rows, 1); }
inline char uplo_char(bool lower) { return lower ? 'L' : 'U'; }

// LAPACKE result to a failure. `matrix_arg` is the position of the matrix in
// the LAPACKE call: a negative info naming it means the NaN check found one.
void lapack_result(lapack_int info, int matrix_arg, const char *routine, bool factor) {
  if (info == 0) return;
  if (info == LAPACK_WORK_MEMORY_ERROR || info == LAPACK_TRANSPOSE_MEMORY_ERROR)
    fail(QRN_RES_ERR_SPACE, std::string(routine) + ": out of memory.");
  if (info == -matrix_arg) fail(QRN_RES_ERR_VALUE_NAN, "The matrix a holds a NaN in the triangle read.");
  if (info < 0) fail(QRN_RES_ERR_INTERNAL, std::string(routine) + " refused argument " + std::to_string(-info) + ".");
  if (factor)
    fail(QRN_RES_ERR_LA_NOT_POSDEF,
         "The matrix is not positive definite: its leading minor of order " + std::to_string(info) + " is not.");
  fail(QRN_RES_ERR_LA_NO_CONVERGENCE,
       "The eigenvalue computation did not converge (" + std::to_string(info) + " off-diagonal elements left).");
}

}  // namespace

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_axpy(qrn_env_t env, qrn_int32 n, qrn_real alpha, const qrn_real *x,
                                      qrn_real *y) {
  return env_api(env, "QRN_axpy", [&](Env &) {
    need_dim(n, "The dimension n");
    need_array(x, n, "x");
    need_array(y, n, "y");
    if (n > 0) cblas_daxpy(n, alpha, x, 1, y, 1);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_dot(qrn_env_t env, qrn_int32 n, const qrn_real *x, const qrn_real *y,
                                     qrn_real *xty) {
  return env_api(env, "QRN_dot", [&](Env &) {
    need_dim(n, "The dimension n");
    need_array(x, n, "x");
    need_array(y, n, "y");
    put(xty, n > 0 ? cblas_ddot(n, x, 1, y, 1) : 0.0);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_gemv(qrn_env_t env, qrn_int32 transa, qrn_int32 m, qrn_int32 n,
                                      qrn_real alpha, const qrn_real *a, const qrn_real *x, qrn_real beta,
                                      qrn_real *y) {
  return env_api(env, "QRN_gemv", [&](Env &) {
    const bool t = need_trans(transa, "The transpose flag transa");
    need_dim(m, "The dimension m");
    need_dim(n, "The dimension n");
    const qrn_int64 nx = t ? m : n, ny = t ? n : m;
    need_array(a, qrn_int64(m) * n, "a");
    need_array(x, nx, "x");
    need_array(y, ny, "y");
    if (ny == 0) return;
    if (nx == 0) {  // an empty product: y = beta y
      if (beta == 0.0) std::fill(y, y + ny, 0.0);
      else cblas_dscal(static_cast<int>(ny), beta, y, 1);
      return;
    }
    cblas_dgemv(CblasColMajor, t ? CblasTrans : CblasNoTrans, m, n, alpha, a, ld(m), x, 1, beta, y, 1);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_gemm(qrn_env_t env, qrn_int32 transa, qrn_int32 transb, qrn_int32 m,
                                      qrn_int32 n, qrn_int32 k, qrn_real alpha, const qrn_real *a,
                                      const qrn_real *b, qrn_real beta, qrn_real *c) {
  return env_api(env, "QRN_gemm", [&](Env &) {
    const bool ta = need_trans(transa, "The transpose flag transa");
    const bool tb = need_trans(transb, "The transpose flag transb");
    need_dim(m, "The dimension m");
    need_dim(n, "The dimension n");
    need_dim(k, "The dimension k");
    need_array(a, qrn_int64(m) * k, "a");
    need_array(b, qrn_int64(k) * n, "b");
    need_array(c, qrn_int64(m) * n, "c");
    if (m == 0 || n == 0) return;
    cblas_dgemm(CblasColMajor, ta ? CblasTrans : CblasNoTrans, tb ? CblasTrans : CblasNoTrans, m, n, k, alpha, a,
                ta ? ld(k) : ld(m), b, tb ? ld(n) : ld(k), beta, c, ld(m));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_syrk(qrn_env_t env, qrn_int32 uplo, qrn_int32 trans, qrn_int32 n,
                                      qrn_int32 k, qrn_real alpha, const qrn_real *a, qrn_real beta,
                                      qrn_real *c) {
  return env_api(env, "QRN_syrk", [&](Env &) {
    const bool lower = need_uplo(uplo);
    const bool t = need_trans(trans, "The transpose flag trans");
    need_dim(n, "The dimension n");
    need_dim(k, "The dimension k");
    need_array(a, qrn_int64(n) * k, "a");
    need_array(c, qrn_int64(n) * n, "c");
    if (n == 0) return;
    cblas_dsyrk(CblasColMajor, lower ? CblasLower : CblasUpper, t ? CblasTrans : CblasNoTrans, n, k, alpha, a,
                t ? ld(k) : ld(n), beta, c, ld(n));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_potrf(qrn_env_t env, qrn_int32 uplo, qrn_int32 n, qrn_real *a) {
  return env_api(env, "QRN_potrf", [&](Env &) {
    const bool lower = need_uplo(uplo);
    need_dim(n, "The dimension n");
    need_array(a, qrn_int64(n) * n, "a");
    if (n == 0) return;
    lapack_result(LAPACKE_dpotrf(LAPACK_COL_MAJOR, uplo_char(lower), n, a, ld(n)), 4, "dpotrf", true);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_syeig(qrn_env_t env, qrn_int32 uplo, qrn_int32 n, const qrn_real *a,
                                       qrn_real *w) {
  return env_api(env, "QRN_syeig", [&](Env &) {
    const bool lower = need_uplo(uplo);
    need_dim(n, "The dimension n");
    need_array(a, qrn_int64(n) * n, "a");
    if (n == 0) return;
    // LAPACK destroys the triangle it reads: work on a copy, and into a
    // scratch vector when the caller wants no eigenvalues.
    std::vector<double> work(a, a + size_t(n) * size_t(n));
    std::vector<double> scratch(w == nullptr ? n : 0);
    lapack_result(LAPACKE_dsyev(LAPACK_COL_MAJOR, 'N', uplo_char(lower), n, work.data(), ld(n),
                                w != nullptr ? w : scratch.data()),
                  5, "dsyev", false);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_syevd(qrn_env_t env, qrn_int32 uplo, qrn_int32 n, qrn_real *a, qrn_real *w) {
  return env_api(env, "QRN_syevd", [&](Env &) {
    const bool lower = need_uplo(uplo);
    need_dim(n, "The dimension n");
    // The workspace 1 + 6n + 2n^2 must fit LAPACK's 32-bit sizes.
    if (n > 32767)
      fail(QRN_RES_ERR_LA_DIMENSION, "The dimension n " + std::to_string(n) + " is above 32767, the most syevd takes.");
    need_array(a, qrn_int64(n) * n, "a");
    if (n == 0) return;
    std::vector<double> scratch(w == nullptr ? n : 0);
    lapack_result(LAPACKE_dsyevd(LAPACK_COL_MAJOR, 'V', uplo_char(lower), n, a, ld(n),
                                 w != nullptr ? w : scratch.data()),
                  5, "dsyevd", false);
  });
}

}  // extern "C"
