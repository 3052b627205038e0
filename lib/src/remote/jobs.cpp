// The two entry points the optimization server needs beside the public
// interface: a task file read from memory, and a job's result written.
#include "formats.hpp"
#include "protocol.hpp"

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_readtaskbuffer(qrn_task_t task, const void *data, qrn_int64 size) {
  return api(task, "QRN_readtaskbuffer", [&](Task &t) {
    need_count(size, "The size");
    need_array(data, size, "data");
    Source src{"<request>", std::string(static_cast<const char *>(data), static_cast<size_t>(size))};
    read_problem(t, QRN_DATA_FORMAT_TASK, src, size);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_writeremoteresult(qrn_task_t task, qrn_rescode resp, qrn_int32 trmcode,
                                                   qrn_real queuetime, qrn_real turnaround, qrn_int64 requestbytes,
                                                   const char *message, const char *log, qrn_write_fn func,
                                                   void *handle) {
  return api(task, "QRN_writeremoteresult", [&](Task &t) {
    if (func == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument func is null.");
    remote::Result r;
    r.resp = resp;
    r.trm = trmcode;
    r.queue_time = queuetime;
    r.turnaround = turnaround;
    r.request_bytes = requestbytes < 0 ? 0 : static_cast<uint64_t>(requestbytes);
    r.message = message != nullptr ? message : "";
    r.log = log != nullptr ? log : "";
    const std::string out = remote::encode_result(t, r);
    if (func(handle, out.data(), out.size()) < out.size()) fail(QRN_RES_ERR_WRITE, "The receiver took fewer bytes than given.");
  });
}

}  // extern "C"
