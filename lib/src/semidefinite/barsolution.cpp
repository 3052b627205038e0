// Solution values of semidefinite variables (barx, bars) and their violations.
#include "conic.hpp"
#include "semidefinite.hpp"

#include <algorithm>

namespace qrn {
namespace {

using Values = std::vector<std::vector<double>> Solution::*;

qrn_rescode get_j(qrn_task_t task, const char *fn, Values which, qrn_int32 whichsol, qrn_int32 j, double *out) {
  return api(task, fn, [&](Task &t) {
    check_barvar(t, j);
    const Solution &s = conic_solution(t, whichsol);
    if (out != nullptr) std::copy((s.*which)[j].begin(), (s.*which)[j].end(), out);
  });
}

qrn_rescode put_j(qrn_task_t task, const char *fn, Values which, const char *what, qrn_int32 whichsol, qrn_int32 j,
                  const double *in) {
  return api(task, fn, [&](Task &t) {
    check_barvar(t, j);
    qrn_int64 n = packed_len(t.sdp.dim[j]);
    need_array(in, n, what);
    for (qrn_int64 k = 0; k < n; ++k) need_finite(in[k], what, k);
    Solution &s = define_solution(t, whichsol);
    std::copy(in, in + n, (s.*which)[j].begin());
  });
}

qrn_rescode get_slice(qrn_task_t task, const char *fn, Values which, qrn_int32 whichsol, qrn_int32 first,
                      qrn_int32 last, qrn_int64 slicesize, double *out) {
  return api(task, fn, [&](Task &t) {
    check_slice(first, last, static_cast<qrn_int64>(t.sdp.dim.size()), "semidefinite variable");
    qrn_int64 need = 0;
    for (qrn_int32 j = first; j < last; ++j) need += packed_len(t.sdp.dim[j]);
    if (slicesize < need)
      fail(QRN_RES_ERR_TOO_SMALL, "The slice holds " + std::to_string(need) + " values; slicesize is " +
                                      std::to_string(slicesize) + ".");
    const Solution &s = conic_solution(t, whichsol);
    if (out == nullptr) return;
    for (qrn_int32 j = first; j < last; ++j) out = std::copy((s.*which)[j].begin(), (s.*which)[j].end(), out);
  });
}

qrn_rescode viol(qrn_task_t task, const char *fn, Values which, qrn_int32 whichsol, qrn_int32 num,
                 const qrn_int32 *sub, double *out) {
  return api(task, fn, [&](Task &t) {
    need_count(num, "The number of semidefinite variables");
    need_array(sub, num, "sub");
    for (qrn_int32 k = 0; k < num; ++k) check_barvar(t, sub[k]);
    const Solution &s = conic_solution(t, whichsol);
    if (out == nullptr) return;
    // bars is PSD when minimizing and negative semidefinite when maximizing.
    const double sign = which == &Solution::bars && t.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? -1.0 : 1.0;
    for (qrn_int32 k = 0; k < num; ++k) {
      std::vector<double> v = (s.*which)[sub[k]];
      for (double &e : v) e *= sign;
      out[k] = std::max(0.0, -eigenvalues(std::move(v), t.sdp.dim[sub[k]]).front());
    }
  });
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_getbarxj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j, qrn_real *barxj) {
  return get_j(task, "QRN_getbarxj", &Solution::barx, whichsol, j, barxj);
}
QRN_API qrn_rescode QRN_CALL QRN_getbarsj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j, qrn_real *barsj) {
  return get_j(task, "QRN_getbarsj", &Solution::bars, whichsol, j, barsj);
}
QRN_API qrn_rescode QRN_CALL QRN_putbarxj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j, const qrn_real *barxj) {
  return put_j(task, "QRN_putbarxj", &Solution::barx, "barxj", whichsol, j, barxj);
}
QRN_API qrn_rescode QRN_CALL QRN_putbarsj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j, const qrn_real *barsj) {
  return put_j(task, "QRN_putbarsj", &Solution::bars, "barsj", whichsol, j, barsj);
}
QRN_API qrn_rescode QRN_CALL QRN_getbarxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first, qrn_int32 last,
                                              qrn_int64 slicesize, qrn_real *barxslice) {
  return get_slice(task, "QRN_getbarxslice", &Solution::barx, whichsol, first, last, slicesize, barxslice);
}
QRN_API qrn_rescode QRN_CALL QRN_getbarsslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first, qrn_int32 last,
                                              qrn_int64 slicesize, qrn_real *barsslice) {
  return get_slice(task, "QRN_getbarsslice", &Solution::bars, whichsol, first, last, slicesize, barsslice);
}
QRN_API qrn_rescode QRN_CALL QRN_getpviolbarvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                                const qrn_int32 *sub, qrn_real *viol) {
  return qrn::viol(task, "QRN_getpviolbarvar", &Solution::barx, whichsol, num, sub, viol);
}
QRN_API qrn_rescode QRN_CALL QRN_getdviolbarvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                                const qrn_int32 *sub, qrn_real *viol) {
  return qrn::viol(task, "QRN_getdviolbarvar", &Solution::bars, whichsol, num, sub, viol);
}

}  // extern "C"
