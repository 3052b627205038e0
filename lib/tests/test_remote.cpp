// Remote optimization without a server: argument checks that come before any
// connection, a refused connection, and the server's two entry points.
#include <cstring>
#include <string>

#include "fixture.hpp"

namespace {

size_t QRN_CALL append(void *handle, const void *data, size_t count) {
  static_cast<std::string *>(handle)->append(static_cast<const char *>(data), count);
  return count;
}

void small_lp(qrn_task_t t) {
  // min -x - y, x + y <= 1.5, 0 <= x, y <= 1
  CHECK_EQ(QRN_appendcons(t, 1), QRN_RES_OK);
  CHECK_EQ(QRN_appendvars(t, 2), QRN_RES_OK);
  const qrn_int32 sub[] = {0, 1};
  const qrn_real val[] = {1, 1};
  CHECK_EQ(QRN_putarow(t, 0, 2, sub, val), QRN_RES_OK);
  CHECK_EQ(QRN_putconbound(t, 0, QRN_BK_UPPER, -QRN_INFINITY, 1.5), QRN_RES_OK);
  for (qrn_int32 j = 0; j < 2; ++j) {
    CHECK_EQ(QRN_putvarbound(t, j, QRN_BK_RANGED, 0, 1), QRN_RES_OK);
    CHECK_EQ(QRN_putcj(t, j, -1), QRN_RES_OK);
  }
}

}  // namespace

TEST(remote_arguments_are_checked_before_connecting) {
  Fixture f;
  qrn_int32 a = -1, r = -1, trm = -1;
  for (const char *bad : {"", "localhost", "http://h", "https://h:1", "h:0", "h:65536", "h:12a", "a b:1", "@h:1",
                          "[::1:1", ":80"})
    CHECK_EQ(QRN_asyncpoll(f.task, bad, "", "s1-00000000000000000000000000000000", &a, &r, &trm),
             QRN_RES_ERR_REMOTE_ADDRESS);
  for (const char *bad : {"", "s1", "s1-0", "s1-0000000000000000000000000000000G", "-00000000000000000000000000000000",
                          "s_1-00000000000000000000000000000000", "s1-000000000000000000000000000000000"})
    CHECK_EQ(QRN_asyncstop(f.task, "127.0.0.1:1", "", bad), QRN_RES_ERR_REMOTE_TOKEN);
  CHECK_EQ(QRN_asyncstop(f.task, "127.0.0.1:1", "", nullptr), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_asyncoptimize(f.task, "127.0.0.1:1", "", nullptr), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_optimizermt(f.task, "127.0.0.1:1", "bad token", &trm), QRN_RES_ERR_ARGUMENT);
  CHECK_EQ(a, -1);
  // putoptserverhost: checked, stored in QRN_SPAR_REMOTE_SERVER, "" clears it
  CHECK_EQ(QRN_putoptserverhost(f.task, "nohost"), QRN_RES_ERR_REMOTE_ADDRESS);
  CHECK_EQ(QRN_putoptserverhost(f.task, "http://tok@[::1]:8470/"), QRN_RES_OK);
  char buf[64];
  CHECK_EQ(QRN_getstrparam(f.task, QRN_SPAR_REMOTE_SERVER, sizeof buf, nullptr, buf), QRN_RES_OK);
  CHECK_EQ(std::string(buf), "http://tok@[::1]:8470/");
  CHECK_EQ(QRN_putoptserverhost(f.task, ""), QRN_RES_OK);
  CHECK_EQ(QRN_optimizetrm(f.task, &trm), QRN_RES_OK);  // local again
}

TEST(remote_refused_connection_is_its_own_code) {
  Fixture f;
  small_lp(f.task);
  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_REMOTE_RETRIES, 1), QRN_RES_OK);
  qrn_int32 trm = -1;
  // port 1 on loopback: nobody listens there
  CHECK_EQ(QRN_optimizermt(f.task, "127.0.0.1:1", "", &trm), QRN_RES_ERR_REMOTE_CONNECT);
  CHECK_EQ(trm, -1);
  qrn_int32 avail = -1;
  CHECK_EQ(QRN_asyncgetresult(f.task, "127.0.0.1:1", "", "s1-00000000000000000000000000000000", &avail, nullptr,
                              nullptr),
           QRN_RES_ERR_REMOTE_LOST);  // a job that was running: the server went away
  qrn_int32 def = 1;
  CHECK_EQ(QRN_solutiondef(f.task, QRN_SOL_BAS, &def), QRN_RES_OK);
  CHECK_EQ(def, 0);
}

TEST(remote_server_entry_points) {
  Fixture f, g;
  small_lp(f.task);
  std::string file;
  CHECK_EQ(QRN_writedatahandle(f.task, append, &file, QRN_DATA_FORMAT_TASK, QRN_COMPRESS_NONE), QRN_RES_OK);
  // every truncation is refused cleanly and leaves the task as it was
  for (size_t n = 0; n < file.size(); n += 7) CHECK(QRN_readtaskbuffer(g.task, file.data(), static_cast<qrn_int64>(n)) != QRN_RES_OK);
  CHECK_EQ(QRN_readtaskbuffer(g.task, nullptr, 5), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_readtaskbuffer(g.task, file.data(), -1), QRN_RES_ERR_NEGATIVE_COUNT);
  qrn_int32 numvar = -1;
  CHECK_EQ(QRN_getnumvar(g.task, &numvar), QRN_RES_OK);
  CHECK_EQ(numvar, 0);
  CHECK_EQ(QRN_readtaskbuffer(g.task, file.data(), static_cast<qrn_int64>(file.size())), QRN_RES_OK);
  qrn_int32 trm = -1;
  CHECK_EQ(QRN_optimizetrm(g.task, &trm), QRN_RES_OK);
  std::string ok, failed;
  CHECK_EQ(QRN_writeremoteresult(g.task, QRN_RES_OK, trm, 0.5, 1.0, 100, "", "log\n", append, &ok), QRN_RES_OK);
  CHECK_EQ(QRN_writeremoteresult(g.task, QRN_RES_ERR_OPT_CONES, 0, 0.5, 1.0, 100, "no", "", append, &failed),
           QRN_RES_OK);
  CHECK(ok.compare(0, 8, std::string("QRNRSLT\0", 8)) == 0);
  CHECK(ok.size() > failed.size() + 111 * 8);  // the failed run carries no information items
  CHECK_EQ(QRN_writeremoteresult(g.task, QRN_RES_OK, 0, 0, 0, 0, "", "", nullptr, nullptr), QRN_RES_ERR_NULL_POINTER);
}
