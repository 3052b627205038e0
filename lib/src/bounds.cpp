// Bounds of constraints and variables, the linear objective and variable types.
#include "errors.hpp"

namespace qrn {

Bound make_bound(qrn_int32 bk, double bl, double bu, const char *what) {
  if (bk < QRN_BK_FREE || bk > QRN_BK_RANGED)
    fail(QRN_RES_ERR_BOUND_KEY, std::string("Bound key ") + std::to_string(bk) + " of " + what + " is not one of 0..4.");
  if (std::isnan(bl) || std::isnan(bu)) fail(QRN_RES_ERR_VALUE_NAN, std::string("A bound of ") + what + " is NaN.");
  Bound b;
  b.bk = bk;
  bool lower = bk == QRN_BK_LOWER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED;
  bool upper = bk == QRN_BK_UPPER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED;
  if (lower) {
    if (std::fabs(bl) >= QRN_INFINITY)
      fail(QRN_RES_ERR_BOUND_INFINITE, std::string("The lower bound of ") + what + " must be finite for its key.");
    b.bl = bl;
  }
  if (upper) {
    if (std::fabs(bu) >= QRN_INFINITY)
      fail(QRN_RES_ERR_BOUND_INFINITE, std::string("The upper bound of ") + what + " must be finite for its key.");
    b.bu = bu;
  }
  return b;
}

}  // namespace qrn
