// Date: a double counting days from 30 December 1899, the fraction being the time of day.
//
// As in the host runtime, a negative date keeps its time of day in the absolute value
// of its fraction: -1.25 is 29 December 1899, 06:00.
#pragma once

#include <compare>
#include <optional>

#include "tsruntime/automation/string.h"

namespace tsruntime {

struct DateParts {
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
};

struct Date {
  double value = 0.0;

  // Builds a date from calendar parts; raises invalid call (5) outside years 100-9999
  // or for parts out of range. Seconds are whole.
  static Date FromParts(const DateParts& parts);
  // Calendar parts, the time rounded to the nearest second; raises invalid call (5) for
  // a value outside years 100-9999 (or NaN), which no calendar date stands for.
  DateParts ToParts() const;

  // "yyyy-mm-dd hh:nn:ss" always in full: the form the storage writes.
  String ToIsoText() const;
  // The host runtime's text of a date: "yyyy-mm-dd" when the time is midnight,
  // "hh:nn:ss" when the date part is 30 December 1899, both joined otherwise.
  String ToText() const;
  // Reads "yyyy-mm-dd[ hh:nn[:ss]]", "dd.mm.yyyy[ hh:nn[:ss]]" and "hh:nn[:ss]";
  // nothing else.
  static std::optional<Date> Parse(StringView text);

  friend constexpr auto operator<=>(Date, Date) = default;
};

}  // namespace tsruntime
