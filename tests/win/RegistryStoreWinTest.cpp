// The registry store (SaveSettingString / GetSettingString)
// through the Win32 Platform under Wine: exact round trips of every text,
// texts stored without their zero, REG_DWORD data refused, blank names
// refused.
// The platform headers before windows.h (see Win32PlatformTest.cpp).
#include "common/AutomationError.h"
#include "platform/win32/Win32Platform.h"
#include "settings/modRegistryEntry.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <optional>

namespace hb {
namespace {

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

    template <class F>
    std::optional<AutomationError> raisedBy(F&& f) {
        try {
            f();
        } catch (const AutomationError& e) {
            return e;
        }
        return std::nullopt;
    }

    Win32Platform p_;
    Str section_;
};

TEST_F(RegistryStoreWinTest, TextsRoundTripExactly) {
    const Str texts[] = {
        u"",
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
        SaveSettingString(p_, section_, key, text);
        EXPECT_EQ(GetSettingString(p_, section_, key, u"DEFAULT"), text) << toUtf8(key);
    }
}

TEST_F(RegistryStoreWinTest, StoredAsRegSzBelowTheAddinKey) {
    const Str greek = u"\u0391\u03B8\u03B7\u03BD\u03AC";
    SaveSettingString(p_, u"  " + section_ + u" ", u" Customer ", greek);
    HKEY h = nullptr;
    const Str key = keyPath();
    const std::wstring path(key.begin(), key.end());
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &h), ERROR_SUCCESS);
    DWORD type = 0;
    wchar_t buffer[64] = {};
    DWORD size = sizeof buffer;
    EXPECT_EQ(
        RegQueryValueExW(h, L"Customer", nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size),
        ERROR_SUCCESS);
    RegCloseKey(h);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(Str(reinterpret_cast<const char16_t*>(buffer)), greek);
}

TEST_F(RegistryStoreWinTest, EmptyTextReadsAsEmptyNotDefault) {
    SaveSettingString(p_, section_, u"Empty", u"");
    EXPECT_EQ(GetSettingString(p_, section_, u"Empty", u"NULL"), u"");
}

TEST_F(RegistryStoreWinTest, MissingKeyOrValueGivesTheDefault) {
    EXPECT_EQ(GetSettingString(p_, section_, u"ReportChoice", u"NULL"), u"NULL");
    RegKey k = 0;
    EXPECT_EQ(p_.regOpenKey(keyPath(), k), ERROR_FILE_NOT_FOUND);  // nothing was created
    SaveSettingString(p_, section_, u"Other", u"x");
    EXPECT_EQ(GetSettingString(p_, section_, u"ReportChoice", u"NULL"), u"NULL");
}

TEST_F(RegistryStoreWinTest, TextWrittenWithoutItsZeroReadsWhole) {
    // Other programs may store a REG_SZ without the terminating zero in its
    // data size; the text still reads back whole, to its last character.
    RegKey key = 0;
    ASSERT_EQ(p_.regCreateKey(keyPath(), key), ERROR_SUCCESS);
    HKEY h = nullptr;
    const Str path = keyPath();
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, std::wstring(path.begin(), path.end()).c_str(), 0,
                            KEY_SET_VALUE, &h),
              ERROR_SUCCESS);
    for (const wchar_t* text : {L"A", L"Acme;Globex;"}) {
        const DWORD bytes = static_cast<DWORD>(lstrlenW(text) * sizeof(wchar_t));
        ASSERT_EQ(RegSetValueExW(h, text, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), bytes),
                  ERROR_SUCCESS);
        const Str name(text, text + lstrlenW(text));
        EXPECT_EQ(GetSettingString(p_, section_, name, u"DEFAULT"), name);
    }
    RegCloseKey(h);
    p_.regCloseKey(key);
}

TEST_F(RegistryStoreWinTest, DwordIsNotAString) {
    RegKey key = 0;
    ASSERT_EQ(p_.regCreateKey(keyPath(), key), ERROR_SUCCESS);
    ASSERT_EQ(p_.regSetDword(key, u"PaneWidth", 185), ERROR_SUCCESS);
    p_.regCloseKey(key);
    auto e = raisedBy([&] { GetSettingString(p_, section_, u"PaneWidth", u"185"); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->description(), u"Registry data not a string");
    EXPECT_EQ(e->number(), static_cast<std::int32_t>(0x800407D0u));
}

TEST_F(RegistryStoreWinTest, BlankNamesAreRefused) {
    auto e = raisedBy([&] { SaveSettingString(p_, section_, u"   ", u"x"); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->number(), static_cast<std::int32_t>(0x800403EAu));
    EXPECT_EQ(e->description(), u"Key may not be empty");
    e = raisedBy([&] { GetSettingString(p_, section_, u"", u"x"); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->number(), static_cast<std::int32_t>(0x800403EAu));
    e = raisedBy([&] { SaveSettingString(p_, u"  ", u"Key", u"x"); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->number(), static_cast<std::int32_t>(0x800403E9u));
    EXPECT_EQ(e->description(), u"Section may not be empty");
}

}  // namespace
}  // namespace hb
