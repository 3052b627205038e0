// Forwarding of the library's streams, progress and information callbacks to
// interpreter callables, and writing a task to an object with a `write` method.
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

// ---- stream trampolines -----------------------------------------------------------

// Calls the callable in `field` with the text. For an Env the exception is
// discarded; for a Task it stays pending for the running method to raise.
template <bool KeepError>
static void forward(PyObject *const &field, const char *text) {
  if (peek(field) == nullptr) return;  // no callable: no lock
  PyGILState_STATE state = PyGILState_Ensure();
  PyObject *func = field;
  // After a callable raised, later lines are dropped: the first exception is
  // the one the running method reports.
  if (func != nullptr && !PyErr_Occurred()) {
    Py_INCREF(func);  // a callable may replace itself while it runs
    PyObject *result = PyObject_CallFunction(func, "(s)", text);
    Py_DECREF(func);
    if (result != nullptr) Py_DECREF(result);
    else if (!KeepError) PyErr_Clear();
  }
  PyGILState_Release(state);
}

template <int S>
static void QRN_CALL env_stream(void *handle, const char *text) {
  forward<false>(static_cast<EnvObject *>(handle)->streamfunc[S], text);
}
template <int S>
static void QRN_CALL task_stream(void *handle, const char *text) {
  forward<true>(static_cast<TaskObject *>(handle)->streamfunc[S], text);
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
  PyGILState_STATE state = PyGILState_Ensure();
  bool stop = PyErr_Occurred() != nullptr;  // an earlier callable raised: keep asking to stop
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
  PyGILState_Release(state);
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
