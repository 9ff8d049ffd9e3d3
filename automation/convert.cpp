#include "tsruntime/automation/convert.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

[[noreturn]] void Mismatch() { RaiseRuntime(RuntimeError::kTypeMismatch); }
[[noreturn]] void Overflow() { RaiseRuntime(RuntimeError::kOverflow); }

String DecimalText(int64_t value) {
  String s;
  AppendDecimal(s, value);
  return s;
}

// The host runtime writes exponents as "E+20" / "E-05", with the locale's separator.
String Localize(std::string s) {
  for (char& c : s) {
    if (c == 'e') c = 'E';
  }
  if (s == "-0") s = "0";
  String out = FromAscii(s);
  const char16_t sep = DecimalSeparator();
  for (char16_t& c : out) {
    if (c == u'.') c = sep;
  }
  return out;
}

template <class T>
String FormatFloat(T value, int precision) {
  if (std::isnan(value)) return u"NaN";
  if (std::isinf(value)) return value < 0 ? u"-Inf" : u"Inf";
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, precision);
  return Localize(std::string(buf, r.ptr));
}

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == 0xA0; }

StringView Trimmed(StringView s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

// The text as plain decimal digits ("-12.5"): an optional sign, digits and at most one
// locale separator, nothing else; nullopt for any other form.
std::optional<std::string> PlainDigits(StringView text) {
  const StringView s = Trimmed(text);
  const char16_t sep = DecimalSeparator();
  std::string ascii;
  size_t i = 0;
  if (i < s.size() && (s[i] == u'+' || s[i] == u'-')) ascii += static_cast<char>(s[i++]);
  bool digits = false, point = false;
  for (; i < s.size(); ++i) {
    if (s[i] >= u'0' && s[i] <= u'9') {
      ascii += static_cast<char>(s[i]);
      digits = true;
    } else if (s[i] == sep && !point) {
      ascii += '.';
      point = true;
    } else {
      return std::nullopt;
    }
  }
  if (!digits) return std::nullopt;
  return ascii;
}

// The digits of "&H..." or "&O..." text as an unsigned number, or nullopt for text
// without that prefix. The caller fits the number to its target type.
std::optional<uint64_t> RadixNumber(StringView text) {
  const StringView s = Trimmed(text);
  if (s.size() < 2 || s[0] != u'&') return std::nullopt;
  int radix;
  if (s[1] == u'H' || s[1] == u'h') radix = 16;
  else if (s[1] == u'O' || s[1] == u'o') radix = 8;
  else return std::nullopt;
  const StringView digits = s.substr(2);
  if (digits.empty()) Mismatch();
  uint64_t v = 0;
  bool too_big = false;  // kept apart so that a bad digit later still reads as 13
  for (char16_t c : digits) {
    int d;
    if (c >= u'0' && c <= u'9') d = c - u'0';
    else if (c >= u'a' && c <= u'f') d = c - u'a' + 10;
    else if (c >= u'A' && c <= u'F') d = c - u'A' + 10;
    else Mismatch();
    if (d >= radix) Mismatch();
    if (v > (UINT64_MAX - static_cast<uint64_t>(d)) / static_cast<uint64_t>(radix)) {
      too_big = true;
      v = 0;
    }
    v = v * static_cast<uint64_t>(radix) + static_cast<uint64_t>(d);
  }
  if (too_big) Overflow();
  return v;
}

// A hexadecimal or octal number read straight into a whole-number type of `lo`..`hi`:
// the type's width of bits, the top bit the sign of a signed type ("&HFFFF" is the
// Integer -1 and the Long 65535); more bits than the type has are overflow.
int64_t FitRadix(uint64_t v, int64_t lo, int64_t hi) {
  const uint64_t span = static_cast<uint64_t>(hi) - static_cast<uint64_t>(lo);
  if (v > span) Overflow();
  if (v > static_cast<uint64_t>(hi)) return static_cast<int64_t>(v - span - 1);
  return static_cast<int64_t>(v);
}

// Text to Decimal: plain digits and &H / &O numbers exactly, other number forms
// (exponents) through a double.
Decimal TextToDecimal(StringView text) {
  if (const auto radix = RadixNumber(text)) {
    Decimal d;
    d.magnitude = *radix;
    return d;
  }
  if (auto plain = PlainDigits(text)) {
    if (auto d = Decimal::ParsePlain(*plain)) return *d;
    Overflow();  // well-formed, so beyond the 96 bits
  }
  return Decimal::FromDouble(ParseNumber(text));
}

// Rounds to four decimals, halves to even, exactly.
Currency DecimalToCurrency(const Decimal& d) {
  using U128 = unsigned __int128;
  U128 m = d.magnitude;
  if (d.scale <= 4) {
    for (int i = d.scale; i < 4; ++i) m *= 10;
  } else {
    U128 div = 1;
    for (int i = 4; i < d.scale; ++i) div *= 10;
    const U128 q = m / div, r = m % div, half = div / 2;
    m = q + ((r > half || (r == half && (q & 1))) ? 1 : 0);
  }
  const U128 limit = static_cast<U128>(INT64_MAX) + (d.negative ? 1 : 0);
  if (m > limit) Overflow();
  const auto signed_m = static_cast<__int128>(m);
  return Currency{static_cast<int64_t>(d.negative ? -signed_m : signed_m)};
}

// The power of ten of the leading digit of "[-]digits[.digits][e[-]digits]"; very
// negative for zero.
int64_t DecimalMagnitude(std::string_view s) {
  const size_t e = s.find('e');
  int64_t exponent = 0;
  if (e != std::string_view::npos) {
    const bool negative = e + 1 < s.size() && s[e + 1] == '-';
    for (size_t i = e + 1; i < s.size(); ++i) {
      if (s[i] >= '0' && s[i] <= '9') exponent = std::min<int64_t>(exponent * 10 + (s[i] - '0'), 1 << 30);
    }
    if (negative) exponent = -exponent;
  }
  const std::string_view mantissa = s.substr(0, e);
  const size_t point = std::min(mantissa.find('.'), mantissa.size());
  const size_t first = mantissa.find_first_of("123456789");
  if (first == std::string_view::npos) return INT32_MIN;
  const int64_t lead = first < point ? int64_t(point - first) - 1 : -int64_t(first - point);
  return lead + exponent;
}

int64_t RoundToInteger(const Variant& v, int64_t lo, int64_t hi) {
  int64_t r;
  switch (v.type()) {
    case VarType::kEmpty: return 0;
    case VarType::kNull: RaiseRuntime(RuntimeError::kInvalidUseOfNull);
    case VarType::kInteger: r = v.asInteger(); break;
    case VarType::kLong: r = v.asLong(); break;
    case VarType::kByte: r = v.asByte(); break;
    case VarType::kBoolean: r = v.asBoolean() ? -1 : 0; break;
    case VarType::kCurrency: {
      const int64_t raw = v.asCurrency().raw;
      r = raw / 10000;
      const int64_t rem = raw % 10000;
      if (rem > 5000 || (rem == 5000 && (r & 1))) ++r;
      if (rem < -5000 || (rem == -5000 && (r & 1))) --r;
      break;
    }
    case VarType::kObject: return RoundToInteger(DefaultValue(v), lo, hi);
    case VarType::kString:
      if (const auto radix = RadixNumber(v.asString())) return FitRadix(*radix, lo, hi);
      [[fallthrough]];
    default: {
      const double d = RoundHalfEven(ToDouble(v));
      if (!(d >= static_cast<double>(lo) && d <= static_cast<double>(hi))) Overflow();
      r = static_cast<int64_t>(d);
    }
  }
  if (r < lo || r > hi) Overflow();
  return r;
}

}  // namespace

double RoundHalfEven(double value) { return std::nearbyint(value); }

String FormatDouble(double value) { return FormatFloat(value, 15); }
String FormatSingle(float value) { return FormatFloat(value, 7); }

String FormatCurrency(Currency value) {
  const bool negative = value.raw < 0;
  const uint64_t magnitude =
      negative ? uint64_t(-(value.raw + 1)) + 1 : static_cast<uint64_t>(value.raw);
  std::string s = std::to_string(magnitude / 10000);
  uint64_t frac = magnitude % 10000;
  if (frac) {
    std::string f = std::to_string(frac);
    f.insert(0, 4 - f.size(), '0');
    while (f.back() == '0') f.pop_back();
    s += '.' + f;
  }
  if (negative) s.insert(0, "-");
  return Localize(s);
}

double ParseNumber(StringView text) {
  if (const auto radix = RadixNumber(text)) return static_cast<double>(*radix);
  const StringView s = Trimmed(text);
  // Rewrite into the form from_chars reads: ASCII, '.' as the separator.
  const char16_t sep = DecimalSeparator();
  std::string ascii;
  ascii.reserve(s.size());
  size_t i = 0;
  if (i < s.size() && (s[i] == u'+' || s[i] == u'-')) ascii += static_cast<char>(s[i++]);
  bool digits = false, point = false;
  for (; i < s.size(); ++i) {
    const char16_t c = s[i];
    if (c >= u'0' && c <= u'9') {
      ascii += static_cast<char>(c);
      digits = true;
    } else if (c == sep && !point) {
      ascii += '.';
      point = true;
    } else {
      break;
    }
  }
  if (!digits) Mismatch();
  if (i < s.size() && (s[i] == u'E' || s[i] == u'e' || s[i] == u'D' || s[i] == u'd')) {
    ascii += 'e';
    ++i;
    if (i < s.size() && (s[i] == u'+' || s[i] == u'-')) ascii += static_cast<char>(s[i++]);
    bool exp_digits = false;
    for (; i < s.size() && s[i] >= u'0' && s[i] <= u'9'; ++i) {
      ascii += static_cast<char>(s[i]);
      exp_digits = true;
    }
    if (!exp_digits) Mismatch();
  }
  if (i != s.size()) Mismatch();
  const char* first = ascii.data() + (ascii[0] == '+' ? 1 : 0);
  double value = 0;
  auto r = std::from_chars(first, ascii.data() + ascii.size(), value);
  if (r.ec == std::errc::result_out_of_range) {
    // from_chars reports underflow as out of range too; only real overflow fails.
    if (DecimalMagnitude(ascii) > 0) Overflow();
    return 0.0;
  }
  if (r.ec != std::errc()) Mismatch();
  return value;
}

int16_t ToInteger(const Variant& v) {
  return static_cast<int16_t>(RoundToInteger(v, INT16_MIN, INT16_MAX));
}

int32_t ToLong(const Variant& v) {
  return static_cast<int32_t>(RoundToInteger(v, INT32_MIN, INT32_MAX));
}

uint8_t ToByte(const Variant& v) { return static_cast<uint8_t>(RoundToInteger(v, 0, 255)); }

double ToDouble(const Variant& v) {
  switch (v.type()) {
    case VarType::kEmpty: return 0.0;
    case VarType::kNull: RaiseRuntime(RuntimeError::kInvalidUseOfNull);
    case VarType::kInteger: return v.asInteger();
    case VarType::kLong: return v.asLong();
    case VarType::kByte: return v.asByte();
    case VarType::kSingle: return v.asSingle();
    case VarType::kDouble: return v.asDouble();
    case VarType::kCurrency: return v.asCurrency().ToDouble();
    case VarType::kDate: return v.asDate().value;
    case VarType::kBoolean: return v.asBoolean() ? -1.0 : 0.0;
    case VarType::kDecimal: return v.asDecimal().ToDouble();
    case VarType::kString: return ParseNumber(v.asString());
    case VarType::kObject: return ToDouble(DefaultValue(v));
    default: Mismatch();
  }
}

float ToSingle(const Variant& v) {
  const double d = ToDouble(v);
  if (std::isfinite(d) && std::fabs(d) > std::numeric_limits<float>::max()) Overflow();
  return static_cast<float>(d);
}

Currency ToCurrency(const Variant& v) {
  switch (v.type()) {
    case VarType::kCurrency: return v.asCurrency();
    case VarType::kInteger:
    case VarType::kLong:
    case VarType::kByte:
    case VarType::kBoolean:
      return Currency::FromUnits(ToLong(v));
    case VarType::kDecimal: return DecimalToCurrency(v.asDecimal());
    // Text is read exactly, as a decimal: "0,00015" is a half and rounds to 0,0002, and
    // every amount ToString writes reads back unchanged.
    case VarType::kString: return DecimalToCurrency(TextToDecimal(v.asString()));
    case VarType::kObject: return ToCurrency(DefaultValue(v));
    default:
      return Currency::FromDouble(ToDouble(v));
  }
}

Date ToDate(const Variant& v) {
  double d;
  switch (v.type()) {
    case VarType::kDate: return v.asDate();
    case VarType::kString: {
      if (auto parsed = Date::Parse(v.asString())) return *parsed;
      Mismatch();
    }
    case VarType::kObject: return ToDate(DefaultValue(v));
    default: d = ToDouble(v);
  }
  // 1 January 100 to 31 December 9999; -657434.5 is noon of the first day.
  if (!(d > -657435.0 && d < 2958466.0)) Overflow();
  return Date{d};
}

Decimal ToDecimal(const Variant& v) {
  switch (v.type()) {
    case VarType::kDecimal: return v.asDecimal();
    case VarType::kInteger:
    case VarType::kLong:
    case VarType::kByte:
    case VarType::kBoolean:
    case VarType::kEmpty:
      return Decimal::FromInteger(ToLong(v));
    case VarType::kCurrency: {
      Decimal d = Decimal::FromInteger(v.asCurrency().raw);
      d.scale = 4;
      return Decimal::ParsePlain(d.ToPlainText()).value();  // drops trailing zeros
    }
    case VarType::kString: return TextToDecimal(v.asString());
    case VarType::kObject: return ToDecimal(DefaultValue(v));
    default: return Decimal::FromDouble(ToDouble(v));
  }
}

bool ToBoolean(const Variant& v) {
  switch (v.type()) {
    case VarType::kBoolean: return v.asBoolean();
    case VarType::kString: {
      const String& s = v.asString();
      if (EqualsAsciiNoCase(s, u"True")) return true;
      if (EqualsAsciiNoCase(s, u"False")) return false;
      return ParseNumber(s) != 0.0;
    }
    case VarType::kCurrency: return v.asCurrency().raw != 0;
    case VarType::kDecimal: return v.asDecimal().magnitude != 0;
    case VarType::kObject: return ToBoolean(DefaultValue(v));
    default: return ToDouble(v) != 0.0;
  }
}

String ToString(const Variant& v) {
  switch (v.type()) {
    case VarType::kEmpty: return String();
    case VarType::kNull: RaiseRuntime(RuntimeError::kInvalidUseOfNull);
    case VarType::kString: return v.asString();
    case VarType::kInteger: return DecimalText(v.asInteger());
    case VarType::kLong: return DecimalText(v.asLong());
    case VarType::kByte: return DecimalText(v.asByte());
    case VarType::kSingle: return FormatSingle(v.asSingle());
    case VarType::kDouble: return FormatDouble(v.asDouble());
    case VarType::kCurrency: return FormatCurrency(v.asCurrency());
    case VarType::kDate: return v.asDate().ToText();
    case VarType::kBoolean: return v.asBoolean() ? u"True" : u"False";
    case VarType::kDecimal: {
      String s = FromAscii(v.asDecimal().ToPlainText());
      for (char16_t& c : s) {
        if (c == u'.') c = DecimalSeparator();
      }
      return s;
    }
    case VarType::kObject: return ToString(DefaultValue(v));
    default: Mismatch();
  }
}

Variant ChangeType(const Variant& v, VarType type) {
  switch (type) {
    case VarType::kVariant: return v;
    case VarType::kEmpty: return Variant();
    case VarType::kNull: return Variant::Null();
    case VarType::kInteger: return Variant(ToInteger(v));
    case VarType::kLong: return Variant(ToLong(v));
    case VarType::kByte: return Variant(ToByte(v));
    case VarType::kSingle: return Variant(ToSingle(v));
    case VarType::kDouble: return Variant(ToDouble(v));
    case VarType::kCurrency: return Variant(ToCurrency(v));
    case VarType::kDate: return Variant(ToDate(v));
    case VarType::kDecimal: return Variant(ToDecimal(v));
    case VarType::kBoolean: return Variant(ToBoolean(v));
    case VarType::kString: return Variant(ToString(v));
    case VarType::kObject:
      if (v.isObject()) return v;
      if (v.isEmpty()) return Variant::Nothing();
      Mismatch();
    default:
      if (v.type() == type) return v;
      Mismatch();
  }
}

Variant DefaultValue(const Variant& v) {
  // A default member may give another object; a chain this long only loops.
  constexpr int kMostObjects = 16;
  Variant value = v;
  for (int i = 0; i < kMostObjects && value.isObject(); ++i) {
    const Ref<Object>& object = value.asObject();
    if (!object) RaiseRuntime(RuntimeError::kObjectNotSet);
    std::vector<Argument> none;
    value = InvokeDefault(*object, none);
  }
  if (value.isObject()) RaiseRuntime(RuntimeError::kNotSupported);
  return value;
}

Variant Concatenate(const Variant& a, const Variant& b) {
  const Variant x = DefaultValue(a), y = DefaultValue(b);
  if (x.isNull() && y.isNull()) return Variant::Null();
  return Variant((x.isNull() ? String() : ToString(x)) + (y.isNull() ? String() : ToString(y)));
}

}  // namespace tsruntime
