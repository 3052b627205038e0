// Parameters: one table per kind with each parameter's identifier, name,
// default and allowed values; setting and reading them by identifier, by name
// and as text; and constants read from their names (cone types, status keys).
#include "params.hpp"

#include "names.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <locale>
#include <sstream>
#include <unordered_map>

namespace qrn {
namespace {

// ---- named constants -----------------------------------------------------------------

struct Const {
  const char *name;
  qrn_int32 value;
};

// Constants that share a prefix, known by their full name or without the
// prefix ("QRN_ALGORITHM_IPM" or "IPM").
struct ConstSet {
  const char *prefix;
  const Const *items;
  size_t n;

  const Const *find(const char *text) const {
    size_t plen = std::strlen(prefix);
    for (size_t k = 0; k < n; ++k) {
      const char *full = items[k].name;
      if (std::strcmp(text, full) == 0 || std::strcmp(text, full + plen) == 0) return &items[k];
    }
    return nullptr;
  }
  const char *name_of(qrn_int32 v) const {
    for (size_t k = 0; k < n; ++k)
      if (items[k].value == v) return items[k].name;
    return nullptr;
  }
};

#define QRN_CONST(x) {#x, x}
#define QRN_CONST_SET(var, prefix, ...)           \
  constexpr Const var##_items[] = {__VA_ARGS__}; \
  constexpr ConstSet var{prefix, var##_items, std::size(var##_items)};

QRN_CONST_SET(onoff_values, "QRN_", QRN_CONST(QRN_OFF), QRN_CONST(QRN_ON))
QRN_CONST_SET(algorithm_values, "QRN_ALGORITHM_", QRN_CONST(QRN_ALGORITHM_AUTO), QRN_CONST(QRN_ALGORITHM_IPM),
              QRN_CONST(QRN_ALGORITHM_PRIMAL_SIMPLEX), QRN_CONST(QRN_ALGORITHM_DUAL_SIMPLEX),
              QRN_CONST(QRN_ALGORITHM_ANY_SIMPLEX), QRN_CONST(QRN_ALGORITHM_MIXED_INT))
QRN_CONST_SET(scaling_values, "QRN_SCALING_", QRN_CONST(QRN_SCALING_AUTO), QRN_CONST(QRN_SCALING_NONE),
              QRN_CONST(QRN_SCALING_GEOMETRIC), QRN_CONST(QRN_SCALING_EQUILIBRATE))
QRN_CONST_SET(ordering_values, "QRN_ORDERING_", QRN_CONST(QRN_ORDERING_AUTO), QRN_CONST(QRN_ORDERING_MIN_DEGREE),
              QRN_CONST(QRN_ORDERING_NESTED_DISSECTION), QRN_CONST(QRN_ORDERING_NONE))
QRN_CONST_SET(solveform_values, "QRN_SOLVE_FORM_", QRN_CONST(QRN_SOLVE_FORM_AUTO),
              QRN_CONST(QRN_SOLVE_FORM_PRIMAL), QRN_CONST(QRN_SOLVE_FORM_DUAL))
QRN_CONST_SET(pricing_values, "QRN_PRICING_", QRN_CONST(QRN_PRICING_AUTO), QRN_CONST(QRN_PRICING_DANTZIG),
              QRN_CONST(QRN_PRICING_DEVEX), QRN_CONST(QRN_PRICING_STEEPEST_EDGE), QRN_CONST(QRN_PRICING_PARTIAL))
QRN_CONST_SET(branchdir_values, "QRN_BRANCH_", QRN_CONST(QRN_BRANCH_AUTO), QRN_CONST(QRN_BRANCH_UP),
              QRN_CONST(QRN_BRANCH_DOWN), QRN_CONST(QRN_BRANCH_NEAREST))
QRN_CONST_SET(nodesel_values, "QRN_NODE_SELECT_", QRN_CONST(QRN_NODE_SELECT_AUTO),
              QRN_CONST(QRN_NODE_SELECT_BEST_BOUND), QRN_CONST(QRN_NODE_SELECT_DEPTH_FIRST),
              QRN_CONST(QRN_NODE_SELECT_BEST_ESTIMATE))
QRN_CONST_SET(dataformat_values, "QRN_DATA_FORMAT_", QRN_CONST(QRN_DATA_FORMAT_EXTENSION),
              QRN_CONST(QRN_DATA_FORMAT_TEXT), QRN_CONST(QRN_DATA_FORMAT_MPS), QRN_CONST(QRN_DATA_FORMAT_FREE_MPS),
              QRN_CONST(QRN_DATA_FORMAT_LP), QRN_CONST(QRN_DATA_FORMAT_OPF), QRN_CONST(QRN_DATA_FORMAT_PTF),
              QRN_CONST(QRN_DATA_FORMAT_JSON_TASK), QRN_CONST(QRN_DATA_FORMAT_TASK), QRN_CONST(QRN_DATA_FORMAT_CBF))
QRN_CONST_SET(compress_values, "QRN_COMPRESS_", QRN_CONST(QRN_COMPRESS_NONE), QRN_CONST(QRN_COMPRESS_GZIP))
QRN_CONST_SET(conetype_values, "QRN_CONE_", QRN_CONST(QRN_CONE_QUAD), QRN_CONST(QRN_CONE_RQUAD))
QRN_CONST_SET(stakey_values, "QRN_SK_", QRN_CONST(QRN_SK_UNKNOWN), QRN_CONST(QRN_SK_BASIS),
              QRN_CONST(QRN_SK_SUPER_BASIC), QRN_CONST(QRN_SK_AT_LOWER), QRN_CONST(QRN_SK_AT_UPPER),
              QRN_CONST(QRN_SK_FIXED), QRN_CONST(QRN_SK_INFEASIBLE))

// ---- the parameter tables ------------------------------------------------------------

constexpr double big = QRN_INFINITY;

struct DouPar {
  qrn_int32 id;
  const char *name;
  double def, lo, hi;
};

// An integer parameter takes either a range [lo, hi] or one of a set of constants.
struct IntPar {
  qrn_int32 id;
  const char *name;
  qrn_int32 def, lo, hi;
  const ConstSet *values;
};

enum class Text { any, token };  // token: non-empty, no blanks or control characters

struct StrPar {
  qrn_int32 id;
  const char *name;
  const char *def;
  Text rule;
};

#define DPAR(id, def, lo, hi) {id, #id, def, lo, hi}
#define IPAR(id, def, lo, hi) {id, #id, def, lo, hi, nullptr}
#define IPAR_ENUM(id, def, set) {id, #id, def, 0, 0, &set}
#define SPAR(id, def, rule) {id, #id, def, rule}

constexpr DouPar dou_table[] = {
    DPAR(QRN_DPAR_PRIMAL_FEAS_TOL, 1e-8, 1e-14, 0.5),
    DPAR(QRN_DPAR_DUAL_FEAS_TOL, 1e-8, 1e-14, 0.5),
    DPAR(QRN_DPAR_OPT_TOL, 1e-8, 1e-14, 0.5),
    DPAR(QRN_DPAR_INFEAS_TOL, 1e-10, 1e-14, 0.5),
    DPAR(QRN_DPAR_IPM_STEP_FRACTION, 0.99, 0.5, 0.9999),
    DPAR(QRN_DPAR_IPM_CENTERING, 0.1, 0, 1),
    DPAR(QRN_DPAR_IPM_STALL_TOL, 1e-6, 0, 1),
    DPAR(QRN_DPAR_SIMPLEX_PIVOT_TOL, 1e-7, 1e-12, 0.99),
    DPAR(QRN_DPAR_BASIS_COND_LIMIT, 1e12, 1, big),
    DPAR(QRN_DPAR_MIP_REL_GAP, 1e-4, 0, big),
    DPAR(QRN_DPAR_MIP_ABS_GAP, 1e-10, 0, big),
    DPAR(QRN_DPAR_MIP_INT_TOL, 1e-5, 1e-9, 0.5),
    DPAR(QRN_DPAR_MIP_HEUR_EFFORT, 0.05, 0, 1),
    DPAR(QRN_DPAR_MIP_OBJ_CUTOFF, big, -big, big),
    DPAR(QRN_DPAR_MIP_TIME_LIMIT, big, 0, big),
    DPAR(QRN_DPAR_TIME_LIMIT, big, 0, big),
    DPAR(QRN_DPAR_OBJ_TARGET_MIN, -big, -big, big),
    DPAR(QRN_DPAR_OBJ_TARGET_MAX, big, -big, big),
    DPAR(QRN_DPAR_PRESOLVE_TOL, 1e-9, 0, 0.01),
    DPAR(QRN_DPAR_PRESOLVE_FILL_LIMIT, 2, 1, big),
    DPAR(QRN_DPAR_DATA_LARGE_COEF, 1e9, 0, big),
    DPAR(QRN_DPAR_DATA_SMALL_COEF, 1e-9, 0, big),
    DPAR(QRN_DPAR_CONVEXITY_TOL, 1e-10, 0, big),
    DPAR(QRN_DPAR_REPAIR_WEIGHT, 1, 0, big),
    DPAR(QRN_DPAR_SEMIDEF_EIG_TOL, 1e-12, 0, 1),
    DPAR(QRN_DPAR_REMOTE_TIMEOUT, 60, 0, big),
    DPAR(QRN_DPAR_CALLBACK_INTERVAL, 0.1, 0, big),
};

constexpr IntPar int_table[] = {
    IPAR(QRN_IPAR_LOG_LEVEL, 1, 0, 3),
    IPAR(QRN_IPAR_LOG_MIP_FREQ, 1000, 1, INT32_MAX),
    IPAR_ENUM(QRN_IPAR_ALGORITHM, QRN_ALGORITHM_AUTO, algorithm_values),
    IPAR(QRN_IPAR_THREADS, 0, 0, 1024),
    IPAR_ENUM(QRN_IPAR_PRESOLVE, QRN_ON, onoff_values),
    IPAR(QRN_IPAR_PRESOLVE_PASSES, -1, -1, 1000),
    IPAR_ENUM(QRN_IPAR_PRESOLVE_DUAL_REDUCTIONS, QRN_ON, onoff_values),
    IPAR_ENUM(QRN_IPAR_SCALING, QRN_SCALING_AUTO, scaling_values),
    IPAR(QRN_IPAR_IPM_MAX_ITER, 400, 0, INT32_MAX),
    IPAR_ENUM(QRN_IPAR_IPM_ORDERING, QRN_ORDERING_AUTO, ordering_values),
    IPAR_ENUM(QRN_IPAR_IPM_SOLVE_FORM, QRN_SOLVE_FORM_AUTO, solveform_values),
    IPAR_ENUM(QRN_IPAR_CROSSOVER, QRN_ON, onoff_values),
    IPAR(QRN_IPAR_SIMPLEX_MAX_ITER, 10000000, 0, INT32_MAX),
    IPAR_ENUM(QRN_IPAR_SIMPLEX_PRICING, QRN_PRICING_AUTO, pricing_values),
    IPAR(QRN_IPAR_MIP_NODE_LIMIT, INT32_MAX, 0, INT32_MAX),
    IPAR(QRN_IPAR_MIP_SOLUTION_LIMIT, INT32_MAX, 1, INT32_MAX),
    IPAR_ENUM(QRN_IPAR_MIP_CUTS, QRN_ON, onoff_values),
    IPAR(QRN_IPAR_MIP_CUT_ROUNDS, 10, 0, 1000),
    IPAR_ENUM(QRN_IPAR_MIP_HEURISTICS, QRN_ON, onoff_values),
    IPAR(QRN_IPAR_MIP_PROBING_LEVEL, 1, 0, 3),
    IPAR_ENUM(QRN_IPAR_MIP_BRANCH_DIR, QRN_BRANCH_AUTO, branchdir_values),
    IPAR_ENUM(QRN_IPAR_MIP_NODE_SELECTION, QRN_NODE_SELECT_AUTO, nodesel_values),
    IPAR(QRN_IPAR_MIP_SEED, 0, 0, INT32_MAX),
    IPAR_ENUM(QRN_IPAR_MIP_SYMMETRY, QRN_ON, onoff_values),
    IPAR_ENUM(QRN_IPAR_CHECK_CONVEXITY, QRN_ON, onoff_values),
    IPAR_ENUM(QRN_IPAR_DATA_CHECK, QRN_ON, onoff_values),
    IPAR_ENUM(QRN_IPAR_INFEAS_REPORT, QRN_OFF, onoff_values),
    IPAR_ENUM(QRN_IPAR_SOLUTION_SUMMARY, QRN_OFF, onoff_values),
    IPAR_ENUM(QRN_IPAR_SENSITIVITY_ALL, QRN_OFF, onoff_values),
    IPAR_ENUM(QRN_IPAR_INPUT_FORMAT, QRN_DATA_FORMAT_EXTENSION, dataformat_values),
    IPAR_ENUM(QRN_IPAR_OUTPUT_FORMAT, QRN_DATA_FORMAT_EXTENSION, dataformat_values),
    IPAR_ENUM(QRN_IPAR_OUTPUT_COMPRESSION, QRN_COMPRESS_NONE, compress_values),
    IPAR_ENUM(QRN_IPAR_OUTPUT_NAMES, QRN_ON, onoff_values),
    IPAR(QRN_IPAR_OUTPUT_PRECISION, 17, 1, 17),
    IPAR_ENUM(QRN_IPAR_INPUT_PARAMS, QRN_ON, onoff_values),
    IPAR(QRN_IPAR_NAME_LENGTH_WARN, 256, 1, INT32_MAX),
    IPAR(QRN_IPAR_REMOTE_RETRIES, 3, 0, 100),
};

constexpr StrPar str_table[] = {
    SPAR(QRN_SPAR_LOG_FILE, "", Text::any),
    SPAR(QRN_SPAR_SOLUTION_FILE, "", Text::any),
    SPAR(QRN_SPAR_SENSITIVITY_FILE, "", Text::any),
    SPAR(QRN_SPAR_DUMP_DIR, "", Text::any),
    SPAR(QRN_SPAR_TEMP_DIR, "", Text::any),
    SPAR(QRN_SPAR_REMOTE_SERVER, "", Text::any),
    SPAR(QRN_SPAR_REMOTE_TAG, "", Text::any),
    SPAR(QRN_SPAR_DEFAULT_EXTENSION, "qtx", Text::token),
    SPAR(QRN_SPAR_NAME_PREFIX_CON, "c", Text::token),
    SPAR(QRN_SPAR_NAME_PREFIX_VAR, "x", Text::token),
    SPAR(QRN_SPAR_NAME_PREFIX_CONE, "k", Text::token),
};

// Each table lists its parameters in identifier order, with valid defaults.
template <class T, size_t N>
constexpr bool numbered(const T (&table)[N]) {
  for (size_t k = 0; k < N; ++k)
    if (table[k].id != static_cast<qrn_int32>(k)) return false;
  return true;
}
constexpr bool defaults_allowed() {
  for (const auto &p : dou_table)
    if (!(p.lo <= p.def && p.def <= p.hi)) return false;
  for (const auto &p : int_table) {
    bool ok = p.values == nullptr ? p.lo <= p.def && p.def <= p.hi : false;
    for (size_t k = 0; p.values != nullptr && k < p.values->n; ++k) ok = ok || p.values->items[k].value == p.def;
    if (!ok) return false;
  }
  return true;
}
static_assert(std::size(dou_table) == QRN_DPAR_COUNT && numbered(dou_table), "double parameter table");
static_assert(std::size(int_table) == QRN_IPAR_COUNT && numbered(int_table), "integer parameter table");
static_assert(std::size(str_table) == QRN_SPAR_COUNT && numbered(str_table), "string parameter table");
static_assert(defaults_allowed(), "a default lies outside its parameter's allowed values");

// ---- access by identifier --------------------------------------------------------------

template <class T, size_t N>
const T &entry(const T (&table)[N], qrn_int32 id, const char *kind) {
  if (id < 0 || id >= static_cast<qrn_int32>(N))
    fail(QRN_RES_ERR_PARAM_INDEX, std::string(kind) + " parameter identifier " + std::to_string(id) +
                                      " is outside 0.." + std::to_string(N - 1) + ".");
  return table[id];
}
const DouPar &dou_par(qrn_int32 id) { return entry(dou_table, id, "Double"); }
const IntPar &int_par(qrn_int32 id) { return entry(int_table, id, "Integer"); }
const StrPar &str_par(qrn_int32 id) { return entry(str_table, id, "String"); }

std::string number(double v) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out.precision(17);
  out << v;
  return out.str();
}

void set_dou(Params &par, const DouPar &p, double v) {
  if (!(p.lo <= v && v <= p.hi))
    fail(QRN_RES_ERR_PARAM_VALUE, std::string(p.name) + ": " + number(v) + " is outside [" + number(p.lo) + ", " +
                                      number(p.hi) + "].");
  par.dou[p.id] = v;
}

void set_int(Params &par, const IntPar &p, qrn_int32 v) {
  if (p.values != nullptr && p.values->name_of(v) == nullptr)
    fail(QRN_RES_ERR_PARAM_VALUE, std::string(p.name) + ": " + std::to_string(v) + " is not one of the " +
                                      p.values->prefix + "* constants.");
  if (p.values == nullptr && (v < p.lo || v > p.hi))
    fail(QRN_RES_ERR_PARAM_VALUE, std::string(p.name) + ": " + std::to_string(v) + " is outside [" +
                                      std::to_string(p.lo) + ", " + std::to_string(p.hi) + "].");
  par.integer[p.id] = v;
}

void set_str(Params &par, const StrPar &p, const char *v) {
  if (v == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument parvalue is null.");
  size_t n = std::strlen(v);
  if (!valid_utf8(v, n)) fail(QRN_RES_ERR_PARAM_VALUE, std::string(p.name) + ": the value is not valid UTF-8.");
  if (p.rule == Text::token) {
    bool ok = n > 0;
    for (size_t k = 0; k < n; ++k) ok = ok && static_cast<unsigned char>(v[k]) > 0x20 && v[k] != 0x7F;
    if (!ok)
      fail(QRN_RES_ERR_PARAM_VALUE, std::string(p.name) + ": the value must be non-empty, without blanks or control characters.");
  }
  par.str[p.id] = v;
}

// ---- access by name -------------------------------------------------------------------

const std::unordered_map<std::string, ParRef> &name_index() {
  static const auto index = [] {
    std::unordered_map<std::string, ParRef> m;
    for (const auto &p : dou_table) m.emplace(p.name, ParRef{ParKind::dou, p.id});
    for (const auto &p : int_table) m.emplace(p.name, ParRef{ParKind::integer, p.id});
    for (const auto &p : str_table) m.emplace(p.name, ParRef{ParKind::str, p.id});
    return m;
  }();
  return index;
}

const char *kind_word(ParKind k) {
  return k == ParKind::dou ? "a double" : k == ParKind::integer ? "an integer" : "a string";
}

// The parameter of that name, which must be of kind `want`.
qrn_int32 named(const char *name, ParKind want) {
  if (name == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument parname is null.");
  ParRef p;
  if (!find_param(name, p)) fail(QRN_RES_ERR_PARAM_NAME, "No parameter is named \"" + std::string(name) + "\".");
  if (p.kind != want)
    fail(QRN_RES_ERR_PARAM_TYPE, std::string(name) + " is " + kind_word(p.kind) + " parameter, not " + kind_word(want) + " one.");
  return p.id;
}

std::string trimmed(const char *text) {
  std::string s(text);
  const char *blanks = " \t\r\n";
  size_t b = s.find_first_not_of(blanks), e = s.find_last_not_of(blanks);
  return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

bool parse_double(const std::string &s, double &v) {
  std::istringstream in(s);
  in.imbue(std::locale::classic());
  in >> v;
  return !s.empty() && !in.fail() && in.peek() == std::char_traits<char>::eof();
}

bool parse_int(const std::string &s, qrn_int32 &v) {
  if (s.empty()) return false;
  char *end = nullptr;
  errno = 0;
  long long x = std::strtoll(s.c_str(), &end, 10);
  if (errno != 0 || *end != '\0' || x < INT32_MIN || x > INT32_MAX) return false;
  v = static_cast<qrn_int32>(x);
  return true;
}

qrn_int32 constant(const ConstSet &set, const char *text, const char *what) {
  if (text == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument str is null.");
  const Const *c = set.find(text);
  if (c == nullptr)
    fail(QRN_RES_ERR_UNKNOWN_KEY, "\"" + std::string(text) + "\" names no " + what + " (" + set.prefix + "*).");
  return c->value;
}

}  // namespace

// ---- shared with the parameter files ------------------------------------------------

qrn_int32 param_count(ParKind kind) {
  return kind == ParKind::dou ? QRN_DPAR_COUNT : kind == ParKind::integer ? QRN_IPAR_COUNT : QRN_SPAR_COUNT;
}

const char *param_name(ParRef p) {
  return p.kind == ParKind::dou ? dou_par(p.id).name : p.kind == ParKind::integer ? int_par(p.id).name : str_par(p.id).name;
}

bool find_param(const char *name, ParRef &out) {
  if (name == nullptr) return false;
  const auto &index = name_index();
  auto it = index.find(name);
  if (it == index.end()) return false;
  out = it->second;
  return true;
}

void set_param_text(Params &par, const char *name, const char *text) {
  if (name == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument parname is null.");
  if (text == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument parvalue is null.");
  ParRef p;
  if (!find_param(name, p)) fail(QRN_RES_ERR_PARAM_NAME, "No parameter is named \"" + std::string(name) + "\".");
  if (p.kind == ParKind::str) return set_str(par, str_par(p.id), text);
  const std::string s = trimmed(text);
  if (p.kind == ParKind::dou) {
    double v;
    if (!parse_double(s, v)) fail(QRN_RES_ERR_PARAM_VALUE, std::string(name) + ": \"" + s + "\" is not a number.");
    return set_dou(par, dou_par(p.id), v);
  }
  const IntPar &ip = int_par(p.id);
  const Const *c = ip.values != nullptr ? ip.values->find(s.c_str()) : nullptr;
  qrn_int32 v = c != nullptr ? c->value : 0;
  if (c == nullptr && !parse_int(s, v))
    fail(QRN_RES_ERR_PARAM_VALUE, std::string(name) + ": \"" + s + "\" is not a 32-bit integer" +
                                      (ip.values != nullptr ? std::string(" or a ") + ip.values->prefix + "* constant." : "."));
  set_int(par, ip, v);
}

std::string param_text(const Params &par, ParRef p) {
  switch (p.kind) {
    case ParKind::dou:
      return number(par.dou[dou_par(p.id).id]);
    case ParKind::integer: {
      const IntPar &ip = int_par(p.id);
      const char *c = ip.values != nullptr ? ip.values->name_of(par.integer[p.id]) : nullptr;
      return c != nullptr ? c : std::to_string(par.integer[p.id]);
    }
    default:
      return par.str[str_par(p.id).id];
  }
}

bool param_is_default(const Params &par, ParRef p) {
  switch (p.kind) {
    case ParKind::dou:
      return par.dou[p.id] == dou_par(p.id).def;
    case ParKind::integer:
      return par.integer[p.id] == int_par(p.id).def;
    default:
      return par.str[p.id] == str_par(p.id).def;
  }
}

Params::Params() {
  for (const auto &p : dou_table) dou.push_back(p.def);
  for (const auto &p : int_table) integer.push_back(p.def);
  for (const auto &p : str_table) str.emplace_back(p.def);
}

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_putdouparam(qrn_task_t task, qrn_int32 param, qrn_real parvalue) {
  return api(task, "QRN_putdouparam", [&](Task &t) { set_dou(t.par, dou_par(param), parvalue); });
}
QRN_API qrn_rescode QRN_CALL QRN_putintparam(qrn_task_t task, qrn_int32 param, qrn_int32 parvalue) {
  return api(task, "QRN_putintparam", [&](Task &t) { set_int(t.par, int_par(param), parvalue); });
}
QRN_API qrn_rescode QRN_CALL QRN_putstrparam(qrn_task_t task, qrn_int32 param, const char *parvalue) {
  return api(task, "QRN_putstrparam", [&](Task &t) { set_str(t.par, str_par(param), parvalue); });
}

QRN_API qrn_rescode QRN_CALL QRN_getdouparam(qrn_task_t task, qrn_int32 param, qrn_real *parvalue) {
  return api(task, "QRN_getdouparam", [&](Task &t) { put(parvalue, t.par.dou[dou_par(param).id]); });
}
QRN_API qrn_rescode QRN_CALL QRN_getintparam(qrn_task_t task, qrn_int32 param, qrn_int32 *parvalue) {
  return api(task, "QRN_getintparam", [&](Task &t) { put(parvalue, t.par.integer[int_par(param).id]); });
}
QRN_API qrn_rescode QRN_CALL QRN_getstrparamlen(qrn_task_t task, qrn_int32 param, qrn_int32 *len) {
  return api(task, "QRN_getstrparamlen",
             [&](Task &t) { put(len, static_cast<qrn_int32>(t.par.str[str_par(param).id].size())); });
}

QRN_API qrn_rescode QRN_CALL QRN_getstrparam(qrn_task_t task, qrn_int32 param, qrn_int32 maxlen, qrn_int32 *len,
                                             char *parvalue) {
  return api(task, "QRN_getstrparam", [&](Task &t) {
    const std::string &v = t.par.str[str_par(param).id];
    need_count(maxlen, "maxlen");
    size_t n = 0;
    if (parvalue != nullptr && maxlen > 0) {
      n = std::min(v.size(), static_cast<size_t>(maxlen) - 1);
      // A shortened value ends before a whole character, never inside one.
      while (n > 0 && n < v.size() && (static_cast<unsigned char>(v[n]) & 0xC0) == 0x80) --n;
      std::memcpy(parvalue, v.data(), n);
      parvalue[n] = '\0';
    }
    put(len, static_cast<qrn_int32>(n));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumparam(qrn_task_t task, qrn_int32 partype, qrn_int32 *numparam) {
  return api(task, "QRN_getnumparam", [&](Task &) {
    if (partype != QRN_PAR_TYPE_DOUBLE && partype != QRN_PAR_TYPE_INTEGER && partype != QRN_PAR_TYPE_STRING)
      fail(QRN_RES_ERR_ARGUMENT, "Parameter type " + std::to_string(partype) + " is not a qrn_parametertype_e value.");
    put(numparam, param_count(static_cast<ParKind>(partype)));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putnadouparam(qrn_task_t task, const char *paramname, qrn_real parvalue) {
  return api(task, "QRN_putnadouparam",
             [&](Task &t) { set_dou(t.par, dou_par(named(paramname, ParKind::dou)), parvalue); });
}
QRN_API qrn_rescode QRN_CALL QRN_putnaintparam(qrn_task_t task, const char *paramname, qrn_int32 parvalue) {
  return api(task, "QRN_putnaintparam",
             [&](Task &t) { set_int(t.par, int_par(named(paramname, ParKind::integer)), parvalue); });
}
QRN_API qrn_rescode QRN_CALL QRN_putnastrparam(qrn_task_t task, const char *paramname, const char *parvalue) {
  return api(task, "QRN_putnastrparam",
             [&](Task &t) { set_str(t.par, str_par(named(paramname, ParKind::str)), parvalue); });
}
QRN_API qrn_rescode QRN_CALL QRN_putparam(qrn_task_t task, const char *parname, const char *parvalue) {
  return api(task, "QRN_putparam", [&](Task &t) { set_param_text(t.par, parname, parvalue); });
}

QRN_API qrn_rescode QRN_CALL QRN_isdouparname(qrn_task_t task, const char *parname, qrn_int32 *param) {
  return api(task, "QRN_isdouparname", [&](Task &) { put(param, named(parname, ParKind::dou)); });
}
QRN_API qrn_rescode QRN_CALL QRN_isintparname(qrn_task_t task, const char *parname, qrn_int32 *param) {
  return api(task, "QRN_isintparname", [&](Task &) { put(param, named(parname, ParKind::integer)); });
}
QRN_API qrn_rescode QRN_CALL QRN_isstrparname(qrn_task_t task, const char *parname, qrn_int32 *param) {
  return api(task, "QRN_isstrparname", [&](Task &) { put(param, named(parname, ParKind::str)); });
}

QRN_API qrn_rescode QRN_CALL QRN_strtoconetype(qrn_task_t task, const char *str, qrn_int32 *conetype) {
  return api(task, "QRN_strtoconetype",
             [&](Task &) { put(conetype, constant(conetype_values, str, "cone type")); });
}
QRN_API qrn_rescode QRN_CALL QRN_strtosk(qrn_task_t task, const char *str, qrn_int32 *sk) {
  return api(task, "QRN_strtosk", [&](Task &) { put(sk, constant(stakey_values, str, "status key")); });
}

QRN_API qrn_rescode QRN_CALL QRN_setdefaults(qrn_task_t task) {
  return api(task, "QRN_setdefaults", [&](Task &t) { t.par = Params(); });
}

}  // extern "C"
