// The command-line run's road and its exit codes: which failure ends it
// where, with which code and message, and that a file that cannot be
// written keeps neither the run from writing the others nor its code 0.
#include "reporting/ReportRun.h"

#include <gtest/gtest.h>

#include "common/AutomationError.h"

namespace hb::reporting {
namespace {

class NoCalendar : public CalendarSource {
  public:
    std::vector<CalendarEntry> read(const Period&) override { return {}; }
};

class NoStore : public RecordStore {
  public:
    int schemaVersion() override { return 1; }
    void replacePeriod(const Str&, const Period&, const std::vector<TimeRecord>&) override {}
    std::vector<TimeRecord> load(const Str&, const Period&) override { return {}; }
    RateTable entryRates() override { return {}; }
};

enum class Step { Calendar, Store, Report, Write };

// Steps that record what ran and throw where told.
struct Road {
    std::vector<Str> ran;
    std::optional<Step> failAt;
    std::function<void()> thrower;
    Str failingFile;
    Period reportedPeriod;
    ReportOptions reportedOptions;

    ReportSteps steps() {
        ReportSteps s;
        s.calendar = [this] {
            ran.push_back(u"calendar");
            if (failAt == Step::Calendar) thrower();
            return std::make_unique<NoCalendar>();
        };
        s.store = [this] {
            ran.push_back(u"store");
            if (failAt == Step::Store) thrower();
            return std::make_unique<NoStore>();
        };
        s.report = [this](CalendarSource&, RecordStore&, const ReportOptions& options) {
            ran.push_back(u"report");
            reportedOptions = options;
            if (failAt == Step::Report) thrower();
            Report r;
            r.options = options;
            return r;
        };
        s.write = [this](const Report&, ExportFormat format, const Str& file) {
            ran.push_back(format == ExportFormat::Csv    ? u"csv"
                          : format == ExportFormat::Xlsx ? u"xlsx"
                                                         : u"html");
            if (failAt == Step::Write && file == failingFile) thrower();
        };
        return s;
    }
};

ReportCommand everyFile() {
    ReportCommand c;
    c.mode = RunMode::Report;
    c.csv = u"a.csv";
    c.xlsx = u"a.xlsx";
    c.html = u"a.html";
    return c;
}

TEST(ReportRun, ASuccessfulRunWritesEveryFileAskedForAndEndsWith0) {
    Road road;
    ReportCommand c = everyFile();
    c.xlsx.clear();
    c.options.overlapOnce = true;
    const Period period{45000, 45030};
    const RunOutcome out = runReportCommand(c, period, road.steps());
    EXPECT_EQ(out.code, ExitCode::Ok);
    EXPECT_TRUE(out.messages.empty());
    EXPECT_EQ(road.ran, (std::vector<Str>{u"calendar", u"store", u"report", u"csv", u"html"}));
    EXPECT_EQ(road.reportedOptions.period, period);
    EXPECT_TRUE(road.reportedOptions.overlapOnce);
}

TEST(ReportRun, EachFailureEndsTheRunWhereItHappensWithItsOwnCode) {
    const struct {
        const char* what;
        Step at;
        std::function<void()> thrower;
        ExitCode code;
        const char16_t* message;
        std::vector<Str> ran;
    } cases[] = {
        {"no Outlook",
         Step::Calendar,
         [] { raise(429); },
         ExitCode::OutlookUnavailable,
         u"Outlook is not available (reaching Outlook): error 429",
         {u"calendar"}},
        {"database",
         Step::Store,
         [] { throw StoreError("cannot reach the server db.example:5432"); },
         ExitCode::DatabaseUnreachable,
         u"The database cannot be used (opening the database): cannot reach the server "
         u"db.example:5432",
         {u"calendar", u"store"}},
        {"Outlook fails a call while reading",
         Step::Report,
         [] { raise(-2147221233, u"The operation failed."); },
         ExitCode::OutlookUnavailable,
         u"error -2147221233, The operation failed.",
         {u"calendar", u"store", u"report"}},
        {"store fails while writing",
         Step::Report,
         [] { throw StoreError("the database is locked"); },
         ExitCode::DatabaseUnreachable,
         u"(making the report): the database is locked",
         {u"calendar", u"store", u"report"}},
        {"anything else",
         Step::Report,
         [] { throw std::bad_alloc(); },
         ExitCode::Failed,
         u"The report failed (making the report)",
         {u"calendar", u"store", u"report"}},
        {"not even an exception",
         Step::Store,
         [] { throw 42; },
         ExitCode::Failed,
         u"The report failed (opening the database)",
         {u"calendar", u"store"}},
    };
    for (const auto& c : cases) {
        Road road;
        road.failAt = c.at;
        road.thrower = c.thrower;
        const RunOutcome out = runReportCommand(everyFile(), {1, 2}, road.steps());
        EXPECT_EQ(out.code, c.code) << c.what;
        ASSERT_EQ(out.messages.size(), 1u) << c.what;
        EXPECT_NE(out.messages[0].find(c.message), Str::npos)
            << c.what << ": " << toUtf8(out.messages[0]);
        EXPECT_EQ(road.ran, c.ran) << c.what;
    }
}

TEST(ReportRun, AFileThatCannotBeWrittenLeavesTheOthersWrittenAndEndsWith5) {
    for (const Str file : {u"a.csv", u"a.xlsx", u"a.html"}) {
        Road road;
        road.failAt = Step::Write;
        road.failingFile = file;
        road.thrower = [] { throw std::runtime_error("access denied"); };
        const RunOutcome out = runReportCommand(everyFile(), {1, 2}, road.steps());
        EXPECT_EQ(out.code, ExitCode::ExportFailed) << toUtf8(file);
        EXPECT_EQ(out.messages, std::vector<Str>{u"Could not write " + file + u": access denied"});
        EXPECT_EQ(road.ran,
                  (std::vector<Str>{u"calendar", u"store", u"report", u"csv", u"xlsx", u"html"}));
    }
}

}  // namespace
}  // namespace hb::reporting
