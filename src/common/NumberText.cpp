#include "common/NumberText.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace hb::num {

namespace {

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\v' || c == u'\f' ||
           c == u'\u00A0';
}

bool at(StrView text, std::size_t i, const Str& token) {
    return !token.empty() && text.substr(i, token.size()) == token;
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

}  // namespace

std::optional<Parsed> parse(StrView text, const Locale& loc) {
    Parsed p;
    std::size_t i = 0, n = text.size();
    // Blanks that are the thousands separator are not skipped at the ends.
    auto blank = [&](std::size_t k) {
        return isBlank(text[k]) && !(loc.thousandSeparator.size() == 1 &&
                                     text[k] == loc.thousandSeparator[0] && text[k] != u' ');
    };
    while (i < n && blank(i))
        ++i;
    while (n > i && blank(n - 1))
        --n;
    text = text.substr(0, n);
    if (i >= n) return std::nullopt;

    bool paren = false;
    if (text[i] == u'(') {
        paren = true;
        ++i;
        while (i < n && isBlank(text[i]))
            ++i;
        if (i >= n || text[n - 1] != u')') return std::nullopt;
        --n;
        while (n > i && isBlank(text[n - 1]))
            --n;
        text = text.substr(0, n);
    }
    if (i < n && (text[i] == u'+' || text[i] == u'-')) {
        p.negative = text[i] == u'-';
        ++i;
        while (i < n && isBlank(text[i]))
            ++i;
    }
    if (paren) {
        if (p.negative) return std::nullopt;  // "(-1)" is no number
        p.negative = true;
    }
    if (i >= n) return std::nullopt;

    if (text[i] == u'&') {
        int base = 8;
        ++i;
        if (i < n && (text[i] == u'H' || text[i] == u'h')) {
            base = 16;
            ++i;
        } else if (i < n && (text[i] == u'O' || text[i] == u'o')) {
            ++i;
        }
        if (i >= n) return std::nullopt;
        p.radix = true;
        std::uint64_t v = 0;
        bool overflow = false;
        for (; i < n; ++i) {
            int d = radixDigit(text[i], base);
            if (d < 0) return std::nullopt;
            if (v > (std::numeric_limits<std::uint64_t>::max() - d) / base) overflow = true;
            v = v * base + d;
        }
        p.radixValue = overflow ? std::numeric_limits<std::uint64_t>::max() : v;
        return p;
    }

    std::string digits;
    int fracDigits = 0;
    bool anyDigit = false, inFraction = false;
    for (; i < n; ++i) {
        char16_t c = text[i];
        if (c >= u'0' && c <= u'9') {
            digits += static_cast<char>(c);
            anyDigit = true;
            if (inFraction) ++fracDigits;
        } else if (!inFraction && at(text, i, loc.decimalSeparator)) {
            inFraction = true;
            i += loc.decimalSeparator.size() - 1;
        } else if (!inFraction && anyDigit && at(text, i, loc.thousandSeparator)) {
            i += loc.thousandSeparator.size() - 1;
        } else {
            break;
        }
    }
    if (!anyDigit) return std::nullopt;

    long exponent = 0;
    if (i < n && (text[i] == u'E' || text[i] == u'e' || text[i] == u'D' || text[i] == u'd')) {
        ++i;
        bool eneg = false;
        if (i < n && (text[i] == u'+' || text[i] == u'-')) {
            eneg = text[i] == u'-';
            ++i;
        }
        bool expDigit = false;
        for (; i < n && text[i] >= u'0' && text[i] <= u'9'; ++i) {
            expDigit = true;
            if (exponent < 100000) exponent = exponent * 10 + (text[i] - u'0');
        }
        if (!expDigit) return std::nullopt;
        if (eneg) exponent = -exponent;
    }
    if (i != n) return std::nullopt;

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
    if (p.digits.empty()) return 0.0;
    std::string s = p.digits + "e" + std::to_string(p.exp10);
    errno = 0;
    double d = std::strtod(s.c_str(), nullptr);
    if (std::isinf(d)) return std::nullopt;
    return p.negative ? -d : d;
}

}  // namespace hb::num
