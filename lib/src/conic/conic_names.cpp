// Names of domains, ACCs, DJCs and semidefinite variables, with the rules of
// the other item names (names.hpp): unique within a kind, UTF-8, generated
// from a format over an index shape.
#include "conic.hpp"
#include "names.hpp"
#include "semidefinite.hpp"

namespace qrn {
namespace {

struct Kind {
  NameTable Task::*table;
  void (*check)(const Task &, qrn_int64, const char *);
  const char *what;   // "ACC"
  const char *index;  // "ACC index"
};

const Kind dom_kind{&Task::domnames, [](const Task &t, qrn_int64 k, const char *w) { check_domain(t, k, w); }, "domain",
                    "Domain index"};
const Kind acc_kind{&Task::accnames, [](const Task &t, qrn_int64 k, const char *w) { check_acc(t, k, w); }, "ACC",
                    "ACC index"};
const Kind djc_kind{&Task::djcnames, [](const Task &t, qrn_int64 k, const char *w) { check_djc(t, k, w); }, "DJC",
                    "DJC index"};
const Kind barvar_kind{&Task::barvarnames, [](const Task &t, qrn_int64 k, const char *w) { check_barvar(t, k, w); },
                       "semidefinite variable", "Semidefinite variable index"};

// A table holds names only up to the last named item (NameTable::name reads
// the rest as unnamed); assign_names grows it.
NameTable &table(Task &t, const Kind &kind, size_t) { return t.*kind.table; }

size_t count(const Task &t, const Kind &kind) {
  if (&kind == &dom_kind) return t.conic.domains.size();
  if (&kind == &acc_kind) return t.conic.accs.size();
  if (&kind == &djc_kind) return t.conic.djcs.size();
  return t.sdp.dim.size();
}

qrn_rescode put_name(qrn_task_t task, const char *fn, const Kind &kind, qrn_int64 idx, const char *name) {
  return api(task, fn, [&](Task &t) {
    kind.check(t, idx, kind.index);
    if (idx > INT32_MAX) fail(QRN_RES_ERR_ARGUMENT, std::string("Items beyond index 2^31-1 cannot be named."));
    assign_names(table(t, kind, count(t, kind)), {{idx, utf8_arg(name, "name")}}, kind.what);
  });
}

qrn_rescode name_len(qrn_task_t task, const char *fn, const Kind &kind, qrn_int64 idx, qrn_int32 *len) {
  return api(task, fn, [&](Task &t) {
    kind.check(t, idx, kind.index);
    put(len, static_cast<qrn_int32>(table(t, kind, count(t, kind)).name(idx).size()));
  });
}

qrn_rescode get_name(qrn_task_t task, const char *fn, const Kind &kind, qrn_int64 idx, qrn_int32 size, char *name) {
  return api(task, fn, [&](Task &t) {
    kind.check(t, idx, kind.index);
    copy_name(table(t, kind, count(t, kind)).name(idx), size, name);
  });
}

template <class Index>
qrn_rescode generate(qrn_task_t task, const char *fn, const Kind &kind, qrn_int64 num, const Index *sub, const char *fmt,
                     qrn_int32 ndims, const qrn_int32 *dims, const qrn_int64 *sp, qrn_int32 numnamedaxis,
                     const qrn_int32 *namedaxisidxs, qrn_int64 numnames, const char *const *names) {
  return api(task, fn, [&](Task &t) {
    need_count(num, "The number of items");
    need_array(sub, num, "sub");
    NameTable &tab = table(t, kind, count(t, kind));
    std::vector<bool> seen(count(t, kind), false);
    for (qrn_int64 k = 0; k < num; ++k) {
      kind.check(t, sub[k], kind.index);
      if (sub[k] > INT32_MAX) fail(QRN_RES_ERR_ARGUMENT, "Items beyond index 2^31-1 cannot be named.");
      if (seen[sub[k]])
        fail(QRN_RES_ERR_DUP_INDEX, std::string("The ") + kind.index + " " + std::to_string(sub[k]) + " is listed twice.");
      seen[sub[k]] = true;
    }
    auto made = format_names(num, fmt, ndims, dims, sp, numnamedaxis, namedaxisidxs, numnames, names);
    NameAssignment items;
    items.reserve(num);
    for (qrn_int64 k = 0; k < num; ++k) items.emplace_back(sub[k], std::move(made[k]));
    assign_names(tab, items, kind.what);
  });
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_putdomainname(qrn_task_t task, qrn_int64 domidx, const char *name) {
  return put_name(task, "QRN_putdomainname", dom_kind, domidx, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getdomainnamelen(qrn_task_t task, qrn_int64 domidx, qrn_int32 *len) {
  return name_len(task, "QRN_getdomainnamelen", dom_kind, domidx, len);
}
QRN_API qrn_rescode QRN_CALL QRN_getdomainname(qrn_task_t task, qrn_int64 domidx, qrn_int32 sizename, char *name) {
  return get_name(task, "QRN_getdomainname", dom_kind, domidx, sizename, name);
}
QRN_API qrn_rescode QRN_CALL QRN_putaccname(qrn_task_t task, qrn_int64 accidx, const char *name) {
  return put_name(task, "QRN_putaccname", acc_kind, accidx, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getaccnamelen(qrn_task_t task, qrn_int64 accidx, qrn_int32 *len) {
  return name_len(task, "QRN_getaccnamelen", acc_kind, accidx, len);
}
QRN_API qrn_rescode QRN_CALL QRN_getaccname(qrn_task_t task, qrn_int64 accidx, qrn_int32 sizename, char *name) {
  return get_name(task, "QRN_getaccname", acc_kind, accidx, sizename, name);
}
QRN_API qrn_rescode QRN_CALL QRN_putdjcname(qrn_task_t task, qrn_int64 djcidx, const char *name) {
  return put_name(task, "QRN_putdjcname", djc_kind, djcidx, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcnamelen(qrn_task_t task, qrn_int64 djcidx, qrn_int32 *len) {
  return name_len(task, "QRN_getdjcnamelen", djc_kind, djcidx, len);
}
QRN_API qrn_rescode QRN_CALL QRN_getdjcname(qrn_task_t task, qrn_int64 djcidx, qrn_int32 sizename, char *name) {
  return get_name(task, "QRN_getdjcname", djc_kind, djcidx, sizename, name);
}
QRN_API qrn_rescode QRN_CALL QRN_putbarvarname(qrn_task_t task, qrn_int32 j, const char *name) {
  return put_name(task, "QRN_putbarvarname", barvar_kind, j, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getbarvarnamelen(qrn_task_t task, qrn_int32 j, qrn_int32 *len) {
  return name_len(task, "QRN_getbarvarnamelen", barvar_kind, j, len);
}
QRN_API qrn_rescode QRN_CALL QRN_getbarvarname(qrn_task_t task, qrn_int32 j, qrn_int32 sizename, char *name) {
  return get_name(task, "QRN_getbarvarname", barvar_kind, j, sizename, name);
}
QRN_API qrn_rescode QRN_CALL QRN_getbarvarnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                    qrn_int32 *index) {
  return api(task, "QRN_getbarvarnameindex", [&](Task &t) {
    qrn_int64 k = find_name(t.barvarnames, name);
    put(asgn, static_cast<qrn_int32>(k >= 0));
    put(index, static_cast<qrn_int32>(k));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_generateaccnames(qrn_task_t task, qrn_int64 num, const qrn_int64 *sub, const char *fmt,
                                                  qrn_int32 ndims, const qrn_int32 *dims, const qrn_int64 *sp,
                                                  qrn_int32 numnamedaxis, const qrn_int32 *namedaxisidxs,
                                                  qrn_int64 numnames, const char *const *names) {
  return generate(task, "QRN_generateaccnames", acc_kind, num, sub, fmt, ndims, dims, sp, numnamedaxis, namedaxisidxs,
                  numnames, names);
}
QRN_API qrn_rescode QRN_CALL QRN_generatedjcnames(qrn_task_t task, qrn_int64 num, const qrn_int64 *sub, const char *fmt,
                                                  qrn_int32 ndims, const qrn_int32 *dims, const qrn_int64 *sp,
                                                  qrn_int32 numnamedaxis, const qrn_int32 *namedaxisidxs,
                                                  qrn_int64 numnames, const char *const *names) {
  return generate(task, "QRN_generatedjcnames", djc_kind, num, sub, fmt, ndims, dims, sp, numnamedaxis, namedaxisidxs,
                  numnames, names);
}
QRN_API qrn_rescode QRN_CALL QRN_generatebarvarnames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                                     const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                     const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                     const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                     const char *const *names) {
  return generate(task, "QRN_generatebarvarnames", barvar_kind, num, subj, fmt, ndims, dims, sp, numnamedaxis,
                  namedaxisidxs, numnames, names);
}

}  // extern "C"
