// The library as a client of an optimization server (docs/remote.md):
// QRN_optimizermt, the asynchronous members and QRN_putoptserverhost.
#include "remote.hpp"

#include "exchange.hpp"
#include "formats.hpp"
#include "info.hpp"
#include "protocol.hpp"
#include "solfiles.hpp"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <cstring>
#include <thread>

namespace qrn::remote {

namespace {

using Clock = std::chrono::steady_clock;
using nlohmann::json;

double seconds_since(Clock::time_point t) { return std::chrono::duration<double>(Clock::now() - t).count(); }

// QRN_DPAR_REMOTE_TIMEOUT: 0 or infinite means no limit (a week).
double timeout_of(const Task &t) {
  const double v = t.par.dou[QRN_DPAR_REMOTE_TIMEOUT];
  return v <= 0.0 || v >= 1e6 ? 7 * 86400.0 : v;
}

void set_timeout(httplib::Client &c, void (httplib::Client::*fn)(time_t, time_t), double s) {
  const double whole = std::floor(s);
  (c.*fn)(static_cast<time_t>(whole), static_cast<time_t>((s - whole) * 1e6));
}

// One conversation with a server: its address, token, timeouts, retries, and
// the failures of each request turned into response codes.
class Session {
 public:
  Session(Task &t, const char *addr, const char *access)
      : address_(parse_address(addr)),
        access_(access_arg(access)),
        timeout_(timeout_of(t)),
        attempts_max_(std::max(1, t.par.integer[QRN_IPAR_REMOTE_RETRIES])),
        client_(strip_brackets(address_.host), address_.port) {
    client_.set_tcp_nodelay(true);
    client_.set_keep_alive(true);
    set_timeout(client_, &httplib::Client::set_connection_timeout, std::min(timeout_, 3600.0));
    set_timeout(client_, &httplib::Client::set_write_timeout, timeout_);
    if (!access_.empty()) client_.set_bearer_token_auth(access_);
  }

  int attempts() const { return attempts_; }
  // After a job exists, a refused connection means the server went away.
  void job_known(const std::string &token) { job_ = token; }

  // Submits the task file; returns the job's token.
  std::string submit(const std::string &body, const std::string &tag) {
    httplib::Headers h;
    if (!tag.empty()) h.emplace("X-Qrn-Tag", tag.substr(0, 200));
    auto res = send("submit", [&] { return client_.Post("/v1/jobs", h, body, "application/octet-stream"); }, 0.0,
                    false);
    if (res->status != 202 && res->status != 200) fail_status(*res, "submit the task");
    json j = parse_json(*res);
    if (!j.contains("token") || !j["token"].is_string()) garbled("the answer to a submission names no token");
    const std::string token = j["token"].get<std::string>();
    if (!valid_token(token) || token.size() > token_max) garbled("the server issued a malformed token");
    job_known(token);
    return token;
  }

  struct Poll {
    bool done = false;
    qrn_rescode resp = QRN_RES_OK;
    qrn_int32 trm = QRN_RES_OK;
    std::string log;
    uint64_t next = 0;
  };
  // The job's state; waits up to `wait` seconds on the server for it to end
  // (or for new log text after byte `log_from`).
  Poll poll(const std::string &token, double wait, uint64_t log_from, bool want_log) {
    char q[96];
    std::snprintf(q, sizeof q, "?wait=%.3f&log=%llu%s", wait, static_cast<unsigned long long>(log_from),
                  want_log ? "" : "&nolog=1");
    const std::string path = "/v1/jobs/" + token + q;
    auto res = send("poll the job", [&] { return client_.Get(path); }, wait, true);
    if (res->status != 200) fail_status(*res, "poll the job");
    json j = parse_json(*res);
    Poll p;
    if (!j.contains("state") || !j["state"].is_string()) garbled("a job state is missing");
    const std::string state = j["state"].get<std::string>();
    if (state != "queued" && state != "running" && state != "done") garbled("the job state \"" + state + "\" is unknown");
    p.done = state == "done";
    try {
      if (p.done) {
        p.resp = j.at("rescode").get<qrn_int32>();
        p.trm = j.at("trmcode").get<qrn_int32>();
      }
      if (want_log) {
        p.log = j.at("log").get<std::string>();
        p.next = j.at("next").get<uint64_t>();
      }
    } catch (const json::exception &) {
      garbled("the job state lacks a member or has one of the wrong type");
    }
    return p;
  }

  // The binary result, or nothing while the job runs.
  bool result(const std::string &token, Result &out) {
    auto res = send("fetch the result", [&] { return client_.Get("/v1/jobs/" + token + "/result"); }, 0.0, true);
    if (res->status == 409) return false;
    if (res->status != 200) fail_status(*res, "fetch the result");
    out = decode_result(res->body);
    return true;
  }

  void stop(const std::string &token) {
    auto res = send("stop the job", [&] { return client_.Post("/v1/jobs/" + token + "/stop"); }, 0.0, true);
    if (res->status != 200) fail_status(*res, "stop the job");
  }

  // Lets the server drop a result that was received; failures do not matter.
  void drop(const std::string &token) noexcept {
    try {
      client_.set_connection_timeout(1, 0);
      client_.set_read_timeout(1, 0);
      client_.Delete("/v1/jobs/" + token);
    } catch (...) {
    }
  }
  // A last attempt to stop a job whose wait was given up: one try, short.
  void stop_quietly(const std::string &token) noexcept {
    try {
      attempts_max_ = 1;
      timeout_ = std::min(timeout_, 1.0);
      set_timeout(client_, &httplib::Client::set_connection_timeout, timeout_);
      stop(token);
    } catch (...) {
    }
  }

 private:
  static std::string strip_brackets(const std::string &h) {
    return h.size() > 2 && h.front() == '[' ? h.substr(1, h.size() - 2) : h;
  }
  static std::string access_arg(const char *access) {
    if (access == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument accesstoken is null.");
    std::string a = access;
    for (char c : a)
      if (static_cast<unsigned char>(c) <= ' ' || c == 0x7f)
        fail(QRN_RES_ERR_ARGUMENT, "The access token holds a blank or control character.");
    return a;
  }
  std::string where() const {
    return "the optimization server at " + address_.text() + (job_.empty() ? "" : " (job " + job_ + ")");
  }
  [[noreturn]] void garbled(const std::string &what) const {
    fail(QRN_RES_ERR_REMOTE_PROTOCOL, "The answer of " + where() + " is garbled: " + what + ".");
  }

  json parse_json(const httplib::Response &r) const {
    json j = json::parse(r.body, nullptr, false);
    if (j.is_discarded() || !j.is_object()) garbled("it is not a JSON object");
    return j;
  }

  // The server's own message of a refusal, when it sent one.
  static std::string message_of(const httplib::Response &r) {
    json j = json::parse(r.body, nullptr, false);
    if (!j.is_discarded() && j.is_object() && j.contains("error") && j["error"].is_string())
      return j["error"].get<std::string>();
    std::string b = r.body.substr(0, 160);
    for (char &c : b)
      if (static_cast<unsigned char>(c) < ' ') c = ' ';
    return b.empty() ? "no message" : "\"" + b + "\"";
  }

  [[noreturn]] void fail_status(const httplib::Response &r, const char *what) const {
    const std::string msg = "Cannot " + std::string(what) + " at " + where() + ": HTTP " + std::to_string(r.status) +
                            ", " + message_of(r) + ".";
    const bool ours = r.has_header("X-Qrn-Server");
    switch (r.status) {
      case 400: fail(ours ? QRN_RES_ERR_REMOTE_REFUSED : QRN_RES_ERR_REMOTE_PROTOCOL, msg);
      case 401:
      case 403: fail(QRN_RES_ERR_REMOTE_AUTH, msg);
      case 404:
      case 410: fail(ours ? QRN_RES_ERR_REMOTE_JOB_UNKNOWN : QRN_RES_ERR_REMOTE_PROTOCOL, msg);
      case 413: fail(QRN_RES_ERR_REMOTE_TOO_LARGE, msg);
      case 503: fail(QRN_RES_ERR_REMOTE_BUSY, msg);
      case 502:
      case 504: fail(job_.empty() ? QRN_RES_ERR_REMOTE_CONNECT : QRN_RES_ERR_REMOTE_LOST, msg);
      default: break;
    }
    fail(r.status >= 500 && r.status < 600 ? QRN_RES_ERR_REMOTE_SERVER : QRN_RES_ERR_REMOTE_PROTOCOL, msg);
  }

  // Runs one request with the read timeout set for it: connection failures
  // are tried again (QRN_IPAR_REMOTE_RETRIES attempts in all, 50, 100, 200 ms
  // ... apart); an idempotent request is also sent once more when a kept-alive
  // connection broke at once. Every other failure ends the call.
  template <class Fn>
  httplib::Result send(const char *what, Fn fn, double wait, bool idempotent) {
    set_timeout(client_, &httplib::Client::set_read_timeout, timeout_ + wait);
    double pause = 0.05;
    bool resent = false;
    for (int k = 1;; ++k) {
      ++attempts_;
      const auto start = Clock::now();
      httplib::Result res = fn();
      if (res) return res;
      const httplib::Error e = res.error();
      const double took = seconds_since(start);
      const bool connect = e == httplib::Error::Connection || e == httplib::Error::ConnectionTimeout;
      if (connect && k < attempts_max_ && took < timeout_) {
        std::this_thread::sleep_for(std::chrono::duration<double>(pause));
        pause = std::min(2 * pause, 1.0);
        continue;
      }
      if (!connect && idempotent && !resent && took < 0.5 && e != httplib::Error::Canceled) {
        resent = true;
        continue;
      }
      const std::string cause = httplib::to_string(e);
      const std::string head = "Cannot " + std::string(what) + " at " + where() + ": ";
      if (e == httplib::Error::ConnectionTimeout || (connect && took >= timeout_))
        fail(QRN_RES_ERR_REMOTE_TIMEOUT, head + "no connection within " + seconds(timeout_) + ".");
      if (connect) {
        if (!job_.empty())
          fail(QRN_RES_ERR_REMOTE_LOST, head + "the server went away (no connection after " + std::to_string(k) +
                                            " attempts).");
        fail(QRN_RES_ERR_REMOTE_CONNECT,
             head + "connection refused or host unreachable (" + std::to_string(k) + " attempts).");
      }
      if ((e == httplib::Error::Read || e == httplib::Error::Write) && took >= 0.9 * (timeout_ + wait))
        fail(QRN_RES_ERR_REMOTE_TIMEOUT, head + "no answer within " + seconds(timeout_ + wait) + ".");
      if (e == httplib::Error::Read || e == httplib::Error::Write)
        fail(QRN_RES_ERR_REMOTE_LOST, head + "the connection broke off: the server went away or closed it (" +
                                          (e == httplib::Error::Read ? "reading" : "writing") + " failed).");
      fail(QRN_RES_ERR_REMOTE_PROTOCOL, head + cause + ".");
    }
  }
  static std::string seconds(double s) {
    char b[40];
    std::snprintf(b, sizeof b, "%.3g s", s);
    return b;
  }

  Address address_;
  std::string access_;
  double timeout_;
  int attempts_max_;
  int attempts_ = 0;
  std::string job_;
  httplib::Client client_;
};

// The task as the server receives it: the binary task file, parameters and
// solutions included.
std::string task_file(Task &t) {
  qrn_task_t h = static_cast<qrn_task_s *>(&t);
  FileProblem p = extract(h);  // every kind of data, conic and semidefinite included
  WriteOptions opt = write_options(t);
  opt.solutions = false;  // a run replaces them all
  std::string buf;
  Sink sink = [&](const char *d, size_t n) { buf.append(d, n); };
  Out out(sink, opt.precision);
  write_taskfile(p, out, opt);
  out.flush();
  return buf;
}

// Stores a job's result as QRN_optimizetrm stores a run: every solution
// replaced, the information items those of the server's run except what a
// local run keeps, plus the remote items. Checks everything first.
void store(Task &t, Result &r, int attempts, double remote_time) {
  SolSizes sizes;
  sizes.numcon = t.numcon, sizes.numvar = t.numvar, sizes.numcone = static_cast<qrn_int32>(t.cones.size());
  sizes.accntot = t.conic.accstart.back();
  sizes.bardim = t.sdp.dim;
  for (qrn_int32 k = 0; k < QRN_SOL_COUNT; ++k) {
    const Solution &s = r.sol[k];
    if (!s.defined) continue;
    if (prosta_name(s.prosta) == nullptr || solsta_name(s.solsta) == nullptr)
      fail(QRN_RES_ERR_REMOTE_PROTOCOL, std::string("The server's ") + soltype_name(k) + " solution has a status out of range.");
    check_solution_sizes(s, sizes, QRN_RES_ERR_SOL_SIZE,
                         std::string("The server's ") + soltype_name(k) + " solution (the task changed since it was sent?)");
  }
  Info info = r.info;
  const Info &old = t.info;
  for (qrn_dinfitem_e k : {QRN_DINF_TIME_READ, QRN_DINF_TIME_WRITE, QRN_DINF_TIME_SENSITIVITY, QRN_DINF_TIME_REPAIR,
                           QRN_DINF_REPAIR_PENALTY, QRN_DINF_REPAIR_OBJ})
    info.dou[k] = old.dou[k];
  for (qrn_int32 k = QRN_IINF_READ_NUM_LINES; k <= QRN_IINF_READ_FORMAT; ++k) info.integer[k] = old.integer[k];
  for (qrn_int32 k : {QRN_IINF_REPAIR_RELAXED_CONS, QRN_IINF_REPAIR_RELAXED_VARS, QRN_IINF_SENSITIVITY_ITEMS})
    info.integer[k] = old.integer[k];
  for (qrn_int32 k : {QRN_LIINF_READ_BYTES, QRN_LIINF_WRITE_BYTES}) info.lint[k] = old.lint[k];
  info.integer[QRN_IINF_OPT_CALLS] = old.integer[QRN_IINF_OPT_CALLS] + 1;
  info.integer[QRN_IINF_REMOTE_SOLVES] = old.integer[QRN_IINF_REMOTE_SOLVES] + 1;
  info.integer[QRN_IINF_REMOTE_ATTEMPTS] = attempts;
  info.dou[QRN_DINF_TIME_REMOTE] = remote_time;
  info.dou[QRN_DINF_REMOTE_QUEUE_TIME] = r.queue_time;
  info.lint[QRN_LIINF_REMOTE_BYTES_SENT] = static_cast<qrn_int64>(r.request_bytes);
  t.sol = std::move(r.sol);
  t.basis_factor.reset();
  t.info = info;
}

void write_token(char *out, const std::string &token) {
  std::memcpy(out, token.data(), token.size());
  out[token.size()] = '\0';
}

}  // namespace

qrn_int32 optimize(Task &t, const char *addr, const char *access) {
  const auto start = Clock::now();
  Session s(t, addr, access);
  const std::string body = task_file(t);
  const double limit = t.par.dou[QRN_DPAR_TIME_LIMIT];
  const double deadline = limit < QRN_INFINITY ? limit + timeout_of(t) : INFINITY;
  const std::string token = s.submit(body, t.par.str[QRN_SPAR_REMOTE_TAG]);
  bool stopping = false;
  auto ask_stop = [&] {
    if (!stopping) s.stop(token);
    stopping = true;
  };
  try {
    if (t.callback != nullptr && t.progress(QRN_CALLBACK_BEGIN)) ask_stop();
    const double interval = std::clamp(t.par.dou[QRN_DPAR_CALLBACK_INTERVAL], 0.02, 1.0);
    uint64_t forwarded = 0;
    double last_cb = seconds_since(start);
    for (;;) {
      const double now = seconds_since(start);
      const double wait = std::max(0.0, std::min({t.callback != nullptr ? interval - (now - last_cb) : 1.0,
                                                  deadline - now, 1.0}));
      Session::Poll p = s.poll(token, wait, forwarded, true);
      if (!p.log.empty()) t.write(QRN_STREAM_LOG, p.log);
      forwarded = std::max(forwarded, p.next);
      if (p.done) break;
      if (seconds_since(start) > deadline) {
        s.stop_quietly(token);
        stopping = true;
        fail(QRN_RES_ERR_REMOTE_TIMEOUT, "Job " + token + " did not end within the time limit plus " +
                                             "QRN_DPAR_REMOTE_TIMEOUT; it was asked to stop.");
      }
      if (t.callback != nullptr && seconds_since(start) - last_cb >= interval) {
        last_cb = seconds_since(start);
        if (!stopping && t.progress(QRN_CALLBACK_ITERATION)) ask_stop();
      }
    }
    Result r;
    if (!s.result(token, r)) fail(QRN_RES_ERR_REMOTE_PROTOCOL, "The server reported job " + token + " done without a result.");
    s.drop(token);
    if (r.log.size() > forwarded) t.write(QRN_STREAM_LOG, r.log.substr(forwarded));
    if (r.resp != QRN_RES_OK)
      fail(r.resp, "The optimization server could not run the job: " + r.message);
    store(t, r, s.attempts(), seconds_since(start));
    if (t.callback != nullptr) t.progress(QRN_CALLBACK_END);
    return r.trm;
  } catch (const Failure &f) {
    // A wait given up leaves no job running behind, unless the server is gone.
    const bool gone = f.code == QRN_RES_ERR_REMOTE_LOST || f.code == QRN_RES_ERR_REMOTE_CONNECT ||
                      f.code == QRN_RES_ERR_REMOTE_TIMEOUT;
    if (!stopping && !gone) s.stop_quietly(token);
    throw;
  } catch (...) {
    if (!stopping) s.stop_quietly(token);
    throw;
  }
}

qrn_int32 optimize_at_server_param(Task &t) {
  const Address a = parse_address(t.par.str[QRN_SPAR_REMOTE_SERVER].c_str());
  return optimize(t, ("http://" + a.text()).c_str(), a.token.c_str());
}

}  // namespace qrn::remote

using namespace qrn;
using namespace qrn::remote;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_optimizermt(qrn_task_t task, const char *addr, const char *accesstoken,
                                             qrn_int32 *trmcode) {
  return api(task, "QRN_optimizermt", [&](Task &t) { put(trmcode, remote::optimize(t, addr, accesstoken)); });
}

QRN_API qrn_rescode QRN_CALL QRN_asyncoptimize(qrn_task_t task, const char *addr, const char *accesstoken,
                                               char *token) {
  return api(task, "QRN_asyncoptimize", [&](Task &t) {
    if (token == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument token is null.");
    Session s(t, addr, accesstoken);
    write_token(token, s.submit(task_file(t), t.par.str[QRN_SPAR_REMOTE_TAG]));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_asyncstop(qrn_task_t task, const char *addr, const char *accesstoken,
                                           const char *token) {
  return api(task, "QRN_asyncstop", [&](Task &t) {
    const std::string tok = need_token(token);
    Session s(t, addr, accesstoken);
    s.job_known(tok);
    s.stop(tok);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_asyncpoll(qrn_task_t task, const char *addr, const char *accesstoken,
                                           const char *token, qrn_int32 *respavailable, qrn_rescode *resp,
                                           qrn_rescode *trm) {
  return api(task, "QRN_asyncpoll", [&](Task &t) {
    const std::string tok = need_token(token);
    Session s(t, addr, accesstoken);
    s.job_known(tok);
    Session::Poll p = s.poll(tok, 0.0, 0, false);
    put(respavailable, p.done ? 1 : 0);
    put(resp, p.resp);
    put(trm, p.trm);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_asyncgetresult(qrn_task_t task, const char *addr, const char *accesstoken,
                                                const char *token, qrn_int32 *respavailable, qrn_rescode *resp,
                                                qrn_rescode *trm) {
  return api(task, "QRN_asyncgetresult", [&](Task &t) {
    const std::string tok = need_token(token);
    Session s(t, addr, accesstoken);
    s.job_known(tok);
    Result r;
    if (!s.result(tok, r)) {
      put(respavailable, 0);
      put(resp, static_cast<qrn_rescode>(QRN_RES_OK));
      put(trm, static_cast<qrn_rescode>(QRN_RES_OK));
      return;
    }
    if (r.resp == QRN_RES_OK) store(t, r, s.attempts(), r.turnaround);
    if (!r.log.empty()) t.write(QRN_STREAM_LOG, r.log);
    s.drop(tok);
    put(respavailable, 1);
    put(resp, r.resp);
    put(trm, r.trm);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putoptserverhost(qrn_task_t task, const char *host) {
  return api(task, "QRN_putoptserverhost", [&](Task &t) {
    if (host == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument host is null.");
    if (*host != '\0') parse_address(host);
    t.par.str[QRN_SPAR_REMOTE_SERVER] = host;
  });
}

}  // extern "C"
