// The statistics' pivot over a million records: by company x month (the
// figure the README gives), and with nested rows and a filter.
#include <benchmark/benchmark.h>

#include <random>

#include "common/DateTime.h"
#include "statistics/Pivot.h"

namespace {

using hb::reporting::Dimension;
using hb::reporting::TimeRecord;
using hb::statistics::Measure;
using hb::statistics::PivotSpec;

// A million records over two years: 200 companies, 50 people, 20 users,
// in order of day as the stores give them.
const std::vector<TimeRecord>& records() {
    static const std::vector<TimeRecord> out = [] {
        std::mt19937 random(42);
        std::vector<TimeRecord> v(1000000);
        const auto first = static_cast<hb::reporting::DayNumber>(hb::dt::serial(2025, 1, 1));
        for (std::size_t i = 0; i < v.size(); ++i) {
            TimeRecord& r = v[i];
            r.user = u"user" + hb::toStr(static_cast<long long>(random() % 20));
            r.day = first + static_cast<hb::reporting::DayNumber>(i * 730 / v.size());
            r.values = {u"Company " + hb::toStr(static_cast<long long>(random() % 200)),
                        u"Person " + hb::toStr(static_cast<long long>(random() % 50)), u""};
            r.seconds = random() % 28800;
            r.roundedSeconds = (r.seconds + 899) / 900 * 900;
            r.amount.scaled = static_cast<std::int64_t>(random() % 10000000);
        }
        return v;
    }();
    return out;
}

void run(benchmark::State& state, const PivotSpec& request) {
    const auto& r = records();
    const hb::Locale loc;
    for (auto _ : state)
        benchmark::DoNotOptimize(hb::statistics::pivot(r, request, loc));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * r.size()));
}

void BM_PivotCompanyByMonth(benchmark::State& state) {
    run(state, {{Dimension::List1}, {Dimension::Month}, Measure::Hours, {}});
}
BENCHMARK(BM_PivotCompanyByMonth)->Unit(benchmark::kMillisecond);

void BM_PivotCompanyPersonByWeekFiltered(benchmark::State& state) {
    run(state, {{Dimension::List1, Dimension::List2},
                {Dimension::Week},
                Measure::Amount,
                {{Dimension::User, {u"user1", u"user2", u"user3"}}}});
}
BENCHMARK(BM_PivotCompanyPersonByWeekFiltered)->Unit(benchmark::kMillisecond);

}  // namespace
