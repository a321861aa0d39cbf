#pragma once
// The report as an Excel workbook (libxlsxwriter): a sheet of the records
// with real numbers (dates as Excel dates, times of day, hours and amounts
// with number formats) and a totals row of SUM formulas; a summary sheet
// with the tree (indented groups, subtotals, the grand total) and a column
// chart of the hours of the first-level groups.
#include <filesystem>
#include <functional>

#include "common/Locale.h"
#include "reporting/ExportFormat.h"

struct lxw_workbook;

namespace hb::reporting {

// Writes the workbook `fill` makes (sheets, formats, charts) as writeXlsx
// writes its own: into a temporary file beside the target, renamed over it
// when complete. `fill` raises std::runtime_error to give up; the message
// says why. Raises std::runtime_error naming the file.
void writeWorkbook(const std::filesystem::path& file,
                   const std::function<void(lxw_workbook*)>& fill);

// Writes the workbook to a temporary file beside the target and renames it
// over the target when complete, so a failed export never leaves half a
// file. Hours are numbers: decimal hours ("0.00") or, when the report shows
// h:mm, days with the "[h]:mm" format so that Excel shows and sums them as
// durations. Raises std::runtime_error naming the file and libxlsxwriter's
// reason.
void writeXlsx(const std::filesystem::path& file, const Report& report, const Locale& loc,
               const ExportTexts& texts = {});

}  // namespace hb::reporting
