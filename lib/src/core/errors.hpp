// Failure reporting and the guard around every exported function.
#pragma once

#include "task.hpp"

#include <cstdint>
#include <new>
#include <string>

namespace qrn {

struct Failure {
  qrn_rescode code;
  std::string msg;
};

[[noreturn]] inline void fail(qrn_rescode code, std::string msg) { throw Failure{code, std::move(msg)}; }

// Records a failure as the task's last error and writes it to the error stream.
void report(Task &t, qrn_rescode code, const std::string &fn, const std::string &msg);

// Runs body(task) for the exported function fn: a null task, a Failure or any
// other C++ exception become a response code; nothing escapes.
template <class Body>
qrn_rescode api(qrn_task_t task, const char *fn, Body &&body) noexcept {
  if (task == nullptr) return QRN_RES_ERR_NULL_TASK;
  Task &t = *task;
  try {
    body(t);
    return QRN_RES_OK;
  } catch (const Failure &f) {
    report(t, f.code, fn, f.msg);
    return f.code;
  } catch (const std::bad_alloc &) {
    report(t, QRN_RES_ERR_SPACE, fn, "Out of memory.");
    return QRN_RES_ERR_SPACE;
  } catch (...) {
    report(t, QRN_RES_ERR_INTERNAL, fn, "Internal error.");
    return QRN_RES_ERR_INTERNAL;
  }
}

// Records nothing (an environment has no last error) but writes the failure
// to the environment's error stream.
inline void report(Env &e, qrn_rescode code, const std::string &fn, const std::string &msg) {
  e.write(QRN_STREAM_ERR, fn + ": error " + std::to_string(code) + ": " + msg + "\n");
}

// api() for functions of an environment: a null env is QRN_RES_ERR_NULL_ENV;
// a Failure or any other C++ exception becomes a response code.
template <class Body>
qrn_rescode env_api(qrn_env_t env, const char *fn, Body &&body) noexcept {
  if (env == nullptr) return QRN_RES_ERR_NULL_ENV;
  Env &e = *env;
  try {
    body(e);
    return QRN_RES_OK;
  } catch (const Failure &f) {
    report(e, f.code, fn, f.msg);
    return f.code;
  } catch (const std::bad_alloc &) {
    report(e, QRN_RES_ERR_SPACE, fn, "Out of memory.");
    return QRN_RES_ERR_SPACE;
  } catch (...) {
    report(e, QRN_RES_ERR_INTERNAL, fn, "Internal error.");
    return QRN_RES_ERR_INTERNAL;
  }
}

// ---- shared checks; each throws a Failure naming the offending argument ----

inline void need_count(qrn_int64 n, const char *what) {
  if (n < 0) fail(QRN_RES_ERR_NEGATIVE_COUNT, std::string(what) + " is negative (" + std::to_string(n) + ").");
}
// A capacity may be neither negative nor below what the task holds.
inline void need_capacity(qrn_int64 capacity, qrn_int64 held, const char *what) {
  need_count(capacity, what);
  if (capacity < held)
    fail(QRN_RES_ERR_MAX_CAPACITY, std::string(what) + " " + std::to_string(capacity) + " is below the " +
                                       std::to_string(held) + " the task holds.");
}
// An input array may be null only when its count is 0.
inline void need_array(const void *p, qrn_int64 n, const char *what) {
  if (p == nullptr && n > 0) fail(QRN_RES_ERR_NULL_POINTER, std::string("Argument ") + what + " is null.");
}
void check_con(const Task &t, qrn_int64 i, const char *what = "constraint index");
void check_var(const Task &t, qrn_int64 j, const char *what = "variable index");
void check_cone(const Task &t, qrn_int64 k, const char *what = "cone index");
// first <= last <= n and first >= 0; err names the kind of slice.
void check_slice(qrn_int64 first, qrn_int64 last, qrn_int64 n, const char *kind);
// Marks the listed items for removal; refuses out-of-range and repeated indexes.
std::vector<bool> removal_mask(qrn_int32 num, const qrn_int32 *subset, qrn_int32 n, qrn_rescode code,
                               const char *what);
// A bound checked against its key; `what` names the item in the message.
Bound make_bound(qrn_int32 bk, double bl, double bu, const char *what);
template <class T>
void put(T *out, T value) {
  if (out != nullptr) *out = value;
}

}  // namespace qrn
