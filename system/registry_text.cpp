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
constexpr uint32_t kRegMultiSz = 7;

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }
bool HasLineBreak(StringView text) { return text.find_first_of(u"\r\n") != StringView::npos; }

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
  if (v.deleted) return line + u"-";
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

String KeyName(int32_t root, StringView path) {
  return RootName(root) + (path.empty() ? u"" : u"\\" + String(path));
}

// A name with a line break would end its line early: such a key is refused rather than
// written as a file that does not read back. Named by the key above the odd name.
void CheckNames(const Key& k) {
  const size_t broken = k.path.find_first_of(u"\r\n");
  if (broken != String::npos) {
    const size_t above = k.path.rfind(u'\\', broken);
    const StringView parent = StringView(k.path).substr(0, above == String::npos ? 0 : above);
    Fail(RuntimeError::kInvalidCall,
         u"a name below " + KeyName(k.root, parent) + u" holds a line break");
  }
  for (const Value& v : k.values) {
    if (HasLineBreak(v.name)) {
      Fail(RuntimeError::kInvalidCall,
           u"a name below " + KeyName(k.root, k.path) + u" holds a line break");
    }
  }
}

}  // namespace

String ExportText(const std::vector<Key>& keys) {
  String text = String(kHeader5) + u"\r\n\r\n";
  for (const Key& k : keys) {
    CheckNames(k);
    text += (k.deleted ? u"[-" : u"[") + KeyName(k.root, k.path) + u"]\r\n";
    for (const Value& v : k.values) text += ValueLine(v) + u"\r\n";
    text += u"\r\n";
  }
  return text;
}

String DecodeExportFile(std::span<const uint8_t> bytes) {
  if (bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
    return FromUtf16LeBytes(bytes.subspan(2));
  }
  if (bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
    return FromUtf8(std::string_view(reinterpret_cast<const char*>(bytes.data()) + 3,
                                     bytes.size() - 3));
  }
  return AnsiToString(bytes);
}

namespace {

// Reads an export text line by line. Blanks at either end of a line mean nothing; a hex
// list goes on over the next line after a "\" that ends its line.
class Parser {
 public:
  explicit Parser(StringView text) {
    for (size_t start = 0; start <= text.size();) {
      size_t end = text.find(u'\n', start);
      if (end == StringView::npos) end = text.size();
      StringView line = text.substr(start, end - start);
      if (!line.empty() && line.back() == u'\r') line.remove_suffix(1);
      while (!line.empty() && IsBlank(line.back())) line.remove_suffix(1);
      lines_.push_back(line);
      start = end + 1;
    }
  }

  std::vector<Key> Keys() {
    while (Next() && line_.empty()) {
    }
    const bool ansi = line_ == kHeader4;
    if (!ansi && line_ != kHeader5) Bad("not a registry export");
    std::vector<Key> keys;
    while (Next()) {
      if (line_.empty() || line_[0] == u';') continue;
      if (line_[0] == u'[') {
        keys.push_back(KeyLine());
        continue;
      }
      if (keys.empty()) Bad("a value before the first key");
      if (keys.back().deleted) Bad("a value under a key being deleted");
      keys.back().values.push_back(ValueLine(ansi));
    }
    return keys;
  }

 private:
  [[noreturn]] void Bad(const char* what) const {
    Fail(RuntimeError::kInvalidCall, FromAscii("line " + std::to_string(next_) + ": " + what));
  }
  // Moves to the next line, leading blanks skipped; false past the last one.
  bool Next() {
    if (next_ == lines_.size()) return false;
    line_ = lines_[next_++];
    pos_ = 0;
    SkipBlanks();
    line_.remove_prefix(pos_);
    pos_ = 0;
    return true;
  }
  void SkipBlanks() {
    while (pos_ < line_.size() && IsBlank(line_[pos_])) ++pos_;
  }
  bool AtEnd() const { return pos_ == line_.size(); }
  bool Eat(StringView s) {
    if (line_.substr(pos_, s.size()) != s) return false;
    pos_ += s.size();
    return true;
  }
  void End() {
    if (!AtEnd()) Bad("unexpected text at the end of the line");
  }

  Key KeyLine() {
    if (line_.size() < 3 || line_.back() != u']') Bad("\"]\" expected at the end of the key");
    Key k;
    k.deleted = line_[1] == u'-';
    const StringView name = line_.substr(k.deleted ? 2 : 1, line_.size() - (k.deleted ? 3 : 2));
    const size_t slash = name.find(u'\\');
    k.root = RootNamed(name.substr(0, slash));
    if (k.root == 0) Bad("the key does not start with a root key's name");
    StringView path = slash == StringView::npos ? StringView() : name.substr(slash + 1);
    if (!path.empty() && path.back() == u'\\') path.remove_suffix(1);
    if ((!path.empty() && path.back() == u'\\') || CheckPath(path) != kSuccess) {
      Bad("the key's path has an empty or overlong level");
    }
    if (k.deleted && path.empty()) Bad("a root key cannot be deleted");
    k.path = String(path);
    return k;
  }

  Value ValueLine(bool ansi) {
    Value v;
    if (!Eat(u"@")) v.name = QuotedText();
    SkipBlanks();
    if (!Eat(u"=")) Bad("\"=\" expected after the value name");
    SkipBlanks();
    if (Eat(u"-")) {
      v.deleted = true;
    } else if (Eat(u"dword:")) {
      const uint32_t n = HexNumber(8);
      v.type = kRegDword;
      v.data = {static_cast<uint8_t>(n), static_cast<uint8_t>(n >> 8),
                static_cast<uint8_t>(n >> 16), static_cast<uint8_t>(n >> 24)};
    } else if (Eat(u"hex:")) {
      v.type = kRegBinary;
      v.data = HexBytes();
    } else if (Eat(u"hex(")) {
      v.type = HexNumber(8);
      if (!Eat(u"):")) Bad("\"):\" expected after the type number");
      v.data = HexBytes();
      // The older form wrote the string types as ANSI bytes; the store holds UTF-16.
      if (ansi && (v.type == kRegSz || v.type == kRegExpandSz || v.type == kRegMultiSz)) {
        v.data = Utf16LeBytes(AnsiToString(v.data));
      }
    } else {
      v.type = kRegSz;
      v.data = Utf16LeBytes(QuotedText());
      v.data.insert(v.data.end(), {0, 0});
    }
    End();
    return v;
  }

  String QuotedText() {
    if (!Eat(u"\"")) Bad("a quoted text expected");
    String out;
    for (; pos_ < line_.size(); ++pos_) {
      char16_t c = line_[pos_];
      if (c == u'"') {
        ++pos_;
        return out;
      }
      if (c == u'\\' && pos_ + 1 < line_.size()) c = line_[++pos_];
      out += c;
    }
    Bad("a closing quote expected");
  }

  uint32_t HexNumber(size_t max_digits) {
    uint32_t n = 0;
    size_t digits = 0;
    for (; pos_ < line_.size() && digits < max_digits; ++pos_, ++digits) {
      const char16_t c = line_[pos_];
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

  // Bytes separated by commas, up to the end of the line; a "\" that ends a line goes on
  // with the next.
  std::vector<uint8_t> HexBytes() {
    std::vector<uint8_t> bytes;
    bool byte_next = true;
    for (;;) {
      SkipBlanks();
      if (AtEnd()) return bytes;
      if (pos_ + 1 == line_.size() && line_[pos_] == u'\\') {
        if (!Next()) Bad("the value goes on past the end of the file");
        continue;
      }
      if (byte_next) {
        bytes.push_back(static_cast<uint8_t>(HexNumber(2)));
      } else if (!Eat(u",")) {
        Bad("a comma expected between bytes");
      }
      byte_next = !byte_next;
    }
  }

  std::vector<StringView> lines_;
  size_t next_ = 0;  // the number of the current line, counted from 1
  StringView line_;
  size_t pos_ = 0;
};

}  // namespace

std::vector<Key> ParseExportText(StringView text) { return Parser(text).Keys(); }

}  // namespace tsruntime::registry
