// The conic and semidefinite sections of the text formats (qtx, PTF, OPF;
// docs/formats/qtx.md). Each section starts with its keyword and the number
// of lines that follow; a section with no lines is left out, so a task
// without such data is written as before. In this order:
//
//   afes <numafe>                                     (the count only, no lines)
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
// Domain types: r rzero rplus rminus quad rquad pexp dexp ppow dpow pgeo dgeo svecpsd.
#include "formats.hpp"

#include <cmath>

namespace qrn {
namespace {

const char *const sections[] = {"afes",    "afeg", "afef", "barvars", "symmats", "afebarf",
                                "barc",    "bara", "domains", "accs", "djcs"};
const char *const domain_words[] = {"r",    "rzero", "rplus", "rminus", "quad", "rquad",  "pexp",
                                    "dexp", "ppow",  "dpow",  "pgeo",   "dgeo", "svecpsd"};

const std::string &name_at(const std::vector<std::string> &v, size_t k) {
  static const std::string none;
  return k < v.size() ? v[k] : none;
}

bool written(double v) { return v != 0.0 || std::signbit(v); }

void terms(Out &out, const ProblemBarCoef &c) {
  out.ch(' ').integer(static_cast<qrn_int64>(c.mat.size()));
  for (size_t k = 0; k < c.mat.size(); ++k) out.ch(' ').integer(c.mat[k]).ch(' ').num(c.weight[k]);
  out.ch('\n');
}

void section(Out &out, const char *keyword, qrn_int64 count) {
  if (count > 0) out.raw(keyword).ch(' ').integer(count).ch('\n');
}

// Names read inline: an all-empty list is no names.
void settle_names(std::vector<std::string> &v) {
  for (const std::string &s : v)
    if (!s.empty()) return;
  v.clear();
}

}  // namespace

void write_conic_sections(const FileProblem &p, Out &out) {
  section(out, "afes", p.numafe);
  qrn_int64 numg = 0;
  for (double g : p.g) numg += written(g);
  section(out, "afeg", numg);
  for (size_t r = 0; r < p.g.size(); ++r)
    if (written(p.g[r])) out.integer(static_cast<qrn_int64>(r)).ch(' ').num(p.g[r]).ch('\n');
  section(out, "afef", static_cast<qrn_int64>(p.fval.size()));
  for (size_t k = 0; k < p.fval.size(); ++k) out.integer(p.fsubi[k]).ch(' ').integer(p.fsubj[k]).ch(' ').num(p.fval[k]).ch('\n');

  section(out, "barvars", static_cast<qrn_int64>(p.barvardim.size()));
  for (size_t j = 0; j < p.barvardim.size(); ++j)
    out.integer(static_cast<qrn_int64>(j)).ch(' ').quoted(name_at(p.barvarnames, j)).ch(' ').integer(p.barvardim[j]).ch('\n');
  section(out, "symmats", static_cast<qrn_int64>(p.symmats.size()));
  for (size_t k = 0; k < p.symmats.size(); ++k) {
    const ProblemSymMat &m = p.symmats[k];
    out.integer(static_cast<qrn_int64>(k)).ch(' ').integer(m.dim).ch(' ').integer(static_cast<qrn_int64>(m.val.size()));
    for (size_t q = 0; q < m.val.size(); ++q) out.ch(' ').integer(m.subi[q]).ch(' ').integer(m.subj[q]).ch(' ').num(m.val[q]);
    out.ch('\n');
  }
  section(out, "afebarf", static_cast<qrn_int64>(p.barf.size()));
  for (const ProblemBarCoef &c : p.barf) {
    out.integer(c.i).ch(' ').integer(c.j);
    terms(out, c);
  }
  section(out, "barc", static_cast<qrn_int64>(p.barc.size()));
  for (const ProblemBarCoef &c : p.barc) {
    out.integer(c.j);
    terms(out, c);
  }
  section(out, "bara", static_cast<qrn_int64>(p.bara.size()));
  for (const ProblemBarCoef &c : p.bara) {
    out.integer(c.i).ch(' ').integer(c.j);
    terms(out, c);
  }

  section(out, "domains", static_cast<qrn_int64>(p.domains.size()));
  for (size_t d = 0; d < p.domains.size(); ++d) {
    const ProblemDomain &dom = p.domains[d];
    out.integer(static_cast<qrn_int64>(d)).ch(' ').quoted(name_at(p.domnames, d)).ch(' ').raw(domain_words[dom.type]);
    out.ch(' ').integer(dom.n);
    if (dom.type == QRN_DOMAIN_PRIMAL_POWER_CONE || dom.type == QRN_DOMAIN_DUAL_POWER_CONE) {
      out.ch(' ').integer(static_cast<qrn_int64>(dom.alpha.size()));
      for (double a : dom.alpha) out.ch(' ').num(a);
    }
    out.ch('\n');
  }
  section(out, "accs", static_cast<qrn_int64>(p.accs.size()));
  for (size_t k = 0; k < p.accs.size(); ++k) {
    const ProblemAcc &a = p.accs[k];
    out.integer(static_cast<qrn_int64>(k)).ch(' ').quoted(name_at(p.accnames, k)).ch(' ').integer(a.dom);
    out.ch(' ').integer(static_cast<qrn_int64>(a.afe.size()));
    for (qrn_int64 r : a.afe) out.ch(' ').integer(r);
    for (double b : a.b) out.ch(' ').num(b);
    out.ch('\n');
  }
  section(out, "djcs", static_cast<qrn_int64>(p.djcs.size()));
  for (size_t k = 0; k < p.djcs.size(); ++k) {
    const ProblemDjc &d = p.djcs[k];
    out.integer(static_cast<qrn_int64>(k)).ch(' ').quoted(name_at(p.djcnames, k));
    out.ch(' ').integer(static_cast<qrn_int64>(d.termsize.size()));
    for (qrn_int64 s : d.termsize) out.ch(' ').integer(s);
    out.ch(' ').integer(static_cast<qrn_int64>(d.dom.size()));
    for (qrn_int64 x : d.dom) out.ch(' ').integer(x);
    out.ch(' ').integer(static_cast<qrn_int64>(d.afe.size()));
    for (qrn_int64 r : d.afe) out.ch(' ').integer(r);
    for (double b : d.b) out.ch(' ').num(b);
    out.ch('\n');
  }
}

bool read_conic_section(Lexer &lx, const Token &keyword, FileProblem &p, int &state, qrn_int64 textsize) {
  int which = -1;
  for (int k = 0; k < static_cast<int>(std::size(sections)); ++k)
    if (keyword.text == sections[k]) which = k;
  if (which < 0) return false;
  if (which <= state)
    lx.fail(QRN_RES_ERR_READ_SECTION, keyword, "the section \"" + std::string(keyword.text) + "\" is repeated or out of order.");
  state = which;
  // Every listed item takes at least two bytes of text; expressions without
  // entries take none, so their count is bounded more loosely.
  const qrn_int64 cap = textsize / 2 + 1;
  auto count = [&](qrn_int64 hi) { return lx.need_integer("a count", 0, hi); };
  auto index = [&](const char *what, qrn_int64 n) { return lx.need_integer(what, 0, n - 1); };
  auto finite = [&](const char *what) { return lx.need_number(what, false); };
  const qrn_int64 numbarvar = static_cast<qrn_int64>(p.barvardim.size());
  auto read_terms = [&](ProblemBarCoef &c) {
    qrn_int64 nt = count(cap);
    for (qrn_int64 q = 0; q < nt; ++q) {
      c.mat.push_back(index("a matrix index", static_cast<qrn_int64>(p.symmats.size())));
      c.weight.push_back(finite("a weight"));
    }
  };
  const std::string kw(keyword.text);
  if (kw == "afes") {
    p.numafe = lx.need_integer("the number of affine expressions", 1, 16 * textsize + 1024);
    p.g.assign(static_cast<size_t>(p.numafe), 0.0);
    return true;
  }
  const qrn_int64 n = count(cap);
  qrn_int64 last_g = -1;  // afeg lists expressions in increasing order
  for (qrn_int64 k = 0; k < n; ++k) {
    if (kw == "afeg") {
      Token rt = lx.need("an expression index");
      qrn_int64 r = lx.integer(rt, last_g + 1, p.numafe - 1);
      last_g = r;
      p.g[r] = finite("a constant");
    } else if (kw == "afef") {
      Token rt = lx.need("an expression index");
      qrn_int64 r = lx.integer(rt, 0, p.numafe - 1);
      Token jt = lx.need("a variable index");
      qrn_int32 j = static_cast<qrn_int32>(lx.integer(jt, 0, static_cast<qrn_int64>(p.numvar) - 1));
      if (!p.fsubi.empty() && (r < p.fsubi.back() || (r == p.fsubi.back() && j <= p.fsubj.back())))
        lx.fail(QRN_RES_ERR_READ_INDEX, rt, "the entries of F come row by row, variables increasing within a row.");
      p.fsubi.push_back(r), p.fsubj.push_back(j), p.fval.push_back(finite("a coefficient"));
    } else if (kw == "barvars") {
      lx.integer(lx.need("a semidefinite variable index"), k, k);
      p.barvarnames.push_back(lx.need_string("a name"));
      p.barvardim.push_back(static_cast<qrn_int32>(lx.need_integer("a dimension", 1, INT32_MAX)));
    } else if (kw == "symmats") {
      lx.integer(lx.need("a matrix index"), k, k);
      ProblemSymMat m;
      m.dim = static_cast<qrn_int32>(lx.need_integer("a dimension", 1, INT32_MAX));
      qrn_int64 nz = count(cap);
      for (qrn_int64 q = 0; q < nz; ++q) {
        Token it = lx.need("a row");
        m.subi.push_back(static_cast<qrn_int32>(lx.integer(it, 0, m.dim - 1)));
        m.subj.push_back(static_cast<qrn_int32>(lx.need_integer("a column", 0, m.subi.back())));
        m.val.push_back(finite("a value"));
      }
      p.symmats.push_back(std::move(m));
    } else if (kw == "afebarf" || kw == "barc" || kw == "bara") {
      ProblemBarCoef c;
      if (kw == "afebarf") c.i = lx.need_integer("an expression index", 0, p.numafe - 1);
      if (kw == "bara") c.i = lx.need_integer("a constraint index", 0, static_cast<qrn_int64>(p.numcon) - 1);
      c.j = static_cast<qrn_int32>(index("a semidefinite variable index", numbarvar));
      read_terms(c);
      (kw == "afebarf" ? p.barf : kw == "barc" ? p.barc : p.bara).push_back(std::move(c));
    } else if (kw == "domains") {
      lx.integer(lx.need("a domain index"), k, k);
      p.domnames.push_back(lx.need_string("a name"));
      ProblemDomain d;
      Token tt = lx.need("a domain type");
      d.type = -1;
      for (int q = 0; q < static_cast<int>(std::size(domain_words)); ++q)
        if (tt.text == domain_words[q]) d.type = q;
      if (d.type < 0) lx.fail(QRN_RES_ERR_READ_SYNTAX, tt, "\"" + std::string(tt.text.substr(0, 40)) + "\" is not a domain type.");
      d.n = lx.need_integer("a dimension", 0, INT64_MAX / 2);
      if (d.type == QRN_DOMAIN_PRIMAL_POWER_CONE || d.type == QRN_DOMAIN_DUAL_POWER_CONE) {
        qrn_int64 nleft = lx.need_integer("the number of weights", 0, std::min(d.n, cap));
        for (qrn_int64 q = 0; q < nleft; ++q) d.alpha.push_back(finite("a weight"));
      }
      p.domains.push_back(std::move(d));
    } else if (kw == "accs") {
      lx.integer(lx.need("an ACC index"), k, k);
      p.accnames.push_back(lx.need_string("a name"));
      ProblemAcc a;
      a.dom = index("a domain index", static_cast<qrn_int64>(p.domains.size()));
      qrn_int64 na = count(cap);
      for (qrn_int64 q = 0; q < na; ++q) a.afe.push_back(index("an expression index", p.numafe));
      for (qrn_int64 q = 0; q < na; ++q) a.b.push_back(finite("a constant"));
      p.accs.push_back(std::move(a));
    } else {  // djcs
      lx.integer(lx.need("a DJC index"), k, k);
      p.djcnames.push_back(lx.need_string("a name"));
      ProblemDjc d;
      qrn_int64 nt = count(cap);
      for (qrn_int64 q = 0; q < nt; ++q) d.termsize.push_back(count(cap));
      qrn_int64 nd = count(cap);
      for (qrn_int64 q = 0; q < nd; ++q) d.dom.push_back(index("a domain index", static_cast<qrn_int64>(p.domains.size())));
      qrn_int64 na = count(cap);
      for (qrn_int64 q = 0; q < na; ++q) d.afe.push_back(index("an expression index", p.numafe));
      for (qrn_int64 q = 0; q < na; ++q) d.b.push_back(finite("a constant"));
      p.djcs.push_back(std::move(d));
    }
  }
  if (kw == "barvars") settle_names(p.barvarnames);
  if (kw == "domains") settle_names(p.domnames);
  if (kw == "accs") settle_names(p.accnames);
  if (kw == "djcs") settle_names(p.djcnames);
  return true;
}

}  // namespace qrn
