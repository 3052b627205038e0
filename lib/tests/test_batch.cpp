// QRN_optimizebatch: many tasks at once, each as if alone; stops that reach
// the whole batch (a callback, a won race, the batch's time limit).
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "opt_fixture.hpp"

namespace {

std::pair<qrn_int32, qrn_int32> pc(qrn_int32 a, qrn_int32 b) { return {a, b}; }

void set_int(qrn_task_t t, qrn_int32 p, qrn_int32 v) { CHECK_EQ(QRN_putintparam(t, p, v), QRN_RES_OK); }

// max sum v_j x_j over 0/1 x with one knapsack row.
void knapsack(qrn_task_t t, int n) {
  Lp lp;
  lp.maximize = true;
  lp.a.assign(1, std::vector<double>(n));
  for (int j = 0; j < n; ++j) {
    lp.c.push_back(10 + (j * 37) % 23);
    lp.a[0][j] = 5 + (j * 53) % 19;
    lp.bkx.push_back(QRN_BK_RANGED), lp.blx.push_back(0), lp.bux.push_back(1);
  }
  lp.bkc = {QRN_BK_UPPER};
  lp.blc = {-INF};
  lp.buc = {n * 4.0};
  load(t, lp);
  std::vector<qrn_int32> sub(n), types(n, QRN_VAR_TYPE_INTEGER);
  for (int j = 0; j < n; ++j) sub[j] = j;
  CHECK_EQ(QRN_putvartypelist(t, n, sub.data(), types.data()), QRN_RES_OK);
}

// An LP that needs a few hundred simplex iterations: k x k transportation.
void transport(qrn_task_t t, int k) {
  Lp lp;
  const int n = k * k;
  lp.a.assign(2 * k, std::vector<double>(n, 0.0));
  for (int j = 0; j < n; ++j) {
    lp.a[j / k][j] = 1;
    lp.a[k + j % k][j] = 1;
    lp.c.push_back(1 + ((j / k) - (j % k)) * ((j / k) - (j % k)));
    lp.bkx.push_back(QRN_BK_LOWER), lp.blx.push_back(0), lp.bux.push_back(INF);
  }
  lp.bkc.assign(2 * k, QRN_BK_FIXED);
  lp.blc.assign(2 * k, k);
  lp.buc.assign(2 * k, k);
  load(t, lp);
}

// Six tasks of different kinds, made the same way twice.
std::vector<std::unique_ptr<Fixture>> mixed() {
  std::vector<std::unique_ptr<Fixture>> v;
  for (int k = 0; k < 6; ++k) v.push_back(std::make_unique<Fixture>());
  load(v[0]->task, small_lp());
  load(v[1]->task, small_lp(true));
  load(v[2]->task, infeasible_lp());
  load(v[3]->task, unbounded_lp());
  knapsack(v[4]->task, 25);
  transport(v[5]->task, 12);
  set_int(v[5]->task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_IPM);
  return v;
}

// Waits (at most 20 s) until flag is set.
void wait_for(const std::atomic<bool> &flag) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!flag.load() && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(std::chrono::microseconds(100));
}

}  // namespace

TEST(batch_gives_each_task_what_a_run_of_its_own_gives) {
  auto alone = mixed();
  std::vector<qrn_int32> trm_alone;
  for (auto &f : alone) {
    qrn_int32 trm = -1;
    CHECK_EQ(QRN_optimizetrm(f->task, &trm), QRN_RES_OK);
    trm_alone.push_back(trm);
  }
  for (qrn_int32 threads : {0, 1, 2, 4}) {
    auto many = mixed();
    std::vector<qrn_task_t> list;
    for (auto &f : many) list.push_back(f->task);
    list.push_back(nullptr);  // a null handle fails on its own
    std::vector<qrn_int32> trm(list.size(), -1), rc(list.size(), -1);
    CHECK_EQ(QRN_optimizebatch(many[0]->env, 0, -1.0, threads, static_cast<qrn_int64>(list.size()), list.data(),
                               trm.data(), rc.data()),
             QRN_RES_OK);
    for (size_t k = 0; k < many.size(); ++k) {
      CHECK_EQ(rc[k], QRN_RES_OK);
      CHECK_EQ(trm[k], trm_alone[k]);
      for (int s = 0; s < QRN_SOL_COUNT; ++s) {
        const qrn::Solution &a = sol(alone[k]->task, s), &b = sol(many[k]->task, s);
        CHECK_EQ(a.defined, b.defined);
        CHECK_EQ(pc(a.prosta, a.solsta), pc(b.prosta, b.solsta));
        CHECK_EQ(a.xx.size(), b.xx.size());
        for (size_t j = 0; j < a.xx.size() && j < b.xx.size(); ++j) CHECK(close(a.xx[j], b.xx[j], 1e-7));
        for (size_t j = 0; j < a.y.size() && j < b.y.size(); ++j) CHECK(close(a.y[j], b.y[j], 1e-7));
      }
    }
    CHECK_EQ(rc.back(), QRN_RES_ERR_NULL_TASK);
  }
  // Empty, and null result arrays.
  Fixture f;
  load(f.task, small_lp());
  CHECK_EQ(QRN_optimizebatch(f.env, 0, 0.0, 0, 0, nullptr, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(QRN_optimizebatch(f.env, 1, 0.0, 3, 1, &f.task, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(sol(f.task, QRN_SOL_BAS).solsta, QRN_SOL_STA_OPTIMAL);
}

TEST(batch_refusals_write_nothing_and_run_nothing) {
  Fixture f, g;
  load(f.task, small_lp());
  Capture err;
  CHECK_EQ(QRN_linkfunctoenvstream(f.env, QRN_STREAM_ERR, &err, Capture::take), QRN_RES_OK);
  qrn_task_t list[3] = {f.task, g.task, f.task};
  qrn_int32 trm[3] = {7, 7, 7}, rc[3] = {7, 7, 7};
  CHECK_EQ(QRN_optimizebatch(f.env, 0, 0.0, 0, 3, list, trm, rc), QRN_RES_ERR_BATCH_DUP_TASK);
  CHECK(err.text.find("Entries 0 and 2") != std::string::npos);
  CHECK_EQ(QRN_optimizebatch(f.env, 0, 0.0, -1, 2, list, trm, rc), QRN_RES_ERR_BATCH_NUM_THREADS);
  CHECK_EQ(QRN_optimizebatch(f.env, 0, NAN, 0, 2, list, trm, rc), QRN_RES_ERR_BATCH_TIME);
  CHECK_EQ(QRN_optimizebatch(f.env, 0, 0.0, 0, -1, list, trm, rc), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(QRN_optimizebatch(f.env, 0, 0.0, 0, 2, nullptr, trm, rc), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_optimizebatch(nullptr, 0, 0.0, 0, 2, list, trm, rc), QRN_RES_ERR_NULL_ENV);
  for (int k = 0; k < 3; ++k) CHECK_EQ(pc(trm[k], rc[k]), pc(7, 7));
  CHECK(!sol(f.task, QRN_SOL_BAS).defined);
  // Several null handles are not duplicates.
  qrn_task_t nulls[2] = {nullptr, nullptr};
  CHECK_EQ(QRN_optimizebatch(f.env, 0, 0.0, 0, 2, nulls, trm, rc), QRN_RES_OK);
  CHECK_EQ(pc(rc[0], rc[1]), pc(QRN_RES_ERR_NULL_TASK, QRN_RES_ERR_NULL_TASK));
}

namespace {
// A callback that records the caller codes it sees; with `wait`, it holds at
// BEGIN until that flag is set; it asks to stop at `stop_at`.
struct Watch {
  std::atomic<bool> began{false}, ended{false};
  const std::atomic<bool> *wait = nullptr;
  int stop_at = -1;
  int sleep_us = 0;  // on every iteration call
  static qrn_int32 QRN_CALL take(qrn_task_t, void *h, qrn_int32 caller, const qrn_real *, const qrn_int32 *,
                                 const qrn_int64 *) {
    auto *w = static_cast<Watch *>(h);
    if (caller == QRN_CALLBACK_BEGIN) {
      w->began = true;
      if (w->wait != nullptr) wait_for(*w->wait);
    }
    if (caller == QRN_CALLBACK_END) w->ended = true;
    if (w->sleep_us > 0 && caller != QRN_CALLBACK_BEGIN && caller != QRN_CALLBACK_END)
      std::this_thread::sleep_for(std::chrono::microseconds(w->sleep_us));
    return caller == w->stop_at ? 1 : 0;
  }
};
}  // namespace

TEST(batch_a_callback_that_asks_to_stop_stops_every_task) {
  // Two threads: A holds at BEGIN until B's run has ended; B stops at once.
  Fixture a, b, c;
  transport(a.task, 12);
  load(b.task, small_lp());
  load(c.task, small_lp());
  Watch wa, wb;
  wa.wait = &wb.ended;
  wb.wait = &wa.began;
  wb.stop_at = QRN_CALLBACK_BEGIN;
  QRN_putcallbackfunc(a.task, Watch::take, &wa);
  QRN_putcallbackfunc(b.task, Watch::take, &wb);
  qrn_task_t list[3] = {a.task, b.task, c.task};
  qrn_int32 trm[3], rc[3];
  CHECK_EQ(QRN_optimizebatch(a.env, 0, 0.0, 2, 3, list, trm, rc), QRN_RES_OK);
  CHECK_EQ(pc(trm[0], rc[0]), pc(QRN_RES_TRM_USER_CALLBACK, QRN_RES_OK));
  CHECK_EQ(pc(trm[1], rc[1]), pc(QRN_RES_TRM_USER_CALLBACK, QRN_RES_OK));
  CHECK_EQ(pc(trm[2], rc[2]), pc(QRN_RES_TRM_USER_CALLBACK, QRN_RES_ERR_BATCH_NOT_STARTED));
  qrn_int32 stopped = -1;
  QRN_getintinf(b.task, QRN_IINF_STOPPED_BY_CALLBACK, &stopped);
  CHECK_EQ(stopped, 1);
  QRN_getintinf(a.task, QRN_IINF_STOPPED_BY_CALLBACK, &stopped);
  CHECK_EQ(stopped, 0);  // A's own callback never asked
  CHECK(!sol(c.task, QRN_SOL_BAS).defined);
}

TEST(batch_race_stops_the_others_when_one_finishes) {
  // One thread: the first task wins, the others are not run.
  {
    Fixture a, b;
    load(a.task, small_lp());
    load(b.task, small_lp());
    qrn_task_t list[2] = {a.task, b.task};
    qrn_int32 trm[2], rc[2];
    CHECK_EQ(QRN_optimizebatch(a.env, 1, 0.0, 1, 2, list, trm, rc), QRN_RES_OK);
    CHECK_EQ(pc(trm[0], rc[0]), pc(QRN_RES_OK, QRN_RES_OK));
    CHECK_EQ(pc(trm[1], rc[1]), pc(QRN_RES_TRM_BATCH_RACE, QRN_RES_ERR_BATCH_NOT_STARTED));
  }
  // Two threads: a slow task (its callback sleeps at every iteration, from
  // the moment the quick one ended) loses the race while it runs. A task
  // that fails does not win: the refused one is listed first.
  {
    Fixture bad, quick, slow;
    knapsack(bad.task, 3);
    const qrn_int32 zero = 0;
    const double one = 1.0;
    CHECK_EQ(QRN_putqobj(bad.task, 1, &zero, &zero, &one), QRN_RES_OK);  // not concave: refused
    load(quick.task, small_lp());
    transport(slow.task, 15);
    set_int(slow.task, QRN_IPAR_PRESOLVE, QRN_OFF);
    CHECK_EQ(QRN_putdouparam(slow.task, QRN_DPAR_CALLBACK_INTERVAL, 0.0), QRN_RES_OK);
    Watch wq, ws;
    ws.wait = &wq.ended;
    ws.sleep_us = 20000;
    QRN_putcallbackfunc(quick.task, Watch::take, &wq);
    QRN_putcallbackfunc(slow.task, Watch::take, &ws);
    qrn_task_t list[3] = {bad.task, slow.task, quick.task};
    qrn_int32 trm[3], rc[3];
    CHECK_EQ(QRN_optimizebatch(quick.env, 1, 0.0, 2, 3, list, trm, rc), QRN_RES_OK);
    CHECK_EQ(rc[0], QRN_RES_ERR_OPT_NONCONVEX);
    CHECK_EQ(pc(trm[1], rc[1]), pc(QRN_RES_TRM_BATCH_RACE, QRN_RES_OK));
    CHECK_EQ(pc(trm[2], rc[2]), pc(QRN_RES_OK, QRN_RES_OK));
    CHECK_EQ(sol(slow.task, QRN_SOL_BAS).solsta, QRN_SOL_STA_UNKNOWN);
  }
}

TEST(batch_time_limit_ends_the_running_task_and_skips_the_rest) {
  Fixture slow, later;
  transport(slow.task, 15);
  set_int(slow.task, QRN_IPAR_PRESOLVE, QRN_OFF);
  CHECK_EQ(QRN_putdouparam(slow.task, QRN_DPAR_CALLBACK_INTERVAL, 0.0), QRN_RES_OK);
  Watch ws;
  ws.sleep_us = 20000;
  QRN_putcallbackfunc(slow.task, Watch::take, &ws);
  load(later.task, small_lp());
  qrn_task_t list[2] = {slow.task, later.task};
  qrn_int32 trm[2], rc[2];
  CHECK_EQ(QRN_optimizebatch(slow.env, 0, 0.1, 1, 2, list, trm, rc), QRN_RES_OK);
  CHECK_EQ(pc(trm[0], rc[0]), pc(QRN_RES_TRM_MAX_TIME, QRN_RES_OK));
  CHECK_EQ(pc(trm[1], rc[1]), pc(QRN_RES_TRM_MAX_TIME, QRN_RES_ERR_BATCH_NOT_STARTED));
}
