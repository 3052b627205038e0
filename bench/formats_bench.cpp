// Reading and writing problem files: our MPS reader and writer against
// CoinUtils' CoinMpsIO on the same problem in the same run, and the binary
// task file against a plain copy of the same bytes. Built with -DQRN_BENCH=ON;
// run through bench/formats.py, or directly: qrn_formats_bench [DIR] [REPEAT].
#include <coin/CoinMessageHandler.hpp>
#include <coin/CoinMpsIO.hpp>
#include <coin/CoinPackedMatrix.hpp>

#include <chrono>
#include <cmath>
#include <cstring>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "quarn.h"

namespace {

using Clock = std::chrono::steady_clock;

// Best time of `repeat` runs, in seconds.
double best(int repeat, const std::function<void()> &f) {
  double b = 1e300;
  for (int r = 0; r < repeat; ++r) {
    auto t0 = Clock::now();
    f();
    b = std::min(b, std::chrono::duration<double>(Clock::now() - t0).count());
  }
  return b;
}

void ok(qrn_rescode r, const char *what) {
  if (r != QRN_RES_OK) {
    std::fprintf(stderr, "%s failed: %d\n", what, r);
    std::exit(1);
  }
}

long file_size(const std::string &name) {
  std::FILE *f = std::fopen(name.c_str(), "rb");
  if (f == nullptr) return -1;
  std::fseek(f, 0, SEEK_END);
  long n = std::ftell(f);
  std::fclose(f);
  return n;
}

// Reads a file whole and writes it to another: the least a reader or a
// writer of those bytes could cost.
void plain_copy(const std::string &from, const std::string &to, std::vector<char> &buf, double &tread, double &twrite) {
  auto t0 = Clock::now();
  std::FILE *f = std::fopen(from.c_str(), "rb");
  buf.resize(static_cast<size_t>(file_size(from)));
  if (std::fread(buf.data(), 1, buf.size(), f) != buf.size()) std::exit(1);
  std::fclose(f);
  auto t1 = Clock::now();
  f = std::fopen(to.c_str(), "wb");
  std::fwrite(buf.data(), 1, buf.size(), f);
  std::fclose(f);
  auto t2 = Clock::now();
  tread = std::chrono::duration<double>(t1 - t0).count();
  twrite = std::chrono::duration<double>(t2 - t1).count();
}

}  // namespace

int main(int argc, char **argv) {
  const std::string dir = argc > 1 ? argv[1] : ".";
  const int repeat = argc > 2 ? std::atoi(argv[2]) : 3;
  const int m = 100000, n = 100000, per_col = 10;  // 10^6 non-zeros

  // The problem: random rows, values needing all 17 digits, every bound kind,
  // one in ten variables integer, names of at most 8 characters.
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> val(-10, 10);
  std::vector<qrn_int64> ptrb(n), ptre(n);
  std::vector<qrn_int32> asub;
  std::vector<double> aval, c(n), blc(m), buc(m), blx(n), bux(n);
  std::vector<qrn_int32> bkc(m), bkx(n);
  for (int j = 0; j < n; ++j) {
    ptrb[j] = static_cast<qrn_int64>(asub.size());
    std::vector<qrn_int32> rows;
    while (static_cast<int>(rows.size()) < per_col) {
      qrn_int32 i = static_cast<qrn_int32>(rng() % m);
      bool dup = false;
      for (qrn_int32 r : rows) dup = dup || r == i;
      if (!dup) rows.push_back(i);
    }
    std::sort(rows.begin(), rows.end());
    for (qrn_int32 i : rows) asub.push_back(i), aval.push_back(val(rng));
    ptre[j] = static_cast<qrn_int64>(asub.size());
    c[j] = val(rng);
    bkx[j] = j % 5 == 0 ? QRN_BK_FREE : j % 5 == 1 ? QRN_BK_RANGED : QRN_BK_LOWER;
    blx[j] = bkx[j] == QRN_BK_FREE ? -1e30 : 0;
    bux[j] = bkx[j] == QRN_BK_RANGED ? 1 + std::fabs(val(rng)) : 1e30;
  }
  for (int i = 0; i < m; ++i) {
    bkc[i] = i % 3 == 0 ? QRN_BK_UPPER : i % 3 == 1 ? QRN_BK_LOWER : QRN_BK_FIXED;
    blc[i] = bkc[i] == QRN_BK_UPPER ? -1e30 : val(rng);
    buc[i] = bkc[i] == QRN_BK_LOWER ? 1e30 : bkc[i] == QRN_BK_FIXED ? blc[i] : val(rng);
  }
  qrn_env_t env;
  qrn_task_t task = nullptr;
  ok(QRN_makeenv(&env, nullptr), "makeenv");
  std::vector<qrn_int32> ints, types;
  for (int j = 0; j < n; j += 10) ints.push_back(j), types.push_back(QRN_VAR_TYPE_INTEGER);
  std::vector<std::string> rn(m), cn(n);
  for (int i = 0; i < m; ++i) rn[i] = "R" + std::to_string(i);
  for (int j = 0; j < n; ++j) cn[j] = "C" + std::to_string(j);
  // Building the task through the C interface: what every reader ends with.
  auto build = [&]() {
    if (task != nullptr) QRN_deletetask(&task);
    ok(QRN_makeemptytask(env, &task), "makeemptytask");
    ok(QRN_inputdata64(task, m, n, m, n, c.data(), 0.5, ptrb.data(), ptre.data(), asub.data(), aval.data(), bkc.data(),
                       blc.data(), buc.data(), bkx.data(), blx.data(), bux.data()),
       "inputdata64");
    ok(QRN_putvartypelist(task, static_cast<qrn_int32>(ints.size()), ints.data(), types.data()), "putvartypelist");
    for (int i = 0; i < m; ++i) QRN_putconname(task, i, rn[i].c_str());
    for (int j = 0; j < n; ++j) QRN_putvarname(task, j, cn[j].c_str());
    ok(QRN_putobjname(task, "obj"), "putobjname");
  };
  const double t_build = best(repeat, build);

  // The same problem in CoinMpsIO.
  CoinMpsIO coin;
  CoinMessageHandler quiet;
  quiet.setLogLevel(0);
  coin.passInMessageHandler(&quiet);
  {
    std::vector<int> start(n + 1), len(n);
    for (int j = 0; j < n; ++j) start[j] = static_cast<int>(ptrb[j]), len[j] = static_cast<int>(ptre[j] - ptrb[j]);
    start[n] = static_cast<int>(asub.size());
    CoinPackedMatrix a(true, m, n, static_cast<CoinBigIndex>(asub.size()), aval.data(), asub.data(), start.data(), len.data());
    std::vector<char> integrality(n, 0);
    for (qrn_int32 j : ints) integrality[j] = 1;
    std::vector<const char *> rows(m), cols(n);
    for (int i = 0; i < m; ++i) rows[i] = rn[i].c_str();
    for (int j = 0; j < n; ++j) cols[j] = cn[j].c_str();
    coin.setMpsData(a, 1e30, blx.data(), bux.data(), c.data(), integrality.data(), blc.data(), buc.data(), cols.data(), rows.data());
  }

  const std::string ours = dir + "/bench_ours.mps", coinfile = dir + "/bench_coin.mps", coinexact = dir + "/bench_coin17.mps";
  const std::string taskfile = dir + "/bench.task", copyfile = dir + "/bench_copy.task";
  ok(QRN_putintparam(task, QRN_IPAR_OUTPUT_FORMAT, QRN_DATA_FORMAT_FREE_MPS), "putintparam");
  double w_ours = 0, w_coin = 0, w_coin17 = 0, r_ours = 0, r_coin = 0;
  qrn_task_t back;
  ok(QRN_makeemptytask(env, &back), "makeemptytask");
  for (int r = 0; r < repeat; ++r) {  // interleaved, best of each
    w_ours = r == 0 ? best(1, [&] { ok(QRN_writedata(task, ours.c_str()), "writedata"); })
                    : std::min(w_ours, best(1, [&] { ok(QRN_writedata(task, ours.c_str()), "writedata"); }));
    double t = best(1, [&] { coin.writeMps(coinfile.c_str(), 0, 0, 2); });
    w_coin = r == 0 ? t : std::min(w_coin, t);
    t = best(1, [&] { coin.writeMps(coinexact.c_str(), 0, 1, 2); });
    w_coin17 = r == 0 ? t : std::min(w_coin17, t);
    t = best(1, [&] { ok(QRN_readdataformat(back, ours.c_str(), QRN_DATA_FORMAT_FREE_MPS, 0), "readdataformat"); });
    r_ours = r == 0 ? t : std::min(r_ours, t);
    t = best(1, [&] {
      CoinMpsIO in;
      CoinMessageHandler q;
      q.setLogLevel(0);
      in.passInMessageHandler(&q);
      if (in.readMps(ours.c_str(), "") != 0) std::exit(1);
    });
    r_coin = r == 0 ? t : std::min(r_coin, t);
  }
  qrn_int64 nnz = 0;
  QRN_getnumanz64(back, &nnz);
  std::printf("MPS, %d x %d, %lld non-zeros (best of %d)\n", m, n, static_cast<long long>(nnz), repeat);
  std::printf("  write: ours %.3f s (%ld bytes); CoinMpsIO %.3f s (12-digit numbers, %ld bytes), %.3f s (17 digits, %ld bytes)\n",
              w_ours, file_size(ours), w_coin, file_size(coinfile), w_coin17, file_size(coinexact));
  std::printf("  write ratio ours/CoinMpsIO: %.2f (12 digits), %.2f (17 digits)\n", w_ours / w_coin, w_ours / w_coin17);
  std::printf("  read the same file: ours %.3f s (into a task), CoinMpsIO %.3f s (into its arrays); ratio %.2f\n", r_ours,
              r_coin, r_ours / r_coin);

  double tw = 0, tr = 0, cr = 0, cw = 0;
  std::vector<char> buf;
  for (int r = 0; r < repeat; ++r) {
    double t = best(1, [&] { ok(QRN_writetask(task, taskfile.c_str()), "writetask"); });
    tw = r == 0 ? t : std::min(tw, t);
    t = best(1, [&] { ok(QRN_readtask(back, taskfile.c_str()), "readtask"); });
    tr = r == 0 ? t : std::min(tr, t);
    double a, b;
    plain_copy(taskfile, copyfile, buf, a, b);
    cr = r == 0 ? a : std::min(cr, a);
    cw = r == 0 ? b : std::min(cw, b);
  }
  std::printf("Task file, %ld bytes (best of %d)\n", file_size(taskfile), repeat);
  std::printf("  write %.3f s vs plain write of the bytes %.3f s: ratio %.2f\n", tw, cw, tw / cw);
  std::printf("  read  %.3f s vs plain read of the bytes %.3f s: ratio %.2f\n", tr, cr, tr / cr);
  std::printf("  read  %.3f s vs building the same task through the C interface %.3f s: ratio %.2f\n", tr, t_build,
              tr / t_build);
  // A conic task: 100000 quadratic cone ACCs of 3 rows over 100000
  // variables, about 10^6 non-zeros in F.
  {
    const int nv = 100000, nacc = 100000, rows = 3 * nacc;
    qrn_task_t ct = nullptr, cb = nullptr;
    ok(QRN_makeemptytask(env, &ct), "makeemptytask");
    ok(QRN_makeemptytask(env, &cb), "makeemptytask");
    ok(QRN_appendvars(ct, nv), "appendvars");
    ok(QRN_appendafes(ct, rows), "appendafes");
    std::mt19937 rng(7);
    std::vector<qrn_int64> fi;
    std::vector<qrn_int32> fj;
    std::vector<double> fv;
    for (int r = 0; r < rows; ++r) {
      int k = 3 + static_cast<int>(rng() % 2);
      qrn_int32 j0 = static_cast<qrn_int32>(rng() % (nv - 8));
      for (int q = 0; q < k; ++q) fi.push_back(r), fj.push_back(j0 + 2 * q), fv.push_back(std::ldexp(rng() % 1000 + 1, -7));
    }
    ok(QRN_putafefentrylist(ct, static_cast<qrn_int64>(fv.size()), fi.data(), fj.data(), fv.data()), "putafefentrylist");
    qrn_int64 d = 0;
    ok(QRN_appendquadraticconedomain(ct, 3, &d), "domain");
    std::vector<qrn_int64> doms(nacc, d);
    ok(QRN_appendaccsseq(ct, nacc, doms.data(), rows, 0, nullptr), "appendaccsseq");
    double cw2 = 0, cr2 = 0, pw = 0, pr = 0, mc = 0;
    const std::string cfile = dir + "/bench_conic.task", ccopy = dir + "/bench_conic_copy.task";
    for (int r = 0; r < repeat; ++r) {
      double t = best(1, [&] { ok(QRN_writetask(ct, cfile.c_str()), "writetask"); });
      cw2 = r == 0 ? t : std::min(cw2, t);
      t = best(1, [&] { ok(QRN_readtask(cb, cfile.c_str()), "readtask"); });
      cr2 = r == 0 ? t : std::min(cr2, t);
      double a, b;
      plain_copy(cfile, ccopy, buf, a, b);
      pr = r == 0 ? a : std::min(pr, a);
      pw = r == 0 ? b : std::min(pw, b);
      std::vector<char> dst(buf.size());
      t = best(1, [&] { std::memcpy(dst.data(), buf.data(), buf.size()); });
      mc = r == 0 ? t : std::min(mc, t);
    }
    std::printf("Conic task file, %zu F non-zeros, %ld bytes (best of %d)\n", fv.size(), file_size(cfile), repeat);
    std::printf("  write %.3f s, read %.3f s; plain write %.3f s, plain read %.3f s, memcpy %.4f s\n", cw2, cr2, pw, pr, mc);
    std::printf("  ratios: write/plain %.2f, read/plain %.2f, (write+read)/memcpy %.1f\n", cw2 / pw, cr2 / pr,
                (cw2 + cr2) / mc);
    std::remove(cfile.c_str());
    std::remove(ccopy.c_str());
    QRN_deletetask(&cb);
    QRN_deletetask(&ct);
  }
  for (const std::string &f : {ours, coinfile, coinexact, taskfile, copyfile}) std::remove(f.c_str());
  QRN_deletetask(&back);
  QRN_deletetask(&task);
  QRN_deleteenv(&env);
  return 0;
}
