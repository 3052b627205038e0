// Information items.
#include "errors.hpp"

namespace qrn {
Info::Info() {}
}  // namespace qrn
