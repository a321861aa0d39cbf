// Text compared without regard to letter case, held against the system's
// CompareString with NORM_IGNORECASE in English (United States): for every
// pair of letters of the Latin, Greek and Cyrillic blocks the add-in folds,
// the add-in finds them equal exactly when the system does. Above all the
// Turkish dotted capital I and dotless small i stay apart from I and i.
#include "common/Text.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <vector>

namespace hb {
namespace {

TEST(TextCompareOracle, IgnoringCaseMatchesTheSystem) {
    std::vector<char16_t> letters;
    for (char16_t c = u'A'; c <= u'Z'; ++c) {
        letters.push_back(c);
        letters.push_back(static_cast<char16_t>(c + 32));
    }
    auto range = [&](char16_t from, char16_t to) {
        for (char16_t c = from; c <= to; ++c)
            if (IsCharAlphaW(static_cast<wchar_t>(c))) letters.push_back(c);
    };
    range(0xC0, 0x17F);   // Latin-1 letters, Latin Extended-A (with İ and ı)
    range(0x386, 0x3CE);  // Greek
    range(0x400, 0x45F);  // Cyrillic
    int compared = 0, disagreements = 0;
    for (char16_t a : letters)
        for (char16_t b : letters) {
            const wchar_t wa = static_cast<wchar_t>(a), wb = static_cast<wchar_t>(b);
            const bool system =
                CompareStringW(0x0409, NORM_IGNORECASE, &wa, 1, &wb, 1) == CSTR_EQUAL;
            const bool own = text::equalsNoCase(StrView(&a, 1), StrView(&b, 1));
            ++compared;
            if (system == own) continue;
            ++disagreements;
            ADD_FAILURE() << std::hex << "U+" << static_cast<int>(a) << " and U+"
                          << static_cast<int>(b) << ": system " << (system ? "equal" : "different")
                          << ", add-in " << (own ? "equal" : "different");
        }
    std::printf("[ oracle   ] %d letter pairs compared, %d disagreements\n", compared,
                disagreements);
    for (const char16_t* turkish : {u"\u0130", u"\u0131"}) {
        EXPECT_FALSE(text::equalsNoCase(turkish, u"I"));
        EXPECT_FALSE(text::equalsNoCase(turkish, u"i"));
    }
}

}  // namespace
}  // namespace hb
