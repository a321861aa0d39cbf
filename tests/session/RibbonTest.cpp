// The billing controls on the calendar's ribbon (Outlook 2010 and later):
// what Office is given, what it is asked to show again, what a pick writes
// and what the buttons start, against the simulated Office's ribbon.
#include <gtest/gtest.h>

#include <algorithm>

#include "explorer/cRibbon.h"
#include "session/ExplorerSupport.h"

namespace hbtest {
namespace {

constexpr char16_t kOutlook16[] = u"16.0.4266.1001";

// The position of an entry in a drop-down as Office shows it (-1: none).
std::int32_t itemIndex(const sim::Ribbon::ControlView& v, const Str& label) {
    for (std::size_t i = 0; i < v.items.size(); ++i) {
        if (v.items[i].second == label) return static_cast<std::int32_t>(i);
    }
    return -1;
}

Str selectedLabel(const sim::Ribbon::ControlView& v) {
    if (v.selected < 0 || static_cast<std::size_t>(v.selected) >= v.items.size()) return {};
    return v.items[static_cast<std::size_t>(v.selected)].second;
}

class Ribbon : public ::testing::Test {
  protected:
    void start(std::vector<MetaList> lists = workgroupLists(), const Str& reportChoice = u"2") {
        h.setLists(lists);
        h.setSetting(u"ReportChoice", reportChoice);
        h.start();
        ASSERT_TRUE(h.loaded());
        ex = h.sc().explorer();
        ASSERT_NE(h.sc().ribbon(), nullptr);
        ASSERT_EQ(h.sc().ribbon()->loadError, u"");
    }
    sim::Ribbon& ribbon() { return *h.sc().ribbon(); }
    const sim::Ribbon::ControlView& view(hb::StrView id) {
        const auto* v = ribbon().view(*ex, id);
        if (!v) throw std::runtime_error("control never asked: " + hb::toUtf8(Str(id)));
        return *v;
    }
    void pick(hb::StrView id, const Str& label) {
        const std::int32_t i = itemIndex(view(id), label);
        ASSERT_GE(i, 0) << hb::toUtf8(label);
        h.sc().ribbonPick(ex, id, i);
    }
    void TearDown() override {
        if (h.sc().ribbon()) {
            EXPECT_EQ(ribbon().callbackErrors, 0u);
            EXPECT_EQ(ribbon().typeErrors, 0u);
            EXPECT_EQ(ribbon().tooManyItems, 0u);
        }
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
        h.sc().quit();
        EXPECT_TRUE(h.census().empty()) << h.censusText();
    }

    SessionHarness h{kOutlook16};
    std::shared_ptr<sim::Explorer> ex;
};

// Outlook 2000 to 2007 keep the toolbar and get no ribbon; from 2010 on the
// group replaces the toolbar everywhere.
TEST(RibbonVersions, TheGroupReplacesTheToolbarFromOutlook2010On) {
    struct Case {
        const char16_t* version;
        bool ribbon;
    };
    for (const Case c :
         {Case{u"9.0.0.2711", false}, Case{u"11.0.8217", false}, Case{u"12.0.4518.1014", false},
          Case{u"14.0.4760.1000", true}, Case{u"15.0.4420.1017", true}, Case{kOutlook16, true}}) {
        SCOPED_TRACE(hb::toUtf8(c.version));
        SessionHarness h(c.version);
        h.setLists(workgroupLists());
        auto appt = h.addAppointment(u"Review", u"Globex");
        h.start();
        auto ex = h.sc().explorer();
        h.sc().select(ex, {appt});
        EXPECT_EQ(h.sc().ribbon() != nullptr, c.ribbon);
        EXPECT_EQ(h.session().blnRibbon, c.ribbon);
        if (c.ribbon) {
            EXPECT_TRUE(h.sc().ribbon()->groupShown(*ex));
            EXPECT_EQ(selectedLabel(*h.sc().ribbon()->view(*ex, u"hbList1")), u"Globex");
        } else {
            EXPECT_EQ(h.combo(*ex, 1)->text, u"Globex");
        }
        // A second calendar window: a bar of its own, or none.
        h.sc().openExplorer(h.outlook().calendar());
        std::size_t bars = 0;
        for (const auto& w : h.outlook().allWindows())
            bars += addinBarsIn(*w);
        EXPECT_EQ(bars, c.ribbon ? 0u : 2u);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
        h.sc().quit();
        EXPECT_TRUE(h.census().empty()) << h.censusText();
    }
}

// Loaded into a running Outlook 16 (the COM add-ins dialog), the session
// starts inside the connection, before Office asks for the ribbon: the bar
// it made then goes once Office does, and the group takes over.
TEST(RibbonAfterStartup, TheBarMadeBeforeOfficeAskedForTheRibbonGoes) {
    SessionHarness h(kOutlook16);
    h.setLists(workgroupLists());
    auto appt = h.addAppointment(u"Review", u"Globex");
    h.startWithoutAddin();
    auto ex = h.sc().explorer();
    h.sc().select(ex, {appt});
    auto second = h.sc().openExplorer(h.outlook().calendar());
    h.sc().activate(ex);
    h.connectAfterStart();
    ASSERT_TRUE(h.loaded());
    for (const auto& w : h.outlook().allWindows())
        EXPECT_EQ(addinBarsIn(*w), 0u);
    ASSERT_TRUE(h.sc().ribbon()->groupShown(*ex));
    EXPECT_EQ(selectedLabel(*h.sc().ribbon()->view(*ex, u"hbList1")), u"Globex");
    h.sc().ribbonPick(ex, u"hbList2", 1);
    EXPECT_EQ(appt->categories, u"Globex, Jones");
    h.sc().activate(second);
    EXPECT_EQ(addinBarsIn(*second), 0u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST_F(Ribbon, TheXmlPutsOneGroupOnTheCalendarsHomeTab) {
    start();
    const Str& xml = ribbon().xml;
    EXPECT_NE(xml.find(u"xmlns=\"http://schemas.microsoft.com/office/2009/07/customui\""),
              Str::npos);
    EXPECT_NE(xml.find(u"<tab idMso=\"TabCalendarHome\">"), Str::npos);
    EXPECT_NE(xml.find(u"label=\"Hourbook\""), Str::npos);
    // Every other window kind gets nothing.
    EXPECT_EQ(h.designer()->IRibbonExtensibility_GetCustomUI(u"Microsoft.Outlook.Mail.Read"), u"");
    // Captions and tips come from the lists and the phrase table.
    EXPECT_EQ(view(u"hbList1").label, u"Company");
    EXPECT_EQ(view(u"hbList3").label, u"Extra Field");
    EXPECT_EQ(view(u"hbReport").label, h.session().phrases.LNGREPORT);
    EXPECT_EQ(view(u"hbReport").screentip, h.session().phrases.LNGREPORTTT);
    EXPECT_EQ(view(u"hbSettings").screentip, h.session().phrases.LNGSETTINGSTT);
    EXPECT_EQ(view(u"hbStatistics").image.toStr(), u"picture:STATISTICS");
    EXPECT_EQ(view(u"hbList2").items.size(), 2u);
    EXPECT_EQ(view(u"hbList2").items[1], (std::pair<Str, Str>{u"hbList2_1", u"Jones"}));
}

TEST_F(Ribbon, TheGroupShowsOnlyOnTheDefaultCalendar) {
    auto otherCalendar = h.outlook().inbox()->addFolder(u"Team", sim::ol::AppointmentItem);
    start();
    struct Step {
        std::shared_ptr<sim::Folder> folder;
        bool shown;
    };
    for (const Step& step :
         {Step{h.outlook().calendar(), true}, Step{otherCalendar, false},
          Step{h.outlook().inbox(), false}, Step{h.outlook().calendar(), true}}) {
        SCOPED_TRACE(hb::toUtf8(step.folder->name));
        if (ex->currentFolder != step.folder) h.sc().switchFolder(ex, step.folder);
        EXPECT_EQ(ribbon().groupShown(*ex), step.shown);
    }
    EXPECT_EQ(ribbon().invalidateAllCalls, 0u);
}

TEST_F(Ribbon, DropDownsAreEnabledForOneAppointmentAndShowItsValues) {
    auto review = h.addAppointment(u"Review", u"Holiday, Initech, Jones");
    auto plan = h.addAppointment(u"Plan", u"", 2);
    start();
    struct Step {
        std::vector<std::shared_ptr<sim::Item>> selected;
        bool enabled;
        std::array<const char16_t*, 3> shown;
    };
    for (const Step& step :
         {Step{{}, false, {u"", u"", u""}}, Step{{review}, true, {u"Initech", u"Jones", u""}},
          Step{{review, plan}, false, {u"", u"", u""}}, Step{{plan}, true, {u"", u"", u""}}}) {
        SCOPED_TRACE(step.selected.size());
        h.sc().select(ex, step.selected);
        for (std::size_t n = 0; n < 3; ++n) {
            const auto& v = view(u"hbList" + hb::toStr(static_cast<long long>(n + 1)));
            EXPECT_EQ(v.enabled, step.enabled) << n;
            EXPECT_EQ(selectedLabel(v), step.shown[n]) << n;
        }
        // The buttons work whatever is selected.
        EXPECT_TRUE(view(u"hbReport").enabled);
    }
}

// A ribbon pick goes through the toolbar's billing code: the same
// categories, subject and save as a pick in the toolbar's box.
TEST(RibbonBilling, APickWritesWhatTheToolbarWrites) {
    for (const OwnCategoriesCase& c : ownCategoriesCases()) {
        SCOPED_TRACE(hb::toUtf8(c.categories));
        SessionHarness h(kOutlook16);
        auto appt = startWithAnAppointmentOf(h, c);
        auto ex = h.sc().explorer();
        h.sc().select(ex, {appt});
        const Str id = u"hbList" + hb::toStr(static_cast<long long>(c.list));
        for (int n = 1; n <= 3; ++n) {
            const Str list = u"hbList" + hb::toStr(static_cast<long long>(n));
            EXPECT_EQ(selectedLabel(*h.sc().ribbon()->view(*ex, list)),
                      c.shown[static_cast<std::size_t>(n - 1)])
                << n;
        }
        h.instruments().resetCounts();
        const std::int32_t at = itemIndex(*h.sc().ribbon()->view(*ex, id), c.value);
        ASSERT_GE(at, 0);
        h.sc().ribbonPick(ex, id, at);
        EXPECT_EQ(putsOf(h.instruments(), u"Categories"), std::vector<std::string>{c.written});
        EXPECT_EQ(appt->categories, c.kept);
        EXPECT_EQ(appt->subject, c.subject);
        EXPECT_EQ(appt->saveCount, 1);
        EXPECT_EQ(selectedLabel(*h.sc().ribbon()->view(*ex, id)), c.value);
        EXPECT_EQ(h.sc().ribbon()->callbackErrors, 0u);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
        h.sc().quit();
    }
}

TEST_F(Ribbon, ASelectionChangeInvalidatesOnlyTheDropDownsWhoseValueChanged) {
    auto a = h.addAppointment(u"A", u"Acme, Smith");
    auto b = h.addAppointment(u"B", u"Acme, Jones", 1);
    auto c = h.addAppointment(u"C", u"", 2);
    start();
    h.sc().select(ex, {a});
    struct Step {
        std::shared_ptr<sim::Item> item;
        std::vector<Str> invalidated;
    };
    for (const Step& step : {Step{b, {u"hbList2"}}, Step{b, {}}, Step{c, {u"hbList1", u"hbList2"}},
                             Step{a, {u"hbList1", u"hbList2"}}}) {
        ribbon().invalidatedControls.clear();
        const auto labelsBefore = ribbon().callbackCounts[u"getItemLabel"];
        h.sc().select(ex, {step.item});
        EXPECT_EQ(ribbon().invalidatedControls, step.invalidated) << hb::toUtf8(step.item->subject);
        // Office asks an invalidated drop-down's items again, no others.
        std::uint64_t items = 0;
        for (const Str& id : step.invalidated)
            items += view(id).items.size();
        EXPECT_EQ(ribbon().callbackCounts[u"getItemLabel"] - labelsBefore, items);
    }
    EXPECT_EQ(ribbon().invalidateAllCalls, 0u);
}

// Office keeps a drop-down's answer per window and an invalidation reaches
// them all: a value that matches another window's is still asked again in
// the window whose selection changed.
TEST_F(Ribbon, TwoCalendarWindowsEachShowTheirOwnSelection) {
    auto a = h.addAppointment(u"A", u"Acme");
    auto b = h.addAppointment(u"B", u"Globex", 1);
    auto c = h.addAppointment(u"C", u"Globex", 2);
    start();
    h.sc().select(ex, {a});
    auto second = h.sc().openExplorer(h.outlook().calendar());
    h.sc().select(second, {b});
    ASSERT_EQ(selectedLabel(*ribbon().view(*second, u"hbList1")), u"Globex");
    h.sc().activate(ex);
    h.sc().select(ex, {c});
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Globex");
    EXPECT_EQ(selectedLabel(*ribbon().view(*second, u"hbList1")), u"Globex");
    h.sc().select(ex, {a});
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Acme");
}

// The selection's values are read once per selection change and kept for
// Office's questions: a value written elsewhere (the pane of an appointment
// window) shows once the calendar selects the item again.
TEST_F(Ribbon, AValueWrittenInAnAppointmentWindowShowsWhenTheItemIsSelectedAgain) {
    auto a = h.addAppointment(u"A", u"Acme, Smith");
    auto b = h.addAppointment(u"B", u"Globex", 1);
    start();
    h.sc().select(ex, {a});
    ASSERT_EQ(selectedLabel(view(u"hbList1")), u"Acme");
    auto window = h.sc().openInspector(a);
    auto controls = h.paneControls();
    ASSERT_EQ(controls.size(), 1u);
    ASSERT_TRUE(controls[0]->pick(0, u"Initech"));
    h.sc().saveItem(window);
    h.sc().close(window);
    ASSERT_EQ(a->categories, u"Initech, Smith");
    h.sc().activate(ex);
    h.sc().select(ex, {b});
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Globex");
    h.sc().select(ex, {a});
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Initech");
    EXPECT_EQ(selectedLabel(view(u"hbList2")), u"Smith");
    // A pick in the ribbon shows at once and again after the selection
    // came back.
    pick(u"hbList2", u"Jones");
    h.sc().select(ex, {b});
    h.sc().select(ex, {a});
    EXPECT_EQ(selectedLabel(view(u"hbList2")), u"Jones");
}

TEST_F(Ribbon, ChangedSettingsHandTheListsAgain) {
    auto appt = h.addAppointment(u"Review", u"Acme");
    start(workgroupLists(), u"1");
    h.sc().select(ex, {appt});
    ASSERT_EQ(view(u"hbList1").items.size(), 3u);
    ASSERT_FALSE(view(u"hbStatistics").visible);
    // The settings program saves a renamed list with a new entry and the
    // report choice that offers statistics.
    auto lists = workgroupLists();
    lists[0] = {u"Customer", {u"Acme", u"Globex", u"Initech", u"Umbrella"}};
    h.setLists(lists);
    h.setSetting(u"ReportChoice", u"2");
    ribbon().invalidatedControls.clear();
    h.sc().select(ex, {appt});
    EXPECT_EQ(ribbon().invalidatedControls,
              (std::vector<Str>{u"hbList1", u"hbList2", u"hbList3", u"hbStatistics"}));
    EXPECT_EQ(view(u"hbList1").label, u"Customer");
    EXPECT_EQ(itemIndex(view(u"hbList1"), u"Umbrella"), 3);
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Acme");
    pick(u"hbList1", u"Umbrella");
    EXPECT_EQ(appt->categories, u"Umbrella");
}

TEST_F(Ribbon, TheButtonsStartTheirPrograms) {
    for (const char16_t* program : {u"HBReporting.exe", u"Cubelens.exe", u"HBPersonalSettings.exe"})
        h.addProgram(program);
    start();
    struct Case {
        const char16_t* id;
        const char16_t* program;
    };
    for (const Case c :
         {Case{u"hbReport", u"HBReporting.exe"}, Case{u"hbStatistics", u"Cubelens.exe"},
          Case{u"hbSettings", u"HBPersonalSettings.exe"}}) {
        SCOPED_TRACE(hb::toUtf8(c.id));
        h.platform().clearRuns();
        h.sc().ribbonPress(ex, c.id);
        ASSERT_EQ(h.platform().runs().size(), 1u);
        EXPECT_NE(h.platform().runs()[0].command.find(c.program), Str::npos);
    }
    EXPECT_NE(h.platform().runs()[0].command.find(u"False"), Str::npos);
}

// A list longer than a drop-down holds: the appointment's value and the
// newest entries, then "More…", which opens the whole list to search.
TEST_F(Ribbon, AListOfTenThousandEntriesStaysUsable) {
    std::vector<Str> names;
    for (int i = 0; i < 10000; ++i)
        names.push_back(u"Client " + hb::toStr(static_cast<long long>(i)));
    auto appt = h.addAppointment(u"Review", u"Client 17");
    start({{u"Company", names}, {u"Person", {u"Smith", u"Jones"}}});
    h.sc().select(ex, {appt});
    const auto& list = view(u"hbList1");
    ASSERT_EQ(list.items.size(), hb::cRibbon::kRecentItems + 1);
    EXPECT_EQ(list.items.front().second, u"Client 17");
    EXPECT_EQ(list.items[1].second, u"Client 9999");
    EXPECT_EQ(list.items.back().second, hb::cRibbon::kMoreLabel);
    EXPECT_EQ(selectedLabel(list), u"Client 17");

    // One of the newest entries, straight from the drop-down.
    pick(u"hbList1", u"Client 9998");
    EXPECT_EQ(appt->categories, u"Client 9998");
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Client 9998");

    // "More…": cancelled, nothing is written and the value shows again.
    const std::int32_t more = static_cast<std::int32_t>(view(u"hbList1").items.size()) - 1;
    h.sc().ribbonPick(ex, u"hbList1", more);
    EXPECT_EQ(appt->categories, u"Client 9998");
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Client 9998");
    // Then an entry found in the picker.
    h.platform().pickAnswer = u"Client 4242";
    h.sc().ribbonPick(ex, u"hbList1", more);
    EXPECT_EQ(appt->categories, u"Client 4242");
    EXPECT_EQ(selectedLabel(view(u"hbList1")), u"Client 4242");
    ASSERT_EQ(h.platform().pickers.size(), 2u);
    EXPECT_EQ(h.platform().pickers[0].title, u"Company");
    EXPECT_EQ(h.platform().pickers[0].entries, 10000u);
}

}  // namespace
}  // namespace hbtest
