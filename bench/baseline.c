/* _qrn_baseline: the least a wrapper of the same shape as _qrn's generated
   methods can do, used as the yardstick for the per-call cost of _qrn.

   Each method parses the same arguments, takes the buffer pointers, releases
   the interpreter lock around the same library call and builds a result pair
   of the same shape. It checks nothing: no types, strides, lengths, pending
   exceptions or response codes. Only a benchmark should ever call it, and only
   with well-formed arguments. */
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include "quarn.h"

typedef struct {
  PyObject_HEAD
  qrn_env_t env;
  qrn_task_t task;
} BaseTask;

static void BaseTask_dealloc(PyObject *o) {
  BaseTask *self = (BaseTask *)o;
  QRN_deletetask(&self->task);
  QRN_deleteenv(&self->env);
  Py_TYPE(o)->tp_free(o);
}

/* Task(numcon, numvar): a task of its own environment with that many empty
   constraints and variables. */
static PyObject *BaseTask_new(PyTypeObject *type, PyObject *args, PyObject *kwds) {
  int numcon = 0, numvar = 0;
  BaseTask *self;
  (void)kwds;
  if (!PyArg_ParseTuple(args, "|ii", &numcon, &numvar)) return NULL;
  self = (BaseTask *)type->tp_alloc(type, 0);
  if (self == NULL) return NULL;
  if (QRN_makeenv(&self->env, NULL) != 0 || QRN_makeemptytask(self->env, &self->task) != 0 ||
      QRN_appendcons(self->task, numcon) != 0 || QRN_appendvars(self->task, numvar) != 0) {
    Py_DECREF(self);
    PyErr_SetString(PyExc_RuntimeError, "the library could not make the baseline task");
    return NULL;
  }
  return (PyObject *)self;
}

static PyObject *getnumvar__1(PyObject *o, PyObject *unused) {
  qrn_task_t task = ((BaseTask *)o)->task;
  qrn_int32 numvar = 0;
  qrn_rescode r;
  (void)unused;
  Py_BEGIN_ALLOW_THREADS
  r = QRN_getnumvar(task, &numvar);
  Py_END_ALLOW_THREADS
  return Py_BuildValue("ii", r, numvar);
}

static PyObject *putacol_iOO_4(PyObject *o, PyObject *args) {
  qrn_task_t task = ((BaseTask *)o)->task;
  int j;
  PyObject *osub, *oval;
  Py_buffer sub, val;
  qrn_rescode r;
  if (!PyArg_ParseTuple(args, "iOO", &j, &osub, &oval)) return NULL;
  PyObject_GetBuffer(osub, &sub, PyBUF_SIMPLE);
  PyObject_GetBuffer(oval, &val, PyBUF_SIMPLE);
  Py_BEGIN_ALLOW_THREADS
  r = QRN_putacol(task, j, (qrn_int32)(sub.len / 4), sub.buf, val.buf);
  Py_END_ALLOW_THREADS
  PyBuffer_Release(&sub);
  PyBuffer_Release(&val);
  return Py_BuildValue("iO", r, Py_None);
}

/* Fills the buffers of sub and val with column j; they must be large enough. */
static PyObject *getacol_into(qrn_task_t task, int j, PyObject *osub, PyObject *oval) {
  Py_buffer sub, val;
  qrn_int32 nzj = 0;
  qrn_rescode r;
  PyObject_GetBuffer(osub, &sub, PyBUF_WRITABLE);
  PyObject_GetBuffer(oval, &val, PyBUF_WRITABLE);
  Py_BEGIN_ALLOW_THREADS
  r = QRN_getacol(task, j, &nzj, sub.buf, val.buf);
  Py_END_ALLOW_THREADS
  PyBuffer_Release(&sub);
  PyBuffer_Release(&val);
  return Py_BuildValue("ii", r, nzj);
}

static PyObject *getacol_iOO_4(PyObject *o, PyObject *args) {
  int j;
  PyObject *osub, *oval;
  if (!PyArg_ParseTuple(args, "iOO", &j, &osub, &oval)) return NULL;
  return getacol_into(((BaseTask *)o)->task, j, osub, oval);
}

/* One count query sizes both bytearrays. */
static PyObject *getacol_iOO_2(PyObject *o, PyObject *args) {
  qrn_task_t task = ((BaseTask *)o)->task;
  int j;
  PyObject *osub, *oval;
  qrn_int32 nz = 0;
  if (!PyArg_ParseTuple(args, "iOO", &j, &osub, &oval)) return NULL;
  Py_BEGIN_ALLOW_THREADS
  QRN_getacolnumnz(task, j, &nz);
  Py_END_ALLOW_THREADS
  PyByteArray_Resize(osub, (Py_ssize_t)nz * 4);
  PyByteArray_Resize(oval, (Py_ssize_t)nz * 8);
  return getacol_into(task, j, osub, oval);
}

static PyMethodDef BaseTask_methods[] = {
    {"getnumvar__1", getnumvar__1, METH_NOARGS, ""},
    {"putacol_iOO_4", putacol_iOO_4, METH_VARARGS, ""},
    {"getacol_iOO_4", getacol_iOO_4, METH_VARARGS, ""},
    {"getacol_iOO_2", getacol_iOO_2, METH_VARARGS, ""},
    {NULL, NULL, 0, NULL},
};

static PyTypeObject BaseTaskType = {
    PyVarObject_HEAD_INIT(NULL, 0)
    .tp_name = "_qrn_baseline.Task",
    .tp_basicsize = sizeof(BaseTask),
    .tp_dealloc = BaseTask_dealloc,
    .tp_flags = Py_TPFLAGS_DEFAULT,
    .tp_doc = "Bare task wrapper for benchmarks",
    .tp_methods = BaseTask_methods,
    .tp_new = BaseTask_new,
};

static struct PyModuleDef baseline_module = {
    PyModuleDef_HEAD_INIT,
    .m_name = "_qrn_baseline",
    .m_doc = "Minimal wrappers for benchmarking _qrn",
    .m_size = -1,
};

PyMODINIT_FUNC PyInit__qrn_baseline(void) {
  PyObject *m;
  if (PyType_Ready(&BaseTaskType) < 0) return NULL;
  m = PyModule_Create(&baseline_module);
  if (m == NULL) return NULL;
  Py_INCREF(&BaseTaskType);
  if (PyModule_AddObject(m, "Task", (PyObject *)&BaseTaskType) < 0) {
    Py_DECREF(&BaseTaskType);
    Py_DECREF(m);
    return NULL;
  }
  return m;
}
