// MPS, fixed and free (docs/formats/mps.md).
//
// Writing: fields start at columns 2, 5, 15, 25, 40 and 50, at least one
// blank apart; fixed MPS takes names of at most 8 characters, free MPS names
// of any length. Neither takes names with blanks. Numbers are
// the shortest text that reads back to the same double (a number longer than
// its fixed field pushes the rest of the line to the right).
//
// Reading (both): blank-separated fields; a line that starts in column 1 is a
// section header, '*' in column 1 a comment. Sections: NAME, OBJSENSE,
// OBJNAME, ROWS, COLUMNS (with integer MARKER lines), RHS, RANGES, BOUNDS,
// QUADOBJ, QMATRIX, QCMATRIX, CSECTION, ENDATA.
#include "formats.hpp"

#include <cmath>
#include <unordered_map>

namespace qrn {
namespace {

bool written(double v) { return v != 0.0 || std::signbit(v); }

// The range R with which "rhs, R" states [bl, bu] exactly: G rows give
// [rhs, rhs + |R|], L rows [rhs - |R|, rhs]. false when neither does.
bool exact_range(double bl, double bu, char &type, double &rhs, double &range) {
  double r = bu - bl;
  for (int step = 0; step < 8; ++step) {
    if (r >= 0 && bl + r == bu) {
      type = 'G', rhs = bl, range = r;
      return true;
    }
    if (r >= 0 && bu - r == bl) {
      type = 'L', rhs = bu, range = r;
      return true;
    }
    r = std::nextafter(r, bl + r < bu ? inf : -inf);
  }
  return false;
}

struct MpsWriter {
  const FileProblem &p;
  Out &out;
  bool fixed;
  std::vector<std::string> rows, cols, cones;
  std::string objrow;

  // One data line: fields at the fixed columns, at least one blank apart
  // (free MPS too, which keeps it readable by column-based readers while the
  // names fit).
  void field(int k, std::string_view s) {
    static const size_t at[] = {1, 4, 14, 24, 39, 49};
    out.pad_to(at[k]);
    out.raw(s);
  }
  void numfield(int k, double v) {
    char b[40];
    std::string_view s(b, static_cast<size_t>(put_double(b, v, 17) - b));
    field(k, s);
  }
  void end() { out.ch('\n'); }

  void write() {
    const WriteOptions *o = nullptr;
    (void)o;
    out.raw("NAME");
    if (!p.taskname.empty()) {
      if (fixed) out.pad_to(14); else out.ch(' ');
      out.raw(p.taskname);
    }
    out.ch('\n');
    if (p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE) out.raw("OBJSENSE\n    MAX\n");
    out.raw("ROWS\n");
    out.raw(" N  ").raw(objrow).ch('\n');
    for (qrn_int32 i = 0; i < p.numcon; ++i) {
      const char *t = "N";
      switch (p.bkc[i]) {
        case QRN_BK_LOWER: t = "G"; break;
        case QRN_BK_UPPER: t = "L"; break;
        case QRN_BK_FIXED: t = "E"; break;
        case QRN_BK_RANGED: t = p.blc[i] == p.buc[i] ? "E" : rangetype[i] == 'G' ? "G" : "L"; break;
        default: break;
      }
      out.ch(' ').raw(t).raw("  ").raw(rows[i]).ch('\n');
    }
    out.raw("COLUMNS\n");
    bool inint = false;
    for (qrn_int32 j = 0; j < p.numvar; ++j) {
      bool isint = p.vartype[j] == QRN_VAR_TYPE_INTEGER;
      if (isint != inint) {
        field(1, "MARKER");
        field(2, "'MARKER'");
        field(4, isint ? "'INTORG'" : "'INTEND'");
        end();
        inint = isint;
      }
      int onl = 0;  // entries on the current line
      auto entry = [&](const std::string &row, double v) {
        if (onl == 2) {
          end();
          onl = 0;
        }
        if (onl == 0) field(1, cols[j]);
        field(onl == 0 ? 2 : 4, row);
        numfield(onl == 0 ? 3 : 5, v);
        ++onl;
      };
      if (written(p.c[j]) || p.aptr[j] == p.aptr[j + 1]) entry(objrow, p.c[j]);
      for (qrn_int64 k = p.aptr[j]; k < p.aptr[j + 1]; ++k) entry(rows[p.asub[k]], p.aval[k]);
      end();
    }
    if (inint) {
      field(1, "MARKER");
      field(2, "'MARKER'");
      field(4, "'INTEND'");
      end();
    }
    out.raw("RHS\n");
    if (written(p.cfix)) {
      field(1, "RHS");
      field(2, objrow);
      numfield(3, -p.cfix);
      end();
    }
    for (qrn_int32 i = 0; i < p.numcon; ++i) {
      double v = rhs[i];
      if (p.bkc[i] == QRN_BK_FREE || !written(v)) continue;
      field(1, "RHS");
      field(2, rows[i]);
      numfield(3, v);
      end();
    }
    bool anyrange = false;
    for (qrn_int32 i = 0; i < p.numcon; ++i) {
      if (p.bkc[i] != QRN_BK_RANGED) continue;
      if (!anyrange) out.raw("RANGES\n");
      anyrange = true;
      field(1, "RNG");
      field(2, rows[i]);
      numfield(3, range[i]);
      end();
    }
    out.raw("BOUNDS\n");
    for (qrn_int32 j = 0; j < p.numvar; ++j) {
      bool isint = p.vartype[j] == QRN_VAR_TYPE_INTEGER;
      auto bound = [&](const char *type, const double *v) {
        out.ch(' ').raw(type);
        field(1, "BND");
        field(2, cols[j]);
        if (v != nullptr) numfield(3, *v);
        end();
      };
      double bl = p.blx[j], bu = p.bux[j];
      switch (p.bkx[j]) {
        case QRN_BK_FREE: bound("FR", nullptr); break;
        case QRN_BK_LOWER:
          if (written(bl) || std::signbit(bl)) bound("LO", &bl);
          if (isint) bound("PL", nullptr);
          break;
        case QRN_BK_UPPER:
          bound("MI", nullptr);
          bound("UP", &bu);
          break;
        case QRN_BK_FIXED: bound("FX", &bl); break;
        default:
          bound("LO", &bl);
          bound("UP", &bu);
      }
    }
    if (!p.qoval.empty()) {
      out.raw("QUADOBJ\n");
      for (size_t k = 0; k < p.qoval.size(); ++k) {
        field(1, cols[p.qosubi[k]]);
        field(2, cols[p.qosubj[k]]);
        numfield(3, p.qoval[k]);
        end();
      }
    }
    // QCMATRIX: both triangles of M with the constraint's term x'Mx, M = Q/2.
    for (size_t k = 0; k < p.qcval.size();) {
      qrn_int32 con = p.qcsubk[k];
      out.raw("QCMATRIX").pad_to(fixed ? 14 : 0).raw(rows[con]).ch('\n');
      for (; k < p.qcval.size() && p.qcsubk[k] == con; ++k) {
        double half = p.qcval[k] / 2;
        field(1, cols[p.qcsubi[k]]);
        field(2, cols[p.qcsubj[k]]);
        numfield(3, half);
        end();
        if (p.qcsubi[k] != p.qcsubj[k]) {
          field(1, cols[p.qcsubj[k]]);
          field(2, cols[p.qcsubi[k]]);
          numfield(3, half);
          end();
        }
      }
    }
    for (size_t k = 0; k < p.cones.size(); ++k) {
      const ProblemCone &c = p.cones[k];
      out.raw("CSECTION").pad_to(fixed ? 14 : 0).raw(cones[k]).ch(' ').num(c.par).ch(' ');
      out.raw(c.type == QRN_CONE_RQUAD ? "RQUAD" : "QUAD").ch('\n');
      for (qrn_int32 m : c.members) {
        field(1, cols[m]);
        end();
      }
    }
    out.raw("ENDATA\n");
  }

  std::vector<char> rangetype;
  std::vector<double> rhs, range;

  // Everything the format cannot hold is refused here, before any output.
  void check(const WriteOptions &opt) {
    const char *fmt = fixed ? "fixed MPS" : "free MPS";
    size_t maxlen = fixed ? 8 : 0;
    need_token_names(p.connames, "constraint", fmt, maxlen);
    need_token_names(p.varnames, "variable", fmt, maxlen);
    need_token_names(p.conenames, "cone", fmt, maxlen);
    need_token_names({p.objname}, "objective", fmt, maxlen);
    for (unsigned char ch : p.taskname)
      if (ch < 0x20 || ch == 0x7f)
        fail(QRN_RES_ERR_WRITE_LOSES_NAMES, std::string("The task name has a control character, which ") + fmt + " cannot hold.");
    if (!p.taskname.empty() && (p.taskname.front() == ' ' || p.taskname.back() == ' '))
      fail(QRN_RES_ERR_WRITE_LOSES_NAMES, std::string("The task name starts or ends with a blank, which ") + fmt + " cannot hold.");
    rows = complete_names(p.connames, p.numcon, opt.con_prefix, true);
    cols = complete_names(p.varnames, p.numvar, opt.var_prefix, true);
    cones = complete_names(p.conenames, static_cast<qrn_int32>(p.cones.size()), opt.cone_prefix, true);
    if (fixed) {
      need_token_names(rows, "constraint", fmt, maxlen);
      need_token_names(cols, "variable", fmt, maxlen);
      need_token_names(cones, "cone", fmt, maxlen);
    }
    // The objective row needs a name no constraint has.
    std::unordered_map<std::string, qrn_int32> rowindex;
    for (qrn_int32 i = 0; i < p.numcon; ++i) rowindex.emplace(rows[i], i);
    objrow = p.objname.empty() ? "obj" : p.objname;
    if (rowindex.count(objrow) != 0) {
      if (!p.objname.empty())
        fail(QRN_RES_ERR_WRITE_LOSES_NAMES, "The objective and constraint " + std::to_string(rowindex[objrow]) +
                                                " have the same name \"" + objrow + "\", which MPS cannot hold.");
      for (int k = 1; rowindex.count(objrow) != 0; ++k) objrow = "obj" + std::to_string(k);
    }
    rangetype.assign(p.numcon, 'N');
    rhs.assign(p.numcon, 0.0);
    range.assign(p.numcon, 0.0);
    for (qrn_int32 i = 0; i < p.numcon; ++i) {
      switch (p.bkc[i]) {
        case QRN_BK_LOWER: rhs[i] = p.blc[i]; break;
        case QRN_BK_UPPER: rhs[i] = p.buc[i]; break;
        case QRN_BK_FIXED: rhs[i] = p.blc[i]; break;
        case QRN_BK_RANGED:
          if (p.blc[i] == p.buc[i]) {
            rhs[i] = p.blc[i];
            range[i] = 0.0;
            rangetype[i] = 'E';
          } else if (p.blc[i] > p.buc[i] || !exact_range(p.blc[i], p.buc[i], rangetype[i], rhs[i], range[i])) {
            fail(QRN_RES_ERR_WRITE_LOSES_BOUNDS, "The bounds [" + double_text(p.blc[i]) + ", " + double_text(p.buc[i]) +
                                                     "] of constraint " + std::to_string(i) +
                                                     " cannot be stated exactly as a right-hand side and a range.");
          }
          break;
        default: break;
      }
    }
    for (double q : p.qcval)
      if ((q / 2) * 2 != q)
        fail(QRN_RES_ERR_WRITE_LOSES_NUMBERS, "The quadratic constraint coefficient " + double_text(q) +
                                                  " cannot be halved exactly for QCMATRIX.");
  }
};

void write_mps(const FileProblem &p, Out &out, const WriteOptions &opt, bool fixed) {
  MpsWriter w{p, out, fixed, {}, {}, {}, {}, {}, {}, {}};
  w.check(opt);
  w.write();
}

// ---- reading ---------------------------------------------------------------------

enum class Section { none, name, objsense, objname, rows, columns, rhs, ranges, bounds, quadobj, qmatrix, qcmatrix, csection, end };

using NameMap = NameIndex;

struct MpsReader {
  const Source &src;
  ReadContext &ctx;
  FileProblem &p;
  size_t line = 0;
  NameMap rowmap, colmap;
  std::vector<std::string_view> rownames, colnames;
  std::string_view objrow;  // name of the objective row
  bool have_obj = false;
  std::string_view objname_wanted;
  // per row: type, rhs, range
  std::vector<char> rowtype;
  std::vector<double> rowrhs, rowrange;
  std::vector<bool> hasrange;
  // columns
  std::vector<qrn_int32> lastcol;  // per row: last column with an entry (duplicate check)
  bool objentry_in_col = false;
  std::vector<bool> lo_set, fixed_bound;
  bool intmarker = false;
  std::string_view rhsset, rangeset, boundset;
  bool rhsset_known = false, rangeset_known = false, boundset_known = false;
  qrn_int32 qccon = -1;
  ProblemCone *cone = nullptr;
  std::vector<std::pair<std::pair<qrn_int32, qrn_int32>, double>> qobj_entries;

  MpsReader(const Source &s, ReadContext &c) : src(s), ctx(c), p(c.problem) {}

  [[noreturn]] void bad(qrn_rescode code, size_t col, const std::string &msg) { fail_at(code, src, line, col, msg); }

  double number(const Fields &f, int k) {
    double v = 0;
    switch (parse_double(f.f[k], v)) {
      case NumParse::ok: return v;
      case NumParse::nan: bad(QRN_RES_ERR_READ_NUMBER, f.col[k], "NaN is not a valid value.");
      case NumParse::overflow: bad(QRN_RES_ERR_READ_NUMBER, f.col[k], "the number " + std::string(f.f[k]) + " is too large for a double.");
      default: bad(QRN_RES_ERR_READ_NUMBER, f.col[k], "\"" + std::string(f.f[k].substr(0, 40)) + "\" is not a number.");
    }
  }
  double finite(const Fields &f, int k) {
    double v = number(f, k);
    if (std::isinf(v)) bad(QRN_RES_ERR_READ_NUMBER, f.col[k], "an infinite value is not allowed here.");
    return v;
  }
  qrn_int32 row(const Fields &f, int k) {
    qrn_int32 i = f.f[k] == objrow && have_obj ? -2 : rowmap.find(f.f[k]);
    if (i == -1) bad(QRN_RES_ERR_READ_NAME_UNKNOWN, f.col[k], "no row is named \"" + std::string(f.f[k]) + "\".");
    return i;
  }
  qrn_int32 column(const Fields &f, int k) {
    qrn_int32 j = colmap.find(f.f[k]);
    if (j < 0) bad(QRN_RES_ERR_READ_NAME_UNKNOWN, f.col[k], "no column is named \"" + std::string(f.f[k]) + "\".");
    return j;
  }
  void need_fields(const Fields &f, int lo, int hi) {
    if (f.too_many || f.n > hi)
      bad(QRN_RES_ERR_READ_SYNTAX, f.col[std::min(f.n, Fields::max) - 1], "the line has too many fields.");
    if (f.n < lo) bad(QRN_RES_ERR_READ_SYNTAX, 1, "the line has too few fields.");
  }

  void rows_line(const Fields &f) {
    need_fields(f, 2, 2);
    std::string_view t = f.f[0];
    char type = t.size() == 1 ? static_cast<char>(std::toupper(static_cast<unsigned char>(t[0]))) : '?';
    if (type != 'N' && type != 'G' && type != 'L' && type != 'E')
      bad(QRN_RES_ERR_READ_SYNTAX, f.col[0], "\"" + std::string(t) + "\" is not a row type (N, G, L, E).");
    std::string_view name = f.f[1];
    bool is_obj = type == 'N' && !have_obj && (objname_wanted.empty() || objname_wanted == name);
    if (rowmap.find(name) >= 0 || (have_obj && name == objrow))
      bad(QRN_RES_ERR_READ_NAME_DUP, f.col[1], "the row name \"" + std::string(name) + "\" is given twice.");
    if (is_obj) {
      objrow = name;
      have_obj = true;
      return;
    }
    qrn_int32 i = static_cast<qrn_int32>(rownames.size());
    rowmap.insert(name, i);
    rownames.push_back(name);
    rowtype.push_back(type);
  }

  void start_columns() {
    const size_t m = rownames.size();
    p.numcon = static_cast<qrn_int32>(m);
    rowrhs.assign(m, 0.0);
    rowrange.assign(m, 0.0);
    hasrange.assign(m, false);
    lastcol.assign(m, -1);
    p.aptr.assign(1, 0);
  }

  void columns_line(const Fields &f) {
    if (f.n >= 3 && (f.f[1] == "'MARKER'" || f.f[1] == "MARKER")) {
      std::string_view kind = f.f[f.n - 1];
      if (kind == "'INTORG'") intmarker = true;
      else if (kind == "'INTEND'") intmarker = false;
      else bad(QRN_RES_ERR_READ_SYNTAX, f.col[f.n - 1], "a marker is 'INTORG' or 'INTEND'.");
      return;
    }
    need_fields(f, 3, 5);
    if (f.n == 4) bad(QRN_RES_ERR_READ_SYNTAX, f.col[3], "a row name needs its value.");
    std::string_view name = f.f[0];
    qrn_int32 j = static_cast<qrn_int32>(colnames.size()) - 1;
    if (j < 0 || colnames[j] != name) {
      if (colmap.find(name) >= 0)
        bad(QRN_RES_ERR_READ_NAME_DUP, f.col[0], "column \"" + std::string(name) + "\" appears again after other columns.");
      j = static_cast<qrn_int32>(colnames.size());
      colmap.insert(name, j);
      colnames.push_back(name);
      p.c.push_back(0.0);
      p.vartype.push_back(intmarker ? QRN_VAR_TYPE_INTEGER : QRN_VAR_TYPE_CONTINUOUS);
      p.aptr.push_back(p.aptr.back());
      objentry_in_col = false;
    }
    for (int k = 1; k + 1 < f.n; k += 2) {
      qrn_int32 i = row(f, k);
      double v = finite(f, k + 1);
      if (i == -2) {
        if (objentry_in_col) bad(QRN_RES_ERR_READ_NAME_DUP, f.col[k], "the objective entry of this column is given twice.");
        objentry_in_col = true;
        p.c[j] = v;
        continue;
      }
      if (lastcol[i] == j)
        bad(QRN_RES_ERR_READ_NAME_DUP, f.col[k], "row \"" + std::string(f.f[k]) + "\" appears twice in this column.");
      lastcol[i] = j;
      if (v == 0.0) continue;
      // Rows arrive in any order within a column: keep the column sorted.
      qrn_int64 b = p.aptr[j];
      p.asub.push_back(i);
      p.aval.push_back(v);
      size_t q = p.asub.size() - 1;
      while (static_cast<qrn_int64>(q) > b && p.asub[q - 1] > i) {
        std::swap(p.asub[q - 1], p.asub[q]);
        std::swap(p.aval[q - 1], p.aval[q]);
        --q;
      }
      ++p.aptr.back();
    }
  }

  // RHS and RANGES lines: [set] row value [row value]; only the first set counts.
  void vector_line(const Fields &f, bool ranges) {
    need_fields(f, 2, 5);
    int k = 0;
    std::string_view set;
    if (f.n % 2 == 1) {
      set = f.f[0];
      k = 1;
    }
    std::string_view &first = ranges ? rangeset : rhsset;
    bool &known = ranges ? rangeset_known : rhsset_known;
    if (!known) {
      first = set;
      known = true;
    } else if (set != first) {
      ++ctx.warnings;
      return;
    }
    for (; k + 1 < f.n; k += 2) {
      qrn_int32 i = row(f, k);
      double v = number(f, k + 1);
      if (i == -2) {
        if (!ranges) {
          if (std::isinf(v)) bad(QRN_RES_ERR_READ_NUMBER, f.col[k + 1], "the objective constant must be finite.");
          p.cfix = -v;
        } else {
          ++ctx.warnings;
        }
        continue;
      }
      if (ranges) {
        if (rowtype[i] == 'N') {
          ++ctx.warnings;
          continue;
        }
        if (std::isinf(v)) bad(QRN_RES_ERR_READ_NUMBER, f.col[k + 1], "a range must be finite.");
        rowrange[i] = v;
        hasrange[i] = true;
      } else {
        rowrhs[i] = v;
      }
    }
  }

  void bounds_line(const Fields &f) {
    need_fields(f, 2, 4);
    std::string type(f.f[0]);
    for (char &ch : type) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    bool novalue = type == "FR" || type == "MI" || type == "PL" || type == "BV";
    bool value = type == "UP" || type == "LO" || type == "FX" || type == "LI" || type == "UI";
    if (type == "SC") bad(QRN_RES_ERR_READ_UNSUPPORTED, f.col[0], "semi-continuous variables are not supported.");
    if (!novalue && !value) bad(QRN_RES_ERR_READ_SYNTAX, f.col[0], "\"" + type + "\" is not a bound type.");
    int k;  // field of the column name
    if (value) {
      if (f.n < 3) bad(QRN_RES_ERR_READ_SYNTAX, 1, "the bound needs a column and a value.");
      k = f.n == 4 ? 2 : 1;
    } else {
      k = f.n == 2 ? 1 : (f.n == 4 ? 2 : (colmap.find(f.f[2]) >= 0 ? 2 : 1));
    }
    std::string_view set = k == 2 ? f.f[1] : std::string_view();
    if (!boundset_known) {
      boundset = set;
      boundset_known = true;
    } else if (set != boundset) {
      ++ctx.warnings;
      return;
    }
    qrn_int32 j = column(f, k);
    double v = value ? number(f, k + 1) : 0.0;
    auto lower = [&](double x) {
      p.blx[j] = x;
      lo_set[j] = true;
    };
    fixed_bound[j] = false;
    if (type == "UP" || type == "UI") {
      // An upper bound below 0 on a column without a lower bound makes it unbounded below.
      if (v < 0 && !lo_set[j]) {
        p.blx[j] = -inf;
        ++ctx.warnings;
      }
      p.bux[j] = v;
    } else if (type == "LO" || type == "LI") {
      lower(v);
    } else if (type == "FX") {
      if (std::isinf(v)) bad(QRN_RES_ERR_READ_NUMBER, f.col[k + 1], "a fixed bound must be finite.");
      lower(v);
      p.bux[j] = v;
      fixed_bound[j] = true;
    } else if (type == "FR") {
      lower(-inf);
      p.bux[j] = inf;
    } else if (type == "MI") {
      lower(-inf);
    } else if (type == "PL") {
      p.bux[j] = inf;
    } else if (type == "BV") {
      lower(0.0);
      p.bux[j] = 1.0;
      p.vartype[j] = QRN_VAR_TYPE_INTEGER;
    }
    if (type == "LI" || type == "UI") p.vartype[j] = QRN_VAR_TYPE_INTEGER;
  }

  void quad_line(const Fields &f, bool full) {
    need_fields(f, 3, 3);
    qrn_int32 a = column(f, 0), b = column(f, 1);
    double v = finite(f, 2);
    if (full && a < b) return;  // QMATRIX gives both triangles: take the lower one
    qrn_int32 i = std::max(a, b), j = std::min(a, b);
    if (qccon >= 0) {
      if (a < b) return;
      p.qcsubk.push_back(qccon);
      p.qcsubi.push_back(i);
      p.qcsubj.push_back(j);
      p.qcval.push_back(2 * v);
      return;
    }
    p.qosubi.push_back(i);
    p.qosubj.push_back(j);
    p.qoval.push_back(v);
  }

  void finish_bounds_start() {
    const size_t n = colnames.size();
    p.numvar = static_cast<qrn_int32>(n);
    p.bkx.assign(n, QRN_BK_LOWER);
    p.blx.assign(n, 0.0);
    p.bux.assign(n, inf);
    lo_set.assign(n, false);
    fixed_bound.assign(n, false);
  }

  static double clip(double v) { return std::fabs(v) >= QRN_INFINITY ? (v < 0 ? -inf : inf) : v; }

  void finish() {
    const qrn_int32 m = p.numcon, n = p.numvar;
    p.bkc.assign(m, QRN_BK_FREE);
    p.blc.assign(m, -inf);
    p.buc.assign(m, inf);
    for (qrn_int32 i = 0; i < m; ++i) {
      double r = rowrhs[i], lo = -inf, up = inf;
      double R = std::fabs(rowrange[i]);
      switch (rowtype[i]) {
        case 'G': lo = r; up = hasrange[i] ? r + R : inf; break;
        case 'L': up = r; lo = hasrange[i] ? r - R : -inf; break;
        case 'E':
          if (!hasrange[i]) lo = up = r;
          else if (rowrange[i] < 0) lo = r + rowrange[i], up = r;
          else lo = r, up = r + rowrange[i];
          break;
        default: break;
      }
      lo = clip(lo), up = clip(up);
      p.blc[i] = lo;
      p.buc[i] = up;
      if (rowtype[i] == 'E' && !hasrange[i]) {
        if (std::isinf(lo)) fail_at(QRN_RES_ERR_READ_NUMBER, src, line, 1, "equality row \"" + std::string(rownames[i]) + "\" has an infinite right-hand side.");
        p.bkc[i] = QRN_BK_FIXED;
      } else {
        bool fl = !std::isinf(lo), fu = !std::isinf(up);
        p.bkc[i] = fl && fu ? QRN_BK_RANGED : fl ? QRN_BK_LOWER : fu ? QRN_BK_UPPER : QRN_BK_FREE;
      }
    }
    for (qrn_int32 j = 0; j < n; ++j) {
      double lo = clip(p.blx[j]), up = clip(p.bux[j]);
      p.blx[j] = lo;
      p.bux[j] = up;
      bool fl = !std::isinf(lo), fu = !std::isinf(up);
      p.bkx[j] = fixed_bound[j] ? QRN_BK_FIXED
                                : fl && fu ? QRN_BK_RANGED : fl ? QRN_BK_LOWER : fu ? QRN_BK_UPPER : QRN_BK_FREE;
    }
    p.connames.assign(rownames.begin(), rownames.end());
    p.varnames.assign(colnames.begin(), colnames.end());
    p.objname = std::string(objrow);
  }

  void run() {
    Lines lines(src.text);
    std::string_view l;
    Section sec = Section::none;
    bool seen[16] = {};
    bool ended = false;
    while (lines.next(l)) {
      line = lines.number();
      if (l.empty() || l[0] == '*') continue;
      bool header = l[0] != ' ' && l[0] != '\t';
      Fields f(l);
      if (f.n == 0) continue;
      if (ended) bad(QRN_RES_ERR_READ_SECTION, 1, "text follows ENDATA.");
      if (header) {
        std::string_view w = f.f[0];
        Section next;
        if (w == "NAME") next = Section::name;
        else if (w == "OBJSENSE" || w == "OBJSENCE") next = Section::objsense;
        else if (w == "OBJNAME") next = Section::objname;
        else if (w == "ROWS") next = Section::rows;
        else if (w == "COLUMNS") next = Section::columns;
        else if (w == "RHS") next = Section::rhs;
        else if (w == "RANGES") next = Section::ranges;
        else if (w == "BOUNDS") next = Section::bounds;
        else if (w == "QUADOBJ" || w == "QSECTION") next = Section::quadobj;
        else if (w == "QMATRIX") next = Section::qmatrix;
        else if (w == "QCMATRIX") next = Section::qcmatrix;
        else if (w == "CSECTION") next = Section::csection;
        else if (w == "ENDATA") next = Section::end;
        else if (w == "SOS" || w == "INDICATORS" || w == "GENERAL" || w == "PWLOBJ")
          bad(QRN_RES_ERR_READ_UNSUPPORTED, 1, "the section " + std::string(w) + " is not supported.");
        else
          bad(QRN_RES_ERR_READ_SECTION, 1, "\"" + std::string(w.substr(0, 40)) + "\" is not an MPS section.");
        const int order = static_cast<int>(next);
        bool repeatable = next == Section::qcmatrix || next == Section::csection;
        if (seen[order] && !repeatable) bad(QRN_RES_ERR_READ_SECTION, 1, "the section " + std::string(w) + " is given twice.");
        // Sections come in order; the optional ones may be left out.
        if (next >= Section::columns && !seen[static_cast<int>(Section::rows)] && next != Section::end)
          bad(QRN_RES_ERR_READ_SECTION, 1, "the section " + std::string(w) + " comes before ROWS.");
        if (next > Section::columns && next != Section::end && !seen[static_cast<int>(Section::columns)])
          bad(QRN_RES_ERR_READ_SECTION, 1, "the section " + std::string(w) + " comes before COLUMNS.");
        if (next < sec && !(repeatable && sec >= Section::quadobj) && next != Section::objsense)
          bad(QRN_RES_ERR_READ_SECTION, 1, "the section " + std::string(w) + " is out of order.");
        seen[order] = true;
        if (next == Section::columns) start_columns();
        if (next > Section::columns && sec <= Section::columns) {
          if (!seen[static_cast<int>(Section::columns)]) start_columns();
          finish_bounds_start();
        }
        sec = next;
        qccon = -1;
        cone = nullptr;
        switch (next) {
          case Section::name:
            if (f.n > 1) {
              size_t b = f.col[1] - 1;
              std::string_view rest = l.substr(b);
              while (!rest.empty() && (rest.back() == ' ' || rest.back() == '\t')) rest.remove_suffix(1);
              p.taskname = std::string(rest);
            }
            break;
          case Section::objsense:
            if (f.n > 1) sense(f, 1);
            break;
          case Section::objname:
            if (f.n > 1) objname_wanted = f.f[1];
            break;
          case Section::qcmatrix:
            need_fields(f, 2, 2);
            qccon = row(f, 1);
            if (qccon == -2) bad(QRN_RES_ERR_READ_SYNTAX, f.col[1], "QCMATRIX names a constraint, not the objective.");
            break;
          case Section::csection: {
            need_fields(f, 4, 4);
            p.cones.emplace_back();
            cone = &p.cones.back();
            p.conenames.emplace_back(f.f[1]);
            cone->par = finite(f, 2);
            std::string_view t = f.f[3];
            if (t == "QUAD") cone->type = QRN_CONE_QUAD;
            else if (t == "RQUAD") cone->type = QRN_CONE_RQUAD;
            else bad(QRN_RES_ERR_READ_UNSUPPORTED, f.col[3], "the cone type \"" + std::string(t) + "\" is not supported.");
            break;
          }
          case Section::end:
            ended = true;
            break;
          default:
            if (f.n > 1 && next != Section::rhs && next != Section::ranges && next != Section::bounds)
              bad(QRN_RES_ERR_READ_SYNTAX, f.col[1], "the section header has extra fields.");
        }
        continue;
      }
      switch (sec) {
        case Section::objsense: sense(f, 0); break;
        case Section::objname: objname_wanted = f.f[0]; break;
        case Section::rows: rows_line(f); break;
        case Section::columns: columns_line(f); break;
        case Section::rhs: vector_line(f, false); break;
        case Section::ranges: vector_line(f, true); break;
        case Section::bounds: bounds_line(f); break;
        case Section::quadobj: quad_line(f, false); break;
        case Section::qmatrix: quad_line(f, true); break;
        case Section::qcmatrix: quad_line(f, true); break;
        case Section::csection:
          need_fields(f, 1, 1);
          cone->members.push_back(column(f, 0));
          break;
        default:
          bad(QRN_RES_ERR_READ_SECTION, f.col[0], "a data line outside any section.");
      }
    }
    line = lines.number() + 1;
    if (!ended) fail_at(QRN_RES_ERR_READ_EOF, src, line, 1, "the text ends without ENDATA.");
    if (!seen[static_cast<int>(Section::rows)]) fail_at(QRN_RES_ERR_READ_SECTION, src, line, 1, "the text has no ROWS section.");
    if (!seen[static_cast<int>(Section::columns)]) start_columns();
    if (p.numvar != static_cast<qrn_int32>(colnames.size()) || p.bkx.size() != colnames.size()) finish_bounds_start();
    finish();
    ctx.lines = lines.number();
  }

  void sense(const Fields &f, int k) {
    std::string_view w = f.f[k];
    if (w == "MAX" || w == "MAXIMIZE") p.sense = QRN_OBJECTIVE_SENSE_MAXIMIZE;
    else if (w == "MIN" || w == "MINIMIZE") p.sense = QRN_OBJECTIVE_SENSE_MINIMIZE;
    else bad(QRN_RES_ERR_READ_SYNTAX, f.col[k], "\"" + std::string(w) + "\" is not an objective sense (MIN, MAX).");
  }
};

}  // namespace

void write_mps_fixed(const FileProblem &p, Out &out, const WriteOptions &opt) { write_mps(p, out, opt, true); }
void write_mps_free(const FileProblem &p, Out &out, const WriteOptions &opt) { write_mps(p, out, opt, false); }

void read_mps(const Source &src, ReadContext &ctx) {
  MpsReader r(src, ctx);
  r.run();
}

}  // namespace qrn
