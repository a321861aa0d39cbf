// The pivot: groups in the report's order, subtotals per outer group,
// totals of rows and columns, filters, exact money, and its totals equal
// to the report's aggregation of the same records.
#include <random>

#include "StatsTestSupport.h"
#include "reporting/Aggregation.h"
#include "statistics/Pivot.h"

namespace hb::statistics::test {
namespace {

using reporting::Dimension;
constexpr Dimension L1 = Dimension::List1, L2 = Dimension::List2, User = Dimension::User,
                    Week = Dimension::Week, Month = Dimension::Month, Year = Dimension::Year,
                    Day = Dimension::Day;

std::vector<TimeRecord> sample() {
    return {rec(u"john", dayOf(2026, 11, 2), u"Acme", u"Smith", 3600, 10000),
            rec(u"john", dayOf(2026, 11, 3), u"Zenith", u"", 5400, 1),
            rec(u"ann", dayOf(2026, 11, 30), u"Acme", u"Jones", 1800, 2550),
            rec(u"ann", dayOf(2026, 12, 1), u"Acme", u"", 2700),
            rec(u"john", dayOf(2026, 12, 15), u"", u"Smith", 900),
            rec(u"john", dayOf(2025, 12, 31), u"beta", u"Jones", 7200, 33)};
}

std::string header(const PivotHeader& h, std::size_t dimensions) {
    std::string out;
    for (const Str& l : h.labels)
        out += (out.empty() ? "" : "/") + toUtf8(l);
    if (h.level < dimensions || h.labels.empty()) out += out.empty() ? "Total" : "/Total";
    return out;
}

// The table as lines: the columns' headers, then each row's header and its
// cells in minutes ("-" for a cell without records).
std::vector<std::string> render(const PivotTable& t) {
    std::vector<std::string> out(1);
    for (const PivotHeader& c : t.columns)
        out[0] += (out[0].empty() ? "" : ",") + header(c, t.request.columns.size());
    for (std::size_t r = 0; r < t.rows.size(); ++r) {
        std::string line = header(t.rows[r], t.request.rows.size()) + ":";
        for (std::size_t c = 0; c < t.columns.size(); ++c) {
            const PivotFigures& f = t.at(r, c);
            line += (c ? "," : " ") + (f.records ? std::to_string(f.seconds / 60) : "-");
        }
        out.push_back(line);
    }
    return out;
}

TEST(Pivot, Tables) {
    struct Case {
        const char* name;
        PivotSpec request;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {"companies by month: months by time, not billed last, letter case ignored",
         {{L1}, {Month}, Measure::Hours, {}},
         {"December 2025,November 2026,December 2026,Total", "Acme: -,90,45,135",
          "beta: 120,-,-,120", "Zenith: -,90,-,90", "not billed: -,-,15,15",
          "Total: 120,180,60,360"}},
        {"nested rows: a subtotal after each company's people",
         {{L1, L2}, {}, Measure::Hours, {}},
         {"Total", "Acme/Jones: 30", "Acme/Smith: 60", "Acme/not billed: 45", "Acme/Total: 135",
          "beta/Jones: 120", "beta/Total: 120", "Zenith/not billed: 90", "Zenith/Total: 90",
          "not billed/Smith: 15", "not billed/Total: 15", "Total: 360"}},
        {"nested columns and a filter of values in any letter case",
         {{User}, {Year, Month}, Measure::Hours, {{L1, {u"acme", u"ZENITH"}}}},
         {"2026/November 2026,2026/December 2026,2026/Total,Total", "ann: 30,45,75,75",
          "john: 150,-,150,150", "Total: 180,45,225,225"}},
        {"filters on two dimensions all apply",
         {{Week}, {}, Measure::Hours, {{User, {u"john"}}, {Month, {u"2026-11"}}}},
         {"Total", "2026-W45: 150", "Total: 150"}},
        {"a filter of days",
         {{L1}, {}, Measure::Hours, {{Day, {u"2026-11-02", u"2026-11-30"}}}},
         {"Total", "Acme: 90", "Total: 90"}},
        {"a filter of records without a value",
         {{User}, {}, Measure::Hours, {{L2, {u""}}}},
         {"Total", "ann: 45", "john: 90", "Total: 135"}},
        {"no dimensions: the grand total alone",
         {{}, {}, Measure::Hours, {}},
         {"Total", "Total: 360"}},
        {"nothing passes the filters",
         {{L1}, {Month}, Measure::Hours, {{Year, {u"1999"}}}},
         {"Total", "Total: -"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(render(pivot(sample(), c.request, Locale())), c.expected);
    }
}

TEST(Pivot, MoneyAndRoundedHoursAddUpExactly) {
    // A thousand records of a hundredth of a cent: binary fractions would drift.
    std::vector<TimeRecord> records;
    for (int i = 0; i < 1000; ++i) {
        TimeRecord r = rec(i % 2 ? u"ann" : u"john", dayOf(2026, 11, 1 + i % 30), u"Acme", u"", 61);
        r.amount.scaled = 1;
        records.push_back(r);
    }
    const PivotTable t = pivot(records, {{User}, {Month}, Measure::Amount, {}}, Locale());
    EXPECT_EQ(t.grandTotal().amount.scaled, 1000);
    EXPECT_EQ(t.grandTotal().roundedSeconds, 1000 * 900);
    EXPECT_EQ(t.grandTotal().seconds, 1000 * 61);
    EXPECT_EQ(t.at(0, 0).amount.scaled + t.at(1, 0).amount.scaled, 1000);
    EXPECT_EQ(t.records, 1000U);
}

TEST(Pivot, RefusesADimensionTwice) {
    const std::vector<PivotSpec> bad = {
        {{L1}, {L1}, Measure::Hours, {}},
        {{Month, Month}, {}, Measure::Hours, {}},
    };
    for (const PivotSpec& request : bad)
        EXPECT_THROW(pivot(sample(), request, Locale()), PivotError);
}

// Many records of many values, reproducible.
std::vector<TimeRecord> generated(std::size_t n) {
    std::mt19937 random(7);
    const Str companies[] = {u"Acme", u"acme", u"Zenith", u"", u"Beta", u"Omega"};
    const Str people[] = {u"Smith", u"Jones", u""};
    std::vector<TimeRecord> out;
    for (std::size_t i = 0; i < n; ++i) {
        out.push_back(rec(random() % 3 ? u"john" : u"ann",
                          dayOf(2025, 1, 1) + static_cast<DayNumber>(random() % 700),
                          companies[random() % 6], people[random() % 3], random() % 30000,
                          random() % 100000));
    }
    return out;
}

TEST(Pivot, TotalsEqualTheReportsAggregation) {
    const std::vector<TimeRecord> records = generated(5000);
    const Locale loc;
    const PivotTable t = pivot(records, {{L1, L2}, {Month}, Measure::Hours, {}}, loc);
    const reporting::SummaryNode total = reporting::aggregate(records, {L1, L2}, loc);

    const PivotFigures& grand = t.grandTotal();
    EXPECT_EQ(grand.seconds, total.seconds);
    EXPECT_EQ(grand.roundedSeconds, total.roundedSeconds);
    EXPECT_EQ(grand.amount, total.amount);
    EXPECT_EQ(grand.records, total.records);
    // Each company's subtotal row (the total column) against the summary's
    // first level, in the same order, and each person within it.
    const std::size_t last = t.columns.size() - 1;
    std::size_t company = 0, person = 0;
    for (std::size_t r = 0; r + 1 < t.rows.size(); ++r) {
        ASSERT_LT(company, total.children.size());
        const reporting::SummaryNode& c = total.children[company];
        const reporting::SummaryNode& n = t.rows[r].level == 1 ? c : c.children[person];
        EXPECT_EQ(t.rows[r].labels.back(), n.label);
        EXPECT_EQ(t.at(r, last).seconds, n.seconds);
        EXPECT_EQ(t.at(r, last).amount, n.amount);
        EXPECT_EQ(t.at(r, last).records, n.records);
        if (t.rows[r].level == 1) {
            ++company;
            person = 0;
        } else {
            ++person;
        }
    }
    EXPECT_EQ(company, total.children.size());
}

}  // namespace
}  // namespace hb::statistics::test
