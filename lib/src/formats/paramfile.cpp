// Parameter files: one "NAME VALUE" per line (docs/formats/parameters.md).
// The file is read whole into a copy of the parameters, which replaces the
// task's only when every line was accepted.
#include "formats.hpp"

#include "params.hpp"

namespace qrn {
namespace {

// A string value is written in quotes when it is empty or holds a blank, a
// quote, a backslash, '#' or a control character.
bool needs_quotes(const std::string &s) {
  if (s.empty()) return true;
  for (unsigned char c : s)
    if (c == '"' || c == '\\' || c == '#' || c <= 0x20 || c == 0x7f) return true;
  return false;
}

}  // namespace
}  // namespace qrn

using namespace qrn;

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_writeparamfile(qrn_task_t task, const char *filename) {
  return api(task, "QRN_writeparamfile", [&](Task &t) {
    if (filename == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument filename is null.");
    FileSink file(filename, false);
    Sink sink = file.sink();
    Out out(sink);
    out.raw("# quarn parameters: NAME VALUE per line\n");
    for (ParKind kind : {ParKind::dou, ParKind::integer, ParKind::str})
      for (qrn_int32 id = 0; id < param_count(kind); ++id) {
        ParRef r{kind, id};
        std::string v = param_text(t.par, r);
        out.raw(param_name(r)).ch(' ');
        if (kind == ParKind::str && needs_quotes(v))
          out.quoted(v);
        else
          out.raw(v);
        out.ch('\n');
      }
    out.flush();
    file.close();
  });
}

QRN_API qrn_rescode QRN_CALL QRN_readparamfile(qrn_task_t task, const char *filename) {
  return api(task, "QRN_readparamfile", [&](Task &t) {
    if (filename == nullptr) fail(QRN_RES_ERR_NULL_POINTER, "Argument filename is null.");
    Source src{filename, read_file(filename)};
    Params par = t.par;
    Lexer lx(src, true);
    for (;;) {
      Token name = lx.next();
      if (name.empty()) break;
      const size_t line = name.line;
      ParRef r;
      std::string key(name.text);
      if (!find_param(key.c_str(), r))
        lx.fail(QRN_RES_ERR_PARAM_NAME, name, "no parameter is named \"" + key.substr(0, 60) + "\".");
      Token value = lx.next_on_line();
      if (value.empty()) lx.fail(QRN_RES_ERR_READ_SYNTAX, value, key + " needs a value on its line.");
      std::string text;
      if (value.text.front() == '"') {
        text = lx.unquote(value);
      } else {
        // The rest of the line, without a trailing comment or blanks.
        text = std::string(value.text);
        for (Token more = lx.next_on_line(); !more.empty(); more = lx.next_on_line())
          text += " " + std::string(more.text);
      }
      Token extra = lx.next_on_line();
      if (!extra.empty()) lx.fail(QRN_RES_ERR_READ_SYNTAX, extra, "text follows the quoted value.");
      try {
        set_param_text(par, key.c_str(), text.c_str());
      } catch (const Failure &f) {
        fail_at(f.code, src, line, value.col, f.msg);
      }
    }
    t.par = std::move(par);
  });
}

}  // extern "C"
