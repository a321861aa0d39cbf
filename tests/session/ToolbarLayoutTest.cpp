// The add-in's bar in the calendar window: the controls built, their order
// and looks, the re-binding to a bar built before, and the Statistics
// button by report choice.
#include <gtest/gtest.h>

#include "diagnostics/modErroHandling.h"
#include "explorer/cToolBarItem.h"
#include "session/ExplorerSupport.h"

namespace hbtest {
namespace {

using sim::CommandBarControl;
using sim::mso::ControlButton;
using sim::mso::ControlComboBox;

struct Expected {
    std::int32_t type, width, style;
    Str caption, tooltip;
    std::int32_t faceId;
    bool beginGroup;
};

void expectControls(const sim::Window& w, const std::vector<Expected>& expected) {
    const auto controls = barControls(w);
    ASSERT_EQ(controls.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE("control " + std::to_string(i + 1));
        const CommandBarControl& c = *controls[i];
        const Expected& e = expected[i];
        EXPECT_EQ(c.type, e.type);
        EXPECT_EQ(c.id, 1);
        EXPECT_TRUE(c.temporary);
        EXPECT_EQ(c.width, e.width);
        EXPECT_EQ(c.style, e.style);
        EXPECT_EQ(c.caption, e.caption);
        EXPECT_EQ(c.tooltipText, e.tooltip);
        EXPECT_EQ(c.faceId, e.faceId);
        EXPECT_EQ(c.beginGroup, e.beginGroup);
    }
}

const Expected kReport{ControlButton, 20, 1, u"Report", u"Reports your appointments", 790, true};
const Expected kSettings{ControlButton, 20, 1, u"Configure", u"Show settings", 1556, false};
const Expected kStatistics{ControlButton, 20, 1, u"Statistics", u"Show statistics", 1957, false};

Expected comboOf(std::int32_t width, Str caption) {
    return {ControlComboBox, width, 1, std::move(caption), u"", 0, false};
}

// Gives the explorer the focus again (through a mail's window).
void reactivate(SessionHarness& h) {
    static int n = 0;
    auto mail = h.outlook().inbox()->addMail(u"Note " + hb::toStr(++n));
    h.sc().close(h.sc().openInspector(mail));
}

TEST(ToolbarLayout, ThreeListsGiveThreeLabelledBoxesAndTheThreeButtons) {
    SessionHarness h;
    h.setLists(workgroupLists());
    h.start();
    ASSERT_TRUE(h.loaded());
    expectControls(*h.sc().explorer(),
                   {comboOf(300, u"Company"), comboOf(175, u"Person"), comboOf(175, u"Extra Field"),
                    kReport, kSettings, kStatistics});
    // The boxes stay empty until an appointment is shown.
    EXPECT_TRUE(h.combo(*h.sc().explorer(), 1)->entries.empty());
    EXPECT_EQ(addinBarsIn(*h.sc().explorer()), 1u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST(ToolbarLayout, WithoutListsTheBarHoldsOnlyTheButtons) {
    SessionHarness h;
    h.setLists({});
    h.start();
    ASSERT_TRUE(h.loaded());
    expectControls(*h.sc().explorer(), {kReport, kSettings, kStatistics});
    // Selecting something shows nothing and fails nowhere.
    auto appt = h.addAppointment(u"Review", u"Acme");
    h.sc().select(h.sc().explorer(), {appt});
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST(ToolbarLayout, TwoListsAreReboundAsTwoBoxesAndTheButtonsAfterThem) {
    SessionHarness h;
    h.setLists({{u"Company", {u"Acme"}}, {u"Person", {u"Smith"}}});
    h.start();
    ASSERT_TRUE(h.loaded());
    auto ex = h.sc().explorer();
    expectControls(
        *ex, {comboOf(300, u"Company"), comboOf(175, u"Person"), kReport, kSettings, kStatistics});
    const auto adds = callsOf(h.instruments(), u"Add");

    reactivate(h);
    // Nothing added: the holder took the controls that are there.
    EXPECT_EQ(callsOf(h.instruments(), u"Add"), adds);
    EXPECT_EQ(barControls(*ex).size(), 5u);
    hb::cToolBarItem& toolbar = *h.session().objToolBar;
    EXPECT_EQ(simOf(toolbar.cmbMeta(1)), h.combo(*ex, 1));
    EXPECT_EQ(simOf(toolbar.cmbMeta(2)), h.combo(*ex, 2));
    EXPECT_TRUE(toolbar.cmbMeta(3).isEmpty());

    // The re-bound boxes and buttons work.
    auto appt = h.addAppointment(u"Review");
    h.sc().select(ex, {appt});
    h.sc().pickInCombo(h.combo(*ex, 2), u"Smith");
    EXPECT_EQ(putsOf(h.instruments(), u"Categories").back(), "String \",Smith\"");
    h.addProgram(u"HBPersonalSettings.exe");
    h.sc().click(h.button(*ex, 1556));
    EXPECT_TRUE(h.session().blnSettingsChanged);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST(ToolbarLayout, ABarHoldingExactlyOneControlIsTreatedAsEmpty) {
    SessionHarness h;
    h.setLists(workgroupLists());
    h.start();
    ASSERT_TRUE(h.loaded());
    auto ex = h.sc().explorer();
    auto controls = barControls(*ex);
    for (std::size_t i = 1; i < controls.size(); ++i)
        controls[i]->remove();
    ASSERT_EQ(barControls(*ex).size(), 1u);

    reactivate(h);
    // The one control stays, the whole set is added after it.
    const auto after = barControls(*ex);
    ASSERT_EQ(after.size(), 7u);
    EXPECT_EQ(after[0], controls[0]);
    EXPECT_EQ(after[1]->caption, u"Company");
    EXPECT_EQ(after[6]->faceId, 1957);
}

TEST(ToolbarLayout, StatisticsButtonByReportChoice) {
    struct Case {
        const char16_t* choice;
        const char16_t* localCube;
        bool shown;
    };
    for (const Case c :
         {Case{u"2", u"False", true}, Case{u"3", u"False", false}, Case{u"3", u"True", true},
          Case{u"1", u"True", false}, Case{u"4", u"True", false}}) {
        SCOPED_TRACE(hb::toUtf8(c.choice) + " " + hb::toUtf8(c.localCube));
        SessionHarness h;
        h.setLists(workgroupLists());
        h.setSetting(u"ReportChoice", c.choice);
        h.setSetting(u"CreateLocalCube", c.localCube);
        h.start();
        ASSERT_TRUE(h.loaded());
        EXPECT_EQ(h.button(*h.sc().explorer(), 1957) != nullptr, c.shown);
        EXPECT_EQ(barControls(*h.sc().explorer()).size(), c.shown ? 6u : 5u);
        // Re-binding takes the Statistics button only when it is shown.
        reactivate(h);
        EXPECT_EQ(barControls(*h.sc().explorer()).size(), c.shown ? 6u : 5u);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    }
}

TEST(ToolbarLayout, RemoveToolbarLeavesTheBarAloneWhileServingAnInspector) {
    SessionHarness h;
    h.setLists(workgroupLists());
    h.start();
    ASSERT_TRUE(h.loaded());
    hb::cToolBarItem& toolbar = *h.session().objToolBar;
    toolbar.setBlnInInspector(true);
    toolbar.RemoveToolbar();
    EXPECT_EQ(addinBarsIn(*h.sc().explorer()), 1u);
    toolbar.setBlnInInspector(false);
    toolbar.RemoveToolbar();
    EXPECT_EQ(addinBarsIn(*h.sc().explorer()), 0u);
    // Its controls went with the bar: nothing is left to disable.
    toolbar.setBlnButtonsEnabled(false);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

}  // namespace
}  // namespace hbtest
