// Conic and semidefinite data in the file formats: a task holding every kind
// of data round trips bit for bit through every format that can hold it
// (strings, files, gzip); the other formats refuse with the code naming what
// they would lose; CBF states ACCs, exponential and power cones and PSD data;
// a read that fails leaves the task as it was.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "formats_util.hpp"

using namespace fmt_test;

namespace {

qrn_int64 symmat(qrn_task_t t, qrn_int32 dim, std::vector<qrn_int32> i, std::vector<qrn_int32> j, std::vector<double> v) {
  qrn_int64 idx = -1;
  CHECK_EQ(QRN_appendsparsesymmat(t, dim, static_cast<qrn_int64>(v.size()), i.data(), j.data(), v.data(), &idx), QRN_RES_OK);
  return idx;
}

qrn_int64 acc(qrn_task_t t, qrn_int64 dom, std::vector<qrn_int64> afe, std::vector<double> b) {
  CHECK_EQ(QRN_appendacc(t, dom, static_cast<qrn_int64>(afe.size()), afe.data(), b.empty() ? nullptr : b.data()), QRN_RES_OK);
  qrn_int64 n = 0;
  QRN_getnumacc(t, &n);
  return n - 1;
}

// fill_rich plus every domain kind, ACCs (shared expressions, non-zero b),
// DJCs, semidefinite variables with barC/barA/barF as weighted sums, names,
// and an interior solution with doty, barx and bars.
void fill_conic(qrn_task_t t) {
  fill_rich(t);
  const qrn_int32 dims[] = {2, 3};
  CHECK_EQ(QRN_appendbarvars(t, 2, dims), QRN_RES_OK);
  QRN_putbarvarname(t, 1, "X big");
  qrn_int64 m0 = symmat(t, 2, {0, 1}, {0, 1}, {1, 1});
  qrn_int64 m1 = symmat(t, 2, {1}, {0}, {0.5});
  qrn_int64 m2 = symmat(t, 3, {2, 1}, {0, 1}, {1.0 / 3, -2});
  symmat(t, 3, {0}, {0}, {7});  // in the store, used by nothing
  qrn_int64 s01[] = {m0, m1};
  double w01[] = {1.0 / 3, 0.1}, one = 1.0, w2 = 2.5;
  CHECK_EQ(QRN_putbarcj(t, 0, 2, s01, w01), QRN_RES_OK);
  CHECK_EQ(QRN_putbaraij(t, 2, 1, 1, &m2, &one), QRN_RES_OK);
  CHECK_EQ(QRN_putbaraij(t, 0, 0, 1, &m1, &w2), QRN_RES_OK);
  CHECK_EQ(QRN_appendafes(t, 14), QRN_RES_OK);
  const qrn_int64 fi[] = {0, 0, 1, 2, 5, 9, 13};
  const qrn_int32 fj[] = {0, 3, 1, 6, 2, 4, 0};
  const double fv[] = {1, -0.5, 1.0 / 3, 7e22, 1, -1e-300, 0.1};
  CHECK_EQ(QRN_putafefentrylist(t, 7, fi, fj, fv), QRN_RES_OK);
  QRN_putafeg(t, 1, 0.25);
  QRN_putafeg(t, 3, -0.0);
  QRN_putafeg(t, 12, 1e10);
  CHECK_EQ(QRN_putafebarfentry(t, 4, 1, 1, &m2, &w2), QRN_RES_OK);
  CHECK_EQ(QRN_putafebarfentry(t, 0, 0, 2, s01, w01), QRN_RES_OK);
  qrn_int64 d[13];
  const double a2[] = {0.1, 0.2}, a3[] = {0.1, 0.2, 0.7};
  CHECK_EQ(QRN_appendrdomain(t, 2, &d[0]), QRN_RES_OK);
  CHECK_EQ(QRN_appendrzerodomain(t, 1, &d[1]), QRN_RES_OK);
  CHECK_EQ(QRN_appendrplusdomain(t, 1, &d[2]), QRN_RES_OK);
  CHECK_EQ(QRN_appendrminusdomain(t, 1, &d[3]), QRN_RES_OK);
  CHECK_EQ(QRN_appendquadraticconedomain(t, 3, &d[4]), QRN_RES_OK);
  CHECK_EQ(QRN_appendrquadraticconedomain(t, 3, &d[5]), QRN_RES_OK);
  CHECK_EQ(QRN_appendprimalexpconedomain(t, &d[6]), QRN_RES_OK);
  CHECK_EQ(QRN_appenddualexpconedomain(t, &d[7]), QRN_RES_OK);
  CHECK_EQ(QRN_appendprimalpowerconedomain(t, 3, 2, a2, &d[8]), QRN_RES_OK);
  CHECK_EQ(QRN_appenddualpowerconedomain(t, 4, 3, a3, &d[9]), QRN_RES_OK);
  CHECK_EQ(QRN_appendprimalgeomeanconedomain(t, 3, &d[10]), QRN_RES_OK);
  CHECK_EQ(QRN_appenddualgeomeanconedomain(t, 3, &d[11]), QRN_RES_OK);
  CHECK_EQ(QRN_appendsvecpsdconedomain(t, 3, &d[12]), QRN_RES_OK);
  QRN_putdomainname(t, d[4], "lorentz");
  acc(t, d[4], {0, 1, 2}, {0.5, -0.0, 1e-3});
  acc(t, d[6], {3, 4, 5}, {});
  acc(t, d[0], {6, 7}, {});
  acc(t, d[1], {8}, {});
  acc(t, d[2], {9}, {2});
  acc(t, d[3], {10}, {});
  acc(t, d[5], {11, 12, 13}, {});
  acc(t, d[7], {0, 1, 2}, {});
  acc(t, d[8], {3, 4, 5}, {});
  acc(t, d[9], {6, 7, 8, 9}, {});
  acc(t, d[10], {10, 11, 12}, {});
  acc(t, d[11], {0, 0, 0}, {});
  acc(t, d[12], {3, 4, 5}, {});
  QRN_putaccname(t, 0, "soc");
  CHECK_EQ(QRN_appenddjcs(t, 2), QRN_RES_OK);
  const qrn_int64 dd[] = {d[1], d[2], d[3]}, da[] = {8, 9, 10}, ts[] = {1, 2};
  const double db[] = {0, 1, -1};
  CHECK_EQ(QRN_putdjc(t, 0, 3, dd, 3, da, db, 2, ts), QRN_RES_OK);
  QRN_putdjcname(t, 0, "either");
  // An interior solution with every vector.
  qrn_int64 ntot = 0;
  QRN_getaccntot(t, &ntot);
  std::vector<qrn_int32> skc(6, QRN_SK_BASIS), skx(7, QRN_SK_AT_LOWER), skn(1, QRN_SK_UNKNOWN);
  std::vector<double> xc(6), xx(7), y(6), slc(6), suc(6), slx(7), sux(7), snx(7), doty(ntot);
  for (int k = 0; k < 7; ++k) xx[k] = 1.0 / (k + 3), slx[k] = -0.0, snx[k] = k * 0.1;
  for (int k = 0; k < 6; ++k) xc[k] = k / 7.0, y[k] = -k * 1e-9;
  for (qrn_int64 k = 0; k < ntot; ++k) doty[k] = std::sqrt(static_cast<double>(k));
  CHECK_EQ(QRN_putsolutionnew(t, QRN_SOL_ITR, skc.data(), skx.data(), skn.data(), xc.data(), xx.data(), y.data(),
                              slc.data(), suc.data(), slx.data(), sux.data(), snx.data(), doty.data()),
           QRN_RES_OK);
  const double bx0[] = {1, 0.5, 2}, bs0[] = {1.0 / 3, 0, 1e-300};
  CHECK_EQ(QRN_putbarxj(t, QRN_SOL_ITR, 0, bx0), QRN_RES_OK);
  CHECK_EQ(QRN_putbarsj(t, QRN_SOL_ITR, 0, bs0), QRN_RES_OK);
}

// The whole problem, exactly: the text format holds all of it with every
// number in its shortest exact text.
std::string problem_text(qrn_task_t t) { return write_string(t, QRN_DATA_FORMAT_TEXT); }

std::string solutions_json(qrn_task_t t) {
  const char *name = "conic_sol_cmp.json";
  if (QRN_writejsonsol(t, name) != QRN_RES_OK) return "(no solutions)";
  std::ifstream f(name);
  std::stringstream ss;
  ss << f.rdbuf();
  std::remove(name);
  return ss.str();
}

const int holding_all[] = {QRN_DATA_FORMAT_TEXT, QRN_DATA_FORMAT_OPF, QRN_DATA_FORMAT_PTF, QRN_DATA_FORMAT_JSON_TASK,
                           QRN_DATA_FORMAT_TASK};

}  // namespace

TEST(formats_conic_round_trip_strings_and_files) {
  Fixture a;
  fill_conic(a.task);
  const std::string want = problem_text(a.task), sols = solutions_json(a.task);
  CHECK(want.find("djcs 2") != std::string::npos && want.find("svecpsd 3") != std::string::npos);
  for (int f : holding_all) {
    Fixture b;
    qrn_rescode rc = -1;
    std::string text = write_string(a.task, f, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_OK);
    if (f == QRN_DATA_FORMAT_TASK) {
      std::FILE *out = std::fopen("conic_rt.task", "wb");
      std::fwrite(text.data(), 1, text.size(), out);
      std::fclose(out);
      CHECK_EQ(QRN_readtask(b.task, "conic_rt.task"), QRN_RES_OK);
      std::remove("conic_rt.task");
    } else {
      CHECK_EQ(QRN_readdatastring(b.task, text.c_str(), f), QRN_RES_OK);
    }
    if (problem_text(b.task) != want) std::printf("  format %d: %s\n", f, last_message(b.task).c_str());
    CHECK(problem_text(b.task) == want);
    CHECK(snapshot(a.task) == snapshot(b.task));
    // The formats that carry solutions carry doty, barx and bars.
    if (f == QRN_DATA_FORMAT_JSON_TASK || f == QRN_DATA_FORMAT_TASK) CHECK(solutions_json(b.task) == sols);
  }
  for (const char *name : {"conic.qtx", "conic.opf.gz", "conic.ptf", "conic.jtask.gz", "conic.task.gz", "conic.task"}) {
    Fixture b;
    CHECK_EQ(QRN_writedata(a.task, name), QRN_RES_OK);
    CHECK_EQ(QRN_readdataautoformat(b.task, name), QRN_RES_OK);
    CHECK(problem_text(b.task) == want);
    std::remove(name);
  }
  // Solution files: the text form and JSON hold doty, barx and bars.
  {
    Fixture b;
    CHECK_EQ(QRN_readdatastring(b.task, want.c_str(), QRN_DATA_FORMAT_TEXT), QRN_RES_OK);
    CHECK_EQ(QRN_writesolution(a.task, QRN_SOL_ITR, "conic.sol"), QRN_RES_OK);
    CHECK_EQ(QRN_readsolution(b.task, QRN_SOL_ITR, "conic.sol"), QRN_RES_OK);
    CHECK(solutions_json(b.task) == sols);
    std::remove("conic.sol");
  }
}

TEST(formats_conic_refusals_name_what_is_lost) {
  Fixture a;
  fill_conic(a.task);
  for (int f : {QRN_DATA_FORMAT_MPS, QRN_DATA_FORMAT_FREE_MPS, QRN_DATA_FORMAT_LP}) {
    qrn_rescode rc = QRN_RES_OK;
    write_string(a.task, f, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_DISJUNCTIVE);
  }
  QRN_putintparam(a.task, QRN_IPAR_OUTPUT_NAMES, QRN_OFF);
  QRN_putqobj(a.task, 0, nullptr, nullptr, nullptr);
  for (int k = 0; k < 6; ++k) QRN_putqconk(a.task, k, 0, nullptr, nullptr, nullptr);
  qrn_rescode rc = QRN_RES_OK;
  write_string(a.task, QRN_DATA_FORMAT_CBF, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_DISJUNCTIVE);
  struct Case {
    int what;
    qrn_rescode code;
  };
  for (Case c : {Case{0, QRN_RES_ERR_WRITE_LOSES_SEMIDEFINITE}, Case{1, QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC},
                 Case{2, QRN_RES_ERR_WRITE_LOSES_DOMAINS}}) {
    Fixture t(1, 2);
    qrn_int64 idx = 0;
    const qrn_int32 dim = 2;
    if (c.what == 0) QRN_appendbarvars(t.task, 1, &dim);
    if (c.what == 1) QRN_appendafes(t.task, 1);
    if (c.what == 2) QRN_appendrplusdomain(t.task, 1, &idx);
    for (int f : {QRN_DATA_FORMAT_MPS, QRN_DATA_FORMAT_LP}) {
      write_string(t.task, f, QRN_COMPRESS_NONE, &rc);
      CHECK_EQ(rc, c.code);
    }
  }
  // CBF: an ACC in a domain CBF has no cone for, an ACC with b.
  {
    Fixture t(0, 3);
    QRN_appendafes(t.task, 3);
    qrn_int64 d = 0;
    QRN_appendprimalgeomeanconedomain(t.task, 3, &d);
    acc(t.task, d, {0, 1, 2}, {});
    write_string(t.task, QRN_DATA_FORMAT_CBF, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_DOMAINS);
  }
  {
    Fixture t(0, 3);
    QRN_appendafes(t.task, 3);
    qrn_int64 d = 0;
    QRN_appendquadraticconedomain(t.task, 3, &d);
    acc(t.task, d, {0, 1, 2}, {1, 0, 0});
    write_string(t.task, QRN_DATA_FORMAT_CBF, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC);
  }
}

TEST(formats_conic_reads_fail_safely) {
  Fixture a, b;
  fill_conic(a.task);
  fill_rich(b.task, false, false);
  const std::string before = problem_text(b.task);
  for (int f : holding_all) {
    std::string text = write_string(a.task, f);
    // Every cut of the text and a few damaged bytes are refused, the task untouched.
    const size_t step = text.size() / 97 + 1;
    for (size_t cut = 0; cut + 1 < text.size(); cut += step) {
      std::string bad = text.substr(0, cut);
      if (f == QRN_DATA_FORMAT_TASK) {
        std::FILE *out = std::fopen("conic_bad.task", "wb");
        std::fwrite(bad.data(), 1, bad.size(), out);
        std::fclose(out);
        CHECK(QRN_readtask(b.task, "conic_bad.task") != QRN_RES_OK);
      } else {
        CHECK(QRN_readdatastring(b.task, bad.c_str(), f) != QRN_RES_OK);
      }
    }
    std::remove("conic_bad.task");
    if (f != QRN_DATA_FORMAT_TASK) {
      // An index past its count in each conic section.
      for (const char *from : {"svecpsd 3", "\"either\" 2", "accs 13"}) {
        std::string bad = text;
        size_t at = bad.find(from);
        if (at == std::string::npos) continue;
        bad.replace(at, std::strlen(from), std::string(from) + "9");
        CHECK(QRN_readdatastring(b.task, bad.c_str(), f) != QRN_RES_OK);
      }
    }
    CHECK(problem_text(b.task) == before);
  }
}

namespace {

// A conic task as CBF states it: ACC k in domain k over the expressions in
// order, b = 0; semidefinite coefficients single store matrices.
void fill_cbf_conic(qrn_task_t t) {
  QRN_appendcons(t, 2);
  QRN_appendvars(t, 4);
  for (int j = 0; j < 4; ++j) QRN_putvarbound(t, j, QRN_BK_FREE, 0, 0);
  QRN_putvarbound(t, 0, QRN_BK_LOWER, 0, 0);
  QRN_putcj(t, 0, 1.0 / 3);
  QRN_putcj(t, 3, -2);
  QRN_putaij(t, 0, 0, 1);
  QRN_putaij(t, 1, 2, 0.1);
  QRN_putconbound(t, 0, QRN_BK_UPPER, 0, 4);
  QRN_putconbound(t, 1, QRN_BK_FIXED, 1.5, 1.5);
  const qrn_int32 dims[] = {2};
  QRN_appendbarvars(t, 1, dims);
  qrn_int64 m0 = symmat(t, 2, {0, 1, 1}, {0, 0, 1}, {1, 0.5, 2});
  qrn_int64 m1 = symmat(t, 2, {1}, {0}, {1.0 / 7});
  qrn_int64 m2 = symmat(t, 2, {0}, {0}, {3});
  double one = 1;
  QRN_putbarcj(t, 0, 1, &m0, &one);
  QRN_putbaraij(t, 1, 0, 1, &m1, &one);
  QRN_appendafes(t, 19);
  for (qrn_int64 r = 0; r < 19; ++r) QRN_putafefentry(t, r, static_cast<qrn_int32>(r % 4), 1.0 + r / 10.0);
  QRN_putafeg(t, 0, 1);
  QRN_putafeg(t, 5, -0.25);
  QRN_putafebarfentry(t, 2, 0, 1, &m2, &one);
  qrn_int64 d = 0;
  const double a[] = {0.3, 0.7}, a3[] = {0.1, 0.2, 0.7};
  QRN_appendquadraticconedomain(t, 3, &d), acc(t, d, {0, 1, 2}, {});
  QRN_appendrquadraticconedomain(t, 3, &d), acc(t, d, {3, 4, 5}, {});
  QRN_appendprimalexpconedomain(t, &d), acc(t, d, {6, 7, 8}, {});
  QRN_appenddualexpconedomain(t, &d), acc(t, d, {9, 10, 11}, {});
  QRN_appendprimalpowerconedomain(t, 3, 2, a, &d), acc(t, d, {12, 13, 14}, {});
  QRN_appenddualpowerconedomain(t, 4, 3, a3, &d), acc(t, d, {15, 16, 17, 18}, {});
}

qrn_int32 domain_type(qrn_task_t t, qrn_int64 d) {
  qrn_int32 type = -1;
  QRN_getdomaintype(t, d, &type);
  return type;
}

}  // namespace

TEST(formats_cbf_conic_round_trip) {
  Fixture a, b;
  fill_cbf_conic(a.task);
  qrn_rescode rc = -1;
  std::string text = write_string(a.task, QRN_DATA_FORMAT_CBF, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_OK);
  if (rc != QRN_RES_OK) std::printf("  %s\n", last_message(a.task).c_str());
  CHECK(text.find("@0:POW 3") != std::string::npos && text.find("@0:POW* 4") != std::string::npos);
  CHECK(text.find("EXP* 3") != std::string::npos && text.find("PSDVAR") != std::string::npos);
  CHECK_EQ(QRN_readdatastring(b.task, text.c_str(), QRN_DATA_FORMAT_CBF), QRN_RES_OK);
  if (problem_text(a.task) != problem_text(b.task))
    std::printf("%s\n----\n%s\n----\n%s\n", text.c_str(), problem_text(a.task).c_str(), problem_text(b.task).c_str());
  CHECK(problem_text(a.task) == problem_text(b.task));
}

TEST(formats_cbf_reads_psd_constraints_and_variable_cones) {
  // min x0 s.t. [x1 x0; x0 1] PSD (the PSD constraint, 2x2), (x0, x1, x2) in
  // EXP as a variable block, x2 + <I, X> = 1 with X 2x2 PSD.
  const char *text =
      "VER\n3\nOBJSENSE\nMIN\nPSDVAR\n1\n2\nVAR\n3 1\nEXP 3\nPSDCON\n1\n2\nCON\n1 1\nL= 1\n"
      "OBJACOORD\n1\n0 1\nFCOORD\n2\n0 0 0 0 1\n0 0 1 1 1\nACOORD\n1\n0 2 1\nBCOORD\n1\n0 -1\n"
      "HCOORD\n2\n0 1 0 0 1\n0 0 1 0 1\nDCOORD\n1\n0 1 1 1\n";
  Fixture t;
  CHECK_EQ(QRN_readdatastring(t.task, text, QRN_DATA_FORMAT_CBF), QRN_RES_OK);
  qrn_int64 nacc = 0, nafe = 0;
  QRN_getnumacc(t.task, &nacc);
  QRN_getnumafe(t.task, &nafe);
  CHECK_EQ(nacc, 2);
  CHECK_EQ(nafe, 6);
  CHECK_EQ(domain_type(t.task, 0), QRN_DOMAIN_PRIMAL_EXP_CONE);
  CHECK_EQ(domain_type(t.task, 1), QRN_DOMAIN_SVEC_PSD_CONE);
  // svec rows 3, 4, 5 = (0,0), (1,0) * sqrt(2), (1,1): x1, sqrt(2) x0, 1.
  qrn_int32 nz = 0, var[2];
  double val[2], g = 0;
  QRN_getafefrow(t.task, 4, &nz, var, val);
  CHECK_EQ(nz, 1);
  CHECK_EQ(var[0], 0);
  CHECK_EQ(bits(val[0]), bits(std::sqrt(2.0)));
  QRN_getafeg(t.task, 5, &g);
  CHECK_EQ(g, 1.0);
  qrn_int64 barnz = 0;
  QRN_getnumbaranz(t.task, &barnz);
  CHECK_EQ(barnz, 1);
  // Unknown cones and sections are refused, the task kept.
  const std::string before = problem_text(t.task);
  CHECK_EQ(QRN_readdatastring(t.task, "VER\n3\nVAR\n2 1\nSVECPSD 2\n", QRN_DATA_FORMAT_CBF), QRN_RES_ERR_READ_UNSUPPORTED);
  CHECK_EQ(QRN_readdatastring(t.task, "VER\n3\nVAR\n3 1\n@0:POW 3\n", QRN_DATA_FORMAT_CBF), QRN_RES_ERR_READ_INDEX);
  CHECK(problem_text(t.task) == before);
}
