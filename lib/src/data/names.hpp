// Item names shared by every kind of named item: UTF-8 checks, assignment
// that keeps names unique within a kind, lookup, copying a name out, and names
// generated from a format over an index shape.
#pragma once

#include "errors.hpp"

#include <string>
#include <utility>
#include <vector>

namespace qrn {

bool valid_utf8(const char *p, size_t n);
// The NUL-terminated text at p as a string; refuses a null pointer
// (QRN_RES_ERR_NULL_POINTER) and invalid UTF-8 (QRN_RES_ERR_NAME_UTF8).
std::string utf8_arg(const char *p, const char *what);

// Gives each listed item its new name ("" removes the name), all or nothing.
// A name may belong to one item of a kind only: a name held by an item outside
// the list, or given twice in the list, is refused with
// QRN_RES_ERR_NAME_DUPLICATE. `kind` names the items in messages ("variable").
using NameAssignment = std::vector<std::pair<qrn_int64, std::string>>;
void assign_names(NameTable &table, const NameAssignment &items, const char *kind);

// The item that has the name, or -1 ("" and null never match).
qrn_int64 find_name(const NameTable &table, const char *name);

// Writes name and a NUL into out, a buffer of size bytes; refuses a buffer that
// is too small (QRN_RES_ERR_TOO_SMALL) or a negative size. A null out writes
// nothing.
void copy_name(const std::string &name, qrn_int64 size, char *out);

// Names for num positions of the shape dims[0..ndims) from fmt (the format
// language is documented with QRN_generatevarnames in quarn.h). Entry k names
// position sp[k], or position k when sp is null.
std::vector<std::string> format_names(qrn_int64 num, const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                      const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                      const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                      const char *const *names);

}  // namespace qrn
