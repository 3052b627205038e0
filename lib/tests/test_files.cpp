// Parameter, solution and basis files, reports on the streams, a file linked
// to a stream, and the memory figures.
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "formats_util.hpp"

using namespace fmt_test;

namespace {

std::string slurp(const char *name) {
  std::ifstream in(name, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}
void put_file(const char *name, const std::string &text) {
  std::ofstream out(name, std::ios::binary);
  out << text;
}

// A solution text for a 2 x 2 problem with one cone-free task.
const char *solution_text =
    "sol 1\n"
    "solution basic\n"
    "prosta PRIM_AND_DUAL_FEAS\nsolsta OPTIMAL\n"
    "constraints 2\n"
    "con 0 \"c0\" UL 4 0 1.5 -1.5\n"
    "con 1 \"\" BS 2.5 0 0 0\n"
    "variables 2\n"
    "var 0 \"x\" BS 1.5 0 0 0\n"
    "var 1 \"y\" LL 0 0.25 0 0\n"
    "cones 0\n"
    "end\n";

void small_problem(qrn_task_t t) {
  QRN_appendcons(t, 2);
  QRN_appendvars(t, 2);
  QRN_putconname(t, 0, "c0");
  QRN_putvarname(t, 0, "x");
  QRN_putvarname(t, 1, "y");
  QRN_putaij(t, 0, 0, 1), QRN_putaij(t, 0, 1, 2), QRN_putaij(t, 1, 0, 1);
  QRN_putconbound(t, 0, QRN_BK_UPPER, 0, 4);
  QRN_putconbound(t, 1, QRN_BK_FREE, 0, 0);
  QRN_putvarbound(t, 0, QRN_BK_LOWER, 0, 0);
  QRN_putvarbound(t, 1, QRN_BK_RANGED, 0, 3);
  QRN_putcj(t, 0, -1), QRN_putcj(t, 1, 1);
}

}  // namespace

TEST(files_parameters) {
  Fixture a, b;
  CHECK_EQ(QRN_putintparam(a.task, QRN_IPAR_LOG_LEVEL, 3), QRN_RES_OK);
  CHECK_EQ(QRN_putintparam(a.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_DUAL_SIMPLEX), QRN_RES_OK);
  CHECK_EQ(QRN_putdouparam(a.task, QRN_DPAR_OPT_TOL, 1.0 / 3 * 1e-9), QRN_RES_OK);
  CHECK_EQ(QRN_putstrparam(a.task, QRN_SPAR_REMOTE_TAG, " two  blanks # \"q\" "), QRN_RES_OK);
  CHECK_EQ(QRN_writeparamfile(a.task, "p.par"), QRN_RES_OK);
  CHECK_EQ(QRN_readparamfile(b.task, "p.par"), QRN_RES_OK);
  CHECK(slurp("p.par").find("QRN_IPAR_ALGORITHM QRN_ALGORITHM_DUAL_SIMPLEX\n") != std::string::npos);
  CHECK_EQ(QRN_writeparamfile(b.task, "q.par"), QRN_RES_OK);
  CHECK_EQ(slurp("p.par"), slurp("q.par"));  // every parameter came back
  // Refused files change nothing and name the line.
  const std::string before = slurp("q.par");
  put_file("bad.par", "# comment\nQRN_IPAR_LOG_LEVEL 0\nQRN_IPAR_NO_SUCH 1\n");
  CHECK_EQ(QRN_readparamfile(b.task, "bad.par"), QRN_RES_ERR_PARAM_NAME);
  CHECK(last_message(b.task).find("bad.par:3:1") != std::string::npos);
  put_file("bad.par", "QRN_IPAR_LOG_LEVEL 0\nQRN_DPAR_OPT_TOL 7   # too large\n");
  CHECK_EQ(QRN_readparamfile(b.task, "bad.par"), QRN_RES_ERR_PARAM_VALUE);
  CHECK(last_message(b.task).find("bad.par:2:18") != std::string::npos);
  put_file("bad.par", "QRN_IPAR_LOG_LEVEL\n");
  CHECK_EQ(QRN_readparamfile(b.task, "bad.par"), QRN_RES_ERR_READ_SYNTAX);
  CHECK_EQ(QRN_writeparamfile(b.task, "q.par"), QRN_RES_OK);
  CHECK_EQ(slurp("q.par"), before);
  for (const char *f : {"p.par", "q.par", "bad.par"}) std::remove(f);
}

TEST(files_solutions) {
  Fixture a, b;
  small_problem(a.task);
  small_problem(b.task);
  put_file("s.sol", solution_text);
  CHECK_EQ(QRN_writesolution(a.task, QRN_SOL_BAS, "w.sol"), QRN_RES_ERR_SOL_UNDEFINED);
  CHECK_EQ(QRN_readsolution(a.task, 7, "s.sol"), QRN_RES_ERR_SOL_WHICH);
  CHECK_EQ(QRN_readsolution(a.task, QRN_SOL_BAS, "s.sol"), QRN_RES_OK);
  CHECK_EQ(QRN_writesolution(a.task, QRN_SOL_BAS, "w.sol"), QRN_RES_OK);
  std::string written = slurp("w.sol");
  CHECK(written.find("pobj -1.5\n") != std::string::npos);
  // Into another identifier and back out: the same text but for the kind.
  CHECK_EQ(QRN_readsolution(b.task, QRN_SOL_ITR, "w.sol"), QRN_RES_OK);
  CHECK_EQ(QRN_writesolution(b.task, QRN_SOL_ITR, "w2.sol"), QRN_RES_OK);
  std::string again = slurp("w2.sol");
  CHECK_EQ(again.replace(again.find("interior"), 8, "basic"), written);
  // All solutions in one file, as text and as JSON.
  CHECK_EQ(QRN_readsolution(a.task, QRN_SOL_ITG, "s.sol"), QRN_RES_OK);
  CHECK_EQ(QRN_writesolutionfile(a.task, "all.sol"), QRN_RES_OK);
  CHECK_EQ(QRN_writejsonsol(a.task, "all.json"), QRN_RES_OK);
  Fixture c, d;
  small_problem(c.task);
  small_problem(d.task);
  CHECK_EQ(QRN_readsolutionfile(c.task, "all.sol"), QRN_RES_OK);
  CHECK_EQ(QRN_readjsonsol(d.task, "all.json"), QRN_RES_OK);
  CHECK_EQ(QRN_writesolutionfile(c.task, "c.sol"), QRN_RES_OK);
  CHECK_EQ(QRN_writesolutionfile(d.task, "d.sol"), QRN_RES_OK);
  CHECK_EQ(slurp("c.sol"), slurp("all.sol"));
  CHECK_EQ(slurp("d.sol"), slurp("all.sol"));
  // A file for another problem, or with other names, is refused; nothing changes.
  Fixture e;
  small_problem(e.task);
  QRN_appendvars(e.task, 1);
  CHECK_EQ(QRN_readsolution(e.task, QRN_SOL_BAS, "s.sol"), QRN_RES_ERR_SOL_SIZE);
  CHECK_EQ(QRN_readjsonsol(e.task, "all.json"), QRN_RES_ERR_READ_INDEX);
  CHECK_EQ(QRN_writesolution(e.task, QRN_SOL_BAS, "e.sol"), QRN_RES_ERR_SOL_UNDEFINED);
  std::string renamed = solution_text;
  renamed.replace(renamed.find("\"y\""), 3, "\"z\"");
  put_file("r.sol", renamed);
  CHECK_EQ(QRN_readsolution(c.task, QRN_SOL_BAS, "r.sol"), QRN_RES_ERR_SOL_SIZE);
  CHECK(last_message(c.task).find("r.sol:10:7") != std::string::npos);
  CHECK_EQ(QRN_writesolutionfile(c.task, "c.sol"), QRN_RES_OK);
  CHECK_EQ(slurp("c.sol"), slurp("all.sol"));
  for (const char *f : {"s.sol", "w.sol", "w2.sol", "all.sol", "all.json", "c.sol", "d.sol", "r.sol", "e.sol"}) std::remove(f);
}

TEST(files_basis) {
  Fixture a, b;
  small_problem(a.task);
  small_problem(b.task);
  put_file("s.sol", solution_text);
  CHECK_EQ(QRN_writebsolution(a.task, "x.bas", 0), QRN_RES_ERR_SOL_UNDEFINED);
  CHECK_EQ(QRN_readsolution(a.task, QRN_SOL_BAS, "s.sol"), QRN_RES_OK);
  CHECK_EQ(QRN_writebsolution(a.task, "x.bas", 0), QRN_RES_OK);
  CHECK_EQ(slurp("x.bas"), "NAME          basis\n XU x         c0\nENDATA\n");
  CHECK_EQ(QRN_writebsolution(a.task, "x.bas.gz", QRN_COMPRESS_GZIP), QRN_RES_OK);
  CHECK_EQ(QRN_readbsolution(b.task, "x.bas.gz", QRN_COMPRESS_GZIP), QRN_RES_OK);
  CHECK_EQ(QRN_writesolution(b.task, QRN_SOL_BAS, "b.sol"), QRN_RES_OK);
  std::string text = slurp("b.sol");
  CHECK(text.find("con 0 \"c0\" UL 0 ") != std::string::npos);
  CHECK(text.find("var 0 \"x\" BS 0 ") != std::string::npos);
  CHECK(text.find("var 1 \"y\" LL 0 ") != std::string::npos);
  put_file("bad.bas", "NAME\n XU nosuch c0\nENDATA\n");
  CHECK_EQ(QRN_readbsolution(b.task, "bad.bas", 0), QRN_RES_ERR_READ_NAME_UNKNOWN);
  CHECK(last_message(b.task).find("bad.bas:2:5") != std::string::npos);
  for (const char *f : {"s.sol", "x.bas", "x.bas.gz", "b.sol", "bad.bas"}) std::remove(f);
}

TEST(files_reports_streams_and_memory) {
  Fixture a;
  Capture msg;
  QRN_linkfunctotaskstream(a.task, QRN_STREAM_MSG, &msg, Capture::take);
  CHECK_EQ(QRN_readsummary(a.task, QRN_STREAM_MSG), QRN_RES_OK);
  CHECK(msg.text.find("No problem has been read") != std::string::npos);
  fill_rich(a.task);
  std::string opf = write_string(a.task, QRN_DATA_FORMAT_OPF);
  CHECK_EQ(QRN_readopfstring(a.task, opf.c_str()), QRN_RES_OK);
  msg.clear();
  CHECK_EQ(QRN_readsummary(a.task, QRN_STREAM_MSG), QRN_RES_OK);
  CHECK(msg.text.find("Format            : opf") != std::string::npos);
  CHECK(msg.text.find("Constraints       : 6") != std::string::npos);
  msg.clear();
  CHECK_EQ(QRN_analyzeproblem(a.task, QRN_STREAM_MSG), QRN_RES_OK);
  CHECK(msg.text.find("A                   : [1.0e-12, 1.0e+23]  (13 non-zeros)") != std::string::npos);
  CHECK(msg.text.find("quadratic and conic, mixed-integer") != std::string::npos);
  CHECK(msg.text.find("coefficients are larger than") != std::string::npos);
  CHECK_EQ(QRN_analyzeproblem(a.task, 4), QRN_RES_ERR_STREAM);
  msg.clear();
  CHECK_EQ(QRN_solutionsummary(a.task, QRN_STREAM_MSG), QRN_RES_OK);
  CHECK(msg.text.find("No solution is defined") != std::string::npos);
  CHECK_EQ(QRN_onesolutionsummary(a.task, QRN_STREAM_MSG, 3), QRN_RES_ERR_SOL_WHICH);
  CHECK_EQ(QRN_optimizersummary(a.task, QRN_STREAM_MSG), QRN_RES_OK);
  CHECK(msg.text.find("has not been optimized") != std::string::npos);

  // A file linked to the error stream: overwrite, then append.
  CHECK_EQ(QRN_linkfiletotaskstream(a.task, QRN_STREAM_ERR, "err.log", 0), QRN_RES_OK);
  QRN_appendvars(a.task, -1);
  CHECK_EQ(QRN_linkfiletotaskstream(a.task, QRN_STREAM_ERR, "err.log", 1), QRN_RES_OK);
  QRN_appendvars(a.task, -2);
  CHECK_EQ(QRN_linkfiletotaskstream(a.task, QRN_STREAM_ERR, "", 0), QRN_RES_OK);
  QRN_appendvars(a.task, -3);
  std::string log = slurp("err.log");
  CHECK(log.find("(-1)") != std::string::npos && log.find("(-2)") != std::string::npos && log.find("(-3)") == std::string::npos);
  CHECK_EQ(QRN_linkfiletotaskstream(a.task, QRN_STREAM_ERR, "err.log", 0), QRN_RES_OK);
  QRN_appendvars(a.task, -4);
  CHECK_EQ(QRN_linkfiletotaskstream(a.task, QRN_STREAM_ERR, "", 0), QRN_RES_OK);
  log = slurp("err.log");
  CHECK(log.find("(-1)") == std::string::npos && log.find("(-4)") != std::string::npos);
  CHECK_EQ(QRN_linkfiletotaskstream(a.task, 9, "err.log", 0), QRN_RES_ERR_STREAM);
  CHECK_EQ(QRN_linkfiletotaskstream(a.task, 1, "no/such/dir/f", 0), QRN_RES_ERR_FILE_OPEN);
  std::remove("err.log");

  // Memory: grows with the data; the largest figure stays.
  qrn_int64 now = 0, peak = 0, now2 = 0, peak2 = 0;
  CHECK_EQ(QRN_getmemusagetask(a.task, &now, &peak), QRN_RES_OK);
  CHECK(now > 0 && peak >= now);
  QRN_appendvars(a.task, 100000);
  CHECK_EQ(QRN_getmemusagetask(a.task, &now2, &peak2), QRN_RES_OK);
  CHECK(now2 > now + 100000 * 8);
  CHECK(peak2 >= now2);
  msg.clear();
  CHECK_EQ(QRN_checkmemtask(a.task, "here.cpp", 12), QRN_RES_OK);
  CHECK(msg.text.find("here.cpp:12: task memory") != std::string::npos);
}
