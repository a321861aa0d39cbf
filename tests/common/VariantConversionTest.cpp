// The run time's conversions (CInt, CLng, CCur, CDbl, CBool, CStr, CDate,
// IsNumeric, IsDate) on the automation value, as tables of input and result.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <utility>
#include <variant>
#include <vector>

#include "common/DateTime.h"
#include "common/Object.h"
#include "common/Variant.h"
#include "support/Locales.h"

namespace hb {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::int64_t kI64Max = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kI64Min = std::numeric_limits<std::int64_t>::min();
constexpr std::int32_t kI32Min = std::numeric_limits<std::int32_t>::min();

Locale german() {
    return test::germanLocale();
}

// The user's own regional settings as the system reports them (checked
// against oleaut32 under Wine by tests/win/ConversionOracleWinTest.cpp,
// which covers these and many more in every locale there).
Locale germany() {
    Locale l = german();
    l.currencySymbol = u"\u20AC";
    l.currencyDecimalSeparator = u",";
    l.currencyThousandSeparator = u".";
    l.monthNames = {u"Januar", u"Februar", u"M\u00E4rz", u"April",   u"Mai",      u"Juni",
                    u"Juli",   u"August",  u"September", u"Oktober", u"November", u"Dezember"};
    l.abbreviatedMonthNames = {u"Jan", u"Feb", u"M\u00E4r", u"Apr", u"Mai", u"Jun",
                               u"Jul", u"Aug", u"Sep",      u"Okt", u"Nov", u"Dez"};
    return l;
}

Locale france() {
    Locale l = germany();
    l.thousandSeparator = l.currencyThousandSeparator = u"\u00A0";
    l.shortDate = u"dd/MM/yyyy";
    l.monthNames = {u"janvier",   u"f\u00E9vrier", u"mars",     u"avril",
                    u"mai",       u"juin",         u"juillet",  u"ao\u00FBt",
                    u"septembre", u"octobre",      u"novembre", u"d\u00E9cembre"};
    l.abbreviatedMonthNames = {u"janv.", u"f\u00E9vr.", u"mars",  u"avr.", u"mai",  u"juin",
                               u"juil.", u"ao\u00FBt",  u"sept.", u"oct.", u"nov.", u"d\u00E9c."};
    return l;
}

const Locale kEn = Locale::enUS(), kDe = german(), kDeUser = germany(), kFr = france();

Variant S(const char16_t* s) {
    return Variant(Str(s));
}
Variant D(double days) {
    return Variant(Date{days});
}
Variant C(std::int64_t scaled) {
    return Variant(Currency{scaled});
}
double day(int y, int m, int d, int h = 0, int min = 0, int sec = 0) {
    return dt::serial(y, m, d) + dt::timeFraction(h, min, sec);
}

// A result: the value, or the number of the error the conversion raises.
struct Err {
    std::int32_t number;
};
const Err kOverflow{6}, kMismatch{13}, kNull{94};

template <class T>
struct Row {
    Row(Variant value, T result, const Locale* locale = &kEn)
        : v(std::move(value)), r(std::move(result)), loc(locale) {}
    Row(Variant value, Err error, const Locale* locale = &kEn)
        : v(std::move(value)), r(error), loc(locale) {}
    Variant v;
    std::variant<T, Err> r;
    const Locale* loc;
};

template <class T, class F>
void checkAll(const char* what, const std::vector<Row<T>>& rows, F convert) {
    for (const Row<T>& row : rows) {
        SCOPED_TRACE(std::string(what) + "(" + debugString(row.v) + ")");
        try {
            const T got = convert(row.v, *row.loc);
            if (const T* want = std::get_if<T>(&row.r)) {
                EXPECT_EQ(got, *want);
            } else {
                ADD_FAILURE() << "raised nothing";
            }
        } catch (const AutomationError& e) {
            if (const Err* want = std::get_if<Err>(&row.r)) {
                EXPECT_EQ(e.number(), want->number) << e.what();
            } else {
                ADD_FAILURE() << "raised " << e.number() << " " << e.what();
            }
        }
    }
}

// The tables below are laid out by hand, several cases to a line.
// clang-format off

TEST(Conversions, CIntHalvesToEvenOverflowsPast16BitsAndReadsText) {
    checkAll<std::int16_t>("CInt", {
        {Variant(12.5), 12}, {Variant(13.5), 14}, {Variant(-2.5), -2}, {Variant(-3.5), -4},
        {Variant(0.5), 0}, {Variant(1.5), 2}, {Variant(2.4999), 2}, {Variant(2.5001), 3},
        {Variant(-0.4), 0}, {Variant(32767.0), 32767}, {Variant(-32768.0), -32768},
        {Variant(32767.49), 32767}, {Variant(-32768.5), -32768}, {Variant(32767.5), kOverflow},
        {Variant(32768.0), kOverflow}, {Variant(-32769.0), kOverflow},
        {Variant(std::int32_t{40000}), kOverflow}, {Variant(1e300), kOverflow},
        {Variant(kNaN), kOverflow}, {Variant(), 0}, {Variant(true), -1}, {Variant(false), 0},
        {Variant(std::int16_t{-7}), -7}, {Variant(std::int32_t{1234}), 1234}, {C(125000), 12},
        {C(135000), 14}, {C(-25000), -2}, {C(-35000), -4}, {C(125001), 13}, {D(2.5), 2},
        {D(3.75), 4}, {Variant::null(), kNull}, {Variant::nothing(), kMismatch},
        {Variant::missing(), kMismatch}, {S(u"12"), 12}, {S(u"  12 "), 12}, {S(u"+12"), 12},
        {S(u"-12"), -12}, {S(u"12.5"), 12}, {S(u"13.5"), 14}, {S(u"-2.5"), -2},
        {S(u"2.50000000000000000001"), 3}, {S(u"1,000"), 1000}, {S(u"1E3"), 1000},
        {S(u"1.5e1"), 15}, {S(u"&H1F"), 31}, {S(u"&h1f"), 31}, {S(u"&O17"), 15},
        {S(u"&HFFFF"), -1}, {S(u"(5)"), -5}, {S(u".5"), 0}, {S(u"5."), 5},
        {S(u"32768"), kOverflow}, {S(u"&H10000"), kOverflow}, {S(u""), kMismatch},
        {S(u"   "), kMismatch}, {S(u"abc"), kMismatch}, {S(u"12abc"), kMismatch},
        {S(u"1 2"), kMismatch}, {S(u"1E"), kMismatch}, {S(u"--1"), kMismatch},
        {S(u"."), kMismatch}, {S(u"True"), kMismatch}, {S(u"&H"), kMismatch},
        {S(u"&HG"), kMismatch}, {S(u"12,5"), 12, &kDe}, {S(u"13,5"), 14, &kDe},
        {S(u"1.000"), 1000, &kDe}, {S(u"1.000,5"), 1000, &kDe}, {S(u"1,2,3"), kMismatch, &kDe},
        // 0.49999999999999994 is just below one half: a rounding that adds
        // 0.5 first (some C libraries' round) makes it 1.
        {Variant(0.49999999999999994), 0}, {Variant(0.5000000000000001), 1}},
        [](const Variant& v, const Locale& l) { return v.toInteger(l); });
    try {
        Variant(1e6).toInteger();
        ADD_FAILURE() << "no overflow";
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.description(), u"Overflow");
    }
}

TEST(Conversions, CLngAndCDbl) {
    checkAll<std::int32_t>("CLng", {
        {Variant(2147483647.0), 2147483647}, {Variant(-2147483648.0), kI32Min},
        {Variant(2147483646.5), 2147483646}, {Variant(2147483647.5), kOverflow},
        {Variant(-2147483649.0), kOverflow}, {Variant(40000.5), 40000},
        {Variant(40001.5), 40002}, {S(u"&HFFFF"), 65535}, {S(u"&HFFFFFFFF"), -1},
        {S(u"&H7FFFFFFF"), 2147483647}, {S(u"&H100000000"), kOverflow},
        {S(u"1,234,567"), 1234567}, {S(u"2147483648"), kOverflow}, {S(u"-2147483648"), kI32Min},
        {C(-1234567895000), -123456790}, {Variant(true), -1}, {Variant::null(), kNull},
        {S(u"x"), kMismatch}, {Variant(-0.49999999999999994), 0}},
        [](const Variant& v, const Locale& l) { return v.toLong(l); });
    checkAll<double>("CDbl", {
        {Variant(), 0.0}, {Variant(true), -1.0}, {Variant(std::int16_t{3}), 3.0},
        {C(12345), 1.2345}, {D(54789.5), 54789.5}, {S(u"0.1"), 0.1}, {S(u" -1.5E-3 "), -0.0015},
        {S(u"1,234.5"), 1234.5}, {S(u"&H10"), 16.0}, {S(u"1234,5"), 1234.5, &kDe},
        {S(u"1.234,5"), 1234.5, &kDe},
        // "." groups thousands in German, also after the decimal comma.
        {S(u"1234.5"), 12345.0, &kDe}, {S(u"1,2.3"), 1.23, &kDe}, {S(u"1E400"), kOverflow},
        {S(u"x1"), kMismatch}, {Variant::null(), kNull},
        // Hexadecimal text is a 32-bit signed value, as for CLng.
        {S(u"&H80000000"), -2147483648.0}, {S(u"&HFFFFFFFF"), -1.0},
        {S(u"&H7FFFFFFF"), 2147483647.0}, {S(u"&H100000000"), kOverflow}},
        [](const Variant& v, const Locale& l) { return v.toDouble(l); });
}

TEST(Conversions, CCurFourDecimalsHalfToEvenFromTheExactValue) {
    checkAll<std::int64_t>("CCur", {
        {Variant(1.5), 15000}, {S(u"1.23455"), 12346}, {S(u"1.23445"), 12344},
        {S(u"1.234451"), 12345}, {S(u"-1.23445"), -12344}, {S(u"-1.23455"), -12346},
        {S(u"0.00005"), 0}, {S(u"0.00015"), 2}, {Variant(0.125), 1250}, {Variant(-2.75), -27500},
        {Variant(std::int32_t{-3}), -30000}, {Variant(true), -10000},
        {S(u"922337203685477.5807"), kI64Max}, {S(u"-922337203685477.5808"), kI64Min},
        {S(u"922337203685477.5808"), kOverflow}, {Variant(1e16), kOverflow},
        {Variant(-1e16), kOverflow}, {S(u"1e30"), kOverflow}, {S(u"abc"), kMismatch},
        {Variant::null(), kNull}, {S(u"12,5"), 125000, &kDe},
        // The double's exact value rounded to four decimals, not value x
        // 10000 rounded on the way.
        {Variant(922337203685477.0), 9223372036854770000}, {Variant(0.00025), 3},
        {Variant(0.00015), 1}, {Variant(-2.5), -25000}, {Variant(922337203685477.625), kOverflow},
        {Variant(kInf), kOverflow}, {S(u"&HFFFFFFFF"), -10000}, {S(u"&H100000000"), kOverflow}},
        [](const Variant& v, const Locale& l) { return v.toCurrency(l).scaled; });
}

TEST(Conversions, UserInputWithCurrencySignsSpacesAndTrailingMinus) {
    const std::vector<Row<std::int64_t>> rows = {
        {S(u"\u20AC5"), 50000, &kDeUser}, {S(u"12,50 \u20AC"), 125000, &kDeUser},
        {S(u"12,50\u20AC"), 125000, &kFr}, {S(u"$5"), 50000}, {S(u"5 $"), 50000},
        {S(u"$5"), kMismatch, &kDeUser}, {S(u"\u20AC5"), kMismatch},
        {S(u"1 000,5"), 10005000, &kFr}, {S(u"1\u00A0000,5"), 10005000, &kFr},
        {S(u"1 000,5"), kMismatch, &kDeUser}, {S(u"3-"), -30000}, {S(u"3 -"), -30000, &kDeUser},
        {S(u"(3-)"), -30000}, {S(u"(-3)"), -30000}, {S(u"1,000.5"), 10005000},
        {S(u"1.000,5"), 10005000, &kDeUser}, {S(u"1,5.25"), 15250, &kDeUser},
        {S(u"1D3"), kMismatch}, {S(u"&17"), kMismatch}, {S(u"$1E3"), kMismatch}};
    checkAll<std::int64_t>("CCur", rows,
        [](const Variant& v, const Locale& l) { return v.toCurrency(l).scaled; });
    for (const auto& row : rows) {
        const auto* scaled = std::get_if<std::int64_t>(&row.r);
        EXPECT_EQ(isNumeric(row.v, *row.loc), scaled != nullptr) << debugString(row.v);
        if (scaled) {
            EXPECT_EQ(row.v.toDouble(*row.loc), static_cast<double>(*scaled) / 10000);
        }
    }
}

TEST(Conversions, CBoolAndCStr) {
    checkAll<bool>("CBool", {
        {Variant(), false}, {Variant(0.0), false}, {Variant(0.1), true}, {Variant(-1.0), true},
        {Variant(std::int16_t{2}), true}, {Variant(std::int32_t{0}), false}, {C(1), true},
        {S(u"True"), true}, {S(u"TRUE"), true}, {S(u"tRuE"), true}, {S(u"False"), false},
        {S(u"false"), false}, {S(u"0"), false}, {S(u"-1"), true}, {S(u" 2.5 "), true},
        {S(u"0.0"), false}, {S(u"yes"), kMismatch}, {S(u""), kMismatch},
        {S(u"Truee"), kMismatch}, {Variant::null(), kNull}, {Variant::nothing(), kMismatch},
        // As the run time writes them to files; only so.
        {S(u"#TRUE#"), true}, {S(u"#FALSE#"), false}, {S(u"#true#"), kMismatch},
        {S(u" #TRUE#"), kMismatch},
        // Numbers count by their Double: beyond its range they overflow, below
        // its smallest value they are zero; hexadecimal text is 32 bits.
        {S(u"1E400"), kOverflow}, {S(u"2e308"), kOverflow}, {S(u"1E-400"), false},
        {S(u"&H80000000"), true}, {S(u"&H100000000"), kOverflow}},
        [](const Variant& v, const Locale& l) { return v.toBool(l); });
    const double d = dt::serial(2024, 3, 5);
    Locale iso;
    iso.shortDate = u"yyyy-MM-dd";
    iso.longTime = u"HH:mm:ss";
    Locale quoted;
    quoted.shortDate = u"dddd, d 'de' MMMM yyyy";
    checkAll<Str>("CStr", {
        {Variant(), u""}, {Variant(true), u"True"}, {Variant(false), u"False"},
        {Variant(std::int16_t{-12}), u"-12"}, {Variant(std::int32_t{123456}), u"123456"},
        {S(u"text"), u"text"}, {Variant::null(), kNull}, {Variant::nothing(), kMismatch},
        // Doubles: 15 significant digits, an exponent from 1E+15 and below 1E-4.
        {Variant(0.0), u"0"}, {Variant(0.75), u"0.75"}, {Variant(-12.5), u"-12.5"},
        {Variant(100.0), u"100"}, {Variant(0.1 + 0.2), u"0.3"},
        {Variant(1.0 / 3.0), u"0.333333333333333"}, {Variant(2.0 / 3.0), u"0.666666666666667"},
        {Variant(123456789012345.0), u"123456789012345"}, {Variant(1e15), u"1E+15"},
        {Variant(1.5e20), u"1.5E+20"}, {Variant(123456789012345678.0), u"1.23456789012346E+17"},
        {Variant(0.0001), u"0.0001"}, {Variant(0.00001), u"1E-05"},
        {Variant(-1.5e-5), u"-1.5E-05"}, {Variant(1e-100), u"1E-100"},
        {Variant(12.5), u"12,5", &kDe}, {Variant(1.5e20), u"1,5E+20", &kDe},
        {C(125000), u"12.5"}, {C(0), u"0"}, {C(10000), u"1"}, {C(1), u"0.0001"},
        {C(-5000), u"-0.5"}, {C(12345), u"1,2345", &kDe}, {C(kI64Min), u"-922337203685477.5808"},
        // Dates: no time at midnight, no date on day 0.
        {D(d), u"3/5/2024"}, {D(d + 0.5), u"3/5/2024 12:00:00 PM"},
        {D(day(2024, 3, 5, 9, 5, 7)), u"3/5/2024 9:05:07 AM"},
        {D(day(2024, 3, 5, 0, 30)), u"3/5/2024 12:30:00 AM"},
        {D(dt::timeFraction(13, 45, 0)), u"1:45:00 PM"}, {D(0.0), u"12:00:00 AM"},
        {D(1.0), u"12/31/1899"}, {D(-1.25), u"12/29/1899 6:00:00 AM"},
        {D(d + 0.75), u"2024-03-05 18:00:00", &iso}, {D(d), u"Tuesday, 5 de March 2024", &quoted},
        {D(day(2024, 3, 5, 13, 45)), u"05.03.2024 13:45:00", &kDe}, {D(d), u"05.03.2024", &kDe}},
        [](const Variant& v, const Locale& l) { return v.toStr(l); });
}

TEST(Conversions, SerialDaysAndTheirParts) {
    const std::pair<double, double> serials[] = {
        {dt::serial(1899, 12, 30), 0.0}, {dt::serial(1899, 12, 31), 1.0},
        {dt::serial(1900, 1, 1), 2.0}, {dt::serial(2050, 1, 1), 54789.0},
        {dt::serial(4501, 1, 1), 949998.0}, {dt::serial(1899, 12, 29), -1.0},
        {dt::serial(100, 1, 1), -657434.0}, {dt::serial(9999, 12, 31), 2958465.0}};
    for (const auto& [got, want] : serials)
        EXPECT_EQ(got, want);
    dt::Parts p = dt::toParts(54789.75);
    EXPECT_EQ(std::vector<int>({p.year, p.month, p.day, p.hour}), std::vector<int>({2050, 1, 1, 18}));
    // Before 1899: the whole part backwards, the fraction forwards.
    p = dt::toParts(-1.25);
    EXPECT_EQ(std::vector<int>({p.day, p.hour}), std::vector<int>({29, 6}));
    EXPECT_EQ(dt::fromParts(p), -1.25);
    // Rounding to the second carries into the next day.
    p = dt::toParts(2.0 - 1e-7);
    EXPECT_EQ(std::vector<int>({p.month, p.day, p.hour}), std::vector<int>({1, 1, 0}));
}

TEST(Conversions, CDateFromNumbersAndTexts) {
    checkAll<double>("CDate", {
        {Variant(54789.0), 54789.0}, {Variant(std::int32_t{3}), 3.0}, {Variant(), 0.0},
        {Variant(1e10), kOverflow}, {Variant::null(), kNull}, {S(u"1/1/2050"), 54789.0},
        {S(u"01/01/2050"), 54789.0}, {S(u"1/1/4501"), 949998.0}, {S(u"2050-01-01"), 54789.0},
        {S(u"1 January 2050"), 54789.0}, {S(u"Jan 1, 2050"), 54789.0},
        {S(u"3/5/2024 1:45:00 PM"), day(2024, 3, 5, 13, 45)},
        {S(u"3/5/2024 13:45"), day(2024, 3, 5, 13, 45)}, {S(u"12:00:00 AM"), 0.0},
        {S(u"12:30 PM"), dt::timeFraction(12, 30, 0)}, {S(u"3 PM"), dt::timeFraction(15, 0, 0)},
        {S(u"3/5/24"), day(2024, 3, 5)}, {S(u"3/5/45"), day(1945, 3, 5)},
        // Month and day swap when only that makes a date.
        {S(u"13/1/2020"), day(2020, 1, 13)},
        // A point separates dates only where the locale writes them with it;
        // elsewhere hours and minutes.
        {S(u"10.30"), dt::timeFraction(10, 30, 0)}, {S(u"5.3.2024"), day(2024, 3, 5), &kDe},
        {S(u"05.03.2024 13:45:00"), day(2024, 3, 5, 13, 45), &kDe}, {S(u"hello"), kMismatch},
        {S(u""), kMismatch}, {S(u"12"), kMismatch}, {S(u"2/30/2024"), kMismatch},
        {S(u"25:00"), kMismatch}, {S(u"13:00 PM"), kMismatch}, {S(u"1/2/3/4"), kMismatch},
        // Month names in the user's language, the abbreviation with its point.
        {S(u"5. Mai 2001"), day(2001, 5, 5), &kDeUser},
        {S(u"5-MAI-2001"), day(2001, 5, 5), &kDeUser},
        {S(u"1 M\u00E4rz 2001"), day(2001, 3, 1), &kDeUser},
        {S(u"1 f\u00E9vrier 2001"), day(2001, 2, 1), &kFr},
        {S(u"1 f\u00E9vr. 2001"), day(2001, 2, 1), &kFr}, {S(u"1 feb 2001"), day(2001, 2, 1)},
        {S(u"1 February 2001"), kMismatch, &kDeUser}, {S(u"1 fevrier 2001"), kMismatch, &kFr}},
        [](const Variant& v, const Locale& l) { return v.toDate(l).days; });
    Locale iso;
    iso.shortDate = u"yyyy-MM-dd";
    iso.longTime = u"HH:mm:ss";
    EXPECT_EQ(S(u"2024-03-05 18:00:00").toDate(iso).days, day(2024, 3, 5, 18));
    for (double d : {day(2024, 2, 29), day(2024, 2, 29, 18), dt::timeFraction(23, 59, 59),
                     day(1950, 12, 31, 6)}) {
        for (const Locale* loc : {&kEn, &kDe}) {
            const Str text = Variant(Date{d}).toStr(*loc);
            EXPECT_DOUBLE_EQ(Variant(text).toDate(*loc).days, d) << toUtf8(text);
        }
    }
}

TEST(Conversions, IsNumericAndIsDate) {
    checkAll<bool>("IsNumeric", {
        {Variant(), true},  // as the run time: IsNumeric(Empty) is True
        {Variant::null(), false}, {Variant(true), true}, {Variant(1.5), true}, {C(1), true},
        {D(1.0), false}, {Variant::nothing(), false}, {Variant::missing(), false},
        {S(u""), false}, {S(u" "), false}, {S(u"  12 "), true}, {S(u"-12.5"), true},
        {S(u"+.5"), true}, {S(u"1,000"), true}, {S(u"1e-3"), true}, {S(u"&H10"), true},
        {S(u"&O17"), true}, {S(u"&H100000000"), false}, {S(u"1E400"), false}, {S(u"12a"), false}, {S(u"1.2.3"), false},
        {S(u"-"), false}, {S(u"True"), false}, {S(u",5"), false}, {S(u"1,5"), true, &kDe},
        {S(u"1.000,5"), true, &kDe}, {S(u"1,000.5"), true, &kDe}, {S(u"1,000,5"), false, &kDe}},
        [](const Variant& v, const Locale& l) { return isNumeric(v, l); });
    checkAll<bool>("IsDate", {
        {D(1.0), true}, {S(u"1/1/2050"), true}, {S(u"13:45"), true}, {S(u"12"), false},
        {S(u"abc"), false}, {Variant(1.0), false}, {Variant(), false},
        {S(u"31.12.2024"), false}, {S(u"31.12.2024"), true, &kDe}},
        [](const Variant& v, const Locale& l) { return isDate(v, l); });
}

// clang-format on

TEST(Locale, CurrentIsPerThreadAndSettable) {
    EXPECT_EQ(Locale::current().decimalSeparator, u".");
    Locale::setCurrent(german());
    EXPECT_EQ(Variant(12.5).toStr(), u"12,5");
    EXPECT_EQ(S(u"1,5").toDouble(), 1.5);
    Locale::setCurrent(Locale::enUS());
    EXPECT_EQ(Variant(12.5).toStr(), u"12.5");
    EXPECT_EQ(Locale::enUS().shortDate, u"M/d/yyyy");
    EXPECT_EQ(Locale::enUS().longTime, u"h:mm:ss tt");
}

}  // namespace
}  // namespace hb
