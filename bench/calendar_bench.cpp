// The report's calendar reader over a large calendar: 100,000 appointments
// in ten years (2017-2026), of them about 6,000 occurrences of 80 recurring
// series. Reads one month (November 2026) and one year (2026) through the
// simulated Outlook. Beside the time each reports the entries read and the
// object-model calls made per entry (counted by the simulated Outlook).
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

#include "common/DateTime.h"
#include "reporting/OutlookCalendar.h"
#include "sim/Scenario.h"

namespace {

using hb::Variant;
using hb::reporting::DayNumber;
using hb::reporting::OutlookCalendar;
using hb::reporting::Period;

constexpr int kSingles = 94000;
constexpr int kWeeklySeries = 40;  // a year of weekly meetings each (52)
constexpr int kDailySeries = 40;   // 100 working days each

DayNumber day(int y, int m, int d) {
    return static_cast<DayNumber>(hb::dt::serial(y, m, d));
}

struct BigCalendar {
    sim::Scenario sc;
    Variant application;

    BigCalendar() {
        auto cal = sc.outlook().calendar();
        const double first = hb::dt::serial(2017, 1, 1);
        const double days = hb::dt::serial(2027, 1, 1) - first;
        // Singles spread evenly over the ten years, in working hours, some
        // crossing midnight, every tenth all-day.
        for (int i = 0; i < kSingles; ++i) {
            double d = first + std::floor(days * i / kSingles);
            double hour = 7 + (i % 12);
            if (i % 10 == 0) {
                cal->addAllDayEvent(u"Off", hb::Date{d});
            } else if (i % 97 == 0) {
                cal->addAppointment(u"Night", hb::Date{d + 22.0 / 24}, hb::Date{d + 1 + 6.0 / 24},
                                    u"Acme, Night");
            } else {
                cal->addAppointment(u"Work " + hb::toStr(i), hb::Date{d + hour / 24},
                                    hb::Date{d + (hour + 1.5) / 24}, u"Acme, Smith");
            }
        }
        for (int s = 0; s < kWeeklySeries; ++s) {
            double start = first + s * 90 + 1;
            auto m = cal->addSeries(u"Weekly " + hb::toStr(s), hb::Date{start + 10.0 / 24},
                                    hb::Date{start + 11.0 / 24},
                                    sim::Recurrence::weekly(0).times(52), u"Globex");
            m->addException(hb::Date{start + 7 + 10.0 / 24}, hb::Date{start + 7 + 15.0 / 24},
                            hb::Date{start + 7 + 16.0 / 24});
            m->deleteOccurrence(hb::Date{start + 14 + 10.0 / 24});
        }
        const std::int32_t weekdays = sim::ol::Monday | sim::ol::Tuesday | sim::ol::Wednesday |
                                      sim::ol::Thursday | sim::ol::Friday;
        for (int s = 0; s < kDailySeries; ++s) {
            double start = first + s * 91 + 3;
            cal->addSeries(u"Standup " + hb::toStr(s), hb::Date{start + 9.0 / 24},
                           hb::Date{start + 9.25 / 24},
                           sim::Recurrence::weekly(weekdays).times(100), u"Acme, Team");
        }
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
