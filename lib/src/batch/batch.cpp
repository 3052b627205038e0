// QRN_optimizebatch: many tasks optimized at once on a pool of threads. Each
// worker takes the next task of the list and runs QRN_optimizetrm on it, so a
// task's run is exactly what it would be alone; the runs of one batch share a
// Batch (run.hpp) through which a callback's stop, a race that is won and the
// batch's deadline reach every run.
#include "errors.hpp"
#include "run.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

using namespace qrn;

namespace {

struct Work {
  opt::Batch batch;
  bool race = false;
  const qrn_task_t *tasks = nullptr;
  size_t count = 0;
  std::atomic<size_t> next{0};
  // One slot per task, each written by the one worker that took the task.
  std::vector<qrn_int32> trm, rc;

  void run_worker() {
    opt::BatchScope scope(&batch);
    for (;;) {
      const size_t k = next.fetch_add(1, std::memory_order_relaxed);
      if (k >= count) return;
      if (batch.timed && std::chrono::steady_clock::now() >= batch.deadline) batch.request_stop(opt::Ending::time);
      const opt::Ending why = batch.stopped();
      if (why != opt::Ending::normal) {
        trm[k] = opt::termination_code(why);
        rc[k] = QRN_RES_ERR_BATCH_NOT_STARTED;
        continue;
      }
      qrn_int32 code = QRN_RES_OK;
      rc[k] = QRN_optimizetrm(tasks[k], &code);
      trm[k] = rc[k] == QRN_RES_OK ? code : QRN_RES_OK;
      if (race && rc[k] == QRN_RES_OK && code == QRN_RES_OK) batch.request_stop(opt::Ending::race);
    }
  }
};

void check_tasks(qrn_int64 numtask, const qrn_task_t *task) {
  need_count(numtask, "The number of tasks");
  need_array(task, numtask, "task");
  std::vector<qrn_task_t> sorted;
  for (qrn_int64 k = 0; k < numtask; ++k)
    if (task[k] != nullptr) sorted.push_back(task[k]);
  std::sort(sorted.begin(), sorted.end());
  if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
    qrn_int64 first = 0, second = 0;
    const qrn_task_t dup = *std::adjacent_find(sorted.begin(), sorted.end());
    while (task[first] != dup) ++first;
    for (second = first + 1; task[second] != dup; ++second) {
    }
    fail(QRN_RES_ERR_BATCH_DUP_TASK, "Entries " + std::to_string(first) + " and " + std::to_string(second) +
                                         " of the task list are the same task.");
  }
}

}  // namespace

QRN_API qrn_rescode QRN_CALL QRN_optimizebatch(qrn_env_t env, qrn_int32 israce, qrn_real maxtime,
                                               qrn_int32 numthreads, qrn_int64 numtask, qrn_task_t *task,
                                               qrn_int32 *trmcode, qrn_int32 *rcode) {
  return env_api(env, "QRN_optimizebatch", [&](Env &) {
    const auto start = std::chrono::steady_clock::now();
    if (numthreads < 0)
      fail(QRN_RES_ERR_BATCH_NUM_THREADS, "The number of threads is negative (" + std::to_string(numthreads) + ").");
    if (std::isnan(maxtime)) fail(QRN_RES_ERR_BATCH_TIME, "The time limit is NaN.");
    check_tasks(numtask, task);
    if (numtask == 0) return;

    Work w;
    w.race = israce != 0;
    w.tasks = task;
    w.count = static_cast<size_t>(numtask);
    w.trm.assign(w.count, QRN_RES_OK);
    w.rc.assign(w.count, QRN_RES_OK);
    // Limits beyond a century count as none (the clock must not overflow).
    if (maxtime > 0 && maxtime < std::min(QRN_INFINITY, 3.0e9)) {
      w.batch.timed = true;
      w.batch.deadline =
          start + std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(maxtime));
    }
    size_t want = numthreads > 0 ? static_cast<size_t>(numthreads)
                                 : std::max<size_t>(1, std::thread::hardware_concurrency());
    want = std::min(want, w.count);

    std::vector<std::thread> pool;
    pool.reserve(want);
    for (size_t k = 0; k < want; ++k) {
      try {
        pool.emplace_back([&w] { w.run_worker(); });
      } catch (...) {
        break;  // go on with the threads that started
      }
    }
    for (std::thread &th : pool) th.join();
    if (pool.empty()) fail(QRN_RES_ERR_BATCH_THREAD_START, "No worker thread could be started.");

    if (trmcode != nullptr) std::copy(w.trm.begin(), w.trm.end(), trmcode);
    if (rcode != nullptr) std::copy(w.rc.begin(), w.rc.end(), rcode);
  });
}
