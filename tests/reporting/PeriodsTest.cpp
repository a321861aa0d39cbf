// The report's periods, weeks and labels.
#include <gmock/gmock.h>

#include "ReportTestSupport.h"

namespace hb::test {
namespace {

TEST(Periods, DayNumbersAndCalendarDates) {
    const std::pair<CivilDate, DayNumber> anchors[] = {
        {{1899, 12, 30}, 0},    {{1800, 1, 1}, -36522},  {{1900, 3, 1}, 61},
        {{2000, 2, 29}, 36585}, {{2026, 11, 24}, 46350}, {{2200, 12, 31}, 109939},
    };
    for (const auto& [date, number] : anchors) {
        EXPECT_EQ(dayNumber(date.year, date.month, date.day), number) << number;
        EXPECT_EQ(civilDate(number), date) << number;
    }
    // Every day from 1800 to 2200 follows the one before.
    DayNumber expected = dayNumber(1800, 1, 1);
    for (int year = 1800; year <= 2200; ++year) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= dt::daysInMonth(year, month); ++day, ++expected) {
                ASSERT_EQ(dayNumber(year, month, day), expected)
                    << year << "-" << month << "-" << day;
                ASSERT_EQ(civilDate(expected), (CivilDate{year, month, day}));
            }
        }
    }
    EXPECT_EQ(weekday(0), 5);       // 30 December 1899, a Saturday
    EXPECT_EQ(weekday(-36522), 2);  // 1 January 1800, a Wednesday
    EXPECT_EQ(weekday(dayOf(24)), 1);
    EXPECT_EQ(weekday(dayOf(29)), 6);
}

TEST(Periods, NamedPeriodsRelativeToToday) {
    struct Case {
        const char* name;
        PeriodKind kind;
        CivilDate today;
        CivilDate first;
        CivilDate last;
    };
    const Case cases[] = {
        {"this week, a Tuesday",
         PeriodKind::ThisWeek,
         {2026, 11, 24},
         {2026, 11, 23},
         {2026, 11, 29}},
        {"this week, a Sunday",
         PeriodKind::ThisWeek,
         {2026, 11, 29},
         {2026, 11, 23},
         {2026, 11, 29}},
        {"this week, a Monday",
         PeriodKind::ThisWeek,
         {2026, 11, 23},
         {2026, 11, 23},
         {2026, 11, 29}},
        {"last week", PeriodKind::LastWeek, {2026, 11, 24}, {2026, 11, 16}, {2026, 11, 22}},
        {"last week over New Year",
         PeriodKind::LastWeek,
         {2027, 1, 6},
         {2026, 12, 28},
         {2027, 1, 3}},
        {"this month", PeriodKind::ThisMonth, {2026, 11, 24}, {2026, 11, 1}, {2026, 11, 30}},
        {"this month, a leap February",
         PeriodKind::ThisMonth,
         {2028, 2, 10},
         {2028, 2, 1},
         {2028, 2, 29}},
        {"last month", PeriodKind::LastMonth, {2026, 3, 31}, {2026, 2, 1}, {2026, 2, 28}},
        {"last month in January",
         PeriodKind::LastMonth,
         {2027, 1, 1},
         {2026, 12, 1},
         {2026, 12, 31}},
        {"this year", PeriodKind::ThisYear, {2026, 11, 24}, {2026, 1, 1}, {2026, 12, 31}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Period p = periodFor(c.kind, dayNumber(c.today.year, c.today.month, c.today.day));
        EXPECT_EQ(civilDate(p.first), c.first);
        EXPECT_EQ(civilDate(p.last), c.last);
    }
    EXPECT_THROW(periodFor(PeriodKind::Custom, dayOf(24)), PeriodError);
}

TEST(Periods, CustomPeriodsAreCheckedWithAClearMessage) {
    Locale german;
    german.shortDate = u"dd.MM.yyyy";
    german.decimalSeparator = u",";
    struct Case {
        Str from;
        Str to;
        const Locale* locale;
        Period expected;    // when valid
        const char* error;  // else: a part of the message
    };
    const Case cases[] = {
        {u"2026-11-01", u"2026-11-30", &Locale::enUS(), november(), nullptr},
        {u"2026-11-24", u"2026-11-24", &Locale::enUS(), {dayOf(24), dayOf(24)}, nullptr},
        {u"11/1/2026", u"11/30/2026", &Locale::enUS(), november(), nullptr},
        {u"01.11.2026", u"30.11.2026", &german, november(), nullptr},
        {u"2028-2-29",
         u"2028-3-1",
         &Locale::enUS(),
         {dayNumber(2028, 2, 29), dayNumber(2028, 3, 1)},
         nullptr},
        {u"2026-02-30", u"2026-03-01", &Locale::enUS(), {}, "\"2026-02-30\" does not exist"},
        {u"2026-11-30",
         u"2026-11-01",
         &Locale::enUS(),
         {},
         "first day (2026-11-30) comes after its last day (2026-11-01)"},
        {u"2026-11-01", u"tomorrow", &Locale::enUS(), {}, "\"tomorrow\" is not a date"},
        {u"2026-11-01 10:00", u"2026-11-30", &Locale::enUS(), {}, "is not a date"},
        {u"", u"2026-11-30", &Locale::enUS(), {}, "is not a date"},
        {u"11/31/2026", u"2026-11-30", &Locale::enUS(), {}, "is not a date"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(u8(c.from) + " .. " + u8(c.to));
        if (!c.error) {
            EXPECT_EQ(customPeriod(c.from, c.to, *c.locale), c.expected);
            continue;
        }
        try {
            customPeriod(c.from, c.to, *c.locale);
            ADD_FAILURE() << "no error";
        } catch (const PeriodError& e) {
            EXPECT_THAT(e.what(), testing::HasSubstr(c.error));
        }
    }
    EXPECT_THROW(customPeriod(CivilDate{2025, 2, 29}, CivilDate{2025, 3, 1}), PeriodError);
}

TEST(Periods, WeeksAndLabels) {
    struct Case {
        CivilDate day;
        WeekNumber week;
        const char16_t* weekText;
        const char16_t* monthText;
        const char16_t* dayText;
    };
    const Case cases[] = {
        {{2026, 11, 24}, {2026, 48}, u"2026-W48", u"November 2026", u"11/24/2026"},
        {{2026, 1, 1}, {2026, 1}, u"2026-W01", u"January 2026", u"1/1/2026"},
        {{2021, 1, 3}, {2020, 53}, u"2020-W53", u"January 2021", u"1/3/2021"},
        {{2024, 12, 30}, {2025, 1}, u"2025-W01", u"December 2024", u"12/30/2024"},
        {{2027, 1, 1}, {2026, 53}, u"2026-W53", u"January 2027", u"1/1/2027"},
    };
    for (const Case& c : cases) {
        const DayNumber d = dayNumber(c.day.year, c.day.month, c.day.day);
        SCOPED_TRACE(u8(c.dayText));
        EXPECT_EQ(isoWeek(d), c.week);
        EXPECT_EQ(weekLabel(d), c.weekText);
        EXPECT_EQ(monthLabel(d, Locale::enUS()), c.monthText);
        EXPECT_EQ(dayLabel(d, Locale::enUS()), c.dayText);
        EXPECT_EQ(yearLabel(d), toStr(c.day.year));
    }
    Locale german;
    german.shortDate = u"dd.MM.yyyy";
    german.monthNames[10] = u"November";
    german.monthNames[2] = u"März";
    EXPECT_EQ(monthLabel(dayNumber(2026, 3, 5), german), u"März 2026");
    EXPECT_EQ(periodLabel(november(), german), u"01.11.2026 - 30.11.2026");
}

}  // namespace
}  // namespace hb::test
