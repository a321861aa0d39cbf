// Fault sweeps over the explorer, toolbar and task pane scenarios: each
// object-model call of a scenario fails once in turn. The add-in never lets
// an error reach Outlook (the driver would see it), shows at most one error
// dialog, and still lets go of every Outlook object at shutdown.
#include <gtest/gtest.h>

#include <functional>

#include "session/ExplorerSupport.h"

namespace hbtest {
namespace {

using Step = std::function<void(SessionHarness&)>;

// A user action that a fault may have made impossible (a box that was never
// built, a window already gone) is skipped, as the user would.
void attempt(SessionHarness& h, const Step& step) {
    try {
        step(h);
    } catch (const sim::ScenarioError&) {
    } catch (const std::logic_error&) {
    }
    (void)h;
}

void pick(SessionHarness& h, const sim::Window& w, int n, const Str& entry) {
    attempt(h, [&](SessionHarness& hh) {
        if (auto c = hh.combo(w, n); c && c->enabled) hh.sc().pickInCombo(c, entry);
    });
}

void click(SessionHarness& h, const sim::Window& w, std::int32_t faceId) {
    attempt(h, [&](SessionHarness& hh) {
        if (auto b = hh.button(w, faceId)) hh.sc().click(b);
    });
}

struct SweepCase {
    Str version = u"12.0.4518.1014";
    Step setup;  // before Outlook starts
    Step act;    // after Outlook started, before it quits
};

// One run: start, act, quit. Returns the number of calls the add-in made.
struct RunResult {
    std::uint64_t calls = 0;
    std::uint64_t faults = 0;
    std::size_t dialogs = 0;
    std::vector<Str> census;
};

RunResult runOnce(const SweepCase& c, std::uint64_t failAt) {
    SessionHarness h(c.version);
    if (c.setup) c.setup(h);
    h.instruments().resetCounts();
    if (failAt) h.instruments().failCall(failAt);
    h.start();
    if (c.act) attempt(h, c.act);
    h.sc().quit();
    RunResult r;
    r.faults = h.instruments().faultsInjected();
    r.dialogs = h.errorDialogs();
    r.census = h.census();
    r.calls = h.instruments().callCount();
    return r;
}

void sweep(const SweepCase& c) {
    const RunResult clean = runOnce(c, 0);
    ASSERT_EQ(clean.dialogs, 0u) << "the scenario fails without a fault";
    ASSERT_TRUE(clean.census.empty());
    const std::uint64_t n = clean.calls;
    ASSERT_GT(n, 0u);
    std::size_t reported = 0;
    for (const std::uint64_t k : callsToFail(n)) {
        const RunResult r = runOnce(c, k);
        // The runs agree up to call k, so call k is made and fails.
        EXPECT_EQ(r.faults, 1u) << "call " << k << " of " << n;
        EXPECT_LE(r.dialogs, 1u) << "call " << k << " of " << n;
        std::string left;
        for (const Str& line : r.census)
            left += hb::toUtf8(line) + "\n";
        EXPECT_TRUE(r.census.empty()) << "call " << k << " of " << n << ":\n" << left;
        reported += r.dialogs;
        if (::testing::Test::HasFailure()) break;  // one failing call is enough to look at
    }
    // Failures are reported, not swallowed: some runs showed the dialog.
    EXPECT_GT(reported, 0u);
    ::testing::Test::RecordProperty("calls", static_cast<int>(n));
}

TEST(ExplorerFaultSweep, SelectingPickingAndSwitchingFolders) {
    SweepCase c;
    c.setup = [](SessionHarness& h) {
        h.setLists(workgroupLists());
        h.setSetting(u"WriteSubject", u"True");
        h.addAppointment(u"", u"Globex");
        h.addAppointment(u"Meeting with the board", {}, 2);
    };
    c.act = [](SessionHarness& h) {
        auto ex = h.sc().explorer();
        auto cal = h.outlook().calendar();
        auto a = cal->items[0];
        auto b = cal->items[1];
        attempt(h, [&](SessionHarness& hh) { hh.sc().select(ex, {a}); });
        pick(h, *ex, 1, u"Acme");
        pick(h, *ex, 2, u"Smith");
        attempt(h, [&](SessionHarness& hh) { hh.sc().select(ex, {a, b}); });
        attempt(h, [&](SessionHarness& hh) { hh.sc().select(ex, {b}); });
        pick(h, *ex, 3, u"Travel");
        attempt(h, [&](SessionHarness& hh) { hh.sc().switchFolder(ex, hh.outlook().inbox()); });
        attempt(h, [&](SessionHarness& hh) { hh.sc().switchFolder(ex, cal); });
    };
    sweep(c);
}

TEST(ExplorerFaultSweep, ASecondExplorerAndClosingBoth) {
    SweepCase c;
    c.setup = [](SessionHarness& h) {
        h.setLists(workgroupLists());
        h.addAppointment(u"Review", u"Acme");
    };
    c.act = [](SessionHarness& h) {
        auto cal = h.outlook().calendar();
        std::shared_ptr<sim::Explorer> second;
        attempt(h, [&](SessionHarness& hh) { second = hh.sc().openExplorer(cal); });
        if (second) {
            attempt(h, [&](SessionHarness& hh) { hh.sc().select(second, {cal->items[0]}); });
            pick(h, *second, 2, u"Jones");
            attempt(h, [&](SessionHarness& hh) { hh.sc().close(second); });
        }
        attempt(h, [&](SessionHarness& hh) { hh.sc().close(hh.sc().explorer()); });
    };
    sweep(c);
}

TEST(ExplorerFaultSweep, SettingsRebuildReportAndStatistics) {
    SweepCase c;
    c.setup = [](SessionHarness& h) {
        h.setLists(workgroupLists());
        h.addProgram(u"HBPersonalSettings.exe");
        h.addProgram(u"HBReporting.exe");
        h.addProgram(u"Cubelens.exe");
    };
    c.act = [](SessionHarness& h) {
        auto ex = h.sc().explorer();
        click(h, *ex, 1556);
        attempt(h, [&](SessionHarness& hh) {
            auto mail = hh.outlook().inbox()->addMail(u"Note");
            hh.sc().close(hh.sc().openInspector(mail));
        });
        click(h, *ex, 790);
        click(h, *ex, 1957);
    };
    sweep(c);
}

TEST(ExplorerFaultSweep, TaskPaneOfAnAppointmentWindow) {
    SweepCase c;
    c.setup = [](SessionHarness& h) {
        h.setLists(workgroupLists());
        h.addAppointment(u"Review", u"Globex, Jones");
    };
    c.act = [](SessionHarness& h) {
        std::shared_ptr<sim::Inspector> inspector;
        attempt(h, [&](SessionHarness& hh) {
            inspector = hh.sc().openInspector(hh.outlook().calendar()->items[0]);
        });
        if (!inspector) return;
        if (auto pane = h.paneOf(*inspector)) {
            attempt(h, [&](SessionHarness& hh) { hh.sc().dockPane(pane, sim::mso::DockBottom); });
            attempt(h, [&](SessionHarness& hh) { hh.sc().resizePane(pane, 0, 250); });
        }
        attempt(h, [&](SessionHarness& hh) { hh.sc().close(inspector); });
    };
    sweep(c);
}

TEST(ExplorerFaultSweep, ToolbarInAnOutlook2003AppointmentWindow) {
    SweepCase c;
    c.version = u"11.0.8217";
    c.setup = [](SessionHarness& h) {
        h.setLists(workgroupLists());
        h.addAppointment(u"Review", u"Globex");
    };
    c.act = [](SessionHarness& h) {
        std::shared_ptr<sim::Inspector> inspector;
        attempt(h, [&](SessionHarness& hh) {
            inspector = hh.sc().openInspector(hh.outlook().calendar()->items[0]);
        });
        if (!inspector) return;
        pick(h, *inspector, 2, u"Smith");
        attempt(h, [&](SessionHarness& hh) { hh.sc().close(inspector); });
    };
    sweep(c);
}

}  // namespace
}  // namespace hbtest
