// The file formats: one reader and one writer per format (one source file
// each), the choice of format by name or selector, and the plumbing they share
// (files, gzip, handles, strings).
#pragma once

#include "exchange.hpp"
#include "textio.hpp"

#include <string>

namespace qrn {

// What a writer may use besides the problem.
struct WriteOptions {
  int precision = 17;     // QRN_IPAR_OUTPUT_PRECISION
  bool use_names = true;  // QRN_IPAR_OUTPUT_NAMES
  std::string con_prefix = "c", var_prefix = "x", cone_prefix = "k";
  const Task *task = nullptr;  // for formats that also carry parameters and solutions
  bool solutions = true;       // false: leave the solutions out (a task sent to be optimized)
};

// What a reader fills: the problem, and for formats that carry them the
// parameters and solutions of the scratch task (which starts with the real
// task's parameters and no solutions).
struct ReadContext {
  FileProblem problem;
  Task &scratch;
  bool input_params = true;  // QRN_IPAR_INPUT_PARAMS of the task read into
  size_t lines = 0;
  qrn_int32 warnings = 0;
  explicit ReadContext(Task &s) : scratch(s) {}
};

using Writer = void (*)(const FileProblem &p, Out &out, const WriteOptions &opt);
using Reader = void (*)(const Source &src, ReadContext &ctx);

// ---- the formats ----
void write_qtx(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_qtx(const Source &src, ReadContext &ctx);
void write_mps_fixed(const FileProblem &p, Out &out, const WriteOptions &opt);
void write_mps_free(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_mps(const Source &src, ReadContext &ctx);
void write_lp(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_lp(const Source &src, ReadContext &ctx);
void write_opf(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_opf(const Source &src, ReadContext &ctx);
void write_ptf(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_ptf(const Source &src, ReadContext &ctx);
void write_jtask(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_jtask(const Source &src, ReadContext &ctx);
void write_taskfile(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_taskfile(const Source &src, ReadContext &ctx);
void write_cbf(const FileProblem &p, Out &out, const WriteOptions &opt);
void read_cbf(const Source &src, ReadContext &ctx);

// ---- plumbing (io.cpp) ----

// The whole content of a file, gunzipped when it is gzip data.
std::string read_file(const std::string &filename);
// Writes to a file created at the first byte (so a writer that refuses before
// writing leaves no file), gzip-compressed when gzip is true. close() reports
// failures; a file left unfinished is removed.
class FileSink {
 public:
  FileSink(std::string filename, bool gzip);
  ~FileSink();
  Sink sink();
  void close();

 private:
  void open();
  std::string name_;
  bool gzip_;
  void *gz_ = nullptr;        // gzFile
  std::FILE *file_ = nullptr;
  bool done_ = false;
};

// Wraps a sink with gzip compression; finish() writes the trailer.
class GzipSink {
 public:
  explicit GzipSink(const Sink &out);
  ~GzipSink();
  Sink sink();
  void finish();

 private:
  void deflate_some(const char *data, size_t size, int flush);
  const Sink &out_;
  void *z_ = nullptr;  // z_stream
  std::string buf_;
};

// Options from the task's parameters.
WriteOptions write_options(const Task &t);
// Writes the task's problem in format through sink, compressing when asked,
// with the write callbacks and information items.
void write_problem(Task &t, qrn_int32 format, qrn_int32 compress, const Sink &sink);
// Reads a problem in format from src into t, all or nothing.
void read_problem(Task &t, qrn_int32 format, const Source &src, qrn_int64 bytes);
// The format and compression a file name stands for.
qrn_int32 format_of_name(const Task &t, const std::string &filename, qrn_int32 &compress);
const char *format_name(qrn_int32 format);

// Fails with the QRN_RES_ERR_WRITE_LOSES_* code naming the first kind of
// conic or semidefinite data that p holds (a format that holds none of it).
void need_no_conic(const FileProblem &p, const char *format);

// The conic and semidefinite sections shared by the text formats (qtx, PTF,
// OPF; conic_sections.cpp): keyword, count, that many lines. Each is left out
// when it has no lines.
void write_conic_sections(const FileProblem &p, Out &out);
// Reads the section that `keyword` starts, if it is one of them (false if it
// is not). Sections come in their fixed order, each at most once; `state`
// keeps the last one read. Indexes are checked against the counts read so far
// and the problem's numcon and numvar.
bool read_conic_section(Lexer &lx, const Token &keyword, FileProblem &p, int &state, qrn_int64 textsize);

// Checks that names can be written as blank-free tokens: fails with
// QRN_RES_ERR_WRITE_LOSES_NAMES naming the first that cannot.
void need_token_names(const std::vector<std::string> &names, const char *kind, const char *format,
                      size_t maxlen = 0);

}  // namespace qrn
