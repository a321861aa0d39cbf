#include "reporting/OutlookCalendar.h"

#include <cmath>
#include <map>
#include <set>
#include <utility>

#include "common/AutomationError.h"
#include "common/Constants.h"
#include "common/DateTime.h"
#include "common/Object.h"
#include "common/Text.h"

namespace hb::reporting {

namespace {

constexpr std::int32_t kFolderCalendar = 9;  // olFolderCalendar
// RecurrenceState: olApptNotRecurring 0, olApptMaster 1, olApptOccurrence 2,
// olApptException 3.
constexpr std::int32_t kRecurrenceException = 3;
constexpr std::int32_t kSensitivityPrivate = 2;  // olPrivate
// The settings appointment lives on 1 January 2050.
constexpr DayNumber kSettingsDay = 54789;

std::int64_t secondsOf(Date d) {
    return std::llround(d.days * 86400.0);
}

DayNumber dayOf(Date d) {
    return static_cast<DayNumber>(std::floor(d.days + 1e-9));
}

// The user's time format without its seconds: "h:mm:ss tt" -> "h:mm tt",
// "HH:mm:ss" -> "HH:mm". Outlook reads a filter's times without seconds
// and quietly misreads a time that has them.
Str timeWithoutSeconds(StrView picture) {
    Str out;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (picture[i] != u's') {
            out += picture[i];
            continue;
        }
        while (i + 1 < picture.size() && picture[i + 1] == u's')
            ++i;
        // The separator before the seconds goes with them.
        if (!out.empty() && (out.back() == u':' || out.back() == u'.')) out.pop_back();
    }
    return out;
}

// The original starts of a series' exceptions, by the exception's own
// start: an exception item does not carry its original date, its series'
// pattern does (RecurrencePattern.Exceptions).
std::map<std::int64_t, Date> exceptionStarts(const Variant& exceptionItem) {
    std::map<std::int64_t, Date> out;
    Variant exceptions =
        exceptionItem.get(u"Parent").call(u"GetRecurrencePattern").get(u"Exceptions");
    for (const Variant& x : exceptions.obj().enumerate()) {
        if (x.get(u"Deleted").toBool()) continue;
        Date original = x.get(u"OriginalDate").toDate();
        out[secondsOf(x.get(u"AppointmentItem").get(u"Start").toDate())] = original;
    }
    return out;
}

}  // namespace

OutlookCalendar::OutlookCalendar(Variant application, Locale locale)
    : application_(std::move(application)), locale_(std::move(locale)) {}

Str OutlookCalendar::filterDate(Date value, const Locale& locale) {
    auto parts = dt::toParts(value.days);
    parts.second = 0;
    return dt::formatPicture(parts, locale.shortDate + u" " + timeWithoutSeconds(locale.longTime),
                             locale);
}

Str OutlookCalendar::restriction(const Period& period, const Locale& locale) {
    Date first{static_cast<double>(period.first)};
    Date afterLast{static_cast<double>(period.last) + 1};
    return u"[Start] < '" + filterDate(afterLast, locale) + u"' AND [End] > '" +
           filterDate(first, locale) + u"'";
}

std::vector<CalendarEntry> OutlookCalendar::read(const Period& period) {
    std::vector<CalendarEntry> out;
    if (period.empty()) return out;
    const std::int64_t periodStart = static_cast<std::int64_t>(period.first) * 86400;
    const std::int64_t periodEnd = (static_cast<std::int64_t>(period.last) + 1) * 86400;

    // Outlook expands recurring series only for a collection sorted by
    // [Start] before IncludeRecurrences is set, and only a restriction by
    // dates makes that expansion finite. Its Count is meaningless then:
    // GetFirst/GetNext walk it. The default calendar holds appointments
    // (meeting requests go to the Inbox), and the condition on [Start]
    // leaves out anything without a start.
    Variant items = application_.call(u"GetNamespace", {Str(u"MAPI")})
                        .call(u"GetDefaultFolder", {kFolderCalendar})
                        .get(u"Items");
    items.call(u"Sort", {Str(u"[Start]")});
    items.put(u"IncludeRecurrences", true);
    Variant found = items.call(u"Restrict", {restriction(period, locale_)});

    std::set<std::pair<Str, std::int64_t>> seen;
    std::map<Str, std::map<std::int64_t, Date>> exceptionsBySeries;
    for (Variant item = found.call(u"GetFirst"); !item.isNothing(); item = found.call(u"GetNext")) {
        CalendarEntry e;
        e.start = item.get(u"Start").toDate();
        e.end = item.get(u"End").toDate();
        e.subject = item.get(u"Subject").toStr();
        // Outlook compares a filter's times to the minute: the period's
        // bounds are checked again to the second.
        if (secondsOf(e.end) <= periodStart || secondsOf(e.start) >= periodEnd) continue;
        if (dayOf(e.start) == kSettingsDay && text::equalsNoCase(e.subject, kSettingsSubject)) {
            continue;
        }
        e.entryId = item.get(u"EntryID").toStr();
        e.categories = item.get(u"Categories").toStr();
        // Outlook keeps an all-day event from midnight to midnight: only
        // such an appointment can be one, and only it costs the extra call.
        if (secondsOf(e.start) % 86400 == 0 && secondsOf(e.end) % 86400 == 0) {
            e.allDay = item.get(u"AllDayEvent").toBool();
        }
        e.isPrivate = item.get(u"Sensitivity").toLong() == kSensitivityPrivate;
        std::int32_t state = item.get(u"RecurrenceState").toLong();
        e.recurring = state != 0;
        e.occurrenceStart = e.start;
        if (state == kRecurrenceException) {
            auto it = exceptionsBySeries.find(e.entryId);
            if (it == exceptionsBySeries.end()) {
                it = exceptionsBySeries.emplace(e.entryId, exceptionStarts(item)).first;
            }
            if (auto x = it->second.find(secondsOf(e.start)); x != it->second.end()) {
                e.occurrenceStart = x->second;
            }
        }
        // A store may list an occurrence twice; it counts once.
        if (!seen.emplace(e.entryId, secondsOf(e.occurrenceStart)).second) continue;
        out.push_back(std::move(e));
    }
    return out;
}

}  // namespace hb::reporting
