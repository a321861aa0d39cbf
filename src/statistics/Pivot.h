#pragma once
// The statistics' pivot table over time records: the rows and the columns
// each grouped by dimensions (the three lists, user, day, week, month,
// year), a measure (hours, rounded hours, amount), filters on any dimension,
// and totals: every group of an outer row or column dimension gets a
// subtotal after its members, and the table a grand total row and column.
//
// Computed here rather than in SQL: SQLite has no ROLLUP, and one pass over
// the records in memory is fast enough for a million of them. Sums are of
// whole seconds and of the Currency's scaled integer, so subtotals add up
// to the grand total exactly, as the report's summary does.
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "common/Locale.h"
#include "reporting/ReportTypes.h"

namespace hb::statistics {

using reporting::Dimension;
using reporting::TimeRecord;

enum class Measure : std::uint8_t { Hours, RoundedHours, Amount };

// A record's value of a dimension as filters name it and the cube keeps it:
// the list value ("" none) or the user as they are; the day "2026-11-24",
// the week "2026-W48" (ISO 8601), the month "2026-11", the year "2026".
Str dimensionKey(const TimeRecord& record, Dimension dimension);

// The records a filter lets through: those whose value of the dimension is
// one of these keys (dimensionKey; list values and users ignore letter case).
struct PivotFilter {
    Dimension dimension = Dimension::List1;
    std::vector<Str> values;
};

struct PivotSpec {
    std::vector<Dimension> rows{Dimension::List1};
    std::vector<Dimension> columns{Dimension::Month};
    Measure measure = Measure::Hours;
    std::vector<PivotFilter> filters;  // all must let a record through
};

// A pivot that cannot be made: a dimension on both axes or twice, or a
// table too large to hold.
class PivotError : public std::invalid_argument {
  public:
    using std::invalid_argument::invalid_argument;
};

// The most cells (rows x columns, totals included) a pivot may have.
inline constexpr std::size_t kMaxPivotCells = std::size_t{1} << 24;

// One row or column of the table: the groups it belongs to, from the
// outermost dimension in; `level` of them are fixed. A member of the
// innermost groups has level == the axis' dimensions, a subtotal fewer, the
// grand total 0.
struct PivotHeader {
    std::vector<Str> keys;    // dimensionKey of each fixed level
    std::vector<Str> labels;  // as the report shows the groups ("November 2026")
    std::size_t level = 0;
    bool isTotal(std::size_t dimensions) const { return level < dimensions; }
};

struct PivotFigures {
    std::int64_t seconds = 0;
    std::int64_t roundedSeconds = 0;
    Currency amount;
    std::size_t records = 0;
};

struct PivotTable {
    PivotSpec request;
    std::vector<PivotHeader> rows;     // in reading order, the grand total last
    std::vector<PivotHeader> columns;  // likewise
    std::vector<PivotFigures> cells;   // rows x columns, row by row
    std::size_t records = 0;           // records the filters let through

    const PivotFigures& at(std::size_t row, std::size_t column) const {
        return cells[row * columns.size() + column];
    }
    const PivotFigures& grandTotal() const { return cells.back(); }
};

// The pivot of the records. Groups are ordered as the report orders them:
// days, weeks, months and years by time; list values and users
// alphabetically without regard to letter case, "not billed" (no value)
// last. Raises PivotError.
PivotTable pivot(const std::vector<TimeRecord>& records, const PivotSpec& request,
                 const Locale& locale);

// The measure as the command line names it (hours, rounded, amount).
const char16_t* measureName(Measure measure);

}  // namespace hb::statistics
