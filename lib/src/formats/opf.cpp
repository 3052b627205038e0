// The readable text format OPF (docs/formats/opf.md): one keyword line per
// item, items by index with their names, rows written out row by row.
//
//   opf 1
//   task "name"
//   objective minimize|maximize "name"
//   constant <cfix>
//   variables <n>
//   var <j> "name" continuous|integer <bound>     (n lines, j = 0, 1, ...)
//   constraints <m>
//   con <i> "name" <bound>                        (m lines, i = 0, 1, ...)
//   obj <j> <c_j> [<j> <c_j> ...]                  objective coefficients
//   row <i> <j> <a_ij> [<j> <a_ij> ...]            entries of row i
//   qobj <i> <j> <q_ij> [...]                      lower triangle of Q, term 1/2 x'Qx
//   qcon <k> <i> <j> <q_ij> [...]                  the same for constraint k
//   cone <k> "name" quad|rquad <parameter> <member> ...
//   the conic and semidefinite sections of the text format (conic_sections.cpp):
//   keyword and count on one line, then that many lines, in their fixed order
//   end
//
// <bound> is "free", "lower <l>", "upper <u>", "fixed <v>" or
// "ranged <l> <u>". '#' starts a comment. obj, row, qobj, qcon and cone
// lines may come in any order after the declarations, and may repeat (a later
// value for the same entry is refused as a duplicate).
#include "formats.hpp"

#include <cmath>
#include <set>

namespace qrn {
namespace {

const char *const key_words[] = {"free", "lower", "upper", "fixed", "ranged"};

void bound(Out &out, qrn_int32 bk, double bl, double bu) {
  out.raw(key_words[bk]);
  switch (bk) {
    case QRN_BK_LOWER: out.ch(' ').num(bl); break;
    case QRN_BK_UPPER: out.ch(' ').num(bu); break;
    case QRN_BK_FIXED: out.ch(' ').num(bl); break;
    case QRN_BK_RANGED: out.ch(' ').num(bl).ch(' ').num(bu); break;
    default: break;
  }
}

const std::string &name_at(const std::vector<std::string> &v, size_t k) {
  static const std::string none;
  return k < v.size() ? v[k] : none;
}

void read_bound(Lexer &lx, qrn_int32 &bk, double &bl, double &bu) {
  Token t = lx.next_on_line();
  bk = -1;
  for (int k = 0; k < 5; ++k)
    if (t.text == key_words[k]) bk = k;
  if (bk < 0) lx.fail(t.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SYNTAX, t, "a bound key (free, lower, upper, fixed, ranged) was expected.");
  bl = -inf, bu = inf;
  auto value = [&](const char *what) {
    Token v = lx.next_on_line();
    if (v.empty()) lx.fail(QRN_RES_ERR_READ_EOF, v, std::string("the line ends where ") + what + " was expected.");
    return lx.number(v, false);
  };
  switch (bk) {
    case QRN_BK_LOWER: bl = value("a lower bound"); break;
    case QRN_BK_UPPER: bu = value("an upper bound"); break;
    case QRN_BK_FIXED: bl = bu = value("a value"); break;
    case QRN_BK_RANGED: bl = value("a lower bound"); bu = value("an upper bound"); break;
    default: break;
  }
}

}  // namespace

void write_opf(const FileProblem &p, Out &out, const WriteOptions &) {
  out.raw("opf 1\n");
  out.raw("task ").quoted(p.taskname).ch('\n');
  out.raw("objective ").raw(p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? "maximize " : "minimize ").quoted(p.objname).ch('\n');
  out.raw("constant ").num(p.cfix).ch('\n');
  out.raw("variables ").integer(p.numvar).ch('\n');
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    out.raw("var ").integer(j).ch(' ').quoted(name_at(p.varnames, j));
    out.raw(p.vartype[j] == QRN_VAR_TYPE_INTEGER ? " integer " : " continuous ");
    bound(out, p.bkx[j], p.blx[j], p.bux[j]);
    out.ch('\n');
  }
  out.raw("constraints ").integer(p.numcon).ch('\n');
  for (qrn_int32 i = 0; i < p.numcon; ++i) {
    out.raw("con ").integer(i).ch(' ').quoted(name_at(p.connames, i)).ch(' ');
    bound(out, p.bkc[i], p.blc[i], p.buc[i]);
    out.ch('\n');
  }
  // Objective coefficients, eight to a line.
  int onl = 0;
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    if (p.c[j] == 0.0 && !std::signbit(p.c[j])) continue;
    if (onl == 0) out.raw("obj");
    out.ch(' ').integer(j).ch(' ').num(p.c[j]);
    if (++onl == 8) out.ch('\n'), onl = 0;
  }
  if (onl > 0) out.ch('\n');
  // Rows from the columns.
  const ProblemRows byrow = rows_of(p);
  const auto &rstart = byrow.start;
  const auto &rsub = byrow.sub;
  const auto &rval = byrow.val;
  for (qrn_int32 i = 0; i < p.numcon; ++i) {
    if (rstart[i] == rstart[i + 1]) continue;
    out.raw("row ").integer(i);
    for (qrn_int64 k = rstart[i]; k < rstart[i + 1]; ++k) out.ch(' ').integer(rsub[k]).ch(' ').num(rval[k]);
    out.ch('\n');
  }
  if (!p.qoval.empty()) {
    out.raw("qobj");
    for (size_t k = 0; k < p.qoval.size(); ++k) out.ch(' ').integer(p.qosubi[k]).ch(' ').integer(p.qosubj[k]).ch(' ').num(p.qoval[k]);
    out.ch('\n');
  }
  for (size_t k = 0; k < p.qcval.size();) {
    qrn_int32 con = p.qcsubk[k];
    out.raw("qcon ").integer(con);
    for (; k < p.qcval.size() && p.qcsubk[k] == con; ++k)
      out.ch(' ').integer(p.qcsubi[k]).ch(' ').integer(p.qcsubj[k]).ch(' ').num(p.qcval[k]);
    out.ch('\n');
  }
  for (size_t k = 0; k < p.cones.size(); ++k) {
    const ProblemCone &c = p.cones[k];
    out.raw("cone ").integer(static_cast<qrn_int64>(k)).ch(' ').quoted(name_at(p.conenames, k));
    out.raw(c.type == QRN_CONE_RQUAD ? " rquad " : " quad ").num(c.par);
    for (qrn_int32 m : c.members) out.ch(' ').integer(m);
    out.ch('\n');
  }
  write_conic_sections(p, out);
  out.raw("end\n");
}

void read_opf(const Source &src, ReadContext &ctx) {
  Lexer lx(src, true);
  FileProblem &p = ctx.problem;
  auto end_line = [&]() {
    Token t = lx.next_on_line();
    if (!t.empty()) lx.fail(QRN_RES_ERR_READ_SYNTAX, t, "the line has more than expected: \"" + std::string(t.text.substr(0, 40)) + "\".");
  };
  auto on_line = [&](const char *what) {
    Token t = lx.next_on_line();
    if (t.empty()) lx.fail(QRN_RES_ERR_READ_EOF, t, std::string("the line ends where ") + what + " was expected.");
    return t;
  };
  // More fields on the line of keyword k.
  auto more = [&](const Token &k) {
    Token q = lx.peek();
    return !q.empty() && q.line == k.line;
  };
  Token head = lx.next();
  if (head.text != "opf") lx.fail(QRN_RES_ERR_READ_VERSION, head, "the text does not start with \"opf\".");
  Token ver = on_line("the version");
  if (ver.text != "1") lx.fail(QRN_RES_ERR_READ_VERSION, ver, "OPF version " + std::string(ver.text) + " is not known.");
  end_line();
  // Header lines, in this order, each optional except the two counts.
  Token t = lx.next();
  if (t.text == "task") {
    p.taskname = lx.unquote(on_line("the task name"));
    end_line();
    t = lx.next();
  }
  if (t.text == "objective") {
    Token s = on_line("the objective sense");
    if (s.text == "maximize") p.sense = QRN_OBJECTIVE_SENSE_MAXIMIZE;
    else if (s.text != "minimize") lx.fail(QRN_RES_ERR_READ_SYNTAX, s, "the sense is minimize or maximize.");
    Token nm = lx.next_on_line();
    if (!nm.empty()) p.objname = lx.unquote(nm);
    end_line();
    t = lx.next();
  }
  if (t.text == "constant") {
    p.cfix = lx.number(on_line("the constant"), false);
    end_line();
    t = lx.next();
  }
  if (t.text != "variables") lx.fail(t.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SECTION, t, "\"variables\" was expected.");
  const qrn_int32 n = static_cast<qrn_int32>(lx.integer(on_line("a count"), 0, INT32_MAX));
  end_line();
  // The counts are checked against what follows before anything of that size is made.
  std::vector<qrn_int32> bkx, vt;
  std::vector<double> blx, bux;
  std::vector<std::string> varnames;
  for (qrn_int32 j = 0; j < n; ++j) {
    Token v = lx.next();
    if (v.text != "var") lx.fail(v.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SYNTAX, v, "\"var " + std::to_string(j) + "\" was expected.");
    lx.integer(on_line("the index"), j, j);
    varnames.push_back(lx.unquote(on_line("the name")));
    Token ty = on_line("the type");
    if (ty.text == "integer") vt.push_back(QRN_VAR_TYPE_INTEGER);
    else if (ty.text == "continuous") vt.push_back(QRN_VAR_TYPE_CONTINUOUS);
    else lx.fail(QRN_RES_ERR_READ_SYNTAX, ty, "the type is continuous or integer.");
    qrn_int32 bk;
    double bl, bu;
    read_bound(lx, bk, bl, bu);
    bkx.push_back(bk), blx.push_back(bl), bux.push_back(bu);
    end_line();
  }
  t = lx.next();
  if (t.text != "constraints") lx.fail(t.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SECTION, t, "\"constraints\" was expected.");
  const qrn_int32 m = static_cast<qrn_int32>(lx.integer(on_line("a count"), 0, INT32_MAX));
  end_line();
  std::vector<qrn_int32> bkc;
  std::vector<double> blc, buc;
  std::vector<std::string> connames;
  for (qrn_int32 i = 0; i < m; ++i) {
    Token v = lx.next();
    if (v.text != "con") lx.fail(v.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SYNTAX, v, "\"con " + std::to_string(i) + "\" was expected.");
    lx.integer(on_line("the index"), i, i);
    connames.push_back(lx.unquote(on_line("the name")));
    qrn_int32 bk;
    double bl, bu;
    read_bound(lx, bk, bl, bu);
    bkc.push_back(bk), blc.push_back(bl), buc.push_back(bu);
    end_line();
  }
  p.resize(m, n);
  p.bkx = std::move(bkx), p.blx = std::move(blx), p.bux = std::move(bux), p.vartype = std::move(vt);
  p.bkc = std::move(bkc), p.blc = std::move(blc), p.buc = std::move(buc);
  p.varnames = std::move(varnames);
  p.connames = std::move(connames);

  std::vector<bool> cseen(n, false);
  std::vector<qrn_int32> ti, tj;
  std::vector<double> tv;
  std::vector<size_t> tline;
  std::set<std::pair<qrn_int32, qrn_int32>> qoseen;
  std::set<std::tuple<qrn_int32, qrn_int32, qrn_int32>> qcseen;
  int state = -1;
  for (;;) {
    t = lx.next();
    if (t.empty()) lx.fail(QRN_RES_ERR_READ_EOF, t, "the text ends without \"end\".");
    if (t.text == "end") break;
    if (read_conic_section(lx, t, p, state, static_cast<qrn_int64>(src.text.size()))) continue;
    if (t.text == "obj") {
      do {
        Token jt = on_line("a variable index");
        qrn_int32 j = static_cast<qrn_int32>(lx.integer(jt, 0, n - 1));
        if (cseen[j]) lx.fail(QRN_RES_ERR_READ_NAME_DUP, jt, "the coefficient of variable " + std::to_string(j) + " is given twice.");
        cseen[j] = true;
        p.c[j] = lx.number(on_line("a coefficient"), false);
      } while (more(t));
    } else if (t.text == "row") {
      qrn_int32 i = static_cast<qrn_int32>(lx.integer(on_line("a constraint index"), 0, m - 1));
      do {
        Token jt = on_line("a variable index");
        tj.push_back(static_cast<qrn_int32>(lx.integer(jt, 0, n - 1)));
        ti.push_back(i);
        tv.push_back(lx.number(on_line("a coefficient"), false));
        tline.push_back(jt.line);
      } while (more(t));
    } else if (t.text == "qobj") {
      do {
        Token it = on_line("a variable index");
        qrn_int32 i = static_cast<qrn_int32>(lx.integer(it, 0, n - 1));
        qrn_int32 j = static_cast<qrn_int32>(lx.integer(on_line("a variable index"), 0, n - 1));
        if (!qoseen.insert({std::max(i, j), std::min(i, j)}).second)
          lx.fail(QRN_RES_ERR_READ_NAME_DUP, it, "the quadratic term (" + std::to_string(i) + ", " + std::to_string(j) + ") is given twice.");
        p.qosubi.push_back(i), p.qosubj.push_back(j), p.qoval.push_back(lx.number(on_line("a coefficient"), false));
      } while (more(t));
    } else if (t.text == "qcon") {
      qrn_int32 k = static_cast<qrn_int32>(lx.integer(on_line("a constraint index"), 0, m - 1));
      do {
        Token it = on_line("a variable index");
        qrn_int32 i = static_cast<qrn_int32>(lx.integer(it, 0, n - 1));
        qrn_int32 j = static_cast<qrn_int32>(lx.integer(on_line("a variable index"), 0, n - 1));
        if (!qcseen.insert({k, std::max(i, j), std::min(i, j)}).second)
          lx.fail(QRN_RES_ERR_READ_NAME_DUP, it, "the quadratic term (" + std::to_string(i) + ", " + std::to_string(j) + ") is given twice.");
        p.qcsubk.push_back(k), p.qcsubi.push_back(i), p.qcsubj.push_back(j);
        p.qcval.push_back(lx.number(on_line("a coefficient"), false));
      } while (more(t));
    } else if (t.text == "cone") {
      Token kt = on_line("the cone index");
      lx.integer(kt, static_cast<qrn_int64>(p.cones.size()), static_cast<qrn_int64>(p.cones.size()));
      p.conenames.push_back(lx.unquote(on_line("the name")));
      ProblemCone c;
      Token ty = on_line("the cone type");
      if (ty.text == "quad") c.type = QRN_CONE_QUAD;
      else if (ty.text == "rquad") c.type = QRN_CONE_RQUAD;
      else lx.fail(QRN_RES_ERR_READ_SYNTAX, ty, "the cone type is quad or rquad.");
      c.par = lx.number(on_line("the parameter"), true);
      for (Token mt = lx.next_on_line(); !mt.empty(); mt = lx.next_on_line())
        c.members.push_back(static_cast<qrn_int32>(lx.integer(mt, 0, n - 1)));
      p.cones.push_back(std::move(c));
      continue;
    } else {
      lx.fail(QRN_RES_ERR_READ_SECTION, t, "\"" + std::string(t.text.substr(0, 40)) + "\" is not an OPF keyword here.");
    }
    end_line();
  }
  Token rest = lx.next();
  if (!rest.empty()) lx.fail(QRN_RES_ERR_READ_SECTION, rest, "text follows \"end\".");
  triplets_to_columns(p, ti, tj, tv, false, [&](size_t k) {
    fail_at(QRN_RES_ERR_READ_NAME_DUP, src, tline[k], 1, "the entry (" + std::to_string(ti[k]) + ", " +
                                                             std::to_string(tj[k]) + ") is given twice.");
  });
  ctx.lines = lx.lines_read();
}

}  // namespace qrn
