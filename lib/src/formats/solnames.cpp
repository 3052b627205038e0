// Names of solution identifiers, statuses and keys, and the size rules of a
// solution.
#include "solfiles.hpp"

#include "exchange.hpp"
#include "semidefinite.hpp"
#include "solutions.hpp"
#include "task.hpp"

#include <iterator>

namespace qrn {
namespace {

const char *const soltypes[] = {"interior", "basic", "integer"};
const char *const prostas[] = {"UNKNOWN", "PRIM_AND_DUAL_FEAS", "PRIM_FEAS", "DUAL_FEAS", "PRIM_INFEAS", "DUAL_INFEAS",
                               "PRIM_AND_DUAL_INFEAS", "ILL_POSED", "PRIM_INFEAS_OR_UNBOUNDED"};
const char *const solstas[] = {"UNKNOWN", "OPTIMAL", "PRIM_FEAS", "DUAL_FEAS", "PRIM_AND_DUAL_FEAS", "PRIM_INFEAS_CER",
                               "DUAL_INFEAS_CER", "PRIM_ILLPOSED_CER", "DUAL_ILLPOSED_CER", "INTEGER_OPTIMAL"};
const char *const sks[] = {"UN", "BS", "SB", "LL", "UL", "EQ", "IN"};

template <size_t N>
const char *at(const char *const (&t)[N], qrn_int32 v) {
  return v >= 0 && static_cast<size_t>(v) < N ? t[v] : nullptr;
}
template <size_t N>
bool find(const char *const (&t)[N], std::string_view s, qrn_int32 &v) {
  for (size_t k = 0; k < N; ++k)
    if (s == t[k]) {
      v = static_cast<qrn_int32>(k);
      return true;
    }
  return false;
}

}  // namespace

const char *soltype_name(qrn_int32 w) { return at(soltypes, w); }
bool find_soltype(std::string_view s, qrn_int32 &w) { return find(soltypes, s, w); }
const char *prosta_name(qrn_int32 v) { return at(prostas, v); }
const char *solsta_name(qrn_int32 v) { return at(solstas, v); }
bool find_prosta(std::string_view s, qrn_int32 &v) { return find(prostas, s, v); }
bool find_solsta(std::string_view s, qrn_int32 &v) { return find(solstas, s, v); }
const char *sk_code(qrn_int32 sk) { return at(sks, sk); }
bool find_sk(std::string_view s, qrn_int32 &sk) { return find(sks, s, sk); }

static_assert(std::size(soltypes) == QRN_SOL_COUNT, "one name per solution identifier");

void need_soltype(qrn_int32 whichsol) {
  if (whichsol < 0 || whichsol >= QRN_SOL_COUNT)
    fail(QRN_RES_ERR_SOL_WHICH, "Solution identifier " + std::to_string(whichsol) + " is not one of 0.." +
                                   std::to_string(QRN_SOL_COUNT - 1) + " (QRN_SOL_*).");
}

SolSizes sol_sizes(const FileProblem &p) {
  SolSizes z;
  z.numcon = p.numcon, z.numvar = p.numvar, z.numcone = static_cast<qrn_int32>(p.cones.size());
  z.accntot = p.accntot();
  z.bardim = p.barvardim;
  return z;
}

Solution fitted_solution(const Task &t, qrn_int32 whichsol) {
  Solution s = t.sol[whichsol];
  fit(s, Counts{t.numcon, t.numvar, static_cast<qrn_int32>(t.cones.size())});
  s.doty.resize(static_cast<size_t>(t.conic.accstart.back()), 0.0);
  align_bar_solution(t, s);
  return s;
}

void check_solution_sizes(const Solution &s, const SolSizes &z, qrn_rescode code, const std::string &where) {
  const qrn_int32 m = z.numcon, n = z.numvar, numcone = z.numcone;
  auto need = [&](size_t have, qrn_int64 want, const char *what) {
    if (static_cast<qrn_int64>(have) != want)
      fail(code, where + ": " + what + " has " + std::to_string(have) + " entries, the task needs " + std::to_string(want) + ".");
  };
  need(s.skc.size(), m, "skc"), need(s.xc.size(), m, "xc"), need(s.y.size(), m, "y");
  need(s.slc.size(), m, "slc"), need(s.suc.size(), m, "suc");
  need(s.skx.size(), n, "skx"), need(s.xx.size(), n, "xx"), need(s.slx.size(), n, "slx");
  need(s.sux.size(), n, "sux"), need(s.snx.size(), n, "snx");
  need(s.skn.size(), numcone, "skn");
  need(s.doty.size(), z.accntot, "doty");
  need(s.barx.size(), static_cast<qrn_int64>(z.bardim.size()), "barx");
  need(s.bars.size(), static_cast<qrn_int64>(z.bardim.size()), "bars");
  for (size_t j = 0; j < z.bardim.size(); ++j) {
    const qrn_int64 len = static_cast<qrn_int64>(z.bardim[j]) * (z.bardim[j] + 1) / 2;
    need(s.barx[j].size(), len, "barx of a semidefinite variable");
    need(s.bars[j].size(), len, "bars of a semidefinite variable");
  }
  for (qrn_int32 k : s.skc)
    if (sk_code(k) == nullptr) fail(code, where + ": a status key is out of range.");
  for (qrn_int32 k : s.skx)
    if (sk_code(k) == nullptr) fail(code, where + ": a status key is out of range.");
  for (qrn_int32 k : s.skn)
    if (sk_code(k) == nullptr) fail(code, where + ": a status key is out of range.");
}

}  // namespace qrn
