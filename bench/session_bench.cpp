// The explorer side under load: three metadata lists of 10,000 entries each.
//  - start-up of Outlook with the add-in until the calendar window has its bar,
//  - a selection change in the calendar (the boxes set, and filled only
//    when their lists changed), beside today's refill on every change,
//  - a value picked in a box (written, saved, shown again).
//  - the same selection change on Outlook 16, where the calendar's ribbon
//    group shows the lists: the callbacks Office makes for what the add-in
//    invalidated.
// Beside the time each reports the object-model calls the add-in made
// (counted by the simulated Outlook) per operation.
#include <benchmark/benchmark.h>
#include "tests/support/ShippedLanguage.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "addin/OHBAddinDesigner.h"
#include "common/Constants.h"
#include "platform/memory/MemoryPlatform.h"
#include "sim/Scenario.h"

namespace {

using hb::Str;
using hb::Variant;

constexpr int kEntries = 10000;
const Str kSettingsKey = u"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

const Str& metadataText() {
    static const Str text = [] {
        Str t;
        for (const char16_t* caption : {u"Company", u"Person", u"Extra Field"}) {
            t += Str(caption) + u":";
            for (int i = 1; i <= kEntries; ++i)
                t += Str(caption) + u" " + hb::toStr(i) + u";";
            t += u"\r\n";
        }
        return t;
    }();
    return text;
}

class Designer : public sim::Addin {
  public:
    explicit Designer(hb::Platform& p) : designer(p) {}
    hb::OHBAddinDesigner designer;
    void onConnection(const Variant& app, std::int32_t mode, const Variant& inst,
                      hb::Args& custom) override {
        designer.AddinInstance_OnConnection(app, mode, inst, custom);
    }
    void ctpFactoryAvailable(const Variant& factory) override {
        designer.ICustomTaskPaneConsumer_CTPFactoryAvailable(factory);
    }
    void onBeginShutdown(hb::Args& custom) override {
        designer.AddinInstance_OnBeginShutdown(custom);
    }
    void onDisconnection(std::int32_t mode, hb::Args& custom) override {
        designer.AddinInstance_OnDisconnection(mode, custom);
    }
    hb::ObjectPtr ribbonExtensibility() override { return designer.ribbonCallbacks(); }
};

// Outlook with a calendar of two appointments and the workgroup's three big
// lists in the registry, not yet started.
struct World {
    hb::MemoryPlatform platform;
    sim::Scenario sc;
    std::shared_ptr<sim::Item> a, b;

    explicit World(const Str& version = u"12.0.4518.1014") {
        sc.outlook().version = version;
        platform.setResource(u"CUSTOM", u"LANGUAGE", hbtest::shippedLanguageResource());
        platform.setAddinVersion(hb::ModuleVersion{4, 0, 1});
        platform.addFolder(platform.documentsFolder());
        platform.addFolder(platform.moduleFolder());
        platform.setString(kSettingsKey, u"ReportChoice", u"2");
        platform.setString(kSettingsKey, u"ReportValue",
                           platform.documentsFolder() + u"\\My Hourbooks\\");
        platform.setString(kSettingsKey, u"PersonalRate", u"0");
        for (const char16_t* name :
             {u"FilterEvents", u"FilterPrivate", u"FilterRecurring", u"Convert24", u"RemoveLunch",
              u"CreateLocalCube", u"StartGrid", u"WriteSubject"}) {
            platform.setString(kSettingsKey, name, u"False");
        }
        platform.setString(kSettingsKey, u"Convert24Hours", u"8");
        platform.setString(kSettingsKey, u"RemoveLunchHours", u"0.75");
        platform.setString(kSettingsKey, u"MetadataList", metadataText());

        sim::Outlook& o = sc.outlook();
        o.addStore(u"Mailbox - John Smith");
        auto cal = o.calendar();
        (void)o.inbox();
        a = cal->addAppointment(u"Review", sim::makeDate(2024, 5, 6, 9),
                                sim::makeDate(2024, 5, 6, 10),
                                u"Company 5000, Person 17, Extra Field 9999");
        b = cal->addAppointment(u"Planning", sim::makeDate(2024, 5, 6, 11),
                                sim::makeDate(2024, 5, 6, 12), u"Company 3");
        platform.setActiveObject(
            u"Outlook.Application",
            sc.instruments().toAddin(Variant(hb::ObjectPtr(o.application())), u"GetObject"));
        sc.instruments().setLogging(false);
    }
    ~World() {
        sc.quit();
        platform.setActiveObject(u"Outlook.Application", Variant::nothing());
    }
    void start() { sc.startOutlook(std::make_shared<Designer>(platform), sim::ol::FolderCalendar); }
    std::shared_ptr<sim::CommandBarControl> combo(int n) {
        auto bar = sim::Scenario::bar(*sc.explorer(), hb::kProductCaption);
        if (!bar) throw std::runtime_error("no bar");
        int seen = 0;
        for (const auto& c : bar->controls->list) {
            if (c->isComboBox() && ++seen == n) return c;
        }
        throw std::runtime_error("no combo box");
    }
};

void report(benchmark::State& state, std::uint64_t calls) {
    state.counters["calls"] =
        benchmark::Counter(static_cast<double>(calls), benchmark::Counter::kAvgIterations);
}

void BM_StartupToFirstToolbar(benchmark::State& state) {
    std::uint64_t calls = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto world = std::make_unique<World>();
        world->sc.instruments().resetCounts();
        state.ResumeTiming();

        world->start();

        state.PauseTiming();
        if (!sim::Scenario::bar(*world->sc.explorer(), hb::kProductCaption)) {
            state.SkipWithError("no toolbar after start-up");
        }
        calls += world->sc.instruments().callCount();
        world.reset();
        state.ResumeTiming();
    }
    report(state, calls);
}
BENCHMARK(BM_StartupToFirstToolbar)->Unit(benchmark::kMillisecond);

// Consecutive selection changes. Argument 1 shows today's behaviour side by
// side: Outlook empties the boxes before each change, so every change fills
// all three again, as each one did before the boxes remembered their fill.
// Counters per change: every Office call, AddItem calls, and the calls
// beyond Text and Enabled.
void BM_SelectionChange(benchmark::State& state) {
    const bool refillEveryTime = state.range(0) != 0;
    World world;
    world.start();
    auto ex = world.sc.explorer();
    auto c1 = world.combo(1), c2 = world.combo(2), c3 = world.combo(3);
    world.sc.instruments().resetCounts();
    bool first = true;
    for (auto _ : state) {
        if (refillEveryTime) {
            state.PauseTiming();
            for (const auto& c : {c1, c2, c3})
                c->entries.clear();
            state.ResumeTiming();
        }
        world.sc.select(ex, {first ? world.a : world.b});
        first = !first;
    }
    if (world.combo(1)->entries.size() != kEntries) state.SkipWithError("boxes not filled");
    const sim::Instruments& in = world.sc.instruments();
    report(state, in.callCount());
    const auto perChange = [&](std::uint64_t n) {
        return benchmark::Counter(static_cast<double>(n), benchmark::Counter::kAvgIterations);
    };
    state.counters["AddItem"] = perChange(in.count(u"AddItem"));
    state.counters["beyondTextEnabled"] =
        perChange(in.callCount() - in.count(u"Text") - in.count(u"Enabled"));
    state.SetLabel(refillEveryTime ? "today: refilled every change" : "refill only on change");
}
BENCHMARK(BM_SelectionChange)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

void BM_ValuePick(benchmark::State& state) {
    World world;
    world.start();
    auto ex = world.sc.explorer();
    world.sc.select(ex, {world.a});
    world.sc.instruments().resetCounts();
    bool first = true;
    for (auto _ : state) {
        world.sc.pickInCombo(world.combo(2), first ? u"Person 42" : u"Person 9000");
        first = !first;
    }
    if (world.a->saveCount == 0) state.SkipWithError("nothing saved");
    report(state, world.sc.instruments().callCount());
}
BENCHMARK(BM_ValuePick)->Unit(benchmark::kMillisecond);

// Outlook 16: the calendar's ribbon group instead of the toolbar. Each change
// alters the value of all three lists, so each drop-down is invalidated and
// Office asks it again (its count, its items, its selected one).
void BM_RibbonSelectionChange(benchmark::State& state) {
    World world(u"16.0.4266.1001");
    world.start();
    auto ex = world.sc.explorer();
    sim::Ribbon* ribbon = world.sc.ribbon();
    if (!ribbon || !ribbon->groupShown(*ex)) {
        state.SkipWithError("no ribbon group");
        return;
    }
    world.sc.select(ex, {world.a});
    world.sc.instruments().resetCounts();
    const std::uint64_t callbacksBefore = ribbon->callbacks;
    bool first = false;
    for (auto _ : state) {
        world.sc.select(ex, {first ? world.a : world.b});
        first = !first;
    }
    if (ribbon->callbackErrors != 0 || ribbon->tooManyItems != 0)
        state.SkipWithError("callbacks failed");
    report(state, world.sc.instruments().callCount());
    state.counters["callbacks"] =
        benchmark::Counter(static_cast<double>(ribbon->callbacks - callbacksBefore),
                           benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_RibbonSelectionChange)->Unit(benchmark::kMillisecond);

}  // namespace
