#include "reporting/Periods.h"

#include <cmath>
#include <optional>

#include "common/DateTime.h"

namespace hb::reporting {

namespace {

Str twoDigits(int n) {
    Str s = toStr(n);
    return n < 10 ? u"0" + s : s;
}

Str isoText(const CivilDate& d) {
    return toStr(d.year) + u"-" + twoDigits(d.month) + u"-" + twoDigits(d.day);
}

std::string u8(StrView s) {
    return toUtf8(s);
}

// "yyyy-mm-dd" (month and day of one or two digits); nullopt when the text
// has another shape. The date itself is checked by the caller.
std::optional<CivilDate> readIso(StrView text) {
    int parts[3] = {0, 0, 0};
    int digits[3] = {0, 0, 0};
    int k = 0;
    for (const char16_t c : text) {
        if (c == u'-') {
            if (++k > 2) return std::nullopt;
        } else if (c >= u'0' && c <= u'9') {
            if (++digits[k] > 4) return std::nullopt;
            parts[k] = parts[k] * 10 + (c - u'0');
        } else {
            return std::nullopt;
        }
    }
    if (k != 2 || digits[0] != 4 || digits[1] < 1 || digits[1] > 2 || digits[2] < 1 ||
        digits[2] > 2) {
        return std::nullopt;
    }
    return CivilDate{parts[0], parts[1], parts[2]};
}

}  // namespace

DayNumber dayNumber(int year, int month, int day) {
    return static_cast<DayNumber>(dt::serial(year, month, day));
}

CivilDate civilDate(DayNumber day) {
    const dt::Parts p = dt::toParts(day);
    return {p.year, p.month, p.day};
}

int weekday(DayNumber day) {
    // 30 December 1899 (day 0) was a Saturday.
    return static_cast<int>(((static_cast<std::int64_t>(day) + 5) % 7 + 7) % 7);
}

DayNumber weekStart(DayNumber day) {
    return day - weekday(day);
}

WeekNumber isoWeek(DayNumber day) {
    // The week belongs to the year of its Thursday.
    const DayNumber thursday = weekStart(day) + 3;
    const int year = civilDate(thursday).year;
    return {year, (thursday - dayNumber(year, 1, 1)) / 7 + 1};
}

Period periodFor(PeriodKind kind, DayNumber today, int firstWeekday) {
    const CivilDate c = civilDate(today);
    const DayNumber firstOfWeek = today - ((weekday(today) - firstWeekday) % 7 + 7) % 7;
    switch (kind) {
        case PeriodKind::ThisWeek:
            return {firstOfWeek, firstOfWeek + 6};
        case PeriodKind::LastWeek:
            return {firstOfWeek - 7, firstOfWeek - 1};
        case PeriodKind::ThisMonth:
            return {dayNumber(c.year, c.month, 1),
                    dayNumber(c.year, c.month, 1) + dt::daysInMonth(c.year, c.month) - 1};
        case PeriodKind::LastMonth: {
            const DayNumber first = dayNumber(c.year, c.month, 1);
            const CivilDate prev = civilDate(first - 1);
            return {dayNumber(prev.year, prev.month, 1), first - 1};
        }
        case PeriodKind::ThisYear:
            return {dayNumber(c.year, 1, 1), dayNumber(c.year, 12, 31)};
        case PeriodKind::LastYear:
            return {dayNumber(c.year - 1, 1, 1), dayNumber(c.year - 1, 12, 31)};
        case PeriodKind::Custom:
            break;
    }
    throw PeriodError("A custom period needs its first and last day.");
}

Period customPeriod(const CivilDate& from, const CivilDate& to) {
    for (const CivilDate* d : {&from, &to}) {
        if (!dt::isValidDate(d->year, d->month, d->day)) {
            throw PeriodError("The date " + std::to_string(d->year) + "-" +
                              std::to_string(d->month) + "-" + std::to_string(d->day) +
                              " does not exist.");
        }
    }
    const Period p{dayNumber(from.year, from.month, from.day),
                   dayNumber(to.year, to.month, to.day)};
    if (p.empty()) {
        throw PeriodError("The period's first day (" + u8(isoText(from)) +
                          ") comes after its last day (" + u8(isoText(to)) + ").");
    }
    return p;
}

CivilDate parseDay(StrView text, const Locale& locale) {
    if (const auto iso = readIso(text)) {
        if (!dt::isValidDate(iso->year, iso->month, iso->day)) {
            throw PeriodError("The date \"" + u8(text) + "\" does not exist.");
        }
        return *iso;
    }
    const auto value = dt::parseDate(text, locale);
    if (!value || *value != std::floor(*value) || text.find(u':') != StrView::npos) {
        throw PeriodError("\"" + u8(text) +
                          "\" is not a date (write it as year-month-day, e.g. 2026-11-30).");
    }
    return civilDate(static_cast<DayNumber>(*value));
}

Period customPeriod(StrView from, StrView to, const Locale& locale) {
    return customPeriod(parseDay(from, locale), parseDay(to, locale));
}

Str dayLabel(DayNumber day, const Locale& locale) {
    const CivilDate c = civilDate(day);
    dt::Parts parts;
    parts.year = c.year;
    parts.month = c.month;
    parts.day = c.day;
    return dt::formatPicture(parts, locale.shortDate, locale);
}

Str weekLabel(DayNumber day) {
    const WeekNumber w = isoWeek(day);
    return toStr(w.year) + u"-W" + twoDigits(w.week);
}

Str monthLabel(DayNumber day, const Locale& locale) {
    const CivilDate c = civilDate(day);
    return locale.monthNames[static_cast<std::size_t>(c.month - 1)] + u" " + toStr(c.year);
}

Str yearLabel(DayNumber day) {
    return toStr(civilDate(day).year);
}

Str periodLabel(const Period& period, const Locale& locale) {
    return dayLabel(period.first, locale) + u" - " + dayLabel(period.last, locale);
}

}  // namespace hb::reporting
