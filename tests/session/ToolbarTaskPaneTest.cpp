// The task pane of an appointment window: placed by the personal settings,
// its geometry kept, and what happens without the factory.
#include <gtest/gtest.h>

#include "addin/cCalendarReactions.h"
#include "explorer/cToolBarItem.h"
#include "session/ExplorerSupport.h"
#include "settings/cPersonalSettings.h"

namespace hbtest {
namespace {

class ToolbarTaskPane : public ::testing::Test {
  protected:
    void start() {
        h.setLists(workgroupLists());
        appt = h.addAppointment(u"Review", u"Globex, Jones");
        h.start();
        ASSERT_TRUE(h.loaded());
    }
    hb::cPersonalSettings& settings() { return *h.session().oPersonalSettings; }
    std::shared_ptr<sim::CustomTaskPane> open() {
        inspector = h.sc().openInspector(appt);
        return h.paneOf(*inspector);
    }
    std::vector<std::string> puts(hb::StrView member) { return putsOf(h.instruments(), member); }

    SessionHarness h;
    std::shared_ptr<sim::Item> appt;
    std::shared_ptr<sim::Inspector> inspector;
};

TEST_F(ToolbarTaskPane, TheDockSideDecidesWhichSizeIsApplied) {
    struct Case {
        std::int16_t dock;
        bool width, height;
    };
    for (const Case c : {Case{0, true, false}, Case{1, false, true}, Case{2, true, false},
                         Case{3, false, true}, Case{4, true, true}}) {
        SCOPED_TRACE(c.dock);
        SessionHarness fresh;
        fresh.setLists(workgroupLists());
        auto item = fresh.addAppointment(u"Review");
        fresh.start();
        ASSERT_TRUE(fresh.loaded());
        fresh.session().oPersonalSettings->intPaneDockPos = c.dock;
        fresh.session().oPersonalSettings->intPaneWidth = 240;
        fresh.session().oPersonalSettings->intPaneHeight = 320;
        fresh.instruments().resetCounts();
        auto window = fresh.sc().openInspector(item);
        auto pane = fresh.paneOf(*window);
        ASSERT_NE(pane, nullptr);
        EXPECT_EQ(pane->dockPosition, c.dock);
        EXPECT_EQ(putsOf(fresh.instruments(), u"Width").size(), c.width ? 1u : 0u);
        EXPECT_EQ(putsOf(fresh.instruments(), u"Height").size(), c.height ? 1u : 0u);
        if (c.width) {
            EXPECT_EQ(pane->width(), 240);
        }
        if (c.height) {
            EXPECT_EQ(pane->height(), 320);
        }
        // Nothing of this was saved.
        EXPECT_EQ(fresh.session().oPersonalSettings->intPaneWidth, 240);
        EXPECT_FALSE(fresh.setting(u"PaneDockPos").has_value());
        EXPECT_EQ(fresh.errorDialogs(), 0u) << fresh.messageBoxesText();
    }
}

TEST_F(ToolbarTaskPane, MovingThePaneToTheBottomSavesItsPlaceAndSize) {
    start();
    auto pane = open();
    ASSERT_NE(pane, nullptr);
    h.sc().dockPane(pane, sim::mso::DockBottom);
    EXPECT_EQ(settings().intPaneDockPos, 3);
    EXPECT_EQ(settings().intPaneHeight, pane->height());
    EXPECT_EQ(settings().intPaneWidth, pane->width());
    EXPECT_EQ(h.setting(u"PaneDockPos"), Str(u"3"));
    EXPECT_EQ(h.setting(u"PaneHeight"), hb::toStr(pane->height()));
    EXPECT_EQ(h.setting(u"PaneWidth"), hb::toStr(pane->width()));

    // A later resize is kept too; closing with the same geometry saves no more.
    h.sc().resizePane(pane, 0, 250);
    EXPECT_EQ(h.setting(u"PaneHeight"), Str(u"250"));
    h.platform().setString(u"Software\\Brindlewood\\Hourbook for Outlook\\Settings", u"PaneHeight",
                           u"marker");
    h.sc().close(inspector);
    EXPECT_EQ(h.setting(u"PaneHeight"), Str(u"marker"));
    EXPECT_TRUE(h.session().objToolBar->objCTP().isEmpty());
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ToolbarTaskPane, AZeroSizeIsNeverSaved) {
    start();
    auto pane = open();
    ASSERT_NE(pane, nullptr);
    h.sc().resizePane(pane, 0, 0);  // docked right: the width collapses
    EXPECT_EQ(pane->width(), 0);
    EXPECT_EQ(settings().intPaneWidth, 185);
    EXPECT_FALSE(h.setting(u"PaneWidth").has_value());
    h.sc().close(inspector);
    EXPECT_FALSE(h.setting(u"PaneWidth").has_value());
    EXPECT_EQ(settings().intPaneDockPos, 2);
}

TEST_F(ToolbarTaskPane, ClosingTheWindowSavesTheLastGeometry) {
    start();
    auto first = open();
    auto firstWindow = inspector;
    // A second window's pane becomes the holder's; the first one's later
    // changes are no longer heard, and its close saves the holder's pane.
    auto other = h.addAppointment(u"Other", {}, 2);
    auto second = h.sc().openInspector(other);
    auto secondPane = h.paneOf(*second);
    ASSERT_TRUE(first && secondPane);
    secondPane->sideWidth = 300;  // as Office would report it, without an event
    h.sc().close(second);
    EXPECT_EQ(h.setting(u"PaneWidth"), Str(u"300"));
    EXPECT_EQ(settings().intPaneWidth, 300);
    h.sc().close(firstWindow);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST_F(ToolbarTaskPane, ExplorerActivationCountsInspectorsAndReattachesOnlyWithNoneOpen) {
    start();
    auto pane = open();
    ASSERT_NE(pane, nullptr);
    auto& reactions = *h.session().oCalendarReactions;
    ASSERT_EQ(reactions.colInspectors.size(), 1u);
    h.sc().activate(h.sc().explorer());
    EXPECT_EQ(h.session().intInspectorCount, 1);
    // With a window open nothing is re-attached, so it is wrapped once only.
    EXPECT_EQ(reactions.colInspectors.size(), 1u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// A pane set-up that fails half way (its error reported once) does not
// stop the geometry of a pane the user moves afterwards from being kept.
TEST(ToolbarTaskPaneFailedSetUp, LaterDockChangesAreStillKept) {
    struct Case {
        const char16_t* failing;
        bool paneMade;  // the failing window has a pane the user can move
    };
    for (const Case c : {Case{u"CreateCTP", false}, Case{u"ContentControl", true}}) {
        SCOPED_TRACE(hb::toUtf8(c.failing));
        SessionHarness h;
        h.setLists(workgroupLists());
        auto first = h.addAppointment(u"First", u"Globex");
        auto second = h.addAppointment(u"Second", u"Acme", 2);
        h.start();
        ASSERT_TRUE(h.loaded());
        auto firstWindow = h.sc().openInspector(first);
        auto firstPane = h.paneOf(*firstWindow);
        ASSERT_NE(firstPane, nullptr);
        h.instruments().failMember(c.failing);
        auto secondWindow = h.sc().openInspector(second);
        h.instruments().clearFaults();
        EXPECT_EQ(h.errorDialogs(), 1u) << h.messageBoxesText();
        auto moved = c.paneMade ? h.paneOf(*secondWindow) : firstPane;
        ASSERT_NE(moved, nullptr);
        h.sc().dockPane(moved, 3);
        EXPECT_EQ(h.setting(u"PaneDockPos"), Str(u"3"));
        EXPECT_EQ(h.session().oPersonalSettings->intPaneDockPos, 3);
        EXPECT_EQ(h.errorDialogs(), 1u) << h.messageBoxesText();
    }
}

TEST_F(ToolbarTaskPane, WithoutAFactoryThePaneFailsOnceAndTheWindowStaysPlain) {
    start();
    h.session().oCTPFactory = Variant::nothing();
    auto pane = open();
    EXPECT_EQ(pane, nullptr);
    EXPECT_EQ(h.errorDialogs(), 1u);
    EXPECT_NE(h.messageBoxesText().find("cToolBarItem.subAddCTP"), std::string::npos)
        << h.messageBoxesText();
    h.sc().close(inspector);
    h.sc().quit();
    EXPECT_EQ(h.errorDialogs(), 1u);
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

}  // namespace
}  // namespace hbtest
