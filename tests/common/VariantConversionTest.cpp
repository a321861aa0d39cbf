// The run time's conversions (CInt, CLng, CCur, CDbl, CBool, CStr, CDate,
// IsNumeric, IsDate) on the automation value.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "common/DateTime.h"
#include "common/Object.h"
#include "common/Variant.h"

namespace hb {
namespace {

// Expects the statement to raise the automation error with this number.
#define EXPECT_RAISES(statement, expected)                                       \
    do {                                                                         \
        try {                                                                    \
            (void)(statement);                                                   \
            ADD_FAILURE() << #statement << " raised nothing";                    \
        } catch (const AutomationError& e) {                                     \
            EXPECT_EQ(e.number(), (expected)) << #statement << ": " << e.what(); \
        }                                                                        \
    } while (0)

Locale german() {
    Locale l;
    l.decimalSeparator = u",";
    l.thousandSeparator = u".";
    l.listSeparator = u";";
    l.shortDate = u"dd.MM.yyyy";
    l.longTime = u"HH:mm:ss";
    return l;
}

Variant S(const char16_t* s) {
    return Variant(Str(s));
}

// ---- CInt ----------------------------------------------------------------

TEST(CInt, RoundsHalfToEven) {
    EXPECT_EQ(Variant(12.5).toInteger(), 12);
    EXPECT_EQ(Variant(13.5).toInteger(), 14);
    EXPECT_EQ(Variant(-2.5).toInteger(), -2);
    EXPECT_EQ(Variant(-3.5).toInteger(), -4);
    EXPECT_EQ(Variant(0.5).toInteger(), 0);
    EXPECT_EQ(Variant(1.5).toInteger(), 2);
    EXPECT_EQ(Variant(2.4999).toInteger(), 2);
    EXPECT_EQ(Variant(2.5001).toInteger(), 3);
    EXPECT_EQ(Variant(-0.4).toInteger(), 0);
}

TEST(CInt, OverflowOutsideSixteenBits) {
    EXPECT_EQ(Variant(32767.0).toInteger(), 32767);
    EXPECT_EQ(Variant(-32768.0).toInteger(), -32768);
    EXPECT_EQ(Variant(32767.49).toInteger(), 32767);
    EXPECT_EQ(Variant(-32768.5).toInteger(), -32768);  // even
    EXPECT_RAISES(Variant(32767.5).toInteger(), 6);    // rounds to 32768
    EXPECT_RAISES(Variant(32768.0).toInteger(), 6);
    EXPECT_RAISES(Variant(-32769.0).toInteger(), 6);
    EXPECT_RAISES(Variant(std::int32_t{40000}).toInteger(), 6);
    EXPECT_RAISES(Variant(1e300).toInteger(), 6);
    EXPECT_RAISES(Variant(std::numeric_limits<double>::quiet_NaN()).toInteger(), 6);
    EXPECT_RAISES(S(u"32768").toInteger(), 6);
    try {
        Variant(1e6).toInteger();
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.description(), u"Overflow");
    }
}

TEST(CInt, FromOtherTypes) {
    EXPECT_EQ(Variant().toInteger(), 0);
    EXPECT_EQ(Variant(true).toInteger(), -1);
    EXPECT_EQ(Variant(false).toInteger(), 0);
    EXPECT_EQ(Variant(std::int16_t{-7}).toInteger(), -7);
    EXPECT_EQ(Variant(std::int32_t{1234}).toInteger(), 1234);
    EXPECT_EQ(Variant(Currency{125000}).toInteger(), 12);  // 12.5
    EXPECT_EQ(Variant(Currency{135000}).toInteger(), 14);  // 13.5
    EXPECT_EQ(Variant(Currency{-25000}).toInteger(), -2);  // -2.5
    EXPECT_EQ(Variant(Currency{-35000}).toInteger(), -4);  // -3.5
    EXPECT_EQ(Variant(Currency{125001}).toInteger(), 13);
    EXPECT_EQ(Variant(Date{2.5}).toInteger(), 2);
    EXPECT_EQ(Variant(Date{3.75}).toInteger(), 4);
    EXPECT_RAISES(Variant::null().toInteger(), 94);
    EXPECT_RAISES(Variant::nothing().toInteger(), 13);
    EXPECT_RAISES(Variant::missing().toInteger(), 13);
}

TEST(CInt, FromText) {
    EXPECT_EQ(S(u"12").toInteger(), 12);
    EXPECT_EQ(S(u"  12 ").toInteger(), 12);
    EXPECT_EQ(S(u"+12").toInteger(), 12);
    EXPECT_EQ(S(u"-12").toInteger(), -12);
    EXPECT_EQ(S(u"12.5").toInteger(), 12);
    EXPECT_EQ(S(u"13.5").toInteger(), 14);
    EXPECT_EQ(S(u"-2.5").toInteger(), -2);
    EXPECT_EQ(S(u"2.50000000000000000001").toInteger(), 3);
    EXPECT_EQ(S(u"1,000").toInteger(), 1000);
    EXPECT_EQ(S(u"1E3").toInteger(), 1000);
    EXPECT_EQ(S(u"1.5e1").toInteger(), 15);
    EXPECT_EQ(S(u"&H1F").toInteger(), 31);
    EXPECT_EQ(S(u"&h1f").toInteger(), 31);
    EXPECT_EQ(S(u"&O17").toInteger(), 15);
    EXPECT_EQ(S(u"&HFFFF").toInteger(), -1);
    EXPECT_EQ(S(u"(5)").toInteger(), -5);
    EXPECT_EQ(S(u".5").toInteger(), 0);
    EXPECT_EQ(S(u"5.").toInteger(), 5);
    EXPECT_RAISES(S(u"&H10000").toInteger(), 6);
    EXPECT_RAISES(S(u"").toInteger(), 13);
    EXPECT_RAISES(S(u"   ").toInteger(), 13);
    EXPECT_RAISES(S(u"abc").toInteger(), 13);
    EXPECT_RAISES(S(u"12abc").toInteger(), 13);
    EXPECT_RAISES(S(u"1 2").toInteger(), 13);
    EXPECT_RAISES(S(u"1E").toInteger(), 13);
    EXPECT_RAISES(S(u"--1").toInteger(), 13);
    EXPECT_RAISES(S(u".").toInteger(), 13);
    EXPECT_RAISES(S(u"True").toInteger(), 13);
    EXPECT_RAISES(S(u"&H").toInteger(), 13);
    EXPECT_RAISES(S(u"&HG").toInteger(), 13);
}

TEST(CInt, TextInGermanLocale) {
    const Locale de = german();
    EXPECT_EQ(S(u"12,5").toInteger(de), 12);
    EXPECT_EQ(S(u"13,5").toInteger(de), 14);
    EXPECT_EQ(S(u"1.000").toInteger(de), 1000);
    EXPECT_EQ(S(u"1.000,5").toInteger(de), 1000);
    EXPECT_RAISES(S(u"1,2,3").toInteger(de), 13);  // two decimal separators
    EXPECT_RAISES(S(u"1.5").toInteger(de) + S(u"x").toInteger(de), 13);
}

// ---- CLng ------------------------------------------------------------------

TEST(CLng, RangeAndRounding) {
    EXPECT_EQ(Variant(2147483647.0).toLong(), 2147483647);
    EXPECT_EQ(Variant(-2147483648.0).toLong(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Variant(2147483646.5).toLong(), 2147483646);
    EXPECT_RAISES(Variant(2147483647.5).toLong(), 6);
    EXPECT_RAISES(Variant(-2147483649.0).toLong(), 6);
    EXPECT_EQ(Variant(40000.5).toLong(), 40000);
    EXPECT_EQ(Variant(40001.5).toLong(), 40002);
    EXPECT_EQ(S(u"&HFFFF").toLong(), 65535);
    EXPECT_EQ(S(u"&HFFFFFFFF").toLong(), -1);
    EXPECT_EQ(S(u"&H7FFFFFFF").toLong(), 2147483647);
    EXPECT_RAISES(S(u"&H100000000").toLong(), 6);
    EXPECT_EQ(S(u"1,234,567").toLong(), 1234567);
    EXPECT_RAISES(S(u"2147483648").toLong(), 6);
    EXPECT_EQ(S(u"-2147483648").toLong(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Variant(Currency{-1234567895000}).toLong(), -123456790);
    EXPECT_EQ(Variant(true).toLong(), -1);
    EXPECT_RAISES(Variant::null().toLong(), 94);
    EXPECT_RAISES(S(u"x").toLong(), 13);
}

// ---- CDbl --------------------------------------------------------------------

TEST(CDbl, Conversions) {
    EXPECT_EQ(Variant().toDouble(), 0.0);
    EXPECT_EQ(Variant(true).toDouble(), -1.0);
    EXPECT_EQ(Variant(std::int16_t{3}).toDouble(), 3.0);
    EXPECT_EQ(Variant(Currency{12345}).toDouble(), 1.2345);
    EXPECT_EQ(Variant(Date{54789.5}).toDouble(), 54789.5);
    EXPECT_EQ(S(u"0.1").toDouble(), 0.1);
    EXPECT_EQ(S(u" -1.5E-3 ").toDouble(), -0.0015);
    EXPECT_EQ(S(u"1,234.5").toDouble(), 1234.5);
    EXPECT_EQ(S(u"&H10").toDouble(), 16.0);
    EXPECT_EQ(S(u"1234,5").toDouble(german()), 1234.5);
    EXPECT_EQ(S(u"1.234,5").toDouble(german()), 1234.5);
    EXPECT_EQ(S(u"1234.5").toDouble(german()), 12345.0);  // "." groups thousands there
    EXPECT_EQ(S(u"1,2.3").toDouble(german()), 1.23);  // separators after the point too
    EXPECT_RAISES(S(u"1E400").toDouble(), 6);
    EXPECT_RAISES(S(u"x1").toDouble(), 13);
    EXPECT_RAISES(Variant::null().toDouble(), 94);
}

// ---- CCur -------------------------------------------------------------------

TEST(CCur, FourDecimalsHalfToEven) {
    EXPECT_EQ(Variant(1.5).toCurrency().scaled, 15000);
    EXPECT_EQ(S(u"1.23455").toCurrency().scaled, 12346);   // half to even
    EXPECT_EQ(S(u"1.23445").toCurrency().scaled, 12344);   // half to even
    EXPECT_EQ(S(u"1.234451").toCurrency().scaled, 12345);  // more than half
    EXPECT_EQ(S(u"-1.23445").toCurrency().scaled, -12344);
    EXPECT_EQ(S(u"-1.23455").toCurrency().scaled, -12346);
    EXPECT_EQ(S(u"0.00005").toCurrency().scaled, 0);
    EXPECT_EQ(S(u"0.00015").toCurrency().scaled, 2);
    EXPECT_EQ(Variant(0.125).toCurrency().scaled, 1250);
    EXPECT_EQ(Variant(-2.75).toCurrency().scaled, -27500);
    EXPECT_EQ(Variant(std::int32_t{-3}).toCurrency().scaled, -30000);
    EXPECT_EQ(Variant(true).toCurrency().scaled, -10000);
    EXPECT_EQ(S(u"922337203685477.5807").toCurrency().scaled,
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(S(u"-922337203685477.5808").toCurrency().scaled,
              std::numeric_limits<std::int64_t>::min());
    EXPECT_RAISES(S(u"922337203685477.5808").toCurrency(), 6);
    EXPECT_RAISES(Variant(1e16).toCurrency(), 6);
    EXPECT_RAISES(Variant(-1e16).toCurrency(), 6);
    EXPECT_RAISES(S(u"1e30").toCurrency(), 6);
    EXPECT_RAISES(S(u"abc").toCurrency(), 13);
    EXPECT_RAISES(Variant::null().toCurrency(), 94);
    EXPECT_EQ(S(u"12,5").toCurrency(german()).scaled, 125000);
}

// ---- CBool -----------------------------------------------------------------

TEST(CBool, NumbersAndWords) {
    EXPECT_FALSE(Variant().toBool());
    EXPECT_FALSE(Variant(0.0).toBool());
    EXPECT_TRUE(Variant(0.1).toBool());
    EXPECT_TRUE(Variant(-1.0).toBool());
    EXPECT_TRUE(Variant(std::int16_t{2}).toBool());
    EXPECT_FALSE(Variant(std::int32_t{0}).toBool());
    EXPECT_TRUE(Variant(Currency{1}).toBool());
    EXPECT_TRUE(S(u"True").toBool());
    EXPECT_TRUE(S(u"TRUE").toBool());
    EXPECT_TRUE(S(u"tRuE").toBool());
    EXPECT_FALSE(S(u"False").toBool());
    EXPECT_FALSE(S(u"false").toBool());
    EXPECT_FALSE(S(u"0").toBool());
    EXPECT_TRUE(S(u"-1").toBool());
    EXPECT_TRUE(S(u" 2.5 ").toBool());
    EXPECT_FALSE(S(u"0.0").toBool());
    EXPECT_RAISES(S(u"yes").toBool(), 13);
    EXPECT_RAISES(S(u"").toBool(), 13);
    EXPECT_RAISES(S(u"Truee").toBool(), 13);
    EXPECT_RAISES(Variant::null().toBool(), 94);
    EXPECT_RAISES(Variant::nothing().toBool(), 13);
}

// ---- CStr ------------------------------------------------------------------

TEST(CStr, Simple) {
    EXPECT_EQ(Variant().toStr(), u"");
    EXPECT_EQ(Variant(true).toStr(), u"True");
    EXPECT_EQ(Variant(false).toStr(), u"False");
    EXPECT_EQ(Variant(std::int16_t{-12}).toStr(), u"-12");
    EXPECT_EQ(Variant(std::int32_t{123456}).toStr(), u"123456");
    EXPECT_EQ(S(u"text").toStr(), u"text");
    EXPECT_RAISES(Variant::null().toStr(), 94);
    EXPECT_RAISES(Variant::nothing().toStr(), 13);
}

TEST(CStr, Doubles) {
    EXPECT_EQ(Variant(0.0).toStr(), u"0");
    EXPECT_EQ(Variant(0.75).toStr(), u"0.75");
    EXPECT_EQ(Variant(12.5).toStr(), u"12.5");
    EXPECT_EQ(Variant(-12.5).toStr(), u"-12.5");
    EXPECT_EQ(Variant(100.0).toStr(), u"100");
    EXPECT_EQ(Variant(0.1 + 0.2).toStr(), u"0.3");
    EXPECT_EQ(Variant(1.0 / 3.0).toStr(), u"0.333333333333333");
    EXPECT_EQ(Variant(2.0 / 3.0).toStr(), u"0.666666666666667");
    EXPECT_EQ(Variant(123456789012345.0).toStr(), u"123456789012345");
    EXPECT_EQ(Variant(1e15).toStr(), u"1E+15");
    EXPECT_EQ(Variant(1e16).toStr(), u"1E+16");
    EXPECT_EQ(Variant(1.5e20).toStr(), u"1.5E+20");
    EXPECT_EQ(Variant(123456789012345678.0).toStr(), u"1.23456789012346E+17");
    EXPECT_EQ(Variant(0.0001).toStr(), u"0.0001");
    EXPECT_EQ(Variant(0.00001).toStr(), u"1E-05");
    EXPECT_EQ(Variant(-1.5e-5).toStr(), u"-1.5E-05");
    EXPECT_EQ(Variant(1e-100).toStr(), u"1E-100");
    EXPECT_EQ(Variant(12.5).toStr(german()), u"12,5");
    EXPECT_EQ(Variant(1.5e20).toStr(german()), u"1,5E+20");
}

TEST(CStr, Currency) {
    EXPECT_EQ(Variant(Currency{125000}).toStr(), u"12.5");
    EXPECT_EQ(Variant(Currency{0}).toStr(), u"0");
    EXPECT_EQ(Variant(Currency{10000}).toStr(), u"1");
    EXPECT_EQ(Variant(Currency{1}).toStr(), u"0.0001");
    EXPECT_EQ(Variant(Currency{-5000}).toStr(), u"-0.5");
    EXPECT_EQ(Variant(Currency{12345}).toStr(german()), u"1,2345");
    EXPECT_EQ(Variant(Currency{std::numeric_limits<std::int64_t>::min()}).toStr(),
              u"-922337203685477.5808");
}

TEST(CStr, Dates) {
    const double d = dt::serial(2024, 3, 5);
    EXPECT_EQ(Variant(Date{d}).toStr(), u"3/5/2024");
    EXPECT_EQ(Variant(Date{d + 0.5}).toStr(), u"3/5/2024 12:00:00 PM");
    EXPECT_EQ(Variant(Date{d + dt::timeFraction(9, 5, 7)}).toStr(), u"3/5/2024 9:05:07 AM");
    EXPECT_EQ(Variant(Date{d + dt::timeFraction(0, 30, 0)}).toStr(), u"3/5/2024 12:30:00 AM");
    EXPECT_EQ(Variant(Date{dt::timeFraction(13, 45, 0)}).toStr(), u"1:45:00 PM");
    EXPECT_EQ(Variant(Date{0.0}).toStr(), u"12:00:00 AM");
    EXPECT_EQ(Variant(Date{1.0}).toStr(), u"12/31/1899");
    EXPECT_EQ(Variant(Date{-1.25}).toStr(), u"12/29/1899 6:00:00 AM");
    EXPECT_EQ(Variant(Date{dt::serial(2050, 1, 1)}).toStr(), u"1/1/2050");
    Locale iso;
    iso.shortDate = u"yyyy-MM-dd";
    iso.longTime = u"HH:mm:ss";
    EXPECT_EQ(Variant(Date{d + 0.75}).toStr(iso), u"2024-03-05 18:00:00");
    EXPECT_EQ(S(u"2024-03-05 18:00:00").toDate(iso).days, d + 0.75);
    Locale quoted;
    quoted.shortDate = u"dddd, d 'de' MMMM yyyy";
    EXPECT_EQ(Variant(Date{d}).toStr(quoted), u"Tuesday, 5 de March 2024");
    EXPECT_EQ(Variant(Date{d + dt::timeFraction(13, 45, 0)}).toStr(german()),
              u"05.03.2024 13:45:00");
    EXPECT_EQ(Variant(Date{d}).toStr(german()), u"05.03.2024");
}

// ---- Dates -----------------------------------------------------------------

TEST(DateValue, Serials) {
    EXPECT_EQ(dt::serial(1899, 12, 30), 0.0);
    EXPECT_EQ(dt::serial(1899, 12, 31), 1.0);
    EXPECT_EQ(dt::serial(1900, 1, 1), 2.0);
    EXPECT_EQ(dt::serial(2050, 1, 1), 54789.0);
    EXPECT_EQ(dt::serial(4501, 1, 1), 949998.0);
    EXPECT_EQ(dt::serial(1899, 12, 29), -1.0);
    EXPECT_EQ(dt::serial(100, 1, 1), -657434.0);
    EXPECT_EQ(dt::serial(9999, 12, 31), 2958465.0);
    dt::Parts p = dt::toParts(54789.75);
    EXPECT_EQ(p.year, 2050);
    EXPECT_EQ(p.month, 1);
    EXPECT_EQ(p.day, 1);
    EXPECT_EQ(p.hour, 18);
    // Before 1899: the whole part backwards, the fraction forwards.
    p = dt::toParts(-1.25);
    EXPECT_EQ(p.day, 29);
    EXPECT_EQ(p.hour, 6);
    EXPECT_EQ(dt::fromParts(p), -1.25);
    // Rounding to the second carries into the next day.
    p = dt::toParts(2.0 - 1e-7);
    EXPECT_EQ(p.day, 1);
    EXPECT_EQ(p.month, 1);
    EXPECT_EQ(p.hour, 0);
}

TEST(CDate, FromNumbersAndTexts) {
    EXPECT_EQ(Variant(54789.0).toDate().days, 54789.0);
    EXPECT_EQ(Variant(std::int32_t{3}).toDate().days, 3.0);
    EXPECT_EQ(Variant().toDate().days, 0.0);
    EXPECT_RAISES(Variant(1e10).toDate(), 6);
    EXPECT_RAISES(Variant::null().toDate(), 94);
    EXPECT_EQ(S(u"1/1/2050").toDate().days, 54789.0);
    EXPECT_EQ(S(u"01/01/2050").toDate().days, 54789.0);
    EXPECT_EQ(S(u"1/1/4501").toDate().days, 949998.0);
    EXPECT_EQ(S(u"2050-01-01").toDate().days, 54789.0);
    EXPECT_EQ(S(u"1 January 2050").toDate().days, 54789.0);
    EXPECT_EQ(S(u"Jan 1, 2050").toDate().days, 54789.0);
    EXPECT_EQ(S(u"3/5/2024 1:45:00 PM").toDate().days,
              dt::serial(2024, 3, 5) + dt::timeFraction(13, 45, 0));
    EXPECT_EQ(S(u"3/5/2024 13:45").toDate().days,
              dt::serial(2024, 3, 5) + dt::timeFraction(13, 45, 0));
    EXPECT_EQ(S(u"12:00:00 AM").toDate().days, 0.0);
    EXPECT_EQ(S(u"12:30 PM").toDate().days, dt::timeFraction(12, 30, 0));
    EXPECT_EQ(S(u"3 PM").toDate().days, dt::timeFraction(15, 0, 0));
    EXPECT_EQ(S(u"3/5/24").toDate().days, dt::serial(2024, 3, 5));
    EXPECT_EQ(S(u"3/5/45").toDate().days, dt::serial(1945, 3, 5));
    // Month and day swap when only that makes a date.
    EXPECT_EQ(S(u"13/1/2020").toDate().days, dt::serial(2020, 1, 13));
    EXPECT_EQ(S(u"5.3.2024").toDate(german()).days, dt::serial(2024, 3, 5));
    EXPECT_EQ(S(u"05.03.2024 13:45:00").toDate(german()).days,
              dt::serial(2024, 3, 5) + dt::timeFraction(13, 45, 0));
    EXPECT_RAISES(S(u"hello").toDate(), 13);
    EXPECT_RAISES(S(u"").toDate(), 13);
    EXPECT_RAISES(S(u"12").toDate(), 13);
    EXPECT_RAISES(S(u"2/30/2024").toDate(), 13);
    EXPECT_RAISES(S(u"25:00").toDate(), 13);
    EXPECT_RAISES(S(u"13:00 PM").toDate(), 13);
    EXPECT_RAISES(S(u"1/2/3/4").toDate(), 13);
}

TEST(CDate, RoundTripsThroughText) {
    for (double d : {dt::serial(2024, 2, 29), dt::serial(2024, 2, 29) + 0.75,
                     dt::timeFraction(23, 59, 59), dt::serial(1950, 12, 31) + 0.25}) {
        for (const Locale& loc : {Locale::enUS(), german()}) {
            Str text = Variant(Date{d}).toStr(loc);
            EXPECT_DOUBLE_EQ(Variant(text).toDate(loc).days, d) << toUtf8(text);
        }
    }
}

// ---- IsNumeric, IsDate ------------------------------------------------------

TEST(IsNumeric, Values) {
    EXPECT_TRUE(isNumeric(Variant()));  // as the run time: IsNumeric(Empty) is True
    EXPECT_FALSE(isNumeric(Variant::null()));
    EXPECT_TRUE(isNumeric(Variant(true)));
    EXPECT_TRUE(isNumeric(Variant(1.5)));
    EXPECT_TRUE(isNumeric(Variant(Currency{1})));
    EXPECT_FALSE(isNumeric(Variant(Date{1.0})));
    EXPECT_FALSE(isNumeric(Variant::nothing()));
    EXPECT_FALSE(isNumeric(Variant::missing()));
}

TEST(IsNumeric, Texts) {
    EXPECT_FALSE(isNumeric(S(u"")));
    EXPECT_FALSE(isNumeric(S(u" ")));
    EXPECT_TRUE(isNumeric(S(u"12")));
    EXPECT_TRUE(isNumeric(S(u"  12 ")));
    EXPECT_TRUE(isNumeric(S(u"-12.5")));
    EXPECT_TRUE(isNumeric(S(u"+.5")));
    EXPECT_TRUE(isNumeric(S(u"1,000")));
    EXPECT_TRUE(isNumeric(S(u"1E3")));
    EXPECT_TRUE(isNumeric(S(u"1e-3")));
    EXPECT_TRUE(isNumeric(S(u"&H10")));
    EXPECT_TRUE(isNumeric(S(u"&O17")));
    EXPECT_FALSE(isNumeric(S(u"1E400")));  // too large for a Double
    EXPECT_FALSE(isNumeric(S(u"abc")));
    EXPECT_FALSE(isNumeric(S(u"12a")));
    EXPECT_FALSE(isNumeric(S(u"1.2.3")));
    EXPECT_FALSE(isNumeric(S(u"-")));
    EXPECT_FALSE(isNumeric(S(u"True")));
    EXPECT_FALSE(isNumeric(S(u",5")));
    EXPECT_TRUE(isNumeric(S(u"1,5"), german()));
    EXPECT_TRUE(isNumeric(S(u"1.000,5"), german()));
    EXPECT_TRUE(isNumeric(S(u"1,000.5"), german()));  // 1.0005: "." groups digits there
    EXPECT_FALSE(isNumeric(S(u"1,000,5"), german()));
}

TEST(IsDate, Values) {
    EXPECT_TRUE(isDate(Variant(Date{1.0})));
    EXPECT_TRUE(isDate(S(u"1/1/2050")));
    EXPECT_TRUE(isDate(S(u"13:45")));
    EXPECT_FALSE(isDate(S(u"12")));
    EXPECT_FALSE(isDate(S(u"abc")));
    EXPECT_FALSE(isDate(Variant(1.0)));
    EXPECT_FALSE(isDate(Variant()));
    // A point separates dates only where the locale writes them with it;
    // elsewhere it separates hours and minutes ("10.30"), as the system reads.
    EXPECT_FALSE(isDate(S(u"31.12.2024")));
    EXPECT_EQ(S(u"10.30").toDate().days, dt::timeFraction(10, 30, 0));
    EXPECT_TRUE(isDate(S(u"31.12.2024"), german()));
}

// The user's own regional settings as the system reports them (checked
// against oleaut32 under Wine by tests/win/ConversionOracleWinTest.cpp,
// which covers these and many more in every locale there).
Locale germany() {
    Locale l = german();
    l.currencySymbol = u"\u20AC";
    l.currencyDecimalSeparator = u",";
    l.currencyThousandSeparator = u".";
    l.shortDate = u"dd.MM.yyyy";
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

TEST(Conversions, AsTheSystemReadsUserInput) {
    const Locale en = Locale::enUS(), de = germany(), fr = france();
    struct Case {
        const char16_t* text;
        const Locale* loc;
        std::int64_t currency;  // x 10000; INT64_MIN: type mismatch
    };
    constexpr std::int64_t kMismatch = std::numeric_limits<std::int64_t>::min();
    const Case cases[] = {
        {u"\u20AC5", &de, 50000},
        {u"12,50 \u20AC", &de, 125000},
        {u"12,50\u20AC", &fr, 125000},
        {u"$5", &en, 50000},
        {u"5 $", &en, 50000},
        {u"$5", &de, kMismatch},
        {u"\u20AC5", &en, kMismatch},
        {u"1 000,5", &fr, 10005000},
        {u"1\u00A0000,5", &fr, 10005000},
        {u"1 000,5", &de, kMismatch},
        {u"3-", &en, -30000},
        {u"3 -", &de, -30000},
        {u"(3-)", &en, -30000},
        {u"(-3)", &en, -30000},
        {u"1,000.5", &en, 10005000},
        {u"1.000,5", &de, 10005000},
        {u"1,5.25", &de, 15250},
        {u"1D3", &en, kMismatch},
        {u"&17", &en, kMismatch},
        {u"$1E3", &en, kMismatch},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(toUtf8(c.text));
        if (c.currency == kMismatch) {
            EXPECT_RAISES(S(c.text).toCurrency(*c.loc), 13);
            EXPECT_FALSE(isNumeric(S(c.text), *c.loc));
        } else {
            EXPECT_EQ(S(c.text).toCurrency(*c.loc).scaled, c.currency);
            EXPECT_EQ(S(c.text).toDouble(*c.loc), static_cast<double>(c.currency) / 10000);
        }
    }
    // Month names in the user's language, the abbreviation with its point.
    const double may5 = dt::serial(2001, 5, 5), feb1 = dt::serial(2001, 2, 1);
    EXPECT_EQ(S(u"5. Mai 2001").toDate(de).days, may5);
    EXPECT_EQ(S(u"5-MAI-2001").toDate(de).days, may5);
    EXPECT_EQ(S(u"1 M\u00E4rz 2001").toDate(de).days, dt::serial(2001, 3, 1));
    EXPECT_EQ(S(u"1 f\u00E9vrier 2001").toDate(fr).days, feb1);
    EXPECT_EQ(S(u"1 f\u00E9vr. 2001").toDate(fr).days, feb1);
    EXPECT_EQ(S(u"1 February 2001").toDate(en).days, feb1);
    EXPECT_EQ(S(u"1 feb 2001").toDate(en).days, feb1);
    EXPECT_RAISES(S(u"1 February 2001").toDate(de), 13);  // not the user's language
    EXPECT_RAISES(S(u"1 fevrier 2001").toDate(fr), 13);   // nor without its accent
}

TEST(Conversions, RoundingIsExactBankersRounding) {
    // 0.49999999999999994 is just below one half: a rounding that adds 0.5
    // first (some C libraries' round) makes it 1.
    EXPECT_EQ(Variant(0.49999999999999994).toInteger(), 0);
    EXPECT_EQ(Variant(-0.49999999999999994).toLong(), 0);
    EXPECT_EQ(Variant(0.5000000000000001).toInteger(), 1);
    // Currency rounds the double's exact value to four decimals: no
    // rounding of value x 10000 on the way.
    EXPECT_EQ(Variant(922337203685477.0).toCurrency().scaled, 9223372036854770000);
    EXPECT_EQ(Variant(0.00025).toCurrency().scaled, 3);  // a little above 0.00025
    EXPECT_EQ(Variant(0.00015).toCurrency().scaled, 1);  // a little below 0.00015
    EXPECT_EQ(Variant(-2.5).toCurrency().scaled, -25000);
    EXPECT_RAISES(Variant(922337203685477.625).toCurrency(), 6);
    EXPECT_RAISES(Variant(std::numeric_limits<double>::infinity()).toCurrency(), 6);
}
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
