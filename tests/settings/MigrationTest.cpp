// The personal settings with their two stores: saving to the settings appointment and the
// registry, the first start with neither store, and the migration from the
// settings appointment on first use.
#include "SimSupport.h"
#include "settings/cPersonalSettings.h"
#include "settings/modFileHandling.h"
#include "settings/modSettingsAppointment.h"

namespace hb::test {
namespace {

const Str kProgramFolder = u"C:\\Program Files\\Hourbook\\";
const Str kDefaultReport = u"C:\\Users\\John\\Documents\\My Hourbooks\\";
const Str kDefaultDatabase = kDefaultReport + u"Hourbook3.mdb";

Str body(const Str& choice, const Str& value, const Str& rest = u"") {
    return choice + u"\r\n" + value + u"\r\n7.5\r\nTrue\r\nFalse\r\nTrue\r\n" + rest;
}

std::vector<Str> captions(const cPersonalSettings& p) {
    std::vector<Str> out;
    for (const auto& d : p.MetaDataLists)
        out.push_back(d->Caption);
    return out;
}

// ---- first start ------------------------------------------------------------

TEST(FirstStart, NeitherStoreCreatesTheAppointmentAndZeroesTheSevenProperties) {
    SimEnv e;
    cPersonalSettings p(e.s);
    EXPECT_TRUE(p.GetValuesFromSettings());
    EXPECT_TRUE(e.noReport());
    auto appt = e.settingsItem();
    ASSERT_TRUE(appt);  // created by the load
    EXPECT_EQ(p.intConvert24Hours, Variant(std::int16_t{0}));
    EXPECT_EQ(p.intRemoveLunchHours, Variant(std::int16_t{0}));
    EXPECT_FALSE(p.blnConvert24 || p.blnRemoveLunch || p.blnCreateLocalCube || p.blnStartGrid ||
                 p.blnWriteSubject);
    // Nothing from a body: the construction's report source stays.
    EXPECT_EQ(p.fncBuildBody(),
              u"2\r\n" + kProgramFolder + u"\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n");
    // Nothing is written to the registry until the first save.
    EXPECT_FALSE(e.platform.keyExists(u"Software\\Brindlewood"));
    EXPECT_EQ(e.platform.calls("regCreateKey"), 0);
}

TEST(FirstStart, FirstSaveWritesBothStores) {
    SimEnv e;
    cPersonalSettings p(e.s);
    p.GetValuesFromSettings();
    p.subPopulateMetadataList(u"Company:Acme;Globex;\r\nPerson:Ann;\r\nExtra:Travel;\r\n");
    p.SaveSettings();
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(e.settingsItemCount(), 1u);
    auto appt = e.settingsItem();
    const Str expected = u"2\r\n" + kProgramFolder +
                         u"\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCompany:Acme;Globex;\r\nPerson:"
                         u"Ann;\r\nExtra:Travel;\r\n";
    EXPECT_EQ(appt->body, expected);
    EXPECT_EQ(fncGetLongProperty(e.s, e.handle(appt), u"Settings"), expected);
    EXPECT_EQ(appt->saveCount, 2);  // created, then saved
    EXPECT_EQ(e.reg(u"ReportChoice"), Str(u"2"));
    EXPECT_EQ(e.reg(u"Convert24Hours"), Str(u"0"));  // as the first load left it
    EXPECT_EQ(e.reg(u"MetadataList"),
              Str(u"Company:Acme;Globex;\r\nPerson:Ann;\r\nExtra:Travel;\r\n"));
}

// ---- saving ------------------------------------------------------------------

TEST(SaveSettings, CategoriesCappedAt4000ButEverythingElseFull) {
    SimEnv e;
    cPersonalSettings p(e.s);
    Str list = u"Company:";
    for (int i = 0; i < 700; ++i)
        list += u"Customer" + toStr(1000 + i) + u";";
    list += u"\r\n";
    ASSERT_GT(list.size(), 4000u);
    p.subPopulateMetadataList(list);
    p.SaveSettings();
    EXPECT_TRUE(e.noReport());
    auto appt = e.settingsItem();
    ASSERT_TRUE(appt);
    EXPECT_EQ(appt->categories, list.substr(0, 4000));
    EXPECT_EQ(appt->body, p.fncBuildBody());
    EXPECT_EQ(fncGetLongProperty(e.s, e.handle(appt), u"Settings"), p.fncBuildBody());
    EXPECT_EQ(e.reg(u"MetadataList"), list);
}

TEST(SaveSettings, AppointmentFailuresDoNotStopTheRegistryPart) {
    // Save and Categories fail silently; a failing long property is
    // reported and the appointment is still saved.
    for (const bool longProperty : {false, true}) {
        SimEnv e;
        cPersonalSettings p(e.s);
        fncGetSettingsAppointment(e.s);  // exists already
        if (longProperty) {
            e.sc.instruments().failMember(u"Add", u"UserProperties");
        } else {
            e.sc.instruments().failMember(u"Save");
            e.sc.instruments().failMember(u"Categories");
        }
        p.SaveSettings();
        auto r = e.takeReport();
        EXPECT_EQ(r ? r->description : u"", longProperty ? u"Failed to save Settings" : u"");
        EXPECT_EQ(e.s.err.number, 0);
        EXPECT_EQ(e.platform.valueNames(kSettingsKey).size(), 17u);
        EXPECT_EQ(e.settingsItem()->saveCount, longProperty ? 2 : 1);
    }
}

TEST(SaveSettings, AppointmentRoundTripThroughMigration) {
    SimEnv e;
    cPersonalSettings p(e.s);
    p.lngReportChoice = 3;
    p.strReportValue = u"Provider=SQLOLEDB;Data Source=srv";
    p.curPersonalRate = Currency::fromUnits(95);
    p.blnFilterRecurring = true;
    p.subPopulateMetadataList(u"Company:Acme;Globex;\r\nPerson:Ann;\r\n");
    p.SaveSettings();
    // The registry is gone (another profile on the same mailbox): the load
    // comes from the appointment.
    e.platform.deleteKey(u"Software\\Brindlewood");
    cPersonalSettings q(e.s);
    q.GetValuesFromSettings();
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(q.fncBuildBody(), p.fncBuildBody());
    EXPECT_EQ(e.settingsItemCount(), 1u);
}

// ---- migration ---------------------------------------------------------------

TEST(Migration, RegistryWithReportChoiceNeverReadsTheAppointment) {
    SimEnv e;
    e.addSettingsAppointment(body(u"3", u"DSN=x"));
    e.platform.setString(kSettingsKey, u"ReportChoice", u"2");
    cPersonalSettings p(e.s);
    e.sc.instruments().resetCounts();
    p.GetValuesFromSettings();
    EXPECT_EQ(e.sc.instruments().callCount(), 0u);
    EXPECT_EQ(p.lngReportChoice, 2);
}

TEST(Migration, RegistrySettingsWithoutAnAppointmentGoIntoANewOneAtTheFirstSave) {
    SimEnv e;
    const std::pair<Str, Str> values[] = {{u"ReportChoice", u"3"},
                                          {u"ReportValue", u"DSN=x"},
                                          {u"PersonalRate", u"12.5"},
                                          {u"FilterEvents", u"True"},
                                          {u"FilterPrivate", u"False"},
                                          {u"FilterRecurring", u"True"},
                                          {u"MetadataList", u"Company:Acme;\r\nPerson:Ann;\r\n"}};
    for (const auto& [name, value] : values)
        e.platform.setString(kSettingsKey, name, value);
    cPersonalSettings p(e.s);
    e.sc.instruments().resetCounts();
    p.GetValuesFromSettings();
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(e.sc.instruments().callCount(), 0u);  // the load asks Outlook nothing
    EXPECT_EQ(e.settingsItemCount(), 0u);
    p.SaveSettings();
    EXPECT_TRUE(e.noReport());
    ASSERT_EQ(e.settingsItemCount(), 1u);
    auto appt = e.settingsItem();
    const Str expected =
        u"3\r\nDSN=x\r\n12.5\r\nTrue\r\nFalse\r\nTrue\r\nCompany:Acme;\r\nPerson:Ann;\r\n";
    EXPECT_EQ(appt->body, expected);
    EXPECT_EQ(fncGetLongProperty(e.s, e.handle(appt), u"Settings"), expected);
    EXPECT_EQ(appt->categories, u"Company:Acme;\r\nPerson:Ann;\r\n");
    for (const auto& [name, value] : values)
        EXPECT_EQ(e.reg(name), value) << u8(name);
}

TEST(Migration, ConnectionChoiceIsTakenWithTheUserProperties) {
    SimEnv e;
    auto appt =
        e.addSettingsAppointment(body(u"3", u"DSN=x", u"Company:Acme;\r\nPerson:Ann;Bo;\r\n"));
    appt->addUserProperty(u"blnConvert24", sim::ol::YesNo, Variant(true));
    appt->addUserProperty(u"intConvert24Hours", sim::ol::Number, Variant(7.5));
    appt->addUserProperty(u"intRemoveLunchHours", sim::ol::Text, Variant(u"lunch"));
    appt->addUserProperty(u"blnWriteSubject", sim::ol::YesNo, Variant(true));
    // A registry without "ReportChoice" but with other keys: those are not read.
    e.platform.setString(kSettingsKey, u"FilterPrivate", u"True");
    cPersonalSettings p(e.s);
    p.GetValuesFromSettings();
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(p.lngReportChoice, 3);
    EXPECT_EQ(p.strReportValue, u"DSN=x");
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(8));  // 7.5 through CInt
    EXPECT_TRUE(p.blnFilterEvents);
    EXPECT_FALSE(p.blnFilterPrivate);
    EXPECT_TRUE(p.blnFilterRecurring);
    EXPECT_EQ(captions(p), (std::vector<Str>{u"Company", u"Person"}));
    EXPECT_TRUE(p.blnConvert24);
    EXPECT_EQ(p.intConvert24Hours, Variant(7.5));
    EXPECT_EQ(p.intRemoveLunchHours, Variant(std::int16_t{0}));
    EXPECT_FALSE(p.blnRemoveLunch || p.blnCreateLocalCube || p.blnStartGrid);
    EXPECT_TRUE(p.blnWriteSubject);
    EXPECT_EQ(e.settingsItemCount(), 1u);
    EXPECT_FALSE(e.reg(u"ReportChoice"));
}

TEST(Migration, TheBodyDecidesWhatIsTakenTheUserPropertiesAreReadWithIt) {
    Str longList = u"Company:";
    for (int i = 0; i < 600; ++i)
        longList += u"C" + toStr(i) + u";";
    struct Case {
        const char* what;
        Str body;
        Str yesNo;  // a Yes/No user property set on the appointment
        std::int32_t choice;
        std::vector<std::int32_t> listSizes;
        Variant convertHours;
    } cases[] = {
        {"valid body, no user properties: zeroed",
         body(u"3", u"DSN=x"),
         u"",
         3,
         {},
         Variant(std::int16_t{0})},
        // Several 1000-character pieces.
        {"long body",
         body(u"3", u"DSN=x", longList + u"\r\nPerson:Ann;\r\n"),
         u"",
         3,
         {600, 1},
         Variant(std::int16_t{0})},
        // Nothing at all, the construction defaults stay.
        {"first line not a number",
         body(u"x", u"DSN=x", u"Company:Acme;\r\n"),
         u"blnConvert24",
         2,
         {},
         Variant(std::int16_t{8})},
        // Too short for the body, the user properties are still read.
        {"short body", u"3\r\nDSN=x\r\n", u"blnStartGrid", 2, {}, Variant(std::int16_t{0})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SimEnv e;
        auto appt = e.addSettingsAppointment(c.body);
        if (!c.yesNo.empty()) appt->addUserProperty(c.yesNo, sim::ol::YesNo, Variant(true));
        cPersonalSettings p(e.s);
        p.GetValuesFromSettings();
        EXPECT_EQ(p.lngReportChoice, c.choice);
        EXPECT_EQ(p.blnFilterEvents, c.choice == 3);
        std::vector<std::int32_t> sizes;
        for (const auto& d : p.MetaDataLists)
            sizes.push_back(d->MetaDic->Count());
        EXPECT_EQ(sizes, c.listSizes);
        EXPECT_EQ(p.intConvert24Hours, c.convertHours);
        EXPECT_FALSE(p.blnConvert24 || p.blnRemoveLunch || p.blnCreateLocalCube ||
                     p.blnWriteSubject);
        EXPECT_EQ(p.blnStartGrid, c.yesNo == u"blnStartGrid");
    }
}

// The Access database conditions (report choice 2).
struct AccessCase {
    const char* name;
    bool singleProgram;
    bool workgroupProgram;
    Str storedFolder;
    bool databaseExists;
    bool taken;
};

TEST(Migration, AccessDatabaseConditions) {
    const Str other = u"\\\\server\\share\\Hourbook\\";
    const std::vector<AccessCase> cases = {
        {"single, default database present", true, false, kDefaultReport, true, true},
        {"single, default in other case, two slashes", true, false,
         u"c:\\users\\john\\documents\\MY HOURBOOKS\\\\", true, true},
        {"single, default database missing", true, false, kDefaultReport, false, false},
        {"single, other database", true, false, other, true, false},
        {"single wins over workgroup", true, true, other, true, false},
        {"workgroup, other database present", false, true, other, true, true},
        {"workgroup, other database missing", false, true, other, false, false},
        {"workgroup, default database", false, true, kDefaultReport, true, false},
        {"no settings program", false, false, other, true, false},
    };
    for (const auto& c : cases) {
        SimEnv e;
        if (c.singleProgram)
            e.platform.setFile(kProgramFolder + u"HBPersonalSettingsSingle.exe", u"");
        if (c.workgroupProgram) e.platform.setFile(kProgramFolder + u"HBPersonalSettings.exe", u"");
        if (c.databaseExists) {
            e.platform.setFile(
                fncNoTrailingSlash(fncNoTrailingSlash(c.storedFolder)) + u"\\Hourbook3.mdb", u"");
        }
        auto appt = e.addSettingsAppointment(body(u"2", c.storedFolder, u"Company:Acme;\r\n"));
        appt->addUserProperty(u"blnCreateLocalCube", sim::ol::YesNo, Variant(true));
        cPersonalSettings p(e.s);
        p.GetValuesFromSettings();
        EXPECT_TRUE(e.noReport()) << c.name;
        if (c.taken) {
            EXPECT_EQ(p.strReportValue, c.storedFolder) << c.name;
            EXPECT_TRUE(p.blnFilterEvents) << c.name;
            EXPECT_EQ(captions(p), std::vector<Str>{u"Company"}) << c.name;
            EXPECT_TRUE(p.blnCreateLocalCube) << c.name;
        } else {
            EXPECT_EQ(p.strReportValue, kProgramFolder) << c.name;
            EXPECT_FALSE(p.blnFilterEvents) << c.name;
            EXPECT_TRUE(p.MetaDataLists.empty()) << c.name;
            EXPECT_FALSE(p.blnCreateLocalCube) << c.name;  // the user properties neither
            EXPECT_EQ(p.intConvert24Hours, Variant(std::int16_t{8})) << c.name;
        }
    }
}

}  // namespace
}  // namespace hb::test
