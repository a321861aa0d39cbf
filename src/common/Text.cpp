#include "common/Text.h"

#include <bit>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "common/AutomationError.h"

namespace hb::text {

namespace {

char16_t upperChar(char16_t c) {
    if (c < 0x80) return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c;
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<char16_t>(c - 32);
    if (c == 0xFF) return 0x178;
    if (c >= 0x100 && c <= 0x137) {
        if (c == 0x131) return u'I';
        return (c & 1) ? static_cast<char16_t>(c - 1) : c;
    }
    if (c >= 0x139 && c <= 0x148) return (c & 1) ? c : static_cast<char16_t>(c - 1);
    if (c >= 0x14A && c <= 0x177) return (c & 1) ? static_cast<char16_t>(c - 1) : c;
    if (c >= 0x179 && c <= 0x17E) return (c & 1) ? c : static_cast<char16_t>(c - 1);
    if (c == 0x17F) return u'S';
    // Greek
    if (c >= 0x3B1 && c <= 0x3C9) return c == 0x3C2 ? 0x3A3 : static_cast<char16_t>(c - 32);
    if (c == 0x3CA || c == 0x3CB) return static_cast<char16_t>(c - 32);
    if (c == 0x3AC) return 0x386;
    if (c >= 0x3AD && c <= 0x3AF) return static_cast<char16_t>(c - 37);
    if (c == 0x3CC) return 0x38C;
    if (c == 0x3CD || c == 0x3CE) return static_cast<char16_t>(c - 63);
    // Cyrillic
    if (c >= 0x430 && c <= 0x44F) return static_cast<char16_t>(c - 32);
    if (c >= 0x450 && c <= 0x45F) return static_cast<char16_t>(c - 80);
    if ((c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF))
        return (c & 1) ? static_cast<char16_t>(c - 1) : c;
    return c;
}

char16_t lowerChar(char16_t c) {
    if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 32);
    if (c == 0x178) return 0xFF;
    if (c >= 0x100 && c <= 0x137) {
        if (c == 0x130) return u'i';
        return (c & 1) ? c : static_cast<char16_t>(c + 1);
    }
    if (c >= 0x139 && c <= 0x148) return (c & 1) ? static_cast<char16_t>(c + 1) : c;
    if (c >= 0x14A && c <= 0x177) return (c & 1) ? c : static_cast<char16_t>(c + 1);
    if (c >= 0x179 && c <= 0x17E) return (c & 1) ? static_cast<char16_t>(c + 1) : c;
    // Greek
    if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) return static_cast<char16_t>(c + 32);
    if (c == 0x3AA || c == 0x3AB) return static_cast<char16_t>(c + 32);
    if (c == 0x386) return 0x3AC;
    if (c >= 0x388 && c <= 0x38A) return static_cast<char16_t>(c + 37);
    if (c == 0x38C) return 0x3CC;
    if (c == 0x38E || c == 0x38F) return static_cast<char16_t>(c + 63);
    // Cyrillic
    if (c >= 0x410 && c <= 0x42F) return static_cast<char16_t>(c + 32);
    if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 80);
    if ((c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF))
        return (c & 1) ? c : static_cast<char16_t>(c + 1);
    return c;
}

// Position (0-based) of find in text at or after from, or npos.
std::size_t search(StrView text, StrView find, std::size_t from, Compare compare) {
    if (compare == Compare::Binary) return text.find(find, from);
    if (find.size() > text.size()) return StrView::npos;
    for (std::size_t i = from; i + find.size() <= text.size(); ++i) {
        std::size_t k = 0;
        while (k < find.size() && foldChar(text[i + k]) == foldChar(find[k]))
            ++k;
        if (k == find.size()) return i;
    }
    return StrView::npos;
}

}  // namespace

// Letter case folded for comparison as the system compares text without
// regard to case outside Turkish: the dotted capital I (U+0130) and the
// dotless small i (U+0131) are letters of their own, not I or i, so "İ" and
// "ı" match neither "I" nor "i" (nor each other); so is the long s (U+017F).
char16_t foldNonAscii(char16_t c) {
    if (c == u'\u0130' || c == u'\u0131' || c == u'\u017F') return c;
    return lowerChar(upperChar(c));
}

std::size_t findChar(StrView text, char16_t c, std::size_t from) {
    const char16_t* p = text.data();
    std::size_t i = from;
#if defined(__SSE2__)
    // Eight code units per compare.
    const __m128i pattern = _mm_set1_epi16(static_cast<short>(c));
    for (; i + 8 <= text.size(); i += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
        const int hits = _mm_movemask_epi8(_mm_cmpeq_epi16(units, pattern));
        if (hits != 0)
            return i + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(hits))) / 2;
    }
#else
    // Four code units per 64-bit word: a lane equal to c becomes zero, and a
    // zero lane is the first to borrow into its top bit.
    constexpr std::uint64_t lanes = 0x0001000100010001ull;
    const std::uint64_t pattern = c * lanes;
    for (; i + 4 <= text.size(); i += 4) {
        std::uint64_t word;
        std::memcpy(&word, p + i, sizeof word);
        const std::uint64_t x = word ^ pattern;
        if (((x - lanes) & ~x & (0x8000 * lanes)) != 0) break;
    }
#endif
    for (; i < text.size(); ++i)
        if (p[i] == c) return i;
    return StrView::npos;
}

std::vector<StrView> splitViews(StrView text, StrView delimiter) {
    std::vector<StrView> out;
    if (text.empty()) return out;
    if (delimiter.empty()) {
        out.push_back(text);
        return out;
    }
    // Each occurrence of the delimiter's first code unit is a candidate.
    auto next = [&](std::size_t from) {
        for (std::size_t at = findChar(text, delimiter[0], from); at != StrView::npos;
             at = findChar(text, delimiter[0], at + 1)) {
            if (text.substr(at, delimiter.size()) == delimiter) return at;
        }
        return StrView::npos;
    };
    std::size_t pos = 0;
    for (;;) {
        std::size_t hit = next(pos);
        if (hit == StrView::npos) {
            out.push_back(text.substr(pos));
            return out;
        }
        out.push_back(text.substr(pos, hit - pos));
        pos = hit + delimiter.size();
    }
}

std::vector<Str> split(StrView text, StrView delimiter) {
    const std::vector<StrView> pieces = splitViews(text, delimiter);
    std::vector<Str> out;
    out.reserve(pieces.size());
    for (StrView piece : pieces)
        out.emplace_back(piece);
    return out;
}

Str join(const std::vector<Str>& parts, StrView delimiter) {
    Str out;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i) out += delimiter;
        out += parts[i];
    }
    return out;
}

Str ltrim(StrView text) {
    std::size_t b = 0;
    while (b < text.size() && text[b] == u' ')
        ++b;
    return Str(text.substr(b));
}

Str rtrim(StrView text) {
    std::size_t e = text.size();
    while (e > 0 && text[e - 1] == u' ')
        --e;
    return Str(text.substr(0, e));
}

Str trim(StrView text) {
    std::size_t b = 0, e = text.size();
    while (b < e && text[b] == u' ')
        ++b;
    while (e > b && text[e - 1] == u' ')
        --e;
    return Str(text.substr(b, e - b));
}

Str replace(StrView text, StrView find, StrView with, Compare compare) {
    if (find.empty()) return Str(text);
    Str out;
    std::size_t pos = 0;
    for (;;) {
        std::size_t hit = search(text, find, pos, compare);
        if (hit == StrView::npos) break;
        out += text.substr(pos, hit - pos);
        out += with;
        pos = hit + find.size();
    }
    out += text.substr(pos);
    return out;
}

std::int32_t find(StrView text, StrView what, Compare compare, std::int32_t start) {
    if (start < 1) raise(err::InvalidProcedureCall);
    const auto len = static_cast<std::int64_t>(text.size());
    if (what.empty()) return start <= len + 1 ? start : 0;
    if (start > len) return 0;
    std::size_t hit = search(text, what, static_cast<std::size_t>(start - 1), compare);
    return hit == StrView::npos ? 0 : static_cast<std::int32_t>(hit + 1);
}

Str left(StrView text, std::int32_t length) {
    if (length < 0) raise(err::InvalidProcedureCall);
    return Str(text.substr(0, static_cast<std::size_t>(length)));
}

Str right(StrView text, std::int32_t length) {
    if (length < 0) raise(err::InvalidProcedureCall);
    auto n = static_cast<std::size_t>(length);
    if (n >= text.size()) return Str(text);
    return Str(text.substr(text.size() - n));
}

Str mid(StrView text, std::int32_t start, std::optional<std::int32_t> length) {
    if (start < 1) raise(err::InvalidProcedureCall);
    if (length && *length < 0) raise(err::InvalidProcedureCall);
    auto from = static_cast<std::size_t>(start - 1);
    if (from >= text.size()) return Str();
    if (!length) return Str(text.substr(from));
    return Str(text.substr(from, static_cast<std::size_t>(*length)));
}

Str upper(StrView text) {
    Str out(text);
    for (auto& c : out)
        c = upperChar(c);
    return out;
}

Str lower(StrView text) {
    Str out(text);
    for (auto& c : out)
        c = lowerChar(c);
    return out;
}

Str foldCase(StrView text) {
    Str out(text);
    for (auto& c : out)
        c = foldChar(c);
    return out;
}

bool equalsNoCase(StrView a, StrView b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (foldChar(a[i]) != foldChar(b[i])) return false;
    return true;
}

std::int32_t asc(StrView text) {
    if (text.empty()) raise(err::InvalidProcedureCall);
    return static_cast<std::int32_t>(text[0]);
}

Str repeat(char16_t c, std::size_t count) {
    return Str(count, c);
}

Str quoteArgument(StrView argument) {
    if (!argument.empty() && argument.find_first_of(u" \t\n\v\"") == StrView::npos)
        return Str(argument);
    Str out(1, u'"');
    std::size_t backslashes = 0;
    for (const char16_t c : argument) {
        if (c == u'\\') {
            ++backslashes;
            continue;
        }
        // Backslashes are plain text unless a quote follows them.
        out.append(c == u'"' ? backslashes * 2 + 1 : backslashes, u'\\');
        backslashes = 0;
        out.push_back(c);
    }
    out.append(backslashes * 2, u'\\');
    out.push_back(u'"');
    return out;
}

}  // namespace hb::text
