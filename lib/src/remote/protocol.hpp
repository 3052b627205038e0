// What the library and the optimization server agree on (docs/remote.md):
// server addresses, job tokens, and the binary result of a job.
#pragma once

#include "errors.hpp"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace qrn::remote {

// "HOST:PORT", "http://HOST:PORT", optionally "http://TOKEN@HOST:PORT"; a
// trailing '/' is allowed. Fails with QRN_RES_ERR_REMOTE_ADDRESS.
struct Address {
  std::string host;    // as given (a name, an IPv4 address or [IPv6])
  int port = 0;
  std::string token;   // from "TOKEN@", "" when none
  std::string text() const { return host + ":" + std::to_string(port); }
};
Address parse_address(const char *addr);

// A job token: the server's id (1 to 16 letters and digits), '-', 32
// lowercase hex digits. Server ids and tokens never need escaping in a URL.
constexpr size_t token_max = 64;
bool valid_server_id(std::string_view id);
bool valid_token(std::string_view token);
// Fails with QRN_RES_ERR_REMOTE_TOKEN (null: QRN_RES_ERR_NULL_POINTER).
std::string need_token(const char *token);

// The result of a job as the server sends it. Numbers are little-endian;
// every count is checked against the bytes that remain before anything is
// allocated.
struct Result {
  qrn_rescode resp = QRN_RES_OK;
  qrn_int32 trm = QRN_RES_OK;
  double queue_time = 0.0;   // seconds the job waited for a worker
  double turnaround = 0.0;   // seconds from its arrival to its end
  uint64_t request_bytes = 0;  // size of the task file the server received
  std::string message, log;
  bool has_info = false;
  Info info;
  std::array<Solution, QRN_SOL_COUNT> sol;
};
// Made from the task after the server's run (info and solutions only when
// resp is QRN_RES_OK); r supplies everything else.
std::string encode_result(const Task &t, const Result &r);
// Fails with QRN_RES_ERR_REMOTE_PROTOCOL naming what is wrong.
Result decode_result(std::string_view data);

}  // namespace qrn::remote
