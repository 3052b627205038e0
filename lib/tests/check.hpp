// A tiny test harness: TEST(name) registers a function, CHECK and CHECK_EQ
// record failures with their place and carry on.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
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

// Prints a value; vectors, pairs and tuples element by element.
template <class T> void show(std::ostream &os, const T &v) { os << v; }
template <class A, class B> void show(std::ostream &os, const std::pair<A, B> &p);
template <class... T> void show(std::ostream &os, const std::tuple<T...> &t);
template <class T> void show(std::ostream &os, const std::vector<T> &v) {
  os << "[";
  for (size_t k = 0; k < v.size(); ++k) show(os << (k ? ", " : ""), v[k]);
  os << "]";
}
template <class A, class B> void show(std::ostream &os, const std::pair<A, B> &p) { show(os, std::tie(p.first, p.second)); }
template <class... T> void show(std::ostream &os, const std::tuple<T...> &t) {
  os << "(";
  std::apply([&os](const auto &...x) { size_t k = 0; ((os << (k++ ? ", " : ""), show(os, x)), ...); }, t);
  os << ")";
}

template <class A, class B>
void equal(const A &a, const B &b, const char *sa, const char *sb, const char *file, int line) {
  if (a == b) return;
  std::ostringstream os;
  os << sa << " == " << sb << " (";
  show(os, a);
  os << " vs ";
  show(os, b);
  os << ")";
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
