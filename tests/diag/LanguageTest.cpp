// The phrase table: language choice, reading the LANGUAGE resource, the
// phrase collection and the phrase variables.
#include <gtest/gtest.h>
#include "tests/support/ShippedLanguage.h"

#include <fstream>
#include <iterator>

#include "diag/DiagSupport.h"
#include "diagnostics/modErroHandling.h"
#include "languages/PhraseCollection.h"
#include "languages/cPhrase.h"
#include "languages/modMultiLanguage.h"

namespace hbtest {
namespace {

using namespace hb::lang;

// ---- language choice ----

TEST(LanguageChoiceTest, LocaleTable) {
    // clang-format off
    const std::pair<std::uint32_t, std::int16_t> cases[] = {
        {1029, Czech}, {1030, Danish}, {1043, Dutch}, {2067, Dutch}, {1035, Finnish},
        {1036, French}, {2060, French}, {3084, French}, {5132, French}, {4108, French},
        {1031, German}, {3079, German}, {5127, German}, {4103, German}, {2055, German},
        {1032, Greek}, {1040, Italian}, {2064, Italian}, {1044, Norwegian}, {2070, Portuguese},
        {1060, Slovenian}, {3082, Spanish}, {1034, Spanish}, {11274, Spanish}, {16394, Spanish},
        {13322, Spanish}, {9226, Spanish}, {5130, Spanish}, {7178, Spanish}, {12298, Spanish},
        {4106, Spanish}, {18442, Spanish}, {2058, Spanish}, {19466, Spanish}, {6154, Spanish},
        {10250, Spanish}, {20490, Spanish}, {15370, Spanish}, {17418, Spanish}, {14346, Spanish},
        {8202, Spanish}, {1053, Swedish}, {1055, Turkish},
        // The narrow table: these get English.
        {1033, English}, {2057, English}, {1046, English}, {2068, English}, {2077, English},
        {1049, English}, {2073, English}, {1058, English}, {1045, English}, {1041, English},
        {0, English},
        // Sort bits count: German phone book order, Spanish traditional.
        {0x10407, English}, {0x1040A, English},
    };
    // clang-format on
    for (auto [lcid, column] : cases) {
        EXPECT_EQ(hb::languageForLcid(lcid), column) << "locale " << lcid;
    }
}

TEST(LanguageChoiceTest, TheSystemLocaleDecidesNotTheUsers) {
    hb::MemoryPlatform p;
    hb::Session s{p};
    p.setSystemDefaultLcid(1031);
    hb::Locale english = hb::Locale::enUS();
    p.setUserLocale(english);
    EXPECT_EQ(hb::fncGetlocalLanguage(s), German);
    p.setSystemDefaultLcid(1033);
    hb::Locale fr;
    fr.listSeparator = u";";
    p.setUserLocale(fr);
    EXPECT_EQ(hb::fncGetlocalLanguage(s), English);
}

// ---- the phrase collection ----

TEST(PhraseCollectionTest, KeysWithoutRegardToCaseInInsertionOrder) {
    hb::PhraseCollection c;
    auto a = std::make_shared<hb::cPhrase>();
    auto b = std::make_shared<hb::cPhrase>();
    c.add(a, u"LNGZ");
    c.add(b, u"LNGA");
    EXPECT_EQ(c.count(), 2);
    EXPECT_EQ(c.item(u"lngz"), a);
    EXPECT_EQ(c.item(u"LngA"), b);
    EXPECT_EQ(c.item(1), a);
    EXPECT_EQ(c.item(2), b);
    EXPECT_EQ(errorOf([&] { c.add(std::make_shared<hb::cPhrase>(), u"lnga"); }), 457);
    EXPECT_EQ(errorOf([&] { (void)c.item(u"LNGNONE"); }), 5);
    EXPECT_EQ(errorOf([&] { (void)c.item(3); }), 9);
    EXPECT_EQ(c.count(), 2);
    EXPECT_EQ(c.item(u"LNGA"), b);
}

TEST(PhraseCollectionTest, PhraseMembersByName) {
    auto p = std::make_shared<hb::cPhrase>();
    p->put(u"LangConstant", Variant(u"LNGOK"));
    p->put(u"langphrase", Variant(u"OK"));
    EXPECT_EQ(p->LangConstant, u"LNGOK");
    EXPECT_EQ(p->get(u"LangPhrase").toStr(), u"OK");
    EXPECT_EQ(p->typeName(), u"cPhrase");
    EXPECT_THROW(p->get(u"Caption"), hb::AutomationError);
}

// ---- reading the table ----

class ReadPhrasesTest : public DiagTest {
  protected:
    Str phrase(const Str& key) { return s.colPhrases->item(key)->LangPhrase; }
    std::vector<Str> keys() {
        std::vector<Str> out;
        for (const auto& p : *s.colPhrases)
            out.push_back(p->LangConstant);
        return out;
    }
};

TEST_F(ReadPhrasesTest, ChosenColumnEnglishFallbackAndReportedLines) {
    struct Case {
        const char* what;
        std::vector<Str> lines;  // none: no resource
        std::int16_t language;
        std::vector<std::pair<Str, Str>> phrases;  // the keys in order, their texts
        Str reported;                              // the error number in the one report, or none
    } cases[] = {
        {"chosen column, English fallback",
         {tableLine(u"LNGABOUT", {{4, u"About"}, {7, u"Info"}}),
          tableLine(u"LNGADD", {{4, u"Add"}}), tableLine(u"LNGALL", {})},
         German,
         {{u"LNGABOUT", u"Info"}, {u"LNGADD", u"Add"}, {u"LNGALL", u""}},
         u""},
        {"short line keeps the previous text",
         {tableLine(u"LNGABOUT", {{4, u"About"}, {7, u"Info"}}),
          u"LNGADD\tPridat\tTilfoej\tToevoegen\tAdd",  // five fields: no German
          tableLine(u"LNGALL", {{4, u"All"}, {7, u"Alle"}})},
         German,
         {{u"LNGABOUT", u"Info"}, {u"LNGADD", u"Info"}, {u"LNGALL", u"Alle"}},
         u"\r\n#9\r\n"},
        {"repeated key: the first stays",
         {tableLine(u"LNGOK", {{4, u"OK"}}), tableLine(u"lngok", {{4, u"Okay"}}),
          tableLine(u"LNGTO", {{4, u"To"}})},
         English,
         {{u"LNGOK", u"OK"}, {u"LNGTO", u"To"}},
         u"\r\n#457\r\n"},
        {"no resource", {}, English, {}, u" : subReadPhrases \r\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        DiagEnv env;
        if (!c.lines.empty()) env.setLanguageTable(tableText(c.lines));
        hb::subReadPhrases(env.s, c.language, false);
        ASSERT_TRUE(env.s.colPhrases);
        std::vector<std::pair<Str, Str>> got;
        for (const auto& p : *env.s.colPhrases)
            got.emplace_back(p->LangConstant, p->LangPhrase);
        EXPECT_EQ(got, c.phrases);
        if (c.reported.empty()) {
            EXPECT_TRUE(env.boxes().empty());
            EXPECT_EQ(hb::fncGetLastTrace(env.s), u"Reading language phrases from resource file");
        } else {
            ASSERT_EQ(env.boxes().size(), 1u);
            EXPECT_NE(env.boxes()[0].text.find(c.reported), Str::npos);
            EXPECT_NE(env.boxes()[0].text.find(u" : subReadPhrases \r\n"), Str::npos);
        }
    }
}

TEST_F(ReadPhrasesTest, LeadingMarkOrQuestionMarkAndTheUnterminatedLastLine) {
    // The first character of the text and of each key is dropped when it
    // reads as "?" through the ANSI character code: the byte-order mark and
    // a real "?" alike, one character only. The text after the last CR LF
    // is no line.
    struct Case {
        Str table;
        bool bom;
        std::vector<Str> keys;
        Str firstPhrase;
    } cases[] = {
        {tableText({tableLine(u"LNGABOUT", {{4, u"About"}})}), true, {u"LNGABOUT"}, u"About"},
        {tableText({tableLine(u"LNGABOUT", {{4, u"About"}})}), false, {u"LNGABOUT"}, u"About"},
        {u"?" +
             tableText({tableLine(u"?LNGA", {{4, u"A?"}}), tableLine(u"\uFEFFLNGB", {{4, u"B"}})}),
         false,
         {u"LNGA", u"LNGB"},
         u"A?"},
        // The mark goes with the text, the "?" with the key.
        {tableText({tableLine(u"?LNGA", {{4, u"A"}})}), true, {u"LNGA"}, u"A"},
        {tableText({tableLine(u"LNGABOUT", {{4, u"About"}}), tableLine(u"LNGADD", {{4, u"Add"}})},
                   false),
         true,
         {u"LNGABOUT"},
         u"About"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(hb::toUtf8(c.table));
        setLanguageTable(c.table, c.bom);
        hb::subReadPhrases(s, English, false);
        EXPECT_EQ(keys(), c.keys);
        EXPECT_EQ(phrase(c.keys[0]), c.firstPhrase);
        EXPECT_TRUE(boxes().empty());
    }
}

TEST_F(ReadPhrasesTest, ApostrophesRemovedDoubleQuotesKept) {
    setLanguageTable(tableText({
        tableLine(u"LNGHIDEPERSONALMORE", {{4, u"Hide 'More' in personal settings"},
                                           {6, u"Masquer « Plus » dans l'aperçu d'aujourd'hui"}}),
        tableLine(u"LNGERRCHART", {{4,
                                    u"\"Unable to set that chart type for this chart!\" & "
                                    u"vbCrLf & \"Please select another type.\""}}),
        // The lines are split before the apostrophes go: CR ' LF in a text
        // becomes a line break inside the phrase (found by the fuzzer).
        tableLine(u"LNGTWOLINES", {{4, u"One\r'\nTwo"}}),
    }));
    hb::subReadPhrases(s, French, false);
    EXPECT_EQ(phrase(u"LNGHIDEPERSONALMORE"), u"Masquer « Plus » dans laperçu daujourdhui");
    EXPECT_EQ(phrase(u"LNGERRCHART"),
              u"\"Unable to set that chart type for this chart!\" & "
              u"vbCrLf & \"Please select another type.\"");
    hb::subReadPhrases(s, English, false);
    EXPECT_EQ(phrase(u"LNGHIDEPERSONALMORE"), u"Hide More in personal settings");
    EXPECT_EQ(phrase(u"LNGTWOLINES"), u"One\r\nTwo");
    EXPECT_EQ(keys().size(), 3u);
}

TEST_F(ReadPhrasesTest, EachLoadMakesANewCollection) {
    setLanguageTable(tableText({tableLine(u"LNGOK", {{4, u"OK"}})}));
    hb::subReadPhrases(s, English, false);
    auto first = s.colPhrases;
    hb::subReadPhrases(s, English, false);
    EXPECT_NE(s.colPhrases, first);
    EXPECT_EQ(s.colPhrases->count(), 1);
    EXPECT_TRUE(boxes().empty());
}

TEST_F(ReadPhrasesTest, AnsiText) {
    const std::string ansi = "\x3FLNGOK\t\t\t\tOK\t\t\t\xC4nderung \x80\r\n";
    platform.setResource(u"CUSTOM", u"LANGUAGE",
                         std::vector<std::uint8_t>(ansi.begin(), ansi.end()));
    hb::subReadPhrases(s, German, true);
    EXPECT_EQ(keys(), std::vector<Str>{u"LNGOK"});
    EXPECT_EQ(phrase(u"LNGOK"), u"\u00C4nderung \u20AC");
}

// ---- filling the phrase variables ----

TEST_F(ReadPhrasesTest, LoadLanguagesFillsEveryVariable) {
    setLanguageTable(fullEnglishTable());
    hb::LoadLanguages(s, English);
    EXPECT_TRUE(boxes().empty());
    EXPECT_EQ(s.phrases.LNGERRINAPP, u"There has been an error in this application.");
    EXPECT_EQ(s.phrases.LNGABOUT, u"text of LNGABOUT");
    EXPECT_EQ(s.phrases.LNGYEARDEF, u"text of LNGYEARDEF");
    EXPECT_EQ(hb::fncGetLastTrace(s), u"Reading phrases from collection into variables");
}

TEST_F(ReadPhrasesTest, MissingKeyIsReportedAndTheOthersAreRead) {
    std::vector<Str> lines;
    for (const Str& key : allPhraseKeys()) {
        if (key == u"LNGCANCEL") continue;
        lines.push_back(tableLine(key, {{4, u"new " + key}}));
    }
    setLanguageTable(tableText(lines));
    s.phrases.LNGCANCEL = u"earlier";
    hb::LoadLanguages(s, English);
    EXPECT_EQ(s.phrases.LNGCANCEL, u"earlier");
    EXPECT_EQ(s.phrases.LNGBY, u"new LNGBY");
    EXPECT_EQ(s.phrases.LNGCATEGORY, u"new LNGCATEGORY");
    EXPECT_EQ(s.phrases.LNGYEARDEF, u"new LNGYEARDEF");
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_NE(boxes()[0].text.find(u"\r\n#5\r\n"), Str::npos);
    EXPECT_NE(boxes()[0].text.find(u" : LoadLanguages \r\n"), Str::npos);
    // The report is built with the phrases read before the failing key.
    EXPECT_EQ(boxes()[0].text.rfind(u" Hourbook for Outlook Addin v4 (", 0), 0u);
}

// ---- the shipped table ----

#ifdef HB_LANGUAGE_FILE
const std::vector<std::uint8_t>& shippedTable() {
    return hbtest::shippedLanguageResource();
}

class ShippedTableTest : public DiagTest {
  protected:
    ShippedTableTest() { platform.setResource(u"CUSTOM", u"LANGUAGE", shippedTable()); }
};

TEST_F(ShippedTableTest, Format) {
    const auto bytes = shippedTable();
    ASSERT_GE(bytes.size(), 6u);
    EXPECT_EQ(bytes[0], 0xFF);
    EXPECT_EQ(bytes[1], 0xFE);
    EXPECT_EQ(bytes.size() % 2, 0u);
    // The last line ends with CR LF.
    const std::size_t n = bytes.size();
    EXPECT_EQ(bytes[n - 4], '\r');
    EXPECT_EQ(bytes[n - 3], 0);
    EXPECT_EQ(bytes[n - 2], '\n');
    EXPECT_EQ(bytes[n - 1], 0);
}

TEST_F(ShippedTableTest, EveryKeyLoadsInEverySelectableColumn) {
    const std::vector<Str> keys = allPhraseKeys();
    for (std::int16_t column = Czech; column <= Turkish; ++column) {
        hb::Session fresh{platform};
        hb::LoadLanguages(fresh, column);
        ASSERT_TRUE(platform.messageBoxes().empty())
            << "column " << column << ": " << hb::toUtf8(platform.messageBoxes()[0].text);
        ASSERT_TRUE(fresh.colPhrases);
        EXPECT_EQ(fresh.colPhrases->count(), static_cast<std::int32_t>(keys.size()));
        for (const Str& key : keys) {
            EXPECT_FALSE(fresh.colPhrases->item(key)->LangPhrase.empty())
                << "column " << column << " key " << hb::toUtf8(key);
        }
        EXPECT_EQ(fresh.colPhrases->item(1)->LangConstant, u"LNGABOUT");
    }
}

TEST_F(ShippedTableTest, TheSystemLocaleChoosesTheTexts) {
    platform.setSystemDefaultLcid(1046);  // Brazil: English
    hb::LoadLanguages(s, hb::fncGetlocalLanguage(s));
    const hb::Phrases& p = s.phrases;
    EXPECT_EQ(p.LNGADD, u"Add");
    EXPECT_EQ(p.LNGERRINAPP, u"There has been an error in this application.");
    // Apostrophes never reach the user; the literal marker stays as it stands.
    EXPECT_EQ(p.LNGHIDEPERSONALMORE, u"Hide More in personal settings");
    EXPECT_EQ(p.LNGERRCHART,
              u"Unable to set that chart type for this chart!\" & vbCrLf & "
              u"\"Please select another type.");
    EXPECT_NE(p.LNGSENDMEEMAIL.find(hb::kSupportEmail), Str::npos);

    hb::Session germany{platform};
    platform.setSystemDefaultLcid(1031);
    hb::LoadLanguages(germany, hb::fncGetlocalLanguage(germany));
    EXPECT_EQ(germany.phrases.LNGADD, u"Hinzufügen");
    EXPECT_EQ(germany.phrases.LNGREPORT, germany.colPhrases->item(u"LNGREPORT")->LangPhrase);
    EXPECT_NE(germany.phrases.LNGERRINAPP, p.LNGERRINAPP);
    EXPECT_TRUE(boxes().empty());
}
#endif

}  // namespace
}  // namespace hbtest
