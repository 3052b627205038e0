// Runs every registered test and reports "N passed, N failed".
#include "check.hpp"

#include <cstring>

namespace check {

static int failures_in_test = 0;

std::vector<Test> &registry() {
  static std::vector<Test> tests;
  return tests;
}

void failed(const char *file, int line, const std::string &what) {
  ++failures_in_test;
  std::printf("  %s:%d: CHECK failed: %s\n", file, line, what.c_str());
}

}  // namespace check

int main(int argc, char **argv) {
  int passed = 0, failed = 0;
  for (const auto &t : check::registry()) {
    // An optional argument runs only the tests whose name contains it.
    if (argc > 1 && std::strstr(t.name, argv[1]) == nullptr) continue;
    check::failures_in_test = 0;
    t.fn();
    if (check::failures_in_test == 0) {
      ++passed;
    } else {
      ++failed;
      std::printf("FAILED %s\n", t.name);
    }
  }
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 ? 0 : 1;
}
