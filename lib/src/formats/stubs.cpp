#include "formats.hpp"
namespace qrn {
void note_memory(Task &) {}
}
