// The one clean-up and every road to it: the host's begin-shutdown,
// disconnection and termination calls, Outlook's Quit, the last window
// closing; repeated, nested and after a failed connection. Afterwards no
// window carries anything of the add-in and the add-in holds nothing of
// Outlook.
#include <gtest/gtest.h>

#include <functional>

#include "addin/OHBAddinDesigner.h"
#include "addin/cCalendarReactions.h"
#include "explorer/cExplorerEvents.h"
#include "explorer/cToolBarItem.h"
#include "session/SessionHarness.h"

namespace hbtest {
namespace {

// A world with two calendar windows, an open appointment window (its own
// bar under Outlook 2003) and the menu-bar entry an older version of the
// add-in left in every explorer.
class Shutdown : public ::testing::Test {
  protected:
    explicit Shutdown(Str version = u"11.0.8217") : h(std::move(version)) {}

    void start() {
        h.setLists(workgroupLists());
        appt = h.addAppointment(u"Review", u"Acme, Smith");
        h.start();
        ASSERT_TRUE(h.loaded());
        second = h.sc().openExplorer(h.outlook().calendar());
        inspector = h.sc().openInspector(appt);
        for (const auto& e : h.outlook().explorers()) {
            auto entry = e->commandBars->menuBar()->controls->add(sim::mso::ControlPopup, 1, false);
            entry->caption = hb::kProductCaption;
            menuEntries.push_back(entry);
        }
        ASSERT_NE(SessionHarness::addinBar(*h.sc().explorer()), nullptr);
        ASSERT_NE(SessionHarness::addinBar(*second), nullptr);
    }

    // Nothing of the add-in is left in any open window.
    void expectWindowsClean() {
        for (const auto& w : h.outlook().allWindows()) {
            if (!w->open) continue;
            EXPECT_EQ(SessionHarness::addinBar(*w), nullptr) << hb::toUtf8(w->caption());
        }
        for (const auto& entry : menuEntries)
            EXPECT_TRUE(entry->deleted);
    }

    SessionHarness h;
    std::shared_ptr<sim::Item> appt;
    std::shared_ptr<sim::Explorer> second;
    std::shared_ptr<sim::Inspector> inspector;
    std::vector<std::shared_ptr<sim::CommandBarControl>> menuEntries;
    hb::Args custom;
};

TEST_F(Shutdown, BeginShutdownCleansEveryWindowAndLetsGoOfOutlook) {
    start();
    ASSERT_NE(SessionHarness::addinBar(*inspector), nullptr);
    h.designer()->AddinInstance_OnBeginShutdown(custom);
    expectWindowsClean();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    hb::Session& s = h.session();
    EXPECT_FALSE(s.oCalendarReactions);
    EXPECT_FALSE(s.objToolBar);
    EXPECT_FALSE(s.oAppointments);
    EXPECT_TRUE(s.olApp.isEmpty());
    EXPECT_TRUE(s.ofCalendar.isEmpty());
    EXPECT_FALSE(s.blnClosingDown);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(Shutdown, DisconnectingFromTheAddinsDialogCleansEveryWindow) {
    start();
    h.sc().disconnectAddin();
    EXPECT_FALSE(h.loaded());
    expectWindowsClean();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    // Outlook runs on and its windows no longer reach the add-in.
    h.sc().activate(second);
    h.sc().select(h.sc().explorer(), {appt});
    expectWindowsClean();
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(Shutdown, TerminationAloneCleansUp) {
    start();
    h.designer()->AddinInstance_Terminate();
    expectWindowsClean();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST_F(Shutdown, OutlooksQuitEventCleansUp) {
    start();
    h.outlook().application()->raiseEvent(u"ApplicationEvents", u"Quit", {});
    h.sc().pump();
    expectWindowsClean();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST_F(Shutdown, ClosingTheLastWindowShutsDownAndOutlookQuits) {
    start();
    h.sc().close(inspector);
    h.sc().close(second);
    ASSERT_TRUE(h.loaded());
    EXPECT_FALSE(h.session().oCalendarReactions->colExplorers.empty());
    h.sc().close(h.sc().explorer());
    EXPECT_FALSE(h.loaded());
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    EXPECT_TRUE(h.sc().addinErrors.empty());
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// With the holder serving a calendar window, the clean-up removes the bar
// once per window: the second removal must find the bar already let go of,
// not fail on a deleted one in front of the user.
TEST(ShutdownTwoCalendarWindows, BeginShutdownShowsNoErrorAndLeavesNoBar) {
    SessionHarness h(u"12.0.4518.1014");
    h.setLists(workgroupLists());
    h.start();
    ASSERT_TRUE(h.loaded());
    auto second = h.sc().openExplorer(h.outlook().calendar());
    ASSERT_NE(SessionHarness::addinBar(*second), nullptr);
    hb::Args custom;
    h.designer()->AddinInstance_OnBeginShutdown(custom);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    for (const auto& e : h.outlook().explorers())
        EXPECT_EQ(SessionHarness::addinBar(*e), nullptr);
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST_F(Shutdown, TheHostsCallsOneAfterAnotherDoNoHarm) {
    start();
    h.designer()->AddinInstance_OnBeginShutdown(custom);
    const auto callsAfterFirst = h.instruments().callCount();
    h.designer()->AddinInstance_OnBeginShutdown(custom);
    h.designer()->AddinInstance_OnDisconnection(sim::ext::DisconnectHostShutdown, custom);
    h.designer()->AddinInstance_Terminate();
    // The later ones find nothing left to clean and ask Outlook nothing.
    EXPECT_EQ(h.instruments().callCount(), callsAfterFirst);
    expectWindowsClean();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    h.sc().quit();
    EXPECT_TRUE(h.sc().addinErrors.empty());
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(Shutdown, AWindowThatCannotBeReachedIsSkipped) {
    start();
    // The first window's command bars cannot be counted: it keeps its bar,
    // the other windows are cleaned all the same.
    h.instruments().failMember(u"Count", u"CommandBars");
    h.designer()->AddinInstance_OnBeginShutdown(custom);
    h.instruments().clearFaults();
    EXPECT_NE(SessionHarness::addinBar(*h.sc().explorer()), nullptr);
    EXPECT_NE(SessionHarness::addinBar(*second), nullptr);
    // Appointment windows are cleaned without that test.
    EXPECT_EQ(SessionHarness::addinBar(*inspector), nullptr);
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(Shutdown, AFailureAfterTheFirstReachableWindowLeavesForTheCommonExit) {
    start();
    h.instruments().failMember(u"ActiveMenuBar");
    h.designer()->AddinInstance_OnBeginShutdown(custom);
    h.instruments().clearFaults();
    // The first window lost its bar, then the clean-up left: the second
    // window and the appointment window keep theirs, and the toolbar
    // holder stays until the host's next call.
    EXPECT_EQ(SessionHarness::addinBar(*h.sc().explorer()), nullptr);
    EXPECT_NE(SessionHarness::addinBar(*second), nullptr);
    EXPECT_NE(SessionHarness::addinBar(*inspector), nullptr);
    hb::Session& s = h.session();
    EXPECT_FALSE(s.oCalendarReactions);
    EXPECT_TRUE(s.olApp.isEmpty());
    EXPECT_TRUE(s.objToolBar);
    EXPECT_FALSE(s.blnClosingDown);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();

    h.designer()->AddinInstance_OnDisconnection(sim::ext::DisconnectHostShutdown, custom);
    EXPECT_FALSE(h.session().objToolBar);
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

class ShutdownWithTaskPanes : public Shutdown {
  protected:
    ShutdownWithTaskPanes() : Shutdown(u"12.0.4518.1014") {}
};

TEST_F(ShutdownWithTaskPanes, QuittingWithAnAppointmentWindowOpenReleasesEverything) {
    start();
    ASSERT_NE(h.paneOf(*inspector), nullptr);
    EXPECT_EQ(SessionHarness::addinBar(*inspector), nullptr);
    h.sc().quit();
    EXPECT_FALSE(h.loaded());
    EXPECT_TRUE(h.paneControls().empty());
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    EXPECT_TRUE(h.sc().addinErrors.empty());
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
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
// not corrected after a removal.
class ClearExplorers : public ::testing::Test {
  protected:
    ClearExplorers() : s(platform) {
        s.oCalendarReactions = std::make_shared<hb::cCalendarReactions>(s);
    }
    std::vector<std::shared_ptr<hb::cExplorerEvents>>& col() {
        return s.oCalendarReactions->colExplorers;
    }
    void fill(std::initializer_list<bool> closed) {
        for (bool c : closed) {
            col().push_back(std::make_shared<hb::cExplorerEvents>(s));
            col().back()->blnClosed = c;
        }
        original = col();
    }
    hb::MemoryPlatform platform;
    hb::Session s;
    std::vector<std::shared_ptr<hb::cExplorerEvents>> original;
};

TEST_F(ClearExplorers, OneClosedWrapperGoes) {
    fill({false, true, false});
    hb::subClearExplorers(s);
    ASSERT_EQ(col().size(), 2u);
    EXPECT_EQ(col()[0], original[0]);
    EXPECT_EQ(col()[1], original[2]);
    EXPECT_TRUE(platform.messageBoxes().empty());
}

TEST_F(ClearExplorers, AfterARemovalTheNextClosedOneIsTakenOnePositionTooHigh) {
    fill({true, false, true, false});
    hb::subClearExplorers(s);
    // The first closed wrapper went; for the third, position 3 of the
    // shortened collection was removed: the open fourth wrapper.
    ASSERT_EQ(col().size(), 2u);
    EXPECT_EQ(col()[0], original[1]);
    EXPECT_EQ(col()[1], original[2]);
    EXPECT_TRUE(platform.messageBoxes().empty());
}

TEST_F(ClearExplorers, APositionPastTheEndIsReported) {
    fill({true, true});
    hb::subClearExplorers(s);
    ASSERT_EQ(col().size(), 1u);
    EXPECT_EQ(col()[0], original[1]);
    ASSERT_EQ(platform.messageBoxes().size(), 1u);
    EXPECT_NE(platform.messageBoxes()[0].text.find(u"subClearExplorers"), Str::npos);
}

TEST(ClearExplorersWithoutSession, IsReportedNotRaised) {
    hb::MemoryPlatform platform;
    hb::Session s(platform);
    hb::subClearExplorers(s);
    ASSERT_EQ(platform.messageBoxes().size(), 1u);
    EXPECT_NE(platform.messageBoxes()[0].text.find(u"subClearExplorers"), Str::npos);
}

}  // namespace
}  // namespace hbtest
