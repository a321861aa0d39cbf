// The one clean-up and every road to it: the host's begin-shutdown,
// disconnection and termination calls, Outlook's Quit, the last window
// closing; repeated, nested and after a failed connection. Afterwards no
// window carries anything of the add-in and the add-in holds nothing of
// Outlook.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "addin/OHBAddinDesigner.h"
#include "addin/cCalendarReactions.h"
#include "explorer/cExplorerEvents.h"
#include "explorer/cToolBarItem.h"
#include "session/SessionHarness.h"

namespace hbtest {
namespace {

// A world with two calendar windows, an appointment window (its own bar
// under Outlook 2003) and the menu-bar entry an older version of the
// add-in left in every explorer.
struct World {
    explicit World(Str version = u"11.0.8217", bool withInspector = true) : h(std::move(version)) {
        h.setLists(workgroupLists());
        appt = h.addAppointment(u"Review", u"Acme, Smith");
        h.start();
        if (!h.loaded()) throw std::logic_error("the add-in did not load");
        second = h.sc().openExplorer(h.outlook().calendar());
        if (withInspector) inspector = h.sc().openInspector(appt);
        for (const auto& e : h.outlook().explorers()) {
            auto entry = e->commandBars->menuBar()->controls->add(sim::mso::ControlPopup, 1, false);
            entry->caption = hb::kProductCaption;
            menuEntries.emplace_back(e, entry);
        }
        EXPECT_NE(SessionHarness::addinBar(*second), nullptr);
    }

    // Nothing of the add-in is left in any open window.
    void expectWindowsClean() {
        for (const auto& w : h.outlook().allWindows()) {
            if (!w->open) continue;
            EXPECT_EQ(SessionHarness::addinBar(*w), nullptr) << hb::toUtf8(w->caption());
        }
        for (const auto& [window, entry] : menuEntries)
            EXPECT_TRUE(entry->deleted || !window->open);
    }

    SessionHarness h;
    std::shared_ptr<sim::Item> appt;
    std::shared_ptr<sim::Explorer> second;
    std::shared_ptr<sim::Inspector> inspector;
    std::vector<std::pair<std::shared_ptr<sim::Explorer>, std::shared_ptr<sim::CommandBarControl>>>
        menuEntries;
    hb::Args custom;
};

// Every road to the clean-up leaves no window with anything of the add-in,
// holds nothing of Outlook and shows nothing.
TEST(Shutdown, EveryRoadCleansEveryWindowAndLetsGoOfOutlook) {
    struct Road {
        const char* name;
        Str version;
        bool withInspector;
        std::function<void(World&)> go;
    };
    const Road roads[] = {
        {"begin-shutdown", u"11.0.8217", true,
         [](World& w) { w.h.designer()->AddinInstance_OnBeginShutdown(w.custom); }},
        // With the holder serving a calendar window the bar is removed once
        // per window: the second removal must find it let go of already.
        {"begin-shutdown serving a calendar window", u"12.0.4518.1014", false,
         [](World& w) { w.h.designer()->AddinInstance_OnBeginShutdown(w.custom); }},
        {"the add-ins dialog", u"11.0.8217", true,
         [](World& w) {
             w.h.sc().disconnectAddin();
             // Outlook runs on and its windows no longer reach the add-in.
             w.h.sc().activate(w.second);
             w.h.sc().select(w.h.sc().explorer(), {w.appt});
         }},
        {"termination alone", u"11.0.8217", true,
         [](World& w) { w.h.designer()->AddinInstance_Terminate(); }},
        {"Outlook's Quit event", u"11.0.8217", true,
         [](World& w) {
             w.h.outlook().application()->raiseEvent(u"ApplicationEvents", u"Quit", {});
             w.h.sc().pump();
         }},
        {"closing the last window", u"11.0.8217", true,
         [](World& w) {
             w.h.sc().close(w.inspector);
             w.h.sc().close(w.second);
             ASSERT_TRUE(w.h.loaded());
             EXPECT_FALSE(w.h.session().oCalendarReactions->colExplorers.empty());
             w.h.sc().close(w.h.sc().explorer());
             EXPECT_FALSE(w.h.loaded());
         }},
        {"quitting with a task pane open", u"12.0.4518.1014", true,
         [](World& w) {
             ASSERT_NE(w.h.paneOf(*w.inspector), nullptr);
             EXPECT_EQ(SessionHarness::addinBar(*w.inspector), nullptr);
             w.h.sc().quit();
             EXPECT_FALSE(w.h.loaded());
             EXPECT_TRUE(w.h.paneControls().empty());
         }},
    };
    for (const Road& road : roads) {
        SCOPED_TRACE(road.name);
        World w(road.version, road.withInspector);
        road.go(w);
        w.expectWindowsClean();
        EXPECT_TRUE(w.h.census().empty()) << w.h.censusText();
        EXPECT_TRUE(w.h.sc().addinErrors.empty());
        EXPECT_EQ(w.h.errorDialogs(), 0u) << w.h.messageBoxesText();
        if (w.h.loaded()) {
            hb::Session& s = w.h.session();
            EXPECT_FALSE(s.oCalendarReactions);
            EXPECT_FALSE(s.objToolBar);
            EXPECT_FALSE(s.oAppointments);
            EXPECT_TRUE(s.olApp.isEmpty());
            EXPECT_TRUE(s.ofCalendar.isEmpty());
            EXPECT_FALSE(s.blnClosingDown);
        }
    }
}

TEST(Shutdown, TheHostsCallsOneAfterAnotherDoNoHarm) {
    World w;
    w.h.designer()->AddinInstance_OnBeginShutdown(w.custom);
    const auto callsAfterFirst = w.h.instruments().callCount();
    w.h.designer()->AddinInstance_OnBeginShutdown(w.custom);
    w.h.designer()->AddinInstance_OnDisconnection(sim::ext::DisconnectHostShutdown, w.custom);
    w.h.designer()->AddinInstance_Terminate();
    // The later ones find nothing left to clean and ask Outlook nothing.
    EXPECT_EQ(w.h.instruments().callCount(), callsAfterFirst);
    w.expectWindowsClean();
    w.h.sc().quit();
    EXPECT_TRUE(w.h.census().empty()) << w.h.censusText();
    EXPECT_TRUE(w.h.sc().addinErrors.empty());
    EXPECT_EQ(w.h.errorDialogs(), 0u) << w.h.messageBoxesText();
}

TEST(Shutdown, AWindowThatCannotBeReachedIsSkipped) {
    World w;
    // The first window's command bars cannot be counted: it keeps its bar,
    // the other windows are cleaned all the same.
    w.h.instruments().failMember(u"Count", u"CommandBars");
    w.h.designer()->AddinInstance_OnBeginShutdown(w.custom);
    w.h.instruments().clearFaults();
    EXPECT_NE(SessionHarness::addinBar(*w.h.sc().explorer()), nullptr);
    EXPECT_NE(SessionHarness::addinBar(*w.second), nullptr);
    // Appointment windows are cleaned without that test.
    EXPECT_EQ(SessionHarness::addinBar(*w.inspector), nullptr);
    EXPECT_TRUE(w.h.census().empty()) << w.h.censusText();
    EXPECT_EQ(w.h.errorDialogs(), 0u) << w.h.messageBoxesText();
}

TEST(Shutdown, AFailureAfterTheFirstReachableWindowLeavesForTheCommonExit) {
    World w;
    w.h.instruments().failMember(u"ActiveMenuBar");
    w.h.designer()->AddinInstance_OnBeginShutdown(w.custom);
    w.h.instruments().clearFaults();
    // The first window lost its bar, then the clean-up left: the second
    // window and the appointment window keep theirs, and the toolbar
    // holder stays until the host's next call.
    EXPECT_EQ(SessionHarness::addinBar(*w.h.sc().explorer()), nullptr);
    EXPECT_NE(SessionHarness::addinBar(*w.second), nullptr);
    EXPECT_NE(SessionHarness::addinBar(*w.inspector), nullptr);
    hb::Session& s = w.h.session();
    EXPECT_FALSE(s.oCalendarReactions);
    EXPECT_TRUE(s.olApp.isEmpty());
    EXPECT_TRUE(s.objToolBar);
    EXPECT_FALSE(s.blnClosingDown);
    EXPECT_EQ(w.h.errorDialogs(), 0u) << w.h.messageBoxesText();

    w.h.designer()->AddinInstance_OnDisconnection(sim::ext::DisconnectHostShutdown, w.custom);
    EXPECT_FALSE(w.h.session().objToolBar);
    EXPECT_TRUE(w.h.census().empty()) << w.h.censusText();
}

TEST(ShutdownFailedConnection, OnlyTheGlobalsAreReleased) {
    SessionHarness h;
    h.setLists(workgroupLists());
    h.instruments().failMember(u"ApplicationEvents");
    h.start();
    h.instruments().clearFaults();
    // Office heard of the failure and unloaded the add-in, which let go.
    ASSERT_EQ(h.sc().addinErrors.size(), 1u);
    EXPECT_EQ(h.sc().addinErrors[0].rfind(u"OnConnection", 0), 0u);
    EXPECT_FALSE(h.loaded());
    EXPECT_EQ(SessionHarness::addinBar(*h.sc().explorer()), nullptr);
    EXPECT_TRUE(h.platform().messageBoxes().empty());
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    h.sc().quit();
}

TEST(ShutdownGuard, ACallWhileTheCleanUpRunsOnlyReleasesTheGlobals) {
    sim::Scenario sc;
    hb::MemoryPlatform platform;
    hb::Session s(platform);
    sim::Instruments& instr = sc.instruments();
    const Variant app = instr.toAddin(Variant(hb::ObjectPtr(sc.outlook().application())), u"t");
    s.olApp = app;
    s.ofCalendar = instr.toAddin(Variant(hb::ObjectPtr(sc.outlook().calendar())), u"t");
    s.oCalendarReactions = std::make_shared<hb::cCalendarReactions>(s);
    s.oCalendarReactions->setOuaMyOutlook(app);
    s.objToolBar = std::make_shared<hb::cToolBarItem>(s);
    s.blnClosingDown = true;  // the clean-up is already running

    hb::subCloseDown(s);
    EXPECT_FALSE(s.oCalendarReactions);
    EXPECT_TRUE(s.olApp.isEmpty());
    EXPECT_TRUE(s.ofCalendar.isEmpty());
    // The windows and the toolbar holder are left to the running clean-up.
    EXPECT_EQ(instr.count(u"Explorers"), 0u);
    EXPECT_TRUE(s.objToolBar);
    // The common exit resets the guard.
    EXPECT_FALSE(s.blnClosingDown);
    s.objToolBar.reset();
}

// Closed wrappers are removed by their position in the collection, which is
// not corrected after a removal; a position past the end is reported.
TEST(ClearExplorers, RemovesByAPositionNotCorrectedAfterARemoval) {
    struct Case {
        std::vector<bool> closed;
        std::vector<std::size_t> kept;  // positions in the original collection
        bool reported;
    };
    const Case cases[] = {
        {{false, true, false}, {0, 2}, false},
        // The first closed wrapper went; for the third, position 3 of the
        // shortened collection was removed: the open fourth wrapper.
        {{true, false, true, false}, {1, 2}, false},
        {{true, true}, {1}, true},
        {{}, {}, true},  // no collection at all
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.closed.size());
        hb::MemoryPlatform platform;
        hb::Session s(platform);
        std::vector<std::shared_ptr<hb::cExplorerEvents>> original;
        if (!c.closed.empty()) {
            s.oCalendarReactions = std::make_shared<hb::cCalendarReactions>(s);
            for (bool closed : c.closed) {
                original.push_back(std::make_shared<hb::cExplorerEvents>(s));
                original.back()->blnClosed = closed;
            }
            s.oCalendarReactions->colExplorers = original;
        }
        hb::subClearExplorers(s);
        if (s.oCalendarReactions) {
            std::vector<std::shared_ptr<hb::cExplorerEvents>> expected;
            for (std::size_t i : c.kept)
                expected.push_back(original[i]);
            EXPECT_EQ(s.oCalendarReactions->colExplorers, expected);
        }
        ASSERT_EQ(platform.messageBoxes().size(), c.reported ? 1u : 0u);
        if (c.reported) {
            EXPECT_NE(platform.messageBoxes()[0].text.find(u"subClearExplorers"), Str::npos);
        }
    }
}

}  // namespace
}  // namespace hbtest
