// Report benchmarks: a year's aggregation of 1,000,000 time records (a
// workgroup of ten users, 50 companies, 30 people, 10 extra values, a fifth
// of the records not billed) in the grouping orders a user picks, and the
// time rules over 100,000 calendar entries (lunch, rounding, overlap once).
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

#include "common/Session.h"
#include "platform/memory/MemoryPlatform.h"
#include "reporting/Aggregation.h"
#include "reporting/Periods.h"
#include "reporting/TimeRules.h"
#include "settings/cPersonalSettings.h"

namespace {

using namespace hb;
using namespace hb::reporting;

Str name(const char16_t* prefix, unsigned n) {
    return Str(prefix) + toStr(n);
}

const std::vector<TimeRecord>& yearOfRecords() {
    static const std::vector<TimeRecord> records = [] {
        std::mt19937 random(42);
        std::vector<TimeRecord> out;
        out.reserve(1000000);
        const DayNumber first = dayNumber(2026, 1, 1);
        for (int i = 0; i < 1000000; ++i) {
            TimeRecord r;
            r.day = first + static_cast<DayNumber>(i / 2740);  // in order of day, as loaded
            r.user = name(u"user", random() % 10);
            r.entryId = name(u"entry", static_cast<unsigned>(i));
            const bool billed = random() % 5 != 0;
            if (billed) {
                r.values = {name(u"Company ", random() % 50), name(u"Person ", random() % 30),
                            random() % 2 ? name(u"Extra ", random() % 10) : Str()};
            }
            r.billed = billed;
            r.seconds = static_cast<std::int64_t>(random() % 14400);
            r.roundedSeconds = roundSeconds(r.seconds, {15, RoundingDirection::Up});
            r.rate = Currency::fromUnits(90);
            r.amount = amountOf(r.roundedSeconds, r.rate);
            out.push_back(std::move(r));
        }
        return out;
    }();
    return records;
}

void aggregateYear(benchmark::State& state, std::vector<Dimension> grouping) {
    const auto& records = yearOfRecords();
    for (auto _ : state) {
        SummaryNode root = aggregate(records, grouping, Locale::enUS());
        benchmark::DoNotOptimize(root);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(records.size()));
}

BENCHMARK_CAPTURE(aggregateYear, lists, {Dimension::List1, Dimension::List2, Dimension::List3})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(aggregateYear, month_list1, {Dimension::Month, Dimension::List1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(aggregateYear, user_week, {Dimension::User, Dimension::Week})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(aggregateYear, day, {Dimension::Day})->Unit(benchmark::kMillisecond);

void makeRecords100k(benchmark::State& state) {
    MemoryPlatform platform;
    Session s(platform);
    s.strListSeparator = u",";
    s.oPersonalSettings = std::make_shared<cPersonalSettings>(s);
    s.oPersonalSettings->subPopulateMetadataList(
        u"Company:Acme;Zenith;Globex;\r\nPerson:Smith;Jones;\r\nExtra:Travel;\r\n");
    const char16_t* categories[] = {u"Acme, Smith", u"Zenith, Jones, Travel", u"Globex",
                                    u"Red Category", u""};
    std::vector<CalendarEntry> entries;
    std::mt19937 random(1);
    const DayNumber first = dayNumber(2017, 1, 1);
    for (int i = 0; i < 100000; ++i) {
        CalendarEntry e;
        e.entryId = name(u"entry", static_cast<unsigned>(i));
        const double start = first + i / 27 + (8 + random() % 10) / 24.0;
        e.start = e.occurrenceStart = Date{start};
        e.end = Date{start + (1 + random() % 12) / 48.0};
        e.categories = categories[random() % 5];
        entries.push_back(std::move(e));
    }
    RecordRules rules;
    rules.removeLunch = true;
    ReportOptions options;
    options.period = {first, first + 3700};
    options.rounding = {15, RoundingDirection::Nearest};
    options.overlapOnce = true;
    const RateLookup rates({}, Currency::fromUnits(80));
    for (auto _ : state) {
        BillingReader billing(s);
        auto records = makeRecords(entries, rules, options, billing, rates, u"john");
        benchmark::DoNotOptimize(records);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(entries.size()));
}
BENCHMARK(makeRecords100k)->Unit(benchmark::kMillisecond);

}  // namespace
