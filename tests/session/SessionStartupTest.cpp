// Outlook's start with the add-in: what the session builds, in which order,
// and what a first start without any settings does.
#include <gtest/gtest.h>

#include <algorithm>

#include "addin/OHBAddinDesigner.h"
#include "addin/cCalendarReactions.h"
#include "common/AutomationError.h"
#include "explorer/cToolBarItem.h"
#include "session/ExplorerSupport.h"
#include "settings/cPersonalSettings.h"

namespace hbtest {
namespace {

std::size_t settingsAppointments(sim::Outlook& o) {
    std::size_t n = 0;
    for (const auto& item : o.calendar()->items) {
        if (item->subject == hb::kSettingsSubject) ++n;
    }
    return n;
}

// Position of the first trace line that starts with `text` (npos if none).
std::size_t traceAt(const std::vector<Str>& lines, const Str& text) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].rfind(text, 0) == 0) return i;
    }
    return Str::npos;
}

TEST(SessionStartup, AFirstStartWithoutSettingsSetsUpOnceAndStartsTheSettingsProgramOnce) {
    SessionHarness h;
    h.addProgram(u"HBPersonalSettings.exe");
    h.start();
    ASSERT_TRUE(h.loaded());

    // The settings appointment was made, once.
    EXPECT_EQ(settingsAppointments(h.outlook()), 1u);
    // The settings program, asked to set up the lists.
    ASSERT_EQ(h.platform().runs().size(), 1u);
    EXPECT_NE(h.platform().runs()[0].command.find(u"HBPersonalSettings.exe"), Str::npos);
    EXPECT_NE(h.platform().runs()[0].command.find(u"True"), Str::npos);

    // The calendar window carries the bar with the buttons and nothing else.
    const auto controls = barControls(*h.sc().explorer());
    ASSERT_FALSE(controls.empty());
    for (const auto& c : controls)
        EXPECT_EQ(c->type, sim::mso::ControlButton);

    // Looking at appointments afterwards makes no second settings appointment.
    auto appt = h.addAppointment(u"Review");
    h.sc().select(h.sc().explorer(), {appt});
    h.sc().activate(h.sc().explorer());
    EXPECT_EQ(settingsAppointments(h.outlook()), 1u);
    EXPECT_EQ(h.platform().runs().size(), 1u);
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();

    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST(SessionStartup, TheSessionKnowsTheCalendarTheUserAndTheSeparatorWithOrWithoutTaskPanes) {
    for (const char16_t* version : {u"12.0.4518.1014", u"11.0.8217"}) {
        SCOPED_TRACE(hb::toUtf8(version));
        const bool taskPanes = Str(version).rfind(u"12", 0) == 0;
        SessionHarness h(version);
        h.addProgram(u"HBPersonalSettings.exe");
        h.setListSeparator(u";");
        h.setLists(workgroupLists());
        h.start();
        ASSERT_TRUE(h.loaded());
        hb::Session& s = h.session();
        // Stored lists start no settings program.
        EXPECT_TRUE(h.platform().runs().empty());
        EXPECT_EQ(s.oPersonalSettings->MetaDataLists.size(), 3u);
        EXPECT_FALSE(s.blnSettingsChanged);
        EXPECT_EQ(s.strListSeparator, u";");
        EXPECT_EQ(s.strCalendarEntryID, h.outlook().calendar()->entryId);
        EXPECT_EQ(s.strCalendarStoreID, h.outlook().calendar()->storeId);
        EXPECT_EQ(s.strCurrentUser, u"John Smith");
        EXPECT_TRUE(s.blnConnected);
        EXPECT_EQ(s.strSettingsValue, s.oPersonalSettings->fncBuildBody());
        EXPECT_TRUE(s.objToolBar);
        EXPECT_TRUE(s.oAppointments);
        // One wrapper for the one window, none for inspectors yet.
        ASSERT_TRUE(s.oCalendarReactions);
        EXPECT_EQ(s.oCalendarReactions->colExplorers.size(), 1u);
        EXPECT_TRUE(s.oCalendarReactions->colInspectors.empty());
        // Office 2007 and later hand over their task pane factory.
        EXPECT_EQ(s.oCTPFactory.isEmpty(), !taskPanes);
        EXPECT_NE(SessionHarness::addinBar(*h.sc().explorer()), nullptr);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    }
}

// Loaded into a running Outlook (the COM Add-ins dialog): no Startup event
// comes, and the session starts at once on the windows already open.
TEST(SessionStartup, ConnectedAfterOutlooksStartTheSessionStartsOnTheOpenWindows) {
    for (const char16_t* version : {u"12.0.4518.1014", u"11.0.8217"}) {
        SCOPED_TRACE(hb::toUtf8(version));
        const bool taskPanes = Str(version).rfind(u"12", 0) == 0;
        SessionHarness h(version);
        h.setLists(workgroupLists());
        auto appt = h.addAppointment(u"Review", u"Globex, Jones");
        auto other = h.addAppointment(u"Other", u"Initech", 2);
        h.startWithoutAddin();
        auto calendar = h.sc().explorer();
        auto inbox = h.sc().openExplorer(h.outlook().inbox());
        auto window = h.sc().openInspector(appt);
        h.sc().activate(calendar);
        h.sc().select(calendar, {other});
        h.connectAfterStart();
        ASSERT_TRUE(h.loaded());

        hb::Session& s = h.session();
        ASSERT_TRUE(s.oCalendarReactions);
        EXPECT_EQ(s.oCalendarReactions->colExplorers.size(), 2u);
        EXPECT_EQ(s.oCalendarReactions->colInspectors.size(), 1u);
        // The calendar shows its selection in the toolbar.
        ASSERT_NE(h.combo(*calendar, 1), nullptr);
        EXPECT_EQ(h.combo(*calendar, 1)->text, u"Initech");
        // The appointment window has its pane, or under Outlook 2003 its
        // toolbar once the user turns to it.
        if (taskPanes) {
            ASSERT_NE(h.paneOf(*window), nullptr);
            ASSERT_EQ(h.paneControls().size(), 1u);
            EXPECT_EQ(h.paneControls()[0]->view.selected(0), u"Globex");
        } else {
            h.sc().activate(window);
            ASSERT_NE(h.combo(*window, 1), nullptr);
            EXPECT_EQ(h.combo(*window, 1)->text, u"Globex");
        }
        // The other window was wrapped too: moving it to the calendar
        // brings the toolbar there.
        h.sc().activate(inbox);
        h.sc().switchFolder(inbox, h.outlook().calendar());
        EXPECT_NE(SessionHarness::addinBar(*inbox), nullptr);
        EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
        h.sc().quit();
        EXPECT_TRUE(h.census().empty()) << h.censusText();
    }
}

// Started by a program without any window (automation), Outlook loads the
// add-in at its start; the first calendar window the user opens gets the
// toolbar.
TEST(SessionStartup, StartedWithoutAWindowTheFirstCalendarWindowGetsTheToolbar) {
    SessionHarness h;
    h.setLists(workgroupLists());
    auto appt = h.addAppointment(u"Review", u"Globex, Jones");
    h.start(0);
    ASSERT_TRUE(h.loaded());
    auto calendar = h.sc().openExplorer(h.outlook().calendar());
    h.sc().select(calendar, {appt});
    ASSERT_NE(h.combo(*calendar, 1), nullptr);
    EXPECT_EQ(h.combo(*calendar, 1)->text, u"Globex");
    h.sc().pickInCombo(h.combo(*calendar, 1), u"Acme");
    EXPECT_EQ(appt->categories, u"Acme, Jones");
    EXPECT_EQ(h.errorDialogs(), 0u) << h.messageBoxesText();
    h.sc().quit();
    EXPECT_TRUE(h.census().empty()) << h.censusText();
}

TEST(SessionStartup, TheWorkingStateIsBuiltInItsOrder) {
    SessionHarness h;
    h.trace = true;
    h.setLists(workgroupLists());
    h.start();
    ASSERT_TRUE(h.loaded());

    const auto lines = h.traceLines();
    const std::vector<Str> order = {
        u"Getting List separator from computer settings!",
        u"Creating a new object for holding buttons",
        // The phrases are read before anything that shows a text is built.
        u"Reading language phrases from resource file",
        u"Reading phrases from collection into variables",
        u"Setting reference to the default Outlook Calendar",
        u"Getting current user full name from mailbox name",
        u"Reading Hourbook settings from Registry!",
        u"Setting a reference to the explorers collection cCalendarReactions",
        u"Adding the new explorer to the collection",
        u"Reacting to Explorer Activate event",
    };
    std::size_t last = 0;
    for (const Str& text : order) {
        const std::size_t at = traceAt(lines, text);
        ASSERT_NE(at, Str::npos) << hb::toUtf8(text);
        EXPECT_GE(at, last) << hb::toUtf8(text);
        last = at;
    }

    // In Outlook: the calendar first, then the event sources, the watcher
    // on the calendar's items, and last the active window is activated.
    std::vector<std::string> calls;
    for (const auto& r : h.instruments().log()) {
        const std::string m = hb::toUtf8(r.member);
        if (m == "GetDefaultFolder" || m == "ExplorersEvents" || m == "InspectorsEvents" ||
            m == "ItemsEvents" || m == "Activate") {
            if (std::find(calls.begin(), calls.end(), m) == calls.end()) calls.push_back(m);
        }
    }
    const std::vector<std::string> expected = {"GetDefaultFolder", "ExplorersEvents",
                                               "InspectorsEvents", "ItemsEvents", "Activate"};
    EXPECT_EQ(calls, expected);
}

}  // namespace
}  // namespace hbtest

namespace hbtest {
namespace {

TEST(SessionDesigner, ItsOwnFactoryMakesNoPane) {
    SessionHarness h;
    h.setLists(workgroupLists());
    h.start();
    ASSERT_TRUE(h.loaded());
    const auto calls = h.instruments().callCount();
    const Variant pane =
        h.designer()->ICTPFactory_CreateCTP(hb::kPaneProgId, u"Hourbook", Variant::nothing());
    EXPECT_TRUE(pane.isNothing());
    EXPECT_EQ(h.instruments().callCount(), calls);
    EXPECT_TRUE(h.paneControls().empty());
}

TEST(SessionDesigner, AnApplicationThatIsNoObjectFailsTheConnection) {
    hb::MemoryPlatform platform;
    hb::OHBAddinDesigner designer(platform);
    hb::Args custom;
    EXPECT_THROW(designer.AddinInstance_OnConnection(Variant(u"Outlook"), sim::ext::ConnectStartup,
                                                     Variant::nothing(), custom),
                 hb::AutomationError);
    EXPECT_FALSE(designer.session().blnConnected);
    designer.AddinInstance_OnDisconnection(sim::ext::DisconnectUserClosed, custom);
    EXPECT_FALSE(designer.session().oCalendarReactions);
    EXPECT_TRUE(platform.messageBoxes().empty());
}

}  // namespace
}  // namespace hbtest
