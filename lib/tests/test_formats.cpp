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
