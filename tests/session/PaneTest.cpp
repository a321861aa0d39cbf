// The task pane control's logic: filling itself from the settings text,
// preselecting the appointment's values, writing a choice back into the
// appointment (or its series) and its subject, and the billing test.
#include <gtest/gtest.h>

#include "common/AutomationError.h"
#include "inspector/Pane.h"
#include "session/ExplorerSupport.h"
#include "settings/cPersonalSettings.h"

namespace hbtest {
namespace {

class PaneLogic : public ::testing::Test {
  protected:
    void start(const std::vector<MetaList>& lists = workgroupLists()) {
        h.setLists(lists);
        h.start();
        ASSERT_TRUE(h.loaded());
        control = std::make_shared<PaneControl>(h.session());
    }
    // The host's two assignments: the item, then the settings text.
    void show(const std::shared_ptr<sim::Item>& item) {
        control->pane.setObjAppointment(
            h.instruments().toAddin(Variant(hb::ObjectPtr(item)), u"test"));
        control->pane.setSettings(h.session().oPersonalSettings->fncBuildBody());
    }
    RecordingPaneView& view() { return control->view; }
    hb::cPersonalSettings& settings() { return *h.session().oPersonalSettings; }

    SessionHarness h;
    std::shared_ptr<PaneControl> control;
};

TEST_F(PaneLogic, ThreeListsShowThreeLabelledBoxesWithTheItemsValues) {
    start();
    auto appt = h.addAppointment(u"Review", u"Globex, Jones, Office");
    show(appt);
    EXPECT_EQ(view().labels[0].caption, u"Company");
    EXPECT_EQ(view().labels[1].caption, u"Person");
    EXPECT_EQ(view().labels[2].caption, u"Extra Field");
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(view().labels[i].visible);
        EXPECT_TRUE(view().combos[i].visible);
    }
    const std::vector<Str> companies = {u"Acme", u"Globex", u"Initech"};
    EXPECT_EQ(view().combos[0].items, companies);
    EXPECT_EQ(view().selected(0), u"Globex");
    EXPECT_EQ(view().selected(1), u"Jones");
    EXPECT_EQ(view().selected(2), u"Office");
    EXPECT_GE(view().layouts, 1);
}

TEST_F(PaneLogic, FewerListsLeaveTheRestHiddenAndOutOfTheChoice) {
    start({{u"Company", {u"Acme", u"Globex"}}, {u"Person", {u"Smith"}}});
    auto appt = h.addAppointment(u"Review", u"Globex, Smith");
    show(appt);
    EXPECT_TRUE(view().labels[1].visible);
    EXPECT_FALSE(view().labels[2].visible);
    EXPECT_EQ(view().labels[2].caption, u"META");
    EXPECT_FALSE(view().combos[2].visible);
    EXPECT_TRUE(view().combos[2].items.empty());

    // Whatever the hidden box holds is not part of the choice.
    view().combos[2].typed = u"Travel";
    h.instruments().resetCounts();
    ASSERT_TRUE(control->pick(0, u"Acme"));
    EXPECT_EQ(putsOf(h.instruments(), u"Categories"),
              std::vector<std::string>{"String \",Acme,Smith\""});
    EXPECT_EQ(appt->categories, u"Acme, Smith");
    EXPECT_EQ(view().doEventsCalls, 0) << "no window messages run during a pick";
}

// The pane of an appointment window replaces the billing values only, as
// the toolbar does.
TEST(PaneOwnCategories, AChoiceKeepsEveryCategoryThatIsNoBillingValue) {
    for (const OwnCategoriesCase& c : ownCategoriesCases()) {
        SCOPED_TRACE(hb::toUtf8(c.categories));
        SessionHarness h;
        auto appt = startWithAnAppointmentOf(h, c);
        auto window = h.sc().openInspector(appt);
        const auto controls = h.paneControls();
        ASSERT_EQ(controls.size(), 1u);
        RecordingPaneView& view = controls[0]->view;
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(view.selected(i), c.shown[static_cast<std::size_t>(i)]) << i;
        h.instruments().resetCounts();
        ASSERT_TRUE(controls[0]->pick(c.list - 1, c.value));
        EXPECT_EQ(putsOf(h.instruments(), u"Categories"), std::vector<std::string>{c.written});
        EXPECT_EQ(window->currentItem->categories, c.kept);
        EXPECT_EQ(window->currentItem->subject, c.subject);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    }
}

TEST_F(PaneLogic, AValueThatIsNotInTheListIsNotSelected) {
    start();
    auto appt = h.addAppointment(u"Review", u"Nobody, Smith");
    show(appt);
    EXPECT_EQ(view().combos[0].listIndex, -1);
    EXPECT_EQ(view().selected(1), u"Smith");
    EXPECT_EQ(view().combos[2].listIndex, -1);
}

TEST_F(PaneLogic, AClickWhileTheControlFillsItselfChangesNothing) {
    start();
    auto appt = h.addAppointment(u"Review", u"Globex, Jones, Office");
    // The boxes raise Click as their selection is set.
    view().clickTarget = &control->pane;
    h.instruments().resetCounts();
    show(appt);
    EXPECT_EQ(view().selected(0), u"Globex");
    EXPECT_TRUE(putsOf(h.instruments(), u"Categories").empty());
    EXPECT_EQ(view().doEventsCalls, 0);

    // Once filled, a changed selection is written.
    view().setComboListIndex(0, 0);
    EXPECT_EQ(putsOf(h.instruments(), u"Categories"),
              std::vector<std::string>{"String \",Acme,Jones,Office\""});
}

TEST_F(PaneLogic, TheSubjectFollowsOnlyWhenEmptyOrBillingInformation) {
    start();
    settings().blnWriteSubject = true;
    struct Case {
        Str subject;
        Str expected;
    };
    const Case cases[] = {
        {u"", u"Acme, Smith, Travel"},
        {u"Meeting with the board", u"Meeting with the board"},
        {u"Globex", u"Acme, Smith, Travel"},                   // written by the add-in before
        {u"Globex, Jones", u"Acme, Smith, Travel"},            // so was this
        {u"Globex, Jones, Office", u"Globex, Jones, Office"},  // three pieces: never
    };
    int hour = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(hb::toUtf8(c.subject));
        auto appt = h.addAppointment(c.subject, u"Acme, Smith", hour++);
        auto pane = std::make_shared<PaneControl>(h.session());
        pane->pane.setObjAppointment(h.instruments().toAddin(Variant(hb::ObjectPtr(appt)), u"t"));
        pane->pane.setSettings(settings().fncBuildBody());
        ASSERT_TRUE(pane->pick(2, u"Travel"));
        EXPECT_EQ(appt->subject, c.expected);
    }
}

TEST_F(PaneLogic, WithoutTheWriteSubjectSettingTheSubjectStays) {
    start();
    auto appt = h.addAppointment(u"");
    show(appt);
    control->pick(0, u"Acme");
    EXPECT_EQ(appt->categories, u"Acme");
    EXPECT_EQ(appt->subject, u"");
}

TEST_F(PaneLogic, WithoutAnAppointmentNothingIsWrittenAndNothingShown) {
    start();
    control->pane.setSettings(settings().fncBuildBody());
    EXPECT_TRUE(view().combos[0].visible);
    EXPECT_EQ(view().combos[0].listIndex, -1);
    h.instruments().resetCounts();
    control->pick(0, u"Acme");
    EXPECT_TRUE(putsOf(h.instruments(), u"Categories").empty());
    EXPECT_TRUE(h.platform().messageBoxes().empty());
}

TEST_F(PaneLogic, TheHostReachesTheControlThroughItsTwoProperties) {
    start();
    auto appt = h.addAppointment(u"Review", u"Initech");
    hb::Object& object = *control;
    object.putRef(u"objAppointment",
                  h.instruments().toAddin(Variant(hb::ObjectPtr(appt)), u"test"));
    object.put(u"Settings", Variant(settings().fncBuildBody()));
    EXPECT_EQ(view().selected(0), u"Initech");
    EXPECT_EQ(sim::Instruments::simObject(object.get(u"objAppointment")), appt);
    // Settings can only be written; other members do not exist.
    try {
        (void)object.get(u"Settings");
        ADD_FAILURE() << "reading Settings";
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), hb::err::NoSuchMember);
    }
    try {
        (void)object.call(u"Refresh");
        ADD_FAILURE() << "an unknown member";
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), hb::err::NoSuchMember);
    }
}

TEST_F(PaneLogic, TheControlLetsGoOfTheAppointmentWhenItEnds) {
    start();
    auto appt = h.addAppointment(u"Review");
    const auto before = h.instruments().liveHandleCount();
    show(appt);
    EXPECT_GT(h.instruments().liveHandleCount(), before);
    control.reset();
    EXPECT_EQ(h.instruments().liveHandleCount(), before);
}

TEST_F(PaneLogic, BillingInformationIsRecognisedPieceByPiece) {
    start();
    struct Case {
        const char16_t* text;
        bool billing;
    };
    for (const Case c : {Case{u"Acme", true}, Case{u"  acme ", true}, Case{u"Acme, Smith", true},
                         Case{u"Nobody, smith", true}, Case{u",Acme,,", true},
                         // Without a comma only the first list is asked.
                         Case{u"Smith", false},
                         // Two pieces that match nothing step past the last piece.
                         Case{u"Nobody, Nothing", false},
                         // The comma decides, not the list separator.
                         Case{u"Nobody;Smith", false},
                         // Three or more pieces are never billing information.
                         Case{u"Acme, Smith, Travel", false},
                         Case{u"Meeting with the board", false}, Case{u"", false}}) {
        EXPECT_EQ(hb::fncIsHourbookData(h.session(), c.text), c.billing) << hb::toUtf8(c.text);
    }
    EXPECT_TRUE(h.platform().messageBoxes().empty());
}

TEST(PaneAutomationObject, OutlivingTheControlReachesNothing) {
    hb::MemoryPlatform platform;
    hb::Session s(platform);
    hb::ObjectPtr object;
    {
        RecordingPaneView view;
        hb::Pane pane(s, view);
        object = pane.automationObject();
        EXPECT_TRUE(object->get(u"objAppointment").isEmpty());
    }
    try {
        (void)object->get(u"objAppointment");
        ADD_FAILURE() << "reading from an ended control";
    } catch (const hb::AutomationError& e) {
        EXPECT_EQ(e.number(), hb::err::ObjectVariableNotSet);
    }
}

// The pane shows the lists of the settings text its host hands it, even
// where the session's differ, and leaves the session's lists as they are.
TEST_F(PaneLogic, TheListsShownAreThoseOfTheTextNotTheSessions) {
    start();
    auto appt = h.addAppointment(u"Review", u"Globex, Jones, Office");
    control->pane.setObjAppointment(h.instruments().toAddin(Variant(hb::ObjectPtr(appt)), u"test"));
    control->pane.setSettings(u"2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nClient:Eta;Zeta;\r\n");
    EXPECT_EQ(view().labels[0].caption, u"Client");
    EXPECT_EQ(view().combos[0].items, (std::vector<Str>{u"Eta", u"Zeta"}));
    EXPECT_FALSE(view().combos[1].visible);
    EXPECT_EQ(view().selected(0), u"") << "Globex is no entry of the pane's list";
    ASSERT_EQ(settings().MetaDataLists.size(), 3u);
    EXPECT_EQ(settings().MetaDataLists[0]->Caption, u"Company");
    EXPECT_EQ(settings().MetaDataLists[0]->MetaDic->entries().size(), 3u);
}

TEST(PaneWithoutSettings, NothingIsShownAndNothingRaised) {
    hb::MemoryPlatform platform;
    hb::Session s(platform);
    PaneControl control(s);
    // The pane shows the lists of the text it is given, whatever the
    // session holds.
    control.pane.setSettings(u"2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCompany:Acme;\r\n");
    EXPECT_TRUE(control.view.combos[0].visible);
    EXPECT_EQ(control.view.combos[0].items, std::vector<Str>{u"Acme"});
    EXPECT_TRUE(control.pick(0, u"Acme"));
    EXPECT_FALSE(hb::fncIsHourbookData(s, u"Acme"));
    EXPECT_TRUE(platform.messageBoxes().empty());
}

}  // namespace
}  // namespace hbtest
