// Record store benchmarks: exporting 100,000 records to an SQLite file
// (into an empty file, and replacing the same period again), loading a
// year of 1,000,000 records, and, when a test server is named by
// HB_PG_CONNECTION_FILE, exporting 10,000 records to PostgreSQL.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "reporting/OdbcStore.h"
#include "reporting/SqliteStore.h"

namespace {

using namespace hb;
using namespace hb::reporting;
namespace fs = std::filesystem;

// Records as an export makes them: a working day of entries spread over the
// period, with billing values, subjects and amounts.
std::vector<TimeRecord> makeRecords(std::size_t count, const Period& period) {
    std::vector<TimeRecord> out;
    out.reserve(count);
    const std::size_t days = static_cast<std::size_t>(period.last - period.first + 1);
    const std::size_t perDay = (count + days - 1) / days;
    static const Str companies[] = {u"Acme", u"M\u00fcller & S\u00f6hne", u"Initech", u"Umbrella"};
    static const Str people[] = {u"Smith", u"\u00c5sa Berg", u"Jones"};
    for (std::size_t i = 0; i < count; ++i) {
        TimeRecord r;
        r.user = u"anna";
        r.entryId =
            u"00000000A1B2C3D4E5F6071829304A5B6C7D8E9F0700" + toStr(static_cast<long long>(i));
        r.day = period.first + static_cast<DayNumber>(i / perDay);
        double hour = 7.0 + static_cast<double>(i % perDay) * 12.0 / static_cast<double>(perDay);
        r.occurrenceStart = r.start = Date{r.day + hour / 24.0};
        r.end = Date{r.day + (hour + 0.5) / 24.0};
        r.subject = u"Project meeting " + toStr(static_cast<long long>(i % 97));
        r.values = {companies[i % 4], people[i % 3], i % 5 ? Str() : Str(u"Travel")};
        r.billed = true;
        r.seconds = r.roundedSeconds = 1800;
        r.rate = Currency{950000};
        r.amount = Currency{475000};
        out.push_back(std::move(r));
    }
    return out;
}

struct TempFile {
    fs::path dir;
    TempFile() {
        std::string pattern = (fs::temp_directory_path() / "hb-store-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data())) {
            std::abort();
        }
        dir = pattern;
    }
    ~TempFile() {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    Str file() const { return (dir / "Hourbook.sqlite").u16string(); }
};

const Period kYear{45292, 45657};  // 2024

void BM_SqliteExport100kIntoAnEmptyFile(benchmark::State& state) {
    const auto records = makeRecords(100000, kYear);
    for (auto _ : state) {
        state.PauseTiming();
        TempFile tmp;
        SqliteStore store(tmp.file());
        state.ResumeTiming();
        store.replacePeriod(u"anna", kYear, records);
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(BM_SqliteExport100kIntoAnEmptyFile)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_SqliteReplace100k(benchmark::State& state) {
    const auto records = makeRecords(100000, kYear);
    TempFile tmp;
    SqliteStore store(tmp.file());
    store.replacePeriod(u"anna", kYear, records);
    for (auto _ : state) {
        store.replacePeriod(u"anna", kYear, records);
    }
    state.SetItemsProcessed(state.iterations() * 100000);
}
BENCHMARK(BM_SqliteReplace100k)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_SqliteLoadAYearOf1M(benchmark::State& state) {
    TempFile tmp;
    {
        SqliteStore store(tmp.file());
        auto records = makeRecords(1000000, kYear);
        store.replacePeriod(u"anna", kYear, records);
    }
    SqliteStore store(tmp.file());
    std::size_t n = 0;
    for (auto _ : state) {
        auto loaded = store.load(u"", kYear);
        n = loaded.size();
        benchmark::DoNotOptimize(loaded.data());
    }
    if (n != 1000000) {
        state.SkipWithError("not every record came back");
    }
    state.SetItemsProcessed(state.iterations() * 1000000);
}
BENCHMARK(BM_SqliteLoadAYearOf1M)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_OdbcExport10k(benchmark::State& state) {
    const char* file = std::getenv("HB_PG_CONNECTION_FILE");
    std::string line;
    if (file) {
        std::ifstream in(file);
        std::getline(in, line);
    }
    if (line.empty()) {
        state.SkipWithError("no server: HB_PG_CONNECTION_FILE (scripts/pg-cluster.sh start DIR)");
        for (auto _ : state) {
        }
        return;
    }
    const auto records = makeRecords(10000, kYear);
    OdbcStore store(fromUtf8(line));
    for (auto _ : state) {
        store.replacePeriod(u"bench", kYear, records);
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_OdbcExport10k)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
