// Remote optimization: the library as a client of an optimization server.
#pragma once

#include "task.hpp"

namespace qrn::remote {

// Sends the task to the server at addr (with access token `access`, "" for
// none), waits, and stores the result as a local run would; returns the
// termination code. QRN_optimizetrm calls it when QRN_SPAR_REMOTE_SERVER is set.
qrn_int32 optimize(Task &t, const char *addr, const char *access);

// The address and token held in QRN_SPAR_REMOTE_SERVER (putoptserverhost).
qrn_int32 optimize_at_server_param(Task &t);

}  // namespace qrn::remote
