// Settings and metadata benchmarks: the settings body and the metadata list
// text with three lists of 10,000 entries each, the markings against such
// lists, and a 100,000-character long property in the simulated Outlook.
#include <benchmark/benchmark.h>

#include <memory>

#include "common/Session.h"
#include "metadata/cMarking.h"
#include "platform/memory/MemoryPlatform.h"
#include "settings/cPersonalSettings.h"
#include "settings/modSettingsAppointment.h"
#include "sim/Scenario.h"

namespace {

using namespace hb;

constexpr int kEntries = 10000;

struct World {
    MemoryPlatform platform;
    Session s{platform};
    World() {
        s.strListSeparator = u",";
        s.oPersonalSettings = std::make_shared<cPersonalSettings>(s);
        Str list;
        const Str names[] = {u"Company", u"Person", u"Extra"};
        for (int l = 0; l < 3; ++l) {
            list += names[l] + u":";
            for (int i = 0; i < kEntries; ++i) {
                list += names[l] + u" entry " + toStr(i) + u";";
            }
            list += u"\r\n";
        }
        s.oPersonalSettings->subPopulateMetadataList(list);
    }
    cPersonalSettings& settings() { return *s.oPersonalSettings; }
};

void BM_BuildSettingsBody(benchmark::State& state) {
    World w;
    std::size_t size = 0;
    for (auto _ : state) {
        Str body = w.settings().fncBuildBody();
        size = body.size();
        benchmark::DoNotOptimize(body);
    }
    state.counters["chars"] = static_cast<double>(size);
}
BENCHMARK(BM_BuildSettingsBody)->Unit(benchmark::kMillisecond);

void BM_ParseSettingsBody(benchmark::State& state) {
    World w;
    const Str body = w.settings().fncBuildBody();
    for (auto _ : state) {
        w.settings().FromString(body);
        benchmark::DoNotOptimize(w.settings().MetaDataLists.size());
    }
    state.counters["chars"] = static_cast<double>(body.size());
}
BENCHMARK(BM_ParseSettingsBody)->Unit(benchmark::kMillisecond);

void BM_BuildMetadataListText(benchmark::State& state) {
    World w;
    for (auto _ : state) {
        Variant list = w.settings().fncMetadataList();
        benchmark::DoNotOptimize(list);
    }
}
BENCHMARK(BM_BuildMetadataListText)->Unit(benchmark::kMillisecond);

void BM_ParseMetadataListText(benchmark::State& state) {
    World w;
    const Str list = w.settings().fncMetadataList().toStr();
    for (auto _ : state) {
        w.settings().subPopulateMetadataList(list);
        benchmark::DoNotOptimize(w.settings().MetaDataLists.size());
    }
}
BENCHMARK(BM_ParseMetadataListText)->Unit(benchmark::kMillisecond);

void BM_BillingToMarkings(benchmark::State& state) {
    World w;
    cMarking marking(w.s);
    const Str text = u",Company entry 9999, Person entry 5000 ,Extra entry 1,Unknown";
    for (auto _ : state) {
        marking.BillingToMarkings(text);
        benchmark::DoNotOptimize(marking.colMarkings.data());
    }
}
BENCHMARK(BM_BillingToMarkings)->Unit(benchmark::kMicrosecond);

void BM_MarkingCategories(benchmark::State& state) {
    World w;
    cMarking marking(w.s);
    marking.BillingToMarkings(u"Company entry 9999,Person entry 5000,Extra entry 1");
    for (auto _ : state) {
        Str text = marking.MarkingCategories();
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_MarkingCategories)->Unit(benchmark::kMicrosecond);

void BM_LongPropertyStoreAndRead(benchmark::State& state) {
    MemoryPlatform platform;
    Session s{platform};
    sim::Scenario sc;
    sc.instruments().setLogging(false);
    auto cal = sc.outlook().calendar();
    auto appt = cal->addAppointment(kSettingsSubject, sim::makeDate(2050, 1, 1, 0, 1),
                                    sim::makeDate(2050, 1, 1, 0, 2));
    Variant item = sc.instruments().toAddin(Variant(ObjectPtr(appt)), u"bench");
    Str text;
    text.reserve(100000);
    for (int i = 0; i < 100000; ++i)
        text += static_cast<char16_t>(u'a' + i % 26);
    for (auto _ : state) {
        subFixLongProperty(s, item, text, u"Settings");
        Str back = fncGetLongProperty(s, item, u"Settings");
        if (back != text) state.SkipWithError("round trip changed the text");
        benchmark::DoNotOptimize(back);
    }
    s.ofCalendar = Variant();
}
BENCHMARK(BM_LongPropertyStoreAndRead)->Unit(benchmark::kMillisecond);

}  // namespace
