// computesparsecholesky_iidOOOOOOOOOO_8: the one method that receives arrays
// the library allocated. It copies each into its bytearray and gives it back
// with QRN_freeenv (with the interpreter lock held).
#include <cstring>

#include "frame.hpp"
#include "objects.hpp"

namespace qrn {

namespace {

// One past the last position that columns (nzc[k], ptrc[k]) reach; a reach
// beyond any buffer when a start plus its count overflows.
Py_ssize_t column_reach(const Arr &nzc, const Arr &ptrc) {
  const Py_ssize_t n = nzc.len < ptrc.len ? nzc.len : ptrc.len;
  qrn_int64 end = 0;
  for (Py_ssize_t k = 0; k < n; ++k) {
    qrn_int32 nz;
    qrn_int64 ptr;
    std::memcpy(&nz, nzc.as<const char>() + 4 * k, 4);
    std::memcpy(&ptr, ptrc.as<const char>() + 8 * k, 8);
    if (nz <= 0 || ptr < 0) continue;  // the library refuses negative ones
    if (ptr > PY_SSIZE_T_MAX - nz) return PY_SSIZE_T_MAX;
    if (ptr + nz > end) end = ptr + nz;
  }
  return static_cast<Py_ssize_t>(end);
}

// An array of the library's, given back when this goes out of scope.
struct LibArray {
  qrn_env_t env;
  void *ptr = nullptr;
  ~LibArray() {
    if (ptr != nullptr) QRN_freeenv(env, ptr);
  }
};

// Resizes bytearray `o` to `bytes`, copies the array into it and gives the
// array back; a null array leaves the bytearray as it is.
bool deliver(PyObject *o, LibArray &arr, Py_ssize_t bytes) {
  if (arr.ptr == nullptr) return true;
  if (PyByteArray_Resize(o, bytes) < 0) return false;
  Py_buffer view;
  if (PyObject_GetBuffer(o, &view, PyBUF_SIMPLE | PyBUF_WRITABLE) < 0) return false;
  if (bytes > 0) std::memcpy(view.buf, arr.ptr, static_cast<size_t>(bytes));
  PyBuffer_Release(&view);
  QRN_freeenv(arr.env, arr.ptr);
  arr.ptr = nullptr;
  return true;
}

}  // namespace

PyObject *Env_computesparsecholesky_iidOOOOOOOOOO_8(PyObject *self, PyObject *args) {
  qrn_env_t env = env_handle(self);
  int ordering, regularization;
  double tolsingular;
  PyObject *o_anzc, *o_aptrc, *o_asubc, *o_avalc;
  PyObject *o_perm, *o_diag, *o_lnzc, *o_lptrc, *o_lsubc, *o_lvalc;
  if (!PyArg_ParseTuple(args, "iidOOOOOOOOOO", &ordering, &regularization, &tolsingular, &o_anzc, &o_aptrc,
                        &o_asubc, &o_avalc, &o_perm, &o_diag, &o_lnzc, &o_lptrc, &o_lsubc, &o_lvalc))
    return nullptr;
  Frame f(self);
  Arr anzc, aptrc, asubc, avalc;
  if (!f.view(o_anzc, 4, QRN_ARG(anzc), anzc)) return nullptr;
  if (!f.view(o_aptrc, 8, QRN_ARG(aptrc), aptrc)) return nullptr;
  if (!f.view(o_asubc, 4, QRN_ARG(asubc), asubc)) return nullptr;
  if (!f.view(o_avalc, 8, QRN_ARG(avalc), avalc)) return nullptr;
  if (!f.bytearray(o_perm, QRN_ARG(perm))) return nullptr;
  if (!f.bytearray(o_diag, QRN_ARG(diag))) return nullptr;
  if (!f.bytearray(o_lnzc, QRN_ARG(lnzc))) return nullptr;
  if (!f.bytearray(o_lptrc, QRN_ARG(lptrc))) return nullptr;
  if (!f.bytearray(o_lsubc, QRN_ARG(lsubc))) return nullptr;
  if (!f.bytearray(o_lvalc, QRN_ARG(lvalc))) return nullptr;
  const Py_ssize_t n_n = f.group({&anzc, &aptrc}, "Mismatching lengths of arguments anzc,aptrc");
  // The library reads asubc and avalc where the columns point: they must
  // reach that far.
  const Py_ssize_t reach = column_reach(anzc, aptrc);
  if (!f.at_least(asubc, reach, "Array is too short in argument asubc")) return nullptr;
  if (!f.at_least(avalc, reach, "Array is too short in argument avalc")) return nullptr;
  if (!f.checked()) return nullptr;
  const qrn_int32 n = static_cast<qrn_int32>(n_n);

  LibArray perm{env}, diag{env}, lnzc{env}, lptrc{env}, lsubc{env}, lvalc{env};
  qrn_int64 nnz = 0;
  const bool ok = f.call([&] {
    return QRN_computesparsecholesky(f.env(), ordering, regularization, tolsingular, n, anzc.as<qrn_int32>(),
                                     aptrc.as<qrn_int64>(), asubc.as<qrn_int32>(), avalc.as<qrn_real>(),
                                     reinterpret_cast<qrn_int32 **>(&perm.ptr), reinterpret_cast<qrn_real **>(&diag.ptr),
                                     reinterpret_cast<qrn_int32 **>(&lnzc.ptr),
                                     reinterpret_cast<qrn_int64 **>(&lptrc.ptr), &nnz,
                                     reinterpret_cast<qrn_int32 **>(&lsubc.ptr),
                                     reinterpret_cast<qrn_real **>(&lvalc.ptr));
  });
  if (!ok) return f.stop();  // the holders give back whatever was made
  const Py_ssize_t cols = n, entries = static_cast<Py_ssize_t>(nnz);
  if (!deliver(o_perm, perm, cols * 4) || !deliver(o_diag, diag, cols * 8) || !deliver(o_lnzc, lnzc, cols * 4) ||
      !deliver(o_lptrc, lptrc, cols * 8) || !deliver(o_lsubc, lsubc, entries * 4) ||
      !deliver(o_lvalc, lvalc, entries * 8))
    return nullptr;
  return Py_BuildValue("iL", 0, static_cast<long long>(nnz));
}

}  // namespace qrn
