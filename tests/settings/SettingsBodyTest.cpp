// Construction, the settings body and metadata list texts,
// FromString, and the registry store path of the personal settings.
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
std::vector<ListView> lists(const cPersonalSettings& p) {
    std::vector<ListView> out;
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

// ---- construction ---------------------------------------------------------

TEST(PersonalSettingsConstruction, DefaultsWithoutConnectionFile) {
    Env e;
    cPersonalSettings p(e.s);
    EXPECT_TRUE(e.noReport());
    EXPECT_TRUE(e.s.blnFSAvailable);
    EXPECT_EQ(p.lngReportChoice, 2);
    EXPECT_EQ(p.strReportValue, kAddinFolder);
    EXPECT_TRUE(p.MetaDataLists.empty());
    EXPECT_EQ(p.curPersonalRate, Currency{});
    EXPECT_FALSE(p.blnFilterEvents || p.blnFilterPrivate || p.blnFilterRecurring);
    EXPECT_FALSE(p.blnConvert24 || p.blnRemoveLunch || p.blnCreateLocalCube || p.blnStartGrid ||
                 p.blnWriteSubject);
    EXPECT_EQ(p.intConvert24Hours, Variant(std::int16_t{8}));
    EXPECT_EQ(p.intRemoveLunchHours, Variant(0.75));
    EXPECT_EQ(p.intPaneWidth, 185);
    EXPECT_EQ(p.intPaneHeight, 600);
    EXPECT_EQ(p.intPaneDockPos, 2);
    // The local cube folder was made on the way.
    EXPECT_TRUE(e.platform.folderExists(u"C:\\Users\\John\\Documents\\OLAP Cubes"));
    EXPECT_EQ(e.s.diag.strLastTrace, u"Assuming Access database");
    // Nothing is written anywhere.
    EXPECT_FALSE(e.platform.keyExists(u"Software\\Brindlewood"));
}

TEST(PersonalSettingsConstruction, FreshBodyIsSixLines) {
    Env e;
    cPersonalSettings p(e.s);
    EXPECT_EQ(p.fncBuildBody(), u"2\r\n" + kAddinFolder + u"\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n");
    EXPECT_EQ(p.fncMetadataList(), Variant(Str()));
}

TEST(PersonalSettingsConstruction, ReportPathFileNamesTheFolder) {
    Env e;
    e.platform.setFile(kReportFolder + u"\\ReportPath.txt", u"\\\\server\\share\\Hourbook\\\r\n");
    cPersonalSettings p(e.s);
    EXPECT_EQ(p.fncReadReportPath(), u"\\\\server\\share\\Hourbook\\");
    EXPECT_EQ(p.lngReportChoice, 2);
    EXPECT_EQ(p.strReportValue, u"\\\\server\\share\\Hourbook\\");
}

TEST(PersonalSettingsConstruction, ReportPathWithoutTrailingSlash) {
    Env e;
    e.platform.setFile(kReportFolder + u"\\ReportPath.txt", u"D:\\Re\r\nports");
    cPersonalSettings p(e.s);
    EXPECT_EQ(p.strReportValue, u"D:\\Reports\\");
}

TEST(PersonalSettingsConstruction, ConnectionFileMakesChoiceThree) {
    Env e;
    e.platform.setFile(kReportFolder + u"\\ReportPath.txt", u"D:\\Reports\\");
    const Str connection = u"Provider=SQLOLEDB;Data Source=srv;\r\nInitial Catalog=HB";
    e.platform.setFile(u"D:\\Reports\\HourbookConnection.txt", connection);
    cPersonalSettings p(e.s);
    EXPECT_EQ(p.lngReportChoice, 3);
    EXPECT_EQ(p.strReportValue, connection);  // the whole text, as it is
    EXPECT_EQ(p.intPaneWidth, 185);
}

TEST(PersonalSettingsConstruction, ConnectionFileInTheAddinFolder) {
    Env e;
    e.platform.setFile(kAddinFolder + u"HourbookConnection.txt", u"DSN=x");
    cPersonalSettings p(e.s);
    EXPECT_EQ(p.lngReportChoice, 3);
    EXPECT_EQ(p.strReportValue, u"DSN=x");
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

TEST(SettingsBody, ExampleOfThePart) {
    Env e;
    cPersonalSettings p(e.s);
    p.strReportValue = u"C:\\Data\\";
    p.blnFilterPrivate = true;
    p.MetaDataLists.push_back(makeList(e.s, u"Company", {u"Acme", u"Globex"}));
    p.MetaDataLists.push_back(makeList(e.s, u"Person", {u"Ann"}));
    EXPECT_EQ(p.fncBuildBody(),
              u"2\r\nC:\\Data\\\r\n0\r\nFalse\r\nTrue\r\nFalse\r\nCompany:Acme;Globex;\r\nPerson:"
              u"Ann;\r\n");
    EXPECT_EQ(p.fncMetadataList(), Variant(Str(u"Company:Acme;Globex;\r\nPerson:Ann;\r\n")));
}

TEST(SettingsBody, FiltersInTheOrderEventsPrivateRecurring) {
    Env e;
    cPersonalSettings p(e.s);
    p.blnFilterEvents = true;
    p.curPersonalRate = Currency{125000};
    p.lngReportChoice = 4;
    EXPECT_EQ(p.fncBuildBody(),
              u"4\r\n" + kAddinFolder + u"\r\n12.5\r\nTrue\r\nFalse\r\nFalse\r\n");
}

TEST(SettingsBody, ListsWithoutNameAreLeftOutEmptyListsKept) {
    Env e;
    cPersonalSettings p(e.s);
    p.MetaDataLists.push_back(makeList(e.s, u"", {u"Hidden"}));
    p.MetaDataLists.push_back(makeList(e.s, u"Extra", {}));
    p.MetaDataLists.push_back(makeList(e.s, u"Person", {u"Ann", u"Bo:b"}));
    EXPECT_EQ(p.fncMetadataList(), Variant(Str(u"Extra:\r\nPerson:Ann;Bo:b;\r\n")));
}

TEST(SettingsBody, JoinDic) {
    Env e;
    cPersonalSettings p(e.s);
    auto d = makeList(e.s, u"X", {u"a", u"b", u"c"});
    EXPECT_EQ(p.fncJoinDic(d->MetaDic, u";"), u"a;b;c;");
    EXPECT_EQ(p.fncJoinDic(d->MetaDic, u", "), u"a, b, c, ");
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
    EXPECT_TRUE(q.blnFilterEvents);
    EXPECT_FALSE(q.blnFilterPrivate);
    EXPECT_TRUE(q.blnFilterRecurring);
    EXPECT_EQ(lists(q), lists(p));
    EXPECT_EQ(q.fncBuildBody(), p.fncBuildBody());
    // Entries restored from a body carry no category, super-category or rate.
    const auto& acme = *q.MetaDataLists[0]->MetaDic->Item(u"Acme");
    EXPECT_EQ(acme.Category, u"");
    EXPECT_EQ(acme.SuperCategory, u"");
    EXPECT_EQ(acme.HourlyRate, Currency{});
    EXPECT_EQ(acme.MetaID, 0);
    EXPECT_FALSE(acme.Enabled);
}

TEST(SettingsBody, WhatTheFormatCannotHoldIsSplitWrongly) {
    Env e;
    cPersonalSettings p(e.s);
    p.strReportValue = u"line1\r\nline2";
    p.MetaDataLists.push_back(makeList(e.s, u"Com:pany", {u"a;b", u"c\r\nd"}));
    const Str body = p.fncBuildBody();
    Env f;
    cPersonalSettings q(f.s);
    q.FromString(body);
    // The CR LF of the report value shifts every line: the rate line then
    // holds the text "line2" and the conversion fails.
    EXPECT_EQ(q.strReportValue, u"line1");
    auto r = f.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"FromString");
    EXPECT_EQ(r->number, 13);

    cPersonalSettings t(f.s);
    p.strReportValue = u"ok";
    t.FromString(p.fncBuildBody());
    EXPECT_TRUE(f.noReport());
    // "Com:pany" is cut at its colon, "a;b" becomes two entries, and
    // "c\r\nd" ends the line after "c" and makes a list named "d;".
    EXPECT_EQ(lists(t), (std::vector<ListView>{{u"Com", {u"pany:a", u"b", u"c"}}, {u"d;", {}}}));
    Str raw = p.fncMetadataList().toStr();
    EXPECT_EQ(raw, u"Com:pany:a;b;c\r\nd;\r\n");
}

// ---- FromString -------------------------------------------------------------

TEST(FromString, SixOrFewerLinesChangeNothing) {
    Env e;
    cPersonalSettings p(e.s);
    p.MetaDataLists.push_back(makeList(e.s, u"Keep", {u"k"}));
    const Str before = p.fncBuildBody();
    for (Str body : {Str(u""), Str(u"3\r\nX\r\n7\r\nTrue\r\nTrue\r\n"),
                     Str(u"3\r\nX\r\n7\r\nTrue\r\nTrue\r\nTrue"), Str(u"garbage")}) {
        p.FromString(body);
        EXPECT_EQ(p.fncBuildBody(), before) << u8(body);
    }
    EXPECT_TRUE(e.noReport());
}

TEST(FromString, SevenFieldsAreEnoughAndEmptyTheLists) {
    Env e;
    cPersonalSettings p(e.s);
    p.MetaDataLists.push_back(makeList(e.s, u"Gone", {u"k"}));
    p.FromString(u"3\r\nX\r\n7\r\nTrue\r\nTrue\r\nTrue\r\n");
    EXPECT_EQ(p.lngReportChoice, 3);
    EXPECT_EQ(p.strReportValue, u"X");
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(7));
    EXPECT_TRUE(p.blnFilterEvents && p.blnFilterPrivate && p.blnFilterRecurring);
    EXPECT_TRUE(p.MetaDataLists.empty());
}

TEST(FromString, NonNumericFirstLineKeepsChoiceAndValue) {
    Env e;
    cPersonalSettings p(e.s);
    p.FromString(u"abc\r\nD:\\Elsewhere\\\r\n5\r\nTrue\r\nFalse\r\nTrue\r\nCompany:A;\r\n");
    EXPECT_EQ(p.lngReportChoice, 2);
    EXPECT_EQ(p.strReportValue, kAddinFolder);
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(5));
    EXPECT_TRUE(p.blnFilterEvents);
    EXPECT_FALSE(p.blnFilterPrivate);
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Company", {u"A"}}}));
}

TEST(FromString, RateIsRoundedThroughA16BitInteger) {
    Env e;
    cPersonalSettings p(e.s);
    auto body = [](const Str& rate) {
        return u"2\r\nC:\\\r\n" + rate + u"\r\nFalse\r\nFalse\r\nFalse\r\n";
    };
    p.FromString(body(u"12.5"));
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(12));
    p.FromString(body(u"13.5"));
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(14));
    p.FromString(body(u"-2.5"));
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(-2));
    p.FromString(body(u"32767"));
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(32767));
    EXPECT_TRUE(e.noReport());
    p.FromString(body(u"40000"));
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"FromString");
    EXPECT_EQ(r->number, 6);
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(32767));  // as far as set
    EXPECT_EQ(p.lngReportChoice, 2);
    EXPECT_EQ(p.strReportValue, u"C:\\");
}

TEST(FromString, BooleansAcceptNumbersAndRejectOtherTexts) {
    Env e;
    cPersonalSettings p(e.s);
    p.FromString(u"2\r\nC:\\\r\n0\r\n-1\r\n0\r\ntrue\r\n");
    EXPECT_TRUE(p.blnFilterEvents);
    EXPECT_FALSE(p.blnFilterPrivate);
    EXPECT_TRUE(p.blnFilterRecurring);
    p.FromString(u"2\r\nC:\\\r\n0\r\nyes\r\n0\r\ntrue\r\n");
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"FromString");
    EXPECT_EQ(r->number, 13);
}

TEST(FromString, MetadataLines) {
    Env e;
    cPersonalSettings p(e.s);
    p.FromString(
        u"2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\n:a;b;\r\nCompany:\r\nPerson:a;;b;\r\n"
        u"Extra:x:y;;\r\nNoColon\r\n\r\nLast:z;\r\n");
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Company", {}},
                                               {u"Person", {u"a", u"b"}},
                                               {u"Extra", {u"x:y"}},
                                               {u"NoColon", {}},
                                               {u"Last", {u"z"}}}));
    EXPECT_TRUE(e.noReport());
}

TEST(FromString, MissingFinalCrLfLosesTheLastList) {
    Env e;
    cPersonalSettings p(e.s);
    p.FromString(u"2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCompany:A;\r\nPerson:B;");
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Company", {u"A"}}}));
}

TEST(FromString, DuplicateItemsFirstSpellingWins) {
    Env e;
    cPersonalSettings p(e.s);
    p.FromString(u"2\r\nC:\\\r\n0\r\nFalse\r\nFalse\r\nFalse\r\nCompany:Acme;ACME;Zeta;acme;\r\n");
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Company", {u"Acme", u"Zeta"}}}));
}

TEST(FromString, UserLocaleDecimalSeparator) {
    Env e;
    Locale cs = Locale::enUS();
    cs.decimalSeparator = u",";
    cs.thousandSeparator = u"\u00a0";
    cs.listSeparator = u";";
    e.platform.setUserLocale(cs);
    cPersonalSettings p(e.s);
    p.curPersonalRate = Currency{125000};
    const Str body = p.fncBuildBody();
    EXPECT_NE(body.find(u"\r\n12,5\r\n"), Str::npos);
    p.FromString(u"2\r\nC:\\\r\n13,5\r\nFalse\r\nFalse\r\nFalse\r\n");
    EXPECT_EQ(p.curPersonalRate, Currency::fromUnits(14));
}

// ---- subPopulateMetadataList -----------------------------------------------

TEST(PopulateMetadataList, NeedsAtLeastOneCrLf) {
    Env e;
    cPersonalSettings p(e.s);
    p.MetaDataLists.push_back(makeList(e.s, u"Keep", {u"k"}));
    p.subPopulateMetadataList(u"Company:a;");
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Keep", {u"k"}}}));
    p.subPopulateMetadataList(u"");
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Keep", {u"k"}}}));
    p.subPopulateMetadataList(u"Company:a;\r\n");
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Company", {u"a"}}}));
    p.subPopulateMetadataList(u"\r\n");
    EXPECT_TRUE(p.MetaDataLists.empty());
    p.subPopulateMetadataList(u"A:1;\r\nB:2;");
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"A", {u"1"}}}));
    EXPECT_TRUE(e.noReport());
}

// ---- registry path -------------------------------------------------------------

TEST(SettingsRegistry, SaveWritesSeventeenKeys) {
    Env e;
    cPersonalSettings p(e.s);
    p.curPersonalRate = Currency{123456};
    p.blnFilterPrivate = true;
    p.MetaDataLists.push_back(makeList(e.s, u"Company", {u"Acme", u"Globex"}));
    p.intPaneWidth = 300;
    p.SaveSettings();  // no calendar: the appointment part is skipped silently
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(e.platform.valueNames(kSettingsKey).size(), 17u);
    EXPECT_EQ(e.reg(u"ReportChoice"), Str(u"2"));
    EXPECT_EQ(e.reg(u"ReportValue"), kAddinFolder);
    EXPECT_EQ(e.reg(u"PersonalRate"), Str(u"12.3456"));
    EXPECT_EQ(e.reg(u"FilterEvents"), Str(u"False"));
    EXPECT_EQ(e.reg(u"FilterPrivate"), Str(u"True"));
    EXPECT_EQ(e.reg(u"FilterRecurring"), Str(u"False"));
    EXPECT_EQ(e.reg(u"MetadataList"), Str(u"Company:Acme;Globex;\r\n"));
    EXPECT_EQ(e.reg(u"Convert24"), Str(u"False"));
    EXPECT_EQ(e.reg(u"Convert24Hours"), Str(u"8"));
    EXPECT_EQ(e.reg(u"StartGrid"), Str(u"False"));
    EXPECT_EQ(e.reg(u"RemoveLunch"), Str(u"False"));
    EXPECT_EQ(e.reg(u"RemoveLunchHours"), Str(u"0.75"));
    EXPECT_EQ(e.reg(u"CreateLocalCube"), Str(u"False"));
    EXPECT_EQ(e.reg(u"WriteSubject"), Str(u"False"));
    EXPECT_EQ(e.reg(u"PaneWidth"), Str(u"300"));
    EXPECT_EQ(e.reg(u"PaneHeight"), Str(u"600"));
    EXPECT_EQ(e.reg(u"PaneDockPos"), Str(u"2"));
    EXPECT_EQ(e.platform.calls("regSetString"), 17);
}

TEST(SettingsRegistry, RoundTripKeepsFullCurrencyAndEveryKey) {
    Env e;
    cPersonalSettings p(e.s);
    p.lngReportChoice = 3;
    p.strReportValue = u"Provider=x;\r\nline two";  // the registry keeps CR LF
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

    cPersonalSettings q(e.s);
    q.intPaneWidth = 999;
    EXPECT_TRUE(q.GetValuesFromSettings());
    EXPECT_TRUE(e.noReport());
    EXPECT_EQ(q.lngReportChoice, 3);
    EXPECT_EQ(q.strReportValue, p.strReportValue);
    EXPECT_EQ(q.curPersonalRate, Currency{123456789});  // 12345.6789: the fraction is kept
    EXPECT_TRUE(q.blnFilterEvents);
    EXPECT_FALSE(q.blnFilterPrivate);
    EXPECT_FALSE(q.blnFilterRecurring);
    EXPECT_TRUE(q.blnConvert24 && q.blnRemoveLunch && q.blnCreateLocalCube && q.blnStartGrid &&
                q.blnWriteSubject);
    EXPECT_EQ(q.intConvert24Hours, Variant(Str(u"7.5")));  // kept as a string variant
    EXPECT_EQ(q.intRemoveLunchHours, Variant(Str(u"1.25")));
    EXPECT_EQ(lists(q), lists(p));
    EXPECT_EQ(q.intPaneWidth, 999);  // pane keys are never read back
}

TEST(SettingsRegistry, MissingBooleanKeysReadAsTrue) {
    Env e;
    e.platform.setString(kSettingsKey, u"ReportChoice", u"2");
    cPersonalSettings p(e.s);
    p.GetValuesFromSettings();
    EXPECT_TRUE(e.noReport());
    EXPECT_TRUE(p.blnFilterEvents && p.blnFilterPrivate && p.blnFilterRecurring);
    EXPECT_TRUE(p.blnConvert24 && p.blnRemoveLunch && p.blnCreateLocalCube && p.blnStartGrid &&
                p.blnWriteSubject);
    EXPECT_EQ(p.intConvert24Hours, Variant(Str(u"8")));
    EXPECT_EQ(p.intRemoveLunchHours, Variant(Str(u"0.75")));
    EXPECT_EQ(p.curPersonalRate, Currency{});
    EXPECT_EQ(p.strReportValue, kAddinFolder);  // "ReportValue" missing: unchanged
    EXPECT_TRUE(p.MetaDataLists.empty());
    EXPECT_EQ(e.platform.valueNames(kSettingsKey).size(), 1u);  // nothing written
}

TEST(SettingsRegistry, MetadataListWithoutCrLfLeavesTheLists) {
    Env e;
    e.platform.setString(kSettingsKey, u"ReportChoice", u"2");
    e.platform.setString(kSettingsKey, u"MetadataList", u"Company:a;");
    cPersonalSettings p(e.s);
    p.MetaDataLists.push_back(makeList(e.s, u"Keep", {u"k"}));
    p.GetValuesFromSettings();
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Keep", {u"k"}}}));
    e.platform.setString(kSettingsKey, u"MetadataList", u"Company:a;\r\n");
    p.GetValuesFromSettings();
    EXPECT_EQ(lists(p), (std::vector<ListView>{{u"Company", {u"a"}}}));
}

TEST(SettingsRegistry, ConversionErrorEndsTheLoadAtThatKey) {
    Env e;
    e.platform.setString(kSettingsKey, u"ReportChoice", u"2");
    e.platform.setString(kSettingsKey, u"PersonalRate", u"12.5");
    e.platform.setString(kSettingsKey, u"FilterEvents", u"False");
    e.platform.setString(kSettingsKey, u"FilterPrivate", u"maybe");
    e.platform.setString(kSettingsKey, u"FilterRecurring", u"False");
    cPersonalSettings p(e.s);
    EXPECT_TRUE(p.GetValuesFromSettings());
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"GetValuesFromSettings");
    EXPECT_EQ(r->number, 13);
    EXPECT_EQ(p.curPersonalRate, Currency{125000});
    EXPECT_FALSE(p.blnFilterEvents);
    EXPECT_FALSE(p.blnFilterPrivate);
    EXPECT_FALSE(p.blnFilterRecurring);  // not read
}

TEST(SettingsRegistry, NonNumericReportChoiceFails) {
    Env e;
    e.platform.setString(kSettingsKey, u"ReportChoice", u"two");
    e.platform.setString(kSettingsKey, u"ReportValue", u"D:\\x\\");
    cPersonalSettings p(e.s);
    EXPECT_TRUE(p.GetValuesFromSettings());
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"GetValuesFromSettings");
    EXPECT_EQ(p.strReportValue, kAddinFolder);
}

TEST(SettingsRegistry, RegistryErrorsAreReportedUnderTheCaller) {
    Env e;
    e.platform.setDword(kSettingsKey, u"ReportChoice", 2);
    cPersonalSettings p(e.s);
    EXPECT_TRUE(p.GetValuesFromSettings());
    auto r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"GetValuesFromSettings");
    EXPECT_EQ(r->description, u"Registry data not a string");
    EXPECT_EQ(r->number, static_cast<std::int32_t>(0x800407D0u));
    // A failed load is never saved over the stores.
    p.SaveSettings();
    EXPECT_EQ(e.platform.calls("regSetString"), 0);
    EXPECT_FALSE(e.takeReport());

    e.platform.setString(kSettingsKey, u"ReportChoice", u"2");
    p.GetValuesFromSettings();
    e.platform.failAlways("regSetString", 5);
    p.SaveSettings();
    r = e.takeReport();
    ASSERT_TRUE(r);
    EXPECT_EQ(r->procedure, u"SaveSettings");
    EXPECT_EQ(r->description, u"Could not set key value");
    EXPECT_EQ(r->number, static_cast<std::int32_t>(0x800407D5u));
    EXPECT_EQ(e.platform.calls("regSetString"), 1);  // the save ends at the first key
}

TEST(SettingsRegistry, CzechLocaleRateRoundTrip) {
    Env e;
    Locale cs = Locale::enUS();
    cs.decimalSeparator = u",";
    cs.thousandSeparator = u"\u00a0";
    e.platform.setUserLocale(cs);
    cPersonalSettings p(e.s);
    p.curPersonalRate = Currency{125000};
    p.strReportValue = u"Zákazník Παπαδόπουλος";
    p.SaveSettings();
    EXPECT_EQ(e.reg(u"PersonalRate"), Str(u"12,5"));
    EXPECT_EQ(e.reg(u"RemoveLunchHours"), Str(u"0,75"));
    cPersonalSettings q(e.s);
    q.GetValuesFromSettings();
    EXPECT_EQ(q.curPersonalRate, Currency{125000});
    EXPECT_EQ(q.strReportValue, u"Zákazník Παπαδόπουλος");
}

}  // namespace
}  // namespace hb::test
