// The summary tree: grouping orders, labels, order of groups, totals that
// add up; the hours texts.
#include <random>

#include "ReportTestSupport.h"
#include "reporting/Aggregation.h"

namespace hb::test {
namespace {

TimeRecord rec(int day, Str user, BillingValues values, std::int64_t seconds, int month = 11) {
    TimeRecord r;
    r.user = std::move(user);
    r.entryId = u"id";
    r.day = dayOf(day, month);
    r.start = Date{static_cast<double>(r.day) + 0.375};
    r.end = r.start;
    r.values = std::move(values);
    r.seconds = seconds;
    r.roundedSeconds = (seconds + 899) / 900 * 900;
    r.amount = amountOf(r.roundedSeconds, Currency::fromUnits(100));
    return r;
}

// The tree as lines: depth-indented "label seconds/records".
void lines(const SummaryNode& n, int depth, std::vector<std::string>& out) {
    out.push_back(std::string(static_cast<std::size_t>(depth) * 2, ' ') + u8(n.label) + " " +
                  std::to_string(n.seconds / 60) + "/" + std::to_string(n.records));
    for (const SummaryNode& c : n.children)
        lines(c, depth + 1, out);
}
std::vector<std::string> lines(const SummaryNode& n) {
    std::vector<std::string> out;
    lines(n, 0, out);
    return out;
}

// Every node's totals are the sums of its children's, and its children
// group by the next dimension of the grouping.
void expectAddsUp(const SummaryNode& n, const std::vector<Dimension>& grouping, std::size_t level) {
    if (n.children.empty()) {
        EXPECT_EQ(level, grouping.size());
        return;
    }
    std::int64_t seconds = 0, rounded = 0, amount = 0;
    std::size_t records = 0;
    for (const SummaryNode& c : n.children) {
        EXPECT_EQ(c.dimension, grouping[level]);
        seconds += c.seconds;
        rounded += c.roundedSeconds;
        amount += c.amount.scaled;
        records += c.records;
        expectAddsUp(c, grouping, level + 1);
    }
    EXPECT_EQ(seconds, n.seconds);
    EXPECT_EQ(rounded, n.roundedSeconds);
    EXPECT_EQ(amount, n.amount.scaled);
    EXPECT_EQ(records, n.records);
}

std::vector<TimeRecord> sample() {
    return {
        rec(24, u"john", {u"Zenith", u"Smith", u""}, 60 * M),
        rec(2, u"john", {u"acme", u"Jones", u"Travel"}, 30 * M),
        rec(24, u"anna", {u"", u"Smith", u""}, 15 * M),
        rec(30, u"john", {u"Acme", u"Smith", u""}, 90 * M),
        rec(1, u"anna", {u"Zenith", u"", u""}, 45 * M, 12),
    };
}

TEST(Aggregation, GroupingOrdersAndLabels) {
    using D = Dimension;
    struct Case {
        std::vector<Dimension> grouping;
        std::vector<std::string> tree;
    };
    const Case cases[] = {
        {{}, {" 240/5"}},
        // Groups alphabetically without regard to case, not billed last.
        {{D::List1, D::List2},
         {" 240/5", "  Acme 90/1", "    Smith 90/1", "  acme 30/1", "    Jones 30/1",
          "  Zenith 105/2", "    Smith 60/1", "    not billed 45/1", "  not billed 15/1",
          "    Smith 15/1"}},
        {{D::List2, D::List1},
         {" 240/5", "  Jones 30/1", "    acme 30/1", "  Smith 165/3", "    Acme 90/1",
          "    Zenith 60/1", "    not billed 15/1", "  not billed 45/1", "    Zenith 45/1"}},
        {{D::List3}, {" 240/5", "  Travel 30/1", "  not billed 210/4"}},
        {{D::Month, D::User},
         {" 240/5", "  November 2026 195/4", "    anna 15/1", "    john 180/3",
          "  December 2026 45/1", "    anna 45/1"}},
        {{D::Week}, {" 240/5", "  2026-W45 30/1", "  2026-W48 75/2", "  2026-W49 135/2"}},
        {{D::Day},
         {" 240/5", "  11/2/2026 30/1", "  11/24/2026 75/2", "  11/30/2026 90/1",
          "  12/1/2026 45/1"}},
        {{D::Year, D::List1, D::User},
         {" 240/5", "  2026 240/5", "    Acme 90/1", "      john 90/1", "    acme 30/1",
          "      john 30/1", "    Zenith 105/2", "      anna 45/1", "      john 60/1",
          "    not billed 15/1", "      anna 15/1"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.tree));
        const SummaryNode root = aggregate(sample(), c.grouping, Locale::enUS());
        EXPECT_EQ(lines(root), c.tree);
        expectAddsUp(root, c.grouping, 0);
    }
}

TEST(Aggregation, EveryGroupingAddsUpToTheGrandTotal) {
    // Random records, every ordered choice of up to three dimensions.
    std::mt19937 random(7);
    const Str companies[] = {u"", u"Acme", u"Zenith", u"acme"};
    const Str people[] = {u"", u"Smith", u"Jones"};
    const Str users[] = {u"anna", u"john"};
    std::vector<TimeRecord> records;
    std::int64_t seconds = 0, amount = 0;
    for (int i = 0; i < 150; ++i) {
        TimeRecord r =
            rec(1, users[random() % 2], {companies[random() % 4], people[random() % 3], u""},
                static_cast<std::int64_t>(random() % 40000));
        r.day = dayOf(1, 1, 2026) + static_cast<DayNumber>(random() % 800);
        seconds += r.seconds;
        amount += r.amount.scaled;
        records.push_back(r);
    }
    const Dimension all[] = {Dimension::List1, Dimension::List2, Dimension::List3, Dimension::Day,
                             Dimension::Week,  Dimension::Month, Dimension::Year,  Dimension::User};
    for (const Dimension a : all) {
        for (const Dimension b : all) {
            for (const Dimension c : all) {
                if (a == b || b == c || a == c) continue;
                const std::vector<Dimension> grouping{a, b, c};
                const SummaryNode root = aggregate(records, grouping, Locale::enUS());
                ASSERT_EQ(root.seconds, seconds);
                ASSERT_EQ(root.amount.scaled, amount);
                ASSERT_EQ(root.records, records.size());
                expectAddsUp(root, grouping, 0);
                if (HasFailure()) return;
            }
        }
    }
}

TEST(Aggregation, RecordsSortedByDayAndStart) {
    std::vector<TimeRecord> records = sample();
    records[0].start.days += 0.1;  // later on the 24th than anna's record
    sortRecords(records);
    std::vector<std::pair<int, Str>> order;
    for (const TimeRecord& r : records)
        order.emplace_back(civilDate(r.day).day, r.user);
    EXPECT_EQ(order, (std::vector<std::pair<int, Str>>{
                         {2, u"john"}, {24, u"anna"}, {24, u"john"}, {30, u"john"}, {1, u"anna"}}));
}

TEST(Aggregation, HoursTexts) {
    Locale german;
    german.decimalSeparator = u",";
    struct Case {
        std::int64_t seconds;
        const char16_t* decimal;
        const char16_t* german;
        const char16_t* hoursMinutes;
    };
    const Case cases[] = {
        {0, u"0.00", u"0,00", u"0:00"},
        {7 * H + 15 * M, u"7.25", u"7,25", u"7:15"},
        {17, u"0.00", u"0,00", u"0:00"},  // under a half hundredth, under half a minute
        {18, u"0.01", u"0,01", u"0:00"},  // 0.005 h goes up
        {30, u"0.01", u"0,01", u"0:01"},  // half a minute goes up
        {H + 59 * M + 59, u"2.00", u"2,00", u"2:00"},
        {100 * H + 6 * M, u"100.10", u"100,10", u"100:06"},
        {-90 * M, u"-1.50", u"-1,50", u"-1:30"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.seconds);
        EXPECT_EQ(formatHours(c.seconds, HoursFormat::Decimal, Locale::enUS()), c.decimal);
        EXPECT_EQ(formatHours(c.seconds, HoursFormat::Decimal, german), c.german);
        EXPECT_EQ(formatHours(c.seconds, HoursFormat::HoursMinutes, german), c.hoursMinutes);
    }
    EXPECT_DOUBLE_EQ(hoursOf(2700), 0.75);
}

}  // namespace
}  // namespace hb::test
