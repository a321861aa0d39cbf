#pragma once
// The statistics program's command line, for scripts: the pivot's
// dimensions, measure, period, filters and the files to write, without a
// window, ending with the report program's exit codes.
//
//   Cubelens.exe [FOLDER]                   opens the pivot window
//   Cubelens.exe [FOLDER] [/rows:DIM,...] [/cols:DIM,...]
//                [/measure:hours|rounded|amount]
//                [/period:thisweek|lastweek|thismonth|lastmonth|thisyear|lastyear
//                 | /from:YYYY-MM-DD /to:YYYY-MM-DD]
//                [/filter:DIM=VALUE[;DIM=VALUE...]]...
//                [/source:auto|database|cube|server]
//                [/csv:FILE] [/xlsx:FILE] [/html:FILE]
//   Cubelens.exe /?
//   DIM: list1 list2 list3 day week month year user
//
// Options as the report program's: "/" or "-", ":" or "=", letter case
// ignored in names, each once except /filter. Filters of one dimension
// add values (a record passes with any of them); filters of different
// dimensions must all pass. Without a period every record is counted.
#include <optional>
#include <vector>

#include "reporting/ReportCommandLine.h"
#include "statistics/Pivot.h"
#include "statistics/StatsSource.h"

namespace hb::statistics {

using reporting::ExitCode;
using reporting::NamedPeriod;
using reporting::RunMode;

struct StatsCommand {
    RunMode mode = RunMode::Window;
    Str folder;
    std::optional<NamedPeriod> namedPeriod;
    std::optional<DayNumber> from, to;
    PivotSpec request;
    StatsSource source = StatsSource::Auto;
    Str csv, xlsx, html;
};

struct ParsedStatsCommand {
    std::optional<StatsCommand> command;
    Str error;  // one line naming the argument
};
ParsedStatsCommand parseStatsCommand(const std::vector<Str>& arguments);

// The command's period: /period, /from to /to, or none (every record: an
// empty period).
Period statsPeriod(const StatsCommand& command, DayNumber today, int firstWeekday);

Str statsUsage();

}  // namespace hb::statistics
