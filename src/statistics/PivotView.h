#pragma once
// What the pivot window of Cubelens.exe shows and how its choices become a
// pivot, kept apart from the Win32 window so that it is tested natively:
// the choices of its drop-downs (row dimensions, column dimension,
// measure, period, one filter), the pivot's rows and cells as the list
// shows them (subtotal and total rows marked), the bars of its chart and
// the status line, every text in the user's language where the add-in's
// phrase table has one. The window (apps/statistics/PivotWindow) only puts
// these into controls.
#include <array>
#include <optional>
#include <vector>

#include "common/Locale.h"
#include "languages/Phrases.h"
#include "reporting/ExportFormat.h"
#include "reporting/Periods.h"
#include "statistics/PivotExport.h"

namespace hb::statistics {

using reporting::PeriodKind;

// The dimensions the drop-downs offer, in their order.
inline constexpr std::array<Dimension, 8> kPivotDimensions = {
    Dimension::List1, Dimension::List2, Dimension::List3, Dimension::User,
    Dimension::Day,   Dimension::Week,  Dimension::Month, Dimension::Year};
inline constexpr std::array<Measure, 3> kPivotMeasures = {Measure::Hours, Measure::RoundedHours,
                                                          Measure::Amount};
// The period choices: every record first, then the named periods.
inline constexpr std::array<std::optional<PeriodKind>, 7> kPivotPeriods = {
    std::nullopt,          PeriodKind::ThisWeek, PeriodKind::LastWeek, PeriodKind::ThisMonth,
    PeriodKind::LastMonth, PeriodKind::ThisYear, PeriodKind::LastYear};
inline constexpr std::size_t kPivotRowLevels = 2;
inline constexpr std::size_t kPivotExportFormats = 3;  // CSV, XLSX, HTML (ExportFormat order)

// What the chart beside the list draws: the measure of each column group
// (over time when the columns are dates) stacked by the outer row groups,
// or each outer row group's share of the whole as a pie.
enum class ChartKind { BarsOverTime, Shares };
inline constexpr std::array<ChartKind, 2> kPivotChartKinds = {ChartKind::BarsOverTime,
                                                              ChartKind::Shares};

// What the window's controls hold. An empty level, a level or column that
// repeats an earlier choice, and a filter without a value are left out.
struct PivotForm {
    std::array<std::optional<Dimension>, kPivotRowLevels> rows = {Dimension::List1, std::nullopt};
    std::optional<Dimension> column = Dimension::Month;
    Measure measure = Measure::Hours;
    std::size_t period = 0;  // index into kPivotPeriods
    std::optional<Dimension> filterDimension;
    Str filterValue;  // one key (dimensionKey) or several separated by ";"
    ChartKind chart = ChartKind::BarsOverTime;  // draws only: the pivot stays the same
};

// The pivot the form asks for. Without any row level the first dimension
// that is not the column is taken, so that the table always has rows.
PivotSpec specFrom(const PivotForm& form);
// The records' period of the form (an empty period: every record).
reporting::Period periodFrom(const PivotForm& form, reporting::DayNumber today, int firstWeekday);

// Every text of the window: English, replaced by the phrase table's where
// it has the phrase; the exports' captions with them.
struct PivotTexts {
    Str caption = u"Hourbook statistics";
    Str rows = u"Rows";
    Str columns = u"Columns";
    Str measure = u"Measure";
    Str period = u"Period";
    Str filter = u"Filter";
    Str none = u"(none)";
    std::array<Str, kPivotPeriods.size()> periods = {u"All",        u"This week",  u"Last week",
                                                     u"This month", u"Last month", u"This year",
                                                     u"Last year"};
    std::array<Str, kPivotExportFormats> exports = {u"Export CSV...", u"Export XLSX...",
                                                    u"Export HTML..."};
    std::array<Str, kPivotExportFormats> fileTypes = {u"CSV (comma separated values)",
                                                      u"Excel workbook", u"Web page"};
    Str chart = u"Chart";
    std::array<Str, kPivotChartKinds.size()> chartKinds = {u"Bars over time", u"Shares"};
    Str sum = u"Sum";  // the one bar when there are no columns
    Str record = u"record";
    Str records = u"records";
    Str working = u"Reading the records...";
    Str exporting = u"Exporting...";
    Str exported = u"Saved";
    Str noRecords = u"No records found.";
    Str ready = u"Ready";
    Str save = u"Save";
    Str failed = u"The statistics could not be made.";
    Str exportFailed = u"The statistics could not be saved.";
    ExportTexts names;  // the captions of dimensions, measures and totals
};

PivotTexts pivotTextsFrom(const Phrases& p);

// The captions of the drop-downs' choices, in kPivotDimensions' and
// kPivotMeasures' order.
std::vector<Str> dimensionChoices(const ListCaptions& captions, const PivotTexts& t);
std::vector<Str> measureChoices(const PivotTexts& t);

// --- what the list shows --------------------------------------------------------

struct PivotGridColumn {
    Str caption;
    bool number = false;  // right-aligned
};
struct PivotGridRow {
    std::vector<Str> cells;
    std::size_t level = 0;  // as PivotHeader: below the row dimensions a total
    bool total = false;     // a subtotal or the grand total
};
struct PivotGrid {
    std::vector<PivotGridColumn> columns;
    std::vector<PivotGridRow> rows;
};

// The table as the list shows it: a column per row dimension, then one per
// pivot column (its header text, the total last); each row the labels of
// its groups (a subtotal's next label the total caption) and the measure of
// each cell (hours and amounts with two decimals, an empty cell blank).
PivotGrid pivotGrid(const PivotTable& table, const ListCaptions& captions, const PivotTexts& t,
                    const Locale& loc);

// --- the chart ----------------------------------------------------------------

// BarsOverTime: one bar per innermost column group (the one bar "Sum"
// without columns), stacked of the outer row groups (the series, bottom
// to top). Shares: one slice per outer row group whose total is above
// zero, its share of the slices' whole (the shares sum to 1; without
// negative totals the whole is the grand total). Values in hours or in
// the currency. Groups without a value ("not billed") count like others.
struct PivotChart {
    ChartKind kind = ChartKind::BarsOverTime;
    std::vector<Str> series;  // the outer row groups' texts, bottom to top
    struct Bar {
        Str label;
        std::vector<double> parts;  // one per series
        double total = 0;
    };
    std::vector<Bar> bars;
    double largest = 0;  // the highest bar's total (the scale)
    struct Slice {
        Str label;
        double value = 0;
        double share = 0;  // of 1
        Str legend;        // "Acme 62.5%"
    };
    std::vector<Slice> slices;
};
PivotChart pivotChart(const PivotTable& table, ChartKind kind, const PivotTexts& t,
                      const Locale& loc);

// The status line: "3 records, Hours 7.50" or "No records found.".
Str pivotStatus(const PivotTable& table, const PivotTexts& t, const Locale& loc);

}  // namespace hb::statistics
