#include "registry_text.h"

#include <cstdio>
#include <optional>

#include "tsruntime/automation/codepage.h"
#include "utf16_bytes.h"

namespace tsruntime::registry {

void Fail(RuntimeError code, const String& detail) {
  throw Error(static_cast<int32_t>(code), FromAscii(kRuntimeErrorSource),
              RuntimeErrorText(static_cast<int32_t>(code)) + u": " + detail);
}

namespace {

constexpr StringView kHeader5 = u"Windows Registry Editor Version 5.00";
constexpr StringView kHeader4 = u"REGEDIT4";
// Registry editors wrap a hex list once a line reaches this many characters.
constexpr size_t kHexWrap = 77;

String Quoted(StringView text) {
  String out = u"\"";
  for (char16_t c : text) {
    if (c == u'\\' || c == u'"') out += u'\\';
    out += c;
  }
  return out + u"\"";
}

String Hex(unsigned value, int digits) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%0*x", digits, value);
  return FromAscii(buf);
}

// The text of string data that reads back the same: UTF-16 with one terminating zero,
// no other zero, no line break.
std::optional<String> PlainText(const std::vector<uint8_t>& data) {
  if (data.size() < 2 || data.size() % 2 != 0) return std::nullopt;
  String text;
  for (size_t i = 0; i + 2 < data.size(); i += 2) {
    const char16_t c = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
    if (c == 0 || c == u'\r' || c == u'\n') return std::nullopt;
    text += c;
  }
  if (data[data.size() - 2] != 0 || data.back() != 0) return std::nullopt;
  return text;
}

String ValueLine(const Value& v) {
  String line = v.name.empty() ? u"@" : Quoted(v.name);
  line += u'=';
  if (v.type == kRegSz) {
    if (const std::optional<String> text = PlainText(v.data)) return line + Quoted(*text);
  }
  if (v.type == kRegDword && v.data.size() == 4) {
    const uint32_t n =
        v.data[0] | (v.data[1] << 8) | (v.data[2] << 16) | (static_cast<uint32_t>(v.data[3]) << 24);
    return line + u"dword:" + Hex(n, 8);
  }
  line += v.type == kRegBinary ? u"hex:" : u"hex(" + Hex(v.type, 1) + u"):";
  size_t width = line.size();
  for (size_t i = 0; i < v.data.size(); ++i) {
    line += Hex(v.data[i], 2);
    if (i + 1 == v.data.size()) break;
    line += u',';
    width += 3;
    if (width >= kHexWrap) {
      line += u"\\\r\n  ";
      width = 2;
    }
  }
  return line;
}

}  // namespace

String ExportText(const std::vector<Key>& keys) {
  String text = String(kHeader5) + u"\r\n\r\n";
  for (const Key& k : keys) {
    text += u"[" + RootName(k.root) + (k.path.empty() ? u"" : u"\\" + k.path) + u"]\r\n";
    for (const Value& v : k.values) text += ValueLine(v) + u"\r\n";
    text += u"\r\n";
  }
  return text;
}

namespace {

// Lines without their CR LF, continuation lines ("\" at the end) joined.
std::vector<std::pair<int, String>> Lines(StringView text) {
  std::vector<std::pair<int, String>> lines;
  int number = 0;
  bool continues = false;
  for (size_t start = 0; start <= text.size();) {
    size_t end = text.find(u'\n', start);
    if (end == StringView::npos) end = text.size();
    StringView line = text.substr(start, end - start);
    if (!line.empty() && line.back() == u'\r') line.remove_suffix(1);
    ++number;
    if (continues) {
      line.remove_prefix(std::min(line.find_first_not_of(u" \t"), line.size()));
      lines.back().second += line;
    } else {
      lines.emplace_back(number, String(line));
    }
    String& last = lines.back().second;
    continues = !last.empty() && last.back() == u'\\' && last.find(u"=hex") != String::npos;
    if (continues) last.pop_back();
    start = end + 1;
  }
  return lines;
}

class LineReader {
 public:
  LineReader(int number, StringView text) : number_(number), text_(text) {}

  [[noreturn]] void Bad(const char* what) const {
    Fail(RuntimeError::kInvalidCall, FromAscii("line " + std::to_string(number_) + ": " + what));
  }
  bool Eat(StringView s) {
    if (text_.substr(pos_, s.size()) != s) return false;
    pos_ += s.size();
    return true;
  }
  String QuotedText() {
    if (!Eat(u"\"")) Bad("a quoted text expected");
    String out;
    for (; pos_ < text_.size(); ++pos_) {
      char16_t c = text_[pos_];
      if (c == u'"') {
        ++pos_;
        return out;
      }
      if (c == u'\\' && pos_ + 1 < text_.size()) c = text_[++pos_];
      out += c;
    }
    Bad("a closing quote expected");
  }
  uint32_t HexNumber(size_t max_digits) {
    uint32_t n = 0;
    size_t digits = 0;
    for (; pos_ < text_.size() && digits < max_digits; ++pos_, ++digits) {
      const char16_t c = text_[pos_];
      const int d = c >= u'0' && c <= u'9'   ? c - u'0'
                    : c >= u'a' && c <= u'f' ? c - u'a' + 10
                    : c >= u'A' && c <= u'F' ? c - u'A' + 10
                                             : -1;
      if (d < 0) break;
      n = n * 16 + static_cast<uint32_t>(d);
    }
    if (digits == 0) Bad("hexadecimal digits expected");
    return n;
  }
  std::vector<uint8_t> HexBytes() {
    std::vector<uint8_t> bytes;
    while (pos_ < text_.size()) {
      while (pos_ < text_.size() && text_[pos_] == u' ') ++pos_;
      if (pos_ == text_.size()) break;
      bytes.push_back(static_cast<uint8_t>(HexNumber(2)));
      while (pos_ < text_.size() && text_[pos_] == u' ') ++pos_;
      if (pos_ < text_.size() && !Eat(u",")) Bad("a comma expected between bytes");
    }
    return bytes;
  }
  void End() {
    while (pos_ < text_.size() && (text_[pos_] == u' ' || text_[pos_] == u'\t')) ++pos_;
    if (pos_ != text_.size()) Bad("unexpected text at the end of the line");
  }

 private:
  int number_;
  StringView text_;
  size_t pos_ = 0;
};

std::vector<uint8_t> Utf16WithTerminator(StringView text) {
  std::vector<uint8_t> bytes = Utf16LeBytes(text);
  bytes.insert(bytes.end(), {0, 0});
  return bytes;
}

Value ReadValue(LineReader& r, bool ansi) {
  Value v;
  if (!r.Eat(u"@")) v.name = r.QuotedText();
  if (!r.Eat(u"=")) r.Bad("\"=\" expected after the value name");
  if (r.Eat(u"-")) r.Bad("deleting values is not supported");
  if (r.Eat(u"dword:")) {
    const uint32_t n = r.HexNumber(8);
    v.type = kRegDword;
    v.data = {static_cast<uint8_t>(n), static_cast<uint8_t>(n >> 8), static_cast<uint8_t>(n >> 16),
              static_cast<uint8_t>(n >> 24)};
  } else if (r.Eat(u"hex:")) {
    v.type = kRegBinary;
    v.data = r.HexBytes();
  } else if (r.Eat(u"hex(")) {
    v.type = r.HexNumber(8);
    if (!r.Eat(u"):")) r.Bad("\"):\" expected after the type number");
    v.data = r.HexBytes();
    // The older form wrote string types as ANSI bytes; the store holds them as UTF-16.
    if (ansi && (v.type == kRegExpandSz || v.type == 7)) {
      v.data = Utf16WithTerminator(AnsiToString(v.data));
      v.data.resize(v.data.size() - 2);
    }
  } else {
    v.type = kRegSz;
    v.data = Utf16WithTerminator(r.QuotedText());
  }
  r.End();
  return v;
}

}  // namespace

std::vector<Key> ParseExportText(StringView text) {
  const auto lines = Lines(text);
  size_t i = 0;
  while (i < lines.size() && lines[i].second.empty()) ++i;
  const bool ansi = i < lines.size() && lines[i].second == kHeader4;
  if (i == lines.size() || (lines[i].second != kHeader5 && !ansi)) {
    LineReader(i < lines.size() ? lines[i].first : 1, u"").Bad("not a registry export");
  }
  std::vector<Key> keys;
  for (++i; i < lines.size(); ++i) {
    const auto& [number, line] = lines[i];
    LineReader r(number, line);
    if (line.empty() || line[0] == u';') continue;
    if (line[0] == u'[') {
      if (line.size() < 3 || line.back() != u']') r.Bad("\"]\" expected at the end of the key");
      if (line[1] == u'-') r.Bad("deleting keys is not supported");
      const StringView path = StringView(line).substr(1, line.size() - 2);
      const size_t slash = path.find(u'\\');
      const int32_t root = RootNamed(path.substr(0, slash));
      if (root == 0) r.Bad("the key does not start with a root key's name");
      keys.push_back(
          Key{root, slash == StringView::npos ? String() : String(path.substr(slash + 1)), {}});
      continue;
    }
    if (keys.empty()) r.Bad("a value before the first key");
    keys.back().values.push_back(ReadValue(r, ansi));
  }
  return keys;
}

}  // namespace tsruntime::registry
