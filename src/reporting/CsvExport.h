#pragma once
// The report as CSV for spreadsheets and scripts: UTF-8 with a byte-order
// mark, the user's list separator, CRLF line ends, numbers as numbers in the
// locale's notation, text quoted as RFC 4180 asks and defused against
// formula injection.
//
// Two tables, two files: the records (report.csv) and the summary tree with
// its subtotals and grand total (report-summary.csv). One table per file is
// what spreadsheets, filters and scripts read without help; a totals block
// under the records would break a sort or a pivot of them.
#include <filesystem>
#include <string>
#include <vector>

#include "common/Locale.h"
#include "reporting/ExportFormat.h"

namespace hb::reporting {

// The separator the CSV uses: the locale's list separator, unless it is the
// decimal separator (numbers would split), then ";" (or "," next to a ".").
Str csvSeparator(const Locale& loc);

// A text cell: quoted when it holds the separator, a quote or a line break
// (quotes doubled). A text beginning with = + - @, a tab or a carriage
// return that a spreadsheet would run as a formula is made plain text by an
// apostrophe in front, and quoted; a text that is just a number stays as it is.
Str csvTextCell(StrView text, StrView separator);

// One row of cells (already made cells) and its CRLF, appended to `out`.
void csvAddRow(Str& out, const std::vector<Str>& cells, StrView separator);
// The file's bytes: a UTF-8 byte-order mark and the text.
std::string csvBytes(const Str& text);

// The records: a header row (date, start, end, subject, the three lists,
// hours, rounded hours, amount), one row per record. Hours are decimal
// whatever the report shows (two to four decimals), amounts two to four.
std::string csvRecords(const Report& report, const Locale& loc, const ExportTexts& texts = {});
// The summary: level, one column per grouping level (the group's path from
// the top), hours, rounded hours, amount, records; each group before its
// subgroups; the grand total last.
std::string csvSummary(const Report& report, const Locale& loc, const ExportTexts& texts = {});

// "x/report.csv" -> "x/report-summary.csv".
std::filesystem::path summaryCsvPath(const std::filesystem::path& recordsFile);
// Writes both files, each replacing an older one only when complete.
// Raises std::runtime_error naming the file that could not be written.
void writeCsv(const std::filesystem::path& recordsFile, const Report& report, const Locale& loc,
              const ExportTexts& texts = {});

}  // namespace hb::reporting
