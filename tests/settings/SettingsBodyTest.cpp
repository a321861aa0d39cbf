// Construction, the settings body and metadata list texts, FromString, and
// the registry store path of the personal settings.
#include "SettingsTestSupport.h"
#include "settings/cPersonalSettings.h"

namespace hb::test {
namespace {

const Str kAddinFolder = u"C:\\Program Files\\Hourbook\\";
const Str kReportFolder = u"C:\\Users\\John\\Documents\\My Hourbooks";

struct ListView {
    Str caption;
    std::vector<Str> items;
    bool operator==(const ListView&) const = default;
};
using Lists = std::vector<ListView>;
Lists lists(const cPersonalSettings& p) {
    Lists out;
    for (const auto& d : p.MetaDataLists)
        out.push_back({d->Caption, d->MetaDic->Keys()});
    return out;
}
void PrintTo(const ListView& l, std::ostream* os) {
    *os << u8(l.caption) << ":";
    for (const auto& i : l.items)
        *os << u8(i) << ";";
}

std::shared_ptr<cMetaDictionary> makeList(Session& s, const Str& caption,
                                          const std::vector<Str>& items) {
    auto d = std::make_shared<cMetaDictionary>(s);
    d->Caption = caption;
    for (const Str& i : items)
        d->AddMeta(i, u"cat", Currency::fromUnits(5), 1, u"super");
    return d;
}

Str body(const Str& head, const Str& lists = u"") {
    return head + u"\r\n" + lists;
}

Locale czech() {
    Locale cs = Locale::enUS();
    cs.decimalSeparator = u",";
    cs.thousandSeparator = u"\u00a0";
    cs.listSeparator = u";";
    return cs;
}

// ---- construction ---------------------------------------------------------

TEST(PersonalSettingsConstruction, DefaultsWithoutConnectionFile) {
    Env e;
    cPersonalSettings p(e.s);
    EXPECT_TRUE(e.noReport());
    EXPECT_TRUE(e.s.blnFSAvailable);
    // Choice, value, rate and filters as the body shows them; no lists.
    EXPECT_EQ(p.fncBuildBody(), u"2\r\n" + kAddinFolder + u"\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n");
    EXPECT_EQ(p.fncMetadataList(), Variant(Str()));
    EXPECT_FALSE(p.blnConvert24 || p.blnRemoveLunch || p.blnCreateLocalCube || p.blnStartGrid ||
                 p.blnWriteSubject);
    EXPECT_EQ(p.intConvert24Hours, Variant(std::int16_t{8}));
    EXPECT_EQ(p.intRemoveLunchHours, Variant(0.75));
    EXPECT_EQ((std::vector<int>{p.intPaneWidth, p.intPaneHeight, p.intPaneDockPos}),
              (std::vector<int>{185, 600, 2}));
    // The local cube folder was made on the way; nothing is written anywhere.
    EXPECT_TRUE(e.platform.folderExists(u"C:\\Users\\John\\Documents\\OLAP Cubes"));
    EXPECT_EQ(e.s.diag.strLastTrace, u"Assuming Access database");
    EXPECT_FALSE(e.platform.keyExists(u"Software\\Brindlewood"));
}

TEST(PersonalSettingsConstruction, ReportSourceFromThePathAndConnectionFiles) {
    const Str connection = u"Provider=SQLOLEDB;Data Source=srv;\r\nInitial Catalog=HB";
    struct Case {
        std::vector<std::pair<Str, Str>> files;
        std::int32_t choice;
        Str value;
    } cases[] = {
        {{{kReportFolder + u"\\ReportPath.txt", u"\\\\server\\share\\Hourbook\\\r\n"}},
         2,
         u"\\\\server\\share\\Hourbook\\"},
        // Line breaks anywhere in the path file are dropped; one "\" is added.
        {{{kReportFolder + u"\\ReportPath.txt", u"D:\\Re\r\nports"}}, 2, u"D:\\Reports\\"},
        // The connection text is taken whole, as it is.
        {{{kReportFolder + u"\\ReportPath.txt", u"D:\\Reports\\"},
          {u"D:\\Reports\\HourbookConnection.txt", connection}},
         3,
         connection},
        {{{kAddinFolder + u"HourbookConnection.txt", u"DSN=x"}}, 3, u"DSN=x"},
    };
    for (const Case& c : cases) {
        Env e;
        for (const auto& [path, content] : c.files)
            e.platform.setFile(path, content);
        cPersonalSettings p(e.s);
        EXPECT_EQ(p.lngReportChoice, c.choice) << u8(c.value);
        EXPECT_EQ(p.strReportValue, c.value);
        EXPECT_EQ(p.intPaneWidth, 185);
    }
}

TEST(PersonalSettingsConstruction, FailureIsReportedAndLeavesFieldsAsFarAsSet) {
    Env e;
    e.platform.failComponent(ScriptComponent::FileSystemObject);
    cPersonalSettings p(e.s);
    // The first report (one dialog per session) is subSetupFS's.
    auto first = e.takeReport();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->procedure, u"subSetupFS");
    // The file-system object is missing: the report path cannot be read.
    EXPECT_EQ(p.lngReportChoice, 0);
    EXPECT_EQ(p.intPaneWidth, 0);
    EXPECT_EQ(p.intConvert24Hours, Variant());
}

// ---- settings body ------------------------------------------------------------

TEST(SettingsBody, LinesInOrderAndNamelessListsLeftOut) {
    Env e;
    cPersonalSettings p(e.s);
    p.lngReportChoice = 4;
    p.strReportValue = u"C:\\Data\\";
    p.curPersonalRate = Currency{125000};
    p.blnFilterPrivate = true;
    p.MetaDataLists.push_back(makeList(e.s, u"", {u"Hidden"}));
    p.MetaDataLists.push_back(makeList(e.s, u"Company", {u"Acme", u"Globex"}));
    p.MetaDataLists.push_back(makeList(e.s, u"Extra", {}));
    p.MetaDataLists.push_back(makeList(e.s, u"Person", {u"Ann", u"Bo:b"}));
    const Str list = u"Company:Acme;Globex;\r\nExtra:\r\nPerson:Ann;Bo:b;\r\n";
    EXPECT_EQ(p.fncMetadataList(), Variant(list));
    // Choice, value, rate, then the filters events, private, recurring.
    EXPECT_EQ(p.fncBuildBody(), u"4\r\nC:\\Data\\\r\n12.5\r\nFalse\r\nTrue\r\nFalse\r\n" + list);

    auto d = makeList(e.s, u"X", {u"a", u"b"});
    EXPECT_EQ(p.fncJoinDic(d->MetaDic, u", "), u"a, b, ");
    EXPECT_EQ(p.fncJoinDic(makeList(e.s, u"Y", {})->MetaDic, u";"), u"");
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(p.fncJoinDic(nullptr, u";"), u"");
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"fncJoinDic");
}

TEST(SettingsBody, RoundTripKeepsEverythingTheFormatCanHold) {
    Env e;
    cPersonalSettings p(e.s);
    p.lngReportChoice = 3;
    p.strReportValue = u"Provider=SQLOLEDB;Data Source=srv:1433;Ä ö Ελληνικά";
    p.curPersonalRate = Currency::fromUnits(-250);
    p.blnFilterEvents = true;
    p.blnFilterRecurring = true;
    p.MetaDataLists.push_back(makeList(e.s, u"Company", {u"Acme", u"Glo:bex", u" spaced "}));
    p.MetaDataLists.push_back(makeList(e.s, u"Empty", {}));
    p.MetaDataLists.push_back(makeList(e.s, u"Κατηγορία", {u"Ωμέγα", u"x"}));

    Env f;
    cPersonalSettings q(f.s);
    q.FromString(p.fncBuildBody());
    EXPECT_TRUE(f.noReport());
    EXPECT_EQ(q.lngReportChoice, 3);
    EXPECT_EQ(q.strReportValue, p.strReportValue);
    EXPECT_EQ(q.curPersonalRate, Currency::fromUnits(-250));
    EXPECT_TRUE(q.blnFilterEvents && !q.blnFilterPrivate && q.blnFilterRecurring);
    EXPECT_EQ(lists(q), lists(p));
    EXPECT_EQ(q.fncBuildBody(), p.fncBuildBody());
    // Entries restored from a body carry no category, super-category or rate.
    const auto& acme = *q.MetaDataLists[0]->MetaDic->Item(u"Acme");
    EXPECT_EQ(acme.Category + acme.SuperCategory, u"");
    EXPECT_EQ(acme.HourlyRate, Currency{});
    EXPECT_EQ(acme.MetaID, 0);
    EXPECT_FALSE(acme.Enabled);
}

TEST(SettingsBody, WhatTheFormatCannotHoldIsSplitWrongly) {
    Env e;
    cPersonalSettings p(e.s);
    p.strReportValue = u"line1\r\nline2";
    p.MetaDataLists.push_back(makeList(e.s, u"Com:pany", {u"a;b", u"c\r\nd"}));
    Env f;
    cPersonalSettings q(f.s);
    q.FromString(p.fncBuildBody());
    // The CR LF of the report value shifts every line: the rate line then
    // holds the text "line2" and the conversion fails.
    EXPECT_EQ(q.strReportValue, u"line1");
    auto r = f.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"FromString");
    EXPECT_EQ(r->number, 13);

    p.strReportValue = u"ok";
    q.FromString(p.fncBuildBody());
    EXPECT_TRUE(f.noReport());
    // "Com:pany" is cut at its colon, "a;b" becomes two entries, and
    // "c\r\nd" ends the line after "c" and makes a list named "d;".
    EXPECT_EQ(lists(q), (Lists{{u"Com", {u"pany:a", u"b", u"c"}}, {u"d;", {}}}));
    EXPECT_EQ(p.fncMetadataList().toStr(), u"Com:pany:a;b;c\r\nd;\r\n");
}

// ---- FromString -------------------------------------------------------------

TEST(FromString, FieldsRateFiltersAndLists) {
    const Str head = u"2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse";
    struct Case {
        Str body;
        std::int32_t choice;
        Str value;
        std::int64_t rateUnits;
        std::vector<bool> filters;  // events, private, recurring
        Lists lists;
        std::int32_t error = 0;  // reported under FromString
        // clang-format off
    } cases[] = {
        // Fewer than seven fields: nothing changes.
        {u"", 2, kAddinFolder, 1, {false, false, false}, {{u"Keep", {u"k"}}}},
        {u"3\r\nX\r\n7\r\nTrue\r\nTrue\r\nTrue", 2, kAddinFolder, 1, {false, false, false},
         {{u"Keep", {u"k"}}}},
        // Seven are enough, and empty the lists.
        {u"3\r\nX\r\n7\r\nTrue\r\nTrue\r\nTrue\r\n", 3, u"X", 7, {true, true, true}, {}},
        // A first line that is no number keeps choice and value.
        {u"abc\r\nD:\\x\\\r\n5\r\nTrue\r\nFalse\r\nTrue\r\nCompany:A;\r\n", 2, kAddinFolder, 5,
         {true, false, true}, {{u"Company", {u"A"}}}},
        // The rate goes through a 16-bit integer: halves to even, overflow.
        {u"2\r\nC:\\\r\n12.5\r\nFalse\r\nFalse\r\nFalse\r\n", 2, u"C:\\", 12, {false, false, false}, {}},
        {u"2\r\nC:\\\r\n13.5\r\nFalse\r\nFalse\r\nFalse\r\n", 2, u"C:\\", 14, {false, false, false}, {}},
        {u"2\r\nC:\\\r\n-2.5\r\nFalse\r\nFalse\r\nFalse\r\n", 2, u"C:\\", -2, {false, false, false}, {}},
        {u"2\r\nC:\\\r\n40000\r\nFalse\r\nFalse\r\nFalse\r\n", 2, u"C:\\", 1, {false, false, false},
         {{u"Keep", {u"k"}}}, 6},
        // Booleans: numbers and True/False in any case; other words fail.
        {u"2\r\nC:\\\r\n0\r\n-1\r\n0\r\ntrue\r\n", 2, u"C:\\", 0, {true, false, true}, {}},
        {u"2\r\nC:\\\r\n0\r\nyes\r\n0\r\ntrue\r\n", 2, u"C:\\", 0, {false, false, false},
         {{u"Keep", {u"k"}}}, 13},
        // List lines: no name, no entries, empty pieces, a colon in an
        // entry, no colon, an empty line; the last line needs its CR LF.
        {body(head, u":a;b;\r\nCompany:\r\nPerson:a;;b;\r\nExtra:x:y;;\r\nNoColon\r\n\r\nLast:z;\r\n"),
         2, u"C:\\", 0, {false, false, false},
         {{u"Company", {}}, {u"Person", {u"a", u"b"}}, {u"Extra", {u"x:y"}}, {u"NoColon", {}},
          {u"Last", {u"z"}}}},
        {body(head, u"Company:A;\r\nPerson:B;"), 2, u"C:\\", 0, {false, false, false},
         {{u"Company", {u"A"}}}},
        // The first spelling of a name wins.
        {body(head, u"Company:Acme;ACME;Zeta;acme;\r\n"), 2, u"C:\\", 0, {false, false, false},
         {{u"Company", {u"Acme", u"Zeta"}}}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(u8(c.body));
        Env e;
        cPersonalSettings p(e.s);
        p.curPersonalRate = Currency::fromUnits(1);
        p.MetaDataLists.push_back(makeList(e.s, u"Keep", {u"k"}));
        p.FromString(c.body);
        EXPECT_EQ(p.lngReportChoice, c.choice);
        EXPECT_EQ(p.strReportValue, c.value);
        EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(c.rateUnits));
        EXPECT_EQ((std::vector<bool>{p.blnFilterEvents, p.blnFilterPrivate, p.blnFilterRecurring}),
                  c.filters);
        EXPECT_EQ(lists(p), c.lists);
        auto r = e.takeReport();
        EXPECT_EQ(r ? r->number : 0, c.error);
        if (r) {
            EXPECT_EQ(r->procedure, u"FromString");
        }
    }
}

TEST(FromString, PopulateMetadataListNeedsACrLf) {
    Env e;
    cPersonalSettings p(e.s);
    p.MetaDataLists.push_back(makeList(e.s, u"Keep", {u"k"}));
    const std::pair<Str, Lists> steps[] = {
        {u"Company:a;", {{u"Keep", {u"k"}}}},  // no CR LF at all: untouched
        {u"", {{u"Keep", {u"k"}}}},
        {u"Company:a;\r\n", {{u"Company", {u"a"}}}},
        {u"\r\n", {}},
        {u"A:1;\r\nB:2;", {{u"A", {u"1"}}}},  // the unterminated last list is lost
    };
    for (const auto& [text, expected] : steps) {
        p.subPopulateMetadataList(text);
        EXPECT_EQ(lists(p), expected) << u8(text);
    }
    EXPECT_TRUE(e.noReport());
}

// ---- registry path -------------------------------------------------------------

// Records the names of the registry values in the order they are written.
struct KeyOrderPlatform : MemoryPlatform {
    std::vector<Str> written;
    std::int32_t regSetString(RegKey key, const Str& name, const Str& value) override {
        written.push_back(name);
        return MemoryPlatform::regSetString(key, name, value);
    }
};

TEST(SettingsRegistry, SaveWritesTheSeventeenKeysInTheirOrder) {
    KeyOrderPlatform platform;
    platform.setDocumentsFolder(u"C:\\Users\\John\\Documents");
    platform.setModuleFolder(u"C:\\Program Files\\Hourbook");
    Session s{platform};
    s.strListSeparator = u",";
    cPersonalSettings p(s);
    p.curPersonalRate = Currency{123456};
    p.blnFilterPrivate = true;
    p.MetaDataLists.push_back(makeList(s, u"Company", {u"Acme", u"Globex"}));
    p.intPaneWidth = 300;
    p.SaveSettings();  // no calendar: the appointment part is skipped silently
    EXPECT_FALSE(s.diag.blnReported);
    const std::pair<Str, Str> keys[] = {{u"ReportChoice", u"2"},
                                        {u"ReportValue", kAddinFolder},
                                        {u"PersonalRate", u"12.3456"},
                                        {u"FilterEvents", u"False"},
                                        {u"FilterPrivate", u"True"},
                                        {u"FilterRecurring", u"False"},
                                        {u"MetadataList", u"Company:Acme;Globex;\r\n"},
                                        {u"Convert24", u"False"},
                                        {u"Convert24Hours", u"8"},
                                        {u"StartGrid", u"False"},
                                        {u"RemoveLunch", u"False"},
                                        {u"RemoveLunchHours", u"0.75"},
                                        {u"CreateLocalCube", u"False"},
                                        {u"WriteSubject", u"False"},
                                        {u"PaneWidth", u"300"},
                                        {u"PaneHeight", u"600"},
                                        {u"PaneDockPos", u"2"}};
    std::vector<Str> order;
    for (const auto& [name, value] : keys) {
        order.push_back(name);
        auto v = platform.value(kSettingsKey, name);
        ASSERT_TRUE(v) << u8(name);
        EXPECT_EQ(v->text, value) << u8(name);
    }
    EXPECT_EQ(platform.written, order);
    EXPECT_EQ(platform.valueNames(kSettingsKey).size(), 17u);
}

TEST(SettingsRegistry, RoundTripKeepsFullCurrencyAndEveryKeyInTheUsersLocale) {
    for (const Locale& loc : {Locale::enUS(), czech()}) {
        Env e;
        e.platform.setUserLocale(loc);
        cPersonalSettings p(e.s);
        p.lngReportChoice = 3;
        p.strReportValue = u"Provider=x;\r\nZákazník Παπαδόπουλος";  // the registry keeps CR LF
        p.curPersonalRate = Currency{123456789};
        p.blnFilterEvents = true;
        p.blnConvert24 = true;
        p.intConvert24Hours = Variant(7.5);
        p.blnRemoveLunch = true;
        p.intRemoveLunchHours = Variant(Str(u"1.25"));
        p.blnCreateLocalCube = true;
        p.blnStartGrid = true;
        p.blnWriteSubject = true;
        p.MetaDataLists.push_back(makeList(e.s, u"Company", {u"Acme", u"Κ"}));
        p.MetaDataLists.push_back(makeList(e.s, u"Person", {}));
        p.SaveSettings();
        const bool cs = loc.decimalSeparator == u",";
        EXPECT_EQ(e.reg(u"PersonalRate"), Str(cs ? u"12345,6789" : u"12345.6789"));
        EXPECT_EQ(e.reg(u"Convert24Hours"), Str(cs ? u"7,5" : u"7.5"));

        cPersonalSettings q(e.s);
        q.intPaneWidth = 999;
        EXPECT_TRUE(q.GetValuesFromSettings());
        EXPECT_TRUE(e.noReport());
        EXPECT_EQ(q.lngReportChoice, 3);
        EXPECT_EQ(q.strReportValue, p.strReportValue);
        EXPECT_EQ(q.curPersonalRate, Currency{123456789});  // the fraction is kept
        EXPECT_TRUE(q.blnFilterEvents && !q.blnFilterPrivate && !q.blnFilterRecurring);
        EXPECT_TRUE(q.blnConvert24 && q.blnRemoveLunch && q.blnCreateLocalCube && q.blnStartGrid &&
                    q.blnWriteSubject);
        // The hour values stay string variants.
        EXPECT_EQ(q.intConvert24Hours, Variant(Str(cs ? u"7,5" : u"7.5")));
        EXPECT_EQ(q.intRemoveLunchHours, Variant(Str(u"1.25")));
        EXPECT_EQ(lists(q), lists(p));
        EXPECT_EQ(q.intPaneWidth, 999);  // pane keys are never read back
    }
}

TEST(SettingsRegistry, MissingKeysReadAsTheirDefaultsAndBooleansAsTrue) {
    Env e;
    e.platform.setString(kSettingsKey, u"ReportChoice", u"2");
    cPersonalSettings p(e.s);
    p.MetaDataLists.push_back(makeList(e.s, u"Keep", {u"k"}));
    p.GetValuesFromSettings();
    EXPECT_TRUE(e.noReport());
    EXPECT_TRUE(p.blnFilterEvents && p.blnFilterPrivate && p.blnFilterRecurring);
    EXPECT_TRUE(p.blnConvert24 && p.blnRemoveLunch && p.blnCreateLocalCube && p.blnStartGrid &&
                p.blnWriteSubject);
    EXPECT_EQ(p.intConvert24Hours, Variant(Str(u"8")));
    EXPECT_EQ(p.intRemoveLunchHours, Variant(Str(u"0.75")));
    EXPECT_EQ(p.curPersonalRate, Currency{});
    EXPECT_EQ(p.strReportValue, kAddinFolder);  // "ReportValue" missing: unchanged
    // A list text without CR LF (here: none) leaves the lists.
    EXPECT_EQ(lists(p), (Lists{{u"Keep", {u"k"}}}));
    EXPECT_EQ(e.platform.valueNames(kSettingsKey).size(), 1u);  // nothing written
    e.platform.setString(kSettingsKey, u"MetadataList", u"Company:a;\r\n");
    p.GetValuesFromSettings();
    EXPECT_EQ(lists(p), (Lists{{u"Company", {u"a"}}}));
}

TEST(SettingsRegistry, AFailedLoadEndsAtItsKeyIsReportedAndIsNeverSaved) {
    struct Case {
        std::vector<std::pair<Str, Str>> values;
        bool dwordChoice;
        std::int32_t number;
        Str description;
    } cases[] = {
        {{{u"ReportChoice", u"2"},
          {u"PersonalRate", u"12.5"},
          {u"FilterEvents", u"False"},
          {u"FilterPrivate", u"maybe"},
          {u"FilterRecurring", u"False"}},
         false,
         13,
         u"Type mismatch"},
        {{{u"ReportChoice", u"two"}, {u"ReportValue", u"D:\\x\\"}}, false, 13, u"Type mismatch"},
        {{}, true, static_cast<std::int32_t>(0x800407D0u), u"Registry data not a string"},
    };
    for (const Case& c : cases) {
        Env e;
        for (const auto& [name, value] : c.values)
            e.platform.setString(kSettingsKey, name, value);
        if (c.dwordChoice) e.platform.setDword(kSettingsKey, u"ReportChoice", 2);
        cPersonalSettings p(e.s);
        EXPECT_TRUE(p.GetValuesFromSettings());
        EXPECT_TRUE(p.blnLoadFailed());
        auto r = e.takeReport();
        ASSERT_TRUE(r);
        EXPECT_EQ(r->procedure, u"GetValuesFromSettings");
        EXPECT_EQ(r->number, c.number);
        EXPECT_EQ(r->description, c.description);
        // Read up to the failing key, not beyond; the report value of a
        // failing choice is not taken.
        EXPECT_EQ(p.strReportValue, kAddinFolder);
        EXPECT_FALSE(p.blnFilterEvents || p.blnFilterPrivate || p.blnFilterRecurring);
        if (c.number == 13 && c.values.size() > 2) {
            EXPECT_EQ(p.curPersonalRate, Currency{125000});
        }
        p.SaveSettings();
        EXPECT_EQ(e.platform.calls("regSetString"), 0);
        EXPECT_FALSE(e.takeReport());
    }
}

TEST(SettingsRegistry, AFailingWriteEndsTheSaveAtTheFirstKey) {
    Env e;
    e.platform.setString(kSettingsKey, u"ReportChoice", u"2");
    cPersonalSettings p(e.s);
    p.GetValuesFromSettings();
    e.platform.failAlways("regSetString", 5);
    p.SaveSettings();
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"SaveSettings");
    EXPECT_EQ(r->description, u"Could not set key value");
    EXPECT_EQ(r->number, static_cast<std::int32_t>(0x800407D5u));
    EXPECT_EQ(e.platform.calls("regSetString"), 1);
}

TEST(SettingsRegistry, TheBodyRateUsesTheUsersDecimalSeparator) {
    Env e;
    e.platform.setUserLocale(czech());
    cPersonalSettings p(e.s);
    p.curPersonalRate = Currency{125000};
    EXPECT_NE(p.fncBuildBody().find(u"\r\n12,5\r\n"), Str::npos);
    p.FromString(u"2\r\nC:\\\r\n13,5\r\nFalse\r\nFalse\r\nFalse\r\n");
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(14));
}

}  // namespace
}  // namespace hb::test
