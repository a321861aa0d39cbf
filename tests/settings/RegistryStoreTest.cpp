// The registry store's layout, round trips and errors.
#include <functional>

#include "SettingsTestSupport.h"
#include "settings/modRegistryEntry.h"

namespace hb::test {
namespace {

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

TEST(RegistryStore, ErrorsRaisedWithTheirNumbersAndTheKeyClosed) {
    constexpr std::uint32_t base = 0x80040000u + 2000u;
    struct Case {
        const char* what;
        std::function<void(Env&)> setUp;
        std::function<void(Session&)> call;
        std::uint32_t number;
        Str description;
    } cases[] = {
        {"blank key, save", [](Env&) {},
         [](Session& s) { SaveSettingString(s, u"Settings", u"   ", u"v"); }, 0x800403EA,
         u"Key may not be empty"},
        {"blank key, read", [](Env&) {},
         [](Session& s) { GetSettingString(s, u"Settings", u"   ", u"d"); }, 0x800403EA,
         u"Key may not be empty"},
        {"blank section, save", [](Env&) {},
         [](Session& s) { SaveSettingString(s, u" ", u"Key", u"v"); }, 0x800403E9,
         u"Section may not be empty"},
        // The section is checked before the key.
        {"blank section and key, read", [](Env&) {},
         [](Session& s) { GetSettingString(s, u"", u"", u"d"); }, 0x800403E9,
         u"Section may not be empty"},
        {"a DWORD is no string",
         [](Env& e) { e.platform.setDword(kSettingsKey, u"PaneWidth", 185); },
         [](Session& s) { GetSettingString(s, u"Settings", u"PaneWidth", u"d"); }, base,
         u"Registry data not a string"},
        {"create fails", [](Env& e) { e.platform.failNext("regCreateKey", 5); },
         [](Session& s) { SaveSettingString(s, u"Settings", u"K", u"v"); }, base + 5,
         u"Could not open/create registry section"},
        {"set fails", [](Env& e) { e.platform.failNext("regSetString", 1013); },
         [](Session& s) { SaveSettingString(s, u"Settings", u"K", u"v"); }, base + 1013,
         u"Could not set key value"},
        {"open fails",
         [](Env& e) {
             e.platform.setString(kSettingsKey, u"K", u"v");
             e.platform.failNext("regOpenKey", 5);
         },
         [](Session& s) { GetSettingString(s, u"Settings", u"K", u"d"); }, base + 5,
         u"Could not open registry section"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Env e;
        c.setUp(e);
        try {
            c.call(e.s);
            ADD_FAILURE() << "raised nothing";
        } catch (const AutomationError& err) {
            EXPECT_EQ(err.number(), static_cast<std::int32_t>(c.number));
            EXPECT_EQ(err.description(), c.description);
        }
        EXPECT_EQ(e.platform.openKeyCount(), 0u);
        if (c.number < base) {  // nothing opened for a blank name
            EXPECT_EQ(e.platform.calls("regCreateKey") + e.platform.calls("regOpenKey"), 0);
        }
    }
    EXPECT_EQ(regerr::kAppNameEmpty, static_cast<std::int32_t>(0x800403E8));
}

TEST(RegistryStore, NotFoundOnOpenOrAFailingQueryGiveTheDefault) {
    Env e;
    SaveSettingString(e.s, u"Settings", u"K", u"v");
    e.platform.failNext("regOpenKey", 2);
    EXPECT_EQ(GetSettingString(e.s, u"Settings", u"K", u"d"), u"d");
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
