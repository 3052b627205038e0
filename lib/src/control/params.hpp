// Parameters by name and as text, for the parameter file reader and writer and
// for reports. The values themselves are Task::par.dou[QRN_DPAR_...] etc.
#pragma once

#include "errors.hpp"

#include <string>

namespace qrn {

// The kind of a parameter, numbered as qrn_parametertype_e.
enum class ParKind { dou = QRN_PAR_TYPE_DOUBLE, integer = QRN_PAR_TYPE_INTEGER, str = QRN_PAR_TYPE_STRING };

struct ParRef {
  ParKind kind;
  qrn_int32 id;
};

qrn_int32 param_count(ParKind kind);
const char *param_name(ParRef p);  // "QRN_DPAR_OPT_TOL"; p must be valid
// The parameter of that name; false when there is none.
bool find_param(const char *name, ParRef &out);
// Sets the parameter from its text value (QRN_putparam's rules); throws a
// Failure (QRN_RES_ERR_PARAM_NAME, QRN_RES_ERR_PARAM_VALUE) and leaves the
// value unchanged when refused.
void set_param_text(Params &par, const char *name, const char *text);
// The value as text that set_param_text reads back to the same value (integer
// constants by their full names, doubles with 17 significant digits).
std::string param_text(const Params &par, ParRef p);
bool param_is_default(const Params &par, ParRef p);

}  // namespace qrn
