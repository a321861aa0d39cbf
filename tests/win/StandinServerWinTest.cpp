// The stand-in Outlook served to other processes under Wine, as Outlook
// serves itself: this test program is the other process. It finds the
// running Application (GetActiveObject) or has COM start the stand-in as
// Outlook.Application's local server (CoCreateInstance), reads the default
// calendar through the dispatch client across the process boundary, and
// compares with the calendar the stand-in furnishes, read in this process
// straight from the simulation. Errors keep their numbers and texts on the
// way; the server quits and revokes its registrations when the client lets
// go or calls Quit.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ComTestSupport.h"
#include "common/AutomationError.h"
#include "platform/win32/Win32Platform.h"
#include "sim/Scenario.h"
#include "standin/HostSetup.h"
#include "standin/OutlookServer.h"

namespace {

using hb::Str;
using hb::Variant;

struct Row {
    Str subject;
    double start = 0;
    Str categories;
    bool operator==(const Row&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Row& r) {
    return out << hb::toUtf8(r.subject) << " @" << r.start << " [" << hb::toUtf8(r.categories)
               << "]";
}

// What the stand-in holds: the calendar it furnishes, straight from the
// simulation.
std::vector<Row> heldCalendar() {
    sim::Scenario sc;
    standin::furnishOutlook(sc.outlook(), 12);
    std::vector<Row> rows;
    for (const auto& item : sc.outlook().calendar()->items)
        rows.push_back({item->subject, item->start.days, item->categories});
    return rows;
}

// The default calendar's items as a client reads them through the object
// model (the collection's enumerator crosses the boundary too).
std::vector<Row> readCalendar(const Variant& application) {
    Variant items = application.toObject()
                        ->get(u"Session")
                        .toObject()
                        ->call(u"GetDefaultFolder", {Variant(std::int32_t{9})})
                        .toObject()
                        ->get(u"Items");
    std::vector<Row> rows;
    for (const Variant& item : items.toObject()->enumerate()) {
        auto o = item.toObject();
        rows.push_back({o->get(u"Subject").toStr(), o->get(u"Start").toDate().days,
                        o->get(u"Categories").toStr()});
    }
    return rows;
}

std::optional<hb::AutomationError> activeObjectError(hb::Win32Platform& platform) {
    return hb::test::raisedBy([&] { platform.getActiveObject(u"Outlook.Application"); });
}

// Waits until no Outlook runs any more (the server revoked its entry).
bool waitUntilRevoked(hb::Win32Platform& platform, DWORD timeoutMs) {
    const ULONGLONG until = GetTickCount64() + timeoutMs;
    while (GetTickCount64() < until) {
        if (activeObjectError(platform)) return true;
        Sleep(100);
    }
    return false;
}

class StandinServer : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(standin::registerOutlookServer(hb::test::exeFolder() + L"\\hb_standin.exe"));
    }
    static void TearDownTestSuite() { standin::unregisterOutlookServer(); }
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr))); }
    void TearDown() override { OleUninitialize(); }

    hb::Win32Platform platform_;
};

TEST_F(StandinServer, RegistersItsClassAsOutlooksLocalServer) {
    EXPECT_EQ(standin::registeredOutlookServer(),
              L"\"" + hb::test::exeFolder() + L"\\hb_standin.exe\"");
    CLSID byProgId{}, expected{};
    ASSERT_EQ(CLSIDFromProgID(L"Outlook.Application", &byProgId), S_OK);
    ASSERT_EQ(CLSIDFromString(standin::kOutlookClsid, &expected), S_OK);
    EXPECT_TRUE(IsEqualCLSID(byProgId, expected));
}

TEST_F(StandinServer, ARunningStandinIsFoundByGetActiveObjectAndQuitsWhenLetGo) {
    ASSERT_TRUE(activeObjectError(platform_)) << "an Outlook runs already";
    std::wstring command = L"\"" + hb::test::exeFolder() + L"\\hb_standin.exe\" -Embedding";
    STARTUPINFOW si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    ASSERT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &si, &pi));
    CloseHandle(pi.hThread);
    {
        Variant app;
        for (int tries = 0; tries < 300 && app.isEmpty(); ++tries) {
            try {
                app = platform_.getActiveObject(u"Outlook.Application");
            } catch (const hb::AutomationError&) {
                Sleep(100);
            }
        }
        ASSERT_FALSE(app.isEmpty()) << "the stand-in never registered its Application";
        ASSERT_EQ(heldCalendar().size(), 3u);
        EXPECT_EQ(app.toObject()->typeName(), u"Application");
        EXPECT_EQ(readCalendar(app), heldCalendar());
        // The items read are let go; the Application alone keeps it running.
        EXPECT_EQ(WaitForSingleObject(pi.hProcess, 1000), static_cast<DWORD>(WAIT_TIMEOUT))
            << "the stand-in quit while a client still held its Application";
        EXPECT_EQ(app.toObject()->get(u"Name").toStr(), u"Outlook");
    }
    // Let go of everything: the stand-in ends by itself and its entry goes.
    DWORD code = 99;
    ASSERT_EQ(WaitForSingleObject(pi.hProcess, 30000), WAIT_OBJECT_0)
        << "the stand-in still runs after its only client let go";
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hProcess);
    EXPECT_EQ(code, 0u);
    EXPECT_TRUE(activeObjectError(platform_));
}

TEST_F(StandinServer, CreateObjectStartsTheStandinWhenNoneRuns) {
    ASSERT_TRUE(activeObjectError(platform_)) << "an Outlook runs already";
    {
        Variant app = platform_.createObject(u"Outlook.Application");
        EXPECT_EQ(readCalendar(app), heldCalendar());
        // While the client holds it, other clients find the same Outlook.
        Variant running = platform_.getActiveObject(u"Outlook.Application");
        EXPECT_EQ(readCalendar(running), heldCalendar());
    }
    EXPECT_TRUE(waitUntilRevoked(platform_, 30000));
}

// The same failing calls made on the simulation in this process and across
// the boundary: the client sees Outlook's number and description.
TEST_F(StandinServer, ErrorsCrossTheBoundaryWithTheirNumbersAndDescriptions) {
    using Call = std::function<void(const hb::ObjectPtr& application)>;
    const struct {
        const char* what;
        Call call;
    } cases[] = {
        {"a folder that does not exist",
         [](const hb::ObjectPtr& a) {
             a->get(u"Session").toObject()->call(u"GetFolderFromID", {Variant(Str(u"none"))});
         }},
        {"an item past the end",
         [](const hb::ObjectPtr& a) {
             a->get(u"Session")
                 .toObject()
                 ->call(u"GetDefaultFolder", {Variant(std::int32_t{9})})
                 .toObject()
                 ->get(u"Items")
                 .toObject()
                 ->call(u"Item", {Variant(std::int32_t{99})});
         }},
    };
    sim::Scenario local;
    standin::furnishOutlook(local.outlook(), 12);
    Variant app = platform_.createObject(u"Outlook.Application");
    for (const auto& c : cases) {
        auto expected = hb::test::raisedBy([&] { c.call(local.outlook().application()); });
        auto actual = hb::test::raisedBy([&] { c.call(app.toObject()); });
        ASSERT_TRUE(expected) << c.what;
        ASSERT_TRUE(actual) << c.what;
        EXPECT_EQ(actual->number(), expected->number()) << c.what;
        EXPECT_EQ(actual->description(), expected->description()) << c.what;
    }
    // Quit ends the stand-in even while this client still holds it.
    app.toObject()->call(u"Quit");
    EXPECT_TRUE(waitUntilRevoked(platform_, 30000));
}

}  // namespace
