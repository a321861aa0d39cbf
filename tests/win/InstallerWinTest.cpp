// The MSI package of this build under Wine's msiexec, installed for the
// user without elevation: what it writes to the registry is what the DLL's
// own per-user registration (regsvr32 /n /i:user) writes, apart from the
// DLL's folder; the files are the build's; COM and the stand-in Outlook load
// the add-in from the installed folder; a newer package replaces an older
// one and an older one is refused over a newer; and uninstalling leaves the
// registry and the user's folders as they were, the user's settings
// included.
//
// Wine (8.0) does not merge the user's classes (HKCU\Software\Classes) into
// HKEY_CLASSES_ROOT as Windows does (Wine bug 14771): its COM sees the
// machine's classes only, so no per-user registration, the package's or
// regsvr32's, is found by COM under Wine. For the load checks the test
// stands in for Windows' merged view: it copies the package's class keys,
// values as the package wrote them, into the machine's classes while the
// checks run, and removes the copies before uninstalling.
#include <windows.h>
// windows.h first: the other Windows headers rely on its types.
#include <msi.h>
#include <shlobj.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ComTestSupport.h"
#include "HBAddin_h.h"

namespace hb {
namespace {

using test::differences;
using test::Snapshot;
using test::snapshot;

#define HB_WIDEN2(s) L##s
#define HB_WIDEN(s) HB_WIDEN2(s)

using test::exeFolder;

std::wstring localAppData() {
    wchar_t path[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path);
    return path;
}

std::wstring installFolder() {
    return localAppData() + L"\\Brindlewood\\Hourbook for Outlook";
}

#ifdef HB_MSI_FILE
const std::wstring kPackage = exeFolder() + L"\\" HB_WIDEN(HB_MSI_FILE);
const std::wstring kOlderPackage = exeFolder() + L"\\installer-test\\" HB_WIDEN(HB_MSI_OLDER_FILE);
constexpr wchar_t kUpgradeCode[] = L"{" HB_WIDEN(HB_MSI_UPGRADE_CODE) L"}";
#else
const std::wstring kPackage;
const std::wstring kOlderPackage;
constexpr wchar_t kUpgradeCode[] = L"";
#endif

constexpr wchar_t kSettingsKey[] = L"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

DWORD msiexec(const std::wstring& arguments) {
    return test::runProgram(L"msiexec.exe " + arguments + L" /qn", 300000);
}

// The keys the add-in's registration writes to, and the user's settings.
Snapshot registrationAreas() {
    Snapshot s;
    snapshot(HKEY_CURRENT_USER, L"Software\\Classes", s);
    snapshot(HKEY_CURRENT_USER, L"Software\\Microsoft\\Office", s);
    snapshot(HKEY_CURRENT_USER, L"Software\\Brindlewood", s);
    return s;
}

// The user's whole registry and the machine's software, without Windows
// Installer's own containers for per-user products, which stay behind empty
// once the last product is gone, as on Windows. Values below them are kept:
// a product's registration left there would show.
Snapshot wholeRegistry() {
    Snapshot s;
    snapshot(HKEY_CURRENT_USER, L"", s);
    snapshot(HKEY_LOCAL_MACHINE, L"Software", s);
    const std::wstring ignoredKeys[] = {
        L"HKCU\\Software\\Microsoft\\Installer",
        L"HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UpgradeCodes",
        L"HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData"};
    std::erase_if(s, [&](const auto& entry) {
        for (const std::wstring& key : ignoredKeys)
            if (entry.second == L"(key)" && entry.first.rfind(key, 0) == 0) return true;
        return false;
    });
    return s;
}

// The snapshot with every mention of one folder replaced by another.
Snapshot relocated(Snapshot s, const std::wstring& from, const std::wstring& to) {
    for (auto& [name, data] : s)
        for (std::size_t at = data.find(from); at != std::wstring::npos;
             at = data.find(from, at + to.size()))
            data.replace(at, from.size(), to);
    return s;
}

// The files and folders below a folder: relative name -> contents ("" and a
// trailing backslash for a folder).
std::map<std::wstring, std::string> files(const std::wstring& folder,
                                          const std::wstring& prefix = L"") {
    std::map<std::wstring, std::string> out;
    WIN32_FIND_DATAW found{};
    HANDLE find = FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (find == INVALID_HANDLE_VALUE) return out;
    do {
        const std::wstring name = found.cFileName;
        if (name == L"." || name == L"..") continue;
        if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            out[prefix + name + L"\\"] = "";
            out.merge(files(folder + L"\\" + name, prefix + name + L"\\"));
        } else {
            out[prefix + name] = test::readFile(folder + L"\\" + name);
        }
    } while (FindNextFileW(find, &found));
    FindClose(find);
    return out;
}

// The installed products of the add-in's upgrade code.
std::vector<std::wstring> installedProducts() {
    std::vector<std::wstring> codes;
    wchar_t code[39] = {};
    for (DWORD i = 0; MsiEnumRelatedProductsW(kUpgradeCode, 0, i, code) == ERROR_SUCCESS; ++i)
        codes.emplace_back(code);
    return codes;
}

std::wstring productVersion(const std::wstring& code) {
    wchar_t version[64] = {};
    DWORD length = 64;
    MsiGetProductInfoW(code.c_str(), INSTALLPROPERTY_VERSIONSTRING, version, &length);
    return version;
}

// The user's class keys of the add-in, copied into the machine's classes
// while this lives (see the top of the file).
class UserClassesSeenByCom {
  public:
    UserClassesSeenByCom() {
        for (const std::wstring& key : keys())
            test::copyKey(HKEY_CURRENT_USER, key, HKEY_LOCAL_MACHINE, key);
    }
    ~UserClassesSeenByCom() {
        for (const std::wstring& key : keys()) {
            RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
            RegDeleteKeyW(HKEY_LOCAL_MACHINE, key.c_str());
        }
    }
    UserClassesSeenByCom(const UserClassesSeenByCom&) = delete;
    UserClassesSeenByCom& operator=(const UserClassesSeenByCom&) = delete;

  private:
    static std::vector<std::wstring> keys() {
        const std::wstring classes = L"Software\\Classes\\";
        return {classes + L"CLSID\\" + test::guidText(CLSID_OHBAddinDesigner),
                classes + L"CLSID\\" + test::guidText(CLSID_Pane),
                classes + L"HBAddin.Connect",
                classes + L"HBAddin.pane",
                classes + L"TypeLib\\" + test::guidText(LIBID_HBAddin),
                classes + L"Interface\\" + test::guidText(IID_IHBPane)};
    }
};

// The user's part of the vendor's registry (the settings), put back as it
// was when this ends.
class KeptVendorKey {
  public:
    KeptVendorKey() { test::copyKey(HKEY_CURRENT_USER, kVendor, HKEY_CURRENT_USER, kSaved); }
    ~KeptVendorKey() {
        RegDeleteTreeW(HKEY_CURRENT_USER, kVendor);
        test::copyKey(HKEY_CURRENT_USER, kSaved, HKEY_CURRENT_USER, kVendor);
        RegDeleteTreeW(HKEY_CURRENT_USER, kSaved);
        RegDeleteKeyW(HKEY_CURRENT_USER, kSaved);
    }
    KeptVendorKey(const KeptVendorKey&) = delete;
    KeptVendorKey& operator=(const KeptVendorKey&) = delete;

  private:
    static constexpr wchar_t kVendor[] = L"Software\\Brindlewood";
    static constexpr wchar_t kSaved[] = L"Software\\HourbookInstallerTest.Saved";
};

// Whether COM, asked for the designer by its ProgID, loads the DLL at path,
// and lets go of it again.
bool comLoadsDesignerFrom(const std::wstring& path) {
    if (FAILED(OleInitialize(nullptr))) return false;
    bool loaded = false;
    CLSID clsid{};
    IUnknown* designer = nullptr;
    if (SUCCEEDED(CLSIDFromProgID(L"HBAddin.Connect", &clsid)) &&
        SUCCEEDED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                   reinterpret_cast<void**>(&designer)))) {
        loaded = GetModuleHandleW(path.c_str()) != nullptr;
        designer->Release();
    }
    // At once, not after COM's usual delay: the uninstall is to remove it.
    CoFreeUnusedLibrariesEx(0, 0);
    OleUninitialize();
    return loaded && GetModuleHandleW(path.c_str()) == nullptr;
}

class Installer : public ::testing::Test {
  protected:
    void SetUp() override {
        if (kPackage.empty()) GTEST_SKIP() << "no MSI package in this build (wixl not found)";
        ASSERT_EQ(GetFileAttributesW(installFolder().c_str()), INVALID_FILE_ATTRIBUTES)
            << "the add-in is installed already";
        // The user's settings, there before the add-in is installed.
        HKEY key = nullptr;
        settingsBefore_ =
            RegOpenKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, KEY_READ, &key) == ERROR_SUCCESS;
        if (settingsBefore_) RegCloseKey(key);
        ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kSettingsKey, L"InstallerTestRate", REG_SZ,
                                  L"87.5", 10),
                  ERROR_SUCCESS);
    }
    void TearDown() override {
        if (kPackage.empty()) return;
        RegDeleteKeyValueW(HKEY_CURRENT_USER, kSettingsKey, L"InstallerTestRate");
        if (!settingsBefore_) {
            for (const wchar_t* made :
                 {kSettingsKey, L"Software\\Brindlewood\\Hourbook for Outlook",
                  L"Software\\Brindlewood"})
                RegDeleteKeyW(HKEY_CURRENT_USER, made);
        }
    }

  private:
    bool settingsBefore_ = false;
};

TEST_F(Installer, InstallsWhatTheOwnRegistrationWritesAndUninstallsToTheStateBefore) {
    const Snapshot before = wholeRegistry();
    const auto vendorFolderBefore = files(localAppData() + L"\\Brindlewood");
    ASSERT_FALSE(before.count(L"HKLM\\Software\\Classes\\HBAddin.Connect"))
        << "registered for the machine: the load checks would not show the package's classes";

    // The DLL's own per-user registration from the build's folder.
    const std::wstring dll = L"\"" + exeFolder() + L"\\HBAddin.dll\"";
    ASSERT_EQ(test::runProgram(L"regsvr32.exe /s /n /i:user " + dll), 0u);
    const Snapshot selfRegistered = registrationAreas();
    ASSERT_EQ(test::runProgram(L"regsvr32.exe /s /u /n /i:user " + dll), 0u);
    ASSERT_EQ(differences(before, wholeRegistry()), "");

    ASSERT_EQ(msiexec(L"/i \"" + kPackage + L"\""), 0u);
    EXPECT_EQ(differences(relocated(selfRegistered, exeFolder() + L"\\", installFolder() + L"\\"),
                          registrationAreas()),
              "");
    std::map<std::wstring, std::string> expected = {
        {L"HBAddin.dll", test::readFile(exeFolder() + L"\\HBAddin.dll")},
        {L"HBPersonalSettingsSingle.exe",
         test::readFile(exeFolder() + L"\\HBPersonalSettingsSingle.exe")},
        {L"HBReporting.exe", test::readFile(exeFolder() + L"\\HBReporting.exe")},
        {L"Cubelens.exe", test::readFile(exeFolder() + L"\\Cubelens.exe")}};
    EXPECT_TRUE(files(installFolder()) == expected) << "the installed files are the build's";

    {
        const UserClassesSeenByCom seen;
        EXPECT_TRUE(comLoadsDesignerFrom(installFolder() + L"\\HBAddin.dll"));
        // The stand-in writes its scenario's settings over the user's.
        const KeptVendorKey settings;
        EXPECT_EQ(
            test::runProgram(
                L"\"" + exeFolder() + L"\\hb_standin.exe\" --version 12 --startup-only", 120000),
            0u)
            << "the stand-in Outlook loads and unloads the installed add-in cleanly";
    }

    ASSERT_EQ(msiexec(L"/x \"" + kPackage + L"\""), 0u);
    EXPECT_EQ(differences(before, wholeRegistry()), "");
    EXPECT_TRUE(files(localAppData() + L"\\Brindlewood") == vendorFolderBefore);
}

TEST_F(Installer, ANewerPackageReplacesAnOlderOneAndAnOlderOneIsRefusedOverANewer) {
    const Snapshot before = wholeRegistry();
    ASSERT_TRUE(installedProducts().empty());

    ASSERT_EQ(msiexec(L"/i \"" + kOlderPackage + L"\""), 0u);
    const std::vector<std::wstring> older = installedProducts();
    ASSERT_EQ(older.size(), 1u);
    EXPECT_EQ(productVersion(older[0]), L"1.0.0");

    ASSERT_EQ(msiexec(L"/i \"" + kPackage + L"\""), 0u);
    const std::vector<std::wstring> current = installedProducts();
    ASSERT_EQ(current.size(), 1u) << "the older package is gone";
    EXPECT_NE(current[0], older[0]);
    const std::wstring version = std::to_wstring(HB_VERSION_MAJOR) + L"." +
                                 std::to_wstring(HB_VERSION_MINOR) + L"." +
                                 std::to_wstring(HB_VERSION_PATCH);
    EXPECT_EQ(productVersion(current[0]), version);

    EXPECT_NE(msiexec(L"/i \"" + kOlderPackage + L"\""), 0u) << "a newer version is installed";
    EXPECT_EQ(installedProducts(), current);

    ASSERT_EQ(msiexec(L"/x \"" + kPackage + L"\""), 0u);
    EXPECT_TRUE(installedProducts().empty());
    EXPECT_EQ(differences(before, wholeRegistry()), "");
}

}  // namespace
}  // namespace hb
