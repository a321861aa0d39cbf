// HBAddin.dll as a COM server under Wine: registration with regsvr32 for the
// machine and for the user, read back key by key and compared whole with
// the registry before; creation by ProgID with every interface answered;
// the designer's connection (events subscribed, then all let go again, one
// error dialog at most per load); and unloading.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "ComTestSupport.h"
#include "HBAddin_h.h"

namespace hb {
namespace {

using com::ComPtr;
using test::differences;
using test::MessageBoxWatcher;
using test::Snapshot;
using test::snapshot;
using test::TestServer;

std::wstring dllPath() {
    return test::exeFolder() + L"\\HBAddin.dll";
}

// The parts of the registry registration may touch.
Snapshot registryNow() {
    Snapshot s;
    snapshot(HKEY_LOCAL_MACHINE, L"Software\\Classes\\CLSID", s);
    snapshot(HKEY_LOCAL_MACHINE, L"Software\\Classes\\TypeLib", s);
    snapshot(HKEY_LOCAL_MACHINE, L"Software\\Classes\\Interface", s);
    snapshot(HKEY_LOCAL_MACHINE, L"Software\\Classes\\HBAddin.Connect", s);
    snapshot(HKEY_LOCAL_MACHINE, L"Software\\Classes\\HBAddin.pane", s);
    snapshot(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Office", s);
    // The user's side, without Wine's own bookkeeping under
    // Software\\Microsoft\\Windows, which its programs write as they start.
    snapshot(HKEY_CURRENT_USER, L"Software\\Classes", s);
    snapshot(HKEY_CURRENT_USER, L"Software\\Microsoft\\Office", s);
    snapshot(HKEY_CURRENT_USER, L"Software\\Brindlewood", s);
    return s;
}

// Runs Wine's regsvr32 with the given switches on the DLL; its exit code.
DWORD regsvr32(const std::wstring& switches) {
    return test::runProgram(L"regsvr32.exe /s " + switches + L" \"" + dllPath() + L"\"");
}

std::wstring readText(HKEY root, const std::wstring& key, const wchar_t* name) {
    wchar_t data[2048] = {};
    DWORD size = sizeof data;
    if (RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, data, &size) != ERROR_SUCCESS)
        return L"(missing)";
    return data;
}

using test::guidText;

constexpr wchar_t kAddinKey[] = L"Software\\Microsoft\\Office\\Outlook\\Addins\\HBAddin.Connect";

// regsvr32's switches for one scope, and the hive it writes: for the
// machine, Outlook's add-in key goes to the machine's hive as the classes do,
// so that every user's Outlook loads the add-in.
struct Scope {
    const wchar_t* install;
    const wchar_t* uninstall;
    HKEY hive;
    HKEY otherHive;
};
const Scope kScopes[] = {{L"", L"/u", HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER},
                         {L"/n /i:user", L"/u /n /i:user", HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}};

bool keyExists(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

TEST(ComServer, RegistrationWritesTheClassesAndTheAddinKeyAndUnregistrationRemovesExactlyThem) {
    for (const Scope& scope : kScopes) {
        SCOPED_TRACE(scope.install);
        const Snapshot before = registryNow();
        ASSERT_EQ(regsvr32(scope.install), 0u);

        const std::wstring classes = L"Software\\Classes\\";
        const std::wstring designer = classes + L"CLSID\\" + guidText(CLSID_OHBAddinDesigner);
        const std::wstring pane = classes + L"CLSID\\" + guidText(CLSID_Pane);
        for (const std::wstring& clsid : {designer, pane}) {
            EXPECT_EQ(readText(scope.hive, clsid + L"\\InprocServer32", nullptr), dllPath());
            EXPECT_EQ(readText(scope.hive, clsid + L"\\InprocServer32", L"ThreadingModel"),
                      L"Apartment");
            EXPECT_EQ(readText(scope.hive, clsid + L"\\TypeLib", nullptr), guidText(LIBID_HBAddin));
        }
        EXPECT_EQ(readText(scope.hive, classes + L"HBAddin.Connect\\CLSID", nullptr),
                  guidText(CLSID_OHBAddinDesigner));
        EXPECT_EQ(readText(scope.hive, classes + L"HBAddin.pane\\CLSID", nullptr),
                  guidText(CLSID_Pane));
        EXPECT_EQ(readText(scope.hive, pane + L"\\ProgID", nullptr), L"HBAddin.pane");
        EXPECT_EQ(readText(scope.hive,
                           classes + L"TypeLib\\" + guidText(LIBID_HBAddin) + L"\\1.0\\0\\" +
                               (sizeof(void*) == 8 ? L"win64" : L"win32"),
                           nullptr),
                  dllPath());
        EXPECT_EQ(readText(scope.hive, kAddinKey, L"FriendlyName"), L"Hourbook for Outlook v4");
        EXPECT_EQ(readText(scope.hive, kAddinKey, L"Description"),
                  L"Hourbook for Outlook v4\r\nFor more information please see \r\n"
                  L"https://www.hourbook.invalid/");
        DWORD loadBehavior = 0, size = sizeof loadBehavior, type = 0;
        EXPECT_EQ(RegGetValueW(scope.hive, kAddinKey, L"LoadBehavior", RRF_RT_ANY, &type,
                               &loadBehavior, &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
        EXPECT_EQ(loadBehavior, 3u);
        EXPECT_FALSE(keyExists(scope.otherHive, kAddinKey)) << "the add-in key of the other scope";

        ASSERT_EQ(regsvr32(scope.uninstall), 0u);
        EXPECT_EQ(differences(before, registryNow()), "");
    }
}

TEST(ComServer, UnregistrationKeepsWhatTheUserAndOthersWrote) {
    const wchar_t other[] = L"Software\\Microsoft\\Office\\Outlook\\Addins\\Other.Connect";
    const wchar_t settings[] = L"Software\\Brindlewood\\HourbookComServerTest";
    for (const Scope& scope : kScopes) {
        SCOPED_TRACE(scope.install);
        const Snapshot before = registryNow();
        ASSERT_EQ(regsvr32(scope.install), 0u);
        // The add-in was switched off; another add-in and the settings live
        // beside it.
        DWORD off = 2;
        RegSetKeyValueW(scope.hive, kAddinKey, L"LoadBehavior", REG_DWORD, &off, sizeof off);
        RegSetKeyValueW(scope.hive, other, L"FriendlyName", REG_SZ, L"Other", 12);
        RegSetKeyValueW(HKEY_CURRENT_USER, settings, L"PersonalRate", REG_SZ, L"12.5", 10);

        ASSERT_EQ(regsvr32(scope.uninstall), 0u);
        Snapshot after;
        snapshot(scope.hive, kAddinKey, after);
        const std::wstring hiveName = scope.hive == HKEY_CURRENT_USER ? L"HKCU\\" : L"HKLM\\";
        EXPECT_EQ(after.size(), 2u) << "the key and the changed LoadBehavior are left";
        EXPECT_EQ(after[hiveName + kAddinKey + L"|LoadBehavior"].substr(0, 2), L"4:");
        EXPECT_EQ(readText(scope.hive, other, L"FriendlyName"), L"Other");
        EXPECT_EQ(readText(HKEY_CURRENT_USER, settings, L"PersonalRate"), L"12.5");

        // Remove what this test wrote, and the keys above it that it made.
        RegDeleteTreeW(scope.hive, other);
        RegDeleteTreeW(scope.hive, kAddinKey);
        RegDeleteTreeW(HKEY_CURRENT_USER, settings);
        for (const wchar_t* made :
             {L"Software\\Microsoft\\Office\\Outlook\\Addins",
              L"Software\\Microsoft\\Office\\Outlook", L"Software\\Microsoft\\Office"}) {
            if (!before.count(hiveName + made)) RegDeleteKeyW(scope.hive, made);
        }
        if (!before.count(L"HKCU\\Software\\Brindlewood"))
            RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Brindlewood");
        EXPECT_EQ(differences(before, registryNow()), "");
    }
}

// The x86 and x64 builds share the type library's key (TypeLib is one view
// for both on Windows): unregistering this build leaves the other build's
// platform entry and the version it stands under, and the whole key goes
// only with the last build.
TEST(ComServer, UnregisteringOneBuildKeepsTheTypeLibraryOfTheOther) {
    const bool x64 = sizeof(void*) == 8;
    for (const Scope& scope : kScopes) {
        SCOPED_TRACE(scope.install);
        const Snapshot before = registryNow();
        const std::wstring version =
            L"Software\\Classes\\TypeLib\\" + guidText(LIBID_HBAddin) + L"\\1.0";
        const std::wstring own = version + (x64 ? L"\\0\\win64" : L"\\0\\win32");
        const std::wstring otherBuild = version + (x64 ? L"\\0\\win32" : L"\\0\\win64");
        const wchar_t otherDll[] = L"C:\\Other build\\HBAddin.dll";
        ASSERT_EQ(regsvr32(scope.install), 0u);
        ASSERT_EQ(RegSetKeyValueW(scope.hive, otherBuild.c_str(), nullptr, REG_SZ, otherDll,
                                  sizeof otherDll),
                  ERROR_SUCCESS);

        ASSERT_EQ(regsvr32(scope.uninstall), 0u);
        EXPECT_FALSE(keyExists(scope.hive, own));
        EXPECT_EQ(readText(scope.hive, otherBuild, nullptr), otherDll);
        EXPECT_EQ(readText(scope.hive, version, nullptr), L"Hourbook for Outlook v4");
        EXPECT_EQ(readText(scope.hive, version + L"\\FLAGS", nullptr), L"0");

        // Once the other build is gone too, nothing of the library is left.
        RegDeleteTreeW(scope.hive, otherBuild.c_str());
        ASSERT_EQ(regsvr32(scope.uninstall), 0u);
        EXPECT_EQ(differences(before, registryNow()), "");
    }
}

class RegisteredServer : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { ASSERT_EQ(regsvr32(L""), 0u); }
    static void TearDownTestSuite() { regsvr32(L"/u"); }
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr))); }
    void TearDown() override {
        CoFreeUnusedLibraries();
        OleUninitialize();
    }

    template <class I>
    ComPtr<I> create(const wchar_t* progId) {
        CLSID clsid{};
        EXPECT_EQ(CLSIDFromProgID(progId, &clsid), S_OK);
        ComPtr<I> object;
        EXPECT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(I),
                                   reinterpret_cast<void**>(object.put())),
                  S_OK);
        return object;
    }
};

// What the DLL loaded by COM answers through its entry point.
HRESULT canUnloadNow() {
    HMODULE dll = GetModuleHandleW(dllPath().c_str());
    if (!dll) return S_OK;  // not loaded (any more)
    auto fn = reinterpret_cast<HRESULT(WINAPI*)()>(
        reinterpret_cast<void*>(GetProcAddress(dll, "DllCanUnloadNow")));
    return fn ? fn() : E_FAIL;
}

TEST_F(RegisteredServer, ObjectsCreatedByProgIdAnswerEveryInterface) {
    {
        ComPtr<IUnknown> designer = create<IUnknown>(L"HBAddin.Connect");
        ASSERT_TRUE(designer);
        for (REFIID iid : {IID__IDTExtensibility2, IID_ICustomTaskPaneConsumer, IID_ICTPFactory,
                           IID_IRibbonExtensibility, IID_IHBAddin, IID_IDispatch}) {
            ComPtr<IUnknown> part;
            EXPECT_EQ(designer->QueryInterface(iid, reinterpret_cast<void**>(part.put())), S_OK)
                << std::hex << iid.Data1;
            // Every interface leads back to the same object.
            ComPtr<IUnknown> back = part.as<IUnknown>();
            EXPECT_EQ(back.get(), designer.get());
        }
        ComPtr<IUnknown> pane = create<IUnknown>(L"HBAddin.pane");
        ASSERT_TRUE(pane);
        EXPECT_TRUE(pane.as<IHBPane>());
        EXPECT_TRUE(pane.as<IDispatch>());
        EXPECT_FALSE(pane.as<IClassFactory>());

        // IDispatch comes from the type library: names and the type's name.
        ComPtr<IDispatch> dispatch = designer.as<IDispatch>();
        LPOLESTR names[] = {const_cast<LPOLESTR>(L"OnBeginShutdown")};
        DISPID id = 0;
        EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 1, 0, &id), S_OK);
        EXPECT_EQ(id, 5);
        EXPECT_EQ(canUnloadNow(), S_FALSE) << "objects are alive";
    }
    EXPECT_EQ(canUnloadNow(), S_OK);
}

// Office 2010 and later: the Explorer's ribbon XML through
// IRibbonExtensibility (none for other windows), and every callback the XML
// names found by name in the designer's IDispatch, with the published
// identifiers of the connection kept.
TEST_F(RegisteredServer, TheDesignerGivesTheRibbonAndAnswersItsCallbacksByName) {
    {
        ComPtr<IRibbonExtensibility> ribbon = create<IRibbonExtensibility>(L"HBAddin.Connect");
        ASSERT_TRUE(ribbon);
        struct Case {
            const wchar_t* ribbonId;
            bool group;
        };
        for (const Case c : {Case{L"Microsoft.Outlook.Explorer", true},
                             Case{L"Microsoft.Outlook.Mail.Read", false}}) {
            BSTR id = SysAllocString(c.ribbonId);
            BSTR xml = nullptr;
            EXPECT_EQ(ribbon->GetCustomUI(id, &xml), S_OK);
            const std::wstring text = xml ? std::wstring(xml, SysStringLen(xml)) : L"";
            EXPECT_EQ(text.find(L"idMso=\"TabCalendarHome\"") != std::wstring::npos, c.group);
            SysFreeString(xml);
            SysFreeString(id);
        }
        ComPtr<IDispatch> dispatch = ribbon.as<IDispatch>();
        ASSERT_TRUE(dispatch);
        for (const wchar_t* name :
             {L"onLoad", L"getVisible", L"getEnabled", L"getLabel", L"getScreentip", L"getImage",
              L"getItemCount", L"getItemLabel", L"getItemID", L"getSelectedItemIndex", L"onAction",
              L"OnConnection"}) {
            LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
            DISPID dispid = DISPID_UNKNOWN;
            EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 1, 0, &dispid), S_OK);
        }
    }
    EXPECT_EQ(canUnloadNow(), S_OK);
}

// An Outlook Application of the test's own: a Version and the Application
// event source, counting what subscribes to it.
struct FakeApplication {
    FakeApplication(bool withEvents) {
        server->member(L"Version", 1, [](WORD, std::vector<VARIANT*>&, VARIANT* r, EXCEPINFO*) {
            V_VT(r) = VT_BSTR;
            V_BSTR(r) = SysAllocString(L"12.0.0.6423");
            return S_OK;
        });
        if (withEvents)
            point =
                server->addConnectionPoint(GUID{0x0006304E, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}});
    }
    ComPtr<TestServer> server = TestServer::create();
    ComPtr<test::TestConnectionPoint> point;
};

TEST_F(RegisteredServer, DesignerConnectsThroughIDispatchAndLetsGoOfEverythingAtDisconnection) {
    FakeApplication app(true);
    const ULONG before = test::refCount(app.server.get());
    MessageBoxWatcher boxes;
    {
        ComPtr<IDispatch> designer = create<IDispatch>(L"HBAddin.Connect");
        // As a host that only knows IDispatch calls it: OnConnection(dispid 1).
        VARIANT args[4];
        for (VARIANT& a : args)
            VariantInit(&a);
        SAFEARRAY* custom = SafeArrayCreateVector(VT_VARIANT, 0, 0);
        V_VT(&args[0]) = VT_ARRAY | VT_VARIANT | VT_BYREF;
        V_ARRAYREF(&args[0]) = &custom;
        V_VT(&args[1]) = VT_DISPATCH;  // AddInInst
        V_DISPATCH(&args[1]) = nullptr;
        V_VT(&args[2]) = VT_I4;  // ext_cm_Startup
        V_I4(&args[2]) = 1;
        V_VT(&args[3]) = VT_DISPATCH;
        V_DISPATCH(&args[3]) = app.server.get();
        DISPPARAMS params{args, nullptr, 4, 0};
        EXPECT_EQ(
            designer->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr),
            S_OK);
        EXPECT_EQ(app.point->sinkCount(), 1u) << "the Application's events are heard";

        ComPtr<_IDTExtensibility2> ext = designer.as<_IDTExtensibility2>();
        EXPECT_EQ(ext->OnBeginShutdown(&custom), S_OK);
        EXPECT_EQ(ext->OnDisconnection(ext_dm_HostShutdown, &custom), S_OK);
        EXPECT_EQ(app.point->sinkCount(), 0u);
        SafeArrayDestroy(custom);
    }
    EXPECT_EQ(test::refCount(app.server.get()), before) << "nothing of the host is held";
    EXPECT_EQ(boxes.count(), 0);
    EXPECT_EQ(canUnloadNow(), S_OK);
}

TEST_F(RegisteredServer, AFailedConnectionReturnsSOkHoldsNothingAndReportsOncePerLoad) {
    MessageBoxWatcher boxes;
    if (!boxes.canShow()) GTEST_SKIP() << "no display for message boxes (run under Xvfb)";
    FakeApplication noEvents(false);  // no Application events: the connection fails
    ComPtr<IDispatch> keepLoaded = create<IDispatch>(L"HBAddin.pane");
    for (int designerNo = 0; designerNo < 2; ++designerNo) {
        ComPtr<_IDTExtensibility2> designer = create<_IDTExtensibility2>(L"HBAddin.Connect");
        SAFEARRAY* custom = SafeArrayCreateVector(VT_VARIANT, 0, 0);
        EXPECT_EQ(designer->OnConnection(noEvents.server.get(), ext_cm_Startup, nullptr, &custom),
                  S_OK);
        EXPECT_EQ(designer->OnDisconnection(ext_dm_UserClosed, &custom), S_OK);
        SafeArrayDestroy(custom);
        EXPECT_EQ(test::refCount(noEvents.server.get()), 1u);
    }
    EXPECT_EQ(boxes.count(), 1) << "a second designer of the same load shows no second dialog";
    keepLoaded.reset();
    EXPECT_EQ(canUnloadNow(), S_OK);
}

}  // namespace
}  // namespace hb
