// The binary task file (docs/formats/task.md): everything a task holds, for
// fast saving and restoring. Little-endian fixed-width numbers, arrays stored
// as they are in memory, sections with a tag and a length so that a reader can
// check every count against the bytes that remain before it allocates.
#include "formats.hpp"

#include "params.hpp"
#include "solfiles.hpp"

#include <cstring>

namespace qrn {
namespace {

constexpr char magic[8] = {'Q', 'R', 'N', 'T', 'A', 'S', 'K', '\0'};
constexpr uint32_t version = 1;
constexpr uint32_t order_mark = 0x01020304;

uint32_t tag(const char (&s)[5]) {
  uint32_t t;
  std::memcpy(&t, s, 4);
  return t;
}

struct BinOut {
  Out &out;
  template <class T>
  void put(T v) {
    out.raw(std::string_view(reinterpret_cast<const char *>(&v), sizeof v));
  }
  template <class T>
  void arr(const std::vector<T> &v) {
    if (!v.empty()) out.raw(std::string_view(reinterpret_cast<const char *>(v.data()), v.size() * sizeof(T)));
  }
  template <class T>
  void counted(const std::vector<T> &v) {
    put<uint64_t>(v.size());
    arr(v);
  }
  void str(const std::string &s) {
    put<uint32_t>(static_cast<uint32_t>(s.size()));
    out.raw(s);
  }
};

// Sizes of the sections, so that each can be announced before it is written.
struct Sizer {
  uint64_t n = 0;
  template <class T>
  void put(T) { n += sizeof(T); }
  template <class T>
  void arr(const std::vector<T> &v) { n += v.size() * sizeof(T); }
  template <class T>
  void counted(const std::vector<T> &v) { n += 8 + v.size() * sizeof(T); }
  void str(const std::string &s) { n += 4 + s.size(); }
};

template <class W>
void problem_section(W &w, const FileProblem &p) {
  w.template put<int32_t>(p.numcon);
  w.template put<int32_t>(p.numvar);
  w.template put<int32_t>(p.sense);
  w.template put<int32_t>(static_cast<int32_t>(p.cones.size()));
  w.template put<double>(p.cfix);
  w.arr(p.c);
  w.arr(p.bkc), w.arr(p.blc), w.arr(p.buc);
  w.arr(p.bkx), w.arr(p.blx), w.arr(p.bux);
  w.arr(p.vartype);
  w.arr(p.aptr);
  w.counted(p.asub);
  w.arr(p.aval);
  w.counted(p.qosubi);
  w.arr(p.qosubj), w.arr(p.qoval);
  w.counted(p.qcsubk);
  w.arr(p.qcsubi), w.arr(p.qcsubj), w.arr(p.qcval);
  for (const ProblemCone &c : p.cones) {
    w.template put<int32_t>(c.type);
    w.template put<double>(c.par);
    w.counted(c.members);
  }
}

template <class W>
void names_section(W &w, const FileProblem &p) {
  w.str(p.taskname);
  w.str(p.objname);
  for (const auto *v : {&p.connames, &p.varnames, &p.conenames}) {
    w.template put<uint64_t>(v->size());
    for (const std::string &s : *v) w.str(s);
  }
}

template <class W>
void params_section(W &w, const Params &par) {
  w.template put<uint32_t>(static_cast<uint32_t>(QRN_DPAR_COUNT + QRN_IPAR_COUNT + QRN_SPAR_COUNT));
  for (ParKind kind : {ParKind::dou, ParKind::integer, ParKind::str})
    for (qrn_int32 id = 0; id < param_count(kind); ++id) {
      w.template put<uint8_t>(static_cast<uint8_t>(kind));
      w.str(param_name({kind, id}));
      if (kind == ParKind::dou) w.template put<double>(par.dou[id]);
      else if (kind == ParKind::integer) w.template put<int32_t>(par.integer[id]);
      else w.str(par.str[id]);
    }
}

template <class W>
void solutions_section(W &w, const std::array<Solution, QRN_SOL_COUNT> &sol) {
  uint32_t n = 0;
  for (const Solution &s : sol) n += s.defined;
  w.template put<uint32_t>(n);
  for (qrn_int32 k = 0; k < QRN_SOL_COUNT; ++k) {
    const Solution &s = sol[k];
    if (!s.defined) continue;
    w.template put<int32_t>(k);
    w.template put<int32_t>(s.prosta);
    w.template put<int32_t>(s.solsta);
    w.counted(s.skc), w.counted(s.skx), w.counted(s.skn);
    for (const auto *v : {&s.xc, &s.xx, &s.y, &s.slc, &s.suc, &s.slx, &s.sux, &s.snx, &s.doty}) w.counted(*v);
  }
}

// ---- reading ----

struct BinIn {
  const Source &src;
  size_t pos = 0, end = 0;
  const char *section = "header";

  [[noreturn]] void bad(qrn_rescode code, const std::string &msg) const {
    fail(code, src.name + ": byte " + std::to_string(pos) + " (" + section + "): " + msg);
  }
  void need(uint64_t n) {
    if (n > end - pos) bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
  }
  template <class T>
  T get() {
    need(sizeof(T));
    T v;
    std::memcpy(&v, src.text.data() + pos, sizeof v);
    pos += sizeof v;
    return v;
  }
  template <class T>
  void arr(std::vector<T> &v, uint64_t n) {
    if (n > (end - pos) / sizeof(T)) bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
    v.resize(n);
    if (n > 0) std::memcpy(v.data(), src.text.data() + pos, n * sizeof(T));
    pos += n * sizeof(T);
  }
  template <class T>
  void counted(std::vector<T> &v) {
    arr(v, get<uint64_t>());
  }
  std::string str() {
    uint32_t n = get<uint32_t>();
    need(n);
    std::string s = src.text.substr(pos, n);
    pos += n;
    return s;
  }
};

void check_keys(BinIn &in, const std::vector<qrn_int32> &bk) {
  for (qrn_int32 k : bk)
    if (k < QRN_BK_FREE || k > QRN_BK_RANGED) in.bad(QRN_RES_ERR_READ_INDEX, "a bound key is out of range.");
}
void check_index(BinIn &in, const std::vector<qrn_int32> &v, qrn_int32 n) {
  for (qrn_int32 x : v)
    if (x < 0 || x >= n) in.bad(QRN_RES_ERR_READ_INDEX, "an index is out of range.");
}

void read_problem_section(BinIn &in, FileProblem &p) {
  const int32_t m = in.get<int32_t>(), n = in.get<int32_t>();
  p.sense = in.get<int32_t>();
  const int32_t nk = in.get<int32_t>();
  if (m < 0 || n < 0 || nk < 0) in.bad(QRN_RES_ERR_READ_INDEX, "a count is negative.");
  // Every variable and constraint takes more than 16 bytes: check before sizing.
  if (static_cast<uint64_t>(m) + n > (in.end - in.pos) / 16) in.bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
  p.numcon = m, p.numvar = n;
  p.cfix = in.get<double>();
  in.arr(p.c, n);
  in.arr(p.bkc, m), in.arr(p.blc, m), in.arr(p.buc, m);
  in.arr(p.bkx, n), in.arr(p.blx, n), in.arr(p.bux, n);
  in.arr(p.vartype, n);
  check_keys(in, p.bkc);
  check_keys(in, p.bkx);
  in.arr(p.aptr, static_cast<uint64_t>(n) + 1);
  in.counted(p.asub);
  in.arr(p.aval, p.asub.size());
  const qrn_int64 nnz = static_cast<qrn_int64>(p.asub.size());
  if (p.aptr[0] != 0 || p.aptr[n] != nnz) in.bad(QRN_RES_ERR_READ_INDEX, "the column pointers do not cover the entries.");
  for (int32_t j = 0; j < n; ++j)
    if (p.aptr[j + 1] < p.aptr[j]) in.bad(QRN_RES_ERR_READ_INDEX, "the column pointers decrease.");
  check_index(in, p.asub, m);
  in.counted(p.qosubi);
  in.arr(p.qosubj, p.qosubi.size()), in.arr(p.qoval, p.qosubi.size());
  check_index(in, p.qosubi, n), check_index(in, p.qosubj, n);
  in.counted(p.qcsubk);
  in.arr(p.qcsubi, p.qcsubk.size()), in.arr(p.qcsubj, p.qcsubk.size()), in.arr(p.qcval, p.qcsubk.size());
  check_index(in, p.qcsubk, m), check_index(in, p.qcsubi, n), check_index(in, p.qcsubj, n);
  if (static_cast<uint64_t>(nk) > (in.end - in.pos) / 20) in.bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
  p.cones.resize(nk);
  for (ProblemCone &c : p.cones) {
    c.type = in.get<int32_t>();
    c.par = in.get<double>();
    in.counted(c.members);
    check_index(in, c.members, n);
  }
}

void read_names_section(BinIn &in, FileProblem &p) {
  p.taskname = in.str();
  p.objname = in.str();
  const uint64_t want[] = {static_cast<uint64_t>(p.numcon), static_cast<uint64_t>(p.numvar), p.cones.size()};
  int k = 0;
  for (auto *v : {&p.connames, &p.varnames, &p.conenames}) {
    uint64_t n = in.get<uint64_t>();
    if (n != 0 && n != want[k]) in.bad(QRN_RES_ERR_READ_INDEX, "the number of names does not match the items.");
    if (n > (in.end - in.pos) / 4) in.bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
    v->resize(n);
    for (std::string &s : *v) s = in.str();
    ++k;
  }
}

void read_params_section(BinIn &in, Params &par) {
  uint32_t n = in.get<uint32_t>();
  for (uint32_t k = 0; k < n; ++k) {
    uint8_t kind = in.get<uint8_t>();
    std::string name = in.str();
    ParRef r;
    if (!find_param(name.c_str(), r)) in.bad(QRN_RES_ERR_PARAM_NAME, "no parameter is named \"" + name + "\".");
    if (static_cast<uint8_t>(r.kind) != kind) in.bad(QRN_RES_ERR_PARAM_TYPE, name + " is of another kind.");
    std::string text = kind == 0 ? double_text(in.get<double>()) : kind == 1 ? std::to_string(in.get<int32_t>()) : in.str();
    try {
      set_param_text(par, name.c_str(), text.c_str());
    } catch (const Failure &f) {
      in.bad(f.code, f.msg);
    }
  }
}

void read_solutions_section(BinIn &in, std::array<Solution, QRN_SOL_COUNT> &sol) {
  uint32_t n = in.get<uint32_t>();
  if (n > QRN_SOL_COUNT) in.bad(QRN_RES_ERR_READ_INDEX, "too many solutions.");
  for (uint32_t k = 0; k < n; ++k) {
    int32_t which = in.get<int32_t>();
    if (which < 0 || which >= QRN_SOL_COUNT) in.bad(QRN_RES_ERR_READ_INDEX, "a solution identifier is out of range.");
    Solution &s = sol[which];
    s.defined = true;
    s.prosta = in.get<int32_t>();
    s.solsta = in.get<int32_t>();
    if (prosta_name(s.prosta) == nullptr || solsta_name(s.solsta) == nullptr) in.bad(QRN_RES_ERR_READ_INDEX, "a status is out of range.");
    in.counted(s.skc), in.counted(s.skx), in.counted(s.skn);
    for (auto *v : {&s.xc, &s.xx, &s.y, &s.slc, &s.suc, &s.slx, &s.sux, &s.snx, &s.doty}) in.counted(*v);
  }
}

}  // namespace

void write_taskfile(const FileProblem &p, Out &out, const WriteOptions &opt) {
  BinOut w{out};
  out.raw(std::string_view(magic, 8));
  w.put<uint32_t>(version);
  w.put<uint32_t>(order_mark);
  auto section = [&](const char(&t)[5], auto body) {
    Sizer s;
    body(s);
    w.put<uint32_t>(tag(t));
    w.put<uint64_t>(s.n);
    body(w);
  };
  section("PROB", [&](auto &x) { problem_section(x, p); });
  section("NAME", [&](auto &x) { names_section(x, p); });
  if (opt.task != nullptr) {
    section("PARA", [&](auto &x) { params_section(x, opt.task->par); });
    if (opt.solutions) section("SOLN", [&](auto &x) { solutions_section(x, opt.task->sol); });
  }
  w.put<uint32_t>(tag("END."));
  w.put<uint64_t>(0);
}

void read_taskfile(const Source &src, ReadContext &ctx) {
  BinIn in{src, 0, src.text.size()};
  if (src.text.size() < 16 || std::memcmp(src.text.data(), magic, 8) != 0)
    in.bad(src.text.size() < 8 ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_VERSION, "the data is not a task file.");
  in.pos = 8;
  uint32_t ver = in.get<uint32_t>(), mark = in.get<uint32_t>();
  if (mark != order_mark) in.bad(QRN_RES_ERR_READ_VERSION, "the file was written with another byte order.");
  if (ver != version) in.bad(QRN_RES_ERR_READ_VERSION, "task file version " + std::to_string(ver) + " is not known.");
  bool seen_prob = false, seen_names = false, done = false;
  Params par = ctx.scratch.par;
  std::array<Solution, QRN_SOL_COUNT> sol;
  while (!done) {
    uint32_t t = in.get<uint32_t>();
    uint64_t len = in.get<uint64_t>();
    in.need(len);
    const size_t start = in.pos, outer_end = in.end;
    in.end = in.pos + len;
    char name[5] = {};
    std::memcpy(name, &t, 4);
    in.section = name;
    if (t == tag("PROB") && !seen_prob) {
      read_problem_section(in, ctx.problem);
      seen_prob = true;
    } else if (t == tag("NAME") && seen_prob && !seen_names) {
      read_names_section(in, ctx.problem);
      seen_names = true;
    } else if (t == tag("PARA") && seen_prob) {
      read_params_section(in, par);
    } else if (t == tag("SOLN") && seen_prob) {
      read_solutions_section(in, sol);
    } else if (t == tag("END.")) {
      done = true;
    } else {
      // Sections for data this version does not hold (conic, semidefinite)
      // would be refused here rather than skipped.
      in.bad(QRN_RES_ERR_READ_SECTION, "an unknown, repeated or misplaced section.");
    }
    if (in.pos != in.end) in.bad(QRN_RES_ERR_READ_SYNTAX, "the section's length does not match its content.");
    in.end = outer_end;
    (void)start;
  }
  in.section = "end";
  if (!seen_prob) in.bad(QRN_RES_ERR_READ_SECTION, "the file has no problem section.");
  if (in.pos != src.text.size()) in.bad(QRN_RES_ERR_READ_SECTION, "data follows the end.");
  const FileProblem &p = ctx.problem;
  for (qrn_int32 k = 0; k < QRN_SOL_COUNT; ++k)
    if (sol[k].defined)
      check_solution_sizes(sol[k], p.numcon, p.numvar, static_cast<qrn_int32>(p.cones.size()), QRN_RES_ERR_READ_INDEX,
                           src.name + ": solution " + soltype_name(k));
  if (ctx.input_params) ctx.scratch.par = par;
  ctx.scratch.sol = std::move(sol);
  ctx.lines = 0;
}

}  // namespace qrn
