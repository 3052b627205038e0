// The sections of the text format (formats/write.cpp) that hold conic and
// semidefinite data, written through the writer's token interface (word,
// integer, number, name, end_line). Each section starts with its keyword and
// the number of lines that follow; a section with no lines is left out, so a
// task without such data is written as before:
//
//   afeg <n>          <r> <g_r>                       (non-zero g, r increasing)
//   afef <nnz>        <r> <j> <f_rj>                  (row by row, j increasing)
//   barvars <num>     <j> <name> <dim>
//   symmats <num>     <idx> <dim> <nz> (<i> <j> <value>)*nz   (lower triangle)
//   afebarf <n>       <r> <j> <terms> (<matrix> <weight>)*terms
//   barc <n>          <j> <terms> (<matrix> <weight>)*terms
//   bara <n>          <i> <j> <terms> (<matrix> <weight>)*terms
//   domains <num>     <d> <name> <type> <n> [<nleft> <alpha>*nleft]   (weights of power cones only)
//   accs <num>        <k> <name> <domain> <n> <afe>*n <b>*n
//   djcs <num>        <k> <name> <terms> <termsize>*terms <domains> <domain>*domains <n> <afe>*n <b>*n
//
// Types: r rzero rplus rminus quad rquad pexp dexp ppow dpow pgeo dgeo svecpsd.
#pragma once

#include "task.hpp"

namespace qrn {

template <class Out>
void write_conic_sections(const Task &t, Out &out) {
  static const char *const domain_words[] = {"r",    "rzero", "rplus", "rminus", "quad", "rquad",  "pexp",
                                             "dexp", "ppow",  "dpow",  "pgeo",   "dgeo", "svecpsd"};
  auto section = [&](const char *keyword, qrn_int64 count) {
    if (count > 0) out.word(keyword).integer(count).end_line();
  };
  auto name_of = [](const NameTable &names, size_t k) -> const std::string & {
    static const std::string none;
    return k < names.names.size() ? names.names[k] : none;
  };
  auto terms = [&](const std::vector<Term> &ts) {
    out.integer(static_cast<qrn_int64>(ts.size()));
    for (const Term &term : ts) out.integer(term.mat).number(term.weight);
    out.end_line();
  };
  const AfeStore &f = t.conic.afe;

  qrn_int64 numg = 0;
  for (double g : f.g) numg += g != 0.0;
  section("afeg", numg);
  for (size_t r = 0; r < f.g.size(); ++r)
    if (f.g[r] != 0.0) out.integer(static_cast<qrn_int64>(r)).number(f.g[r]).end_line();
  section("afef", f.nnz);
  for (size_t r = 0; r < f.rows.size(); ++r)
    for (const FEntry &e : f.rows[r]) out.integer(static_cast<qrn_int64>(r)).integer(e.var).number(e.val).end_line();

  section("barvars", static_cast<qrn_int64>(t.sdp.dim.size()));
  for (size_t j = 0; j < t.sdp.dim.size(); ++j)
    out.integer(static_cast<qrn_int64>(j)).name(name_of(t.barvarnames, j)).integer(t.sdp.dim[j]).end_line();
  section("symmats", static_cast<qrn_int64>(t.sdp.mats.size()));
  for (size_t k = 0; k < t.sdp.mats.size(); ++k) {
    const SymMat &m = t.sdp.mats[k];
    out.integer(static_cast<qrn_int64>(k)).integer(m.dim).integer(static_cast<qrn_int64>(m.val.size()));
    for (size_t p = 0; p < m.val.size(); ++p) out.integer(m.subi[p]).integer(m.subj[p]).number(m.val[p]);
    out.end_line();
  }
  qrn_int64 numbarf = 0;
  for (auto &kv : f.barf) numbarf += static_cast<qrn_int64>(kv.second.size());
  section("afebarf", numbarf);
  for (auto &[r, row] : f.barf)
    for (const BarFEntry &e : row) {
      out.integer(r).integer(e.barvar);
      terms(e.terms);
    }
  section("barc", static_cast<qrn_int64>(t.sdp.barc.size()));
  for (auto &[j, ts] : t.sdp.barc) {
    out.integer(j);
    terms(ts);
  }
  section("bara", static_cast<qrn_int64>(t.sdp.bara.size()));
  for (auto &[key, ts] : t.sdp.bara) {
    out.integer(key >> 31).integer(key & INT32_MAX);
    terms(ts);
  }

  section("domains", static_cast<qrn_int64>(t.conic.domains.size()));
  for (size_t d = 0; d < t.conic.domains.size(); ++d) {
    const Domain &dom = t.conic.domains[d];
    out.integer(static_cast<qrn_int64>(d)).name(name_of(t.domnames, d)).choice(domain_words, dom.type).integer(dom.n);
    if (dom.type == QRN_DOMAIN_PRIMAL_POWER_CONE || dom.type == QRN_DOMAIN_DUAL_POWER_CONE) {
      out.integer(static_cast<qrn_int64>(dom.alpha.size()));
      for (double a : dom.alpha) out.number(a);
    }
    out.end_line();
  }
  section("accs", static_cast<qrn_int64>(t.conic.accs.size()));
  for (size_t k = 0; k < t.conic.accs.size(); ++k) {
    const Acc &acc = t.conic.accs[k];
    out.integer(static_cast<qrn_int64>(k)).name(name_of(t.accnames, k)).integer(acc.dom);
    out.integer(static_cast<qrn_int64>(acc.afe.size()));
    for (qrn_int64 r : acc.afe) out.integer(r);
    for (double b : acc.b) out.number(b);
    out.end_line();
  }
  section("djcs", static_cast<qrn_int64>(t.conic.djcs.size()));
  for (size_t k = 0; k < t.conic.djcs.size(); ++k) {
    const Djc &djc = t.conic.djcs[k];
    out.integer(static_cast<qrn_int64>(k)).name(name_of(t.djcnames, k));
    out.integer(static_cast<qrn_int64>(djc.termsize.size()));
    for (qrn_int64 s : djc.termsize) out.integer(s);
    out.integer(static_cast<qrn_int64>(djc.dom.size()));
    for (qrn_int64 d : djc.dom) out.integer(d);
    out.integer(static_cast<qrn_int64>(djc.afe.size()));
    for (qrn_int64 r : djc.afe) out.integer(r);
    for (double b : djc.b) out.number(b);
    out.end_line();
  }
}

}  // namespace qrn
