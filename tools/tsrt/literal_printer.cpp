#include "literal_printer.h"

#include <charconv>
#include <cmath>
#include <cstdint>

#include "tsruntime/automation/dispatch.h"

namespace tsrt {
namespace {

using tsruntime::Currency;
using tsruntime::Date;
using tsruntime::SafeArray;
using tsruntime::String;
using tsruntime::StringView;
using tsruntime::ToUtf8;
using tsruntime::Variant;
using tsruntime::VarType;

// Characters that would vanish or look like others on a terminal; they print as ChrW(n).
bool Invisible(char16_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0xA0) || c == 0xAD || (c >= 0x2000 && c <= 0x200F) ||
         (c >= 0x2028 && c <= 0x202F) || (c >= 0x205F && c <= 0x206F) || c == 0xFEFF ||
         (c >= 0xFFF0 && c <= 0xFFFB) || c >= 0xFFFE;
}
bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

std::string PrintText(StringView s) {
  if (s.empty()) return "\"\"";
  std::string out;
  String run;
  auto piece = [&](const std::string& p) {
    if (!out.empty()) out += " & ";
    out += p;
  };
  auto flush = [&] {
    if (run.empty()) return;
    piece("\"" + ToUtf8(run) + "\"");
    run.clear();
  };
  for (size_t i = 0; i < s.size(); ++i) {
    const char16_t c = s[i];
    if (IsHighSurrogate(c) && i + 1 < s.size() && IsLowSurrogate(s[i + 1])) {
      run += c;
      run += s[++i];
      continue;
    }
    const char* name = nullptr;
    if (c == u'\r' && i + 1 < s.size() && s[i + 1] == u'\n') {
      name = "vbCrLf";
      ++i;
    } else if (c == u'\r') {
      name = "vbCr";
    } else if (c == u'\n') {
      name = "vbLf";
    } else if (c == u'\t') {
      name = "vbTab";
    }
    if (name) {
      flush();
      piece(name);
    } else if (Invisible(c) || IsHighSurrogate(c) || IsLowSurrogate(c)) {
      flush();
      piece("ChrW(" + std::to_string(static_cast<unsigned>(c)) + ")");
    } else if (c == u'"') {
      run += u"\"\"";
    } else {
      run += c;
    }
  }
  flush();
  return out;
}

// The shortest text that reads back as the same value, exponent written "E+20".
template <class T>
std::string Shortest(T value) {
  char buf[64];
  const auto result = std::to_chars(buf, buf + sizeof buf, value);
  std::string s(buf, result.ptr);
  const size_t e = s.find('e');
  if (e == std::string::npos) return s;
  std::string exponent = s.substr(e + 2);
  exponent.erase(0, std::min(exponent.find_first_not_of('0'), exponent.size() - 1));
  return s.substr(0, e) + "E" + s[e + 1] + exponent;
}

// NaN and the infinities have no literal; a conversion of their names stands in.
template <class T>
std::string NonFinite(T value, const char* conversion) {
  const char* name = std::isnan(value) ? "NaN" : value > 0 ? "Infinity" : "-Infinity";
  return std::string(conversion) + "(\"" + name + "\")";
}

std::string PrintDouble(double d, VarType declared) {
  if (!std::isfinite(d)) return NonFinite(d, "CDbl");
  std::string s = Shortest(d);
  const bool reads_as_double = s.find_first_of(".E") != std::string::npos;
  // A bare -0 would read as the Integer 0, which converts to +0: it keeps its mark.
  const bool negative_zero = d == 0 && std::signbit(d);
  if (!reads_as_double && (declared != VarType::kDouble || negative_zero)) s += '#';
  return s;
}

std::string PrintCurrency(Currency c) {
  const bool negative = c.raw < 0;
  const uint64_t magnitude =
      negative ? 0 - static_cast<uint64_t>(c.raw) : static_cast<uint64_t>(c.raw);
  std::string s = std::to_string(magnitude / 10000);
  std::string decimals = std::to_string(magnitude % 10000 + 10000).substr(1);
  decimals.erase(decimals.find_last_not_of('0') + 1);
  if (!decimals.empty()) s += "." + decimals;
  return (negative ? "-" : "") + s + "@";
}

// Days from 1 January 100 to 31 December 9999, the span that #...# can hold.
constexpr double kFirstDate = -657434.0;
constexpr double kPastLastDate = 2958466.0;

std::string PrintDate(Date d) {
  if (d.value >= kFirstDate && d.value < kPastLastDate) {
    try {
      if (Date::FromParts(d.ToParts()) == d) return "#" + ToUtf8(d.ToIsoText()) + "#";
    } catch (const tsruntime::Error&) {
    }
  }
  return "CDate(" + PrintDouble(d.value, VarType::kDouble) + ")";
}

std::string PrintArray(const SafeArray& a) {
  const VarType element = a.elementType();
  const std::string as =
      element == VarType::kVariant ? "" : " As " + ToUtf8(tsruntime::TypeName(element));
  if (!a.isDimensioned()) return "Array(Undimensioned)" + as;
  std::string items;
  auto add = [&](const std::string& item) {
    if (!items.empty()) items += ", ";
    items += item;
  };
  if (element == VarType::kByte) {
    for (uint8_t b : a.bytes()) add(std::to_string(b));
  } else {
    for (const Variant& v : a.elements()) add(PrintLiteral(v, element));
  }
  const auto& dims = a.bounds();
  if (dims.size() == 1 && dims[0].lower == 0) return "Array(" + items + ")" + as;
  std::string head;
  for (const tsruntime::Bounds& b : dims) {
    if (!head.empty()) head += ", ";
    head += std::to_string(b.lower) + " To " + std::to_string(b.upper);
  }
  return "Array(" + head + ":" + (items.empty() ? "" : " " + items) + ")" + as;
}

}  // namespace

std::string PrintLiteral(const Variant& v, VarType declared) {
  switch (v.type()) {
    case VarType::kEmpty:
      return "Empty";
    case VarType::kNull:
      return "Null";
    case VarType::kBoolean:
      return v.asBoolean() ? "True" : "False";
    case VarType::kInteger:
      return std::to_string(v.asInteger());
    case VarType::kLong: {
      const int32_t n = v.asLong();
      const bool reads_as_integer = n >= INT16_MIN && n <= INT16_MAX;
      return std::to_string(n) + (reads_as_integer && declared != VarType::kLong ? "&" : "");
    }
    case VarType::kByte: {
      const std::string n = std::to_string(v.asByte());
      return declared == VarType::kByte ? n : "CByte(" + n + ")";
    }
    case VarType::kSingle: {
      const float f = v.asSingle();
      return std::isfinite(f) ? Shortest(f) + "!" : NonFinite(f, "CSng");
    }
    case VarType::kDouble:
      return PrintDouble(v.asDouble(), declared);
    case VarType::kCurrency:
      return PrintCurrency(v.asCurrency());
    case VarType::kDecimal:
      return "CDec(\"" + v.asDecimal().ToPlainText() + "\")";
    case VarType::kDate:
      return PrintDate(v.asDate());
    case VarType::kString:
      return PrintText(v.asString());
    case VarType::kObject: {
      const auto& o = v.asObject();
      return o ? "<Object " + ToUtf8(o->classInfo().name) + ">" : "Nothing";
    }
    case VarType::kError:
      return v.isMissing() ? "Missing" : "CVErr(" + std::to_string(v.asError().scode) + ")";
    default:
      if (v.isArray()) return PrintArray(v.asArray());
      return "<" + ToUtf8(tsruntime::TypeName(v.type())) + ">";
  }
}

}  // namespace tsrt
