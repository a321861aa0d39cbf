// Explorer windows and the folder check: which window carries the bar, what
// switching folders, a second window and closing windows do.
#include <gtest/gtest.h>

#include "addin/cCalendarReactions.h"
#include "diagnostics/modErroHandling.h"
#include "explorer/cExplorerEvents.h"
#include "explorer/cToolBarItem.h"
#include "session/ExplorerSupport.h"

namespace hbtest {
namespace {

TEST(ExplorerClassTest, AppointmentsRequestsExceptionsAndAnyIpmAppointmentPass) {
    hb::MemoryPlatform platform;
    hb::Session s(platform);
    for (const char16_t* cls : {u"IPM.Appointment", u"ipm.appointment", u"IPM.Appointment.Custom",
                                u"ipm.APPOINTMENT.custom", u"IPM.Schedule.Meeting.Request",
                                u"ipm.ole.class.{00061055-0000-0000-c000-000000000046}"}) {
        EXPECT_TRUE(hb::fncIsAppointmentClass(s, cls)) << hb::toUtf8(cls);
        EXPECT_EQ(hb::fncGetLastTrace(s), u"Found this folder to be True");
    }
    for (const char16_t* cls : {u"IPM.Schedule.Meeting.Resp.Pos", u"IPM.Note", u"IPM.Appointmen",
                                u"IPM.Schedule.Meeting.Canceled", u""}) {
        EXPECT_FALSE(hb::fncIsAppointmentClass(s, cls)) << hb::toUtf8(cls);
        EXPECT_EQ(hb::fncGetLastTrace(s), u"Found this folder to be False");
    }
}

class ExplorerWindows : public ::testing::Test {
  protected:
    void start() {
        h.setLists(workgroupLists());
        h.start();
        ASSERT_TRUE(h.loaded());
        ex = h.sc().explorer();
    }
    std::shared_ptr<sim::Folder> lookalike() {
        // Another folder named like the calendar, in another place.
        return h.outlook().inbox()->addFolder(u"Calendar", sim::ol::AppointmentItem);
    }

    SessionHarness h;
    std::shared_ptr<sim::Explorer> ex;
};

TEST_F(ExplorerWindows, AWindowOnAFolderNamedLikeTheCalendarIsWrappedButGetsNoBar) {
    start();
    auto other = lookalike();
    // The folder check compares the entry ID only.
    hb::Session& s = h.session();
    EXPECT_TRUE(hb::CheckFolder(s, handleTo(h, h.outlook().calendar())));
    EXPECT_FALSE(hb::CheckFolder(s, handleTo(h, other)));
    EXPECT_FALSE(hb::CheckFolder(s, Variant::nothing()));
    auto second = h.sc().openExplorer(other);
    EXPECT_EQ(s.oCalendarReactions->colExplorers.size(), 2u);
    EXPECT_EQ(addinBarsIn(*second), 0u);
    // Switching the main window there removes its bar.
    ASSERT_NE(SessionHarness::addinBar(*ex), nullptr);
    h.sc().switchFolder(ex, other);
    EXPECT_EQ(addinBarsIn(*ex), 0u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ExplorerWindows, AnExplorerStartedOnTheInboxHasNoBarUntilItShowsTheCalendar) {
    h.setLists(workgroupLists());
    h.start(sim::ol::FolderInbox);
    ASSERT_TRUE(h.loaded());
    ex = h.sc().explorer();
    EXPECT_EQ(h.session().oCalendarReactions->colExplorers.size(), 1u);
    EXPECT_EQ(addinBarsIn(*ex), 0u);

    // FolderSwitch puts up the (empty) bar; the next activation builds it.
    h.sc().switchFolder(ex, h.outlook().calendar());
    ASSERT_EQ(addinBarsIn(*ex), 1u);
    EXPECT_TRUE(barControls(*ex).empty());
    auto mail = h.outlook().inbox()->addMail(u"Hello");
    auto inspector = h.sc().openInspector(mail);
    h.sc().close(inspector);  // the focus returns to the explorer
    EXPECT_EQ(barControls(*ex).size(), 6u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ExplorerWindows, SwitchingAwayAndBackKeepsOneBarAndShowsAgainAfterActivation) {
    auto appt = h.addAppointment(u"Review", u"Acme");
    start();
    h.sc().select(ex, {appt});
    ASSERT_EQ(h.combo(*ex, 1)->text, u"Acme");

    h.sc().switchFolder(ex, h.outlook().inbox());
    EXPECT_EQ(addinBarsIn(*ex), 0u);
    EXPECT_FALSE(h.sc().explorer()->selection.size() > 0);
    h.sc().switchFolder(ex, h.outlook().calendar());
    EXPECT_EQ(addinBarsIn(*ex), 1u);

    auto second = h.sc().openExplorer(h.outlook().inbox());
    h.sc().activate(ex);
    EXPECT_EQ(addinBarsIn(*ex), 1u);
    EXPECT_EQ(barControls(*ex).size(), 6u);
    h.sc().select(ex, {appt});
    EXPECT_EQ(h.combo(*ex, 1)->text, u"Acme");
    EXPECT_EQ(addinBarsIn(*second), 0u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ExplorerWindows, ASecondCalendarWindowGetsItsOwnBarAndClosingItDropsOnlyItsWrapper) {
    auto appt = h.addAppointment(u"Review", u"Globex");
    start();
    const auto activations = h.instruments().count(u"Explorer", u"Activate");
    auto second = h.outlook().openExplorer(h.outlook().calendar());
    h.sc().pump();
    // The add-in activated the new window itself, which built its bar.
    ASSERT_EQ(h.session().oCalendarReactions->colExplorers.size(), 2u);
    EXPECT_EQ(sim::Instruments::simObject(
                  h.session().oCalendarReactions->colExplorers[1]->oueMyExplorer()),
              second);
    EXPECT_EQ(h.instruments().count(u"Explorer", u"Activate"), activations + 1);
    EXPECT_EQ(barControls(*second).size(), 6u);
    EXPECT_EQ(barControls(*ex).size(), 6u);
    h.sc().select(second, {appt});
    EXPECT_EQ(h.combo(*second, 1)->text, u"Globex");

    h.sc().close(second);
    ASSERT_TRUE(h.loaded());
    EXPECT_EQ(h.session().oCalendarReactions->colExplorers.size(), 1u);
    EXPECT_EQ(sim::Instruments::simObject(
                  h.session().oCalendarReactions->colExplorers[0]->oueMyExplorer()),
              ex);

    // Back in the first window the holder is bound to that window's boxes.
    h.sc().select(ex, {appt});
    EXPECT_EQ(h.combo(*ex, 1)->text, u"Globex");
    EXPECT_EQ(simOf(h.session().objToolBar->cmbMeta(1)), h.combo(*ex, 1));
    h.sc().select(ex, {});
    EXPECT_FALSE(h.combo(*ex, 1)->enabled);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ExplorerWindows, ClosingTheLastExplorerShutsTheAddinDownAndReleasesEverything) {
    auto appt = h.addAppointment(u"Review", u"Globex");
    start();
    h.sc().select(ex, {appt});
    // Look at the add-in before Outlook's own quit follows.
    h.outlook().onQuit = nullptr;
    h.sc().close(ex);
    ASSERT_TRUE(h.loaded());
    EXPECT_EQ(h.session().oCalendarReactions, nullptr);
    EXPECT_EQ(h.session().objToolBar, nullptr);
    EXPECT_GE(callsOf(h.instruments(), u"Delete"), 1u);
    h.outlook().onQuit = [&] { h.sc().quit(); };
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ExplorerWindows, OneRemovalDeletesEveryBarOfTheAddinsName) {
    start();
    // A second bar of the same name (left by an earlier copy of the add-in).
    auto extra = ex->commandBars->addBar(u"Leftover", sim::mso::BarTop, false, true, false);
    extra->name = hb::kProductCaption;
    ASSERT_EQ(addinBarsIn(*ex), 2u);

    hb::subRemoveCommandBar(h.session(), handleTo(h, ex->commandBars));
    EXPECT_EQ(addinBarsIn(*ex), 0u);
    EXPECT_EQ(fncGetLastTrace(h.session()),
              u"Removing Hourbook for Outlook Addin v4 from the explorer window");
}

TEST_F(ExplorerWindows, DisconnectingRemovesTheBarFromEveryWindow) {
    start();
    auto second = h.sc().openExplorer(h.outlook().calendar());
    ASSERT_EQ(addinBarsIn(*second), 1u);
    h.sc().disconnectAddin();
    EXPECT_EQ(addinBarsIn(*ex), 0u);
    EXPECT_EQ(addinBarsIn(*second), 0u);
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST_F(ExplorerWindows, TheBarIsFoundAgainNotDuplicated) {
    start();
    hb::Session& s = h.session();
    const Variant first = hb::fncGetToolbar(s, handleTo(h, ex));
    const Variant again = hb::fncGetToolbar(s, handleTo(h, ex));
    EXPECT_TRUE(hb::sameObject(first, again));
    EXPECT_EQ(addinBarsIn(*ex), 1u);
    auto bar = SessionHarness::addinBar(*ex);
    EXPECT_TRUE(bar->visible);
    EXPECT_TRUE(bar->temporary);
    EXPECT_EQ(bar->position, sim::mso::BarTop);
    EXPECT_FALSE(bar->menuBar);
}

TEST_F(ExplorerWindows, WithTheRemoveToolbarFlagLeavingTheCalendarDropsTheBar) {
    // The flag is never set by the add-in itself (it defaults to False);
    // when set, a selection outside the calendar removes the bar.
    start();
    auto other = lookalike();
    auto second = h.sc().openExplorer(other);
    ASSERT_FALSE(h.session().blnRemoveToolbar);
    auto extra =
        second->commandBars->addBar(hb::kProductCaption, sim::mso::BarTop, false, true, false);
    h.sc().select(second, {});
    EXPECT_EQ(addinBarsIn(*second), 1u);
    h.session().blnRemoveToolbar = true;
    h.sc().select(second, {});
    EXPECT_EQ(addinBarsIn(*second), 0u);
    EXPECT_TRUE(extra->deleted);
}

}  // namespace
}  // namespace hbtest
