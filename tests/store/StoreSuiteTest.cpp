// The behaviour every record store owes the report, run against an SQLite
// file and against the PostgreSQL test server through ODBC.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <tuple>

#include "StoreTestSupport.h"
#include "reporting/OdbcStore.h"
#include "reporting/SqliteStore.h"

namespace hb::reporting {
namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

enum class Kind { Sqlite, Odbc };
void PrintTo(Kind k, std::ostream* os) {
    *os << (k == Kind::Sqlite ? "SQLite" : "PostgreSQL");
}

class StoreSuite : public ::testing::TestWithParam<Kind> {
  protected:
    void SetUp() override {
        if (GetParam() == Kind::Odbc) {
            Str base = serverConnection();
            if (base.empty()) {
                GTEST_SKIP() << "no test server (run through ctest, which starts one)";
            }
            schema_.emplace(base);
        }
    }

    const std::vector<Migration>& schema() const {
        return GetParam() == Kind::Sqlite ? SqliteStore::schema() : OdbcStore::schema();
    }

    // Opens the test's database (a new connection each time).
    std::unique_ptr<RecordStore> open(const std::vector<Migration>* steps = nullptr) {
        const auto& m = steps ? *steps : schema();
        if (GetParam() == Kind::Sqlite) {
            return std::make_unique<SqliteStore>(folder_.file("Hourbook.sqlite"), m);
        }
        return std::make_unique<OdbcStore>(schema_->connection(), m);
    }

    TempFolder folder_;
    std::optional<ServerSchema> schema_;
};

const Period kWeek{45000, 45006};

TEST_P(StoreSuite, ReplacingAPeriodTwiceNeverDoublesAndFollowsOutlook) {
    auto store = open();
    EXPECT_EQ(store->schemaVersion(), 1);
    std::vector<TimeRecord> first{record(u"A", 45000, 9, 2), record(u"B", 45001, 10, 1),
                                  record(u"C", 45002, 8, 3)};
    store->replacePeriod(u"anna", kWeek, first);
    store->replacePeriod(u"anna", kWeek, first);
    EXPECT_EQ(store->load(u"anna", kWeek).size(), 3u);

    // B deleted in Outlook, C moved to the afternoon, D new.
    std::vector<TimeRecord> second{record(u"A", 45000, 9, 2), record(u"C", 45002, 14, 1),
                                   record(u"D", 45003, 9, 1)};
    store->replacePeriod(u"anna", kWeek, second);
    for (auto& r : second) {
        r.user = u"anna";
    }
    EXPECT_EQ(describe(store->load(u"anna", kWeek)), describe(second));
    // Another connection sees what was committed.
    EXPECT_EQ(describe(open()->load(u"anna", kWeek)), describe(second));
}

// Exports of every size come back whole, however the store splits them
// into statements (the server store sends 200 rows at a time).
TEST_P(StoreSuite, ExportsOfAnySizeComeBackWhole) {
    auto store = open();
    for (int size : {0, 1, 199, 200, 201, 450, 3}) {
        std::vector<TimeRecord> records;
        for (int i = 0; i < size; ++i) {
            records.push_back(record(u"E" + toStr(i), kWeek.first + i % 7, 7 + (i / 7) * 0.1, 0.1,
                                     u"S" + toStr(i), Currency{i}));
            records.back().user = u"anna";
        }
        store->replacePeriod(u"anna", kWeek, records);
        std::sort(records.begin(), records.end(), [](const TimeRecord& a, const TimeRecord& b) {
            return std::tie(a.day, a.start) < std::tie(b.day, b.start);
        });
        EXPECT_EQ(describe(store->load(u"anna", kWeek)), describe(records)) << size;
    }
}

TEST_P(StoreSuite, ReplacingTouchesOnlyThatUsersRecordsOfThatPeriod) {
    auto store = open();
    store->replacePeriod(u"anna", {44990, 45010},
                         {record(u"before", 44999, 9, 1), record(u"in", 45003, 9, 1),
                          record(u"after", 45007, 9, 1)});
    store->replacePeriod(u"bert", kWeek, {record(u"bert's", 45003, 9, 1)});
    store->replacePeriod(u"anna", kWeek, {});
    std::vector<std::string> entries;
    for (const auto& r : store->load(u"", {44990, 45010})) {
        entries.push_back(toUtf8(r.user + u":" + r.entryId));
    }
    EXPECT_THAT(entries, ElementsAre("anna:before", "bert:bert's", "anna:after"));
}

TEST_P(StoreSuite, EveryFieldRoundTripsExactly) {
    auto store = open();
    TimeRecord r = record(u"00000000ABCDEF\u00e4", 45001, 22.25, 1.75,
                          u"Tr\u00e4ff med \u00c5sa \u4f1a\u8bae \U0001F600");
    r.occurrenceStart = Date{45001 + 20.0 / 24};  // an exception moved from 20:00
    r.values = {u"M\u00fcller & S\u00f6hne", u"\u00c5ngstr\u00f6m", u"\u6771\u4eac"};
    r.billed = true;
    r.allDay = false;
    r.isPrivate = true;
    r.recurring = true;
    r.seconds = 6300;
    r.roundedSeconds = 7200;
    r.rate = Currency{955000};                   // 95.50
    r.amount = Currency{9223372036854775807LL};  // the Currency's largest value
    TimeRecord allDay = record(u"holiday", 45002, 0, 24);
    allDay.allDay = true;
    allDay.amount = Currency{-12345};  // -1.2345: a credit
    store->replacePeriod(u"J\u00f6rg \u00c5berg", kWeek, {r, allDay});
    r.user = allDay.user = u"J\u00f6rg \u00c5berg";
    EXPECT_EQ(describe(open()->load(u"J\u00f6rg \u00c5berg", kWeek)), describe({r, allDay}));
    auto loaded = store->load(u"", kWeek);
    ASSERT_EQ(loaded.size(), 2u);
    EXPECT_EQ(loaded[0].subject, r.subject);  // UTF-16 unit for unit
    EXPECT_EQ(loaded[0].values[2], u"\u6771\u4eac");
}

TEST_P(StoreSuite, LoadsInOrderOfDayStartAndUser) {
    auto store = open();
    store->replacePeriod(u"zoe", kWeek, {record(u"z2", 45002, 8, 1), record(u"z1", 45001, 9, 1)});
    store->replacePeriod(u"adam", kWeek, {record(u"a2", 45001, 9, 1), record(u"a1", 45001, 7, 1)});
    std::vector<std::string> order;
    for (const auto& r : store->load(u"", kWeek)) {
        order.push_back(toUtf8(r.entryId));
    }
    EXPECT_THAT(order, ElementsAre("a1", "a2", "z1", "z2"));
    EXPECT_EQ(store->load(u"zoe", {45002, 45002}).size(), 1u);
    EXPECT_TRUE(store->load(u"nobody", kWeek).empty());
}

TEST_P(StoreSuite, AFailedExportLeavesThePreviousRecordsAsTheyWere) {
    auto store = open();
    std::vector<TimeRecord> before{record(u"A", 45000, 9, 2), record(u"B", 45001, 9, 2)};
    store->replacePeriod(u"anna", kWeek, before);
    const auto stored = describe(store->load(u"anna", kWeek));

    // The old records are deleted and two new ones written before the third
    // repeats a key: the whole export must roll back.
    std::vector<TimeRecord> broken{record(u"X", 45000, 9, 1), record(u"Y", 45001, 9, 1),
                                   record(u"X", 45000, 9, 1)};
    try {
        store->replacePeriod(u"anna", kWeek, broken);
        FAIL() << "a repeated key was stored";
    } catch (const StoreError& e) {
        EXPECT_THAT(e.what(), HasSubstr("storing the period's records"));
    }
    EXPECT_EQ(describe(store->load(u"anna", kWeek)), stored);
    // The store is still usable after the failure.
    store->replacePeriod(u"anna", kWeek, {record(u"Z", 45004, 9, 1)});
    EXPECT_EQ(store->load(u"anna", kWeek).size(), 1u);
}

TEST_P(StoreSuite, RecordsThatDoNotFitThePeriodAreRefusedBeforeAnythingIsWritten) {
    struct Case {
        const char* what;
        Str user;
        Period period;
        DayNumber day;
    };
    const Case cases[] = {
        {"day before the period", u"anna", kWeek, kWeek.first - 1},
        {"day after the period", u"anna", kWeek, kWeek.last + 1},
        {"reversed period", u"anna", {45006, 45000}, 45003},
        {"no user", u"", kWeek, 45003},
    };
    auto store = open();
    store->replacePeriod(u"anna", kWeek, {record(u"kept", 45002, 9, 1)});
    for (const auto& c : cases) {
        EXPECT_THROW(store->replacePeriod(c.user, c.period, {record(u"new", c.day, 9, 1)}),
                     StoreError)
            << c.what;
        auto left = store->load(u"anna", kWeek);
        ASSERT_EQ(left.size(), 1u) << c.what;
        EXPECT_EQ(left[0].entryId, u"kept") << c.what;
    }
}

TEST_P(StoreSuite, EntryRatesAreKeptPerListAndIgnoreLetterCase) {
    auto store = open();
    EXPECT_TRUE(store->entryRates().empty());
    store->putEntryRates({{{0, u"Acme"}, Currency{1200000}},
                          {{1, u"Acme"}, Currency{800000}},
                          {{2, u"\u00c5sa"}, Currency{15}}});
    store->putEntryRates({{{0, u"ACME"}, Currency{1250000}}});  // replaces Acme of list 1
    RateTable expected{{{0, u"ACME"}, Currency{1250000}},
                       {{1, u"Acme"}, Currency{800000}},
                       {{2, u"\u00c5sa"}, Currency{15}}};
    EXPECT_EQ(open()->entryRates(), expected);
    EXPECT_THROW(store->putEntryRates({{{3, u"fourth"}, Currency{1}}}), StoreError);
    EXPECT_EQ(store->entryRates(), expected);  // nothing of the failed call stayed
}

TEST_P(StoreSuite, OpeningAnOlderSchemaMigratesItAndKeepsTheRecords) {
    // The database as the version before this one left it.
    std::vector<Migration> older = schema();
    { open(&older)->replacePeriod(u"anna", kWeek, {record(u"A", 45000, 9, 2)}); }
    std::vector<Migration> newer = older;
    newer.push_back({2,
                     {"CREATE TABLE report_notes(note_id integer PRIMARY KEY, body text)",
                      "INSERT INTO report_notes(note_id, body) VALUES (1, 'migrated')"}});
    auto store = open(&newer);
    EXPECT_EQ(store->schemaVersion(), 2);
    EXPECT_EQ(store->load(u"anna", kWeek).size(), 1u);
    // Opening it again runs no step twice (the insert would repeat its key).
    EXPECT_EQ(open(&newer)->schemaVersion(), 2);
    // This program, knowing only version 1, refuses the newer database.
    try {
        open();
        FAIL() << "a newer schema was opened";
    } catch (const StoreError& e) {
        EXPECT_THAT(e.what(), HasSubstr("schema version 2"));
        EXPECT_THAT(e.what(), HasSubstr("newer"));
    }
}

TEST_P(StoreSuite, AFailedMigrationLeavesTheDatabaseAtItsVersion) {
    std::vector<Migration> steps = schema();
    { open(&steps)->replacePeriod(u"anna", kWeek, {record(u"A", 45000, 9, 2)}); }
    steps.push_back({2, {"CREATE TABLE half_done(a integer)", "THIS IS NOT SQL"}});
    EXPECT_THROW(open(&steps), StoreError);
    steps.back().statements.back() = "CREATE TABLE all_done(a integer)";
    // half_done was rolled back with the failed step, so it can be made again.
    auto store = open(&steps);
    EXPECT_EQ(store->schemaVersion(), 2);
    EXPECT_EQ(store->load(u"anna", kWeek).size(), 1u);
}

// Two programs exporting to one database at once, each replacing its own
// user's period again and again: both finish, and each user's records are
// exactly the last set it wrote.
TEST_P(StoreSuite, TwoProcessesExportingAtOnceLoseAndDoubleNothing) {
    const bool server = GetParam() == Kind::Odbc;
    const int rounds = server ? 15 : 40;
    const int perRound = server ? 60 : 300;
    auto batch = [&](int round) {
        std::vector<TimeRecord> out;
        for (int i = 0; i < perRound - round % 3; ++i) {  // sizes differ from round to round
            out.push_back(record(u"E" + toStr(i), kWeek.first + i % 7, 8 + (i / 7) % 10, 0.5));
        }
        return out;
    };
    // The children open the database themselves, the first time at once
    // (both find it empty and migrate it).
    pid_t children[2];
    const Str users[2] = {u"anna", u"bert"};
    for (int c = 0; c < 2; ++c) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            int rc = 0;
            try {
                auto store = open();
                for (int round = 0; round < rounds; ++round) {
                    store->replacePeriod(users[c], kWeek, batch(round));
                }
            } catch (const std::exception& e) {
                fprintf(stderr, "child %d: %s\n", c, e.what());
                rc = 1;
            }
            _exit(rc);
        }
        children[c] = pid;
    }
    for (pid_t pid : children) {
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a child failed";
    }
    auto store = open();
    // Each user's records are exactly the last round's, field for field.
    auto sorted = [](std::vector<std::string> lines) {
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    for (const Str& user : users) {
        auto last = batch(rounds - 1);
        for (auto& r : last) {
            r.user = user;
        }
        EXPECT_EQ(sorted(describe(store->load(user, kWeek))), sorted(describe(last)))
            << toUtf8(user);
    }
    EXPECT_EQ(store->load(u"", kWeek).size(), 2 * batch(rounds - 1).size());
}

INSTANTIATE_TEST_SUITE_P(Sqlite, StoreSuite, ::testing::Values(Kind::Sqlite),
                         [](const auto&) { return std::string("file"); });
INSTANTIATE_TEST_SUITE_P(Odbc, StoreSuite, ::testing::Values(Kind::Odbc),
                         [](const auto&) { return std::string("postgresql"); });

}  // namespace
}  // namespace hb::reporting
