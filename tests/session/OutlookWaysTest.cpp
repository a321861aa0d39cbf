// Scenarios where Outlook behaves otherwise than a plain object store would:
// occurrences of a series, folders outside the stores, the focus leaving
// Outlook, one click reaching the buttons of two windows, and the list
// separator in what Outlook reads back.
#include <gtest/gtest.h>

#include "session/ExplorerSupport.h"

namespace hbtest {
namespace {

class OutlookWays : public ::testing::Test {
  protected:
    void start(const Str& separator = u",") {
        h.setListSeparator(separator);
        h.setLists(workgroupLists());
        series = h.outlook().calendar()->addRecurringAppointment(
            u"Weekly", sim::makeDate(2024, 5, 6, 9), sim::makeDate(2024, 5, 6, 10),
            u"Globex" + separator + u"Jones");
        appt = h.addAppointment(u"Review");
        h.start();
        ASSERT_TRUE(h.loaded());
        ex = h.sc().explorer();
    }
    Str boxes(const sim::Window& w) {
        return h.combo(w, 1)->text + u"|" + h.combo(w, 2)->text + u"|" + h.combo(w, 3)->text;
    }

    SessionHarness h;
    std::shared_ptr<sim::Item> series, appt;
    std::shared_ptr<sim::Explorer> ex;
};

// An exception or occurrence of a series shows the series' values. A pick
// in the toolbar goes into the series for an occurrence (never into an
// exception made of it) and is shown again; on an exception it writes
// nothing. A pick in the pane goes into the series and saves it.
struct SeriesMember {
    bool exception;
    const char16_t* afterToolbarPick;  // the series' categories
    const char16_t* boxesAfter;        // what the boxes show again
};

class OutlookSeries : public OutlookWays, public ::testing::WithParamInterface<SeriesMember> {
  protected:
    std::shared_ptr<sim::Item> member() {
        const auto start = sim::makeDate(2024, 5, 13, 9), end = sim::makeDate(2024, 5, 13, 10);
        if (!GetParam().exception) return series->occurrence(start, end);
        auto x = series->addException(start, end);
        x->setCategories(u"Initech");
        return x;
    }
};

TEST_P(OutlookSeries, TheToolbarShowsTheSeriesAndWritesOnlyAnOccurrenceIntoIt) {
    start();
    auto item = member();
    h.sc().select(ex, {item});
    EXPECT_EQ(boxes(*ex), u"Globex|Jones|");
    h.sc().pickInCombo(h.combo(*ex, 1), u"Acme");
    EXPECT_EQ(series->categories, GetParam().afterToolbarPick);
    EXPECT_EQ(series->exceptions.size(), GetParam().exception ? 1u : 0u);
    if (GetParam().exception) {
        EXPECT_EQ(item->categories, u"Initech");
    }
    h.sc().select(ex, {appt});
    h.sc().select(ex, {item});
    EXPECT_EQ(boxes(*ex), GetParam().boxesAfter);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_P(OutlookSeries, ItsWindowGetsThePaneAndAPickIsSavedInTheSeries) {
    start();
    auto window = h.sc().openInspector(member());
    ASSERT_NE(h.paneOf(*window), nullptr);
    auto controls = h.paneControls();
    ASSERT_EQ(controls.size(), 1u);
    EXPECT_EQ(controls[0]->view.selected(0), u"Globex");
    const int saves = series->saveCount;
    ASSERT_TRUE(controls[0]->pick(1, u"Smith"));
    h.sc().pump();
    EXPECT_EQ(series->categories, u"Globex, Smith");
    EXPECT_EQ(series->saveCount, saves + 1);
    h.sc().close(window);
    EXPECT_EQ(series->exceptions.size(), GetParam().exception ? 1u : 0u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

INSTANTIATE_TEST_SUITE_P(ExceptionAndOccurrence, OutlookSeries,
                         ::testing::Values(SeriesMember{true, u"Globex, Jones", u"Globex|Jones|"},
                                           SeriesMember{false, u"Acme, Jones", u"Acme|Jones|"}));

// Outlook names no folder when the user goes to one outside the stores.
TEST_F(OutlookWays, LeavingForAFolderOutsideTheStoresTakesTheBarAwayQuietly) {
    start();
    h.sc().select(ex, {appt});
    EXPECT_TRUE(h.sc().switchFolder(ex, h.outlook().outsideFolder(u"Shortcut")));
    EXPECT_EQ(addinBarsIn(*ex), 0u);
    h.sc().switchFolder(ex, h.outlook().calendar());
    h.sc().activate(h.sc().openExplorer(h.outlook().inbox()));
    h.sc().activate(ex);
    h.sc().select(ex, {appt});
    EXPECT_EQ(h.combo(*ex, 1)->enabled, true);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// Switching to another program and back: the boxes go blank and come back
// with the selected appointment; a pick after it is stored.
TEST_F(OutlookWays, TheFocusLeavingOutlookAndComingBackShowsTheSelectionAgain) {
    start();
    h.sc().select(ex, {appt});
    h.sc().pickInCombo(h.combo(*ex, 1), u"Acme");
    h.sc().leaveOutlook();
    EXPECT_FALSE(h.combo(*ex, 1)->enabled);
    h.sc().returnToOutlook();
    EXPECT_EQ(boxes(*ex), u"Acme||");
    h.sc().pickInCombo(h.combo(*ex, 2), u"Smith");
    EXPECT_EQ(appt->categories, u"Acme, Smith");
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// Two calendar windows carry the same buttons: a click in either starts
// the program once.
TEST_F(OutlookWays, OneClickStartsOneProgramWithTwoCalendarWindows) {
    h.addProgram(u"HBPersonalSettings.exe");
    start();
    auto second = h.sc().openExplorer(h.outlook().calendar());
    for (const auto& w : {second, ex, second}) {
        h.sc().activate(w);
        h.platform().clearRuns();
        h.sc().click(h.button(*w, 1556));
        EXPECT_EQ(h.platform().runs().size(), 1u);
    }
}

// Outlook joins the keywords with the separator and a blank: the toolbar
// and the pane read that back, with a comma and with a semicolon.
class OutlookSeparator : public OutlookWays,
                         public ::testing::WithParamInterface<const char16_t*> {};

TEST_P(OutlookSeparator, CategoriesReadBackNormalisedAreShownAndKept) {
    const Str sep = GetParam();
    start(sep);
    h.sc().select(ex, {appt});
    h.sc().pickInCombo(h.combo(*ex, 3), u"Travel");
    h.sc().pickInCombo(h.combo(*ex, 1), u"Acme");
    EXPECT_EQ(appt->categories, u"Acme" + sep + u" Travel");
    h.sc().select(ex, {series});
    h.sc().select(ex, {appt});
    EXPECT_EQ(boxes(*ex), u"Acme||Travel");
    auto window = h.sc().openInspector(appt);
    auto controls = h.paneControls();
    ASSERT_EQ(controls.size(), 1u);
    EXPECT_EQ(controls[0]->view.selected(2), u"Travel");
    ASSERT_TRUE(controls[0]->pick(1, u"Smith"));
    h.sc().saveItem(window);
    EXPECT_EQ(appt->categories, u"Acme" + sep + u" Smith" + sep + u" Travel");
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

INSTANTIATE_TEST_SUITE_P(CommaAndSemicolon, OutlookSeparator, ::testing::Values(u",", u";"));

}  // namespace
}  // namespace hbtest
