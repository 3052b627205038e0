// What most library tests start from: an environment and a task, optionally
// with constraints and variables appended, and a collector for stream text.
#pragma once

#include <string>
#include <vector>

#include "check.hpp"
#include "quarn.h"

struct Fixture {
  qrn_env_t env = nullptr;
  qrn_task_t task = nullptr;
  explicit Fixture(int numcon = 0, int numvar = 0) {
    CHECK_EQ(QRN_makeenv(&env, nullptr), QRN_RES_OK);
    CHECK_EQ(QRN_makeemptytask(env, &task), QRN_RES_OK);
    CHECK_EQ(QRN_appendcons(task, numcon), QRN_RES_OK);
    CHECK_EQ(QRN_appendvars(task, numvar), QRN_RES_OK);
  }
  ~Fixture() {
    QRN_deletetask(&task);
    QRN_deleteenv(&env);
  }
  Fixture(const Fixture &) = delete;
  Fixture &operator=(const Fixture &) = delete;
};

// Collects every text sent to a stream linked with this as its handle, both
// call by call and run together.
struct Capture {
  std::vector<std::string> lines;
  std::string text;
  static void QRN_CALL take(void *handle, const char *text) {
    auto *self = static_cast<Capture *>(handle);
    self->lines.emplace_back(text);
    self->text += text;
  }
  void clear() {
    lines.clear();
    text.clear();
  }
};
