// Helpers for the format tests: a task holding every kind of data, a complete
// snapshot of a task's problem through the C interface (compared bit for bit),
// and writing a task to a string.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "fixture.hpp"

namespace fmt_test {

inline uint64_t bits(double v) {
  uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}
inline std::vector<uint64_t> bits(const std::vector<double> &v) {
  std::vector<uint64_t> out;
  for (double x : v) out.push_back(bits(x));
  return out;
}

inline std::string name_of(qrn_task_t t, int kind, int k) {
  qrn_int32 len = 0;
  if (kind == 0) QRN_getconnamelen(t, k, &len);
  if (kind == 1) QRN_getvarnamelen(t, k, &len);
  if (kind == 2) QRN_getconenamelen(t, k, &len);
  std::string s(static_cast<size_t>(len) + 1, '\0');
  if (kind == 0) QRN_getconname(t, k, len + 1, s.data());
  if (kind == 1) QRN_getvarname(t, k, len + 1, s.data());
  if (kind == 2) QRN_getconename(t, k, len + 1, s.data());
  s.resize(len);
  return s;
}

// Everything about a task's problem, as the C interface reports it.
struct Snapshot {
  qrn_int32 numcon = 0, numvar = 0, sense = 0, numcone = 0;
  uint64_t cfix = 0;
  std::vector<uint64_t> c, blc, buc, blx, bux, aval, qoval, qcval;
  std::vector<qrn_int32> bkc, bkx, vartype, asub, qoi, qoj, qck, qci, qcj;
  std::vector<qrn_int64> aptr;
  std::vector<std::string> connames, varnames, conenames;
  std::string objname, taskname;
  std::vector<std::tuple<qrn_int32, uint64_t, std::vector<qrn_int32>>> cones;

  bool operator==(const Snapshot &o) const {
    return std::tie(numcon, numvar, sense, numcone, cfix, c, blc, buc, blx, bux, aval, qoval, qcval, bkc, bkx,
                    vartype, asub, qoi, qoj, qck, qci, qcj, aptr, connames, varnames, conenames, objname, taskname,
                    cones) == std::tie(o.numcon, o.numvar, o.sense, o.numcone, o.cfix, o.c, o.blc, o.buc, o.blx,
                                       o.bux, o.aval, o.qoval, o.qcval, o.bkc, o.bkx, o.vartype, o.asub, o.qoi, o.qoj,
                                       o.qck, o.qci, o.qcj, o.aptr, o.connames, o.varnames, o.conenames, o.objname,
                                       o.taskname, o.cones);
  }
  // The first part that differs, for messages.
  std::string diff(const Snapshot &o) const {
#define QRN_D(f) if (!(f == o.f)) return #f;
    QRN_D(numcon) QRN_D(numvar) QRN_D(sense) QRN_D(numcone) QRN_D(cfix) QRN_D(c) QRN_D(blc) QRN_D(buc)
    QRN_D(blx) QRN_D(bux) QRN_D(aval) QRN_D(qoval) QRN_D(qcval) QRN_D(bkc) QRN_D(bkx) QRN_D(vartype)
    QRN_D(asub) QRN_D(qoi) QRN_D(qoj) QRN_D(qck) QRN_D(qci) QRN_D(qcj) QRN_D(aptr) QRN_D(connames)
    QRN_D(varnames) QRN_D(conenames) QRN_D(objname) QRN_D(taskname) QRN_D(cones)
#undef QRN_D
    return "";
  }
};

inline Snapshot snapshot(qrn_task_t t) {
  Snapshot s;
  QRN_getnumcon(t, &s.numcon);
  QRN_getnumvar(t, &s.numvar);
  QRN_getobjsense(t, &s.sense);
  double cfix = 0;
  QRN_getcfix(t, &cfix);
  s.cfix = bits(cfix);
  const int m = s.numcon, n = s.numvar;
  std::vector<double> c(n), blc(m), buc(m), blx(n), bux(n);
  s.bkc.resize(m);
  s.bkx.resize(n);
  QRN_getcslice(t, 0, n, c.data());
  QRN_getconboundslice(t, 0, m, s.bkc.data(), blc.data(), buc.data());
  QRN_getvarboundslice(t, 0, n, s.bkx.data(), blx.data(), bux.data());
  s.c = bits(c), s.blc = bits(blc), s.buc = bits(buc), s.blx = bits(blx), s.bux = bits(bux);
  s.vartype.resize(n);
  for (int j = 0; j < n; ++j) QRN_getvartype(t, j, &s.vartype[j]);
  qrn_int64 nnz = 0;
  QRN_getnumanz64(t, &nnz);
  std::vector<qrn_int64> pb(n), pe(n);
  std::vector<double> av(nnz);
  s.asub.resize(nnz);
  QRN_getacolslice64(t, 0, n, nnz, pb.data(), pe.data(), s.asub.data(), av.data());
  s.aval = bits(av);
  s.aptr = pe;
  qrn_int64 q = 0;
  QRN_getnumqobjnz64(t, &q);
  std::vector<double> qv(q);
  s.qoi.resize(q), s.qoj.resize(q);
  QRN_getqobj64(t, q, &q, s.qoi.data(), s.qoj.data(), qv.data());
  s.qoval = bits(qv);
  for (int k = 0; k < m; ++k) {
    QRN_getnumqconknz64(t, k, &q);
    std::vector<qrn_int32> a(q), b(q);
    std::vector<double> v(q);
    QRN_getqconk64(t, k, q, &q, a.data(), b.data(), v.data());
    for (qrn_int64 p = 0; p < q; ++p) {
      s.qck.push_back(k), s.qci.push_back(a[p]), s.qcj.push_back(b[p]), s.qcval.push_back(bits(v[p]));
    }
  }
  QRN_getnumcone(t, &s.numcone);
  for (int k = 0; k < s.numcone; ++k) {
    qrn_int32 ct, nm;
    double par;
    QRN_getconeinfo(t, k, &ct, &par, &nm);
    std::vector<qrn_int32> mem(nm);
    QRN_getcone(t, k, &ct, &par, &nm, mem.data());
    s.cones.emplace_back(ct, bits(par), mem);
    s.conenames.push_back(name_of(t, 2, k));
  }
  for (int i = 0; i < m; ++i) s.connames.push_back(name_of(t, 0, i));
  for (int j = 0; j < n; ++j) s.varnames.push_back(name_of(t, 1, j));
  qrn_int32 len = 0;
  QRN_getobjnamelen(t, &len);
  s.objname.resize(len + 1);
  QRN_getobjname(t, len + 1, s.objname.data());
  s.objname.resize(len);
  QRN_gettasknamelen(t, &len);
  s.taskname.resize(len + 1);
  QRN_gettaskname(t, len + 1, s.taskname.data());
  s.taskname.resize(len);
  return s;
}

// A task with every kind of linear, quadratic, integer and named data:
// bounds of every key (ranged with awkward values), numbers that need all 17
// digits, a negative zero, a huge and a tiny coefficient.
inline void fill_rich(qrn_task_t t, bool quadratic = true, bool cones = true) {
  QRN_appendcons(t, 6);
  QRN_appendvars(t, 7);
  QRN_puttaskname(t, "rich_task");
  QRN_putobjname(t, "cost");
  QRN_putobjsense(t, QRN_OBJECTIVE_SENSE_MAXIMIZE);
  QRN_putcfix(t, -12.5);
  const double c[] = {1.0 / 3, -2, 0, 1e-300, 7e22, -0.0, 0.1};
  QRN_putcslice(t, 0, 7, c);
  // A: a few entries per column
  const qrn_int32 sub[] = {0, 2, 1, 3, 0, 4, 5, 2, 3, 1, 5, 0, 4};
  const double val[] = {1, -1.5, 2.0 / 7, 1e-12, 3, 4.25, -1e15, 0.3, 5, -7, 8, 9.999999999999999e22, 1};
  const qrn_int64 pb[] = {0, 2, 4, 6, 7, 9, 11}, pe[] = {2, 4, 6, 7, 9, 11, 13};
  QRN_putacolslice64(t, 0, 7, pb, pe, sub, val);
  QRN_putconbound(t, 0, QRN_BK_LOWER, 1.0 / 3, 0);
  QRN_putconbound(t, 1, QRN_BK_UPPER, 0, -2.5);
  QRN_putconbound(t, 2, QRN_BK_FIXED, 0.1, 0.1);
  QRN_putconbound(t, 3, QRN_BK_RANGED, 0.1, 0.7);
  QRN_putconbound(t, 4, QRN_BK_RANGED, -1e-5, -1e-5);
  QRN_putconbound(t, 5, QRN_BK_FREE, 0, 0);
  QRN_putvarbound(t, 0, QRN_BK_FREE, 0, 0);
  QRN_putvarbound(t, 1, QRN_BK_LOWER, -3, 0);
  QRN_putvarbound(t, 2, QRN_BK_UPPER, 0, -4);
  QRN_putvarbound(t, 3, QRN_BK_FIXED, 2.5, 2.5);
  QRN_putvarbound(t, 4, QRN_BK_RANGED, 0, 10);
  QRN_putvarbound(t, 5, QRN_BK_RANGED, 1, 1);
  QRN_putvarbound(t, 6, QRN_BK_LOWER, 0, 0);
  QRN_putvartype(t, 4, QRN_VAR_TYPE_INTEGER);
  QRN_putvartype(t, 5, QRN_VAR_TYPE_INTEGER);
  QRN_putvartype(t, 1, QRN_VAR_TYPE_INTEGER);
  const char *cn[] = {"lo", "up", "eq", "rng", "rng0", "fre"};
  const char *vn[] = {"x", "y", "z", "fx", "i1", "i2", "w"};
  for (int i = 0; i < 6; ++i) QRN_putconname(t, i, cn[i]);
  for (int j = 0; j < 7; ++j) QRN_putvarname(t, j, vn[j]);
  if (quadratic) {
    const qrn_int32 qi[] = {0, 1, 2, 6}, qj[] = {0, 0, 2, 1};
    const double qv[] = {2, -0.5, 1.0 / 3, 4};
    QRN_putqobj(t, 4, qi, qj, qv);
    const qrn_int32 ki[] = {0, 1}, kj[] = {0, 0};
    const double kv[] = {1.5, 0.25};
    QRN_putqconk(t, 1, 2, ki, kj, kv);
    QRN_putqconk(t, 3, 1, ki + 1, kj + 1, kv);
  }
  if (cones) {
    const qrn_int32 mem[] = {0, 2, 6};
    QRN_appendcone(t, QRN_CONE_QUAD, 0, 3, mem);
    QRN_putconename(t, 0, "k1");
  }
}

struct Buffer {
  std::string text;
  static size_t QRN_CALL take(void *h, const void *d, size_t n) {
    static_cast<Buffer *>(h)->text.append(static_cast<const char *>(d), n);
    return n;
  }
};

inline std::string write_string(qrn_task_t t, int format, int compress = QRN_COMPRESS_NONE, qrn_rescode *rc = nullptr) {
  Buffer b;
  qrn_rescode r = QRN_writedatahandle(t, Buffer::take, &b, format, compress);
  if (rc != nullptr) *rc = r;
  return b.text;
}

inline std::string last_message(qrn_task_t t) {
  char msg[1024] = "";
  QRN_getlasterror(t, nullptr, sizeof msg, nullptr, msg);
  return msg;
}

}  // namespace fmt_test
