// Settings and metadata benchmarks: the settings body and the metadata list
// text with three lists of 10,000 entries each, the markings against such
// lists (beside a linear walk over every entry), and a 100,000-character
// long property in the simulated Outlook.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "common/Session.h"
#include "common/Text.h"
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

const Str kBilling = u",Company entry 9999, Person entry 5000 ,Extra entry 1,Unknown";

// The straightforward reading of the billing text, for comparison: every
// trimmed piece against every entry of every list, case-sensitive, a later
// piece winning.
void linearBillingToMarkings(Session& s, const Str& text, std::vector<Str>& markings) {
    if (text.empty()) return;
    for (const Str& raw : text::split(text, s.strListSeparator)) {
        const Str piece = text::trim(raw);
        std::size_t list = 0;
        for (const auto& dic : s.oPersonalSettings->MetaDataLists) {
            for (const auto& entry : *dic->MetaDic) {
                if (entry.second->MetaName == piece) markings[list] = piece;
            }
            ++list;
        }
    }
}

// Argument 0: BillingToMarkings; argument 1: the linear walk above. Both
// must give the same markings.
void BM_BillingToMarkings(benchmark::State& state) {
    World w;
    const bool linear = state.range(0) != 0;
    cMarking marking(w.s);
    std::vector<Str> walked(w.settings().MetaDataLists.size());
    for (auto _ : state) {
        if (linear) {
            linearBillingToMarkings(w.s, kBilling, walked);
            benchmark::DoNotOptimize(walked.data());
        } else {
            marking.BillingToMarkings(kBilling);
            benchmark::DoNotOptimize(marking.colMarkings.data());
        }
    }
    marking.BillingToMarkings(kBilling);
    linearBillingToMarkings(w.s, kBilling, walked);
    for (std::size_t i = 0; i < walked.size(); ++i) {
        if (walked[i] != marking.colMarkings[i]->MetaName || walked[i].empty())
            state.SkipWithError("the two readings differ");
    }
    state.SetLabel(linear ? "linear walk over every entry" : "BillingToMarkings");
}
BENCHMARK(BM_BillingToMarkings)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

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
