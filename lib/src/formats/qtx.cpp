// The library's own counted-section text format (QRN_DATA_FORMAT_TEXT, *.qtx).
//
// UTF-8 text, one item per line, tokens separated by one blank, every line
// ended by "\n". A reader ignores blank lines and lines starting with '#'.
//   - Numbers: the shortest text that reads back to the same double; an
//     infinite value is "-inf" or "+inf".
//   - Names: in double quotes; inside, \" \\ \n \r \t stand for themselves and
//     \xHH (two hex digits) for any other byte below 0x20 and for 0x7f. Other
//     bytes (UTF-8 included) are written as they are. "" is no name.
//   - Each section starts with its keyword and the number of lines that follow.
//
//   qrntext 1                              format name and version
//   task <name>
//   objective <sense> <name> <constant>    sense: minimize | maximize
//   coefficients <n>                       n lines: <j> <c_j>  (non-zero c_j, j increasing)
//   constraints <numcon>                   numcon lines, i = 0, 1, ...:
//     <i> <name> <key> <lower> <upper>     key: free | lower | upper | fixed | ranged
//   variables <numvar>                     numvar lines, j = 0, 1, ...:
//     <j> <name> <type> <key> <lower> <upper>   type: continuous | integer
//   matrix <numanz>                        numanz lines: <i> <j> <a_ij>
//                                          (column by column, i increasing in a column)
//   qobjective <n>                         n lines: <i> <j> <q_ij>  (i >= j: lower triangle
//                                          of Q in the objective term 1/2 x'Qx)
//   qconstraints <n>                       n lines: <k> <i> <j> <q_ij>  (term of constraint k)
//   cones <numcone>                        numcone lines:
//     <k> <name> <type> <parameter> <nummem> <member> ...   type: quad | rquad
//   the conic and semidefinite sections (conic_sections.cpp), each only when it has lines
//   end
//
// Bounds are written as the task stores them: a side that the key leaves open
// is infinite.
#include "formats.hpp"

#include <cmath>

namespace qrn {
namespace {

const char *const sense_words[] = {"minimize", "maximize"};
const char *const key_words[] = {"free", "lower", "upper", "fixed", "ranged"};
const char *const type_words[] = {"continuous", "integer"};
const char *const cone_words[] = {"quad", "rquad"};

template <size_t N>
qrn_int32 word_index(Lexer &lx, const Token &t, const char *const (&table)[N], const char *what) {
  for (size_t k = 0; k < N; ++k)
    if (t.text == table[k]) return static_cast<qrn_int32>(k);
  lx.fail(QRN_RES_ERR_READ_SYNTAX, t, "\"" + std::string(t.text.substr(0, 40)) + "\" is not a " + what + ".");
}

void num(Out &out, double v) {
  out.ch(' ');
  if (std::isinf(v))
    out.raw(v < 0 ? "-inf" : "+inf");
  else
    out.num(v);
}

const std::string &name_at(const std::vector<std::string> &v, size_t k) {
  static const std::string none;
  return k < v.size() ? v[k] : none;
}

}  // namespace

void write_qtx(const FileProblem &p, Out &out, const WriteOptions &) {
  out.raw("qrntext 1\ntask ").quoted(p.taskname).raw("\nobjective ").raw(sense_words[p.sense != 0]).ch(' ');
  out.quoted(p.objname);
  num(out, p.cfix);
  qrn_int64 numc = 0;
  for (double cj : p.c) numc += cj != 0.0 || std::signbit(cj);
  out.raw("\ncoefficients ").integer(numc).ch('\n');
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    if (p.c[j] != 0.0 || std::signbit(p.c[j])) {
      out.integer(j);
      num(out, p.c[j]);
      out.ch('\n');
    }
  out.raw("constraints ").integer(p.numcon).ch('\n');
  for (qrn_int32 i = 0; i < p.numcon; ++i) {
    out.integer(i).ch(' ').quoted(name_at(p.connames, i)).ch(' ').raw(key_words[p.bkc[i]]);
    num(out, p.blc[i]);
    num(out, p.buc[i]);
    out.ch('\n');
  }
  out.raw("variables ").integer(p.numvar).ch('\n');
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    out.integer(j).ch(' ').quoted(name_at(p.varnames, j)).ch(' ').raw(type_words[p.vartype[j] != 0]).ch(' ');
    out.raw(key_words[p.bkx[j]]);
    num(out, p.blx[j]);
    num(out, p.bux[j]);
    out.ch('\n');
  }
  out.raw("matrix ").integer(p.numanz()).ch('\n');
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    for (qrn_int64 k = p.aptr[j]; k < p.aptr[j + 1]; ++k) {
      out.integer(p.asub[k]).ch(' ').integer(j);
      num(out, p.aval[k]);
      out.ch('\n');
    }
  out.raw("qobjective ").integer(static_cast<qrn_int64>(p.qoval.size())).ch('\n');
  for (size_t k = 0; k < p.qoval.size(); ++k) {
    out.integer(p.qosubi[k]).ch(' ').integer(p.qosubj[k]);
    num(out, p.qoval[k]);
    out.ch('\n');
  }
  out.raw("qconstraints ").integer(static_cast<qrn_int64>(p.qcval.size())).ch('\n');
  for (size_t k = 0; k < p.qcval.size(); ++k) {
    out.integer(p.qcsubk[k]).ch(' ').integer(p.qcsubi[k]).ch(' ').integer(p.qcsubj[k]);
    num(out, p.qcval[k]);
    out.ch('\n');
  }
  out.raw("cones ").integer(static_cast<qrn_int64>(p.cones.size())).ch('\n');
  for (size_t k = 0; k < p.cones.size(); ++k) {
    const ProblemCone &c = p.cones[k];
    out.integer(static_cast<qrn_int64>(k)).ch(' ').quoted(name_at(p.conenames, k)).ch(' ').raw(cone_words[c.type != 0]);
    num(out, c.par);
    out.ch(' ').integer(static_cast<qrn_int64>(c.members.size()));
    for (qrn_int32 m : c.members) out.ch(' ').integer(m);
    out.ch('\n');
  }
  write_conic_sections(p, out);
  out.raw("end\n");
}

void read_qtx(const Source &src, ReadContext &ctx) {
  Lexer lx(src, true);
  FileProblem &p = ctx.problem;
  Token head = lx.next();
  if (head.text != "qrntext") lx.fail(QRN_RES_ERR_READ_VERSION, head, "the text does not start with \"qrntext\".");
  Token ver = lx.need("the version");
  if (ver.text != "1") lx.fail(QRN_RES_ERR_READ_VERSION, ver, "version " + std::string(ver.text) + " is not known.");
  lx.expect("task");
  p.taskname = lx.need_string("the task name");
  lx.expect("objective");
  Token s = lx.need("the objective sense");
  p.sense = word_index(lx, s, sense_words, "sense");
  p.objname = lx.need_string("the objective name");
  p.cfix = lx.need_number("the objective constant", false);
  // Sizes come later than the coefficients: keep them until the variables are known.
  lx.expect("coefficients");
  const qrn_int64 numc = lx.need_integer("a count", 0, INT32_MAX);
  std::vector<std::pair<qrn_int64, double>> coefs;
  std::vector<Token> coef_at;
  for (qrn_int64 k = 0; k < numc; ++k) {
    Token j = lx.need("a variable index");
    qrn_int64 jj = lx.integer(j, 0, INT32_MAX);
    coefs.emplace_back(jj, lx.need_number("a coefficient", false));
    coef_at.push_back(j);
  }
  lx.expect("constraints");
  // Each item takes a line: counts beyond the text's length cannot be right.
  const qrn_int64 cap = std::min<qrn_int64>(INT32_MAX, static_cast<qrn_int64>(src.text.size()));
  const qrn_int32 m = static_cast<qrn_int32>(lx.need_integer("the number of constraints", 0, cap));
  std::vector<qrn_int32> bkc;
  std::vector<double> blc, buc;
  std::vector<std::string> connames;
  for (qrn_int32 i = 0; i < m; ++i) {
    lx.integer(lx.need("a constraint index"), i, i);
    connames.push_back(lx.need_string("a name"));
    bkc.push_back(word_index(lx, lx.need("a bound key"), key_words, "bound key"));
    blc.push_back(lx.need_number("a lower bound", true));
    buc.push_back(lx.need_number("an upper bound", true));
  }
  lx.expect("variables");
  const qrn_int32 n = static_cast<qrn_int32>(lx.need_integer("the number of variables", 0, cap));
  p.resize(m, n);
  p.bkc = std::move(bkc), p.blc = std::move(blc), p.buc = std::move(buc);
  p.connames = std::move(connames);
  p.varnames.resize(n);
  for (qrn_int32 j = 0; j < n; ++j) {
    lx.integer(lx.need("a variable index"), j, j);
    p.varnames[j] = lx.need_string("a name");
    p.vartype[j] = word_index(lx, lx.need("a variable type"), type_words, "variable type");
    p.bkx[j] = word_index(lx, lx.need("a bound key"), key_words, "bound key");
    p.blx[j] = lx.need_number("a lower bound", true);
    p.bux[j] = lx.need_number("an upper bound", true);
  }
  for (size_t k = 0; k < coefs.size(); ++k) {
    if (coefs[k].first >= n) lx.fail(QRN_RES_ERR_READ_INDEX, coef_at[k], "variable index out of range.");
    p.c[coefs[k].first] = coefs[k].second;
  }
  lx.expect("matrix");
  const qrn_int64 nnz = lx.need_integer("a count", 0, INT64_MAX);
  std::vector<qrn_int32> ti, tj;
  std::vector<double> tv;
  std::vector<size_t> lines;
  for (qrn_int64 k = 0; k < nnz; ++k) {
    Token it = lx.need("a row index");
    ti.push_back(static_cast<qrn_int32>(lx.integer(it, 0, m - 1)));
    tj.push_back(static_cast<qrn_int32>(lx.need_integer("a column index", 0, n - 1)));
    tv.push_back(lx.need_number("a coefficient", false));
    lines.push_back(it.line);
  }
  triplets_to_columns(p, ti, tj, tv, false, [&](size_t k) {
    fail_at(QRN_RES_ERR_READ_NAME_DUP, src, lines[k], 1, "the entry (" + std::to_string(ti[k]) + ", " +
                                                              std::to_string(tj[k]) + ") is given twice.");
  });
  lx.expect("qobjective");
  const qrn_int64 nq = lx.need_integer("a count", 0, INT32_MAX);
  for (qrn_int64 k = 0; k < nq; ++k) {
    p.qosubi.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qosubj.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qoval.push_back(lx.need_number("a coefficient", false));
  }
  lx.expect("qconstraints");
  const qrn_int64 nqc = lx.need_integer("a count", 0, INT32_MAX);
  for (qrn_int64 k = 0; k < nqc; ++k) {
    p.qcsubk.push_back(static_cast<qrn_int32>(lx.need_integer("a constraint index", 0, m - 1)));
    p.qcsubi.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qcsubj.push_back(static_cast<qrn_int32>(lx.need_integer("a variable index", 0, n - 1)));
    p.qcval.push_back(lx.need_number("a coefficient", false));
  }
  lx.expect("cones");
  const qrn_int64 nk = lx.need_integer("a count", 0, INT32_MAX);
  for (qrn_int64 k = 0; k < nk; ++k) {
    lx.integer(lx.need("a cone index"), k, k);
    p.conenames.push_back(lx.need_string("a name"));
    ProblemCone c;
    c.type = word_index(lx, lx.need("a cone type"), cone_words, "cone type");
    c.par = lx.need_number("a cone parameter", true);
    qrn_int64 nm = lx.need_integer("a member count", 0, n);
    for (qrn_int64 q = 0; q < nm; ++q) c.members.push_back(static_cast<qrn_int32>(lx.need_integer("a member", 0, n - 1)));
    p.cones.push_back(std::move(c));
  }
  int state = -1;
  for (;;) {
    Token t = lx.need("\"end\"");
    if (t.text == "end") break;
    if (!read_conic_section(lx, t, p, state, static_cast<qrn_int64>(src.text.size())))
      lx.fail(QRN_RES_ERR_READ_SECTION, t, "\"" + std::string(t.text.substr(0, 40)) + "\" is not a section here.");
  }
  Token rest = lx.next();
  if (!rest.empty()) lx.fail(QRN_RES_ERR_READ_SECTION, rest, "text follows \"end\".");
  ctx.lines = lx.lines_read();
}

}  // namespace qrn
