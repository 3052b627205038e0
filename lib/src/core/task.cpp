// Environments, tasks, streams, the last error, and the structural changes
// (appending and removing constraints, variables and cones) that every
// per-item array of a task follows.
#include "errors.hpp"
#include "solutions.hpp"
#include "conic.hpp"
#include "semidefinite.hpp"

#include <algorithm>
#include <cstring>

namespace qrn {

void Streams::write(int which, const std::string &text) const {
  if (which < 0 || which > 3) return;
  if (fn[which] != nullptr) fn[which](handle[which], text.c_str());
  if (file[which] != nullptr) {
    std::fputs(text.c_str(), file[which].get());
    std::fflush(file[which].get());
  }
}

// Every member of Task is listed here, exchanged or deliberately kept.
void swap_task_data(Task &a, Task &b) {
  using std::swap;
  // kept: env, holds_env, streams, callback, callback_handle, last
  swap(a.numcon, b.numcon);
  swap(a.numvar, b.numvar);
  swap(a.maxnumcon, b.maxnumcon);
  swap(a.maxnumvar, b.maxnumvar);
  swap(a.a, b.a);
  swap(a.conbound, b.conbound);
  swap(a.varbound, b.varbound);
  swap(a.c, b.c);
  swap(a.cfix, b.cfix);
  swap(a.sense, b.sense);
  swap(a.vartype, b.vartype);
  swap(a.numintvar, b.numintvar);
  swap(a.qobj, b.qobj);
  swap(a.qcon, b.qcon);
  swap(a.maxnumqnz, b.maxnumqnz);
  swap(a.cones, b.cones);
  swap(a.var_cone, b.var_cone);
  swap(a.maxnumcone, b.maxnumcone);
  swap(a.connames, b.connames);
  swap(a.varnames, b.varnames);
  swap(a.conenames, b.conenames);
  swap(a.conic, b.conic);
  swap(a.sdp, b.sdp);
  swap(a.domnames, b.domnames);
  swap(a.accnames, b.accnames);
  swap(a.djcnames, b.djcnames);
  swap(a.barvarnames, b.barvarnames);
  swap(a.objname, b.objname);
  swap(a.taskname, b.taskname);
  swap(a.par, b.par);
  swap(a.info, b.info);
  swap(a.sol, b.sol);
  swap(a.basis_factor, b.basis_factor);
  swap(a.read_source, b.read_source);
  swap(a.mem_peak, b.mem_peak);
}

void Env::write(int which, const std::string &text) {
  streams.write(which, text);
  std::lock_guard<std::mutex> lock(dbg_mutex);
  for (std::FILE *f : {dbg, which >= 0 && which < 4 ? files[which] : nullptr}) {
    if (f == nullptr) continue;
    std::fputs(text.c_str(), f);
    std::fflush(f);
  }
}

void Task::write(int which, const std::string &text) const { streams.write(which, text); }

bool Task::progress(qrn_int32 caller) {
  if (callback == nullptr) return false;
  return callback(static_cast<qrn_task_s *>(this), callback_handle, caller, info.dou.data(), info.integer.data(),
                  info.lint.data()) != 0;
}

void report(Task &t, qrn_rescode code, const std::string &fn, const std::string &msg) {
  t.last.set(code, msg);
  t.write(QRN_STREAM_ERR, fn + ": error " + std::to_string(code) + ": " + msg + "\n");
}

static std::string range_msg(const char *what, qrn_int64 v, qrn_int64 n) {
  return std::string(what) + " " + std::to_string(v) + " is outside 0.." + std::to_string(n - 1) +
         " (there are " + std::to_string(n) + ").";
}

void check_con(const Task &t, qrn_int64 i, const char *what) {
  if (i < 0 || i >= t.numcon) fail(QRN_RES_ERR_INDEX_CON, range_msg(what, i, t.numcon));
}
void check_var(const Task &t, qrn_int64 j, const char *what) {
  if (j < 0 || j >= t.numvar) fail(QRN_RES_ERR_INDEX_VAR, range_msg(what, j, t.numvar));
}
void check_cone(const Task &t, qrn_int64 k, const char *what) {
  auto n = static_cast<qrn_int64>(t.cones.size());
  if (k < 0 || k >= n) fail(QRN_RES_ERR_INDEX_CONE, range_msg(what, k, n));
}
void check_slice(qrn_int64 first, qrn_int64 last, qrn_int64 n, const char *kind) {
  if (first < 0 || first > last || last > n)
    fail(QRN_RES_ERR_SLICE, std::string("The ") + kind + " slice " + std::to_string(first) + ".." +
                                std::to_string(last) + " is not inside 0.." + std::to_string(n) + ".");
}

void NameTable::remap(const std::vector<qrn_int32> &newindex, size_t newsize) {
  // Items keep their order, so a named item's new position is below names.size().
  std::vector<std::string> kept(std::min(names.size(), newsize));
  index.clear();
  for (size_t k = 0; k < names.size(); ++k) {
    if (newindex[k] < 0) continue;
    kept[newindex[k]] = std::move(names[k]);
    if (!kept[newindex[k]].empty()) index[kept[newindex[k]]] = newindex[k];
  }
  names = std::move(kept);
}

// ---- structural changes ------------------------------------------------------

void Task::append_cons(qrn_int32 num) {
  need_count(num, "The number of constraints to append");
  if (static_cast<qrn_int64>(numcon) + num > INT32_MAX)
    fail(QRN_RES_ERR_ARGUMENT, "The number of constraints would exceed 2^31-1.");
  a.add_rows(num);
  conbound.resize(static_cast<size_t>(numcon) + num);
  numcon += num;
  connames.resize(numcon);
  maxnumcon = std::max(maxnumcon, numcon);
  sol_appended(*this, num);
}

void Task::append_vars(qrn_int32 num) {
  need_count(num, "The number of variables to append");
  if (static_cast<qrn_int64>(numvar) + num > INT32_MAX)
    fail(QRN_RES_ERR_ARGUMENT, "The number of variables would exceed 2^31-1.");
  const size_t n = static_cast<size_t>(numvar) + num;
  a.fit_cols(static_cast<qrn_int32>(n));  // one column per variable (a caller may have put them in)
  varbound.resize(n);
  c.resize(n, 0.0);
  vartype.resize(n, QRN_VAR_TYPE_CONTINUOUS);
  var_cone.resize(n, -1);
  numvar += num;
  varnames.resize(numvar);
  maxnumvar = std::max(maxnumvar, numvar);
  sol_appended(*this, num);
  conic_append_vars(*this);
}

// New position of every item (-1 for removed ones) and the new count.
static std::vector<qrn_int32> renumber(const std::vector<bool> &remove, qrn_int32 &count) {
  std::vector<qrn_int32> newindex(remove.size());
  qrn_int32 next = 0;
  for (size_t k = 0; k < remove.size(); ++k) newindex[k] = remove[k] ? -1 : next++;
  count = next;
  return newindex;
}

// Keeps the entries of items that stay, in order.
template <class V>
static void compact(V &v, const std::vector<qrn_int32> &newindex, qrn_int32 count) {
  const size_t n = std::min(v.size(), newindex.size());
  size_t w = 0;
  for (size_t k = 0; k < n; ++k)
    if (newindex[k] >= 0) {
      if (w != k) v[w] = std::move(v[k]);
      ++w;
    }
  (void)count;
  v.resize(w);  // a lazily sized array (qcon) may be shorter than the item count
}

template <class T>
static void compact(Pod<T> &v, const std::vector<qrn_int32> &newindex, qrn_int32 count) {
  size_t w = 0;
  for (size_t k = 0; k < v.size(); ++k)
    if (newindex[k] >= 0) v[w++] = v[k];
  v.resize_uninit(static_cast<size_t>(count));
}

static void compact(Bounds &b, const std::vector<qrn_int32> &newindex, qrn_int32 count) {
  compact(b.bk, newindex, count);
  compact(b.bl, newindex, count);
  compact(b.bu, newindex, count);
}

void Task::remove_cons(const std::vector<bool> &remove) {
  qrn_int32 count;
  auto newindex = renumber(remove, count);
  a.drop_rows_at(newindex, count);
  compact(conbound, newindex, count);
  compact(qcon, newindex, count);
  connames.remap(newindex, count);
  numcon = count;
  sol_remove_cons(*this, remove);
  sdp_remove_cons(*this, remove);
}

void Task::remove_vars(const std::vector<bool> &remove) {
  qrn_int32 count;
  auto newindex = renumber(remove, count);
  a.drop_cols_at(newindex, count);
  compact(varbound, newindex, count);
  compact(c, newindex, count);
  compact(vartype, newindex, count);
  numintvar = static_cast<qrn_int32>(std::count(vartype.begin(), vartype.end(), QRN_VAR_TYPE_INTEGER));
  qobj.renumber(newindex);
  for (auto &q : qcon) q.renumber(newindex);
  // A removed variable leaves its cone; the cone keeps its other members.
  for (auto &cone : cones) {
    size_t w = 0;
    for (auto m : cone.members)
      if (newindex[m] >= 0) cone.members[w++] = newindex[m];
    cone.members.resize(w);
  }
  compact(var_cone, newindex, count);
  varnames.remap(newindex, count);
  numvar = count;
  sol_remove_vars(*this, remove);
  conic_remove_vars(*this, remove);
}

void Task::remove_cones(const std::vector<bool> &remove) {
  qrn_int32 count;
  auto newindex = renumber(remove, count);
  compact(cones, newindex, count);
  for (auto &k : var_cone)
    if (k >= 0) k = newindex[k];
  conenames.remap(newindex, count);
  sol_remove_cones(*this, remove);
}

// Marks for removal; refuses out-of-range and repeated indexes.
std::vector<bool> removal_mask(qrn_int32 num, const qrn_int32 *subset, qrn_int32 n, qrn_rescode code,
                               const char *what) {
  need_count(num, "The number of items to remove");
  need_array(subset, num, "subset");
  std::vector<bool> remove(n, false);
  for (qrn_int32 k = 0; k < num; ++k) {
    qrn_int32 i = subset[k];
    if (i < 0 || i >= n) fail(code, range_msg(what, i, n));
    if (remove[i]) fail(QRN_RES_ERR_DUP_INDEX, std::string(what) + " " + std::to_string(i) + " is listed twice.");
    remove[i] = true;
  }
  return remove;
}

}  // namespace qrn

using namespace qrn;

namespace {
qrn_env_s *global_env() {
  static qrn_env_s env;  // the library's global environment: lives as long as the process
  return &env;
}

void release(Env *env) {
  if (env == nullptr || env == global_env()) return;
  if (env->refs.fetch_sub(1) == 1) {
    if (env->dbg != nullptr) std::fclose(env->dbg);
    for (std::FILE *f : env->files)
      if (f != nullptr) std::fclose(f);
    delete static_cast<qrn_env_s *>(env);
  }
}
}  // namespace

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_makeenv(qrn_env_t *env, const char *dbgfile) {
  if (env == nullptr) return QRN_RES_ERR_NULL_POINTER;
  *env = nullptr;
  try {
    auto *e = new qrn_env_s();
    if (dbgfile != nullptr && *dbgfile != '\0') {
      e->dbg = std::fopen(dbgfile, "w");
      if (e->dbg == nullptr) {
        delete e;
        return QRN_RES_ERR_FILE_OPEN;
      }
    }
    *env = e;
    return QRN_RES_OK;
  } catch (...) {
    return QRN_RES_ERR_SPACE;
  }
}

QRN_API qrn_rescode QRN_CALL QRN_deleteenv(qrn_env_t *env) {
  if (env == nullptr) return QRN_RES_ERR_NULL_POINTER;
  release(*env);
  *env = nullptr;
  return QRN_RES_OK;
}

QRN_API qrn_rescode QRN_CALL QRN_linkfunctoenvstream(qrn_env_t env, qrn_int32 whichstream, void *handle,
                                                     qrn_stream_fn func) {
  if (env == nullptr) return QRN_RES_ERR_NULL_ENV;
  if (whichstream < 0 || whichstream > 3) return QRN_RES_ERR_STREAM;
  env->streams.fn[whichstream] = func;
  env->streams.handle[whichstream] = handle;
  return QRN_RES_OK;
}

QRN_API qrn_rescode QRN_CALL QRN_enablegarcolenv(qrn_env_t env) {
  if (env == nullptr) return QRN_RES_ERR_NULL_ENV;
  env->garcol = true;
  return QRN_RES_OK;
}

QRN_API qrn_rescode QRN_CALL QRN_makeemptytask(qrn_env_t env, qrn_task_t *task) {
  if (task == nullptr) return QRN_RES_ERR_NULL_POINTER;
  *task = nullptr;
  try {
    auto *t = new qrn_task_s();
    t->env = env != nullptr ? env : global_env();
    // With garbage collection on, the task keeps its environment alive.
    if (env != nullptr && env->garcol) {
      env->refs.fetch_add(1);
      t->holds_env = true;
    }
    *task = t;
    return QRN_RES_OK;
  } catch (...) {
    return QRN_RES_ERR_SPACE;
  }
}

QRN_API qrn_rescode QRN_CALL QRN_clonetask(qrn_task_t task, qrn_task_t *clone) {
  if (clone == nullptr) return QRN_RES_ERR_NULL_POINTER;
  *clone = nullptr;
  if (task == nullptr) return QRN_RES_ERR_NULL_TASK;
  try {
    auto *t = new qrn_task_s();
    static_cast<Task &>(*t) = static_cast<const Task &>(*task);
    // The copy has its own streams and callback, and no last error (LastError is not copied).
    t->streams = Streams{};
    t->callback = nullptr;
    t->callback_handle = nullptr;
    if (t->holds_env) t->env->refs.fetch_add(1);
    *clone = t;
    return QRN_RES_OK;
  } catch (...) {
    return QRN_RES_ERR_SPACE;
  }
}

QRN_API qrn_rescode QRN_CALL QRN_deletetask(qrn_task_t *task) {
  if (task == nullptr) return QRN_RES_ERR_NULL_POINTER;
  if (*task != nullptr) {
    Env *env = (*task)->env;
    bool held = (*task)->holds_env;
    delete *task;
    if (held) release(env);
  }
  *task = nullptr;
  return QRN_RES_OK;
}

QRN_API qrn_rescode QRN_CALL QRN_linkfunctotaskstream(qrn_task_t task, qrn_int32 whichstream, void *handle,
                                                      qrn_stream_fn func) {
  return api(task, "QRN_linkfunctotaskstream", [&](Task &t) {
    if (whichstream < 0 || whichstream > 3)
      fail(QRN_RES_ERR_STREAM, "Stream " + std::to_string(whichstream) + " is not one of 0..3.");
    t.streams.fn[whichstream] = func;
    t.streams.handle[whichstream] = handle;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_linkfiletotaskstream(qrn_task_t task, qrn_int32 whichstream, const char *filename,
                                                      qrn_int32 append) {
  return api(task, "QRN_linkfiletotaskstream", [&](Task &t) {
    if (whichstream < 0 || whichstream > 3)
      fail(QRN_RES_ERR_STREAM, "Stream " + std::to_string(whichstream) + " is not one of 0..3.");
    if (filename == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument filename is null.");
    if (*filename == '\0') {
      t.streams.file[whichstream].reset();
      return;
    }
    std::FILE *f = std::fopen(filename, append != 0 ? "a" : "w");
    if (f == nullptr) fail(QRN_RES_ERR_FILE_OPEN, std::string("Cannot open \"") + filename + "\" for writing.");
    t.streams.file[whichstream] = std::shared_ptr<std::FILE>(f, [](std::FILE *p) { std::fclose(p); });
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putcallbackfunc(qrn_task_t task, qrn_callback_fn func, void *handle) {
  return api(task, "QRN_putcallbackfunc", [&](Task &t) {
    t.callback = func;
    t.callback_handle = handle;
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getlasterror(qrn_task_t task, qrn_rescode *lastrescode, qrn_int32 sizelastmsg,
                                              qrn_int32 *lastmsglen, char *lastmsg) {
  if (task == nullptr) return QRN_RES_ERR_NULL_TASK;
  if (sizelastmsg < 0) return QRN_RES_ERR_NEGATIVE_COUNT;
  const auto [code, msg] = task->last.get();
  put(lastrescode, code);
  put(lastmsglen, static_cast<qrn_int32>(msg.size()));
  if (lastmsg != nullptr && sizelastmsg > 0) {
    size_t n = std::min(msg.size(), static_cast<size_t>(sizelastmsg - 1));
    std::memcpy(lastmsg, msg.data(), n);
    lastmsg[n] = '\0';
  }
  return QRN_RES_OK;
}

QRN_API qrn_rescode QRN_CALL QRN_appendcons(qrn_task_t task, qrn_int32 num) {
  return api(task, "QRN_appendcons", [&](Task &t) { t.append_cons(num); });
}

QRN_API qrn_rescode QRN_CALL QRN_appendvars(qrn_task_t task, qrn_int32 num) {
  return api(task, "QRN_appendvars", [&](Task &t) { t.append_vars(num); });
}

QRN_API qrn_rescode QRN_CALL QRN_removecons(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset) {
  return api(task, "QRN_removecons", [&](Task &t) {
    t.remove_cons(removal_mask(num, subset, t.numcon, QRN_RES_ERR_INDEX_CON, "Constraint index"));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_removevars(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset) {
  return api(task, "QRN_removevars", [&](Task &t) {
    t.remove_vars(removal_mask(num, subset, t.numvar, QRN_RES_ERR_INDEX_VAR, "Variable index"));
  });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumcon(qrn_task_t task, qrn_int32 *numcon) {
  return api(task, "QRN_getnumcon", [&](Task &t) { put(numcon, t.numcon); });
}

QRN_API qrn_rescode QRN_CALL QRN_getnumvar(qrn_task_t task, qrn_int32 *numvar) {
  return api(task, "QRN_getnumvar", [&](Task &t) { put(numvar, t.numvar); });
}

QRN_API qrn_rescode QRN_CALL QRN_getmaxnumcon(qrn_task_t task, qrn_int32 *maxnumcon) {
  return api(task, "QRN_getmaxnumcon", [&](Task &t) { put(maxnumcon, t.maxnumcon); });
}

QRN_API qrn_rescode QRN_CALL QRN_getmaxnumvar(qrn_task_t task, qrn_int32 *maxnumvar) {
  return api(task, "QRN_getmaxnumvar", [&](Task &t) { put(maxnumvar, t.maxnumvar); });
}

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumcon(qrn_task_t task, qrn_int32 maxnumcon) {
  return api(task, "QRN_putmaxnumcon", [&](Task &t) {
    need_capacity(maxnumcon, t.numcon, "The constraint capacity");
    t.maxnumcon = maxnumcon;  // a hint: storage grows when items are appended
  });
}

QRN_API qrn_rescode QRN_CALL QRN_putmaxnumvar(qrn_task_t task, qrn_int32 maxnumvar) {
  return api(task, "QRN_putmaxnumvar", [&](Task &t) {
    need_capacity(maxnumvar, t.numvar, "The variable capacity");
    t.maxnumvar = maxnumvar;  // a hint: storage grows when items are appended
  });
}

}  // extern "C"
