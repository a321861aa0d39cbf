// The report's exports of a large report: 100,000 records (a year of a
// busy workgroup) grouped by company and person, written as CSV (both
// files), XLSX and HTML to a scratch folder. Reports records per second.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "reporting/CsvExport.h"
#include "reporting/HtmlExport.h"
#include "reporting/XlsxExport.h"

namespace {

using namespace hb::reporting;

Report bigReport(std::size_t count) {
    Report r;
    r.user = u"john";
    r.listCaptions = {u"Company", u"Person", u"Project"};
    r.options.period = {46023, 46387};  // 2026
    r.options.grouping = {Dimension::List1, Dimension::List2};
    r.records.reserve(count);
    constexpr int kCompanies = 40, kPeople = 25;
    r.total.children.resize(kCompanies);
    for (int c = 0; c < kCompanies; ++c) {
        r.total.children[c].label = u"Company " + hb::toStr(c);
        r.total.children[c].children.resize(kPeople);
        for (int p = 0; p < kPeople; ++p) {
            r.total.children[c].children[p].label = u"Person " + hb::toStr(p);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        TimeRecord t;
        t.day = static_cast<DayNumber>(46023 + i % 365);
        t.start = hb::Date{t.day + 0.375};
        t.end = hb::Date{t.day + 0.4375};
        t.subject = u"Meeting about item " + hb::toStr(static_cast<long long>(i));
        const int c = static_cast<int>(i % kCompanies), p = static_cast<int>(i / 7 % kPeople);
        t.values = {r.total.children[c].label, r.total.children[c].children[p].label, u""};
        t.seconds = t.roundedSeconds = 5400;
        t.amount = hb::Currency{1200000};
        for (SummaryNode* n : {&r.total, &r.total.children[c], &r.total.children[c].children[p]}) {
            n->seconds += t.seconds;
            n->roundedSeconds += t.roundedSeconds;
            n->amount.scaled += t.amount.scaled;
            ++n->records;
        }
        r.records.push_back(std::move(t));
    }
    return r;
}

const Report& report() {
    static const Report r = bigReport(100000);
    return r;
}

// A scratch folder, removed when the program ends.
struct Scratch {
    std::filesystem::path path = std::filesystem::temp_directory_path() / "hb-export-bench";
    Scratch() { std::filesystem::create_directories(path); }
    ~Scratch() {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
};

const std::filesystem::path& folder() {
    static const Scratch scratch;
    return scratch.path;
}

template <class Write>
void run(benchmark::State& state, Write write) {
    const Report& r = report();
    for (auto _ : state)
        write(r);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * r.records.size()));
}

void BM_ExportCsv100k(benchmark::State& state) {
    run(state, [](const Report& r) { writeCsv(folder() / "r.csv", r, hb::Locale::enUS()); });
}
void BM_ExportXlsx100k(benchmark::State& state) {
    run(state, [](const Report& r) { writeXlsx(folder() / "r.xlsx", r, hb::Locale::enUS()); });
}
void BM_ExportHtml100k(benchmark::State& state) {
    run(state, [](const Report& r) { writeHtml(folder() / "r.html", r, hb::Locale::enUS()); });
}

BENCHMARK(BM_ExportCsv100k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExportXlsx100k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExportHtml100k)->Unit(benchmark::kMillisecond);

}  // namespace
