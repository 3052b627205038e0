// The semidefinite coefficients of the objective (barC_j) and of the
// constraints (barA_ij): weighted sums of store matrices, their sparsity
// patterns, and the block-triplet form of the same data.
//
// Positions: barC_j is at position j, barA_ij at i * 2^31 + j, so positions
// stay put when variables or constraints are appended.
#include "conic.hpp"
#include "semidefinite.hpp"

#include <algorithm>

namespace qrn {
namespace {

constexpr int shift = 31;
qrn_int64 key(qrn_int32 i, qrn_int32 j) { return (static_cast<qrn_int64>(i) << shift) | j; }
qrn_int32 key_i(qrn_int64 k) { return static_cast<qrn_int32>(k >> shift); }
qrn_int32 key_j(qrn_int64 k) { return static_cast<qrn_int32>(k & INT32_MAX); }

std::vector<Term> coef_terms(const Task &t, qrn_int32 j, qrn_int64 num, const qrn_int64 *sub, const double *w) {
  check_barvar(t, j);
  return make_terms(t, t.sdp.dim[j], num, sub, w);
}

template <class Map, class Key>
void set_coef(Map &map, Key k, std::vector<Term> terms) {
  if (terms.empty())
    map.erase(k);
  else
    map[k] = std::move(terms);
}

const std::vector<Term> &barc_at(const Task &t, qrn_int64 idx) {
  auto it = idx < 0 || idx > INT32_MAX ? t.sdp.barc.end() : t.sdp.barc.find(static_cast<qrn_int32>(idx));
  if (it == t.sdp.barc.end())
    fail(QRN_RES_ERR_BAR_POSITION, "Position " + std::to_string(idx) + " names no non-zero barC coefficient.");
  return it->second;
}

const std::vector<Term> &bara_at(const Task &t, qrn_int64 idx) {
  auto it = t.sdp.bara.find(idx);
  if (it == t.sdp.bara.end())
    fail(QRN_RES_ERR_BAR_POSITION, "Position " + std::to_string(idx) + " names no non-zero barA coefficient.");
  return it->second;
}

void copy_terms(const std::vector<Term> &terms, qrn_int64 maxnum, qrn_int64 *sub, double *weights) {
  auto n = static_cast<qrn_int64>(terms.size());
  if (maxnum < n)
    fail(QRN_RES_ERR_TOO_SMALL, "The coefficient has " + std::to_string(n) + " terms; the capacity is " +
                                    std::to_string(maxnum) + ".");
  for (qrn_int64 k = 0; k < n; ++k) {
    if (sub != nullptr) sub[k] = terms[k].mat;
    if (weights != nullptr) weights[k] = terms[k].weight;
  }
}

template <class Map, class Out>
void sparsity(const Map &map, qrn_int64 maxnumnz, qrn_int64 *numnz, Out &&position, qrn_int64 *idx) {
  auto n = static_cast<qrn_int64>(map.size());
  if (maxnumnz < n)
    fail(QRN_RES_ERR_TOO_SMALL, std::to_string(n) + " coefficients are non-zero; the capacity is " +
                                    std::to_string(maxnumnz) + ".");
  put(numnz, n);
  if (idx == nullptr) return;
  qrn_int64 p = 0;
  for (auto &kv : map) idx[p++] = position(kv.first);
}

struct Block {
  qrn_int32 i, j;
  BlockEntry e;
};

template <class Map, class Split>
std::vector<Block> blocks(const Task &t, const Map &map, Split &&split) {
  std::vector<Block> out;
  for (auto &[k, terms] : map) {
    auto [i, j] = split(k);
    for (const BlockEntry &e : expand(t.sdp, terms)) out.push_back(Block{i, j, e});
  }
  return out;
}

std::vector<Block> barc_blocks(const Task &t) {
  return blocks(t, t.sdp.barc, [](qrn_int32 j) { return std::pair<qrn_int32, qrn_int32>(0, j); });
}
std::vector<Block> bara_blocks(const Task &t) {
  return blocks(t, t.sdp.bara, [](qrn_int64 k) { return std::pair<qrn_int32, qrn_int32>(key_i(k), key_j(k)); });
}

void write_blocks(const std::vector<Block> &b, qrn_int64 maxnum, qrn_int64 *numtrip, qrn_int32 *subi,
                  qrn_int32 *subj, qrn_int32 *subk, qrn_int32 *subl, double *val) {
  auto n = static_cast<qrn_int64>(b.size());
  if (maxnum < n)
    fail(QRN_RES_ERR_TOO_SMALL, std::to_string(n) + " block triplets; the capacity is " + std::to_string(maxnum) + ".");
  put(numtrip, n);
  for (qrn_int64 k = 0; k < n; ++k) {
    if (subi != nullptr) subi[k] = b[k].i;
    if (subj != nullptr) subj[k] = b[k].j;
    if (subk != nullptr) subk[k] = b[k].e.k;
    if (subl != nullptr) subl[k] = b[k].e.l;
    if (val != nullptr) val[k] = b[k].e.val;
  }
}

using Entries = std::map<std::pair<qrn_int32, qrn_int32>, double>;

// Sums block triplets per coefficient (i, j); i is 0 for barC.
std::map<std::pair<qrn_int32, qrn_int32>, Entries> gather(const Task &t, qrn_int64 num, const qrn_int32 *subi,
                                                          const qrn_int32 *subj, const qrn_int32 *subk,
                                                          const qrn_int32 *subl, const double *val, const char *valname) {
  need_count(num, "The number of triplets");
  need_array(subj, num, "subj");
  need_array(subk, num, "subk");
  need_array(subl, num, "subl");
  need_array(val, num, valname);
  std::map<std::pair<qrn_int32, qrn_int32>, Entries> out;
  for (qrn_int64 k = 0; k < num; ++k) {
    qrn_int32 i = subi == nullptr ? 0 : subi[k];
    if (subi != nullptr) check_con(t, i);
    check_barvar(t, subj[k]);
    check_block(t.sdp.dim[subj[k]], subk[k], subl[k], k);
    need_finite(val[k], valname, k);
    out[{i, subj[k]}][{subl[k], subk[k]}] += val[k];
  }
  return out;
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_putbarcj(qrn_task_t task, qrn_int32 j, qrn_int64 num, const qrn_int64 *sub,
                                          const qrn_real *weights) {
  return api(task, "QRN_putbarcj", [&](Task &t) { set_coef(t.sdp.barc, j, coef_terms(t, j, num, sub, weights)); });
}

QRN_API qrn_rescode QRN_CALL QRN_putbaraij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_int64 num,
                                           const qrn_int64 *sub, const qrn_real *weights) {
  return api(task, "QRN_putbaraij", [&](Task &t) {
    check_con(t, i);
    set_coef(t.sdp.bara, key(i, j), coef_terms(t, j, num, sub, weights));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putbaraijlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subi,
                                               const qrn_int32 *subj, const qrn_int64 *alphaptrb,
                                               const qrn_int64 *alphaptre, const qrn_int64 *matidx,
                                               const qrn_real *weights) {
  return api(task, "QRN_putbaraijlist", [&](Task &t) {
    need_count(num, "The number of entries");
    need_array(subi, num, "subi");
    need_array(subj, num, "subj");
    need_array(alphaptrb, num, "alphaptrb");
    need_array(alphaptre, num, "alphaptre");
    std::vector<std::vector<Term>> staged(num);
    for (qrn_int32 k = 0; k < num; ++k) {
      check_con(t, subi[k]);
      if (alphaptrb[k] < 0 || alphaptre[k] < alphaptrb[k])
        fail(QRN_RES_ERR_PTR_RANGE, "Entry " + std::to_string(k) + " has alphaptrb " + std::to_string(alphaptrb[k]) +
                                        " and alphaptre " + std::to_string(alphaptre[k]) + ".");
      qrn_int64 n = alphaptre[k] - alphaptrb[k];
      staged[k] = coef_terms(t, subj[k], n, matidx == nullptr ? nullptr : matidx + alphaptrb[k],
                             weights == nullptr ? nullptr : weights + alphaptrb[k]);
    }
    for (qrn_int32 k = 0; k < num; ++k) set_coef(t.sdp.bara, key(subi[k], subj[k]), std::move(staged[k]));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putbararowlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subi,
                                                const qrn_int64 *ptrb, const qrn_int64 *ptre, const qrn_int32 *subj,
                                                const qrn_int64 *nummat, const qrn_int64 *matidx,
                                                const qrn_real *weights) {
  return api(task, "QRN_putbararowlist", [&](Task &t) {
    need_count(num, "The number of rows");
    need_array(subi, num, "subi");
    need_array(ptrb, num, "ptrb");
    need_array(ptre, num, "ptre");
    // Entries 0..reach-1 of subj/nummat are used; the matrices of entry p
    // start after those of the entries before it.
    qrn_int64 reach = 0;
    for (qrn_int32 k = 0; k < num; ++k) {
      check_con(t, subi[k]);
      if (ptrb[k] < 0 || ptre[k] < ptrb[k])
        fail(QRN_RES_ERR_PTR_RANGE, "Row entry " + std::to_string(k) + " has ptrb " + std::to_string(ptrb[k]) +
                                        " and ptre " + std::to_string(ptre[k]) + ".");
      reach = std::max(reach, ptre[k]);
    }
    need_array(subj, reach, "subj");
    need_array(nummat, reach, "nummat");
    std::vector<qrn_int64> first(reach + 1, 0);
    for (qrn_int64 p = 0; p < reach; ++p) {
      need_count(nummat[p], "An entry of nummat");
      first[p + 1] = first[p] + nummat[p];
    }
    std::vector<qrn_int32> rows(subi, subi + num);
    std::sort(rows.begin(), rows.end());
    auto rep = std::adjacent_find(rows.begin(), rows.end());
    if (rep != rows.end()) fail(QRN_RES_ERR_DUP_INDEX, "Constraint " + std::to_string(*rep) + " is listed twice.");
    std::vector<std::map<qrn_int32, std::vector<Term>>> staged(num);
    for (qrn_int32 k = 0; k < num; ++k)
      for (qrn_int64 p = ptrb[k]; p < ptre[k]; ++p) {
        auto terms = coef_terms(t, subj[p], nummat[p], matidx == nullptr ? nullptr : matidx + first[p],
                                weights == nullptr ? nullptr : weights + first[p]);
        if (!staged[k].emplace(subj[p], std::move(terms)).second)
          fail(QRN_RES_ERR_DUP_INDEX, "Semidefinite variable " + std::to_string(subj[p]) + " is listed twice in row " +
                                          std::to_string(subi[k]) + ".");
      }
    auto &bara = t.sdp.bara;
    for (qrn_int32 k = 0; k < num; ++k) {
      bara.erase(bara.lower_bound(key(subi[k], 0)), bara.lower_bound(key(subi[k] + 1, 0)));
      for (auto &[j, terms] : staged[k])
        if (!terms.empty()) bara[key(subi[k], j)] = std::move(terms);
    }
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumbarcnz(qrn_task_t task, qrn_int64 *nz) {
  return api(task, "QRN_getnumbarcnz", [&](Task &t) { put(nz, static_cast<qrn_int64>(t.sdp.barc.size())); });
}
QRN_API qrn_rescode QRN_CALL QRN_getnumbaranz(qrn_task_t task, qrn_int64 *nz) {
  return api(task, "QRN_getnumbaranz", [&](Task &t) { put(nz, static_cast<qrn_int64>(t.sdp.bara.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getbarcsparsity(qrn_task_t task, qrn_int64 maxnumnz, qrn_int64 *numnz,
                                                 qrn_int64 *idxj) {
  return api(task, "QRN_getbarcsparsity",
             [&](Task &t) { sparsity(t.sdp.barc, maxnumnz, numnz, [](qrn_int32 j) { return qrn_int64(j); }, idxj); });
}
QRN_API qrn_rescode QRN_CALL QRN_getbarasparsity(qrn_task_t task, qrn_int64 maxnumnz, qrn_int64 *numnz,
                                                 qrn_int64 *idxij) {
  return api(task, "QRN_getbarasparsity",
             [&](Task &t) { sparsity(t.sdp.bara, maxnumnz, numnz, [](qrn_int64 k) { return k; }, idxij); });
}

QRN_API qrn_rescode QRN_CALL QRN_getbarcidxinfo(qrn_task_t task, qrn_int64 idx, qrn_int64 *num) {
  return api(task, "QRN_getbarcidxinfo", [&](Task &t) { put(num, static_cast<qrn_int64>(barc_at(t, idx).size())); });
}
QRN_API qrn_rescode QRN_CALL QRN_getbarcidxj(qrn_task_t task, qrn_int64 idx, qrn_int32 *j) {
  return api(task, "QRN_getbarcidxj", [&](Task &t) {
    barc_at(t, idx);
    put(j, static_cast<qrn_int32>(idx));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getbarcidx(qrn_task_t task, qrn_int64 idx, qrn_int64 maxnum, qrn_int32 *j,
                                            qrn_int64 *num, qrn_int64 *sub, qrn_real *weights) {
  return api(task, "QRN_getbarcidx", [&](Task &t) {
    const auto &terms = barc_at(t, idx);
    copy_terms(terms, maxnum, sub, weights);
    put(j, static_cast<qrn_int32>(idx));
    put(num, static_cast<qrn_int64>(terms.size()));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getbaraidxinfo(qrn_task_t task, qrn_int64 idx, qrn_int64 *num) {
  return api(task, "QRN_getbaraidxinfo", [&](Task &t) { put(num, static_cast<qrn_int64>(bara_at(t, idx).size())); });
}
QRN_API qrn_rescode QRN_CALL QRN_getbaraidxij(qrn_task_t task, qrn_int64 idx, qrn_int32 *i, qrn_int32 *j) {
  return api(task, "QRN_getbaraidxij", [&](Task &t) {
    bara_at(t, idx);
    put(i, key_i(idx));
    put(j, key_j(idx));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getbaraidx(qrn_task_t task, qrn_int64 idx, qrn_int64 maxnum, qrn_int32 *i,
                                            qrn_int32 *j, qrn_int64 *num, qrn_int64 *sub, qrn_real *weights) {
  return api(task, "QRN_getbaraidx", [&](Task &t) {
    const auto &terms = bara_at(t, idx);
    copy_terms(terms, maxnum, sub, weights);
    put(i, key_i(idx));
    put(j, key_j(idx));
    put(num, static_cast<qrn_int64>(terms.size()));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putbarcblocktriplet(qrn_task_t task, qrn_int64 num, const qrn_int32 *subj,
                                                     const qrn_int32 *subk, const qrn_int32 *subl,
                                                     const qrn_real *valjkl) {
  return api(task, "QRN_putbarcblocktriplet", [&](Task &t) {
    for (auto &[ij, entries] : gather(t, num, nullptr, subj, subk, subl, valjkl, "valjkl"))
      t.sdp.barc[ij.second] = {Term{add_symmat(t, t.sdp.dim[ij.second], entries), 1.0}};
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putbarablocktriplet(qrn_task_t task, qrn_int64 num, const qrn_int32 *subi,
                                                     const qrn_int32 *subj, const qrn_int32 *subk,
                                                     const qrn_int32 *subl, const qrn_real *valijkl) {
  return api(task, "QRN_putbarablocktriplet", [&](Task &t) {
    need_array(subi, num, "subi");
    for (auto &[ij, entries] : gather(t, num, subi, subj, subk, subl, valijkl, "valijkl"))
      t.sdp.bara[key(ij.first, ij.second)] = {Term{add_symmat(t, t.sdp.dim[ij.second], entries), 1.0}};
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumbarcblocktriplets(qrn_task_t task, qrn_int64 *num) {
  return api(task, "QRN_getnumbarcblocktriplets",
             [&](Task &t) { put(num, static_cast<qrn_int64>(barc_blocks(t).size())); });
}
QRN_API qrn_rescode QRN_CALL QRN_getnumbarablocktriplets(qrn_task_t task, qrn_int64 *num) {
  return api(task, "QRN_getnumbarablocktriplets",
             [&](Task &t) { put(num, static_cast<qrn_int64>(bara_blocks(t).size())); });
}
QRN_API qrn_rescode QRN_CALL QRN_getbarcblocktriplet(qrn_task_t task, qrn_int64 maxnum, qrn_int64 *numtrip,
                                                     qrn_int32 *subj, qrn_int32 *subk, qrn_int32 *subl,
                                                     qrn_real *valjkl) {
  return api(task, "QRN_getbarcblocktriplet", [&](Task &t) {
    write_blocks(barc_blocks(t), maxnum, numtrip, nullptr, subj, subk, subl, valjkl);
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getbarablocktriplet(qrn_task_t task, qrn_int64 maxnum, qrn_int64 *numtrip,
                                                     qrn_int32 *subi, qrn_int32 *subj, qrn_int32 *subk,
                                                     qrn_int32 *subl, qrn_real *valijkl) {
  return api(task, "QRN_getbarablocktriplet", [&](Task &t) {
    write_blocks(bara_blocks(t), maxnum, numtrip, subi, subj, subk, subl, valijkl);
  });
}

}  // extern "C"
