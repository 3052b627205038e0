// Problem formats: round trips through strings, files and gzip for every
// format, what each format refuses to write, and the same problem read from
// MPS and LP.
#include <cstdio>
#include <string>

#include "formats_util.hpp"

using namespace fmt_test;

namespace {

const int text_formats[] = {QRN_DATA_FORMAT_TEXT, QRN_DATA_FORMAT_MPS, QRN_DATA_FORMAT_FREE_MPS, QRN_DATA_FORMAT_LP,
                            QRN_DATA_FORMAT_OPF, QRN_DATA_FORMAT_PTF, QRN_DATA_FORMAT_JSON_TASK};

bool holds_cones(int f) { return f != QRN_DATA_FORMAT_LP; }

}  // namespace

TEST(formats_round_trip_strings) {
  for (int f : text_formats) {
    Fixture a, b;
    fill_rich(a.task, true, holds_cones(f));
    qrn_rescode rc = -1;
    std::string text = write_string(a.task, f, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_OK);
    if (rc != QRN_RES_OK) std::printf("  format %d: %s\n", f, last_message(a.task).c_str());
    CHECK_EQ(QRN_readdatastring(b.task, text.c_str(), f), QRN_RES_OK);
    Snapshot sa = snapshot(a.task), sb = snapshot(b.task);
    CHECK(sa == sb);
    if (!(sa == sb)) std::printf("  format %d differs in %s\n%s\n%s\n", f, sa.diff(sb).c_str(), last_message(b.task).c_str(), text.c_str());
  }
}

namespace {

// A task that CBF holds: free, >= 0, <= 0 and = 0 variables, a cone over
// consecutive free variables, one-sided and fixed constraints, integers.
void fill_cbf(qrn_task_t t) {
  QRN_appendcons(t, 4);
  QRN_appendvars(t, 6);
  QRN_putobjsense(t, QRN_OBJECTIVE_SENSE_MAXIMIZE);
  QRN_putcfix(t, 0.1);
  const double c[] = {1, -0.0, 2.0 / 3, 0, 5, 1e-300};
  QRN_putcslice(t, 0, 6, c);
  const qrn_int32 sub[] = {0, 1, 2, 3, 0, 1, 3, 2};
  const double val[] = {1, 2, 3, 4, 0.5, -1, 7, 1e20};
  const qrn_int64 pb[] = {0, 1, 2, 3, 5, 7}, pe[] = {1, 2, 3, 5, 7, 8};
  QRN_putacolslice64(t, 0, 6, pb, pe, sub, val);
  QRN_putconbound(t, 0, QRN_BK_LOWER, -0.0, 0);
  QRN_putconbound(t, 1, QRN_BK_UPPER, 0, 3.5);
  QRN_putconbound(t, 2, QRN_BK_FIXED, 0.0, 0.0);
  QRN_putconbound(t, 3, QRN_BK_FREE, 0, 0);
  QRN_putvarbound(t, 0, QRN_BK_LOWER, 0, 0);
  QRN_putvarbound(t, 1, QRN_BK_UPPER, 0, 0);
  QRN_putvarbound(t, 2, QRN_BK_FIXED, 0, 0);
  for (int j = 3; j < 6; ++j) QRN_putvarbound(t, j, QRN_BK_FREE, 0, 0);
  QRN_appendconeseq(t, QRN_CONE_RQUAD, 0, 3, 3);
  QRN_putvartype(t, 0, QRN_VAR_TYPE_INTEGER);
}

}  // namespace

TEST(formats_round_trip_binary_and_cbf) {
  {
    Fixture a, b;
    fill_rich(a.task);
    QRN_putintparam(a.task, QRN_IPAR_LOG_LEVEL, 3);
    QRN_putdouparam(a.task, QRN_DPAR_OPT_TOL, 1.0 / 3 * 1e-9);
    QRN_putstrparam(a.task, QRN_SPAR_REMOTE_TAG, "tag with \"quotes\"");
    qrn_rescode rc;
    std::string bin = write_string(a.task, QRN_DATA_FORMAT_TASK, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_OK);
    const char *name = "rt_binary.task";
    std::FILE *f = std::fopen(name, "wb");
    std::fwrite(bin.data(), 1, bin.size(), f);
    std::fclose(f);
    CHECK_EQ(QRN_readtask(b.task, name), QRN_RES_OK);
    CHECK(snapshot(a.task) == snapshot(b.task));
    qrn_int32 lv = 0;
    double tol = 0;
    QRN_getintparam(b.task, QRN_IPAR_LOG_LEVEL, &lv);
    QRN_getdouparam(b.task, QRN_DPAR_OPT_TOL, &tol);
    CHECK_EQ(lv, 3);
    CHECK_EQ(bits(tol), bits(1.0 / 3 * 1e-9));
    std::remove(name);
  }
  {
    Fixture a, b;
    fill_cbf(a.task);
    qrn_rescode rc;
    std::string text = write_string(a.task, QRN_DATA_FORMAT_CBF, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_OK);
    CHECK_EQ(QRN_readdatastring(b.task, text.c_str(), QRN_DATA_FORMAT_CBF), QRN_RES_OK);
    Snapshot sa = snapshot(a.task), sb = snapshot(b.task);
    CHECK(sa == sb);
    if (!(sa == sb)) std::printf("  cbf differs in %s\n%s\n", sa.diff(sb).c_str(), text.c_str());
  }
}

TEST(formats_files_and_gzip) {
  struct Case {
    const char *name;
    bool cones;
  };
  const Case cases[] = {{"rt.qtx", true},  {"rt.mps", true},   {"rt.fmps", true},   {"rt.lp", false},
                        {"rt.opf", true},  {"rt.ptf", true},   {"rt.jtask", true},  {"rt.json", true},
                        {"rt.task", true}, {"rt.mps.gz", true}, {"rt.lp.gz", false}, {"rt.task.gz", true},
                        {"rt.opf.gz", true}};
  for (const Case &k : cases) {
    Fixture a, b;
    fill_rich(a.task, true, k.cones);
    CHECK_EQ(QRN_writedata(a.task, k.name), QRN_RES_OK);
    CHECK_EQ(QRN_readdataautoformat(b.task, k.name), QRN_RES_OK);
    Snapshot sa = snapshot(a.task), sb = snapshot(b.task);
    CHECK(sa == sb);
    if (!(sa == sb)) std::printf("  %s differs in %s: %s\n", k.name, sa.diff(sb).c_str(), last_message(b.task).c_str());
    // gzip files start with the gzip magic bytes
    std::FILE *f = std::fopen(k.name, "rb");
    unsigned char head[2] = {0, 0};
    CHECK(f != nullptr && std::fread(head, 1, 2, f) == 2);
    if (f != nullptr) std::fclose(f);
    bool gz = std::string(k.name).size() > 3 && std::string(k.name).substr(std::string(k.name).size() - 3) == ".gz";
    CHECK_EQ(head[0] == 0x1f && head[1] == 0x8b, gz);
    std::remove(k.name);
  }
  // The selectors: compress through the handle, read with the format given.
  Fixture a, b;
  fill_rich(a.task);
  qrn_rescode rc;
  std::string packed = write_string(a.task, QRN_DATA_FORMAT_FREE_MPS, QRN_COMPRESS_GZIP, &rc);
  CHECK_EQ(rc, QRN_RES_OK);
  CHECK(packed.size() > 2 && static_cast<unsigned char>(packed[0]) == 0x1f);
  std::FILE *f = std::fopen("rt_selector.data", "wb");
  std::fwrite(packed.data(), 1, packed.size(), f);
  std::fclose(f);
  CHECK_EQ(QRN_readdataformat(b.task, "rt_selector.data", QRN_DATA_FORMAT_FREE_MPS, QRN_COMPRESS_GZIP), QRN_RES_OK);
  CHECK(snapshot(a.task) == snapshot(b.task));
  // No known extension: QRN_SPAR_DEFAULT_EXTENSION (qtx) applies, and the data is not qtx.
  CHECK_EQ(QRN_readdataautoformat(b.task, "rt_selector.data"), QRN_RES_ERR_READ_VERSION);
  CHECK_EQ(QRN_readdataformat(b.task, "rt_selector.data", QRN_DATA_FORMAT_FREE_MPS, 5), QRN_RES_ERR_COMPRESSION);
  CHECK_EQ(QRN_readdataformat(b.task, "rt_selector.data", 42, 0), QRN_RES_ERR_DATA_FORMAT);
  // A truncated gzip file is a distinct code and leaves the task as it was.
  f = std::fopen("rt_selector.data", "wb");
  std::fwrite(packed.data(), 1, packed.size() / 2, f);
  std::fclose(f);
  Snapshot before = snapshot(b.task);
  CHECK_EQ(QRN_readdataformat(b.task, "rt_selector.data", QRN_DATA_FORMAT_FREE_MPS, QRN_COMPRESS_GZIP), QRN_RES_ERR_GZIP);
  CHECK(snapshot(b.task) == before);
  std::remove("rt_selector.data");
  CHECK_EQ(QRN_readdataautoformat(b.task, "no/such/dir/x.mps"), QRN_RES_ERR_FILE_OPEN);
  CHECK_EQ(QRN_writedata(a.task, "no/such/dir/x.mps"), QRN_RES_ERR_FILE_OPEN);
}

TEST(formats_refuse_what_they_would_lose) {
  Fixture a;
  fill_rich(a.task);
  qrn_rescode rc;
  write_string(a.task, QRN_DATA_FORMAT_LP, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_CONES);
  write_string(a.task, QRN_DATA_FORMAT_CBF, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_QUADRATIC);
  CHECK_EQ(QRN_putvarname(a.task, 0, "a_name_longer_than_8"), QRN_RES_OK);
  write_string(a.task, QRN_DATA_FORMAT_MPS, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_NAMES);
  CHECK(last_message(a.task).find("a_name_longer_than_8") != std::string::npos);
  write_string(a.task, QRN_DATA_FORMAT_FREE_MPS, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(a.task, 0, "two words"), QRN_RES_OK);
  write_string(a.task, QRN_DATA_FORMAT_FREE_MPS, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_NAMES);
  // Generated names on request: then the names are not lost but replaced.
  CHECK_EQ(QRN_putintparam(a.task, QRN_IPAR_OUTPUT_NAMES, QRN_OFF), QRN_RES_OK);
  std::string text = write_string(a.task, QRN_DATA_FORMAT_MPS, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_OK);
  CHECK(text.find(" x0 ") != std::string::npos);
  CHECK_EQ(QRN_putintparam(a.task, QRN_IPAR_OUTPUT_NAMES, QRN_ON), QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(a.task, 0, "x"), QRN_RES_OK);
  // Far apart bounds are still stated exactly; crossed ones cannot be.
  CHECK_EQ(QRN_putconbound(a.task, 3, QRN_BK_RANGED, -1e20, 1.0000001), QRN_RES_OK);
  Fixture far;
  text = write_string(a.task, QRN_DATA_FORMAT_MPS, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_OK);
  CHECK_EQ(QRN_readdatastring(far.task, text.c_str(), QRN_DATA_FORMAT_MPS), QRN_RES_OK);
  CHECK(snapshot(far.task) == snapshot(a.task));
  CHECK_EQ(QRN_putconbound(a.task, 3, QRN_BK_RANGED, 2, 1), QRN_RES_OK);
  write_string(a.task, QRN_DATA_FORMAT_MPS, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_ERR_WRITE_LOSES_BOUNDS);
  // ... which LP holds as a double inequality.
  Fixture l, back;
  fill_rich(l.task, true, false);
  CHECK_EQ(QRN_putconbound(l.task, 3, QRN_BK_RANGED, 2, 1), QRN_RES_OK);
  text = write_string(l.task, QRN_DATA_FORMAT_LP, QRN_COMPRESS_NONE, &rc);
  CHECK_EQ(rc, QRN_RES_OK);
  CHECK_EQ(QRN_readlpstring(back.task, text.c_str()), QRN_RES_OK);
  CHECK(snapshot(l.task) == snapshot(back.task));
  // A refused file write leaves no file behind.
  CHECK_EQ(QRN_writedata(a.task, "refused.mps"), QRN_RES_ERR_WRITE_LOSES_BOUNDS);
  CHECK(std::fopen("refused.mps", "rb") == nullptr);
}

TEST(formats_mps_and_lp_agree) {
  // One problem stated by hand in both formats reads to the same data.
  const char *mps =
      "NAME          SMALL\n"
      "OBJSENSE\n    MAX\n"
      "ROWS\n N  profit\n L  lim1\n G  lim2\n E  bal\n"
      "COLUMNS\n"
      "    x         profit    3            lim1      1\n"
      "    x         lim2      1\n"
      "    MARKER                 'MARKER'                 'INTORG'\n"
      "    y         profit    2            lim1      1\n"
      "    y         bal       1\n"
      "    MARKER                 'MARKER'                 'INTEND'\n"
      "    z         profit    -1           bal       -1\n"
      "RHS\n    RHS       lim1      4            lim2      1\n    RHS       profit    -2.5\n"
      "RANGES\n    RNG       lim2      2\n"
      "BOUNDS\n UP BND       x         3\n UP BND       y         5\n MI BND       z\n"
      "QUADOBJ\n    x         x         2\n    y         x         1\n"
      "ENDATA\n";
  const char *lp =
      "\\ task: SMALL\n"
      "maximize\n profit: 3 x + 2 y - z + [ 2 x ^ 2 + 2 x * y ] / 2 + 2.5\n"
      "subject to\n lim1: x + y <= 4\n lim2: 1 <= x <= 3\n bal: y - z = 0\n"
      "bounds\n x <= 3\n 0 <= y <= 5\n -inf <= z\n z <= +inf\n"
      "general\n y\nend\n";
  Fixture a, b;
  CHECK_EQ(QRN_readdatastring(a.task, mps, QRN_DATA_FORMAT_MPS), QRN_RES_OK);
  std::printf("%s", last_message(a.task).c_str());
  CHECK_EQ(QRN_readlpstring(b.task, lp), QRN_RES_OK);
  std::printf("%s", last_message(b.task).c_str());
  // The LP bounds section gives x only an upper bound on [0, inf): the same.
  Snapshot sa = snapshot(a.task), sb = snapshot(b.task);
  CHECK(sa == sb);
  if (!(sa == sb)) std::printf("  mps/lp differ in %s\n", sa.diff(sb).c_str());
}
