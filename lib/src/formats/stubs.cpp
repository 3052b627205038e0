#include "formats.hpp"
namespace qrn {
#define STUB(w, r) \
  void w(const Problem &, Out &, const WriteOptions &) { fail(QRN_RES_ERR_DATA_FORMAT, "not yet"); } \
  void r(const Source &, ReadContext &) { fail(QRN_RES_ERR_DATA_FORMAT, "not yet"); }
STUB(write_taskfile, read_taskfile)
STUB(write_cbf, read_cbf)
void note_memory(Task &) {}
}
