// Our MPS output read by an independent reader (CoinUtils' CoinMpsIO) gives
// the same problem: sizes, names, bounds, objective, matrix, integers and the
// quadratic objective (numbers within CoinMpsIO's own rounding).
#include <coin/CoinMessageHandler.hpp>
#include <coin/CoinMpsIO.hpp>
#include <coin/CoinPackedMatrix.hpp>

#include <cstdio>
#include <map>

#include "formats_util.hpp"

using namespace fmt_test;

namespace {

double clip(double v) { return std::fabs(v) >= 1e30 ? (v < 0 ? -HUGE_VAL : HUGE_VAL) : v; }

// CoinMpsIO's own number parser is not correctly rounded: it may be one unit
// in the last place off the nearest double (0.3 and 1e23 here). Our reader
// gives the nearest double; against CoinMpsIO allow that one unit.
bool near(double coin, uint64_t ours) {
  double o;
  std::memcpy(&o, &ours, 8);
  return bits(coin) == ours || std::nextafter(o, HUGE_VAL) == coin || std::nextafter(o, -HUGE_VAL) == coin;
}
bool near(const std::vector<double> &coin, const std::vector<uint64_t> &ours) {
  if (coin.size() != ours.size()) return false;
  for (size_t k = 0; k < coin.size(); ++k)
    if (!near(coin[k], ours[k])) return false;
  return true;
}

void compare_with_coin(int format, const char *file) {
  Fixture f;
  fill_rich(f.task, true, false);
  // CoinMpsIO reads neither quadratic constraints nor an OBJSENSE section.
  for (int i = 0; i < 6; ++i) QRN_putqconk(f.task, i, 0, nullptr, nullptr, nullptr);
  QRN_putobjsense(f.task, QRN_OBJECTIVE_SENSE_MINIMIZE);
  // It drops free rows (N rows after the first) and objective coefficients
  // below its tolerance, and does not keep the sign of zero.
  QRN_putcj(f.task, 3, 1e-3);
  QRN_putcj(f.task, 5, 0.0);
  QRN_putconbound(f.task, 5, QRN_BK_LOWER, -1, 0);
  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_OUTPUT_FORMAT, format), QRN_RES_OK);
  CHECK_EQ(QRN_writedata(f.task, file), QRN_RES_OK);
  Snapshot s = snapshot(f.task);

  CoinMpsIO io;
  CoinMessageHandler quiet;
  quiet.setLogLevel(0);
  io.passInMessageHandler(&quiet);
  CHECK_EQ(io.readMps(file, ""), 0);
  CHECK_EQ(io.getNumRows(), s.numcon);
  CHECK_EQ(io.getNumCols(), s.numvar);
  CHECK_EQ(std::string(io.getProblemName()), s.taskname);
  double cfix;
  std::memcpy(&cfix, &s.cfix, 8);
  CHECK_EQ(bits(io.objectiveOffset()), bits(-cfix));  // the right-hand side of the objective row
  for (int i = 0; i < s.numcon; ++i) {
    CHECK_EQ(std::string(io.rowName(i)), s.connames[i]);
    CHECK(near(clip(io.getRowLower()[i]), s.blc[i]));
    CHECK(near(clip(io.getRowUpper()[i]), s.buc[i]));
  }
  const CoinPackedMatrix *a = io.getMatrixByCol();
  std::vector<qrn_int32> sub;
  std::vector<double> val;
  std::vector<qrn_int64> ptr;
  for (int j = 0; j < s.numvar; ++j) {
    CHECK_EQ(std::string(io.columnName(j)), s.varnames[j]);
    CHECK(near(io.getObjCoefficients()[j], s.c[j]));
    CHECK(near(clip(io.getColLower()[j]), s.blx[j]));
    CHECK(near(clip(io.getColUpper()[j]), s.bux[j]));
    CHECK_EQ(io.isInteger(j), s.vartype[j] == QRN_VAR_TYPE_INTEGER);
    std::map<int, double> col;
    for (CoinBigIndex k = a->getVectorStarts()[j]; k < a->getVectorStarts()[j] + a->getVectorLengths()[j]; ++k)
      col[a->getIndices()[k]] = a->getElements()[k];
    for (auto &[i, v] : col) sub.push_back(i), val.push_back(v);
    ptr.push_back(static_cast<qrn_int64>(sub.size()));
  }
  CHECK_EQ(sub, s.asub);
  CHECK(near(val, s.aval));
  CHECK_EQ(ptr, s.aptr);
  // QUADOBJ: one triangle, read as given.
  CoinBigIndex *start = nullptr;
  int *column = nullptr;
  double *elements = nullptr;
  CHECK_EQ(io.readQuadraticMps(nullptr, start, column, elements, 0), 0);
  std::map<std::pair<int, int>, double> q;
  for (int j = 0; start != nullptr && j < s.numvar; ++j)
    for (CoinBigIndex k = start[j]; k < start[j + 1]; ++k) q[{std::max(j, column[k]), std::min(j, column[k])}] = elements[k];
  std::vector<qrn_int32> qi, qj;
  std::vector<double> qv;
  for (auto &[ij, v] : q) qi.push_back(ij.first), qj.push_back(ij.second), qv.push_back(v);
  CHECK_EQ(qi, s.qoi);
  CHECK_EQ(qj, s.qoj);
  CHECK(near(qv, s.qoval));
  delete[] start;
  delete[] column;
  delete[] elements;
  std::remove(file);
}

}  // namespace

TEST(coinmps_reads_our_mps) {
  compare_with_coin(QRN_DATA_FORMAT_MPS, "coin_fixed.mps");
  compare_with_coin(QRN_DATA_FORMAT_FREE_MPS, "coin_free.mps");
}
