// Server addresses, job tokens and the binary job result (docs/remote.md).
#include "protocol.hpp"

#include <cstring>

namespace qrn::remote {

namespace {

bool is_alnum(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool is_hex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

[[noreturn]] void bad_address(const std::string &addr, const std::string &why) {
  std::string shown = addr.size() > 80 ? addr.substr(0, 80) + "..." : addr;
  fail(QRN_RES_ERR_REMOTE_ADDRESS, "The server address \"" + shown + "\" " + why +
                                       " (expected HOST:PORT or http://HOST:PORT).");
}

}  // namespace

Address parse_address(const char *addr) {
  if (addr == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument addr is null.");
  const std::string all = addr;
  std::string s = all;
  if (s.compare(0, 7, "http://") == 0) s = s.substr(7);
  else if (s.find("://") != std::string::npos) bad_address(all, "has a scheme other than http");
  if (!s.empty() && s.back() == '/') s.pop_back();
  Address a;
  const size_t at = s.rfind('@');
  if (at != std::string::npos) {
    a.token = s.substr(0, at);
    s = s.substr(at + 1);
    if (a.token.empty()) bad_address(all, "has an empty access token before '@'");
  }
  const size_t colon = s.rfind(':');
  if (colon == std::string::npos || colon == 0) bad_address(all, "names no host and port");
  a.host = s.substr(0, colon);
  const std::string port = s.substr(colon + 1);
  if (port.empty() || port.size() > 5) bad_address(all, "has no valid port");
  for (char c : port)
    if (c < '0' || c > '9') bad_address(all, "has no valid port");
  a.port = std::stoi(port);
  if (a.port < 1 || a.port > 65535) bad_address(all, "has a port outside 1..65535");
  if (a.host.front() == '[') {
    if (a.host.back() != ']' || a.host.size() < 3) bad_address(all, "has a malformed IPv6 host");
    for (size_t k = 1; k + 1 < a.host.size(); ++k)
      if (!is_hex(a.host[k]) && !(a.host[k] >= 'A' && a.host[k] <= 'F') && a.host[k] != ':' && a.host[k] != '.')
        bad_address(all, "has a malformed IPv6 host");
  } else {
    if (a.host.size() > 253) bad_address(all, "has a host name that is too long");
    for (char c : a.host)
      if (!is_alnum(c) && c != '-' && c != '.' && c != '_') bad_address(all, "has a character a host name cannot hold");
  }
  for (char c : a.token)
    if (static_cast<unsigned char>(c) <= ' ' || c == 0x7f) bad_address(all, "has a blank or control character in its token");
  return a;
}

bool valid_server_id(std::string_view id) {
  if (id.empty() || id.size() > 16) return false;
  for (char c : id)
    if (!is_alnum(c)) return false;
  return true;
}

bool valid_token(std::string_view token) {
  const size_t dash = token.find('-');
  if (dash == std::string_view::npos || token.size() - dash - 1 != 32) return false;
  if (!valid_server_id(token.substr(0, dash))) return false;
  for (char c : token.substr(dash + 1))
    if (!is_hex(c)) return false;
  return true;
}

std::string need_token(const char *token) {
  if (token == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument token is null.");
  const size_t n = strnlen(token, token_max + 1);
  std::string t(token, n);
  if (!valid_token(t)) {
    if (n > token_max) t = t.substr(0, token_max) + "...";
    fail(QRN_RES_ERR_REMOTE_TOKEN, "\"" + t + "\" is not a job token (SERVERID-32 hex digits).");
  }
  return t;
}

// ---- the binary result -------------------------------------------------------------

namespace {

constexpr char magic[8] = {'Q', 'R', 'N', 'R', 'S', 'L', 'T', '\0'};
constexpr uint32_t version = 1;

struct Writer {
  std::string out;
  template <class T>
  void put(T v) {
    out.append(reinterpret_cast<const char *>(&v), sizeof v);
  }
  template <class T>
  void counted(const std::vector<T> &v) {
    put<uint64_t>(v.size());
    if (!v.empty()) out.append(reinterpret_cast<const char *>(v.data()), v.size() * sizeof(T));
  }
  template <class T, size_t N>
  void fixed(const std::array<T, N> &v) {
    put<uint32_t>(static_cast<uint32_t>(N));
    out.append(reinterpret_cast<const char *>(v.data()), N * sizeof(T));
  }
  void str(const std::string &s) {
    put<uint64_t>(s.size());
    out.append(s);
  }
};

struct Reader {
  std::string_view in;
  size_t pos = 0;
  [[noreturn]] void bad(const std::string &what) const {
    fail(QRN_RES_ERR_REMOTE_PROTOCOL, "The server's result is garbled at byte " + std::to_string(pos) + ": " + what);
  }
  void need(uint64_t n) {
    if (n > in.size() - pos) bad("it ends early.");
  }
  template <class T>
  T get() {
    need(sizeof(T));
    T v;
    std::memcpy(&v, in.data() + pos, sizeof v);
    pos += sizeof v;
    return v;
  }
  template <class T>
  void counted(std::vector<T> &v) {
    const uint64_t n = get<uint64_t>();
    if (n > (in.size() - pos) / sizeof(T)) bad("a vector is longer than the data.");
    v.resize(n);
    if (n > 0) std::memcpy(v.data(), in.data() + pos, n * sizeof(T));
    pos += n * sizeof(T);
  }
  template <class T, size_t N>
  void fixed(std::array<T, N> &v) {
    if (get<uint32_t>() != N) bad("the number of information items differs from this library's.");
    need(N * sizeof(T));
    std::memcpy(v.data(), in.data() + pos, N * sizeof(T));
    pos += N * sizeof(T);
  }
  std::string str() {
    const uint64_t n = get<uint64_t>();
    need(n);
    std::string s(in.substr(pos, n));
    pos += n;
    return s;
  }
};

}  // namespace

std::string encode_result(const Task &t, const Result &r) {
  const qrn_rescode resp = r.resp;
  Writer w;
  w.out.append(magic, 8);
  w.put<uint32_t>(version);
  w.put<int32_t>(resp);
  w.put<int32_t>(r.trm);
  w.put<double>(r.queue_time);
  w.put<double>(r.turnaround);
  w.put<uint64_t>(r.request_bytes);
  w.str(r.message);
  w.str(r.log);
  // Information and solutions only from a run that was made.
  w.put<uint8_t>(resp == QRN_RES_OK);
  if (resp == QRN_RES_OK) {
    w.fixed(t.info.dou);
    w.fixed(t.info.integer);
    w.fixed(t.info.lint);
    uint32_t n = 0;
    for (const Solution &s : t.sol) n += s.defined;
    w.put<uint32_t>(n);
    for (qrn_int32 k = 0; k < QRN_SOL_COUNT; ++k) {
      const Solution &s = t.sol[k];
      if (!s.defined) continue;
      w.put<int32_t>(k);
      w.put<int32_t>(s.prosta);
      w.put<int32_t>(s.solsta);
      w.counted(s.skc), w.counted(s.skx), w.counted(s.skn);
      for (const auto *v : {&s.xc, &s.xx, &s.y, &s.slc, &s.suc, &s.slx, &s.sux, &s.snx, &s.doty}) w.counted(*v);
    }
  }
  w.out.append("END.", 4);
  return std::move(w.out);
}

Result decode_result(std::string_view data) {
  Reader r{data};
  if (data.size() < 12 || std::memcmp(data.data(), magic, 8) != 0) r.bad("it is not a job result.");
  r.pos = 8;
  if (r.get<uint32_t>() != version) r.bad("it is of an unknown version.");
  Result res;
  res.resp = r.get<int32_t>();
  res.trm = r.get<int32_t>();
  res.queue_time = r.get<double>();
  res.turnaround = r.get<double>();
  res.request_bytes = r.get<uint64_t>();
  res.message = r.str();
  res.log = r.str();
  const uint8_t ran = r.get<uint8_t>();
  if (ran > 1 || (ran == 1) != (res.resp == QRN_RES_OK)) r.bad("the response code and the content disagree.");
  if (ran) {
    res.has_info = true;
    r.fixed(res.info.dou);
    r.fixed(res.info.integer);
    r.fixed(res.info.lint);
    const uint32_t n = r.get<uint32_t>();
    if (n > QRN_SOL_COUNT) r.bad("too many solutions.");
    for (uint32_t k = 0; k < n; ++k) {
      const int32_t which = r.get<int32_t>();
      if (which < 0 || which >= QRN_SOL_COUNT || res.sol[which].defined) r.bad("a solution identifier is wrong.");
      Solution &s = res.sol[which];
      s.defined = true;
      s.prosta = r.get<int32_t>();
      s.solsta = r.get<int32_t>();
      r.counted(s.skc), r.counted(s.skx), r.counted(s.skn);
      for (auto *v : {&s.xc, &s.xx, &s.y, &s.slc, &s.suc, &s.slx, &s.sux, &s.snx, &s.doty}) r.counted(*v);
    }
  }
  if (data.size() - r.pos != 4 || data.substr(r.pos) != "END.") r.bad("its end mark is missing.");
  return res;
}

}  // namespace qrn::remote
