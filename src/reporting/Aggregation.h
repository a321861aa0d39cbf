#pragma once
// Time records into the report's summary tree: one level per dimension of
// the grouping, in the user's order, each node with the totals of its
// records, the root holding the grand total. Totals are sums of whole
// seconds and of Currency, so every level adds up to the grand total
// exactly. Also the hours texts the window and the exports show.
#include <cstdint>
#include <vector>

#include "common/Locale.h"
#include "reporting/ReportTypes.h"

namespace hb::reporting {

// The label of an empty billing value.
inline constexpr char16_t kNotBilled[] = u"not billed";

// The label of a record's group for one dimension: the list value (or the
// not-billed label), the day (short date), the week ("2026-W48"), the month
// ("November 2026"), the year or the user.
Str groupLabel(const TimeRecord& record, Dimension dimension, const Locale& locale,
               StrView notBilled = kNotBilled);

// Whether a dimension groups by a text (a list value, the user) rather
// than by time; the text of a record for such a dimension.
bool isTextDimension(Dimension d);
const Str& dimensionText(const TimeRecord& record, Dimension d);
// The order of a day's group of a time dimension: the day, its week's
// Monday, its month (year x 12 + month - 1) or its year.
std::int64_t timeGroupKey(DayNumber day, Dimension d);

// Records in order of day, start, user, EntryID and occurrence start.
void sortRecords(std::vector<TimeRecord>& records);

// The summary tree. Children come in the order of their dimension: days,
// weeks, months and years by time; list values and users alphabetically
// without regard to letter case, the not-billed group last.
SummaryNode aggregate(const std::vector<TimeRecord>& records,
                      const std::vector<Dimension>& grouping, const Locale& locale,
                      StrView notBilled = kNotBilled);

// Hours of a duration for numeric cells (exports); texts are made by the
// integer formatters below, which never go through binary fractions.
double hoursOf(std::int64_t seconds);
// "7.25" / "7,25": hours with two decimals and the locale's decimal
// separator, to the nearest hundredth (a half goes up).
Str formatDecimalHours(std::int64_t seconds, const Locale& locale);
// "7:15": hours and minutes, to the nearest minute (a half goes up).
Str formatHoursMinutes(std::int64_t seconds);
Str formatHours(std::int64_t seconds, HoursFormat format, const Locale& locale);

}  // namespace hb::reporting
