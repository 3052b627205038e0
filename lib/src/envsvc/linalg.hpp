// Checks shared by the dense and sparse linear-algebra routines of an
// environment. Each throws a Failure naming the offending argument.
#pragma once

#include "errors.hpp"

#include <string>

namespace qrn {

inline void need_dim(qrn_int64 v, const char *what) {
  if (v < 0) fail(QRN_RES_ERR_LA_DIMENSION, std::string(what) + " is negative (" + std::to_string(v) + ").");
}

// True for QRN_TRANSPOSE_YES, false for QRN_TRANSPOSE_NO.
inline bool need_trans(qrn_int32 flag, const char *what) {
  if (flag != QRN_TRANSPOSE_NO && flag != QRN_TRANSPOSE_YES)
    fail(QRN_RES_ERR_LA_TRANSPOSE, std::string(what) + " " + std::to_string(flag) +
                                       " is neither QRN_TRANSPOSE_NO (0) nor QRN_TRANSPOSE_YES (1).");
  return flag == QRN_TRANSPOSE_YES;
}

// True for QRN_UPLO_LO, false for QRN_UPLO_UP.
inline bool need_uplo(qrn_int32 uplo) {
  if (uplo != QRN_UPLO_LO && uplo != QRN_UPLO_UP)
    fail(QRN_RES_ERR_LA_UPLO,
         "The triangle selector " + std::to_string(uplo) + " is neither QRN_UPLO_LO (0) nor QRN_UPLO_UP (1).");
  return uplo == QRN_UPLO_LO;
}

}  // namespace qrn
