// The yardstick of bench/optimize.py: the same LP solved by Clp called
// directly, with the settings the library uses for its default optimizer
// (dual simplex, presolve on, automatic scaling, tolerances 1e-8).
// Usage: clp_direct FILE REPEAT; prints one line per solve: seconds objective.
// FILE: int32 m, n; int64 nnz; int32 start[n+1], index[nnz]; double value[nnz],
// collb[n], colub[n], obj[n], rowlb[m], rowub[m] (1e30 for infinity).
#include "ClpSimplex.hpp"
#include "ClpSolve.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

template <class T>
static void take(std::FILE *f, std::vector<T> &v, size_t n) {
  v.resize(n);
  if (n > 0 && std::fread(v.data(), sizeof(T), n, f) != n) std::exit(2);
}

int main(int argc, char **argv) {
  if (argc < 3) return 1;
  std::FILE *f = std::fopen(argv[1], "rb");
  if (f == nullptr) return 1;
  int m, n;
  long long nnz;
  if (std::fread(&m, 4, 1, f) != 1 || std::fread(&n, 4, 1, f) != 1 || std::fread(&nnz, 8, 1, f) != 1) return 2;
  std::vector<int> start, index;
  std::vector<double> value, collb, colub, obj, rowlb, rowub;
  take(f, start, n + 1);
  take(f, index, nnz);
  take(f, value, nnz);
  take(f, collb, n);
  take(f, colub, n);
  take(f, obj, n);
  take(f, rowlb, m);
  take(f, rowub, m);
  std::fclose(f);
  auto inf = [](std::vector<double> &v) {
    for (double &x : v) x = x >= 1e30 ? COIN_DBL_MAX : x <= -1e30 ? -COIN_DBL_MAX : x;
  };
  inf(collb), inf(colub), inf(rowlb), inf(rowub);
  const int repeat = std::atoi(argv[2]);
  for (int r = 0; r < repeat; ++r) {
    const auto t0 = std::chrono::steady_clock::now();
    ClpSimplex model;
    model.setLogLevel(0);
    model.loadProblem(n, m, start.data(), index.data(), value.data(), collb.data(), colub.data(), obj.data(),
                      rowlb.data(), rowub.data());
    model.setPrimalTolerance(1e-8);
    model.setDualTolerance(1e-8);
    model.scaling(3);
    ClpSolve options;
    options.setSolveType(ClpSolve::useDual);
    options.setPresolveType(ClpSolve::presolveOn);
    model.initialSolve(options);
    // Read the solution out, as any caller must.
    std::vector<double> x(model.primalColumnSolution(), model.primalColumnSolution() + n);
    std::vector<double> y(model.dualRowSolution(), model.dualRowSolution() + m);
    std::vector<double> d(model.dualColumnSolution(), model.dualColumnSolution() + n);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    std::printf("%.6f %.12g\n", seconds, model.objectiveValue());
  }
  return 0;
}
