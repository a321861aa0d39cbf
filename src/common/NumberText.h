#pragma once
// Numbers in text as the system's automation conversions read them (the
// parser behind CInt, CLng, CCur, CDbl, CBool and IsNumeric): blanks around;
// a sign before or after the number (or parentheses for a negative value);
// the locale's currency symbol before or after it; thousands separators
// anywhere after the first digit (an ordinary space where the locale's
// separator is a no-break space); the locale's decimal separator (or its
// monetary one); an exponent ("1E3"); and the "&H" (hexadecimal) and "&O"
// (octal) prefixes.
#include <cstdint>
#include <optional>
#include <string>

#include "common/Locale.h"
#include "common/Str.h"

namespace hb::num {

struct Parsed {
    bool negative = false;
    // "&H"/"&O" numbers: the unsigned value (UINT64_MAX when it does not fit
    // in 64 bits).
    bool radix = false;
    std::uint64_t radixValue = 0;
    // Decimal numbers: value = digits x 10^exp10; digits has no leading or
    // trailing zeros and is empty for zero.
    std::string digits;
    int exp10 = 0;
};

// The number in text, or nullopt when the text is not a number.
std::optional<Parsed> parse(StrView text, const Locale& loc);

// A decimal number times 10^decimals rounded half to even to an integer;
// nullopt when it does not fit in 64 bits (radix numbers: their value).
std::optional<std::int64_t> toScaledInteger(const Parsed& p, int decimals);

// The nearest double; nullopt when out of range.
std::optional<double> toDouble(const Parsed& p);

// The exact decimal value of a finite double (every double has one).
Parsed fromDouble(double d);

bool isZero(const Parsed& p);

}  // namespace hb::num
