// The registry store (SaveSettingString / GetSettingString)
// through the Win32 Platform under Wine, with Windows' own registry calls
// as the oracle: exact round trips of every text as REG_SZ, texts stored
// without their zero, REG_DWORD data refused, blank names refused.
// The platform headers before windows.h (see Win32PlatformTest.cpp).
#include "common/AutomationError.h"
#include "platform/win32/Win32Platform.h"
#include "settings/modRegistryEntry.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "ComTestSupport.h"

namespace hb {
namespace {

using test::raisedBy;

// A section of its own for each test below the add-in's key, removed
// afterwards.
class RegistryStoreWinTest : public ::testing::Test {
  protected:
    void SetUp() override {
        section_ = u"WineTest-" +
                   fromUtf8(::testing::UnitTest::GetInstance()->current_test_info()->name()) +
                   u"-" + toStr(static_cast<long long>(GetCurrentProcessId()));
        p_.regDeleteTree(keyPath());
    }
    void TearDown() override { p_.regDeleteTree(keyPath()); }
    Str keyPath() const { return u"Software\\Brindlewood\\Hourbook for Outlook\\" + section_; }
    std::wstring wideKeyPath() const {
        const Str k = keyPath();
        return std::wstring(k.begin(), k.end());
    }

    Win32Platform p_;
    Str section_;
};

TEST_F(RegistryStoreWinTest, TextsRoundTripExactlyAsRegSzBelowTheAddinKey) {
    const Str texts[] = {
        u"",  // reads as an empty text, not as the default
        u"C:\\Data\\",
        u"\u039A\u03C9\u03BD\u03C3\u03C4\u03B1\u03BD\u03C4\u03AF\u03BD\u03BF\u03C2 "
        u"\u03A0\u03B1\u03C0\u03B1\u03B4\u03CC\u03C0\u03BF\u03C5\u03BB\u03BF\u03C2",  // Greek
                                                                                      // customer
        u"P\u0159\u00EDli\u0161 \u017Elu\u0165ou\u010Dk\u00FD k\u016F\u0148",
        u"Company:Acme;Globex;\r\nPerson:Ann;\r\n",
        u"\u20AC 12,5; \U0001F600",
        Str(5000, u'x'),
    };
    int i = 0;
    for (const Str& text : texts) {
        const Str key = u"Key" + toStr(i++);
        // Blanks around section and name are dropped.
        SaveSettingString(p_, u"  " + section_ + u" ", u" " + key + u" ", text);
        EXPECT_EQ(GetSettingString(p_, section_, key, u"DEFAULT"), text) << toUtf8(key);
        std::wstring stored(8192, L'\0');
        DWORD size = static_cast<DWORD>(stored.size() * sizeof(wchar_t));
        ASSERT_EQ(RegGetValueW(HKEY_CURRENT_USER, wideKeyPath().c_str(),
                               std::wstring(key.begin(), key.end()).c_str(), RRF_RT_REG_SZ, nullptr,
                               stored.data(), &size),
                  ERROR_SUCCESS)
            << toUtf8(key) << ": a REG_SZ value";
        EXPECT_EQ(Str(reinterpret_cast<const char16_t*>(stored.c_str())), text) << toUtf8(key);
    }
}

TEST_F(RegistryStoreWinTest, MissingKeyOrValueGivesTheDefault) {
    EXPECT_EQ(GetSettingString(p_, section_, u"ReportChoice", u"NULL"), u"NULL");
    RegKey k = 0;
    EXPECT_EQ(p_.regOpenKey(keyPath(), k), ERROR_FILE_NOT_FOUND);  // nothing was created
    SaveSettingString(p_, section_, u"Other", u"x");
    EXPECT_EQ(GetSettingString(p_, section_, u"ReportChoice", u"NULL"), u"NULL");
}

TEST_F(RegistryStoreWinTest, TextWrittenWithoutItsZeroReadsWholeAndADwordIsNoText) {
    // Other programs may store a REG_SZ without the terminating zero in its
    // data size; the text still reads back whole, to its last character.
    for (const wchar_t* text : {L"A", L"Acme;Globex;"}) {
        const DWORD bytes = static_cast<DWORD>(lstrlenW(text) * sizeof(wchar_t));
        ASSERT_EQ(
            RegSetKeyValueW(HKEY_CURRENT_USER, wideKeyPath().c_str(), text, REG_SZ, text, bytes),
            ERROR_SUCCESS);
        const Str name(text, text + lstrlenW(text));
        EXPECT_EQ(GetSettingString(p_, section_, name, u"DEFAULT"), name);
    }
    const DWORD width = 185;
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, wideKeyPath().c_str(), L"PaneWidth", REG_DWORD,
                              &width, sizeof width),
              ERROR_SUCCESS);
    const auto e = raisedBy([&] { GetSettingString(p_, section_, u"PaneWidth", u"185"); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->description(), u"Registry data not a string");
    EXPECT_EQ(e->number(), static_cast<std::int32_t>(0x800407D0u));
}

TEST_F(RegistryStoreWinTest, BlankNamesAreRefused) {
    struct Case {
        bool save;
        Str section, key;
        std::uint32_t number;
        Str description;
    };
    const Case cases[] = {
        {true, section_, u"   ", 0x800403EAu, u"Key may not be empty"},
        {false, section_, u"", 0x800403EAu, u"Key may not be empty"},
        {true, u"  ", u"Key", 0x800403E9u, u"Section may not be empty"},
    };
    for (const Case& c : cases) {
        const auto e = raisedBy([&] {
            c.save ? SaveSettingString(p_, c.section, c.key, u"x")
                   : (void)GetSettingString(p_, c.section, c.key, u"x");
        });
        ASSERT_TRUE(e) << toUtf8(c.section) << "|" << toUtf8(c.key);
        EXPECT_EQ(e->number(), static_cast<std::int32_t>(c.number));
        EXPECT_EQ(e->description(), c.description);
    }
}

// The section's write time, as Windows keeps it for the key: unchanged by
// reading, changed by every value written, by this store or by any other
// program's own registry call, and nothing for a section not yet there.
TEST_F(RegistryStoreWinTest, TheSectionsWriteTimeChangesWithEveryWriteAndNoRead) {
    EXPECT_FALSE(GetSectionWriteTime(p_, section_).has_value());
    SaveSettingString(p_, section_, u"MetadataList", u"Company:Acme;\r\n");
    const auto first = GetSectionWriteTime(p_, section_);
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(GetSettingString(p_, section_, u"MetadataList", u""), u"Company:Acme;\r\n");
    EXPECT_EQ(GetSectionWriteTime(p_, section_), first);

    // The registry's times move on with the system clock: writes a clock
    // tick apart.
    Sleep(20);
    SaveSettingString(p_, section_, u"PaneDockPos", u"3");
    const auto second = GetSectionWriteTime(p_, section_);
    ASSERT_TRUE(second.has_value());
    EXPECT_GT(*second, *first);

    Sleep(20);
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, wideKeyPath().c_str(), 0, KEY_SET_VALUE, &key),
              ERROR_SUCCESS);
    const wchar_t text[] = L"Client:Dent;\r\n";
    ASSERT_EQ(RegSetValueExW(key, L"MetadataList", 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                             sizeof text),
              ERROR_SUCCESS);
    RegCloseKey(key);
    const auto third = GetSectionWriteTime(p_, section_);
    ASSERT_TRUE(third.has_value());
    EXPECT_GT(*third, *second);
}

}  // namespace
}  // namespace hb
