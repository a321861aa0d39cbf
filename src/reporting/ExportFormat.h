#pragma once
// What the report's exports (CSV, XLSX, HTML) share: the captions, numbers
// and dates as text in the user's locale, the summary tree as rows, and
// writing a file so that a failed export never leaves half of one.
#include <array>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "common/Locale.h"
#include "languages/Phrases.h"
#include "reporting/Aggregation.h"
#include "reporting/ReportTypes.h"

namespace hb::reporting {

// The captions the exports write. English by default; the program fills
// them from the phrase table where it has a phrase.
struct ExportTexts {
    Str language = u"en";  // the HTML page's lang
    Str title = u"Hours report";
    Str date = u"Date";
    Str start = u"Start";
    Str end = u"End";
    Str subject = u"Subject";
    Str hours = u"Hours";
    Str roundedHours = u"Rounded hours";
    Str amount = u"Amount";
    Str records = u"Records";
    Str group = u"Group";
    Str level = u"Level";
    Str total = u"Total";
    Str period = u"Period";
    Str grouping = u"Grouping";
    Str user = u"User";
    Str none = u"(none)";  // a group of records without a value for its list
    Str day = u"Day";
    Str week = u"Week";
    Str month = u"Month";
    Str year = u"Year";
    Str summarySheet = u"Summary";
    Str recordsSheet = u"Records";
    Str summaryHeading = u"Summary";
    Str chartTitle = u"Hours per group";
};

// The captions in the user's language where the add-in's phrase table has
// them (date, from/to for start and end, subject, hours, sum for the total,
// date range for the period, the calendar units, report for the title,
// none, user name); English where it has none or a phrase is empty.
ExportTexts exportTexts(const Phrases& phrases);

// Hours times 10,000 (four decimals) of a number of seconds, rounded half
// away from zero: integer arithmetic, so that totals and their parts agree.
std::int64_t scaledHours(std::int64_t seconds);

// A fixed-point number (value x 10^4) as text with the locale's decimal
// separator and no thousands separator: rounded half away from zero to
// maxDecimals, trailing zeros dropped down to minDecimals.
Str decimalText(std::int64_t scaled, int minDecimals, int maxDecimals, const Locale& loc);

// Money with two decimals (the Currency's four rounded half away from
// zero); with `thousands` the locale's thousands separator groups the digits
// ("1,275.00"), as the window shows money; files get none, so that a
// spreadsheet reads the text as one number.
Str amountText(Currency amount, const Locale& loc, bool thousands = false);

// A day in the locale's short date format.
Str dayText(DayNumber day, const Locale& loc);
// A period as "first – last" (one day: that day alone).
Str periodText(const Period& period, const Locale& loc);
// The time of day of a date value in the locale's time format without
// seconds ("9:05 AM", "09:05").
Str timeText(Date value, const Locale& loc);
// The locale's long time picture without its seconds.
Str shortTimePicture(const Locale& loc);

// The caption of what a summary level groups by.
Str dimensionCaption(Dimension d, const Report& report, const ExportTexts& texts);
Str dimensionCaption(Dimension d, const std::array<Str, kReportLists>& listCaptions,
                     const ExportTexts& texts);
// A group's label; an empty one (records without a value) reads texts.none.
Str groupLabel(const SummaryNode& node, const ExportTexts& texts);

// The summary tree below the root in reading order: each group followed by
// its subgroups. level 0 is a first-level group.
struct SummaryRow {
    int level = 0;
    const SummaryNode* node = nullptr;
};
std::vector<SummaryRow> flattenSummary(const SummaryNode& root);

// Writes bytes to a temporary file beside the target and renames it over the
// target, so a failure leaves the previous file (or none). Raises
// std::runtime_error with the file's name.
void writeFileReplacing(const std::filesystem::path& target, std::string_view bytes);
// The temporary file's name writeFileReplacing and the XLSX export use.
std::filesystem::path temporaryBeside(const std::filesystem::path& target);
// Renames the finished temporary file over the target (removes it on failure).
void replaceWith(const std::filesystem::path& temporary, const std::filesystem::path& target);

}  // namespace hb::reporting
