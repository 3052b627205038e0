// A tiny test harness: TEST(name) registers a function, CHECK and CHECK_EQ
// record failures with their place and carry on.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace check {

struct Test {
  const char *name;
  void (*fn)();
};

std::vector<Test> &registry();
void failed(const char *file, int line, const std::string &what);

struct Register {
  Register(const char *name, void (*fn)()) { registry().push_back({name, fn}); }
};

template <class A, class B>
void equal(const A &a, const B &b, const char *sa, const char *sb, const char *file, int line) {
  if (a == b) return;
  std::ostringstream os;
  os << sa << " == " << sb << " (" << a << " vs " << b << ")";
  failed(file, line, os.str());
}

}  // namespace check

#define TEST(name)                                                 \
  static void test_##name();                                       \
  static check::Register register_##name(#name, &test_##name);     \
  static void test_##name()

#define CHECK(cond) \
  ((cond) ? (void)0 : check::failed(__FILE__, __LINE__, #cond))
#define CHECK_EQ(a, b) check::equal((a), (b), #a, #b, __FILE__, __LINE__)
