// The settings program against the add-in's own settings code over the
// memory platform: a save writes what cPersonalSettings::SaveSettings writes
// for the same values, a first start shows the construction defaults and
// writes nothing, and /export and /import carry the settings body, importing
// only a file that is valid throughout.
#include <gtest/gtest.h>

#include <map>

#include "apps/settings/SettingsStore.h"
#include "platform/memory/MemoryPlatform.h"
#include "settings/SimSupport.h"
#include "settings/cPersonalSettings.h"

namespace hb::settingsapp {
namespace {

constexpr char16_t kKey[] = u"Software\\Brindlewood\\Hourbook for Outlook\\Settings";

// The program on a computer where Outlook runs.
struct Env {
    MemoryPlatform platform;
    Session s{platform};
    sim::Scenario outlook;
    Env() {
        platform.setListSeparator(u",");
        platform.setDocumentsFolder(u"C:\\Users\\Ann\\Documents");
        platform.setModuleFolder(u"C:\\Program Files\\Hourbook");
        platform.setActiveObject(
            u"Outlook.Application",
            outlook.instruments().toAddin(Variant(ObjectPtr(outlook.outlook().application())),
                                          u"GetObject"));
    }
    std::map<Str, Str> registry() const {
        std::map<Str, Str> values;
        for (const Str& name : platform.valueNames(kKey))
            values[name] = platform.value(kKey, name)->text;
        return values;
    }
    SettingsEditor editor(Values v) {
        return SettingsEditor(std::move(v), platform.userLocale(), u",");
    }
};

Values sample() {
    Values v;
    v.reportChoice = 3;
    v.reportValue = u"Provider=SQLOLEDB;Data Source=srv";
    v.rate = u"87.25";
    v.filterPrivate = true;
    v.lists = {{u"Company", {u"Acme", u"Globex"}}, {u"Person", {u"Ann"}}, {u"Extra", {}}};
    v.convert24 = true;
    v.convert24Hours = u"7.5";
    v.removeLunchHours = u"1";
    v.startGrid = true;
    v.writeSubject = true;
    return v;
}

TEST(SettingsStoreTest, SaveWritesWhatTheAddinWritesForTheSameValues) {
    Env app;
    ASSERT_TRUE(saveValues(app.s, app.editor(sample())));

    // The add-in's own object, its fields set by hand.
    Env addin;
    cPersonalSettings settings(addin.s);
    settings.lngReportChoice = 3;
    settings.strReportValue = u"Provider=SQLOLEDB;Data Source=srv";
    settings.curPersonalRate = Currency{872500};
    settings.blnFilterPrivate = true;
    for (const auto& [name, entries] : std::vector<std::pair<Str, std::vector<Str>>>{
             {u"Company", {u"Acme", u"Globex"}}, {u"Person", {u"Ann"}}, {u"Extra", {}}}) {
        auto dic = std::make_shared<cMetaDictionary>(addin.s);
        dic->Caption = name;
        for (const Str& e : entries)
            dic->AddMeta(e, Str(), Currency{}, 0, Str());
        settings.MetaDataLists.push_back(dic);
    }
    settings.blnConvert24 = true;
    settings.intConvert24Hours = Variant(7.5);
    settings.intRemoveLunchHours = Variant(std::int16_t{1});
    settings.blnStartGrid = true;
    settings.blnWriteSubject = true;
    settings.SaveSettings();

    EXPECT_EQ(app.registry().size(), 17u);
    EXPECT_EQ(app.registry(), addin.registry());
    EXPECT_EQ(app.platform.value(kKey, u"MetadataList")->text,
              u"Company:Acme;Globex;\r\nPerson:Ann;\r\nExtra:\r\n");
}

TEST(SettingsStoreTest, FirstStartShowsConstructionDefaultsAndWritesNothing) {
    Env env;
    const Loaded loaded = loadValues(env.s);
    EXPECT_TRUE(loaded.complete);
    Values expected;
    expected.reportValue = u"C:\\Program Files\\Hourbook\\";
    EXPECT_EQ(loaded.values, expected);
    EXPECT_TRUE(env.registry().empty());
}

TEST(SettingsStoreTest, SavedValuesLoadBackAsTheyWereShown) {
    Env env;
    Values v = sample();
    v.reportChoice = 2;
    v.reportValue = u"D:\\Hourbook";  // the add-in keeps the folder with its backslash
    ASSERT_TRUE(saveValues(env.s, env.editor(v)));
    v.reportValue += u"\\";
    EXPECT_EQ(loadValues(env.s).values, v);
}

TEST(SettingsStoreTest, ExportThenImportGivesTheSameRegistry) {
    Env from;
    ASSERT_TRUE(saveValues(from.s, from.editor(sample())));
    std::string body;
    ASSERT_FALSE(exportBody(from.s, body));
    EXPECT_EQ(body,
              "3\r\nProvider=SQLOLEDB;Data Source=srv\r\n87.25\r\nFalse\r\nTrue\r\nFalse\r\n"
              "Company:Acme;Globex;\r\nPerson:Ann;\r\nExtra:\r\n");

    // Into an installation whose other settings are the same.
    Env to;
    Values other = sample();
    other.rate = u"1";
    other.lists.clear();
    ASSERT_TRUE(saveValues(to.s, to.editor(other)));
    const auto failure = importBody(to.s, body);
    EXPECT_FALSE(failure) << toUtf8(failure.value_or(Str()));
    EXPECT_EQ(to.registry(), from.registry());
}

TEST(SettingsStoreTest, ImportTakesByteOrderMarkAndBareLineFeeds) {
    Env env;
    ASSERT_FALSE(importBody(env.s,
                            "\xEF\xBB\xBF"
                            "2\nC:\\Data\\\n0\nFalse\nFalse\nTrue\nK\xC3\xBCnde:A;\n"));
    EXPECT_EQ(env.platform.value(kKey, u"MetadataList")->text, u"K\u00FCnde:A;\r\n");
    EXPECT_EQ(env.platform.value(kKey, u"FilterRecurring")->text, u"True");
}

TEST(SettingsStoreTest, ImportRefusesAFileThatIsNotValidThroughoutAndWritesNothing) {
    const std::string good = "2\r\nC:\\Data\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n";
    struct Case {
        const char* what;
        std::string file;
        Str says;
    };
    const Case cases[] = {
        {"empty file", "", u"six lines"},
        {"five lines", "2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\n", u"six lines"},
        {"no final line break", good + "Company:Acme;", u"last line"},
        {"not UTF-8", good + "Company:\xFF;\r\n", u"UTF-8"},
        {"report choice not a number", "x" + good.substr(1), u"Line 1"},
        {"report choice 4", "4" + good.substr(1), u"Line 1"},
        {"empty report value", "2\r\n\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n", u"Line 2"},
        {"rate not a number", "2\r\nC:\\\r\n12x\r\nFalse\r\nFalse\r\nFalse\r\nA:b;\r\n", u"Line 3"},
        {"filter not a boolean", "2\r\nC:\\\r\n0\r\nFalse\r\nmaybe\r\nFalse\r\n", u"Line 5"},
        {"list line without a colon", good + "Company\r\n", u"Line 7"},
        {"empty list name", good + ":Acme;\r\n", u"Line 7"},
        {"entry twice", good + "Company:Acme;x;\r\nPerson:Ann;ANN;\r\n", u"Line 8"},
        {"entry with the list separator", good + "Company:Acme,Globex;\r\n", u"Line 7"},
        {"list named twice", good + "Company:A;\r\ncompany:B;\r\n", u"Line 8"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Env env;
        ASSERT_TRUE(saveValues(env.s, env.editor(sample())));
        const auto before = env.registry();
        const auto failure = importBody(env.s, c.file);
        ASSERT_TRUE(failure.has_value());
        EXPECT_NE(failure->find(c.says), Str::npos) << toUtf8(*failure);
        EXPECT_EQ(env.registry(), before);
    }
}

TEST(SettingsStoreTest, ExportAndImportRefuseWhereTheStoreCannotBeCarried) {
    Env env;
    Values v = sample();
    ASSERT_TRUE(saveValues(env.s, env.editor(v)));
    // A connection text of two lines (written by another program).
    env.platform.setString(kKey, u"ReportValue", u"Provider=x\r\nData Source=y");
    std::string body;
    EXPECT_TRUE(exportBody(env.s, body).has_value());
    // A list text whose last line lacks its line break: the add-in would
    // drop that list, and a save from here would lose it.
    env.platform.setString(kKey, u"ReportValue", u"C:\\Data\\");
    env.platform.setString(kKey, u"MetadataList", u"Company:Acme;\r\nPerson:Ann;");
    EXPECT_FALSE(loadValues(env.s).complete);
    EXPECT_TRUE(exportBody(env.s, body).has_value());
    env.platform.setString(kKey, u"MetadataList", u"Company:Acme;\r\nPerson:Ann;\r\n");
    EXPECT_TRUE(loadValues(env.s).complete);
    EXPECT_FALSE(exportBody(env.s, body).has_value());
    // A stored rate the add-in cannot read: the import would replace the
    // settings after it with defaults.
    env.platform.setString(kKey, u"PersonalRate", u"lots");
    const auto before = env.registry();
    EXPECT_TRUE(importBody(env.s, "2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n").has_value());
    EXPECT_EQ(env.registry(), before);
}

// Before the registry was ever written the settings live only in the
// settings appointment: the program reads it through Outlook, and where it
// cannot, it saves nothing rather than empty lists.
struct FirstStart : hb::test::SimEnv {
    FirstStart() {
        s.ofCalendar = Variant();  // the program has no Outlook of its own
        platform.setListSeparator(u",");
    }
    void outlookRuns() {
        platform.setActiveObject(u"Outlook.Application", handle(sc.outlook().application()));
    }
    SettingsEditor editor(Values v) {
        return SettingsEditor(std::move(v), platform.userLocale(), u",");
    }
    std::size_t registryValues() { return platform.valueNames(kKey).size(); }
};

const Str kOldBody =
    u"2\r\nC:\\Elsewhere\\\r\n12\r\nTrue\r\nFalse\r\nFalse\r\n"
    u"Company:Acme;Globex;\r\nPerson:Ann;\r\n";

TEST(SettingsStoreTest, AFirstStartReadsTheListsKeptInOutlook) {
    struct Case {
        const char* what;
        bool running, creatable;
        Str body;
        std::vector<MetaList> lists;  // what the dialog shows
    };
    const std::vector<MetaList> old = {{u"Company", {u"Acme", u"Globex"}}, {u"Person", {u"Ann"}}};
    const Case cases[] = {
        // The database folder of another computer: the body is not taken
        // over as a whole, but its lists are shown with this computer's
        // report folder.
        {"Outlook running", true, false, kOldBody, old},
        {"Outlook started for it", false, true, kOldBody, old},
        // A first line that is no report choice: the same.
        {"a body without a report choice", true, false,
         u"x\r\ny\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCompany:Acme;Globex;\r\nPerson:Ann;\r\n", old},
        {"no settings appointment yet", true, false, Str(), {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FirstStart env;
        if (!c.body.empty()) env.addSettingsAppointment(c.body);
        if (c.running) env.outlookRuns();
        if (c.creatable)
            env.platform.setCreatableObject(u"Outlook.Application",
                                            env.handle(env.sc.outlook().application()));
        Loaded loaded = loadValues(env.s);
        EXPECT_FALSE(loaded.unread.has_value());
        EXPECT_EQ(loaded.values.lists, c.lists);
        EXPECT_EQ(loaded.values.reportValue, u"C:\\Program Files\\Hourbook\\");

        // Saved, the lists are in both stores.
        ASSERT_TRUE(saveValues(env.s, env.editor(loaded.values)));
        EXPECT_EQ(env.platform.value(kKey, u"MetadataList")->text,
                  c.lists.empty() ? Str() : Str(u"Company:Acme;Globex;\r\nPerson:Ann;\r\n"));
        ASSERT_TRUE(env.settingsItem());
        EXPECT_EQ(env.settingsItemCount(), 1u);
        EXPECT_NE(env.settingsItem()->body.find(u"C:\\Program Files\\Hourbook\\"), Str::npos);
    }
}

TEST(SettingsStoreTest, WithoutOutlookAFirstStartSavesNothing) {
    FirstStart env;
    auto item = env.addSettingsAppointment(kOldBody);
    const Loaded loaded = loadValues(env.s);
    ASSERT_TRUE(loaded.unread.has_value());
    EXPECT_NE(loaded.unread->find(u"Outlook"), Str::npos) << toUtf8(*loaded.unread);
    EXPECT_TRUE(loaded.values.lists.empty());

    // Neither OK nor an import writes anything.
    EXPECT_FALSE(saveValues(env.s, env.editor(loaded.values)));
    const auto failure =
        importBody(env.s, "2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCompany:X;\r\n");
    ASSERT_TRUE(failure.has_value());
    std::string body;
    EXPECT_TRUE(exportBody(env.s, body).has_value());
    EXPECT_EQ(env.registryValues(), 0u);
    EXPECT_EQ(item->body, kOldBody);

    // A settings appointment Outlook cannot look up is not replaced either,
    // nor is a second one made beside it.
    env.outlookRuns();
    env.sc.instruments().failMember(u"Item", u"Items");
    const Loaded blocked = loadValues(env.s);
    EXPECT_TRUE(blocked.unread.has_value());
    EXPECT_FALSE(saveValues(env.s, env.editor(blocked.values)));
    EXPECT_EQ(env.registryValues(), 0u);
    EXPECT_EQ(env.settingsItemCount(), 1u);
}

TEST(SettingsStoreTest, ASaveAlsoUpdatesTheSettingsAppointmentWhenOutlookRuns) {
    FirstStart env;
    env.outlookRuns();
    ASSERT_TRUE(saveValues(env.s, env.editor(sample())));
    ASSERT_TRUE(env.settingsItem());
    EXPECT_NE(env.settingsItem()->body.find(u"Company:Acme;Globex;\r\nPerson:Ann;\r\nExtra:\r\n"),
              Str::npos);

    // Outlook closed after the registry was written once: the registry
    // alone, which the add-in reads first.
    FirstStart closed;
    closed.platform.setString(kKey, u"ReportChoice", u"2");
    ASSERT_TRUE(saveValues(closed.s, closed.editor(sample())));
    EXPECT_GT(closed.registryValues(), 0u);
    EXPECT_FALSE(closed.settingsItem());
}

}  // namespace
}  // namespace hb::settingsapp
