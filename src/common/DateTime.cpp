#include "common/DateTime.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Text.h"

namespace hb::dt {

namespace {

constexpr std::int64_t kEpochOffset = 25569;  // 1970-01-01 is day 25569

std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void civilFromDays(std::int64_t z, int& year, int& month, int& day) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const auto doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(y + (month <= 2));
}

const std::array<const char16_t*, 7> kDays = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                              u"Thursday", u"Friday", u"Saturday"};

void appendNumber(Str& out, long value, int width) {
    std::string s = std::to_string(value);
    while (static_cast<int>(s.size()) < width)
        s.insert(s.begin(), '0');
    out.append(s.begin(), s.end());
}

char16_t upperAscii(char16_t c) {
    return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c;
}

bool equalsNoCaseAscii(StrView a, StrView b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (upperAscii(a[i]) != upperAscii(b[i])) return false;
    return true;
}

// The month (1-12) a word names in the locale's language: the full name,
// the abbreviation (with its point where it has one, as "févr."), or the
// first three or more letters of the full name, in any letter case; 0 for
// none.
int monthOfWord(StrView word, const Locale& loc) {
    for (std::size_t m = 0; m < 12; ++m) {
        const StrView full = loc.monthNames[m];
        if (text::equalsNoCase(word, full) ||
            text::equalsNoCase(word, loc.abbreviatedMonthNames[m]) ||
            (word.size() >= 3 && word.size() < full.size() &&
             text::equalsNoCase(word, full.substr(0, word.size()))))
            return static_cast<int>(m) + 1;
    }
    return 0;
}

bool isLetter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') ||
           (c >= 0xC0 && c != 0xD7 && c != 0xF7);
}

int currentYear() {
    using namespace std::chrono;
    const year_month_day ymd{floor<days>(system_clock::now())};
    return static_cast<int>(ymd.year());
}

// The separator of the time picture (":" unless the picture says otherwise).
char16_t timeSeparator(const Locale& loc) {
    bool quoted = false;
    for (char16_t c : loc.longTime) {
        if (c == u'\'') quoted = !quoted;
        if (quoted || c == u'\'' || isLetter(c) || c == u' ') continue;
        return c;
    }
    return u':';
}

char16_t dateSeparator(const Locale& loc) {
    bool quoted = false;
    for (char16_t c : loc.shortDate) {
        if (c == u'\'') quoted = !quoted;
        if (quoted || c == u'\'' || isLetter(c) || c == u' ') continue;
        return c;
    }
    return u'/';
}

// The order of day, month and year in the short date picture: a text of
// the three letters 'd', 'M', 'y'.
std::string dateOrder(const Locale& loc) {
    std::string order;
    bool quoted = false;
    for (char16_t c : loc.shortDate) {
        if (c == u'\'') {
            quoted = !quoted;
            continue;
        }
        if (quoted) continue;
        char k = c == u'd' ? 'd' : c == u'M' ? 'M' : (c == u'y' || c == u'Y') ? 'y' : 0;
        if (k && order.find(k) == std::string::npos) order += k;
    }
    if (order.size() != 3) order = "Mdy";
    return order;
}

struct Token {
    enum Kind { Number, Word, Sep } kind = Number;
    long value = 0;
    int digits = 0;
    Str text;
    char16_t sep = 0;
};

}  // namespace

bool isLeapYear(int y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

int daysInMonth(int year, int month) {
    static const int kLen[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return 0;
    return month == 2 && isLeapYear(year) ? 29 : kLen[month - 1];
}

bool isValidDate(int year, int month, int day) {
    return year >= 100 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
           day <= daysInMonth(year, month);
}

double serial(int year, int month, int day) {
    return static_cast<double>(
        daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) +
        kEpochOffset);
}

double timeFraction(int hour, int minute, int second) {
    return (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
}

double fromParts(const Parts& p) {
    double d = serial(p.year, p.month, p.day);
    double t = timeFraction(p.hour, p.minute, p.second);
    return d >= 0 ? d + t : d - t;
}

Parts toParts(double days) {
    double whole = std::trunc(days);
    double frac = std::fabs(days - whole);
    auto day = static_cast<std::int64_t>(whole);
    auto secs = static_cast<std::int64_t>(std::llround(frac * 86400.0));
    if (secs >= 86400) {
        secs -= 86400;
        day += 1;
    }
    Parts p;
    civilFromDays(day - kEpochOffset, p.year, p.month, p.day);
    p.hour = static_cast<int>(secs / 3600);
    p.minute = static_cast<int>(secs / 60 % 60);
    p.second = static_cast<int>(secs % 60);
    return p;
}

Str formatPicture(const Parts& p, StrView picture, const Locale& loc) {
    Str out;
    std::size_t i = 0;
    while (i < picture.size()) {
        char16_t c = picture[i];
        if (c == u'\'') {
            ++i;
            while (i < picture.size()) {
                if (picture[i] == u'\'') {
                    if (i + 1 < picture.size() && picture[i + 1] == u'\'') {
                        out += u'\'';
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                out += picture[i++];
            }
            continue;
        }
        std::size_t run = 1;
        while (i + run < picture.size() && picture[i + run] == c)
            ++run;
        const int n = static_cast<int>(run);
        switch (c) {
            case u'd':
                if (n <= 2) {
                    appendNumber(out, p.day, n);
                } else {
                    double s = serial(p.year, p.month, p.day);
                    auto wd = static_cast<int>(((static_cast<std::int64_t>(s) + 6) % 7 + 7) % 7);
                    Str name = kDays[static_cast<std::size_t>(wd)];
                    out += n == 3 ? name.substr(0, 3) : name;
                }
                break;
            case u'M':
                if (n <= 2) {
                    appendNumber(out, p.month, n);
                } else {
                    const auto m = static_cast<std::size_t>(p.month - 1);
                    out += n == 3 ? loc.abbreviatedMonthNames[m] : loc.monthNames[m];
                }
                break;
            case u'y':
                if (n == 1)
                    appendNumber(out, p.year % 100, 1);
                else if (n == 2)
                    appendNumber(out, p.year % 100, 2);
                else
                    appendNumber(out, p.year, 4);
                break;
            case u'h': {
                int h = p.hour % 12;
                appendNumber(out, h == 0 ? 12 : h, n >= 2 ? 2 : 1);
                break;
            }
            case u'H':
                appendNumber(out, p.hour, n >= 2 ? 2 : 1);
                break;
            case u'm':
                appendNumber(out, p.minute, n >= 2 ? 2 : 1);
                break;
            case u's':
                appendNumber(out, p.second, n >= 2 ? 2 : 1);
                break;
            case u't': {
                const Str& des = p.hour < 12 ? loc.amDesignator : loc.pmDesignator;
                out += n == 1 ? des.substr(0, 1) : des;
                break;
            }
            case u'g':
                break;  // era: none in the Gregorian calendar's short forms
            default:
                out.append(run, c);
        }
        i += run;
    }
    return out;
}

Str formatDate(double days, const Locale& loc) {
    Parts p = toParts(days);
    const bool dayZero = p.year == 1899 && p.month == 12 && p.day == 30;
    const bool midnight = p.hour == 0 && p.minute == 0 && p.second == 0;
    if (dayZero) return formatPicture(p, loc.longTime, loc);
    if (midnight) return formatPicture(p, loc.shortDate, loc);
    return formatPicture(p, loc.shortDate, loc) + u" " + formatPicture(p, loc.longTime, loc);
}

std::optional<double> parseDate(StrView text, const Locale& loc) {
    const char16_t tsep = timeSeparator(loc);
    const char16_t dsep = dateSeparator(loc);
    auto isDateSep = [&](char16_t c) {
        return c == u'/' || c == u'-' || c == u'.' || c == u',' || c == u' ' || c == u'\t' ||
               c == dsep;
    };

    // Tokens.
    std::vector<Token> toks;
    for (std::size_t i = 0; i < text.size();) {
        char16_t c = text[i];
        if (c >= u'0' && c <= u'9') {
            Token t;
            t.kind = Token::Number;
            while (i < text.size() && text[i] >= u'0' && text[i] <= u'9') {
                if (t.digits < 6) t.value = t.value * 10 + (text[i] - u'0');
                ++t.digits;
                ++i;
            }
            if (t.digits > 4) return std::nullopt;
            toks.push_back(t);
        } else if (isLetter(c)) {
            Token t;
            t.kind = Token::Word;
            while (i < text.size() && isLetter(text[i]))
                t.text += text[i++];
            // An abbreviation written with its point ("févr.") keeps it.
            if (i < text.size() && text[i] == u'.' &&
                std::any_of(loc.abbreviatedMonthNames.begin(), loc.abbreviatedMonthNames.end(),
                            [&](const Str& a) { return text::equalsNoCase(a, t.text + u'.'); })) {
                t.text += u'.';
                ++i;
            }
            toks.push_back(t);
        } else if (c == tsep || c == u':' || isDateSep(c)) {
            Token t;
            t.kind = Token::Sep;
            // A point separates hours and minutes ("10.30") unless the
            // locale writes dates with it, as the system reads times.
            t.sep = (c == tsep || (c == u'.' && dsep != u'.')) ? u':' : c;
            toks.push_back(t);
            ++i;
        } else {
            return std::nullopt;
        }
    }

    std::vector<bool> used(toks.size(), false);
    // The time: h:m[:s], or an hour with a designator.
    bool hasTime = false;
    int hour = 0, minute = 0, second = 0;
    for (std::size_t i = 0; i + 2 < toks.size(); ++i) {
        if (toks[i].kind == Token::Number && toks[i + 1].kind == Token::Sep &&
            toks[i + 1].sep == u':' && toks[i + 2].kind == Token::Number) {
            if (hasTime) return std::nullopt;
            hasTime = true;
            hour = static_cast<int>(toks[i].value);
            minute = static_cast<int>(toks[i + 2].value);
            used[i] = used[i + 1] = used[i + 2] = true;
            std::size_t k = i + 3;
            if (k + 1 < toks.size() && toks[k].kind == Token::Sep && toks[k].sep == u':' &&
                toks[k + 1].kind == Token::Number) {
                second = static_cast<int>(toks[k + 1].value);
                used[k] = used[k + 1] = true;
                k += 2;
            }
            if (k < toks.size() && toks[k].kind == Token::Sep && toks[k].sep == u':')
                return std::nullopt;
            i = k - 1;
        }
    }
    int designator = 0;  // 1 AM, 2 PM
    int month = 0;
    std::vector<Token> nums;
    for (std::size_t i = 0; i < toks.size(); ++i) {
        if (used[i]) continue;
        const Token& t = toks[i];
        if (t.kind == Token::Word) {
            bool am = equalsNoCaseAscii(t.text, loc.amDesignator) ||
                      equalsNoCaseAscii(t.text, u"AM") || equalsNoCaseAscii(t.text, u"A");
            bool pm = equalsNoCaseAscii(t.text, loc.pmDesignator) ||
                      equalsNoCaseAscii(t.text, u"PM") || equalsNoCaseAscii(t.text, u"P");
            if (am || pm) {
                if (designator) return std::nullopt;
                designator = am ? 1 : 2;
                if (!hasTime) {
                    // "3 PM": the number just before is the hour.
                    std::size_t k = i;
                    while (k > 0 && toks[k - 1].kind == Token::Sep && toks[k - 1].sep == u' ')
                        --k;
                    if (k == 0 || toks[k - 1].kind != Token::Number || used[k - 1])
                        return std::nullopt;
                    hour = static_cast<int>(toks[k - 1].value);
                    used[k - 1] = true;
                    hasTime = true;
                    // Drop the number taken as the hour from the date numbers.
                    if (!nums.empty() && nums.back().value == hour) nums.pop_back();
                }
                continue;
            }
            const int found = monthOfWord(t.text, loc);
            if (!found || month) return std::nullopt;
            month = found;
        } else if (t.kind == Token::Number) {
            nums.push_back(t);
        } else if (t.sep == u':') {
            return std::nullopt;
        }
    }

    if (hasTime) {
        if (designator) {
            if (hour < 0 || hour > 12) return std::nullopt;
            if (designator == 1 && hour == 12) hour = 0;
            if (designator == 2 && hour < 12) hour += 12;
        }
        if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
    } else if (designator) {
        return std::nullopt;
    }

    auto yearLike = [](const Token& t) { return t.digits >= 3 || t.value > 31; };
    auto fullYear = [](const Token& t) -> int {
        if (t.digits <= 2) return static_cast<int>(t.value < 30 ? 2000 + t.value : 1900 + t.value);
        return static_cast<int>(t.value);
    };

    int y = 0, m = 0, d = 0;
    if (month) {
        m = month;
        if (nums.size() == 2) {
            if (yearLike(nums[0]) && !yearLike(nums[1])) {
                y = fullYear(nums[0]);
                d = static_cast<int>(nums[1].value);
            } else {
                d = static_cast<int>(nums[0].value);
                y = fullYear(nums[1]);
            }
        } else if (nums.size() == 1) {
            if (yearLike(nums[0])) {
                y = fullYear(nums[0]);
                d = 1;
            } else {
                d = static_cast<int>(nums[0].value);
                y = currentYear();
            }
        } else {
            return std::nullopt;
        }
        if (!isValidDate(y, m, d)) return std::nullopt;
    } else if (nums.empty()) {
        if (!hasTime) return std::nullopt;
        return timeFraction(hour, minute, second);
    } else if (nums.size() == 3) {
        std::string order = yearLike(nums[0]) ? std::string("yMd") : dateOrder(loc);
        for (std::size_t k = 0; k < 3; ++k) {
            int v = static_cast<int>(nums[k].value);
            if (order[k] == 'd') d = v;
            if (order[k] == 'M') m = v;
            if (order[k] == 'y') y = fullYear(nums[k]);
        }
        if (!isValidDate(y, m, d)) {
            std::swap(d, m);
            if (!isValidDate(y, m, d)) return std::nullopt;
        }
    } else if (nums.size() == 2) {
        if (yearLike(nums[1]) && !yearLike(nums[0])) {
            m = static_cast<int>(nums[0].value);
            y = fullYear(nums[1]);
            d = 1;
        } else if (yearLike(nums[0]) && !yearLike(nums[1])) {
            y = fullYear(nums[0]);
            m = static_cast<int>(nums[1].value);
            d = 1;
        } else {
            std::string order = dateOrder(loc);
            bool dayFirst = order.find('d') < order.find('M');
            d = static_cast<int>(nums[dayFirst ? 0 : 1].value);
            m = static_cast<int>(nums[dayFirst ? 1 : 0].value);
            y = currentYear();
            if (!isValidDate(y, m, d)) std::swap(d, m);
        }
        if (!isValidDate(y, m, d)) return std::nullopt;
    } else {
        return std::nullopt;
    }
    Parts p;
    p.year = y;
    p.month = m;
    p.day = d;
    p.hour = hour;
    p.minute = minute;
    p.second = second;
    return fromParts(p);
}

}  // namespace hb::dt
