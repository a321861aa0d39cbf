#pragma once
// The automation value: what crosses the seam between the add-in and
// Outlook, with the run time's conversions (CInt, CLng, CCur, CDbl, CBool,
// CStr, CDate, IsNumeric, IsDate).
#include <compare>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "common/AutomationError.h"
#include "common/Locale.h"
#include "common/Str.h"

namespace hb {

class Object;
using ObjectPtr = std::shared_ptr<Object>;

// Fixed point with four decimals (the run time's Currency).
struct Currency {
    std::int64_t scaled = 0;  // value x 10000
    static Currency fromUnits(std::int64_t units) { return Currency{units * 10000}; }
    double toDouble() const { return static_cast<double>(scaled) / 10000.0; }
    auto operator<=>(const Currency&) const = default;
};

// Days since 30 December 1899, the fraction being the time of day.
struct Date {
    double days = 0.0;
    auto operator<=>(const Date&) const = default;
};

class Variant;
using Args = std::vector<Variant>;

class Variant {
  public:
    enum class Type : std::uint8_t {
        Empty,
        Null,
        Integer,  // 16-bit
        Long,     // 32-bit
        Double,
        Currency,
        Date,
        String,
        Boolean,
        Object,   // possibly Nothing
        Missing,  // an omitted optional argument
        ByRef,    // a slot the callee may write (Cancel)
        Error,    // an error value (CVErr) with its status code
    };

    Variant() = default;
    Variant(std::int16_t v) : v_(v) {}
    Variant(std::int32_t v) : v_(v) {}
    Variant(double v) : v_(v) {}
    Variant(Currency v) : v_(v) {}
    Variant(Date v) : v_(v) {}
    Variant(bool v) : v_(v) {}
    Variant(Str v) : v_(std::move(v)) {}
    Variant(StrView v) : v_(Str(v)) {}
    Variant(const char16_t* v) : v_(Str(v)) {}
    Variant(ObjectPtr v) : v_(std::move(v)) {}
    template <class T>
    requires std::is_base_of_v<Object, T> Variant(std::shared_ptr<T> v)
        : v_(ObjectPtr(std::move(v))) {}
    Variant(std::nullptr_t) : v_(ObjectPtr()) {}  // Nothing

    static Variant null();
    static Variant missing();
    static Variant nothing() { return Variant(ObjectPtr()); }
    static Variant byRef(std::shared_ptr<Variant> slot);
    // An error value carrying a status code (an HRESULT; the run time's
    // CVErr(n) is 0x800A0000 + n). It converts to nothing else (13).
    static Variant error(std::int32_t scode);

    Type type() const;
    bool isEmpty() const { return type() == Type::Empty; }
    bool isNull() const { return type() == Type::Null; }
    bool isMissing() const { return type() == Type::Missing; }
    bool isObject() const { return type() == Type::Object; }
    bool isNothing() const;  // an object variant holding no object
    bool isString() const { return type() == Type::String; }
    bool isByRef() const { return type() == Type::ByRef; }
    bool isError() const { return type() == Type::Error; }
    // The status code of an error value (seen through a by-reference slot);
    // raises 13 for any other value.
    std::int32_t errorCode() const;

    // A by-reference slot's target (the variant itself otherwise).
    const Variant& deref() const;
    Variant& deref();
    // Writes through a by-reference slot; plain assignment otherwise.
    void assign(Variant value);

    // Conversions. Each raises the run time's error: 13 type mismatch,
    // 6 overflow, 94 for Null where a value is required.
    std::int16_t toInteger(const Locale& loc = Locale::current()) const;  // CInt
    std::int32_t toLong(const Locale& loc = Locale::current()) const;     // CLng
    double toDouble(const Locale& loc = Locale::current()) const;         // CDbl
    Currency toCurrency(const Locale& loc = Locale::current()) const;     // CCur
    bool toBool(const Locale& loc = Locale::current()) const;             // CBool
    Str toStr(const Locale& loc = Locale::current()) const;               // CStr
    Date toDate(const Locale& loc = Locale::current()) const;             // CDate
    // The object held; raises 424 if the value is no object. Nothing gives null.
    ObjectPtr toObject() const;
    // The object held; raises 91 for Nothing and 424 for a non-object.
    Object& obj() const;

    // Late-bound member access on the object held (raises 91 / 424 as obj()).
    Variant get(const Str& member, Args args = {}) const;
    void put(const Str& member, Variant value, Args args = {}) const;
    Variant call(const Str& member, Args args = {}) const;

    // Same type and same value (objects: same pointer; a by-reference slot
    // compares as its target). For tests and caches; the language's own "="
    // is not modelled.
    friend bool operator==(const Variant& a, const Variant& b);

  private:
    struct NullTag {
        bool operator==(const NullTag&) const = default;
    };
    struct MissingTag {
        bool operator==(const MissingTag&) const = default;
    };
    struct ErrorTag {
        std::int32_t scode;
        bool operator==(const ErrorTag&) const = default;
    };
    // In the order of Type, whose values are these indexes.
    std::variant<std::monostate, NullTag, std::int16_t, std::int32_t, double, Currency, Date, Str,
                 bool, ObjectPtr, MissingTag, std::shared_ptr<Variant>, ErrorTag>
        v_;
    friend struct VariantAccess;
};

// An object variant holding an object, not Nothing (seen through a
// by-reference slot): the run time's "Not x Is Nothing" for an object variable.
bool isSet(const Variant& v);

// IsNumeric: numbers, booleans, Empty (as in the run time), and texts that
// parse as a number in the locale (blanks around, sign, decimal separator,
// thousands separators, exponent, "&H"/"&O" prefixes) and convert to a
// Double (so "1E400" and "&H100000000" are not numeric). Empty text, Null,
// dates, objects and error values are not numeric.
bool isNumeric(const Variant& v, const Locale& loc = Locale::current());
// IsDate: a date value, or a text that parses as a date in the locale.
bool isDate(const Variant& v, const Locale& loc = Locale::current());

// Readable form for test failure messages.
std::string debugString(const Variant& v);
void PrintTo(const Variant& v, std::ostream* os);

}  // namespace hb
