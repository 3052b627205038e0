// Names of constraints, variables, cones, the objective and the task: setting
// and reading them, lookup by name, generated names and the name report.
#include "names.hpp"

#include <cstring>
#include <unordered_map>
#include <unordered_set>

namespace qrn {

bool valid_utf8(const char *p, size_t n) {
  static const unsigned least[] = {0, 0, 0x80, 0x800, 0x10000};  // shortest form per length
  const auto *s = reinterpret_cast<const unsigned char *>(p);
  for (size_t i = 0; i < n;) {
    unsigned c = s[i];
    size_t len;
    unsigned cp;
    if (c < 0x80) {
      ++i;
      continue;
    } else if (c >= 0xC2 && c <= 0xDF) {
      len = 2, cp = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
      len = 3, cp = c & 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      len = 4, cp = c & 0x07;
    } else {
      return false;
    }
    if (n - i < len) return false;
    for (size_t k = 1; k < len; ++k) {
      if ((s[i + k] & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (s[i + k] & 0x3F);
    }
    if (cp < least[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    i += len;
  }
  return true;
}

std::string utf8_arg(const char *p, const char *what) {
  if (p == nullptr) fail(QRN_RES_ERR_NULL_POINTER, std::string("Argument ") + what + " is null.");
  std::string s(p);
  if (!valid_utf8(s.data(), s.size())) fail(QRN_RES_ERR_NAME_UTF8, std::string("Argument ") + what + " is not valid UTF-8.");
  return s;
}

// A name quoted for a message or report, control characters shown as '?'.
static std::string quoted(const std::string &name) {
  std::string q = "\"";
  for (char c : name) q += (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) ? '?' : c;
  return q + "\"";
}

void assign_names(NameTable &table, const NameAssignment &items, const char *kind) {
  // Check everything first, so that a refused call changes nothing.
  std::unordered_set<qrn_int64> listed;
  for (auto &item : items) listed.insert(item.first);
  std::unordered_map<std::string, qrn_int64> incoming;
  for (auto &[idx, name] : items) {
    if (name.empty()) continue;
    auto [it, fresh] = incoming.emplace(name, idx);
    if (!fresh && it->second != idx)
      fail(QRN_RES_ERR_NAME_DUPLICATE, "The name " + quoted(name) + " would be given to " + kind + "s " +
                                           std::to_string(it->second) + " and " + std::to_string(idx) + ".");
    auto held = table.index.find(name);
    if (held != table.index.end() && held->second != idx && listed.count(held->second) == 0)
      fail(QRN_RES_ERR_NAME_DUPLICATE,
           "The name " + quoted(name) + " already belongs to " + kind + " " + std::to_string(held->second) + ".");
  }
  // Old names are released before new ones are taken, so that names can move
  // between the listed items. The table grows to the last item named.
  size_t need = table.names.size();
  for (auto &[idx, name] : items)
    if (!name.empty()) need = std::max(need, static_cast<size_t>(idx) + 1);
  table.names.resize(need);
  for (auto &item : items) {
    const std::string &old = table.name(item.first);
    auto it = table.index.find(old);
    if (it != table.index.end() && it->second == item.first) table.index.erase(it);
  }
  for (auto &[idx, name] : items) {
    if (static_cast<size_t>(idx) >= table.names.size()) continue;  // unnamed, and stays so
    table.names[idx] = name;
    if (!name.empty()) table.index[name] = static_cast<qrn_int32>(idx);
  }
}

qrn_int64 find_name(const NameTable &table, const char *name) {
  if (name == nullptr || *name == '\0') return -1;
  auto it = table.index.find(name);
  return it == table.index.end() ? -1 : it->second;
}

void copy_name(const std::string &name, qrn_int64 size, char *out) {
  need_count(size, "The buffer size");
  if (out == nullptr) return;
  auto need = static_cast<qrn_int64>(name.size()) + 1;
  if (size < need)
    fail(QRN_RES_ERR_TOO_SMALL, "The name needs " + std::to_string(need) + " bytes with its terminating zero; the buffer has " +
                                    std::to_string(size) + ".");
  std::memcpy(out, name.data(), name.size());
  out[name.size()] = '\0';
}

// ---- generated names -------------------------------------------------------------

// The literal pieces of a format around its "{}" placeholders.
static std::vector<std::string> split_format(const std::string &f) {
  std::vector<std::string> pieces(1);
  for (size_t i = 0; i < f.size(); ++i) {
    char c = f[i], next = i + 1 < f.size() ? f[i + 1] : '\0';
    if (c == '{' && next == '}') {
      pieces.emplace_back();
      ++i;
    } else if ((c == '{' || c == '}') && next == c) {
      pieces.back() += c;
      ++i;
    } else if (c == '{' || c == '}') {
      fail(QRN_RES_ERR_NAME_FORMAT, std::string("The brace at byte ") + std::to_string(i) +
                                        " of the format is not part of \"{}\", \"{{\" or \"}}\".");
    } else {
      pieces.back() += c;
    }
  }
  return pieces;
}

std::vector<std::string> format_names(qrn_int64 num, const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                      const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                      const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                      const char *const *names) {
  need_count(num, "The number of items");
  need_count(ndims, "The number of dimensions");
  need_array(dims, ndims, "dims");
  need_count(numnamedaxis, "The number of named axes");
  need_array(namedaxisidxs, numnamedaxis, "namedaxisidxs");
  need_count(numnames, "The number of axis names");
  need_array(names, numnames, "names");
  const auto pieces = split_format(utf8_arg(fmt, "fmt"));
  if (static_cast<qrn_int64>(pieces.size()) - 1 != ndims)
    fail(QRN_RES_ERR_NAME_FORMAT, "The format has " + std::to_string(pieces.size() - 1) + " placeholders for " +
                                      std::to_string(ndims) + " dimensions.");

  // Row-major strides; size is the number of positions of the shape.
  std::vector<qrn_int64> stride(ndims);
  qrn_int64 size = 1;
  for (qrn_int32 d = ndims - 1; d >= 0; --d) {
    need_count(dims[d], "A dimension");
    stride[d] = size;
    if (dims[d] > 0 && size > INT64_MAX / dims[d]) fail(QRN_RES_ERR_NAME_FORMAT, "The shape has too many positions.");
    size *= dims[d];
  }

  // Each named axis takes the next dims[d] texts of names.
  std::vector<qrn_int64> first_name(ndims, -1);
  qrn_int64 wanted = 0;
  for (qrn_int32 a = 0; a < numnamedaxis; ++a) {
    qrn_int32 d = namedaxisidxs[a];
    if (d < 0 || d >= ndims)
      fail(QRN_RES_ERR_NAME_FORMAT, "Named axis " + std::to_string(d) + " is not one of the " + std::to_string(ndims) +
                                        " dimensions.");
    if (first_name[d] >= 0) fail(QRN_RES_ERR_NAME_FORMAT, "Axis " + std::to_string(d) + " is named twice.");
    first_name[d] = wanted;
    wanted += dims[d];
  }
  if (wanted != numnames)
    fail(QRN_RES_ERR_NAME_FORMAT, "The named axes need " + std::to_string(wanted) + " names; " +
                                      std::to_string(numnames) + " were given.");
  for (qrn_int64 k = 0; k < numnames; ++k) utf8_arg(names[k], "names");

  if (sp == nullptr && num != size)
    fail(QRN_RES_ERR_NAME_FORMAT, std::to_string(num) + " items do not fill a shape of " + std::to_string(size) +
                                      " positions.");
  std::vector<std::string> out(num);
  for (qrn_int64 k = 0; k < num; ++k) {
    qrn_int64 pos = sp != nullptr ? sp[k] : k;
    if (pos < 0 || pos >= size)
      fail(QRN_RES_ERR_NAME_POSITION, "Position " + std::to_string(pos) + " (entry " + std::to_string(k) +
                                          " of sp) is outside the shape's " + std::to_string(size) + " positions.");
    std::string s = pieces[0];
    for (qrn_int32 d = 0; d < ndims; ++d) {
      qrn_int64 i = pos / stride[d] % dims[d];
      s += first_name[d] >= 0 ? std::string(names[first_name[d] + i]) : std::to_string(i);
      s += pieces[d + 1];
    }
    out[k] = std::move(s);
  }
  return out;
}

// ---- the kinds of named items ------------------------------------------------------

namespace {

struct Kind {
  NameTable Task::*table;
  void (*check)(const Task &, qrn_int64, const char *);
  const char *what;   // in messages: "constraint"
  const char *index;  // "constraint index"
};

const Kind con_kind{&Task::connames, check_con, "constraint", "constraint index"};
const Kind var_kind{&Task::varnames, check_var, "variable", "variable index"};
const Kind cone_kind{&Task::conenames, check_cone, "cone", "cone index"};

qrn_rescode put_name(qrn_task_t task, const char *fn, const Kind &kind, qrn_int32 idx, const char *name) {
  return api(task, fn, [&](Task &t) {
    kind.check(t, idx, kind.index);
    assign_names(t.*kind.table, {{idx, utf8_arg(name, "name")}}, kind.what);
  });
}

qrn_rescode name_len(qrn_task_t task, const char *fn, const Kind &kind, qrn_int32 idx, qrn_int32 *len) {
  return api(task, fn, [&](Task &t) {
    kind.check(t, idx, kind.index);
    put(len, static_cast<qrn_int32>((t.*kind.table).name(idx).size()));
  });
}

qrn_rescode get_name(qrn_task_t task, const char *fn, const Kind &kind, qrn_int32 idx, qrn_int32 size, char *name) {
  return api(task, fn, [&](Task &t) {
    kind.check(t, idx, kind.index);
    copy_name((t.*kind.table).name(idx), size, name);
  });
}

qrn_rescode name_index(qrn_task_t task, const char *fn, const Kind &kind, const char *name, qrn_int32 *asgn,
                       qrn_int32 *index) {
  return api(task, fn, [&](Task &t) {
    qrn_int64 k = find_name(t.*kind.table, name);
    put(asgn, static_cast<qrn_int32>(k >= 0));
    put(index, static_cast<qrn_int32>(k));
  });
}

qrn_rescode generate(qrn_task_t task, const char *fn, const Kind &kind, qrn_int32 num, const qrn_int32 *sub,
                     const char *fmt, qrn_int32 ndims, const qrn_int32 *dims, const qrn_int64 *sp,
                     qrn_int32 numnamedaxis, const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                     const char *const *names) {
  return api(task, fn, [&](Task &t) {
    need_count(num, "The number of items");
    need_array(sub, num, "sub");
    NameTable &table = t.*kind.table;
    for (qrn_int32 k = 0; k < num; ++k) kind.check(t, sub[k], kind.index);
    qrn_int32 most = -1;
    for (qrn_int32 k = 0; k < num; ++k) most = std::max(most, sub[k]);
    std::vector<bool> seen(static_cast<size_t>(most) + 1, false);
    for (qrn_int32 k = 0; k < num; ++k) {
      if (seen[sub[k]])
        fail(QRN_RES_ERR_DUP_INDEX, std::string("The ") + kind.index + " " + std::to_string(sub[k]) + " is listed twice.");
      seen[sub[k]] = true;
    }
    auto made = format_names(num, fmt, ndims, dims, sp, numnamedaxis, namedaxisidxs, numnames, names);
    NameAssignment items;
    items.reserve(num);
    for (qrn_int32 k = 0; k < num; ++k) items.emplace_back(sub[k], std::move(made[k]));
    assign_names(table, items, kind.what);
  });
}

qrn_rescode put_text(qrn_task_t task, const char *fn, std::string Task::*field, const char *text) {
  return api(task, fn, [&](Task &t) { t.*field = utf8_arg(text, "name"); });
}

qrn_rescode text_len(qrn_task_t task, const char *fn, std::string Task::*field, qrn_int32 *len) {
  return api(task, fn, [&](Task &t) { put(len, static_cast<qrn_int32>((t.*field).size())); });
}

qrn_rescode get_text(qrn_task_t task, const char *fn, std::string Task::*field, qrn_int32 size, char *out) {
  return api(task, fn, [&](Task &t) { copy_name(t.*field, size, out); });
}

// ---- the name report ------------------------------------------------------------------

// Why a name is not of the requested kind, or nullptr when it is.
const char *name_problem(const std::string &name, qrn_int32 nametype, qrn_int64 maxlen) {
  if (static_cast<qrn_int64>(name.size()) > maxlen) return "is longer than QRN_IPAR_NAME_LENGTH_WARN bytes";
  if (nametype == QRN_NAME_TYPE_TEXT)
    for (unsigned char c : name)
      if (c <= 0x20 || c == 0x7F) return "contains a blank or a control character";
  return nullptr;
}

constexpr int shown_per_kind = 5;

struct Report {
  Report(qrn_int32 type, qrn_int64 max) : nametype(type), maxlen(max) {}
  qrn_int32 nametype;
  qrn_int64 maxlen;
  qrn_int64 names = 0, bad = 0;
  std::string text;

  void item(const std::string &label, const std::string &name, qrn_int64 &bad_of_kind) {
    if (name.empty()) return;
    ++names;
    const char *why = name_problem(name, nametype, maxlen);
    if (why == nullptr) return;
    ++bad;
    if (++bad_of_kind <= shown_per_kind) text += "  " + label + " " + quoted(name) + " " + why + "\n";
  }
  void kind(const NameTable &table, const char *what) {
    qrn_int64 bad_of_kind = 0;
    for (size_t k = 0; k < table.names.size(); ++k)
      item(std::string(what) + " " + std::to_string(k), table.names[k], bad_of_kind);
    if (bad_of_kind > shown_per_kind)
      text += "  ... and " + std::to_string(bad_of_kind - shown_per_kind) + " more " + what + " names\n";
  }
};

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_putconname(qrn_task_t task, qrn_int32 i, const char *name) {
  return put_name(task, "QRN_putconname", con_kind, i, name);
}
QRN_API qrn_rescode QRN_CALL QRN_putvarname(qrn_task_t task, qrn_int32 j, const char *name) {
  return put_name(task, "QRN_putvarname", var_kind, j, name);
}
QRN_API qrn_rescode QRN_CALL QRN_putconename(qrn_task_t task, qrn_int32 k, const char *name) {
  return put_name(task, "QRN_putconename", cone_kind, k, name);
}
QRN_API qrn_rescode QRN_CALL QRN_putobjname(qrn_task_t task, const char *objname) {
  return put_text(task, "QRN_putobjname", &Task::objname, objname);
}
QRN_API qrn_rescode QRN_CALL QRN_puttaskname(qrn_task_t task, const char *taskname) {
  return put_text(task, "QRN_puttaskname", &Task::taskname, taskname);
}

QRN_API qrn_rescode QRN_CALL QRN_getconnamelen(qrn_task_t task, qrn_int32 i, qrn_int32 *len) {
  return name_len(task, "QRN_getconnamelen", con_kind, i, len);
}
QRN_API qrn_rescode QRN_CALL QRN_getvarnamelen(qrn_task_t task, qrn_int32 j, qrn_int32 *len) {
  return name_len(task, "QRN_getvarnamelen", var_kind, j, len);
}
QRN_API qrn_rescode QRN_CALL QRN_getconenamelen(qrn_task_t task, qrn_int32 k, qrn_int32 *len) {
  return name_len(task, "QRN_getconenamelen", cone_kind, k, len);
}
QRN_API qrn_rescode QRN_CALL QRN_getobjnamelen(qrn_task_t task, qrn_int32 *len) {
  return text_len(task, "QRN_getobjnamelen", &Task::objname, len);
}
QRN_API qrn_rescode QRN_CALL QRN_gettasknamelen(qrn_task_t task, qrn_int32 *len) {
  return text_len(task, "QRN_gettasknamelen", &Task::taskname, len);
}

QRN_API qrn_rescode QRN_CALL QRN_getconname(qrn_task_t task, qrn_int32 i, qrn_int32 sizename, char *name) {
  return get_name(task, "QRN_getconname", con_kind, i, sizename, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getvarname(qrn_task_t task, qrn_int32 j, qrn_int32 sizename, char *name) {
  return get_name(task, "QRN_getvarname", var_kind, j, sizename, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getconename(qrn_task_t task, qrn_int32 k, qrn_int32 sizename, char *name) {
  return get_name(task, "QRN_getconename", cone_kind, k, sizename, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getobjname(qrn_task_t task, qrn_int32 sizeobjname, char *objname) {
  return get_text(task, "QRN_getobjname", &Task::objname, sizeobjname, objname);
}
QRN_API qrn_rescode QRN_CALL QRN_gettaskname(qrn_task_t task, qrn_int32 sizetaskname, char *taskname) {
  return get_text(task, "QRN_gettaskname", &Task::taskname, sizetaskname, taskname);
}

QRN_API qrn_rescode QRN_CALL QRN_getconnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                 qrn_int32 *index) {
  return name_index(task, "QRN_getconnameindex", con_kind, name, asgn, index);
}
QRN_API qrn_rescode QRN_CALL QRN_getvarnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                 qrn_int32 *index) {
  return name_index(task, "QRN_getvarnameindex", var_kind, name, asgn, index);
}
QRN_API qrn_rescode QRN_CALL QRN_getconenameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                  qrn_int32 *index) {
  return name_index(task, "QRN_getconenameindex", cone_kind, name, asgn, index);
}

QRN_API qrn_rescode QRN_CALL QRN_generatevarnames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                                  const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                  const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                  const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                  const char *const *names) {
  return generate(task, "QRN_generatevarnames", var_kind, num, subj, fmt, ndims, dims, sp, numnamedaxis,
                  namedaxisidxs, numnames, names);
}
QRN_API qrn_rescode QRN_CALL QRN_generateconnames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subi,
                                                  const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                  const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                  const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                  const char *const *names) {
  return generate(task, "QRN_generateconnames", con_kind, num, subi, fmt, ndims, dims, sp, numnamedaxis,
                  namedaxisidxs, numnames, names);
}
QRN_API qrn_rescode QRN_CALL QRN_generateconenames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subk,
                                                   const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                   const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                   const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                   const char *const *names) {
  return generate(task, "QRN_generateconenames", cone_kind, num, subk, fmt, ndims, dims, sp, numnamedaxis,
                  namedaxisidxs, numnames, names);
}

QRN_API qrn_rescode QRN_CALL QRN_analyzenames(qrn_task_t task, qrn_int32 whichstream, qrn_int32 nametype) {
  return api(task, "QRN_analyzenames", [&](Task &t) {
    if (whichstream < 0 || whichstream > 3)
      fail(QRN_RES_ERR_STREAM, "Stream " + std::to_string(whichstream) + " is not one of 0..3.");
    if (nametype != QRN_NAME_TYPE_GENERIC && nametype != QRN_NAME_TYPE_TEXT)
      fail(QRN_RES_ERR_ARGUMENT, "Name type " + std::to_string(nametype) + " is not a qrn_nametype_e value.");
    Report r(nametype, t.par.integer[QRN_IPAR_NAME_LENGTH_WARN]);
    r.kind(t.connames, "constraint");
    r.kind(t.varnames, "variable");
    r.kind(t.conenames, "cone");
    qrn_int64 bad_single = 0;
    r.item("objective", t.objname, bad_single);
    r.item("task", t.taskname, bad_single);
    std::string head = std::string("Names checked for ") +
                       (nametype == QRN_NAME_TYPE_TEXT ? "the text file format" : "general use") + ": " +
                       std::to_string(r.names) + " names, " + std::to_string(r.bad) + " not valid.\n";
    t.write(whichstream, head + r.text);
  });
}

}  // extern "C"
