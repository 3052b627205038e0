// Clock, callbacks and log lines of one optimizer run.
#include "run.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace qrn::opt {

namespace {
thread_local Batch *current_batch = nullptr;
}

BatchScope::BatchScope(Batch *b) : saved_(current_batch) { current_batch = b; }
BatchScope::~BatchScope() { current_batch = saved_; }

Run::Run(Task &t, bool quiet_)
    : task(t),
      quiet(quiet_),
      loglevel(quiet_ ? 0 : t.par.integer[QRN_IPAR_LOG_LEVEL]),
      time_limit(t.par.dou[QRN_DPAR_TIME_LIMIT] >= QRN_INFINITY ? inf : t.par.dou[QRN_DPAR_TIME_LIMIT]),
      primal_tol(t.par.dou[QRN_DPAR_PRIMAL_FEAS_TOL]),
      dual_tol(t.par.dou[QRN_DPAR_DUAL_FEAS_TOL]),
      batch_(current_batch),
      start_(std::chrono::steady_clock::now()),
      cb_interval_(t.par.dou[QRN_DPAR_CALLBACK_INTERVAL]) {
  if (batch_ != nullptr && batch_->timed)
    time_limit = std::min(time_limit, std::chrono::duration<double>(batch_->deadline - start_).count());
}

// Quiet runs (a step inside a run) do not watch the batch's stop: the run
// around them does, and reports it.
bool Run::batch_stopped() {
  if (batch_ == nullptr || quiet) return false;
  const Ending why = batch_->stopped();
  if (why == Ending::normal) return false;
  ending = why;
  return true;
}

double Run::elapsed() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

bool Run::callback(qrn_int32 code) {
  if (quiet) return false;
  const double now = elapsed();
  dinf(task, QRN_DINF_TIME_TOTAL) = now;
  dinf(task, QRN_DINF_CALLBACK_LAST_TIME) = now;
  ++iinf(task, QRN_IINF_CALLBACKS);
  last_cb_ = now;
  if (task.callback == nullptr) return batch_stopped();
  const bool stop = task.progress(code);
  dinf(task, QRN_DINF_TIME_CALLBACKS) += elapsed() - now;
  if (stop) {
    ending = Ending::callback;
    iinf(task, QRN_IINF_STOPPED_BY_CALLBACK) = 1;
    if (batch_ != nullptr) batch_->request_stop(Ending::callback);
    return true;
  }
  return batch_stopped();
}

bool Run::iteration(qrn_int32 code) {
  if (stop_requested() || batch_stopped()) return true;
  const double now = elapsed();
  if (now > time_limit) {
    ending = Ending::time;
    return true;
  }
  if (!quiet && now - last_cb_ >= cb_interval_) return callback(code);
  return false;
}

bool Run::log_due() {
  if (loglevel >= 2) return true;
  if (loglevel < 1) return false;
  const double now = elapsed();
  if (now - last_log_ < 1.0) return false;
  last_log_ = now;
  return true;
}

void Run::log(const std::string &line, int level) {
  if (loglevel < level) return;
  ++iinf(task, QRN_IINF_LOG_LINES);
  task.write(QRN_STREAM_LOG, line + "\n");
}

std::string format(const char *fmt, ...) {
  char buf[512];
  va_list ap;
  va_start(ap, fmt);
  std::vsnprintf(buf, sizeof buf, fmt, ap);
  va_end(ap);
  return buf;
}

qrn_rescode termination_code(Ending e) {
  switch (e) {
    case Ending::normal: return QRN_RES_OK;
    case Ending::iterations: return QRN_RES_TRM_MAX_ITERATIONS;
    case Ending::time: return QRN_RES_TRM_MAX_TIME;
    case Ending::nodes: return QRN_RES_TRM_MAX_NODES;
    case Ending::solutions: return QRN_RES_TRM_MAX_SOLUTIONS;
    case Ending::gap: return QRN_RES_TRM_MIP_GAP;
    case Ending::callback: return QRN_RES_TRM_USER_CALLBACK;
    case Ending::numerical: return QRN_RES_TRM_NUMERICAL_PROBLEM;
    case Ending::race: return QRN_RES_TRM_BATCH_RACE;
  }
  return QRN_RES_OK;
}

}  // namespace qrn::opt
