// Cones over scalar variables: append, replace, remove and read back.
//
// Task::var_cone names the cone of every variable (-1 for none), so that a
// variable can be found in at most one cone. Every cone is checked completely
// before the task changes.
#include "errors.hpp"

#include <algorithm>

namespace qrn {
namespace {

qrn_int32 least_members(qrn_int32 ct) {
  switch (ct) {
    case QRN_CONE_QUAD: return 1;
    case QRN_CONE_RQUAD: return 2;
    default: fail(QRN_RES_ERR_CONE_TYPE, "Cone type " + std::to_string(ct) + " is not one of 0..1.");
  }
}

// A cone that is to become cone k (k == the number of cones for a new one):
// its members may come from cone k itself but from no other cone.
Cone make_cone(const Task &t, qrn_int64 k, qrn_int32 ct, double par, std::vector<qrn_int32> members) {
  qrn_int32 least = least_members(ct);
  if (std::isnan(par)) fail(QRN_RES_ERR_CONE_PARAMETER, "The cone parameter is NaN.");
  if (static_cast<qrn_int64>(members.size()) < least)
    fail(QRN_RES_ERR_CONE_SIZE, "A cone of type " + std::to_string(ct) + " needs at least " + std::to_string(least) +
                                    " members; " + std::to_string(members.size()) + " given.");
  for (qrn_int32 j : members) {
    check_var(t, j, "Cone member");
    qrn_int32 other = t.var_cone[j];
    if (other >= 0 && other != k)
      fail(QRN_RES_ERR_CONE_OVERLAP,
           "Variable " + std::to_string(j) + " is already a member of cone " + std::to_string(other) + ".");
  }
  std::vector<qrn_int32> sorted = members;
  std::sort(sorted.begin(), sorted.end());
  auto rep = std::adjacent_find(sorted.begin(), sorted.end());
  if (rep != sorted.end())
    fail(QRN_RES_ERR_CONE_REP_VAR, "Variable " + std::to_string(*rep) + " occurs twice among the cone's members.");
  return Cone{ct, par, std::move(members)};
}

std::vector<qrn_int32> member_list(qrn_int32 nummem, const qrn_int32 *submem) {
  need_count(nummem, "The number of cone members");
  need_array(submem, nummem, "submem");
  return std::vector<qrn_int32>(submem, submem + nummem);
}

void append(Task &t, std::vector<Cone> fresh) {
  if (static_cast<qrn_int64>(t.cones.size()) + static_cast<qrn_int64>(fresh.size()) > INT32_MAX)
    fail(QRN_RES_ERR_ARGUMENT, "The number of cones would exceed 2^31-1.");
  for (auto &cone : fresh) {
    auto k = static_cast<qrn_int32>(t.cones.size());
    for (qrn_int32 j : cone.members) t.var_cone[j] = k;
    t.cones.push_back(std::move(cone));
  }
  t.conenames.resize(t.cones.size());
  t.maxnumcone = std::max(t.maxnumcone, static_cast<qrn_int32>(t.cones.size()));
}

// num cones over consecutive variables from j on; cone k has nummem[k] members.
void append_seq(Task &t, qrn_int32 num, const qrn_int32 *ct, const double *conepar, const qrn_int32 *nummem,
                qrn_int32 j) {
  need_count(num, "The number of cones");
  need_array(ct, num, "ct");
  need_array(conepar, num, "conepar");
  need_array(nummem, num, "nummem");
  std::vector<Cone> fresh;
  fresh.reserve(num);
  qrn_int64 next = j;
  for (qrn_int32 k = 0; k < num; ++k) {
    need_count(nummem[k], "The number of cone members");
    if (next < 0 || next + nummem[k] > t.numvar)
      fail(QRN_RES_ERR_INDEX_VAR, "The members " + std::to_string(next) + ".." + std::to_string(next + nummem[k] - 1) +
                                      " of a cone are not all inside 0.." + std::to_string(t.numvar - 1) + ".");
    std::vector<qrn_int32> members(nummem[k]);
    for (qrn_int32 m = 0; m < nummem[k]; ++m) members[m] = static_cast<qrn_int32>(next + m);
    fresh.push_back(make_cone(t, static_cast<qrn_int64>(t.cones.size()) + k, ct[k], conepar[k], std::move(members)));
    next += nummem[k];
  }
  append(t, std::move(fresh));
}

void read_cone(const Task &t, qrn_int32 k, qrn_int32 *ct, double *conepar, qrn_int32 *nummem, qrn_int32 *submem) {
  check_cone(t, k);
  const Cone &cone = t.cones[k];
  put(ct, cone.type);
  put(conepar, cone.par);
  put(nummem, static_cast<qrn_int32>(cone.members.size()));
  if (submem != nullptr) std::copy(cone.members.begin(), cone.members.end(), submem);
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_getnumcone(qrn_task_t task, qrn_int32 *numcone) {
  return api(task, "QRN_getnumcone", [&](Task &t) { put(numcone, static_cast<qrn_int32>(t.cones.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumcone(qrn_task_t task, qrn_int32 maxnumcone) {
  return api(task, "QRN_putmaxnumcone", [&](Task &t) {
    need_capacity(maxnumcone, static_cast<qrn_int64>(t.cones.size()), "The cone capacity");
    t.maxnumcone = maxnumcone;  // a hint: storage grows when cones are appended
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getmaxnumcone(qrn_task_t task, qrn_int32 *maxnumcone) {
  return api(task, "QRN_getmaxnumcone", [&](Task &t) { put(maxnumcone, t.maxnumcone); });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumconemem(qrn_task_t task, qrn_int32 k, qrn_int32 *nummem) {
  return api(task, "QRN_getnumconemem", [&](Task &t) {
    check_cone(t, k);
    put(nummem, static_cast<qrn_int32>(t.cones[k].members.size()));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_appendcone(qrn_task_t task, qrn_int32 ct, qrn_real conepar, qrn_int32 nummem,
                                            const qrn_int32 *submem) {
  return api(task, "QRN_appendcone", [&](Task &t) {
    std::vector<Cone> fresh;
    fresh.push_back(make_cone(t, t.cones.size(), ct, conepar, member_list(nummem, submem)));
    append(t, std::move(fresh));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_appendconeseq(qrn_task_t task, qrn_int32 ct, qrn_real conepar, qrn_int32 nummem,
                                               qrn_int32 j) {
  return api(task, "QRN_appendconeseq", [&](Task &t) { append_seq(t, 1, &ct, &conepar, &nummem, j); });
}

QRN_API qrn_rescode QRN_CALL QRN_appendconesseq(qrn_task_t task, qrn_int32 num, const qrn_int32 *ct,
                                                const qrn_real *conepar, const qrn_int32 *nummem, qrn_int32 j) {
  return api(task, "QRN_appendconesseq", [&](Task &t) { append_seq(t, num, ct, conepar, nummem, j); });
}

QRN_API qrn_rescode QRN_CALL QRN_putcone(qrn_task_t task, qrn_int32 k, qrn_int32 ct, qrn_real conepar,
                                         qrn_int32 nummem, const qrn_int32 *submem) {
  return api(task, "QRN_putcone", [&](Task &t) {
    check_cone(t, k);
    Cone cone = make_cone(t, k, ct, conepar, member_list(nummem, submem));
    for (qrn_int32 j : t.cones[k].members) t.var_cone[j] = -1;
    for (qrn_int32 j : cone.members) t.var_cone[j] = k;
    t.cones[k] = std::move(cone);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_removecones(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset) {
  return api(task, "QRN_removecones", [&](Task &t) {
    t.remove_cones(
        removal_mask(num, subset, static_cast<qrn_int32>(t.cones.size()), QRN_RES_ERR_INDEX_CONE, "Cone index"));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getconeinfo(qrn_task_t task, qrn_int32 k, qrn_int32 *ct, qrn_real *conepar,
                                             qrn_int32 *nummem) {
  return api(task, "QRN_getconeinfo", [&](Task &t) { read_cone(t, k, ct, conepar, nummem, nullptr); });
}

QRN_API qrn_rescode QRN_CALL QRN_getcone(qrn_task_t task, qrn_int32 k, qrn_int32 *ct, qrn_real *conepar,
                                         qrn_int32 *nummem, qrn_int32 *submem) {
  return api(task, "QRN_getcone", [&](Task &t) { read_cone(t, k, ct, conepar, nummem, submem); });
}

}  // extern "C"
