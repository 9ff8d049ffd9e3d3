#include "tsruntime/automation/date.h"

#include <cmath>
#include <cstdio>

#include "tsruntime/automation/error.h"

namespace tsruntime {
namespace {

// Days from 1970-01-01 in the proleptic Gregorian calendar (H. Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int& y, int& m, int& d) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(static_cast<int64_t>(yoe) + era * 400 + (m <= 2));
}

constexpr int64_t kEpochOffset = 25569;  // 1970-01-01 is day 25569 after 1899-12-30

int DaysInMonth(int y, int m) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (m == 2 && ((y % 4 == 0 && y % 100 != 0) || y % 400 == 0)) return 29;
  return kDays[m - 1];
}

// Reads an unsigned number of 1 to `max_digits` digits at `i`.
bool ReadNumber(StringView s, size_t& i, int max_digits, int& out) {
  size_t start = i;
  out = 0;
  while (i < s.size() && s[i] >= u'0' && s[i] <= u'9' && i - start < size_t(max_digits)) {
    out = out * 10 + (s[i] - u'0');
    ++i;
  }
  return i > start;
}

bool ReadTime(StringView s, size_t& i, DateParts& p) {
  if (!ReadNumber(s, i, 2, p.hour) || i >= s.size() || s[i] != u':') return false;
  ++i;
  if (!ReadNumber(s, i, 2, p.minute)) return false;
  p.second = 0;
  if (i < s.size() && s[i] == u':') {
    ++i;
    if (!ReadNumber(s, i, 2, p.second)) return false;
  }
  return p.hour < 24 && p.minute < 60 && p.second < 60;
}

bool ReadDate(StringView s, size_t& i, DateParts& p) {
  size_t save = i;
  int a, b, c;
  if (!ReadNumber(s, i, 4, a)) return false;
  if (i - save == 4 && i < s.size() && s[i] == u'-') {  // yyyy-mm-dd
    ++i;
    if (!ReadNumber(s, i, 2, b) || i >= s.size() || s[i] != u'-') return false;
    ++i;
    if (!ReadNumber(s, i, 2, c)) return false;
    p.year = a, p.month = b, p.day = c;
  } else if (i - save <= 2 && i < s.size() && s[i] == u'.') {  // dd.mm.yyyy
    ++i;
    if (!ReadNumber(s, i, 2, b) || i >= s.size() || s[i] != u'.') return false;
    ++i;
    size_t ystart = i;
    if (!ReadNumber(s, i, 4, c) || i - ystart != 4) return false;
    p.day = a, p.month = b, p.year = c;
  } else {
    return false;
  }
  return p.year >= 100 && p.month >= 1 && p.month <= 12 && p.day >= 1 &&
         p.day <= DaysInMonth(p.year, p.month);
}

}  // namespace

Date Date::FromParts(const DateParts& p) {
  if (p.year < 100 || p.year > 9999 || p.month < 1 || p.month > 12 || p.day < 1 ||
      p.day > DaysInMonth(p.year, p.month) || p.hour < 0 || p.hour > 23 || p.minute < 0 ||
      p.minute > 59 || p.second < 0 || p.second > 59) {
    RaiseRuntime(RuntimeError::kInvalidCall);
  }
  const int64_t days = DaysFromCivil(p.year, p.month, p.day) + kEpochOffset;
  const double time = (p.hour * 3600 + p.minute * 60 + p.second) / 86400.0;
  return Date{days < 0 ? days - time : days + time};
}

DateParts Date::ToParts() const {
  // 1 January 100 to 31 December 9999; a negative date keeps its time in the fraction.
  if (!(value > -657435.0 && value < 2958466.0)) RaiseRuntime(RuntimeError::kInvalidCall);
  double whole = std::trunc(value);
  int64_t days = static_cast<int64_t>(whole);
  int64_t seconds = std::llround(std::fabs(value - whole) * 86400.0);
  if (seconds >= 86400) {
    seconds -= 86400;
    ++days;
  }
  DateParts p;
  CivilFromDays(days - kEpochOffset, p.year, p.month, p.day);
  p.hour = static_cast<int>(seconds / 3600);
  p.minute = static_cast<int>(seconds / 60 % 60);
  p.second = static_cast<int>(seconds % 60);
  return p;
}

String Date::ToIsoText() const {
  const DateParts p = ToParts();
  char buf[32];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day,
                p.hour, p.minute, p.second);
  return FromAscii(buf);
}

String Date::ToText() const {
  const DateParts p = ToParts();
  const bool has_time = p.hour || p.minute || p.second;
  const bool has_date = !(p.year == 1899 && p.month == 12 && p.day == 30);
  char buf[32];
  if (!has_time) {
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", p.year, p.month, p.day);
  } else if (!has_date) {
    std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", p.hour, p.minute, p.second);
  } else {
    return ToIsoText();
  }
  return FromAscii(buf);
}

std::optional<Date> Date::Parse(StringView text) {
  size_t b = 0, e = text.size();
  while (b < e && text[b] == u' ') ++b;
  while (e > b && text[e - 1] == u' ') --e;
  StringView s = text.substr(b, e - b);
  DateParts p;
  size_t i = 0;
  if (ReadDate(s, i, p)) {
    if (i < s.size()) {
      if (s[i] != u' ' && s[i] != u'T') return std::nullopt;
      ++i;
      if (!ReadTime(s, i, p)) return std::nullopt;
    }
  } else {
    i = 0;
    p = DateParts{};
    if (!ReadTime(s, i, p)) return std::nullopt;
  }
  if (i != s.size()) return std::nullopt;
  return FromParts(p);
}

}  // namespace tsruntime
