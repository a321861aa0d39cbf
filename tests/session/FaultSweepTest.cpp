// Fault sweep: every scenario is run once to count the object-model calls
// it makes (N), then again with call k failing, for k from 1 to N. Whatever
// fails, the add-in lets no error reach Outlook (only its connection call
// may fail, as Office allows), shows at most one error report per load, and
// holds nothing of Outlook once Outlook has quit.
//
// Which calls fail is callsToFail's choice (every call, or a sample with
// HB_SWEEP_SAMPLES=k).
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <iostream>

#include "session/SessionHarness.h"

namespace hbtest {
namespace {

// A driver action the user could not take because of an earlier failure
// (a missing bar, a closed window) is skipped; the scenario goes on.
void act(const std::function<void()>& action) {
    try {
        action();
    } catch (const sim::ScenarioError&) {
    }
}

void pick(SessionHarness& h, const sim::Window& window, int n, const Str& entry) {
    act([&] {
        if (auto c = h.combo(window, n)) h.sc().pickInCombo(c, entry);
    });
}

void click(SessionHarness& h, const sim::Window& window, std::int32_t faceId) {
    act([&] {
        if (auto b = h.button(window, faceId)) h.sc().click(b);
    });
}

void ribbonPick(SessionHarness& h, int n, const Str& entry) {
    act([&] {
        sim::Ribbon* ribbon = h.sc().ribbon();
        auto e = h.sc().explorer();
        if (!ribbon || !e) return;
        const Str id = u"hbList" + hb::toStr(static_cast<long long>(n));
        const auto* v = ribbon->view(*e, id);
        if (!v) return;
        for (std::size_t i = 0; i < v->items.size(); ++i) {
            if (v->items[i].second == entry) {
                h.sc().ribbonPick(e, id, static_cast<std::int32_t>(i));
                return;
            }
        }
    });
}

std::shared_ptr<sim::Explorer> mainWindow(SessionHarness& h) {
    return h.sc().explorer();
}

struct SweepScenario {
    const char* name;
    Str version;
    std::function<void(SessionHarness&)> setUp;
    std::function<void(SessionHarness&)> play;  // after Outlook started
    // When set, Outlook starts without the add-in, this runs, and then the
    // add-in is loaded into the running Outlook.
    std::function<void(SessionHarness&)> beforeConnection = {};
};

std::vector<SweepScenario> scenarios() {
    return {
        {"first start without settings", u"12.0.4518.1014",
         [](SessionHarness& h) {
             h.addProgram(u"HBPersonalSettings.exe");
             h.addAppointment(u"Review");
         },
         [](SessionHarness& h) {
             auto e = mainWindow(h);
             act([&] { h.sc().select(e, {h.outlook().calendar()->findBySubject(u"Review")}); });
             act([&] { h.sc().quit(); });
         }},
        {"workgroup billing in the calendar window", u"12.0.4518.1014",
         [](SessionHarness& h) {
             h.setLists(workgroupLists());
             h.setSetting(u"WriteSubject", u"True");
             h.addAppointment(u"", u"", 0);
             h.addAppointment(u"Meeting with the board", u"Globex, Jones", 2);
         },
         [](SessionHarness& h) {
             auto e = mainWindow(h);
             auto cal = h.outlook().calendar();
             auto empty = cal->findBySubject(u"");
             auto board = cal->findBySubject(u"Meeting with the board");
             act([&] { h.sc().select(e, {empty}); });
             pick(h, *e, 1, u"Acme");
             pick(h, *e, 2, u"Smith");
             pick(h, *e, 3, u"Travel");
             act([&] { h.sc().select(e, {board}); });
             pick(h, *e, 1, u"Initech");
             act([&] { h.sc().select(e, {empty, board}); });
             act([&] { h.sc().select(e, {h.outlook().inbox()->addMail(u"Hello")}); });
             act([&] { h.sc().switchFolder(e, h.outlook().inbox()); });
             act([&] { h.sc().switchFolder(e, cal); });
             act([&] { h.sc().activate(e); });
             act([&] { h.sc().quit(); });
         }},
        {"appointment windows with task panes", u"12.0.4518.1014",
         [](SessionHarness& h) {
             h.setLists(workgroupLists());
             h.addAppointment(u"Review", u"Globex, Jones");
         },
         [](SessionHarness& h) {
             auto appt = h.outlook().calendar()->findBySubject(u"Review");
             std::shared_ptr<sim::Inspector> window;
             act([&] { window = h.sc().openInspector(appt); });
             for (const auto& control : h.paneControls())
                 control->pick(0, u"Acme");
             h.sc().pump();
             if (window) {
                 if (auto pane = h.paneOf(*window)) {
                     act([&] { h.sc().dockPane(pane, sim::mso::DockBottom); });
                     act([&] { h.sc().resizePane(pane, 300, 240); });
                 }
                 act([&] { h.sc().close(window); });
             }
             act([&] {
                 auto mail = h.sc().openInspector(h.outlook().inbox()->addMail(u"Hello"));
                 h.sc().close(mail);
             });
             act([&] { h.sc().openInspector(appt); });
             act([&] { h.sc().quit(); });
         }},
        {"Outlook 2003: appointment window toolbar and a second window", u"11.0.8217",
         [](SessionHarness& h) {
             h.setLists(workgroupLists());
             h.addAppointment(u"Review", u"Globex, Jones");
         },
         [](SessionHarness& h) {
             auto appt = h.outlook().calendar()->findBySubject(u"Review");
             std::shared_ptr<sim::Inspector> window;
             act([&] { window = h.sc().openInspector(appt); });
             if (window) {
                 pick(h, *window, 2, u"Smith");
                 act([&] { h.sc().close(window); });
             }
             std::shared_ptr<sim::Explorer> second;
             act([&] { second = h.sc().openExplorer(h.outlook().calendar()); });
             if (second) act([&] { h.sc().close(second); });
             act([&] { h.sc().openInspector(appt); });
             // The user closes the main window last: Outlook quits.
             act([&] {
                 for (const auto& i : std::vector(h.outlook().inspectors()))
                     h.sc().close(i);
                 if (auto e = mainWindow(h)) h.sc().close(e);
             });
         }},
        {"series, copies, commands, then the add-ins dialog", u"12.0.4518.1014",
         [](SessionHarness& h) {
             h.setLists(workgroupLists());
             h.setSetting(u"CreateLocalCube", u"True");
             h.addProgram(u"HBPersonalSettings.exe");
             h.addProgram(u"HBReporting.exe");
             h.addProgram(u"Cubelens.exe");
             auto series = h.outlook().calendar()->addRecurringAppointment(
                 u"Weekly", sim::makeDate(2024, 5, 6, 9), sim::makeDate(2024, 5, 6, 10),
                 u"Acme, Smith");
             series->addException(sim::makeDate(2024, 5, 13, 9), sim::makeDate(2024, 5, 13, 10));
             auto posted = h.addAppointment(u"Posted", u"Acme", 4);
             posted->addUserProperty(u"strPosted", sim::ol::DateTime,
                                     Variant(sim::makeDate(2024, 5, 31)));
         },
         [](SessionHarness& h) {
             auto e = mainWindow(h);
             auto cal = h.outlook().calendar();
             auto series = cal->findBySubject(u"Weekly");
             act([&] { h.sc().select(e, {series->exceptions.front()}); });
             pick(h, *e, 3, u"Travel");
             act([&] { h.sc().copyItem(cal->findBySubject(u"Posted")); });
             click(h, *e, 790);
             click(h, *e, 1957);
             click(h, *e, 1556);
             act([&] { h.sc().activate(e); });
             act([&] { h.sc().close(h.sc().openExplorer(h.outlook().inbox())); });
             act([&] { h.sc().disconnectAddin(); });
             act([&] { h.sc().quit(); });
         }},
        {"a second calendar window, then closing both", u"12.0.4518.1014",
         [](SessionHarness& h) {
             h.setLists(workgroupLists());
             h.addAppointment(u"Review", u"Acme");
         },
         [](SessionHarness& h) {
             auto cal = h.outlook().calendar();
             std::shared_ptr<sim::Explorer> second;
             act([&] { second = h.sc().openExplorer(cal); });
             if (second) {
                 act([&] { h.sc().select(second, {cal->items[0]}); });
                 pick(h, *second, 2, u"Jones");
                 act([&] { h.sc().close(second); });
             }
             act([&] { h.sc().close(mainWindow(h)); });
         }},
        {"billing on the calendar's ribbon", u"16.0.4266.1001",
         [](SessionHarness& h) {
             h.setLists(workgroupLists());
             h.setSetting(u"WriteSubject", u"True");
             h.addProgram(u"HBReporting.exe");
             h.addAppointment(u"", u"Holiday", 0);
             h.addAppointment(u"Meeting with the board", u"Globex, Jones", 2);
         },
         [](SessionHarness& h) {
             auto e = mainWindow(h);
             auto cal = h.outlook().calendar();
             // Held: the pick writes the empty one's subject.
             auto empty = cal->findBySubject(u"");
             auto board = cal->findBySubject(u"Meeting with the board");
             act([&] { h.sc().select(e, {empty}); });
             ribbonPick(h, 1, u"Acme");
             act([&] { h.sc().select(e, {board}); });
             ribbonPick(h, 2, u"Smith");
             act([&] { h.sc().ribbonPress(e, u"hbReport"); });
             // The settings program saves a list with a new entry.
             auto lists = workgroupLists();
             lists[2].names.push_back(u"Training");
             h.setLists(lists);
             act([&] { h.sc().select(e, {empty}); });
             ribbonPick(h, 3, u"Training");
             act([&] { h.sc().switchFolder(e, h.outlook().inbox()); });
             act([&] { h.sc().quit(); });
         }},
        {"loaded into a running Outlook with windows open", u"12.0.4518.1014",
         [](SessionHarness& h) {
             h.setLists(workgroupLists());
             h.addAppointment(u"Review", u"Globex, Jones");
             h.addAppointment(u"Other", u"Holiday, Initech", 2);
         },
         [](SessionHarness& h) {
             auto e = mainWindow(h);
             pick(h, *e, 2, u"Smith");
             for (const auto& control : h.paneControls())
                 control->pick(0, u"Acme");
             h.sc().pump();
             act([&] {
                 for (const auto& i : std::vector(h.outlook().inspectors()))
                     h.sc().close(i);
             });
             act([&] { h.sc().quit(); });
         },
         [](SessionHarness& h) {
             auto cal = h.outlook().calendar();
             h.sc().openInspector(cal->findBySubject(u"Review"));
             h.sc().openExplorer(h.outlook().inbox());
             h.sc().activate(mainWindow(h));
             h.sc().select(mainWindow(h), {cal->findBySubject(u"Other")});
         }},
    };
}

struct RunResult {
    std::uint64_t calls = 0;
    std::uint64_t faults = 0;
    std::size_t dialogs = 0;
};

RunResult runOnce(const SweepScenario& scenario, std::optional<std::uint64_t> failAt) {
    SessionHarness h(scenario.version);
    scenario.setUp(h);
    if (failAt) h.instruments().failCall(*failAt);
    if (scenario.beforeConnection) {
        h.startWithoutAddin();
        scenario.beforeConnection(h);
        h.connectAfterStart();
    } else {
        h.start();
    }
    scenario.play(h);
    // Whatever the scenario left open, Outlook ends.
    act([&] { h.sc().quit(); });

    RunResult result;
    result.calls = h.instruments().callCount();
    result.faults = h.instruments().faultsInjected();
    result.dialogs = h.errorDialogs();

    const std::string where =
        std::string(scenario.name) +
        (failAt ? " with call " + std::to_string(*failAt) + " failing" : " without faults");
    for (const Str& e : h.sc().addinErrors) {
        EXPECT_EQ(e.rfind(u"OnConnection", 0), 0u) << where << ": " << hb::toUtf8(e);
    }
    EXPECT_LE(h.errorDialogs(), 1u) << where << "\n" << h.messageBoxesText();
    // A failing ribbon callback is the add-in's own: nothing raises into
    // Office.
    if (const sim::Ribbon* ribbon = h.sc().ribbon()) {
        EXPECT_EQ(ribbon->callbackErrors, 0u) << where;
        EXPECT_EQ(ribbon->typeErrors, 0u) << where;
    }
    EXPECT_FALSE(h.loaded()) << where;
    const auto census = h.census();
    EXPECT_TRUE(census.empty()) << where << "\n" << h.censusText();
    if (!failAt) {
        EXPECT_EQ(h.errorDialogs(), 0u) << where << "\n" << h.messageBoxesText();
        EXPECT_TRUE(h.sc().addinErrors.empty()) << where;
    }
    return result;
}

class FaultSweep : public ::testing::TestWithParam<std::size_t> {};

TEST_P(FaultSweep, NoFailureReachesOutlookOrKeepsItHeld) {
    const SweepScenario scenario = scenarios().at(GetParam());
    const RunResult baseline = runOnce(scenario, std::nullopt);
    ASSERT_GT(baseline.calls, 0u);
    std::size_t runs = 0, reported = 0;
    for (const std::uint64_t k : callsToFail(baseline.calls)) {
        SCOPED_TRACE("call " + std::to_string(k) + " of " + std::to_string(baseline.calls));
        const RunResult r = runOnce(scenario, k);
        ++runs;
        // The runs agree up to call k, so call k is made and fails.
        EXPECT_EQ(r.faults, 1u);
        reported += r.dialogs;
        if (HasFailure()) break;  // one broken run is enough to read
    }
    // Failures are reported, not swallowed: some runs showed the dialog.
    EXPECT_GT(reported, 0u);
    std::cout << "[ sweep    ] " << scenario.name << ": " << baseline.calls << " calls, " << runs
              << " runs, " << reported << " reported\n";
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultSweep,
                         ::testing::Range<std::size_t>(0, scenarios().size()));

}  // namespace
}  // namespace hbtest
