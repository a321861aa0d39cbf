// The Win32 Platform under Wine: registry round trips, folders and files,
// locale facts, the clock, starting programs. HBAddin.dll's own resources
// and version are hb_selfcheck's.
// The platform headers before windows.h: Platform.h's hb::win constants
// carry the names of Windows macros. Below, the Windows macros (same values)
// are used.
#include "common/AutomationError.h"
#include "common/Text.h"
#include "platform/win32/Win32Platform.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <optional>
#include <string>
#include <thread>

#include "ComTestSupport.h"

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

TEST_F(Win32RegistryTest, DwordsMissingValuesAndDeletion) {
    RegKey key = 123;
    EXPECT_EQ(p_.regOpenKey(path_ + u"\\Nowhere", key), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(key, RegKey{0});
    EXPECT_EQ(p_.regOpenKey(path_, key), ERROR_FILE_NOT_FOUND) << "the failed open made nothing";

    ASSERT_EQ(p_.regCreateKey(path_ + u"\\Sub\\Deeper", key), ERROR_SUCCESS);
    RegValue v;
    for (std::uint32_t value : {3u, 0xFFFFFFFFu}) {
        ASSERT_EQ(p_.regSetDword(key, u"LoadBehavior", value), ERROR_SUCCESS);
        ASSERT_EQ(p_.regQueryValue(key, u"LoadBehavior", v), ERROR_SUCCESS);
        EXPECT_EQ(v.type, REG_DWORD);
        EXPECT_EQ(v.sizeBytes, 4u);
        EXPECT_EQ(v.dword, value);
        EXPECT_EQ(v.text, u"");
    }
    ASSERT_EQ(p_.regDeleteValue(key, u"LoadBehavior"), ERROR_SUCCESS);
    EXPECT_EQ(p_.regQueryValue(key, u"LoadBehavior", v), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(p_.regDeleteValue(key, u"LoadBehavior"), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(p_.regSetString(key, u"b", u"2"), ERROR_SUCCESS);
    p_.regCloseKey(key);

    EXPECT_EQ(p_.regDeleteTree(path_), ERROR_SUCCESS);
    EXPECT_EQ(p_.regOpenKey(path_, key), ERROR_FILE_NOT_FOUND) << "the key itself is gone";
    EXPECT_EQ(p_.regDeleteTree(path_), ERROR_FILE_NOT_FOUND);
}

TEST(Win32Platform, DocumentsFolderAndFilesInAnsiWithCrLf) {
    Win32Platform p;
    const auto docs = p.specialFolder(win::CsidlPersonal);
    ASSERT_TRUE(docs.has_value());
    EXPECT_NE(docs->back(), u'\\');
    EXPECT_FALSE(p.specialFolder(0x7FFF).has_value()) << "an unknown folder id fails";
    const Str dir =
        *docs + u"\\HourbookWineTest-" + toStr(static_cast<long long>(GetCurrentProcessId()));
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

TEST(Win32Platform, EnvironmentExpansion) {
    Win32Platform p;
    ASSERT_TRUE(SetEnvironmentVariableW(L"HB_TEST_VAR", L"\u0391\u03B8\u03B7\u03BD\u03AC"));
    EXPECT_EQ(p.expandEnvironment(u"<%HB_TEST_VAR%>"), u"<\u0391\u03B8\u03B7\u03BD\u03AC>");
    EXPECT_EQ(p.expandEnvironment(u"%HB_NO_SUCH_VAR%"), u"%HB_NO_SUCH_VAR%");
    EXPECT_EQ(p.expandEnvironment(u""), u"");
}

// Against oleaut32's own conversion of the local time.
TEST(Win32Platform, ClockIsLocalTimeAsDateValue) {
    Win32Platform p;
    SYSTEMTIME st;
    GetLocalTime(&st);
    const double now = p.now();
    double expected = 0;
    ASSERT_TRUE(SystemTimeToVariantTime(&st, &expected));
    EXPECT_NEAR(now, expected, 5.0 / 86400.0);
    EXPECT_GE(p.now(), now);
}

TEST(Win32Platform, RunStartsAProgramWithoutWaitingInItsWorkingFolderAndRaisesForAMissingOne) {
    Win32Platform p;
    const auto e =
        test::raisedBy([&] { p.run(u"C:\\no\\such\\program.exe /x", SW_SHOWNORMAL, Str()); });
    ASSERT_TRUE(e);
    EXPECT_NE(e->number(), 0);
    EXPECT_FALSE(e->description().empty());

    // The started program writes the folder it runs in ("cd") to a marker
    // file: the given working folder, or the caller's current one.
    const Str dir = *p.specialFolder(win::CsidlPersonal);
    wchar_t current[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, current);
    for (const Str& folder : {dir, Str()}) {
        const Str marker = dir + u"\\hb-run-marker-" +
                           toStr(static_cast<long long>(GetCurrentProcessId())) + u".txt";
        DeleteFileW(wide(marker).c_str());
        p.run(u"cmd.exe /c cd>\"" + marker + u"\"", SW_SHOWMINIMIZED, folder);
        // Not waited for: poll for the file the started program writes.
        std::optional<Str> written;
        for (int i = 0; i < 200 && (!written || written->empty()); ++i) {
            Sleep(50);
            written = p.readTextFile(marker);
        }
        ASSERT_TRUE(written);
        const Str expected = folder.empty() ? Str(current, current + wcslen(current)) : folder;
        EXPECT_EQ(text::upper(text::trim(text::replace(*written, u"\r\n", u""))),
                  text::upper(expected));
        DeleteFileW(wide(marker).c_str());
    }
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

// The ribbon's button images are OLE pictures: Windows' own picture
// object answers for them (a bitmap of 32 x 32 pixels, in HIMETRIC at the
// screen's 96 pixels to the inch).
TEST(Win32Picture, TheButtonImagesAreBitmapPicturesOfWindows) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    Win32Platform p;
    for (const char16_t* name : {u"REPORT", u"SETTINGS", u"STATISTICS"}) {
        SCOPED_TRACE(toUtf8(name));
        const Variant picture = p.picture(name);
        ASSERT_TRUE(picture.isObject() && !picture.isNothing());
        EXPECT_EQ(picture.get(u"Type").toLong(), 1);  // PICTYPE_BITMAP
        EXPECT_NE(picture.get(u"Handle").toLong(), 0);
        EXPECT_EQ(picture.get(u"Width").toLong(), MulDiv(32, 2540, 96));
        EXPECT_EQ(picture.get(u"Height").toLong(), MulDiv(32, 2540, 96));
    }
    CoUninitialize();
}

// HBAddin.dll carries the three buttons' own images: 32 x 32 bitmaps with
// an alpha channel, clear around the drawing. A name it has no image for
// still gets a picture: the initial drawn on a square of its colour, 24 bits
// and opaque.
TEST(Win32Picture, TheDllServesItsOwnImagesAndDrawsAnInitialForOtherNames) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    HMODULE dll = LoadLibraryW(L"HBAddin.dll");
    ASSERT_NE(dll, nullptr) << "HBAddin.dll next to the test program";
    struct Case {
        const char16_t* name;
        bool own;  // a bitmap resource of the DLL
    };
    {
        Win32Platform p(dll);
        for (const Case& c : {Case{u"REPORT", true}, Case{u"SETTINGS", true},
                              Case{u"STATISTICS", true}, Case{u"NOSUCHIMAGE", false}}) {
            SCOPED_TRACE(toUtf8(c.name));
            EXPECT_EQ(FindResourceW(dll, wide(c.name).c_str(), RT_BITMAP) != nullptr, c.own);
            const Variant picture = p.picture(c.name);
            ASSERT_TRUE(picture.isObject() && !picture.isNothing());
            EXPECT_EQ(picture.get(u"Type").toLong(), 1);  // PICTYPE_BITMAP
            // OLE_HANDLE is 32 bits; a GDI handle widens with its sign.
            const auto handle = reinterpret_cast<HBITMAP>(
                static_cast<std::intptr_t>(picture.get(u"Handle").toLong()));
            BITMAP bm{};
            ASSERT_EQ(GetObjectW(handle, sizeof bm, &bm), static_cast<int>(sizeof bm));
            EXPECT_EQ(bm.bmWidth, 32);
            EXPECT_EQ(bm.bmHeight, 32);
            EXPECT_EQ(bm.bmBitsPixel, c.own ? 32 : 24);
            if (!c.own) continue;
            ASSERT_NE(bm.bmBits, nullptr) << "a DIB section, its pixels as stored";
            const auto* bgra = static_cast<const unsigned char*>(bm.bmBits);
            int clear = 0, opaque = 0;
            for (int i = 0; i < 32 * 32; ++i) {
                const unsigned char alpha = bgra[i * 4 + 3];
                clear += alpha == 0;
                opaque += alpha == 255;
                // Premultiplied: no colour brighter than its alpha.
                EXPECT_LE(std::max({bgra[i * 4], bgra[i * 4 + 1], bgra[i * 4 + 2]}), alpha) << i;
            }
            EXPECT_GT(clear, 100);
            EXPECT_GT(opaque, 100);
        }
    }
    FreeLibrary(dll);
    CoUninitialize();
}

// The searchable picker of a list too long for a ribbon drop-down: what is
// typed narrows the list (letter case aside), OK takes the first entry
// shown, Cancel nothing. The user is played by a thread of the test.
TEST(Win32Picker, TypingNarrowsTheListAndOkTakesTheFirstEntryShown) {
    if (GetEnvironmentVariableW(L"DISPLAY", nullptr, 0) == 0)
        GTEST_SKIP() << "no X display (the test command gives the Wine tests an Xvfb)";
    struct Case {
        const wchar_t* typed;
        int button;
        std::optional<Str> chosen;
    };
    const std::vector<Str> entries = {u"Acme", u"Globex", u"Initech", u"Umbrella Corp",
                                      u"Globe Trotters"};
    for (const Case& c :
         {Case{L"GLOB", IDOK, Str(u"Globex")}, Case{L"corp", IDOK, Str(u"Umbrella Corp")},
          Case{L"trot", IDCANCEL, std::nullopt}, Case{L"", IDOK, Str(u"Acme")}}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(c.typed)));
        std::thread user([&] {
            HWND window = nullptr;
            // The picker shows itself once it is set up.
            for (int i = 0; i < 500 && !(window && IsWindowVisible(window)); ++i) {
                window = FindWindowW(L"HourbookPicker", L"Company");
                if (!(window && IsWindowVisible(window))) Sleep(10);
            }
            if (!window) return;
            SendMessageW(GetDlgItem(window, 101), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(c.typed));
            PostMessageW(window, WM_COMMAND, MAKEWPARAM(c.button, BN_CLICKED), 0);
        });
        Win32Platform p;
        const std::optional<Str> chosen = p.pickFromList(u"Company", entries);
        user.join();
        EXPECT_EQ(chosen, c.chosen);
    }
}

}  // namespace
}  // namespace hb
