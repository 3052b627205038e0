// Semidefinite variables and the symmetric matrix store: appending and
// removing variables (renumbering what refers to them), appending and reading
// store matrices, and the helpers that expand weighted sums of them.
#include "conic.hpp"
#include "semidefinite.hpp"

#include <lapacke.h>

#include <algorithm>

namespace qrn {

void check_barvar(const Task &t, qrn_int64 j, const char *what) {
  auto n = static_cast<qrn_int64>(t.sdp.dim.size());
  if (j < 0 || j >= n) fail(QRN_RES_ERR_INDEX_BARVAR, outside(what, j, n));
}

void check_symmat(const Task &t, qrn_int64 idx, const char *what) {
  auto n = static_cast<qrn_int64>(t.sdp.mats.size());
  if (idx < 0 || idx >= n) fail(QRN_RES_ERR_INDEX_SYMMAT, outside(what, idx, n));
}

void check_block(qrn_int32 dim, qrn_int32 k, qrn_int32 l, qrn_int64 pos) {
  std::string at = " (entry " + std::to_string(pos) + ")";
  if (k < 0 || k >= dim || l < 0 || l >= dim)
    fail(QRN_RES_ERR_SYMMAT_RANGE, "Position (" + std::to_string(k) + ", " + std::to_string(l) +
                                       ") is outside a matrix of dimension " + std::to_string(dim) + at + ".");
  if (l > k)
    fail(QRN_RES_ERR_SYMMAT_UPPER, "Position (" + std::to_string(k) + ", " + std::to_string(l) +
                                       ") lies above the diagonal; give the lower triangle" + at + ".");
}

std::vector<Term> make_terms(const Task &t, qrn_int32 dim, qrn_int64 num, const qrn_int64 *sub,
                             const double *weights) {
  need_count(num, "The number of terms");
  need_array(sub, num, "sub");
  need_array(weights, num, "weights");
  std::vector<Term> terms(num);
  for (qrn_int64 k = 0; k < num; ++k) {
    check_symmat(t, sub[k], "Symmetric matrix index");
    qrn_int32 d = t.sdp.mats[sub[k]].dim;
    if (d != dim)
      fail(QRN_RES_ERR_SYMMAT_DIM, "Matrix " + std::to_string(sub[k]) + " has dimension " + std::to_string(d) +
                                       "; the semidefinite variable has " + std::to_string(dim) + ".");
    need_finite(weights[k], "weights", k);
    terms[k] = Term{sub[k], weights[k]};
  }
  return terms;
}

std::vector<BlockEntry> expand(const SdpData &s, const std::vector<Term> &terms) {
  if (terms.size() == 1 && terms[0].weight == 1.0) {
    const SymMat &m = s.mats[terms[0].mat];
    std::vector<BlockEntry> out;
    out.reserve(m.val.size());
    for (size_t p = 0; p < m.val.size(); ++p)
      if (m.val[p] != 0.0) out.push_back(BlockEntry{m.subi[p], m.subj[p], m.val[p]});
    return out;
  }
  std::map<std::pair<qrn_int32, qrn_int32>, double> sum;  // (column, row)
  for (const Term &term : terms) {
    const SymMat &m = s.mats[term.mat];
    for (size_t p = 0; p < m.val.size(); ++p) sum[{m.subj[p], m.subi[p]}] += term.weight * m.val[p];
  }
  std::vector<BlockEntry> out;
  for (auto &[lk, v] : sum)
    if (v != 0.0) out.push_back(BlockEntry{lk.second, lk.first, v});
  return out;
}

qrn_int64 add_symmat(Task &t, qrn_int32 dim, const std::map<std::pair<qrn_int32, qrn_int32>, double> &entries) {
  SymMat m{dim, {}, {}, {}};
  for (auto &[lk, v] : entries) {
    m.subj.push_back(lk.first);
    m.subi.push_back(lk.second);
    m.val.push_back(v);
  }
  t.sdp.mats.push_back(std::move(m));
  return static_cast<qrn_int64>(t.sdp.mats.size()) - 1;
}

double inner(const SdpData &s, const std::vector<Term> &terms, const std::vector<double> &x) {
  double total = 0.0;
  for (const Term &term : terms) {
    const SymMat &m = s.mats[term.mat];
    double sum = 0.0;
    for (size_t p = 0; p < m.val.size(); ++p) {
      double v = m.val[p] * x[packed_pos(m.dim, m.subi[p], m.subj[p])];
      sum += m.subi[p] == m.subj[p] ? v : 2.0 * v;
    }
    total += term.weight * sum;
  }
  return total;
}

std::vector<double> eigenvalues(std::vector<double> x, qrn_int32 d) {
  std::vector<double> w(d);
  if (d == 0) return w;
  lapack_int info = LAPACKE_dspev(LAPACK_COL_MAJOR, 'N', 'L', d, x.data(), w.data(), nullptr, 1);
  if (info != 0)
    fail(QRN_RES_ERR_EIGEN, "The eigenvalues of a " + std::to_string(d) + " x " + std::to_string(d) +
                                " matrix did not converge (LAPACK dspev: " + std::to_string(info) + ").");
  return w;
}

double barc_objective(const Task &t, const Solution &s) {
  double v = 0.0;
  for (auto &[j, terms] : t.sdp.barc)
    if (static_cast<size_t>(j) < s.barx.size()) v += inner(t.sdp, terms, s.barx[j]);
  return v;
}

void align_bar_solution(const Task &t, Solution &s) {
  size_t n = t.sdp.dim.size();
  for (auto *v : {&s.barx, &s.bars}) {
    v->resize(n);
    for (size_t j = 0; j < n; ++j) (*v)[j].resize(packed_len(t.sdp.dim[j]), 0.0);
  }
}

void sdp_remove_cons(Task &t, const std::vector<bool> &remove) {
  if (t.sdp.bara.empty()) return;
  std::vector<qrn_int64> newindex(remove.size());
  qrn_int64 next = 0;
  for (size_t k = 0; k < remove.size(); ++k) newindex[k] = remove[k] ? -1 : next++;
  std::map<qrn_int64, std::vector<Term>> kept;
  for (auto &[key, terms] : t.sdp.bara) {
    qrn_int64 i = key >> 31, j = key & INT32_MAX;
    if (i < static_cast<qrn_int64>(newindex.size()) && newindex[i] >= 0)
      kept.emplace_hint(kept.end(), (newindex[i] << 31) | j, std::move(terms));
  }
  t.sdp.bara = std::move(kept);
}

namespace {

// Matrix from triplets: checked (range, lower triangle, finite, no repeats) and sorted.
SymMat make_symmat(qrn_int32 dim, qrn_int64 nz, const qrn_int32 *subi, const qrn_int32 *subj, const double *valij) {
  if (dim < 0) fail(QRN_RES_ERR_NEGATIVE_COUNT, "The matrix dimension " + std::to_string(dim) + " is negative.");
  need_count(nz, "The number of matrix entries");
  need_array(subi, nz, "subi");
  need_array(subj, nz, "subj");
  need_array(valij, nz, "valij");
  std::vector<qrn_int64> order(nz);
  for (qrn_int64 k = 0; k < nz; ++k) {
    check_block(dim, subi[k], subj[k], k);
    need_finite(valij[k], "valij", k);
    order[k] = k;
  }
  std::sort(order.begin(), order.end(), [&](qrn_int64 a, qrn_int64 b) {
    return subj[a] != subj[b] ? subj[a] < subj[b] : subi[a] < subi[b];
  });
  SymMat m{dim, std::vector<qrn_int32>(nz), std::vector<qrn_int32>(nz), std::vector<double>(nz)};
  for (qrn_int64 p = 0; p < nz; ++p) {
    qrn_int64 k = order[p];
    if (p > 0 && subi[k] == m.subi[p - 1] && subj[k] == m.subj[p - 1])
      fail(QRN_RES_ERR_SYMMAT_REPEATED, "Entry (" + std::to_string(subi[k]) + ", " + std::to_string(subj[k]) +
                                            ") is given twice.");
    m.subi[p] = subi[k];
    m.subj[p] = subj[k];
    m.val[p] = valij[k];
  }
  return m;
}

// Renumbers every reference to semidefinite variables after a removal.
void remove_barvars(Task &t, const std::vector<bool> &remove) {
  std::vector<qrn_int32> newindex(remove.size());
  qrn_int32 next = 0;
  for (size_t k = 0; k < remove.size(); ++k) newindex[k] = remove[k] ? -1 : next++;
  SdpData &s = t.sdp;
  std::vector<qrn_int32> dim;
  for (size_t k = 0; k < remove.size(); ++k)
    if (!remove[k]) dim.push_back(s.dim[k]);
  s.dim = std::move(dim);
  std::map<qrn_int32, std::vector<Term>> barc;
  for (auto &[j, terms] : s.barc)
    if (newindex[j] >= 0) barc.emplace_hint(barc.end(), newindex[j], std::move(terms));
  s.barc = std::move(barc);
  std::map<qrn_int64, std::vector<Term>> bara;
  for (auto &[key, terms] : s.bara) {
    qrn_int64 j = key & INT32_MAX;
    if (newindex[j] >= 0) bara.emplace_hint(bara.end(), (key & ~static_cast<qrn_int64>(INT32_MAX)) | newindex[j],
                                            std::move(terms));
  }
  s.bara = std::move(bara);
  for (auto it = t.conic.afe.barf.begin(); it != t.conic.afe.barf.end();) {
    auto &row = it->second;
    size_t w = 0;
    for (auto &e : row)
      if (newindex[e.barvar] >= 0) row[w++] = BarFEntry{newindex[e.barvar], std::move(e.terms)};
    row.resize(w);
    it = row.empty() ? t.conic.afe.barf.erase(it) : std::next(it);
  }
  for (Solution &sol : t.sol) {
    for (auto *v : {&sol.barx, &sol.bars}) {
      if (v->size() != remove.size()) continue;
      std::vector<std::vector<double>> kept;
      for (size_t k = 0; k < remove.size(); ++k)
        if (!remove[k]) kept.push_back(std::move((*v)[k]));
      *v = std::move(kept);
    }
  }
  t.barvarnames.remap(newindex, next);
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_appendbarvars(qrn_task_t task, qrn_int32 num, const qrn_int32 *dim) {
  return api(task, "QRN_appendbarvars", [&](Task &t) {
    need_count(num, "The number of semidefinite variables");
    need_array(dim, num, "dim");
    if (static_cast<qrn_int64>(t.sdp.dim.size()) + num > INT32_MAX)
      fail(QRN_RES_ERR_ARGUMENT, "The number of semidefinite variables would exceed 2^31-1.");
    for (qrn_int32 k = 0; k < num; ++k)
      if (dim[k] < 1)
        fail(QRN_RES_ERR_BARVAR_DIM, "Dimension " + std::to_string(k) + " is " + std::to_string(dim[k]) +
                                         "; a semidefinite variable needs at least 1.");
    t.sdp.dim.insert(t.sdp.dim.end(), dim, dim + num);
    t.barvarnames.resize(t.sdp.dim.size());
    t.sdp.maxnumbarvar = std::max(t.sdp.maxnumbarvar, static_cast<qrn_int32>(t.sdp.dim.size()));
    for (Solution &s : t.sol)
      if (s.defined) align_bar_solution(t, s);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_removebarvars(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset) {
  return api(task, "QRN_removebarvars", [&](Task &t) {
    remove_barvars(t, removal_mask(num, subset, static_cast<qrn_int32>(t.sdp.dim.size()), QRN_RES_ERR_INDEX_BARVAR,
                                   "Semidefinite variable index"));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumbarvar(qrn_task_t task, qrn_int32 *numbarvar) {
  return api(task, "QRN_getnumbarvar", [&](Task &t) { put(numbarvar, static_cast<qrn_int32>(t.sdp.dim.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getmaxnumbarvar(qrn_task_t task, qrn_int32 *maxnumbarvar) {
  return api(task, "QRN_getmaxnumbarvar", [&](Task &t) { put(maxnumbarvar, t.sdp.maxnumbarvar); });
}

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumbarvar(qrn_task_t task, qrn_int32 maxnumbarvar) {
  return api(task, "QRN_putmaxnumbarvar", [&](Task &t) {
    need_capacity(maxnumbarvar, static_cast<qrn_int64>(t.sdp.dim.size()), "The semidefinite variable capacity");
    t.sdp.maxnumbarvar = maxnumbarvar;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdimbarvarj(qrn_task_t task, qrn_int32 j, qrn_int32 *dimbarvarj) {
  return api(task, "QRN_getdimbarvarj", [&](Task &t) {
    check_barvar(t, j);
    put(dimbarvarj, t.sdp.dim[j]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getlenbarvarj(qrn_task_t task, qrn_int32 j, qrn_int64 *lenbarvarj) {
  return api(task, "QRN_getlenbarvarj", [&](Task &t) {
    check_barvar(t, j);
    put(lenbarvarj, packed_len(t.sdp.dim[j]));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_appendsparsesymmat(qrn_task_t task, qrn_int32 dim, qrn_int64 nz, const qrn_int32 *subi,
                                                    const qrn_int32 *subj, const qrn_real *valij, qrn_int64 *idx) {
  return api(task, "QRN_appendsparsesymmat", [&](Task &t) {
    SymMat m = make_symmat(dim, nz, subi, subj, valij);
    t.sdp.mats.push_back(std::move(m));
    put(idx, static_cast<qrn_int64>(t.sdp.mats.size()) - 1);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_appendsparsesymmatlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *dims,
                                                        const qrn_int64 *nz, const qrn_int32 *subi,
                                                        const qrn_int32 *subj, const qrn_real *valij, qrn_int64 *idx) {
  return api(task, "QRN_appendsparsesymmatlist", [&](Task &t) {
    need_count(num, "The number of matrices");
    need_array(dims, num, "dims");
    need_array(nz, num, "nz");
    std::vector<SymMat> staged;
    staged.reserve(num);
    qrn_int64 at = 0;
    for (qrn_int32 k = 0; k < num; ++k) {
      need_count(nz[k], "The number of matrix entries");
      staged.push_back(make_symmat(dims[k], nz[k], subi == nullptr ? nullptr : subi + at,
                                   subj == nullptr ? nullptr : subj + at, valij == nullptr ? nullptr : valij + at));
      at += nz[k];
    }
    for (qrn_int32 k = 0; k < num; ++k) {
      t.sdp.mats.push_back(std::move(staged[k]));
      if (idx != nullptr) idx[k] = static_cast<qrn_int64>(t.sdp.mats.size()) - 1;
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumsymmat(qrn_task_t task, qrn_int64 *num) {
  return api(task, "QRN_getnumsymmat", [&](Task &t) { put(num, static_cast<qrn_int64>(t.sdp.mats.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getsymmatinfo(qrn_task_t task, qrn_int64 idx, qrn_int32 *dim, qrn_int64 *nz,
                                               qrn_int32 *type) {
  return api(task, "QRN_getsymmatinfo", [&](Task &t) {
    check_symmat(t, idx);
    const SymMat &m = t.sdp.mats[idx];
    put(dim, m.dim);
    put(nz, static_cast<qrn_int64>(m.val.size()));
    put(type, static_cast<qrn_int32>(QRN_SYMMAT_TYPE_SPARSE));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getsparsesymmat(qrn_task_t task, qrn_int64 idx, qrn_int64 maxlen, qrn_int32 *subi,
                                                 qrn_int32 *subj, qrn_real *valij) {
  return api(task, "QRN_getsparsesymmat", [&](Task &t) {
    check_symmat(t, idx);
    const SymMat &m = t.sdp.mats[idx];
    auto nz = static_cast<qrn_int64>(m.val.size());
    if (maxlen < nz)
      fail(QRN_RES_ERR_TOO_SMALL, "Matrix " + std::to_string(idx) + " has " + std::to_string(nz) +
                                      " entries; the capacity is " + std::to_string(maxlen) + ".");
    if (subi != nullptr) std::copy(m.subi.begin(), m.subi.end(), subi);
    if (subj != nullptr) std::copy(m.subj.begin(), m.subj.end(), subj);
    if (valij != nullptr) std::copy(m.val.begin(), m.val.end(), valij);
  });
}

}  // extern "C"
