// The pivot window's logic: its choices to a pivot, the pivot to the list's
// rows (subtotals and totals marked), the chart's bars and the status line.
#include "StatsTestSupport.h"
#include "statistics/PivotView.h"

namespace hb::statistics::test {
namespace {

using reporting::Dimension;
constexpr Dimension L1 = Dimension::List1, L2 = Dimension::List2, User = Dimension::User,
                    Month = Dimension::Month, Year = Dimension::Year;

std::vector<TimeRecord> sample() {
    return {rec(u"john", dayOf(2026, 11, 2), u"Acme", u"Smith", 3600, 10000),
            rec(u"john", dayOf(2026, 11, 3), u"Zenith", u"", 5400, 1),
            rec(u"ann", dayOf(2026, 11, 30), u"Acme", u"Jones", 1800, 2550),
            rec(u"ann", dayOf(2026, 12, 1), u"Acme", u"", 2700)};
}

Locale english() {
    Locale loc;
    loc.decimalSeparator = u".";
    return loc;
}

TEST(PivotView, FormToSpec) {
    struct Case {
        const char* name;
        PivotForm form;
        std::vector<Dimension> rows, columns;
        std::vector<Str> filter;  // the one filter's keys, none when empty
    };
    const Case cases[] = {
        {"two levels by month",
         {{L1, L2}, Month, Measure::Hours, 0, {}, u""},
         {L1, L2},
         {Month},
         {}},
        {"a level repeating the first is dropped",
         {{L1, L1}, Month, Measure::Hours, 0, {}, u""},
         {L1},
         {Month},
         {}},
        {"a level that is the column is dropped, the other kept",
         {{Month, User}, Month, Measure::Hours, 0, {}, u""},
         {User},
         {Month},
         {}},
        {"no level at all: the first dimension that is not the column",
         {{std::nullopt, std::nullopt}, L1, Measure::Hours, 0, {}, u""},
         {L2},
         {L1},
         {}},
        {"no column",
         {{Year, std::nullopt}, std::nullopt, Measure::Amount, 0, {}, u""},
         {Year},
         {},
         {}},
        {"a filter of several keys, blanks dropped",
         {{L1, std::nullopt}, Month, Measure::Hours, 0, User, u" ann ; john;;"},
         {L1},
         {Month},
         {u"ann", u"john"}},
        {"a filter without a value filters nothing",
         {{L1, std::nullopt}, Month, Measure::Hours, 0, User, u" ; "},
         {L1},
         {Month},
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const PivotSpec spec = specFrom(c.form);
        EXPECT_EQ(spec.rows, c.rows);
        EXPECT_EQ(spec.columns, c.columns);
        EXPECT_EQ(spec.measure, c.form.measure);
        if (c.filter.empty()) {
            EXPECT_TRUE(spec.filters.empty());
        } else {
            ASSERT_EQ(spec.filters.size(), 1u);
            EXPECT_EQ(spec.filters[0].dimension, *c.form.filterDimension);
            EXPECT_EQ(spec.filters[0].values, c.filter);
        }
    }
}

TEST(PivotView, Periods) {
    const DayNumber today = dayOf(2026, 11, 25);  // a Wednesday
    struct Case {
        std::size_t choice;
        reporting::Period expected;
    };
    const Case cases[] = {
        {0, {}},
        {1, {dayOf(2026, 11, 23), dayOf(2026, 11, 29)}},
        {4, {dayOf(2026, 10, 1), dayOf(2026, 10, 31)}},
        {6, {dayOf(2025, 1, 1), dayOf(2025, 12, 31)}},
        {99, {dayOf(2025, 1, 1), dayOf(2025, 12, 31)}},  // out of range: the last choice
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.choice);
        PivotForm form;
        form.period = c.choice;
        const reporting::Period p = periodFrom(form, today, 0);
        EXPECT_EQ(p.first, c.expected.first);
        EXPECT_EQ(p.last, c.expected.last);
    }
}

// The list of company x person by month: labels, subtotal and total rows,
// cells with two decimals, empty cells blank; the grand total equals the
// core's.
TEST(PivotView, GridShowsSubtotalsAndTotals) {
    PivotForm form;
    form.rows = {L1, L2};
    const PivotTable table = pivot(sample(), specFrom(form), english());
    const PivotTexts t;
    const PivotGrid grid = pivotGrid(table, {u"Company", u"Person", u""}, t, english());

    std::vector<Str> captions;
    for (const PivotGridColumn& c : grid.columns)
        captions.push_back(c.caption + (c.number ? u"#" : u""));
    EXPECT_EQ(captions, (std::vector<Str>{u"Company", u"Person", u"November 2026#",
                                          u"December 2026#", u"Total#"}));

    struct Row {
        std::vector<Str> cells;
        bool total;
    };
    const Row expected[] = {
        {{u"Acme", u"Jones", u"0.50", u"", u"0.50"}, false},
        {{u"Acme", u"Smith", u"1.00", u"", u"1.00"}, false},
        {{u"Acme", u"not billed", u"", u"0.75", u"0.75"}, false},
        {{u"Acme", u"Total", u"1.50", u"0.75", u"2.25"}, true},
        {{u"Zenith", u"not billed", u"1.50", u"", u"1.50"}, false},
        {{u"Zenith", u"Total", u"1.50", u"", u"1.50"}, true},
        {{u"Total", u"", u"3.00", u"0.75", u"3.75"}, true},
    };
    ASSERT_EQ(grid.rows.size(), std::size(expected));
    for (std::size_t i = 0; i < grid.rows.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(grid.rows[i].cells, expected[i].cells);
        EXPECT_EQ(grid.rows[i].total, expected[i].total);
    }
    EXPECT_EQ(grid.rows.back().level, 0u);
    EXPECT_EQ(grid.rows.back().cells.back(),
              reporting::decimalText(reporting::scaledHours(table.grandTotal().seconds), 2, 2,
                                     english()));
}

TEST(PivotView, ChartStacksInnermostColumnsPerRowGroup) {
    PivotForm form;
    form.rows = {L1, std::nullopt};
    form.measure = Measure::Amount;
    const PivotChart chart = pivotChart(pivot(sample(), specFrom(form), english()), PivotTexts{});
    EXPECT_EQ(chart.series, (std::vector<Str>{u"November 2026", u"December 2026"}));
    ASSERT_EQ(chart.bars.size(), 2u);
    EXPECT_EQ(chart.bars[0].label, u"Acme");
    EXPECT_EQ(chart.bars[0].parts, (std::vector<double>{125.50, 0.0}));
    EXPECT_EQ(chart.bars[1].label, u"Zenith");
    EXPECT_DOUBLE_EQ(chart.bars[1].total, 0.01);
    EXPECT_DOUBLE_EQ(chart.largest, 125.50);

    form.column.reset();  // no columns: one series, the measure
    const PivotChart single = pivotChart(pivot(sample(), specFrom(form), english()), PivotTexts{});
    EXPECT_EQ(single.series, (std::vector<Str>{u"Amount"}));
    ASSERT_EQ(single.bars.size(), 2u);
    EXPECT_EQ(single.bars[0].parts.size(), 1u);
}

TEST(PivotView, StatusAndTexts) {
    PivotForm form;
    const PivotTexts t;
    EXPECT_EQ(pivotStatus(pivot(sample(), specFrom(form), english()), t, english()),
              u"4 records, Hours 3.75");
    form.filterDimension = User;
    form.filterValue = u"ANN";
    EXPECT_EQ(pivotStatus(pivot(sample(), specFrom(form), english()), t, english()),
              u"2 records, Hours 1.25");
    form.filterValue = u"nobody";
    EXPECT_EQ(pivotStatus(pivot(sample(), specFrom(form), english()), t, english()), t.noRecords);

    Phrases p;
    p.LNGSTATISTICS = u"Statistik";
    p.LNGHOURS = u"Stunden";
    p.LNGALL = u"Alle";
    const PivotTexts german = pivotTextsFrom(p);
    EXPECT_EQ(german.caption, u"Hourbook for Outlook - Statistik");
    EXPECT_EQ(german.periods[0], u"Alle");
    EXPECT_EQ(measureChoices(german)[0], u"Stunden");
    EXPECT_EQ(dimensionChoices({u"Firma", u"", u""}, german)[0], u"Firma");
    EXPECT_EQ(dimensionChoices({u"Firma", u"", u""}, german)[1], u"List 2");
}

}  // namespace
}  // namespace hb::statistics::test
