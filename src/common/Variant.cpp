#include "common/Variant.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <ostream>
#include <string>

#include "common/DateTime.h"
#include "common/NumberText.h"
#include "common/Object.h"

namespace hb {

// Friend of Variant: reaches the stored alternative.
struct VariantAccess {
    static const auto& raw(const Variant& v) { return v.v_; }
};

namespace {

template <class T>
const T& as(const Variant& v) {
    return std::get<T>(VariantAccess::raw(v));
}

constexpr double kMinDate = -657434.0;  // 1 January 100
constexpr double kMaxDate = 2958466.0;  // 1 January 10000 (exclusive)

// Rounds half to even, as the run time's integer conversions do: decided on
// the double's exact value (floor and the difference to it are exact), not
// through the C library's round, whose results differ between run times.
double roundHalfEven(double v) {
    const double whole = std::floor(v);
    const double frac = v - whole;
    if (frac > 0.5 || (frac == 0.5 && std::fmod(whole, 2.0) != 0.0)) return whole + 1.0;
    return whole;
}

std::int64_t doubleToInteger(double v, double lo, double hi) {
    double r = roundHalfEven(v);
    if (!(r >= lo && r <= hi)) raise(err::Overflow);
    return static_cast<std::int64_t>(r);
}

// Parses a text as a number or raises 13 (6 when it is out of range).
num::Parsed parseOrRaise(const Str& s, const Locale& loc) {
    auto p = num::parse(s, loc);
    if (!p) raise(err::TypeMismatch);
    return *p;
}

// The value of "&H"/"&O" text in an integer of the given width: the digits
// are its bits (so "&HFFFF" is -1 in 16 bits), a sign negates that; more
// digits than the width overflow.
std::int64_t radixInteger(const num::Parsed& p, int bits) {
    const std::uint64_t mask = bits == 16 ? 0xFFFFull : 0xFFFFFFFFull;
    if (p.radixValue > mask) raise(err::Overflow);
    const std::int64_t x = bits == 16 ? static_cast<std::int16_t>(p.radixValue)
                                      : static_cast<std::int32_t>(p.radixValue);
    return p.negative ? -x : x;
}

// A parsed number as a Double, or nullopt when it is beyond the Double's
// range. Hexadecimal and octal text is a 32-bit signed value, as the system
// reads it for a Double.
std::optional<double> parsedDouble(const num::Parsed& p) {
    if (p.radix) {
        if (p.radixValue > 0xFFFFFFFFull) return std::nullopt;
        return static_cast<double>(radixInteger(p, 32));
    }
    return num::toDouble(p);
}

// A text's Double (CDbl), raising 13 or 6.
double textDouble(const Str& s, const Locale& loc) {
    auto d = parsedDouble(parseOrRaise(s, loc));
    if (!d) raise(err::Overflow);
    return *d;
}

// A boolean word, if the text is one: "True"/"False" in any letter case, or
// "#TRUE#"/"#FALSE#" (as the run time writes booleans to files) exactly so.
std::optional<bool> boolWord(const Str& s) {
    if (s == u"#TRUE#") return true;
    if (s == u"#FALSE#") return false;
    auto eq = [&](const char16_t* w) {
        std::size_t n = std::char_traits<char16_t>::length(w);
        if (s.size() != n) return false;
        for (std::size_t i = 0; i < n; ++i) {
            char16_t a = s[i], b = w[i];
            if (a >= u'a' && a <= u'z') a = static_cast<char16_t>(a - 32);
            if (b >= u'a' && b <= u'z') b = static_cast<char16_t>(b - 32);
            if (a != b) return false;
        }
        return true;
    };
    if (eq(u"True")) return true;
    if (eq(u"False")) return false;
    return std::nullopt;
}

// The integral value of a variant for CInt/CLng, rounded half to even, with
// the range given; texts use hexBits for "&H"/"&O" wrap-around.
std::int64_t toIntegral(const Variant& in, const Locale& loc, std::int64_t lo, std::int64_t hi,
                        int hexBits) {
    const Variant& v = in.deref();
    switch (v.type()) {
        case Variant::Type::Empty:
            return 0;
        case Variant::Type::Null:
            raise(94);
        case Variant::Type::Integer:
            return as<std::int16_t>(v);
        case Variant::Type::Long: {
            std::int64_t x = as<std::int32_t>(v);
            if (x < lo || x > hi) raise(err::Overflow);
            return x;
        }
        case Variant::Type::Double:
            return doubleToInteger(as<double>(v), static_cast<double>(lo), static_cast<double>(hi));
        case Variant::Type::Date:
            return doubleToInteger(as<Date>(v).days, static_cast<double>(lo),
                                   static_cast<double>(hi));
        case Variant::Type::Currency: {
            std::int64_t s = as<Currency>(v).scaled;
            std::int64_t q = s / 10000, r = s % 10000;
            if (r > 5000 || (r == 5000 && (q & 1))) ++q;
            if (r < -5000 || (r == -5000 && (q & 1))) --q;
            if (q < lo || q > hi) raise(err::Overflow);
            return q;
        }
        case Variant::Type::Boolean:
            return as<bool>(v) ? -1 : 0;
        case Variant::Type::String: {
            const Str& s = as<Str>(v);
            num::Parsed p = parseOrRaise(s, loc);
            if (p.radix) {
                const std::int64_t x = radixInteger(p, hexBits);
                if (x < lo || x > hi) raise(err::Overflow);
                return x;
            }
            auto x = num::toScaledInteger(p, 0);
            if (!x || *x < lo || *x > hi) raise(err::Overflow);
            return *x;
        }
        default:
            raise(err::TypeMismatch);
    }
}

// Shortest run-time text of a double: 15 significant digits, trailing zeros
// dropped, scientific form ("1E+15", "1.5E-05") for exponents >= 15 or < -4.
Str doubleText(double d, const Locale& loc) {
    if (d == 0.0) return u"0";
    if (std::isnan(d)) return u"NaN";
    if (std::isinf(d)) return d > 0 ? u"Infinity" : u"-Infinity";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.14e", d);
    std::string s(buf);
    bool neg = s[0] == '-';
    if (neg) s.erase(0, 1);
    std::size_t e = s.find('e');
    int exp10 = std::atoi(s.c_str() + e + 1);
    std::string digits;
    for (std::size_t i = 0; i < e; ++i)
        if (s[i] >= '0' && s[i] <= '9') digits += s[i];
    while (digits.size() > 1 && digits.back() == '0')
        digits.pop_back();
    Str out;
    if (neg) out += u'-';
    auto put = [&](const std::string& t) { out.append(t.begin(), t.end()); };
    if (exp10 >= 15 || exp10 < -4) {
        out += static_cast<char16_t>(digits[0]);
        if (digits.size() > 1) {
            out += loc.decimalSeparator;
            put(digits.substr(1));
        }
        char eb[16];
        std::snprintf(eb, sizeof eb, "E%c%02d", exp10 < 0 ? '-' : '+', std::abs(exp10));
        put(eb);
    } else if (exp10 < 0) {
        out += u'0';
        out += loc.decimalSeparator;
        put(std::string(static_cast<std::size_t>(-exp10 - 1), '0'));
        put(digits);
    } else {
        auto intLen = static_cast<std::size_t>(exp10 + 1);
        if (digits.size() <= intLen) {
            put(digits);
            put(std::string(intLen - digits.size(), '0'));
        } else {
            put(digits.substr(0, intLen));
            out += loc.decimalSeparator;
            put(digits.substr(intLen));
        }
    }
    return out;
}

Str currencyText(Currency c, const Locale& loc) {
    bool neg = c.scaled < 0;
    std::uint64_t a =
        neg ? (~static_cast<std::uint64_t>(c.scaled) + 1) : static_cast<std::uint64_t>(c.scaled);
    std::string s = std::to_string(a / 10000);
    unsigned frac = static_cast<unsigned>(a % 10000);
    Str out;
    if (neg) out += u'-';
    out.append(s.begin(), s.end());
    if (frac) {
        char fb[8];
        std::snprintf(fb, sizeof fb, "%04u", frac);
        std::string f(fb);
        while (f.back() == '0')
            f.pop_back();
        out += loc.decimalSeparator;
        out.append(f.begin(), f.end());
    }
    return out;
}

// The double's exact value rounded half to even to four decimals, as the
// system converts; d x 10000 in floating point would round first
// (922337203685477 would come out as ...476.9664).
Currency doubleToCurrency(double d) {
    if (!std::isfinite(d)) raise(err::Overflow);
    auto x = num::toScaledInteger(num::fromDouble(d), 4);
    if (!x) raise(err::Overflow);
    return Currency{*x};
}

Date checkedDate(double days) {
    if (!(days > kMinDate - 1.0 && days < kMaxDate)) raise(err::Overflow);
    return Date{days};
}

}  // namespace

Variant Variant::null() {
    Variant v;
    v.v_ = NullTag{};
    return v;
}

Variant Variant::missing() {
    Variant v;
    v.v_ = MissingTag{};
    return v;
}

Variant Variant::byRef(std::shared_ptr<Variant> slot) {
    Variant v;
    v.v_ = std::move(slot);
    return v;
}

Variant Variant::error(std::int32_t scode) {
    Variant v;
    v.v_ = ErrorTag{scode};
    return v;
}

std::int32_t Variant::errorCode() const {
    const Variant& v = deref();
    if (v.type() != Type::Error) raise(err::TypeMismatch);
    return std::get<ErrorTag>(v.v_).scode;
}

Variant::Type Variant::type() const {
    return static_cast<Type>(v_.index());
}

bool Variant::isNothing() const {
    const Variant& d = deref();
    return d.type() == Type::Object && !std::get<ObjectPtr>(d.v_);
}

const Variant& Variant::deref() const {
    const Variant* v = this;
    while (v->v_.index() == static_cast<std::size_t>(Type::ByRef)) {
        const auto& slot = std::get<std::shared_ptr<Variant>>(v->v_);
        if (!slot) break;
        v = slot.get();
    }
    return *v;
}

Variant& Variant::deref() {
    return const_cast<Variant&>(static_cast<const Variant&>(*this).deref());
}

void Variant::assign(Variant value) {
    Variant& target = deref();
    target = std::move(value);
}

std::int16_t Variant::toInteger(const Locale& loc) const {
    return static_cast<std::int16_t>(toIntegral(*this, loc, -32768, 32767, 16));
}

std::int32_t Variant::toLong(const Locale& loc) const {
    return static_cast<std::int32_t>(toIntegral(*this, loc,
                                                std::numeric_limits<std::int32_t>::min(),
                                                std::numeric_limits<std::int32_t>::max(), 32));
}

double Variant::toDouble(const Locale& loc) const {
    const Variant& v = deref();
    switch (v.type()) {
        case Type::Empty:
            return 0.0;
        case Type::Null:
            raise(94);
        case Type::Integer:
            return as<std::int16_t>(v);
        case Type::Long:
            return as<std::int32_t>(v);
        case Type::Double:
            return as<double>(v);
        case Type::Currency:
            return as<Currency>(v).toDouble();
        case Type::Date:
            return as<Date>(v).days;
        case Type::Boolean:
            return as<bool>(v) ? -1.0 : 0.0;
        case Type::String:
            return textDouble(as<Str>(v), loc);
        default:
            raise(err::TypeMismatch);
    }
}

Currency Variant::toCurrency(const Locale& loc) const {
    const Variant& v = deref();
    switch (v.type()) {
        case Type::Empty:
            return Currency{};
        case Type::Null:
            raise(94);
        case Type::Integer:
            return Currency::fromUnits(as<std::int16_t>(v));
        case Type::Long:
            return Currency::fromUnits(as<std::int32_t>(v));
        case Type::Double:
            return doubleToCurrency(as<double>(v));
        case Type::Currency:
            return as<Currency>(v);
        case Type::Date:
            return doubleToCurrency(as<Date>(v).days);
        case Type::Boolean:
            return Currency::fromUnits(as<bool>(v) ? -1 : 0);
        case Type::String: {
            num::Parsed p = parseOrRaise(as<Str>(v), loc);
            if (p.radix) return Currency::fromUnits(radixInteger(p, 32));
            auto x = num::toScaledInteger(p, 4);
            if (!x) raise(err::Overflow);
            return Currency{*x};
        }
        default:
            raise(err::TypeMismatch);
    }
}

bool Variant::toBool(const Locale& loc) const {
    const Variant& v = deref();
    switch (v.type()) {
        case Type::Empty:
            return false;
        case Type::Null:
            raise(94);
        case Type::Integer:
            return as<std::int16_t>(v) != 0;
        case Type::Long:
            return as<std::int32_t>(v) != 0;
        case Type::Double:
            return as<double>(v) != 0.0;
        case Type::Currency:
            return as<Currency>(v).scaled != 0;
        case Type::Date:
            return as<Date>(v).days != 0.0;
        case Type::Boolean:
            return as<bool>(v);
        case Type::String: {
            // A number counts by its Double, as the system converts: "1E400"
            // overflows and "1E-400", which is 0 as a Double, is False.
            const Str& s = as<Str>(v);
            if (auto b = boolWord(s)) return *b;
            return textDouble(s, loc) != 0.0;
        }
        default:
            raise(err::TypeMismatch);
    }
}

Str Variant::toStr(const Locale& loc) const {
    const Variant& v = deref();
    switch (v.type()) {
        case Type::Empty:
            return Str();
        case Type::Null:
            raise(94);
        case Type::Integer:
            return hb::toStr(as<std::int16_t>(v));
        case Type::Long:
            return hb::toStr(as<std::int32_t>(v));
        case Type::Double:
            return doubleText(as<double>(v), loc);
        case Type::Currency:
            return currencyText(as<Currency>(v), loc);
        case Type::Date:
            return dt::formatDate(as<Date>(v).days, loc);
        case Type::Boolean:
            return as<bool>(v) ? u"True" : u"False";
        case Type::String:
            return as<Str>(v);
        default:
            raise(err::TypeMismatch);
    }
}

Date Variant::toDate(const Locale& loc) const {
    const Variant& v = deref();
    switch (v.type()) {
        case Type::Empty:
            return Date{};
        case Type::Null:
            raise(94);
        case Type::Integer:
            return Date{static_cast<double>(as<std::int16_t>(v))};
        case Type::Long:
            return checkedDate(as<std::int32_t>(v));
        case Type::Double:
            return checkedDate(as<double>(v));
        case Type::Currency:
            return checkedDate(as<Currency>(v).toDouble());
        case Type::Date:
            return as<Date>(v);
        case Type::Boolean:
            return Date{as<bool>(v) ? -1.0 : 0.0};
        case Type::String: {
            auto d = dt::parseDate(as<Str>(v), loc);
            if (!d) raise(err::TypeMismatch);
            return Date{*d};
        }
        default:
            raise(err::TypeMismatch);
    }
}

ObjectPtr Variant::toObject() const {
    const Variant& v = deref();
    if (v.type() != Type::Object) raise(err::ObjectRequired);
    return as<ObjectPtr>(v);
}

Object& Variant::obj() const {
    const Variant& v = deref();
    if (v.type() != Type::Object) raise(err::ObjectRequired);
    const ObjectPtr& p = as<ObjectPtr>(v);
    if (!p) raise(err::ObjectVariableNotSet);
    return *p;
}

Variant Variant::get(const Str& member, Args args) const {
    return obj().get(member, std::move(args));
}

void Variant::put(const Str& member, Variant value, Args args) const {
    obj().put(member, std::move(value), std::move(args));
}

Variant Variant::call(const Str& member, Args args) const {
    return obj().call(member, std::move(args));
}

bool operator==(const Variant& a, const Variant& b) {
    return VariantAccess::raw(a.deref()) == VariantAccess::raw(b.deref());
}

bool isNumeric(const Variant& in, const Locale& loc) {
    const Variant& v = in.deref();
    switch (v.type()) {
        case Variant::Type::Empty:  // IsNumeric(Empty) is True in the run time
        case Variant::Type::Integer:
        case Variant::Type::Long:
        case Variant::Type::Double:
        case Variant::Type::Currency:
        case Variant::Type::Boolean:
            return true;
        case Variant::Type::String: {
            // As the run time: the text must convert to a Double.
            auto p = num::parse(as<Str>(v), loc);
            return p.has_value() && parsedDouble(*p).has_value();
        }
        default:
            return false;
    }
}

bool isDate(const Variant& in, const Locale& loc) {
    const Variant& v = in.deref();
    if (v.type() == Variant::Type::Date) return true;
    if (v.type() == Variant::Type::String) return dt::parseDate(as<Str>(v), loc).has_value();
    return false;
}

std::string debugString(const Variant& in) {
    const Variant& v = in.deref();
    std::string prefix = in.isByRef() ? "ByRef " : "";
    char buf[64];
    switch (v.type()) {
        case Variant::Type::Empty:
            return prefix + "Empty";
        case Variant::Type::Null:
            return prefix + "Null";
        case Variant::Type::Integer:
            return prefix + "Integer " + std::to_string(as<std::int16_t>(v));
        case Variant::Type::Long:
            return prefix + "Long " + std::to_string(as<std::int32_t>(v));
        case Variant::Type::Double:
            std::snprintf(buf, sizeof buf, "%.17g", as<double>(v));
            return prefix + "Double " + buf;
        case Variant::Type::Currency:
            return prefix + "Currency " + toUtf8(currencyText(as<Currency>(v), Locale::enUS()));
        case Variant::Type::Date:
            std::snprintf(buf, sizeof buf, "%.17g", as<Date>(v).days);
            return prefix + "Date " + buf + " (" +
                   toUtf8(dt::formatDate(as<Date>(v).days, Locale::enUS())) + ")";
        case Variant::Type::String:
            return prefix + "String \"" + toUtf8(as<Str>(v)) + "\"";
        case Variant::Type::Boolean:
            return prefix + (as<bool>(v) ? "Boolean True" : "Boolean False");
        case Variant::Type::Object: {
            const ObjectPtr& p = as<ObjectPtr>(v);
            if (!p) return prefix + "Nothing";
            std::string name;
            try {
                name = toUtf8(p->typeName());
            } catch (...) {
                name = "?";
            }
            return prefix + "Object " + name;
        }
        case Variant::Type::Missing:
            return prefix + "Missing";
        case Variant::Type::ByRef:
            return "ByRef (no slot)";
        case Variant::Type::Error:
            std::snprintf(buf, sizeof buf, "Error 0x%08X", static_cast<unsigned>(v.errorCode()));
            return prefix + buf;
    }
    return "?";
}

void PrintTo(const Variant& v, std::ostream* os) {
    *os << debugString(v);
}

bool isSet(const Variant& v) {
    const Variant& d = v.deref();
    return d.isObject() && !d.isNothing();
}

}  // namespace hb
