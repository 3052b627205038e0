// Solution files: the solution text format (docs/formats/solution.md), JSON
// solutions and basis files. Solutions are read into a copy and put in place
// only when the whole file was read.
//
//   sol 1
//   solution interior|basic|integer
//   prosta <problem status>          PRIM_AND_DUAL_FEAS, ...
//   solsta <solution status>         OPTIMAL, ...
//   pobj <primal objective>          written for information; not read back
//   constraints <m>
//   con <i> "name" <key> <xc> <slc> <suc> <y>
//   variables <n>
//   var <j> "name" <key> <xx> <slx> <sux> <snx>
//   cones <k>
//   cone <k> "name" <key>
//   accs <numacc>                    only when the task has ACCs:
//   acc <k> "name" <n> <doty>*n      the dual values of the ACC's rows
//   barvars <numbarvar>              only when the task has semidefinite variables:
//   barvar <j> "name" <len> <barx>*len <bars>*len   lower triangles by columns
//   end
//
// Keys are UN BS SB LL UL EQ IN. A file may hold several solution blocks.
#include "formats.hpp"

#include "solfiles.hpp"

#include <cmath>
#include <memory>
#include <unordered_map>

namespace qrn {
namespace {

std::string file_arg(const char *filename) {
  if (filename == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument filename is null.");
  return filename;
}

double primal_objective(const FileProblem &p, const Solution &s) {
  double v = p.cfix;
  for (qrn_int32 j = 0; j < p.numvar; ++j) v += p.c[j] * s.xx[j];
  for (size_t k = 0; k < p.qoval.size(); ++k) {
    double t = p.qoval[k] * s.xx[p.qosubi[k]] * s.xx[p.qosubj[k]];
    v += p.qosubi[k] == p.qosubj[k] ? t / 2 : t;
  }
  return v;
}

void write_block(Out &out, const FileProblem &p, const Solution &s, qrn_int32 which) {
  auto name_at = [](const std::vector<std::string> &v, size_t k) -> const std::string & {
    static const std::string none;
    return k < v.size() ? v[k] : none;
  };
  out.raw("solution ").raw(soltype_name(which)).ch('\n');
  out.raw("prosta ").raw(prosta_name(s.prosta) ? prosta_name(s.prosta) : "UNKNOWN").ch('\n');
  out.raw("solsta ").raw(solsta_name(s.solsta) ? solsta_name(s.solsta) : "UNKNOWN").ch('\n');
  out.raw("pobj ").num(primal_objective(p, s)).ch('\n');
  auto name = [](const std::vector<std::string> &v, size_t k) -> const std::string & {
    static const std::string none;
    return k < v.size() ? v[k] : none;
  };
  out.raw("constraints ").integer(p.numcon).ch('\n');
  for (qrn_int32 i = 0; i < p.numcon; ++i) {
    out.raw("con ").integer(i).ch(' ').quoted(name(p.connames, i)).ch(' ').raw(sk_code(s.skc[i]) ? sk_code(s.skc[i]) : "UN");
    out.ch(' ').num(s.xc[i]).ch(' ').num(s.slc[i]).ch(' ').num(s.suc[i]).ch(' ').num(s.y[i]).ch('\n');
  }
  out.raw("variables ").integer(p.numvar).ch('\n');
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    out.raw("var ").integer(j).ch(' ').quoted(name(p.varnames, j)).ch(' ').raw(sk_code(s.skx[j]) ? sk_code(s.skx[j]) : "UN");
    out.ch(' ').num(s.xx[j]).ch(' ').num(s.slx[j]).ch(' ').num(s.sux[j]).ch(' ').num(s.snx[j]).ch('\n');
  }
  out.raw("cones ").integer(static_cast<qrn_int64>(s.skn.size())).ch('\n');
  for (size_t k = 0; k < s.skn.size(); ++k)
    out.raw("cone ").integer(static_cast<qrn_int64>(k)).ch(' ').quoted(name(p.conenames, k)).ch(' ').raw(sk_code(s.skn[k]) ? sk_code(s.skn[k]) : "UN").ch('\n');
  if (!p.accs.empty()) {
    out.raw("accs ").integer(static_cast<qrn_int64>(p.accs.size())).ch('\n');
    size_t row = 0;
    for (size_t k = 0; k < p.accs.size(); ++k) {
      const size_t n = p.accs[k].afe.size();
      out.raw("acc ").integer(static_cast<qrn_int64>(k)).ch(' ').quoted(name_at(p.accnames, k)).ch(' ').integer(static_cast<qrn_int64>(n));
      for (size_t q = 0; q < n; ++q) out.ch(' ').num(s.doty[row + q]);
      row += n;
      out.ch('\n');
    }
  }
  if (!p.barvardim.empty()) {
    out.raw("barvars ").integer(static_cast<qrn_int64>(p.barvardim.size())).ch('\n');
    for (size_t j = 0; j < p.barvardim.size(); ++j) {
      out.raw("barvar ").integer(static_cast<qrn_int64>(j)).ch(' ').quoted(name_at(p.barvarnames, j)).ch(' ');
      out.integer(static_cast<qrn_int64>(s.barx[j].size()));
      for (double v : s.barx[j]) out.ch(' ').num(v);
      for (double v : s.bars[j]) out.ch(' ').num(v);
      out.ch('\n');
    }
  }
  out.raw("end\n");
}

void write_text_file(Task &t, const std::string &name, const std::vector<qrn_int32> &which) {
  FileProblem p = extract(static_cast<qrn_task_s *>(&t));
  FileSink file(name, name.size() > 3 && name.compare(name.size() - 3, 3, ".gz") == 0);
  Sink sink = file.sink();
  Out out(sink, t.par.integer[QRN_IPAR_OUTPUT_PRECISION]);
  out.raw("sol 1\n");
  for (qrn_int32 w : which) write_block(out, p, fitted_solution(t, w), w);
  out.flush();
  file.close();
}

// Reads every block of a solution text; items are checked against the task's
// sizes and, where both have one, names.
std::vector<std::pair<qrn_int32, Solution>> read_blocks(const Source &src, const FileProblem &p) {
  Lexer lx(src, true);
  std::vector<std::pair<qrn_int32, Solution>> out;
  Token head = lx.next();
  if (head.text != "sol") lx.fail(head.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_VERSION, head, "a solution file starts with \"sol 1\".");
  Token ver = lx.need("the version");
  if (ver.text != "1") lx.fail(QRN_RES_ERR_READ_VERSION, ver, "solution file version " + std::string(ver.text) + " is not known.");
  auto key = [&](Token t) {
    qrn_int32 sk;
    if (!find_sk(t.text, sk)) lx.fail(QRN_RES_ERR_READ_SYNTAX, t, "a status key (UN BS SB LL UL EQ IN) was expected.");
    return sk;
  };
  auto check_name = [&](const Token &at, const std::string &name, const std::vector<std::string> &names, size_t k) {
    if (!name.empty() && k < names.size() && !names[k].empty() && names[k] != name)
      lx.fail(QRN_RES_ERR_SOL_SIZE, at, "the item is named \"" + name + "\" here but \"" + names[k] + "\" in the task.");
  };
  auto value = [&]() {
    Token t = lx.need("a value");
    if (t.text == "nan") return std::nan("");
    return lx.number(t, true);
  };
  for (;;) {
    Token t = lx.next();
    if (t.empty()) break;
    if (t.text != "solution") lx.fail(QRN_RES_ERR_READ_SECTION, t, "\"solution\" was expected.");
    Token kind = lx.need("the solution kind");
    qrn_int32 w;
    if (!find_soltype(kind.text, w)) lx.fail(QRN_RES_ERR_READ_SYNTAX, kind, "the kind is interior, basic or integer.");
    Solution s;
    s.defined = true;
    lx.expect("prosta");
    Token ps = lx.need("a problem status");
    if (!find_prosta(ps.text, s.prosta)) lx.fail(QRN_RES_ERR_READ_SYNTAX, ps, "not a problem status.");
    lx.expect("solsta");
    Token ss = lx.need("a solution status");
    if (!find_solsta(ss.text, s.solsta)) lx.fail(QRN_RES_ERR_READ_SYNTAX, ss, "not a solution status.");
    if (lx.peek().text == "pobj") {
      lx.next();
      value();
    }
    lx.expect("constraints");
    Token mt = lx.need("a count");
    qrn_int64 m = lx.integer(mt, 0, INT32_MAX);
    if (m != p.numcon) lx.fail(QRN_RES_ERR_SOL_SIZE, mt, "the file has " + std::to_string(m) + " constraints, the task " + std::to_string(p.numcon) + ".");
    for (qrn_int64 i = 0; i < m; ++i) {
      lx.expect("con");
      Token it = lx.need("an index");
      lx.integer(it, i, i);
      Token nm = lx.need("a name");
      check_name(nm, lx.unquote(nm), p.connames, i);
      s.skc.push_back(key(lx.need("a key")));
      s.xc.push_back(value()), s.slc.push_back(value()), s.suc.push_back(value()), s.y.push_back(value());
    }
    lx.expect("variables");
    Token nt = lx.need("a count");
    qrn_int64 n = lx.integer(nt, 0, INT32_MAX);
    if (n != p.numvar) lx.fail(QRN_RES_ERR_SOL_SIZE, nt, "the file has " + std::to_string(n) + " variables, the task " + std::to_string(p.numvar) + ".");
    for (qrn_int64 j = 0; j < n; ++j) {
      lx.expect("var");
      Token jt = lx.need("an index");
      lx.integer(jt, j, j);
      Token nm = lx.need("a name");
      check_name(nm, lx.unquote(nm), p.varnames, j);
      s.skx.push_back(key(lx.need("a key")));
      s.xx.push_back(value()), s.slx.push_back(value()), s.sux.push_back(value()), s.snx.push_back(value());
    }
    lx.expect("cones");
    Token kt = lx.need("a count");
    qrn_int64 nk = lx.integer(kt, 0, INT32_MAX);
    if (nk != static_cast<qrn_int64>(p.cones.size()))
      lx.fail(QRN_RES_ERR_SOL_SIZE, kt, "the file has " + std::to_string(nk) + " cones, the task " + std::to_string(p.cones.size()) + ".");
    for (qrn_int64 k = 0; k < nk; ++k) {
      lx.expect("cone");
      Token ct = lx.need("an index");
      lx.integer(ct, k, k);
      Token nm = lx.need("a name");
      check_name(nm, lx.unquote(nm), p.conenames, k);
      s.skn.push_back(key(lx.need("a key")));
    }
    Token next = lx.need("\"end\"");
    if (next.text == "accs") {
      qrn_int64 na = lx.integer(lx.need("a count"), static_cast<qrn_int64>(p.accs.size()), static_cast<qrn_int64>(p.accs.size()));
      for (qrn_int64 k = 0; k < na; ++k) {
        lx.expect("acc");
        lx.integer(lx.need("an index"), k, k);
        Token nm = lx.need("a name");
        check_name(nm, lx.unquote(nm), p.accnames, static_cast<size_t>(k));
        const qrn_int64 n = static_cast<qrn_int64>(p.accs[k].afe.size());
        lx.integer(lx.need("the ACC's size"), n, n);
        for (qrn_int64 q = 0; q < n; ++q) s.doty.push_back(value());
      }
      next = lx.need("\"end\"");
    }
    if (next.text == "barvars") {
      const qrn_int64 nb = static_cast<qrn_int64>(p.barvardim.size());
      lx.integer(lx.need("a count"), nb, nb);
      for (qrn_int64 j = 0; j < nb; ++j) {
        lx.expect("barvar");
        lx.integer(lx.need("an index"), j, j);
        Token nm = lx.need("a name");
        check_name(nm, lx.unquote(nm), p.barvarnames, static_cast<size_t>(j));
        const qrn_int64 d = p.barvardim[j], len = d * (d + 1) / 2;
        lx.integer(lx.need("the number of values"), len, len);
        for (auto *bar : {&s.barx, &s.bars}) {
          std::vector<double> v;
          for (qrn_int64 q = 0; q < len; ++q) v.push_back(value());
          bar->push_back(std::move(v));
        }
      }
      next = lx.need("\"end\"");
    }
    if (next.text != "end") lx.fail(QRN_RES_ERR_READ_SYNTAX, next, "\"end\" was expected.");
    if (s.doty.size() != static_cast<size_t>(p.accntot()) || s.barx.size() != p.barvardim.size())
      lx.fail(QRN_RES_ERR_SOL_SIZE, next, "the solution lacks the values of the task's ACCs or semidefinite variables.");
    for (auto &b : out)
      if (b.first == w) lx.fail(QRN_RES_ERR_READ_SECTION, kind, "the file holds this solution twice.");
    out.emplace_back(w, std::move(s));
  }
  return out;
}

// ---- basis files ------------------------------------------------------------------

void write_basis(Task &t, const std::string &name, qrn_int32 compress) {
  const Solution &s = t.sol[QRN_SOL_BAS];
  if (!s.defined) fail(QRN_RES_ERR_SOL_UNDEFINED, "The basic solution is not defined.");
  FileProblem p = extract(static_cast<qrn_task_s *>(&t));
  WriteOptions opt = write_options(t);
  std::vector<std::string> rows = complete_names(p.connames, p.numcon, opt.con_prefix, opt.use_names);
  std::vector<std::string> cols = complete_names(p.varnames, p.numvar, opt.var_prefix, opt.use_names);
  need_token_names(rows, "constraint", "a basis file");
  need_token_names(cols, "variable", "a basis file");
  std::vector<qrn_int32> basic_cols, nonbasic_rows;
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    if (s.skx[j] == QRN_SK_BASIS) basic_cols.push_back(j);
  for (qrn_int32 i = 0; i < p.numcon; ++i)
    if (s.skc[i] != QRN_SK_BASIS) nonbasic_rows.push_back(i);
  if (basic_cols.size() != nonbasic_rows.size())
    fail(QRN_RES_ERR_ARGUMENT, "The basic solution's keys are not a basis: " + std::to_string(basic_cols.size()) +
                                   " basic variables but " + std::to_string(nonbasic_rows.size()) + " non-basic constraints.");
  FileSink file(name, false);
  Sink fs = file.sink();
  std::unique_ptr<GzipSink> gz;
  Sink gzs;
  if (compress == QRN_COMPRESS_GZIP) {
    gz = std::make_unique<GzipSink>(fs);
    gzs = gz->sink();
  }
  {
    Out out(gz ? gzs : fs);
    out.raw("NAME          ").raw(p.taskname.empty() ? std::string("basis") : p.taskname).ch('\n');
    for (size_t k = 0; k < basic_cols.size(); ++k) {
      qrn_int32 j = basic_cols[k], i = nonbasic_rows[k];
      out.raw(s.skc[i] == QRN_SK_AT_UPPER ? " XU " : " XL ").raw(cols[j]).pad_to(14).raw(rows[i]).ch('\n');
    }
    for (qrn_int32 j = 0; j < p.numvar; ++j)
      if (s.skx[j] == QRN_SK_AT_UPPER) out.raw(" UL ").raw(cols[j]).ch('\n');
    out.raw("ENDATA\n");
    out.flush();
  }
  if (gz) gz->finish();
  file.close();
}

void read_basis(Task &t, const std::string &name) {
  Source src{name, read_file(name)};
  FileProblem p = extract(static_cast<qrn_task_s *>(&t));
  WriteOptions opt = write_options(t);
  std::vector<std::string> rows = complete_names(p.connames, p.numcon, opt.con_prefix, true);
  std::vector<std::string> cols = complete_names(p.varnames, p.numvar, opt.var_prefix, true);
  std::unordered_map<std::string_view, qrn_int32> rowmap, colmap;
  for (qrn_int32 i = 0; i < p.numcon; ++i) rowmap.emplace(rows[i], i);
  for (qrn_int32 j = 0; j < p.numvar; ++j) colmap.emplace(cols[j], j);
  Solution s;
  s.defined = true;
  s.skc.assign(p.numcon, QRN_SK_BASIS);
  s.skx.assign(p.numvar, QRN_SK_AT_LOWER);
  Lines lines(src.text);
  std::string_view l;
  bool ended = false;
  while (lines.next(l)) {
    if (l.empty() || l[0] == '*') continue;
    Fields f(l);
    if (f.n == 0) continue;
    size_t at = lines.number();
    if (ended) fail_at(QRN_RES_ERR_READ_SECTION, src, at, 1, "text follows ENDATA.");
    if (l[0] != ' ' && l[0] != '\t') {
      if (f.f[0] == "ENDATA") ended = true;
      else if (f.f[0] != "NAME") fail_at(QRN_RES_ERR_READ_SECTION, src, at, 1, "\"" + std::string(f.f[0]) + "\" is not a basis file section.");
      continue;
    }
    auto col = [&](int k) {
      auto it = colmap.find(f.f[k]);
      if (it == colmap.end()) fail_at(QRN_RES_ERR_READ_NAME_UNKNOWN, src, at, f.col[k], "no variable is named \"" + std::string(f.f[k]) + "\".");
      return it->second;
    };
    auto row = [&](int k) {
      auto it = rowmap.find(f.f[k]);
      if (it == rowmap.end()) fail_at(QRN_RES_ERR_READ_NAME_UNKNOWN, src, at, f.col[k], "no constraint is named \"" + std::string(f.f[k]) + "\".");
      return it->second;
    };
    std::string_view k = f.f[0];
    if ((k == "XU" || k == "XL") && f.n == 3) {
      s.skx[col(1)] = QRN_SK_BASIS;
      s.skc[row(2)] = k == "XU" ? QRN_SK_AT_UPPER : QRN_SK_AT_LOWER;
    } else if ((k == "UL" || k == "LL") && f.n == 2) {
      s.skx[col(1)] = k == "UL" ? QRN_SK_AT_UPPER : QRN_SK_AT_LOWER;
    } else {
      fail_at(QRN_RES_ERR_READ_SYNTAX, src, at, f.col[0], "a basis line is XU, XL (variable, constraint), UL or LL (variable).");
    }
  }
  if (!ended) fail_at(QRN_RES_ERR_READ_EOF, src, lines.number() + 1, 1, "the file ends without ENDATA.");
  // Values: non-basic variables at the bound of their key (0 when infinite), basic ones 0.
  s.xx.assign(p.numvar, 0.0);
  for (qrn_int32 j = 0; j < p.numvar; ++j) {
    double v = s.skx[j] == QRN_SK_AT_UPPER ? p.bux[j] : s.skx[j] == QRN_SK_AT_LOWER ? p.blx[j] : 0.0;
    s.xx[j] = std::isinf(v) ? 0.0 : v;
  }
  s.xc.assign(p.numcon, 0.0);
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    for (qrn_int64 q = p.aptr[j]; q < p.aptr[j + 1]; ++q) s.xc[p.asub[q]] += p.aval[q] * s.xx[j];
  s.y.assign(p.numcon, 0.0), s.slc.assign(p.numcon, 0.0), s.suc.assign(p.numcon, 0.0);
  s.slx.assign(p.numvar, 0.0), s.sux.assign(p.numvar, 0.0), s.snx.assign(p.numvar, 0.0);
  s.skn.assign(p.cones.size(), QRN_SK_UNKNOWN);
  t.sol[QRN_SOL_BAS] = std::move(s);
}

}  // namespace

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_writesolution(qrn_task_t task, qrn_int32 whichsol, const char *filename) {
  return api(task, "QRN_writesolution", [&](Task &t) {
    std::string name = file_arg(filename);
    need_soltype(whichsol);
    if (!t.sol[whichsol].defined) fail(QRN_RES_ERR_SOL_UNDEFINED, std::string("The ") + soltype_name(whichsol) + " solution is not defined.");
    write_text_file(t, name, {whichsol});
  });
}

QRN_API qrn_rescode QRN_CALL QRN_writesolutionfile(qrn_task_t task, const char *filename) {
  return api(task, "QRN_writesolutionfile", [&](Task &t) {
    std::string name = file_arg(filename);
    std::vector<qrn_int32> which;
    for (qrn_int32 w = 0; w < QRN_SOL_COUNT; ++w)
      if (t.sol[w].defined) which.push_back(w);
    write_text_file(t, name, which);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readsolution(qrn_task_t task, qrn_int32 whichsol, const char *filename) {
  return api(task, "QRN_readsolution", [&](Task &t) {
    std::string name = file_arg(filename);
    need_soltype(whichsol);
    Source src{name, read_file(name)};
    FileProblem p = extract(task);
    auto blocks = read_blocks(src, p);
    // The block of that kind, else the only block.
    const Solution *found = nullptr;
    for (auto &b : blocks)
      if (b.first == whichsol) found = &b.second;
    if (found == nullptr && blocks.size() == 1) found = &blocks[0].second;
    if (found == nullptr)
      fail(QRN_RES_ERR_READ_SECTION, name + ": the file holds no " + soltype_name(whichsol) + " solution" +
                                         (blocks.empty() ? "." : " and more than one other."));
    t.sol[whichsol] = *found;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readsolutionfile(qrn_task_t task, const char *filename) {
  return api(task, "QRN_readsolutionfile", [&](Task &t) {
    std::string name = file_arg(filename);
    Source src{name, read_file(name)};
    FileProblem p = extract(task);
    auto blocks = read_blocks(src, p);
    for (auto &b : blocks) t.sol[b.first] = std::move(b.second);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_writejsonsol(qrn_task_t task, const char *filename) {
  return api(task, "QRN_writejsonsol", [&](Task &t) {
    std::string name = file_arg(filename);
    std::string text = json_solutions_text(t);
    FileSink file(name, name.size() > 3 && name.compare(name.size() - 3, 3, ".gz") == 0);
    file.sink()(text.data(), text.size());
    file.close();
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readjsonsol(qrn_task_t task, const char *filename) {
  return api(task, "QRN_readjsonsol", [&](Task &t) {
    std::string name = file_arg(filename);
    Source src{name, read_file(name)};
    FileProblem p = extract(task);
    std::array<Solution, QRN_SOL_COUNT> sol = t.sol;
    read_json_solutions(src, sol_sizes(p), sol);
    t.sol = std::move(sol);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_writebsolution(qrn_task_t task, const char *filename, qrn_int32 compress) {
  return api(task, "QRN_writebsolution", [&](Task &t) {
    std::string name = file_arg(filename);
    if (compress != QRN_COMPRESS_NONE && compress != QRN_COMPRESS_GZIP)
      fail(QRN_RES_ERR_COMPRESSION, "Compression " + std::to_string(compress) + " is not a qrn_compress_e value.");
    write_basis(t, name, compress);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readbsolution(qrn_task_t task, const char *filename, qrn_int32 compress) {
  return api(task, "QRN_readbsolution", [&](Task &t) {
    std::string name = file_arg(filename);
    if (compress != QRN_COMPRESS_NONE && compress != QRN_COMPRESS_GZIP)
      fail(QRN_RES_ERR_COMPRESSION, "Compression " + std::to_string(compress) + " is not a qrn_compress_e value.");
    read_basis(t, name);
  });
}

}  // extern "C"
