// Writing a task's problem in the library's own text format.
//
// The text format (QRN_DATA_FORMAT_TEXT, files *.qtx), version 1
// ------------------------------------------------------------------
// UTF-8 text, one item per line, tokens separated by one blank, every line
// ended by "\n". A reader ignores blank lines and lines starting with '#'.
//   - Numbers: 17 significant digits (as "%.17g", independent of the locale),
//     so that reading them back gives the same double; an infinite value is
//     "-inf" or "+inf".
//   - Names: in double quotes; inside, \" \\ \n \r \t stand for themselves and
//     \xHH (two hex digits) for any other byte below 0x20 and for 0x7f. Other
//     bytes (UTF-8 included) are written as they are. "" is no name.
//   - Each section starts with its keyword and the number of lines that follow.
//
//   qrntext 1                              format name and version
//   task <name>
//   objective <sense> <name> <constant>    sense: minimize | maximize
//   coefficients <n>                       n lines: <j> <c_j>  (non-zero c_j, j increasing)
//   constraints <numcon>                   numcon lines, i = 0, 1, ...:
//     <i> <name> <key> <lower> <upper>     key: free | lower | upper | fixed | ranged
//   variables <numvar>                     numvar lines, j = 0, 1, ...:
//     <j> <name> <type> <key> <lower> <upper>   type: continuous | integer
//   matrix <numanz>                        numanz lines: <i> <j> <a_ij>
//                                          (column by column, i increasing in a column)
//   qobjective <n>                         n lines: <i> <j> <q_ij>  (i >= j: lower triangle
//                                          of Q in the objective term 1/2 x'Qx)
//   qconstraints <n>                       n lines: <k> <i> <j> <q_ij>  (term of constraint k)
//   cones <numcone>                        numcone lines:
//     <k> <name> <type> <parameter> <nummem> <member> ...   type: quad | rquad
//   afeg, afef, barvars, symmats, afebarf, barc, bara, domains, accs, djcs
//                                          conic and semidefinite data, each section only
//                                          when it has lines (conic/conic_text.hpp)
//   end
//
// Bounds are written as the task stores them: a side that the key leaves open
// is infinite. A key, type or sense that has no word is written as its number.
#include "write.hpp"

#include "conic_text.hpp"
#include "errors.hpp"

#include <charconv>
#include <cstring>
#include <string>

namespace qrn {
namespace {

constexpr size_t chunk_size = 64 * 1024;

// Collects tokens into lines and hands the text to the sink chunk by chunk.
class TextOut {
 public:
  explicit TextOut(const Sink &sink) : sink_(sink) { buf_.reserve(chunk_size); }

  TextOut &word(const char *s) {
    sep();
    raw(s, std::strlen(s));
    return *this;
  }
  TextOut &integer(qrn_int64 v) {
    char b[24];
    auto r = std::to_chars(b, b + sizeof b, v);
    sep();
    raw(b, static_cast<size_t>(r.ptr - b));
    return *this;
  }
  TextOut &number(double v) {
    if (std::isinf(v)) return word(v < 0 ? "-inf" : "+inf");
    if (std::isnan(v)) return word("nan");
    char b[32];
    auto r = std::to_chars(b, b + sizeof b, v, std::chars_format::general, 17);
    sep();
    raw(b, static_cast<size_t>(r.ptr - b));
    return *this;
  }
  TextOut &name(const std::string &s) {
    static const char hex[] = "0123456789abcdef";
    sep();
    raw("\"", 1);
    for (unsigned char ch : s) {
      const char *esc = nullptr;
      switch (ch) {
        case '"': esc = "\\\""; break;
        case '\\': esc = "\\\\"; break;
        case '\n': esc = "\\n"; break;
        case '\r': esc = "\\r"; break;
        case '\t': esc = "\\t"; break;
        default: break;
      }
      if (esc != nullptr) {
        raw(esc, 2);
      } else if (ch < 0x20 || ch == 0x7f) {
        const char code[4] = {'\\', 'x', hex[ch >> 4], hex[ch & 15]};
        raw(code, 4);
      } else {
        const char c = static_cast<char>(ch);
        raw(&c, 1);
      }
    }
    raw("\"", 1);
    return *this;
  }
  // A word from table[v], or the number v when the table has none.
  template <size_t N>
  TextOut &choice(const char *const (&table)[N], qrn_int32 v) {
    return v >= 0 && static_cast<size_t>(v) < N ? word(table[v]) : integer(v);
  }
  void end_line() {
    raw("\n", 1);
    fresh_ = true;
  }
  void flush() {
    if (!buf_.empty()) sink_(buf_.data(), buf_.size());
    buf_.clear();
  }

 private:
  void sep() {
    if (!fresh_) raw(" ", 1);
    fresh_ = false;
  }
  void raw(const char *s, size_t n) {
    while (n > 0) {
      size_t take = std::min(n, chunk_size - buf_.size());
      buf_.append(s, take);
      s += take;
      n -= take;
      if (buf_.size() == chunk_size) flush();
    }
  }

  const Sink &sink_;
  std::string buf_;
  bool fresh_ = true;  // at the start of a line
};

const char *const sense_words[] = {"minimize", "maximize"};
const char *const key_words[] = {"free", "lower", "upper", "fixed", "ranged"};
const char *const type_words[] = {"continuous", "integer"};
const char *const cone_words[] = {"quad", "rquad"};

void section(TextOut &out, const char *keyword, qrn_int64 count) {
  out.word(keyword).integer(count).end_line();
}

void bound(TextOut &out, const Bound &b) { out.choice(key_words, b.bk).number(b.bl).number(b.bu); }

}  // namespace

void write_text(const Task &t, const Sink &sink) {
  TextOut out(sink);
  out.word("qrntext").integer(1).end_line();
  out.word("task").name(t.taskname).end_line();
  out.word("objective").choice(sense_words, t.sense).name(t.objname).number(t.cfix).end_line();

  qrn_int64 numc = 0;
  for (double cj : t.c) numc += cj != 0.0;
  section(out, "coefficients", numc);
  for (size_t j = 0; j < t.c.size(); ++j)
    if (t.c[j] != 0.0) out.integer(static_cast<qrn_int64>(j)).number(t.c[j]).end_line();

  auto name_of = [](const NameTable &names, size_t k) -> const std::string & { return names.name(k); };
  section(out, "constraints", t.numcon);
  for (qrn_int32 i = 0; i < t.numcon; ++i) {
    out.integer(i).name(name_of(t.connames, i));
    bound(out, t.conbound[i]);
    out.end_line();
  }
  section(out, "variables", t.numvar);
  for (qrn_int32 j = 0; j < t.numvar; ++j) {
    out.integer(j).name(name_of(t.varnames, j)).choice(type_words, t.vartype[j]);
    bound(out, t.varbound[j]);
    out.end_line();
  }

  section(out, "matrix", t.a.nnz);
  for (qrn_int32 j = 0; j < t.numvar; ++j) {
    const qrn_int32 *rows = t.a.cols.idx_of(j);
    const double *vals = t.a.cols.val_of(j);
    for (qrn_int32 p = 0; p < t.a.cols.len[j]; ++p) out.integer(rows[p]).integer(j).number(vals[p]).end_line();
  }

  section(out, "qobjective", t.qobj.size());
  t.qobj.each([&](qrn_int32 i, qrn_int32 j, double v) { out.integer(i).integer(j).number(v).end_line(); });
  qrn_int64 numqc = 0;
  for (const QTerms &q : t.qcon) numqc += q.size();
  section(out, "qconstraints", numqc);
  for (size_t k = 0; k < t.qcon.size(); ++k)
    t.qcon[k].each([&](qrn_int32 i, qrn_int32 j, double v) {
      out.integer(static_cast<qrn_int64>(k)).integer(i).integer(j).number(v).end_line();
    });

  section(out, "cones", static_cast<qrn_int64>(t.cones.size()));
  for (size_t k = 0; k < t.cones.size(); ++k) {
    const Cone &cone = t.cones[k];
    out.integer(static_cast<qrn_int64>(k)).name(name_of(t.conenames, k)).choice(cone_words, cone.type);
    out.number(cone.par).integer(static_cast<qrn_int64>(cone.members.size()));
    for (qrn_int32 m : cone.members) out.integer(m);
    out.end_line();
  }
  write_conic_sections(t, out);
  out.word("end").end_line();
  out.flush();
}

}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_writedatahandle(qrn_task_t task, qrn_write_fn func, void *handle, qrn_int32 format,
                                                 qrn_int32 compress) {
  return api(task, "QRN_writedatahandle", [&](Task &t) {
    if (func == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument func is null.");
    if (format != QRN_DATA_FORMAT_TEXT)
      fail(QRN_RES_ERR_DATA_FORMAT, "Data format " + std::to_string(format) +
                                        " cannot be written to a handle; the text format is " +
                                        std::to_string(QRN_DATA_FORMAT_TEXT) + ".");
    if (compress != QRN_COMPRESS_NONE)
      fail(QRN_RES_ERR_COMPRESSION, "Compression " + std::to_string(compress) + " is not supported here; use " +
                                        std::to_string(QRN_COMPRESS_NONE) + " (none).");
    auto stop = [&](qrn_int32 caller) {
      if (t.progress(caller)) fail(QRN_RES_ERR_STOPPED, "The callback function stopped the write.");
    };
    stop(QRN_CALLBACK_BEGIN_WRITE);
    write_text(t, [&](const char *data, size_t size) {
      size_t taken = func(handle, data, size);
      if (taken < size)
        fail(QRN_RES_ERR_WRITE, "The receiver took " + std::to_string(taken) + " of " + std::to_string(size) +
                                    " bytes.");
    });
    stop(QRN_CALLBACK_END_WRITE);
  });
}

}  // extern "C"
