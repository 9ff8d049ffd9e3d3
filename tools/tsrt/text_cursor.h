// Reading a line of host-language text: the position, the characters around it, and the
// faults reported with their column. The literal reader and the statement reader of the
// interactive session both build on it.
#pragma once

#include <string>

#include "literal_parser.h"

namespace tsrt {

inline bool IsLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }
inline bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
inline bool IsWordChar(char16_t c) { return IsLetter(c) || IsDigit(c) || c == u'_'; }
// Keywords and names match in any case.
inline bool Is(tsruntime::StringView word, tsruntime::StringView keyword) {
  return tsruntime::EqualsAsciiNoCase(word, keyword);
}

class TextCursor {
 public:
  TextCursor(tsruntime::StringView text, size_t start) : s_(text), i_(start) {}
  size_t position() const { return i_; }

 protected:
  [[noreturn]] void Fail(const std::string& what) const { FailAt(what, i_); }
  [[noreturn]] void FailAt(const std::string& what, size_t at) const {
    throw LiteralError(what + " at column " + std::to_string(at + 1));
  }

  bool AtEnd() const { return i_ >= s_.size(); }
  char16_t Peek(size_t ahead = 0) const {
    return i_ + ahead < s_.size() ? s_[i_ + ahead] : char16_t{0};
  }
  void Spaces() {
    while (!AtEnd() && (s_[i_] == u' ' || s_[i_] == u'\t')) ++i_;
  }
  void Expect(char16_t c, const char* what) {
    Spaces();
    if (Peek() != c || AtEnd()) Fail(std::string("expected ") + what);
    ++i_;
  }
  // The name at the cursor: a letter, then letters, digits and '_'; empty when there is
  // none. `Word` also moves past it.
  tsruntime::StringView PeekWord() const {
    if (AtEnd() || !IsLetter(s_[i_])) return {};
    size_t j = i_;
    while (j < s_.size() && IsWordChar(s_[j])) ++j;
    return s_.substr(i_, j - i_);
  }
  tsruntime::StringView Word() {
    const tsruntime::StringView w = PeekWord();
    i_ += w.size();
    return w;
  }

  tsruntime::StringView s_;
  size_t i_;
};

}  // namespace tsrt
