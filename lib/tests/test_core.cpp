// Environments, tasks, the last error and the streams through the C interface.
#include <string>
#include <vector>

#include "fixture.hpp"

namespace {

double aij(qrn_task_t t, int i, int j) {
  double v = -1;
  CHECK_EQ(QRN_getaij(t, i, j, &v), QRN_RES_OK);
  return v;
}

}  // namespace

TEST(env_and_task_lifecycle) {
  qrn_env_t env = nullptr;
  qrn_task_t task = nullptr;
  CHECK_EQ(QRN_makeenv(&env, nullptr), QRN_RES_OK);
  CHECK(env != nullptr);
  CHECK_EQ(QRN_makeemptytask(env, &task), QRN_RES_OK);
  CHECK_EQ(QRN_appendcons(task, 2), QRN_RES_OK);
  CHECK_EQ(QRN_deletetask(&task), QRN_RES_OK);
  CHECK(task == nullptr);
  CHECK_EQ(QRN_deletetask(&task), QRN_RES_OK);  // a null *task is accepted
  CHECK_EQ(QRN_deleteenv(&env), QRN_RES_OK);
  CHECK(env == nullptr);

  // A task made without an environment lives in the global one.
  CHECK_EQ(QRN_makeemptytask(nullptr, &task), QRN_RES_OK);
  CHECK_EQ(QRN_appendvars(task, 1), QRN_RES_OK);
  CHECK_EQ(QRN_deletetask(&task), QRN_RES_OK);

  // With garbage collection the task keeps its environment alive.
  CHECK_EQ(QRN_makeenv(&env, nullptr), QRN_RES_OK);
  CHECK_EQ(QRN_enablegarcolenv(env), QRN_RES_OK);
  CHECK_EQ(QRN_makeemptytask(env, &task), QRN_RES_OK);
  CHECK_EQ(QRN_deleteenv(&env), QRN_RES_OK);
  CHECK_EQ(QRN_appendcons(task, 1), QRN_RES_OK);
  CHECK_EQ(QRN_deletetask(&task), QRN_RES_OK);
}

TEST(null_handles_give_codes) {
  qrn_int32 n = -1;
  CHECK_EQ(QRN_makeenv(nullptr, nullptr), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_deletetask(nullptr), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_deleteenv(nullptr), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(QRN_getnumcon(nullptr, &n), QRN_RES_ERR_NULL_TASK);
  CHECK_EQ(QRN_putacol(nullptr, 0, 0, nullptr, nullptr), QRN_RES_ERR_NULL_TASK);
  CHECK_EQ(QRN_getlasterror(nullptr, &n, 0, nullptr, nullptr), QRN_RES_ERR_NULL_TASK);
  CHECK_EQ(QRN_linkfunctoenvstream(nullptr, 0, nullptr, Capture::take), QRN_RES_ERR_NULL_ENV);
  qrn_task_t clone = reinterpret_cast<qrn_task_t>(&n);
  CHECK_EQ(QRN_clonetask(nullptr, &clone), QRN_RES_ERR_NULL_TASK);
  CHECK(clone == nullptr);
  CHECK_EQ(n, -1);
}

TEST(clone_is_a_deep_copy) {
  Fixture f;
  QRN_appendcons(f.task, 2);
  QRN_appendvars(f.task, 2);
  QRN_putaij(f.task, 1, 0, 3.0);
  Capture err;
  QRN_linkfunctotaskstream(f.task, QRN_STREAM_ERR, &err, Capture::take);
  CHECK_EQ(QRN_getaij(f.task, 9, 0, nullptr), QRN_RES_ERR_INDEX_CON);

  qrn_task_t c = nullptr;
  CHECK_EQ(QRN_clonetask(f.task, &c), QRN_RES_OK);
  qrn_rescode code = -1;
  CHECK_EQ(QRN_getlasterror(c, &code, 0, nullptr, nullptr), QRN_RES_OK);
  CHECK_EQ(code, QRN_RES_OK);  // the copy starts without a last error
  CHECK_EQ(aij(c, 1, 0), 3.0);

  // Changes on either side stay on that side, both by row and by column.
  QRN_putaij(f.task, 1, 0, 4.0);
  QRN_putaij(c, 0, 1, 5.0);
  CHECK_EQ(aij(c, 1, 0), 3.0);
  CHECK_EQ(aij(f.task, 0, 1), 0.0);
  qrn_int32 nz = -1;
  QRN_getarownumnz(f.task, 0, &nz);
  CHECK_EQ(nz, 0);

  // The copy does not write to the original's streams.
  size_t before = err.lines.size();
  CHECK_EQ(QRN_getaij(c, 9, 0, nullptr), QRN_RES_ERR_INDEX_CON);
  CHECK_EQ(err.lines.size(), before);
  QRN_deletetask(&c);
  CHECK_EQ(aij(f.task, 1, 0), 4.0);
}

TEST(last_error_and_error_stream) {
  Fixture f;
  Capture err;
  CHECK_EQ(QRN_linkfunctotaskstream(f.task, QRN_STREAM_ERR, &err, Capture::take), QRN_RES_OK);
  QRN_appendvars(f.task, 3);
  CHECK_EQ(QRN_getacolnumnz(f.task, 7, nullptr), QRN_RES_ERR_INDEX_VAR);

  qrn_rescode code = 0;
  qrn_int32 len = -1;
  char msg[256];
  CHECK_EQ(QRN_getlasterror(f.task, &code, sizeof msg, &len, msg), QRN_RES_OK);
  CHECK_EQ(code, QRN_RES_ERR_INDEX_VAR);
  const std::string text = msg;
  CHECK_EQ(len, static_cast<qrn_int32>(text.size()));
  CHECK(text.find("j = 7") != std::string::npos);
  CHECK(text.find("0..2") != std::string::npos);
  CHECK_EQ(err.lines.size(), 1u);
  if (!err.lines.empty()) CHECK_EQ(err.lines[0], "QRN_getacolnumnz: error 1101: " + text + "\n");

  // A short buffer gets a truncated, terminated message; the length stays whole.
  char small[5] = "xxxx";
  CHECK_EQ(QRN_getlasterror(f.task, nullptr, 3, &len, small), QRN_RES_OK);
  CHECK_EQ(std::string(small), text.substr(0, 2));
  CHECK_EQ(len, static_cast<qrn_int32>(text.size()));

  // Succeeding calls leave the last error in place.
  CHECK_EQ(QRN_appendcons(f.task, 1), QRN_RES_OK);
  QRN_getlasterror(f.task, &code, 0, nullptr, nullptr);
  CHECK_EQ(code, QRN_RES_ERR_INDEX_VAR);
}

TEST(stream_linking) {
  Fixture f;
  Capture err, other;
  CHECK_EQ(QRN_linkfunctotaskstream(f.task, 4, &err, Capture::take), QRN_RES_ERR_STREAM);
  CHECK_EQ(QRN_linkfunctotaskstream(f.task, -1, &err, Capture::take), QRN_RES_ERR_STREAM);
  CHECK_EQ(QRN_linkfunctoenvstream(f.env, 4, &err, Capture::take), QRN_RES_ERR_STREAM);
  // The refused link itself was reported, but nothing was linked to receive it.
  CHECK(err.lines.empty());

  QRN_linkfunctotaskstream(f.task, QRN_STREAM_ERR, &err, Capture::take);
  QRN_linkfunctotaskstream(f.task, QRN_STREAM_MSG, &other, Capture::take);
  QRN_putaij(f.task, 0, 0, 1.0);
  CHECK_EQ(err.lines.size(), 1u);
  CHECK(other.lines.empty());  // errors go to the error stream only

  // Linking a null function stops the forwarding.
  QRN_linkfunctotaskstream(f.task, QRN_STREAM_ERR, nullptr, nullptr);
  QRN_putaij(f.task, 0, 0, 1.0);
  CHECK_EQ(err.lines.size(), 1u);
}
