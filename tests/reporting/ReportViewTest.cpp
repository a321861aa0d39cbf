// What the report window shows, without the window: the periods its choices
// stand for, the options a form makes, hours and amounts as text, the rows
// of the summary tree and of the detailed list, its texts in the user's
// language, and the messages of a failed run.
#include <gtest/gtest.h>

#include "common/AutomationError.h"
#include "common/DateTime.h"
#include "reporting/RecordStore.h"
#include "reporting/ReportView.h"

namespace hb::reporting {
namespace {

DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(dt::serial(y, m, d));
}

Locale german() {
    Locale l;
    l.decimalSeparator = u",";
    l.thousandSeparator = u".";
    l.shortDate = u"dd.MM.yyyy";
    l.longTime = u"HH:mm:ss";
    return l;
}

TEST(ReportViewPeriods, EachChoiceCoversItsDays) {
    const Period custom{day(2026, 3, 2), day(2026, 3, 9)};
    struct Case {
        const char* name;
        DayNumber today;
        PeriodChoice choice;
        Period expected;
    };
    const Case cases[] = {
        {"week of a Wednesday",
         day(2026, 11, 25),
         PeriodChoice::ThisWeek,
         {day(2026, 11, 23), day(2026, 11, 29)}},
        {"week of a Monday",
         day(2026, 11, 23),
         PeriodChoice::ThisWeek,
         {day(2026, 11, 23), day(2026, 11, 29)}},
        {"week of a Sunday",
         day(2026, 11, 29),
         PeriodChoice::ThisWeek,
         {day(2026, 11, 23), day(2026, 11, 29)}},
        {"last week across a year",
         day(2027, 1, 6),
         PeriodChoice::LastWeek,
         {day(2026, 12, 28), day(2027, 1, 3)}},
        {"this month",
         day(2026, 11, 25),
         PeriodChoice::ThisMonth,
         {day(2026, 11, 1), day(2026, 11, 30)}},
        {"leap February",
         day(2024, 2, 10),
         PeriodChoice::ThisMonth,
         {day(2024, 2, 1), day(2024, 2, 29)}},
        {"last month in January",
         day(2027, 1, 15),
         PeriodChoice::LastMonth,
         {day(2026, 12, 1), day(2026, 12, 31)}},
        {"last month of March",
         day(2025, 3, 31),
         PeriodChoice::LastMonth,
         {day(2025, 2, 1), day(2025, 2, 28)}},
        {"this year",
         day(2026, 11, 25),
         PeriodChoice::ThisYear,
         {day(2026, 1, 1), day(2026, 12, 31)}},
        {"custom", day(2026, 11, 25), PeriodChoice::Custom, custom},
    };
    for (const Case& c : cases)
        EXPECT_EQ(periodOf(c.choice, c.today, custom), c.expected) << c.name;
}

TEST(ReportViewForm, OptionsKeepTheChosenLevelsInOrderOnce) {
    ReportForm form;
    form.period = PeriodChoice::LastMonth;
    form.grouping = {Dimension::Month, Dimension::List3, Dimension::Month};
    form.hoursFormat = HoursFormat::HoursMinutes;
    form.rounding = {15, RoundingDirection::Up};
    form.overlapOnce = true;
    const ReportOptions o = optionsFrom(form, day(2026, 11, 25));
    EXPECT_EQ(o.period, (Period{day(2026, 10, 1), day(2026, 10, 31)}));
    EXPECT_EQ(o.grouping, (std::vector<Dimension>{Dimension::Month, Dimension::List3}));
    EXPECT_EQ(o.hoursFormat, HoursFormat::HoursMinutes);
    EXPECT_EQ(o.rounding.minutes, 15);
    EXPECT_EQ(o.rounding.direction, RoundingDirection::Up);
    EXPECT_TRUE(o.overlapOnce);

    form.grouping = {Dimension::List2, std::nullopt, Dimension::Day};
    EXPECT_EQ(optionsFrom(form, day(2026, 11, 25)).grouping,
              (std::vector<Dimension>{Dimension::List2, Dimension::Day}));
}

TEST(ReportViewForm, ACustomRangeEndingBeforeItStartsIsRefused) {
    const ReportTexts t;
    ReportForm form;
    form.period = PeriodChoice::Custom;
    form.custom = {day(2026, 5, 2), day(2026, 5, 1)};
    EXPECT_EQ(formProblem(form, t), t.endBeforeStart);
    form.custom = {day(2026, 5, 2), day(2026, 5, 2)};
    EXPECT_EQ(formProblem(form, t), std::nullopt);
    // The pickers are not used for the other choices.
    form.custom = {day(2026, 5, 2), day(2026, 5, 1)};
    form.period = PeriodChoice::ThisWeek;
    EXPECT_EQ(formProblem(form, t), std::nullopt);
}

TEST(ReportViewText, HoursInBothFormats) {
    struct Case {
        std::int64_t seconds;
        const char16_t* decimal;
        const char16_t* hoursMinutes;
    };
    const Case cases[] = {
        {0, u"0.00", u"0:00"},
        {27000, u"7.50", u"7:30"},
        {17, u"0.00", u"0:00"},
        {18, u"0.01", u"0:00"},
        {29, u"0.01", u"0:00"},
        {30, u"0.01", u"0:01"},
        {3599, u"1.00", u"1:00"},
        {3 * 3600 + 20 * 60, u"3.33", u"3:20"},
        {-5400, u"-1.50", u"-1:30"},
        {1000 * 3600, u"1000.00", u"1000:00"},
        {59 * 60 + 31, u"0.99", u"1:00"},
    };
    const Locale us;
    for (const Case& c : cases) {
        EXPECT_EQ(formatHours(c.seconds, HoursFormat::Decimal, us), c.decimal) << c.seconds;
        EXPECT_EQ(formatHours(c.seconds, HoursFormat::HoursMinutes, us), c.hoursMinutes)
            << c.seconds;
    }
    EXPECT_EQ(formatHours(27000, HoursFormat::Decimal, german()), u"7,50");
}

TEST(ReportViewText, AmountsWithTwoPlacesAndGroupedThousands) {
    struct Case {
        std::int64_t scaled;
        const char16_t* us;
        const char16_t* de;
    };
    const Case cases[] = {
        {0, u"0.00", u"0,00"},
        {12345678, u"1,234.57", u"1.234,57"},
        {50, u"0.01", u"0,01"},
        {49, u"0.00", u"0,00"},
        {-1250000, u"-125.00", u"-125,00"},
        {1234567890000, u"123,456,789.00", u"123.456.789,00"},
        {9990000, u"999.00", u"999,00"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(amountText(Currency{c.scaled}, Locale{}, true), c.us) << c.scaled;
        EXPECT_EQ(amountText(Currency{c.scaled}, german(), true), c.de) << c.scaled;
    }
}

TEST(ReportViewText, TimesLeaveOutTheSeconds) {
    struct Case {
        const char16_t* longTime;
        const char16_t* expected;
    };
    const Case cases[] = {
        {u"h:mm:ss tt", u"2:05 PM"},
        {u"HH:mm:ss", u"14:05"},
        {u"H.mm.ss", u"14.05"},
        {u"HH:mm", u"14:05"},
    };
    const Date time{dt::serial(2026, 11, 3) + dt::timeFraction(14, 5, 40)};
    for (const Case& c : cases) {
        Locale l;
        l.longTime = c.longTime;
        EXPECT_EQ(timeText(time, l), c.expected) << toUtf8(c.longTime);
    }
    EXPECT_EQ(dayText(day(2026, 11, 3), german()), u"03.11.2026");
    EXPECT_EQ(dayText(day(2026, 11, 3), Locale{}), u"11/3/2026");
}

// Acme (Ann, not billed), Globex: with its totals at every level.
Report twoCompanies() {
    Report r;
    r.listCaptions = {u"Company", u"Person", u"Extra"};
    r.options.period = {day(2026, 11, 2), day(2026, 11, 6)};
    SummaryNode ann{Dimension::List2, u"Ann", 5400, 5400, Currency{1500000}, 1, {}};
    SummaryNode nobody{Dimension::List2, u"", 1800, 3600, Currency{1000000}, 1, {}};
    SummaryNode acme{Dimension::List1, u"Acme", 7200, 9000, Currency{2500000}, 2, {ann, nobody}};
    SummaryNode globex{Dimension::List1, u"Globex", 27000, 27000, Currency{7500000}, 1, {}};
    r.total = {Dimension::List1, u"", 34200, 36000, Currency{10000000}, 3, {acme, globex}};
    TimeRecord rec;
    rec.day = day(2026, 11, 3);
    rec.start = Date{rec.day + dt::timeFraction(9, 0, 0)};
    rec.end = Date{rec.day + dt::timeFraction(10, 30, 0)};
    rec.subject = u"Design review";
    rec.values = {u"Acme", u"Ann", u""};
    rec.seconds = 5400;
    rec.roundedSeconds = 5400;
    rec.amount = Currency{1500000};
    r.records = {rec};
    return r;
}

TEST(ReportViewRows, TheTreeHasTheTotalAtItsRootAndSubtotalsBelow) {
    const ReportTexts t;
    const TreeRow root = summaryTree(twoCompanies(), HoursFormat::Decimal, t, Locale{});
    EXPECT_EQ(root.text, u"Total: 9.50 h, rounded 10.00 h, 1,000.00");
    ASSERT_EQ(root.children.size(), 2u);
    EXPECT_EQ(root.children[0].text, u"Acme: 2.00 h, rounded 2.50 h, 250.00");
    ASSERT_EQ(root.children[0].children.size(), 2u);
    EXPECT_EQ(root.children[0].children[0].text, u"Ann: 1.50 h, rounded 1.50 h, 150.00");
    EXPECT_EQ(root.children[0].children[1].text, u"(not billed): 0.50 h, rounded 1.00 h, 100.00");
    EXPECT_EQ(root.children[1].text, u"Globex: 7.50 h, rounded 7.50 h, 750.00");
    EXPECT_TRUE(root.children[1].children.empty());

    const TreeRow hm = summaryTree(twoCompanies(), HoursFormat::HoursMinutes, t, Locale{});
    EXPECT_EQ(hm.children[0].children[1].text, u"(not billed): 0:30 h, rounded 1:00 h, 100.00");
}

TEST(ReportViewRows, TheListHasOneRowPerRecordInTheColumnsOrder) {
    const Report r = twoCompanies();
    const std::vector<ListColumn> columns = listColumns(r, ReportTexts{});
    ASSERT_EQ(columns.size(), 10u);
    EXPECT_EQ(columns[4].caption, u"Company");
    EXPECT_EQ(columns[6].caption, u"Extra");
    EXPECT_FALSE(columns[3].number);
    EXPECT_TRUE(columns[7].number && columns[8].number && columns[9].number);

    const auto rows = listRows(r, HoursFormat::HoursMinutes, german());
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0], (std::vector<Str>{u"03.11.2026", u"09:00", u"10:30", u"Design review",
                                         u"Acme", u"Ann", u"", u"1:30", u"1:30", u"150,00"}));
}

TEST(ReportViewRows, SortingByAColumnOrdersByItsValue) {
    Report r;
    auto add = [&](DayNumber d, int hour, const char16_t* subject, const char16_t* company,
                   std::int64_t seconds) {
        TimeRecord rec;
        rec.day = d;
        rec.start = Date{d + dt::timeFraction(hour, 0, 0)};
        rec.end = Date{rec.start.days + seconds / 86400.0};
        rec.subject = subject;
        rec.values = {company, u"", u""};
        rec.seconds = rec.roundedSeconds = seconds;
        rec.amount = Currency{seconds * 100};
        r.records.push_back(rec);
    };
    add(day(2026, 11, 3), 9, u"banana", u"Globex", 3600);
    add(day(2026, 11, 2), 14, u"Apple", u"acme", 7200);
    add(day(2026, 11, 2), 8, u"cherry", u"Acme", 1800);
    add(day(2026, 11, 4), 10, u"apple", u"", 3600);
    using Order = std::vector<std::size_t>;
    struct Case {
        std::size_t column;
        bool ascending;
        Order expected;
    };
    const Case cases[] = {
        {0, true, {2, 1, 0, 3}},                            // day, then start
        {0, false, {3, 0, 1, 2}}, {1, true, {2, 0, 3, 1}},  // start time of day
        {3, true, {1, 3, 0, 2}},   // letter case ignored; equal keep their order
        {4, true, {3, 1, 2, 0}},   // "", acme = Acme, Globex
        {7, true, {2, 0, 3, 1}},   // hours
        {7, false, {1, 0, 3, 2}},  // equal keep their order descending too
        {9, false, {1, 0, 3, 2}},  // amount
    };
    for (const Case& c : cases)
        EXPECT_EQ(sortedOrder(r, c.column, c.ascending), c.expected)
            << "column " << c.column << (c.ascending ? " up" : " down");
}

TEST(ReportViewRows, CopiedRowsPasteAsASpreadsheetsCells) {
    const std::vector<ListColumn> columns = {{u"Subject"}, {u"Hours", true}};
    EXPECT_EQ(tabSeparated(columns, {{u"Review", u"1.50"}, {u"Two\tlines\r\nhere", u""}}),
              u"Subject\tHours\r\nReview\t1.50\r\nTwo lines  here\t\r\n");
    EXPECT_EQ(tabSeparated(columns, {}), u"Subject\tHours\r\n");
}

TEST(ReportViewRows, TheStatusLineSumsUpTheRun) {
    const ReportTexts t;
    EXPECT_EQ(statusText(twoCompanies(), HoursFormat::Decimal, t, Locale{}),
              u"1 record, 11/2/2026 - 11/6/2026, 9.50 h, 1,000.00");
    EXPECT_EQ(statusText(Report{}, HoursFormat::Decimal, t, Locale{}), t.noRecords);
}

TEST(ReportViewTexts, PhrasesReplaceTheEnglishWhereTheTableHasThem) {
    Phrases p;
    p.LNGREPORT = u"Bericht";
    p.LNGDATE = u"Datum";
    p.LNGWEEK = u"Woche";
    p.LNGSUM = u"Summe";
    const ReportTexts t = reportTextsFrom(p);
    EXPECT_EQ(t.caption, u"Hourbook for Outlook - Bericht");
    EXPECT_EQ(t.date, u"Datum");
    EXPECT_EQ(t.week, u"Woche");
    EXPECT_EQ(t.total, u"Summe");
    EXPECT_EQ(t.subject, u"Subject");  // no phrase: English
    EXPECT_EQ(reportTextsFrom(Phrases{}).caption, u"Hourbook for Outlook report");

    const std::array<Str, kReportLists> lists = {u"Firma", u"Person", u"Projekt"};
    EXPECT_EQ(dimensionCaption(Dimension::List3, lists, t), u"Projekt");
    EXPECT_EQ(dimensionCaption(Dimension::Week, lists, t), u"Woche");
    EXPECT_EQ(roundingChoices(ReportTexts{}),
              (std::vector<Str>{u"None", u"6 min", u"15 min", u"30 min", u"60 min"}));
}

TEST(ReportViewMessages, AFailureSaysWhatFailedAndWhy) {
    auto failureOf = [](auto error) { return std::make_exception_ptr(error); };
    const Str what = u"The report could not be made.";
    EXPECT_EQ(failureText(what, failureOf(AutomationError(429, u"Outlook is not available."))),
              what + u"\n\nOutlook is not available. (429)");
    EXPECT_EQ(failureText(what, failureOf(StoreError("cannot reach the server db1"))),
              what + u"\n\ncannot reach the server db1");
    EXPECT_EQ(failureText(what, failureOf(42)), what + u"\n\nAn unexpected error occurred.");
}

TEST(ReportViewMessages, ExportFilesAreNamedAfterThePeriod) {
    const Period november{day(2026, 11, 1), day(2026, 11, 30)};
    EXPECT_EQ(exportFileName(ExportFormat::Csv, november),
              u"Hourbook report 2026-11-01 to 2026-11-30.csv");
    EXPECT_TRUE(exportFileName(ExportFormat::Xlsx, november).ends_with(u"30.xlsx"));
    EXPECT_EQ(exportExtension(ExportFormat::Html), u"html");
}

}  // namespace
}  // namespace hb::reporting
