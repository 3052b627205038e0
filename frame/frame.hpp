// The call frame shared by every generated method: array arguments with their
// checks and messages, length groups, calls into the library with the
// interpreter lock released, and the result pair.
//
// A generated method declares one Arr per array argument and one Frame; their
// destructors release every buffer export on every path, so the caller's
// bytearrays can be resized again as soon as the method returns.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <algorithm>
#include <initializer_list>

#include "quarn.h"

namespace qrn {

// The fixed messages of one array argument, joined at compile time.
struct ArgMsgs {
  const char *type;       // not a memoryview (or an enum array with a required length that is None)
  const char *stride;     // first stride differs from the element width
  const char *length;     // view length differs from its required length
  const char *enum_len;   // enum array length differs from its required length
  const char *bytearray;  // output object is not a bytearray
  const char *readonly;   // an output view over memory that must not change
};

#define QRN_ARG(X)                                                                             \
  ::qrn::ArgMsgs {                                                                             \
    "Expected a memoryview object for argument " #X,                                           \
        "Expected a continuous memoryview object for argument " #X,                            \
        "Array is too short in argument " #X, "Argument " #X " is too short",                  \
        "Bytearray object for argument " #X, "Read-only memoryview object for argument " #X    \
  }

// One array argument as the library sees it: a pointer (null when absent) and
// an element count. Holds a buffer export while the method runs.
struct Arr {
  Py_buffer buf;
  bool held = false;
  void *ptr = nullptr;
  Py_ssize_t len = 0;

  Arr() = default;
  Arr(const Arr &) = delete;
  Arr &operator=(const Arr &) = delete;
  ~Arr() {
    if (held) PyBuffer_Release(&buf);
  }
  bool given() const { return held; }
  template <class T>
  T *as() const {
    return static_cast<T *>(ptr);
  }
};

// A library call in progress on an Env or Task (owner; null for static
// methods). Begin returns the owner's current handle; while calls run, a
// dispose of the owner detaches its library object and the last call to end
// deletes it (objects.cpp).
void *begin_call(PyObject *owner);
void end_call(PyObject *owner);

class CallScope {
 public:
  CallScope(PyObject *owner, void *&handle) : owner_(owner) { handle = begin_call(owner); }
  ~CallScope() { end_call(owner_); }
  CallScope(const CallScope &) = delete;
  CallScope &operator=(const CallScope &) = delete;

 private:
  PyObject *owner_;
};

// The pointer array of a string list.
struct StrList {
  const char **ptrs = nullptr;
  Py_ssize_t len = 0;
  Arr offsets, bytes;
  StrList() = default;
  StrList(const StrList &) = delete;
  StrList &operator=(const StrList &) = delete;
  ~StrList() { PyMem_Free(ptrs); }
};

// The handle array of a list of tasks. Every listed task counts as being in a
// call (and is referenced) until the method returns, so a callable that
// disposes one of them cannot pull its library task away under the library.
// The library may call the tasks' callables on threads of its own; an
// exception raised there is kept on its Task and raised by the frame after
// the call (raise_kept).
struct TaskList {
  qrn_task_t *handles = nullptr;
  PyObject **items = nullptr;
  Py_ssize_t len = 0;
  TaskList() = default;
  TaskList(const TaskList &) = delete;
  TaskList &operator=(const TaskList &) = delete;
  ~TaskList();
  void raise_kept() const;
};

class Frame {
 public:
  Frame() = default;
  explicit Frame(PyObject *owner) : owner_(owner) {}
  // The owner's handle as read for the current library call.
  qrn_task_t task() const { return static_cast<qrn_task_t>(handle_); }
  qrn_env_t env() const { return static_cast<qrn_env_t>(handle_); }

  // ---- argument checks (each returns false with an exception set) ----

  // A view argument: exactly a memoryview whose first stride is `width`.
  // None leaves `a` absent. An output view must also be writable: once its
  // type and stride have passed, a read-only one raises BufferError rather
  // than let the library write into memory that is not meant to change.
  bool view(PyObject *o, Py_ssize_t width, const ArgMsgs &m, Arr &a, bool writable = false);
  // An enum array with a required length: present, and exactly `need` codes.
  bool required_enum(const Arr &a, Py_ssize_t need, const ArgMsgs &m);
  // A given view must have exactly `need` elements.
  bool length(const Arr &a, Py_ssize_t need, const char *msg);
  // A view must hold at least `need` elements (absent counts as empty).
  bool at_least(const Arr &a, Py_ssize_t need, const char *msg);
  // Length group: the first given view fixes n; a later one that differs
  // records the group's message (replacing any recorded before, so the last
  // group that disagrees is the one reported), raised by checked() unless a
  // later check fails first.
  Py_ssize_t group(std::initializer_list<const Arr *> views, const char *msg);
  bool checked();
  // Whether the slice first..last can lie inside n items.
  static bool inside(long long first, long long last, long long n) { return 0 <= first && first <= last && last <= n; }
  // One past the last position that the pairs ptrb[k] < ptre[k] reach.
  static Py_ssize_t extent(const Arr &ptrb, const Arr &ptre);
  // One past the last position that the ranges [ptr[k], ptr[k] + num[k]) with
  // num[k] > 0 reach; num holds `numwidth`-byte integers.
  static Py_ssize_t span(const Arr &ptr, const Arr &num, int numwidth);
  // The positive entries of a view of 8-byte integers added up (saturating).
  static Py_ssize_t sum(const Arr &a);

  // Output bytearray: type test only (texts and enum bytearrays are tested
  // before any count query).
  bool bytearray(PyObject *o, const ArgMsgs &m);
  // Resizes bytearray `o` to n elements of `width` bytes and exports its
  // buffer into `a`. A negative n (an inverted slice) sizes it to 0 and leaves
  // the library to refuse the slice.
  bool alloc(PyObject *o, Py_ssize_t n, Py_ssize_t width, const ArgMsgs &m, Arr &a, bool bytewise = false);

  // A string list from an offsets view and a bytes view; absent when either is None.
  bool strlist(PyObject *offsets, PyObject *bytes, const ArgMsgs &m, StrList &s);
  // A list of tasks; absent for None. The exceptions that the tasks'
  // callables raise on other threads during the frame's library calls are
  // raised by call() (the first one raised).
  bool tasklist(PyObject *o, const char *list_msg, const char *item_msg, TaskList &t);

  // ---- library calls ----

  // Calls the library with the interpreter lock released. True when the call
  // returned 0 and no interpreter exception is pending.
  template <class Call>
  bool call(Call &&fn) {
    {
      CallScope scope(owner_, handle_);
      PyThreadState *ts = PyEval_SaveThread();
      code_ = fn();
      PyEval_RestoreThread(ts);
    }
    if (tasks_ != nullptr) tasks_->raise_kept();
    return code_ == 0 && !PyErr_Occurred();
  }
  // The method's return value after call() returned false: NULL with the
  // pending exception, else (code, None).
  PyObject *stop() const;
  // (0, None).
  static PyObject *none();
  qrn_rescode code() const { return code_; }

 private:
  PyObject *owner_ = nullptr;
  void *handle_ = nullptr;
  qrn_rescode code_ = 0;
  const char *mismatch_ = nullptr;
  const TaskList *tasks_ = nullptr;
};

}  // namespace qrn
