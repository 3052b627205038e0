// The JSON task format (docs/formats/jtask.md, schema
// docs/formats/jtask.schema.json): problem data, parameters and solutions.
// Infinite and NaN numbers are the strings "inf", "-inf" and "nan" (JSON has
// no such numbers, and the JSON library would write them as null).
#include "formats.hpp"

#include "params.hpp"
#include "solfiles.hpp"

#include <nlohmann/json.hpp>

#include <cmath>

namespace qrn {

using json = nlohmann::ordered_json;

namespace {

const char *const key_words[] = {"fr", "lo", "up", "fx", "ra"};

json jnum(double v) {
  if (std::isnan(v)) return "nan";
  if (std::isinf(v)) return v < 0 ? "-inf" : "inf";
  return v;
}
json jnums(const std::vector<double> &v) {
  json a = json::array();
  for (double x : v) a.push_back(jnum(x));
  return a;
}
template <class T>
json jints(const std::vector<T> &v) {
  json a = json::array();
  for (T x : v) a.push_back(x);
  return a;
}
json jnames(const std::vector<std::string> &v, size_t n) {
  json a = json::array();
  for (size_t k = 0; k < n; ++k) a.push_back(k < v.size() ? v[k] : std::string());
  return a;
}
json jkeys(const std::vector<qrn_int32> &v) {
  json a = json::array();
  for (qrn_int32 k : v) a.push_back(sk_code(k) != nullptr ? sk_code(k) : "UN");
  return a;
}

json solution_json(const Solution &s) {
  json o;
  o["prosta"] = prosta_name(s.prosta) != nullptr ? prosta_name(s.prosta) : "UNKNOWN";
  o["solsta"] = solsta_name(s.solsta) != nullptr ? solsta_name(s.solsta) : "UNKNOWN";
  o["skc"] = jkeys(s.skc);
  o["skx"] = jkeys(s.skx);
  o["skn"] = jkeys(s.skn);
  o["xc"] = jnums(s.xc);
  o["xx"] = jnums(s.xx);
  o["y"] = jnums(s.y);
  o["slc"] = jnums(s.slc);
  o["suc"] = jnums(s.suc);
  o["slx"] = jnums(s.slx);
  o["sux"] = jnums(s.sux);
  o["snx"] = jnums(s.snx);
  o["doty"] = jnums(s.doty);
  if (!s.barx.empty()) {
    json bx = json::array(), bs = json::array();
    for (const auto &v : s.barx) bx.push_back(jnums(v));
    for (const auto &v : s.bars) bs.push_back(jnums(v));
    o["barx"] = bx;
    o["bars"] = bs;
  }
  return o;
}

const char *const domain_words[] = {"r",    "rzero", "rplus", "rminus", "quad", "rquad",  "pexp",
                                    "dexp", "ppow",  "dpow",  "pgeo",   "dgeo", "svecpsd"};

json coef_json(const ProblemBarCoef &c, const char *ikey) {
  json o;
  if (ikey != nullptr) o[ikey] = c.i;
  o["barvar"] = c.j;
  o["mat"] = jints(c.mat);
  o["weight"] = jnums(c.weight);
  return o;
}

// The conic and semidefinite members of "task", each only when not empty.
void write_conic_json(const FileProblem &p, json &t) {
  auto named = [](json &o, const std::vector<std::string> &names, size_t k) {
    if (k < names.size() && !names[k].empty()) o["name"] = names[k];
  };
  if (p.numafe > 0) {
    json &a = t["afe"];
    a["count"] = p.numafe;
    a["f"] = {{"subi", jints(p.fsubi)}, {"subj", jints(p.fsubj)}, {"val", jnums(p.fval)}};
    a["g"] = jnums(p.g);
    if (!p.barf.empty()) {
      json bf = json::array();
      for (const ProblemBarCoef &c : p.barf) bf.push_back(coef_json(c, "afe"));
      a["barf"] = bf;
    }
  }
  if (!p.barvardim.empty()) {
    json &b = t["barvars"];
    b["dims"] = jints(p.barvardim);
    if (!p.barvarnames.empty()) b["names"] = jnames(p.barvarnames, p.barvardim.size());
  }
  if (!p.symmats.empty()) {
    json m = json::array();
    for (const ProblemSymMat &x : p.symmats)
      m.push_back({{"dim", x.dim}, {"subi", jints(x.subi)}, {"subj", jints(x.subj)}, {"val", jnums(x.val)}});
    t["symmats"] = m;
  }
  if (!p.barc.empty()) {
    json c = json::array();
    for (const ProblemBarCoef &x : p.barc) c.push_back(coef_json(x, nullptr));
    t["barc"] = c;
  }
  if (!p.bara.empty()) {
    json c = json::array();
    for (const ProblemBarCoef &x : p.bara) c.push_back(coef_json(x, "con"));
    t["bara"] = c;
  }
  if (!p.domains.empty()) {
    json d = json::array();
    for (size_t k = 0; k < p.domains.size(); ++k) {
      const ProblemDomain &x = p.domains[k];
      json o;
      named(o, p.domnames, k);
      o["type"] = domain_words[x.type];
      o["n"] = x.n;
      if (x.type == QRN_DOMAIN_PRIMAL_POWER_CONE || x.type == QRN_DOMAIN_DUAL_POWER_CONE) o["alpha"] = jnums(x.alpha);
      d.push_back(o);
    }
    t["domains"] = d;
  }
  if (!p.accs.empty()) {
    json a = json::array();
    for (size_t k = 0; k < p.accs.size(); ++k) {
      json o;
      named(o, p.accnames, k);
      o["domain"] = p.accs[k].dom;
      o["afe"] = jints(p.accs[k].afe);
      o["b"] = jnums(p.accs[k].b);
      a.push_back(o);
    }
    t["acc"] = a;
  }
  if (!p.djcs.empty()) {
    json a = json::array();
    for (size_t k = 0; k < p.djcs.size(); ++k) {
      const ProblemDjc &x = p.djcs[k];
      json o;
      named(o, p.djcnames, k);
      o["domains"] = jints(x.dom);
      o["afe"] = jints(x.afe);
      o["b"] = jnums(x.b);
      o["termsize"] = jints(x.termsize);
      a.push_back(o);
    }
    t["djc"] = a;
  }
}

// ---- reading helpers: every access is checked and names its JSON path ----

struct JReader {
  const Source &src;
  [[noreturn]] void bad(qrn_rescode code, const std::string &path, const std::string &msg) const {
    fail(code, src.name + ": " + (path.empty() ? "/" : path) + ": " + msg);
  }
  const json &member(const json &o, const char *key, const std::string &path) const {
    if (!o.is_object()) bad(QRN_RES_ERR_READ_SYNTAX, path, "an object was expected.");
    auto it = o.find(key);
    if (it == o.end()) bad(QRN_RES_ERR_READ_SYNTAX, path, std::string("the member \"") + key + "\" is missing.");
    return *it;
  }
  const json *optional(const json &o, const char *key) const {
    auto it = o.find(key);
    return it == o.end() ? nullptr : &*it;
  }
  void only(const json &o, const std::string &path, std::initializer_list<const char *> keys) const {
    if (!o.is_object()) bad(QRN_RES_ERR_READ_SYNTAX, path, "an object was expected.");
    for (auto it = o.begin(); it != o.end(); ++it) {
      bool ok = false;
      for (const char *k : keys) ok = ok || it.key() == k;
      if (!ok) bad(QRN_RES_ERR_READ_SECTION, path, "the member \"" + it.key() + "\" is not known.");
    }
  }
  double number(const json &v, const std::string &path, bool allow_inf) const {
    double x;
    if (v.is_number()) {
      x = v.get<double>();
    } else if (v.is_string()) {
      const std::string &s = v.get_ref<const std::string &>();
      if (s == "inf" || s == "+inf") x = inf;
      else if (s == "-inf") x = -inf;
      else if (s == "nan") bad(QRN_RES_ERR_READ_NUMBER, path, "NaN is not a valid value here.");
      else bad(QRN_RES_ERR_READ_NUMBER, path, "\"" + s + "\" is not a number.");
    } else {
      bad(QRN_RES_ERR_READ_NUMBER, path, "a number was expected.");
    }
    if (std::isnan(x)) bad(QRN_RES_ERR_READ_NUMBER, path, "NaN is not a valid value here.");
    if (!allow_inf && std::isinf(x)) bad(QRN_RES_ERR_READ_NUMBER, path, "a finite number was expected.");
    return x;
  }
  double any_number(const json &v, const std::string &path) const {  // solution values: inf and NaN allowed
    if (v.is_string() && v.get_ref<const std::string &>() == "nan") return std::nan("");
    return number(v, path, true);
  }
  qrn_int64 integer(const json &v, const std::string &path, qrn_int64 lo, qrn_int64 hi) const {
    if (!v.is_number_integer()) bad(QRN_RES_ERR_READ_NUMBER, path, "an integer was expected.");
    qrn_int64 x = v.is_number_unsigned() ? static_cast<qrn_int64>(std::min<uint64_t>(v.get<uint64_t>(), INT64_MAX)) : v.get<qrn_int64>();
    if (x < lo || x > hi)
      bad(QRN_RES_ERR_READ_INDEX, path, std::to_string(x) + " is outside " + std::to_string(lo) + ".." + std::to_string(hi) + ".");
    return x;
  }
  std::string string(const json &v, const std::string &path) const {
    if (!v.is_string()) bad(QRN_RES_ERR_READ_SYNTAX, path, "a string was expected.");
    return v.get<std::string>();
  }
  const json &array(const json &v, const std::string &path, qrn_int64 size = -1) const {
    if (!v.is_array()) bad(QRN_RES_ERR_READ_SYNTAX, path, "an array was expected.");
    if (size >= 0 && static_cast<qrn_int64>(v.size()) != size)
      bad(QRN_RES_ERR_READ_INDEX, path, "the array has " + std::to_string(v.size()) + " entries, " + std::to_string(size) + " were expected.");
    return v;
  }
  std::vector<double> numbers(const json &v, const std::string &path, qrn_int64 size, bool allow_inf) const {
    array(v, path, size);
    std::vector<double> out;
    out.reserve(v.size());
    for (size_t k = 0; k < v.size(); ++k) out.push_back(number(v[k], path + "/" + std::to_string(k), allow_inf));
    return out;
  }
  std::vector<qrn_int32> indexes(const json &v, const std::string &path, qrn_int64 size, qrn_int64 hi) const {
    array(v, path, size);
    std::vector<qrn_int32> out;
    out.reserve(v.size());
    for (size_t k = 0; k < v.size(); ++k) out.push_back(static_cast<qrn_int32>(integer(v[k], path + "/" + std::to_string(k), 0, hi)));
    return out;
  }
  std::vector<qrn_int64> indexes64(const json &v, const std::string &path, qrn_int64 size, qrn_int64 hi) const {
    array(v, path, size);
    std::vector<qrn_int64> out;
    out.reserve(v.size());
    for (size_t k = 0; k < v.size(); ++k) out.push_back(integer(v[k], path + "/" + std::to_string(k), 0, hi));
    return out;
  }
  std::vector<std::string> names(const json *v, const std::string &path, qrn_int64 size) const {
    if (v == nullptr) return {};
    array(*v, path, size);
    std::vector<std::string> out;
    for (size_t k = 0; k < v->size(); ++k) out.push_back(string((*v)[k], path + "/" + std::to_string(k)));
    return out;
  }
  void bounds(const json &o, const std::string &path, qrn_int64 n, std::vector<qrn_int32> &bk, std::vector<double> &bl,
              std::vector<double> &bu) const {
    const json &k = array(member(o, "bk", path), path + "/bk", n);
    bk.clear();
    for (size_t q = 0; q < k.size(); ++q) {
      std::string s = string(k[q], path + "/bk/" + std::to_string(q));
      qrn_int32 key = -1;
      for (int w = 0; w < 5; ++w)
        if (s == key_words[w]) key = w;
      if (key < 0) bad(QRN_RES_ERR_READ_SYNTAX, path + "/bk/" + std::to_string(q), "\"" + s + "\" is not a bound key.");
      bk.push_back(key);
    }
    bl = numbers(member(o, "bl", path), path + "/bl", n, true);
    bu = numbers(member(o, "bu", path), path + "/bu", n, true);
  }
  std::vector<qrn_int32> keys(const json &v, const std::string &path, qrn_int64 size) const {
    array(v, path, size);
    std::vector<qrn_int32> out;
    for (size_t k = 0; k < v.size(); ++k) {
      qrn_int32 sk;
      if (!v[k].is_string() || !find_sk(v[k].get_ref<const std::string &>(), sk))
        bad(QRN_RES_ERR_READ_SYNTAX, path + "/" + std::to_string(k), "a status key (UN BS SB LL UL EQ IN) was expected.");
      out.push_back(sk);
    }
    return out;
  }
};


// The conic and semidefinite members of "task" (the problem's sizes are known).
void read_conic_json(const JReader &r, const json &t, FileProblem &p, qrn_int64 cap) {
  auto name_of = [&](const json &o, const std::string &path, std::vector<std::string> &names) {
    const json *nm = r.optional(o, "name");
    names.push_back(nm != nullptr ? r.string(*nm, path + "/name") : std::string());
  };
  auto settle = [](std::vector<std::string> &v) {
    if (std::all_of(v.begin(), v.end(), [](const std::string &s) { return s.empty(); })) v.clear();
  };
  auto coef = [&](const json &o, const std::string &path, const char *ikey, qrn_int64 ihi) {
    r.only(o, path, {"afe", "con", "barvar", "mat", "weight"});
    ProblemBarCoef c;
    if (ikey != nullptr) c.i = r.integer(r.member(o, ikey, path), path + "/" + ikey, 0, ihi);
    else if (o.contains("afe") || o.contains("con")) r.bad(QRN_RES_ERR_READ_SECTION, path, "barC has no row index.");
    c.j = static_cast<qrn_int32>(r.integer(r.member(o, "barvar", path), path + "/barvar", 0, static_cast<qrn_int64>(p.barvardim.size()) - 1));
    c.mat = r.indexes64(r.member(o, "mat", path), path + "/mat", -1, static_cast<qrn_int64>(p.symmats.size()) - 1);
    c.weight = r.numbers(r.member(o, "weight", path), path + "/weight", static_cast<qrn_int64>(c.mat.size()), false);
    return c;
  };
  if (const json *b = r.optional(t, "barvars")) {
    r.only(*b, "/task/barvars", {"dims", "names"});
    const json &dims = r.array(r.member(*b, "dims", "/task/barvars"), "/task/barvars/dims");
    for (size_t k = 0; k < dims.size(); ++k)
      p.barvardim.push_back(static_cast<qrn_int32>(r.integer(dims[k], "/task/barvars/dims/" + std::to_string(k), 1, INT32_MAX)));
    p.barvarnames = r.names(r.optional(*b, "names"), "/task/barvars/names", static_cast<qrn_int64>(p.barvardim.size()));
    settle(p.barvarnames);
  }
  if (const json *m = r.optional(t, "symmats")) {
    r.array(*m, "/task/symmats");
    for (size_t k = 0; k < m->size(); ++k) {
      const std::string path = "/task/symmats/" + std::to_string(k);
      const json &o = (*m)[k];
      r.only(o, path, {"dim", "subi", "subj", "val"});
      ProblemSymMat x;
      x.dim = static_cast<qrn_int32>(r.integer(r.member(o, "dim", path), path + "/dim", 1, INT32_MAX));
      x.subi = r.indexes(r.member(o, "subi", path), path + "/subi", -1, x.dim - 1);
      x.subj = r.indexes(r.member(o, "subj", path), path + "/subj", static_cast<qrn_int64>(x.subi.size()), x.dim - 1);
      x.val = r.numbers(r.member(o, "val", path), path + "/val", static_cast<qrn_int64>(x.subi.size()), false);
      p.symmats.push_back(std::move(x));
    }
  }
  if (const json *a = r.optional(t, "afe")) {
    const std::string path = "/task/afe";
    r.only(*a, path, {"count", "f", "g", "barf"});
    p.numafe = r.integer(r.member(*a, "count", path), path + "/count", 0, 16 * cap + 1024);
    p.g.assign(static_cast<size_t>(p.numafe), 0.0);
    if (const json *g = r.optional(*a, "g")) p.g = r.numbers(*g, path + "/g", p.numafe, false);
    if (const json *f = r.optional(*a, "f")) {
      r.only(*f, path + "/f", {"subi", "subj", "val"});
      p.fsubi = r.indexes64(r.member(*f, "subi", path + "/f"), path + "/f/subi", -1, p.numafe - 1);
      const qrn_int64 nz = static_cast<qrn_int64>(p.fsubi.size());
      p.fsubj = r.indexes(r.member(*f, "subj", path + "/f"), path + "/f/subj", nz, static_cast<qrn_int64>(p.numvar) - 1);
      p.fval = r.numbers(r.member(*f, "val", path + "/f"), path + "/f/val", nz, false);
      for (qrn_int64 k = 1; k < nz; ++k)
        if (p.fsubi[k] < p.fsubi[k - 1] || (p.fsubi[k] == p.fsubi[k - 1] && p.fsubj[k] <= p.fsubj[k - 1]))
          r.bad(QRN_RES_ERR_READ_INDEX, path + "/f/subi/" + std::to_string(k), "the entries of F come row by row, variables increasing within a row.");
    }
    if (const json *bf = r.optional(*a, "barf")) {
      r.array(*bf, path + "/barf");
      for (size_t k = 0; k < bf->size(); ++k) p.barf.push_back(coef((*bf)[k], path + "/barf/" + std::to_string(k), "afe", p.numafe - 1));
    }
  }
  if (const json *c = r.optional(t, "barc")) {
    r.array(*c, "/task/barc");
    for (size_t k = 0; k < c->size(); ++k) p.barc.push_back(coef((*c)[k], "/task/barc/" + std::to_string(k), nullptr, 0));
  }
  if (const json *c = r.optional(t, "bara")) {
    r.array(*c, "/task/bara");
    for (size_t k = 0; k < c->size(); ++k)
      p.bara.push_back(coef((*c)[k], "/task/bara/" + std::to_string(k), "con", static_cast<qrn_int64>(p.numcon) - 1));
  }
  if (const json *d = r.optional(t, "domains")) {
    r.array(*d, "/task/domains");
    for (size_t k = 0; k < d->size(); ++k) {
      const std::string path = "/task/domains/" + std::to_string(k);
      const json &o = (*d)[k];
      r.only(o, path, {"name", "type", "n", "alpha"});
      name_of(o, path, p.domnames);
      ProblemDomain x;
      std::string type = r.string(r.member(o, "type", path), path + "/type");
      x.type = -1;
      for (int q = 0; q < static_cast<int>(std::size(domain_words)); ++q)
        if (type == domain_words[q]) x.type = q;
      if (x.type < 0) r.bad(QRN_RES_ERR_READ_SYNTAX, path + "/type", "\"" + type + "\" is not a domain type.");
      x.n = r.integer(r.member(o, "n", path), path + "/n", 0, INT64_MAX / 2);
      if (x.type == QRN_DOMAIN_PRIMAL_POWER_CONE || x.type == QRN_DOMAIN_DUAL_POWER_CONE)
        x.alpha = r.numbers(r.member(o, "alpha", path), path + "/alpha", -1, false);
      else if (o.contains("alpha"))
        r.bad(QRN_RES_ERR_READ_SECTION, path + "/alpha", "only power cones have weights.");
      p.domains.push_back(std::move(x));
    }
    settle(p.domnames);
  }
  const qrn_int64 numdom = static_cast<qrn_int64>(p.domains.size());
  if (const json *a = r.optional(t, "acc")) {
    r.array(*a, "/task/acc");
    for (size_t k = 0; k < a->size(); ++k) {
      const std::string path = "/task/acc/" + std::to_string(k);
      const json &o = (*a)[k];
      r.only(o, path, {"name", "domain", "afe", "b"});
      name_of(o, path, p.accnames);
      ProblemAcc x;
      x.dom = r.integer(r.member(o, "domain", path), path + "/domain", 0, numdom - 1);
      x.afe = r.indexes64(r.member(o, "afe", path), path + "/afe", -1, p.numafe - 1);
      x.b = r.numbers(r.member(o, "b", path), path + "/b", static_cast<qrn_int64>(x.afe.size()), false);
      p.accs.push_back(std::move(x));
    }
    settle(p.accnames);
  }
  if (const json *a = r.optional(t, "djc")) {
    r.array(*a, "/task/djc");
    for (size_t k = 0; k < a->size(); ++k) {
      const std::string path = "/task/djc/" + std::to_string(k);
      const json &o = (*a)[k];
      r.only(o, path, {"name", "domains", "afe", "b", "termsize"});
      name_of(o, path, p.djcnames);
      ProblemDjc x;
      x.dom = r.indexes64(r.member(o, "domains", path), path + "/domains", -1, numdom - 1);
      x.afe = r.indexes64(r.member(o, "afe", path), path + "/afe", -1, p.numafe - 1);
      x.b = r.numbers(r.member(o, "b", path), path + "/b", static_cast<qrn_int64>(x.afe.size()), false);
      x.termsize = r.indexes64(r.member(o, "termsize", path), path + "/termsize", -1, INT64_MAX);
      p.djcs.push_back(std::move(x));
    }
    settle(p.djcnames);
  }
}

// The "solutions" member: every solution it holds, checked against the sizes.
void read_solutions(const JReader &r, const json &sols_in, const SolSizes &z,
                    std::array<Solution, QRN_SOL_COUNT> &dest) {
  const qrn_int32 m = z.numcon, n = z.numvar, nk = z.numcone;
  const json *sols = &sols_in;
  std::array<Solution, QRN_SOL_COUNT> result = dest;
  if (!sols->is_object()) r.bad(QRN_RES_ERR_READ_SYNTAX, "/solutions", "an object was expected.");
  for (auto it = sols->begin(); it != sols->end(); ++it) {
    const std::string path = "/solutions/" + it.key();
    qrn_int32 w;
    if (!find_soltype(it.key(), w)) r.bad(QRN_RES_ERR_READ_SECTION, path, "the solution is interior, basic or integer.");
    const json &o = *it;
    r.only(o, path, {"prosta", "solsta", "skc", "skx", "skn", "xc", "xx", "y", "slc", "suc", "slx", "sux", "snx", "doty",
                     "barx", "bars"});
    Solution s;
    s.defined = true;
    if (!find_prosta(r.string(r.member(o, "prosta", path), path + "/prosta"), s.prosta))
      r.bad(QRN_RES_ERR_READ_SYNTAX, path + "/prosta", "not a problem status.");
    if (!find_solsta(r.string(r.member(o, "solsta", path), path + "/solsta"), s.solsta))
      r.bad(QRN_RES_ERR_READ_SYNTAX, path + "/solsta", "not a solution status.");
    auto vec = [&](const char *key, qrn_int64 size) {
      const json &v = r.array(r.member(o, key, path), path + "/" + key, size);
      std::vector<double> out;
      for (size_t k = 0; k < v.size(); ++k) out.push_back(r.any_number(v[k], path + "/" + key + "/" + std::to_string(k)));
      return out;
    };
    s.skc = r.keys(r.member(o, "skc", path), path + "/skc", m);
    s.skx = r.keys(r.member(o, "skx", path), path + "/skx", n);
    s.skn = r.keys(r.member(o, "skn", path), path + "/skn", nk);
    s.xc = vec("xc", m), s.y = vec("y", m), s.slc = vec("slc", m), s.suc = vec("suc", m);
    s.xx = vec("xx", n), s.slx = vec("slx", n), s.sux = vec("sux", n), s.snx = vec("snx", n);
    s.doty = o.contains("doty") || z.accntot > 0 ? vec("doty", z.accntot) : std::vector<double>();
    if (!z.bardim.empty() || o.contains("barx") || o.contains("bars"))
      for (const char *key : {"barx", "bars"}) {
        const json &v = r.array(r.member(o, key, path), path + "/" + key, static_cast<qrn_int64>(z.bardim.size()));
        auto &dest_bar = key[3] == 'x' ? s.barx : s.bars;
        for (size_t j = 0; j < v.size(); ++j) {
          const std::string vp = path + "/" + key + "/" + std::to_string(j);
          const qrn_int64 d = z.bardim[j];
          const json &x = r.array(v[j], vp, d * (d + 1) / 2);
          std::vector<double> vals;
          vals.reserve(x.size());
          for (size_t q = 0; q < x.size(); ++q) vals.push_back(r.any_number(x[q], vp + "/" + std::to_string(q)));
          dest_bar.push_back(std::move(vals));
        }
      }
    result[w] = std::move(s);
  }
  dest = std::move(result);
}

}  // namespace

std::string json_solutions_text(const Task &t) {
  json doc;
  doc["format"] = "jsol";
  doc["version"] = 1;
  json sols = json::object();
  for (qrn_int32 w = 0; w < QRN_SOL_COUNT; ++w)
    if (t.sol[w].defined) sols[soltype_name(w)] = solution_json(fitted_solution(t, w));
  doc["solutions"] = sols;
  return doc.dump() + "\n";
}

void read_json_solutions(const Source &src, const SolSizes &z, std::array<Solution, QRN_SOL_COUNT> &sol) {
  json doc;
  try {
    doc = json::parse(src.text);
  } catch (const json::parse_error &e) {
    fail(src.text.empty() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SYNTAX,
         src.name + ": byte " + std::to_string(e.byte) + ": the text is not valid JSON.");
  }
  JReader r{src};
  r.only(doc, "", {"$schema", "format", "version", "solutions"});
  if (doc.value("format", json()) != "jsol") r.bad(QRN_RES_ERR_READ_VERSION, "/format", "the text is not a jsol document.");
  const json &ver = r.member(doc, "version", "");
  if (!ver.is_number_integer() || ver.get<qrn_int64>() != 1) r.bad(QRN_RES_ERR_READ_VERSION, "/version", "only version 1 is known.");
  read_solutions(r, r.member(doc, "solutions", ""), z, sol);
}

void write_jtask(const FileProblem &p, Out &out, const WriteOptions &opt) {
  json doc;
  doc["format"] = "jtask";
  doc["version"] = 1;
  json &t = doc["task"];
  t["name"] = p.taskname;
  json &obj = t["objective"];
  obj["sense"] = p.sense == QRN_OBJECTIVE_SENSE_MAXIMIZE ? "maximize" : "minimize";
  obj["name"] = p.objname;
  obj["constant"] = jnum(p.cfix);
  std::vector<qrn_int32> cj;
  std::vector<double> cv;
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    if (p.c[j] != 0 || std::signbit(p.c[j])) cj.push_back(j), cv.push_back(p.c[j]);
  obj["c"] = {{"subj", jints(cj)}, {"val", jnums(cv)}};
  obj["q"] = {{"subi", jints(p.qosubi)}, {"subj", jints(p.qosubj)}, {"val", jnums(p.qoval)}};
  json &vars = t["variables"];
  vars["count"] = p.numvar;
  if (!p.varnames.empty()) vars["names"] = jnames(p.varnames, p.numvar);
  json bk = json::array();
  for (qrn_int32 k : p.bkx) bk.push_back(key_words[k]);
  vars["bk"] = bk;
  vars["bl"] = jnums(p.blx);
  vars["bu"] = jnums(p.bux);
  std::vector<qrn_int32> ints;
  for (qrn_int32 j = 0; j < p.numvar; ++j)
    if (p.vartype[j] == QRN_VAR_TYPE_INTEGER) ints.push_back(j);
  vars["integer"] = jints(ints);
  json &cons = t["constraints"];
  cons["count"] = p.numcon;
  if (!p.connames.empty()) cons["names"] = jnames(p.connames, p.numcon);
  bk = json::array();
  for (qrn_int32 k : p.bkc) bk.push_back(key_words[k]);
  cons["bk"] = bk;
  cons["bl"] = jnums(p.blc);
  cons["bu"] = jnums(p.buc);
  cons["q"] = {{"subk", jints(p.qcsubk)}, {"subi", jints(p.qcsubi)}, {"subj", jints(p.qcsubj)}, {"val", jnums(p.qcval)}};
  t["A"] = {{"ptr", jints(p.aptr)}, {"sub", jints(p.asub)}, {"val", jnums(p.aval)}};
  json cones = json::array();
  for (size_t k = 0; k < p.cones.size(); ++k) {
    const ProblemCone &c = p.cones[k];
    cones.push_back({{"name", k < p.conenames.size() ? p.conenames[k] : std::string()},
                     {"type", c.type == QRN_CONE_RQUAD ? "rquad" : "quad"},
                     {"par", jnum(c.par)},
                     {"members", jints(c.members)}});
  }
  t["cones"] = cones;
  write_conic_json(p, t);
  if (opt.task != nullptr) {
    json &par = doc["parameters"];
    for (ParKind kind : {ParKind::dou, ParKind::integer, ParKind::str})
      for (qrn_int32 id = 0; id < param_count(kind); ++id) {
        ParRef r{kind, id};
        if (kind == ParKind::dou) par[param_name(r)] = jnum(opt.task->par.dou[id]);
        else if (kind == ParKind::str) par[param_name(r)] = opt.task->par.str[id];
        else {
          std::string text = param_text(opt.task->par, r);
          if (text.compare(0, 4, "QRN_") == 0) par[param_name(r)] = text;
          else par[param_name(r)] = opt.task->par.integer[id];
        }
      }
    json sols = json::object();
    for (qrn_int32 w = 0; w < QRN_SOL_COUNT; ++w)
      if (opt.task->sol[w].defined) sols[soltype_name(w)] = solution_json(fitted_solution(*opt.task, w));
    doc["solutions"] = sols;
  }
  out.raw(doc.dump()).ch('\n');
}

void read_jtask(const Source &src, ReadContext &ctx) {
  json doc;
  try {
    doc = json::parse(src.text);
  } catch (const json::parse_error &e) {
    // Line and column of the byte where parsing stopped.
    size_t byte = std::min<size_t>(e.byte > 0 ? e.byte - 1 : 0, src.text.size());
    size_t line = 1, col = 1;
    for (size_t k = 0; k < byte; ++k) {
      if (src.text[k] == '\n') ++line, col = 1;
      else ++col;
    }
    std::string what = e.what();
    size_t cut = what.find(": ", what.find("parse error"));
    std::string reason = cut == std::string::npos ? what : what.substr(cut + 2);
    fail_at(src.text.empty() || byte >= src.text.size() ? QRN_RES_ERR_READ_EOF : QRN_RES_ERR_READ_SYNTAX, src, line, col,
            "the text is not valid JSON (" + reason + ").");
  }
  JReader r{src};
  r.only(doc, "", {"$schema", "format", "version", "task", "parameters", "solutions"});
  if (!doc.is_object() || doc.value("format", json()) != "jtask")
    r.bad(QRN_RES_ERR_READ_VERSION, "/format", "the text is not a jtask document (\"format\": \"jtask\").");
  const json &ver = r.member(doc, "version", "");
  if (!ver.is_number_integer() || ver.get<qrn_int64>() != 1) r.bad(QRN_RES_ERR_READ_VERSION, "/version", "only version 1 is known.");
  FileProblem &p = ctx.problem;
  const json &t = r.member(doc, "task", "");
  r.only(t, "/task", {"name", "objective", "variables", "constraints", "A", "cones", "afe", "barvars", "symmats", "barc",
                      "bara", "domains", "acc", "djc"});
  const json &vars = r.member(t, "variables", "/task");
  const json &cons = r.member(t, "constraints", "/task");
  r.only(vars, "/task/variables", {"count", "names", "bk", "bl", "bu", "integer"});
  r.only(cons, "/task/constraints", {"count", "names", "bk", "bl", "bu", "q"});
  const qrn_int64 cap = static_cast<qrn_int64>(src.text.size());
  const qrn_int32 n = static_cast<qrn_int32>(r.integer(r.member(vars, "count", "/task/variables"), "/task/variables/count", 0, std::min<qrn_int64>(cap, INT32_MAX)));
  const qrn_int32 m = static_cast<qrn_int32>(r.integer(r.member(cons, "count", "/task/constraints"), "/task/constraints/count", 0, std::min<qrn_int64>(cap, INT32_MAX)));
  p.resize(m, n);
  if (const json *nm = r.optional(t, "name")) p.taskname = r.string(*nm, "/task/name");
  const json &obj = r.member(t, "objective", "/task");
  r.only(obj, "/task/objective", {"sense", "name", "constant", "c", "q"});
  std::string sense = r.string(r.member(obj, "sense", "/task/objective"), "/task/objective/sense");
  if (sense == "maximize") p.sense = QRN_OBJECTIVE_SENSE_MAXIMIZE;
  else if (sense != "minimize") r.bad(QRN_RES_ERR_READ_SYNTAX, "/task/objective/sense", "the sense is minimize or maximize.");
  if (const json *nm = r.optional(obj, "name")) p.objname = r.string(*nm, "/task/objective/name");
  if (const json *c0 = r.optional(obj, "constant")) p.cfix = r.number(*c0, "/task/objective/constant", false);
  if (const json *c = r.optional(obj, "c")) {
    r.only(*c, "/task/objective/c", {"subj", "val"});
    auto subj = r.indexes(r.member(*c, "subj", "/task/objective/c"), "/task/objective/c/subj", -1, n - 1);
    auto val = r.numbers(r.member(*c, "val", "/task/objective/c"), "/task/objective/c/val", static_cast<qrn_int64>(subj.size()), false);
    std::vector<bool> seen(n, false);
    for (size_t k = 0; k < subj.size(); ++k) {
      if (seen[subj[k]]) r.bad(QRN_RES_ERR_READ_NAME_DUP, "/task/objective/c/subj/" + std::to_string(k), "the variable is listed twice.");
      seen[subj[k]] = true;
      p.c[subj[k]] = val[k];
    }
  }
  if (const json *q = r.optional(obj, "q")) {
    r.only(*q, "/task/objective/q", {"subi", "subj", "val"});
    p.qosubi = r.indexes(r.member(*q, "subi", "/task/objective/q"), "/task/objective/q/subi", -1, n - 1);
    p.qosubj = r.indexes(r.member(*q, "subj", "/task/objective/q"), "/task/objective/q/subj", static_cast<qrn_int64>(p.qosubi.size()), n - 1);
    p.qoval = r.numbers(r.member(*q, "val", "/task/objective/q"), "/task/objective/q/val", static_cast<qrn_int64>(p.qosubi.size()), false);
  }
  p.varnames = r.names(r.optional(vars, "names"), "/task/variables/names", n);
  r.bounds(vars, "/task/variables", n, p.bkx, p.blx, p.bux);
  if (const json *ints = r.optional(vars, "integer"))
    for (qrn_int32 j : r.indexes(*ints, "/task/variables/integer", -1, n - 1)) p.vartype[j] = QRN_VAR_TYPE_INTEGER;
  p.connames = r.names(r.optional(cons, "names"), "/task/constraints/names", m);
  r.bounds(cons, "/task/constraints", m, p.bkc, p.blc, p.buc);
  if (const json *q = r.optional(cons, "q")) {
    const std::string path = "/task/constraints/q";
    r.only(*q, path, {"subk", "subi", "subj", "val"});
    p.qcsubk = r.indexes(r.member(*q, "subk", path), path + "/subk", -1, m - 1);
    const qrn_int64 nq = static_cast<qrn_int64>(p.qcsubk.size());
    p.qcsubi = r.indexes(r.member(*q, "subi", path), path + "/subi", nq, n - 1);
    p.qcsubj = r.indexes(r.member(*q, "subj", path), path + "/subj", nq, n - 1);
    p.qcval = r.numbers(r.member(*q, "val", path), path + "/val", nq, false);
  }
  if (const json *a = r.optional(t, "A")) {
    r.only(*a, "/task/A", {"ptr", "sub", "val"});
    const json &ptr = r.array(r.member(*a, "ptr", "/task/A"), "/task/A/ptr", static_cast<qrn_int64>(n) + 1);
    p.asub = r.indexes(r.member(*a, "sub", "/task/A"), "/task/A/sub", -1, m - 1);
    const qrn_int64 nnz = static_cast<qrn_int64>(p.asub.size());
    p.aval = r.numbers(r.member(*a, "val", "/task/A"), "/task/A/val", nnz, false);
    p.aptr.assign(static_cast<size_t>(n) + 1, 0);
    for (qrn_int32 j = 0; j <= n; ++j) {
      std::string path = "/task/A/ptr/" + std::to_string(j);
      p.aptr[j] = r.integer(ptr[j], path, j == 0 ? 0 : p.aptr[j - 1], j == 0 ? 0 : nnz);
      if (j == n && p.aptr[j] != nnz) r.bad(QRN_RES_ERR_READ_INDEX, path, "the last pointer must equal the number of entries.");
    }
    for (qrn_int32 j = 0; j < n; ++j)
      for (qrn_int64 k = p.aptr[j] + 1; k < p.aptr[j + 1]; ++k)
        if (p.asub[k] <= p.asub[k - 1]) r.bad(QRN_RES_ERR_READ_INDEX, "/task/A/sub/" + std::to_string(k), "rows within a column must increase.");
  } else {
    p.aptr.assign(static_cast<size_t>(n) + 1, 0);
  }
  if (const json *cones = r.optional(t, "cones")) {
    r.array(*cones, "/task/cones");
    bool any_name = false;
    for (size_t k = 0; k < cones->size(); ++k) {
      const std::string path = "/task/cones/" + std::to_string(k);
      const json &c = (*cones)[k];
      r.only(c, path, {"name", "type", "par", "members"});
      ProblemCone pc;
      std::string type = r.string(r.member(c, "type", path), path + "/type");
      if (type == "rquad") pc.type = QRN_CONE_RQUAD;
      else if (type != "quad") r.bad(QRN_RES_ERR_READ_UNSUPPORTED, path + "/type", "the cone type \"" + type + "\" is not supported.");
      if (const json *par = r.optional(c, "par")) pc.par = r.number(*par, path + "/par", true);
      pc.members = r.indexes(r.member(c, "members", path), path + "/members", -1, n - 1);
      std::string name;
      if (const json *nm = r.optional(c, "name")) name = r.string(*nm, path + "/name");
      any_name = any_name || !name.empty();
      p.conenames.push_back(name);
      p.cones.push_back(std::move(pc));
    }
    if (!any_name) p.conenames.clear();
  }
  read_conic_json(r, t, p, cap);
  if (const json *par = r.optional(doc, "parameters")) {
    if (!par->is_object()) r.bad(QRN_RES_ERR_READ_SYNTAX, "/parameters", "an object was expected.");
    Params merged = ctx.scratch.par;
    for (auto it = par->begin(); it != par->end(); ++it) {
      const std::string path = "/parameters/" + it.key();
      std::string text;
      if (it->is_string()) text = it->get<std::string>();
      else if (it->is_number_integer()) text = std::to_string(it->get<qrn_int64>());
      else if (it->is_number()) text = double_text(it->get<double>());
      else r.bad(QRN_RES_ERR_PARAM_VALUE, path, "a parameter value is a number or a string.");
      ParRef pr;
      if (!find_param(it.key().c_str(), pr)) r.bad(QRN_RES_ERR_PARAM_NAME, path, "no parameter has this name.");
      if (pr.kind == ParKind::dou && it->is_string()) text = double_text(r.number(*it, path, true));
      try {
        set_param_text(merged, it.key().c_str(), text.c_str());
      } catch (const Failure &f) {
        r.bad(f.code, path, f.msg);
      }
    }
    if (ctx.input_params) ctx.scratch.par = merged;
  }
  if (const json *sols = r.optional(doc, "solutions"))
    read_solutions(r, *sols, sol_sizes(p), ctx.scratch.sol);
  ctx.lines = static_cast<size_t>(std::count(src.text.begin(), src.text.end(), '\n')) + 1;
}

}  // namespace qrn
