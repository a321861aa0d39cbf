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
        const PivotSpec request = specFrom(c.form);
        EXPECT_EQ(request.rows, c.rows);
        EXPECT_EQ(request.columns, c.columns);
        EXPECT_EQ(request.measure, c.form.measure);
        if (c.filter.empty()) {
            EXPECT_TRUE(request.filters.empty());
        } else {
            ASSERT_EQ(request.filters.size(), 1u);
            EXPECT_EQ(request.filters[0].dimension, *c.form.filterDimension);
            EXPECT_EQ(request.filters[0].values, c.filter);
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

// Bars over time: a bar per column group stacked by the outer row groups,
// each as high as its column's total; Shares: a slice per outer row group
// above zero, the shares summing to 1 (without negative totals the slices
// make the grand total).
TEST(PivotView, ChartBarsOverTimeAndShares) {
    constexpr Dimension L2 = Dimension::List2;
    using Bars = std::vector<std::pair<Str, std::vector<double>>>;  // label, parts
    struct Case {
        const char* name;
        PivotForm form;
        std::vector<Str> series;
        Bars bars;
        std::vector<std::pair<double, Str>> slices;  // share, legend
        double refund = 0;                           // an extra company's negative amount
    };
    const std::optional<Dimension> noColumn;
    const Case cases[] = {
        {"only the outer row level counts",
         {{L1, L2}, Month, Measure::Amount, 0, {}, u""},
         {u"Acme", u"Zenith"},
         {{u"November 2026", {125.50, 0.01}}, {u"December 2026", {0.0, 0.0}}},
         {{125.50 / 125.51, u"Acme 100.0%"}, {0.01 / 125.51, u"Zenith 0.0%"}}},
        {"not billed is a group like the others",
         {{L2, std::nullopt}, Month, Measure::Hours, 0, {}, u""},
         {u"Jones", u"Smith", u"not billed"},
         {{u"November 2026", {0.5, 1.0, 1.5}}, {u"December 2026", {0.0, 0.0, 0.75}}},
         {{0.5 / 3.75, u"Jones 13.3%"},
          {1.0 / 3.75, u"Smith 26.7%"},
          {2.25 / 3.75, u"not billed 60.0%"}}},
        {"no columns: one bar, the sum",
         {{L1, std::nullopt}, noColumn, Measure::RoundedHours, 0, {}, u""},
         {u"Acme", u"Zenith"},
         {{u"Sum", {2.25, 1.5}}},
         {{0.6, u"Acme 60.0%"}, {0.4, u"Zenith 40.0%"}}},
        {"columns that are no dates; a zero total is no slice",
         {{L2, std::nullopt}, User, Measure::Amount, 0, User, u"ann"},
         {u"Jones", u"not billed"},
         {{u"ann", {25.50, 0.0}}},
         {{1.0, u"Jones 100.0%"}}},
        {"a negative total is no slice",
         {{L1, std::nullopt}, Month, Measure::Amount, 0, {}, u""},
         {u"Acme", u"Refunds", u"Zenith"},
         {{u"November 2026", {125.50, -50.0, 0.01}}, {u"December 2026", {0.0, 0.0, 0.0}}},
         {{125.50 / 125.51, u"Acme 100.0%"}, {0.01 / 125.51, u"Zenith 0.0%"}},
         -5000},
        {"no records: no bars with parts, no slices",
         {{L1, std::nullopt}, Month, Measure::Hours, 0, User, u"nobody"},
         {},
         {},
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<TimeRecord> records = sample();
        if (c.refund) records.push_back(rec(u"ann", dayOf(2026, 11, 5), u"Refunds", u"", 0, -5000));
        const PivotTable table = pivot(records, specFrom(c.form), english());
        const PivotChart bars = pivotChart(table, ChartKind::BarsOverTime, PivotTexts{}, english());
        EXPECT_EQ(bars.series, c.series);
        EXPECT_TRUE(bars.slices.empty());
        Bars shown;
        double largest = 0;
        for (std::size_t b = 0; b < bars.bars.size(); ++b) {
            shown.emplace_back(bars.bars[b].label, bars.bars[b].parts);
            const std::size_t column = c.form.column ? b : table.columns.size() - 1;
            EXPECT_DOUBLE_EQ(bars.bars[b].total,
                             static_cast<double>(scaledMeasure(
                                 table.at(table.rows.size() - 1, column), table.request.measure)) /
                                 10000.0)
                << "bar " << b;
            largest = std::max(largest, bars.bars[b].total);
        }
        EXPECT_EQ(shown, c.bars);
        EXPECT_DOUBLE_EQ(bars.largest, largest);

        const PivotChart shares = pivotChart(table, ChartKind::Shares, PivotTexts{}, english());
        EXPECT_EQ(shares.kind, ChartKind::Shares);
        EXPECT_TRUE(shares.bars.empty());
        ASSERT_EQ(shares.slices.size(), c.slices.size());
        double sum = 0, values = 0;
        for (std::size_t i = 0; i < shares.slices.size(); ++i) {
            EXPECT_NEAR(shares.slices[i].share, c.slices[i].first, 1e-12) << "slice " << i;
            EXPECT_EQ(shares.slices[i].legend, c.slices[i].second);
            sum += shares.slices[i].share;
            values += shares.slices[i].value;
        }
        if (c.slices.empty()) continue;
        EXPECT_NEAR(sum, 1.0, 1e-12);
        const double grand =
            static_cast<double>(scaledMeasure(table.grandTotal(), table.request.measure)) / 10000.0;
        EXPECT_NEAR(values, grand - c.refund / 100.0, 1e-9);
    }
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
    p.LNGSUM = u"Summe";
    EXPECT_EQ(pivotTextsFrom(p).sum, u"Summe");
    EXPECT_EQ(PivotTexts{}.chartKinds[1], u"Shares");
}

}  // namespace
}  // namespace hb::statistics::test
