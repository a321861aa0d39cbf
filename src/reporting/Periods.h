#pragma once
// The report's periods (this week, last week, this month, last month, this
// year, a custom range) relative to a given today, and the calendar facts
// the grouping needs: weekdays, weeks and their numbers, months and labels.
//
// Weeks begin on Monday and are numbered as in ISO 8601 (week 1 holds the
// year's first Thursday): the regional settings the program reads carry no
// first day of the week, and Monday is the working week's first day for the
// people who bill hours by the week.
#include <stdexcept>

#include "common/Locale.h"
#include "reporting/ReportTypes.h"

namespace hb::reporting {

// LastYear stands after Custom so that the window's choices, the first six,
// keep their places.
enum class PeriodKind : std::uint8_t {
    ThisWeek,
    LastWeek,
    ThisMonth,
    LastMonth,
    ThisYear,
    Custom,
    LastYear
};

// A period the user asked for that is no period: a date that does not exist,
// or a first day after the last. The message says which, in words for the user.
class PeriodError : public std::invalid_argument {
  public:
    using std::invalid_argument::invalid_argument;
};

struct CivilDate {
    int year = 1899, month = 12, day = 30;
    auto operator<=>(const CivilDate&) const = default;
};

// Day numbers and calendar dates (proleptic Gregorian, any year).
DayNumber dayNumber(int year, int month, int day);
CivilDate civilDate(DayNumber day);
// 0 = Monday ... 6 = Sunday.
int weekday(DayNumber day);
// The Monday of the week that holds the day.
DayNumber weekStart(DayNumber day);

// The ISO 8601 week of a day: the year it belongs to (which differs from
// the calendar year around New Year) and its number, 1..53.
struct WeekNumber {
    int year = 0;
    int week = 0;
    auto operator<=>(const WeekNumber&) const = default;
};
WeekNumber isoWeek(DayNumber day);

// One of the named periods, relative to today; weeks begin on firstWeekday
// (0 Monday ... 6 Sunday, as Windows numbers the user's first day of the
// week). Custom is no named period (PeriodError); use customPeriod.
Period periodFor(PeriodKind kind, DayNumber today, int firstWeekday = 0);
// A custom period of two calendar dates, both included. Raises PeriodError
// for a date that does not exist or a first date after the last.
Period customPeriod(const CivilDate& from, const CivilDate& to);
// The same from texts: "yyyy-mm-dd", or a date in the locale's short date
// order (no time). Raises PeriodError for a text that is no date.
Period customPeriod(StrView from, StrView to, const Locale& locale);
// A date text as customPeriod reads it; raises PeriodError.
CivilDate parseDay(StrView text, const Locale& locale);

// Labels for grouping and display.
Str dayLabel(DayNumber day, const Locale& locale);            // the locale's short date
Str weekLabel(DayNumber day);                                 // "2026-W48"
Str monthLabel(DayNumber day, const Locale& locale);          // "November 2026"
Str yearLabel(DayNumber day);                                 // "2026"
Str periodLabel(const Period& period, const Locale& locale);  // "11/1/2026 - 11/30/2026"

}  // namespace hb::reporting
