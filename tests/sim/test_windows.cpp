// The simulated Outlook's start-up and shutdown, explorers, inspectors and
// their events, in the order Outlook raises them.
#include <gtest/gtest.h>

#include "sim/Scenario.h"

namespace {

using hb::Args;
using hb::Str;
using hb::Variant;
using namespace sim;

// A small add-in: records Office's calls and every event of the sources it
// was told to hear, in one list.
struct TestAddin : Addin {
    std::vector<std::string> log;
    Variant app, factory;
    std::vector<hb::EventConnection> connections;
    std::vector<Variant> held;
    std::function<void(const Str& member, Args& args)> onEvent;

    void hear(const Variant& source, const Str& eventInterface) {
        Str prefix = eventInterface + u".";
        connections.push_back(source.obj().subscribe(
            eventInterface,
            std::make_shared<hb::FunctionSink>([this, prefix](const Str& m, Args& a) {
                log.push_back(hb::toUtf8(prefix + m));
                if (onEvent) onEvent(m, a);
            })));
        held.push_back(source);
    }
    void onConnection(const Variant& application, std::int32_t mode, const Variant&,
                      Args&) override {
        log.push_back("OnConnection " + std::to_string(mode));
        app = application;
        hear(app, u"ApplicationEvents");
    }
    void ctpFactoryAvailable(const Variant& f) override {
        log.push_back("CTPFactoryAvailable");
        factory = f;
    }
    void onStartupComplete(Args&) override { log.push_back("OnStartupComplete"); }
    void onBeginShutdown(Args&) override { log.push_back("OnBeginShutdown"); }
    void onDisconnection(std::int32_t mode, Args&) override {
        log.push_back("OnDisconnection " + std::to_string(mode));
        connections.clear();
        held.clear();
        app = Variant();
        factory = Variant();
    }
};

TEST(SimWindows, StartUpCallsTheAddinInOfficesOrderWithTheFactoryFromOutlook2007On) {
    for (const char16_t* version : {u"12.0.4518.1014", u"11.0.8217"}) {
        Scenario sc;
        sc.outlook().version = version;
        auto addin = std::make_shared<TestAddin>();
        sc.startOutlook(addin);
        std::vector<std::string> expected = {"OnConnection 1", "CTPFactoryAvailable",
                                             "OnStartupComplete", "ApplicationEvents.Startup"};
        if (Str(version) == u"11.0.8217") expected.erase(expected.begin() + 1);
        EXPECT_EQ(addin->log, expected) << hb::toUtf8(version);
        EXPECT_EQ(sc.explorer()->activateCount, 1);
    }
}

TEST(SimWindows, ActiveExplorerAtStartupIsTheOpeningWindow) {
    Scenario sc;
    auto addin = std::make_shared<TestAddin>();
    Str typeName;
    addin->onEvent = [&](const Str& m, Args&) {
        if (m == u"Startup") {
            typeName = addin->app.call(u"ActiveWindow").obj().typeName();
            addin->app.call(u"ActiveExplorer").get(u"CurrentFolder");
        }
    };
    sc.startOutlook(addin, ol::FolderCalendar);
    EXPECT_EQ(typeName, u"Explorer");
}

// Also: a folder outside the stores reaches the event as Nothing; the
// focus leaving Outlook and coming back deactivates and activates.
TEST(SimWindows, CancelByReferenceStopsTheFolderSwitch) {
    Scenario sc;
    auto addin = std::make_shared<TestAddin>();
    sc.startOutlook(addin);
    auto e = sc.explorer();
    addin->hear(addin->app.call(u"ActiveExplorer"), u"ExplorerEvents");
    bool cancel = true;
    Str newFolderName;
    addin->onEvent = [&](const Str& m, Args& a) {
        if (m == u"BeforeFolderSwitch") {
            newFolderName = a[0].isNothing() ? Str(u"Nothing") : a[0].get(u"Name").toStr();
            a[1].assign(cancel);
        }
    };
    auto inbox = e->currentFolder;
    EXPECT_FALSE(sc.switchFolder(e, sc.outlook().calendar()));
    EXPECT_EQ(e->currentFolder, inbox);
    EXPECT_EQ(newFolderName, u"Calendar");

    addin->log.clear();
    cancel = false;
    EXPECT_TRUE(sc.switchFolder(e, sc.outlook().calendar()));
    EXPECT_EQ(e->currentFolder, sc.outlook().calendar());
    EXPECT_EQ(addin->log, (std::vector<std::string>{"ExplorerEvents.BeforeFolderSwitch",
                                                    "ExplorerEvents.FolderSwitch",
                                                    "ExplorerEvents.SelectionChange"}));
    EXPECT_TRUE(sc.switchFolder(e, sc.outlook().outsideFolder(u"Shortcut")));
    EXPECT_EQ(newFolderName, u"Nothing");

    addin->log.clear();
    sc.leaveOutlook();
    sc.leaveOutlook();
    sc.returnToOutlook();
    EXPECT_EQ(addin->log,
              (std::vector<std::string>{"ExplorerEvents.Deactivate", "ExplorerEvents.Activate"}));
}

TEST(SimWindows, InspectorsOpenWithNewInspectorThenActivate) {
    Scenario sc;
    auto appt = sc.outlook().calendar()->addAppointment(u"A", makeDate(2024, 1, 1, 9),
                                                        makeDate(2024, 1, 1, 10));
    auto addin = std::make_shared<TestAddin>();
    sc.startOutlook(addin, ol::FolderCalendar);
    addin->hear(addin->app.call(u"ActiveExplorer"), u"ExplorerEvents");
    addin->hear(addin->app.get(u"Inspectors"), u"InspectorsEvents");
    Variant inspector;
    addin->onEvent = [&](const Str& m, Args& a) {
        if (m == u"NewInspector") {
            inspector = a[0];
            addin->hear(inspector, u"InspectorEvents");
            EXPECT_EQ(inspector.get(u"CurrentItem").get(u"Subject").toStr(), u"A");
        }
    };
    addin->log.clear();
    auto in = sc.openInspector(appt);
    EXPECT_EQ(addin->log,
              (std::vector<std::string>{"InspectorsEvents.NewInspector",
                                        "ExplorerEvents.Deactivate", "InspectorEvents.Activate"}));
    addin->log.clear();
    sc.close(in);
    EXPECT_EQ(addin->log,
              (std::vector<std::string>{"InspectorEvents.Close", "ExplorerEvents.Activate"}));
    // A closed window refuses every call.
    EXPECT_THROW(inspector.get(u"CurrentItem"), hb::AutomationError);
    EXPECT_EQ(addin->app.get(u"Inspectors").get(u"Count"), Variant(std::int32_t{0}));
}

TEST(SimWindows, ExplorersAddRaisesNewExplorer) {
    Scenario sc;
    auto addin = std::make_shared<TestAddin>();
    sc.startOutlook(addin);
    Variant explorers = addin->app.get(u"Explorers");
    addin->hear(explorers, u"ExplorersEvents");
    Variant cal = addin->app.call(u"GetNamespace", {Str(u"MAPI")})
                      .call(u"GetDefaultFolder", {std::int32_t{9}});
    Variant e = explorers.call(u"Add", {cal, std::int32_t{0}});
    EXPECT_EQ(addin->log.back(), "ExplorersEvents.NewExplorer");
    EXPECT_EQ(explorers.get(u"Count"), Variant(std::int32_t{2}));
    EXPECT_EQ(e.get(u"CurrentFolder").get(u"Name").toStr(), u"Calendar");
}

TEST(SimWindows, ClosingTheLastExplorerQuitsOutlook) {
    Scenario sc;
    auto addin = std::make_shared<TestAddin>();
    sc.startOutlook(addin);
    addin->hear(addin->app.call(u"ActiveExplorer"), u"ExplorerEvents");
    addin->log.clear();
    sc.close(sc.explorer());
    EXPECT_EQ(addin->log,
              (std::vector<std::string>{"ExplorerEvents.Close", "ApplicationEvents.Quit",
                                        "OnBeginShutdown", "OnDisconnection 0"}));
    EXPECT_FALSE(sc.outlook().running);
    EXPECT_FALSE(sc.addinLoaded());
}

TEST(SimWindows, WithoutAWindowActiveExplorerIsNothingUntilOneIsAdded) {
    Scenario sc;
    auto addin = std::make_shared<TestAddin>();
    sc.startOutlook(addin, 0);
    EXPECT_TRUE(addin->app.call(u"ActiveExplorer").isNothing());
    EXPECT_TRUE(addin->app.call(u"ActiveWindow").isNothing());
    Variant explorers = addin->app.get(u"Explorers");
    Variant inbox = addin->app.call(u"GetNamespace", {Str(u"MAPI")})
                        .call(u"GetDefaultFolder", {std::int32_t{6}});
    explorers.call(u"Add", {inbox, std::int32_t{0}});
    explorers.call(u"Item", {std::int32_t{1}}).call(u"Activate");
    EXPECT_EQ(addin->app.call(u"ActiveExplorer").get(u"Caption").toStr(),
              u"Inbox - Microsoft Outlook");
}

}  // namespace
