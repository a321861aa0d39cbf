#pragma once
// The report program's data, shared by its parts: what is read from the
// calendar (CalendarEntry), the time records made of it (TimeRecord), the
// period and the options the user chose, and the aggregated report. The
// parts themselves:
//   OutlookCalendar  reads the default calendar through the automation seam
//   TimeRules        turns calendar entries into time records (the rules)
//   Aggregation      groups records into the summary tree
//   RecordStore      keeps records in a database (SQLite file, ODBC server)
//   Exports          CSV, XLSX and HTML of a report
//   ReportJob        the whole road from the calendar to a report
//
// Times are local, as Outlook gives them (days since 30 December 1899 with
// the time as the fraction); days are whole day numbers of that count.
// Durations are whole seconds; money is the add-in's Currency (four
// decimals), never binary floating point.
#include <array>
#include <cstdint>
#include <vector>

#include "common/Variant.h"

namespace hb::reporting {

// The number of metadata lists a report has columns for: the add-in's three
// (company, person, extra field). A fourth list's value rides along in the
// appointment's categories and is not reported.
inline constexpr std::size_t kReportLists = 3;

// A local day: whole days since 30 December 1899 (Date's integer part).
using DayNumber = std::int32_t;

// A range of local days, both ends included.
struct Period {
    DayNumber first = 0;
    DayNumber last = -1;
    bool contains(DayNumber d) const { return d >= first && d <= last; }
    bool empty() const { return last < first; }
    auto operator<=>(const Period&) const = default;
};

// One appointment, or one occurrence (or exception) of a recurring series,
// as read from the default calendar.
struct CalendarEntry {
    Str entryId;           // the item's EntryID; a series' occurrences share the master's
    Date occurrenceStart;  // the occurrence's original start (the Start of a single appointment)
    Date start;
    Date end;
    Str subject;
    Str categories;  // as Outlook keeps them ("Acme, Smith, Holiday")
    bool allDay = false;
    bool isPrivate = false;  // Sensitivity olPrivate (2)
    bool recurring = false;  // an occurrence or exception of a recurring series
};

// One stretch of work on one local day: an entry that crosses midnight
// gives one record per day. Keyed by (user, entryId, occurrenceStart, day).
struct TimeRecord {
    Str user;
    Str entryId;
    Date occurrenceStart;
    DayNumber day = 0;
    Date start;  // the part of the entry on that day
    Date end;
    Str subject;
    std::array<Str, kReportLists> values;  // the billing value of each list; empty: none
    bool billed = false;                   // at least one value
    bool allDay = false;
    bool isPrivate = false;
    bool recurring = false;
    std::int64_t seconds = 0;         // worked time after the 24-hour conversion and lunch
    std::int64_t roundedSeconds = 0;  // after the report's rounding
    Currency rate;                    // per hour
    Currency amount;                  // rate x rounded hours
};

// Rounding of each record's time.
enum class RoundingDirection : std::uint8_t { Up, Nearest, Down };
struct Rounding {
    std::int32_t minutes = 0;  // 0 (none), 6, 15, 30 or 60
    RoundingDirection direction = RoundingDirection::Nearest;
};

enum class HoursFormat : std::uint8_t { Decimal, HoursMinutes };

// The files a report is written to.
enum class ExportFormat : std::uint8_t { Csv, Xlsx, Html };

// What a summary level groups by.
enum class Dimension : std::uint8_t { List1, List2, List3, Day, Week, Month, Year, User };

// The report's own options (the settings' rules come from cPersonalSettings).
struct ReportOptions {
    Period period;
    std::vector<Dimension> grouping{Dimension::List1, Dimension::List2, Dimension::List3};
    HoursFormat hoursFormat = HoursFormat::Decimal;
    Rounding rounding;
    bool overlapOnce = false;  // time covered by overlapping appointments counts once
    // The summary and records of every user's stored records of the period
    // (a workgroup's shared database), not only the session user's; the
    // session user's records are refreshed either way.
    bool allUsers = false;
};

// One node of the summary tree: a group's label and its totals. The root is
// the grand total (label empty).
struct SummaryNode {
    Dimension dimension = Dimension::List1;  // what the children of the parent group by
    Str label;
    std::int64_t seconds = 0;
    std::int64_t roundedSeconds = 0;
    Currency amount;
    std::size_t records = 0;
    std::vector<SummaryNode> children;
};

// A finished report: its records in date order and the summary tree.
struct Report {
    ReportOptions options;
    Str user;
    std::array<Str, kReportLists> listCaptions;  // "Company", "Person", ...
    std::vector<TimeRecord> records;
    SummaryNode total;
};

}  // namespace hb::reporting
