// Shared pieces of every file format: numbers as text and back, a buffered
// writer over a sink, a reader's view of its input with line and column
// positions, and failures that name the place in the input.
#pragma once

#include "errors.hpp"

#include <charconv>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>
#include <algorithm>
#include <cstdint>

namespace qrn {

// Receives output in pieces; throws a Failure to stop the writer.
using Sink = std::function<void(const char *data, size_t size)>;

// ---- numbers ---------------------------------------------------------------------

// Writes a finite or infinite double into buf (at least 32 bytes) and returns
// the end. precision 17 gives the shortest text that reads back to the same
// bits; less rounds to that many significant digits. Infinity is "inf"/"-inf",
// NaN "nan".
char *put_double(char *buf, double v, int precision = 17);
std::string double_text(double v, int precision = 17);

enum class NumParse { ok, bad, nan, overflow };
// Reads a whole token as a double: an optional sign, then what std::from_chars
// takes (decimal or exponent form, "inf", "infinity"). A value too small for a
// double reads as 0 or a subnormal; one too large is `overflow`.
NumParse parse_double(std::string_view s, double &v);
// A whole token as a 64-bit integer (optional sign); false when it is not one.
bool parse_int64(std::string_view s, qrn_int64 &v);

// ---- output ------------------------------------------------------------------------

// Collects text and hands it to a sink in pieces of about 64 KiB.
class Out {
 public:
  explicit Out(const Sink &sink, int precision = 17);
  ~Out() = default;
  Out &raw(std::string_view s) {
    if (buf_.size() + s.size() > chunk) flush_some(s.size());
    buf_.append(s.data(), s.size());
    return *this;
  }
  Out &ch(char c) {
    if (buf_.size() + 1 > chunk) flush_some(1);
    buf_.push_back(c);
    return *this;
  }
  Out &num(double v) {
    char b[40];
    return raw(std::string_view(b, static_cast<size_t>(put_double(b, v, precision_) - b)));
  }
  Out &integer(qrn_int64 v) {
    char b[24];
    auto r = std::to_chars(b, b + sizeof b, v);
    return raw(std::string_view(b, static_cast<size_t>(r.ptr - b)));
  }
  // A text in double quotes: \" \\ \n \r \t and \xHH for other control bytes.
  Out &quoted(std::string_view s);
  // Pads with blanks to column col (0-based) of the current line, at least one blank.
  Out &pad_to(size_t col);
  void flush();
  size_t bytes() const { return total_ + buf_.size(); }

 private:
  static constexpr size_t chunk = 64 * 1024;
  void flush_some(size_t need);
  const Sink &sink_;
  std::string buf_;
  size_t total_ = 0;
  size_t line_start_ = 0;  // offset of the current line's start in total_ + buf_ terms
  int precision_;
};

// ---- input -------------------------------------------------------------------------

// The text being read and its name for messages ("model.mps" or "<string>").
struct Source {
  std::string name;
  std::string text;
};

// Fails with "name:line:col: msg".
[[noreturn]] void fail_at(qrn_rescode code, const Source &src, size_t line, size_t col, const std::string &msg);

// A token and where it starts (1-based line and column).
struct Token {
  std::string_view text;
  size_t line = 0, col = 0;
  bool empty() const { return text.empty(); }
};

// Reads whitespace-separated tokens, quoted strings and lines, keeping count
// of lines and columns. '#' comments (to the end of the line) are skipped when
// enabled.
class Lexer {
 public:
  Lexer(const Source &src, bool comments) : src_(src), s_(src.text), comments_(comments) {}

  // The next token on any line; empty at the end of the text. A quoted string
  // is one token (with its quotes).
  Token next();
  // The next token on the current line; empty at the end of the line.
  Token next_on_line();
  Token peek();
  // Skips to the start of the next line.
  void skip_line();
  bool at_end();
  size_t line() const { return line_; }
  size_t col() const { return pos_ - line_start_ + 1; }
  size_t lines_read() const { return line_; }

  // Token helpers that fail with the token's place.
  [[noreturn]] void fail(qrn_rescode code, const Token &t, const std::string &msg) const {
    fail_at(code, src_, t.line, t.col, msg);
  }
  [[noreturn]] void fail_here(qrn_rescode code, const std::string &msg) const {
    fail_at(code, src_, line_, col(), msg);
  }
  Token need(const char *what);  // the next token, or a failure naming what was expected
  double number(const Token &t, bool allow_inf);
  double need_number(const char *what, bool allow_inf) { return number(need(what), allow_inf); }
  qrn_int64 integer(const Token &t, qrn_int64 lo, qrn_int64 hi);
  qrn_int64 need_integer(const char *what, qrn_int64 lo, qrn_int64 hi) { return integer(need(what), lo, hi); }
  // The text of a quoted-string token, unescaped and checked as UTF-8.
  std::string unquote(const Token &t) const;
  std::string need_string(const char *what);
  void expect(const char *word);

 private:
  void skip_blanks(bool newlines);
  const Source &src_;
  std::string_view s_;
  bool comments_;
  size_t pos_ = 0, line_ = 1, line_start_ = 0;
};

// Splits a text into lines, counting them; the line excludes "\n" and a
// trailing "\r".
class Lines {
 public:
  explicit Lines(const std::string &text) : s_(text) {}
  bool next(std::string_view &line) {
    if (pos_ >= s_.size()) return false;
    size_t e = s_.find('\n', pos_);
    if (e == std::string_view::npos) e = s_.size();
    line = s_.substr(pos_, e - pos_);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    pos_ = e + 1;
    ++number_;
    return true;
  }
  size_t number() const { return number_; }

 private:
  std::string_view s_;
  size_t pos_ = 0, number_ = 0;
};

// The blank-separated fields of one line, with their 1-based columns.
struct Fields {
  static constexpr int max = 8;
  std::string_view f[max];
  size_t col[max] = {};
  int n = 0;
  bool too_many = false;
  explicit Fields(std::string_view line) {
    size_t p = 0, len = line.size();
    while (p < len) {
      while (p < len && (line[p] == ' ' || line[p] == '\t')) ++p;
      if (p >= len) break;
      size_t b = p;
      while (p < len && line[p] != ' ' && line[p] != '\t') ++p;
      if (n == max) {
        too_many = true;
        break;
      }
      f[n] = line.substr(b, p - b);
      col[n++] = b + 1;
    }
  }
};

// Names in the text being read, mapped to item indexes: open addressing over
// one flat array of 16-byte slots; keys view the text itself (which outlives
// the map). A slot keeps a name's hash, length and first 8 bytes, so that
// names of up to 8 bytes are found without touching the text.
class NameIndex {
 public:
  static uint64_t hash(std::string_view s) {
    uint64_t h = 0x9e3779b97f4a7c15ull ^ s.size();
    size_t k = 0;
    for (; k + 8 <= s.size(); k += 8) {
      uint64_t w;
      std::memcpy(&w, s.data() + k, 8);
      h = (h ^ w) * 0xff51afd7ed558ccdull;
      h ^= h >> 32;
    }
    uint64_t w = 0;
    std::memcpy(&w, s.data() + k, s.size() - k);
    h = (h ^ w) * 0xc4ceb9fe1a85ec53ull;
    return h ^ (h >> 29);
  }
  // The index of s, or -1.
  qrn_int32 find(std::string_view s) const {
    if (slots_.empty()) return -1;
    const uint64_t h = hash(s);
    const Slot want = make(h, s, 0);
    for (size_t p = h & mask_;; p = (p + 1) & mask_) {
      const Slot &e = slots_[p];
      if (e.index < 0) return -1;
      if (same(e, want, s)) return e.index;
    }
  }
  // Adds s with index v (v = 0, 1, 2, ... in order); false (and no change)
  // when s is there already.
  bool insert(std::string_view s, qrn_int32 v) {
    if ((count_ + 1) * 4 > slots_.size() * 3) grow();
    const uint64_t h = hash(s);
    const Slot want = make(h, s, v);
    for (size_t p = h & mask_;; p = (p + 1) & mask_) {
      Slot &e = slots_[p];
      if (e.index < 0) {
        e = want;
        if (keys_.size() <= static_cast<size_t>(v)) keys_.resize(static_cast<size_t>(v) + 1);
        keys_[v] = s;
        ++count_;
        return true;
      }
      if (same(e, want, s)) return false;
    }
  }
  size_t size() const { return count_; }

 private:
  struct Slot {
    uint32_t meta = 0;  // high 24 bits of the hash, then the length (255: longer)
    qrn_int32 index = -1;
    uint64_t pre = 0;   // first 8 bytes
  };
  static Slot make(uint64_t h, std::string_view s, qrn_int32 v) {
    Slot e;
    e.meta = (static_cast<uint32_t>(h >> 32) & 0xFFFFFF00u) | static_cast<uint32_t>(std::min<size_t>(s.size(), 255));
    e.index = v;
    std::memcpy(&e.pre, s.data(), std::min<size_t>(8, s.size()));
    return e;
  }
  bool same(const Slot &e, const Slot &want, std::string_view s) const {
    if (e.meta != want.meta || e.pre != want.pre) return false;
    return s.size() <= 8 || keys_[e.index] == s;
  }
  void grow() {
    std::vector<Slot> old(std::max<size_t>(16, slots_.size() * 2));
    old.swap(slots_);
    mask_ = slots_.size() - 1;
    for (const Slot &e : old)
      if (e.index >= 0) {
        uint64_t h = hash(keys_[e.index]);
        for (size_t p = h & mask_;; p = (p + 1) & mask_)
          if (slots_[p].index < 0) {
            slots_[p] = e;
            break;
          }
      }
  }
  std::vector<Slot> slots_;
  std::vector<std::string_view> keys_;
  size_t mask_ = 0, count_ = 0;
};

}  // namespace qrn
