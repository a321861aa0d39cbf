// The settings program's editing model: what it refuses (and that a refusal
// changes nothing), the list operations, the checks before a save, and the
// mnemonics of its captions.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "apps/settings/SettingsEditor.h"
#include "common/Text.h"

namespace hb::settingsapp {
namespace {

Locale german() {
    Locale l;
    l.decimalSeparator = u",";
    l.thousandSeparator = u".";
    l.listSeparator = u";";
    l.currencyDecimalSeparator = u",";
    l.currencyThousandSeparator = u".";
    return l;
}

Values twoLists() {
    Values v;
    v.reportValue = u"C:\\Data\\";
    v.lists = {{u"Company", {u"Acme", u"Globex"}}, {u"Person", {u"Ann"}}};
    return v;
}

std::string u8(const Str& s) {
    return toUtf8(s);
}

TEST(SettingsEditorTest, RefusedNamesChangeNothingAndSayWhy) {
    struct Case {
        const char* what;
        std::function<std::optional<Refusal>(SettingsEditor&)> op;
        Field field;
        Str says;
    };
    const Case cases[] = {
        {"empty list name", [](SettingsEditor& e) { return e.addList(u""); }, Field::ListName,
         u"must not be empty"},
        {"blank list name", [](SettingsEditor& e) { return e.addList(u"   "); }, Field::ListName,
         u"must not be empty"},
        {"colon in a list name", [](SettingsEditor& e) { return e.addList(u"A:B"); },
         Field::ListName, u"\":\""},
        {"line break in a list name", [](SettingsEditor& e) { return e.addList(u"A\r\nB"); },
         Field::ListName, u"line break"},
        {"list name twice, other case", [](SettingsEditor& e) { return e.addList(u"company"); },
         Field::ListName, u"doubles"},
        {"rename onto another list", [](SettingsEditor& e) { return e.renameList(1, u"COMPANY"); },
         Field::ListName, u"doubles"},
        {"empty entry", [](SettingsEditor& e) { return e.addEntry(0, u" "); }, Field::Entry,
         u"must not be empty"},
        {"semicolon in an entry", [](SettingsEditor& e) { return e.addEntry(0, u"a;b"); },
         Field::Entry, u"\";\""},
        {"line break in an entry", [](SettingsEditor& e) { return e.addEntry(0, u"a\nb"); },
         Field::Entry, u"line break"},
        {"list separator in an entry", [](SettingsEditor& e) { return e.addEntry(0, u"x,y"); },
         Field::Entry, u"list separator"},
        {"entry twice, other case", [](SettingsEditor& e) { return e.addEntry(0, u"ACME"); },
         Field::Entry, u"doubles"},
        {"rename onto another entry",
         [](SettingsEditor& e) { return e.renameEntry(0, 1, u"acme"); }, Field::Entry, u"doubles"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SettingsEditor e(twoLists(), Locale::enUS(), u",");
        const auto r = c.op(e);
        ASSERT_TRUE(r.has_value());
        EXPECT_EQ(r->field, c.field);
        EXPECT_NE(r->message.find(c.says), Str::npos) << u8(r->message);
        EXPECT_EQ(e.values(), twoLists());
    }
}

TEST(SettingsEditorTest, AcceptedNamesAreTrimmedAndKeepTheirOrder) {
    SettingsEditor e(twoLists(), Locale::enUS(), u" , ");
    EXPECT_FALSE(e.addList(u" Extra field "));
    EXPECT_FALSE(e.addEntry(2, u"Travel: abroad"));  // ":" is fine in an entry
    EXPECT_FALSE(e.addEntry(2, u"Office"));
    EXPECT_FALSE(e.renameEntry(0, 0, u"ACME"));  // its own name in another case
    EXPECT_FALSE(e.renameList(1, u"People"));
    Values expected = twoLists();
    expected.lists[0].entries[0] = u"ACME";
    expected.lists[1].name = u"People";
    expected.lists.push_back({u"Extra field", {u"Travel: abroad", u"Office"}});
    EXPECT_EQ(e.values(), expected);
}

TEST(SettingsEditorTest, MovesStopAtTheEndsAndRemovesTakeOneItem) {
    SettingsEditor e(twoLists(), Locale::enUS(), u",");
    EXPECT_FALSE(e.moveList(0, -1));
    EXPECT_FALSE(e.moveList(1, 1));
    EXPECT_FALSE(e.moveList(7, 1));
    EXPECT_TRUE(e.moveList(1, -1));
    EXPECT_EQ(e.values().lists[0].name, u"Person");
    EXPECT_FALSE(e.moveEntry(1, 1, 1));
    EXPECT_TRUE(e.moveEntry(1, 1, -1));
    EXPECT_EQ(e.values().lists[1].entries, (std::vector<Str>{u"Globex", u"Acme"}));
    e.removeEntry(1, 0);
    e.removeEntry(1, 5);
    e.removeList(0);
    e.removeList(3);
    ASSERT_EQ(e.values().lists.size(), 1u);
    EXPECT_EQ(e.values().lists[0], (MetaList{u"Company", {u"Acme"}}));
}

TEST(SettingsEditorTest, CheckNamesTheFirstValueThatWouldNotLoadBack) {
    struct Case {
        const char* what;
        std::function<void(Values&)> change;
        std::optional<Field> refused;  // nullopt: accepted
        Str says;
        Locale loc = Locale::enUS();
    };
    const Case cases[] = {
        {"as given", [](Values&) {}, std::nullopt, u""},
        {"empty database folder", [](Values& v) { v.reportValue = u"  "; }, Field::ReportValue,
         u"Access database folder"},
        {"connection text over two lines",
         [](Values& v) {
             v.reportChoice = 3;
             v.reportValue = u"Provider=x\r\nData Source=y";
         },
         Field::ReportValue, u"Connection text"},
        {"rate not a number", [](Values& v) { v.rate = u"12x"; }, Field::Rate,
         u"Personal hourly rate"},
        {"rate empty", [](Values& v) { v.rate = u""; }, Field::Rate, u"Personal hourly rate"},
        {"rate beyond currency", [](Values& v) { v.rate = u"1e300"; }, Field::Rate,
         u"Personal hourly rate"},
        {"numbers with the user's decimal comma",
         [](Values& v) {
             v.rate = u"12,5";
             v.removeLunchHours = u"0,75";
         },
         std::nullopt, u"", german()},
        {"a stored entry holding the list separator",
         [](Values& v) { v.lists[1].entries.push_back(u"Ann,Bob"); }, Field::Entry, u"Person: "},
        {"a stored list named twice",
         [](Values& v) {
             v.lists.push_back({u"PERSON", {}});
         },
         Field::ListName, u"doubles"},
        {"zero hours a day", [](Values& v) { v.convert24Hours = u"0"; }, Field::Convert24Hours,
         u"Convert full days to hours"},
        {"25 hours a day", [](Values& v) { v.convert24Hours = u"25"; }, Field::Convert24Hours,
         u"Convert full days to hours"},
        {"7.5 hours a day", [](Values& v) { v.convert24Hours = u"7.5"; }, std::nullopt, u""},
        {"lunch not a number", [](Values& v) { v.removeLunchHours = u"half"; },
         Field::RemoveLunchHours, u"Remove lunch"},
        {"negative lunch", [](Values& v) { v.removeLunchHours = u"-1"; }, Field::RemoveLunchHours,
         u"Remove lunch"},
        {"no lunch at all", [](Values& v) { v.removeLunchHours = u"0"; }, std::nullopt, u""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Values v = twoLists();
        c.change(v);
        const SettingsEditor e(v, c.loc, u",");
        const auto r = e.check();
        if (!c.refused) {
            EXPECT_FALSE(r.has_value()) << u8(r->message);
            continue;
        }
        ASSERT_TRUE(r.has_value());
        EXPECT_EQ(r->field, *c.refused);
        EXPECT_NE(r->message.find(c.says), Str::npos) << u8(r->message);
    }
}

TEST(SettingsEditorTest, MnemonicsGoToFirstLettersFirstAndAmpersandsShow) {
    Texts t;
    assignMnemonics(controlTexts(t));
    for (Str* text : controlTexts(t))
        EXPECT_NE(text->find(u'&'), Str::npos) << u8(*text);
    EXPECT_EQ(t.database, u"&Access database folder");
    EXPECT_EQ(t.connection, u"&Connection text");
    EXPECT_EQ(t.lists, u"&Lists");
    EXPECT_EQ(t.privateItems, u"Pr&ivate");  // "P" and "r" taken
    EXPECT_EQ(t.listName, u"Li&st name");    // "L" and "i" taken
    EXPECT_EQ(t.ok, u"OK");                  // Enter

    Str a = u"R&D", b = u"Rates", c = u"ra";
    assignMnemonics({&a, &b, &c});
    EXPECT_EQ(a, u"&R&&D");
    EXPECT_EQ(b, u"R&ates");
    EXPECT_EQ(c, u"&ra");  // nothing free: shares the first letter's key
}

TEST(SettingsEditorTest, PhrasesReplaceTheEnglishTextsWhereTheTableHasThem) {
    Phrases p;
    p.LNGOK = u"Ok\u00E9";
    p.LNGNODOUBLES = u"Keine Doppelten!";
    const Texts t = textsFrom(p);
    EXPECT_EQ(t.ok, u"Ok\u00E9");
    EXPECT_EQ(t.noDoubles, u"Keine Doppelten!");
    EXPECT_EQ(t.cancel, u"Cancel");  // no phrase: English
    SettingsEditor e(twoLists(), Locale::enUS(), u",", t);
    EXPECT_EQ(e.addEntry(0, u"acme")->message, u"Keine Doppelten! (acme)");
}

}  // namespace
}  // namespace hb::settingsapp
