#include "literal_parser.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "nearest_name.h"
#include "text_cursor.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/automation/convert.h"

namespace tsrt {
namespace {

using tsruntime::Bounds;
using tsruntime::Currency;
using tsruntime::Date;
using tsruntime::Decimal;
using tsruntime::ErrorValue;
using tsruntime::SafeArray;
using tsruntime::String;
using tsruntime::StringView;
using tsruntime::Variant;
using tsruntime::VarType;

// Deep enough for any real argument, shallow enough that hostile input cannot exhaust
// the stack.
constexpr int kMaxDepth = 64;
constexpr size_t kMaxDimensions = 60;

struct TextConstant {
  StringView name;
  StringView text;
};
constexpr TextConstant kTextConstants[] = {
    {u"vbCrLf", u"\r\n"},
    {u"vbNewLine", u"\r\n"},
    {u"vbCr", u"\r"},
    {u"vbLf", u"\n"},
    {u"vbTab", u"\t"},
    {u"vbNullChar", StringView(u"\0", 1)},
    {u"vbNullString", StringView()},
};

struct Conversion {
  StringView name;
  VarType type;
};
constexpr Conversion kConversions[] = {
    {u"CBool", VarType::kBoolean}, {u"CByte", VarType::kByte},   {u"CInt", VarType::kInteger},
    {u"CLng", VarType::kLong},     {u"CSng", VarType::kSingle},  {u"CDbl", VarType::kDouble},
    {u"CCur", VarType::kCurrency}, {u"CDec", VarType::kDecimal}, {u"CDate", VarType::kDate},
};

// The element types an `As` clause may name.
std::optional<VarType> ElementTypeNamed(StringView word) {
  constexpr VarType kTypes[] = {
      VarType::kInteger,  VarType::kLong,    VarType::kSingle,  VarType::kDouble,
      VarType::kCurrency, VarType::kDate,    VarType::kString,  VarType::kObject,
      VarType::kBoolean,  VarType::kVariant, VarType::kDecimal, VarType::kByte,
  };
  for (VarType t : kTypes) {
    if (Is(word, tsruntime::TypeName(t))) return t;
  }
  return std::nullopt;
}

bool IsTextWord(StringView word) {
  if (Is(word, u"ChrW") || Is(word, u"Chr")) return true;
  for (const TextConstant& c : kTextConstants) {
    if (Is(word, c.name)) return true;
  }
  return false;
}

const tsruntime::EnumInfo* EnumNamed(StringView name) {
  for (const tsruntime::EnumInfo* e : tsruntime::RegisteredEnums()) {
    if (Is(e->name, name)) return e;
  }
  return nullptr;
}

std::optional<int32_t> EnumMemberNamed(StringView name) {
  for (const tsruntime::EnumInfo* e : tsruntime::RegisteredEnums()) {
    for (const tsruntime::EnumMember& m : e->members) {
      if (Is(m.name, name)) return m.value;
    }
  }
  return std::nullopt;
}

constexpr StringView kKeywords[] = {u"True", u"False", u"Null",  u"Empty", u"Nothing",
                                    u"Missing", u"Array", u"CVErr", u"ChrW", u"Chr"};

// The literal word nearest to a mistyped one.
std::optional<std::string> NearestLiteralWord(StringView typed) {
  NearestName near(typed);
  for (const String& w : LiteralWords()) near.Consider(w);
  return near.Best();
}

class Parser : public TextCursor {
 public:
  Parser(StringView text, size_t start) : TextCursor(text, start) {}

  Variant Whole() {
    Variant v = Value();
    Spaces();
    if (Peek() == u'&' && !IsRadixStart(1)) {
      ++i_;
      Spaces();
      Fail("only quoted text, ChrW(n), Chr(n) and vb text constants join with '&'");
    }
    if (!AtEnd()) Fail("unexpected text after the literal");
    return v;
  }

  // One literal from the current position on, which is left just past it.
  Variant Next() { return Value(); }

 private:
  Variant Value() {
    Spaces();
    if (++depth_ > kMaxDepth) Fail("literal nested too deeply");
    Variant v = ValueHere();
    --depth_;
    return v;
  }

  Variant ValueHere() {
    if (AtEnd()) Fail("expected a literal");
    const char16_t c = s_[i_];
    if (c == u'"') return Text();
    if (c == u'#') return DateLiteral();
    if (c == u'-' || c == u'.' || IsDigit(c)) return Number();
    if (c == u'&' && IsRadixStart(1)) return RadixLiteral();
    if (IsLetter(c)) return WordLiteral();
    if (c == u'<') Fail("objects cannot be written as literals");
    Fail("unexpected character '" + tsruntime::ToUtf8(s_.substr(i_, 1)) + "'");
  }

  Variant WordLiteral() {
    const size_t start = i_;
    const StringView w = PeekWord();
    if (IsTextWord(w)) return Text();
    i_ += w.size();
    if (Is(w, u"True")) return Variant(true);
    if (Is(w, u"False")) return Variant(false);
    if (Is(w, u"Null")) return Variant::Null();
    if (Is(w, u"Empty")) return Variant();
    if (Is(w, u"Nothing")) return Variant::Nothing();
    if (Is(w, u"Missing")) return Variant::Missing();
    if (Is(w, u"Array")) return ArrayLiteral(start);
    if (Is(w, u"CVErr")) {
      Expect(u'(', "'(' after CVErr");
      const int64_t code = WholeNumber(INT32_MIN, INT32_MAX, "CVErr");
      Expect(u')', "')'");
      return Variant(ErrorValue{static_cast<int32_t>(code)});
    }
    for (const Conversion& c : kConversions) {
      if (Is(w, c.name)) return Convert(c);
    }
    if (auto member = EnumMember(w)) return Variant(*member);
    const auto near = NearestLiteralWord(w);
    throw LiteralError("unknown word '" + tsruntime::ToUtf8(w) +
                       "' (text goes in double quotes) at column " + std::to_string(start + 1) +
                       (near ? "; did you mean " + *near + "?" : ""));
  }

  // A public enumeration's member, by its name or as Enumeration.Member.
  std::optional<int32_t> EnumMember(StringView w) {
    if (Peek() == u'.') {
      const tsruntime::EnumInfo* e = EnumNamed(w);
      if (!e) return std::nullopt;
      ++i_;
      const size_t at = i_;
      const StringView name = Word();
      for (const tsruntime::EnumMember& m : e->members) {
        if (Is(m.name, name)) return m.value;
      }
      FailAt("no member '" + tsruntime::ToUtf8(name) + "' in " + tsruntime::ToUtf8(e->name), at);
    }
    return EnumMemberNamed(w);
  }

  // --- Text -------------------------------------------------------------------------

  // Pieces joined by '&'; an '&' before anything but a text piece is left for whoever
  // reads on (an expression around the literal).
  Variant Text() {
    String out;
    TextPiece(out);
    for (;;) {
      const size_t save = i_;
      Spaces();
      if (Peek() != u'&') {
        i_ = save;
        break;
      }
      ++i_;
      Spaces();
      if (Peek() != u'"' && !IsTextWord(PeekWord())) {
        i_ = save;
        break;
      }
      TextPiece(out);
    }
    return Variant(std::move(out));
  }

  void TextPiece(String& out) {
    if (Peek() == u'"') return Quoted(out);
    const size_t start = i_;
    const StringView w = Word();
    if (Is(w, u"ChrW")) {
      Expect(u'(', "'(' after ChrW");
      const int64_t code = WholeNumber(-32768, 65535, "ChrW");
      Expect(u')', "')'");
      out += static_cast<char16_t>(code & 0xFFFF);
      return;
    }
    if (Is(w, u"Chr")) {
      Expect(u'(', "'(' after Chr");
      const uint8_t byte = static_cast<uint8_t>(WholeNumber(0, 255, "Chr"));
      Expect(u')', "')'");
      out += tsruntime::AnsiToString(std::span<const uint8_t>(&byte, 1));
      return;
    }
    for (const TextConstant& c : kTextConstants) {
      if (Is(w, c.name)) {
        out += c.text;
        return;
      }
    }
    FailAt("only quoted text, ChrW(n), Chr(n) and vb text constants join with '&'", start);
  }

  void Quoted(String& out) {
    const size_t start = i_++;
    for (;;) {
      if (AtEnd()) FailAt("text has no closing '\"'", start);
      const char16_t c = s_[i_++];
      if (c == u'"') {
        if (Peek() != u'"') return;
        ++i_;
      }
      out += c;
    }
  }

  // --- Numbers ----------------------------------------------------------------------

  Variant Number() {
    const size_t start = i_;
    std::string text;
    if (Peek() == u'-') {
      text += '-';
      ++i_;
    }
    size_t digits = Digits(text);
    bool fractional = false;
    if (Peek() == u'.') {
      fractional = true;
      text += '.';
      ++i_;
      const size_t decimals = Digits(text);
      if (decimals == 0) Fail("expected digits after '.'");
      digits += decimals;
    }
    if (digits == 0) FailAt("expected a number", start);
    if ((Peek() == u'E' || Peek() == u'e') &&
        (IsDigit(Peek(1)) || ((Peek(1) == u'+' || Peek(1) == u'-') && IsDigit(Peek(2))))) {
      fractional = true;
      text += 'e';
      ++i_;
      if (Peek() == u'+' || Peek() == u'-') text += static_cast<char>(s_[i_++]);
      Digits(text);
    }
    const bool exponent = text.find('e') != std::string::npos;
    switch (Peek()) {
      case u'%':
        ++i_;
        return Variant(static_cast<int16_t>(
            Integral(text, fractional, INT16_MIN, INT16_MAX, "Integer", start)));
      case u'&':
        ++i_;
        return Variant(
            static_cast<int32_t>(Integral(text, fractional, INT32_MIN, INT32_MAX, "Long", start)));
      case u'!':
        ++i_;
        return Variant(Floating<float>(text, "Single", start));
      case u'#':
        ++i_;
        return Variant(Floating<double>(text, "Double", start));
      case u'@':
        ++i_;
        if (exponent) FailAt("a Currency literal takes no exponent", start);
        return Variant(CurrencyOf(text, start));
      default:
        break;
    }
    if (IsWordChar(Peek())) Fail("unexpected character after the number");
    if (fractional) return Variant(Floating<double>(text, "Double", start));
    int64_t n = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
    if (ec == std::errc() && end == text.data() + text.size()) {
      if (n >= INT16_MIN && n <= INT16_MAX) return Variant(static_cast<int16_t>(n));
      if (n >= INT32_MIN && n <= INT32_MAX) return Variant(static_cast<int32_t>(n));
    }
    return Variant(Floating<double>(text, "Double", start));
  }

  bool IsRadixStart(size_t ahead) const {
    const char16_t c = Peek(ahead);
    return c == u'H' || c == u'h' || c == u'O' || c == u'o';
  }

  // &Hdigits or &Odigits with an optional suffix: without one an Integer when the value
  // fits in 16 bits, else a Long when it fits in 32, the top bit the sign (&H8000 is
  // -32768, &H8000& is 32768).
  Variant RadixLiteral() {
    const size_t start = i_;
    i_ += 1;
    const int radix = (Peek() == u'H' || Peek() == u'h') ? 16 : 8;
    ++i_;
    uint64_t value = 0;
    size_t digits = 0;
    for (;; ++i_, ++digits) {
      const char16_t c = Peek();
      int d = 16;
      if (IsDigit(c)) d = c - u'0';
      else if (c >= u'A' && c <= u'F') d = c - u'A' + 10;
      else if (c >= u'a' && c <= u'f') d = c - u'a' + 10;
      if (d >= radix) break;
      value = std::min<uint64_t>(value * radix + static_cast<uint64_t>(d), uint64_t{1} << 33);
    }
    if (digits == 0) Fail(radix == 16 ? "expected hexadecimal digits" : "expected octal digits");
    const char16_t suffix = Peek();
    if (suffix == u'%' || (suffix != u'&' && value <= 0xFFFF)) {
      if (suffix == u'%') ++i_;
      if (value > 0xFFFF) FailAt("out of range for Integer", start);
      if (IsWordChar(Peek())) Fail("unexpected character after the number");
      return Variant(static_cast<int16_t>(static_cast<uint16_t>(value)));
    }
    if (suffix == u'&') ++i_;
    if (value > 0xFFFFFFFF) FailAt("out of range for Long", start);
    if (IsWordChar(Peek())) Fail("unexpected character after the number");
    return Variant(static_cast<int32_t>(static_cast<uint32_t>(value)));
  }

  size_t Digits(std::string& text) {
    size_t n = 0;
    for (; IsDigit(Peek()); ++i_, ++n) text += static_cast<char>(s_[i_]);
    return n;
  }

  int64_t Integral(const std::string& text, bool fractional, int64_t lo, int64_t hi,
                   const char* type, size_t start) const {
    if (fractional) {
      FailAt(std::string("an ") + type + " literal takes no decimal point or exponent", start);
    }
    int64_t n = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
    if (ec != std::errc() || n < lo || n > hi) {
      FailAt(std::string("out of range for ") + type, start);
    }
    return n;
  }

  template <class T>
  T Floating(const std::string& text, const char* type, size_t start) const {
    T value{};
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
      FailAt(std::string("out of range for ") + type, start);
    }
    return value;
  }

  // Exact: digits beyond the fourth decimal round half to even, as the runtime rounds.
  Currency CurrencyOf(const std::string& text, size_t start) const {
    const bool negative = text[0] == '-';
    unsigned __int128 raw = 0;
    int decimals = 0;
    int first_dropped = 0;
    bool rest_dropped = false;
    bool point = false;
    for (size_t k = negative ? 1 : 0; k < text.size(); ++k) {
      const char c = text[k];
      if (c == '.') {
        point = true;
        continue;
      }
      const int d = c - '0';
      if (!point || decimals < 4) {
        raw = raw * 10 + static_cast<unsigned>(d);
        if (point) ++decimals;
        if (raw > (static_cast<unsigned __int128>(1) << 80)) {
          FailAt("out of range for Currency", start);
        }
      } else if (decimals == 4) {
        first_dropped = d;
        ++decimals;
      } else {
        rest_dropped = rest_dropped || d != 0;
      }
    }
    for (; decimals < 4; ++decimals) raw *= 10;
    if (first_dropped > 5 || (first_dropped == 5 && (rest_dropped || (raw & 1)))) ++raw;
    const unsigned __int128 limit = static_cast<unsigned __int128>(INT64_MAX) + (negative ? 1 : 0);
    if (raw > limit) FailAt("out of range for Currency", start);
    const int64_t value =
        negative ? static_cast<int64_t>(0 - static_cast<uint64_t>(raw)) : static_cast<int64_t>(raw);
    return Currency::FromRaw(value);
  }

  // A whole-number argument of ChrW, Chr, CVErr or a bound.
  int64_t WholeNumber(int64_t lo, int64_t hi, const char* what) {
    Spaces();
    const size_t start = i_;
    return WholeFrom(Value(), lo, hi, what, start);
  }

  int64_t WholeFrom(const Variant& v, int64_t lo, int64_t hi, const char* what,
                    size_t start) const {
    int64_t n = 0;
    switch (v.type()) {
      case VarType::kInteger:
        n = v.asInteger();
        break;
      case VarType::kLong:
        n = v.asLong();
        break;
      case VarType::kByte:
        n = v.asByte();
        break;
      case VarType::kDouble: {
        const double d = v.asDouble();
        if (std::trunc(d) != d || std::fabs(d) > 1e18) {
          FailAt(std::string(what) + " takes a whole number", start);
        }
        n = static_cast<int64_t>(d);
        break;
      }
      default:
        FailAt(std::string(what) + " takes a whole number", start);
    }
    if (n < lo || n > hi) {
      FailAt(
          std::string(what) + " must be from " + std::to_string(lo) + " to " + std::to_string(hi),
          start);
    }
    return n;
  }

  // --- Dates and conversions ----------------------------------------------------------

  Variant DateLiteral() {
    const size_t start = i_++;
    const size_t close = s_.find(u'#', i_);
    if (close == StringView::npos) FailAt("date has no closing '#'", start);
    const StringView inner = s_.substr(i_, close - i_);
    i_ = close + 1;
    std::optional<Date> d;
    try {
      d = Date::Parse(inner);
    } catch (const tsruntime::Error&) {
    }
    if (!d) FailAt("not a date (write #yyyy-mm-dd hh:nn:ss# or #yyyy-mm-dd#)", start);
    return Variant(*d);
  }

  Variant Convert(const Conversion& c) {
    Expect(u'(', "'('");
    Spaces();
    const size_t at = i_;
    const Variant v = Value();
    Expect(u')', "')'");
    try {
      if (v.isString()) return ConvertText(v.asString(), c, at);
      return tsruntime::ChangeType(v, c.type);
    } catch (const tsruntime::Error& e) {
      FailAt(tsruntime::ToUtf8(c.name) +
                 " cannot take this value: " + tsruntime::ToUtf8(e.description()),
             at);
    }
  }

  // Text inside a conversion is read as a literal would be, with '.' as the decimal
  // point, so that the result does not depend on the locale.
  Variant ConvertText(const String& text, const Conversion& c, size_t at) const {
    const std::string name = tsruntime::ToUtf8(c.name);
    switch (c.type) {
      case VarType::kBoolean:
        return tsruntime::ChangeType(Variant(text), c.type);
      case VarType::kDate: {
        if (auto d = Date::Parse(text)) return Variant(*d);
        FailAt(name + " takes a date written yyyy-mm-dd hh:nn:ss", at);
      }
      case VarType::kDecimal: {
        if (auto d = Decimal::ParsePlain(tsruntime::ToUtf8(text))) return Variant(*d);
        FailAt(name + " takes plain digits with '.' as the decimal point", at);
      }
      case VarType::kSingle:
      case VarType::kDouble: {
        constexpr double kInf = std::numeric_limits<double>::infinity();
        if (Is(text, u"NaN")) return tsruntime::ChangeType(Variant(std::nan("")), c.type);
        if (Is(text, u"Infinity")) return tsruntime::ChangeType(Variant(kInf), c.type);
        if (Is(text, u"-Infinity")) return tsruntime::ChangeType(Variant(-kInf), c.type);
        break;
      }
      default:
        break;
    }
    // Hexadecimal and octal text takes the target's range, as the runtime reads it.
    const size_t first = text.find_first_not_of(u" \t");
    if (first != String::npos && text[first] == u'&') return tsruntime::ChangeType(Variant(text), c.type);
    Variant number;
    try {
      number = Parser(text, 0).Whole();
    } catch (const LiteralError&) {
    }
    if (!number.isNumeric()) FailAt(name + " takes a number written with '.'", at);
    return tsruntime::ChangeType(number, c.type);
  }

  // --- Arrays -------------------------------------------------------------------------

  Variant ArrayLiteral(size_t start) {
    Expect(u'(', "'(' after Array");
    Spaces();
    bool undimensioned = false;
    std::optional<std::vector<Bounds>> dims;  // none: 0 to the item count - 1
    std::vector<Variant> items;
    if (Is(PeekWord(), u"Undimensioned")) {
      Word();
      Expect(u')', "')' after Undimensioned");
      undimensioned = true;
    } else if (Peek() == u')') {
      ++i_;
    } else {
      const size_t first_at = i_;
      Variant first = Value();
      Spaces();
      if (Is(PeekWord(), u"To")) {
        dims = BoundsList(first, first_at);
        Spaces();
        if (Peek() == u')') {
          ++i_;
        } else {
          items.push_back(Value());
          RestOfItems(items);
        }
      } else {
        items.push_back(std::move(first));
        RestOfItems(items);
      }
    }
    VarType element = VarType::kVariant;
    const size_t save = i_;
    Spaces();
    if (Is(PeekWord(), u"As")) {
      Word();
      Spaces();
      const size_t type_at = i_;
      const std::optional<VarType> t = ElementTypeNamed(Word());
      if (!t) FailAt("expected an element type after As", type_at);
      element = *t;
    } else {
      i_ = save;
    }
    if (undimensioned) return Variant(SafeArray(element));
    if (!dims) {
      if (items.size() > static_cast<size_t>(INT32_MAX)) FailAt("too many elements", start);
      dims = std::vector<Bounds>{{0, static_cast<int32_t>(items.size()) - 1}};
    }
    return Variant(Filled(element, *dims, items, start));
  }

  // Reads "lo To hi {, lo To hi} :", the first lower bound already read.
  std::vector<Bounds> BoundsList(const Variant& first, size_t first_at) {
    std::vector<Bounds> dims;
    int64_t lo = WholeFrom(first, INT32_MIN, INT32_MAX, "a lower bound", first_at);
    for (;;) {
      Spaces();
      if (!Is(Word(), u"To")) Fail("expected To");
      Spaces();
      const size_t hi_at = i_;
      const int64_t hi = WholeNumber(INT32_MIN, INT32_MAX, "an upper bound");
      if (hi < lo - 1) FailAt("an upper bound may not be below the lower bound - 1", hi_at);
      dims.push_back(Bounds{static_cast<int32_t>(lo), static_cast<int32_t>(hi)});
      if (dims.size() > kMaxDimensions) Fail("too many dimensions");
      Spaces();
      if (Peek() == u':') {
        ++i_;
        return dims;
      }
      if (Peek() != u',') Fail("expected ',' or ':' after the bounds");
      ++i_;
      lo = WholeNumber(INT32_MIN, INT32_MAX, "a lower bound");
    }
  }

  // Reads ", item" pairs up to the closing parenthesis.
  void RestOfItems(std::vector<Variant>& items) {
    for (;;) {
      Spaces();
      if (Peek() == u')') {
        ++i_;
        return;
      }
      if (Peek() != u',') Fail("expected ',' or ')'");
      ++i_;
      items.push_back(Value());
    }
  }

  SafeArray Filled(VarType element, const std::vector<Bounds>& dims,
                   const std::vector<Variant>& items, size_t start) const {
    // The element count, capped before each product so that none can overflow (two
    // full 32-bit ranges alone would wrap 64 bits to zero).
    constexpr uint64_t kCap = 1ull << 31;
    uint64_t nonzero = 1;
    bool any_zero = false;
    for (const Bounds& b : dims) {
      if (b.count() == 0) {
        any_zero = true;
      } else {
        nonzero = std::min(nonzero, kCap) * std::min(static_cast<uint64_t>(b.count()), kCap);
      }
    }
    if (nonzero >= (1ull << 31)) FailAt("the bounds describe too large an array", start);
    const uint64_t count = any_zero ? 0 : nonzero;
    if (count != items.size()) {
      FailAt("the bounds hold " + std::to_string(count) + " elements, the list has " +
                 std::to_string(items.size()),
             start);
    }
    SafeArray array(element, dims);
    for (size_t k = 0; k < items.size(); ++k) {
      try {
        if (element == VarType::kByte) {
          array.bytes()[k] = tsruntime::ToByte(items[k]);
        } else if (element == VarType::kVariant) {
          array.elements()[k] = items[k];
        } else {
          array.elements()[k] = tsruntime::ChangeType(items[k], element);
        }
      } catch (const tsruntime::Error& e) {
        FailAt("element " + std::to_string(k + 1) + " cannot be " +
                   tsruntime::ToUtf8(tsruntime::TypeName(element)) + ": " +
                   tsruntime::ToUtf8(e.description()),
               start);
      }
    }
    return array;
  }

  int depth_ = 0;
};

}  // namespace

std::vector<String> LiteralWords() {
  std::vector<String> words(std::begin(kKeywords), std::end(kKeywords));
  for (const TextConstant& c : kTextConstants) words.emplace_back(c.name);
  for (const Conversion& c : kConversions) words.emplace_back(c.name);
  for (const tsruntime::EnumInfo* e : tsruntime::RegisteredEnums()) {
    for (const auto& member : e->members) words.push_back(member.name);
  }
  return words;
}

bool IsLiteralWord(StringView word) {
  for (const String& w : LiteralWords()) {
    if (Is(w, word)) return true;
  }
  return false;
}

std::optional<VarType> ConversionNamed(StringView word) {
  for (const Conversion& c : kConversions) {
    if (Is(word, c.name)) return c.type;
  }
  return std::nullopt;
}

Variant ParseLiteralAt(StringView text, size_t& at) {
  Parser p(text, at);
  Variant v = p.Next();
  at = p.position();
  return v;
}

Variant ParseLiteral(std::string_view text) {
  const String s = tsruntime::FromUtf8(text);
  return Parser(s, 0).Whole();
}

tsruntime::Argument ParseArgument(std::string_view text) {
  const String s = tsruntime::FromUtf8(text);
  size_t i = 0;
  while (i < s.size() && (s[i] == u' ' || s[i] == u'\t')) ++i;
  if (i == s.size()) return {String(), Variant::Missing()};
  if (IsLetter(s[i])) {
    size_t j = i;
    while (j < s.size() && IsWordChar(s[j])) ++j;
    size_t k = j;
    while (k < s.size() && (s[k] == u' ' || s[k] == u'\t')) ++k;
    if (s.compare(k, 2, u":=") == 0) {
      return {s.substr(i, j - i), Parser(s, k + 2).Whole()};
    }
  }
  return {String(), Parser(s, 0).Whole()};
}

}  // namespace tsrt
