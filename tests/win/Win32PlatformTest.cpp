// The Win32 Platform under Wine: registry round trips, folders and files,
// locale facts, Windows version, and HBAddin.dll's own resources and version.
// The platform headers before windows.h: Platform.h's hb::win constants
// carry the names of Windows macros. Below, the Windows macros (same values)
// are used.
#include "common/AutomationError.h"
#include "hb_build.h"
#include "platform/win32/Win32Platform.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace hb {
namespace {

std::wstring wide(const Str& s) {
    return std::wstring(s.begin(), s.end());
}

// A registry key of its own for each test, removed afterwards.
class Win32RegistryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        path_ = u"Software\\Brindlewood\\HourbookWineTests\\" +
                fromUtf8(::testing::UnitTest::GetInstance()->current_test_info()->name()) + u"-" +
                toStr(static_cast<long long>(GetCurrentProcessId()));
        p_.regDeleteTree(path_);
    }
    void TearDown() override { p_.regDeleteTree(path_); }

    Win32Platform p_;
    Str path_;
};

TEST_F(Win32RegistryTest, TextsRoundTripExactly) {
    RegKey key = 0;
    ASSERT_EQ(p_.regCreateKey(path_, key), ERROR_SUCCESS);
    ASSERT_NE(key, RegKey{0});
    const Str texts[] = {
        u"",
        u"plain ASCII",
        u"\u0391\u03B8\u03B7\u03BD\u03AC",                                     // Αθηνά
        u"P\u0159\u00EDli\u0161 \u017Elu\u0165ou\u010Dk\u00FD k\u016F\u0148",  // Příliš žluťoučký
                                                                               // kůň
        u"tab\tCR LF\r\nend",
        u"\u20AC 1.234,56; \U0001F600",  // euro sign and a surrogate pair
        Str(3000, u'x'),
    };
    int i = 0;
    for (const Str& text : texts) {
        const Str name = u"Value" + toStr(i++);
        ASSERT_EQ(p_.regSetString(key, name, text), ERROR_SUCCESS);
        RegValue v;
        ASSERT_EQ(p_.regQueryValue(key, name, v), ERROR_SUCCESS);
        EXPECT_EQ(v.type, REG_SZ);
        EXPECT_EQ(v.text, text) << toUtf8(name);
        EXPECT_EQ(v.sizeBytes, (text.size() + 1) * 2) << "the size counts the terminating zero";
    }
    // A non-ASCII value name too.
    ASSERT_EQ(p_.regSetString(key, u"\u0391\u03B8\u03B7\u03BD\u03AC", u"P\u0159\u00EDli\u0161"),
              ERROR_SUCCESS);
    p_.regCloseKey(key);

    // Read back through a key opened for reading.
    RegKey readKey = 0;
    ASSERT_EQ(p_.regOpenKey(path_, readKey), ERROR_SUCCESS);
    RegValue v;
    ASSERT_EQ(p_.regQueryValue(readKey, u"\u0391\u03B8\u03B7\u03BD\u03AC", v), ERROR_SUCCESS);
    EXPECT_EQ(v.text, u"P\u0159\u00EDli\u0161");
    ASSERT_EQ(p_.regQueryValue(readKey, u"Value0", v), ERROR_SUCCESS);
    EXPECT_EQ(v.type, REG_SZ);
    EXPECT_EQ(v.text, u"") << "the empty text stays an empty text";
    // A key opened for reading cannot be written.
    EXPECT_NE(p_.regSetString(readKey, u"x", u"y"), ERROR_SUCCESS);
    p_.regCloseKey(readKey);
}

TEST_F(Win32RegistryTest, DwordValuesReadAsType4) {
    RegKey key = 0;
    ASSERT_EQ(p_.regCreateKey(path_, key), ERROR_SUCCESS);
    ASSERT_EQ(p_.regSetDword(key, u"LoadBehavior", 3), ERROR_SUCCESS);
    ASSERT_EQ(p_.regSetDword(key, u"Big", 0xFFFFFFFFu), ERROR_SUCCESS);
    RegValue v;
    ASSERT_EQ(p_.regQueryValue(key, u"LoadBehavior", v), ERROR_SUCCESS);
    EXPECT_EQ(v.type, REG_DWORD);
    EXPECT_EQ(v.type, 4u);
    EXPECT_EQ(v.sizeBytes, 4u);
    EXPECT_EQ(v.dword, 3u);
    EXPECT_EQ(v.text, u"");
    ASSERT_EQ(p_.regQueryValue(key, u"Big", v), ERROR_SUCCESS);
    EXPECT_EQ(v.dword, 0xFFFFFFFFu);
    p_.regCloseKey(key);
}

TEST_F(Win32RegistryTest, MissingKeysAndValuesAreNotFound) {
    RegKey key = 123;
    EXPECT_EQ(p_.regOpenKey(path_ + u"\\Nowhere", key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(key, RegKey{0});
    EXPECT_EQ(p_.regOpenKey(path_, key), 2) << "nothing was created by the failed open";

    ASSERT_EQ(p_.regCreateKey(path_, key), ERROR_SUCCESS);
    RegValue v;
    EXPECT_EQ(p_.regQueryValue(key, u"Missing", v), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(p_.regDeleteValue(key, u"Missing"), ERROR_FILE_NOT_FOUND);
    p_.regCloseKey(key);
}

TEST_F(Win32RegistryTest, DeleteValueAndTree) {
    RegKey key = 0;
    ASSERT_EQ(p_.regCreateKey(path_ + u"\\Sub\\Deeper", key), ERROR_SUCCESS);
    ASSERT_EQ(p_.regSetString(key, u"a", u"1"), ERROR_SUCCESS);
    ASSERT_EQ(p_.regDeleteValue(key, u"a"), ERROR_SUCCESS);
    RegValue v;
    EXPECT_EQ(p_.regQueryValue(key, u"a", v), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(p_.regSetString(key, u"b", u"2"), ERROR_SUCCESS);
    p_.regCloseKey(key);

    EXPECT_EQ(p_.regDeleteTree(path_), ERROR_SUCCESS);
    EXPECT_EQ(p_.regOpenKey(path_, key), ERROR_FILE_NOT_FOUND) << "the key itself is gone";
    EXPECT_EQ(p_.regDeleteTree(path_), ERROR_FILE_NOT_FOUND);
}

TEST(Win32Platform, DocumentsFolder) {
    Win32Platform p;
    const auto docs = p.specialFolder(win::CsidlPersonal);
    ASSERT_TRUE(docs.has_value());
    EXPECT_FALSE(docs->empty());
    EXPECT_NE(docs->back(), u'\\');
    EXPECT_TRUE(p.folderExists(*docs)) << toUtf8(*docs);
    EXPECT_FALSE(p.specialFolder(0x7FFF).has_value()) << "an unknown folder id fails";
}

TEST(Win32Platform, FilesInAnsiWithCrLf) {
    Win32Platform p;
    const Str dir = *p.specialFolder(win::CsidlPersonal) + u"\\HourbookWineTest-" +
                    toStr(static_cast<long long>(GetCurrentProcessId()));
    const Str file = dir + u"\\log.txt";
    EXPECT_FALSE(p.folderExists(dir));
    ASSERT_TRUE(p.createFolder(dir));
    EXPECT_TRUE(p.folderExists(dir));
    EXPECT_FALSE(p.fileExists(dir)) << "a folder is no file";
    EXPECT_FALSE(p.createFolder(dir)) << "it exists already";
    EXPECT_FALSE(p.fileExists(file));
    EXPECT_FALSE(p.readTextFile(file).has_value());

    ASSERT_TRUE(p.appendLine(file, u"first line"));
    ASSERT_TRUE(p.appendLine(file, u""));
    ASSERT_TRUE(p.appendLine(file, u"caf\u00E9 50%"));
    EXPECT_TRUE(p.fileExists(file));
    EXPECT_FALSE(p.folderExists(file));
    const auto text = p.readTextFile(file);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(*text, u"first line\r\n\r\ncaf\u00E9 50%\r\n");

    // The bytes on disk are in the ANSI code page (é is one byte in 1252).
    HANDLE h = CreateFileW(wide(file).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetFileSize(h, nullptr), 12u + 2u + 8u + 2u);
    CloseHandle(h);

    DeleteFileW(wide(file).c_str());
    RemoveDirectoryW(wide(dir).c_str());
    EXPECT_FALSE(p.folderExists(dir));
}

TEST(Win32Platform, LocaleFacts) {
    Win32Platform p;
    Str sep;
    const auto n = p.localeInfo(LOCALE_USER_DEFAULT, LOCALE_SLIST, sep);
    EXPECT_GT(n, 1);
    EXPECT_EQ(static_cast<std::size_t>(n), sep.size() + 1) << "the length counts the terminator";
    EXPECT_FALSE(sep.empty());
    EXPECT_EQ(sep, u",") << "Wine's default locale is English (United States)";

    Str none;
    EXPECT_EQ(p.localeInfo(LOCALE_USER_DEFAULT, 0xFFFF, none), 0);

    EXPECT_EQ(p.systemDefaultLcid(), 0x409u);

    const Locale loc = p.userLocale();
    EXPECT_EQ(loc.decimalSeparator, u".");
    EXPECT_EQ(loc.thousandSeparator, u",");
    EXPECT_EQ(loc.listSeparator, sep);
    EXPECT_EQ(loc.shortDate, u"M/d/yyyy");
    EXPECT_EQ(loc.longTime, u"h:mm:ss tt");
    EXPECT_EQ(loc.amDesignator, u"AM");
    EXPECT_EQ(loc.pmDesignator, u"PM");
}

TEST(Win32Platform, WindowsVersion) {
    Win32Platform p;
    const WindowsVersion v = p.windowsVersion();
    EXPECT_TRUE(v.ok);
    EXPECT_EQ(v.platformId, 2u) << "VER_PLATFORM_WIN32_NT";
    EXPECT_GE(v.major, 5u);
}

TEST(Win32Platform, EnvironmentExpansion) {
    Win32Platform p;
    ASSERT_TRUE(SetEnvironmentVariableW(L"HB_TEST_VAR", L"\u0391\u03B8\u03B7\u03BD\u03AC"));
    EXPECT_EQ(p.expandEnvironment(u"<%HB_TEST_VAR%>"), u"<\u0391\u03B8\u03B7\u03BD\u03AC>");
    EXPECT_EQ(p.expandEnvironment(u"%HB_NO_SUCH_VAR%"), u"%HB_NO_SUCH_VAR%");
    EXPECT_EQ(p.expandEnvironment(u""), u"");
    EXPECT_FALSE(p.expandEnvironment(u"%WINDIR%").empty());
    EXPECT_NE(p.expandEnvironment(u"%WINDIR%"), u"%WINDIR%");
}

// Days since 1 March of year 0 in the proleptic Gregorian calendar.
long daysFromCivil(int y, int m, int d) {
    y -= m <= 2;
    const long era = (y >= 0 ? y : y - 399) / 400;
    const long yoe = y - era * 400;
    const long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe;
}

TEST(Win32Platform, ClockIsLocalTimeAsDateValue) {
    Win32Platform p;
    SYSTEMTIME st;
    GetLocalTime(&st);
    const double now = p.now();
    const double expected = static_cast<double>(daysFromCivil(st.wYear, st.wMonth, st.wDay) -
                                                daysFromCivil(1899, 12, 30)) +
                            (st.wHour * 3600.0 + st.wMinute * 60.0 + st.wSecond) / 86400.0;
    EXPECT_NEAR(now, expected, 5.0 / 86400.0);
    EXPECT_GT(now, 36526.0) << "after 1 January 2000";
    EXPECT_GE(p.now(), now);
}

TEST(Win32Platform, RunRaisesForAMissingProgram) {
    Win32Platform p;
    try {
        p.run(u"C:\\no\\such\\program.exe /x", SW_SHOWNORMAL);
        FAIL() << "no error raised";
    } catch (const AutomationError& e) {
        EXPECT_NE(e.number(), 0);
        EXPECT_FALSE(e.description().empty());
    }
}

TEST(Win32Platform, RunStartsAProgramWithoutWaiting) {
    Win32Platform p;
    const Str dir = *p.specialFolder(win::CsidlPersonal);
    const Str marker =
        dir + u"\\hb-run-marker-" + toStr(static_cast<long long>(GetCurrentProcessId())) + u".txt";
    DeleteFileW(wide(marker).c_str());
    p.run(u"cmd.exe /c echo started>\"" + marker + u"\"", SW_SHOWMINIMIZED);
    // Not waited for: poll for the file the started program writes.
    bool seen = false;
    for (int i = 0; i < 200 && !seen; ++i) {
        seen = p.fileExists(marker);
        if (!seen) Sleep(50);
    }
    EXPECT_TRUE(seen);
    Sleep(100);
    DeleteFileW(wide(marker).c_str());
}

// Objects by ProgID are covered with the dispatch client's tests.
TEST(Win32Platform, ScriptingComponentsAreBuiltIn) {
    Win32Platform p;
    EXPECT_TRUE(p.createComponent(ScriptComponent::FileSystemObject));
    EXPECT_TRUE(p.createComponent(ScriptComponent::Dictionary));
    EXPECT_TRUE(p.createComponent(ScriptComponent::Shell));
}

TEST(Win32Platform, ModuleFolderOfTheProgramItself) {
    Win32Platform p;  // linked into this program: its own module
    wchar_t path[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameW(nullptr, path, MAX_PATH), 0u);
    std::wstring dir(path);
    dir.resize(dir.find_last_of(L'\\'));
    EXPECT_EQ(wide(p.moduleFolder()), dir);
    EXPECT_TRUE(p.fileExists(p.moduleFolder() + u"\\HBAddin.dll"));
}

// HBAddin.dll, loaded from this program's folder.
class AddinDllTest : public ::testing::Test {
  protected:
    void SetUp() override {
        module_ = LoadLibraryW(L"HBAddin.dll");
        ASSERT_NE(module_, nullptr) << "HBAddin.dll next to the test program";
    }
    void TearDown() override {
        if (module_ != nullptr) FreeLibrary(module_);
    }
    HMODULE module_ = nullptr;
};

TEST_F(AddinDllTest, VersionInfoReads4_0_Patch) {
    Win32Platform p(module_);
    const ModuleVersion v = p.addinVersion();
    EXPECT_EQ(v.major, 4);
    EXPECT_EQ(v.minor, 0);
    EXPECT_EQ(v.revision, HB_VERSION_PATCH);

    // The product name in the string table.
    const std::wstring file = wide(p.modulePath());
    DWORD handle = 0;
    const DWORD size = GetFileVersionInfoSizeW(file.c_str(), &handle);
    ASSERT_GT(size, 0u);
    std::string data(size, '\0');
    ASSERT_TRUE(GetFileVersionInfoW(file.c_str(), 0, size, data.data()));
    void* text = nullptr;
    UINT length = 0;
    ASSERT_TRUE(
        VerQueryValueW(data.data(), L"\\StringFileInfo\\040904B0\\ProductName", &text, &length));
    EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(text)), L"Hourbook for Outlook v4");
}

TEST_F(AddinDllTest, LanguageResourceIsUtf16WithBom) {
    Win32Platform p(module_);
    const auto bytes = p.resource(u"CUSTOM", u"LANGUAGE");
    ASSERT_TRUE(bytes.has_value());
    ASSERT_GE(bytes->size(), 6u);
    EXPECT_EQ((*bytes)[0], 0xFF);
    EXPECT_EQ((*bytes)[1], 0xFE);
    EXPECT_EQ(bytes->size() % 2, 0u);
    // Ends with CR LF.
    const auto n = bytes->size();
    EXPECT_EQ((*bytes)[n - 4], '\r');
    EXPECT_EQ((*bytes)[n - 3], 0);
    EXPECT_EQ((*bytes)[n - 2], '\n');
    EXPECT_EQ((*bytes)[n - 1], 0);
    // Letter case of type and name does not matter to the resource loader.
    EXPECT_TRUE(p.resource(u"custom", u"language").has_value());
    EXPECT_FALSE(p.resource(u"CUSTOM", u"NOSUCH").has_value());
}

TEST_F(AddinDllTest, ModuleFolderAndEntryPoints) {
    Win32Platform p(module_);
    EXPECT_TRUE(p.fileExists(p.moduleFolder() + u"\\HBAddin.dll"));
    for (const char* name :
         {"DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer", "DllUnregisterServer"})
        EXPECT_NE(GetProcAddress(module_, name), nullptr) << name;
    using CanUnload = HRESULT(__stdcall*)();
    auto canUnload = reinterpret_cast<CanUnload>(
        reinterpret_cast<void*>(GetProcAddress(module_, "DllCanUnloadNow")));
    ASSERT_NE(canUnload, nullptr);
    EXPECT_EQ(canUnload(), S_OK);
}

}  // namespace
}  // namespace hb
