// Internal model of environments and tasks. Every exported function reaches a
// task through api() (errors.hpp), which turns a thrown Failure into a
// response code, records it as the task's last error and reports it on the
// task's error stream.
#pragma once

#include "quarn.h"
#include "sdp_data.hpp"

#include "store.hpp"

#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qrn {

// The four output streams of an environment or a task.
// Each stream may also copy its text into a file (QRN_linkfiletotaskstream).
struct Streams {
  std::array<qrn_stream_fn, 4> fn{};
  std::array<void *, 4> handle{};
  std::array<std::shared_ptr<std::FILE>, 4> file{};
  void write(int which, const std::string &text) const;
};

struct Env {
  Streams streams;
  std::FILE *dbg = nullptr;          // copy of everything written to the streams
  std::array<std::FILE *, 4> files{};  // per-stream copies (QRN_linkfiletoenvstream), under dbg_mutex
  std::atomic<int> refs{1};          // the owner, plus each task when garbage collection is on
  std::atomic<bool> garcol{false};
  std::mutex dbg_mutex;
  void write(int which, const std::string &text);
};

struct Cone {
  qrn_int32 type = QRN_CONE_QUAD;
  double par = 0.0;
  std::vector<qrn_int32> members;
};

// Names of one kind of item, with constant-time lookup by name. `names` is
// only as long as the last named item needs: items past its end are unnamed,
// so a large unnamed problem costs nothing here. Read through name(k).
struct NameTable {
  std::vector<std::string> names;                     // item k's name, "" when unnamed
  std::unordered_map<std::string, qrn_int32> index;  // name -> item
  const std::string &name(size_t k) const {
    static const std::string none;
    return k < names.size() ? names[k] : none;
  }
  void resize(size_t n) {  // the kind now has n items
    if (n < names.size()) names.resize(n);
  }
  void remap(const std::vector<qrn_int32> &newindex, size_t newsize);
};

// One solution of a task (QRN_SOL_ITR, QRN_SOL_BAS or QRN_SOL_ITG); the
// conventions are documented in quarn.h ("Solutions"), the code in
// lib/src/solutions/. When the optimizer stores a solution, every vector has
// one entry per item the task holds: constraints for skc, xc, y, slc, suc;
// variables for skx, xx, slx, sux, snx; cones for skn; rows of affine conic
// constraints for doty; semidefinite variables for barx and bars (each the
// lower triangle by columns, d(d+1)/2 entries). Items appended later are not added here at once: a
// vector shorter than its count reads as key QRN_SK_UNKNOWN and value 0 past
// its end (fit() in solutions.hpp extends it). Removals drop entries at once.
struct Solution {
  bool defined = false;
  qrn_int32 prosta = QRN_PRO_STA_UNKNOWN;
  qrn_int32 solsta = QRN_SOL_STA_UNKNOWN;
  std::vector<qrn_int32> skc, skx, skn;
  std::vector<double> xc, xx, y, slc, suc, slx, sux, snx;
  std::vector<double> doty;
  std::vector<std::vector<double>> barx, bars;
};

struct BasisFactor;  // analysis/basis.hpp

struct Params {
  std::vector<double> dou;
  std::vector<qrn_int32> integer;
  std::vector<std::string> str;
  Params();  // defaults
};

struct Info {
  std::array<double, QRN_DINF_COUNT> dou{};
  std::array<qrn_int32, QRN_IINF_COUNT> integer{};
  std::array<qrn_int64, QRN_LIINF_COUNT> lint{};
  Info();  // initial values
};

// The last failure of a task. Failing calls may run at the same time on one
// task (two readers with bad arguments), so the record has its own lock; a
// copied task starts with an empty record.
class LastError {
 public:
  LastError() = default;
  LastError(const LastError &) {}
  LastError &operator=(const LastError &) { return *this; }
  void set(qrn_rescode code, const std::string &msg) {
    std::lock_guard<std::mutex> lock(mutex_);
    code_ = code;
    msg_ = msg;
  }
  std::pair<qrn_rescode, std::string> get() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return {code_, msg_};
  }

 private:
  mutable std::mutex mutex_;
  qrn_rescode code_ = QRN_RES_OK;
  std::string msg_;
};

struct Task {
  Env *env = nullptr;
  bool holds_env = false;  // holds a reference on env (garbage collection)
  Streams streams;
  qrn_callback_fn callback = nullptr;
  void *callback_handle = nullptr;
  LastError last;

  // sizes and capacities
  qrn_int32 numcon = 0, numvar = 0;
  qrn_int32 maxnumcon = 0, maxnumvar = 0;  // capacity hints; never allocated

  // The linear data (store.hpp). Per-item arrays have one entry per item.
  Matrix a;                   // A by column; rows derived (a.rows())
  Bounds conbound, varbound;  // flat arrays bk/bl/bu; conbound[i] reads a Bound
  Pod<double> c;              // objective coefficient of each variable
  double cfix = 0.0;
  qrn_int32 sense = QRN_OBJECTIVE_SENSE_MINIMIZE;
  Pod<qrn_int32> vartype;     // QRN_VAR_TYPE_* of each variable
  qrn_int32 numintvar = 0;

  QTerms qobj;               // quadratic objective terms
  // Quadratic terms of constraint k for k < qcon.size(); constraints past its
  // end have none (it grows only when a constraint gets terms).
  std::vector<QTerms> qcon;
  qrn_int64 maxnumqnz = 0;   // capacity hint; never allocated

  std::vector<Cone> cones;
  Pod<qrn_int32> var_cone;  // cone of each variable, -1 when none
  qrn_int32 maxnumcone = 0;  // capacity hint; never allocated

  NameTable connames, varnames, conenames;
  ConicData conic;  // affine expressions, domains, ACCs, DJCs
  SdpData sdp;      // semidefinite variables, symmetric matrix store, barC, barA
  NameTable domnames, accnames, djcnames, barvarnames;
  std::string objname, taskname;

  Params par;
  Info info;

  std::array<Solution, QRN_SOL_COUNT> sol;
  // The factor made by QRN_initbasissolve (shared by copies: never changed).
  std::shared_ptr<const BasisFactor> basis_factor;

  std::string read_source;  // file name (or "<string>") of the last problem read
  qrn_int64 mem_peak = 0;   // largest memory figure measured (QRN_getmemusagetask)

  void write(int which, const std::string &text) const;
  // Calls the registered callback with the task's information items; true
  // when it asks to stop.
  bool progress(qrn_int32 caller);

  // Structural changes that touch every per-item array.
  void append_cons(qrn_int32 num);
  void append_vars(qrn_int32 num);
  // remove[k] == true removes item k; the others keep their order.
  void remove_cons(const std::vector<bool> &remove);
  void remove_vars(const std::vector<bool> &remove);
  void remove_cones(const std::vector<bool> &remove);
};

// Exchanges everything two tasks hold except their environment, streams,
// callback and last error: readers fill a scratch task and swap it in whole.
void swap_task_data(Task &a, Task &b);

}  // namespace qrn

struct qrn_env_s : qrn::Env {};
struct qrn_task_s : qrn::Task {};
