#pragma once
// The pivot's files: CSV and XLSX of the table as computed (the report's
// CSV rules: UTF-8 with a byte-order mark, the user's list separator,
// numbers as numbers, texts defused against formula injection; the workbook
// with numeric cells and a stacked column chart), and an offline HTML page
// that carries the records and lets the user pivot them by drag and drop
// (npm pivottable, jQuery and jQuery UI inlined with their licences).
#include <array>
#include <filesystem>
#include <string>

#include "common/Locale.h"
#include "reporting/ExportFormat.h"
#include "statistics/CubeFile.h"
#include "statistics/Pivot.h"

namespace hb::statistics {

using reporting::ExportTexts;
using ListCaptions = std::array<Str, kReportLists>;

// The caption of each dimension: the lists' captions (empty: "List 1" ...),
// the calendar units and user from the texts.
Str pivotDimensionCaption(Dimension d, const ListCaptions& captions, const ExportTexts& texts);
// The measure's caption (hours, rounded hours, amount).
Str measureCaption(Measure m, const ExportTexts& texts);

// The measure of a cell as a fixed-point number (x 10^4: hours or currency).
std::int64_t scaledMeasure(const PivotFigures& f, Measure m);

// The header of a row or column: its labels joined by " / ", a subtotal's
// followed by the total caption, the grand total that caption alone.
Str pivotHeaderText(const PivotHeader& h, std::size_t dimensions, const ExportTexts& texts);

// The table: a header row (one cell per row dimension, then each column's
// header), then each row's labels (one cell per row dimension; a subtotal's
// next cell the total caption) and its cells of the measure; a cell without
// records is empty. Hours with two to four decimals, amounts likewise.
std::string pivotCsv(const PivotTable& table, const ListCaptions& captions, const Locale& loc,
                     const ExportTexts& texts = {});
void writePivotCsv(const std::filesystem::path& file, const PivotTable& table,
                   const ListCaptions& captions, const Locale& loc, const ExportTexts& texts = {});

// The workbook: a "Pivot" sheet of the table (numbers, totals bold) and a
// stacked column chart of the innermost rows by the innermost columns.
void writePivotXlsx(const std::filesystem::path& file, const PivotTable& table,
                    const ListCaptions& captions, const ExportTexts& texts = {});

// The page: the records as JSON (one object per record: each dimension's
// key and the three measures) and the pivot UI set to the table's rows,
// columns and measure (the measures are values to sum, not axes to drag). No network: every script
// and style is inline.
std::string pivotHtmlPage(const CubeContent& data, const PivotSpec& request,
                          const ExportTexts& texts = {});
void writePivotHtml(const std::filesystem::path& file, const CubeContent& data,
                    const PivotSpec& request, const ExportTexts& texts = {});

}  // namespace hb::statistics
