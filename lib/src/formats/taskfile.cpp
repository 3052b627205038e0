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

// Affine expressions, domains, ACCs and DJCs.
template <class W>
void conic_section(W &w, const FileProblem &p) {
  w.template put<int64_t>(p.numafe);
  w.counted(p.fsubi);
  w.arr(p.fsubj), w.arr(p.fval);
  w.arr(p.g);
  w.template put<uint64_t>(p.domains.size());
  for (const ProblemDomain &d : p.domains) {
    w.template put<int32_t>(d.type);
    w.template put<int64_t>(d.n);
    w.counted(d.alpha);
  }
  w.template put<uint64_t>(p.accs.size());
  for (const ProblemAcc &a : p.accs) {
    w.template put<int64_t>(a.dom);
    w.counted(a.afe);
    w.arr(a.b);
  }
  w.template put<uint64_t>(p.djcs.size());
  for (const ProblemDjc &d : p.djcs) {
    w.counted(d.termsize);
    w.counted(d.dom);
    w.counted(d.afe);
    w.arr(d.b);
  }
}

template <class W>
void coefs(W &w, const std::vector<ProblemBarCoef> &v) {
  w.template put<uint64_t>(v.size());
  for (const ProblemBarCoef &c : v) {
    w.template put<int64_t>(c.i);
    w.template put<int32_t>(c.j);
    w.counted(c.mat);
    w.arr(c.weight);
  }
}

// Semidefinite variables, the matrix store and barC, barA, barF.
template <class W>
void sdp_section(W &w, const FileProblem &p) {
  w.counted(p.barvardim);
  w.template put<uint64_t>(p.symmats.size());
  for (const ProblemSymMat &m : p.symmats) {
    w.template put<int32_t>(m.dim);
    w.counted(m.subi);
    w.arr(m.subj), w.arr(m.val);
  }
  coefs(w, p.barc);
  coefs(w, p.bara);
  coefs(w, p.barf);
}

template <class W>
void conic_names_section(W &w, const FileProblem &p) {
  for (const auto *v : {&p.domnames, &p.accnames, &p.djcnames, &p.barvarnames}) {
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
    w.template put<uint32_t>(static_cast<uint32_t>(s.barx.size()));
    for (const auto *bar : {&s.barx, &s.bars})
      for (const std::vector<double> &v : *bar) w.counted(v);
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

template <class T>
void check_index64(BinIn &in, const std::vector<T> &v, qrn_int64 n) {
  for (T x : v)
    if (x < 0 || x >= n) in.bad(QRN_RES_ERR_READ_INDEX, "an index is out of range.");
}

// A count of items that take at least `bytes` bytes each.
uint64_t item_count(BinIn &in, uint64_t bytes) {
  uint64_t n = in.get<uint64_t>();
  if (n > (in.end - in.pos) / bytes) in.bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
  return n;
}

void read_conic_section(BinIn &in, FileProblem &p) {
  p.numafe = in.get<int64_t>();
  // Expressions without entries take no bytes: bound their number loosely.
  if (p.numafe < 0 || static_cast<uint64_t>(p.numafe) > (in.end - in.pos) / 8 + 1)
    in.bad(QRN_RES_ERR_READ_INDEX, "the number of affine expressions is out of range.");
  in.counted(p.fsubi);
  in.arr(p.fsubj, p.fsubi.size()), in.arr(p.fval, p.fsubi.size());
  in.arr(p.g, static_cast<uint64_t>(p.numafe));
  check_index64(in, p.fsubi, p.numafe);
  check_index(in, p.fsubj, p.numvar);
  for (size_t k = 1; k < p.fsubi.size(); ++k)
    if (p.fsubi[k] < p.fsubi[k - 1] || (p.fsubi[k] == p.fsubi[k - 1] && p.fsubj[k] <= p.fsubj[k - 1]))
      in.bad(QRN_RES_ERR_READ_INDEX, "the entries of F are not row by row with variables increasing.");
  p.domains.resize(item_count(in, 20));
  for (ProblemDomain &d : p.domains) {
    d.type = in.get<int32_t>();
    d.n = in.get<int64_t>();
    in.counted(d.alpha);
  }
  const qrn_int64 numdom = static_cast<qrn_int64>(p.domains.size());
  p.accs.resize(item_count(in, 16));
  for (ProblemAcc &a : p.accs) {
    a.dom = in.get<int64_t>();
    in.counted(a.afe);
    in.arr(a.b, a.afe.size());
    if (a.dom < 0 || a.dom >= numdom) in.bad(QRN_RES_ERR_READ_INDEX, "a domain index is out of range.");
    check_index64(in, a.afe, p.numafe);
  }
  p.djcs.resize(item_count(in, 24));
  for (ProblemDjc &d : p.djcs) {
    in.counted(d.termsize);
    in.counted(d.dom);
    in.counted(d.afe);
    in.arr(d.b, d.afe.size());
    check_index64(in, d.dom, numdom);
    check_index64(in, d.afe, p.numafe);
  }
}

void read_coefs(BinIn &in, std::vector<ProblemBarCoef> &v, qrn_int64 ilo, qrn_int64 ihi, const FileProblem &p) {
  v.resize(item_count(in, 20));
  for (ProblemBarCoef &c : v) {
    c.i = in.get<int64_t>();
    c.j = in.get<int32_t>();
    in.counted(c.mat);
    in.arr(c.weight, c.mat.size());
    if (c.i < ilo || c.i > ihi || c.j < 0 || c.j >= static_cast<qrn_int32>(p.barvardim.size()))
      in.bad(QRN_RES_ERR_READ_INDEX, "a coefficient's index is out of range.");
    check_index64(in, c.mat, static_cast<qrn_int64>(p.symmats.size()));
  }
}

void read_sdp_section(BinIn &in, FileProblem &p) {
  in.counted(p.barvardim);
  for (qrn_int32 d : p.barvardim)
    if (d < 1) in.bad(QRN_RES_ERR_READ_INDEX, "a semidefinite variable's dimension is out of range.");
  p.symmats.resize(item_count(in, 12));
  for (ProblemSymMat &m : p.symmats) {
    m.dim = in.get<int32_t>();
    in.counted(m.subi);
    in.arr(m.subj, m.subi.size()), in.arr(m.val, m.subi.size());
    if (m.dim < 1) in.bad(QRN_RES_ERR_READ_INDEX, "a matrix dimension is out of range.");
    check_index(in, m.subi, m.dim), check_index(in, m.subj, m.dim);
  }
  read_coefs(in, p.barc, -1, -1, p);
  read_coefs(in, p.bara, 0, static_cast<qrn_int64>(p.numcon) - 1, p);
  read_coefs(in, p.barf, 0, p.numafe - 1, p);
}

void read_conic_names_section(BinIn &in, FileProblem &p) {
  const uint64_t want[] = {p.domains.size(), p.accs.size(), p.djcs.size(), p.barvardim.size()};
  int k = 0;
  for (auto *v : {&p.domnames, &p.accnames, &p.djcnames, &p.barvarnames}) {
    uint64_t n = in.get<uint64_t>();
    if (n != 0 && n != want[k]) in.bad(QRN_RES_ERR_READ_INDEX, "the number of names does not match the items.");
    if (n > (in.end - in.pos) / 4) in.bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
    v->resize(n);
    for (std::string &s : *v) s = in.str();
    ++k;
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
    uint32_t nbar = in.get<uint32_t>();
    if (nbar > (in.end - in.pos) / 16) in.bad(QRN_RES_ERR_READ_EOF, "the data ends early.");
    for (auto *bar : {&s.barx, &s.bars}) {
      bar->resize(nbar);
      for (std::vector<double> &v : *bar) in.counted(v);
    }
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
  if (p.numafe > 0 || !p.domains.empty() || !p.accs.empty() || !p.djcs.empty())
    section("CONI", [&](auto &x) { conic_section(x, p); });
  if (!p.barvardim.empty() || !p.symmats.empty()) section("SDP.", [&](auto &x) { sdp_section(x, p); });
  if (!p.domnames.empty() || !p.accnames.empty() || !p.djcnames.empty() || !p.barvarnames.empty())
    section("CNAM", [&](auto &x) { conic_names_section(x, p); });
  if (opt.task != nullptr) {
    section("PARA", [&](auto &x) { params_section(x, opt.task->par); });
    if (opt.solutions) {
      std::array<Solution, QRN_SOL_COUNT> sol;
      for (qrn_int32 k = 0; k < QRN_SOL_COUNT; ++k)
        if (opt.task->sol[k].defined) sol[k] = fitted_solution(*opt.task, k);
      section("SOLN", [&](auto &x) { solutions_section(x, sol); });
    }
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
  bool seen_prob = false, seen_names = false, seen_conic = false, seen_sdp = false, seen_cnames = false, done = false;
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
    } else if (t == tag("CONI") && seen_names && !seen_conic && !seen_sdp && !seen_cnames) {
      read_conic_section(in, ctx.problem);
      seen_conic = true;
    } else if (t == tag("SDP.") && seen_names && !seen_sdp && !seen_cnames) {
      read_sdp_section(in, ctx.problem);
      seen_sdp = true;
    } else if (t == tag("CNAM") && seen_names && !seen_cnames) {
      read_conic_names_section(in, ctx.problem);
      seen_cnames = true;
    } else if (t == tag("PARA") && seen_prob) {
      read_params_section(in, par);
    } else if (t == tag("SOLN") && seen_prob) {
      read_solutions_section(in, sol);
    } else if (t == tag("END.")) {
      done = true;
    } else {
      // Unknown sections are refused rather than skipped.
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
      check_solution_sizes(sol[k], sol_sizes(p), QRN_RES_ERR_READ_INDEX, src.name + ": solution " + soltype_name(k));
  if (ctx.input_params) ctx.scratch.par = par;
  ctx.scratch.sol = std::move(sol);
  ctx.lines = 0;
}

}  // namespace qrn
