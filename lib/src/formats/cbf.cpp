// The Conic Benchmark Format, versions 1 to 3 (docs/formats/cbf.md).
//
// A CBF problem is: minimize or maximize
//     c'x + sum_j <C_j, X_j> + c0
// subject to rows  A x + sum_j <F_ij, X_j> + b  in K,  x in D,  X_j PSD,
// PSD constraints  sum_j x_j H_ij + D_i  PSD,  some x integer,
// where K and D are products of cones: F, L+, L-, L=, Q, QR, EXP, EXP* and
// the power cones @k:POW, @k:POW* (weights in POWCONES / POW*CONES). The
// cones are the library's own domains in the same member order (quarn.h):
// Q = QUADRATIC_CONE, QR = RQUADRATIC_CONE, EXP = PRIMAL_EXP_CONE, EXP* =
// DUAL_EXP_CONE, POW = PRIMAL_POWER_CONE and POW* = DUAL_POWER_CONE with the
// listed weights (normalised) on the leading members.
//
// Reading: rows in F, L+, L-, L= are linear constraints (bounds from -b);
// every block of rows in another cone is an affine conic constraint over new
// affine expressions (one per row, in file order), with b = 0. Variable
// blocks in Q/QR are cones of variables; in EXP/EXP*/POW/POW* they are ACCs
// over expressions that pick the variables. A PSD constraint of dimension d
// is an ACC in the SVEC_PSD domain over d(d+1)/2 expressions (lower triangle
// by columns, off-diagonal entries times sqrt(2)). Each coefficient matrix is
// one new store matrix with weight 1.
#include "formats.hpp"

#include <cmath>
#include <map>
#include <set>

namespace qrn {
namespace {

enum class Dom { free, pos, neg, zero, quad, rquad, pexp, dexp, ppow, dpow };

bool linear(Dom d) { return d == Dom::free || d == Dom::pos || d == Dom::neg || d == Dom::zero; }

struct Block {
  Dom dom;
  qrn_int64 len;
  qrn_int64 pow = -1;  // power cones: index into POWCONES / POW*CONES
};

const char *domain_name(Dom d) {
  switch (d) {
    case Dom::free: return "F";
    case Dom::pos: return "L+";
    case Dom::neg: return "L-";
    case Dom::zero: return "L=";
    case Dom::quad: return "Q";
    case Dom::rquad: return "QR";
    case Dom::pexp: return "EXP";
    case Dom::dexp: return "EXP*";
    case Dom::ppow: return "POW";
    default: return "POW*";
  }
}

bool is_plus_zero(double v) { return v == 0.0 && !std::signbit(v); }
bool written(double v) { return v != 0.0 || std::signbit(v); }

// The lower-triangle entries (k >= l) of a weighted sum of store matrices.
std::map<std::pair<qrn_int32, qrn_int32>, double> expand(const FileProblem &p, const ProblemBarCoef &c) {
  std::map<std::pair<qrn_int32, qrn_int32>, double> out;  // keyed by (column l, row k)
  for (size_t t = 0; t < c.mat.size(); ++t) {
    const ProblemSymMat &m = p.symmats[c.mat[t]];
    for (size_t q = 0; q < m.val.size(); ++q) {
      auto key = std::make_pair(m.subj[q], m.subi[q]);
      auto it = out.find(key);
      double v = c.weight[t] * m.val[q];
      if (it == out.end()) out.emplace(key, v);
      else it->second += v;
    }
  }
  return out;
}

}  // namespace

void write_cbf(const FileProblem &p, Out &out, const WriteOptions &) {
  if (p.has_quadratic()) fail(QRN_RES_ERR_WRITE_LOSES_QUADRATIC, "CBF cannot hold quadratic terms.");
  if (p.has_names())
    fail(QRN_RES_ERR_WRITE_LOSES_NAMES, "CBF cannot hold names; set QRN_IPAR_OUTPUT_NAMES off to write without them.");
  if (!p.djcs.empty()) fail(QRN_RES_ERR_WRITE_LOSES_DISJUNCTIVE, "CBF cannot hold disjunctive constraints.");
  // ACCs: CBF states each row of a conic block as one expression, so the
  // ACCs must take the expressions 0, 1, 2, ... in order, each once, with
  // b = 0, and ACC k the domain k.
  qrn_int64 next = 0;
  for (size_t k = 0; k < p.accs.size(); ++k) {
    const ProblemAcc &a = p.accs[k];
    const ProblemDomain &d = p.domains[a.dom];
    if (d.type == QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE || d.type == QRN_DOMAIN_DUAL_GEO_MEAN_CONE ||
        d.type == QRN_DOMAIN_SVEC_PSD_CONE)
      fail(QRN_RES_ERR_WRITE_LOSES_DOMAINS, "CBF has no geometric-mean or SVEC_PSD cone (ACC " + std::to_string(k) + ").");
    if (d.type == QRN_DOMAIN_R || d.type == QRN_DOMAIN_RZERO || d.type == QRN_DOMAIN_RPLUS || d.type == QRN_DOMAIN_RMINUS)
      fail(QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC, "CBF states rows in a linear domain as linear constraints; ACC " +
                                                     std::to_string(k) + " would be read back as constraints.");
    if (a.dom != static_cast<qrn_int64>(k))
      fail(QRN_RES_ERR_WRITE_LOSES_DOMAINS, "CBF gives each conic block its own cone: ACC " + std::to_string(k) +
                                                " must use domain " + std::to_string(k) + ".");
    for (size_t q = 0; q < a.afe.size(); ++q) {
      if (a.afe[q] != next++)
        fail(QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC, "CBF states each conic row as its own expression: the ACCs must use "
                                                   "the affine expressions 0, 1, 2, ... in order, each once (ACC " +
                                                       std::to_string(k) + ").");
      if (!is_plus_zero(a.b[q]))
        fail(QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC, "CBF has no b of an ACC (ACC " + std::to_string(k) + " has b != 0).");
    }
  }
  if (next != p.numafe)
    fail(QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC, "CBF holds affine expressions only as rows of ACCs; " +
                                                   std::to_string(p.numafe - next) + " are in none.");
  if (p.domains.size() != p.accs.size())
    fail(QRN_RES_ERR_WRITE_LOSES_DOMAINS, "CBF holds domains only as the cones of ACCs; the task has " +
                                              std::to_string(p.domains.size()) + " domains and " + std::to_string(p.accs.size()) + " ACCs.");

  // The domain of every variable: its cone's, or one its bounds state exactly.
  std::vector<Dom> vdom(p.numvar, Dom::free);
  std::vector<qrn_int32> cone_at(p.numvar, -1);  // first member -> cone
  std::vector<bool> in_cone(p.numvar, false);
  for (size_t k = 0; k < p.cones.size(); ++k) {
    const ProblemCone &c = p.cones[k];
    if (!is_plus_zero(c.par)) fail(QRN_RES_ERR_WRITE_LOSES_CONES, "CBF cannot hold the parameter of cone " + std::to_string(k) + ".");
    for (size_t q = 0; q < c.members.size(); ++q)
      if (c.members[q] != c.members[0] + static_cast<qrn_int32>(q))
        fail(QRN_RES_ERR_WRITE_LOSES_CONES, "The members of cone " + std::to_string(k) +
                                                " are not consecutive variables in order, which CBF needs.");
    if (c.members.empty()) fail(QRN_RES_ERR_WRITE_LOSES_CONES, "CBF cannot hold an empty cone.");
    cone_at[c.members[0]] = static_cast<qrn_int32>(k);
    for (qrn_int32 j : c.members) in_cone[j] = true;
  }
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    qrn_int32 bk = p.bkx[j];
    bool ok = true;
    if (in_cone[j]) ok = bk == QRN_BK_FREE;
    else if (bk == QRN_BK_FREE) vdom[j] = Dom::free;
    else if (bk == QRN_BK_LOWER && is_plus_zero(p.blx[j])) vdom[j] = Dom::pos;
    else if (bk == QRN_BK_UPPER && is_plus_zero(p.bux[j])) vdom[j] = Dom::neg;
    else if (bk == QRN_BK_FIXED && is_plus_zero(p.blx[j])) vdom[j] = Dom::zero;
    else ok = false;
    if (!ok)
      fail(QRN_RES_ERR_WRITE_LOSES_BOUNDS, "CBF states a variable's bounds only as free, >= 0, <= 0 or = 0 (and free in a cone); variable " +
                                               std::to_string(j) + " has other bounds.");
  }
  std::vector<Dom> cdom(p.numcon, Dom::free);
  std::vector<double> b(p.numcon, -0.0);  // -0.0: no BCOORD entry (the reader's default)
  for (qrn_int32 i = 0; i < p.numcon; ++i) {
    switch (p.bkc[i]) {
      case QRN_BK_FREE: break;
      case QRN_BK_LOWER: cdom[i] = Dom::pos, b[i] = -p.blc[i]; break;
      case QRN_BK_UPPER: cdom[i] = Dom::neg, b[i] = -p.buc[i]; break;
      case QRN_BK_FIXED: cdom[i] = Dom::zero, b[i] = -p.blc[i]; break;
      default:
        fail(QRN_RES_ERR_WRITE_LOSES_BOUNDS, "CBF cannot state the two-sided bounds of constraint " + std::to_string(i) + " in one row.");
    }
  }
  auto blocks = [&](auto domain_of_item, qrn_int32 n, auto length_at) {
    std::vector<std::pair<Dom, qrn_int64>> v;
    for (qrn_int32 k = 0; k < n;) {
      qrn_int64 len = length_at(k);
      Dom d = domain_of_item(k);
      if (len == 1 && !v.empty() && v.back().first == d && linear(d))
        ++v.back().second;
      else
        v.emplace_back(d, len);
      k += static_cast<qrn_int32>(len);
    }
    return v;
  };
  auto vblocks = blocks(
      [&](qrn_int32 j) {
        return cone_at[j] >= 0 ? (p.cones[cone_at[j]].type == QRN_CONE_RQUAD ? Dom::rquad : Dom::quad) : vdom[j];
      },
      p.numvar, [&](qrn_int32 j) -> qrn_int64 { return cone_at[j] >= 0 ? p.cones[cone_at[j]].members.size() : 1; });
  auto cblocks = blocks([&](qrn_int32 i) { return cdom[i]; }, p.numcon, [](qrn_int32) -> qrn_int64 { return 1; });

  out.raw("# written by quarn64_10_2\nVER\n3\n\nOBJSENSE\n").raw(p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? "MAX" : "MIN").raw("\n\n");
  // Power cone weights, one entry per power cone ACC in order.
  std::vector<qrn_int64> powidx(p.accs.size(), -1);
  for (bool dual : {false, true}) {
    qrn_int64 count = 0, params = 0;
    const qrn_int32 want = dual ? QRN_DOMAIN_DUAL_POWER_CONE : QRN_DOMAIN_PRIMAL_POWER_CONE;
    for (size_t k = 0; k < p.accs.size(); ++k)
      if (p.domains[k].type == want) powidx[k] = count++, params += static_cast<qrn_int64>(p.domains[k].alpha.size());
    if (count == 0) continue;
    out.raw(dual ? "POW*CONES\n" : "POWCONES\n").integer(count).ch(' ').integer(params).ch('\n');
    for (size_t k = 0; k < p.accs.size(); ++k)
      if (p.domains[k].type == want) {
        out.integer(static_cast<qrn_int64>(p.domains[k].alpha.size())).ch('\n');
        for (double a : p.domains[k].alpha) out.num(a).ch('\n');
      }
    out.ch('\n');
  }
  if (!p.barvardim.empty()) {
    out.raw("PSDVAR\n").integer(static_cast<qrn_int64>(p.barvardim.size())).ch('\n');
    for (qrn_int32 d : p.barvardim) out.integer(d).ch('\n');
    out.ch('\n');
  }
  out.raw("VAR\n").integer(p.numvar).ch(' ').integer(static_cast<qrn_int64>(vblocks.size())).ch('\n');
  for (auto &[d, len] : vblocks) out.raw(domain_name(d)).ch(' ').integer(len).ch('\n');
  out.ch('\n');
  if (p.has_integer()) {
    qrn_int64 ni = 0;
    for (qrn_int32 t : p.vartype) ni += t == QRN_VAR_TYPE_INTEGER;
    out.raw("INT\n").integer(ni).ch('\n');
    for (qrn_int32 j = 0; j < p.numvar; ++j)
      if (p.vartype[j] == QRN_VAR_TYPE_INTEGER) out.integer(j).ch('\n');
    out.ch('\n');
  }
  const qrn_int64 rows = p.numcon + p.numafe;
  if (rows > 0) {
    out.raw("CON\n").integer(rows).ch(' ').integer(static_cast<qrn_int64>(cblocks.size() + p.accs.size())).ch('\n');
    for (auto &[d, len] : cblocks) out.raw(domain_name(d)).ch(' ').integer(len).ch('\n');
    for (size_t k = 0; k < p.accs.size(); ++k) {
      const ProblemDomain &d = p.domains[k];
      switch (d.type) {
        case QRN_DOMAIN_QUADRATIC_CONE: out.raw("Q"); break;
        case QRN_DOMAIN_RQUADRATIC_CONE: out.raw("QR"); break;
        case QRN_DOMAIN_PRIMAL_EXP_CONE: out.raw("EXP"); break;
        case QRN_DOMAIN_DUAL_EXP_CONE: out.raw("EXP*"); break;
        case QRN_DOMAIN_PRIMAL_POWER_CONE: out.ch('@').integer(powidx[k]).raw(":POW"); break;
        default: out.ch('@').integer(powidx[k]).raw(":POW*"); break;
      }
      out.ch(' ').integer(static_cast<qrn_int64>(p.accs[k].afe.size())).ch('\n');
    }
    out.ch('\n');
  }
  // Semidefinite coefficients: their entries, with weighted sums evaluated.
  auto coords = [&](const char *section, const std::vector<ProblemBarCoef> &v, qrn_int64 offset, bool with_row) {
    std::vector<std::pair<const ProblemBarCoef *, std::map<std::pair<qrn_int32, qrn_int32>, double>>> all;
    qrn_int64 count = 0;
    for (const ProblemBarCoef &c : v) {
      all.emplace_back(&c, expand(p, c));
      count += static_cast<qrn_int64>(all.back().second.size());
    }
    return std::make_tuple(section, std::move(all), count, offset, with_row);
  };
  auto put_coords = [&](auto &&...groups) {
    qrn_int64 total = 0;
    const char *section = nullptr;
    auto add = [&](auto &g) { total += std::get<2>(g), section = std::get<0>(g); };
    (add(groups), ...);
    if (total == 0) return;
    out.raw(section).ch('\n').integer(total).ch('\n');
    auto one = [&](auto &g) {
      for (auto &[c, entries] : std::get<1>(g))
        for (auto &[key, val] : entries) {
          if (std::get<4>(g)) out.integer(c->i + std::get<3>(g)).ch(' ');
          out.integer(c->j).ch(' ').integer(key.second).ch(' ').integer(key.first).ch(' ').num(val).ch('\n');
        }
    };
    (one(groups), ...);
    out.ch('\n');
  };
  put_coords(coords("OBJFCOORD", p.barc, 0, false));
  qrn_int64 nc = 0;
  for (double v : p.c) nc += written(v);
  if (nc > 0) {
    out.raw("OBJACOORD\n").integer(nc).ch('\n');
    for (qrn_int32 j = 0; j < p.numvar; ++j)
      if (written(p.c[j])) out.integer(j).ch(' ').num(p.c[j]).ch('\n');
    out.ch('\n');
  }
  if (written(p.cfix)) out.raw("OBJBCOORD\n").num(p.cfix).raw("\n\n");
  put_coords(coords("FCOORD", p.bara, 0, true), coords("FCOORD", p.barf, p.numcon, true));
  const qrn_int64 na = p.numanz() + static_cast<qrn_int64>(p.fval.size());
  if (na > 0) {
    out.raw("ACOORD\n").integer(na).ch('\n');
    for (qrn_int32 j = 0; j < p.numvar; ++j)
      for (qrn_int64 k = p.aptr[j]; k < p.aptr[j + 1]; ++k) out.integer(p.asub[k]).ch(' ').integer(j).ch(' ').num(p.aval[k]).ch('\n');
    for (size_t k = 0; k < p.fval.size(); ++k)
      out.integer(p.numcon + p.fsubi[k]).ch(' ').integer(p.fsubj[k]).ch(' ').num(p.fval[k]).ch('\n');
    out.ch('\n');
  }
  qrn_int64 nb = 0;
  for (double v : b) nb += !(v == 0.0 && std::signbit(v));
  for (double v : p.g) nb += written(v);
  if (nb > 0) {
    out.raw("BCOORD\n").integer(nb).ch('\n');
    for (qrn_int32 i = 0; i < p.numcon; ++i)
      if (!(b[i] == 0.0 && std::signbit(b[i]))) out.integer(i).ch(' ').num(b[i]).ch('\n');
    for (size_t r = 0; r < p.g.size(); ++r)
      if (written(p.g[r])) out.integer(p.numcon + static_cast<qrn_int64>(r)).ch(' ').num(p.g[r]).ch('\n');
  }
}

void read_cbf(const Source &src, ReadContext &ctx) {
  Lexer lx(src, true);
  FileProblem &p = ctx.problem;
  Token t = lx.next();
  if (t.text != "VER") lx.fail(t.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_VERSION, t, "a CBF file starts with VER.");
  Token v = lx.need("the version");
  qrn_int64 ver = lx.integer(v, 0, INT32_MAX);
  if (ver < 1 || ver > 3) lx.fail(QRN_RES_ERR_READ_VERSION, v, "CBF version " + std::to_string(ver) + " is not known.");
  const qrn_int64 cap = static_cast<qrn_int64>(src.text.size());
  std::vector<Block> vblocks, cblocks;
  std::vector<std::vector<double>> pow[2];  // POWCONES, POW*CONES
  std::vector<qrn_int32> psdvar, psdcon;
  qrn_int64 n = -1, m = 0;
  std::vector<qrn_int32> ints;
  std::vector<std::pair<qrn_int32, double>> objc;
  // Coordinates as read; rows are placed once every section is known.
  struct Coord {
    qrn_int64 i, j;
    qrn_int32 k, l;
    double v;
    size_t line;
  };
  std::vector<Coord> acoord, fcoord, hcoord, dcoord, objf;
  std::vector<std::pair<qrn_int64, double>> bco;
  std::set<std::string> seen;
  auto read_blocks = [&](std::vector<Block> &blocks, qrn_int64 &total, const char *what) {
    total = lx.need_integer(what, 0, std::min<qrn_int64>(cap, INT32_MAX));
    qrn_int64 k = lx.need_integer("the number of cones", 0, total);
    qrn_int64 sum = 0;
    for (qrn_int64 q = 0; q < k; ++q) {
      Token d = lx.need("a cone");
      Block b{Dom::free, 0};
      std::string_view s = d.text;
      if (s == "F") b.dom = Dom::free;
      else if (s == "L+") b.dom = Dom::pos;
      else if (s == "L-") b.dom = Dom::neg;
      else if (s == "L=") b.dom = Dom::zero;
      else if (s == "Q") b.dom = Dom::quad;
      else if (s == "QR") b.dom = Dom::rquad;
      else if (s == "EXP") b.dom = Dom::pexp;
      else if (s == "EXP*") b.dom = Dom::dexp;
      else if (s.size() > 1 && s[0] == '@' && s.find(':') != std::string_view::npos) {
        size_t colon = s.find(':');
        std::string_view kind = s.substr(colon + 1);
        bool dual = kind == "POW*";
        if (!dual && kind != "POW") lx.fail(QRN_RES_ERR_READ_SYNTAX, d, "\"" + std::string(s.substr(0, 40)) + "\" is not a cone.");
        qrn_int64 idx = 0;
        if (!parse_int64(s.substr(1, colon - 1), idx) || idx < 0 || idx >= static_cast<qrn_int64>(pow[dual].size()))
          lx.fail(QRN_RES_ERR_READ_INDEX, d, "the power cone \"" + std::string(s.substr(0, 40)) + "\" is not defined in " +
                                                 (dual ? "POW*CONES." : "POWCONES."));
        b.dom = dual ? Dom::dpow : Dom::ppow;
        b.pow = idx;
      } else {
        bool known = s == "SVECPSD";
        lx.fail(known ? QRN_RES_ERR_READ_UNSUPPORTED : QRN_RES_ERR_READ_SYNTAX, d,
                "the cone \"" + std::string(s.substr(0, 40)) + "\" is " + (known ? "not supported." : "not known."));
      }
      b.len = lx.need_integer("a cone size", 1, total - sum);
      if (b.dom == Dom::rquad && b.len < 2) lx.fail(QRN_RES_ERR_READ_INDEX, d, "a QR cone needs at least 2 members.");
      if ((b.dom == Dom::pexp || b.dom == Dom::dexp) && b.len != 3) lx.fail(QRN_RES_ERR_READ_INDEX, d, "an exponential cone has 3 members.");
      if ((b.dom == Dom::ppow || b.dom == Dom::dpow) && b.len < static_cast<qrn_int64>(pow[b.dom == Dom::dpow][b.pow].size()))
        lx.fail(QRN_RES_ERR_READ_INDEX, d, "the power cone has fewer members than weights.");
      sum += b.len;
      blocks.push_back(b);
    }
    if (sum != total) lx.fail_here(QRN_RES_ERR_READ_INDEX, std::string("the cones cover ") + std::to_string(sum) + " of " + std::to_string(total) + ".");
  };
  auto dims = [&](std::vector<qrn_int32> &out) {
    qrn_int64 k = lx.need_integer("a count", 0, cap);
    for (qrn_int64 q = 0; q < k; ++q) out.push_back(static_cast<qrn_int32>(lx.need_integer("a dimension", 1, std::min<qrn_int64>(cap, 1 << 20))));
  };
  // (k, l) of a symmetric matrix of dimension d, as the lower triangle.
  auto coord_kl = [&](Coord &c, qrn_int32 d) {
    Token kt = lx.need("a row of the matrix");
    c.k = static_cast<qrn_int32>(lx.integer(kt, 0, d - 1));
    c.l = static_cast<qrn_int32>(lx.need_integer("a column of the matrix", 0, d - 1));
    if (c.k < c.l) std::swap(c.k, c.l);
    c.v = lx.need_number("a coefficient", false);
  };
  for (;;) {
    t = lx.next();
    if (t.empty()) break;
    std::string key(t.text);
    const bool known = key == "OBJSENSE" || key == "VAR" || key == "CON" || key == "INT" || key == "OBJACOORD" ||
                       key == "OBJBCOORD" || key == "ACOORD" || key == "BCOORD" || key == "POWCONES" || key == "POW*CONES" ||
                       key == "PSDVAR" || key == "PSDCON" || key == "OBJFCOORD" || key == "FCOORD" || key == "HCOORD" ||
                       key == "DCOORD";
    if (known && !seen.insert(key).second) lx.fail(QRN_RES_ERR_READ_SECTION, t, "the section " + key + " is given twice.");
    auto after = [&](const char *sec) {
      if (!seen.count(sec)) lx.fail(QRN_RES_ERR_READ_SECTION, t, "the section " + key + " comes before " + sec + ".");
    };
    if (key == "OBJSENSE") {
      Token s = lx.need("MIN or MAX");
      if (s.text == "MAX") p.sense = QRN_OBJECTIVE_SENSE_MAXIMIZE;
      else if (s.text != "MIN") lx.fail(QRN_RES_ERR_READ_SYNTAX, s, "the sense is MIN or MAX.");
    } else if (key == "POWCONES" || key == "POW*CONES") {
      if (seen.count("VAR") || seen.count("CON")) lx.fail(QRN_RES_ERR_READ_SECTION, t, "the section " + key + " comes after VAR or CON.");
      auto &list = pow[key == "POW*CONES"];
      qrn_int64 k = lx.need_integer("the number of cones", 0, cap);
      qrn_int64 total = lx.need_integer("the number of weights", 0, cap), sum = 0;
      for (qrn_int64 q = 0; q < k; ++q) {
        qrn_int64 na = lx.need_integer("the number of weights", 1, total - sum);
        sum += na;
        std::vector<double> alpha;
        for (qrn_int64 a = 0; a < na; ++a) alpha.push_back(lx.need_number("a weight", false));
        list.push_back(std::move(alpha));
      }
      if (sum != total) lx.fail_here(QRN_RES_ERR_READ_INDEX, "the cones have " + std::to_string(sum) + " weights, not " + std::to_string(total) + ".");
    } else if (key == "PSDVAR") {
      dims(psdvar);
    } else if (key == "PSDCON") {
      dims(psdcon);
    } else if (key == "VAR") {
      read_blocks(vblocks, n, "the number of variables");
    } else if (key == "CON") {
      read_blocks(cblocks, m, "the number of constraints");
    } else if (key == "OBJBCOORD") {
      p.cfix = lx.need_number("the objective constant", false);
    } else if (known) {
      if (key == "INT" || key == "OBJACOORD" || key == "ACOORD" || key == "HCOORD") after("VAR");
      if (key == "ACOORD" || key == "BCOORD" || key == "FCOORD") after("CON");
      if (key == "FCOORD" || key == "OBJFCOORD") after("PSDVAR");
      if (key == "HCOORD" || key == "DCOORD") after("PSDCON");
      qrn_int64 k = lx.need_integer("a count", 0, cap);
      for (qrn_int64 q = 0; q < k; ++q) {
        Coord c{0, 0, 0, 0, 0.0, lx.line()};
        if (key == "INT") {
          ints.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
        } else if (key == "OBJACOORD") {
          qrn_int32 j = static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1));
          objc.emplace_back(j, lx.need_number("a coefficient", false));
        } else if (key == "ACOORD") {
          c.i = lx.need_integer("a row index", 0, m - 1);
          c.j = lx.need_integer("a variable index", 0, n - 1);
          c.v = lx.need_number("a coefficient", false);
          acoord.push_back(c);
        } else if (key == "BCOORD") {
          qrn_int64 i = lx.need_integer("a row index", 0, m - 1);
          bco.emplace_back(i, lx.need_number("a constant", false));
        } else if (key == "OBJFCOORD") {
          c.j = lx.need_integer("a PSD variable index", 0, static_cast<qrn_int64>(psdvar.size()) - 1);
          coord_kl(c, psdvar[c.j]);
          objf.push_back(c);
        } else if (key == "FCOORD") {
          c.i = lx.need_integer("a row index", 0, m - 1);
          c.j = lx.need_integer("a PSD variable index", 0, static_cast<qrn_int64>(psdvar.size()) - 1);
          coord_kl(c, psdvar[c.j]);
          fcoord.push_back(c);
        } else if (key == "HCOORD") {
          c.i = lx.need_integer("a PSD constraint index", 0, static_cast<qrn_int64>(psdcon.size()) - 1);
          c.j = lx.need_integer("a variable index", 0, n - 1);
          coord_kl(c, psdcon[c.i]);
          hcoord.push_back(c);
        } else {  // DCOORD
          c.i = lx.need_integer("a PSD constraint index", 0, static_cast<qrn_int64>(psdcon.size()) - 1);
          coord_kl(c, psdcon[c.i]);
          dcoord.push_back(c);
        }
      }
    } else if (key == "CHANGE") {
      lx.fail(QRN_RES_ERR_READ_UNSUPPORTED, t, "the section CHANGE (a sequence of problems) is not supported.");
    } else {
      lx.fail(QRN_RES_ERR_READ_SECTION, t, "\"" + key.substr(0, 40) + "\" is not a CBF section.");
    }
  }
  if (n < 0) lx.fail_here(QRN_RES_ERR_READ_SECTION, "the file has no VAR section.");

  // Rows: linear ones are constraints, conic ones affine expressions; then
  // the expressions of conic variable blocks and of PSD constraints.
  std::vector<qrn_int64> rowidx(m);
  std::vector<bool> rowconic(m, false);
  qrn_int32 numcon = 0;
  qrn_int64 numafe = 0;
  {
    qrn_int64 i = 0;
    for (const Block &b : cblocks)
      for (qrn_int64 q = 0; q < b.len; ++q, ++i) {
        rowconic[i] = !linear(b.dom);
        rowidx[i] = rowconic[i] ? numafe++ : numcon++;
      }
  }
  auto domain_for = [&](const Block &b) {
    ProblemDomain d;
    d.n = b.len;
    switch (b.dom) {
      case Dom::quad: d.type = QRN_DOMAIN_QUADRATIC_CONE; break;
      case Dom::rquad: d.type = QRN_DOMAIN_RQUADRATIC_CONE; break;
      case Dom::pexp: d.type = QRN_DOMAIN_PRIMAL_EXP_CONE; break;
      case Dom::dexp: d.type = QRN_DOMAIN_DUAL_EXP_CONE; break;
      case Dom::ppow: d.type = QRN_DOMAIN_PRIMAL_POWER_CONE, d.alpha = pow[0][b.pow]; break;
      default: d.type = QRN_DOMAIN_DUAL_POWER_CONE, d.alpha = pow[1][b.pow]; break;
    }
    return d;
  };
  auto add_acc = [&](ProblemDomain d, qrn_int64 first) {
    ProblemAcc a;
    a.dom = static_cast<qrn_int64>(p.domains.size());
    for (qrn_int64 q = 0; q < d.n; ++q) a.afe.push_back(first + q);
    a.b.assign(static_cast<size_t>(d.n), 0.0);
    p.domains.push_back(std::move(d));
    p.accs.push_back(std::move(a));
  };
  {
    qrn_int64 r = 0;
    for (const Block &b : cblocks)
      if (!linear(b.dom)) add_acc(domain_for(b), r), r += b.len;
  }
  p.resize(numcon, static_cast<qrn_int32>(n));
  // Expression rows as triplets (expression, variable, value).
  std::vector<std::tuple<qrn_int64, qrn_int32, double, size_t>> ftrip;
  qrn_int32 j = 0;
  for (const Block &b : vblocks) {
    if (b.dom == Dom::quad || b.dom == Dom::rquad) {
      ProblemCone c;
      c.type = b.dom == Dom::quad ? QRN_CONE_QUAD : QRN_CONE_RQUAD;
      for (qrn_int64 q = 0; q < b.len; ++q) c.members.push_back(j + static_cast<qrn_int32>(q));
      p.cones.push_back(std::move(c));
    } else if (!linear(b.dom)) {
      add_acc(domain_for(b), numafe);
      for (qrn_int64 q = 0; q < b.len; ++q) ftrip.emplace_back(numafe++, j + static_cast<qrn_int32>(q), 1.0, 0);
    }
    for (qrn_int64 q = 0; q < b.len; ++q, ++j) {
      switch (b.dom) {
        case Dom::pos: p.bkx[j] = QRN_BK_LOWER, p.blx[j] = 0.0, p.bux[j] = inf; break;
        case Dom::neg: p.bkx[j] = QRN_BK_UPPER, p.blx[j] = -inf, p.bux[j] = 0.0; break;
        case Dom::zero: p.bkx[j] = QRN_BK_FIXED, p.blx[j] = p.bux[j] = 0.0; break;
        default: p.bkx[j] = QRN_BK_FREE, p.blx[j] = -inf, p.bux[j] = inf;
      }
    }
  }
  // PSD constraints: svec rows (k, l), l <= k, by columns.
  std::vector<qrn_int64> psdfirst(psdcon.size());
  for (size_t c = 0; c < psdcon.size(); ++c) {
    ProblemDomain d;
    d.type = QRN_DOMAIN_SVEC_PSD_CONE;
    d.n = static_cast<qrn_int64>(psdcon[c]) * (psdcon[c] + 1) / 2;
    psdfirst[c] = numafe;
    add_acc(std::move(d), numafe);
    numafe += p.domains.back().n;
  }
  p.numafe = numafe;
  p.g.assign(static_cast<size_t>(numafe), 0.0);
  auto svec_row = [&](qrn_int64 c, qrn_int32 k, qrn_int32 l) {
    const qrn_int64 d = psdcon[c];
    return psdfirst[c] + l * d - static_cast<qrn_int64>(l) * (l - 1) / 2 + (k - l);
  };
  const double sqrt2 = std::sqrt(2.0);

  for (qrn_int32 k : ints) p.vartype[k] = QRN_VAR_TYPE_INTEGER;
  std::vector<bool> cseen(n, false);
  for (auto &[k, val] : objc) {
    if (cseen[k]) lx.fail_here(QRN_RES_ERR_READ_NAME_DUP, "the objective coefficient of variable " + std::to_string(k) + " is given twice.");
    cseen[k] = true;
    p.c[k] = val;
  }
  std::vector<double> b(numcon, -0.0);
  std::vector<bool> bseen(m, false);
  for (auto &[i, val] : bco) {
    if (bseen[i]) lx.fail_here(QRN_RES_ERR_READ_NAME_DUP, "the constant of row " + std::to_string(i) + " is given twice.");
    bseen[i] = true;
    if (rowconic[i]) p.g[rowidx[i]] = val;
    else b[rowidx[i]] = val;
  }
  for (const Coord &c : dcoord) {
    qrn_int64 r = svec_row(c.i, c.k, c.l);
    if (p.g[r] != 0.0) fail_at(QRN_RES_ERR_READ_NAME_DUP, src, c.line, 1, "a DCOORD entry is given twice.");
    p.g[r] = c.k == c.l ? c.v : c.v * sqrt2;
  }
  {
    qrn_int32 i = 0;
    for (const Block &bl : cblocks) {
      if (!linear(bl.dom)) continue;
      for (qrn_int64 q = 0; q < bl.len; ++q, ++i) {
        switch (bl.dom) {
          case Dom::pos: p.bkc[i] = QRN_BK_LOWER, p.blc[i] = -b[i], p.buc[i] = inf; break;
          case Dom::neg: p.bkc[i] = QRN_BK_UPPER, p.blc[i] = -inf, p.buc[i] = -b[i]; break;
          case Dom::zero: p.bkc[i] = QRN_BK_FIXED, p.blc[i] = p.buc[i] = -b[i]; break;
          default: p.bkc[i] = QRN_BK_FREE, p.blc[i] = -inf, p.buc[i] = inf;
        }
      }
    }
  }
  std::vector<qrn_int32> ti, tj;
  std::vector<double> tv;
  std::vector<size_t> tline;
  for (const Coord &c : acoord) {
    if (rowconic[c.i]) {
      ftrip.emplace_back(rowidx[c.i], static_cast<qrn_int32>(c.j), c.v, c.line);
    } else {
      ti.push_back(static_cast<qrn_int32>(rowidx[c.i])), tj.push_back(static_cast<qrn_int32>(c.j)), tv.push_back(c.v);
      tline.push_back(c.line);
    }
  }
  for (const Coord &c : hcoord)
    ftrip.emplace_back(svec_row(c.i, c.k, c.l), static_cast<qrn_int32>(c.j), c.k == c.l ? c.v : c.v * sqrt2, c.line);
  triplets_to_columns(p, ti, tj, tv, false, [&](size_t k) {
    fail_at(QRN_RES_ERR_READ_NAME_DUP, src, tline[k], 1, "the entry (" + std::to_string(ti[k]) + ", " +
                                                             std::to_string(tj[k]) + ") is given twice.");
  });
  std::sort(ftrip.begin(), ftrip.end());
  for (size_t k = 0; k < ftrip.size(); ++k) {
    auto &[r, var, val, line] = ftrip[k];
    if (!p.fsubi.empty() && p.fsubi.back() == r && p.fsubj.back() == var)
      fail_at(QRN_RES_ERR_READ_NAME_DUP, src, line, 1, "a coefficient of a conic row is given twice.");
    if (val == 0.0) continue;
    p.fsubi.push_back(r), p.fsubj.push_back(var), p.fval.push_back(val);
  }
  // Semidefinite coefficients: one store matrix each, with weight 1.
  p.barvardim = psdvar;
  auto build = [&](const std::vector<Coord> &coords, auto target) {
    // (kind, row, barvar) -> entries keyed by (column, row)
    std::map<std::tuple<int, qrn_int64, qrn_int32>, std::map<std::pair<qrn_int32, qrn_int32>, double>> mats;
    for (const Coord &c : coords) {
      auto [kind, row] = target(c);
      auto &entries = mats[{kind, row, static_cast<qrn_int32>(c.j)}];
      if (!entries.emplace(std::make_pair(c.l, c.k), c.v).second)
        fail_at(QRN_RES_ERR_READ_NAME_DUP, src, c.line, 1, "a matrix entry is given twice.");
    }
    for (auto &[key, entries] : mats) {
      ProblemSymMat sm;
      sm.dim = p.barvardim[std::get<2>(key)];
      for (auto &[kl, val] : entries) sm.subj.push_back(kl.first), sm.subi.push_back(kl.second), sm.val.push_back(val);
      ProblemBarCoef c;
      c.i = std::get<1>(key), c.j = std::get<2>(key);
      c.mat.push_back(static_cast<qrn_int64>(p.symmats.size()));
      c.weight.push_back(1.0);
      p.symmats.push_back(std::move(sm));
      (std::get<0>(key) == 0 ? p.barc : std::get<0>(key) == 1 ? p.bara : p.barf).push_back(std::move(c));
    }
  };
  build(objf, [](const Coord &) { return std::make_pair(0, qrn_int64{-1}); });
  build(fcoord, [&](const Coord &c) { return std::make_pair(rowconic[c.i] ? 2 : 1, rowidx[c.i]); });
  ctx.lines = lx.lines_read();
}

}  // namespace qrn
