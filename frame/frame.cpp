#include "frame.hpp"

#include <cstring>

#include "objects.hpp"

namespace qrn {

static bool type_error(const char *msg) {
  PyErr_SetString(PyExc_TypeError, msg);
  return false;
}

bool Frame::view(PyObject *o, Py_ssize_t width, const ArgMsgs &m, Arr &a, bool writable) {
  if (o == Py_None) return true;
  if (!Py_IS_TYPE(o, &PyMemoryView_Type)) return type_error(m.type);
  // The export keeps the memory alive (and the view unreleasable) for the call.
  if (PyObject_GetBuffer(o, &a.buf, PyBUF_FULL_RO) < 0) return false;
  a.held = true;
  if (a.buf.ndim < 1 || a.buf.strides == nullptr || a.buf.strides[0] != width) return type_error(m.stride);
  if (writable && a.buf.readonly) {
    PyErr_SetString(PyExc_BufferError, m.readonly);
    return false;
  }
  a.ptr = a.buf.buf;
  a.len = a.buf.shape[0];
  return true;
}

bool Frame::required_enum(const Arr &a, Py_ssize_t need, const ArgMsgs &m) {
  if (!a.given()) return type_error(m.type);
  if (a.len != need) return type_error(m.enum_len);
  return true;
}

bool Frame::length(const Arr &a, Py_ssize_t need, const char *msg) {
  if (a.given() && a.len != need) return type_error(msg);
  return true;
}

bool Frame::at_least(const Arr &a, Py_ssize_t need, const char *msg) {
  if (a.len < need) return type_error(msg);
  return true;
}

Py_ssize_t Frame::group(std::initializer_list<const Arr *> views, const char *msg) {
  bool first = true;
  Py_ssize_t n = 0;
  for (const Arr *a : views) {
    if (!a->given()) continue;
    if (first) {
      n = a->len;
      first = false;
    } else if (a->len != n) {
      mismatch_ = msg;
    }
  }
  return n;
}

bool Frame::checked() {
  if (mismatch_ != nullptr) return type_error(mismatch_);
  return true;
}

Py_ssize_t Frame::extent(const Arr &ptrb, const Arr &ptre) {
  Py_ssize_t n = ptrb.len < ptre.len ? ptrb.len : ptre.len;
  qrn_int64 end = 0;
  for (Py_ssize_t k = 0; k < n; ++k) {
    qrn_int64 b, e;
    std::memcpy(&b, static_cast<const char *>(ptrb.ptr) + 8 * k, 8);
    std::memcpy(&e, static_cast<const char *>(ptre.ptr) + 8 * k, 8);
    if (b < e && e > end) end = e;
  }
  return static_cast<Py_ssize_t>(end);
}

Py_ssize_t Frame::span(const Arr &ptr, const Arr &num, int numwidth) {
  Py_ssize_t n = ptr.len < num.len ? ptr.len : num.len;
  qrn_int64 end = 0;
  for (Py_ssize_t k = 0; k < n; ++k) {
    qrn_int64 p, c;
    std::memcpy(&p, static_cast<const char *>(ptr.ptr) + 8 * k, 8);
    if (numwidth == 4) {
      qrn_int32 c32;
      std::memcpy(&c32, static_cast<const char *>(num.ptr) + 4 * k, 4);
      c = c32;
    } else {
      std::memcpy(&c, static_cast<const char *>(num.ptr) + 8 * k, 8);
    }
    if (c <= 0 || p < 0) continue;
    qrn_int64 e = p > PY_SSIZE_T_MAX - c ? PY_SSIZE_T_MAX : p + c;
    if (e > end) end = e;
  }
  return static_cast<Py_ssize_t>(end);
}

Py_ssize_t Frame::sum(const Arr &a) {
  qrn_int64 total = 0;
  for (Py_ssize_t k = 0; k < a.len; ++k) {
    qrn_int64 v;
    std::memcpy(&v, static_cast<const char *>(a.ptr) + 8 * k, 8);
    if (v > 0) total = v > PY_SSIZE_T_MAX - total ? PY_SSIZE_T_MAX : total + v;
  }
  return static_cast<Py_ssize_t>(total);
}

bool Frame::bytearray(PyObject *o, const ArgMsgs &m) {
  if (!PyByteArray_Check(o)) return type_error(m.bytearray);
  return true;
}

bool Frame::alloc(PyObject *o, Py_ssize_t n, Py_ssize_t width, const ArgMsgs &m, Arr &a, bool bytewise) {
  if (!bytearray(o, m)) return false;
  if (n < 0) n = 0;
  if (n > PY_SSIZE_T_MAX / width) {
    PyErr_NoMemory();
    return false;
  }
  if (PyByteArray_Resize(o, n * width) < 0) return false;
  if (PyObject_GetBuffer(o, &a.buf, PyBUF_FULL) < 0) return false;
  a.held = true;
  if (bytewise && a.buf.strides[0] != 1) return type_error(m.stride);
  a.ptr = a.buf.buf;
  a.len = n;
  return true;
}

bool Frame::strlist(PyObject *offsets, PyObject *bytes, const ArgMsgs &m, StrList &s) {
  if (offsets == Py_None || bytes == Py_None) return true;
  if (!Py_IS_TYPE(offsets, &PyMemoryView_Type) || !Py_IS_TYPE(bytes, &PyMemoryView_Type))
    return type_error(m.type);
  if (!view(offsets, 8, m, s.offsets) || !view(bytes, 1, m, s.bytes)) return false;
  s.len = s.offsets.len;
  s.ptrs = static_cast<const char **>(PyMem_Malloc(s.len > 0 ? s.len * sizeof(char *) : 1));
  if (s.ptrs == nullptr) {
    PyErr_SetString(PyExc_MemoryError, "Failed to allocate memory");
    return false;
  }
  // Every text must start inside the bytes and end with a zero byte inside
  // them, so that the library never reads past the view.
  const char *base = s.bytes.as<const char>();
  for (Py_ssize_t k = 0; k < s.len; ++k) {
    qrn_int64 off;
    std::memcpy(&off, s.offsets.as<const char>() + 8 * k, 8);
    if (off < 0 || off >= s.bytes.len || std::memchr(base + off, 0, s.bytes.len - off) == nullptr)
      return type_error(m.length);
    s.ptrs[k] = base + off;
  }
  return true;
}

bool Frame::tasklist(PyObject *o, const char *list_msg, const char *item_msg, TaskList &t) {
  if (o == Py_None) return true;
  if (!PyList_Check(o)) {
    PyErr_SetString(PyExc_ValueError, list_msg);
    return false;
  }
  const Py_ssize_t n = PyList_GET_SIZE(o);
  t.handles = static_cast<qrn_task_t *>(PyMem_Malloc(n > 0 ? n * sizeof(qrn_task_t) : 1));
  t.items = static_cast<PyObject **>(PyMem_Malloc(n > 0 ? n * sizeof(PyObject *) : 1));
  if (t.handles == nullptr || t.items == nullptr) {
    PyErr_SetString(PyExc_MemoryError, "Failed to allocate memory");
    return false;
  }
  for (Py_ssize_t k = 0; k < n; ++k) {
    PyObject *item = PyList_GET_ITEM(o, k);
    if (!Py_IS_TYPE(item, &TaskType)) {
      PyErr_SetString(PyExc_ValueError, item_msg);
      return false;
    }
    Py_INCREF(item);
    t.items[t.len++] = item;
    t.handles[k] = static_cast<qrn_task_t>(begin_call(item));
    drop_kept(item);  // none may be left from elsewhere
  }
  tasks_ = &t;
  return true;
}

void TaskList::raise_kept() const { qrn::raise_kept(items, len); }

TaskList::~TaskList() {
  for (Py_ssize_t k = 0; k < len; ++k) {
    end_call(items[k]);
    Py_DECREF(items[k]);
  }
  PyMem_Free(items);
  PyMem_Free(handles);
}

PyObject *Frame::stop() const {
  if (PyErr_Occurred()) return nullptr;
  return Py_BuildValue("iO", code_, Py_None);
}

PyObject *Frame::none() { return Py_BuildValue("iO", 0, Py_None); }

}  // namespace qrn
