// The registry store's layout, round trips and errors.
#include "SettingsTestSupport.h"
#include "settings/modRegistryEntry.h"

namespace hb::test {
namespace {

std::int32_t errorNumber(std::uint32_t n) {
    return static_cast<std::int32_t>(n);
}

struct Raised {
    std::int32_t number = 0;
    Str description;
};

template <class F>
std::optional<Raised> raisedBy(F&& f) {
    try {
        f();
    } catch (const AutomationError& e) {
        return Raised{e.number(), e.description()};
    }
    return std::nullopt;
}

TEST(RegistryStore, RegSzBelowTheFixedNameTrimmedAndRoundTripped) {
    Env e;
    // Never saved: the default, and nothing is created.
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"ReportChoice", u"NULL"), u"NULL");
    EXPECT_FALSE(e.platform.keyExists(u"Software\\Brindlewood"));
    EXPECT_EQ(e.platform.calls("regCreateKey"), 0);
    SaveSettingString(e.s, u"  Settings ", u"  ReportValue  ", u"C:\\Data\\");
    auto v = e.platform.value(kSettingsKey, u"ReportValue");
    ASSERT_TRUE(v);
    EXPECT_EQ(v->type, win::RegSz);
    EXPECT_EQ(v->text, u"C:\\Data\\");
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u" ReportValue ", u"d"), u"C:\\Data\\");
    // A missing value in the existing key: the default; an empty text is
    // stored and reads as empty.
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"B", u"dflt"), u"dflt");
    for (const Str& t : {Str(), Str(u"Acme;Globex;"), Str(u"Κωνσταντίνος Παπαδόπουλος"),
                         Str(u"Company:a;b;\r\nPerson:Ann;\r\n"), Str(5000, u'z'),
                         Str(u" leading and trailing ")}) {
        SaveSettingString(e.s, u"Settings", u"Text", t);
        EXPECT_EQ(GetSettingString(e.s, u"Settings", u"Text", u"DEFAULT"), t) << u8(t);
    }
    EXPECT_EQ(e.platform.openKeyCount(), 0u);
}

TEST(RegistryStore, BlankSectionOrKeyRaiseTheirErrors) {
    Env e;
    auto r = raisedBy([&] { SaveSettingString(e.s, u"Settings", u"   ", u"v"); });
    ASSERT_TRUE(r);
    EXPECT_EQ(r->number, errorNumber(0x800403EA));
    EXPECT_EQ(r->description, u"Key may not be empty");
    r = raisedBy([&] { GetSettingString(e.s, u"Settings", u"   ", u"d"); });
    ASSERT_TRUE(r);
    EXPECT_EQ(r->number, errorNumber(0x800403EA));
    EXPECT_EQ(r->description, u"Key may not be empty");

    r = raisedBy([&] { SaveSettingString(e.s, u" ", u"Key", u"v"); });
    ASSERT_TRUE(r);
    EXPECT_EQ(r->number, errorNumber(0x800403E9));
    EXPECT_EQ(r->description, u"Section may not be empty");
    r = raisedBy([&] { GetSettingString(e.s, u"", u"", u"d"); });
    ASSERT_TRUE(r);  // the section is checked before the key
    EXPECT_EQ(r->number, errorNumber(0x800403E9));
    EXPECT_EQ(e.platform.calls("regCreateKey") + e.platform.calls("regOpenKey"), 0);
    EXPECT_EQ(regerr::kAppNameEmpty, errorNumber(0x800403E8));
}

TEST(RegistryStore, DwordValueIsNotAString) {
    Env e;
    e.platform.setDword(kSettingsKey, u"PaneWidth", 185);
    auto r = raisedBy([&] { GetSettingString(e.s, u"Settings", u"PaneWidth", u"d"); });
    ASSERT_TRUE(r);
    EXPECT_EQ(r->description, u"Registry data not a string");
    EXPECT_EQ(r->number, errorNumber(0x80040000u + 2000u));
    EXPECT_EQ(e.platform.openKeyCount(), 0u);  // closed before raising
}

TEST(RegistryStore, FailingCreateSetAndOpenRaiseWithTheResultCode) {
    Env e;
    e.platform.failNext("regCreateKey", 5);
    auto r = raisedBy([&] { SaveSettingString(e.s, u"Settings", u"K", u"v"); });
    ASSERT_TRUE(r);
    EXPECT_EQ(r->number, errorNumber(0x80040000u + 2000u + 5u));
    EXPECT_EQ(r->description, u"Could not open/create registry section");

    e.platform.failNext("regSetString", 1013);
    r = raisedBy([&] { SaveSettingString(e.s, u"Settings", u"K", u"v"); });
    ASSERT_TRUE(r);
    EXPECT_EQ(r->number, errorNumber(0x80040000u + 2000u + 1013u));
    EXPECT_EQ(r->description, u"Could not set key value");
    EXPECT_EQ(e.platform.openKeyCount(), 0u);  // the key was closed in every case

    SaveSettingString(e.s, u"Settings", u"K", u"v");
    e.platform.failNext("regOpenKey", 5);
    r = raisedBy([&] { GetSettingString(e.s, u"Settings", u"K", u"d"); });
    ASSERT_TRUE(r);
    EXPECT_EQ(r->number, errorNumber(0x80040000u + 2000u + 5u));
    EXPECT_EQ(r->description, u"Could not open registry section");

    // Not found while opening is no error: the default.
    e.platform.failNext("regOpenKey", 2);
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"K", u"d"), u"d");
    // A failing query is a missing value: the default.
    e.platform.failNext("regQueryValue", 2);
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"K", u"d"), u"d");
}

TEST(RegistryStore, ReportedSizeDecidesTheLengthRead) {
    Env e;
    // The reported size is taken to count the terminating zero: a text
    // reported with it reads whole, one whose size leaves it out loses its
    // last character here (the Windows platform reports sizes in bytes of
    // UTF-16, so there such a text reads whole); size 0 reads as empty.
    e.platform.setString(kSettingsKey, u"Whole", u"abc", 4);
    e.platform.setString(kSettingsKey, u"Short", u"abc", 3);
    e.platform.setString(kSettingsKey, u"Zero", u"abc", 0);
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"Whole", u"d"), u"abc");
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"Short", u"d"), u"ab");
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"Zero", u"d"), u"");
}

}  // namespace
}  // namespace hb::test
