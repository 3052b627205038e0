// The library's text writer, shared by every function that writes a task's
// problem (to a caller's handle, to a file, ...).
#pragma once

#include "task.hpp"

#include <cstddef>
#include <functional>

namespace qrn {

// Receives the text in pieces of at most 64 KiB; throws a Failure to stop.
using Sink = std::function<void(const char *data, size_t size)>;

// Writes the task's problem in the text format (QRN_DATA_FORMAT_TEXT).
void write_text(const Task &t, const Sink &sink);

}  // namespace qrn
