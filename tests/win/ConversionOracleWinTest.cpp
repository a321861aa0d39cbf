// The add-in's automation conversions held against the system's own
// (oleaut32's VariantChangeTypeEx) over a generated table of inputs in
// several locales. The add-in gets the same locale's facts, read with
// GetLocaleInfo as the Win32 platform reads the user's. Where both convert,
// the values are equal; where the system refuses, the add-in raises the
// matching run-time error (13 type mismatch, 6 overflow), and the other way
// round.
#include "common/AutomationError.h"
#include "common/NumberText.h"
#include "common/Variant.h"
#include "platform/win32/Win32Platform.h"

#include <gtest/gtest.h>
#include <windows.h>
// windows.h first: oleauto.h relies on its types.
#include <oleauto.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

namespace hb {
namespace {

struct TestLocale {
    LCID lcid;
    const char* name;
};
const TestLocale kLocales[] = {{0x0409, "en-US"}, {0x0407, "de-DE"}, {0x040C, "fr-FR"}};

std::string show(const Str& s) {
    std::string out;
    for (char16_t c : s) {
        if (c >= 0x20 && c < 0x7F) {
            out += static_cast<char>(c);
        } else {
            char buf[12];
            std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(c));
            out += buf;
        }
    }
    return out;
}

Str replaceAll(const Str& s, StrView from, const Str& to) {
    Str out;
    std::size_t pos = 0;
    for (std::size_t at = s.find(from); at != Str::npos; at = s.find(from, pos)) {
        out.append(s, pos, at - pos);
        out += to;
        pos = at + from.size();
    }
    out.append(s, pos, Str::npos);
    return out;
}

// One outcome of a conversion: the value as comparable text, or an error.
struct Outcome {
    int error = 0;  // 0, or the run-time error number
    std::string value;
    double number = 0;  // for doubles compared within rounding
    bool operator==(const Outcome&) const = default;
};

int errorOf(HRESULT hr) {
    if (hr == DISP_E_TYPEMISMATCH) return 13;
    if (hr == DISP_E_OVERFLOW) return 6;
    return static_cast<int>(hr);
}

std::string text(long long v) {
    return std::to_string(v);
}

std::string text(double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    return buf;
}

// The system's conversion of a variant to vt, in the locale.
Outcome system(VARIANT& src, VARTYPE vt, LCID lcid) {
    VARIANT dst;
    VariantInit(&dst);
    const HRESULT hr = VariantChangeTypeEx(&dst, &src, lcid, 0, vt);
    Outcome o;
    if (FAILED(hr)) {
        o.error = errorOf(hr);
        return o;
    }
    switch (vt) {
        case VT_I2:
            o.value = text(static_cast<long long>(V_I2(&dst)));
            break;
        case VT_I4:
            o.value = text(static_cast<long long>(V_I4(&dst)));
            break;
        case VT_CY:
            o.value = text(static_cast<long long>(V_CY(&dst).int64));
            break;
        case VT_R8:
            o.value = text(V_R8(&dst));
            o.number = V_R8(&dst);
            break;
        case VT_DATE:
            o.value = text(V_DATE(&dst));
            o.number = V_DATE(&dst);
            break;
        case VT_BSTR:
            o.value = show(Str(V_BSTR(&dst), V_BSTR(&dst) + SysStringLen(V_BSTR(&dst))));
            break;
        case VT_BOOL:
            o.value = V_BOOL(&dst) ? "True" : "False";
            break;
        default:
            ADD_FAILURE() << "no comparison for type " << vt;
    }
    VariantClear(&dst);
    return o;
}

// The add-in's conversion of value to vt in the locale.
Outcome addin(const Variant& v, VARTYPE vt, const Locale& loc) {
    Outcome o;
    try {
        switch (vt) {
            case VT_I2:
                o.value = text(static_cast<long long>(v.toInteger(loc)));
                break;
            case VT_I4:
                o.value = text(static_cast<long long>(v.toLong(loc)));
                break;
            case VT_CY:
                o.value = text(static_cast<long long>(v.toCurrency(loc).scaled));
                break;
            case VT_R8:
                o.number = v.toDouble(loc);
                o.value = text(o.number);
                break;
            case VT_DATE:
                o.number = v.toDate(loc).days;
                o.value = text(o.number);
                break;
            case VT_BSTR:
                o.value = show(v.toStr(loc));
                break;
            case VT_BOOL:
                o.value = v.toBool(loc) ? "True" : "False";
                break;
            default:
                break;
        }
    } catch (const AutomationError& e) {
        o = Outcome{};
        o.error = e.number();
    }
    return o;
}

class ConversionOracle : public ::testing::TestWithParam<TestLocale> {
  protected:
    void SetUp() override { loc_ = Win32Platform().localeOf(GetParam().lcid); }

    // Compares the conversion of one text to each type.
    void compareText(const Str& input, std::initializer_list<VARTYPE> types) {
        VARIANT src;
        VariantInit(&src);
        V_VT(&src) = VT_BSTR;
        V_BSTR(&src) = SysAllocStringLen(reinterpret_cast<const wchar_t*>(input.data()),
                                         static_cast<UINT>(input.size()));
        std::string what = show(input);
        what.insert(what.begin(), '[');
        what.push_back(']');
        // The system reads a number's digits into a double and scales it by
        // powers of ten in turn, exact for at most 15 digits and a scale of
        // at most ten powers; beyond, it may be an ulp or two off the nearest
        // double, which the add-in gives. Currency text goes through that
        // double too: where it cannot hold the amount to four decimals the
        // last digits differ, and the add-in keeps the exact amount. There
        // only success and failure are compared.
        const auto p = num::parse(input, loc_);
        const long digits = p && !p->radix ? static_cast<long>(p->digits.size()) : 0;
        const int scale = p && !p->radix ? p->exp10 : 0;
        const bool exactDouble = digits <= 15 && scale >= -10 && scale <= 10;
        const bool exactCurrency = digits + scale + 4 <= 15 && scale >= -4;
        for (VARTYPE vt : types)
            compare(src, Variant(input), vt, what,
                    vt == VT_R8   ? (exactDouble ? Match::Exact : Match::Ulps)
                    : vt == VT_CY ? (exactCurrency ? Match::Exact : Match::Outcome)
                                  : Match::Exact);
        VariantClear(&src);
    }

    // Compares the conversion of a double or a currency amount.
    template <class T>
    void compareValue(VARTYPE from, T value, std::initializer_list<VARTYPE> types) {
        VARIANT src;
        VariantInit(&src);
        V_VT(&src) = from;
        std::string what;
        if constexpr (std::is_same_v<T, double>) {
            V_R8(&src) = value;
            what = "double " + text(value);
        } else {
            V_CY(&src).int64 = value.scaled;
            what = "currency " + text(static_cast<long long>(value.scaled));
        }
        for (VARTYPE vt : types)
            compare(src, Variant(value), vt, what, Match::Exact);
    }

    enum class Match { Exact, Ulps, Outcome };

    void compare(VARIANT& src, const Variant& value, VARTYPE vt, const std::string& what,
                 Match match) {
        ++compared_;
        const Outcome sys = system(src, vt, GetParam().lcid);
        const Outcome own = addin(value, vt, loc_);
        if (match != Match::Exact && !sys.error && !own.error &&
            (match == Match::Outcome ||
             std::fabs(sys.number - own.number) <= 4 * std::fabs(own.number) * 1.2e-16))
            return;
        if (sys == own) return;
        ++disagreements_;
        ADD_FAILURE() << GetParam().name << " " << what << " to VT " << vt << ": system "
                      << (sys.error ? "error " + std::to_string(sys.error) : sys.value)
                      << ", add-in "
                      << (own.error ? "error " + std::to_string(own.error) : own.value);
    }

    void TearDown() override {
        std::printf("[ oracle   ] %s: %d conversions compared, %d disagreements\n", GetParam().name,
                    compared_, disagreements_);
    }

    Locale loc_;
    int compared_ = 0;
    int disagreements_ = 0;
};

// Numbers as users type rates and hours: mantissas written with the
// locale's separators ({D} decimal, {T} thousands, {C} currency symbol) or
// foreign ones, with exponents, signs before or after, parentheses,
// currency symbols and blanks. {X} is where the number goes.
TEST_P(ConversionOracle, NumbersInText) {
    const std::vector<Str> mantissas = {u"0",
                                        u"5",
                                        u"12{D}5",
                                        u"13{D}5",
                                        u"1234{D}5678",
                                        u"1{T}000",
                                        u"1{T}000{D}5",
                                        u"1{T}000{T}000",
                                        u"1{T}0{T}0",
                                        u"{D}5",
                                        u"5{D}",
                                        u"32767{D}5",
                                        u"32768",
                                        u"2147483648",
                                        u"0{D}49999999999999994",
                                        u"922337203685477",
                                        u"1 000,5",
                                        u"1\u00A0000,5",
                                        u"1.000,5",
                                        u"1,000.5",
                                        u"12,50",
                                        u"12.50",
                                        u"1{T}{T}2",
                                        u"{T}5",
                                        u"1{D}2{D}3"};
    const std::vector<Str> exponents = {u"", u"E2", u"e-1", u"E+1", u"D2", u"E"};
    const std::vector<Str> signs = {u"{X}",   u"-{X}",  u"+{X}",  u"{X}-",  u"{X}+",  u"({X})",
                                    u"- {X}", u"{X} -", u" {X} ", u"+-{X}", u"--{X}", u"(-{X})"};
    const std::vector<Str> symbols = {u"{X}",     u"{C}{X}", u"{X}{C}",     u"{X} {C}",
                                      u"{C} {X}", u"${X}",   u"{X} \u20AC", u"{C}{X}{C}"};
    for (const Str& m : mantissas) {
        Str number = replaceAll(replaceAll(m, u"{D}", loc_.decimalSeparator), u"{T}",
                                loc_.thousandSeparator);
        for (const Str& e : exponents)
            for (const Str& s : signs)
                for (const Str& c : symbols) {
                    Str input = replaceAll(c, u"{X}", replaceAll(s, u"{X}", number + e));
                    input = replaceAll(input, u"{C}", loc_.currencySymbol);
                    compareText(input, {VT_I2, VT_I4, VT_R8, VT_CY, VT_BOOL});
                }
    }
    for (const char16_t* other :
         {u"",       u" ",       u"abc",        u"1 2",       u"1E",      u"E5",
          u".",      u",",       u"-",          u"()",        u"&H1F",    u"&h1f",
          u"&HFFFF", u"&H10000", u"&HFFFFFFFF", u"&O17",      u"&o777",   u"&17",
          u"&H",     u"&HG",     u" &H1F ",     u"1e400",     u"-1e400",  u"1e-400",
          u"0e5",    u"00012",   u"\u00A05",    u"5\u00A0",   u"\u20AC5", u"12,50 \u20AC",
          u"$5",     u"1 000,5", u"3-",         u"12,5\u20AC"}) {
        // Wine's oleaut32 answers overflow for &H and &O text as a double or
        // currency: those are compared as integers only (and below).
        compareText(other, {VT_I2, VT_I4});
        if (Str(other).find(u'&') == Str::npos) compareText(other, {VT_R8, VT_CY, VT_BOOL});
    }
}

// Booleans from text: the words, "#TRUE#"/"#FALSE#" as the run time writes
// them to files, and numbers, which count by their Double (so beyond its
// range they overflow and below its smallest value they are zero).
// Hexadecimal text is a 32-bit signed value as a Double too; Wine answers
// overflow for &H text beyond 0x7FFFFFFF whose negation does not fit either
// ("&HFFFFFFFF", -1 in Windows), so those are left out.
TEST_P(ConversionOracle, BooleansAndHexadecimalText) {
    for (const char16_t* t : {u"True", u"tRUE", u"False", u"#TRUE#", u"#FALSE#", u"#true#",
                              u" #TRUE# ", u"#TRUE", u"TRUE#", u"Wahr", u"Vrai", u"1E400", u"2e308",
                              u"-1e400", u"1E-400", u"1e-320", u"-0", u"0e9", u"2{D}5"})
        compareText(replaceAll(t, u"{D}", loc_.decimalSeparator), {VT_BOOL, VT_R8});
    for (const char16_t* t : {u"&H80000000", u"&H10", u"&H0", u"&H8000", u"&H7FFFFFFF",
                              u"&O20000000000", u"&H100000000", u"&HFFFFFFFFFFFFFFFFF"})
        compareText(t, {VT_R8, VT_BOOL, VT_I4});
}

// Doubles to integers and currency: banker's rounding on the exact value.
TEST_P(ConversionOracle, DoublesToIntegersAndCurrency) {
    std::vector<double> values = {0.49999999999999994,
                                  0.5000000000000001,
                                  922337203685477.0,
                                  922337203685477.5,
                                  -922337203685477.5,
                                  922337203685477.625,
                                  0.00025,
                                  0.00015,
                                  5e-05,
                                  1e-05,
                                  12.345649999999999,
                                  32767.499999999996,
                                  32767.5,
                                  -32768.5,
                                  -32768.500000000004,
                                  2147483647.5,
                                  -2147483648.5,
                                  2147483646.5,
                                  1e300,
                                  -1e300,
                                  4503599627370497.0,
                                  9007199254740993.0,
                                  1.0 / 3.0,
                                  2.0 / 3.0};
    for (int k = -40; k <= 40; ++k)
        values.push_back(k / 8.0);
    for (int k = 1; k <= 40; ++k)
        values.push_back(k * 0.00005);
    for (double d : values)
        compareValue(VT_R8, d, {VT_I2, VT_I4, VT_CY});
}

// Currency and doubles to text in the locale.
TEST_P(ConversionOracle, NumbersToText) {
    for (std::int64_t scaled :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{5000},
          std::int64_t{125000}, std::int64_t{-125000}, std::int64_t{12345678},
          std::int64_t{10000000}, std::int64_t{9223372036854775807LL},
          std::int64_t{-9223372036854775807LL - 1}, std::int64_t{9223372036854770000LL}})
        compareValue(VT_CY, Currency{scaled}, {VT_BSTR});
}

// Dates as users type them: numbers in the locale's order with its own and
// common separators, ISO order, and month names of the locale's language
// (full, abbreviated, in any letter case) and of English, with a time or
// without.
TEST_P(ConversionOracle, DatesInText) {
    const std::vector<std::array<int, 3>> dates = {
        {2001, 5, 5}, {2001, 2, 1}, {2024, 12, 31}, {1999, 3, 13}, {2001, 1, 28}};
    const std::vector<Str> times = {u"", u" 10:30", u" 10:30:15", u" 3:05 PM", u" 12:00 AM"};
    const Str order = [&] {
        Str o;
        for (char16_t c : loc_.shortDate)
            if ((c == u'd' || c == u'M' || c == u'y') && o.find(c) == Str::npos) o += c;
        return o;
    }();
    const Str dateSep = [&] {
        for (char16_t c : loc_.shortDate)
            if (c != u'd' && c != u'M' && c != u'y') return Str(1, c);
        return Str(u"/");
    }();
    static const Str kEnglish[12] = {u"January",   u"February", u"March",    u"April",
                                     u"May",       u"June",     u"July",     u"August",
                                     u"September", u"October",  u"November", u"December"};
    auto num = [](int v) { return fromUtf8(std::to_string(v)); };
    auto lower = [](Str s) {
        for (auto& c : s)
            if ((c >= u'A' && c <= u'Z') || (c >= 0xC0 && c <= 0xDE)) c += 32;
        return s;
    };
    for (const auto& [y, m, d] : dates) {
        std::vector<Str> forms;
        for (const Str& sep : {dateSep, Str(u"/")}) {
            Str f;
            for (char16_t part : order) {
                if (!f.empty()) f += sep;
                f += part == u'd' ? num(d) : part == u'M' ? num(m) : num(y);
            }
            forms.push_back(f);
        }
        forms.push_back(num(y) + u"-" + (m < 10 ? u"0" : u"") + num(m) + u"-" +
                        (d < 10 ? u"0" : u"") + num(d));
        const Str& full = loc_.monthNames[m - 1];
        const Str& abbr = loc_.abbreviatedMonthNames[m - 1];
        for (const Str& name : {full, abbr, lower(full), kEnglish[m - 1]}) {
            forms.push_back(num(d) + u" " + name + u" " + num(y));
            forms.push_back(num(d) + u". " + name + u" " + num(y));
            forms.push_back(name + u" " + num(d) + u", " + num(y));
            forms.push_back(num(d) + u"-" + name + u"-" + num(y));
        }
        for (const Str& f : forms)
            for (const Str& t : times)
                compareText(f + t, {VT_DATE});
    }
    for (const char16_t* t : {u"10:30", u"23:59:59", u"3:05 PM", u"12:00 AM", u"25:00", u"10:61"})
        compareText(t, {VT_DATE});
}

INSTANTIATE_TEST_SUITE_P(Locales, ConversionOracle, ::testing::ValuesIn(kLocales),
                         [](const ::testing::TestParamInfo<TestLocale>& info) {
                             std::string n = info.param.name;
                             n.erase(n.find('-'), 1);
                             return n;
                         });

}  // namespace
}  // namespace hb
