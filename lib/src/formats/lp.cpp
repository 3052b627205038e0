// The LP text format (docs/formats/lp.md): objective, "subject to",
// "bounds", "general", "binary", "end".
//
// Writing keeps the task exact: every variable appears in the objective in
// index order (with coefficient 0 where it has none), so that a reader numbers
// the variables as the task does; ranged constraints are double inequalities
// ("c: 1 <= x + y <= 3"); a free constraint is "expr >= -inf"; quadratic
// objective terms are "[ ... ] / 2" (the coefficients of x'Qx), quadratic
// constraint terms "[ ... ]" (the coefficients of 1/2 x'Qx as a polynomial).
#include "formats.hpp"

#include <cfloat>
#include <cmath>
#include <map>
#include <unordered_map>

namespace qrn {
namespace {

// ---- names ---------------------------------------------------------------------

const char *const keywords[] = {"minimize", "maximize", "minimum", "maximum", "min", "max", "subject", "such",
                                "st", "s.t.", "st.", "bounds", "bound", "free", "inf", "infinity", "general",
                                "generals", "gen", "integer", "integers", "binary", "binaries", "bin", "end", "semi",
                                "semis", "semi-continuous", "to", "that"};

std::string lower(std::string_view s) {
  std::string out(s);
  for (char &c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

bool is_keyword(std::string_view s) {
  std::string l = lower(s);
  for (const char *k : keywords)
    if (l == k) return true;
  return false;
}

bool name_start(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) || std::strchr("_!\"#$%&(),;?@`'{}|~", c) != nullptr;
}
bool name_char(char c) { return name_start(c) || std::isdigit(static_cast<unsigned char>(c)) || c == '.'; }

bool lp_name(const std::string &s) {
  if (s.empty() || s.size() > 255 || !name_start(s[0]) || is_keyword(s)) return false;
  for (char c : s)
    if (!name_char(c)) return false;
  // "e12" or "E+3" would read as part of a number after a coefficient.
  if ((s[0] == 'e' || s[0] == 'E') && s.size() > 1 &&
      (std::isdigit(static_cast<unsigned char>(s[1])) || s[1] == '+' || s[1] == '-'))
    return false;
  return true;
}

void need_lp_names(const std::vector<std::string> &names, const char *kind) {
  for (size_t k = 0; k < names.size(); ++k)
    if (!names[k].empty() && !lp_name(names[k]))
      fail(QRN_RES_ERR_WRITE_LOSES_NAMES, std::string("The ") + kind + " name \"" + names[k] + "\" (" + kind + " " +
                                              std::to_string(k) +
                                              ") is not a valid LP name; set QRN_IPAR_OUTPUT_NAMES off to write generated names.");
}

// ---- writing ---------------------------------------------------------------------

struct LpWriter {
  const FileProblem &p;
  Out &out;
  std::vector<std::string> rows, cols;
  size_t onl = 0;  // terms on the current line

  void term(double v, const std::string &name, bool first) {
    if (onl == 8) {
      out.raw("\n  ");
      onl = 0;
    }
    if (std::signbit(v)) {
      out.raw(first ? "-" : " - ");
      v = -v;
    } else if (!first) {
      out.raw(" + ");
    }
    out.num(v).ch(' ').raw(name);
    ++onl;
  }
  void quad(const std::vector<qrn_int32> &si, const std::vector<qrn_int32> &sj, const std::vector<double> &sv,
            size_t b, size_t e, bool objective, bool first) {
    out.raw(first ? "[ " : " + [ ");
    for (size_t k = b; k < e; ++k) {
      // Objective: coefficients of x'Qx; constraint: of 1/2 x'Qx.
      double v = si[k] == sj[k] ? (objective ? sv[k] : sv[k] / 2) : (objective ? 2 * sv[k] : sv[k]);
      if (onl == 8) {
        out.raw("\n  ");
        onl = 0;
      }
      if (std::signbit(v)) {
        out.raw(k == b ? "- " : " - ");
        v = -v;
      } else if (k != b) {
        out.raw(" + ");
      }
      out.num(v).ch(' ').raw(cols[si[k]]);
      if (si[k] == sj[k])
        out.raw(" ^ 2");
      else
        out.raw(" * ").raw(cols[sj[k]]);
      ++onl;
    }
    out.raw(objective ? " ] / 2" : " ]");
  }
  void bound_value(double v) {
    if (std::isinf(v))
      out.raw(v < 0 ? "-inf" : "+inf");
    else
      out.num(v);
  }

  void check(const WriteOptions &opt) {
    need_lp_names(p.connames, "constraint");
    need_lp_names(p.varnames, "variable");
    if (!p.objname.empty() && !lp_name(p.objname))
      fail(QRN_RES_ERR_WRITE_LOSES_NAMES, "The objective name \"" + p.objname + "\" is not a valid LP name.");
    if (!p.cones.empty()) fail(QRN_RES_ERR_WRITE_LOSES_CONES, "The LP format cannot hold cones.");
    for (unsigned char ch : p.taskname)
      if (ch < 0x20 || ch == 0x7f)
        fail(QRN_RES_ERR_WRITE_LOSES_NAMES, "The task name has a control character, which the LP format cannot hold.");
    rows = complete_names(p.connames, p.numcon, opt.con_prefix, true);
    cols = complete_names(p.varnames, p.numvar, opt.var_prefix, true);
    for (double q : p.qoval)
      if (std::fabs(q) > DBL_MAX / 2) fail(QRN_RES_ERR_WRITE_LOSES_NUMBERS, "A quadratic objective coefficient is too large to double.");
    for (size_t k = 0; k < p.qcval.size(); ++k)
      if (p.qcsubi[k] == p.qcsubj[k] && (p.qcval[k] / 2) * 2 != p.qcval[k])
        fail(QRN_RES_ERR_WRITE_LOSES_NUMBERS, "A quadratic constraint coefficient cannot be halved exactly.");
  }

  void write() {
    if (!p.taskname.empty()) out.raw("\\ task: ").raw(p.taskname).ch('\n');
    out.raw(p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? "maximize\n" : "minimize\n");
    out.raw(" ").raw(p.objname.empty() ? std::string("obj") : p.objname).raw(": ");
    onl = 0;
    bool first = true;
    for (qrn_int32 j = 0; j < p.numvar; ++j) {
      term(p.c[j], cols[j], first);
      first = false;
    }
    if (!p.qoval.empty()) {
      quad(p.qosubi, p.qosubj, p.qoval, 0, p.qoval.size(), true, first);
      first = false;
    }
    if (p.cfix != 0 || std::signbit(p.cfix) || first) {
      double v = p.cfix;
      if (std::signbit(v)) {
        out.raw(first ? "-" : " - ");
        v = -v;
      } else if (!first) {
        out.raw(" + ");
      }
      out.num(v);
    }
    out.raw("\nsubject to\n");
    // Rows of A from the columns.
    const ProblemRows byrow = rows_of(p);
    const auto &rstart = byrow.start;
    const auto &rsub = byrow.sub;
    const auto &rval = byrow.val;
    size_t qk = 0;
    for (qrn_int32 i = 0; i < p.numcon; ++i) {
      out.ch(' ').raw(rows[i]).raw(": ");
      onl = 0;
      if (p.bkc[i] == QRN_BK_RANGED) {
        bound_value(p.blc[i]);
        out.raw(" <= ");
      }
      first = true;
      for (qrn_int64 k = rstart[i]; k < rstart[i + 1]; ++k) {
        term(rval[k], cols[rsub[k]], first);
        first = false;
      }
      size_t qe = qk;
      while (qe < p.qcval.size() && p.qcsubk[qe] == i) ++qe;
      if (qe > qk) {
        quad(p.qcsubi, p.qcsubj, p.qcval, qk, qe, false, first);
        first = false;
      }
      qk = qe;
      if (first && p.numvar > 0) term(0.0, cols[0], true);
      switch (p.bkc[i]) {
        case QRN_BK_FREE: out.raw(" >= -inf"); break;
        case QRN_BK_LOWER: out.raw(" >= "), bound_value(p.blc[i]); break;
        case QRN_BK_UPPER: out.raw(" <= "), bound_value(p.buc[i]); break;
        case QRN_BK_FIXED: out.raw(" = "), bound_value(p.blc[i]); break;
        default: out.raw(" <= "), bound_value(p.buc[i]);
      }
      out.ch('\n');
    }
    out.raw("bounds\n");
    for (qrn_int32 j = 0; j < p.numvar; ++j) {
      const std::string &x = cols[j];
      double bl = p.blx[j], bu = p.bux[j];
      switch (p.bkx[j]) {
        case QRN_BK_FREE: out.ch(' ').raw(x).raw(" free\n"); break;
        case QRN_BK_LOWER:
          if (bl != 0 || std::signbit(bl)) out.ch(' ').raw(x).raw(" >= "), bound_value(bl), out.ch('\n');
          break;
        case QRN_BK_UPPER: out.raw(" -inf <= ").raw(x).raw(" <= "), bound_value(bu), out.ch('\n'); break;
        case QRN_BK_FIXED: out.ch(' ').raw(x).raw(" = "), bound_value(bl), out.ch('\n'); break;
        default:
          out.ch(' '), bound_value(bl), out.raw(" <= ").raw(x).raw(" <= "), bound_value(bu), out.ch('\n');
      }
    }
    bool anyint = false;
    for (qrn_int32 j = 0; j < p.numvar; ++j) {
      if (p.vartype[j] != QRN_VAR_TYPE_INTEGER) continue;
      if (!anyint) out.raw("general\n");
      anyint = true;
      out.ch(' ').raw(cols[j]).ch('\n');
    }
    out.raw("end\n");
  }
};

// ---- reading ---------------------------------------------------------------------

enum class Tk { end, name, number, op, colon, lbracket, rbracket, slash, caret, star, plus, minus };

struct LpToken {
  Tk kind = Tk::end;
  std::string_view text;
  double value = 0;
  size_t line = 0, col = 0;
  bool line_start = false;  // first token on its line
};

class LpLexer {
 public:
  explicit LpLexer(const Source &src) : src_(src), s_(src.text) {}

  const LpToken &peek() {
    if (!have_) {
      tok_ = scan();
      have_ = true;
    }
    return tok_;
  }
  LpToken next() {
    peek();
    have_ = false;
    return tok_;
  }
  [[noreturn]] void bad(qrn_rescode code, const LpToken &t, const std::string &msg) const {
    fail_at(code, src_, t.line, t.col, msg);
  }
  size_t line() const { return line_; }
  // The words "subject to" and "such that" as one section keyword.
  std::string_view rest_of_word_pair();

 private:
  LpToken scan() {
    bool newline = pos_ == 0;
    for (;;) {
      while (pos_ < s_.size() && (s_[pos_] == ' ' || s_[pos_] == '\t' || s_[pos_] == '\r' || s_[pos_] == '\n')) {
        if (s_[pos_] == '\n') {
          ++line_;
          line_start_ = pos_ + 1;
          newline = true;
        }
        ++pos_;
      }
      if (pos_ < s_.size() && s_[pos_] == '\\') {
        while (pos_ < s_.size() && s_[pos_] != '\n') ++pos_;
        continue;
      }
      break;
    }
    LpToken t;
    t.line = line_;
    t.col = pos_ - line_start_ + 1;
    t.line_start = newline;
    if (pos_ >= s_.size()) return t;
    size_t b = pos_;
    char c = s_[pos_];
    auto one = [&](Tk k) {
      t.kind = k;
      t.text = s_.substr(b, 1);
      ++pos_;
      return t;
    };
    switch (c) {
      case ':': return one(Tk::colon);
      case '[': return one(Tk::lbracket);
      case ']': return one(Tk::rbracket);
      case '/': return one(Tk::slash);
      case '^': return one(Tk::caret);
      case '*': return one(Tk::star);
      case '+': return one(Tk::plus);
      case '-': return one(Tk::minus);
      case '<': case '>': case '=': {
        ++pos_;
        if (pos_ < s_.size() && (s_[pos_] == '=' || s_[pos_] == '<' || s_[pos_] == '>')) ++pos_;
        t.kind = Tk::op;
        t.text = s_.substr(b, pos_ - b);
        return t;
      }
      default: break;
    }
    if (std::isdigit(static_cast<unsigned char>(c)) || c == '.') {
      // A number: digits, '.', then an optional exponent.
      while (pos_ < s_.size() && (std::isdigit(static_cast<unsigned char>(s_[pos_])) || s_[pos_] == '.')) ++pos_;
      if (pos_ < s_.size() && (s_[pos_] == 'e' || s_[pos_] == 'E')) {
        size_t q = pos_ + 1;
        if (q < s_.size() && (s_[q] == '+' || s_[q] == '-')) ++q;
        if (q < s_.size() && std::isdigit(static_cast<unsigned char>(s_[q]))) {
          pos_ = q;
          while (pos_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[pos_]))) ++pos_;
        }
      }
      t.kind = Tk::number;
      t.text = s_.substr(b, pos_ - b);
      switch (parse_double(t.text, t.value)) {
        case NumParse::ok: break;
        case NumParse::overflow: bad(QRN_RES_ERR_READ_NUMBER, t, "the number " + std::string(t.text) + " is too large for a double.");
        default: bad(QRN_RES_ERR_READ_NUMBER, t, "\"" + std::string(t.text) + "\" is not a number.");
      }
      return t;
    }
    if (name_start(c)) {
      while (pos_ < s_.size() && name_char(s_[pos_])) ++pos_;
      t.kind = Tk::name;
      t.text = s_.substr(b, pos_ - b);
      std::string l = lower(t.text);
      if (l == "inf" || l == "infinity") {
        t.kind = Tk::number;
        t.value = inf;
      } else if (l == "nan") {
        bad(QRN_RES_ERR_READ_NUMBER, t, "NaN is not a valid value.");
      }
      return t;
    }
    t.kind = Tk::name;
    t.text = s_.substr(b, 1);
    bad(QRN_RES_ERR_READ_SYNTAX, t, std::string("unexpected character '") + c + "'.");
  }

  const Source &src_;
  std::string_view s_;
  size_t pos_ = 0, line_ = 1, line_start_ = 0;
  bool have_ = false;
  LpToken tok_;
};

enum class LpSection { none, objective, constraints, bounds, general, binary, end };

struct LpReader {
  const Source &src;
  ReadContext &ctx;
  FileProblem &p;
  LpLexer lx;
  std::unordered_map<std::string_view, qrn_int32> varmap, conmap;
  std::vector<std::string_view> vars;
  std::vector<double> c;
  std::vector<bool> cset;
  std::vector<double> lo, up;
  std::vector<bool> fixedflag, isint;
  // rows as triplets
  std::vector<qrn_int32> ti, tj;
  std::vector<double> tv;
  std::map<std::pair<qrn_int32, qrn_int32>, double> qobj;
  std::vector<std::map<std::pair<qrn_int32, qrn_int32>, double>> qcon;
  std::vector<qrn_int32> bkc;
  std::vector<double> blc, buc;
  std::vector<std::string> connames;

  LpReader(const Source &s, ReadContext &c) : src(s), ctx(c), p(c.problem), lx(s) {}

  qrn_int32 var(std::string_view name) {
    auto it = varmap.find(name);
    if (it != varmap.end()) return it->second;
    qrn_int32 j = static_cast<qrn_int32>(vars.size());
    varmap.emplace(name, j);
    vars.push_back(name);
    c.push_back(0.0);
    cset.push_back(false);
    lo.push_back(0.0);
    up.push_back(inf);
    fixedflag.push_back(false);
    isint.push_back(false);
    return j;
  }

  // Section keyword at the start of a line, or none.
  LpSection section_of(const LpToken &t) {
    if (!t.line_start || t.kind != Tk::name) return LpSection::none;
    std::string l = lower(t.text);
    if (l == "minimize" || l == "maximize" || l == "minimum" || l == "maximum" || l == "min" || l == "max")
      return LpSection::objective;
    if (l == "subject" || l == "such" || l == "st" || l == "s.t." || l == "st.") return LpSection::constraints;
    if (l == "bounds" || l == "bound") return LpSection::bounds;
    if (l == "general" || l == "generals" || l == "gen" || l == "integer" || l == "integers") return LpSection::general;
    if (l == "binary" || l == "binaries" || l == "bin") return LpSection::binary;
    if (l == "end") return LpSection::end;
    if (l == "semi" || l == "semis" || l == "semi-continuous" || l == "sos")
      lx.bad(QRN_RES_ERR_READ_UNSUPPORTED, t, "the section " + std::string(t.text) + " is not supported.");
    return LpSection::none;
  }
  bool at_section() {
    const LpToken &t = lx.peek();
    return t.kind == Tk::end || section_of(t) != LpSection::none;
  }

  // A label "name:" if one follows.
  std::string_view label() {
    const LpToken &t = lx.peek();
    if (t.kind != Tk::name || section_of(t) != LpSection::none) return {};
    // Look ahead one more token for ':' by scanning a copy.
    LpLexer copy = lx;
    copy.next();
    if (copy.peek().kind != Tk::colon) return {};
    std::string_view name = lx.next().text;
    lx.next();
    return name;
  }

  // One linear expression with optional quadratic bracket; terms go to add(j, v),
  // quadratic terms to addq(i, j, Q value); a constant (objective only) to cst.
  template <class Add, class AddQ>
  void expression(bool objective, Add add, AddQ addq, double *cst) {
    bool any = false;
    for (;;) {
      const LpToken &t = lx.peek();
      if (t.kind == Tk::end || t.kind == Tk::op || (any && section_of(t) != LpSection::none)) break;
      if (!any && section_of(t) != LpSection::none) break;
      double sign = 1;
      bool signed_ = false;
      while (lx.peek().kind == Tk::plus || lx.peek().kind == Tk::minus) {
        if (lx.next().kind == Tk::minus) sign = -sign;
        signed_ = true;
      }
      if (any && !signed_) lx.bad(QRN_RES_ERR_READ_SYNTAX, lx.peek(), "a '+' or '-' was expected between terms.");
      LpToken u = lx.next();
      if (u.kind == Tk::lbracket) {
        quadratic(objective, sign, addq);
      } else if (u.kind == Tk::number) {
        const LpToken &w = lx.peek();
        if (w.kind == Tk::name && !(w.line_start && section_of(w) != LpSection::none)) {
          LpToken nm = lx.next();
          if (std::isinf(u.value)) lx.bad(QRN_RES_ERR_READ_NUMBER, u, "a coefficient must be finite.");
          add(var(nm.text), sign * u.value);
        } else if (w.kind == Tk::lbracket) {
          lx.bad(QRN_RES_ERR_READ_SYNTAX, w, "a number before '[' is not allowed.");
        } else {
          if (cst == nullptr) lx.bad(QRN_RES_ERR_READ_SYNTAX, u, "a constant term is only allowed in the objective.");
          if (std::isinf(u.value)) lx.bad(QRN_RES_ERR_READ_NUMBER, u, "the objective constant must be finite.");
          *cst += sign * u.value;
        }
      } else if (u.kind == Tk::name) {
        add(var(u.text), sign);
      } else {
        lx.bad(QRN_RES_ERR_READ_SYNTAX, u, "a term was expected, not \"" + std::string(u.text) + "\".");
      }
      any = true;
    }
  }

  template <class AddQ>
  void quadratic(bool objective, double outer, AddQ addq) {
    struct QT {
      qrn_int32 i, j;
      double v;
    };
    std::vector<QT> terms;
    bool any = false;
    for (;;) {
      if (lx.peek().kind == Tk::rbracket) {
        lx.next();
        break;
      }
      if (lx.peek().kind == Tk::end) lx.bad(QRN_RES_ERR_READ_EOF, lx.peek(), "the text ends inside '[ ... ]'.");
      double sign = 1;
      bool signed_ = false;
      while (lx.peek().kind == Tk::plus || lx.peek().kind == Tk::minus) {
        if (lx.next().kind == Tk::minus) sign = -sign;
        signed_ = true;
      }
      if (any && !signed_) lx.bad(QRN_RES_ERR_READ_SYNTAX, lx.peek(), "a '+' or '-' was expected between terms.");
      double coef = 1;
      LpToken u = lx.next();
      if (u.kind == Tk::number) {
        if (std::isinf(u.value)) lx.bad(QRN_RES_ERR_READ_NUMBER, u, "a coefficient must be finite.");
        coef = u.value;
        u = lx.next();
      }
      if (u.kind != Tk::name) lx.bad(QRN_RES_ERR_READ_SYNTAX, u, "a variable was expected in '[ ... ]'.");
      qrn_int32 a = var(u.text), b;
      LpToken op = lx.next();
      if (op.kind == Tk::caret) {
        LpToken two = lx.next();
        if (two.kind != Tk::number || two.value != 2) lx.bad(QRN_RES_ERR_READ_SYNTAX, two, "only '^ 2' is allowed.");
        b = a;
      } else if (op.kind == Tk::star) {
        LpToken w = lx.next();
        if (w.kind != Tk::name) lx.bad(QRN_RES_ERR_READ_SYNTAX, w, "a variable was expected after '*'.");
        b = var(w.text);
      } else {
        lx.bad(QRN_RES_ERR_READ_SYNTAX, op, "'^ 2' or '* variable' was expected.");
      }
      terms.push_back({a, b, sign * coef});
      any = true;
    }
    bool halved = false;
    if (lx.peek().kind == Tk::slash) {
      lx.next();
      LpToken two = lx.next();
      if (two.kind != Tk::number || two.value != 2) lx.bad(QRN_RES_ERR_READ_SYNTAX, two, "only '/ 2' may follow ']'.");
      halved = true;
    }
    (void)objective;
    // The bracket is a polynomial p(x) (halved after "/ 2"); 1/2 x'Qx = p(x)
    // gives Q_ii = 2 a_ii and Q_ij = b_ij.
    for (const QT &q : terms) {
      double v = outer * q.v;
      if (halved) v = v / 2;
      if (q.i == q.j) v = 2 * v;
      addq(std::max(q.i, q.j), std::min(q.i, q.j), v);
    }
  }

  double rhs_value() {
    double sign = 1;
    while (lx.peek().kind == Tk::plus || lx.peek().kind == Tk::minus)
      if (lx.next().kind == Tk::minus) sign = -sign;
    LpToken t = lx.next();
    if (t.kind != Tk::number) lx.bad(t.kind == Tk::end ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SYNTAX, t, "a number was expected.");
    return sign * t.value;
  }
  static int op_kind(const LpToken &t) {  // -1 <=, 0 =, 1 >=
    if (t.text == "<=" || t.text == "<" || t.text == "=<") return -1;
    if (t.text == ">=" || t.text == ">" || t.text == "=>") return 1;
    if (t.text == "=") return 0;
    return 2;
  }
  int need_op() {
    LpToken t = lx.next();
    int k = t.kind == Tk::op ? op_kind(t) : 2;
    if (k == 2) lx.bad(t.kind == Tk::end ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SYNTAX, t, "a comparison (<=, >=, =) was expected.");
    return k;
  }
  static double clip(double v) { return std::fabs(v) >= QRN_INFINITY ? (v < 0 ? -inf : inf) : v; }

  // Is the next thing "number op" (the left side of a double inequality)?
  bool leading_bound() {
    LpLexer copy = lx;
    while (copy.peek().kind == Tk::plus || copy.peek().kind == Tk::minus) copy.next();
    if (copy.next().kind != Tk::number) return false;
    return copy.peek().kind == Tk::op;
  }

  void constraint() {
    LpToken start = lx.peek();
    std::string_view name = label();
    qrn_int32 i = static_cast<qrn_int32>(bkc.size());
    if (!name.empty()) {
      if (conmap.count(name) != 0) lx.bad(QRN_RES_ERR_READ_NAME_DUP, start, "the constraint name \"" + std::string(name) + "\" is given twice.");
      conmap.emplace(name, i);
    }
    double left = 0;
    int leftop = 2;
    if (leading_bound()) {
      left = rhs_value();
      leftop = need_op();
    }
    qcon.emplace_back();
    size_t first = tv.size();
    std::unordered_map<qrn_int32, size_t> seen;
    expression(
        false,
        [&](qrn_int32 j, double v) {
          auto it = seen.find(j);
          if (it != seen.end()) {
            tv[it->second] += v;
            return;
          }
          seen.emplace(j, tv.size());
          ti.push_back(i);
          tj.push_back(j);
          tv.push_back(v);
        },
        [&](qrn_int32 a, qrn_int32 b, double v) { qcon[i][{a, b}] += v; }, nullptr);
    (void)first;
    int op = need_op();
    double right = rhs_value();
    double bl = -inf, bu = inf;
    qrn_int32 bk;
    if (leftop != 2) {
      // "l <= expr <= u" (or with >= both ways).
      if (leftop == 0 || op == 0 || leftop != op)
        lx.bad(QRN_RES_ERR_READ_SYNTAX, start, "a double inequality needs two '<=' or two '>='.");
      bl = clip(leftop < 0 ? left : right);
      bu = clip(leftop < 0 ? right : left);
      bool fl = !std::isinf(bl), fu = !std::isinf(bu);
      bk = fl && fu ? QRN_BK_RANGED : fl ? QRN_BK_LOWER : fu ? QRN_BK_UPPER : QRN_BK_FREE;
    } else if (op == 0) {
      if (std::isinf(right)) lx.bad(QRN_RES_ERR_READ_NUMBER, start, "an equality needs a finite right-hand side.");
      bl = bu = right;
      bk = QRN_BK_FIXED;
    } else if (op > 0) {
      bl = clip(right);
      bk = std::isinf(bl) ? QRN_BK_FREE : QRN_BK_LOWER;
    } else {
      bu = clip(right);
      bk = std::isinf(bu) ? QRN_BK_FREE : QRN_BK_UPPER;
    }
    bkc.push_back(bk);
    blc.push_back(bl);
    buc.push_back(bu);
    connames.emplace_back(name);
  }

  void bound() {
    LpToken start = lx.peek();
    if (leading_bound()) {
      double left = rhs_value();
      int lop = need_op();
      LpToken x = lx.next();
      if (x.kind != Tk::name) lx.bad(QRN_RES_ERR_READ_SYNTAX, x, "a variable was expected.");
      qrn_int32 j = var(x.text);
      set_bound(j, lop == 0 ? 0 : -lop, left, start);  // "l <= x" is x >= l
      if (lx.peek().kind == Tk::op) {
        int rop = need_op();
        double right = rhs_value();
        set_bound(j, rop, right, start);
      }
      return;
    }
    LpToken x = lx.next();
    if (x.kind != Tk::name) lx.bad(QRN_RES_ERR_READ_SYNTAX, x, "a variable was expected.");
    qrn_int32 j = var(x.text);
    const LpToken &n = lx.peek();
    if (n.kind == Tk::name && lower(n.text) == "free") {
      lx.next();
      lo[j] = -inf;
      up[j] = inf;
      fixedflag[j] = false;
      return;
    }
    int op = need_op();
    set_bound(j, op, rhs_value(), start);
  }
  void set_bound(qrn_int32 j, int op, double v, const LpToken &at) {
    if (op == 0) {
      if (std::isinf(v)) lx.bad(QRN_RES_ERR_READ_NUMBER, at, "a fixed bound must be finite.");
      lo[j] = up[j] = v;
      fixedflag[j] = true;
      return;
    }
    fixedflag[j] = false;
    if (op > 0)
      lo[j] = v;
    else
      up[j] = v;
  }

  void names_list(bool binary) {
    while (!at_section()) {
      LpToken t = lx.next();
      if (t.kind != Tk::name) lx.bad(QRN_RES_ERR_READ_SYNTAX, t, "a variable name was expected.");
      qrn_int32 j = var(t.text);
      isint[j] = true;
      if (binary) {
        lo[j] = 0;
        up[j] = 1;
        fixedflag[j] = false;
      }
    }
  }

  void run() {
    // The task's name travels in a first comment line "\ task: NAME".
    std::string_view text = src.text;
    if (text.compare(0, 8, "\\ task: ") == 0) {
      size_t e = text.find('\n');
      std::string_view name = text.substr(8, e == std::string_view::npos ? std::string_view::npos : e - 8);
      if (!name.empty() && name.back() == '\r') name.remove_suffix(1);
      p.taskname = std::string(name);
    }
    LpSection sec = LpSection::none;
    bool seen_obj = false, ended = false;
    for (;;) {
      const LpToken &t = lx.peek();
      if (t.kind == Tk::end) break;
      LpSection s = section_of(t);
      if (s != LpSection::none) {
        LpToken kw = lx.next();
        if (s <= sec && !(s == LpSection::general || s == LpSection::binary))
          lx.bad(QRN_RES_ERR_READ_SECTION, kw, "the section \"" + std::string(kw.text) + "\" is repeated or out of order.");
        if (s != LpSection::objective && !seen_obj)
          lx.bad(QRN_RES_ERR_READ_SECTION, kw, "the objective section must come first.");
        std::string l = lower(kw.text);
        if (l == "subject" || l == "such") {
          LpToken to = lx.next();
          std::string w = lower(to.text);
          if ((l == "subject" && w != "to") || (l == "such" && w != "that"))
            lx.bad(QRN_RES_ERR_READ_SYNTAX, to, "\"" + std::string(kw.text) + "\" must be followed by \"" +
                                                    (l == "subject" ? "to" : "that") + "\".");
        }
        sec = s;
        if (s == LpSection::objective) {
          seen_obj = true;
          p.sense = l.compare(0, 3, "max") == 0 ? QRN_OBJECTIVE_SENSE_MAXIMIZE : QRN_OBJECTIVE_SENSE_MINIMIZE;
          std::string_view name = label();
          p.objname = std::string(name);
          expression(
              true, [&](qrn_int32 j, double v) { c[j] = cset[j] ? c[j] + v : v; cset[j] = true; },
              [&](qrn_int32 a, qrn_int32 b, double v) { qobj[{a, b}] += v; }, &p.cfix);
        }
        if (s == LpSection::end) {
          ended = true;
          LpToken rest = lx.next();
          if (rest.kind != Tk::end) lx.bad(QRN_RES_ERR_READ_SECTION, rest, "text follows \"end\".");
          break;
        }
        continue;
      }
      switch (sec) {
        case LpSection::constraints: constraint(); break;
        case LpSection::bounds: bound(); break;
        case LpSection::general: names_list(false); break;
        case LpSection::binary: names_list(true); break;
        default: lx.bad(QRN_RES_ERR_READ_SECTION, t, "\"minimize\" or \"maximize\" was expected first.");
      }
    }
    if (!ended) {
      LpToken t = lx.peek();
      lx.bad(seen_obj ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SECTION, t,
             seen_obj ? "the text ends without \"end\"." : "the text has no objective section.");
    }
    // Assemble.
    const qrn_int32 m = static_cast<qrn_int32>(bkc.size()), n = static_cast<qrn_int32>(vars.size());
    p.numcon = m;
    p.numvar = n;
    p.c = std::move(c);
    p.bkc = std::move(bkc);
    p.blc = std::move(blc);
    p.buc = std::move(buc);
    p.bkx.resize(n);
    p.blx.resize(n);
    p.bux.resize(n);
    p.vartype.resize(n);
    for (qrn_int32 j = 0; j < n; ++j) {
      double l = clip(lo[j]), u = clip(up[j]);
      p.blx[j] = l;
      p.bux[j] = u;
      bool fl = !std::isinf(l), fu = !std::isinf(u);
      p.bkx[j] = fixedflag[j] ? QRN_BK_FIXED : fl && fu ? QRN_BK_RANGED : fl ? QRN_BK_LOWER : fu ? QRN_BK_UPPER : QRN_BK_FREE;
      p.vartype[j] = isint[j] ? QRN_VAR_TYPE_INTEGER : QRN_VAR_TYPE_CONTINUOUS;
    }
    triplets_to_columns(p, ti, tj, tv, true, [](size_t) {});
    for (auto &[ij, v] : qobj) {
      p.qosubi.push_back(ij.first);
      p.qosubj.push_back(ij.second);
      p.qoval.push_back(v);
    }
    for (qrn_int32 i = 0; i < m; ++i)
      for (auto &[ij, v] : qcon[i]) {
        p.qcsubk.push_back(i);
        p.qcsubi.push_back(ij.first);
        p.qcsubj.push_back(ij.second);
        p.qcval.push_back(v);
      }
    p.connames = std::move(connames);
    p.varnames.assign(vars.begin(), vars.end());
    ctx.lines = lx.line();
  }
};

}  // namespace

void write_lp(const FileProblem &p, Out &out, const WriteOptions &opt) {
  LpWriter w{p, out, {}, {}, 0};
  w.check(opt);
  w.write();
}

void read_lp(const Source &src, ReadContext &ctx) {
  LpReader r(src, ctx);
  r.run();
}

}  // namespace qrn
