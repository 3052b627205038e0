// The compact text format PTF (docs/formats/ptf.md): counted arrays in a
// fixed order, tokens separated by any white space, no per-item keywords.
//
//   ptf 1
//   name "task name" "objective name"
//   sense min|max  constant <cfix>
//   dims <numcon> <numvar> <numcone>
//   c <k> (<j> <c_j>)*                       non-zero objective coefficients
//   bc (<key> <values>)*numcon               keys fr lo up fx ra with 0, 1, 1, 1, 2 values
//   bx (<key> <values>)*numvar
//   int <k> <j>*                             integer variables
//   a <nnz> (<nz_j> (<i> <a_ij>)*)*numvar    A by column
//   qo <k> (<i> <j> <q_ij>)*                 lower triangle, term 1/2 x'Qx
//   qc <k> (<con> <i> <j> <q_ij>)*
//   cones (<type> <parameter> <nummem> <member>*)*numcone   type q or r
//   the conic and semidefinite sections of the text format (conic_sections.cpp), when not empty
//   names <kind> <k> (<index> "name")*       kind con, var or cone; repeatable
//   end
#include "formats.hpp"

#include <cmath>

namespace qrn {
namespace {

const char *const keys[] = {"fr", "lo", "up", "fx", "ra"};

void bounds(Out &out, qrn_int32 bk, double bl, double bu) {
  out.ch(' ').raw(keys[bk]);
  if (bk == QRN_BK_LOWER || bk == QRN_BK_FIXED || bk == QRN_BK_RANGED) out.ch(' ').num(bl);
  if (bk == QRN_BK_UPPER || bk == QRN_BK_RANGED) out.ch(' ').num(bu);
}

void names(Out &out, const char *kind, const std::vector<std::string> &v) {
  qrn_int64 n = 0;
  for (const auto &s : v) n += !s.empty();
  if (n == 0) return;
  out.raw("names ").raw(kind).ch(' ').integer(n).ch('\n');
  for (size_t k = 0; k < v.size(); ++k)
    if (!v[k].empty()) out.integer(static_cast<qrn_int64>(k)).ch(' ').quoted(v[k]).ch('\n');
}

void read_bounds(Lexer &lx, qrn_int32 count, std::vector<qrn_int32> &bk, std::vector<double> &bl, std::vector<double> &bu) {
  for (qrn_int32 k = 0; k < count; ++k) {
    Token t = lx.need("a bound key");
    qrn_int32 key = -1;
    for (int q = 0; q < 5; ++q)
      if (t.text == keys[q]) key = q;
    if (key < 0) lx.fail(QRN_RES_ERR_READ_SYNTAX, t, "\"" + std::string(t.text.substr(0, 40)) + "\" is not a bound key.");
    double l = -inf, u = inf;
    if (key == QRN_BK_LOWER || key == QRN_BK_FIXED || key == QRN_BK_RANGED) l = lx.need_number("a bound", false);
    if (key == QRN_BK_UPPER || key == QRN_BK_RANGED) u = lx.need_number("a bound", false);
    if (key == QRN_BK_FIXED) u = l;
    bk.push_back(key), bl.push_back(l), bu.push_back(u);
  }
}

}  // namespace

void write_ptf(const FileProblem &p, Out &out, const WriteOptions &) {
  out.raw("ptf 1\nname ").quoted(p.taskname).ch(' ').quoted(p.objname).ch('\n');
  out.raw(p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? "sense max" : "sense min").raw(" constant ").num(p.cfix).ch('\n');
  out.raw("dims ").integer(p.numcon).ch(' ').integer(p.numvar).ch(' ').integer(static_cast<qrn_int64>(p.cones.size())).ch('\n');
  qrn_int64 nc = 0;
  for (double v : p.c) nc += v != 0.0 || std::signbit(v);
  out.raw("c ").integer(nc);
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    if (p.c[j] != 0.0 || std::signbit(p.c[j])) out.ch(' ').integer(j).ch(' ').num(p.c[j]);
  out.raw("\nbc");
  for (qrn_int32 i = 0; i < p.numcon; ++i) bounds(out, p.bkc[i], p.blc[i], p.buc[i]);
  out.raw("\nbx");
  for (qrn_int32 j = 0; j < p.numvar; ++j) bounds(out, p.bkx[j], p.blx[j], p.bux[j]);
  qrn_int64 ni = 0;
  for (qrn_int32 t : p.vartype) ni += t == QRN_VAR_TYPE_INTEGER;
  out.raw("\nint ").integer(ni);
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    if (p.vartype[j] == QRN_VAR_TYPE_INTEGER) out.ch(' ').integer(j);
  out.raw("\na ").integer(p.numanz());
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    out.ch('\n').integer(p.aptr[j + 1] - p.aptr[j]);
    for (qrn_int64 k = p.aptr[j]; k < p.aptr[j + 1]; ++k) out.ch(' ').integer(p.asub[k]).ch(' ').num(p.aval[k]);
  }
  out.raw("\nqo ").integer(static_cast<qrn_int64>(p.qoval.size()));
  for (size_t k = 0; k < p.qoval.size(); ++k) out.ch(' ').integer(p.qosubi[k]).ch(' ').integer(p.qosubj[k]).ch(' ').num(p.qoval[k]);
  out.raw("\nqc ").integer(static_cast<qrn_int64>(p.qcval.size()));
  for (size_t k = 0; k < p.qcval.size(); ++k)
    out.ch(' ').integer(p.qcsubk[k]).ch(' ').integer(p.qcsubi[k]).ch(' ').integer(p.qcsubj[k]).ch(' ').num(p.qcval[k]);
  out.raw("\ncones");
  for (const ProblemCone &c : p.cones) {
    out.raw(c.type == QRN_CONE_RQUAD ? "\nr " : "\nq ").num(c.par).ch(' ').integer(static_cast<qrn_int64>(c.members.size()));
    for (qrn_int32 m : c.members) out.ch(' ').integer(m);
  }
  out.ch('\n');
  write_conic_sections(p, out);
  names(out, "con", p.connames);
  names(out, "var", p.varnames);
  names(out, "cone", p.conenames);
  out.raw("end\n");
}

void read_ptf(const Source &src, ReadContext &ctx) {
  Lexer lx(src, false);
  FileProblem &p = ctx.problem;
  Token head = lx.next();
  if (head.text != "ptf") lx.fail(QRN_RES_ERR_READ_VERSION, head, "the text does not start with \"ptf\".");
  Token ver = lx.need("the version");
  if (ver.text != "1") lx.fail(QRN_RES_ERR_READ_VERSION, ver, "PTF version " + std::string(ver.text) + " is not known.");
  lx.expect("name");
  p.taskname = lx.need_string("the task name");
  p.objname = lx.need_string("the objective name");
  lx.expect("sense");
  Token s = lx.need("min or max");
  if (s.text == "max") p.sense = QRN_OBJECTIVE_SENSE_MAXIMIZE;
  else if (s.text != "min") lx.fail(QRN_RES_ERR_READ_SYNTAX, s, "the sense is min or max.");
  lx.expect("constant");
  p.cfix = lx.need_number("the constant", false);
  lx.expect("dims");
  // Counts are limited by the text's length (each item takes at least two bytes).
  const qrn_int64 cap = static_cast<qrn_int64>(src.text.size() / 2 + 1);
  const qrn_int32 m = static_cast<qrn_int32>(lx.need_integer("the number of constraints", 0, std::min<qrn_int64>(INT32_MAX, cap)));
  const qrn_int32 n = static_cast<qrn_int32>(lx.need_integer("the number of variables", 0, std::min<qrn_int64>(INT32_MAX, cap)));
  const qrn_int64 nk = lx.need_integer("the number of cones", 0, std::min<qrn_int64>(INT32_MAX, cap));
  p.resize(m, n);
  lx.expect("c");
  qrn_int64 nc = lx.need_integer("a count", 0, n);
  std::vector<bool> seen(n, false);
  for (qrn_int64 k = 0; k < nc; ++k) {
    Token jt = lx.need("a variable index");
    qrn_int32 j = static_cast<qrn_int32>(lx.integer(jt, 0, n - 1));
    if (seen[j]) lx.fail(QRN_RES_ERR_READ_NAME_DUP, jt, "the coefficient of variable " + std::to_string(j) + " is given twice.");
    seen[j] = true;
    p.c[j] = lx.need_number("a coefficient", false);
  }
  lx.expect("bc");
  p.bkc.clear(), p.blc.clear(), p.buc.clear();
  read_bounds(lx, m, p.bkc, p.blc, p.buc);
  lx.expect("bx");
  p.bkx.clear(), p.blx.clear(), p.bux.clear();
  read_bounds(lx, n, p.bkx, p.blx, p.bux);
  lx.expect("int");
  qrn_int64 ni = lx.need_integer("a count", 0, n);
  for (qrn_int64 k = 0; k < ni; ++k) p.vartype[lx.need_integer("a variable index", 0, n - 1)] = QRN_VAR_TYPE_INTEGER;
  lx.expect("a");
  qrn_int64 nnz = lx.need_integer("a count", 0, cap);
  p.aptr.assign(static_cast<size_t>(n) + 1, 0);
  p.asub.reserve(nnz), p.aval.reserve(nnz);
  for (qrn_int32 j = 0; j < n; ++j) {
    qrn_int64 nzj = lx.need_integer("a column count", 0, nnz - static_cast<qrn_int64>(p.asub.size()));
    qrn_int32 prev = -1;
    for (qrn_int64 k = 0; k < nzj; ++k) {
      Token it = lx.need("a row index");
      qrn_int32 i = static_cast<qrn_int32>(lx.integer(it, 0, m - 1));
      if (i <= prev) lx.fail(QRN_RES_ERR_READ_INDEX, it, "row indexes within a column must increase.");
      prev = i;
      p.asub.push_back(i);
      p.aval.push_back(lx.need_number("a coefficient", false));
    }
    p.aptr[j + 1] = static_cast<qrn_int64>(p.asub.size());
  }
  if (p.numanz() != nnz) lx.fail_here(QRN_RES_ERR_READ_INDEX, "the columns hold fewer entries than the count " + std::to_string(nnz) + ".");
  lx.expect("qo");
  qrn_int64 nq = lx.need_integer("a count", 0, cap);
  for (qrn_int64 k = 0; k < nq; ++k) {
    p.qosubi.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qosubj.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qoval.push_back(lx.need_number("a coefficient", false));
  }
  lx.expect("qc");
  qrn_int64 nqc = lx.need_integer("a count", 0, cap);
  for (qrn_int64 k = 0; k < nqc; ++k) {
    p.qcsubk.push_back(static_cast<qrn_int32>(lx.need_integer("a constraint index", 0, m - 1)));
    p.qcsubi.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qcsubj.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qcval.push_back(lx.need_number("a coefficient", false));
  }
  lx.expect("cones");
  for (qrn_int64 k = 0; k < nk; ++k) {
    ProblemCone c;
    Token t = lx.need("a cone type");
    if (t.text == "r") c.type = QRN_CONE_RQUAD;
    else if (t.text != "q") lx.fail(QRN_RES_ERR_READ_SYNTAX, t, "the cone type is q or r.");
    c.par = lx.need_number("a parameter", true);
    qrn_int64 nm = lx.need_integer("a member count", 0, n);
    for (qrn_int64 q = 0; q < nm; ++q) c.members.push_back(static_cast<qrn_int32>(lx.need_integer("a member", 0, n - 1)));
    p.cones.push_back(std::move(c));
  }
  int state = -1;
  for (;;) {
    Token t = lx.need("\"names\" or \"end\"");
    if (t.text == "end") break;
    if (t.text != "names" && p.connames.empty() && p.varnames.empty() && p.conenames.empty() &&
        read_conic_section(lx, t, p, state, static_cast<qrn_int64>(src.text.size())))
      continue;
    if (t.text != "names") lx.fail(QRN_RES_ERR_READ_SECTION, t, "\"names\" or \"end\" was expected.");
    Token kind = lx.need("con, var or cone");
    std::vector<std::string> *v = nullptr;
    qrn_int64 count = 0;
    if (kind.text == "con") v = &p.connames, count = m;
    else if (kind.text == "var") v = &p.varnames, count = n;
    else if (kind.text == "cone") v = &p.conenames, count = nk;
    else lx.fail(QRN_RES_ERR_READ_SYNTAX, kind, "the kind of names is con, var or cone.");
    if (!v->empty()) lx.fail(QRN_RES_ERR_READ_SECTION, kind, "the names of this kind are given twice.");
    v->resize(static_cast<size_t>(count));
    qrn_int64 nn = lx.need_integer("a count", 0, count);
    for (qrn_int64 k = 0; k < nn; ++k) {
      Token it = lx.need("an index");
      qrn_int64 idx = lx.integer(it, 0, count - 1);
      std::string s = lx.need_string("a name");
      if (s.empty()) lx.fail(QRN_RES_ERR_READ_SYNTAX, it, "a listed name may not be empty.");
      if (!(*v)[idx].empty()) lx.fail(QRN_RES_ERR_READ_NAME_DUP, it, "item " + std::to_string(idx) + " is named twice.");
      (*v)[idx] = std::move(s);
    }
  }
  Token rest = lx.next();
  if (!rest.empty()) lx.fail(QRN_RES_ERR_READ_SECTION, rest, "text follows \"end\".");
  ctx.lines = lx.lines_read();
}

}  // namespace qrn
