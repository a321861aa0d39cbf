// The report job from calendar to summary, with a calendar and a record
// store of the test's own: stored records are replaced, never doubled, and
// a failure leaves them as they were.
#include <algorithm>

#include "ReportTestSupport.h"
#include "reporting/Aggregation.h"

namespace hb::test {
namespace {

class FakeCalendar : public CalendarSource {
  public:
    std::vector<CalendarEntry> entries;
    bool fail = false;
    std::vector<Period> reads;
    std::vector<CalendarEntry> read(const Period& period) override {
        reads.push_back(period);
        if (fail) raise(-2147221233, u"The operation failed.");
        return entries;
    }
};

// Records by user in memory. Replacing is all or nothing, as the databases'
// transactions make it, and can be told to fail.
class MemoryStore : public RecordStore {
  public:
    std::vector<TimeRecord> rows;
    RateTable rates;
    bool fail = false;

    int schemaVersion() override { return 1; }
    void replacePeriod(const Str& user, const Period& period,
                       const std::vector<TimeRecord>& records) override {
        std::vector<TimeRecord> next;
        for (const TimeRecord& r : rows) {
            if (r.user != user || !period.contains(r.day)) next.push_back(r);
        }
        if (fail) throw StoreError("the database is locked");
        next.insert(next.end(), records.begin(), records.end());
        rows = std::move(next);
    }
    std::vector<TimeRecord> load(const Str& user, const Period& period) override {
        std::vector<TimeRecord> out;
        for (const TimeRecord& r : rows) {
            if ((user.empty() || r.user == user) && period.contains(r.day)) out.push_back(r);
        }
        // Out of order on purpose: the report puts them in order.
        std::reverse(out.begin(), out.end());
        return out;
    }
    RateTable entryRates() override { return rates; }
};

struct JobEnv : ReportEnv {
    FakeCalendar calendar;
    MemoryStore store;
    ReportOptions options;
    JobEnv() {
        options.period = november();
        options.grouping = {Dimension::List1};
        cPersonalSettings& p = *s.oPersonalSettings;
        p.blnFilterEvents = p.blnFilterPrivate = p.blnFilterRecurring = false;
        p.blnConvert24 = false;
        p.blnRemoveLunch = true;
        p.intRemoveLunchHours = Variant(Str(u"0.5"));
        p.curPersonalRate = Currency::fromUnits(100);
        calendar.entries = {entry(u"a", at(24, 9), at(24, 12), u"Acme"),
                            entry(u"b", at(24, 13), at(24, 14), u"Zenith, Smith"),
                            entry(u"c", at(25, 9), at(25, 11))};
    }
    reporting::Report run() { return runReport(s, calendar, store, options); }
};

// The summary's first level as "label minutes".
std::vector<std::string> firstLevel(const reporting::Report& r) {
    std::vector<std::string> out;
    for (const SummaryNode& n : r.total.children)
        out.push_back(u8(n.label) + " " + std::to_string(n.seconds / 60));
    return out;
}

TEST(ReportJob, ReportOfThePeriodByTheSettingsRules) {
    JobEnv e;
    e.store.rates = {{{0, u"Zenith"}, Currency::fromUnits(150)}};
    const reporting::Report r = e.run();
    EXPECT_EQ(e.calendar.reads, std::vector<Period>{november()});
    EXPECT_EQ(r.user, u"john");
    EXPECT_EQ(r.listCaptions, (std::array<Str, kReportLists>{u"Company", u"Person", u"Extra"}));
    // 30 min of lunch each day: 3 h and 1 h on the 24th lose 22.5 and
    // 7.5 min, the 2 h on the 25th loses 30 min.
    ASSERT_EQ(r.records.size(), 3u);
    EXPECT_EQ(r.records[0].entryId, u"a");
    EXPECT_EQ(r.records[0].seconds, 3 * H - 1350);
    EXPECT_EQ(r.records[1].seconds, H - 450);
    EXPECT_EQ(r.records[2].seconds, 2 * H - 30 * M);
    EXPECT_EQ(r.records[1].rate, Currency::fromUnits(150));
    EXPECT_EQ(r.records[1].values, (BillingValues{u"Zenith", u"Smith", u""}));
    EXPECT_EQ(firstLevel(r), (std::vector<std::string>{"Acme 157", "Zenith 52", "not billed 90"}));
    EXPECT_EQ(r.total.seconds, 5 * H);
    // 2.625 h at 100 + 0.875 h at 150 + 1.5 h at 100.
    EXPECT_EQ(r.total.amount, Currency{(2625 * 100 + 875 * 150 + 1500 * 100) * 10});
}

TEST(ReportJob, RunningTwiceNeverDoubles) {
    JobEnv e;
    const reporting::Report first = e.run();
    const reporting::Report second = e.run();
    EXPECT_EQ(e.store.rows.size(), 3u);
    EXPECT_EQ(second.records.size(), first.records.size());
    EXPECT_EQ(second.total.seconds, first.total.seconds);
    EXPECT_EQ(firstLevel(second), firstLevel(first));
}

TEST(ReportJob, ChangesInTheCalendarChangeTheStoredRecords) {
    JobEnv e;
    e.s.oPersonalSettings->blnRemoveLunch = false;
    // A record of another period and one of another user stay untouched.
    TimeRecord october;
    october.user = u"john";
    october.day = dayOf(15, 10);
    october.seconds = H;
    TimeRecord anna;
    anna.user = u"anna";
    anna.day = dayOf(24);
    anna.seconds = H;
    e.store.rows = {october, anna};
    e.run();
    EXPECT_EQ(e.store.rows.size(), 5u);

    e.calendar.entries[0].end = at(24, 10);                    // a: 3 h -> 1 h
    e.calendar.entries[1].categories = u"Acme";                // b moves to Acme
    e.calendar.entries.erase(e.calendar.entries.begin() + 2);  // c deleted
    const reporting::Report r = e.run();
    EXPECT_EQ(firstLevel(r), (std::vector<std::string>{"Acme 120"}));
    ASSERT_EQ(r.records.size(), 2u);
    EXPECT_EQ(e.store.rows.size(), 4u);
    EXPECT_EQ(e.store.load(u"anna", november()).size(), 1u);
    EXPECT_EQ(e.store.load(u"john", {dayOf(1, 10), dayOf(31, 10)}).size(), 1u);
}

TEST(ReportJob, AWorkgroupReportHoldsEveryUsersRecords) {
    JobEnv e;
    e.s.oPersonalSettings->blnRemoveLunch = false;
    TimeRecord anna;
    anna.user = u"anna";
    anna.day = dayOf(24);
    anna.seconds = anna.roundedSeconds = 30 * M;
    e.store.rows = {anna};
    e.options.grouping = {Dimension::User};
    for (const bool all : {false, true}) {
        e.options.allUsers = all;
        const reporting::Report r = e.run();
        const std::vector<std::string> expected =
            all ? std::vector<std::string>{"anna 30", "john 360"}
                : std::vector<std::string>{"john 360"};
        EXPECT_EQ(firstLevel(r), expected);
        EXPECT_EQ(r.records.size(), all ? 4u : 3u);
    }
    EXPECT_EQ(e.store.rows.size(), 4u);
}

TEST(ReportJob, AFailureLeavesTheStoredRecords) {
    struct Case {
        const char* name;
        bool calendarFails;
        bool storeFails;
    };
    const Case cases[] = {{"Outlook fails", true, false}, {"the database fails", false, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        JobEnv e;
        e.run();
        const std::vector<TimeRecord> before = e.store.rows;
        e.calendar.entries.pop_back();
        e.calendar.fail = c.calendarFails;
        e.store.fail = c.storeFails;
        if (c.calendarFails) {
            EXPECT_NE(errorOf([&] { e.run(); }), 0);
        } else {
            EXPECT_THROW(e.run(), StoreError);
        }
        ASSERT_EQ(e.store.rows.size(), before.size());
        for (std::size_t i = 0; i < before.size(); ++i)
            EXPECT_EQ(e.store.rows[i].entryId, before[i].entryId);
    }
}

TEST(ReportJob, AnEmptyPeriodIsRefusedBeforeOutlookIsRead) {
    JobEnv e;
    e.options.period = {dayOf(30), dayOf(1)};
    EXPECT_THROW(e.run(), PeriodError);
    EXPECT_TRUE(e.calendar.reads.empty());
}

}  // namespace
}  // namespace hb::test
