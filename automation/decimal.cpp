#include "tsruntime/automation/decimal.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "tsruntime/automation/error.h"

namespace tsruntime {
namespace {

using U128 = unsigned __int128;
constexpr U128 kLimit = U128{1} << 96;

std::string Digits(U128 v) {
  if (v == 0) return "0";
  std::string s;
  while (v) {
    s.insert(s.begin(), static_cast<char>('0' + static_cast<int>(v % 10)));
    v /= 10;
  }
  return s;
}

void Normalize(Decimal& d) {
  while (d.scale > 0 && d.magnitude % 10 == 0) {
    d.magnitude /= 10;
    --d.scale;
  }
  if (d.magnitude == 0) d.negative = false;
}

}  // namespace

Decimal Decimal::FromInteger(int64_t value) {
  Decimal d;
  d.negative = value < 0;
  d.magnitude = value < 0 ? U128(-(value + 1)) + 1 : U128(value);
  return d;
}

Decimal Decimal::FromDouble(double value) {
  if (!std::isfinite(value)) RaiseRuntime(RuntimeError::kOverflow);
  Decimal d;
  if (value == 0) return d;
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.14e", std::fabs(value));  // d.dddddddddddddde±x
  U128 digits = 0;
  const char* p = buf;
  for (; *p && *p != 'e'; ++p) {
    if (*p != '.') digits = digits * 10 + (*p - '0');
  }
  int exp = std::atoi(p + 1) - 14;
  while (exp > 0) {
    digits *= 10;
    if (digits >= kLimit) RaiseRuntime(RuntimeError::kOverflow);
    --exp;
  }
  while (-exp > 28) {  // too many decimals: round the excess away
    digits = (digits + 5) / 10;
    ++exp;
  }
  if (digits >= kLimit) RaiseRuntime(RuntimeError::kOverflow);
  d.magnitude = digits;
  d.scale = static_cast<uint8_t>(-exp);
  d.negative = value < 0;
  Normalize(d);
  return d;
}

double Decimal::ToDouble() const {
  long double v = static_cast<long double>(magnitude);
  for (int i = 0; i < scale; ++i) v /= 10;
  return static_cast<double>(negative ? -v : v);
}

std::string Decimal::ToPlainText() const {
  std::string s = Digits(magnitude);
  if (scale > 0) {
    if (s.size() <= scale) s.insert(0, scale - s.size() + 1, '0');
    s.insert(s.size() - scale, ".");
  }
  if (negative && magnitude != 0) s.insert(0, "-");
  return s;
}

std::optional<Decimal> Decimal::ParsePlain(std::string_view text) {
  Decimal d;
  size_t i = 0;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) d.negative = text[i++] == '-';
  bool any = false, point = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '.' && !point) {
      point = true;
      continue;
    }
    if (c < '0' || c > '9') return std::nullopt;
    any = true;
    if (point) {
      if (d.scale == 28) continue;  // beyond the precision: dropped
      ++d.scale;
    }
    d.magnitude = d.magnitude * 10 + (c - '0');
    if (d.magnitude >= kLimit) return std::nullopt;
  }
  if (!any) return std::nullopt;
  Normalize(d);
  return d;
}

int Decimal::Compare(const Decimal& a, const Decimal& b) {
  const int sa = a.magnitude == 0 ? 0 : (a.negative ? -1 : 1);
  const int sb = b.magnitude == 0 ? 0 : (b.negative ? -1 : 1);
  if (sa != sb) return sa < sb ? -1 : 1;
  if (sa == 0) return 0;
  // Same sign: compare magnitudes as digit strings aligned on the decimal point.
  const int scale = std::max(a.scale, b.scale);
  std::string x = Digits(a.magnitude) + std::string(scale - a.scale, '0');
  std::string y = Digits(b.magnitude) + std::string(scale - b.scale, '0');
  int c = x.size() != y.size() ? (x.size() < y.size() ? -1 : 1) : x.compare(y);
  c = c < 0 ? -1 : (c > 0 ? 1 : 0);
  return sa < 0 ? -c : c;
}

}  // namespace tsruntime
