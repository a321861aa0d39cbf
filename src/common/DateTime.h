#pragma once
// Date values as the automation run time keeps them: days since
// 30 December 1899, the fraction being the time of day. Before that day the
// whole part counts backwards while the fraction still counts forwards
// (-1.25 is 29 December 1899, 06:00), as in OLE dates.
#include <optional>

#include "common/Locale.h"
#include "common/Str.h"

namespace hb::dt {

struct Parts {
    int year = 1899, month = 12, day = 30;
    int hour = 0, minute = 0, second = 0;
};

bool isLeapYear(int year);
int daysInMonth(int year, int month);
// A valid calendar date of the run time's range (years 100 to 9999).
bool isValidDate(int year, int month, int day);

// DateSerial without roll-over: the day number of a valid date.
double serial(int year, int month, int day);
// TimeSerial: the fraction of a day.
double timeFraction(int hour, int minute, int second);
// The date value of date and time parts (OLE encoding before 1899).
double fromParts(const Parts& parts);
// The calendar parts of a date value, the time rounded to the second.
Parts toParts(double days);

// Formats with a Windows date/time picture (d dd ddd dddd M MM MMM MMMM y yy
// yyyy h hh H HH m mm s ss t tt, text in single quotes, anything else as is).
Str formatPicture(const Parts& parts, StrView picture, const Locale& loc);
// CStr of a date value: short date and long time; the date alone when the
// time is midnight, the time alone on day 0 (30 December 1899).
Str formatDate(double days, const Locale& loc);

// CDate/IsDate of a text: a date in the locale's day/month/year order (the
// order of the short date picture; a four-digit first number is a year;
// day and month swap when only that makes a valid date), separated by
// "/", "-", ".", blanks or the locale's date separator, month names of the
// locale's language allowed; and/or a time "h:mm[:ss]" with an optional AM/PM designator.
// Two-digit years: 00-29 are 2000-2029, 30-99 are 1930-1999. A date of
// two numbers without a year takes the current year.
std::optional<double> parseDate(StrView text, const Locale& loc);

}  // namespace hb::dt
