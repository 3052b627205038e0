// Choosing a format, files and gzip, and the exported functions that read and
// write problems. A read fills a scratch task made in the same environment and
// swaps it into the task only when everything succeeded.
#include "formats.hpp"

#include "info.hpp"
#include "params.hpp"

#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

namespace qrn {

// ---- files ---------------------------------------------------------------------------

std::string read_file(const std::string &filename) {
  gzFile gz = gzopen(filename.c_str(), "rb");
  if (gz == nullptr) fail(QRN_RES_ERR_FILE_OPEN, "Cannot open \"" + filename + "\" for reading.");
  std::string out;
  // The file's size (times 4 when it is compressed) as a first guess of the text's.
  if (std::FILE *f = std::fopen(filename.c_str(), "rb")) {
    unsigned char magic[2] = {0, 0};
    size_t got = std::fread(magic, 1, 2, f);
    if (std::fseek(f, 0, SEEK_END) == 0) {
      long size = std::ftell(f);
      if (size > 0) out.reserve(static_cast<size_t>(size) * (got == 2 && magic[0] == 0x1f && magic[1] == 0x8b ? 4 : 1) + 1);
    }
    std::fclose(f);
  }
  char buf[1 << 16];
  for (;;) {
    int n = gzread(gz, buf, sizeof buf);
    if (n < 0) {
      int err = 0;
      std::string msg = gzerror(gz, &err);
      gzclose(gz);
      if (err == Z_ERRNO) fail(QRN_RES_ERR_FILE_OPEN, "Cannot read \"" + filename + "\".");
      fail(QRN_RES_ERR_GZIP, filename + ": the compressed data is corrupt (" + msg + ").");
    }
    if (n == 0) break;
    out.append(buf, static_cast<size_t>(n));
  }
  int err = 0;
  gzerror(gz, &err);
  int closed = gzclose(gz);
  if (err == Z_BUF_ERROR || closed == Z_BUF_ERROR)
    fail(QRN_RES_ERR_GZIP, filename + ": the compressed data ends early.");
  return out;
}

FileSink::FileSink(std::string filename, bool gzip) : name_(std::move(filename)), gzip_(gzip) {}

FileSink::~FileSink() {
  if (done_) return;
  // Unfinished: drop what was written.
  if (gz_ != nullptr) gzclose(static_cast<gzFile>(gz_));
  if (file_ != nullptr) std::fclose(file_);
  if (gz_ != nullptr || file_ != nullptr) std::remove(name_.c_str());
}

void FileSink::open() {
  if (gzip_) {
    gz_ = gzopen(name_.c_str(), "wb6");
    if (gz_ == nullptr) fail(QRN_RES_ERR_FILE_OPEN, "Cannot open \"" + name_ + "\" for writing.");
    gzbuffer(static_cast<gzFile>(gz_), 1 << 17);
  } else {
    file_ = std::fopen(name_.c_str(), "wb");
    if (file_ == nullptr) fail(QRN_RES_ERR_FILE_OPEN, "Cannot open \"" + name_ + "\" for writing.");
  }
}

Sink FileSink::sink() {
  return [this](const char *data, size_t size) {
    if (gz_ == nullptr && file_ == nullptr) open();
    bool ok = gzip_ ? gzwrite(static_cast<gzFile>(gz_), data, static_cast<unsigned>(size)) == static_cast<int>(size)
                    : std::fwrite(data, 1, size, file_) == size;
    if (!ok) fail(QRN_RES_ERR_WRITE, "Writing \"" + name_ + "\" failed.");
  };
}

void FileSink::close() {
  if (gz_ == nullptr && file_ == nullptr) open();  // an empty output still makes a file
  bool ok = gzip_ ? gzclose(static_cast<gzFile>(gz_)) == Z_OK : std::fclose(file_) == 0;
  gz_ = nullptr;
  file_ = nullptr;
  done_ = true;
  if (!ok) {
    std::remove(name_.c_str());
    fail(QRN_RES_ERR_WRITE, "Writing \"" + name_ + "\" failed.");
  }
}

GzipSink::GzipSink(const Sink &out) : out_(out) {
  auto *z = new z_stream();
  if (deflateInit2(z, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
    delete z;
    fail(QRN_RES_ERR_GZIP, "The compressor could not start.");
  }
  z_ = z;
  buf_.resize(1 << 16);
}

GzipSink::~GzipSink() {
  auto *z = static_cast<z_stream *>(z_);
  deflateEnd(z);
  delete z;
}

void GzipSink::deflate_some(const char *data, size_t size, int flush) {
  auto *z = static_cast<z_stream *>(z_);
  z->next_in = reinterpret_cast<Bytef *>(const_cast<char *>(data));
  z->avail_in = static_cast<uInt>(size);
  int r;
  do {
    z->next_out = reinterpret_cast<Bytef *>(buf_.data());
    z->avail_out = static_cast<uInt>(buf_.size());
    r = deflate(z, flush);
    if (r == Z_STREAM_ERROR) fail(QRN_RES_ERR_GZIP, "Compressing the data failed.");
    size_t have = buf_.size() - z->avail_out;
    if (have > 0) out_(buf_.data(), have);
  } while (z->avail_out == 0 || (flush == Z_FINISH && r != Z_STREAM_END));
}

Sink GzipSink::sink() {
  return [this](const char *data, size_t size) { deflate_some(data, size, Z_NO_FLUSH); };
}

void GzipSink::finish() { deflate_some(nullptr, 0, Z_FINISH); }

// ---- choosing a format ----------------------------------------------------------------

namespace {

struct FormatEntry {
  qrn_int32 id;
  const char *name;
  Writer write;
  Reader read;
};

const FormatEntry formats[] = {
    {QRN_DATA_FORMAT_TEXT, "qtx", write_qtx, read_qtx},
    {QRN_DATA_FORMAT_MPS, "mps", write_mps_fixed, read_mps},
    {QRN_DATA_FORMAT_FREE_MPS, "free mps", write_mps_free, read_mps},
    {QRN_DATA_FORMAT_LP, "lp", write_lp, read_lp},
    {QRN_DATA_FORMAT_OPF, "opf", write_opf, read_opf},
    {QRN_DATA_FORMAT_PTF, "ptf", write_ptf, read_ptf},
    {QRN_DATA_FORMAT_JSON_TASK, "jtask", write_jtask, read_jtask},
    {QRN_DATA_FORMAT_TASK, "task", write_taskfile, read_taskfile},
    {QRN_DATA_FORMAT_CBF, "cbf", write_cbf, read_cbf},
};

const FormatEntry &entry(qrn_int32 format) {
  for (const auto &f : formats)
    if (f.id == format) return f;
  fail(QRN_RES_ERR_DATA_FORMAT, "Data format " + std::to_string(format) + " is not known" +
                                    (format == QRN_DATA_FORMAT_EXTENSION ? " here: EXTENSION needs a file name." : "."));
}

void need_compress(qrn_int32 compress) {
  if (compress != QRN_COMPRESS_NONE && compress != QRN_COMPRESS_GZIP)
    fail(QRN_RES_ERR_COMPRESSION, "Compression " + std::to_string(compress) + " is not one of QRN_COMPRESS_NONE (" +
                                      std::to_string(QRN_COMPRESS_NONE) + ") and QRN_COMPRESS_GZIP (" +
                                      std::to_string(QRN_COMPRESS_GZIP) + ").");
}

qrn_int32 format_of_extension(std::string ext) {
  std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (ext == "qtx") return QRN_DATA_FORMAT_TEXT;
  if (ext == "mps") return QRN_DATA_FORMAT_MPS;
  if (ext == "fmps") return QRN_DATA_FORMAT_FREE_MPS;
  if (ext == "lp") return QRN_DATA_FORMAT_LP;
  if (ext == "opf") return QRN_DATA_FORMAT_OPF;
  if (ext == "ptf") return QRN_DATA_FORMAT_PTF;
  if (ext == "jtask" || ext == "json") return QRN_DATA_FORMAT_JSON_TASK;
  if (ext == "task") return QRN_DATA_FORMAT_TASK;
  if (ext == "cbf") return QRN_DATA_FORMAT_CBF;
  return QRN_DATA_FORMAT_EXTENSION;
}

std::string extension_of(const std::string &name) {
  size_t slash = name.find_last_of("/\\");
  size_t dot = name.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  return name.substr(dot + 1);
}

using Clock = std::chrono::steady_clock;
double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct TaskDeleter {
  void operator()(qrn_task_s *t) const {
    qrn_task_t p = t;
    QRN_deletetask(&p);
  }
};

}  // namespace

const char *format_name(qrn_int32 format) {
  for (const auto &f : formats)
    if (f.id == format) return f.name;
  return "unknown";
}

qrn_int32 format_of_name(const Task &t, const std::string &filename, qrn_int32 &compress) {
  std::string name = filename;
  compress = QRN_COMPRESS_NONE;
  std::string ext = extension_of(name);
  if (ext == "gz" || ext == "GZ") {
    compress = QRN_COMPRESS_GZIP;
    name.resize(name.size() - 3);
    ext = extension_of(name);
  }
  qrn_int32 f = format_of_extension(ext);
  if (f == QRN_DATA_FORMAT_EXTENSION) f = format_of_extension(t.par.str[QRN_SPAR_DEFAULT_EXTENSION]);
  if (f == QRN_DATA_FORMAT_EXTENSION)
    fail(QRN_RES_ERR_DATA_FORMAT, "The format of \"" + filename + "\" cannot be told from its name.");
  return f;
}

void need_token_names(const std::vector<std::string> &names, const char *kind, const char *format, size_t maxlen) {
  for (size_t k = 0; k < names.size(); ++k) {
    const std::string &s = names[k];
    bool ok = true;
    for (unsigned char ch : s) ok = ok && ch > 0x20 && ch != 0x7f;
    if (!ok)
      fail(QRN_RES_ERR_WRITE_LOSES_NAMES, std::string("The ") + kind + " name \"" + s + "\" (" + kind + " " +
                                              std::to_string(k) + ") has a blank or control character, which " +
                                              format + " cannot hold; set QRN_IPAR_OUTPUT_NAMES off to write generated names.");
    if (maxlen > 0 && s.size() > maxlen)
      fail(QRN_RES_ERR_WRITE_LOSES_NAMES, std::string("The ") + kind + " name \"" + s + "\" (" + kind + " " +
                                              std::to_string(k) + ") is longer than the " + std::to_string(maxlen) +
                                              " characters " + format + " holds; use free MPS or set QRN_IPAR_OUTPUT_NAMES off.");
  }
}

void need_no_conic(const FileProblem &p, const char *format) {
  const std::string f = format;
  if (!p.djcs.empty())
    fail(QRN_RES_ERR_WRITE_LOSES_DISJUNCTIVE, f + " cannot hold disjunctive constraints (the task has " +
                                                  std::to_string(p.djcs.size()) + ").");
  if (!p.barvardim.empty() || !p.symmats.empty())
    fail(QRN_RES_ERR_WRITE_LOSES_SEMIDEFINITE, f + " cannot hold semidefinite variables, their coefficients or the "
                                                   "symmetric matrix store.");
  if (!p.accs.empty() || p.numafe > 0)
    fail(QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC, f + " cannot hold affine expressions or affine conic constraints (the "
                                                   "task has " + std::to_string(p.numafe) + " expressions and " +
                                                   std::to_string(p.accs.size()) + " ACCs).");
  if (!p.domains.empty())
    fail(QRN_RES_ERR_WRITE_LOSES_DOMAINS, f + " cannot hold domains (the task has " + std::to_string(p.domains.size()) + ").");
}

WriteOptions write_options(const Task &t) {
  WriteOptions o;
  o.precision = t.par.integer[QRN_IPAR_OUTPUT_PRECISION];
  o.use_names = t.par.integer[QRN_IPAR_OUTPUT_NAMES] != QRN_OFF;
  o.con_prefix = t.par.str[QRN_SPAR_NAME_PREFIX_CON];
  o.var_prefix = t.par.str[QRN_SPAR_NAME_PREFIX_VAR];
  o.cone_prefix = t.par.str[QRN_SPAR_NAME_PREFIX_CONE];
  o.task = &t;
  return o;
}

void note_memory(Task &t);  // reports.cpp

void write_problem(Task &t, qrn_int32 format, qrn_int32 compress, const Sink &sink) {
  const FormatEntry &f = entry(format);
  need_compress(compress);
  auto start = Clock::now();
  if (t.progress(QRN_CALLBACK_BEGIN_WRITE)) fail(QRN_RES_ERR_STOPPED, "The callback function stopped the write.");
  FileProblem p = extract(static_cast<qrn_task_s *>(&t));
  WriteOptions opt = write_options(t);
  if (!opt.use_names) {
    p.connames.clear();
    p.varnames.clear();
    p.conenames.clear();
    p.domnames.clear();
    p.accnames.clear();
    p.djcnames.clear();
    p.barvarnames.clear();
    p.objname.clear();
    p.taskname.clear();
  }
  if (format == QRN_DATA_FORMAT_MPS || format == QRN_DATA_FORMAT_FREE_MPS || format == QRN_DATA_FORMAT_LP)
    need_no_conic(p, format == QRN_DATA_FORMAT_LP ? "the LP format" : "MPS");
  size_t bytes = 0;
  if (compress == QRN_COMPRESS_GZIP) {
    size_t packed = 0;
    Sink counted = [&](const char *d, size_t n) {
      packed += n;
      sink(d, n);
    };
    GzipSink gz(counted);
    Sink in = gz.sink();
    Out out(in, opt.precision);
    f.write(p, out, opt);
    out.flush();
    gz.finish();
    bytes = packed;
  } else {
    Out out(sink, opt.precision);
    f.write(p, out, opt);
    out.flush();
    bytes = out.bytes();
  }
  if (t.progress(QRN_CALLBACK_END_WRITE)) fail(QRN_RES_ERR_STOPPED, "The callback function stopped the write.");
  dinf(t, QRN_DINF_TIME_WRITE) = seconds_since(start);
  liinf(t, QRN_LIINF_WRITE_BYTES) = static_cast<qrn_int64>(bytes);
  note_memory(t);
}

void read_problem(Task &t, qrn_int32 format, const Source &src, qrn_int64 bytes) {
  const FormatEntry &f = entry(format);
  auto start = Clock::now();
  qrn_task_t raw = nullptr;
  qrn_rescode r = QRN_makeemptytask(static_cast<qrn_env_s *>(t.env), &raw);
  if (r != QRN_RES_OK) fail(r, "Cannot make a scratch task.");
  std::unique_ptr<qrn_task_s, TaskDeleter> scratch(raw);
  scratch->par = t.par;
  scratch->info = t.info;
  ReadContext ctx(*scratch);
  ctx.input_params = t.par.integer[QRN_IPAR_INPUT_PARAMS] != QRN_OFF;
  f.read(src, ctx);
  load(raw, ctx.problem, src.name);
  Task &s = *scratch;
  dinf(s, QRN_DINF_TIME_READ) = seconds_since(start);
  iinf(s, QRN_IINF_READ_NUM_LINES) = static_cast<qrn_int32>(std::min<size_t>(ctx.lines, INT32_MAX));
  iinf(s, QRN_IINF_READ_NUM_WARNINGS) = ctx.warnings;
  iinf(s, QRN_IINF_READ_NUM_CON) = ctx.problem.numcon;
  iinf(s, QRN_IINF_READ_NUM_VAR) = ctx.problem.numvar;
  iinf(s, QRN_IINF_READ_FORMAT) = format;
  liinf(s, QRN_LIINF_READ_BYTES) = bytes;
  s.read_source = src.name;
  s.mem_peak = 0;
  swap_task_data(t, s);
  note_memory(t);
}

}  // namespace qrn

using namespace qrn;

namespace {

std::string file_arg(const char *filename) {
  if (filename == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument filename is null.");
  return filename;
}

void write_file(Task &t, const std::string &name, qrn_int32 format, qrn_int32 compress) {
  entry(format);
  need_compress(compress);
  FileSink file(name, false);  // compression is done by write_problem
  Sink s = file.sink();
  write_problem(t, format, compress, s);
  file.close();
}

void read_file_as(Task &t, const std::string &name, qrn_int32 format) {
  entry(format);
  Source src{name, read_file(name)};
  read_problem(t, format, src, static_cast<qrn_int64>(src.text.size()));
}

void read_string(Task &t, const char *data, qrn_int32 format) {
  if (data == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument data is null.");
  if (format == QRN_DATA_FORMAT_TASK)
    fail(QRN_RES_ERR_DATA_FORMAT, "The binary task format cannot be read from a text string.");
  Source src{"<string>", data};
  read_problem(t, format, src, static_cast<qrn_int64>(src.text.size()));
}

}  // namespace

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_writedatahandle(qrn_task_t task, qrn_write_fn func, void *handle, qrn_int32 format,
                                                 qrn_int32 compress) {
  return api(task, "QRN_writedatahandle", [&](Task &t) {
    if (func == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument func is null.");
    entry(format);
    need_compress(compress);
    write_problem(t, format, compress, [&](const char *data, size_t size) {
      size_t taken = func(handle, data, size);
      if (taken < size)
        fail(QRN_RES_ERR_WRITE, "The receiver took " + std::to_string(taken) + " of " + std::to_string(size) +
                                    " bytes.");
    });
  });
}

QRN_API qrn_rescode QRN_CALL QRN_writedata(qrn_task_t task, const char *filename) {
  return api(task, "QRN_writedata", [&](Task &t) {
    std::string name = file_arg(filename);
    qrn_int32 compress = QRN_COMPRESS_NONE;
    qrn_int32 format = t.par.integer[QRN_IPAR_OUTPUT_FORMAT];
    qrn_int32 by_name = format_of_name(t, name, compress);
    if (format == QRN_DATA_FORMAT_EXTENSION) format = by_name;
    if (t.par.integer[QRN_IPAR_OUTPUT_COMPRESSION] != QRN_COMPRESS_NONE)
      compress = t.par.integer[QRN_IPAR_OUTPUT_COMPRESSION];
    write_file(t, name, format, compress);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readdataformat(qrn_task_t task, const char *filename, qrn_int32 format,
                                                qrn_int32 compress) {
  return api(task, "QRN_readdataformat", [&](Task &t) {
    std::string name = file_arg(filename);
    need_compress(compress);
    if (format == QRN_DATA_FORMAT_EXTENSION) {
      qrn_int32 ignored;
      format = format_of_name(t, name, ignored);
    }
    read_file_as(t, name, format);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readdataautoformat(qrn_task_t task, const char *filename) {
  return api(task, "QRN_readdataautoformat", [&](Task &t) {
    std::string name = file_arg(filename);
    qrn_int32 compress;
    qrn_int32 format = t.par.integer[QRN_IPAR_INPUT_FORMAT];
    if (format == QRN_DATA_FORMAT_EXTENSION) format = format_of_name(t, name, compress);
    read_file_as(t, name, format);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readtask(qrn_task_t task, const char *filename) {
  return api(task, "QRN_readtask", [&](Task &t) { read_file_as(t, file_arg(filename), QRN_DATA_FORMAT_TASK); });
}

QRN_API qrn_rescode QRN_CALL QRN_writetask(qrn_task_t task, const char *filename) {
  return api(task, "QRN_writetask", [&](Task &t) {
    std::string name = file_arg(filename);
    qrn_int32 compress = QRN_COMPRESS_NONE;
    if (name.size() > 3 && (name.compare(name.size() - 3, 3, ".gz") == 0)) compress = QRN_COMPRESS_GZIP;
    write_file(t, name, QRN_DATA_FORMAT_TASK, compress);
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readopfstring(qrn_task_t task, const char *data) {
  return api(task, "QRN_readopfstring", [&](Task &t) { read_string(t, data, QRN_DATA_FORMAT_OPF); });
}
QRN_API qrn_rescode QRN_CALL QRN_readlpstring(qrn_task_t task, const char *data) {
  return api(task, "QRN_readlpstring", [&](Task &t) { read_string(t, data, QRN_DATA_FORMAT_LP); });
}
QRN_API qrn_rescode QRN_CALL QRN_readjsonstring(qrn_task_t task, const char *data) {
  return api(task, "QRN_readjsonstring", [&](Task &t) { read_string(t, data, QRN_DATA_FORMAT_JSON_TASK); });
}
QRN_API qrn_rescode QRN_CALL QRN_readptfstring(qrn_task_t task, const char *data) {
  return api(task, "QRN_readptfstring", [&](Task &t) { read_string(t, data, QRN_DATA_FORMAT_PTF); });
}
QRN_API qrn_rescode QRN_CALL QRN_readdatastring(qrn_task_t task, const char *data, qrn_int32 format) {
  return api(task, "QRN_readdatastring", [&](Task &t) { read_string(t, data, format); });
}

}  // extern "C"
