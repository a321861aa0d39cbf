// What the user entered is never lost: every scenario compares what the
// stores (the registry's settings and the settings appointment) and the
// appointments hold before and after the user's actions.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "apps/settings/SettingsStore.h"
#include "common/Constants.h"
#include "session/ExplorerSupport.h"
#include "session/SessionHarness.h"
#include "settings/cPersonalSettings.h"

namespace hbtest {
namespace {

const Str kSettingsKey = u"Software\\Brindlewood\\Hourbook for Outlook\\Settings";
constexpr std::int32_t kDockBottom = 3;

// The registry's settings and the settings appointment's body and
// categories, as one comparable value.
struct Stores {
    std::map<Str, std::pair<std::uint32_t, Str>> registry;
    Str body, categories;
    std::size_t settingsAppointments = 0;
    bool operator==(const Stores&) const = default;
};

Stores storesOf(SessionHarness& h) {
    Stores out;
    for (const Str& name : h.platform().valueNames(kSettingsKey)) {
        const auto v = h.platform().value(kSettingsKey, name);
        out.registry[name] = {v->type, v->text};
    }
    for (const auto& item : h.outlook().calendar()->items) {
        if (!hb::text::equalsNoCase(item->subject, hb::kSettingsSubject)) continue;
        ++out.settingsAppointments;
        out.body = item->body;
        out.categories = item->categories;
    }
    return out;
}

// A settings appointment as an earlier save left it: the body, the lists
// as categories and the body as the long property "Settings".
std::shared_ptr<sim::Item> addSettingsAppointment(
    SessionHarness& h, const Str& subject = hb::kSettingsSubject,
    const Str& body = u"2\r\nC:\\Data\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCompany:Acme;\r\n") {
    auto item = h.outlook().calendar()->addAppointment(subject, sim::makeDate(2050, 1, 1, 0),
                                                       sim::makeDate(2050, 1, 1, 0));
    item->body = body;
    item->setCategories(u"Company:Acme;");
    item->addUserProperty(u"Settings0", sim::ol::Text, Variant(body));
    item->addUserProperty(u"SettingsCount", sim::ol::Number, Variant(std::int32_t{0}));
    return item;
}

// Opens an appointment window (a task pane under Outlook 2007) and moves
// its pane to the bottom: the add-in saves its settings.
std::shared_ptr<sim::CustomTaskPane> openAndMovePane(SessionHarness& h,
                                                     const std::shared_ptr<sim::Item>& item) {
    auto inspector = h.sc().openInspector(item);
    auto pane = h.paneOf(*inspector);
    if (pane) h.sc().dockPane(pane, kDockBottom);
    return pane;
}

TEST(DataSafety, AFailedOrPartialLoadNeverSavesOverTheStores) {
    struct Case {
        const char* what;
        std::function<void(SessionHarness&)> spoil;
    };
    const Case cases[] = {
        {"a switch reading Yes", [](SessionHarness& h) { h.setSetting(u"FilterEvents", u"Yes"); }},
        {"a REG_DWORD where text is expected",
         [](SessionHarness& h) { h.platform().setDword(kSettingsKey, u"ReportValue", 7); }},
        {"a rate that is no number",
         [](SessionHarness& h) { h.setSetting(u"PersonalRate", u"twelve"); }},
        {"a MetadataList without its final CR LF",
         [](SessionHarness& h) {
             h.setSetting(u"MetadataList", u"Company:Acme;Globex;\r\nPerson:Smith;Jones;");
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SessionHarness h;
        h.setLists(workgroupLists());
        c.spoil(h);
        addSettingsAppointment(h);
        auto appt = h.addAppointment(u"Review");
        const Stores before = storesOf(h);
        h.start();
        ASSERT_TRUE(h.loaded());
        openAndMovePane(h, appt);
        EXPECT_EQ(storesOf(h), before);

        // Once a load succeeds (the settings program wrote them again), saving
        // works again.
        h.setLists(workgroupLists());
        h.session().blnSettingsChanged = true;
        h.session().oPersonalSettings->GetValuesFromSettings();
        h.session().oPersonalSettings->SaveSettings();
        EXPECT_EQ(h.setting(u"PaneDockPos"), Str(u"3"));
    }
}

// Settings the pane's settings text carries awkwardly (a rate past an
// Integer, one with a fraction, a connection text ending in a line break):
// the pane shows its lists, the registry keeps the value as given and the
// settings appointment's body reads back whole.
TEST(DataSafety, ShowingAPaneKeepsOddSettingsAndKeepsWorking) {
    struct Case {
        const char16_t* name;
        const char16_t* value;
        const char16_t* reread;  // the value the stored body gives back
    };
    const Case cases[] = {
        {u"PersonalRate", u"12.5", nullptr},
        {u"PersonalRate", u"32767.5", nullptr},
        {u"PersonalRate", u"40000", nullptr},
        {u"ReportValue", u"Provider=SQLOLEDB;Data Source=hours\r\n",
         u"Provider=SQLOLEDB;Data Source=hours"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(hb::toUtf8(c.value));
        SessionHarness h;
        h.setLists(workgroupLists());
        if (c.reread) h.setSetting(u"ReportChoice", u"3");
        h.setSetting(c.name, c.value);
        auto appt = h.addAppointment(u"Review", u"Globex, Smith");
        h.start();
        ASSERT_TRUE(openAndMovePane(h, appt));
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
        ASSERT_EQ(h.paneControls().size(), 1u);
        EXPECT_EQ(h.paneControls()[0]->view.selected(0), u"Globex");
        EXPECT_EQ(h.paneControls()[0]->view.selected(1), u"Smith");
        EXPECT_EQ(h.setting(c.name), Str(c.value));
        EXPECT_EQ(h.setting(u"PaneDockPos"), Str(u"3"));
        if (c.reread) {
            // The whole save, as the settings program makes it.
            h.session().oPersonalSettings->SaveSettings();
            hb::cPersonalSettings reread(h.session());
            reread.FromString(storesOf(h).body);
            EXPECT_EQ(reread.strReportValue, c.reread);
            EXPECT_EQ(reread.MetaDataLists.size(), 3u);
        }
    }
}

TEST(DataSafety, TheItemShownIsAlwaysTheItemSelected) {
    SessionHarness h;
    h.setLists(workgroupLists());
    auto a = h.addAppointment(u"A");
    auto b = h.addAppointment(u"B", u"Globex", 2);
    h.start();
    auto ex = h.sc().explorer();
    auto combo = [&](int n) { return h.combo(*ex, n); };

    // Re-selecting the item last written, after another one.
    h.sc().select(ex, {a});
    h.sc().pickInCombo(combo(1), u"Acme");
    h.sc().select(ex, {b});
    h.sc().select(ex, {a});
    EXPECT_EQ(combo(1)->text, u"Acme");
    h.sc().pickInCombo(combo(2), u"Smith");
    EXPECT_EQ(a->categories, u"Acme, Smith");
    EXPECT_EQ(b->categories, u"Globex");

    // A pasted copy (same subject and start) is written, not its original.
    auto copy = h.sc().copyItem(a);
    h.sc().select(ex, {copy});
    h.sc().pickInCombo(combo(1), u"Initech");
    EXPECT_EQ(copy->categories, u"Initech, Smith");
    EXPECT_EQ(a->categories, u"Acme, Smith");

    // Away from the window and back: the boxes show the selection again.
    auto inbox = h.sc().openExplorer(h.outlook().inbox());
    h.sc().activate(ex);
    EXPECT_TRUE(combo(1)->enabled);
    EXPECT_EQ(combo(1)->text, u"Initech");
    h.sc().pickInCombo(combo(3), u"Travel");
    EXPECT_EQ(copy->categories, u"Initech, Smith, Travel");
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

TEST(DataSafety, AFindThatRaisesKeepsTheSettingsAppointmentFound) {
    SessionHarness h;
    h.setLists(workgroupLists());
    // Found by the lookup, which ignores letter case; its subject differs,
    // so the add-in asks Find, which fails.
    auto stored = addSettingsAppointment(h, u"outlook hourbook 3 personal settings");
    auto appt = h.addAppointment(u"Review");
    h.start();
    h.instruments().failMember(u"Find", u"Items");
    openAndMovePane(h, appt);
    h.session().oPersonalSettings->SaveSettings();
    h.instruments().clearFaults();
    const Stores after = storesOf(h);
    EXPECT_EQ(after.settingsAppointments, 1u);
    EXPECT_EQ(after.body, h.session().oPersonalSettings->fncBuildBody());
    EXPECT_EQ(after.registry.at(u"PaneDockPos").second, u"3");
}

TEST(DataSafety, ARefusedSubjectWriteShowsNothingAndKeepsTheCategories) {
    // The number of the Subject assignment in a pick, from a first run.
    auto run = [](std::optional<std::uint64_t> failing) {
        auto h = std::make_unique<SessionHarness>();
        h->setLists(workgroupLists());
        h->setSetting(u"WriteSubject", u"True");
        auto a = h->addAppointment(u"");
        h->start();
        h->sc().select(h->sc().explorer(), {a});
        h->instruments().resetCounts();
        if (failing) h->instruments().failCall(*failing);
        h->sc().pickInCombo(h->combo(*h->sc().explorer(), 1), u"Acme");
        return std::make_pair(std::move(h), a);
    };
    std::uint64_t subjectPut = 0;
    {
        auto [h, a] = run(std::nullopt);
        for (const auto& r : h->instruments().log()) {
            if (r.op == sim::CallOp::PropertyPut && r.member == u"Subject") subjectPut = r.number;
        }
        ASSERT_NE(subjectPut, 0u);
        EXPECT_EQ(a->subject, u"Acme");
    }
    auto [h, a] = run(subjectPut);
    ASSERT_EQ(h->instruments().faultsInjected(), 1u);
    EXPECT_EQ(h->errorDialogs(), 0u) << h->messageBoxesText();
    EXPECT_EQ(a->categories, u"Acme");
    EXPECT_EQ(a->subject, u"");
    EXPECT_GE(a->saveCount, 1);
}

// Picks in the calendar's toolbar and in an appointment window's pane,
// one after the other, never lose a category of the user's own or the
// value of a list beyond the third.
TEST(DataSafety, OwnCategoriesAndAFourthListsValueOutlastEveryPick) {
    SessionHarness h;
    h.setLists(fourLists());
    auto appt = h.addAppointment(u"Review", u"Holiday, Globex, Gemini, Red Category");
    h.start();
    auto ex = h.sc().explorer();
    h.sc().select(ex, {appt});
    h.sc().pickInCombo(h.combo(*ex, 1), u"Acme");
    h.sc().pickInCombo(h.combo(*ex, 2), u"Smith");
    EXPECT_EQ(appt->categories, u"Holiday, Acme, Smith, Gemini, Red Category");

    auto window = h.sc().openInspector(appt);
    ASSERT_EQ(h.paneControls().size(), 1u);
    ASSERT_TRUE(h.paneControls()[0]->pick(2, u"Office"));
    h.sc().saveItem(window);
    h.sc().close(window);
    EXPECT_EQ(appt->categories, u"Holiday, Acme, Smith, Office, Gemini, Red Category");

    // Shown again, the boxes hold the billing values alone.
    h.sc().select(ex, {appt});
    EXPECT_EQ(h.combo(*ex, 1)->text, u"Acme");
    EXPECT_EQ(h.combo(*ex, 3)->text, u"Office");
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST(DataSafety, AnotherWindowsFolderSwitchLeavesTheCalendarItsToolbar) {
    SessionHarness h;
    h.setLists(workgroupLists());
    auto a = h.addAppointment(u"A", u"Acme");
    auto projects = h.outlook().inbox()->addFolder(u"Projects");
    h.start();
    auto calendarWindow = h.sc().explorer();
    auto mailWindow = h.sc().openExplorer(h.outlook().inbox());
    h.sc().switchFolder(mailWindow, projects);
    EXPECT_EQ(addinBarsIn(*calendarWindow), 1u);
    h.sc().activate(calendarWindow);
    h.sc().select(calendarWindow, {a});
    ASSERT_TRUE(h.combo(*calendarWindow, 1));
    EXPECT_EQ(h.combo(*calendarWindow, 1)->text, u"Acme");
    // The calendar window itself leaving the calendar takes its bar away.
    h.sc().switchFolder(calendarWindow, projects);
    EXPECT_EQ(addinBarsIn(*calendarWindow), 0u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// The settings program saves while an appointment window shows its pane;
// moving the pane and closing the window afterwards store the pane's place
// and keep everything the program saved, in both stores.
TEST(DataSafety, APaneMovedOrClosedAfterTheSettingsProgramSavedKeepsItsSettings) {
    SessionHarness h;
    h.setLists(workgroupLists());
    auto appt = h.addAppointment(u"Review", u"Globex, Smith");
    h.start();
    auto inspector = h.sc().openInspector(appt);
    auto pane = h.paneOf(*inspector);
    ASSERT_TRUE(pane);

    // The settings program, with a session of its own on this computer,
    // reaching the running Outlook; the user adds an entry and a rate.
    {
        hb::Session program(h.platform());
        hb::settingsapp::Loaded loaded = hb::settingsapp::loadValues(program);
        ASSERT_TRUE(loaded.complete);
        loaded.values.lists[0].entries.push_back(u"Umbrella");
        loaded.values.rate = u"95";
        ASSERT_TRUE(hb::settingsapp::saveValues(
            program,
            hb::settingsapp::SettingsEditor(loaded.values, h.platform().userLocale(), u",")));
    }
    Stores saved = storesOf(h);
    ASSERT_EQ(saved.settingsAppointments, 1u);
    ASSERT_NE(saved.body.find(u"Umbrella"), Str::npos);

    h.sc().dockPane(pane, kDockBottom);
    h.sc().close(inspector);
    Stores after = storesOf(h);
    EXPECT_EQ(after.registry.at(u"PaneDockPos").second, u"3");
    for (const char16_t* pane : {u"PaneDockPos", u"PaneWidth", u"PaneHeight"}) {
        after.registry.erase(pane);
        saved.registry.erase(pane);
    }
    EXPECT_EQ(after, saved);

    // The calendar's toolbar shows the saved lists when Outlook comes back.
    h.sc().returnToOutlook(h.sc().explorer());
    h.sc().select(h.sc().explorer(), {appt});
    const auto& entries = h.combo(*h.sc().explorer(), 1)->entries;
    EXPECT_NE(std::find(entries.begin(), entries.end(), u"Umbrella"), entries.end());
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
}

// A first start whose settings appointment is not taken over (its first
// line is no report choice, its database is not on this computer) or
// cannot be looked up: the lists in it stay, and no second settings
// appointment is made, whatever the session saves.
TEST(DataSafety, ASettingsAppointmentNotTakenOverIsNeverSavedOver) {
    const Str lists = u"Company:Acme;Globex;\r\nPerson:Smith;\r\n";
    struct Case {
        const char* what;
        Str body;
        bool lookupFails;
    };
    const Case cases[] = {
        {"first line no report choice", u"x\r\ny\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n" + lists,
         false},
        {"database not on this computer",
         u"2\r\nD:\\Old PC\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n" + lists, false},
        {"the lookup fails", u"2\r\nD:\\Old PC\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n" + lists,
         true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SessionHarness h;
        auto stored = addSettingsAppointment(h, hb::kSettingsSubject, c.body);
        auto appt = h.addAppointment(u"Review");
        if (c.lookupFails) h.instruments().failMember(u"Item", u"Items");
        h.start();
        ASSERT_TRUE(h.loaded());
        EXPECT_TRUE(h.session().oPersonalSettings->blnLoadFailed());
        openAndMovePane(h, appt);
        h.session().oPersonalSettings->SaveSettings();
        h.instruments().clearFaults();

        const Stores after = storesOf(h);
        EXPECT_EQ(after.settingsAppointments, 1u);
        EXPECT_EQ(stored->body, c.body);
        EXPECT_EQ(stored->findUserProperty(u"Settings0")->value.toStr(), c.body);
        EXPECT_FALSE(h.setting(u"ReportChoice"));
        EXPECT_FALSE(h.setting(u"MetadataList"));
    }
}

}  // namespace
}  // namespace hbtest
