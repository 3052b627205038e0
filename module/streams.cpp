// Forwarding of the library's streams, progress and information callbacks to
// interpreter callables, and writing a task to an object with a `write` method.
#include <atomic>
#include <cstring>

#include "frame.hpp"
#include "objects.hpp"

namespace qrn {

// ---- registration ------------------------------------------------------------

static void store(PyObject *&field, PyObject *func) {
  Py_INCREF(func);
  replace(field, func);
}

static PyObject *set_stream(PyObject **streamfunc, PyObject *args) {
  int which;
  PyObject *func;
  if (!PyArg_ParseTuple(args, "iO", &which, &func)) return nullptr;
  if (which >= 0 && which <= 3) store(streamfunc[which], func);
  Py_RETURN_NONE;
}

static PyObject *remove_stream(PyObject **streamfunc, PyObject *args) {
  int which;
  if (!PyArg_ParseTuple(args, "i", &which)) return nullptr;
  if (which >= 0 && which <= 3) replace(streamfunc[which], nullptr);
  Py_RETURN_NONE;
}

PyObject *Env_set_Stream(PyObject *self, PyObject *args) {
  return set_stream(reinterpret_cast<EnvObject *>(self)->streamfunc, args);
}
PyObject *Env_remove_Stream(PyObject *self, PyObject *args) {
  return remove_stream(reinterpret_cast<EnvObject *>(self)->streamfunc, args);
}
PyObject *Task_set_Stream(PyObject *self, PyObject *args) {
  return set_stream(reinterpret_cast<TaskObject *>(self)->streamfunc, args);
}
PyObject *Task_remove_Stream(PyObject *self, PyObject *args) {
  return remove_stream(reinterpret_cast<TaskObject *>(self)->streamfunc, args);
}

PyObject *Task_set_Progress(PyObject *self, PyObject *args) {
  PyObject *func;
  if (!PyArg_ParseTuple(args, "O", &func)) return nullptr;
  store(reinterpret_cast<TaskObject *>(self)->progressfunc, func);
  Py_RETURN_NONE;
}
PyObject *Task_set_InfoCallback(PyObject *self, PyObject *args) {
  PyObject *func;
  if (!PyArg_ParseTuple(args, "O", &func)) return nullptr;
  store(reinterpret_cast<TaskObject *>(self)->infofunc, func);
  Py_RETURN_NONE;
}
PyObject *Task_remove_Progress(PyObject *self, PyObject *) {
  replace(reinterpret_cast<TaskObject *>(self)->progressfunc, nullptr);
  Py_RETURN_NONE;
}
PyObject *Task_remove_InfoCallback(PyObject *self, PyObject *) {
  replace(reinterpret_cast<TaskObject *>(self)->infofunc, nullptr);
  Py_RETURN_NONE;
}

// ---- the interpreter lock in a trampoline, and where exceptions go ------------------
//
// The library calls back on the thread that made the library call, whose
// interpreter thread state keeps an exception pending until the running
// method raises it. A batch calls back on threads of the library's own
// instead: there PyGILState_Ensure makes a thread state that the matching
// PyGILState_Release throws away, pending exception included. So on such a
// thread ("foreign") an exception that a Task's callable raised is moved onto
// the Task object (TaskObject::kept) before the lock is given back, and the
// batch method raises it on the calling thread once the library returned
// (raise_kept, called by the frame). Each worker thread has its own thread
// state, so exceptions of different threads never meet before that.

class Locked {
 public:
  Locked() : foreign_(PyGILState_GetThisThreadState() == nullptr), state_(PyGILState_Ensure()) {}
  ~Locked() { PyGILState_Release(state_); }
  Locked(const Locked &) = delete;
  Locked &operator=(const Locked &) = delete;
  bool foreign() const { return foreign_; }

 private:
  bool foreign_;
  PyGILState_STATE state_;
};

// Order in which exceptions are kept, so that a batch raises the first one.
static std::atomic<unsigned long long> kept_count{0};

// Whether a callable of this task raised earlier in the running call.
static bool raised_before(const Locked &lock, TaskObject *self) {
  return lock.foreign() ? self->kept != nullptr : PyErr_Occurred() != nullptr;
}

// On a foreign thread, moves the pending exception (if any) onto the task;
// a task keeps only its first.
static void keep_raised(const Locked &lock, TaskObject *self) {
  if (!lock.foreign() || !PyErr_Occurred()) return;
  PyObject *exc = PyErr_GetRaisedException();
  if (self->kept == nullptr) {
    self->kept = exc;
    self->kept_order = ++kept_count;
  } else {
    Py_DECREF(exc);
  }
}

void drop_kept(PyObject *task) { Py_CLEAR(reinterpret_cast<TaskObject *>(task)->kept); }

void raise_kept(PyObject *const *tasks, Py_ssize_t n) {
  TaskObject *first = nullptr;
  for (Py_ssize_t k = 0; k < n; ++k) {
    auto *t = reinterpret_cast<TaskObject *>(tasks[k]);
    if (t->kept != nullptr && (first == nullptr || t->kept_order < first->kept_order)) first = t;
  }
  if (first != nullptr && !PyErr_Occurred()) {
    PyErr_SetRaisedException(first->kept);  // steals the reference
    first->kept = nullptr;
  }
  for (Py_ssize_t k = 0; k < n; ++k) drop_kept(tasks[k]);
}

// ---- stream trampolines -----------------------------------------------------------

// Calls the callable in `field` with the text. For an Env the exception is
// discarded; for a Task (owner) it is kept for the running method to raise.
static void forward(PyObject *const &field, TaskObject *owner, const char *text) {
  if (peek(field) == nullptr) return;  // no callable: no lock
  Locked lock;
  PyObject *func = field;
  // After a callable raised, later lines are dropped: the first exception is
  // the one the running method reports.
  if (func != nullptr && !(owner != nullptr ? raised_before(lock, owner) : PyErr_Occurred() != nullptr)) {
    Py_INCREF(func);  // a callable may replace itself while it runs
    PyObject *result = PyObject_CallFunction(func, "(s)", text);
    Py_DECREF(func);
    if (result != nullptr) Py_DECREF(result);
    else if (owner == nullptr) PyErr_Clear();
    else keep_raised(lock, owner);
  }
}

template <int S>
static void QRN_CALL env_stream(void *handle, const char *text) {
  forward(static_cast<EnvObject *>(handle)->streamfunc[S], nullptr, text);
}
template <int S>
static void QRN_CALL task_stream(void *handle, const char *text) {
  auto *self = static_cast<TaskObject *>(handle);
  forward(self->streamfunc[S], self, text);
}

const qrn_stream_fn env_stream_trampoline[4] = {env_stream<0>, env_stream<1>, env_stream<2>, env_stream<3>};
const qrn_stream_fn task_stream_trampoline[4] = {task_stream<0>, task_stream<1>, task_stream<2>, task_stream<3>};

// ---- progress and information callback ----------------------------------------------

// Truth of a callable's result; a raised exception (or a failing truth test)
// asks to stop.
static bool wants_stop(PyObject *result) {
  if (result == nullptr) return true;
  int truth = PyObject_IsTrue(result);
  Py_DECREF(result);
  return truth != 0;
}

template <class T, class Make>
static PyObject *info_list(const T *values, int n, Make make) {
  PyObject *list = PyList_New(n);
  if (list == nullptr) return nullptr;
  for (int k = 0; k < n; ++k) {
    PyObject *item = make(values[k]);
    if (item == nullptr) {
      Py_DECREF(list);
      return nullptr;
    }
    PyList_SET_ITEM(list, k, item);
  }
  return list;
}

qrn_int32 QRN_CALL callback_trampoline(qrn_task_t, void *handle, qrn_int32 caller, const qrn_real *douinf,
                                       const qrn_int32 *intinf, const qrn_int64 *lintinf) {
  auto *self = static_cast<TaskObject *>(handle);
  if (peek(self->progressfunc) == nullptr && peek(self->infofunc) == nullptr) return 0;
  Locked lock;
  bool stop = raised_before(lock, self);  // an earlier callable raised: keep asking to stop
  if (self->progressfunc != nullptr && !stop) {
    PyObject *func = self->progressfunc;
    Py_INCREF(func);
    stop = wants_stop(PyObject_CallFunction(func, "(i)", caller));
    Py_DECREF(func);
  }
  if (self->infofunc != nullptr && !stop && douinf != nullptr && intinf != nullptr && lintinf != nullptr) {
    PyObject *d = info_list(douinf, kDouInfItems, [](double v) { return PyFloat_FromDouble(v); });
    PyObject *i = d ? info_list(intinf, kIntInfItems, [](qrn_int32 v) { return PyLong_FromLong(v); }) : nullptr;
    PyObject *l = i ? info_list(lintinf, kLintInfItems, [](qrn_int64 v) { return PyLong_FromLongLong(v); })
                    : nullptr;
    if (l != nullptr) {
      PyObject *func = self->infofunc;
      Py_INCREF(func);
      stop = wants_stop(PyObject_CallFunction(func, "(iOOO)", caller, d, i, l));
      Py_DECREF(func);
    } else {
      PyErr_Clear();  // a list that cannot be made: the callable is not called
    }
    Py_XDECREF(d);
    Py_XDECREF(i);
    Py_XDECREF(l);
  }
  keep_raised(lock, self);
  return stop ? 1 : 0;
}

// ---- writing to an object with a `write` method -------------------------------------

// The copy handed to `write` lives in a bytes object that the memoryview keeps
// alive: it is freed when the last view of it goes, never before.
size_t QRN_CALL write_trampoline(void *handle, const void *data, size_t count) {
  if (handle == nullptr || count == 0) return 0;
  PyGILState_STATE state = PyGILState_Ensure();
  if (PyErr_Occurred()) {  // an earlier `write` raised: the rest counts as taken
    PyGILState_Release(state);
    return count;
  }
  auto *stream = static_cast<PyObject *>(handle);
  PyObject *copy = PyBytes_FromStringAndSize(static_cast<const char *>(data), static_cast<Py_ssize_t>(count));
  if (copy == nullptr) {
    PyErr_Clear();
    PyGILState_Release(state);
    return 0;
  }
  // A read-only view over the copy, exactly `count` bytes long.
  PyObject *view = PyMemoryView_FromObject(copy);
  Py_DECREF(copy);
  if (view != nullptr) {
    PyObject *result = PyObject_CallMethod(stream, "write", "(O)", view);
    Py_XDECREF(result);
    Py_DECREF(view);
  }
  PyGILState_Release(state);
  return count;
}

PyObject *Task_writedatastream(PyObject *self, PyObject *args) {
  int dformat, compress;
  PyObject *stream;
  if (!PyArg_ParseTuple(args, "iiO", &dformat, &compress, &stream)) return nullptr;
  qrn_rescode r;
  {
    void *task = nullptr;
    CallScope scope(self, task);  // the write callable may dispose the task
    r = QRN_writedatahandle(static_cast<qrn_task_t>(task), write_trampoline, stream, dformat, compress);
  }
  if (PyErr_Occurred()) return nullptr;
  return PyLong_FromLong(r);
}

}  // namespace qrn
