// The report program's command line: what scripts may write and what they
// get for mistakes, and the named periods' days around the edges of weeks,
// months and years.
#include "reporting/ReportCommandLine.h"

#include <gtest/gtest.h>

#include "common/DateTime.h"

namespace hb::reporting {
namespace {

DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(dt::serial(y, m, d));
}

std::vector<Str> args(std::initializer_list<const char16_t*> list) {
    return {list.begin(), list.end()};
}

TEST(ReportCommandLine, WithoutOptionsTheWindowOpensOnTheFolderGiven) {
    const struct {
        std::vector<Str> arguments;
        RunMode mode;
        Str folder;
    } cases[] = {
        {{}, RunMode::Window, u""},
        {args({u"C:\\Users\\me\\My Hourbooks\\"}), RunMode::Window,
         u"C:\\Users\\me\\My Hourbooks\\"},
        {args({u""}), RunMode::Window, u""},
        {args({u"/?"}), RunMode::Help, u""},
        {args({u"-HELP", u"/period:thisweek"}), RunMode::Help, u""},
        {args({u"D:\\reports", u"/period:lastmonth"}), RunMode::Report, u"D:\\reports"},
    };
    for (const auto& c : cases) {
        const ParsedCommand parsed = parseReportCommand(c.arguments);
        ASSERT_TRUE(parsed.command) << toUtf8(parsed.error);
        EXPECT_EQ(parsed.command->mode, c.mode);
        EXPECT_EQ(parsed.command->folder, c.folder);
    }
}

TEST(ReportCommandLine, OptionsIgnoreLetterCaseAndTakeColonOrEquals) {
    const ParsedCommand parsed = parseReportCommand(
        args({u"/FROM:2024-02-01", u"-to=2024-02-29", u"/Group:Month, List2,list1", u"/hours:HMM",
              u"/round:15,UP", u"/OverlapOnce", u"/csv:C:\\out\\a b.csv", u"/xlsx=report.xlsx",
              u"/html:C:\\out\\r.html"}));
    ASSERT_TRUE(parsed.command) << toUtf8(parsed.error);
    const ReportCommand& c = *parsed.command;
    EXPECT_EQ(c.mode, RunMode::Report);
    EXPECT_FALSE(c.namedPeriod);
    EXPECT_EQ(resolvePeriod(c, day(2030, 1, 1), 0), (Period{day(2024, 2, 1), day(2024, 2, 29)}));
    EXPECT_EQ(c.options.grouping,
              (std::vector<Dimension>{Dimension::Month, Dimension::List2, Dimension::List1}));
    EXPECT_EQ(c.options.hoursFormat, HoursFormat::HoursMinutes);
    EXPECT_EQ(c.options.rounding.minutes, 15);
    EXPECT_EQ(c.options.rounding.direction, RoundingDirection::Up);
    EXPECT_TRUE(c.options.overlapOnce);
    EXPECT_EQ(c.csv, u"C:\\out\\a b.csv");
    EXPECT_EQ(c.xlsx, u"report.xlsx");
    EXPECT_EQ(c.html, u"C:\\out\\r.html");
}

TEST(ReportCommandLine, DefaultsAreTheReportWindowsOwn) {
    const ParsedCommand parsed = parseReportCommand(args({u"/period:thismonth"}));
    ASSERT_TRUE(parsed.command);
    const ReportOptions defaults;
    EXPECT_EQ(parsed.command->options.grouping, defaults.grouping);
    EXPECT_EQ(parsed.command->options.hoursFormat, HoursFormat::Decimal);
    EXPECT_EQ(parsed.command->options.rounding.minutes, 0);
    EXPECT_FALSE(parsed.command->options.overlapOnce);
    EXPECT_TRUE(parsed.command->csv.empty() && parsed.command->xlsx.empty() &&
                parsed.command->html.empty());
}

TEST(ReportCommandLine, RoundingTakesTheStepsAndDirectionsOffered) {
    const struct {
        const char16_t* argument;
        std::int32_t minutes;
        RoundingDirection direction;
    } cases[] = {
        {u"/round:none", 0, RoundingDirection::Nearest},
        {u"/round:0", 0, RoundingDirection::Nearest},
        {u"/round:6", 6, RoundingDirection::Nearest},
        {u"/round:30,down", 30, RoundingDirection::Down},
        {u"/round:60,nearest", 60, RoundingDirection::Nearest},
    };
    for (const auto& c : cases) {
        const ParsedCommand parsed = parseReportCommand(args({u"/period:thisyear", c.argument}));
        ASSERT_TRUE(parsed.command) << toUtf8(c.argument) << ": " << toUtf8(parsed.error);
        EXPECT_EQ(parsed.command->options.rounding.minutes, c.minutes) << toUtf8(c.argument);
        EXPECT_EQ(parsed.command->options.rounding.direction, c.direction) << toUtf8(c.argument);
    }
}

// Every mistake is refused with a message naming what is wrong.
TEST(ReportCommandLine, MistakesAreRefusedWithAMessageThatNamesThem) {
    const struct {
        std::vector<Str> arguments;
        const char16_t* message;
    } cases[] = {
        {args({u"/period:fortnight"}), u"\"fortnight\" is none of thisweek"},
        {args({u"/period"}), u"/period needs a value"},
        {args({u"/from:2024-02-30", u"/to:2024-03-01"}), u"\"2024-02-30\" is not a date"},
        {args({u"/from:2023-02-29", u"/to:2023-03-01"}), u"\"2023-02-29\" is not a date"},
        {args({u"/from:24-1-1", u"/to:2024-03-01"}), u"\"24-1-1\" is not a date"},
        {args({u"/from:2024-01-01", u"/to:2024-1-31"}), u"\"2024-1-31\" is not a date"},
        {args({u"/from:2024-03-02", u"/to:2024-03-01"}), u"/to is before /from"},
        {args({u"/from:2024-03-02"}), u"/from needs /to"},
        {args({u"/to:2024-03-02"}), u"/to needs /from"},
        {args({u"/period:thisweek", u"/from:2024-03-02", u"/to:2024-03-03"}),
         u"cannot be given together"},
        {args({u"/csv:a.csv"}), u"no period"},
        {args({u"/overlaponce"}), u"no period"},
        {args({u"/period:thisweek", u"/period:lastweek"}), u"/period is given twice"},
        {args({u"/period:thisweek", u"/CSV:a", u"/csv:b"}), u"/csv is given twice"},
        {args({u"/period:thisweek", u"/group:list1,quarter"}), u"\"quarter\" is none of"},
        {args({u"/period:thisweek", u"/group:day,list1,DAY"}), u"\"DAY\" is given twice"},
        {args({u"/period:thisweek", u"/group:"}), u"/group needs a value"},
        {args({u"/period:thisweek", u"/hours:minutes"}), u"neither decimal nor hmm"},
        {args({u"/period:thisweek", u"/round:10"}), u"\"10\" is none of none, 6, 15, 30, 60"},
        {args({u"/period:thisweek", u"/round:15,sideways"}), u"\"sideways\" is none of up"},
        {args({u"/period:thisweek", u"/round:15,up,down"}), u"too many parts"},
        {args({u"/period:thisweek", u"/round:none,up"}), u"takes no direction"},
        {args({u"/period:thisweek", u"/overlaponce:yes"}), u"takes no value"},
        {args({u"/period:thisweek", u"/pdf:a.pdf"}), u"unknown option \"/pdf:a.pdf\""},
        {args({u"/"}), u"unknown option \"/\""},
        {args({u"C:\\a", u"C:\\b"}), u"more than one folder: \"C:\\b\""},
    };
    for (const auto& c : cases) {
        const ParsedCommand parsed = parseReportCommand(c.arguments);
        EXPECT_FALSE(parsed.command) << toUtf8(c.message);
        EXPECT_NE(parsed.error.find(c.message), Str::npos)
            << "expected \"" << toUtf8(c.message) << "\" in \"" << toUtf8(parsed.error) << "\"";
    }
}

TEST(ReportCommandLine, NamedPeriodsFollowTheCalendarAndTheLocalesFirstWeekday) {
    // 6 May 2024 was a Monday.
    const struct {
        NamedPeriod period;
        DayNumber today;
        int firstWeekday;  // 0 Monday, 6 Sunday
        Period expected;
    } cases[] = {
        {NamedPeriod::ThisWeek, day(2024, 5, 8), 0, {day(2024, 5, 6), day(2024, 5, 12)}},
        {NamedPeriod::ThisWeek, day(2024, 5, 6), 0, {day(2024, 5, 6), day(2024, 5, 12)}},
        {NamedPeriod::ThisWeek, day(2024, 5, 12), 0, {day(2024, 5, 6), day(2024, 5, 12)}},
        {NamedPeriod::ThisWeek, day(2024, 5, 8), 6, {day(2024, 5, 5), day(2024, 5, 11)}},
        {NamedPeriod::ThisWeek, day(2024, 5, 5), 6, {day(2024, 5, 5), day(2024, 5, 11)}},
        {NamedPeriod::LastWeek, day(2024, 1, 3), 0, {day(2023, 12, 25), day(2023, 12, 31)}},
        {NamedPeriod::ThisMonth, day(2024, 2, 10), 0, {day(2024, 2, 1), day(2024, 2, 29)}},
        {NamedPeriod::ThisMonth, day(2023, 2, 28), 0, {day(2023, 2, 1), day(2023, 2, 28)}},
        {NamedPeriod::LastMonth, day(2024, 1, 15), 0, {day(2023, 12, 1), day(2023, 12, 31)}},
        {NamedPeriod::LastMonth, day(2024, 3, 31), 0, {day(2024, 2, 1), day(2024, 2, 29)}},
        {NamedPeriod::ThisYear, day(2024, 12, 31), 0, {day(2024, 1, 1), day(2024, 12, 31)}},
        {NamedPeriod::LastYear, day(2024, 1, 1), 0, {day(2023, 1, 1), day(2023, 12, 31)}},
    };
    for (const auto& c : cases) {
        const Period p = namedPeriodDays(c.period, c.today, c.firstWeekday);
        EXPECT_EQ(p, c.expected) << "period " << static_cast<int>(c.period) << " on day " << c.today
                                 << " (first weekday " << c.firstWeekday << "): got " << p.first
                                 << ".." << p.last;
    }
}

TEST(ReportCommandLine, TheNamedPeriodOfTheCommandIsResolvedOnTheDayItRuns) {
    const ParsedCommand parsed = parseReportCommand(args({u"/PERIOD:LastWeek"}));
    ASSERT_TRUE(parsed.command);
    EXPECT_EQ(resolvePeriod(*parsed.command, day(2024, 5, 8), 0),
              (Period{day(2024, 4, 29), day(2024, 5, 5)}));
}

}  // namespace
}  // namespace hb::reporting
