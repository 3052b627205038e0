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
