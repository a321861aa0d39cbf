// The run time's text functions.
#include <gtest/gtest.h>

#include "common/AutomationError.h"
#include "common/Text.h"
#include "support/ErrorOf.h"

namespace hb {
namespace {

using text::Compare;

TEST(Split, KeepsEmptyPiecesButEmptyTextHasNone) {
    EXPECT_TRUE(text::split(u"", u",").empty());
    EXPECT_TRUE(text::split(u"", u"").empty());
    EXPECT_EQ(text::split(u"a,b,c", u","), (std::vector<Str>{u"a", u"b", u"c"}));
    EXPECT_EQ(text::split(u",a,,b,", u","), (std::vector<Str>{u"", u"a", u"", u"b", u""}));
    EXPECT_EQ(text::split(u",", u","), (std::vector<Str>{u"", u""}));
    EXPECT_EQ(text::split(u"abc", u","), (std::vector<Str>{u"abc"}));
    EXPECT_EQ(text::split(u"a\r\nb", u"\r\n"), (std::vector<Str>{u"a", u"b"}));
    EXPECT_EQ(text::split(u"abc", u""), (std::vector<Str>{u"abc"}));
    EXPECT_EQ(text::split(u"aXb", u"x"), (std::vector<Str>{u"aXb"}));  // binary compare
}

TEST(Join, Pieces) {
    EXPECT_EQ(text::join({}, u","), u"");
    EXPECT_EQ(text::join({u"a"}, u","), u"a");
    EXPECT_EQ(text::join({u"a", u"", u"b"}, u";"), u"a;;b");
    EXPECT_EQ(text::join(text::split(u",x,,", u","), u","), u",x,,");
}

TEST(Trim, BlanksOnly) {
    EXPECT_EQ(text::trim(u"  a b  "), u"a b");
    EXPECT_EQ(text::trim(u"\ta\t"), u"\ta\t");
    EXPECT_EQ(text::trim(u"\u00A0a"), u"\u00A0a");
    EXPECT_EQ(text::trim(u"   "), u"");
    EXPECT_EQ(text::ltrim(u"  a  "), u"a  ");
    EXPECT_EQ(text::rtrim(u"  a  "), u"  a");
}

TEST(Replace, AllOccurrences) {
    EXPECT_EQ(text::replace(u"a.b.c", u".", u"::"), u"a::b::c");
    EXPECT_EQ(text::replace(u"aaa", u"aa", u"b"), u"ba");
    EXPECT_EQ(text::replace(u"abc", u"", u"x"), u"abc");
    EXPECT_EQ(text::replace(u"", u"a", u"x"), u"");
    EXPECT_EQ(text::replace(u"OLAP Cubes\\x", u"OLAP Cubes", u"My Hourbooks"), u"My Hourbooks\\x");
    EXPECT_EQ(text::replace(u"Abc aBC", u"abc", u"x"), u"Abc aBC");
    EXPECT_EQ(text::replace(u"Abc aBC", u"abc", u"x", Compare::Text), u"x x");
    EXPECT_EQ(text::replace(u"it's 'q'", u"'", u""), u"its q");
}

TEST(Find, InStr) {
    EXPECT_EQ(text::find(u"abcabc", u"c"), 3);
    EXPECT_EQ(text::find(u"abcabc", u"c", Compare::Binary, 4), 6);
    EXPECT_EQ(text::find(u"abcabc", u"C"), 0);
    EXPECT_EQ(text::find(u"abcabc", u"C", Compare::Text), 3);
    EXPECT_EQ(text::find(u"ÄÖÜ straße", u"äöü", Compare::Text), 1);
    EXPECT_EQ(text::find(u"ΑΒΓ", u"βγ", Compare::Text), 2);
    EXPECT_EQ(text::find(u"ПРИВЕТ", u"вет", Compare::Text), 4);
    EXPECT_EQ(text::find(u"abc", u"x"), 0);
    EXPECT_EQ(text::find(u"", u"x"), 0);
    EXPECT_EQ(text::find(u"abc", u"abcd"), 0);
    EXPECT_EQ(text::find(u"abc", u"c", Compare::Binary, 4), 0);
    // An empty find gives start while start <= length + 1.
    EXPECT_EQ(text::find(u"abc", u""), 1);
    EXPECT_EQ(text::find(u"abc", u"", Compare::Binary, 4), 4);
    EXPECT_EQ(text::find(u"abc", u"", Compare::Binary, 5), 0);
    EXPECT_EQ(text::find(u"", u""), 1);
    EXPECT_EQ(errorOf([] { text::find(u"abc", u"a", Compare::Binary, 0); }), 5);
}

TEST(Pieces, LeftRightMid) {
    EXPECT_EQ(text::left(u"abcdef", 2), u"ab");
    EXPECT_EQ(text::left(u"ab", 5), u"ab");
    EXPECT_EQ(text::left(u"ab", 0), u"");
    EXPECT_EQ(text::right(u"abcdef", 2), u"ef");
    EXPECT_EQ(text::right(u"ab", 5), u"ab");
    EXPECT_EQ(text::mid(u"abcdef", 2), u"bcdef");
    EXPECT_EQ(text::mid(u"abcdef", 2, 3), u"bcd");
    EXPECT_EQ(text::mid(u"abcdef", 5, 10), u"ef");
    EXPECT_EQ(text::mid(u"abcdef", 7), u"");
    EXPECT_EQ(text::mid(u"abcdef", 100, 1), u"");
    EXPECT_EQ(text::mid(u"abcdef", 1, 0), u"");
    EXPECT_EQ(errorOf([] { text::mid(u"abc", 0); }), 5);
    EXPECT_EQ(errorOf([] { text::mid(u"abc", -1, 1); }), 5);
    EXPECT_EQ(errorOf([] { text::mid(u"abc", 1, -1); }), 5);
    EXPECT_EQ(errorOf([] { text::left(u"abc", -1); }), 5);
    EXPECT_EQ(errorOf([] { text::right(u"abc", -1); }), 5);
    try {
        text::mid(u"abc", 0);
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.description(), u"Invalid procedure call or argument");
    }
}

TEST(Case, UpperLowerFold) {
    EXPECT_EQ(text::upper(u"abc xyz 123"), u"ABC XYZ 123");
    EXPECT_EQ(text::lower(u"ABC XYZ 123"), u"abc xyz 123");
    EXPECT_EQ(text::upper(u"àéîõüçñÿ"), u"ÀÉÎÕÜÇÑŸ");
    EXPECT_EQ(text::lower(u"ÀÉÎÕÜÇÑŸ"), u"àéîõüçñÿ");
    EXPECT_EQ(text::upper(u"÷×ß"), u"÷×ß");
    EXPECT_EQ(text::upper(u"łźżąęćńśőű"), u"ŁŹŻĄĘĆŃŚŐŰ");
    EXPECT_EQ(text::lower(u"ŁŹŻĄĘĆŃŚŐŰ"), u"łźżąęćńśőű");
    EXPECT_EQ(text::upper(u"αβγδεζηθικλμνξοπρστυφχψω"), u"ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΤΥΦΧΨΩ");
    EXPECT_EQ(text::upper(u"ς"), u"Σ");
    EXPECT_EQ(text::upper(u"άέήίόύώ"), u"ΆΈΉΊΌΎΏ");
    EXPECT_EQ(text::lower(u"ΆΈΉΊΌΎΏ"), u"άέήίόύώ");
    EXPECT_EQ(text::upper(u"абвгдеёжзийклмнопрстуфхцчшщъыьэюя"),
              u"АБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ");
    EXPECT_EQ(text::lower(u"АБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"),
              u"абвгдеёжзийклмнопрстуфхцчшщъыьэюя");
    EXPECT_EQ(text::upper(u"日本"), u"日本");
    EXPECT_TRUE(text::equalsNoCase(u"Straße", u"STRAßE"));
    EXPECT_TRUE(text::equalsNoCase(u"σ", u"ς"));
    EXPECT_TRUE(text::equalsNoCase(u"Ölfeld", u"öLFELD"));
    EXPECT_FALSE(text::equalsNoCase(u"a", u"ab"));
    EXPECT_FALSE(text::equalsNoCase(u"a", u"b"));
    EXPECT_EQ(text::foldCase(u"AbC"), text::foldCase(u"aBc"));
    // Turkish dotted and dotless I are letters of their own: a list entry
    // "Işık" is not "ISIK", "İzmir" is not "izmir" (the system's comparison
    // outside Turkish agrees: tests/win/TextCompareWinTest.cpp).
    EXPECT_FALSE(text::equalsNoCase(u"I\u015F\u0131k", u"ISIK"));
    EXPECT_FALSE(text::equalsNoCase(u"\u0130zmir", u"izmir"));
    EXPECT_FALSE(text::equalsNoCase(u"\u0130", u"\u0131"));
    EXPECT_TRUE(text::equalsNoCase(u"I\u015F\u0131k", u"i\u015E\u0131K"));
    EXPECT_EQ(text::find(u"PIZZA \u0130zmir", u"izmir", text::Compare::Text), 0);
    EXPECT_EQ(text::find(u"PIZZA \u0130zmir", u"pizza", text::Compare::Text), 1);
}

TEST(Misc, AscAndRepeat) {
    EXPECT_EQ(text::asc(u"A"), 65);
    EXPECT_EQ(text::asc(u"€uro"), 0x20AC);
    EXPECT_EQ(errorOf([] { text::asc(u""); }), 5);
    EXPECT_EQ(text::repeat(u'-', 3), u"---");
    EXPECT_EQ(text::repeat(u'-', 0), u"");
}

}  // namespace
}  // namespace hb
