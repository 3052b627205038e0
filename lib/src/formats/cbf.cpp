// The Conic Benchmark Format, versions 1 to 3 (docs/formats/cbf.md).
//
// A CBF problem is: minimize or maximize c'x + c0 subject to A x + b in K,
// x in D, some x integer, where K and D are products of domains: F (free),
// L+ (>= 0), L- (<= 0), L= (= 0), Q (quadratic cone) and QR (rotated
// quadratic cone). The task's variables take the domains D; a constraint row
// in L+, L-, L= or F becomes a bound on the constraint. Conic constraint rows
// (Q or QR in K) are read as new free variables s in the cone with rows
// A x + b - s = 0, until tasks hold affine conic constraints. Semidefinite and
// power cone data is refused.
#include "formats.hpp"

#include <cmath>
#include <set>

namespace qrn {
namespace {

enum class Dom { free, pos, neg, zero, quad, rquad };

bool domain_of(std::string_view s, Dom &d) {
  if (s == "F") d = Dom::free;
  else if (s == "L+") d = Dom::pos;
  else if (s == "L-") d = Dom::neg;
  else if (s == "L=") d = Dom::zero;
  else if (s == "Q") d = Dom::quad;
  else if (s == "QR") d = Dom::rquad;
  else return false;
  return true;
}
const char *domain_name(Dom d) {
  switch (d) {
    case Dom::free: return "F";
    case Dom::pos: return "L+";
    case Dom::neg: return "L-";
    case Dom::zero: return "L=";
    case Dom::quad: return "Q";
    default: return "QR";
  }
}

bool is_plus_zero(double v) { return v == 0.0 && !std::signbit(v); }

}  // namespace

void write_cbf(const FileProblem &p, Out &out, const WriteOptions &) {
  if (p.has_quadratic()) fail(QRN_RES_ERR_WRITE_LOSES_QUADRATIC, "CBF cannot hold quadratic terms.");
  if (p.has_names())
    fail(QRN_RES_ERR_WRITE_LOSES_NAMES, "CBF cannot hold names; set QRN_IPAR_OUTPUT_NAMES off to write without them.");
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
      if (len == 1 && !v.empty() && v.back().first == d && d != Dom::quad && d != Dom::rquad)
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
  if (p.numcon > 0) {
    out.raw("CON\n").integer(p.numcon).ch(' ').integer(static_cast<qrn_int64>(cblocks.size())).ch('\n');
    for (auto &[d, len] : cblocks) out.raw(domain_name(d)).ch(' ').integer(len).ch('\n');
    out.ch('\n');
  }
  qrn_int64 nc = 0;
  for (double v : p.c) nc += v != 0.0 || std::signbit(v);
  if (nc > 0) {
    out.raw("OBJACOORD\n").integer(nc).ch('\n');
    for (qrn_int32 j = 0; j < p.numvar; ++j)
      if (p.c[j] != 0.0 || std::signbit(p.c[j])) out.integer(j).ch(' ').num(p.c[j]).ch('\n');
    out.ch('\n');
  }
  if (p.cfix != 0.0 || std::signbit(p.cfix)) out.raw("OBJBCOORD\n").num(p.cfix).raw("\n\n");
  if (p.numanz() > 0) {
    out.raw("ACOORD\n").integer(p.numanz()).ch('\n');
    for (qrn_int32 j = 0; j < p.numvar; ++j)
      for (qrn_int64 k = p.aptr[j]; k < p.aptr[j + 1]; ++k) out.integer(p.asub[k]).ch(' ').integer(j).ch(' ').num(p.aval[k]).ch('\n');
    out.ch('\n');
  }
  qrn_int64 nb = 0;
  for (double v : b) nb += !(v == 0.0 && std::signbit(v));
  if (nb > 0) {
    out.raw("BCOORD\n").integer(nb).ch('\n');
    for (qrn_int32 i = 0; i < p.numcon; ++i)
      if (!(b[i] == 0.0 && std::signbit(b[i]))) out.integer(i).ch(' ').num(b[i]).ch('\n');
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
  std::vector<std::pair<Dom, qrn_int64>> vblocks, cblocks;
  qrn_int64 n = -1, m = 0;
  std::vector<qrn_int32> ints;
  std::vector<std::pair<qrn_int32, double>> objc;
  std::vector<qrn_int32> ti, tj;
  std::vector<double> tv;
  std::vector<size_t> tline;
  std::vector<std::pair<qrn_int32, double>> bco;
  std::set<std::string> seen;
  auto read_blocks = [&](std::vector<std::pair<Dom, qrn_int64>> &blocks, qrn_int64 &total, const char *what) {
    total = lx.need_integer(what, 0, std::min<qrn_int64>(cap, INT32_MAX));
    qrn_int64 k = lx.need_integer("the number of domains", 0, total);
    qrn_int64 sum = 0;
    for (qrn_int64 q = 0; q < k; ++q) {
      Token d = lx.need("a domain");
      Dom dom;
      if (!domain_of(d.text, dom)) {
        bool known = d.text == "EXP" || d.text == "EXP*" || d.text.find("POW") != std::string_view::npos ||
                     d.text == "SVECPSD";
        lx.fail(known ? QRN_RES_ERR_READ_UNSUPPORTED : QRN_RES_ERR_READ_SYNTAX, d,
                "the domain \"" + std::string(d.text.substr(0, 40)) + "\" is " + (known ? "not supported." : "not known."));
      }
      qrn_int64 len = lx.need_integer("a domain size", 1, total - sum);
      if (dom == Dom::rquad && len < 2) lx.fail(QRN_RES_ERR_READ_INDEX, d, "a QR domain needs at least 2 members.");
      sum += len;
      blocks.emplace_back(dom, len);
    }
    if (sum != total) lx.fail_here(QRN_RES_ERR_READ_INDEX, std::string("the domains cover ") + std::to_string(sum) + " of " + std::to_string(total) + ".");
  };
  for (;;) {
    t = lx.next();
    if (t.empty()) break;
    std::string key(t.text);
    if (key == "OBJSENSE" || key == "VAR" || key == "CON" || key == "INT" || key == "OBJACOORD" || key == "OBJBCOORD" ||
        key == "ACOORD" || key == "BCOORD") {
      if (!seen.insert(key).second) lx.fail(QRN_RES_ERR_READ_SECTION, t, "the section " + key + " is given twice.");
    }
    if (key == "OBJSENSE") {
      Token s = lx.need("MIN or MAX");
      if (s.text == "MAX") p.sense = QRN_OBJECTIVE_SENSE_MAXIMIZE;
      else if (s.text != "MIN") lx.fail(QRN_RES_ERR_READ_SYNTAX, s, "the sense is MIN or MAX.");
    } else if (key == "VAR") {
      read_blocks(vblocks, n, "the number of variables");
    } else if (key == "CON") {
      read_blocks(cblocks, m, "the number of constraints");
    } else if (key == "INT" || key == "OBJACOORD" || key == "ACOORD" || key == "BCOORD") {
      if (n < 0) lx.fail(QRN_RES_ERR_READ_SECTION, t, "the section " + key + " comes before VAR.");
      if ((key == "ACOORD" || key == "BCOORD") && !seen.count("CON")) lx.fail(QRN_RES_ERR_READ_SECTION, t, "the section " + key + " comes before CON.");
      qrn_int64 k = lx.need_integer("a count", 0, cap);
      for (qrn_int64 q = 0; q < k; ++q) {
        if (key == "INT") {
          ints.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
        } else if (key == "OBJACOORD") {
          qrn_int32 j = static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1));
          objc.emplace_back(j, lx.need_number("a coefficient", false));
        } else if (key == "ACOORD") {
          Token it = lx.need("a row index");
          ti.push_back(static_cast<qrn_int32>(lx.integer(it, 0, m - 1)));
          tj.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
          tv.push_back(lx.need_number("a coefficient", false));
          tline.push_back(it.line);
        } else {
          qrn_int32 i = static_cast<qrn_int32>(lx.need_integer("a row index", 0, m - 1));
          bco.emplace_back(i, lx.need_number("a constant", false));
        }
      }
    } else if (key == "OBJBCOORD") {
      p.cfix = lx.need_number("the objective constant", false);
    } else if (key == "PSDVAR" || key == "PSDCON" || key == "OBJFCOORD" || key == "FCOORD" || key == "HCOORD" ||
               key == "DCOORD" || key == "POWCONES" || key == "POW*CONES" || key == "CHANGE") {
      lx.fail(QRN_RES_ERR_READ_UNSUPPORTED, t, "the section " + key + " holds data this library does not support yet.");
    } else {
      lx.fail(QRN_RES_ERR_READ_SECTION, t, "\"" + key.substr(0, 40) + "\" is not a CBF section.");
    }
  }
  if (n < 0) lx.fail_here(QRN_RES_ERR_READ_SECTION, "the file has no VAR section.");
  // Conic row blocks add variables s and equality rows A_i x + b_i - s = 0.
  qrn_int64 extra = 0;
  for (auto &[d, len] : cblocks)
    if (d == Dom::quad || d == Dom::rquad) extra += len;
  if (n + extra > INT32_MAX) lx.fail_here(QRN_RES_ERR_READ_INDEX, "too many variables.");
  const qrn_int32 nv = static_cast<qrn_int32>(n + extra), nc = static_cast<qrn_int32>(m);
  p.resize(nc, nv);
  qrn_int32 j = 0;
  for (auto &[d, len] : vblocks) {
    if (d == Dom::quad || d == Dom::rquad) {
      ProblemCone c;
      c.type = d == Dom::quad ? QRN_CONE_QUAD : QRN_CONE_RQUAD;
      for (qrn_int64 q = 0; q < len; ++q) c.members.push_back(j + static_cast<qrn_int32>(q));
      p.cones.push_back(std::move(c));
    }
    for (qrn_int64 q = 0; q < len; ++q, ++j) {
      switch (d) {
        case Dom::pos: p.bkx[j] = QRN_BK_LOWER, p.blx[j] = 0.0, p.bux[j] = inf; break;
        case Dom::neg: p.bkx[j] = QRN_BK_UPPER, p.blx[j] = -inf, p.bux[j] = 0.0; break;
        case Dom::zero: p.bkx[j] = QRN_BK_FIXED, p.blx[j] = p.bux[j] = 0.0; break;
        default: p.bkx[j] = QRN_BK_FREE, p.blx[j] = -inf, p.bux[j] = inf;
      }
    }
  }
  for (qrn_int32 k : ints) p.vartype[k] = QRN_VAR_TYPE_INTEGER;
  std::vector<bool> cseen(nv, false);
  for (auto &[k, val] : objc) {
    if (cseen[k]) lx.fail_here(QRN_RES_ERR_READ_NAME_DUP, "the objective coefficient of variable " + std::to_string(k) + " is given twice.");
    cseen[k] = true;
    p.c[k] = val;
  }
  std::vector<double> b(nc, -0.0);
  std::vector<bool> bseen(nc, false);
  for (auto &[i, val] : bco) {
    if (bseen[i]) lx.fail_here(QRN_RES_ERR_READ_NAME_DUP, "the constant of row " + std::to_string(i) + " is given twice.");
    bseen[i] = true;
    b[i] = val;
  }
  qrn_int32 i = 0;
  for (auto &[d, len] : cblocks) {
    if (d == Dom::quad || d == Dom::rquad) {
      ProblemCone c;
      c.type = d == Dom::quad ? QRN_CONE_QUAD : QRN_CONE_RQUAD;
      for (qrn_int64 q = 0; q < len; ++q, ++i, ++j) {
        c.members.push_back(j);
        p.bkx[j] = QRN_BK_FREE, p.blx[j] = -inf, p.bux[j] = inf;
        ti.push_back(i), tj.push_back(j), tv.push_back(-1.0), tline.push_back(0);
        p.bkc[i] = QRN_BK_FIXED, p.blc[i] = p.buc[i] = -b[i];
      }
      p.cones.push_back(std::move(c));
      continue;
    }
    for (qrn_int64 q = 0; q < len; ++q, ++i) {
      switch (d) {
        case Dom::pos: p.bkc[i] = QRN_BK_LOWER, p.blc[i] = -b[i], p.buc[i] = inf; break;
        case Dom::neg: p.bkc[i] = QRN_BK_UPPER, p.blc[i] = -inf, p.buc[i] = -b[i]; break;
        case Dom::zero: p.bkc[i] = QRN_BK_FIXED, p.blc[i] = p.buc[i] = -b[i]; break;
        default: p.bkc[i] = QRN_BK_FREE, p.blc[i] = -inf, p.buc[i] = inf;
      }
    }
  }
  triplets_to_columns(p, ti, tj, tv, false, [&](size_t k) {
    fail_at(QRN_RES_ERR_READ_NAME_DUP, src, tline[k], 1, "the entry (" + std::to_string(ti[k]) + ", " +
                                                             std::to_string(tj[k]) + ") is given twice.");
  });
  ctx.lines = lx.lines_read();
}

}  // namespace qrn
