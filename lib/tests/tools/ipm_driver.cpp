// Test-only driver of the interior-point engine: reads a problem from a text
// file, solves it and prints the result (used by bench/ipm_oracle.py).
//
// Input, whitespace-separated:
//   n m
//   c_0 ... c_{n-1}  c0
//   nnzP   then nnzP triplets "i j v" of the upper triangle of P
//   nnzA   then nnzA triplets "i j v" of A (m x n)
//   b_0 ... b_{m-1}
//   ncones then per cone: kind dim [nalpha alpha...]   (kind: zero nonneg soc rsoc psd
//                                                       exp dexp pow dpow gmean dgmean)
// Output: "status S", "iterations K", "pobj V", "dobj V", "time T", "factor_time T",
// "factorizations F", then lines "x ...", "s ...", "y ...".
#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <cblas.h>

#include "ipm.hpp"

using namespace qrn::ipm;

static Csc read_matrix(std::istream &in, int m, int n) {
  long nnz;
  in >> nnz;
  std::vector<std::tuple<int, int, double>> t(nnz);
  for (auto &e : t) in >> std::get<1>(e) >> std::get<0>(e) >> std::get<2>(e);  // stored as (j, i, v) to sort by column
  std::sort(t.begin(), t.end());
  Csc M(m, n);
  for (auto &e : t) {
    M.rowind.push_back(std::get<1>(e));
    M.val.push_back(std::get<2>(e));
    ++M.colptr[std::get<0>(e) + 1];
  }
  for (int j = 0; j < n; ++j) M.colptr[j + 1] += M.colptr[j];
  return M;
}

int main(int argc, char **argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s problem.txt [-v] [-k0|-k1|-k2] [-tTHREADS] [-rREG] [-iMAXITER] [-eSOCEXPAND]\n", argv[0]);
    return 2;
  }
  std::ifstream in(argv[1]);
  openblas_set_num_threads(1);  // as the library does
  bool verbose = false;
  Settings st;
  for (int a = 2; a < argc; ++a) {
    std::string opt(argv[a]);
    if (opt == "-v") verbose = true;
    if (opt.size() == 3 && opt.compare(0, 2, "-k") == 0) st.kkt_method = opt[2] - '0';  // -k0, -k1, -k2
    if (opt.compare(0, 2, "-t") == 0) st.threads = std::atoi(opt.c_str() + 2);  // -t2
    if (opt.compare(0, 2, "-i") == 0) st.max_iter = std::atoi(opt.c_str() + 2);  // -i3
    if (opt.compare(0, 2, "-e") == 0) st.soc_expand_dim = std::atoi(opt.c_str() + 2);  // -e16
    if (opt.compare(0, 2, "-r") == 0) st.static_reg = std::atof(opt.c_str() + 2);  // -r1e-8
  }
  Problem pb;
  int m;
  in >> pb.n >> m;
  pb.c.resize(pb.n);
  for (double &v : pb.c) in >> v;
  in >> pb.c0;
  pb.P = read_matrix(in, pb.n, pb.n);
  pb.A = read_matrix(in, m, pb.n);
  pb.b.resize(m);
  for (double &v : pb.b) in >> v;
  int nc;
  in >> nc;
  const std::map<std::string, ConeKind> kinds = {
      {"zero", ConeKind::Zero}, {"nonneg", ConeKind::Nonnegative}, {"soc", ConeKind::Quadratic},
      {"rsoc", ConeKind::RotatedQuadratic}, {"psd", ConeKind::Psd}, {"exp", ConeKind::PrimalExp},
      {"dexp", ConeKind::DualExp}, {"pow", ConeKind::PrimalPower}, {"dpow", ConeKind::DualPower},
      {"gmean", ConeKind::PrimalGeoMean}, {"dgmean", ConeKind::DualGeoMean}};
  for (int k = 0; k < nc; ++k) {
    std::string kind;
    Cone c;
    in >> kind >> c.dim;
    if (!kinds.count(kind)) {
      std::fprintf(stderr, "unknown cone %s\n", kind.c_str());
      return 2;
    }
    c.kind = kinds.at(kind);
    if (c.kind == ConeKind::PrimalPower || c.kind == ConeKind::DualPower) {
      int na;
      in >> na;
      c.alpha.resize(na);
      for (double &a : c.alpha) in >> a;
    }
    pb.cones.push_back(c);
  }
  if (!in) {
    std::fprintf(stderr, "could not read %s\n", argv[1]);
    return 2;
  }
  LogSink log;
  if (verbose) log = [](const std::string &l) { std::fprintf(stderr, "%s\n", l.c_str()); };
  Result r;
  try {
    r = solve(pb, st, {}, log);
  } catch (const std::exception &e) {
    std::fprintf(stderr, "refused: %s\n", e.what());
    return 2;
  }
  std::printf("status %s\niterations %d\npobj %.17g\ndobj %.17g\ntime %.6f\nfactor_time %.6f\nfactorizations %d\n"
              "factor_entries %.0f\nsupernodal %d\n",
              status_name(r.status), r.iterations, r.pobj, r.dobj, r.solve_time, r.factor_time, r.factorizations,
              r.factor_entries, int(r.supernodal));
  for (auto [name, v] : {std::pair<const char *, std::vector<double> *>{"x", &r.x}, {"s", &r.s}, {"y", &r.y}}) {
    std::printf("%s", name);
    for (double e : *v) std::printf(" %.17g", e);
    std::printf("\n");
  }
  return 0;
}
