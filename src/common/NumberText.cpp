#include "common/NumberText.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

namespace hb::num {

namespace {

// White space as the system's character types class it (C1_SPACE).
bool isBlank(char16_t c) {
    return (c >= u'\t' && c <= u'\r') || c == u' ' || c == u'\u0085' || c == u'\u00A0' ||
           c == u'\u1680' || (c >= u'\u2000' && c <= u'\u200A') || c == u'\u2028' ||
           c == u'\u2029' || c == u'\u202F' || c == u'\u205F' || c == u'\u3000';
}

int radixDigit(char16_t c, int base) {
    int d = -1;
    if (c >= u'0' && c <= u'9')
        d = c - u'0';
    else if (c >= u'a' && c <= u'f')
        d = c - u'a' + 10;
    else if (c >= u'A' && c <= u'F')
        d = c - u'A' + 10;
    return d < base ? d : -1;
}

// The separators and symbol of a locale as single characters (0: none),
// the way the system's number reading compares them.
struct Marks {
    char16_t decimal, thousand, thousandAlt, monDecimal, monThousand;
    const Str& currency;
    explicit Marks(const Locale& loc)
        : decimal(first(loc.decimalSeparator)),
          thousand(first(loc.thousandSeparator)),
          thousandAlt(0),
          monDecimal(first(loc.currencyDecimalSeparator)),
          monThousand(first(loc.currencyThousandSeparator)),
          currency(loc.currencySymbol) {
        if (thousand == decimal) thousand = 0;  // the decimal separator wins
        // A no-break space as thousands separator lets an ordinary space
        // stand for it too, since that is what people type.
        if (thousand == u'\u00A0') thousandAlt = u' ';
        if (loc.currencyDecimalSeparator.empty()) monDecimal = decimal;
        if (loc.currencyThousandSeparator.empty()) monThousand = thousand;
    }
    static char16_t first(const Str& s) { return s.empty() ? char16_t(0) : s[0]; }
    bool isDecimal(char16_t c) const { return c == decimal || c == monDecimal; }
    bool isThousand(char16_t c) const {
        return (thousand && c == thousand) || (thousandAlt && c == thousandAlt) ||
               (monThousand && c == monThousand);
    }
};

}  // namespace

std::optional<Parsed> parse(StrView text, const Locale& loc) {
    const Marks mk(loc);
    Parsed p;
    std::size_t i = 0;
    const std::size_t n = text.size();
    auto symbolAt = [&](std::size_t k) {
        return !mk.currency.empty() && text.substr(k, mk.currency.size()) == mk.currency;
    };

    // Signs, an opening parenthesis, the currency symbol and blanks before
    // the number, each sign and symbol at most once, in any order.
    bool plus = false, minus = false, paren = false, currency = false, inFraction = false;
    while (i < n) {
        const char16_t c = text[i];
        if (mk.isDecimal(c)) {
            if (c != mk.decimal) currency = true;
            inFraction = true;
            ++i;
            break;
        }
        if (isBlank(c)) {
            ++i;
        } else if (mk.isThousand(c)) {
            return std::nullopt;  // no separator before the first digit
        } else if (c == u'+' && !plus) {
            plus = true;
            ++i;
        } else if (c == u'-' && !minus) {
            minus = true;
            ++i;
        } else if (!currency && symbolAt(i)) {
            currency = true;
            i += mk.currency.size();
        } else if (c == u'(' && !paren) {
            paren = true;
            ++i;
        } else {
            break;
        }
    }

    std::string digits;
    long fracDigits = 0, exponent = 0;
    bool anyDigit = false;
    int base = 10;
    if (!currency && !inFraction && i + 1 < n && text[i] == u'&') {
        const char16_t k = text[i + 1];
        if (k == u'H' || k == u'h') base = 16;
        if (k == u'O' || k == u'o') base = 8;
        if (base != 10) i += 2;
    }
    if (base != 10) {
        p.radix = true;
        std::uint64_t v = 0;
        bool overflow = false;
        for (int d; i < n && (d = radixDigit(text[i], base)) >= 0; ++i) {
            anyDigit = true;
            if (v > (std::numeric_limits<std::uint64_t>::max() - d) / base) overflow = true;
            v = v * base + d;
        }
        p.radixValue = overflow ? std::numeric_limits<std::uint64_t>::max() : v;
    } else {
        bool hasExponent = false;
        while (i < n) {
            const char16_t c = text[i];
            if (c >= u'0' && c <= u'9') {
                digits += static_cast<char>(c);
                anyDigit = true;
                if (inFraction) ++fracDigits;
                ++i;
            } else if (anyDigit && mk.isThousand(c)) {
                ++i;  // anywhere after the first digit, fraction included
            } else if (mk.isDecimal(c) && !inFraction && !hasExponent) {
                if (c != mk.decimal) currency = true;
                inFraction = true;
                ++i;
            } else if ((c == u'E' || c == u'e') && !hasExponent && !currency) {
                hasExponent = true;
                ++i;
                bool eneg = false, expDigit = false;
                for (; i < n && (text[i] == u'+' || text[i] == u'-'); ++i)
                    eneg = eneg || text[i] == u'-';
                for (; i < n && text[i] >= u'0' && text[i] <= u'9'; ++i) {
                    expDigit = true;
                    if (exponent < 100000) exponent = exponent * 10 + (text[i] - u'0');
                }
                if (!expDigit) return std::nullopt;
                if (eneg) exponent = -exponent;
            } else {
                break;
            }
        }
    }
    if (!anyDigit) return std::nullopt;

    // Separators, blanks, a sign not given before, the closing parenthesis
    // and the currency symbol after the number ("3-", "12,50 €").
    bool closed = false;
    while (i < n) {
        const char16_t c = text[i];
        if (mk.isThousand(c)) {
            if (p.radix) break;  // not even as a blank after "&H" digits
            ++i;
        } else if (isBlank(c)) {
            ++i;
        } else if (c == u'+' && !plus) {
            ++i;
        } else if (c == u'-' && !minus) {
            p.negative = true;
            ++i;
        } else if (c == u')' && paren) {
            closed = true;
            ++i;
        } else if (!p.radix && symbolAt(i)) {
            i += mk.currency.size();
        } else {
            break;
        }
    }
    if (i != n || (paren && !closed)) return std::nullopt;
    p.negative = p.negative || minus || paren;
    if (p.radix) return p;

    std::size_t lead = digits.find_first_not_of('0');
    if (lead == std::string::npos) {
        digits.clear();
    } else {
        digits.erase(0, lead);
    }
    long e = exponent - fracDigits;
    while (!digits.empty() && digits.back() == '0') {
        digits.pop_back();
        ++e;
    }
    if (digits.empty()) e = 0;
    if (e > 1000000) e = 1000000;
    if (e < -1000000) e = -1000000;
    p.digits = std::move(digits);
    p.exp10 = static_cast<int>(e);
    return p;
}

bool isZero(const Parsed& p) {
    return p.radix ? p.radixValue == 0 : p.digits.empty();
}

std::optional<std::int64_t> toScaledInteger(const Parsed& p, int decimals) {
    constexpr std::uint64_t kMaxPos = static_cast<std::uint64_t>(INT64_MAX);
    const std::uint64_t limit = p.negative ? kMaxPos + 1 : kMaxPos;
    std::uint64_t v = 0;
    if (p.radix) {
        std::uint64_t scale = 1;
        for (int k = 0; k < decimals; ++k)
            scale *= 10;
        if (p.radixValue > limit / scale) return std::nullopt;
        v = p.radixValue * scale;
    } else if (!p.digits.empty()) {
        long e = static_cast<long>(p.exp10) + decimals;
        const std::string& d = p.digits;
        long keep = static_cast<long>(d.size()) + e;  // digits before the point
        if (keep > 20) return std::nullopt;
        auto push = [&](int digit) {
            if (v > (std::numeric_limits<std::uint64_t>::max() - digit) / 10) return false;
            v = v * 10 + static_cast<std::uint64_t>(digit);
            return true;
        };
        for (long k = 0; k < keep; ++k) {
            int digit = k < static_cast<long>(d.size()) ? d[k] - '0' : 0;
            if (!push(digit)) return std::nullopt;
        }
        if (keep < static_cast<long>(d.size())) {
            // Round half to even on the dropped digits.
            bool up = false;
            if (keep >= 0) {
                char first = d[static_cast<std::size_t>(keep)];
                bool rest = d.find_first_not_of('0', static_cast<std::size_t>(keep) + 1) !=
                            std::string::npos;
                up = first > '5' || (first == '5' && (rest || (v & 1)));
            }
            if (up) {
                if (v == std::numeric_limits<std::uint64_t>::max()) return std::nullopt;
                ++v;
            }
        }
    }
    if (v > limit) return std::nullopt;
    if (p.negative) return static_cast<std::int64_t>(0 - v);
    return static_cast<std::int64_t>(v);
}

std::optional<double> toDouble(const Parsed& p) {
    if (p.radix) {
        if (p.radixValue == std::numeric_limits<std::uint64_t>::max()) return std::nullopt;
        double d = static_cast<double>(p.radixValue);
        return p.negative ? -d : d;
    }
    if (p.digits.empty()) return p.negative ? -0.0 : 0.0;
    std::string s = p.digits + "e" + std::to_string(p.exp10);
    errno = 0;
    double d = std::strtod(s.c_str(), nullptr);
    if (std::isinf(d)) return std::nullopt;
    return p.negative ? -d : d;
}

Parsed fromDouble(double d) {
    Parsed p;
    p.negative = std::signbit(d);
    int e2 = 0;
    const double m = std::frexp(std::fabs(d), &e2);  // |d| = m x 2^e2, 0.5 <= m < 1
    auto mant = static_cast<std::uint64_t>(std::ldexp(m, 53));
    e2 -= 53;
    if (mant == 0) return p;
    while ((mant & 1) == 0) {
        mant >>= 1;
        ++e2;
    }
    // |d| = mant x 2^e2 = mant x 5^-e2 / 10^-e2 when e2 < 0: the digits
    // are those of an integer kept in base 10^9 pieces, lowest first.
    std::vector<std::uint32_t> big;
    for (std::uint64_t v = mant; v; v /= 1000000000u)
        big.push_back(static_cast<std::uint32_t>(v % 1000000000u));
    const std::uint32_t factor = e2 < 0 ? 5 : 2;
    for (int k = 0; k < std::abs(e2); ++k) {
        std::uint64_t carry = 0;
        for (auto& limb : big) {
            const std::uint64_t x = std::uint64_t{limb} * factor + carry;
            limb = static_cast<std::uint32_t>(x % 1000000000u);
            carry = x / 1000000000u;
        }
        if (carry) big.push_back(static_cast<std::uint32_t>(carry));
    }
    std::string digits = std::to_string(big.back());
    for (std::size_t k = big.size() - 1; k-- > 0;) {
        std::string limb = std::to_string(big[k]);
        digits += std::string(9 - limb.size(), '0') + limb;
    }
    int exp10 = e2 < 0 ? e2 : 0;
    while (digits.back() == '0') {
        digits.pop_back();
        ++exp10;
    }
    p.digits = std::move(digits);
    p.exp10 = exp10;
    return p;
}

}  // namespace hb::num
