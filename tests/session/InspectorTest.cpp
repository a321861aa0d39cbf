// Appointment windows: which windows the session wraps, and what each
// wrapper gives them: the task pane under Outlook 2007 and later, the
// toolbar under older versions or without the host's connection.
#include <gtest/gtest.h>

#include "addin/cCalendarReactions.h"
#include "explorer/cToolBarItem.h"
#include "session/ExplorerSupport.h"
#include "settings/cPersonalSettings.h"

namespace hbtest {
namespace {

std::size_t inspectorWrappers(SessionHarness& h) {
    return h.session().oCalendarReactions->colInspectors.size();
}

class Inspectors : public ::testing::Test {
  protected:
    explicit Inspectors(Str version = u"12.0.4518.1014") : h(std::move(version)) {}
    void start() {
        h.setLists(workgroupLists());
        appt = h.addAppointment(u"Review", u"Globex, Jones, Office");
        h.start();
        ASSERT_TRUE(h.loaded());
    }
    std::shared_ptr<sim::Item> archivedAppointment() {
        return h.outlook()
            .addStore(u"Archive")
            .root->addFolder(u"Calendar", sim::ol::AppointmentItem)
            ->addAppointment(u"Old", sim::makeDate(2020, 1, 6, 9), sim::makeDate(2020, 1, 6, 10));
    }
    SessionHarness h;
    std::shared_ptr<sim::Item> appt;
};

TEST_F(Inspectors, AnAppointmentWindowGetsThePaneDockedRight185WideWithTheItemThenTheSettings) {
    start();
    h.instruments().resetCounts();
    auto window = h.sc().openInspector(appt);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_EQ(SessionHarness::addinBar(*window), nullptr);
    auto pane = h.paneOf(*window);
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->title, u"Hourbook for Outlook (4.0.12)");
    EXPECT_TRUE(pane->visible);
    EXPECT_EQ(pane->dockPosition, sim::mso::DockRight);
    EXPECT_EQ(pane->width(), 185);
    // Its height is left to Office.
    EXPECT_EQ(putsOf(h.instruments(), u"Width"), std::vector<std::string>{"Long 185"});
    EXPECT_TRUE(putsOf(h.instruments(), u"Height").empty());
    EXPECT_EQ(h.instruments().count(u"CreateCTP"), 1u);

    auto controls = h.paneControls();
    ASSERT_EQ(controls.size(), 1u);
    const std::vector<Str> order = {u"objAppointment", u"Settings"};
    EXPECT_EQ(controls[0]->assigned, order);
    EXPECT_EQ(simOf(controls[0]->pane.objAppointment()), appt);
    EXPECT_EQ(controls[0]->view.labels[0].caption, u"Company");
    EXPECT_EQ(controls[0]->view.selected(0), u"Globex");
    EXPECT_EQ(controls[0]->view.selected(1), u"Jones");
    EXPECT_EQ(controls[0]->view.selected(2), u"Office");

    // The pane's own changes while it was set up were not kept.
    EXPECT_GE(pane->dockEvents, 1);
    EXPECT_FALSE(h.setting(u"PaneWidth").has_value());
    EXPECT_EQ(h.session().oPersonalSettings->intPaneWidth, 185);

    // Activating the window leaves it to the pane.
    h.sc().activate(h.sc().explorer());
    h.sc().activate(window);
    EXPECT_EQ(SessionHarness::addinBar(*window), nullptr);

    // Closing lets go of the pane.
    h.sc().close(window);
    EXPECT_TRUE(h.session().objToolBar->objCTP().isEmpty() ||
                h.session().objToolBar->objCTP().isNothing());
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// A mail's window gets nothing of the add-in, and the explorer it takes
// the focus from disables its boxes.
TEST(InspectorsOfMail, GetNothingWhateverTheVersion) {
    for (const char16_t* version : {u"12.0.4518.1014", u"11.0.8217"}) {
        SCOPED_TRACE(hb::toUtf8(version));
        SessionHarness h(version);
        h.setLists(workgroupLists());
        auto a = h.addAppointment(u"A", u"Acme");
        h.start();
        ASSERT_TRUE(h.loaded());
        auto ex = h.sc().explorer();
        h.sc().select(ex, {a});
        ASSERT_TRUE(h.combo(*ex, 1)->enabled);
        auto window = h.sc().openInspector(h.outlook().inbox()->addMail(u"Hello"));
        EXPECT_EQ(inspectorWrappers(h), 0u);
        EXPECT_EQ(SessionHarness::addinBar(*window), nullptr);
        EXPECT_TRUE(window->panes.empty());
        EXPECT_EQ(h.instruments().count(u"CreateCTP"), 0u);
        EXPECT_FALSE(h.combo(*ex, 1)->enabled);
        EXPECT_TRUE(h.session().objToolBar->ouiCurrItem().isNothing());
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    }
}

TEST_F(Inspectors, AMeetingRequestIsAnAppointmentWindow) {
    start();
    auto request = h.outlook().calendar()->addMeetingRequest(u"Planning", u"Acme");
    auto window = h.sc().openInspector(request);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_NE(h.paneOf(*window), nullptr);
}

TEST_F(Inspectors, WithoutTheHostsConnectionOnlyTheCalendarsStoreCountsAndGetsTheToolbar) {
    start();
    auto archived = archivedAppointment();
    h.session().blnConnected = false;
    auto other = h.sc().openInspector(archived);
    EXPECT_EQ(inspectorWrappers(h), 0u);
    EXPECT_EQ(SessionHarness::addinBar(*other), nullptr);
    auto window = h.sc().openInspector(appt);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_EQ(h.paneOf(*window), nullptr);
    ASSERT_NE(h.combo(*window, 1), nullptr);
    EXPECT_EQ(h.combo(*window, 1)->text, u"Globex");
}

TEST_F(Inspectors, ConnectedAnyStoresAppointmentCounts) {
    start();
    auto window = h.sc().openInspector(archivedAppointment());
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_NE(h.paneOf(*window), nullptr);
}

// Each closed window lets go of its wrapper, its Inspector, its item and
// its events: opening and closing many leaves as much held as one did, and
// the toolbar does not keep a closed window's item as its current one.
TEST(InspectorsClosed, AreLetGoOfWithTheirItems) {
    for (const char16_t* version : {u"12.0.4518.1014", u"11.0.8217"}) {
        SCOPED_TRACE(hb::toUtf8(version));
        SessionHarness h(version);
        h.setLists(workgroupLists());
        auto first = h.addAppointment(u"First", u"Globex");
        auto second = h.addAppointment(u"Second", u"Acme", 2);
        h.start();
        ASSERT_TRUE(h.loaded());
        auto kept = h.sc().openInspector(first);
        const auto cycle = [&] { h.sc().close(h.sc().openInspector(second)); };
        cycle();
        const std::size_t handles = h.instruments().liveHandleCount();
        const std::size_t subscriptions = h.instruments().liveSubscriptionCount();
        for (int i = 0; i < 199; ++i)
            cycle();
        EXPECT_EQ(h.instruments().liveHandleCount(), handles);
        EXPECT_EQ(h.instruments().liveSubscriptionCount(), subscriptions);
        EXPECT_EQ(inspectorWrappers(h), 1u);
        EXPECT_NE(simOf(h.session().objToolBar->ouiCurrItem()), second);

        h.sc().close(kept);
        EXPECT_EQ(inspectorWrappers(h), 0u);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
        h.sc().quit();
        EXPECT_TRUE(h.census().empty()) << h.censusText();
    }
}

class InspectorsInOutlook2003 : public Inspectors {
  protected:
    InspectorsInOutlook2003() : Inspectors(u"11.0.8217") {}
};

TEST_F(InspectorsInOutlook2003, TheWindowGetsTheToolbarShowingTheItemAndLosesItOnClose) {
    start();
    auto ex = h.sc().explorer();
    auto window = h.sc().openInspector(appt);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_TRUE(window->panes.empty());
    auto bar = SessionHarness::addinBar(*window);
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(barControls(*window).size(), 6u);
    auto first = h.combo(*window, 1);
    EXPECT_TRUE(first->enabled);
    EXPECT_EQ(first->text, u"Globex");
    EXPECT_TRUE(h.session().objToolBar->blnInInspector());

    // A pick writes the window's item; saving is left to the user.
    h.instruments().resetCounts();
    h.sc().pickInCombo(first, u"Acme");
    EXPECT_EQ(putsOf(h.instruments(), u"Categories"),
              std::vector<std::string>{"String \",Acme,Jones,Office\""});
    EXPECT_EQ(window->currentItem->categories, u"Acme, Jones, Office");
    EXPECT_EQ(appt->saveCount, 0);
    h.sc().saveItem(window);
    EXPECT_EQ(appt->categories, u"Acme, Jones, Office");

    h.sc().close(window);
    EXPECT_TRUE(bar->deleted);
    // The explorer's bar is still there and serves again.
    ASSERT_EQ(barControls(*ex).size(), 6u);
    auto other = h.addAppointment(u"Other", u"Initech", 2);
    h.sc().select(ex, {other});
    EXPECT_EQ(h.combo(*ex, 1)->text, u"Initech");
    h.sc().pickInCombo(h.combo(*ex, 1), u"Acme");
    EXPECT_EQ(other->saveCount, 1);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

}  // namespace
}  // namespace hbtest
