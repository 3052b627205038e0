// The two extension types and the pieces of them that the generated methods,
// the stream and callback trampolines and the method tables share.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <atomic>

#include "quarn.h"

namespace qrn {

// After the documented fields, both types count the library calls running on
// them (changed only under the interpreter lock) and keep the library object
// that a dispose detached while calls ran, deleted when the last one returns.
struct EnvObject {
  PyObject_HEAD
  PyObject *streamfunc[4];
  int globalenv;
  qrn_env_t envhandle;
  Py_ssize_t calls;
  qrn_env_t doomed;
};

struct TaskObject {
  PyObject_HEAD
  qrn_task_t taskhandle;
  PyObject *streamfunc[4];
  PyObject *progressfunc;
  PyObject *infofunc;
  Py_ssize_t calls;
  qrn_task_t doomed;
  // An exception that a callable raised on a thread of the library's own (a
  // batch worker), kept for the batch method to raise, with its place in
  // the order of such exceptions (streams.cpp). Only touched under the lock.
  PyObject *kept;
  unsigned long long kept_order;
};

// Callable fields are tested once without the interpreter lock (the first
// step of a trampoline) and written under it from any thread, so that test
// and every write are atomic.
inline PyObject *peek(PyObject *const &field) {
  return std::atomic_ref<PyObject *>(const_cast<PyObject *&>(field)).load(std::memory_order_acquire);
}
// Stores value (a new reference, or null) and releases what the field held.
inline void replace(PyObject *&field, PyObject *value) {
  PyObject *old = std::atomic_ref<PyObject *>(field).exchange(value, std::memory_order_acq_rel);
  Py_XDECREF(old);
}

extern PyTypeObject EnvType;
extern PyTypeObject TaskType;

inline qrn_task_t task_handle(PyObject *self) { return reinterpret_cast<TaskObject *>(self)->taskhandle; }
inline qrn_env_t env_handle(PyObject *self) { return reinterpret_cast<EnvObject *>(self)->envhandle; }

// Number of information items passed to an information callable.
constexpr int kDouInfItems = 111;
constexpr int kIntInfItems = 117;
constexpr int kLintInfItems = 21;

// Trampolines (streams.cpp).
extern const qrn_stream_fn env_stream_trampoline[4];
extern const qrn_stream_fn task_stream_trampoline[4];
qrn_int32 QRN_CALL callback_trampoline(qrn_task_t task, void *handle, qrn_int32 caller, const qrn_real *douinf,
                                       const qrn_int32 *intinf, const qrn_int64 *lintinf);
size_t QRN_CALL write_trampoline(void *handle, const void *data, size_t count);
// Exceptions kept on Task objects (see TaskObject::kept): drops the one a
// task holds, or raises on this thread the first one raised among n tasks
// (unless an exception is pending here already) and drops the others.
void drop_kept(PyObject *task);
void raise_kept(PyObject *const *tasks, Py_ssize_t n);

// Links the four task streams and the callback of a task object's handle.
void link_task(TaskObject *self);
// Wraps a task that the library made into a new Task object (NULL on failure).
PyObject *wrap_task(qrn_task_t handle);

// Method tables, made by the generator with the hand-written methods in place.
extern PyMethodDef env_methods[];
extern PyMethodDef task_methods[];

// Hand-written methods.
PyObject *Env_set_Stream(PyObject *self, PyObject *args);
PyObject *Env_remove_Stream(PyObject *self, PyObject *args);
PyObject *Env_enablegarcolenv(PyObject *self, PyObject *unused);
PyObject *Env_dispose(PyObject *self, PyObject *unused);
PyObject *Task_set_Stream(PyObject *self, PyObject *args);
PyObject *Task_set_Progress(PyObject *self, PyObject *args);
PyObject *Task_set_InfoCallback(PyObject *self, PyObject *args);
PyObject *Task_remove_Stream(PyObject *self, PyObject *args);
PyObject *Task_remove_Progress(PyObject *self, PyObject *unused);
PyObject *Task_remove_InfoCallback(PyObject *self, PyObject *unused);
PyObject *Task_writedatastream(PyObject *self, PyObject *args);
PyObject *Task_getlasterror(PyObject *self, PyObject *unused);
PyObject *Task_dispose(PyObject *self, PyObject *unused);

}  // namespace qrn
