#pragma once
// The report program's command line, for scripts and schedulers. Without
// arguments (or with only a folder) the program opens its window; with
// options it runs the report without a window, writes the files asked for
// and ends with an exit code:
//
//   HBReporting.exe [FOLDER]
//   HBReporting.exe /period:thisweek|lastweek|thismonth|lastmonth|thisyear|lastyear
//                   | /from:YYYY-MM-DD /to:YYYY-MM-DD
//                   [/group:DIM,DIM,...]   DIM: list1 list2 list3 day week month year user
//                   [/hours:decimal|hmm] [/round:none|6|15|30|60[,up|nearest|down]]
//                   [/overlaponce] [/csv:FILE] [/xlsx:FILE] [/html:FILE]
//   HBReporting.exe /?
//
// Options begin with "/" or "-"; names and values ignore letter case; a
// value follows the name after ":" or "=". Each option may be given once.
#include <cstdint>
#include <optional>
#include <vector>

#include "reporting/Periods.h"
#include "reporting/ReportTypes.h"

namespace hb::reporting {

// What the program ends with (documented for scripts; never renumber).
enum class ExitCode : int {
    Ok = 0,
    Failed = 1,               // anything else that went wrong
    BadArguments = 2,         // an option, a value or a date the program does not take
    OutlookUnavailable = 3,   // Outlook could not be reached or refused a call
    DatabaseUnreachable = 4,  // the record store could not be opened or written
    ExportFailed = 5,         // a file asked for could not be written
};

enum class RunMode : std::uint8_t { Window, Report, Help };

// A period named relative to today.
using NamedPeriod = PeriodKind;

struct ReportCommand {
    RunMode mode = RunMode::Window;
    Str folder;  // the one argument that is no option
    std::optional<NamedPeriod> namedPeriod;
    std::optional<DayNumber> from, to;  // /from and /to
    ReportOptions options;              // the period is resolved later (resolvePeriod)
    Str csv, xlsx, html;                // the files to write; empty: none
};

// The command line parsed, or the message that says what is wrong with it
// (one line, naming the argument).
struct ParsedCommand {
    std::optional<ReportCommand> command;
    Str error;
};
ParsedCommand parseReportCommand(const std::vector<Str>& arguments);

// The local days of a named period, weeks beginning on firstWeekday
// (0 Monday ... 6 Sunday, as the locale says).
Period namedPeriodDays(NamedPeriod period, DayNumber today, int firstWeekday);
// The command's period: the named one, or /from to /to.
Period resolvePeriod(const ReportCommand& command, DayNumber today, int firstWeekday);

// The parts of the report's command line other programs' command lines
// share, so that they read the same way.

// One argument: an option ("/name:value", "-name=value", "/flag"; the name
// in lower case) or, not beginning with "/" or "-", a plain value (the
// folder) in `value`.
struct CommandArgument {
    bool isOption = false;
    Str key;
    bool hasValue = false;
    Str value;
    bool isHelp() const { return isOption && (key == u"?" || key == u"help"); }
};
CommandArgument splitArgument(StrView argument);

// A period's name (thisweek ... lastyear; letter case ignored), and the
// message for a value that is none.
std::optional<NamedPeriod> periodNamed(StrView name);
Str periodNameProblem(StrView value);
// What is wrong with /period, /from and /to as given (empty: nothing): both
// kinds, one end alone, /to before /from, or none when `required`.
Str periodOptionsProblem(const std::optional<NamedPeriod>& named,
                         const std::optional<DayNumber>& from, const std::optional<DayNumber>& to,
                         bool required);
// The period of /period or /from and /to.
Period resolvePeriod(const std::optional<NamedPeriod>& named, std::optional<DayNumber> from,
                     std::optional<DayNumber> to, DayNumber today, int firstWeekday);

// A dimension by its name on the command line (list1, list2, list3, day,
// week, month, year, user; letter case ignored), and the name of one.
std::optional<Dimension> dimensionNamed(StrView name);
const char16_t* dimensionName(Dimension dimension);
// A date written YYYY-MM-DD (a real calendar day) as a day number.
std::optional<DayNumber> isoDay(StrView text);

// The usage text /? prints.
Str reportUsage();

}  // namespace hb::reporting
