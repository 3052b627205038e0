// Names of solution identifiers, statuses and status keys as the solution and
// task files write them, and the size rules of a solution.
#pragma once

#include "errors.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace qrn {

// "interior", "basic", "integer"; null when out of range.
const char *soltype_name(qrn_int32 whichsol);
bool find_soltype(std::string_view s, qrn_int32 &whichsol);
// The constant's name without its prefix: "PRIM_AND_DUAL_FEAS", "OPTIMAL".
const char *prosta_name(qrn_int32 v);
const char *solsta_name(qrn_int32 v);
bool find_prosta(std::string_view s, qrn_int32 &v);
bool find_solsta(std::string_view s, qrn_int32 &v);
// Two-letter status keys: UN BS SB LL UL EQ IN.
const char *sk_code(qrn_int32 sk);
bool find_sk(std::string_view s, qrn_int32 &sk);

// The sizes a solution of a problem has.
struct SolSizes {
  qrn_int32 numcon = 0, numvar = 0, numcone = 0;
  qrn_int64 accntot = 0;           // doty
  std::vector<qrn_int32> bardim;   // barx, bars: d(d+1)/2 each
};
struct FileProblem;
SolSizes sol_sizes(const FileProblem &p);

// Fails with `code` (QRN_RES_ERR_SOL_SIZE or a read code) and where + a
// message when the solution's vectors do not fit the sizes.
void check_solution_sizes(const Solution &s, const SolSizes &z, qrn_rescode code, const std::string &where);

// A copy of defined solution `whichsol` with every vector sized to the task
// (entries the solution lacks are QRN_SK_UNKNOWN or 0), as files hold it.
Solution fitted_solution(const Task &t, qrn_int32 whichsol);

// Fails with QRN_RES_ERR_SOL_WHICH for an identifier that is not a qrn_soltype_e.
void need_soltype(qrn_int32 whichsol);

}  // namespace qrn

namespace qrn {
struct Source;
// JSON solution documents ({"format": "jsol", "version": 1, "solutions": ...},
// the "solutions" member as in the JSON task format).
std::string json_solutions_text(const Task &t);
void read_json_solutions(const Source &src, const SolSizes &z, std::array<Solution, QRN_SOL_COUNT> &sol);
}  // namespace qrn
