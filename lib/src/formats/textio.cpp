// Numbers as text and back, the buffered writer, and the lexer shared by the
// text formats.
#include "textio.hpp"

#include "names.hpp"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace qrn {

char *put_double(char *buf, double v, int precision) {
  if (std::isnan(v)) {
    std::memcpy(buf, "nan", 3);
    return buf + 3;
  }
  if (std::isinf(v)) {
    if (v < 0) {
      std::memcpy(buf, "-inf", 4);
      return buf + 4;
    }
    std::memcpy(buf, "inf", 3);
    return buf + 3;
  }
  auto r = precision >= 17 ? std::to_chars(buf, buf + 32, v)
                           : std::to_chars(buf, buf + 32, v, std::chars_format::general, precision);
  return r.ptr;
}

std::string double_text(double v, int precision) {
  char b[40];
  return std::string(b, static_cast<size_t>(put_double(b, v, precision) - b));
}

NumParse parse_double(std::string_view s, double &v) {
  if (s.empty()) return NumParse::bad;
  bool neg = false;
  size_t p = 0;
  if (s[0] == '+' || s[0] == '-') {
    neg = s[0] == '-';
    p = 1;
    if (s.size() > 1 && (s[1] == '+' || s[1] == '-')) return NumParse::bad;
  }
  const char *b = s.data() + p, *e = s.data() + s.size();
  if (b == e) return NumParse::bad;
  auto r = std::from_chars(b, e, v);
  if (r.ec == std::errc::result_out_of_range && r.ptr == e) {
    // Too small reads as 0 or a subnormal; too large is refused.
    std::string copy(b, e);
    errno = 0;
    double w = std::strtod(copy.c_str(), nullptr);
    if (std::isinf(w)) return NumParse::overflow;
    v = neg ? -w : w;
    return NumParse::ok;
  }
  if (r.ec != std::errc() || r.ptr != e) return NumParse::bad;
  if (std::isnan(v)) return NumParse::nan;
  if (neg) v = -v;
  return NumParse::ok;
}

bool parse_int64(std::string_view s, qrn_int64 &v) {
  if (s.empty()) return false;
  size_t p = s[0] == '+' ? 1 : 0;
  if (p == s.size()) return false;
  auto r = std::from_chars(s.data() + p, s.data() + s.size(), v);
  return r.ec == std::errc() && r.ptr == s.data() + s.size();
}

// ---- output ------------------------------------------------------------------------

Out::Out(const Sink &sink, int precision) : sink_(sink), precision_(precision) { buf_.reserve(chunk + 256); }

void Out::flush_some(size_t need) {
  // Keep the current line's start known for pad_to.
  (void)need;
  flush();
}

void Out::flush() {
  if (buf_.empty()) return;
  size_t nl = buf_.rfind('\n');
  if (nl != std::string::npos) line_start_ = total_ + nl + 1;
  sink_(buf_.data(), buf_.size());
  total_ += buf_.size();
  buf_.clear();
}

Out &Out::pad_to(size_t col) {
  size_t nl = buf_.rfind('\n');
  size_t start = nl == std::string::npos ? line_start_ : total_ + nl + 1;
  size_t cur = total_ + buf_.size() - start;
  size_t n = col > cur ? col - cur : 1;
  return raw(std::string(n, ' '));
}

Out &Out::quoted(std::string_view s) {
  static const char hex[] = "0123456789abcdef";
  ch('"');
  for (unsigned char c : s) {
    switch (c) {
      case '"': raw("\\\""); break;
      case '\\': raw("\\\\"); break;
      case '\n': raw("\\n"); break;
      case '\r': raw("\\r"); break;
      case '\t': raw("\\t"); break;
      default:
        if (c < 0x20 || c == 0x7f) {
          const char code[4] = {'\\', 'x', hex[c >> 4], hex[c & 15]};
          raw(std::string_view(code, 4));
        } else {
          ch(static_cast<char>(c));
        }
    }
  }
  return ch('"');
}

// ---- input -------------------------------------------------------------------------

void fail_at(qrn_rescode code, const Source &src, size_t line, size_t col, const std::string &msg) {
  fail(code, src.name + ":" + std::to_string(line) + ":" + std::to_string(col) + ": " + msg);
}

void Lexer::skip_blanks(bool newlines) {
  while (pos_ < s_.size()) {
    char c = s_[pos_];
    if (c == ' ' || c == '\t' || c == '\r') {
      ++pos_;
    } else if (c == '\n' && newlines) {
      ++pos_;
      ++line_;
      line_start_ = pos_;
    } else if (c == '#' && comments_) {
      while (pos_ < s_.size() && s_[pos_] != '\n') ++pos_;
    } else {
      break;
    }
  }
}

static Token scan(std::string_view s, size_t &pos, size_t line, size_t col) {
  Token t;
  t.line = line;
  t.col = col;
  size_t b = pos;
  if (s[pos] == '"') {
    ++pos;
    while (pos < s.size() && s[pos] != '"' && s[pos] != '\n') {
      if (s[pos] == '\\' && pos + 1 < s.size() && s[pos + 1] != '\n') ++pos;
      ++pos;
    }
    if (pos < s.size() && s[pos] == '"') ++pos;  // an unterminated string is found by unquote
  } else {
    while (pos < s.size()) {
      char c = s[pos];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') break;
      ++pos;
    }
  }
  t.text = s.substr(b, pos - b);
  return t;
}

Token Lexer::next() {
  skip_blanks(true);
  if (pos_ >= s_.size()) return Token{{}, line_, col()};
  return scan(s_, pos_, line_, col());
}

Token Lexer::next_on_line() {
  skip_blanks(false);
  if (pos_ >= s_.size() || s_[pos_] == '\n') return Token{{}, line_, col()};
  return scan(s_, pos_, line_, col());
}

Token Lexer::peek() {
  size_t p = pos_, l = line_, ls = line_start_;
  Token t = next();
  pos_ = p;
  line_ = l;
  line_start_ = ls;
  return t;
}

void Lexer::skip_line() {
  while (pos_ < s_.size() && s_[pos_] != '\n') ++pos_;
  if (pos_ < s_.size()) {
    ++pos_;
    ++line_;
    line_start_ = pos_;
  }
}

bool Lexer::at_end() {
  skip_blanks(true);
  return pos_ >= s_.size();
}

Token Lexer::need(const char *what) {
  Token t = next();
  if (t.empty()) fail(QRN_RES_ERR_READ_EOF, t, std::string("the text ends where ") + what + " was expected.");
  return t;
}

double Lexer::number(const Token &t, bool allow_inf) {
  double v = 0;
  switch (parse_double(t.text, v)) {
    case NumParse::ok:
      break;
    case NumParse::nan:
      fail(QRN_RES_ERR_READ_NUMBER, t, "NaN is not a valid value.");
    case NumParse::overflow:
      fail(QRN_RES_ERR_READ_NUMBER, t, "the number " + std::string(t.text) + " is too large for a double.");
    default:
      fail(QRN_RES_ERR_READ_NUMBER, t, "\"" + std::string(t.text.substr(0, 40)) + "\" is not a number.");
  }
  if (!allow_inf && std::isinf(v)) fail(QRN_RES_ERR_READ_NUMBER, t, "an infinite value is not allowed here.");
  return v;
}

qrn_int64 Lexer::integer(const Token &t, qrn_int64 lo, qrn_int64 hi) {
  qrn_int64 v = 0;
  if (!parse_int64(t.text, v))
    fail(QRN_RES_ERR_READ_NUMBER, t, "\"" + std::string(t.text.substr(0, 40)) + "\" is not an integer.");
  if (v < lo || v > hi)
    fail(QRN_RES_ERR_READ_INDEX, t, std::to_string(v) + " is outside " + std::to_string(lo) + ".." + std::to_string(hi) + ".");
  return v;
}

std::string Lexer::unquote(const Token &t) const {
  std::string_view s = t.text;
  if (s.empty() || s.front() != '"') fail(QRN_RES_ERR_READ_SYNTAX, t, "a text in double quotes was expected.");
  auto hexval = [](char h) -> int {
    if (h >= '0' && h <= '9') return h - '0';
    if (h >= 'a' && h <= 'f') return h - 'a' + 10;
    if (h >= 'A' && h <= 'F') return h - 'A' + 10;
    return -1;
  };
  std::string out;
  out.reserve(s.size());
  size_t k = 1;
  bool closed = false;
  while (k < s.size()) {
    char c = s[k++];
    if (c == '"') {
      closed = true;
      break;
    }
    if (c != '\\') {
      out.push_back(c);
      continue;
    }
    if (k >= s.size()) break;
    char e = s[k++];
    switch (e) {
      case '"': out.push_back('"'); break;
      case '\\': out.push_back('\\'); break;
      case 'n': out.push_back('\n'); break;
      case 'r': out.push_back('\r'); break;
      case 't': out.push_back('\t'); break;
      case 'x': {
        int hi = k < s.size() ? hexval(s[k]) : -1;
        int lo = k + 1 < s.size() ? hexval(s[k + 1]) : -1;
        if (hi < 0 || lo < 0) fail(QRN_RES_ERR_READ_SYNTAX, t, "a \\x escape needs two hexadecimal digits.");
        out.push_back(static_cast<char>(hi * 16 + lo));
        k += 2;
        break;
      }
      default:
        fail(QRN_RES_ERR_READ_SYNTAX, t, std::string("an unknown escape \\") + e + ".");
    }
  }
  if (!closed || k != s.size()) fail(QRN_RES_ERR_READ_SYNTAX, t, "the text in double quotes is not closed.");
  if (!valid_utf8(out.data(), out.size())) fail(QRN_RES_ERR_READ_SYNTAX, t, "the text is not valid UTF-8.");
  return out;
}

std::string Lexer::need_string(const char *what) { return unquote(need(what)); }

void Lexer::expect(const char *word) {
  Token t = need(word);
  if (t.text != word)
    fail(QRN_RES_ERR_READ_SYNTAX, t,
         std::string("\"") + word + "\" was expected, not \"" + std::string(t.text.substr(0, 40)) + "\".");
}

}  // namespace qrn
