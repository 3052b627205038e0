// One optimizer run: its clock and limits, the callback with live information
// items, the log, and why it ended. The solver adapters report to it; it
// decides whether they stop.
#pragma once

#include "info.hpp"
#include "problem.hpp"

#include <atomic>
#include <chrono>
#include <string>

namespace qrn::opt {

enum class Ending { normal, iterations, time, nodes, solutions, gap, callback, numerical, race };

// What the runs of one batch (QRN_optimizebatch) share: a stop that ends them
// all, and the batch's deadline. The runs made on a thread while a
// BatchScope is alive belong to its batch.
struct Batch {
  std::atomic<int> stop{0};  // the Ending that stopped the batch; normal (0) while it goes on
  bool timed = false;
  std::chrono::steady_clock::time_point deadline;
  // Records why the batch stops; the first reason stays.
  void request_stop(Ending why) {
    int none = static_cast<int>(Ending::normal);
    stop.compare_exchange_strong(none, static_cast<int>(why));
  }
  Ending stopped() const { return static_cast<Ending>(stop.load(std::memory_order_acquire)); }
};

class BatchScope {
 public:
  explicit BatchScope(Batch *b);
  ~BatchScope();
  BatchScope(const BatchScope &) = delete;
  BatchScope &operator=(const BatchScope &) = delete;

 private:
  Batch *saved_;
};

class Run {
 public:
  // quiet: an internal solve (certificates, repair, analyses) that neither
  // logs nor calls back, but still honours the time limit.
  Run(Task &t, bool quiet);

  Task &task;
  const bool quiet;
  int loglevel;
  double time_limit;      // seconds, inf for none
  double primal_tol, dual_tol;
  Ending ending = Ending::normal;
  // The task's objective from the minimization form: sign * value + constant.
  double obj_sign = 1.0, obj_const = 0.0;
  double task_obj(double minform) const { return obj_sign * minform + obj_const; }

  double elapsed() const;
  // Calls the task's callback with caller code `code` (always, outside quiet
  // runs); true (and ending = callback) when it asks to stop, which in a
  // batch stops the whole batch. Also true when the batch was stopped.
  bool callback(qrn_int32 code);
  // An iteration of some phase: calls back at most every callback interval
  // and checks the time limit; true when the run must stop.
  bool iteration(qrn_int32 code);
  // A log line (newline added) at log level >= level.
  void log(const std::string &line, int level = 1);
  // True when an iteration line is due (level 2: every iteration; level 1:
  // about once a second).
  bool log_due();
  bool stop_requested() const {
    return ending == Ending::callback || ending == Ending::time || ending == Ending::race;
  }

 private:
  // True (and ending set) when the batch this run belongs to was stopped.
  bool batch_stopped();

  Batch *batch_;  // the batch of the thread that made the run, or null
  std::chrono::steady_clock::time_point start_;
  double cb_interval_;
  double last_cb_ = -1e300, last_log_ = -1e300;
};

// printf into a std::string.
std::string format(const char *fmt, ...);

// Name of an ending as a termination code.
qrn_rescode termination_code(Ending e);

}  // namespace qrn::opt
