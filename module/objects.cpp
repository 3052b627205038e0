// Env and Task: construction, destruction, disposal, and the small
// hand-written methods that talk to the library with the lock held.
#include "objects.hpp"

#include <cstdlib>

namespace qrn {

// ---- Env -------------------------------------------------------------------

static void clear_streams(PyObject **streamfunc) {
  for (int s = 0; s < 4; ++s) replace(streamfunc[s], nullptr);
}

// ---- calls in progress --------------------------------------------------------
// A callable that the library runs during a call (a stream, progress,
// information or write callable), or another thread, may dispose the object
// the call runs on. The library object is then detached at once (the object
// reads as disposed, later calls get a null handle) and deleted when the last
// running call on it returns.

void *begin_call(PyObject *owner) {
  if (owner == nullptr) return nullptr;
  Py_INCREF(owner);
  if (PyObject_TypeCheck(owner, &TaskType)) {
    auto *t = reinterpret_cast<TaskObject *>(owner);
    ++t->calls;
    return t->taskhandle;
  }
  auto *e = reinterpret_cast<EnvObject *>(owner);
  ++e->calls;
  return e->envhandle;
}

void end_call(PyObject *owner) {
  if (owner == nullptr) return;
  if (PyObject_TypeCheck(owner, &TaskType)) {
    auto *t = reinterpret_cast<TaskObject *>(owner);
    if (--t->calls == 0 && t->doomed != nullptr) QRN_deletetask(&t->doomed);
  } else {
    auto *e = reinterpret_cast<EnvObject *>(owner);
    if (--e->calls == 0 && e->doomed != nullptr) QRN_deleteenv(&e->doomed);
  }
  Py_DECREF(owner);
}

static void delete_env(EnvObject *self) {
  if (self->calls > 0 && self->envhandle != nullptr) self->doomed = self->envhandle;
  else QRN_deleteenv(&self->envhandle);
  self->envhandle = nullptr;
}

static void delete_task(TaskObject *self) {
  if (self->calls > 0) self->doomed = self->taskhandle;
  else QRN_deletetask(&self->taskhandle);
  self->taskhandle = nullptr;
}

static bool busy(Py_ssize_t calls) {
  if (calls == 0) return false;
  PyErr_SetString(PyExc_RuntimeError, "Cannot initialize an object while a library call runs on it");
  return true;
}

static PyObject *Env_new(PyTypeObject *type, PyObject *, PyObject *) {
  auto *self = reinterpret_cast<EnvObject *>(type->tp_alloc(type, 0));
  if (self != nullptr) self->envhandle = nullptr;
  return reinterpret_cast<PyObject *>(self);
}

// Releases what a live Env holds (library environment first, then callables).
static void env_release(EnvObject *self) {
  if (self->envhandle != nullptr || self->globalenv) {
    delete_env(self);
    self->globalenv = 0;
    self->envhandle = nullptr;
  }
  clear_streams(self->streamfunc);
}

static int Env_init(PyObject *pyself, PyObject *args, PyObject *kwds) {
  auto *self = reinterpret_cast<EnvObject *>(pyself);
  static const char *kwlist[] = {"dbgfile", "globalenv", nullptr};
  const char *dbgfile = nullptr;
  int globalenv = 0;
  if (!PyArg_ParseTupleAndKeywords(args, kwds, "|sp", const_cast<char **>(kwlist), &dbgfile, &globalenv))
    return -1;
  if (busy(self->calls)) return -1;
  // A second init releases the environment and callables of the first.
  env_release(self);
  self->globalenv = globalenv;
  if (!globalenv) {
    if (QRN_makeenv(&self->envhandle, dbgfile) != 0) {
      self->envhandle = nullptr;
      PyErr_SetString(PyExc_ValueError, "Failed to create Env object");
      return -1;
    }
    static const int order[4] = {0, 1, 3, 2};
    for (int s : order) QRN_linkfunctoenvstream(self->envhandle, s, self, env_stream_trampoline[s]);
  } else {
    self->envhandle = nullptr;
  }
  return 0;
}

static void Env_dealloc(PyObject *pyself) {
  auto *self = reinterpret_cast<EnvObject *>(pyself);
  env_release(self);
  Py_TYPE(pyself)->tp_free(pyself);
}

PyObject *Env_dispose(PyObject *pyself, PyObject *) {
  auto *self = reinterpret_cast<EnvObject *>(pyself);
  if (self->envhandle != nullptr) {
    self->globalenv = 0;
    delete_env(self);
  } else if (!self->globalenv) {
    Py_RETURN_NONE;
  } else {
    self->globalenv = 0;
  }
  self->envhandle = nullptr;
  clear_streams(self->streamfunc);
  Py_RETURN_NONE;
}

PyObject *Env_enablegarcolenv(PyObject *pyself, PyObject *) {
  auto *self = reinterpret_cast<EnvObject *>(pyself);
  if (self->envhandle == nullptr) return PyLong_FromLong(0);
  return PyLong_FromLong(QRN_enablegarcolenv(self->envhandle));
}

PyTypeObject EnvType = {
    PyVarObject_HEAD_INIT(nullptr, 0)  //
    "_qrn.Env",                        // tp_name
    sizeof(EnvObject),                 // tp_basicsize
};

// ---- Task ------------------------------------------------------------------

static void clear_task_callables(TaskObject *self) {
  replace(self->progressfunc, nullptr);
  replace(self->infofunc, nullptr);
  clear_streams(self->streamfunc);
}

// Deletes the library task before any callable is released.
static void task_release(TaskObject *self) {
  if (self->taskhandle != nullptr) delete_task(self);
  clear_task_callables(self);
}

void link_task(TaskObject *self) {
  static const int order[4] = {0, 1, 3, 2};
  for (int s : order) QRN_linkfunctotaskstream(self->taskhandle, s, self, task_stream_trampoline[s]);
  QRN_putcallbackfunc(self->taskhandle, callback_trampoline, self);
}

static PyObject *Task_new(PyTypeObject *type, PyObject *, PyObject *) {
  auto *self = reinterpret_cast<TaskObject *>(type->tp_alloc(type, 0));
  // The allocator zeroes every field: no handle, no callables, no calls.
  return reinterpret_cast<PyObject *>(self);
}

static int Task_init(PyObject *pyself, PyObject *args, PyObject *kwds) {
  auto *self = reinterpret_cast<TaskObject *>(pyself);
  static const char *kwlist[] = {"env", "numcon", "numvar", "other", nullptr};
  PyObject *env = nullptr, *other = nullptr;
  int numcon = 0, numvar = 0;
  if (!PyArg_ParseTupleAndKeywords(args, kwds, "|OiiO", const_cast<char **>(kwlist), &env, &numcon, &numvar,
                                   &other))
    return -1;
  if (busy(self->calls)) return -1;
  qrn_task_t made = nullptr;
  if (other != nullptr) {
    // Only a Task is copied; anything else (None included) is refused like an
    // environment of the wrong type.
    if (!PyObject_TypeCheck(other, &TaskType)) {
      PyErr_SetString(PyExc_TypeError, "Expected a quarn.Task value");
      return -1;
    }
    if (QRN_clonetask(task_handle(other), &made) != 0) {
      PyErr_SetString(PyExc_ValueError, "Failed to create Task object");
      return -1;
    }
  } else {
    if (env == nullptr || (env != Py_None && !Py_IS_TYPE(env, &EnvType))) {
      PyErr_SetString(PyExc_TypeError, "Expected a quarn.Env value or None");
      return -1;
    }
    qrn_env_t envhandle = env == Py_None ? nullptr : env_handle(env);
    if (QRN_makeemptytask(envhandle, &made) != 0) {
      PyErr_SetString(PyExc_ValueError, "Failed to create Task object");
      return -1;
    }
  }
  // A second init releases the task and callables of the first (leaving the
  // callable fields null).
  task_release(self);
  self->taskhandle = made;
  link_task(self);
  return 0;
}

static void Task_dealloc(PyObject *pyself) {
  task_release(reinterpret_cast<TaskObject *>(pyself));
  drop_kept(pyself);
  Py_TYPE(pyself)->tp_free(pyself);
}

PyObject *Task_dispose(PyObject *pyself, PyObject *) {
  task_release(reinterpret_cast<TaskObject *>(pyself));
  Py_RETURN_NONE;
}

PyObject *wrap_task(qrn_task_t handle) {
  auto *self = reinterpret_cast<TaskObject *>(TaskType.tp_alloc(&TaskType, 0));
  if (self == nullptr) {
    // The library task has no owner: delete it rather than leak it.
    QRN_deletetask(&handle);
    return nullptr;
  }
  self->taskhandle = handle;  // the allocator zeroed the callables
  link_task(self);
  return reinterpret_cast<PyObject *>(self);
}

PyObject *Task_getlasterror(PyObject *pyself, PyObject *) {
  qrn_task_t task = task_handle(pyself);
  qrn_rescode last = 0;
  qrn_int32 len = 0;
  if (QRN_getlasterror(task, &last, 0, &len, nullptr) != 0) return Py_BuildValue("(is)", 0, "");
  if (len > 0) {
    char *buf = static_cast<char *>(PyMem_Malloc(static_cast<size_t>(len) + 1));
    if (buf == nullptr) return PyErr_NoMemory();
    buf[0] = '\0';
    QRN_getlasterror(task, &last, len + 1, nullptr, buf);
    PyObject *result = Py_BuildValue("(is)", last, buf);
    PyMem_Free(buf);
    return result;
  }
  return Py_BuildValue("(is)", last, "");
}

PyTypeObject TaskType = {
    PyVarObject_HEAD_INIT(nullptr, 0)  //
    "_qrn.Task",                       // tp_name
    sizeof(TaskObject),                // tp_basicsize
};

// ---- module ----------------------------------------------------------------

static PyModuleDef qrn_module = {
    PyModuleDef_HEAD_INIT, "_qrn", "Low level QUARN optimizer API", -1, nullptr, nullptr, nullptr, nullptr, nullptr,
};

static void fill_types() {
  EnvType.tp_doc = "Env objects";
  EnvType.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE;
  EnvType.tp_methods = env_methods;
  EnvType.tp_new = Env_new;
  EnvType.tp_init = Env_init;
  EnvType.tp_dealloc = Env_dealloc;
  EnvType.tp_alloc = PyType_GenericAlloc;
  EnvType.tp_free = PyObject_Del;

  TaskType.tp_doc = "Task objects";
  TaskType.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE;
  TaskType.tp_methods = task_methods;
  TaskType.tp_new = Task_new;
  TaskType.tp_init = Task_init;
  TaskType.tp_dealloc = Task_dealloc;
  TaskType.tp_alloc = PyType_GenericAlloc;
  TaskType.tp_free = PyObject_Del;
}

}  // namespace qrn

PyMODINIT_FUNC PyInit__qrn(void) {
  using namespace qrn;
  fill_types();
  if (PyType_Ready(&EnvType) < 0) return nullptr;
  if (PyType_Ready(&TaskType) < 0) return nullptr;
  PyObject *m = PyModule_Create2(&qrn_module, 1013);
  if (m == nullptr) return nullptr;
  Py_INCREF(&EnvType);
  PyModule_AddObject(m, "Env", reinterpret_cast<PyObject *>(&EnvType));
  Py_INCREF(&TaskType);
  PyModule_AddObject(m, "Task", reinterpret_cast<PyObject *>(&TaskType));
  return m;
}
