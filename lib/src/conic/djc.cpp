// Disjunctive constraints: writing and reading them whole, as slices and as
// concatenated lists.
#include "conic.hpp"

#include <algorithm>
#include <numeric>

namespace qrn {

void check_djc(const Task &t, qrn_int64 k, const char *what) {
  auto n = static_cast<qrn_int64>(t.conic.djcs.size());
  if (k < 0 || k >= n) fail(QRN_RES_ERR_INDEX_DJC, outside(what, k, n));
}

namespace {

// A DJC from d domains, k expressions with b, and t term sizes; all checked.
Djc make_djc(const Task &task, qrn_int64 d, const qrn_int64 *dom, qrn_int64 k, const qrn_int64 *afe, const double *b,
             qrn_int64 t, const qrn_int64 *termsize) {
  need_count(d, "The number of domains");
  need_count(k, "The number of affine expressions");
  need_count(t, "The number of terms");
  need_array(dom, d, "domidxlist");
  need_array(afe, k, "afeidxlist");
  need_array(termsize, t, "termsizelist");
  qrn_int64 domains = 0;
  for (qrn_int64 i = 0; i < t; ++i) {
    if (termsize[i] < 1)
      fail(QRN_RES_ERR_DJC_TERMS, "Term " + std::to_string(i) + " has " + std::to_string(termsize[i]) +
                                      " domains; a term needs at least one.");
    domains += termsize[i];
    if (domains > d) break;
  }
  if (domains != d)
    fail(QRN_RES_ERR_DJC_TERMS, "The term sizes add up to " + std::to_string(domains) + " (or more); " +
                                    std::to_string(d) + " domains given.");
  qrn_int64 dims = 0;
  for (qrn_int64 i = 0; i < d; ++i) {
    check_domain(task, dom[i]);
    dims += task.conic.domains[dom[i]].n;
  }
  if (dims != k)
    fail(QRN_RES_ERR_ACC_SIZE, "The domains have dimensions summing to " + std::to_string(dims) + "; " +
                                   std::to_string(k) + " affine expressions given.");
  Djc djc{std::vector<qrn_int64>(dom, dom + d), std::vector<qrn_int64>(afe, afe + k), std::vector<double>(k, 0.0),
          std::vector<qrn_int64>(termsize, termsize + t)};
  for (qrn_int64 i = 0; i < k; ++i) check_afe(task, afe[i]);
  if (b != nullptr)
    for (qrn_int64 i = 0; i < k; ++i) need_finite(djc.b[i] = b[i], "b", i);
  return djc;
}

template <class Sum>
qrn_int64 total(const Task &t, Sum &&sum) {
  qrn_int64 n = 0;
  for (const Djc &djc : t.conic.djcs) n += sum(djc);
  return n;
}

template <class V>
void copy_out(const V &v, typename V::value_type *out) {
  if (out != nullptr) std::copy(v.begin(), v.end(), out);
}

}  // namespace

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumdjc(qrn_task_t task, qrn_int64 maxnumdjc) {
  return api(task, "QRN_putmaxnumdjc", [&](Task &t) {
    need_capacity(maxnumdjc, static_cast<qrn_int64>(t.conic.djcs.size()), "The DJC capacity");
    t.conic.maxnumdjc = maxnumdjc;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumdjc(qrn_task_t task, qrn_int64 *num) {
  return api(task, "QRN_getnumdjc", [&](Task &t) { put(num, static_cast<qrn_int64>(t.conic.djcs.size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_appenddjcs(qrn_task_t task, qrn_int64 num) {
  return api(task, "QRN_appenddjcs", [&](Task &t) {
    need_count(num, "The number of DJCs to append");
    if (num > INT32_MAX - static_cast<qrn_int64>(t.conic.djcs.size()))
      fail(QRN_RES_ERR_ARGUMENT, "The number of DJCs would exceed 2^31-1.");
    t.conic.djcs.resize(t.conic.djcs.size() + num);
    t.djcnames.resize(t.conic.djcs.size());
    t.conic.maxnumdjc = std::max<qrn_int64>(t.conic.maxnumdjc, t.conic.djcs.size());
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putdjc(qrn_task_t task, qrn_int64 djcidx, qrn_int64 numdomidx,
                                        const qrn_int64 *domidxlist, qrn_int64 numafeidx, const qrn_int64 *afeidxlist,
                                        const qrn_real *b, qrn_int64 numterms, const qrn_int64 *termsizelist) {
  return api(task, "QRN_putdjc", [&](Task &t) {
    check_djc(t, djcidx);
    t.conic.djcs[djcidx] = make_djc(t, numdomidx, domidxlist, numafeidx, afeidxlist, b, numterms, termsizelist);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putdjcslice(qrn_task_t task, qrn_int64 idxfirst, qrn_int64 idxlast,
                                             qrn_int64 numdomidx, const qrn_int64 *domidxlist, qrn_int64 numafeidx,
                                             const qrn_int64 *afeidxlist, const qrn_real *b, qrn_int64 numterms,
                                             const qrn_int64 *termsizelist, const qrn_int64 *termsindjc) {
  return api(task, "QRN_putdjcslice", [&](Task &t) {
    check_slice(idxfirst, idxlast, static_cast<qrn_int64>(t.conic.djcs.size()), "DJC");
    need_count(numdomidx, "The number of domains");
    need_count(numafeidx, "The number of affine expressions");
    need_count(numterms, "The number of terms");
    need_array(termsindjc, idxlast - idxfirst, "termsindjc");
    need_array(termsizelist, numterms, "termsizelist");
    need_array(domidxlist, numdomidx, "domidxlist");
    need_array(afeidxlist, numafeidx, "afeidxlist");
    // Split the lists DJC by DJC, each piece staying inside what was given.
    std::vector<Djc> staged;
    qrn_int64 term = 0, dom = 0, afe = 0;
    for (qrn_int64 k = idxfirst; k < idxlast; ++k) {
      qrn_int64 nt = termsindjc[k - idxfirst];
      if (nt < 0 || nt > numterms - term)
        fail(QRN_RES_ERR_DJC_TERMS, "termsindjc asks for more than the " + std::to_string(numterms) +
                                        " terms given (or a negative count) at DJC " + std::to_string(k) + ".");
      qrn_int64 nd = 0;
      for (qrn_int64 i = term; i < term + nt; ++i) {
        if (termsizelist[i] < 1 || termsizelist[i] > numdomidx - dom - nd)
          fail(QRN_RES_ERR_DJC_TERMS, "Term " + std::to_string(i) + " asks for " + std::to_string(termsizelist[i]) +
                                          " domains; a term needs at least one, and " + std::to_string(numdomidx) +
                                          " were given in all.");
        nd += termsizelist[i];
      }
      qrn_int64 na = 0;
      for (qrn_int64 i = dom; i < dom + nd; ++i) {
        check_domain(t, domidxlist[i]);
        na += t.conic.domains[domidxlist[i]].n;
      }
      if (na > numafeidx - afe)
        fail(QRN_RES_ERR_ACC_SIZE, "The domains need more than the " + std::to_string(numafeidx) +
                                       " affine expressions given.");
      staged.push_back(make_djc(t, nd, domidxlist + dom, na, afeidxlist + afe, b == nullptr ? nullptr : b + afe, nt,
                                termsizelist + term));
      term += nt, dom += nd, afe += na;
    }
    if (term != numterms || dom != numdomidx || afe != numafeidx)
      fail(QRN_RES_ERR_DJC_TERMS, "The slice uses " + std::to_string(term) + " terms, " + std::to_string(dom) +
                                      " domains and " + std::to_string(afe) + " affine expressions; " +
                                      std::to_string(numterms) + ", " + std::to_string(numdomidx) + " and " +
                                      std::to_string(numafeidx) + " were given.");
    for (qrn_int64 k = idxfirst; k < idxlast; ++k) t.conic.djcs[k] = std::move(staged[k - idxfirst]);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdjcnumdomain(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *numdomain) {
  return api(task, "QRN_getdjcnumdomain", [&](Task &t) {
    check_djc(t, djcidx);
    put(numdomain, static_cast<qrn_int64>(t.conic.djcs[djcidx].dom.size()));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumafe(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *numafe) {
  return api(task, "QRN_getdjcnumafe", [&](Task &t) {
    check_djc(t, djcidx);
    put(numafe, static_cast<qrn_int64>(t.conic.djcs[djcidx].afe.size()));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumterm(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *numterm) {
  return api(task, "QRN_getdjcnumterm", [&](Task &t) {
    check_djc(t, djcidx);
    put(numterm, static_cast<qrn_int64>(t.conic.djcs[djcidx].termsize.size()));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumdomaintot(qrn_task_t task, qrn_int64 *numdomaintot) {
  return api(task, "QRN_getdjcnumdomaintot", [&](Task &t) {
    put(numdomaintot, total(t, [](const Djc &d) { return static_cast<qrn_int64>(d.dom.size()); }));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumafetot(qrn_task_t task, qrn_int64 *numafetot) {
  return api(task, "QRN_getdjcnumafetot", [&](Task &t) {
    put(numafetot, total(t, [](const Djc &d) { return static_cast<qrn_int64>(d.afe.size()); }));
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumtermtot(qrn_task_t task, qrn_int64 *numtermtot) {
  return api(task, "QRN_getdjcnumtermtot", [&](Task &t) {
    put(numtermtot, total(t, [](const Djc &d) { return static_cast<qrn_int64>(d.termsize.size()); }));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdjcdomainidxlist(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *domidxlist) {
  return api(task, "QRN_getdjcdomainidxlist", [&](Task &t) {
    check_djc(t, djcidx);
    copy_out(t.conic.djcs[djcidx].dom, domidxlist);
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcafeidxlist(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *afeidxlist) {
  return api(task, "QRN_getdjcafeidxlist", [&](Task &t) {
    check_djc(t, djcidx);
    copy_out(t.conic.djcs[djcidx].afe, afeidxlist);
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcb(qrn_task_t task, qrn_int64 djcidx, qrn_real *b) {
  return api(task, "QRN_getdjcb", [&](Task &t) {
    check_djc(t, djcidx);
    copy_out(t.conic.djcs[djcidx].b, b);
  });
}
QRN_API qrn_rescode QRN_CALL QRN_getdjctermsizelist(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *termsizelist) {
  return api(task, "QRN_getdjctermsizelist", [&](Task &t) {
    check_djc(t, djcidx);
    copy_out(t.conic.djcs[djcidx].termsize, termsizelist);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getdjcs(qrn_task_t task, qrn_int64 *domidxlist, qrn_int64 *afeidxlist, qrn_real *b,
                                         qrn_int64 *termsizelist, qrn_int64 *numterms) {
  return api(task, "QRN_getdjcs", [&](Task &t) {
    qrn_int64 nd = 0, na = 0, nt = 0;
    for (size_t k = 0; k < t.conic.djcs.size(); ++k) {
      const Djc &d = t.conic.djcs[k];
      copy_out(d.dom, domidxlist == nullptr ? nullptr : domidxlist + nd);
      copy_out(d.afe, afeidxlist == nullptr ? nullptr : afeidxlist + na);
      copy_out(d.b, b == nullptr ? nullptr : b + na);
      copy_out(d.termsize, termsizelist == nullptr ? nullptr : termsizelist + nt);
      if (numterms != nullptr) numterms[k] = static_cast<qrn_int64>(d.termsize.size());
      nd += static_cast<qrn_int64>(d.dom.size());
      na += static_cast<qrn_int64>(d.afe.size());
      nt += static_cast<qrn_int64>(d.termsize.size());
    }
  });
}

}  // extern "C"
