// Information items for the code that fills them (the optimizer, readers and
// writers) and for reports. The values are Task::info.dou[QRN_DINF_...] etc.
#pragma once

#include "task.hpp"

namespace qrn {

// Puts every item back to its initial value (0, or -1 for "not computed"),
// as at the start of an optimization.
void reset_info(Info &info);

// Typed access, so that an item of one kind cannot index another kind's array.
inline double &dinf(Task &t, qrn_dinfitem_e item) { return t.info.dou[item]; }
inline qrn_int32 &iinf(Task &t, qrn_iinfitem_e item) { return t.info.integer[item]; }
inline qrn_int64 &liinf(Task &t, qrn_liinfitem_e item) { return t.info.lint[item]; }

// "QRN_DINF_TIME_TOTAL" and so on; the item must be valid.
const char *dinf_name(qrn_int32 item);
const char *iinf_name(qrn_int32 item);
const char *liinf_name(qrn_int32 item);

}  // namespace qrn
