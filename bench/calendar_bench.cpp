// The report's calendar reader over a large calendar (bench/support/
// BigCalendar.h: 100,000 appointments in ten years). Reads one month (November 2026) and one year
// (2026) through the simulated Outlook. Beside the time each reports the entries read and the
// object-model calls made per entry (counted by the simulated Outlook).
#include <benchmark/benchmark.h>

#include <memory>

#include "bench/support/BigCalendar.h"
#include "common/DateTime.h"
#include "reporting/OutlookCalendar.h"
#include "sim/Scenario.h"

namespace {

using hb::Variant;
using hb::reporting::DayNumber;
using hb::reporting::OutlookCalendar;
using hb::reporting::Period;

DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(hb::dt::serial(y, m, d));
}

struct BigCalendar {
    sim::Scenario sc;
    Variant application;

    BigCalendar() {
        bench::furnishBigCalendar(sc.outlook());
        sc.instruments().setLogging(false);
        application =
            sc.instruments().toAddin(Variant(hb::ObjectPtr(sc.outlook().application())), u"bench");
    }
};

BigCalendar& calendar() {
    static BigCalendar c;
    return c;
}

void read(benchmark::State& state, Period period) {
    auto& c = calendar();
    OutlookCalendar reader(c.application, hb::Locale::enUS());
    std::size_t entries = 0;
    std::uint64_t calls = 0;
    for (auto _ : state) {
        c.sc.instruments().resetCounts();
        auto list = reader.read(period);
        entries = list.size();
        calls = c.sc.instruments().callCount();
        benchmark::DoNotOptimize(list);
    }
    state.counters["entries"] = static_cast<double>(entries);
    state.counters["calls_per_entry"] =
        entries ? static_cast<double>(calls) / static_cast<double>(entries) : 0.0;
}

void BM_ReadCalendarMonth(benchmark::State& state) {
    read(state, Period{day(2026, 11, 1), day(2026, 11, 30)});
}
BENCHMARK(BM_ReadCalendarMonth)->Unit(benchmark::kMillisecond);

void BM_ReadCalendarYear(benchmark::State& state) {
    read(state, Period{day(2026, 1, 1), day(2026, 12, 31)});
}
BENCHMARK(BM_ReadCalendarYear)->Unit(benchmark::kMillisecond);

// The other road: Folder.GetTable over the same month, the columns an entry
// needs (IsRecurring to pick out the series, which a table gives as masters
// only and which would still have to be expanded through Items). Rows read
// per call show whether it could be faster.
void BM_ReadCalendarMonthTableRows(benchmark::State& state) {
    auto& c = calendar();
    const Period period{day(2026, 11, 1), day(2026, 11, 30)};
    const hb::Str filter = OutlookCalendar::restriction(period, hb::Locale::enUS());
    std::size_t rows = 0;
    std::uint64_t calls = 0;
    for (auto _ : state) {
        c.sc.instruments().resetCounts();
        Variant table = c.application.call(u"GetNamespace", {hb::Str(u"MAPI")})
                            .call(u"GetDefaultFolder", {sim::ol::FolderCalendar})
                            .call(u"GetTable", {filter});
        Variant columns = table.get(u"Columns");
        columns.call(u"RemoveAll");
        for (const char16_t* name : {u"EntryID", u"Start", u"End", u"Subject", u"Categories",
                                     u"AllDayEvent", u"Sensitivity", u"IsRecurring"}) {
            columns.call(u"Add", {hb::Str(name)});
        }
        rows = 0;
        for (Variant row = table.call(u"GetNextRow"); !row.isNothing();
             row = table.call(u"GetNextRow")) {
            for (std::int32_t col = 1; col <= 8; ++col)
                benchmark::DoNotOptimize(row.call(u"", {col}));
            ++rows;
        }
        calls = c.sc.instruments().callCount();
    }
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["calls_per_row"] =
        rows ? static_cast<double>(calls) / static_cast<double>(rows) : 0.0;
}
BENCHMARK(BM_ReadCalendarMonthTableRows)->Unit(benchmark::kMillisecond);

}  // namespace
