// Appointment windows: which windows the session wraps, and what each
// wrapper gives them: the task pane under Outlook 2007 and later, the
// toolbar under older versions or without the host's connection.
#include <gtest/gtest.h>

#include "addin/cCalendarReactions.h"
#include "explorer/cToolBarItem.h"
#include "session/SessionHarness.h"

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
    SessionHarness h;
    std::shared_ptr<sim::Item> appt;
};

TEST_F(Inspectors, AnAppointmentWindowGetsThePaneWithTheItemThenTheSettings) {
    start();
    auto window = h.sc().openInspector(appt);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_EQ(SessionHarness::addinBar(*window), nullptr);
    auto pane = h.paneOf(*window);
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->title, u"Hourbook for Outlook (4.0.12)");
    EXPECT_EQ(h.instruments().count(u"CreateCTP"), 1u);

    auto controls = h.paneControls();
    ASSERT_EQ(controls.size(), 1u);
    const std::vector<Str> order = {u"objAppointment", u"Settings"};
    EXPECT_EQ(controls[0]->assigned, order);
    EXPECT_EQ(controls[0]->view.selected(0), u"Globex");
    EXPECT_EQ(controls[0]->view.selected(1), u"Jones");
    EXPECT_EQ(controls[0]->view.selected(2), u"Office");

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

TEST_F(Inspectors, AMailWindowGetsNothing) {
    start();
    auto mail = h.outlook().inbox()->addMail(u"Hello");
    auto window = h.sc().openInspector(mail);
    EXPECT_EQ(inspectorWrappers(h), 0u);
    EXPECT_EQ(h.paneOf(*window), nullptr);
    EXPECT_EQ(SessionHarness::addinBar(*window), nullptr);
    EXPECT_EQ(h.instruments().count(u"CreateCTP"), 0u);
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
    auto& archive = h.outlook().addStore(u"Archive");
    auto archived =
        archive.root->addFolder(u"Calendar", sim::ol::AppointmentItem)
            ->addAppointment(u"Old", sim::makeDate(2020, 1, 6, 9), sim::makeDate(2020, 1, 6, 10));
    h.session().blnConnected = false;

    auto other = h.sc().openInspector(archived);
    EXPECT_EQ(inspectorWrappers(h), 0u);
    EXPECT_EQ(SessionHarness::addinBar(*other), nullptr);

    auto window = h.sc().openInspector(appt);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_EQ(h.paneOf(*window), nullptr);
    ASSERT_NE(SessionHarness::addinBar(*window), nullptr);
    auto first = h.combo(*window, 1);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->text, u"Globex");
}

TEST_F(Inspectors, ConnectedAnyStoresAppointmentCounts) {
    start();
    auto& archive = h.outlook().addStore(u"Archive");
    auto archived =
        archive.root->addFolder(u"Calendar", sim::ol::AppointmentItem)
            ->addAppointment(u"Old", sim::makeDate(2020, 1, 6, 9), sim::makeDate(2020, 1, 6, 10));
    auto window = h.sc().openInspector(archived);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_NE(h.paneOf(*window), nullptr);
}

class InspectorsInOutlook2003 : public Inspectors {
  protected:
    InspectorsInOutlook2003() : Inspectors(u"11.0.8217") {}
};

TEST_F(InspectorsInOutlook2003, TheWindowGetsTheToolbarShowingTheItemAndLosesItOnClose) {
    start();
    auto window = h.sc().openInspector(appt);
    EXPECT_EQ(inspectorWrappers(h), 1u);
    EXPECT_EQ(h.paneOf(*window), nullptr);
    auto bar = SessionHarness::addinBar(*window);
    ASSERT_NE(bar, nullptr);
    auto first = h.combo(*window, 1);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->enabled);
    EXPECT_EQ(first->text, u"Globex");
    EXPECT_TRUE(h.session().objToolBar->blnInInspector());
    EXPECT_NE(h.button(*window, 790), nullptr);

    // A pick writes the window's item; saving is left to the user.
    const int saves = appt->saveCount;
    h.sc().pickInCombo(first, u"Acme");
    EXPECT_EQ(window->currentItem->categories, u"Acme, Jones, Office");
    EXPECT_EQ(appt->saveCount, saves);
    h.sc().saveItem(window);
    EXPECT_EQ(appt->categories, u"Acme, Jones, Office");

    h.sc().close(window);
    EXPECT_TRUE(bar->deleted);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST_F(InspectorsInOutlook2003, AMailWindowGetsNoToolbar) {
    start();
    auto window = h.sc().openInspector(h.outlook().inbox()->addMail(u"Hello"));
    EXPECT_EQ(inspectorWrappers(h), 0u);
    EXPECT_EQ(SessionHarness::addinBar(*window), nullptr);
}

}  // namespace
}  // namespace hbtest
