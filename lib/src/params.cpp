// Parameters: identifiers, names, defaults and ranges.
#include "errors.hpp"

namespace qrn {
Params::Params() {}
}  // namespace qrn
