#pragma once
// The report as one self-contained HTML page: UTF-8, no network (styles
// inline, the chart an inline SVG, no scripts, fonts or images), ready to
// print to PDF on A4. Every text from the calendar is escaped. The page is
// also well-formed XML, so that any XML parser can check it.
#include <filesystem>
#include <string>

#include "common/Locale.h"
#include "reporting/ExportFormat.h"

namespace hb::reporting {

// Text for HTML content and attribute values: & < > " ' as references.
Str htmlEscape(StrView text);

// The page: title, period, grouping and user; a bar chart of the hours of
// the first-level groups; the summary tree with its subtotals and the grand
// total; the records. Hours as the report's options say (decimal or h:mm).
std::string htmlPage(const Report& report, const Locale& loc, const ExportTexts& texts = {});

// Writes the page, replacing an older file only when complete. Raises
// std::runtime_error naming the file.
void writeHtml(const std::filesystem::path& file, const Report& report, const Locale& loc,
               const ExportTexts& texts = {});

}  // namespace hb::reporting
