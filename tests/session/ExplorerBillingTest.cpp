// The calendar explorer with a workgroup's three lists: showing the selected
// appointment's billing information and writing a picked value back.
#include <gtest/gtest.h>

#include "diagnostics/modErroHandling.h"
#include "explorer/cToolBarItem.h"
#include "metadata/cAppointments.h"
#include "session/ExplorerSupport.h"

namespace hbtest {
namespace {

using sim::CommandBarControl;

class ExplorerBilling : public ::testing::Test {
  protected:
    void startWith() {
        h.setLists(workgroupLists());
        h.start();
        ASSERT_TRUE(h.loaded());
        ex = h.sc().explorer();
        h.instruments().resetCounts();
    }
    std::shared_ptr<CommandBarControl> combo(int n) { return h.combo(*ex, n); }
    void pickAll() {
        h.sc().pickInCombo(combo(1), u"Acme");
        h.sc().pickInCombo(combo(2), u"Smith");
        h.sc().pickInCombo(combo(3), u"Travel");
    }

    SessionHarness h;
    std::shared_ptr<sim::Explorer> ex;
};

TEST_F(ExplorerBilling, SelectingAnAppointmentShowsItsValuesInFilledBoxes) {
    auto appt = h.addAppointment(u"Review", u"Globex, Jones, Office");
    startWith();
    h.sc().select(ex, {appt});

    EXPECT_EQ(combo(1)->text, u"Globex");
    EXPECT_EQ(combo(2)->text, u"Jones");
    EXPECT_EQ(combo(3)->text, u"Office");
    EXPECT_EQ(combo(1)->entries, (std::vector<Str>{u"Acme", u"Globex", u"Initech"}));
    EXPECT_EQ(combo(2)->entries, (std::vector<Str>{u"Smith", u"Jones"}));
    EXPECT_EQ(combo(3)->entries, (std::vector<Str>{u"Travel", u"Office"}));
    for (int n = 1; n <= 3; ++n)
        EXPECT_TRUE(combo(n)->enabled) << n;
    // Showing writes nothing.
    EXPECT_TRUE(putsOf(h.instruments(), u"Categories").empty());
    EXPECT_EQ(appt->saveCount, 0);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ExplorerBilling, PickingValuesWritesTheBillingTextWithItsLeadingSeparator) {
    auto appt = h.addAppointment(u"Review");
    startWith();
    h.sc().select(ex, {appt});
    pickAll();

    const auto puts = putsOf(h.instruments(), u"Categories");
    ASSERT_EQ(puts.size(), 3u);
    EXPECT_EQ(puts[0], "String \",Acme\"");
    EXPECT_EQ(puts[1], "String \",Acme,Smith\"");
    EXPECT_EQ(puts[2], "String \",Acme,Smith,Travel\"");
    EXPECT_EQ(appt->saveCount, 3);
    // The boxes show what was written, read back through Outlook.
    EXPECT_EQ(combo(1)->text, u"Acme");
    EXPECT_EQ(combo(3)->text, u"Travel");
    // The subject is left alone while the write-subject setting is off.
    EXPECT_TRUE(putsOf(h.instruments(), u"Subject").empty());

    // With the other boxes empty a pick writes that value alone; the
    // user's own category stays in front of it.
    auto other = h.addAppointment(u"Other", u"Personal", 2);
    h.sc().select(ex, {other});
    h.sc().pickInCombo(combo(2), u"Jones");
    EXPECT_EQ(putsOf(h.instruments(), u"Categories").back(), "String \"Personal,Jones\"");
    auto known = h.addAppointment(u"Known", u"Personal, Acme", 4);
    h.sc().select(ex, {known});
    h.sc().pickInCombo(combo(3), u"Office");
    EXPECT_EQ(putsOf(h.instruments(), u"Categories").back(), "String \"Personal,Acme,Office\"");
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// A pick replaces the billing values only: the user's own categories and
// the fourth list's value stay where they were, and are never shown.
TEST(ExplorerBillingOwnCategories, APickKeepsEveryCategoryThatIsNoBillingValue) {
    for (const OwnCategoriesCase& c : ownCategoriesCases()) {
        SCOPED_TRACE(hb::toUtf8(c.categories));
        SessionHarness h;
        auto appt = startWithAnAppointmentOf(h, c);
        auto ex = h.sc().explorer();
        h.sc().select(ex, {appt});
        for (int n = 1; n <= 3; ++n)
            EXPECT_EQ(h.combo(*ex, n)->text, c.shown[static_cast<std::size_t>(n - 1)]) << n;
        h.instruments().resetCounts();
        h.sc().pickInCombo(h.combo(*ex, c.list), c.value);
        EXPECT_EQ(putsOf(h.instruments(), u"Categories"), std::vector<std::string>{c.written});
        EXPECT_EQ(appt->categories, c.kept);
        EXPECT_EQ(appt->subject, c.subject);
        EXPECT_EQ(appt->saveCount, 1);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    }
}

TEST_F(ExplorerBilling, TypedTextThatIsNoListEntrySavesNothing) {
    auto appt = h.addAppointment(u"Review");
    startWith();
    h.sc().select(ex, {appt});
    h.sc().typeInCombo(combo(1), u"Nobody");

    EXPECT_TRUE(putsOf(h.instruments(), u"Categories").empty());
    EXPECT_EQ(appt->saveCount, 0);
    EXPECT_EQ(fncGetLastTrace(h.session()), u"Working with Company Change-event");
}

// With the write-subject setting an empty subject, or one the add-in wrote
// (the subject test splits at a comma only, whatever the separator, and
// three pieces are never billing information), follows the picks; the
// user's own subject stays.
TEST(ExplorerBillingSubject, FollowsThePicksOnlyWhileItIsBillingInformation) {
    struct Case {
        const char16_t* separator;
        const char16_t* subject;
        std::vector<std::pair<int, const char16_t*>> picks;
        std::vector<const char16_t*> subjects;  // after each pick
    };
    const Case cases[] = {
        {u",", u"", {{1, u"Acme"}, {2, u"Smith"}}, {u"Acme", u"Acme, Smith"}},
        {u",", u"Meeting with the board", {{1, u"Globex"}}, {u"Meeting with the board"}},
        {u",",
         u"",
         {{1, u"Acme"}, {2, u"Smith"}, {3, u"Travel"}, {3, u"Office"}},
         {u"Acme", u"Acme, Smith", u"Acme, Smith, Travel", u"Acme, Smith, Travel"}},
        // "Acme; Smith" holds no comma: taken whole it names no entry.
        {u";",
         u"",
         {{1, u"Acme"}, {2, u"Smith"}, {3, u"Travel"}},
         {u"Acme", u"Acme; Smith", u"Acme; Smith"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(hb::toUtf8(c.separator) + " " + hb::toUtf8(c.subject));
        SessionHarness h;
        h.setListSeparator(c.separator);
        h.setLists(workgroupLists());
        h.setSetting(u"WriteSubject", u"True");
        auto appt = h.addAppointment(c.subject);
        h.start();
        auto ex = h.sc().explorer();
        h.sc().select(ex, {appt});
        for (std::size_t i = 0; i < c.picks.size(); ++i) {
            h.sc().pickInCombo(h.combo(*ex, c.picks[i].first), c.picks[i].second);
            EXPECT_EQ(appt->subject, c.subjects[i]) << i;
        }
        EXPECT_EQ(appt->saveCount, static_cast<int>(c.picks.size()));
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    }
}

TEST_F(ExplorerBilling, SeveralSelectedDisablesAndClearsOneAgainRestores) {
    auto a = h.addAppointment(u"A", u"Acme");
    auto b = h.addAppointment(u"B", u"Globex", 2);
    startWith();
    h.sc().select(ex, {a});
    ASSERT_EQ(combo(1)->text, u"Acme");

    h.sc().select(ex, {a, b});
    for (int n = 1; n <= 3; ++n) {
        EXPECT_FALSE(combo(n)->enabled) << n;
        EXPECT_TRUE(combo(n)->entries.empty()) << n;
        EXPECT_EQ(combo(n)->text, u"") << n;
    }
    EXPECT_TRUE(h.session().objToolBar->ouiCurrItem().isNothing());
    // The buttons are never disabled.
    EXPECT_TRUE(h.button(*ex, 790)->enabled);

    h.sc().select(ex, {b});
    EXPECT_TRUE(combo(1)->enabled);
    EXPECT_EQ(combo(1)->text, u"Globex");
    EXPECT_EQ(combo(1)->entries.size(), 3u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST_F(ExplorerBilling, OnlyAppointmentClassesAreShown) {
    struct Case {
        const char16_t* messageClass;
        bool shown;
    };
    const Case cases[] = {{u"ipm.appointment.custom", true},
                          {u"IPM.APPOINTMENT.CUSTOM", true},
                          {u"IPM.Schedule.Meeting.Resp.Pos", false}};
    auto a = h.addAppointment(u"A", u"Acme");
    std::vector<std::shared_ptr<sim::Item>> items;
    for (const Case& c : cases) {
        items.push_back(h.addAppointment(u"Other", u"Initech, Jones", 2));
        items.back()->messageClass = c.messageClass;
    }
    startWith();
    for (std::size_t i = 0; i < items.size(); ++i) {
        SCOPED_TRACE(hb::toUtf8(cases[i].messageClass));
        h.sc().select(ex, {a});
        h.sc().select(ex, {items[i]});
        EXPECT_EQ(combo(1)->enabled, cases[i].shown);
        EXPECT_EQ(combo(2)->text, cases[i].shown ? u"Jones" : u"");
        EXPECT_EQ(h.session().objToolBar->ouiCurrItem().isNothing(), !cases[i].shown);
    }
}

TEST_F(ExplorerBilling, BoxesAreRefilledOnlyWhenTheirListsChanged) {
    auto a = h.addAppointment(u"A", u"Acme, Smith");
    auto b = h.addAppointment(u"B", u"Globex", 2);
    h.trace = true;
    startWith();
    auto selectAndTrace = [&](const std::shared_ptr<sim::Item>& item) {
        const std::size_t before = h.traceLines().size();
        h.sc().select(ex, {item});
        const auto lines = h.traceLines();
        return std::vector<Str>(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end());
    };
    const auto first = selectAndTrace(a);
    const auto fills = callsOf(h.instruments(), u"AddItem");
    const auto clears = callsOf(h.instruments(), u"Clear");
    const auto barNames = callsOf(h.instruments(), u"Name");
    const std::size_t entries =
        combo(1)->entries.size() + combo(2)->entries.size() + combo(3)->entries.size();
    EXPECT_EQ(fills, entries);  // every list once

    // Another item, a pick, the same item again: texts change, lists stay.
    selectAndTrace(b);
    EXPECT_EQ(combo(1)->text, u"Globex");
    EXPECT_EQ(combo(2)->text, u"");
    h.sc().pickInCombo(combo(2), u"Jones");
    EXPECT_EQ(b->categories, u"Globex, Jones");
    EXPECT_EQ(selectAndTrace(a), first);  // the trace reads as for a full fill
    EXPECT_EQ(callsOf(h.instruments(), u"AddItem"), fills);
    EXPECT_EQ(callsOf(h.instruments(), u"Clear"), clears);
    // The window's bars are not walked again while the holder serves its bar.
    EXPECT_EQ(callsOf(h.instruments(), u"Name"), barNames);
    EXPECT_EQ(combo(2)->text, u"Smith");

    // A box Outlook emptied is filled again, alone.
    const std::size_t third = combo(3)->entries.size();
    combo(3)->entries.clear();
    h.sc().select(ex, {b});
    EXPECT_EQ(callsOf(h.instruments(), u"AddItem"), fills + third);
    EXPECT_EQ(combo(3)->entries.size(), third);

    // Settings saved again (by the settings program): every box once more.
    h.setSetting(u"MetadataList", *h.setting(u"MetadataList"));
    h.sc().select(ex, {a});
    EXPECT_EQ(callsOf(h.instruments(), u"AddItem"), fills + third + entries);
    EXPECT_EQ(combo(1)->entries.size(), 3u);
    EXPECT_EQ(combo(1)->text, u"Acme");
}

TEST_F(ExplorerBilling, ACopiedAppointmentBecomesTheKnownItemWhenNoneWasWritten) {
    auto a = h.addAppointment(u"A");
    startWith();
    h.sc().select(ex, {a});
    auto& toolbar = *h.session().objToolBar;
    ASSERT_TRUE(toolbar.strEntryID().empty());
    auto copy = h.sc().copyItem(a);
    EXPECT_EQ(toolbar.strEntryID(), u"A" + hb::Variant(copy->start).toStr());
}

TEST_F(ExplorerBilling, ACopiedPostedAppointmentCountsAsNotPosted) {
    auto posted = h.addAppointment(u"Reported", u"Acme");
    posted->addUserProperty(u"strPosted", sim::ol::DateTime, Variant(sim::makeDate(2024, 5, 31)));
    startWith();
    auto copy = h.sc().copyItem(posted);
    auto property = copy->findUserProperty(u"strPosted");
    ASSERT_NE(property, nullptr);
    EXPECT_DOUBLE_EQ(property->value.toDate().days, hb::kNotPostedDay);
    EXPECT_GE(copy->saveCount, 1);
    // The original keeps its date.
    EXPECT_DOUBLE_EQ(posted->findUserProperty(u"strPosted")->value.toDate().days,
                     sim::makeDate(2024, 5, 31).days);
}

}  // namespace
}  // namespace hbtest

namespace hbtest {
namespace {

TEST(ExplorerBillingErrors, EachBoxReportsUnderItsOwnNameThePersonBoxUnderTheExplorers) {
    struct Case {
        int box;
        const char* procedure;
    };
    for (const Case c :
         {Case{1, "cToolBarItem.cmb1Meta_Change"}, Case{2, "cExplorerEvents.cmb2Meta_Change"},
          Case{3, "cToolBarItem.cmb3Meta_Change"}}) {
        SCOPED_TRACE(c.box);
        SessionHarness h;
        h.setLists(workgroupLists());
        auto appt = h.addAppointment(u"Review");
        h.start();
        ASSERT_TRUE(h.loaded());
        auto ex = h.sc().explorer();
        h.sc().select(ex, {appt});
        h.instruments().failMember(u"ListIndex");
        h.sc().pickInCombo(h.combo(*ex, c.box), c.box == 1   ? u"Acme"
                                                : c.box == 2 ? u"Smith"
                                                             : u"Travel");
        EXPECT_EQ(h.errorDialogs(), 1u);
        EXPECT_NE(h.messageBoxesText().find(c.procedure), std::string::npos)
            << h.messageBoxesText();
        // Nothing was written.
        EXPECT_EQ(appt->saveCount, 0);
    }
}

}  // namespace
}  // namespace hbtest
