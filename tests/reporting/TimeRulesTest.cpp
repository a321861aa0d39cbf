// Calendar entries into time records: each rule family as one table.
#include <numeric>
#include <random>

#include "ReportTestSupport.h"

namespace hb::test {
namespace {

// A record as the tables write it: the day of November, the stretch of the
// day it covers (seconds since midnight) and its counted seconds.
struct Rec {
    int day;
    std::int64_t from;
    std::int64_t to;
    std::int64_t seconds;
    bool operator==(const Rec&) const = default;
};
void PrintTo(const Rec& r, std::ostream* os) {
    *os << "{" << r.day << ", " << r.from << ", " << r.to << ", " << r.seconds << "}";
}

struct Maker {
    ReportEnv env;
    RecordRules rules;
    ReportOptions options;
    RateTable rates;
    Maker() {
        options.period = november();
        rules.personalRate = Currency::fromUnits(80);
    }
    std::vector<TimeRecord> records(const std::vector<CalendarEntry>& entries) {
        BillingReader billing(env.s);
        const RateLookup lookup(rates, rules.personalRate);
        return makeRecords(entries, rules, options, billing, lookup, env.s.strCurrentUser);
    }
    // The counted seconds of each record.
    std::vector<std::int64_t> seconds(const std::vector<CalendarEntry>& entries) {
        std::vector<std::int64_t> out;
        for (const TimeRecord& r : records(entries))
            out.push_back(r.seconds);
        return out;
    }
    std::vector<Rec> recs(const std::vector<CalendarEntry>& entries) {
        std::vector<Rec> out;
        for (const TimeRecord& r : records(entries)) {
            const std::int64_t dayStart = std::int64_t{r.day} * kDaySeconds;
            out.push_back({civilDate(r.day).day, secondsOf(r.start) - dayStart,
                           secondsOf(r.end) - dayStart, r.seconds});
        }
        return out;
    }
};

TEST(TimeRules, DateValuesAndSeconds) {
    const std::pair<double, std::int64_t> cases[] = {
        {0.0, 0},
        {1.5, kDaySeconds + 12 * H},
        {-1.25, -kDaySeconds + 6 * H},  // 29 December 1899, 06:00
        {46350.0 + 9.5 / 24, 46350 * kDaySeconds + 9 * H + 30 * M},
        {46350.0 + 59.4 / 86400, 46350 * kDaySeconds + 59},  // to the nearest second
    };
    for (const auto& [days, seconds] : cases) {
        SCOPED_TRACE(days);
        EXPECT_EQ(secondsOf(Date{days}), seconds);
        EXPECT_EQ(secondsOf(dateOfSeconds(seconds)), seconds);
    }
    EXPECT_EQ(dayOfSeconds(-1), -1);
    EXPECT_EQ(dayOfSeconds(kDaySeconds - 1), 0);
    EXPECT_EQ(dayOfSeconds(kDaySeconds), 1);
}

TEST(TimeRules, SplitAtMidnightWithinThePeriod) {
    struct Case {
        const char* name;
        CalendarEntry e;
        Period period;
        std::vector<Rec> expected;
    };
    const Case cases[] = {
        {"within a day",
         entry(u"a", at(24, 9), at(24, 17, 30)),
         november(),
         {{24, 9 * H, 17 * H + 30 * M, 8 * H + 30 * M}}},
        {"crossing midnight",
         entry(u"a", at(24, 22), at(25, 2, 30)),
         november(),
         {{24, 22 * H, kDaySeconds, 2 * H}, {25, 0, 2 * H + 30 * M, 2 * H + 30 * M}}},
        {"ending at midnight",
         entry(u"a", at(24, 22), at(25)),
         november(),
         {{24, 22 * H, kDaySeconds, 2 * H}}},
        {"three days",
         entry(u"a", at(23, 18), at(25, 6)),
         november(),
         {{23, 18 * H, kDaySeconds, 6 * H}, {24, 0, kDaySeconds, 24 * H}, {25, 0, 6 * H, 6 * H}}},
        {"all-day event of two days",
         allDayEntry(u"a", 24, 2),
         november(),
         {{24, 0, kDaySeconds, 24 * H}, {25, 0, kDaySeconds, 24 * H}}},
        {"clipped by the period",
         entry(u"a", at(23, 20), at(26, 1)),
         {dayOf(24), dayOf(25)},
         {{24, 0, kDaySeconds, 24 * H}, {25, 0, kDaySeconds, 24 * H}}},
        {"crossing into the period",
         entry(u"a", at(31, 23, 0, 0, 10), at(1, 1)),
         november(),
         {{1, 0, 1 * H, 1 * H}}},
        {"outside the period",
         entry(u"a", at(1, 9, 0, 0, 12), at(1, 10, 0, 0, 12)),
         november(),
         {}},
        {"no time", entry(u"a", at(24, 9), at(24, 9)), november(), {}},
        {"ending before it starts", entry(u"a", at(24, 10), at(24, 9)), november(), {}},
        {"seconds",
         entry(u"a", at(24, 9), at(24, 9, 0, 59)),
         november(),
         {{24, 9 * H, 9 * H + 59, 59}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Maker m;
        m.options.period = c.period;
        EXPECT_EQ(m.recs({c.e}), c.expected);
    }
}

TEST(TimeRules, RecordsKeepTheEntrysKeyAndFacts) {
    Maker m;
    CalendarEntry e = entry(u"series", at(24, 22), at(25, 1), u"Acme");
    e.occurrenceStart = at(24, 21);  // an exception moved by an hour
    e.recurring = e.isPrivate = true;
    const auto records = m.records({e});
    ASSERT_EQ(records.size(), 2u);
    for (const TimeRecord& r : records) {
        EXPECT_EQ(r.user, u"john");
        EXPECT_EQ(r.entryId, u"series");
        EXPECT_EQ(r.occurrenceStart, at(24, 21));
        EXPECT_EQ(r.subject, u"Work series");
        EXPECT_TRUE(r.recurring && r.isPrivate && r.billed && !r.allDay);
    }
    EXPECT_EQ(records[0].day, dayOf(24));
    EXPECT_EQ(records[1].day, dayOf(25));
}

TEST(TimeRules, Filters) {
    CalendarEntry plain = entry(u"plain", at(24, 9), at(24, 10));
    CalendarEntry event = allDayEntry(u"event", 24, 1);
    CalendarEntry priv = entry(u"private", at(24, 11), at(24, 12));
    priv.isPrivate = true;
    CalendarEntry occurrence = entry(u"occurrence", at(24, 13), at(24, 14));
    occurrence.recurring = true;
    CalendarEntry privateOccurrence = entry(u"private occurrence", at(24, 15), at(24, 16));
    privateOccurrence.recurring = privateOccurrence.isPrivate = true;
    const std::vector<CalendarEntry> all = {plain, event, priv, occurrence, privateOccurrence};

    struct Case {
        bool events, isPrivate, recurring;
        std::vector<Str> kept;
    };
    const Case cases[] = {
        {false,
         false,
         false,
         {u"event", u"plain", u"private", u"occurrence", u"private occurrence"}},
        {true, false, false, {u"plain", u"private", u"occurrence", u"private occurrence"}},
        {false, true, false, {u"event", u"plain", u"occurrence"}},
        {false, false, true, {u"event", u"plain", u"private"}},
        {true, true, true, {u"plain"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.events << c.isPrivate << c.recurring);
        Maker m;
        m.rules.filterEvents = c.events;
        m.rules.filterPrivate = c.isPrivate;
        m.rules.filterRecurring = c.recurring;
        std::vector<Str> kept;
        for (const TimeRecord& r : m.records(all))
            kept.push_back(r.entryId);
        EXPECT_EQ(kept, c.kept);
    }
}

TEST(TimeRules, Convert24CountsWholeDays) {
    struct Case {
        const char* name;
        bool convert;
        std::int64_t hours;  // seconds a converted day counts
        std::vector<CalendarEntry> entries;
        std::vector<std::int64_t> seconds;
    };
    const Case cases[] = {
        {"all-day event, no conversion",
         false,
         8 * H,
         {allDayEntry(u"a", 24, 2)},
         {24 * H, 24 * H}},
        {"all-day event of two days", true, 8 * H, {allDayEntry(u"a", 24, 2)}, {8 * H, 8 * H}},
        {"seven and a half hours", true, 7 * H + 30 * M, {allDayEntry(u"a", 24, 1)}, {27000}},
        {"a day fully covered by a longer appointment",
         true,
         8 * H,
         {entry(u"a", at(23, 12), at(25, 12))},
         {12 * H, 8 * H, 12 * H}},
        {"a day not quite covered",
         true,
         8 * H,
         {entry(u"a", at(24, 0), at(24, 23, 59))},
         {23 * H + 59 * M}},
        {"no time for a whole day", true, 0, {allDayEntry(u"a", 24, 1)}, {0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Maker m;
        m.rules.convert24 = c.convert;
        m.rules.convert24Seconds = c.hours;
        EXPECT_EQ(m.seconds(c.entries), c.seconds);
    }
}

TEST(TimeRules, LunchComesOffEachWorkedDayOnce) {
    struct Case {
        const char* name;
        std::int64_t lunch;
        std::vector<CalendarEntry> entries;
        std::vector<std::int64_t> seconds;  // in record order
    };
    const Case cases[] = {
        {"one record", 45 * M, {entry(u"a", at(24, 9), at(24, 17))}, {7 * H + 15 * M}},
        // 2700 s in proportion 3:5 is 1012.5 and 1687.5 s: the second left
        // over goes to the earlier record on the tie.
        {"two records, a tie",
         45 * M,
         {entry(u"b", at(24, 13), at(24, 18)), entry(u"a", at(24, 9), at(24, 12))},
         {3 * H - 1013, 5 * H - 1687}},
        // 100 s over 1 h, 2 h and 1 h: 25, 50, 25 with nothing over; then
        // 101 s: 25.25, 50.5, 25.25: the largest remainder (the 2 h) gets it.
        {"three records",
         100,
         {entry(u"a", at(24, 8), at(24, 9)), entry(u"b", at(24, 9), at(24, 11)),
          entry(u"c", at(24, 11), at(24, 12))},
         {H - 25, 2 * H - 50, H - 25}},
        {"largest remainder",
         101,
         {entry(u"a", at(24, 8), at(24, 9)), entry(u"b", at(24, 9), at(24, 11)),
          entry(u"c", at(24, 11), at(24, 12))},
         {H - 25, 2 * H - 51, H - 25}},
        {"a day shorter than lunch",
         45 * M,
         {entry(u"a", at(24, 9), at(24, 9, 20)), entry(u"b", at(24, 10), at(24, 10, 10))},
         {0, 0}},
        {"two days, once each",
         45 * M,
         {entry(u"a", at(24, 20), at(25, 4))},
         {4 * H - 45 * M, 4 * H - 45 * M}},
        {"days apart",
         30 * M,
         {entry(u"a", at(24, 9), at(24, 10)), entry(u"b", at(26, 9), at(26, 9, 20))},
         {30 * M, 0}},
        {"a converted whole day keeps its hours",
         45 * M,
         {allDayEntry(u"a", 24, 1), entry(u"b", at(24, 9), at(24, 11))},
         {8 * H, 2 * H - 45 * M}},
        {"only a converted whole day: no lunch", 45 * M, {allDayEntry(u"a", 24, 1)}, {8 * H}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Maker m;
        m.rules.convert24 = true;
        m.rules.convert24Seconds = 8 * H;
        m.rules.removeLunch = true;
        m.rules.removeLunchSeconds = c.lunch;
        EXPECT_EQ(m.seconds(c.entries), c.seconds);
    }
}

TEST(TimeRules, LunchAddsUpOverManyRecords) {
    // Seven records of awkward lengths on one day: the day loses exactly the
    // lunch, no record goes below zero, and without the switch nothing goes.
    std::vector<CalendarEntry> entries;
    for (int i = 0; i < 7; ++i) {
        entries.push_back(entry(Str(1, char16_t(u'a' + i)), at(24, 8 + i, 0),
                                at(24, 8 + i, 7 * i + 1, (13 * i + 7) % 60)));
    }
    for (const bool on : {false, true}) {
        Maker m;
        m.rules.removeLunch = on;
        m.rules.removeLunchSeconds = 2701;
        std::int64_t before = 0, after = 0;
        for (const CalendarEntry& e : entries)
            before += secondsOf(e.end) - secondsOf(e.start);
        for (const TimeRecord& r : m.records(entries)) {
            EXPECT_GE(r.seconds, 0);
            after += r.seconds;
        }
        EXPECT_EQ(after, before - (on ? 2701 : 0));
    }
}

TEST(TimeRules, OverlapCountedOnceOnRequest) {
    struct Case {
        const char* name;
        std::vector<CalendarEntry> entries;
        std::vector<std::int64_t> both;  // the default: every appointment counts in full
        std::vector<std::int64_t> once;
    };
    const Case cases[] = {
        {"partly",
         {entry(u"a", at(24, 9), at(24, 11)), entry(u"b", at(24, 10), at(24, 12))},
         {2 * H, 2 * H},
         {2 * H, H}},
        {"contained",
         {entry(u"a", at(24, 9), at(24, 12)), entry(u"b", at(24, 10), at(24, 11))},
         {3 * H, H},
         {3 * H, 0}},
        // Same start: the lower EntryID comes first and keeps the time.
        {"same start",
         {entry(u"b", at(24, 9), at(24, 11)), entry(u"a", at(24, 9), at(24, 10))},
         {H, 2 * H},
         {H, H}},
        {"chain",
         {entry(u"a", at(24, 9), at(24, 10)), entry(u"b", at(24, 9, 30), at(24, 10, 30)),
          entry(u"c", at(24, 10), at(24, 11))},
         {H, H, H},
         {H, 30 * M, 30 * M}},
        {"gap between",
         {entry(u"a", at(24, 9), at(24, 10)), entry(u"b", at(24, 11), at(24, 12))},
         {H, H},
         {H, H}},
        {"across midnight",
         {entry(u"a", at(24, 23), at(25, 2)), entry(u"b", at(25, 1), at(25, 3))},
         {H, 2 * H, 2 * H},
         {H, 2 * H, H}},
        // The all-day event starts first and keeps the day (converted to 8 h).
        {"all-day event and a meeting",
         {entry(u"m", at(24, 9), at(24, 10)), allDayEntry(u"z", 24, 1)},
         {8 * H, H},
         {8 * H, 0}},
        // A night shift into the holiday: the lower EntryID keeps 0:00-6:00,
        // the holiday keeps 18 of its 24 hours, so 8 h x 18 / 24.
        {"a converted day losing part of itself",
         {entry(u"m", at(23, 22), at(24, 6)), allDayEntry(u"z", 24, 1)},
         {2 * H, 6 * H, 8 * H},
         {2 * H, 6 * H, 6 * H}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (const bool once : {false, true}) {
            Maker m;
            m.rules.convert24 = true;
            m.options.overlapOnce = once;
            EXPECT_EQ(m.seconds(c.entries), once ? c.once : c.both) << "once " << once;
        }
    }
}

TEST(TimeRules, BillingValuesFromTheCategories) {
    struct Case {
        Str categories;
        BillingValues values;
    };
    const Case cases[] = {
        {u"Acme, Smith, Travel", {u"Acme", u"Smith", u"Travel"}},
        {u"Holiday, Zenith", {u"Zenith", u"", u""}},
        {u"Jones,Acme", {u"Acme", u"Jones", u""}},
        {u"Other", {u"", u"", u""}},  // the fourth list is not reported
        {u"Red Category", {u"", u"", u""}},
        {u"", {u"", u"", u""}},
    };
    Maker m;
    std::vector<CalendarEntry> entries;
    int hour = 0;
    for (const Case& c : cases) {
        entries.push_back(entry(c.categories, at(24, hour), at(24, hour + 1), c.categories));
        ++hour;
    }
    const auto records = m.records(entries);
    ASSERT_EQ(records.size(), std::size(cases));
    for (std::size_t i = 0; i < records.size(); ++i) {
        SCOPED_TRACE(u8(cases[i].categories));
        EXPECT_EQ(records[i].values, cases[i].values);
        EXPECT_EQ(records[i].billed, cases[i].values != BillingValues{});
    }
    // Without personal settings there are no lists to read the values by.
    Env bare;
    EXPECT_EQ(errorOf([&] { BillingReader(bare.s).values(u"Acme"); }), 91);
}

TEST(TimeRules, RoundingPerRecord) {
    using D = RoundingDirection;
    struct Case {
        std::int64_t seconds;
        int minutes;
        D direction;
        std::int64_t expected;
    };
    const Case cases[] = {
        {3601, 0, D::Up, 3601},
        {0, 15, D::Up, 0},
        {1, 6, D::Up, 6 * M},
        {6 * M, 6, D::Up, 6 * M},
        {6 * M + 1, 6, D::Down, 6 * M},
        {3 * M - 1, 6, D::Nearest, 0},
        {3 * M, 6, D::Nearest, 6 * M},
        {7 * M + 29, 15, D::Nearest, 0},
        {7 * M + 30, 15, D::Nearest, 15 * M},
        {50 * M, 15, D::Down, 45 * M},
        {50 * M, 15, D::Up, 60 * M},
        {44 * M + 59, 30, D::Nearest, 30 * M},
        {45 * M, 30, D::Nearest, 60 * M},
        {89 * M, 60, D::Nearest, 60 * M},
        {90 * M, 60, D::Nearest, 120 * M},
        {119 * M, 60, D::Down, 60 * M},
        {61 * M, 60, D::Up, 120 * M},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.seconds << " s, " << c.minutes << " min, " << int(c.direction));
        EXPECT_EQ(roundSeconds(c.seconds, {c.minutes, c.direction}), c.expected);
    }
}

TEST(TimeRules, ExactProductOverQuotient) {
    // Against the compiler's 128-bit integers, where products pass 64 bits.
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i) {
        const auto a = static_cast<std::int64_t>(random() >> (1 + random() % 63));
        const auto b = static_cast<std::int64_t>(random() >> (1 + random() % 63));
        const auto d =
            std::max<std::int64_t>(1, static_cast<std::int64_t>(random() >> (1 + random() % 63)));
        const unsigned __int128 p =
            static_cast<unsigned __int128>(a) * static_cast<unsigned __int128>(b);
        SCOPED_TRACE(testing::Message() << a << " x " << b << " / " << d);
        if (p / static_cast<unsigned __int128>(d) > INT64_MAX) {
            ASSERT_EQ(errorOf([&] { mulDiv(a, b, d); }), 6);
            continue;
        }
        const QuotientRemainder r = mulDiv(a, b, d);
        ASSERT_EQ(static_cast<unsigned __int128>(r.quotient),
                  p / static_cast<unsigned __int128>(d));
        ASSERT_EQ(static_cast<unsigned __int128>(r.remainder),
                  p % static_cast<unsigned __int128>(d));
    }
    EXPECT_EQ(errorOf([] { mulDiv(-1, 1, 1); }), 5);
    EXPECT_EQ(errorOf([] { mulDiv(1, 1, 0); }), 5);
}

TEST(TimeRules, AmountInExactCurrency) {
    struct Case {
        std::int64_t seconds;
        std::int64_t rate;  // ten-thousandths per hour
        std::int64_t amount;
    };
    const Case cases[] = {
        {3600, 1000000, 1000000},                // 1 h at 100
        {2700, 855000, 641250},                  // 0.75 h at 85.50 = 64.125
        {1, 10000, 3},                           // 1/3600 of 1: 0.000277.. -> 0.0003
        {1800, 1, 0},                            // 0.00005: the half goes to the even digit
        {5400, 1, 2},                            // 0.00015 -> 0.0002
        {7 * 3600 + 15 * 60, 1234567, 8950611},  // 7.25 h at 123.4567 = 895.061075 -> 895.0611
        {0, 1000000, 0},
        {24 * 3600, 922337203685477, 922337203685477 * 24},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.seconds << " s at " << c.rate);
        EXPECT_EQ(amountOf(c.seconds, Currency{c.rate}).scaled, c.amount);
    }
    EXPECT_EQ(errorOf([] { amountOf(24 * 3600, Currency{INT64_MAX / 2}); }), 6);
}

TEST(TimeRules, RateOfTheFirstListWithARateAndAmountOfRoundedTime) {
    struct Case {
        Str categories;
        std::int64_t rate;  // whole units per hour
    };
    const Case cases[] = {
        {u"Acme, Smith", 120},  // the company's rate wins over the person's
        {u"Zenith, Smith", 90}, {u"Zenith, Jones", 80},  // no entry with a rate: the personal rate
        {u"Travel", 55},        {u"", 80},
    };
    Maker m;
    m.rates = {{{0, u"acme"}, Currency::fromUnits(120)},  // the letter case does not matter
               {{1, u"Smith"}, Currency::fromUnits(90)},
               {{2, u"Travel"}, Currency::fromUnits(55)},
               {{7, u"Zenith"}, Currency::fromUnits(1)}};  // no reported list
    m.options.rounding = {15, RoundingDirection::Up};
    std::vector<CalendarEntry> entries;
    int hour = 0;
    for (const Case& c : cases) {
        // 1 h 10 min, rounded up to 1.25 h.
        entries.push_back(entry(c.categories, at(24, hour), at(24, hour + 1, 10), c.categories));
        hour += 2;
    }
    const auto records = m.records(entries);
    ASSERT_EQ(records.size(), std::size(cases));
    for (std::size_t i = 0; i < records.size(); ++i) {
        SCOPED_TRACE(u8(cases[i].categories));
        EXPECT_EQ(records[i].rate, Currency::fromUnits(cases[i].rate));
        EXPECT_EQ(records[i].seconds, H + 10 * M);
        EXPECT_EQ(records[i].roundedSeconds, H + 15 * M);
        EXPECT_EQ(records[i].amount.scaled, cases[i].rate * 12500);
    }
}

TEST(TimeRules, RulesFromThePersonalSettings) {
    Locale german;
    german.decimalSeparator = u",";
    german.thousandSeparator = u".";
    struct Case {
        const char* name;
        const Locale* locale;
        Variant convert24Hours;
        Variant lunchHours;
        std::int64_t convert24Seconds;
        std::int64_t lunchSeconds;
    };
    const Case cases[] = {
        {"the defaults as numbers", &Locale::enUS(), Variant(std::int16_t{8}), Variant(0.75), 8 * H,
         45 * M},
        {"texts with a comma", &german, Variant(Str(u"7,5")), Variant(Str(u"0,75")), 27000, 2700},
        {"texts with a point", &Locale::enUS(), Variant(Str(u"7.5")), Variant(Str(u"1")), 27000, H},
        {"a third of an hour", &Locale::enUS(), Variant(Str(u"6")), Variant(Str(u"0.3333")), 6 * H,
         1200},
        {"no numbers: the defaults", &Locale::enUS(), Variant(Str(u"abc")), Variant(), 8 * H,
         45 * M},
        {"out of range", &Locale::enUS(), Variant(Str(u"30")), Variant(Str(u"-1")), 24 * H, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ReportEnv env;
        env.platform.setUserLocale(*c.locale);
        cPersonalSettings& p = *env.s.oPersonalSettings;
        p.intConvert24Hours = c.convert24Hours;
        p.intRemoveLunchHours = c.lunchHours;
        const RecordRules r = rulesFromSettings(env.s);
        EXPECT_EQ(r.convert24Seconds, c.convert24Seconds);
        EXPECT_EQ(r.removeLunchSeconds, c.lunchSeconds);
    }
    // The switches and the rate are taken as they are.
    ReportEnv env;
    cPersonalSettings& p = *env.s.oPersonalSettings;
    p.blnFilterEvents = p.blnConvert24 = true;
    p.blnFilterPrivate = p.blnFilterRecurring = p.blnRemoveLunch = false;
    p.curPersonalRate = Currency{1234567};
    RecordRules r = rulesFromSettings(env.s);
    EXPECT_TRUE(r.filterEvents && r.convert24);
    EXPECT_FALSE(r.filterPrivate || r.filterRecurring || r.removeLunch);
    EXPECT_EQ(r.personalRate, Currency{1234567});
    p.blnFilterEvents = p.blnConvert24 = false;
    p.blnFilterPrivate = p.blnFilterRecurring = p.blnRemoveLunch = true;
    r = rulesFromSettings(env.s);
    EXPECT_FALSE(r.filterEvents || r.convert24);
    EXPECT_TRUE(r.filterPrivate && r.filterRecurring && r.removeLunch);
    Env bare;
    EXPECT_EQ(errorOf([&] { rulesFromSettings(bare.s); }), 91);
}

}  // namespace
}  // namespace hb::test
