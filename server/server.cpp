// The optimization server: jobs, workers and the HTTP interface (docs/remote.md).
#include "server.hpp"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

namespace qrnserver {

namespace {

using nlohmann::json;

const char *const token_re = "([A-Za-z0-9]{1,16}-[0-9a-f]{32})";

double seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

std::string dump(const json &j) { return j.dump(-1, ' ', false, json::error_handler_t::replace); }

void reply(httplib::Response &res, int status, const json &j) {
  res.status = status;
  res.set_content(dump(j), "application/json");
}

void refuse(httplib::Response &res, int status, const std::string &msg) { reply(res, status, {{"error", msg}}); }

const char *state_name(Job::State s) {
  switch (s) {
    case Job::State::queued: return "queued";
    case Job::State::running: return "running";
    case Job::State::done: return "done";
  }
  return "?";
}

// Timing-safe comparison of the access token.
bool same(const std::string &a, const std::string &b) {
  unsigned char d = a.size() == b.size() ? 0 : 1;
  for (size_t k = 0; k < a.size(); ++k) d |= static_cast<unsigned char>(a[k] ^ b[k % std::max<size_t>(1, b.size())]);
  return d == 0;
}

void QRN_CALL on_text(void *handle, const char *text) {
  auto *job = static_cast<Job *>(handle);
  job->server->append_log(*job, text);
}

qrn_int32 QRN_CALL on_progress(qrn_task_t, void *handle, qrn_int32, const qrn_real *, const qrn_int32 *,
                               const qrn_int64 *) {
  auto *job = static_cast<Job *>(handle);
  return job->server->should_stop(*job) ? 1 : 0;
}

size_t QRN_CALL append_bytes(void *handle, const void *data, size_t count) {
  static_cast<std::string *>(handle)->append(static_cast<const char *>(data), count);
  return count;
}

std::string last_error(qrn_task_t task) {
  qrn_rescode code = 0;
  qrn_int32 len = 0;
  QRN_getlasterror(task, &code, 0, &len, nullptr);
  std::string msg(static_cast<size_t>(len) + 1, '\0');
  QRN_getlasterror(task, &code, len + 1, &len, msg.data());
  msg.resize(static_cast<size_t>(len));
  return msg;
}

bool number(const std::string &s, double &v) {
  char *end = nullptr;
  v = std::strtod(s.c_str(), &end);
  return !s.empty() && end == s.c_str() + s.size() && std::isfinite(v);
}

}  // namespace

Server::Server(Options opt) : opt_(std::move(opt)), http_(std::make_unique<httplib::Server>()) {
  if (opt_.workers <= 0) opt_.workers = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  if (opt_.server_id.empty()) {
    std::random_device rd;
    char b[16];
    std::snprintf(b, sizeof b, "%08x", static_cast<unsigned>(rd()));
    opt_.server_id = b;
  }
  if (QRN_makeenv(&env_, nullptr) != QRN_RES_OK) throw std::runtime_error("cannot make a library environment");
  routes();
}

Server::~Server() {
  for (auto &kv : jobs_) QRN_deletetask(&kv.second->task);
  QRN_deleteenv(&env_);
}

void Server::set_access_token(std::string token) { access_ = std::move(token); }

int Server::bind() {
  int port = opt_.port;
  if (port == 0) {
    port = http_->bind_to_any_port(opt_.host);
    if (port < 0) port = -1;
  } else if (!http_->bind_to_port(opt_.host, port)) {
    port = -1;
  }
  if (port <= 0) std::fprintf(stderr, "qrn-optserver: cannot listen on %s:%d\n", opt_.host.c_str(), opt_.port);
  return port;
}

std::string Server::new_token() {
  std::random_device rd;
  char b[40];
  std::snprintf(b, sizeof b, "%08x%08x%08x%08x", static_cast<unsigned>(rd()), static_cast<unsigned>(rd()),
                static_cast<unsigned>(rd()), static_cast<unsigned>(rd()));
  return opt_.server_id + "-" + b;
}

std::shared_ptr<Job> Server::find(const std::string &token) {
  auto it = jobs_.find(token);
  return it == jobs_.end() ? nullptr : it->second;
}

void Server::append_log(Job &job, const char *text) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (job.log_full) return;
  const size_t n = std::strlen(text);
  if (job.log.size() + n > opt_.max_log) {
    job.log += "\n[the server kept only the first part of the log]\n";
    job.log_full = true;
  } else {
    job.log.append(text, n);
  }
  if (std::memchr(text, '\n', n) != nullptr) changed_.notify_all();
}

bool Server::should_stop(Job &job) {
  std::lock_guard<std::mutex> lock(mutex_);
  return job.stop || stopping_ || Clock::now() > job.deadline;
}

void Server::routes() {
  httplib::Server &s = *http_;
  s.set_tcp_nodelay(true);
  s.set_keep_alive_max_count(1000);
  s.set_payload_max_length(opt_.max_body);
  s.set_read_timeout(10, 0);
  s.set_write_timeout(30, 0);
  const size_t threads = 16 + 2 * static_cast<size_t>(opt_.workers);
  s.new_task_queue = [threads] { return new httplib::ThreadPool(threads); };

  s.set_pre_routing_handler([this](const httplib::Request &req, httplib::Response &res) {
    res.set_header("X-Qrn-Server", "qrn-optserver/1 " + opt_.server_id);
    // A body announced too large is refused before it is read.
    const std::string length = req.get_header_value("Content-Length");
    if (!length.empty() && (length.size() > 15 || std::strtoull(length.c_str(), nullptr, 10) > opt_.max_body)) {
      res.set_header("Connection", "close");
      refuse(res, 413, "the request is larger than --max-body (" + std::to_string(opt_.max_body) + " bytes)");
      return httplib::Server::HandlerResponse::Handled;
    }
    if (access_.empty() || req.path.rfind("/v1/jobs", 0) != 0) return httplib::Server::HandlerResponse::Unhandled;
    const std::string auth = req.get_header_value("Authorization");
    if (auth.rfind("Bearer ", 0) == 0 && same(auth.substr(7), access_))
      return httplib::Server::HandlerResponse::Unhandled;
    refuse(res, 401, auth.empty() ? "this server needs an access token (Authorization: Bearer TOKEN)"
                                  : "the access token is wrong");
    return httplib::Server::HandlerResponse::Handled;
  });
  s.set_error_handler([this](const httplib::Request &, httplib::Response &res) {
    if (!res.has_header("X-Qrn-Server")) res.set_header("X-Qrn-Server", "qrn-optserver/1 " + opt_.server_id);
    if (!res.body.empty()) return;
    std::string msg = res.status == 404   ? "no such resource (see docs/remote.md)"
                      : res.status == 413 ? "the request is larger than --max-body (" + std::to_string(opt_.max_body) +
                                                " bytes)"
                      : res.status == 400 ? "the request is malformed"
                                          : "the request cannot be served (HTTP " + std::to_string(res.status) + ")";
    refuse(res, res.status, msg);
  });
  s.set_exception_handler([](const httplib::Request &, httplib::Response &res, std::exception_ptr ep) {
    std::string what = "unknown";
    try {
      if (ep) std::rethrow_exception(ep);
    } catch (const std::exception &e) {
      what = e.what();
    } catch (...) {
    }
    refuse(res, 500, "internal error: " + what);
  });

  // Submit a task file.
  s.Post("/v1/jobs", [this](const httplib::Request &req, httplib::Response &res) {
    if (req.body.empty()) return refuse(res, 400, "the body is empty: send a binary task file");
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (stopping_) return refuse(res, 503, "the server is shutting down");
      if (jobs_.size() >= opt_.max_jobs)
        return refuse(res, 503, "the server holds " + std::to_string(jobs_.size()) + " jobs (--max-jobs); try later");
    }
    auto job = std::make_shared<Job>();
    job->server = this;
    job->request_bytes = req.body.size();
    qrn_task_t task = nullptr;
    if (QRN_makeemptytask(env_, &task) != QRN_RES_OK) return refuse(res, 500, "cannot make a task");
    if (QRN_readtaskbuffer(task, req.body.data(), static_cast<qrn_int64>(req.body.size())) != QRN_RES_OK) {
      const std::string msg = last_error(task);
      QRN_deletetask(&task);
      return refuse(res, 400, "the body is not a valid task file: " + msg);
    }
    // Nothing the client sends names a file or directory on the server, nor
    // sends the job on to another server.
    for (qrn_int32 p : {QRN_SPAR_LOG_FILE, QRN_SPAR_SOLUTION_FILE, QRN_SPAR_SENSITIVITY_FILE, QRN_SPAR_DUMP_DIR,
                        QRN_SPAR_TEMP_DIR, QRN_SPAR_REMOTE_SERVER})
      QRN_putstrparam(task, p, "");
    double limit = QRN_INFINITY, interval = 0.1;
    QRN_getdouparam(task, QRN_DPAR_TIME_LIMIT, &limit);
    QRN_getdouparam(task, QRN_DPAR_CALLBACK_INTERVAL, &interval);
    limit = std::min(limit, opt_.max_time);
    QRN_putdouparam(task, QRN_DPAR_TIME_LIMIT, limit);
    QRN_putdouparam(task, QRN_DPAR_CALLBACK_INTERVAL, std::min(interval, 0.05));
    job->task = task;
    job->arrived = Clock::now();  // read and accepted: the queue time starts
    for (qrn_int32 k = 0; k < 4; ++k) QRN_linkfunctotaskstream(task, k, job.get(), on_text);
    QRN_putcallbackfunc(task, on_progress, job.get());
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (stopping_) {
        QRN_deletetask(&job->task);
        return refuse(res, 503, "the server is shutting down");
      }
      do job->token = new_token();
      while (jobs_.count(job->token) != 0);
      jobs_[job->token] = job;
      queue_.push_back(job);
    }
    work_.notify_one();
    reply(res, 202, {{"token", job->token}, {"server", opt_.server_id}});
  });

  auto job_of = [this](const httplib::Request &req, httplib::Response &res) -> std::shared_ptr<Job> {
    const std::string token = req.matches[1];
    auto job = find(token);
    if (job != nullptr) return job;
    const std::string id = token.substr(0, token.find('-'));
    if (id != opt_.server_id)
      refuse(res, 404, "job " + token + " was not made by this server (" + opt_.server_id +
                           "): a load balancer in front must route by the server id");
    else
      refuse(res, 404, "no job " + token + " (never made, or its result was fetched or dropped)");
    return nullptr;
  };

  // Poll: the job's state, waiting up to `wait` seconds for its end (or new
  // log lines after byte `log`).
  s.Get(std::string("/v1/jobs/") + token_re, [this, job_of](const httplib::Request &req, httplib::Response &res) {
    double wait = 0.0, from = 0.0;
    if (req.has_param("wait") && (!number(req.get_param_value("wait"), wait) || wait < 0))
      return refuse(res, 400, "wait must be a number of seconds >= 0");
    if (req.has_param("log") && (!number(req.get_param_value("log"), from) || from < 0))
      return refuse(res, 400, "log must be a byte offset >= 0");
    const bool want_log = !req.has_param("nolog");
    wait = std::min(wait, 10.0);
    std::unique_lock<std::mutex> lock(mutex_);
    auto job = job_of(req, res);
    if (job == nullptr) return;
    const uint64_t start = static_cast<uint64_t>(from);
    auto visible = [&] {
      if (job->state == Job::State::done) return static_cast<uint64_t>(job->log.size());
      const size_t nl = job->log.rfind('\n');
      return nl == std::string::npos ? uint64_t{0} : static_cast<uint64_t>(nl + 1);
    };
    changed_.wait_for(lock, std::chrono::duration<double>(wait), [&] {
      return job->state == Job::State::done || stopping_ || (want_log && visible() > start);
    });
    json j = {{"state", state_name(job->state)}};
    if (job->state == Job::State::done) {
      j["rescode"] = job->resp;
      j["trmcode"] = job->trm;
    }
    if (want_log) {
      const uint64_t end = visible();
      const uint64_t b = std::min(start, end);
      const uint64_t e = std::min(end, b + (1u << 20));
      j["log"] = job->log.substr(b, e - b);
      j["next"] = e;
    }
    lock.unlock();
    reply(res, 200, j);
  });

  s.Get(std::string("/v1/jobs/") + token_re + "/result",
        [this, job_of](const httplib::Request &req, httplib::Response &res) {
          std::shared_ptr<const std::string> body;
          {
            std::lock_guard<std::mutex> lock(mutex_);
            auto job = job_of(req, res);
            if (job == nullptr) return;
            if (job->state != Job::State::done)
              return reply(res, 409, {{"error", "the job has not ended"}, {"state", state_name(job->state)}});
            body = job->result;
          }
          res.status = 200;
          res.set_content(*body, "application/octet-stream");
        });

  s.Post(std::string("/v1/jobs/") + token_re + "/stop",
         [this, job_of](const httplib::Request &req, httplib::Response &res) {
           std::lock_guard<std::mutex> lock(mutex_);
           auto job = job_of(req, res);
           if (job == nullptr) return;
           job->stop = true;
           reply(res, 200, {{"state", state_name(job->state)}});
         });

  s.Delete(std::string("/v1/jobs/") + token_re, [this, job_of](const httplib::Request &req, httplib::Response &res) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto job = job_of(req, res);
    if (job == nullptr) return;
    if (job->state != Job::State::done)
      return reply(res, 409, {{"error", "the job has not ended: stop it first"}, {"state", state_name(job->state)}});
    jobs_.erase(job->token);
    reply(res, 200, {{"state", "dropped"}});
  });

  s.Get("/v1/health", [this](const httplib::Request &, httplib::Response &res) {
    std::lock_guard<std::mutex> lock(mutex_);
    size_t running = 0;
    for (auto &kv : jobs_) running += kv.second->state == Job::State::running;
    reply(res, 200, {{"server", opt_.server_id}, {"protocol", 1}, {"workers", opt_.workers},
                     {"queued", queue_.size()}, {"running", running}, {"held", jobs_.size()}, {"served", served_}});
  });
}

void Server::run_job(const std::shared_ptr<Job> &job) {
  qrn_int32 trm = QRN_RES_OK;
  const qrn_rescode resp = QRN_optimizetrm(job->task, &trm);
  const std::string msg = resp == QRN_RES_OK ? "" : last_error(job->task);
  std::string log;
  Clock::time_point started;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    log = job->log;
    started = job->started;
  }
  const auto now = Clock::now();
  auto out = std::make_shared<std::string>();
  const double queued = seconds(started - job->arrived), turnaround = seconds(now - job->arrived);
  qrn_rescode r = QRN_writeremoteresult(job->task, resp, trm, queued, turnaround,
                                        static_cast<qrn_int64>(job->request_bytes), msg.c_str(), log.c_str(),
                                        append_bytes, out.get());
  qrn_rescode final_resp = resp;
  if (r != QRN_RES_OK) {  // out of memory, most likely: say so without the solutions
    out->clear();
    final_resp = r;
    QRN_writeremoteresult(job->task, r, trm, queued, turnaround, static_cast<qrn_int64>(job->request_bytes),
                          "the server could not encode the result", "", append_bytes, out.get());
  }
  QRN_deletetask(&job->task);
  {
    std::lock_guard<std::mutex> lock(mutex_);
    job->result = std::move(out);
    job->resp = final_resp;
    job->trm = trm;
    job->ended = Clock::now();
    job->state = Job::State::done;
    ++served_;
  }
  changed_.notify_all();
}

void Server::worker() {
  for (;;) {
    std::shared_ptr<Job> job;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      work_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
      if (stopping_) return;
      job = queue_.front();
      queue_.pop_front();
      job->state = Job::State::running;
      job->started = Clock::now();
      double limit = opt_.max_time;
      QRN_getdouparam(job->task, QRN_DPAR_TIME_LIMIT, &limit);
      // The optimizer keeps its time limit; this is the backstop.
      job->deadline = job->started + std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>(std::min(limit, opt_.max_time) + 2.0));
    }
    changed_.notify_all();
    run_job(job);
  }
}

void Server::reaper() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stopping_) {
    changed_.wait_for(lock, std::chrono::seconds(1));
    const auto now = Clock::now();
    for (auto it = jobs_.begin(); it != jobs_.end();) {
      const Job &j = *it->second;
      if (j.state == Job::State::done && seconds(now - j.ended) > opt_.keep) it = jobs_.erase(it);
      else ++it;
    }
  }
}

void Server::run() {
  for (int k = 0; k < opt_.workers; ++k) threads_.emplace_back([this] { worker(); });
  threads_.emplace_back([this] { reaper(); });
  bool stop_now;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_now = stopping_;
  }
  if (!stop_now) http_->listen_after_bind();
  // Stopped: running jobs end at their next callback, queued ones are dropped.
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
    queue_.clear();
  }
  work_.notify_all();
  changed_.notify_all();
  for (auto &t : threads_) t.join();
  threads_.clear();
}

void Server::shutdown() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;  // long polls answer at once
  }
  changed_.notify_all();
  work_.notify_all();
  // A signal just before run() starts listening: wait for it to listen.
  for (int k = 0; k < 2000 && !http_->is_running(); ++k) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  http_->stop();
}

}  // namespace qrnserver
