// Environment services through the C interface: null handles and arrays,
// failures reported on the environment's error stream, the code table, and
// the sparse Cholesky factor's memory.
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "fixture.hpp"

namespace {

struct EnvFixture {
  qrn_env_t env = nullptr;
  Capture err;
  EnvFixture() {
    CHECK_EQ(QRN_makeenv(&env, nullptr), QRN_RES_OK);
    CHECK_EQ(QRN_linkfunctoenvstream(env, QRN_STREAM_ERR, &err, Capture::take), QRN_RES_OK);
  }
  ~EnvFixture() { QRN_deleteenv(&env); }
};

}  // namespace

TEST(env_services_refuse_null_env_and_arrays) {
  double x[2] = {1, 2}, y[2] = {3, 4}, r = -1;
  CHECK_EQ(QRN_dot(nullptr, 2, x, y, &r), QRN_RES_ERR_NULL_ENV);
  CHECK_EQ(QRN_axpy(nullptr, 2, 1.0, x, y), QRN_RES_ERR_NULL_ENV);
  CHECK_EQ(QRN_echointro(nullptr, 1), QRN_RES_ERR_NULL_ENV);
  CHECK_EQ(QRN_freeenv(nullptr, nullptr), QRN_RES_ERR_NULL_ENV);

  EnvFixture f;
  CHECK_EQ(QRN_dot(f.env, 2, x, y, &r), QRN_RES_OK);
  CHECK_EQ(r, 11.0);
  CHECK_EQ(QRN_dot(f.env, 2, x, y, nullptr), QRN_RES_OK);  // no output wanted
  CHECK_EQ(QRN_dot(f.env, 2, nullptr, y, &r), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_gemv(f.env, QRN_TRANSPOSE_NO, 2, 2, 1.0, x, nullptr, 0.0, y), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_potrf(f.env, QRN_UPLO_UP, -2, nullptr), QRN_RES_ERR_LA_DIMENSION);
  CHECK_EQ(QRN_syevd(f.env, QRN_UPLO_LO, 40000, nullptr, nullptr), QRN_RES_ERR_LA_DIMENSION);
  CHECK_EQ(QRN_syrk(f.env, QRN_UPLO_LO, 3, 1, 1, 1.0, x, 0.0, y), QRN_RES_ERR_LA_TRANSPOSE);
  // each failure is reported on the environment's error stream
  CHECK_EQ(f.err.lines.size(), size_t(5));
  CHECK(f.err.lines.back().find("QRN_syrk") == 0);
  CHECK(f.err.lines.back().find("2201") != std::string::npos);
  CHECK_EQ(QRN_freeenv(f.env, nullptr), QRN_RES_OK);
}

TEST(code_table_is_served_whole) {
  std::set<qrn_rescode> seen;
  char name[QRN_MAX_STR_LEN], text[QRN_MAX_STR_LEN];
#define QRN_X_CHECK(sym, value, desc)                                       \
  CHECK(seen.insert(value).second);                                         \
  CHECK_EQ(QRN_getcodedesc(value, name, text), QRN_RES_OK);                 \
  CHECK_EQ(std::string(name), std::string(#sym));                           \
  CHECK_EQ(std::string(text), std::string(desc));
  QRN_RESPONSE_CODES(QRN_X_CHECK)
#undef QRN_X_CHECK
  CHECK_EQ(QRN_getcodedesc(QRN_RES_ERR_LA_SINGULAR, nullptr, nullptr), QRN_RES_OK);
  std::strcpy(name, "unchanged");
  CHECK_EQ(QRN_getcodedesc(999999, name, text), QRN_RES_ERR_UNKNOWN_RESCODE);
  CHECK_EQ(std::string(name), std::string("unchanged"));
  qrn_int32 v[3] = {0, 0, 0};
  CHECK_EQ(QRN_getversion(&v[0], &v[1], nullptr), QRN_RES_OK);
  CHECK_EQ(v[0], QRN_VERSION_MAJOR);
  CHECK_EQ(v[1], QRN_VERSION_MINOR);
}

TEST(sparse_cholesky_outputs_and_failures) {
  EnvFixture f;
  // A = [[4, 2, 0], [2, 5, 1], [0, 1, 3]], lower triangle by columns.
  qrn_int32 nz[3] = {2, 2, 1}, sub[5] = {0, 1, 1, 2, 2};
  qrn_int64 ptr[3] = {0, 2, 4};
  double val[5] = {4, 2, 5, 1, 3};
  qrn_int32 *perm = nullptr, *lnzc = nullptr, *lsubc = nullptr;
  qrn_int64 *lptrc = nullptr, nnz = -1;
  double *diag = nullptr, *lvalc = nullptr;
  CHECK_EQ(QRN_computesparsecholesky(f.env, QRN_CHOLESKY_ORDER_NATURAL, QRN_CHOLESKY_REGULARIZE_NONE, 0.0, 3, nz,
                                     ptr, sub, val, &perm, &diag, &lnzc, &lptrc, &nnz, &lsubc, &lvalc),
           QRN_RES_OK);
  CHECK_EQ(nnz, qrn_int64(5));
  CHECK_EQ(std::vector<qrn_int32>(perm, perm + 3), (std::vector<qrn_int32>{0, 1, 2}));
  CHECK_EQ(std::vector<qrn_int32>(lsubc, lsubc + 5), (std::vector<qrn_int32>{0, 1, 1, 2, 2}));
  CHECK(std::fabs(lvalc[0] - 2.0) < 1e-15 && std::fabs(lvalc[1] - 1.0) < 1e-15);
  CHECK(std::fabs(lvalc[2] - 2.0) < 1e-15 && std::fabs(lvalc[3] - 0.5) < 1e-15);
  // solve A x = b with b = A (1, 1, 1)' = (6, 8, 4)'
  double b[3] = {6, 8, 4};
  CHECK_EQ(QRN_sparsetriangularsolvedense(f.env, QRN_TRANSPOSE_NO, 3, lnzc, lptrc, nnz, lsubc, lvalc, b), QRN_RES_OK);
  CHECK_EQ(QRN_sparsetriangularsolvedense(f.env, QRN_TRANSPOSE_YES, 3, lnzc, lptrc, nnz, lsubc, lvalc, b),
           QRN_RES_OK);
  for (double v : b) CHECK(std::fabs(v - 1.0) < 1e-14);
  for (void *p : {static_cast<void *>(perm), static_cast<void *>(diag), static_cast<void *>(lnzc),
                  static_cast<void *>(lptrc), static_cast<void *>(lsubc), static_cast<void *>(lvalc)})
    CHECK_EQ(QRN_freeenv(f.env, p), QRN_RES_OK);

  // Only some results wanted: the others are freed by the library.
  CHECK_EQ(QRN_computesparsecholesky(f.env, QRN_CHOLESKY_ORDER_AMD, QRN_CHOLESKY_REGULARIZE_NONE, 0.0, 3, nz, ptr,
                                     sub, val, &perm, nullptr, nullptr, nullptr, &nnz, nullptr, nullptr),
           QRN_RES_OK);
  CHECK(perm != nullptr);
  QRN_freeenv(f.env, perm);

  // A failure hands out nothing.
  val[2] = 0.5;  // [[4, 2], [2, 0.5]] is not positive definite
  perm = reinterpret_cast<qrn_int32 *>(&nnz);
  CHECK_EQ(QRN_computesparsecholesky(f.env, QRN_CHOLESKY_ORDER_AMD, QRN_CHOLESKY_REGULARIZE_NONE, 0.0, 3, nz, ptr,
                                     sub, val, &perm, &diag, &lnzc, &lptrc, &nnz, &lsubc, &lvalc),
           QRN_RES_ERR_LA_NOT_POSDEF);
  CHECK(perm == nullptr && diag == nullptr && lsubc == nullptr && lvalc == nullptr && nnz == 0);
  CHECK(f.err.text.find("not positive definite") != std::string::npos);
}
