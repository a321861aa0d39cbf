// The statistics' command line: what each argument sets, what is refused
// with which message, and the period it resolves to.
#include "StatsTestSupport.h"
#include "statistics/StatsCommandLine.h"

namespace hb::statistics::test {
namespace {

using reporting::Dimension;

// The parsed command as one line: mode folder rows|cols|measure|filters|source|files|period.
std::string describe(const StatsCommand& c) {
    std::string out = c.mode == RunMode::Window ? "window"
                      : c.mode == RunMode::Help ? "help"
                                                : "report";
    out += " " + toUtf8(c.folder) + " ";
    for (const Dimension d : c.request.rows)
        out += toUtf8(reporting::dimensionName(d)) + ",";
    out += "|";
    for (const Dimension d : c.request.columns)
        out += toUtf8(reporting::dimensionName(d)) + ",";
    out += "|" + toUtf8(measureName(c.request.measure)) + "|";
    for (const PivotFilter& f : c.request.filters) {
        out += toUtf8(reporting::dimensionName(f.dimension)) + "=";
        for (const Str& v : f.values)
            out += "[" + toUtf8(v) + "]";
        out += ";";
    }
    out += "|" + std::to_string(static_cast<int>(c.source)) + "|" + toUtf8(c.csv) + "," +
           toUtf8(c.xlsx) + "," + toUtf8(c.html);
    return out;
}

TEST(StatsCommandLine, Accepted) {
    struct Case {
        std::vector<Str> args;
        const char* expected;
    };
    const Case cases[] = {
        {{}, "window  list1,|month,|hours||0|,,"},
        {{u"C:\\Cubes"}, "window C:\\Cubes list1,|month,|hours||0|,,"},
        {{u"/?"}, "help  list1,|month,|hours||0|,,"},
        {{u"D", u"/rows:list1, LIST2", u"-COLS=year,month", u"/measure:Amount", u"/csv:a.csv"},
         "report D list1,list2,|year,month,|amount||0|a.csv,,"},
        {{u"D", u"/columns:user", u"/rows:day", u"/measure:rounded", u"/xlsx:b.xlsx",
          u"/html:c.html"},
         "report D day,|user,|rounded||0|,b.xlsx,c.html"},
        {{u"D", u"/filter:list1=Acme", u"/filter:list1=Zenith;user=john", u"/filter:list2=",
          u"/csv:x"},
         "report D list1,|month,|hours|list1=[Acme][Zenith];user=[john];list2=[];|0|x,,"},
        {{u"D", u"/filter:list1=a=b", u"/csv:x"},
         "report D list1,|month,|hours|list1=[a=b];|0|x,,"},
        {{u"D", u"/source:cube", u"/period:lastmonth", u"/csv:x"},
         "report D list1,|month,|hours||2|x,,"},
        {{u"/source:server", u"/from:2026-11-01", u"/to:2026-11-30", u"/csv:x"},
         "report  list1,|month,|hours||3|x,,"},
        {{u"D", u"/rows:month", u"/cols:list1", u"/csv:x"}, "report D month,|list1,|hours||0|x,,"},
    };
    for (const Case& c : cases) {
        const ParsedStatsCommand p = parseStatsCommand(c.args);
        ASSERT_TRUE(p.command) << toUtf8(p.error);
        EXPECT_EQ(describe(*p.command), c.expected);
    }
}

TEST(StatsCommandLine, Refused) {
    struct Case {
        std::vector<Str> args;
        const char16_t* message;
    };
    const Case cases[] = {
        {{u"D", u"E"}, u"more than one folder: \"E\""},
        {{u"D", u"/bogus", u"/csv:x"}, u"unknown option \"/bogus\""},
        {{u"D", u"/rows:company", u"/csv:x"},
         u"/rows: \"company\" is none of list1, list2, list3, day, week, month, year, user"},
        {{u"D", u"/rows:day,DAY", u"/csv:x"}, u"/rows: \"DAY\" is given twice"},
        {{u"D", u"/rows:day", u"/rows:week", u"/csv:x"}, u"option /rows is given twice"},
        {{u"D", u"/rows:user", u"/cols:user", u"/csv:x"}, u"/rows and /cols both have user"},
        {{u"D", u"/measure:minutes", u"/csv:x"},
         u"/measure: \"minutes\" is none of hours, rounded, amount"},
        {{u"D", u"/filter:acme", u"/csv:x"}, u"/filter: \"acme\" is not written DIM=VALUE"},
        {{u"D", u"/filter:firm=acme", u"/csv:x"},
         u"/filter: \"firm\" is none of list1, list2, list3, day, week, month, year, user"},
        {{u"D", u"/source:web", u"/csv:x"},
         u"/source: \"web\" is none of auto, database, cube, server"},
        {{u"D", u"/period:today", u"/csv:x"},
         u"/period: \"today\" is none of thisweek, lastweek, thismonth, lastmonth, thisyear, "
         u"lastyear"},
        {{u"D", u"/period:thisweek", u"/from:2026-11-01", u"/csv:x"},
         u"/period and /from, /to cannot be given together"},
        {{u"D", u"/from:2026-11-01", u"/csv:x"}, u"/from needs /to"},
        {{u"D", u"/from:2026-11-31", u"/csv:x"},
         u"/from: \"2026-11-31\" is not a date written YYYY-MM-DD"},
        {{u"D", u"/from:2026-11-02", u"/to:2026-11-01", u"/csv:x"}, u"/to is before /from"},
        {{u"D", u"/rows:user"}, u"nothing to write: give /csv:FILE, /xlsx:FILE or /html:FILE"},
        {{u"/csv:x"}, u"no folder: give the database or cube folder (or /source:server)"},
        {{u"D", u"/csv"}, u"/csv needs a value, as in /csv:..."},
    };
    for (const Case& c : cases) {
        const ParsedStatsCommand p = parseStatsCommand(c.args);
        EXPECT_FALSE(p.command);
        EXPECT_EQ(p.error, c.message);
    }
}

TEST(StatsCommandLine, Period) {
    const DayNumber today = dayOf(2026, 11, 25);
    const auto period = [&](std::vector<Str> args) {
        args.insert(args.begin(), u"D");
        args.push_back(u"/csv:x");
        return statsPeriod(*parseStatsCommand(args).command, today, 0);
    };
    EXPECT_TRUE(period({}).empty());
    EXPECT_EQ(period({u"/period:lastmonth"}),
              (reporting::Period{dayOf(2026, 10, 1), dayOf(2026, 10, 31)}));
    EXPECT_EQ(period({u"/from:2026-01-02", u"/to:2026-01-03"}),
              (reporting::Period{dayOf(2026, 1, 2), dayOf(2026, 1, 3)}));
}

}  // namespace
}  // namespace hb::statistics::test
